// The search for the orientations of two stations whose vertical angles agree best: over a
// grid of 20 by 20 orientations the rays to each common point are intersected, the height of
// the point follows from the first station, and the vertical angle of the second is compared.
//
// Local frame: the first station at (0, 0, 0), the second at (1, 0, 0). Angles in radians.

#include "approx/guess.h"

#include <math.h>

#include "approx/intersection.h"

namespace vornengine {

enum { NGRID = 20 }; // orientations to a full circle

const double NO_TRIAL = 999.0; // above any sum of squares that a search accepts
const double NO_MEETING = 9999.0;
const double MARGIN = 0.1; // radians by which a sector of the second ray is wider or narrower

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

int guess_approx(const approxdata *net, const spreadtables *tab, guesswork *w, double o1, double o2)
{
    const int it1 = w->isys[w->n], it2 = w->isys[w->n + 1];
    for (int k = 0; k < w->n; k++) {
        const int i = w->isys[k];
        if (tab->table[it1][i] > net->ndir2 || tab->table[it2][i] > net->ndir2) return -1;
        const double a = reading(net, tab, it1, i) + o1, b = reading(net, tab, it2, i) + o2;
        if (!can_meet(wrap(a), wrap(b), net->pi)) return -1;
        double *p = w->app + 3 * (size_t)k;
        meet(a, b, p, p + 1);
        p[2] = tan(net->dir2[tab->table[it1][i] - 1].val[0]) * sqrt(p[0] * p[0] + p[1] * p[1]);
    }
    return 0;
}

guesssight sight_of(const approxdata *net, const spreadtables *tab, const guesswork *w, int k, int it)
{
    const int shot = tab->table[w->isys[w->n + it - 1]][w->isys[k]] - 1;
    const double *p = w->app + 3 * (size_t)k;
    return {p[0], p[1], p[2], it, it == 1 ? 0.0 : 1.0, 0.0, 0.0, net->dir1[shot].val[0], net->dir2[shot].val[0]};
}

int guess_resid(const guesssight *s, double *sum)
{
    const double dx = s->x - s->xt, dh = sqrt(s->y * s->y + dx * dx);
    const double w = wrap(s->v - atan2(s->z - s->zt, dh));
    *sum += w * w;
    return 0;
}

double guess_check(const approxdata *net, const spreadtables *tab, guesswork *w, double o1, double o2)
{
    if (net->idebug) fprintf(net->out, "guess_check with o1,o2 %9.3lf%9.3lf\n", o1, o2);
    if (guess_approx(net, tab, w, o1, o2) != 0) return NO_MEETING;
    if (net->idebug) fprintf(net->out, "guess_approx pass with %9.5lf %19.5lf\n", o1, o2);
    double sum = 0.0;
    for (int k = 0; k < w->n; k++)
        for (int it = 1; it <= 2; it++) {
            const guesssight s = sight_of(net, tab, w, k, it);
            guess_resid(&s, &sum);
        }
    if (net->idebug) fprintf(net->out, "guess_check returns %15.5lf\n", sum);
    return sum;
}

// Lists the common points of a pair and the two stations behind them. Returns 0, or -4 when
// there are more or fewer than the pair says.
static int list_common(const approxdata *net, const spreadtables *tab, const stationpair *pair, guesswork *w)
{
    const int n = common_shots(net, tab, pair->it1, pair->it2);
    if (n != pair->ncommon) {
        fprintf(net->out, n > pair->ncommon ? "guess_spread: Strange more common shots\n"
                                            : "guess_spread: Strange number of common shots\n");
        return -4;
    }
    int k = 0;
    for (int e = net->seen.first[pair->it1]; e < net->seen.first[pair->it1 + 1]; e++) {
        const int p = net->seen.to[e];
        if (p != pair->it2 && tab->table[pair->it2][p] != 0) w->isys[k++] = p;
    }
    w->n = k;
    w->isys[k] = pair->it1;
    w->isys[k + 1] = pair->it2;
    return 0;
}

int guess_o1o2(const approxdata *net, const spreadtables *tab, const stationpair *pair, guesswork *w, double *o1,
               double *o2)
{
    if (list_common(net, tab, pair, w) != 0) return -4;
    double best = NO_TRIAL;
    for (int i = 0; i < NGRID; i++)
        for (int j = 0; j < NGRID; j++) {
            const double t1 = i * net->pi / 10, t2 = j * net->pi / 10;
            const double v = guess_check(net, tab, w, t1, t2);
            if (!(v < best)) continue; // the first of equal trials stays
            best = v;
            *o1 = t1;
            *o2 = t2;
        }
    if (best == NO_TRIAL) {
        fprintf(net->out, "guess_o1o2: Guessing loop failed\n");
        return -5;
    }
    if (*o1 > net->pi) *o1 -= 2 * net->pi;
    if (*o2 > net->pi) *o2 -= 2 * net->pi;
    return 0;
}

} // namespace vornengine
