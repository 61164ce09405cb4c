// The plan of a network out of its sightings: the ground grows from what is given, local frames grow where it stops and
// are joined to it, until nothing more gets a place.

#ifndef VORNHOST_START_PLAN_H
#define VORNHOST_START_PLAN_H

#include "host/preparation/start/frame.h"
#include "host/preparation/start/growth.h"

namespace vornhost::start {

// How one of several ways to the plan begins.
struct Way {
    bool local_first = false; // a local frame before the ground
    unsigned choices = 0;     // where two places fit alike
    int skip = 0;             // so many of the best centres of local frames
};

struct Plan {
    Frame frame;
    std::vector<Alternative> alternatives; // places that fitted alike
    bool mirrored = false;                 // a frame may be the mirror image of the true one
};

// `ground` holds what is given: points with a place, circles with a turn.
Plan find_plan(const Sightings &s, const Frame &ground, const Way &way);

} // namespace vornhost::start

#endif
