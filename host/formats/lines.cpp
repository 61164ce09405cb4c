#include "host/formats/lines.h"

#include <cctype>
#include <cmath>
#include <cstring>
#include <map>
#include <set>

#include "host/formats/draft_builder.h"
#include "host/formats/geocentric.h"
#include "host/formats/lines_include.h"
#include "host/formats/lines_items.h"
#include "host/formats/lines_options.h"
#include "host/formats/lines_text.h"
#include "host/formats/number_text.h"
#include "host/input/utf8.h"

namespace vornhost {

namespace {

constexpr double fixed_length = 1e-5;  // metres: standard deviation of what is written as fixed
constexpr double fixed_seconds = 0.01; // arc seconds, the same of angles
constexpr double gon_per_degree = 10.0 / 9.0, mgon_per_second = 1.0 / 3.24;
constexpr double radian = 3.14159265358979323846 / 180.0;

double metres_of(std::string_view unit)
{
    if (unit == "ft") return 0.3048;
    return unit == "us_ft" ? 1200.0 / 3937.0 : 1.0;
}

// Which lines the text has, and the units in which they are.
struct Survey {
    std::set<std::string> lengths;
    bool degrees = false, gons = false;
    bool vectors = false;
    bool terrestrial = false;
    std::set<size_t> coordinate_counts; // items of lines C behind the name
    std::set<std::string> names;        // of points with coordinates and of legs of traverses
};

// The point before the first leg of a traverse, and the leg in hand.
struct Traverse {
    bool open = false;
    std::string back; // empty: the backsight is a bearing
    double bearing = 0.0;
    std::string at;                 // empty: no leg yet
    const CodedLine *leg = nullptr; // whose end the next line names
    LineOptions options;            // of the leg
};

// Reads one text; the members are what its steps share.
class LinesReader {
public:
    LinesReader(const TextFile &its_file, Draft &draft, Faults &all)
        : file(its_file), builder(draft, all), faults(all), included(with_included(its_file, all)),
          lines(included.lines)
    {
    }

    bool read()
    {
        survey();
        settle_units();
        settle_layout();
        for (const CodedLine &line : lines) read_line(line);
        close_traverse(Source());
        finish_vector();
        if (set_open) faults.add(set_at, "the set of directions has no end", "write DE behind it");
        settle_setups();
        note_fixed();
        builder.finish({file.file(), 0, 0});
        place_in_first(included, faults, builder.draft);
        return faults.empty();
    }

private:
    using Reader = void (LinesReader::*)(const CodedLine &);

    static const std::map<std::string, Reader> &readers()
    {
        static const std::map<std::string, Reader> known = {
            {"C", &LinesReader::read_point},      {"E", &LinesReader::read_height},
            {"P", &LinesReader::read_position},   {"PH", &LinesReader::read_position},
            {"CH", &LinesReader::refuse_height},  {"EH", &LinesReader::refuse_height},
            {"A", &LinesReader::read_angle},      {"M", &LinesReader::read_measures},
            {"BM", &LinesReader::read_measures},  {"D", &LinesReader::read_distance},
            {"V", &LinesReader::read_vertical},   {"DV", &LinesReader::read_both},
            {"B", &LinesReader::read_bearing},    {"DB", &LinesReader::open_set},
            {"DN", &LinesReader::read_direction}, {"DM", &LinesReader::read_direction},
            {"DE", &LinesReader::close_set},      {"L", &LinesReader::read_levelling},
            {"TB", &LinesReader::open_traverse},  {"T", &LinesReader::read_leg},
            {"TE", &LinesReader::end_traverse},   {"SS", &LinesReader::leave_out_side_shot},
            {"G0", &LinesReader::read_session},   {"G1", &LinesReader::read_vector},
            {"G2", &LinesReader::read_variances}, {"G3", &LinesReader::read_covariances},
            {"G4", &LinesReader::refuse_rotation}};
        return known;
    }

    void fault(Source at, const std::string &what, const std::string &remedy) { faults.add(at, what, remedy); }

