// What a run needs and nobody wants to type: which stations take part as targets, first
// orientations, and rotations that no observation determines.
//
// The engine gives every station an orientation to determine, so a station without angles
// would leave the normal matrix singular. Names are compared as the records hold them.

#include "host/preparation/prepare.h"

#include <math.h>

#include <algorithm>
#include <unordered_map>

#include "host/preparation/heights.h"
#include "host/preparation/lump_checks.h"
#include "host/input/names.h"
#include "host/preparation/parallel_verticals.h"

namespace vornhost {

namespace {

const double pi = 4.0 * atan(1.0);

// A used point of the file.
struct Spot {
    double x = 0, y = 0;
    bool known = false; // coordinates are given
};

// What starts at a station and takes part in the run.
struct Observed {
    bool directions = false, verticals = false, images = false, constants = false;
    double sine = 0, cosine = 0; // sums of the unit vectors of its orientations
    bool oriented = false;
};

class Preparation {
public:
    explicit Preparation(Model &network) : model(network), p(network.p) {}
    Prepared run(const std::function<void()> &first_values);

private:
    void find_points();
    void leave_out();
    void find_observations();
    void add_direction(const measure_input &m);
    bool used(const measure_input &m) const;
    Observed &at(const char *name) { return observed[name]; }

    bool becomes_target(size_t i);
    void hand_over_targets();
    void order_by_lump();
    void note_targets();
    void adjust_members(const std::vector<int> &new_index);

    void orient(size_t i);
    void hold_rotations(size_t i);
    bool is_free_network() const;
    int weighted() const;
    void note_cameras();
    void note(Source place, const std::string &text);

