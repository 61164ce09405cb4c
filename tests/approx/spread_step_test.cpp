#include <gtest/gtest.h>

#include "approx/sketch.h"

namespace {

const double rounding = 1e-8; // metres, radians: a resection at some 100 m

// Four stations within five targets.
class SpreadStep : public ::testing::Test {
protected:
    explicit SpreadStep(int dim = 2) : s(dim)
    {
        P = s.station("P", 0, 0, 0.2, 1);
        Q = s.station("Q", 40, 35, -0.7, 2);
        R = s.station("R", -45, 20, 1.9, 3);
        T = s.station("T", 30, -60, -2.5, 4);
        A = s.target("A", 100, 5, 10);
        B = s.target("B", -100, 90, 20);
        C = s.target("C", 20, -120, -10);
        D = s.target("D", 150, 10, 15);
        E = s.target("E", -70, -30, 5);
        nleft = 4;
    }

    void see(int from, const std::vector<int> &points)
    {
        for (int t : points) s.sight(from, t);
    }

    void place(const std::vector<int> &targets)
    {
        if (!s.a) s.wire();
        for (int t : targets) s.place(t);
    }

    int step(int iscale = 0) { return spread_step(s.net(), s.tab(), &nleft, iscale); }

    void expect_place(int i)
    {
        EXPECT_NEAR(s.xap[i], s.truth[i].x[0], rounding) << i;
        EXPECT_NEAR(s.yap[i], s.truth[i].x[1], rounding) << i;
    }

