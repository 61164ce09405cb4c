// What is known when a spread starts: positions, orientations, points by direction and
// distance, and how often stations can be resected or paired.
//
// Reads the working codes of the points; fills the tables of approx.h.

#include "approx/approx.h"

#include <math.h>

namespace vornengine {

// Takes the known coordinates of point i.
void approx::take_position(int i, double *xap, double *yap) const
{
    if (points[i].n0[0] == N_NONE) xap[i] = points[i].xpt[0];
    if (points[i].n0[1] == N_NONE) yap[i] = points[i].xpt[1];
}

static int in_plane(const point *p) { return p->n0[0] == N_NONE && p->n0[1] == N_NONE; }

// Takes what is known of station i. Returns 1 when position and orientation are.
int approx::take_station(int i, double *xap, double *yap, double *oap, int *itheo) const
{
    const point *p = points + i;
    take_position(i, xap, yap);
    if (in_plane(p)) itheo[i] = THEO_PLACED;
    if (p->n1[2] != N_NONE) return 0;
    oap[i] = -p->xex[2];
    itheo[i] = itheo[i] == THEO_PLACED ? THEO_DONE : THEO_ORIENTED;
    return itheo[i] == THEO_DONE;
}

// Points with direction and distance from station i, both coordinates unknown, become known;
// the position goes to the point itself, where a later station and the targets find it. The
// first direction and the first distance of a pair decide.
void approx::polar_points(int i, const double *oap)
{
    if (!can_level()) return;
    const double *x = points[i].xpt;
    for (int e = shots.first[i]; e < shots.first[i + 1]; e++) {
        point *p = points + shots.to[e];
        if (p->n0[0] == N_NONE || p->n0[1] == N_NONE) continue;
        const int l = pairlist_find(&lengths, i, shots.to[e]);
        if (l < 0) continue;
        const double a = dir1[shots.item[e]].val[0] + oap[i], d = level_length(lengths.item[l], shots.item[e]);
        p->xpt[0] = cos(a) * d + x[0];
        p->xpt[1] = sin(a) * d + x[1];
        p->n0[0] = p->n0[1] = N_NONE;
    }
}

// Known stations; returns how many are known in full, whatever they measure.
int approx::start_stations(int *nused, double *xap, double *yap, double *oap, int *itheo)
{
    int nfull = 0;
    for (int i = 0; i < nsta; i++) {
        nfull += take_station(i, xap, yap, oap, itheo);
        if (itheo[i] != THEO_DONE || istotal(i) != 1) continue;
        (*nused)++;
        if (idebug) fprintf(out, "In start_spread, %s is used\n", points[i].name);
        polar_points(i, oap);
    }
    return nfull;
}

// Pairs of stations that sighted each other, counted at both in the diagonal of the table.
int approx::count_pairs(int i, int **table) const
{
    int npair = 0;
    for (int e = seen.first[i]; e < seen.first[i + 1]; e++) {
        const int j = seen.to[e];
        if (j <= i || j >= nsta || table[j][i] == 0) continue;
        table[i][i]++;
        table[j][j]++;
        npair++;
    }
    return npair;
}

int approx::known_targets(int i, const int *iobj) const
{
    int n = 0;
    for (int e = seen.first[i]; e < seen.first[i + 1]; e++)
        n += seen.to[e] >= nsta && iobj[seen.to[e] - nsta] == OBJ_PLACED;
    return n;
}

void approx::show_table(int **table)
{
    fprintf(out, "\n");
    for (int i = 0; i < nsta; i++) {
        for (int j = 0; j < nsta; j++) fprintf(out, "%3d", table[i][j]);
        fprintf(out, " | ");
        for (int j = nsta; j < npoints; j++) fprintf(out, "%3d", table[i][j]);
        fprintf(out, "\n");
    }
    fprintf(out, "\n");
}

int approx::start_spread(int **table, int *nused, int *nresec, int *npair, double *xap, double *yap, double *oap,
                         int *itheo, int *iobj)
{
    const int nfull = start_stations(nused, xap, yap, oap, itheo);
    if (nfull > 1 && *nused == 0) {
        if (idebug) fprintf(out, "There are %d all known stations\n", nfull);
        fprintf(out, "\nTO DO: case of more than 2 known stations....\n");
    }
    for (int i = nsta; i < npoints; i++) {
        take_position(i, xap, yap);
        if (in_plane(points + i)) iobj[i - nsta] = OBJ_PLACED;
    }
    fill_table(table);
    for (int i = 0; i < nsta; i++) {
        *npair += count_pairs(i, table);
        if (itheo[i] == THEO_DONE || known_targets(i, iobj) < 3) continue;
        itheo[i] = THEO_RESECT;
        (*nresec)++;
    }
    if (idebug) show_table(table);
    return 0;
}

} // namespace vornengine
