// Distributions of the statistical tests: limits, probabilities, and how far a quantity must be off to be found.
//
// A level is the probability to reject what is right, a power that to reject what is wrong.

#ifndef VORNHOST_TEST_LIMITS_H
#define VORNHOST_TEST_LIMITS_H

namespace vornhost {

constexpr double significance = 0.05; // 1 - confidence of the tests of kinds and of the marks

// Largest size of a normally distributed number of standard deviation 1, at a two-sided significance.
double normal_limit(double alpha);

// Probability of a larger size.
double normal_probability(double w);

// The same of a residual divided by its standard deviation and the a-posteriori sigma of f degrees of freedom
// (A. J. Pope, The statistics of residuals and the detection of outliers, 1976, tau distribution):
//   tau = t sqrt(f) / sqrt(f - 1 + t^2),  t of Student's distribution with f - 1 degrees of freedom.
// With one degree of freedom every tau is 1, which is the limit too.
double tau_limit(double alpha, double f);

// Probability of a larger size of tau; f > 1.
double tau_probability(double tau, double f);

// Number that a sum of squares of f degrees of freedom does not pass with the given probability; f > 0.
double chi_square_limit(double probability, double f);

// Probability of a larger sum, and of a smaller one.
double chi_square_above(double squares, double f);
double chi_square_below(double squares, double f);

// Probability of a larger ratio of mean squares with f1 and f2 degrees of freedom; f2 may be infinite: the second is
// then known.
double fisher_above(double ratio, double f1, double f2);

// Ratio that is passed with the probability `level`.
double fisher_limit(double level, double f1, double f2);

// Level of each of n tests whose family has the given one (Z. Sidak, JASA 62, 1967): 1 - (1 - level)^(1/n); and the
// probability by family of that of one test.
double sidak_level(double level, double n);
double sidak_probability(double probability, double n);

// Non-centrality at which a chi-square test of q degrees of freedom has the power (W. Baarda, 1968): 17.07 for one
// degree, level 0.001 and power 0.80. Its root is how many standard deviations a normally distributed number must be
// off.
double noncentrality(double level, double power, double q);

// Level at which the test of q degrees of freedom has the same power for the same non-centrality (the B-method).
double level_of_same_power(double noncentrality, double power, double q);

// How many standard deviations an observation must be off for tau to find it, by Student's non-central distribution
// with f - 1 degrees of freedom; f > 1.
double tau_shift(double level, double power, double f);

} // namespace vornhost

#endif
