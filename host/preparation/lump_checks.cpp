#include "host/preparation/lump_checks.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <set>
#include <unordered_map>

#include "host/input/names.h"
#include "host/preparation/lump_points.h"
#include "vorn/result.h"

namespace vornhost {

namespace {

constexpr int least_points = 3, least_sightings = 3, least_epochs = 2;
constexpr double farthest = 1000.0; // metres from the origin to the middle of a lump
constexpr int least_for_world = 4;  // sightings that make the epoch of the fixed stations the reference
constexpr int without_scale = 2;    // kind of a lump whose scale is 1

std::string lump_name(int id) { return "lump " + std::to_string(id); }
std::string epoch_name(int epoch) { return "epoch " + std::to_string(epoch); }

std::string name_of(const LumpPoint &point) { return "point " + quote(point.name) + " of " + lump_name(point.lump); }

const char few[] = " has fewer than ";

// ---- faults ----

// What a table of observations is called in a fault, and whether they can begin at a target.
struct Kind {
    const List<measure_input> &list;
    const char *name;
    bool from_target;
};

class Checks {
public:
    Checks(const Model &network, Faults &all) : model(network), faults(all), lumps(network) {}

    void run()
    {
        check_settings();
        check_directions();
        check_scales();
        if (model.p.lumpmethod == 1) check_what_moves();
        if (model.p.lumpmethod == 9) check_copies();
    }

private:
    void check_settings()
    {
        if (model.p.dim != 3)
            faults.add(lumps.all()[0].where, "lumps need three dimensions",
                       "write dimension = 3 in [run], or method = 0 in [lumps]");
        if (model.p.iredux != 0 && model.p.lumpmethod == 1)
            faults.add(lumps.all()[0].where, "distances of lumps cannot be reduced",
                       "write distances = \"none\" in [reductions], or method = 9 in [lumps]");
    }

    // A direction without epoch would take its point out of the lump.
    void check_directions()
    {
        for (size_t i = 0; i < model.directions.size(); i++) {
            const measure_input &m = model.directions.records[i];
            if (m.typ <= 0 || m.time != 0) continue;
            const LumpPoint *const to = lumps.find(m.to), *const end = to ? to : lumps.find(m.from);
            if (end)
                faults.add(model.directions.where[i], "direction without epoch at " + name_of(*end), "write its epoch");
        }
    }

    // A scale is held against the reference epoch of the definition, and only while that is the one of the run.
    void check_scales()
    {
        for (size_t i = 0; i < model.lumpdefs.size(); i++) {
            const lump_definition &d = model.lumpdefs.records[i];
            const std::vector<int> &codes = model.lump_tables[i].code;
            if (d.kind == without_scale || std::find(codes.begin(), codes.end(), (int)CODE_FIXED) == codes.end())
                continue;
            if (!has_points(d.id)) continue;
            if (d.iref <= 0)
                faults.add(model.lumpdefs.where[i], lump_name(d.id) + " has a fixed scale and no reference epoch",
                           "write in column reference the epoch to which its scales refer");
            else if (!can_be_reference(d))
                faults.add(model.lumpdefs.where[i],
                           lump_name(d.id) + " has a fixed scale and " + std::to_string(least_points) +
                               " points are not sighted at its reference epoch " + std::to_string(d.iref),
                           "take an epoch at which directions show three of its points, or write code free");
        }
    }

    bool has_points(int lump) const
    {
        return std::any_of(lumps.all().begin(), lumps.all().end(),
                           [lump](const LumpPoint &point) { return point.lump == lump; });
    }

    bool can_be_reference(const lump_definition &d) const
    {
        return least_points <= std::count_if(lumps.all().begin(), lumps.all().end(), [&d](const LumpPoint &point) {
                   return point.lump == d.id && point.sights.count(d.iref) > 0;
               });
    }

    // ---- method 1 ----

