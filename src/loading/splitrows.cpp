// Rows of isplit by the names of their points.

#include "loading/splitrows.h"

#include <stdlib.h>

#include "numerics/memory.h"

namespace vornengine {

const char *row_name(const splitrows *s, int i)
{
    const int ihost = s->rows[i][0];
    return s->sta ? s->sta[ihost].name : s->tar[ihost].name;
}

void chain_rows(splitrows *s)
{
    s->index = nameindex_make(s->n);
    s->next = (int *)zeroed(s->n, sizeof(int));
    int *last = (int *)zeroed(s->n, sizeof(int)); // of a first row: the last row yet of its name
    const bool whole = s->index && s->next && last;
    for (int i = 0; whole && i < s->n; i++) {
        nameindex_add(s->index, row_name(s, i), i);
        const int first = nameindex_find(s->index, row_name(s, i));
        if (first != i) s->next[last[first]] = i;
        last[first] = i;
        s->next[i] = -1;
    }
    free(last);
    if (!whole) unchain_rows(s);
}

int next_row(const splitrows *s, const char *name, int i)
{
    if (s->index) return i < 0 ? nameindex_find(s->index, name) : s->next[i];
    for (int r = i + 1; r < s->n; r++)
        if (same_name(row_name(s, r), name)) return r;
    return -1;
}

void unchain_rows(splitrows *s)
{
    nameindex_free(s->index);
    free(s->next);
    s->index = NULL;
    s->next = NULL;
}

void free_rows(int **rows, int n)
{
    if (!rows) return;
    for (int i = 0; i < n; i++) free(rows[i]);
    free(rows);
}

} // namespace vornengine
