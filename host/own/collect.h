// Results of the program's own adjustment, in the one structure that every output is written from.

#ifndef VORNHOST_COLLECT_H
#define VORNHOST_COLLECT_H

#include <memory>
#include <string>

#include "host/own/road.h"
#include "host/results/results.h"

namespace vornhost {

// Residuals are made on demand: the model has to last as long as they, or until they are kept.
Results collect_own(const Model &network, const std::shared_ptr<const OwnOutcome> &outcome, const std::string &version);

} // namespace vornhost

#endif