    void check_what_moves()
    {
        for (size_t i = 0; i < model.heightdiffs.size(); i++)
            if (model.heightdiffs.records[i].typ > 0 && model.heightdiffs.records[i].time != 0)
                faults.add(model.heightdiffs.where[i], "height difference with an epoch in a network with lumps",
                           "leave it out, or write epoch 0 when none of its points moves");
        for (size_t i = 0; i < model.azimuths.size(); i++) {
            const measure_input &m = model.azimuths.records[i];
            const LumpPoint *const to = lumps.find(m.to), *const end = to ? to : lumps.find(m.from);
            if (end && m.typ > 0 && m.time != 0 && lumps.in_use(m.from, m.to))
                faults.add(model.azimuths.where[i],
                           "azimuth with an epoch at " + name_of(*end) + ", whose movement it does not follow",
                           "leave it out, or write epoch 0 when it was observed at the reference epoch");
        }
    }

    // ---- method 9: each epoch of a target is a point of its own ----

    void check_copies()
    {
        for (const LumpPoint &point : lumps.all()) check_point(point);
        for (const target_input &t : model.targets.records) check_weights(t);
        for (const Kind &kind :
             {Kind{model.distances, "distance", true}, Kind{model.heightdiffs, "height difference", true},
              Kind{model.verticals, "vertical angle", false}, Kind{model.azimuths, "azimuth", true}})
            for (size_t i = 0; i < kind.list.size(); i++) check_ends(kind, i);
        for (size_t i = 0; i < model.baselines.size(); i++) check_baseline(i);
        check_first_places();
    }

    void check_point(const LumpPoint &point)
    {
        if (point.station)
            faults.add(point.where, "a station cannot belong to a lump with method 9",
                       "write it among the targets, or lump 0, or method = 1 in [lumps]");
        else if (point.sights.empty())
            faults.add(point.where, name_of(point) + " is sighted by no direction: its lump could not be compared",
                       "write lump 0, or give it a direction at each of its epochs");
    }

    // Weights hold a point at the first epoch that shows it, at the coordinates of the file. Later epochs would be
    // held where they start.
    void check_weights(const target_input &t)
    {
        const LumpPoint *const point = lumps.find(t.name);
        if (!point || std::find(t.ix, t.ix + 3, (int)CODE_WEIGHTED) == t.ix + 3 || stands_at_first_epoch(*point))
            return;
        faults.add(point->where,
                   name_of(*point) + " is weighted, which method 9 can do only where the first epoch alone shows it",
                   "write code free, or method = 1 in [lumps]");
    }

    bool stands_at_first_epoch(const LumpPoint &point) const
    {
        const std::vector<int> &epochs = lumps.epochs();
        return point.sights.size() == 1 && !epochs.empty() && point.sights.begin()->first == epochs.front();
    }

    void check_ends(const Kind &kind, size_t i)
    {
        const measure_input &m = kind.list.records[i];
        if (m.typ <= 0 || !lumps.in_use(m.from, m.to)) return;
        const LumpPoint *const from = lumps.find(m.from), *const to = lumps.find(m.to);
        if (from && kind.from_target && !from->station)
            faults.add(kind.list.where[i],
                       std::string(kind.name) + " begins at " + name_of(*from) +
                           ", whose epochs method 9 tells apart only as second points",
                       to ? "leave it out" : "write it from the other point to this one");
        else if (to && !to->sights.empty() && to->sights.count(m.time) == 0)
            faults.add(kind.list.where[i],
                       std::string(kind.name) +
                           (m.time == 0 ? " without epoch at " : " at " + epoch_name(m.time) + " to ") + name_of(*to) +
                           (m.time == 0 ? "" : ", at which no direction sights it"),
                       m.time == 0 ? "write its epoch" : "give the point a direction at this epoch, or leave it out");
    }

    void check_baseline(size_t i)
    {
        const gps_input &g = model.baselines.records[i];
        const LumpPoint *const to = lumps.find(g.to), *const end = to ? to : lumps.find(g.from);
        if (end && g.status > 0 && model.p.igps != 0 && lumps.in_use(g.from, g.to))
            faults.add(model.baselines.where[i],
                       "baseline at " + name_of(*end) + ", of which method 9 makes a point an epoch",
                       "leave it out: baselines have no epoch");
    }

