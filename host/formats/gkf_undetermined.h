// Points of a .gkf file whose x and y fewer than two observations tell: a target seen once, say. Nothing can compute
// them, and gama-local leaves them out with their observations, which may leave others without enough.

#ifndef VORNHOST_GKF_UNDETERMINED_H
#define VORNHOST_GKF_UNDETERMINED_H

#include "host/formats/gkf_cluster.h"

namespace vornhost {

// Takes x and y of such points out of the context, with a note each. Where nothing would be left to adjust they stay:
// then the adjustment says what is missing.
//   lists  the elements points-observations
void leave_out_undetermined(const std::vector<const XmlElement *> &lists, GkfContext &context);

} // namespace vornhost

#endif
