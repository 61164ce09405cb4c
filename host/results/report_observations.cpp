// What the report says of observations, a line for each.

#include <algorithm>
#include <cctype>
#include <cmath>
#include <utility>
#include <vector>

#include "host/results/report_sections.h"
#include "host/results/verdict.h"

namespace vornhost {

namespace {

// What of a residual is written in lengths, what in angles.
bool is_angle(const ResidualResult &r) { return r.unit == "rad"; }
bool is_length(const ResidualResult &r) { return r.unit == "m"; }

} // namespace

// A value in the file's unit.
std::string TextReport::value(const ResidualResult &r, double x) const
{
    if (is_length(r)) return units.length(x);
    if (!is_angle(r)) return decimal(x, r.unit == "pixel" ? 3 : 8);
    if (r.kind == "vertical angle") return units.elevation(x);
    return r.kind == "weighted rotation" ? units.signed_angle(x) : units.angle(x);
}

// A residual or standard deviation in the small unit.
std::string TextReport::small(const ResidualResult &r, double x) const
{
    if (is_length(r)) return units.small_length(x);
    if (is_angle(r)) return units.small_angle(x);
    return decimal(x, r.unit == "pixel" ? 3 : 8);
}

std::string TextReport::kind_unit(const ResidualResult &r, bool small_unit) const
{
    if (is_length(r)) return small_unit ? units.small_length_name() : units.length_name();
    if (is_angle(r)) return small_unit ? units.small_angle_name() : units.angle_name();
    return r.unit == "pixel" ? "pixel" : "";
}

// Of the kind of a residual, without rows.
TextTable TextReport::observation_table(const ResidualResult &first) const
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

void TextReport::add_observation(const ResidualResult &r, TextTable &table) const
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
std::string TextReport::observations() const
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

// From the readings into the grid; corrections in the small units.
std::string TextReport::reductions() const
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

std::string TextReport::left_out() const
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

// Observations that count for less than half.
std::string TextReport::weights() const
{
    TextTable table({{"weight", ""}, {"observation", "", Align::left}});
    for (const WeightResult &w : results.weights)
        if (w.weight < 0.5) table.add({decimal(w.weight, 4), residual_name(results, results.residuals[w.residual])});
    return section("Weights of the robust estimation (" + results.robust + ") below 0.5", table);
}

std::string TextReport::snooping() const
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

} // namespace vornhost
