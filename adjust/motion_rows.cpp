// Rows over motions and over unknowns that are no coordinates.

#include "adjust/motion_rows.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

#include "adjust/over_ranks.h"

namespace vornadjust {

namespace {

// Combinations of motions that move no point (a turn about the line of two points), beside the largest:
// zeros are below 1e-15; a tunnel of 10 km by 1 m turns about its axis with 2e-4.
constexpr double empty_motion = 1e-9;

// Unknowns besides coordinates that belong together: a set-up, constants, a camera, a motion.
struct NuisanceBlock {
    std::vector<int> unknowns; // that are estimated and stand in a row
    int rows = 0;
    int ranks = 0;                                                    // that have such rows
    bool own = false;                                                 // this one has
    int first_part = std::numeric_limits<int>::max(), last_part = -1; // of the rows

    bool shared() const { return first_part < last_part; }
    int stage() const { return shared() ? 2 : ranks > 1 ? 1 : 0; }
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
            for (int m = 0; m < n_motions; m++)
                row[m] = out.similarity.of_point(m, &model.value[3 * (std::size_t)p], k);
            moved.add(row);
        }
    const SmallSvd d = small_svd(moved.matrix());
    const int n = d.s[0] > 0 ? count_from(d.s, empty_motion * d.s[0]) : 0;
    out.basis = column_range(d.v, 0, n);
    return out;
}

// Makes what is known of blocks from the rows of one rank what all rows tell.
void agree(Ranks *ranks, std::vector<NuisanceBlock> &blocks)
{
    std::vector<double> counts, parts;
    counts.reserve(2 * blocks.size());
    parts.reserve(2 * blocks.size());
    for (NuisanceBlock &b : blocks) {
        b.own = b.rows > 0;
        counts.insert(counts.end(), {(double)b.rows, (double)b.own});
        parts.insert(parts.end(), {-(double)b.first_part, (double)b.last_part});
    }
    sum(ranks, counts.data(), counts.size());
    most(ranks, parts.data(), parts.size());
    for (std::size_t i = 0; i < blocks.size(); i++) {
        blocks[i].rows = (int)counts[2 * i], blocks[i].ranks = (int)counts[2 * i + 1];
        blocks[i].first_part = (int)-parts[2 * i], blocks[i].last_part = (int)parts[2 * i + 1];
    }
}

// Block of each unknown, -1 for coordinates; their number.
int find_blocks(const Model &model, std::vector<int> &block_of)
{
    block_of.assign(model.n_unknowns(), -1);
    int n = 0;
    const auto assign = [&](int first, int size) { std::fill_n(block_of.begin() + first, size, n++); };
    for (const Setup &s : model.setups) assign(s.first, 3);
    for (const Motion &motion : model.motions) assign(motion.first, 7);
    for (const Camera &c : model.cameras) assign(c.first, 10);
    for (const Constants &c : model.constants) assign(c.first, 3);
    return n;
}

// Counts a row at the blocks that it sees, and marks their unknowns that stand in it.
void count_row(const MotionRows &m, int row, const std::vector<int> &block_of, std::vector<NuisanceBlock> &nuisances,
               std::vector<double> &stands)
{
    const Equations &equations = *m.rows->equations;
    const int part = m.part_of_row(row);
    int last = -1;
    for (std::size_t k = equations.begin[row]; k < equations.begin[row + 1]; k++) {
        const int unknown = equations.column[k];
        if (block_of[unknown] < 0 || !m.model().estimated(unknown) || m.rows->entry(row, k) == 0) continue;
        stands[unknown] = 1.0;
        NuisanceBlock &block = nuisances[block_of[unknown]];
        if (block_of[unknown] != last) block.rows++;
        last = block_of[unknown];
        if (part < 0) continue;
        block.first_part = std::min(block.first_part, part);
        block.last_part = std::max(block.last_part, part);
    }
}

std::vector<NuisanceBlock> nuisance_blocks(const MotionRows &m)
{
    const UnitRows &rows = *m.rows;
    std::vector<int> block_of;
    std::vector<NuisanceBlock> nuisances(find_blocks(*rows.model, block_of));
    std::vector<double> stands(block_of.size(), 0.0);
    for (int r = 0; r < rows.rows(); r++)
        if (rows.tells(r)) count_row(m, r, block_of, nuisances, stands);
    agree(rows.ranks, nuisances);
    most(rows.ranks, stands.data(), stands.size());
    for (std::size_t u = 0; u < stands.size(); u++)
        if (stands[u] > 0.0) nuisances[block_of[u]].unknowns.push_back(static_cast<int>(u));
    return nuisances;
}

// Nuisances of one part with few rows first, those of this rank before those of several; then the motions of each
// part, then shared nuisances.
void order_blocks(std::vector<NuisanceBlock> nuisances, MotionRows &m)
{
    std::stable_sort(nuisances.begin(), nuisances.end(), [](const NuisanceBlock &a, const NuisanceBlock &b) {
        return std::make_pair(a.stage(), a.rows) < std::make_pair(b.stage(), b.rows);
    });
    m.column_of.assign(m.model().n_unknowns(), -1);
    int column = 0;
    const auto append = [&](int stage) {
        for (const NuisanceBlock &block : nuisances) {
            if (block.stage() != stage || (stage == 0 && !block.own)) continue;
            for (int u : block.unknowns) m.column_of[u] = column++;
            m.sizes.push_back(static_cast<int>(block.unknowns.size()));
        }
    };
    append(0);
    m.own_blocks = static_cast<int>(m.sizes.size()), m.own_columns = column;
    append(1);
    m.before_parts = static_cast<int>(m.sizes.size());
    for (PartMotions &part : m.motions) {
        part.block = static_cast<int>(m.sizes.size());
        part.column = column;
        m.sizes.push_back(part.basis.cols);
        column += part.basis.cols;
    }
    append(2);
}

// Whether a row is a component of the difference of two points as it was observed, and that vector in
// the axes of the coordinates, from the target's coefficients (orthogonal but for a scale).
bool is_difference(const UnitRows &rows, int row, double vector[3])
{
    const Equations &equations = *rows.equations;
    const Observation &o = rows.model->observations[equations.observation[row]];
    if (o.kind != Kind::baseline || o.motion_from != o.motion_to) return false;
    const int first = row - equations.component[row];
    std::fill(vector, vector + 3, 0.0);
    for (int c = 0; c < components(o.kind, rows.model->frame.space); c++) {
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

void append_combined(Terms &out, const PartMotions &part, const Answers &answers)
{
    for (int j = 0; j < part.basis.cols; j++)
        out.emplace_back(part.column + j, std::inner_product(answers.begin(), answers.end(), part.basis.col(j), 0.0));
}

} // namespace

int MotionRows::part_of_row(int row) const
{
    const Equations &equations = *rows->equations;
    for (std::size_t k = equations.begin[row]; k < equations.begin[row + 1]; k++)
        if (rows->is_coordinate(equations.column[k])) return parts.part_of[equations.column[k] / 3];
    return -1;
}

bool MotionRows::tells(int unknown) const
{
    const int column = column_of[unknown];
    return column >= 0 && (column < own_columns || leads(rows->ranks));
}

bool MotionRows::is_fixed(int unknown) const
{
    return rows->is_coordinate(unknown) && parts.part_of[unknown / 3] >= 0 && model().code[unknown] == Code::fixed;
}

// Answers of a row to the basic motions. Baselines turn and grow as observed: first coordinates of two
// copies of one point would hold a turn by the millimetre that they lie apart.
Answers MotionRows::answers(int row, const Similarity &s) const
{
    const Equations &equations = *rows->equations;
    Answers out = {};
    double vector[3];
    const bool difference = is_difference(*rows, row, vector);
    const int to = model().observations[equations.observation[row]].to;
    for (std::size_t k = equations.begin[row]; k < equations.begin[row + 1]; k++) {
        const int point = equations.column[k] / 3, axis = equations.column[k] % 3;
        if (!rows->is_coordinate(equations.column[k]) || (difference && point != to)) continue;
        const double *x = &model().value[3 * (std::size_t)point];
        if (difference)
            s.add_vector(rows->entry(row, k), vector, axis, out.data());
        else
            s.add_point(rows->entry(row, k), x, axis, out.data());
    }
    return out;
}

Answers MotionRows::answers_of_coordinate(int unknown, const Similarity &s) const
{
    Answers out;
    for (int m = 0; m < n_motions; m++) out[m] = s.of_point(m, &model().value[unknown - unknown % 3], unknown % 3);
    return out;
}

Terms MotionRows::terms(int row) const
{
    Terms out;
    find_terms(row, &out);
    return out;
}

void MotionRows::find_terms(int row, Terms *found) const
{
    const Equations &equations = *rows->equations;
    Terms &out = *found;
    out.clear();
    const int part = part_of_row(row);
    if (part >= 0) append_combined(out, motions[part], answers(row, motions[part].similarity));
    for (std::size_t k = equations.begin[row]; k < equations.begin[row + 1]; k++)
        if (column_of[equations.column[k]] >= 0) out.emplace_back(column_of[equations.column[k]], rows->entry(row, k));
}

Terms MotionRows::terms_of_fixed(int unknown) const
{
    Terms out;
    const PartMotions &part = motions[parts.part_of[unknown / 3]];
    append_combined(out, part, answers_of_coordinate(unknown, part.similarity));
    return out;
}

MotionRows motion_rows(const UnitRows &rows)
{
    MotionRows m;
    m.rows = &rows;
    m.parts = find_parts(rows);
    for (const std::vector<int> &points : m.parts.points) m.motions.push_back(part_motions(*rows.model, points));
    order_blocks(nuisance_blocks(m), m);
    return m;
}

} // namespace vornadjust
