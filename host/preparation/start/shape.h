// Networks that fit their mirror image as well, as nothing in them tells right from left.

#ifndef VORNHOST_START_SHAPE_H
#define VORNHOST_START_SHAPE_H

#include <optional>

#include "host/preparation/start/trial.h"

namespace vornhost::start {

// So many points with approximate coordinates would tell a network, which may lie anywhere, from its mirror image:
// three that do not lie on a line, in space four that do not lie in one plane. 0 where it is told, or is its own image.
int points_that_tell_side(const Trial &trial, const Given &given);

// The image in the line through all known points, where there are two at least: it fits exactly as well. No value where
// something tells it from the network.
std::optional<Trial> image_in_line(const Trial &trial, const Given &given);

// Of a network in space that is its shape alone: shifts, turns and mirrors one start onto another as a whole.
void move_shape_onto(const Trial &best, Trial *other);

// Of such a network: moves a start as a whole to where its points are given, on the side where these tell it.
void place_as_given(const vornadjust::Model &as_given, const Given &given, Trial *trial);

} // namespace vornhost::start

#endif
