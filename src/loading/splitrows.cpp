// Rows of isplit by the names of their points.

#include "loading/splitrows.h"

#include <stdlib.h>

namespace vornengine {

const char *row_name(const splitrows *s, int i) { return s->host.name(s->rows[i][0]); }

static const char *name_of_row(const void *s, int i) { return row_name((const splitrows *)s, i); }

void chain_rows(splitrows *s)
{
    if (namechain_make(&s->chain, s->n, name_of_row, s) != 0) unchain_rows(s);
}

int next_row(const splitrows *s, const char *name, int i)
{
    if (s->chain.index) return i < 0 ? namechain_first(&s->chain, name) : s->chain.next[i];
    for (int r = i + 1; r < s->n; r++)
        if (same_name(row_name(s, r), name)) return r;
    return -1;
}

void unchain_rows(splitrows *s) { namechain_free(&s->chain); }

void free_rows(int **rows, int n)
{
    if (!rows) return;
    for (int i = 0; i < n; i++) free(rows[i]);
    free(rows);
}

} // namespace vornengine
