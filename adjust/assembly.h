// The normal system N dx = n of weighted rows:  N = B^T B, n = B^T b.
//
// The pattern of N is found once; assemble() goes through the rows as they lie in memory and finds the place of each
// product in its column of N.

#ifndef VORNADJUST_ASSEMBLY_H
#define VORNADJUST_ASSEMBLY_H

#include <cstddef>
#include <vector>

#include "adjust/sparse.h"
#include "adjust/weighted.h"

namespace vornadjust {

struct NormalSystem {
    SymmetricMatrix matrix;    // columns of the normal system
    std::vector<double> right; // [n]
};

// Pattern for n columns; values 0. Neighbouring columns of the same block, where blocks are given, belong to the
// pattern together whether a row holds them or not: the coordinates of a point, whose cofactors are wanted.
//   block  [n] number of the block of each column, or -1; or empty
NormalSystem normal_pattern(int n, const WeightedRows &rows, const std::vector<int> &block = {});

void assemble(const WeightedRows &rows, NormalSystem *system);

// Sum of the squares of the weighted misclosures.
double sum_of_squares(const WeightedRows &rows);

// The same after corrections dx of the unknowns, as the linear equations foresee it.
//   dx  [n]
double foreseen_squares(const WeightedRows &rows, const double *dx);

} // namespace vornadjust

#endif
