// Index of numbers: from an int (a lump index, an epoch) to its place in a table of
// distinct values. And the way back from a sum of counts to an int.

#ifndef VORN_NUMBERS_H
#define VORN_NUMBERS_H

namespace vornengine {

struct numberindex;

// A sum of counts as an int; one that does not fit becomes the largest, for which there is
// no memory, or the least.
int count_of(long long n);

// An empty index for at most n values; null without memory.
numberindex *numberindex_make(long long n);

// Enters a value with its place; a value that is already in keeps its first place.
// A value beyond the n of numberindex_make is left out.
void numberindex_add(numberindex *ix, int value, int place);

// Place of a value, or -1.
int numberindex_find(const numberindex *ix, int value);

// Releases the index; null is allowed.
void numberindex_free(numberindex *ix);

// Place of a value among the first n of a table, or -1. ix, when not null, is an index of
// just these entries; without it the table is searched.
int place_of(int value, const int *table, int n, const numberindex *ix);

// An index of the first n entries of a table; null without memory.
numberindex *numberindex_of(const int *table, int n);

} // namespace vornengine

#endif