    // What the text holds as a whole; its faults are found when it is read.
    void survey()
    {
        Draft unused;
        Faults unheard;
        DraftBuilder silent(unused, unheard);
        LineOptions then;
        for (const CodedLine &line : lines) {
            if (line.code[0] == '.') {
                read_line_option(line, then, silent);
                continue;
            }
            if (then.skipping || then.ended) continue;
            found.lengths.insert(then.length);
            (then.gons ? found.gons : found.degrees) = true;
            const bool gnss = line.code[0] == 'G';
            found.vectors = found.vectors || gnss;
            found.terrestrial = found.terrestrial || (!gnss && line.code[0] != 'P');
            const bool named = line.code == "C" || line.code == "E" || line.code == "T" || line.code == "TE";
            if (named && !line.items.empty()) found.names.insert(std::string(line.items[0].text));
            if (line.code == "C" && line.items.size() > 1) found.coordinate_counts.insert(line.items.size() - 1);
        }
    }

    void settle_units()
    {
        DraftUnits &units = builder.draft.units;
        one_length = found.lengths.size() < 2;
        units.length = one_length && !found.lengths.empty() ? *found.lengths.begin() : "m";
        if (found.vectors) units.length = "m";
        if (found.vectors) one_length = false;
        units.dms = found.degrees && !found.gons;
        units.angle = units.dms ? "dms" : "gon";
        units.sigma_angle = units.dms ? "arc_second" : "mgon";
    }

    // Without .2D and .3D the number of items of the points tells.
    void settle_layout()
    {
        bool plane = false, space = false;
        for (const size_t count : found.coordinate_counts) {
            plane = plane || count == 2 || count == 4;
            space = space || count == 3 || count == 6;
        }
        options.space = space && !plane;
    }

    void assume(const CodedLine &line)
    {
        if (!options.units_given && !said_units && line.code[0] != 'G') {
            builder.note(line.at, "no .UNITS before this line: metres and degrees-minutes-seconds are assumed");
            said_units = true;
        }
        if (options.layout_given || said_layout || line.code[0] == 'G' || line.code[0] == 'P' || line.code == "L")
            return;
        builder.note(line.at, std::string("no .2D or .3D before this line: ") + (options.space ? "3D" : "2D") +
                                  " is assumed from the points");
        said_layout = true;
    }

    // It counts where no standard deviation stands behind it.
    void assume_length(const CodedLine &line)
    {
        if (!said_length)
            builder.note(line.at,
                         "the third item of L is taken for the length of the line, not for a number of set-ups");
        said_length = true;
    }

    void read_line(const CodedLine &line)
    {
        if (options.ended || (options.skipping && line.code[0] != '.')) {
            builder.leave_out(line.at, "line " + quote(line.code),
                              options.ended ? "it stands behind .END" : "it stands behind .DATA OFF");
            return;
        }
        if (line.code[0] == '.') return read_line_option(line, options, builder);
        const auto reader = readers().find(line.code);
        if (reader == readers().end())
            return fault(line.at, "code " + quote(line.code) + " is not known",
                         "write one of C E A M D V DV B BM DB DN DM DE L TB T TE SS G0 G1 G2 G3");
        const bool gnss = line.code[0] == 'G';
        if (!gnss) finish_vector();
        if (found.vectors && !gnss && line.code[0] != 'P')
            return builder.leave_out(
                line.at, "line " + quote(line.code),
                "beside GNSS vectors coordinates are geocentric, and this needs a reference system");
        assume(line);
        (this->*reader->second)(line);
    }

    double factor() const { return options.multiplier * (one_length ? 1.0 : metres_of(options.length)); }
    double length(double value) const { return tidy(value * factor(), std::fabs(value)); }
    double angle(double value) const
    {
        return options.gons || builder.draft.units.dms ? value : value * gon_per_degree;
    }
    double full_circle() const { return builder.draft.units.dms ? 360.0 : 400.0; }

    DraftRow row_of(const CodedLine &line) const
    {
        DraftRow row;
        row.where = line.at;
        row.id = line.description;
        return row;
    }

    // The standard deviation as the network file writes it; nothing for the usual one.
    void set_sigma(DraftRow &row, const LineSigma &sigma, bool is_angle)
    {
        row.use = sigma.kind != LineSigma::free;
        if (sigma.kind == LineSigma::fixed) fixed_values++;
        const double unit = builder.draft.units.dms ? 1.0 : mgon_per_second;
        const double metres = one_length ? metres_of(options.length) : 1.0;
        if (sigma.kind == LineSigma::fixed)
            row.sigma[0] = is_angle ? fixed_seconds * unit : fixed_length / metres;
        else if (sigma.kind == LineSigma::number && is_angle)
            row.sigma[0] = options.gons ? sigma.value : sigma.value * unit;
        else if (sigma.kind == LineSigma::number)
            row.sigma[0] = length(sigma.value);
    }

