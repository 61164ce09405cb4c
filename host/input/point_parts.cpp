// Recursive bisection: a group of points is cut across its longest extent, so that each half has the points of half of
// the parts. Of n points in order, part k of K has those from n k / K to n (k + 1) / K; points with the same coordinate
// keep the order of the file, which is the order of all where none has coordinates. n log K steps.

#include "host/input/point_parts.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace vornhost {

namespace {

struct Spot {
    std::array<double, 3> x; // those of a dimension that the network has not: 0
    int point;
};
using Spots = std::vector<Spot>;

template <class Record> void add_spots(const List<Record> &list, int dimension, int first, Spots &spots)
{
    for (size_t i = 0; i < list.size(); i++) {
        const Record &r = list.records[i];
        if (r.status < 0) continue;
        spots.push_back({{r.x[0], r.x[1], dimension == 3 ? r.x[2] : 0.0}, first + (int)i});
    }
}

size_t longest_axis(const Spot *from, const Spot *to)
{
    std::array<double, 3> extent{};
    for (size_t k = 0; k < 3; k++) {
        const auto ends = std::minmax_element(from, to, [k](const Spot &a, const Spot &b) { return a.x[k] < b.x[k]; });
        extent[k] = ends.second->x[k] - ends.first->x[k];
    }
    return (size_t)(std::max_element(extent.begin(), extent.end()) - extent.begin());
}

// Divides the spots of the parts from `first` to before `past` among `parts` in all.
void bisect(Spots &spots, int first, int past, int parts, std::vector<int> &part_of)
{
    const auto begin_of = [&](int part) {
        return spots.data() + (uint64_t)spots.size() * (uint64_t)part / (uint64_t)parts;
    };
    Spot *const from = begin_of(first), *const to = begin_of(past);
    if (from == to) return;
    if (past - first == 1) {
        for (const Spot *s = from; s < to; s++) part_of[(size_t)s->point] = first;
        return;
    }
    const int middle = first + (past - first) / 2;
    const size_t k = longest_axis(from, to);
    const auto before = [k](const Spot &a, const Spot &b) {
        return a.x[k] < b.x[k] || (a.x[k] == b.x[k] && a.point < b.point);
    };
    if (begin_of(middle) < to) std::nth_element(from, begin_of(middle), to, before);
    bisect(spots, first, middle, parts, part_of);
    bisect(spots, middle, past, parts, part_of);
}

} // namespace

std::vector<int> parts_of_points(const Model &model)
{
    const int parts = model.share.parts, stations = (int)model.stations.size();
    std::vector<int> part_of(model.stations.size() + model.targets.size());
    for (size_t i = 0; i < part_of.size(); i++) part_of[i] = (int)(i % (size_t)parts);
    Spots spots;
    add_spots(model.stations, model.p.dim, 0, spots);
    add_spots(model.targets, model.p.dim, stations, spots);
    bisect(spots, 0, parts, parts, part_of);
    return part_of;
}

} // namespace vornhost
