// One observation at the model's present values: computed value and derivatives by every unknown that it sees.

#ifndef VORNADJUST_LINEAR_H
#define VORNADJUST_LINEAR_H

#include "adjust/model.h"

namespace vornadjust {

// Most unknowns of one observation: an image between two moved ends, 2 (3 + 7) + 3 + 10, with the deflections of three
// verticals, which no image has.
constexpr int most_unknowns = 39;

// The unknowns that the rows of an observation hold, in a fixed order: coordinates, then motion, of each end; then
// angles of the set-up, constants, camera; then deflections of the verticals of the ends. Axes that a kind never sees
// (x, y of a height difference on parallel verticals) are left out. An unknown that two ends share stands there twice.
// Returns their number.
int seen_unknowns(const Model &model, const Observation &observation, int unknowns[most_unknowns]);

struct Linear {
    bool usable = false;            // false: the geometry has no derivative here
    double value[3] = {};           // [components] computed
    double slope[3][most_unknowns]; // [components][n] derivatives; axes left out have no place
    int n = 0;
    int unknown[most_unknowns]; // [n] those of seen_unknowns
};

// In the model's frame, or with the derivatives of flat() when `invariant`; the values are always those of the frame.
void linearize(const Model &model, const Observation &observation, bool invariant, Linear *linear);

// The computed values alone, [components]. Returns whether the geometry has a derivative here.
bool compute(const Model &model, const Observation &observation, double value[3]);

} // namespace vornadjust

#endif
