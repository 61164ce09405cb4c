// The elimination tree of a graph: the parent of a vertex is the first one, in the order of
// elimination, that its column of the factor meets below the diagonal.
//
// Vertices are named by their places in the order throughout; -1 stands for none.

#ifndef VORNADJUST_TREE_H
#define VORNADJUST_TREE_H

#include <cstdint>
#include <vector>

#include "adjust/graph.h"

namespace vornadjust {

// Places of an order: the inverse permutation.
std::vector<int> inverse_permutation(const std::vector<int> &order);

// Parents, by places (Liu, ACM Trans. Math. Softw. 12, 1986, 127-148).
std::vector<int> elimination_tree(const Graph &graph, const std::vector<int> &order, const std::vector<int> &place);

// A postorder of a forest: [k] is the place that comes as the k-th; children before parents, each
// subtree in one piece, children in ascending order.
std::vector<int> postorder(const std::vector<int> &parent);

// Unknowns in each column of the factor, those of the vertex itself among them, for an order that is
// a postorder of its own tree (Gilbert, Ng and Peyton, SIAM J. Matrix Anal. Appl. 15, 1994, 1075-1091).
std::vector<int> column_counts(const Graph &graph, const std::vector<int> &order, const std::vector<int> &place,
                               const std::vector<int> &parent);

// An order with its tree and counts, brought to postorder.
struct Elimination {
    std::vector<int> order;  // [n] vertex at a place
    std::vector<int> place;  // [n] place of a vertex
    std::vector<int> parent; // [n]
    std::vector<int> count;  // [n]
};
Elimination eliminate(const Graph &graph, const std::vector<int> &order);

// Elements of the factor, diagonal included, and the sum of the squares of its column lengths.
struct FactorSize {
    std::int64_t elements = 0;
    double operations = 0.0;
};
FactorSize factor_size(const Graph &graph, const Elimination &elimination);

} // namespace vornadjust

#endif
