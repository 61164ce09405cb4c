// Elements of the inverse of a sparse matrix where its factor has elements: all cofactors of
// unknowns that share an observation are among them.
//
// With A = L D L^T the inverse Z satisfies Z L = L^-T D^-1. For the columns J of a supernode and
// the rows R below them, from the last supernode to the first,
//   Z(R,J) = - Z(R,R) Y,   Z(J,J) = L(J,J)^-T D(J)^-1 L(J,J)^-1 - Z(J,R) Y,   Y = L(R,J) L(J,J)^-1,
// and Z(R,R) is known by then
// (Takahashi, Fagan and Chin, 1973; Erisman and Tinney, Comm. ACM 18, 1975, 177-179). Unknowns
// whose pivots failed have zeros. Results do not depend on the number of threads, bit by bit. The inverse over a
// boundary (symbolic.h) is given.

#ifndef VORNADJUST_INVERSE_H
#define VORNADJUST_INVERSE_H

#include <vector>

#include "adjust/factor.h"
#include "adjust/store.h"
#include "adjust/symbolic.h"
#include "adjust/watch.h"

namespace vornadjust {

struct InverseOptions {
    int threads = 1; // at least 1
    Watch watch;
};

struct Inverse {
    Store value;          // [symbolic.values()] as the factor; both triangles of the diagonal blocks
    bool stopped = false; // by the watch: nothing else holds then
};

// The inverse on the pattern of the factor. With a boundary, inverse.value has values() numbers before, and those of
// the boundary's block are the inverse there, both triangles; they stay.
// Returns whether it was not stopped. Throws std::bad_alloc, with nothing of value in inverse.
bool invert(const Symbolic &symbolic, const Factor &factor, Inverse &inverse, const InverseOptions &options = {});

// Element (i, j) of the inverse, by unknowns, in any order; null when it is not on the pattern.
const double *element(const Symbolic &symbolic, const Inverse &inverse, int i, int j);
double *element(const Symbolic &symbolic, Inverse &inverse, int i, int j);

// Elements (i[a], i[b]) of k unknowns.
//   block  out  [k * k] both triangles
// Returns false, with block unchanged, when one of them is not on the pattern.
bool elements(const Symbolic &symbolic, const Inverse &inverse, int k, const int *i, double *block);

} // namespace vornadjust

#endif
