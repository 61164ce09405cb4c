// Angles, horizontal distances, bearings, scale bars, observed coordinates and differences of coordinates.

#include "host/own/builder.h"
#include "host/own/stands.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

// What the observations of one table share.
struct SightTable {
    Item item;
    va::Kind kind;
    List<SightRow> &list;
    double factor; // a priori
};

void add_sight(Builder &b, const SightTable &table, int record)
{
    SightRow &row = table.list.records[(size_t)record];
    if (!row.use) return;
    const Model &m = b.network;
    va::Observation o;
    o.kind = table.kind;
    o.from = b.point(record_name(m, row.from));
    o.to = b.point(record_name(m, row.to));
    if (row.third >= 0) o.third = b.point(record_name(m, row.third));
    row.use = m.p.dim != 1 && o.from >= 0 && o.to >= 0 && (row.third < 0 || o.third >= 0);
    if (!row.use) return;
    const int stand = b.stand(o.from, note_at(table.list.notes.setup, (size_t)record));
    if (o.kind == va::Kind::angle && stand >= 0 && m.p.dim == 3 && !is_upright(describe_stand(m, stand)))
        o.setup = b.setups[(size_t)stand];
    if (row.constants && stand >= 0) o.constants = b.constants[(size_t)stand];
    o.value[0] = row.value;
    o.sigma[0] = row.sigma;
    o.factor = table.factor;
    row.use = !b.leave_out(o, table.list.where[(size_t)record]);
    if (!row.use) return;
    b.observe(o, {table.item, record, 0});
    b.correlate(table.list.notes, (size_t)record, 0, 0);
}

// One component of observed coordinates or of a difference.
va::Observation component_of(const Builder &b, const VectorRow &row, int from, int to, int axis)
{
    va::Observation o;
    o.value[0] = row.value[axis];
    o.sigma[0] = row.sigma[axis];
    if (row.to >= 0) {
        o.kind = va::Kind::difference;
        o.from = from;
        o.to = to;
        o.axis = (unsigned char)axis;
    } else {
        o.kind = va::Kind::unknown;
        o.unknown = 3 * from + axis;
        o.value[0] -= b.numbers.origin[axis];
    }
    return o;
}

bool has_axis(const Builder &b, int point, int axis)
{
    return point < 0 || b.numbers.model.code[3 * (size_t)point + (size_t)axis] != va::Code::absent;
}

// Components along axes that the network and both points have.
void add_vector(Builder &b, List<VectorRow> &list, int record, Item item, double factor)
{
    VectorRow &row = list.records[(size_t)record];
    if (!row.use) return;
    const int from = b.point(record_name(b.network, row.from));
    const int to = row.to < 0 ? -1 : b.point(record_name(b.network, row.to));
    row.use = false;
    if (from < 0 || (row.to >= 0 && to < 0)) return;
    for (int k = 0, place = 0; k < 3; place += row.given[k++]) {
        if (!row.given[k]) continue;
        if (!has_axis(b, from, k) || !has_axis(b, to, k)) continue;
        row.use = true;
        va::Observation o = component_of(b, row, from, to, k);
        o.factor = factor;
        b.observe(o, {item, record, k});
        b.correlate(list.notes, (size_t)record, place, 0);
    }
    const Source at = list.where[(size_t)record];
    if (!row.use) b.numbers.left_out[{at.file, at.line}] = "its points have none of these coordinates";
}

} // namespace

void add_field_kinds(Builder &b)
{
    Model &m = b.network;
    const SightTable tables[] = {
        {Item::horizontal_distance, va::Kind::horizontal_distance, m.horizontal_distances,
         m.apriori.horizontal_distance},
        {Item::bearing, va::Kind::bearing, m.bearings, m.apriori.bearing},
        {Item::angle, va::Kind::angle, m.angles, m.apriori.angle},
        {Item::scale_bar, va::Kind::scale_bar, m.scale_bars, m.apriori.scale_bar},
    };
    for (const SightTable &table : tables)
        for (size_t i = 0; i < table.list.size(); i++) add_sight(b, table, (int)i);
    for (size_t i = 0; i < m.coordinates.size(); i++)
        if (!is_geocentric(m, i)) add_vector(b, m.coordinates, (int)i, Item::observed_coordinate, m.apriori.coordinate);
    for (size_t i = 0; i < m.coordinate_differences.size(); i++)
        add_vector(b, m.coordinate_differences, (int)i, Item::coordinate_difference, m.apriori.coordinate_difference);
}

} // namespace vornhost
