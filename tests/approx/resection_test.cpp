#include <gtest/gtest.h>

#include <algorithm>

#include "approx/resection.h"
#include "approx/sketch.h"

namespace {

const double pi = 4.0 * atan(1.0);
const double rounding = 1e-9; // metres, radians: coordinates of some 100 m after a few dozen roundings

// A station at (30, 40) with five targets around it.
class Resec : public ::testing::Test {
protected:
    void build(int dim, int typ = 0, double turn = 0.3)
    {
        s = std::make_unique<Sketch>(dim);
        S = s->station("S", 30, 40, turn, 5.0, typ);
        A = s->target("A", 100, 0, 10);
        B = s->target("B", 120, 90, 20);
        C = s->target("C", 10, 150, 0);
        D = s->target("D", -80, 60, 30);
        E = s->target("E", -20, -70, 40);
    }

    int resec(int iscale = 1) { return vornengine::resec(s->net(), s->tab(), iscale, S); }

    void place(const std::vector<int> &known)
    {
        for (int t : known) s->place(t);
    }

    void expect_station(double x = 30, double y = 40, double turn = 0.3)
    {
        EXPECT_NEAR(s->xap[S], x, rounding);
        EXPECT_NEAR(s->yap[S], y, rounding);
        EXPECT_NEAR(s->oap[S], turn, rounding);
    }

