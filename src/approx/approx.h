// First coordinates and orientations of a network from its directions, vertical angles and
// distances. Lengths in metres, angles in radians.
//
//   approx a(pproject, points, dist, dir1, dir2, nsta, ntar, ndist, ndir1, ndir2, ia1);
//   int result = a.compute(9);
//
// The steps are functions on the record of the run (approxdata.h) and the tables of a spread
// (spreadtables.h), each declared in the header of its file.

#ifndef VORN_APPROX_H
#define VORN_APPROX_H

#include "approx/approxdata.h"
#include "vorn/records.h"

namespace vornengine {

class approx {
public:
    approx(project *pproject, point *points, measure *dist, measure *dir1, measure *dir2, int nsta, int ntar, int ndist,
           int ndir1, int ndir2, int *ia1);
    ~approx();
    approx(const approx &) = delete;
    approx &operator=(const approx &) = delete;

    // Computes what has no value (iapprox 9) or all that is not fixed (iapprox 1): xpt[0..2]
    // of every point, xex[2] of every station. Returns 0, or -1 without memory, -2 without a
    // datum to start from, -12 when not everything could be reached; after a failure the
    // codes of the points are not restored.
    int compute(int iapprox);

private:
    friend struct approx_access; // white-box tests

    approxdata net;
};

} // namespace vornengine

#endif
