#include "host/own/start_words.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "adjust/linear.h"
#include "host/input/angle.h"
#include "host/input/names.h"
#include "host/own/item_names.h"
#include "host/own/missing_words.h"

namespace vornhost {

namespace {

namespace va = vornadjust;
using va::Kind;

const double turn = 8.0 * std::atan(1.0);
constexpr double nearly_there = 0.05; // of how far a point is off: another place that explains it
// Of the length of a sight: what the scale of the projection and the curvature do to it where first coordinates in
// space on the ellipsoid are those of a plain grid.
constexpr double beside_grid = 3e-3;

std::string number(double x, int digits)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.*f", digits, x);
    return text;
}

// Whether first coordinates leave the scale of the projection and the curvature out.
bool is_plain(const Model &network) { return network.crs.given() && !network.crs.local() && network.p.dim == 3; }

// Whether an observation is off by no more than that explains.
bool fits_plainly(const va::Model &model, const va::Observation &o)
{
    double computed[3];
    if (o.from < 0 || o.to < 0 || !va::compute(model, o, computed)) return false;
    const double *p = &model.value[3 * (size_t)o.from], *q = &model.value[3 * (size_t)o.to];
    const double length = std::hypot(q[0] - p[0], q[1] - p[1], q[2] - p[2]);
    const bool angle = o.kind == Kind::direction || o.kind == Kind::angle || o.kind == Kind::vertical_angle ||
                       o.kind == Kind::azimuth || o.kind == Kind::bearing;
    double squares = 0.0;
    for (int k = 0; k < va::components(o.kind, model.frame.space); k++) {
        const double off = o.value[k] - computed[k];
        squares += angle ? std::pow(std::remainder(off, turn) * length, 2) : off * off;
    }
    return std::sqrt(squares) < beside_grid * length;
}

// Sights that are off by more.
int beyond_grid(const va::Model &model)
{
    return (int)std::count_if(model.observations.begin(), model.observations.end(), [&](const va::Observation &o) {
        return o.use && o.from >= 0 && o.to >= 0 && !fits_plainly(model, o);
    });
}

std::string misfit_line(const Model &network, const Numbers &numbers, const start::Misfit &m)
{
    const va::Observation &o = numbers.model.observations[(size_t)m.observation];
    std::string line = item_text(item_name(network, numbers, m.observation)) + " does not fit the others";
    const bool constant =
        o.kind == Kind::unknown && numbers.model.meaning[(size_t)o.unknown] != va::Meaning::coordinate;
    if (va::components(o.kind, numbers.model.frame.space) == 1 && !constant)
        line += ": it reads " + reading_text(network, o, o.value[0]) + " and would have to read " +
                reading_text(network, o, m.would_read);
    return line + "; it has no part in the first coordinates";
}

// In the file's unit and origin.
std::string plan_text(const Model &network, const Numbers &numbers, const double x[2])
{
    const double unit = metres_per_unit(network.p);
    return number((x[0] + numbers.origin[0]) / unit, 3) + " " + number((x[1] + numbers.origin[1]) / unit, 3);
}

std::string height_text(const Model &network, const Numbers &numbers, double z)
{
    return number((z + numbers.origin[2]) / metres_per_unit(network.p), 3);
}

std::string doubt_line(const Model &network, const Numbers &numbers, const start::Doubt &d)
{
    const auto at = [&](const double x[3]) {
        return d.in_height ? height_text(network, numbers, x[2]) : plan_text(network, numbers, x);
    };
    return name_of(network, numbers, d.point) + (d.in_height ? " fits at two heights, " : " fits in two places, ") +
           number(d.apart, 3) + " m apart: at " + at(d.x) + " and at " + at(d.other) + " (" +
           where(network, numbers, d.point) + ")";
}

std::vector<std::string> doubt_lines(const Model &network, const Numbers &numbers, const start::Start &start)
{
    std::vector<std::string> lines;
    for (const start::Doubt &d : start.doubts) lines.push_back(doubt_line(network, numbers, d));
    cut(&lines, "points");
    lines.push_back("give an approximate value, or observe one more sight");
    return lines;
}

// What the given coordinates of a displaced point look like instead; empty when that is not known.
std::string guess_text(const Model &network, const Numbers &numbers, const start::Displaced &d,
                       const std::vector<start::Displaced> &all)
{
    const double near = nearly_there * d.off;
    for (const start::Displaced &o : all)
        if (o.point != d.point && std::hypot(o.given[0] - d.x[0], o.given[1] - d.x[1]) < near)
            return ", where " + name_of(network, numbers, o.point) + " is given: are the two exchanged?";
    const double *origin = numbers.origin;
    const double dx = d.given[1] + origin[1] - d.x[0] - origin[0];
    const double dy = d.given[0] + origin[0] - d.x[1] - origin[1];
    return std::hypot(dx, dy) < near ? ": are x and y exchanged?" : "";
}

std::string displaced_line(const Model &network, const Numbers &numbers, const start::Displaced &d,
                           const std::vector<start::Displaced> &all)
{
    return where(network, numbers, d.point) + ": " + name_of(network, numbers, d.point) + " is given " +
           number(d.off, 3) + " m from where its sights put it: " + plan_text(network, numbers, d.x) +
           guess_text(network, numbers, d, all);
}

// All given coordinates are wrong in the same way.
std::vector<std::string> given_lines(const start::Start &start)
{
    if (start.mirrored)
        return {"the given coordinates fit the sights as a mirror image only: are x and y exchanged, or do the "
                "directions run from y to x?"};
    return {"the given coordinates are " + number(start.given_scale, start.given_scale < 0.1 ? 6 : 3) +
            " times as far from one another as the sights say: is their unit right, and that of the distances?"};
}

} // namespace

