// Index of names: from a name to the first record in order that bears it.
//
// Names are compared exactly, trailing blanks included. The index keeps addresses of
// the records and never copies a name, so names must stay as they are while it lives.

#ifndef VORN_NAMES_H
#define VORN_NAMES_H

struct nameindex;

// An empty index for at most n names; null without memory.
nameindex *nameindex_make(int n);

// Enters a name with its number; a name that is already in keeps its first number.
void nameindex_add(nameindex *ix, const char *name, int number);

// Number of a name, or -1.
int nameindex_find(const nameindex *ix, const char *name);

// Releases the index; null is allowed.
void nameindex_free(nameindex *ix);

#endif
