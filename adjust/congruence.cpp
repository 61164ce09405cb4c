#include "adjust/congruence.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "adjust/factor.h"
#include "adjust/inverse.h"
#include "adjust/symbolic.h"

namespace vornadjust {

namespace {

// Eigenvalues of W_ii beside those with all points; what is below is rounding of an inverse.
constexpr double no_information = 1e-9;
// Singular values of G over some points: below it they do not close a motion.
constexpr double no_hold = 1e-6;
// Pivots of full matrices beside their diagonal elements: below it an unknown is a combination of the others.
constexpr double no_pivot = 1e-12;

SymmetricMatrix full_pattern(int n)
{
    SymmetricMatrix a;
    a.n = n;
    a.start.assign(1, 0);
    a.row.reserve((std::size_t)n * (n + 1) / 2);
    for (int j = 0; j < n; j++) {
        for (int i = j; i < n; i++) a.row.push_back(i);
        a.start.push_back((std::int64_t)a.row.size());
    }
    return a;
}

// Q + k H H^T, its order n m.
std::vector<double> closed_cofactors(const Epochs &e)
{
    const std::size_t n = e.n(), m = e.values.size() - 1, size = n * m;
    std::vector<double> q(size * size), gg(n * n, 0.0);
    for (int d = 0; d < e.motions.cols; d++)
        for (std::size_t i = 0; i < n; i++)
            for (std::size_t j = 0; j < n; j++) gg[i * n + j] += e.motions((int)i, d) * e.motions((int)j, d);
    double k = 0.0;
    for (const EpochValues &v : e.values)
        for (std::size_t i = 0; i < n; i++) k += v.q[i * n + i] / (double)n;
    for (std::size_t a = 0; a < m; a++)
        for (std::size_t b = 0; b < m; b++)
            for (std::size_t i = 0; i < n; i++)
                for (std::size_t j = 0; j < n; j++) {
                    double &x = q[(a * n + i) * size + b * n + j];
                    x = e.values[0].q[i * n + j];
                    if (a == b) x += e.values[a + 1].q[i * n + j] + k * gg[i * n + j];
                }
    return q;
}

// H of one epoch and motion times a matrix: column of P H, for epoch block `a` and motion d.
std::vector<double> times_motion(const Epochs &e, const std::vector<double> &p, int a, int d)
{
    const std::size_t n = e.n(), size = n * (e.values.size() - 1);
    std::vector<double> x(size);
    for (std::size_t i = 0; i < size; i++) {
        double sum = 0.0;
        for (std::size_t j = 0; j < n; j++) sum += p[i * size + a * n + j] * e.motions((int)j, d);
        x[i] = sum;
    }
    return x;
}

// W out of P, in place.
void project_out_motions(const Epochs &e, std::vector<double> *p)
{
    const std::size_t n = e.n(), m = e.values.size() - 1, size = n * m, d = e.motions.cols, c = m * d;
    if (c == 0) return;
    std::vector<std::vector<double>> ph;
    for (std::size_t a = 0; a < m; a++)
        for (std::size_t k = 0; k < d; k++) ph.push_back(times_motion(e, *p, (int)a, (int)k));
    std::vector<double> hph(c * c);
    for (std::size_t i = 0; i < c; i++)
        for (std::size_t j = 0; j < c; j++) {
            double sum = 0.0;
            for (std::size_t k = 0; k < n; k++) sum += e.motions((int)k, (int)(i % d)) * ph[j][(i / d) * n + k];
            hph[i * c + j] = sum;
        }
    if (!invert_full((int)c, &hph)) return;
    std::vector<double> row(size);
    for (std::size_t i = 0; i < c; i++) {
        std::fill(row.begin(), row.end(), 0.0); // (H^T P H)^-1 H^T P, row i
        for (std::size_t j = 0; j < c; j++)
            for (std::size_t k = 0; k < size; k++) row[k] += hph[i * c + j] * ph[j][k];
        for (std::size_t r = 0; r < size; r++)
            for (std::size_t k = 0; k < size; k++) (*p)[r * size + k] -= ph[i][r] * row[k];
    }
}

} // namespace

bool invert_full(int n, std::vector<double> *a)
{
    if (n == 0) return true;
    SymmetricMatrix s = full_pattern(n);
    s.value.reserve(s.row.size());
    for (int j = 0; j < n; j++)
        for (int i = j; i < n; i++) s.value.push_back((*a)[(std::size_t)i * n + j]);
    std::vector<int> order(n);
    std::iota(order.begin(), order.end(), 0);
    const Symbolic symbolic = analyse(s, order);
    Factor factor;
    Inverse inverse;
    FactorOptions options;
    options.least_pivot = no_pivot;
    if (!factorize(s, symbolic, factor, options) || !invert(symbolic, factor, inverse)) return false;
    for (int j = 0; j < n; j++)
        for (int i = j; i < n; i++)
            (*a)[(std::size_t)i * n + j] = (*a)[(std::size_t)j * n + i] = *element(symbolic, inverse, i, j);
    return true;
}

Congruence::Congruence(const Epochs &e) : first(e.first), n(e.n()), m((int)e.values.size() - 1), in(e.points(), 1)
{
    const std::size_t size = (std::size_t)n * m;
    w = closed_cofactors(e);
    is_good = invert_full((int)size, &w);
    if (!is_good) return;
    for (int p = 0; p < e.points(); p++) {
        double most = 0.0;
        for (const int i : places(p)) most = std::fmax(most, w[i * size + i]);
        largest_of.push_back(most);
    }
    project_out_motions(e, &w);
    wy.assign(size, 0.0);
    for (std::size_t i = 0; i < size; i++)
        for (std::size_t j = 0; j < size; j++)
            wy[i] += w[i * size + j] * (e.values[j / n + 1].x[j % n] - e.values[0].x[j % n]);
    for (std::size_t i = 0; i < size; i++) total.q += wy[i] * (e.values[i / n + 1].x[i % n] - e.values[0].x[i % n]);
    total.h = m * (n - e.motions.cols);
}

std::vector<int> Congruence::places(int point) const
{
    std::vector<int> at;
    for (int e = 0; e < m; e++)
        for (int i = first[point]; i < first[point + 1]; i++) at.push_back(e * n + i);
    return at;
}

// W_ii^+ and its rank.
Dense Congruence::pseudo_inverse(int point, const std::vector<int> &at, int *rank) const
{
    const int k = (int)at.size();
    const std::size_t size = (std::size_t)n * m;
    Dense block(k, k), out(k, k);
    for (int i = 0; i < k; i++)
        for (int j = 0; j < k; j++) block(i, j) = w[at[i] * size + at[j]];
    const SmallSvd s = small_svd(block);
    *rank = count_from(s.s, no_information * largest_of[point]);
    for (int c = 0; c < *rank; c++)
        for (int i = 0; i < k; i++)
            for (int j = 0; j < k; j++) out(i, j) += s.v(i, c) * s.u(j, c) / s.s[c];
    return out;
}

Squares Congruence::share(int point) const
{
    Squares s;
    const std::vector<int> at = places(point);
    const Dense inverse = pseudo_inverse(point, at, &s.h);
    for (std::size_t i = 0; i < at.size(); i++)
        for (std::size_t j = 0; j < at.size(); j++) s.q += wy[at[i]] * inverse((int)i, (int)j) * wy[at[j]];
    return s;
}

void Congruence::remove(int point)
{
    const Squares s = share(point);
    const std::vector<int> at = places(point);
    const int k = (int)at.size();
    int rank;
    const Dense inverse = pseudo_inverse(point, at, &rank);
    const std::size_t size = (std::size_t)n * m;
    std::vector<std::vector<double>> own(k, std::vector<double>(size)), part(k, std::vector<double>(size, 0.0));
    for (int i = 0; i < k; i++) std::copy_n(&w[at[i] * size], size, own[i].begin());
    std::vector<double> moved(k, 0.0); // W_ii^+ (W y)_i
    for (int i = 0; i < k; i++)
        for (int j = 0; j < k; j++) {
            moved[i] += inverse(i, j) * wy[at[j]];
            for (std::size_t c = 0; c < size; c++) part[i][c] += inverse(i, j) * own[j][c];
        }
    for (int i = 0; i < k; i++)
        for (std::size_t r = 0; r < size; r++) {
            wy[r] -= own[i][r] * moved[i];
            double *row = &w[r * size];
            for (std::size_t c = 0; c < size; c++) row[c] -= own[i][r] * part[i][c];
        }
    for (const int i : at) {
        wy[i] = 0.0;
        for (std::size_t c = 0; c < size; c++) w[i * size + c] = w[c * size + i] = 0.0;
    }
    in[point] = 0;
    total.q -= s.q, total.h -= s.h;
}

StableDatum stable_datum(const Epochs &e, const std::vector<char> &stayed)
{
    StableDatum out;
    out.motions = e.motions;
    const int n = e.n(), d = e.motions.cols;
    Dense gs(n, d);
    for (int p = 0; p < e.points(); p++)
        for (int i = e.first[p]; i < e.first[p + 1] && stayed[p]; i++)
            for (int j = 0; j < d; j++) gs(i, j) = e.motions(i, j);
    const SmallSvd s = small_svd(gs);
    out.carried = count_from(s.s, no_hold) == d;
    if (!out.carried) return out;
    out.closing = Dense(d, n); // pseudo-inverse of G_s
    for (int c = 0; c < d; c++)
        for (int j = 0; j < d; j++)
            for (int i = 0; i < n; i++) out.closing(j, i) += s.v(j, c) * s.u(i, c) / s.s[c];
    return out;
}

std::vector<std::vector<double>> transformed_blocks(const Epochs &e, const StableDatum &datum,
                                                    const std::vector<double> &q)
{
    const int n = e.n(), d = datum.motions.cols;
    Dense qc(n, d), cqc(d, d); // Q C^T, C Q C^T
    for (int i = 0; i < n; i++)
        for (int c = 0; c < d; c++)
            for (int j = 0; j < n; j++) qc(i, c) += q[(std::size_t)i * n + j] * datum.closing(c, j);
    for (int a = 0; a < d; a++)
        for (int b = 0; b < d; b++)
            for (int j = 0; j < n; j++) cqc(a, b) += datum.closing(a, j) * qc(j, b);
    std::vector<std::vector<double>> blocks;
    for (int p = 0; p < e.points(); p++) {
        std::vector<double> block;
        for (int i = e.first[p]; i < e.first[p + 1]; i++)
            for (int j = e.first[p]; j < e.first[p + 1]; j++) {
                double x = q[(std::size_t)i * n + j];
                for (int a = 0; a < d; a++) {
                    x -= datum.motions(i, a) * qc(j, a) + qc(i, a) * datum.motions(j, a);
                    for (int b = 0; b < d; b++) x += datum.motions(i, a) * cqc(a, b) * datum.motions(j, b);
                }
                block.push_back(x);
            }
        blocks.push_back(block);
    }
    return blocks;
}

std::vector<double> transformed(const StableDatum &datum, std::vector<double> y)
{
    for (int a = 0; a < datum.motions.cols; a++) {
        double t = 0.0;
        for (std::size_t i = 0; i < y.size(); i++) t += datum.closing(a, (int)i) * y[i];
        for (std::size_t i = 0; i < y.size(); i++) y[i] -= t * datum.motions((int)i, a);
    }
    return y;
}

} // namespace vornadjust
