// The simplex solver has rows for distances, height differences, directions, vertical angles
// and fixed heights, and for nothing else.

#include "host/preparation/simplex_input.h"

#include "host/preparation/lump_checks.h"
#include "host/input/names.h"

namespace vornhost {

namespace {

constexpr size_t most_points = 20;
const char *const or_choose = ", or choose compact or jordan (";

class Refusal {
public:
    explicit Refusal(const Model &network) : model(network) {}

    // One line for all records that take part, with the place of the first one.
    template <class Record, class Used> void kind(const List<Record> &list, const char *what, Used used)
    {
        for (size_t i = 0; i < list.size(); i++)
            if (used(list.records[i])) return refuse(what, "leave them out", list.where[i]);
    }

    template <class Record> void weighted(const Record &point, const char *kind, Source where)
    {
        static const char *const names[] = {"x", "y", "z"};
        const int first = model.p.dim == 1 ? 2 : 0, last = model.p.dim == 2 ? 2 : 3;
        std::string weights;
        for (int k = first; point.status > 0 && k < last; k++)
            if (point.ix[k] == CODE_WEIGHTED) weights += (weights.empty() ? "" : ", ") + std::string(names[k]);
        if (!weights.empty()) refuse_point("weighted coordinates", weights, kind, shown_name(model, point.name), where);
    }

    void turned(const station_input &s, Source where)
    {
        bool found = false;
        for (int k = model.p.dim == 2 ? 2 : 0; s.status > 0 && model.p.dim > 1 && k < 3; k++)
            found = found || s.ir[k] == CODE_WEIGHTED;
        if (found)
            refuse_point("weighted orientations", "the orientation", "station", shown_name(model, s.name), where);
    }

    void lumps()
    {
        if (model.p.lumpmethod == 0 || !has_lumps(model)) return;
        lines.push_back("the simplex solver does not adjust lumps: choose compact or jordan, or write method = 0 in "
                        "[lumps] (" +
                        model.path + ")");
    }

    std::vector<std::string> close()
    {
        if (points > most_points)
            lines.push_back("weights stand at " + std::to_string(points - most_points) + " more points");
        return std::move(lines);
    }

private:
    void refuse(const std::string &what, const std::string &remedy, Source where)
    {
        lines.push_back("the simplex solver does not take " + what + ": " + remedy + or_choose + place(model, where) +
                        ")");
    }

    void refuse_point(const char *what, const std::string &which, const char *kind, const std::string &name,
                      Source where)
    {
        if (++points > most_points) return;
        refuse(what, "make " + which + " of " + kind + " " + name + " free or fixed", where);
    }

    const Model &model;
    std::vector<std::string> lines;
    size_t points = 0;
};

} // namespace

std::vector<std::string> not_for_simplex(const Model &model)
{
    Refusal refusal(model);
    const project &p = model.p;
    refusal.kind(model.azimuths, "azimuths", [&](const measure_input &m) { return p.dim > 1 && m.typ > 0; });
    refusal.kind(model.baselines, "baselines", [&](const gps_input &g) { return p.igps != 0 && g.status > 0; });
    refusal.kind(model.images, "image coordinates",
                 [&](const image_input &i) { return p.iphoto != 0 && i.status > 0; });
    refusal.lumps();
    for (size_t i = 0; i < model.stations.size(); i++) {
        refusal.weighted(model.stations.records[i], "station", model.stations.where[i]);
        refusal.turned(model.stations.records[i], model.stations.where[i]);
    }
    for (size_t i = 0; i < model.targets.size(); i++)
        refusal.weighted(model.targets.records[i], "target", model.targets.where[i]);
    return refusal.close();
}

} // namespace vornhost
