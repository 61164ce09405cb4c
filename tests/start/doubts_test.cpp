// Points that fit in two places: both are said, and another observation or a given value decides.

#include <gtest/gtest.h>

#include <algorithm>

#include "host/preparation/start/start.h"
#include "start/simulated.h"

namespace {

using namespace simulated;
using vornhost::start::Start;

constexpr double mm = 0.001;

Start start(Network &n) { return vornhost::start::find_start(&n.model, n.given); }

bool in_doubt(const Start &s, int p)
{
    return std::any_of(s.doubts.begin(), s.doubts.end(), [&](const auto &d) { return d.point == p; });
}

void expect_at_the_truth(const Network &n, const Start &s, int p)
{
    EXPECT_TRUE(s.found());
    for (size_t u = 3 * (size_t)p; u < 3 * (size_t)p + 3; u++) EXPECT_NEAR(n.model.value[u], n.truth[u], 0.1);
}

// Points 0 and 1 are fixed, 2 lies on a ray of 0 that is oriented by 1, and at a distance from 1 that meets the ray
// `half` metres from its foot, on either side. 3 hangs on 2 as a polar point.
Maker ray_and_length(double half)
{
    Maker m(7);
    m.space(va::Space::plane);
    m.point(0, 0, 0, true);
    m.point(300, 200, 0, true);
    m.point(300 + half, 0, 0, false);
    m.point(350 + half, 80, 0, false);
    const int a = m.setup(0), c = m.setup(2);
    m.observe(Kind::direction, 0, 1, 0.0005 * gon, a);
    m.observe(Kind::direction, 0, 2, 0.0005 * gon, a);
    m.observe(Kind::plane_distance, 1, 2, 2 * mm);
    m.direction(c, 0);
    m.polar(c, 3);
    return m;
}

} // namespace

TEST(Doubts, AreSaidOfARayAndALengthWhoseFootIsNear)
{
    for (const double half : {4.0, 24.0, 120.0}) {
        Network n = ray_and_length(half).finish(0);
        const Start s = start(n);
        EXPECT_FALSE(s.found()) << half;
        EXPECT_TRUE(in_doubt(s, 2)) << half;
        EXPECT_TRUE(in_doubt(s, 3)) << half;
        for (const auto &d : s.doubts) EXPECT_NEAR(d.apart, 2 * half, 0.2 + 0.05 * half) << half;
    }
}

TEST(Doubts, AreDecidedByAnotherObservationOfThePointOrOfWhatHangsOnIt)
{
    for (const double half : {4.0, 24.0, 120.0})
        for (const int seen : {2, 3}) {
            Maker m = ray_and_length(half);
            m.observe(Kind::plane_distance, 0, seen, 2 * mm);
            Network n = m.finish(0);
            expect_at_the_truth(n, start(n), 2);
        }
}

TEST(Doubts, AreDecidedByAGivenValue)
{
    Network n = ray_and_length(24.0).finish(0);
    for (size_t u = 6; u < 8; u++) {
        n.model.value[u] = n.truth[u] + 2.0;
        n.given.coordinate[u] = Known::given;
    }
    const Start s = start(n);
    EXPECT_TRUE(s.found());
    EXPECT_NEAR(n.model.value[9], n.truth[9], 5.0);
}

// A vertical plane and two spheres: the places differ in height and in the plan.
TEST(Doubts, AreSaidOfADirectionWithTwoSteepSlopes)
{
    Maker m(3);
    m.space(va::Space::space);
    m.point(40.839, 20.960, 5.637, true);
    m.point(28.251, 5.2015, 7.891, true);
    m.point(7.96, 22.71, 2.38, false);
    const int a = m.setup(0);
    m.observe(Kind::direction, 0, 1, 0.001 * gon, a);
    m.observe(Kind::direction, 0, 2, 0.001 * gon, a);
    m.observe(Kind::slope_distance, 0, 2, mm);
    m.observe(Kind::slope_distance, 1, 2, mm);
    Network n = m.finish(0);
    EXPECT_TRUE(in_doubt(start(n), 2));
}

// Lengths alone do not tell a free network from its mirror image, and that is no doubt about a point.
TEST(Doubts, AreNotSaidOfAFreeNetworkThatMayLieAnywhere)
{
    Maker m(5);
    m.space(va::Space::plane);
    for (int i = 0; i < 6; i++)
        m.point(100.0 * (i % 3) + m.uniform(-20, 20), (i < 3 ? 0.0 : 90.0) + m.uniform(-20, 20), 0, false);
    for (int i = 0; i < 6; i++)
        for (int j = i + 1; j < 6; j++) m.observe(Kind::plane_distance, i, j, 2 * mm);
    Network n = m.finish(0);
    EXPECT_TRUE(start(n).found());
}
