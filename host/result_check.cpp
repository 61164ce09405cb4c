// Search of the results for quantities that are not a number or infinite.

#include <cmath>

#include "results.h"

namespace vornhost {

namespace {

class Collector {
public:
    void check(const std::string &what, double value)
    {
        if (!std::isfinite(value)) names.push_back(what);
    }
    void check(const std::string &what, const std::optional<double> &value)
    {
        if (value) check(what, *value);
    }
    void check(const std::string &what, const EllipseResult &e)
    {
        check(what + " a", e.a);
        check(what + " b", e.b);
        check(what + " bearing", e.bearing);
    }
    void check(const std::string &what, const std::optional<EllipseResult> &e)
    {
        if (e) check(what, *e);
    }
    template <class Value>
    void check_axes(const std::string &what, const Value (&values)[3], const char *const (&axes)[3])
    {
        for (int c = 0; c < 3; c++) check(what + " " + axes[c], values[c]);
    }

    std::vector<std::string> names;
};

const char *const axes[3] = {"x", "y", "z"};
const char *const rotations[3] = {"rx1", "rx2", "rx3"};
const char *const planes[3] = {"xy", "xz", "yz"};
const char *const constants[3] = {"additive", "scale", "refraction"};

void check_points(const Results &r, Collector &all)
{
    for (const PointResult &p : r.points) {
        const std::string point = "point " + p.name + ": ";
        all.check_axes(point + "approximate", p.approximate, axes);
        all.check_axes(point + "adjusted", p.adjusted, axes);
        all.check_axes(point + "standard deviation", p.deviation, axes);
        all.check_axes(point + "ellipse", p.ellipse, planes);
    }
    for (const OrientationResult &o : r.orientations) {
        all.check_axes("orientation of " + o.name + ":", o.rotation, rotations);
        all.check_axes("orientation of " + o.name + ": standard deviation", o.deviation, rotations);
    }
}

void check_observations(const Results &r, Collector &all)
{
    for (const ResidualResult &m : r.residuals) {
        const std::string name = m.kind + " " + m.from + " " + m.to + ": ";
        all.check(name + "value", m.value);
        all.check(name + "sigma", m.sigma);
        all.check(name + "residual", m.residual);
        all.check(name + "standard deviation of the residual", m.deviation);
    }
    for (const KindResult &k : r.kinds) {
        all.check(k.kind + ": sigma a priori", k.sigma_apriori);
        all.check(k.kind + ": sigma a posteriori", k.sigma_aposteriori);
    }
}

void check_parameters(const Results &r, Collector &all)
{
    for (const GroupResult &g : r.groups) {
        all.check_axes("group " + g.name + ":", g.value, constants);
        all.check_axes("group " + g.name + ": standard deviation", g.deviation, constants);
    }
    for (const LumpResult &l : r.lumps) {
        const std::string name = "lump " + std::to_string(l.lump) + ", epoch " + std::to_string(l.epoch) + ": ";
        all.check_axes(name + "translation", l.translation, axes);
        all.check_axes(name + "rotation", l.rotation, axes);
        all.check(name + "scale", l.scale);
        all.check_axes(name + "standard deviation of translation", l.translation_deviation, axes);
        all.check_axes(name + "standard deviation of rotation", l.rotation_deviation, axes);
        all.check(name + "standard deviation of scale", l.scale_deviation);
    }
    for (const PairResult &p : r.pairs) {
        const std::string name = "pair " + p.from + " " + p.to + ": ";
        all.check_axes(name + "standard deviation", p.deviation, axes);
        all.check_axes(name + "ellipse", p.ellipse, planes);
    }
}

} // namespace

std::vector<std::string> not_numbers(const Results &results)
{
    Collector all;
    all.check("sigma a priori", results.sigma_apriori);
    all.check("sigma a posteriori", results.sigma_aposteriori);
    check_points(results, all);
    check_observations(results, all);
    check_parameters(results, all);
    return all.names;
}

} // namespace vornhost
