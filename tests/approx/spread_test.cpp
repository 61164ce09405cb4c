#include <gtest/gtest.h>

#include "approx/sketch.h"
#include "support/faults.h"

namespace {

const double rounding = 1e-9; // metres

// Networks of two stations and four targets, started in the ways that they allow.
class Spread : public ::testing::Test {
protected:
    void build(int dim, int typ = 0)
    {
        s = std::make_unique<Sketch>(dim);
        P = s->station("P", 10, 20, 0.5, 3, typ);
        Q = s->station("Q", 80, -15, -0.9, 9, typ);
        A = s->target("A", 70, 90, 40);
        B = s->target("B", -30, 5, -7);
        C = s->target("C", 20, -100, 2);
        D = s->target("D", 120, 40, 8);
        if (dim == 3) s->know_height(P);
    }
    void TearDown() override { fail_allocation(0); }

    void see(int from, const std::vector<int> &points)
    {
        for (int t : points) s->sight(from, t);
    }

    // Codes become the numbers that the datum gives; no test here needs one made up.
    int run()
    {
        s->wire();
        return spread(s->net());
    }

    void expect_place(int i)
    {
        const Sketch::Place &t = s->truth[i];
        for (int k = 0; k < s->n.p.dim; k++) EXPECT_NEAR(s->points[i].xpt[k], t.x[k], rounding) << s->points[i].name;
        if (i > Q) return;
        EXPECT_NEAR(remainder(s->points[i].xex[2] + t.turn, 8 * atan(1.0)), 0, 1e-11);
    }

    void expect_all(const std::vector<int> &points)
    {
        for (int i : points) expect_place(i);
    }

    void told(const std::string &line) { EXPECT_NE(s->report().find(line), std::string::npos) << s->report(); }
    void not_told(const std::string &line) { EXPECT_EQ(s->report().find(line), std::string::npos) << s->report(); }

