// Standard deviations of coordinates, station and lump parameters; point ellipses and
// relative ellipses of the pairs that the host asked for.
//
// Reads the cofactors Q(i, j) by their position: an unknown -1 (none) puts it before the
// array when it is the row, which reads as 0; as the column it reads the end of the row
// before. Every result carries the factor f: the a-posteriori standard deviation, or 1.
// Writes sxpt, sxex and ell of the points, the standard deviations of the lumps, the host's
// pair records, and prints on out. Metres; bearings in radians between 0 and pi, printed in
// the host's unit.
//
// ell[0] semi-major axes, ell[1] semi-minor axes, ell[2] bearings; column 0 the plane of
// coordinates 1 and 2, column 1 that of 1 and 3, column 2 that of 2 and 3.

#include "solution/solution.h"

#include <math.h>
#include <string.h>

#include "loading/names.h"

namespace vornengine {

// The two coordinates of each plane.
static const int PLANE[3][2] = {{0, 1}, {0, 2}, {1, 2}};

static const double SMALLEST_AXIS2 = 1e-14;       // metres squared; a smaller eigenvalue is a zero axis
static const double SMALLEST_DIFFERENCE2 = 1e-10; // metres squared

static double root(double q) { return q > 0.0 ? sqrt(q) : 0.0; }

// f times the root; 0 without one, whatever f is.
static double scaled_root(double q, double f) { return q > 0.0 ? sqrt(q) * f : 0.0; }

double solution::rootvariance(int i, double f) { return scaled_root(Q(i, i), f); }

// Eigenvalues l of the block as axes sqrt(l); bearing of the major axis, pi where atan2
// gives 0.
void solution::ellipse(double qxx, double qyy, double qxy, double *a, double *b, double *t)
{
    const double bearing = atan2(2.0 * qxy, qxx - qyy) / 2.0;
    *t = bearing < 0.0 ? -bearing : pi - bearing;
    const double r = root((qxx - qyy) * (qxx - qyy) + 4.0 * qxy * qxy);
    const double l1 = (qxx + qyy + r) / 2.0, l2 = (qxx + qyy - r) / 2.0;
    *a = l1 > SMALLEST_AXIS2 ? sqrt(l1) : 0.0;
    *b = l2 > SMALLEST_AXIS2 ? sqrt(l2) : 0.0;
}

// ---- points ----

void solution::pointheight(point *p, double f)
{
    const double s = p->n0[2] != N_NONE ? rootvariance(p->n0[2], f) : 0.0;
    fprintf(out, "%s%15.6lf\n", p->name, s);
    p->ell[0][1] = p->ell[0][2] = s;
}

// Prints standard deviations and the ellipse of the plane 1-2. The covariance is looked
// up by position; position 0 and below count as none, and the axes are then the plain
// standard deviations with a bearing of 0.
void solution::pointplane(point *p, double f)
{
    double q[3], s[3], a, b, t = 0.0;
    for (int c = 0; c < 3; c++) {
        q[c] = p->n0[c] != N_NONE ? Q(p->n0[c], p->n0[c]) : 0.0;
        s[c] = scaled_root(q[c], f);
    }
    a = root(q[0]);
    b = root(q[1]);
    const long long at = (long long)p->n0[0] * nunk + p->n0[1];
    if (at > 0 && (a != 0.0 || b != 0.0)) ellipse(q[0], q[1], Q(p->n0[0], p->n0[1]), &a, &b, &t);
    p->ell[0][0] = f * a;
    p->ell[1][0] = f * b;
    p->ell[2][0] = t;
    fprintf(out, "%s%15.6lf%15.6lf", p->name, s[0], s[1]);
    if (dim == 3) fprintf(out, "%15.6lf", s[2]);
    fprintf(out, "\n%8s%15.6lf%15.6lf%10.1lf\n\n", "", f * a, f * b, pproject->htoraw(0, t));
    if (dim == 3)
        for (int c = 0; c < 3; c++) p->sxpt[c] = s[c];
}

// Ellipses of the three planes; the first takes the place of what pointplane stored. The
// roots have no guard: ellipse replaces them whenever a variance is not zero.
void solution::pointspace(point *p, double f)
{
    for (int k = 0; k < 3; k++) {
        const int c = PLANE[k][0], d = PLANE[k][1];
        const double qc = Q(p->n0[c], p->n0[c]), qd = Q(p->n0[d], p->n0[d]);
        double a = sqrt(qc), b = sqrt(qd), t = 0.0;
        if (qc != 0.0 || qd != 0.0) ellipse(qc, qd, Q(p->n0[c], p->n0[d]), &a, &b, &t);
        p->ell[0][k] = f * a;
        p->ell[1][k] = f * b;
        p->ell[2][k] = t;
    }
}

// ---- parameters ----

void solution::stationerrors(point *p, double f)
{
    double s[6];
    for (int c = 0; c < 6; c++) {
        s[c] = p->n1[c] != N_NONE ? rootvariance(nunk1 + p->n1[c], f) : 0.0;
        p->sxex[c] = s[c];
    }
    fprintf(out, "%s   %15.9lf%15.9lf%15.9lf\n", p->name, s[0], s[1], s[2]);
    fprintf(out, "%8s   %12.6lf %15.7lf  %15.9lf\n\n", "", s[3], s[4], s[5]);
}

// A lump without arrays of standard deviations is printed only.
void solution::lumperrors(lump *l, double f)
{
    double *const to[7] = {l->stx, l->sty, l->stz, l->srx, l->sry, l->srz, l->sscale};
    double s[7];
    for (int e = 0; e < l->nepoch - 1; e++) {
        for (int k = 0; k < 7; k++) {
            s[k] = rootvariance(nunk1 + l->iunk[e] + k, f);
            if (to[k]) to[k][e] = s[k];
        }
        fprintf(out, "\nLump %d : epoch %d versus %d\n\n", l->id, l->epoch[e], l->iref);
        fprintf(out, "translation %15.6lf%15.6lf%15.6lf\n", s[0], s[1], s[2]);
        fprintf(out, "rotation    %15.6lf%15.6lf%15.6lf\n", s[3], s[4], s[5]);
        fprintf(out, "scale       %15.6lf\n", s[6]);
    }
}

// ---- pairs ----

int solution::findpoint(const char *name)
{
    for (int i = 0; i < npoints; i++)
        if (strcmp(points[i].name, name) == 0) return points[i].n0[0] == N_NONE || points[i].n0[1] == N_NONE ? -2 : i;
    return -1;
}

static int all_estimated(const point *p) { return p->n0[0] != N_NONE && p->n0[1] != N_NONE && p->n0[2] != N_NONE; }

// Standard deviations of the three differences from their variances. A first difference
// without a deviation stays a variance and takes the second one to 0.
static void difference_deviations(double v[3], double f)
{
    if (v[0] > SMALLEST_DIFFERENCE2)
        v[0] = sqrt(v[0]) * f;
    else
        v[1] = 0.0;
    for (int c = 1; c < 3; c++) v[c] = v[c] > SMALLEST_DIFFERENCE2 ? sqrt(v[c]) * f : 0.0;
}

void solution::relellipse(int k, int i, int j, double f)
{
    if (!all_estimated(points + i) || !all_estimated(points + j)) return;
    const int *a = points[i].n0, *b = points[j].n0;
    pair_input *pair = pproject->pairs + k;
    double *const ell[3] = {pair->ell12, pair->ell13, pair->ell23};
    double v[3];
    for (int c = 0; c < 3; c++) v[c] = Q(a[c], a[c]) + Q(b[c], b[c]) - 2.0 * Q(a[c], b[c]);
    for (int p = 0; p < 3; p++) {
        const int c = PLANE[p][0], d = PLANE[p][1];
        const double w = Q(a[c], a[d]) + Q(b[c], b[d]) - Q(a[c], b[d]) - Q(a[d], b[c]);
        double major = 0.0, minor = 0.0, t = 0.0;
        if (v[c] > 0.0 && v[d] > 0.0) ellipse(v[c], v[d], w, &major, &minor, &t);
        ell[p][0] = f * major;
        ell[p][1] = f * minor;
        ell[p][2] = t;
    }
    difference_deviations(v, f);
    for (int c = 0; c < 3; c++) pair->sdx[c] = v[c];
    fprintf(out, "%15.6lf%15.6lf%15.6lf\n", v[0], v[1], v[2]);
    fprintf(out, "%17s%15.6lf%15.6lf%10.1lf\n", "", pair->ell12[0], pair->ell12[1],
            pproject->htoraw(0, pair->ell12[2]));
}

// The line of a pair stays open until relellipse or the name of a missing point ends it.
void solution::pairellipses(double f)
{
    fprintf(out, "\nRelative Standard ellipse (sigma a posteriori%9.3lf)\n", f);
    for (int k = 0; k < pproject->npairs; k++) {
        const pair_input *pair = pproject->pairs + k;
        const nametext from = name_in(pair->from, sizeof pair->from), to = name_in(pair->to, sizeof pair->to);
        fprintf(out, "\n%s %s", from.text, to.text);
        const int i = findpoint(from.text), j = findpoint(to.text);
        if (i < 0 || j < 0)
            fprintf(out, "pb with %s\n", i < 0 ? from.text : to.text);
        else
            relellipse(k, i, j, f);
    }
}

void solution::stddev(double f)
{
    fprintf(out, "\nStandard deviations (sigma a posteriori%9.3lf)\n", f);
    if (dim != 1) fprintf(out, "Standard point confidence ellipse\n\n");
    for (int i = 0; i < npoints; i++) {
        if (dim == 1) pointheight(points + i, f);
        if (dim != 1) pointplane(points + i, f);
        if (dim == 3) pointspace(points + i, f);
    }
    if (irun != -2 && dim == 3 && nsta > 0) {
        fprintf(out, "\nStandard error on stations parameters\n\n");
        for (int i = 0; i < nsta; i++) stationerrors(points + i, f);
    }
    if (nlump > 0) fprintf(out, "\nStandard error on lumps parameters\n");
    for (int k = 0; k < nlump; k++) lumperrors(lumps + k, f);
    if (pproject->npairs > 0) pairellipses(f);
}

} // namespace vornengine
