#include "host/results/closure_text.h"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "host/results/report_units.h"
#include "host/results/text_table.h"

namespace vornhost {

namespace {

constexpr size_t most_points = 12, most_rows = 8; // written of one closure

std::string joined(const std::vector<std::string> &points)
{
    std::string text;
    const size_t n = points.size(), head = n > most_points ? most_points - 4 : n;
    for (size_t i = 0; i < n; i++) {
        if (i >= head && i + 3 < n) continue;
        if (i > 0) text += i > head && i + 3 == n ? " - ... - " : " - ";
        text += points[i];
    }
    return n > most_points ? text + " (" + std::to_string(n) + " points)" : text;
}

// "net.inp:12,14,17".
std::string places(const std::vector<RowPlace> &rows)
{
    std::string text, file;
    for (size_t i = 0; i < rows.size() && i < most_rows; i++) {
        const bool next = rows[i].file != file;
        text += (i == 0 ? "" : next ? " " : ",") + (next ? rows[i].file + ":" : std::string());
        text += std::to_string(rows[i].line);
        file = rows[i].file;
    }
    return rows.size() > most_rows ? text + ",..." : text;
}

std::string counted(const ClosuresResult &c, size_t shown)
{
    std::string kind = c.kind;
    kind[0] = (char)std::toupper((unsigned char)kind[0]);
    std::string text = kind + ": " + std::to_string(c.found) + (c.found == 1 ? " closure, " : " closures, ");
    text += c.beyond == 0 ? "none beyond its limit"
                          : std::to_string(c.beyond) + (c.beyond == 1 ? " beyond its limit" : " beyond their limits");
    if (c.missed > 0) text += "; " + std::to_string(c.missed) + " more loops are too long to be formed";
    return text + (shown < c.found ? "; the worst " + std::to_string(shown) + ":" : ":") + "\n";
}

std::string table_of(const ClosuresResult &c, const ReportUnits &units, size_t shown)
{
    const bool angle = c.unit == "rad";
    const char *unit = angle ? units.small_angle_name() : units.small_length_name();
    const auto small = [&](double x) { return angle ? units.small_angle(x) : units.small_length(x); };
    TextTable table({{"misclosure", unit},
                     {"limit", unit},
                     {"ratio", ""},
                     {"length", units.length_name()},
                     {"1 in", ""},
                     {"at", "", Align::left},
                     {"points", "", Align::left},
                     {"place", "", Align::left}});
    for (size_t i = 0; i < shown; i++) {
        const ClosureResult &w = c.worst[i];
        const double off = std::fabs(w.misclosure);
        const bool share = w.length && off > 0.0 && *w.length / off < 1e7;
        table.add({small(w.misclosure), small(w.limit), decimal(off / w.limit, 2),
                   w.length ? units.length(*w.length) : "", share ? decimal(*w.length / off, 0) : "", w.at,
                   joined(w.points), places(w.rows)});
    }
    return table.text();
}

} // namespace

std::string closure_text(const Results &results, size_t most)
{
    const ReportUnits units(results.units);
    std::string text;
    for (const ClosuresResult &c : results.closures) {
        const size_t shown = std::min(most, c.worst.size());
        text += (text.empty() ? "" : "\n") + counted(c, shown);
        if (shown > 0) text += table_of(c, units, shown);
    }
    return text;
}

} // namespace vornhost
