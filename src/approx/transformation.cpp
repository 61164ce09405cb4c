// One pass of the spreading loop, and the fit of a local frame to the known points.

#include "approx/approx.h"

int approx::spread_step(int *, int, int **, int *, int *, double *, double *, double *) { return -4; }

int approx::transformations(double *, double *, double *) { return -5; }

int approx::t2pt(int, int, double *, double *, double *) { return -1; }

void approx::t1pt(int, double *, double *, double *) {}
