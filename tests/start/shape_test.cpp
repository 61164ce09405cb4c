// Networks of lengths alone, which fit their mirror image as well.

#include "host/preparation/start/shape.h"

#include <gtest/gtest.h>

#include "start/simulated.h"

namespace {

using namespace simulated;
using vornhost::start::Start;

constexpr double mm = 0.001;

// Six points on two uneven rows, of which some are fixed, with all lengths between them; the heights of those in space
// are uneven too.
Maker lengths(va::Space space, int fixed, unsigned seed = 5)
{
    Maker m(seed);
    m.space(space);
    for (int i = 0; i < 6; i++) {
        const double x = 100.0 * (i % 3) + m.uniform(-20, 20), y = (i < 3 ? 0.0 : 90.0) + m.uniform(-20, 20);
        m.point(x, y, space == va::Space::space ? m.uniform(0, 60) : 0.0, i < fixed);
    }
    const Kind kind = space == va::Space::space ? Kind::slope_distance : Kind::plane_distance;
    for (int i = 0; i < 6; i++)
        for (int j = i + 1; j < 6; j++) m.observe(kind, i, j, 2 * mm);
    return m;
}

// Approximate coordinates of these points.
void give(Network *n, const std::vector<int> &points)
{
    for (const int p : points)
        for (size_t u = 3 * (size_t)p; u < 3 * (size_t)p + 3; u++) {
            n->given.coordinate[u] = Known::given;
            n->model.value[u] = n->model.start[u] = n->truth[u] + (n->model.estimated((int)u) ? 0.3 : 0.0);
        }
}

Start start(Network &n) { return vornhost::start::find_start(&n.model, n.given); }

double length(const std::vector<double> &x, int a, int b)
{
    const double *p = &x[3 * (size_t)a], *q = &x[3 * (size_t)b];
    return std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]);
}

void expect_true_shape(const Network &n)
{
    for (int a = 0; a < n.model.n_points; a++)
        for (int b = 0; b < a; b++) EXPECT_NEAR(length(n.model.value, a, b), length(n.truth, a, b), 0.05);
}

// Six times the volume between four points, with its sign; in the plane twice an area.
double volume(const std::vector<double> &x, int a, int b, int c, int d)
{
    double v[3][3];
    const int ends[3] = {b, c, d};
    for (int i = 0; i < 3; i++)
        for (int k = 0; k < 3; k++) v[i][k] = x[3 * (size_t)ends[i] + (size_t)k] - x[3 * (size_t)a + (size_t)k];
    return v[0][0] * (v[1][1] * v[2][2] - v[1][2] * v[2][1]) - v[0][1] * (v[1][0] * v[2][2] - v[1][2] * v[2][0]) +
           v[0][2] * (v[1][0] * v[2][1] - v[1][1] * v[2][0]);
}

} // namespace

TEST(Shape, OfLengthsInThePlaneMayBeAMirrorImage)
{
    for (const int fixed : {0, 1}) {
        Network n = lengths(va::Space::plane, fixed).finish(0);
        const Start s = start(n);
        EXPECT_TRUE(s.found());
        EXPECT_EQ(s.points_that_tell_side, 3);
        expect_true_shape(n);
    }
}

TEST(Shape, BesideTwoKnownPointsIsRefusedWithBothPlaces)
{
    Network n = lengths(va::Space::plane, 2).finish(0);
    const Start s = start(n);
    EXPECT_EQ(s.doubts.size(), (size_t)4);
    for (const auto &d : s.doubts)
        EXPECT_NEAR(length(n.truth, 0, d.point), std::hypot(d.other[0] - n.truth[0], d.other[1] - n.truth[1]), 0.05);
}

TEST(Shape, IsTheTrueOneWhereThreeApproximatePointsTellItsSide)
{
    for (unsigned seed = 1; seed < 10; seed++) {
        Network n = lengths(va::Space::plane, 0, seed).finish(0);
        give(&n, {0, 2, 4});
        const Start s = start(n);
        EXPECT_TRUE(s.found());
        EXPECT_EQ(s.points_that_tell_side, 0);
        for (size_t u = 0; u < 18; u++) EXPECT_NEAR(n.model.value[u], n.truth[u], 1.0);
    }
}

