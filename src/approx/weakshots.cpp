// Common shots put aside for the adjustment of a guess.

#include "approx/weakshots.h"

#include <stdlib.h>

#include "numerics/memory.h"

namespace vornengine {

int weakshots_take(weakshots *s, int n)
{
    s->n = n;
    s->nweak = 0;
    s->iweak = (int *)zeroed(n, sizeof(int));
    s->weak = (double *)zeroed(n, sizeof(double));
    if (!s->iweak || !s->weak) return -1;
    for (int k = 0; k < n; k++) s->iweak[k] = -1;
    return 0;
}

void weakshots_put_aside(weakshots *s, int k, double angle, int *isys)
{
    if (s->n - s->nweak <= STRONG_SHOTS) return;
    s->weak[k] = angle;
    s->iweak[k] = isys[k];
    isys[k] = -1;
    s->nweak++;
}

// The shot put aside with the largest angle, -1 without one.
static int strongest(const weakshots *s)
{
    int best = -1;
    for (int k = 0; k < s->n; k++)
        if (s->iweak[k] >= 0 && (best < 0 || s->weak[k] > s->weak[best])) best = k;
    return best;
}

void weakshots_put_back(weakshots *s, int *isys, FILE *out)
{
    for (int ifois = 0; s->n - s->nweak < STRONG_SHOTS && s->nweak > 0; ifois++) {
        const int k = strongest(s);
        fprintf(out, "when ifois =%d  put back %d\n", ifois, k);
        isys[k] = s->iweak[k];
        s->iweak[k] = -1;
        s->nweak--;
    }
}

int weakshots_close_gaps(const weakshots *s, int *isys)
{
    int n = 0;
    for (int k = 0; k < s->n; k++)
        if (isys[k] >= 0) isys[n++] = isys[k];
    return n;
}

void weakshots_free(weakshots *s)
{
    free(s->iweak);
    free(s->weak);
    *s = weakshots();
}

} // namespace vornengine
