// Rows of isplit by the names of their points.

#ifndef VORN_SPLITROWS_H
#define VORN_SPLITROWS_H

#include "loading/hostpoints.h"
#include "loading/namechain.h"

namespace vornengine {

// The rows of the stations, or those of the targets; a row's number counts from the first of
// its kind. Rows of one name are chained, so that an observation visits the rows of its own
// points only. Without memory for the chains they are null, and the rows are searched.
struct splitrows {
    hostpoints host; // the host's points of this kind alone
    int n;           // rows
    int nepoch;      // columns behind the first
    int **rows;      // [n][nepoch + 1]
    namechain chain;
};

// Name of the point of a row.
const char *row_name(const splitrows *s, int i);

// Makes the chains, as far as there is memory; the other fields are set.
void chain_rows(splitrows *s);

// The first row behind i that bears a name, or -1; i is -1 or a row of that name.
int next_row(const splitrows *s, const char *name, int i);

// Releases the chains.
void unchain_rows(splitrows *s);

// Releases n rows and their table; null is allowed.
void free_rows(int **rows, int n);

} // namespace vornengine

#endif