    void add(DraftKind kind, DraftRow row, double value, const LineSigma &sigma)
    {
        const bool is_angle = kind == DraftKind::angle || kind == DraftKind::direction ||
                              kind == DraftKind::vertical_angle || kind == DraftKind::azimuth;
        row.value[0] = is_angle ? angle(value) : length(value);
        set_sigma(row, sigma, is_angle);
        builder.add(kind, std::move(row));
    }

    // A distance, slope in space; false where it is not above 0.
    bool add_distance(const CodedLine &line, DraftRow row, double value, const LineSigma &sigma,
                      const std::optional<LineHeights> &heights)
    {
        if (!(value > 0.0)) {
            fault(line.at, "a distance is not above 0", "write ? for one that was not measured");
            return false;
        }
        const bool slope = options.space && !options.delta;
        if (slope) set_heights(row, heights);
        add(slope ? DraftKind::distance : DraftKind::horizontal_distance, std::move(row), value, sigma);
        return true;
    }

    void set_heights(DraftRow &row, const std::optional<LineHeights> &heights) const
    {
        if (!heights) return;
        if (heights->instrument != 0.0) row.h1 = length(heights->instrument);
        if (heights->target != 0.0) row.h2 = length(heights->target);
    }

    // A zenith angle, or a height difference with .DELTA ON.
    void add_vertical(const CodedLine &line, DraftRow row, double value, const LineSigma &sigma,
                      const std::optional<LineHeights> &heights)
    {
        if (options.delta) {
            if (heights && heights->instrument != heights->target)
                return fault(heights->at, "heights stand beside a height difference",
                             "reduce it to the marks, and leave the heights out");
            row.setup.clear();
            return add(DraftKind::height_difference, std::move(row), value, sigma);
        }
        const double full = options.gons ? 400.0 : 360.0;
        if (!(value >= 0.0 && value <= full))
            return fault(line.at, "the zenith angle is not within a circle", "write it from 0 to half a circle");
        set_heights(row, heights);
        add(DraftKind::vertical_angle, std::move(row), value > full / 2 ? tidy(full - value, full) : value, sigma);
    }

    // Coordinates of points.

    void set_coordinate(DraftPoint &point, size_t axis, double value, const LineSigma &sigma)
    {
        point.value[axis] = length(value);
        point.sigma[axis].reset();
        point.code[axis] = sigma.kind == LineSigma::fixed    ? CODE_FIXED
                           : sigma.kind == LineSigma::number ? CODE_WEIGHTED
                                                             : CODE_FREE;
        if (sigma.kind == LineSigma::number) point.sigma[axis] = length(sigma.value);
    }

    void read_point(const CodedLine &line)
    {
        LineItems items(line, options, faults);
        const std::string name = items.name();
        const size_t values = options.space ? 3 : 2;
        double value[3] = {0, 0, 0};
        for (size_t i = 0; i < values; i++) value[i] = items.number();
        std::vector<LineSigma> sigmas(values);
        if (items.left() > 0) sigmas = items.sigmas(values);
        items.end();
        if (!items.good()) return;
        DraftPoint &point = builder.point(name, line.at);
        if (point.value[0])
            builder.note(line.at, "point " + quote(name) + " has coordinates in line " +
                                      std::to_string(point.where.line) + " too: these go before them");
        point.where = line.at;
        const size_t north = options.east_first ? 1 : 0;
        set_coordinate(point, 0, value[north], sigmas[north]);
        set_coordinate(point, 1, value[1 - north], sigmas[1 - north]);
        if (values == 3) set_coordinate(point, 2, value[2], sigmas[2]);
    }

    void read_height(const CodedLine &line)
    {
        LineItems items(line, options, faults);
        const std::string name = items.name();
        const double value = items.number();
        const std::vector<LineSigma> sigmas = items.sigmas(1);
        items.end();
        if (items.good()) set_coordinate(builder.point(name, line.at), 2, value, sigmas[0]);
    }

    void refuse_height(const CodedLine &line)
    {
        fault(line.at, "heights above the ellipsoid are not taken here", "write heights of the network with C or E");
    }

