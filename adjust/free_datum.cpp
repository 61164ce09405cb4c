#include "adjust/free_datum.h"

#include <algorithm>
#include <cmath>

namespace vornadjust {

namespace {

double dot(int n, const double *x, const double *y)
{
    double sum = 0.0;
    for (int j = 0; j < n; j++) sum += x[j] * y[j];
    return sum;
}

// Inverse of a small matrix (d x d by rows), d at most 7, by elimination with the largest pivot.
std::vector<double> small_inverse(int d, std::vector<double> a)
{
    std::vector<double> b(a.size(), 0.0);
    for (int i = 0; i < d; i++) b[i * d + i] = 1.0;
    for (int c = 0; c < d; c++) {
        int p = c;
        for (int i = c; i < d; i++)
            if (std::fabs(a[i * d + c]) > std::fabs(a[p * d + c])) p = i;
        for (int k = 0; k < d; k++) {
            std::swap(a[p * d + k], a[c * d + k]);
            std::swap(b[p * d + k], b[c * d + k]);
        }
        const double pivot = a[c * d + c];
        for (int k = 0; k < d; k++) a[c * d + k] /= pivot, b[c * d + k] /= pivot;
        for (int i = 0; i < d; i++) {
            const double f = a[i * d + c];
            for (int k = 0; k < d && i != c; k++) a[i * d + k] -= f * a[c * d + k], b[i * d + k] -= f * b[c * d + k];
        }
    }
    return b;
}

// Columns with the largest pivots of Gauss elimination of the motions, coordinates only.
std::vector<int> largest_pivots(const Model &model, const Columns &columns, int open, std::vector<double> g)
{
    const int n = columns.count();
    std::vector<int> pivots;
    for (int step = 0; step < open; step++) {
        int best_k = step, best_j = -1;
        double best = 0.0;
        for (int k = step; k < open; k++)
            for (int j = 0; j < n && columns.unknown[j] < 3 * model.n_points; j++)
                if (std::fabs(g[(std::size_t)k * n + j]) > best)
                    best = std::fabs(g[(std::size_t)k * n + j]), best_k = k, best_j = j;
        if (best_j < 0) break;
        pivots.push_back(best_j);
        double *row = &g[(std::size_t)step * n];
        std::swap_ranges(row, row + n, &g[(std::size_t)best_k * n]);
        for (int k = step + 1; k < open; k++) {
            double *other = &g[(std::size_t)k * n];
            const double f = other[best_j] / row[best_j];
            for (int j = 0; j < n; j++) other[j] -= f * row[j];
            other[best_j] = 0.0;
        }
    }
    return pivots;
}

} // namespace

std::vector<int> set_datum(const Model &model, const Columns &columns, int open, const std::vector<double> &motion,
                           FreeDatum *datum)
{
    const int n = columns.count();
    datum->open = open;
    datum->n = n;
    datum->condition = motion;
    for (int k = 0; k < open; k++)
        for (int j = 0; j < n; j++)
            if (model.code[columns.unknown[j]] != Code::datum) datum->condition[(std::size_t)k * n + j] = 0.0;
    set_motion(motion, datum);
    return largest_pivots(model, columns, open, motion);
}

void set_motion(const std::vector<double> &motion, FreeDatum *datum)
{
    const int d = datum->open, n = datum->n;
    datum->motion = motion;
    std::vector<double> bg(d * d);
    for (int i = 0; i < d; i++)
        for (int k = 0; k < d; k++)
            bg[i * d + k] = dot(n, &datum->condition[(std::size_t)i * n], &motion[(std::size_t)k * n]);
    datum->closing = small_inverse(d, bg);
}

void transform(const FreeDatum &datum, const double *from_start, double *dx)
{
    const int d = datum.open, n = datum.n;
    std::vector<double> b(d);
    for (int k = 0; k < d; k++) {
        const double *condition = &datum.condition[(std::size_t)k * n];
        b[k] = dot(n, condition, dx) + dot(n, condition, from_start);
    }
    for (int k = 0; k < d; k++) {
        const double c = dot(d, &datum.closing[k * d], b.data()), *g = &datum.motion[(std::size_t)k * n];
        for (int j = 0; j < n; j++) dx[j] -= c * g[j];
    }
}

CofactorTransform cofactor_transform(const FreeDatum &datum, const System &system)
{
    const int d = datum.open, n = datum.n;
    CofactorTransform t;
    t.w.assign((std::size_t)d * n, 0.0);
    for (int k = 0; k < d; k++)
        for (int i = 0; i < d; i++)
            for (int j = 0; j < n; j++)
                t.w[(std::size_t)k * n + j] += datum.closing[k * d + i] * datum.condition[(std::size_t)i * n + j];
    const std::vector<double> c = t.w;
    for (int k = 0; k < d; k++)
        for (int h : system.held) t.w[(std::size_t)k * n + h] = 0.0;
    solve(system.symbolic, system.factor, d, t.w.data());
    t.cw.resize(d * d);
    for (int i = 0; i < d; i++)
        for (int k = 0; k < d; k++) t.cw[i * d + k] = dot(n, &c[(std::size_t)i * n], &t.w[(std::size_t)k * n]);
    return t;
}

double transformed(const FreeDatum &datum, const CofactorTransform &t, int i, int j, double q)
{
    const int d = datum.open;
    const std::size_t n = datum.n;
    for (int k = 0; k < d; k++) {
        const double gi = datum.motion[k * n + i], gj = datum.motion[k * n + j];
        double cwg = 0.0;
        for (int l = 0; l < d; l++) cwg += t.cw[k * d + l] * datum.motion[l * n + j];
        q += gi * (cwg - t.w[k * n + j]) - t.w[k * n + i] * gj;
    }
    return q;
}

} // namespace vornadjust
