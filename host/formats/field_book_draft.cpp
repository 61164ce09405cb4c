#include "host/formats/field_book_draft.h"

#include <stdio.h>

#include <algorithm>
#include <cmath>

#include "host/formats/field_means.h"
#include "host/formats/field_sets.h"
#include "host/formats/number_text.h"

namespace vornhost {

namespace {

constexpr double longest_sight = 1e6;   // metres
constexpr double shortest_sight = 1e-3; // metres; instruments write 0 where no distance was measured
constexpr double largest_height = 1e4;  // metres, of instruments and targets

// Standard deviations that hold where the user states none: of an instrument of 1 mgon (3") and 2 mm + 2 ppm, with
// heights measured to a millimetre.
const std::map<std::string, double> usual_sigmas = {
    {"directions", 1.0},           {"vertical_angles", 1.0},    {"distances", 2.0},
    {"distances_ppm", 2.0},        {"height_target", 1.0},      {"height_instrument", 1.0},
    {"horizontal_distances", 3.0}, {"height_differences", 3.0}, {"azimuths", 3.0}};
constexpr double seconds_instead_of_mgon = 3.0;

std::string number(double value, int places)
{
    char text[64];
    snprintf(text, sizeof text, "%.*f", places, value);
    return text;
}

std::string plural(size_t n, const char *word) { return std::to_string(n) + " " + word + (n == 1 ? "" : "s"); }

// Makes the draft of one book; the members are what its steps share.
class BookDraft {
public:
    BookDraft(const FieldBook &its_book, const ImportOptions &its_options, RecordAccount &its_account, Draft &its_draft,
              Faults &all)
        : book(its_book), options(its_options), account(its_account), draft(its_draft), faults(all),
          gon(its_book.unit == CircleUnit::gon), circle(full_circle(its_book.unit))
    {
    }

    bool make()
    {
        draft.units = field_units(book.unit);
        for (FieldSetup setup : book.setups) add_setup(setup);
        if (!faults.empty()) return false;
        settle_dimension();
        add_sigmas();
        add_draft_points(book.points, account, draft);
        return true;
    }

private:
    double stated(const std::string &key) const
    {
        const auto given = options.sigma.find(key);
        if (given != options.sigma.end()) return given->second;
        if (!usual_sigmas.count(key)) return 0.0;
        const bool angle = key == "directions" || key == "vertical_angles" || key == "azimuths";
        return usual_sigmas.at(key) * (angle && !gon ? seconds_instead_of_mgon : 1.0);
    }

    // Readings of the circle in the unit of their standard deviations.
    double small_units() const { return gon ? 1000.0 : 3600.0; }
    const char *small_word() const { return gon ? " mgon" : "\""; }

    SightSigmas sigmas() const
    {
        return {stated("directions") / small_units(), stated("vertical_angles") / small_units(),
                stated("distances") / 1000.0};
    }

    void add_setup(FieldSetup &setup)
    {
        check(setup);
        keep_useful(setup);
        if (setup.sights.empty()) return;
        const ReducedSetup reduced = reduce_faces(setup, circle, sigmas(), account);
        const MeanSets means = mean_sets(reduced.sets, circle, !options.keep_sets, account);
        DraftSetup row;
        row.station = setup.station;
        row.setup = std::to_string(++setups[setup.station]);
        row.height = setup.height;
        row.where = setup.where;
        size_t set = 0;
        for (const MeanSet &mean : means.sets) {
            const std::string word = means.sets.size() > 1 ? std::to_string(++set) : std::string();
            for (const MeanTarget &target : mean.targets) add_target(row, word, target);
        }
        note_setup(row, reduced, means);
        draft.setups.push_back(std::move(row));
    }

