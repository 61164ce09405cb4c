// Parts by union-find over rows and correlated groups, and over ranks.

#include "adjust/parts.h"

#include <numeric>

#include "adjust/over_ranks.h"

namespace vornadjust {

namespace {

class Sets {
public:
    explicit Sets(int n) : parent(n) { std::iota(parent.begin(), parent.end(), 0); }
    int root(int i)
    {
        while (parent[i] != i) i = parent[i] = parent[parent[i]];
        return i;
    }
    void join(int i, int j) { parent[root(i)] = root(j); }

private:
    std::vector<int> parent;
};

// The least member of the set of each of n.
std::vector<int> least_members(Sets &sets, int n)
{
    std::vector<int> of_root(n, -1), out;
    out.reserve(n);
    for (int i = 0; i < n; i++) {
        int &least = of_root[sets.root(i)];
        if (least < 0) least = i;
        out.push_back(least);
    }
    return out;
}

// Joins what any rank has joined, until all have the same sets. Each point goes to the least that a rank has in its
// set: within two rounds a set that is not whole yet meets another one, so that the rounds grow with the logarithm.
void join_over_ranks(Sets &sets, int n, Ranks *ranks)
{
    for (bool same = !ranks; !same;) {
        std::vector<double> told;
        told.reserve(2 * (std::size_t)n);
        for (const int least : least_members(sets, n)) told.insert(told.end(), {-(double)least, (double)least});
        most(ranks, told.data(), told.size());
        same = true;
        for (int i = 0; i < n; i++) {
            const double least = -told[2 * (std::size_t)i], greatest = told[2 * (std::size_t)i + 1];
            same = same && least == greatest;
            sets.join(i, (int)least);
        }
    }
}

} // namespace

Parts find_parts(const UnitRows &rows)
{
    const Equations &e = *rows.equations;
    const int n = rows.model->n_points;
    Sets sets(n);
    std::vector<double> seen(n, 0.0);
    std::vector<int> of_group(rows.model->groups.size(), -1);
    for (int r = 0; r < rows.rows(); r++) {
        if (!rows.tells(r)) continue;
        const bool imported = e.group[r] >= 0 && rows.model->observations[e.observation[r]].kind == Kind::unknown;
        int first = imported ? of_group[e.group[r]] : -1;
        for (std::size_t k = e.begin[r]; k < e.begin[r + 1]; k++) {
            if (!rows.is_coordinate(e.column[k])) continue;
            const int point = e.column[k] / 3;
            seen[point] = 1.0;
            if (first < 0) first = point;
            sets.join(first, point);
        }
        if (imported) of_group[e.group[r]] = first;
    }
    join_over_ranks(sets, n, rows.ranks);
    most(rows.ranks, seen.data(), seen.size());

    Parts parts;
    parts.part_of.assign(n, -1);
    std::vector<int> part_of_root(n, -1);
    for (int p = 0; p < n; p++) {
        if (seen[p] == 0.0) continue;
        int &part = part_of_root[sets.root(p)];
        if (part < 0) part = static_cast<int>(parts.points.size()), parts.points.emplace_back();
        parts.points[part].push_back(p);
        parts.part_of[p] = part;
    }
    return parts;
}

} // namespace vornadjust
