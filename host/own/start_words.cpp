#include "host/own/start_words.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>

#include "host/input/angle.h"
#include "host/input/names.h"
#include "host/own/item_names.h"

namespace vornhost {

namespace {

namespace va = vornadjust;
using va::Kind;

constexpr size_t most_lines = 20;     // of one kind
constexpr double nearly_there = 0.05; // of how far a point is off: another place that explains it
const char *const remedy = "observe a distance, or a direction to or from a point that does not lie on it";

std::string number(double x, int digits)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.*f", digits, x);
    return text;
}

std::string name_of(const Model &network, const Numbers &numbers, int point)
{
    return shown_name(network, point_name(network, numbers.points[(size_t)point]));
}

std::string misfit_line(const Model &network, const Numbers &numbers, const start::Misfit &m)
{
    const va::Observation &o = numbers.model.observations[(size_t)m.observation];
    std::string line = item_text(item_name(network, numbers, m.observation)) + " does not fit the others";
    if (va::components(o.kind, numbers.model.frame.space) == 1)
        line += ": it reads " + reading_text(network, o, o.value[0]) + " and would have to read " +
                reading_text(network, o, m.would_read);
    return line + "; it has no part in the first coordinates";
}

void cut(std::vector<std::string> *lines, const char *what)
{
    if (lines->size() <= most_lines) return;
    const size_t more = lines->size() - most_lines;
    lines->resize(most_lines);
    lines->push_back("and " + std::to_string(more) + " more " + what);
}

// "1 direction", "2 distances".
std::string counted(int n, const std::string &what) { return std::to_string(n) + " " + what + (n == 1 ? "" : "s"); }

const char *word_of(Kind kind)
{
    switch (kind) {
    case Kind::direction: return "direction";
    case Kind::angle: return "angle";
    case Kind::azimuth: return "azimuth";
    case Kind::vertical_angle: return "vertical angle";
    case Kind::height_difference: return "height difference";
    case Kind::bearing: return "bearing";
    case Kind::scale_bar: return "scale bar";
    case Kind::difference: return "coordinate difference";
    case Kind::baseline: return "baseline";
    case Kind::position: return "observed point";
    case Kind::image: return "image point";
    case Kind::unknown: return nullptr;
    default: return "distance";
    }
}

using Counts = std::map<std::string, int>;

std::map<int, Counts> sights_of(const va::Model &model, const std::vector<int> &points)
{
    std::map<int, Counts> counts;
    for (const int p : points) counts[p];
    for (const va::Observation &o : model.observations) {
        const char *word = word_of(o.kind);
        if (!o.use || !word) continue;
        for (const int p : {o.from, o.to, o.third}) {
            const auto at = counts.find(p);
            if (at != counts.end()) at->second[word]++;
        }
    }
    return counts;
}

// "has one direction and 2 distances only".
std::string sights_text(const Counts &counts)
{
    if (counts.empty()) return "nothing was observed of it";
    std::string text;
    size_t i = 0;
    for (const auto &[word, n] : counts) {
        text += (i == 0 ? "" : i + 1 == counts.size() ? " and " : ", ") + counted(n, word);
        i++;
    }
    return "it has " + text;
}

std::string where(const Model &network, const Numbers &numbers, int point)
{
    return place(network, point_source(network, numbers.points[(size_t)point]));
}

// "lies on the circle through A, B and C, and its directions fit anywhere on it".
std::string degenerate_text(const Model &network, const Numbers &numbers, const start::Degenerate &d)
{
    const auto name = [&](int k) { return name_of(network, numbers, d.through[k]); };
    if (d.through[2] < 0)
        return "lies on the line through " + name(0) + " and " + name(1) + ", and its directions fit anywhere on it";
    return "lies on the circle through " + name(0) + ", " + name(1) + " and " + name(2) +
           ", and its directions fit anywhere on it";
}

std::vector<std::string> missing_lines(const Model &network, const Numbers &numbers, const start::Start &start)
{
    std::vector<std::string> lines;
    const std::map<int, Counts> counts = sights_of(numbers.model, start.missing);
    std::map<int, std::string> reasons;
    for (const start::Degenerate &d : start.degenerate) reasons[d.point] = degenerate_text(network, numbers, d);
    for (const int p : start.missing)
        lines.push_back("first coordinates of " + name_of(network, numbers, p) + " could not be computed (" +
                        where(network, numbers, p) +
                        "): " + (reasons.count(p) > 0 ? "it " + reasons[p] : sights_text(counts.at(p))));
    cut(&lines, "points");
    if (!reasons.empty()) {
        lines.emplace_back(std::string("no approximate coordinates help there: ") + remedy);
        if (reasons.size() == start.missing.size()) return lines;
    }
    lines.push_back(
        "give their approximate coordinates, or observations that place them: directions from two stations, "
        "a direction and a distance, or for a station directions to three points");
    return lines;
}

// In the file's unit and origin.
std::string plan_text(const Model &network, const Numbers &numbers, const double x[2])
{
    const double unit = metres_per_unit(network.p);
    return number((x[0] + numbers.origin[0]) / unit, 3) + " " + number((x[1] + numbers.origin[1]) / unit, 3);
}

std::string doubt_line(const Model &network, const Numbers &numbers, const start::Doubt &d)
{
    const auto at = [&](const double x[2]) { return plan_text(network, numbers, x); };
    return name_of(network, numbers, d.point) + " fits in two places, " + number(d.apart, 3) + " m apart: at " +
           at(d.x) + " and at " + at(d.other) + " (" + where(network, numbers, d.point) + ")";
}

std::vector<std::string> doubt_lines(const Model &network, const Numbers &numbers, const start::Start &start)
{
    std::vector<std::string> lines;
    for (const start::Doubt &d : start.doubts) lines.push_back(doubt_line(network, numbers, d));
    cut(&lines, "points");
    lines.push_back("give an approximate value, or observe one more sight");
    return lines;
}

// What the given coordinates of a displaced point look like instead; empty when that is not known.
std::string guess_text(const Model &network, const Numbers &numbers, const start::Displaced &d,
                       const std::vector<start::Displaced> &all)
{
    const double near = nearly_there * d.off;
    for (const start::Displaced &o : all)
        if (o.point != d.point && std::hypot(o.given[0] - d.x[0], o.given[1] - d.x[1]) < near)
            return ", where " + name_of(network, numbers, o.point) + " is given: are the two exchanged?";
    const double *origin = numbers.origin;
    const double dx = d.given[1] + origin[1] - d.x[0] - origin[0];
    const double dy = d.given[0] + origin[0] - d.x[1] - origin[1];
    return std::hypot(dx, dy) < near ? ": are x and y exchanged?" : "";
}

std::string displaced_line(const Model &network, const Numbers &numbers, const start::Displaced &d,
                           const std::vector<start::Displaced> &all)
{
    return where(network, numbers, d.point) + ": " + name_of(network, numbers, d.point) + " is given " +
           number(d.off, 3) + " m from where its sights put it: " + plan_text(network, numbers, d.x) +
           guess_text(network, numbers, d, all);
}

// All given coordinates are wrong in the same way.
std::vector<std::string> given_lines(const start::Start &start)
{
    if (start.mirrored)
        return {"the given coordinates fit the sights as a mirror image only: are x and y exchanged, or do the "
                "directions run from y to x?"};
    return {"the given coordinates are " + number(start.given_scale, start.given_scale < 0.1 ? 6 : 3) +
            " times as far from one another as the sights say: is their unit right, and that of the distances?"};
}

} // namespace

