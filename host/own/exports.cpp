#include "host/own/exports.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "host/input/connected_file.h"
#include "host/input/faults.h"
#include "host/input/names.h"
#include "host/results/output_file.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

enum { EXPORTED = 1, IMPORTED = 2 };

// Axes that the dimension has, the first and how many.
int first_axis(int dimension) { return dimension == 1 ? 2 : 0; }

bool is_free(const int codes[3], int dimension)
{
    const int *first = codes + first_axis(dimension);
    return std::all_of(first, first + dimension, [](int c) { return c == CODE_FREE || c == CODE_NO_DATUM || c == 0; });
}

// A list of names, at most eight.
std::string names_text(const std::vector<std::string> &names)
{
    constexpr size_t most = 8;
    std::string text;
    for (size_t i = 0; i < names.size() && i < most; i++) text += (i > 0 ? ", " : "") + names[i];
    return names.size() > most ? text + " and " + std::to_string(names.size() - most) + " more" : text;
}

// The imported points by the names in their records, with what they take from the file.
class Imports {
public:
    Imports(Model &model, const ConnectedFile &content) : network(model), file(content)
    {
        for (size_t i = 0; i < file.names.size(); i++) place.emplace(held_name(model.keys, file.names[i]), i);
    }

    std::vector<std::string> take()
    {
        look(network.stations);
        look(network.targets);
        if (!held.empty())
            return {"imported points that are not free in all their coordinates: " + names_text(held),
                    "write code free for them"};
        if (!unknown.empty())
            return {"imported points that the file of the connected net does not hold: " + names_text(unknown),
                    "import exactly the points of the file"};
        for (size_t at = 0; at < file.names.size(); at++)
            if (!found[at]) missing.push_back(printable(file.names[at]));
        std::sort(missing.begin(), missing.end());
        if (missing.empty()) return {};
        return {"points of the connected net that the network does not import: " + names_text(missing),
                "import exactly the points of the file"};
    }

private:
    template <class Record> void look(List<Record> &list)
    {
        for (Record &r : list.records) {
            if (r.status <= 0 || r.iconn != IMPORTED) continue;
            const auto at = place.find(r.name);
            if (!is_free(r.ix, network.p.dim)) held.push_back(shown_name(network, r.name));
            if (at == place.end()) {
                unknown.push_back(shown_name(network, r.name));
                continue;
            }
            found[at->second] = true;
            for (int k = 0; k < 3; k++) r.x[k] = file.coordinates[at->second][(size_t)k] / metres_per_unit(network.p);
            r.status = STATUS_ON;
        }
    }

    Model &network;
    const ConnectedFile &file;
    std::unordered_map<std::string, size_t> place;
    std::unordered_map<size_t, bool> found;
    std::vector<std::string> held, unknown, missing;
};

template <class Record> int count(const List<Record> &list, int iconn)
{
    return (int)std::count_if(list.records.begin(), list.records.end(),
                              [&](const Record &r) { return r.status > 0 && r.iconn == iconn; });
}

// The covariance of imported coordinates is a full matrix, here and in the normal equations: its factor takes the cube
// of their number in operations, some seconds a step for as many.
constexpr int most_imported = 3000;

std::vector<std::string> too_many(int points, int coordinates)
{
    const double megabytes = 8e-6 * coordinates * coordinates;
    return {"the network imports " + std::to_string(points) + " points: " + std::to_string(coordinates) +
                " coordinates, whose covariance is a full matrix of " + std::to_string((long)megabytes) +
                " MB; at most " + std::to_string(most_imported) + " coordinates can be imported",
            "export and import only the points that the surveys share, or adjust both surveys in one file"};
}

bool is_exported(const Model &network, const PointPlace &p)
{
    return (p.station ? network.stations.records[(size_t)p.record].iconn
                      : network.targets.records[(size_t)p.record].iconn) == EXPORTED;
}

std::vector<int> exported_points(const Model &network, const Numbers &numbers)
{
    std::vector<int> points;
    for (size_t p = 0; p < numbers.points.size(); p++)
        if (is_exported(network, numbers.points[p])) points.push_back((int)p);
    return points;
}

