// Sorting of pairs by counting: first by the second number, then, keeping that order, by the
// first.

#include "approx/pairlist.h"

#include <stdlib.h>

#include "numerics/memory.h"

namespace vornengine {

static void turn_counts_into_starts(int *first, int n)
{
    int sum = 0;
    for (int i = 0; i <= n; i++) {
        const int count = first[i];
        first[i] = sum;
        sum += count;
    }
}

static int usable(int from, int to) { return from >= 0 && to >= 0; }

// order: the usable pairs ascending in to, in list order where it is equal. Returns 0 or -1.
static int order_by_end(int *order, int n, const int *from, const int *to, int ncol)
{
    int *start = (int *)zeroed(ncol + 1LL, sizeof(int));
    if (!start) return -1;
    for (int k = 0; k < n; k++)
        if (usable(from[k], to[k])) start[to[k]]++;
    turn_counts_into_starts(start, ncol);
    for (int k = 0; k < n; k++)
        if (usable(from[k], to[k])) order[start[to[k]]++] = k;
    free(start);
    return 0;
}

// Deals the ordered pairs out to their rows; first stands shifted by one row meanwhile.
static void deal_out(pairlist *l, const int *order, int n, const int *from, const int *to, int nrow)
{
    for (int k = 0; k < n; k++) l->first[from[order[k]]]++;
    turn_counts_into_starts(l->first, nrow);
    for (int k = 0; k < n; k++) {
        const int e = l->first[from[order[k]]]++;
        l->to[e] = to[order[k]];
        l->item[e] = order[k];
    }
    for (int r = nrow; r > 0; r--) l->first[r] = l->first[r - 1];
    l->first[0] = 0;
}

static int make_with_order(pairlist *l, int *order, int n, const int *from, const int *to, int nrow, int ncol)
{
    if (!l->first || !l->to || !l->item || !order) return -1;
    if (order_by_end(order, n, from, to, ncol) != 0) return -1;
    int nused = 0;
    for (int k = 0; k < n; k++) nused += usable(from[k], to[k]);
    deal_out(l, order, nused, from, to, nrow);
    return 0;
}

int pairlist_make(pairlist *l, int n, const int *from, const int *to, int nrow, int ncol)
{
    l->first = (int *)zeroed(nrow + 1LL, sizeof(int));
    l->to = (int *)zeroed(n, sizeof(int));
    l->item = (int *)zeroed(n, sizeof(int));
    int *order = (int *)zeroed(n, sizeof(int));
    const int result = make_with_order(l, order, n, from, to, nrow, ncol);
    free(order);
    if (result != 0) pairlist_free(l);
    return result;
}

void pairlist_keep_last(pairlist *l, int nrow)
{
    int kept = 0;
    for (int r = 0; r < nrow; r++) {
        const int begin = l->first[r], end = l->first[r + 1];
        l->first[r] = kept;
        for (int e = begin; e < end; e++) {
            if (e + 1 < end && l->to[e + 1] == l->to[e]) continue;
            l->to[kept] = l->to[e];
            l->item[kept++] = l->item[e];
        }
    }
    l->first[nrow] = kept;
}

int pairlist_turn(pairlist *l, const pairlist *of, int nrow, int ncol)
{
    const int n = of->first[nrow];
    int *row = (int *)zeroed(n, sizeof(int));
    if (!row) {
        *l = pairlist();
        return -1;
    }
    for (int r = 0; r < nrow; r++)
        for (int e = of->first[r]; e < of->first[r + 1]; e++) row[e] = r;
    const int result = pairlist_make(l, n, of->to, row, ncol, nrow);
    free(row);
    for (int e = 0; result == 0 && e < n; e++) l->item[e] = of->item[l->item[e]];
    return result;
}

int pairlist_find(const pairlist *l, int row, int to)
{
    int low = l->first[row], high = l->first[row + 1];
    const int end = high;
    while (low < high) {
        const int middle = low + (high - low) / 2;
        if (l->to[middle] < to)
            low = middle + 1;
        else
            high = middle;
    }
    return low < end && l->to[low] == to ? low : -1;
}

void pairlist_free(pairlist *l)
{
    free(l->first);
    free(l->to);
    free(l->item);
    *l = pairlist();
}

} // namespace vornengine
