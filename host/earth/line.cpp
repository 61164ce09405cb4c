#include "host/earth/line.h"

#include <cmath>

#include "adjust/ellipsoid.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

// Shortest line with a direction, metres.
constexpr double shortest = 1e-6;

va::Vec3<double> in_space(const va::Ellipsoid &e, const EarthPoint &p, double above)
{
    return va::geocentric(e, va::GeographicPlace<double>{p.at.latitude, p.at.longitude, p.height + above});
}

// Euler's radius of curvature.
double radius_along(const va::Ellipsoid &e, double latitude, double azimuth)
{
    const double s = std::sin(latitude), c = std::cos(azimuth), across = std::sin(azimuth);
    return 1.0 / (c * c / va::meridian_radius(e, s) + across * across / va::prime_vertical_radius(e, s));
}

// S of a distance d on a sphere of radius R, and its derivative; nothing for d below |h2 - h1|.
std::optional<ReducedDistance> on_sphere(double d, double h1, double h2, double radius)
{
    const double rise = h2 - h1, square = (d - rise) * (d + rise);
    if (!(square > 0.0)) return std::nullopt;
    const double widening = (1.0 + h1 / radius) * (1.0 + h2 / radius);
    const double s0 = std::sqrt(square / widening), half = 0.5 * s0 / radius;
    if (!(half < 1.0)) return std::nullopt;
    ReducedDistance r;
    r.geodesic = 2.0 * radius * std::asin(half);
    r.slope = d / (s0 * widening) / std::sqrt(1.0 - half * half);
    return r;
}

double half_turn(double angle) { return std::remainder(angle, 8.0 * std::atan(1.0)); }

} // namespace

std::optional<Line> line_between(const Reference &reference, const EarthPoint &from, double h1, const EarthPoint &to,
                                 double h2)
{
    const va::Ellipsoid &e = reference.ellipsoid();
    const double north = to.grid.north - from.grid.north, east = to.grid.east - from.grid.east;
    Line line;
    line.straight = std::hypot(north, east);
    if (line.straight < shortest) return std::nullopt;
    const Geodesic geodesic = reference.geodesic(from.at, to.at);
    const va::Vec3<double> d = in_space(e, to, h2) - in_space(e, from, h1);
    const va::Horizon<double> horizon = va::horizon(from.at.latitude, from.at.longitude);
    line.h1 = from.height + h1;
    line.h2 = to.height + h2;
    line.chord = std::sqrt(dot(d, d));
    line.geodesic = geodesic.length;
    line.azimuth = geodesic.azimuth;
    line.radius = radius_along(e, 0.5 * (from.at.latitude + to.at.latitude), geodesic.azimuth);
    line.skew = half_turn(geodesic.azimuth - std::atan2(dot(horizon.east, d), dot(horizon.north, d)));
    line.arc_to_chord = half_turn(geodesic.azimuth - from.convergence - std::atan2(east, north));
    return line;
}

std::optional<ReducedDistance> reduced(const Line &line, double distance)
{
    std::optional<ReducedDistance> r = on_sphere(distance, line.h1, line.h2, line.radius);
    const std::optional<ReducedDistance> present = on_sphere(line.chord, line.h1, line.h2, line.radius);
    if (!r || !present) return std::nullopt;
    const double scale = line.straight / line.geodesic;
    r->geodesic += line.geodesic - present->geodesic;
    r->straight = r->geodesic * scale;
    r->slope *= scale;
    return r;
}

std::optional<ReducedDistance> reduced_to_level(double distance, double h1, double h2, double level, double scale)
{
    constexpr double earth = 6371000.0; // metres
    std::optional<ReducedDistance> r = on_sphere(distance, h1 - level, h2 - level, earth + level);
    if (!r) return std::nullopt;
    r->straight = r->geodesic * scale;
    r->slope *= scale;
    return r;
}

} // namespace vornhost
