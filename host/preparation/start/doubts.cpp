#include "host/preparation/start/doubts.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "host/preparation/start/held.h"
#include "host/preparation/start/joining.h"

namespace vornhost::start {

namespace {

namespace va = vornadjust;

constexpr double same = 1e-3; // of the size of the network: points that a motion brings together
const double full_turn = 8.0 * std::atan(1.0);

std::vector<Common> common_points(const Trial &best, const Trial &other)
{
    std::vector<Common> all;
    for (int p = 0; p < best.model.n_points; p++) {
        const double *to = &best.model.value[3 * (size_t)p], *at = &other.model.value[3 * (size_t)p];
        if (best.placed[(size_t)p] && other.placed[(size_t)p]) all.push_back({at[0], at[1], to[0], to[1]});
    }
    return all;
}

double size_of(const std::vector<Common> &all)
{
    double size = 0.0;
    for (const Common &c : all) size = std::fmax(size, std::hypot(c.to_x - all[0].to_x, c.to_y - all[0].to_y));
    return size;
}

Motion median_shift(const std::vector<Common> &all)
{
    std::vector<double> p, q;
    for (const Common &c : all) {
        p.push_back(c.to_x - c.x);
        q.push_back(c.to_y - c.y);
    }
    const auto middle = (long)(p.size() / 2);
    std::nth_element(p.begin(), p.begin() + middle, p.end());
    std::nth_element(q.begin(), q.begin() + middle, q.end());
    Motion m;
    m.p = p[(size_t)middle], m.q = q[(size_t)middle];
    return m;
}

// The motion that the network leaves open and that brings most points together.
std::optional<Motion> open_motion(const std::vector<Common> &all, const Held &held)
{
    if (held.axes && held.length) return median_shift(all);
    const double t = same * size_of(all);
    auto motion = motion_of_most(all, t, held.length, 1.0);
    if (held.side) return motion;
    const auto image = motion_of_most(all, t, held.length, -1.0);
    return image && (!motion || image->agreed > motion->agreed) ? image : motion;
}

} // namespace

void move_onto(const Trial &best, const Given &given, Trial *other)
{
    const Held held = held_by(best.model, given);
    const std::vector<Common> all = common_points(best, *other);
    if (all.size() < 2 || held.points.size() > 1 || (held.points.size() == 1 && held.axes && held.length)) return;
    const std::optional<Motion> motion = open_motion(all, held);
    if (!motion) return;
    for (int p = 0; p < best.model.n_points; p++) {
        double *x = &other->model.value[3 * (size_t)p];
        motion->apply(x[0], x[1], &x[0], &x[1]);
    }
    for (const va::Setup &s : other->model.setups)
        other->model.value[(size_t)s.first + 2] -= std::atan2(motion->b, motion->a);
}

bool in_one_valley(const Trial &best, const Trial &other, double ridge)
{
    va::Model middle = best.model;
    for (size_t u = 0; u < middle.value.size(); u++) {
        double change = other.model.value[u] - middle.value[u];
        if (middle.meaning[u] == va::Meaning::angle) change = std::remainder(change, full_turn);
        middle.value[u] += 0.5 * change;
    }
    return measure_fit(middle).loss < std::fmax(best.fit.loss, other.fit.loss) + ridge;
}

std::vector<Doubt> places_apart(const Trial &best, const Given &given, const Trial &other, double least, bool in_space)
{
    std::vector<Doubt> apart;
    for (int p = 0; p < best.model.n_points; p++) {
        const double *x = &best.model.value[3 * (size_t)p], *y = &other.model.value[3 * (size_t)p];
        const double off = std::hypot(x[0] - y[0], x[1] - y[1]), rise = std::fabs(x[2] - y[2]);
        if (given.wants_plan(p) && off > least)
            apart.push_back({p, {x[0], x[1], x[2]}, {y[0], y[1], y[2]}, false, off});
        else if (in_space && given.at(p, 2) == Known::wanted && rise > least)
            apart.push_back({p, {x[0], x[1], x[2]}, {y[0], y[1], y[2]}, true, rise});
    }
    return apart;
}

} // namespace vornhost::start
