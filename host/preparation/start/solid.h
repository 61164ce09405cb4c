// Points in space of which nothing but their distances from one another is known: a base of three, and from there point
// by point where three spheres meet, on the side on which most other lengths agree.

#ifndef VORNHOST_START_SOLID_H
#define VORNHOST_START_SOLID_H

#include <optional>
#include <vector>

#include "host/preparation/start/trial.h"

namespace vornhost::start {

// How a solid grows.
struct SolidWay {
    int base = 0;           // from the point with most lengths, from the next one, ...
    std::vector<int> below; // points that three lengths tell, to be put on the other side of these
};

// A network that is its shape alone, where its points are given, with its damped adjustment; no value where a point is
// not reached. `open` gets the points that fit on both sides alike, but for the first one, which may stand on either.
std::optional<Trial> grow_solid(const vornadjust::Model &model, const Given &given, const SolidWay &way,
                                std::vector<int> *open);

} // namespace vornhost::start

#endif
