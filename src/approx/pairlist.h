// Measures by the two points that they join.
//
// Row r lists what starts at r (or ends at r, for a turned list): its entries are
// first[r] <= e < first[r + 1], ascending in to[e], and in list order where to[e] is equal.
// Example, three shots 0: A-C, 1: A-B, 2: A-C with A, B, C the points 0, 1, 2, rows A and B:
//   first 0 3 3   to 1 2 2   item 1 0 2
// All counts are limited by what an int holds; lists come from measure counts, which are.

#ifndef VORN_PAIRLIST_H
#define VORN_PAIRLIST_H

namespace vornengine {

struct pairlist {
    int *first; // [nrow + 1]
    int *to;    // [first[nrow]] point or station at the other end
    int *item;  // [first[nrow]] index of the measure
};

// Sorts the n pairs (from[k], to[k]) into l; a pair with a negative number is left out.
//   nrow, ncol  in  from < nrow, to < ncol
// Returns 0, or -1 without memory; l is then empty and needs no release.
int pairlist_make(pairlist *l, int n, const int *from, const int *to, int nrow, int ncol);

// Keeps of each pair its last entry.
void pairlist_keep_last(pairlist *l, int nrow);

// The list seen from the other end, with the same items. Returns as pairlist_make.
int pairlist_turn(pairlist *l, const pairlist *of, int nrow, int ncol);

// First entry of row with the given other end, or -1; more entries of the pair follow it.
int pairlist_find(const pairlist *l, int row, int to);

// Releases the arrays and leaves an empty list; may be called twice.
void pairlist_free(pairlist *l);

} // namespace vornengine

#endif
