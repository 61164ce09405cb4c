// Fit of a local frame to the known points of the network.

#ifndef VORN_TRANSFORMATION_H
#define VORN_TRANSFORMATION_H

#include "approx/spreadtables.h"

namespace vornengine {

// Fits the frame to the first two known points, to a single one, or to none. Returns 0 or -5.
int transformations(const approxdata *net, spreadtables *tab);

// Turns, scales and shifts the frame to points p1 and p2. Returns 0, or -1 when these are in
// one place or without memory; the tables are untouched then.
int t2pt(const approxdata *net, spreadtables *tab, int p1, int p2);

// Shifts the frame to point p. Orientations stay, also where a station has a fixed one.
void t1pt(const approxdata *net, spreadtables *tab, int p);

} // namespace vornengine

#endif
