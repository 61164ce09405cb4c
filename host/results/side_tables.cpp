#include "host/results/side_tables.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "adjust/weighted.h"
#include "host/input/names.h"
#include "host/input/observation_rows.h"
#include "host/system/decimal.h"

namespace vornhost {

namespace {

const char *const axes = "xyz";

std::string quoted(const std::string &word)
{
    std::string text = "\"";
    for (const char c : word) text.append(c == '"' ? 2 : 1, c);
    return text + '"';
}

std::string digits(double x)
{
    char text[40];
    return std::string(text, to_chars(text, text + sizeof text, x, std::chars_format::general, 15).ptr);
}

// Cells of a row of a table in a file of its own.
class TableRow {
public:
    explicit TableRow(const Model &model) : separator(model.separator), decimal(model.decimal) {}

    TableRow &cell(const std::string &text)
    {
        if (!first) row += separator;
        first = false;
        row += text;
        return *this;
    }
    TableRow &number(double x)
    {
        std::string text = digits(x);
        std::replace(text.begin(), text.end(), '.', decimal);
        return cell(text);
    }
    std::string line() const { return row + '\n'; }

private:
    const char separator, decimal;
    bool first = true;
    std::string row;
};

// A coordinate of a named point: which place in the matrix of all.
struct Place {
    size_t point;
    int axis;
    size_t at() const { return 3 * point + (size_t)axis; }
};

std::vector<Place> adjusted_places(const Results &r)
{
    std::vector<Place> places;
    const size_t n = 3 * r.covariance_points.size();
    for (size_t p = 0; p < r.covariance_points.size(); p++)
        for (int k = 0; k < 3; k++)
            if (const Place at{p, k}; r.covariances[at.at() * n + at.at()] > 0.0) places.push_back(at);
    return places;
}

const PointResult &named(const Results &r, const std::string &name)
{
    return *std::find_if(r.points.begin(), r.points.end(), [&](const PointResult &p) { return p.name == name; });
}

// Correlations whose least pivot is rounding belong to coordinates that depend on one another.
void check_regular(const Results &r, const std::vector<Place> &places)
{
    constexpr double least_pivot = 1e-9;
    const size_t n = places.size(), all = 3 * r.covariance_points.size();
    std::vector<double> c(n * n);
    const auto at = [&](size_t i, size_t j) { return r.covariances[places[i].at() * all + places[j].at()]; };
    for (size_t i = 0; i < n; i++)
        for (size_t j = 0; j < n; j++) c[i * n + j] = at(i, j) / std::sqrt(at(i, i) * at(j, j));
    int bad = -1;
    const bool whole = vornadjust::cholesky((int)n, c.data(), &bad);
    for (size_t i = 0; i < n && whole && bad < 0; i++)
        if (c[i * n + i] * c[i * n + i] < least_pivot) bad = (int)i;
    if (bad < 0) return;
    const Place &place = places[(size_t)bad];
    throw SideTableError(std::string("the covariance is singular: ") + axes[place.axis] + " of " +
                         r.covariance_points[place.point] +
                         " depends on the coordinates before it; hold the network, or name fewer points");
}

std::vector<Place> checked_places(const Results &r)
{
    std::vector<Place> places = adjusted_places(r);
    if (places.empty()) throw SideTableError("the named points have no adjusted coordinates, and so no covariances");
    check_regular(r, places);
    return places;
}

// Steps of the rows that stayed out, in their order.
std::vector<const SnoopStep *> left_out(const Results &r)
{
    std::vector<const SnoopStep *> rows;
    const auto same = [](const SnoopStep &a, const SnoopStep &b) {
        return a.table == b.table && a.row == b.row && a.kind == b.kind && a.file == b.file && a.line == b.line &&
               a.from == b.from && a.to == b.to;
    };
    for (const SnoopStep &s : r.snooping) {
        const auto before =
            std::find_if(rows.begin(), rows.end(), [&](const SnoopStep *other) { return same(s, *other); });
        if (before != rows.end()) rows.erase(before);
        if (!s.taken_again) rows.push_back(&s);
    }
    return rows;
}

std::string left_out_row(const Model &model, const char *table, size_t row, size_t of, const RowEnds &ends,
                         const std::string &reason)
{
    const auto name = [&](const std::string &n) { return n.empty() ? "" : quoted(n); };
    return TableRow(model)
        .cell(table)
        .cell(std::to_string(row))
        .cell(std::to_string(of))
        .cell(name(ends.from))
        .cell(name(ends.to))
        .cell(name(ends.at))
        .cell(quoted(reason))
        .line();
}

std::string heading(const Model &model, std::initializer_list<const char *> columns)
{
    TableRow row(model);
    for (const char *column : columns) row.cell(column);
    return row.line();
}

} // namespace

std::string covariance_matrix(const Model &model, const Results &r)
{
    const std::vector<Place> places = checked_places(r);
    const size_t all = 3 * r.covariance_points.size();
    const double unit = model.sigma_metres.value_or(file_units(model).metres);
    std::string text;
    for (size_t i = 0; i < places.size(); i++)
        for (size_t j = 0; j <= i; j++)
            text += digits(r.covariances[places[i].at() * all + places[j].at()] / (unit * unit)) + (j < i ? ' ' : '\n');
    return text;
}

std::string covariance_coordinates(const Model &model, const Results &r, const std::string &name)
{
    std::string text = heading(model, {"name", "x", "y", "z", "covariance"});
    const std::vector<Place> places = adjusted_places(r);
    const double unit = file_units(model).metres;
    for (size_t i = 0; i < places.size();) {
        const size_t point = places[i].point;
        const PointResult &p = named(r, r.covariance_points[point]);
        TableRow row(model);
        row.cell(quoted(p.name));
        for (int k = 0; k < 3; k++) {
            const bool there = i < places.size() && places[i].point == point && places[i].axis == k;
            if (there)
                row.number(*p.adjusted[k] / unit), i++;
            else
                row.cell("");
        }
        text += row.cell(name).line();
    }
    return text;
}

std::string left_out_table(const Model &model, const Results &r)
{
    std::string text = heading(model, {"table", "row", "of", "from", "to", "at", "reason"});
    for (const LeftOutRow &row : model.left_out.records)
        with_rows(model, (TableId)row.table, [&](const auto &list) {
            RowEnds ends = ends_of(model, list.records[row.row]);
            for (std::string *name : {&ends.from, &ends.to, &ends.at})
                if (!name->empty()) *name = full_name(model, *name);
            text += left_out_row(model, table_names[row.table], row.row + 1, list.size(), ends, row.reason);
        });
    for (const SnoopStep *s : left_out(r))
        if (s->table)
            text += left_out_row(model, s->table, s->row, s->rows, {s->from, s->to, s->at},
                                 "normalised residual " + digits(std::round(100.0 * std::fabs(s->normalised)) / 100.0));
    return text;
}

std::vector<std::string> left_out_elsewhere(const Results &r)
{
    std::vector<std::string> lines;
    for (const SnoopStep *s : left_out(r))
        if (!s->table)
            lines.push_back(s->kind + " " + s->from + (s->to.empty() ? "" : " to " + s->to) +
                            " was left out and stands in no table of observations: change it where it is given, " +
                            s->file + ":" + std::to_string(s->line));
    return lines;
}

std::string covariance_name(const std::string &file)
{
    constexpr size_t longest = 40;
    std::string name = std::filesystem::path(file).stem().string().substr(0, longest);
    for (char &c : name)
        if (!std::isalnum((unsigned char)c) && c != '_' && c != '-') c = '_';
    return name.empty() || name == "-" ? "covariance" : name;
}

std::string coordinates_file(const std::string &file)
{
    const std::filesystem::path path(file);
    return (path.parent_path() / (path.stem().string() + "_coordinates.csv")).string();
}

} // namespace vornhost
