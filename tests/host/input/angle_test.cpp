#include "host/input/angle.h"

#include <gtest/gtest.h>

#include <math.h>

#include <string>

#include "host/input/units.h"

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

TEST(ToRadians, KnowsTheOtherUnitsByTheirCircle)
{
    const std::pair<int, double> circles[] = {
        {ANGLE_MGON, 400000}, {ANGLE_CC, 4000000}, {ANGLE_ARC_SECOND, 1296000}, {ANGLE_MIL, 6400}, {ANGLE_DMS, 360}};
    for (const auto &[unit, circle] : circles) {
        EXPECT_NEAR(to_radians(unit, circle / 8), pi / 4, 1e-15) << unit;
        EXPECT_NEAR(from_radians(unit, pi), circle / 2, 1e-9) << unit;
    }
    EXPECT_EQ(in_angle_unit(ANGLE_PACKED, ANGLE_PACKED, 0.1), 0.1);
    EXPECT_NEAR(in_angle_unit(ANGLE_GON, ANGLE_MIL, 16), 1, 1e-15);
}

TEST(Dms, IsReadWithDashesAndWithMarks)
{
    const std::pair<const char *, double> texts[] = {{"12-30-36.5", 12 + 30 / 60.0 + 36.5 / 3600},
                                                     {"-12-30-36.5", -12 - 30 / 60.0 - 36.5 / 3600},
                                                     {"-0-00-01.5", -1.5 / 3600},
                                                     {"+0-0-1", 1 / 3600.0},
                                                     {"12\xC2\xB0"
                                                      "30'36.5\"",
                                                      12 + 30 / 60.0 + 36.5 / 3600},
                                                     {"12\xC2\xB0"
                                                      "30\xE2\x80\xB2"
                                                      "36.5\xE2\x80\xB3",
                                                      12 + 30 / 60.0 + 36.5 / 3600},
                                                     {"359-59-59.999", 360 - 0.001 / 3600},
                                                     {"0", 0},
                                                     {"180", 180},
                                                     {"12-30", 12.5},
                                                     {"12\xC2\xB0", 12}};
    for (const auto &[text, degrees] : texts) {
        double read = -1;
        EXPECT_TRUE(read_dms(text, read)) << text;
        EXPECT_NEAR(read, degrees, 1e-12) << text;
    }
}

TEST(Dms, RefusesWhatIsNoneAndLeavesItsResultAlone)
{
    for (const char *text : {"", "-", "12.5", "12-60-00", "12-30-60", "12-30-59.9x", "12--30", "12-30.5-1", "a",
                             "12-30-36.5\"\"", "12-30-1-2", "1e3", "12 30 36", "--1", "12-30-1.2.3"}) {
        double read = 7;
        EXPECT_FALSE(read_dms(text, read)) << text;
        EXPECT_EQ(read, 7) << text;
    }
}

TEST(Dms, IsWrittenWithoutSixtySeconds)
{
    EXPECT_EQ(dms_text(12 + 30 / 60.0 + 36.5 / 3600, 2), "12-30-36.50");
    EXPECT_EQ(dms_text(-1.5 / 3600, 1), "-0-00-01.5");
    EXPECT_EQ(dms_text(59.999 / 3600, 2), "0-01-00.00");
    EXPECT_EQ(dms_text(1 - 0.004 / 3600, 2), "1-00-00.00");
    EXPECT_EQ(dms_text(-0.001 / 3600, 2), "0-00-00.00");
    EXPECT_EQ(dms_text(5, 0), "5-00-00");
}

TEST(Dms, ReadsWhatItWrites)
{
    for (int i = -5000; i < 5000; i++) {
        const double degrees = i * 0.0731;
        double read = 1e9;
        ASSERT_TRUE(read_dms(dms_text(degrees, 3), read)) << degrees;
        ASSERT_NEAR(read, degrees, 0.00051 / 3600);
    }
}
