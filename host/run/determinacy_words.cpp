// Words for datum and determinacy.

#include "host/run/determinacy_words.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace vornhost {

using namespace vornadjust;

namespace {

constexpr std::size_t most_names = 8;
constexpr std::size_t most_sentences = 8;
constexpr double half_turn = 3.14159265358979323846;
// A point lies at a centre when it is this near, beside the size of the network.
constexpr double at_centre = 1e-6;
// Directions this near to an axis or a plane are in it.
constexpr double in_axis = 1e-6;
// Directions that rise less are printed by their bearing alone.
constexpr double level = 5e-4;

std::string number(double x, const char *format)
{
    char text[64];
    std::snprintf(text, sizeof text, format, x);
    return text;
}

std::string counted(int n, const std::string &one) { return std::to_string(n) + " " + one + (n == 1 ? "" : "s"); }

// "a", "a and b", "a, b and c"
std::string listed(const std::vector<std::string> &parts)
{
    std::string out;
    for (std::size_t i = 0; i < parts.size(); i++)
        out += (i == 0 ? "" : i + 1 == parts.size() ? " and " : ", ") + parts[i];
    return out;
}

const char *noun(Kind kind)
{
    switch (kind) {
    case Kind::slope_distance:
    case Kind::plane_distance:
    case Kind::level_distance: return "distance";
    case Kind::horizontal_distance: return "horizontal distance";
    case Kind::scale_bar: return "scale bar";
    case Kind::height_difference: return "height difference";
    case Kind::direction: return "direction";
    case Kind::angle: return "angle";
    case Kind::vertical_angle: return "vertical angle";
    case Kind::azimuth: return "azimuth";
    case Kind::bearing: return "bearing";
    case Kind::baseline: return "baseline";
    case Kind::position: return "observed point";
    case Kind::difference: return "coordinate difference";
    case Kind::image: return "image point";
    case Kind::unknown: return "weighted value";
    }
    return "";
}

// Counts of observations by what a surveyor calls them, in the order of the kinds.
std::vector<std::pair<std::string, int>> by_noun(const std::array<int, n_kinds> &of_kind)
{
    std::vector<std::pair<std::string, int>> out;
    for (int k = 0; k < n_kinds; k++) {
        if (of_kind[k] == 0) continue;
        const std::string name = noun(static_cast<Kind>(k));
        if (!out.empty() && out.back().first == name)
            out.back().second += of_kind[k];
        else
            out.emplace_back(name, of_kind[k]);
    }
    return out;
}

std::vector<std::string> counts(const std::array<int, n_kinds> &of_kind)
{
    std::vector<std::string> out;
    for (const auto &[name, n] : by_noun(of_kind)) out.push_back(counted(n, name));
    return out;
}

// Open motions by their counts.
std::string free_motions(const std::vector<NamedMotion> &open)
{
    const char *const one[] = {"shift", "turn", "scale"};
    std::string out;
    for (MotionKind kind : {MotionKind::shift, MotionKind::turn, MotionKind::scale}) {
        const auto n = std::count_if(open.begin(), open.end(), [&](const NamedMotion &m) { return m.kind == kind; });
        if (n == 0) continue;
        out += out.empty() ? "" : ", ";
        const char *name = one[static_cast<int>(kind)];
        out += kind == MotionKind::scale ? name : counted(static_cast<int>(n), name);
    }
    return out;
}

// What keeps motions first to last; nothing where none of them is kept.
struct Kept {
    Holding by;
    int motions = 0;