    void check(const FieldSetup &setup)
    {
        if (setup.height && std::fabs(*setup.height) > largest_height)
            faults.add(setup.where, "height of instrument " + number(*setup.height, 3) + " m is none",
                       "correct it or its unit");
        for (const FieldSight &sight : setup.sights) {
            if (sight.direction && !(std::fabs(*sight.direction) <= 2.0 * circle))
                faults.add(sight.where, "direction " + number(*sight.direction, 4) + " is not within the circle",
                           "correct it or its unit");
            if (sight.zenith && !(*sight.zenith >= 0.0 && *sight.zenith <= circle))
                faults.add(sight.where, "zenith reading " + number(*sight.zenith, 4) + " is not within the circle",
                           "zenith angles are read; readings from the horizon or in per cent are not taken");
            for (const MaybeNumber &length : sight.length)
                if (length && !(std::fabs(*length) <= longest_sight))
                    faults.add(sight.where, "length of " + number(*length, 3) + " m is not that of a sight",
                               "correct it or its unit");
            if (sight.target_height && !(std::fabs(*sight.target_height) <= largest_height))
                faults.add(sight.where, "height of target " + number(*sight.target_height, 3) + " m is none",
                           "correct it or its unit");
        }
    }

    void keep_useful(FieldSetup &setup)
    {
        std::vector<FieldSight> useful;
        for (FieldSight &sight : setup.sights) {
            for (const size_t k : {slope_length, horizontal_length})
                if (sight.length[k] && *sight.length[k] < shortest_sight) sight.length[k].reset();
            const bool any = sight.direction || sight.zenith ||
                             std::any_of(sight.length.begin(), sight.length.end(),
                                         [](const MaybeNumber &length) { return length.has_value(); });
            if (sight.target == setup.station)
                account.leave_out(sight.where, "a sight of the own station " + quote(setup.station));
            else if (!any)
                account.leave_out(sight.where, "a sight without a reading");
            else
                useful.push_back(std::move(sight));
        }
        setup.sights = std::move(useful);
    }

    // To a thousandth of a mgon or of a second, decimal degrees to 1e-8.
    double rounded_angle(double angle) const
    {
        const double unit = gon ? 1e6 : book.unit == CircleUnit::dms ? 3.6e6 : 1e8;
        return std::round(angle * unit) / unit;
    }
    static double rounded_length(double length) { return std::round(length * 1e5) / 1e5; }

    DraftRow row_of(const DraftSetup &setup, const std::string &set, const SetTarget &sight, double value) const
    {
        DraftRow row;
        row.from = setup.station;
        row.to = sight.target;
        row.value[0] = value;
        row.setup = setup.setup;
        row.set = set;
        row.where = sight.where;
        return row;
    }

    void add_target(const DraftSetup &setup, const std::string &set, const MeanTarget &target)
    {
        const SetTarget &sight = target.sight;
        const auto add = [&](DraftKind kind, double value, bool heights) -> DraftRow & {
            const bool rounds = kind == DraftKind::direction || kind == DraftKind::vertical_angle;
            const bool has_set = rounds;
            DraftRow row = row_of(setup, has_set ? set : std::string(), sight, value);
            if (heights) row.h2 = sight.target_height;
            draft.of(kind).push_back(row);
            return draft.of(kind).back();
        };
        if (sight.direction)
            add(DraftKind::direction, rounded_angle(*sight.direction), false).sigma[0] =
                stated("directions") * target.factor;
        if (sight.zenith) add_zenith(sight, target.factor, add);
        add_lengths(setup, sight, add);
    }

    template <class Add> void add_zenith(const SetTarget &sight, double factor, const Add &add)
    {
        const double zenith = rounded_angle(*sight.zenith), slack = gross_angle(circle);
        if (zenith < -slack || zenith > circle / 2.0 + slack) {
            faults.add(sight.where, "zenith angle " + number(zenith, 4) + " is not above 0 in the first face",
                       "correct the face or the reading");
            return;
        }
        add(DraftKind::vertical_angle, std::clamp(zenith, 0.0, circle / 2.0), true).sigma[0] =
            stated("vertical_angles") * factor;
    }

