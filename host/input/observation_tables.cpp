// The five lists of observations, the baselines and the pairs. Observed values and their
// standard deviations stay in the file's units; heights above the marks and baselines,
// which the engine takes as they are, become metres.

#include <cmath>

#include "host/input/network_tables.h"

#include "host/input/angle.h"
#include "host/input/note_columns.h"

namespace vornhost {

namespace {

enum { FROM, TO, VALUE, SIGMA, H1, H2, EPOCH, USE, ID, REMARK, COVARIANCE, SETUP, SET, CONSTANTS = SET };

const std::vector<Column> measure_columns = {{"from", true}, {"to", true}, {"value", true}, {"sigma"},
                                             {"h1"},         {"h2"},       {"epoch"},       {"use"},
                                             {"id"},         {"remark"},   {"covariance"}};

std::vector<Column> with(std::vector<Column> columns, std::initializer_list<const char *> more)
{
    for (const char *name : more) columns.push_back({name});
    return columns;
}

const std::vector<Column> distance_columns = with(measure_columns, {"setup", "constants"});
const std::vector<Column> sight_columns = with(measure_columns, {"setup", "set"});

const double pi = 4.0 * atan(1.0);

struct ListKind {
    TableId id;
    int kind;
    List<measure_input> Model::*list;
};

bool is_angle(int kind) { return kind == KIND_DIRECTION || kind == KIND_VERTICAL || kind == KIND_AZIMUTH; }

double read_distance(Row &row)
{
    const double value = row.length(VALUE, 1.0);
    if (value <= 0.0) row.fault(VALUE, row.cell(VALUE) + " is not above 0", "write a distance above 0");
    return value;
}

// Readings of the second face are refused: the engine sees one face only.
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
    row.fault(VALUE, what, second_face ? "reduce the second face to the first: full circle minus the reading" : range);
}

double read_value(Network &net, Row &row, int kind)
{
    if (!row.given(VALUE)) {
        row.missing(VALUE, "write a number");
        return 0.0;
    }
    if (kind == KIND_DISTANCE) return read_distance(row);
    if (!is_angle(kind)) return row.length(VALUE, 0.0);
    const double value = row.number(VALUE, 0.0);
    if (check_angle(net, row, VALUE, value) && kind == KIND_VERTICAL) check_vertical(net, row, value);
    return value;
}

// Columns of a list, and what of them is said beside the values.
const std::vector<Column> &columns_of(int kind)
{
    if (kind == KIND_DISTANCE) return distance_columns;
    return kind == KIND_DIRECTION || kind == KIND_VERTICAL ? sight_columns : measure_columns;
}

NoteColumns notes_of(int kind)
{
    NoteColumns notes{ID, REMARK, COVARIANCE};
    const bool sight = kind == KIND_DIRECTION || kind == KIND_VERTICAL;
    if (sight || kind == KIND_DISTANCE) notes.setup = SETUP;
    if (sight) notes.set = SET;
    return notes;
}

// 0 where a covariance says it.
double read_sigma(Network &net, Row &row, TableId id, int kind)
{
    if (row.given(COVARIANCE) && !row.given(SIGMA)) return 0.0;
    if (!row.given(SIGMA) && net.sigma[id] <= 0.0 && !row.has_cell(SIGMA) && row.has_cell(COVARIANCE))
        row.fault(COVARIANCE, "the row has neither sigma nor covariance", "write one of the two");
    if (!row.given(SIGMA) && net.sigma[id] <= 0.0)
        row.missing(SIGMA, ("write it there or in [sigma] " + std::string(table_names[id])).c_str());
    const double sigma = row.positive(SIGMA, net.sigma[id]);
    if (is_angle(kind)) check_angle(net, row, SIGMA, sigma);
    return sigma;
}

void check_ends(Network &net, Row &row, int from, int to, int kind)
{
    if (from >= 0 && from == to)
        row.fault(TO, "observation from " + quote(row.text(FROM)) + " to itself", "name two different points");
    const bool at_target = from >= 0 && (size_t)from >= net.station_names;
    const bool needs_station = kind == KIND_DIRECTION || kind == KIND_VERTICAL;
    if (!at_target || !needs_station) return;
    row.fault(FROM,
              std::string(kind == KIND_DIRECTION ? "direction" : "vertical angle") + " taken at target " +
                  quote(row.text(FROM)),
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
        row.fault(CONSTANTS, "point " + quote(row.text(FROM)) + " belongs to no group",
                  "name its group in table stations");
    return KIND_DISTANCE_CONSTANTS;
}

void read_measure(Network &net, Row &row, const ListKind &list)
{
    measure_input m = measure_input();
    const int from = named_point(net, row, FROM), to = named_point(net, row, TO);
    check_ends(net, row, from, to, list.kind);
    pad_name(m.from, row.text(FROM));
    pad_name(m.to, row.text(TO));
    m.val = read_value(net, row, list.kind);
    m.sig = read_sigma(net, row, list.id, list.kind);
    List<measure_input> &measures = net.model.*list.list;
    const int setup = read_notes(net, row, notes_of(list.kind), from, measures.notes, measures.size());
    m.h1 = row.length(H1, 0.0) * net.metres;
    if (setup >= 0 && !row.given(H1)) m.h1 = net.model.setups.records[(size_t)setup].h;
    m.h2 = row.length(H2, 0.0) * net.metres;
    m.time = row.whole(EPOCH, 0, 0, largest_epoch);
    m.typ = list.kind == KIND_DISTANCE ? distance_kind(net, row, from, setup) : list.kind;
    if (!row.yes(USE, true)) m.typ = -m.typ;
    measures.add(m, row.at());
}

void read_list(Network &net, const ListKind &list)
{
    Table *table = net.tables[list.id].get();
    if (!table) return;
    table->parse(columns_of(list.kind), net.faults);
    if (table->rows() > 0 && !table->has(SIGMA) && !table->has(COVARIANCE) && net.sigma[list.id] <= 0.0)
        net.faults.add(table->heading_place(), "sigma is not known in table " + table->name(),
                       "add a column sigma or write [sigma] " + table->name());
    for (size_t i = 0; i < table->rows(); i++) {
        Row row(*table, i, net.faults);
        if (table->whole(i)) read_measure(net, row, list);
    }
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
    BASELINE_COVARIANCE
};

const std::vector<Column> baseline_columns = {{"from", true}, {"to", true}, {"dx", true}, {"dy", true}, {"dz", true},
                                              {"cxx"},        {"cxy"},      {"cxz"},      {"cyy"},      {"cyz"},
                                              {"czz"},        {"use"},      {"id"},       {"remark"},   {"covariance"}};

constexpr bool is_variance(int element) { return element == 0 || element == 3 || element == 5; }

// The covariance must have positive variances and correlations within -1 and 1.
void check_covariance(Row &row, const double *c)
{
    bool positive = true;
    for (const int column : {CXX, CYY, CZZ}) {
        if (row.given(column) && c[column - CXX] > 0.0) continue;
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
    double covariance[6];
    for (int i = 0; i < 6; i++) {
        if (is_variance(i) && !row.has_cell(CXX + i) && row.has_cell(BASELINE_COVARIANCE))
            row.fault(BASELINE_COVARIANCE, "the row has neither variances nor covariance", "write one of the two");
        else if (is_variance(i) && !row.given(CXX + i))
            row.missing(CXX + i, "write a number above 0");
        covariance[i] = row.length(CXX + i, is_variance(i) ? 1.0 : 0.0);
        g.cov[i] = covariance[i] * net.metres * net.metres;
    }
    check_covariance(row, covariance);
}

void read_baseline(Network &net, Row &row)
{
    gps_input g = gps_input();
    const int from = named_point(net, row, FROM), to = named_point(net, row, TO);
    check_ends(net, row, from, to, 0);
    pad_name(g.from, row.text(FROM));
    pad_name(g.to, row.text(TO));
    for (int i = 0; i < 3; i++) {
        if (!row.given(DX + i)) row.missing(DX + i, "write a number");
        g.dx[i] = row.length(DX + i, 0.0) * net.metres;
    }
    if (!row.given(BASELINE_COVARIANCE)) read_own_covariance(net, row, g);
    g.status = row.yes(BASELINE_USE, true) ? 1 : -1;
    List<gps_input> &list = net.model.baselines;
    read_notes(net, row, {BASELINE_ID, BASELINE_REMARK, BASELINE_COVARIANCE}, from, list.notes, list.size());
    list.add(g, row.at());
}

// Without a covariance that several share, each baseline needs its variances.
void require_variances(Network &net)
{
    const Table *table = net.tables[TABLE_BASELINES].get();
    if (!table || table->has(BASELINE_COVARIANCE)) return;
    for (const int column : {CXX, CYY, CZZ})
        if (!table->has(column))
            net.faults.add(table->heading_place(),
                           std::string("column ") + table->column_name(column) + " is missing in table baselines",
                           "add it to the heading");
}

const std::vector<Column> pair_columns = {{"from", true}, {"to", true}};

void read_pair(Network &net, Row &row)
{
    pair_input pair = pair_input();
    const int from = named_point(net, row, FROM), to = named_point(net, row, TO);
    if (from >= 0 && from == to)
        row.fault(TO, "pair of " + quote(row.text(FROM)) + " with itself", "name two different points");
    pad_name(pair.from, row.text(FROM));
    pad_name(pair.to, row.text(TO));
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
    read_rows(net, TABLE_BASELINES, baseline_columns, read_baseline);
    require_variances(net);
}

void read_pairs(Network &net) { read_rows(net, TABLE_PAIRS, pair_columns, read_pair); }

} // namespace vornhost
