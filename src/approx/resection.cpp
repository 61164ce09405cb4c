// Position and orientation of a station from its directions to points of known position.
//
// With x, y of the second and third aimed point relative to the first and their directions
// alp1, alp2 relative to the first direction, the station lies at (r, m r) relative to the
// first point:
//   m = (y1/t1 - x1 + x2 - y2/t2) / (x1/t1 + y1 - y2 - x2/t2),  t = tan(alp)
//   r = ((x1/t1 + y1) m + x1 - y1/t1) / (m^2 + 1)
// No test for the danger circle: there the values are what the division gives.

#include "approx/resection.h"

#include <math.h>

#include "approx/intersection.h"
#include "approx/polar.h"

namespace vornengine {

enum { MAX_SHOTS = 5 }; // shots that a resection looks at

const double NEAR_SINGULAR = 1e-5;  // radians from an angle with tangent 0 or without one
const double MIN_TOLERANCE = 1.0;   // metres between measured and computed distance
const double PART_TOLERANCE = 10.0; // the tolerance is at least the distance divided by this

// Moves an angle out of the way of the poles of the formula; -pi/2 is not one of the guarded.
static void guard_angle(const approxdata *net, double *alp, int k)
{
    if (fabs(alp[k]) < NEAR_SINGULAR) {
        if (net->idebug) fprintf(net->out, "Warning: Play around with alp[%d] around 0.\n", k);
        alp[k] = NEAR_SINGULAR;
    }
    if (fabs(alp[k] - net->pi / 2) < NEAR_SINGULAR) {
        if (net->idebug) fprintf(net->out, "Warning: Play around with alp[%d] around Pi/2.\n", k);
        alp[k] = alp[k] <= net->pi / 2 ? 1.57079 : 1.5708;
    }
}

// Station relative to the first aimed point.
static void place_station(const threeshots *three, double *x, double *y)
{
    const double *xx = three->xx, *yy = three->yy, *alp = three->alp;
    const double t1 = tan(alp[1]), t2 = tan(alp[2]);
    const double x1 = xx[1], y1 = yy[1], x2 = xx[2], y2 = yy[2];
    const double m = (y1 / t1 - x1 + x2 - y2 / t2) / (x1 / t1 + y1 - y2 - x2 / t2);
    const double r = ((x1 / t1 + y1) * m + x1 - y1 / t1) / (m * m + 1);
    *x = r;
    *y = m * r;
}

void resec3(const approxdata *net, spreadtables *tab, int i, const int *ishot, threeshots *three)
{
    double *xx = three->xx, *yy = three->yy, *alp = three->alp;
    for (int k = 0; k < 3; k++) {
        const measure *shot = net->dir1 + ishot[k];
        const int p = point_number(net, shot->p2);
        if (net->idebug)
            fprintf(net->out, "%s %s   %15.5lf\n", shot->p1->name, shot->p2->name,
                    net->pproject->htoraw(1, shot->val[0]));
        alp[k] = shot->val[0];
        xx[k] = tab->xap[p];
        yy[k] = tab->yap[p];
    }
    for (int k = 1; k < 3; k++) {
        alp[k] = wrap(alp[k] - alp[0]);
        xx[k] -= xx[0];
        yy[k] -= yy[0];
    }
    for (int k = 1; k < 3; k++) guard_angle(net, alp, k);

    double x, y;
    place_station(three, &x, &y);
    tab->oap[i] = wrap(atan2(-y, -x) - alp[0]);
    tab->xap[i] = x + xx[0];
    tab->yap[i] = y + yy[0];
    for (int k = 1; k < 3; k++) {
        xx[k] += xx[0];
        yy[k] += yy[0];
    }
}

// Shots of station i to known targets, then to known stations; returns their number, at most 5.
static int known_shots(const approxdata *net, const spreadtables *tab, int i, int *ishot)
{
    int n = 0;
    for (int e = net->seen.first[i]; e < net->seen.first[i + 1] && n < MAX_SHOTS; e++)
        if (net->seen.to[e] >= net->nsta && has_position(net, tab, net->seen.to[e])) ishot[n++] = net->seen.item[e];
    for (int e = net->seen.first[i]; e < net->seen.first[i + 1] && n < MAX_SHOTS; e++)
        if (net->seen.to[e] < net->nsta && has_position(net, tab, net->seen.to[e])) ishot[n++] = net->seen.item[e];
    return n;
}

// Compares the first distance along each of the three shots with the computed one. Returns
// the number of contradictions, or -1 when no distance could be compared.
static int bad_distances(const approxdata *net, const spreadtables *tab, int i, const int *ishot,
                         const threeshots *three)
{
    int nbad = -1;
    if (istotal(net, i) != 1 || !can_level(net)) return nbad;
    for (int k = 0; k < 3; k++) {
        const measure *shot = net->dir1 + ishot[k];
        const int e = pairlist_find(&net->lengths, i, point_number(net, shot->p2));
        if (e < 0) continue;
        if (nbad == -1) nbad = 0;
        const double d = level_length(net, net->lengths.item[e], ishot[k]);
        const double dx = three->xx[k] - tab->xap[i], dy = three->yy[k] - tab->yap[i], c = sqrt(dx * dx + dy * dy);
        const double tolerance = d / PART_TOLERANCE < MIN_TOLERANCE ? MIN_TOLERANCE : d / PART_TOLERANCE;
        if (!(fabs(d - c) > tolerance)) continue;
        nbad++;
        if (!net->idebug) continue;
        fprintf(net->out, "Problem with distance between %s %s\n", shot->p1->name, shot->p2->name);
        fprintf(net->out, "   measured horizontal %15.5lf\n   computed horizontal %15.5lf\n", d, c);
    }
    return nbad;
}

// Places station i anew with the shots beyond the third: 3, 1, 2 of four, 3, 4, 2 of five. The
// result replaces the first one; without distances a large turn between the two is reported.
static void use_extra_shots(const approxdata *net, spreadtables *tab, int i, int n, int nbad, int *ishot)
{
    threeshots three;
    if (net->idebug) fprintf(net->out, "Check the resection with extra shots\n");
    const double o = tab->oap[i];
    ishot[0] = ishot[3];
    if (n == MAX_SHOTS) ishot[1] = ishot[4];
    resec3(net, tab, i, ishot, &three);
    if (nbad == -1 && fabs(tab->oap[i] - o) > net->pi / 3) // not wrapped: two orientations about pi may warn
        fprintf(net->out, "Warning: The resection for %s does not check\n", net->points[i].name);
}

// Places targets without a position by direction and distance from station i.
static void polar_targets(const approxdata *net, spreadtables *tab, int i)
{
    if (!can_level(net)) return;
    for (int e = net->lengths.first[i]; e < net->lengths.first[i + 1]; e++) {
        const int j = net->lengths.to[e];
        if (j < net->nsta || tab->iobj[j - net->nsta] == OBJ_PLACED) continue;
        const int s = pairlist_find(&net->shots, i, j);
        if (s < 0) continue;
        tab->xap[j] = tab->xap[i];
        tab->yap[j] = tab->yap[i];
        carry_position(net, net->shots.item[s], net->lengths.item[e], tab->oap[i], tab->xap + j, tab->yap + j);
        tab->iobj[j - net->nsta] = OBJ_PLACED;
    }
}

int resec(const approxdata *net, spreadtables *tab, int iscale, int i)
{
    int ishot[MAX_SHOTS];
    const int n = known_shots(net, tab, i, ishot);
    if (n < 3) {
        fprintf(net->out, "resec: Cannot find 3 fixed points to resect %s\n", net->points[i].name);
        return -1;
    }
    threeshots three;
    resec3(net, tab, i, ishot, &three);
    const int nbad = bad_distances(net, tab, i, ishot, &three);
    if (nbad == 0 && net->idebug) fprintf(net->out, "Resection checked with distances\n");
    if (nbad != 0 && n > 3) use_extra_shots(net, tab, i, n, nbad, ishot);
    if (iscale == 1) polar_targets(net, tab, i);
    return 0;
}

} // namespace vornengine