    template <class Add> void add_lengths(const DraftSetup &setup, const SetTarget &sight, const Add &add)
    {
        if (sight.length[slope_length]) {
            add(DraftKind::distance, rounded_length(*sight.length[slope_length]), true);
            return;
        }
        if (sight.length[horizontal_length])
            add(DraftKind::horizontal_distance, rounded_length(*sight.length[horizontal_length]), false);
        if (sight.length[rise_length] && !sight.zenith) {
            const double marks =
                *sight.length[rise_length] + setup.height.value_or(0.0) - sight.target_height.value_or(0.0);
            add(DraftKind::height_difference, rounded_length(marks), false).setup.clear();
        }
    }

    void note_setup(const DraftSetup &setup, const ReducedSetup &reduced, const MeanSets &means)
    {
        size_t sights = 0, both = 0;
        for (const FieldSet &set : reduced.sets)
            for (const SetTarget &target : set) {
                sights++;
                if (target.both_faces) both++;
            }
        const size_t sets = reduced.sets.size();
        std::string text = quote(setup.station) + ", set-up " + setup.setup + ": " + plural(sets, "set") + ", " +
                           plural(sights, "target") + (sets > 1 ? " in all" : "") + ", " +
                           (both == sights ? "in both faces" : std::to_string(both) + " in both faces");
        text += error_text("collimation error", reduced.errors.collimations, reduced.errors.collimation,
                           reduced.errors.most_collimation);
        text += error_text("index error", reduced.errors.indexes, reduced.errors.index, reduced.errors.most_index);
        const double units = small_units();
        text += scatter_text("directions", means.direction, units, stated("directions"), small_word());
        text += scatter_text("zenith angles", means.zenith, units, stated("vertical_angles"), small_word());
        text += scatter_text("distances", means.distance, 1000.0, stated("distances"), " mm");
        account.note(setup.where, text);
    }

    std::string error_text(const char *what, size_t pairs, double mean, double most) const
    {
        if (pairs == 0) return std::string();
        return std::string("; ") + what + " " + number(mean * small_units(), 2) + small_word() + " (largest " +
               number(most * small_units(), 2) + ")";
    }

    static std::string scatter_text(const char *what, const Scatter &scatter, double units, double stated,
                                    const char *word)
    {
        const MaybeNumber deviation = scatter.deviation();
        if (!deviation) return std::string();
        return std::string("; ") + what + " of a set scatter by " + number(*deviation * units, 2) + word +
               ", a priori " + number(stated, 2);
    }

    // Heights take part where anything was measured up or down.
    void settle_dimension()
    {
        const bool heights =
            !draft.of(DraftKind::vertical_angle).empty() || !draft.of(DraftKind::height_difference).empty();
        const bool points_alone =
            draft.setups.empty() && std::any_of(book.points.begin(), book.points.end(),
                                                [](const DraftPoint &point) { return point.value[2].has_value(); });
        draft.dimension = heights || points_alone ? 3 : 2;
        if (draft.dimension == 3) return;
        for (DraftRow &row : draft.of(DraftKind::distance)) row.h2.reset();
        for (DraftSetup &setup : draft.setups) setup.height.reset();
    }

    // Directions and zenith angles have theirs in their rows.
    void add_sigmas()
    {
        const std::string small = small_word(), mm = " mm";
        if (!draft.of(DraftKind::direction).empty()) say_sigma("directions", small);
        if (!draft.of(DraftKind::vertical_angle).empty()) say_sigma("vertical_angles", small);
        if (!draft.of(DraftKind::distance).empty()) {
            state_sigma("distances", mm);
            state_sigma("distances_ppm", "");
        }
        if (!draft.of(DraftKind::horizontal_distance).empty()) state_sigma("horizontal_distances", mm);
        if (!draft.of(DraftKind::height_difference).empty()) state_sigma("height_differences", mm);
        if (!draft.of(DraftKind::azimuth).empty()) state_sigma("azimuths", small);
        if (draft.dimension == 3 && !draft.setups.empty())
            for (const char *key : {"height_instrument", "height_target"}) state_sigma(key, mm);
        for (const char *key : {"centring_instrument", "centring_target"})
            if (options.sigma.count(key)) state_sigma(key, mm);
        if (sigma_words.empty()) return;
        account.note(Source(), "standard deviations, of a set in both faces (of a single face times the square root "
                               "of 2, of n sets divided by that of n): " +
                                   sigma_words +
                                   (options.sigma.empty() ? "; state your own with --sigma KEY=VALUE" : ""));
    }

