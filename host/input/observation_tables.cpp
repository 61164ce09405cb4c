// The five lists of observations, the baselines and the pairs. Observed values and their
// standard deviations are in the units of the records; heights above the marks and baselines,
// which the engine takes as they are, become metres.

#include <cmath>

#include "host/input/network_tables.h"

#include "host/input/angle.h"
#include "host/input/note_columns.h"
#include "host/input/own_rows.h"
#include "host/input/stated_sigmas.h"

namespace vornhost {

namespace {

enum {
    FROM,
    TO,
    VALUE,
    SIGMA,
    H1,
    H2,
    EPOCH,
    USE,
    ID,
    REMARK,
    COVARIANCE,
    SETUP,
    SET, // directions and vertical angles
    FACE,
    REFRACTION,      // vertical angles
    CONSTANTS = SET, // distances
    PPM,
    ATMOSPHERE,
    PRISM,
    LENGTH = SETUP, // height differences
    SETUPS
};

const std::vector<Column> measure_columns = {
    {"from", true}, {"to", true}, {"value", true, true}, {"sigma"}, {"h1"}, {"h2"}, {"epoch"}, {"use"},
    {"id"},         {"remark"},   {"covariance"}};

std::vector<Column> with(std::vector<Column> columns, std::initializer_list<const char *> more)
{
    for (const char *name : more) columns.push_back({name});
    return columns;
}

const std::vector<Column> distance_columns =
    with(measure_columns, {"setup", "constants", "ppm", "atmosphere", "prism"});
const std::vector<Column> height_columns = with(measure_columns, {"length", "setups"});
const std::vector<Column> direction_columns = with(measure_columns, {"setup", "set", "face"});
const std::vector<Column> vertical_columns = with(direction_columns, {"refraction"});

const double pi = 4.0 * atan(1.0);

struct ListKind {
    TableId id;
    int kind;
    List<measure_input> Model::*list;
};

bool is_angle(int kind) { return kind == KIND_DIRECTION || kind == KIND_VERTICAL || kind == KIND_AZIMUTH; }

double read_distance(const Network &net, Row &row)
{
    const double value = row.length(VALUE, 1.0) * net.length;
    if (value <= 0.0) row.fault(VALUE, row.cell(VALUE) + " is not above 0", "write a distance above 0");
    return value;
}

// A reading of the second face as one of the first: directions differ by half a circle, zenith angles add up to a
// full one, elevations to a half.
double first_face(const Network &net, int kind, double raw)
{
    const int unit = net.model.p.iangle;
    const double angle = to_radians(unit, raw);
    if (kind == KIND_DIRECTION) return from_direction(unit, angle - pi);
    return from_radians(unit, (net.model.p.izenith == 1 ? 2.0 : 1.0) * pi - angle);
}

// Readings of the second face that do not say so are refused.
void check_vertical(Network &net, Row &row, double raw)
{
    const bool zenith = net.model.p.izenith == 1;
    const double angle = to_radians(net.model.p.iangle, raw);
    const double slack = 1e-9; // radian; the limits themselves are allowed
    const double least = zenith ? 0.0 : -pi / 2.0, most = zenith ? pi : pi / 2.0;
    if (angle >= least - slack && angle <= most + slack) return;
    const std::string what = row.cell(VALUE) + (zenith ? " is no zenith angle" : " is no elevation");
    const bool second_face = zenith && angle > 0.0 && angle <= 2.0 * pi + slack;
    const char *range =
        zenith ? "zenith angles go from 0 to half a circle" : "elevations go from minus to plus a quarter of a circle";
    row.fault(VALUE, what,
              second_face
                  ? "reduce the second face to the first: full circle minus the reading, or write 2 in column face"
                  : range);
}

// The value as it was read, in the unit of the record.
double read_raw_value(Network &net, Row &row, int kind)
{
    if (kind == KIND_DISTANCE) return read_distance(net, row);
    return is_angle(kind) ? read_raw_angle(net, row, VALUE, 0.0) : row.length(VALUE, 0.0) * net.length;
}

// A value that a planned observation may have.
double planned_value(Network &net, int kind, int from, int to)
{
    if (kind == KIND_DISTANCE) return planned_distance(net, from, to) / metres_per_unit(net.model.p);
    return kind == KIND_VERTICAL && net.model.p.izenith == 1 ? from_radians(net.model.p.iangle, pi / 2.0) : 0.0;
}

// Columns of a list, and what of them is said beside the values.
const std::vector<Column> &columns_of(int kind)
{
    if (kind == KIND_DISTANCE) return distance_columns;
    if (kind == KIND_HEIGHT_DIFFERENCE) return height_columns;
    if (kind == KIND_VERTICAL) return vertical_columns;
    return kind == KIND_DIRECTION ? direction_columns : measure_columns;
}

NoteColumns notes_of(int kind)
{
    NoteColumns notes{ID, REMARK, COVARIANCE};
    const bool sight = kind == KIND_DIRECTION || kind == KIND_VERTICAL;
    if (sight || kind == KIND_DISTANCE) notes.setup = SETUP;
    if (sight) notes.set = SET;
    return notes;
}

StatedColumns stated_of(int kind)
{
    StatedColumns c;
    if (kind == KIND_DISTANCE) {
        c.ppm = PPM;
        c.atmosphere = ATMOSPHERE;
        c.prism = PRISM;
    } else if (kind == KIND_HEIGHT_DIFFERENCE) {
        c.length = LENGTH;
        c.setups = SETUPS;
    } else if (kind == KIND_DIRECTION || kind == KIND_VERTICAL) {
        c.face = FACE;
    }
    return c;
}

// The value that is adjusted, in the unit of the record; the reading itself where it is another one goes to the notes.
double read_value(Network &net, Row &row, int kind, int from, int to, RowNotes &notes, size_t index)
{
    if (!row.given(VALUE) && net.planned(row.at(VALUE))) return planned_value(net, kind, from, to);
    if (!row.given(VALUE)) {
        row.missing(VALUE, "write a number");
        return 0.0;
    }
    const size_t faults = net.faults.count();
    const StatedColumns columns = stated_of(kind);
    const double raw = read_raw_value(net, row, kind), metres = metres_per_unit(net.model.p);
    double value = raw;
    if (kind == KIND_DISTANCE) value = reduced_distance(net, row, columns, raw * metres) / metres;
    if (second_face(row, columns)) value = first_face(net, kind, raw);
    if (kind == KIND_VERTICAL && net.faults.count() == faults) check_vertical(net, row, value);
    if (value != raw)
        set_note(notes.raw, index, is_angle(kind) ? to_radians(net.model.p.iangle, raw) : raw * metres, unknown_note);
    return value;
}

// 0 where a covariance says it.
double read_sigma(Network &net, Row &row, TableId id, int kind, double value)
{
    if (row.given(COVARIANCE) && !row.given(SIGMA)) return 0.0;
    const StatedColumns columns = stated_of(kind);
    const double metres = value * metres_per_unit(net.model.p); // of distances
    const double usual = row.given(SIGMA) ? 0.0 : usual_sigma(net, row, id, columns, metres);
    if (!row.given(SIGMA) && usual <= 0.0 && !row.has_cell(SIGMA) && row.has_cell(COVARIANCE))
        row.fault(COVARIANCE, "the row has neither sigma nor covariance", "write one of the two");
    if (!row.given(SIGMA) && usual <= 0.0)
        row.missing(SIGMA, ("write it there or in [sigma] " + std::string(table_names[id])).c_str());
    const double added = row.given(SIGMA) ? added_sigma(net, row, columns, metres) : 0.0;
    const double sigma = row.positive(SIGMA, usual) + added;
    if (!is_angle(kind)) return sigma * net.sigma_length;
    if (!check_angle(net.sigma_angle, row, SIGMA, sigma)) return 0.0;
    return in_angle_unit(net.model.p.iangle, net.sigma_angle, sigma);
}

void check_ends(Network &net, Row &row, int from, int to, int kind)
{
    if (from >= 0 && from == to)
        row.fault(TO, "observation from " + quote(row.name(FROM)) + " to itself", "name two different points");
    const bool at_target = from >= 0 && (size_t)from >= net.station_names;
    const bool needs_station = kind == KIND_DIRECTION || kind == KIND_VERTICAL;
    if (!at_target || !needs_station) return;
    row.fault(FROM,
              std::string(kind == KIND_DIRECTION ? "direction" : "vertical angle") + " taken at target " +
                  quote(row.name(FROM)),
              "list it under stations");
}

// Distances that take the constants of their instrument's group are a kind of their own.
int distance_kind(Network &net, Row &row, int from, int setup)
{
    if (!row.yes(CONSTANTS, false)) return KIND_DISTANCE;
    if (from < 0) return KIND_DISTANCE_CONSTANTS;
    const bool grouped = ((size_t)from < net.in_group.size() && net.in_group[(size_t)from]) ||
                         (setup >= 0 && net.model.setups.records[(size_t)setup].group >= 0);
    if (!grouped)
        row.fault(CONSTANTS, "point " + quote(row.name(FROM)) + " belongs to no group",
                  "name its group in table stations");
    return KIND_DISTANCE_CONSTANTS;
}

// The coefficient of refraction of a single sight.
void read_refraction(Row &row, RowNotes &notes, size_t index)
{
    constexpr double most = 10.0;
    if (!row.given(REFRACTION)) return;
    const double k = row.number(REFRACTION, 0.0);
    if (std::fabs(k) > most)
        row.fault(REFRACTION, row.cell(REFRACTION) + " is no coefficient of refraction",
                  "write a number between -10 and 10, like 0.13");
    set_note(notes.refraction, index, k, unknown_note);
}

void read_measure(Network &net, Row &row, const ListKind &list)
{
    measure_input m = measure_input();
    const int from = named_point(net, row, FROM), to = named_point(net, row, TO);
    check_ends(net, row, from, to, list.kind);
    hold_name(m.from, net.model.keys, row.name(FROM));
    hold_name(m.to, net.model.keys, row.name(TO));
    List<measure_input> &measures = net.model.*list.list;
    m.val = read_value(net, row, list.kind, from, to, measures.notes, measures.size());
    m.sig = read_sigma(net, row, list.id, list.kind, m.val);
    const int setup = read_notes(net, row, notes_of(list.kind), from, measures.notes, measures.size());
    if (list.kind == KIND_VERTICAL) read_refraction(row, measures.notes, measures.size());
    m.h1 = row.length(H1, 0.0) * net.metres;
    if (setup >= 0 && !row.given(H1)) m.h1 = net.model.setups.records[(size_t)setup].h;
    m.h2 = row.length(H2, 0.0) * net.metres;
    m.time = row.whole(EPOCH, 0, 0, largest_epoch);
    m.typ = list.kind == KIND_DISTANCE ? distance_kind(net, row, from, setup) : list.kind;
    if (!row.yes(USE, true)) m.typ = -m.typ;
    measures.add(m, row.at());
}

// Whether rows without a sigma of their own have one all the same.
bool says_sigma(const Network &net, const ListKind &list, const Table &table)
{
    if (net.sigma[list.id] > 0.0) return true;
    if (list.kind == KIND_DISTANCE) return net.stated.ppm > 0.0 || table.has(PPM);
    return list.kind == KIND_HEIGHT_DIFFERENCE && (net.stated.per_km > 0.0 || net.stated.per_setup > 0.0);
}

void read_list(Network &net, const ListKind &list)
{
    const Table *table = net.tables[list.id].get();
    if (!table) return;
    const NoteColumns notes = notes_of(list.kind);
    const size_t rows = read_own_rows(net, list.id, columns_of(list.kind), {FROM, notes.setup, notes.set},
                                      net.model.*list.list, [&](Row &row) { read_measure(net, row, list); });
    if (rows > 0 && !table->has(SIGMA) && !table->has(COVARIANCE) && !says_sigma(net, list, *table))
        net.faults.add(table->heading_place(), "sigma is not known in table " + table->name(),
                       "add a column sigma or write [sigma] " + table->name());
}

enum {
    DX = TO + 1,
    CXX = DX + 3,
    CXY,
    CXZ,
    CYY,
    CYZ,
    CZZ,
    BASELINE_USE,
    BASELINE_ID,
    BASELINE_REMARK,
    BASELINE_COVARIANCE,
    BASELINE_H1,
    BASELINE_H2,
    BASELINE_FACTOR,
    BASELINE_TRANSFORMATION
};

const std::vector<Column> baseline_columns = {
    {"from", true},    {"to", true}, {"dx"},  {"dy"}, {"dz"},     {"cxx"},        {"cxy"}, {"cxz"}, {"cyy"},
    {"cyz"},           {"czz"},      {"use"}, {"id"}, {"remark"}, {"covariance"}, {"h1"},  {"h2"},  {"sigma_factor"},
    {"transformation"}};

constexpr bool is_variance(int element) { return element == 0 || element == 3 || element == 5; }

// Whether a network takes this component of a baseline: that of its dimension, all of geocentric ones.
bool takes_part(const Network &net, int component)
{
    const Crs &crs = net.model.crs;
    return (crs.given() && !crs.local()) || net.has_dimension(component);
}

constexpr int variances[] = {CXX, CYY, CZZ}; // of the components

// The covariance must have positive variances and correlations within -1 and 1.
void check_covariance(const Network &net, Row &row, const double *c)
{
    bool positive = true;
    for (int i = 0; i < 3; i++) {
        const int column = variances[i];
        if (row.given(column) ? c[column - CXX] > 0.0 : !takes_part(net, i)) continue;
        positive = false;
        if (row.given(column))
            row.fault(column, "variance " + row.cell(column) + " is not above 0", "write a number above 0");
    }
    const double xx = c[0], xy = c[1], xz = c[2], yy = c[3], yz = c[4], zz = c[5];
    const double plane = xx * yy - xy * xy;
    const double space = xx * (yy * zz - yz * yz) - xy * (xy * zz - yz * xz) + xz * (xy * yz - yy * xz);
    if (!positive || (plane > 0.0 && space > 0.0)) return;
    row.fault(CXX, "covariance of the baseline is not positive definite", "check cxy, cxz and cyz");
}

void read_own_covariance(Network &net, Row &row, gps_input &g)
{
    const double factor = row.positive(BASELINE_FACTOR, net.stated.baseline_factor), unit = factor * net.sigma_metres;
    double covariance[6];
    for (int i = 0; i < 3; i++) {
        const int column = variances[i];
        if (row.given(column) || !takes_part(net, i)) continue;
        if (!row.has_cell(column) && row.has_cell(BASELINE_COVARIANCE))
            row.fault(BASELINE_COVARIANCE, "the row has neither variances nor covariance", "write one of the two");
        else
            row.missing(column, "write a number above 0");
    }
    for (int i = 0; i < 6; i++) {
        covariance[i] = row.length(CXX + i, is_variance(i) ? 1.0 : 0.0);
        g.cov[i] = covariance[i] * unit * unit;
    }
    check_covariance(net, row, covariance);
}

// Heights of the antennas above the marks, metres.
void read_antennas(const Network &net, Row &row, RowNotes &notes, size_t index)
{
    const double from = row.length(BASELINE_H1, 0.0) * net.metres, to = row.length(BASELINE_H2, 0.0) * net.metres;
    if (from != 0.0) set_note(notes.h1, index, from, 0.0);
    if (to != 0.0) set_note(notes.h2, index, to, 0.0);
}

void read_baseline(Network &net, Row &row)
{
    gps_input g = gps_input();
    const int from = named_point(net, row, FROM), to = named_point(net, row, TO);
    check_ends(net, row, from, to, 0);
    hold_name(g.from, net.model.keys, row.name(FROM));
    hold_name(g.to, net.model.keys, row.name(TO));
    for (int i = 0; i < 3; i++) {
        if (!row.given(DX + i) && takes_part(net, i) && !net.planned(row.at(DX + i)))
            row.missing(DX + i, "write a number");
        g.dx[i] = row.length(DX + i, 0.0) * net.metres;
    }
    List<gps_input> &list = net.model.baselines;
    if (!row.given(BASELINE_COVARIANCE)) read_own_covariance(net, row, g);
    if (row.given(BASELINE_COVARIANCE) && row.given(BASELINE_FACTOR))
        row.fault(BASELINE_FACTOR, "the covariance of this row is that of several",
                  "write sigma_factor in its section [covariances.NAME]");
    read_antennas(net, row, list.notes, list.size());
    g.status = row.yes(BASELINE_USE, true) ? 1 : -1;
    read_notes(net, row, {BASELINE_ID, BASELINE_REMARK, BASELINE_COVARIANCE}, from, list.notes, list.size());
    const int transformation = read_transformation(net, row, BASELINE_TRANSFORMATION);
    if (transformation >= 0) set_note(list.notes.transformation, list.size(), transformation, -1);
    list.add(g, row.at());
}

// The columns of the components that the network takes, and of their variances where no covariance is shared.
void require_components(Network &net)
{
    const Table *table = net.tables[TABLE_BASELINES].get();
    if (!table) return;
    const auto require = [&](int column) {
        if (!table->has(column))
            net.faults.add(table->heading_place(),
                           std::string("column ") + table->column_name(column) + " is missing in table baselines",
                           "add it to the heading");
    };
    for (int i = 0; i < 3; i++) {
        if (!takes_part(net, i)) continue;
        if (net.model.mode != Mode::Propagation) require(DX + i);
        if (!table->has(BASELINE_COVARIANCE)) require(variances[i]);
    }
}

const std::vector<Column> pair_columns = {{"from", true}, {"to", true}};

void read_pair(Network &net, Row &row)
{
    pair_input pair = pair_input();
    const int from = named_point(net, row, FROM), to = named_point(net, row, TO);
    if (from >= 0 && from == to)
        row.fault(TO, "pair of " + quote(row.name(FROM)) + " with itself", "name two different points");
    hold_name(pair.from, net.model.keys, row.name(FROM));
    hold_name(pair.to, net.model.keys, row.name(TO));
    net.model.pairs.add(pair, row.at());
}

} // namespace

void read_measures(Network &net)
{
    static const ListKind lists[] = {
        {TABLE_DISTANCES, KIND_DISTANCE, &Model::distances},
        {TABLE_HEIGHT_DIFFERENCES, KIND_HEIGHT_DIFFERENCE, &Model::heightdiffs},
        {TABLE_DIRECTIONS, KIND_DIRECTION, &Model::directions},
        {TABLE_VERTICAL_ANGLES, KIND_VERTICAL, &Model::verticals},
        {TABLE_AZIMUTHS, KIND_AZIMUTH, &Model::azimuths},
    };
    for (const ListKind &list : lists) read_list(net, list);
}

void read_baselines(Network &net)
{
    read_own_rows(net, TABLE_BASELINES, baseline_columns, {FROM}, net.model.baselines,
                  [&](Row &row) { read_baseline(net, row); });
    require_components(net);
}

void read_pairs(Network &net) { read_rows(net, TABLE_PAIRS, pair_columns, read_pair); }

} // namespace vornhost
