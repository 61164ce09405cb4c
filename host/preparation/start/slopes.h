// Heights that nothing but slope distances tells, where the plan is known: over the horizontal length d a slope l rises
// or falls by sqrt(l^2 - d^2).

#ifndef VORNHOST_START_SLOPES_H
#define VORNHOST_START_SLOPES_H

#include <vector>

#include "host/preparation/start/trial.h"

namespace vornhost::start {

// Sets the wanted heights of points that have a place and no height, each by a vote of its slopes to points whose
// height is known, then from these on; where up and down do as well the point lies higher. True where there was any.
bool raise_by_slopes(const Given &given, Trial *trial);

} // namespace vornhost::start

#endif
