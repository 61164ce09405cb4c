// Reductions: from what an instrument observes above one mark to a target above another,
// along the vertical of a sphere, to the value between the marks in the plain frame.
// A reduction r (metres, radians) is added to the observed value. Nothing is stored.
//
// The sphere has its centre O at (0, 0, -(horigin + radius)). With P, Q the marks:
//   A = P - O, B = Q - O, qa = |A|, qb = |B|, theta the angle between A and B
//   V = B - A                                  the line between the marks
//   U = (1 + h2 / qb) B - (1 + h1 / qa) A      the line from instrument to target
//   n = A / qa, L = U / |U|, G = V / |V|
//
// A network without an earth model stands on a sphere so large that its curvature vanishes,
// where the plain differences of lengths and angles are nothing but rounding. All small
// quantities are therefore formed from V, which is exact, and never as differences:
//   dq = qb - qa = V (A + B) / (qa + qb)
//   sin theta = |A x V| / (qa qb),  1 - cos theta = sin^2 theta / (1 + cos theta)
//   U - V = (h2 - h1) B / qb + h1 (B / qb - A / qa)
//   B / qb - A / qa = (V - n dq) / qb
// Good to some roundings for radii from some kilometres up to 1e17 metres.

#include "solution/solution.h"

#include <math.h>

