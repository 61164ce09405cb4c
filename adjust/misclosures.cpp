#include "adjust/misclosures.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace vornadjust {

namespace {

const double turn = 6.283185307179586476925;
const double outstanding = 10.0;

struct Entry {
    int row;
    double misclosure;
};

double median(std::vector<double> x)
{
    if (x.empty()) return 0.0;
    const auto middle = x.begin() + (std::ptrdiff_t)(x.size() / 2);
    std::nth_element(x.begin(), middle, x.end());
    return *middle;
}

double median_size(const std::vector<Entry> &entries, int without)
{
    std::vector<double> sizes;
    for (const Entry &e : entries)
        if (e.row != without) sizes.push_back(std::fabs(e.misclosure));
    return median(sizes);
}

// Rows that are compared with each other: of one kind, at one set-up or else at one point.
std::map<std::pair<int, int>, std::vector<Entry>> by_place(const Model &model, const Equations &e)
{
    std::map<std::pair<int, int>, std::vector<Entry>> places;
    for (int r = 0; r < e.rows(); r++) {
        const Observation &o = model.observations[e.observation[r]];
        if (!e.usable[r] || o.kind == Kind::unknown) continue;
        const int place = o.setup >= 0 ? model.n_points + o.setup : o.from;
        places[{(int)o.kind, place}].push_back({r, e.misclosure[r]});
    }
    return places;
}

// Takes the median off directions: the orientation of their circle.
void orient(std::vector<Entry> *directions)
{
    const double reference = directions->front().misclosure;
    std::vector<double> values;
    for (Entry &e : *directions) values.push_back(e.misclosure = std::remainder(e.misclosure - reference, turn));
    const double middle = median(values);
    for (Entry &e : *directions) e.misclosure = std::remainder(e.misclosure - middle, turn);
}

} // namespace

std::vector<Misfit> misfits(const Model &model, const Equations &equations, int most)
{
    auto places = by_place(model, equations);
    std::map<int, std::vector<Entry>> kinds;
    for (auto &[place, entries] : places) {
        if (place.first == (int)Kind::direction) orient(&entries);
        auto &all = kinds[place.first];
        all.insert(all.end(), entries.begin(), entries.end());
    }
    std::map<int, double> usual;
    for (const auto &[kind, entries] : kinds) usual[kind] = median_size(entries, -1);

    std::vector<std::pair<double, Misfit>> found;
    for (const auto &[place, entries] : places) {
        for (const Entry &e : entries) {
            const double size = std::fabs(e.misclosure);
            const double others = entries.size() > 2 ? median_size(entries, e.row) : usual[place.first];
            const double score = size / std::fmax(others, equations.sigma[e.row]);
            if (!(score >= outstanding)) continue;
            int agreeing = 0;
            for (const Entry &o : entries) agreeing += std::fabs(o.misclosure) < size / outstanding;
            found.push_back(
                {score, {equations.observation[e.row], equations.component[e.row], e.misclosure, agreeing}});
        }
    }
    std::stable_sort(found.begin(), found.end(), [](const auto &a, const auto &b) { return a.first > b.first; });
    std::vector<Misfit> worst;
    for (int i = 0; i < (int)found.size() && i < most; i++) worst.push_back(found[i].second);
    return worst;
}

} // namespace vornadjust
