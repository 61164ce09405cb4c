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

// Observations that stay out of the first coordinates, and given coordinates that are far from them.
std::vector<std::string> start_notes(const Model &network, const Numbers &numbers, const start::Start &start);

} // namespace vornhost

#endif
