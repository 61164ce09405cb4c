// A start from two stations that sighted each other: a local frame with the first station at
// the origin and the second at (1, 0), scaled by a scale bar or by known points where the
// network has them. Lengths in metres once scaled, angles in radians.

#include "approx/approx.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "numerics/memory.h"

namespace vornengine {

// Why a pair is chosen; the value of iscale until the scale is made.
enum { BY_SHOTS = 0, BY_BAR = 1, BY_CONTROL = 2 };

static int eligible(const int *row, int why)
{
    if (why == BY_BAR) return row[3] >= 0;
    return why == BY_SHOTS || (row[4] > 1 && row[5] > 1);
}

// The first of the eligible rows with most common shots, -1 without one.
static int best_pair(int (*tabpair)[7], int npair, int why)
{
    int best = -1, most = 0;
    for (int r = 0; r < npair; r++) {
        if (!eligible(tabpair[r], why) || tabpair[r][2] <= most) continue;
        best = r;
        most = tabpair[r][2];
    }
    return best;
}

void approx::show_best(const int *row, int why) const
{
    const char *name1 = points[row[0]].name, *name2 = points[row[1]].name;
    if (why == BY_BAR)
        fprintf(out, "the best pair (with scale bar) is:  %s  %s\n", name1, name2);
    else if (why == BY_CONTROL)
        fprintf(out, "the best pair (with control) is:  %s  %s\n", name1, name2);
    else
        fprintf(out, "the best pair is:  %s  %s\n", name1, name2);
}

// A pair with a scale bar comes before one with known points, and that before any other.
// Returns its row and why, or -1.
int approx::choose_pair(int (*tabpair)[7], int npair, int *why) const
{
    const int order[] = {BY_BAR, BY_CONTROL, BY_SHOTS};
    for (int k = 0; k < 3; k++) {
        const int r = best_pair(tabpair, npair, order[k]);
        if (r < 0) continue;
        *why = order[k];
        if (idebug) show_best(tabpair[r], *why);
        return r;
    }
    return -1;
}

void approx::colli_base(int i1, int i2, int **table, int *itheo, int *iobj, double *xap, double *yap, double *oap)
{
    xap[i1] = yap[i1] = 0.0;
    oap[i1] = -dir1[table[i1][i2] - 1].val[0];
    xap[i2] = 1.0;
    yap[i2] = 0.0;
    oap[i2] = pi - dir1[table[i2][i1] - 1].val[0];
    itheo[i1] = itheo[i2] = THEO_DONE;
    for (int t = nsta; t < npoints; t++) {
        if (table[i1][t] == 0 || table[i2][t] == 0) continue;
        intersect(i1, i2, t, table, xap, yap, oap);
        iobj[t - nsta] = OBJ_PLACED;
    }
    for (int s = 0; s < nsta; s++) {
        if (s == i1 || s == i2 || table[i1][s] == 0 || table[i2][s] == 0) continue;
        intersect(i1, i2, s, table, xap, yap, oap);
        itheo[s] = THEO_PLACED;
    }
}

// Heights of two points over station i from its last vertical angles to them, at horizontal
// lengths l1 and l2. Returns 0, or -1 without an angle to both.
int approx::heights_over(int i, int p1, int p2, double l1, double l2, double *z1, double *z2) const
{
    int n1 = 0, n2 = 0;
    for (int k = 0; k < ndir2; k++) {
        if (dir2[k].p1 != points + i) continue;
        if (dir2[k].p2 == points + p1) {
            *z1 = l1 * tan(dir2[k].val[0]);
            n1 = 1;
        }
        if (dir2[k].p2 == points + p2) {
            *z2 = l2 * tan(dir2[k].val[0]);
            n2 = 1;
        }
    }
    return n1 && n2 ? 0 : -1;
}

// Scale from the distance between two targets that stand in the frame of station i. Returns 1,
// 0 without vertical angles to both, or -1 when the ends of the distance are not targets.
int approx::scale_by_bar(int i, int idist, const double *xap, const double *yap, double *scale) const
{
    int p1, p2;
    if (!bar_ends(idist, &p1, &p2)) {
        fprintf(out, "In spread: Strange pb with iscale and scale bars\n");
        return -1;
    }
    double z1 = 0.0, z2 = 0.0;
    const double l1 = sqrt(xap[p1] * xap[p1] + yap[p1] * yap[p1]), l2 = sqrt(xap[p2] * xap[p2] + yap[p2] * yap[p2]);
    if (dim == 3 && heights_over(i, p1, p2, l1, l2, &z1, &z2) != 0) {
        fprintf(out, "Strange in colli_spread: Cannot scale with the SB\n");
        return 0;
    }
    const double dx = xap[p2] - xap[p1], dy = yap[p2] - yap[p1], dz = z2 - z1;
    *scale = dist[idist].val[0] / sqrt(dx * dx + dy * dy + dz * dz);
    if (idebug) fprintf(out, "Observed scale bar gives a scale factor of %15.5lf\n", *scale);
    return 1;
}

// Scale from the first two known points with a shot from both stations, which may be points
// themselves. Returns 1, or 0 when there are fewer.
int approx::scale_by_control(int i1, int i2, int **table, const double *xap, const double *yap, double *scale) const
{
    int q[2] = {-1, -1}, n = 0;
    for (int v = next_known(0); v < npoints && n < 2; v = next_known(v + 1))
        if (table[i1][v] > 0 && table[i2][v] > 0) q[n++] = v;
    if (n < 2) {
        if (idebug) fprintf(out, "Could not scale with the control\n");
        return 0;
    }
    const point *a = points + q[0], *b = points + q[1];
    const double dx = b->xpt[0] - a->xpt[0], dy = b->xpt[1] - a->xpt[1];
    const double ex = xap[q[1]] - xap[q[0]], ey = yap[q[1]] - yap[q[0]];
    *scale = sqrt((dx * dx + dy * dy) / (ex * ex + ey * ey));
    if (idebug) fprintf(out, "Control points give a scale factor of %15.5lf\n", *scale);
    return 1;
}

// Forgets all that is known, and builds and scales the frame of one row of the table of pairs.
//   iscale  in, out  why the pair was chosen; then 1 with a true scale, 0 without
// Returns 0 or -1.
int approx::local_frame(const int *row, int *iscale, int **table, int *itheo, int *iobj, double *xap, double *yap,
                        double *oap)
{
    memset(itheo, 0, (size_t)nsta * sizeof(int));
    memset(iobj, 0, (size_t)ntar * sizeof(int));
    memset(xap, 0, (size_t)npoints * sizeof(double));
    memset(yap, 0, (size_t)npoints * sizeof(double));
    colli_base(row[0], row[1], table, itheo, iobj, xap, yap, oap);
    double scale = 1.0;
    if (*iscale == BY_BAR)
        *iscale = scale_by_bar(row[0], row[3], xap, yap, &scale);
    else if (*iscale == BY_CONTROL)
        *iscale = scale_by_control(row[0], row[1], table, xap, yap, &scale);
    if (*iscale < 0) return -1;
    if (*iscale == 0) fprintf(out, "colli_spread: Could not scale \n");
    for (int i = 0; i < npoints; i++) {
        xap[i] *= scale;
        yap[i] *= scale;
    }
    return 0;
}

// colli_spread on a zeroed table of pairs.
int approx::spread_from_pair(int (*tabpair)[7], int npair, int *iscale, int **table, int *itheo, int *iobj, double *xap,
                             double *yap, double *oap)
{
    if (buildtabpair(tabpair, npair, table) < 0) return -1;
    const int best = choose_pair(tabpair, npair, iscale);
    if (best >= 0) return local_frame(tabpair[best], iscale, table, itheo, iobj, xap, yap, oap);
    fprintf(out, "In spread: no two stations that sighted each other have a common shot\n");
    return -1;
}

int approx::colli_spread(int npair, int *iscale, int **table, int *itheo, int *iobj, double *xap, double *yap,
                         double *oap)
{
    int(*tabpair)[7] = (int(*)[7])zeroed(npair, sizeof *tabpair);
    if (!tabpair) {
        fprintf(out, "In spread: pb with tabpair\n");
        return -1;
    }
    const int result = spread_from_pair(tabpair, npair, iscale, table, itheo, iobj, xap, yap, oap);
    free(tabpair);
    return result;
}

} // namespace vornengine
