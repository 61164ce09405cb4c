// What is said of first coordinates: sights that do not fit them, points that fit in two places, points without any.

#ifndef VORNHOST_START_WORDS_H
#define VORNHOST_START_WORDS_H

#include <string>
#include <vector>

#include "host/own/numbers.h"
#include "host/preparation/start/start.h"

namespace vornhost {

// Why there are none for all points, with a remedy.
std::vector<std::string> start_refusals(const Model &network, const Numbers &numbers, const start::Start &start);

// Of these points, those that their directions leave open along a circle or a line, with a remedy.
std::vector<std::string> degenerate_words(const Model &network, const Numbers &numbers, const std::vector<int> &points);

// A value of an observation (metres, radians) as the file would have it, with its unit.
std::string reading_text(const Model &network, const vornadjust::Observation &observation, double value);

// Observations that stay out of the first coordinates.
std::vector<std::string> start_notes(const Model &network, const Numbers &numbers, const start::Start &start);

} // namespace vornhost

#endif
