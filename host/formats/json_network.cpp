// JSON as a network file: its text with the place of every line.

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/formats/network_json.h"
#include "host/formats/number_text.h"
#include "host/input/text_file.h"

namespace vornhost {

namespace {

using Json = nlohmann::ordered_json;

bool is_word(const std::string &text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    });
}

bool is_scalar(const Json &value) { return value.is_string() || value.is_number() || value.is_boolean(); }

// As the cell of a row; quoted where a bare one would be something else.
std::string cell_text(const Json &value)
{
    if (value.is_null()) return "-";
    if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
    if (value.is_number_integer()) return value.dump(); // every digit: it may be a name
    if (value.is_number()) return number_text(value.get<double>());
    std::string text = value.get<std::string>();
    if (!text.empty() && text != "-" && text.find_first_of(" \t#\"'") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + "\"";
}

class NetworkOfJson {
public:
    NetworkOfJson(const std::string &its_path, MadeText &its_text, Faults &all)
        : path(its_path), made(its_text), faults(all)
    {
    }

    bool make(const Json &root)
    {
        if (!root.is_object() || !root.contains("vorn_network") || root["vorn_network"] != 1)
            return fault("the JSON is no network", "write \"vorn_network\": 1 in its outermost object");
        for (const auto &[key, value] : root.items())
            if (key != "vorn_network" && key != "tables") add_section(key, value);
        if (root.contains("tables")) add_tables(root["tables"]);
        return faults.empty();
    }

private:
    static constexpr int deepest = 3; // of sections in sections

    bool fault(const std::string &what, const std::string &remedy)
    {
        faults.add(Source(), what, remedy);
        return false;
    }

    void line(const std::string &text, Source at = Source())
    {
        made.text += text + "\n";
        made.origins.push_back(at);
    }

    void add_section(const std::string &key, const Json &section)
    {
        if (!is_word(key) || !section.is_object()) {
            fault(quote(key) + " is no section", "write an object of settings, such as \"run\"");
            return;
        }
        line("[" + key + "]");
        for (const auto &[name, value] : section.items())
            if (!value.is_null()) line(Json(name).dump() + " = " + setting(name, value, 0));
    }

    // The texts of JSON are basic strings of TOML.
    std::string setting(const std::string &name, const Json &value, int depth)
    {
        if (value.is_number_integer() && std::fabs(value.get<double>()) >= 1e15) return value.dump() + ".0";
        if (is_scalar(value)) return value.dump();
        if (depth == deepest) {
            fault("the setting " + quote(name) + " is nested too deeply",
                  "write a number, a text, or a list of numbers");
            return "0";
        }
        std::string all;
        const bool list = value.is_array();
        for (const auto &[key, inner] : value.items()) {
            if (inner.is_null()) continue;
            all += (all.empty() ? "" : ", ") + (list ? "" : Json(key).dump() + " = ") + setting(name, inner, depth + 1);
        }
        return list ? "[" + all + "]" : "{ " + all + " }";
    }

    void add_tables(const Json &tables)
    {
        if (!tables.is_object()) {
            fault("\"tables\" is no object", "write a list of rows for each table");
            return;
        }
        line("[tables]");
        for (const auto &[name, rows] : tables.items()) add_table(name, rows);
    }

    void add_table(const std::string &name, const Json &rows)
    {
        const bool listed =
            rows.is_array() && std::all_of(rows.begin(), rows.end(), [](const Json &row) { return row.is_object(); });
        if (!is_word(name) || !listed) {
            fault("table " + quote(name) + " is no list of rows", "write [{\"from\": \"A\", ...}, ...]");
            return;
        }
        made.sources.push_back(path + " (" + name + ")");
        const int source = faults.add_file(made.sources.back()); // they count in the same way
        const std::vector<std::string> columns = columns_of(name, rows);
        line(name + " = \"\"\"", {source, 0, 0});
        add_line(columns, {source, 0, 0});
        int count = 0;
        for (const Json &row : rows) add_row(name, columns, row, {source, ++count, 0});
        line("\"\"\"");
    }

    // All keys of the rows, in the order in which they come up.
    std::vector<std::string> columns_of(const std::string &table, const Json &rows)
    {
        std::vector<std::string> columns;
        for (const Json &row : rows)
            for (const auto &[key, value] : row.items()) {
                if (std::find(columns.begin(), columns.end(), key) != columns.end()) continue;
                if (is_word(key) && columns.size() < most_columns)
                    columns.push_back(key);
                else
                    fault(quote(key) + " is no column of table " + table, "compare it with the reference");
                if (!faults.empty()) return columns;
            }
        return columns;
    }

    void add_row(const std::string &table, const std::vector<std::string> &columns, const Json &row, Source at)
    {
        std::vector<std::string> cells;
        for (const std::string &column : columns) {
            const auto found = row.find(column);
            if (found != row.end() && !is_scalar(*found) && !found->is_null())
                faults.add(at, quote(column) + " of a row of table " + table + " is no number and no text",
                           "write one of the two");
            cells.push_back(found == row.end() || !(is_scalar(*found)) ? "-" : cell_text(*found));
            if (cells.back().find('\n') == std::string::npos) continue;
            faults.add(at, quote(column) + " of a row of table " + table + " holds a line end", "remove it");
            cells.back() = "-";
        }
        add_line(cells, at);
    }

    // Cells as a line of a text of TOML.
    void add_line(const std::vector<std::string> &cells, Source at)
    {
        std::string text;
        for (const std::string &cell : cells) {
            if (!text.empty()) text += ' ';
            for (const char c : cell) text += c == '\\' || c == '"' ? std::string("\\") + c : std::string(1, c);
        }
        line(text, at);
    }

    static constexpr size_t most_columns = 100;

    const std::string &path;
    MadeText &made;
    Faults &faults;
};

// Walks over a text and tells how far it came.
struct Walker {
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char *;
    using reference = const char &;

    const char *at = nullptr;
    const char **reached = nullptr;

    reference operator*() const { return *at; }
    Walker &operator++()
    {
        *reached = ++at;
        return *this;
    }
    bool operator==(const Walker &other) const { return at == other.at; }
    bool operator!=(const Walker &other) const { return at != other.at; }
};

// Of two values under one key only the last would count: a fault for each key that comes again in its object.
Json parse(const TextFile &file, Faults &faults)
{
    const char *const begin = file.text().data(), *reached = begin;
    std::vector<std::set<std::string>> keys; // of the objects that are open
    const auto look = [&](int, Json::parse_event_t event, const Json &parsed) {
        if (event == Json::parse_event_t::object_start) keys.emplace_back();
        if (event == Json::parse_event_t::object_end) keys.pop_back();
        if (event != Json::parse_event_t::key || keys.back().insert(parsed.get<std::string>()).second) return true;
        const size_t length = parsed.dump().size(), behind = (size_t)(reached - begin);
        faults.add(file.place(behind > length ? behind - length : 0),
                   "the key " + quote(parsed.get<std::string>()) + " comes twice in one object", "keep one of them");
        return true;
    };
    return Json::parse(Walker{begin, &reached}, Walker{begin + file.text().size(), &reached}, look);
}

} // namespace

bool read_network_json(const std::string &path, MadeText &made, Faults &faults)
{
    TextFile file;
    if (!file.read(path, Source(), faults)) return false;
    try {
        const Json root = parse(file, faults);
        return faults.empty() && NetworkOfJson(path, made, faults).make(root);
    } catch (const Json::parse_error &error) {
        const size_t at = error.byte > 0 ? error.byte - 1 : 0;
        faults.add(file.place(std::min(at, file.text().size())), "not JSON", "correct it here or just before");
        return false;
    }
}

} // namespace vornhost
