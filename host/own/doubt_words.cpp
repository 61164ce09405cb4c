#include "host/own/doubt_words.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <unordered_map>

#include "host/input/angle.h"
#include "host/input/names.h"
#include "host/own/item_names.h"
#include "host/own/start_words.h"
#include "host/preparation/plausibility/doubts.h"

namespace vornhost {

namespace {

namespace va = vornadjust;
using plausibility::Doubt;
using plausibility::Finding;

constexpr size_t most_lines = 5; // of one doubt

const double circle = 8.0 * std::atan(1.0);

// Metres, or the unit of the angles of the file.
std::string sigma_text(const Model &network, const va::Observation &o, double sigma)
{
    static const char *const units[] = {" gon", "°", "° (ddd.mmss)", " rad", " mgon", "\"", " mil", "°"};
    const int unit = file_units(network).angle;
    const bool angle = o.kind == va::Kind::direction || o.kind == va::Kind::angle || o.kind == va::Kind::azimuth ||
                       o.kind == va::Kind::bearing || o.kind == va::Kind::vertical_angle;
    char text[60];
    std::snprintf(text, sizeof text, "%.4g%s", angle ? from_radians(unit, sigma) : sigma, angle ? units[unit] : " m");
    return text;
}

std::string line_of(const Model &network, const Numbers &numbers, const Finding &f)
{
    const va::Observation &o = numbers.model.observations[(size_t)f.observation];
    const ItemName name = item_name(network, numbers, f.observation);
    const std::string kind = name.kind, head = item_text(name);
    const auto sigma = [&](double s) { return sigma_text(network, o, s); };
    const auto value = [&](double x) { return reading_text(network, o, x); };
    switch (f.doubt) {
    case Doubt::repeated: {
        const ItemName other = item_name(network, numbers, f.other);
        return head + " has the value and the standard deviation of " + other.file + ":" + std::to_string(other.line) +
               "; if it is a copy, leave one out";
    }
    case Doubt::exchanged:
        return head + " has a standard deviation of " + sigma(f.observed) + " beside a value of " + value(o.value[0]) +
               "; are the two exchanged?";
    case Doubt::small_sigma:
        return head + " has a standard deviation of " + sigma(f.observed) + ", below " + sigma(f.compared) +
               "; is its unit right?";
    case Doubt::large_sigma:
        return head + " has a standard deviation of " + sigma(f.observed) + ", above " + sigma(f.compared) +
               "; is its unit right?";
    case Doubt::looks_horizontal:
        return head + " reads " + value(f.observed) + ", but its slope by the first coordinates is " +
               value(f.compared) + "; if it was reduced to the horizontal, it belongs to horizontal_distances";
    default: return head + " reads " + value(f.observed) + ", but " + value(f.compared) + " by the first coordinates";
    }
}

void add_lines(const Model &network, const Numbers &numbers, const std::vector<Finding> &findings,
               std::vector<std::string> *lines)
{
    std::unordered_map<int, size_t> count;
    for (const Finding &f : findings)
        if (++count[(int)f.doubt] <= most_lines) lines->push_back(line_of(network, numbers, f));
    static const char *const what[] = {" more rows that repeat others",
                                       " more rows whose value and standard deviation look exchanged",
                                       " more rows with such a small standard deviation",
                                       " more rows with such a large standard deviation",
                                       " more distances that look horizontal",
                                       " more observations that the first coordinates contradict"};
    for (int d = 0; d <= (int)Doubt::contradicted; d++)
        if (count[d] > most_lines) lines->push_back("and " + std::to_string(count[d] - most_lines) + what[d]);
}

void add_contradictions(const Model &network, const Numbers &numbers, std::vector<std::string> *lines)
{
    const plausibility::Contradictions found = plausibility::find_contradicted(numbers.model);
    if (found.contradicted >= 4 && 2 * found.contradicted > found.compared) {
        lines->push_back("the first coordinates contradict " + std::to_string(found.contradicted) + " of " +
                         std::to_string(found.compared) +
                         " observations by more than a tenth of their length and 1 m, or by 6.4 gon; are axes "
                         "exchanged, or units?");
        return;
    }
    for (size_t i = 0; i < found.points.size() && i < most_lines; i++) {
        const plausibility::Misplaced &m = found.points[i];
        const PointPlace &point = numbers.points[(size_t)m.point];
        lines->push_back(place(network, point_source(network, point)) + ": " + std::to_string(m.contradicted) + " of " +
                         std::to_string(m.observations) + " observations of " +
                         shown_name(network, point_name(network, point)) +
                         " contradict its coordinates; are names or axes exchanged, or is a digit wrong?");
    }
    if (found.points.size() > most_lines)
        lines->push_back("and " + std::to_string(found.points.size() - most_lines) + " more points");
    add_lines(network, numbers, found.rows, lines);
}

// Readings beyond a full circle are taken without it.
void add_circles(const Model &network, const List<measure_input> &list, const char *kind,
                 std::vector<std::string> *lines)
{
    const int unit = file_units(network).angle;
    size_t n = 0;
    for (size_t i = 0; i < list.size(); i++) {
        const measure_input &m = list.records[i];
        if (m.typ <= 0 || to_radians(network.p.iangle, m.val) < circle * (1.0 + 1e-9) || ++n > most_lines) continue;
        char text[80];
        std::snprintf(text, sizeof text, "%.4f, more than a full circle", in_angle_unit(unit, network.p.iangle, m.val));
        const bool degrees = unit == ANGLE_DEGREE || unit == ANGLE_PACKED || unit == ANGLE_DMS;
        lines->push_back(place(network, list.where[i]) + ": " + kind + " " + shown_name(network, m.from) + " to " +
                         shown_name(network, m.to) + " reads " + text + (degrees ? "; is the file in gon?" : ""));
    }
    if (n > most_lines)
        lines->push_back("and " + std::to_string(n - most_lines) + " more " + kind + "s beyond a full circle");
}

// Sets and ids tell rows apart that are meant to be equal.
std::vector<int> labels_of(const Model &network, const Numbers &numbers)
{
    std::unordered_map<std::string, int> label;
    const int silent = label.emplace(std::string(), 0).first->second;
    std::vector<int> labels;
    labels.reserve(numbers.items.size());
    for (const ItemPlace &item : numbers.items) {
        const ItemNotes n = item_notes(network, item);
        if (n.notes && n.row >= std::max({n.notes->set.size(), n.notes->setup.size(), n.notes->id.size(),
                                          n.notes->remark.size()})) {
            labels.push_back(silent);
            continue;
        }
        const std::string text = n.notes ? std::to_string(note_at(n.notes->set, n.row)) + " " +
                                               std::to_string(note_at(n.notes->setup, n.row)) + " " +
                                               note_at(n.notes->id, n.row) + "\n" + note_at(n.notes->remark, n.row)
                                         : std::string();
        labels.push_back(label.emplace(text, (int)label.size()).first->second);
    }
    return labels;
}

} // namespace

std::vector<std::string> doubt_notes(const Model &network, const Numbers &numbers, bool given)
{
    std::vector<std::string> lines;
    add_circles(network, network.directions, "direction", &lines);
    add_circles(network, network.azimuths, "azimuth", &lines);
    add_lines(network, numbers, plausibility::find_repeated(numbers.model, labels_of(network, numbers)), &lines);
    add_lines(network, numbers, plausibility::find_strange_sigmas(numbers.model), &lines);
    if (!given) return lines;
    add_lines(network, numbers, plausibility::find_horizontal(numbers.model), &lines);
    add_contradictions(network, numbers, &lines);
    return lines;
}

} // namespace vornhost
