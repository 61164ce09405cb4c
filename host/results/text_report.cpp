#include "host/results/text_report.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

#include "host/input/utf8.h"
#include "host/results/closure_text.h"
#include "host/results/report_units.h"
#include "host/results/text_table.h"
#include "host/results/verdict.h"

namespace vornhost {

namespace {

const char *const axes[3] = {"x", "y", "z"};

std::string underlined(const std::string &title, char line)
{
    return title + "\n" + std::string(utf8_width(title), line) + "\n";
}

std::string section(const std::string &title, const TextTable &table)
{
    return table.empty() ? "" : "\n" + underlined(title, '-') + table.text();
}

// What of a residual is written in lengths, what in angles.
bool is_angle(const ResidualResult &r) { return r.unit == "rad"; }
bool is_length(const ResidualResult &r) { return r.unit == "m"; }

class Report {
public:
    Report(const Results &all, const std::string &day, bool is_brief)
        : results(all), units(all.units), date(day), brief(is_brief)
    {
    }

    std::string text() const
    {
        return head() + summary() + notes() + closures() + points() + earth() + orientations() + groups() + cameras() +
               lumps() + deflections() + transformations() + pairs() + ellipsoids() + observations() + reductions() +
               left_out() + tests() + suspects() + together() + weights() + snooping() + derived() + weakest() +
               weak_pairs() + components() + refusal() + verdict();
    }

private:
    std::string head() const;
    std::string summary() const;
    std::string notes() const;
    std::string closures() const;
    std::string points() const;
    std::string earth() const;
    std::string reductions() const;
    std::string orientations() const;
    std::string groups() const;
    std::string cameras() const;
    std::string lumps() const;
    std::string deflections() const;
    std::string transformations() const;
    std::string pairs() const;
    std::string observations() const;
    TextTable observation_table(const ResidualResult &first) const;
    void add_observation(const ResidualResult &r, TextTable &table) const;
    std::string left_out() const;
    std::string tests() const;
    std::string suspects() const;
    std::string together() const;
    std::string weights() const;
    std::string snooping() const;
    std::string derived() const;
    std::string weakest() const;
    std::string weak_pairs() const;
    std::string ellipsoids() const;
    std::string components() const;
    std::string refusal() const;
    std::string verdict() const;

    bool has_axis(int axis) const { return results.dimension == 3 || (results.dimension == 1) == (axis == 2); }
    double magnified(double axis) const { return axis * (results.precision ? results.precision->ellipse_factor : 1.0); }
    std::string value(const ResidualResult &r, double x) const;
    std::string small(const ResidualResult &r, double x) const;
    std::string kind_unit(const ResidualResult &r, bool small_unit) const;
    template <class Value> std::string length(const std::optional<Value> &x) const { return x ? units.length(*x) : ""; }
    std::string small_length(const std::optional<double> &x) const { return x ? units.small_length(*x) : ""; }
    std::string small_angle(const std::optional<double> &x) const { return x ? units.small_angle(*x) : ""; }