    bool by_coordinates() const { return by.fixed + by.weighted > 0; }
};

Kept kept(const Datum &datum, int first, int last)
{
    Kept all;
    for (int m = first; m <= last; m++) {
        const Holding &h = datum.holding[m];
        if (!h.exists || h.open) continue;
        all.motions++;
        all.by.fixed += h.fixed;
        all.by.weighted += h.weighted;
        for (int k = 0; k < n_kinds; k++) all.by.of_kind[k] += h.of_kind[k];
    }
    return all;
}

constexpr int scale_motion = 6, turn_motion = 5;

// Networks of heights have no plan that could be shifted.
bool only_heights(const Datum &datum) { return !datum.holding[0].exists && !datum.holding[1].exists; }

std::string holders(const Datum &datum, const Kept &all)
{
    const std::string coordinate = only_heights(datum) ? "height" : "coordinate";
    std::vector<std::string> out = counts(all.by.of_kind);
    if (all.by.weighted > 0) out.push_back(counted(all.by.weighted, "weighted " + coordinate));
    if (all.by.fixed > 0) out.push_back(counted(all.by.fixed, "fixed " + coordinate));
    return listed(out);
}

// "; scale from 7 distances" in a network with free motions.
std::string also_kept(const Datum &datum, int first, int last, const std::string &name)
{
    const Kept all = kept(datum, first, last);
    const std::string by = holders(datum, all);
    return by.empty() ? "" : "; " + name + (all.motions > 1 ? "s" : "") + " from " + by;
}

// "; scale also from 7 distances" in a network that its coordinates hold.
std::string observed(const Datum &datum, int motion, const std::string &name)
{
    const Kept all = kept(datum, motion, motion);
    const std::vector<std::string> by = counts(all.by.of_kind);
    return by.empty() ? "" : "; " + name + (all.by_coordinates() ? " also" : "") + " from " + listed(by);
}

std::string held_line(const Datum &datum)
{
    const std::string by = holders(datum, kept(datum, 0, 2));
    std::string line = by.empty() ? "held" : "held by " + by;
    if (only_heights(datum)) return line;
    return line + observed(datum, turn_motion, "turn") + observed(datum, scale_motion, "scale");
}

std::string free_line(const Datum &datum)
{
    std::string line = "free: " + free_motions(datum.open) + also_kept(datum, 0, 2, "shift");
    if (only_heights(datum)) return line;
    return line + also_kept(datum, turn_motion, turn_motion, "turn") +
           also_kept(datum, scale_motion, scale_motion, "scale");
}

bool is_axis(const double d[3], int axis) { return std::fabs(d[axis]) > 1 - in_axis * in_axis; }

// "along x", "along 123.4 gon", "in height", or by components.
std::string along(const double d[3], const Naming &naming)
{
    if (is_axis(d, 0)) return "along x";
    if (is_axis(d, 1)) return "along y";
    if (is_axis(d, 2)) return "in height";
    if (std::fabs(d[2]) < level) {
        double bearing = std::atan2(d[1], d[0]) / half_turn;
        if (bearing < 0) bearing += 1;
        return "along " + number(bearing * naming.circle / 2, "%.1f") + " " + naming.angle;
    }
    return "along x" + number(d[0], " %.3f") + " y" + number(d[1], " %.3f") + " z" + number(d[2], " %.3f");
}

struct Words {
    const Model &model;
    const Naming &naming;
    double size; // of the network, metres

