#include "host/input/network_tables.h"

#include <string.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "host/input/angle.h"
#include "host/input/number.h"

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
                                              "setups",
                                              "horizontal_distances",
                                              "bearings",
                                              "angles",
                                              "coordinates",
                                              "coordinate_differences",
                                              "scale_bars"};

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
    table->parse(columns, net.faults);
    for (size_t i = 0; i < table->rows(); i++) {
        Row row(*table, i, net.faults);
        if (table->whole(i)) read(net, row);
    }
}

std::string similar_name(const Network &net, const NameIndex &known, const Row &row, int column, const char *otherwise)
{
    if (!net.faults.wants(row.at(column))) return std::string();
    const std::string_view similar = known.similar(row.text(column));
    return similar.empty() ? otherwise : "did you mean " + quote(similar) + "?";
}

int named_point(Network &net, Row &row, int column)
{
    if (!row.given(column)) {
        row.missing(column, "name a point");
        return -1;
    }
    const int number = net.points.find(row.text(column));
    if (number < 0)
        row.fault(column, "unknown point " + row.cell(column),
                  similar_name(net, net.points, row, column, "list it under stations or targets"));
    return number;
}

std::string_view new_name(Row &row, int column, size_t most)
{
    const std::string_view name = row.text(column);
    if (name.empty()) {
        row.missing(column, "write a name");
    } else if (name.size() > most) {
        row.fault(column,
                  "name " + quote(name) + " has " + std::to_string(name.size()) + " bytes, at most " +
                      std::to_string(most) + " fit",
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

bool check_angle(Network &net, Row &row, int column, double raw)
{
    if (readable_angle(net.model.p.iangle, raw)) return true;
    row.fault(column, row.cell(column) + " has minutes or seconds of 60 or more", "write degrees as ddd.mmss");
    return false;
}

double read_angle(Network &net, Row &row, int column)
{
    const double raw = row.number(column, 0.0);
    return check_angle(net, row, column, raw) ? to_radians(net.model.p.iangle, raw) : 0.0;
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
