// Open motions of a network and the conditions that close them.

#include "adjust/datum.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "adjust/block_elimination.h"

namespace vornadjust {

namespace {

// Singular values of the answers to motions: zeros are below 1e-15, others above 1e-7.
constexpr double open_motion = 1e-10;
// Combinations of motions that move no point (a turn about the line of two points), beside the largest:
// zeros are below 1e-15; a tunnel of 10 km by 1 m turns about its axis with 2e-4.
constexpr double empty_motion = 1e-9;
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
// A kind holds a motion when its best answer reaches this share of the best of all; less is by the way
// (heights of instruments give directions a hold on the scale).
constexpr double worth_telling = 0.05;
constexpr double answer = 1e-7;

using Terms = std::vector<std::pair<int, double>>;
using Answers = std::array<double, n_motions>;

// Unknowns besides coordinates that belong together: a set-up, constants, a camera, a motion.
struct NuisanceBlock {
    std::vector<int> unknowns; // that are estimated and stand in a row
    int rows = 0;
    int part = -1;
    bool shared = false; // by rows of several parts
};

struct PartMotions {
    Similarity similarity;
    Dense basis; // 7 by motions that move a point at all
    int block = -1;
    int column = 0; // first of the block
};

class Search {
public:
    explicit Search(const UnitRows &unit) : rows(unit), model(*unit.model), equations(*unit.equations) {}
    Datum run();

private:
    void find_motions();
    void find_nuisances();
    void order_blocks();
    void add_rows(BlockElimination &elimination) const;
    int part_of_row(int row) const;
    Terms terms(int row) const;
    Terms terms_of_fixed(int unknown, const PartMotions &part) const;
    Answers answers(int row, const Similarity &similarity) const;
    bool is_difference(int row, double vector[3]) const;
    std::vector<char> open_parts(const BlockElimination &elimination) const;
    Dense take_motions(const BlockElimination &elimination, const PartMotions &part);
    Dense orthonormalise(const Dense &coefficients);
    void make_conditions(const Dense &coefficients);
    void count_holding(const BlockElimination &elimination);
    void count_holding(const BlockElimination &elimination, int motion);

