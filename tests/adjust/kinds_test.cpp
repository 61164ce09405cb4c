// Values of the kinds against closed formulas.

#include <gtest/gtest.h>

#include "adjust/kinds/directions.h"
#include "adjust/kinds/distances.h"
#include "adjust/kinds/heights.h"
#include "adjust/kinds/images.h"
#include "adjust/kinds/motions.h"
#include "adjust/kinds/verticals.h"

using namespace vornadjust;

namespace {

using V = Vec3<double>;

const double pi = 3.14159265358979323846;

Frame sphere(double radius, double height = 0.0)
{
    Frame f;
    f.space = Space::sphere;
    f.radius = radius;
    f.height = height;
    return f;
}

// Position at arc length s from the origin along bearing a, h above the sphere.
V on_sphere(const Frame &f, double s, double a, double h)
{
    const double t = s / f.radius, r = f.radius + h;
    return {r * std::sin(t) * std::cos(a), r * std::sin(t) * std::sin(a), r * std::cos(t) - f.origin_radius()};
}

} // namespace

TEST(SlopeLength, RunsFromInstrumentToTarget)
{
    // 3-4-12 with both ends raised by 2 and 5: the third side of the box becomes 12
    EXPECT_DOUBLE_EQ(slope_length(Frame{}, V{1, 2, 3}, V{4, 6, 12}, Heights{2, 5}), 13.0);
}

TEST(SlopeLength, RaisesEachEndAlongItsOwnVertical)
{
    // Chord between two points at the angle t of the centre: law of cosines.
    const Frame f = sphere(6380000, 450);
    const double t = 20000 / f.radius, a = f.radius + 800 + 1.5, b = f.radius + 100 + 2.0;
    const double chord = std::sqrt((a - b) * (a - b) + 4 * a * b * std::pow(std::sin(t / 2), 2));
    EXPECT_NEAR(slope_length(f, on_sphere(f, 0, 0, 800), on_sphere(f, 20000, 1.1, 100), Heights{1.5, 2.0}), chord,
                1e-8);
}

TEST(PlaneLength, LeavesTheThirdCoordinateOut)
{
    EXPECT_DOUBLE_EQ(plane_length(Frame(), V{1, 1, 7}, V{4, 5, -9}), 5.0);
}

TEST(BarLength, IsThatOfTheSpaceThatThePointsLiveIn)
{
    Frame f;
    EXPECT_DOUBLE_EQ(bar_length(f, V{1, 2, 3}, V{4, 6, 15}), 13.0);
    f.space = Space::plane;
    EXPECT_DOUBLE_EQ(bar_length(f, V{1, 2, 3}, V{4, 6, 15}), 5.0);
}

TEST(Bearing, CountsFromTheFirstAxisToTheSecondWhateverTheHeights)
{
    EXPECT_DOUBLE_EQ(bearing(V{1, 1, 7}, V{1, 3, -9}), pi / 2);
    EXPECT_DOUBLE_EQ(bearing(V{1, 1, 7}, V{0, 0, -9}), -3 * pi / 4);
}

TEST(LevelLength, StretchesThePlaneToTheMeanHeight)
{
    Frame f;
    f.space = Space::plane;
    f.radius = 6371000, f.height = 400;
    // heights 1000 and 1300: plane length 1000 becomes 1000 (R + 1150) / (R + 400)
    const double along = 1000.0 * 6372150 / 6371400;
    EXPECT_NEAR(level_length(f, V{0, 0, 999}, V{600, 800, 1298}, Heights{1, 2}), std::hypot(along, 300.0), 1e-10);
}

TEST(DistanceConstants, AddAndScale)
{
    EXPECT_DOUBLE_EQ(measured(DistanceConstants<double>{-0.034, 1.001}, 100.0), 100.066);
}

TEST(HeightDifference, IsTargetOverInstrument)
{
    EXPECT_DOUBLE_EQ(height_difference(Frame{}, V{0, 0, 10}, V{9, 9, 12}, Heights{1.5, 0.5}), 1.0);
}

