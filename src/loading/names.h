// Index of names: from a name to the first record in order that bears it.
//
// A name is the bytes before the first zero, at most NAME_LENGTH of them: what a name
// field of 12 bytes holds beside its zero. Nothing behind that is read, so that a field
// which a host left without its zero is cut, and means the same wherever it is used. Names
// are compared exactly, trailing blanks included. The index keeps addresses of the records
// and never copies a name, so names must stay as they are while it lives.

#ifndef VORN_NAMES_H
#define VORN_NAMES_H

#include <stddef.h>

namespace vornengine {

enum { NAME_LENGTH = 11 };

// A name on its own, always ended by a zero.
struct nametext {
    char text[NAME_LENGTH + 1];
};

// The name in a field of size bytes, which need not hold a zero.
nametext name_in(const char *field, size_t size);

// Whether two names are the same.
bool same_name(const char *a, const char *b);

struct nameindex;

// An empty index for at most n names; null without memory.
nameindex *nameindex_make(int n);

// Enters a name with its number; a name that is already in keeps its first number.
// A name beyond the n of nameindex_make is left out.
void nameindex_add(nameindex *ix, const char *name, int number);

// Number of a name, or -1.
int nameindex_find(const nameindex *ix, const char *name);

// Releases the index; null is allowed.
void nameindex_free(nameindex *ix);

} // namespace vornengine

#endif
