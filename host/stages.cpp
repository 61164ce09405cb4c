// What a network may ask for and this version cannot do.

#include <cstddef>

#include "lump_checks.h"
#include "names.h"
#include "runner.h"
#include "simplex_input.h"

namespace vornhost {

namespace {

constexpr size_t most_points = 20; // named in lines of their own

template <class Record>
void missing_coordinates(const Model &model, const List<Record> &list, const char *kind,
                         std::vector<std::string> &lines)
{
    static const char *const coordinates[] = {"", "z", "x, y", "x, y, z"};
    for (size_t i = 0; i < list.size(); i++) {
        if (list.records[i].status != STATUS_COMPUTE) continue;
        lines.push_back(std::string("approximate coordinates are not computed by this version: give ") +
                        coordinates[model.p.dim] + " of " + kind + " " + plain_name(list.records[i].name) + " (" +
                        place(model, list.where[i]) + ")");
    }
}

} // namespace

std::vector<std::string> not_available(const Model &model)
{
    std::vector<std::string> lines;
    if (model.solver == Solver::Simplex) lines = not_for_simplex(model);
    if (model.p.lumpmethod == 9 && has_lumps(model))
        lines.push_back("lumps are not compared after the adjustment by this version: write method = 1 in [lumps] (" +
                        model.path + ")");
    std::vector<std::string> points;
    missing_coordinates(model, model.stations, "station", points);
    missing_coordinates(model, model.targets, "target", points);
    const size_t named = points.size() > most_points ? most_points : points.size();
    lines.insert(lines.end(), points.begin(), points.begin() + (std::ptrdiff_t)named);
    if (points.size() > named)
        lines.push_back("approximate coordinates are missing for " + std::to_string(points.size() - named) +
                        " more points");
    return lines;
}

} // namespace vornhost