    bool plane() const { return model.frame.space == Space::plane; }
    std::string points(const std::vector<int> &p) const { return names_of(p, naming.point); }
    std::vector<int> points_at(const NamedMotion &m) const;
    std::string about(const NamedMotion &m, const std::vector<int> &at) const;
    std::string movement(const std::vector<NamedMotion> &motions, const std::vector<int> &hinges) const;
    std::string sentence(const Finding &f) const;
};

// Points that stay in a turn or scale with a known centre.
std::vector<int> Words::points_at(const NamedMotion &m) const
{
    std::vector<int> out;
    for (int p = 0; p < model.n_points && m.centred; p++) {
        double d[3], on_axis = 0, distance = 0;
        for (int k = 0; k < 3; k++) d[k] = plane() && k == 2 ? 0 : model.value[3 * p + k] - m.centre[k];
        for (int k = 0; k < 3; k++) on_axis += d[k] * m.direction[k];
        for (int k = 0; k < 3; k++) distance = std::hypot(distance, d[k] - on_axis * m.direction[k]);
        if (distance < at_centre * size) out.push_back(p);
    }
    return out;
}

// " about ..." for a turn or scale about points or a place; nothing where none is known.
std::string Words::about(const NamedMotion &m, const std::vector<int> &at) const
{
    const bool turn = m.kind == MotionKind::turn && !plane();
    if (at.size() > 1 && turn) return " about the line " + naming.point(at[0]) + "-" + naming.point(at[1]);
    if (!at.empty()) {
        const bool upright = turn && is_axis(m.direction, 2);
        return (upright ? " about the vertical through " : " about ") + naming.point(at[0]);
    }
    if (!m.centred) return turn && is_axis(m.direction, 2) ? " about the vertical" : "";
    const auto coordinate = [&](int k) { return number(m.centre[k] + naming.origin[k], " %.3f"); };
    std::string place = " about x" + coordinate(0) + " y" + coordinate(1);
    if (!plane() && !is_axis(m.direction, 2)) place += " z" + coordinate(2);
    return place;
}

// "shifted along x and y, turned about C", for one or several motions.
std::string Words::movement(const std::vector<NamedMotion> &motions, const std::vector<int> &hinges) const
{
    std::vector<std::string> shifts, parts;
    int turns = 0;
    for (const NamedMotion &m : motions) {
        if (m.kind == MotionKind::shift) shifts.push_back(along(m.direction, naming));
        turns += m.kind == MotionKind::turn;
    }
    if (!shifts.empty()) parts.push_back("shifted " + listed(shifts));
    bool turned = false;
    for (const NamedMotion &m : motions) {
        if (m.kind == MotionKind::shift || (m.kind == MotionKind::turn && turned)) continue;
        const std::vector<int> at = hinges.empty() ? points_at(m) : hinges;
        const bool about_point = m.kind == MotionKind::turn && turns > 1;
        std::string where = about(m, at);
        if (about_point)
            where = at.empty() ? " about " + std::to_string(turns) + " axes" : " about " + naming.point(at[0]);
        parts.push_back((m.kind == MotionKind::turn ? "turned" : "scaled") + where);
        turned |= m.kind == MotionKind::turn;
    }
    return listed(parts);
}

std::string more_observations(std::size_t n, const std::string &where)
{
    return n == 1 ? "another observation " + where + " would do"
                  : std::to_string(n) + " more observations " + where + " would do";
}

std::string heights_sentence(const Words &w, const Finding &f)
{
    const std::string what = f.points.size() == 1 ? "height of " + w.points(f.points) + " is not determined"
                                                  : "heights of " + w.points(f.points) + " are not determined";
    return what + (w.model.frame.space == Space::heights
                       ? ": one height difference or fixed height would do"
                       : ": one height difference, vertical angle or fixed height would do");
}

std::string point_sentence(const Words &w, const Finding &f)
{
    std::vector<std::string> ways;
    for (const NamedMotion &m : f.motions) ways.push_back(along(m.direction, w.naming));
    const auto seen = by_noun(f.sights);
    std::string why;
    if (seen.size() == 1 && seen[0].second == 1)
        why = "it has one " + seen[0].first + " only";
    else if (seen.size() == 1 && seen[0].second == 2)
        why = "it has two " + seen[0].first + "s only";
    else
        why = "its " + listed(counts(f.sights)) + " leave this open";
    return w.points(f.points) + " can move " + listed(ways) + ": " + why + "; " +
           more_observations(f.motions.size(), "to it");
}

std::string unknowns_sentence(const Words &w, const Finding &f)
{
    const std::string who = names_of(f.unknowns, w.naming.unknown);
    if (f.unknowns.size() == 1) return who + " is not determined: no observation tells it";
    if (f.apart) return who + " are not determined: no observation tells them";
    return who + " cannot be told apart: hold one of them, or observe what differs";
}

std::string Words::sentence(const Finding &f) const
{
    switch (f.lack) {
    case Lack::observations: return points(f.points) + (f.points.size() == 1 ? " has" : " have") + " no observations";
    case Lack::places:
        return points(f.points) + ": no observation has a direction or a length to a point that stands elsewhere; "
                                  "other first coordinates would do";
    case Lack::heights: return heights_sentence(*this, f);
    case Lack::point: return point_sentence(*this, f);
    case Lack::body:
        return points(f.points) + " can be " + movement(f.motions, f.hinges) + ": " +
               more_observations(f.motions.size(), "between them and the others");
    case Lack::unknowns: return unknowns_sentence(*this, f);
    case Lack::unnamed: break;
    }
    return points(f.points) + " can move: the observations do not determine them";
}

// Parts that nothing holds against the others, and what would.
std::string loose_sentence(const Model &model, const Datum &datum, const Naming &naming)
{
    std::vector<std::string> parts;
    for (int p : datum.loose_parts) parts.push_back(names_of(datum.parts.points[p], naming.point));
    const bool all = parts.size() == datum.parts.points.size(), heights = model.frame.space == Space::heights;
    const std::size_t told = std::min(parts.size(), most_names);
    std::string out = parts[0];
    for (std::size_t i = 1; i < told; i++) out += " | " + parts[i];
    if (told < parts.size()) out += " and " + std::to_string(parts.size() - told) + " more parts";
    out += ": no observations tie ";
    if (all)
        return out + "these parts to one another: " +
               (heights ? "height differences between them or a fixed height in each would do"
                        : "observations between them or fixed coordinates in each would do");
    out += parts.size() == 1 ? "this part to the rest, and it is not held by itself: "
                             : "these parts to the rest, and they are not held by themselves: ";
    return out + (heights ? "a height difference to the rest or a fixed height would do"
                          : "observations to the rest or fixed coordinates would do");
}

bool in_datum(const Model &model, int point)
{
    const auto first = model.code.begin() + 3 * (std::ptrdiff_t)point;
    return std::find(first, first + 3, Code::datum) != first + 3;
}

// What the datum points do not hold, and what would.
std::string not_carried_sentence(const Words &words, const Datum &datum)
{
    const Model &model = words.model;
    const bool any = std::any_of(model.code.begin(), model.code.end(), [](Code code) { return code == Code::datum; });
    std::vector<int> movable = movable_points(model, datum), others;
    std::copy_if(movable.begin(), movable.end(), std::back_inserter(others),
                 [&](int p) { return !in_datum(model, p); });
    const std::string remedy = others.empty() ? "fixed or weighted coordinates of " + words.points(movable)
                                              : "code free for " + words.points(others);
    return "the network can be " + words.movement(datum.not_carried, {}) +
           (any ? ": the points with code free do not hold this" : ": no point has code free to hold this") + "; " +
           remedy + " would do";
}

} // namespace