    // Latitude and longitude: points of a network of vectors, in geocentric coordinates.
    void read_position(const CodedLine &line)
    {
        if (!found.vectors)
            return fault(line.at, "latitude and longitude need a reference system, which the network has not",
                         "write plane coordinates with C");
        LineItems items(line, options, faults);
        const std::string name = items.name();
        Geodetic place;
        place.latitude = items.angle() * (options.gons ? 0.9 : 1.0) * radian;
        place.longitude = items.angle() * (options.gons ? 0.9 : 1.0) * radian;
        if (items.left() > 0) place.height = length(items.number());
        std::vector<LineSigma> sigmas(3);
        if (items.left() > 0) sigmas = items.sigmas(3);
        items.end();
        if (!items.good()) return;
        const bool held = sigmas[0].kind == LineSigma::fixed && sigmas[1].kind == LineSigma::fixed &&
                          sigmas[2].kind == LineSigma::fixed;
        const bool some = sigmas[0].kind == LineSigma::fixed || sigmas[1].kind == LineSigma::fixed ||
                          sigmas[2].kind == LineSigma::fixed || sigmas[0].kind == LineSigma::number ||
                          sigmas[1].kind == LineSigma::number || sigmas[2].kind == LineSigma::number;
        if (some && !held)
            return fault(line.at, "only a part of latitude, longitude and height is held",
                         "hold all of them with ! or none: geocentric coordinates cannot say it");
        if (held && line.code == "P")
            return fault(line.at, "a height above the geoid is held", "write PH with the height above the ellipsoid");
        DraftPoint &point = builder.point(name, line.at);
        const std::array<double, 3> xyz = geocentric(place);
        for (size_t axis = 0; axis < 3; axis++) {
            point.value[axis] = xyz[axis];
            point.code[axis] = held ? CODE_FIXED : CODE_FREE;
        }
    }

    // Observations.

    void read_angle(const CodedLine &line)
    {
        LineItems items(line, options, faults);
        const std::vector<std::string> names = items.names(3);
        const double value = items.angle();
        const std::vector<LineSigma> sigmas = items.sigmas(1);
        items.end();
        if (items.good()) add_angle(line, names, value, sigmas[0]);
    }

    void add_angle(const CodedLine &line, const std::vector<std::string> &names, double value, const LineSigma &sigma)
    {
        DraftRow row = row_of(line);
        row.at = names[0];
        row.from = names[1];
        row.to = names[2];
        add(DraftKind::angle, std::move(row), value, sigma);
    }

    DraftRow sight(const CodedLine &line, const std::string &from, const std::string &to) const
    {
        DraftRow row = row_of(line);
        row.from = from;
        row.to = to;
        return row;
    }

    void read_distance(const CodedLine &line)
    {
        LineItems items(line, options, faults);
        const std::vector<std::string> names = items.names(2);
        const double value = items.number();
        const std::vector<LineSigma> sigmas = items.sigmas(1);
        const std::optional<LineHeights> heights = items.heights();
        items.end();
        if (items.good()) add_distance(line, sight(line, names[0], names[1]), value, sigmas[0], heights);
    }

    bool in_space(const CodedLine &line)
    {
        if (!options.space)
            fault(line.at, "line " + quote(line.code) + " belongs to three dimensions", "write .3D before it");
        return options.space;
    }

    void read_vertical(const CodedLine &line)
    {
        if (!in_space(line)) return;
        LineItems items(line, options, faults);
        const std::vector<std::string> names = items.names(2);
        const double value = options.delta ? items.number() : items.angle();
        const std::vector<LineSigma> sigmas = items.sigmas(1);
        const std::optional<LineHeights> heights = items.heights();
        items.end();
        if (items.good()) add_vertical(line, sight(line, names[0], names[1]), value, sigmas[0], heights);
    }

    void read_both(const CodedLine &line)
    {
        if (!in_space(line)) return;
        LineItems items(line, options, faults);
        const std::vector<std::string> names = items.names(2);
        const Polar polar = read_polar(items, 2, false);
        items.end();
        if (items.good()) add_polar(line, names[0], names[1], polar, 0);
    }

    void read_bearing(const CodedLine &line)
    {
        LineItems items(line, options, faults);
        const std::vector<std::string> names = items.names(2);
        const double value = items.bearing();
        const std::vector<LineSigma> sigmas = items.sigmas(1);
        items.end();
        if (items.good()) add(DraftKind::azimuth, sight(line, names[0], names[1]), value, sigmas[0]);
    }

