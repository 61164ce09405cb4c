// Variance factor, variance components and plain residuals.
//
// Two roads, and they differ. variances serves a run with statistics: it tests the
// weighted sum of squares that the residual covariances give, prints the components of
// every kind, and asks the tail of chi-square to exceed 1 - confidence. justout serves a
// run without inversion: plain residuals, a coarse class of each, weighted coordinates
// counted as observations, and a tail that has to reach the confidence level itself.
//
// Residuals in metres and radians, observed minus computed. Writes res[0] and iflag of
// the observations, and temp_res.

#include "solution/solution.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "numerics/distributions.h"
#include "numerics/memory.h"
#include "loading/numbers.h"

namespace vornengine {

// ---- plain residuals ----

// Stores residual v and its class; s is the a-priori standard deviation of the list.
// Returns (w v)^2.
double solution::plainresidual(measure *m, double v, double s)
{
    const double sigma = m->val[1];
    const bool normal = sigma > SIGMA_LIMIT;
    const double w = normal ? s / sigma : WEIGHT_CAP;
    m->res[0] = v;
    m->iflag = classcode(normal ? v / sigma : 0.0);
    return (w * v) * (w * v);
}

double solution::justdist()
{
    double sum = 0.0, d[3], r1[3][3], r2[3][3];
    int l1, l2;
    for (int i = 0; i < ndist; i++) {
        measure *m = dist + i;
        double c = distance(i, d, r1, r2, &l1, &l2);
        if (m->typ == 1) c = c * m->p1->xex[4] + m->p1->xex[3];
        const double e = iredux != 0 ? distred(i) : 0.0;
        sum += plainresidual(m, (e + m->val[0]) - c, sdist);
    }
    return sum;
}

// The heights of instrument and target are added to the observed value here.
double solution::justdifh()
{
    double sum = 0.0;
    for (int i = 0; i < ndifh; i++) {
        measure *m = difh + i;
        const double dh = m->p2->xpt[2] - m->p1->xpt[2];
        double e = m->h2 - m->h1;
        if (dim == 3) e -= (m->p2->h - m->p1->h) - dh;
        sum += plainresidual(m, (e + m->val[0]) - dh, sdifh);
    }
    return sum;
}

double solution::justdir1()
{
    double sum = 0.0, d[3], e[3], rr, r1[3][3], r2[3][3], ca, sa, cb, sb, cc, sc;
    int l1, l2;
    const point *station = NULL;
    for (int i = 0; i < ndir1; i++) {
        measure *m = dir1 + i;
        if (m->p1 != station) setrot(1, i, &ca, &sa, &cb, &sb, &cc, &sc);
        station = m->p1;
        const double c = dir1comp(i, d, e, &rr, r1, r2, &l1, &l2);
        const double red = m->p1->typ == 1 ? dir1red(i) : 0.0;
        double v = (red + m->val[0]) - c;
        if (v > pi)
            v -= 2.0 * pi;
        else if (v < -pi)
            v += 2.0 * pi;
        sum += plainresidual(m, v, sdir1);
    }
    return sum;
}

double solution::justdir2()
{
    double sum = 0.0, d[3], e[3], rr, l, r1[3][3], r2[3][3], ca, sa, cb, sb, cc, sc;
    int l1, l2;
    const point *station = NULL;
    for (int i = 0; i < ndir2; i++) {
        measure *m = dir2 + i;
        if (m->p1 != station) setrot(2, i, &ca, &sa, &cb, &sb, &cc, &sc);
        station = m->p1;
        const double c = dir2comp(i, d, e, &rr, &l, r1, r2, &l1, &l2);
        const double red = m->p1->typ == 1 ? dir2red(i) : 0.0;
        sum += plainresidual(m, (red + m->val[0]) - c, sdir2);
    }
    return sum;
}

// The camera is read when the station changes. A point without an image keeps the
// computed coordinates of the observation before. The class of v is taken from v / sigma
// even where the weight is capped.
double solution::justphoto()
{
    double sum = 0.0, u = 0.0, v = 0.0, d[3], e[3], r1[3][3], r2[3][3], ca, sa, cb, sb, cc, sc;
    int l1, l2, icam = 0;
    const point *station = NULL;
    for (int i = 0; i < nobsuv; i++) {
        measure *mu = obsuv1 + i, *mv = obsuv2 + i;
        if (!mu->p1) break; // the records behind were never read
        if (mu->p1 != station) {
            setrot(3, i, &ca, &sa, &cb, &sb, &cc, &sc);
            icam = mu->typ;
        }
        station = mu->p1;
        image_coor(i, icam, d, e, &u, &v, r1, r2, &l1, &l2);
        sum += plainresidual(mu, mu->val[0] - u, suv);
        sum += plainresidual(mv, mv->val[0] - v, suv);
        const double sigma = mv->val[1];
        if (sigma != 0.0) mv->iflag = classcode(mv->res[0] / sigma);
    }
    return sum;
}

// Azimuths stay as they are: no turn is taken off.
double solution::justaz()
{
    double sum = 0.0;
    for (int i = 0; i < naz; i++) sum += plainresidual(az + i, az[i].val[0] - azcomp(i), saz);
    return sum;
}

double solution::justres(int kind)
{
    switch (kind) {
    case 0: return justdist();
    case 1: return justdifh();
    case 2: return justdir1();
    case 3: return justdir2();
    case 4: return justphoto();
    case 5: return justaz();
    default: return 0.0;
    }
}

// r' W r of every baseline; the class is that of the residual in metres.
void solution::gpsres(double *sum)
{
    for (int i = 0; i < ngps; i++) {
        gpsbase *g = gps + i;
        double *r = g->res;
        const double *w = g->w;
        for (int k = 0; k < 3; k++) {
            r[k] = g->dx[k] - (g->p2->xpt[k] - g->p1->xpt[k]);
            g->iflag[k] = classcode(r[k]);
        }
        *sum += r[0] * r[0] * w[0] + r[1] * r[1] * w[2] + r[2] * r[2] * w[5] +
                2.0 * (r[0] * r[1] * w[1] + r[0] * r[2] * w[3] + r[1] * r[2] * w[4]);
    }
}

// ---- tests of the variance factor ----

// Rows of observations; baselines and image coordinates count by component.
static long long observations(const network *net)
{
    return (long long)net->ndist + net->ndifh + net->ndir1 + net->ndir2 + net->naz + 3LL * net->ngps +
           2LL * net->nobsuv + net->nfixh;
}

// Degrees of freedom with the weighted coordinates as observations; factor relative to
// sigma0.
void solution::justtest(double sum)
{
    tempresult none = tempresult(), *result = temp_res ? temp_res : &none;
    const int nu = count_of(observations(this) + nweighted - nunk1 - nunk2 + ndatum);
    double s = 0.0;
    result->dof = nu;
    if (nu >= 1) {
        fprintf(out, "degree of freedom =%7d\n", nu);
        const bool fails = distrib::chi2tail(nu, sum) * 100.0 < confidence;
        fprintf(out, "%s the one-tailed test on the estimated variance factor\n", fails ? "Fail" : "Pass");
        result->itest = fails ? -1 : 1;
        const double v = sum / nu / sigma0 / sigma0;
        fprintf(out, "variance          =%14.6lf\n", v);
        if (v > 0.0) s = sqrt(v);
    }
    result->sigpost = s;
    fprintf(out, "sig a priori      =%14.6lf\n", sigma0);
    fprintf(out, "sig a posteriori  =%14.6lf\n", s);
}

int solution::justout()
{
    free(hlim);
    hlim = (double *)zeroed(nclass, sizeof *hlim);
    if (!hlim) {
        finish();
        return -6;
    }
    filllimits();
    double sum = 0.0;
    for (int kind = 0; kind < 6; kind++) sum += justres(kind);
    if (ngps > 0) gpsres(&sum);
    fprintf(out, "\n\nSimple residuals analysis\n\n");
    justtest(sum);
    residualtables();
    return 0;
}

// Verdicts on the tail t of the variance factor; only the one-tailed one is kept.
static void test_factor(FILE *out, double t, double alpha, tempresult *result)
{
    const bool one = t > alpha, two = t > alpha / 2.0 && 1.0 - alpha / 2.0 > t;
    fprintf(out, "\n\n%s the one-tailed test on the estimated variance factor\n", one ? "Pass" : "Fail");
    fprintf(out, "%s the two-tailed test on the estimated variance factor\n", two ? "Pass" : "Fail");
    result->itest = one ? 1 : -1;
}

// Component of one kind with n observations, its a-priori deviation and its root; text is
// padded to the width of its column. root may be null.
static void show_component(FILE *out, int n, const char *text, double component, double apriori, double *root)
{
    if (n <= 0) return;
    const double s = sqrt(component);
    const int width = (int)sizeof "sigma a posteriori for " - 1 + (int)strlen(text);
    fprintf(out, "\nvariance component for %s%15.6lf\n", text, component);
    fprintf(out, "%-*s%15.6lf\n", width, "sigma a priori", apriori);
    fprintf(out, "sigma a posteriori for %s%15.6lf\n", text, s);
    if (root) *root = s;
}

double solution::variances(double sum, double dofc, double vdist, double vdifh, double vdir1, double vdir2, double vaz,
                           double vgps, double vphoto)
{
    tempresult none = tempresult(), *result = temp_res ? temp_res : &none;
    const int nu = count_of(observations(this) - nunk1 - nunk2 + ndatum);
    if (nu < 1) {
        fprintf(out, "\n\nvariances: no degree of freedom -> no use of statistics\n");
        return -1.0;
    }
    if (idebug > 1 && fabs(dofc - nu) > 1.0)
        fprintf(out, "\nvariances: dofc = %7.1lf\n             nu = %d\n", dofc, nu);
    test_factor(out, distrib::chi2tail(nu, sum / sigma0 / sigma0), 1.0 - confidence / 100.0, result);
    const double s = sqrt(sum / nu);
    result->dof = nu;
    result->sigpost = s;
    fprintf(out, "degree of freedom =%7d\n", nu);
    fprintf(out, "variance          =%14.6lf\n", sum / nu);
    fprintf(out, "sig a priori      =%14.6lf\n", sigma0);
    fprintf(out, "sig a posteriori  =%14.6lf\n", s);
    show_component(out, ndist, "distances  ", vdist, sdist, &result->dist.sp);
    show_component(out, ndifh, "height dif ", vdifh, sdifh, &result->difh.sp);
    show_component(out, ndir1, "horizontal ", vdir1, sdir1, &result->dir1.sp);
    show_component(out, ndir2, "vertical   ", vdir2, sdir2, &result->dir2.sp);
    show_component(out, naz, "azimuth    ", vaz, saz, &result->az.sp);
    show_component(out, ngps, "gps baseline   ", vgps, sgps, NULL);
    show_component(out, nobsuv, "photo      ", vphoto, suv, &result->photo.sp);
    return s;
}

} // namespace vornengine
