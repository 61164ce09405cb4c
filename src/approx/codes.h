// Codes of the points and counters of fixed items, kept while a computation of first values
// uses working codes in their place.

#ifndef VORN_CODES_H
#define VORN_CODES_H

#include <stdio.h>

#include "vorn/records.h"

namespace vornengine {

struct savedcodes {
    int **savn0; // [npoints][3]
    int **savn1; // [npoints][5]
    int ia1[8];
};

// Allocates the rows. Returns 0, or -1 with a line on out; codes_free releases in both cases.
int codes_take(savedcodes *s, int npoints, FILE *out);

// Keeps n0[0..2] and n1[0..4] of the points and ia1[0..7].
void codes_save(savedcodes *s, const point *points, int npoints, const int *ia1);

// Puts them back; what was fixed without a value is fixed then.
void codes_restore(const savedcodes *s, point *points, int npoints, int *ia1);

// Releases the rows; may be called twice.
void codes_free(savedcodes *s);

} // namespace vornengine

#endif
