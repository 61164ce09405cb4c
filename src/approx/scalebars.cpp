// The scale bars of a network.

#include "approx/scalebars.h"

#include "numerics/memory.h"

namespace vornengine {

int bar_ends(const approxdata *net, int idist, int *end1, int *end2)
{
    *end1 = point_number(net, net->dist[idist].p1);
    *end2 = point_number(net, net->dist[idist].p2);
    return *end1 >= net->nsta && *end2 >= net->nsta;
}

static void show_bars(const approxdata *net, const barlist *l)
{
    fprintf(net->out, "\nNumber of observed scale bars %d\n", l->nbar);
    for (int b = 0; b < l->nbar; b++)
        fprintf(net->out, "  %3d   %s %s\n", b, net->points[l->bar[b].end1].name, net->points[l->bar[b].end2].name);
}

int take_bars(const approxdata *net, barlist *l)
{
    *l = barlist();
    if (net->ndist <= 0) return 0;
    l->bar = (scalebar *)zeroed(net->ndist, sizeof(scalebar));
    if (!l->bar) return -1;
    for (int k = 0; k < net->ndist; k++) {
        scalebar *bar = l->bar + l->nbar;
        bar->idist = k;
        l->nbar += bar_ends(net, k, &bar->end1, &bar->end2);
    }
    if (net->idebug) show_bars(net, l);
    return 0;
}

int shot_bar(const scalebar *bar, int i, const spreadtables *tab)
{
    return tab->table[i][bar->end1] != 0 && tab->table[i][bar->end2] != 0;
}

} // namespace vornengine
