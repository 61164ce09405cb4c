// The two stations of a guess: the first by what is known of it, the second by a scale bar
// that both observed, or else by the number of common shots.

#include <stdlib.h>

#include "approx/approx.h"

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
int approx::start_pair(const int *itheo, guesspair *g) const
{
    int first = 0;
    while (first < nsta && itheo[first] != THEO_DONE) first++;
    const int last = last_of(THEO_DONE, itheo, nsta);
    if (last > first) {
        fprintf(out, "\nin guess_spread: already at least 2 theos known\n                 should not be here!!!\n");
        return 1;
    }
    g->it1 = last;
    if (g->it1 < 0) g->it1 = last_of(THEO_ORIENTED, itheo, nsta);
    if (g->it1 < 0) g->it1 = last_of(THEO_PLACED, itheo, nsta);
    if (g->it1 < 0 && nsta > 0) g->it1 = 0;
    return 0;
}

// Compares shot numbers of the first bar with station numbers; the last station for which
// they agree decides. The bar taken for scaling is distance 0 then.
void approx::pair_by_first_bar(const scalebar *bar, int **table, guesspair *g) const
{
    for (int s1 = 0; s1 < nsta; s1++) {
        const int s2 = table[s1][bar->end2];
        if (table[s1][bar->end1] != s1 || s2 == s1 || s2 >= nsta) continue;
        g->it1 = s1;
        g->it2 = s2;
        g->ibar = 0;
    }
}

// The second station by the bars before the first that it1 did not observe; the last of them
// that another station observed too decides.
void approx::pair_by_bars(const scalebar *bars, int nbar, int **table, guesspair *g) const
{
    for (int b = 0; b < nbar && shot_bar(bars + b, g->it1, table); b++) {
        int s = 0;
        while (s < nsta && (s == g->it1 || !shot_bar(bars + b, s, table))) s++;
        if (s == nsta) continue;
        g->it2 = s;
        g->ibar = bars[b].idist;
    }
    if (g->it2 < 0) pair_by_first_bar(bars, table, g);
    if (g->it2 >= 0) g->ncommon = common_shots(g->it1, g->it2, table);
}

// The second station by the most common shots, more than the pair at hand has.
void approx::pair_by_shots(int **table, guesspair *g) const
{
    for (int s = 0; s < nsta; s++) {
        if (s == g->it1) continue;
        const int n = common_shots(g->it1, s, table);
        if (n <= g->ncommon) continue;
        g->it2 = s;
        g->ncommon = n;
    }
}

void approx::show_pair(const guesspair *g) const
{
    fprintf(out, "\nin guess_spread: the 2 chosen theodolites are:\n");
    fprintf(out, "      it1= %s\n", g->it1 >= 0 ? points[g->it1].name : "");
    fprintf(out, "      it2= %s\n", g->it2 >= 0 ? points[g->it2].name : "");
    fprintf(out, "They have %d common shots\n", g->ncommon);
    if (g->ibar < 0) return;
    fprintf(out, "They observed the scale bar: %s %s\n", dist[g->ibar].p1->name, dist[g->ibar].p2->name);
}

// Returns 0, 1 when two stations are finished already, or -1 without memory. A pair with fewer
// than three common shots is none.
int approx::guess_pair(int **table, const int *itheo, guesspair *g)
{
    g->it1 = g->it2 = g->ibar = -1;
    g->ncommon = 0;
    scalebar *bars;
    int nbar;
    if (take_bars(&bars, &nbar) != 0) {
        fprintf(out, "in guess_spread: cannot allocate\n");
        return -1;
    }
    const int twofinished = start_pair(itheo, g);
    if (!twofinished && g->it1 >= 0 && nbar > 0) pair_by_bars(bars, nbar, table, g);
    free(bars);
    if (twofinished) return 1;
    if (g->ncommon < 3) {
        g->ibar = -1;
        pair_by_shots(table, g);
    }
    if (idebug) show_pair(g);
    return 0;
}

} // namespace vornengine
