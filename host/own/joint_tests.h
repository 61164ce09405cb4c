// Which observations are tested together: the components of a baseline, and those of a row of observed coordinates.

#ifndef VORNHOST_JOINT_TESTS_H
#define VORNHOST_JOINT_TESTS_H

#include <vector>

#include "host/own/numbers.h"

namespace vornhost {

// Observations of the numbers, in their order; those of several components alone.
std::vector<std::vector<int>> tested_together(const Numbers &numbers);

} // namespace vornhost

#endif
