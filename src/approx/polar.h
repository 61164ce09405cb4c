// Points by direction and distance.

#ifndef VORN_POLAR_H
#define VORN_POLAR_H

#include "approx/approxdata.h"

namespace vornengine {

// Whether slope distances can be levelled: in the plane they are level.
int can_level(const approxdata *net);

// Horizontal length (metres) of a distance along a shot.
//   idist, ishot  in  indexes in dist and in dir1
double level_length(const approxdata *net, int idist, int ishot);

// Carries the position of a station with orientation turn along a shot by a distance.
//   x, y  in, out  from the station to the point, metres
void carry_position(const approxdata *net, int ishot, int idist, double turn, double *x, double *y);

} // namespace vornengine

#endif
