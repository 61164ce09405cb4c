// Elimination trees, postorders and the lengths of the columns of the factor.

#include "adjust/tree.h"

#include <cstddef>

namespace vornadjust {

std::vector<int> inverse_permutation(const std::vector<int> &order)
{
    std::vector<int> place(order.size());
    for (std::size_t k = 0; k < order.size(); k++) place[order[k]] = (int)k;
    return place;
}

std::vector<int> elimination_tree(const Graph &graph, const std::vector<int> &order, const std::vector<int> &place)
{
    std::vector<int> parent((std::size_t)graph.n, -1), ancestor((std::size_t)graph.n, -1);
    for (int k = 0; k < graph.n; k++)
        for (std::int64_t p = graph.start[order[k]]; p < graph.start[order[k] + 1]; p++)
            for (int i = place[graph.neighbour[p]]; i != -1 && i < k;) {
                const int next = ancestor[i]; // paths are shortened as they are walked
                ancestor[i] = k;
                if (next == -1) parent[i] = k;
                i = next;
            }
    return parent;
}

std::vector<int> postorder(const std::vector<int> &parent)
{
    const int n = (int)parent.size();
    std::vector<int> head((std::size_t)n + 1, -1), next((std::size_t)n), stack, post; // roots under n
    for (int v = n - 1; v >= 0; v--) {
        int &first = head[parent[v] < 0 ? n : parent[v]];
        next[v] = first;
        first = v;
    }
    for (int root = head[n]; root != -1; root = next[root]) {
        stack.push_back(root);
        while (!stack.empty()) {
            const int v = stack.back(), child = head[v];
            if (child == -1) {
                post.push_back(v);
                stack.pop_back();
            } else {
                head[v] = next[child];
                stack.push_back(child);
            }
        }
    }
    return post;
}

namespace {

// Leaves of the row subtrees, found while columns are taken in postorder.
struct Leaves {
    explicit Leaves(int n) : greatest((std::size_t)n, -1), last((std::size_t)n, -1), ancestor((std::size_t)n)
    {
        for (int i = 0; i < n; i++) ancestor[i] = i;
    }

    int root(int j)
    {
        int r = j;
        while (r != ancestor[r]) r = ancestor[r];
        while (j != r) {
            const int next = ancestor[j];
            ancestor[j] = r;
            j = next;
        }
        return r;
    }

    std::vector<int> greatest; // [n] first descendant of the last leaf of a row
    std::vector<int> last;     // [n] last leaf of a row
    std::vector<int> ancestor;
};

} // namespace

static std::vector<int> first_descendants(const std::vector<int> &parent)
{
    std::vector<int> first(parent.size());
    for (std::size_t j = 0; j < parent.size(); j++) first[j] = (int)j;
    for (std::size_t j = 0; j < parent.size(); j++)
        if (parent[j] != -1 && first[j] < first[parent[j]]) first[parent[j]] = first[j];
    return first;
}

std::vector<int> column_counts(const Graph &graph, const std::vector<int> &order, const std::vector<int> &place,
                               const std::vector<int> &parent)
{
    const std::vector<int> first = first_descendants(parent);
    std::vector<int> count((std::size_t)graph.n, 0);
    Leaves leaves(graph.n);
    for (int j = 0; j < graph.n; j++) {
        const int own = graph.weight[order[j]];
        if (first[j] == j) count[j] += own;
        if (parent[j] != -1) count[parent[j]] -= own;
        for (std::int64_t p = graph.start[order[j]]; p < graph.start[order[j] + 1]; p++) {
            const int u = graph.neighbour[p], i = place[u];
            if (i <= j || first[j] <= leaves.greatest[i]) continue;
            count[j] += graph.weight[u];
            if (leaves.last[i] != -1) count[leaves.root(leaves.last[i])] -= graph.weight[u];
            leaves.greatest[i] = first[j];
            leaves.last[i] = j;
        }
        if (parent[j] != -1) leaves.ancestor[j] = parent[j];
    }
    for (int j = 0; j < graph.n; j++)
        if (parent[j] != -1) count[parent[j]] += count[j];
    return count;
}

Elimination eliminate(const Graph &graph, const std::vector<int> &order)
{
    const std::vector<int> parent = elimination_tree(graph, order, inverse_permutation(order));
    const std::vector<int> post = postorder(parent), moved = inverse_permutation(post);
    Elimination e;
    for (const int k : post) {
        e.order.push_back(order[k]);
        e.parent.push_back(parent[k] < 0 ? -1 : moved[parent[k]]);
    }
    e.place = inverse_permutation(e.order);
    e.count = column_counts(graph, e.order, e.place, e.parent);
    return e;
}

FactorSize factor_size(const Graph &graph, const Elimination &elimination)
{
    FactorSize size;
    for (int j = 0; j < graph.n; j++)
        for (int k = 0; k < graph.weight[elimination.order[j]]; k++) {
            const std::int64_t length = elimination.count[j] - k;
            size.elements += length;
            size.operations += (double)length * (double)length;
        }
    return size;
}

} // namespace vornadjust
