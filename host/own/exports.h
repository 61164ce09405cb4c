// Connected nets and pairs of points for the program's own adjustment.

#ifndef VORNHOST_EXPORTS_H
#define VORNHOST_EXPORTS_H

#include <string>
#include <utility>
#include <vector>

#include "host/own/road.h"

namespace vornhost {

// Gives the imported points the coordinates of the file of the connected net. Returns why they cannot have them, for
// the user; empty when they do, or when nothing is imported.
std::vector<std::string> take_imports(Model &network);

// Points of the table of pairs that are both in use.
std::vector<std::pair<int, int>> wanted_pairs(const Model &network, const Numbers &numbers);

// Coordinates of the exported points, in their order; empty when the network exports none.
std::vector<int> exported_unknowns(const Model &network, const Numbers &numbers);

// Writes the file of an export into the working folder, or notes why there is none.
void write_export(const Model &network, OwnOutcome &outcome);

} // namespace vornhost

#endif
