#include "adjust/free_datum.h"

#include <algorithm>
#include <cmath>

#include "adjust/over_ranks.h"

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

// Rows of a matrix over unknowns that stand in the normal system.
std::vector<double> over_columns(const Columns &columns, const Dense &m)
{
    std::vector<double> v;
    v.reserve((std::size_t)m.cols * columns.count());
    for (int k = 0; k < m.cols; k++)
        for (int u : columns.unknown) v.push_back(m(u, k));
    return v;
}

} // namespace

Datum find_datum(Model *model, const System &system)
{
    gather_values(system.share, system.columns, model);
    return find_datum(unit_rows(*model, system.equations, system.share.ranks));
}

FreeDatum free_datum(const Columns &columns, const Datum &found, const Share &share)
{
    FreeDatum d;
    d.ranks = share.ranks;
    d.n = columns.count();
    d.open = found.motions.cols;
    d.size = found.similarity.size;
    d.condition = over_columns(columns, found.conditions);
    for (int k = 0; k < d.open; k++) contribute(share, d.condition.data() + (std::size_t)k * d.n);
    set_motions(columns, found.motions, &d);
    return d;
}

std::vector<int> held_columns(const Model &model, const Columns &columns, const Datum &found)
{
    std::vector<int> held;
    for (int u : minimal_datum(model, found.motions))
        if (columns.of[u] >= 0) held.push_back(columns.of[u]);
    return held;
}

void set_motions(const Columns &columns, const Dense &motions, FreeDatum *datum)
{
    const int d = datum->open, n = datum->n;
    datum->motion = over_columns(columns, motions);
    std::vector<double> bg((std::size_t)d * d);
    for (int i = 0; i < d; i++)
        for (int k = 0; k < d; k++)
            bg[i * d + k] =
                dot(n, datum->condition.data() + (std::size_t)i * n, datum->motion.data() + (std::size_t)k * n);
    sum(datum->ranks, bg.data(), bg.size());
    datum->closing = small_inverse(d, bg);
}

void transform(const FreeDatum &datum, const double *from_start, double *dx)
{
    const int d = datum.open, n = datum.n;
    std::vector<double> b(d);
    for (int k = 0; k < d; k++) {
        const double *condition = datum.condition.data() + (std::size_t)k * n;
        b[k] = dot(n, condition, dx) + dot(n, condition, from_start);
    }
    sum(datum.ranks, b.data(), b.size());
    for (int k = 0; k < d; k++) {
        const double c = dot(d, datum.closing.data() + (std::size_t)k * d, b.data()),
                     *g = datum.motion.data() + (std::size_t)k * n;
        for (int j = 0; j < n; j++) dx[j] -= c * g[j];
    }
}

void transform_back(const FreeDatum &datum, double *x)
{
    const int d = datum.open, n = datum.n;
    std::vector<double> gx(d);
    for (int k = 0; k < d; k++) gx[k] = dot(n, datum.motion.data() + (std::size_t)k * n, x);
    sum(datum.ranks, gx.data(), gx.size());
    for (int i = 0; i < d; i++) {
        const double *condition = datum.condition.data() + (std::size_t)i * n;
        double c = 0.0;
        for (int k = 0; k < d; k++) c += datum.closing[k * d + i] * gx[k];
        for (int j = 0; j < n; j++) x[j] -= c * condition[j];
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
    solve(system, d, t.w.data());
    t.cw.resize((std::size_t)d * d);
    for (int i = 0; i < d; i++)
        for (int k = 0; k < d; k++)
            t.cw[i * d + k] = dot(n, c.data() + (std::size_t)i * n, t.w.data() + (std::size_t)k * n);
    sum(datum.ranks, t.cw.data(), t.cw.size());
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
