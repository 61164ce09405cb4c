// What is known when a spread starts: positions, orientations, points by direction and
// distance, and how often stations can be resected or paired.
//
// Reads the working codes of the points; fills the tables of a spread.

#include "approx/polar.h"
#include "approx/spread.h"

namespace vornengine {

// Takes the known coordinates of point i.
static void take_position(const approxdata *net, spreadtables *tab, int i)
{
    if (net->points[i].n0[0] == N_NONE) tab->xap[i] = net->points[i].xpt[0];
    if (net->points[i].n0[1] == N_NONE) tab->yap[i] = net->points[i].xpt[1];
}

// Takes what is known of station i. Returns 1 when position and orientation are.
static int take_station(const approxdata *net, spreadtables *tab, int i)
{
    const point *p = net->points + i;
    take_position(net, tab, i);
    if (in_plane(p)) tab->itheo[i] = THEO_PLACED;
    if (p->n1[2] != N_NONE) return 0;
    tab->oap[i] = -p->xex[2];
    tab->itheo[i] = tab->itheo[i] == THEO_PLACED ? THEO_DONE : THEO_ORIENTED;
    return tab->itheo[i] == THEO_DONE;
}

// Points with direction and distance from station i, both coordinates unknown, become known;
// the position goes to the point itself, where a later station and the targets find it. The
// first direction and the first distance of a pair decide.
static void polar_points(const approxdata *net, const spreadtables *tab, int i)
{
    if (!can_level(net)) return;
    const double *x = net->points[i].xpt;
    for (int e = net->shots.first[i]; e < net->shots.first[i + 1]; e++) {
        point *p = net->points + net->shots.to[e];
        if (p->n0[0] == N_NONE || p->n0[1] == N_NONE) continue;
        const int l = pairlist_find(&net->lengths, i, net->shots.to[e]);
        if (l < 0) continue;
        p->xpt[0] = x[0];
        p->xpt[1] = x[1];
        carry_position(net, net->shots.item[e], net->lengths.item[l], tab->oap[i], p->xpt, p->xpt + 1);
        p->n0[0] = p->n0[1] = N_NONE;
    }
}

// Known stations; returns how many are known in full, whatever they measure.
static int start_stations(const approxdata *net, spreadtables *tab, int *nused)
{
    int nfull = 0;
    for (int i = 0; i < net->nsta; i++) {
        nfull += take_station(net, tab, i);
        if (tab->itheo[i] != THEO_DONE || istotal(net, i) != 1) continue;
        (*nused)++;
        if (net->idebug) fprintf(net->out, "In start_spread, %s is used\n", net->points[i].name);
        polar_points(net, tab, i);
    }
    return nfull;
}

// Pairs of stations that sighted each other, counted at both in the diagonal of the table.
static int count_pairs(const approxdata *net, spreadtables *tab, int i)
{
    int npair = 0;
    for (int e = net->seen.first[i]; e < net->seen.first[i + 1]; e++) {
        const int j = net->seen.to[e];
        if (j <= i || j >= net->nsta || tab->table[j][i] == 0) continue;
        tab->table[i][i]++;
        tab->table[j][j]++;
        npair++;
    }
    return npair;
}

static int known_targets(const approxdata *net, const spreadtables *tab, int i)
{
    int n = 0;
    for (int e = net->seen.first[i]; e < net->seen.first[i + 1]; e++)
        n += net->seen.to[e] >= net->nsta && has_position(net, tab, net->seen.to[e]);
    return n;
}

static void show_table(const approxdata *net, const spreadtables *tab)
{
    fprintf(net->out, "\n");
    for (int i = 0; i < net->nsta; i++) {
        for (int j = 0; j < net->nsta; j++) fprintf(net->out, "%3d", tab->table[i][j]);
        fprintf(net->out, " | ");
        for (int j = net->nsta; j < net->npoints; j++) fprintf(net->out, "%3d", tab->table[i][j]);
        fprintf(net->out, "\n");
    }
    fprintf(net->out, "\n");
}

int start_spread(const approxdata *net, spreadtables *tab, int *nused, int *nresec, int *npair)
{
    const int nfull = start_stations(net, tab, nused);
    if (nfull > 1 && *nused == 0) {
        if (net->idebug) fprintf(net->out, "There are %d all known stations\n", nfull);
        fprintf(net->out, "\nTO DO: case of more than 2 known stations....\n");
    }
    for (int i = net->nsta; i < net->npoints; i++) {
        take_position(net, tab, i);
        if (in_plane(net->points + i)) tab->iobj[i - net->nsta] = OBJ_PLACED;
    }
    fill_table(net, tab);
    for (int i = 0; i < net->nsta; i++) {
        *npair += count_pairs(net, tab, i);
        if (tab->itheo[i] == THEO_DONE || known_targets(net, tab, i) < 3) continue;
        tab->itheo[i] = THEO_RESECT;
        (*nresec)++;
    }
    if (net->idebug) show_table(net, tab);
    return 0;
}

} // namespace vornengine
