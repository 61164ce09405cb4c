#include "host/results/json_writer.h"

#include <nlohmann/json.hpp>

namespace vornhost {

namespace {

using json = nlohmann::ordered_json; // writes numbers that are not finite as null

constexpr int schema = 2;

const char *const axes[3] = {"x", "y", "z"};
const char *const planes[3] = {"xy", "xz", "yz"};
const char *const rotations[3] = {"rx1", "rx2", "rx3"};
const char *const inner[10] = {"c", "x0", "y0", "a", "b", "k1", "k2", "k3", "p1", "p2"};

template <class Value> void put(json &object, const char *key, const std::optional<Value> &value)
{
    if (value) object[key] = *value;
}

json to_object(const EllipseResult &e)
{
    return {{"semi_major_axis", e.a}, {"semi_minor_axis", e.b}, {"bearing", e.bearing}};
}

json to_object(double value) { return value; }

// Adds an object of the values that are there; nothing when none is.
template <class Value, int n>
void put_axes(json &object, const char *key, const std::optional<Value> (&values)[n], const char *const (&names)[n])
{
    json axis = json::object();
    for (int c = 0; c < n; c++)
        if (values[c]) axis[names[c]] = to_object(*values[c]);
    if (!axis.empty()) object[key] = axis;
}

void put_axes(json &object, const char *key, const double (&values)[3], const char *const (&names)[3])
{
    for (int c = 0; c < 3; c++) object[key][names[c]] = values[c];
}

json to_object(const PointResult &p)
{
    json point = {{"name", p.name}, {"station", p.station}};
    for (int c = 0; c < 3; c++)
        if (!p.code[c].empty()) point["code"][axes[c]] = p.code[c];
    put_axes(point, "approximate", p.approximate, axes);
    put_axes(point, "adjusted", p.adjusted, axes);
    put_axes(point, "standard_deviation", p.deviation, axes);
    put_axes(point, "ellipse", p.ellipse, planes);
    for (const MoveResult &m : p.moves) {
        json move = {{"epoch", m.epoch}};
        put_axes(move, "by", m.by, axes);
        point["moves"].push_back(move);
    }
    return point;
}

json to_object(const OrientationResult &o)
{
    json orientation = {{"station", o.name}};
    put_axes(orientation, "rotation", o.rotation, rotations);
    put_axes(orientation, "standard_deviation", o.deviation, rotations);
    return orientation;
}

json to_object(const ResidualResult &r)
{
    json residual = {{"kind", r.kind}, {"from", r.from}, {"to", r.to}, {"file", r.file}, {"line", r.line}};
    if (!r.component.empty()) residual["component"] = r.component;
    residual["unit"] = r.unit;
    if (r.observed) residual["value"] = r.value;
    residual["sigma"] = r.sigma;
    if (r.observed) residual["residual"] = r.residual;
    put(residual, "adjusted", r.adjusted);
    put(residual, "standard_deviation", r.deviation);
    put(residual, "redundancy", r.redundancy);
    put(residual, "normalised", r.normalised);
    json marks = json::object();
    put(marks, "outside_histogram", r.outside);
    put(marks, "normal_test", r.normal);
    put(marks, "normal_test_divided", r.normal_divided);
    put(marks, "tau_test", r.tau);
    put(marks, "tau_test_divided", r.tau_divided);
    if (!marks.empty()) residual["rejected"] = marks;
    return residual;
}

json to_object(const KindResult &k)
{
    json kind = {{"kind", k.kind}, {"sigma_a_priori", k.sigma_apriori}, {"sigma_a_posteriori", k.sigma_aposteriori}};
    put(kind, "goodness_of_fit_passed", k.goodness_of_fit);
    kind["rejected"] = {{"normal_test", k.over_normal},
                        {"normal_test_divided", k.over_normal_divided},
                        {"tau_test", k.over_tau},
                        {"tau_test_divided", k.over_tau_divided}};
    return kind;
}

json to_object(const GroupResult &g)
{
    static const char *const constants[3] = {"additive_constant", "scale", "refraction"};
    json group = {{"name", g.name}};
    put_axes(group, "value", g.value, constants);
    put_axes(group, "standard_deviation", g.deviation, constants);
    return group;
}

json to_object(const CameraResult &c)
{
    json camera = {{"name", c.name}};
    put_axes(camera, "value", c.value, inner);
    put_axes(camera, "standard_deviation", c.deviation, inner);
    return camera;
}

json to_object(const LumpResult &l)
{
    json lump = {{"lump", l.lump}, {"epoch", l.epoch}, {"reference_epoch", l.reference}};
    put_axes(lump, "translation", l.translation, axes);
    put_axes(lump, "rotation", l.rotation, axes);
    lump["scale"] = l.scale;
    put_axes(lump, "translation_standard_deviation", l.translation_deviation, axes);
    put_axes(lump, "rotation_standard_deviation", l.rotation_deviation, axes);
    put(lump, "scale_standard_deviation", l.scale_deviation);
    return lump;
}

json to_object(const PairResult &p)
{
    json pair = {{"from", p.from}, {"to", p.to}};
    put_axes(pair, "standard_deviation", p.deviation, axes);
    put_axes(pair, "ellipse", p.ellipse, planes);
    return pair;
}

json to_object(const LeftOut &l)
{
    return {{"file", l.file}, {"line", l.line}, {"from", l.from}, {"to", l.to}, {"reason", l.reason}};
}

json to_object(const Account &a);

template <class Record> json list(const std::vector<Record> &records)
{
    json all = json::array();
    for (const Record &record : records) all.push_back(to_object(record));
    return all;
}

json to_object(const Account &a)
{
    return {{"kind", a.kind}, {"read", a.read}, {"used", a.used}, {"left_out", list(a.left_out)}};
}

json suspicious(const Results &results)
{
    json all = json::array();
    for (const size_t i : results.suspicious) {
        const ResidualResult &r = results.residuals[i];
        all.push_back({{"kind", r.kind}, {"from", r.from}, {"to", r.to}, {"file", r.file}, {"line", r.line}});
        put(all.back(), "normalised", r.normalised);
    }
    return all;
}

json head(const Results &r)
{
    json all = {{"schema", schema},
                {"program", r.program},
                {"version", r.version},
                {"title", r.title},
                {"file", r.file},
                {"solver", r.solver},
                {"mode", r.mode},
                {"dimension", r.dimension},
                {"units", {{"length", "m"}, {"angle", "rad"}}},
                {"adjusted", r.adjusted},
                {"stage", r.stage},
                {"code", r.code},
                {"engine_code", r.engine_code},
                {"words", json(r.words)},
                {"notes", json(r.notes)}};
    if (!r.datum.empty()) all["datum"] = r.datum;
    put(all, "iterations", r.iterations);
    all["seconds"] = r.seconds;
    put(all, "degrees_of_freedom", r.degrees_of_freedom);
    put(all, "sigma_a_priori", r.sigma_apriori);
    put(all, "sigma_a_posteriori", r.sigma_aposteriori);
    put(all, "one_tailed_test_passed", r.one_tailed_test);
    if (r.variance_test)
        all["variance_test"] = {{"squares", r.variance_test->squares},
                                {"lower", r.variance_test->lower},
                                {"upper", r.variance_test->upper},
                                {"passed", r.variance_test->passed()}};
    return all;
}

} // namespace

std::string to_json(const Results &results)
{
    json all = head(results);
    all["points"] = list(results.points);
    all["orientations"] = list(results.orientations);
    all["residuals"] = list(results.residuals);
    all["kinds"] = list(results.kinds);
    all["groups"] = list(results.groups);
    all["cameras"] = list(results.cameras);
    all["lumps"] = list(results.lumps);
    all["pairs"] = list(results.pairs);
    all["suspicious"] = suspicious(results);
    all["observations"] = list(results.accounts);
    return all.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

} // namespace vornhost
