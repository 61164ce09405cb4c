// Normal equations of a guess: the direction and the vertical angle of one shot, weights 1.
//
// Unknowns, m of them: x, y, z of point k at c = 3k; height of the second station at m - 3;
// orientations of the first and second station at m - 2 and m - 1. With d2 = y^2 + (x - xt)^2,
// dh = sqrt(d2), d3 = d2 + (z - zt)^2 the coefficients are
//   direction         -y / d2,  (x - xt) / d2,  -1 for the orientation
//   vertical angle    -(z - zt)(x - xt) / (dh d3),  -(z - zt) y / (dh d3),  dh / d3,
//                     -dh / d3 for the height of the second station
// The position of the second station is held; its orientation and height are not coupled.

#include "approx/guess.h"

#include <math.h>

#include "approx/intersection.h"

namespace vornengine {

// One equation: n coefficients of the unknowns at[] and its contradiction w. Adds to both
// triangles of the matrix and to the right side.
static void add_equation(double **mat, double *rhs, int n, const int *at, const double *coef, double w)
{
    for (int i = 0; i < n; i++) {
        rhs[at[i]] += coef[i] * w;
        for (int j = 0; j < n; j++) mat[at[i]][at[j]] += coef[i] * coef[j];
    }
}

// The contradiction of a vertical angle. Above pi one pi is taken off, not two: this differs
// from the wrap of every other angle and is meant to.
static double wrap_vertical(double w)
{
    const double pi = 4 * atan(1.0);
    if (w > pi) return w - pi;
    if (w < -pi) return w + 2 * pi;
    return w;
}

void guess_normal(double **mat, double *rhs, int m, int k, const guesssight *s, double *sum)
{
    const int c = 3 * k, kz = m - 3, ko = s->it == 1 ? m - 2 : m - 1;
    const double dx = s->x - s->xt, y = s->y, dz = s->z - s->zt;
    const double d2 = y * y + dx * dx, d3 = dz * dz + d2, dh = sqrt(d2);

    const double wh = wrap(s->hz - wrap(atan2(y, dx) - s->o));
    const int at_h[] = {c, c + 1, ko};
    const double coef_h[] = {-y / d2, dx / d2, -1.0};
    add_equation(mat, rhs, 3, at_h, coef_h, wh);

    const double wv = wrap_vertical(s->v - atan2(dz, dh));
    const int at_v[] = {c, c + 1, c + 2, kz};
    const double coef_v[] = {dz * -dx / dh / d3, dz * -y / dh / d3, dh / d3, -dh / d3};
    add_equation(mat, rhs, s->it == 2 ? 4 : 3, at_v, coef_v, wv);

    *sum += wh * wh + wv * wv;
}

} // namespace vornengine
