// Two steps of forward differentiation: the kind by positions of its ends and by parameters of the instrument; then
// each position by the coordinates of its point (heights above a sphere) and by the motion of its group.

#include "adjust/linear.h"

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
    bool usable;
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
    const int count = o.kind == Kind::angle ? 3 : 2;
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

// Kinds of which coordinates are compared as they stand in the network, whatever is up.
bool of_coordinates(const Frame &frame, Kind kind)
{
    return frame.ellipsoidal() && (kind == Kind::height_difference || kind == Kind::bearing);
}

Vec3<double> end_position(const Model &model, const Frame &frame, int point, int motion)
{
    const Vec3<double> c = coordinates(model, point);
    const Vec3<double> p =
        frame.ellipsoidal() ? position(frame, model.sites[(std::size_t)point], c) : position(frame, c);
    return motion < 0 ? p : moved(p, motion_of(&model.value[model.motions[motion].first]));
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

template <int N> void take(const Jet<N> &x, int component, ByPosition *out)
{
    out->value[component] = x.v;
    if constexpr (N > 0)
        for (int k = 0; k < N; k++) out->slope[component][k] = x.d[k];
}

// What every kind is evaluated with.
struct Sight {
    const Model &model;
    const Frame &frame;
    const Observation &o;
    Vec3<double> end[most_ends];
    Heights heights;
};

template <class T> bool has_direction(const Vec3<T> &e) { return std::hypot(value_of(e.x), value_of(e.y)) >= shortest; }

template <class T> T length_of_kind(const Sight &s, const Vec3<T> &p, const Vec3<T> &q)
{
    switch (s.o.kind) {
    case Kind::plane_distance:
    case Kind::horizontal_distance: return plane_length(s.frame, p, q);
    case Kind::level_distance: return level_length(s.frame, p, q, s.heights);
    case Kind::scale_bar: return bar_length(s.frame, p, q);
    default: return slope_length(s.frame, p, q, s.heights);
    }
}

template <bool slopes> void distance_by_position(const Sight &s, ByPosition *out)
{
    constexpr int n = slopes ? 8 : 0;
    using J = Jet<n>;
    const Vec3<J> p = variables<n>(s.end[0], 0), q = variables<n>(s.end[1], 3);
    J constants[2] = {J(0.0), J(1.0)};
    if (s.o.constants >= 0) parameters(s.model, s.model.constants[s.o.constants].first, 2, 6, constants);
    const J l = length_of_kind(s, p, q);
    out->usable = l.v >= shortest;
    take(measured(DistanceConstants<J>{constants[0], constants[1]}, l), 0, out);
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

template <bool slopes> void direction_by_position(const Sight &s, ByPosition *out)
{
    constexpr int n = slopes ? 9 : 0;
    const auto e =
        instrument_sight(s.frame, variables<n>(s.end[0], 0), variables<n>(s.end[1], 3), s.heights, axes_of<n>(s, 6));
    out->usable = has_direction(e);
    take(direction(e), 0, out);
}

template <bool slopes> void angle_by_position(const Sight &s, ByPosition *out)
{
    constexpr int n = slopes ? 12 : 0;
    const auto p = variables<n>(s.end[0], 0);
    const auto axes = axes_of<n>(s, 9);
    const auto left = instrument_sight(s.frame, p, variables<n>(s.end[1], 3), s.heights, axes);
    const auto right = instrument_sight(s.frame, p, variables<n>(s.end[2], 6), s.heights, axes);
    out->usable = has_direction(left) && has_direction(right);
    take(horizontal_angle(left, right), 0, out);
}

template <bool slopes> void vertical_by_position(const Sight &s, ByPosition *out)
{
    constexpr int n = slopes ? 10 : 0;
    const auto e =
        instrument_sight(s.frame, variables<n>(s.end[0], 0), variables<n>(s.end[1], 3), s.heights, axes_of<n>(s, 6));
    Jet<n> refraction(s.o.refraction);
    if (s.o.constants >= 0) parameters(s.model, s.model.constants[s.o.constants].first + 2, 1, 9, &refraction);
    out->usable = has_direction(e);
    take(vertical_angle(s.frame, e, refraction), 0, out);
}

template <bool slopes> void azimuth_by_position(const Sight &s, ByPosition *out)
{
    constexpr int n = slopes ? 6 : 0;
    const auto p = variables<n>(s.end[0], 0), q = variables<n>(s.end[1], 3);
    out->usable = has_direction(levelled(s.frame, p, sight(s.frame, p, q, s.heights)));
    take(azimuth(s.frame, p, q, s.heights), 0, out);
}

template <bool slopes> void bearing_by_position(const Sight &s, ByPosition *out)
{
    constexpr int n = slopes ? 6 : 0;
    const auto p = variables<n>(s.end[0], 0), q = variables<n>(s.end[1], 3);
    out->usable = has_direction(q - p);
    take(bearing(p, q), 0, out);
}

// A difference of grid coordinates and heights in geocentric axes, with the horizon of one place for both ends.
template <class T> Vec3<T> geocentric_axes(const Site &site, const Vec3<T> &d)
{
    const Horizon<double> h = horizon(site.latitude, site.longitude);
    const double c = std::cos(site.convergence), s = std::sin(site.convergence);
    const Vec3<double> x = c * h.north + s * h.east, y = c * h.east - s * h.north;
    return {x.x * d.x + y.x * d.y + h.up.x * d.z, x.y * d.x + y.y * d.y + h.up.y * d.z,
            x.z * d.x + y.z * d.y + h.up.z * d.z};
}

template <bool slopes> void baseline_by_position(const Sight &s, ByPosition *out)
{
    constexpr int n = slopes ? 6 : 0;
    auto d = variables<n>(s.end[1], 3) - variables<n>(s.end[0], 0);
    out->usable = true;
    if (s.frame.space == Space::ellipsoid && s.frame.parallel)
        d = geocentric_axes(s.model.sites[(std::size_t)s.o.from], d);
    if (s.frame.space == Space::heights) return take(d.z, 0, out);
    take(d.x, 0, out);
    take(d.y, 1, out);
    take(d.z, 2, out);
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

// Without `slopes` the values alone.
template <bool slopes> void by_position(const Model &model, const Frame &frame, const Observation &o, ByPosition *out)
{
    Sight s{model, frame, o, {}, {o.h1, o.h2}};
    const Ends ends = ends_of(o);
    for (int e = 0; e < ends.count; e++)
        s.end[e] = of_coordinates(frame, o.kind) ? coordinates(model, ends.point[e])
                                                 : end_position(model, frame, ends.point[e], ends.motion[e]);
    switch (o.kind) {
    case Kind::slope_distance:
    case Kind::plane_distance:
    case Kind::level_distance:
    case Kind::horizontal_distance:
    case Kind::scale_bar: return distance_by_position<slopes>(s, out);
    case Kind::height_difference: return height_by_position<slopes>(s, out);
    case Kind::direction: return direction_by_position<slopes>(s, out);
    case Kind::angle: return angle_by_position<slopes>(s, out);
    case Kind::vertical_angle: return vertical_by_position<slopes>(s, out);
    case Kind::azimuth: return azimuth_by_position<slopes>(s, out);
    case Kind::bearing: return bearing_by_position<slopes>(s, out);
    case Kind::baseline: return baseline_by_position<slopes>(s, out);
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

EndSlopes end_slopes(const Model &model, const Frame &frame, Kind kind, int point, int motion)
{
    using J = Jet<10>;
    EndSlopes s;
    s.plain = motion < 0 && (!(frame.ellipsoidal() || (frame.curved() && frame.mixed)) || of_coordinates(frame, kind));
    if (s.plain) return s;
    const Vec3<J> c = variables<10>(coordinates(model, point), 0);
    Vec3<J> p = frame.ellipsoidal() ? position(frame, model.sites[(std::size_t)point], c) : position(frame, c);
    if (motion >= 0) {
        J m[7];
        parameters(model, model.motions[motion].first, 7, 3, m);
        p = moved(p, motion_of(m));
    }
    for (int k = 0; k < 10; k++) s.d[0][k] = p.x.d[k], s.d[1][k] = p.y.d[k], s.d[2][k] = p.z.d[k];
    return s;
}

double through(const EndSlopes &s, const double *by_position, int k)
{
    if (s.plain) return by_position[k];
    return by_position[0] * s.d[0][k] + by_position[1] * s.d[1][k] + by_position[2] * s.d[2][k];
}

// Derivatives by unknowns in the order of seen_unknowns.
void by_unknowns(const Model &model, const Frame &frame, const Observation &o, const ByPosition &by, Linear *linear)
{
    const Ends ends = ends_of(o);
    int unused[most_parameters];
    const int n_parameters = parameters_of(model, o, unused), n_components = components(o.kind, frame.space);
    int n = 0;
    for (int e = 0; e < ends.count; e++) {
        const EndSlopes slopes = end_slopes(model, frame, o.kind, ends.point[e], ends.motion[e]);
        for (int k = 0; k < (ends.motion[e] >= 0 ? 10 : 3); k++) {
            if (k < 3 && !sees_axis(model.frame, o.kind, ends.motion[e], k)) continue;
            for (int c = 0; c < n_components; c++)
                linear->slope[c][n] = through(slopes, by.slope[c] + (std::ptrdiff_t)3 * e, k);
            n++;
        }
    }
    for (int k = 0; k < n_parameters; k++, n++)
        for (int c = 0; c < n_components; c++) linear->slope[c][n] = by.slope[c][3 * ends.count + k];
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
    return n + parameters_of(model, o, unknowns + n);
}

// The frame as an observation sees it.
static Frame frame_of(const Model &model, const Observation &o)
{
    Frame frame = model.frame;
    if (frame.space == Space::ellipsoid && o.from >= 0)
        frame.azimuth_rotation = model.sites[(std::size_t)o.from].convergence;
    return frame;
}

void linearize(const Model &model, const Observation &o, bool invariant, Linear *linear)
{
    const Frame frame = frame_of(model, o), seen = invariant ? frame.flat() : frame;
    ByPosition by{};
    by_position<true>(model, seen, o, &by);
    by_unknowns(model, seen, o, by, linear);
    linear->usable = by.usable;
    if (seen.curved() != frame.curved()) by_position<false>(model, frame, o, &by);
    for (int c = 0; c < components(o.kind, frame.space); c++) linear->value[c] = by.value[c];
}

bool compute(const Model &model, const Observation &o, double value[3])
{
    const Frame frame = frame_of(model, o);
    ByPosition by;
    by_position<false>(model, frame, o, &by);
    for (int c = 0; c < components(o.kind, frame.space); c++) value[c] = by.value[c];
    return by.usable;
}

} // namespace vornadjust
