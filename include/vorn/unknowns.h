// Names of unknowns, for the words with which a host explains a system that cannot be solved.
// Part of the static library only; the dynamic library exports class vorn alone.

#ifndef VORN_UNKNOWNS_H
#define VORN_UNKNOWNS_H

#include <stddef.h>

#include "vorn/vorn.h"

namespace vornengine {

struct unknown_names {
    // Writes into text[size] what the given row of the compact solver's factorization stands
    // for: "y of point P". The engine names such a row when its pivot is too small. To be
    // called after vornstart and before the destructor. Returns 0, or -1 with an empty text
    // when there is no such row.
    static int row(const vorn &run, int row, char *text, size_t size);
};

} // namespace vornengine

#endif
