// Least squares refinement of the similarity transformation.
//
// Each coordinate k of a pair, first point X, second point Y, is one condition
//     v = Y(k) - t(k) - s u(k),   u = R X,
// with a factor f that comes from the standard deviations of both points:
//     1 / f^2 = 1 / sx(k)^2 of Y + sum over l of (s R(k,l))^2 / sx(l)^2 of X.
// So a coordinate counts the more the larger its standard deviations are; when all are equal
// and R and s are near those of a rigid motion, all coordinates count alike.
//
// Parameters p: tx, ty, tz, then rx, ry, rz when the rotation is estimated, then the scale
// when it is. Metres and radians. Normal matrix packed as in numerics/packed.h.

#include <math.h>

#include "numerics/packed.h"
#include "simili/simili.h"

namespace vornengine {

const double LEAST_Q = 1.0e-20; // 1 / f^2: standard deviations beyond some 10^10 metres give no condition
const double CONVERGED = 1.0e-06;
const int MAX_PASSES = 50;

// Cosines and sines of the three angles.
struct turns {
    double ca, sa, cb, sb, cc, sc;
};

static turns turns_of(double a, double b, double c) { return {cos(a), sin(a), cos(b), sin(b), cos(c), sin(c)}; }

static void rotation_of(const turns *w, double R[3][3])
{
    R[0][0] = w->cb * w->cc;
    R[0][1] = w->cb * w->sc;
    R[0][2] = -w->sb;
    R[1][0] = w->sa * w->sb * w->cc - w->ca * w->sc;
    R[1][1] = w->ca * w->cc + w->sa * w->sb * w->sc;
    R[1][2] = w->sa * w->cb;
    R[2][0] = w->sa * w->sc + w->ca * w->sb * w->cc;
    R[2][1] = w->ca * w->sb * w->sc - w->sa * w->cc;
    R[2][2] = w->ca * w->cb;
}

static double dot(const double a[3], const double b[3]) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

// 1 / f^2 of coordinate k; row is R(k,.).
static double inverse_weight(const simpair *m, int k, double s, const double row[3])
{
    double q = 1.0 / (m->second->sx[k] * m->second->sx[k]);
    for (int l = 0; l < 3; l++) {
        const double h = s * row[l] / m->first->sx[l];
        q += h * h;
    }
    return q;
}

// Derivatives of v(k) by the three angles.
static void angle_row(int k, double s, const double R[3][3], const turns *w, const double x[3], const double u[3],
                      double g[3])
{
    if (k == 0) {
        g[0] = 0.0;
        g[1] = s * (w->cb * x[2] + (w->sc * x[1] + w->cc * x[0]) * w->sb);
    } else {
        g[0] = k == 1 ? -s * u[2] : s * u[1];
        g[1] = -s * (k == 1 ? w->sa : w->ca) * u[0];
    }
    g[2] = -s * (R[k][0] * x[1] - R[k][1] * x[0]);
}

// Adds the row g, misclosure m: N += g g', t += m g.
static void add_row(const double *g, int n, double m, double *N, double *t)
{
    for (int i = 0; i < n; i++) {
        t[i] += m * g[i];
        for (int j = 0; j <= i; j++) N[packed_place((size_t)i, (size_t)j)] += g[i] * g[j];
    }
}

double simili::scale_in(const double *p) { return iscale == 0 ? scale : p[iscale]; }

// Normal equations N dp = t at p.
//   p   in      parameters        R   out     rotation of p
//   N   in/out  packed, nparam    t   in/out  nparam; both are added to
// Returns 0, or -(k + 1) when coordinate k of a pair has no weight; what came before is in then.
int simili::buildsim(const double *p, double R[3][3], double *N, double *t)
{
    const double s = scale_in(p);
    const turns w = irot != 0 ? turns_of(p[3], p[4], p[5]) : turns_of(0.0, 0.0, 0.0);
    rotation_of(&w, R);
    for (int i = 0; i < npair; i++) {
        const double *x = pair[i].first->x, *y = pair[i].second->x;
        const double u[3] = {dot(R[0], x), dot(R[1], x), dot(R[2], x)};
        for (int k = 0; k < 3; k++) {
            const double q = inverse_weight(pair + i, k, s, R[k]);
            if (q < LEAST_Q) return -(k + 1);
            const double f = 1.0 / sqrt(q);
            double g[7] = {};
            g[k] = -1.0;
            if (irot != 0) angle_row(k, s, R, &w, x, u, g + 3);
            if (iscale != 0) g[iscale] = -u[k];
            for (int j = 0; j < nparam; j++) g[j] *= f;
            add_row(g, nparam, -(y[k] - p[k] - s * u[k]) * f, N, t);
        }
    }
    return 0;
}

// Sum of the squared residuals, metres squared, without weights; show prints them. R is
// that of the caller, who may hold an earlier one than that of p.
double simili::simresidual(int show, const double *p, const double R[3][3])
{
    const double s = scale_in(p);
    double sum = 0.0;
    if (show != 0) fprintf(out, "\nTransformed points versus original\n\n");
    for (int i = 0; i < npair; i++) {
        const simpoint *y = pair[i].second;
        double v[3];
        for (int k = 0; k < 3; k++) {
            v[k] = y->x[k] - p[k] - s * dot(R[k], pair[i].first->x);
            sum += v[k] * v[k];
        }
        if (show != 0) fprintf(out, "%.16s %15.6lf%12.6lf%12.6lf\n", y->name, v[0], v[1], v[2]);
    }
    return sum;
}

// Improves p by passes until the sum of squares stands still: at most 50. R becomes the
// rotation of the p before the last pass. Returns the passes; 50 also when one broke off.
int simili::refine(double *p, double R[3][3])
{
    double e = 99.0, vlast = 99.0;
    int it = 0;
    while (it < MAX_PASSES && e > CONVERGED) {
        double N[28] = {}, t[7] = {};
        it++;
        if (buildsim(p, R, N, t) != 0) it = MAX_PASSES;
        packinvert(N, nparam);
        for (int i = 0; i < nparam; i++) {
            double dp = 0.0;
            for (int j = 0; j < nparam; j++) dp += N[packidx(i, j)] * t[j];
            p[i] += dp;
        }
        const double v = simresidual(0, p, R);
        e = fabs(v - vlast) / vlast; // no number after a perfect fit, which ends the passes
        vlast = v;
    }
    return it;
}

} // namespace vornengine
