// Supernodes: vertices that follow each other in the elimination tree and whose columns have nearly
// the same rows, merged so that they are worked on as one dense block.

#ifndef VORNADJUST_SUPERNODES_H
#define VORNADJUST_SUPERNODES_H

#include <vector>

#include "adjust/graph.h"
#include "adjust/tree.h"

namespace vornadjust {

struct Supernodes {
    std::vector<int> start;  // [supernodes + 1]
    std::vector<int> vertex; // [vertices] of the graph, by supernodes, in a new order of elimination
    std::vector<int> parent; // [supernodes] or -1; supernodes stand in postorder
    std::vector<int> below;  // [supernodes] unknowns below its columns
};

// Supernodes of an elimination. Merging fills some zeros in: many in small ones, few in large ones.
// With a boundary, the vertex that is eliminated last is a supernode of its own.
Supernodes find_supernodes(const Graph &graph, const Elimination &elimination, bool boundary = false);

} // namespace vornadjust

#endif
