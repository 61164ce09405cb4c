// Results of the program's own adjustment, in the one structure that every output is written from.

#ifndef VORNHOST_COLLECT_H
#define VORNHOST_COLLECT_H

#include <string>

#include "host/own/road.h"
#include "host/results/results.h"

namespace vornhost {

Results collect_own(const Model &network, const OwnOutcome &outcome, const std::string &version);

} // namespace vornhost

#endif
