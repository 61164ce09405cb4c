// Residuals, their cofactors and the redundancy of every observation.
//
// With a the row of an observation without weight (the row buffer holds w a) and Q the inverse
// of the normal matrix:
//   residual v      observed plus reduction, less computed; metres, radians, pixels
//   cofactor q      1 / w^2 - a' Q a, without the variance factor
//   redundancy      q w^2, between 0 and 1
// Writes res[0] = v and res[1] = sqrt(q) of the observations, res and nres of the baselines,
// and returns the weighted sums of squares. The component of a kind is its sum over its
// redundancy. The rows are built anew, as the normal equations build them; nothing is stored.

#include "solution/solution.h"

#include <math.h>

#include "numerics/packed.h"

namespace vornengine {

static const double SMALLEST_COFACTOR = 1.0e-14;   // a smaller one is rounding and counts as 0
static const double SMALLEST_REDUNDANCY = 1.0e-07; // below it a kind has no component

// What the observations of one kind add up to.
struct residualsum {
    double squares; // of the weighted residuals
    double redundancy;
};

// Cofactor of the residual whose row stands in the row buffer, built with the factor w: the
// first n1 entries of ia1 and the first n2 of ia2. The sum runs block by block, coordinates with
// coordinates first: its rounding decides about a residual at the limit.
double solution::cofres(int n1, int n2, double w)
{
    int u[25] = {};
    double c[25] = {};
    const int n = n1 + n2, begin[2] = {0, n1}, end[2] = {n1, n};
    for (int k = 0; k < n; k++) {
        u[k] = k < n1 ? ia1[1 + k] : nunk1 + ia2[1 + k - n1];
        c[k] = k < n1 ? a1[1 + k] : a2[1 + k - n1];
    }
    double q = 0.0;
    for (int b = 0; b < 4; b++)
        for (int i = begin[b / 2]; i < end[b / 2]; i++)
            for (int j = begin[b % 2]; j < end[b % 2]; j++) q += Q(u[i], u[j]) * c[i] * c[j] / w / w;
    return 1.0 / (w * w) - q;
}

// Residual v of an observation m, weight factor w; its row was built with the factor wrow. A
// cofactor that is not positive counts as 0: what and i tell about it in a trace.
void solution::addresidual(residualsum *s, measure *m, double v, double w, double wrow, const char *what, int i)
{
    s->squares += v * w * (v * w);
    double q = cofres(ia1[0], ia2[0], wrow);
    if (q < SMALLEST_COFACTOR) {
        if (idebug != 0) fprintf(out, "\nProblem with covariance of %s residual %d\n", what, i);
        q = 0.0;
    }
    s->redundancy += q * w * w;
    m->res[0] = v;
    m->res[1] = sqrt(q);
}

// Adds one kind to the totals and returns its variance component, the plain sum of squares
// when the kind has no redundancy.
static double component(const residualsum *s, double *sum, double *dofc)
{
    *sum += s->squares;
    *dofc += s->redundancy;
    return fabs(s->redundancy) > SMALLEST_REDUNDANCY ? s->squares / s->redundancy : s->squares;
}

double solution::covdist(double *sum, double *dofc)
{
    double d[3], r1[3][3], r2[3][3];
    int l1, l2;
    residualsum s = {0.0, 0.0};
    for (int i = 0; i < ndist; i++) {
        measure *m = dist + i;
        const double w = weightfactor(sdist, m->val[1]);
        double c = distance(i, d, r1, r2, &l1, &l2);
        distrow1(i, c, w, d, r1, r2, l1, l2);
        ia2[0] = 0;
        if (m->typ == 1 || l1 != -1 || l2 != -1) distrow2(i, &c, w, d, r1, r2, l1, l2);
        const double e = iredux != 0 ? distred(i) : 0.0;
        addresidual(&s, m, m->val[0] + e - c, w, w, "distance", i);
    }
    return component(&s, sum, dofc);
}

double solution::covdifh(double *sum, double *dofc)
{
    residualsum s = {0.0, 0.0};
    for (int i = 0; i < ndifh; i++) {
        measure *m = difh + i;
        const double w = weightfactor(sdifh, m->val[1]);
        const double dh = m->p2->xpt[2] - m->p1->xpt[2];
        double e = m->h2 - m->h1;
        if (dim == 3) e += (m->p2->h - m->p1->h) - dh;
        difhrow(i, dh, w);
        addresidual(&s, m, m->val[0] - e - dh, w, w, "height d.", i);
    }
    return component(&s, sum, dofc);
}

double solution::covdir1(double *sum, double *dofc)
{
    double d[3], e[3], g[3], r1[3][3], r2[3][3], rr, ca = 0, sa = 0, cb = 0, sb = 0, cc = 0, sc = 0;
    int l1, l2;
    const point *station = NULL;
    residualsum s = {0.0, 0.0};
    for (int i = 0; i < ndir1; i++) {
        measure *m = dir1 + i;
        const double w = weightfactor(sdir1, m->val[1]);
        if (m->p1 != station) setrot(1, i, &ca, &sa, &cb, &sb, &cc, &sc);
        station = m->p1;
        const double c = dir1comp(i, d, e, &rr, r1, r2, &l1, &l2);
        dir1row1(i, w, e, rr, g, r1, r2, l1, l2);
        dir1row2(i, w, d, e, rr, g, ca, sa, cc, sc, r1, r2, l1, l2);
        const double red = station->typ == 1 ? dir1red(i) : 0.0;
        addresidual(&s, m, withinturn(red + m->val[0] - c), w, w, "horizontal", i);
    }
    return component(&s, sum, dofc);
}

double solution::covdir2(double *sum, double *dofc)
{
    double d[3], e[3], g[3], r1[3][3], r2[3][3], rr, l, ca = 0, sa = 0, cb = 0, sb = 0, cc = 0, sc = 0;
    int l1, l2;
    const point *station = NULL;
    residualsum s = {0.0, 0.0};
    for (int i = 0; i < ndir2; i++) {
        measure *m = dir2 + i;
        const double w = weightfactor(sdir2, m->val[1]);
        if (m->p1 != station) setrot(2, i, &ca, &sa, &cb, &sb, &cc, &sc);
        station = m->p1;
        const double c = dir2comp(i, d, e, &rr, &l, r1, r2, &l1, &l2);
        dir2row1(i, w, d, e, rr, l, g, r1, r2, l1, l2);
        dir2row2(i, w, d, ca, sa, cb, l, g, r1, r2, l1, l2);
        const double red = station->typ == 1 ? dir2red(i) : 0.0;
        addresidual(&s, m, red + m->val[0] - c, w, w, "vertical", i);
    }
    return component(&s, sum, dofc);
}

// Its trace has the words of the height differences.
double solution::covaz(double *sum, double *dofc)
{
    residualsum s = {0.0, 0.0};
    for (int i = 0; i < naz; i++) {
        measure *m = az + i;
        const double w = weightfactor(saz, m->val[1]);
        const double v = withinturn(m->val[0] - azcomp(i));
        for (int k = 1; k <= ia1[0]; k++) a1[k] *= w;
        addresidual(&s, m, v, w, w, "height d.", i);
    }
    return component(&s, sum, dofc);
}

// Subtracts the cofactor of the computed difference of a baseline from c. Off the diagonal
// only the first index of the first term and the second of the second are asked for: the
// coordinates of a point are taken to be estimated together.
void solution::gpscofactor(const gpsbase *g, double c[6])
{
    const int *a = g->p1->n0, *b = g->p2->n0;
    for (int k = 0; k < 3; k++) {
        double *ckk = c + packed_place(k, k);
        if (a[k] >= 0) *ckk -= Q(a[k], a[k]);
        if (b[k] >= 0) *ckk -= Q(b[k], b[k]);
        if (a[k] >= 0 && b[k] >= 0) *ckk += 2.0 * Q(a[k], b[k]);
        for (int l = k + 1; l < 3; l++) {
            double *ckl = c + packed_place(l, k);
            if (a[k] >= 0) *ckl -= Q(a[k], a[l]);
            if (b[l] >= 0) *ckl -= Q(b[k], b[l]);
            if (a[k] >= 0 && b[l] >= 0) *ckl += Q(a[k], b[l]);
            if (b[k] >= 0 && a[l] >= 0) *ckl += Q(b[k], a[l]);
        }
    }
}

// Sum of x_k y_k over the diagonal and twice the rest: the trace of X Y.
static double packedtrace(const double x[6], const double y[6])
{
    return x[0] * y[0] + x[2] * y[2] + x[5] * y[5] + 2.0 * (x[1] * y[1] + x[3] * y[3] + x[4] * y[4]);
}

// The redundancy of a baseline is the trace of its residual cofactor times its weight.
double solution::covgps(double *sum, double *dofc)
{
    residualsum s = {0.0, 0.0};
    for (int i = 0; i < ngps; i++) {
        gpsbase *g = gps + i;
        for (int k = 0; k < 3; k++) g->res[k] = g->dx[k] - (g->p2->xpt[k] - g->p1->xpt[k]);
        const double *v = g->res;
        const double vv[6] = {v[0] * v[0], v[0] * v[1], v[1] * v[1], v[0] * v[2], v[1] * v[2], v[2] * v[2]};
        s.squares += packedtrace(vv, g->w);

        double c[6];
        for (int k = 0; k < 6; k++) c[k] = g->w[k];
        packinvert(c, 3);
        gpscofactor(g, c);
        for (int k = 0; k < 3; k++) g->nres[k] = sqrt(c[packed_place(k, k)]);
        s.redundancy += packedtrace(c, g->w);
    }
    return component(&s, sum, dofc);
}

// u, then v of each pair, weighted by suv over their own standard deviations, which the rows
// of the normal equations are not. A pair without image, or without record, is passed over.
double solution::covphoto(double *sum, double *dofc)
{
    double d[3], e[3], r1[3][3], r2[3][3], ca = 0, sa = 0, cb = 0, sb = 0, cc = 0, sc = 0;
    int l1, l2, icam = 0;
    const point *station = NULL;
    residualsum s = {0.0, 0.0};
    for (int i = 0; i < nobsuv && obsuv1[i].p1; i++) {
        measure *list[2] = {obsuv1 + i, obsuv2 + i};
        if (list[0]->p1 != station) {
            setrot(3, i, &ca, &sa, &cb, &sb, &cc, &sc);
            icam = list[0]->typ;
        }
        station = list[0]->p1;
        double uv[2];
        if (image_coor(i, icam, d, e, uv, uv + 1, r1, r2, &l1, &l2) != 0) continue;
        const double pixel[2] = {cameras[icam].pu, cameras[icam].pv};
        for (int which = 0; which < 2; which++) {
            measure *m = list[which];
            const double w = weightfactor(suv, m->val[1]), wrow = w / pixel[which];
            photorow1(i, which, icam, wrow, e);
            photorow2(i, which, icam, wrow, d, e, ca, sa, cb, sb, cc, sc);
            addresidual(&s, m, m->val[0] - uv[which], w, wrow, which == 0 ? "xpix" : "ypix", i);
        }
    }
    return component(&s, sum, dofc);
}

// Residuals of all kinds. dofc (0 on entry) takes the total redundancy, v... the components
// of the kinds that are there; the others stay as they are. Returns the total weighted sum
// of squares.
double solution::rescov(double *dofc, double *vdist, double *vdifh, double *vdir1, double *vdir2, double *vaz,
                        double *vgps, double *vphoto)
{
    double sum = 0.0;
    if (ndist > 0) *vdist = covdist(&sum, dofc);
    if (ndifh > 0) *vdifh = covdifh(&sum, dofc);
    if (ndir1 > 0) *vdir1 = covdir1(&sum, dofc);
    if (ndir2 > 0) *vdir2 = covdir2(&sum, dofc);
    if (naz > 0) *vaz = covaz(&sum, dofc);
    if (ngps > 0) *vgps = covgps(&sum, dofc);
    if (nobsuv > 0) *vphoto = covphoto(&sum, dofc);
    return sum;
}

} // namespace vornengine
