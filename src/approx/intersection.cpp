// Rays of directions in the plane: their angles, and the positions where two of them meet.
//
// The rays y = yap + t (x - xap) with t = tan(reading + orientation) meet at
//   x = (A - B) / (t2 - t1),  y = (A t1 - B t2) / (t2 - t1),
//   A = t2 x2 - y2,  B = t1 x1 - y1
// From (0, 0) and (1, 0), where y follows from the first ray alone:
//   x = t2 / (t2 - t1),  y = t1 x

#include "approx/intersection.h"

#include <math.h>

namespace vornengine {

const double PARALLEL = 1e-5; // least difference of the tangents of two rays in meet

double wrap(double angle)
{
    const double pi = 4 * atan(1.0);
    if (angle > pi) return angle - 2 * pi;
    if (angle < -pi) return angle + 2 * pi;
    return angle;
}

double reading(const approxdata *net, const spreadtables *tab, int i, int p)
{
    return net->dir1[tab->table[i][p] - 1].val[0];
}

void meet(double a, double b, double *x, double *y)
{
    const double t1 = tan(a), t2 = tan(b);
    *x = *y = 0.0;
    if (!(fabs(t2 - t1) > PARALLEL)) return; // NaN fails too
    *x = t2 / (t2 - t1);
    *y = t1 * *x;
}

// No test for parallel rays: they give what the division gives.
void intersect(const approxdata *net, spreadtables *tab, int i1, int i2, int p)
{
    const double t1 = tan(reading(net, tab, i1, p) + tab->oap[i1]);
    const double t2 = tan(reading(net, tab, i2, p) + tab->oap[i2]);
    if (net->idebug)
        fprintf(net->out, "       intersection of   %s by theo %s and %s\n", net->points[p].name, net->points[i1].name,
                net->points[i2].name);
    const double a = t2 * tab->xap[i2] - tab->yap[i2], b = t1 * tab->xap[i1] - tab->yap[i1];
    tab->xap[p] = (a - b) / (t2 - t1);
    tab->yap[p] = (a * t1 - b * t2) / (t2 - t1);
}

// The first finished station other than i that shot the point, or -1.
static int finished_partner(const approxdata *net, const spreadtables *tab, int i, int p)
{
    for (int e = net->seenby.first[p]; e < net->seenby.first[p + 1]; e++)
        if (net->seenby.to[e] != i && tab->itheo[net->seenby.to[e]] == THEO_DONE) return net->seenby.to[e];
    return -1;
}

// Targets that station i and another finished station shot.
void intersect_targets(const approxdata *net, spreadtables *tab, int i)
{
    for (int e = net->seen.first[i]; e < net->seen.first[i + 1]; e++) {
        const int p = net->seen.to[e];
        if (p < net->nsta || tab->iobj[p - net->nsta] != OBJ_UNKNOWN) continue;
        const int k = finished_partner(net, tab, i, p);
        if (k < 0) continue;
        intersect(net, tab, i, k, p);
        tab->iobj[p - net->nsta] = OBJ_PLACED;
    }
}

// Stations without a position that station i and another finished station shot. One that gets
// its position and had its orientation is finished, without leaving the count of those to do.
void intersect_stations(const approxdata *net, spreadtables *tab, int i)
{
    for (int e = net->seen.first[i]; e < net->seen.first[i + 1]; e++) {
        const int s = net->seen.to[e];
        if (s >= net->nsta || (tab->itheo[s] != THEO_UNKNOWN && tab->itheo[s] != THEO_ORIENTED)) continue;
        const int k = finished_partner(net, tab, i, s);
        if (k < 0) continue;
        intersect(net, tab, i, k, s);
        tab->itheo[s] = tab->itheo[s] == THEO_UNKNOWN ? THEO_PLACED : THEO_DONE;
    }
}

} // namespace vornengine
