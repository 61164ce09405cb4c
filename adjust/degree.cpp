// Approximate minimum degree.
//
// An eliminated vertex is an element: it stands for the clique of those that were its neighbours
// then. A live vertex i keeps a list of live neighbours and a list of elements whose cliques hold it.
// Eliminating p makes the element L_p = its neighbours and the members of its elements, which are
// absorbed. The degree of i in L_p is then bounded by
//   (neighbours outside L_p) + |L_p \ i| + sum of |L_e \ L_p| over its elements e.

#include "adjust/degree.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vornadjust {

namespace {

typedef std::vector<int> List;

class DegreeOrder {
public:
    explicit DegreeOrder(const Graph &graph);
    std::vector<int> run();

private:
    void enter(int v); // into the list of its degree
    void leave(int v);
    int least();
    void make_element(int p);
    void measure_elements(int p);
    void update(int i, int p);
    void join_alike(int p);
    bool same_lists(int i, int j);
    void finish_element(int p);
    void append(int v);

    const int n;
    int left;                   // weight of the vertices that are not eliminated
    int low = 0;                // no degree below it is in use
    int round = 0;              // marks of earlier rounds do not count
    std::vector<List> near;     // live neighbours of a live vertex; members of an element
    std::vector<List> elements; // elements of a live vertex
    List weight;                // of a live vertex with those joined to it; 0 when it is none
    List degree;                // weight of the neighbours; of the members of an element
    List head, next, before;    // vertices by degree
    List mark, outside, seen;   // round in which a vertex or element was met; |L_e \ L_p|
    std::vector<List> joined;   // vertices eliminated together with one
    std::vector<char> absorbed; // elements
    std::vector<std::uint64_t> hash;
    List order;
};

} // namespace

DegreeOrder::DegreeOrder(const Graph &graph)
    : n(graph.n), left(0), near((std::size_t)n), elements((std::size_t)n), weight(graph.weight),
      degree((std::size_t)n, 0), next((std::size_t)n, -1), before((std::size_t)n, -1), mark((std::size_t)n, 0),
      outside((std::size_t)n, 0), seen((std::size_t)n, 0), joined((std::size_t)n), absorbed((std::size_t)n, 0),
      hash((std::size_t)n, 0)
{
    for (const int w : weight) left += w;
    head.assign((std::size_t)left + 1, -1);
    for (int v = 0; v < n; v++) {
        near[v].assign(graph.neighbour.begin() + graph.start[v], graph.neighbour.begin() + graph.start[v + 1]);
        for (const int u : near[v]) degree[v] += weight[u];
    }
    for (int v = n - 1; v >= 0; v--) enter(v);
}

void DegreeOrder::enter(int v)
{
    int &first = head[degree[v]];
    next[v] = first;
    before[v] = -1;
    if (first != -1) before[first] = v;
    first = v;
    low = std::min(low, degree[v]);
}

void DegreeOrder::leave(int v)
{
    if (before[v] != -1)
        next[before[v]] = next[v];
    else
        head[degree[v]] = next[v];
    if (next[v] != -1) before[next[v]] = before[v];
}

int DegreeOrder::least()
{
    while (head[low] == -1) low++;
    return head[low];
}

// near[p] becomes L_p, all of it marked with this round and taken out of the lists of degrees.
void DegreeOrder::make_element(int p)
{
    List members;
    mark[p] = ++round;
    const auto take = [&](const List &from) {
        for (const int i : from)
            if (weight[i] > 0 && mark[i] != round) {
                mark[i] = round;
                members.push_back(i);
                leave(i);
            }
    };
    take(near[p]);
    for (const int e : elements[p]) {
        take(near[e]);
        absorbed[e] = 1;
        List().swap(near[e]);
    }
    List().swap(elements[p]);
    near[p].swap(members);
}

// outside[e] = |L_e \ L_p| for all elements of the members.
void DegreeOrder::measure_elements(int p)
{
    for (const int i : near[p])
        for (const int e : elements[i]) {
            if (absorbed[e]) continue;
            if (seen[e] != round) {
                seen[e] = round;
                outside[e] = degree[e]; // an element whose member is eliminated is absorbed: none is lost
            }
            outside[e] -= weight[i];
        }
}

// Lists, degree and hash of a member of L_p; elements that lie in L_p are absorbed by it.
void DegreeOrder::update(int i, int p)
{
    int sum = 0;
    std::uint64_t h = (std::uint64_t)p;
    const auto dead = [&](int e) {
        if (!absorbed[e] && outside[e] == 0) absorbed[e] = 1;
        if (absorbed[e]) return true;
        sum += outside[e];
        h += (std::uint64_t)e;
        return false;
    };
    elements[i].erase(std::remove_if(elements[i].begin(), elements[i].end(), dead), elements[i].end());
    const auto gone = [&](int v) {
        if (weight[v] == 0 || mark[v] == round) return true;
        sum += weight[v];
        h += (std::uint64_t)v;
        return false;
    };
    near[i].erase(std::remove_if(near[i].begin(), near[i].end(), gone), near[i].end());
    elements[i].push_back(p);
    degree[i] = sum; // without L_p
    hash[i] = h;
}

bool DegreeOrder::same_lists(int i, int j)
{
    if (elements[i].size() != elements[j].size() || near[i].size() != near[j].size()) return false;
    std::sort(elements[i].begin(), elements[i].end());
    std::sort(elements[j].begin(), elements[j].end());
    std::sort(near[i].begin(), near[i].end());
    std::sort(near[j].begin(), near[j].end());
    return elements[i] == elements[j] && near[i] == near[j];
}

// Members that cannot be told apart become one.
void DegreeOrder::join_alike(int p)
{
    List &members = near[p];
    std::sort(members.begin(), members.end(),
              [&](int i, int j) { return hash[i] != hash[j] ? hash[i] < hash[j] : i < j; });
    for (std::size_t a = 0; a < members.size(); a++) {
        const int i = members[a];
        if (weight[i] == 0) continue;
        for (std::size_t b = a + 1; b < members.size() && hash[members[b]] == hash[i]; b++) {
            const int j = members[b];
            if (weight[j] == 0 || !same_lists(i, j)) continue;
            weight[i] += weight[j];
            weight[j] = 0;
            joined[i].push_back(j);
        }
    }
    members.erase(std::remove_if(members.begin(), members.end(), [&](int i) { return weight[i] == 0; }), members.end());
}

void DegreeOrder::finish_element(int p)
{
    int size = 0;
    for (const int i : near[p]) size += weight[i];
    for (const int i : near[p]) {
        degree[i] = std::min(degree[i] + size - weight[i], left - weight[i]);
        enter(i);
    }
    degree[p] = size;
}

void DegreeOrder::append(int v)
{
    List stack(1, v);
    while (!stack.empty()) {
        const int u = stack.back();
        stack.pop_back();
        order.push_back(u);
        stack.insert(stack.end(), joined[u].rbegin(), joined[u].rend());
    }
}

std::vector<int> DegreeOrder::run()
{
    while (left > 0) {
        const int p = least();
        leave(p);
        left -= weight[p];
        make_element(p);
        weight[p] = 0;
        measure_elements(p);
        for (const int i : near[p]) update(i, p);
        join_alike(p);
        finish_element(p);
        append(p);
    }
    return std::move(order);
}

std::vector<int> minimum_degree(const Graph &graph) { return DegreeOrder(graph).run(); }

} // namespace vornadjust
