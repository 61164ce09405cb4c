// The table of pairs of stations that sighted each other, it1 < it2, from which the best one is
// chosen.

#include <stdlib.h>

#include "approx/collimation.h"
#include "approx/scalebars.h"

namespace vornengine {

// Marks the bars that station i observed with their number, the others with -1. Returns how
// many it observed.
static int mark_bars(const barlist *bars, int i, const spreadtables *tab)
{
    int nmarked = 0;
    for (int b = 0; b < bars->nbar; b++) {
        bars->bar[b].mark = shot_bar(bars->bar + b, i, tab) ? b : -1;
        nmarked += bars->bar[b].mark == b;
    }
    return nmarked;
}

// Index in dist of the first marked bar that station j observed too, or -1.
static int common_bar(const barlist *bars, int j, const spreadtables *tab)
{
    for (const scalebar *bar = bars->bar; bar < bars->bar + bars->nbar; bar++)
        if (bar->mark >= 0 && shot_bar(bar, j, tab)) return bar->idist;
    return -1;
}

// Counts the common targets of the pair and how many of them are known in each coordinate.
static void count_targets(const approxdata *net, const spreadtables *tab, stationpair *pair)
{
    for (int e = net->seen.first[pair->it1]; e < net->seen.first[pair->it1 + 1]; e++) {
        const int t = net->seen.to[e];
        if (t < net->nsta || tab->table[pair->it2][t] == 0) continue;
        pair->ncommon++;
        for (int k = 0; k < 3; k++) pair->nknown[k] += net->points[t].n0[k] == N_NONE;
    }
}

// Common shots with stations among them. The diagonal of the table counts j as a common shot.
static int common_points(const approxdata *net, const spreadtables *tab, int i, int j)
{
    int n = 0;
    for (int e = net->seen.first[i]; e < net->seen.first[i + 1]; e++) n += tab->table[j][net->seen.to[e]] > 0;
    return n;
}

// The pairs of station i with later stations, behind the nrow rows of the table. Returns the
// number of rows then.
static int pairs_of(const approxdata *net, const spreadtables *tab, int i, stationpair *tabpair, int nrow,
                    const barlist *bars)
{
    if (tab->table[i][i] == 0) return nrow;
    const int nmarked = mark_bars(bars, i, tab);
    for (int e = net->seen.first[i]; e < net->seen.first[i + 1]; e++) {
        const int j = net->seen.to[e];
        if (j <= i || j >= net->nsta || tab->table[j][i] == 0) continue;
        stationpair *pair = tabpair + nrow++;
        pair->it1 = i;
        pair->it2 = j;
        pair->ibar = nmarked > 0 ? common_bar(bars, j, tab) : -1;
        count_targets(net, tab, pair);
    }
    return nrow;
}

// Where no pair has three common targets, the stations count as well.
static void count_stations_too(const approxdata *net, const spreadtables *tab, stationpair *tabpair, int npair)
{
    for (int r = 0; r < npair; r++)
        if (tabpair[r].ncommon >= 3) return;
    if (net->idebug) fprintf(net->out, "\nMust count the theodolites in the common shots\n");
    for (int r = 0; r < npair; r++) tabpair[r].ncommon = common_points(net, tab, tabpair[r].it1, tabpair[r].it2);
}

static void show_pairs(const approxdata *net, const stationpair *tabpair, int npair)
{
    fprintf(net->out, "\nNumber of collimating pairs %d\n", npair);
    for (int r = 0; r < npair; r++) {
        const stationpair *p = tabpair + r;
        fprintf(net->out, "  %3d   %s %s  %3d %3d %3d%2d%2d\n", r, net->points[p->it1].name, net->points[p->it2].name,
                p->ncommon, p->ibar, p->nknown[0], p->nknown[1], p->nknown[1]); // x2 in both places
    }
}

int buildtabpair(const approxdata *net, const spreadtables *tab, stationpair *tabpair, int npair)
{
    barlist bars;
    if (take_bars(net, &bars) != 0) {
        fprintf(net->out, "in buildtabpair: cannot allocate\n");
        return -1;
    }
    int nrow = 0;
    for (int i = 0; i < net->nsta; i++) nrow = pairs_of(net, tab, i, tabpair, nrow, &bars);
    free(bars.bar);
    count_stations_too(net, tab, tabpair, npair);
    if (net->idebug) show_pairs(net, tabpair, npair);
    return 0;
}

} // namespace vornengine
