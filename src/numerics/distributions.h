// Tail probabilities and critical values of the statistical tests.
//
// The tests of the system are defined by these particular approximations. A routine
// that cannot reach its accuracy writes one line to the standard error stream and goes on.

#ifndef VORN_DISTRIBUTIONS_H
#define VORN_DISTRIBUTIONS_H

double chi2tail(int nu, double x); // upper tail of chi-square with nu degrees of freedom

#endif
