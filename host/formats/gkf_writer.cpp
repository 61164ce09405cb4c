#include "host/formats/gkf_writer.h"

#include <algorithm>
#include <functional>
#include <set>

#include "host/formats/draft_rows.h"
#include "host/formats/number_text.h"

namespace vornhost {

namespace {

constexpr double mm = 1000.0, cc = 10000.0; // in a metre, in a gon

// The clusters of the format.
enum class Cluster { observations, heights, coordinates, vectors };

Cluster cluster_of(DraftKind kind)
{
    if (kind == DraftKind::height_difference) return Cluster::heights;
    if (kind == DraftKind::coordinates) return Cluster::coordinates;
    const bool vector = kind == DraftKind::baseline || kind == DraftKind::coordinate_difference;
    return vector ? Cluster::vectors : Cluster::observations;
}

std::string escaped(const std::string &text)
{
    std::string out;
    for (const char c : text) switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += c;
        }
    return out;
}

std::string attribute(const char *name, const std::string &value)
{
    return ' ' + std::string(name) + "=\"" + escaped(value) + '"';
}
std::string attribute(const char *name, double value) { return attribute(name, number_text(value)); }

// Writes one draft; the members are what its steps share.
class GkfWriter {
public:
    GkfWriter(Draft &its_draft, Faults &all) : draft(its_draft), faults(all) {}

