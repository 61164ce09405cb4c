// A start from two stations with common targets that did not sight each other: their
// orientations are searched so that the vertical angles agree, then adjusted. The frame is
// local (metres with a scale bar, else the length of the base; radians), the first station at
// the origin; it is turned to the orientation of that station where one is known. Other points
// that are known keep their place and status, in whatever frame that is.

#include "approx/approx.h"

#include <math.h>

#include "approx/guesswork.h"

namespace vornengine {

const double LEAST_BAR = 1e-6; // square of the shortest bar, in lengths of the base

// Whether every direction has a vertical angle and one of these is not zero.
int approx::has_elevations() const
{
    if (dim != 3 || ndir1 != ndir2) return 0;
    for (int k = 0; k < ndir2; k++)
        if (dir2[k].val[0] != 0.0) return 1;
    return 0;
}

// Height of point p: *z of its entry in app. Returns 1, or 0 when it is not a common point.
static int height_of(int p, const guesswork *w, int ncommon, double *z)
{
    for (int k = 0; k < ncommon; k++)
        if (w->isys[k] == p) {
            *z = w->app[3 * k + 2] + w->rhs[3 * k + 2];
            return 1;
        }
    return 0;
}

// Gives the frame the length of the scale bar.
void approx::scale_guess(const guesspair *g, const guesswork *w, int *iscale, double *xap, double *yap) const
{
    if (g->ibar < 0) {
        if (ndist > 0) fprintf(out, "\n\nTO DO: Must check the scaling\n\n");
        return;
    }
    int p1, p2;
    double z1, z2;
    if (!bar_ends(g->ibar, &p1, &p2)) {
        fprintf(out, "in guess_spread: strange, cannot find scale bar %d\n", g->ibar);
        return;
    }
    if (!height_of(p1, w, g->ncommon, &z1) || !height_of(p2, w, g->ncommon, &z2)) {
        fprintf(out, "in guess_spread: strange, no z for scaling\n");
        return;
    }
    const double dx = xap[p2] - xap[p1], dy = yap[p2] - yap[p1], dz = z2 - z1;
    const double d2 = dx * dx + dy * dy + dz * dz;
    if (!(d2 > LEAST_BAR)) return;
    const double s = dist[g->ibar].val[0] / sqrt(d2);
    if (idebug) fprintf(out, "in guess_spread: scale factor %15.5lf\n", s);
    xap[g->it2] = s;
    for (int k = 0; k < g->ncommon; k++) {
        xap[w->isys[k]] *= s;
        yap[w->isys[k]] *= s;
    }
    *iscale = 1;
}

// Turns the frame to the known orientation of the first station.
void approx::turn_guess(const guesspair *g, const int *isys, double *xap, double *yap, double *oap) const
{
    const double t = oap[g->it1] + points[g->it1].xex[2], c = cos(t), s = sin(t), u = xap[g->it2];
    oap[g->it1] -= t;
    oap[g->it2] -= t;
    xap[g->it2] = c * u;
    yap[g->it2] = -s * u;
    for (int k = 0; k < g->ncommon; k++) {
        const double x = xap[isys[k]], y = yap[isys[k]];
        xap[isys[k]] = s * y + c * x;
        yap[isys[k]] = c * y - s * x;
    }
}

void approx::show_guess(const int *itheo, const int *iobj, const double *xap, const double *yap,
                        const double *oap) const
{
    fprintf(out, "\nat the end of guess spread\ntheo status\n");
    for (int i = 0; i < nsta; i++)
        fprintf(out, "itheo[%d] = %d %12.2lf%12.2lf%12.2lf\n", i, itheo[i], xap[i], yap[i], oap[i]);
    fprintf(out, "targets status\n");
    for (int j = 0; j < ntar; j++)
        fprintf(out, "iobj[%d] = %d %12.2lf%12.2lf\n", j, iobj[j], xap[nsta + j], yap[nsta + j]);
}

// A guess with a chosen pair, on arrays that the caller releases. Returns 0, -4, -5 or -9.
int approx::guess_with(const guesspair *g, guesswork *w, int *iscale, int **table, int *itheo, int *iobj, double *xap,
                       double *yap, double *oap)
{
    if (guesswork_take(w, g->ncommon) != 0) {
        fprintf(out, "guess_spread: cannot allocate isys, app or rhs\n");
        return -4;
    }
    const int oriented = itheo[g->it1] == THEO_DONE || itheo[g->it1] == THEO_ORIENTED;
    double o1, o2;
    if (guess_o1o2(g->it1, g->it2, g->ncommon, table, w->isys, w->app, w->rhs, &o1, &o2) < 0) return -9;
    if (guess_solve(g->ncommon, o1, o2, w->isys, table, w->app, w->rhs, xap, yap, oap, itheo, iobj) < 0) {
        fprintf(out, "in guess_spread: cannot solve\n");
        return -5;
    }
    scale_guess(g, w, iscale, xap, yap);
    if (oriented) turn_guess(g, w->isys, xap, yap, oap);
    itheo[g->it2] = itheo[g->it1] = THEO_DONE;
    if (idebug) show_guess(itheo, iobj, xap, yap, oap);
    return 0;
}

// Returns 0, or
//   -1 no vertical angles, or no memory for the bars    -4 no memory
//   -3 no two stations with three common shots           -5 the adjustment failed
//   -9 the search failed
// Also 0, with nothing done, when two stations are finished already. iscale changes only when
// a scale bar gave the scale.
int approx::guess_spread(int *iscale, int **table, int *itheo, int *iobj, double *xap, double *yap, double *oap)
{
    if (!has_elevations()) {
        fprintf(out, "\nguess_spread: dead end!\nRequires variations in zenith angles\n\n");
        return -1;
    }
    guesspair g;
    const int result = guess_pair(table, itheo, &g);
    if (result != 0) return result < 0 ? -1 : 0;
    if (g.ncommon < 3) {
        fprintf(out, "In guess_spread:\nCannot find 2 theodolites with at least 3 common shots\n");
        return -3;
    }
    guesswork w = guesswork();
    const int done = guess_with(&g, &w, iscale, table, itheo, iobj, xap, yap, oap);
    guesswork_free(&w);
    return done;
}

} // namespace vornengine
