// Whether two starts of a network say the same, and where they do not.

#ifndef VORNHOST_START_DOUBTS_H
#define VORNHOST_START_DOUBTS_H

#include <vector>

#include "host/preparation/start/trial.h"

namespace vornhost::start {

// A point that fits in two places, or at two heights in one; `apart` metres from each other.
struct Doubt {
    int point;
    double x[3], other[3];
    bool in_height;
    double apart;
};

// Moves a start as a whole onto another one, as far as nothing that is given or observed holds it: a network without
// known points may lie, turn and, without lengths, be scaled anywhere; one of lengths alone may be a mirror image.
void move_onto(const Trial &best, const Given &given, Trial *other);

// Half way between two starts: it fits as well, within a difference of losses, where both lie in one valley, which weak
// networks have, and does not between two solutions.
bool in_one_valley(const Trial &best, const Trial &other, double ridge);

// Points wanted in the plan that lie elsewhere in another start, by more than `least` metres; in space those at another
// height too.
std::vector<Doubt> places_apart(const Trial &best, const Given &given, const Trial &other, double least, bool in_space);

} // namespace vornhost::start

#endif
