// Numbers as importers write them.

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "host/formats/number_text.h"
#include "host/input/number.h"

using namespace vornhost;

TEST(NumberText, IsTheShortestThatReadsBack)
{
    const std::pair<double, const char *> known[] = {{0.0, "0"},
                                                     {-0.0, "0"},
                                                     {1e6, "1000000"},
                                                     {0.1, "0.1"},
                                                     {-12.5, "-12.5"},
                                                     {1054980.484, "1054980.484"},
                                                     {2.5e-6, "0.0000025"},
                                                     {1e-9, "1e-09"},
                                                     {1e300, "1e+300"}};
    for (const auto &[value, text] : known) EXPECT_EQ(number_text(value), text);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> digits(-1.0, 1.0), power(-12.0, 16.0);
    for (int i = 0; i < 1000; i++) {
        const double value = digits(random) * std::pow(10.0, power(random));
        double back = 0.0;
        ASSERT_EQ(read_number(number_text(value), back), Reading::Number);
        EXPECT_EQ(back, value);
    }
}

TEST(NumberText, WritesDegreesMinutesSeconds)
{
    const std::pair<double, const char *> known[] = {{57.0 + 32.0 / 60 + 28.428 / 3600, "57-32-28.428"},
                                                     {-1.5 / 3600, "-0-00-01.5"},
                                                     {90.0, "90-00-00"},
                                                     {0.0, "0-00-00"},
                                                     {359.99999999999994, "360-00-00"},
                                                     {12.5, "12-30-00"},
                                                     {-(12.0 + 3.0 / 60), "-12-03-00"}};
    for (const auto &[degrees, text] : known) EXPECT_EQ(dms_text(degrees), text);
}

TEST(NumberText, DegreesMinutesSecondsComeBack)
{
    std::mt19937 random(8);
    std::uniform_real_distribution<double> angle(0.0, 360.0);
    for (int i = 0; i < 1000; i++) {
        const double value = angle(random);
        int d = 0, m = 0;
        double s = 0;
        ASSERT_EQ(sscanf(dms_text(value).c_str(), "%d-%d-%lf", &d, &m, &s), 3);
        EXPECT_LT(m, 60);
        EXPECT_LT(s, 60.0);
        EXPECT_NEAR(d + m / 60.0 + s / 3600.0, value, 5e-13); // ten places of a second
    }
}

TEST(NumberText, TidiesWhatOneSubtractionLeft)
{
    EXPECT_EQ(tidy(400.0 - 113.6688, 400.0), 286.3312);
    EXPECT_EQ(tidy(400.0 - 399.9999, 400.0), 0.0001);
    EXPECT_EQ(tidy(1.0 / 3.0, 1.0), 1.0 / 3.0);
    EXPECT_EQ(tidy(0.07 * 1000.0, 70.0), 70.0);
}
