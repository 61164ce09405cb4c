#include "host/preparation/start/shape.h"

#include <array>
#include <cmath>
#include <vector>

#include "host/preparation/start/held.h"

namespace vornhost::start {

namespace {

namespace va = vornadjust;
using Vec = va::Vec3<double>;

constexpr double thin = 0.01;  // of the length of a figure: less does not tell its two sides apart
constexpr double exact = 1e-6; // the same of points on a line
constexpr double none = 1e-9;  // the same of a figure that has no third direction

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

Axes axes_of(const Figure &f)
{
    Axes a;
    if (f.places.empty()) return a;
    a.corner[0] = farthest(f, a, 0);
    for (size_t k = 0; k < 3; k++) {
        a.corner[k + 1] = farthest(f, a, k);
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

std::vector<int> points_given_in_space(const Given &given, int n)
{
    std::vector<int> all;
    for (int p = 0; p < n; p++)
        if (given.plan(p) && given.height(p)) all.push_back(p);
    return all;
}

} // namespace

int points_that_tell_side(const Trial &t, const Given &given)
{
    const va::Model &m = t.model;
    if (m.frame.space == va::Space::heights) return 0;
    const size_t dimension = is_shape_alone(m) ? 3 : 2;
    if (!has_sides(axes_of(figure_of(m, placed_points(t), dimension == 3)), dimension)) return 0;
    if (dimension == 3) {
        const Figure known = figure_of(m, points_given_in_space(given, m.n_points), true);
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
    const Figure to = figure_of(best.model, placed_points(best), true);
    const Figure from = figure_of(other->model, to.points, true);
    const Axes to_axes = axes_of(to), from_axes = axes_at(from, to_axes.corner);
    for (size_t i = 0; i < to.points.size(); i++) {
        const Vec way = rest(from, from_axes, i, 0);
        Vec place = to.places[to_axes.corner[0]];
        for (size_t k = 0; k < 3; k++) place = place + va::dot(way, from_axes.axis[k]) * to_axes.axis[k];
        double *x = &other->model.value[3 * (size_t)to.points[i]];
        x[0] = place.x, x[1] = place.y, x[2] = place.z;
    }
}

} // namespace vornhost::start