    Sketch s;
    int P, Q, R, T, A, B, C, D, E, nleft;
};

TEST_F(SpreadStep, ResectsEveryStationThatSeesThreeKnownPoints)
{
    see(P, {A, B, C});
    see(Q, {A, B, C});
    see(R, {A, B});
    place({A, B, C});
    EXPECT_EQ(step(), 0);
    EXPECT_EQ(s.itheo, (std::vector<int>{THEO_DONE, THEO_DONE, THEO_UNKNOWN, THEO_UNKNOWN}));
    EXPECT_EQ(nleft, 2);
    for (int i : {P, Q}) {
        expect_place(i);
        EXPECT_NEAR(s.oap[i], s.truth[i].turn, rounding);
    }
    EXPECT_EQ(s.news(), "");
}

TEST_F(SpreadStep, CountsPlacedAndFinishedStationsAsKnownPoints)
{
    see(P, {A, Q, R});
    place({A});
    s.place(Q, THEO_PLACED);
    s.place(R, THEO_DONE);
    EXPECT_EQ(step(), 0);
    EXPECT_EQ(s.itheo[P], THEO_DONE);
    expect_place(P);
}

TEST_F(SpreadStep, DoesNotCountAnOrientedStationWithoutPosition)
{
    see(P, {A, B, Q});
    place({A, B});
    s.itheo[Q] = THEO_ORIENTED;
    EXPECT_EQ(step(), -4);
}

TEST_F(SpreadStep, ResectsAlsoAPlacedOrOrientedStationAnew)
{
    see(P, {A, B, C});
    see(Q, {A, B, C});
    place({A, B, C});
    s.itheo[P] = THEO_PLACED;
    s.xap[P] = 77;
    s.itheo[Q] = THEO_ORIENTED;
    s.oap[Q] = 3;
    EXPECT_EQ(step(), 0);
    expect_place(P);
    expect_place(Q);
    EXPECT_NEAR(s.oap[Q], s.truth[Q].turn, rounding);
    EXPECT_EQ(nleft, 2);
}

TEST_F(SpreadStep, LeavesFinishedStationsAlone)
{
    see(P, {A, B, C});
    place({A, B, C});
    s.place(P, THEO_DONE);
    s.xap[P] = 77;
    EXPECT_EQ(step(), -4);
    EXPECT_EQ(s.xap[P], 77);
}

TEST_F(SpreadStep, IntersectsTargetsWithTheFirstOtherFinishedStation)
{
    s.n.p.idebug = 1;
    see(P, {A, B, C, D});
    see(Q, {D, E});
    see(R, {D});
    place({A, B, C});
    s.place(Q, THEO_DONE);
    s.place(R, THEO_DONE);
    EXPECT_EQ(step(), 0);
    expect_place(D);
    EXPECT_EQ(s.iobj, (std::vector<int>{-1, -1, -1, -1, 0})); // E is seen from one station only
    const std::string text = s.news();
    EXPECT_NE(text.find("       intersection of   D by theo P and Q\n"), std::string::npos);
    EXPECT_EQ(text.find("and R"), std::string::npos);
}

TEST_F(SpreadStep, IntersectsStationsWithAnotherFinishedStation)
{
    see(P, {A, B, C, R, T});
    see(Q, {R, T});
    place({A, B, C});
    s.place(Q, THEO_DONE);
    s.itheo[T] = THEO_ORIENTED;
    EXPECT_EQ(step(), 0);
    expect_place(R);
    expect_place(T);
    EXPECT_EQ(s.itheo[R], THEO_PLACED);
    EXPECT_EQ(s.itheo[T], THEO_DONE);
    EXPECT_EQ(nleft, 3); // P alone: T is finished without being taken off the count
}

// A station that a step finishes serves no target of the same step.
TEST_F(SpreadStep, IntersectsTargetsBeforeStations)
{
    see(P, {A, B, C, D, T});
    see(Q, {T});
    see(T, {D});
    place({A, B, C});
    s.place(Q, THEO_DONE);
    s.itheo[T] = THEO_ORIENTED;
    s.oap[T] = s.truth[T].turn;
    EXPECT_EQ(step(), 0);
    EXPECT_EQ(s.itheo[T], THEO_DONE);
    EXPECT_EQ(s.iobj[D - A], OBJ_UNKNOWN);
}

TEST_F(SpreadStep, UsesDistancesInAFrameWithTrueScaleOnly)
{
    see(P, {A, B, C, D});
    s.range(P, D);
    place({A, B, C});
    EXPECT_EQ(step(0), 0);
    EXPECT_EQ(s.iobj[D - 4], OBJ_UNKNOWN);
    s.itheo[P] = THEO_UNKNOWN;
    EXPECT_EQ(step(1), 0);
    EXPECT_EQ(s.iobj[D - 4], OBJ_PLACED);
    expect_place(D);
}

TEST_F(SpreadStep, FailsWhenACountedStationWasMarkedItselfBeforeItsTurn)
{
    see(P, {A, B, Q});
    see(Q, {A, B, C});
    place({A, B, C});
    s.place(Q, THEO_PLACED); // counted for P, then marked for its own resection
    EXPECT_EQ(step(), -1);
    EXPECT_EQ(s.news(), "resec: Cannot find 3 fixed points to resect P\n");
    EXPECT_EQ(nleft, 4);
}

TEST_F(SpreadStep, AStationMarkedBeforeDoesNotCountForThoseAfterIt)
{
    see(P, {A, B, C});
    see(Q, {A, B, P});
    place({A, B, C});
    s.place(P, THEO_PLACED);
    EXPECT_EQ(step(), 0);
    EXPECT_EQ(s.itheo[P], THEO_DONE);
    EXPECT_EQ(s.itheo[Q], THEO_UNKNOWN); // its turn comes in the next pass
    EXPECT_EQ(step(), 0);
    EXPECT_EQ(s.itheo[Q], THEO_DONE);
    expect_place(Q);
    EXPECT_EQ(nleft, 2);
}

TEST_F(SpreadStep, ResectsAStationThatWasLeftMarked)
{
    see(P, {A, B});
    see(Q, {A, B, C});
    place({A, B, C});
    s.itheo[P] = THEO_RESECT;
    EXPECT_EQ(step(), -1); // P comes first and sees two points
    EXPECT_EQ(s.news(), "resec: Cannot find 3 fixed points to resect P\n");
}

TEST_F(SpreadStep, InThePlaneCallsAPatchSuccessfulAndStops)
{
    s.n.p.idebug = 1;
    see(Q, {A});
    place({A});
    s.itheo[P] = THEO_DONE;
    EXPECT_EQ(step(), -4);
    EXPECT_EQ(s.news(), "\nTry patching...\n"
                        "   Theo : Q has code 0\n        shot point A with code -1\n"
                        "             makes 1 shots\n             makes 1 shots on known targets\n"
                        "\nPatching successful ... now what??\n");
    EXPECT_EQ(nleft, 4);
}

TEST_F(SpreadStep, WithEveryStationFinishedThereIsNothingToPatch)
{
    place({});
    for (int &status : s.itheo) status = THEO_DONE;
    EXPECT_EQ(step(), -4);
    EXPECT_EQ(s.news(), "\n!! Cannot do anything more !!\n");
}

class SpreadStepInSpace : public SpreadStep {
protected:
    SpreadStepInSpace() : SpreadStep(3) {}
};

TEST_F(SpreadStepInSpace, AsksEveryUnfinishedStationAndGivesUp)
{
    place({});
    s.itheo = {THEO_PLACED, THEO_DONE, THEO_ORIENTED, THEO_DONE};
    EXPECT_EQ(step(), -4);
    const std::string none = "             makes 0 shots\n             makes 0 shots on known targets\n"
                             "will try a guess..........\nMust search for ";
    EXPECT_EQ(s.news(), "   Theo : P has code -1\n" + none + "P\n   Theo : R has code -2\n" + none +
                            "R\n\n!! Cannot do anything more !!\n");
}

} // namespace
