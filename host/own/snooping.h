// Leaving out what the tests reject, told by names.

#ifndef VORNHOST_SNOOPING_H
#define VORNHOST_SNOOPING_H

#include <string>
#include <vector>

#include "host/own/road.h"

namespace vornhost {

// Adjusts by data snooping. Rows of the tables, whole ones, are left out: they are deselected with their reason, each
// step stands in outcome.snooping.
// Returns a line for each step, and one where suspicious observations are left.
std::vector<std::string> adjust_by_snooping(Model &network, const vornadjust::Options &options, OwnOutcome &outcome);

} // namespace vornhost

#endif
