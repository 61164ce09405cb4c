// The order in which the unknowns of a symmetric matrix are eliminated, chosen so that its factor
// holds few elements.
//
// Unknowns with the same neighbours (those of one point) are taken as one. Unknowns whose rows are
// dense are put last. The others are ordered by approximate minimum degree and, in large networks,
// by nested dissection too; the order whose factor holds fewer elements is the result. The same
// matrix always gets the same order.

#ifndef VORNADJUST_ORDER_H
#define VORNADJUST_ORDER_H

#include <cstdint>
#include <vector>

#include "adjust/sparse.h"

namespace vornadjust {

enum class Ordering {
    best,           // the better of those below, by the elements of the factor
    natural,        // as the unknowns stand
    minimum_degree, // AMD where the build found it, else the program's own
    own_degree,     // the program's own minimum degree
    dissection      // nested dissection by METIS; minimum degree where the build did not find it
};

struct Order {
    std::vector<int> unknown;     // [n] unknown[k] is eliminated as the k-th
    std::int64_t elements = 0;    // of the factor, diagonal included
    Ordering by = Ordering::best; // how it was found
};

// Order for the pattern of a; its values are not read.
// Throws std::bad_alloc.
Order fill_reducing_order(const SymmetricMatrix &a, Ordering ordering = Ordering::best);

// The same for the unknowns inside a boundary; those of the boundary follow as they stand.
//   at_boundary  [n] 1 for an unknown of the boundary
std::vector<int> order_inside(const SymmetricMatrix &a, const std::vector<char> &at_boundary);

// Whether the build found a library for an ordering; true for those of the program.
bool is_available(Ordering ordering);

// Whether order holds each of 0 to n - 1 once.
bool is_permutation(int n, const std::vector<int> &order);

} // namespace vornadjust

#endif
