#include "host/own/round_doubts.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "adjust/linear.h"
#include "host/input/names.h"
#include "host/own/item_names.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

const double turn = 8.0 * std::atan(1.0);
constexpr size_t window = 4;         // rounds after one that it is compared with
constexpr double clearly = 5.0;      // how much better one zero must fit than the other
constexpr double contradicts = 1e3;  // standard deviations
constexpr double suspicious = 4.0;   // standard deviations, where zeros were found from the readings
constexpr size_t most_stations = 10; // named in one line

using Flags = std::vector<std::vector<char>>; // [rounds][readings]

struct Shared {
    size_t in_a, in_b;
    double offset, limit;
};

std::vector<Shared> shared_targets(const Readings &a, const Readings &b)
{
    std::unordered_map<std::string_view, size_t> of;
    for (size_t i = 0; i < a.size(); i++) of.emplace(a[i].target, i);
    std::vector<Shared> shared;
    for (size_t k = 0; k < b.size(); k++) {
        const auto found = of.find(b[k].target);
        if (found == of.end()) continue;
        const Reading &r = a[found->second];
        shared.push_back({found->second, k, b[k].angle - r.angle, reading_sigmas * (b[k].sigma + r.sigma)});
    }
    return shared;
}

// Marks those that differ alike: with one zero by nothing, with two by the angle on which most agree.
void confirm(const std::vector<Shared> &shared, bool one_zero, std::vector<char> &a, std::vector<char> &b)
{
    const auto agree = [&](double offset) {
        std::vector<const Shared *> those;
        for (const Shared &s : shared)
            if (std::fabs(std::remainder(s.offset - offset, turn)) <= s.limit) those.push_back(&s);
        return those;
    };
    std::vector<const Shared *> best = one_zero ? agree(0.0) : std::vector<const Shared *>();
    for (size_t i = 0; i < shared.size() && !one_zero; i++) {
        std::vector<const Shared *> those = agree(shared[i].offset);
        if (those.size() > std::max<size_t>(best.size(), 1)) best = std::move(those);
    }
    for (const Shared *s : best) a[s->in_a] = b[s->in_b] = 1;
}

Flags certain_readings(const std::vector<Divided> &rounds)
{
    Flags certain;
    certain.reserve(rounds.size());
    for (const Divided &round : rounds) certain.emplace_back(round.readings.size(), 0);
    for (size_t a = 0; a < rounds.size(); a++)
        for (size_t b = a + 1; b < std::min(rounds.size(), a + 1 + window); b++)
            confirm(shared_targets(rounds[a].readings, rounds[b].readings), rounds[a].zero == rounds[b].zero,
                    certain[a], certain[b]);
    return certain;
}

std::unordered_set<std::string_view> targets_of(const Readings &readings, const std::vector<char> &certain)
{
    std::unordered_set<std::string_view> targets;
    for (size_t i = 0; i < readings.size(); i++)
        if (certain[i]) targets.insert(readings[i].target);
    return targets;
}

} // namespace

// A target that is certain on the other side of a border cannot come from there: a round has each target once.
std::vector<DoubtfulZero> doubtful_readings(const std::vector<Divided> &rounds)
{
    const Flags certain = certain_readings(rounds);
    std::vector<DoubtfulZero> doubtful;
    for (size_t r = 0; r + 1 < rounds.size(); r++) {
        const Divided &a = rounds[r], &b = rounds[r + 1];
        if (a.zero == b.zero) continue;
        const auto in_a = targets_of(a.readings, certain[r]), in_b = targets_of(b.readings, certain[r + 1]);
        bool tail = true, head = true;
        for (size_t i = a.readings.size(); i-- > 0;) {
            tail = tail && !certain[r][i] && in_b.count(a.readings[i].target) == 0;
            doubtful.push_back({a.readings[i].record, b.zero, !tail});
        }
        for (size_t i = 0; i < b.readings.size(); i++) {
            head = head && !certain[r + 1][i] && in_a.count(b.readings[i].target) == 0;
            doubtful.push_back({b.readings[i].record, a.zero, !head});
        }
    }
    return doubtful;
}

void use_doubtful(Numbers &numbers, bool use)
{
    for (const DoubtfulZero &d : numbers.doubtful)
        if (!d.certain) numbers.model.observations[(size_t)d.row].use = use;
}

