#include "host/formats/writer_table.h"

#include <algorithm>

#include "host/input/utf8.h"

namespace vornhost {

namespace {

std::string padding(size_t wanted, size_t width) { return std::string(wanted > width ? wanted - width : 0, ' '); }

size_t places_before_point(const std::string &number) { return std::min(number.find('.'), number.size()); }

// Numbers stand with their points below each other, words begin below each other.
std::vector<std::string> aligned(const std::string &heading, CellKind kind, const std::vector<std::string> &cells)
{
    size_t before = 0;
    if (kind == CellKind::number)
        for (const std::string &cell : cells) before = std::max(before, places_before_point(cell));
    std::vector<std::string> out = {heading};
    for (const std::string &cell : cells)
        out.push_back(kind == CellKind::number ? padding(before, places_before_point(cell)) + cell : cell);
    size_t width = 0;
    for (const std::string &cell : out) width = std::max(width, utf8_width(cell));
    for (std::string &cell : out) cell += padding(width, utf8_width(cell));
    return out;
}

std::string escaped(std::string_view text, bool line_ends_stay)
{
    std::string out;
    for (const char c : text) {
        if (c == '\\' || c == '"') out += '\\';
        if (c == '\n' && !line_ends_stay)
            out += "\\n";
        else
            out += c;
    }
    return out;
}

// Between """ and """ where nothing in the text has a meaning of its own there, otherwise between ''' and '''.
std::string several_lines(const std::string &text)
{
    const bool plain = text.find('\\') == std::string::npos && text.find("\"\"\"") == std::string::npos;
    if (plain) return "\"\"\"\n" + text + "\"\"\"";
    if (text.find("'''") == std::string::npos) return "'''\n" + text + "'''";
    return "\"\"\"\n" + escaped(text, true) + "\"\"\"";
}

} // namespace

std::string word_cell(std::string_view word)
{
    const bool plain = !word.empty() && word != "-" && word.find_first_of(" \t#\",;") == std::string_view::npos;
    if (plain) return std::string(word);
    std::string out = "\"";
    for (const char c : word) out += c == '"' ? std::string("\"\"") : std::string(1, c);
    return out + '"';
}

std::string toml_text(std::string_view text) { return '"' + escaped(text, false) + '"'; }

void WriterTable::add(const std::string &heading, CellKind kind, std::vector<std::string> cells, bool required)
{
    const bool known = std::any_of(cells.begin(), cells.end(), [](const std::string &cell) { return !cell.empty(); });
    if (!known && !required) return;
    for (std::string &cell : cells)
        if (cell.empty()) cell = "-";
    columns.push_back({heading, kind, std::move(cells)});
}

std::string WriterTable::text() const
{
    std::vector<std::string> lines(rows + 1);
    for (const Column &column : columns) {
        const std::vector<std::string> cells = aligned(column.heading, column.kind, column.cells);
        for (size_t i = 0; i < lines.size(); i++) lines[i] += (lines[i].empty() ? "" : "  ") + cells[i];
    }
    std::string all;
    for (std::string &line : lines) {
        line.erase(line.find_last_not_of(' ') + 1);
        all += line + '\n';
    }
    return several_lines(all);
}

} // namespace vornhost
