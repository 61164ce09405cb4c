// What a network may hold and the simplex solver does not adjust.

#ifndef VORNHOST_SIMPLEX_INPUT_H
#define VORNHOST_SIMPLEX_INPUT_H

#include <string>
#include <vector>

#include "host/input/model.h"

namespace vornhost {

// One line for each kind of observation and for each point that stands in the way, with what to
// do and its place; at most twenty points. Empty when the solver can take the network.
std::vector<std::string> not_for_simplex(const Model &model);

} // namespace vornhost

#endif
