// Two steps of forward differentiation: the kind by positions of its ends and by parameters of the instrument; then
// each position by the coordinates of its point (heights above a sphere) and by the motion of its group.

#include "adjust/linear.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "adjust/kinds/directions.h"
#include "adjust/kinds/distances.h"
#include "adjust/kinds/heights.h"
#include "adjust/kinds/images.h"
#include "adjust/kinds/motions.h"
#include "adjust/kinds/verticals.h"

namespace vornadjust {

namespace {

constexpr int most_ends = 3, most_parameters = 13;

// Derivatives by the positions of the ends (three each), then by the parameters.
struct ByPosition {
    bool usable = false;
    double value[3];
    double slope[3][3 * most_ends + most_parameters];
};

struct Ends {
    int count;
    int point[most_ends];
    int motion[most_ends];
};

Ends ends_of(const Observation &o)
{
    if (o.kind == Kind::unknown || o.kind == Kind::difference) return {0, {}, {}};
    const int count = o.kind == Kind::angle ? 3 : o.kind == Kind::position ? 1 : 2;
    return {count, {o.from, o.to, o.third}, {o.motion_from, o.motion_to, o.motion_third}};
}

// Unknowns of an observation other than coordinates and motions.
int parameters_of(const Model &model, const Observation &o, int *unknowns)
{
    int n = 0;
    const auto append = [&](int first, int count) {
        for (int k = 0; k < count; k++) unknowns[n++] = first + k;
    };
    switch (o.kind) {
    case Kind::slope_distance:
    case Kind::plane_distance:
    case Kind::level_distance:
    case Kind::horizontal_distance:
        if (o.constants >= 0) append(model.constants[o.constants].first, 2);
        break;
    case Kind::direction:
    case Kind::angle:
        if (o.setup >= 0) append(model.setups[o.setup].first, 3);
        break;
    case Kind::vertical_angle:
        append(model.setups[o.setup].first, 3);
        if (o.constants >= 0) append(model.constants[o.constants].first + 2, 1);
        break;
    case Kind::image:
        append(model.setups[o.setup].first, 3);
        append(model.cameras[o.camera].first, 10);
        break;
    case Kind::difference:
        append(3 * o.from + o.axis, 1);
        append(3 * o.to + o.axis, 1);
        break;
    case Kind::unknown: append(o.unknown, 1); break;
    default: break;
    }
    return n;
}

// Whether a kind is observed along the vertical of one of its ends.
bool uses_verticals(Kind kind)
{
    switch (kind) {
    case Kind::slope_distance:
    case Kind::horizontal_distance:
    case Kind::direction:
    case Kind::angle:
    case Kind::vertical_angle:
    case Kind::azimuth: return true;
    default: return false;
    }
}

// The deflection of the vertical at an end; -1 where its first unknown does not exist.
int deflection_of(const Model &model, const Observation &o, int point)
{
    if (model.deflection_at.empty() || !uses_verticals(o.kind)) return -1;
    const int at = model.deflection_at[(std::size_t)point];
    return at < 0 ? -1 : model.deflections[(std::size_t)at].first;
}

// Whether a kind sees an axis of the coordinates of an end; a motion turns every axis into the others.
bool sees_axis(const Frame &frame, Kind kind, int motion, int axis)
{
    if (motion >= 0) return true;
    if (kind == Kind::horizontal_distance && frame.ellipsoidal()) return true;
    if (kind == Kind::plane_distance || kind == Kind::horizontal_distance || kind == Kind::bearing) return axis < 2;
    if (kind == Kind::scale_bar && frame.space == Space::plane) return axis < 2;
    if (kind == Kind::height_difference) return axis == 2 || (frame.curved() && !frame.mixed && !frame.ellipsoidal());
    return true;
}

Vec3<double> coordinates(const Model &model, int point)
{
    const double *c = &model.value[3 * (std::size_t)point];
    return {c[0], c[1], c[2]};
}

template <class T> Moved<T> motion_of(const T *m) { return {{m[0], m[1], m[2]}, {m[3], m[4], m[5]}, m[6]}; }

template <class T> Vec3<T> moved_about(const Vec3<double> &a, const Vec3<T> &p, const T *m)
{
    const Vec3<T> x = moved(Vec3<T>{p.x + a.x, p.y + a.y, p.z + a.z}, motion_of(m));
    return {x.x - a.x, x.y - a.y, x.z - a.z};
}

// Kinds of which coordinates are compared as they stand in the network, whatever is up.
bool of_coordinates(const Frame &frame, Kind kind)
{
    return frame.ellipsoidal() && (kind == Kind::height_difference || kind == Kind::bearing);
}

// Grid coordinates and height in geocentric axes, with the horizon of one place for all points.
template <class T> Vec3<T> geocentric_axes(const Site &site, const Vec3<T> &c)
{
    const Horizon<double> h = horizon(site.latitude, site.longitude);
    const double cosine = std::cos(site.convergence), sine = std::sin(site.convergence);
    const Vec3<double> x = cosine * h.north + sine * h.east, y = cosine * h.east - sine * h.north;
    return {x.x * c.x + y.x * c.y + h.up.x * c.z, x.y * c.x + y.y * c.y + h.up.y * c.z,
            x.z * c.x + y.z * c.y + h.up.z * c.z};
}

// Kinds whose components are along geocentric axes on the ellipsoid, whatever is up.
bool of_vectors(Kind kind) { return kind == Kind::baseline || kind == Kind::position; }

// Position of an end with the coordinates c, before its motion.
template <class T>
Vec3<T> unmoved(const Model &model, const Frame &frame, const Observation &o, int point, const Vec3<T> &c)
{
    if (frame.ellipsoidal()) return position(frame, model.sites[(std::size_t)point], c);
    if (frame.space == Space::ellipsoid && of_vectors(o.kind))
        return geocentric_axes(model.sites[(std::size_t)o.from], c);
    return position(frame, c);
}

// Where positions count from in a motion; with parallel verticals from the origin of the coordinates.
Vec3<double> origin_of(const Frame &frame, const Motion &m)
{
    return frame.parallel ? Vec3<double>{0, 0, 0} : m.origin;
}

Vec3<double> end_position(const Model &model, const Frame &frame, const Observation &o, int point, int motion)
{
    const Vec3<double> p = unmoved(model, frame, o, point, coordinates(model, point));
    if (motion < 0) return p;
    const Motion &m = model.motions[motion];
    return moved_about(origin_of(frame, m), p, &model.value[m.first]);
}

template <int N> Vec3<Jet<N>> variables(const Vec3<double> &p, int first)
{
    return {Jet<N>::variable(p.x, first), Jet<N>::variable(p.y, first + 1), Jet<N>::variable(p.z, first + 2)};
}

// Variables `first` on of the unknowns from `unknown` on.
template <int N> void parameters(const Model &model, int unknown, int n, int first, Jet<N> *out)
{
    for (int k = 0; k < n; k++) out[k] = Jet<N>::variable(model.value[unknown + k], first + k);
}

// By what the ends of a sight are differentiated: nothing; both positions; or, where a value depends on their
// difference alone, the second position, of which the derivatives by the first are the negative.
enum class By { nothing, positions, difference };

// Variables of a sight with two ends and so many parameters, of which the first is first_parameter(by).
constexpr int first_parameter(By by) { return by == By::positions ? 6 : 3; }
constexpr int variables_of(By by, int n_parameters)
{
    return by == By::nothing ? 0 : first_parameter(by) + n_parameters;
}

template <By by, int N> Vec3<Jet<N>> first_end(const Vec3<double> &p)
{
    if constexpr (by == By::difference) return {Jet<N>(p.x), Jet<N>(p.y), Jet<N>(p.z)};
    return variables<N>(p, 0);
}

template <By by, int N> Vec3<Jet<N>> second_end(const Vec3<double> &q)
{
    return variables<N>(q, by == By::difference ? 0 : 3);
}

template <By by = By::positions, int N> void take(const Jet<N> &x, int component, ByPosition *out)
{
    out->value[component] = x.v;
    if constexpr (N > 0) {
        double *slope = out->slope[component];
        constexpr int shift = by == By::difference ? 3 : 0;
        for (int k = 0; k < shift; k++) slope[k] = -x.d[k];
        for (int k = 0; k < N; k++) slope[shift + k] = x.d[k];
    }
}

// What every kind is evaluated with.
struct Sight {
    const Model &model;
    const Frame &frame;
    const Observation &o;
    Vec3<double> end[most_ends];
    Heights heights;
    bool leaning;                 // one of the verticals is not the normal
    Lean<double> lean[most_ends]; // of the vertical at each end
};

// The verticals of a sight from the first end to another one.
template <class T> struct Verticals {
    Lean<T> lean[most_ends];
    bool leaning;

    Leans<T> to(int end) const { return leaning ? Leans<T>{&lean[0], &lean[end]} : Leans<T>{}; }
};

template <class T> Verticals<T> verticals(const Sight &s)
{
    Verticals<T> v{{}, s.leaning};
    for (int e = 0; e < most_ends && s.leaning; e++) v.lean[e] = {T(s.lean[e].xi), T(s.lean[e].eta)};
    return v;
}

template <class T> bool has_direction(const Vec3<T> &e) { return std::hypot(value_of(e.x), value_of(e.y)) >= shortest; }

template <class T> T length_of_kind(const Sight &s, const Vec3<T> &p, const Vec3<T> &q, const Leans<T> &leans)
{
    switch (s.o.kind) {
    case Kind::plane_distance:
    case Kind::horizontal_distance: return plane_length(s.frame, p, q, leans.from);
    case Kind::level_distance: return level_length(s.frame, p, q, s.heights);
    case Kind::scale_bar: return bar_length(s.frame, p, q);
    default: return slope_length(s.frame, p, q, s.heights, leans);
    }
}

template <By by> void distance_by_position(const Sight &s, ByPosition *out)
{
    constexpr int n = variables_of(by, 2);
    using J = Jet<n>;
    const Vec3<J> p = first_end<by, n>(s.end[0]), q = second_end<by, n>(s.end[1]);
    J constants[2] = {J(0.0), J(1.0)};
    if (s.o.constants >= 0)
        parameters(s.model, s.model.constants[s.o.constants].first, 2, first_parameter(by), constants);
    const Verticals<J> v = verticals<J>(s);
    const J l = length_of_kind(s, p, q, v.to(1));
    out->usable = l.v >= shortest;
    take<by>(measured(DistanceConstants<J>{constants[0], constants[1]}, l), 0, out);
}

template <bool slopes> void height_by_position(const Sight &s, ByPosition *out)
{
    constexpr int n = slopes ? 6 : 0;
    // On the ellipsoid the ends are coordinates, and heights among them.
    const Frame frame = s.frame.ellipsoidal() ? s.frame.flat() : s.frame;
    out->usable = true;
    take(height_difference(frame, variables<n>(s.end[0], 0), variables<n>(s.end[1], 3), s.heights), 0, out);
}

// Axes of the set-up of an observation, variables `first` on; upright without one.
template <int N> Axes<Jet<N>> axes_of(const Sight &s, int first)
{
    if (s.o.setup < 0) return {{0.0, 0.0, 0.0}, true, false};
    const Setup &setup = s.model.setups[s.o.setup];
    const auto upright = [&](int u) { return s.model.code[u] == Code::absent && s.model.value[u] == 0.0; };
    Jet<N> a[3];
    parameters(s.model, setup.first, 3, first, a);
    return {{a[0], a[1], a[2]}, setup.levelled, !upright(setup.first) || !upright(setup.first + 1)};
}

template <By by> void direction_by_position(const Sight &s, ByPosition *out)
{
    constexpr int n = variables_of(by, 3);
    const auto v = verticals<Jet<n>>(s);
    const auto e = instrument_sight(s.frame, first_end<by, n>(s.end[0]), second_end<by, n>(s.end[1]), s.heights,
                                    axes_of<n>(s, first_parameter(by)), v.to(1));
    out->usable = has_direction(e);
    take<by>(direction(e), 0, out);
}

template <bool slopes> void angle_by_position(const Sight &s, ByPosition *out)
{
    constexpr int n = slopes ? 12 : 0;
    const auto p = variables<n>(s.end[0], 0);
    const auto axes = axes_of<n>(s, 9);
    const auto v = verticals<Jet<n>>(s);
    const auto left = instrument_sight(s.frame, p, variables<n>(s.end[1], 3), s.heights, axes, v.to(1));
    const auto right = instrument_sight(s.frame, p, variables<n>(s.end[2], 6), s.heights, axes, v.to(2));
    out->usable = has_direction(left) && has_direction(right);
    take(horizontal_angle(left, right), 0, out);
}

template <By by> void vertical_by_position(const Sight &s, ByPosition *out)
{
    constexpr int n = variables_of(by, 4), angles = first_parameter(by);
    const auto v = verticals<Jet<n>>(s);
    const auto e = instrument_sight(s.frame, first_end<by, n>(s.end[0]), second_end<by, n>(s.end[1]), s.heights,
                                    axes_of<n>(s, angles), v.to(1));
    Jet<n> refraction(s.o.refraction);
    if (s.o.constants >= 0) parameters(s.model, s.model.constants[s.o.constants].first + 2, 1, angles + 3, &refraction);
    out->usable = has_direction(e);
    take<by>(vertical_angle(s.frame, e, refraction), 0, out);
}

template <bool slopes> void azimuth_by_position(const Sight &s, ByPosition *out)
{
    constexpr int n = slopes ? 6 : 0;
    const auto p = variables<n>(s.end[0], 0), q = variables<n>(s.end[1], 3);
    const auto v = verticals<Jet<n>>(s);
    out->usable = has_direction(levelled(s.frame, p, sight(s.frame, p, q, s.heights)));
    take(azimuth(s.frame, p, q, s.heights, v.to(1)), 0, out);
}

template <bool slopes> void bearing_by_position(const Sight &s, ByPosition *out)
{
    constexpr int n = slopes ? 6 : 0;
    const auto p = variables<n>(s.end[0], 0), q = variables<n>(s.end[1], 3);
    out->usable = has_direction(q - p);
    take(bearing(p, q), 0, out);
}

template <bool slopes> void baseline_by_position(const Sight &s, ByPosition *out)
{
    constexpr int n = slopes ? 6 : 0;
    const auto d = variables<n>(s.end[1], 3) - variables<n>(s.end[0], 0);
    out->usable = true;
    if (s.frame.space == Space::heights) return take(d.z, 0, out);
    take(d.x, 0, out);
    take(d.y, 1, out);
    take(d.z, 2, out);
}

template <bool slopes> void position_by_position(const Sight &s, ByPosition *out)
{
    const auto p = variables < slopes ? 3 : 0 > (s.end[0], 0);
    out->usable = true;
    take(p.x, 0, out);
    take(p.y, 1, out);
    take(p.z, 2, out);
}

template <bool slopes> void image_by_position(const Sight &s, ByPosition *out)
{
    constexpr int n = slopes ? 19 : 0;
    const Camera &camera = s.model.cameras[s.o.camera];
    const auto e =
        instrument_sight(s.frame, variables<n>(s.end[0], 0), variables<n>(s.end[1], 3), s.heights, axes_of<n>(s, 6));
    Jet<n> i[10];
    parameters(s.model, camera.first, 10, 9, i);
    const Inner<Jet<n>> inner{i[0], i[1], i[2], i[3], i[4], i[5], i[6], i[7], i[8], i[9]};
    const Uv<Jet<n>> uv = image(e, inner, Pixels{camera.pu, camera.pv, camera.cu, camera.cv});
    out->usable = std::fabs(e.z.v) >= shortest;
    take(uv.u, 0, out);
    take(uv.v, 1, out);
}

// Without its positions.
Sight sight_of(const Model &model, const Frame &frame, const Observation &o, const Ends &ends)
{
    Sight s{model, frame, o, {}, {o.h1, o.h2}, false, {}};
    for (int e = 0; e < ends.count && frame.ellipsoidal(); e++) {
        const int first = deflection_of(model, o, ends.point[e]);
        if (first < 0) continue;
        s.leaning = true;
        s.lean[e] = {model.value[(std::size_t)first], model.value[(std::size_t)first + 1]};
    }
    return s;
}

// Whether the frequent kinds depend on the difference of their ends alone: verticals are parallel.
bool by_difference(const Frame &frame, const Observation &o)
{
    if (frame.curved()) return false;
    switch (o.kind) {
    case Kind::slope_distance:
    case Kind::plane_distance:
    case Kind::horizontal_distance:
    case Kind::scale_bar:
    case Kind::direction:
    case Kind::vertical_angle: return true;
    default: return false;
    }
}

// The frequent kinds.
template <By by> void sight_by_position(const Sight &s, ByPosition *out)
{
    switch (s.o.kind) {
    case Kind::direction: return direction_by_position<by>(s, out);
    case Kind::vertical_angle: return vertical_by_position<by>(s, out);
    default: return distance_by_position<by>(s, out);
    }
}

// Without `slopes` the values alone.
template <bool slopes> void by_position(const Model &model, const Frame &frame, const Observation &o, ByPosition *out)
{
    const Ends ends = ends_of(o);
    Sight s = sight_of(model, frame, o, ends);
    for (int e = 0; e < ends.count; e++)
        s.end[e] = of_coordinates(frame, o.kind) ? coordinates(model, ends.point[e])
                                                 : end_position(model, frame, o, ends.point[e], ends.motion[e]);
    if (slopes && by_difference(frame, o)) return sight_by_position<By::difference>(s, out);
    switch (o.kind) {
    case Kind::slope_distance:
    case Kind::plane_distance:
    case Kind::level_distance:
    case Kind::horizontal_distance:
    case Kind::scale_bar:
    case Kind::direction:
    case Kind::vertical_angle: return sight_by_position < slopes ? By::positions : By::nothing > (s, out);
    case Kind::height_difference: return height_by_position<slopes>(s, out);
    case Kind::angle: return angle_by_position<slopes>(s, out);
    case Kind::azimuth: return azimuth_by_position<slopes>(s, out);
    case Kind::bearing: return bearing_by_position<slopes>(s, out);
    case Kind::baseline: return baseline_by_position<slopes>(s, out);
    case Kind::position: return position_by_position<slopes>(s, out);
    case Kind::image: return image_by_position<slopes>(s, out);
    case Kind::difference:
        out->usable = true;
        out->value[0] = model.value[3 * (std::size_t)o.to + o.axis] - model.value[3 * (std::size_t)o.from + o.axis];
        out->slope[0][0] = -1.0;
        out->slope[0][1] = 1.0;
        return;
    case Kind::unknown:
        out->usable = true;
        out->value[0] = model.value[o.unknown];
        out->slope[0][0] = 1.0;
        return;
    }
}

// Derivatives of the position of an end by its three coordinates and the seven parameters of its motion.
struct EndSlopes {
    bool plain; // the position is the coordinates
    double d[3][10];
};

// Whether the position of an end that is not moved is its coordinates.
bool is_plain(const Frame &frame, const Observation &o)
{
    const bool turned = frame.ellipsoidal() || (frame.curved() && frame.mixed) ||
                        (frame.space == Space::ellipsoid && of_vectors(o.kind));
    return !turned || of_coordinates(frame, o.kind);
}

EndSlopes end_slopes(const Model &model, const Frame &frame, const Observation &o, int point, int motion)
{
    using J = Jet<10>;
    EndSlopes s;
    s.plain = motion < 0 && is_plain(frame, o);
    if (s.plain) return s;
    Vec3<J> p = unmoved(model, frame, o, point, variables<10>(coordinates(model, point), 0));
    if (motion >= 0) {
        J m[7];
        parameters(model, model.motions[motion].first, 7, 3, m);
        p = moved_about(origin_of(frame, model.motions[motion]), p, m);
    }
    for (int k = 0; k < 10; k++) s.d[0][k] = p.x.d[k], s.d[1][k] = p.y.d[k], s.d[2][k] = p.z.d[k];
    return s;
}

double through(const EndSlopes &s, const double *by_position, int k)
{
    if (s.plain) return by_position[k];
    return by_position[0] * s.d[0][k] + by_position[1] * s.d[1][k] + by_position[2] * s.d[2][k];
}

// The value of a sight by the deflections of its verticals, all else held.
template <class T> T by_verticals(const Sight &s, const Verticals<T> &v)
{
    const auto held = [](const Vec3<double> &p) { return Vec3<T>{T(p.x), T(p.y), T(p.z)}; };
    const Vec3<T> p = held(s.end[0]), q = held(s.end[1]);
    const auto seen = [&](const Vec3<T> &to, int end) {
        Axes<T> axes{{T(0.0), T(0.0), T(0.0)}, true, false};
        if (s.o.setup >= 0) {
            const Setup &setup = s.model.setups[s.o.setup];
            const double *a = &s.model.value[setup.first];
            axes = {held({a[0], a[1], a[2]}), setup.levelled, a[0] != 0.0 || a[1] != 0.0};
        }
        return instrument_sight(s.frame, p, to, s.heights, axes, v.to(end));
    };
    const auto constant = [&](int k, double without) {
        return T(s.o.constants < 0 ? without : s.model.value[s.model.constants[s.o.constants].first + k]);
    };
    switch (s.o.kind) {
    case Kind::direction: return direction(seen(q, 1));
    case Kind::angle: return horizontal_angle(seen(q, 1), seen(held(s.end[2]), 2));
    case Kind::vertical_angle: return vertical_angle(s.frame, seen(q, 1), constant(2, 0.0));
    case Kind::azimuth: return azimuth(s.frame, p, q, s.heights, v.to(1));
    default:
        return measured(DistanceConstants<T>{constant(0, 0.0), constant(1, 1.0)}, length_of_kind(s, p, q, v.to(1)));
    }
}

// Derivatives by the deflections, behind those of the other unknowns.
void add_deflections(const Model &model, const Frame &frame, const Observation &o, int n, Linear *linear)
{
    constexpr int most = 2 * most_ends;
    using J = Jet<most>;
    const Ends ends = ends_of(o);
    Sight s = sight_of(model, frame, o, ends);
    Verticals<J> v = verticals<J>(s);
    for (int e = 0; e < ends.count; e++) {
        s.end[e] = end_position(model, frame, o, ends.point[e], ends.motion[e]);
        v.lean[e] = {J::variable(s.lean[e].xi, 2 * e), J::variable(s.lean[e].eta, 2 * e + 1)};
    }
    const J value = s.leaning ? by_verticals(s, v) : J(0.0);
    for (int e = 0; e < ends.count; e++) {
        if (deflection_of(model, o, ends.point[e]) < 0) continue;
        for (int k = 0; k < 2; k++) linear->slope[0][n++] = value.d[2 * e + k];
    }
}

// Of an observation whose ends are not moved and stand at their coordinates.
void by_coordinates(const Model &model, const Ends &ends, const Observation &o, const ByPosition &by, Linear *linear)
{
    int from[most_unknowns], parameters[most_parameters]; // where the slopes stand
    const int n_parameters = parameters_of(model, o, parameters), n_components = components(o.kind, model.frame.space);
    int axes[3], n_axes = 0, n = 0;
    for (int k = 0; k < 3; k++)
        if (sees_axis(model.frame, o.kind, -1, k)) axes[n_axes++] = k;
    for (int e = 0; e < ends.count; e++)
        for (int a = 0; a < n_axes; a++) {
            from[n] = 3 * e + axes[a];
            linear->unknown[n++] = 3 * ends.point[e] + axes[a];
        }
    for (int k = 0; k < n_parameters; k++) {
        from[n] = 3 * ends.count + k;
        linear->unknown[n++] = parameters[k];
    }
    for (int c = 0; c < n_components; c++)
        for (int k = 0; k < n; k++) linear->slope[c][k] = by.slope[c][from[k]];
    linear->n = n;
}

// Unknowns, and derivatives by them but for those of deflections; returns the number of the latter.
int by_unknowns(const Model &model, const Frame &frame, const Observation &o, const ByPosition &by, Linear *linear)
{
    const Ends ends = ends_of(o);
    const bool moved = std::any_of(ends.motion, ends.motion + ends.count, [](int motion) { return motion >= 0; });
    if (!moved && is_plain(frame, o) && model.deflections.empty()) {
        by_coordinates(model, ends, o, by, linear);
        return linear->n;
    }
    linear->n = seen_unknowns(model, o, linear->unknown);
    int unused[most_parameters];
    const int n_parameters = parameters_of(model, o, unused), n_components = components(o.kind, frame.space);
    int n = 0;
    for (int e = 0; e < ends.count; e++) {
        const EndSlopes slopes = end_slopes(model, frame, o, ends.point[e], ends.motion[e]);
        for (int k = 0; k < (ends.motion[e] >= 0 ? 10 : 3); k++) {
            if (k < 3 && !sees_axis(model.frame, o.kind, ends.motion[e], k)) continue;
            for (int c = 0; c < n_components; c++)
                linear->slope[c][n] = through(slopes, by.slope[c] + (std::ptrdiff_t)3 * e, k);
            n++;
        }
    }
    for (int k = 0; k < n_parameters; k++, n++)
        for (int c = 0; c < n_components; c++) linear->slope[c][n] = by.slope[c][3 * ends.count + k];
    return n;
}

} // namespace

int seen_unknowns(const Model &model, const Observation &o, int unknowns[most_unknowns])
{
    const Ends ends = ends_of(o);
    int n = 0;
    for (int e = 0; e < ends.count; e++) {
        for (int k = 0; k < 3; k++)
            if (sees_axis(model.frame, o.kind, ends.motion[e], k)) unknowns[n++] = 3 * ends.point[e] + k;
        for (int k = 0; k < 7 && ends.motion[e] >= 0; k++) unknowns[n++] = model.motions[ends.motion[e]].first + k;
    }
    n += parameters_of(model, o, unknowns + n);
    for (int e = 0; e < ends.count && !model.deflections.empty(); e++) {
        const int first = deflection_of(model, o, ends.point[e]);
        for (int k = 0; k < 2 && first >= 0; k++) unknowns[n++] = first + k;
    }
    return n;
}

// The frame as an observation sees it on the ellipsoid.
static Frame frame_of(const Model &model, const Observation &o)
{
    Frame frame = model.frame;
    if (o.from >= 0) frame.azimuth_rotation = model.sites[(std::size_t)o.from].convergence;
    return frame;
}

// Derivatives in the frame `seen`, values in `frame`.
static void linearize_in(const Model &model, const Frame &frame, const Frame &seen, const Observation &o,
                         Linear *linear)
{
    ByPosition by;
    by_position<true>(model, seen, o, &by);
    const int n = by_unknowns(model, seen, o, by, linear);
    if (!model.deflections.empty() && uses_verticals(o.kind)) add_deflections(model, frame, o, n, linear);
    linear->usable = by.usable;
    if (seen.curved() != frame.curved()) by_position<false>(model, frame, o, &by);
    for (int c = 0; c < components(o.kind, frame.space); c++) linear->value[c] = by.value[c];
}

void linearize(const Model &model, const Observation &o, bool invariant, Linear *linear)
{
    const bool own = model.frame.space == Space::ellipsoid;
    if (!own && !invariant) return linearize_in(model, model.frame, model.frame, o, linear);
    const Frame frame = own ? frame_of(model, o) : model.frame;
    linearize_in(model, frame, invariant ? frame.flat() : frame, o, linear);
}

bool compute(const Model &model, const Observation &o, double value[3])
{
    ByPosition by;
    if (model.frame.space == Space::ellipsoid)
        by_position<false>(model, frame_of(model, o), o, &by);
    else
        by_position<false>(model, model.frame, o, &by);
    for (int c = 0; c < components(o.kind, model.frame.space); c++) value[c] = by.value[c];
    return by.usable;
}

} // namespace vornadjust
