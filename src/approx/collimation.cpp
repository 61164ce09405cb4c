// A start from two stations that sighted each other: a local frame with the first station at
// the origin and the second at (1, 0), scaled by a scale bar or by known points where the
// network has them. Lengths in metres once scaled, angles in radians.

#include "approx/collimation.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "approx/intersection.h"
#include "approx/scalebars.h"
#include "numerics/memory.h"

namespace vornengine {

// Why a pair is chosen; the value of iscale until the scale is made.
enum { BY_SHOTS = 0, BY_BAR = 1, BY_CONTROL = 2 };

static int eligible(const stationpair *pair, int why)
{
    if (why == BY_BAR) return pair->ibar >= 0;
    return why == BY_SHOTS || (pair->nknown[0] > 1 && pair->nknown[1] > 1);
}

// The first of the eligible pairs with most common shots, NULL without one.
static const stationpair *best_pair(const stationpair *tabpair, int npair, int why)
{
    const stationpair *best = NULL;
    for (const stationpair *pair = tabpair; pair < tabpair + npair; pair++)
        if (eligible(pair, why) && pair->ncommon > (best ? best->ncommon : 0)) best = pair;
    return best;
}

static void show_best(const approxdata *net, const stationpair *pair, int why)
{
    const char *name1 = net->points[pair->it1].name, *name2 = net->points[pair->it2].name;
    if (why == BY_BAR)
        fprintf(net->out, "the best pair (with scale bar) is:  %s  %s\n", name1, name2);
    else if (why == BY_CONTROL)
        fprintf(net->out, "the best pair (with control) is:  %s  %s\n", name1, name2);
    else
        fprintf(net->out, "the best pair is:  %s  %s\n", name1, name2);
}

// A pair with a scale bar comes before one with known points, and that before any other.
// Returns it and why, or NULL.
static const stationpair *choose_pair(const approxdata *net, const stationpair *tabpair, int npair, int *why)
{
    const int order[] = {BY_BAR, BY_CONTROL, BY_SHOTS};
    for (int k = 0; k < 3; k++) {
        const stationpair *pair = best_pair(tabpair, npair, order[k]);
        if (!pair) continue;
        *why = order[k];
        if (net->idebug) show_best(net, pair, *why);
        return pair;
    }
    return NULL;
}

void colli_base(const approxdata *net, spreadtables *tab, int i1, int i2)
{
    tab->xap[i1] = tab->yap[i1] = 0.0;
    tab->oap[i1] = -reading(net, tab, i1, i2);
    tab->xap[i2] = 1.0;
    tab->yap[i2] = 0.0;
    tab->oap[i2] = net->pi - reading(net, tab, i2, i1);
    tab->itheo[i1] = tab->itheo[i2] = THEO_DONE;
    for (int t = net->nsta; t < net->npoints; t++) {
        if (tab->table[i1][t] == 0 || tab->table[i2][t] == 0) continue;
        intersect(net, tab, i1, i2, t);
        tab->iobj[t - net->nsta] = OBJ_PLACED;
    }
    for (int s = 0; s < net->nsta; s++) {
        if (s == i1 || s == i2 || tab->table[i1][s] == 0 || tab->table[i2][s] == 0) continue;
        intersect(net, tab, i1, i2, s);
        tab->itheo[s] = THEO_PLACED;
    }
}

// Height of point p over station i at the origin, from the last vertical angle between them.
// Returns 1, or 0 without an angle.
static int height_over(const approxdata *net, const spreadtables *tab, int i, int p, double *z)
{
    int found = 0;
    for (int k = 0; k < net->ndir2; k++) {
        if (net->dir2[k].p1 != net->points + i || net->dir2[k].p2 != net->points + p) continue;
        *z = sqrt(tab->xap[p] * tab->xap[p] + tab->yap[p] * tab->yap[p]) * tan(net->dir2[k].val[0]);
        found = 1;
    }
    return found;
}

int scale_by_bar(const approxdata *net, const spreadtables *tab, int i, int idist, double *scale)
{
    int p1, p2;
    if (!bar_ends(net, idist, &p1, &p2)) {
        fprintf(net->out, "In spread: Strange pb with iscale and scale bars\n");
        return -1;
    }
    double z1 = 0.0, z2 = 0.0;
    if (net->dim == 3 && (!height_over(net, tab, i, p1, &z1) || !height_over(net, tab, i, p2, &z2))) {
        fprintf(net->out, "Strange in colli_spread: Cannot scale with the SB\n");
        return 0;
    }
    const double dx = tab->xap[p2] - tab->xap[p1], dy = tab->yap[p2] - tab->yap[p1], dz = z2 - z1;
    *scale = net->dist[idist].val[0] / sqrt(dx * dx + dy * dy + dz * dz);
    if (net->idebug) fprintf(net->out, "Observed scale bar gives a scale factor of %15.5lf\n", *scale);
    return 1;
}

// Scale from the first two known points with a shot from both stations, which may be points
// themselves. Returns 1, or 0 when there are fewer.
static int scale_by_control(const approxdata *net, const spreadtables *tab, int i1, int i2, double *scale)
{
    int q[2] = {-1, -1}, n = 0;
    for (int v = next_known(net, 0); v < net->npoints && n < 2; v = next_known(net, v + 1))
        if (tab->table[i1][v] > 0 && tab->table[i2][v] > 0) q[n++] = v;
    if (n < 2) {
        if (net->idebug) fprintf(net->out, "Could not scale with the control\n");
        return 0;
    }
    const point *a = net->points + q[0], *b = net->points + q[1];
    const double dx = b->xpt[0] - a->xpt[0], dy = b->xpt[1] - a->xpt[1];
    const double ex = tab->xap[q[1]] - tab->xap[q[0]], ey = tab->yap[q[1]] - tab->yap[q[0]];
    *scale = sqrt((dx * dx + dy * dy) / (ex * ex + ey * ey));
    if (net->idebug) fprintf(net->out, "Control points give a scale factor of %15.5lf\n", *scale);
    return 1;
}

// Forgets all that is known, and builds and scales the frame of one pair.
//   iscale  in, out  why the pair was chosen; then 1 with a true scale, 0 without
// Returns 0 or -1.
static int local_frame(const approxdata *net, spreadtables *tab, const stationpair *pair, int *iscale)
{
    memset(tab->itheo, 0, (size_t)net->nsta * sizeof(int));
    memset(tab->iobj, 0, (size_t)net->ntar * sizeof(int));
    memset(tab->xap, 0, (size_t)net->npoints * sizeof(double));
    memset(tab->yap, 0, (size_t)net->npoints * sizeof(double));
    colli_base(net, tab, pair->it1, pair->it2);
    double scale = 1.0;
    if (*iscale == BY_BAR)
        *iscale = scale_by_bar(net, tab, pair->it1, pair->ibar, &scale);
    else if (*iscale == BY_CONTROL)
        *iscale = scale_by_control(net, tab, pair->it1, pair->it2, &scale);
    if (*iscale < 0) return -1;
    if (*iscale == 0) fprintf(net->out, "colli_spread: Could not scale \n");
    for (int i = 0; i < net->npoints; i++) {
        tab->xap[i] *= scale;
        tab->yap[i] *= scale;
    }
    return 0;
}

// colli_spread on a zeroed table of pairs.
static int spread_from_pair(const approxdata *net, spreadtables *tab, stationpair *tabpair, int npair, int *iscale)
{
    if (buildtabpair(net, tab, tabpair, npair) < 0) return -1;
    const stationpair *best = choose_pair(net, tabpair, npair, iscale);
    if (best) return local_frame(net, tab, best, iscale);
    fprintf(net->out, "In spread: no two stations that sighted each other have a common shot\n");
    return -1;
}

int colli_spread(const approxdata *net, spreadtables *tab, int npair, int *iscale)
{
    stationpair *tabpair = (stationpair *)zeroed(npair, sizeof *tabpair);
    if (!tabpair) {
        fprintf(net->out, "In spread: pb with tabpair\n");
        return -1;
    }
    const int result = spread_from_pair(net, tab, tabpair, npair, iscale);
    free(tabpair);
    return result;
}

} // namespace vornengine
