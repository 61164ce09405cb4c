#include "host/epochs/compare_report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "host/results/report_units.h"
#include "host/results/test_limits.h"
#include "host/results/text_table.h"

namespace vornhost {

namespace {

const char *const axes[3] = {"x", "y", "z"};

std::string freedom(double f) { return std::isinf(f) ? "infinite" : decimal(f, 0); }

// "4.21, limit 2.13 (F of 8 and 24), p 0.0023"
std::string words_of(const FisherTest &t)
{
    return decimal(t.value, 2) + ", limit " + decimal(t.limit, 2) + " (F of " + std::to_string(t.h) + " and " +
           freedom(t.f) + "), p " + probability_text(t.p);
}

std::string level_text(double level) { return decimal(100.0 * level, level < 0.001 ? 3 : level < 0.01 ? 2 : 1) + " %"; }

class Report {
public:
    Report(const Comparison &all, const std::string &day) : c(all), units(all.units), date(day) {}

    std::string text() const
    {
        return head() + epochs() + congruence() + departures() + shifts() + velocities() + strains() + others() + "\n" +
               underlined("Verdict", '-') + compare_verdict(c) + "\n";
    }

private:
    std::string head() const;
    std::string epochs() const;
    std::string congruence() const;
    std::string control() const;
    std::string departures() const;
    std::string shifts() const;
    std::string shifts_of(size_t epoch) const;
    std::string velocities() const;
    std::string strains() const;
    std::string strain(const Strain &s) const;
    std::string others() const;
    std::string level() const { return level_text(c.level); }
    std::string small(const std::optional<double> &x) const { return x ? units.small_length(*x) : ""; }