    std::unique_ptr<Sketch> s;
    int P = 0, Q = 0, A = 0, B = 0, C = 0, D = 0;
};

TEST_F(Spread, FromOneKnownStationWithDistancesToEveryPoint)
{
    for (int dim : {2, 3}) {
        build(dim, 1);
        s->know(P);
        s->know_turn(P);
        s->know_turn(Q);
        see(P, {Q, A, B, C, D});
        for (int t : {Q, A, B, C, D}) s->range(P, t);
        see(Q, {A}); // Q is reached and is used itself
        ASSERT_EQ(run(), 0);
        if (dim == 3) s->truth[Q].x[2] = s->points[Q].xpt[2]; // heights have tests of their own
        expect_all({P, Q, A, B, C, D});
        EXPECT_EQ(s->report(), "");
    }
}

// A local frame is brought to the first two known points. What else is known, here wrongly, is
// written over.
TEST_F(Spread, WritesKnownPointsAndOrientationsToo)
{
    build(2);
    see(P, {Q, A, B});
    see(Q, {P, A, B});
    for (int i : {Q, A, B}) s->know(i);
    s->know_turn(P);
    s->points[B].xpt[0] += 5;
    s->points[B].xpt[1] -= 3;
    s->points[P].xex[2] += 0.25;
    ASSERT_EQ(run(), 0);
    expect_all({P, Q, A, B});
}

TEST_F(Spread, TracesCountsAndResult)
{
    build(2, 1);
    s->know(P);
    s->know_turn(P);
    s->know_turn(Q);
    for (int t : {Q, A, B}) {
        s->sight(P, t);
        s->range(P, t);
    }
    s->n.p.idebug = 1;
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(s->report(), "In start_spread, P is used\nIn start_spread, Q is used\n"
                           "\n  0  1 |   2  3  0  0\n  0  0 |   0  0  0  0\n\n"
                           "Number of stations: 2\n             nused: 2\n            nresec: 0\n"
                           "             npair: 0\n             nleft: 0\n"
                           "\nAll points have been computed\n"
                           "P  -3        10.00000        20.00000         0.50000\n"
                           "Q  -3        80.00000       -15.00000        -0.90000\n"
                           "A  -1        70.00000        90.00000\n"
                           "B  -1       -30.00000         5.00000\n"
                           "C   0         0.00000         0.00000\n"
                           "D   0         0.00000         0.00000\n");
}

TEST_F(Spread, WritesTargetsThatNoTwoStationsReachAsZero)
{
    build(2, 1);
    s->know(P);
    s->know_turn(P);
    s->know(Q);
    s->know_turn(Q);
    see(P, {A});
    see(Q, {B});
    s->points[B].xpt[0] = s->points[B].xpt[1] = 77;
    ASSERT_EQ(run(), 0);
    for (int t : {A, B})
        for (int k = 0; k < 2; k++) EXPECT_EQ(s->points[t].xpt[k], 0.0);
}

TEST_F(Spread, FromResectionsOfAllStations)
{
    for (int dim : {2, 3}) {
        build(dim);
        for (int t : {A, B, C}) s->know(t);
        for (int i : {P, Q}) see(i, {A, B, C, D});
        ASSERT_EQ(run(), 0);
        if (dim == 3) s->truth[Q].x[2] = s->points[Q].xpt[2];
        expect_all({P, Q, A, B, C, D});
        EXPECT_EQ(s->report(), "");
    }
}

TEST_F(Spread, WithOneUselessResectionGoesOnToAPair)
{
    build(2);
    for (int t : {A, B, C}) s->know(t);
    see(P, {A, B, C, D, Q});
    see(Q, {A, B, P});
    s->n.p.idebug = 1;
    ASSERT_EQ(run(), 0);
    told("and not a useful one...\n\n");
    told("Must do transformations.. \n");
    expect_all({P, Q, A, B});
}

TEST_F(Spread, FromAPairOfTwoStationsNeedsNoStep)
{
    build(2);
    for (int t : {A, B}) s->know(t);
    see(P, {Q, A, B, C, D});
    see(Q, {P, A, B, C, D});
    ASSERT_EQ(run(), 0);
    expect_all({P, Q, A, B, C, D});
}

TEST(SpreadInSpace, FromAGuess)
{
    Sketch s(3);
    const int P = s.station("P", 0, 0, 1.7), Q = s.station("Q", 100, 0, -0.9);
    for (int k = 0; k < 6; k++)
        s.target(("T" + std::to_string(k)).c_str(), 50 + 60 * cos(2.4 * k), 70 * sin(2.4 * k + 0.3),
                 50 * sin(5.0 * k + 1));
    for (int t = 2; t < 8; t++)
        for (int i : {P, Q}) s.sight(i, t);
    s.know(2);
    s.know(3);
    s.know_height(P);
    s.wire();
    ASSERT_EQ(spread(s.net()), 0);
    EXPECT_EQ(s.report(), "");
    for (int i = 0; i < 8; i++) // three iterations from a grid of 18 degrees, both ends of the scale known
        for (int k = 0; k < 2; k++) EXPECT_NEAR(s.points[i].xpt[k], s.truth[i].x[k], 0.01) << s.points[i].name;
}

TEST_F(Spread, WithAPairThatSharesNoPointStartsFromItAllTheSame)
{
    // The second station of a pair counts as common to both.
    build(2);
    for (int t : {P, Q}) s->know(t);
    see(P, {Q, A});
    see(Q, {P, B});
    ASSERT_EQ(run(), 0);
    expect_all({P, Q});
}

TEST_F(Spread, WithoutAnyStartFails)
{
    build(2);
    see(P, {A, B, C});
    see(Q, {A, B, C});
    EXPECT_EQ(run(), -3);
    told("\nguess_spread: dead end!\n");
}

TEST_F(Spread, EndsWhenNothingMoreCanBeDone)
{
    build(3, 1); // in the plane the diagnosis of the open station would call itself successful
    s->know(P);
    s->know_turn(P);
    see(P, {A, B});
    s->range(P, A);
    see(Q, {A});
    EXPECT_EQ(run(), -5);
    told("\n!! Cannot do anything more !!\n");
}

TEST_F(Spread, CountsADoneStationThatGivesNoDistancesAsLeftForEver)
{
    build(3);
    for (int t : {A, B, C}) s->know(t);
    s->know(P);
    s->know_turn(P);
    see(P, {D});
    see(Q, {A, B, C, D});
    s->range(Q, A); // the one resection is of use
    EXPECT_EQ(run(), -5);
    told("\n!! Cannot do anything more !!\n");
    EXPECT_EQ(s->points[Q].xpt[0], 0.0); // nothing is written
}

TEST(SpreadInSpace, OfTwoKnownStationsWithoutDistancesNoticesThemResectsAndEndsTheSameWay)
{
    Sketch s(3);
    int station[4], target[3];
    for (int i = 0; i < 4; i++)
        station[i] = s.station(("S" + std::to_string(i)).c_str(), 50.0 * i, 7.0 * i * i, 0.1 * i, 0.0, 0);
    for (int t = 0; t < 3; t++) {
        target[t] = s.target(("T" + std::to_string(t)).c_str(), 90.0 * t, 150.0 - 60.0 * t * t, 20.0 * t);
        s.know(target[t]);
        for (int i : {2, 3}) s.sight(station[i], target[t]);
    }
    for (int i : {0, 1}) {
        s.know(station[i]);
        s.know_turn(station[i]);
    }
    s.n.p.idebug = 1;
    s.wire();
    EXPECT_EQ(spread(s.net()), -5);
    for (const char *line : {"There are 2 all known stations\n", "\nTO DO: case of more than 2 known stations....\n",
                             "Number of resections at the start = 2\n", "\n!! Cannot do anything more !!\n"})
        EXPECT_NE(s.report().find(line), std::string::npos) << line;
}

TEST_F(Spread, FromAPairWithoutOtherCommonPointPlacesThePairAlone)
{
    build(2);
    see(P, {Q, A});
    see(Q, {P, B});
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(s->report(), "colli_spread: Could not scale \n");
    EXPECT_EQ(s->points[P].xpt[0], 0.0);
    EXPECT_EQ(s->points[Q].xpt[0], 1.0);
    EXPECT_EQ(s->points[A].xpt[0], 0.0);
}

TEST_F(Spread, FromTwoKnownStationsWithoutDistancesEndsAtOnceWithNotices)
{
    build(3);
    for (int i : {P, Q}) {
        s->know(i);
        s->know_turn(i);
        see(i, {A, B, C});
    }
    // no resection and no pair: a guess, which leaves two known stations alone
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(s->report(), "\nTO DO: case of more than 2 known stations....\n"
                           "\nin guess_spread: already at least 2 theos known\n"
                           "                 should not be here!!!\n");
    for (int i : {P, Q})
        for (int k = 0; k < 2; k++) EXPECT_NEAR(s->points[i].xpt[k], s->truth[i].x[k], rounding);
}

// The result with the n-th allocation failing.
int result_without(Sketch &s, int n)
{
    s.wire();
    fail_allocation(n);
    const int result = spread(s.net());
    fail_allocation(0);
    return result;
}

TEST_F(Spread, FromAPairEndsByTheDocumentedResultsWhenMemoryFails)
{
    build(2);
    for (int t : {A, B}) s->know(t);
    see(P, {Q, A, B, C, D});
    see(Q, {P, A, B, C, D});
    s->wire();
    fail_allocation(0);
    ASSERT_EQ(spread(s->net()), 0);
    const int all = allocations();
    std::vector<int> results;
    for (int n = 1; n <= all; n++) {
        const int result = result_without(*s, n);
        if (results.empty() || results.back() != result) results.push_back(result);
    }
    EXPECT_EQ(results, (std::vector<int>{-7, -2, -6}));
    told("In spread: pb with tabpair\n");
    told("In spread: stop in t2pt\n");
}

TEST_F(Spread, SaysWhichTableFoundNoMemory)
{
    build(2, 1);
    s->know(P);
    s->know_turn(P);
    s->know_turn(Q);
    see(P, {Q});
    s->range(P, Q);
    s->wire();
    fail_allocation(0);
    ASSERT_EQ(spread(s->net()), 0);
    const int all = allocations();
    const std::string table = "In spread: pb with table\n";
    std::string wanted;
    for (int n = 1; n <= all; n++) {
        s->wire();
        fail_allocation(n);
        EXPECT_EQ(spread(s->net()), -7) << n;
        if (n <= 3) wanted += "In spread: pb with xap\n";
        if (n >= 4 && n <= 6) wanted += table;
        if (n == 7) wanted += "In spread: pb with table when i=0\n";
        if (n == 8) wanted += "In spread: pb with table when i=1\n";
        if (n >= 9) wanted += table; // lists of shots
    }
    EXPECT_EQ(s->report(), wanted);
    EXPECT_EQ(s->net()->seen.first, nullptr);
}

} // namespace
