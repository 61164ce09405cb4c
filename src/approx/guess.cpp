// A start from two stations with common targets that did not sight each other: their
// orientations are searched so that the vertical angles agree, then adjusted. The frame is
// local (metres with a scale bar, else the length of the base; radians), the first station at
// the origin; it is turned to the orientation of that station where one is known. Other points
// that are known keep their place and status, in whatever frame that is.

#include "approx/guess.h"

#include <math.h>

#include "approx/scalebars.h"

namespace vornengine {

const double LEAST_BAR = 1e-6; // square of the shortest bar, in lengths of the base

// Whether a vertical angle in space is not zero.
static int has_elevations(const approxdata *net)
{
    if (net->dim != 3) return 0;
    for (int k = 0; k < net->ndir2; k++)
        if (net->dir2[k].val[0] != 0.0) return 1;
    return 0;
}

// Height of point p: *z of its entry in app. Returns 1, or 0 when it is not a common point.
static int height_of(int p, const guesswork *w, double *z)
{
    for (int k = 0; k < w->n; k++)
        if (w->isys[k] == p) {
            *z = w->app[3 * k + 2] + w->rhs[3 * k + 2];
            return 1;
        }
    return 0;
}

// Gives the frame the length of the scale bar.
static void scale_guess(const approxdata *net, spreadtables *tab, const stationpair *g, const guesswork *w, int *iscale)
{
    if (g->ibar < 0) {
        if (net->ndist > 0) fprintf(net->out, "\n\nTO DO: Must check the scaling\n\n");
        return;
    }
    int p1, p2;
    double z1, z2;
    if (!bar_ends(net, g->ibar, &p1, &p2)) {
        fprintf(net->out, "in guess_spread: strange, cannot find scale bar %d\n", g->ibar);
        return;
    }
    if (!height_of(p1, w, &z1) || !height_of(p2, w, &z2)) {
        fprintf(net->out, "in guess_spread: strange, no z for scaling\n");
        return;
    }
    const double dx = tab->xap[p2] - tab->xap[p1], dy = tab->yap[p2] - tab->yap[p1], dz = z2 - z1;
    const double d2 = dx * dx + dy * dy + dz * dz;
    if (!(d2 > LEAST_BAR)) return;
    const double s = net->dist[g->ibar].val[0] / sqrt(d2);
    if (net->idebug) fprintf(net->out, "in guess_spread: scale factor %15.5lf\n", s);
    tab->xap[g->it2] = s;
    for (int k = 0; k < w->n; k++) {
        tab->xap[w->isys[k]] *= s;
        tab->yap[w->isys[k]] *= s;
    }
    *iscale = 1;
}

// Turns the frame to the known orientation of the first station.
static void turn_guess(const approxdata *net, spreadtables *tab, const stationpair *g, const guesswork *w)
{
    const double t = tab->oap[g->it1] + net->points[g->it1].xex[2], c = cos(t), s = sin(t), u = tab->xap[g->it2];
    tab->oap[g->it1] -= t;
    tab->oap[g->it2] -= t;
    tab->xap[g->it2] = c * u;
    tab->yap[g->it2] = -s * u;
    for (int k = 0; k < w->n; k++) {
        const int p = w->isys[k];
        const double x = tab->xap[p], y = tab->yap[p];
        tab->xap[p] = s * y + c * x;
        tab->yap[p] = c * y - s * x;
    }
}

static void show_guess(const approxdata *net, const spreadtables *tab)
{
    fprintf(net->out, "\nat the end of guess spread\ntheo status\n");
    for (int i = 0; i < net->nsta; i++)
        fprintf(net->out, "itheo[%d] = %d %12.2lf%12.2lf%12.2lf\n", i, tab->itheo[i], tab->xap[i], tab->yap[i],
                tab->oap[i]);
    fprintf(net->out, "targets status\n");
    for (int j = 0; j < net->ntar; j++)
        fprintf(net->out, "iobj[%d] = %d %12.2lf%12.2lf\n", j, tab->iobj[j], tab->xap[net->nsta + j],
                tab->yap[net->nsta + j]);
}

// A guess with a chosen pair, on arrays that the caller releases. Returns 0, -4, -5 or -9.
static int guess_with(const approxdata *net, spreadtables *tab, const stationpair *g, guesswork *w, int *iscale)
{
    if (guesswork_take(w, g->ncommon) != 0) {
        fprintf(net->out, "guess_spread: cannot allocate isys, app or rhs\n");
        return -4;
    }
    const int oriented = tab->itheo[g->it1] == THEO_DONE || tab->itheo[g->it1] == THEO_ORIENTED;
    double o1, o2;
    if (guess_o1o2(net, tab, g, w, &o1, &o2) < 0) return -9;
    if (guess_solve(net, tab, w, o1, o2) < 0) {
        fprintf(net->out, "in guess_spread: cannot solve\n");
        return -5;
    }
    scale_guess(net, tab, g, w, iscale);
    if (oriented) turn_guess(net, tab, g, w);
    tab->itheo[g->it2] = tab->itheo[g->it1] = THEO_DONE;
    if (net->idebug) show_guess(net, tab);
    return 0;
}

// Returns 0, or
//   -1 no vertical angles, or no memory for the bars    -4 no memory
//   -3 no two stations with three common shots           -5 the adjustment failed
//   -9 the search failed
// Also 0, with nothing done, when two stations are finished already. iscale changes only when
// a scale bar gave the scale.
int guess_spread(const approxdata *net, spreadtables *tab, int *iscale)
{
    if (!has_elevations(net)) {
        fprintf(net->out, "\nguess_spread: dead end!\nRequires variations in zenith angles\n\n");
        return -1;
    }
    stationpair g;
    const int result = guess_pair(net, tab, &g);
    if (result != 0) return result < 0 ? -1 : 0;
    if (g.ncommon < 3) {
        fprintf(net->out, "In guess_spread:\nCannot find 2 theodolites with at least 3 common shots\n");
        return -3;
    }
    guesswork w = guesswork();
    const int done = guess_with(net, tab, &g, &w, iscale);
    guesswork_free(&w);
    return done;
}

} // namespace vornengine
