// Null vectors of the unit rows beside the open motions.

#include "adjust/mechanisms.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "adjust/assembly.h"
#include "adjust/factor.h"
#include "adjust/order.h"
#include "adjust/symbolic.h"

namespace vornadjust {

namespace {

// Entries of unit rows below this are no answer: rounding is below 1e-15.
constexpr double no_answer = 1e-10;
// Pivots of unit columns below this are suspects. A resection 0.1 % beside its danger circle has 1e-4.
constexpr double suspect_pivot = 1e-6;
// A movement with largest entry 1 to which no unit row answers more than this is one that nothing
// determines: mechanisms have 1e-14 to 1e-12, traverses of 1,000 legs 9e-7.
constexpr double no_resistance = 1e-10;
constexpr int most_suspects = 60;
constexpr int inverse_iterations = 4;
// Added to the diagonal of N, whose elements are 1: far below any pivot that counts, above rounding.
// Very wide factors round more; they get the second.
constexpr double regularisation[] = {1e-14, 1e-12};

// Unit rows over the estimated unknowns, columns scaled to length 1.
struct ScaledRows {
    std::vector<int> unknown;  // [columns]
    std::vector<double> scale; // [columns] movement of the unknown (scaled by column_factor) for 1
    WeightedRows rows;
};

std::vector<double> column_lengths(const UnitRows &u)
{
    std::vector<double> length(u.model->n_unknowns(), 0.0);
    for (int r = 0; r < u.rows(); r++)
        for (std::size_t k = u.equations->begin[r]; k < u.equations->begin[r + 1] && u.tells(r); k++)
            length[u.equations->column[k]] = std::hypot(length[u.equations->column[k]], u.entry(r, k));
    return length;
}

std::vector<int> idle_unknowns(const UnitRows &u, const std::vector<double> &length)
{
    std::vector<int> out;
    const Columns taken = columns(*u.model, *u.equations);
    for (int j : taken.unknown)
        if (!u.is_coordinate(j) && length[j] < no_answer) out.push_back(j);
    return out;
}

void append_row(const UnitRows &u, int row, const std::vector<int> &column, ScaledRows &out)
{
    std::vector<std::pair<int, double>> entries;
    for (std::size_t k = u.equations->begin[row]; k < u.equations->begin[row + 1]; k++) {
        const int j = column[u.equations->column[k]];
        if (j >= 0) entries.emplace_back(j, u.entry(row, k) * out.scale[j]);
    }
    std::sort(entries.begin(), entries.end());
    for (const auto &[j, value] : entries) {
        out.rows.column.push_back(j);
        out.rows.coefficient.push_back(value);
    }
    out.rows.begin.push_back(out.rows.column.size());
    out.rows.misclosure.push_back(0);
}

ScaledRows scaled_rows(const UnitRows &u, const std::vector<double> &length, const std::vector<int> &held)
{
    ScaledRows out;
    std::vector<int> column(u.model->n_unknowns(), -1);
    for (int j = 0; j < u.model->n_unknowns(); j++) {
        if (!u.model->estimated(j) || length[j] < no_answer) continue;
        if (std::find(held.begin(), held.end(), j) != held.end()) continue;
        column[j] = static_cast<int>(out.unknown.size());
        out.unknown.push_back(j);
        out.scale.push_back(1 / length[j]);
    }
    out.rows.begin.push_back(0);
    for (int r = 0; r < u.rows(); r++)
        if (u.tells(r)) append_row(u, r, column, out);
    return out;
}

// A z for every column of z.
Dense answers(const WeightedRows &a, const Dense &z)
{
    Dense out(a.rows(), z.cols);
    for (int j = 0; j < z.cols; j++)
        for (int r = 0; r < a.rows(); r++)
            for (std::size_t k = a.begin[r]; k < a.begin[r + 1]; k++) out(r, j) += a.coefficient[k] * z(a.column[k], j);
    return out;
}

// A'w for every column of w.
Dense gathered(const WeightedRows &a, const Dense &w, int n)
{
    Dense out(n, w.cols);
    for (int j = 0; j < w.cols; j++)
        for (int r = 0; r < a.rows(); r++)
            for (std::size_t k = a.begin[r]; k < a.begin[r + 1]; k++) out(a.column[k], j) += a.coefficient[k] * w(r, j);
    return out;
}

Dense product(const Dense &a, const Dense &b)
{
    Dense out(a.rows, b.cols);
    for (int j = 0; j < b.cols; j++)
        for (int k = 0; k < a.cols; k++)
            for (int i = 0; i < a.rows; i++) out(i, j) += a(i, k) * b(k, j);
    return out;
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

// The regularised factor of N, none of whose pivots fails.
struct Inverse {
    Symbolic symbolic;
    Factor factor;
};

Inverse regularised_inverse(const ScaledRows &scaled)
{
    NormalSystem normal = normal_pattern(static_cast<int>(scaled.unknown.size()), scaled.rows);
    assemble(scaled.rows, &normal);
    Inverse out;
    out.symbolic = analyse(normal.matrix, fill_reducing_order(normal.matrix).unknown);
    FactorOptions options;
    options.least_pivot = 1e-16;
    double added = 0;
    for (double d : regularisation) {
        for (int j = 0; j < normal.matrix.n; j++) normal.matrix.value[normal.matrix.start[j]] += d - added;
        added = d;
        if (factorize(normal.matrix, out.symbolic, out.factor, options)) break;
    }
    return out;
}

std::vector<int> small_pivots(const Factor &factor)
{
    std::vector<int> out;
    for (std::size_t j = 0; j < factor.pivot.size(); j++)
        if (!(factor.pivot[j] >= suspect_pivot)) out.push_back(static_cast<int>(j));
    return out;
}

// An orthonormal basis of the space of the columns; directions that rounding alone holds are dropped.
Dense orthonormal(Dense z)
{
    for (int j = 0; j < z.cols; j++) {
        double most = 0;
        for (int i = 0; i < z.rows; i++) most = std::max(most, std::fabs(z(i, j)));
        for (int i = 0; i < z.rows && most > 0; i++) z(i, j) /= most;
    }
    const SmallSvd d = small_svd(std::move(z));
    const int n = d.s.empty() ? 0 : count_from(d.s, 1e-12 * d.s[0]);
    Dense out(d.u.rows, d.s.empty() || d.s[0] == 0 ? 0 : n);
    std::copy(d.u.a.begin(), d.u.a.begin() + static_cast<std::ptrdiff_t>(out.a.size()), out.a.begin());
    return out;
}

Dense starting_vectors(const Inverse &inverse, const std::vector<int> &suspects, int n)
{
    Dense z(inverse.symbolic.n, n);
    for (int j = 0; j < n; j++) z(suspects[j], j) = 1;
    solve(inverse.symbolic, inverse.factor, n, z.a.data());
    return orthonormal(std::move(z));
}

Dense iterated(const WeightedRows &rows, const Inverse &inverse, Dense z)
{
    for (int i = 0; i < inverse_iterations; i++) {
        Dense correction = gathered(rows, answers(rows, z), z.rows);
        solve(inverse.symbolic, inverse.factor, z.cols, correction.a.data());
        std::transform(z.a.begin(), z.a.end(), correction.a.begin(), z.a.begin(), std::minus<>());
        z = orthonormal(std::move(z));
    }
    return z;
}

double largest(const double *x, int n)
{
    double most = 0;
    for (int i = 0; i < n; i++) most = std::max(most, std::fabs(x[i]));
    return most;
}

// Combinations of the columns of z that no row feels, over all unknowns.
Dense without_resistance(const UnitRows &u, const ScaledRows &scaled, const Dense &z)
{
    const SmallSvd d = small_svd(triangle_of(answers(scaled.rows, z)).matrix());
    const Dense turned = product(z, d.v), felt = answers(scaled.rows, turned);
    Dense out(u.model->n_unknowns(), 0);
    for (int j = 0; j < turned.cols; j++) {
        std::vector<double> movement(out.rows, 0.0);
        for (int i = 0; i < turned.rows; i++) movement[scaled.unknown[i]] = turned(i, j) * scaled.scale[i];
        const double size = largest(movement.data(), out.rows);
        if (!(largest(felt.col(j), felt.rows) < no_resistance * size)) continue;
        for (int i = 0; i < out.rows; i++) out.a.push_back(movement[i] / size * u.column_factor[i]);
        out.cols++;
    }
    return out;
}

} // namespace

Mechanisms find_mechanisms(const UnitRows &u, const Datum &datum)
{
    Mechanisms out;
    out.vectors = Dense(u.model->n_unknowns(), 0);
    const std::vector<int> held = minimal_datum(*u.model, datum.motions);
    const std::vector<double> length = column_lengths(u);
    for (int j = 0; j < 3 * u.model->n_points; j++) {
        const bool is_held = std::find(held.begin(), held.end(), j) != held.end();
        if (u.model->estimated(j) && length[j] < no_answer && !is_held) out.unseen.push_back(j);
    }
    out.idle = idle_unknowns(u, length);
    const ScaledRows scaled = scaled_rows(u, length, held);
    if (scaled.unknown.empty()) return out;
    const Inverse inverse = regularised_inverse(scaled);
    const std::vector<int> suspects = small_pivots(inverse.factor);
    if (suspects.empty()) return out;
    const int n = std::min(most_suspects, static_cast<int>(suspects.size()));
    out.not_searched = static_cast<int>(suspects.size()) - n;
    const Dense z = iterated(scaled.rows, inverse, starting_vectors(inverse, suspects, n));
    out.vectors = without_resistance(u, scaled, z);
    if (out.vectors.cols == 0)
        for (int j : suspects) out.weak.push_back(scaled.unknown[j]);
    return out;
}

} // namespace vornadjust
