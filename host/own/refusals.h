// Why the program's own adjustment did not adjust a network, in sentences with names, places and remedies.

#ifndef VORNHOST_REFUSALS_H
#define VORNHOST_REFUSALS_H

#include <string>
#include <vector>

#include "host/own/road.h"

namespace vornhost {

// What the network asks for and this adjustment does not do; empty when nothing is.
std::vector<std::string> not_adjusted_here(const Model &network);

// Sets the ending and the words of an outcome whose adjustment has ended.
void judge(const Model &network, OwnOutcome &outcome);

// What is determined, but badly: one line each.
std::vector<std::string> weak_notes(const Model &network, const OwnOutcome &outcome);

} // namespace vornhost

#endif
