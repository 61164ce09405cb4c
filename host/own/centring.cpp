// Centring of instruments and targets. As variances of the single observations each end of a sight may stand beside its
// mark, which adds the squares of its derivatives by the coordinates of the end,
//     (dl/dx)^2 s^2 + (dl/dy)^2 s^2 + (dl/dz)^2 s_h^2,
// at the first coordinates; the same end in several sights is taken as centred anew for each. As unknowns an instrument
// and each target that it sees from a stand have shifts of their own against their marks, weighted at 0, that all the
// sights between them share.

#include "host/own/centring.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

#include "adjust/linear.h"
#include "host/own/builder.h"
#include "host/own/item_names.h"

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

// The shifts of instruments and targets against their marks.
class Shifts {
public:
    Shifts(const Model &network, Numbers &all) : centring(network.centring), plane(network.p.dim == 2), numbers(all) {}

    // The shift of the instrument of a stand, made where it is new.
    int of_instrument(int point, int setup)
    {
        const MotionPlace place{0, 0, 0, point, -1};
        return find({point, setup, -1}, place, centring.instrument, centring.instrument_height);
    }

    // That of a target seen from the stand.
    int of_target(int point, int setup, int target)
    {
        const MotionPlace place{0, 0, 0, point, target};
        return find({point, setup, target}, place, centring.target, centring.target_height);
    }

private:
    int find(const std::tuple<int, int, int> &end, const MotionPlace &place, double s, double s_height)
    {
        const double sigma[3] = {s, s, plane ? 0.0 : s_height};
        if (sigma[0] == 0.0 && sigma[2] == 0.0) return -1;
        const auto [found, is_new] = known.emplace(end, (int)numbers.model.motions.size());
        if (is_new) add(place, sigma);
        return found->second;
    }

    void add(const MotionPlace &place, const double sigma[3])
    {
        const double unmoved[7] = {0, 0, 0, 0, 0, 0, 1};
        va::Code codes[7];
        std::fill(codes, codes + 7, va::Code::fixed);
        for (int k = 0; k < 3; k++)
            if (sigma[k] > 0.0) codes[k] = va::Code::free;
        const int motion = numbers.model.add_motion(unmoved, codes);
        numbers.motions.push_back(place);
        for (int k = 0; k < 3; k++)
            if (sigma[k] > 0.0) hold(motion, k, sigma[k]);
    }

    void hold(int motion, int axis, double sigma)
    {
        va::Observation o;
        o.kind = va::Kind::unknown;
        o.unknown = numbers.model.motions[(size_t)motion].first + axis;
        o.sigma[0] = sigma;
        numbers.model.observe(o);
        numbers.items.push_back({Item::centring, motion, axis});
    }

    const Model::Centring &centring;
    const bool plane;
    Numbers &numbers;
    std::map<std::tuple<int, int, int>, int> known; // motion by point, set-up of the file, target
};

} // namespace

void add_centring(Builder &b)
{
    const Model::Centring &c = b.network.centring;
    if (!c.any()) return;
    std::vector<char> correlated(b.numbers.items.size(), 0);
    for (const CovarianceMember &m : b.members) correlated[(size_t)m.observation] = 1;
    std::vector<va::Observation> &all = b.numbers.model.observations;
    for (size_t i = 0; i < all.size(); i++) {
        if (!is_sight(b.numbers.items[i].item) || correlated[i]) continue;
        double &sigma = all[i].sigma[0];
        b.numbers.uncentred.emplace_back((int)i, sigma);
        sigma = std::sqrt(sigma * sigma + added_variance(b.numbers.model, all[i], c));
    }
}

void share_centring(const Model &network, Numbers &numbers)
{
    if (!network.centring.shared) return;
    Shifts shifts(network, numbers);
    for (const auto &[i, sigma] : numbers.uncentred) {
        const ItemNotes notes = item_notes(network, numbers.items[(size_t)i]);
        const int setup = note_at(notes.notes->setup, notes.row);
        va::Observation o = numbers.model.observations[(size_t)i];
        o.sigma[0] = sigma;
        o.motion_from = shifts.of_instrument(o.from, setup);
        o.motion_to = shifts.of_target(o.from, setup, o.to);
        if (o.third >= 0) o.motion_third = shifts.of_target(o.from, setup, o.third);
        numbers.model.observations[(size_t)i] = o;
    }
}

} // namespace vornhost
