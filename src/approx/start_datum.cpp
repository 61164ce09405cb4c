// The datum from which coordinates are spread: in the plane the position and the orientation
// of one station or the positions of two points, and one height. What the network lacks is
// made up: codes are turned into known ones, and the values that stand there are taken.
//
// Reads and writes working codes and the counts ia1: known x1, x2, x3 in 0 to 2, known
// orientations in 5.

#include "approx/spread.h"

namespace vornengine {

// The first station, or the first one that is to be held where it will be found.
static int station_to_hold(const point *points, int nsta)
{
    for (int i = 0; i < nsta; i++)
        if (points[i].n0[0] == N_FIXED_MISSING && points[i].n0[1] == N_FIXED_MISSING) return i;
    return 0;
}

// Makes the position of a station known where no coordinate is. Returns the station, or -1.
static int fix_position(const approxdata *net)
{
    if (net->nsta == 0) {
        fprintf(net->out, "In approx: Strange.... no theos...\n");
        return -1;
    }
    const int ifix = station_to_hold(net->points, net->nsta);
    net->points[ifix].n0[0] = net->points[ifix].n0[1] = N_NONE;
    net->ia1[0] = net->ia1[1] = 1;
    return ifix;
}

// One coordinate is known: the x1 beside a lone x2 becomes known. A lone x1 stays alone.
// Returns the point, or -1 for a lone x1.
static int complete_position(const approxdata *net)
{
    if (net->ia1[0] != 0) return -1;
    for (int i = 0; i < net->npoints; i++)
        if (net->points[i].n0[1] == N_NONE) {
            net->points[i].n0[0] = N_NONE;
            net->ia1[0] = 1;
            return i;
        }
    return -1;
}

static int first_known_station(const approxdata *net)
{
    const int i = next_known(net, 0);
    return i < net->nsta ? i : -1;
}

// A second known x1 holds the turn about a target.
static void fix_second_x1(const approxdata *net)
{
    for (int i = 0; i < net->npoints; i++)
        if (net->points[i].n0[0] != N_NONE) {
            net->points[i].n0[0] = N_NONE;
            net->ia1[0]++;
            return;
        }
}

// One position is known and no orientation: holds the turn. Returns 0 or -2.
static int fix_turn(const approxdata *net, int *ifix)
{
    if (*ifix >= net->nsta) {
        fix_second_x1(net);
        return 0;
    }
    if (*ifix == -1) *ifix = first_known_station(net);
    if (*ifix == -1) {
        fprintf(net->out, "In approx: Strange.... cannot fix...\n");
        return -2;
    }
    net->points[*ifix].n1[2] = N_NONE;
    net->ia1[5] = 1;
    return 0;
}

// Several positions are known and no orientation: when the first known station measures
// distances, the network hangs on it alone, with the orientation that stands in its record,
// and the other known points are computed anew. The counts stay as they are.
static void hang_on_one_station(const approxdata *net)
{
    const int ifix = first_known_station(net);
    if (ifix == -1 || istotal(net, ifix) != 1) return;
    net->points[ifix].n1[2] = N_NONE;
    for (int i = 0; i < net->npoints; i++)
        for (int k = 0; k < 2; k++)
            if (i != ifix && net->points[i].n0[k] == N_NONE) net->points[i].n0[k] = N_FIXED_MISSING;
}

// Makes one height known: that of the chosen point, else of the first one with a known
// coordinate in the plane.
static void fix_height(const approxdata *net, int ifix)
{
    for (int i = 0; i < net->npoints && ifix == -1; i++)
        if (net->points[i].n0[0] == N_NONE || net->points[i].n0[1] == N_NONE) ifix = i;
    if (ifix == -1) return;
    net->points[ifix].n0[2] = N_NONE;
    net->ia1[2] = 1;
}

static int count_unknowns(approxdata *net)
{
    net->nunk1 = 3 * net->npoints - net->ia1[0] - net->ia1[1] - net->ia1[2];
    net->nunk2 = net->nsta - net->ia1[5];
    net->nunk = net->nunk1 + net->nunk2;
    if (net->nunk1 >= 0 && net->nunk2 >= 0) return 0;
    fprintf(net->out, "In approx: Strange.... nunk1=%d\n", net->nunk1);
    fprintf(net->out, "                       nunk2=%d\n", net->nunk2);
    return -3;
}

static void number_unknowns(const approxdata *net)
{
    int next1 = 0, next2 = 0;
    for (int i = 0; i < net->npoints; i++) {
        point *p = net->points + (i < net->ntar ? net->nsta + i : i - net->ntar); // targets, then stations
        for (int k = 0; k < 3; k++)
            if (p->n0[k] != N_NONE) p->n0[k] = next1++;
        if (i >= net->ntar && p->n1[2] != N_NONE) p->n1[2] = next2++;
    }
}

// Holds what the plane lacks; ifix is the point chosen, or -1. Returns 0 or -2.
static int fix_plane(const approxdata *net, int *ifix)
{
    int nknown = net->ia1[0] + net->ia1[1];
    if (nknown == 0) {
        *ifix = fix_position(net);
        if (*ifix == -1) return -2;
        nknown = 2;
    }
    if (nknown == 1) {
        *ifix = complete_position(net);
        nknown = 2;
    }
    if (net->ia1[5] != 0) return 0;
    if (nknown == 2) return fix_turn(net, ifix);
    hang_on_one_station(net);
    return 0;
}

int datum_approx(approxdata *net)
{
    if (net->idebug) {
        fprintf(net->out, "In datum_approx: # of x1 fixed= %d\n", net->ia1[0]);
        fprintf(net->out, "                 # of x2 fixed= %d\n", net->ia1[1]);
        fprintf(net->out, "                 # of x3 fixed= %d\n", net->ia1[2]);
        fprintf(net->out, "                 # of R3 fixed= %d\n", net->ia1[5]);
    }
    int ifix = -1;
    if (fix_plane(net, &ifix) != 0) return -2;
    if (net->ia1[2] == 0) fix_height(net, ifix);
    if (net->dim == 2 && net->ia1[2] != net->npoints) {
        fprintf(net->out, "In approx: Strange.... when dim=2....\n");
        return -2;
    }
    if (count_unknowns(net) != 0) return -3;
    number_unknowns(net);
    return 0;
}

} // namespace vornengine
