// Residual covariances.
#include "solution/solution.h"
double solution::rescov(double *, double *, double *, double *, double *, double *, double *, double *) { return 0.0; }
