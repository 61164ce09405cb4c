// The arrays of a guess.

#include "approx/guesswork.h"

#include <stdlib.h>

#include "numerics/memory.h"

namespace vornengine {

int guesswork_take(guesswork *g, int ncommon)
{
    g->n = 0;
    g->isys = (int *)zeroed(ncommon + 2LL, sizeof(int));
    g->app = (double *)zeroed(3LL * ncommon + 3, sizeof(double));
    g->rhs = (double *)zeroed(3LL * ncommon + 3, sizeof(double));
    return g->isys && g->app && g->rhs ? 0 : -1;
}

void guesswork_free(guesswork *g)
{
    free(g->isys);
    free(g->app);
    free(g->rhs);
    *g = guesswork();
}

} // namespace vornengine
