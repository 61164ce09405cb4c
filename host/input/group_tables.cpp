// Instrument groups and lumps: constants and movements shared by several points.
// Additive constants and translations become metres, rotations radians.

#include "host/input/network_tables.h"

namespace vornhost {

namespace {

enum { NAME, CONSTANT, DEVIATION = CONSTANT + 3, CONSTANT_CODE = DEVIATION + 3 };

const std::vector<Column> group_columns = {{"name", true}, {"additive"},       {"scale"},        {"refraction"},
                                           {"s_additive"}, {"s_scale"},        {"s_refraction"}, {"code_additive"},
                                           {"code_scale"}, {"code_refraction"}};

// A constant is in use when its code is free or weighted. The engine leaves out a fixed
// one whatever its value, so a value that would be lost is a fault.
int constant_code(Row &row, int i, double value, double neutral)
{
    const int code = read_code(row, CONSTANT_CODE + i, CODE_FIXED);
    const bool unused = code == CODE_FIXED || code == CODE_ABSENT;
    if (unused && value != neutral)
        row.fault(CONSTANT + i, row.cell(CONSTANT + i) + " would not be used",
                  std::string("write free or weighted in column ") +
                      group_columns[(size_t)CONSTANT_CODE + (size_t)i].name);
    return code;
}

double constant_deviation(Row &row, int i, int code)
{
    const int column = DEVIATION + i;
    if (code == CODE_WEIGHTED && !row.given(column))
        row.fault(column,
                  std::string("a weighted constant needs its standard deviation ") + group_columns[(size_t)column].name,
                  std::string("write it in column ") + group_columns[(size_t)column].name);
    return row.positive(column, 0.0);
}

void read_group(Network &net, Row &row)
{
    static const double neutral[] = {0.0, 1.0, 0.0};
    group_input group = group_input();
    for (int i = 0; i < 3; i++) {
        const double unit = i == 0 ? net.metres : 1.0, sigma_unit = i == 0 ? net.sigma_metres : 1.0;
        const double value = row.length(CONSTANT + i, neutral[i]);
        group.ic[i] = constant_code(row, i, value, neutral[i]);
        group.c[i] = value * unit;
        group.sc[i] = constant_deviation(row, i, group.ic[i]) * sigma_unit;
    }
    const std::string_view name = new_name(row, NAME);
    if (!name.empty() && !net.groups.add(name, row.at(NAME)))
        row.fault(NAME, "group " + quote(name) + " is listed twice", "keep one of the two");
    net.model.group_names.emplace_back(name);
    net.model.group_members.emplace_back();
    net.model.groups.add(group, row.at());
}

enum { LUMP, KIND, REFERENCE, EPOCH, LUMP_CODE, SCALE, TX, RX = TX + 3 };

const std::vector<Column> lump_columns = {{"lump", true}, {"kind"}, {"reference"}, {"epoch", true}, {"code"}, {"scale"},
                                          {"tx"},         {"ty"},   {"tz"},        {"rx"},          {"ry"},   {"rz"}};

constexpr int not_given = -1;
constexpr int largest_number = 1000000;

// Index of the definition of a lump, made when its first row comes.
size_t lump_definition_of(Network &net, int id, Source at)
{
    const auto [place, is_new] = net.lumps.emplace(id, net.model.lumpdefs.size());
    if (!is_new) return place->second;
    lump_definition lump = lump_definition();
    lump.id = id;
    lump.kind = lump.iref = not_given;
    net.model.lumpdefs.add(lump, at);
    net.model.lump_tables.emplace_back();
    return place->second;
}

// A property of the whole lump: every row that gives it must give the same.
void agree(Row &row, int column, int value, int &common)
{
    if (!row.given(column)) return;
    if (common != not_given && common != value)
        row.fault(column, row.cell(column) + " contradicts an earlier row of the lump",
                  "give the same in all its rows");
    common = value;
}

void add_epoch(Network &net, Row &row, Model::LumpTable &table, int epoch)
{
    static const Words codes = {{"free", CODE_FREE}, {"fixed", CODE_FIXED}};
    for (const int known : table.epoch)
        if (known == epoch) {
            row.fault(EPOCH, row.cell(EPOCH) + " is listed twice for the lump", "keep one of the two");
            return;
        }
    table.epoch.push_back(epoch);
    table.code.push_back(row.word(LUMP_CODE, CODE_FREE, codes));
    table.scale.push_back(row.positive(SCALE, 1.0));
    std::vector<double> *const translation[] = {&table.tx, &table.ty, &table.tz};
    std::vector<double> *const rotation[] = {&table.rx, &table.ry, &table.rz};
    for (int i = 0; i < 3; i++) {
        translation[i]->push_back(row.length(TX + i, 0.0) * net.metres);
        rotation[i]->push_back(read_angle(net, row, RX + i));
    }
}

void read_lump(Network &net, Row &row)
{
    static const Words kinds = {{"similarity", 0}, {"no_rotation", 1}, {"no_scale", 2}};
    if (!row.given(LUMP)) row.missing(LUMP, "write the lump's number");
    if (!row.given(EPOCH)) row.missing(EPOCH, "write the epoch's number");
    const int id = row.whole(LUMP, 0, 1, largest_number);
    const int epoch = row.whole(EPOCH, 0, 1, largest_epoch);
    const size_t index = lump_definition_of(net, id, row.at());
    lump_definition &lump = net.model.lumpdefs.records[index];
    agree(row, KIND, row.word(KIND, 0, kinds), lump.kind);
    agree(row, REFERENCE, row.whole(REFERENCE, 0, 1, largest_epoch), lump.iref);
    if (epoch > 0) add_epoch(net, row, net.model.lump_tables[index], epoch);
}

} // namespace

void read_groups(Network &net) { read_rows(net, TABLE_GROUPS, group_columns, read_group); }

void read_lumps(Network &net)
{
    read_rows(net, TABLE_LUMPS, lump_columns, read_lump);
    for (lump_definition &lump : net.model.lumpdefs.records) {
        if (lump.kind == not_given) lump.kind = 0;
        if (lump.iref == not_given) lump.iref = 0;
    }
}

} // namespace vornhost
