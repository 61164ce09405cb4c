// Two upright instruments that sight common points with directions and vertical angles, and not each other: how they
// stand to one another, without a scale. The sights to a point lie in one plane with the base. For each turn of the
// second circle the base that most sights agree with is an eigenvector of three rows; the turn is searched.

#ifndef VORNHOST_START_PAIR_H
#define VORNHOST_START_PAIR_H

#include <optional>
#include <vector>

namespace vornhost::start {

// Readings of the circles, radians, and tangents of the elevations.
struct CommonSight {
    double first, first_slope, second, second_slope;
};

struct Pair {
    double turn = 0;     // of the second circle where that of the first is 0
    double x = 0, y = 0; // of the second from the first, a vector of length 1
    double cost = 0;     // how badly the sights meet; to compare two of them
};

// No value for less than four common points, or where the base is steep or most points lie behind one of them.
std::optional<Pair> find_pair(const std::vector<CommonSight> &sights);

} // namespace vornhost::start

#endif
