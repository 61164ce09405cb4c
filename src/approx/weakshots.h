// Common shots whose rays meet under too small an angle to take part in the adjustment of a
// guess.

#ifndef VORN_WEAKSHOTS_H
#define VORN_WEAKSHOTS_H

#include <stdio.h>

namespace vornengine {

const int STRONG_SHOTS = 3; // at least so many stay

struct weakshots {
    int n;        // common shots
    int nweak;    // of these put aside
    int *iweak;   // [n] point of a shot put aside, otherwise -1
    double *weak; // [n] its angle of intersection, radians
};

// Allocates the lists for n shots, none of them weak. Returns 0 or -1; weakshots_free
// releases in both cases.
int weakshots_take(weakshots *s, int n);

// Puts shot k aside unless too few would stay: its entry of isys becomes -1.
void weakshots_put_aside(weakshots *s, int k, double angle, int *isys);

// Gives shots back to isys, those of the largest angle first, until enough are strong, with a
// line each.
void weakshots_put_back(weakshots *s, int *isys, FILE *out);

// Moves the strong shots of isys together, in their order; returns their number.
int weakshots_close_gaps(const weakshots *s, int *isys);

// Releases the lists; may be called twice.
void weakshots_free(weakshots *s);

} // namespace vornengine

#endif
