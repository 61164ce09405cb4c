// The copies of the points of lumps: which copy stands for which epoch.

#ifndef VORN_LUMPCOPIES_H
#define VORN_LUMPCOPIES_H

#include <stdio.h>

#include "vorn/project.h"
#include "loading/hostpoints.h"
#include "loading/namechain.h"
#include "loading/numbers.h"
#include "vorn/records.h"

namespace vornengine {

// What a cell of the table holds beside the number of a copy; and of the row behind the
// members, which counts the copies of each epoch.
enum {
    NO_COPY = -1,
    FEW_COPIES = -1, // fewer than three: the epoch is not used
    EPOCH_TAKEN = -2 // used already
};

// The host's points of the lumps, and the table of the lump at work.
//
// tab has a row for each member of
// a lump, in the host's order: the host point, then for each epoch of itimetable the number
// of the copy that was sighted then. Example, epochs 3 5, host targets 0 (points 7 and 8) and
// 1 (point 9, at epoch 5 only) behind 4 stations:  4 7 8  and  5 -1 9, counted  . 1 2.
struct lumpcopies {
    FILE *out;
    Feedback *fb;
    int idebug;
    point *points; // [npoints]
    int npoints, nsta;
    const measure *dir1; // [ndir1]
    int ndir1;
    hostpoints host;
    const measure_input *directions; // [ndirections] the host's
    int ndirections;

    int nlump;                           // distinct lump indexes
    int *ilumtable;                      // [nlump] in the order of the host's points
    int *first, *last;                   // [nlump] first and last host point of a lump
    int *next;                           // [points of the host] next host point of the same lump, or -1
    int *ncopies;                        // [nlump] points of the lump among points
    int nepoch;                          // columns
    int *itimetable;                     // [nepoch]
    numberindex *lumpindex, *epochindex; // of the two tables; null: they are searched
    namechain byname;                    // points
    namechain from, to;                  // dir1 by the names of its ends
    int *tab;                            // [npoints + 1][nepoch + 1]
    int nrow;                            // members of the lump at work
};

// Lists the lumps and epochs of the host and gives the points their lump; the inputs are set.
// Returns 0, -1 without memory for the tables, -2 without memory for tab; copies_free releases
// what there is.
int copies_make(lumpcopies *w);

// Fills tab for lump b. Returns 0, -1 when the lump cannot be compared: a line has been sent,
// unless a member is no point of the run.
int copies_fill(lumpcopies *w, int b);

// Name of the member in row r, or the number of its copy at column c, from 0, or NO_COPY.
const char *member_name(const lumpcopies *w, int r);
int copy_at(const lumpcopies *w, int r, int c);

// The counts of the copies, by column, from 0.
int *copy_counts(const lumpcopies *w);

// Column of an epoch that has copies enough, or -1.
int column_of(const lumpcopies *w, int epoch);

void copies_free(lumpcopies *w);

} // namespace vornengine

#endif
