// First values of coordinates (metres) and orientations (radians) before the adjustment.

#include "approx/approx.h"
#include "vorn/run.h"
#include "vorn/message.h"

#include <new>

namespace vornengine {

// The working values become the values at the start, of everything that is not fixed.
static void keep_first_values(point *points, int n)
{
    for (point *p = points; p < points + n; p++)
        for (int k = 0; k < 3; k++) {
            if (p->n0[k] != N_NONE) p->x0[k] = p->xpt[k];
            if (p->n1[k] != N_NONE) p->e0[k] = p->xex[k];
        }
}

// iapprox says what is to be computed: 0 nothing, 1 all by the user's wish, 9 what has no
// value. Returns 0 and leaves iapprox 0, or a negative result of approx::compute. Without
// memory for the object the run goes on with the coordinates that stand.
int vornrun::vornapprox()
{
    if (iapprox == 0) {
        char question[] = "Do you want to compute new approximate values?";
        char title[] = "Approximation Info";
        if (pfeedback && pfeedback->decision(question, title) != 0) iapprox = 1;
    }
    if (iapprox == 0) return 0;

    int result = 0;
    papprox = new (std::nothrow) approx(*this, ia1);
    if (papprox)
        result = papprox->compute(iapprox);
    else
        tell(pfeedback, "vornapprox: Cannot allocate approx");
    if (result == 0) iapprox = 0;
    keep_first_values(points, npoints);
    delete papprox;
    papprox = NULL;
    return result;
}

} // namespace vornengine
