// Position of a point from the directions of two placed and oriented stations.
//
// The rays y = yap + t (x - xap) with t = tan(reading + orientation) meet at
//   x = (A - B) / (t2 - t1),  y = (A t1 - B t2) / (t2 - t1),
//   A = t2 x2 - y2,  B = t1 x1 - y1
// No test for parallel rays: they give what the division gives.

#include "approx/approx.h"

#include <math.h>

namespace vornengine {

void approx::intersect(int i1, int i2, int p, int **table, double *xap, double *yap, double *oap)
{
    const double t1 = tan(dir1[table[i1][p] - 1].val[0] + oap[i1]);
    const double t2 = tan(dir1[table[i2][p] - 1].val[0] + oap[i2]);
    if (idebug)
        fprintf(out, "       intersection of   %s by theo %s and %s\n", points[p].name, points[i1].name,
                points[i2].name);
    const double a = t2 * xap[i2] - yap[i2], b = t1 * xap[i1] - yap[i1];
    xap[p] = (a - b) / (t2 - t1);
    yap[p] = (a * t1 - b * t2) / (t2 - t1);
}

} // namespace vornengine
