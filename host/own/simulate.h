// Networks whose observations are drawn: what given coordinates, orientations and constants make of every row, and an
// error of the row's standard deviation or covariance.

#ifndef VORNHOST_SIMULATE_H
#define VORNHOST_SIMULATE_H

#include <cstdint>
#include <string>
#include <vector>

#include "host/input/model.h"

namespace vornhost {

// Puts drawn values into the records that take part, those of weighted unknowns too. Errors are normal and are
// multiplied by `noise`, 0 or more; each seed gives another draw. A planned network becomes one to be adjusted. Returns
// why it cannot be done, in sentences, and leaves the network as it was then; empty when it was done.
std::vector<std::string> simulate(Model &network, std::uint64_t seed, double noise);

} // namespace vornhost

#endif
