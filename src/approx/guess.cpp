// A start from two stations with common targets: a search over their orientations.

#include "approx/approx.h"

int approx::guess_spread(int *, int **, int *, int *, double *, double *, double *) { return -1; }

int approx::guess_o1o2(int, int, int, int **, int *, double *, double *, double *, double *) { return -5; }

double approx::guess_check(int, double, double, int *, int **, double *) { return 9999.0; }

int approx::guess_approx(int, int **, int *, double *, int, double, int, double) { return -1; }

int approx::guess_resid(double, double, double, double, double, double, double, double, double *) { return 0; }

int approx::guess_solve(int, double, double, int *, int **, double *, double *, double *, double *, double *, int *,
                        int *)
{
    return -1;
}

void approx::guess_normal(double **, double *, int, int, double, double, double, int, double, double, double, double,
                          double, double *)
{
}
