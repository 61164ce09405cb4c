// Orders of elimination: groups of unknowns that are alike, dense ones last, the better of two orders
// for the rest.

#include "adjust/order.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

#include "adjust/degree.h"
#include "adjust/graph.h"
#include "adjust/tree.h"

namespace vornadjust {

// Nested dissection takes some 8 microseconds a vertex: it is tried where that is little beside what
// the factor costs, and where the better separators of large networks can show.
static const int LEAST_DISSECTED = 2000;        // vertices
static const double LEAST_OPERATIONS = 40000.0; // of the factor by minimum degree, a vertex

bool is_available(Ordering ordering)
{
    if (ordering == Ordering::minimum_degree) return has_library_degree();
    return ordering != Ordering::dissection || has_library_dissection();
}

bool is_permutation(int n, const std::vector<int> &order)
{
    if (order.size() != (std::size_t)n) return false;
    std::vector<char> met((std::size_t)n, 0);
    for (const int v : order) {
        if (v < 0 || v >= n || met[v]) return false;
        met[v] = 1;
    }
    return true;
}

namespace {

// The vertices that are not dense, as a graph of their own, and the dense ones.
struct Parted {
    Graph sparse;
    std::vector<int> vertex; // of the whole graph, for each of the sparse one
    std::vector<int> dense;  // of the whole graph, by ascending degree
};

} // namespace

// A vertex is dense when it has ten times the root of the number of vertices as neighbours.
static Parted part_dense(const Graph &graph)
{
    const double limit = std::max(16.0, 10.0 * std::sqrt((double)graph.n));
    Parted parted;
    std::vector<int> name((std::size_t)graph.n, -1);
    for (int v = 0; v < graph.n; v++) {
        if (graph.degree(v) > limit) {
            parted.dense.push_back(v);
        } else {
            name[v] = (int)parted.vertex.size();
            parted.vertex.push_back(v);
        }
    }
    std::stable_sort(parted.dense.begin(), parted.dense.end(),
                     [&](int u, int v) { return graph.degree(u) < graph.degree(v); });
    Graph &sparse = parted.sparse;
    sparse.n = (int)parted.vertex.size();
    for (const int v : parted.vertex) {
        for (std::int64_t p = graph.start[v]; p < graph.start[v + 1]; p++)
            if (name[graph.neighbour[p]] >= 0) sparse.neighbour.push_back(name[graph.neighbour[p]]);
        sparse.start.push_back((std::int64_t)sparse.neighbour.size());
        sparse.weight.push_back(graph.weight[v]);
    }
    return parted;
}

static std::vector<int> natural(int n)
{
    std::vector<int> order((std::size_t)n);
    std::iota(order.begin(), order.end(), 0);
    return order;
}

static std::vector<int> degree_order(const Graph &graph)
{
    std::vector<int> order = library_degree(graph);
    return is_permutation(graph.n, order) ? order : minimum_degree(graph);
}

static std::vector<int> dissection_order(const Graph &graph)
{
    std::vector<int> order = library_dissection(graph);
    return is_permutation(graph.n, order) ? order : degree_order(graph);
}

static std::vector<int> better_order(const Graph &graph, Ordering &by)
{
    std::vector<int> order = degree_order(graph);
    by = Ordering::minimum_degree;
    if (graph.n < LEAST_DISSECTED || !has_library_dissection()) return order;
    const FactorSize size = factor_size(graph, eliminate(graph, order));
    if (size.operations < LEAST_OPERATIONS * graph.n) return order;
    std::vector<int> other = dissection_order(graph);
    if (factor_size(graph, eliminate(graph, other)).elements >= size.elements) return order;
    by = Ordering::dissection;
    return other;
}

static std::vector<int> order_by(const Graph &graph, Ordering &by)
{
    switch (by) {
    case Ordering::natural: return natural(graph.n);
    case Ordering::minimum_degree: return degree_order(graph);
    case Ordering::own_degree: return minimum_degree(graph);
    case Ordering::dissection: return dissection_order(graph);
    case Ordering::best: break;
    }
    return better_order(graph, by);
}

// Order of the vertices, dense ones last.
static std::vector<int> order_vertices(const Graph &graph, Ordering &by)
{
    if (by == Ordering::natural) return natural(graph.n);
    const Parted parted = part_dense(graph);
    std::vector<int> order;
    for (const int v : order_by(parted.sparse, by)) order.push_back(parted.vertex[v]);
    order.insert(order.end(), parted.dense.begin(), parted.dense.end());
    return order;
}

Order fill_reducing_order(const SymmetricMatrix &a, Ordering ordering)
{
    const Graph unknowns = graph_of(a);
    const Groups groups = ordering == Ordering::natural ? find_groups(unknowns, natural(a.n)) : find_groups(unknowns);
    const Graph graph = join(unknowns, groups);
    Order result;
    result.by = ordering;
    const std::vector<int> order = order_vertices(graph, result.by);
    result.elements = factor_size(graph, eliminate(graph, order)).elements;
    for (const int v : order)
        result.unknown.insert(result.unknown.end(), groups.member.begin() + groups.start[v],
                              groups.member.begin() + groups.start[v + 1]);
    return result;
}

std::vector<int> order_inside(const SymmetricMatrix &a, const std::vector<char> &at_boundary)
{
    std::vector<int> inside, last, name((std::size_t)a.n, -1);
    for (int j = 0; j < a.n; j++) {
        if (at_boundary[j]) {
            last.push_back(j);
            continue;
        }
        name[j] = (int)inside.size();
        inside.push_back(j);
    }
    SymmetricMatrix own;
    own.n = (int)inside.size();
    for (const int j : inside) {
        for (std::int64_t p = a.start[j]; p < a.start[j + 1]; p++)
            if (name[a.row[p]] >= 0) own.row.push_back(name[a.row[p]]);
        own.start.push_back((std::int64_t)own.row.size());
    }
    std::vector<int> order = fill_reducing_order(own).unknown;
    for (int &k : order) k = inside[k];
    order.insert(order.end(), last.begin(), last.end());
    return order;
}

} // namespace vornadjust
