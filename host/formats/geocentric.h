// Geodetic coordinates on the ellipsoid of GRS 80 and back, in closed formulas. Radians and metres.
//
// WGS 84 differs from it by 0.1 mm in its minor axis.

#ifndef VORNHOST_GEOCENTRIC_H
#define VORNHOST_GEOCENTRIC_H

#include <array>

namespace vornhost {

struct Geodetic {
    double latitude = 0, longitude = 0, height = 0; // above the ellipsoid
};

// X, Y, Z.
std::array<double, 3> geocentric(const Geodetic &place);

// By Bowring's formulas (Survey Review 23, 1976, and 28, 1985), to rounding within 10 km of the ellipsoid.
Geodetic geodetic(const std::array<double, 3> &xyz);

// Rows of the matrix that turns differences of X, Y, Z into east, north and up at a place.
std::array<std::array<double, 3>, 3> local_axes(const Geodetic &place);

// Metres of north and east for a radian of latitude and longitude.
std::array<double, 2> radii(const Geodetic &place);

} // namespace vornhost

#endif
