#include "host/run/coincident.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <unordered_map>

#include "host/input/names.h"
#include "host/preparation/lump_checks.h"
#include "vorn/result.h"
#include "host/results/result_parts.h"

namespace vornhost {

namespace {

constexpr double nearest = 1.0e-7; // metres; a shorter vertical sight has no direction for the engine
constexpr size_t most_lines = 5;

struct Place {
    std::array<double, 3> x;
    bool held; // no coordinate of the point is unknown
};

class Search {
public:
    explicit Search(const Model &network) : model(network), p(network.p) { find_places(); }

    void look(const std::string &kind, const List<measure_input> &list)
    {
        for (size_t i = 0; i < list.size(); i++)
            if (list.records[i].typ > 0 && in_one_place(kind, list.records[i]))
                add(kind, list.records[i], list.where[i]);
    }

    CoincidentSights close()
    {
        if (count > most_lines)
            found.lines.push_back(std::to_string(count - most_lines) + " more sights between points in one place");
        return std::move(found);
    }

private:
    void find_places()
    {
        const result *r = p.runresults;
        if (!r || p.dim == 1 || has_lumps(model)) return;
        int i = 0;
        for (int j = 0; j < p.nstations && i < r->nstar; j++)
            if (p.stations[j].status > 0) add_place(*r, p.stations[j], (size_t)i++);
        i = r->nstar;
        for (int j = 0; j < p.ntargets && i < r->nstar + r->ntarr; j++)
            if (p.targets[j].status > 0) add_place(*r, p.targets[j], (size_t)i++);
    }

    template <class Record> void add_place(const result &r, const Record &point, size_t i)
    {
        Place &spot = places[bare_name(point.name, sizeof point.name)];
        spot.x = {element(r.x0, i).value_or(0.0), element(r.y0, i).value_or(0.0), element(r.z0, i).value_or(0.0)};
        spot.held = std::all_of(point.ix, point.ix + p.dim, [](int code) { return code < 0 || code == CODE_FIXED; });
    }

    const Place *place_of(const char *name, size_t size) const
    {
        const auto found_place = places.find(bare_name(name, size));
        return found_place == places.end() ? nullptr : &found_place->second;
    }

    // A distance that is reduced in the plane takes the heights of its points, which a plane run
    // does not return.
    bool in_one_place(const std::string &kind, const measure_input &m) const
    {
        if (kind == "distance" && p.dim == 2 && p.iredux != 0) return false;
        const Place *from = place_of(m.from, sizeof m.from), *to = place_of(m.to, sizeof m.to);
        if (!from || !to) return false;
        for (size_t c = 0; c < 3; c++)
            if (!(std::fabs(from->x[c] - to->x[c]) < nearest)) return false;
        return true;
    }

    void add(const std::string &kind, const measure_input &m, Source where)
    {
        const bool held = place_of(m.from, sizeof m.from)->held && place_of(m.to, sizeof m.to)->held;
        if (kind == "distance" && !held) found.distances = true;
        if (count++ >= most_lines) return;
        found.lines.push_back(
            place(model, where) + ": " + kind + " " + shown_name(model, m.from) + " to " + shown_name(model, m.to) +
            ": both points have the same approximate coordinates; correct them or leave the sight out");
    }

    const Model &model;
    const project &p;
    std::unordered_map<std::string, Place> places;
    CoincidentSights found;
    size_t count = 0;
};

} // namespace

CoincidentSights coincident_sights(const Model &model)
{
    Search search(model);
    search.look("distance", model.distances);
    search.look("direction", model.directions);
    search.look("vertical angle", model.verticals);
    search.look("azimuth", model.azimuths);
    return search.close();
}

} // namespace vornhost
