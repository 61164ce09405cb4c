#include <math.h>
#include <string.h>

#include <vector>

#include <gtest/gtest.h>

#include "support/rows.h"

namespace {

// A lump with the epochs 2, 3 beside the reference epoch 1.
struct LumpRecord {
    explicit LumpRecord(int id = 5, int kind = 0)
    {
        memset(&l, 0, sizeof l);
        l.id = id;
        l.kind = kind;
        l.nepoch = 3;
        l.iref = 1;
        l.iunk = iunk;
        l.epoch = epoch;
        l.tx = v[0], l.ty = v[1], l.tz = v[2], l.rx = v[3], l.ry = v[4], l.rz = v[5], l.scale = v[6];
    }
    lump l;
    int iunk[2] = {3, 10}, epoch[2] = {2, 3};
    double v[7][2] = {{1.5, -2.0}, {2.5, 4.0}, {-3.5, 1.0}, {0.3, -0.2}, {-0.4, 0.1}, {0.9, 2.5}, {1.02, 0.97}};
};

// Stations S and A in the lump, B in the world.
struct Lumped : Rows {
    explicit Lumped(int kind = 0) : Rows(3), record(5, kind)
    {
        add("S", 10, 20, 30).ilump = 1;
        add("A", 110, 70, 35).ilump = 1;
        add("B", 60, -40, 20);
        lumps.push_back(record.l);
    }
    // l1 and l2 as lumpdelta leaves them for one observation.
    void delta_of(std::vector<measure> &list, int from, int to, int time, double d[3], int *l1, int *l2)
    {
        list.clear();
        observe(list, from, to, 0, 1).time = time;
        wire(1);
        *l1 = *l2 = -1;
        S(*this, lumpdelta)(list.data(), d, r1, r2, l1, l2);
    }
    LumpRecord record;
    double r1[3][3], r2[3][3];
};

void moved(Lumped *s, int j, const double from[3], double x[3], double r[3][3])
{
    for (int k = 0; k < 3; k++) x[k] = from[k];
    S(*s, lumppoint)(0, j, x, r);
}

void expect_row(const Row &row, const std::vector<int> &i1, const std::vector<double> &c1, const std::vector<int> &i2,
                const std::vector<double> &c2, double b)
{
    EXPECT_EQ(i1, row.i1);
    EXPECT_EQ(c1, row.c1);
    EXPECT_EQ(i2, row.i2);
    EXPECT_EQ(c2, row.c2);
    EXPECT_DOUBLE_EQ(b, row.b);
}

const double HARD = 100000000.0;

} // namespace

// ---- geometry of a lump ----

TEST(LumpPoint, ScalesTurnsAndShifts)
{
    Lumped s;
    s.wire(1);
    // Quarter turns around the third axis, then the second, then the first, as the matrix
    // R = Rx Ry Rz of passive turns: R z-turn takes (1, 2, 3) to (2, -1, 3), y-turn (x, z) to
    // (-z, x): (-3, -1, 2), x-turn (y, z) to (z, -y): (-3, 2, 1).
    const double q = 2.0 * atan(1.0);
    for (int k = 3; k < 6; k++) s.record.v[k][1] = q;
    s.record.v[6][1] = 2.0;
    double x[3], r[3][3];
    const double from[3] = {1, 2, 3};
    moved(&s, 1, from, x, r);
    EXPECT_NEAR(2.0 * -3 - 2.0, x[0], 1e-14);
    EXPECT_NEAR(2.0 * 2 + 4.0, x[1], 1e-14);
    EXPECT_NEAR(2.0 * 1 + 1.0, x[2], 1e-14);
}

TEST(LumpPoint, HasTheMatrixOfAnInstrument)
{
    Lumped s;
    s.observe(s.dir1, 0, 2, 0, 1);
    for (int k = 0; k < 3; k++) s.points[0].xex[k] = s.record.v[3 + k][0];
    s.wire(1);
    double x[3] = {1, 2, 3}, r[3][3], c[6];
    S(s, lumppoint)(0, 0, x, r);
    S(s, setrot)(1, 0, c, c + 1, c + 2, c + 3, c + 4, c + 5);
    for (int k = 0; k < 3; k++)
        for (int j = 0; j < 3; j++) EXPECT_DOUBLE_EQ(S(s, rot)[k][j], r[k][j]);
}

