// The plan of a network out of its sightings: the ground grows from what is given, local frames grow where it stops and
// are joined to it, until nothing more gets a place.

#ifndef VORNHOST_START_PLAN_H
#define VORNHOST_START_PLAN_H

#include "host/preparation/start/frame.h"
#include "host/preparation/start/growth.h"
#include "host/preparation/start/way.h"

namespace vornhost::start {

struct Plan {
    Frame frame;
    std::vector<Choice> choices; // where something else fitted alike
};

// `ground` holds what is given: points with a place, circles with a turn.
Plan find_plan(const Sightings &s, const Frame &ground, const Way &way);

} // namespace vornhost::start

#endif
