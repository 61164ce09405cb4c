// Index of names: an open table of addresses.
//
// The table has a power of two of slots, at least twice as many as names, so that a search
// always meets an empty slot. A name starts at slot hash mod size and moves on to the next
// slot while it finds other names. Example, 4 slots, A and B both with hash 6, entered in
// this order with the numbers 0 and 1:  slot 2 is A 0, slot 3 is B 1.

#include "loading/names.h"

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include "numerics/memory.h"

namespace vornengine {

struct nameslot {
    const char *name; // null: empty
    int number;
};

struct nameindex {
    size_t mask;     // slots - 1
    int nfree;       // names that may still be entered
    nameslot *slots; // [mask + 1]
};

nametext name_in(const char *field, size_t size)
{
    nametext name = {};
    for (size_t i = 0; i < size && i < NAME_LENGTH && field[i] != '\0'; i++) name.text[i] = field[i];
    return name;
}

bool same_name(const char *a, const char *b) { return strncmp(a, b, NAME_LENGTH) == 0; }

// FNV-1a, 64 bits (Fowler, Noll, Vo), folded so that the low bits depend on all others.
static size_t name_hash(const char *name)
{
    uint64_t h = 14695981039346656037ULL;
    for (int i = 0; i < NAME_LENGTH && name[i] != '\0'; i++) {
        h ^= (unsigned char)name[i];
        h *= 1099511628211ULL;
    }
    return (size_t)(h ^ (h >> 32));
}

// The slot of a name, or the empty slot where it would stand.
static nameslot *find_slot(const nameindex *ix, const char *name)
{
    size_t i = name_hash(name) & ix->mask;
    while (ix->slots[i].name && !same_name(ix->slots[i].name, name)) i = (i + 1) & ix->mask;
    return ix->slots + i;
}

nameindex *nameindex_make(int n)
{
    long long nslot = 2;
    while (nslot < 2LL * n) nslot *= 2;
    nameindex *ix = (nameindex *)zeroed(1, sizeof(nameindex));
    if (!ix) return NULL;
    ix->slots = (nameslot *)zeroed(nslot, sizeof(nameslot));
    if (!ix->slots) {
        free(ix);
        return NULL;
    }
    ix->mask = (size_t)(nslot - 1);
    ix->nfree = n > 0 ? n : 0;
    return ix;
}

void nameindex_add(nameindex *ix, const char *name, int number)
{
    nameslot *slot = find_slot(ix, name);
    if (slot->name || ix->nfree == 0) return;
    slot->name = name;
    slot->number = number;
    ix->nfree--;
}

int nameindex_find(const nameindex *ix, const char *name)
{
    const nameslot *slot = find_slot(ix, name);
    return slot->name ? slot->number : -1;
}

void nameindex_free(nameindex *ix)
{
    if (!ix) return;
    free(ix->slots);
    free(ix);
}

} // namespace vornengine
