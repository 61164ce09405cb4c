#include "host/formats/sinex.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <tuple>

#include "host/formats/draft_builder.h"
#include "host/input/number.h"

namespace vornhost {

namespace {

constexpr size_t most_parameters = 6000; // whose covariance is taken

struct Line {
    std::string_view text;
    size_t offset; // of its first byte in the file
};

// A row of SOLUTION/ESTIMATE that is a coordinate of a station.
struct Estimate {
    std::string site, point, solution, epoch;
    size_t axis = 0;
    double value = 0, sigma = 0;
    char constraint = '2';
    Source where;
};

std::string_view trimmed(std::string_view text)
{
    const size_t begin = text.find_first_not_of(" \t\r");
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

// Numbers as Fortran writes them: -.4052E+07, 1.5D-03.
bool read_fortran(std::string_view text, double &value)
{
    std::string plain(text);
    for (char &c : plain)
        if (c == 'D' || c == 'd') c = 'E';
    const size_t first = plain.find_first_of("+-") == 0 ? 1 : 0;
    if (first < plain.size() && plain[first] == '.') plain.insert(first, "0");
    return read_number(plain, value) == Reading::Number;
}

// Reads one file; the members are what its steps share.
class SinexReader {
public:
    SinexReader(const TextFile &its_file, Draft &draft, Faults &all) : file(its_file), builder(draft, all), faults(all)
    {
    }

    bool read()
    {
        builder.draft.units.length = "m";
        read_blocks();
        if (estimates.empty() && faults.empty())
            faults.add(file.place(0), "the file has no coordinates of stations",
                       "it needs STAX, STAY and STAZ in SOLUTION/ESTIMATE");
        if (estimates.size() > most_parameters)
            faults.add(file.place(0), "the file has " + std::to_string(estimates.size()) + " coordinates",
                       "at most " + std::to_string(most_parameters) + " are taken");
        if (!faults.empty()) return false;
        read_matrix();
        add_rows();
        note_rest();
        builder.finish({file.file(), 0, 0});
        return faults.empty();
    }

private:
    std::string_view field(const Line &line, size_t first, size_t last) const
    {
        if (line.text.size() < first) return std::string_view();
        return trimmed(line.text.substr(first - 1, last - first + 1));
    }

    Source place(const Line &line, size_t column) const
    {
        return file.place(line.offset + std::min(column - 1, line.text.size()));
    }

    // Blocks stand between +NAME and -NAME; * begins a comment.
    void read_blocks()
    {
        const std::string_view all = file.text();
        std::string block;
        bool ended = false;
        for (size_t begin = 0; begin < all.size() && !ended;) {
            const size_t end = std::min(all.find('\n', begin), all.size());
            const Line line = {all.substr(begin, end - begin), begin};
            begin = end + 1;
            const char mark = line.text.empty() ? '*' : line.text[0];
            if (mark == '+') {
                block = trimmed(line.text.substr(1));
                if (block.compare(0, 24, "SOLUTION/MATRIX_ESTIMATE") == 0) matrix_title = {block, place(line, 1)};
            } else if (mark == '-') {
                block.clear();
            } else if (mark == '%') {
                ended = line.text.substr(0, 7) == "%ENDSNX";
            } else if (mark == ' ') {
                take_line(block, line);
            }
        }
        if (!ended)
            faults.add(file.place(all.size()), "the file ends without %ENDSNX", "it is cut: take the whole file");
    }

    void take_line(const std::string &block, const Line &line)
    {
        if (block == "SOLUTION/ESTIMATE") read_estimate(line);
        if (block.compare(0, 24, "SOLUTION/MATRIX_ESTIMATE") == 0) matrix.push_back(line);
    }

    double number(const Line &line, size_t first, size_t last, const char *what)
    {
        double value = 0.0;
        const std::string_view text = field(line, first, last);
        if (!read_fortran(text, value))
            faults.add(place(line, first), quote(text) + " is not a number for the " + what,
                       "write it in columns " + std::to_string(first) + " to " + std::to_string(last));
        return value;
    }

    int whole(const Line &line, size_t first, size_t last, const char *what)
    {
        int value = 0;
        const std::string_view text = field(line, first, last);
        if (read_whole(text, value) != Reading::Number || value < 1) {
            faults.add(place(line, first), quote(text) + " is not a number of a " + what,
                       "write a whole number above 0");
            return 0;
        }
        return value;
    }

    void read_estimate(const Line &line)
    {
        const int index = whole(line, 2, 6, "parameter");
        const std::string type(field(line, 8, 13));
        static const char *const types[] = {"STAX", "STAY", "STAZ"};
        const auto found = std::find(std::begin(types), std::end(types), type);
        if (found == std::end(types)) {
            auto &others = left_out[type];
            if (others.second++ == 0) others.first = place(line, 1);
            return;
        }
        Estimate e;
        e.axis = (size_t)(found - std::begin(types));
        e.site = field(line, 15, 18);
        e.point = field(line, 20, 21);
        e.solution = field(line, 23, 26);
        e.epoch = field(line, 28, 39);
        const std::string_view constraint = field(line, 46, 46);
        if (!constraint.empty()) e.constraint = constraint[0];
        e.value = number(line, 48, 68, "estimate");
        e.sigma = number(line, 70, 80, "standard deviation");
        e.where = place(line, 1);
        if (field(line, 41, 44) != "m")
            faults.add(place(line, 41), "a coordinate is in " + quote(field(line, 41, 44)), "metres are taken");
        if (index > 0 && !indexes.emplace(index, estimates.size()).second)
            faults.add(place(line, 2), "parameter " + std::to_string(index) + " comes twice", "number them apart");
        estimates.push_back(std::move(e));
    }

    // The covariance.

    double &element(size_t i, size_t j)
    {
        const size_t row = std::max(i, j), column = std::min(i, j);
        return elements[row * (row + 1) / 2 + column];
    }

    void read_matrix()
    {
        if (matrix_title.first.empty()) return;
        const bool correlations = matrix_title.first.find(" CORR") != std::string::npos;
        if (matrix_title.first.find(" INFO") != std::string::npos)
            return faults.add(matrix_title.second, "the matrix is a normal matrix (INFO)",
                              "take a file with covariances (COVA) or correlations (CORR)");
        if (!correlations && matrix_title.first.find(" COVA") == std::string::npos)
            return faults.add(matrix_title.second, "the matrix is neither COVA nor CORR",
                              "write which it is behind L or U");
        const size_t n = estimates.size();
        elements.assign(n * (n + 1) / 2, 0.0);
        for (const Line &line : matrix) read_matrix_line(line);
        if (correlations) scale_correlations();
        for (size_t i = 0; i < n && faults.empty(); i++)
            if (!(element(i, i) > 0.0))
                faults.add(estimates[i].where, "the matrix has no variance for this coordinate",
                           "take a file with the whole matrix");
    }

    void read_matrix_line(const Line &line)
    {
        const int row = whole(line, 2, 6, "row"), first = whole(line, 8, 12, "column");
        static const size_t columns[3][2] = {{14, 34}, {36, 56}, {58, 78}};
        const auto r = indexes.find(row);
        for (int k = 0; k < 3; k++) {
            if (field(line, columns[k][0], columns[k][1]).empty()) continue;
            const double value = number(line, columns[k][0], columns[k][1], "element");
            const auto c = indexes.find(first + k);
            if (r != indexes.end() && c != indexes.end()) element(r->second, c->second) = value;
        }
    }

    // Standard deviations stand on the diagonal.
    void scale_correlations()
    {
        const size_t n = estimates.size();
        for (size_t i = 0; i < n; i++)
            for (size_t j = 0; j < i; j++) element(i, j) *= element(i, i) * element(j, j);
        for (size_t i = 0; i < n; i++) element(i, i) *= element(i, i);
    }

    // Observations.

    // A site with several points or solutions has a name for each.
    std::string name_of(const Estimate &e) const
    {
        std::string name = e.site;
        if (points.at(e.site).size() > 1) name += '_' + e.point;
        if (solutions.at({e.site, e.point}).size() > 1) name += '_' + e.solution;
        return name;
    }

    void add_rows()
    {
        for (const Estimate &e : estimates) {
            points[e.site].insert(e.point);
            solutions[{e.site, e.point}].insert(e.solution);
        }
        std::map<std::tuple<std::string, std::string, std::string>, size_t> index;
        std::vector<DraftRow> rows;
        DraftCovariance group;
        group.name = "SINEX";
        for (const Estimate &e : estimates) {
            const auto [found, added] = index.emplace(std::make_tuple(e.site, e.point, e.solution), rows.size());
            if (added) rows.push_back(row_of(e));
            DraftRow &row = rows[found->second];
            if (row.value[e.axis]) faults.add(e.where, "the coordinate comes twice", "keep one");
            row.value[e.axis] = e.value;
            if (elements.empty()) row.sigma[e.axis] = e.sigma;
            if (elements.empty() && !(e.sigma > 0.0))
                faults.add(e.where, "a coordinate has neither covariance nor standard deviation", "give it one");
            group.components.push_back({DraftKind::coordinates, found->second, (int)e.axis});
        }
        for (DraftRow &row : rows) add_row(std::move(row));
        if (!elements.empty()) add_group(std::move(group));
    }

    DraftRow row_of(const Estimate &e) const
    {
        DraftRow row;
        row.where = e.where;
        row.from = name_of(e);
        if (!elements.empty()) row.covariance = "SINEX";
        return row;
    }

    void add_row(DraftRow row)
    {
        DraftPoint &point = builder.point(row.from, row.where);
        point.value = row.value;
        const size_t count = (size_t)row.value[0].has_value() + row.value[1].has_value() + row.value[2].has_value();
        if (count < 3)
            faults.add(row.where, "station " + quote(row.from) + " lacks a coordinate", "all three are needed");
        builder.add(DraftKind::coordinates, std::move(row), count);
    }

    void add_group(DraftCovariance group)
    {
        const size_t n = estimates.size();
        group.width = n - 1;
        group.where = matrix_title.second;
        group.elements.reserve(elements.size());
        for (size_t i = 0; i < n; i++)
            for (size_t j = i; j < n; j++) group.elements.push_back(element(i, j));
        builder.draft.covariances.push_back(std::move(group));
    }

    void note_rest()
    {
        for (const auto &[type, others] : left_out)
            builder.leave_out(others.first, std::to_string(others.second) + " parameters " + type,
                              "the network has coordinates of stations only", others.second);
        std::set<std::string> epochs;
        size_t constrained = 0, differing = 0;
        for (size_t i = 0; i < estimates.size(); i++) {
            epochs.insert(estimates[i].epoch);
            if (estimates[i].constraint != '2') constrained++;
            if (!elements.empty() && std::fabs(std::sqrt(element(i, i)) / estimates[i].sigma - 1.0) > 0.01) differing++;
        }
        if (epochs.size() > 1)
            builder.note(Source(), "coordinates are at " + std::to_string(epochs.size()) +
                                       " epochs: they are taken as they stand, without velocities");
        if (constrained > 0)
            builder.note(Source(), std::to_string(constrained) +
                                       " coordinates hold constraints of their program, which stay in them");
        if (differing > 0)
            builder.note(Source(), std::to_string(differing) +
                                       " standard deviations differ from their matrix: the matrix counts");
        if (elements.empty()) builder.note(Source(), "the file has no covariances: coordinates are not correlated");
    }

    const TextFile &file;
    DraftBuilder builder;
    Faults &faults;
    std::vector<Estimate> estimates;
    std::map<int, size_t> indexes; // of estimates by the number of the parameter
    std::vector<Line> matrix;
    std::pair<std::string, Source> matrix_title;
    std::vector<double> elements; // lower triangle by rows, of the estimates in their order; empty without a matrix
    std::map<std::string, std::pair<Source, size_t>> left_out; // first place and count by type
    std::map<std::string, std::set<std::string>> points;       // by site
    std::map<std::pair<std::string, std::string>, std::set<std::string>> solutions;
};

} // namespace

bool read_sinex(const TextFile &file, Draft &draft, Faults &faults) { return SinexReader(file, draft, faults).read(); }

} // namespace vornhost
