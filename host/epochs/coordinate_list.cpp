#include "host/epochs/coordinate_list.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <unordered_map>

#include "host/input/names.h"
#include "host/input/network_file.h"
#include "host/input/row.h"
#include "host/own/road.h"
#include "host/run/silence.h"

namespace vornhost {

namespace {

enum { NAME, X, Y, Z, SX, SY, SZ };

const std::vector<Column> columns = {{"name", true}, {"x", true}, {"y", true}, {"z"}, {"sx"}, {"sy"}, {"sz"}};

// Of the first line that is neither empty nor a comment; 0 for blanks.
char separator_of(const std::string &text)
{
    size_t at = 0;
    while (at < text.size()) {
        const size_t end = std::min(text.find('\n', at), text.size()), first = text.find_first_not_of(" \t\r", at);
        if (first < end && text[first] != '#') {
            const size_t found = text.find_first_of(",;\t", first);
            return found < end ? text[found] : '\0';
        }
        at = end + 1;
    }
    return '\0';
}

CsvForm form_of(char separator)
{
    CsvForm form;
    form.separator = separator == '\0' ? ',' : separator;
    form.headings.push_back({"name", "name", Source()}); // columns that the list does not know are passed over
    return form;
}

bool read_row(const Table &table, size_t i, CoordinateList &list, Faults &faults)
{
    if (!table.whole(i)) return false;
    Row row(table, i, faults);
    ListedPoint p;
    p.name = std::string(row.name(NAME));
    if (p.name.empty()) row.missing(NAME, "write the name of the point");
    for (int k = 0; k < (list.has_z ? 3 : 2); k++) p.x[k] = row.needed(X + k);
    for (int k = 0; k < 3 && list.has_sigma; k++) {
        if (k == 2 && !list.has_z) continue;
        if (!row.given(SX + k)) row.missing(SX + k, "write a standard deviation, or leave the columns out");
        const double s = row.positive(SX + k, 1.0);
        p.q[(size_t)k * 4] = s * s;
    }
    list.points.push_back(p);
    return true;
}

bool read_table(const std::string &path, CoordinateList &list, Faults &faults)
{
    TextFile file;
    if (!file.read(path, Source(), faults)) return false;
    const char separator = separator_of(file.text());
    Table table("coordinates", Passage(file, 0, file.text().size()),
                separator == '\0' ? Layout::Blanks : Layout::Commas, Source{file.file(), 1, 1}, form_of(separator));
    table.parse(columns, faults);
    if (!faults.empty()) return false;
    list.has_z = table.has(Z);
    const bool sigmas[3] = {table.has(SX), table.has(SY), table.has(SZ) || !list.has_z};
    list.has_sigma = sigmas[0] && sigmas[1] && sigmas[2];
    if (!list.has_sigma && (sigmas[0] || sigmas[1] || table.has(SZ)))
        faults.add(table.heading_place(), "some columns of standard deviations are missing",
                   list.has_z ? "write sx, sy and sz, or none of them" : "write sx and sy, or none of them");
    std::unordered_map<std::string, size_t> seen;
    for (size_t i = 0; i < table.rows() && faults.empty(); i++)
        if (read_row(table, i, list, faults) && !seen.emplace(list.points.back().name, i).second)
            faults.add(table.place(i, NAME), "point " + quote(list.points.back().name) + " stands here again",
                       "give each point one row");
    return faults.empty();
}

bool read_points(const std::string &path, CoordinateList &list, Faults &faults, const RunWatch &watch)
{
    Model model;
    if (!read_network(path, model, faults)) return false;
    if (model.p.dim == 1) {
        faults.add({0, 0, 0}, "a network of heights has no plane to transform",
                   "name a network of the plane or of space");
        return false;
    }
    model.solver = Solver::Sparse, model.mode = Mode::Statistics, model.residual_statistics = false;
    for (station_input &s : model.stations.records) s.iconn = s.iconn == 1 ? 0 : s.iconn;
    for (target_input &t : model.targets.records) t.iconn = t.iconn == 1 ? 0 : t.iconn;
    Silence silence;
    const OwnOutcome run = run_own(model, silence, false, watch);
    list.stopped = run.ending == Ending::stopped;
    list.words = run.run.words;
    if (!run.adjusted()) return false;
    list.has_z = model.p.dim == 3, list.has_sigma = true;
    for (int i = 0; i < run.numbers.model.n_points; i++) {
        ListedPoint p;
        p.name = shown_name(model, point_name(model, run.numbers.points[(size_t)i]));
        const vornadjust::Covariance &c = run.adjustment.statistics.points[(size_t)i];
        p.q = {c[0], c[1], c[2], c[1], c[3], c[4], c[2], c[4], c[5]};
        bool whole = true;
        for (int k = 0; k < 3; k++) {
            const size_t u = 3 * (size_t)i + (size_t)k;
            p.x[k] = run.numbers.model.value[u] + run.numbers.origin[k];
            whole &= k == 2 && !list.has_z ? true : run.numbers.model.code[u] != vornadjust::Code::absent;
        }
        if (whole) list.points.push_back(p);
    }
    return true;
}

} // namespace

bool read_coordinates(const std::string &path, CoordinateList &list, Faults &faults, const RunWatch &watch)
{
    list.file = path;
    const bool network = std::filesystem::path(path).extension() == ".inp";
    return network ? read_points(path, list, faults, watch) : read_table(path, list, faults);
}

} // namespace vornhost