TEST(LumpDerivatives, AreThoseOfTheMovedPoint)
{
    Lumped s;
    s.wire(1);
    const double from[3] = {12.5, -7.25, 33.0};
    for (int j = 0; j < 2; j++) {
        double x[3], r[3][3], b[3][7];
        moved(&s, j, from, x, r);
        S(s, lumpderiv)(0, j, from, r, b);
        for (int p = 0; p < 7; p++) {
            // Central quotient: error h^2 of the third derivative (40) plus 1e-14 / h of rounding.
            const double h = 1e-5, keep = s.record.v[p][j];
            double up[3], down[3];
            s.record.v[p][j] = keep + h;
            moved(&s, j, from, up, r);
            s.record.v[p][j] = keep - h;
            moved(&s, j, from, down, r);
            s.record.v[p][j] = keep;
            for (int k = 0; k < 3; k++) EXPECT_NEAR((up[k] - down[k]) / (2 * h), b[k][p], 1e-8) << k << " " << p;
        }
    }
}

TEST(LumpRow, AppendsSevenEntriesBehindThoseThatStand)
{
    Lumped s;
    s.wire(1);
    S(s, nunk2) = 20;
    double b[3][7];
    for (int k = 0; k < 3; k++)
        for (int p = 0; p < 7; p++) b[k][p] = 10 * k + p;
    const double v[3] = {1, 2, -1};
    S(s, ia2)[0] = 2;
    S(s, lumprow)(8, 0.5, v, b);
    EXPECT_EQ(9, S(s, ia2)[0]);
    for (int p = 0; p < 7; p++) {
        EXPECT_EQ(8 + p, S(s, ia2)[3 + p]);
        EXPECT_DOUBLE_EQ(0.5 * (p + 2 * (10 + p) - (20 + p)), S(s, a2)[3 + p]);
    }
    S(s, lumprow)(1, 1.0, v, b); // the second end of an observation
    EXPECT_EQ(16, S(s, ia2)[0]);
    EXPECT_EQ(1, S(s, ia2)[10]);
}

TEST(LumpDelta, MovesBothEndsAtAnotherEpoch)
{
    Lumped s;
    double d[3], a[3], b[3], r[3][3];
    int l1, l2;
    s.delta_of(s.dist, 0, 1, 3, d, &l1, &l2);
    EXPECT_EQ(1, l1);
    EXPECT_EQ(1, l2);
    moved(&s, 1, s.points[0].xpt, a, r);
    moved(&s, 1, s.points[1].xpt, b, r);
    for (int k = 0; k < 3; k++) {
        EXPECT_DOUBLE_EQ(b[k] - a[k], d[k]);
        for (int j = 0; j < 3; j++) {
            EXPECT_EQ(r[k][j], s.r1[k][j]);
            EXPECT_EQ(r[k][j], s.r2[k][j]);
        }
    }
}

TEST(LumpDelta, MovesOnlyTheEndInTheLump)
{
    Lumped s;
    double d[3], b[3], r[3][3];
    int l1, l2;
    s.delta_of(s.dir1, 2, 1, 2, d, &l1, &l2);
    EXPECT_EQ(-1, l1);
    EXPECT_EQ(0, l2);
    moved(&s, 0, s.points[1].xpt, b, r);
    for (int k = 0; k < 3; k++) EXPECT_DOUBLE_EQ(b[k] - s.points[2].xpt[k], d[k]);
    s.delta_of(s.dir2, 1, 2, 2, d, &l1, &l2);
    EXPECT_EQ(0, l1);
    EXPECT_EQ(-1, l2);
    for (int k = 0; k < 3; k++) EXPECT_DOUBLE_EQ(s.points[2].xpt[k] - b[k], d[k]);
}

TEST(LumpDelta, LeavesPointsAtTheReferenceAndAtUnknownEpochs)
{
    for (int time : {1, 4, 0, -7}) {
        Lumped s;
        double d[3];
        int l1, l2;
        s.delta_of(s.dist, 0, 1, time, d, &l1, &l2);
        EXPECT_EQ(-1, l1) << time;
        EXPECT_EQ(-1, l2) << time;
        EXPECT_EQ(100.0, d[0]);
        EXPECT_EQ(50.0, d[1]);
        EXPECT_EQ(5.0, d[2]);
    }
}

TEST(LumpDelta, LeavesPointsOfADroppedLump)
{
    for (int ilump : {2, -1}) {
        Lumped s;
        s.points[0].ilump = s.points[1].ilump = ilump;
        double d[3];
        int l1, l2;
        s.delta_of(s.dist, 0, 1, 2, d, &l1, &l2);
        EXPECT_EQ(-1, l1);
        EXPECT_EQ(-1, l2);
        EXPECT_EQ(100.0, d[0]);
    }
}

// ---- conditions ----

TEST(LumpConditions, HoldRotationsAtZero)
{
    Lumped s(1);
    s.wire(1);
    S(s, nunk2) = 20;
    S(s, norm_lump)();
    ASSERT_EQ(6u, s.rows.size());
    for (int j = 0; j < 2; j++)
        for (int k = 0; k < 3; k++)
            expect_row(s.rows[3 * j + k], {}, {}, {s.record.iunk[j] + 3 + k}, {HARD}, -s.record.v[3 + k][j] * HARD);
}

