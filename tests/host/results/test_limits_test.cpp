// Distributions against published tables and closed formulas.

#include "host/results/test_limits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace vornhost;

// Baarda 1968: 17.075 for level 0.001 and power 0.80 (one degree of freedom); the nomograms' 4.13 is its root.
TEST(TestLimits, NoncentralityIsBaardas)
{
    EXPECT_NEAR(noncentrality(0.001, 0.80, 1), 17.075, 0.001);
    EXPECT_NEAR(std::sqrt(noncentrality(0.001, 0.80, 1)), 4.13, 0.005);
    EXPECT_NEAR(std::sqrt(noncentrality(0.05, 0.80, 1)), 2.80, 0.005); // 1.96 + 0.84
    EXPECT_NEAR(std::sqrt(noncentrality(0.01, 0.90, 1)), 2.5758 + 1.2816, 0.001);
    EXPECT_NEAR(normal_limit(0.001), 3.2905, 1e-4);
}

// J. Cohen's tables of power for chi-square: noncentrality 10.90 for three degrees, level 0.05, power 0.80; 9.63 for
// two.
TEST(TestLimits, NoncentralityOfSeveralDegreesIsThatOfTables)
{
    EXPECT_NEAR(noncentrality(0.05, 0.80, 3), 10.90, 0.005);
    EXPECT_NEAR(noncentrality(0.05, 0.80, 2), 9.63, 0.005);
}

// The same number by simulation: a sum of squares of q normal numbers, one of them off by the root of lambda.
TEST(TestLimits, LevelsOfTheBMethodHaveTheSamePower)
{
    const double lambda = noncentrality(0.001, 0.80, 1);
    EXPECT_NEAR(level_of_same_power(lambda, 0.80, 1), 0.001, 1e-9);
    std::mt19937 engine(1);
    std::normal_distribution<double> normal;
    for (const int q : {3, 20}) {
        const double level = level_of_same_power(lambda, 0.80, q), limit = chi_square_limit(1.0 - level, q);
        const int n = 20000;
        int found = 0;
        for (int i = 0; i < n; i++) {
            double sum = std::pow(normal(engine) + std::sqrt(lambda), 2);
            for (int k = 1; k < q; k++) sum += std::pow(normal(engine), 2);
            found += sum > limit;
        }
        EXPECT_NEAR((double)found / n, 0.80, 4 * std::sqrt(0.16 / n)) << q;
        EXPECT_GT(level, 0.001);
    }
}

// Of two degrees of freedom chi-square is exponential, of F(2, m) there is a closed form, and t of two degrees too.
TEST(TestLimits, ProbabilitiesAreThoseOfClosedFormulas)
{
    for (const double x : {0.1, 1.0, 5.0, 40.0}) {
        EXPECT_NEAR(chi_square_above(x, 2), std::exp(-x / 2), 1e-12);
        EXPECT_NEAR(chi_square_below(x, 2), 1 - std::exp(-x / 2), 1e-12);
        EXPECT_NEAR(fisher_above(x, 2, 7), std::pow(1 + 2 * x / 7, -3.5), 1e-12);
        EXPECT_NEAR(normal_probability(x), std::erfc(x / std::sqrt(2.0)), 1e-12);
    }
    const double f = 3, tau = 1.2, t = tau * std::sqrt((f - 1) / (f - tau * tau));
    EXPECT_NEAR(tau_probability(tau, f), 1 - t / std::sqrt(2 + t * t), 1e-12);
    EXPECT_NEAR(tau_probability(std::sqrt(f), f), 0.0, 1e-12);
    for (const double level : {0.05, 0.001})
        for (const double freedom : {2.0, 10.0, 200.0})
            EXPECT_NEAR(tau_probability(tau_limit(level, freedom), freedom), level, 1e-9);
}

// 42343 degrees of freedom and a variance of 1.001: far from any limit. Wilson and Hilferty's cube root is good to
// 1e-4 there.
TEST(TestLimits, ChiSquareHoldsForTensOfThousandsOfDegrees)
{
    const double f = 42343, x = 1.001 * f, h = 2.0 / (9.0 * f);
    const double z = (std::cbrt(x / f) - (1 - h)) / std::sqrt(h);
    EXPECT_NEAR(chi_square_above(x, f), 0.5 * std::erfc(z / std::sqrt(2.0)), 1e-4);
    EXPECT_NEAR(chi_square_above(x, f), 0.44, 0.01);
}

TEST(TestLimits, SidakTakesTheFamilyApartAndTogether)
{
    EXPECT_NEAR(sidak_level(0.05, 1), 0.05, 1e-15);
    EXPECT_NEAR(1 - std::pow(1 - sidak_level(0.05, 20), 20), 0.05, 1e-12);
    EXPECT_NEAR(sidak_probability(sidak_level(0.001, 5000), 5000), 0.001, 1e-12);
    EXPECT_EQ(sidak_probability(1.0, 7), 1.0);
    EXPECT_NEAR(sidak_probability(0.0, 7), 0.0, 1e-300);
}

// With many degrees of freedom tau is normal; with few, an error must be larger.
TEST(TestLimits, TauFindsWhatTheNormalTestFinds)
{
    EXPECT_NEAR(tau_shift(0.001, 0.80, 1e6), std::sqrt(noncentrality(0.001, 0.80, 1)), 1e-4);
    EXPECT_GT(tau_shift(0.001, 0.80, 10), 5.0);
    // by simulation: a sum of f squares of which one number is off
    std::mt19937 engine(2);
    std::normal_distribution<double> normal;
    const double f = 6, off = tau_shift(0.05, 0.80, f), limit = tau_limit(0.05, f);
    const int n = 20000;
    int found = 0;
    for (int i = 0; i < n; i++) {
        const double w = normal(engine) + off;
        double sum = w * w;
        for (int k = 1; k < f; k++) sum += std::pow(normal(engine), 2);
        found += std::fabs(w) / std::sqrt(sum / f) > limit;
    }
    EXPECT_NEAR((double)found / n, 0.80, 4 * std::sqrt(0.16 / n));
}

TEST(ChiSquare, HasAProbabilityFarBelowItsMean)
{
    for (const double f : {400.0, 48180.0, 5e6}) {
        for (const double squares : {0.0, 1e-25, 0.99e-3 * f}) {
            EXPECT_EQ(chi_square_below(squares, f), 0.0) << f << " " << squares;
            EXPECT_EQ(chi_square_above(squares, f), 1.0) << f << " " << squares;
        }
        EXPECT_LT(chi_square_below(1.01e-3 * f, f), 1e-300) << f;
        EXPECT_NEAR(chi_square_below(f, f), 0.5, 0.02) << f;
    }
}
