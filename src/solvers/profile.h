// A symmetric matrix in profile storage: factorization, solution, inverse.
//
// Row r of the lower triangle lies without gaps from its first stored column f(r) to the
// diagonal: element (r, c) = a[add[r] + c - f(r)], f(r) = r + 1 - (add[r + 1] - add[r]).
// Example, 4 unknowns with first columns 0 0 1 0: add = 0 1 3 5 9, 9 elements.
// Elements left of f(r) are zero and are not stored.

#ifndef VORN_PROFILE_H
#define VORN_PROFILE_H

#include <stddef.h>
#include <stdint.h>

#include "numerics/tiles.h"

namespace vornengine {

// First stored column of row r.
inline int firstcol(const size_t *add, int r) { return r + 1 - (int)(add[r + 1] - add[r]); }

// Address of element (r, 0), which exists only when f(r) is 0: rowbase(...)[c] is (r, c).
inline double *rowbase(double *a, const size_t *add, int r) { return a + ((ptrdiff_t)add[r + 1] - 1 - r); }
inline const double *rowbase(const double *a, const size_t *add, int r) { return a + ((ptrdiff_t)add[r + 1] - 1 - r); }

// Smallest pivot that counts as one; it grows with the largest first element of the rows.
//   n    order
//   a    in   profile, add[n] elements
//   add  in   n + 1 addresses
double pivotlimit(int n, const double *a, const size_t *add);

// Largest order that is worked on row by row, with the same rounding on every processor.
const int SMALL_ORDER = 96;

// Numbers that the work vectors d, n pivots among them, and space of the routines below hold.
long long solvespace(int n, const size_t *add);
long long invertspace(int n);

// Factors a = L D L^T in place and solves a x = b.
//   n    order
//   a    in/out  profile; becomes L with the reciprocals of D on the diagonal
//   add  in      n + 1 addresses
//   b    in/out  [n] right-hand side; becomes the solution
//   d    work    [solvespace]
// Returns 0, or the failing row + 1 when a pivot is below the limit: d[row] holds it, rows
// before it are factored, its own row is reduced but for the diagonal, and rows behind it are
// untouched, in a and in b.
int cvec(int n, double *a, const size_t *add, double *b, double *d);

// The same with m right-hand sides, b being n by m, row by row.
int cmat(int n, int m, double *a, const size_t *add, double *b, double *d);

// Factors a and makes its inverse; returns as cvec does, with inv unchanged or, up to
// SMALL_ORDER, half made after a failure.
//   inv    in/out  [n][n] zeros; becomes the inverse
//   d      work    [solvespace]
//   space  work    [invertspace]
int cinverse(int n, double *a, const size_t *add, double *inv, double *d, double *space);

// ---- large matrices ----

enum { CACHE_LINE = 8 }; // numbers

// The first address from space on at which a cache line begins.
inline double *cachealigned(double *space)
{
    const uintptr_t bytes = CACHE_LINE * sizeof(double), at = (uintptr_t)space;
    return space + (bytes - at % bytes) % bytes / sizeof(double);
}

// Numbers of work space for factorprofile and inverseprofile.
long long factorspace(int n, const size_t *add);
long long inversespace(int n);

// Factors as cvec does.
//   d      out   [n] reciprocals of the pivots; of a failing row the pivot
//   space  work  [factorspace]
// Returns 0 or the failing row + 1.
int factorprofile(int n, double *a, const size_t *add, double *d, double *space, const tilekernel *tiles);

// Inverse of a factored matrix.
//   a      in      factors, with the reciprocals of the pivots on the diagonal
//   inv    in/out  [n][n] zeros; becomes the inverse, both triangles
//   space  work    [inversespace]
void inverseprofile(int n, const double *a, const size_t *add, double *inv, double *space, const tilekernel *tiles);

// Columns from to to - 1 of the rows j to j + 7 of L, with zeros outside the profile, on the
// diagonal and behind it; TILE_STRIDE numbers a row in b.
void profilerows(int n, const double *a, const size_t *add, int j, int from, int to, double *b);

} // namespace vornengine

#endif
