#include "host/preparation/closures/loops.h"

#include <algorithm>

namespace vornhost::closures {

namespace {

constexpr size_t work_per_item = 60;      // steps for each node and link
constexpr size_t work_per_search = 20000; // steps

class Search {
public:
    Search(int nodes, const std::vector<Link> &all);

    size_t run(int root, const std::function<void(const Loop &)> &take);

private:
    struct Arrival {
        int node = -1; // from which a node was reached
        Step step{-1, true};
    };

    void make_forest(int root);
    void grow_tree(int root);
    bool shortest(int from, int to, Loop *loop);
    bool over_tree(int from, int to, Loop *loop);
    bool spend(size_t steps);
    Step step_from(int node, int link) const { return {link, links[(size_t)link].a == node}; }
    int end_of(const Step &s) const { return s.forward ? links[(size_t)s.link].b : links[(size_t)s.link].a; }

    const std::vector<Link> &links;
    size_t budget;
    std::vector<int> first, at; // links of each node, one behind the other
    std::vector<char> joined;   // [links] may be walked
    std::vector<Arrival> tree;  // [nodes] from the parent
    std::vector<int> depth, order;
    std::vector<Arrival> way; // [nodes] of the last search
    std::vector<int> seen;    // [nodes] number of the search that reached it last
    int search = 0;
};

Search::Search(int nodes, const std::vector<Link> &all)
    : links(all), budget(work_per_item * ((size_t)nodes + all.size()) + work_per_search), first((size_t)nodes + 1, 0),
      at(2 * all.size()), joined(all.size(), 0), tree((size_t)nodes), depth((size_t)nodes, -1), way((size_t)nodes),
      seen((size_t)nodes, 0)
{
    for (const Link &l : links) {
        first[(size_t)l.a + 1]++;
        first[(size_t)l.b + 1]++;
    }
    for (size_t i = 1; i < first.size(); i++) first[i] += first[i - 1];
    std::vector<int> next(first.begin(), first.end() - 1);
    for (size_t i = 0; i < links.size(); i++) {
        at[(size_t)next[(size_t)links[i].a]++] = (int)i;
        at[(size_t)next[(size_t)links[i].b]++] = (int)i;
    }
    order.reserve((size_t)nodes);
}

void Search::grow_tree(int root)
{
    size_t next = order.size();
    depth[(size_t)root] = 0;
    order.push_back(root);
    for (; next < order.size(); next++) {
        const int node = order[next];
        for (int k = first[(size_t)node]; k < first[(size_t)node + 1]; k++) {
            const Step s = step_from(node, at[(size_t)k]);
            const int end = end_of(s);
            if (depth[(size_t)end] >= 0) continue;
            depth[(size_t)end] = depth[(size_t)node] + 1;
            tree[(size_t)end] = {node, s};
            joined[(size_t)s.link] = 1;
            order.push_back(end);
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
    std::vector<int> reached = {from};
    seen[(size_t)from] = ++search;
    size_t steps = 0;
    for (size_t next = 0; next < reached.size() && seen[(size_t)to] != search; next++) {
        const int node = reached[next];
        const size_t degree = (size_t)(first[(size_t)node + 1] - first[(size_t)node]);
        steps += degree;
        if (steps > work_per_search || !spend(degree)) return false;
        for (int k = first[(size_t)node]; k < first[(size_t)node + 1]; k++) {
            const Step s = step_from(node, at[(size_t)k]);
            const int end = end_of(s);
            if (!joined[(size_t)s.link] || seen[(size_t)end] == search) continue;
            seen[(size_t)end] = search;
            way[(size_t)end] = {node, s};
            reached.push_back(end);
        }
    }
    for (int node = to; node != from; node = way[(size_t)node].node) loop->push_back(way[(size_t)node].step);
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
    for (const int node : order)
        for (int k = first[(size_t)node]; k < first[(size_t)node + 1]; k++) {
            const int link = at[(size_t)k];
            const Link &l = links[(size_t)link];
            if (joined[(size_t)link] || l.a == l.b) continue;
            Loop loop;
            bool found = shortest(l.b, l.a, &loop);
            if (!found) {
                loop.clear();
                found = over_tree(l.b, l.a, &loop);
            }
            joined[(size_t)link] = 1;
            missed += !found;
            if (!found) continue;
            loop.push_back({link, true});
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
