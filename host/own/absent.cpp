// Observations that need a coordinate which a point has not.

#include "host/input/names.h"
#include "host/own/builder.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

constexpr int x = 1, y = 2, z = 4;

// Whether a sight from an instrument tells of the plan alone.
bool upright(const va::Model &model, const va::Observation &o)
{
    if (model.frame.curved()) return false;
    if (o.setup < 0) return true;
    const va::Setup &s = model.setups[(size_t)o.setup];
    const auto tilted = [&](int u) { return model.estimated(u) || model.value[(size_t)u] != 0.0; };
    return !tilted(s.first) && !tilted(s.first + 1);
}

// The axes of its ends that an observation depends on.
int axes_of(const va::Model &model, const va::Observation &o)
{
    switch (o.kind) {
    case va::Kind::plane_distance:
    case va::Kind::horizontal_distance:
    case va::Kind::bearing: return x | y;
    case va::Kind::direction:
    case va::Kind::angle:
    case va::Kind::azimuth: return upright(model, o) ? x | y : x | y | z;
    case va::Kind::height_difference: return model.frame.curved() && !model.frame.mixed ? x | y | z : z;
    case va::Kind::difference: return 1 << o.axis;
    default: return x | y | z;
    }
}

} // namespace

bool Builder::leave_out(const va::Observation &o, Source at)
{
    static const char *const coordinates[3] = {"x", "y", "z"};
    if (numbers.absent.empty()) return false;
    const int axes = axes_of(numbers.model, o);
    for (const int p : {o.from, o.to, o.third})
        for (int k = 0; p >= 0 && k < 3; k++) {
            if ((axes >> k & 1) == 0 || numbers.absent.count(3 * p + k) == 0) continue;
            numbers.left_out[{at.file, at.line}] = std::string(coordinates[k]) + " of " +
                                                   shown_name(network, point_name(network, numbers.points[(size_t)p])) +
                                                   " is absent";
            return true;
        }
    return false;
}

} // namespace vornhost
