// A symmetric matrix in profile storage: factorization, solution, inverse.
//
// Row r of the lower triangle lies without gaps from its first stored column f(r) to the
// diagonal: element (r, c) = a[add[r] + c - f(r)], f(r) = r + 1 - (add[r + 1] - add[r]).
// Example, 4 unknowns with first columns 0 0 1 0: add = 0 1 3 5 9, 9 elements.
// Elements left of f(r) are zero and are not stored.

#ifndef VORN_PROFILE_H
#define VORN_PROFILE_H

#include <stddef.h>

// First stored column of row r.
inline int firstcol(const size_t *add, int r) { return r + 1 - (int)(add[r + 1] - add[r]); }

// Address of element (r, 0), which exists only when f(r) is 0: rowbase(...)[c] is (r, c).
inline double *rowbase(double *a, const size_t *add, int r) { return a + ((ptrdiff_t)add[r + 1] - 1 - r); }

// Smallest pivot that counts as one; it grows with the largest first element of the rows.
//   n    order
//   a    in   profile, add[n] elements
//   add  in   n + 1 addresses
double pivotlimit(int n, const double *a, const size_t *add);

// Factors a = L D L^T in place and solves a x = b.
//   n    order
//   a    in/out  profile; becomes L with the reciprocals of D on the diagonal
//   add  in      n + 1 addresses
//   b    in/out  [n] right-hand side; becomes the solution
//   d    work    [n] pivots D
// Returns 0, or the failing row + 1 when a pivot is below the limit: d[row] holds it,
// rows before it are factored, rows behind it untouched.
int cvec(int n, double *a, const size_t *add, double *b, double *d);

// The same with m right-hand sides, b being n by m, row by row.
int cmat(int n, int m, double *a, const size_t *add, double *b, double *d);

#endif
