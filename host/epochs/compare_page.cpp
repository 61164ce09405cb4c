// A comparison as the data of the page of results: the points at their places in the first epoch, with how far they
// moved until each other one. The columns of what a comparison has not are empty.

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "host/epochs/compare_report.h"
#include "host/results/page_file.h"

namespace vornhost {

namespace {

using json = nlohmann::ordered_json; // writes numbers that are not finite as null

json number(const std::optional<double> &x) { return x && std::isfinite(*x) ? json(*x) : json(nullptr); }

json numbers(const std::optional<double> (&values)[3])
{
    return {number(values[0]), number(values[1]), number(values[2])};
}

json test_of(const FisherTest &t)
{
    if (!t.made()) return nullptr;
    return {{"value", t.value}, {"limit", t.limit}, {"h", t.h}, {"f", number(t.f)}, {"p", t.p}, {"passed", t.passed()}};
}

json move_of(const Shift &s, size_t epoch)
{
    json move = {
        {"epoch", epoch}, {"by", numbers(s.by)}, {"deviation", numbers(s.deviation)}, {"test", test_of(s.test)}};
    if (s.ellipse) move["ellipse"] = {{"a", s.ellipse->a}, {"b", s.ellipse->b}, {"bearing", s.ellipse->bearing}};
    return move;
}

json moves_of(const PointComparison &p)
{
    json all = json::array();
    for (size_t e = 0; e < p.shifts.size(); e++) all.push_back(move_of(p.shifts[e], e + 2));
    return all;
}

const char *role_of(const PointComparison &p, const Comparison &c)
{
    if (!c.stable_found) return "compared";
    if (c.control) return p.stable ? "fits" : "does not fit";
    return p.stable ? "stable" : "moved";
}

json points(const Comparison &c)
{
    json columns;
    const json lists = {json::array(), json::array(), json::array()}, none = {nullptr, nullptr, nullptr};
    for (const char *key : {"name", "station", "role", "moves"}) columns[key] = json::array();
    for (const char *key : {"code", "adjusted"}) columns[key] = lists;
    for (const char *key : {"approximate", "deviation", "ellipse"}) columns[key] = none;
    for (const PointComparison &p : c.points) {
        columns["name"].push_back(p.name);
        columns["station"].push_back(0);
        columns["role"].push_back(role_of(p, c));
        columns["moves"].push_back(moves_of(p));
        for (size_t k = 0; k < 3; k++) {
            columns["code"][k].push_back(p.place[k] ? json("free") : json(nullptr));
            columns["adjusted"][k].push_back(number(p.place[k]));
        }
    }
    return columns;
}

json observations()
{
    json columns;
    for (const char *key : {"kind", "from", "to", "file", "line", "component", "unit", "sigma", "kinds", "names",
                            "files", "components", "units"})
        columns[key] = json::array();
    return columns;
}

json velocities(const Comparison &c)
{
    json all = json::array();
    for (size_t i = 0; i < c.points.size(); i++) {
        const std::optional<Velocity> &v = c.points[i].velocity;
        if (v)
            all.push_back({{"point", i},
                           {"by", numbers(v->by)},
                           {"deviation", numbers(v->deviation)},
                           {"moving", test_of(v->moving)},
                           {"steady", test_of(v->steady)}});
    }
    return all;
}

json strain_of(const Strain &s)
{
    json all = {{"words", s.words}, {"values", json::array()}};
    if (!s.made()) return all;
    for (const auto &[name, v] : named_values(s))
        all["values"].push_back({{"name", name}, {"value", v.value}, {"deviation", v.deviation}});
    if (s.dimension == 2) all["bearing"] = s.bearing;
    all["strained"] = test_of(s.strained);
    all["homogeneous"] = test_of(s.homogeneous);
    return all;
}

json strains(const Comparison &c)
{
    json all = json::array();
    for (const GroupStrain &g : c.strains) {
        all.push_back({{"points", g.points}, {"epochs", json::array()}});
        for (const Strain &s : g.epochs) all.back()["epochs"].push_back(strain_of(s));
    }
    return all;
}

json epochs(const Comparison &c)
{
    json all = json::array();
    for (const EpochResult &e : c.epochs)
        all.push_back({{"file", e.file},
                       {"title", e.title},
                       {"date", e.date},
                       {"datum", e.datum},
                       {"squares", e.squares},
                       {"degrees_of_freedom", e.redundancy}});
    return all;
}

json departures(const Comparison &c)
{
    json all = json::array();
    for (const Departure &d : c.departures)
        if (std::count(c.taken_again.begin(), c.taken_again.end(), d.point) == 0)
            all.push_back({{"point", d.point}, {"test", test_of(d.before)}});
    return all;
}

json comparison(const Comparison &c)
{
    return {{"control", c.control},
            {"level", c.level},
            {"a_priori", c.apriori},
            {"sigma", std::sqrt(c.factor.value)},
            {"open", c.open},
            {"coordinates", c.coordinates},
            {"variances", test_of(c.variances)},
            {"congruence", test_of(c.congruence)},
            {"stable", test_of(c.stable)},
            {"stable_found", c.stable_found},
            {"sights", json(c.sights)},
            {"epochs", epochs(c)},
            {"left_out", departures(c)},
            {"velocities", velocities(c)},
            {"strains", strains(c)},
            {"elsewhere", json(c.elsewhere)}};
}

std::string title_of(const Comparison &c)
{
    if (c.control) return "Control points of " + c.epochs[1].file;
    return "Comparison of " + std::to_string(c.epochs.size()) + " epochs";
}

} // namespace

std::string compare_html(const Comparison &c, const std::string &version, const std::string &date)
{
    std::string files;
    for (const EpochResult &e : c.epochs)
        if (!c.control || &e != &c.epochs[0]) files += (files.empty() ? "" : ", ") + e.file;
    const std::string title = title_of(c);
    json all = {{"program", "vorn"},
                {"version", version},
                {"date", date},
                {"title", title},
                {"file", files},
                {"dimension", c.dimension},
                {"units",
                 {{"length", c.units.length},
                  {"metres", c.units.metres},
                  {"angle", c.units.angle},
                  {"zenith", c.units.zenith}}},
                {"limits", {{"one", nullptr}, {"largest", nullptr}}},
                {"adjusted", true},
                {"verdict", {compare_verdict(c)}},
                {"words", json(c.words)},
                {"notes", json(c.notes)}};
    all["points"] = points(c);
    all["observations"] = observations();
    for (const char *key : {"kinds", "orientations", "groups", "cameras", "lumps", "pairs", "suspects", "derived",
                            "accounts", "closures"})
        all[key] = json::array();
    all["comparison"] = comparison(c);
    return page_file(title, all.dump(-1, ' ', false, json::error_handler_t::replace));
}

} // namespace vornhost
