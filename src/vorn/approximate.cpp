// First values of coordinates and orientations before the adjustment.

#include "vorn.h"

// iapprox says what is to be computed: 0 nothing, 1 all by the user's wish, 9 what has no
// value. Returns 0 when nothing was to be computed, -1 when it could not be.
int vorn::vornapprox()
{
    if (iapprox == 0) {
        char question[] = "Do you want to compute new approximate values?";
        char title[] = "Approximation Info";
        if (pfeedback && pfeedback->decision(question, title) != 0) iapprox = 1;
    }
    return iapprox == 0 ? 0 : -1;
}
