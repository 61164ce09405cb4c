// What of a network cannot be divided among processes that each read a part of its rows.

#ifndef VORNHOST_BY_PARTS_H
#define VORNHOST_BY_PARTS_H

#include <string>
#include <vector>

#include "host/input/model.h"

namespace vornhost {

// A line, with the place in the file and the remedy, for each thing of the network that cannot be divided; none where
// it can be adjusted by parts. The same on all processes that have read parts of one file.
std::vector<std::string> not_by_parts(const Model &model);

} // namespace vornhost

#endif
