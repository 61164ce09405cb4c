// Heights (metres) carried through vertical angles in one pass over their list, from the first
// point as a local zero, then shifted to the first known height.

#include "approx/spread.h"

#include <math.h>

namespace vornengine {

// One vertical angle from station i to point j. Backwards, to a station from the point that it
// aimed at, the height of that point is subtracted.
static void carry_height(const approxdata *net, int i, int j, double v, double *known, double *h)
{
    const double dx = net->points[j].xpt[0] - net->points[i].xpt[0], dy = net->points[j].xpt[1] - net->points[i].xpt[1];
    const double rise = sqrt(dx * dx + dy * dy) * tan(v);
    if (known[i] == 1.0 && known[j] == 0.0) {
        h[j] = rise + h[i];
        known[j] = 1.0;
    }
    if (known[i] == 0.0 && known[j] == 1.0) {
        h[i] = rise - h[j];
        known[i] = 1.0;
    }
}

// What makes the local height of the first point with a known height that height.
static double height_shift(const approxdata *net, const double *h)
{
    for (int i = 0; i < net->npoints; i++)
        if (net->points[i].n0[2] == N_NONE) return net->points[i].xpt[2] - h[i];
    return 1.0;
}

// A point that the pass did not reach gets the shift alone.
void height_spread(const approxdata *net, double *known, double *h)
{
    known[0] = 1.0;
    for (int k = 0; k < net->ndir2; k++) {
        const int i = point_number(net, net->dir2[k].p1), j = point_number(net, net->dir2[k].p2);
        if (i < 0 || i >= net->nsta || j < 0) continue;
        carry_height(net, i, j, net->dir2[k].val[0], known, h);
    }
    const double shift = height_shift(net, h);
    for (int i = 0; i < net->npoints; i++)
        if (net->points[i].n0[2] != N_NONE) net->points[i].xpt[2] = h[i] + shift;
}

} // namespace vornengine
