// Rounds of directions under different zeros at one station.
//
// A round ends where a target comes again. Where two or more targets of a round were read before, and their readings
// all differ by the same angle, the circle was turned in between: the round gets an orientation of its own.

#ifndef VORNHOST_ROUNDS_H
#define VORNHOST_ROUNDS_H

#include <string>
#include <vector>

#include "host/input/model.h"

namespace vornhost {

struct Rounds {
    std::vector<int> orientation; // [directions] which orientation of its station a direction has, from 0
    std::vector<int> count;       // [stations] orientations, at least 1
    std::vector<std::string> notes;
};

// Of levelled stations whose orientation is free and not given; others keep one.
Rounds find_rounds(const Model &network);

} // namespace vornhost

#endif
