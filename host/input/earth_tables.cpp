// What belongs to reference systems: deflections of the vertical, and transformations of observations that stand in
// another system than the network. Arc seconds and millionths in the file, radians and factors in the records.

#include "host/input/network_tables.h"

namespace vornhost {

namespace {

constexpr double arc_second = 3.14159265358979323846 / 648000.0;
constexpr double largest_lean = 600.0;      // arc seconds; mountains reach 120
constexpr double largest_rotation = 3600.0; // arc seconds
constexpr double largest_scale = 1e4;       // millionths

// Whether positions are geocentric; a table that needs them has one fault where they are not.
bool in_space_on_earth(Network &net, TableId id, const char *what)
{
    const Crs &crs = net.model.crs;
    if (crs.given() && !crs.local() && net.model.p.dim == 3) return true;
    const Table *table = net.tables[id].get();
    if (table)
        net.faults.add(table->heading_place(),
                       std::string(what) + " in space on the ellipsoid, " +
                           (crs.given() && !crs.local() ? "not in the plane of a grid" : "which needs a projection"),
                       crs.given() && !crs.local() ? "write dimension = 3 in [run], or leave the table out"
                                                   : "write network = \"EPSG:25832\" in [crs], or leave the table out");
    return false;
}

// ---- deflections of the vertical ----

enum { NAME, XI, ETA, SIGMA_XI, SIGMA_ETA };

const std::vector<Column> deflection_columns = {{"name", true}, {"xi", true}, {"eta", true}, {"sxi"}, {"seta"}};

double bounded(Row &row, int column, double largest, const char *unit)
{
    const double value = row.number(column, 0.0);
    if (value >= -largest && value <= largest) return value;
    row.fault(column, row.cell(column) + " is out of all proportion", std::string("write it in ") + unit);
    return 0.0;
}

void read_deflection(Network &net, Row &row)
{
    DeflectionRow deflection;
    deflection.point = named_point(net, row, NAME);
    for (int k = 0; k < 2; k++) {
        if (!row.given(XI + k)) row.missing(XI + k, "write it in arc seconds");
        deflection.value[k] = bounded(row, XI + k, largest_lean, "arc seconds") * arc_second;
        deflection.sigma[k] = row.positive(SIGMA_XI + k, 0.0) * arc_second;
    }
    net.leaning.resize(net.points.size());
    if (deflection.point >= 0 && net.leaning[(size_t)deflection.point])
        row.fault(NAME, "the deflection at " + row.cell(NAME) + " is listed twice", "keep one of the two");
    if (deflection.point >= 0) net.leaning[(size_t)deflection.point] = true;
    net.model.deflections.add(deflection, row.at());
}

// ---- transformations ----

enum { LABEL, SYSTEM, EPOCH, CODE, CODE_SHIFT, CODE_ROTATION, CODE_SCALE, VALUE, SIGMA = VALUE + 7 };

const std::vector<Column> transformation_columns = {
    {"name", true}, {"system"}, {"epoch"}, {"code"}, {"code_shift"}, {"code_rotation"}, {"code_scale"}, {"tx"},
    {"ty"},         {"tz"},     {"rx"},    {"ry"},   {"rz"},         {"scale"},         {"stx"},        {"sty"},
    {"stz"},        {"srx"},    {"sry"},   {"srz"},  {"sscale"}};

// Shifts in the file's unit of length, rotations in arc seconds, scale in millionths above 1.
double read_parameter(const Network &net, Row &row, int k)
{
    if (k < 3) return row.length(VALUE + k, 0.0) * net.metres;
    if (k < 6) return bounded(row, VALUE + k, largest_rotation, "arc seconds") * arc_second;
    return 1.0 + 1e-6 * bounded(row, VALUE + k, largest_scale, "millionths (ppm)");
}

double read_parameter_deviation(const Network &net, Row &row, int k)
{
    return row.positive(SIGMA + k, 0.0) * (k < 3 ? net.sigma_metres : k < 6 ? arc_second : 1e-6);
}

int read_parameter_code(Row &row, int k)
{
    const int whole = read_code(row, CODE, CODE_FIXED);
    const int code = read_code(row, k < 3 ? CODE_SHIFT : k < 6 ? CODE_ROTATION : CODE_SCALE, whole);
    return code == CODE_NO_DATUM ? CODE_FREE : code;
}

void read_parameters(const Network &net, Row &row, TransformationRow &t)
{
    for (int k = 0; k < 7; k++) {
        t.value[k] = read_parameter(net, row, k);
        t.sigma[k] = read_parameter_deviation(net, row, k);
        t.code[k] = read_parameter_code(row, k);
        if (t.code[k] == CODE_ABSENT) t.code[k] = CODE_FIXED;
        if (t.code[k] == CODE_WEIGHTED && t.sigma[k] == 0.0)
            row.fault(SIGMA + k,
                      std::string("the weighted parameter ") + transformation_columns[(size_t)VALUE + (size_t)k].name +
                          " needs its standard deviation",
                      std::string("write it in column ") + transformation_columns[(size_t)SIGMA + (size_t)k].name);
    }
}

void read_row(Network &net, Row &row)
{
    TransformationRow t;
    const std::string_view name = new_name(row, LABEL);
    if (!name.empty() && !net.transformations.add(name, row.at(LABEL)))
        row.fault(LABEL, "transformation " + quote(name) + " is listed twice", "keep one of the two");
    t.name = name;
    t.system = row.text(SYSTEM);
    t.epoch = row.number(EPOCH, 0.0);
    if (row.given(EPOCH) && !(t.epoch > 1000.0 && t.epoch < 3000.0))
        row.fault(EPOCH, row.cell(EPOCH) + " is no year", "write it like 2015.13");
    read_parameters(net, row, t);
    net.model.transformations.add(t, row.at());
}

} // namespace

void read_deflections(Network &net)
{
    if (in_space_on_earth(net, TABLE_DEFLECTIONS, "deflections of the vertical act"))
        read_rows(net, TABLE_DEFLECTIONS, deflection_columns, read_deflection);
}

void read_transformations(Network &net)
{
    if (in_space_on_earth(net, TABLE_TRANSFORMATIONS, "observations are transformed"))
        read_rows(net, TABLE_TRANSFORMATIONS, transformation_columns, read_row);
}

int read_transformation(Network &net, Row &row, int column)
{
    if (!row.given(column)) return -1;
    const int found = net.transformations.find(row.text(column));
    if (found < 0)
        row.fault(column, "unknown transformation " + row.cell(column),
                  similar_name(net, net.transformations, row, column, "list it in table transformations"));
    return found;
}

} // namespace vornhost
