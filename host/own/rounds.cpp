#include "host/own/rounds.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "host/input/angle.h"
#include "host/input/names.h"
#include "host/own/round_cuts.h"
#include "host/own/round_doubts.h"
#include "host/own/stands.h"

namespace vornhost {

namespace {

const double turn = 8.0 * std::atan(1.0);
// Readings by sets; those of none are cut where a target comes again.
std::vector<Readings> cut(const Readings &all)
{
    struct Open {
        size_t round = 0;
        std::unordered_set<std::string_view> met;
    };
    std::vector<Readings> rounds;
    std::map<int, Open> open; // round of a set, under -1 the last of none
    for (const Reading &r : all) {
        Open &o = open[r.set];
        const bool first = o.met.empty(), again = !o.met.insert(r.target).second;
        if (first || (again && r.set < 0)) {
            o.round = rounds.size();
            o.met = {r.target};
            rounds.emplace_back();
        }
        rounds[o.round].push_back(r);
    }
    return open.size() == 1 && open.count(-1) > 0 ? cut_again(rounds) : rounds;
}

// The first reading of each target under one zero.
using Zero = std::unordered_map<std::string, Reading>;

// How a round compares with the readings under one zero; one reading in three may be wrong. Where they have one target
// alone in common, an orientation of its own costs the round nothing but that reading.
struct Comparison {
    int common = 0;
    double offset = 0;     // on which most differences agree
    bool same = false;     // they are those of one zero
    bool constant = false; // they are those of another one
};

struct Difference {
    double angle, limit;
};

int agreeing(const std::vector<Difference> &all, double offset)
{
    return (int)std::count_if(all.begin(), all.end(), [&](const Difference &d) {
        return std::fabs(std::remainder(d.angle - offset, turn)) <= d.limit;
    });
}

Comparison compare(const Readings &round, const Zero &zero)
{
    constexpr size_t most_offsets = 10; // that are tried
    std::vector<Difference> all;
    for (const Reading &r : round) {
        const auto found = zero.find(r.target);
        if (found == zero.end()) continue;
        const Reading &s = found->second;
        all.push_back({std::remainder(r.angle - s.angle, turn), reading_sigmas * (r.sigma + s.sigma)});
    }
    Comparison c;
    c.common = (int)all.size();
    const auto most = [&](int n) { return n > 0 && 3 * n >= 2 * c.common; };
    c.same = most(agreeing(all, 0.0));
    int best = 0;
    for (size_t i = 0; i < all.size() && i < most_offsets; i++) {
        const int n = agreeing(all, all[i].angle);
        if (n > best) c.offset = all[i].angle;
        best = std::max(best, n);
    }
    const bool alone = c.common == 1 && !c.same && round.size() > 1;
    c.constant = (best >= 2 && most(best)) || alone;
    return c;
}

class Stand {
public:
    Stand(const Model &model, size_t index, const Readings &all)
        : network(model), stand(index), setup(describe_stand(model, (int)index)), readings(all)
    {
    }

    // Whether the rounds themselves must tell which of them share a zero.
    bool silent() const
    {
        const bool free = setup.ir[2] == CODE_FREE || setup.ir[2] == CODE_NO_DATUM;
        const bool upright = network.p.dim == 2 || setup.levelled;
        return free && upright && !setup.orientation_given && !setup.zero_given;
    }

    bool zero_each_set() const { return setup.zero_each_set; }

    void number_sets(Rounds &rounds) const
    {
        std::vector<int> &sets = rounds.sets[stand];
        for (const Reading &r : readings) {
            const auto at = std::find(sets.begin(), sets.end(), r.set);
            rounds.orientation[(size_t)r.record] = (int)(at - sets.begin());
            if (at == sets.end()) sets.push_back(r.set);
        }
        rounds.count[stand] = std::max(1, (int)sets.size());
    }

    void divide(Rounds &rounds)
    {
        std::vector<Readings> rounds_read = cut(readings);
        std::vector<Divided> all;
        all.reserve(rounds_read.size());
        for (Readings &round : rounds_read) all.push_back({std::move(round), -1});
        for (Divided &round : all)
            if (zeros.empty() || has_common(round.readings)) number(round, rounds);
        for (Divided &round : all)
            if (round.zero < 0) number(round, rounds);
        if (std::all_of(readings.begin(), readings.end(), [](const Reading &r) { return r.set < 0; }))
            doubt(all, rounds);
        rounds.count[stand] = std::max(1, (int)zeros.size());
    }

private:
    bool has_common(const Readings &round) const
    {
        return std::any_of(zeros.begin(), zeros.end(), [&](const Zero &z) { return compare(round, z).common > 0; });
    }

    static void doubt(const std::vector<Divided> &all, Rounds &rounds)
    {
        const std::vector<DoubtfulZero> found = doubtful_readings(all);
        rounds.doubtful.insert(rounds.doubtful.end(), found.begin(), found.end());
    }

    void number(Divided &round, Rounds &rounds)
    {
        const size_t zero = zero_of(round.readings, rounds);
        round.zero = (int)zero;
        if (zero == zeros.size()) zeros.emplace_back();
        for (const Reading &r : round.readings) {
            zeros[zero].emplace(r.target, r);
            rounds.orientation[(size_t)r.record] = (int)zero;
        }
    }

    // The zero that a round was read under; a new one only where two targets or more say so.
    size_t zero_of(const Readings &round, Rounds &rounds)
    {
        bool apart = true, any = false;
        double offset = 0;
        for (size_t z = 0; z < zeros.size(); z++) {
            const Comparison c = compare(round, zeros[z]);
            if (c.common > 0 && c.same) return z;
            if (c.constant && !any) offset = c.offset;
            any |= c.constant;
            apart &= c.constant || c.common < 2;
        }
        apart &= any || zeros.empty();
        if (zeros.empty()) return 0;
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
                               shown_name(network, record_name(network, setup.station)) + " reads its targets again " +
                               angle + " apart: this round has an orientation of its own");
    }

    const Model &network;
    const size_t stand;
    const SetupRecord setup;
    const Readings &readings;
    std::vector<Zero> zeros;
};

} // namespace

Rounds find_rounds(const Model &network)
{
    Rounds rounds;
    const size_t stands = (size_t)stand_count(network);
    rounds.orientation.assign(network.directions.size(), 0);
    rounds.count.assign(stands, 1);
    rounds.sets.resize(stands);
    std::unordered_map<std::string, int> index;
    for (size_t i = 0; i < network.stations.size(); i++) index.emplace(network.stations.records[i].name, (int)i);
    std::vector<Readings> readings(stands);
    project units = network.p;
    for (size_t i = 0; i < network.directions.size(); i++) {
        const measure_input &m = network.directions.records[i];
        const auto at = index.find(m.from);
        if (m.typ <= 0 || at == index.end()) continue;
        const int stand = stand_of(network, at->second, note_at(network.directions.notes.setup, i));
        readings[(size_t)stand].push_back(
            {(int)i, note_at(network.directions.notes.set, i), m.to, units.rawtoh(1, m.val), units.rawtoh(2, m.sig)});
    }
    for (size_t s = 0; s < stands; s++) {
        if (readings[s].empty()) continue;
        Stand stand(network, s, readings[s]);
        if (stand.zero_each_set())
            stand.number_sets(rounds);
        else if (stand.silent())
            stand.divide(rounds);
    }
    return rounds;
}

} // namespace vornhost
