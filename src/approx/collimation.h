// A start from two stations that sighted each other.

#ifndef VORN_COLLIMATION_H
#define VORN_COLLIMATION_H

#include "approx/spreadtables.h"
#include "approx/stationpair.h"

namespace vornengine {

// Builds the frame of the best of npair pairs.
//   iscale  out  1 with a true scale, 0 without
// Returns 0, or -1 without memory, without a pair with a common shot, or with a bar that does
// not join targets.
int colli_spread(const approxdata *net, spreadtables *tab, int npair, int *iscale);

// Lists the pairs of stations that sighted each other.
//   tabpair  out  [npair], zeroed on entry
// Returns 0, or -1 without memory.
int buildtabpair(const approxdata *net, const spreadtables *tab, stationpair *tabpair, int npair);

// The frame with station i1 at the origin and i2 at (1, 0), and all that both shot.
void colli_base(const approxdata *net, spreadtables *tab, int i1, int i2);

// Scale of the frame of station i from the distance idist. Returns 1, 0 without vertical
// angles to both ends, or -1 when the ends are not targets; scale is set with 1 alone.
int scale_by_bar(const approxdata *net, const spreadtables *tab, int i, int idist, double *scale);

} // namespace vornengine

#endif
