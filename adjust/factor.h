// Factorization A = L D L^T of a sparse positive definite matrix, and solutions with it.
//
// L has ones on its diagonal, D is diagonal. A pivot is the element of D of an unknown: the square
// of what its own row keeps once the unknowns before it are known. Divided by the diagonal element
// of the matrix it is a number without unit between 0 (not determined) and 1 (nothing to do with
// the others). A pivot that falls short of the limit, or is not a number, fails: its unknown is
// held at zero, is reported, and the rest is factored without it. Results do not depend on the
// number of threads, bit by bit. Unknowns of a boundary (symbolic.h) are not eliminated: their pivots stand, as 1.

#ifndef VORNADJUST_FACTOR_H
#define VORNADJUST_FACTOR_H

#include <vector>

#include "adjust/sparse.h"
#include "adjust/store.h"
#include "adjust/symbolic.h"
#include "adjust/watch.h"

namespace vornadjust {

struct FactorOptions {
    int threads = 1;            // at least 1
    double least_pivot = 1e-14; // relative to the diagonal element; a smaller one fails
    Watch watch;
};

struct FailedPivot {
    int unknown;
    double pivot; // relative to the diagonal element; NaN for a matrix with such elements
};

struct Factor {
    Store value;                     // [symbolic.values()] L in supernodes; its diagonal is not stored
    std::vector<double> reciprocal;  // [n] by place: 1 / D, 0 for a failed pivot
    std::vector<double> pivot;       // [n] by unknown: relative to the diagonal element
    std::vector<FailedPivot> failed; // in the order of elimination
    bool stopped = false;            // by the watch: nothing else holds then
};

// Factors a, which has the pattern that symbolic was made of. Values of a and memory of factor from
// an earlier call are used again.
//   factor  out  as above
// Returns whether all pivots stand: false with failed pivots or when stopped.
// Throws std::bad_alloc, with nothing of value in factor.
bool factorize(const SymmetricMatrix &a, const Symbolic &symbolic, Factor &factor, const FactorOptions &options = {});

// Solves A x = b.
//   b  in/out  [n] by unknown; becomes x, with 0 for unknowns whose pivots failed
// Throws std::bad_alloc.
void solve(const Symbolic &symbolic, const Factor &factor, double *b);

// The same for m right-hand sides, b being n by m, one right-hand side behind the other.
void solve(const Symbolic &symbolic, const Factor &factor, int m, double *b);

// The two halves of a solution around a boundary: reduce() leaves there what the elimination of the others makes of the
// right-hand sides; with the solution of the boundary in its place, complete() finds that of the others.
//   b  in/out  [m][n] by unknown, between the halves what the first left
void reduce(const Symbolic &symbolic, const Factor &factor, int m, double *b);
void complete(const Symbolic &symbolic, const Factor &factor, int m, double *b);

} // namespace vornadjust

#endif
