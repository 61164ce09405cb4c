#include "host/preparation/closures/closures.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "host/preparation/closures/graphs.h"
#include "host/preparation/closures/traverses.h"

namespace vornhost::closures {

namespace {

namespace va = vornadjust;

// Evaluates every loop of a graph. `describe` says to which closures one belongs and makes what is listed of it, which
// is little of what there is.
template <class Describe> void close_loops(const va::Model &model, const LegGraph &graph, const Describe &describe)
{
    std::vector<Part> parts;
    const auto close = [&](const Loop &loop) {
        Closure closure;
        const Sum sum = graph.sum(model, loop, &parts);
        if (!judge(sum, &closure.misclosure, &closure.limit)) return;
        Closures &closures = describe.of(loop);
        closures.count(closure.ratio());
        if (!closures.wants(closure.ratio())) return;
        closure.components = sum.n;
        std::copy(sum.w, sum.w + sum.n, closure.off);
        describe(loop, &closure);
        closures.list(std::move(closure));
    };
    describe.missed(find_loops(graph.nodes, graph.links, graph.known, close));
}

// Loops over points; those through the node of what is known begin and end at known points.
struct OverPoints {
    const LegGraph &graph;
    Closures *closures;

    void missed(size_t n) const { closures->missed = n; }
    Closures &of(const Loop &) const { return *closures; }
    void operator()(Loop loop, Closure *made) const
    {
        Closure &closure = *made;
        begin_at(graph.links, graph.known, &loop);
        const bool known = begin_of(graph.links, loop.front()) == graph.known;
        for (const Step &step : loop) {
            const int node = begin_of(graph.links, step);
            if (node != graph.known) closure.points.push_back(node);
            const double *d = graph.legs[(size_t)step.link].value;
            const bool leg = graph.legs[(size_t)step.link].observation[0] >= 0;
            if (graph.n > 1 && leg) closure.length += std::hypot(d[0], d[1], d[2]);
        }
        if (!known || closure.points.size() == 1) closure.points.push_back(closure.points.front());
        closure.observations = graph.observations(loop);
    }
};

// Loops over points with a vertical angle in them; the others are those of levelling.
struct OverSights {
    OverPoints points;
    Closures *levelling;

    void missed(size_t n) const { points.missed(n); }
    Closures &of(const Loop &loop) const
    {
        const auto sight = [this](const Step &s) { return points.graph.legs[(size_t)s.link].second >= 0; };
        return std::any_of(loop.begin(), loop.end(), sight) ? *points.closures : *levelling;
    }
    void operator()(const Loop &loop, Closure *made) const { points(loop, made); }
};

// Loops over circles and lines.
struct OverLines {
    const AngleGraph &angles;
    Closures *horizon, *stations;