    // Values of a line with an angle first, or of DV without one.
    struct Polar {
        std::optional<double> turn, distance, vertical;
        std::vector<LineSigma> sigmas;
        std::optional<LineHeights> heights;
    };

    Polar read_polar(LineItems &items, size_t values, bool bearing)
    {
        Polar polar;
        const bool turned = values == 3 || !options.space;
        if (turned) polar.turn = bearing ? items.bearing() : items.measured(true);
        polar.distance = items.measured(false);
        if (options.space) polar.vertical = items.measured(!options.delta);
        polar.sigmas = items.sigmas(values);
        polar.heights = items.heights();
        return polar;
    }

    // Distance and vertical value; `first` is the place of the distance among the standard deviations.
    void add_polar(const CodedLine &line, const std::string &from, const std::string &to, const Polar &polar,
                   size_t first, const std::string &setup = std::string())
    {
        DraftRow row = sight(line, from, to);
        row.setup = setup;
        if (polar.distance && !add_distance(line, row, *polar.distance, polar.sigmas[first], polar.heights)) return;
        if (polar.vertical) add_vertical(line, row, *polar.vertical, polar.sigmas[first + 1], polar.heights);
    }

    size_t polar_values() const { return options.space ? 3 : 2; }

    void read_measures(const CodedLine &line)
    {
        const bool bearing = line.code == "BM";
        LineItems items(line, options, faults);
        const std::vector<std::string> names = items.names(bearing ? 2 : 3);
        const Polar polar = read_polar(items, polar_values(), bearing);
        items.end();
        if (!items.good()) return;
        const std::string &to = names.back();
        if (bearing)
            add(DraftKind::azimuth, sight(line, names[0], to), *polar.turn, polar.sigmas[0]);
        else if (polar.turn)
            add_angle(line, names, *polar.turn, polar.sigmas[0]);
        add_polar(line, names[0], to, polar, 1);
    }

    void read_levelling(const CodedLine &line)
    {
        LineItems items(line, options, faults);
        const std::vector<std::string> names = items.names(2);
        const double value = items.number();
        DraftRow row = sight(line, names[0], names[1]);
        if (items.left() > 0 && items.item(0).text != "!" && items.item(0).text != "*" && items.item(0).text != "&") {
            const double way = items.number();
            if (items.good() && way > 0.0) row.length = length(way);
            assume_length(line);
        }
        const std::vector<LineSigma> sigmas = items.sigmas(1);
        items.end();
        if (!items.good()) return;
        add(DraftKind::height_difference, std::move(row), value, sigmas[0]);
    }

    // Sets of directions.

    void open_set(const CodedLine &line)
    {
        if (set_open) fault(line.at, "a set of directions begins in another", "write DE before it");
        LineItems items(line, options, faults);
        set_station = items.name();
        set_open = true;
        set_at = line.at;
        set_word = std::to_string(++sets[set_station]);
    }

    void read_direction(const CodedLine &line)
    {
        if (!set_open)
            return fault(line.at, "a direction stands outside of a set", "write DB with the station before it");
        LineItems items(line, options, faults);
        const std::string to = items.name();
        const bool all = line.code == "DM";
        Polar polar;
        if (all) {
            polar = read_polar(items, polar_values(), false);
        } else {
            polar.turn = items.angle();
            polar.sigmas = items.sigmas(1);
        }
        items.end();
        if (!items.good()) return;
        if (to == set_station) return fault(line.at, "a station is sighted from itself", "name another point");
        DraftRow row = sight(line, set_station, to);
        row.setup = set_word;
        if (polar.turn) add(DraftKind::direction, row, *polar.turn, polar.sigmas[0]);
        add_polar(line, set_station, to, polar, 1, set_word);
    }

    void close_set(const CodedLine &line)
    {
        if (!set_open) fault(line.at, "no set of directions begins before this end", "write DB with the station");
        LineItems(line, options, faults).end();
        set_open = false;
    }

    // A station with one set needs no word for its stand.
    void settle_setups()
    {
        for (const DraftKind kind :
             {DraftKind::direction, DraftKind::distance, DraftKind::horizontal_distance, DraftKind::vertical_angle})
            for (DraftRow &row : builder.draft.of(kind))
                if (!row.setup.empty() && sets[row.from] < 2) row.setup.clear();
    }

