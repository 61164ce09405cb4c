#include "host/input/angle.h"

#include <gtest/gtest.h>

#include <math.h>

#include "vorn/project.h"

using namespace vornhost;

namespace {

const double pi = 3.14159265358979323846;

} // namespace

TEST(ToRadians, KnowsTheFourUnits)
{
    EXPECT_NEAR(to_radians(ANGLE_GON, 50.0), pi / 4.0, 1e-15);
    EXPECT_NEAR(to_radians(ANGLE_DEGREE, -45.0), -pi / 4.0, 1e-15);
    EXPECT_EQ(to_radians(ANGLE_RADIAN, 1.25), 1.25);
}

// 1e-14: ddd.mmss itself is rounded to about 1e-14 of a degree.
TEST(ToRadians, ReadsPackedDegreesMinutesAndSeconds)
{
    EXPECT_NEAR(to_radians(ANGLE_PACKED, 12.3036), (12.0 + 30.0 / 60.0 + 36.0 / 3600.0) * pi / 180.0, 1e-14);
    EXPECT_NEAR(to_radians(ANGLE_PACKED, -12.3036), -(12.0 + 30.0 / 60.0 + 36.0 / 3600.0) * pi / 180.0, 1e-14);
    EXPECT_NEAR(to_radians(ANGLE_PACKED, 0.0005), 5.0 / 3600.0 * pi / 180.0, 1e-14);
    EXPECT_NEAR(to_radians(ANGLE_PACKED, 359.59595), (360.0 - 0.5 / 3600.0) * pi / 180.0, 1e-14);
}

TEST(ReadableAngle, RefusesSixtyMinutesOrSeconds)
{
    EXPECT_TRUE(readable_angle(ANGLE_PACKED, 12.5959));
    EXPECT_TRUE(readable_angle(ANGLE_PACKED, 12.595999));
    EXPECT_FALSE(readable_angle(ANGLE_PACKED, 12.6));
    EXPECT_FALSE(readable_angle(ANGLE_PACKED, 12.5960));
    EXPECT_FALSE(readable_angle(ANGLE_PACKED, -12.0075));
    EXPECT_TRUE(readable_angle(ANGLE_DEGREE, 12.75));
}

// Whole minutes and seconds have no exact binary fraction; none may tip into 60.
TEST(ReadableAngle, TakesEveryMinuteAndSecondOfEveryDegree)
{
    for (int degree = 0; degree < 360; degree += 7)
        for (int second = 0; second < 3600; second++) {
            const double packed = degree + (second / 60) / 100.0 + (second % 60) / 10000.0;
            ASSERT_TRUE(readable_angle(ANGLE_PACKED, packed)) << packed;
            ASSERT_NEAR(to_radians(ANGLE_PACKED, packed), (degree + second / 3600.0) * pi / 180.0, 1e-13) << packed;
        }
}

TEST(ReadableAngle, IsDefinedForEveryFiniteNumber)
{
    for (const double raw : {1e15, -1e300, 1.7e308, 5e-324}) {
        readable_angle(ANGLE_PACKED, raw);
        EXPECT_FALSE(isnan(to_radians(ANGLE_DEGREE, raw)));
    }
}
