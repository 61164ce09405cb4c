// A plain solution of  minimise sum |A x - b| + g x  under  D x = 0  to compare with: the linear
// programme in full, with all columns, by Bland's rule in extended precision.

#ifndef TESTS_LEASTABS_H
#define TESTS_LEASTABS_H

#include <math.h>

#include <utility>
#include <vector>

typedef std::vector<std::vector<long double>> LongMatrix;

struct LeastAbs {
    bool solved = false;
    long double sum = 0.0L;   // least sum of absolute values
    long double dual = 0.0L;  // value b'y of the multipliers |y| <= 1, Z'(A'y - g) = 0: equal at the optimum
    long double fault = 0.0L; // by how much the multipliers miss their conditions
};

namespace leastabs {

inline void subtract(std::vector<long double> &to, const std::vector<long double> &from, long double f)
{
    for (size_t j = 0; j < to.size(); j++) to[j] -= f * from[j];
}

// Columns that span D x = 0, by elimination with the largest pivot.
inline LongMatrix null_space(LongMatrix d, size_t n)
{
    std::vector<int> pivot_of(n, -1);
    size_t rank = 0;
    for (std::vector<long double> &row : d) {
        long double largest = 0.0L;
        for (const long double x : row) largest = fmaxl(largest, fabsl(x));
        if (largest > 0.0L)
            for (long double &x : row) x /= largest;
    }
    for (; rank < d.size(); rank++) {
        size_t row = rank, col = 0;
        long double best = 1e-12L;
        for (size_t i = rank; i < d.size(); i++)
            for (size_t j = 0; j < n; j++)
                if (fabsl(d[i][j]) > best) best = fabsl(d[i][j]), row = i, col = j;
        if (best == 1e-12L) break;
        std::swap(d[row], d[rank]);
        const long double p = d[rank][col];
        for (long double &x : d[rank]) x /= p;
        for (size_t i = 0; i < d.size(); i++)
            if (i != rank) subtract(d[i], d[rank], d[i][col]);
        pivot_of[col] = (int)rank;
    }
    LongMatrix z;
    for (size_t j = 0; j < n; j++) {
        if (pivot_of[j] >= 0) continue;
        std::vector<long double> v(n, 0.0L);
        v[j] = 1.0L;
        for (size_t c = 0; c < n; c++)
            if (pivot_of[c] >= 0) v[c] = -d[(size_t)pivot_of[c]][j];
        z.push_back(v);
    }
    return z;
}

// Bland's rule on rows with a basis of unit columns; the last entry of a row is its right-hand
// side, cost is the line of reduced costs.
inline bool bland(LongMatrix &t, std::vector<long double> &cost, std::vector<size_t> &basis)
{
    const size_t n = cost.size() - 1;
    const long double tiny = 1e-11L; // columns are scaled to a largest element of 1
    for (int step = 0; step < 200000; step++) {
        size_t col = 0;
        while (col < n && cost[col] >= -tiny) col++;
        if (col == n) return true;
        size_t row = t.size();
        long double best = 0.0L;
        for (size_t i = 0; i < t.size(); i++) {
            if (t[i][col] <= tiny) continue;
            const long double ratio = t[i][n] / t[i][col];
            if (row < t.size() && (ratio > best || (ratio == best && basis[i] > basis[row]))) continue;
            row = i;
            best = ratio;
        }
        if (row == t.size()) return false;
        const long double p = t[row][col];
        for (long double &x : t[row]) x /= p;
        for (size_t i = 0; i < t.size(); i++)
            if (i != row && t[i][col] != 0.0L) subtract(t[i], t[row], t[i][col]);
        subtract(cost, t[row], cost[col]);
        basis[row] = col;
    }
    return false;
}

} // namespace leastabs

// Columns of the programme: z+, z- of the free parameters x = Z z, then r+, r- of the residuals
// A Z z - r+ + r- = b, rows turned so that b >= 0 and r- (or r+) is basic.
inline LeastAbs least_abs(const LongMatrix &a, const std::vector<long double> &b, const LongMatrix &d,
                          const std::vector<long double> &g)
{
    const size_t nunk = g.size();
    const LongMatrix z = leastabs::null_space(d, nunk);
    const size_t m = a.size(), k = z.size(), n = 2 * k + 2 * m;
    LongMatrix az(m, std::vector<long double>(k, 0.0L));
    std::vector<long double> scale(k, 0.0L);
    for (size_t i = 0; i < m; i++)
        for (size_t c = 0; c < k; c++) {
            for (size_t j = 0; j < nunk; j++) az[i][c] += a[i][j] * z[c][j];
            if (fabsl(az[i][c]) > scale[c]) scale[c] = fabsl(az[i][c]);
        }
    LongMatrix t(m, std::vector<long double>(n + 1, 0.0L));
    std::vector<long double> cost(n + 1, 0.0L), sign(m);
    std::vector<size_t> basis(m);
    for (size_t i = 0; i < m; i++) {
        sign[i] = b[i] < 0.0L ? -1.0L : 1.0L;
        for (size_t c = 0; c < k; c++) {
            if (scale[c] > 0.0L) az[i][c] /= scale[c];
            t[i][c] = sign[i] * az[i][c];
            t[i][k + c] = -t[i][c];
        }
        t[i][2 * k + i] = -sign[i];
        t[i][2 * k + m + i] = sign[i];
        t[i][n] = sign[i] * b[i];
        basis[i] = sign[i] > 0.0L ? 2 * k + m + i : 2 * k + i;
    }
    std::vector<long double> pull(k, 0.0L);
    for (size_t c = 0; c < k; c++) {
        for (size_t j = 0; j < nunk; j++) pull[c] -= g[j] * z[c][j];
        if (scale[c] > 0.0L) pull[c] /= scale[c];
        cost[c] = -pull[c];
        cost[k + c] = pull[c];
    }
    for (size_t j = 2 * k; j < n; j++) cost[j] = 1.0L;
    for (size_t i = 0; i < m; i++) leastabs::subtract(cost, t[i], 1.0L);

    LeastAbs result;
    result.solved = leastabs::bland(t, cost, basis);
    result.sum = -cost[n];
    for (size_t i = 0; i < m; i++) {
        const long double y = cost[2 * k + i] - 1.0L; // reduced cost of r+ is 1 + y
        result.dual += y * b[i];
        if (fabsl(y) - 1.0L > result.fault) result.fault = fabsl(y) - 1.0L;
        for (size_t c = 0; c < k; c++) pull[c] += y * az[i][c];
    }
    for (const long double p : pull)
        if (fabsl(p) > result.fault) result.fault = fabsl(p);
    return result;
}

#endif