    // Traverses. A leg is complete when the next line names its end.

    void open_traverse(const CodedLine &line)
    {
        close_traverse(line.at);
        LineItems items(line, options, faults);
        traverse = Traverse();
        traverse.open = true;
        if (items.left() > 0 && is_bearing(items.item(0).text))
            traverse.bearing = items.bearing();
        else
            traverse.back = items.name();
        items.end();
    }

    // A number is a bearing where no point has that name.
    bool is_bearing(std::string_view text) const
    {
        const char last = (char)std::toupper((unsigned char)text.back());
        const bool quadrant = text.size() > 2 && std::strchr("NSns", text[0]) && (last == 'E' || last == 'W') &&
                              text[1] >= '0' && text[1] <= '9';
        const bool number = text.find_first_not_of("0123456789.-") == std::string_view::npos;
        return quadrant || (number && found.names.count(std::string(text)) == 0);
    }

    void read_leg(const CodedLine &line)
    {
        if (!traverse.open)
            return fault(line.at, "a leg stands outside of a traverse", "write TB with the backsight before it");
        if (line.items.empty()) return fault(line.at, "the leg has no name", "name the point of the instrument");
        const std::string at(line.items[0].text);
        take_leg(at, line.at);
        traverse.at = at;
        traverse.leg = &line;
        traverse.options = options;
    }

    // The leg in hand runs to this point.
    void take_leg(const std::string &to, Source where)
    {
        if (!traverse.leg) return;
        const CodedLine &line = *traverse.leg;
        traverse.leg = nullptr;
        std::swap(options, traverse.options);
        read_leg_to(line, to, where);
        std::swap(options, traverse.options);
        traverse.back = traverse.at;
    }

    void read_leg_to(const CodedLine &line, const std::string &to, Source where)
    {
        LineItems items(line, options, faults);
        const std::string at = items.name();
        const Polar polar = read_polar(items, polar_values(), false);
        items.end();
        if (!items.good()) return;
        if (at == to) return fault(where, "the traverse goes from " + quote(at) + " to itself", "name the next point");
        if (polar.turn) add_turn(line, at, to, *polar.turn, polar.sigmas[0]);
        add_polar(line, at, to, polar, 1);
    }

    // An angle from the backsight; from a bearing it is an azimuth.
    void add_turn(const CodedLine &line, const std::string &at, const std::string &to, double turn,
                  const LineSigma &sigma)
    {
        if (!traverse.back.empty()) return add_angle(line, {at, traverse.back, to}, turn, sigma);
        const double full = options.gons ? 400.0 : 360.0;
        add(DraftKind::azimuth, sight(line, at, to), tidy(std::fmod(traverse.bearing + turn, full), full), sigma);
    }

    void end_traverse(const CodedLine &line)
    {
        if (!traverse.open || !traverse.leg)
            return fault(line.at, "no leg stands before this end of a traverse", "write TB and T lines before it");
        LineItems items(line, options, faults);
        const std::string at = items.name();
        take_leg(at, line.at);
        if (items.left() > 0) {
            const double turn = items.angle();
            const std::string to = items.name();
            const std::vector<LineSigma> sigmas = items.sigmas(1);
            if (items.good()) add_turn(line, at, to, turn, sigmas[0]);
        }
        items.end();
        traverse = Traverse();
    }

    void close_traverse(Source next)
    {
        if (!traverse.leg) return;
        fault(next.line > 0 ? next : traverse.leg->at, "the traverse before this has no end",
              "write TE with its last point");
        traverse = Traverse();
    }

    void leave_out_side_shot(const CodedLine &line)
    {
        builder.leave_out(line.at,
                          "side shot " + (line.items.empty() ? std::string() : std::string(line.items[0].text)),
                          "it is computed after the adjustment; write M to let it take part");
    }

    // GNSS vectors.

    void read_session(const CodedLine &) { finish_vector(); }

    void read_vector(const CodedLine &line)
    {
        finish_vector();
        LineItems items(line, options, faults);
        const bool numbered = items.left() == 5;
        const std::string id = numbered ? items.name() : std::string();
        const std::vector<std::string> names = items.names(2);
        DraftRow row = sight(line, names[0], names[1]);
        if (row.id.empty()) row.id = id;
        for (size_t axis = 0; axis < 3; axis++) row.value[axis] = items.number();
        items.end();
        if (items.good()) vector = {std::move(row), false, false, {}, {}, options};
    }

