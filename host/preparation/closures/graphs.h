// The graphs in which the observations of a network close.

#ifndef VORNHOST_CLOSURES_GRAPHS_H
#define VORNHOST_CLOSURES_GRAPHS_H

#include "host/preparation/closures/misclosure.h"
#include "host/preparation/start/sightings.h"

namespace vornhost::closures {

// Points and, as the node behind them, what is known: fixed coordinates.
LegGraph level_graph(const vornadjust::Model &model);

// The same with heights by a vertical angle and a distance of the same sight, in space; no graph where there are none.
LegGraph height_graph(const vornadjust::Model &model, const LegGraph &levels);

LegGraph baseline_graph(const vornadjust::Model &model);

// Circles and the lines that they sight: a circle leads to a line by a direction, one line of a station to another by
// an angle, north (the last circle) to a line by an azimuth, a bearing or two fixed points. A line is the same from
// both its ends where verticals are parallel; elsewhere only what stands at one station closes.
struct AngleGraph {
    LegGraph graph;
    int circles = 0;                        // the first nodes
    std::vector<std::pair<int, int>> lines; // [nodes - circles] the ends; the bearing is that from the first
};

AngleGraph angle_graph(const vornadjust::Model &model, const start::Sightings &sightings);

// Whether the instrument of a set-up is held upright, so that its directions are horizontal angles.
bool is_upright(const vornadjust::Model &model, int setup);

bool is_fixed(const vornadjust::Model &model, int point, int first_axis, int last_axis);

} // namespace vornhost::closures

#endif