TEST(HeightDifference, FollowsTheSphere)
{
    const Frame f = sphere(6371000, 450);
    // 1e-9: the positions themselves are rounded at the size of the radius
    EXPECT_NEAR(height_difference(f, on_sphere(f, 5000, 1, 700), on_sphere(f, 9000, -2, 300), Heights{0, 0}), -400,
                3e-9);
}

TEST(Position, OfMixedCoordinatesStandsAtItsHeightAboveTheSphere)
{
    Frame f = sphere(6371000, 450);
    f.mixed = true;
    const V p = position(f, V{8000, -6000, 700});
    EXPECT_EQ(p.x, 8000);
    EXPECT_EQ(p.y, -6000);
    EXPECT_NEAR(length(from_centre(f, p)), 6371700, 2e-9);
    EXPECT_EQ(position(f, V{0, 0, 500}).z, 50);
    EXPECT_EQ(position(f.flat(), V{8000, -6000, 700}).z, 700);
}

TEST(Levelled, TurnsUpToTheThirdAxisTheShortestWay)
{
    const Frame f = sphere(1000);
    const V p{300, 400, -100}, n = up(f, p), d{0.3, -2, 1.7}, e = levelled(f, p, d);
    EXPECT_NEAR(length(e), length(d), 1e-15);
    EXPECT_NEAR(e.z, dot(n, d), 1e-15);
    const V up_there = levelled(f, p, n);
    EXPECT_NEAR(up_there.x, 0, 1e-15);
    EXPECT_NEAR(up_there.y, 0, 1e-15);
    EXPECT_NEAR(up_there.z, 1, 1e-15);
    const V axis{-n.y, n.x, 0}, kept = levelled(f, p, axis); // the axis of the turn stays
    EXPECT_NEAR(length(kept - axis), 0, 1e-15);
}

TEST(Direction, CountsFromTheFirstAxisTowardsTheSecond)
{
    EXPECT_DOUBLE_EQ(direction(V{1, 1, 5}), pi / 4);
    EXPECT_DOUBLE_EQ(direction(V{-1, 0, 5}), pi);
}

TEST(Direction, OfAnInstrumentIsBearingPlusThirdAngle)
{
    const Axes<double> axes{{0, 0, 0.25}, true, false};
    EXPECT_DOUBLE_EQ(direction(instrument_sight(Frame{}, V{0, 0, 0}, V{2, 2, 3}, Heights{1, 9}, axes)), pi / 4 + 0.25);
}

TEST(Direction, OnTheSphereIsThatOfTheGreatCircle)
{
    // From the origin of the axes bearings are those of the tangent plane. From a point on the first axis, turned the
    // shortest way, a target on the same great circle lies straight ahead.
    const Frame f = sphere(6371000);
    const V p = on_sphere(f, 30000, 0, 200), q = on_sphere(f, 50000, 0, 900);
    EXPECT_NEAR(direction(levelled(f, p, q - p)), 0, 1e-15);
    EXPECT_NEAR(direction(levelled(f, p, V{0, 0, 0} - p)), pi, 1e-12);
    // Spherical triangle pole - p - q with right angle at the pole: tan(angle at p) = tan(b) / sin(a)
    const V r = on_sphere(f, 40000, pi / 2, 0);
    const double angle = std::atan2(std::tan(40000 / f.radius), std::sin(30000 / f.radius));
    EXPECT_NEAR(direction(levelled(f, p, r - p)), pi - angle, 1e-12);
}

TEST(HorizontalAngle, RunsFromTheFirstTargetToTheSecond)
{
    EXPECT_DOUBLE_EQ(horizontal_angle(V{1, 0, 0}, V{0, 2, 1}), pi / 2);
}

