#include "host/results/updated_network.h"

#include <math.h>
#include <stdio.h>

#include <algorithm>
#include <unordered_map>

#include "host/input/names.h"
#include "host/input/network_file.h"
#include "host/input/table.h"

namespace vornhost {

namespace {

constexpr double micrometre = 1e-6;

enum { NAME, X };
const std::vector<Column> columns = {{"name", true}, {"x"}, {"y"}, {"z"}};

// Bytes of the text and what stands there instead.
struct Change {
    size_t begin, end;
    std::string text;
};

struct Updater {
    const TextFile &file;
    const Model &model;
    std::unordered_map<std::string, const PointResult *> points;
    std::vector<Change> changes;

    Updater(const TextFile &its_file, const Model &its_model, const Results &results) : file(its_file), model(its_model)
    {
        for (const PointResult &p : results.points) points.emplace(p.name, &p);
    }

    template <class Record> void change_table(const char *name, const List<Record> &list);
    void change_row(const Table &table, size_t row, size_t begin, const std::string &name);
    const double *value(const std::string &name, int axis) const;
    std::string number(double metres) const;
    std::string added_cells(const Table &table, const std::string &name) const;
    std::string added_heading(const Table &table) const;
    std::string whole_text() const;
};

std::string_view line_at(const std::string &text, size_t begin)
{
    return std::string_view(text).substr(begin, std::min(text.find('\n', begin), text.size()) - begin);
}

// Whether the line of a table holds cells.
bool is_bare(std::string_view line)
{
    const size_t first = line.find_first_not_of(" \t\r");
    return first == std::string_view::npos || line[first] == '#';
}

// Bytes of a line up to its last cell: without comment, closing marks and blanks.
size_t cells_end(std::string_view line)
{
    size_t end = 0;
    bool quoted = false;
    for (size_t i = 0; i < line.size(); i++) {
        if (!quoted && (line[i] == '#' || line.substr(i, 3) == "\"\"\"" || line.substr(i, 3) == "'''")) break;
        if (line[i] == '"') quoted = !quoted;
        if (!is_bare(line.substr(i, 1))) end = i + 1;
    }
    return end;
}

// Where the text of a table begins on the line of its heading, which may be that of its opening marks.
size_t opening(std::string_view line)
{
    for (const char *marks : {"\"\"\"", "'''"})
        if (const size_t at = line.find(marks); at != std::string_view::npos) return at + 3;
    return 0;
}

// The line of the heading above the first row.
int heading_line(const TextFile &file, int first_row)
{
    for (int line = first_row - 1; line > 0; line--) {
        const std::string_view text = line_at(file.text(), file.offset(line, 1));
        const size_t marks = opening(text);
        if (!is_bare(text.substr(marks))) return line;
    }
    return 0;
}

template <class Record> void Updater::change_table(const char *name, const List<Record> &list)
{
    if (list.size() == 0) return;
    for (const Source &at : list.where)
        if (at.file != 0)
            throw UpdateError(std::string("the table ") + name +
                              " stands in a file of its own; write it into the network file first");
    const int heading = heading_line(file, list.where.front().line);
    const size_t heading_start = file.offset(heading, 1);
    const size_t begin = heading_start + opening(line_at(file.text(), heading_start));
    const size_t last = file.offset(list.where.back().line, 1);
    Faults faults; // of columns that are not wanted here
    Table table(name, Passage(file, begin, last + cells_end(line_at(file.text(), last))), Layout::Blanks, Source());
    table.parse(columns, faults);
    if (table.rows() != list.size())
        throw UpdateError(std::string("the rows of table ") + name + " cannot be told apart; write them one a line");
    const size_t heading_end = begin + cells_end(line_at(file.text(), begin));
    changes.push_back({heading_end, heading_end, added_heading(table)});
    for (size_t row = 0; row < list.size(); row++)
        change_row(table, row, begin, shown_name(model, list.records[row].name));
}

// A longer text takes blanks behind its cell, so that the columns stay below each other.
Change replaced(const std::string &text, size_t at, size_t size, std::string with)
{
    if (with.size() < size) with.insert(0, size - with.size(), ' ');
    while (size < with.size() && text.compare(at + size, 2, "  ") == 0) size++;
    return {at, at + size, with};
}

void Updater::change_row(const Table &table, size_t row, size_t begin, const std::string &name)
{
    for (int axis = 0; axis < 3; axis++) {
        const Cell *cell = table.cell(row, X + axis);
        const double *metres = value(name, axis);
        if (cell && metres)
            changes.push_back(replaced(file.text(), begin + cell->offset, cell->text.size(), number(*metres)));
    }
    const size_t line = file.offset(table.place(row, NAME).line, 1);
    const size_t start = line < begin ? begin : line;
    const size_t end = start + cells_end(line_at(file.text(), start));
    changes.push_back({end, end, added_cells(table, name)});
}

// The adjusted coordinate of a point that the file does not hold; null where there is none.
const double *Updater::value(const std::string &name, int axis) const
{
    const auto found = points.find(name);
    if (found == points.end()) return nullptr;
    const PointResult &p = *found->second;
    const bool held = p.code[axis] == "fixed" || p.code[axis] == "weighted" || p.code[axis].empty();
    return held || !p.adjusted[axis] ? nullptr : &*p.adjusted[axis];
}

// To the micrometre, in the unit of the file.
std::string Updater::number(double metres) const
{
    const double unit = file_units(model).metres;
    const int decimals = std::max(0, (int)ceil(log10(unit / micrometre) - 1e-9));
    char text[64];
    snprintf(text, sizeof text, "%.*f", decimals, metres / unit);
    return text;
}

// Whether the run has this coordinate and the table does not.
bool is_added(const Model &model, const Table &table, int axis)
{
    const bool exists = model.p.dim == 1 ? axis == 2 : axis < model.p.dim;
    return exists && !table.has(X + axis);
}

std::string Updater::added_heading(const Table &table) const
{
    std::string text;
    for (int axis = 0; axis < 3; axis++)
        if (is_added(model, table, axis)) text += std::string(" ") + "xyz"[axis];
    return text;
}

std::string Updater::added_cells(const Table &table, const std::string &name) const
{
    std::string text;
    for (int axis = 0; axis < 3; axis++) {
        if (!is_added(model, table, axis)) continue;
        const double *metres = value(name, axis);
        text += " " + (metres ? number(*metres) : "-");
    }
    return text;
}

std::string Updater::whole_text() const
{
    std::string text;
    size_t from = 0;
    for (const Change &change : changes) {
        text.append(file.text(), from, change.begin - from).append(change.text);
        from = change.end;
    }
    return text.append(file.text(), from, std::string::npos);
}

// Whether the points of a network that was read again are the same and stand where they were adjusted.
template <class Record>
bool stand(const Updater &updater, const Model &again, const List<Record> &list, const List<Record> &before)
{
    if (list.size() != before.size()) return false;
    for (size_t i = 0; i < list.size(); i++) {
        const std::string name = shown_name(again, list.records[i].name);
        if (name != shown_name(updater.model, before.records[i].name)) return false;
        for (int axis = 0; axis < 3; axis++) {
            const double *metres = updater.value(name, axis);
            const double read = list.records[i].x[axis] * metres_per_unit(again.p);
            if (metres && !(fabs(read - *metres) <= micrometre * (1 + 1e-9 * fabs(*metres)))) return false;
        }
    }
    return true;
}

void check(const Updater &updater, const std::string &text)
{
    Model model;
    Faults faults;
    const bool read = read_network_text(updater.model.path, text, model, faults);
    if (read && stand(updater, model, model.stations, updater.model.stations) &&
        stand(updater, model, model.targets, updater.model.targets))
        return;
    throw UpdateError("the tables of points are written in a way that cannot be changed safely; write plain rows of "
                      "blanks without escapes, in the coordinates of the network");
}

} // namespace

std::string updated_network(std::string_view text, const Model &model, const Results &results)
{
    TextFile file;
    Faults faults;
    if (!file.take(model.path, text, faults)) throw UpdateError("the network file is gone or no longer text");
    Updater updater(file, model, results);
    updater.change_table("stations", model.stations);
    updater.change_table("targets", model.targets);
    std::stable_sort(updater.changes.begin(), updater.changes.end(),
                     [](const Change &a, const Change &b) { return a.begin < b.begin; });
    std::string updated = updater.whole_text();
    check(updater, updated);
    return updated;
}

} // namespace vornhost
