// Observations divided among ranks by parts of the network, so that few unknowns are seen from several parts.
//
// Points are the vertices of a graph, sights its edges; METIS cuts it into parts of equal weight with few edges between
// them. An observation belongs to the part of its first point, so that all that an instrument sees from a point stays
// together; a correlated group to that of its first observation; one without points to the first part. The same model
// and number always give the same parts. Where the build did not find METIS, points are cut as they stand.

#ifndef VORNADJUST_DIVISION_H
#define VORNADJUST_DIVISION_H

#include <vector>

#include "adjust/model.h"

namespace vornadjust {

// Part of each observation, 0 to parts - 1.
std::vector<int> divide(const Model &model, int parts);

} // namespace vornadjust

#endif
