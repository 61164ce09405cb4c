// Adjustment of a guess: from the orientations of the search to positions of the common
// points, orientations and the height of the second station, by three iterations of least
// squares on directions and vertical angles. Metres and radians in the frame of guesswork.h.

#include "approx/guess.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "approx/intersection.h"
#include "approx/rows.h"
#include "approx/weakshots.h"
#include "numerics/ludcmp.h"
#include "numerics/memory.h"

namespace vornengine {

enum { NITERATION = 3 };

static void show_isys(const guesswork *w, FILE *out)
{
    for (int k = 0; k < w->n + 2; k++) fprintf(out, "isys[%4d] = %d\n", k, w->isys[k]);
}

// Puts shots aside whose rays meet under less than 18 degrees.
static void put_weak_aside(const approxdata *net, const spreadtables *tab, weakshots *s, guesswork *w, double o1,
                           double o2)
{
    const int it1 = w->isys[w->n], it2 = w->isys[w->n + 1];
    for (int k = 0; k < w->n; k++) {
        const int p = w->isys[k];
        const double a = wrap(reading(net, tab, it1, p) + o1), b = wrap(reading(net, tab, it2, p) + o2);
        const double angle = fabs(wrap(b - a));
        if (!(angle < net->pi / 10)) continue;
        if (net->idebug) fprintf(net->out, "!!too weak intersection for %s\n", net->points[p].name);
        weakshots_put_aside(s, k, angle, w->isys);
    }
}

// Leaves the strong shots and the two stations in the list.
static void strong_shots(const approxdata *net, const spreadtables *tab, weakshots *s, guesswork *w, double o1,
                         double o2)
{
    put_weak_aside(net, tab, s, w, o1, o2);
    const int nstrong = s->n - s->nweak;
    if (nstrong < STRONG_SHOTS) {
        fprintf(net->out, "\n\nTO DO: Must really look at these weak points\n\n");
        if (net->idebug) fprintf(net->out, "Must put back %d weak shots\n", STRONG_SHOTS - nstrong);
        weakshots_put_back(s, w->isys, net->out);
    }
    if (net->idebug && s->nweak > 0) {
        fprintf(net->out, "\n%d weak shots over %d shots\n\n", s->nweak, s->n);
        show_isys(w, net->out);
    }
    const int it1 = w->isys[w->n], it2 = w->isys[w->n + 1];
    w->n = weakshots_close_gaps(s, w->isys);
    w->isys[w->n] = it1;
    w->isys[w->n + 1] = it2;
}

// Adds the shots of both stations to the normal equations.
static void guess_equations(const approxdata *net, const spreadtables *tab, double **mat, guesswork *w)
{
    const int m = 3 * w->n + 3;
    double sum = 0.0;
    for (int k = 0; k < w->n; k++)
        for (int it = 1; it <= 2; it++) {
            guesssight s = sight_of(net, tab, w, k, it);
            s.zt = it == 1 ? 0.0 : w->app[m - 3];
            s.o = it == 1 ? w->app[m - 2] : w->app[m - 1];
            guess_normal(mat, w->rhs, m, k, &s, &sum);
        }
}

// nit iterations. Leaves rhs zero. Returns 0 or -1.
static int iterate_guess(const approxdata *net, const spreadtables *tab, double **mat, int *indx, int nit, guesswork *w)
{
    const int m = 3 * w->n + 3;
    double d;
    for (int it = 1; it <= nit; it++) {
        guess_equations(net, tab, mat, w);
        if (ludcmp(mat, m, indx, &d, net->out) != 0) {
            fprintf(net->out, "guess_solve: cannot solve at iteration %d\n", it);
            return -1;
        }
        lubksb(mat, m, indx, w->rhs);
        for (int i = 0; i < m; i++) w->app[i] += w->rhs[i];
        memset(w->rhs, 0, (size_t)m * sizeof(double));
        for (int i = 0; i < m; i++) memset(mat[i], 0, (size_t)m * sizeof(double));
    }
    return 0;
}

// The iterations with a matrix of their own. Returns 0, -1, or -4 without memory for a row.
static int adjust_guess(const approxdata *net, const spreadtables *tab, int nit, guesswork *w)
{
    const int m = 3 * w->n + 3;
    double **mat = (double **)zeroed(m, sizeof(double *));
    int *indx = (int *)zeroed(m, sizeof(int));
    int result = -1;
    if (!mat || !indx)
        fprintf(net->out, "guess_solve: cannot allocate mat, indx or rhssav\n");
    else {
        const int row = rows_take(mat, m);
        if (row < m) {
            fprintf(net->out, "guess_solve: cannot allocate mat[%d]\n", row);
            result = -4;
        } else
            result = iterate_guess(net, tab, mat, indx, nit, w);
    }
    rows_free(mat, m);
    free(indx);
    return result;
}

// Hands the stations and the strong points to the tables of the spread.
static void give_strong(const approxdata *net, spreadtables *tab, const guesswork *w)
{
    const int n = w->n, it1 = w->isys[n], it2 = w->isys[n + 1];
    tab->xap[it1] = tab->yap[it1] = tab->yap[it2] = 0.0;
    tab->xap[it2] = 1.0;
    tab->oap[it1] = w->app[3 * (size_t)n + 1];
    tab->oap[it2] = w->app[3 * (size_t)n + 2];
    if (net->idebug) {
        fprintf(net->out, "\ntheo1  %s  itheo[%d]=%d   %15.5lf %15.5lf    %15.5lf\n", net->points[it1].name, it1,
                tab->itheo[it1], tab->xap[it1], tab->yap[it1], tab->oap[it1]);
        fprintf(net->out, "theo2  %s  itheo[%d]=%d   %15.5lf %15.5lf    %15.5lf\n", net->points[it2].name, it2,
                tab->itheo[it2], tab->xap[it2], tab->yap[it2], tab->oap[it2]);
    }
    for (int k = 0; k < n; k++) {
        const int p = w->isys[k];
        const double *place = w->app + 3 * (size_t)k;
        tab->xap[p] = place[0];
        tab->yap[p] = place[1];
        if (p < net->nsta)
            tab->itheo[p] = THEO_PLACED;
        else
            tab->iobj[p - net->nsta] = OBJ_PLACED;
        if (net->idebug)
            fprintf(net->out, "       %s  %15.5lf %15.5lf\n", net->points[p].name, tab->xap[p], tab->yap[p]);
    }
}

// Whether a third station shot point p.
static int shot_by_third(const approxdata *net, int p, int it1, int it2)
{
    for (int e = net->seenby.first[p]; e < net->seenby.first[p + 1]; e++)
        if (net->seenby.to[e] != it1 && net->seenby.to[e] != it2) return 1;
    return 0;
}

// Places a weak point with the final orientations. A target that a third station shot is left
// to a better intersection.
static void give_weak(const approxdata *net, spreadtables *tab, int it1, int it2, int p)
{
    meet(reading(net, tab, it1, p) + tab->oap[it1], reading(net, tab, it2, p) + tab->oap[it2], tab->xap + p,
         tab->yap + p);
    if (net->idebug)
        fprintf(net->out, "       %s  %15.5lf %15.5lf   weak!!\n", net->points[p].name, tab->xap[p], tab->yap[p]);
    if (p < net->nsta) {
        tab->itheo[p] = THEO_PLACED;
        return;
    }
    tab->iobj[p - net->nsta] = OBJ_PLACED;
    if (!shot_by_third(net, p, it1, it2)) return;
    tab->iobj[p - net->nsta] = OBJ_UNKNOWN;
    if (net->idebug) fprintf(net->out, "not kept\n");
}

// Places the weak points and lists them behind the strong ones.
static void list_weak(const approxdata *net, spreadtables *tab, const weakshots *s, guesswork *w)
{
    const int it1 = w->isys[w->n], it2 = w->isys[w->n + 1];
    for (int k = 0; k < s->n; k++) {
        if (s->iweak[k] < 0) continue;
        give_weak(net, tab, it1, it2, s->iweak[k]);
        w->isys[w->n++] = s->iweak[k];
    }
    w->isys[w->n] = it1;
    w->isys[w->n + 1] = it2;
}

// guess_solve with a list for the weak shots.
static int solve_strong(const approxdata *net, spreadtables *tab, weakshots *s, guesswork *w, double o1, double o2)
{
    strong_shots(net, tab, s, w, o1, o2);
    if (guess_approx(net, tab, w, o1, o2) != 0) {
        fprintf(net->out, "guess_solve: bad return from guess_approx!\n");
        return -1;
    }
    double *last = w->app + 3 * (size_t)w->n; // height of the second station, orientations
    last[0] = 0.0;
    last[1] = o1;
    last[2] = o2;
    const int nit = w->n == STRONG_SHOTS ? 0 : NITERATION; // with three shots the guess stands
    const int result = adjust_guess(net, tab, nit, w);
    if (result != 0) return result;
    give_strong(net, tab, w);
    list_weak(net, tab, s, w);
    return 0;
}

int guess_solve(const approxdata *net, spreadtables *tab, guesswork *w, double o1, double o2)
{
    if (net->idebug) {
        fprintf(net->out, "\nguess_solve with o1,o2 = %10.5lf%10.5lf\n", o1, o2);
        show_isys(w, net->out);
    }
    weakshots s = weakshots();
    int result = -1;
    if (weakshots_take(&s, w->n) != 0)
        fprintf(net->out, "guess_solve: cannot allocate iweak\n");
    else
        result = solve_strong(net, tab, &s, w, o1, o2);
    weakshots_free(&s);
    return result;
}

} // namespace vornengine
