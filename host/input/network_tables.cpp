#include "host/input/network_tables.h"

#include <string.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>

#include "host/input/angle.h"
#include "host/input/number.h"
#include "host/input/utf8.h"

namespace vornhost {

const char *const table_names[TABLE_COUNT] = {"stations",
                                              "targets",
                                              "distances",
                                              "height_differences",
                                              "directions",
                                              "vertical_angles",
                                              "azimuths",
                                              "baselines",
                                              "groups",
                                              "cameras",
                                              "images",
                                              "lumps",
                                              "pairs",
                                              "derived",
                                              "left_out",
                                              "setups",
                                              "horizontal_distances",
                                              "bearings",
                                              "angles",
                                              "coordinates",
                                              "coordinate_differences",
                                              "scale_bars",
                                              "deflections",
                                              "transformations"};

bool Network::planned(Source at)
{
    if (model.mode != Mode::Propagation) return false;
    if (model.unknown_value.line == 0) model.unknown_value = at;
    return true;
}

size_t Network::each_row(Table &table, const std::vector<Column> &columns, const Table::TakeRow &take,
                         const Table::IsWanted &wanted)
{
    return table.each_row(columns, faults, model.mode == Mode::Propagation, take, wanted);
}

void Network::digest(const TextFile &text)
{
    if (!model.share.whole()) model.digest = 31 * model.digest + std::hash<std::string_view>()(text.text());
}

bool Network::has_dimension(int coordinate) const
{
    switch (model.p.dim) {
    case 1: return coordinate == 2;
    case 2: return coordinate < 2;
    case 3: return true;
    default: return false; // unknown, which is a fault of its own
    }
}

void read_rows(Network &net, TableId id, const std::vector<Column> &columns, void (*read)(Network &, Row &))
{
    Table *table = net.tables[id].get();
    if (!table) return;
    net.each_row(*table, columns, [&](size_t) {
        Row row(*table, 0, net.faults);
        if (table->whole(0)) read(net, row);
    });
}

void enter_rows(Network &net, TableId id, const std::vector<Column> &columns, void (*enter)(Network &, Row &))
{
    Table *table = net.tables[id].get();
    if (!table) return;
    net.each_row(*table, columns, [&](size_t) {
        Row row(*table, 0, net.faults);
        enter(net, row);
    });
}

std::string similar_name(const Network &net, const NameIndex &known, const Row &row, int column, const char *otherwise)
{
    if (!net.faults.wants(row.at(column))) return std::string();
    const std::string_view similar = known.similar(row.name(column));
    return similar.empty() ? otherwise : "did you mean " + quote(similar) + "?";
}

int named_point(Network &net, Row &row, int column)
{
    if (row.name(column).empty()) {
        row.missing(column, "name a point");
        return -1;
    }
    const int number = net.points.find(row.name(column));
    if (number < 0)
        row.fault(column, "unknown point " + row.cell(column),
                  similar_name(net, net.points, row, column, "list it under stations or targets"));
    return number;
}

// Keys for the names that are too long for a record. A short name may look like a key: it stays
// what it is, and its key is passed over.
static void make_keys(Network &net)
{
    const auto taken = [&](std::string_view word) { return net.points.find(word) >= 0 || net.cameras.find(word) >= 0; };
    for (const NameIndex *names : {&net.points, &net.cameras})
        for (size_t i = 0; i < names->size(); i++) net.model.keys.add(names->name((int)i), taken);
}

void enter_names(Network &net)
{
    enter_stations(net);
    enter_targets(net);
    enter_cameras(net);
    make_keys(net);
}

std::string_view new_name(Row &row, int column)
{
    const std::string_view name = row.name(column);
    const size_t length = utf8_count(name);
    if (name.empty()) {
        row.missing(column, "write a name");
    } else if (length > longest_name) {
        row.fault(column,
                  "name " + quote(name) + " has " + std::to_string(length) + " characters, at most " +
                      std::to_string(longest_name) + " fit",
                  "shorten it");
    } else if (printable(name) != name) {
        row.fault(column, "name " + quote(name) + " holds a control character", "remove it");
    }
    return name;
}

int read_code(Row &row, int column, int otherwise)
{
    static const Words codes = {{"free", CODE_FREE},
                                {"no_datum", CODE_NO_DATUM},
                                {"weighted", CODE_WEIGHTED},
                                {"fixed", CODE_FIXED},
                                {"absent", CODE_ABSENT}};
    // 0 means the same as 1, but the engine cannot exclude it where the dimension would.
    return row.text(column) == "0" ? CODE_FREE : row.word(column, otherwise, codes);
}

bool check_angle(int unit, Row &row, int column, double raw)
{
    if (readable_angle(unit, raw)) return true;
    row.fault(column, row.cell(column) + " has minutes or seconds of 60 or more", "write degrees as ddd.mmss");
    return false;
}

// Degrees, minutes and seconds.
static double read_dms_cell(Row &row, int column)
{
    double degrees = 0.0;
    if (!read_dms(row.figures(column), degrees))
        row.fault(column, row.cell(column) + " is not an angle in degrees, minutes and seconds",
                  "write it like 12-30-36.5 or 12\xC2\xB0"
                  "30'36.5\"");
    return degrees;
}

double read_raw_angle(Network &net, Row &row, int column, double otherwise)
{
    if (!row.given(column)) return otherwise;
    const double written = net.angle == ANGLE_DMS ? read_dms_cell(row, column) : row.number(column, 0.0);
    if (!check_angle(net.angle, row, column, written)) return 0.0;
    return in_angle_unit(net.model.p.iangle, net.angle, written);
}

double read_angle(Network &net, Row &row, int column)
{
    return to_radians(net.model.p.iangle, read_raw_angle(net, row, column, 0.0));
}

double read_angle_deviation(Network &net, Row &row, int column, double written)
{
    return check_angle(net.sigma_angle, row, column, written) ? to_radians(net.sigma_angle, written) : 0.0;
}

std::string data_file(Faults &faults, const std::string &network_path, std::string_view written, Source at,
                      size_t field_size)
{
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path joined = fs::path(network_path).parent_path() / fs::path(written);
    std::string path = fs::absolute(joined, error).lexically_normal().string();
    const std::string name = "file " + quote(path);
    if (path.size() >= field_size) {
        faults.add(at,
                   "path " + quote(path) + " has " + std::to_string(path.size()) + " bytes, at most " +
                       std::to_string(field_size - 1) + " fit",
                   "move the files to a folder with a shorter path");
    } else if (!fs::exists(path, error)) {
        faults.add(at, name + " does not exist", "check its name and folder");
    } else if (fs::is_directory(path, error)) {
        faults.add(at, name + " is a folder", "name a file");
    } else if (!std::ifstream(path)) {
        faults.add(at, name + " cannot be opened", "check its permissions");
    } else {
        return path;
    }
    return std::string();
}

void copy_text(char *field, size_t size, const std::string &text)
{
    const size_t length = text.size() < size ? text.size() : size - 1;
    memcpy(field, text.data(), length);
    memset(field + length, 0, size - length);
}

} // namespace vornhost
