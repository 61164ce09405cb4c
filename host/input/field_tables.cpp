// Observations that only the program's own adjustment takes: angles, horizontal distances, bearings, scale bars,
// observed coordinates and differences of coordinates. Values become metres and radians.

#include "host/input/angle.h"
#include "host/input/note_columns.h"
#include "host/input/own_rows.h"

namespace vornhost {

namespace {

// ---- one value between two or three points ----

enum {
    FROM,
    TO,
    VALUE,
    SIGMA,
    USE,
    ID,
    REMARK,
    COVARIANCE,
    AT,
    SETUP = AT,
    THIRD_SETUP,
    CONSTANTS = THIRD_SETUP,
    LEVEL
};

const std::vector<Column> two_columns = {{"from", true}, {"to", true}, {"value", true, true}, {"sigma"}, {"use"},
                                         {"id"},         {"remark"},   {"covariance"}};
const std::vector<Column> distance_columns = {
    {"from", true}, {"to", true}, {"value", true, true}, {"sigma"}, {"use"}, {"id"}, {"remark"},
    {"covariance"}, {"setup"},    {"constants"},         {"level"}};
const std::vector<Column> angle_columns = {
    {"from", true}, {"to", true}, {"value", true, true}, {"sigma"},    {"use"},
    {"id"},         {"remark"},   {"covariance"},        {"at", true}, {"setup"}};

struct SightTable {
    TableId id;
    List<SightRow> Model::*list;
    const std::vector<Column> &columns;
    bool angle; // of the values
};

double length_above_zero(Network &net, Row &row, int column)
{
    const double value = row.length(column, 1.0);
    if (value <= 0.0) row.fault(column, row.cell(column) + " is not above 0", "write a length above 0");
    return value * net.metres;
}

double read_value(Network &net, Row &row, const SightTable &table)
{
    if (!row.given(VALUE) && !net.planned(row.at(VALUE))) row.missing(VALUE, "write a number");
    if (!row.given(VALUE)) return 0.0;
    return table.angle ? read_angle(net, row, VALUE) : length_above_zero(net, row, VALUE);
}

// The standard deviation of the row or of its table, 0 where a covariance says it.
double read_sigma(Network &net, Row &row, const SightTable &table)
{
    const double usual = net.sigma[table.id];
    if (row.given(COVARIANCE) && !row.given(SIGMA)) return 0.0;
    if (!row.given(SIGMA) && usual <= 0.0)
        net.faults.add(row.at(SIGMA), std::string("sigma is not known in table ") + table_names[table.id],
                       std::string("write it in a column sigma or in [sigma] ") + table_names[table.id]);
    const double sigma = row.positive(SIGMA, usual);
    return table.angle ? read_angle_deviation(net, row, SIGMA, sigma) : sigma * net.sigma_metres;
}

void check_ends(Row &row, const SightRow &sight)
{
    if (sight.from >= 0 && sight.from == sight.to)
        row.fault(TO, "observation from " + quote(row.name(FROM)) + " to itself", "name two different points");
    if (sight.third >= 0 && (sight.third == sight.from || sight.third == sight.to))
        row.fault(AT, "angle at " + quote(row.name(AT)) + " between a point and itself", "name three different points");
}

// Whether the instrument of a row belongs to a group with constants.
bool in_group(const Network &net, int from, int setup)
{
    if (setup >= 0 && net.model.setups.records[(size_t)setup].group >= 0) return true;
    return from >= 0 && (size_t)from < net.in_group.size() && net.in_group[(size_t)from];
}

void read_constants(Network &net, Row &row, int setup, SightRow &sight)
{
    sight.constants = row.yes(CONSTANTS, false);
    if (sight.constants && sight.from >= 0 && !in_group(net, sight.from, setup))
        row.fault(CONSTANTS, "point " + quote(row.name(FROM)) + " belongs to no group",
                  "name its group in table stations");
}

// An arc needs to know where the ellipsoid is.
void read_level(const Network &net, Row &row, SightRow &sight)
{
    static const Words levels = {
        {"marks", (int)Level::marks}, {"ellipsoid", (int)Level::ellipsoid}, {"geoid", (int)Level::geoid}};
    sight.level = (Level)row.word(LEVEL, (int)Level::marks, levels);
    if (sight.level == Level::marks) return;
    if (!net.model.crs.given() || net.model.crs.local())
        row.fault(LEVEL, "an arc on the " + std::string(row.text(LEVEL)) + " needs a reference system",
                  "write network = \"EPSG:25832\" in [crs], or marks");
    if (sight.constants)
        row.fault(LEVEL, "a reduced distance has no constants of an instrument", "leave constants or level out");
}

// Angles are taken at the point of column at.
RowStart start_of(TableId id)
{
    if (id == TABLE_ANGLES) return {AT, THIRD_SETUP};
    return {FROM, id == TABLE_HORIZONTAL_DISTANCES ? (int)SETUP : -1};
}

void read_sight(Network &net, Row &row, const SightTable &table)
{
    const bool angles = table.id == TABLE_ANGLES, distances = table.id == TABLE_HORIZONTAL_DISTANCES;
    List<SightRow> &list = net.model.*table.list;
    SightRow sight;
    sight.from = named_point(net, row, FROM);
    sight.to = named_point(net, row, TO);
    if (angles) sight.third = named_point(net, row, AT);
    check_ends(row, sight);
    sight.value = read_value(net, row, table);
    sight.sigma = read_sigma(net, row, table);
    sight.use = row.yes(USE, true);
    const NoteColumns columns{ID, REMARK, COVARIANCE, start_of(table.id).setup};
    const int setup = read_notes(net, row, columns, angles ? sight.third : sight.from, list.notes, list.size());
    if (distances) read_constants(net, row, setup, sight);
    if (distances) read_level(net, row, sight);
    if (angles) { // the record begins where the instrument stands
        const int from = sight.from, to = sight.to;
        sight.from = sight.third;
        sight.to = from;
        sight.third = to;
    }
    list.add(sight, row.at());
}

// ---- three values of a point or between two ----

enum {
    POINT,
    X,
    SX = X + 3,
    VECTOR_USE = SX + 3,
    VECTOR_ID,
    VECTOR_REMARK,
    VECTOR_COVARIANCE,
    SECOND, // of differences
    TRANSFORMATION = SECOND
};

const std::vector<Column> coordinate_columns = {{"name", true}, {"x"},      {"y"},          {"z"},
                                                {"sx"},         {"sy"},     {"sz"},         {"use"},
                                                {"id"},         {"remark"}, {"covariance"}, {"transformation"}};
const std::vector<Column> difference_columns = {{"from", true}, {"dx"},     {"dy"},         {"dz"},
                                                {"sx"},         {"sy"},     {"sz"},         {"use"},
                                                {"id"},         {"remark"}, {"covariance"}, {"to", true}};

// Components that the row knows and the network has.
void read_components(Network &net, Row &row, VectorRow &vector)
{
    const bool together = row.given(VECTOR_COVARIANCE);
    for (int k = 0; k < 3; k++) {
        vector.given[k] = row.given(X + k) && (together || net.has_dimension(k));
        vector.value[k] = row.length(X + k, 0.0) * net.metres;
        vector.sigma[k] = row.positive(SX + k, 0.0) * net.sigma_metres;
        if (vector.given[k] && vector.sigma[k] == 0.0 && !together)
            net.faults.add(row.at(SX + k), std::string("the standard deviation s") + "xyz"[k] + " is not known",
                           "write it, or name a covariance");
    }
    if (vector.components() > 0) return;
    net.faults.add(row.at(), "the row holds no coordinate", "write x, y or z");
}

// Geocentric coordinates are observed whole; only they can be transformed. Others are those of the grid and heights.
void read_frame(Network &net, Row &row, const VectorRow &vector, RowNotes &notes, size_t index)
{
    const bool geocentric = !net.model.crs.coordinates.empty();
    const int transformation = read_transformation(net, row, TRANSFORMATION);
    if (transformation < 0) return;
    if (!geocentric || vector.components() < 3)
        row.fault(TRANSFORMATION, "only geocentric coordinates are transformed",
                  "write coordinates = \"EPSG:4936\" (or the system that they are in) in [crs]");
    set_note(notes.transformation, index, transformation, -1);
}

void read_vector(Network &net, Row &row, List<VectorRow> &list, bool difference)
{
    VectorRow vector;
    vector.from = named_point(net, row, POINT);
    if (difference) vector.to = named_point(net, row, SECOND);
    if (difference && vector.from >= 0 && vector.from == vector.to)
        row.fault(SECOND, "difference of " + quote(row.name(POINT)) + " to itself", "name two different points");
    read_components(net, row, vector);
    vector.use = row.yes(VECTOR_USE, true);
    read_notes(net, row, {VECTOR_ID, VECTOR_REMARK, VECTOR_COVARIANCE}, vector.from, list.notes, list.size());
    if (!difference) read_frame(net, row, vector, list.notes, list.size());
    list.add(vector, row.at());
}

void read_vectors(Network &net, TableId id, const std::vector<Column> &columns, List<VectorRow> &list)
{
    const bool difference = id == TABLE_COORDINATE_DIFFERENCES;
    read_own_rows(net, id, columns, {POINT}, list, [&](Row &row) { read_vector(net, row, list, difference); });
}

} // namespace

void read_field_kinds(Network &net)
{
    static const SightTable tables[] = {
        {TABLE_HORIZONTAL_DISTANCES, &Model::horizontal_distances, distance_columns, false},
        {TABLE_BEARINGS, &Model::bearings, two_columns, true},
        {TABLE_ANGLES, &Model::angles, angle_columns, true},
        {TABLE_SCALE_BARS, &Model::scale_bars, two_columns, false}};
    for (const SightTable &table : tables)
        read_own_rows(net, table.id, table.columns, start_of(table.id), net.model.*table.list,
                      [&](Row &row) { read_sight(net, row, table); });
    read_vectors(net, TABLE_COORDINATES, coordinate_columns, net.model.coordinates);
    read_vectors(net, TABLE_COORDINATE_DIFFERENCES, difference_columns, net.model.coordinate_differences);
}

} // namespace vornhost
