// What holds a network as a whole in the plan: points that are known, and what tells its turn, its scale, and the
// network from its mirror image.

#ifndef VORNHOST_START_HELD_H
#define VORNHOST_START_HELD_H

#include <vector>

#include "host/preparation/start/sightings.h"

namespace vornhost::start {

struct Held {
    std::vector<int> points; // given, weighted or observed in the plan
    bool axes = false;       // something tells the turn
    bool length = false;     // and the scale
    bool side = false;       // and the network from its mirror image: two rays of one circle, or the axes
};

Held held_by(const vornadjust::Model &model, const Given &given);

// Points with a coordinate that is fixed, weighted or observed.
std::vector<int> held_in_space(const vornadjust::Model &model);

// Nothing but straight lengths between points of a space with parallel verticals, and two points held at most: the
// network may turn about an axis that is not upright.
bool is_shape_alone(const vornadjust::Model &model);

} // namespace vornhost::start

#endif
