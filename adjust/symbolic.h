// What the factorization of a symmetric matrix needs to know of its pattern alone: made once, used
// for every matrix with the same pattern.
//
// Places are positions in the order of elimination. Columns of the factor with (nearly) the same
// rows below them are kept together as a supernode: columns first[s] to first[s + 1] - 1, then the
// rows below them, row[rowstart[s]] to row[rowstart[s + 1] - 1], ascending places. Its values are a
// block of height(s) rows, own columns first, by width(s) columns, column by column from
// valuestart[s] on; what lies above the diagonal is not used.
// A boundary, where there is one, is a supernode of unknowns that are not eliminated: the factor keeps there, in the
// lower triangle, what the elimination of all others leaves of the matrix (its Schur complement).
// Example, 4 places with L(1,0), L(3,1) and L(3,2): first 0 1 2 4, row 1 3; rowstart 0 1 2 2.

#ifndef VORNADJUST_SYMBOLIC_H
#define VORNADJUST_SYMBOLIC_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "adjust/sparse.h"

namespace vornadjust {

struct Symbolic {
    int n = 0;
    int nsuper = 0;
    int boundary = -1;                    // supernode, or -1
    std::vector<int> unknown;             // [n] unknown at a place
    std::vector<int> place;               // [n] place of an unknown
    std::vector<int> first = {0};         // [nsuper + 1] first column of a supernode
    std::vector<int> parent;              // [nsuper] supernode of its first row below; -1 for none
    std::vector<int> super;               // [n] supernode of a place
    std::vector<std::int64_t> rowstart;   // [nsuper + 1]
    std::vector<int> row;                 // [rowstart[nsuper]]
    std::vector<std::int64_t> valuestart; // [nsuper + 1]
    std::vector<std::int64_t> target;     // [elements of the matrix] where each goes among the values
    std::int64_t elements = 0;            // of the factor, diagonal included, without supernodes' filling
    double operations = 0.0;              // products and sums of the factorization, without filling

    int width(int s) const { return first[s + 1] - first[s]; }
    int below(int s) const { return (int)(rowstart[s + 1] - rowstart[s]); }
    int height(int s) const { return width(s) + below(s); }
    std::int64_t values() const { return valuestart.back(); } // numbers that the factor keeps
};

// Analyses the pattern of a for an order of elimination. Places follow a postorder of the
// elimination tree of that order: the same factor, but other places within it.
//   order     [n] order[k] is the unknown to be eliminated as the k-th
//   boundary  so many of the last ones are not eliminated; the counts of elements and operations leave them out
// Throws std::bad_alloc.
Symbolic analyse(const SymmetricMatrix &a, const std::vector<int> &order, int boundary = 0);

// Elements of the factor for an order, diagonal included.
std::int64_t count_elements(const SymmetricMatrix &a, const std::vector<int> &order);

// Bytes that factorize and invert take with so many threads, results included: all of it is taken
// before the first number is computed.
std::size_t factor_bytes(const Symbolic &symbolic, int threads);
std::size_t inverse_bytes(const Symbolic &symbolic, int threads);

} // namespace vornadjust

#endif
