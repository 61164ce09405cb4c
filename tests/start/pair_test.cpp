// Two instruments that see common points and not each other.

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "host/preparation/start/pair.h"

namespace {

using vornhost::start::CommonSight;
using vornhost::start::find_pair;

struct Point {
    double x, y, z;
};

// Readings from the origin with the turn 0 and from `second` with this turn.
std::vector<CommonSight> sights(const std::vector<Point> &points, const Point &second, double turn)
{
    std::vector<CommonSight> all;
    for (const Point &p : points) {
        const double dx = p.x - second.x, dy = p.y - second.y;
        all.push_back({std::atan2(p.y, p.x), p.z / std::hypot(p.x, p.y), std::atan2(dy, dx) - turn,
                       (p.z - second.z) / std::hypot(dx, dy)});
    }
    return all;
}

std::vector<Point> some_points(unsigned seed, int n)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> any(-10, 10);
    std::vector<Point> points;
    for (int i = 0; i < n; i++) points.push_back({any(random), any(random), 0.4 * any(random)});
    return points;
}

} // namespace

TEST(Pair, IsFoundFromCommonPoints)
{
    for (unsigned seed = 0; seed < 30; seed++) {
        const Point second{6, 3, 0.5};
        const double turn = 0.13 * seed - 3;
        const auto pair = find_pair(sights(some_points(seed, 8), second, turn));
        ASSERT_TRUE(pair) << seed;
        EXPECT_NEAR(std::remainder(pair->turn - turn, 8 * std::atan(1.0)), 0, 1e-6) << seed;
        EXPECT_NEAR(pair->x, second.x / std::hypot(second.x, second.y), 1e-5) << seed;
        EXPECT_NEAR(pair->y, second.y / std::hypot(second.x, second.y), 1e-5) << seed;
    }
}

// 5 gon in one direction, or in one elevation.
TEST(Pair, IsFoundWhereOneSightIsWrong)
{
    for (unsigned seed = 0; seed < 30; seed++) {
        const Point second{6, 3, 0.5};
        std::vector<CommonSight> all = sights(some_points(seed, 12), second, 1.0);
        (seed % 2 ? all[3].first : all[3].second_slope) += 0.08;
        const auto pair = find_pair(all);
        ASSERT_TRUE(pair) << seed;
        EXPECT_NEAR(pair->turn, 1.0, 5e-3) << seed;
    }
}

TEST(Pair, NeedsFourPoints) { EXPECT_FALSE(find_pair(sights(some_points(1, 3), {6, 3, 0.5}, 1))); }

TEST(Pair, IsNotFoundOneAboveTheOther) { EXPECT_FALSE(find_pair(sights(some_points(2, 8), {0.01, 0, 3}, 1))); }
