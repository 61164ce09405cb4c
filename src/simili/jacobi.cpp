// Eigenvalues and eigenvectors of a real symmetric matrix by cyclic Jacobi rotations
// (Jacobi 1846; the form of Rutishauser, Numerische Mathematik 9, 1966).
//
// A sweep goes once through the elements a(p,q) above the diagonal and turns each that
// exceeds the sweep's threshold to zero by a rotation in the plane of p and q, with
//     theta = cot(2 phi) = (d(q) - d(p)) / (2 a(p,q)),   t = tan(phi),  |phi| <= pi / 4.
// Only the part above the diagonal is read and changed; the diagonal lives in d.

#include <math.h>
#include <stdlib.h>

#include "numerics/memory.h"
#include "simili/simili.h"

namespace vornengine {

const int MAX_SWEEPS = 50;
const int THRESHOLD_SWEEPS = 4; // sweeps that leave small elements for later
const int KEEP_SWEEPS = 5;      // sweeps that never drop an element for being small

// Whether adding x to y does not change y: x is below y's last digit.
static bool vanishes(double x, double y) { return fabs(y) + x == fabs(y); }

// Sum of the absolute values of the elements above the diagonal.
static double above_diagonal(double **a, int n)
{
    double sum = 0.0;
    for (int p = 0; p < n; p++)
        for (int q = p + 1; q < n; q++) sum += fabs(a[p][q]);
    return sum;
}

// Tangent of the rotation that turns apq to zero, h = d(q) - d(p).
static double tangent(double apq, double h)
{
    if (vanishes(100.0 * fabs(apq), h)) return apq / h; // theta squared would not count beside 1
    const double theta = 0.5 * h / apq;
    const double t = 1.0 / (fabs(theta) + sqrt(1.0 + theta * theta));
    return theta < 0.0 ? -t : t;
}

// Rotates a pair of elements; tau = tan(phi / 2).
static void turn(double *x, double *y, double s, double tau)
{
    const double g = *x, h = *y;
    *x = g - s * (h + g * tau);
    *y = h + s * (g - h * tau);
}

// Turns a(p,q), p < q, to zero; the changes of d go into z as well.
static void rotate(double **a, int n, double *d, double *z, double **v, int p, int q)
{
    const double t = tangent(a[p][q], d[q] - d[p]);
    const double c = 1.0 / sqrt(1.0 + t * t), s = t * c, tau = s / (1.0 + c), change = t * a[p][q];
    z[p] -= change, z[q] += change;
    d[p] -= change, d[q] += change;
    a[p][q] = 0.0;
    for (int j = 0; j < p; j++) turn(&a[j][p], &a[j][q], s, tau);
    for (int j = p + 1; j < q; j++) turn(&a[p][j], &a[j][q], s, tau);
    for (int j = q + 1; j < n; j++) turn(&a[p][j], &a[q][j], s, tau);
    for (int j = 0; j < n; j++) turn(&v[j][p], &v[j][q], s, tau);
}

// One sweep. Returns the number of rotations.
static int sweep(double **a, int n, double *d, double *z, double **v, int isweep, double threshold)
{
    int nrot = 0;
    for (int p = 0; p < n; p++)
        for (int q = p + 1; q < n; q++) {
            const double g = 100.0 * fabs(a[p][q]);
            if (isweep >= KEEP_SWEEPS && vanishes(g, d[p]) && vanishes(g, d[q])) {
                a[p][q] = 0.0;
            } else if (fabs(a[p][q]) > threshold) {
                rotate(a, n, d, z, v, p, q);
                nrot++;
            }
        }
    return nrot;
}

// v becomes the identity, d and b the diagonal of a.
static void start(double **a, int n, double *d, double *b, double **v)
{
    for (int p = 0; p < n; p++) {
        for (int q = 0; q < n; q++) v[p][q] = p == q ? 1.0 : 0.0;
        d[p] = b[p] = a[p][p];
    }
}

// The sweeps, with work b (diagonal before the sweep) and z (its changes in the sweep).
// Returns whether the matrix has become diagonal.
static bool sweeps(double **a, int n, double *d, double **v, int *nrot, double *b, double *z)
{
    start(a, n, d, b, v);
    for (int i = 0; i < MAX_SWEEPS; i++) {
        const double sum = above_diagonal(a, n);
        if (sum == 0.0) return true;
        const double threshold = i < THRESHOLD_SWEEPS ? 0.2 * sum / ((double)n * n) : 0.0;
        *nrot += sweep(a, n, d, z, v, i, threshold);
        for (int p = 0; p < n; p++) {
            d[p] = b[p] += z[p]; // one sum a sweep keeps the rounding small
            z[p] = 0.0;
        }
    }
    return false;
}

// a     in   n rows of n; destroyed above the diagonal
// d     out  n eigenvalues, in no order
// v     out  n rows of n; eigenvectors of length 1 by columns
// nrot  out  rotations made; -1 without memory, with d and v as they were
void simili::jacobi(double **a, int n, double *d, double **v, int *nrot)
{
    double *b = (double *)zeroed(n, sizeof(double));
    double *z = (double *)zeroed(n, sizeof(double));
    *nrot = b && z ? 0 : -1;
    if (*nrot == 0 && !sweeps(a, n, d, v, nrot, b, z)) fprintf(out, "Too many iterations in routine JACOBI");
    free(b);
    free(z);
}

// Orders n eigenvalues from large to small, and the columns of v with them.
void simili::eigsrt(double *d, double **v, int n)
{
    for (int i = 0; i < n - 1; i++) {
        int k = i;
        for (int j = i + 1; j < n; j++)
            if (d[j] >= d[k]) k = j;
        if (k == i) continue;
        const double value = d[i];
        d[i] = d[k], d[k] = value;
        for (int j = 0; j < n; j++) {
            const double x = v[j][i];
            v[j][i] = v[j][k], v[j][k] = x;
        }
    }
}

} // namespace vornengine