std::string names_of(const std::vector<int> &indexes, const std::function<std::string(int)> &name)
{
    std::string out;
    for (std::size_t i = 0; i < std::min(indexes.size(), most_names); i++)
        out += (i == 0 ? "" : ", ") + name(indexes[i]);
    if (indexes.size() > most_names) out += " and " + std::to_string(indexes.size() - most_names) + " more";
    return out;
}

std::string datum_line(const Datum &datum)
{
    if (datum.state == DatumState::loose) return "free: parts against one another";
    return datum.open.empty() ? held_line(datum) : free_line(datum);
}

std::vector<std::string> refusals(const Model &model, const Determinacy &found, const Naming &naming)
{
    std::vector<std::string> out;
    std::vector<int> all(model.n_points);
    for (int p = 0; p < model.n_points; p++) all[p] = p;
    const Words words{model, naming, similarity(model, all).size};
    if (found.datum.state == DatumState::loose) out.push_back(loose_sentence(model, found.datum, naming));
    if (found.datum.state == DatumState::not_carried && movable_points(model, found.datum).size() > 1)
        out.push_back(not_carried_sentence(words, found.datum));
    std::size_t left = found.findings.size();
    for (const Finding &f : found.findings) {
        if (out.size() == most_sentences) break;
        out.push_back(words.sentence(f));
        left--;
    }
    const std::size_t more = left + static_cast<std::size_t>(found.mechanisms.not_searched);
    if (more > 0 && !out.empty()) out.push_back("and " + std::to_string(more) + " more that are not determined");
    return out;
}

std::vector<std::string> warnings(const Datum &datum, const std::vector<WeakMotion> &weak, const Naming &naming)
{
    std::vector<std::string> out;
    if (datum.weakly_carried && datum.state == DatumState::by_points)
        out.push_back("the points with code free lie close together beside the size of the network: far points get "
                      "large standard deviations");
    const char *const axis[] = {"the x axis", "the y axis", "the vertical"};
    for (const WeakMotion &w : weak) {
        const bool turn = w.motion < 6;
        const std::string what = turn ? std::string("turn about ") + axis[w.motion - 3] : "scale";
        const double size = turn ? w.deviation / half_turn * naming.circle / 2 : 100 * w.deviation;
        out.push_back("the " + what + " is determined badly: standard deviation " + number(size, "%.2g") +
                      (turn ? " " + naming.angle : " %"));
    }
    return out;
}

} // namespace vornhost
