// Beside the engine's tests of the variance factor, whose chi-square has too few terms for many degrees of freedom:
// what they should say.

#include <gtest/gtest.h>

#include <cmath>

#include "host/own/own_run.h"

using namespace vornhost;

namespace {

// A height by n readings, each off by `off` standard deviations up or down: n - 1 degrees of freedom, and a sum of
// squares of n off^2.
std::string readings(int n, double off)
{
    std::string text = "[run]\ndimension = 1\nsolver = \"compact\"\n[tables]\ntargets = '''\nname z code\nA 100 fixed\n"
                       "B 101 free\n'''\nheight_differences = '''\nfrom to value sigma\n";
    char line[80];
    for (int i = 0; i < n; i++) {
        snprintf(line, sizeof line, "A B %.9f 0.001\n", 1.0 + (i % 2 == 0 ? 0.001 : -0.001) * off);
        text += line;
    }
    return text + "'''\n";
}

SolvedNetwork by_engine(int n, double off) { return solve_text(readings(n, off), Solver::Compact); }

} // namespace

// A chi-square of f degrees has the mean f and the standard deviation sqrt(2 f): 2002 squares of 2001 are as expected.
TEST(EngineTest, IsCorrectedBesideItWhereItHasTooFewTerms)
{
    const SolvedNetwork s = by_engine(2002, 1.0);
    ASSERT_TRUE(s.adjusted());
    EXPECT_NE(s.report.find("Fail the two-tailed test"), std::string::npos)
        << "the engine is right: leave the words out";
    const size_t beside = s.report.find("the engine's chi-square has too few terms for 2001 degrees of freedom");
    ASSERT_NE(beside, std::string::npos);
    EXPECT_NE(s.report.find("Sum of squares 2002.00", beside), std::string::npos) << s.report.substr(beside);
    ASSERT_TRUE(s.results().variance_test);
    EXPECT_TRUE(s.results().variance_test->passed());
    EXPECT_TRUE(s.results().one_tailed_test.value());
    EXPECT_NEAR(s.results().variance_test->upper, 2001 + 1.96 * std::sqrt(2 * 2001.0) + 1.9, 1.0); // Wilson, Hilferty
    EXPECT_FALSE(s.results().notes.empty());
}

TEST(EngineTest, StillFailsWhereTheObservationsAreWorse)
{
    const SolvedNetwork s = by_engine(2002, 1.1);
    ASSERT_TRUE(s.results().variance_test);
    EXPECT_FALSE(s.results().variance_test->passed());
    EXPECT_FALSE(s.results().one_tailed_test.value());
}

TEST(EngineTest, StandsAloneWithFewDegreesOfFreedom)
{
    const SolvedNetwork s = by_engine(400, 1.0);
    EXPECT_EQ(s.report.find("too few terms"), std::string::npos);
    EXPECT_FALSE(s.results().variance_test);
    EXPECT_TRUE(s.results().one_tailed_test.value());
}
