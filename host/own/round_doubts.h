// Directions of which the readings of their own stand cannot tell whether they end one round or begin the next one,
// when the circle was turned in between and the file names no sets: the rest of the network tells it.

#ifndef VORNHOST_ROUND_DOUBTS_H
#define VORNHOST_ROUND_DOUBTS_H

#include <string>
#include <vector>

#include "host/own/numbers.h"
#include "host/own/round_cuts.h"

namespace vornhost {

struct Divided {
    Readings readings;
    int zero; // of the stand
};

// Of rounds in the order of the readings, each beside the rounds before and after it. A reading is certain where it and
// another one of its round differ alike from those of a round under another zero, or where it agrees with one under the
// same zero, and between such ones.
std::vector<DoubtfulZero> doubtful_readings(const std::vector<Divided> &rounds);

// Takes the directions in doubt out of the numbers, or in again, for first coordinates that do not rest on them.
void use_doubtful(Numbers &numbers, bool use);

// Gives each direction the zero that fits the values of the model, where its own does not: rounds turned by the same
// angle fit one another one target further on, too. Doubtful ones where nothing tells it keep theirs, with a note.
// Notes, one line each.
std::vector<std::string> settle_doubtful(const Model &network, Numbers &numbers);

// Of an adjusted network: stations whose directions contradict each other by far more than their standard deviations,
// where the file names no sets; some of them, and a line that names them.
std::vector<std::string> contradicting_stations(const Model &network, const Numbers &numbers);
std::string contradiction_line(const std::vector<std::string> &stations);

} // namespace vornhost

#endif
