// Inverse of a symmetric matrix in packed storage.
//
// The matrix of order n lies by rows of its lower triangle, or, which is the same, by
// columns of its upper triangle: the entry of row i and column j, j <= i, both from 0,
// is a[i (i + 1) / 2 + j]. Example of order 3:  a = 11 21 22 31 32 33.

#ifndef VORN_PACKED_H
#define VORN_PACKED_H

#include <stddef.h>

namespace vornengine {

// Place of row i, column j <= i in a packed matrix.
inline size_t packed_place(size_t i, size_t j) { return i * (i + 1) / 2 + j; }

// Number of elements of a packed matrix of order n; -1, which no allocation accepts, when
// it exceeds the range of the result.
inline long long packed_size(long long n) { return n <= 3000000000LL ? n * (n + 1) / 2 : -1; }

// Replaces a by its inverse. A pivot of exactly 0 is no error: it stays 0, the division
// by it is left out, and the caller tests the result.
void packinvert(double *a, int n);

} // namespace vornengine

#endif
