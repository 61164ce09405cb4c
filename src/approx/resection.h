// Stations placed by their directions to known points.

#ifndef VORN_RESECTION_H
#define VORN_RESECTION_H

#include "approx/spreadtables.h"

namespace vornengine {

// What resec3 worked with.
struct threeshots {
    double xx[3], yy[3]; // the aimed points, metres
    double alp[3];       // reading of the first shot, then angles from it, radians
};

// Places station i by three shots: xap, yap and oap at i.
//   ishot  in   [3] indexes in dir1
//   three  out
void resec3(const approxdata *net, spreadtables *tab, int i, const int *ishot, threeshots *three);

// Places station i by the first three of its shots to known points, checks it by the others,
// and with iscale 1 places targets by its distances. Sets no status of i. Returns 0, or -1
// with fewer than 3 shots.
int resec(const approxdata *net, spreadtables *tab, int iscale, int i);

// Makes the nresec resections that are marked at the start; a lone one without a distance is
// of no use and leaves nresec 0. Returns 0 or -1.
int start_resec(const approxdata *net, spreadtables *tab, int *nresec);

} // namespace vornengine

#endif
