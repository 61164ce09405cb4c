// Products of small tiles, the innermost loops of the work on large matrices.
//
// A tile is 24 numbers wide (lanes, side by side in memory) and 8 columns long. Everywhere
//   a[k][0..23], k steps        one lane vector behind the other
//   b[j][k], 8 rows             TILE_STRIDE numbers apart
//   c[j][0..23], 8 columns      ldc numbers apart
// The routines exist for several kinds of processor; results differ by rounding, since some
// processors round a product and a sum together.

#ifndef VORN_TILES_H
#define VORN_TILES_H

#include <stddef.h>

namespace vornengine {

enum {
    TILE_LANES = 24,
    TILE_COLUMNS = 8,
    TILE_DEPTH = 256, // most steps of one product, so that b stays in the nearest cache
    TILE_STRIDE = TILE_DEPTH + 8
};

struct tilekernel {
    const char *name;

    // c[j] -= sum of a[k] b[j][k] over k < n.
    void (*product)(int n, const double *a, const double *b, double *c, size_t ldc);

    // x[j] -= sum of x[e] b[j][e] over e < j: 8 columns against the unit triangle in b. The
    // columns of x are TILE_LANES apart.
    void (*corner)(const double *b, double *x);
};

enum { TILES_PLAIN = 0, TILES_AVX2 = 1, TILES_AVX512 = 2, TILES_KINDS = 3 };

// The routines for one kind of processor; null when this one cannot run them.
const tilekernel *tilesfor(int kind);

// The fastest routines that this processor runs.
const tilekernel *besttiles();

} // namespace vornengine

#endif
