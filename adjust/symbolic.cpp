// The pattern of the factor: supernodes, their rows, and where the elements of the matrix go.

#include "adjust/symbolic.h"

#include <algorithm>
#include <cstddef>

#include "adjust/graph.h"
#include "adjust/supernodes.h"
#include "adjust/tree.h"

namespace vornadjust {

// Columns of the supernodes: unknowns by places.
static void number_columns(const Supernodes &nodes, const Groups &groups, Symbolic &s)
{
    s.nsuper = (int)nodes.below.size();
    for (int i = 0; i < s.nsuper; i++) {
        for (int k = nodes.start[i]; k < nodes.start[i + 1]; k++) {
            const int v = nodes.vertex[k];
            s.unknown.insert(s.unknown.end(), groups.member.begin() + groups.start[v],
                             groups.member.begin() + groups.start[v + 1]);
        }
        s.first.push_back((int)s.unknown.size());
        s.super.insert(s.super.end(), (std::size_t)s.width(i), i);
    }
    s.place = inverse_permutation(s.unknown);
    s.parent = nodes.parent;
}

static int members_of(const Groups &groups, int v) { return groups.start[v + 1] - groups.start[v]; }

// Places that s.row gets for supernodes, while they are found.
struct RowSearch {
    std::vector<int> met;                   // [n] supernode by which a place was met last
    std::vector<std::vector<int>> children; // [nsuper]
    std::vector<int> at;                    // [vertices] first place
};

// What the rows are found in. A vertex inside meets those unknowns of the boundary that are its neighbours, and not
// all.
struct Pattern {
    const Graph &unknowns, &graph;
    const Groups &groups;
    int boundary; // vertex, or -1
};

// Rows below the columns of supernode i: those of the matrix and those of its children.
static void find_rows(const Pattern &pattern, const Supernodes &nodes, RowSearch &search, int i, Symbolic &s)
{
    const Graph &graph = pattern.graph, &unknowns = pattern.unknowns;
    const Groups &groups = pattern.groups;
    const int end = s.first[i + 1];
    const std::size_t begin = s.row.size();
    const auto meet = [&](int place) {
        if (place < end || search.met[place] == i) return;
        search.met[place] = i;
        s.row.push_back(place);
    };
    for (int k = nodes.start[i]; k < nodes.start[i + 1]; k++) {
        const int v = nodes.vertex[k];
        bool at_boundary = false;
        for (std::int64_t p = graph.start[v]; p < graph.start[v + 1]; p++) {
            const int w = graph.neighbour[p];
            at_boundary |= w == pattern.boundary;
            for (int m = 0; m < members_of(groups, w) && w != pattern.boundary; m++) meet(search.at[w] + m);
        }
        const int u = groups.member[groups.start[v]]; // all members have the same neighbours
        for (std::int64_t p = unknowns.start[u]; p < unknowns.start[u + 1] && at_boundary; p++)
            if (groups.of[unknowns.neighbour[p]] == pattern.boundary) meet(s.place[unknowns.neighbour[p]]);
    }
    for (const int c : search.children[i])
        for (std::int64_t p = s.rowstart[c]; p < s.rowstart[c + 1]; p++) meet(s.row[p]);
    std::sort(s.row.begin() + (std::ptrdiff_t)begin, s.row.end());
}

static void find_all_rows(const Pattern &pattern, const Supernodes &nodes, Symbolic &s)
{
    RowSearch search;
    search.at.resize((std::size_t)pattern.graph.n);
    int next = 0;
    for (const int v : nodes.vertex) {
        search.at[v] = next;
        next += members_of(pattern.groups, v);
    }
    search.met.assign((std::size_t)s.n, -1);
    search.children.resize((std::size_t)s.nsuper);
    s.rowstart = {0};
    s.valuestart = {0};
    for (int i = 0; i < s.nsuper; i++) {
        find_rows(pattern, nodes, search, i, s);
        s.rowstart.push_back((std::int64_t)s.row.size());
        s.valuestart.push_back(s.valuestart.back() + (std::int64_t)s.height(i) * s.width(i));
        if (s.parent[i] >= 0) search.children[s.parent[i]].push_back(i);
    }
}

// Elements of the matrix by columns of the factor: sources[start[q]] ... go into column q.
struct Sources {
    std::vector<std::int64_t> start;
    std::vector<std::int64_t> element; // place in the matrix
    std::vector<int> row;              // place of the row
};

static Sources sort_elements(const SymmetricMatrix &a, const Symbolic &s)
{
    Sources sources;
    sources.start.assign((std::size_t)a.n + 1, 0);
    for (int j = 0; j < a.n; j++)
        for (std::int64_t p = a.start[j]; p < a.start[j + 1]; p++)
            sources.start[std::min(s.place[j], s.place[a.row[p]]) + 1]++;
    for (int q = 0; q < a.n; q++) sources.start[q + 1] += sources.start[q];
    sources.element.resize(a.row.size());
    sources.row.resize(a.row.size());
    std::vector<std::int64_t> next(sources.start.begin(), sources.start.end() - 1);
    for (int j = 0; j < a.n; j++)
        for (std::int64_t p = a.start[j]; p < a.start[j + 1]; p++) {
            const int i = s.place[a.row[p]], q = std::min(s.place[j], i);
            sources.element[next[q]] = p;
            sources.row[next[q]++] = std::max(s.place[j], i);
        }
    return sources;
}

static void find_targets(const SymmetricMatrix &a, Symbolic &s)
{
    const Sources sources = sort_elements(a, s);
    s.target.resize(a.row.size());
    std::vector<int> local((std::size_t)s.n);
    for (int i = 0; i < s.nsuper; i++) {
        const int *row = s.row.data() + s.rowstart[i];
        for (int k = 0; k < s.width(i); k++) local[s.first[i] + k] = k;
        for (int k = 0; k < s.below(i); k++) local[row[k]] = s.width(i) + k;
        for (int q = s.first[i]; q < s.first[i + 1]; q++) {
            const std::int64_t column = s.valuestart[i] + (std::int64_t)(q - s.first[i]) * s.height(i);
            for (std::int64_t p = sources.start[q]; p < sources.start[q + 1]; p++)
                s.target[sources.element[p]] = column + local[sources.row[p]];
        }
    }
}

Symbolic analyse(const SymmetricMatrix &a, const std::vector<int> &order, int boundary)
{
    const Graph unknowns = graph_of(a);
    const Groups groups = find_groups(unknowns, order, boundary);
    Graph graph = join(unknowns, groups, boundary > 0);
    if (boundary > 0) graph.weight.back() = 1; // supernodes are chosen by what is eliminated
    std::vector<int> vertices((std::size_t)graph.n);
    for (int v = 0; v < graph.n; v++) vertices[v] = v; // groups keep the order
    const Elimination elimination = eliminate(graph, vertices);
    const FactorSize size = factor_size(graph, elimination);
    Symbolic s;
    s.n = a.n;
    s.elements = size.elements;
    s.operations = size.operations;
    const Supernodes nodes = find_supernodes(graph, elimination, boundary > 0);
    number_columns(nodes, groups, s);
    if (boundary > 0) s.boundary = s.super[s.place[order.back()]];
    find_all_rows({unknowns, graph, groups, boundary > 0 ? graph.n - 1 : -1}, nodes, s);
    find_targets(a, s);
    return s;
}

std::int64_t count_elements(const SymmetricMatrix &a, const std::vector<int> &order)
{
    const Graph unknowns = graph_of(a);
    return factor_size(unknowns, eliminate(unknowns, order)).elements;
}

} // namespace vornadjust
