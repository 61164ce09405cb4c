// What the simplex solver reads from its last tableau: the corrections of the unknowns (metres,
// radians) and the residuals of the observations, computed less observed.
//
// A variable outside the basis is 0: such an observation is fitted exactly. Writes delta and
// res[0] of the observations.

#include "solvers/simplex.h"

#include <math.h>

namespace vornengine {

static const double LENGTH_THRESHOLD = 0.01; // residual of a length that gets a mark, metres
static const double ANGLE_THRESHOLD = 0.05;  // of an angle, in the host's unit

// delta turns from the right-hand side into the corrections; column 0 of the tableau takes the
// residual of each row.
void simplex::readout(int rows)
{
    for (int i = 0; i < rows; i++) {
        rhs[i] = delta[i];
        delta[i] = 0.0;
        a[i][0] = 0.0;
    }
    for (int i = 0; i < rows; i++) {
        int complement, type, index;
        decode(ibase[i], &complement, &type, &index);
        const double t = rhs[i];
        if (type == 1) delta[index] = t;
        if (type == 2) delta[index] = -t;
        if (type == 3) a[index][0] = t;
        if (type == 4) a[index][0] = -t;
    }
    showcorrections();
    showresiduals();
}

// Of an unknown by its number; 0 for a number that is none.
double simplex::correction(int number) const { return number >= 0 && number < nunk ? delta[number] : 0.0; }

void simplex::showcorrections()
{
    fprintf(out, "\n\nCorrections to unknowns\n");
    for (int i = 0; i < npoints; i++) {
        const point *p = points + i;
        fprintf(out, "%8s", p->name);
        for (int k = 0; k < 3; k++) fprintf(out, "%15.6lf", correction(p->n0[k]));
        if (i < nsta) {
            fprintf(out, "\n%8s", " ");
            for (int k = 0; k < 4; k++)
                fprintf(out, "%15.6lf", p->n1[k] == N_NONE ? 0.0 : correction(nunk1 + p->n1[k]));
        }
        fprintf(out, "\n");
    }
}

// One list, whose rows begin at first; returns the first row of the next one. An angle is
// shown in the host's unit of horizontal angles.
int simplex::residuals(const char *heading, measure *list, int n, int first, double threshold, int angle)
{
    if (n > 0) fprintf(out, "%s", heading);
    for (int i = 0; i < n; i++) {
        measure *m = list + i;
        const double v = a[first + i][0];
        m->res[0] = v;
        const double shown = angle ? pproject->htoraw(0, pproject->htoraw(2, v)) : v;
        fprintf(out, "%s %s  %10.6lf %c\n", m->p1->name, m->p2->name, shown, fabs(v) > threshold ? '*' : ' ');
    }
    return n > 0 ? first + n : first;
}

void simplex::showresiduals()
{
    const double angle = pproject->rawtoh(2, ANGLE_THRESHOLD);
    int row = residuals("\n\ndistance residuals\n", dist, ndist, 0, LENGTH_THRESHOLD, 0);
    row = residuals("\n\nheight differences residuals\n", difh, ndifh, row, LENGTH_THRESHOLD, 0);
    row = residuals("\nhorizontal direction residuals\n", dir1, ndir1, row, angle, 1);
    residuals("\nvertical direction residuals\n", dir2, ndir2, row, angle, 1);
}

} // namespace vornengine
