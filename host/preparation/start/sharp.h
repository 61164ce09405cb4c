// Standard deviations that say nothing: a file may give all observations the weight 1, in whatever unit. First values
// need to know what agrees, and so take observations to be better than that, all by the same factor: their weights
// against each other stay.

#ifndef VORNHOST_START_SHARP_H
#define VORNHOST_START_SHARP_H

#include "adjust/model.h"

namespace vornhost::start {

// The model with standard deviations of at most 0.01 rad for angles and 0.01 of their length for lengths, as a median.
vornadjust::Model with_sharp_sigmas(const vornadjust::Model &model);

} // namespace vornhost::start

#endif
