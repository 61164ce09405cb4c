#include "host/preparation/parallel_verticals.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace vornhost {

namespace {

// Largest square of the distance of a point from the third axis, in metres squared.
template <class Record> double farthest(const List<Record> &list, double unit)
{
    double largest = 0.0;
    for (const Record &r : list.records) {
        const double x = r.x[0] * unit, y = r.x[1] * unit;
        if (r.status > 0) largest = std::max(largest, x * x + y * y);
    }
    return largest;
}

template <class Record> bool any_selected(const List<Record> &list)
{
    return std::any_of(list.records.begin(), list.records.end(), [](const Record &r) { return r.typ > 0; });
}

bool any_levelled(const Model &model)
{
    return std::any_of(model.stations.records.begin(), model.stations.records.end(),
                       [](const station_input &s) { return s.status > 0 && s.ilevel == 1; });
}

// The first of 1e12, 1e13, ... that is not below value.
double next_power_of_ten(double value)
{
    double power = 1.0e12;
    while (power < value) power *= 10.0;
    return power;
}

} // namespace

std::string make_verticals_parallel(Model &model)
{
    if (model.p.iearth != 0) return {};
    if (model.p.dim == 2) // in a plane no angle is reduced
        for (station_input &s : model.stations.records) s.ilevel = 0;
    if (model.p.dim != 3) return {};
    const bool angles = any_selected(model.directions) || any_selected(model.verticals);
    if (!any_selected(model.heightdiffs) && !(angles && any_levelled(model))) return {};

    const double unit = metres_per_unit(model.p);
    const double square = std::max(farthest(model.stations, unit), farthest(model.targets, unit));
    const double radius = next_power_of_ten(square / largest_curvature);
    model.p.iearth = 1;
    model.p.radius = radius;
    model.p.horigin = 0.0;

    char line[200];
    std::snprintf(line, sizeof line,
                  "%s: no earth model: verticals are taken as parallel (a sphere of radius %.0e m, curvature below a "
                  "nanometre)",
                  model.path.c_str(), radius);
    return line;
}

} // namespace vornhost
