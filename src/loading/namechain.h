// Items of one name in their order, for lists in which a name occurs several times.

#ifndef VORN_NAMECHAIN_H
#define VORN_NAMECHAIN_H

#include "loading/names.h"

namespace vornengine {

// Example, names A B A: first of A is 0, next[0] is 2, next[2] is -1.
struct namechain {
    nameindex *index; // name to its first item
    int *next;        // [n] next item of the same name, -1 behind the last
};

// Chains n items; name(list, i) is the name of item i, which must stay as it is while the
// chain lives. Returns 0, or -1 without memory; the chain can be released then too.
int namechain_make(namechain *c, int n, const char *(*name)(const void *list, int i), const void *list);

// First item of a name, or -1.
int namechain_first(const namechain *c, const char *name);

// Releases the chain; a zeroed one is allowed.
void namechain_free(namechain *c);

} // namespace vornengine

#endif
