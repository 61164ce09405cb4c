#include "host/run/accounts.h"

#include <stdio.h>

#include <unordered_map>

#include "host/input/faults.h"
#include "host/run/image_account.h"
#include "host/input/names.h"

namespace vornhost {

namespace {

enum Kind { DISTANCES, HEIGHT_DIFFERENCES, DIRECTIONS, VERTICAL_ANGLES, AZIMUTHS, BASELINES, IMAGES, KINDS };

const char *const kind_names[KINDS] = {"distances", "height differences", "directions", "vertical angles",
                                       "azimuths",  "baselines",          "images"};

constexpr int measure_kinds = BASELINES;

const List<measure_input> &measures(const Model &model, int kind)
{
    const List<measure_input> *const lists[measure_kinds] = {&model.distances, &model.heightdiffs, &model.directions,
                                                             &model.verticals, &model.azimuths};
    return *lists[kind];
}

bool is_selected(const measure_input &m) { return m.typ > 0; }
bool is_selected(const gps_input &g) { return g.status > 0; }
bool is_selected(const image_input &i) { return i.status > 0; }

template <class Record> std::vector<bool> selection(const List<Record> &list)
{
    std::vector<bool> selected;
    for (const Record &record : list.records) selected.push_back(is_selected(record));
    return selected;
}

bool takes_part(int dimension, int kind)
{
    switch (dimension) {
    case 1: return kind == HEIGHT_DIFFERENCES;
    case 2: return kind != HEIGHT_DIFFERENCES && kind != VERTICAL_ANGLES;
    default: return true;
    }
}

// Finds out why an observation that the file selects was left out.
class Reasons {
public:
    explicit Reasons(const Model &network);
    std::string of(int kind, const measure_input &m) const;
    std::string of(int kind, const gps_input &g) const;
    std::string of(int kind, const image_input &i) const;
    std::string of_point(const char *name) const; // empty: nothing is wrong with the point

private:
    struct Spot {
        bool station, used;
    };
    const Model &model;
    std::unordered_map<std::string, Spot> points;
};

Reasons::Reasons(const Model &network) : model(network)
{
    for (const station_input &s : model.stations.records) points.insert({s.name, {true, s.status > 0}});
    for (const target_input &t : model.targets.records) points.insert({t.name, {false, t.status > 0}});
}

std::string Reasons::of_point(const char *name) const
{
    const auto found = points.find(name);
    if (found == points.end()) return "point " + plain_name(name) + " is unknown";
    return found->second.used ? "" : "point " + plain_name(name) + " is off";
}

std::string Reasons::of(int kind, const measure_input &m) const
{
    if (!takes_part(model.p.dim, kind))
        return "the dimension is " + std::to_string(model.p.dim) + ": " + kind_names[kind] + " take no part";
    for (const char *name : {m.from, m.to}) {
        std::string wrong = of_point(name);
        if (!wrong.empty()) return wrong;
    }
    if ((kind == DIRECTIONS || kind == VERTICAL_ANGLES) && !points.at(m.from).station)
        return std::string(kind_names[kind]) + " need a station as their first point";
    return model.solver == Solver::Sparse ? "its ends stand in one place or straight above one another"
                                          : "the engine has left it out";
}

std::string Reasons::of(int, const gps_input &g) const
{
    if (model.p.igps == 0) return "baselines are ignored: datum_rule";
    for (const char *name : {g.from, g.to}) {
        std::string wrong = of_point(name);
        if (!wrong.empty()) return wrong;
    }
    return "the engine has left it out";
}

std::string Reasons::of(int, const image_input &i) const
{
    std::string wrong = of_point(i.station);
    if (!wrong.empty()) return wrong;
    if (!points.at(i.station).station) return "images need a station that took them";
    for (const camera_input &c : model.cameras.records)
        if (std::string(c.name) == i.camera && c.status <= 0) return "camera " + plain_name(i.camera) + " is off";
    FILE *file = fopen(i.file, "r");
    if (!file) return "its file " + printable(i.file) + " cannot be read";
    fclose(file);
    return "its file has fewer than 4 known points";
}

std::string from_of(const measure_input &m) { return m.from; }
std::string from_of(const gps_input &g) { return g.from; }
std::string from_of(const image_input &i) { return i.station; }
std::string to_of(const measure_input &m) { return m.to; }
std::string to_of(const gps_input &g) { return g.to; }
std::string to_of(const image_input &i) { return i.camera; }

template <class Record>
Account account_of(const Model &model, int kind, const List<Record> &list, const std::vector<bool> &before,
                   const Reasons &reasons)
{
    Account account;
    account.kind = kind_names[kind];
    account.read = (int)list.size();
    const bool ignored = kind == BASELINES && model.p.igps == 0;
    for (size_t i = 0; i < list.size(); i++) {
        const Record &record = list.records[i];
        if (is_selected(record) && !ignored) {
            account.used++;
            continue;
        }
        const Source where = list.where[i];
        const std::string file = (size_t)where.file < model.files.size() ? model.files[(size_t)where.file] : model.path;
        account.left_out.push_back({file, where.line, plain_name(from_of(record)), plain_name(to_of(record)),
                                    before[i] ? reasons.of(kind, record) : "use = no in the file"});
    }
    return account;
}

} // namespace

AccountKeeper::AccountKeeper(const Model &before)
{
    for (int kind = 0; kind < measure_kinds; kind++) selected.push_back(selection(measures(before, kind)));
    selected.push_back(selection(before.baselines));
    selected.push_back(selection(before.images));
}

std::vector<Account> AccountKeeper::close(const Model &after) const
{
    const Reasons reasons(after);
    std::vector<Account> accounts;
    const auto add = [&](int kind, const auto &list) {
        if (list.size() > 0) accounts.push_back(account_of(after, kind, list, selected[(size_t)kind], reasons));
    };
    for (int kind = 0; kind < measure_kinds; kind++) add(kind, measures(after, kind));
    add(BASELINES, after.baselines);
    add(IMAGES, after.images);
    if (after.images.size() > 0)
        accounts.push_back(account_of_image_points(after, [&](const char *name) { return reasons.of_point(name); }));
    return accounts;
}

std::vector<std::string> account_lines(const std::vector<Account> &accounts)
{
    std::vector<std::string> lines;
    for (const Account &a : accounts) {
        lines.push_back(a.kind + ": read " + std::to_string(a.read) + " = used " + std::to_string(a.used) +
                        " + left out " + std::to_string(a.left_out.size()));
        for (const LeftOut &out : a.left_out)
            lines.push_back("  " + out.file + ":" + std::to_string(out.line) + ": " + out.from + " to " + out.to +
                            ": " + out.reason);
    }
    return lines;
}

} // namespace vornhost
