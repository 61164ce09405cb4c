// Whole spreads that begin in a frame of their own, from a pair of stations or by a guess.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "approx/sketch.h"
#include "support/faults.h"

namespace {

const double pi = 4.0 * atan(1.0);
const double rounding = 1e-8; // metres, radians: frame, resections and transformation of some 100 m

class LocalStart : public ::testing::Test {
protected:
    // sighted: P and Q sight each other; otherwise a guess has to find them.
    void build(int dim, bool sighted)
    {
        s = std::make_unique<Sketch>(dim);
        const double base = atan2(20, 90); // orientations of the grid of the search, from the base
        P = s->station("P", 1000, 2000, base + 3 * pi / 10, 50);
        Q = s->station("Q", 1090, 2020, base + 7 * pi / 10, 50);
        R = s->station("R", 1040, 1910, 0.2, 45);
        A = s->target("A", 1030, 2070, 70);
        B = s->target("B", 1080, 2075, 35);
        C = s->target("C", 1055, 1940, 58);
        D = s->target("D", 980, 2090, 81);
        E = s->target("E", 1130, 1930, 33);
        for (int i : {P, Q}) {
            if (sighted) s->sight(i, P + Q - i);
            for (int t : {A, B, C, D}) s->sight(i, t);
        }
        for (int t : {A, B, C, E}) s->sight(R, t);
        s->sight(P, E);
    }

    int run()
    {
        s->wire();
        return spread(s->net());
    }

    // After a run all points are in true place, or shifted.
    void expect_all(double dx = 0, double dy = 0)
    {
        for (int i = 0; i <= E; i++) {
            EXPECT_NEAR(s->points[i].xpt[0], s->truth[i].x[0] + dx, rounding) << i;
            EXPECT_NEAR(s->points[i].xpt[1], s->truth[i].x[1] + dy, rounding) << i;
        }
    }

    void expect_turns()
    {
        for (int i : {P, Q, R})
            EXPECT_NEAR(remainder(s->points[i].xex[2] + s->truth[i].turn, 2 * pi), 0, rounding) << i;
    }

