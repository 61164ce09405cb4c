// What a computation of first values works on: the network of the run with its directions,
// vertical angles and distances, and its shots and distances as lists.
//
// A direction reading r of station i lies along the plane angle r + oap[i], counted from the
// x1 axis towards the x2 axis; oap[i] is -xex[2]. With as many vertical angles as directions
// the two lists are parallel: the same index, the same sight.

#ifndef VORN_APPROXDATA_H
#define VORN_APPROXDATA_H

#include <stdio.h>

#include "approx/pairlist.h"
#include "loading/hostpoints.h"
#include "vorn/records.h"

namespace vornengine {

struct approxdata {
    project *pproject; // the host object, not owned
    hostpoints host;   // the host's stations and targets
    FILE *out;         // report stream
    double pi;
    int idebug; // non-zero: trace lines
    int dim;
    point *points; // [npoints] stations first; vorn's, written in place
    int nsta, ntar, npoints;
    measure *dist, *dir1, *dir2; // [ndist], [ndir1], [ndir2]; vorn's, read only
    int ndist, ndir1, ndir2;
    int *ia1;         // [8] counts of fixed items, vorn's: 0 to 2 coordinates, 5 third orientations
    int nunk1, nunk2; // coordinates, orientations to compute
    int nunk;         // both

    // A loop over what a station saw, or over who saw a point, runs over these lists and not
    // over a row or a column of the table of a spread.
    pairlist shots;   // dir1 by station and point
    pairlist seen;    // the same, the last shot of each pair alone
    pairlist seenby;  // seen by point and station
    pairlist lengths; // dist by station and point
};

// Makes the four lists. Returns 0, or -1 without memory; drop_lists releases in both cases.
int take_lists(approxdata *net);

// Releases the lists; may be called twice.
void drop_lists(approxdata *net);

// Index of a point, -1 when it is not in points.
int point_number(const approxdata *net, const point *p);

// 1 when point i is a station that measures distances, otherwise 0.
int istotal(const approxdata *net, int i);

// Whether both plane coordinates of a point are known, by its working codes.
int in_plane(const point *p);

// The first point from start on that is known in the plane, or npoints.
int next_known(const approxdata *net, int start);

} // namespace vornengine

#endif
