// Index of numbers: an open table with a power of two of slots, at least twice as many as
// values, searched slot by slot from value * (2^32 / golden ratio) on.

#include "loading/numbers.h"

#include <limits.h>
#include <stdint.h>
#include <stdlib.h>

#include "numerics/memory.h"

namespace vornengine {

struct numberslot {
    int value;
    int place1; // place + 1; 0: empty
};

struct numberindex {
    size_t mask;       // slots - 1
    long long nfree;   // values that may still be entered
    numberslot *slots; // [mask + 1]
};

int count_of(long long n) { return n > INT_MAX ? INT_MAX : n < INT_MIN ? INT_MIN : (int)n; }

// The slot of a value, or the empty slot where it would stand.
static numberslot *find_slot(const numberindex *ix, int value)
{
    const uint32_t h = (uint32_t)value * 2654435769U;
    size_t i = (h ^ (h >> 16)) & ix->mask;
    while (ix->slots[i].place1 != 0 && ix->slots[i].value != value) i = (i + 1) & ix->mask;
    return ix->slots + i;
}

numberindex *numberindex_make(long long n)
{
    if (n > 1LL << 32) return NULL; // more than there are ints
    long long nslot = 2;
    while (nslot < 2 * n) nslot *= 2;
    numberindex *ix = (numberindex *)zeroed(1, sizeof(numberindex));
    if (!ix) return NULL;
    ix->slots = (numberslot *)zeroed(nslot, sizeof(numberslot));
    if (!ix->slots) {
        free(ix);
        return NULL;
    }
    ix->mask = (size_t)(nslot - 1);
    ix->nfree = n > 0 ? n : 0;
    return ix;
}

void numberindex_add(numberindex *ix, int value, int place)
{
    numberslot *slot = find_slot(ix, value);
    if (slot->place1 != 0 || ix->nfree == 0) return;
    slot->value = value;
    slot->place1 = place + 1;
    ix->nfree--;
}

int numberindex_find(const numberindex *ix, int value) { return find_slot(ix, value)->place1 - 1; }

void numberindex_free(numberindex *ix)
{
    if (!ix) return;
    free(ix->slots);
    free(ix);
}

int place_of(int value, const int *table, int n, const numberindex *ix)
{
    if (ix) return numberindex_find(ix, value);
    for (int i = 0; i < n; i++)
        if (table[i] == value) return i;
    return -1;
}

numberindex *numberindex_of(const int *table, int n)
{
    numberindex *ix = numberindex_make(n);
    for (int i = 0; ix && i < n; i++) numberindex_add(ix, table[i], i);
    return ix;
}

} // namespace vornengine