    std::unique_ptr<Sketch> s;
    int S = 0, A = 0, B = 0, C = 0, D = 0, E = 0;
};

TEST_F(Resec, FindsPositionAndOrientationFromThreeTargets)
{
    build(2);
    for (int t : {A, B, C}) s->sight(S, t);
    s->wire();
    place({A, B, C});
    ASSERT_EQ(resec(), 0);
    expect_station();
    EXPECT_EQ(s->itheo[S], 0); // the status is the caller's
    EXPECT_EQ(s->report(), "");
}

TEST_F(Resec, FindsEveryOrientationInTheRangeFromMinusPiToPi)
{
    for (int k = -12; k <= 12; k++) {
        const double turn = 0.26 * k; // up to 3.12
        build(2, 0, turn);
        for (int t : {D, A, C}) s->sight(S, t);
        s->wire();
        place({A, C, D});
        ASSERT_EQ(resec(), 0);
        expect_station(30, 40, turn);
    }
}

// The extreme of a danger circle: all three points in one place.
TEST_F(Resec, OfPointsInOnePlaceIsWhatTheDivisionGives)
{
    build(2);
    for (int t : {A, B, C}) s->sight(S, t);
    s->wire();
    place({A, B, C});
    for (int t : {A, B, C}) s->xap[t] = s->yap[t] = 7.0;
    ASSERT_EQ(resec(), 0);
    EXPECT_FALSE(std::isfinite(s->xap[S]));
}

TEST_F(Resec, NeedsThreeKnownPoints)
{
    build(2);
    for (int t : {A, B, C}) s->sight(S, t);
    s->wire();
    place({A, C});
    EXPECT_EQ(resec(), -1);
    EXPECT_EQ(s->report(), "resec: Cannot find 3 fixed points to resect S\n");
}

TEST_F(Resec, TakesStationsThatArePlacedOrDoneAfterTheTargets)
{
    Sketch n(2);
    const int S0 = n.station("S", 30, 40, 0.3), P = n.station("P", 100, 0), Q = n.station("Q", 10, 150);
    n.station("R", 5, 5);
    const int A0 = n.target("A", 120, 90);
    for (int t : {P, Q, 3, A0}) n.sight(S0, t);
    n.n.p.idebug = 1;
    n.wire();
    n.place(P, THEO_PLACED);
    n.place(Q, THEO_DONE);
    n.place(3, THEO_ORIENTED); // a position that is not known
    n.xap[3] = 1e6;
    n.place(A0);
    ASSERT_EQ(vornengine::resec(n.net(), n.tab(), 1, S0), 0);
    EXPECT_NEAR(n.xap[S0], 30, rounding);
    EXPECT_NEAR(n.yap[S0], 40, rounding);
    char line[200];
    snprintf(line, sizeof line, "S A   %15.5lf\nS P   %15.5lf\nS Q   %15.5lf\n", n.n.p.htoraw(1, n.dir1[3].val[0]),
             n.n.p.htoraw(1, n.dir1[0].val[0]), n.n.p.htoraw(1, n.dir1[1].val[0]));
    EXPECT_EQ(n.report(), line);
}

TEST_F(Resec, LooksAtFiveShotsOnly)
{
    build(2);
    const int F = s->target("F", 200, 200);
    for (int t : {A, B, C, D, E, F}) s->sight(S, t);
    s->dir1.back().val[0] += 1.0; // a blunder that nothing looks at
    s->wire();
    place({A, B, C, D, E, F});
    ASSERT_EQ(resec(), 0);
    expect_station();
    EXPECT_EQ(s->report(), "");
}

TEST_F(Resec, TakesTheLastShotOfAPair)
{
    build(2);
    for (int t : {A, B, C}) s->sight(S, t);
    s->dir1[0].val[0] += 0.5;
    s->sight(S, A);
    s->wire();
    place({A, B, C});
    ASSERT_EQ(resec(), 0);
    expect_station();
}

TEST_F(Resec, ReplacesAnAngleOfZeroAndStaysFinite)
{
    build(2);
    const int F = s->target("F", 170, -40); // behind A as seen from S
    s->sight(S, A);
    s->direction(S, F, s->dir1[0].val[0]);
    s->sight(S, B);
    s->n.p.idebug = 1;
    s->wire();
    place({A, B, F});
    ASSERT_EQ(resec(), 0);
    EXPECT_TRUE(std::isfinite(s->xap[S]) && std::isfinite(s->yap[S]) && std::isfinite(s->oap[S]));
    // the targets come in their order A, B, F: F is the third
    EXPECT_NE(s->report().find("Warning: Play around with alp[2] around 0.\n"), std::string::npos);
    EXPECT_EQ(s->report().find("Pi/2"), std::string::npos);
}

// Runs resec3 on three readings with the given angles from the first.
std::string guarded(double first, double second, double alp[3])
{
    Sketch n(2);
    const int S0 = n.station("S", 0, 0), A0 = n.target("A", 100, 0), B0 = n.target("B", 100, 100),
              C0 = n.target("C", -100, 50);
    n.direction(S0, A0, 0.0);
    n.direction(S0, B0, first);
    n.direction(S0, C0, second);
    n.n.p.idebug = 1;
    n.wire();
    for (int t : {A0, B0, C0}) n.place(t);
    const int ishot[3] = {0, 1, 2};
    threeshots three;
    resec3(n.net(), n.tab(), S0, ishot, &three);
    std::copy_n(three.alp, 3, alp);
    for (int k = 0; k < 3; k++) { // the aimed points come back in full
        EXPECT_EQ(three.xx[k], n.truth[A0 + k].x[0]);
        EXPECT_EQ(three.yy[k], n.truth[A0 + k].x[1]);
    }
    const std::string text = n.report();
    const size_t at = text.find("Warning");
    return at == std::string::npos ? "" : text.substr(at);
}

TEST(Resec3, GuardsTheRightAngleOnItsOwnSide)
{
    double alp[3];
    EXPECT_EQ(guarded(pi / 2, 2.0, alp), "Warning: Play around with alp[1] around Pi/2.\n");
    EXPECT_EQ(alp[1], 1.57079);
    EXPECT_EQ(alp[2], 2.0);
    EXPECT_EQ(guarded(1.0, pi / 2 + 0.9e-5, alp), "Warning: Play around with alp[2] around Pi/2.\n");
    EXPECT_EQ(alp[2], 1.5708);
    EXPECT_EQ(guarded(pi / 2 - 1.1e-5, pi / 2 + 1.1e-5, alp), "");
}

TEST(Resec3, DoesNotGuardTheRightAngleToTheOtherSide)
{
    double alp[3];
    EXPECT_EQ(guarded(-pi / 2, 1.0, alp), "");
    EXPECT_EQ(alp[1], -pi / 2);
}

TEST(Resec3, GuardsZeroFromBothSides)
{
    double alp[3];
    EXPECT_EQ(guarded(-0.9e-5, 1.0, alp), "Warning: Play around with alp[1] around 0.\n");
    EXPECT_EQ(alp[1], 1e-5);
    EXPECT_EQ(guarded(1.1e-5, -1.1e-5, alp), "");
}

TEST(Resec3, WrapsTheAnglesOnce)
{
    double alp[3];
    guarded(1.5 * pi, -1.25 * pi, alp);
    EXPECT_NEAR(alp[1], -0.5 * pi, 1e-15);
    EXPECT_NEAR(alp[2], 0.75 * pi, 1e-15);
}

TEST_F(Resec, AcceptsDistancesThatAgree)
{
    build(3, 1);
    for (int t : {A, B, C, D}) s->sight(S, t);
    for (int t : {A, C}) s->range(S, t);
    s->n.p.idebug = 1;
    s->wire();
    place({A, B, C, D});
    ASSERT_EQ(resec(), 0);
    expect_station();
    const std::string text = s->report(), ends = "Resection checked with distances\n";
    EXPECT_EQ(text.substr(text.size() - ends.size()), ends);
}

TEST_F(Resec, ReportsADistanceBeyondATenthAndTriesTheExtraShots)
{
    build(2, 1);
    for (int t : {A, B, C, D}) s->sight(S, t);
    const double c = s->level(S, A);
    s->distance(S, A, c / 0.89); // |d - c| is 0.11 d
    s->n.p.idebug = 1;
    s->wire();
    place({A, B, C, D});
    ASSERT_EQ(resec(), 0);
    expect_station();
    char lines[300];
    snprintf(lines, sizeof lines,
             "Problem with distance between S A\n   measured horizontal %15.5lf\n   computed horizontal %15.5lf\n"
             "Check the resection with extra shots\n",
             c / 0.89, c);
    EXPECT_NE(s->report().find(lines), std::string::npos) << s->report();
}

TEST_F(Resec, AcceptsADistanceWithinATenth)
{
    build(2, 1);
    for (int t : {A, B, C}) s->sight(S, t);
    s->distance(S, A, s->level(S, A) / 0.91);
    s->n.p.idebug = 1;
    s->wire();
    place({A, B, C});
    ASSERT_EQ(resec(), 0);
    EXPECT_NE(s->report().find("Resection checked with distances\n"), std::string::npos);
}

TEST_F(Resec, WithThreeShotsOnlyAContradictionChangesNothing)
{
    build(2, 1);
    for (int t : {A, B, C}) s->sight(S, t);
    s->distance(S, A, 10);
    s->n.p.idebug = 1;
    s->wire();
    place({A, B, C});
    ASSERT_EQ(resec(), 0);
    expect_station();
    EXPECT_EQ(s->report().find("Check the resection"), std::string::npos);
}

// A triangle of short sights, computed distance 5.9.
std::string short_sight(double measured)
{
    Sketch n(2);
    const int S0 = n.station("S", 0, 0), A0 = n.target("A", 5.9, 0), B0 = n.target("B", 3, 6),
              C0 = n.target("C", -4, 3);
    for (int t : {A0, B0, C0}) n.sight(S0, t);
    n.distance(S0, A0, measured);
    n.n.p.idebug = 1;
    n.wire();
    for (int t : {A0, B0, C0}) n.place(t);
    vornengine::resec(n.net(), n.tab(), 1, S0);
    return n.report();
}

TEST(ResecTolerance, IsAtLeastOneForShortSights)
{
    EXPECT_NE(short_sight(5.0).find("Resection checked with distances\n"), std::string::npos);
    EXPECT_NE(short_sight(4.8).find("Problem with distance between S A\n"), std::string::npos);
}

TEST_F(Resec, ComparesTheFirstDistanceOfAPair)
{
    build(2, 1);
    for (int t : {A, B, C}) s->sight(S, t);
    s->range(S, A);
    s->distance(S, A, 1000);
    s->n.p.idebug = 1;
    s->wire();
    place({A, B, C});
    ASSERT_EQ(resec(), 0);
    EXPECT_NE(s->report().find("Resection checked with distances\n"), std::string::npos);
}

TEST_F(Resec, ChecksNoDistanceOfAStationThatGivesNone)
{
    build(2, 0);
    for (int t : {A, B, C}) s->sight(S, t);
    s->distance(S, A, 1000);
    s->n.p.idebug = 1;
    s->wire();
    place({A, B, C});
    ASSERT_EQ(resec(), 0);
    EXPECT_EQ(s->report().find("distance"), std::string::npos);
}

TEST_F(Resec, ChecksNoDistanceWhenVerticalAnglesAreNotParallelToDirections)
{
    build(3, 1);
    for (int t : {A, B, C}) s->sight(S, t);
    s->distance(S, A, 1000);
    s->dir2.pop_back();
    s->n.p.idebug = 1;
    s->wire();
    place({A, B, C});
    ASSERT_EQ(resec(), 0);
    EXPECT_EQ(s->report().find("distance"), std::string::npos);
    expect_station();
}

TEST_F(Resec, TakesShotsFourTwoThreeOfFourAndWarnsOfATurnBeyondSixtyDegrees)
{
    build(2);
    for (int t : {A, B, C, D}) s->sight(S, t);
    s->dir1[3].val[0] += 2.5; // the fourth shot is wrong
    s->wire();
    place({A, B, C, D});
    ASSERT_EQ(resec(), 0);
    EXPECT_EQ(s->report(), "Warning: The resection for S does not check\n");
    const double o = s->oap[S], x = s->xap[S], y = s->yap[S];
    EXPECT_GT(fabs(o - 0.3), pi / 3);
    // The kept result is the one of D, B, C: it satisfies their three directions.
    for (int k : {3, 1, 2}) {
        const int p = (int)(s->dir1[k].p2 - s->points.data());
        const double ray = atan2(s->yap[p] - y, s->xap[p] - x);
        EXPECT_NEAR(remainder(2 * (ray - o - s->dir1[k].val[0]), 2 * pi), 0.0, 1e-9) << k; // a ray or its back
    }
}

TEST_F(Resec, TakesShotsFourFiveThreeOfFive)
{
    build(2);
    for (int t : {A, B, C, D, E}) s->sight(S, t);
    s->dir1[0].val[0] += 0.1;
    s->dir1[1].val[0] -= 0.1;
    s->wire();
    place({A, B, C, D, E});
    ASSERT_EQ(resec(), 0);
    expect_station();
}

TEST_F(Resec, WarnsOfATurnAcrossPiThoughItIsSmall)
{
    // The difference of the two orientations is not wrapped.
    build(2, 0, pi - 1e-4);
    for (int t : {A, B, C, D}) s->sight(S, t);
    s->dir1[3].val[0] -= 1e-3;
    s->wire();
    place({A, B, C, D});
    ASSERT_EQ(resec(), 0);
    const bool across = s->oap[S] < 0;
    EXPECT_EQ(s->report(), across ? "Warning: The resection for S does not check\n" : "");
    EXPECT_TRUE(across);
}

TEST_F(Resec, DoesNotWarnAfterDistancesFailed)
{
    build(2, 1);
    for (int t : {A, B, C, D}) s->sight(S, t);
    s->dir1[3].val[0] += 2.5;
    s->distance(S, A, 1000);
    s->wire();
    place({A, B, C, D});
    ASSERT_EQ(resec(), 0);
    EXPECT_EQ(s->report(), "");
    EXPECT_GT(fabs(s->oap[S] - 0.3), pi / 3); // the new result is taken with no further test
}

TEST_F(Resec, PlacesTargetsByDirectionAndDistance)
{
    for (int dim : {2, 3}) {
        build(dim, 1);
        for (int t : {A, B, C, D, E}) s->sight(S, t);
        for (int t : {D, E}) s->range(S, t);
        s->wire();
        place({A, B, C});
        ASSERT_EQ(resec(), 0);
        for (int t : {D, E}) {
            EXPECT_EQ(s->iobj[t - 1], OBJ_PLACED);
            EXPECT_NEAR(s->xap[t], s->truth[t].x[0], rounding);
            EXPECT_NEAR(s->yap[t], s->truth[t].x[1], rounding);
        }
    }
}

TEST_F(Resec, PlacesATargetByTheFirstShotAndTheFirstDistanceOfAPair)
{
    build(2, 1);
    for (int t : {A, B, C, D}) s->sight(S, t);
    s->range(S, D);
    s->direction(S, D, 1.0);
    s->distance(S, D, 1.0);
    s->wire();
    place({A, B, C});
    ASSERT_EQ(resec(), 0);
    EXPECT_NEAR(s->xap[D], -80, rounding);
    EXPECT_NEAR(s->yap[D], 60, rounding);
}

TEST_F(Resec, LeavesKnownTargetsWhereTheyAre)
{
    build(2, 1);
    for (int t : {A, B, C}) s->sight(S, t);
    s->distance(S, A, s->level(S, A) + 0.5);
    s->wire();
    place({A, B, C});
    ASSERT_EQ(resec(), 0);
    EXPECT_EQ(s->xap[A], 100);
}

TEST_F(Resec, PlacesNoTargetWithoutScale)
{
    build(2, 1);
    for (int t : {A, B, C, D}) s->sight(S, t);
    s->range(S, D);
    s->wire();
    place({A, B, C});
    ASSERT_EQ(resec(0), 0);
    EXPECT_EQ(s->iobj[D - 1], OBJ_UNKNOWN);
    EXPECT_EQ(s->xap[D], 0.0);
}

TEST_F(Resec, PlacesNoTargetWhenVerticalAnglesAreNotParallelToDirections)
{
    build(3, 1);
    for (int t : {A, B, C, D}) s->sight(S, t);
    s->range(S, D);
    s->vertical(S, D, 0.1);
    s->wire();
    place({A, B, C});
    ASSERT_EQ(resec(), 0);
    EXPECT_EQ(s->iobj[D - 1], OBJ_UNKNOWN);
}

} // namespace
