// Points by direction and distance.

#include "approx/polar.h"

#include <math.h>

namespace vornengine {

int can_level(const approxdata *net) { return net->dim == 2 || (net->dim == 3 && net->ndir1 == net->ndir2); }

// The shot and its vertical angle share the index.
double level_length(const approxdata *net, int idist, int ishot)
{
    const double d = net->dist[idist].val[0];
    return net->dim == 3 ? d * cos(net->dir2[ishot].val[0]) : d;
}

void carry_position(const approxdata *net, int ishot, int idist, double turn, double *x, double *y)
{
    const double a = net->dir1[ishot].val[0] + turn, d = level_length(net, idist, ishot);
    *x = cos(a) * d + *x;
    *y = sin(a) * d + *y;
}

} // namespace vornengine
