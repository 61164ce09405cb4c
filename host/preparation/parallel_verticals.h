// Networks in space without an earth model.
//
// The engine reduces the angles of levelled instruments, and compares height differences
// with heights above the sphere, whatever the earth model; without one those heights stay
// 0. A user who gives no earth model means parallel verticals: the network is handed over
// on a sphere so large that its curvature vanishes. In a plane without an earth model no
// angle is reduced at all: the instruments carry no level there.

#ifndef VORNHOST_PARALLEL_VERTICALS_H
#define VORNHOST_PARALLEL_VERTICALS_H

#include <string>

#include "host/input/model.h"

namespace vornhost {

// Departure of the sphere from its tangent plane at the farthest point, metres.
constexpr double largest_curvature = 1.0e-9;

// Gives a network in space without an earth model, with height differences or with angles
// of levelled instruments, a sphere on which its points depart from the plane by less than
// largest_curvature. Returns the line that says so, or an empty text when nothing changed.
std::string make_verticals_parallel(Model &model);

} // namespace vornhost

#endif
