#include "host/own/numbers.h"

#include <cmath>

#include "adjust/linear.h"
#include "host/own/builder.h"
#include "host/own/earth.h"
#include "host/own/stands.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

// Sums of the unit vectors of what the directions of each set-up give its orientation.
struct Turns {
    double sine = 0, cosine = 0;
    bool any = false;
};

std::vector<Turns> turns_of(const va::Model &model)
{
    std::vector<Turns> turns(model.setups.size());
    double value[3];
    for (const va::Observation &o : model.observations) {
        if (!o.use || o.kind != va::Kind::direction) continue;
        if (!va::compute(model, o, value)) continue;
        Turns &t = turns[(size_t)o.setup];
        t.sine += std::sin(o.value[0] - value[0]);
        t.cosine += std::cos(o.value[0] - value[0]);
        t.any = true;
    }
    return turns;
}

} // namespace

int Builder::point(const char *name) const
{
    const auto found = points.find(name);
    return found == points.end() ? -1 : found->second;
}

int Builder::first_point(const char *name)
{
    if (last.first != name) last = {name, point(name)};
    return last.second;
}

const station_input *Builder::station_of(int p) const
{
    const PointPlace &place = numbers.points[(size_t)p];
    return place.station ? &network.stations.records[(size_t)place.record] : nullptr;
}

int Builder::lump_of(int p) const
{
    const PointPlace &place = numbers.points[(size_t)p];
    return place.station ? network.stations.records[(size_t)place.record].ilump
                         : network.targets.records[(size_t)place.record].ilump;
}

int Builder::motion_at(int p, int epoch) const
{
    if (motions.empty()) return -1;
    const auto found = motions.find({lump_of(p), epoch});
    return found == motions.end() ? -1 : found->second;
}

int Builder::stand(int p, int setup) const
{
    const PointPlace &place = numbers.points[(size_t)p];
    return place.station ? stand_of(network, place.record, setup) : -1;
}

void Builder::correlate(const RowNotes &notes, size_t row, int offset, int component)
{
    const int covariance = note_at(notes.covariance, row);
    if (covariance < 0) return;
    const int observation = (int)numbers.items.size() - 1;
    members.push_back({covariance, note_at(notes.place, row) + offset, observation, component});
}

void Builder::observe(const va::Observation &observation, const ItemPlace &place)
{
    numbers.model.observe(observation);
    numbers.items.push_back(place);
}

const char *point_name(const Model &network, const PointPlace &point)
{
    return point.station ? network.stations.records[(size_t)point.record].name
                         : network.targets.records[(size_t)point.record].name;
}

Source point_source(const Model &network, const PointPlace &point)
{
    return point.station ? network.stations.where[(size_t)point.record] : network.targets.where[(size_t)point.record];
}

// Directions in doubt as observations and set-ups of the numbers.
static void add_doubtful(Builder &b)
{
    std::unordered_multimap<int, DoubtfulZero> other_of;
    for (const DoubtfulZero &d : b.rounds.doubtful) other_of.emplace(d.row, d);
    for (size_t i = 0; i < b.numbers.items.size() && !other_of.empty(); i++) {
        const va::Observation &o = b.numbers.model.observations[i];
        if (o.kind != va::Kind::direction || b.numbers.items[i].item != Item::direction) continue;
        const int record = b.numbers.items[i].record;
        const auto found = other_of.equal_range(record);
        for (auto d = found.first; d != found.second; ++d)
            b.numbers.doubtful.push_back(
                {(int)i, o.setup + d->second.other - b.rounds.orientation[(size_t)record], d->second.certain});
    }
}

Numbers make_numbers(Model &network, const Reference *reference, va::Ranks *ranks)
{
    Builder b(network);
    b.reference = reference;
    b.ranks = ranks;
    set_frame(b);
    add_points(b);
    add_setups(b);
    add_constants(b);
    add_cameras(b);
    add_motions(b);
    add_transformations(b);
    add_deflections(b);
    add_measures(b);
    add_doubtful(b);
    add_baselines(b);
    add_field_kinds(b);
    add_observed_points(b);
    add_images(b);
    add_weighted(b);
    add_imports(b);
    add_covariances(b);
    add_centring(b);
    reduce_roughly(b);
    orient_setups(b.numbers);
    return std::move(b.numbers);
}

void orient_setups(Numbers &numbers)
{
    va::Model &model = numbers.model;
    const auto given = [&](size_t s) { return numbers.setups[s].orientation_given; };
    for (size_t s = 0; s < model.setups.size(); s++)
        if (!given(s)) model.value[(size_t)model.setups[s].first + 2] = 0.0;
    const std::vector<Turns> turns = turns_of(model);
    for (size_t s = 0; s < model.setups.size(); s++) {
        const size_t unknown = (size_t)model.setups[s].first + 2;
        if (given(s) || !turns[s].any) continue;
        model.value[unknown] = model.start[unknown] = std::atan2(turns[s].sine, turns[s].cosine);
    }
}

} // namespace vornhost
