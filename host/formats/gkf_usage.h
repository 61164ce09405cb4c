// Which points of a .gkf file observations reach, and what that makes of them: codes, stations, points that are left
// out.

#ifndef VORNHOST_GKF_USAGE_H
#define VORNHOST_GKF_USAGE_H

#include "host/formats/gkf_cluster.h"

namespace vornhost {

// Adds the points to the draft, whose observations must be complete.
void add_points(GkfContext &context);

} // namespace vornhost

#endif
