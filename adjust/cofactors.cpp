#include "adjust/cofactors.h"

#include <algorithm>
#include <stdexcept>

namespace vornadjust {

Cofactors::Cofactors(const System &s, const FreeDatum &d)
    : system(s), datum(d), change(cofactor_transform(d, s)), held(s.n(), 0)
{
    for (int h : s.held) held[h] = 1;
}

bool Cofactors::invert(const InverseOptions &options)
{
    return vornadjust::invert(system.symbolic, system.factor, inverse, options);
}

void Cofactors::block(int k, const int *columns, double *q) const
{
    if (!elements(system.symbolic, inverse, k, columns, q))
        throw std::logic_error("cofactors of unknowns without a row");
    for (int a = 0; a < k; a++)
        for (int b = 0; b < k; b++) {
            double &x = q[(std::size_t)a * k + b];
            if (held[columns[a]] || held[columns[b]]) x = 0.0;
            x = transformed(datum, change, columns[a], columns[b], x);
        }
}

// Q = T Q- T^T with T = I - G C.
void Cofactors::multiply(double *x) const
{
    std::vector<double> y(system.n());
    for (int j = 0; j < system.n(); j++) y[j] = x[system.columns.unknown[j]];
    transform_back(datum, y.data());
    for (int h : system.held) y[h] = 0.0;
    solve(system.symbolic, system.factor, y.data());
    for (int h : system.held) y[h] = 0.0;
    const std::vector<double> start(system.n(), 0.0);
    transform(datum, start.data(), y.data());
    std::fill(x, x + system.columns.of.size(), 0.0);
    for (int j = 0; j < system.n(); j++) x[system.columns.unknown[j]] = y[j];
}

void Cofactors::solved(int k, const int *columns, int m, const int *others, double *q) const
{
    std::vector<double> x(system.n());
    for (int b = 0; b < m; b++) {
        std::fill(x.begin(), x.end(), 0.0);
        if (!held[others[b]]) x[others[b]] = 1.0;
        solve(system.symbolic, system.factor, x.data());
        for (int a = 0; a < k; a++)
            q[(std::size_t)a * m + b] =
                transformed(datum, change, columns[a], others[b], held[columns[a]] ? 0.0 : x[columns[a]]);
    }
}

} // namespace vornadjust
