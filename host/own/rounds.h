// Rounds of directions under different zeros at one stand.
//
// A round is a set of the file, or ends where a target comes again, or before that where targets are missing
// (round_cuts.h). Where the file says which rounds share a zero, they
// do. Otherwise, where two or more targets of a round were read before, and their readings (at least two thirds of
// them) differ by the same angle, or the only one by an angle, the circle was turned in between: the round gets an
// orientation of its own.

#ifndef VORNHOST_ROUNDS_H
#define VORNHOST_ROUNDS_H

#include <string>
#include <vector>

#include "host/input/model.h"
#include "host/own/round_cuts.h"

namespace vornhost {

struct Rounds {
    std::vector<int> orientation;       // [directions] which orientation of its stand a direction has, from 0
    std::vector<int> count;             // [stands] orientations, at least 1
    std::vector<std::vector<int>> sets; // [stands][orientations] the set of each; empty where no set has its own
    std::vector<DoubtfulZero> doubtful; // directions
    std::vector<std::string> notes;
};

// Where the file is silent, of levelled stands whose orientation is free and not given; others keep one.
Rounds find_rounds(const Model &network);

} // namespace vornhost

#endif
