// Independent loops of a graph, by short ways: a spanning forest, and for every other link the shortest way back
// between its ends over the links before it. Together they are a basis: links - nodes + parts loops, each with a link
// that no earlier one has. The work is limited to a multiple of the size of the graph.

#ifndef VORNHOST_CLOSURES_LOOPS_H
#define VORNHOST_CLOSURES_LOOPS_H

#include <cstddef>
#include <functional>
#include <vector>

namespace vornhost::closures {

struct Link {
    int a, b; // nodes
};

struct Step {
    int link;
    bool forward; // from a to b
};

using Loop = std::vector<Step>; // each step begins where the one before it ends

// Hands each loop to `take`. The forest begins at `root` (-1: anywhere). Links from a node to itself count as none.
// Returns how many loops were not looked for, because they are too long for the work that is allowed.
size_t find_loops(int nodes, const std::vector<Link> &links, int root, const std::function<void(const Loop &)> &take);

// Node at which a step begins.
inline int begin_of(const std::vector<Link> &links, const Step &s)
{
    const Link &l = links[(size_t)s.link];
    return s.forward ? l.a : l.b;
}

// The loop with the step that begins at `node` in front; as it is where none does.
void begin_at(const std::vector<Link> &links, int node, Loop *loop);

} // namespace vornhost::closures

#endif
