#include "host/results/test_rule.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "host/results/results.h"
#include "host/results/test_limits.h"

namespace vornhost {

namespace {

std::string in_words(const TestSettings &s, double alpha, double global)
{
    std::string text = s.test == ObservationTest::tau ? "Pope's tau" : "Baarda's test";
    text += " at level " + level_text(s.level);
    if (s.sidak) text += " for all together (" + level_text(alpha) + " each, Sidak)";
    if (s.test == ObservationTest::b_method && global > 0)
        text += ", of the variance factor at " + level_text(global) + " (B-method)";
    return text + ", power " + level_text(s.power);
}

} // namespace

std::string level_text(double level)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.3g", level);
    return text;
}

VarianceTest variance_test(double squares, int f, double level)
{
    VarianceTest t;
    t.squares = squares;
    t.level = level;
    t.lower = chi_square_limit(level / 2.0, f);
    t.upper = chi_square_limit(1.0 - level / 2.0, f);
    t.one_sided_limit = chi_square_limit(1.0 - level, f);
    t.one_sided_probability = chi_square_above(squares, f);
    t.probability = std::fmin(1.0, 2.0 * std::fmin(t.one_sided_probability, chi_square_below(squares, f)));
    return t;
}

TestRule::TestRule(const TestSettings &its_settings, int tested, int f, double sigma)
    : settings(its_settings), number(std::max(1, tested)), freedom(f), root(sigma)
{
    const bool tau = settings.test == ObservationTest::tau;
    applies = tested > 0 && f > (tau ? 1 : 0);
    alpha = settings.sidak ? sidak_level(settings.level, number) : settings.level;
    global = settings.global_level;
    if (settings.test == ObservationTest::b_method) {
        lambda = noncentrality(alpha, settings.power, 1);
        global = f > 0 ? level_of_same_power(lambda, settings.power, f) : 0.0;
    }
    largest = !applies ? std::numeric_limits<double>::infinity()
              : tau    ? tau_limit(alpha, f) * sigma
                       : normal_limit(alpha);
    words = in_words(settings, alpha, global);
}

double TestRule::detectable() const
{
    if (settings.test != ObservationTest::tau) return std::sqrt(noncentrality(alpha, settings.power, 1));
    return applies ? root * tau_shift(alpha, settings.power, freedom) : 0.0;
}

double TestRule::probability(double normalised) const
{
    const double p = settings.test == ObservationTest::tau ? tau_probability(normalised / root, freedom)
                                                           : normal_probability(normalised);
    return settings.sidak ? sidak_probability(p, number) : p;
}

bool TestRule::tests_together(int rank) const
{
    return applies && rank > 0 && (settings.test != ObservationTest::tau || freedom > rank);
}

double TestRule::probability_together(double squares, double all_squares, int rank) const
{
    double p = 0.0;
    if (settings.test != ObservationTest::tau)
        p = chi_square_above(squares, rank);
    else if (const double left = all_squares - squares; left > 0.0)
        p = fisher_above((squares / rank) / (left / (freedom - rank)), rank, freedom - rank);
    return settings.sidak ? sidak_probability(p, number) : p;
}

double TestRule::level_together(int rank) const
{
    return settings.test == ObservationTest::b_method ? level_of_same_power(lambda, settings.power, rank)
                                                      : settings.level;
}

} // namespace vornhost
