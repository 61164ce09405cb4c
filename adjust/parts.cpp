// Parts by union-find over rows and correlated groups.

#include "adjust/parts.h"

#include <numeric>

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

} // namespace

Parts find_parts(const UnitRows &rows)
{
    const Equations &e = *rows.equations;
    const int n = rows.model->n_points;
    Sets sets(n);
    std::vector<char> seen(n, 0);
    std::vector<int> of_group(rows.model->groups.size(), -1);
    for (int r = 0; r < rows.rows(); r++) {
        if (!rows.tells(r)) continue;
        const bool imported = e.group[r] >= 0 && rows.model->observations[e.observation[r]].kind == Kind::unknown;
        int first = imported ? of_group[e.group[r]] : -1;
        for (std::size_t k = e.begin[r]; k < e.begin[r + 1]; k++) {
            if (!rows.is_coordinate(e.column[k])) continue;
            const int point = e.column[k] / 3;
            seen[point] = 1;
            if (first < 0) first = point;
            sets.join(first, point);
        }
        if (imported) of_group[e.group[r]] = first;
    }

    Parts parts;
    parts.part_of.assign(n, -1);
    std::vector<int> part_of_root(n, -1);
    for (int p = 0; p < n; p++) {
        if (!seen[p]) continue;
        int &part = part_of_root[sets.root(p)];
        if (part < 0) part = static_cast<int>(parts.points.size()), parts.points.emplace_back();
        parts.points[part].push_back(p);
        parts.part_of[p] = part;
    }
    return parts;
}

} // namespace vornadjust
