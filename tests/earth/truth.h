// Points on the ellipsoid with known places, and what would be observed between them without errors. Computed from
// geocentric coordinates, without any formula of projections.

#ifndef TESTS_EARTH_TRUTH_H
#define TESTS_EARTH_TRUTH_H

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "host/earth/reference.h"

namespace truth {

constexpr double pi = 3.14159265358979323846;
constexpr double degree = pi / 180.0, gon = pi / 200.0;

struct Point {
    std::string name;
    double latitude, longitude, height; // radians, above the ellipsoid
    double xi = 0, eta = 0;             // deflection of the vertical, radians
};

struct Vector {
    double x, y, z;
};

inline double dot(const Vector &a, const Vector &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

inline Vector geocentric(const vornadjust::Ellipsoid &e, const Point &p, double above = 0.0)
{
    const double n = e.a / std::sqrt(1.0 - e.e2 * std::pow(std::sin(p.latitude), 2)), h = p.height + above;
    return {(n + h) * std::cos(p.latitude) * std::cos(p.longitude),
            (n + h) * std::cos(p.latitude) * std::sin(p.longitude), (n * (1.0 - e.e2) + h) * std::sin(p.latitude)};
}

// Up along the vertical: that of astronomic latitude and longitude.
inline Vector up(const Point &p)
{
    const double b = p.latitude + p.xi, l = p.longitude + p.eta / std::cos(p.latitude);
    return {std::cos(b) * std::cos(l), std::cos(b) * std::sin(l), std::sin(b)};
}

// From an instrument h1 above p to a target h2 above q, in the horizon of p.
struct Sight {
    double length, azimuth, elevation;
    Vector vector;
};

inline Sight sight(const vornadjust::Ellipsoid &e, const Point &p, const Point &q, double h1 = 0.0, double h2 = 0.0)
{
    const Vector a = geocentric(e, p), b = geocentric(e, q), u = up(p), v = up(q);
    const Vector d{b.x - a.x + h2 * v.x - h1 * u.x, b.y - a.y + h2 * v.y - h1 * u.y, b.z - a.z + h2 * v.z - h1 * u.z};
    const double latitude = p.latitude + p.xi, longitude = p.longitude + p.eta / std::cos(p.latitude);
    const double sb = std::sin(latitude), sl = std::sin(longitude), cl = std::cos(longitude);
    const double north = dot({-sb * cl, -sb * sl, std::cos(latitude)}, d), east = dot({-sl, cl, 0.0}, d),
                 rise = dot(u, d);
    return {std::sqrt(dot(d, d)), std::atan2(east, north), std::atan2(rise, std::hypot(north, east)), d};
}

inline std::string text(const char *format, double x)
{
    char buffer[60];
    std::snprintf(buffer, sizeof buffer, format, x);
    return buffer;
}

inline std::string number(double x) { return text("%.9f", x); }

// An angle from 0 to 400 gon.
inline std::string circle(double radians)
{
    const double g = std::fmod(radians / gon, 400.0);
    return text("%.10f", g < 0.0 ? g + 400.0 : g);
}

inline vornhost::Crs crs(const std::string &name)
{
    vornhost::Crs c;
    c.network = name;
    c.ellipsoidal = true;
    return c;
}

inline vornhost::Reference open(const std::string &name)
{
    std::string fault;
    auto reference = vornhost::Reference::open(crs(name), &fault);
    EXPECT_TRUE(reference) << fault;
    return std::move(*reference);
}

} // namespace truth

#endif