TEST(Azimuth, IsTurnedAndLessTheConvergenceOfTheMeridians)
{
    Frame f;
    f.radius = 6371000, f.height = 400;
    f.latitude = 0.8;
    EXPECT_NEAR(azimuth(f, V{5000, 700, 0}, V{5100, 800, 40}, Heights{}), pi / 4 - std::tan(0.8) * 5000 / 6371400,
                1e-15);
    f.azimuth_rotation = pi / 2; // the turned first coordinate is -y
    EXPECT_NEAR(azimuth(f, V{5000, 700, 0}, V{5100, 800, 40}, Heights{}), 3 * pi / 4 + std::tan(0.8) * 700 / 6371400,
                1e-15);
}

TEST(VerticalAngle, CountsFromTheHorizonUpwards)
{
    EXPECT_DOUBLE_EQ(vertical_angle(Frame{}, V{3, 4, 5}, 0.0), pi / 4);
    EXPECT_DOUBLE_EQ(vertical_angle(Frame{}, V{3, 4, -5}, 0.0), -pi / 4);
}

TEST(VerticalAngle, OnTheSphereDropsByHalfTheAngleAtTheCentre)
{
    const Frame f = sphere(6371000);
    // 1e-9 m of rounding of the position at 8 km
    EXPECT_NEAR(vertical_angle(f, levelled(f, V{0, 0, 0}, on_sphere(f, 8000, 2, 0)), 0.0), -8000 / f.radius / 2, 2e-13);
}

TEST(VerticalAngle, RefractionOfOneCancelsTheCurvature)
{
    // a ray as curved as the sphere between two points of one height is seen in the horizon
    const Frame f = sphere(6371000);
    EXPECT_NEAR(vertical_angle(f, levelled(f, V{0, 0, 0}, on_sphere(f, 8000, 2, 0)), 1.0), 0, 2e-10);
}

TEST(Rotation, TurnsAboutOneAxisAtATime)
{
    const auto expect = [](const V &angles, const V &from, const V &to) {
        EXPECT_NEAR(length(turned(rotation(angles), from) - to), 0, 1e-15);
        EXPECT_NEAR(length(turned_back(rotation(angles), to) - from), 0, 1e-15);
    };
    expect(V{pi / 2, 0, 0}, V{0, 1, 0}, V{0, 0, -1});
    expect(V{0, pi / 2, 0}, V{1, 0, 0}, V{0, 0, 1});
    expect(V{0, 0, pi / 2}, V{0, 1, 0}, V{1, 0, 0});
}

TEST(Moved, ScalesTurnsAndShifts)
{
    const V x = moved(V{0, 1, 0}, Moved<double>{{10, 20, 30}, {0, 0, pi / 2}, 3.0});
    EXPECT_NEAR(length(x - V{13, 20, 30}), 0, 1e-14);
}

TEST(Image, IsACentralProjectionMirroredBehindTheCentre)
{
    const Inner<double> plain{0.05, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    const Uv<double> uv = image(V{2, -1, -10}, plain, Pixels{1e-5, 2e-5, 1000, 500});
    // x = 0.05 * 2 / 10 = 0.01, y = -0.005
    EXPECT_NEAR(uv.u, 1000 - 0.01 / 1e-5, 1e-9);
    EXPECT_NEAR(uv.v, 500 + 0.005 / 2e-5, 1e-9);
}

TEST(Image, AddsTheCorrectionsOfEachInnerParameter)
{
    // x = 2, y = 3, r2 = 13; one parameter of 1 at a time: correction of x and of y
    const double dx[9] = {1, 0, -2, 3, 26, 338, 4394, 21, 12}, dy[9] = {0, 1, 0, 2, 39, 507, 6591, 12, 31};
    for (int k = 0; k < 9; k++) {
        double p[9] = {};
        p[k] = 1.0;
        const Inner<double> inner{1.0, p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8]};
        const Uv<double> uv = image(V{-2, -3, 1}, inner, Pixels{1, 1, 0, 0});
        EXPECT_DOUBLE_EQ(uv.u, -2 - dx[k]) << k;
        EXPECT_DOUBLE_EQ(uv.v, -3 - dy[k]) << k;
    }
}