namespace {

// What directions give the orientation of their set-up: the median, and that of what they are off from it.
struct Orientation {
    double angle = 0, off = 0;
    bool known = false;
};

double median(std::vector<double> values)
{
    const auto middle = values.begin() + (long)(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

Orientation median_orientation(const std::vector<double> &gives)
{
    if (gives.size() < 2) return {};
    std::vector<double> beside, off;
    beside.reserve(gives.size());
    off.reserve(gives.size());
    for (const double g : gives) beside.push_back(std::remainder(g - gives[0], turn));
    const double middle = median(beside);
    for (const double b : beside) off.push_back(std::fabs(b - middle));
    return {gives[0] + middle, median(off), true};
}

class Settlement {
public:
    explicit Settlement(Numbers &all) : numbers(all), model(all.model)
    {
        std::unordered_set<int> doubtful;
        for (const DoubtfulZero &d : numbers.doubtful)
            if (!d.certain) doubtful.insert(d.row);
        for (const DoubtfulZero &d : numbers.doubtful) {
            wanted.insert(d.other);
            wanted.insert(model.observations[(size_t)d.row].setup);
        }
        for (size_t i = 0; i < model.observations.size(); i++) collect((int)i, doubtful.count((int)i) > 0);
        for (const int setup : wanted) {
            const Orientation certain = median_orientation(certain_of[setup]);
            orientation[setup] = certain.known ? certain : median_orientation(all_of[setup]);
        }
    }

    // Whether it is settled which of its two zeros the reading has; it gets the other one where that fits.
    bool settle(const DoubtfulZero &d)
    {
        va::Observation &o = model.observations[(size_t)d.row];
        double gives = 0;
        if (!given_by(o, gives)) return false;
        const double limit = reading_sigmas * o.sigma[0];
        const Orientation &own = orientation[o.setup], &other = orientation[d.other];
        const double off_own = std::fabs(std::remainder(gives - own.angle, turn));
        const double off_other = std::fabs(std::remainder(gives - other.angle, turn));
        if (!own.known || !other.known) return false;
        const bool stays = fits(off_own, off_other, own, limit), moves = fits(off_other, off_own, other, limit);
        if (moves) o.setup = d.other;
        return stays || moves;
    }

    void orient() const
    {
        for (const auto &[setup, o] : orientation) {
            const size_t unknown = (size_t)model.setups[(size_t)setup].first + 2;
            if (o.known) model.value[unknown] = model.start[unknown] = std::remainder(o.angle, turn);
        }
    }

private:
    static bool fits(double off, double elsewhere, const Orientation &o, double limit)
    {
        return off <= clearly * std::max(o.off, limit) && clearly * std::max(off, o.off) < elsewhere;
    }

    bool given_by(const va::Observation &o, double &angle) const
    {
        double computed[3];
        if (!va::compute(model, o, computed)) return false;
        angle = o.value[0] - computed[0] + model.value[(size_t)model.setups[(size_t)o.setup].first + 2];
        return true;
    }

    void collect(int i, bool doubtful)
    {
        const va::Observation &o = model.observations[(size_t)i];
        double angle = 0;
        if (o.kind != va::Kind::direction || wanted.count(o.setup) == 0 || !given_by(o, angle)) return;
        all_of[o.setup].push_back(angle);
        if (!doubtful) certain_of[o.setup].push_back(angle);
    }

    Numbers &numbers;
    va::Model &model;
    std::unordered_set<int> wanted; // set-ups
    std::map<int, std::vector<double>> certain_of, all_of;
    std::map<int, Orientation> orientation;
};

} // namespace

std::vector<std::string> settle_doubtful(const Model &network, Numbers &numbers)
{
    if (numbers.doubtful.empty()) return {};
    Settlement settlement(numbers);
    std::vector<std::string> notes;
    for (const DoubtfulZero &d : numbers.doubtful)
        if (!settlement.settle(d) && !d.certain)
            notes.push_back(item_text(item_name(network, numbers, d.row)) +
                            ": may belong to this round of directions or to the one beside it; name the rounds in a "
                            "column set");
    settlement.orient();
    return notes;
}

namespace {

// Set-ups whose stand has several zeros that were found from the readings.
std::vector<char> found_zeros(const Numbers &numbers)
{
    const auto stand = [](const SetupPlace &s) { return std::make_pair(s.station, s.named); };
    std::map<std::pair<int, int>, int> count;
    for (const SetupPlace &s : numbers.setups) count[stand(s)] += s.set < 0;
    std::vector<char> found;
    found.reserve(numbers.setups.size());
    for (const SetupPlace &s : numbers.setups) found.push_back(s.set < 0 && count[stand(s)] > 1);
    return found;
}

} // namespace

std::vector<std::string> contradicting_stations(const Model &network, const Numbers &numbers)
{
    const va::Model &model = numbers.model;
    const std::vector<char> found = found_zeros(numbers);
    std::vector<std::string> stations;
    for (size_t i = 0; i < model.observations.size() && stations.size() <= most_stations; i++) {
        const va::Observation &o = model.observations[i];
        double computed[3];
        if (!o.use || o.kind != va::Kind::direction || numbers.items[i].item != Item::direction) continue;
        if (note_at(network.directions.notes.set, (size_t)numbers.items[i].record) >= 0) continue;
        const double limit = (found[(size_t)o.setup] ? suspicious : contradicts) * o.sigma[0];
        if (!va::compute(model, o, computed) || std::fabs(std::remainder(o.value[0] - computed[0], turn)) <= limit)
            continue;
        const std::string name = item_name(network, numbers, (int)i).from;
        if (std::find(stations.begin(), stations.end(), name) == stations.end()) stations.push_back(name);
    }
    return stations;
}

std::string contradiction_line(const std::vector<std::string> &stations)
{
    std::string list;
    for (size_t i = 0; i < std::min(stations.size(), most_stations); i++) list += (i > 0 ? ", " : "") + stations[i];
    if (stations.size() > most_stations) list += ", ...";
    return "directions of " + list +
           " contradict the rest; if circles were turned there between rounds, name the rounds in a column set";
}

} // namespace vornhost