    const UnitRows &rows;
    const Model &model;
    const Equations &equations;
    Datum datum;
    std::vector<PartMotions> motions; // [parts]
    std::vector<NuisanceBlock> nuisances;
    std::vector<int> sizes;     // of the blocks, in the order of elimination
    std::vector<int> column_of; // [unknowns] of nuisances, -1 for none
    int before_parts = 0;       // blocks of nuisances that one part has alone
};

bool moves(const Model &model, int unknown) { return model.code[unknown] != Code::absent; }

// Motions of the points of a part, less the combinations that move none.
PartMotions part_motions(const Model &model, const std::vector<int> &points)
{
    PartMotions out;
    out.similarity = similarity(model, points);
    Triangle moved(n_motions);
    for (int p : points)
        for (int k = 0; k < 3; k++) {
            if (!moves(model, 3 * p + k)) continue;
            double row[n_motions];
            for (int m = 0; m < n_motions; m++) row[m] = out.similarity.of_point(m, &model.value[3 * p], k);
            moved.add(row);
        }
    const SmallSvd d = small_svd(moved.matrix());
    const int n = d.s[0] > 0 ? count_from(d.s, empty_motion * d.s[0]) : 0;
    out.basis = Dense(n_motions, n);
    std::copy(d.v.a.begin(), d.v.a.begin() + out.basis.a.size(), out.basis.a.begin());
    return out;
}

void Search::find_motions()
{
    datum.parts = find_parts(rows);
    for (const std::vector<int> &points : datum.parts.points) motions.push_back(part_motions(model, points));
}

int Search::part_of_row(int row) const
{
    for (std::size_t k = equations.begin[row]; k < equations.begin[row + 1]; k++)
        if (rows.is_coordinate(equations.column[k])) return datum.parts.part_of[equations.column[k] / 3];
    return -1;
}

void Search::find_nuisances()
{
    std::vector<int> block_of(model.n_unknowns(), -1);
    int n = 0;
    const auto assign = [&](int first, int size) { std::fill_n(block_of.begin() + first, size, n++); };
    for (const Setup &s : model.setups) assign(s.first, 3);
    for (const Motion &m : model.motions) assign(m.first, 7);
    for (const Camera &c : model.cameras) assign(c.first, 10);
    for (const Constants &c : model.constants) assign(c.first, 3);
    nuisances.resize(n);

    std::vector<char> stands(model.n_unknowns(), 0);
    for (int r = 0; r < rows.rows(); r++) {
        if (!rows.tells(r)) continue;
        const int part = part_of_row(r);
        int last = -1;
        for (std::size_t k = equations.begin[r]; k < equations.begin[r + 1]; k++) {
            const int unknown = equations.column[k];
            if (block_of[unknown] < 0 || !model.estimated(unknown) || equations.coefficient[k] == 0) continue;
            stands[unknown] = 1;
            NuisanceBlock &block = nuisances[block_of[unknown]];
            if (block_of[unknown] != last) block.rows++;
            last = block_of[unknown];
            if (part >= 0 && block.part >= 0 && block.part != part) block.shared = true;
            if (part >= 0) block.part = part;
        }
    }
    for (int u = 0; u < model.n_unknowns(); u++)
        if (stands[u]) nuisances[block_of[u]].unknowns.push_back(u);
}

// Nuisances of one part with few rows first, then the motions of each part, then shared nuisances.
void Search::order_blocks()
{
    std::stable_sort(nuisances.begin(), nuisances.end(), [](const NuisanceBlock &a, const NuisanceBlock &b) {
        return a.shared != b.shared ? b.shared : a.rows < b.rows;
    });
    column_of.assign(model.n_unknowns(), -1);
    int column = 0;
    const auto append = [&](const NuisanceBlock &block) {
        for (int u : block.unknowns) column_of[u] = column++;
        sizes.push_back(static_cast<int>(block.unknowns.size()));
    };
    for (const NuisanceBlock &block : nuisances)
        if (!block.shared) append(block);
    before_parts = static_cast<int>(sizes.size());
    for (PartMotions &m : motions) {
        m.block = static_cast<int>(sizes.size());
        m.column = column;
        sizes.push_back(m.basis.cols);
        column += m.basis.cols;
    }
    for (const NuisanceBlock &block : nuisances)
        if (block.shared) append(block);
}

// Whether a row is a component of the difference of two points as it was observed, and that vector in
// the axes of the coordinates, from the target's coefficients (orthogonal but for a scale).
bool Search::is_difference(int row, double vector[3]) const
{
    const Observation &o = model.observations[equations.observation[row]];
    if (o.kind != Kind::baseline || o.motion_from != o.motion_to) return false;
    const int first = row - equations.component[row];
    std::fill(vector, vector + 3, 0.0);
    for (int c = 0; c < 3; c++) {
        double square = 0;
        for (std::size_t k = equations.begin[first + c]; k < equations.begin[first + c + 1]; k++)
            if (equations.column[k] / 3 == o.to && rows.is_coordinate(equations.column[k]))
                square += equations.coefficient[k] * equations.coefficient[k];
        for (std::size_t k = equations.begin[first + c]; square > 0 && k < equations.begin[first + c + 1]; k++)
            if (equations.column[k] / 3 == o.to && rows.is_coordinate(equations.column[k]))
                vector[equations.column[k] % 3] += equations.coefficient[k] * o.value[c] / square;
    }
    return true;
}

// Answers of a row to the basic motions. Baselines turn and grow as observed: first coordinates of two
// copies of one point would hold a turn by the millimetre that they lie apart.
Answers Search::answers(int row, const Similarity &s) const
{
    Answers out = {};
    double vector[3];
    const bool difference = is_difference(row, vector);
    const int to = model.observations[equations.observation[row]].to;
    for (std::size_t k = equations.begin[row]; k < equations.begin[row + 1]; k++) {
        const int point = equations.column[k] / 3, axis = equations.column[k] % 3;
        if (!rows.is_coordinate(equations.column[k]) || (difference && point != to)) continue;
        const double *x = &model.value[3 * point];
        for (int m = 0; m < n_motions; m++)
            out[m] += rows.entry(row, k) * (difference ? s.of_vector(m, vector, axis) : s.of_point(m, x, axis));
    }
    return out;
}

void append_combined(Terms &out, const PartMotions &part, const double *of_motion)
{
    for (int j = 0; j < part.basis.cols; j++)
        out.emplace_back(part.column + j, std::inner_product(of_motion, of_motion + n_motions, part.basis.col(j), 0.0));
}

Terms Search::terms(int row) const
{
    Terms out;
    const int part = part_of_row(row);
    if (part >= 0) append_combined(out, motions[part], answers(row, motions[part].similarity).data());
    for (std::size_t k = equations.begin[row]; k < equations.begin[row + 1]; k++)
        if (column_of[equations.column[k]] >= 0) out.emplace_back(column_of[equations.column[k]], rows.entry(row, k));
    return out;
}

Terms Search::terms_of_fixed(int unknown, const PartMotions &part) const
{
    Terms out;
    double of_motion[n_motions];
    for (int m = 0; m < n_motions; m++)
        of_motion[m] = part.similarity.of_point(m, &model.value[unknown - unknown % 3], unknown % 3);
    append_combined(out, part, of_motion);
    return out;
}

void Search::add_rows(BlockElimination &elimination) const
{
    for (int r = 0; r < rows.rows(); r++)
        if (rows.tells(r)) elimination.add(terms(r));
    for (int u = 0; u < 3 * model.n_points; u++) {
        const int part = datum.parts.part_of[u / 3];
        if (part >= 0 && model.code[u] == Code::fixed) elimination.add(terms_of_fixed(u, motions[part]));
    }
}

// Parts with a motion that is open by itself or along with unknowns that it shares with other parts.
std::vector<char> Search::open_parts(const BlockElimination &elimination) const
{
    std::vector<char> open(motions.size(), 0);
    for (std::size_t p = 0; p < motions.size(); p++) open[p] = elimination.open(motions[p].block) > 0;
    const int blocks = static_cast<int>(sizes.size());
    for (int b = before_parts + static_cast<int>(motions.size()); b < blocks; b++)
        for (int j = 0; j < elimination.open(b); j++) {
            const std::vector<double> vector = elimination.null_vector(b, j);
            for (std::size_t p = 0; p < motions.size(); p++)
                for (int i = 0; i < motions[p].basis.cols; i++)
                    if (std::fabs(vector[motions[p].column + i]) > some_motion) open[p] = 1;
        }
    return open;
}

// Open motions of a part over all unknowns, not orthonormal yet, into datum.motions. Returns their
// coefficients, 7 by open motions.
Dense Search::take_motions(const BlockElimination &elimination, const PartMotions &part)
{
    const int n = elimination.open(part.block);
    Dense coefficients(n_motions, n);
    datum.motions = Dense(model.n_unknowns(), n);
    for (int j = 0; j < n; j++) {
        const std::vector<double> vector = elimination.null_vector(part.block, j);
        double *c = coefficients.col(j);
        for (int i = 0; i < part.basis.cols; i++)
            for (int m = 0; m < n_motions; m++) c[m] += vector[part.column + i] * part.basis(m, i);
        for (int u = 0; u < 3 * model.n_points; u++)
            for (int m = 0; m < n_motions && model.estimated(u) && datum.parts.part_of[u / 3] >= 0; m++)
                datum.motions(u, j) += c[m] * part.similarity.of_point(m, &model.value[u - u % 3], u % 3);
        for (int u = 3 * model.n_points; u < model.n_unknowns(); u++)
            if (column_of[u] >= 0) datum.motions(u, j) = vector[column_of[u]] * rows.column_factor[u];
    }
    return coefficients;
}

Dense product(const Dense &a, const Dense &b)
{
    Dense out(a.rows, b.cols);
    for (int j = 0; j < b.cols; j++)
        for (int k = 0; k < a.cols; k++)
            for (int i = 0; i < a.rows; i++) out(i, j) += a(i, k) * b(k, j);
    return out;
}

Dense first_rows(const Dense &a, int n)
{
    Dense out(n, a.cols);
    for (int j = 0; j < a.cols; j++) std::copy(a.col(j), a.col(j) + n, out.col(j));
    return out;
}

// Makes the motions orthonormal over the coordinates, the coefficients alike.
Dense Search::orthonormalise(const Dense &coefficients)
{
    const SmallSvd d = small_svd(first_rows(datum.motions, 3 * model.n_points));
    Dense change = d.v;
    for (int j = 0; j < change.cols; j++)
        for (int i = 0; i < change.rows; i++) change(i, j) /= d.s[j];
    datum.motions = product(datum.motions, change);
    return product(coefficients, change);
}

void Search::make_conditions(const Dense &coefficients)
{
    datum.conditions = datum.motions;
    for (int u = 0; u < model.n_unknowns(); u++)
        for (int j = 0; j < datum.conditions.cols; j++)
            if (!rows.is_coordinate(u) || model.code[u] != Code::datum) datum.conditions(u, j) = 0;
    const SmallSvd d = small_svd(datum.conditions);
    const int carried = count_from(d.s, carried_motion);
    datum.least_hold = d.s.back();
    datum.weakly_carried = datum.least_hold < well_carried;
    datum.state = carried == datum.conditions.cols ? DatumState::by_points : DatumState::not_carried;
    Dense left(d.v.rows, d.v.cols - carried);
    std::copy(d.v.a.end() - static_cast<std::ptrdiff_t>(left.a.size()), d.v.a.end(), left.a.begin());
    datum.not_carried = name_motions(datum.similarity, product(coefficients, left));
}

// Whether an open motion has a part in a basic one, counting a turn as nothing but a turn.
bool is_open(const std::vector<NamedMotion> &open, int motion)
{
    const MotionKind kind = motion < 3 ? MotionKind::shift : motion < 6 ? MotionKind::turn : MotionKind::scale;
    for (const NamedMotion &m : open)
        if (m.kind == kind && (motion == 6 || std::fabs(m.direction[motion % 3]) > some_motion)) return true;
    return false;
}

void Search::count_holding(const BlockElimination &elimination, int motion)
{
    Holding &holding = datum.holding[motion];
    std::vector<double> vector(elimination.columns(), 0.0), size(rows.rows(), 0.0);
    for (const PartMotions &part : motions)
        for (int i = 0; i < part.basis.cols; i++) vector[part.column + i] = part.basis(motion, i);
    elimination.complete(vector, before_parts);
    const auto answer_of = [&](const Terms &row) {
        return std::fabs(std::accumulate(row.begin(), row.end(), 0.0, [&](double sum, const auto &term) {
            return sum + term.second * vector[term.first];
        }));
    };
    std::array<double, n_kinds> most = {};
    for (int r = 0; r < rows.rows(); r++) {
        if (!rows.tells(r)) continue;
        size[r] = answer_of(terms(r));
        double &m = most[static_cast<int>(model.observations[equations.observation[r]].kind)];
        m = std::max(m, size[r]);
    }
    const double least = worth_telling * *std::max_element(most.begin(), most.end());
    int last = -1;
    for (int r = 0; r < rows.rows(); r++) {
        const int kind = static_cast<int>(model.observations[equations.observation[r]].kind);
        if (!(size[r] > answer) || most[kind] < least || equations.observation[r] == last) continue;
        last = equations.observation[r];
        holding.of_kind[kind]++;
    }
    for (int u = 0; u < 3 * model.n_points; u++) {
        const int part = datum.parts.part_of[u / 3];
        if (part < 0 || model.code[u] != Code::fixed) continue;
        holding.fixed += answer_of(terms_of_fixed(u, motions[part])) > answer;
    }
}

void Search::count_holding(const BlockElimination &elimination)
{
    for (int m = 0; m < n_motions; m++) {
        Holding &holding = datum.holding[m];
        for (const PartMotions &part : motions)
            for (int i = 0; i < part.basis.cols; i++) holding.exists |= std::fabs(part.basis(m, i)) > some_motion;
        holding.open = is_open(datum.open, m);
        if (holding.exists && !holding.open) count_holding(elimination, m);
    }
}

Datum Search::run()
{
    find_motions();
    find_nuisances();
    order_blocks();
    BlockElimination elimination(sizes);
    add_rows(elimination);
    const int part_blocks = static_cast<int>(motions.size());
    for (int b = 0; b < static_cast<int>(sizes.size()); b++) {
        const bool of_part = b >= before_parts && b < before_parts + part_blocks;
        elimination.eliminate(of_part ? open_motion : determined_nuisance);
    }
    const std::vector<char> open = open_parts(elimination);
    for (int p = 0; p < part_blocks; p++)
        if (open[p]) datum.loose_parts.push_back(p);
    if (part_blocks > 1 && !datum.loose_parts.empty()) {
        datum.state = DatumState::loose;
    } else if (!datum.loose_parts.empty()) {
        datum.loose_parts.clear();
        datum.similarity = motions[0].similarity;
        const Dense coefficients = orthonormalise(take_motions(elimination, motions[0]));
        datum.open = name_motions(datum.similarity, coefficients);
        make_conditions(coefficients);
    }
    if (datum.state != DatumState::loose) count_holding(elimination);
    return std::move(datum);
}

} // namespace

Datum find_datum(const UnitRows &rows) { return Search(rows).run(); }

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
