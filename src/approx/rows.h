// Square matrices as tables of rows, each row an array of its own.

#ifndef VORN_ROWS_H
#define VORN_ROWS_H

namespace vornengine {

// Gives each of the n row pointers a zeroed row of n elements. Returns n, or the first row
// that could not be allocated; rows_free releases in both cases.
int rows_take(double **rows, int n);

// Releases the rows and the table; a null table and null rows are passed over.
void rows_free(double **rows, int n);

} // namespace vornengine

#endif
