// The comparison of printed texts.

#include "ownhost/printed.h"

#include <gtest/gtest.h>

namespace {

TEST(Printed, NumbersMayDifferByOneInTheirLastDigit)
{
    EXPECT_EQ(printed::difference("x  10.0000 m\n", "x   9.9999 m\n"), "");
    EXPECT_EQ(printed::difference("1.0000e-04\n", "9.9999e-05\n"), "");
    EXPECT_NE(printed::difference("x  10.0001 m\n", "x   9.9999 m\n"), "");
    EXPECT_NE(printed::difference("x  10.000 m\n", "x  10.0000 m\n"), "");
    EXPECT_NE(printed::difference("a 0.000000\n", "a-0.000000\n"), "");
    EXPECT_NE(printed::difference("a 1.000000\n", "a-1.000000\n"), "");
}

TEST(Printed, LongNumbersMayDifferByTheirRounding)
{
    EXPECT_EQ(printed::difference("12345678.901234\n", "12345678.905678\n"), "");
    EXPECT_NE(printed::difference("12345678.901234\n", "12345678.951234\n"), "");
    EXPECT_EQ(printed::difference("0.123456789012345\n", "0.123456789012999\n"), "");
    EXPECT_NE(printed::difference("0.123456789012345\n", "0.123456780012345\n"), "");
}

TEST(Printed, WholeNumbersWordsAndColumnsMayNot)
{
    EXPECT_NE(printed::difference("iteration 3\n", "iteration 4\n"), "");
    EXPECT_NE(printed::difference("point S1\n", "point S2\n"), "");
    EXPECT_NE(printed::difference("a  1.5\n", "a 1.5\n"), "");
    EXPECT_NE(printed::difference("a\n", "a \n"), "");
    EXPECT_NE(printed::difference("a\nb\n", "a\n"), "");
    EXPECT_NE(printed::difference("a\n\n", "a\n"), "");
    EXPECT_NE(printed::difference("a\n", "a"), "");
    EXPECT_NE(printed::difference("", "a\n"), "");
}

TEST(Printed, WhatIsNotANumberHasNoSign)
{
    EXPECT_EQ(printed::difference("cost=   nan\n", "cost=  -nan\n"), "");
    EXPECT_NE(printed::difference("cost=   nan\n", "cost=   inf\n"), "");
}

} // namespace
