#include "host/results/html_page.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <nlohmann/json.hpp>

#include "host/results/closure_json.h"
#include "host/results/page_file.h"
#include "host/results/test_limits.h"
#include "host/results/verdict.h"

namespace vornhost {

namespace {

using json = nlohmann::ordered_json; // writes numbers that are not finite as null

// So many significant digits: what people and plots need, without the digits of rounding.
constexpr int value_digits = 13, residual_digits = 9, small_digits = 6;

double rounded(double x, int digits)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.*e", digits - 1, x);
    return std::strtod(text, nullptr);
}

json number(const std::optional<double> &x, int digits)
{
    return x && std::isfinite(*x) ? json(rounded(*x, digits)) : json(nullptr);
}

// A list with an entry for each record; null when no entry has a value.
template <class Records, class Entry> json column(const Records &records, Entry entry)
{
    json all = json::array();
    bool any = false;
    for (const auto &record : records) {
        all.push_back(entry(record));
        any = any || !all.back().is_null();
    }
    return any ? all : json(nullptr);
}

// Texts that many records share: each once, and for every record its number.
class Words {
public:
    size_t of(const std::string &text)
    {
        const auto [place, added] = numbers.emplace(text, words.size());
        if (added) words.push_back(text);
        return place->second;
    }
    const json &list() const { return words; }

private:
    std::map<std::string, size_t> numbers;
    json words = json::array();
};

json text_or_null(const std::string &text) { return text.empty() ? json(nullptr) : json(text); }

// Of ellipses at the confidence that was asked for, by standard ones.
double magnification(const Results &results) { return results.precision ? results.precision->ellipse_factor : 1.0; }

json ellipse_columns(const Results &results, int plane)
{
    const auto part = [&](double EllipseResult::*member, double factor) {
        return column(results.points, [&](const PointResult &p) {
            return p.ellipse[plane] ? number(factor * (*p.ellipse[plane]).*member, small_digits) : json(nullptr);
        });
    };
    const double factor = magnification(results);
    const json a = part(&EllipseResult::a, factor);
    if (a.is_null()) return nullptr;
    return {{"a", a}, {"b", part(&EllipseResult::b, factor)}, {"bearing", part(&EllipseResult::bearing, 1.0)}};
}

json moves_of(const PointResult &p)
{
    if (p.moves.empty()) return nullptr;
    json all = json::array();
    for (const MoveResult &m : p.moves) {
        json by = json::array();
        for (const double x : m.by) by.push_back(number(x, small_digits));
        all.push_back({{"epoch", m.epoch}, {"by", by}});
    }
    return all;
}

json points(const Results &results)
{
    const std::vector<PointResult> &all = results.points;
    json columns;
    columns["name"] = json::array(); // also where there are none
    columns["station"] = json::array();
    for (const PointResult &p : all) {
        columns["name"].push_back(p.name);
        columns["station"].push_back(p.station ? 1 : 0);
    }
    const auto axes = [&](const char *key, auto entry) {
        for (int k = 0; k < 3; k++)
            columns[key].push_back(column(all, [&](const PointResult &p) { return entry(p, k); }));
    };
    axes("code", [](const PointResult &p, int k) { return text_or_null(p.code[k]); });
    axes("approximate", [](const PointResult &p, int k) { return number(p.approximate[k], value_digits); });
    axes("adjusted", [](const PointResult &p, int k) { return number(p.adjusted[k], value_digits); });
    axes("deviation", [](const PointResult &p, int k) { return number(p.deviation[k], small_digits); });
    for (int plane = 0; plane < 3; plane++) columns["ellipse"].push_back(ellipse_columns(results, plane));
    columns["moves"] = column(all, moves_of);
    return columns;
}

// One bit a test that the residual did not pass, the last whether it is suspicious; null where there were no tests.
json marks(const ResidualResult &r)
{
    const std::optional<bool> tests[5] = {r.outside, r.normal, r.normal_divided, r.tau, r.tau_divided};
    int bits = 0;
    bool tested = false;
    for (int k = 0; k < 5; k++) {
        tested = tested || tests[k];
        if (tests[k].value_or(false)) bits |= 1 << k;
    }
    const bool suspicious = r.test ? r.test->rejected : r.normal_divided.value_or(false);
    if (suspicious) bits |= 1 << 5;
    return tested || suspicious ? json(bits) : json(nullptr);
}

json observations(const Results &results, const InputLines &lines)
{
    const std::vector<ResidualResult> all(results.residuals.begin(), results.residuals.end());
    Words kinds, names, files, components, units;
    json columns;
    for (const char *key : {"kind", "from", "to", "file", "line", "component", "unit", "sigma"})
        columns[key] = json::array();
    for (const ResidualResult &r : all) {
        columns["kind"].push_back(kinds.of(r.kind));
        columns["from"].push_back(names.of(r.from));
        columns["to"].push_back(names.of(r.to));
        columns["file"].push_back(files.of(r.file));
        columns["line"].push_back(r.line);
        columns["component"].push_back(components.of(r.component));
        columns["unit"].push_back(units.of(r.unit));
        columns["sigma"].push_back(number(r.sigma, small_digits));
    }
    using R = const ResidualResult &;
    columns["value"] = column(all, [](R r) { return r.observed ? number(r.value, value_digits) : json(nullptr); });
    columns["residual"] =
        column(all, [](R r) { return r.observed ? number(r.residual, residual_digits) : json(nullptr); });
    columns["deviation"] = column(all, [](R r) { return number(r.deviation, small_digits); });
    columns["redundancy"] = column(all, [](R r) { return number(r.redundancy, small_digits); });
    columns["normalised"] = column(all, [](R r) { return number(r.normalised, small_digits); });
    columns["marks"] = column(all, marks);
    const auto of_test = [&](const char *key, double ObservationTestResult::*member) {
        columns[key] =
            column(all, [&](R r) { return r.test ? number((*r.test).*member, small_digits) : json(nullptr); });
    };
    columns["p"] = column(all, [](R r) { return r.test ? number(r.test->probability, small_digits) : json(nullptr); });
    of_test("detectable", &ObservationTestResult::detectable);
    of_test("noise", &ObservationTestResult::bias_to_noise);
    of_test("shift", &ObservationTestResult::shift);
    columns["unchecked"] = column(all, [](R r) { return r.checked.value_or(true) ? json(nullptr) : json(1); });
    const auto words = [&](const char *key, std::string RowWords::*member) {
        columns[key] = column(all, [&](R r) { return text_or_null(results.words_of(r).*member); });
    };
    words("at", &RowWords::at);
    words("setup", &RowWords::setup);
    words("set", &RowWords::set);
    words("id", &RowWords::id);
    words("remark", &RowWords::remark);
    columns["text"] = column(all, [&](R r) { return text_or_null(lines.line(r.file, r.line)); });
    columns["kinds"] = kinds.list();
    columns["names"] = names.list();
    columns["files"] = files.list();
    columns["components"] = components.list();
    columns["units"] = units.list();
    return columns;
}

json kinds(const Results &results)
{
    json all = json::array();
    for (const KindResult &k : results.kinds)
        all.push_back({{"kind", k.kind},
                       {"sigma_a_priori", k.sigma_apriori},
                       {"sigma_a_posteriori", k.sigma_aposteriori},
                       {"passed", k.goodness_of_fit ? json(*k.goodness_of_fit) : json(nullptr)},
                       {"over", {k.over_normal, k.over_normal_divided}},
                       {"suspicious", k.suspicious},
                       {"unchecked", k.unchecked}});
    return all;
}

// The constants of a group or camera that were adjusted.
template <int n>
json constants(const std::optional<double> (&value)[n], const std::optional<double> (&deviation)[n],
               const char *const (&names)[n])
{
    json all = json::array();
    for (int k = 0; k < n; k++)
        if (value[k])
            all.push_back({{"name", names[k]},
                           {"value", number(value[k], value_digits)},
                           {"deviation", number(deviation[k], small_digits)}});
    return all;
}

json groups(const Results &results)
{
    static const char *const names[3] = {"additive constant", "scale", "refraction"};
    json all = json::array();
    for (const GroupResult &g : results.groups)
        all.push_back({{"name", g.name}, {"constants", constants(g.value, g.deviation, names)}});
    return all;
}

json cameras(const Results &results)
{
    static const char *const names[10] = {"c", "x0", "y0", "a", "b", "k1", "k2", "k3", "p1", "p2"};
    json all = json::array();
    for (const CameraResult &c : results.cameras)
        all.push_back({{"name", c.name}, {"constants", constants(c.value, c.deviation, names)}});
    return all;
}

template <class Value, int n> json numbers(const Value (&values)[n], int digits)
{
    json all = json::array();
    for (const Value &x : values) all.push_back(number(x, digits));
    return all;
}

json orientations(const Results &results)
{
    json all = json::array();
    for (const OrientationResult &o : results.orientations)
        all.push_back({{"station", o.name},
                       {"setup", o.setup},
                       {"set", o.set},
                       {"rotation", numbers(o.rotation, value_digits)},
                       {"deviation", numbers(o.deviation, small_digits)}});
    return all;
}

json lumps(const Results &results)
{
    json all = json::array();
    for (const LumpResult &l : results.lumps)
        all.push_back({{"lump", l.lump},
                       {"epoch", l.epoch},
                       {"reference", l.reference},
                       {"translation", numbers(l.translation, value_digits)},
                       {"rotation", numbers(l.rotation, value_digits)},
                       {"scale", number(l.scale, value_digits)},
                       {"translation_deviation", numbers(l.translation_deviation, small_digits)},
                       {"rotation_deviation", numbers(l.rotation_deviation, small_digits)},
                       {"scale_deviation", number(l.scale_deviation, small_digits)}});
    return all;
}

json pairs(const Results &results)
{
    json all = json::array();
    const double factor = magnification(results);
    for (const PairResult &p : results.pairs) {
        json ellipses = json::array();
        for (const std::optional<EllipseResult> &e : p.ellipse)
            ellipses.push_back(e ? json{{"a", number(factor * e->a, small_digits)},
                                        {"b", number(factor * e->b, small_digits)},
                                        {"bearing", number(e->bearing, small_digits)}}
                                 : json(nullptr));
        all.push_back(
            {{"from", p.from}, {"to", p.to}, {"deviation", numbers(p.deviation, small_digits)}, {"ellipse", ellipses}});
    }
    return all;
}

json suspects(const Results &results)
{
    json all = json::array();
    for (const SuspectResult &s : results.suspects) {
        json alike = json::array();
        for (const AlikeResult &a : s.alike)
            alike.push_back({{"observation", a.residual}, {"correlation", number(a.correlation, small_digits)}});
        all.push_back({{"observation", s.residual},
                       {"error", number(s.error, small_digits)},
                       {"would_read", number(s.would_read, value_digits)},
                       {"shift", number(s.shift, small_digits)},
                       {"point", s.point},
                       {"alike", alike}});
    }
    return all;
}

// Tests of the components of one observation together.
json joint_tests(const Results &results)
{
    json all = json::array();
    for (const JointTestResult &t : results.joint_tests)
        all.push_back({{"observation", t.first},
                       {"components", t.components},
                       {"rank", t.rank},
                       {"squares", number(t.squares, small_digits)},
                       {"p", number(t.probability, small_digits)},
                       {"rejected", t.rejected}});
    return all;
}

json variance_components(const Results &results)
{
    json all = json::array();
    for (const ComponentResult &c : results.components)
        all.push_back({{"name", c.name},
                       {"rows", c.rows},
                       {"redundancy", number(c.redundancy, small_digits)},
                       {"factor", number(c.factor, small_digits)},
                       {"deviation", number(c.deviation, small_digits)},
                       {"used", c.used}});
    return all;
}

json derived(const Results &results)
{
    json all = json::array();
    for (const DerivedResult &d : results.derived)
        all.push_back({{"kind", d.kind},
                       {"unit", d.unit},
                       {"at", d.at},
                       {"from", d.from},
                       {"to", d.to},
                       {"value", number(d.value, value_digits)},
                       {"deviation", number(d.deviation, small_digits)}});
    return all;
}

json accounts(const Results &results)
{
    json all = json::array();
    for (const Account &a : results.accounts) {
        json left_out = json::array();
        for (const LeftOut &l : a.left_out)
            left_out.push_back({{"file", l.file},
                                {"line", l.line},
                                {"at", l.at},
                                {"from", l.from},
                                {"to", l.to},
                                {"reason", l.reason}});
        all.push_back({{"kind", a.kind}, {"read", a.read}, {"used", a.used}, {"left_out", left_out}});
    }
    return all;
}

template <class Value> void put(json &object, const char *key, const std::optional<Value> &value)
{
    if (value) object[key] = *value;
}

// `wider` is what makes an ellipse of 95 % of a standard one: by F where the adjustment's own sigma is in it.
json precision(const Results &r)
{
    const PrecisionResult &p = *r.precision;
    const double freedom = p.a_priori ? INFINITY : r.degrees_of_freedom.value_or(0);
    json all = {{"a_priori", p.a_priori}, {"sigma", p.sigma}, {"factor", p.ellipse_factor}};
    if (freedom > 0) all["wider"] = std::sqrt(2.0 * fisher_limit(significance, 2, freedom));
    put(all, "confidence", p.confidence);
    return all;
}

json head(const Results &r, const std::string &date)
{
    const double n = (double)std::max<size_t>(1, r.residuals.size());
    const double largest = r.tests && r.tests->limit ? *r.tests->limit : normal_limit(significance / n);
    json all = {{"program", r.program},
                {"version", r.version},
                {"date", date},
                {"title", r.title},
                {"file", r.file},
                {"solver", r.solver},
                {"mode", r.mode},
                {"dimension", r.dimension},
                {"units",
                 {{"length", r.units.length},
                  {"metres", r.units.metres},
                  {"angle", r.units.angle},
                  {"zenith", r.units.zenith}}},
                {"limits", {{"one", normal_limit(significance)}, {"largest", largest}}},
                {"adjusted", r.adjusted},
                {"verdict", json(verdict(r))},
                {"words", json(r.words)},
                {"notes", json(r.notes)},
                {"datum", r.datum}};
    if (r.crs) all["reference_system"] = r.crs->text();
    put(all, "iterations", r.iterations);
    put(all, "degrees_of_freedom", r.degrees_of_freedom);
    put(all, "sigma_a_posteriori", r.sigma_aposteriori);
    put(all, "one_tailed_test", r.one_tailed_test);
    if (r.variance_test)
        all["variance_test"] = {{"squares", r.variance_test->squares},
                                {"lower", r.variance_test->lower},
                                {"upper", r.variance_test->upper},
                                {"level", r.variance_test->level},
                                {"p", r.variance_test->probability},
                                {"one_sided_limit", r.variance_test->one_sided_limit},
                                {"one_sided_p", r.variance_test->one_sided_probability},
                                {"passed", r.variance_test->passed()}};
    if (r.tests)
        all["tests"] = {{"words", r.tests->words}, {"tested", r.tests->tested}, {"unchecked", r.tests->unchecked}};
    if (r.precision) all["precision"] = precision(r);
    return all;
}

std::string data(const Results &results, const InputLines &lines, const std::string &date)
{
    json all = head(results, date);
    all["points"] = points(results);
    all["observations"] = observations(results, lines);
    all["kinds"] = kinds(results);
    all["orientations"] = orientations(results);
    all["groups"] = groups(results);
    all["cameras"] = cameras(results);
    all["lumps"] = lumps(results);
    all["pairs"] = pairs(results);
    all["suspects"] = suspects(results);
    all["derived"] = derived(results);
    all["joint_tests"] = joint_tests(results);
    all["variance_components"] = variance_components(results);
    all["accounts"] = accounts(results);
    all["closures"] = closures_json(results);
    return all.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace

std::string to_html(const Results &results, const InputLines &lines, const std::string &date)
{
    return page_file(results.title.empty() ? "Adjustment of " + results.file : results.title,
                     data(results, lines, date));
}

} // namespace vornhost
