// The inner loops of the dense blocks: products of tiles for the processor that the program runs on.
//
// A strip is LANES rows of a block side by side, column behind column: element (row, column) lies at
// column * LANES + row. A tile is the product of a strip with COLUMNS rows of another matrix.

#ifndef VORNADJUST_KERNELS_H
#define VORNADJUST_KERNELS_H

#include <cstddef>

namespace vornadjust {

const int LANES = 24;
const int COLUMNS = 8;
const int STRIDE = 264; // between the rows of the narrow side
const int DEPTH = 192;  // most steps of one product here: whole strips, within a row of the narrow side

struct Kernels {
    // c[j] -= sum of a[k] b[j][k] over k < n, for COLUMNS columns j of c, ldc numbers apart.
    //   a  in  n columns of a strip
    //   b  in  COLUMNS rows, STRIDE numbers apart
    void (*product)(int n, const double *a, const double *b, double *c, std::size_t ldc);

    // x[j] -= sum of x[e] b[j][e] over e < j, for COLUMNS columns of a strip.
    void (*corner)(const double *b, double *x);
};

// The fastest ones that this processor runs.
Kernels best_kernels();

// Rounded up to whole strips, and to whole groups of columns.
inline int strips_of(int rows) { return (rows + LANES - 1) / LANES; }
inline int whole_strips(int rows) { return strips_of(rows) * LANES; }
inline int whole_columns(int columns) { return (columns + COLUMNS - 1) / COLUMNS * COLUMNS; }

} // namespace vornadjust

#endif
