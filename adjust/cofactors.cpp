#include "adjust/cofactors.h"

#include <algorithm>
#include <stdexcept>

namespace vornadjust {

Cofactors::Cofactors(const System &s, const FreeDatum &d)
    : system(s), datum(d), change(cofactor_transform(d, s)), held(s.n(), 0)
{
    for (int h : s.held) held[h] = 1;
}

bool Cofactors::invert(const InverseOptions &options) { return vornadjust::invert(system, inverse, options); }

void Cofactors::block(int k, const int *columns, double *q) const
{
    if (!find(k, columns, q)) throw std::logic_error("cofactors of unknowns without a row");
}

bool Cofactors::find(int k, const int *columns, double *q) const
{
    if (!elements(system.symbolic, inverse, k, columns, q)) return false;
    for (int a = 0; a < k; a++)
        for (int b = 0; b < k; b++) {
            double &x = q[(std::size_t)a * k + b];
            if (held[columns[a]] || held[columns[b]]) x = 0.0;
            x = transformed(datum, change, columns[a], columns[b], x);
        }
    leave(k, columns);
    return true;
}

// An inverse on a disk is left when what was brought into memory around the columns that were looked up may fill two
// chunks; nothing else is in memory by then.
void Cofactors::leave(int k, const int *columns) const
{
    if (!inverse.value.on_disk()) return;
    const std::size_t around = 8192; // numbers that the system brings at a time
    touched.resize(inverse.value.size() / around + 1, 0);
    for (int a = 0; a < k; a++) {
        const int place = system.symbolic.place[columns[a]], s = system.symbolic.super[place];
        const std::size_t height = (std::size_t)system.symbolic.height(s);
        const std::size_t begin =
            (std::size_t)system.symbolic.valuestart[s] + (std::size_t)(place - system.symbolic.first[s]) * height;
        for (std::size_t w = begin / around; w <= (begin + height - 1) / around; w++) {
            brought += touched[w] ? 0 : around;
            touched[w] = 1;
        }
    }
    if (brought < 2 * inverse.value.stride()) return;
    inverse.value.leave(0, inverse.value.size());
    std::fill(touched.begin(), touched.end(), (char)0);
    brought = 0;
}

// Q = T Q- T^T with T = I - G C.
void Cofactors::multiply(int m, double *x) const
{
    const Share &share = system.share;
    const std::size_t n = system.n(), all = system.columns.of.size();
    std::vector<double> y(m * n);
    for (int v = 0; v < m; v++) {
        double *yv = y.data() + v * n;
        for (std::size_t j = 0; j < n; j++) yv[j] = x[v * all + system.columns.unknown[j]];
        contribute(share, yv);
        transform_back(datum, yv);
        for (int h : system.held) yv[h] = 0.0;
    }
    solve(system, m, y.data());
    const std::vector<double> start(n, 0.0);
    std::fill(x, x + m * all, 0.0);
    for (int v = 0; v < m; v++) {
        double *yv = y.data() + v * n;
        for (int h : system.held) yv[h] = 0.0;
        transform(datum, start.data(), yv);
        contribute(share, yv);
        for (std::size_t j = 0; j < n; j++) x[v * all + system.columns.unknown[j]] = yv[j];
    }
    if (share.shared()) share.ranks->sum(x, m * all);
}

void Cofactors::solved(int k, const int *unknowns, int m, const int *others, double *q) const
{
    std::vector<double> x(system.columns.of.size());
    for (int b = 0; b < m; b++) {
        std::fill(x.begin(), x.end(), 0.0);
        x[others[b]] = 1.0;
        multiply(x.data());
        for (int a = 0; a < k; a++) q[(std::size_t)a * m + b] = x[unknowns[a]];
    }
}

} // namespace vornadjust
