#include "host/formats/level_book.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <set>

#include "host/formats/field_book_draft.h"
#include "host/formats/number_text.h"

namespace vornhost {

namespace {

constexpr double largest_reading = 100.0, longest_sight = 10000.0; // metres
constexpr double reading_limit = 0.001;                            // metres, between two differences of one station

// Standard deviations that hold where the user states none, millimetres: of a kilometre levelled once, and of a station
// without distances.
const std::map<std::string, double> usual_sigmas = {{"height_difference_km", 1.0}, {"height_differences", 0.3}};

double mean(const std::vector<LevelReading> &readings)
{
    double sum = 0.0;
    for (const LevelReading &reading : readings) sum += reading.value;
    return sum / (double)readings.size();
}

MaybeNumber mean_distance(const std::vector<LevelReading> &readings)
{
    double sum = 0.0;
    size_t n = 0;
    for (const LevelReading &reading : readings)
        if (reading.distance) sum += *reading.distance, n++;
    return n > 0 ? MaybeNumber(sum / (double)n) : MaybeNumber();
}

double rounded(double value) { return std::round(value * 1e6) / 1e6; }

// Makes the draft of one book; the members are what its steps share.
class LevelDraft {
public:
    LevelDraft(LevelBook &its_book, const ImportOptions &its_options, RecordAccount &its_account, Draft &its_draft,
               Faults &all)
        : book(its_book), options(its_options), account(its_account), draft(its_draft), faults(all)
    {
    }

    bool make()
    {
        draft.dimension = 1;
        draft.units.length = "m";
        draft.units.sigma_length = "mm";
        for (size_t i = 0; i < book.lines.size(); i++) keep_whole_stations(book.lines[i]);
        for (size_t i = 0; i < book.lines.size(); i++) name_turning_points(book.lines[i], i + 1);
        part_turning_points();
        for (const LevelLine &line : book.lines)
            for (const LevelStation &station : line.stations) add_station(station);
        if (!faults.empty()) return false;
        add_sigmas();
        add_draft_points(book.points, account, draft);
        return true;
    }

private:
    void keep_whole_stations(LevelLine &line)
    {
        std::vector<LevelStation> whole;
        for (LevelStation &station : line.stations) {
            check(station);
            if (const char *reason = broken(station))
                leave_out(station, reason);
            else
                whole.push_back(std::move(station));
        }
        line.stations = std::move(whole);
    }

    void check(const LevelStation &station)
    {
        for (const auto *readings : {&station.back, &station.fore, &station.side})
            for (const LevelReading &reading : *readings) {
                if (!(std::fabs(reading.value) <= largest_reading))
                    faults.add(reading.where, "reading of " + number_text(reading.value) + " m is not one of a staff",
                               "correct it or its unit");
                if (reading.distance && !(*reading.distance >= 0.0 && *reading.distance <= longest_sight))
                    faults.add(reading.where, "distance of " + number_text(*reading.distance) + " m is none to a staff",
                               "correct it or its unit");
            }
    }

    static bool several_points(const std::vector<LevelReading> &readings)
    {
        return std::any_of(readings.begin(), readings.end(),
                           [&](const LevelReading &reading) { return reading.point != readings[0].point; });
    }

    static const char *broken(const LevelStation &station)
    {
        if (station.back.empty()) return "a station without a reading back";
        if (station.fore.empty() && station.side.empty()) return "a station without a reading fore";
        if (several_points(station.back) || several_points(station.fore))
            return "a station whose readings in one direction are to several points";
        if (!station.fore.empty() && station.back.size() != station.fore.size())
            return "a station with more readings in one direction than in the other";
        if (!station.fore.empty() && !station.back[0].point.empty() && station.back[0].point == station.fore[0].point)
            return "a station with the same point back and fore";
        return nullptr;
    }

    void leave_out(const LevelStation &station, const char *reason)
    {
        for (const auto *readings : {&station.back, &station.fore, &station.side})
            for (const LevelReading &reading : *readings) account.leave_out(reading.where, reason);
    }

    // The point fore of a station is the point back of the next; one without a name gets that of the line and a number.
    void name_turning_points(LevelLine &line, size_t number)
    {
        const auto rename = [](std::vector<LevelReading> &readings, const std::string &name) {
            for (LevelReading &reading : readings)
                if (reading.point.empty()) reading.point = name;
        };
        std::string before; // of the point fore of the station before
        for (size_t k = 0; k < line.stations.size(); k++) {
            LevelStation &station = line.stations[k];
            const std::string own = "L" + std::to_string(number) + "." + std::to_string(k);
            rename(station.back, k > 0 && !before.empty() ? before : own);
            const std::string fore = "L" + std::to_string(number) + "." + std::to_string(k + 1);
            const bool named_next = k + 1 < line.stations.size() && !line.stations[k + 1].back[0].point.empty();
            rename(station.fore, named_next ? line.stations[k + 1].back[0].point : fore);
            size_t side = 0;
            for (LevelReading &reading : station.side)
                if (reading.point.empty()) reading.point = fore + "." + std::to_string(++side);
            before = station.fore.empty() ? std::string() : station.fore[0].point;
        }
    }

