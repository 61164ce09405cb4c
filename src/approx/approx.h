// First coordinates and orientations of a network from its directions, vertical angles and
// distances. Lengths in metres, angles in radians.
//
//   approx a(in, ia1);
//   int result = a.compute(9);
//
// The steps are functions on the record of the run (approxdata.h) and the tables of a spread
// (spreadtables.h), each declared in the header of its file.

#ifndef VORN_APPROX_H
#define VORN_APPROX_H

#include "approx/approxdata.h"
#include "vorn/settings.h"

namespace vornengine {

class approx {
public:
    // Takes the settings and the network of the run, and its counts of fixed items.
    approx(const solverinput &in, int *ia1);
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