    void missed(size_t n) const { stations->missed = n; }
    Closures &of(const Loop &loop) const { return at_one_station(loop) ? *horizon : *stations; }
    void operator()(Loop loop, Closure *made) const;

private:
    bool at_one_station(const Loop &loop) const;
    using Line = std::pair<int, int>;
    const Line *line_of(int node) const
    {
        return node < angles.circles ? nullptr : &angles.lines[(size_t)(node - angles.circles)];
    }
    static int other(const Line &line, int end) { return line.first == end ? line.second : line.first; }
};

// Whether all that was read stands at one station; what is known is read at none.
bool OverLines::at_one_station(const Loop &loop) const
{
    const LegGraph &graph = angles.graph;
    int station = -1;
    for (const Step &step : loop) {
        const Link &link = graph.links[(size_t)step.link];
        if (link.a == graph.known || link.b == graph.known) return false;
        const int at = graph.legs[(size_t)step.link].station;
        if (station >= 0 && at >= 0 && at != station) return false;
        if (at >= 0) station = at;
    }
    return station >= 0;
}

void OverLines::operator()(Loop loop, Closure *made) const
{
    Closure &closure = *made;
    const LegGraph &graph = angles.graph;
    const bool one_station = at_one_station(loop);
    begin_at(graph.links, graph.known, &loop);
    const bool known = begin_of(graph.links, loop.front()) == graph.known;
    std::vector<int> at;
    std::vector<const Line *> lines;
    for (const Step &step : loop) {
        const int station = graph.legs[(size_t)step.link].station;
        if (station >= 0 && (at.empty() || at.back() != station)) at.push_back(station);
        if (const Line *line = line_of(begin_of(graph.links, step))) lines.push_back(line);
    }
    if (!known && at.size() > 1 && at.front() == at.back()) at.pop_back();
    closure.observations = graph.observations(loop);
    if (one_station) {
        closure.at = at[0];
        for (const Line *line : lines) closure.points.push_back(other(*line, at[0]));
        return;
    }
    closure.points = at;
    if (known && at.empty()) closure.points = {lines[0]->first, lines[0]->second};
    if (known && !at.empty()) {
        closure.points.insert(closure.points.begin(), other(*lines.front(), at.front()));
        closure.points.push_back(other(*lines.back(), at.back()));
    }
    if (!known) closure.points.push_back(at.front());
}

// No number where a height is not known.
std::vector<double> heights_of(const va::Model &model, bool placed)
{
    std::vector<double> heights;
    heights.reserve((size_t)model.n_points);
    for (int p = 0; p < model.n_points; p++) {
        const size_t z = 3 * (size_t)p + 2;
        const bool known = placed || !model.estimated((int)z);
        heights.push_back(known ? model.value[z] : std::numeric_limits<double>::quiet_NaN());
    }
    return heights;
}

Closures of(ClosureKind kind)
{
    Closures closures;
    closures.kind = kind;
    return closures;
}

} // namespace

double Closure::ratio() const { return std::fabs(misclosure) / limit; }

bool Closures::wants(double ratio) const { return worst.size() < most_listed || ratio > worst.back().ratio(); }

void Closures::count(double ratio)
{
    found++;
    beyond += ratio > 1.0;
}

void Closures::list(Closure closure)
{
    const auto better = [](const Closure &a, const Closure &b) { return a.ratio() > b.ratio(); };
    worst.insert(std::upper_bound(worst.begin(), worst.end(), closure, better), std::move(closure));
    if (worst.size() > most_listed) worst.pop_back();
}

std::vector<Closures> find_closures(const va::Model &model, bool placed)
{
    Closures levelling = of(ClosureKind::levelling), heights = of(ClosureKind::heights),
             again = of(ClosureKind::levelling), baselines = of(ClosureKind::baselines),
             horizon = of(ClosureKind::horizon), angles = of(ClosureKind::angles);
    const LegGraph levels = level_graph(model), vectors = baseline_graph(model), sights = height_graph(model, levels);
    close_loops(model, levels, OverPoints{levels, &levelling});
    close_loops(model, sights, OverSights{{sights, &heights}, &again});
    close_loops(model, vectors, OverPoints{vectors, &baselines});
    std::vector<Closures> all = {std::move(levelling), std::move(heights), std::move(baselines)};
    if (model.frame.space != va::Space::heights) {
        const std::vector<char> nothing(model.observations.size(), 0);
        const start::Sightings sightings = start::sightings_of(model, heights_of(model, placed), nothing);
        const AngleGraph graph = angle_graph(model, sightings);
        close_loops(model, graph.graph, OverLines{graph, &horizon, &angles});
        all.push_back(std::move(horizon));
        all.push_back(std::move(angles));
        const bool planar = model.frame.space == va::Space::plane || !model.frame.curved();
        if (planar) all.push_back(traverse_closures(model, sightings));
    }
    all.erase(std::remove_if(all.begin(), all.end(), [](const Closures &c) { return c.found + c.missed == 0; }),
              all.end());
    return all;
}

} // namespace vornhost::closures