    // The coordinates of a point at its later epochs come from directions of two stations, or from
    // one with a distance while directions and vertical angles stand side by side.
    void check_first_places()
    {
        const auto count = [this](const List<measure_input> &list) {
            return std::count_if(list.records.begin(), list.records.end(),
                                 [this](const measure_input &m) { return lumps.takes_part(m); });
        };
        const auto directions = count(model.directions), verticals = count(model.verticals);
        if (directions == verticals) return;
        for (const LumpPoint &point : lumps.all())
            if (const int epoch = lone_epoch(point); epoch != 0)
                return faults.add(point.where,
                                  "one station alone sights " + name_of(point) + " at " + epoch_name(epoch) +
                                      ", and has no first coordinates for it while " + std::to_string(directions) +
                                      " directions stand beside " + std::to_string(verticals) + " vertical angles",
                                  "give every direction its vertical angle, in the same order, or the point a second "
                                  "direction");
    }

    // A later epoch at which one station alone sights a point; 0: none.
    int lone_epoch(const LumpPoint &point) const
    {
        bool first = true;
        for (const int epoch : lumps.epochs()) {
            const auto sights = point.sights.find(epoch);
            if (sights == point.sights.end()) continue;
            if (!first && sights->second.stations.size() == 1) return epoch;
            first = false;
        }
        return 0;
    }

    const Model &model;
    Faults &faults;
    const LumpPoints lumps;
};

} // namespace

bool has_lumps(const Model &model) { return !LumpPoints(model).all().empty(); }

void check_lumps(const Model &model, Faults &faults)
{
    if (model.p.lumpmethod != 0 && has_lumps(model)) Checks(model, faults).run();
}

void order_sights(Model &model)
{
    if (model.p.lumpmethod != 9) return;
    const LumpPoints lumps(model);
    const List<measure_input> all = std::move(model.directions);
    model.directions = List<measure_input>();
    for (const bool taking_part : {true, false})
        for (size_t i = 0; i < all.size(); i++)
            if (lumps.takes_part(all.records[i]) == taking_part) model.directions.add_from(all, i);
}

namespace {

// ---- lumps that can be compared ----

struct Lump {
    int points = 0, fixed = 0;
    double centre[3] = {0, 0, 0}; // sum of the coordinates, metres
    Source where;                 // its first point
    std::map<int, int> sightings; // directions to its points, by epoch
    std::map<int, int> shown;     // points that they show, by epoch
    std::map<int, int> others;    // all other observations that touch them, by epoch
};

bool is_fixed(const int codes[3])
{
    return std::all_of(codes, codes + 3, [](int code) { return code == CODE_FIXED || code < 0; });
}

// Without a fraction, of any size.
std::string whole_kilometres(double metres)
{
    char text[320];
    std::snprintf(text, sizeof text, "%.0f", std::floor(metres / 1000.0));
    return text;
}

class Settling {
public:
    explicit Settling(Model &network) : model(network), lumps(network) {}

    // For method 1.
    std::vector<LumpNote> settle()
    {
        gather();
        note_strays();
        for (const auto &[id, lump] : all) settle(id, lump);
        return std::move(notes);
    }

    // For method 9, which takes lumps as they are.
    std::vector<LumpNote> look()
    {
        gather();
        note_strays();
        for (const auto &[id, lump] : all) {
            note_distance(lump_name(id), lump);
            note_few(id, lump);
            for (size_t i = 0; i < model.lumpdefs.size(); i++) note_reference(i, id, lump);
        }
        return std::move(notes);
    }

private:
    // ---- what each lump shows ----

    template <class Record> void gather_points(const List<Record> &list)
    {
        for (const Record &r : list.records) {
            if (r.status <= 0 || r.ilump == 0) continue;
            Lump &lump = all[r.ilump];
            lump.fixed += is_fixed(r.ix);
            for (int k = 0; k < 3; k++) lump.centre[k] += r.x[k] * metres_per_unit(model.p);
        }
    }

    void gather_other(const char *from, const char *to, int epoch)
    {
        if (!lumps.in_use(from, to)) return;
        const LumpPoint *const a = lumps.find(from), *const b = lumps.find(to);
        if (a) all[a->lump].others[epoch]++;
        if (b && (!a || a->lump != b->lump)) all[b->lump].others[epoch]++;
    }

