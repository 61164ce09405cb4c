// Bodies among the points of a network, from its null vectors.
//
// Two random combinations of the null vectors stand for all of them: points that are one body in all are
// one in any combination, and others are not but by chance. Motions are proposed by small groups of
// neighbours and accepted by how many points follow.

#include "adjust/bodies.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numeric>
#include <random>

namespace vornadjust {

namespace {

// Groups of neighbours that propose a motion for each body.
constexpr int proposals = 400;
// Motions that a group of points does not fix (the turn of two points about their line) are left out:
// singular values beside the largest, for groups small beside the network.
constexpr double fixed_by_points = 1e-9;

using Points = std::vector<int>;

// Motions that points may share: what each does to a coordinate of a point.
struct Family {
    int count;
    std::function<double(int motion, int point, int axis)> at;
};

class BodySearch {
public:
    BodySearch(const UnitRows &unit, const Datum &datum, const Dense &movements);
    Bodies run();

private:
    Family basic_motions(int n) const;
    Dense fit(const Points &points, const Dense &field, const Family &family) const;
    Dense simplest_fit(const Points &points, const Dense &field) const;
    double displacement(int point, int axis, const Family &family, const double *motion) const;
    bool follows(int point, const Dense &field, const Family &family, const Dense &motion) const;
    Points followers(const Points &candidates, const Dense &field, const Family &family, const Dense &motion) const;
    Points proposal(int seed, const std::vector<char> &allowed);
    Points largest_body(const Points &candidates, const Dense &field, const Family &family, bool prefer_anchored);
    Dense combined(const Dense &field);
    void take_rest();
    void group_moving();
    Body described(const Points &points) const;
    int anchors(const Points &points) const;
    Points anchored_points() const;
    std::size_t dimensions() const;
    bool exists(int point, int axis) const { return model.code[3 * point + axis] != Code::absent; }

