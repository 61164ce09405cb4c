// The arrays of a guess.
//
// The solution vector for n points, 3 n + 3 elements:
//   app[3k], app[3k + 1], app[3k + 2]     x, y, z of the k-th point
//   app[3n], app[3n + 1], app[3n + 2]     height of the second station, orientations o1, o2
// in the frame with the first station at (0, 0, 0) and the second at (1, 0, app[3n]).

#ifndef VORN_GUESSWORK_H
#define VORN_GUESSWORK_H

namespace vornengine {

struct guesswork {
    int n;       // points listed, at most ncommon: the strong ones alone during an adjustment
    int *isys;   // [ncommon + 2] points that both stations shot, behind them the two stations
    double *app; // [3 ncommon + 3] solution
    double *rhs; // [3 ncommon + 3] right side, then solution, of the normal equations
};

// Allocates the arrays for ncommon points, of which none is listed. Returns 0 or -1;
// guesswork_free releases in both cases.
int guesswork_take(guesswork *g, int ncommon);

// Releases the arrays; may be called twice.
void guesswork_free(guesswork *g);

} // namespace vornengine

#endif
