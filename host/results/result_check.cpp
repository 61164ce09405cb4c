// Search of the results for quantities that are not a number or infinite.

#include <cmath>

#include "host/results/results.h"

namespace vornhost {

namespace {

using Lines = std::vector<std::string>;

bool is_whole(double value) { return std::isfinite(value); }
bool is_whole(const EllipseResult &e) { return is_whole(e.a) && is_whole(e.b) && is_whole(e.bearing); }
template <class Value> bool is_whole(const std::optional<Value> &value) { return !value || is_whole(*value); }

// The names of one kind of quantity, as many as a line takes, and how many there are.
class Collector {
public:
    explicit Collector(const char *kind) : what(kind) {}

    void check(const std::string &name, double value)
    {
        if (std::isfinite(value)) return;
        if (found++ < shown) names += (names.empty() ? "" : ", ") + name;
    }
    void check(const std::string &name, const std::optional<double> &value)
    {
        if (value) check(name, *value);
    }
    void check(const std::string &name, const EllipseResult &e)
    {
        check(name + " a", e.a);
        check(name + " b", e.b);
        check(name + " bearing", e.bearing);
    }
    void check(const std::string &name, const std::optional<EllipseResult> &e)
    {
        if (e) check(name, *e);
    }
    template <class Value>
    void check_axes(const std::string &name, const Value (&values)[3], const char *const (&axes)[3])
    {
        for (int c = 0; c < 3; c++)
            if (!is_whole(values[c])) check(name + " " + axes[c], values[c]);
    }
    void give(Lines &lines) const
    {
        if (found == 0) return;
        const std::string more = found > shown ? " and " + std::to_string(found - shown) + " more" : "";
        lines.push_back(what + " that are not finite numbers: " + names + more);
    }

private:
    static constexpr size_t shown = 5;
    std::string what, names;
    size_t found = 0;
};

const char *const axes[3] = {"x", "y", "z"};
const char *const rotations[3] = {"rx1", "rx2", "rx3"};
const char *const planes[3] = {"xy", "xz", "yz"};
const char *const inner[10] = {"c", "x0", "y0", "a", "b", "k1", "k2", "k3", "p1", "p2"};
const char *const constants[3] = {"additive", "scale", "refraction"};

void check_variance(const Results &r, Lines &lines)
{
    Collector sigma("standard deviations of unit weight"), kinds("standard deviations of kinds");
    sigma.check("a priori", r.sigma_apriori);
    sigma.check("a posteriori", r.sigma_aposteriori);
    for (const KindResult &k : r.kinds) {
        kinds.check(k.kind + " a priori", k.sigma_apriori);
        kinds.check(k.kind + " a posteriori", k.sigma_aposteriori);
    }
    for (const Collector *all : {&sigma, &kinds}) all->give(lines);
}

void check_points(const Results &r, Lines &lines)
{
    Collector approximate("approximate coordinates"), adjusted("adjusted coordinates"),
        deviation("standard deviations of coordinates"), ellipse("ellipses of points");
    for (const PointResult &p : r.points) {
        approximate.check_axes(p.name, p.approximate, axes);
        adjusted.check_axes(p.name, p.adjusted, axes);
        deviation.check_axes(p.name, p.deviation, axes);
        ellipse.check_axes(p.name, p.ellipse, planes);
    }
    for (const Collector *all : {&approximate, &adjusted, &deviation, &ellipse}) all->give(lines);
}

void check_orientations(const Results &r, Lines &lines)
{
    Collector rotation("orientations"), deviation("standard deviations of orientations");
    for (const OrientationResult &o : r.orientations) {
        rotation.check_axes(o.name, o.rotation, rotations);
        deviation.check_axes(o.name, o.deviation, rotations);
    }
    for (const Collector *all : {&rotation, &deviation}) all->give(lines);
}

// Whether all numbers are finite: the sum of finite ones is, but for sizes that no result has.
bool is_whole(const ResidualResult &m)
{
    return std::isfinite(m.value + m.sigma + m.residual + m.deviation.value_or(0.0) + m.adjusted.value_or(0.0) +
                         m.redundancy.value_or(0.0) + m.normalised.value_or(0.0));
}

void check_observations(const Results &r, Lines &lines)
{
    Collector value("observed values"), sigma("standard deviations of observations"), residual("residuals"),
        deviation("standard deviations of residuals"), adjusted("adjusted observations"), redundancy("redundancies"),
        normalised("normalised residuals");
    for (const ResidualResult &m : r.residuals) {
        if (is_whole(m)) continue;
        const std::string name = m.kind + " " + m.from + " " + m.to;
        value.check(name, m.value);
        sigma.check(name, m.sigma);
        residual.check(name, m.residual);
        deviation.check(name, m.deviation);
        adjusted.check(name, m.adjusted);
        redundancy.check(name, m.redundancy);
        normalised.check(name, m.normalised);
    }
    for (const Collector *all : {&value, &sigma, &residual, &deviation, &adjusted, &redundancy, &normalised})
        all->give(lines);
}

void check_groups(const Results &r, Lines &lines)
{
    Collector value("constants of groups"), deviation("standard deviations of constants of groups");
    for (const GroupResult &g : r.groups) {
        value.check_axes(g.name, g.value, constants);
        deviation.check_axes(g.name, g.deviation, constants);
    }
    for (const Collector *all : {&value, &deviation}) all->give(lines);
}

void check_cameras(const Results &r, Lines &lines)
{
    Collector value("parameters of cameras"), deviation("standard deviations of parameters of cameras");
    for (const CameraResult &c : r.cameras) {
        for (int k = 0; k < 10; k++) value.check(c.name + " " + inner[k], c.value[k]);
        for (int k = 0; k < 10; k++) deviation.check(c.name + " " + inner[k], c.deviation[k]);
    }
    for (const Collector *all : {&value, &deviation}) all->give(lines);
}

void check_lumps(const Results &r, Lines &lines)
{
    Collector motion("motions of lumps"), deviation("standard deviations of motions of lumps");
    for (const LumpResult &l : r.lumps) {
        const std::string name = "lump " + std::to_string(l.lump) + " epoch " + std::to_string(l.epoch);
        motion.check_axes(name + " translation", l.translation, axes);
        motion.check_axes(name + " rotation", l.rotation, axes);
        motion.check(name + " scale", l.scale);
        deviation.check_axes(name + " translation", l.translation_deviation, axes);
        deviation.check_axes(name + " rotation", l.rotation_deviation, axes);
        deviation.check(name + " scale", l.scale_deviation);
    }
    for (const Collector *all : {&motion, &deviation}) all->give(lines);
}

void check_earth(const Results &r, Lines &lines)
{
    Collector value("deflections and transformations"), deviation("their standard deviations");
    for (const DeflectionResult &d : r.deflections)
        for (int k = 0; k < 2; k++) {
            value.check("deflection " + d.point, d.value[k]);
            deviation.check("deflection " + d.point, d.deviation[k]);
        }
    for (const TransformationResult &t : r.transformations)
        for (int k = 0; k < 7; k++) {
            value.check("transformation " + t.name, t.value[k]);
            deviation.check("transformation " + t.name, t.deviation[k]);
        }
    for (const Collector *all : {&value, &deviation}) all->give(lines);
}

void check_pairs(const Results &r, Lines &lines)
{
    Collector deviation("standard deviations of pairs"), ellipse("ellipses of pairs");
    for (const PairResult &p : r.pairs) {
        deviation.check_axes(p.from + " " + p.to, p.deviation, axes);
        ellipse.check_axes(p.from + " " + p.to, p.ellipse, planes);
    }
    for (const Collector *all : {&deviation, &ellipse}) all->give(lines);
}

} // namespace

Lines not_numbers(const Results &results)
{
    Lines lines;
    for (const auto check : {check_variance, check_points, check_orientations, check_observations, check_groups,
                             check_cameras, check_lumps, check_earth, check_pairs})
        check(results, lines);
    return lines;
}

} // namespace vornhost
