#include "host/formats/network_json.h"

#include <algorithm>
#include <array>

#include "host/input/number.h"
#include "host/input/row.h"
#include "host/input/table.h"
#include "host/input/toml_parser.h"
#include "host/results/json_text.h"

namespace vornhost {

namespace {

// Columns of which every cell is a text, one of figures too.
bool holds_words(std::string_view column)
{
    static constexpr std::array<std::string_view, 15> words = {
        "name", "from", "to", "at", "third", "setup", "set", "id", "group", "remark", "file", "camera", "covariance"};
    return column == "station" || std::find(words.begin(), words.end(), column) != words.end();
}

void write_node(JsonText &json, const toml::node &node);

void write_table(JsonText &json, const toml::table &table)
{
    for (const auto &[key, node] : table) {
        json.key(key.str());
        write_node(json, node);
    }
}

// A setting, whatever it holds.
void write_node(JsonText &json, const toml::node &node)
{
    if (const auto *text = node.as_string()) return json.value(text->get());
    if (const auto *whole = node.as_integer()) {
        const int64_t n = whole->get();
        return n == (int)n ? json.value((int)n) : json.value((double)n);
    }
    if (const auto *number = node.as_floating_point()) return json.value(number->get());
    if (const auto *truth = node.as_boolean()) return json.value(truth->get());
    if (const auto *list = node.as_array()) {
        json.open_array();
        for (const toml::node &element : *list) write_node(json, element);
        return json.close();
    }
    json.open_object();
    if (const toml::table *table = node.as_table()) write_table(json, *table);
    json.close();
}

void write_rows(JsonText &json, const Table &table, Faults &faults)
{
    json.key(table.name());
    json.open_array();
    for (size_t i = 0; i < table.rows(); i++) {
        const Row row(table, i, faults);
        json.open_object();
        for (int c = 0; c < table.columns(); c++) {
            const char *column = table.column_name(c);
            const bool quoted = table.cell(i, c) && table.quoted(i, c);
            if (!row.given(c) && !quoted) continue;
            double number = 0.0;
            if (!quoted && !holds_words(column) && read_number(row.figures(c), number) == Reading::Number)
                json.pair(column, number);
            else
                json.pair(column, quoted ? row.name(c) : row.text(c));
        }
        json.close();
    }
    json.close();
}

} // namespace

std::string write_network_json(const std::string &name, std::string_view text, Faults &faults)
{
    std::string out;
    JsonText json([&out](std::string_view piece) { out += piece; });
    json.open_object();
    json.pair("vorn_network", 1);
    for (const auto &[key, node] : toml::parse(text, name)) {
        if (key == "tables" || key == "csv") continue; // tables are no files any more
        json.key(key.str());
        write_node(json, node);
    }
    json.key("tables");
    json.open_object();
    const bool read = visit_tables(name, text, faults, [&](const Table &table) { write_rows(json, table, faults); });
    json.close();
    json.close();
    json.finish();
    return read && faults.empty() ? out : std::string();
}

} // namespace vornhost
