#include "solvers/compact.h"

#include <gtest/gtest.h>
#include <math.h>
#include <stdlib.h>

#include <random>

#include "solvers/leastsquares.h"
#include "support/faults.h"

using namespace vornengine;

namespace {

typedef Solved<compact> Net;

// First column of each row of the profile.
std::vector<int> firsts(compact &s)
{
    std::vector<int> list;
    for (int r = 0; r < S(s, nunk); r++) list.push_back(r + 1 - (int)(C(s, compadd)[r + 1] - C(s, compadd)[r]));
    return list;
}

// A chain of heights, each above the one before: a tridiagonal matrix.
void chain(Net &r, int n)
{
    for (int p = 0; p < n; p++) r.add(std::string(1, (char)('A' + p)).c_str(), 0, 0, p);
    for (int p = 1; p < n; p++) r.observe(r.difh, p - 1, p, 1.0, 1.0);
}

} // namespace

TEST(CompactConstructor, HoldsNoArrays)
{
    Net r(2);
    compact &s = r.solver(0, 0);
    EXPECT_EQ(C(s, compadd), nullptr);
    EXPECT_EQ(C(s, cnorm), nullptr);
    EXPECT_EQ(C(s, work), nullptr);
    EXPECT_EQ(S(s, rhs), nullptr);
    EXPECT_EQ(S(s, inv), nullptr);
}

TEST(CompactBanner, HeadsTheReport)
{
    Net r(2);
    r.solver(0, 0).banner();
    EXPECT_EQ(r.report(), "\n\nCompact storage solution\nVersion 0.0\n");
}

// ---- profile ----

TEST(CompactProfile, StartsAtTheDiagonalWithoutObservations)
{
    Net r(2);
    scatter(r, 2);
    r.nunk2 = 1;
    compact &s = r.solver(1, 0);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(firsts(s), (std::vector<int>{0, 1, 2, 3, 4}));
    EXPECT_EQ(C(s, compadd)[5], 5u);
    EXPECT_EQ(S(s, nunk), 5);
}

TEST(CompactProfile, ReachesBackToTheSmallestCoordinateOfADistanceWithItsConstants)
{
    for (int typ : {0, 1}) { // whatever the kind of the distance
        Net r(3);
        scatter(r, 4);
        r.nunk2 = 4;
        r.points[2].n1[2] = 0;
        r.points[2].n1[3] = 1;
        r.points[2].n1[4] = 2;
        r.points[2].n1[5] = 3;
        r.points[3].n0[0] = r.points[3].n0[1] = r.points[3].n0[2] = N_NONE;
        r.nunk1 = 9;
        r.observe(r.dist, 2, 1, 10.0, 1.0).typ = typ;
        r.observe(r.dist, 2, 3, 10.0, 1.0).typ = typ;
        compact &s = r.solver(4, 0);
        ASSERT_EQ(s.prepare(), 0);
        EXPECT_EQ(firsts(s), (std::vector<int>{0, 1, 2, 3, 3, 3, 3, 3, 3, 9, 3, 3, 12}));
    }
}

TEST(CompactProfile, ConnectsOnlyTheHeightsOfAHeightDifference)
{
    Net r(3);
    scatter(r, 2);
    r.observe(r.difh, 0, 1, 1.0, 1.0);
    compact &s = r.solver(2, 0);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(firsts(s), (std::vector<int>{0, 1, 2, 3, 4, 2}));
}

TEST(CompactProfile, TakesDirectionsWithTheOrientationAndVerticalAnglesWithTheRefraction)
{
    for (int kind : {1, 2}) {
        Net r(2);
        scatter(r, 3);
        r.nunk2 = 4;
        for (int c = 0; c < 3; c++) r.points[1].n1[c] = c;
        r.points[1].n1[5] = 3;
        r.observe(kind == 1 ? r.dir1 : r.dir2, 1, 2, 1.0, 1.0);
        compact &s = r.solver(3, 0);
        ASSERT_EQ(s.prepare(), 0);
        EXPECT_EQ(firsts(s), (std::vector<int>{0, 1, 2, 2, 2, 2, 2, 2, 2, kind == 1 ? 9 : 2}));
    }
}

TEST(CompactProfile, KeepsDirectionsInsideThatAreNotParallelToTheVerticalAngles)
{
    Net r(2);
    scatter(r, 4);
    r.observe(r.dir1, 0, 3, 1.0, 1.0);
    r.observe(r.dir2, 1, 2, 1.0, 1.0); // as many as directions, but of other points
    compact &s = r.solver(4, 0);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(firsts(s), (std::vector<int>{0, 0, 2, 2, 2, 2, 0, 0}));
}

TEST(CompactProfile, ConnectsTheEndsOfABaseline)
{
    Net r(3);
    scatter(r, 3);
    r.baseline(2, 0, 1, 1, 1);
    compact &s = r.solver(3, 0);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(firsts(s), (std::vector<int>{0, 0, 0, 3, 4, 5, 0, 0, 0}));
}

namespace {

void add_cameras(Net &r, int n)
{
    for (int i = 0; i < n; i++) {
        camera c = camera();
        c.npar = 3;
        for (int p = 0; p < 10; p++) c.ipar[p] = p < 3 ? 3 * i + p : N_NONE;
        r.cameras.push_back(c);
    }
    r.nunk2 = 3 * n;
}

} // namespace

TEST(CompactProfile, ConnectsAnImagePointWithItsStationAndCamera)
{
    Net r(3);
    scatter(r, 3);
    add_cameras(r, 2);
    r.nunk2 = 9;
    for (int c = 0; c < 3; c++) r.points[1].n1[c] = 6 + c;
    r.observe(r.u, 1, 2, 0, 1).typ = 1;
    r.observe(r.v, 1, 2, 0, 1).typ = 1;
    compact &s = r.solver(2, 0);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(firsts(s), (std::vector<int>{0, 1, 2, 3, 3, 3, 3, 3, 3, 9, 10, 11, 3, 3, 3, 3, 3, 3}));
}