    struct Vector {
        DraftRow row;
        bool variances_given = false, covariances_given = false;
        std::array<double, 3> variances = {}, covariances = {};
        LineOptions options;
    };

    void read_three(const CodedLine &line, std::array<double, 3> Vector::*values, bool Vector::*given)
    {
        if (!vector) return fault(line.at, "no vector stands before line " + quote(line.code), "write G1 before it");
        LineItems items(line, options, faults);
        for (double &value : (*vector).*values) value = items.number();
        items.end();
        (*vector).*given = true;
    }

    void read_variances(const CodedLine &line) { read_three(line, &Vector::variances, &Vector::variances_given); }
    void read_covariances(const CodedLine &line) { read_three(line, &Vector::covariances, &Vector::covariances_given); }

    void refuse_rotation(const CodedLine &line)
    {
        fault(line.at, "a rotation of vectors is not taken over", "turn the vectors, and leave G4 out");
    }

    void finish_vector()
    {
        if (!vector) return;
        Vector done = std::move(*vector);
        vector.reset();
        const Source at = done.row.where;
        if (!done.variances_given) return fault(at, "the vector has no variances", "write G2, and G3, behind it");
        std::array<double, 3> sigma = done.variances;
        if (!done.options.correlations)
            for (double &s : sigma) s = std::sqrt(s);
        static const size_t pairs[3][2] = {{0, 1}, {0, 2}, {1, 2}};
        const double square = done.options.vector_factor * done.options.vector_factor;
        for (size_t i = 0; i < 3; i++) {
            const double own = done.options.correlations ? sigma[i] * sigma[i] : done.variances[i];
            if (!(own > 0.0)) return fault(at, "a variance of the vector is not above 0", "correct its line G2");
            done.row.product[i] = own * square;
            const double scale = done.options.correlations ? sigma[pairs[i][0]] * sigma[pairs[i][1]] : 1.0;
            done.row.product[3 + i] = done.covariances[i] * scale * square;
        }
        builder.add(DraftKind::baseline, std::move(done.row), 3);
    }

    void note_fixed()
    {
        if (fixed_values > 0)
            builder.note({file.file(), 0, 0},
                         std::to_string(fixed_values) +
                             " observations are fixed: they take the standard deviations 0.00001 m "
                             "and 0.01 arc seconds");
    }

    const TextFile &file;
    DraftBuilder builder;
    Faults &faults;
    const IncludedLines included;
    const std::vector<CodedLine> &lines;
    Survey found;
    LineOptions options;
    bool one_length = true; // lengths stay in the unit of the text
    bool said_units = false, said_layout = false, said_length = false;
    size_t fixed_values = 0;
    bool set_open = false;
    Source set_at;
    std::string set_station, set_word;
    std::map<std::string, int> sets; // of a station
    Traverse traverse;
    std::optional<Vector> vector;
};

} // namespace

bool looks_like_lines(std::string_view beginning)
{
    constexpr size_t enough = 20; // lines
    static const std::set<std::string> options = {".UNITS", ".ORDER", ".2D", ".3D", ".DELTA", ".GPS", ".INCLUDE"};
    static const std::set<std::string> pairs = {"A", "D", "V", "DV", "B", "M", "BM", "L", "G1"};
    TextFile file;
    Faults unheard;
    if (!file.take("", utf8_text(beginning), unheard)) return false;
    size_t lines = 0;
    for (const CodedLine &line : coded_lines(file)) {
        if (options.count(line.code) > 0) return true;
        const bool point = line.code == "C" || line.code == "E" || line.code == "P" || line.code == "PH";
        if (!point && line.code[0] != '.' && line.code != "G0" && line.code != "DB" && line.code != "TB") {
            const bool joined = !line.items.empty() && line.items[0].text.find('-', 1) != std::string_view::npos;
            return pairs.count(line.code) > 0 && joined && line.items.size() > 1;
        }
        if ((line.code == "DB" || line.code == "TB") && !line.items.empty()) return true;
        if (++lines > enough) return point && line.items.size() > 2;
    }
    return false;
}

bool read_lines(const TextFile &file, Draft &draft, Faults &faults) { return LinesReader(file, draft, faults).read(); }

} // namespace vornhost
