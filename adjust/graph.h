// The graph of a symmetric matrix: a vertex for each group of unknowns with the same neighbours, an
// edge where the matrix has elements.

#ifndef VORNADJUST_GRAPH_H
#define VORNADJUST_GRAPH_H

#include <cstdint>
#include <vector>

#include "adjust/sparse.h"

namespace vornadjust {

struct Graph {
    int n = 0;                             // vertices
    std::vector<std::int64_t> start = {0}; // [n + 1]
    std::vector<int> neighbour;            // [start[n]] of each vertex, itself not among them
    std::vector<int> weight;               // [n] unknowns of a vertex

    int degree(int v) const { return (int)(start[v + 1] - start[v]); }
};

// A vertex for each unknown; neighbours ascending.
Graph graph_of(const SymmetricMatrix &a);

// Unknowns that are neighbours of each other and share all other neighbours, as groups.
struct Groups {
    std::vector<int> of;     // [unknowns] group of an unknown
    std::vector<int> start;  // [groups + 1]
    std::vector<int> member; // [unknowns] members of each group
};

// Groups of a graph of unknowns, each of as many as possible, in the order of their first members.
Groups find_groups(const Graph &graph);

// The same, but only of unknowns that stand side by side in an order; groups and members keep it. The last `boundary`
// unknowns of the order are one group, the last, whatever their neighbours.
Groups find_groups(const Graph &graph, const std::vector<int> &order, int boundary = 0);

// The graph with a vertex for each group. The neighbours of a group are those of its first member, or of all of them
// where the last group is a boundary.
Graph join(const Graph &graph, const Groups &groups, bool boundary = false);

} // namespace vornadjust

#endif
