#include "host/results/text_table.h"

#include <algorithm>

#include "host/input/utf8.h"

namespace vornhost {

// 0 for a column without text.
std::vector<size_t> TextTable::widths() const
{
    std::vector<size_t> width(columns.size(), 0);
    for (const auto &row : rows)
        for (size_t c = 0; c < columns.size(); c++) width[c] = std::max(width[c], utf8_width(row[c]));
    for (size_t c = 0; c < columns.size(); c++)
        if (width[c] > 0) width[c] = std::max({width[c], utf8_width(columns[c].heading), utf8_width(columns[c].unit)});
    return width;
}

void TextTable::append(const std::vector<std::string> &cells, const std::vector<size_t> &width, std::string &text) const
{
    std::string line;
    for (size_t c = 0; c < columns.size(); c++) {
        if (width[c] == 0) continue;
        if (!line.empty()) line += "  ";
        const std::string blanks(width[c] - utf8_width(cells[c]), ' ');
        line += columns[c].align == Align::left ? cells[c] + blanks : blanks + cells[c];
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
}

std::string TextTable::text() const
{
    const std::vector<size_t> width = widths();
    std::vector<std::string> headings, units;
    for (const TextColumn &c : columns) {
        headings.push_back(c.heading);
        units.push_back(c.unit);
    }
    std::string all;
    append(headings, width, all);
    if (std::any_of(units.begin(), units.end(), [](const std::string &u) { return !u.empty(); }))
        append(units, width, all);
    for (const auto &row : rows) append(row, width, all);
    return all;
}

std::string underlined(const std::string &title, char line)
{
    return title + "\n" + std::string(utf8_width(title), line) + "\n";
}

std::string section(const std::string &title, const TextTable &table)
{
    return table.empty() ? "" : "\n" + underlined(title, '-') + table.text();
}

} // namespace vornhost