TEST(CompactProfile, ConnectsTheCameraThatTheRowsOfAStationTake)
{
    Net r(3);
    scatter(r, 3);
    add_cameras(r, 2);
    for (int typ : {0, 1}) { // one station with two cameras: its rows take the first one
        r.observe(r.u, 1, typ == 0 ? 2 : 0, 0, 1).typ = typ;
        r.observe(r.v, 1, typ == 0 ? 2 : 0, 0, 1).typ = typ;
    }
    compact &s = r.solver(2, 0);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(firsts(s)[9], 0);
    EXPECT_EQ(firsts(s)[12], 0);
}

TEST(CompactProfile, LeavesOutImagePointsOfNoCamera)
{
    for (int typ : {-1, 1}) {
        Net r(3);
        scatter(r, 2);
        add_cameras(r, 1);
        r.observe(r.u, 0, 1, 0, 1).typ = typ;
        r.observe(r.v, 0, 1, 0, 1).typ = typ;
        compact &s = r.solver(1, 0);
        ASSERT_EQ(s.prepare(), 0);
        EXPECT_EQ(firsts(s), (std::vector<int>{0, 0, 0, 0, 0, 0, 6, 7, 8}));
    }
}

TEST(CompactProfile, KeepsAnAzimuthInsideThatNothingElseConnects)
{
    Net r(2);
    scatter(r, 3);
    r.observe(r.az, 0, 2, 1.0, 0.001);
    compact &s = r.solver(3, 0);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(firsts(s), (std::vector<int>{0, 0, 2, 3, 0, 0}));
    s.zeronormal();
    S(s, normal)();
    EXPECT_NE(at(s, 4, 0), 0.0);
}

TEST(CompactProfile, KeepsAFixedHeightInside)
{
    Net r(3);
    scatter(r, 2);
    r.points[1].defdatum[2] = DATUM_FIXED_HEIGHT;
    r.nfixh = 1;
    compact &s = r.solver(0, 0);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(firsts(s), (std::vector<int>{0, 1, 2, 3, 3, 3}));
}

TEST(CompactProfile, ConnectsNuisanceUnknownsOfAnObservationBetweenFixedPoints)
{
    Net r(2);
    scatter(r, 2);
    for (point &p : r.points) p.n0[0] = p.n0[1] = N_NONE;
    r.nunk1 = 0;
    r.nunk2 = 3;
    r.points[0].n1[3] = 1;
    r.points[0].n1[4] = 2;
    r.observe(r.dist, 0, 1, 10.0, 1.0);
    compact &s = r.solver(1, 0);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(firsts(s), (std::vector<int>{0, 1, 1}));
}

namespace {

// A lump whose parameters of each epoch but the reference stand at the given numbers.
struct OneLump {
    OneLump(Net &r, const std::vector<int> &numbers) : iunk(numbers), epoch(numbers.size()), one(numbers.size(), 1.0)
    {
        zero.assign(numbers.size(), 0.0);
        for (size_t j = 0; j < epoch.size(); j++) epoch[j] = (int)j + 2;
        lump l = lump();
        l.id = 1;
        l.nepoch = (int)numbers.size() + 1;
        l.iref = 1;
        l.iunk = iunk.data();
        l.epoch = epoch.data();
        l.tx = l.ty = l.tz = l.rx = l.ry = l.rz = zero.data();
        l.scale = one.data();
        r.lumps.push_back(l);
    }
    std::vector<int> iunk, epoch;
    Vector one, zero;
};

} // namespace

TEST(CompactProfile, MakesRowsOfLumpsAndTheLastCoordinatesFull)
{
    Net r(3);
    scatter(r, 4);
    r.nunk2 = 15;
    OneLump l(r, {1, 8});
    compact &s = r.solver(2, 0);
    ASSERT_EQ(s.prepare(), 0);
    const std::vector<int> first = firsts(s);
    for (int i = 0; i < 5; i++) EXPECT_EQ(first[i], i);
    for (int i = 5; i < 12; i++) EXPECT_EQ(first[i], 0) << i;  // exchanged
    EXPECT_EQ(first[12], 5);                                   // reaches what is exchanged
    for (int i = 13; i < 27; i++) EXPECT_EQ(first[i], 0) << i; // lump parameters
    EXPECT_NE(S(s, rhs), nullptr);
}

TEST(CompactProfile, MakesTheLastCoordinatesAndTheDatumRowsFull)
{
    Net r(2);
    scatter(r, 4);
    r.nunk2 = 2;
    r.points[3].n1[2] = 0;
    r.observe(r.dir1, 3, 2, 1.0, 1.0);
    compact &s = r.solver(4, 3);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(S(s, nunk), 13);
    EXPECT_EQ(firsts(s), (std::vector<int>{0, 1, 2, 3, 4, 0, 0, 0, 4, 9, 0, 0, 0}));
    const size_t add[14] = {0, 1, 2, 3, 4, 5, 11, 18, 26, 31, 32, 43, 55, 68};
    for (int i = 0; i < 14; i++) EXPECT_EQ(C(s, compadd)[i], add[i]);
    EXPECT_NE(S(s, rhs), nullptr);
    EXPECT_DOUBLE_EQ(S(s, centre)[0],
                     (r.points[0].xpt[0] + r.points[1].xpt[0] + r.points[2].xpt[0] + r.points[3].xpt[0]) / 4.0);
}

TEST(CompactProfile, KeepsLumpRowsFullBesideADatum)
{
    Net r(3);
    scatter(r, 4);
    r.nunk2 = 8;
    OneLump l(r, {1});
    compact &s = r.solver(2, 6);
    ASSERT_EQ(s.prepare(), 0);
    const std::vector<int> first = firsts(s);
    EXPECT_EQ(first[5], 5);
    EXPECT_EQ(first[6], 0);   // last six coordinates
    EXPECT_EQ(first[12], 12); // nothing reaches it
    for (int i = 13; i < 26; i++) EXPECT_EQ(first[i], 0);
}

TEST(CompactProfile, TakesNoCentreOfHeights)
{
    Net r(1);
    chain(r, 3);
    compact &s = r.solver(0, 1);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(S(s, centre)[2], 0.0);
}

