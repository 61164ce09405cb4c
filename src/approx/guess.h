// A start by a guess of the orientations of two stations.

#ifndef VORN_GUESS_H
#define VORN_GUESS_H

#include "approx/guesswork.h"
#include "approx/spreadtables.h"
#include "approx/stationpair.h"

namespace vornengine {

// One shot from a station of the guess, in its frame.
struct guesssight {
    double x, y, z; // the point
    int it;         // 1 or 2: the station, at (xt, 0, zt)
    double xt, zt;
    double o;     // orientation of the station, radians
    double hz, v; // direction, vertical angle, radians
};

// The whole start. Returns 0, -1, -3, -4, -5 or -9: see guess.cpp.
int guess_spread(const approxdata *net, spreadtables *tab, int *iscale);

// Chooses the two stations. Returns 0, 1 when two stations are finished already, or -1 without
// memory. A pair with fewer than three common shots is none.
int guess_pair(const approxdata *net, const spreadtables *tab, stationpair *g);

// Lists the common points of a pair in w and searches the two orientations (radians, -pi to
// pi). Returns 0, -4 when there are not as many as the pair says, -5 when no trial is good.
int guess_o1o2(const approxdata *net, const spreadtables *tab, const stationpair *pair, guesswork *w, double *o1,
               double *o2);

// Sum of the squares (radians) of what the vertical angles contradict at the orientations o1
// and o2, or 9999.0 when the rays do not meet. Leaves the points in app.
double guess_check(const approxdata *net, const spreadtables *tab, guesswork *w, double o1, double o2);

// Intersects the rays to the points of w: their places in app. Returns 0, or -1 when rays do
// not meet in front of both stations or a shot has no vertical angle at its place in the list.
int guess_approx(const approxdata *net, const spreadtables *tab, guesswork *w, double o1, double o2);

// Adds the square of what the vertical angle contradicts to sum; the direction takes no part.
// Always returns 0.
int guess_resid(const guesssight *s, double *sum);

// Adjusts the guess and places stations and points. The weak points stand behind the strong
// ones in isys afterwards; app holds the strong ones. Returns 0, -1, or -4 without memory for a
// row of the matrix.
int guess_solve(const approxdata *net, spreadtables *tab, guesswork *w, double o1, double o2);

// Shot k of a list of points, its two stations behind it, from station it (1 or 2); o and zt
// are 0.
guesssight sight_of(const approxdata *net, const spreadtables *tab, const guesswork *w, int k, int it);

// Adds one shot to the normal equations.
//   mat, rhs  in, out  [m][m], [m]
//   k         in       the point
//   sum       in, out  sum of the squares of the contradictions
void guess_normal(double **mat, double *rhs, int m, int k, const guesssight *s, double *sum);

} // namespace vornengine

#endif
