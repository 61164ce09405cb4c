#include <gtest/gtest.h>

#include "approx/sketch.h"

namespace {

// Plane positions stand in the points; heights are carried along one line of stations.
class HeightSpread : public ::testing::Test {
protected:
    HeightSpread()
    {
        P = s.station("P", 0, 0, 0.0, 12.0);
        Q = s.station("Q", 100, 0, 0.0, 17.0);
        A = s.target("A", 100, 50, 21.0);
        B = s.target("B", -30, 40, 3.0);
        for (int i = 0; i < 4; i++) s.know(i);
    }

    void run()
    {
        s.wire();
        s.xap.assign(4, 0.0);
        s.yap.assign(4, 0.0);
        height_spread(s.net(), s.xap.data(), s.yap.data());
    }

    void shot(int from, int to)
    {
        s.vertical(from, to, atan2(s.truth[to].x[2] - s.truth[from].x[2], s.level(from, to)));
    }

    Sketch s = Sketch(3);
    int P, Q, A, B;
};

const double rounding = 1e-12; // metres

TEST_F(HeightSpread, CarriesHeightsForwardFromTheFirstPointAndShiftsThemToTheFirstKnownHeight)
{
    shot(P, Q);
    shot(Q, A);
    shot(P, B);
    s.know_height(A);
    run();
    EXPECT_NEAR(s.points[P].xpt[2], 12, rounding);
    EXPECT_NEAR(s.points[Q].xpt[2], 17, rounding);
    EXPECT_EQ(s.points[A].xpt[2], 21.0); // a known height is not written
    EXPECT_NEAR(s.points[B].xpt[2], 3, rounding);
}

TEST_F(HeightSpread, SubtractsTheHeightOfTheAimedPointOnTheWayBackToAStation)
{
    // h(P) = 0, h(B) = -9 from P; back from Q over B: h(Q) = rise(Q, B) - h(B).
    shot(P, B);
    shot(Q, B);
    s.know_height(P);
    run();
    const double rise = 3.0 - 17.0;
    EXPECT_NEAR(s.points[Q].xpt[2], 12.0 + rise - (3.0 - 12.0), 1e-11);
}

TEST_F(HeightSpread, MakesOnePassAndGivesTheShiftToWhatItDidNotReach)
{
    shot(Q, A); // Q is not known yet
    shot(P, Q);
    s.know_height(P);
    run();
    EXPECT_NEAR(s.points[Q].xpt[2], 17, rounding);
    EXPECT_EQ(s.points[A].xpt[2], 12.0);
    EXPECT_EQ(s.points[B].xpt[2], 12.0);
}

TEST_F(HeightSpread, KeepsTheFirstHeightOfAPoint)
{
    shot(P, A);
    s.vertical(P, A, 0.7);
    s.vertical(A, P, 0.7); // from a target: skipped
    s.know_height(P);
    run();
    EXPECT_NEAR(s.points[A].xpt[2], 21, rounding);
}

TEST_F(HeightSpread, LeavesOtherKnownHeightsAsTheyAre)
{
    shot(P, Q);
    shot(P, A);
    s.know_height(P);
    s.points[A].xpt[2] = 500;
    s.points[A].n0[2] = N_NONE;
    run();
    EXPECT_EQ(s.points[A].xpt[2], 500);
    EXPECT_NEAR(s.points[Q].xpt[2], 17, rounding);
}

} // namespace
