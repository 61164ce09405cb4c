// The equations as they enter the normal system: estimated unknowns only, weighted, and free of correlation.
//
// A row without group is multiplied by factor / sigma. The rows of a correlated group with covariance S = L L^T become
//     B = L^-1 diag(factor) A,   b = L^-1 diag(factor) misclosure,
// so that B^T B = A^T P A with P = diag(factor) S^-1 diag(factor). A row that has no derivative, or is not used, is
// struck from the covariance; the other rows of its group keep what they are worth by themselves.
//
// Rows are those of the equations, columns those of the normal system, ascending in a row. Row i of a group has the
// columns of all its rows up to i.

#ifndef VORNADJUST_WEIGHTED_H
#define VORNADJUST_WEIGHTED_H

#include <cstddef>
#include <vector>

#include "adjust/equations.h"

namespace vornadjust {

struct WeightedRows {
    std::vector<std::size_t> begin;        // [rows + 1]
    std::vector<int> column;               // [entries] of the normal system
    std::vector<double> coefficient;       // [entries] without unit but that of 1 / unknown
    std::vector<double> misclosure;        // [rows]
    std::vector<std::vector<int>> members; // [groups] rows of each group, in the order of their places
    int bad_row = -1;                      // where the first covariance that is not positive definite shows it

    int rows() const { return (int)misclosure.size(); }
};

// Rows of each group, in the order of their places.
std::vector<std::vector<int>> group_members(const Model &model, const Equations &equations);

// Pattern for equations of the model; coefficients 0.
WeightedRows weighted_pattern(const Model &model, const Equations &equations, const Columns &columns);

// Coefficients and misclosures of filled equations.
// Returns the first group whose covariance is not positive definite, or -1; its rows are then 0.
int weigh(const Model &model, const Equations &equations, const Columns &columns, WeightedRows *rows, int threads = 1);

// Covariance as weighted, S_ij / (factor_i factor_j), of some rows of one group; by rows.
std::vector<double> weighted_covariance(const Model &model, const Equations &equations, const std::vector<int> &rows);

// Cholesky factor L of a covariance, in place in the lower triangle (n x n by rows). False when it is not positive
// definite: `pivot` is then the first row that is not independent of those before.
bool cholesky(int n, double *a, int *pivot = nullptr);

// x = L^-1 x for m right-hand sides side by side (n x m by rows).
void forward_substitute(int n, const double *l, int m, double *x);

// x = L^-T x, the same way.
void back_substitute(int n, const double *l, int m, double *x);

} // namespace vornadjust

#endif
