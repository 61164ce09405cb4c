// Residuals and their cofactors beside the rows of the normal equations and closed formulas:
// what each kind of observation reads, and what it does not.

#include <gtest/gtest.h>
#include <math.h>
#include <string.h>

#include <vector>

#include "support/rows.h"

namespace {

const double pi = 4.0 * atan(1.0);

// Records, and an inverse of its own for every number of unknowns: positive, with no two equal
// elements off the diagonal.
struct Kinds : Rows {
    explicit Kinds(int dim_ = 3) : Rows(dim_) {}

    void ready(int nsta_, int nunk1_, int nunk2_)
    {
        wire(nsta_);
        nunk1 = nunk1_, nunk2 = nunk2_, nunk = nunk1_ + nunk2_;
        sdist = 0.7, sdifh = 0.3, sdir1 = 0.4, sdir2 = 0.6, saz = 0.9, sgps = 0.25, suv = 1.7;
        BareRecords::inv.assign((size_t)nunk * nunk, 0.0);
        for (int i = 0; i < nunk; i++)
            for (int j = 0; j < nunk; j++)
                BareRecords::inv[(size_t)i * nunk + j] = i == j ? 1e-3 * (2 + i) : 1e-4 / (1 + i * i + j * j);
        wire_matrices();
    }

    void cov()
    {
        dofc = 0;
        sum = S(*this, rescov)(&dofc, &parts[0], &parts[1], &parts[2], &parts[3], &parts[4], &parts[5], &parts[6]);
    }

    // The observation has the residual and the cofactor of a row with the weight factor w.
    void expect(const measure &m, const Row &row, double w)
    {
        const auto c = row.by_unknown(nunk1);
        double q = 1 / (w * w);
        for (const auto &i : c)
            for (const auto &j : c)
                q -= BareRecords::inv[(size_t)i.first * nunk + j.first] * i.second * j.second / (w * w);
        ASSERT_GT(q, 0.1 / (w * w));
        EXPECT_NEAR(m.res[0], row.b / w, 1e-12 * (1 + fabs(row.b / w)));
        EXPECT_NEAR(m.res[1], sqrt(q), 1e-10 * sqrt(q));
    }

    double dofc = 0, sum = 0, parts[7] = {};
};

// A lump seen at epoch 1, its reference, and at epoch 2.
struct OneMotion {
    OneMotion()
    {
        memset(&l, 0, sizeof l);
        l.id = 5, l.nepoch = 2, l.iref = 1, l.iunk = &iunk, l.epoch = &epoch;
        l.tx = v, l.ty = v + 1, l.tz = v + 2, l.rx = v + 3, l.ry = v + 4, l.rz = v + 5, l.scale = v + 6;
    }
    lump l;
    int iunk = 0, epoch = 2;
    double v[7] = {1.5, 2.5, -3.5, 0.3, -0.4, 0.9, 1.02};
};

} // namespace

TEST(DistanceResiduals, TakeTheMotionOfALump)
{
    OneMotion motion;
    for (int in_lump : {0, 1}) { // the end that moves
        Kinds s;
        s.add("S", 10, 20, 30).ilump = in_lump == 0;
        s.add("A", 110, 70, 35).ilump = in_lump == 1;
        for (int k = 0; k < 3; k++) s.points[1].n0[k] = k;
        s.lumps.push_back(motion.l);
        s.observe(s.dist, 0, 1, 112.0, 0.5).time = 2;
        s.ready(1, 3, 7);
        for (double &q : s.inv) q *= 1e-4; // a rotation moves a point by some 100 m
        S(s, norm_dist)();
        ASSERT_EQ(s.rows[0].i2.size(), 7u);
        s.cov();
        s.expect(s.dist[0], s.rows[0], 0.7 / 0.5);
    }
}

// Lengths between an instrument and a target of which the heights h are known.
TEST(DistanceResiduals, AreReducedByEveryCode)
{
    const double R = 6000.0, H = 40.0, s0 = 130.0, h1 = 1.5, h2 = 0.25;
    for (int code : {0, 2, 9, 3}) {
        Kinds s;
        s.add("S", 10, 20, 30).h = 31.0;
        s.add("A", 110, 70, 35).h = 37.0;
        measure &m = s.observe(s.dist, 0, 1, s0, 0.5);
        m.h1 = h1;
        m.h2 = h2;
        s.ready(1, 0, 0);
        S(s, iredux) = code;
        S(s, radius) = R;
        S(s, horigin) = H;
        const double a = 31.0 + h1, b = 37.0 + h2;
        double r = 0.0;
        if (code == 2) {
            const double c = ((110.0 * 110 + 70 * 70) - (10.0 * 10 + 20 * 20)) / 2, q = (b - a) - c / ((b + a) / 2 + R);
            r = sqrt(s0 * s0 - q * q) - s0;
        }
        if (code == 9) r = (R + H) * sqrt(s0 * s0 - (b - a) * (b - a)) / ((b + a) / 2 + R) - s0;
        const double wanted = s0 + r - sqrt(100.0 * 100 + 50 * 50 + 5 * 5);
        s.cov();
        EXPECT_NEAR(s.dist[0].res[0], wanted, 1e-11) << code;
        s.dist[0].res[0] = 0;
        s.take_histograms();
        S(s, justres)(0);
        EXPECT_NEAR(s.dist[0].res[0], wanted, 1e-11) << code;
    }
}

