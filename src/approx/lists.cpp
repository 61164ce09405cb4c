// Shots and distances of the stations by the points that they join.

#include "approx/approxdata.h"

#include <stdlib.h>

#include "numerics/memory.h"

namespace vornengine {

// The ends of each measure; the first is -1 unless it is a station that aims at another point.
static void find_ends(const approxdata *net, const measure *list, int n, int *from, int *to)
{
    for (int k = 0; k < n; k++) {
        from[k] = point_number(net, list[k].p1);
        to[k] = point_number(net, list[k].p2);
        if (from[k] >= net->nsta || from[k] == to[k]) from[k] = -1;
    }
}

static int list_measures(const approxdata *net, pairlist *l, const measure *list, int n)
{
    int *from = (int *)zeroed(n, sizeof(int)), *to = (int *)zeroed(n, sizeof(int));
    int result = -1;
    if (from && to) {
        find_ends(net, list, n, from, to);
        result = pairlist_make(l, n, from, to, net->nsta, net->npoints);
    }
    free(from);
    free(to);
    return result;
}

int take_lists(approxdata *net)
{
    drop_lists(net);
    if (list_measures(net, &net->shots, net->dir1, net->ndir1) != 0 ||
        list_measures(net, &net->seen, net->dir1, net->ndir1) != 0 ||
        list_measures(net, &net->lengths, net->dist, net->ndist) != 0)
        return -1;
    pairlist_keep_last(&net->seen, net->nsta);
    return pairlist_turn(&net->seenby, &net->seen, net->nsta, net->npoints);
}

void drop_lists(approxdata *net)
{
    pairlist_free(&net->shots);
    pairlist_free(&net->seen);
    pairlist_free(&net->seenby);
    pairlist_free(&net->lengths);
}

} // namespace vornengine