    Model &model;
    project &p;
    std::unordered_map<std::string, Spot> points;
    std::unordered_map<std::string, Observed> observed;
    Prepared prepared;
};

template <class Record> Spot spot_of(const Record &record)
{
    return {record.x[0], record.x[1], record.status != STATUS_COMPUTE};
}

void Preparation::find_points()
{
    for (const station_input &s : model.stations.records)
        if (s.status > 0) points.emplace(s.name, spot_of(s));
    for (const target_input &t : model.targets.records)
        if (t.status > 0) points.emplace(t.name, spot_of(t));
}

// Baselines to points that are off, and images of cameras that are off: the engine would
// stop at them.
void Preparation::leave_out()
{
    for (gps_input &g : model.baselines.records)
        if (g.status > 0 && !(points.count(g.from) && points.count(g.to))) g.status = -g.status;
    for (image_input &i : model.images.records)
        for (const camera_input &c : model.cameras.records)
            if (i.status > 0 && c.status <= 0 && std::string(c.name) == i.camera) i.status = -i.status;
}

// Selected, and between two points of the run.
bool Preparation::used(const measure_input &m) const { return m.typ > 0 && points.count(m.from) && points.count(m.to); }

void Preparation::find_observations()
{
    for (const measure_input &m : model.directions.records)
        if (p.dim != 1 && used(m)) add_direction(m);
    for (const measure_input &m : model.verticals.records)
        if (p.dim == 3 && used(m)) at(m.from).verticals = true;
    for (const image_input &i : model.images.records)
        if (i.status > 0) at(i.station).images = true;
    for (const measure_input &m : model.distances.records)
        if (m.typ == KIND_DISTANCE_CONSTANTS) at(m.from).constants = true;
}

// A direction is azimuth + Rx3: one value of the orientation of its station.
void Preparation::add_direction(const measure_input &m)
{
    Observed &station = at(m.from);
    station.directions = true;
    const Spot &from = points.at(m.from), &to = points.at(m.to);
    const double direction = p.rawtoh(1, m.val);
    if (!from.known || !to.known || direction >= 2.0 * pi) return;
    const double orientation = direction - atan2(to.y - from.y, to.x - from.x);
    station.sine += sin(orientation);
    station.cosine += cos(orientation);
    station.oriented = true;
}

bool Preparation::becomes_target(size_t i)
{
    if (p.dim == 1) return true;
    const station_input &s = model.stations.records[i];
    const StationNote &file = model.station_notes[i];
    const Observed &o = at(s.name);
    const bool rotated = file.orientation_given || file.rotation_coded || s.r[0] != 0.0 || s.r[1] != 0.0;
    return s.status > 0 && s.typ != 2 && !rotated && !o.directions && !o.verticals && !o.images && !o.constants;
}

target_input target_of(const station_input &s)
{
    target_input t = target_input();
    std::copy(std::begin(s.name), std::end(s.name), t.name);
    t.status = s.status;
    for (int i = 0; i < 3; i++) {
        t.x[i] = s.x[i];
        t.sx[i] = s.sx[i];
        t.ix[i] = s.ix[i];
    }
    t.ilump = s.ilump;
    t.iconn = s.iconn;
    return t;
}

void Preparation::note_targets()
{
    for (size_t i = 0; i < prepared.targets.size(); i++) {
        const Source where = prepared.targets[i].where;
        if (p.dim == 1) return note(where, "one dimension has no angles: stations are treated as targets");
        note(where, "station " + shown_name(model, model.targets.records[i].name) +
                        " has no directions or vertical angles: treated as a target");
    }
}

void Preparation::hand_over_targets()
{
    List<station_input> stations;
    std::vector<StationNote> notes;
    List<target_input> targets;
    std::vector<int> new_index(model.stations.size(), -1);
    for (size_t i = 0; i < model.stations.size(); i++) {
        const station_input &s = model.stations.records[i];
        const Source where = model.stations.where[i];
        if (becomes_target(i)) {
            targets.add(target_of(s), where);
            prepared.targets.push_back({true, true, where});
            continue;
        }
        new_index[i] = (int)stations.size();
        stations.add(s, where);
        notes.push_back(model.station_notes[i]);
        prepared.stations.push_back({true, false, where});
    }
    for (size_t i = 0; i < model.targets.size(); i++) targets.add(model.targets.records[i], model.targets.where[i]);
    adjust_members(new_index);
    model.stations = std::move(stations);
    model.station_notes = std::move(notes);
    model.targets = std::move(targets);
    note_targets();
    while (prepared.targets.size() < model.targets.size())
        prepared.targets.push_back({false, false, model.targets.where[prepared.targets.size()]});
}

// Lump by lump, in the order of their first targets, behind the targets in none: method 9 tells
// the points of lumps apart only in that order.
void Preparation::order_by_lump()
{
    if (p.lumpmethod != 9) return;
    const List<target_input> targets = std::move(model.targets);
    const std::vector<PointRole> roles = std::move(prepared.targets);
    std::vector<int> order(targets.size());
    std::unordered_map<int, int> first = {{0, -1}}; // of each lump
    for (size_t i = 0; i < order.size(); i++) {
        order[i] = (int)i;
        first.emplace(targets.records[i].ilump, (int)i);
    }
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
        return first[targets.records[(size_t)a].ilump] < first[targets.records[(size_t)b].ilump];
    });
    model.targets = List<target_input>();
    prepared.targets.clear();
    for (const int i : order) {
        model.targets.add(targets.records[(size_t)i], targets.where[(size_t)i]);
        prepared.targets.push_back(roles[(size_t)i]);
    }
}

void Preparation::adjust_members(const std::vector<int> &new_index)
{
    for (std::vector<int> &members : model.group_members) {
        for (int &member : members) member = new_index[(size_t)member];
        members.erase(std::remove(members.begin(), members.end(), -1), members.end());
    }
}

// Rx3 in (-pi, pi], the circular mean of what the station's directions give.
void Preparation::orient(size_t i)
{
    station_input &s = model.stations.records[i];
    if (model.station_notes[i].orientation_given || s.status <= 0) return;
    const Observed &o = at(s.name);
    if (o.oriented) {
        const double mean = atan2(o.sine, o.cosine);
        s.r[2] = mean > -pi ? mean : pi;
    } else if (o.directions) {
        note(model.stations.where[i],
             "station " + shown_name(model, s.name) +
                 " has no direction between points with coordinates: its orientation starts at 0");
    }
}

