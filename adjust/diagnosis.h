// Whether a network can be adjusted, and what is not determined when it cannot: points, unknowns and
// movements by index and number. Words and names are the host's.

#ifndef VORNADJUST_DIAGNOSIS_H
#define VORNADJUST_DIAGNOSIS_H

#include <array>
#include <functional>
#include <vector>

#include "adjust/bodies.h"
#include "adjust/datum.h"
#include "adjust/mechanisms.h"

namespace vornadjust {

enum class Lack {
    observations, // no usable row sees the points
    heights,      // the third coordinates of the points, each by itself
    point,        // one point moves by itself
    body,         // points move together
    unknowns,     // unknowns besides coordinates that the rows do not tell apart
    unnamed       // points that move in a way that is no motion of bodies
};

// Something that is not determined.
struct Finding {
    Lack lack = Lack::unnamed;
    std::vector<int> points;           // that move
    std::vector<NamedMotion> motions;  // point: shifts; body: any
    std::vector<int> hinges;           // body: points of the rest that stay in all its movements
    std::vector<int> unknowns;         // of lack unknowns
    std::array<int, n_kinds> sights{}; // point: observations at it, by kind
};

struct Determinacy {
    Datum datum;
    Mechanisms mechanisms;
    std::vector<Finding> findings;

    bool accepted() const
    {
        return findings.empty() && datum.state != DatumState::loose && datum.state != DatumState::not_carried;
    }
};

// Verdict at the model's present values. A mechanism there may come from first coordinates that the program
// made (points in line that are not): it is believed when it stays after those points were moved by about a
// thousandth of the size of the network.
//   made  [points] 1 where the coordinates are the program's own
// Throws std::bad_alloc.
Determinacy judge(const Model &model, const std::vector<char> &made);

// Points with estimated coordinates that rows see.
std::vector<int> movable_points(const Model &model, const Datum &datum);

// A turn or the scale that the observations determine badly.
struct WeakMotion {
    int motion;       // basic motion, 3 to 6
    double deviation; // standard deviation, radians; of the scale without unit
};

// Standard deviations above this (radians, or of the scale) are told.
constexpr double weak_motion = 0.01;

// Turns and scale of the adjusted coordinates with standard deviations above weak_motion.
//   apply  multiplies a vector over all unknowns by their covariance matrix, in place; entries of unknowns
//          that are not estimated are 0 before and after
std::vector<WeakMotion> weak_motions(const Model &model, const Datum &datum,
                                     const std::function<void(double *)> &apply);

} // namespace vornadjust

#endif
