#include "host/epochs/compare_report.h"
#include "host/results/json_text.h"

namespace vornhost {

namespace {

const char *const axes[3] = {"x", "y", "z"};

void put_axes(JsonText &json, const char *key, const std::optional<double> (&values)[3])
{
    json.key(key).open_object();
    for (int k = 0; k < 3; k++) json.pair(axes[k], values[k]);
    json.close();
}

void put(JsonText &json, const char *key, const FisherTest &t)
{
    if (!t.made()) return;
    json.key(key).open_object();
    json.pair("value", t.value);
    json.pair("limit", t.limit);
    json.pair("degrees_of_freedom", t.h);
    json.pair("of", t.f); // null: infinite
    json.pair("p", t.p);
    json.pair("passed", t.passed());
    json.close();
}

void put_names(JsonText &json, const char *key, const std::vector<std::string> &names)
{
    json.key(key).open_array();
    for (const std::string &name : names) json.value(name);
    json.close();
}

void put_epochs(JsonText &json, const Comparison &c)
{
    json.key("epochs").open_array();
    for (const EpochResult &e : c.epochs) {
        json.open_object();
        json.pair("file", e.file);
        if (!e.title.empty()) json.pair("title", e.title);
        if (!e.date.empty()) json.pair("date", e.date);
        if (c.made()) {
            json.pair("degrees_of_freedom", e.redundancy);
            json.pair("squares", e.squares);
            json.pair("datum", e.datum);
        }
        json.close();
    }
    json.close();
}

void put(JsonText &json, const Shift &s, size_t epoch)
{
    json.open_object();
    json.pair("epoch", (int)epoch);
    put_axes(json, "by", s.by);
    put_axes(json, "standard_deviation", s.deviation);
    if (s.ellipse) {
        json.key("confidence_ellipse").open_object();
        json.pair("semi_major_axis", s.ellipse->a);
        json.pair("semi_minor_axis", s.ellipse->b);
        json.pair("bearing", s.ellipse->bearing);
        json.close();
    }
    put(json, "test", s.test);
    json.close();
}

void put(JsonText &json, const PointComparison &p)
{
    json.open_object();
    json.pair("name", p.name);
    json.pair("stable", p.stable);
    json.key("shifts").open_array();
    for (size_t e = 0; e < p.shifts.size(); e++) put(json, p.shifts[e], e + 2);
    json.close();
    if (p.velocity) {
        json.key("velocity_per_year").open_object();
        put_axes(json, "by", p.velocity->by);
        put_axes(json, "standard_deviation", p.velocity->deviation);
        put(json, "moving", p.velocity->moving);
        put(json, "steady", p.velocity->steady);
        json.close();
    }
    json.close();
}

void put(JsonText &json, const char *key, const StrainValue &v)
{
    json.key(key).open_object();
    json.pair("value", v.value);
    json.pair("standard_deviation", v.deviation);
    json.close();
}

void put(JsonText &json, const Strain &s, size_t epoch)
{
    static const char *const plane[] = {"xx", "yy", "xy"}, *const space[] = {"xx", "yy", "zz", "xy", "xz", "yz"};
    static const char *const turns[] = {"yz", "zx", "xy"};
    json.open_object();
    json.pair("epoch", (int)epoch);
    put_names(json, "words", s.words);
    if (s.made()) {
        if (s.mean) put(json, "mean_extension", *s.mean);
        json.key("elements").open_object();
        for (size_t i = 0; i < s.elements.size(); i++) put(json, (s.dimension == 2 ? plane : space)[i], s.elements[i]);
        json.close();
        json.key("principal").open_array();
        for (const StrainValue &v : s.principal) {
            json.open_object();
            json.pair("value", v.value);
            json.pair("standard_deviation", v.deviation);
            json.close();
        }
        json.close();
        if (s.dimension == 2) json.pair("bearing", s.bearing);
        put(json, "shear", s.shear);
        json.key("turns").open_object();
        for (size_t i = 0; i < s.turns.size(); i++)
            if (s.turns[i]) put(json, turns[s.dimension == 2 ? 2 : i], *s.turns[i]);
        json.close();
        put(json, "strained", s.strained);
        put(json, "homogeneous", s.homogeneous);
    }
    json.close();
}

void put_strains(JsonText &json, const Comparison &c)
{
    if (c.strains.empty()) return;
    json.key("strains").open_array();
    for (const GroupStrain &g : c.strains) {
        json.open_object();
        put_names(json, "points", g.points);
        json.key("epochs").open_array();
        for (size_t e = 0; e < g.epochs.size(); e++) put(json, g.epochs[e], e + 2);
        json.close();
        json.close();
    }
    json.close();
}

void put_results(JsonText &json, const Comparison &c)
{
    json.pair("variance_factor", c.factor.value);
    json.pair("variance_factor_a_priori", c.apriori);
    put(json, "equal_variances", c.variances);
    json.pair("coordinates", c.coordinates);
    json.pair("open_motions", c.open);
    put(json, "congruence", c.congruence);
    json.key("left_out").open_array();
    for (const Departure &d : c.departures) {
        json.open_object();
        json.pair("point", d.point);
        put(json, "before", d.before);
        json.close();
    }
    json.close();
    put_names(json, "taken_again", c.taken_again);
    put(json, "stable", c.stable);
    json.pair("stable_found", c.stable_found);
    json.key("points").open_array();
    for (const PointComparison &p : c.points) put(json, p);
    json.close();
    put_strains(json, c);
}

} // namespace

std::string compare_json(const Comparison &c, const std::string &version)
{
    std::string text;
    JsonText json([&](std::string_view piece) { text += piece; });
    json.open_object();
    json.pair(c.control ? "control" : "compare", 1);
    json.pair("program", "vorn");
    json.pair("version", version);
    json.pair("compared", c.made());
    json.pair("level", c.level);
    json.pair("dimension", c.dimension);
    put_names(json, "words", c.words);
    put_names(json, "notes", c.notes);
    put_names(json, "not_compared", c.elsewhere);
    put_epochs(json, c);
    if (c.made()) put_results(json, c);
    json.close();
    json.finish();
    return text;
}

} // namespace vornhost
