// Centring of instruments and targets as variances of the single observations: each end of a sight may stand beside its
// mark, which adds the squares of its derivatives by the coordinates of the end,
//     (dl/dx)^2 s^2 + (dl/dy)^2 s^2 + (dl/dz)^2 s_h^2,
// at the first coordinates. The same end in several sights is taken as centred anew for each.

#include <algorithm>
#include <cmath>

#include "adjust/linear.h"
#include "host/own/builder.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

bool is_sight(Item item)
{
    switch (item) {
    case Item::distance:
    case Item::direction:
    case Item::vertical_angle:
    case Item::azimuth:
    case Item::horizontal_distance:
    case Item::angle: return true;
    default: return false;
    }
}

// What centring adds to the variance of an observation with these derivatives.
double added_variance(const va::Model &model, const va::Observation &o, const Model::Centring &c)
{
    va::Linear linear;
    va::linearize(model, o, false, &linear);
    if (!linear.usable) return 0.0;
    int seen[va::most_unknowns];
    const int n = va::seen_unknowns(model, o, seen);
    double variance = 0.0;
    for (int k = 0; k < n; k++) {
        if (seen[k] >= 3 * model.n_points) continue;
        const bool instrument = seen[k] / 3 == o.from, height = seen[k] % 3 == 2;
        const double s =
            height ? (instrument ? c.instrument_height : c.target_height) : (instrument ? c.instrument : c.target);
        variance += linear.slope[0][k] * linear.slope[0][k] * s * s;
    }
    return variance;
}

} // namespace

void add_centring(Builder &b)
{
    const Model::Centring &c = b.network.centring;
    if (!c.any()) return;
    std::vector<char> correlated(b.numbers.items.size(), 0);
    for (const CovarianceMember &m : b.members) correlated[(size_t)m.observation] = 1;
    std::vector<va::Observation> &all = b.numbers.model.observations;
    for (size_t i = 0; i < all.size(); i++)
        if (is_sight(b.numbers.items[i].item) && !correlated[i])
            all[i].sigma[0] = std::sqrt(all[i].sigma[0] * all[i].sigma[0] + added_variance(b.numbers.model, all[i], c));
}

} // namespace vornhost