std::string reading_text(const Model &network, const va::Observation &o, double value)
{
    static const char *const units[] = {" gon", "°", "° (ddd.mmss)", " rad", " mgon", "\"", " mil", "°"};
    project u = network.p; // its conversions, in the unit of the file
    u.iangle = file_units(network).angle;
    const char *const unit = units[u.iangle];
    switch (o.kind) {
    case Kind::direction:
    case Kind::angle:
    case Kind::bearing: return number(from_direction(u.iangle, value), 4) + unit;
    case Kind::azimuth: return number(u.aztoraw(1, value), 4) + unit;
    case Kind::vertical_angle: return number(u.vtoraw(1, value), 4) + unit;
    case Kind::image: return number(value, 1) + " pixels";
    default: return number(value, 3) + " m";
    }
}

std::vector<std::string> start_refusals(const Model &network, const Numbers &numbers, const start::Start &start)
{
    if (start.mirrored || start.given_scale != 1.0) return given_lines(start);
    return start.missing.empty() ? doubt_lines(network, numbers, start) : missing_lines(network, numbers, start);
}

std::vector<std::string> start_notes(const Model &network, const Numbers &numbers, const start::Start &start)
{
    std::vector<std::string> lines, misfits;
    if (start.points_that_tell_side > 0)
        lines.push_back(std::string("the mirror image of the network fits the observations as well: give approximate "
                                    "coordinates of ") +
                        (start.points_that_tell_side == 3 ? "three points that do not lie on a line"
                                                          : "four points that do not lie in one plane"));
    const bool plain = is_plain(network);
    const int all = (int)numbers.model.observations.size(), rough = plain ? beyond_grid(numbers.model) : start.rough;
    if (start.contradicts && (!plain || 2 * rough > all))
        lines.push_back("half of the observations are more than " + number(start.scale, 0) +
                        " standard deviations off: are the units of angles and lengths right, and do the directions "
                        "run from x to y?");
    if (start.rough > 0 && rough > 0)
        lines.push_back("the first coordinates are rough: " + std::to_string(rough) + " of " + std::to_string(all) +
                        " observations do not fit them");
    std::vector<std::string> displaced;
    for (const start::Displaced &d : start.displaced)
        displaced.push_back(displaced_line(network, numbers, d, start.displaced));
    cut(&displaced, "points");
    for (const start::Misfit &m : start.misfits)
        if (!plain || !fits_plainly(numbers.model, numbers.model.observations[(size_t)m.observation]))
            misfits.push_back(misfit_line(network, numbers, m));
    cut(&misfits, "observations that do not fit");
    for (const auto *some : {&displaced, &misfits}) lines.insert(lines.end(), some->begin(), some->end());
    return lines;
}

} // namespace vornhost
