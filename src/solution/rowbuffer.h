// The row of one observation on its way to a solver.
//
// ia1[1..n1] numbers of first-kind unknowns (coordinates), a1[1..n1] their coefficients;
// ia2[1..n2] numbers of second-kind unknowns, in their own series, a2[1..n2] their coefficients;
// ia1[0] = n1, ia2[0] = n2. Two points have six coordinates; the station has three orientations
// and each of two points seven parameters of its lump.

#ifndef VORN_ROWBUFFER_H
#define VORN_ROWBUFFER_H

namespace vornengine {

struct rowbuffer {
    double a1[8] = {0.0};  // entries 1 to 7
    double a2[18] = {0.0}; // entries 1 to 17
    int ia1[8] = {0};
    int ia2[18] = {0};
};

} // namespace vornengine

#endif
