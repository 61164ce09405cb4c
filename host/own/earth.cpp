#include "host/own/earth.h"

#include <algorithm>
#include <cmath>

#include "adjust/ellipsoid.h"
#include "adjust/linear.h"
#include "host/earth/line.h"
#include "host/input/names.h"
#include "host/own/item_names.h"

namespace vornhost {

namespace {

namespace va = vornadjust;
using V = va::Vec3<double>;

GridPlace grid_of(const Numbers &n, int point)
{
    const double *x = &n.model.value[3 * (size_t)point];
    return {x[0] + n.origin[0], x[1] + n.origin[1]};
}

class OnEarth {
public:
    OnEarth(const Model &its_network, const Reference *its_reference, Numbers &its_numbers)
        : network(its_network), reference(its_reference), numbers(its_numbers), values(its_numbers.model)
    {
    }

    std::vector<std::string> set(bool first);
    double change() const { return largest; }

private:
    void locate(int point);
    void set_site(int point);
    void reduce(int i);
    void reduce_distance(int i, bool level);
    void reduce_direction(int i, bool azimuth);
    void reduce_angle(int i);
    void reduce_arc(int i, Level level);
    Level level_of(int i) const
    {
        const ItemPlace &item = numbers.items[(size_t)i];
        return item.item == Item::horizontal_distance ? network.horizontal_distances.records[(size_t)item.record].level
                                                      : Level::marks;
    }
    void reduce_baseline(int i);
    void return_baseline(int i);
    void return_point(int i);
    void set_centre();
    std::optional<Line> line(const va::Observation &o, int to) const;
    double height(int point) const { return points[(size_t)point].height; }
    bool has_height(int point) const
    {
        const PointPlace &p = numbers.points[(size_t)point];
        return network.heightless.count({p.station, p.record}) == 0;
    }
    V lowered(int i) const;
    void take(int i, const GridReduction &reduction, double before);
    void rescale(va::Observation &o, double factor);
    void fail(int i, const std::string &why)
    {
        words.push_back(item_text(item_name(network, numbers, i)) + ": " + why);
    }

