#include <gtest/gtest.h>

#include "approx/sketch.h"

namespace {

class DatumApprox : public ::testing::Test {
protected:
    void build(int dim, int nsta, int ntar)
    {
        s = std::make_unique<Sketch>(dim);
        for (int i = 0; i < nsta; i++) s->station(("S" + std::to_string(i)).c_str(), 0, 0);
        for (int i = 0; i < ntar; i++) s->target(("T" + std::to_string(i)).c_str(), 0, 0);
        nsta_ = nsta;
    }

    void fix(int i, int k) { s->points[i].n0[k] = N_NONE; }
    void turn(int i) { s->points[i].n1[2] = N_NONE; }

    // Counts as the driver does.
    int run()
    {
        s->wire();
        for (int i = 0; i < (int)s->points.size(); i++) {
            for (int k = 0; k < 3; k++) s->ia1[k] += s->points[i].n0[k] == N_NONE;
            s->ia1[5] += i < nsta_ && s->points[i].n1[2] == N_NONE;
        }
        return datum_approx(s->net());
    }

    // x where known, - where not: the plane coordinates, the height and the orientation.
    std::string known(int i)
    {
        std::string text;
        for (int k = 0; k < 3; k++) text += s->points[i].n0[k] == N_NONE ? 'x' : '-';
        if (i < nsta_) text += s->points[i].n1[2] == N_NONE ? 'x' : '-';
        return text;
    }

