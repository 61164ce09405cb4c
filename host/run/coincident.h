// Sights between two points in one place: such a sight has no direction, and a distance no
// derivative. The engine divides by zero or ends the list of the sight.

#ifndef VORNHOST_COINCIDENT_H
#define VORNHOST_COINCIDENT_H

#include <string>
#include <vector>

#include "host/input/model.h"

namespace vornhost {

struct CoincidentSights {
    std::vector<std::string> lines; // one a sight with its place, at most six
    bool distances = false;         // there are distances among them, not between points that are held
};

// Distances, directions, vertical angles and azimuths that took part in the run which left
// its results in the model, by the approximate coordinates from which it started. None in
// a run without results, of heights alone, or with lumps, whose points have places by epoch.
CoincidentSights coincident_sights(const Model &model);

} // namespace vornhost

#endif
