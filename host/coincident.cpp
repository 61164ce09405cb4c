#include "coincident.h"

#include <array>
#include <cmath>
#include <unordered_map>

#include "lump_checks.h"
#include "result.h"
#include "result_parts.h"

namespace vornhost {

namespace {

constexpr double nearest = 1.0e-7; // metres; a shorter vertical sight has no direction for the engine
constexpr size_t most_lines = 5;

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
            if (p.stations[j].status > 0) add_place(*r, p.stations[j].name, (size_t)i++);
        i = r->nstar;
        for (int j = 0; j < p.ntargets && i < r->nstar + r->ntarr; j++)
            if (p.targets[j].status > 0) add_place(*r, p.targets[j].name, (size_t)i++);
    }

    template <size_t size> void add_place(const result &r, const char (&name)[size], size_t i)
    {
        places[bare_name(name, size)] = {element(r.x0, i).value_or(0.0), element(r.y0, i).value_or(0.0),
                                         element(r.z0, i).value_or(0.0)};
    }

    // A distance that is reduced in the plane takes the heights of its points, which a plane run
    // does not return.
    bool in_one_place(const std::string &kind, const measure_input &m) const
    {
        if (kind == "distance" && p.dim == 2 && p.iredux != 0) return false;
        const auto from = places.find(bare_name(m.from, sizeof m.from)), to = places.find(bare_name(m.to, sizeof m.to));
        if (from == places.end() || to == places.end()) return false;
        for (size_t c = 0; c < 3; c++)
            if (!(std::fabs(from->second[c] - to->second[c]) < nearest)) return false;
        return true;
    }

    void add(const std::string &kind, const measure_input &m, Source where)
    {
        if (kind == "distance") found.distances = true;
        if (count++ >= most_lines) return;
        found.lines.push_back(
            place(model, where) + ": " + kind + " " + bare_name(m.from, sizeof m.from) + " to " +
            bare_name(m.to, sizeof m.to) +
            ": both points have the same approximate coordinates; correct them or leave the sight out");
    }

    const Model &model;
    const project &p;
    std::unordered_map<std::string, std::array<double, 3>> places;
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