std::string reading_text(const Model &network, const va::Observation &o, double value)
{
    static const char *const units[] = {" gon", "°", "° (ddd.mmss)", " rad", " mgon", "\"", " mil", "°"};
    project u = network.p; // its conversions, in the unit of the file
    u.iangle = file_units(network).angle;
    const char *const unit = units[u.iangle];
    switch (o.kind) {
    case Kind::direction:
    case Kind::angle:
    case Kind::bearing: return number(from_direction(u.iangle, value), 4) + unit;
    case Kind::azimuth: return number(u.aztoraw(1, value), 4) + unit;
    case Kind::vertical_angle: return number(u.vtoraw(1, value), 4) + unit;
    case Kind::image: return number(value, 1) + " pixels";
    default: return number(value, 3) + " m";
    }
}

std::vector<std::string> start_refusals(const Model &network, const Numbers &numbers, const start::Start &start)
{
    if (start.mirrored || start.given_scale != 1.0) return given_lines(start);
    return start.missing.empty() ? doubt_lines(network, numbers, start) : missing_lines(network, numbers, start);
}

std::vector<std::string> degenerate_words(const Model &network, const Numbers &numbers, const std::vector<int> &points)
{
    const std::vector<char> all((size_t)numbers.model.n_points, 1);
    std::vector<std::string> lines;
    for (const start::Degenerate &d : start::find_degenerate(numbers.model, all, points))
        lines.push_back(name_of(network, numbers, d.point) + " " + degenerate_text(network, numbers, d) + " (" +
                        where(network, numbers, d.point) + "): " + remedy);
    cut(&lines, "points");
    return lines;
}

std::vector<std::string> start_notes(const Model &network, const Numbers &numbers, const start::Start &start)
{
    std::vector<std::string> lines, misfits;
    if (start.contradicts)
        lines.push_back("half of the observations are more than " + number(start.scale, 0) +
                        " standard deviations off: are the units of angles and lengths right, and do the directions "
                        "run from x to y?");
    std::vector<std::string> displaced;
    for (const start::Displaced &d : start.displaced)
        displaced.push_back(displaced_line(network, numbers, d, start.displaced));
    cut(&displaced, "points");
    for (const start::Misfit &m : start.misfits) misfits.push_back(misfit_line(network, numbers, m));
    cut(&misfits, "observations that do not fit");
    for (const auto *some : {&displaced, &misfits}) lines.insert(lines.end(), some->begin(), some->end());
    return lines;
}

} // namespace vornhost
