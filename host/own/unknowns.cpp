// Points, set-ups, constants, cameras and motions of the network as unknowns.

#include <algorithm>
#include <cmath>
#include <limits>

#include "host/own/builder.h"
#include "host/own/stands.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

const double pi = 4.0 * std::atan(1.0);
constexpr int least_sightings = 3; // directions to a lump at an epoch that give it a motion

va::Code code_of(int code)
{
    if (code == CODE_FIXED || code < 0) return va::Code::fixed;
    return code == CODE_NO_DATUM || code == CODE_WEIGHTED ? va::Code::free : va::Code::datum;
}

// Parameters have no part in the datum.
va::Code parameter_code(int code) { return code_of(code) == va::Code::datum ? va::Code::free : code_of(code); }

bool has_axis(int dimension, int axis) { return dimension == 3 || (dimension == 1 ? axis == 2 : axis < 2); }

template <class Record> void add_point(Builder &b, const Record &record, const PointPlace &place)
{
    if (record.status <= 0) return;
    double x[3];
    va::Code codes[3];
    for (int k = 0; k < 3; k++) {
        x[k] = record.x[k] * b.metres - b.numbers.origin[k];
        const bool exists = has_axis(b.network.p.dim, k) && record.ix[k] >= 0;
        codes[k] = exists ? code_of(record.ix[k]) : va::Code::absent;
        if (!exists && has_axis(b.network.p.dim, k)) b.numbers.absent.insert(3 * b.numbers.model.n_points + k);
    }
    b.points.emplace(record.name, b.numbers.model.add_point(x, codes));
    b.numbers.points.push_back(place);
}

std::vector<Sights> sights_of(const Builder &b)
{
    const Model &m = b.network;
    std::vector<Sights> sights((size_t)stand_count(m));
    const auto mark = [&](int point, int setup, bool circle) {
        const int stand = point < 0 ? -1 : b.stand(point, setup);
        if (stand < 0) return;
        sights[(size_t)stand].any = true;
        sights[(size_t)stand].circle |= circle;
    };
    if (m.p.dim == 1) return sights;
    for (size_t i = 0; i < m.directions.size(); i++) {
        const measure_input &d = m.directions.records[i];
        if (d.typ > 0) mark(b.point(d.from), note_at(m.directions.notes.setup, i), true);
    }
    for (size_t i = 0; i < m.verticals.size() && m.p.dim == 3; i++) {
        const measure_input &v = m.verticals.records[i];
        if (v.typ > 0) mark(b.point(v.from), note_at(m.verticals.notes.setup, i), false);
    }
    for (size_t i = 0; i < m.angles.size() && m.p.dim == 3; i++) { // of upright instruments they need none
        const SightRow &a = m.angles.records[i];
        const int point = a.use ? b.point(record_name(m, a.from)) : -1;
        const int stand = point < 0 ? -1 : b.stand(point, note_at(m.angles.notes.setup, i));
        if (stand >= 0 && !is_upright(describe_stand(m, stand))) sights[(size_t)stand].any = true;
    }
    for (const image_input &i : m.images.records)
        if (i.status > 0) mark(b.point(i.station), -1, true);
    return sights;
}

// Rotation angles that exist; a circle that nobody reads has no orientation.
void setup_codes(const Builder &b, const SetupRecord &s, bool circle, va::Code codes[3])
{
    for (int k = 0; k < 3; k++) codes[k] = parameter_code(s.ir[k]);
    if (b.network.p.dim != 3) codes[0] = codes[1] = va::Code::absent;
    if (!circle && s.ir[2] != CODE_WEIGHTED) codes[2] = va::Code::absent;
}

// Directions to the points of each lump, by epoch.
std::map<int, std::map<int, int>> lump_sightings(const Builder &b)
{
    std::map<int, std::map<int, int>> count;
    for (const measure_input &m : b.network.directions.records) {
        const int p = m.typ > 0 ? b.point(m.to) : -1;
        if (p >= 0 && b.lump_of(p) != 0 && m.time > 0) count[b.lump_of(p)][m.time]++;
    }
    return count;
}

const lump_definition *definition_of(const Builder &b, int lump)
{
    for (const lump_definition &d : b.network.lumpdefs.records)
        if (d.id == lump) return &d;
    return nullptr;
}

// As defined, or the epoch sighted most, the earlier of two.
int reference_of(const lump_definition *definition, const std::map<int, int> &sightings)
{
    if (definition && definition->iref > 0) return definition->iref;
    int reference = 0, most = 0;
    for (const auto &[epoch, n] : sightings)
        if (n > most) {
            most = n;
            reference = epoch;
        }
    return reference;
}

// Parameters of a motion: those of the definition's row, or none.
void add_motion(Builder &b, const lump_definition *d, const MotionPlace &place)
{
    double values[7] = {0, 0, 0, 0, 0, 0, 1};
    va::Code codes[7];
    std::fill(codes, codes + 7, va::Code::free);
    for (int i = 0; d && i < d->n; i++) {
        if (d->epoch[i] != place.epoch) continue;
        const double row[7] = {d->tx[i], d->ty[i], d->tz[i], d->rx[i], d->ry[i], d->rz[i], d->scale[i]};
        std::copy(row, row + 7, values);
        if (d->code[i] == CODE_FIXED) codes[6] = va::Code::fixed;
    }
    if (d && d->kind == 1) {
        std::fill(values + 3, values + 6, 0.0);
        std::fill(codes + 3, codes + 6, va::Code::fixed);
    }
    if (d && d->kind == 2) {
        values[6] = 1.0;
        codes[6] = va::Code::fixed;
    }
    b.motions[{place.lump, place.epoch}] = b.numbers.model.add_motion(values, codes);
    b.numbers.motions.push_back(place);
}

