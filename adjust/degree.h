// Orders of elimination of a graph. Each is a permutation of the vertices; weights count as so many
// vertices each. The same graph gets the same order.

#ifndef VORNADJUST_DEGREE_H
#define VORNADJUST_DEGREE_H

#include <vector>

#include "adjust/graph.h"

namespace vornadjust {

// Approximate minimum degree by the program's own means (after Amestoy, Davis and Duff, SIAM J. Matrix
// Anal. Appl. 17, 1996, 886-905): quotient graph, element absorption, vertices that have become alike
// eliminated together.
std::vector<int> minimum_degree(const Graph &graph);

// The same by AMD, which does not regard weights. Empty where the build did not find it.
std::vector<int> library_degree(const Graph &graph);

// Nested dissection by METIS. Empty where the build did not find it, and where it fails.
std::vector<int> library_dissection(const Graph &graph);

// Parts of a graph of about equal weight with few edges between them, 0 to parts - 1 by vertex, by METIS. Empty where
// the build did not find it, and where it fails.
std::vector<int> library_parts(const Graph &graph, int parts);

bool has_library_degree();
bool has_library_dissection();

} // namespace vornadjust

#endif