TEST(LumpConditions, HoldTheScaleAtOne)
{
    Lumped s(2);
    int epochs[2] = {2, 3}, codes[2] = {4, 4};
    double scales[2] = {3.0, 3.0};
    lump_definition def = lump_definition();
    def.id = 5;
    def.iref = 1;
    def.n = 2;
    def.epoch = epochs;
    def.code = codes;
    def.scale = scales;
    s.n.p.lumpdefs = &def;
    s.n.p.nlumpdefs = 1; // never looked at
    s.wire(1);
    S(s, nunk2) = 20;
    S(s, norm_lump)();
    ASSERT_EQ(2u, s.rows.size());
    expect_row(s.rows[0], {}, {}, {3 + 6}, {HARD}, (1.0 - 1.02) * HARD);
    expect_row(s.rows[1], {}, {}, {10 + 6}, {HARD}, (1.0 - 0.97) * HARD);
}

TEST(LumpConditions, HoldTheScalesThatTheHostFixes)
{
    // Epoch 3 is fixed; epoch 2 is listed twice and its first entry is free; epoch 9 is foreign.
    int epochs[4] = {3, 2, 2, 9}, codes[4] = {4, 1, 4, 4};
    double scales[4] = {0.5, 0.6, 0.7, 0.8};
    lump_definition defs[2] = {};
    for (lump_definition &d : defs) {
        d.id = 5;
        d.iref = 1;
        d.n = 4;
        d.epoch = epochs;
        d.code = codes;
        d.scale = scales;
    }
    for (int kind : {0, 1}) {
        Lumped s(kind);
        s.n.p.lumpdefs = defs;
        s.n.p.nlumpdefs = 2;
        s.wire(1);
        S(s, nunk2) = 20;
        S(s, norm_lump)();
        ASSERT_EQ(kind == 1 ? 7u : 1u, s.rows.size());
        expect_row(s.rows.back(), {}, {}, {10 + 6}, {HARD}, (0.5 - 0.97) * HARD);
    }
    Lumped other_reference;
    defs[0].iref = 2; // the first definition of the lump decides
    other_reference.n.p.lumpdefs = defs;
    other_reference.n.p.nlumpdefs = 2;
    other_reference.wire(1);
    S(other_reference, nunk2) = 20;
    S(other_reference, norm_lump)();
    EXPECT_EQ(0u, other_reference.rows.size());
    Lumped other_lump;
    defs[0].id = defs[1].id = 6;
    defs[0].iref = 1;
    other_lump.n.p.lumpdefs = defs;
    other_lump.n.p.nlumpdefs = 2;
    other_lump.wire(1);
    S(other_lump, norm_lump)();
    EXPECT_EQ(0u, other_lump.rows.size());
}

TEST(LumpConditions, AreNoneForAFreeLumpWithoutDefinition)
{
    Lumped s;
    s.wire(1);
    S(s, norm_lump)();
    EXPECT_EQ(0u, s.rows.size());
}

TEST(FixedHeights, HoldPointsOnTheSphereOfTheirHeight)
{
    Rows s(3);
    s.add("S", 300, -400, 12);
    s.add("A", 1, 2, 3);
    s.add("B", 50, 60, 70);
    s.points[0].h = 100.0;
    for (int c = 0; c < 3; c++) {
        s.points[0].n0[c] = c;
        s.points[0].defdatum[2] = s.points[2].defdatum[2] = DATUM_FIXED_HEIGHT;
    }
    s.points[2].n0[1] = 3;
    s.wire(1);
    S(s, radius) = 900.0;
    S(s, nunk1) = 4;
    S(s, norm_fixh)();
    ASSERT_EQ(2u, s.rows.size());
    expect_row(s.rows[0], {0, 1, 2}, {HARD / 1000 * 300, HARD / 1000 * -400, HARD}, {}, {}, 0.0);
    expect_row(s.rows[1], {3}, {HARD / 900 * 60}, {}, {}, 0.0);
}

// h is counted from the sphere, not from the origin.
TEST(FixedHeights, DoNotAddTheHeightOfTheOrigin)
{
    Rows s(3);
    s.add("S", 300, -400, 12).h = 100.0;
    for (int c = 0; c < 3; c++) s.points[0].n0[c] = c;
    s.points[0].defdatum[2] = DATUM_FIXED_HEIGHT;
    s.wire(1);
    S(s, radius) = 900.0;
    S(s, horigin) = 500.0;
    S(s, nunk1) = 3;
    S(s, norm_fixh)();
    ASSERT_EQ(1u, s.rows.size());
    expect_row(s.rows[0], {0, 1, 2}, {HARD / 1000 * 300, HARD / 1000 * -400, HARD}, {}, {}, 0.0);
}