// True when no coordinate and no orientation of a used point is fixed.
bool Preparation::is_free_network() const
{
    const auto fixed = [this](const int *codes) {
        return codes[0] == CODE_FIXED || codes[1] == CODE_FIXED || (p.dim == 3 && codes[2] == CODE_FIXED);
    };
    for (const station_input &s : model.stations.records)
        if (s.status > 0 && (fixed(s.ix) || s.ir[2] == CODE_FIXED)) return false;
    for (const target_input &t : model.targets.records)
        if (t.status > 0 && fixed(t.ix)) return false;
    return true;
}

int Preparation::weighted() const
{
    int count = 0;
    for (const station_input &s : model.stations.records)
        for (int i = 0; i < 3; i++)
            if (s.status > 0) count += (s.ix[i] == CODE_WEIGHTED) + (s.ir[i] == CODE_WEIGHTED);
    for (const target_input &t : model.targets.records)
        for (int i = 0; i < 3; i++)
            if (t.status > 0) count += t.ix[i] == CODE_WEIGHTED;
    return count;
}

// Holds the rotations that nothing determines. A fixed rotation takes part in the datum, so
// a free network gets them weighted instead, as long as the weights do not become a datum. The
// simplex solver has no weights; it leaves alone what nothing determines.
void Preparation::hold_rotations(size_t i)
{
    station_input &s = model.stations.records[i];
    const Observed &o = at(s.name);
    if (s.status <= 0 || model.station_notes[i].rotation_coded || o.directions || o.images) return;
    const int first = o.verticals || p.dim != 3 ? 2 : 0;
    std::vector<int> open;
    for (int k = first; k < 3; k++)
        if (s.ir[k] == CODE_FREE || s.ir[k] == CODE_NO_DATUM || s.ir[k] == 0) open.push_back(k);
    if (open.empty()) return;
    const int datum = p.dim == 3 ? 7 : 4; // so many weights make a weighted network
    const bool by_weight = is_free_network() && weighted() + (int)open.size() < datum;
    if (by_weight && model.solver == Solver::Simplex) return;
    for (const int k : open) {
        s.ir[k] = by_weight ? CODE_WEIGHTED : CODE_FIXED;
        if (by_weight) s.sr[k] = 1.0;
    }
    note(model.stations.where[i],
         "station " + shown_name(model, s.name) + " has no directions: its orientation is held");
}

// The cofactors of image residuals count in the unit of the pixel size, the residuals in pixels.
void Preparation::note_cameras()
{
    if (model.mode == Mode::Solution || model.images.size() == 0) return;
    for (size_t i = 0; i < model.cameras.size(); i++) {
        const camera_input &c = model.cameras.records[i];
        if (c.status <= 0 || (c.pu == 1.0 && c.pv == 1.0)) continue;
        note(model.cameras.where[i], "camera " + shown_name(model, c.name) +
                                         " has a pixel size other than 1: standard deviations and marks of its image "
                                         "residuals mean nothing; write it in pixels, with pu and pv 1");
    }
}

void Preparation::note(Source place, const std::string &text)
{
    prepared.notes.push_back(model.files[(size_t)place.file] + ":" + std::to_string(place.line) + ": " + text);
}

Prepared Preparation::run(const std::function<void()> &first_values)
{
    find_points();
    leave_out();
    find_observations();
    hand_over_targets();
    order_by_lump();
    if (first_values) {
        first_values();
        points.clear();
        observed.clear();
        find_points();
        find_observations();
    }
    for (size_t i = 0; i < model.stations.size(); i++) orient(i);
    for (size_t i = 0; i < model.stations.size(); i++) hold_rotations(i);
    note_cameras();
    move_heights_to_distances(model);
    for (const Held &held : hold_heights(model)) note(held.where, held.text);
    for (const LumpNote &lump : settle_lumps(model)) note(lump.where, lump.text);
    const std::string verticals = make_verticals_parallel(model);
    if (!verticals.empty()) prepared.notes.push_back(verticals);
    model.attach();
    return std::move(prepared);
}

} // namespace

Prepared prepare(Model &model, const std::function<void()> &first_values)
{
    return Preparation(model).run(first_values);
}

} // namespace vornhost
