// Processes that share one adjustment, each with a part of the network.
//
// All of them call the same functions of this class in the same order, each with what it knows; what they get back is
// the same on all, bit by bit, so that they decide alike.
//
// The parts meet in a boundary: unknowns that observations of several parts see. Each rank brings what the elimination
// of its own unknowns leaves there; the sum of these matrices, symmetric and dense, is factored by all ranks together.

#ifndef VORNADJUST_RANKS_H
#define VORNADJUST_RANKS_H

#include <cstddef>
#include <string>
#include <vector>

namespace vornadjust {

class Ranks {
public:
    virtual ~Ranks() = default;

    virtual int size() const = 0;
    virtual int own() const = 0; // 0 to size() - 1

    // An adjustment begins. Does not return on ranks that the first one has no more need of.
    virtual void begin() = 0;
    // From here on the first rank works alone; does not return on the others.
    virtual void leave_to_first() = 0;
    virtual bool alone() const = 0; // after that

    // From here on the others only answer the first rank, in what follows.
    virtual void stand_by() = 0;
    // Numbers of the first rank for all; the others may wait long. Does not return on those that the first one has no
    // more need of.
    //   x  in/out  [n]
    virtual void hear(double *x, std::size_t n) = 0;
    // Brings bytes of all ranks to the first, in their order; the others get nothing.
    virtual std::vector<std::string> bring(const std::string &own) = 0;

    // Sums, and the largest, of what all ranks have in each of n places.
    //   x  in/out  [n]; a NaN makes its sum a NaN and counts as infinite among the largest
    virtual void sum(double *x, std::size_t n) = 0;
    virtual void most(double *x, std::size_t n) = 0;

    // Unknowns of the boundary.
    //   n      of all ranks together
    //   which  [m] 0 to n - 1, ascending: those of this rank
    virtual void set_boundary(int n, const std::vector<int> &which) = 0;

    // Sums what the ranks have at each unknown of the boundary.
    //   x  in/out  [m]
    virtual void sum_boundary(double *x) = 0;

    // Factors the sum of the ranks' matrices.
    //   block        in   [m][m] by columns, the lower triangle counts
    //   diagonal     in   [m] of the whole matrix before anything was eliminated
    //   least_pivot  in   relative to these; a smaller one fails
    //   pivot        out  [m] relative, of an order of elimination that is the same on all ranks
    // Returns whether all pivots stand; there is no factor otherwise, and the pivots are no more than 0 or 1.
    virtual bool factorize(const double *block, const double *diagonal, double least_pivot, double *pivot) = 0;

    // Solves for the sum of the ranks' right-hand sides.
    //   b  in/out  [k][m]
    virtual void solve(int k, double *b) = 0;

    // Elements of the inverse.
    //   z  out  [m][m] both triangles
    virtual void invert(double *z) = 0;
};

} // namespace vornadjust

#endif
