// A least-squares solution to compare with: dense, in extended precision, rank by singular values.

#ifndef TESTS_ADJUST_DENSE_SOLUTION_H
#define TESTS_ADJUST_DENSE_SOLUTION_H

#include <cmath>
#include <vector>

#include "adjust/linear.h"
#include "adjust/model.h"

namespace vornadjust {

using Real = long double;

// By rows.
struct Matrix {
    int rows = 0, cols = 0;
    std::vector<Real> a;
    Matrix() = default;
    Matrix(int m, int n) : rows(m), cols(n), a((size_t)m * n, 0.0L) {}
    Real &operator()(int i, int j) { return a[(size_t)i * cols + j]; }
    Real operator()(int i, int j) const { return a[(size_t)i * cols + j]; }
};

inline Matrix transposed(const Matrix &x)
{
    Matrix y(x.cols, x.rows);
    for (int i = 0; i < x.rows; i++)
        for (int j = 0; j < x.cols; j++) y(j, i) = x(i, j);
    return y;
}

inline Matrix operator*(const Matrix &x, const Matrix &y)
{
    Matrix z(x.rows, y.cols);
    for (int i = 0; i < x.rows; i++)
        for (int k = 0; k < x.cols; k++)
            for (int j = 0; j < y.cols; j++) z(i, j) += x(i, k) * y(k, j);
    return z;
}

inline Matrix operator-(const Matrix &x, const Matrix &y)
{
    Matrix z = x;
    for (size_t i = 0; i < z.a.size(); i++) z.a[i] -= y.a[i];
    return z;
}

inline Matrix identity(int n)
{
    Matrix x(n, n);
    for (int i = 0; i < n; i++) x(i, i) = 1.0L;
    return x;
}

// A = U diag(s) V^T by one-sided Jacobi turns; U s in us.
struct Svd {
    Matrix us, v;
    std::vector<Real> s;
};

inline Svd svd(Matrix a)
{
    Svd r;
    r.v = identity(a.cols);
    for (int sweep = 0; sweep < 60; sweep++) {
        bool turned = false;
        for (int p = 0; p < a.cols; p++)
            for (int q = p + 1; q < a.cols; q++) {
                Real pp = 0, qq = 0, pq = 0;
                for (int i = 0; i < a.rows; i++)
                    pp += a(i, p) * a(i, p), qq += a(i, q) * a(i, q), pq += a(i, p) * a(i, q);
                if (std::fabs(pq) <= 1e-17L * std::sqrt(pp * qq) || pq == 0) continue;
                turned = true;
                const Real z = (qq - pp) / (2 * pq), t = (z < 0 ? -1 : 1) / (std::fabs(z) + std::sqrt(1 + z * z));
                const Real c = 1 / std::sqrt(1 + t * t), s = c * t;
                for (Matrix *m : {&a, &r.v})
                    for (int i = 0; i < m->rows; i++) {
                        const Real x = (*m)(i, p), y = (*m)(i, q);
                        (*m)(i, p) = c * x - s * y, (*m)(i, q) = s * x + c * y;
                    }
            }
        if (!turned) break;
    }
    r.us = a;
    for (int j = 0; j < a.cols; j++) {
        Real sum = 0;
        for (int i = 0; i < a.rows; i++) sum += a(i, j) * a(i, j);
        r.s.push_back(std::sqrt(sum));
    }
    return r;
}

// Symmetric positive definite inverse by elimination.
inline Matrix inverse(Matrix a)
{
    const int n = a.rows;
    Matrix b = identity(n);
    for (int c = 0; c < n; c++) {
        int p = c;
        for (int i = c; i < n; i++)
            if (std::fabs(a(i, c)) > std::fabs(a(p, c))) p = i;
        for (int k = 0; k < n; k++) std::swap(a(p, k), a(c, k)), std::swap(b(p, k), b(c, k));
        const Real d = a(c, c);
        for (int k = 0; k < n; k++) a(c, k) /= d, b(c, k) /= d;
        for (int i = 0; i < n; i++) {
            const Real f = a(i, c);
            if (i == c || f == 0) continue;
            for (int k = 0; k < n; k++) a(i, k) -= f * a(c, k), b(i, k) -= f * b(c, k);
        }
    }
    return b;
}

// A, P and misclosures of a model, estimated unknowns only.
struct DenseSystem {
    Matrix a, p, w;
    std::vector<int> unknown;                   // of each column
    std::vector<std::pair<int, int>> component; // of each row: observation, component
};

inline DenseSystem dense_system(const Model &m, bool invariant)
{
    DenseSystem s;
    std::vector<int> column(m.value.size(), -1), row_group, row_place;
    std::vector<char> in_a_row(m.value.size(), 0);
    for (const Observation &o : m.observations) {
        int seen[most_unknowns];
        for (int k = seen_unknowns(m, o, seen) - 1; o.use && k >= 0; k--) in_a_row[seen[k]] = 1;
    }
    for (int u = 0; u < m.n_unknowns(); u++)
        if (m.estimated(u) && (u < 3 * m.n_points || in_a_row[u]))
            column[u] = (int)s.unknown.size(), s.unknown.push_back(u);
    std::vector<std::vector<Real>> rows;
    std::vector<Real> misclosures, sigmas;
    for (size_t i = 0; i < m.observations.size(); i++) {
        const Observation &o = m.observations[i];
        if (!o.use) continue;
        Linear l;
        linearize(m, o, invariant, &l);
        if (!l.usable) continue;
        int seen[most_unknowns];
        const int n = seen_unknowns(m, o, seen);
        for (int c = 0; c < components(o.kind, m.frame.space); c++) {
            rows.emplace_back(s.unknown.size(), 0.0L);
            for (int k = 0; k < n; k++)
                if (column[seen[k]] >= 0) rows.back()[column[seen[k]]] += l.slope[c][k];
            Real w = o.value[c] - l.value[c];
            if (o.kind == Kind::direction || o.kind == Kind::angle || o.kind == Kind::azimuth ||
                (o.kind == Kind::unknown && m.meaning[o.unknown] == Meaning::angle))
                w = std::remainder((double)w, 6.283185307179586);
            misclosures.push_back(w);
            sigmas.push_back(o.sigma[c] / o.factor);
            row_group.push_back(o.group);
            row_place.push_back(o.place + c);
            s.component.push_back({(int)i, c});
        }
    }
    const int nr = (int)rows.size(), nc = (int)s.unknown.size();
    s.a = Matrix(nr, nc), s.w = Matrix(nr, 1);
    Matrix covariance(nr, nr);
    for (int i = 0; i < nr; i++) {
        for (int j = 0; j < nc; j++) s.a(i, j) = rows[i][j];
        s.w(i, 0) = misclosures[i];
        for (int j = 0; j < nr; j++) {
            if (row_group[i] < 0 || row_group[i] != row_group[j]) continue;
            const Group &g = m.groups[row_group[i]];
            const double fi = m.observations[s.component[i].first].factor,
                         fj = m.observations[s.component[j].first].factor;
            covariance(i, j) = m.covariance[g.first + (size_t)row_place[i] * g.size + row_place[j]] / fi / fj;
        }
        if (row_group[i] < 0) covariance(i, i) = sigmas[i] * sigmas[i];
    }
    s.p = inverse(covariance);
    return s;
}

struct DenseSolution {
    DenseSystem system;         // at the last values
    std::vector<double> x;      // [unknowns of the model]
    Matrix q;                   // cofactors, columns of the system
    std::vector<Real> residual; // [rows]
    Matrix qvv;                 // cofactors of residuals
    int open = 0;               // directions without say
    int dof = 0;
    Real squares = 0;
};

// Square root R of a positive definite matrix with R^T R = P.
inline Matrix upper_root(const Matrix &p)
{
    Matrix r(p.rows, p.rows);
    for (int i = 0; i < p.rows; i++)
        for (int j = i; j < p.rows; j++) {
            Real sum = p(i, j);
            for (int k = 0; k < i; k++) sum -= r(k, i) * r(k, j);
            r(i, j) = i == j ? std::sqrt(sum) : sum / r(i, i);
        }
    return r;
}

// Pseudo-solution: dx, cofactors and null vectors of scaled columns.
struct Pseudo {
    Matrix dx, q, z;
};

inline Pseudo pseudo(const DenseSystem &s)
{
    const Matrix root = upper_root(s.p), b = root * s.w;
    Matrix a = root * s.a;
    std::vector<Real> scale(a.cols, 1.0L);
    for (int j = 0; j < a.cols; j++) {
        Real sum = 0;
        for (int i = 0; i < a.rows; i++) sum += a(i, j) * a(i, j);
        if (sum > 0) scale[j] = 1 / std::sqrt(sum);
        for (int i = 0; i < a.rows; i++) a(i, j) *= scale[j];
    }
    const Svd d = svd(a);
    Real largest = 0;
    for (Real v : d.s) largest = std::fmax(largest, v);
    Pseudo r;
    r.dx = Matrix(a.cols, 1), r.q = Matrix(a.cols, a.cols);
    std::vector<int> null;
    for (int k = 0; k < a.cols; k++) {
        if (d.s[k] < 1e-11L * largest) {
            null.push_back(k);
            continue;
        }
        Real along = 0;
        for (int i = 0; i < a.rows; i++) along += d.us(i, k) * b(i, 0);
        const Real s2 = d.s[k] * d.s[k];
        for (int i = 0; i < a.cols; i++) {
            r.dx(i, 0) += scale[i] * d.v(i, k) * along / s2;
            for (int j = 0; j < a.cols; j++) r.q(i, j) += scale[i] * scale[j] * d.v(i, k) * d.v(j, k) / s2;
        }
    }
    r.z = Matrix(a.cols, (int)null.size());
    for (size_t k = 0; k < null.size(); k++)
        for (int i = 0; i < a.cols; i++) r.z(i, (int)k) = scale[i] * d.v(i, null[k]);
    return r;
}

// Iterates to the end. Open directions Z are closed by  Z0^T S (x - x0) = 0,  Z0 those at the first values, S the
// coordinates with code datum.
inline DenseSolution dense_solution(Model m, bool invariant, int steps = 40)
{
    DenseSolution r;
    m.value = m.start;
    Matrix b0;
    for (int iteration = 0; iteration == 0 || iteration < steps; iteration++) {
        r.system = dense_system(m, invariant);
        const Pseudo s = pseudo(r.system);
        const int n = (int)r.system.unknown.size();
        Matrix dx = s.dx, t = identity(n);
        if (iteration == 0) {
            b0 = transposed(s.z);
            for (int j = 0; j < n; j++)
                for (int k = 0; k < b0.rows && m.code[r.system.unknown[j]] != Code::datum; k++) b0(k, j) = 0;
        }
        r.open = s.z.cols;
        if (r.open > 0) {
            Matrix from_start = dx;
            for (int j = 0; j < n; j++) from_start(j, 0) += m.value[r.system.unknown[j]] - m.start[r.system.unknown[j]];
            const Matrix c = s.z * inverse(b0 * s.z) * b0;
            dx = dx - c * from_start;
            t = t - c;
        }
        Real largest = 0;
        for (int j = 0; j < n; j++) {
            if (steps > 0) m.value[r.system.unknown[j]] += (double)dx(j, 0);
            largest = std::fmax(largest, std::fabs(dx(j, 0)) / std::sqrt(s.q(j, j))); // of a standard deviation
        }
        r.q = t * s.q * transposed(t);
        if (largest < 1e-8L) break;
    }
    r.x = m.value;
    r.system = dense_system(m, invariant);
    const Pseudo last = pseudo(r.system);
    Matrix t = identity(last.q.rows);
    if (r.open > 0) t = t - last.z * inverse(b0 * last.z) * b0;
    r.q = t * last.q * transposed(t);
    const Matrix &w = r.system.w, pw = r.system.p * w;
    for (int i = 0; i < w.rows; i++) r.residual.push_back(w(i, 0)), r.squares += w(i, 0) * pw(i, 0);
    r.qvv = inverse(r.system.p) - r.system.a * last.q * transposed(r.system.a);
    r.dof = w.rows - (r.system.a.cols - r.open);
    return r;
}

} // namespace vornadjust

#endif
