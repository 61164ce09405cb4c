// Square matrices as tables of rows.

#include "approx/rows.h"

#include <stdlib.h>

#include "numerics/memory.h"

namespace vornengine {

int rows_take(double **rows, int n)
{
    for (int i = 0; i < n; i++) {
        rows[i] = (double *)zeroed(n, sizeof(double));
        if (!rows[i]) return i;
    }
    return n;
}

void rows_free(double **rows, int n)
{
    for (int i = 0; rows && i < n; i++) free(rows[i]);
    free(rows);
}

} // namespace vornengine
