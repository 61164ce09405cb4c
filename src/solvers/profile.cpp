// Factorization and solution of a symmetric matrix in profile storage: row by row up to
// SMALL_ORDER, by panels of rows above (profile_factor.cpp, profile_inverse.cpp).
//
// With G(i,j) = L(i,j) D(j), row i is
//   G(i,j) = a(i,j) - sum of G(i,k) L(j,k) over k < j,  L(i,j) = G(i,j) / D(j),
//   D(i)   = a(i,i) - sum of G(i,k) L(i,k) over k < i.
// There is no pivot search; negative pivots are accepted.

#include "solvers/profile.h"

#include <math.h>

namespace vornengine {

double pivotlimit(int n, const double *a, const size_t *add)
{
    double m = 0.0;
    for (int i = 0; i < n; i++) // the first stored element of a row, not its diagonal
        if (fabs(a[add[i]]) > m) m = fabs(a[add[i]]);
    if (m < 1.0) return 1.0e-18;
    if (m < 10.0) return 1.0e-17;
    if (m < 100.0) return 1.0e-16;
    if (m < 1000.0) return 1.0e-15;
    return 1.0e-14;
}

static int max_int(int a, int b) { return a > b ? a : b; }

// Sum of x[k] y[k] over first <= k < last.
static double dot(const double *x, const double *y, int first, int last)
{
    double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
    int k = first;
    for (; k + 4 <= last; k += 4) {
        s0 += x[k] * y[k];
        s1 += x[k + 1] * y[k + 1];
        s2 += x[k + 2] * y[k + 2];
        s3 += x[k + 3] * y[k + 3];
    }
    for (; k < last; k++) s0 += x[k] * y[k];
    return (s0 + s1) + (s2 + s3);
}

// y[k] += f x[k] over first <= k < last.
static void axpy(double f, const double *x, double *y, int first, int last)
{
    for (int k = first; k < last; k++) y[k] += f * x[k];
}

// Factors row i; d receives G(i, f(i)..i-1) and the pivot D(i).
static void factor_row(int i, double *a, const size_t *add, double *d)
{
    double *row = rowbase(a, add, i);
    const int fi = firstcol(add, i);
    for (int j = fi; j < i; j++) {
        const double *rj = rowbase(a, add, j);
        d[j] = row[j] - dot(d, rj, max_int(fi, firstcol(add, j)), j);
        row[j] = d[j] * rj[j];
    }
    d[i] = row[i] - dot(d, row, fi, i);
}

// Rows before end of b become L^-1 b, those before nscaled D^-1 L^-1 b: m numbers a row.
static void forward(int m, const double *a, const size_t *add, double *b, int end, int nscaled)
{
    const size_t width = (size_t)m;
    for (int i = 0; i < end; i++) {
        const double *row = rowbase(a, add, i);
        const int fi = firstcol(add, i);
        double *bi = b + i * width;
        if (m == 1)
            bi[0] -= dot(row, b, fi, i);
        else
            for (int k = fi; k < i; k++)
                if (row[k] != 0.0) axpy(-row[k], b + k * width, bi, 0, m);
    }
    for (int i = 0; i < nscaled; i++)
        for (int c = 0; c < m; c++) b[i * width + c] *= rowbase(a, add, i)[i];
}

// b becomes L^-T b.
static void backward(int n, int m, const double *a, const size_t *add, double *b)
{
    const size_t width = (size_t)m;
    for (int i = n - 1; i >= 0; i--) {
        const double *row = rowbase(a, add, i), *bi = b + i * width;
        const int fi = firstcol(add, i);
        if (m == 1)
            axpy(-bi[0], row, b, fi, i);
        else
            for (int k = fi; k < i; k++)
                if (row[k] != 0.0) axpy(-row[k], bi, b + k * width, 0, m);
    }
}

// Row by row, the right-hand sides along with the rows.
static int smallmat(int n, int m, double *a, const size_t *add, double *b, double *d)
{
    const double eps = pivotlimit(n, a, add);
    const size_t width = (size_t)m;
    for (int i = 0; i < n; i++) {
        double *row = rowbase(a, add, i), *bi = b + i * width;
        factor_row(i, a, add, d);
        for (int j = firstcol(add, i); j < i; j++)
            if (d[j] != 0.0) axpy(-d[j], b + j * width, bi, 0, m);
        if (fabs(d[i]) < eps) return i + 1;
        row[i] = 1.0 / d[i];
        for (int c = 0; c < m; c++) bi[c] /= d[i];
    }
    backward(n, m, a, add, b);
    return 0;
}

long long solvespace(int n, const size_t *add) { return n + (n > SMALL_ORDER ? factorspace(n, add) : 0); }

long long invertspace(int n) { return n > SMALL_ORDER ? inversespace(n) : 0; }

int cvec(int n, double *a, const size_t *add, double *b, double *d) { return cmat(n, 1, a, add, b, d); }

int cmat(int n, int m, double *a, const size_t *add, double *b, double *d)
{
    if (n <= SMALL_ORDER) return smallmat(n, m, a, add, b, d);
    const int failed = factorprofile(n, a, add, d, d + n, besttiles());
    forward(m, a, add, b, failed ? failed : n, failed ? failed - 1 : n);
    if (failed == 0) backward(n, m, a, add, b);
    return failed;
}

int cinverse(int n, double *a, const size_t *add, double *inv, double *d, double *space)
{
    if (n <= SMALL_ORDER) {
        for (int i = 0; i < n; i++) inv[(size_t)i * n + i] = 1.0;
        return smallmat(n, n, a, add, inv, d);
    }
    const int failed = factorprofile(n, a, add, d, d + n, besttiles());
    if (failed == 0) inverseprofile(n, a, add, inv, space, besttiles());
    return failed;
}

} // namespace vornengine
