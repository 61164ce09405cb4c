// Rows of distances, height differences, horizontal directions, vertical angles and azimuths.
//
// For the observation i of a list, P is its p1, Q its p2 (metres, radians):
//   d = Q - P                      difference of the coordinates, lumps moved to their epoch
//   e = transposed(rot) d          the same in the frame of the instrument at P
//   distance |d|, direction atan2(e1, e0), vertical angle asin(e2 / |d|)
// A row holds w * d(computed)/d(unknown), its right-hand side w * (observed - computed).
// First-kind entries go axis by axis, P before Q; the orientation of P, its constants and
// the seven parameters of each moved end follow as second-kind entries. l1, l2 are the epoch
// positions of the lumps of P and Q, -1 for an end that is not moved; r1, r2 their rotations.

#include "solution/solution.h"

#include <math.h>

namespace vornengine {

static const double SHORTEST_SQUARED = 1.0e-07; // square of a horizontal length without direction, metres^2
static const double SHORTEST = 1.0e-07;         // horizontal length of a sight to the zenith, metres
static const double COINCIDENT = 1.0e-14;       // square of a length without vertical angle, metres^2

static double dot(const double a[3], const double b[3]) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

// Column j of r with v.
static double columndot(const double v[3], const double r[3][3], int j)
{
    return v[0] * r[0][j] + v[1] * r[1][j] + v[2] * r[2][j];
}

double weightfactor(double s, double sigma) { return sigma >= SIGMA_LIMIT ? s / sigma : WEIGHT_CAP; }

double solution::withinturn(double v)
{
    if (v > pi) return v - 2.0 * pi;
    if (v < -pi) return v + 2.0 * pi;
    return v;
}

// A number outside its series adds no entry: -1 has no unknown, and a copy of a station may
// carry the number of a constant that the network does not have.
void solution::coorentry(int number, double c)
{
    if (number < 0 || number >= nunk1) return;
    const int n = ++ia1[0];
    ia1[n] = number;
    a1[n] = c;
}

void solution::paramentry(int number, double c)
{
    if (number < 0 || number >= nunk2) return;
    const int n = ++ia2[0];
    ia2[n] = number;
    a2[n] = c;
}

// Entries f t for P and -f t for Q. t is v, turned and scaled by the lump of the end; it is
// set once an axis, so that Q without a lump takes the t that a moved P has left.
void solution::coorentries(const measure *m, double f, const double v[3], const double r1[3][3], const double r2[3][3],
                           int l1, int l2)
{
    const point *p = m->p1, *q = m->p2;
    ia1[0] = 0;
    for (int j = 0; j < 3; j++) {
        double t = v[j];
        if (p->n0[j] != N_NONE) {
            if (l1 != -1) t = lumps[p->ilump - 1].scale[l1] * columndot(v, r1, j);
            coorentry(p->n0[j], f * t);
        }
        if (q->n0[j] != N_NONE) {
            if (l2 != -1) t = lumps[q->ilump - 1].scale[l2] * columndot(v, r2, j);
            coorentry(q->n0[j], -f * t);
        }
    }
}

// Seven entries for each end that a lump moves, behind those that ia2[0] counts.
void solution::lumpentries(const measure *m, double f, const double v[3], const double r1[3][3], const double r2[3][3],
                           int l1, int l2)
{
    double b[3][7];
    if (l1 != -1) {
        const int k = m->p1->ilump - 1;
        lumpderiv(k, l1, m->p1->xpt, r1, b);
        lumprow(lumps[k].iunk[l1], f, v, b);
    }
    if (l2 != -1) {
        const int k = m->p2->ilump - 1;
        lumpderiv(k, l2, m->p2->xpt, r2, b);
        lumprow(lumps[k].iunk[l2], -f, v, b);
    }
}

// d of an observation; l1 and l2 as above.
void solution::difference(const measure *m, double d[3], double r1[3][3], double r2[3][3], int *l1, int *l2)
{
    *l1 = *l2 = -1;
    if (m->time != 0) {
        lumpdelta(m, d, r1, r2, l1, l2);
        return;
    }
    for (int k = 0; k < 3; k++) d[k] = m->p2->xpt[k] - m->p1->xpt[k];
}

void solution::toinstrument(const double d[3], double e[3])
{
    for (int k = 0; k < 3; k++) e[k] = columndot(d, rot, k);
}

// Rotation of the station of observation i; which 1 directions, 2 vertical angles, otherwise
// images. ca to sc are the cosines and sines of its three angles.
void solution::setrot(int which, int i, double *ca, double *sa, double *cb, double *sb, double *cc, double *sc)
{
    const measure *list = which == 1 ? dir1 : which == 2 ? dir2 : obsuv1;
    const double *x = list[i].p1->xex;
    const double c1 = cos(x[0]), s1 = sin(x[0]), c2 = cos(x[1]), s2 = sin(x[1]), c3 = cos(x[2]), s3 = sin(x[2]);
    rot[0][0] = c2 * c3;
    rot[0][1] = c2 * s3;
    rot[0][2] = -s2;
    rot[1][0] = s1 * s2 * c3 - c1 * s3;
    rot[1][1] = c1 * c3 + s1 * s2 * s3;
    rot[1][2] = s1 * c2;
    rot[2][0] = s1 * s3 + c1 * s2 * c3;
    rot[2][1] = c1 * s2 * s3 - s1 * c3;
    rot[2][2] = c1 * c2;
    *ca = c1, *sa = s1, *cb = c2, *sb = s2, *cc = c3, *sc = s3;
}

// Distances.

// In dimension 2 the difference lies in the plane, unless a reduction works in space.
static void flatten(const settings *set, double d[3])
{
    if (set->dim == 2 && set->iredux == 0) d[2] = 0.0;
}

double solution::distance(int i, double d[3], double r1[3][3], double r2[3][3], int *l1, int *l2)
{
    difference(dist + i, d, r1, r2, l1, l2);
    flatten(this, d);
    return sqrt(dot(d, d));
}

// Scale of the instrument, where the distance takes the constants of its station.
static double scale(const measure *m) { return m->typ == 1 ? m->p1->xex[4] : 1.0; }

void solution::distrow1(int i, double c, double w, const double d[3], const double r1[3][3], const double r2[3][3],
                        int l1, int l2)
{
    const measure *m = dist + i;
    coorentries(m, -(w * scale(m) / c), d, r1, r2, l1, l2);
}

// For a distance with constants or lumps. *c is |d| on entry; with constants it becomes the
// computed value, scale |d| + additive constant.
void solution::distrow2(int i, double *c, double w, const double d[3], const double r1[3][3], const double r2[3][3],
                        int l1, int l2)
{
    const measure *m = dist + i;
    const point *p = m->p1;
    const double c0 = *c;
    ia2[0] = 0;
    if (m->typ == 1) {
        paramentry(p->n1[3], w);
        paramentry(p->n1[4], w * c0);
        *c = p->xex[4] * c0 + p->xex[3];
    }
    lumpentries(m, -(w * scale(m) / c0), d, r1, r2, l1, l2);
}

void solution::norm_dist()
{
    double d[3], r1[3][3], r2[3][3];
    int l1, l2;
    if (idebug) fprintf(out, "Reductions on distances\n");
    for (int i = 0; i < ndist; i++) {
        const measure *m = dist + i;
        const double w = weightfactor(sdist, m->val[1]);
        double c = distance(i, d, r1, r2, &l1, &l2);
        distrow1(i, c, w, d, r1, r2, l1, l2);
        ia2[0] = 0;
        if (m->typ == 1 || l1 != -1 || l2 != -1) distrow2(i, &c, w, d, r1, r2, l1, l2);
        const double r = iredux != 0 ? distred(i) : 0.0;
        addrow(ia1[0], ia2[0], (r + m->val[0] - c) * w);
    }
}

// Height differences. dh is not needed for the row, which is linear.

void solution::difhrow(int i, double, double w)
{
    ia1[0] = ia2[0] = 0;
    coorentry(difh[i].p1->n0[2], -w);
    coorentry(difh[i].p2->n0[2], w);
}

// The value is brought from instrument and target to the marks; in dimension 3 the part that
// the sphere adds to the coordinates is taken off as well. Epochs and lumps play no part.
void solution::norm_difh()
{
    for (int i = 0; i < ndifh; i++) {
        const measure *m = difh + i;
        const point *p = m->p1, *q = m->p2;
        const double w = weightfactor(sdifh, m->val[1]);
        const double dh = q->xpt[2] - p->xpt[2];
        double v = m->val[0] - (m->h2 - m->h1);
        if (dim == 3) v -= (q->h - p->h) - dh;
        difhrow(i, dh, w);
        addrow(ia1[0], 0, (v - dh) * w);
    }
}

// Horizontal directions.

// *rr is the square of the horizontal length in the frame of the instrument.
double solution::dir1comp(int i, double d[3], double e[3], double *rr, double r1[3][3], double r2[3][3], int *l1,
                          int *l2)
{
    difference(dir1 + i, d, r1, r2, l1, l2);
    flatten(this, d);
    toinstrument(d, e);
    *rr = e[0] * e[0] + e[1] * e[1];
    return atan2(e[1], e[0]);
}

// g is the derivative of the direction by P.
void solution::dir1row1(int i, double w, const double e[3], double rr, double g[3], const double r1[3][3],
                        const double r2[3][3], int l1, int l2)
{
    for (int k = 0; k < 3; k++) g[k] = (rot[k][0] * e[1] - rot[k][1] * e[0]) / rr;
    coorentries(dir1 + i, w, g, r1, r2, l1, l2);
}

void solution::dir1row2(int i, double w, const double d[3], const double e[3], double rr, const double g[3], double ca,
                        double sa, double cc, double sc, const double r1[3][3], const double r2[3][3], int l1, int l2)
{
    const point *p = dir1[i].p1;
    ia2[0] = 0;
    paramentry(p->n1[0], (g[1] * d[2] - g[2] * d[1]) * w);
    paramentry(p->n1[1], (((cc * e[1] - sc * e[0]) * -rot[0][2] * d[0]) / rr - (ca * d[2] + sa * d[1]) * g[0]) * w);
    paramentry(p->n1[2], w);
    lumpentries(dir1 + i, w, g, r1, r2, l1, l2);
}

// A target above or below the instrument ends the list for this iteration.
void solution::norm_dir1()
{
    double d[3], e[3], g[3], r1[3][3], r2[3][3], rr, ca = 0, sa = 0, cb = 0, sb = 0, cc = 0, sc = 0;
    int l1, l2;
    const point *station = NULL;
    if (idebug) fprintf(out, "Reductions on horizontal directions (in radians)\n");
    for (int i = 0; i < ndir1; i++) {
        const measure *m = dir1 + i;
        const double w = weightfactor(sdir1, m->val[1]);
        if (m->p1 != station) setrot(1, i, &ca, &sa, &cb, &sb, &cc, &sc);
        station = m->p1;
        const double c = dir1comp(i, d, e, &rr, r1, r2, &l1, &l2);
        if (fabs(rr) < SHORTEST_SQUARED) {
            fprintf(out, "\nProblem with horizontal direction %d\n", i);
            nskip += ndir1 - i;
            return;
        }
        dir1row1(i, w, e, rr, g, r1, r2, l1, l2);
        dir1row2(i, w, d, e, rr, g, ca, sa, cc, sc, r1, r2, l1, l2);
        const double r = station->typ == 1 ? dir1red(i) : 0.0;
        addrow(ia1[0], ia2[0], withinturn(r + m->val[0] - c) * w);
    }
}

// Vertical angles: elevations above the plane of the instrument.

// *rr is the square of the length, *l the horizontal length in the frame of the instrument.
double solution::dir2comp(int i, double d[3], double e[3], double *rr, double *l, double r1[3][3], double r2[3][3],
                          int *l1, int *l2)
{
    difference(dir2 + i, d, r1, r2, l1, l2);
    toinstrument(d, e);
    *rr = dot(d, d);
    *l = 0.0;
    if (fabs(*rr) < COINCIDENT) return 0.0;
    *l = sqrt(e[0] * e[0] + e[1] * e[1]);
    const double s = e[2] / sqrt(*rr);
    return asin(s > 1.0 ? 1.0 : s < -1.0 ? -1.0 : s); // rounding can carry a steep sight over 1
}

// g is the derivative of the vertical angle by P.
void solution::dir2row1(int i, double w, const double d[3], const double e[3], double rr, double l, double g[3],
                        const double r1[3][3], const double r2[3][3], int l1, int l2)
{
    for (int k = 0; k < 3; k++) g[k] = ((e[2] / rr) * d[k] - rot[k][2]) / l;
    coorentries(dir2 + i, w, g, r1, r2, l1, l2);
}

// The vertical term of the instrument has a column, but its value is not in the computed angle.
void solution::dir2row2(int i, double w, const double d[3], double ca, double sa, double cb, double l,
                        const double g[3], const double r1[3][3], const double r2[3][3], int l1, int l2)
{
    const point *p = dir2[i].p1;
    ia2[0] = 0;
    paramentry(p->n1[0], ((rot[2][2] * d[1] - rot[1][2] * d[2]) * w) / l);
    paramentry(p->n1[1], (((ca * d[2] + sa * d[1]) * rot[0][2] - cb * d[0]) * w) / l);
    paramentry(p->n1[5], w);
    lumpentries(dir2 + i, w, g, r1, r2, l1, l2);
}

// A sight to the zenith, or to the instrument itself, ends the list for this iteration.
void solution::norm_dir2()
{
    double d[3], e[3], g[3], r1[3][3], r2[3][3], rr, l, ca = 0, sa = 0, cb = 0, sb = 0, cc = 0, sc = 0;
    int l1, l2;
    const point *station = NULL;
    if (idebug) fprintf(out, "Reductions on vertical directions (in radians)\n");
    for (int i = 0; i < ndir2; i++) {
        const measure *m = dir2 + i;
        const double w = weightfactor(sdir2, m->val[1]);
        if (m->p1 != station) setrot(2, i, &ca, &sa, &cb, &sb, &cc, &sc);
        station = m->p1;
        const double c = dir2comp(i, d, e, &rr, &l, r1, r2, &l1, &l2);
        if (fabs(l) < SHORTEST) {
            fprintf(out, "\nProblem with vertical direction %d\n", i);
            nskip += ndir2 - i;
            return;
        }
        dir2row1(i, w, d, e, rr, l, g, r1, r2, l1, l2);
        dir2row2(i, w, d, ca, sa, cb, l, g, r1, r2, l1, l2);
        const double r = station->typ == 1 ? dir2red(i) : 0.0;
        addrow(ia1[0], ia2[0], (r + m->val[0] - c) * w);
    }
}

// Azimuths. Epochs and lumps play no part.

static void turned(const double x[3], double t, double a[3])
{
    a[0] = x[0] * cos(t) - x[1] * sin(t);
    a[1] = x[1] * cos(t) + x[0] * sin(t);
    a[2] = x[2];
}

static void normalize(double v[3])
{
    const double s = dot(v, v);
    if (!(s > 0.0)) return;
    const double length = sqrt(s);
    for (int k = 0; k < 3; k++) v[k] /= length;
}

// The row is that of atan2(dy, dx) in the plain coordinates: the turn, the vertical of the sphere
// and the convergence of the meridians are left out, and it carries no weight yet.
// Returns the computed azimuth in the frame turned by azrot, around the vertical of the sphere
// at P, less the convergence of the meridians there.
double solution::azcomp(int i)
{
    const point *p = az[i].p1, *q = az[i].p2;
    double a[3], d[3];
    turned(p->xpt, pproject->azrot, a);
    turned(q->xpt, pproject->azrot, d);
    for (int k = 0; k < 3; k++) d[k] -= a[k];
    normalize(d);
    double u[3] = {a[0], a[1], a[2] + radius + horigin};
    normalize(u);
    const double c = atan2(u[2] * d[1] - u[1] * d[2], u[2] * d[0] - u[0] * d[2]);

    double dx = q->xpt[0] - p->xpt[0], dy = q->xpt[1] - p->xpt[1];
    const double s = dx * dx + dy * dy;
    if (s > 0.0) {
        dx /= s;
        dy /= s;
    }
    ia1[0] = ia2[0] = 0;
    coorentry(p->n0[0], dy);
    coorentry(q->n0[0], -dy);
    coorentry(p->n0[1], -dx);
    coorentry(q->n0[1], dx);
    return c - tan(latitude) * a[0] / (radius + horigin);
}

void solution::norm_az()
{
    for (int i = 0; i < naz; i++) {
        const measure *m = az + i;
        const double w = weightfactor(saz, m->val[1]);
        const double v = withinturn(m->val[0] - azcomp(i));
        for (int k = 1; k <= ia1[0]; k++) a1[k] *= w;
        addrow(ia1[0], 0, v * w);
    }
}

} // namespace vornengine
