#include "host/preparation/start/shape.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "host/preparation/start/held.h"

namespace vornhost::start {

namespace {

namespace va = vornadjust;
using Vec = va::Vec3<double>;

constexpr double thin = 0.01;   // of the length of a figure: less does not tell its two sides apart
constexpr double exact = 1e-6;  // the same of points on a line
constexpr double none = 1e-9;   // the same of a figure that has no third direction
constexpr double steady = 1e-4; // the same of lengths that two figures have in common
constexpr size_t most_others = 50;

double length_of(const Vec &v) { return std::sqrt(va::dot(v, v)); }

// Places of some points, in the plan or in space.
struct Figure {
    std::vector<int> points;
    std::vector<Vec> places;
};

Figure figure_of(const va::Model &model, std::vector<int> points, bool in_space)
{
    Figure f;
    f.points = std::move(points);
    f.places.reserve(f.points.size());
    for (const int p : f.points) {
        const double *x = &model.value[3 * (size_t)p];
        f.places.push_back({x[0], x[1], in_space ? x[2] : 0.0});
    }
    return f;
}

std::vector<int> placed_points(const Trial &t)
{
    std::vector<int> all;
    for (int p = 0; p < t.model.n_points; p++)
        if (t.placed[(size_t)p]) all.push_back(p);
    return all;
}

// Axes of a figure: along its length, towards the point farthest from there, and towards the one farthest from the
// plane of both. Of another figure of the same points the same corners make axes of that one, mirrored where it is.
struct Axes {
    std::array<size_t, 4> corner{};        // from the first to the second
    std::array<Vec, 3> axis{};             // of length 1, or 0 where the figure has no extent
    std::array<double, 3> extent{0, 0, 0}; // metres
};

// What the first `known` axes leave of the way from the first corner to a place.
Vec rest(const Figure &f, const Axes &a, size_t i, size_t known)
{
    Vec v = f.places[i] - f.places[a.corner[0]];
    for (size_t k = 0; k < known; k++) v = v - va::dot(v, a.axis[k]) * a.axis[k];
    return v;
}

size_t farthest(const Figure &f, const Axes &a, size_t known)
{
    size_t at = 0;
    double most = -1.0;
    for (size_t i = 0; i < f.places.size(); i++) {
        const double off = length_of(rest(f, a, i, known));
        if (off > most) most = off, at = i;
    }
    return at;
}

void set_axis(const Figure &f, size_t k, Axes *a)
{
    const Vec v = rest(f, *a, a->corner[k + 1], k);
    a->extent[k] = length_of(v);
    if (a->extent[k] > none * a->extent[0]) a->axis[k] = (1.0 / a->extent[k]) * v;
}

// The first `corners` places are corners.
Axes axes_of(const Figure &f, size_t corners = 0)
{
    Axes a;
    if (f.places.empty()) return a;
    a.corner[0] = corners > 0 ? 0 : farthest(f, a, 0);
    for (size_t k = 0; k < 3; k++) {
        a.corner[k + 1] = corners > k + 1 ? k + 1 : farthest(f, a, k);
        set_axis(f, k, &a);
    }
    return a;
}

Axes axes_at(const Figure &f, const std::array<size_t, 4> &corner)
{
    Axes a;
    a.corner = corner;
    for (size_t k = 0; k < 3; k++) set_axis(f, k, &a);
    return a;
}

bool has_sides(const Axes &a, size_t dimension) { return a.extent[dimension - 1] > thin * a.extent[0]; }

// Points that lie as far from most others in one figure as in the other: what stands elsewhere in one of them must not
// turn the whole. All points where there are too few. Others are some, spread over the list.
std::vector<int> steady_points(const Figure &a, const Figure &b)
{
    const size_t n = a.points.size(), step = n / most_others + 1;
    const double near = steady * axes_of(a).extent[0];
    std::vector<int> all;
    for (size_t i = 0; i < n; i++) {
        int kept = 0, others = 0;
        for (size_t j = 0; j < n; j += step, others++)
            kept += std::fabs(length_of(a.places[i] - a.places[j]) - length_of(b.places[i] - b.places[j])) < near;
        if (2 * kept > others) all.push_back(a.points[i]);
    }
    return all.size() < 4 ? a.points : all;
}

// The first ones are held.
std::vector<int> points_given_in_space(const va::Model &model, const Given &given)
{
    std::vector<int> all;
    for (int p = 0; p < model.n_points; p++)
        if (given.plan(p) && given.height(p)) all.push_back(p);
    const std::vector<int> held = held_in_space(model);
    std::stable_partition(all.begin(), all.end(),
                          [&](int p) { return std::find(held.begin(), held.end(), p) != held.end(); });
    return all;
}

Vec across(const Vec &a, const Vec &b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }

// Axes of length 1 where a figure has no extent, so that they are right-handed.
Axes completed(Axes a)
{
    if (!(a.extent[0] > 0.0)) a.axis[0] = {1, 0, 0};
    if (!(a.extent[1] > none * a.extent[0])) {
        const Vec beside = across(a.axis[0], std::fabs(a.axis[0].z) < 0.9 ? Vec{0, 0, 1} : Vec{1, 0, 0});
        a.axis[1] = (1.0 / length_of(beside)) * beside;
    }
    if (!(a.extent[2] > thin * a.extent[0])) a.axis[2] = across(a.axis[0], a.axis[1]);
    return a;
}

// Moves all points of a start by what brings the corners of one figure to those of another.
void move_by_corners(const Figure &from, const Figure &to, const Axes &to_axes, const std::vector<int> &points,
                     Trial *t)
{
    const Axes target = completed(to_axes);
    Axes source = axes_at(from, to_axes.corner);
    if (!has_sides(to_axes, 3)) source.extent[2] = 0.0;
    source = completed(source);
    const Vec origin = from.places[to_axes.corner[0]];
    for (const int p : points) {
        double *x = &t->model.value[3 * (size_t)p];
        const Vec way = Vec{x[0], x[1], x[2]} - origin;
        Vec place = to.places[to_axes.corner[0]];
        for (size_t k = 0; k < 3; k++) place = place + va::dot(way, source.axis[k]) * target.axis[k];
        x[0] = place.x, x[1] = place.y, x[2] = place.z;
    }
}

} // namespace

int points_that_tell_side(const Trial &t, const Given &given)
{
    const va::Model &m = t.model;
    if (m.frame.space == va::Space::heights) return 0;
    const size_t dimension = is_shape_alone(m) ? 3 : 2;
    if (!has_sides(axes_of(figure_of(m, placed_points(t), dimension == 3)), dimension)) return 0;
    if (dimension == 3) {
        const Figure known = figure_of(m, points_given_in_space(m, given), true);
        return has_sides(axes_of(known), 3) ? 0 : 4;
    }
    const Held held = held_by(m, given);
    return held.side || held.points.size() > 1 ? 0 : 3;
}

std::optional<Trial> image_in_line(const Trial &t, const Given &given)
{
    if (t.model.frame.space == va::Space::heights || is_shape_alone(t.model)) return std::nullopt;
    const Held held = held_by(t.model, given);
    if (held.side || held.points.size() < 2) return std::nullopt;
    const Axes line = axes_of(figure_of(t.model, held.points, false));
    if (!(line.extent[0] > 0.0) || line.extent[1] > exact * line.extent[0]) return std::nullopt;
    const double *from = &t.model.value[3 * (size_t)held.points[line.corner[0]]];
    Trial image = t;
    for (int p = 0; p < t.model.n_points; p++) {
        double *x = &image.model.value[3 * (size_t)p];
        const Vec way{x[0] - from[0], x[1] - from[1], 0.0};
        const Vec across = way - va::dot(way, line.axis[0]) * line.axis[0];
        x[0] -= 2.0 * across.x;
        x[1] -= 2.0 * across.y;
    }
    return image;
}

void move_shape_onto(const Trial &best, Trial *other)
{
    const std::vector<int> points = placed_points(best);
    const Figure all = figure_of(best.model, points, true), others = figure_of(other->model, points, true);
    const Figure to = figure_of(best.model, steady_points(all, others), true);
    if (to.points.empty()) return;
    move_by_corners(figure_of(other->model, to.points, true), to, axes_of(to), points, other);
}

void place_as_given(const va::Model &as_given, const Given &given, Trial *t)
{
    const Figure to = figure_of(as_given, points_given_in_space(as_given, given), true);
    if (to.points.empty()) return;
    const std::vector<int> held = held_in_space(as_given);
    const Axes axes = axes_of(to, std::min(held.size(), to.points.size()));
    move_by_corners(figure_of(t->model, to.points, true), to, axes, placed_points(*t), t);
    for (size_t u = 0; u < 3 * (size_t)as_given.n_points; u++)
        if (!as_given.estimated((int)u)) t->model.value[u] = as_given.value[u];
}

} // namespace vornhost::start
