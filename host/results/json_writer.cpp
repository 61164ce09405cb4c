#include "host/results/json_writer.h"

#include <algorithm>

namespace vornhost {

namespace {

constexpr int schema = 2;

const char *const axes[3] = {"x", "y", "z"};
const char *const planes[3] = {"xy", "xz", "yz"};
const char *const rotations[3] = {"rx1", "rx2", "rx3"};
const char *const inner[10] = {"c", "x0", "y0", "a", "b", "k1", "k2", "k3", "p1", "p2"};

void put(JsonText &json, const char *key, double value) { json.pair(key, value); }

void put(JsonText &json, const char *key, const EllipseResult &e)
{
    json.key(key).open_object();
    json.pair("semi_major_axis", e.a);
    json.pair("semi_minor_axis", e.b);
    json.pair("bearing", e.bearing);
    json.close();
}

void put_three(JsonText &json, const char *key, const double (&values)[3])
{
    json.key(key).open_array();
    for (const double x : values) json.value(x);
    json.close();
}

void put(JsonText &json, const char *key, const std::optional<EllipsoidResult> &e)
{
    if (!e) return;
    json.key(key).open_object();
    put_three(json, "semi_axes", e->axis);
    put_three(json, "bearings", e->bearing);
    put_three(json, "elevations", e->elevation);
    json.close();
}

// An object of the values that are there; nothing when none is.
template <class Value, int n>
void put_axes(JsonText &json, const char *key, const std::optional<Value> (&values)[n], const char *const (&names)[n])
{
    if (std::none_of(values, values + n, [](const auto &v) { return v.has_value(); })) return;
    json.key(key).open_object();
    for (int c = 0; c < n; c++)
        if (values[c]) put(json, names[c], *values[c]);
    json.close();
}

void put_axes(JsonText &json, const char *key, const double (&values)[3], const char *const (&names)[3])
{
    json.key(key).open_object();
    for (int c = 0; c < 3; c++) json.pair(names[c], values[c]);
    json.close();
}

void put_codes(JsonText &json, const std::string (&codes)[3])
{
    if (std::all_of(codes, codes + 3, [](const std::string &c) { return c.empty(); })) return;
    json.key("code").open_object();
    for (int c = 0; c < 3; c++)
        if (!codes[c].empty()) json.pair(axes[c], codes[c]);
    json.close();
}

void put_moves(JsonText &json, const std::vector<MoveResult> &moves)
{
    if (moves.empty()) return;
    json.key("moves").open_array();
    for (const MoveResult &m : moves) {
        json.open_object();
        json.pair("epoch", m.epoch);
        put_axes(json, "by", m.by, axes);
        json.close();
    }
    json.close();
}

void put_earth(JsonText &json, const PointResult &p)
{
    if (!p.earth) return;
    json.key("geographic").open_object();
    json.pair("latitude", p.earth->latitude);
    json.pair("longitude", p.earth->longitude);
    json.pair("ellipsoidal_height", p.earth->height);
    json.close();
    if (!p.earth->geocentric) return;
    json.key("geocentric").open_object();
    for (int k = 0; k < 3; k++) json.pair(axes[k], (*p.earth->geocentric)[(size_t)k]);
    json.close();
}

void put(JsonText &json, const PointResult &p)
{
    json.pair("name", p.name);
    json.pair("station", p.station);
    put_codes(json, p.code);
    put_axes(json, "approximate", p.approximate, axes);
    put_axes(json, "adjusted", p.adjusted, axes);
    put_axes(json, "standard_deviation", p.deviation, axes);
    put_axes(json, "ellipse", p.ellipse, planes);
    put(json, "ellipsoid", p.ellipsoid);
    json.pair("uncertainty", p.uncertainty);
    put_earth(json, p);
    put_moves(json, p.moves);
}

// A text that is not empty.
void put_text(JsonText &json, const char *key, const std::string &text)
{
    if (!text.empty()) json.pair(key, text);
}

void put(JsonText &json, const ComponentResult &c)
{
    json.pair("name", c.name);
    json.pair("rows", c.rows);
    json.pair("redundancy", c.redundancy);
    json.pair("factor", c.factor);
    json.pair("standard_deviation", c.deviation);
    json.pair("sigma", c.sigma);
    if (c.sigma) json.pair("unit", c.unit);
    json.pair("used", c.used);
}

void put(JsonText &json, const OrientationResult &o)
{
    json.pair("station", o.name);
    put_text(json, "setup", o.setup);
    put_text(json, "set", o.set);
    put_axes(json, "rotation", o.rotation, rotations);
    put_axes(json, "standard_deviation", o.deviation, rotations);
}

// The head that residuals and suspicious observations share.
void put_observation(JsonText &json, const ResidualResult &r, const RowWords &words)
{
    json.pair("kind", r.kind);
    put_text(json, "at", words.at);
    json.pair("from", r.from);
    json.pair("to", r.to);
    json.pair("file", r.file);
    json.pair("line", r.line);
    put_text(json, "setup", words.setup);
    put_text(json, "set", words.set);
    put_text(json, "id", words.id);
    put_text(json, "remark", words.remark);
}

void put_marks(JsonText &json, const ResidualResult &r)
{
    if (!r.outside && !r.normal && !r.normal_divided && !r.tau && !r.tau_divided) return;
    json.key("rejected").open_object();
    json.pair("outside_histogram", r.outside);
    json.pair("normal_test", r.normal);
    json.pair("normal_test_divided", r.normal_divided);
    json.pair("tau_test", r.tau);
    json.pair("tau_test_divided", r.tau_divided);
    json.close();
}

void put_test(JsonText &json, const ResidualResult &r)
{
    json.pair("checked", r.checked);
    if (!r.test) return;
    json.key("test").open_object();
    json.pair("p_value", r.test->probability);
    if (r.test->probability) json.pair("rejected", r.test->rejected);
    json.pair("detectable", r.test->detectable);
    json.pair("bias_to_noise", r.test->bias_to_noise);
    json.pair("shift", r.test->shift);
    json.close();
}

void put_residual(JsonText &json, const ResidualResult &r, const RowWords &words)
{
    put_observation(json, r, words);
    if (!r.component.empty()) json.pair("component", r.component);
    json.pair("unit", r.unit);
    json.pair("raw", r.raw);
    if (!r.corrections.empty()) {
        json.key("corrections").open_object();
        for (const CorrectionResult &c : r.corrections) json.pair(c.name, c.value);
        json.close();
    }
    if (r.observed) json.pair("value", r.value);
    json.pair("sigma", r.sigma);
    if (r.observed) json.pair("residual", r.residual);
    json.pair("adjusted", r.adjusted);
    json.pair("standard_deviation", r.deviation);
    json.pair("redundancy", r.redundancy);
    json.pair("normalised", r.normalised);
    put_test(json, r);
    put_marks(json, r);
}

void put(JsonText &json, const KindResult &k)
{
    json.pair("kind", k.kind);
    json.pair("sigma_a_priori", k.sigma_apriori);
    json.pair("sigma_a_posteriori", k.sigma_aposteriori);
    json.pair("goodness_of_fit_passed", k.goodness_of_fit);
    json.key("rejected").open_object();
    json.pair("normal_test", k.over_normal);
    json.pair("normal_test_divided", k.over_normal_divided);
    json.pair("tau_test", k.over_tau);
    json.pair("tau_test_divided", k.over_tau_divided);
    json.close();
}

void put(JsonText &json, const GroupResult &g)
{
    static const char *const constants[3] = {"additive_constant", "scale", "refraction"};
    json.pair("name", g.name);
    put_axes(json, "value", g.value, constants);
    put_axes(json, "standard_deviation", g.deviation, constants);
}

void put(JsonText &json, const CameraResult &c)
{
    json.pair("name", c.name);
    put_axes(json, "value", c.value, inner);
    put_axes(json, "standard_deviation", c.deviation, inner);
}

void put(JsonText &json, const LumpResult &l)
{
    json.pair("lump", l.lump);
    json.pair("epoch", l.epoch);
    json.pair("reference_epoch", l.reference);
    put_axes(json, "translation", l.translation, axes);
    put_axes(json, "rotation", l.rotation, axes);
    json.pair("scale", l.scale);
    put_axes(json, "translation_standard_deviation", l.translation_deviation, axes);
    put_axes(json, "rotation_standard_deviation", l.rotation_deviation, axes);
    json.pair("scale_standard_deviation", l.scale_deviation);
}

void put(JsonText &json, const PairResult &p)
{
    json.pair("from", p.from);
    json.pair("to", p.to);
    put_axes(json, "standard_deviation", p.deviation, axes);
    put_axes(json, "ellipse", p.ellipse, planes);
    put(json, "ellipsoid", p.ellipsoid);
    json.pair("uncertainty", p.uncertainty);
}

void put(JsonText &json, const WeakPairResult &p)
{
    json.pair("from", p.from);
    json.pair("to", p.to);
    json.pair("uncertainty", p.uncertainty);
    json.pair("distance", p.distance);
}

void put(JsonText &json, const LeftOut &l)
{
    json.pair("file", l.file);
    json.pair("line", l.line);
    put_text(json, "at", l.at);
    json.pair("from", l.from);
    json.pair("to", l.to);
    json.pair("reason", l.reason);
}

void put(JsonText &json, const SnoopStep &s)
{
    json.pair("step", s.taken_again ? "taken_again" : "left_out");
    json.pair("kind", s.kind);
    put_text(json, "at", s.at);
    json.pair("from", s.from);
    json.pair("to", s.to);
    json.pair("file", s.file);
    json.pair("line", s.line);
    if (s.table) json.pair("table", s.table);
    if (s.table) json.pair("row", (int)s.row);
    json.pair("normalised", s.normalised);
    json.pair("sigma_a_posteriori", s.sigma);
}

void put(JsonText &json, const DerivedResult &d)
{
    json.pair("kind", d.kind);
    put_text(json, "at", d.at);
    json.pair("from", d.from);
    json.pair("to", d.to);
    json.pair("unit", d.unit);
    json.pair("value", d.value);
    json.pair("standard_deviation", d.deviation);
}

template <class Record> void put_list(JsonText &json, const char *key, const std::vector<Record> &records);

void put_texts(JsonText &json, const char *key, const std::vector<std::string> &texts)
{
    json.key(key).open_array();
    for (const std::string &text : texts) json.value(text);
    json.close();
}

void put(JsonText &json, const RowPlace &r)
{
    json.pair("file", r.file);
    json.pair("line", r.line);
}

void put(JsonText &json, const ClosureResult &c)
{
    put_text(json, "at", c.at);
    put_texts(json, "points", c.points);
    json.pair("misclosure", c.misclosure);
    put_axes(json, "components", c.off, axes);
    json.pair("limit", c.limit);
    json.pair("length", c.length);
    put_list(json, "rows", c.rows);
}

void put(JsonText &json, const ClosuresResult &c)
{
    json.pair("kind", c.kind);
    json.pair("unit", c.unit);
    json.pair("found", (int)c.found);
    json.pair("beyond_limit", (int)c.beyond);
    json.pair("not_formed", (int)c.missed);
    put_list(json, "worst", c.worst);
}

void put(JsonText &json, const Account &a)
{
    json.pair("kind", a.kind);
    json.pair("read", a.read);
    json.pair("used", a.used);
    put_list(json, "left_out", a.left_out);
}

template <class Record> void put_list(JsonText &json, const char *key, const std::vector<Record> &records)
{
    json.key(key).open_array();
    for (const Record &record : records) {
        json.open_object();
        put(json, record);
        json.close();
    }
    json.close();
}

void put_residuals(JsonText &json, const Results &results)
{
    json.key("residuals").open_array();
    for (const ResidualResult &r : results.residuals) {
        json.open_object();
        put_residual(json, r, results.words_of(r));
        json.close();
    }
    json.close();
}

void put_suspicious(JsonText &json, const Results &results)
{
    json.key("suspicious").open_array();
    for (const size_t i : results.suspicious) {
        json.open_object();
        put_observation(json, results.residuals[i], results.words_of(results.residuals[i]));
        json.pair("normalised", results.residuals[i].normalised);
        json.close();
    }
    json.close();
}

void put_variance_test(JsonText &json, const VarianceTest &t)
{
    json.key("variance_test").open_object();
    json.pair("squares", t.squares);
    json.pair("lower", t.lower);
    json.pair("upper", t.upper);
    json.pair("passed", t.passed());
    json.pair("level", t.level);
    json.pair("p_value", t.probability);
    json.pair("one_sided_limit", t.one_sided_limit);
    json.pair("one_sided_passed", t.one_sided_passed());
    json.pair("one_sided_p_value", t.one_sided_probability);
    json.close();
}

void put_tests(JsonText &json, const TestsResult &t)
{
    json.key("tests").open_object();
    json.pair("test", t.test);
    json.pair("correction", t.sidak ? "sidak" : "none");
    json.pair("level", t.level);
    json.pair("level_of_one", t.single_level);
    json.pair("power", t.power);
    json.pair("limit", t.limit);
    json.pair("least_redundancy", t.least_redundancy);
    json.pair("tested", t.tested);
    json.pair("rejected", t.rejected);
    json.pair("unchecked", t.unchecked);
    json.close();
}

void put_precision(JsonText &json, const PrecisionResult &p)
{
    json.key("precision").open_object();
    json.pair("variance_factor", p.a_priori ? "a_priori" : "a_posteriori");
    json.pair("sigma", p.sigma);
    json.pair("confidence", p.confidence);
    if (p.confidence) json.pair("ellipse_factor", p.ellipse_factor);
    if (p.confidence) json.pair("ellipsoid_factor", p.ellipsoid_factor);
    json.close();
}

// Where a residual stands among the residuals, and what it is.
void put_place(JsonText &json, const Results &results, size_t i)
{
    json.pair("residual", (int)i);
    put_observation(json, results.residuals[i], results.words_of(results.residuals[i]));
    put_text(json, "component", results.residuals[i].component);
}

void put_suspects(JsonText &json, const Results &results)
{
    if (!results.tests) return;
    json.key("suspects").open_array();
    for (const SuspectResult &s : results.suspects) {
        json.open_object();
        put_place(json, results, s.residual);
        json.pair("unit", results.residuals[s.residual].unit);
        json.pair("error", s.error);
        json.pair("would_read", s.would_read);
        json.pair("shift", s.shift);
        put_text(json, "point", s.point);
        json.key("not_told_apart_from").open_array();
        for (const AlikeResult &a : s.alike) {
            json.open_object();
            put_place(json, results, a.residual);
            json.pair("correlation", a.correlation);
            json.close();
        }
        json.close();
        json.close();
    }
    json.close();
}

void put_robust(JsonText &json, const Results &results)
{
    if (results.robust.empty()) return;
    json.key("robust").open_object();
    json.pair("estimator", results.robust);
    json.key("weights").open_array();
    for (const WeightResult &w : results.weights) {
        json.open_object();
        put_place(json, results, w.residual);
        json.pair("weight", w.weight);
        json.close();
    }
    json.close();
    json.close();
}

void put_joint_tests(JsonText &json, const Results &results)
{
    if (results.joint_tests.empty()) return;
    json.key("joint_tests").open_array();
    for (const JointTestResult &t : results.joint_tests) {
        json.open_object();
        json.pair("residual", (int)t.first);
        json.pair("components", t.components);
        json.pair("rank", t.rank);
        json.pair("squares", t.squares);
        json.pair("p_value", t.probability);
        if (t.probability) json.pair("rejected", t.rejected);
        json.close();
    }
    json.close();
}

void put_run(JsonText &json, const Results &r)
{
    json.pair("schema", schema);
    json.pair("program", r.program);
    json.pair("version", r.version);
    json.pair("title", r.title);
    json.pair("file", r.file);
    json.pair("solver", r.solver);
    json.pair("mode", r.mode);
    json.pair("dimension", r.dimension);
    json.key("units").open_object();
    json.pair("length", "m");
    json.pair("angle", "rad");
    json.close();
    if (!r.crs) return;
    json.key("reference_system").open_object();
    json.pair("network", r.crs->network);
    put_text(json, "name", r.crs->name);
    put_text(json, "heights", r.crs->heights);
    json.pair("epoch", r.crs->epoch);
    json.close();
}

void put_head(JsonText &json, const Results &r)
{
    put_run(json, r);
    json.pair("adjusted", r.adjusted);
    json.pair("stage", r.stage);
    json.pair("code", r.code);
    json.pair("engine_code", r.engine_code);
    put_texts(json, "words", r.words);
    put_texts(json, "notes", r.notes);
    if (!r.datum.empty()) json.pair("datum", r.datum);
    json.pair("iterations", r.iterations);
    json.pair("seconds", r.seconds);
    json.pair("degrees_of_freedom", r.degrees_of_freedom);
    json.pair("sigma_a_priori", r.sigma_apriori);
    json.pair("sigma_a_posteriori", r.sigma_aposteriori);
    json.pair("one_tailed_test_passed", r.one_tailed_test);
    if (r.variance_test) put_variance_test(json, *r.variance_test);
    if (r.tests) put_tests(json, *r.tests);
    if (r.precision) put_precision(json, *r.precision);
}

} // namespace

void write_json(const Results &results, const JsonText::Take &take)
{
    JsonText json(take);
    json.open_object();
    put_head(json, results);
    put_list(json, "points", results.points);
    put_list(json, "orientations", results.orientations);
    put_residuals(json, results);
    put_list(json, "kinds", results.kinds);
    if (!results.components.empty()) put_list(json, "components", results.components);
    put_list(json, "groups", results.groups);
    put_list(json, "cameras", results.cameras);
    put_list(json, "lumps", results.lumps);
    put_list(json, "pairs", results.pairs);
    if (!results.weak_pairs.empty()) put_list(json, "weak_pairs", results.weak_pairs);
    put_suspicious(json, results);
    put_suspects(json, results);
    put_joint_tests(json, results);
    if (!results.snooping.empty()) put_list(json, "snooping", results.snooping);
    put_robust(json, results);
    if (!results.derived.empty()) put_list(json, "derived", results.derived);
    put_list(json, "observations", results.accounts);
    put_list(json, "closures", results.closures);
    json.close();
    json.finish();
}

std::string to_json(const Results &results)
{
    std::string text;
    write_json(results, [&](std::string_view piece) { text += piece; });
    return text;
}

} // namespace vornhost