// Why an adjusted network has no file to give; empty when it has.
std::string why_not(const Model &network, const OwnOutcome &outcome, const std::vector<int> &points)
{
    const va::Model &model = outcome.numbers.model;
    if (!outcome.adjusted()) return "the network was not adjusted";
    if (network.mode == Mode::Solution) return "the mode solution has no covariances";
    for (const int u :
         outcome.numbers.model.n_points > 0 ? exported_unknowns(network, outcome.numbers) : std::vector<int>())
        if (!model.estimated(u)) return "every exported point must be free in all its coordinates";
    return points.empty() ? "no exported point is in use" : "";
}

ConnectedFile content_of(const Model &network, const OwnOutcome &outcome, const std::vector<int> &points)
{
    ConnectedFile file;
    file.dimension = network.p.dim;
    for (const int p : points) {
        file.names.push_back(full_name(network, point_name(network, outcome.numbers.points[(size_t)p])));
        const double *x = &outcome.numbers.model.value[3 * (size_t)p], *origin = outcome.numbers.origin;
        file.coordinates.push_back({x[0] + origin[0], x[1] + origin[1], x[2] + origin[2]});
    }
    const std::vector<double> &joint = outcome.adjustment.statistics.joint; // theirs first
    const size_t n = points.size() * (size_t)file.dimension, all = (size_t)std::lround(std::sqrt((double)joint.size()));
    for (size_t i = 0; i < n; i++)
        for (size_t j = 0; j <= i; j++) file.cofactors.push_back(joint[i * all + j]);
    return file;
}

std::string export_name(const Model &network)
{
    const std::string name = network.p.filename;
    return name.substr(0, name.rfind('.')) + ".con";
}

} // namespace

std::vector<std::string> take_imports(Model &network)
{
    const int imported = count(network.stations, IMPORTED) + count(network.targets, IMPORTED);
    if (imported == 0) return {};
    if (imported * network.p.dim > most_imported) return too_many(imported, imported * network.p.dim);
    ConnectedFile file;
    const std::string fault = read_connected_file(network.p.confile, file);
    if (!fault.empty()) return {fault, "adjust the network that exports it anew"};
    if (file.dimension != network.p.dim)
        return {"the connected net has " + std::to_string(file.dimension) + " dimensions, the network " +
                    std::to_string(network.p.dim),
                "import a net of the same dimension"};
    return Imports(network, file).take();
}

std::vector<std::pair<int, int>> wanted_pairs(const Model &network, const Numbers &numbers)
{
    if (network.pairs.records.empty()) return {};
    std::unordered_map<std::string, int> point;
    for (size_t p = 0; p < numbers.points.size(); p++) point.emplace(point_name(network, numbers.points[p]), (int)p);
    std::vector<std::pair<int, int>> pairs;
    for (const pair_input &in : network.pairs.records) {
        const auto from = point.find(in.from), to = point.find(in.to);
        if (from != point.end() && to != point.end()) pairs.push_back({from->second, to->second});
    }
    return pairs;
}

std::vector<int> exported_unknowns(const Model &network, const Numbers &numbers)
{
    std::vector<int> unknowns;
    for (const int p : exported_points(network, numbers))
        for (int k = 0; k < network.p.dim; k++) unknowns.push_back(3 * p + first_axis(network.p.dim) + k);
    return unknowns;
}

void write_export(const Model &network, OwnOutcome &outcome)
{
    if (count(network.stations, EXPORTED) + count(network.targets, EXPORTED) == 0) return;
    const std::string path = export_name(network);
    const std::vector<int> points = exported_points(network, outcome.numbers);
    const std::string reason = why_not(network, outcome, points);
    if (!reason.empty()) {
        outcome.run.prepared.notes.push_back(path + " is not written: " + reason);
        return;
    }
    try {
        write_file(path, connected_text(path, content_of(network, outcome, points)));
    } catch (const OutputError &error) {
        outcome.run.lost.push_back(error.what());
    }
}

} // namespace vornhost
