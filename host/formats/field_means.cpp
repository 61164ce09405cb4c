#include "host/formats/field_means.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "host/input/faults.h"

namespace vornhost {

namespace {

bool before(const SetTarget &a, const SetTarget &b)
{
    return std::tie(a.target, a.target_height) < std::tie(b.target, b.target_height);
}

// Whether two targets, in sets that are sorted, are observed in the same kinds.
bool alike(const SetTarget &a, const SetTarget &b)
{
    for (size_t k = 0; k < sight_lengths; k++)
        if (a.length[k].has_value() != b.length[k].has_value()) return false;
    return same_target(a, b) && a.direction.has_value() == b.direction.has_value() &&
           a.zenith.has_value() == b.zenith.has_value();
}

// Sets over the same targets, each sorted as the first.
using SetGroup = std::vector<const FieldSet *>;

double median(std::vector<double> values)
{
    const auto middle = values.begin() + (std::ptrdiff_t)(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Makes means of the sets of one set-up; the members are what its steps share.
class SetMeans {
public:
    SetMeans(double its_circle, bool all, RecordAccount &its_account)
        : circle(its_circle), merged(all), account(its_account)
    {
    }

    MeanSets of(std::vector<FieldSet> sets)
    {
        for (FieldSet &set : sets) std::stable_sort(set.begin(), set.end(), before);
        for (const SetGroup &group : groups_of(sets)) add_group(group);
        return std::move(out);
    }

private:
    std::vector<SetGroup> groups_of(const std::vector<FieldSet> &sets)
    {
        const auto less = [](const FieldSet *a, const FieldSet *b) {
            return std::lexicographical_compare(
                a->begin(), a->end(), b->begin(), b->end(),
                [](const SetTarget &p, const SetTarget &q) { return !alike(p, q) && differs_before(p, q); });
        };
        std::map<const FieldSet *, size_t, decltype(less)> places(less);
        std::vector<SetGroup> groups;
        for (const FieldSet &set : sets) {
            const auto [place, fresh] = places.insert({&set, groups.size()});
            if (fresh) groups.emplace_back();
            groups[place->second].push_back(&set);
        }
        return groups;
    }

    // An order of targets that are not alike.
    static bool differs_before(const SetTarget &a, const SetTarget &b)
    {
        if (!same_target(a, b)) return before(a, b);
        const auto kinds = [](const SetTarget &t) {
            int bits = (t.direction ? 1 : 0) + (t.zenith ? 2 : 0);
            for (size_t k = 0; k < sight_lengths; k++) bits += t.length[k] ? 4 << k : 0;
            return bits;
        };
        return kinds(a) < kinds(b);
    }

    void add_group(const SetGroup &group)
    {
        const std::vector<double> turns = turns_of(group);
        const bool sound = group.size() < 2 || check(group, turns);
        if (sound && group.size() > 1) add_scatter(group, turns);
        if (merged && sound) {
            out.sets.push_back(mean_of(group, turns));
            return;
        }
        for (const FieldSet *set : group) out.sets.push_back(mean_of({set}, {0.0}));
    }

    // By how much each set is turned against the first: the median over the targets, which one wrong target leaves
    // alone.
    std::vector<double> turns_of(const SetGroup &group) const
    {
        std::vector<double> turns(group.size(), 0.0);
        for (size_t s = 1; s < group.size(); s++) {
            std::vector<double> differences;
            for_directions(group, s, [&](double difference) { differences.push_back(difference); });
            if (differences.empty()) continue;
            const double first = differences[0];
            for (double &difference : differences) difference = wrapped(difference - first, circle);
            turns[s] = first + median(differences);
        }
        return turns;
    }

    template <class Take> void for_directions(const SetGroup &group, size_t s, Take take) const
    {
        for (size_t k = 0; k < group[0]->size(); k++) {
            const MaybeNumber &one = (*group[0])[k].direction, &other = (*group[s])[k].direction;
            if (one && other) take(wrapped(*other - *one, circle));
        }
    }

    // What is off by more than any error of measuring.
    bool check(const SetGroup &group, const std::vector<double> &turns)
    {
        bool sound = true;
        for (size_t k = 0; k < group[0]->size(); k++) {
            const SetTarget &one = (*group[0])[k];
            for (size_t s = 1; s < group.size(); s++) {
                const SetTarget &other = (*group[s])[k];
                const bool direction = one.direction && std::fabs(wrapped(*other.direction - *one.direction - turns[s],
                                                                          circle)) > gross_angle(circle);
                const bool zenith = one.zenith && std::fabs(*other.zenith - *one.zenith) > gross_angle(circle);
                bool length = false;
                for (size_t i = 0; i < sight_lengths; i++)
                    length = length || (one.length[i] && std::fabs(*other.length[i] - *one.length[i]) > gross_length);
                if (!direction && !zenith && !length) continue;
                sound = false;
                account.note(other.where, "target " + quote(one.target) + " is elsewhere than in the set of line " +
                                              std::to_string(one.where.line) + " (by its " +
                                              (direction ? "direction"
                                               : zenith  ? "zenith angle"
                                                         : "distance") +
                                              "): these sets are not averaged; look for exchanged targets");
            }
        }
        return sound;
    }

    void add_scatter(const SetGroup &group, const std::vector<double> &turns)
    {
        const size_t n = group.size(), targets = group[0]->size();
        std::vector<std::vector<double>> rows;
        size_t zeniths = 0, distances = 0;
        for (size_t k = 0; k < targets; k++) {
            const SetTarget &one = (*group[0])[k];
            if (one.direction) rows.push_back(directions_of(group, turns, k));
            if (one.zenith) {
                zeniths++;
                out.zenith.squares += squares_of(values_of(group, k, [](const SetTarget &t) { return *t.zenith; }));
            }
            if (one.length[slope_length]) {
                distances++;
                out.distance.squares +=
                    squares_of(values_of(group, k, [](const SetTarget &t) { return *t.length[slope_length]; }));
            }
        }
        out.zenith.freedom += zeniths * (n - 1);
        out.distance.freedom += distances * (n - 1);
        add_direction_scatter(std::move(rows), n);
    }

    // Residuals of an adjustment of the sets with a direction a target and a turn a set.
    void add_direction_scatter(std::vector<std::vector<double>> rows, size_t n)
    {
        if (rows.size() < 2) return;
        for (std::vector<double> &row : rows) {
            const double mean = std::accumulate(row.begin(), row.end(), 0.0) / (double)n;
            for (double &value : row) value -= mean;
        }
        for (size_t s = 0; s < n; s++) {
            double mean = 0.0;
            for (const std::vector<double> &row : rows) mean += row[s] / (double)rows.size();
            for (const std::vector<double> &row : rows) out.direction.squares += (row[s] - mean) * (row[s] - mean);
        }
        out.direction.freedom += (rows.size() - 1) * (n - 1);
    }

    template <class Value> static std::vector<double> values_of(const SetGroup &group, size_t k, const Value &value)
    {
        std::vector<double> values(group.size());
        std::transform(group.begin(), group.end(), values.begin(),
                       [&](const FieldSet *set) { return value((*set)[k]); });
        return values;
    }

    // Of a target in all sets, turned onto the first set, as differences from it.
    std::vector<double> directions_of(const SetGroup &group, const std::vector<double> &turns, size_t k) const
    {
        std::vector<double> values(group.size(), 0.0);
        for (size_t s = 1; s < group.size(); s++)
            values[s] = wrapped(*(*group[s])[k].direction - *(*group[0])[k].direction - turns[s], circle);
        return values;
    }

    static double squares_of(const std::vector<double> &values)
    {
        const double mean = std::accumulate(values.begin(), values.end(), 0.0) / (double)values.size();
        return std::accumulate(values.begin(), values.end(), 0.0,
                               [mean](double sum, double value) { return sum + (value - mean) * (value - mean); });
    }

    // Where the circle stayed as it was, the mean keeps the zero that all sets share.
    double mean_turn(const std::vector<double> &turns) const
    {
        double sum = 0.0;
        for (const double turn : turns) {
            if (std::fabs(turn) > gross_angle(circle)) return 0.0;
            sum += turn;
        }
        return sum / (double)turns.size();
    }

    MeanSet mean_of(const SetGroup &group, const std::vector<double> &turns) const
    {
        MeanSet mean;
        mean.sets = group.size();
        const double turn = mean_turn(turns), n = (double)group.size();
        for (size_t k = 0; k < group[0]->size(); k++) {
            MeanTarget target;
            target.sight = (*group[0])[k];
            SetTarget &sight = target.sight;
            const auto average = [&](auto value) {
                const std::vector<double> values = values_of(group, k, value);
                double sum = 0.0;
                for (const double v : values) sum += v - values[0];
                return values[0] + sum / n;
            };
            if (sight.direction) {
                const std::vector<double> values = directions_of(group, turns, k);
                *sight.direction += turn + std::accumulate(values.begin(), values.end(), 0.0) / n;
            }
            if (sight.zenith) sight.zenith = average([](const SetTarget &t) { return *t.zenith; });
            for (size_t i = 0; i < sight_lengths; i++)
                if (sight.length[i]) sight.length[i] = average([i](const SetTarget &t) { return *t.length[i]; });
            const std::vector<double> variances =
                values_of(group, k, [](const SetTarget &t) { return t.both_faces ? 1.0 : 2.0; });
            target.factor = std::sqrt(std::accumulate(variances.begin(), variances.end(), 0.0)) / n;
            mean.targets.push_back(std::move(target));
        }
        std::stable_sort(mean.targets.begin(), mean.targets.end(), [](const MeanTarget &a, const MeanTarget &b) {
            return a.sight.where.line < b.sight.where.line;
        });
        return mean;
    }

    const double circle;
    const bool merged;
    RecordAccount &account;
    MeanSets out;
};

} // namespace

MaybeNumber Scatter::deviation() const
{
    return freedom > 0 ? MaybeNumber(std::sqrt(squares / (double)freedom)) : MaybeNumber();
}

MeanSets mean_sets(const std::vector<FieldSet> &sets, double circle, bool merged, RecordAccount &account)
{
    return SetMeans(circle, merged, account).of(sets);
}

} // namespace vornhost
