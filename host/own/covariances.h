// Covariances among the points that a caller of the library names.

#ifndef VORNHOST_COVARIANCES_H
#define VORNHOST_COVARIANCES_H

#include <vector>

#include "host/own/road.h"
#include "host/results/results.h"

namespace vornhost {

// The unknowns of the coordinates of those points that the network has, point by point.
std::vector<int> covariance_unknowns(const Model &network, const Numbers &numbers);

// Puts the covariances of these unknowns into the results: they are the last of the joint cofactors of the run.
void collect_covariances(const Model &network, const OwnOutcome &outcome, Results &results);

} // namespace vornhost

#endif
