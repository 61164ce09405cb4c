#include "host/formats/geocentric.h"

#include <cmath>

namespace vornhost {

namespace {

// Moritz, Geodetic Reference System 1980, Bulletin Geodesique 54.
constexpr double a = 6378137.0, f = 1.0 / 298.257222101;
constexpr double b = a * (1.0 - f), e2 = f * (2.0 - f), second_e2 = e2 / (1.0 - e2);

} // namespace

std::array<double, 3> geocentric(const Geodetic &p)
{
    const double sin_lat = std::sin(p.latitude), cos_lat = std::cos(p.latitude);
    const double n = a / std::sqrt(1.0 - e2 * sin_lat * sin_lat); // radius in the prime vertical
    return {(n + p.height) * cos_lat * std::cos(p.longitude), (n + p.height) * cos_lat * std::sin(p.longitude),
            (n * (1.0 - e2) + p.height) * sin_lat};
}

Geodetic geodetic(const std::array<double, 3> &xyz)
{
    const double r = std::hypot(xyz[0], xyz[1]), distance = std::hypot(r, xyz[2]);
    Geodetic place;
    if (distance == 0.0) return place;
    place.longitude = std::atan2(xyz[1], xyz[0]);
    // Parametric latitude, the first one by Bowring's formula of 1985.
    double u = std::atan2(b * xyz[2] * (1.0 + second_e2 * b / distance), a * r);
    for (int step = 0; step < 2; step++) {
        const double sin_u = std::sin(u), cos_u = std::cos(u);
        place.latitude = std::atan2(xyz[2] + second_e2 * b * sin_u * sin_u * sin_u, r - e2 * a * cos_u * cos_u * cos_u);
        u = std::atan2((1.0 - f) * std::sin(place.latitude), std::cos(place.latitude));
    }
    const double sin_lat = std::sin(place.latitude), cos_lat = std::cos(place.latitude);
    place.height = r * cos_lat + xyz[2] * sin_lat - a * std::sqrt(1.0 - e2 * sin_lat * sin_lat);
    return place;
}

std::array<double, 2> radii(const Geodetic &p)
{
    const double sin_lat = std::sin(p.latitude), w2 = 1.0 - e2 * sin_lat * sin_lat, n = a / std::sqrt(w2);
    return {n * (1.0 - e2) / w2 + p.height, (n + p.height) * std::cos(p.latitude)};
}

std::array<std::array<double, 3>, 3> local_axes(const Geodetic &p)
{
    const double sin_lat = std::sin(p.latitude), cos_lat = std::cos(p.latitude);
    const double sin_lon = std::sin(p.longitude), cos_lon = std::cos(p.longitude);
    return {{{-sin_lon, cos_lon, 0.0},
             {-sin_lat * cos_lon, -sin_lat * sin_lon, cos_lat},
             {cos_lat * cos_lon, cos_lat * sin_lon, sin_lat}}};
}

} // namespace vornhost
