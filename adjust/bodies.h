// Points of a network that move as one body in all its undetermined movements, and the body at rest.
//
// Null vectors as they are computed smear over all points: each body turns a little. Points form a body
// when what they do in every null vector is one motion; the body that holds most fixed, weighted
// and imported coordinates, and then most points, is taken for the one at rest, and its part in the open motions
// of the network is subtracted everywhere.

#ifndef VORNADJUST_BODIES_H
#define VORNADJUST_BODIES_H

#include <vector>

#include "adjust/datum.h"
#include "adjust/small_svd.h"
#include "adjust/unit_rows.h"

namespace vornadjust {

struct Body {
    std::vector<int> points; // ascending
    std::vector<int> hinges; // points of the body at rest that stay in all its movements
    Dense motion;            // 7 by independent movements, coefficients about the similarity; orthonormal
};

struct Bodies {
    Similarity similarity;    // of all points that rows see
    std::vector<int> resting; // ascending
    std::vector<Body> moving; // of two points or more
    std::vector<int> single;  // points that move by themselves
    Dense movement;           // unknowns by null vectors, coordinates alone, the body at rest at rest; largest entry 1
};

// Displacements below this share of the largest are none.
constexpr double no_displacement = 1e-7;

//   movements  unknowns by null vectors, as find_mechanisms gives them
Bodies find_bodies(const UnitRows &rows, const Datum &datum, const Dense &movements);

} // namespace vornadjust

#endif
