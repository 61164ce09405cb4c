// The table of pairs of stations that sighted each other, from which the best one is chosen.
//
// A row: 0, 1 the stations i < j; 2 common shots; 3 index in dist of a scale bar that both
// observed, -1 without one; 4 to 6 common targets with known x1, x2, x3.

#include <stdlib.h>

#include "approx/approx.h"

namespace vornengine {

// Marks the bars that station i observed with their number, the others with -1. Returns how
// many it observed.
static int mark_bars(scalebar *bars, int nbar, int i, int **table)
{
    int nmarked = 0;
    for (int b = 0; b < nbar; b++) {
        bars[b].mark = shot_bar(bars + b, i, table) ? b : -1;
        nmarked += bars[b].mark == b;
    }
    return nmarked;
}

// Index in dist of the first marked bar that station j observed too, or -1.
static int common_bar(const scalebar *bars, int nbar, int j, int **table)
{
    for (int b = 0; b < nbar; b++)
        if (bars[b].mark >= 0 && shot_bar(bars + b, j, table)) return bars[b].idist;
    return -1;
}

// Counts the common targets of the pair and how many of them are known in each coordinate.
void approx::count_targets(int *row, int **table) const
{
    for (int e = seen.first[row[0]]; e < seen.first[row[0] + 1]; e++) {
        const int t = seen.to[e];
        if (t < nsta || table[row[1]][t] == 0) continue;
        row[2]++;
        for (int k = 0; k < 3; k++) row[4 + k] += points[t].n0[k] == N_NONE;
    }
}

// Common shots with stations among them. The diagonal of the table counts j as a common shot.
int approx::common_points(int i, int j, int **table) const
{
    int n = 0;
    for (int e = seen.first[i]; e < seen.first[i + 1]; e++) n += table[j][seen.to[e]] > 0;
    return n;
}

// The pairs of station i with later stations, behind the nrow rows of the table. Returns the
// number of rows then.
int approx::pairs_of(int i, int (*tabpair)[7], int nrow, scalebar *bars, int nbar, int **table)
{
    if (table[i][i] == 0) return nrow;
    const int nmarked = mark_bars(bars, nbar, i, table);
    for (int e = seen.first[i]; e < seen.first[i + 1]; e++) {
        const int j = seen.to[e];
        if (j <= i || j >= nsta || table[j][i] == 0) continue;
        int *row = tabpair[nrow++];
        row[0] = i;
        row[1] = j;
        row[3] = nmarked > 0 ? common_bar(bars, nbar, j, table) : -1;
        count_targets(row, table);
    }
    return nrow;
}

// Where no pair has three common targets, the stations count as well.
void approx::count_stations_too(int (*tabpair)[7], int npair, int **table)
{
    for (int r = 0; r < npair; r++)
        if (tabpair[r][2] >= 3) return;
    if (idebug) fprintf(out, "\nMust count the theodolites in the common shots\n");
    for (int r = 0; r < npair; r++) tabpair[r][2] = common_points(tabpair[r][0], tabpair[r][1], table);
}

void approx::show_pairs(int (*tabpair)[7], int npair) const
{
    fprintf(out, "\nNumber of collimating pairs %d\n", npair);
    for (int r = 0; r < npair; r++) {
        const int *row = tabpair[r];
        fprintf(out, "  %3d   %s %s  %3d %3d %3d%2d%2d\n", r, points[row[0]].name, points[row[1]].name, row[2], row[3],
                row[4], row[5], row[5]); // x2 in both places
    }
}

// tabpair: [npair] zeroed rows.
int approx::buildtabpair(int (*tabpair)[7], int npair, int **table)
{
    scalebar *bars;
    int nbar;
    if (take_bars(&bars, &nbar) != 0) {
        fprintf(out, "in buildtabpair: cannot allocate\n");
        return -1;
    }
    int nrow = 0;
    for (int i = 0; i < nsta; i++) nrow = pairs_of(i, tabpair, nrow, bars, nbar, table);
    free(bars);
    count_stations_too(tabpair, npair, table);
    if (idebug) show_pairs(tabpair, npair);
    return 0;
}

} // namespace vornengine