TEST(CompactProfile, ReachesBackToTheSmallestImportedCoordinate)
{
    for (int icon : {1, 2, 3}) {
        Net r(2);
        scatter(r, 5);
        compact &s = r.solver(0, 0);
        int lcon[3] = {6, 2, -1};
        S(s, icon) = icon;
        S(s, nimport) = 2;
        S(s, lcon) = lcon;
        ASSERT_EQ(s.prepare(), 0);
        EXPECT_EQ(firsts(s), (icon == 1 ? std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}
                                        : std::vector<int>{0, 1, 2, 2, 4, 5, 2, 2, 8, 9}));
    }
}

// ---- allocation ----

TEST(CompactPrepare, TakesNoBufferWithoutExchanges)
{
    Net r(1);
    chain(r, 3);
    compact &s = r.solver(0, 0);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(S(s, rhs), nullptr);
    EXPECT_EQ(S(s, inv), nullptr);
    EXPECT_EQ(r.report(), ""); // no trace without idebug
    s.finish();
}

TEST(CompactPrepare, ReturnsMinus1WithoutMemoryAndTellsWhich)
{
    const char *const lines[] = {"\n*** pb with allocation of compadd ***\n", "\n*** pb with allocation of t ***\n",
                                 "\n*** pb with compact allocation ***\n", "\n*** pb with compact allocation ***\n",
                                 "\n*** pb with compact allocation ***\n"};
    for (int k = 1; k <= 5; k++) {
        Net r(1);
        chain(r, 3);
        compact &s = r.solver(0, 1);
        fail_allocation(k);
        EXPECT_EQ(s.prepare(), -1);
        fail_allocation(0);
        EXPECT_EQ(r.report(), lines[k - 1]);
    }
}

// A profile of more elements than the address space has bytes for ends as a failed allocation.
TEST(CompactPrepare, RefusesAProfileBeyondTheAddressSpace)
{
    if (sizeof(size_t) > 4) GTEST_SKIP() << "needs 4-byte addresses";
    Net r(1);
    r.nunk1 = 40000;
    compact &s = r.solver(0, 20000); // a thousand million elements in the datum rows
    EXPECT_EQ(s.prepare(), -1);
    EXPECT_EQ(r.report(), "\n*** pb with compact allocation ***\n");
}

TEST(CompactPrepare, StopsTheRun)
{
    Net r(1);
    chain(r, 2);
    compact &s = r.solver(0, 1);
    fail_allocation(1);
    EXPECT_EQ(s.iterate(), -2);
    fail_allocation(0);
    EXPECT_EQ(r.report(), "\n\nCompact storage solution\nVersion 0.0\n\n*** pb with allocation of compadd ***\n\n"
                          "Program stops in prepare\n");
}

// ---- trace of the observations ----

TEST(CompactPrepare, TracesTheObservationsWithTheKindOfADistance)
{
    Net r(2);
    r.add("A", 1, 10);
    r.add("B", 1, 20);
    r.observe(r.dist, 0, 1, 10.5, 0.01).typ = 1;
    r.observe(r.dist, 1, 0, 10.25, 0.02);
    r.n.p.idebug = 1;
    ASSERT_EQ(r.solver(1, 0).prepare(), 0);
    EXPECT_EQ(r.report(), "distances\nA         B                     10.50000        0.01000    1\n"
                          "B         A                     10.25000        0.02000    0\n"
                          "height differences\ndirections\ngps baselines\nphoto coordinates\n");
}

TEST(CompactPrepare, PrintsAnEmptyLineBetweenListsOfAnglesThatAreNotParallel)
{
    for (int dim : {2, 3})
        for (int ndir1 : {0, 1, 2})
            for (int ndir2 : {0, 1})
                for (int idebug : {0, 1}) {
                    Net r(dim);
                    scatter(r, 2);
                    for (int k = 0; k < ndir1; k++) r.observe(r.dir1, 0, 1, 1.0, 1.0);
                    for (int k = 0; k < ndir2; k++) r.observe(r.dir2, 0, 1, 1.0, 1.0);
                    r.n.p.idebug = idebug;
                    ASSERT_EQ(r.solver(2, 0).prepare(), 0);
                    const bool line = ndir1 != ndir2 && !(dim == 2 && ndir2 == 0);
                    if (!idebug) {
                        EXPECT_EQ(r.report(), line ? "\n" : "");
                        continue;
                    }
                    const size_t found = r.report().find("\n\n");
                    EXPECT_EQ(found != std::string::npos, line) << dim << ndir1 << ndir2;
                    if (line) {
                        EXPECT_EQ(r.report().find("\n\n", found + 1), std::string::npos); // once
                    }
                }
}

// ---- normal equations ----

TEST(CompactAddrow, AddsTheProductsOfARowToTheLowerTriangle)
{
    Net r(2);
    r.nunk1 = 5;
    r.nunk2 = 4;
    compact &s = r.solver(0, 5); // every row is full
    ASSERT_EQ(s.prepare(), 0);
    for (int k = 5; k < 9; k++) ASSERT_EQ(firsts(s)[k], k); // but those of nuisance unknowns
    Vector n(25, 0.0), h(14, 0.0);
    const struct {
        std::vector<int> u1;
        Vector a1;
        double b;
    } rows[] = {{{4, 0}, {2, 3}, 0.5}, {{2, 2}, {1.5, 0.5}, -3.0}, {{}, {}, 9.0}, {{1, 3, 2}, {-1, 2, 4}, 1.0}};
    for (const auto &row : rows) {
        write_row(s, row.u1, row.a1, {}, {}, row.b);
        for (size_t i = 0; i < row.u1.size(); i++) {
            h[row.u1[i]] += row.a1[i] * row.b;
            for (size_t j = 0; j < row.u1.size(); j++) n[row.u1[i] * 5 + row.u1[j]] += row.a1[i] * row.a1[j];
        }
    }
    for (int i = 0; i < 14; i++) EXPECT_DOUBLE_EQ(S(s, delta)[i], h[i]);
    for (int i = 0; i < 5; i++)
        for (int j = 0; j < 5; j++) EXPECT_DOUBLE_EQ(at(s, i, j), n[i * 5 + j]);
}