namespace vornengine {

// One line of sight; lengths in metres.
struct sight {
    double h1, h2;
    double a[3], v[3], u[3];
    double qa, qb, dq;
    double sintheta, vers; // vers = 1 - cos theta
    double lv, lu;         // lengths of V and U
};

static double dot(const double a[3], const double b[3]) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

static double length(const double a[3]) { return sqrt(dot(a, a)); }

// Length of a x b.
static double crosslength(const double a[3], const double b[3])
{
    const double c[3] = {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
    return length(c);
}

// r0 is radius + horigin, the distance of the origin from the centre of the sphere.
static void makesight(const measure *m, double r0, sight *s)
{
    double b[3], ab[3];
    s->h1 = m->h1;
    s->h2 = m->h2;
    for (int k = 0; k < 3; k++) {
        const double origin = k == 2 ? r0 : 0.0;
        s->a[k] = m->p1->xpt[k] + origin;
        b[k] = m->p2->xpt[k] + origin;
        s->v[k] = m->p2->xpt[k] - m->p1->xpt[k];
        ab[k] = s->a[k] + b[k];
    }
    s->qa = length(s->a);
    s->qb = length(b);
    s->dq = dot(s->v, ab) / (s->qa + s->qb);

    s->sintheta = crosslength(s->a, s->v) / s->qa / s->qb;
    const double costheta = dot(s->a, b) / s->qa / s->qb;
    s->vers = costheta > 0.0 ? s->sintheta * s->sintheta / (1.0 + costheta) : 1.0 - costheta;

    for (int k = 0; k < 3; k++) {
        const double bend = (s->v[k] - s->a[k] / s->qa * s->dq) / s->qb;
        s->u[k] = s->v[k] + (s->h2 - s->h1) * b[k] / s->qb + s->h1 * bend;
    }
    s->lv = length(s->v);
    s->lu = length(s->u);
}

// Distances.

// |U| - |V| by the two triangles with the corner O:
//   |U|^2 - |V|^2 = (h2 - h1) (2 dq + h2 - h1) + 2 (1 - cos theta) (h2 qa + h1 qb + h1 h2)
static double raisedlonger(const sight *s)
{
    const double dh = s->h2 - s->h1;
    const double squares = dh * (2.0 * s->dq + dh) + 2.0 * s->vers * (s->h2 * s->qa + s->h1 * s->qb + s->h1 * s->h2);
    const double sum = s->lu + s->lv;
    return sum > 0.0 ? squares / sum : s->lu - s->lv;
}

// sqrt(s^2 - q^2) - s: the other leg of a right triangle, less its hypotenuse.
static double leglonger(double s, double q)
{
    const double leg = sqrt((s - q) * (s + q));
    return s > 0.0 ? 0.0 - q * q / (leg + s) : leg - s;
}

// Reduction of a slope distance s to the horizontal in mixed coordinates; a and b are the
// heights of instrument and target.
static double mixedhorizontal(const measure *m, double a, double b, double radius)
{
    const double *p = m->p1->xpt, *q = m->p2->xpt;
    const double c = ((q[0] - p[0]) * (q[0] + p[0]) + (q[1] - p[1]) * (q[1] + p[1])) / 2.0;
    return leglonger(m->val[0], (b - a) - c / ((b + a) / 2.0 + radius));
}

// The same to the horizontal at the height of the origin:
//   (radius + horigin) / (mean + radius) sqrt(s^2 - q^2) - s,  mean the mean height
static double originhorizontal(const measure *m, double a, double b, double radius, double horigin)
{
    const double mean = (b + a) / 2.0, longer = leglonger(m->val[0], b - a);
    const double leg = m->val[0] + longer;
    return longer - leg * (mean - horigin) / (mean + radius);
}

static void trace_reduction(const settings *set, const measure *m, double r)
{
    if (set->idebug == 0) return;
    fprintf(set->out, "%s (%9.6lf)  %s (%9.6lf)  %15.6lf %12.6lf\n", m->p1->name, m->h1, m->p2->name, m->h2, m->val[0],
            r);
}

double solution::distred(int i)
{
    const measure *m = dist + i;
    const double a = m->p1->h + m->h1, b = m->p2->h + m->h2;
    double r = 0.0;
    if (iredux == 1) {
        if (m->h1 == 0.0 && m->h2 == 0.0) return 0.0;
        sight s;
        makesight(m, radius + horigin, &s);
        r = -raisedlonger(&s);
    } else if (iredux == 2) {
        r = mixedhorizontal(m, a, b, radius);
    } else if (iredux == 9) {
        r = originhorizontal(m, a, b, radius, horigin);
    }
    trace_reduction(this, m, r);
    return r;
}

// Angles.

// Unit vectors of observation i of dir1 (which 1) or dir2: n the vertical at P, l the line of
// sight, g the line between the marks. Points stand at their coordinates, without lumps.
void solution::geomvec(int which, int i, double n[3], double l[3], double g[3])
{
    sight s;
    makesight((which == 1 ? dir1 : dir2) + i, radius + horigin, &s);
    for (int k = 0; k < 3; k++) {
        n[k] = s.a[k] / s.qa;
        l[k] = s.u[k] / s.lu;
        g[k] = s.v[k] / s.lv;
    }
}

// t1 turns the direction of the sight, taken around the vertical at P, into that of the marks
// around the x3 axis; t2 does it for the sight around the x3 axis. The effect of the heights
// is in both. With k = Ax Gy - Ay Gx their sines, up to the positive factor that their cosines
// have as well, are
//   t1: -k Gz (1 + h2 / qb) |V| / (qa |U|)      t2: k (h2 / qb - h1 / qa) / |U|
double solution::dir1red(int i)
{
    const measure *m = dir1 + i;
    double n[3], l[3], g[3];
    sight s;
    makesight(m, radius + horigin, &s);
    geomvec(1, i, n, l, g);

    const double k = s.a[0] * g[1] - s.a[1] * g[0];
    const double sight_g = l[0] * g[0] + l[1] * g[1], vertical_g = n[0] * g[0] + n[1] * g[1];
    const double raise = ((s.h2 - s.h1) * s.qa - s.h1 * s.dq) / s.qa / s.qb; // h2 / qb - h1 / qa
    const double t1 = atan2(-k * g[2] * s.lv * (1.0 + s.h2 / s.qb) / s.qa / s.lu, n[2] * sight_g - l[2] * vertical_g);
    const double t2 = atan2(k * raise / s.lu, sight_g);
    const double shown1 = t1 + 0.0, shown2 = t2 + 0.0; // a zero without sign

    if (idebug != 0)
        fprintf(out, "%s (%9.6lf)  %s (%9.6lf)  %15.6lf %12.6lf% 9.6lf\n", m->p1->name, m->h1, m->p2->name, m->h2,
                m->val[0], shown1, shown2);
    return t1 + t2;
}

// Elevation of the marks above the plane z = constant, less that of the sight above the horizon
// of P, in two steps. The vertical tilts from the x3 axis to n:
//   asin(Gz) - asin(n G) = 2 atan((Gz - n G) / (|G across x3| + |n x G|))
// The ends are raised; U, V and n lie in one plane, where
//   V x U = sin theta (h1 qb - h2 qa)
double solution::dir2red(int i)
{
    const measure *m = dir2 + i;
    double n[3], l[3], g[3];
    sight s;
    makesight(m, radius + horigin, &s);
    geomvec(2, i, n, l, g);

    const double across = n[0] * n[0] + n[1] * n[1];
    const double drop = n[2] > 0.0 ? across / (1.0 + n[2]) : 1.0 - n[2]; // 1 - n[2]
    const double tilt =
        2.0 * atan2(g[2] * drop - n[0] * g[0] - n[1] * g[1], sqrt(g[0] * g[0] + g[1] * g[1]) + crosslength(n, g));
    const double raise = s.h1 * s.dq - (s.h2 - s.h1) * s.qa;                          // h1 qb - h2 qa
    const double r = tilt + atan2(s.sintheta * raise / s.lv / s.lu, dot(g, l)) + 0.0; // a zero without sign

    trace_reduction(this, m, r);
    return r;
}

} // namespace vornengine