    const Comparison &c;
    const ReportUnits units;
    const std::string date;
};

std::string Report::head() const
{
    std::string text = underlined(c.control ? "Control points of " + c.epochs[1].file
                                            : "Comparison of " + std::to_string(c.epochs.size()) + " epochs",
                                  '=');
    text += "date   " + date + "\nunits  shifts and precision in " + units.small_length_name() + "\n";
    text +=
        "tests  at a level of " + level() + "; variance factor " +
        (c.apriori ? "a priori: 1"
                   : (c.control ? "a posteriori, of the free network: sigma " : "a posteriori, of all epochs: sigma ") +
                         decimal(std::sqrt(c.factor.value), 4) + " of " + freedom(c.factor.f) + " degrees of freedom") +
        "\n";
    return text;
}

std::string Report::epochs() const
{
    if (c.control) return {};
    TextTable table({{"epoch", ""},
                     {"file", "", Align::left},
                     {"date", "", Align::left},
                     {"degrees of freedom", ""},
                     {"sigma", ""},
                     {"datum", "", Align::left}});
    for (size_t e = 0; e < c.epochs.size(); e++) {
        const EpochResult &r = c.epochs[e];
        const double f = r.redundancy;
        table.add({std::to_string(e + 1), r.file, r.date, std::to_string(r.redundancy),
                   f > 0 ? decimal(std::sqrt(r.squares / f), 4) : "", r.datum});
    }
    std::string text = section("Epochs", table);
    if (!c.variances.made()) return text;
    text += "\nAre the epochs equally precise? Larger variance factor by smaller one: " + words_of(c.variances) + "\n";
    return text + (c.variances.passed() ? "Nothing speaks against it.\n"
                                        : "No: that of " + c.larger + " is larger than that of " + c.smaller +
                                              ". Correct the standard deviations first.\n");
}

std::string Report::congruence() const
{
    if (c.control) return control();
    std::string text = "\n" + underlined("Congruence", '-');
    text += std::to_string(c.points.size()) + " points with " + std::to_string(c.coordinates) +
            " coordinates are compared; " + std::to_string(c.open) +
            " motions are open and were left out of account.\n";
    text += "Did all points keep their places to one another? Growth of v'Pv by the mean of v'Pv: " +
            words_of(c.congruence) + "\n";
    return text + (c.congruence.passed() ? "Nothing speaks against it.\n" : "No.\n");
}

std::string Report::control() const
{
    const EpochResult &network = c.epochs[1];
    const double q = c.congruence.value * c.congruence.h * c.factor.value;
    std::string text = "\n" + underlined("Free network and control points", '-');
    text += "free network: " + network.datum + "; v'Pv " + decimal(network.squares, 3) + " of " +
            std::to_string(network.redundancy) + " degrees of freedom\n";
    text += "on all control points: v'Pv " + decimal(network.squares + q, 3) + " of " +
            std::to_string(network.redundancy + c.congruence.h) + "\n";
    text += std::to_string(c.points.size()) + " points hold " + std::to_string(c.coordinates) + " coordinates; " +
            std::to_string(c.open) + " motions are open in the free network.\n";
    text += "Do the control points fit it, and one another? Growth of v'Pv by the variance factor: " +
            words_of(c.congruence) + "\n";
    return text + (c.congruence.passed() ? "Nothing speaks against it.\n" : "No.\n");
}

std::string Report::departures() const
{
    if (c.departures.empty()) return {};
    TextTable table(
        {{"step", ""}, {"point left out", "", Align::left}, {"test with it", ""}, {"limit", ""}, {"p", ""}});
    for (size_t i = 0; i < c.departures.size(); i++) {
        const Departure &d = c.departures[i];
        table.add({std::to_string(i + 1), d.point, decimal(d.before.value, 2), decimal(d.before.limit, 2),
                   probability_text(d.before.p)});
    }
    std::string again;
    for (const std::string &name : c.taken_again) again += (again.empty() ? "" : ", ") + name;
    if (!again.empty()) again = "\nTried again with the others: " + again + " fits them after all.\n";
    return section(c.control ? "Which control points do not fit" : "Which points moved", table) + again +
           "\nThe other points: " + words_of(c.stable) + "\n" +
           (c.stable_found
                ? ""
                : "No group of points fits together: the shifts below are against the mean of all points.\n");
}

std::string Report::shifts_of(size_t epoch) const
{
    const std::string unit = units.small_length_name();
    std::vector<TextColumn> columns = {{"point", "", Align::left}, {"", "", Align::left}};
    for (const char *axis : axes) columns.push_back({std::string("d") + axis, unit});
    for (const char *axis : axes) columns.push_back({std::string("s") + axis, unit});
    for (const TextColumn &more :
         {TextColumn{"a", unit}, TextColumn{"b", unit}, TextColumn{"bearing", units.angle_name()},
          TextColumn{"test", ""}, TextColumn{"limit", ""}, TextColumn{"p", ""}, TextColumn{"", "", Align::left}})
        columns.push_back(more);
    TextTable table(columns);
    for (const PointComparison &p : c.points) {
        const Shift &s = p.shifts[epoch - 1];
        std::vector<std::string> cells = {p.name, p.stable          ? (c.control ? "fits" : "stable")
                                                  : !c.stable_found ? ""
                                                  : c.control       ? "does not fit"
                                                                    : "moved"};
        for (const auto &x : s.by) cells.push_back(small(x));
        for (const auto &x : s.deviation) cells.push_back(small(x));
        cells.push_back(s.ellipse ? units.small_length(s.ellipse->a) : "");
        cells.push_back(s.ellipse ? units.small_length(s.ellipse->b) : "");
        cells.push_back(s.ellipse ? units.bearing(s.ellipse->bearing) : "");
        cells.push_back(s.test.made() ? decimal(s.test.value, 2) : "");
        cells.push_back(s.test.made() ? decimal(s.test.limit, 2) : "");
        cells.push_back(s.test.made() ? probability_text(s.test.p) : "");
        cells.push_back(!s.test.made() || s.test.passed() ? "" : "*");
        table.add(cells);
    }
    if (c.control) return section("Control points: free network less given coordinates", table);
    return section("Shifts from " + c.epochs[0].file + " to " + c.epochs[epoch].file, table);
}

std::string Report::shifts() const
{
    std::string text;
    for (size_t e = 1; e < c.epochs.size(); e++) text += shifts_of(e);
    const double factor = std::sqrt(2.0 * fisher_limit(c.level, 2, c.factor.f));
    return text + "\n* beyond the limit. s: standard deviations" +
           (c.dimension == 1 ? std::string(".\n")
                             : ". a, b, bearing: confidence ellipses of " + decimal(100.0 * (1.0 - c.level), 1) +
                                   " %, " + decimal(factor, 3) + " times the standard ellipse.\n");
}

std::string Report::velocities() const
{
    const std::string unit = units.small_length_name() + std::string("/year");
    std::vector<TextColumn> columns = {{"point", "", Align::left}};
    for (const char *axis : axes) columns.push_back({std::string("v") + axis, unit});
    for (const char *axis : axes) columns.push_back({std::string("s") + axis, unit});
    for (const char *heading : {"moving", "limit", "p", "steady", "limit", "p"}) columns.push_back({heading, ""});
    TextTable table(columns);
    for (const PointComparison &p : c.points) {
        if (!p.velocity) continue;
        std::vector<std::string> cells = {p.name};
        for (const auto &x : p.velocity->by) cells.push_back(small(x));
        for (const auto &x : p.velocity->deviation) cells.push_back(small(x));
        for (const FisherTest *t : {&p.velocity->moving, &p.velocity->steady})
            for (const std::string &cell : {decimal(t->value, 2), decimal(t->limit, 2), probability_text(t->p)})
                cells.push_back(t->made() ? cell : "");
        table.add(cells);
    }
    return section("Velocities through all epochs", table);
}

// Strains and turns in millionths.
std::string Report::strain(const Strain &s) const
{
    if (!s.made()) return "  " + s.words[0] + "; " + s.words[1] + "\n";
    const auto ppm = [](const StrainValue &v) {
        return std::vector<std::string>{decimal(1e6 * v.value, 2), decimal(1e6 * v.deviation, 2)};
    };
    const auto bearing = [&](const std::string &what) {
        if (s.dimension != 2 || what.compare(0, 10, "extension ") != 0) return std::string();
        const double turned = what == "extension 2" ? 2.0 * std::atan(1.0) : 0.0;
        return ", bearing " + units.bearing(s.bearing + turned) + " " + units.angle_name();
    };
    TextTable table({{"", "", Align::left}, {"value", "ppm"}, {"standard deviation", "ppm"}});
    for (const auto &[what, v] : named_values(s)) table.add({what + bearing(what), ppm(v)[0], ppm(v)[1]});
    std::string text = table.text();
    if (!s.mean) text += "The scale is open: extensions are those beside the mean one, which nothing tells.\n";
    text += "Did the group keep its shape? " + words_of(s.strained) + ": " +
            (s.strained.passed() ? "nothing speaks against it\n" : "no\n");
    if (!s.homogeneous.made()) return text;
    return text + "Was it strained alike everywhere? " + words_of(s.homogeneous) + ": " +
           (s.homogeneous.passed() ? "nothing speaks against it\n" : "no\n");
}

std::string Report::strains() const
{
    std::string text;
    for (const GroupStrain &g : c.strains) {
        std::string names;
        for (const std::string &name : g.points) names += (names.empty() ? "" : ", ") + name;
        for (size_t e = 0; e < g.epochs.size(); e++)
            text +=
                "\n" +
                underlined("Strain of " + names + " from " + c.epochs[0].file + " to " + c.epochs[e + 1].file, '-') +
                strain(g.epochs[e]);
    }
    return text;
}

std::string Report::others() const
{
    std::string text;
    for (const std::string &name : c.elsewhere) text += (text.empty() ? "" : ", ") + name;
    if (!text.empty()) text = "\n" + underlined("Not compared: not in all epochs, or not asked for", '-') + text + "\n";
    if (c.notes.empty()) return text;
    text += "\n" + underlined("Notes", '-');
    for (const std::string &note : c.notes) text += note + "\n";
    return text;
}

} // namespace

std::string compare_verdict(const Comparison &c)
{
    const std::string level = " at a level of " + level_text(c.level);
    if (c.congruence.passed())
        return "At a level of " + level_text(c.level) +
               (c.control ? " all control points fit." : " no point moved against the others.");
    if (!c.stable_found)
        return c.control ? "The control points do not fit, and no group of them fits together."
                         : "The points moved, and no group of them kept its shape.";
    std::string names;
    size_t count = 0;
    for (const Departure &d : c.departures) {
        if (std::count(c.taken_again.begin(), c.taken_again.end(), d.point) > 0) continue;
        names += (names.empty() ? "" : ", ") + d.point;
        count++;
    }
    return std::to_string(count) + " of " + std::to_string(c.points.size()) +
           (c.control ? " control points do not fit" : " points moved") + level + ": " + names;
}

std::vector<std::pair<std::string, StrainValue>> named_values(const Strain &s)
{
    static const char *const plane[] = {"exx", "eyy", "exy"}, *const space[] = {"exx", "eyy", "ezz",
                                                                                "exy", "exz", "eyz"};
    static const char *const turns[] = {"turn from y to z", "turn from z to x", "turn from x to y"};
    std::vector<std::pair<std::string, StrainValue>> all;
    if (s.mean) all.emplace_back("mean extension", *s.mean);
    for (size_t i = 0; i < s.elements.size(); i++)
        all.emplace_back((s.dimension == 2 ? plane : space)[i], s.elements[i]);
    for (size_t i = 0; i < s.principal.size(); i++)
        all.emplace_back("extension " + std::to_string(i + 1), s.principal[i]);
    all.emplace_back("largest shear", s.shear);
    for (size_t i = 0; i < s.turns.size(); i++)
        if (s.turns[i]) all.emplace_back(turns[s.dimension == 2 ? 2 : i], *s.turns[i]);
    return all;
}

std::string compare_report(const Comparison &comparison, const std::string &date)
{
    return Report(comparison, date).text();
}

} // namespace vornhost
