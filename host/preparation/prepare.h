// What the program adds to a network before a run, each decision with a line for the user.

#ifndef VORNHOST_PREPARE_H
#define VORNHOST_PREPARE_H

#include <functional>
#include <string>
#include <vector>

#include "host/input/model.h"

namespace vornhost {

// Where a point of the network file stands in the project that was handed over.
struct PointRole {
    bool station = false;          // a station of the file
    bool handed_as_target = false; // a station without angles, handed over as a target
    Source where;
};

struct Prepared {
    // One line each, with its place: "net.inp:14: station B has no directions or vertical
    // angles: treated as a target".
    std::vector<std::string> notes;
    // Roles of the project's stations, then of its targets.
    std::vector<PointRole> stations, targets;
};

// Takes orientations that are not given from coordinates and directions (circular mean),
// hands stations without angles over as targets, fixes what nothing determines, and
// attaches the arrays. Coordinates that are missing are computed between these by
// first_values, which may leave some missing.
Prepared prepare(Model &model, const std::function<void()> &first_values = nullptr);

} // namespace vornhost

#endif