    const Results &results;
    const ReportUnits units;
    const std::string date;
    const bool brief;
};

// What standard deviations and ellipses contain.
std::string precision_text(const PrecisionResult &p, bool ellipses)
{
    std::string text = p.a_priori ? "a priori" : "a posteriori, times sigma " + decimal(p.sigma, 4);
    if (!ellipses) return text;
    if (!p.confidence) return text + "; standard ellipses";
    return text + "; ellipses of " + decimal(100.0 * *p.confidence, 1) + " %, " + decimal(p.ellipse_factor, 3) +
           " times the standard ones, ellipsoids " + decimal(p.ellipsoid_factor, 3) + " times";
}

std::string Report::head() const
{
    std::string text = underlined(results.title.empty() ? "Adjustment of " + results.file : results.title, '=');
    TextTable table({{"", "", Align::left}, {"", "", Align::left}});
    table.add({"file", results.file});
    table.add({"date", date});
    table.add(
        {"program", results.program + " " + results.version + ", solver " + results.solver + ", mode " + results.mode});
    table.add({"units", std::string("lengths in ") + units.length_name() + ", angles in " + units.angle_name() +
                            "; precision in " + units.small_length_name() + " and " + units.small_angle_name()});
    if (results.crs) table.add({"reference system", results.crs->text()});
    if (!results.datum.empty()) table.add({"datum", results.datum});
    if (results.precision) table.add({"precision", precision_text(*results.precision, results.dimension > 1)});
    const std::string lines = table.text();
    return text + lines.substr(lines.find('\n') + 1); // without a heading
}

std::string Report::summary() const
{
    TextTable table({{"", "", Align::left}, {"", ""}});
    const auto stations =
        std::count_if(results.points.begin(), results.points.end(), [](const PointResult &p) { return p.station; });
    table.add({"stations", std::to_string(stations)});
    table.add({"targets", std::to_string((long)results.points.size() - (long)stations)});
    for (const Account &a : results.accounts) {
        table.add({a.kind, std::to_string(a.used)});
        if (!a.left_out.empty()) table.add({a.kind + " left out", std::to_string(a.left_out.size())});
    }
    if (results.degrees_of_freedom) table.add({"degrees of freedom", std::to_string(*results.degrees_of_freedom)});
    if (results.iterations) table.add({"iterations", std::to_string(*results.iterations)});
    const std::string lines = table.text();
    return "\n" + underlined("Summary", '-') + lines.substr(lines.find('\n') + 1);
}

std::string Report::notes() const
{
    if (results.notes.empty()) return {};
    std::string text = "\n" + underlined("Notes", '-');
    for (const std::string &note : results.notes) text += note + "\n";
    return text;
}

std::string Report::closures() const
{
    constexpr size_t most = 10; // of a kind
    const std::string text = closure_text(results, most);
    return text.empty() ? text : "\n" + underlined("Closures before the adjustment", '-') + text;
}

std::string Report::points() const
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
std::string Report::ellipsoids() const
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

std::string Report::earth() const
{
    TextTable table({{"point", "", Align::left}, {"latitude", "°"}, {"longitude", "°"}, {"ellipsoidal height", "m"}});
    for (const PointResult &p : results.points)
        if (p.earth)
            table.add({p.name, decimal(p.earth->latitude, 10), decimal(p.earth->longitude, 10),
                       p.earth->height ? decimal(*p.earth->height, 4) : ""});
    return section("Places on the ellipsoid", table);
}

// From the readings into the grid; corrections in the small units.
std::string Report::reductions() const
{
    static const char *const names[] = {"instrument", "ellipsoid", "projection", "arc_to_chord", "convergence"};
    TextTable table({{"kind", "", Align::left},
                     {"at", "", Align::left},
                     {"from", "", Align::left},
                     {"to", "", Align::left},
                     {"read", ""},
                     {"instrument", ""},
                     {"ellipsoid", ""},
                     {"projection", ""},
                     {"arc to chord", ""},
                     {"convergence", ""},
                     {"reduced", ""},
                     {"unit", "", Align::left},
                     {"place", "", Align::left}});
    if (brief) return {};
    for (const ResidualResult &r : results.residuals) {
        if (r.corrections.empty()) continue;
        std::vector<std::string> cells = {r.kind, results.words_of(r).at, r.from, r.to,
                                          value(r, r.raw.value_or(r.value))};
        for (const char *name : names) {
            const std::optional<double> c = r.correction(name);
            cells.push_back(c ? small(r, *c) : "");
        }
        cells.push_back(value(r, r.value));
        cells.push_back(kind_unit(r, false) + ", " + kind_unit(r, true));
        cells.push_back(r.file + ":" + std::to_string(r.line));
        table.add(cells);
    }
    return section("Reductions into the grid", table);
}

std::string Report::orientations() const
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

std::string Report::groups() const
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

std::string Report::cameras() const
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

std::string Report::lumps() const
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

constexpr double arc_second = 3.14159265358979323846 / 648000.0;

std::string Report::deflections() const
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
std::string Report::transformations() const
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

std::string Report::pairs() const
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

// A value in the file's unit.
std::string Report::value(const ResidualResult &r, double x) const
{
    if (is_length(r)) return units.length(x);
    if (!is_angle(r)) return decimal(x, r.unit == "pixel" ? 3 : 8);
    if (r.kind == "vertical angle") return units.elevation(x);
    return r.kind == "weighted rotation" ? units.signed_angle(x) : units.angle(x);
}

// A residual or standard deviation in the small unit.
std::string Report::small(const ResidualResult &r, double x) const
{
    if (is_length(r)) return units.small_length(x);
    if (is_angle(r)) return units.small_angle(x);
    return decimal(x, r.unit == "pixel" ? 3 : 8);
}

std::string Report::kind_unit(const ResidualResult &r, bool small_unit) const
{
    if (is_length(r)) return small_unit ? units.small_length_name() : units.length_name();
    if (is_angle(r)) return small_unit ? units.small_angle_name() : units.angle_name();
    return r.unit == "pixel" ? "pixel" : "";
}

// Of the kind of a residual, without rows.
TextTable Report::observation_table(const ResidualResult &first) const
{
    const std::string unit = kind_unit(first, false), small_unit = kind_unit(first, true);
    return TextTable({{"id", "", Align::left},
                      {"at", "", Align::left},
                      {"from", "", Align::left},
                      {"to", "", Align::left},
                      {"", "", Align::left},
                      {"set-up", "", Align::left},
                      {"set", "", Align::left},
                      {"read", unit},
                      {"observed", unit},
                      {"adjusted", unit},
                      {"residual", small_unit},
                      {"sigma", small_unit},
                      {"redundancy", ""},
                      {"normalised", ""},
                      {"p", ""},
                      {"detectable", small_unit},
                      {"bias/noise", ""},
                      {"shift", units.small_length_name()},
                      {"", "", Align::left},
                      {"place", "", Align::left},
                      {"remark", "", Align::left}});
}

void Report::add_observation(const ResidualResult &r, TextTable &table) const
{
    const bool rejected = r.test && r.test->rejected;
    if (brief && !rejected) return;
    const RowWords &words = results.words_of(r);
    const double sign = r.kind == "vertical angle" ? units.vertical_sign() : 1.0;
    const char *mark = rejected ? "suspicious" : !r.checked.value_or(true) ? "not checked" : "";
    table.add({words.id,
               words.at,
               r.from,
               r.to,
               r.component,
               words.setup,
               words.set,
               r.raw ? value(r, *r.raw) : "",
               r.observed ? value(r, r.value) : "",
               r.adjusted ? value(r, *r.adjusted) : "",
               r.observed ? small(r, sign * r.residual) : "",
               small(r, r.sigma),
               r.redundancy ? decimal(*r.redundancy, 2) : "",
               r.normalised ? decimal(sign * *r.normalised, 2) : "",
               r.test && r.test->probability ? probability_text(*r.test->probability) : "",
               r.test ? small(r, r.test->detectable) : "",
               r.test ? decimal(r.test->bias_to_noise, 1) : "",
               r.test ? units.small_length(r.test->shift) : "",
               mark,
               r.file + ":" + std::to_string(r.line),
               words.remark});
}

// A table of each kind.
std::string Report::observations() const
{
    std::vector<std::pair<std::string, TextTable>> tables;
    for (const ResidualResult &r : results.residuals) {
        auto of_kind = std::find_if(tables.begin(), tables.end(), [&](const auto &t) { return t.first == r.kind; });
        if (of_kind == tables.end()) of_kind = tables.insert(tables.end(), {r.kind, observation_table(r)});
        add_observation(r, of_kind->second);
    }
    std::string text;
    for (const auto &[kind, table] : tables)
        text += section((char)std::toupper((unsigned char)kind[0]) + kind.substr(1) + "s", table);
    return text;
}

std::string Report::left_out() const
{
    TextTable table({{"kind", "", Align::left},
                     {"at", "", Align::left},
                     {"from", "", Align::left},
                     {"to", "", Align::left},
                     {"reason", "", Align::left},
                     {"place", "", Align::left}});
    for (const Account &a : results.accounts)
        for (const LeftOut &l : a.left_out)
            table.add({a.kind, l.at, l.from, l.to, l.reason, l.file + ":" + std::to_string(l.line)});
    return section("Left out", table);
}

// Levels and probabilities: as many digits as they have.
std::string level_text(double x)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.3g", x);
    return text;
}

// The two tests of the variance factor with the question that each answers.
std::string global_test(const VarianceTest &t)
{
    const auto line = [](const std::string &question, const std::string &range, double p, bool passed) {
        return question + "\n  sum of squares expected " + range + ", p " + probability_text(p) + ": " +
               (passed ? "yes" : "no") + "\n";
    };
    return "test of the variance factor at level " + level_text(t.level) + ", sum of squares " + decimal(t.squares, 2) +
           "\n" +
           line("Do the observations agree with their standard deviations, neither worse nor better?",
                "between " + decimal(t.lower, 2) + " and " + decimal(t.upper, 2), t.probability, t.passed()) +
           line("Are the observations at least as good as their standard deviations say?",
                "up to " + decimal(t.one_sided_limit, 2), t.one_sided_probability, t.one_sided_passed());
}

std::string observation_test(const TestsResult &t, int freedom)
{
    std::string text = t.words + ": ";
    if (!t.limit)
        return text + "no observation was tested" +
               (freedom == 1 ? ": with one degree of freedom every tau is 1\n" : "\n");
    return text + std::to_string(t.tested) + " tested, " + std::to_string(t.rejected) +
           " suspicious (normalised residual beyond " + decimal(*t.limit, 2) + "), " + std::to_string(t.unchecked) +
           " not checked (redundancy below " + level_text(t.least_redundancy) + ")\n";
}

std::string Report::tests() const
{
    if (!results.sigma_aposteriori && !results.tests) return {};
    std::string text = "\n" + underlined("Tests", '-');
    if (results.sigma_aposteriori)
        text += "sigma a priori " + decimal(results.sigma_apriori.value_or(1.0), 4) + ", a posteriori " +
                decimal(*results.sigma_aposteriori, 4) + "\n";
    if (results.variance_test) text += global_test(*results.variance_test);
    if (results.tests) text += observation_test(*results.tests, results.degrees_of_freedom.value_or(0));
    TextTable table({{"kind", "", Align::left},
                     {"a priori", ""},
                     {"a posteriori", ""},
                     {"goodness of fit", "", Align::left},
                     {"suspicious", ""},
                     {"not checked", ""}});
    for (const KindResult &k : results.kinds)
        table.add({k.kind, decimal(k.sigma_apriori, 4), decimal(k.sigma_aposteriori, 4),
                   k.goodness_of_fit ? (*k.goodness_of_fit ? "passed" : "failed") : "", std::to_string(k.suspicious),
                   std::to_string(k.unchecked)});
    return table.empty() ? text : text + "\n" + table.text();
}

// One block a suspect: table rows for those that cannot be told apart from it.
std::string Report::suspects() const
{
    if (results.suspects.empty()) return {};
    const size_t all = results.suspicious.size(), shown = results.suspects.size();
    std::string text = "\n" + underlined("Suspicious observations", '-');
    if (shown < all) text += "the worst " + std::to_string(shown) + " of " + std::to_string(all) + "\n";
    for (const SuspectResult &s : results.suspects) {
        const ResidualResult &r = results.residuals[s.residual];
        const double sign = r.kind == "vertical angle" ? units.vertical_sign() : 1.0;
        text += residual_name(results, r) + "\n  normalised residual " + decimal(sign * r.normalised.value_or(0.0), 2) +
                "; reads " + value(r, r.raw.value_or(r.value)) + ", would have to read " + value(r, s.would_read) +
                " " + kind_unit(r, false) + ", off by " + small(r, sign * s.error) + " " + kind_unit(r, true) + "\n";
        if (!s.point.empty())
            text += "  moves " + s.point + " by " + units.small_length(s.shift) + " " + units.small_length_name() +
                    ", most of all points\n";
        for (const AlikeResult &a : s.alike)
            text += "  not told apart from " + residual_name(results, results.residuals[a.residual]) +
                    ", correlation of tests " + decimal(a.correlation, 3) + "\n";
    }
    return text;
}

// Components tested together, those rejected; all where the report is not brief.
std::string Report::together() const
{
    TextTable table({{"from", "", Align::left},
                     {"to", "", Align::left},
                     {"components", ""},
                     {"rank", ""},
                     {"squares", ""},
                     {"p", ""},
                     {"", "", Align::left},
                     {"place", "", Align::left}});
    for (const JointTestResult &t : results.joint_tests) {
        if (brief && !t.rejected) continue;
        const ResidualResult &r = results.residuals[t.first];
        table.add({r.from, r.to, std::to_string(t.components), std::to_string(t.rank), decimal(t.squares, 2),
                   t.probability ? probability_text(*t.probability) : "",
                   t.rejected    ? "suspicious"
                   : t.rank == 0 ? "not checked"
                                 : "",
                   r.file + ":" + std::to_string(r.line)});
    }
    return section("Components tested together", table);
}

// Observations that count for less than half.
std::string Report::weights() const
{
    TextTable table({{"weight", ""}, {"observation", "", Align::left}});
    for (const WeightResult &w : results.weights)
        if (w.weight < 0.5) table.add({decimal(w.weight, 4), residual_name(results, results.residuals[w.residual])});
    return section("Weights of the robust estimation (" + results.robust + ") below 0.5", table);
}

std::string Report::snooping() const
{
    TextTable table({{"step", "", Align::left},
                     {"kind", "", Align::left},
                     {"at", "", Align::left},
                     {"from", "", Align::left},
                     {"to", "", Align::left},
                     {"normalised", ""},
                     {"sigma behind", ""},
                     {"place", "", Align::left}});
    for (const SnoopStep &s : results.snooping)
        table.add({s.taken_again ? "taken again" : "left out", s.kind, s.at, s.from, s.to,
                   s.taken_again ? "" : decimal(std::fabs(s.normalised), 2), decimal(s.sigma, 3),
                   s.file + ":" + std::to_string(s.line)});
    return section("Left out by the tests, step by step", table);
}

std::string Report::derived() const
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
std::string Report::weakest() const
{
    constexpr size_t most = 5;
    std::vector<const PointResult *> worst;
    for (const PointResult &p : results.points)
        if (p.uncertainty) worst.push_back(&p);
    if (worst.size() <= most) return {};
    std::stable_sort(worst.begin(), worst.end(),
                     [](auto *p, auto *q) { return p->uncertainty.value() > q->uncertainty.value(); });
    TextTable table({{"point", "", Align::left}, {"within, 95 %", units.small_length_name()}});
    for (size_t i = 0; i < most; i++) table.add({worst[i]->name, units.small_length(*worst[i]->uncertainty)});
    return section("Weakest points", table);
}

// Neighbours, which observations join, whose places to one another are known worst.
std::string Report::weak_pairs() const
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

std::string Report::components() const
{
    TextTable table({{"observations", "", Align::left},
                     {"number", ""},
                     {"redundancy", ""},
                     {"factor", ""},
                     {"standard deviation", ""},
                     {"sigma", ""},
                     {"proposed", ""},
                     {"", "", Align::left},
                     {"", "", Align::left}});
    for (const ComponentResult &c : results.components) {
        const auto shown = [&](double x) {
            return c.unit == "m" ? units.small_length(x) : c.unit == "rad" ? units.small_angle(x) : decimal(x, 3);
        };
        const std::string unit = c.unit == "m"     ? units.small_length_name()
                                 : c.unit == "rad" ? units.small_angle_name()
                                                   : c.unit;
        table.add({c.name, std::to_string(c.rows), decimal(c.redundancy, 1), c.factor ? decimal(*c.factor, 3) : "",
                   c.deviation ? decimal(*c.deviation, 3) : "", c.sigma ? shown(*c.sigma) : "",
                   c.sigma && c.factor ? shown(*c.sigma * *c.factor) : "", c.sigma ? unit : "",
                   !c.factor      ? "too little redundancy"
                   : !c.deviation ? "not told apart from others"
                   : c.used       ? "used"
                                  : ""});
    }
    return section("Variance components: factors of the standard deviations", table);
}

// All that is wrong, where the verdict has no room for it.
std::string Report::refusal() const
{
    if (results.adjusted || results.words.size() < 3) return {};
    std::string text = "\n" + underlined("What is wrong", '-');
    for (const std::string &word : results.words) text += word + "\n";
    return text;
}

std::string Report::verdict() const
{
    std::string text = "\n" + underlined("Verdict", '-');
    for (const std::string &line : vornhost::verdict(results)) text += line + "\n";
    return text;
}

} // namespace

std::string text_report(const Results &results, const std::string &date, bool brief)
{
    return Report(results, date, brief).text();
}

} // namespace vornhost
