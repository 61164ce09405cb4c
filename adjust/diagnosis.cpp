// Verdict on a network: datum, mechanisms, and what moves.

#include "adjust/diagnosis.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

namespace vornadjust {

namespace {

// Share of the network's size by which first coordinates are disturbed.
constexpr double disturbance = 1e-3;
// Directions this near to an axis are the axis.
constexpr double axis_tolerance = 1e-9;
constexpr double some_entry = 1e-7;
// A motion is judged by its standard deviation when it moves the points by at least this in the mean (the
// farthest by 1) in a way of its own; a turn about the axis of a long and narrow network moves nothing.
constexpr double worth_judging = 0.1;

bool plan_is_estimated(const Model &model, int point)
{
    return model.estimated(3 * point) || model.estimated(3 * point + 1);
}

// Estimated points that no usable row sees, and those of them whose height alone is wanted.
void tell_isolated(const Model &model, const Datum &datum, std::vector<Finding> *findings)
{
    Finding isolated, heights;
    isolated.lack = Lack::observations;
    heights.lack = Lack::heights;
    for (int p = 0; p < model.n_points; p++) {
        const bool plan = plan_is_estimated(model, p) || model.frame.space == Space::heights;
        if (datum.parts.part_of[p] < 0 && (plan_is_estimated(model, p) || model.estimated(3 * p + 2)))
            (plan ? isolated : heights).points.push_back(p);
    }
    for (Finding *f : {&isolated, &heights})
        if (!f->points.empty()) findings->push_back(std::move(*f));
}

std::array<int, n_kinds> sights_at(const UnitRows &rows, int point)
{
    std::array<int, n_kinds> out{};
    const Equations &e = *rows.equations;
    int last = -1;
    for (int r = 0; r < rows.rows(); r++) {
        if (!rows.tells(r) || e.observation[r] == last) continue;
        const auto first = e.column.begin() + static_cast<std::ptrdiff_t>(e.begin[r]);
        const auto end = e.column.begin() + static_cast<std::ptrdiff_t>(e.begin[r + 1]);
        if (std::none_of(first, end, [&](int u) { return rows.is_coordinate(u) && u / 3 == point; })) continue;
        last = e.observation[r];
        out[static_cast<int>(rows.model->observations[last].kind)]++;
    }
    return out;
}

bool is_height(const NamedMotion &m) { return std::fabs(m.direction[2]) > 1 - axis_tolerance; }

// The ways in which one point moves, as shifts: those of the null vectors, and axes that no row sees.
std::vector<NamedMotion> ways_of(const Bodies &bodies, int point, const std::vector<int> &unseen, bool moves)
{
    Dense ways(n_motions, 0);
    const auto append = [&](double x, double y, double z) {
        ways.a.insert(ways.a.end(), {x, y, z, 0, 0, 0, 0});
        ways.cols++;
    };
    for (int c = 0; c < bodies.movement.cols && moves; c++) {
        const double *d = bodies.movement.col(c) + 3 * point;
        append(d[0], d[1], d[2]);
    }
    for (int u : unseen)
        if (u / 3 == point) append(u % 3 == 0, u % 3 == 1, u % 3 == 2);
    return name_motions(bodies.similarity, ways);
}

// Points that move by themselves. Where nothing but the height moves they are named together.
void tell_single_points(const UnitRows &rows, const Datum &datum, const Bodies &bodies, const std::vector<int> &unseen,
                        std::vector<Finding> *findings)
{
    std::vector<int> points = bodies.single;
    for (int u : unseen)
        if (datum.parts.part_of[u / 3] >= 0) points.push_back(u / 3);
    std::sort(points.begin(), points.end());
    points.erase(std::unique(points.begin(), points.end()), points.end());
    Finding heights;
    heights.lack = Lack::heights;
    for (int p : points) {
        Finding one;
        one.lack = Lack::point;
        one.points = {p};
        const bool moves = std::binary_search(bodies.single.begin(), bodies.single.end(), p);
        one.motions = ways_of(bodies, p, unseen, moves);
        if (one.motions.size() == 1 && is_height(one.motions[0])) {
            heights.points.push_back(p);
            continue;
        }
        one.sights = sights_at(rows, p);
        findings->push_back(std::move(one));
    }
    if (heights.points.empty()) return;
    const auto same =
        std::find_if(findings->begin(), findings->end(), [](const Finding &f) { return f.lack == Lack::heights; });
    if (same == findings->end())
        findings->insert(findings->begin(), std::move(heights));
    else
        same->points.insert(same->points.end(), heights.points.begin(), heights.points.end());
}

void tell_bodies(const Bodies &bodies, std::vector<Finding> *findings)
{
    for (const Body &body : bodies.moving) {
        Finding finding;
        finding.lack = Lack::body;
        finding.points = body.points;
        finding.hinges = body.hinges;
        finding.motions = name_motions(bodies.similarity, body.motion);
        findings->push_back(std::move(finding));
    }
}

double largest_coordinate(const UnitRows &rows, const double *movement)
{
    double most = 0;
    for (int u = 0; u < 3 * rows.model->n_points; u++) most = std::max(most, std::fabs(movement[u]));
    return most;
}

// Combinations of the null vectors that move no point, in scaled unknowns.
Dense still_movements(const UnitRows &rows, const Dense &vectors)
{
    Triangle moved(vectors.cols);
    std::vector<double> row(vectors.cols);
    for (int u = 0; u < 3 * rows.model->n_points; u++) {
        for (int j = 0; j < vectors.cols; j++) row[j] = vectors(u, j);
        moved.add(row.data());
    }
    const SmallSvd d = small_svd(moved.matrix());
    const int moving = count_from(d.s, some_entry);
    Dense out(vectors.rows, vectors.cols - moving);
    for (int j = 0; j < out.cols; j++)
        for (int k = 0; k < vectors.cols; k++)
            for (int u = 3 * rows.model->n_points; u < vectors.rows; u++)
                out(u, j) += vectors(u, k) * d.v(k, moving + j) / rows.column_factor[u];
    return out;
}

void tell_unknowns(const UnitRows &rows, const Dense &vectors, std::vector<Finding> *findings)
{
    const Dense still = still_movements(rows, vectors);
    Finding finding;
    finding.lack = Lack::unknowns;
    for (int u = 3 * rows.model->n_points; u < still.rows; u++) {
        double most = 0;
        for (int j = 0; j < still.cols; j++) most = std::max(most, std::fabs(still(u, j)));
        if (most > some_entry) finding.unknowns.push_back(u);
    }
    if (!finding.unknowns.empty()) findings->push_back(std::move(finding));
}

// When the search of bodies finds nothing to say: the points that move.
void tell_unnamed(const UnitRows &rows, const Dense &vectors, std::vector<Finding> *findings)
{
    if (vectors.cols == 0 || !findings->empty()) return;
    Finding finding;
    for (int p = 0; p < rows.model->n_points; p++)
        for (int j = 0; j < vectors.cols; j++) {
            const double most = largest_coordinate(rows, vectors.col(j)) * some_entry;
            const double *d = vectors.col(j) + 3 * p;
            if (std::max({std::fabs(d[0]), std::fabs(d[1]), std::fabs(d[2])}) <= most) continue;
            finding.points.push_back(p);
            break;
        }
    findings->push_back(std::move(finding));
}

// A part with one point to move and motions that no datum point holds: the point, by its own ways.
void tell_only_point(const UnitRows &rows, const Datum &datum, std::vector<Finding> *findings)
{
    const std::vector<int> points = movable_points(*rows.model, datum);
    if (datum.state != DatumState::not_carried || points.size() != 1) return;
    Dense ways(n_motions, datum.motions.cols);
    for (int j = 0; j < ways.cols; j++)
        std::copy(datum.motions.col(j) + 3 * points[0], datum.motions.col(j) + 3 * points[0] + 3, ways.col(j));
    Finding one;
    one.lack = Lack::point;
    one.points = points;
    one.motions = name_motions(datum.similarity, ways);
    one.sights = sights_at(rows, points[0]);
    findings->push_back(std::move(one));
}

// Verdict at the values of the model.
Determinacy judge_here(const Model &model)
{
    Equations equations = pattern(model);
    fill(model, Derivatives::invariant, &equations);
    const UnitRows rows = unit_rows(model, equations);
    Determinacy found;
    found.datum = find_datum(rows);
    tell_isolated(model, found.datum, &found.findings);
    if (found.datum.state == DatumState::loose) return found;
    found.mechanisms = find_mechanisms(rows, found.datum);
    const Dense &vectors = found.mechanisms.vectors;
    if (!found.mechanisms.none()) {
        const Bodies bodies = find_bodies(rows, found.datum, vectors);
        tell_single_points(rows, found.datum, bodies, found.mechanisms.unseen, &found.findings);
        tell_bodies(bodies, &found.findings);
        tell_unknowns(rows, vectors, &found.findings);
        tell_unnamed(rows, vectors, &found.findings);
    }
    tell_only_point(rows, found.datum, &found.findings);
    return found;
}

Model disturbed(Model model, const std::vector<char> &made)
{
    std::vector<int> all(model.n_points);
    std::iota(all.begin(), all.end(), 0);
    const double size = disturbance * similarity(model, all).size;
    std::mt19937 random(1);
    std::uniform_real_distribution<double> share(-1, 1);
    for (int u = 0; u < 3 * model.n_points; u++)
        if (made[u / 3] && model.estimated(u)) model.value[u] += size * share(random);
    return model;
}

bool any_made(const std::vector<char> &made)
{
    return std::any_of(made.begin(), made.end(), [](char m) { return m != 0; });
}

// Rows of the inverse of the motions over the estimated coordinates: turn and scale of a correction in
// the sense of least squares.
Dense motion_estimates(const Model &model, const Similarity &s)
{
    std::vector<int> coordinates;
    for (int u = 0; u < 3 * model.n_points; u++)
        if (model.estimated(u)) coordinates.push_back(u);
    Dense moved(static_cast<int>(coordinates.size()), n_motions);
    for (int i = 0; i < moved.rows; i++)
        for (int m = 0; m < n_motions; m++) {
            const int u = coordinates[i];
            moved(i, m) = s.of_point(m, &model.value[u - u % 3], u % 3);
        }
    const SmallSvd d = small_svd(moved);
    const int rank = d.s[0] > 0 ? count_from(d.s, 1e-9 * d.s[0]) : 0;
    Dense out(model.n_unknowns(), n_motions);
    for (int m = 0; m < n_motions; m++)
        for (int k = 0; k < rank; k++)
            for (int i = 0; i < moved.rows; i++) out(coordinates[i], m) += d.v(m, k) / d.s[k] * d.u(i, k);
    return out;
}

} // namespace

std::vector<int> movable_points(const Model &model, const Datum &datum)
{
    std::vector<int> out;
    for (int p = 0; p < model.n_points; p++)
        if (datum.parts.part_of[p] >= 0 && (plan_is_estimated(model, p) || model.estimated(3 * p + 2)))
            out.push_back(p);
    return out;
}

Determinacy judge(const Model &model, const std::vector<char> &made)
{
    Determinacy found = judge_here(model);
    if (found.findings.empty() || !any_made(made)) return found;
    const Determinacy again = judge_here(disturbed(model, made));
    if (again.findings.empty()) found.findings.clear();
    return found;
}

std::vector<WeakMotion> weak_motions(const Model &model, const Datum &datum, const std::function<void(double *)> &apply)
{
    std::vector<int> seen;
    for (int p = 0; p < model.n_points; p++)
        if (datum.parts.part_of[p] >= 0) seen.push_back(p);
    const Similarity s = similarity(model, seen);
    const Dense estimates = motion_estimates(model, s);
    std::vector<WeakMotion> weak;
    for (int m = 3; m < n_motions; m++) {
        if (!datum.holding[m].exists || datum.holding[m].open) continue;
        const double own = 1 / std::sqrt(std::inner_product(estimates.col(m), estimates.col(m) + estimates.rows,
                                                            estimates.col(m), 0.0) *
                                         static_cast<double>(seen.size()));
        if (!(own > worth_judging)) continue;
        std::vector<double> column(estimates.col(m), estimates.col(m) + estimates.rows);
        apply(column.data());
        const double variance =
            std::inner_product(column.begin(), column.end(), estimates.col(m), 0.0) / (s.size * s.size);
        const double deviation = std::sqrt(std::max(variance, 0.0));
        if (deviation > weak_motion) weak.push_back({m, deviation});
    }
    return weak;
}

} // namespace vornadjust
