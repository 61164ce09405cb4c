// Residual analysis.
#include "solution/solution.h"
void solution::resanalysis(double, double) {}
