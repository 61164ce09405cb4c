// Position and orientation of a station from directions to known points; position of a
// point from the directions of two stations.

#include "approx/approx.h"

int approx::resec(int, int, int **, int *, int *, double *, double *, double *) { return -1; }

void approx::resec3(int, const int *, double *, double *, double *, double *, double *, double *) {}

void approx::intersect(int, int, int, int **, double *, double *, double *) {}

int approx::start_resec(int **, int *, double *, double *, double *, int *, int *) { return -1; }
