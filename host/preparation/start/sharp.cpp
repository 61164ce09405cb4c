#include "host/preparation/start/sharp.h"

#include <algorithm>
#include <cmath>

#include "host/preparation/start/sightings.h"

namespace vornhost::start {

namespace {

namespace va = vornadjust;
using va::Kind;

constexpr double bluntest = 0.01; // of angles in radians, of lengths in their own length

double median(std::vector<double> x)
{
    if (x.empty()) return 0.0;
    const auto middle = x.begin() + (long)(x.size() / 2);
    std::nth_element(x.begin(), middle, x.end());
    return *middle;
}

// Without unit; 0 for what it cannot be said of.
double relative_sigma(const va::Model &model, const va::Observation &o)
{
    switch (o.kind) {
    case Kind::direction:
    case Kind::angle:
    case Kind::vertical_angle:
    case Kind::azimuth:
    case Kind::bearing: return standard_deviation(model, o, 0);
    case Kind::slope_distance:
    case Kind::plane_distance:
    case Kind::level_distance:
    case Kind::horizontal_distance:
    case Kind::scale_bar: return o.value[0] > 0.0 ? standard_deviation(model, o, 0) / o.value[0] : 0.0;
    default: return 0.0;
    }
}

} // namespace

va::Model with_sharp_sigmas(const va::Model &model)
{
    std::vector<double> angles, lengths;
    for (const va::Observation &o : model.observations) {
        if (!o.use) continue;
        const double sigma = relative_sigma(model, o);
        const bool angle = o.kind == Kind::direction || o.kind == Kind::angle || o.kind == Kind::vertical_angle ||
                           o.kind == Kind::azimuth || o.kind == Kind::bearing;
        if (sigma > 0.0) (angle ? angles : lengths).push_back(sigma);
    }
    const double worst = std::fmax(median(angles), median(lengths));
    va::Model sharp = model;
    if (worst <= bluntest) return sharp;
    const double factor = bluntest / worst;
    for (va::Observation &o : sharp.observations)
        for (double &sigma : o.sigma) sigma *= factor;
    for (double &q : sharp.covariance) q *= factor * factor;
    return sharp;
}

} // namespace vornhost::start
