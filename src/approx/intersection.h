// Rays of directions in the plane, and where two of them meet.

#ifndef VORN_INTERSECTION_H
#define VORN_INTERSECTION_H

#include "approx/spreadtables.h"

namespace vornengine {

// The angle brought once nearer to the range from -pi to pi: above pi less 2 pi, below -pi
// more 2 pi.
double wrap(double angle);

// Reading (radians) of the last shot from station i to point p, which must exist.
double reading(const approxdata *net, const spreadtables *tab, int i, int p);

// Meeting (metres) of two rays along the plane angles a and b from (0, 0) and (1, 0); rays
// that are near parallel or antiparallel give (0, 0).
void meet(double a, double b, double *x, double *y);

// Places point p by its shots from two finished stations; sets no status.
void intersect(const approxdata *net, spreadtables *tab, int i1, int i2, int p);

// Places the targets, or stations, without a position that station i and another finished
// station shot, and sets their status.
void intersect_targets(const approxdata *net, spreadtables *tab, int i);
void intersect_stations(const approxdata *net, spreadtables *tab, int i);

} // namespace vornengine

#endif