    void say_sigma(const std::string &key, const std::string &unit)
    {
        sigma_words += (sigma_words.empty() ? "" : ", ") + key + " " + number_text(stated(key)) + unit;
    }

    void state_sigma(const std::string &key, const std::string &unit)
    {
        say_sigma(key, unit);
        if (stated(key) > 0.0) draft.sigma.emplace_back(key, stated(key));
    }

    const FieldBook &book;
    const ImportOptions &options;
    RecordAccount &account;
    Draft &draft;
    Faults &faults;
    const bool gon;
    const double circle;
    std::map<std::string, int> setups; // so far, by station
    std::string sigma_words;           // what was stated
};

bool same_place(const DraftPoint &a, const DraftPoint &b)
{
    for (size_t axis = 0; axis < 3; axis++)
        if (a.value[axis] && b.value[axis] && *a.value[axis] != *b.value[axis]) return false;
    return true;
}

} // namespace

const std::vector<std::string> &sigma_keys()
{
    static const std::vector<std::string> keys = {
        "directions",         "vertical_angles",      "distances",      "distances_ppm", "horizontal_distances",
        "height_differences", "height_difference_km", "azimuths",       "angles",        "height_instrument",
        "height_target",      "centring_instrument",  "centring_target"};
    return keys;
}

DraftUnits field_units(CircleUnit unit)
{
    DraftUnits units;
    units.length = "m";
    units.sigma_length = "mm";
    units.angle = unit == CircleUnit::gon ? "gon" : unit == CircleUnit::degree ? "degree" : "dms";
    units.sigma_angle = unit == CircleUnit::gon ? "mgon" : "arc_second";
    units.dms = unit == CircleUnit::dms;
    return units;
}

void add_draft_points(const std::vector<DraftPoint> &given, RecordAccount &account, Draft &draft)
{
    std::map<std::string, size_t> places;
    const auto point = [&](const std::string &name, Source where) -> DraftPoint & {
        const auto [place, fresh] = places.insert({name, draft.points.size()});
        if (fresh) {
            DraftPoint added;
            added.name = name;
            added.code = {CODE_FREE, CODE_FREE, CODE_FREE};
            added.where = where;
            draft.points.push_back(std::move(added));
        }
        return draft.points[place->second];
    };
    for (const DraftSetup &setup : draft.setups) point(setup.station, setup.where).station = true;
    for (const auto &rows : draft.rows)
        for (const DraftRow &row : rows) {
            point(row.from, row.where);
            if (!row.to.empty()) point(row.to, row.where);
        }
    const size_t observed = draft.points.size();
    for (const DraftPoint &other : given) {
        DraftPoint &known = point(other.name, other.where);
        if (same_place(known, other)) {
            for (size_t axis = 0; axis < 3; axis++)
                if (!known.value[axis]) known.value[axis] = other.value[axis];
        } else
            account.leave_out(other.where, "other coordinates of " + quote(other.name) + " than before");
    }
    for (size_t i = observed; i < draft.points.size() && observed > 0; i++) {
        draft.points[i].off = true;
        account.note(draft.points[i].where,
                     "point " + quote(draft.points[i].name) + " is off: no observation reaches it");
    }
}

bool draft_field_book(const FieldBook &book, const ImportOptions &options, RecordAccount &account, Draft &draft,
                      Faults &faults)
{
    return BookDraft(book, options, account, draft, faults).make() && faults.empty();
}

} // namespace vornhost
