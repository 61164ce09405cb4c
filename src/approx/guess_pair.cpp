// The two stations of a guess: the first by what is known of it, the second by a scale bar
// that both observed, or else by the number of common shots.

#include <stdlib.h>

#include "approx/guess.h"
#include "approx/scalebars.h"

namespace vornengine {

// The last station of a status, or none (-1).
static int last_of(int status, const int *itheo, int nsta)
{
    int last = -1;
    for (int i = 0; i < nsta; i++)
        if (itheo[i] == status) last = i;
    return last;
}

// Finds the first station. Returns 1 when two stations are finished, otherwise 0.
static int start_pair(const approxdata *net, const spreadtables *tab, stationpair *g)
{
    int first = 0;
    while (first < net->nsta && tab->itheo[first] != THEO_DONE) first++;
    const int last = last_of(THEO_DONE, tab->itheo, net->nsta);
    if (last > first) {
        fprintf(net->out,
                "\nin guess_spread: already at least 2 theos known\n                 should not be here!!!\n");
        return 1;
    }
    g->it1 = last;
    if (g->it1 < 0) g->it1 = last_of(THEO_ORIENTED, tab->itheo, net->nsta);
    if (g->it1 < 0) g->it1 = last_of(THEO_PLACED, tab->itheo, net->nsta);
    if (g->it1 < 0 && net->nsta > 0) g->it1 = 0;
    return 0;
}

// Compares shot numbers of the first bar with station numbers; the last station for which
// they agree decides. The bar taken for scaling is distance 0 then.
static void pair_by_first_bar(const approxdata *net, const spreadtables *tab, const scalebar *bar, stationpair *g)
{
    for (int s1 = 0; s1 < net->nsta; s1++) {
        const int s2 = tab->table[s1][bar->end2];
        if (tab->table[s1][bar->end1] != s1 || s2 == s1 || s2 >= net->nsta) continue;
        g->it1 = s1;
        g->it2 = s2;
        g->ibar = 0;
    }
}

// The second station by the bars before the first that it1 did not observe; the last of them
// that another station observed too decides.
static void pair_by_bars(const approxdata *net, const spreadtables *tab, const barlist *bars, stationpair *g)
{
    for (int b = 0; b < bars->nbar && shot_bar(bars->bar + b, g->it1, tab); b++) {
        int s = 0;
        while (s < net->nsta && (s == g->it1 || !shot_bar(bars->bar + b, s, tab))) s++;
        if (s == net->nsta) continue;
        g->it2 = s;
        g->ibar = bars->bar[b].idist;
    }
    if (g->it2 < 0) pair_by_first_bar(net, tab, bars->bar, g);
    if (g->it2 >= 0) g->ncommon = common_shots(net, tab, g->it1, g->it2);
}

// The second station by the most common shots, more than the pair at hand has.
static void pair_by_shots(const approxdata *net, const spreadtables *tab, stationpair *g)
{
    for (int s = 0; s < net->nsta; s++) {
        if (s == g->it1) continue;
        const int n = common_shots(net, tab, g->it1, s);
        if (n <= g->ncommon) continue;
        g->it2 = s;
        g->ncommon = n;
    }
}

static void show_pair(const approxdata *net, const stationpair *g)
{
    fprintf(net->out, "\nin guess_spread: the 2 chosen theodolites are:\n");
    fprintf(net->out, "      it1= %s\n", g->it1 >= 0 ? net->points[g->it1].name : "");
    fprintf(net->out, "      it2= %s\n", g->it2 >= 0 ? net->points[g->it2].name : "");
    fprintf(net->out, "They have %d common shots\n", g->ncommon);
    if (g->ibar < 0) return;
    fprintf(net->out, "They observed the scale bar: %s %s\n", net->dist[g->ibar].p1->name, net->dist[g->ibar].p2->name);
}

int guess_pair(const approxdata *net, const spreadtables *tab, stationpair *g)
{
    *g = stationpair();
    g->it1 = g->it2 = g->ibar = -1;
    barlist bars;
    if (take_bars(net, &bars) != 0) {
        fprintf(net->out, "in guess_spread: cannot allocate\n");
        return -1;
    }
    const int twofinished = start_pair(net, tab, g);
    if (!twofinished && g->it1 >= 0 && bars.nbar > 0) pair_by_bars(net, tab, &bars, g);
    free(bars.bar);
    if (twofinished) return 1;
    if (g->ncommon < 3) {
        g->ibar = -1;
        pair_by_shots(net, tab, g);
    }
    if (net->idebug) show_pair(net, g);
    return 0;
}

} // namespace vornengine