// Whether an angle is reduced depends on its station, not on the kind of the observation.
TEST(AngleResiduals, AreReducedAtALevelledStationAlone)
{
    Kinds s;
    s.add("S1", 1000, 2000, 30).typ = 1;
    s.add("S2", -500, 300, 10);
    s.add("A", 4000, -3000, 200);
    for (int sta : {0, 1})
        for (auto *list : {&s.dir1, &s.dir2}) {
            measure &m = s.observe(*list, sta, 2, 0.1, 0.5);
            m.typ = sta;
            m.h1 = 1.5;
            m.h2 = 0.25;
        }
    s.ready(2, 0, 0);
    S(s, radius) = 6.4e6;
    S(s, norm_dir1)();
    S(s, norm_dir2)();
    s.cov();
    for (int sta : {0, 1}) {
        const double dx = 4000 - s.points[sta].xpt[0], dy = -3000 - s.points[sta].xpt[1];
        const double dz = 200 - s.points[sta].xpt[2];
        const double plain1 = 0.1 - atan2(dy, dx), plain2 = 0.1 - atan2(dz, hypot(dx, dy));
        EXPECT_NEAR(s.dir1[sta].res[0], s.rows[sta].b / 0.8, 1e-14);
        EXPECT_NEAR(s.dir2[sta].res[0], s.rows[2 + sta].b / 1.2, 1e-14);
        EXPECT_EQ(fabs(s.dir1[sta].res[0] - plain1) < 1e-14, sta == 1) << sta;
        EXPECT_EQ(fabs(s.dir2[sta].res[0] - plain2) < 1e-14, sta == 1) << sta;
    }
}

TEST(AngleResiduals, OfVerticalAnglesAreNotBroughtBackByATurn)
{
    Kinds s;
    s.add("S", 0, 0, 0);
    s.add("A", 10, 0, 0);
    for (double v : {3.5, -3.5, 7.0}) s.observe(s.dir2, 0, 1, v, 1.0);
    s.ready(1, 0, 0);
    s.cov();
    EXPECT_EQ(s.dir2[0].res[0], 3.5);
    EXPECT_EQ(s.dir2[1].res[0], -3.5);
    EXPECT_EQ(s.dir2[2].res[0], 7.0);
}

// The camera is that of the first observation of a run of one station.
TEST(ImageResiduals, TakeTheCameraWhereTheStationChanges)
{
    Kinds s;
    s.add("S1", 0, 0, 0);
    s.add("S2", 1, 0, 0);
    s.add("T", 2, 3, 10);
    s.camerawith("short", 0.05, 1e-5);
    s.camerawith("long", 0.08, 2e-5);
    const int station[5] = {0, 0, 1, 1, 0}, typ[5] = {0, 1, 1, 0, 1}, used[5] = {0, 0, 1, 1, 1};
    for (int i = 0; i < 5; i++) {
        s.observe(s.u, station[i], 2, 100, 0.5).typ = typ[i];
        s.observe(s.v, station[i], 2, 200, 0.5).typ = typ[i];
    }
    s.ready(2, 0, 0);
    s.cov();
    const double focal[2] = {0.05, 0.08}, pixel[2] = {1e-5, 2e-5};
    const auto u = [&](int i) { return focal[used[i]] * (2 - station[i]) / 10 / pixel[used[i]]; };
    const auto v = [&](int i) { return focal[used[i]] * 3 / 10 / pixel[used[i]]; };
    for (int i = 0; i < 5; i++) {
        EXPECT_NEAR(s.u[i].res[0], 100 - u(i), 1e-9) << i;
        EXPECT_NEAR(s.v[i].res[0], 200 - v(i), 1e-9) << i;
        s.u[i].res[0] = s.v[i].res[0] = 0;
    }
    s.take_histograms();
    S(s, justres)(4);
    for (int i = 0; i < 5; i++) {
        EXPECT_NEAR(s.u[i].res[0], 100 - u(i), 1e-9) << i;
        EXPECT_NEAR(s.v[i].res[0], 200 - v(i), 1e-9) << i;
    }
    s.rows.clear();
    S(s, norm_photo)();
    ASSERT_EQ(s.rows.size(), 10u);
    for (int i = 0; i < 5; i++) {
        EXPECT_NEAR(s.rows[2 * i].b, 1.7 * (100 - u(i)), 1e-9) << i; // weighted by suv alone
        EXPECT_NEAR(s.rows[2 * i + 1].b, 1.7 * (200 - v(i)), 1e-9) << i;
    }
}

