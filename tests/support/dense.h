// A plain inverse to compare with.

#ifndef TESTS_DENSE_H
#define TESTS_DENSE_H

#include <math.h>

#include <utility>
#include <vector>

// Inverse of a full matrix of order n, row by row, by elimination with the largest pivot, in extended precision.
inline std::vector<long double> dense_inverse(std::vector<long double> a, int n)
{
    std::vector<long double> b(n * n, 0.0L);
    for (int i = 0; i < n; i++) b[i * n + i] = 1.0L;
    for (int c = 0; c < n; c++) {
        int p = c;
        for (int r = c + 1; r < n; r++)
            if (fabsl(a[r * n + c]) > fabsl(a[p * n + c])) p = r;
        for (int k = 0; k < n; k++) {
            std::swap(a[p * n + k], a[c * n + k]);
            std::swap(b[p * n + k], b[c * n + k]);
        }
        const long double d = a[c * n + c];
        for (int k = 0; k < n; k++) {
            a[c * n + k] /= d;
            b[c * n + k] /= d;
        }
        for (int r = 0; r < n; r++) {
            if (r == c) continue;
            const long double f = a[r * n + c];
            for (int k = 0; k < n; k++) {
                a[r * n + k] -= f * a[c * n + k];
                b[r * n + k] -= f * b[c * n + k];
            }
        }
    }
    return b;
}

#endif
