// Supernodes of an elimination tree, merged where that costs little.

#include "adjust/supernodes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vornadjust {

namespace {

// A supernode while they are merged. Elements are those of its columns, zeros are filled in.
struct Candidate {
    int columns = 0; // unknowns
    int below = 0;
    double zeros = 0.0;
    int parent = -1;

    double elements() const { return columns * (0.5 * (columns + 1) + below); }
};

struct Limit {
    int columns;  // of the merged supernode
    double share; // of zeros among its elements
};

} // namespace

static const Limit LIMITS[] = {{8, 0.7}, {24, 0.4}, {48, 0.15}, {1 << 30, 0.05}};

// Supernode of each place: a run of places of which each is the parent of the one before, without new
// rows.
static std::vector<int> runs(const Graph &graph, const Elimination &e, bool boundary)
{
    std::vector<int> of((std::size_t)graph.n);
    for (int k = 0; k < graph.n; k++) {
        const bool goes_on = k > 0 && !(boundary && k == graph.n - 1) && e.parent[k - 1] == k &&
                             e.count[k] == e.count[k - 1] - graph.weight[e.order[k - 1]];
        of[k] = k == 0 ? 0 : of[k - 1] + (goes_on ? 0 : 1);
    }
    return of;
}

static std::vector<Candidate> candidates(const Graph &graph, const Elimination &e, const std::vector<int> &of)
{
    std::vector<Candidate> all(graph.n > 0 ? (std::size_t)of.back() + 1 : 0);
    for (int k = 0; k < graph.n; k++) {
        Candidate &c = all[of[k]];
        c.columns += graph.weight[e.order[k]];
        c.below = e.count[k] - graph.weight[e.order[k]]; // that of the last one stands
        c.parent = e.parent[k] < 0 ? -1 : of[e.parent[k]];
    }
    return all;
}

static bool worth_merging(const Candidate &merged)
{
    for (const Limit &limit : LIMITS)
        if (merged.columns <= limit.columns && merged.zeros <= limit.share * merged.elements()) return true;
    return false;
}

static Candidate merge(const Candidate &child, const Candidate &parent)
{
    Candidate merged = parent;
    merged.columns += child.columns;
    merged.zeros = merged.elements() - (child.elements() - child.zeros) - (parent.elements() - parent.zeros);
    return merged;
}

// Children of each supernode, as lists: first[v], then next[].
struct Children {
    std::vector<int> first, next;
};

static Children children_of(const std::vector<int> &parent)
{
    Children c;
    c.first.assign(parent.size(), -1);
    c.next.assign(parent.size(), -1);
    for (int v = (int)parent.size() - 1; v >= 0; v--)
        if (parent[v] >= 0) {
            c.next[v] = c.first[parent[v]];
            c.first[parent[v]] = v;
        }
    return c;
}

static std::vector<int> parents_of(const std::vector<Candidate> &all)
{
    std::vector<int> parent;
    parent.reserve(all.size());
    for (const Candidate &c : all) parent.push_back(c.parent);
    return parent;
}

// The supernode that each one is merged into, itself for those that stay.
// The last one takes none where it is a boundary.
static std::vector<int> merge_all(std::vector<Candidate> &all, bool boundary)
{
    const std::size_t closed = boundary ? all.size() - 1 : all.size();
    const Children children = children_of(parents_of(all));
    std::vector<int> into(all.size());
    for (std::size_t s = 0; s < all.size(); s++) {
        into[s] = (int)s;
        for (int c = children.first[s]; c != -1 && s != closed; c = children.next[c]) {
            const Candidate merged = merge(all[c], all[s]);
            if (!worth_merging(merged)) continue;
            all[s] = merged;
            into[c] = (int)s;
        }
    }
    for (std::size_t s = all.size(); s-- > 0;)
        if (into[s] != (int)s) into[s] = into[into[s]];
    return into;
}

// Numbers of the dense updates that are kept at the same time while a subtree is worked off.
struct Stack {
    double own;  // the update of the root
    double peak; // the most at any time
};

// Order of children by which the stack of updates stays small (Liu, ACM Trans. Math. Softw. 12, 1986,
// 249-264), and the parents in that order.
static std::vector<int> stack_postorder(const std::vector<Candidate> &all, const std::vector<int> &parent)
{
    const std::size_t n = all.size();
    std::vector<Stack> stack(n);
    std::vector<std::vector<int>> children(n + 1);
    for (std::size_t s = 0; s < n; s++) {
        std::vector<int> &own = children[s];
        std::sort(own.begin(), own.end(), [&](int a, int b) {
            const double da = stack[a].peak - stack[a].own, db = stack[b].peak - stack[b].own;
            return da != db ? da > db : a < b;
        });
        double held = 0.0, peak = 0.0;
        for (const int c : own) {
            peak = std::max(peak, held + stack[c].peak);
            held += stack[c].own;
        }
        stack[s].own = 0.5 * all[s].below * (all[s].below + 1.0);
        stack[s].peak = std::max(peak, held + stack[s].own);
        if (parent[s] != (int)s) children[parent[s] < 0 ? n : (std::size_t)parent[s]].push_back((int)s);
    }
    std::vector<int> order, walk(children[n].rbegin(), children[n].rend());
    while (!walk.empty()) { // parents before children and all reversed: a postorder
        const int s = walk.back();
        walk.pop_back();
        order.push_back(s);
        walk.insert(walk.end(), children[s].begin(), children[s].end());
    }
    std::reverse(order.begin(), order.end());
    return order;
}

Supernodes find_supernodes(const Graph &graph, const Elimination &elimination, bool boundary)
{
    const std::vector<int> of = runs(graph, elimination, boundary);
    std::vector<Candidate> all = candidates(graph, elimination, of);
    const std::vector<int> into = merge_all(all, boundary);
    std::vector<int> parent(all.size());
    for (std::size_t s = 0; s < all.size(); s++)
        parent[s] = into[s] != (int)s ? (int)s : all[s].parent < 0 ? -1 : into[all[s].parent];

    std::vector<std::vector<int>> places(all.size());
    for (int k = 0; k < graph.n; k++) places[into[of[k]]].push_back(k);
    Supernodes result;
    result.start = {0};
    std::vector<int> number(all.size(), -1);
    for (const int s : stack_postorder(all, parent)) {
        number[s] = (int)result.below.size();
        for (const int k : places[s]) result.vertex.push_back(elimination.order[k]);
        result.start.push_back((int)result.vertex.size());
        result.below.push_back(all[s].below);
        result.parent.push_back(parent[s]);
    }
    for (int &p : result.parent) p = p < 0 ? -1 : number[p];
    return result;
}

} // namespace vornadjust
