// The points of a .gkf file: ids that come again are one point, whose values and states merge, the last ones winning.

#ifndef VORNHOST_GKF_POINTS_H
#define VORNHOST_GKF_POINTS_H

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/formats/gkf_tag.h"

namespace vornhost {

// Of x and y together, and of z. A point takes part in what it has a state for.
enum class GkfState { none, adjusted, datum, fixed };

struct GkfPoint {
    std::string id;
    std::optional<double> x, y, z; // metres, in the axes of the file
    GkfState xy_state = GkfState::none, z_state = GkfState::none;
    bool undetermined = false;                      // x and y were taken out: too little tells them
    Source where;                                   // of its first element
    Source fixed_xy = Source(), fixed_z = Source(); // of the words that hold it
};

class GkfPoints {
public:
    // Reads a point with coordinates or a state, of points-observations or of a cluster of observed coordinates.
    void read(GkfTag &tag);

    // Points that are fixed need a value.
    void check(Faults &faults) const;

    // x and y of a point that is there take no part.
    void leave_out_plan(const std::string &id);

    const GkfPoint *find(const std::string &id) const;
    bool xy_active(const std::string &id) const;
    bool z_active(const std::string &id) const;
    const std::vector<GkfPoint> &all() const { return points; }

    // Ids whose coordinates a later element changed after they were fixed, at that element.
    const std::vector<std::pair<Source, std::string>> &moved() const { return moved_points; }

private:
    GkfPoint &entry(const std::string &id, Source at);

    std::vector<GkfPoint> points; // in the order of the file
    std::map<std::string, size_t> index;
    std::vector<std::pair<Source, std::string>> moved_points;
};

} // namespace vornhost

#endif
