// The conversions out of the C library, against those of this standard library.

#include "host/system/decimal.h"

#include <gtest/gtest.h>
#include <string.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

using namespace vornhost;

namespace {

using Format = std::chars_format;

template <class... More> std::string written(double value, More... format)
{
    char text[800];
    return std::string(text, c_to_chars(text, text + sizeof text, value, format...).ptr);
}

template <class... More> std::string standard(double value, More... format)
{
    char text[800];
    return std::string(text, std::to_chars(text, text + sizeof text, value, format...).ptr);
}

// Every exponent and any digits.
double any_double(std::mt19937_64 &random)
{
    for (;;) {
        const uint64_t bits = random();
        double value;
        memcpy(&value, &bits, sizeof value);
        if (std::isnormal(value)) return value;
    }
}

} // namespace

TEST(Decimal, WritesNumbersAsTheStandardLibraryDoes)
{
    for (const double value : {0.0, -0.0, 1.0, -1.5, 0.1, 1e15, 1e16, 123456.0, 1e22, 1e23, 9007199254740993.0, 1e-5,
                               1.25e-7, 1.7976931348623157e308, 2.2250738585072014e-308, 0.3, 2.0 / 3.0, 5e-5}) {
        EXPECT_EQ(written(value), standard(value));
        EXPECT_EQ(written(value, Format::scientific), standard(value, Format::scientific));
        EXPECT_EQ(written(value, Format::fixed), standard(value, Format::fixed));
        EXPECT_EQ(written(value, Format::fixed, 5), standard(value, Format::fixed, 5));
        EXPECT_EQ(written(value, Format::scientific, 5), standard(value, Format::scientific, 5));
    }
}

TEST(Decimal, WritesAnyNumberSoThatItReadsBackInAsFewDigits)
{
    std::mt19937_64 random(4);
    for (int i = 0; i < 20000; i++) {
        const double value = any_double(random);
        const std::string text = written(value, Format::scientific);
        double read = 0.0;
        ASSERT_EQ(std::from_chars(text.data(), text.data() + text.size(), read).ec, std::errc()) << text;
        ASSERT_EQ(read, value) << text;
        ASSERT_EQ(text.size(), standard(value, Format::scientific).size()) << text;
    }
}

TEST(Decimal, WritesNumbersThatAreTooSmallForAllDigitsSoThatTheyReadBack)
{
    for (const double value : {std::numeric_limits<double>::denorm_min(), 3e-310}) {
        const std::string text = written(value);
        EXPECT_EQ(strtod(text.c_str(), nullptr), value);
    }
}

TEST(Decimal, SaysWhenThereIsNoRoom)
{
    char text[4];
    EXPECT_EQ(c_to_chars(text, text + sizeof text, 1.2345).ec, std::errc::value_too_large);
    EXPECT_EQ(c_to_chars(text, text + sizeof text, 1.25).ptr, text + 4);
}

TEST(Decimal, ReadsWhatTheStandardLibraryReadsAndAsFar)
{
    const std::string nul = std::string("1\0"
                                        "2",
                                        3);
    for (const std::string &text : {std::string(),
                                    std::string("-"),
                                    std::string("."),
                                    std::string("1"),
                                    std::string("-1.25"),
                                    std::string("+1"),
                                    std::string(" 1"),
                                    std::string("1."),
                                    std::string(".5"),
                                    std::string("-.5e1"),
                                    std::string("1e"),
                                    std::string("1e+"),
                                    std::string("1e+5x"),
                                    std::string("1E-5"),
                                    std::string("0x10"),
                                    std::string("1,5"),
                                    std::string("inf"),
                                    std::string("-INF"),
                                    std::string("infinity"),
                                    std::string("infinit"),
                                    std::string("nan"),
                                    std::string("1e999"),
                                    std::string("-1e999"),
                                    std::string("1e-999"),
                                    std::string("--1"),
                                    std::string("1.2.3"),
                                    std::string("e5"),
                                    std::string("0.1"),
                                    std::string("179769313486231580793e289"),
                                    nul}) {
        double mine = 7.0, theirs = 7.0;
        const char *first = text.data(), *last = first + text.size();
        const std::from_chars_result found = c_from_chars(first, last, mine),
                                     wanted = std::from_chars(first, last, theirs);
        EXPECT_EQ(found.ec, wanted.ec) << text;
        EXPECT_EQ(found.ptr, wanted.ptr) << text;
        EXPECT_TRUE(mine == theirs || (std::isnan(mine) && std::isnan(theirs))) << text << " " << mine << " " << theirs;
    }
}

TEST(Decimal, ReadsWhatItWrote)
{
    std::mt19937_64 random(5);
    for (int i = 0; i < 2000; i++) {
        const double value = any_double(random);
        const std::string text = written(value);
        double read = 0.0;
        ASSERT_EQ(c_from_chars(text.data(), text.data() + text.size(), read).ptr, text.data() + text.size());
        ASSERT_EQ(read, value) << text;
    }
}