    const Model &network;
    const Reference *reference; // null: a local system
    Numbers &numbers;
    va::Model &values;
    std::vector<EarthPoint> points;
    std::vector<std::string> words;
    bool first_time = true;
    double largest = 0;
};

// Place, height and convergence of a point; what has none is refused.
void OnEarth::locate(int p)
{
    EarthPoint &point = points[(size_t)p];
    point.grid = grid_of(numbers, p);
    point.height = values.value[3 * (size_t)p + 2] + numbers.origin[2];
    if (!reference) return;
    const std::string name = shown_name(network, point_name(network, numbers.points[(size_t)p]));
    const std::optional<LatLon> at = reference->geographic(point.grid);
    const std::optional<GridAxes> axes = at ? reference->axes(*at) : std::nullopt;
    const std::optional<double> undulation = at ? reference->undulation(*at) : std::nullopt;
    if (!axes || !undulation) {
        words.push_back(
            name + " lies outside " + (axes ? std::string("the geoid") : "the area of " + network.crs.network) +
            ": x " + std::to_string(point.grid.north) + " (north), y " + std::to_string(point.grid.east) + " (east)");
        return;
    }
    point.at = *at;
    point.height += *undulation;
    point.convergence = axes->convergence;
    if (network.p.dim != 3) return;
    va::Site site;
    for (int k = 0; k < 2; k++) {
        site.at[k] = values.value[3 * (size_t)p + (size_t)k];
        site.latitude_by[k] = axes->latitude[k];
        site.longitude_by[k] = axes->longitude[k];
    }
    site.latitude = at->latitude;
    site.longitude = at->longitude;
    site.undulation = *undulation + numbers.origin[2]; // heights of the model count from there
    site.convergence = axes->convergence;
    values.sites[(size_t)p] = site;
}

std::optional<Line> OnEarth::line(const va::Observation &o, int to) const
{
    return line_between(*reference, points[(size_t)o.from], o.h1, points[(size_t)to], o.h2);
}

// The observation with its corrections; `before` is the value without them.
void OnEarth::take(int i, const GridReduction &r, double before)
{
    constexpr double kilometre = 1000.0;
    va::Observation &o = values.observations[(size_t)i];
    const double value = before + r.ellipsoid + r.projection + r.arc_to_chord + r.convergence;
    const bool angle = o.kind == va::Kind::direction || o.kind == va::Kind::angle || o.kind == va::Kind::azimuth;
    largest = std::max(largest, std::fabs(value - o.value[0]) * (angle ? kilometre : 1.0));
    o.value[0] = value;
    numbers.reductions[i] = r;
}

// The standard deviation of an observation that was multiplied by a factor.
void OnEarth::rescale(va::Observation &o, double factor)
{
    if (!first_time) return;
    o.sigma[0] *= factor;
    if (o.group < 0) return;
    const va::Group &g = values.groups[(size_t)o.group];
    double *c = &values.covariance[g.first];
    for (int k = 0; k < g.size; k++) {
        c[(size_t)o.place * (size_t)g.size + (size_t)k] *= factor;
        c[(size_t)k * (size_t)g.size + (size_t)o.place] *= factor;
    }
}

double correction_sum(const GridReduction &r) { return r.ellipsoid + r.projection + r.arc_to_chord + r.convergence; }

// A level distance lies at the mean height of its marks.
void OnEarth::reduce_distance(int i, bool level)
{
    va::Observation &o = values.observations[(size_t)i];
    for (const int p : {o.from, o.to})
        if (!has_height(p))
            return fail(i, "the height of " + shown_name(network, point_name(network, numbers.points[(size_t)p])) +
                               " is missing; write its z, or height in [crs]");
    EarthPoint a = points[(size_t)o.from], b = points[(size_t)o.to];
    if (level) a.height = b.height = 0.5 * (a.height + b.height);
    const bool planned = network.mode == Mode::Propagation;
    double before = o.value[0] - correction_sum(numbers.reductions[i]);
    std::optional<ReducedDistance> r;
    if (!reference) {
        if (planned && !(before > 0.0)) return; // no reading to reduce
        r = reduced_to_level(before, a.height + o.h1, b.height + o.h2, *network.crs.height, network.crs.scale);
    } else if (const auto l = line_between(*reference, a, o.h1, b, o.h2)) {
        if (planned) before = l->chord;
        r = reduced(*l, before);
    } else {
        return;
    }
    if (!r) return fail(i, "it is shorter than the difference of the heights of its ends; check z, h1 and h2");
    rescale(o, r->slope);
    take(i, {r->geodesic - before, r->straight - r->geodesic, 0.0, 0.0}, before);
}

void OnEarth::reduce_direction(int i, bool azimuth)
{
    const va::Observation &o = values.observations[(size_t)i];
    if (!reference) return;
    const auto l = line(o, o.to);
    if (!l) return;
    const double before = o.value[0] - correction_sum(numbers.reductions[i]);
    take(i, {l->skew, 0.0, -l->arc_to_chord, azimuth ? -points[(size_t)o.from].convergence : 0.0}, before);
}

void OnEarth::reduce_angle(int i)
{
    const va::Observation &o = values.observations[(size_t)i];
    if (!reference) return;
    const auto left = line(o, o.to), right = line(o, o.third);
    if (!left || !right) return;
    const double before = o.value[0] - correction_sum(numbers.reductions[i]);
    take(i, {right->skew - left->skew, 0.0, left->arc_to_chord - right->arc_to_chord, 0.0}, before);
}

// An arc S on the ellipsoid, or on the geoid N above it, S / (1 + N / R): in space to the horizontal distance in the
// horizon of the first point, by what the two differ between the present coordinates.
void OnEarth::reduce_arc(int i, Level level)
{
    const va::Observation &o = values.observations[(size_t)i];
    const std::optional<Line> l = line(o, o.to);
    if (!l) return;
    const double before = o.value[0] - correction_sum(numbers.reductions[i]);
    double above = 0;
    for (const int p : {o.from, o.to}) above += 0.5 * reference->undulation(points[(size_t)p].at).value_or(0.0);
    const double arc = level == Level::geoid ? before / (1.0 + above / l->radius) : before;
    if (network.p.dim == 2) return take(i, {arc - before, arc * (l->straight / l->geodesic - 1.0), 0.0, 0.0}, before);
    va::Linear present;
    va::linearize(values, o, false, &present);
    take(i, {arc - before + present.value[0] - l->geodesic, 0.0, 0.0, 0.0}, before);
}

// A baseline between the marks, geocentric; antennas stand above these along the normals.
V OnEarth::lowered(int i) const
{
    const va::Observation &o = values.observations[(size_t)i];
    const size_t row = (size_t)numbers.items[(size_t)i].record;
    const List<gps_input> &list = network.baselines;
    const auto up = [&](int p) {
        return va::horizon(points[(size_t)p].at.latitude, points[(size_t)p].at.longitude).up;
    };
    const auto framed = numbers.framed.find(i);
    const double *dx = framed != numbers.framed.end() ? framed->second.data() : list.records[row].dx;
    return V{dx[0], dx[1], dx[2]} + note_at(list.notes.h1, row, 0.0) * up(o.from) -
           note_at(list.notes.h2, row, 0.0) * up(o.to);
}

// In space: geocentric components, as they were observed.
void OnEarth::return_baseline(int i)
{
    va::Observation &o = values.observations[(size_t)i];
    const V d = lowered(i);
    o.value[0] = d.x;
    o.value[1] = d.y;
    o.value[2] = d.z;
}

// In space: geocentric coordinates, as they were observed, from the origin of positions.
void OnEarth::return_point(int i)
{
    const std::array<double, 3> &x = numbers.framed.at(i);
    const V &c = values.frame.centre;
    double *value = values.observations[(size_t)i].value;
    value[0] = x[0] - c.x;
    value[1] = x[1] - c.y;
    value[2] = x[2] - c.z;
}

// Positions count from the foot of the first point. Transformations count from the geocentre; where their shifts are
// free they count from that foot, which keeps them apart from the rotations.
void OnEarth::set_centre()
{
    const EarthPoint &p = points[0];
    values.frame.centre =
        va::geocentric(values.frame.ellipsoid, va::GeographicPlace<double>{p.at.latitude, p.at.longitude, 0.0});
    for (size_t m = 0; m < values.motions.size(); m++) {
        const int t = numbers.motions[m].transformation;
        const int *code = t < 0 ? nullptr : network.transformations.records[(size_t)t].code;
        const bool free = code && code[0] == CODE_FREE && code[1] == CODE_FREE && code[2] == CODE_FREE;
        if (t >= 0 && !free) values.motions[m].origin = values.frame.centre;
    }
}

// Into the grid: from the place of the first mark to where the vector leads. The covariance is turned into the axes of
// the grid there; its scale, 4e-4 off one at most, is left out of it.
void OnEarth::reduce_baseline(int i)
{
    va::Observation &o = values.observations[(size_t)i];
    if (note_at(network.baselines.notes.covariance, (size_t)numbers.items[(size_t)i].record) >= 0)
        return fail(i, "in the grid a baseline has a covariance of its own; write dimension = 3");
    if (!has_height(o.from))
        return fail(i, "the height of its first point is missing; write its z, or height in [crs]");
    const EarthPoint &from = points[(size_t)o.from];
    const va::Ellipsoid &e = reference->ellipsoid();
    const V start = va::geocentric(e, va::GeographicPlace<double>{from.at.latitude, from.at.longitude, from.height});
    const auto end = va::geographic(e, start + lowered(i));
    const std::optional<GridPlace> there = reference->grid({end.latitude, end.longitude});
    if (!there) return fail(i, "it leads out of the area of " + network.crs.network);
    const double value[2] = {there->north - from.grid.north, there->east - from.grid.east};
    for (int k = 0; k < 2; k++) {
        largest = std::max(largest, std::fabs(value[k] - o.value[k]));
        o.value[k] = value[k];
    }
    if (!first_time) return;
    const va::Horizon<double> h = va::horizon(from.at.latitude, from.at.longitude);
    const double c = std::cos(from.convergence), s = std::sin(from.convergence);
    const V axes[2] = {c * h.north + s * h.east, c * h.east - s * h.north};
    const double *q = network.baselines.records[(size_t)numbers.items[(size_t)i].record].cov;
    const auto turned = [&](const V &d) {
        return V{q[0] * d.x + q[1] * d.y + q[2] * d.z, q[1] * d.x + q[3] * d.y + q[4] * d.z,
                 q[2] * d.x + q[4] * d.y + q[5] * d.z};
    };
    double *covariance = &values.covariance[values.groups[(size_t)o.group].first];
    for (int k = 0; k < 2; k++)
        for (int l = 0; l < 2; l++) covariance[2 * k + l] = dot(axes[k], turned(axes[l]));
}

void OnEarth::reduce(int i)
{
    if (!values.observations[(size_t)i].use) return;
    if (level_of(i) != Level::marks) return reduce_arc(i, level_of(i));
    switch (numbers.items[(size_t)i].item) {
    case Item::distance: return network.between_marks ? (void)0 : reduce_distance(i, false);
    case Item::horizontal_distance:
    case Item::scale_bar: return reduce_distance(i, true);
    case Item::direction: return reduce_direction(i, false);
    case Item::azimuth: return reduce_direction(i, true);
    case Item::angle: return reduce_angle(i);
    case Item::baseline: return reference ? reduce_baseline(i) : (void)0;
    default: return;
    }
}

std::vector<std::string> OnEarth::set(bool first)
{
    first_time = first;
    const bool space = network.p.dim == 3;
    points.assign((size_t)values.n_points, {});
    if (space) values.sites.assign((size_t)values.n_points, {});
    for (int p = 0; p < values.n_points; p++) locate(p);
    if (!words.empty()) return words;
    if (space && !points.empty()) {
        values.frame.space = va::Space::ellipsoid;
        values.frame.ellipsoid = reference->ellipsoid();
        if (first) set_centre();
    }
    for (int i = 0; i < (int)values.observations.size(); i++) {
        if (!space)
            reduce(i);
        else if (numbers.items[(size_t)i].item == Item::baseline)
            return_baseline(i);
        else if (numbers.items[(size_t)i].item == Item::observed_point)
            return_point(i);
        else if (level_of(i) != Level::marks && values.observations[(size_t)i].use)
            reduce_arc(i, level_of(i));
    }
    if (!space || points.empty()) return words;
    if (first) orient_setups(numbers);
    return words;
}

// On the ellipsoid adjusted coordinates are those of the grid only up to the square of what they changed by.
double into_grid(const Reference &reference, Numbers &numbers)
{
    double largest = 0;
    va::Model &m = numbers.model;
    for (int p = 0; p < m.n_points && !m.sites.empty(); p++) {
        double *x = &m.value[3 * (size_t)p];
        const auto g = va::geographic(m.sites[(size_t)p], V{x[0], x[1], x[2]});
        const auto grid = reference.grid({g.latitude, g.longitude});
        const double place[2] = {grid ? grid->north : NAN, grid ? grid->east : NAN};
        for (int k = 0; k < 2 && grid; k++) {
            if (!m.estimated(3 * p + k)) continue;
            largest = std::max(largest, std::fabs(place[k] - numbers.origin[k] - x[k]));
            x[k] = place[k] - numbers.origin[k];
        }
    }
    return largest;
}

} // namespace

std::optional<Place3> place_of(const Numbers &numbers, const Reference &reference, int point)
{
    const std::optional<LatLon> at = reference.geographic(grid_of(numbers, point));
    const std::optional<double> undulation = at ? reference.undulation(*at) : std::nullopt;
    if (!undulation) return std::nullopt;
    return Place3{*at, numbers.model.value[3 * (size_t)point + 2] + numbers.origin[2] + *undulation};
}

GridHorizon middle_horizon(const Builder &b)
{
    GridHorizon h;
    double north = 0, east = 0, n = 0;
    const auto add = [&](const auto &list) {
        for (const auto &r : list.records) {
            if (r.status <= 0 || r.status == STATUS_COMPUTE) continue;
            north += r.x[0] * b.metres;
            east += r.x[1] * b.metres;
            n += 1.0;
        }
    };
    add(b.network.stations);
    add(b.network.targets);
    const std::optional<LatLon> at = n > 0 ? b.reference->geographic({north / n, east / n}) : std::nullopt;
    const std::optional<GridAxes> axes = at ? b.reference->axes(*at) : std::nullopt;
    if (!axes) return h;
    const va::Horizon<double> local = va::horizon(at->latitude, at->longitude);
    const double c = std::cos(axes->convergence), s = std::sin(axes->convergence);
    h.north = c * local.north + s * local.east;
    h.east = c * local.east - s * local.north;
    h.up = local.up;
    const va::Ellipsoid &e = b.reference->ellipsoid();
    const double sine = std::sin(at->latitude);
    h.scale = 1.0 / std::hypot(va::meridian_radius(e, sine) * axes->latitude[0],
                               va::prime_vertical_radius(e, sine) * std::cos(at->latitude) * axes->longitude[0]);
    h.undulation = b.reference->undulation(*at).value_or(0.0);
    h.place = va::geocentric(e, va::GeographicPlace<double>{at->latitude, at->longitude, 0.0});
    return h;
}

void reduce_roughly(Builder &b)
{
    const Crs &crs = b.network.crs;
    if (!crs.given() || b.network.p.dim != 2 || b.network.between_marks) return;
    GridHorizon middle;
    if (b.reference) middle = middle_horizon(b);
    const double level = crs.local() ? *crs.height : -middle.undulation;
    const double scale = crs.local() ? crs.scale : middle.scale;
    va::Model &m = b.numbers.model;
    for (size_t i = 0; i < m.observations.size(); i++) {
        va::Observation &o = m.observations[i];
        if (b.numbers.items[i].item != Item::distance) continue;
        const auto height = [&](int p) { return m.value[3 * (size_t)p + 2]; };
        const auto r = reduced_to_level(o.value[0], height(o.from) + o.h1, height(o.to) + o.h2, level, scale);
        if (!r) continue; // refused where it is reduced
        b.numbers.reductions[(int)i] = {r->geodesic - o.value[0], r->straight - r->geodesic, 0.0, 0.0};
        o.value[0] = r->straight;
    }
}

std::vector<std::string> set_on_earth(const Model &network, const Reference *reference, Numbers &numbers)
{
    return OnEarth(network, reference, numbers).set(true);
}

double set_again(const Model &network, const Reference *reference, Numbers &numbers)
{
    const double moved = reference ? into_grid(*reference, numbers) : 0.0;
    OnEarth earth(network, reference, numbers);
    earth.set(false);
    return std::max(moved, earth.change());
}

} // namespace vornhost
