// Work space and relations of supernodes.

#include "adjust/layout.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>

namespace vornadjust {

static const std::size_t LINE = 8; // numbers of a cache line: every part begins with one

static std::size_t whole_lines(std::size_t numbers) { return (numbers + LINE - 1) / LINE * LINE; }

static std::size_t numbers_of(const DeskSize &d)
{
    return whole_lines(d.panel) + whole_lines(d.narrow) + whole_lines(d.pivots) + whole_lines(d.stack);
}

static DeskSize larger(const DeskSize &a, const DeskSize &b)
{
    return DeskSize{std::max(a.panel, b.panel), std::max(a.narrow, b.narrow), std::max(a.pivots, b.pivots),
                    std::max(a.index, b.index), std::max(a.stack, b.stack)};
}

Layout::Layout(const Schedule &plan, const DeskSize &crown, const DeskSize &bunch, int threads)
    : sizes((std::size_t)std::max(1, threads), bunch), held_size(plan.held_size)
{
    sizes[0] = larger(crown, bunch);
}

std::size_t Layout::numbers() const
{
    std::size_t all = whole_lines(held_size) + LINE;
    for (const DeskSize &d : sizes) all += numbers_of(d);
    return all;
}

std::size_t Layout::places() const
{
    std::size_t all = 0;
    for (const DeskSize &d : sizes) all += d.index;
    return all;
}

std::size_t Layout::bytes() const { return numbers() * sizeof(double) + places() * sizeof(int); }

void Layout::take()
{
    space.reset(new double[numbers()]); // not cleared: what is read was written
    indexes.resize(places());
    const std::size_t line = LINE * sizeof(double), at = (std::size_t)(std::uintptr_t)space.get() % line;
    double *next = space.get() + (line - at) % line / sizeof(double);
    int *index = indexes.data();
    const auto deal = [&](std::size_t size) {
        double *part = next;
        next += whole_lines(size);
        return part;
    };
    held = deal(held_size);
    for (const DeskSize &d : sizes) {
        Desk desk;
        desk.panel = deal(d.panel);
        desk.narrow = deal(d.narrow);
        desk.pivots = deal(d.pivots);
        desk.stack = deal(d.stack);
        desk.index = index;
        index += d.index;
        desks.push_back(desk);
    }
}

Family::Family(const Symbolic &symbolic)
    : child((std::size_t)symbolic.nsuper, -1), sibling((std::size_t)symbolic.nsuper, -1),
      side((std::size_t)symbolic.nsuper, 0)
{
    for (int s = symbolic.nsuper - 1; s >= 0; s--) {
        const int p = symbolic.parent[s];
        if (p < 0) continue;
        sibling[s] = child[p];
        child[p] = s;
        side[s] = (char)(1 - side[p]);
    }
}

// A square of the rows of a supernode holds at most a few times the numbers of the factor.
std::size_t addressable(std::int64_t numbers)
{
    if ((std::uint64_t)numbers > std::numeric_limits<std::size_t>::max() / (8 * sizeof(double))) throw std::bad_alloc();
    return (std::size_t)numbers;
}

void rows_in_parent(const Symbolic &symbolic, int s, int *index)
{
    const int p = symbolic.parent[s], first = symbolic.first[p], end = symbolic.first[p + 1], n = symbolic.below(s);
    const int *row = symbolic.row.data() + symbolic.rowstart[s], *rows = symbolic.row.data() + symbolic.rowstart[p];
    const int *last = rows + symbolic.below(p), *at = rows;
    for (int k = 0; k < n; k++) {
        if (row[k] < end) {
            index[k] = row[k] - first;
            continue;
        }
        for (int tries = 0; tries < 8 && *at < row[k]; tries++) at++; // they are near by most of the time
        if (*at < row[k]) at = std::lower_bound(at, last, row[k]);
        index[k] = end - first + (int)(at - rows);
    }
}

} // namespace vornadjust
