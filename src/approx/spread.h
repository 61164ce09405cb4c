// The course of a spread and its steps: the datum that it starts from, what is known at the
// start, one pass over the stations, the heights at the end.

#ifndef VORN_SPREAD_H
#define VORN_SPREAD_H

#include "approx/spreadtables.h"

namespace vornengine {

// Completes the datum, counts the unknowns (nunk1, nunk2, nunk) and numbers them. Returns 0,
// -2 without a datum, -3 when more is known than there is.
int datum_approx(approxdata *net);

// Computes all points. Returns 0 or -1, -2, -3, -5, -6, -7, -9: see spread.cpp.
int spread(approxdata *net);

// Enters what is known at the start into zeroed tables.
//   nused   in, out  grows by the stations known in full that measure distances
//   nresec  in, out  grows by the stations that can be resected
//   npair   in, out  grows by the pairs of stations that sighted each other
// Always returns 0.
int start_spread(const approxdata *net, spreadtables *tab, int *nused, int *nresec, int *npair);

// One pass; nleft goes down by each station resected. With iscale 1 the distances may be used.
// Returns 0 to go on, -1 or -4 to stop.
int spread_step(const approxdata *net, spreadtables *tab, int *nleft, int iscale);

// Heights of all points.
//   known, h  work  [npoints], zero on entry
void height_spread(const approxdata *net, double *known, double *h);

} // namespace vornengine

#endif
