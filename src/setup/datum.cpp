// Datum check: decides what holds the network and whether it is enough.
//
// A network is weighted (no datum conditions), free (ndatum inner conditions) or held by
// fixed items. Where fixed items are just short of what is needed a rotation is fixed as
// well. Reads the codes n0, n1, defdatum and the counts ia1 before numbering; writes
// ndatum, datum and sometimes n1, ia1, coordinates and imixed of the project.
//
// datum[0..2] translation along x1, x2, x3; [3..5] rotation Rx1, Rx2, Rx3; [6] scale.
// Letters: c1, c2, c3 fixed coordinates ia1[0..2]; r1, r2, r3 fixed rotations ia1[3..5].

#include "vorn/run.h"

#include <string.h>

#include "loading/numbers.h"
#include "vorn/records.h"

namespace vornengine {

// How many of the steps above 0, above 1, ..., up to most, a count has taken.
static int steps(int count, int most) { return count < 0 ? 0 : count < most ? count : most; }

static int larger(int a, int b) { return a > b ? a : b; }

// Too few points carry the datum in coordinate number i.
static int too_few(FILE *out, int i)
{
    fprintf(out, "datumcheck: not enough coordinate ");
    fprintf(out, "# %d to define the datum\n", i);
    return -1;
}

int vornrun::datum1D()
{
    if (ia1[2] != 0) {
        if (idebug) fprintf(out, "\nTo define the datum, %d coordonates fixed\n\n", ia1[2]);
        return 0;
    }
    if (nweighted == npoints) {
        if (idebug) fprintf(out, "\ndatumcheck: Weighted network..\n");
        ndatum = 0;
        return 0;
    }
    if (idebug) fprintf(out, "\ndatumcheck: Free network..\n");
    ndatum = 1;
    datum[2] = 0.0;
    int unused = 0;
    for (const point *p = points; p < points + npoints; p++) {
        if (p->defdatum[2] == DATUM_USED) continue;
        if (idebug) {
            fprintf(out, "Coordinate #3 of point %s not ", p->name);
            fprintf(out, "used for datum definition\n");
        }
        unused++;
    }
    return unused > npoints - 1 ? too_few(out, 0) : 0;
}

// A free network in dim 2 or 3 needs dim points that carry the datum, coordinate by coordinate.
int vornrun::enough_for_datum()
{
    int unused[3] = {0, 0, 0};
    for (const point *p = points; p < points + npoints; p++)
        for (int i = 0; i < dim; i++) {
            if (p->defdatum[i] == DATUM_USED) continue;
            if (idebug) {
                fprintf(out, "Coordinate #%d of point %s ", i, p->name);
                fprintf(out, "not used for datum ");
                fprintf(out, "definition\n");
            }
            unused[i]++;
        }
    for (int i = 0; i < dim; i++)
        if (unused[i] > npoints - dim) return too_few(out, i);
    return 0;
}

int vornrun::free2D()
{
    if (nweighted >= 4) {
        if (idebug) fprintf(out, "\nWeighted network..\n");
        ndatum = 0;
        return 0;
    }
    if (idebug) fprintf(out, "\nFree network..\n");
    datum[0] = datum[1] = datum[5] = 0.0;
    ndatum = 3;
    if (ndist == 0) { // no distance: the scale is free too
        datum[6] = 0.0;
        ndatum = 4;
    }
    return enough_for_datum();
}

int vornrun::datum2D()
{
    const int c1 = ia1[0], c2 = ia1[1];
    if (c1 + c2 + ia1[5] == 0) return free2D();

    if (c1 == 1 && c2 == 1 && ia1[5] == 0) // one fixed station: its orientation is fixed as well
        for (int i = 0; i < nsta; i++)
            if (points[i].n0[0] == N_NONE && points[i].n0[1] == N_NONE) {
                points[i].n1[2] = N_NONE;
                ia1[5] = 1;
                break;
            }

    const int count = (ia1[5] > 0) + steps(c1, 2) + steps(c2, 2) + (ndist > 0);
    if (count >= 4) return 0;
    fprintf(out, "datumcheck: Not enough information to define a datum\n");
    fprintf(out, "\nTo define the datum, %d x1 fixed\n", c1);
    fprintf(out, "                     %d x2 \n", c2);
    fprintf(out, "                     %d rotations \n", ia1[5]);
    fprintf(out, "                     %d distances \n\n", ndist);
    return -22;
}

// Heights of instrument and target need a levelled instrument; others are set to 0.
static void drop_heights(FILE *out, const char *list, measure *m, int n)
{
    for (int i = 0; i < n; i++, m++) {
        if ((m->h1 == 0.0 && m->h2 == 0.0) || m->p1->typ == 1) continue;
        fprintf(out, "datumcheck: Cannot do ");
        fprintf(out, "%s reduction with non-levelled instrument\n", list);
        fprintf(out, "     %s  %s\n", m->p1->name, m->p2->name);
        m->h1 = m->h2 = 0.0;
    }
}

// Conditions of a free network in space. Returns -3 when some rotations are fixed that
// leave the others undecided.
int vornrun::conditions3D()
{
    datum[0] = datum[1] = datum[2] = 0.0;
    ndatum = 3;
    if (naz < 1) {
        if (ia1[5] != 0) {
            fprintf(out, "\ndatumcheck: Strange...\n");
            fprintf(out, "Some Rx3 fixed\n");
            return -3;
        }
        datum[5] = 0.0;
        ndatum++;
    }
    if (ndifh < 1) {
        if (ia1[3] == 0) { // six conditions whatever azimuths give; Rx2 may be fixed without Rx1
            datum[3] = datum[4] = 0.0;
            ndatum = 6;
        } else if (ia1[4] == 0) {
            fprintf(out, "\ndatumcheck: Strange...\n");
            fprintf(out, "No Rx2 fixed but %d Rx1 fixed\n", ia1[3]);
            return -3;
        }
    }
    if (ndist == 0) {
        datum[6] = 0.0;
        ndatum++;
    }
    if (pproject->igps == 9) ndatum = 3; // baselines give all but the position
    return 0;
}

int vornrun::free3D()
{
    if (nweighted >= 7) {
        if (idebug) fprintf(out, "\nWeighted network..\n");
        ndatum = 0;
        return 0;
    }
    if (idebug) fprintf(out, "\nFree network..\n");
    if (conditions3D() != 0) return -3;
    return enough_for_datum();
}

// One fixed point: the rotations of the first station that is fixed are fixed as well.
// Height differences carry the vertical, so then only Rx3.
void vornrun::fix_rotations3D()
{
    int *r = ia1 + 3;
    for (point *p = points; p < points + nsta; p++) {
        if (p->n0[0] != N_NONE || p->n0[1] != N_NONE) continue;
        if (p->n0[2] != N_NONE && p->defdatum[2] != DATUM_FIXED_HEIGHT) continue;
        for (int i = 0; i < 3; i++) {
            if (r[i] != 0 || (i < 2 && ndifh >= 1)) continue;
            p->n1[i] = N_NONE;
            r[i] = 1;
        }
        return;
    }
}

// Constraints on position and rotation that the fixed items and the observations give.
int vornrun::constraints3D()
{
    const int r1 = ia1[3], r2 = ia1[4], r3 = ia1[5];
    int k = steps(ia1[0], 3) + steps(ia1[1], 3) + steps(larger(ia1[2], nfixh), 3);
    k += r1 > 0 || ndifh > 0;
    k += r2 > 0 || ndifh > 0;
    k += r3 > 0;
    if (pproject->igps == 9 || pproject->igps == 1) { // baselines give the orientation
        k += r1 == 0 && ndifh == 0;
        k += r2 == 0 || ndifh == 0;
        k += r3 == 0;
    }
    return k;
}

void vornrun::datum_shortage3D()
{
    int nx3 = 0;
    for (const point *p = points; p < points + npoints; p++)
        nx3 += p->n0[2] == N_NONE || p->defdatum[2] == DATUM_FIXED_HEIGHT;
    fprintf(out, "datumcheck: Not enough information to define a datum\n");
    fprintf(out, "\nTo define the datum, %d x1 fixed\n", ia1[0]);
    fprintf(out, "                     %d x2 \n", ia1[1]);
    fprintf(out, "                     %d x3 \n", nx3);
    fprintf(out, "                     %d Rx1 \n", ia1[3]);
    fprintf(out, "                     %d Rx2 \n", ia1[4]);
    fprintf(out, "                     %d Rx3 \n", ia1[5]);
    fprintf(out, "                     %d distances \n\n", ndist);
}

// Mixed datum: the last fully fixed point becomes the origin. Returns -22 when there is none.
int vornrun::mixed_datum()
{
    for (int i = 0; i < npoints; i++) {
        const point *p = points + i;
        if (p->n0[0] != N_NONE || p->n0[1] != N_NONE || p->n0[2] != N_NONE) continue;
        fprintf(out, "\nOnly %s fixed, experiment with mixed datum\n", p->name);
        pproject->imixed = i;
        ndatum = 3;
    }
    const int m = pproject->imixed;
    if (m < 0 || m >= npoints) return -22;

    const double origin[3] = {points[m].xpt[0], points[m].xpt[1], points[m].xpt[2]};
    for (point *p = points; p < points + npoints; p++)
        for (int c = 0; c < 3; c++) p->x0[c] = p->xpt[c] -= origin[c];
    return 0;
}

int vornrun::fixed3D()
{
    if (ia1[0] == 1 && ia1[1] == 1 && (ia1[2] == 1 || nfixh == 1)) fix_rotations3D();

    const int k = constraints3D();
    const int d = ndist > 0 || pproject->igps == 9 || pproject->igps == 1;
    if (k + d < 7) {
        datum_shortage3D(); // by itself no failure
        if (ia1[0] == 1 && ia1[1] == 1 && ia1[2] == 1 && ndist > 0) return mixed_datum();
        return 0;
    }
    if (k == 6 && d == 1 && ia1[5] == 1 && naz > 0) // azimuths free the fixed rotation again
        for (point *p = points; p < points + nsta; p++)
            if (p->n1[2] == N_NONE) {
                p->n1[2] = N_UNKNOWN;
                ia1[5] = 0;
            }
    return 0;
}

int vornrun::datum3D()
{
    drop_heights(out, "dir1", dir1, ndir1);
    drop_heights(out, "dir2", dir2, ndir2);
    const long long s = (long long)ia1[0] + ia1[1] + ia1[2] + ia1[5] + nfixh - 2LL * nstat100;
    return s == 0 ? free3D() : fixed3D();
}

// How often the name of a point that lacks observations is met in the height differences.
// A rough test: it compares, as often as there are height differences, with height
// difference number free only, and counts every comparison in which the point's name is
// equal or greater.
static int heights_of(const point *p, int free, const measure *difh, int ndifh)
{
    if (ndifh <= 0 || p->defdatum[0] != DATUM_WEIGHTED || p->defdatum[1] != DATUM_WEIGHTED) return 0;
    if (free >= ndifh) return 0; // there is none of that number
    const measure *m = difh + free;
    const long long nend = (strcmp(p->name, m->p1->name) >= 0) + (strcmp(p->name, m->p2->name) >= 0);
    return count_of(ndifh * nend);
}

// Every point needs as many observations as it has free coordinates. Returns 0 or -7.
int vornrun::enough_observations()
{
    for (const point *p = points; p < points + npoints; p++) {
        if (p->ntie >= dim) continue;
        const int free = (p->n0[0] != N_NONE) + (p->n0[1] != N_NONE) + (p->n0[2] != N_NONE);
        if (p->ntie >= free) continue;
        fprintf(out, "\ndatumcheck: Not enough observations for %s\n", p->name);
        const int m = heights_of(p, free, difh, ndifh);
        if (m == 0) return -7;
        if (idebug) fprintf(out, "\ndatumcheck:%s shot only in height (%d)\n", p->name, m);
    }
    return 0;
}

int vornrun::datumcheck()
{
    int result;
    switch (dim) {
    case 1: result = datum1D(); break;
    case 2: result = datum2D(); break;
    case 3: result = datum3D(); break;
    default: fprintf(out, "\ndatumcheck: Problem with the dimension\n"); return -2;
    }
    return result != 0 ? result : enough_observations();
}

} // namespace vornengine
