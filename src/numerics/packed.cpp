// Inverse of a symmetric matrix in packed storage, by A = L D L' with a unit lower L.
// All three stages work in place: first D stands on the diagonal and L below it, then
// their inverses, then  inverse(A) = inverse(L)' inverse(D) inverse(L).

#include "numerics/packed.h"

namespace vornengine {

// D(i) = a(i,i) - sum L(i,k)^2 D(k),  L(j,i) = (a(j,i) - sum L(i,k) L(j,k) D(k)) / D(i), k < i.
static void factor(double *a, size_t n)
{
    for (size_t i = 0; i < n; i++) {
        double *ri = a + packed_place(i, 0);
        for (size_t k = 0; k < i; k++) ri[i] -= ri[k] * ri[k] * a[packed_place(k, k)];
        for (size_t j = i + 1; j < n; j++) {
            double *rj = a + packed_place(j, 0);
            for (size_t k = 0; k < i; k++) rj[i] -= ri[k] * rj[k] * a[packed_place(k, k)];
            if (ri[i] != 0.0) rj[i] /= ri[i];
        }
    }
}

// D becomes 1 / D and L its inverse, row by row from the last column of L to the first.
static void invert_factors(double *a, size_t n)
{
    for (size_t i = n; i-- > 0;) {
        double *d = a + packed_place(i, i);
        if (*d != 0.0) *d = 1.0 / *d;
        for (size_t j = n; j-- > i + 1;) {
            double *rj = a + packed_place(j, 0);
            for (size_t k = i + 1; k < j; k++) rj[i] += a[packed_place(k, i)] * rj[k];
            rj[i] = -rj[i];
        }
    }
}

// Entry (j,i) = sum over k >= j of L(k,i) L(k,j) D(k), with L(j,j) = 1.
static void multiply(double *a, size_t n)
{
    for (size_t i = 0; i < n; i++)
        for (size_t j = i; j < n; j++) {
            double s = a[packed_place(j, i)];
            if (j != i) s *= a[packed_place(j, j)];
            for (size_t k = j + 1; k < n; k++) {
                const double *rk = a + packed_place(k, 0);
                s += rk[i] * rk[j] * rk[k];
            }
            a[packed_place(j, i)] = s;
        }
}

void packinvert(double *a, int n)
{
    if (n < 1) return;
    factor(a, (size_t)n);
    invert_factors(a, (size_t)n);
    multiply(a, (size_t)n);
}

} // namespace vornengine
