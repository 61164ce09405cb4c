// The search for the orientations of two stations whose vertical angles agree best: over a
// grid of 20 by 20 orientations the rays to each common point are intersected, the height of
// the point follows from the first station, and the vertical angle of the second is compared.
//
// Local frame: the first station at (0, 0, 0), the second at (1, 0, 0). Angles in radians.

#include "approx/approx.h"

#include <math.h>

namespace vornengine {

enum { NGRID = 20 }; // orientations to a full circle

const double NO_TRIAL = 999.0; // above any sum of squares that a search accepts
const double NO_MEETING = 9999.0;
const double PARALLEL = 1e-5; // least difference of the tangents of two rays
const double MARGIN = 0.1;    // radians by which a sector of the second ray is wider or narrower

// Sectors of a ray from the first station, exact:
//   1: 0   2: first quadrant   3: pi/2   4: second   5: +-pi   6: third   7: -pi/2   8: fourth
// 0 for anything else.
static int first_sector(double a, double pi)
{
    if (a == 0.0) return 1;
    if (a > 0.0 && a < pi / 2) return 2;
    if (a == pi / 2) return 3;
    if (a > pi / 2 && a < pi) return 4;
    if (a == pi || a == -pi) return 5;
    if (a > -pi && a < -pi / 2) return 6;
    if (a == -pi / 2) return 7;
    if (a > -pi / 2 && a < 0.0) return 8;
    return 0;
}

// The same of a ray from the second station, the axes widened by the margin. Exactly pi is in
// none.
static int second_sector(double b, double pi)
{
    if (b >= -MARGIN && b < MARGIN) return 1;
    if (b >= MARGIN && b <= pi / 2 - MARGIN) return 2;
    if (b > pi / 2 - MARGIN && b <= pi / 2 + MARGIN) return 3;
    if (b > pi / 2 + MARGIN && b <= pi - MARGIN) return 4;
    if ((b > pi - MARGIN && b < pi) || (b >= -pi && b <= -pi + MARGIN)) return 5;
    if (b > -pi + MARGIN && b <= -pi / 2 - MARGIN) return 6;
    if (b > -pi / 2 - MARGIN && b <= -pi / 2 + MARGIN) return 7;
    if (b > -pi / 2 + MARGIN && b < -MARGIN) return 8;
    return 0;
}

// Whether rays of these directions from (0, 0) and (1, 0) can meet in front of both stations.
static int can_meet(double a, double b, double pi)
{
    static const unsigned char allowed[9][9] = {
        // sector of the second ray, 0 to 8
        {0, 0, 0, 0, 0, 0, 0, 0, 0}, {0, 1, 0, 0, 0, 1, 0, 0, 0}, {0, 1, 1, 1, 1, 1, 0, 0, 0},
        {0, 0, 0, 1, 1, 1, 0, 0, 0}, {0, 0, 0, 1, 1, 1, 0, 0, 0}, {0, 0, 0, 0, 0, 1, 0, 0, 0},
        {0, 0, 0, 0, 0, 1, 1, 1, 0}, {0, 0, 0, 0, 0, 1, 1, 1, 0}, {0, 1, 0, 0, 0, 1, 1, 1, 1},
    };
    return allowed[first_sector(a, pi)][second_sector(b, pi)];
}

// Meeting of rays of the plane angles a and b from (0, 0) and (1, 0); near parallel: (0, 0).
void meet(double a, double b, double *x, double *y)
{
    const double t1 = tan(a), t2 = tan(b);
    *x = *y = 0.0;
    if (!(fabs(t2 - t1) > PARALLEL)) return; // NaN fails too
    *x = t2 / (t2 - t1);
    *y = t1 * *x;
}

int approx::guess_approx(int n, int **table, int *isys, double *app, int it1, double o1, int it2, double o2)
{
    if (ndir1 != ndir2) return -1; // no vertical angle belongs to a direction
    for (int k = 0; k < n; k++) {
        const int s1 = table[it1][isys[k]] - 1, s2 = table[it2][isys[k]] - 1;
        const double a = dir1[s1].val[0] + o1, b = dir1[s2].val[0] + o2;
        if (!can_meet(wrap(a), wrap(b), pi)) return -1;
        double *p = app + 3 * (size_t)k;
        meet(a, b, p, p + 1);
        p[2] = tan(dir2[s1].val[0]) * sqrt(p[0] * p[0] + p[1] * p[1]);
    }
    return 0;
}

// Adds the square of what the vertical angle v contradicts; the direction takes no part.
int approx::guess_resid(double x, double y, double z, double xt, double zt, double, double, double v, double *sum)
{
    const double dh = sqrt(y * y + (x - xt) * (x - xt));
    const double w = wrap(v - atan2(z - zt, dh));
    *sum += w * w;
    return 0;
}

double approx::guess_check(int n, double o1, double o2, int *isys, int **table, double *app)
{
    const int it1 = isys[n], it2 = isys[n + 1];
    if (idebug) fprintf(out, "guess_check with o1,o2 %9.3lf%9.3lf\n", o1, o2);
    if (guess_approx(n, table, isys, app, it1, o1, it2, o2) != 0) return NO_MEETING;
    if (idebug) fprintf(out, "guess_approx pass with %9.5lf %19.5lf\n", o1, o2);
    double sum = 0.0;
    for (int k = 0; k < n; k++) {
        const double *p = app + 3 * (size_t)k;
        const int s1 = table[it1][isys[k]] - 1, s2 = table[it2][isys[k]] - 1;
        guess_resid(p[0], p[1], p[2], 0.0, 0.0, o1, dir1[s1].val[0], dir2[s1].val[0], &sum);
        guess_resid(p[0], p[1], p[2], 1.0, 0.0, o2, dir1[s2].val[0], dir2[s2].val[0], &sum);
    }
    if (idebug) fprintf(out, "guess_check returns %15.5lf\n", sum);
    return sum;
}

// Lists the common points and the two stations behind them. Returns 0, or -4 when there are
// more or fewer than ncommon.
int approx::list_common(int it1, int it2, int ncommon, int **table, int *isys)
{
    const int n = common_shots(it1, it2, table);
    if (n != ncommon) {
        fprintf(out, n > ncommon ? "guess_spread: Strange more common shots\n"
                                 : "guess_spread: Strange number of common shots\n");
        return -4;
    }
    int k = 0;
    for (int e = seen.first[it1]; e < seen.first[it1 + 1]; e++) {
        const int p = seen.to[e];
        if (p != it2 && table[it2][p] != 0) isys[k++] = p;
    }
    isys[k] = it1;
    isys[k + 1] = it2;
    return 0;
}

int approx::guess_o1o2(int it1, int it2, int ncommon, int **table, int *isys, double *app, double *, double *o1,
                       double *o2)
{
    if (list_common(it1, it2, ncommon, table, isys) != 0) return -4;
    double best = NO_TRIAL;
    for (int i = 0; i < NGRID; i++)
        for (int j = 0; j < NGRID; j++) {
            const double t1 = i * pi / 10, t2 = j * pi / 10;
            const double v = guess_check(ncommon, t1, t2, isys, table, app);
            if (!(v < best)) continue; // the first of equal trials stays
            best = v;
            *o1 = t1;
            *o2 = t2;
        }
    if (best == NO_TRIAL) {
        fprintf(out, "guess_o1o2: Guessing loop failed\n");
        return -5;
    }
    if (*o1 > pi) *o1 -= 2 * pi;
    if (*o2 > pi) *o2 -= 2 * pi;
    return 0;
}

} // namespace vornengine
