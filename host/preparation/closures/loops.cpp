#include "host/preparation/closures/loops.h"

#include <algorithm>

namespace vornhost::closures {

namespace {

constexpr size_t work_per_item = 60;      // steps for each node and link
constexpr size_t work_per_search = 20000; // steps

// A link as it is seen from one of its ends.
struct Half {
    int end; // node at the other one
    int link;
    bool forward; // leaves from a
    bool joined;  // may be walked
};

class Search {
public:
    Search(int nodes, const std::vector<Link> &all);

    size_t run(int root, const std::function<void(const Loop &)> &take);

private:
    struct Arrival {
        int node = -1; // from which a node was reached
        Step step{-1, true};
    };
    struct Visit {
        int search = 0; // number of the search that reached the node last
        Arrival by;
    };

    void make_forest(int root);
    void grow_tree(int root);
    bool shortest(int from, int to, Loop *loop);
    bool over_tree(int from, int to, Loop *loop);
    bool spend(size_t steps);
    void join(const Half &half);
    const Half *begin(int node) const { return halves.data() + first[(size_t)node]; }

    const std::vector<Link> &links;
    size_t budget;
    std::vector<int> first;                // [nodes + 1] where the halves of a node begin
    std::vector<Half> halves;              // those of each node behind one another
    std::vector<std::pair<int, int>> both; // [links] the two halves
    std::vector<Arrival> tree;             // [nodes] from the parent
    std::vector<int> depth, order;
    std::vector<Visit> visits; // [nodes]
    std::vector<int> reached;  // by the present search, in order
    int search = 0;
};

Search::Search(int nodes, const std::vector<Link> &all)
    : links(all), budget(work_per_item * ((size_t)nodes + all.size()) + work_per_search), first((size_t)nodes + 1, 0),
      halves(2 * all.size()), both(all.size()), tree((size_t)nodes), depth((size_t)nodes, -1), visits((size_t)nodes)
{
    for (const Link &l : links) {
        first[(size_t)l.a + 1]++;
        first[(size_t)l.b + 1]++;
    }
    for (size_t i = 1; i < first.size(); i++) first[i] += first[i - 1];
    std::vector<int> next(first.begin(), first.end() - 1);
    for (size_t i = 0; i < links.size(); i++) {
        const Link &l = links[i];
        both[i].first = next[(size_t)l.a]++;
        both[i].second = next[(size_t)l.b]++;
        halves[(size_t)both[i].first] = {l.b, (int)i, true, false};
        halves[(size_t)both[i].second] = {l.a, (int)i, l.a == l.b, false};
    }
    order.reserve((size_t)nodes);
}

void Search::join(const Half &half)
{
    const auto [one, other] = both[(size_t)half.link];
    halves[(size_t)one].joined = halves[(size_t)other].joined = true;
}

void Search::grow_tree(int root)
{
    size_t next = order.size();
    depth[(size_t)root] = 0;
    order.push_back(root);
    for (; next < order.size(); next++) {
        const int node = order[next];
        for (const Half *h = begin(node), *end = begin(node + 1); h != end; h++) {
            if (depth[(size_t)h->end] >= 0) continue;
            depth[(size_t)h->end] = depth[(size_t)node] + 1;
            tree[(size_t)h->end] = {node, {h->link, h->forward}};
            order.push_back(h->end);
            join(*h);
        }
    }
}

void Search::make_forest(int root)
{
    if (root >= 0) grow_tree(root);
    for (int node = 0; node < (int)depth.size(); node++)
        if (depth[(size_t)node] < 0) grow_tree(node);
}

bool Search::spend(size_t steps)
{
    if (budget < steps) return false;
    budget -= steps;
    return true;
}

// Breadth first over the joined links; false where it takes too long.
bool Search::shortest(int from, int to, Loop *loop)
{
    reached.assign(1, from);
    visits[(size_t)from].search = ++search;
    size_t steps = 0;
    for (size_t next = 0; next < reached.size() && visits[(size_t)to].search != search; next++) {
        const int node = reached[next];
        const Half *h = begin(node), *const end = begin(node + 1);
        const size_t degree = (size_t)(end - h);
        steps += degree;
        if (steps > work_per_search || !spend(degree)) return false;
        for (; h != end; h++) {
            Visit &visit = visits[(size_t)h->end];
            if (!h->joined || visit.search == search) continue;
            visit = {search, {node, {h->link, h->forward}}};
            if (h->end == to) break;
            reached.push_back(h->end);
        }
    }
    for (int node = to; node != from; node = visits[(size_t)node].by.node)
        loop->push_back(visits[(size_t)node].by.step);
    std::reverse(loop->begin(), loop->end());
    return true;
}

// Up to where the branches of both ends meet; false where it takes too long.
bool Search::over_tree(int from, int to, Loop *loop)
{
    Loop down;
    while (from != to) {
        if (!spend(1)) return false;
        const bool up = depth[(size_t)from] >= depth[(size_t)to];
        int &node = up ? from : to;
        const Arrival &a = tree[(size_t)node];
        if (up)
            loop->push_back({a.step.link, !a.step.forward});
        else
            down.push_back(a.step);
        node = a.node;
    }
    loop->insert(loop->end(), down.rbegin(), down.rend());
    return true;
}

size_t Search::run(int root, const std::function<void(const Loop &)> &take)
{
    make_forest(root);
    size_t missed = 0;
    Loop loop;
    for (const int node : order)
        for (const Half *h = begin(node), *end = begin(node + 1); h != end; h++) {
            const Link &l = links[(size_t)h->link];
            if (h->joined || l.a == l.b) continue;
            loop.clear();
            bool found = shortest(l.b, l.a, &loop);
            if (!found) {
                loop.clear();
                found = over_tree(l.b, l.a, &loop);
            }
            join(*h);
            missed += !found;
            if (!found) continue;
            loop.push_back({h->link, true});
            take(loop);
        }
    return missed;
}

} // namespace

size_t find_loops(int nodes, const std::vector<Link> &links, int root, const std::function<void(const Loop &)> &take)
{
    return Search(nodes, links).run(root, take);
}

void begin_at(const std::vector<Link> &links, int node, Loop *loop)
{
    const auto begins = [&](const Step &s) { return begin_of(links, s) == node; };
    const auto step = std::find_if(loop->begin(), loop->end(), begins);
    if (step != loop->end()) std::rotate(loop->begin(), step, loop->end());
}

} // namespace vornhost::closures
