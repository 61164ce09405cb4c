#include "host/input/number.h"

#include <gtest/gtest.h>

#include <locale.h>

using vornhost::number_remedy;
using vornhost::read_number;
using vornhost::read_whole;
using vornhost::Reading;

TEST(ReadNumber, TakesSignsPointsAndExponents)
{
    double value = 0.0;
    const std::pair<const char *, double> cases[] = {{"12.5", 12.5}, {"+12.5", 12.5}, {"-0.25", -0.25}, {"1e-3", 1e-3},
                                                     {"1E3", 1e3},   {".5", 0.5},     {"5.", 5.0},      {"007", 7.0}};
    for (const auto &[text, wanted] : cases) {
        EXPECT_EQ(read_number(text, value), Reading::Number) << text;
        EXPECT_EQ(value, wanted) << text;
    }
}

TEST(ReadNumber, RefusesWhatIsNoNumberAndLeavesTheValue)
{
    double value = 1.5;
    for (const char *text : {"", "+", "-", ".", "12,5", "12.5m", "1.2.3", "0x10", "+-3", "++3", "e5", "1.5D-3", "1 2"})
        EXPECT_EQ(read_number(text, value), Reading::None) << text;
    for (const char *text : {"nan", "inf", "-inf", "NaN", "infinity"})
        EXPECT_EQ(read_number(text, value), Reading::NotFinite) << text;
    EXPECT_EQ(read_number("1e999", value), Reading::OutOfRange);
    EXPECT_EQ(value, 1.5);
}

TEST(ReadNumber, DoesNotDependOnTheLocale)
{
    double value = 0.0;
    setlocale(LC_ALL, "de_DE.UTF-8"); // has a decimal comma where it is installed
    EXPECT_EQ(read_number("12.5", value), Reading::Number);
    setlocale(LC_ALL, "C");
    EXPECT_EQ(value, 12.5);
}

TEST(ReadWhole, TakesWholeNumbersWithinTheirRange)
{
    int value = 0;
    EXPECT_EQ(read_whole("-17", value), Reading::Number);
    EXPECT_EQ(value, -17);
    EXPECT_EQ(read_whole("+4", value), Reading::Number);
    EXPECT_EQ(read_whole("1.0", value), Reading::None);
    EXPECT_EQ(read_whole("2147483648", value), Reading::OutOfRange);
    EXPECT_EQ(value, 4);
}

TEST(NumberRemedy, TurnsADecimalCommaIntoAPoint)
{
    EXPECT_EQ(number_remedy("12,5"), "write it with a decimal point, like 12.5");
    EXPECT_EQ(number_remedy("1,234,5"), "write a number like 12.5");
    EXPECT_EQ(number_remedy("a,b"), "write a number like 12.5");
}

TEST(NumberRemedy, TurnsATypographicMinusIntoAPlainOne)
{
    EXPECT_EQ(number_remedy("\xE2\x88\x92"
                            "1.625"),
              "write it with a plain minus, like -1.625");
}
