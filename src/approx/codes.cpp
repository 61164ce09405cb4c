// Saved codes: the rows of each table lie one behind the other in one block.

#include "approx/codes.h"

#include <stdlib.h>

#include "numerics/memory.h"

namespace vornengine {

// Points the rows into one zeroed block. Returns 0 or -1.
static int take_rows(int **rows, int nrow, int ncol)
{
    int *block = (int *)zeroed((long long)nrow * ncol, sizeof(int));
    if (!block) return -1;
    rows[0] = block; // also without points, where the table of rows has one element
    for (int i = 1; i < nrow; i++) rows[i] = block + (size_t)i * (size_t)ncol;
    return 0;
}

int codes_take(savedcodes *s, int npoints, FILE *out)
{
    s->savn0 = (int **)zeroed(npoints + 1LL, sizeof(int *));
    s->savn1 = (int **)zeroed(npoints + 1LL, sizeof(int *));
    if (!s->savn0 || !s->savn1) {
        fprintf(out, "In approx: Cannot allocate savn0, savn1\n");
        return -1;
    }
    if (take_rows(s->savn0, npoints, 3) != 0 || take_rows(s->savn1, npoints, 5) != 0) {
        fprintf(out, "In approx: Cannot allocate columns for savn0, savn1\n");
        return -1;
    }
    return 0;
}

void codes_save(savedcodes *s, const point *points, int npoints, const int *ia1)
{
    for (int k = 0; k < 8; k++) s->ia1[k] = ia1[k];
    for (int i = 0; i < npoints; i++) {
        for (int k = 0; k < 3; k++) s->savn0[i][k] = points[i].n0[k];
        for (int k = 0; k < 5; k++) s->savn1[i][k] = points[i].n1[k];
    }
}

static int code_after(int saved) { return saved == N_FIXED_MISSING ? N_NONE : saved; }

void codes_restore(const savedcodes *s, point *points, int npoints, int *ia1)
{
    for (int k = 0; k < 8; k++) ia1[k] = s->ia1[k];
    for (int i = 0; i < npoints; i++) {
        for (int k = 0; k < 3; k++) points[i].n0[k] = code_after(s->savn0[i][k]);
        for (int k = 0; k < 5; k++) points[i].n1[k] = code_after(s->savn1[i][k]);
    }
}

void codes_free(savedcodes *s)
{
    if (s->savn0) free(s->savn0[0]);
    if (s->savn1) free(s->savn1[0]);
    free(s->savn0);
    free(s->savn1);
    s->savn0 = s->savn1 = NULL;
}

} // namespace vornengine
