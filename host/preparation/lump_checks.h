// Rules of the engine about lumps that the program keeps a network out of.
//
// A lump moves as a whole between epochs. The engine adjusts its movements (method 1) only in
// space, with distances as they are observed, and only when directions show at least three of
// its points at two epochs; otherwise it takes the points as unmoved, and of the lumps behind
// such a one it reads the wrong epochs. With method 9 it makes a point of each epoch at which
// directions show a target, adjusts them by themselves, and compares the epochs afterwards.

#ifndef VORNHOST_LUMP_CHECKS_H
#define VORNHOST_LUMP_CHECKS_H

#include <string>
#include <vector>

#include "host/input/faults.h"
#include "host/input/model.h"

namespace vornhost {

// Whether a used point belongs to a lump.
bool has_lumps(const Model &model);

// Faults of a network whose method is 1 or 9, where they stand in its file.
void check_lumps(const Model &model, Faults &faults);

struct LumpNote {
    Source where;
    std::string text; // for the user
};

// With method 9 the directions that take part come before the others: the engine lists the epochs
// of directions when it loads them and once more when it compares, and the two lists are alike
// only then. To be called before accounts are opened.
void order_sights(Model &model);

// With method 1 takes the points of lumps that cannot be compared out of them, and a reference epoch that
// shows too little out of its definition. A note for each, and for observations of a lump that
// count as of its reference epoch. With method 9 only notes; orientations stand.
std::vector<LumpNote> settle_lumps(Model &model);

// After a run with method 9: the lumps with epochs that show three points and were not compared,
// one line each. The coordinates of such an epoch stand in the means of its points.
std::vector<std::string> epochs_not_compared(const Model &model);

} // namespace vornhost

#endif
