#include "host/formats/lines_writer.h"

#include <map>

#include "host/formats/draft_rows.h"
#include "host/formats/geocentric.h"
#include "host/formats/number_text.h"

namespace vornhost {

namespace {

constexpr double mgon = 1000.0; // in a gon
constexpr double gon_per_radian = 200.0 / 3.14159265358979323846;

// Writes one draft; the members are what its steps share.
class LinesWriter {
public:
    LinesWriter(Draft &its_draft, Faults &all) : draft(its_draft), faults(all) {}

    std::string write()
    {
        geocentric_points = !draft.of(DraftKind::baseline).empty();
        if (!draft.title.empty()) line("# " + printable(draft.title));
        line(".UNITS Meters GONS");
        line(".ORDER NE AtFromTo");
        line(".DELTA OFF");
        refuse_groups();
        refuse_datum();
        take_observed_points();
        for (const DraftPoint &point : draft.points)
            if (!point.off) write_point(point);
        write_lengths();
        write_sets();
        write_angles();
        write_heights();
        write_vectors();
        return faults.empty() ? out : std::string();
    }

private:
    void line(const std::string &text) { out += text + '\n'; }
    void refuse(Source at, const std::string &what, const std::string &remedy) { faults.add(at, what, remedy); }

    void refuse_groups()
    {
        for (const DraftCovariance &group : draft.covariances)
            refuse(group.where, "covariance " + quote(group.name) + " cannot be written there",
                   "give its observations standard deviations of their own");
    }

    // A free network rests there on all points alike.
    void refuse_datum()
    {
        const DraftPoint *apart = nullptr;
        bool free = false;
        for (const DraftPoint &point : draft.points)
            for (size_t axis = 0; axis < 3 && !point.off; axis++) {
                if (is_held(point.code[axis])) return;
                if (point.code[axis] == CODE_NO_DATUM) apart = &point;
                free = free || point.code[axis] == CODE_FREE;
            }
        if (free && apart)
            refuse(apart->where, "a datum on some of the points cannot be written there",
                   "hold points, or give all the code free");
    }

    std::string name(const std::string &point)
    {
        if (point.find_first_of("- \t#'") != std::string::npos)
            refuse(Source(), "name " + quote(point) + " cannot be written there: it has one of blank - # '",
                   "rename the point");
        return point;
    }
    std::string names(const DraftRow &row)
    {
        return (row.at.empty() ? std::string() : name(row.at) + '-') + name(row.from) + '-' + name(row.to);
    }

    // Coordinates observed once are weighted ones.
    void take_observed_points()
    {
        std::map<std::string, DraftPoint *> points;
        for (DraftPoint &point : draft.points) points[point.name] = &point;
        for (const DraftRow &row : draft.of(DraftKind::coordinates)) {
            if (!taken(DraftKind::coordinates, row)) continue;
            DraftPoint &point = *points[row.from];
            for (size_t axis = 0; axis < 3; axis++) {
                if (!row.value[axis]) continue;
                if (is_held(point.code[axis]))
                    refuse(row.where, "coordinates of a point that is held or observed before cannot be written there",
                           "take them out");
                point.code[axis] = CODE_WEIGHTED;
                point.value[axis] = row.value[axis];
                point.sigma[axis] = row.sigma[axis];
            }
        }
    }

    static std::string code(const DraftPoint &point, size_t axis)
    {
        if (point.code[axis] == CODE_FIXED) return " !";
        return point.code[axis] == CODE_WEIGHTED ? ' ' + number_text(*point.sigma[axis]) : " *";
    }

    void layout(bool space)
    {
        if (laid_out && in_space == space) return;
        laid_out = true;
        in_space = space;
        line(space ? ".3D" : ".2D");
    }

    void write_point(const DraftPoint &point)
    {
        if (geocentric_points) return write_position(point);
        const bool plane = point.value[0] && point.value[1], height = point.value[2].has_value();
        if (point.value[0].has_value() != point.value[1].has_value())
            return refuse(point.where, "point " + quote(point.name) + " has one of x and y", "give it both");
        const size_t axes = plane && height ? 3 : 2;
        if (!plane && !height) return;
        if (!plane) return line("E " + name(point.name) + ' ' + number_text(*point.value[2]) + code(point, 2));
        layout(height);
        std::string text = "C " + name(point.name);
        for (size_t axis = 0; axis < axes; axis++) text += ' ' + number_text(*point.value[axis]);
        for (size_t axis = 0; axis < axes; axis++) text += code(point, axis);
        line(text);
    }

