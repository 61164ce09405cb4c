// Shots and distances of the stations by the points that they join.

#include "approx/approx.h"

#include <math.h>
#include <stdlib.h>

#include "numerics/memory.h"

namespace vornengine {

double wrap(double angle)
{
    const double pi = 4 * atan(1.0);
    if (angle > pi) return angle - 2 * pi;
    if (angle < -pi) return angle + 2 * pi;
    return angle;
}

int approx::number(const point *p) const { return p >= points && p < points + npoints ? (int)(p - points) : -1; }

// The ends of each measure; the first is -1 unless it is a station that aims at another point.
void approx::find_ends(const measure *list, int n, int *from, int *to) const
{
    for (int k = 0; k < n; k++) {
        from[k] = number(list[k].p1);
        to[k] = number(list[k].p2);
        if (from[k] >= nsta || from[k] == to[k]) from[k] = -1;
    }
}

int approx::list_measures(pairlist *l, const measure *list, int n) const
{
    int *from = (int *)zeroed(n, sizeof(int)), *to = (int *)zeroed(n, sizeof(int));
    int result = -1;
    if (from && to) {
        find_ends(list, n, from, to);
        result = pairlist_make(l, n, from, to, nsta, npoints);
    }
    free(from);
    free(to);
    return result;
}

int approx::take_lists()
{
    drop_lists();
    if (list_measures(&shots, dir1, ndir1) != 0 || list_measures(&seen, dir1, ndir1) != 0 ||
        list_measures(&lengths, dist, ndist) != 0)
        return -1;
    pairlist_keep_last(&seen, nsta);
    return pairlist_turn(&seenby, &seen, nsta, npoints);
}

void approx::drop_lists()
{
    pairlist_free(&shots);
    pairlist_free(&seen);
    pairlist_free(&seenby);
    pairlist_free(&lengths);
}

void approx::fill_table(int **table) const
{
    for (int i = 0; i < nsta; i++)
        for (int e = seen.first[i]; e < seen.first[i + 1]; e++) table[i][seen.to[e]] = seen.item[e] + 1;
}

} // namespace vornengine
