// Scale bars: distances between two targets, which give a local frame its true scale when
// both stations of a pair observed the two ends.

#include <stdlib.h>

#include "approx/approx.h"
#include "numerics/memory.h"

namespace vornengine {

// Ends of distance idist as points. Returns 1 when both are targets.
int approx::bar_ends(int idist, int *end1, int *end2) const
{
    *end1 = number(dist[idist].p1);
    *end2 = number(dist[idist].p2);
    return *end1 >= nsta && *end2 >= nsta;
}

int approx::take_bars(scalebar **bars, int *nbar)
{
    *bars = NULL;
    *nbar = 0;
    if (ndist <= 0) return 0;
    *bars = (scalebar *)zeroed(ndist, sizeof(scalebar));
    if (!*bars) return -1;
    for (int k = 0; k < ndist; k++) {
        scalebar *bar = *bars + *nbar;
        bar->idist = k;
        *nbar += bar_ends(k, &bar->end1, &bar->end2);
    }
    if (idebug) show_bars(*bars, *nbar);
    return 0;
}

void approx::show_bars(const scalebar *bars, int nbar) const
{
    fprintf(out, "\nNumber of observed scale bars %d\n", nbar);
    for (int b = 0; b < nbar; b++)
        fprintf(out, "  %3d   %s %s\n", b, points[bars[b].end1].name, points[bars[b].end2].name);
}

// Whether station i shot both ends.
int shot_bar(const scalebar *bar, int i, int **table) { return table[i][bar->end1] != 0 && table[i][bar->end2] != 0; }

} // namespace vornengine