// In space heights above the sphere are compared, whatever the earth model.
TEST(HeightResiduals, AreThoseOfTheHeightsWithEveryEarthModel)
{
    for (int dim : {1, 3})
        for (int earth : {0, 1, 2, 3}) {
            Kinds s(dim);
            s.add("A", 0, 0, 30).h = 31.0;
            s.add("B", 100, 0, 35).h = 38.5;
            measure &m = s.observe(s.difh, 0, 1, 7.0, 0.5);
            m.h1 = 1.5;
            m.h2 = 0.25;
            s.ready(0, 0, 0);
            S(s, iearth) = earth;
            const double dh = dim == 3 ? 7.5 : 5.0, wanted = 7.0 - (0.25 - 1.5) - dh;
            S(s, norm_difh)();
            EXPECT_NEAR(s.rows[0].b, wanted * 0.3 / 0.5, 1e-12) << dim << earth;
            s.cov();
            EXPECT_NEAR(s.difh[0].res[0], wanted, 1e-12) << dim << earth;
            s.take_histograms();
            S(s, justres)(1);
            EXPECT_NEAR(s.difh[0].res[0], 7.0 + (0.25 - 1.5) - dh, 1e-12) << dim << earth; // heights added here
        }
}

// Off the diagonal the first coordinate alone is asked for, and -1 reads the element before the
// row: between the unknowns 0 and 2.
TEST(BaselineResiduals, ReadBesideTheRowForACoordinateThatIsHeld)
{
    for (int end : {0, 1}) {
        Kinds s;
        for (const char *name : {"A", "B"}) s.add(name, 0, 0, 0);
        s.points[end].n0[0] = 1;
        s.points[end].n0[2] = 2;
        gpsbase &g = s.baseline(0, 1, 1, 2, 3);
        const double w[6] = {4, 1, 5, 0.5, 1.5, 6}; // 11, 21, 22, 31, 32, 33
        memcpy(g.w, w, sizeof w);
        s.ready(0, 3, 0);
        const auto q = [&](int i, int j) { return s.inv[(size_t)3 * i + j]; };
        const double beside = end == 0 ? 2 * q(0, 2) * w[1] : 0.0; // nothing stands before the whole matrix
        s.cov();
        EXPECT_NEAR(s.dofc, 3 - (q(1, 1) * w[0] + q(2, 2) * w[5] + 2 * q(1, 2) * w[3] + beside), 1e-12) << end;
    }
}

// The covariance of a baseline is its weight as it stands.
TEST(BaselineResiduals, AreNotScaledByTheirAPrioriSigma)
{
    for (double sigma : {1.0, 0.25, 3.0}) {
        Kinds s;
        s.add("A", 0, 0, 0);
        s.add("B", 10, 20, 30);
        for (int k = 0; k < 3; k++) s.points[1].n0[k] = k;
        gpsbase &g = s.baseline(0, 1, 10.5, 19, 36);
        const double w[6] = {2, 0.5, 3, -0.25, 0.75, 4}, r[3] = {0.5, -1, 6};
        memcpy(g.w, w, sizeof w);
        s.ready(0, 3, 0);
        S(s, sgps) = sigma;
        const double full[3][3] = {{2, 0.5, -0.25}, {0.5, 3, 0.75}, {-0.25, 0.75, 4}};
        double squares = 0, trace = 3;
        for (int i = 0; i < 3; i++)
            for (int j = 0; j < 3; j++) {
                squares += r[i] * full[i][j] * r[j];
                trace -= s.inv[(size_t)3 * i + j] * full[i][j];
            }
        s.cov();
        EXPECT_NEAR(s.sum, squares, 1e-12) << sigma;
        EXPECT_NEAR(s.dofc, trace, 1e-12) << sigma;
        EXPECT_NEAR(s.parts[5], squares / trace, 1e-12) << sigma;
        S(s, norm_gps)();
        for (int k = 0; k < 3; k++) EXPECT_DOUBLE_EQ(s.bases[0].w[k], r[k]) << sigma;

        double sum = 0;
        s.take_histograms();
        S(s, filllimits)();
        S(s, gpsres)(&sum);
        EXPECT_NEAR(sum, squares, 1e-12) << sigma;
        const int wanted[3] = {5, 3, 9999}; // of 0.5, -1 and 6 metres as they stand
        for (int k = 0; k < 3; k++) EXPECT_EQ(s.gps[0].iflag[k], wanted[k]) << sigma;
    }
}

// A cofactor above the covariance of the observation: the redundancy counts with its sign.
TEST(BaselineResiduals, WithANegativeRedundancyHaveANegativeComponent)
{
    Kinds s;
    s.add("A", 0, 0, 0);
    s.add("B", 10, 20, 30).n0[0] = 0;
    s.baseline(0, 1, 12, 20, 30);
    s.ready(0, 1, 0);
    s.inv = {8.0};
    s.wire_matrices();
    s.cov();
    EXPECT_DOUBLE_EQ(s.dofc, 3.0 - 8.0);
    EXPECT_DOUBLE_EQ(s.sum, 4.0);
    EXPECT_DOUBLE_EQ(s.parts[5], -0.8);
}