// Smallest and largest coordinate of the points that take part, metres.
struct Range {
    double least = std::numeric_limits<double>::infinity(), most = -least;

    template <class Record> void take(const Builder &b, const List<Record> &list, int axis)
    {
        for (const Record &r : list.records) {
            if (r.status <= 0 || (r.status == STATUS_COMPUTE && !is_held(r.ix[axis]))) continue;
            least = std::min(least, r.x[axis] * b.metres);
            most = std::max(most, r.x[axis] * b.metres);
        }
    }
};

// Whether nothing depends on where the origin of the coordinates is.
bool is_anywhere(const Builder &b)
{
    const project &p = b.network.p;
    return p.iearth == 0 && p.latitude == 0.0 && p.lumpmethod != 1 && !b.numbers.model.frame.mixed;
}

// In a national grid the differences of coordinates of neighbours lose digits: at 5,000 km a coordinate has a
// resolution of 1 nm, and a sight of 1 m one of 1 nrad. An axis whose coordinates lie close together beside their size
// counts from whole metres among them; they change by this without rounding.
void set_local_origin(Builder &b)
{
    constexpr double close = 0.1;
    for (int k = 0; k < 3; k++) {
        Range x;
        x.take(b, b.network.stations, k);
        x.take(b, b.network.targets, k);
        const double middle = 0.5 * (x.least + x.most);
        if (has_axis(b.network.p.dim, k) && x.most - x.least < close * std::fabs(middle))
            b.numbers.origin[k] = std::round(middle);
    }
}

} // namespace

// Heights above a sphere stand in mixed coordinates, and in the plane where slopes are reduced with them.
void set_frame(Builder &b)
{
    const project &p = b.network.p;
    va::Frame &f = b.numbers.model.frame;
    f.space = p.dim == 1   ? va::Space::heights
              : p.dim == 2 ? va::Space::plane
              : p.iearth   ? va::Space::sphere
                           : va::Space::space;
    f.mixed = p.dim == 3 ? p.iearth == 2 : p.dim == 2 && (p.iredux == 2 || (p.iearth == 2 && p.iredux == 1));
    f.radius = p.radius;
    f.height = p.horigin;
    f.latitude = p.latitude * pi / 180.0;
    f.azimuth_rotation = p.azrot;
    for (int k = 0; k < 3 && p.iearth != 0; k++) b.numbers.origin[k] = p.trans[k];
    if (is_anywhere(b)) set_local_origin(b);
}

void add_points(Builder &b)
{
    const Model &m = b.network;
    for (size_t i = 0; i < m.stations.size(); i++) add_point(b, m.stations.records[i], {true, (int)i});
    for (size_t i = 0; i < m.targets.size(); i++) add_point(b, m.targets.records[i], {false, (int)i});
}

void add_setups(Builder &b)
{
    const Model &m = b.network;
    std::vector<Sights> sights = sights_of(b);
    b.rounds = find_rounds(m);
    share_stands(m, b.ranks, &sights, &b.rounds);
    b.setups.assign(sights.size(), -1);
    for (size_t i = 0; i < sights.size(); i++) {
        if (!sights[i].any) continue;
        const SetupRecord s = describe_stand(m, (int)i);
        const int point = b.point(record_name(m, s.station));
        va::Code codes[3];
        setup_codes(b, s, sights[i].circle, codes);
        const bool levelled = s.levelled && (m.p.dim == 3 || m.p.iearth != 0);
        b.setups[i] = (int)b.numbers.setups.size();
        for (int k = 0; k < b.rounds.count[i]; k++) {
            b.numbers.model.add_setup(point, levelled, s.r, codes);
            const int set = b.rounds.sets[i].empty() ? -1 : b.rounds.sets[i][(size_t)k];
            b.numbers.setups.push_back({s.station, named_of(m, (int)i), set, s.orientation_given});
        }
    }
    b.numbers.notes = b.rounds.notes;
}

void add_constants(Builder &b)
{
    const Model &m = b.network;
    b.constants.assign((size_t)stand_count(m), -1);
    for (size_t g = 0; g < m.groups.size(); g++) {
        const group_input &group = m.groups.records[g];
        va::Code codes[3];
        for (int k = 0; k < 3; k++) codes[k] = parameter_code(group.ic[k]);
        const int constants = b.numbers.model.add_constants(group.c, codes);
        b.numbers.constant_groups.push_back((int)g);
        for (int member : m.group_members[g]) b.constants[(size_t)member] = constants;
    }
    // A set-up without a group of its own has that of its station.
    for (size_t k = 0; k < m.setups.size(); k++) {
        const SetupRecord &s = m.setups.records[k];
        b.constants[m.stations.size() + k] = s.group >= 0 ? s.group : b.constants[(size_t)s.station];
    }
}

void add_cameras(Builder &b)
{
    const Model &m = b.network;
    for (size_t i = 0; i < m.cameras.size(); i++) {
        const camera_input &c = m.cameras.records[i];
        if (c.status <= 0) continue;
        va::Code codes[10];
        for (int k = 0; k < 10; k++) codes[k] = parameter_code(c.ip[k]);
        b.numbers.model.add_camera(c.p, codes, c.pu, c.pv, c.nu / 2.0, c.nv / 2.0);
        b.numbers.camera_records.push_back((int)i);
    }
}

void add_motions(Builder &b)
{
    if (b.network.p.lumpmethod != 1) return;
    for (const auto &[lump, sightings] : lump_sightings(b)) {
        const lump_definition *definition = definition_of(b, lump);
        const int reference = reference_of(definition, sightings);
        for (const auto &[epoch, n] : sightings)
            if (epoch != reference && n >= least_sightings) add_motion(b, definition, {lump, epoch, reference});
    }
}

} // namespace vornhost
