// The five lists of observations and the baselines.

#include <algorithm>

#include "host/own/builder.h"
#include "host/own/earth.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

// What the observations of one table share.
struct Table {
    Item item;
    va::Kind kind;
    List<measure_input> &list;
    double factor; // a priori
    bool takes_part;
};

// In the plane marks are compared unless the file asks for a reduction; in space instrument and target are unless the
// file says that it holds distances between the marks.
va::Kind distance_kind(const Model &m)
{
    const project &p = m.p;
    if (p.dim == 2 && m.crs.given()) return va::Kind::plane_distance; // reduced into the grid
    if (p.dim == 2 && p.iredux == 0) return va::Kind::plane_distance;
    return p.iredux == 9 ? va::Kind::level_distance : va::Kind::slope_distance;
}

// Heights of instrument and target act in space, on height differences, and on slopes in the plane.
bool heights_count(const Builder &b, Item item)
{
    if (b.network.crs.given() && item != Item::distance) return true;
    if (item == Item::distance && b.network.p.dim == 2 && b.network.crs.given()) return true;
    if (item == Item::distance) return b.network.p.iredux != 0 || (b.network.p.dim == 3 && !b.network.between_marks);
    return b.network.p.dim != 2;
}

// Value and standard deviation in metres and radians; vertical angles as elevations.
void set_value(Builder &b, Item item, const measure_input &m, va::Observation &o)
{
    project &u = b.units;
    switch (item) {
    case Item::direction: o.value[0] = u.rawtoh(1, m.val), o.sigma[0] = u.rawtoh(2, m.sig); break;
    case Item::vertical_angle: o.value[0] = u.rawtov(1, m.val), o.sigma[0] = u.rawtov(2, m.sig); break;
    case Item::azimuth: o.value[0] = u.rawtoaz(1, m.val), o.sigma[0] = u.rawtoaz(2, m.sig); break;
    default: o.value[0] = b.metres * m.val, o.sigma[0] = b.metres * m.sig; break;
    }
}

// The instrument at the first end.
void set_instrument(const Builder &b, const Table &table, int record, va::Observation &o)
{
    const int stand = b.stand(o.from, note_at(table.list.notes.setup, (size_t)record));
    if (stand < 0) return;
    const bool angle = table.item == Item::direction || table.item == Item::vertical_angle;
    if (angle) o.setup = b.setups[(size_t)stand];
    if (table.item == Item::direction) o.setup += b.rounds.orientation[(size_t)record];
    const bool constants = table.list.records[(size_t)record].typ == KIND_DISTANCE_CONSTANTS;
    if (table.item == Item::vertical_angle || constants) o.constants = b.constants[(size_t)stand];
    if (table.item != Item::vertical_angle) return;
    const double own = note_at(table.list.notes.refraction, (size_t)record, unknown_note);
    if (std::isnan(own)) return;
    o.refraction = own; // before that of the group
    o.constants = -1;
}

void add_measure(Builder &b, const Table &table, int record)
{
    measure_input &m = table.list.records[(size_t)record];
    va::Observation o;
    o.kind = table.kind;
    o.from = b.first_point(m.from);
    o.to = b.point(m.to);
    if (m.typ <= 0) return;
    if (!table.takes_part || o.from < 0 || o.to < 0) {
        m.typ = -m.typ;
        return;
    }
    o.factor = table.factor;
    set_value(b, table.item, m, o);
    set_instrument(b, table, record, o);
    if (heights_count(b, table.item)) {
        o.h1 = m.h1;
        o.h2 = m.h2;
    }
    if (table.item != Item::height_difference && table.item != Item::azimuth) {
        o.motion_from = b.motion_at(o.from, m.time);
        o.motion_to = b.motion_at(o.to, m.time);
    }
    if (b.leave_out(o, table.list.where[(size_t)record])) {
        m.typ = -m.typ;
        return;
    }
    b.observe(o, {table.item, record, 0});
    b.correlate(table.list.notes, (size_t)record, 0, 0);
}