    // Beside vectors points are geodetic positions.
    void write_position(const DraftPoint &point)
    {
        if (!point.value[0] || !point.value[1] || !point.value[2]) return;
        const bool fixed = point.code[0] == CODE_FIXED && point.code[1] == CODE_FIXED && point.code[2] == CODE_FIXED;
        if (!fixed && (is_held(point.code[0]) || is_held(point.code[1]) || is_held(point.code[2])))
            return refuse(point.where,
                          "point " + quote(point.name) + " is held in a part of its geocentric coordinates",
                          "hold all of them or none");
        const Geodetic place = geodetic({*point.value[0], *point.value[1], *point.value[2]});
        line("PH " + name(point.name) + ' ' + number_text(place.latitude * gon_per_radian) + ' ' +
             number_text(place.longitude * gon_per_radian) + ' ' + number_text(place.height) +
             (fixed ? " ! ! !" : " * * *"));
    }

    bool taken(DraftKind kind, const DraftRow &row)
    {
        if (!row.use) draft.notes.push_back({row.where, words_of(kind, row) + " is left out: it takes no part"});
        return row.use;
    }

    static std::string sigma(const DraftRow &row, double unit)
    {
        return row.sigma[0] ? ' ' + number_text(*row.sigma[0] * unit) : std::string();
    }

    static std::string tail(const DraftRow &row)
    {
        std::string text;
        if (row.h1 || row.h2) text = ' ' + number_text(row.h1.value_or(0.0)) + '/' + number_text(row.h2.value_or(0.0));
        return row.id.empty() ? text : text + " '" + printable(row.id);
    }

    void write_rows(const char *word, DraftKind kind, double unit)
    {
        for (const DraftRow &row : draft.of(kind))
            if (taken(kind, row))
                line(word + (' ' + names(row)) + ' ' + number_text(*row.value[0]) + sigma(row, unit) + tail(row));
    }

    void write_lengths()
    {
        const bool slopes = draft.dimension == 3 && !draft.of(DraftKind::distance).empty();
        if (slopes) layout(true);
        if (draft.dimension == 2) layout(false);
        write_rows("D", DraftKind::distance, 1.0);
        if (draft.of(DraftKind::horizontal_distance).empty()) return;
        layout(false);
        write_rows("D", DraftKind::horizontal_distance, 1.0);
    }

    void write_sets()
    {
        std::vector<const DraftRow *> rows;
        for (const DraftRow &row : draft.of(DraftKind::direction))
            if (taken(DraftKind::direction, row)) rows.push_back(&row);
        for (const auto &set : direction_sets(rows)) {
            line("DB " + name(set[0]->from));
            for (const DraftRow *row : set)
                line("DN " + name(row->to) + ' ' + number_text(*row->value[0]) + sigma(*row, mgon) + tail(*row));
            line("DE");
        }
    }

    void write_angles()
    {
        if (!draft.of(DraftKind::vertical_angle).empty()) layout(true);
        write_rows("V", DraftKind::vertical_angle, mgon);
        write_rows("B", DraftKind::azimuth, mgon);
        write_rows("A", DraftKind::angle, mgon);
    }

    // The length of the line counts for usual standard deviations only.
    void write_heights()
    {
        for (const DraftRow &row : draft.of(DraftKind::height_difference))
            if (taken(DraftKind::height_difference, row))
                line("L " + names(row) + ' ' + number_text(*row.value[0]) + " 1" + sigma(row, 1.0) + tail(row));
        for (const DraftRow &row : draft.of(DraftKind::coordinate_difference)) {
            if (!taken(DraftKind::coordinate_difference, row)) continue;
            if (row.value[0] || row.value[1])
                refuse(row.where, "differences of coordinates in the plane cannot be written there", "take them out");
            else
                line("L " + names(row) + ' ' + number_text(*row.value[2]) + " 1 " +
                     number_text(row.sigma[2].value_or(0.0)) + tail(row));
        }
    }

    void write_vectors()
    {
        if (!geocentric_points) return;
        for (size_t k = 0; k < draft_kinds; k++)
            if ((DraftKind)k != DraftKind::baseline && !draft.rows[k].empty())
                return refuse(draft.rows[k][0].where,
                              "baselines and other observations cannot be written there together",
                              "divide the network");
        if (draft.dimension != 3)
            return refuse(Source(), "baselines in the plane cannot be written there", "take them out");
        line("G0 'vectors");
        for (const DraftRow &row : draft.of(DraftKind::baseline)) {
            if (!taken(DraftKind::baseline, row)) continue;
            std::string vector = "G1 " + names(row), variances = "G2", covariances = "G3";
            for (size_t axis = 0; axis < 3; axis++) {
                vector += ' ' + number_text(*row.value[axis]);
                variances += ' ' + number_text(row.product[axis].value_or(0.0));
                covariances += ' ' + number_text(row.product[3 + axis].value_or(0.0));
            }
            line(vector + tail(row));
            line(variances);
            line(covariances);
        }
    }

    Draft &draft;
    Faults &faults;
    bool geocentric_points = false;
    bool laid_out = false, in_space = false;
    std::string out;
};

} // namespace

std::string write_lines(Draft &draft, Faults &faults) { return LinesWriter(draft, faults).write(); }

} // namespace vornhost