TEST(CompactAddrow, AddsNuisanceUnknownsBehindTheCoordinates)
{
    Net r(3);
    scatter(r, 2);
    r.nunk2 = 17;
    for (int c = 0; c < 6; c++) r.points[0].n1[c] = c;
    r.observe(r.dist, 0, 1, 1.0, 1.0);
    OneLump l(r, {7});
    compact &s = r.solver(2, 0);
    ASSERT_EQ(s.prepare(), 0);
    write_row(s, {0, 4}, {2.0, 3.0}, {13, 7, 7}, {5.0, 7.0, 1.0}, 0.5);
    EXPECT_EQ(S(s, delta)[19], 2.5);
    EXPECT_EQ(S(s, delta)[13], 4.0);
    EXPECT_EQ(at(s, 19, 0), 10.0);
    EXPECT_EQ(at(s, 19, 4), 15.0);
    EXPECT_EQ(at(s, 19, 13), 40.0);
    EXPECT_EQ(at(s, 13, 13), 64.0); // a number that occurs twice adds up
    EXPECT_EQ(at(s, 4, 0), 6.0);
}

TEST(CompactAddrow, WritesNothingOutsideTheProfile)
{
    Net r(1);
    chain(r, 4);
    compact &s = r.solver(0, 0);
    ASSERT_EQ(s.prepare(), 0);
    write_row(s, {0, 3}, {1.0, 1.0}, {}, {}, 1.0); // the chain does not connect them
    EXPECT_EQ(full(s), (Vector{1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
}

TEST(CompactZeronormal, ClearsTheSystem)
{
    Net r(1);
    chain(r, 3);
    compact &s = r.solver(0, 0);
    ASSERT_EQ(s.prepare(), 0);
    s.zeronormal();
    S(s, normal)();
    EXPECT_EQ(at(s, 1, 0), -r.sdifh * r.sdifh);
    S(s, delta)[1] = 3.0;
    s.zeronormal();
    EXPECT_EQ(full(s), Vector(9, 0.0));
    for (int k = 0; k < 3; k++) EXPECT_EQ(S(s, delta)[k], 0.0);
}

// ---- datum rows ----

namespace {

const Entries PLANE = {{0, 0, '1', 0}, {1, 1, '1', 1}, {2, 0, 'Y', 0}, {2, 1, 'x', 1}};

Entries turnsat(int row)
{
    return {{row, 1, 'Z', 2},     {row, 2, 'y', 1},     {row + 1, 0, 'z', 2},
            {row + 1, 2, 'X', 0}, {row + 2, 0, 'Y', 1}, {row + 2, 1, 'x', 0}};
}

} // namespace

TEST(CompactDatum, PlaneHasShiftsAndTurnUnderTheFlagsOfTheColumns) { expect_table<compact>(2, 3, PLANE); }

TEST(CompactDatum, PlaneHasTheScaleWithFourRows)
{
    expect_table<compact>(2, 4, joined(PLANE, {{3, 0, 'x', 0}, {3, 1, 'y', 1}}));
}

TEST(CompactDatum, PlaneWithTwoRowsHasShiftsOnly) { expect_table<compact>(2, 2, {{0, 0, '1', 0}, {1, 1, '1', 1}}); }

TEST(CompactDatum, SpaceHasThreeTurnsWithSixOrSevenRows)
{
    expect_table<compact>(3, 6, joined(shifts(), turnsat(3)));
    expect_table<compact>(3, 7, joined(joined(shifts(), turnsat(3)), scaleat(6)));
}

TEST(CompactDatum, AMixedDatumInSpaceHoldsTheTurnsAlone)
{
    for (int imixed : {0, 1, 4}) expect_table<compact>(3, 3, turnsat(0), imixed);
    expect_table<compact>(2, 3, PLANE, 0); // only in space
}

TEST(CompactDatum, HeightsAreScaledByTheSmallestStandardDeviation)
{
    const struct {
        Vector sigma;
        double v;
    } cases[] = {{{}, 1.0},      {{2.0, 5.0}, 1.0}, {{0.5, 0.002, 3.0}, 0.002},
                 {{1e-7}, 1e-5}, {{1e-5}, 1e-5},    {{0.0}, 1e-5}};
    for (const auto &c : cases) {
        Net r(1);
        for (int p = 0; p < 3; p++) r.add("A", 0, 0, p);
        r.points[1].defdatum[2] = DATUM_UNUSED;
        for (double sigma : c.sigma) r.observe(r.difh, 0, 1, 1.0, sigma);
        compact &s = r.solver(0, 1);
        ASSERT_EQ(s.prepare(), 0);
        s.zeronormal();
        EXPECT_DOUBLE_EQ(at(s, 3, 0), 1.0 / c.v);
        EXPECT_EQ(at(s, 3, 1), 0.0);
        EXPECT_DOUBLE_EQ(at(s, 3, 2), 1.0 / c.v);
    }
}

TEST(CompactDatum, GivesAHalfFixedPointTheColumnOfItsOwnCoordinate)
{
    Net r(2);
    scatter(r, 3);
    point &p = r.points[0]; // x fixed, y the first unknown
    p.n0[0] = N_NONE, p.n0[1] = 0;
    p.defdatum[0] = DATUM_UNUSED;
    for (int k = 1; k < 3; k++)
        for (int c = 0; c < 2; c++) r.points[k].n0[c] = 2 * k - 1 + c;
    r.nunk1 = 5;
    compact &s = r.solver(0, 3);
    ASSERT_EQ(s.prepare(), 0);
    s.zeronormal();
    EXPECT_EQ(at(s, 6, 0), 1.0);
    EXPECT_EQ(at(s, 5, 0), 0.0);
    EXPECT_EQ(at(s, 5, 1), 1.0);
    EXPECT_EQ(at(s, 7, 0), p.xpt[0] - S(s, centre)[0]);
}

// ---- imported coordinates ----

TEST(CompactImport, NeedsMemoryForItsIndex)
{
    Net r(1);
    r.add("A", 0, 0, 5);
    compact &s = r.solver(0, 0);
    int lcon[1] = {0};
    S(s, icon) = 2;
    S(s, nimport) = 1;
    S(s, lcon) = lcon;
    fail_allocation(5); // behind compadd, cnorm, delta and work
    EXPECT_EQ(s.prepare(), -1);
    fail_allocation(0);
    EXPECT_EQ(r.report(), "\n*** pb with compact allocation ***\n");
    s.finish();
}

// ---- exchange ----

namespace {

// The symmetric matrix with the unknowns a and b exchanged.
Vector exchanged(const Vector &m, int n, int a, int b)
{
    Vector x((size_t)n * n);
    for (int i = 0; i < n; i++)
        for (int j = 0; j < n; j++) {
            const int p = i == a ? b : i == b ? a : i, q = j == a ? b : j == b ? a : j;
            x[(size_t)i * n + j] = m[(size_t)p * n + q];
        }
    return x;
}

// A free network with an orientation whose row starts behind the exchanged coordinates.
void border(Net &r)
{
    scatter(r, 5);
    r.nunk2 = 2;
    r.points[4].n1[2] = 0;
    r.observe(r.dir1, 4, 0, 1.0, 0.01);
    for (int p = 1; p < 5; p++) r.observe(r.dist, p, p - 1, 10.0 + p, 0.01);
}

} // namespace

TEST(CompactExchange, ExchangesRowsAndColumns)
{
    Net r(2);
    border(r);
    compact &s = r.solver(5, 3);
    ASSERT_EQ(s.prepare(), 0);
    for (size_t k = 0; k < C(s, compadd)[S(s, nunk)]; k++) C(s, cnorm)[k] = 1.0 + (double)k;
    for (int k = 0; k < 3; k++) {
        const int a = 7 + k, b = 12 + k;
        // What couples a nuisance unknown with a datum row lies outside the profile.
        for (int i = 10; i < 12; i++)
            if (C(s, element)(b, i)) *C(s, element)(b, i) = 0.0;
        const Vector before = full(s);
        ASSERT_EQ(C(s, exchange)(a, b), 0);
        EXPECT_EQ(full(s), exchanged(before, 15, a, b));
        ASSERT_EQ(C(s, exchange)(a, b), 0);
        EXPECT_EQ(full(s), before); // its own reverse
        ASSERT_EQ(C(s, exchange)(a, b), 0);
    }
    EXPECT_EQ(r.report(), "");
}

TEST(CompactExchange, RefusesAPairOutOfOrder)
{
    Net r(1);
    chain(r, 4);
    compact &s = r.solver(0, 1);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(C(s, exchange)(3, 3), -1);
    EXPECT_EQ(C(s, exchange)(4, 3), -1);
    EXPECT_EQ(C(s, exchange)(-1, 4), -1);
    EXPECT_EQ(C(s, exchange)(3, 5), -1);
    EXPECT_EQ(C(s, exchange)(2, 4), -1); // row 2 is not full
    EXPECT_EQ(r.report(), "\nProblem in exchange between 3 and 3\n"
                          "\nProblem in exchange between 4 and 3\n"
                          "\nProblem in exchange between -1 and 4\n"
                          "\nProblem in exchange between 3 and 5\n"
                          "\nProblem in exchange between 2 and 4\n");
}

TEST(CompactExchange, StopsResolutionAndInverseOfLumpsWithFewerThanSevenCoordinates)
{
    Net r(3);
    scatter(r, 2);
    r.nunk2 = 7;
    OneLump l(r, {0});
    compact &s = r.solver(0, 0);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(s.resolution(), -1);
    EXPECT_EQ(s.inverse(), -1);
    EXPECT_EQ(r.report(), "\nProblem in exchange between -1 and 6\n\nProblem in exchange between -1 and 6\n");
}

TEST(CompactExchange, StopsResolutionOfFewerCoordinatesThanDatumRows)
{
    Net r(2);
    r.add("A", 1, 10);
    compact &s = r.solver(0, 3);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(s.resolution(), -1);
    EXPECT_EQ(r.report(), "\nProblem in exchange between -1 and 2\n");
}

// ---- resolution ----

namespace {

// A system with random rows; returns its full matrix and right-hand side.
void assemble(compact &s, Vector *m, Vector *h)
{
    s.zeronormal();
    S(s, normal)();
    for (int i = 0; i < S(s, nunk1) + S(s, nunk2); i++) *C(s, element)(i, i) += 0.5 + i % 3;
    *m = full(s);
    h->assign(S(s, delta), S(s, delta) + S(s, nunk));
}

void expect_solution(compact &s, const Vector &m, const Vector &h)
{
    const int n = S(s, nunk);
    for (int i = 0; i < n; i++) {
        double sum = 0.0;
        for (int j = 0; j < n; j++) sum += m[(size_t)i * n + j] * S(s, delta)[j];
        EXPECT_NEAR(sum, h[i], 1e-6 * (1.0 + fabs(h[i]))) << i;
    }
}

} // namespace

TEST(CompactResolution, SolvesTheSystemInPlace)
{
    for (int ndatum : {0, 3, 4}) {
        Net r(2);
        border(r);
        compact &s = r.solver(5, ndatum);
        ASSERT_EQ(s.prepare(), 0);
        Vector m, h;
        assemble(s, &m, &h);
        ASSERT_EQ(s.resolution(), 0);
        expect_solution(s, m, h);
    }
}

TEST(CompactResolution, SolvesWithLumpsInTheirPlace)
{
    Net r(3);
    scatter(r, 4);
    r.nunk2 = 8;
    r.points[3].n1[2] = 0;
    r.observe(r.dist, 3, 0, 10.0, 0.1);
    r.observe(r.dir1, 3, 0, 1.0, 0.1);
    OneLump l(r, {1});
    compact &s = r.solver(4, 0);
    ASSERT_EQ(s.prepare(), 0);
    Vector m, h;
    assemble(s, &m, &h);
    for (int p = 0; p < 7; p++) // as observations of a lump couple them
        for (int c : {0, 5, 9, 12})
            m[(13 + p) * 20 + c] = m[c * 20 + 13 + p] = *C(s, element)(13 + p, c) = 0.1 * (p + c % 4);
    ASSERT_EQ(s.resolution(), 0);
    expect_solution(s, m, h);
}

TEST(CompactResolution, TellsTheLineAndTheValueOfAPivotBelowTheLimit)
{
    Net r(1);
    chain(r, 3); // nothing holds the heights
    compact &s = r.solver(0, 0);
    ASSERT_EQ(s.prepare(), 0);
    s.zeronormal();
    S(s, normal)();
    EXPECT_EQ(s.resolution(), -2);
    EXPECT_EQ(r.report(), "\n*** Problem with routine cvec at line 2 ***\npivot[2]=  0.000000000000000\n");
    EXPECT_EQ(C(s, work)[2], 0.0);
}

TEST(CompactResolution, PrintsTheSystemAsItStandsAfterAFailureOfATracedRun)
{
    Net r(1);
    chain(r, 2);
    r.n.p.idebug = 9;
    compact &s = r.solver(0, 0);
    ASSERT_EQ(s.prepare(), 0);
    s.zeronormal();
    write_row(s, {0, 1}, {2.0, -2.0}, {}, {}, 1.5);
    const size_t before = r.report().size();
    EXPECT_EQ(s.resolution(), -2);
    EXPECT_EQ(r.report().substr(before), "\n*** Problem with routine cvec at line 1 ***\npivot[1]=  0.000000000000000\n"
                                         "\nNormal matrix line by line\ntype 1\n"
                                         "line 0   delta            0.750000000000\n"
                                         "0               0.250000000000\n"
                                         "line 1   delta            0.000000000000\n"
                                         "1              -1.000000000000\n"
                                         "2               4.000000000000\n"
                                         "type 2\ntype 3\n"
                                         "\nRHS to check \n"
                                         "first RHS     #  0 =            0.750000000000\n"
                                         "first RHS     #  1 =            0.000000000000\n");
}

TEST(CompactResolution, StopsTheRun)
{
    Net r(1);
    chain(r, 2);
    compact &s = r.solver(0, 0);
    EXPECT_EQ(s.iterate(), -3);
    EXPECT_EQ(r.report(), "\n\nCompact storage solution\nVersion 0.0\n"
                          "\n*** Problem with routine cvec at line 1 ***\npivot[1]=  0.000000000000000\n"
                          "\nProgram stops in resolution\n");
    EXPECT_EQ(C(s, cnorm), nullptr);
}

TEST(CompactResolution, TakesANetworkWithoutUnknowns)
{
    Net r(2);
    compact &s = r.solver(0, 0);
    EXPECT_EQ(s.iterate(), 0);
}

// ---- inverse ----

TEST(CompactInverse, IsMadeAtTheCurrentCoordinatesInTheOrderOfTheUnknowns)
{
    for (int ndatum : {0, 3}) {
        Net r(2);
        border(r);
        for (int p = 2; p < 5; p++) // all distances, so that only the datum is missing
            for (int q = 0; q < p - 1; q++) r.observe(r.dist, p, q, 10.0, 0.01);
        r.nunk2 = 1;
        if (ndatum == 0) {
            for (int c = 0; c < 2; c++) r.points[0].n0[c] = r.points[1].n0[c] = N_NONE;
            for (int p = 2; p < 5; p++)
                for (int c = 0; c < 2; c++) r.points[p].n0[c] -= 4;
            r.nunk1 = 6;
        }
        compact &s = r.solver(5, ndatum);
        ASSERT_EQ(s.prepare(), 0);
        s.zeronormal();
        S(s, normal)();
        ASSERT_EQ(s.resolution(), 0); // the profile holds factors
        r.points[4].xpt[0] += 3.0;
        ASSERT_EQ(s.inverse(), 0);
        const int n = S(s, nunk);
        const Vector inv(S(s, inv), S(s, inv) + (size_t)n * n);
        s.zeronormal();
        S(s, normal)();
        const Vector m = full(s);
        for (int i = 0; i < n; i++)
            for (int j = 0; j < n; j++) {
                double sum = 0.0;
                for (int k = 0; k < n; k++) sum += m[(size_t)i * n + k] * inv[(size_t)k * n + j];
                EXPECT_NEAR(sum, i == j ? 1.0 : 0.0, 1e-8) << ndatum << " " << i << " " << j;
                EXPECT_NEAR(inv[(size_t)i * n + j], inv[(size_t)j * n + i], 1e-8);
            }
        EXPECT_EQ(r.report(), "");
    }
}

TEST(CompactInverse, GivesHeightsTheirVariances)
{
    // Two lines from a fixed height: variances s^2 and 2 s^2, covariance s^2.
    Net r(1);
    chain(r, 3);
    r.points[0].n0[2] = N_NONE, r.points[1].n0[2] = 0, r.points[2].n0[2] = 1;
    r.nunk1 = 2;
    for (measure &m : r.difh) m.val[1] = 0.5 * r.sdifh;
    compact &s = r.solver(0, 0);
    ASSERT_EQ(s.prepare(), 0);
    ASSERT_EQ(s.inverse(), 0);
    const double want[4] = {0.25, 0.25, 0.25, 0.5};
    for (int k = 0; k < 4; k++) EXPECT_DOUBLE_EQ(S(s, inv)[k], want[k]);
}

TEST(CompactInverse, TellsTheLineAndTheValueOfAPivotBelowTheLimit)
{
    Net r(1);
    chain(r, 3);
    compact &s = r.solver(0, 0);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(s.inverse(), -2);
    EXPECT_EQ(r.report(), "\n*** Problem with routine cmat at line 2 ***\npivot[2]=  0.000000000000000\n");
}

TEST(CompactInverse, PrintsTheSystemAfterAFailureOfATracedRun)
{
    Net r(1);
    chain(r, 2);
    r.n.p.idebug = 9;
    compact &s = r.solver(0, 0);
    ASSERT_EQ(s.prepare(), 0);
    const size_t before = r.report().size();
    EXPECT_EQ(s.inverse(), -2);
    const std::string text = r.report().substr(before);
    const size_t line = text.find("\n*** Problem with routine cmat at line 1 ***\npivot[1]=  0.000000000000000\n");
    ASSERT_NE(line, std::string::npos);
    EXPECT_NE(text.find("\nNormal matrix line by line\n", line), std::string::npos);
    EXPECT_EQ(text.find("end debugnormal!\n", line), std::string::npos);
}

TEST(CompactInverse, ReturnsMinus9WithoutMemoryAndStopsTheInversion)
{
    Net r(1);
    chain(r, 2);
    r.points[0].n0[2] = N_NONE, r.points[1].n0[2] = 0;
    r.nunk1 = 1;
    r.n.p.irun = -2;
    compact &s = r.solver(0, 0);
    ASSERT_EQ(s.iterate(), 0);
    const std::string before = r.report();
    fail_allocation(1);
    EXPECT_EQ(s.inversion(), -5);
    fail_allocation(0);
    EXPECT_EQ(r.report(), before + "\n*** pb with allocation of inv ***\n\nProgram stops in inverse\n");
    EXPECT_EQ(C(s, cnorm), nullptr);
    EXPECT_EQ(S(s, inv), nullptr);
}

TEST(CompactInverse, ReturnsMinus9WithoutMemoryForTheInverseOrForTheWork)
{
    for (int k : {1, 2}) {
        Net r(1);
        chain(r, 2);
        compact &s = r.solver(0, 1);
        ASSERT_EQ(s.prepare(), 0);
        fail_allocation(k);
        EXPECT_EQ(s.inverse(), -9);
        fail_allocation(0);
        EXPECT_EQ(r.report(), "\n*** pb with allocation of inv ***\n");
        EXPECT_EQ(S(s, inv), nullptr); // finish has nothing to export
    }
}

// ---- release ----

TEST(CompactFinish, ReleasesEverythingAndMayBeCalledTwice)
{
    Net r(2);
    border(r);
    for (int p = 2; p < 5; p++)
        for (int q = 0; q < p - 1; q++) r.observe(r.dist, p, q, 10.0, 0.01);
    r.nunk2 = 1;
    compact &s = r.solver(5, 3);
    ASSERT_EQ(s.prepare(), 0);
    ASSERT_EQ(s.inverse(), 0);
    ASSERT_EQ(S(s, statalloc)(), 0);
    for (int k = 0; k < 2; k++) {
        s.finish();
        for (double *a : {S(s, rhs), S(s, delta), S(s, inv), C(s, cnorm), C(s, work), S(s, hlim), S(s, hnorm)})
            EXPECT_EQ(a, nullptr);
        EXPECT_EQ(C(s, compadd), nullptr);
        EXPECT_EQ(S(s, hall), nullptr);
    }
    EXPECT_EQ(r.report(), "");
}

namespace {

// A point that a baseline ties to a fixed one.
void tied(Net &r)
{
    scatter(r, 2);
    for (int c = 0; c < 3; c++) r.points[0].n0[c] = r.dim == 3 || c < 2 ? c : N_NONE, r.points[1].n0[c] = N_NONE;
    r.nunk1 = r.dim;
    if (r.dim == 3) r.baseline(1, 0, 1, 1, 1);
}

} // namespace

TEST(CompactFinish, HandsAFileOfStationsToTheExportWhileTheInverseStands)
{
    StationFile file;
    Net r(3);
    tied(r);
    compact &s = r.solver(1, 0);
    ASSERT_EQ(s.prepare(), 0);
    ASSERT_EQ(s.inverse(), 0);
    s.finish();
    EXPECT_EQ(r.report(), TOO_FEW);
    s.finish();
    EXPECT_EQ(r.report(), TOO_FEW); // not again
}

TEST(CompactFinish, LooksForNoFileOfStationsWithoutInverse)
{
    StationFile file;
    Net r(3);
    tied(r);
    compact &s = r.solver(1, 0);
    ASSERT_EQ(s.prepare(), 0);
    s.finish();
    EXPECT_EQ(r.report(), "");
}

TEST(CompactFinish, LooksForNoFileOfStationsInThePlane)
{
    StationFile file;
    Net r(2);
    scatter(r, 1);
    compact &s = r.solver(1, 0);
    ASSERT_EQ(s.prepare(), 0);
    S(s, inv) = (double *)calloc(1, sizeof(double));
    s.finish();
    EXPECT_EQ(r.report(), "");
    EXPECT_EQ(S(s, inv), nullptr);
}

// ---- trace of the system ----

namespace {

// Two heights with a datum row and a nuisance unknown.
compact &traced(Net &r)
{
    chain(r, 2);
    r.nunk2 = 1;
    compact &s = r.solver(0, 1);
    EXPECT_EQ(s.prepare(), 0);
    s.zeronormal();
    write_row(s, {0, 1}, {-2.0, 2.0}, {}, {}, 0.5);
    write_row(s, {}, {}, {0}, {3.0}, -1.0);
    return s;
}

} // namespace

TEST(CompactDebugnormal, PrintsTheProfileWithItsPositionsAndTheRightHandSide)
{
    Net r(1);
    traced(r).debugnormal();
    // rows 0 | 1 2 | 3 | 4 5 6 7; zeros are left out
    EXPECT_EQ(r.report(), "\nNormal matrix line by line\n"
                          "type 1\n"
                          "line 0   delta           -1.000000000000\n"
                          "0               4.000000000000\n"
                          "line 1   delta            1.000000000000\n"
                          "1              -4.000000000000\n"
                          "2               4.000000000000\n"
                          "type 2\n"
                          "line 2   delta           -3.000000000000\n"
                          "3               9.000000000000\n"
                          "type 3\n"
                          "line 3   delta            0.000000000000\n"
                          "4               1.000000000000\n"
                          "5               1.000000000000\n"
                          "\nRHS to check \n"
                          "first RHS     #  0 =           -1.000000000000\n"
                          "first RHS     #  1 =            1.000000000000\n"
                          "other RHS     #  0 =           -3.000000000000\n"
                          "datum RHS     #  0 =            0.000000000000\n");
}

TEST(CompactDebugnormal, PrintsNoRightHandSideInErrorPropagation)
{
    Net r(1);
    r.n.p.irun = -2;
    traced(r).debugnormal();
    EXPECT_EQ(r.report(), "\nNormal matrix line by line\n"
                          "type 1\n"
                          "line 0 \n"
                          "0               4.000000000000\n"
                          "line 1 \n"
                          "1              -4.000000000000\n"
                          "2               4.000000000000\n"
                          "type 2\n"
                          "line 2 \n"
                          "3               9.000000000000\n"
                          "type 3\n"
                          "line 3 \n"
                          "4               1.000000000000\n"
                          "5               1.000000000000\n");
}

// ---- networks above the order that is worked on row by row ----

namespace {

const int MANY = 250;

// A chain of heights.
void longchain(Net &r)
{
    for (int p = 0; p < MANY; p++) r.add("A", 0, 0, 2.0 * p);
    for (int p = 1; p < MANY; p++) r.observe(r.difh, p - 1, p, 2.0 + 0.001 * (p % 7), 1.0);
}

} // namespace

TEST(CompactLarge, TellsTheLineAndTheValueOfAPivotBelowTheLimit)
{
    for (int idebug : {0, 9}) {
        Net r(1);
        longchain(r);
        r.n.p.idebug = idebug;
        compact &s = r.solver(0, 0);
        ASSERT_EQ(s.prepare(), 0);
        s.zeronormal();
        S(s, normal)();
        const Vector before(C(s, cnorm), C(s, cnorm) + C(s, compadd)[MANY]);
        const size_t length = r.report().size();
        EXPECT_EQ(s.resolution(), -2);
        const std::string text = r.report().substr(length);
        const std::string lines = "\n*** Problem with routine cvec at line 249 ***\npivot[249]=  0.000000000000000\n";
        EXPECT_EQ(text.substr(0, lines.size()), lines);
        EXPECT_EQ(text.size() > lines.size(), idebug == 9);
        EXPECT_EQ(C(s, cnorm)[before.size() - 1], before.back()); // the failing diagonal
        EXPECT_EQ(s.inverse(), -2);
        EXPECT_NE(r.report().find("\n*** Problem with routine cmat at line 249 ***\npivot[249]=  0.000000000000000\n"),
                  std::string::npos);
    }
}

TEST(CompactLarge, AdjustsAFreeChainToItsClosedForm)
{
    Net r(1);
    longchain(r);
    compact &s = r.solver(0, 1);
    ASSERT_EQ(s.prepare(), 0);
    s.zeronormal();
    S(s, normal)();
    ASSERT_EQ(s.resolution(), 0);
    // Every line is met; the sum of the corrections is zero.
    double sum = 0.0;
    for (int p = 0; p < MANY; p++) sum += S(s, delta)[p];
    EXPECT_NEAR(sum, 0.0, 1e-9);
    for (int p = 1; p < MANY; p++) EXPECT_NEAR(S(s, delta)[p] - S(s, delta)[p - 1], 0.001 * (p % 7), 1e-11);
    // Cofactor of a height difference along the chain: the number of its lines over their weight.
    ASSERT_EQ(s.inverse(), 0);
    const double *q = S(s, inv);
    const size_t n = MANY + 1;
    for (size_t a : {0, 17, 100, 200})
        for (size_t b : {20, 101, 249}) {
            const double lines = fabs((double)a - (double)b) / (r.sdifh * r.sdifh);
            EXPECT_NEAR(q[a * n + a] + q[b * n + b] - 2.0 * q[a * n + b], lines, 1e-9) << a << " " << b;
        }
    for (size_t a = 0; a < n; a++)
        for (size_t b = 0; b < a; b++) EXPECT_EQ(q[a * n + b], q[b * n + a]);
}

TEST(CompactLarge, AgreesWithJordan)
{
    for (int ndatum : {3, 4, 0}) {
        Solved<compact> c(2);
        Solved<jordan> j(2);
        auto build = [&](auto &r) {
            std::mt19937 random(5);
            std::uniform_real_distribution<double> one(-500.0, 500.0);
            for (int p = 0; p < 90; p++) {
                const double x = one(random), y = one(random);
                r.add("A", x, y);
            }
            if (ndatum == 0) {
                for (point &p : r.points)
                    for (int k = 0; k < 2; k++) p.n0[k] = p.n0[k] < 4 ? N_NONE : p.n0[k] - 4;
                r.nunk1 -= 4;
            }
            for (int p = 60; p < 90; p++) r.points[p].n1[2] = r.nunk2++;
            for (int p = 60; p < 90; p++)
                for (int q = p % 7; q < 90; q += 3) {
                    if (p == q) continue;
                    const double dx = r.points[q].xpt[0] - r.points[p].xpt[0],
                                 dy = r.points[q].xpt[1] - r.points[p].xpt[1];
                    if (ndatum != 4) r.observe(r.dist, p, q, hypot(dx, dy) + 0.01 * sin(p + 3.0 * q), 0.01);
                    r.observe(r.dir1, p, q, atan2(dy, dx) + 2e-5 * cos(p + 5.0 * q), 2e-5);
                }
            r.solver(90, ndatum);
            EXPECT_EQ(r.s->prepare(), 0);
            r.s->zeronormal();
            S(*r.s, normal)();
            EXPECT_EQ(r.s->resolution(), 0);
            const Vector delta(S(*r.s, delta), S(*r.s, delta) + S(*r.s, nunk));
            EXPECT_EQ(r.s->inverse(), 0);
            return delta;
        };
        const Vector a = build(c), b = build(j);
        const int n = S(*c.s, nunk);
        ASSERT_GT(n, 200);
        double step = 0.0, cofactor = 0.0, largest = 0.0;
        for (int i = 0; i < n - ndatum; i++) {
            step = fmax(step, fabs(a[i] - b[i]));
            for (int k = 0; k < n - ndatum; k++) {
                const size_t at = (size_t)i * n + k;
                cofactor = fmax(cofactor, fabs(S(*c.s, inv)[at] - S(*j.s, inv)[at]));
                largest = fmax(largest, fabs(S(*j.s, inv)[at]));
            }
        }
        EXPECT_LT(step, 1e-10) << ndatum;
        EXPECT_LT(cofactor, 1e-8 * largest) << ndatum;
    }
}
