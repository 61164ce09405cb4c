// Two rules about heights that the program keeps a network out of.
//
// Horizontal reductions: the engine reduces a slope distance with the heights of its ends and
// compares it with a distance that counts the third coordinates as well. In the plane the
// heights of the points therefore go into the heights of instrument and target, and the
// third coordinates become 0.
//
// Fixed heights in mixed coordinates: the engine holds the height of a point whose position
// is unknown by a condition of very high weight that also holds the position. Such a height
// is weighted instead, where the datum does not need it.

#ifndef VORNHOST_HEIGHTS_H
#define VORNHOST_HEIGHTS_H

#include <string>
#include <vector>

#include "host/input/model.h"

namespace vornhost {

// Standard deviation of a fixed height that is weighted, metres.
constexpr double held_height_sigma = 1.0e-6;

// Only in two dimensions and with a reduction to the horizontal.
void move_heights_to_distances(Model &model);

struct Held {
    Source where;
    std::string text; // for the user
};

// Only in three dimensions and with mixed coordinates. One entry for each fixed height of a
// point without a fixed position.
std::vector<Held> hold_heights(Model &model);

} // namespace vornhost

#endif
