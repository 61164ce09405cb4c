#include "host/preparation/heights.h"

#include <unordered_map>

#include "host/input/names.h"

namespace vornhost {

namespace {

// Calls action(record, where) for every used point.
template <class Action> void for_points(Model &model, Action action)
{
    for (size_t i = 0; i < model.stations.size(); i++)
        if (model.stations.records[i].status > 0) action(model.stations.records[i], model.stations.where[i]);
    for (size_t i = 0; i < model.targets.size(); i++)
        if (model.targets.records[i].status > 0) action(model.targets.records[i], model.targets.where[i]);
}

template <class Record> bool height_alone_fixed(const Record &r)
{
    return r.ix[2] == CODE_FIXED && !(r.ix[0] == CODE_FIXED && r.ix[1] == CODE_FIXED);
}

// Points that are fixed in all three coordinates.
int fixed_points(Model &model)
{
    int count = 0;
    for_points(model, [&](const auto &r, Source) {
        count += r.ix[0] == CODE_FIXED && r.ix[1] == CODE_FIXED && r.ix[2] == CODE_FIXED;
    });
    return count;
}

} // namespace

void move_heights_to_distances(Model &model)
{
    if (model.p.dim != 2 || (model.p.iredux != 2 && model.p.iredux != 9)) return;
    std::unordered_map<std::string, double> heights;
    for_points(model, [&](auto &r, Source) {
        heights[r.name] = r.x[2];
        r.x[2] = 0.0;
    });
    for (measure_input &m : model.distances.records) {
        const auto from = heights.find(m.from), to = heights.find(m.to);
        if (from != heights.end()) m.h1 += from->second;
        if (to != heights.end()) m.h2 += to->second;
    }
}

std::vector<Held> hold_heights(Model &model)
{
    std::vector<Held> held;
    if (model.p.dim != 3 || model.p.iearth != 2) return held;
    if (model.solver == Solver::Simplex) return held; // it has rows for fixed heights, and none for weights
    const bool datum_stands = fixed_points(model) >= 3;
    for_points(model, [&](auto &r, Source where) {
        if (!height_alone_fixed(r)) return;
        const std::string who = "the fixed height of " + shown_name(model, r.name);
        if (!datum_stands) {
            held.push_back({where, who + " also holds its position; fix three points in all coordinates, "
                                         "or give it code_z weighted"});
            return;
        }
        r.ix[2] = CODE_WEIGHTED;
        r.sx[2] = held_height_sigma / metres_per_unit(model.p);
        held.push_back({where, who + " is held by a standard deviation of 1e-6 m"});
    });
    return held;
}

} // namespace vornhost