    const Model &model;
    Bodies out;
    Points all;                     // that rows see
    std::vector<char> anchored;     // [coordinates] fixed, weighted or imported
    std::vector<Points> neighbours; // [points] that share rows
    std::vector<int> motions;       // basic motions that a body may make
    Family any, open;               // these, by the seven coefficients; the open motions of the network
    std::mt19937 random{20010};
};

bool scale_may_change(const Datum &datum)
{
    const Holding &scale = datum.holding[6];
    const auto last = scale.of_kind.begin() + static_cast<int>(Kind::unknown);
    return scale.exists && (scale.open || std::accumulate(scale.of_kind.begin(), last, 0) == 0);
}

void sort_unique(Points &points)
{
    std::sort(points.begin(), points.end());
    points.erase(std::unique(points.begin(), points.end()), points.end());
}

std::vector<Points> neighbours_in_rows(const UnitRows &u)
{
    std::vector<Points> out(u.model->n_points);
    const Equations &e = *u.equations;
    for (int r = 0; r < u.rows(); r++) {
        Points seen;
        for (std::size_t k = e.begin[r]; k < e.begin[r + 1] && u.tells(r); k++)
            if (u.is_coordinate(e.column[k])) seen.push_back(e.column[k] / 3);
        sort_unique(seen);
        for (int p : seen)
            for (int q : seen)
                if (p != q) out[p].push_back(q);
    }
    for (Points &list : out) sort_unique(list);
    return out;
}

// Columns with largest entry 1; those that are rounding of the largest of all go.
Dense scaled(const Dense &a)
{
    Dense out(a.rows, 0);
    double most = 0;
    for (int j = 0; j < a.cols; j++) most = std::max(most, largest(a.col(j), a.rows));
    for (int j = 0; j < a.cols; j++) {
        const double size = largest(a.col(j), a.rows);
        if (!(size > no_displacement * most)) continue;
        std::transform(a.col(j), a.col(j) + a.rows, std::back_inserter(out.a), [&](double x) { return x / size; });
        out.cols++;
    }
    return out;
}

// Coordinates of the movements and of the open motions.
Dense coordinate_field(const Model &model, const Dense &movements, const Dense &open)
{
    Dense out(model.n_unknowns(), movements.cols + open.cols);
    for (int j = 0; j < out.cols; j++) {
        const double *from = j < movements.cols ? movements.col(j) : open.col(j - movements.cols);
        std::copy(from, from + 3 * (std::ptrdiff_t)model.n_points, out.col(j));
    }
    return scaled(out);
}

std::vector<char> anchored_coordinates(const UnitRows &u)
{
    std::vector<char> out(3 * (std::size_t)u.model->n_points);
    for (std::size_t k = 0; k < out.size(); k++) out[k] = u.model->code[k] == Code::fixed;
    for (const Observation &o : u.model->observations)
        if (o.use && o.kind == Kind::unknown && u.is_coordinate(o.unknown)) out[o.unknown] = 1;
    return out;
}

BodySearch::BodySearch(const UnitRows &unit, const Datum &datum, const Dense &movements)
    : model(*unit.model), anchored(anchored_coordinates(unit)), neighbours(neighbours_in_rows(unit))
{
    for (int p = 0; p < model.n_points; p++)
        if (datum.parts.part_of[p] >= 0) all.push_back(p);
    out.similarity = similarity(model, all);
    for (int m = 0; m < n_motions; m++)
        if (out.similarity.exists(m) && (m < 6 || scale_may_change(datum))) motions.push_back(m);
    out.movement = coordinate_field(model, movements, datum.motions);
    any = basic_motions(n_motions);
    open = {datum.motions.cols, [&](int m, int point, int axis) { return datum.motions(3 * point + axis, m); }};
}

// The first n basic motions, as far as a body may make them.
Family BodySearch::basic_motions(int n) const
{
    std::array<bool, n_motions> allowed = {};
    for (int m : motions) allowed[m] = m < n;
    return {n_motions, [this, allowed](int m, int point, int axis) {
                return allowed[m] ? out.similarity.of_point(m, &model.value[3 * (std::size_t)point], axis) : 0.0;
            }};
}

double BodySearch::displacement(int point, int axis, const Family &family, const double *motion) const
{
    double sum = 0;
    for (int m = 0; m < family.count; m++)
        if (motion[m] != 0) sum += motion[m] * family.at(m, point, axis);
    return sum;
}

// The motions of a family, its size by columns of the field, that fit what the points do.
Dense BodySearch::fit(const Points &points, const Dense &field, const Family &family) const
{
    Dense a(3 * static_cast<int>(points.size()), family.count);
    for (int i = 0; i < a.rows; i++)
        for (int j = 0; j < a.cols; j++)
            if (exists(points[i / 3], i % 3)) a(i, j) = family.at(j, points[i / 3], i % 3);
    const SmallSvd d = small_svd(a);
    const int rank = d.s.empty() || d.s[0] == 0 ? 0 : count_from(d.s, fixed_by_points * d.s[0]);
    Dense motion(family.count, field.cols);
    for (int c = 0; c < field.cols; c++)
        for (int k = 0; k < rank; k++) {
            double sum = 0;
            for (int i = 0; i < a.rows; i++) sum += d.u(i, k) * field(3 * points[i / 3] + i % 3, c);
            for (int j = 0; j < a.cols; j++) motion(j, c) += d.v(j, k) * sum / d.s[k];
        }
    return motion;
}

bool BodySearch::follows(int point, const Dense &field, const Family &family, const Dense &motion) const
{
    for (int c = 0; c < field.cols; c++)
        for (int k = 0; k < 3; k++)
            if (exists(point, k) &&
                !(std::fabs(field(3 * point + k, c) - displacement(point, k, family, motion.col(c))) < no_displacement))
                return false;
    return true;
}

Points BodySearch::followers(const Points &candidates, const Dense &field, const Family &family,
                             const Dense &motion) const
{
    Points follow;
    std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(follow),
                 [&](int p) { return follows(p, field, family, motion); });
    return follow;
}

// Shifts where they do: points in line leave the turn about it to chance.
Dense BodySearch::simplest_fit(const Points &points, const Dense &field) const
{
    const Family shifts = basic_motions(3);
    const Dense shift = fit(points, field, shifts);
    return followers(points, field, shifts, shift).size() == points.size() ? shift : fit(points, field, any);
}

// Two random combinations of the columns, largest entry 1.
Dense BodySearch::combined(const Dense &field)
{
    std::uniform_real_distribution<double> weight(0.5, 1);
    Dense sum(field.rows, std::min(field.cols, 2));
    for (int c = 0; c < sum.cols; c++)
        for (int j = 0; j < field.cols; j++) {
            const double w = weight(random) * (random() % 2 ? 1 : -1);
            for (int i = 0; i < field.rows; i++) sum(i, c) += w * field(i, j);
        }
    return scaled(sum);
}

// A point with as many of its neighbours as fix a motion.
Points BodySearch::proposal(int seed, const std::vector<char> &allowed)
{
    Points near;
    std::copy_if(neighbours[seed].begin(), neighbours[seed].end(), std::back_inserter(near),
                 [&](int p) { return allowed[p]; });
    std::shuffle(near.begin(), near.end(), random);
    const bool line = out.similarity.space == Space::heights, plane = out.similarity.space == Space::plane;
    const std::size_t needed = line ? (motions.size() > 1 ? 1 : 0) : plane ? 1 : 2;
    if (near.size() > needed) near.resize(needed);
    near.push_back(seed);
    return near;
}

std::size_t BodySearch::dimensions() const
{
    const Space space = out.similarity.space;
    return space == Space::heights ? 1 : space == Space::plane ? 2 : 3;
}

int BodySearch::anchors(const Points &points) const
{
    int n = 0;
    for (int p : points)
        for (int k = 0; k < 3; k++) n += anchored[3 * (std::size_t)p + k];
    return n;
}

// Points anchored in all coordinates by themselves, which need not be neighbours.
Points BodySearch::anchored_points() const
{
    Points anchored_ones;
    std::copy_if(all.begin(), all.end(), std::back_inserter(anchored_ones), [&](int p) {
        for (int k = 0; k < 3; k++)
            if (exists(p, k) && !anchored[3 * (std::size_t)p + k]) return false;
        return true;
    });
    return anchored_ones;
}

Points BodySearch::largest_body(const Points &candidates, const Dense &field, const Family &family,
                                bool prefer_anchored)
{
    std::vector<char> allowed(model.n_points, 0);
    for (int p : candidates) allowed[p] = 1;
    Points best;
    int most_anchors = -1;
    const auto consider = [&](const Points &proposed) {
        const Points follow = followers(candidates, field, family, fit(proposed, field, family));
        const int held = prefer_anchored ? anchors(follow) : 0;
        if (held < most_anchors || (held == most_anchors && follow.size() <= best.size())) return;
        best = follow;
        most_anchors = held;
    };
    if (prefer_anchored) consider(anchored_points());
    const std::size_t n = candidates.size();
    for (std::size_t i = 0; i < proposals && best.size() < n; i++)
        consider(proposal(candidates[n > proposals ? i * n / proposals : i % n], allowed));
    return best;
}

// What is at rest may go along with the open motions of the network, but with no others.
void BodySearch::take_rest()
{
    out.resting = largest_body(all, combined(out.movement), open, true);
    const Dense motion = fit(out.resting, out.movement, open);
    for (int c = 0; c < motion.cols; c++)
        for (int p : all)
            for (int k = 0; k < 3; k++)
                if (exists(p, k)) out.movement(3 * p + k, c) -= displacement(p, k, open, motion.col(c));
    // Motions of the whole network are rounding now; beside true movements they go.
    Dense &m = out.movement;
    for (double &x : m.a)
        if (std::fabs(x) < no_displacement) x = 0;
    m = scaled(m);
}

Body BodySearch::described(const Points &points) const
{
    Body body;
    body.points = points;
    Points fitted = points;
    for (int p : points)
        for (int q : neighbours[p]) {
            if (!std::binary_search(out.resting.begin(), out.resting.end(), q)) continue;
            if (std::find(fitted.begin(), fitted.end(), q) != fitted.end()) continue;
            fitted.push_back(q);
            if (followers(fitted, out.movement, any, fit(fitted, out.movement, any)).size() < fitted.size())
                fitted.pop_back();
        }
    const SmallSvd d = small_svd(simplest_fit(fitted, out.movement));
    const int rank = d.s.empty() || d.s[0] == 0 ? 0 : count_from(d.s, no_displacement * d.s[0]);
    body.motion = column_range(d.u, 0, rank);
    body.hinges = followers(out.resting, Dense(model.n_unknowns(), rank), any, body.motion);
    return body;
}

void BodySearch::group_moving()
{
    const auto moves = [&](int p) {
        for (int c = 0; c < out.movement.cols; c++)
            if (largest(out.movement.col(c) + 3 * (std::ptrdiff_t)p, 3) > no_displacement) return true;
        return false;
    };
    Points left;
    std::copy_if(all.begin(), all.end(), std::back_inserter(left), moves);
    const Dense field = combined(out.movement);
    while (!left.empty()) {
        const Points body = largest_body(left, field, any, false);
        // Points that any motion could fit are no body.
        if (body.size() < 2 || body.size() * dimensions() <= motions.size()) break;
        out.moving.push_back(described(body));
        left.erase(std::remove_if(left.begin(), left.end(),
                                  [&](int p) { return std::binary_search(body.begin(), body.end(), p); }),
                   left.end());
    }
    out.single = left;
}

Bodies BodySearch::run()
{
    if (out.movement.cols == 0) {
        out.resting = all;
        return std::move(out);
    }
    take_rest();
    group_moving();
    return std::move(out);
}

} // namespace

Bodies find_bodies(const UnitRows &rows, const Datum &datum, const Dense &movements)
{
    return BodySearch(rows, datum, movements).run();
}

} // namespace vornadjust