// A baseline between antennas as one between the marks below them, along the verticals at the first coordinates; false
// where the antennas have no heights. In the plane heights do not count.
bool lower_to_marks(const Builder &b, const RowNotes &notes, size_t row, va::Observation &o)
{
    const double from = note_at(notes.h1, row, 0.0), to = note_at(notes.h2, row, 0.0);
    const va::Frame &frame = b.numbers.model.frame;
    if ((from == 0.0 && to == 0.0) || b.network.p.dim == 2) return false;
    const auto up_at = [&](int point) {
        const double *x = &b.numbers.model.value[3 * (size_t)point];
        return va::up(frame, va::position(frame, va::Vec3<double>{x[0], x[1], x[2]}));
    };
    if (b.network.p.dim == 1) {
        o.value[0] += from - to;
        return true;
    }
    const va::Vec3<double> shift = from * up_at(o.from) - to * up_at(o.to);
    o.value[0] += shift.x;
    o.value[1] += shift.y;
    o.value[2] += shift.z;
    return true;
}

// A baseline in geocentric axes as one in those of the grid in the middle of the network, for first coordinates.
void turn_to_grid(const GridHorizon &middle, const gps_input &g, va::Observation &o)
{
    const va::Vec3<double> d = middle.seen(g.dx);
    o.value[0] = d.x;
    o.value[1] = d.y;
    o.value[2] = d.z;
}

// The components that the dimension has, with their part of the covariance.
void add_baseline(Builder &b, const GridHorizon &middle, int record)
{
    gps_input &g = b.network.baselines.records[(size_t)record];
    va::Observation o;
    o.kind = va::Kind::baseline;
    o.from = b.point(g.from);
    o.to = b.point(g.to);
    if (g.status <= 0) return;
    if (o.from < 0 || o.to < 0) {
        g.status = -g.status;
        return;
    }
    const List<gps_input> &list = b.network.baselines;
    if (b.leave_out(o, list.where[(size_t)record])) {
        g.status = -g.status;
        return;
    }
    static const int place[3][3] = {{0, 1, 2}, {1, 3, 4}, {2, 4, 5}};
    const int n = b.network.p.dim, first = n == 1 ? 2 : 0;
    std::vector<double> covariance;
    for (int i = first; i < first + n; i++)
        for (int k = first; k < first + n; k++) covariance.push_back(g.cov[place[i][k]]);
    const bool shared = note_at(list.notes.covariance, (size_t)record) >= 0;
    if (!shared) o.group = b.numbers.model.add_group(n, covariance.data());
    o.factor = b.network.p.sgps;
    std::copy(g.dx + first, g.dx + first + n, o.value);
    if (b.reference) turn_to_grid(middle, g, o);
    const bool antennas = lower_to_marks(b, list.notes, (size_t)record, o);
    b.observe(o, {Item::baseline, record, 0});
    if (antennas) std::copy(g.dx + first, g.dx + first + n, b.numbers.raw[(int)b.numbers.items.size() - 1].begin());
    for (int k = 0; k < n; k++) b.correlate(list.notes, (size_t)record, first + k, k);
}

} // namespace

void add_measures(Builder &b)
{
    Model &m = b.network;
    const project &p = m.p;
    const bool heights = p.dim != 2, plan = p.dim != 1, space = p.dim == 3;
    const Table tables[] = {
        {Item::distance, distance_kind(m), m.distances, p.sdist, plan},
        {Item::height_difference, va::Kind::height_difference, m.heightdiffs, p.sdifh, heights},
        {Item::direction, va::Kind::direction, m.directions, p.sdir1, plan},
        {Item::vertical_angle, va::Kind::vertical_angle, m.verticals, p.sdir2, space},
        {Item::azimuth, va::Kind::azimuth, m.azimuths, p.saz, plan},
    };
    size_t rows = 0;
    for (const Table &table : tables) rows += table.list.size();
    b.numbers.model.observations.reserve(rows);
    b.numbers.items.reserve(rows);
    for (const Table &table : tables)
        for (size_t i = 0; i < table.list.size(); i++) add_measure(b, table, (int)i);
}

void add_baselines(Builder &b)
{
    if (b.network.baselines.size() == 0 || b.network.p.igps == 0) return;
    const GridHorizon middle = b.reference ? middle_horizon(b) : GridHorizon();
    for (size_t i = 0; i < b.network.baselines.size(); i++) add_baseline(b, middle, (int)i);
}

} // namespace vornhost
