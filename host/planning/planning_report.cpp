#include <algorithm>

#include "host/planning/planning.h"
#include "host/results/json_text.h"
#include "host/results/report_units.h"
#include "host/results/text_table.h"

namespace vornhost {

namespace {

constexpr size_t most_shown = 20;

class Report {
public:
    Report(const Planning &all, const std::string &day) : p(all), units(all.units), date(day) {}

    std::string text() const { return head() + points() + observations() + candidates(); }

private:
    std::string head() const;
    std::string points() const;
    std::string observations() const;
    std::string candidates() const;
    std::string small(double x, const std::string &unit) const
    {
        return unit == "m" ? units.small_length(x) : unit == "rad" ? units.small_angle(x) : decimal(x, 3);
    }
    std::string name(const std::string &unit) const
    {
        return unit == "m" ? units.small_length_name() : unit == "rad" ? units.small_angle_name() : unit;
    }

    const Planning &p;
    const ReportUnits units;
    const std::string date;
};

std::string Report::head() const
{
    return underlined("Plan of " + p.file, '=') + "date                " + date + "\ndatum               " + p.datum +
           "\nobservations        " + std::to_string(p.rows) + "\ndegrees of freedom  " + std::to_string(p.redundancy) +
           "\n";
}

std::string Report::points() const
{
    TextTable table({{"point", "", Align::left}, {"position", units.small_length_name()}});
    for (size_t i = 0; i < p.points.size() && i < most_shown; i++)
        table.add({p.points[i].name, units.small_length(p.points[i].position)});
    return section("Weakest points: root of the sum of their variances", table);
}

std::string Report::observations() const
{
    TextTable table({{"observation", "", Align::left},
                     {"sigma", ""},
                     {"redundancy", ""},
                     {"detectable", ""},
                     {"", "", Align::left}});
    for (size_t i = 0; i < p.observations.size() && i < most_shown; i++) {
        const WeakObservation &o = p.observations[i];
        table.add({o.text, small(o.sigma, o.unit), decimal(o.redundancy, 3),
                   o.detectable ? small(*o.detectable, o.unit) : "", name(o.unit)});
    }
    const std::string found = p.test.empty() ? "" : "\ndetectable: error that is found by " + p.test + "\n";
    return section("Observations that are checked least", table) + found;
}

std::string Report::candidates() const
{
    if (p.helped.empty()) return {};
    TextTable table({{"candidate", "", Align::left},
                     {"from", "", Align::left},
                     {"to", "", Align::left},
                     {"at", "", Align::left},
                     {"line", ""},
                     {"position", units.small_length_name()},
                     {"sx", units.small_length_name()},
                     {"sy", units.small_length_name()},
                     {"sz", units.small_length_name()},
                     {"better by", "%"},
                     {"redundancy", ""}});
    const auto cells = [&](std::vector<std::string> row, double position, const double(&s)[3]) {
        row.push_back(units.small_length(position));
        for (int k = 0; k < 3; k++) row.push_back(p.deviation[k] > 0.0 ? units.small_length(s[k]) : "");
        return row;
    };
    std::vector<std::string> none = cells({"none", "", "", "", ""}, p.position, p.deviation);
    none.insert(none.end(), {"", ""});
    table.add(none);
    for (const Candidate &c : p.candidates) {
        std::vector<std::string> row = {c.kind, c.from, c.to, c.at, std::to_string(c.line)};
        if (c.possible) {
            row = cells(row, c.position, c.deviation);
            row.push_back(decimal(100.0 * (1.0 - c.position / p.position), 1));
            row.push_back(decimal(c.redundancy, 3));
        } else {
            row.insert(row.end(), {"", "", "", "", "helps nothing", ""});
        }
        table.add(row);
    }
    return section("What helps point " + p.helped + " most, one observation each", table);
}

void put_candidates(JsonText &json, const Planning &p)
{
    json.pair("helped", p.helped);
    json.pair("position", p.position);
    json.key("candidates").open_array();
    for (const Candidate &c : p.candidates) {
        json.open_object();
        json.pair("kind", c.kind);
        json.pair("from", c.from);
        json.pair("to", c.to);
        if (!c.at.empty()) json.pair("at", c.at);
        json.pair("line", c.line);
        json.pair("sigma", c.sigma);
        json.pair("possible", c.possible);
        if (c.possible) {
            json.pair("position", c.position);
            json.pair("redundancy", c.redundancy);
            json.key("standard_deviation").open_array();
            for (const double s : c.deviation) json.value(s);
            json.close();
        }
        json.close();
    }
    json.close();
}

} // namespace

std::string planning_report(const Planning &planning, const std::string &date) { return Report(planning, date).text(); }

std::string planning_json(const Planning &p, const std::string &version)
{
    std::string text;
    JsonText json([&](std::string_view piece) { text += piece; });
    json.open_object();
    json.pair("plan", 1);
    json.pair("program", "vorn");
    json.pair("version", version);
    json.pair("file", p.file);
    json.pair("planned", p.made());
    json.key("words").open_array();
    for (const std::string &word : p.words) json.value(word);
    json.close();
    if (p.made()) {
        json.pair("datum", p.datum);
        json.pair("degrees_of_freedom", p.redundancy);
        json.key("points").open_array();
        for (const WeakPoint &w : p.points) {
            json.open_object();
            json.pair("name", w.name);
            json.pair("position", w.position);
            json.close();
        }
        json.close();
        if (!p.test.empty()) json.pair("test", p.test);
        json.key("observations").open_array();
        for (const WeakObservation &o : p.observations) {
            json.open_object();
            json.pair("observation", o.text);
            json.pair("unit", o.unit);
            json.pair("sigma", o.sigma);
            json.pair("redundancy", o.redundancy);
            json.pair("detectable", o.detectable);
            json.close();
        }
        json.close();
        if (!p.helped.empty()) put_candidates(json, p);
    }
    json.close();
    json.finish();
    return text;
}

} // namespace vornhost
