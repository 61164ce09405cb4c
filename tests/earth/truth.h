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

// From an instrument h1 above p to a target h2 above q, in the horizon of p.
struct Sight {
    double length, azimuth, elevation;
    Vector vector;
};

inline Sight sight(const vornadjust::Ellipsoid &e, const Point &p, const Point &q, double h1 = 0.0, double h2 = 0.0)
{
    const Vector a = geocentric(e, p, h1), b = geocentric(e, q, h2), d{b.x - a.x, b.y - a.y, b.z - a.z};
    const double sb = std::sin(p.latitude), cb = std::cos(p.latitude), sl = std::sin(p.longitude),
                 cl = std::cos(p.longitude);
    const double north = dot({-sb * cl, -sb * sl, cb}, d), east = dot({-sl, cl, 0.0}, d),
                 up = dot({cb * cl, cb * sl, sb}, d);
    return {std::sqrt(dot(d, d)), std::atan2(east, north), std::atan2(up, std::hypot(north, east)), d};
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
