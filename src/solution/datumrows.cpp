// Entries of a point in the datum conditions: which coordinate, which value, whose flag.

#include "solution/datumrows.h"

namespace vornengine {

struct entrylist {
    const point *p;
    double d[3]; // point less centre
    datumflags flags;
    datumentry *e;
    int n;
};

static entrylist empty_list(const point *p, const double centre[3], datumflags flags, datumentry *e)
{
    const double *x = p->xpt;
    return {p, {x[0] - centre[0], x[1] - centre[1], x[2] - centre[2]}, flags, e, 0};
}

static void enter(entrylist *l, int row, int coordinate, double value) { l->e[l->n++] = {row, coordinate, value}; }

static bool used(const entrylist *l, int coordinate) { return l->p->defdatum[coordinate] == DATUM_USED; }

static void translations(entrylist *l, int dim)
{
    for (int k = 0; k < dim; k++)
        if (used(l, k)) enter(l, k, k, 1.0);
}

static void scale(entrylist *l, int row, int dim)
{
    for (int k = 0; k < dim; k++)
        if (used(l, k)) enter(l, row, k, l->d[k]);
}

// Turn in the plane of the coordinates i and j: -dj at i and di at j.
static void turn(entrylist *l, int row, int i, int j)
{
    const double at_i = -l->d[j], at_j = l->d[i];
    switch (l->flags) {
    case FLAG_OF_COLUMN:
        if (used(l, i)) enter(l, row, i, at_i);
        if (used(l, j)) enter(l, row, j, at_j);
        return;
    case FLAG_OF_EXCHANGED:
        if (used(l, i)) enter(l, row, j, at_i);
        if (used(l, j)) enter(l, row, i, at_j);
        return;
    default:
        if (used(l, j)) enter(l, row, i, at_i);
        if (used(l, i) || (l->flags == FLAG_NOT_OF_X3 && j == 0)) enter(l, row, j, at_j);
    }
}

static void turns(entrylist *l, int row)
{
    turn(l, row, 1, 2);
    turn(l, row + 1, 2, 0);
    turn(l, row + 2, 0, 1);
}

int datum_entries(const point *p, const double centre[3], int dim, int ndatum, datumflags flags,
                  datumentry e[DATUM_ENTRIES])
{
    entrylist l = empty_list(p, centre, flags, e);
    if (dim == 1) {
        if (used(&l, 2)) enter(&l, 0, 2, 1.0);
        return l.n;
    }
    translations(&l, dim);
    if (dim == 2) {
        turn(&l, 2, 0, 1);
        if (ndatum == 4) scale(&l, 3, dim);
        return l.n;
    }
    if (ndatum == 6 || ndatum == 7) turns(&l, 3);
    if (ndatum == 4 || ndatum == 5) turn(&l, 3, 0, 1);
    if (ndatum == 5 || ndatum == 7) scale(&l, ndatum - 1, dim);
    return l.n;
}

int turn_entries(const point *p, const double centre[3], datumflags flags, datumentry e[DATUM_ENTRIES])
{
    entrylist l = empty_list(p, centre, flags, e);
    turns(&l, 0);
    return l.n;
}

} // namespace vornengine
