#include "host/formats/geocentric.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace vornhost;

namespace {
const double degree = std::acos(-1.0) / 180.0;
}

// The axes of GRS 80 are 6378137 and 6356752.3141 m (Moritz, Geodetic Reference System 1980).
TEST(Geocentric, MeetsTheAxesOfTheEllipsoid)
{
    const auto east = geocentric({0, 90 * degree, 10}), pole = geocentric({90 * degree, 0, 10});
    EXPECT_NEAR(east[0], 0.0, 1e-8);
    EXPECT_NEAR(east[1], 6378147.0, 1e-8);
    EXPECT_NEAR(pole[2], 6356762.3141, 1e-4);
}

TEST(Geocentric, ComesBackFromGeocentricToGeodeticCoordinates)
{
    for (double latitude = -90; latitude <= 90; latitude += 7.5)
        for (double height = -10000; height <= 10000; height += 2500) {
            const Geodetic back = geodetic(geocentric({latitude * degree, -37 * degree, height}));
            EXPECT_NEAR(back.latitude * 6.4e6, latitude * degree * 6.4e6, 2e-8) << latitude << ' ' << height;
            EXPECT_NEAR(back.height, height, 2e-8) << latitude << ' ' << height;
        }
}

// A step of a metre to the north, to the east and upwards.
TEST(Geocentric, TurnsDifferencesIntoLocalAxes)
{
    const Geodetic place = {-36.5 * degree, 145.9 * degree, 170};
    const auto axes = local_axes(place);
    const auto here = geocentric(place), above = geocentric({place.latitude, place.longitude, place.height + 1});
    for (size_t axis = 0; axis < 3; axis++) EXPECT_NEAR(above[axis] - here[axis], axes[2][axis], 1e-8);
    const auto east = geocentric({place.latitude, place.longitude + 1e-6, place.height});
    double along = 0, up = 0, north = 0;
    for (size_t axis = 0; axis < 3; axis++) {
        along += axes[0][axis] * (east[axis] - here[axis]);
        north += axes[1][axis] * (east[axis] - here[axis]);
        up += axes[2][axis] * (east[axis] - here[axis]);
    }
    EXPECT_GT(along, 5.0);
    EXPECT_NEAR(up, 0.0, 1e-5);
    EXPECT_NEAR(north, 0.0, 1e-5);
}
