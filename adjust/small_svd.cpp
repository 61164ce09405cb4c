// One-sided Jacobi singular values and Givens reduction of rows.

#include "adjust/small_svd.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>

namespace vornadjust {

namespace {

constexpr double eps = std::numeric_limits<double>::epsilon();
// Jacobi rotations converge quadratically; matrices of ten columns need about six rounds.
constexpr int most_rounds = 60;

double dot(const double *a, const double *b, int n) { return std::inner_product(a, a + n, b, 0.0); }

void rotate(double *a, double *b, int n, double c, double s)
{
    for (int i = 0; i < n; i++) {
        const double p = a[i], q = b[i];
        a[i] = c * p - s * q;
        b[i] = s * p + c * q;
    }
}

// Makes columns i and j of u orthogonal, v along; false when they were.
bool orthogonalise(Dense &u, Dense &v, int i, int j)
{
    const double aa = dot(u.col(i), u.col(i), u.rows), bb = dot(u.col(j), u.col(j), u.rows);
    const double ab = dot(u.col(i), u.col(j), u.rows);
    if (!(std::fabs(ab) > eps * std::sqrt(aa) * std::sqrt(bb))) return false;
    const double zeta = (bb - aa) / (2 * ab);
    const double t = std::copysign(1.0, zeta) / (std::fabs(zeta) + std::sqrt(1.0 + zeta * zeta));
    const double c = 1 / std::sqrt(1.0 + t * t), s = c * t;
    rotate(u.col(i), u.col(j), u.rows, c, s);
    rotate(v.col(i), v.col(j), v.rows, c, s);
    return true;
}

bool one_round(Dense &u, Dense &v)
{
    bool turned = false;
    for (int i = 0; i + 1 < u.cols; i++)
        for (int j = i + 1; j < u.cols; j++) turned |= orthogonalise(u, v, i, j);
    return turned;
}

Dense unit_matrix(int n)
{
    Dense e(n, n);
    for (int i = 0; i < n; i++) e(i, i) = 1;
    return e;
}

} // namespace

Dense product(const Dense &a, const Dense &b)
{
    Dense out(a.rows, b.cols);
    for (int j = 0; j < b.cols; j++)
        for (int k = 0; k < a.cols; k++)
            for (int i = 0; i < a.rows; i++) out(i, j) += a(i, k) * b(k, j);
    return out;
}

Dense column_range(const Dense &a, int first, int last)
{
    Dense out(a.rows, last - first);
    if (out.cols > 0) std::copy(a.col(first), a.col(first) + out.a.size(), out.a.begin());
    return out;
}

double largest(const double *x, int n)
{
    double most = 0;
    for (int i = 0; i < n; i++) most = std::max(most, std::fabs(x[i]));
    return most;
}

SmallSvd small_svd(Dense a)
{
    const int n = a.cols;
    // Squares of the entries must neither overflow nor vanish.
    const double size = largest(a.a.data(), static_cast<int>(a.a.size()));
    if (size > 0)
        for (double &x : a.a) x /= size;
    Dense v = unit_matrix(n);
    for (int round = 0; round < most_rounds && one_round(a, v); round++) {
    }

    std::vector<double> length(n);
    for (int j = 0; j < n; j++) length[j] = std::sqrt(dot(a.col(j), a.col(j), a.rows));
    std::vector<int> order(n);
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int i, int j) { return length[i] > length[j]; });

    SmallSvd out{std::vector<double>(n), Dense(a.rows, n), Dense(n, n)};
    for (int j = 0; j < n; j++) {
        const int k = order[j];
        out.s[j] = length[k] * size;
        std::copy(v.col(k), v.col(k) + n, out.v.col(j));
        if (length[k] > 0)
            std::transform(a.col(k), a.col(k) + a.rows, out.u.col(j), [&](double x) { return x / length[k]; });
    }
    return out;
}

int count_from(const std::vector<double> &s, double threshold)
{
    return static_cast<int>(std::count_if(s.begin(), s.end(), [&](double x) { return x >= threshold; }));
}

void Triangle::add(double *row)
{
    const int n = r.cols;
    for (int j = 0; j < n; j++) {
        if (row[j] == 0) continue;
        const double h = std::hypot(r(j, j), row[j]);
        const double c = r(j, j) / h, s = row[j] / h;
        for (int k = j; k < n; k++) {
            const double p = r(j, k), q = row[k];
            r(j, k) = c * p + s * q;
            row[k] = c * q - s * p;
        }
    }
}

Triangle triangle_of(const Dense &a)
{
    Triangle out(a.cols);
    std::vector<double> row(a.cols);
    for (int i = 0; i < a.rows; i++) {
        for (int j = 0; j < a.cols; j++) row[j] = a(i, j);
        out.add(row.data());
    }
    return out;
}

} // namespace vornadjust