TEST(FixedHeights, AtTheCentreOfTheSphereAreWhatTheDivisionGives)
{
    Rows s(3);
    s.add("S", 300, 0, 12);
    s.points[0].h = -900.0;
    for (int c = 0; c < 3; c++) s.points[0].n0[c] = c;
    s.points[0].defdatum[2] = DATUM_FIXED_HEIGHT;
    s.wire(1);
    S(s, radius) = 900.0;
    S(s, nunk1) = 3;
    S(s, norm_fixh)();
    ASSERT_EQ(1u, s.rows.size());
    EXPECT_TRUE(isinf(s.rows[0].c1[0]));
    EXPECT_TRUE(isnan(s.rows[0].c1[1]));
    EXPECT_EQ(HARD, s.rows[0].c1[2]);
}

TEST(FixedHeights, WithoutUnknownsAddAnEmptyRow)
{
    Rows s(3);
    s.add("A", 1, 2, 3).defdatum[2] = DATUM_FIXED_HEIGHT;
    s.wire(0);
    S(s, norm_fixh)();
    ASSERT_EQ(1u, s.rows.size());
    expect_row(s.rows[0], {}, {}, {}, {}, 0.0);
}

namespace {

// One station and one target with everything weighted.
struct Weighted : Rows {
    Weighted() : Rows(3)
    {
        for (const char *name : {"S", "A"}) {
            point &p = add(name, 1, 2, 3);
            for (int k = 0; k < 3; k++) {
                p.n0[k] = 3 * (int)points.size() - 3 + k;
                p.x0[k] = p.xpt[k] + 0.5 * (k + 1);
                p.sxpt[k] = 0.25 * (k + 1);
                p.defdatum[k] = p.defdatum[3 + k] = DATUM_WEIGHTED;
                p.n1[k] = k;
                p.xex[k] = 0.125;
                p.e0[k] = 0.25 * k;
                p.sxex[k] = 0.5;
            }
        }
    }
    void run()
    {
        wire(1);
        S(*this, nunk1) = 6;
        S(*this, nunk2) = 8;
        S(*this, norm_weighted)();
    }
};

} // namespace

TEST(WeightedValues, GiveOneRowForEachCoordinateAndOrientation)
{
    Weighted s;
    s.run();
    ASSERT_EQ(9u, s.rows.size());
    for (int k = 0; k < 3; k++) {
        const double w = 1.0 / (0.25 * (k + 1));
        expect_row(s.rows[2 * k], {k}, {w}, {}, {}, 0.5 * (k + 1) * w);
        expect_row(s.rows[2 * k + 1], {}, {}, {k}, {2.0}, (0.25 * k - 0.125) * 2.0);
        expect_row(s.rows[6 + k], {3 + k}, {w}, {}, {}, 0.5 * (k + 1) * w); // a target has no orientation
    }
}

TEST(WeightedValues, WithASmallDeviationTakeTheCap)
{
    Weighted s;
    s.points[1].sxpt[0] = 0.0;
    s.points[1].sxpt[1] = 0.99e-7;
    s.points[1].sxpt[2] = 1.0e-7;
    s.run();
    expect_row(s.rows[6], {3}, {HARD}, {}, {}, 0.5 * HARD);
    expect_row(s.rows[7], {4}, {HARD}, {}, {}, HARD);
    EXPECT_DOUBLE_EQ(1.0 / 1.0e-7, s.rows[8].c1[0]);
}

TEST(WeightedValues, NeedAnUnknownAndTheMark)
{
    Weighted s;
    for (int k = 0; k < 3; k++) {
        s.points[0].n0[k] = N_NONE;
        s.points[0].n1[k] = N_NONE;
        s.points[1].defdatum[k] = k == 2 ? DATUM_FIXED_HEIGHT : k;
    }
    s.run();
    EXPECT_EQ(0u, s.rows.size());
}

TEST(WeightedValues, CountTheAdditiveConstantOnlyWithItsOwnMark)
{
    Weighted s;
    s.points[0].n1[3] = s.points[1].n1[3] = 7;
    s.points[0].e0[3] = 0.75;
    s.points[0].xex[3] = 0.25;
    s.points[0].sxex[3] = s.points[1].sxex[3] = 0.125;
    s.run();
    EXPECT_EQ(9u, s.rows.size());
    s.rows.clear();
    s.points[0].defdatum[6] = s.points[1].defdatum[6] = DATUM_WEIGHTED;
    s.run();
    ASSERT_EQ(10u, s.rows.size());
    expect_row(s.rows[6], {}, {}, {7}, {8.0}, 4.0);
}
