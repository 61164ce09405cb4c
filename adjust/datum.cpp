// Open motions of a network and the conditions that close them.

#include "adjust/datum.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "adjust/block_elimination.h"
#include "adjust/holding.h"
#include "adjust/motion_rows.h"
#include "adjust/over_ranks.h"

namespace vornadjust {

namespace {

// Singular values of the answers to motions: zeros are below 1e-15, others above 1e-7.
constexpr double open_motion = 1e-10;
// Movement of the datum points by orthonormal motions: zeros are below 1e-15; a datum in a cluster of
// 0.1 m in 100 km holds a turn with 7e-7.
constexpr double carried_motion = 1e-8;
// The same cluster gives standard deviations of 250 m at the far end and loses digits: to be told.
constexpr double well_carried = 1e-4;
// Unknowns that are no coordinates, in unit columns. A direction below it changes answers to motions
// by less than open_motion; rounding of a column of 1e6 rows is below it.
constexpr double determined_nuisance = 1e-11;
// Share of the motions in a null vector of unknowns that several parts have in common; rounding is less.
constexpr double some_motion = 1e-7;

// Gives each rank the rows that all have left for their common blocks: what is eliminated from here on is the same on
// all. A row is told as its length, columns and entries.
void join_rows(const MotionRows &m, BlockElimination &elimination)
{
    if (!m.rows->ranks) return;
    std::vector<double> own;
    for (const Terms &row : elimination.take_rest()) {
        own.push_back((double)row.size());
        for (const auto &[column, entry] : row) own.insert(own.end(), {(double)(column - m.own_columns), entry});
    }
    const std::vector<double> all = gather(m.rows->ranks, own);
    for (std::size_t at = 0; at < all.size();) {
        Terms row;
        for (std::size_t left = (std::size_t)all[at++]; left > 0; left--, at += 2)
            row.emplace_back((int)all[at] + m.own_columns, all[at + 1]);
        elimination.add(std::move(row));
    }
}

BlockElimination eliminated(const MotionRows &m)
{
    BlockElimination elimination(m.sizes);
    for (int r = 0; r < m.rows->rows(); r++)
        if (m.rows->tells(r)) elimination.add(m.terms(r));
    for (int u = 0; u < 3 * m.model().n_points && leads(m.rows->ranks); u++)
        if (m.is_fixed(u)) elimination.add(m.terms_of_fixed(u));
    const int after_parts = m.before_parts + static_cast<int>(m.motions.size());
    for (int b = 0; b < static_cast<int>(m.sizes.size()); b++) {
        if (b == m.own_blocks) join_rows(m, elimination);
        elimination.eliminate(b >= m.before_parts && b < after_parts ? open_motion : determined_nuisance);
    }
    return elimination;
}

// Parts with a motion that is open by itself or along with unknowns that it shares with other parts.
std::vector<int> open_parts(const MotionRows &m, const BlockElimination &elimination)
{
    const std::vector<PartMotions> &motions = m.motions;
    std::vector<char> open(motions.size(), 0);
    for (std::size_t p = 0; p < motions.size(); p++) open[p] = elimination.open(motions[p].block) > 0;
    const int blocks = static_cast<int>(m.sizes.size());
    for (int b = m.before_parts + static_cast<int>(motions.size()); b < blocks; b++)
        for (int j = 0; j < elimination.open(b); j++) {
            const std::vector<double> vector = elimination.null_vector(b, j);
            for (std::size_t p = 0; p < motions.size(); p++)
                for (int i = 0; i < motions[p].basis.cols; i++)
                    if (std::fabs(vector[motions[p].column + i]) > some_motion) open[p] = 1;
        }
    std::vector<int> out;
    for (std::size_t p = 0; p < motions.size(); p++)
        if (open[p]) out.push_back(static_cast<int>(p));
    return out;
}

// Open motions of a part over all unknowns, not orthonormal yet, into datum.motions. Returns their
// coefficients, 7 by open motions.
Dense take_motions(const MotionRows &m, const BlockElimination &elimination, const PartMotions &part, Datum &datum)
{
    const Model &model = m.model();
    const int n = elimination.open(part.block);
    Dense coefficients(n_motions, n);
    datum.motions = Dense(model.n_unknowns(), n);
    for (int j = 0; j < n; j++) {
        const std::vector<double> vector = elimination.null_vector(part.block, j);
        double *c = coefficients.col(j);
        for (int i = 0; i < part.basis.cols; i++)
            for (int k = 0; k < n_motions; k++) c[k] += vector[part.column + i] * part.basis(k, i);
        for (int u = 0; u < 3 * model.n_points; u++)
            for (int k = 0; k < n_motions && model.estimated(u) && m.parts.part_of[u / 3] >= 0; k++)
                datum.motions(u, j) += c[k] * part.similarity.of_point(k, &model.value[u - u % 3], u % 3);
        for (int u = 3 * model.n_points; u < model.n_unknowns(); u++)
            if (m.tells(u)) datum.motions(u, j) = vector[m.column_of[u]] * m.rows->column_factor[u];
        sum(m.rows->ranks, datum.motions.col(j) + 3 * (std::size_t)model.n_points,
            (std::size_t)(model.n_unknowns() - 3 * model.n_points));
    }
    return coefficients;
}

Dense first_rows(const Dense &a, int n)
{
    Dense out(n, a.cols);
    for (int j = 0; j < a.cols; j++) std::copy(a.col(j), a.col(j) + n, out.col(j));
    return out;
}

// Makes the motions orthonormal over the coordinates, the coefficients alike.
Dense orthonormalise(const Model &model, const Dense &coefficients, Datum &datum)
{
    const SmallSvd d = small_svd(first_rows(datum.motions, 3 * model.n_points));
    Dense change = d.v;
    for (int j = 0; j < change.cols; j++)
        for (int i = 0; i < change.rows; i++) change(i, j) /= d.s[j];
    datum.motions = product(datum.motions, change);
    return product(coefficients, change);
}

void make_conditions(const Model &model, const Dense &coefficients, Datum &datum)
{
    datum.conditions = datum.motions;
    for (int u = 0; u < model.n_unknowns(); u++)
        for (int j = 0; j < datum.conditions.cols; j++)
            if (u >= 3 * model.n_points || model.code[u] != Code::datum) datum.conditions(u, j) = 0;
    const SmallSvd d = small_svd(datum.conditions);
    const int carried = count_from(d.s, carried_motion);
    datum.least_hold = d.s.back();
    datum.weakly_carried = datum.least_hold < well_carried;
    datum.state = carried == datum.conditions.cols ? DatumState::by_points : DatumState::not_carried;
    datum.not_carried = name_motions(datum.similarity, product(coefficients, column_range(d.v, carried, d.v.cols)));
}

} // namespace

Datum find_datum(const UnitRows &rows)
{
    const MotionRows m = motion_rows(rows);
    const BlockElimination elimination = eliminated(m);
    const std::vector<int> open = open_parts(m, elimination);
    Datum datum;
    datum.parts = m.parts;
    if (m.motions.size() > 1 && !open.empty()) {
        datum.state = DatumState::loose;
        datum.loose_parts = open;
        return datum;
    }
    if (!open.empty()) {
        datum.similarity = m.motions[0].similarity;
        const Dense coefficients = orthonormalise(m.model(), take_motions(m, elimination, m.motions[0], datum), datum);
        datum.open = name_motions(datum.similarity, coefficients);
        make_conditions(m.model(), coefficients, datum);
    }
    datum.holding = count_holding(m, elimination, datum.open);
    return datum;
}

std::vector<int> minimal_datum(const Model &model, Dense g)
{
    std::vector<int> held;
    for (int step = 0; step < g.cols; step++) {
        int row = -1, col = step;
        for (int j = step; j < g.cols; j++)
            for (int u = 0; u < 3 * model.n_points; u++)
                if (row < 0 || std::fabs(g(u, j)) > std::fabs(g(row, col))) row = u, col = j;
        held.push_back(row);
        std::swap_ranges(g.col(step), g.col(step) + g.rows, g.col(col));
        for (int j = step + 1; j < g.cols; j++) {
            const double share = g(row, j) / g(row, step);
            for (int u = 0; u < g.rows; u++) g(u, j) -= share * g(u, step);
            g(row, j) = 0;
        }
    }
    return held;
}

} // namespace vornadjust
