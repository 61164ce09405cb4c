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

// Of the other points to which lengths run. The other place of a point lies near the mirror image about the mean where
// these lie level, about the lowest or the highest where the lengths are steep; and farther away, a tenth or a third of
// a length below or above the point itself, where its place in the plan follows.
enum class About { mean, lowest, highest, below, above, far_below, far_above };
constexpr About every_about[] = {About::mean,  About::lowest,    About::highest,  About::below,
                                 About::above, About::far_below, About::far_above};

// Mirrors the heights of these points about a level, and adjusts.
void mirror_heights(const std::vector<int> &points, About about, Trial *trial);

} // namespace vornhost::start

#endif
