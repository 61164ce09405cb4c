#include <gtest/gtest.h>
#include <limits.h>
#include <math.h>

#include "support/dense.h"
#include "support/faults.h"
#include "support/random_network.h"
#include "support/simplex_hand.h"

namespace {

bool holds(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

std::vector<double> row_of(simplex &s, int i) { return std::vector<double>(L1(s, a)[i], L1(s, a)[i] + S(s, nunk)); }

typedef std::vector<double> Row;

// Two points in space with one observation of every kind.
Hand &with_all_kinds(Hand &h)
{
    h.n.p.iangle = ANGLE_GON;
    const double gon = acos(-1.0) / 200.0;
    h.add("S", 0, 0, 0);
    h.add("T", 100, 0, 10);
    h.observe(h.dist, 0, 1, 100.5, 0.01);
    h.observe(h.difh, 0, 1, 10.0, 0.02);
    h.observe(h.dir1, 0, 1, 399.0 * gon, 0.001 * gon);
    h.observe(h.dir2, 0, 1, 6.5 * gon, 0.002 * gon);
    return h;
}

} // namespace

// ---- prepare ----

TEST(Prepare, WeighsEveryRowByItsListAndItsOwnDeviation)
{
    Hand h(3);
    with_all_kinds(h);
    h.observe(h.difh, 0, 1, 10.0, 0.99e-7);
    h.observe(h.difh, 0, 1, 10.0, 1.0e-7);
    h.nfixh = 1;
    simplex &s = h.solver(1, 2);
    S(s, sdist) = 2.0;
    S(s, sdifh) = 3.0;
    S(s, sdir1) = 4.0;
    S(s, sdir2) = 5.0;
    ASSERT_EQ(s.prepare(), 0);
    const double gon = acos(-1.0) / 200.0;
    const double wanted[] = {200.0, 150.0, 1.0e8, 3.0e7, 4000.0 / gon, 2500.0 / gon, 1.0e8, 1.0, 1.0};
    for (int i = 0; i < 9; i++) {
        EXPECT_NEAR(S(s, rhs)[i], wanted[i], 1e-12 * wanted[i]) << i;
        EXPECT_EQ(L1(s, newpd)[i], S(s, rhs)[i]) << i;
    }
    EXPECT_EQ(L1(s, nobs), 0);
    EXPECT_EQ(L1(s, nplan), 7);
}

TEST(Prepare, AsksWhetherToBalance)
{
    Hand h(1);
    h.tableau(1, 1);
    EXPECT_EQ(h.n.messages.questions,
              (std::vector<std::string>{"Simplex Choice: Do you want to balance the observations?"}));
}

TEST(Prepare, ListsTheObservationsOnRequest)
{
    Hand h(3);
    simplex &s = with_all_kinds(h).solver(1);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(h.n.report(), "");

    Hand traced(3);
    simplex &t = with_all_kinds(traced).solver(1);
    S(t, idebug) = 1;
    ASSERT_EQ(t.prepare(), 0);
    EXPECT_EQ(traced.n.report(), "distances\n"
                                 "S         T                    100.50000        0.01000\n"
                                 "height differences\n"
                                 "S         T                     10.00000        0.02000\n"
                                 "directions\n"
                                 "S         T                    399.00000        6.50000        0.00100   0.00200\n");
}

TEST(Prepare, ListsDirectionsAndVerticalAnglesApartWhenTheyAreNoPairs)
{
    Hand h(3);
    with_all_kinds(h);
    h.observe(h.dir2, 1, 0, 0.0, 0.1);
    simplex &s = h.solver(1);
    S(s, idebug) = 1;
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_TRUE(holds(h.n.report(), "directions\n"
                                    "S         T                    399.00000        0.00100\n"
                                    "\n"
                                    "S         T                      6.50000        0.00200\n"
                                    "T         S                      0.00000        6.36620\n"));
}

TEST(Prepare, TakesTheMeanOfTheDatumPointsAsCentre)
{
    Hand h(2);
    h.add("A", 1, 10);
    h.add("B", 3, 20);
    h.add("C", 100, 60);
    h.points[2].defdatum[0] = DATUM_UNUSED;
    simplex &s = h.solver(0, 3);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(S(s, centre)[0], 2.0);
    EXPECT_EQ(S(s, centre)[1], 30.0);
}

TEST(Prepare, DropsAdditiveConstantsAndScalesInANetworkWithLumps)
{
    Hand h(3);
    h.add("S", 0, 0, 0);
    h.add("R", 0, 0, 0);
    h.add("T", 100, 0, 10);
    for (int i = 0; i < 2; i++) {
        h.points[i].n1[2] = i;
        h.points[i].n1[3] = 2;
    }
    h.points[1].n1[4] = 3;
    int iunk[] = {18, 11, 2}, epoch[] = {1, 2, 3};
    lump l = lump();
    l.nepoch = 4;
    l.iref = 2; // named by an entry: its number stays
    l.iunk = iunk;
    l.epoch = epoch;
    h.lumps.push_back(l);
    h.nunk2 = 25;
    simplex &s = h.solver(2);
    S(s, idebug) = 1;
    ASSERT_EQ(s.prepare(), 0);
    for (int i = 0; i < 2; i++) {
        EXPECT_EQ(h.points[i].n1[2], i);
        EXPECT_EQ(h.points[i].n1[3], N_NONE);
        EXPECT_EQ(h.points[i].n1[4], N_NONE);
    }
    EXPECT_EQ(iunk[0], 15);
    EXPECT_EQ(iunk[1], 11);
    EXPECT_EQ(iunk[2], 0); // not below the first unknown
    EXPECT_EQ(S(s, nunk2), 22);
    EXPECT_EQ(S(s, nunk), 9 + 22);
    EXPECT_TRUE(holds(h.n.report(), "prepare: take away 3 nuisance parameters\n"));
}

// More stations than unknowns share the constant: the count of unknowns stays at 0 or above, and
// the corrections have room for every number that the network knows.
TEST(Prepare, KeepsRoomForEveryNumberOfTheNetwork)
{
    Hand h(2);
    for (int i = 0; i < 4; i++) h.add("S", 0, 0).n1[3] = 1;
    h.lumps.push_back(lump());
    h.lumps.back().nepoch = 1;
    h.nunk2 = 2;
    simplex &s = h.solver(4);
    ASSERT_EQ(s.prepare(), 0);
    EXPECT_EQ(S(s, nunk2), 0);
    EXPECT_EQ(S(s, nunk), 8);
    for (int k = 0; k < 10; k++) EXPECT_EQ(S(s, delta)[k], 0.0);
}

TEST(Prepare, FailsWithoutMemory)
{
    for (int fail = 1; fail <= 8; fail++) {
        Hand h(3);
        simplex &s = with_all_kinds(h).solver(1);
        fail_allocation(fail);
        EXPECT_EQ(s.prepare(), -1);
        fail_allocation(0);
        EXPECT_EQ(h.n.report(), fail < 8 ? "pb with matrix or others\n" : "pb with matrix when i=0\n") << fail;
        s.finish();
    }
}

// Identifiers would pass the range of an int, or the tableau the memory.
TEST(Prepare, RefusesANetworkThatIsTooLarge)
{
    Hand h(1);
    h.add("A", 0, 0);
    simplex &s = h.solver();
    S(s, ndist) = INT_MAX;
    S(s, ndifh) = INT_MAX;
    EXPECT_EQ(s.prepare(), -1);
    EXPECT_EQ(h.n.report(), "pb with matrix or others\n");
    s.finish();
}

// ---- rows ----

namespace {

// A tableau of one distance (weight 100) and the row buffer of two coordinates and one parameter.
struct OneRow {
    OneRow() : h(2)
    {
        h.add("A", 0, 0);
        h.add("B", 100, 0);
        h.nunk2 = 2;
        h.observe(h.dist, 0, 1, 100.0, 0.01 * h.sdist);
        s = &h.solver(1);
        EXPECT_EQ(s->prepare(), 0);
        const int numbers[] = {2, 0, 3};
        const double values[] = {0.0, -50.0, 25.0};
        for (int k = 1; k <= 2; k++) {
            S(*s, ia1)[k] = numbers[k];
            S(*s, a1)[k] = values[k];
        }
        S(*s, ia2)[1] = 1;
        S(*s, a2)[1] = 100.0;
    }
    Hand h;
    simplex *s;
};

} // namespace

TEST(AddRow, StoresARowWithoutItsWeight)
{
    OneRow t;
    t.s->addrow(2, 1, 7.0);
    EXPECT_EQ(row_of(*t.s, 0), (Row{-0.5, 0, 0, 0.25, 0, 1.0}));
    EXPECT_EQ(S(*t.s, delta)[0], 0.07);
    EXPECT_EQ(L1(*t.s, ibase)[0], 2 * 6 + 1); // negative part of residual 0 of 1
    EXPECT_EQ(L1(*t.s, nobs), 1);
}

TEST(AddRow, TurnsARowOfNegativeMisclosure)
{
    OneRow t;
    t.s->addrow(2, 1, -7.0);
    EXPECT_EQ(row_of(*t.s, 0), (Row{0.5, 0, 0, -0.25, 0, -1.0}));
    EXPECT_EQ(S(*t.s, delta)[0], 0.07);
    EXPECT_EQ(L1(*t.s, ibase)[0], 2 * 6);
}

TEST(AddRow, TakesAMisclosureOfZeroAsPositive)
{
    OneRow t;
    t.s->addrow(2, 1, 0.0);
    EXPECT_EQ(row_of(*t.s, 0)[0], -0.5);
    EXPECT_EQ(L1(*t.s, ibase)[0], 2 * 6 + 1);
}

TEST(AddRow, KeepsTheLaterValueOfAnUnknownThatComesTwice)
{
    OneRow t;
    S(*t.s, ia1)[2] = 0;
    t.s->addrow(2, 1, 7.0);
    EXPECT_EQ(row_of(*t.s, 0), (Row{0.25, 0, 0, 0, 0, 1.0}));
}

TEST(AddRow, CountsARowBeyondTheListsAndStoresNothing)
{
    OneRow t;
    t.s->addrow(2, 1, 7.0);
    t.s->addrow(2, 1, -9.0);
    EXPECT_EQ(L1(*t.s, nobs), 1);
    EXPECT_EQ(L1(*t.s, nextra), 1);
    EXPECT_EQ(row_of(*t.s, 0)[5], 1.0);
}

// The weight of 1e8 goes in the row and stays in the cost.
TEST(AddRow, GivesAMeasureWithoutDeviationTheSameRow)
{
    Hand h(1);
    h.add("A", 0, 0, 1);
    h.add("B", 0, 0, 2);
    h.observe(h.difh, 0, 1, 1.25, 0.0);
    h.observe(h.difh, 0, 1, 1.25, 0.5 * h.sdifh);
    simplex &s = h.solver(0);
    ASSERT_EQ(s.prepare(), 0);
    S(s, normal)();
    EXPECT_EQ(row_of(s, 0), (Row{-1, 1}));
    EXPECT_EQ(row_of(s, 1), (Row{-1, 1}));
    EXPECT_EQ(S(s, delta)[0], 0.25);
    EXPECT_EQ(L1(s, newpd)[0], 1.0e8);
    EXPECT_EQ(L1(s, newpd)[1], 2.0);
}

// ---- conditions ----

namespace {

// Points B and C carry the datum unless the test says otherwise; A fills the first columns.
struct Conditions {
    Conditions(int dim, int ndatum_) : h(dim), ndatum(ndatum_)
    {
        h.add("A", 100, 200, 300);
        h.add("B", 110, 203, 307);
        for (int c = 0; c < 3; c++) h.points[0].defdatum[c] = DATUM_UNUSED;
        s = &h.solver(0, ndatum);
        EXPECT_EQ(s->prepare(), 0);
        for (int c = 0; c < 3; c++) S(*s, centre)[c] = 100.0 * (c + 1); // dx, dy, dz of B are 10, 3, 7
    }
    std::vector<Row> rows()
    {
        L1(*s, datumrows)();
        std::vector<Row> all;
        for (int i = 0; i < ndatum; i++) all.push_back(row_of(*s, i));
        return all;
    }
    Hand h;
    int ndatum;
    simplex *s;
};

} // namespace

TEST(DatumRows, HoldTheMeanHeight)
{
    Conditions t(1, 1);
    EXPECT_EQ(t.rows(), (std::vector<Row>{{0, 1}}));
}

TEST(DatumRows, HoldThePlaneWithACrossedRotation)
{
    Conditions t(2, 3);
    EXPECT_EQ(t.rows(), (std::vector<Row>{{0, 0, 1, 0}, {0, 0, 0, 1}, {0, 0, 10, -3}}));
}

TEST(DatumRows, HoldTheScaleOfAPlaneWithoutDistances)
{
    Conditions t(2, 4);
    EXPECT_EQ(t.rows(), (std::vector<Row>{{0, 0, 1, 0}, {0, 0, 0, 1}, {0, 0, 10, -3}, {0, 0, 10, 3}}));
}

TEST(DatumRows, TakeEachEntryOfThePlaneUnderItsFlag)
{
    Conditions first(2, 4);
    first.h.points[1].defdatum[1] = DATUM_UNUSED;
    EXPECT_EQ(first.rows(), (std::vector<Row>{{0, 0, 1, 0}, {0, 0, 0, 0}, {0, 0, 0, -3}, {0, 0, 10, 0}}));
    Conditions second(2, 4);
    second.h.points[1].defdatum[0] = DATUM_WEIGHTED;
    EXPECT_EQ(second.rows(), (std::vector<Row>{{0, 0, 0, 0}, {0, 0, 0, 1}, {0, 0, 10, 0}, {0, 0, 0, 3}}));
}

TEST(DatumRows, HoldSpaceByTheNumberOfConditions)
{
    const Row x{0, 0, 0, 1, 0, 0}, y{0, 0, 0, 0, 1, 0}, z{0, 0, 0, 0, 0, 1};
    const Row r1{0, 0, 0, 0, -7, 3}, r2{0, 0, 0, 7, 0, -10}, r3{0, 0, 0, -3, 10, 0}, scale{0, 0, 0, 10, 3, 7};
    EXPECT_EQ(Conditions(3, 3).rows(), (std::vector<Row>{x, y, z}));
    EXPECT_EQ(Conditions(3, 4).rows(), (std::vector<Row>{x, y, z, r3}));
    EXPECT_EQ(Conditions(3, 5).rows(), (std::vector<Row>{x, y, z, r3, scale}));
    EXPECT_EQ(Conditions(3, 6).rows(), (std::vector<Row>{x, y, z, r1, r2, r3}));
    EXPECT_EQ(Conditions(3, 7).rows(), (std::vector<Row>{x, y, z, r1, r2, r3, scale}));
}

TEST(DatumRows, TakeEachEntryOfSpaceUnderTheFlagOfItsColumn)
{
    Conditions t(3, 7);
    t.h.points[1].defdatum[1] = DATUM_UNUSED;
    EXPECT_EQ(t.rows(), (std::vector<Row>{{0, 0, 0, 1, 0, 0},
                                          {0, 0, 0, 0, 0, 0},
                                          {0, 0, 0, 0, 0, 1},
                                          {0, 0, 0, 0, 0, 3},
                                          {0, 0, 0, 7, 0, -10},
                                          {0, 0, 0, -3, 0, 0},
                                          {0, 0, 0, 10, 0, 7}}));
}

// A coordinate that is fixed has no column, whichever it is, and leaves those of the others alone.
TEST(DatumRows, LeaveOutFixedCoordinates)
{
    Conditions t(3, 3);
    t.h.points[0].defdatum[0] = t.h.points[0].defdatum[1] = t.h.points[0].defdatum[2] = DATUM_USED;
    t.h.points[0].n0[2] = N_NONE; // 0 1 -
    t.h.points[1].n0[0] = N_NONE; // - 2 3
    t.h.points[1].n0[1] = 2;
    t.h.points[1].n0[2] = 3;
    EXPECT_EQ(t.rows(), (std::vector<Row>{{1, 0, 0, 0, 0, 0}, {0, 1, 1, 0, 0, 0}, {0, 0, 0, 1, 0, 0}}));

    Conditions plane(2, 4);
    plane.h.points[1].n0[1] = N_NONE;
    EXPECT_EQ(plane.rows(), (std::vector<Row>{{0, 0, 1, 0}, {0, 0, 0, 0}, {0, 0, 10, 0}, {0, 0, 10, 0}}));

    Conditions height(1, 1);
    height.h.points[1].n0[2] = N_NONE;
    EXPECT_EQ(height.rows(), (std::vector<Row>{{0, 0}}));
}

// Conditions beyond ndatum have no row, numbers beyond the coordinates no column.
TEST(DatumRows, StayInsideTheTableau)
{
    Conditions t(3, 2);
    for (int &n : t.h.points[1].n0) n += 2;
    EXPECT_EQ(t.rows(), (std::vector<Row>{{0, 0, 0, 0, 0, 1}, {0, 0, 0, 0, 0, 0}}));
}
