// Limits of the statistical tests, at a confidence of 95 %.

#ifndef VORNHOST_TEST_LIMITS_H
#define VORNHOST_TEST_LIMITS_H

namespace vornhost {

constexpr double significance = 0.05; // 1 - confidence

// Largest size of a normally distributed number of standard deviation 1, at a two-sided significance.
double normal_limit(double alpha);

// The same of a residual divided by its standard deviation and the a-posteriori sigma of f degrees of freedom
// (A. J. Pope, The statistics of residuals and the detection of outliers, 1976, tau distribution):
//   tau = t sqrt(f) / sqrt(f - 1 + t^2),  t of Student's distribution with f - 1 degrees of freedom.
// With one degree of freedom every tau is 1, which is the limit too.
double tau_limit(double alpha, double f);

// Number that a sum of squares of f degrees of freedom does not pass with the given probability; f > 0.
double chi_square_limit(double probability, double f);

} // namespace vornhost

#endif
