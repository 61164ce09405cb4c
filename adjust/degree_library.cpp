// Minimum degree by AMD and nested dissection by METIS, where the build found them.

#include "adjust/degree.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <mutex>

#ifdef VORN_AMD
#include <amd.h>
#endif
#ifdef VORN_METIS
#include <metis.h>
#endif

namespace vornadjust {

#ifdef VORN_AMD

bool has_library_degree() { return true; }

// AMD in work space of ours, so that it allocates nothing itself.
std::vector<int> library_degree(const Graph &graph)
{
    typedef SuiteSparse_long Long;
    const std::size_t n = (std::size_t)graph.n;
    if (n == 0) return std::vector<int>();
    const Long edges = (Long)graph.start[n], space = edges + edges / 5 + (Long)n + 1;
    std::vector<Long> start(graph.start.begin(), graph.start.end() - 1), length(n), lists((std::size_t)space);
    for (int v = 0; v < graph.n; v++) length[v] = graph.degree(v);
    std::copy(graph.neighbour.begin(), graph.neighbour.end(), lists.begin());
    std::vector<Long> nv(n), next(n), last(n), head(n), elements(n), degree(n), w(n);
    double control[AMD_CONTROL], info[AMD_INFO];
    amd_l_defaults(control);
    amd_l2((Long)n, start.data(), lists.data(), length.data(), space, edges, nv.data(), next.data(), last.data(),
           head.data(), elements.data(), degree.data(), w.data(), control, info);
    return std::vector<int>(last.begin(), last.end());
}

#else

bool has_library_degree() { return false; }
std::vector<int> library_degree(const Graph &) { return std::vector<int>(); }

#endif

#ifdef VORN_METIS

bool has_library_dissection() { return true; }

// METIS keeps the state of its random numbers for the whole program: one call at a time.
static std::mutex one_at_a_time;

static bool dissect(idx_t n, idx_t *start, idx_t *neighbour, idx_t *weight, idx_t *order, idx_t *place)
{
    const std::lock_guard<std::mutex> lock(one_at_a_time);
    idx_t options[METIS_NOPTIONS];
    METIS_SetDefaultOptions(options);
    options[METIS_OPTION_NUMBERING] = 0;
    options[METIS_OPTION_SEED] = 1;
    options[METIS_OPTION_COMPRESS] = 0; // that is done
    return METIS_NodeND(&n, start, neighbour, weight, options, order, place) == METIS_OK;
}

std::vector<int> library_dissection(const Graph &graph)
{
    const std::size_t n = (std::size_t)graph.n;
    if (graph.start[n] == 0 || graph.start[n] > std::numeric_limits<idx_t>::max()) return std::vector<int>();
    std::vector<idx_t> start(graph.start.begin(), graph.start.end());
    std::vector<idx_t> neighbour(graph.neighbour.begin(), graph.neighbour.end());
    std::vector<idx_t> weight(graph.weight.begin(), graph.weight.end()), order(n), place(n);
    if (!dissect((idx_t)n, start.data(), neighbour.data(), weight.data(), order.data(), place.data()))
        return std::vector<int>();
    return std::vector<int>(order.begin(), order.end());
}

static bool part(idx_t n, idx_t *start, idx_t *neighbour, idx_t *weight, idx_t parts, idx_t *part_of)
{
    const std::lock_guard<std::mutex> lock(one_at_a_time);
    idx_t options[METIS_NOPTIONS], constraints = 1, cut = 0;
    METIS_SetDefaultOptions(options);
    options[METIS_OPTION_NUMBERING] = 0;
    options[METIS_OPTION_SEED] = 1;
    return METIS_PartGraphRecursive(&n, &constraints, start, neighbour, weight, nullptr, nullptr, &parts, nullptr,
                                    nullptr, options, &cut, part_of) == METIS_OK;
}

std::vector<int> library_parts(const Graph &graph, int parts)
{
    const std::size_t n = (std::size_t)graph.n;
    if (parts == 1) return std::vector<int>(n, 0);
    if (graph.n < parts || graph.start[n] > std::numeric_limits<idx_t>::max()) return std::vector<int>();
    std::vector<idx_t> start(graph.start.begin(), graph.start.end());
    std::vector<idx_t> neighbour(graph.neighbour.begin(), graph.neighbour.end());
    std::vector<idx_t> weight(graph.weight.begin(), graph.weight.end()), part_of(n);
    if (!part((idx_t)n, start.data(), neighbour.data(), weight.data(), (idx_t)parts, part_of.data()))
        return std::vector<int>();
    return std::vector<int>(part_of.begin(), part_of.end());
}

#else

bool has_library_dissection() { return false; }
std::vector<int> library_dissection(const Graph &) { return std::vector<int>(); }
std::vector<int> library_parts(const Graph &, int) { return std::vector<int>(); }

#endif

} // namespace vornadjust
