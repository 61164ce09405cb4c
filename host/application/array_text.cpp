#include "host/application/array_text.h"

#include <algorithm>
#include <cmath>

#include "host/formats/number_text.h"
#include "host/formats/writer_table.h"

namespace vornhost {

namespace {

using vornapi::Arrays;

constexpr const char *name_letters = "abcdefghijklmnopqrstuvwxyz_0123456789";

bool is_plain(const std::string &word) { return !word.empty() && word.find_first_not_of(name_letters) == word.npos; }

// Control characters would end a line or a cell; other faults of words are those of the reader.
bool is_one_line(const std::string &word)
{
    return std::none_of(word.begin(), word.end(), [](char c) { return (unsigned char)c < ' ' || c == 127; });
}

size_t rows_of(const vornapi::Column &column) { return std::max(column.numbers.size(), column.words.size()); }

size_t rows_of(const vornapi::Table &table) { return table.columns.empty() ? 0 : rows_of(table.columns[0]); }

std::string source_of(const vornapi::Table &table) { return "table " + table.name; }

std::string source_of(const vornapi::Matrix &matrix) { return "covariance " + matrix.name; }

std::vector<vornapi::Fault> faults_of(const vornapi::Table &table, const vornapi::Column &column)
{
    const std::string file = source_of(table);
    if (!is_plain(column.heading)) return {{file, 0, 0, quote(column.heading) + " is no name of a column", ""}};
    const std::string where = "column " + column.heading;
    if (!column.numbers.empty() && !column.words.empty())
        return {{file, 0, 0, where + " has numbers and words", "give one of the two"}};
    if (rows_of(column) != rows_of(table))
        return {{file, 0, 0,
                 where + " has " + std::to_string(rows_of(column)) + " rows, column " + table.columns[0].heading + " " +
                     std::to_string(rows_of(table)),
                 "give all columns a value for every row"}};
    const auto bad = std::find_if_not(column.words.begin(), column.words.end(), is_one_line);
    if (bad == column.words.end()) return {};
    return {{file, (int)(bad - column.words.begin()) + 1, 0, quote(*bad) + " in " + where + " has a control character",
             "write it without"}};
}

std::string cell_of(double number) { return std::isnan(number) ? std::string() : number_text(number); }

class Text {
public:
    explicit Text(const Arrays &its_arrays) : arrays(its_arrays) {}

    MadeText made()
    {
        settings();
        for (const vornapi::Matrix &matrix : arrays.covariances) covariance(matrix);
        add("[tables]\n", {});
        for (const vornapi::Table &t : arrays.tables) table(t);
        return std::move(out);
    }

private:
    void settings()
    {
        out.text = arrays.settings;
        if (out.text.empty() || out.text.back() != '\n') out.text += '\n';
        const int lines = (int)std::count(out.text.begin(), out.text.end(), '\n');
        for (int i = 1; i <= lines; i++) out.origins.push_back({0, i, 0});
    }

    // Lines of one place.
    void add(const std::string &lines, Source place)
    {
        out.text += lines;
        out.origins.resize(out.origins.size() + (size_t)std::count(lines.begin(), lines.end(), '\n'), place);
    }

    int source(const std::string &name)
    {
        out.sources.push_back(name);
        return (int)out.sources.size();
    }

    void covariance(const vornapi::Matrix &matrix)
    {
        const int file = source(source_of(matrix));
        add("[covariances." + toml_text(matrix.name) + "]\nmatrix = \"\"\"\n", {file, 0, 0});
        for (int i = 0; i < matrix.size; i++) {
            std::string row;
            for (int k = 0; k < matrix.size; k++)
                row += number_text(matrix.elements[(size_t)i * (size_t)matrix.size + (size_t)k]) +
                       (k % 16 == 15 ? '\n' : ' ');
            add(row + '\n', {file, i + 1, 0});
        }
        add("\"\"\"\n", {file, 0, 0});
    }

    // Two lines before the rows: the key and the heading.
    void table(const vornapi::Table &table)
    {
        const int file = source(source_of(table));
        const size_t rows = rows_of(table);
        WriterTable cells(rows);
        for (const vornapi::Column &column : table.columns) {
            std::vector<std::string> texts(rows);
            const bool numbers = !column.numbers.empty();
            for (size_t i = 0; i < rows; i++)
                texts[i] = numbers                   ? cell_of(column.numbers[i])
                           : column.words[i].empty() ? std::string()
                                                     : word_cell(column.words[i]);
            cells.add(column.heading, numbers ? CellKind::number : CellKind::word, std::move(texts), true);
        }
        out.text += table.name + " = " + cells.text() + '\n';
        out.origins.resize(out.origins.size() + 2, Source{file, 0, 0});
        for (size_t i = 1; i <= rows; i++) out.origins.push_back({file, (int)i, 0});
        out.origins.push_back({file, 0, 0});
    }

    const Arrays &arrays;
    MadeText out;
};

} // namespace

std::vector<vornapi::Fault> faults_of(const Arrays &arrays)
{
    std::vector<vornapi::Fault> faults;
    const auto take = [&](const std::vector<vornapi::Fault> &more) {
        faults.insert(faults.end(), more.begin(), more.end());
    };
    for (const vornapi::Matrix &m : arrays.covariances)
        if (m.size < 1 || (size_t)m.size * (size_t)m.size != m.elements.size())
            take({{source_of(m), 0, 0, "the matrix has not size x size elements", "give all, row by row"}});
        else if (!is_one_line(m.name))
            take({{source_of(m), 0, 0, "the name has a control character", "write it without"}});
    for (const vornapi::Table &table : arrays.tables) {
        if (!is_plain(table.name)) take({{source_of(table), 0, 0, quote(table.name) + " is no name of a table", ""}});
        for (const vornapi::Column &column : table.columns) take(faults_of(table, column));
    }
    return faults;
}

MadeText text_of(const Arrays &arrays) { return Text(arrays).made(); }

} // namespace vornhost
