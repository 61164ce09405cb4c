// Checks and products of symmetric matrices in compressed columns.

#include "adjust/sparse.h"

#include <algorithm>
#include <cstddef>

namespace vornadjust {

static bool column_is_well_formed(const SymmetricMatrix &a, int j)
{
    const std::int64_t from = a.start[j], to = a.start[j + 1];
    if (from >= to || to > (std::int64_t)a.row.size() || a.row[from] != j) return false;
    for (std::int64_t p = from + 1; p < to; p++)
        if (a.row[p] <= a.row[p - 1] || a.row[p] >= a.n) return false;
    return true;
}

bool is_well_formed(const SymmetricMatrix &a)
{
    if (a.n < 0 || a.start.size() != (std::size_t)a.n + 1 || a.start[0] != 0) return false;
    for (int j = 0; j < a.n; j++)
        if (!column_is_well_formed(a, j)) return false;
    return (std::int64_t)a.row.size() == a.start[a.n] && (a.value.empty() || a.value.size() == a.row.size());
}

void multiply(const SymmetricMatrix &a, const double *x, double *y)
{
    std::fill(y, y + a.n, 0.0);
    for (int j = 0; j < a.n; j++) {
        double sum = a.value[a.start[j]] * x[j];
        for (std::int64_t p = a.start[j] + 1; p < a.start[j + 1]; p++) {
            sum += a.value[p] * x[a.row[p]];
            y[a.row[p]] += a.value[p] * x[j];
        }
        y[j] += sum;
    }
}

} // namespace vornadjust
