#include "host/preparation/start/slopes.h"

#include <cmath>

namespace vornhost::start {

namespace {

namespace va = vornadjust;

constexpr int most_passes = 30; // from points with a height to the next
constexpr double times = 3.0;   // standard deviations in a tolerance
constexpr double share = 1e-3;  // of a length: how badly it may be known
constexpr double enough = 1.5;  // slopes that agree on a height, before one slope decides

// From the mark of a point with a height.
struct Slope {
    double level, d, length, sigma;

    double rise() const { return std::sqrt(std::fmax(length * length - d * d, 0.0)); }
};

class Raising {
public:
    Raising(const Given &its_given, Trial *trial) : given(its_given), t(*trial), known(t.levelled)
    {
        std::vector<int> ends;
        for (size_t i = 0; i < t.model.observations.size(); i++) {
            const va::Observation &o = t.model.observations[i];
            if (!o.use || o.kind != va::Kind::slope_distance) continue;
            slopes.push_back((int)i);
            ends.push_back(o.from);
            ends.push_back(o.to);
        }
        at.make(t.model.n_points, ends);
        for (int p = 0; p < t.model.n_points; p++)
            known[(size_t)p] = known[(size_t)p] || given.at(p, 2) != Known::wanted;
    }

    bool run();

private:
    std::vector<Slope> seen_from(int point) const;
    bool raise(int point, double least);
    bool sweep(double least);

    const Given &given;
    Trial &t;
    std::vector<char> known;
    std::vector<int> slopes; // observations
    Lists at;                // of a point: twice the index of a slope, and 1 more at its second end
};

std::vector<Slope> Raising::seen_from(int p) const
{
    std::vector<Slope> all;
    for (const int *i = at.begin(p); i != at.end(p); i++) {
        const va::Observation &o = t.model.observations[(size_t)slopes[(size_t)*i / 2]];
        const int end = o.from == p ? o.to : o.from;
        if (!known[(size_t)end] || !t.placed[(size_t)end]) continue;
        const double *a = &t.model.value[3 * (size_t)p], *b = &t.model.value[3 * (size_t)end];
        const double level = b[2] + (o.from == p ? o.h2 - o.h1 : o.h1 - o.h2);
        all.push_back({level, std::hypot(a[0] - b[0], a[1] - b[1]), o.value[0], standard_deviation(t.model, o, 0)});
    }
    return all;
}

double agreement(const std::vector<Slope> &all, double z)
{
    double sum = 0.0;
    for (const Slope &s : all) {
        const double q = (std::hypot(s.d, z - s.level) - s.length) / (times * s.sigma + share * s.length);
        sum += 1.0 / (1.0 + q * q);
    }
    return sum;
}

bool Raising::raise(int p, double least)
{
    const std::vector<Slope> all = seen_from(p);
    double best = 0.0, height = 0.0;
    for (const Slope &s : all)
        for (const double z : {s.level + s.rise(), s.level - s.rise()}) {
            const double sum = agreement(all, z);
            if (sum > best + share) best = sum, height = z;
        }
    if (all.empty() || best < least) return false;
    known[(size_t)p] = 1;
    t.model.value[3 * (size_t)p + 2] = height;
    return true;
}

// Once through all points without a height.
bool Raising::sweep(double least)
{
    bool any = false;
    for (int p = 0; p < t.model.n_points; p++)
        if (!known[(size_t)p] && t.placed[(size_t)p]) any |= raise(p, least);
    return any;
}

bool Raising::run()
{
    bool any = false;
    for (int pass = 0; pass < most_passes && (sweep(enough) || sweep(0.0)); pass++) any = true;
    return any;
}

} // namespace

bool raise_by_slopes(const Given &given, Trial *t) { return Raising(given, t).run(); }

} // namespace vornhost::start
