#include "host/results/text_report.h"

#include <algorithm>

#include "host/results/closure_text.h"
#include "host/results/report_sections.h"
#include "host/results/verdict.h"

namespace vornhost {

namespace {

// What standard deviations and ellipses contain.
std::string precision_text(const PrecisionResult &p, bool ellipses)
{
    std::string text = p.a_priori ? "a priori" : "a posteriori, times sigma " + decimal(p.sigma, 4);
    if (!ellipses) return text;
    if (!p.confidence) return text + "; standard ellipses";
    return text + "; ellipses of " + decimal(100.0 * *p.confidence, 1) + " %, " + decimal(p.ellipse_factor, 3) +
           " times the standard ones, ellipsoids " + decimal(p.ellipsoid_factor, 3) + " times";
}

} // namespace

std::string TextReport::head() const
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

std::string TextReport::summary() const
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

std::string TextReport::notes() const
{
    if (results.notes.empty()) return {};
    std::string text = "\n" + underlined("Notes", '-');
    for (const std::string &note : results.notes) text += note + "\n";
    return text;
}

std::string TextReport::closures() const
{
    constexpr size_t most = 10; // of a kind
    const std::string text = closure_text(results, most);
    return text.empty() ? text : "\n" + underlined("Closures before the adjustment", '-') + text;
}

// All that is wrong, where the verdict has no room for it.
std::string TextReport::refusal() const
{
    if (results.adjusted || results.words.size() < 3) return {};
    std::string text = "\n" + underlined("What is wrong", '-');
    for (const std::string &word : results.words) text += word + "\n";
    return text;
}

std::string TextReport::verdict() const
{
    std::string text = "\n" + underlined("Verdict", '-');
    for (const std::string &line : vornhost::verdict(results)) text += line + "\n";
    return text;
}

std::string text_report(const Results &results, const std::string &date, bool brief)
{
    return TextReport(results, date, brief).text();
}

} // namespace vornhost
