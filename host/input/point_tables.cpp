// Stations and targets: coordinates with codes and standard deviations in the file's unit
// of length, orientations in radians.

#include "host/input/network_tables.h"

#include <cmath>

#include "host/input/angle.h"

namespace vornhost {

namespace {

// The columns that stations and targets share stand first.
enum {
    NAME,
    X,
    SX = X + 3,
    CODE = SX + 3,
    CODE_X,
    STATUS = CODE_X + 3,
    LUMP,
    CONNECT,
    LATITUDE,
    LONGITUDE,
    RX,
    ORIENTATION = RX + 3,
    SRX,
    CODE_RX = SRX + 3,
    LEVELLED = CODE_RX + 3,
    GROUP
};

const std::vector<Column> target_columns = {
    {"name", true}, {"x"},      {"y"},      {"z"},      {"sx"},   {"sy"},      {"sz"},       {"code"},
    {"code_x"},     {"code_y"}, {"code_z"}, {"status"}, {"lump"}, {"connect"}, {"latitude"}, {"longitude"}};

std::vector<Column> all_station_columns()
{
    std::vector<Column> columns = target_columns;
    for (const char *name : {"rx1", "rx2", "rx3", "orientation", "srx1", "srx2", "srx3", "code_rx1", "code_rx2",
                             "code_rx3", "levelled", "group"})
        columns.push_back({name});
    return columns;
}

const std::vector<Column> station_columns = all_station_columns();

constexpr int largest_lump = 1000000;
constexpr int largest_status = 9999;

int read_status(Row &row)
{
    static const Words statuses = {{"used", STATUS_ON}, {"compute", STATUS_COMPUTE}, {"off", STATUS_OFF}};
    if (!row.given(STATUS)) return STATUS_ON;
    const char first = row.text(STATUS)[0];
    if (first != '-' && first != '+' && (first < '0' || first > '9')) return row.word(STATUS, STATUS_ON, statuses);
    const int status = row.whole(STATUS, STATUS_ON, -largest_status, largest_status);
    if (status == 0) row.fault(STATUS, "status 0 would stop the loading of the network", "write off");
    return status;
}

int read_connect(Row &row)
{
    static const Words connects = {{"none", 0}, {"export", 1}, {"import", 2}};
    return row.word(CONNECT, 0, connects);
}

// A standard deviation, which a weighted value needs.
double read_deviation(Row &row, int column, const char *name, int code)
{
    if (code == CODE_WEIGHTED) {
        if (!row.given(column))
            row.fault(column, std::string("a weighted value needs its standard deviation ") + name,
                      std::string("write it in column ") + name);
        return row.positive(column, 0.0);
    }
    const double sigma = row.length(column, 0.0);
    if (sigma < 0.0) row.fault(column, row.cell(column) + " is negative", "write a number above 0");
    return sigma;
}

// Codes of the three coordinates, and the columns that say them.
struct Codes {
    int code[3], column[3];
};

Codes read_codes(const Network &net, Row &row)
{
    Codes codes;
    const int common = read_code(row, CODE, CODE_FREE);
    for (int i = 0; i < 3; i++) {
        const bool own = row.given(CODE_X + i);
        const int code = own ? read_code(row, CODE_X + i, CODE_FREE) : common;
        codes.column[i] = own ? CODE_X + i : CODE;
        codes.code[i] = net.has_dimension(i) ? code : CODE_ABSENT;
    }
    return codes;
}

// Whether a row knows a coordinate; those of the plan may stand in latitude and longitude.
bool knows(const Row &row, int axis)
{
    return row.given(X + axis) || (axis < 2 && row.given(LATITUDE) && row.given(LONGITUDE));
}

// Whether the run needs a coordinate that the row does not know. The program's own adjustment does without one that is
// absent.
bool missing_coordinate(const Network &net, const Row &row, const Codes &codes)
{
    for (int i = 0; i < 3; i++) {
        const bool needless = codes.code[i] == CODE_ABSENT && net.model.solver == Solver::Sparse;
        if (net.has_dimension(i) && !needless && !knows(row, i)) return true;
    }
    return false;
}

// A coordinate that is held needs a value, also where others of the point are computed.
void check_held(Row &row, const Codes &codes)
{
    for (int i = 0; i < 3; i++) {
        if (!is_held(codes.code[i]) || knows(row, i)) continue;
        const std::string held(1, "xyz"[i]);
        row.fault(codes.column[i], row.cell(codes.column[i]) + " needs a value of " + held,
                  "write it or make the coordinate free");
        return;
    }
}

bool all_held(const Network &net, const Codes &codes)
{
    for (int i = 0; i < 3; i++)
        if (net.has_dimension(i) && !is_held(codes.code[i])) return false;
    return true;
}

// Latitude and longitude in degrees, in radians; false where the row has none.
bool read_geographic(const Network &net, Row &row, double (&place)[2])
{
    if (!row.given(LATITUDE) && !row.given(LONGITUDE)) return false;
    static const double most[2] = {90.0, 360.0};
    for (int k = 0; k < 2; k++) {
        const int column = LATITUDE + k;
        if (!row.given(column)) row.missing(column, "write both latitude and longitude, in degrees");
        const double degrees = row.number(column, 0.0);
        if (!(std::fabs(degrees) <= most[k]))
            row.fault(column, row.cell(column) + " is no angle on the earth", "write degrees");
        place[k] = to_radians(ANGLE_DEGREE, degrees);
    }
    if (row.given(X) || row.given(X + 1))
        row.fault(LATITUDE, "latitude and x or y are both given", "write one of the two");
    else if (!net.places)
        row.fault(LATITUDE, "latitude and longitude need a reference system", "write network in [crs]");
    return true;
}

// Coordinates that stand in another reference system than the network's, or as latitude and longitude.
template <class Record> void take_place(Network &net, Row &row, bool station, Record &point)
{
    double plan[2] = {0, 0};
    const bool geographic = read_geographic(net, row, plan);
    if (!net.places || !net.places->converts(station, geographic)) return;
    const bool plain = net.places->geographic(station);
    if (geographic != plain) {
        if (geographic || row.given(X) || row.given(X + 1))
            row.fault(geographic ? LATITUDE : X,
                      plain ? "x and y are no longitude and latitude" : "the table is not in longitude and latitude",
                      plain ? "write columns latitude and longitude"
                            : "write x, y, z, or another system for the table in [crs]");
        return;
    }
    if (!geographic && !(row.given(X) && row.given(X + 1))) return;
    const double metres = metres_in(net.model.p.iunit);
    PointPlan where{plan[0], plan[1], row.given(X + 2), point.x[2] * metres};
    if (!geographic) where = {point.x[0] * metres, point.x[1] * metres, row.given(X + 2), point.x[2] * metres};
    const std::string fault = net.places->into_network(station, where);
    if (!fault.empty()) row.fault(geographic ? LATITUDE : X, fault, "check the coordinates and the systems in [crs]");
    for (int k = 0; k < 3; k++) point.x[k] = where.x[k] / metres;
}

// A plane network with a reference system reduces its distances with heights.
template <class Record> void take_height(Network &net, const Row &row, bool station, size_t record, Record &point)
{
    const Crs &crs = net.model.crs;
    if (!crs.given() || net.model.p.dim != 2 || row.given(X + 2)) return;
    if (crs.height)
        point.x[2] = *crs.height / metres_in(net.model.p.iunit);
    else
        net.model.heightless.insert({station, (int)record});
}

// Everything that stations and targets have in common, the name apart.
template <class Record> void read_point(Network &net, Row &row, bool station, size_t record, Record &point)
{
    static const char *const deviations[] = {"sx", "sy", "sz"};
    const Codes codes = read_codes(net, row);
    for (int i = 0; i < 3; i++) {
        point.x[i] = row.length(X + i, 0.0) * net.length;
        point.ix[i] = codes.code[i];
        point.sx[i] = read_deviation(row, SX + i, deviations[i], codes.code[i]) * net.sigma_length;
    }
    take_place(net, row, station, point);
    take_height(net, row, station, record, point);
    point.status = read_status(row);
    if (missing_coordinate(net, row, codes) && point.status >= 0) {
        check_held(row, codes);
        point.status = STATUS_COMPUTE;
    }
    if (point.status == STATUS_COMPUTE && all_held(net, codes)) point.status = STATUS_ON; // nothing is left to compute
    point.ilump = row.whole(LUMP, 0, 0, largest_lump);
    point.iconn = read_connect(row);
}

// Enters the name in the index.
void enter_point(Network &net, Row &row)
{
    if (!row.has_cell(NAME)) return;
    const std::string_view name = new_name(row, NAME);
    if (name.empty() || net.points.add(name, row.at(NAME))) return;
    const Source first = net.points.where(net.points.find(name));
    row.fault(NAME, "point " + quote(name) + " is listed twice",
              "keep one of the two, the first stands at " + net.faults.file(first.file) + ":" +
                  std::to_string(first.line) + ":" + std::to_string(first.column));
}

// Code of a rotation. A levelled instrument stands upright; one dimension has no
// rotations, two have only the one around the vertical.
int rotation_code(const Network &net, Row &row, int i, bool levelled)
{
    const int code = read_code(row, CODE_RX + i, i < 2 && levelled ? CODE_FIXED : CODE_FREE);
    const bool exists = net.model.p.dim == 3 || (net.model.p.dim == 2 && i == 2);
    return exists ? code : CODE_ABSENT;
}

// A direction is azimuth + Rx3, so the azimuth of the circle's zero is -Rx3.
void read_orientation(Network &net, Row &row, station_input &station)
{
    if (!row.given(ORIENTATION)) return;
    const double azimuth = read_angle(net, row, ORIENTATION);
    if (row.given(RX + 2)) row.fault(ORIENTATION, "orientation and rx3 are both given", "write one of the two");
    station.r[2] = -azimuth;
}

StationNote read_rotations(Network &net, Row &row, station_input &station)
{
    static const char *const deviations[] = {"srx1", "srx2", "srx3"};
    StationNote note;
    for (int i = 0; i < 3; i++) {
        station.r[i] = read_angle(net, row, RX + i);
        station.ir[i] = rotation_code(net, row, i, station.ilevel == 1);
        const double sigma = read_deviation(row, SRX + i, deviations[i], station.ir[i]);
        station.sr[i] = read_angle_deviation(net, row, SRX + i, sigma);
        if (row.given(CODE_RX + i)) note.rotation_coded = true;
    }
    read_orientation(net, row, station);
    note.orientation_given = row.given(RX + 2) || row.given(ORIENTATION);
    return note;
}

void read_group_of(Network &net, Row &row, station_input &station)
{
    station.typ = 1;
    if (!row.given(GROUP)) return;
    const int group = net.groups.find(row.text(GROUP));
    if (group >= 0) {
        station.typ = 2;
        const size_t number = (size_t)net.points.find(row.name(NAME));
        if (number < net.points.size()) {
            net.in_group.resize(net.points.size());
            net.in_group[number] = true;
        }
        net.model.group_members[(size_t)group].push_back((int)net.model.stations.size());
        return;
    }
    row.fault(GROUP, "unknown group " + row.cell(GROUP),
              similar_name(net, net.groups, row, GROUP, "list it under groups"));
}

void read_station(Network &net, Row &row)
{
    station_input station = station_input();
    hold_name(station.name, net.model.keys, row.name(NAME));
    read_point(net, row, true, net.model.stations.size(), station);
    station.ilevel = row.yes(LEVELLED, true) ? 1 : 0;
    const StationNote note = read_rotations(net, row, station);
    read_group_of(net, row, station);
    net.model.stations.add(station, row.at());
    net.model.station_notes.push_back(note);
}

void read_target(Network &net, Row &row)
{
    target_input target = target_input();
    hold_name(target.name, net.model.keys, row.name(NAME));
    read_point(net, row, false, net.model.targets.size(), target);
    net.model.targets.add(target, row.at());
}

// Room for as many points as have entered their names: lists that grow would hold them twice for a moment.
template <class Record> void make_room(List<Record> &list, size_t count)
{
    list.records.reserve(count);
    list.where.reserve(count);
}

} // namespace

void enter_stations(Network &net)
{
    enter_rows(net, TABLE_STATIONS, station_columns, enter_point);
    net.station_names = net.points.size();
}

void enter_targets(Network &net) { enter_rows(net, TABLE_TARGETS, target_columns, enter_point); }

void read_stations(Network &net)
{
    make_room(net.model.stations, net.station_names);
    net.model.station_notes.reserve(net.station_names);
    read_rows(net, TABLE_STATIONS, station_columns, read_station);
}

void read_targets(Network &net)
{
    make_room(net.model.targets, net.points.size() - net.station_names);
    read_rows(net, TABLE_TARGETS, target_columns, read_target);
}

} // namespace vornhost
