// Counts of what holds the motions of a network.

#include "adjust/holding.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "adjust/over_ranks.h"

namespace vornadjust {

namespace {

// A kind holds a motion when its best answer reaches this share of the best of all; less is by the way
// (heights of instruments give directions a hold on the scale).
constexpr double worth_telling = 0.05;
constexpr double answer = 1e-7;

MotionKind kind_of(int motion)
{
    return motion < 3 ? MotionKind::shift : motion < 6 ? MotionKind::turn : MotionKind::scale;
}

// Whether an open motion has a part in a basic one, counting a turn as nothing but a turn.
bool is_open(const std::vector<NamedMotion> &open, int motion)
{
    const MotionKind kind = kind_of(motion);
    for (const NamedMotion &m : open)
        if (m.kind == kind && (motion == 6 || std::fabs(m.direction[motion % 3]) > answer)) return true;
    return false;
}

Kind kind_of_row(const MotionRows &m, int row)
{
    return m.model().observations[m.rows->equations->observation[row]].kind;
}

bool is_weighted_coordinate(const MotionRows &m, int row)
{
    return m.rows->tells(row) && kind_of_row(m, row) == Kind::unknown && m.part_of_row(row) >= 0;
}

// A basic motion of all parts, other unknowns going along as far as they can.
struct Basic {
    int motion;
    std::vector<double> vector;            // over the columns of the elimination
    std::array<double, n_kinds> most = {}; // answer of an observation, by kind
};

Basic basic_motion(const MotionRows &m, const BlockElimination &elimination, int motion)
{
    Basic basic;
    basic.motion = motion;
    basic.vector.assign(elimination.columns(), 0.0);
    for (const PartMotions &part : m.motions)
        for (int i = 0; i < part.basis.cols; i++) basic.vector[part.column + i] = part.basis(motion, i);
    elimination.complete(basic.vector, m.before_parts);
    return basic;
}

double size_of_answer(const Terms &terms, const std::vector<double> &vector)
{
    double sum = 0;
    for (const auto &[column, entry] : terms) sum += entry * vector[column];
    return std::fabs(sum);
}

// Sizes of the answers of all rows of observations, motion by motion in a row; 0 for the others.
std::vector<double> sizes_of_answers(const MotionRows &m, std::vector<Basic> &basics)
{
    const std::size_t n = basics.size();
    std::vector<double> sizes(n * m.rows->rows(), 0.0);
    Terms terms;
    for (int r = 0; r < m.rows->rows(); r++) {
        if (!m.rows->tells(r) || is_weighted_coordinate(m, r)) continue;
        m.find_terms(r, &terms);
        const int kind = static_cast<int>(kind_of_row(m, r));
        for (std::size_t i = 0; i < n; i++) {
            const double size = sizes[r * n + i] = size_of_answer(terms, basics[i].vector);
            basics[i].most[kind] = std::max(basics[i].most[kind], size);
        }
    }
    for (Basic &basic : basics) most(m.rows->ranks, basic.most.data(), basic.most.size());
    return sizes;
}

void count_observations(const MotionRows &m, std::vector<Basic> &basics, std::array<Holding, n_motions> &out)
{
    const std::size_t n = basics.size();
    const std::vector<double> sizes = sizes_of_answers(m, basics);
    for (std::size_t i = 0; i < n; i++) {
        const Basic &basic = basics[i];
        const double least = worth_telling * *std::max_element(basic.most.begin(), basic.most.end());
        int last = -1;
        for (int r = 0; r < m.rows->rows(); r++) {
            const int kind = static_cast<int>(kind_of_row(m, r)), observation = m.rows->equations->observation[r];
            if (!(sizes[r * n + i] > answer) || basic.most[kind] < least || observation == last) continue;
            last = observation;
            out[basic.motion].of_kind[kind]++;
        }
    }
}

// Held and weighted coordinates of a part, a row of answers each; the held ones are counted by one rank.
struct Anchors {
    std::vector<Answers> rows;
    std::size_t fixed = 0;        // the first of them
    Triangle triangle{n_motions}; // of the rows of all ranks
};

// Each rank brings the triangle of its own rows of each part.
void find_triangles(Ranks *ranks, std::vector<Anchors> &anchors)
{
    std::vector<double> own; // part and entries of the rows of triangles
    for (std::size_t p = 0; p < anchors.size(); p++) {
        if (anchors[p].rows.empty()) continue;
        Triangle triangle(n_motions);
        for (Answers row : anchors[p].rows) triangle.add(row.data());
        for (int i = 0; i < n_motions; i++) {
            own.push_back((double)p);
            for (int j = 0; j < n_motions; j++) own.push_back(triangle.matrix()(i, j));
        }
    }
    std::vector<double> all = gather(ranks, own);
    for (std::size_t at = 0; at < all.size(); at += 1 + n_motions)
        anchors[(std::size_t)all[at]].triangle.add(&all[at + 1]);
}

std::vector<Anchors> anchors(const MotionRows &m)
{
    std::vector<Anchors> out(m.motions.size());
    for (int u = 0; u < 3 * m.model().n_points && leads(m.rows->ranks); u++) {
        if (!m.is_fixed(u)) continue;
        const int part = m.parts.part_of[u / 3];
        out[part].rows.push_back(m.answers_of_coordinate(u, m.motions[part].similarity));
        out[part].fixed++;
    }
    for (int r = 0; r < m.rows->rows(); r++) {
        if (!is_weighted_coordinate(m, r)) continue;
        const int part = m.part_of_row(r);
        out[part].rows.push_back(m.answers(r, m.motions[part].similarity));
    }
    find_triangles(m.rows->ranks, out);
    return out;
}

// Answers of anchors to a motion beside what motions of lower kinds explain: shifts for a turn, shifts and
// turns for the scale. Of all anchors A = Q R with the triangle R, so that least squares need R alone.
std::vector<double> own_answers(const Anchors &anchors, int motion)
{
    const int lower = motion < 3 ? 0 : motion < 6 ? 3 : 6;
    const Dense &r = anchors.triangle.matrix();
    const SmallSvd d = small_svd(column_range(r, 0, lower));
    Answers explained = {}; // by each of the lower motions
    for (int k = 0; k < count_from(d.s, answer); k++) {
        const double along = std::inner_product(d.u.col(k), d.u.col(k) + n_motions, r.col(motion), 0.0) / d.s[k];
        for (int j = 0; j < lower; j++) explained[j] += along * d.v(j, k);
    }
    std::vector<double> out;
    out.reserve(anchors.rows.size());
    for (const Answers &row : anchors.rows)
        out.push_back(row[motion] - std::inner_product(row.begin(), row.end(), explained.begin(), 0.0));
    return out;
}

void count_anchors(const Anchors &anchors, int motion, Holding &holding)
{
    const std::vector<double> own = own_answers(anchors, motion);
    for (std::size_t i = 0; i < own.size(); i++)
        if (std::fabs(own[i]) > answer) (i < anchors.fixed ? holding.fixed : holding.weighted)++;
}

// Makes the counts of one rank those of all.
void add_up(Ranks *ranks, std::array<Holding, n_motions> &out)
{
    std::vector<double> counts;
    for (const Holding &h : out) {
        counts.insert(counts.end(), h.of_kind.begin(), h.of_kind.end());
        counts.insert(counts.end(), {(double)h.fixed, (double)h.weighted});
    }
    sum(ranks, counts.data(), counts.size());
    const double *at = counts.data();
    for (Holding &h : out) {
        for (int &count : h.of_kind) count = (int)*at++;
        h.fixed = (int)*at++, h.weighted = (int)*at++;
    }
}

} // namespace

std::array<Holding, n_motions> count_holding(const MotionRows &m, const BlockElimination &elimination,
                                             const std::vector<NamedMotion> &open)
{
    std::array<Holding, n_motions> out;
    const std::vector<Anchors> of_parts = anchors(m);
    std::vector<Basic> basics;
    for (int motion = 0; motion < n_motions; motion++) {
        Holding &holding = out[motion];
        for (const PartMotions &part : m.motions)
            for (int i = 0; i < part.basis.cols; i++) holding.exists |= std::fabs(part.basis(motion, i)) > answer;
        holding.open = is_open(open, motion);
        if (!holding.exists || holding.open) continue;
        basics.push_back(basic_motion(m, elimination, motion));
        for (const Anchors &anchors_of_part : of_parts) count_anchors(anchors_of_part, motion, holding);
    }
    count_observations(m, basics, out);
    add_up(m.rows->ranks, out);
    return out;
}

} // namespace vornadjust
