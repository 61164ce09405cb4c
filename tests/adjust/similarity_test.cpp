#include "adjust/similarity.h"

#include <gtest/gtest.h>

#include "adjust/small_net.h"

using namespace vornadjust;

namespace {

Dense motions(std::initializer_list<std::initializer_list<double>> columns)
{
    Dense out(n_motions, 0);
    for (const auto &c : columns) out.a.insert(out.a.end(), c), out.cols++;
    return out;
}

Similarity in_space(double size)
{
    Similarity s;
    s.centre[0] = 10, s.centre[1] = 20, s.centre[2] = 30;
    s.size = size;
    return s;
}

} // namespace

TEST(Similarity, MovesAPointAsTheSmallDifferenceOfATurnedAndScaledPoint)
{
    const Similarity s = in_space(50);
    const double x[3] = {25, 12, 36}, small = 1e-7;
    // A turn about z by an angle w takes (dx, dy) to (dx cos w - dy sin w, dx sin w + dy cos w).
    const double w = small / s.size, dx = 15, dy = -8;
    EXPECT_NEAR(small * s.of_point(5, x, 0), dx * std::cos(w) - dy * std::sin(w) - dx, 1e-13);
    EXPECT_NEAR(small * s.of_point(5, x, 1), dx * std::sin(w) + dy * std::cos(w) - dy, 1e-13);
    EXPECT_EQ(s.of_point(5, x, 2), 0);
    // About x it takes y towards z.
    EXPECT_NEAR(small * s.of_point(3, x, 2), dy * std::sin(w), 1e-13);
    for (int k = 0; k < 3; k++) EXPECT_NEAR(s.of_point(6, x, k), (x[k] - s.centre[k]) / 50, 1e-16);
}

TEST(Similarity, MovesTheFarthestPointByOne)
{
    SmallNet net(Space::space);
    for (double x : {0, 30, 60}) net.point(5e6 + x, 4e6, 7);
    const Similarity s = similarity(net.model, {0, 1, 2});
    EXPECT_NEAR(s.centre[0], 5e6 + 30, 1e-9);
    EXPECT_NEAR(s.size, 30, 1e-9);
    EXPECT_NEAR(std::fabs(s.of_point(5, &net.model.value[0], 1)), 1, 1e-12);
}

TEST(NameMotions, SeparatesShiftsFromTheTurnAboutAnyPoint)
{
    // A turn about another point than the centre is a turn and a shift; beside the shifts it is a turn.
    const auto named =
        name_motions(in_space(1), motions({{1, 0, 0, 0, 0, 0, 0}, {3, 1, 0, 0, 0, 1, 0}, {0, 1, 0, 0, 0, 0, 0}}));
    ASSERT_EQ(named.size(), 3u);
    EXPECT_EQ(named[0].kind, MotionKind::shift);
    EXPECT_EQ(named[0].direction[0], 1);
    EXPECT_EQ(named[1].direction[1], 1);
    EXPECT_EQ(named[2].kind, MotionKind::turn);
    EXPECT_NEAR(named[2].direction[2], 1, 1e-15);
    EXPECT_FALSE(named[2].centred);
}

TEST(NameMotions, FindsTheCentreOfATurn)
{
    // About the vertical through (13, 24): displacement w x (x - c) = w x d - w x (c - centre), size 2.
    const double a = 3, b = 4;
    const auto named = name_motions(in_space(2), motions({{b / 2, -a / 2, 0, 0, 0, 1, 0}}));
    ASSERT_EQ(named.size(), 1u);
    ASSERT_TRUE(named[0].centred);
    EXPECT_NEAR(named[0].centre[0], 13, 1e-12);
    EXPECT_NEAR(named[0].centre[1], 24, 1e-12);
}

TEST(NameMotions, FindsTheCentreOfAScale)
{
    // Displacement k (x - c) with c - centre = (6, -2, 4), size 2.
    const auto named = name_motions(in_space(2), motions({{-3, 1, -2, 0, 0, 0, 1}}));
    ASSERT_EQ(named.size(), 1u);
    EXPECT_EQ(named[0].kind, MotionKind::scale);
    EXPECT_NEAR(named[0].centre[0], 16, 1e-12);
    EXPECT_NEAR(named[0].centre[1], 18, 1e-12);
    EXPECT_NEAR(named[0].centre[2], 34, 1e-12);
}

TEST(NameMotions, SpansShiftsByAxesWhereItCan)
{
    const double c = std::cos(0.3), s = std::sin(0.3);
    const auto plan = name_motions(in_space(1), motions({{c, s, 0, 0, 0, 0, 0}, {-s, c, 0, 0, 0, 0, 0}}));
    ASSERT_EQ(plan.size(), 2u);
    EXPECT_EQ(plan[0].direction[0], 1);
    EXPECT_EQ(plan[1].direction[1], 1);
    const auto oblique = name_motions(in_space(1), motions({{0, 0, 1, 0, 0, 0, 0}, {-c, -s, 0, 0, 0, 0, 0}}));
    ASSERT_EQ(oblique.size(), 2u);
    EXPECT_EQ(oblique[0].direction[2], 1);
    EXPECT_NEAR(oblique[1].direction[0], c, 1e-15);
    EXPECT_NEAR(oblique[1].direction[1], s, 1e-15);
}
