// Observations that contradict the coordinates in the file by more than tol-abs, which gama-local leaves out without a
// word.

#ifndef VORNHOST_GKF_MISCLOSURES_H
#define VORNHOST_GKF_MISCLOSURES_H

#include "host/formats/gkf_cluster.h"

namespace vornhost {

// Notes each observation of the draft whose points have coordinates in the file and whose misclosure with them is above
// tolerance (metres; angles times the length of their sight).
void note_misclosures(GkfContext &context, double tolerance);

} // namespace vornhost

#endif
