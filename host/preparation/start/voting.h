// Where a point lies, by a vote of all that is observed between it and points that have a place: every pair of
// observations proposes places, every observation says how well it agrees with each, and the place with most agreement
// is refined by those that agree.

#ifndef VORNHOST_START_VOTING_H
#define VORNHOST_START_VOTING_H

#include <cmath>
#include <optional>
#include <vector>

#include "host/preparation/start/frame.h"

namespace vornhost::start {

struct Determination {
    double x, y;
    double sigma;      // standard deviation of both
    double reach;      // mean length of what determines it
    double redundancy; // observations that agree, beyond the two that are needed
    bool torn;         // another place has hardly less agreement
    double other[2];   // that place
};

// What there is to determine a point with: two observations do, more of them check each other.
struct Support {
    int count = 0;
    double sigma = HUGE_VAL; // smallest standard deviation of a place that it comes from
};

Support support_of(const Sightings &s, const Frame &frame, int point);

// No value where nothing determines the point.
std::optional<Determination> determine(const Sightings &s, const Frame &frame, int point);

// The turn of a circle whose station and some of whose targets have a place; known is false where there is none, or
// where two rays contradict each other and no third decides.
Turn vote_turn(const Sightings &s, const Frame &frame, int circle);

} // namespace vornhost::start

#endif
