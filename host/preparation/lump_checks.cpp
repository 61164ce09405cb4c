#include "host/preparation/lump_checks.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <unordered_map>

#include "host/input/names.h"

namespace vornhost {

namespace {

constexpr int least_points = 3, least_sightings = 3, least_epochs = 2;
constexpr double farthest = 1000.0; // metres from the origin to the middle of a lump
constexpr int least_for_world = 4;  // sightings that make the epoch of the fixed stations the reference

// Lump of each used point that belongs to one.
std::unordered_map<std::string, int> lumps_of_points(const Model &model)
{
    std::unordered_map<std::string, int> lumps;
    const auto add = [&lumps](const auto &list) {
        for (const auto &point : list.records)
            if (point.status > 0 && point.ilump != 0) lumps.emplace(point.name, point.ilump);
    };
    add(model.stations);
    add(model.targets);
    return lumps;
}

// ---- faults ----

class Checks {
public:
    Checks(const Model &network, Faults &all) : model(network), faults(all), lumps(lumps_of_points(network)) {}

    void run()
    {
        check_settings();
        check_directions();
        if (model.p.lumpmethod == 1) check_height_differences();
        if (model.p.lumpmethod == 9) check_stations();
    }

private:
    Source first_point() const
    {
        for (size_t i = 0; i < model.stations.size(); i++)
            if (model.stations.records[i].ilump != 0) return model.stations.where[i];
        for (size_t i = 0; i < model.targets.size(); i++)
            if (model.targets.records[i].ilump != 0) return model.targets.where[i];
        return {0, 0, 0};
    }

    void check_settings()
    {
        if (model.p.dim != 3)
            faults.add(first_point(), "lumps need three dimensions",
                       "write dimension = 3 in [run], or method = 0 in [lumps]");
        if (model.p.iredux != 0 && model.p.lumpmethod == 1)
            faults.add(first_point(), "distances of lumps cannot be reduced",
                       "write distances = \"none\" in [reductions], or method = 9 in [lumps]");
    }

    // A direction without epoch would take its point out of the lump.
    void check_directions()
    {
        for (size_t i = 0; i < model.directions.size(); i++) {
            const measure_input &m = model.directions.records[i];
            if (m.typ <= 0 || m.time != 0) continue;
            const auto end = lumps.count(m.to) ? lumps.find(m.to) : lumps.find(m.from);
            if (end != lumps.end())
                faults.add(model.directions.where[i],
                           "direction without epoch at point " + quote(plain_name(end->first.c_str())) + " of lump " +
                               std::to_string(end->second),
                           "write its epoch");
        }
    }

    void check_height_differences()
    {
        for (size_t i = 0; i < model.heightdiffs.size(); i++)
            if (model.heightdiffs.records[i].typ > 0 && model.heightdiffs.records[i].time != 0)
                faults.add(model.heightdiffs.where[i], "height difference with an epoch in a network with lumps",
                           "leave it out, or write epoch 0 when none of its points moves");
    }

    // Where stations are split by epoch the engine makes too few copies of the targets.
    void check_stations()
    {
        std::unordered_map<std::string, bool> occupied;
        for (const measure_input &m : model.directions.records)
            if (m.typ > 0) occupied[m.from] = true;
        for (size_t i = 0; i < model.stations.size(); i++) {
            const station_input &s = model.stations.records[i];
            if (s.status > 0 && s.ilump != 0 && occupied.count(s.name))
                faults.add(model.stations.where[i], "a station cannot belong to a lump with method 9",
                           "write lump 0, or method = 1 in [lumps]");
        }
    }

