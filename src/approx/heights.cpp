// Heights (metres) carried through vertical angles in one pass over their list, from the first
// point as a local zero, then shifted to the first known height.

#include "approx/approx.h"

#include <math.h>

namespace vornengine {

// One vertical angle from station i to point j. Backwards, to a station from the point that it
// aimed at, the height of that point is subtracted.
void approx::carry_height(int i, int j, double v, double *known, double *h) const
{
    const double dx = points[j].xpt[0] - points[i].xpt[0], dy = points[j].xpt[1] - points[i].xpt[1];
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
double approx::height_shift(const double *h) const
{
    for (int i = 0; i < npoints; i++)
        if (points[i].n0[2] == N_NONE) return points[i].xpt[2] - h[i];
    return 1.0;
}

// known, h: [npoints], zero on entry. A point that the pass did not reach gets the shift alone.
void approx::height_spread(double *known, double *h)
{
    known[0] = 1.0;
    for (int k = 0; k < ndir2; k++) {
        const int i = number(dir2[k].p1), j = number(dir2[k].p2);
        if (i < 0 || i >= nsta || j < 0) continue;
        carry_height(i, j, dir2[k].val[0], known, h);
    }
    const double shift = height_shift(h);
    for (int i = 0; i < npoints; i++)
        if (points[i].n0[2] != N_NONE) points[i].xpt[2] = h[i] + shift;
}

} // namespace vornengine
