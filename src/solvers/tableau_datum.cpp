// Conditions of a free network as rows of the simplex tableau, behind the observations. The flag
// of a fixed coordinate, which has no column, stays set.

#include "solution/datumrows.h"
#include "solvers/simplex.h"

namespace vornengine {

// Entry of row k of the conditions. A number that is no coordinate has no column.
void simplex::condition(int k, int number, double value)
{
    if (k < ndatum && number >= 0 && number < nunk1) a[nobs + k][number] = value;
}

// The entries of the rotation in the plane are crossed: -dy stands with y, dx with x.
void simplex::datumrows()
{
    const datumflags flags = dim == 2 ? FLAG_OF_EXCHANGED : FLAG_OF_COLUMN;
    for (const point *p = points; p < points + npoints; p++) {
        datumentry e[DATUM_ENTRIES];
        const int n = datum_entries(p, centre, dim, ndatum, flags, e);
        for (int i = 0; i < n; i++) condition(e[i].row, p->n0[e[i].coordinate], e[i].value);
    }
}

} // namespace vornengine
