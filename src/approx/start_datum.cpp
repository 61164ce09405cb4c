// The datum from which coordinates are spread: in the plane the position and the orientation
// of one station or the positions of two points, and one height. What the network lacks is
// made up: codes are turned into known ones, and the values that stand there are taken.
//
// Reads and writes working codes and the counts ia1: known x1, x2, x3 in 0 to 2, known
// orientations in 5.

#include "approx/approx.h"

namespace vornengine {

static int in_plane(const point *p) { return p->n0[0] == N_NONE && p->n0[1] == N_NONE; }

// The first station, or the first one that is to be held where it will be found.
static int station_to_hold(const point *points, int nsta)
{
    for (int i = 0; i < nsta; i++)
        if (points[i].n0[0] == N_FIXED_MISSING && points[i].n0[1] == N_FIXED_MISSING) return i;
    return 0;
}

// Makes the position of a station known where no coordinate is. Returns the station, or -1.
int approx::fix_position()
{
    if (nsta == 0) {
        fprintf(out, "In approx: Strange.... no theos...\n");
        return -1;
    }
    const int ifix = station_to_hold(points, nsta);
    points[ifix].n0[0] = points[ifix].n0[1] = N_NONE;
    ia1[0] = ia1[1] = 1;
    return ifix;
}

// One coordinate is known: the x1 beside a lone x2 becomes known. A lone x1 stays alone.
// Returns the point, or -1 for a lone x1.
int approx::complete_position()
{
    if (ia1[0] != 0) return -1;
    for (int i = 0; i < npoints; i++)
        if (points[i].n0[1] == N_NONE) {
            points[i].n0[0] = N_NONE;
            ia1[0] = 1;
            return i;
        }
    return -1;
}

int approx::first_known_station() const
{
    for (int i = 0; i < nsta; i++)
        if (in_plane(points + i)) return i;
    return -1;
}

// A second known x1 holds the turn about a target.
void approx::fix_second_x1()
{
    for (int i = 0; i < npoints; i++)
        if (points[i].n0[0] != N_NONE) {
            points[i].n0[0] = N_NONE;
            ia1[0]++;
            return;
        }
}

// One position is known and no orientation: holds the turn. Returns 0 or -2.
int approx::fix_turn(int *ifix)
{
    if (*ifix >= nsta) {
        fix_second_x1();
        return 0;
    }
    if (*ifix == -1) *ifix = first_known_station();
    if (*ifix == -1) {
        fprintf(out, "In approx: Strange.... cannot fix...\n");
        return -2;
    }
    points[*ifix].n1[2] = N_NONE;
    ia1[5] = 1;
    return 0;
}

// Several positions are known and no orientation: when the first known station measures
// distances, the network hangs on it alone, with the orientation that stands in its record,
// and the other known points are computed anew. The counts stay as they are.
void approx::hang_on_one_station()
{
    const int ifix = first_known_station();
    if (ifix == -1 || istotal(ifix) != 1) return;
    points[ifix].n1[2] = N_NONE;
    for (int i = 0; i < npoints; i++)
        for (int k = 0; k < 2; k++)
            if (i != ifix && points[i].n0[k] == N_NONE) points[i].n0[k] = N_FIXED_MISSING;
}

// Makes one height known: that of the chosen point, else of the first one with a known
// coordinate in the plane.
void approx::fix_height(int ifix)
{
    for (int i = 0; i < npoints && ifix == -1; i++)
        if (points[i].n0[0] == N_NONE || points[i].n0[1] == N_NONE) ifix = i;
    if (ifix == -1) return;
    points[ifix].n0[2] = N_NONE;
    ia1[2] = 1;
}

int approx::count_unknowns()
{
    nunk1 = 3 * npoints - ia1[0] - ia1[1] - ia1[2];
    nunk2 = nsta - ia1[5];
    nunk = nunk1 + nunk2;
    if (nunk1 >= 0 && nunk2 >= 0) return 0;
    fprintf(out, "In approx: Strange.... nunk1=%d\n", nunk1);
    fprintf(out, "                       nunk2=%d\n", nunk2);
    return -3;
}

void approx::number_unknowns()
{
    int next1 = 0, next2 = 0;
    for (int i = 0; i < npoints; i++) {
        point *p = points + (i < ntar ? nsta + i : i - ntar); // targets, then stations
        for (int k = 0; k < 3; k++)
            if (p->n0[k] != N_NONE) p->n0[k] = next1++;
        if (i >= ntar && p->n1[2] != N_NONE) p->n1[2] = next2++;
    }
}

// Holds what the plane lacks; ifix is the point chosen, or -1. Returns 0 or -2.
int approx::fix_plane(int *ifix)
{
    int nknown = ia1[0] + ia1[1];
    if (nknown == 0) {
        *ifix = fix_position();
        if (*ifix == -1) return -2;
        nknown = 2;
    }
    if (nknown == 1) {
        *ifix = complete_position();
        nknown = 2;
    }
    if (ia1[5] != 0) return 0;
    if (nknown == 2) return fix_turn(ifix);
    hang_on_one_station();
    return 0;
}

int approx::datum_approx()
{
    if (idebug) {
        fprintf(out, "In datum_approx: # of x1 fixed= %d\n", ia1[0]);
        fprintf(out, "                 # of x2 fixed= %d\n", ia1[1]);
        fprintf(out, "                 # of x3 fixed= %d\n", ia1[2]);
        fprintf(out, "                 # of R3 fixed= %d\n", ia1[5]);
    }
    int ifix = -1;
    if (fix_plane(&ifix) != 0) return -2;
    if (ia1[2] == 0) fix_height(ifix);
    if (dim == 2 && ia1[2] != npoints) {
        fprintf(out, "In approx: Strange.... when dim=2....\n");
        return -2;
    }
    if (count_unknowns() != 0) return -3;
    number_unknowns();
    return 0;
}

} // namespace vornengine
