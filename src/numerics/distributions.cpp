// Distribution functions.
#include "numerics/distributions.h"
double chi2tail(int, double) { return 0.0; }
