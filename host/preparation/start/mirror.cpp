#include "host/preparation/start/mirror.h"

#include <algorithm>
#include <cmath>

namespace vornhost::start {

namespace {

namespace va = vornadjust;

constexpr int steps = 20; // of the adjustment of a mirror image

// Level about which the points would be mirrored; not finite where no length leads to others.
double level_beside(const std::vector<int> &points, const Trial &t)
{
    std::vector<char> among((size_t)t.model.n_points, 0);
    for (const int p : points) among[(size_t)p] = 1;
    double sum = 0.0, n = 0.0;
    for (const va::Observation &o : t.model.observations) {
        if (!o.use || o.kind != va::Kind::slope_distance || among[(size_t)o.from] == among[(size_t)o.to]) continue;
        const bool away = among[(size_t)o.to];
        const double difference = o.h1 - o.h2; // of the instrument above the target
        sum += away ? t.model.value[3 * (size_t)o.from + 2] + difference
                    : t.model.value[3 * (size_t)o.to + 2] - difference;
        n += 1.0;
    }
    return n > 0.0 ? sum / n : NAN;
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

void mirror_heights(const std::vector<int> &points, Trial *t)
{
    const double level = level_beside(points, *t);
    t->fit.finite = std::isfinite(level);
    if (!t->fit.finite) return;
    for (const int p : points) {
        double &z = t->model.value[3 * (size_t)p + 2];
        z = 2.0 * level - z;
    }
    t->fit = settle(&t->model, steps, Pull::most);
}

} // namespace vornhost::start
