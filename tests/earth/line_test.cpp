// Reductions of lines up to 50 km in three projections, against lines computed on the ellipsoid.

#include "host/earth/line.h"

#include <geodesic.h>

#include "earth/truth.h"

using namespace vornhost;
using truth::degree;

namespace {

constexpr double cc = 1e-4 * truth::gon; // 0.1 mgon

struct Area {
    const char *system;
    double latitude, longitude; // degrees, off the middle of the projection
};

const Area areas[] = {{"EPSG:25832", 50.0, 10.8},
                      {"EPSG:2154", 43.5, 6.5},
                      {"EPSG:2056", 46.4, 9.9},
                      {"EPSG:29873", 4.5, 117.6},
                      {"EPSG:31466", 51.0, 7.4}};

EarthPoint located(const Reference &r, LatLon at, double height)
{
    EarthPoint p;
    p.at = at;
    p.grid = *r.grid(at);
    p.height = height;
    p.convergence = r.axes(at)->convergence;
    return p;
}

struct Ended {
    LatLon at;
    double azimuth = 0;
};

LatLon along(const Reference &r, LatLon from, double azimuth, double length)
{
    geod_geodesic g;
    geod_init(&g, r.ellipsoid().a, 1.0 - std::sqrt(1.0 - r.ellipsoid().e2));
    double b = 0, l = 0, a = 0;
    geod_direct(&g, from.latitude / degree, from.longitude / degree, azimuth / degree, length, &b, &l, &a);
    return {b * degree, l * degree};
}

// Point scale by small circles in the grid.
double point_scale(const Reference &r, LatLon at, double azimuth)
{
    const GridPlace a = *r.grid(along(r, at, azimuth, -50.0)), b = *r.grid(along(r, at, azimuth, 50.0));
    return std::hypot(b.north - a.north, b.east - a.east) / 100.0;
}

template <class Check> void each_line(Check check)
{
    for (const Area &area : areas) {
        const Reference r = truth::open(area.system);
        const LatLon from{area.latitude * degree, area.longitude * degree};
        for (const double length : {120.0, 3000.0, 20000.0, 50000.0})
            for (double azimuth = 0.2; azimuth < 6.2; azimuth += 0.7) {
                SCOPED_TRACE(std::string(area.system) + " " + std::to_string(length) + " " + std::to_string(azimuth));
                check(r, from, azimuth, length);
            }
    }
}

} // namespace

// From the slope between instrument and target to the geodesic and to the grid. First coordinates that are 20 m off
// change the scale of the line by what the zone has: y / R^2 a metre, 5e-9.
TEST(Line, ReducesSlopesToTheGeodesicAndIntoTheGrid)
{
    each_line([](const Reference &r, LatLon from, double azimuth, double length) {
        const LatLon to = along(r, from, azimuth, length);
        const truth::Point p{"P", from.latitude, from.longitude, 480.0};
        const truth::Point q{"Q", to.latitude, to.longitude, 480.0 + 0.03 * length};
        const double slope = truth::sight(r.ellipsoid(), p, q, 1.6, 2.1).length;
        const EarthPoint a = located(r, from, p.height);
        const GridPlace g = *r.grid(from), h = *r.grid(to);
        for (const double off : {20.0, 0.01}) {
            const auto line = line_between(r, a, 1.6, located(r, along(r, to, 1.0, off), q.height), 2.1);
            ASSERT_TRUE(line);
            const auto reduction = reduced(*line, slope), longer = reduced(*line, slope + 0.01);
            ASSERT_TRUE(reduction && longer);
            EXPECT_NEAR(reduction->geodesic, length, 5e-5);
            EXPECT_NEAR(reduction->straight, std::hypot(h.north - g.north, h.east - g.east),
                        5e-5 + 5e-9 * off * length);
            EXPECT_NEAR((longer->straight - reduction->straight) / 0.01, reduction->slope, 1e-6);
        }
    });
}

// Simpson's rule over the point scale at the ends and in the middle, as textbooks reduce by hand.
TEST(Line, HasTheMeanScaleOfSimpsonsRule)
{
    each_line([](const Reference &r, LatLon from, double azimuth, double length) {
        if (length > 20000.0) return; // beyond, the fourth derivative and arc to chord show
        const LatLon to = along(r, from, azimuth, length), middle = along(r, from, azimuth, length / 2);
        const auto line = line_between(r, located(r, from, 0.0), 0.0, located(r, to, 0.0), 0.0);
        const double there = r.geodesic(middle, to).azimuth;
        const double scale =
            (point_scale(r, from, azimuth) + 4.0 * point_scale(r, middle, there) + point_scale(r, to, there)) / 6.0;
        EXPECT_NEAR(line->straight, scale * length, 1e-4);
    });
}

