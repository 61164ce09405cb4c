// The test of single observations that a file asks for, as numbers of one run.

#ifndef VORNHOST_TEST_RULE_H
#define VORNHOST_TEST_RULE_H

#include <string>

#include "host/input/test_settings.h"

namespace vornhost {

struct VarianceTest;

// A level or a power with as many digits as it has: "0.001".
std::string level_text(double level);

// Both tests of a sum of squares with f degrees of freedom, f > 0.
VarianceTest variance_test(double squares, int f, double level);

class TestRule {
public:
    // For a run with so many observations that are tested, f degrees of freedom and the root of its a-posteriori
    // variance factor. Without redundancy, or in planning, f is 0: there is no test, and what can be found is foretold
    // by the standard deviations of the file (not with tau).
    TestRule(const TestSettings &settings, int tested, int f, double sigma);

    bool tests() const { return applies; }   // there is a test
    double limit() const { return largest; } // of the size of a normalised residual with a variance factor of 1

    // Probability of a residual of this size or larger where no observation is wrong; with sidak by family.
    double probability(double normalised) const;

    // Of observations together: squares with rank degrees of freedom, and all squares of the run.
    bool tests_together(int rank) const;
    double probability_together(double squares, double all_squares, int rank) const;
    double level_together(int rank) const;

    // A detectable bias is this over the root of e^T P Qvv P e; 0 where nothing can be foretold. Takes milliseconds.
    double detectable() const;

    double single_level() const { return alpha; }     // of one observation
    double global_level() const { return global; }    // of the variance factor
    const std::string &name() const { return words; } // "Baarda's test at level 0.001, power 0.80"

private:
    const TestSettings settings;
    int number, freedom;
    double root;
    bool applies = false;
    double alpha = 0, global = 0, largest = 0, lambda = 0; // lambda: of the B-method alone
    std::string words;
};

} // namespace vornhost

#endif
