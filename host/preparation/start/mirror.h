// Heights that nothing but lengths tells: a length between two points is the same when one of them lies as far above
// the level of the other as it lay below.

#ifndef VORNHOST_START_MIRROR_H
#define VORNHOST_START_MIRROR_H

#include <vector>

#include "host/preparation/start/trial.h"

namespace vornhost::start {

// Sets of points whose heights, mirrored together, may fit as well: all that lengths alone tell, then each of them.
//   work  observations that may be gone through in all: where the points are too many, only all of them together
std::vector<std::vector<int>> heights_of_lengths(const Trial &trial, const Given &given, double work);

// Mirrors the heights of these points about the mean height of the others to which lengths run, and adjusts.
void mirror_heights(const std::vector<int> &points, Trial *trial);

} // namespace vornhost::start

#endif
