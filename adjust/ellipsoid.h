// An ellipsoid of revolution: geographic and geocentric coordinates. Metres and radians.
//
// Latitude B, longitude L, height h above the ellipsoid along its normal; N is the radius of curvature in the prime
// vertical, M that in the meridian (W. Torge, J. Mueller, Geodesy, 2012, section 4.1):
//   X = (N + h) cos B cos L,  Y = (N + h) cos B sin L,  Z = ((1 - e2) N + h) sin B
//   N = a / sqrt(1 - e2 sin^2 B),  M = N (1 - e2) / (1 - e2 sin^2 B)
// Valid for points at most a few hundred kilometres above or below the surface.

#ifndef VORNADJUST_ELLIPSOID_H
#define VORNADJUST_ELLIPSOID_H

#include <cmath>

#include "adjust/vec3.h"

namespace vornadjust {

// Semi-major axis (metres) and square of the first eccentricity.
struct Ellipsoid {
    double a = 6378137.0, e2 = (2.0 - 1.0 / 298.257222101) / 298.257222101; // GRS 80
};

// N, the radius of curvature in the prime vertical.
template <class T> T prime_vertical_radius(const Ellipsoid &e, const T &sin_latitude)
{
    using std::sqrt;
    return e.a / sqrt(1.0 - e.e2 * (sin_latitude * sin_latitude));
}

inline double meridian_radius(const Ellipsoid &e, double sin_latitude)
{
    return prime_vertical_radius(e, sin_latitude) * (1.0 - e.e2) / (1.0 - e.e2 * sin_latitude * sin_latitude);
}

template <class T> struct GeographicPlace {
    T latitude, longitude, height;
};

template <class T> Vec3<T> geocentric(const Ellipsoid &e, const GeographicPlace<T> &g)
{
    using std::cos, std::sin;
    const T s = sin(g.latitude), c = cos(g.latitude), n = prime_vertical_radius(e, s);
    return {(n + g.height) * c * cos(g.longitude), (n + g.height) * c * sin(g.longitude),
            ((1.0 - e.e2) * n + g.height) * s};
}

// The latitude of a place outside the axis: B = atan2(Z + e2 N sin B, P), P the distance from the axis. Each round
// makes the error smaller by e2 at least; five of them leave less than rounding. The derivatives are those of the
// rounds.
template <class T> T latitude_of(const Ellipsoid &e, const Vec3<T> &x)
{
    using std::sqrt, std::sin, std::atan2;
    constexpr int rounds = 7;
    const T across = sqrt(x.x * x.x + x.y * x.y);
    T latitude = atan2(x.z, (1.0 - e.e2) * across);
    for (int k = 0; k < rounds; k++) {
        const T s = sin(latitude);
        latitude = atan2(x.z + e.e2 * (prime_vertical_radius(e, s) * s), across);
    }
    return latitude;
}

inline GeographicPlace<double> geographic(const Ellipsoid &e, const Vec3<double> &x)
{
    const double b = latitude_of(e, x), s = std::sin(b), c = std::cos(b);
    const double across = std::hypot(x.x, x.y), n = prime_vertical_radius(e, s);
    // Along the normal: P cos B + Z sin B = h + N (1 - e2 sin^2 B).
    return {b, std::atan2(x.y, x.x), across * c + x.z * s - n * (1.0 - e.e2 * s * s)};
}

// Axes of the horizon at a place: north, east and up as unit vectors.
template <class T> struct Horizon {
    Vec3<T> north, east, up;
};

template <class T> Horizon<T> horizon(const T &latitude, const T &longitude)
{
    using std::cos, std::sin;
    const T sb = sin(latitude), cb = cos(latitude), sl = sin(longitude), cl = cos(longitude);
    return {{-sb * cl, -sb * sl, cb}, {-sl, cl, T(0.0)}, {cb * cl, cb * sl, sb}};
}

// Of a geocentric place.
template <class T> Horizon<T> horizon_at(const Ellipsoid &e, const Vec3<T> &x)
{
    using std::atan2;
    return horizon<T>(latitude_of(e, x), atan2(x.y, x.x));
}

// Deflection of the vertical, radians: its latitude is xi north of that of the normal, its longitude eta / cos B east
// of it (W. Torge, J. Mueller, Geodesy, 2012, section 6.7).
template <class T> struct Lean {
    T xi, eta;
};

// The horizon at the vertical of a geocentric place: north is that of its astronomic meridian.
template <class T> Horizon<T> horizon_at(const Ellipsoid &e, const Vec3<T> &x, const Lean<T> &lean)
{
    using std::atan2, std::cos;
    const T latitude = latitude_of(e, x);
    return horizon<T>(latitude + lean.xi, atan2(x.y, x.x) + lean.eta / cos(latitude));
}

} // namespace vornadjust

#endif
