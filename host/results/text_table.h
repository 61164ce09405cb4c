// A table of a text report. Columns are as wide as their longest cell, two blanks apart; numbers stand to the right.

#ifndef VORNHOST_TEXT_TABLE_H
#define VORNHOST_TEXT_TABLE_H

#include <string>
#include <vector>

namespace vornhost {

enum class Align { left, right };

struct TextColumn {
    std::string heading, unit; // below the heading
    Align align = Align::right;
};

class TextTable {
public:
    explicit TextTable(std::vector<TextColumn> its_columns) : columns(std::move(its_columns)) {}

    // As many cells as columns.
    void add(std::vector<std::string> cells) { rows.push_back(std::move(cells)); }
    bool empty() const { return rows.empty(); }

    // Heading, units where a column has one, and rows. Columns without any text in their rows are left out.
    std::string text() const;

private:
    std::vector<size_t> widths() const;
    void append(const std::vector<std::string> &cells, const std::vector<size_t> &width, std::string &text) const;

    std::vector<TextColumn> columns;
    std::vector<std::vector<std::string>> rows;
};

// A title with a line of that character below.
std::string underlined(const std::string &title, char line);

// A table below its title and a line of -, behind an empty line; nothing without rows.
std::string section(const std::string &title, const TextTable &table);

} // namespace vornhost

#endif
