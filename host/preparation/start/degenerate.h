// Why a point has no place although enough was observed of it: all that determines it leaves it open along a circle or
// a line.
//
// A station that sights three points fits anywhere on the circle through them when it stands on it (the danger
// circle); a point fits anywhere on a line on which it and the stations that sight it lie.

#ifndef VORNHOST_START_DEGENERATE_H
#define VORNHOST_START_DEGENERATE_H

#include <vector>

#include "adjust/model.h"

namespace vornhost::start {

struct Degenerate {
    int point;
    int through[3]; // points on the circle; the third is -1 for a line through the first two
};

// How near to a circle or line counts as on it: about, where nothing better was found; as near as the readings are
// good.
enum class Near { about, readings };

// Of these points, at the values of the model. Those with a 1 in `placed` are where the model has them.
std::vector<Degenerate> find_degenerate(const vornadjust::Model &model, const std::vector<char> &placed,
                                        const std::vector<int> &points, Near near = Near::about);

} // namespace vornhost::start

#endif