    void gather_others()
    {
        for (const List<measure_input> *list :
             {&model.distances, &model.heightdiffs, &model.verticals, &model.azimuths})
            for (const measure_input &m : list->records)
                if (m.typ > 0) gather_other(m.from, m.to, m.time);
        for (const gps_input &g : model.baselines.records)
            if (g.status > 0 && model.p.igps != 0) gather_other(g.from, g.to, 0);
    }

    void gather()
    {
        for (const LumpPoint &point : lumps.all()) {
            Lump &lump = all[point.lump];
            if (lump.points++ == 0) lump.where = point.where;
            for (const auto &[epoch, sights] : point.sights) {
                lump.sightings[epoch] += sights.directions;
                lump.shown[epoch]++;
            }
        }
        gather_points(model.stations);
        gather_points(model.targets);
        std::unordered_map<std::string, bool> fixed;
        for (const station_input &s : model.stations.records) fixed[s.name] = is_fixed(s.ix) && is_fixed(s.ir);
        for (const measure_input &m : model.directions.records)
            if (lumps.takes_part(m) && fixed[m.from]) world = m.time;
        gather_others();
    }

    // ---- judgement, as the engine makes it ----

    static int sightings(const Lump &lump, int epoch)
    {
        const auto found = lump.sightings.find(epoch);
        return found == lump.sightings.end() ? 0 : found->second;
    }

    static bool usable(const Lump &lump, int epoch) { return epoch > 0 && sightings(lump, epoch) >= least_sightings; }

    // Why a lump cannot be compared; empty when it can.
    std::string reason(const Lump &lump) const
    {
        if (lump.points < least_points) return few + std::to_string(least_points) + " points";
        const bool by_world = world > 0 && sightings(lump, world) >= least_for_world;
        int epochs = 0;
        for (const auto &[epoch, n] : lump.sightings) {
            if (n < least_sightings && !by_world)
                return few + std::to_string(least_sightings) + " directions at " + epoch_name(epoch);
            epochs += usable(lump, epoch);
        }
        if (epochs < least_epochs) return " has directions at fewer than " + std::to_string(least_epochs) + " epochs";
        return {};
    }

    template <class Record> static void release(List<Record> &list, int id)
    {
        for (Record &point : list.records)
            if (point.ilump == id) point.ilump = 0;
    }

    void settle(int id, const Lump &lump)
    {
        const std::string name = lump_name(id), why = reason(lump);
        if (!why.empty()) {
            note(lump.where, name + why + ": its points are taken as unmoved");
            release(model.stations, id);
            release(model.targets, id);
            return;
        }
        if (lump.fixed == lump.points)
            note(lump.where, name + " has fixed points only, and the iteration follows coordinates: weight them, with "
                                    "standard deviations of 0.1 mm, to have its movements exactly");
        note_distance(name, lump);
        settle_reference(name, id, lump);
        note_others(name, lump);
    }

    void settle_reference(const std::string &name, int id, const Lump &lump)
    {
        for (size_t i = 0; i < model.lumpdefs.size(); i++) {
            lump_definition &d = model.lumpdefs.records[i];
            if (d.id != id || d.iref == 0 || usable(lump, d.iref)) continue;
            note(model.lumpdefs.where[i], name + few + std::to_string(least_sightings) +
                                              " directions at its reference epoch " + std::to_string(d.iref) +
                                              ": another one is taken");
            d.iref = 0;
        }
    }

    // A lump turns about the origin: far from it every uncertainty of the rotation is one of the
    // translation.
    void note_distance(const std::string &name, const Lump &lump)
    {
        double square = 0;
        for (int k = 0; k < 3; k++) {
            const double x = lump.centre[k] / lump.points - (model.p.iearth != 0 ? model.p.trans[k] : 0.0);
            square += x * x;
        }
        if (square < farthest * farthest) return;
        note(lump.where, name + " turns about the origin, " + whole_kilometres(std::sqrt(square)) +
                             " km away: its translation is not its own movement; take an origin near it");
    }

    void note_strays()
    {
        for (size_t i = 0; i < model.lumpdefs.size(); i++) {
            const int id = model.lumpdefs.records[i].id;
            if (all.count(id) == 0) note(model.lumpdefs.where[i], "no point belongs to " + lump_name(id));
        }
    }

