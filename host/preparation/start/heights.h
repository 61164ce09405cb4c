// Heights of points out of height differences, vertical angles and baselines, with a vote where several meet.
// Metres; on a sphere heights above the level of the origin, along the vertical.

#ifndef VORNHOST_START_HEIGHTS_H
#define VORNHOST_START_HEIGHTS_H

#include <vector>

#include "adjust/model.h"
#include "host/preparation/start/sightings.h"

namespace vornhost::start {

// Horizontal distance of two points; not above 0 where it is not known.
class Distances {
public:
    // Of the plan where both ends have a place there, otherwise of the lengths.
    Distances(const Sightings &s, const std::vector<double> &x, const std::vector<double> &y);
    double between(int a, int b) const;

private:
    const Sightings &s;
    const std::vector<double> &x, &y;
};

// [points] Carried from those that are not NaN in `known`; NaN where nothing leads to a point.
std::vector<double> carry_heights(const vornadjust::Model &model, const Distances &distances,
                                  const std::vector<double> &known, const std::vector<char> &left_out);

// Height above the level of the origin of a point with the coordinates c, and the third coordinate for a height.
double height_of(const vornadjust::Frame &frame, const double c[3]);
double third_of(const vornadjust::Frame &frame, double x, double y, double height);

} // namespace vornhost::start

#endif
