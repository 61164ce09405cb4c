// Tail probabilities and critical values of the statistical tests.
//
// The tests of the system are defined by these particular approximations, so their
// constants are part of it. Nothing here has a state. A routine that gets bad arguments
// or does not reach its accuracy writes one line to the standard error stream and goes on.
//
//   P(a, x), Q(a, x)   incomplete gamma functions, P + Q = 1; relative accuracy 3e-7
//   I_x(a, b)          incomplete beta function; relative accuracy 3e-7
//   p                  an upper tail; alpha / 2 in the callers
//   nu                 degrees of freedom
//
// The family has a namespace of its own because the C library declares a float erff(float).

#ifndef VORN_DISTRIBUTIONS_H
#define VORN_DISTRIBUTIONS_H

namespace vornengine {

namespace distrib {

void nrerror(const char *text); // "%s\n" to the standard error stream; returns

double gammln(double x);                                 // ln Gamma(x), x > 0
void gser(double *out, double a, double x, double *gln); // P(a, x) by its series, ln Gamma(a) in gln
void gcf(double *out, double a, double x, double *gln);  // Q(a, x) by its continued fraction
double gammp(double a, double x);                        // P(a, x)
double gammq(double a, double x);                        // Q(a, x)
double erff(double x);                                   // error function
double erffc(double x);                                  // complementary error function
double erfcc(double x);                                  // the same, fitted, relative error below 1.2e-7
double betacf(double a, double b, double x);             // continued fraction of I_x(a, b)
double betai(double a, double b, double x);              // I_x(a, b), 0 <= x <= 1

double normquant(double p);         // normal point, p up to 0.5, error below 4.5e-4
double studquant(int nu, double p); // Student's t point, good from about ten degrees of freedom
double tauquant(int nu, double p);  // tau point; -1 for p above 0.5, 0 for nu below 2 or p not positive

double normtail(double x);                // normal tail, x >= 0, error below 1.5e-7
double studtail(int nu, double t);        // tail of Student's t
double chi2tail(int nu, double x);        // tail of chi-square
double ftail(int nu1, int nu2, double f); // tail of Fisher's F

} // namespace distrib

} // namespace vornengine

#endif
