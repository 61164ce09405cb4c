// Solution of a dense linear system by LU decomposition.

#ifndef VORN_LUDCMP_H
#define VORN_LUDCMP_H

#include <stdio.h>

namespace vornengine {

// Replaces a by its factors L and U, rows interchanged; L has ones on its diagonal.
//   a     in, out  n rows of n elements
//   indx  out      [n] row that came to each place
//   d     out      1.0 or -1.0: even or odd number of interchanges
//   out   in       report stream for the message of a failure
// Returns 0, or -1 without memory, -2 when a row is zero, -3 when a pivot is zero; a, indx
// and d hold an unfinished decomposition after a failure.
int ludcmp(double **a, int n, int *indx, double *d, FILE *out);

// Replaces the right-hand side b by the solution, for a and indx of ludcmp.
void lubksb(double **a, int n, const int *indx, double *b);

} // namespace vornengine

#endif