    const Model &model;
    Faults &faults;
    std::unordered_map<std::string, int> lumps;
};

} // namespace

bool has_lumps(const Model &model) { return !lumps_of_points(model).empty(); }

void check_lumps(const Model &model, Faults &faults)
{
    if (model.p.lumpmethod != 0 && has_lumps(model)) Checks(model, faults).run();
}

namespace {

// ---- lumps that can be compared ----

struct Lump {
    int points = 0, fixed = 0;
    double centre[3] = {0, 0, 0}; // sum of the coordinates, metres
    Source where;                 // its first point
    std::map<int, int> sightings; // directions to its points, by epoch
    std::map<int, int> others;    // distances and vertical angles that touch them, by epoch
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
    explicit Settling(Model &network) : model(network), lumps(lumps_of_points(network)) {}

    std::vector<LumpNote> run()
    {
        gather();
        for (size_t i = 0; i < model.lumpdefs.size(); i++) note_stray(i);
        for (const auto &[id, lump] : all) settle(id, lump);
        return std::move(notes);
    }

private:
    // ---- what each lump shows ----

    template <class Record> void gather_points(const List<Record> &list)
    {
        for (size_t i = 0; i < list.size(); i++) {
            const auto found = lumps.find(list.records[i].name);
            if (found == lumps.end() || list.records[i].status <= 0) continue;
            Lump &lump = all[found->second];
            if (lump.points++ == 0) lump.where = list.where[i];
            lump.fixed += is_fixed(list.records[i].ix);
            for (int k = 0; k < 3; k++) lump.centre[k] += list.records[i].x[k] * metres_per_unit(model.p);
        }
    }

    void gather_others(const List<measure_input> &list)
    {
        for (const measure_input &m : list.records) {
            if (m.typ <= 0) continue;
            const auto from = lumps.find(m.from), to = lumps.find(m.to);
            if (from != lumps.end()) all[from->second].others[m.time]++;
            if (to != lumps.end() && (from == lumps.end() || from->second != to->second))
                all[to->second].others[m.time]++;
        }
    }

    void gather()
    {
        gather_points(model.stations);
        gather_points(model.targets);
        std::unordered_map<std::string, bool> fixed;
        for (const station_input &s : model.stations.records) fixed[s.name] = is_fixed(s.ix) && is_fixed(s.ir);
        for (const measure_input &m : model.directions.records) {
            const auto to = lumps.find(m.to);
            if (m.typ <= 0) continue;
            if (to != lumps.end()) all[to->second].sightings[m.time]++;
            if (fixed[m.from]) world = m.time;
        }
        gather_others(model.distances);
        gather_others(model.verticals);
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
        if (lump.points < least_points) return "has fewer than " + std::to_string(least_points) + " points";
        const bool by_world = world > 0 && sightings(lump, world) >= least_for_world;
        int epochs = 0;
        for (const auto &[epoch, n] : lump.sightings) {
            if (n < least_sightings && !by_world)
                return "has fewer than " + std::to_string(least_sightings) + " directions at epoch " +
                       std::to_string(epoch);
            epochs += usable(lump, epoch);
        }
        if (epochs < least_epochs) return "has directions at fewer than " + std::to_string(least_epochs) + " epochs";
        return {};
    }

    template <class Record> static void release(List<Record> &list, int id)
    {
        for (Record &point : list.records)
            if (point.ilump == id) point.ilump = 0;
    }

    void settle(int id, const Lump &lump)
    {
        const std::string name = "lump " + std::to_string(id), why = reason(lump);
        if (!why.empty()) {
            note(lump.where, name + " " + why + ": its points are taken as unmoved");
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
            note(model.lumpdefs.where[i], name + " has fewer than " + std::to_string(least_sightings) +
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

    void note_stray(size_t i)
    {
        const int id = model.lumpdefs.records[i].id;
        if (all.count(id) == 0) note(model.lumpdefs.where[i], "no point belongs to lump " + std::to_string(id));
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
    std::unordered_map<std::string, int> lumps;
    std::map<int, Lump> all;
    int world = 0; // epoch of the last direction from a fixed station
    std::vector<LumpNote> notes;
};

} // namespace

std::vector<LumpNote> settle_lumps(Model &model)
{
    if (model.p.lumpmethod != 1) return {};
    return Settling(model).run();
}

} // namespace vornhost