TEST(Shape, IsToldByTwoDirectionsOfOneSetupButNotByOne)
{
    for (const int rays : {1, 2}) {
        Maker m = lengths(va::Space::plane, 0);
        const int s = m.setup(0);
        for (int j = 1; j <= rays; j++) m.observe(Kind::direction, 0, 2 * j, 0.001 * gon, s);
        Network n = m.finish(0);
        const Start found = start(n);
        EXPECT_TRUE(found.found());
        EXPECT_EQ(found.points_that_tell_side, rays == 1 ? 3 : 0);
    }
}

TEST(Shape, InSpaceIsFoundFromLengthsAloneAndMayBeAMirrorImage)
{
    for (const int fixed : {0, 1, 2})
        for (unsigned seed = 1; seed < 10; seed++) {
            Network n = lengths(va::Space::space, fixed, seed).finish(0);
            const Start s = start(n);
            EXPECT_TRUE(s.found()) << fixed << " " << seed;
            EXPECT_EQ(s.points_that_tell_side, 4);
            expect_true_shape(n);
        }
}

TEST(Shape, InSpaceIsTheTrueOneWhereFourApproximatePointsTellItsSide)
{
    for (unsigned seed = 1; seed < 10; seed++) {
        Network n = lengths(va::Space::space, 0, seed).finish(0);
        give(&n, {0, 1, 4, 5});
        const Start s = start(n);
        EXPECT_TRUE(s.found()) << seed;
        EXPECT_EQ(s.points_that_tell_side, 0);
        for (const int p : {2, 3})
            if (std::fabs(volume(n.truth, 0, 1, 4, p)) > 50000.0)
                EXPECT_GT(volume(n.model.value, 0, 1, 4, p) * volume(n.truth, 0, 1, 4, p), 0.0) << seed;
    }
}

// The last point is measured from three others alone: above and below their plane.
TEST(Shape, InSpaceWithAPointOnEitherSideOfThreeOthersIsRefused)
{
    Maker m = lengths(va::Space::space, 0);
    auto &all = m.net.model.observations;
    for (size_t i = all.size(); i-- > 0;)
        if (all[i].to == 5 && all[i].from > 2) all.erase(all.begin() + (long)i);
    Network n = m.finish(0);
    const Start s = start(n);
    EXPECT_FALSE(s.found());
    EXPECT_FALSE(s.doubts.empty()); // the last point, or those on the other side of the three
}

TEST(Shape, WithVerticalAnglesMayBeAMirrorImageInThePlan)
{
    Maker m = lengths(va::Space::space, 0);
    const int s = m.setup(0);
    for (int j = 1; j < 6; j++) m.observe(Kind::vertical_angle, 0, j, 0.001 * gon, s);
    Network n = m.finish(0);
    const Start found = start(n);
    EXPECT_TRUE(found.found());
    EXPECT_EQ(found.points_that_tell_side, 3);
}

// Two points mirrored in the line of two others lie as far from these as before; exactly on it they stay.
TEST(Shape, IsMirroredInTheLineOfItsKnownPoints)
{
    Network n = lengths(va::Space::plane, 2).finish(0);
    vornhost::start::Trial t;
    t.model = n.model;
    t.model.value = n.truth;
    t.placed.assign(6, 1);
    const auto image = vornhost::start::image_in_line(t, n.given);
    ASSERT_TRUE(image);
    for (int p = 0; p < 6; p++)
        for (int q = 0; q < p; q++) EXPECT_NEAR(length(image->model.value, p, q), length(n.truth, p, q), 1e-9);
    EXPECT_NEAR(length(image->model.value, 0, 1), length(n.truth, 0, 1), 1e-12);
    for (size_t u = 0; u < 6; u++) EXPECT_NEAR(image->model.value[u], n.truth[u], 1e-9);
    EXPECT_GT(std::fabs(image->model.value[13] - n.truth[13]), 10.0);
    give(&n, {4});
    EXPECT_FALSE(vornhost::start::image_in_line(t, n.given));
}