// The bearing in which the projected geodesic sets out, from its first ten metres, and that of the straight line.
TEST(Line, HasTheArcToChordCorrectionOfTheProjectedGeodesic)
{
    each_line([](const Reference &r, LatLon from, double azimuth, double length) {
        const LatLon to = along(r, from, azimuth, length);
        const GridPlace a = *r.grid(along(r, from, azimuth, -50.0)), b = *r.grid(along(r, from, azimuth, 50.0)),
                        p = *r.grid(from), q = *r.grid(to);
        const double tangent = std::atan2(b.east - a.east, b.north - a.north);
        const double chord = std::atan2(q.east - p.east, q.north - p.north);
        const auto line = line_between(r, located(r, from, 0.0), 0.0, located(r, to, 0.0), 0.0);
        EXPECT_NEAR(line->arc_to_chord, std::remainder(tangent - chord, 2.0 * truth::pi), 0.1 * cc);
    });
}

// Gauss-Krueger by the textbook: t - T = -(x2 - x1)(2 y1 + y2) / (6 R^2), y from the central meridian in the grid of
// scale 1 (Torge, Mueller, Geodesy; to 1e-8 for lines of 10 km).
TEST(Line, HasTheArcToChordCorrectionOfTheTextbook)
{
    const Reference r = truth::open("EPSG:31466");
    const LatLon from{51.0 * degree, 7.4 * degree};
    for (const double azimuth : {0.3, 1.2, 2.8, 4.4}) {
        const LatLon to = along(r, from, azimuth, 10000.0);
        const EarthPoint a = located(r, from, 0.0), b = located(r, to, 0.0);
        const double y1 = a.grid.east - 2500000.0, y2 = b.grid.east - 2500000.0;
        const double m = vornadjust::meridian_radius(r.ellipsoid(), std::sin(from.latitude));
        const double n = vornadjust::prime_vertical_radius(r.ellipsoid(), std::sin(from.latitude));
        const double expected = -(b.grid.north - a.grid.north) * (2.0 * y1 + y2) / (6.0 * m * n);
        EXPECT_NEAR(line_between(r, a, 0.0, b, 0.0)->arc_to_chord, -expected, 1e-8) << azimuth;
    }
}

// The target's height turns its normal: e'^2 h sin 2a cos^2 B / (2 N), and the normal section parts from the geodesic
// by e'^2 s^2 cos^2 B sin 2a / (12 N^2) (Bomford, Geodesy, section 2).
TEST(Line, CorrectsDirectionsForTheHeightOfTheTarget)
{
    const Reference r = truth::open("EPSG:25832");
    const LatLon from{50.0 * degree, 9.0 * degree};
    const double e2 = r.ellipsoid().e2 / (1.0 - r.ellipsoid().e2), n = r.ellipsoid().a,
                 c2 = std::pow(std::cos(50 * degree), 2);
    for (const double azimuth : {0.7, 2.0, 4.0}) {
        const LatLon to = along(r, from, azimuth, 10000.0);
        const auto line = line_between(r, located(r, from, 0.0), 0.0, located(r, to, 3000.0), 0.0);
        const double expected = e2 * c2 * std::sin(2.0 * azimuth) * (3000.0 / (2.0 * n) - 1e8 / (12.0 * n * n));
        EXPECT_NEAR(std::fabs(line->skew), std::fabs(expected), 0.01 * std::fabs(expected) + 1e-9);
        EXPECT_GT(line->skew * expected, 0.0);
    }
}

TEST(Line, PutsDistancesOnTheLevelOfALocalSystem)
{
    // Level at the height of both ends: the arc over the chord, s^3 / (24 R^2).
    const auto level = reduced_to_level(10000.0, 500.0, 500.0, 500.0, 1.0);
    ASSERT_TRUE(level);
    EXPECT_NEAR(level->straight, 10000.0 + 1e12 / (24.0 * 6371500.0 * 6371500.0), 1e-6);
    const auto high = reduced_to_level(1000.0, 1000.0, 1000.0, 0.0, 0.9996);
    EXPECT_NEAR(high->straight, 0.9996 * 1000.0 * 6371000.0 / 6372000.0, 1e-5);
    const auto steep = reduced_to_level(5.0, 3.0, 0.0, 0.0, 1.0);
    EXPECT_NEAR(steep->straight, 4.0, 2e-6);
    EXPECT_NEAR(steep->slope, 1.25, 1e-5);
    EXPECT_FALSE(reduced_to_level(2.0, 3.0, 0.0, 0.0, 1.0));
}
