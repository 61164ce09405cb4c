#include "host/preparation/start/mirror.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace vornhost::start {

namespace {

namespace va = vornadjust;

constexpr int steps = 20;         // of the adjustment of a mirror image
constexpr double aside = 0.1;     // of a length: level below or above a point
constexpr double far_aside = 0.3; // the same farther away

// Levels of the other ends of lengths to these points.
std::vector<double> levels_beside(const std::vector<int> &points, const Trial &t)
{
    std::vector<char> among((size_t)t.model.n_points, 0);
    for (const int p : points) among[(size_t)p] = 1;
    std::vector<double> levels;
    for (const va::Observation &o : t.model.observations) {
        if (!o.use || o.kind != va::Kind::slope_distance || among[(size_t)o.from] == among[(size_t)o.to]) continue;
        const bool away = among[(size_t)o.to];
        const double difference = o.h1 - o.h2; // of the instrument above the target
        levels.push_back(away ? t.model.value[3 * (size_t)o.from + 2] + difference
                              : t.model.value[3 * (size_t)o.to + 2] - difference);
    }
    return levels;
}

// Mean of the lengths at these points.
double reach_of(const std::vector<int> &points, const Trial &t)
{
    double sum = 0.0, n = 0.0;
    for (const va::Observation &o : t.model.observations) {
        if (!o.use || o.kind != va::Kind::slope_distance) continue;
        if (std::find(points.begin(), points.end(), o.from) == points.end() &&
            std::find(points.begin(), points.end(), o.to) == points.end())
            continue;
        sum += o.value[0], n += 1.0;
    }
    return n > 0.0 ? sum / n : 0.0;
}

double level_of(const std::vector<int> &points, const std::vector<double> &levels, About about, const Trial &t)
{
    if (about == About::lowest) return *std::min_element(levels.begin(), levels.end());
    if (about == About::highest) return *std::max_element(levels.begin(), levels.end());
    if (about == About::mean) return std::accumulate(levels.begin(), levels.end(), 0.0) / (double)levels.size();
    const double z = t.model.value[3 * (size_t)points[0] + 2], reach = reach_of(points, t);
    const double away = reach * (about == About::below || about == About::above ? aside : far_aside);
    return about == About::below || about == About::far_below ? z - away : z + away;
}

} // namespace

std::vector<std::vector<int>> heights_of_lengths(const Trial &t, const Given &given, double work)
{
    std::vector<std::vector<int>> sets;
    if (t.model.frame.space != va::Space::space || t.model.frame.curved() || is_large(t.model)) return sets;
    std::vector<char> measured((size_t)t.model.n_points, 0);
    for (const va::Observation &o : t.model.observations)
        if (o.use && o.kind == va::Kind::slope_distance) measured[(size_t)o.from] = measured[(size_t)o.to] = 1;
    std::vector<int> all;
    for (int p = 0; p < t.model.n_points; p++)
        if (given.at(p, 2) == Known::wanted && !t.levelled[(size_t)p] && measured[(size_t)p]) all.push_back(p);
    const bool held = std::find(t.levelled.begin(), t.levelled.end(), 1) != t.levelled.end();
    if (all.empty() || !held) return sets;
    sets.push_back(all);
    if (all.size() > 1 && (double)all.size() * (double)t.model.observations.size() <= work)
        for (const int p : all) sets.push_back({p});
    return sets;
}

void mirror_heights(const std::vector<int> &points, About about, Trial *t)
{
    const std::vector<double> levels = levels_beside(points, *t);
    t->fit.finite = !levels.empty();
    if (levels.empty()) return;
    const double level = level_of(points, levels, about, *t);
    for (const int p : points) {
        double &z = t->model.value[3 * (size_t)p + 2];
        z = 2.0 * level - z;
    }
    t->fit = settle(&t->model, steps, about == About::mean ? Pull::most : Pull::together);
}

} // namespace vornhost::start
