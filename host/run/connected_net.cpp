#include "host/run/connected_net.h"

#include <ctype.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace vornhost {

namespace {

enum { EXPORTED = 1, IMPORTED = 2 };

template <class Record> int count(const List<Record> &list, int iconn)
{
    int n = 0;
    for (const Record &r : list.records) n += r.status > 0 && r.iconn == iconn;
    return n;
}

int count(const Model &model, int iconn) { return count(model.stations, iconn) + count(model.targets, iconn); }

// Heights that are held, and points that take part.
template <class Record> void count_heights(const List<Record> &list, int &fixed, int &points)
{
    for (const Record &r : list.records) {
        if (r.status <= 0) continue;
        points++;
        fixed += r.ix[2] == CODE_FIXED;
    }
}

// A network of heights without a fixed one is free unless all its points are imported.
bool free_heights(const Model &model, int imported)
{
    int fixed = 0, points = 0;
    count_heights(model.stations, fixed, points);
    count_heights(model.targets, fixed, points);
    return model.p.dim == 1 && fixed == 0 && imported < points;
}

bool weighted(const int (&codes)[3])
{
    return std::find(std::begin(codes), std::end(codes), (int)CODE_WEIGHTED) != std::end(codes);
}

bool any_weighted(const Model &model)
{
    bool any = false;
    for (const station_input &s : model.stations.records) any |= s.status > 0 && (weighted(s.ix) || weighted(s.ir));
    for (const target_input &t : model.targets.records) any |= t.status > 0 && weighted(t.ix);
    for (const group_input &g : model.groups.records) any |= weighted(g.ic);
    return any;
}

std::string export_path(const Model &model)
{
    const std::string name = model.p.filename;
    return name.substr(0, name.find('.')) + ".con";
}

std::optional<std::string> content(const std::string &path)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
    std::ostringstream all;
    all << std::ifstream(path, std::ios::binary).rdbuf();
    return all.str();
}

bool begins(const char *line, const char *words) { return strncmp(line, words, strlen(words)) == 0; }

} // namespace

std::vector<std::string> import_faults(const Model &model)
{
    const int n = count(model, IMPORTED);
    if (n == 0) return {};
    if (model.solver == Solver::Simplex)
        return {"the solver simplex cannot import points", "choose the solver compact or jordan"};
    if (n < model.p.dim)
        return {"too few points are imported: " + std::to_string(n) + " of at least " + std::to_string(model.p.dim),
                "import as many points as the network has dimensions"};
    if (free_heights(model, n))
        return {"a height network without a fixed height is free and cannot hold what it imports",
                "fix a height, or import all points"};
    return {};
}

std::string import_note(const Model &model)
{
    if (count(model, IMPORTED) == 0 || !any_weighted(model)) return {};
    return "weighted coordinates, rotations and constants have no weight in a network that imports points";
}

bool finite_file(const std::string &path)
{
    std::istringstream lines(content(path).value_or(""));
    std::string line;
    std::getline(lines, line);
    const auto letter = [](unsigned char c) { return isalpha(c) != 0; };
    while (std::getline(lines, line))
        if (line.size() > 8 && std::any_of(line.begin() + 8, line.end(), letter)) return false;
    return true;
}

ConnectedNet::ConnectedNet(const Model &model)
    : exported(count(model, EXPORTED)), imported(count(model, IMPORTED)), dimension(model.p.dim), solver(model.solver),
      mode(model.mode), path(export_path(model))
{
    if (exported > 0) earlier = content(path);
}

void ConnectedNet::hear(const char *line)
{
    if (imported > 0 && refusal[0] == '\0' &&
        (begins(line, "fill_connect: ") || begins(line, "fill_vorn: Cannot open ") || begins(line, "set_connect: ")))
        snprintf(refusal, sizeof refusal, "%s", line);
    if (begins(line, "      No degree of freedom")) no_redundancy = true;
    if (begins(line, "writeQcon: ")) incomplete = true;
    if (begins(line, "backtoproject: Cannot open ")) not_opened = true;
    if (begins(line, "backtoproject: Cannot write ")) cut = true;
}

std::string ConnectedNet::import_refusal() const { return refusal; }

// Why the engine has no whole file to write; empty when it has.
std::string ConnectedNet::why_not(bool adjusted) const
{
    if (exported < dimension) return "at least " + std::to_string(dimension) + " points must be exported";
    if (solver == Solver::Simplex) return "the solver simplex has no covariances";
    if (mode == Mode::Solution) return "the mode solution has no covariances";
    if (!adjusted) return "the network was not adjusted";
    if (no_redundancy) return "without redundant observations the engine exports nothing";
    if (incomplete) return "every exported point must be free in all its coordinates";
    return {};
}

void ConnectedNet::put_back() const
{
    const std::optional<std::string> now = content(path);
    std::error_code error;
    if (!now || now == earlier) return;
    if (earlier)
        std::ofstream(path, std::ios::binary) << *earlier;
    else
        std::filesystem::remove(path, error);
}

std::string ConnectedNet::close(bool adjusted)
{
    if (exported == 0) return {};
    std::string reason = why_not(adjusted);
    refused = reason.empty() && (not_opened || cut);
    if (refused) reason = not_opened ? "it cannot be opened" : "the disk is full or does not take it";
    not_finite = reason.empty() && !finite_file(path);
    if (not_finite) reason = "its numbers are not all finite";
    if (reason.empty()) return {};
    put_back();
    return path + " is not written: " + reason;
}

} // namespace vornhost
