// Items of one name in their order.

#include "loading/namechain.h"

#include <stdlib.h>

#include "numerics/memory.h"

namespace vornengine {

int namechain_make(namechain *c, int n, const char *(*name)(const void *list, int i), const void *list)
{
    c->index = nameindex_make(n);
    c->next = (int *)zeroed(n, sizeof(int));
    int *last = (int *)zeroed(n, sizeof(int)); // of a first item: the last one yet of its name
    const bool whole = c->index && c->next && last;
    for (int i = 0; whole && i < n; i++) {
        nameindex_add(c->index, name(list, i), i);
        const int first = nameindex_find(c->index, name(list, i));
        if (first != i) c->next[last[first]] = i;
        last[first] = i;
        c->next[i] = -1;
    }
    free(last);
    return whole ? 0 : -1;
}

int namechain_first(const namechain *c, const char *name) { return nameindex_find(c->index, name); }

void namechain_free(namechain *c)
{
    nameindex_free(c->index);
    free(c->next);
    c->index = NULL;
    c->next = NULL;
}

} // namespace vornengine
