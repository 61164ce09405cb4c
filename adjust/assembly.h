// The normal system N dx = n of weighted rows:  N = B^T B, n = B^T b.
//
// The pattern of N and the rows in which each column stands are found once; assemble() gathers column by column.

#ifndef VORNADJUST_ASSEMBLY_H
#define VORNADJUST_ASSEMBLY_H

#include <cstddef>
#include <vector>

#include "adjust/sparse.h"
#include "adjust/weighted.h"

namespace vornadjust {

struct NormalSystem {
    SymmetricMatrix matrix;         // columns of the normal system
    std::vector<double> right;      // [n]
    std::vector<std::size_t> begin; // [n + 1] places of column j among the rows:
    std::vector<int> row;           //   row that holds it, ascending
    std::vector<int> entry;         //   its entry, counted from the first of that row
    std::vector<double> work;       // [n] zero between calls
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
