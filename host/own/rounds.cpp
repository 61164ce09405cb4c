#include "host/own/rounds.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <unordered_map>

#include "host/input/angle.h"
#include "host/input/names.h"

namespace vornhost {

namespace {

const double turn = 8.0 * std::atan(1.0);
constexpr double most_sigmas = 20.0; // by which readings of one target differ under one zero

struct Reading {
    int record;
    std::string target;
    double angle, sigma;
};

using Readings = std::vector<Reading>;

// Readings cut where a target comes again.
std::vector<Readings> cut(const Readings &all)
{
    std::vector<Readings> rounds(1);
    for (const Reading &r : all) {
        const Readings &last = rounds.back();
        if (std::any_of(last.begin(), last.end(), [&](const Reading &s) { return s.target == r.target; }))
            rounds.emplace_back();
        rounds.back().push_back(r);
    }
    return rounds;
}

// How a round compares with the readings under one zero.
struct Comparison {
    int common = 0;
    double offset = 0; // mean difference
    bool same = true;  // all differences are that of one zero
    bool constant = true;
};

Comparison compare(const Readings &round, const Readings &zero)
{
    Comparison c;
    double first = 0;
    for (const Reading &r : round) {
        const auto s = std::find_if(zero.begin(), zero.end(), [&](const Reading &x) { return x.target == r.target; });
        if (s == zero.end()) continue;
        const double difference = std::remainder(r.angle - s->angle, turn), limit = most_sigmas * (r.sigma + s->sigma);
        if (c.common++ == 0) first = difference;
        c.same &= std::fabs(difference) <= limit;
        c.constant &= std::fabs(std::remainder(difference - first, turn)) <= limit;
        c.offset = first;
    }
    return c;
}

class Station {
public:
    Station(const Model &model, size_t index, const Readings &all) : network(model), station(index), readings(all) {}

    void divide(Rounds &rounds)
    {
        for (const Readings &round : cut(readings)) {
            const size_t zero = zero_of(round, rounds);
            if (zero == zeros.size()) zeros.emplace_back();
            for (const Reading &r : round) {
                zeros[zero].push_back(r);
                rounds.orientation[(size_t)r.record] = (int)zero;
            }
        }
        rounds.count[station] = std::max(1, (int)zeros.size());
    }

private:
    // The zero that a round was read under; a new one only where two targets or more say so.
    size_t zero_of(const Readings &round, Rounds &rounds)
    {
        bool apart = !zeros.empty();
        double offset = 0;
        for (size_t z = 0; z < zeros.size(); z++) {
            const Comparison c = compare(round, zeros[z]);
            if (c.common > 0 && c.same) return z;
            if (z == 0) offset = c.offset;
            apart &= c.common >= 2 && c.constant;
        }
        if (apart) tell(round, offset, rounds);
        return apart ? zeros.size() : 0;
    }

    void tell(const Readings &round, double offset, Rounds &rounds) const
    {
        static const char *const units[] = {"gon", "degrees", "degrees (ddd.mmss)", "rad", "mgon", "arc seconds",
                                            "mil", "degrees"};
        const int unit = file_units(network).angle;
        char angle[60];
        std::snprintf(angle, sizeof angle, "%.4f %s", from_radians(unit, std::fabs(offset)), units[unit]);
        rounds.notes.push_back(place(network, network.directions.where[(size_t)round.front().record]) + ": station " +
                               shown_name(network, network.stations.records[station].name) +
                               " reads its targets again " + angle +
                               " apart: this round has an orientation of its own");
    }

    const Model &network;
    const size_t station;
    const Readings &readings;
    std::vector<Readings> zeros;
};

} // namespace

Rounds find_rounds(const Model &network)
{
    Rounds rounds;
    rounds.orientation.assign(network.directions.size(), 0);
    rounds.count.assign(network.stations.size(), 1);
    std::unordered_map<std::string, size_t> index;
    for (size_t i = 0; i < network.stations.size(); i++) index.emplace(network.stations.records[i].name, i);
    std::vector<Readings> readings(network.stations.size());
    project units = network.p;
    for (size_t i = 0; i < network.directions.size(); i++) {
        const measure_input &m = network.directions.records[i];
        const auto at = index.find(m.from);
        if (m.typ > 0 && at != index.end())
            readings[at->second].push_back({(int)i, m.to, units.rawtoh(1, m.val), units.rawtoh(2, m.sig)});
    }
    for (size_t s = 0; s < readings.size(); s++) {
        const station_input &station = network.stations.records[s];
        const bool free = station.ir[2] == CODE_FREE || station.ir[2] == CODE_NO_DATUM;
        const bool upright = network.p.dim == 2 || station.ilevel == 1;
        if (free && upright && !network.station_notes[s].orientation_given)
            Station(network, s, readings[s]).divide(rounds);
    }
    return rounds;
}

} // namespace vornhost
