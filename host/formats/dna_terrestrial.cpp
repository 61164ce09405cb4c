#include "host/formats/dna_terrestrial.h"

#include <cmath>

#include "host/formats/geocentric.h"

namespace vornhost {

namespace {

constexpr double radian = 3.14159265358979323846 / 180.0;

// A height of a point as observed coordinate z.
DraftRow height_row(const DnaMeasure &m, double height)
{
    DraftRow row = row_of(m);
    row.to.clear();
    row.value = {std::nullopt, std::nullopt, height};
    row.sigma = {std::nullopt, std::nullopt, m.sigma};
    return row;
}

std::string above_zero(const DnaMeasure &m) { return m.value > 0.0 ? std::string() : "a distance is not above 0"; }

} // namespace

DraftRow row_of(const DnaMeasure &m)
{
    DraftRow row;
    row.where = m.where;
    row.id = m.id;
    row.from = m.first;
    row.to = m.second;
    row.value[0] = m.value;
    row.sigma[0] = m.sigma;
    if (m.instrument_height != 0.0) row.h1 = m.instrument_height;
    if (m.target_height != 0.0) row.h2 = m.target_height;
    return row;
}

std::string DnaTerrestrial::add(const DnaMeasure &m)
{
    DraftRow row = row_of(m);
    switch (m.type) {
    case 'A':
        row.at = m.first;
        row.from = m.second;
        row.to = m.third;
        builder.add(DraftKind::angle, std::move(row));
        return {};
    case 'B':
    case 'K': builder.add(DraftKind::azimuth, std::move(row)); return {};
    case 'C':
        if (m.value > 0.0) builder.add(DraftKind::scale_bar, std::move(row));
        return above_zero(m);
    case 'E':
    case 'M':
        row.level = m.type == 'E' ? "ellipsoid" : "geoid";
        if (m.value > 0.0) builder.add(DraftKind::horizontal_distance, std::move(row));
        return above_zero(m);
    case 'S':
        if (m.value > 0.0) builder.add(DraftKind::distance, std::move(row));
        return above_zero(m);
    case 'D': add_set(m); return {};
    case 'Z': row.value[0] = 90.0 - m.value; [[fallthrough]];
    case 'V': builder.add(DraftKind::vertical_angle, std::move(row)); return {};
    case 'L': builder.add(DraftKind::height_difference, std::move(row)); return {};
    case 'H':
    case 'R': return add_height(m);
    case 'P':
    case 'Q': return add_parallel(m);
    default: return "astronomic latitudes and longitudes tell the deflection of the vertical, which the file has not";
    }
}

// Each set has a zero of its own, and is a set-up.
void DnaTerrestrial::add_set(const DnaMeasure &m)
{
    const int number = ++sets[m.first];
    for (const DnaDirection &d : m.directions) {
        if (d.ignored) {
            builder.leave_out(d.where, "direction of " + m.first + " to " + d.target, "it is marked as ignored");
            continue;
        }
        DraftRow row;
        row.where = d.where;
        row.id = m.id;
        row.from = m.first;
        row.to = d.target;
        row.value[0] = d.value;
        row.sigma[0] = d.sigma;
        if (number > 1) row.setup = std::to_string(number);
        builder.add(DraftKind::direction, std::move(row));
    }
}

std::string DnaTerrestrial::add_height(const DnaMeasure &m)
{
    double height = m.value;
    if (m.type == 'R') {
        const auto found = stations.find(m.first);
        if (found == stations.end()) return "the height of the geoid at a station without coordinates is not known";
        const auto z = earth.from_ellipsoid(found->second[0], found->second[1], m.value);
        if (!z) return "the station lies outside the geoid";
        height = *z;
    }
    builder.add(DraftKind::coordinates, height_row(m, height));
    return {};
}

std::string DnaTerrestrial::add_parallel(const DnaMeasure &m)
{
    const auto [at, is_new] = parallels.try_emplace(m.first);
    if (is_new) order.push_back(m.first);
    const DnaMeasure *&place = m.type == 'P' ? at->second.latitude : at->second.longitude;
    if (place) return "its station has another one of its kind";
    place = &m;
    return {};
}

void DnaTerrestrial::finish()
{
    for (const std::string &name : order) add_place(name, parallels.at(name));
}

// Errors along the meridian and the parallel, turned into the axes of the grid.
void DnaTerrestrial::add_place(const std::string &name, const Parallel &p)
{
    const DnaMeasure *const one = p.latitude ? p.latitude : p.longitude;
    const auto leave = [&](const char *why) {
        for (const DnaMeasure *m : {p.latitude, p.longitude})
            if (m) builder.leave_out(m->where, std::string("measurement ") + m->type + " of " + name, why);
    };
    if (!p.latitude || !p.longitude) return leave("latitude and longitude of a point are taken together only");
    const double latitude = p.latitude->value, longitude = p.longitude->value;
    const auto grid = earth.in_grid(latitude, longitude);
    if (!grid) return leave("it lies where the projection does not reach");
    const auto metres = radii({latitude * radian, longitude * radian, 0.0});
    const double north = metres[0] * p.latitude->sigma / 3600.0 * radian,
                 east = metres[1] * p.longitude->sigma / 3600.0 * radian;
    const double c = std::cos(grid->convergence), s = std::sin(grid->convergence);
    DraftRow row;
    row.where = one->where;
    row.id = one->id;
    row.from = name;
    row.value = {grid->north, grid->east, std::nullopt};
    row.covariance = "C" + std::to_string(builder.draft.covariances.size() + 1);
    DraftCovariance group;
    group.name = row.covariance;
    group.where = one->where;
    group.width = 1;
    const size_t at = builder.draft.of(DraftKind::coordinates).size();
    for (int axis = 0; axis < 2; axis++) group.components.push_back({DraftKind::coordinates, at, axis});
    const double nn = north * north, ee = east * east;
    group.elements = {c * c * nn + s * s * ee, c * s * (ee - nn), s * s * nn + c * c * ee};
    builder.add(DraftKind::coordinates, std::move(row), 2);
    builder.draft.covariances.push_back(std::move(group));
}

} // namespace vornhost