    std::unique_ptr<Sketch> s;
    int P = 0, Q = 0, R = 0, A = 0, B = 0, C = 0, D = 0, E = 0;
};

TEST_F(LocalStart, FromAPairIsBroughtToTwoKnownPoints)
{
    for (int dim : {2, 3}) {
        build(dim, true);
        for (int i : {A, E}) s->know(i); // E is not common to the pair: the transformation scales
        ASSERT_EQ(run(), 0);
        expect_all();
        expect_turns();
        EXPECT_EQ(s->report(), "colli_spread: Could not scale \n");
    }
}

TEST_F(LocalStart, FromAPairWithTwoKnownCommonPointsHasItsScaleAtOnce)
{
    build(2, true);
    for (int i : {A, B}) s->know(i);
    ASSERT_EQ(run(), 0);
    expect_all();
    expect_turns();
    EXPECT_EQ(s->report(), "");
}

TEST_F(LocalStart, FromAPairWithABarUsesDistancesOfLaterStations)
{
    build(2, true);
    const int G = s->target("G", 1000, 1900);
    s->know(A);
    s->range(A, C);
    s->sight(R, G);
    s->range(R, G); // G is placed by R alone
    ASSERT_EQ(run(), 0);
    EXPECT_NEAR(hypot(s->points[G].xpt[0] - s->points[R].xpt[0], s->points[G].xpt[1] - s->points[R].xpt[1]),
                s->level(R, G), rounding);
    EXPECT_NEAR(hypot(s->points[P].xpt[0] - s->points[E].xpt[0], s->points[P].xpt[1] - s->points[E].xpt[1]),
                s->level(P, E), rounding);
    EXPECT_EQ(s->points[A].xpt[0], 1030); // shifted onto the only known point
}

TEST_F(LocalStart, WithoutAKnownPointKeepsTheBaseOfOne)
{
    build(2, true);
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(s->points[P].xpt[0], 0);
    EXPECT_EQ(s->points[Q].xpt[0], 1);
    EXPECT_NEAR(hypot(s->points[E].xpt[0], s->points[E].xpt[1]), s->level(P, E) / s->level(P, Q), rounding);
}

TEST_F(LocalStart, ByAGuessIsBroughtToTwoKnownPoints)
{
    build(3, false);
    for (int i : {A, D}) s->know(i);
    s->know_height(P);
    ASSERT_EQ(run(), 0);
    expect_all();
    expect_turns();
    for (int t : {A, B, C, D}) EXPECT_NEAR(s->points[t].xpt[2], s->truth[t].x[2], rounding);
    EXPECT_EQ(s->report(), "");
}

TEST_F(LocalStart, ByAGuessInThePlaneFails)
{
    build(2, false);
    for (int i : {A, E}) s->know(i);
    EXPECT_EQ(run(), -3);
    EXPECT_EQ(s->points[B].xpt[0], 0);
}

TEST_F(LocalStart, FailsWhenTheFrameCannotBeTransformed)
{
    build(2, true);
    for (const char *name : {"G", "H"}) s->know(s->target(name, 1000, 1900)); // nobody saw them
    EXPECT_EQ(run(), -6);
    EXPECT_EQ(s->points[B].xpt[0], 0); // nothing is written
    EXPECT_EQ(s->report(), "colli_spread: Could not scale \nIn ludcmp: null pivot\nIn spread: stop in t2pt\n");
}

TEST_F(LocalStart, FailsWhenAStationCannotBeReached)
{
    build(2, true);
    s->dir1.erase(s->dir1.end() - 5, s->dir1.end() - 1); // what R saw
    EXPECT_EQ(run(), -5);
    EXPECT_NE(s->report().find("\nPatching successful ... now what??\n"), std::string::npos);
}

using Ends = std::vector<std::pair<int, std::string>>; // result and last lines of each failure

void add(Ends &ends, int count, int result, const std::string &lines)
{
    ends.insert(ends.end(), (size_t)count, {result, lines});
}

// Results and lines of the allocations of a spread in space, in their order.
Ends without_memory(bool sighted)
{
    const std::string table = "In spread: pb with table", mat = "guess_solve: cannot allocate mat",
                      solve = "in guess_spread: cannot solve\n", stop = "In spread: stop in t2pt\n";
    Ends ends;
    add(ends, 3, -7, "In spread: pb with xap\n");
    add(ends, 3, -7, table + "\n");
    for (int i = 0; i < 3; i++) add(ends, 1, -7, table + " when i=" + std::to_string(i) + "\n");
    add(ends, 3 * 7 + 6, -7, table + "\n"); // lists of shots, seen points, distances; those turned round
    if (sighted) {
        add(ends, 1, -2, "In spread: pb with tabpair\n");
        add(ends, 1, -2, "in buildtabpair: cannot allocate\n");
    } else {
        add(ends, 1, -3, "in guess_spread: cannot allocate\n");
        add(ends, 3, -3, "guess_spread: cannot allocate isys, app or rhs\n");
        add(ends, 2, -3, "guess_solve: cannot allocate iweak\n" + solve);
        add(ends, 2, -3, mat + ", indx or rhssav\n" + solve);
        for (int i = 0; i < 3 * 4 + 3; i++) add(ends, 1, -3, mat + "[" + std::to_string(i) + "]\n" + solve);
        for (int i = 1; i <= 3; i++)
            add(ends, 1, -3,
                "In ludcmp: pb with vv\nguess_solve: cannot solve at iteration " + std::to_string(i) + "\n" + solve);
    }
    add(ends, 1 + 4, -6, "in t2pt, cannot allocate\n" + stop);
    add(ends, 1, -6, "In ludcmp: pb with vv\n" + stop);
    return ends;
}

TEST_F(LocalStart, EndsByItsResultAndLineWithoutMemoryWhereverItFails)
{
    for (bool sighted : {true, false}) {
        int n = 0;
        for (const auto &end : without_memory(sighted)) {
            build(3, sighted);
            for (int i : {A, E}) s->know(i);
            s->range(A, B);
            s->wire();
            fail_allocation(++n);
            EXPECT_EQ(spread(s->net()), end.first) << n;
            EXPECT_EQ(allocations() >= n, true) << n;
            fail_allocation(0);
            const std::string text = s->report(), &lines = end.second;
            EXPECT_EQ(text.substr(text.size() - std::min(text.size(), lines.size())), lines) << n;
            EXPECT_EQ(s->points[B].xpt[0], 0) << n;
        }
        build(3, sighted);
        for (int i : {A, E}) s->know(i);
        s->range(A, B);
        s->wire();
        fail_allocation(0);
        EXPECT_EQ(spread(s->net()), 0);
        EXPECT_EQ(allocations(), n); // these are all
    }
}

} // namespace