    std::string write()
    {
        line("<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
        line("<gama-local xmlns=\"http://www.gnu.org/software/gama/gama-local\">");
        line("<network axes-xy=\"ne\" angles=\"left-handed\">");
        if (!draft.title.empty()) line("<description>" + escaped(draft.title) + "</description>");
        line("<parameters sigma-apr=\"1\" sigma-act=\"aposteriori\" />");
        line("<points-observations>");
        for (const DraftPoint &point : draft.points) write_point(point);
        count_rows();
        write_directions();
        write_others();
        write_heights();
        write_vectors();
        write_coordinates();
        for (const DraftCovariance &group : draft.covariances) write_group(active_part(draft, group));
        repeat_observed_points();
        line("</points-observations>");
        line("</network>");
        line("</gama-local>");
        return faults.empty() ? out : std::string();
    }

private:
    void line(const std::string &text) { out += text + '\n'; }
    void refuse(Source at, const std::string &what, const std::string &remedy) { faults.add(at, what, remedy); }

    std::string id(const char *name, const std::string &point)
    {
        const bool blanks = point.find("  ") != std::string::npos || point.find('\t') != std::string::npos;
        if (blanks)
            refuse(Source(), "name " + quote(point) + " has several blanks in a row, which there become one",
                   "rename the point");
        return attribute(name, point);
    }

    // Points.

    enum class State { none, fixed, adjusted, datum };

    static State state_of(int code)
    {
        if (code == CODE_FIXED) return State::fixed;
        if (code == CODE_ABSENT) return State::none;
        return code == CODE_NO_DATUM ? State::adjusted : State::datum;
    }

    State plan_state(const DraftPoint &point)
    {
        const State x = state_of(point.code[0]), y = state_of(point.code[1]);
        const auto free = [](State s) { return s == State::adjusted || s == State::datum; };
        if (x == y) return x;
        if (free(x) && free(y)) return State::adjusted;
        refuse(point.where, "x and y of point " + quote(point.name) + " have codes that stand together nowhere there",
               "give both the same");
        return x;
    }

    // Observed coordinates become those of their point there, unless others come behind them.
    void repeat_observed_points()
    {
        std::set<std::string> observed;
        for (const DraftRow &row : draft.of(DraftKind::coordinates)) observed.insert(row.from);
        for (const DraftPoint &point : draft.points)
            if (observed.count(point.name) > 0) write_point(point);
    }

    void write_point(const DraftPoint &point)
    {
        if (point.off) return;
        std::string text = "<point" + id("id", point.name), fix, adj;
        const bool plane = point.value[0] && point.value[1];
        for (size_t axis = plane ? 0 : 2; axis < 3; axis++)
            if (point.value[axis]) text += attribute(std::string(1, "xyz"[axis]).c_str(), *point.value[axis]);
        const auto add = [&](State state, const char *lower, const char *upper) {
            if (state == State::fixed) fix += lower;
            if (state == State::adjusted) adj += lower;
            if (state == State::datum) adj += upper;
        };
        if (draft.dimension != 1) add(plan_state(point), "xy", "XY");
        if (draft.dimension != 2) add(state_of(point.code[2]), "z", "Z");
        if (!fix.empty()) text += attribute("fix", fix);
        if (!adj.empty()) text += attribute("adj", adj);
        line(text + " />");
    }

    // Observations.

    void count_rows()
    {
        for (size_t k = 0; k < draft_kinds; k++)
            for (const DraftRow &row : draft.rows[k])
                if (!row.use)
                    draft.notes.push_back({row.where, words_of((DraftKind)k, row) + " is left out: it takes no part"});
    }

    std::vector<const DraftRow *> single(DraftKind kind) const
    {
        std::vector<const DraftRow *> rows;
        for (const DraftRow &row : draft.of(kind))
            if (row.use && row.covariance.empty()) rows.push_back(&row);
        return rows;
    }

    static std::string deviation(const DraftRow &row, double unit)
    {
        return row.sigma[0] && row.covariance.empty() ? attribute("stdev", *row.sigma[0] * unit) : std::string();
    }

    static std::string foreign_key(const DraftRow &row)
    {
        return row.id.empty() ? std::string() : attribute("extern", row.id);
    }

    std::string element(DraftKind kind, const DraftRow &row, bool with_from)
    {
        if (kind == DraftKind::angle)
            return "<angle" + id("from", row.at) + id("bs", row.from) + id("fs", row.to) +
                   attribute("val", *row.value[0]) + deviation(row, cc) + foreign_key(row) + " />";
        const bool slope = kind == DraftKind::distance && draft.dimension == 3;
        const char *const name = kind == DraftKind::direction        ? "direction"
                                 : kind == DraftKind::vertical_angle ? "z-angle"
                                 : kind == DraftKind::azimuth        ? "azimuth"
                                 : slope                             ? "s-distance"
                                                                     : "distance";
        std::string text = '<' + std::string(name) + (with_from ? id("from", row.from) : "") + id("to", row.to) +
                           attribute("val", *row.value[0]) + deviation(row, is_angle(kind) ? cc : mm);
        if (row.h1) text += attribute("from_dh", *row.h1);
        if (row.h2) text += attribute("to_dh", *row.h2);
        return text + foreign_key(row) + " />";
    }

    void write_directions()
    {
        for (const auto &set : direction_sets(single(DraftKind::direction))) {
            line("<obs" + id("from", set[0]->from) + ">");
            for (const DraftRow *row : set) line("  " + element(DraftKind::direction, *row, false));
            line("</obs>");
        }
    }

    void write_others()
    {
        std::string body;
        for (const DraftKind kind : {DraftKind::distance, DraftKind::horizontal_distance, DraftKind::vertical_angle,
                                     DraftKind::azimuth, DraftKind::angle})
            for (const DraftRow *row : single(kind)) body += "  " + element(kind, *row, true) + '\n';
        if (!body.empty()) out += "<obs>\n" + body + "</obs>\n";
    }

    std::string height(const DraftRow &row)
    {
        return "  <dh" + id("from", row.from) + id("to", row.to) + attribute("val", *row.value[0]) +
               deviation(row, mm) + foreign_key(row) + " />\n";
    }

    void write_heights()
    {
        std::string body;
        for (const DraftRow *row : single(DraftKind::height_difference)) body += height(*row);
        if (!body.empty()) out += "<height-differences>\n" + body + "</height-differences>\n";
    }

    // Components that the dimension has not are 0.
    std::string vector(DraftKind kind, const DraftRow &row)
    {
        std::string text = "  <vec" + id("from", row.from) + id("to", row.to);
        for (size_t axis = 0; axis < 3; axis++) {
            if (!row.value[axis] && in_dimension(axis))
                refuse(row.where, words_of(kind, row) + " has not all components, which cannot be written there",
                       "take it out");
            text += attribute(axis == 0 ? "dx" : axis == 1 ? "dy" : "dz", row.value[axis].value_or(0.0));
        }
        return text + foreign_key(row) + " />\n";
    }

    bool in_dimension(size_t axis) const { return axis < 2 ? draft.dimension != 1 : draft.dimension != 2; }

    // The upper band of a matrix over n values in mm and cc.
    void write_matrix(size_t n, size_t band, const std::function<double(size_t, size_t)> &element_of)
    {
        line("  <cov-mat" + attribute("dim", std::to_string(n)) + attribute("band", std::to_string(band)) + ">");
        for (size_t i = 0; i < n; i++) {
            std::string text = "   ";
            for (size_t j = i; j <= std::min(i + band, n - 1); j++) text += ' ' + number_text(element_of(i, j));
            line(text);
        }
        line("  </cov-mat>");
    }

    void write_vectors()
    {
        static const size_t place[3][3] = {{0, 3, 4}, {3, 1, 5}, {4, 5, 2}};
        std::vector<std::array<double, 6>> products;
        std::string body;
        for (const DraftKind kind : {DraftKind::baseline, DraftKind::coordinate_difference})
            for (const DraftRow *row : single(kind)) {
                body += vector(kind, *row);
                products.emplace_back();
                for (size_t k = 0; k < 6; k++) {
                    const double own = k < 3 && row->sigma[k] ? *row->sigma[k] * *row->sigma[k] : k < 3 ? 1.0 : 0.0;
                    products.back()[k] = row->product[k].value_or(own);
                }
            }
        if (products.empty()) return;
        out += "<vectors>\n" + body;
        write_matrix(3 * products.size(), 2, [&](size_t i, size_t j) {
            return i / 3 == j / 3 ? products[i / 3][place[i % 3][j % 3]] * mm * mm : 0.0;
        });
        line("</vectors>");
    }

    std::string observed(const std::string &name, const std::array<MaybeNumber, 3> &value, Source at,
                         const std::string &key)
    {
        if (value[0].has_value() != value[1].has_value())
            refuse(at, "point " + quote(name) + " is observed in one of x and y, which cannot be written there",
                   "take it out");
        std::string text = "  <point" + id("id", name);
        for (size_t axis = 0; axis < 3; axis++)
            if (value[axis]) text += attribute(std::string(1, "xyz"[axis]).c_str(), *value[axis]);
        if (!key.empty()) refuse(at, "identifications of observed points cannot be written there", "take it out");
        return text + " />\n";
    }

    // Observed coordinates, and those of points that are weighted.
    void write_coordinates()
    {
        std::string body;
        std::vector<double> variances;
        const auto add = [&](const std::string &name, const std::array<MaybeNumber, 3> &value,
                             const std::array<MaybeNumber, 3> &sigma, Source at, const std::string &key) {
            std::array<MaybeNumber, 3> given;
            for (size_t axis = 0; axis < 3; axis++)
                if (sigma[axis] && value[axis]) {
                    given[axis] = value[axis];
                    variances.push_back(*sigma[axis] * *sigma[axis]);
                }
            if (given[0] || given[1] || given[2]) body += observed(name, given, at, key);
        };
        for (const DraftPoint &point : draft.points)
            if (!point.off) add(point.name, point.value, point.sigma, point.where, std::string());
        for (const DraftRow *row : single(DraftKind::coordinates))
            add(row->from, row->value, row->sigma, row->where, row->id);
        if (variances.empty()) return;
        out += "<coordinates>\n" + body;
        write_matrix(variances.size(), 0, [&](size_t i, size_t) { return variances[i] * mm * mm; });
        line("</coordinates>");
    }

    // Observations of one covariance are one cluster.
    void write_group(const ActiveCovariance &group)
    {
        if (group.components.empty()) return;
        const std::string name = "covariance " + quote(group.group->name);
        std::set<Cluster> clusters;
        std::vector<const DraftRow *> directions;
        std::string body;
        for (const DraftComponent &c : group.components) {
            clusters.insert(cluster_of(c.kind));
            const DraftRow &row = draft.of(c.kind)[c.row];
            if (c.kind == DraftKind::direction) directions.push_back(&row);
            if (is_first(c, row)) body += member(c.kind, row);
        }
        const auto sets = direction_sets(directions);
        if (clusters.size() > 1 || sets.size() > 1)
            return refuse(group.group->where,
                          name + " ties " +
                              (sets.size() > 1 ? "directions of several sets" : "observations of several clusters") +
                              ", which cannot be written there",
                          "divide it");
        static const char *const names[] = {"obs", "height-differences", "coordinates", "vectors"};
        const char *const cluster = names[(size_t)*clusters.begin()];
        out +=
            '<' + std::string(cluster) + (sets.empty() ? std::string() : id("from", sets[0][0]->from)) + ">\n" + body;
        write_matrix_of(group);
        line("</" + std::string(cluster) + ">");
    }

    static bool is_first(const DraftComponent &c, const DraftRow &row)
    {
        for (int axis = 0; axis < c.axis; axis++)
            if (row.value[(size_t)axis]) return false;
        return true;
    }

    std::string member(DraftKind kind, const DraftRow &row)
    {
        switch (cluster_of(kind)) {
        case Cluster::heights: return height(row);
        case Cluster::coordinates: return observed(row.from, row.value, row.where, row.id);
        case Cluster::vectors: return vector(kind, row);
        default: return "  " + element(kind, row, kind != DraftKind::direction) + '\n';
        }
    }

    // Vectors have three components there; those that are not observed have a variance that nothing reads.
    void write_matrix_of(const ActiveCovariance &group)
    {
        std::vector<int> place; // component of each value that is written, -1 for none
        for (size_t i = 0; i < group.components.size(); i++) {
            const DraftComponent &c = group.components[i];
            const bool vector = cluster_of(c.kind) == Cluster::vectors;
            const DraftRow &row = draft.of(c.kind)[c.row];
            if (vector && is_first(c, row))
                for (int axis = 0; axis < c.axis; axis++) place.push_back(-1);
            place.push_back((int)i);
            const bool last =
                i + 1 == group.components.size() ||
                is_first(group.components[i + 1], draft.of(group.components[i + 1].kind)[group.components[i + 1].row]);
            if (vector && last)
                for (int axis = c.axis + 1; axis < 3; axis++) place.push_back(-1);
        }
        const auto element_of = [&](size_t i, size_t j) {
            if (place[i] < 0 || place[j] < 0) return i == j ? 1.0 : 0.0;
            const auto unit = [&](int k) { return is_angle(group.components[(size_t)k].kind) ? cc : mm; };
            return group((size_t)place[i], (size_t)place[j]) * unit(place[i]) * unit(place[j]);
        };
        size_t band = 0;
        for (size_t i = 0; i < place.size(); i++)
            for (size_t j = i; j < place.size() && j <= i + 3 * (group.width + 1); j++)
                if (element_of(i, j) != 0.0) band = std::max(band, j - i);
        write_matrix(place.size(), band, element_of);
    }

    Draft &draft;
    Faults &faults;
    std::string out;
};

} // namespace

std::string write_gkf(Draft &draft, Faults &faults) { return GkfWriter(draft, faults).write(); }

} // namespace vornhost
