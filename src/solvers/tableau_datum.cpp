// Conditions of a free network as rows of the simplex tableau, behind the observations.
//
// A point takes part by the flags of the datum, each coordinate in the column of its number; dx,
// dy, dz (metres) count from the centre. The flag of a fixed coordinate, which has no column,
// stays set.

#include "solvers/simplex.h"

namespace vornengine {

// Entry of row k of the conditions. A number that is no coordinate has no column.
void simplex::datumentry(int k, int number, double value)
{
    if (k < ndatum && number >= 0 && number < nunk1) a[nobs + k][number] = value;
}

// Translations, rotation and, with 4 conditions, scale. The entries of the rotation are
// crossed compared with those in space: -dy stands with y, dx with x.
void simplex::datumplane(const point *p)
{
    const int x = p->n0[0], y = p->n0[1];
    const double dx = p->xpt[0] - centre[0], dy = p->xpt[1] - centre[1];
    if (p->defdatum[0] == DATUM_USED) {
        datumentry(0, x, 1.0);
        datumentry(2, y, -dy);
        if (ndatum == 4) datumentry(3, x, dx);
    }
    if (p->defdatum[1] == DATUM_USED) {
        datumentry(1, y, 1.0);
        datumentry(2, x, dx);
        if (ndatum == 4) datumentry(3, y, dy);
    }
}

// Translations; with 6 or 7 conditions three rotations, with 4 or 5 the one about the third
// axis; with 5 or 7 the scale.
void simplex::datumspace(const point *p)
{
    const double dx = p->xpt[0] - centre[0], dy = p->xpt[1] - centre[1], dz = p->xpt[2] - centre[2];
    const double shift[3][3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
    const double turn[3][3] = {{0.0, -dz, dy}, {dz, 0.0, -dx}, {-dy, dx, 0.0}};
    const double scale[3] = {dx, dy, dz};
    const bool three = ndatum == 6 || ndatum == 7, one = ndatum == 4 || ndatum == 5;
    for (int k = 0; k < 3; k++) {
        if (p->defdatum[k] != DATUM_USED) continue;
        const int number = p->n0[k];
        for (int r = 0; r < 3; r++) datumentry(r, number, shift[r][k]);
        for (int r = 0; three && r < 3; r++) datumentry(3 + r, number, turn[r][k]);
        if (one) datumentry(3, number, turn[2][k]);
        if (ndatum == 5 || ndatum == 7) datumentry(ndatum - 1, number, scale[k]);
    }
}

void simplex::datumrows()
{
    for (const point *p = points; p < points + npoints; p++) {
        if (dim == 1 && p->defdatum[2] == DATUM_USED) datumentry(0, p->n0[2], 1.0);
        if (dim == 2) datumplane(p);
        if (dim == 3) datumspace(p);
    }
}

} // namespace vornengine
