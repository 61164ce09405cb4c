// Adjustment of a guess: from the orientations of the search to positions of the common
// points, orientations and the height of the second station, by three iterations of least
// squares on directions and vertical angles. Metres and radians in the frame of guesswork.h.

#include "approx/approx.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "approx/rows.h"
#include "approx/weakshots.h"
#include "numerics/ludcmp.h"
#include "numerics/memory.h"

namespace vornengine {

enum { NITERATION = 3 };

void approx::show_isys(const int *isys, int n) const
{
    for (int k = 0; k < n; k++) fprintf(out, "isys[%4d] = %d\n", k, isys[k]);
}

// Puts shots aside whose rays meet under less than 18 degrees.
void approx::put_weak_aside(weakshots *s, double o1, double o2, int *isys, int **table)
{
    const int it1 = isys[s->n], it2 = isys[s->n + 1];
    for (int k = 0; k < s->n; k++) {
        const int p = isys[k];
        const double a = wrap(dir1[table[it1][p] - 1].val[0] + o1), b = wrap(dir1[table[it2][p] - 1].val[0] + o2);
        const double angle = fabs(wrap(b - a));
        if (!(angle < pi / 10)) continue;
        if (idebug) fprintf(out, "!!too weak intersection for %s\n", points[p].name);
        weakshots_put_aside(s, k, angle, isys);
    }
}

// Leaves the strong shots and the two stations in isys. Returns the number of strong shots.
int approx::strong_shots(weakshots *s, double o1, double o2, int *isys, int **table)
{
    put_weak_aside(s, o1, o2, isys, table);
    const int nstrong = s->n - s->nweak;
    if (nstrong < STRONG_SHOTS) {
        fprintf(out, "\n\nTO DO: Must really look at these weak points\n\n");
        if (idebug) fprintf(out, "Must put back %d weak shots\n", STRONG_SHOTS - nstrong);
        weakshots_put_back(s, isys, out);
    }
    if (idebug && s->nweak > 0) {
        fprintf(out, "\n%d weak shots over %d shots\n\n", s->nweak, s->n);
        show_isys(isys, s->n + 2);
    }
    const int it1 = isys[s->n], it2 = isys[s->n + 1], n = weakshots_close_gaps(s, isys);
    isys[n] = it1;
    isys[n + 1] = it2;
    return n;
}

// Adds the shots of both stations to the normal equations.
void approx::guess_equations(double **mat, double *rhs, int n, const int *isys, int **table, const double *app)
{
    const int m = 3 * n + 3;
    double sum = 0.0;
    for (int k = 0; k < n; k++) {
        const double *p = app + 3 * (size_t)k;
        const int s1 = table[isys[n]][isys[k]] - 1, s2 = table[isys[n + 1]][isys[k]] - 1;
        guess_normal(mat, rhs, m, k, p[0], p[1], p[2], 1, 0.0, 0.0, app[m - 2], dir1[s1].val[0], dir2[s1].val[0], &sum);
        guess_normal(mat, rhs, m, k, p[0], p[1], p[2], 2, 1.0, app[m - 3], app[m - 1], dir1[s2].val[0], dir2[s2].val[0],
                     &sum);
    }
}

// nit iterations. Leaves rhs zero. Returns 0 or -1.
int approx::iterate_guess(double **mat, int *indx, int nit, int n, const int *isys, int **table, double *app,
                          double *rhs)
{
    const int m = 3 * n + 3;
    double d;
    for (int it = 1; it <= nit; it++) {
        guess_equations(mat, rhs, n, isys, table, app);
        if (ludcmp(mat, m, indx, &d, out) != 0) {
            fprintf(out, "guess_solve: cannot solve at iteration %d\n", it);
            return -1;
        }
        lubksb(mat, m, indx, rhs);
        for (int i = 0; i < m; i++) app[i] += rhs[i];
        memset(rhs, 0, (size_t)m * sizeof(double));
        for (int i = 0; i < m; i++) memset(mat[i], 0, (size_t)m * sizeof(double));
    }
    return 0;
}

// The iterations with a matrix of their own. Returns 0, -1, or -4 without memory for a row.
int approx::adjust_guess(int nit, int n, const int *isys, int **table, double *app, double *rhs)
{
    const int m = 3 * n + 3;
    double **mat = (double **)zeroed(m, sizeof(double *));
    int *indx = (int *)zeroed(m, sizeof(int));
    int result = -1;
    if (!mat || !indx)
        fprintf(out, "guess_solve: cannot allocate mat, indx or rhssav\n");
    else {
        const int row = rows_take(mat, m);
        if (row < m) {
            fprintf(out, "guess_solve: cannot allocate mat[%d]\n", row);
            result = -4;
        } else
            result = iterate_guess(mat, indx, nit, n, isys, table, app, rhs);
    }
    rows_free(mat, m);
    free(indx);
    return result;
}

// Hands the stations and the strong points to the tables of the spread.
void approx::give_strong(int n, const int *isys, const double *app, double *xap, double *yap, double *oap, int *itheo,
                         int *iobj) const
{
    const int it1 = isys[n], it2 = isys[n + 1];
    xap[it1] = yap[it1] = yap[it2] = 0.0;
    xap[it2] = 1.0;
    oap[it1] = app[3 * (size_t)n + 1];
    oap[it2] = app[3 * (size_t)n + 2];
    if (idebug) {
        fprintf(out, "\ntheo1  %s  itheo[%d]=%d   %15.5lf %15.5lf    %15.5lf\n", points[it1].name, it1, itheo[it1],
                xap[it1], yap[it1], oap[it1]);
        fprintf(out, "theo2  %s  itheo[%d]=%d   %15.5lf %15.5lf    %15.5lf\n", points[it2].name, it2, itheo[it2],
                xap[it2], yap[it2], oap[it2]);
    }
    for (int k = 0; k < n; k++) {
        const int p = isys[k];
        const double *place = app + 3 * (size_t)k;
        xap[p] = place[0];
        yap[p] = place[1];
        if (p < nsta)
            itheo[p] = THEO_PLACED;
        else
            iobj[p - nsta] = OBJ_PLACED;
        if (idebug) fprintf(out, "       %s  %15.5lf %15.5lf\n", points[p].name, xap[p], yap[p]);
    }
}

// Whether a third station shot point p.
int approx::shot_by_third(int p, int it1, int it2) const
{
    for (int e = seenby.first[p]; e < seenby.first[p + 1]; e++)
        if (seenby.to[e] != it1 && seenby.to[e] != it2) return 1;
    return 0;
}

// Places a weak point with the final orientations. A target that a third station shot is left
// to a better intersection.
void approx::give_weak(int p, int it1, int it2, int **table, double *xap, double *yap, const double *oap, int *itheo,
                       int *iobj)
{
    meet(dir1[table[it1][p] - 1].val[0] + oap[it1], dir1[table[it2][p] - 1].val[0] + oap[it2], xap + p, yap + p);
    if (idebug) fprintf(out, "       %s  %15.5lf %15.5lf   weak!!\n", points[p].name, xap[p], yap[p]);
    if (p < nsta) {
        itheo[p] = THEO_PLACED;
        return;
    }
    iobj[p - nsta] = OBJ_PLACED;
    if (!shot_by_third(p, it1, it2)) return;
    iobj[p - nsta] = OBJ_UNKNOWN;
    if (idebug) fprintf(out, "not kept\n");
}

// guess_solve with a list for the weak shots.
int approx::solve_strong(weakshots *s, double o1, double o2, int *isys, int **table, double *app, double *rhs,
                         double *xap, double *yap, double *oap, int *itheo, int *iobj)
{
    const int n = strong_shots(s, o1, o2, isys, table), it1 = isys[n], it2 = isys[n + 1];
    if (guess_approx(n, table, isys, app, it1, o1, it2, o2) != 0) {
        fprintf(out, "guess_solve: bad return from guess_approx!\n");
        return -1;
    }
    double *last = app + 3 * (size_t)n; // height of the second station, orientations
    last[0] = 0.0;
    last[1] = o1;
    last[2] = o2;
    const int nit = n == STRONG_SHOTS ? 0 : NITERATION; // with three shots the guess stands
    const int result = adjust_guess(nit, n, isys, table, app, rhs);
    if (result != 0) return result;
    give_strong(n, isys, app, xap, yap, oap, itheo, iobj);
    int nsys = n;
    for (int k = 0; k < s->n; k++) {
        if (s->iweak[k] < 0) continue;
        give_weak(s->iweak[k], it1, it2, table, xap, yap, oap, itheo, iobj);
        isys[nsys++] = s->iweak[k];
    }
    isys[nsys] = it1;
    isys[nsys + 1] = it2;
    return 0;
}

// The weak points stand behind the strong ones in isys afterwards; app holds the strong ones.
// Returns 0, -1, or -4 without memory for a row of the matrix.
int approx::guess_solve(int n, double o1, double o2, int *isys, int **table, double *app, double *rhs, double *xap,
                        double *yap, double *oap, int *itheo, int *iobj)
{
    if (idebug) {
        fprintf(out, "\nguess_solve with o1,o2 = %10.5lf%10.5lf\n", o1, o2);
        show_isys(isys, n + 2);
    }
    weakshots s = weakshots();
    int result = -1;
    if (weakshots_take(&s, n) != 0)
        fprintf(out, "guess_solve: cannot allocate iweak\n");
    else
        result = solve_strong(&s, o1, o2, isys, table, app, rhs, xap, yap, oap, itheo, iobj);
    weakshots_free(&s);
    return result;
}

} // namespace vornengine
