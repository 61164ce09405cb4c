// Graphs of symmetric matrices, and groups of unknowns that cannot be told apart in them.

#include "adjust/graph.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

namespace vornadjust {

static std::vector<std::int64_t> starts_of(const SymmetricMatrix &a)
{
    std::vector<std::int64_t> start((std::size_t)a.n + 1, 0);
    for (int j = 0; j < a.n; j++)
        for (std::int64_t p = a.start[j] + 1; p < a.start[j + 1]; p++) {
            start[j + 1]++;
            start[a.row[p] + 1]++;
        }
    std::partial_sum(start.begin(), start.end(), start.begin());
    return start;
}

// Columns are taken in ascending order: a vertex gets its smaller neighbours one by one and then, with
// its own column, the greater ones.
Graph graph_of(const SymmetricMatrix &a)
{
    Graph g;
    g.n = a.n;
    g.start = starts_of(a);
    g.neighbour.resize((std::size_t)g.start[a.n]);
    g.weight.assign((std::size_t)a.n, 1);
    std::vector<std::int64_t> next(g.start.begin(), g.start.end() - 1);
    for (int j = 0; j < a.n; j++)
        for (std::int64_t p = a.start[j] + 1; p < a.start[j + 1]; p++) {
            g.neighbour[next[j]++] = a.row[p];
            g.neighbour[next[a.row[p]]++] = j;
        }
    return g;
}

// Whether u and v are neighbours with the same neighbours beside.
static bool alike(const Graph &g, int u, int v)
{
    if (g.degree(u) != g.degree(v)) return false;
    const int *nu = g.neighbour.data() + g.start[u], *end = nu + g.degree(u), *nv = g.neighbour.data() + g.start[v];
    bool joined = false;
    for (int left = g.degree(v); nu < end || left > 0;) {
        if (nu < end && *nu == v) {
            joined = true;
            nu++;
        } else if (left > 0 && *nv == u) {
            nv++, left--;
        } else if (nu == end || left == 0 || *nu++ != *nv++) {
            return false;
        } else {
            left--;
        }
    }
    return joined;
}

// A number that is the same for unknowns that are alike, and hardly ever for others.
static std::vector<std::uint64_t> signatures(const Graph &g)
{
    const auto scattered = [](std::uint64_t v) {
        v = (v + 1) * 0x9e3779b97f4a7c15u;
        v = (v ^ (v >> 31)) * 0xbf58476d1ce4e5b9u;
        return v ^ (v >> 29);
    };
    std::vector<std::uint64_t> sum((std::size_t)g.n);
    for (int v = 0; v < g.n; v++) {
        sum[v] = scattered((std::uint64_t)v);
        for (std::int64_t p = g.start[v]; p < g.start[v + 1]; p++) sum[v] += scattered((std::uint64_t)g.neighbour[p]);
    }
    return sum;
}

// Groups from the first member that every unknown has chosen, itself when it is one.
static Groups groups_by_first(const std::vector<int> &order, const std::vector<int> &first)
{
    Groups groups;
    const std::size_t n = order.size();
    groups.of.assign(n, -1);
    groups.start = {0};
    std::vector<int> size;
    for (const int v : order) {
        if (first[v] == v) {
            groups.of[v] = (int)size.size();
            size.push_back(0);
        }
        groups.of[v] = groups.of[first[v]];
        size[groups.of[v]]++;
    }
    for (const int s : size) groups.start.push_back(groups.start.back() + s);
    groups.member.resize(n);
    std::vector<int> next(groups.start.begin(), groups.start.end() - 1);
    for (const int v : order) groups.member[next[groups.of[v]]++] = v;
    return groups;
}

Groups find_groups(const Graph &graph)
{
    const std::vector<std::uint64_t> sum = signatures(graph);
    std::vector<int> order((std::size_t)graph.n), first, sorted;
    std::iota(order.begin(), order.end(), 0);
    first = sorted = order;
    std::sort(sorted.begin(), sorted.end(),
              [&](int u, int v) { return std::make_pair(sum[u], u) < std::make_pair(sum[v], v); });
    for (int k = 1; k < graph.n; k++) {
        const int before = first[sorted[k - 1]], v = sorted[k];
        if (sum[before] == sum[v] && alike(graph, before, v)) first[v] = before;
    }
    return groups_by_first(order, first);
}

Groups find_groups(const Graph &graph, const std::vector<int> &order, int boundary)
{
    std::vector<int> first((std::size_t)graph.n);
    const int inside = graph.n - boundary;
    for (int k = 0; k < inside; k++) {
        const int v = order[k];
        first[v] = k > 0 && alike(graph, first[order[k - 1]], v) ? first[order[k - 1]] : v;
    }
    for (int k = inside; k < graph.n; k++) first[order[k]] = order[inside];
    return groups_by_first(order, first);
}

Graph join(const Graph &graph, const Groups &groups, bool boundary)
{
    Graph joined;
    joined.n = (int)groups.start.size() - 1;
    std::vector<int> seen((std::size_t)joined.n, -1);
    for (int v = 0; v < joined.n; v++) {
        const int members = boundary && v == joined.n - 1 ? groups.start[v + 1] - groups.start[v] : 1;
        seen[v] = v;
        for (int m = 0; m < members; m++) {
            const int u = groups.member[groups.start[v] + m];
            for (std::int64_t p = graph.start[u]; p < graph.start[u + 1]; p++) {
                const int w = groups.of[graph.neighbour[p]];
                if (seen[w] == v) continue;
                seen[w] = v;
                joined.neighbour.push_back(w);
            }
        }
        joined.start.push_back((std::int64_t)joined.neighbour.size());
        joined.weight.push_back(groups.start[v + 1] - groups.start[v]);
    }
    return joined;
}

} // namespace vornadjust
