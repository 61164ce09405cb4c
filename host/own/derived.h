// Quantities computed from adjusted coordinates, as the table derived asks for them.

#ifndef VORNHOST_DERIVED_H
#define VORNHOST_DERIVED_H

#include <vector>

#include "host/own/road.h"
#include "host/results/results.h"

namespace vornhost {

// The linear functions of the unknowns that the quantities are at the values of the model; empty ones for quantities
// whose points the network does not have, or that have no derivative.
std::vector<vornadjust::Form> derived_forms(const Model &network, const Numbers &numbers,
                                            const vornadjust::Model &model);

void collect_derived(const Model &network, const OwnOutcome &outcome, Results &results);

} // namespace vornhost

#endif
