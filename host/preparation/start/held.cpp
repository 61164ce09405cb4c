#include "host/preparation/start/held.h"

#include <algorithm>

namespace vornhost::start {

namespace {

namespace va = vornadjust;
using va::Kind;

bool is_length(Kind kind)
{
    return kind == Kind::slope_distance || kind == Kind::plane_distance || kind == Kind::level_distance ||
           kind == Kind::horizontal_distance || kind == Kind::scale_bar;
}

// Of a vector in the plan.
bool tells_axes(const va::Observation &o)
{
    return o.kind == Kind::baseline || (o.kind == Kind::difference && o.axis < 2) || o.kind == Kind::azimuth ||
           o.kind == Kind::bearing;
}

// A set-up that sights two points.
bool has_two_rays(const va::Model &model)
{
    std::vector<int> sighted(model.setups.size(), -1);
    for (const va::Observation &o : model.observations) {
        if (!o.use || o.kind != Kind::direction) continue;
        int &target = sighted[(size_t)o.setup];
        if (target >= 0 && target != o.to) return true;
        target = o.to;
    }
    return false;
}

bool is_straight(const va::Observation &o)
{
    return o.kind == Kind::scale_bar || (o.kind == Kind::slope_distance && o.h1 == 0.0 && o.h2 == 0.0);
}

} // namespace

Held held_by(const va::Model &model, const Given &given)
{
    Held held;
    std::vector<char> known((size_t)model.n_points, 0);
    for (int p = 0; p < model.n_points; p++) known[(size_t)p] = given.plan(p);
    for (const char g : given.setup) held.axes |= g != 0;
    for (const va::Observation &o : model.observations) {
        if (!o.use) continue;
        if (o.kind == Kind::unknown && o.unknown < 3 * model.n_points) known[(size_t)o.unknown / 3] = 1;
        if (o.kind == Kind::position) known[(size_t)o.from] = 1;
        held.axes |= tells_axes(o);
        held.length |= is_length(o.kind) || o.kind == Kind::baseline || o.kind == Kind::difference;
        held.side |= o.kind == Kind::angle || o.kind == Kind::image;
    }
    held.side |= held.axes || has_two_rays(model);
    for (int p = 0; p < model.n_points; p++)
        if (known[(size_t)p]) held.points.push_back(p);
    return held;
}

std::vector<int> held_in_space(const va::Model &model)
{
    std::vector<char> held((size_t)model.n_points, 0);
    for (int u = 0; u < 3 * model.n_points; u++) held[(size_t)u / 3] |= !model.estimated(u);
    for (const va::Observation &o : model.observations) {
        if (o.use && o.kind == Kind::unknown && o.unknown < 3 * model.n_points) held[(size_t)o.unknown / 3] = 1;
        if (o.use && o.kind == Kind::position) held[(size_t)o.from] = 1;
    }
    std::vector<int> points;
    for (int p = 0; p < model.n_points; p++)
        if (held[(size_t)p]) points.push_back(p);
    return points;
}

bool is_shape_alone(const va::Model &model)
{
    if (model.frame.space != va::Space::space || model.frame.curved()) return false;
    const auto fits = [](const va::Observation &o) { return !o.use || o.kind == Kind::unknown || is_straight(o); };
    return std::all_of(model.observations.begin(), model.observations.end(), fits) && held_in_space(model).size() <= 2;
}

} // namespace vornhost::start