    // Numbers of turning points begin anew with each line: a number that is a turning point of several lines and
    // nothing else is another point in each.
    void part_turning_points()
    {
        std::map<std::string, std::set<size_t>> turning;
        std::set<std::string> marks;
        for_lines([&](size_t i, LevelReading &reading, bool inner) {
            if (inner)
                turning[reading.point].insert(i);
            else
                marks.insert(reading.point);
        });
        std::string names;
        for (auto point = turning.begin(); point != turning.end();) {
            const bool parted = point->second.size() > 1 && !marks.count(point->first) &&
                                point->first.find_first_not_of("0123456789") == std::string::npos;
            if (parted) names += (names.empty() ? "" : ", ") + point->first;
            point = parted ? std::next(point) : turning.erase(point);
        }
        if (names.empty()) return;
        for_lines([&](size_t i, LevelReading &reading, bool) {
            if (turning.count(reading.point)) reading.point = "L" + std::to_string(i + 1) + "." + reading.point;
        });
        constexpr size_t most = 100;
        if (names.size() > most) names = names.substr(0, most) + " ...";
        account.note(Source(), "turning points " + names +
                                   " come in several lines: they are points of their own in "
                                   "each, as L1." +
                                   names.substr(0, names.find_first_of(", ")));
    }

    template <class Take> void for_lines(const Take &take)
    {
        for (size_t i = 0; i < book.lines.size(); i++) {
            std::vector<LevelStation> &stations = book.lines[i].stations;
            for (size_t k = 0; k < stations.size(); k++) {
                for (LevelReading &reading : stations[k].back) take(i, reading, k > 0);
                for (LevelReading &reading : stations[k].fore) take(i, reading, k + 1 < stations.size());
                for (LevelReading &reading : stations[k].side) take(i, reading, false);
            }
        }
    }

    void add_station(const LevelStation &station)
    {
        const double back = mean(station.back);
        if (!station.fore.empty() && station.fore[0].point == station.back[0].point) {
            leave_out(station, "a station with the same point back and fore");
            return;
        }
        if (!station.fore.empty()) {
            check_differences(station);
            add_row(station, station.fore[0], mean(station.fore), mean_distance(station.fore), back);
        }
        for (const LevelReading &reading : station.side) {
            if (reading.point == station.back[0].point)
                account.leave_out(reading.where, "an intermediate sight to the point back");
            else
                add_row(station, reading, reading.value, reading.distance, back);
        }
    }

    void check_differences(const LevelStation &station)
    {
        const auto difference = [&](size_t k) { return station.back[k].value - station.fore[k].value; };
        for (size_t k = 1; k < station.back.size(); k++) {
            const double apart = difference(k) - difference(0);
            if (std::fabs(apart) > reading_limit)
                account.note(station.back[k].where, "two height differences of the station at " +
                                                        quote(station.back[0].point) + " are " +
                                                        number_text(rounded(apart) * 1000.0) + " mm apart");
        }
    }

    void add_row(const LevelStation &station, const LevelReading &to, double fore, const MaybeNumber &distance,
                 double back)
    {
        const MaybeNumber length = mean_distance(station.back);
        DraftRow row;
        row.from = station.back[0].point;
        row.to = to.point;
        row.value[0] = rounded(back - fore);
        row.where = station.back[0].where;
        if (length && distance && *length + *distance > 1e-3) row.length = rounded(*length + *distance);
        draft.of(DraftKind::height_difference).push_back(std::move(row));
    }

    double stated(const std::string &key) const
    {
        const auto given = options.sigma.find(key);
        return given == options.sigma.end() ? usual_sigmas.at(key) : given->second;
    }

    void add_sigmas()
    {
        std::vector<DraftRow> &rows = draft.of(DraftKind::height_difference);
        const double km = stated("height_difference_km"), station = stated("height_differences");
        bool lengths = false, none = false;
        for (DraftRow &row : rows) {
            (row.length ? lengths : none) = true;
            if (!row.length) row.sigma[0] = station;
        }
        if (lengths) draft.sigma_per_root_km = km;
        if (lengths) note_sigma("height_difference_km", km, " mm for the root of a kilometre");
        if (none) note_sigma("height_differences", station, " mm for a station without distances");
    }

    void note_sigma(const char *key, double value, const char *words)
    {
        account.note(Source(), std::string("standard deviation: ") + key + " " + number_text(value) + words +
                                   (options.sigma.count(key) ? "" : "; state your own with --sigma KEY=VALUE"));
    }

    LevelBook &book;
    const ImportOptions &options;
    RecordAccount &account;
    Draft &draft;
    Faults &faults;
};

} // namespace

bool draft_level_book(LevelBook book, const ImportOptions &options, RecordAccount &account, Draft &draft,
                      Faults &faults)
{
    return LevelDraft(book, options, account, draft, faults).make() && faults.empty();
}

} // namespace vornhost