    std::unique_ptr<Sketch> s;
    int nsta_ = 0;
};

TEST_F(DatumApprox, HoldsTheFirstStationWhenNothingIsKnown)
{
    build(3, 2, 1);
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(known(0), "xxxx");
    EXPECT_EQ(known(1), "----");
    EXPECT_EQ(known(2), "---");
    EXPECT_EQ(s->net()->nunk1, 6);
    EXPECT_EQ(s->net()->nunk2, 1);
    EXPECT_EQ(s->net()->nunk, 7);
}

TEST_F(DatumApprox, PrefersAStationThatIsToBeHeldWhereItWillBeFound)
{
    build(2, 3, 1);
    s->points[1].n0[0] = N_FIXED_MISSING; // one coordinate is not enough
    for (int k = 0; k < 2; k++) s->points[2].n0[k] = N_FIXED_MISSING;
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(known(0), "--x-");
    EXPECT_EQ(known(2), "xxxx");
}

TEST_F(DatumApprox, FailsWithoutStations)
{
    build(2, 0, 2);
    EXPECT_EQ(run(), -2);
    EXPECT_EQ(s->report(), "In approx: Strange.... no theos...\n");
}

TEST_F(DatumApprox, CompletesALoneX2OfAStationAndHoldsItsTurn)
{
    build(2, 2, 2);
    fix(1, 1);
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(known(1), "xxxx");
    EXPECT_EQ(s->ia1[0], 1);
    EXPECT_EQ(s->ia1[5], 1);
}

TEST_F(DatumApprox, CompletesALoneX2OfATargetAndHoldsAnX1InPlaceOfATurn)
{
    build(3, 1, 2);
    fix(2, 1);
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(known(2), "xxx");  // its height too: the chosen point
    EXPECT_EQ(known(0), "x---"); // the first x1 that is not known
    EXPECT_EQ(s->ia1[0], 2);
    EXPECT_EQ(s->ia1[5], 0);
}

TEST_F(DatumApprox, HoldsAnX1InPlaceOfATurnFromTheFirstTargetOn)
{
    build(3, 2, 2);
    fix(2, 1); // the first target
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(known(2), "xxx");
    EXPECT_EQ(known(0), "x---");
    EXPECT_EQ(known(1), "----");
    EXPECT_EQ(s->ia1[0], 2);
    EXPECT_EQ(s->ia1[5], 0);
}

TEST_F(DatumApprox, LeavesALoneX1AloneAndThenFindsNoStationToTurn)
{
    build(2, 1, 1);
    fix(1, 0);
    EXPECT_EQ(run(), -2);
    EXPECT_EQ(known(1), "x-x");
    EXPECT_EQ(s->report(), "In approx: Strange.... cannot fix...\n");
}

TEST_F(DatumApprox, LeavesALoneX1AloneAndGoesOnWithAKnownTurn)
{
    build(3, 1, 2);
    fix(2, 0);
    turn(0);
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(known(0), "---x");
    EXPECT_EQ(known(1), "---");
    EXPECT_EQ(known(2), "x-x"); // no point was chosen: the height of the first with a known coordinate
}

TEST_F(DatumApprox, HoldsTheTurnOfTheOneKnownStation)
{
    build(2, 3, 1);
    fix(1, 0);
    fix(1, 1);
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(known(1), "xxxx");
    EXPECT_EQ(known(0), "--x-");
}

TEST_F(DatumApprox, CannotTurnAboutOneKnownTarget)
{
    build(2, 1, 1);
    fix(1, 0);
    fix(1, 1);
    EXPECT_EQ(run(), -2);
    EXPECT_EQ(s->report(), "In approx: Strange.... cannot fix...\n");
}

TEST_F(DatumApprox, KeepsAKnownTurnOfAnotherStation)
{
    build(2, 2, 1);
    fix(2, 0);
    fix(2, 1);
    turn(1);
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(known(0), "--x-");
    EXPECT_EQ(known(1), "--xx");
}

TEST_F(DatumApprox, HangsSeveralKnownPointsOnTheFirstKnownStationThatMeasuresDistances)
{
    build(2, 3, 2);
    for (int i : {1, 2, 3})
        for (int k : {0, 1}) fix(i, k);
    fix(4, 0);
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(known(1), "xxxx");
    for (int i : {0, 2}) EXPECT_EQ(known(i), "--x-");
    for (int i : {3, 4}) EXPECT_EQ(known(i), "--x");
    EXPECT_EQ(s->ia1[0], 4); // the counts stay
    EXPECT_EQ(s->ia1[1], 3);
    EXPECT_EQ(s->ia1[5], 0);
    EXPECT_EQ(s->net()->nunk1, 3);
    EXPECT_EQ(s->net()->nunk2, 3);
}

// Three known coordinates are more than a position; points before the station are freed as well.
TEST_F(DatumApprox, HangsThreeKnownCoordinatesOnAStation)
{
    build(2, 3, 1);
    fix(1, 0), fix(1, 1);
    fix(0, 1); // before it
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(known(1), "xxxx");
    for (int i : {0, 2}) EXPECT_EQ(known(i), "--x-");
    EXPECT_EQ(known(3), "--x");
    EXPECT_EQ(s->ia1[5], 0); // not counted

    build(2, 2, 1);
    fix(0, 0), fix(0, 1);
    fix(2, 0); // behind it
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(known(0), "xxxx");
    EXPECT_EQ(known(2), "--x");
}

TEST_F(DatumApprox, KeepsSeveralKnownPointsWhenTheFirstKnownStationMeasuresNoDistances)
{
    build(2, 2, 1);
    s->n.stations[0].typ = 0;
    for (int i : {0, 1, 2})
        for (int k : {0, 1}) fix(i, k);
    ASSERT_EQ(run(), 0);
    for (int i : {0, 1}) EXPECT_EQ(known(i), "xxx-");
    EXPECT_EQ(known(2), "xxx");
}

TEST_F(DatumApprox, KeepsSeveralKnownTargets)
{
    build(2, 1, 2);
    for (int i : {1, 2})
        for (int k : {0, 1}) fix(i, k);
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(known(0), "--x-");
    for (int i : {1, 2}) EXPECT_EQ(known(i), "xxx");
}

TEST_F(DatumApprox, HoldsTheHeightOfTheFirstPointWithAKnownCoordinate)
{
    build(3, 1, 2);
    for (int i : {1, 2})
        for (int k : {0, 1}) fix(i, k);
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(known(1), "xxx");
    EXPECT_EQ(known(2), "xx-");
    EXPECT_EQ(s->ia1[2], 1);
}

TEST_F(DatumApprox, KeepsAKnownHeight)
{
    build(3, 1, 1);
    fix(1, 2);
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(known(0), "xx-x");
    EXPECT_EQ(known(1), "--x");
}

TEST_F(DatumApprox, FailsInThePlaneWhenAHeightIsToBeComputed)
{
    build(2, 1, 1);
    s->points[1].n0[2] = N_MISSING;
    EXPECT_EQ(run(), -2);
    EXPECT_EQ(s->report(), "In approx: Strange.... when dim=2....\n");
}

TEST_F(DatumApprox, FailsWhenMoreIsCountedAsKnownThanThereIs)
{
    build(3, 1, 0);
    s->wire();
    s->ia1[0] = s->ia1[1] = s->ia1[2] = 2;
    s->ia1[5] = 3;
    EXPECT_EQ(datum_approx(s->net()), -3);
    EXPECT_EQ(s->report(), "In approx: Strange.... nunk1=-3\n                       nunk2=-2\n");
}

TEST_F(DatumApprox, NumbersTargetsBeforeStations)
{
    build(3, 2, 1);
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(s->points[2].n0[0], 0);
    EXPECT_EQ(s->points[2].n0[2], 2);
    EXPECT_EQ(s->points[1].n0[0], 3);
    EXPECT_EQ(s->points[1].n0[2], 5);
    EXPECT_EQ(s->points[1].n1[2], 0);
    EXPECT_EQ(s->points[0].n1[2], N_NONE);
    EXPECT_EQ(s->report(), "");
}

TEST_F(DatumApprox, TracesTheCountsOfKnownItems)
{
    build(3, 2, 1);
    s->n.p.idebug = 1;
    fix(0, 0), fix(0, 1), fix(1, 1), fix(1, 2), turn(0);
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(s->report(), "In datum_approx: # of x1 fixed= 1\n                 # of x2 fixed= 2\n"
                           "                 # of x3 fixed= 1\n                 # of R3 fixed= 1\n");
}

} // namespace
