// Pairs of the similarity transformation: the points of both lists that have one name.
//
// A point of the first list takes the first point of the second list with its name; several
// points of the first list can take the same one.
//
// The array pair has nref + nend entries. While the lists are matched, the last nend hold the
// second list sorted by name, in second; points of one name stand there in the order of the
// list. The pairs fill it from the front and are at most nref. Example, lists A B and B B C:
//     pair  (B, first B)  -  B  B  C

#include <stdlib.h>
#include <string.h>

#include "numerics/memory.h"
#include "numerics/sidefile.h"
#include "simili/simili.h"

namespace vornengine {

static int compare_names(const simpoint *a, const simpoint *b) { return strncmp(a->name, b->name, sizeof a->name); }

// Order of the sorted list: by name, then by place in the list.
static int by_name(const void *a, const void *b)
{
    const simpoint *p = ((const simpair *)a)->second, *q = ((const simpair *)b)->second;
    const int order = compare_names(p, q);
    return order != 0 ? order : (p > q) - (p < q);
}

// First of n sorted points with the name of p, or null.
static simpoint *find(const simpair *sorted, int n, const simpoint *p)
{
    int low = 0, high = n; // all before low are less, none from high on is
    while (low < high) {
        const int middle = low + (high - low) / 2;
        if (compare_names(sorted[middle].second, p) < 0)
            low = middle + 1;
        else
            high = middle;
    }
    return low < n && compare_names(sorted[low].second, p) == 0 ? sorted[low].second : NULL;
}

void simili::matchlists()
{
    simpair *sorted = pair + nref;
    for (int i = 0; i < nend; i++) sorted[i].second = pend + i;
    qsort(sorted, (size_t)nend, sizeof *sorted, by_name);
    for (int i = 0; i < nref; i++) {
        simpoint *second = find(sorted, nend, pref + i);
        if (second) pair[npair++] = {pref + i, second};
    }
}

// Whether a standard deviation of the point is exactly zero.
static bool lacks_sigma(const simpoint *p) { return p->sx[0] == 0.0 || p->sx[1] == 0.0 || p->sx[2] == 0.0; }

static void set_sigmas(simpoint *list, int n, double value)
{
    for (int i = 0; i < n; i++)
        for (int k = 0; k < 3; k++) list[i].sx[k] = value;
}

// Code for the standard deviations of the pairs: 0, 4 or 5. When they lack on both sides,
// all points of both lists get 1.0: every coordinate then counts alike.
int simili::checksigmas()
{
    int c1 = 0, c2 = 0;
    for (int i = 0; i < npair; i++) {
        c1 += lacks_sigma(pair[i].first);
        c2 += lacks_sigma(pair[i].second);
    }
    if (c1 != 0 && c2 != 0) {
        set_sigmas(pref, nref, 1.0);
        set_sigmas(pend, nend, 1.0);
        return 0;
    }
    return c1 != 0 ? 4 : c2 != 0 ? 5 : 0;
}

int simili::closereport()
{
    if (out) close_side(out, &ireport);
    out = NULL;
    return ireport;
}

void simili::release()
{
    closereport();
    free(pair);
    pair = NULL;
    npair = 0;
}

int simili::startsimili()
{
    release();
    ireport = 0;
    out = open_side("simili.out", &ireport);
    if (!out) return 1;
    fprintf(out, "simili.out\n\n");
    pair = (simpair *)zeroed((long long)nref + nend, sizeof(simpair));
    if (!pair) return 2;
    matchlists();
    return npair < 3 ? 3 : checksigmas();
}

} // namespace vornengine
