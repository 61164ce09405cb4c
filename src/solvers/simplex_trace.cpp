// Trace of the simplex solver: which identifier stands for which unknown and residual, and the
// whole tableau.

#include "solvers/simplex.h"

namespace vornengine {

enum { BLOCK = 7 }; // columns of the matrix side by side

// Identifiers of the two parts of every residual of a list; returns that of the next list.
int simplex::tableoflist(const char *text, const measure *list, int n, int id)
{
    for (int i = 0; i < n; i++, id++)
        fprintf(out, "%8s %8s   %s %8d %4d\n", list[i].p1->name, list[i].p2->name, text, id, id + nobs);
    return id;
}

void simplex::unknowntable()
{
    fprintf(out, "\nTable of Simplex unknowns\n\n");
    for (const point *p = points; p < points + npoints; p++)
        for (int k = 0; k < 3; k++)
            if (p->n0[k] != N_NONE)
                fprintf(out, "%8s coordinate %1d %15d %4d\n", p->name, k + 1, p->n0[k], p->n0[k] + nunk);
    for (const point *p = points; p < points + nsta; p++)
        for (int k = 0; k < 3; k++)
            if (p->n1[k] != N_NONE) {
                const int id = nunk1 + p->n1[k];
                fprintf(out, "%8s rotation %1d %17d %4d\n", p->name, k + 1, id, id + nunk);
            }
    int id = tableoflist("distance", dist, ndist, 2 * nunk);
    id = tableoflist("height d", difh, ndifh, id);
    id = tableoflist("horiz   ", dir1, ndir1, id);
    tableoflist("verti   ", dir2, ndir2, id);
}

// Columns first to last - 1 under a head of seven numbers.
void simplex::debugblock(int rows, int first, int last)
{
    fprintf(out, "%3s", " ");
    for (int j = first; j < first + BLOCK; j++) fprintf(out, "%9d", j);
    fprintf(out, "\n");
    for (int i = 0; i < rows; i++) {
        fprintf(out, "%5d", i);
        for (int j = first; j < last; j++) fprintf(out, "%9.3lf", a[i][j]);
        fprintf(out, "\n");
    }
}

// A last block follows the whole ones also when it has no columns.
void simplex::debugsimplex(int rows, int cols)
{
    fprintf(out, "\n*** debugsimplex info ***\n");
    fprintf(out, "\nRHS    global cost=%15.5lf\n", gcost);
    for (int i = 0; i < rows; i++) fprintf(out, "%3d%19.5lf%19.5lf%12d\n", i, delta[i], newpd[i], ibase[i]);
    fprintf(out, "cost line part N+\n");
    for (int j = 0; j < cols; j++) fprintf(out, "%3d%19.5lf%12d\n", j, cost[j], inplus[j]);
    fprintf(out, "matrix part N+\n");
    int first = 0;
    for (; first + BLOCK <= cols; first += BLOCK) debugblock(rows, first, first + BLOCK);
    debugblock(rows, first, cols > first ? cols : first);
    fprintf(out, "\n*** end of debugsimplex ***\n\n");
}

} // namespace vornengine
