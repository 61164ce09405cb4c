#include "host/run/accounts.h"

#include <stdio.h>

#include <unordered_map>

#include "host/input/faults.h"
#include "host/run/image_account.h"
#include "host/input/names.h"
#include "host/input/observation_rows.h"

namespace vornhost {

namespace {

enum Kind {
    DISTANCES,
    HEIGHT_DIFFERENCES,
    DIRECTIONS,
    VERTICAL_ANGLES,
    AZIMUTHS,
    BASELINES,
    IMAGES,
    HORIZONTAL_DISTANCES,
    BEARINGS,
    ANGLES,
    SCALE_BARS,
    COORDINATES,
    COORDINATE_DIFFERENCES,
    KINDS
};

const char *const kind_names[KINDS] = {"distances",
                                       "height differences",
                                       "directions",
                                       "vertical angles",
                                       "azimuths",
                                       "baselines",
                                       "images",
                                       "horizontal distances",
                                       "bearings",
                                       "angles",
                                       "scale bars",
                                       "observed coordinates",
                                       "coordinate differences"};

constexpr int measure_kinds = BASELINES;

const List<measure_input> &measures(const Model &model, int kind)
{
    const List<measure_input> *const lists[measure_kinds] = {&model.distances, &model.heightdiffs, &model.directions,
                                                             &model.verticals, &model.azimuths};
    return *lists[kind];
}

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
class ReasonFinder {
public:
    explicit ReasonFinder(const Model &network);
    std::string of(int kind, const measure_input &m) const;
    std::string of(int kind, const gps_input &g) const;
    std::string of(int kind, const image_input &i) const;
    std::string of(int kind, const SightRow &row) const;
    std::string of(int kind, const VectorRow &row) const;
    std::string of_name(const std::string &name) const; // empty: nothing is wrong with the point

private:
    std::string of_point(const char *field) const;
    std::string wrong(const std::string &field, const std::string &name) const;

    struct Spot {
        bool station, used;
    };
    const Model &model;
    std::unordered_map<std::string, Spot> points;
};

ReasonFinder::ReasonFinder(const Model &network) : model(network)
{
    for (const station_input &s : model.stations.records) points.insert({s.name, {true, s.status > 0}});
    for (const target_input &t : model.targets.records) points.insert({t.name, {false, t.status > 0}});
}

std::string ReasonFinder::of_name(const std::string &name) const { return wrong(held_name(model.keys, name), name); }

std::string ReasonFinder::of_point(const char *field) const { return wrong(field, full_name(model, field)); }

std::string ReasonFinder::wrong(const std::string &field, const std::string &name) const
{
    const auto found = points.find(field);
    if (found == points.end()) return "point " + printable(name) + " is unknown";
    return found->second.used ? "" : "point " + printable(name) + " is off";
}

std::string ReasonFinder::of(int kind, const measure_input &m) const
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

std::string ReasonFinder::of(int, const gps_input &g) const
{
    if (model.p.igps == 0) return "baselines are ignored: datum_rule";
    for (const char *name : {g.from, g.to}) {
        std::string wrong = of_point(name);
        if (!wrong.empty()) return wrong;
    }
    return "the engine has left it out";
}

std::string ReasonFinder::of(int, const image_input &i) const
{
    std::string wrong = of_point(i.station);
    if (!wrong.empty()) return wrong;
    if (!points.at(i.station).station) return "images need a station that took them";
    for (const camera_input &c : model.cameras.records)
        if (std::string(c.name) == i.camera && c.status <= 0)
            return "camera " + shown_name(model, i.camera) + " is off";
    FILE *file = fopen(i.file, "r");
    if (!file) return "its file " + printable(i.file) + " cannot be read";
    fclose(file);
    return "its file has fewer than 4 known points";
}

std::string ReasonFinder::of(int kind, const SightRow &row) const
{
    if (model.p.dim == 1) return std::string("the dimension is 1: ") + kind_names[kind] + " take no part";
    for (const int point : {row.from, row.to, row.third}) {
        std::string wrong = point < 0 ? std::string() : of_point(record_name(model, point));
        if (!wrong.empty()) return wrong;
    }
    return "its ends stand in one place or straight above one another";
}

std::string ReasonFinder::of(int, const VectorRow &row) const
{
    std::string wrong = of_point(record_name(model, row.from));
    return wrong.empty() && row.to >= 0 ? of_point(record_name(model, row.to)) : wrong;
}

template <class Record>
Account account_of(const Model &model, int kind, const List<Record> &list, const std::vector<bool> &before,
                   const ReasonFinder &finder, const Reasons &known)
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
        const RowEnds ends = ends_of(model, record);
        const auto told = known.find({where.file, where.line});
        const std::string reason = told != known.end() ? told->second
                                   : !before[i]        ? "use = no in the file"
                                                       : finder.of(kind, record);
        account.left_out.push_back({file, where.line, shown_name(model, ends.from), shown_name(model, ends.to), reason,
                                    shown_name(model, ends.at)});
    }
    return account;
}

} // namespace

AccountKeeper::AccountKeeper(const Model &before)
{
    for (int kind = 0; kind < measure_kinds; kind++) selected.push_back(selection(measures(before, kind)));
    selected.push_back(selection(before.baselines));
    selected.push_back(selection(before.images));
    for (const List<SightRow> *list :
         {&before.horizontal_distances, &before.bearings, &before.angles, &before.scale_bars})
        selected.push_back(selection(*list));
    selected.push_back(selection(before.coordinates));
    selected.push_back(selection(before.coordinate_differences));
}

std::vector<Account> AccountKeeper::close(const Model &after, Reasons known) const
{
    for (const LeftOutRow &row : after.left_out.records)
        known[{row.at.file, row.at.line}] = "table left_out" + (row.reason.empty() ? "" : ": " + row.reason);
    const ReasonFinder finder(after);
    std::vector<Account> accounts;
    const auto add = [&](int kind, const auto &list) {
        if (list.size() > 0 || list.rows > 0)
            accounts.push_back(account_of(after, kind, list, selected[(size_t)kind], finder, known));
    };
    for (int kind = 0; kind < measure_kinds; kind++) add(kind, measures(after, kind));
    add(BASELINES, after.baselines);
    add(IMAGES, after.images);
    if (after.images.size() > 0)
        accounts.push_back(
            account_of_image_points(after, [&](const std::string &name) { return finder.of_name(name); }));
    add(HORIZONTAL_DISTANCES, after.horizontal_distances);
    add(BEARINGS, after.bearings);
    add(ANGLES, after.angles);
    add(SCALE_BARS, after.scale_bars);
    add(COORDINATES, after.coordinates);
    add(COORDINATE_DIFFERENCES, after.coordinate_differences);
    return accounts;
}

std::vector<std::string> account_lines(const std::vector<Account> &accounts)
{
    std::vector<std::string> lines;
    for (const Account &a : accounts) {
        lines.push_back(a.kind + ": read " + std::to_string(a.read) + " = used " + std::to_string(a.used) +
                        " + left out " + std::to_string(a.left_out.size()));
        for (const LeftOut &out : a.left_out)
            lines.push_back("  " + out.file + ":" + std::to_string(out.line) + ": " +
                            (out.at.empty() ? "" : "at " + out.at + " from ") + out.from +
                            (out.to.empty() ? "" : " to " + out.to) + ": " + out.reason);
    }
    return lines;
}

} // namespace vornhost
