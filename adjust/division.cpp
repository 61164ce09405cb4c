// Points as a graph, cut into parts.

#include "adjust/division.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "adjust/degree.h"

namespace vornadjust {

namespace {

// Points that an observation sees, the first one first. Returns their number.
int points_of(const Model &model, const Observation &o, int points[3])
{
    if (o.kind == Kind::unknown) {
        points[0] = o.unknown / 3;
        return o.unknown < 3 * model.n_points ? 1 : 0;
    }
    int n = 0;
    for (const int p : {o.from, o.to, o.third})
        if (p >= 0) points[n++] = p;
    return n;
}

// Edges of all sights, both ways; members of a group are tied to its first point.
std::vector<std::pair<int, int>> edges_of(const Model &model)
{
    std::vector<std::pair<int, int>> edges;
    std::vector<int> first_of(model.groups.size(), -1);
    const auto join = [&](int p, int q) {
        if (p != q) edges.push_back({p, q}), edges.push_back({q, p});
    };
    for (const Observation &o : model.observations) {
        int points[3];
        const int n = o.use ? points_of(model, o, points) : 0;
        for (int k = 1; k < n; k++) join(points[0], points[k]);
        if (n == 0 || o.group < 0) continue;
        if (first_of[o.group] < 0) first_of[o.group] = points[0];
        for (int k = 0; k < n; k++) join(first_of[o.group], points[k]);
    }
    std::sort(edges.begin(), edges.end());
    edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
    return edges;
}

// A point weighs as much as it has neighbours.
Graph graph_of(const Model &model)
{
    Graph graph;
    graph.n = model.n_points;
    graph.start.assign((std::size_t)graph.n + 1, 0);
    graph.weight.assign((std::size_t)graph.n, 1);
    const std::vector<std::pair<int, int>> edges = edges_of(model);
    graph.neighbour.reserve(edges.size());
    for (const auto &[p, q] : edges) {
        graph.start[(std::size_t)p + 1]++;
        graph.weight[p]++;
        graph.neighbour.push_back(q);
    }
    for (int p = 0; p < graph.n; p++) graph.start[(std::size_t)p + 1] += graph.start[p];
    return graph;
}

std::vector<int> parts_of_points(const Model &model, int parts)
{
    std::vector<int> part = library_parts(graph_of(model), parts);
    if (!part.empty()) return part;
    // By order, with as many observations that begin at its points in each part.
    std::vector<std::int64_t> begin((std::size_t)model.n_points, 0);
    std::int64_t before = 0, all = 1;
    for (const Observation &o : model.observations) {
        int points[3];
        if (o.use && points_of(model, o, points) > 0) begin[(std::size_t)points[0]]++, all++;
    }
    for (const std::int64_t n : begin) {
        part.push_back((int)(before * parts / all));
        before += n;
    }
    return part;
}

} // namespace

std::vector<int> divide(const Model &model, int parts)
{
    const std::vector<int> of_point = parts_of_points(model, parts);
    std::vector<int> part, of_group(model.groups.size(), -1);
    part.reserve(model.observations.size());
    for (const Observation &o : model.observations) {
        int points[3];
        int own = points_of(model, o, points) > 0 ? of_point[points[0]] : 0;
        if (o.group >= 0 && o.use) {
            if (of_group[o.group] < 0) of_group[o.group] = own;
            own = of_group[o.group];
        }
        part.push_back(own);
    }
    return part;
}

} // namespace vornadjust
