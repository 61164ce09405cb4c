// Division of the points of a network into parts that lie together, for processes that share its observations.

#ifndef VORNHOST_POINT_PARTS_H
#define VORNHOST_POINT_PARTS_H

#include <vector>

#include "host/input/model.h"

namespace vornhost {

// The part, from 0 to model.share.parts - 1, of each station, then of each target: by coordinates as the records have
// them, of points that are off by turns. The numbers of points that are on differ by one at most. It depends on nothing
// but these coordinates and the order of the points.
std::vector<int> parts_of_points(const Model &model);

} // namespace vornhost

#endif
