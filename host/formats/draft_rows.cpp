#include "host/formats/draft_rows.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace vornhost {

std::vector<std::vector<const DraftRow *>> direction_sets(const std::vector<const DraftRow *> &directions)
{
    std::vector<std::vector<const DraftRow *>> sets;
    std::map<std::tuple<std::string, std::string, std::string>, size_t> index;
    for (const DraftRow *row : directions) {
        const auto [found, added] = index.emplace(std::make_tuple(row->from, row->setup, row->set), sets.size());
        if (added) sets.emplace_back();
        sets[found->second].push_back(row);
    }
    return sets;
}

double ActiveCovariance::operator()(size_t i, size_t j) const
{
    const size_t row = std::min(i, j), off = std::max(i, j) - row;
    return off > width ? 0.0 : elements[row * (width + 1) + off];
}

ActiveCovariance active_part(const Draft &draft, const DraftCovariance &group)
{
    ActiveCovariance out;
    out.group = &group;
    const size_t n = group.components.size();
    std::vector<size_t> kept;
    for (size_t i = 0; i < n; i++) {
        const DraftComponent &c = group.components[i];
        if (draft.of(c.kind)[c.row].use) kept.push_back(i);
    }
    std::vector<size_t> start(n); // of each row in the elements
    for (size_t i = 0, at = 0; i < n; at += std::min(group.width + 1, n - i), i++) start[i] = at;
    out.width = kept.empty() ? 0 : std::min(group.width, kept.size() - 1);
    for (size_t i = 0; i < kept.size(); i++) {
        out.components.push_back(group.components[kept[i]]);
        for (size_t k = 0; k <= out.width; k++) {
            const size_t off = i + k < kept.size() ? kept[i + k] - kept[i] : group.width + 1;
            out.elements.push_back(off > group.width ? 0.0 : group.elements[start[kept[i]] + off]);
        }
    }
    return out;
}

std::string words_of(DraftKind kind, const DraftRow &row)
{
    static const char *const words[draft_kinds] = {"distance",
                                                   "horizontal distance",
                                                   "height difference",
                                                   "direction",
                                                   "vertical angle",
                                                   "azimuth",
                                                   "bearing",
                                                   "angle",
                                                   "baseline",
                                                   "observed point",
                                                   "coordinate difference",
                                                   "scale bar"};
    std::string text = words[(size_t)kind];
    if (!row.at.empty()) text += " at " + row.at;
    if (row.to.empty()) return text + ' ' + row.from;
    return text + " from " + row.from + " to " + row.to;
}

} // namespace vornhost