    // ---- method 9 ----

    // Points that come first at an epoch which is not compared are handed back as they are there.
    void note_few(int id, const Lump &lump)
    {
        for (const auto &[epoch, n] : lump.shown) {
            if (n >= least_points) continue;
            std::string text = lump_name(id) + few + std::to_string(least_points) + " points at " + epoch_name(epoch) +
                               ", which is not compared";
            const std::string names = first_seen(id, epoch);
            if (!names.empty()) text += ": the coordinates of " + names + " are those of that epoch";
            note(lump.where, text);
        }
    }

    // Points of a lump that this epoch is the first to show.
    std::string first_seen(int id, int epoch) const
    {
        std::string names;
        for (const LumpPoint &point : lumps.all()) {
            if (point.lump != id) continue;
            const auto first = std::find_if(lumps.epochs().begin(), lumps.epochs().end(),
                                            [&](int e) { return point.sights.count(e) > 0; });
            if (first == lumps.epochs().end() || *first != epoch) continue;
            names += (names.empty() ? "" : ", ") + point.name;
        }
        return names;
    }

    void note_reference(size_t i, int id, const Lump &lump)
    {
        const lump_definition &d = model.lumpdefs.records[i];
        if (d.id != id || d.iref == 0) return;
        const auto shown = lump.shown.find(d.iref);
        if (shown != lump.shown.end() && shown->second >= least_points) return;
        note(model.lumpdefs.where[i], lump_name(id) + few + std::to_string(least_points) +
                                          " points at its reference epoch " + std::to_string(d.iref) +
                                          ": another one is taken");
    }

    // Observations that the engine does not move.
    void note_others(const std::string &name, const Lump &lump)
    {
        std::map<int, int> still;
        for (const auto &[epoch, n] : lump.others)
            if (!usable(lump, epoch)) still[epoch] += n;
        for (const auto &[epoch, n] : lump.sightings)
            if (!usable(lump, epoch)) still[epoch] += n;
        for (const auto &[epoch, n] : still) {
            const std::string when = epoch == 0 ? " without epoch"
                                                : " of epoch " + std::to_string(epoch) + ", which has fewer than " +
                                                      std::to_string(least_sightings) + " directions,";
            std::string text = name + ": " + std::to_string(n);
            text += (n == 1 ? " observation" : " observations") + when;
            text += n == 1 ? " counts as of the reference epoch" : " count as of the reference epoch";
            note(lump.where, text);
        }
    }

    void note(Source where, const std::string &text) { notes.push_back({where, text}); }

    Model &model;
    const LumpPoints lumps;
    std::map<int, Lump> all;
    int world = 0; // epoch of the last direction from a fixed station
    std::vector<LumpNote> notes;
};

} // namespace

std::vector<LumpNote> settle_lumps(Model &model)
{
    if (model.p.lumpmethod == 1) return Settling(model).settle();
    return model.p.lumpmethod == 9 ? Settling(model).look() : std::vector<LumpNote>();
}

std::vector<std::string> epochs_not_compared(const Model &model)
{
    std::map<int, std::map<int, int>> shown; // points, by lump and epoch
    std::map<int, std::set<int>> compared;
    const LumpPoints lumps(model);
    for (const LumpPoint &point : lumps.all())
        for (const auto &[epoch, sights] : point.sights) shown[point.lump][epoch]++;
    const result &r = *model.p.runresults;
    for (int i = 0; i < r.nrow; i++) compared[r.ilump[i]].insert({r.iepoch[i], r.iref[i]});
    std::vector<std::string> lines;
    for (const auto &[id, epochs] : shown) {
        std::string missing;
        int comparable = 0;
        for (const auto &[epoch, n] : epochs) {
            if (n < least_points) continue;
            comparable++;
            if (compared[id].count(epoch) == 0) missing += (missing.empty() ? "" : ", ") + std::to_string(epoch);
        }
        if (comparable > 1 && !missing.empty())
            lines.push_back(lump_name(id) + " could not be compared at epoch " + missing);
    }
    return lines;
}

} // namespace vornhost
