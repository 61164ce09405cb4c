// Approximation codes and numbering of the unknowns.
//
// set_prepare moves the coordinates (metres) into the working frame of the earth model,
// counts the unknowns and turns the codes of n0, n1 and ipar into column numbers: first
// kind, coordinates, targets before stations; second kind, orientations, constants of
// groups, camera parameters, lump parameters.

#include "vorn/run.h"

#include "vorn/records.h"

namespace vornengine {

// Whether a coordinate still has no value.
static int lacks_value(const point *p)
{
    for (int c = 0; c < 3; c++)
        if (p->n0[c] == N_MISSING || p->n0[c] == N_FIXED_MISSING) return 1;
    return 0;
}

// A station with half of its plane position fixed counts as one without approximate values.
static void forget_half_fixed(point *p)
{
    const int a = p->n0[0], b = p->n0[1];
    if (a == N_NONE && b == N_UNKNOWN)
        p->n0[1] = N_MISSING;
    else if (a == N_UNKNOWN && b == N_NONE)
        p->n0[0] = N_MISSING;
    else
        return;
    if (p->n1[2] == N_UNKNOWN) p->n1[2] = N_MISSING;
}

void vornrun::trigapprox()
{
    if (iapprox == 0)
        for (int i = 0; i < npoints && iapprox == 0; i++)
            if (lacks_value(points + i)) iapprox = 9;
    if (iapprox != 9) return;
    for (int i = 0; i < nsta; i++) forget_half_fixed(points + i);
}

// Cartesian coordinates: the height of a point above the sphere.
static void cartesian_frame(const settings *set, point *points, int n)
{
    for (point *p = points; p < points + n; p++) {
        for (int c = 0; c < 3; c++) p->xpt[c] -= set->trans[c];
        const double *x = p->xpt, d = set->radius + set->horigin + x[2];
        p->h = (x[0] * x[0] + x[1] * x[1]) / (2 * d) + set->horigin + x[2];
    }
}

// Mixed coordinates: the given third one is a height, the working one a coordinate of the
// plane tangent at the origin.
static void mixed_frame(const settings *set, point *points, int n)
{
    const double *trans = set->trans;
    for (point *p = points; p < points + n; p++) {
        double *x = p->xpt;
        x[0] -= trans[0];
        x[1] -= trans[1];
        p->h = x[2] - trans[2];
        if (set->dim != 3) continue;
        const double d = set->radius + p->h;
        x[2] -= (x[0] * x[0] + x[1] * x[1]) / (2 * d) + set->horigin;
        x[2] -= trans[2];
    }
}

// A count, kept within what an int holds.
static int as_count(long long n) { return n < 0 ? 0 : n > 2000000000LL ? 2000000000 : (int)n; }

void vornrun::count_unknowns()
{
    nunk1 = as_count(3LL * npoints - ia1[0] - ia1[1] - ia1[2]);
    long long n = 3LL * nsta - ia1[3] - ia1[4] - ia1[5] + ia1[6] + ia1[7] + ia1[8];
    for (camera *c = cameras; c < cameras + ncamera; c++)
        for (int p = 0; p < c->npar; p++)
            if (c->ipar[p] != N_NONE) c->ipar[p] = as_count(n++);
    for (lump *l = lumps; l < lumps + nlump; l++)
        for (int e = 0; e < l->nepoch - 1; e++) {
            l->iunk[e] = as_count(n);
            n += 7; // the transformation to that epoch
        }
    nunk2 = as_count(n);
}

// Numbers the coordinates of one range of points from *next on.
static void number_coordinates(point *first, point *last, int *next)
{
    for (point *p = first; p < last; p++)
        for (int c = 0; c < 3; c++)
            if (p->n0[c] != N_NONE) p->n0[c] = (*next)++;
}

// Numbers the orientations of the stations from 0 on; returns their count.
static int number_orientations(point *first, point *last)
{
    int n = 0;
    for (point *p = first; p < last; p++)
        for (int c = 0; c < 3; c++)
            if (p->n1[c] != N_NONE) p->n1[c] = n++;
    return n;
}

// Numbers the constants of the groups from next on: the stations of a group share one
// unknown for one constant. A slot that holds a group's index is compared as it stands,
// renumbered in place or not, so one renumbered earlier can match a later group. Numbers
// can then pass the count of constants; nunk2 grows with them, so that every number has
// its column.
void vornrun::number_constants(int next)
{
    const int ngroup = pproject->ngroups;
    for (int g = 0; g < ngroup; g++)
        for (int c = 3; c < 6; c++) {
            int used = 0;
            for (int i = 0; i < nsta; i++)
                if (points[i].n1[c] == g) {
                    points[i].n1[c] = next;
                    used = 1;
                }
            next += used;
        }
    if (next > nunk2) nunk2 = next;
}

static void keep_start(point *points, int n)
{
    for (point *p = points; p < points + n; p++) {
        for (int c = 0; c < 3; c++) p->x0[c] = p->xpt[c];
        for (int c = 0; c < 5; c++) p->e0[c] = p->xex[c];
    }
}

void vornrun::set_prepare()
{
    if (iearth == 1) cartesian_frame(this, points, npoints);
    if (iearth == 2) mixed_frame(this, points, npoints);
    count_unknowns();
    keep_start(points, npoints);

    int next = 0;
    number_coordinates(points + nsta, points + npoints, &next);
    number_coordinates(points, points + nsta, &next);
    // Heights to be held without a value were all counted as fixed, but only the first of them is.
    if (next > nunk1) nunk1 = next;
    number_constants(number_orientations(points, points + nsta));
    nunk = as_count((long long)nunk1 + nunk2);
}

} // namespace vornengine
