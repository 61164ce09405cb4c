// What the report says of adjusted quantities: points, instruments, groups, lumps, pairs.

#include <algorithm>
#include <cstdio>
#include <vector>

#include "host/results/report_sections.h"

namespace vornhost {

namespace {

const char *const axes[3] = {"x", "y", "z"};
constexpr double arc_second = 3.14159265358979323846 / 648000.0;

} // namespace

std::string TextReport::points() const
{
    const std::string unit = units.length_name(), small_unit = units.small_length_name();
    std::vector<TextColumn> columns = {{"point", "", Align::left}, {"code", "", Align::left}};
    for (const char *axis : axes) columns.push_back({axis, unit});
    for (const char *axis : axes) columns.push_back({std::string("d") + axis, small_unit});
    for (const char *axis : axes) columns.push_back({std::string("s") + axis, small_unit});
    columns.push_back({"a", small_unit});
    columns.push_back({"b", small_unit});
    columns.push_back({"bearing", units.angle_name()});
    TextTable table(columns);
    for (const PointResult &p : results.points) {
        std::string code;
        for (int k = 0; k < 3; k++) {
            if (!has_axis(k)) continue;
            if (code.find(p.code[k]) == std::string::npos) code += (code.empty() ? "" : "/") + p.code[k];
        }
        std::vector<std::string> cells = {p.name, code};
        for (int k = 0; k < 3; k++) cells.push_back(length(p.adjusted[k] ? p.adjusted[k] : p.approximate[k]));
        for (int k = 0; k < 3; k++) {
            const bool corrected = p.adjusted[k] && p.approximate[k] && p.code[k] != "fixed";
            cells.push_back(corrected ? units.small_length(*p.adjusted[k] - *p.approximate[k]) : "");
        }
        for (int k = 0; k < 3; k++) cells.push_back(small_length(p.deviation[k]));
        const std::optional<EllipseResult> &e = p.ellipse[0];
        cells.push_back(e ? units.small_length(magnified(e->a)) : "");
        cells.push_back(e ? units.small_length(magnified(e->b)) : "");
        cells.push_back(e ? units.bearing(e->bearing) : "");
        table.add(cells);
    }
    return section("Points", table);
}

// Axes in space, the longest first, of points and of the pairs asked for.
std::string TextReport::ellipsoids() const
{
    const std::string unit = units.small_length_name(), angle = units.angle_name();
    TextTable table({{"point", "", Align::left},
                     {"to", "", Align::left},
                     {"a", unit},
                     {"bearing", angle},
                     {"elevation", angle},
                     {"b", unit},
                     {"bearing", angle},
                     {"elevation", angle},
                     {"c", unit},
                     {"bearing", angle},
                     {"elevation", angle}});
    const double factor = results.precision ? results.precision->ellipsoid_factor : 1.0;
    const auto add = [&](const std::string &from, const std::string &to, const std::optional<EllipsoidResult> &e) {
        if (!e) return;
        std::vector<std::string> cells = {from, to};
        for (int k = 0; k < 3; k++) {
            cells.push_back(units.small_length(factor * e->axis[k]));
            cells.push_back(units.bearing(e->bearing[k]));
            cells.push_back(units.bearing(e->elevation[k]));
        }
        table.add(cells);
    };
    for (const PointResult &p : results.points)
        if (!brief) add(p.name, "", p.ellipsoid);
    for (const PairResult &p : results.pairs) add(p.from, p.to, p.ellipsoid);
    return section("Ellipsoids of points, and of one point against another", table);
}

std::string TextReport::earth() const
{
    TextTable table({{"point", "", Align::left}, {"latitude", "°"}, {"longitude", "°"}, {"ellipsoidal height", "m"}});
    for (const PointResult &p : results.points)
        if (p.earth)
            table.add({p.name, decimal(p.earth->latitude, 10), decimal(p.earth->longitude, 10),
                       p.earth->height ? decimal(*p.earth->height, 4) : ""});
    return section("Places on the ellipsoid", table);
}

std::string TextReport::orientations() const
{
    const std::string unit = units.angle_name(), small_unit = units.small_angle_name();
    TextTable table({{"station", "", Align::left},
                     {"set-up", "", Align::left},
                     {"set", "", Align::left},
                     {"rx1", unit},
                     {"rx2", unit},
                     {"rx3", unit},
                     {"srx1", small_unit},
                     {"srx2", small_unit},
                     {"srx3", small_unit}});
    for (const OrientationResult &o : results.orientations) {
        std::vector<std::string> cells = {o.name, o.setup, o.set};
        for (int k = 0; k < 3; k++) {
            const bool tilt = k < 2 && o.rotation[k] == 0.0 && !o.deviation[k];
            cells.push_back(tilt ? "" : k < 2 ? units.signed_angle(o.rotation[k]) : units.angle(o.rotation[k]));
        }
        for (int k = 0; k < 3; k++) cells.push_back(small_angle(o.deviation[k]));
        table.add(cells);
    }
    return section("Rotations of the instruments", table);
}

std::string TextReport::groups() const
{
    TextTable table({{"group", "", Align::left},
                     {"additive", units.length_name()},
                     {"scale", ""},
                     {"refraction", ""},
                     {"s additive", units.small_length_name()},
                     {"s scale", "ppm"},
                     {"s refraction", ""}});
    for (const GroupResult &g : results.groups)
        table.add({g.name, length(g.value[0]), g.value[1] ? decimal(*g.value[1], 8) : "",
                   g.value[2] ? decimal(*g.value[2], 4) : "", small_length(g.deviation[0]),
                   g.deviation[1] ? decimal(*g.deviation[1] * 1e6, 2) : "",
                   g.deviation[2] ? decimal(*g.deviation[2], 4) : ""});
    return section("Constants of the instruments", table);
}

std::string TextReport::cameras() const
{
    static const char *const inner[10] = {"c", "x0", "y0", "a", "b", "k1", "k2", "k3", "p1", "p2"};
    TextTable table(
        {{"camera", "", Align::left}, {"parameter", "", Align::left}, {"value", ""}, {"standard deviation", ""}});
    const auto shown = [](double x, int k) {
        char text[60];
        std::snprintf(text, sizeof text, k < 3 ? "%.6f" : "%.6e", x);
        return std::string(text);
    };
    for (const CameraResult &c : results.cameras)
        for (int k = 0; k < 10; k++)
            if (c.value[k])
                table.add({c.name, inner[k], shown(*c.value[k], k), c.deviation[k] ? shown(*c.deviation[k], k) : ""});
    return section("Cameras", table);
}

std::string TextReport::lumps() const
{
    TextTable table({{"lump", ""},
                     {"epoch", ""},
                     {"against", ""},
                     {"parameter", "", Align::left},
                     {"value", ""},
                     {"standard deviation", ""},
                     {"unit", "", Align::left}});
    for (const LumpResult &l : results.lumps) {
        const std::vector<std::string> who = {std::to_string(l.lump), std::to_string(l.epoch),
                                              std::to_string(l.reference)};
        const auto add = [&](const std::string &name, const std::string &value, const std::string &sd,
                             const std::string &unit) {
            table.add({who[0], who[1], who[2], name, value, sd, unit});
        };
        for (int k = 0; k < 3; k++)
            add(std::string("t") + axes[k], units.small_length(l.translation[k]),
                small_length(l.translation_deviation[k]), units.small_length_name());
        for (int k = 0; k < 3; k++)
            add(std::string("r") + axes[k], units.small_angle(l.rotation[k]), small_angle(l.rotation_deviation[k]),
                units.small_angle_name());
        add("scale - 1", decimal((l.scale - 1.0) * 1e6, 2),
            l.scale_deviation ? decimal(*l.scale_deviation * 1e6, 2) : "", "ppm");
    }
    return section("Movements of lumps", table);
}

std::string TextReport::deflections() const
{
    TextTable table({{"point", "", Align::left}, {"xi", "\""}, {"eta", "\""}, {"sxi", "\""}, {"seta", "\""}});
    for (const DeflectionResult &d : results.deflections) {
        std::vector<std::string> cells = {d.point};
        for (const double v : d.value) cells.push_back(decimal(v / arc_second, 3));
        for (const auto &sd : d.deviation) cells.push_back(sd ? decimal(*sd / arc_second, 3) : "");
        table.add(cells);
    }
    return section("Deflections of the vertical", table);
}

// Shifts in metres, rotations in arc seconds, scale in millionths.
std::string TextReport::transformations() const
{
    static const char *const names[] = {"tx", "ty", "tz", "rx", "ry", "rz", "scale - 1"};
    TextTable table({{"transformation", "", Align::left},
                     {"parameter", "", Align::left},
                     {"value", ""},
                     {"standard deviation", ""},
                     {"unit", "", Align::left}});
    for (const TransformationResult &t : results.transformations)
        for (int k = 0; k < 7; k++) {
            const double unit = k < 3 ? 1.0 : k < 6 ? arc_second : 1e-6;
            const int digits = k < 3 ? 4 : k < 6 ? 6 : 5;
            const bool here = k < 3 && t.here;
            const double value = here ? (*t.here)[(size_t)k] : (k == 6 ? t.value[k] - 1.0 : t.value[k]) / unit;
            table.add({t.name, here ? std::string(names[k]) + " at the first point" : names[k], decimal(value, digits),
                       t.deviation[k] ? decimal(*t.deviation[k] / unit, digits) : "",
                       k < 3   ? "m"
                       : k < 6 ? "\""
                               : "ppm"});
            if (here) table.add({t.name, names[k], decimal(t.value[k], digits), "", "m"});
        }
    return section("Transformations into the systems of observations", table);
}

std::string TextReport::pairs() const
{
    const std::string unit = units.small_length_name();
    TextTable table({{"from", "", Align::left},
                     {"to", "", Align::left},
                     {"sdx", unit},
                     {"sdy", unit},
                     {"sdz", unit},
                     {"a", unit},
                     {"b", unit},
                     {"bearing", units.angle_name()}});
    for (const PairResult &p : results.pairs) {
        const std::optional<EllipseResult> &e = p.ellipse[0];
        table.add({p.from, p.to, small_length(p.deviation[0]), small_length(p.deviation[1]),
                   small_length(p.deviation[2]), e ? units.small_length(magnified(e->a)) : "",
                   e ? units.small_length(magnified(e->b)) : "", e ? units.bearing(e->bearing) : ""});
    }
    return section("Relative precision of pairs", table);
}

std::string TextReport::derived() const
{
    TextTable table({{"quantity", "", Align::left},
                     {"at", "", Align::left},
                     {"from", "", Align::left},
                     {"to", "", Align::left},
                     {"value", ""},
                     {"", "", Align::left},
                     {"standard deviation", ""},
                     {"", "", Align::left}});
    for (const DerivedResult &d : results.derived) {
        const bool angle = d.unit == "rad";
        const std::string sd = !d.deviation ? ""
                               : angle      ? units.small_angle(*d.deviation)
                                            : units.small_length(*d.deviation);
        table.add({d.kind, d.at, d.from, d.to, angle ? units.angle(d.value) : units.length(d.value),
                   angle ? units.angle_name() : units.length_name(), sd,
                   sd.empty() ? ""
                   : angle    ? units.small_angle_name()
                              : units.small_length_name()});
    }
    return section("Derived quantities", table);
}

// The points whose position, or height, is known worst.
std::string TextReport::weakest() const
{
    constexpr size_t most = 5;
    std::vector<const PointResult *> worst;
    for (const PointResult &p : results.points)
        if (p.uncertainty) worst.push_back(&p);
    if (worst.size() <= most) return {};
    // Those that differ by rounding alone keep the order of the file.
    std::stable_sort(worst.begin(), worst.end(),
                     [](auto *p, auto *q) { return (float)*p->uncertainty > (float)*q->uncertainty; });
    TextTable table({{"point", "", Align::left}, {"within, 95 %", units.small_length_name()}});
    for (size_t i = 0; i < most; i++) table.add({worst[i]->name, units.small_length(*worst[i]->uncertainty)});
    return section("Weakest points", table);
}

// Neighbours, which observations join, whose places to one another are known worst.
std::string TextReport::weak_pairs() const
{
    TextTable table({{"from", "", Align::left},
                     {"to", "", Align::left},
                     {"within, 95 %", units.small_length_name()},
                     {"distance", units.length_name()},
                     {"ratio", "ppm"}});
    for (const WeakPairResult &p : results.weak_pairs)
        table.add({p.from, p.to, units.small_length(p.uncertainty), units.length(p.distance),
                   p.distance > 0.0 ? decimal(1e6 * p.uncertainty / p.distance, 1) : ""});
    return section("Weakest pairs of neighbours", table);
}

} // namespace vornhost
