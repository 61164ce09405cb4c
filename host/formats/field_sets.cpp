#include "host/formats/field_sets.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <stdio.h>

#include "host/input/faults.h"

namespace vornhost {

namespace {

constexpr double pi = 3.14159265358979323846;

// A target is its name and its height to a tenth of a millimetre.
using TargetKey = std::pair<std::string, long long>;

TargetKey key_of(const std::string &target, const MaybeNumber &height)
{
    return {target, height ? std::llround(*height * 1e4) : -1000000000LL};
}

// The second face where the zenith reading is beyond half a circle.
int face_of(const FieldSight &sight, double circle)
{
    if (sight.face) return sight.face;
    return sight.zenith && *sight.zenith > circle / 2.0 ? 2 : 1;
}

// Divides the sights of a set-up into sets. A set ends where a target comes again in the same face, but for a second
// reading right behind the first, and for the first target at the end of a round, which closes the horizon.
class SetSplitter {
public:
    SetSplitter(const std::vector<FieldSight> &its_sights, const std::vector<int> &its_faces)
        : sights(its_sights), faces(its_faces), keys(its_sights.size())
    {
        std::transform(sights.begin(), sights.end(), keys.begin(),
                       [](const FieldSight &sight) { return key_of(sight.target, sight.target_height); });
    }

    std::vector<std::vector<size_t>> split()
    {
        for (size_t i = 0; i < sights.size(); i++) {
            if (begins_set(i)) {
                sets.emplace_back();
                seen.clear();
                others = false;
            }
            sets.back().push_back(i);
            others = others || keys[i] != keys[sets.back().front()];
            seen.insert({keys[i], faces[i]});
        }
        return std::move(sets);
    }

private:
    bool begins_set(size_t i) const
    {
        if (i == 0 || sights[i].set != sights[i - 1].set) return true;
        if (!sights[i].set.empty() || !seen.count({keys[i], faces[i]})) return false;
        return !repeats(i) && !closes(i);
    }

    bool repeats(size_t i) const { return keys[i] == keys[i - 1] && faces[i] == faces[i - 1]; }

    // Behind the closing sights comes the end, the other face, or the first target of the next set.
    bool closes(size_t i) const
    {
        if (keys[i] != keys[sets.back().front()] || !others) return false;
        size_t end = i, same_face = 0;
        for (; end < sights.size() && keys[end] == keys[i] && same_face < 2; end++)
            if (faces[end] == faces[i]) same_face++;
        return end == sights.size() || same_face >= 2 || faces[end] != faces[i];
    }

    const std::vector<FieldSight> &sights;
    const std::vector<int> &faces;
    std::vector<TargetKey> keys;
    std::vector<std::vector<size_t>> sets;
    std::set<std::pair<TargetKey, int>> seen; // in the set that is open
    bool others = false;                      // it has more targets than its first
};

double median(std::vector<double> values)
{
    if (values.empty()) return 0.0;
    const auto middle = values.begin() + (std::ptrdiff_t)(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The readings of one face of a target in a set as one.
struct FaceReading {
    MaybeNumber direction, zenith;
    std::array<MaybeNumber, sight_lengths> length;
    double closure = 0.0; // largest difference of a direction from the first
    std::vector<size_t> sights;
};

// One target of a set in both faces.
struct Pair {
    FaceReading face[2];
    MaybeNumber w, i; // of directions and zenith angles
    bool bad = false; // its faces cannot belong together
};

double mean(const std::vector<double> &values)
{
    double sum = 0.0;
    for (const double value : values) sum += value - values[0];
    return values[0] + sum / (double)values.size();
}

MaybeNumber maybe_mean(const std::vector<double> &values)
{
    return values.empty() ? MaybeNumber() : MaybeNumber(mean(values));
}

std::string number(double value, int places)
{
    char text[64];
    snprintf(text, sizeof text, "%.*f", places, value);
    return text;
}

// Reduces one set-up; the members are what its steps share.
class FaceReducer {
public:
    FaceReducer(const FieldSetup &its_setup, double its_circle, const SightSigmas &its_sigmas,
                RecordAccount &its_account)
        : setup(its_setup), sights(its_setup.sights), circle(its_circle), sigmas(its_sigmas), account(its_account)
    {
    }

    ReducedSetup reduce()
    {
        read_pairs();
        find_gross_pairs();
        for (const std::vector<Pair> &set : sets) note_exchanged(set);
        sum_errors();
        note_limits();
        for (const std::vector<Pair> &set : sets) add_set(set);
        return std::move(out);
    }

private:
    void read_pairs()
    {
        std::vector<int> faces(sights.size());
        std::transform(sights.begin(), sights.end(), faces.begin(),
                       [this](const FieldSight &sight) { return face_of(sight, circle); });
        for (const std::vector<size_t> &set : SetSplitter(sights, faces).split()) {
            std::map<TargetKey, size_t> places;
            std::vector<Pair> pairs;
            for (const size_t i : set) {
                const auto [place, fresh] =
                    places.insert({key_of(sights[i].target, sights[i].target_height), pairs.size()});
                if (fresh) pairs.emplace_back();
                pairs[place->second].face[faces[i] - 1].sights.push_back(i);
            }
            for (Pair &pair : pairs) read_pair(pair);
            sets.push_back(std::move(pairs));
        }
    }

    void read_pair(Pair &pair) const
    {
        for (FaceReading &face : pair.face) read_face(face);
        const FaceReading &one = pair.face[0], &two = pair.face[1];
        if (one.direction && two.direction) pair.w = wrapped(*two.direction - *one.direction - circle / 2.0, circle);
        if (one.zenith && two.zenith) pair.i = (*one.zenith + *two.zenith - circle) / 2.0;
    }

    void read_face(FaceReading &face) const
    {
        std::vector<double> directions, zeniths, lengths[sight_lengths];
        for (const size_t i : face.sights) {
            const FieldSight &sight = sights[i];
            if (sight.direction)
                directions.push_back(directions.empty()
                                         ? *sight.direction
                                         : directions[0] + wrapped(*sight.direction - directions[0], circle));
            if (sight.zenith) zeniths.push_back(*sight.zenith);
            for (size_t k = 0; k < sight_lengths; k++)
                if (sight.length[k]) lengths[k].push_back(*sight.length[k]);
        }
        for (const double value : directions)
            if (std::fabs(value - directions[0]) > std::fabs(face.closure)) face.closure = value - directions[0];
        face.direction = maybe_mean(directions);
        face.zenith = maybe_mean(zeniths);
        for (size_t k = 0; k < sight_lengths; k++) face.length[k] = maybe_mean(lengths[k]);
    }

    // Differences of faces are judged by those of the other pairs of the set-up, as instruments have errors.
    void find_gross_pairs()
    {
        constexpr size_t enough = 3;
        std::vector<double> ws, is;
        for_pairs([&](Pair &pair) {
            if (pair.w) ws.push_back(*pair.w);
            if (pair.i) is.push_back(*pair.i);
        });
        const double w = ws.size() >= enough ? median(ws) : 0.0, i = is.size() >= enough ? median(is) : 0.0;
        median_w = w;
        const double gross = gross_angle(circle);
        for_pairs([&](Pair &pair) {
            pair.bad = (pair.w && std::fabs(*pair.w - w) > gross) || (pair.i && std::fabs(*pair.i - i) > gross);
            for (size_t k = 0; k < sight_lengths; k++) {
                const MaybeNumber &one = pair.face[0].length[k], &two = pair.face[1].length[k];
                pair.bad = pair.bad || (one && two && std::fabs(*one - *two) > gross_length);
            }
            if (pair.bad) leave_out(pair);
        });
    }

    void leave_out(const Pair &pair)
    {
        const auto apart = [](const MaybeNumber &a, const MaybeNumber &b) {
            return a && b ? number(*b - *a, 3) : std::string("-");
        };
        const FaceReading &one = pair.face[0], &two = pair.face[1];
        const std::string what = "both faces to " + quote(target(pair)) + " at " + quote(setup.station) +
                                 " do not belong together: direction " + (pair.w ? number(*pair.w, 4) : "-") +
                                 ", zenith angle " + (pair.i ? number(2.0 * *pair.i, 4) : "-") + " apart, distance " +
                                 apart(one.length[slope_length], two.length[slope_length]) + " m";
        for (const FaceReading &face : pair.face)
            for (const size_t i : face.sights) account.leave_out(sights[i].where, what);
    }

    // Two targets whose second faces fit the first face of one another.
    void note_exchanged(const std::vector<Pair> &set)
    {
        constexpr size_t most = 20;
        std::vector<const Pair *> bad;
        for (const Pair &pair : set)
            if (pair.bad) bad.push_back(&pair);
        for (size_t a = 0; a < bad.size() && bad.size() <= most; a++)
            for (size_t b = a + 1; b < bad.size(); b++)
                if (fits(*bad[a], *bad[b]) && fits(*bad[b], *bad[a]))
                    account.note(place(*bad[b]), "targets " + quote(target(*bad[a])) + " and " +
                                                     quote(target(*bad[b])) + " at " + quote(setup.station) +
                                                     " seem to be exchanged in one face: correct their names");
    }

    bool fits(const Pair &one, const Pair &two) const
    {
        const MaybeNumber &first = one.face[0].direction, &second = two.face[1].direction;
        if (!first || !second) return false;
        return std::fabs(wrapped(*second - *first - circle / 2.0, circle) - median_w) <= gross_angle(circle);
    }

    void sum_errors()
    {
        FaceErrors &errors = out.errors;
        for_pairs([&](Pair &pair) {
            if (pair.bad) return;
            if (pair.w) {
                const double c = -*pair.w / 2.0 * sine(pair);
                errors.collimation += (c - errors.collimation) / (double)++errors.collimations;
                errors.most_collimation = std::fmax(errors.most_collimation, std::fabs(c));
            }
            if (pair.i) {
                errors.index += (*pair.i - errors.index) / (double)++errors.indexes;
                errors.most_index = std::fmax(errors.most_index, std::fabs(*pair.i));
            }
        });
    }

    // Of the zenith angle, free from the index error where both faces were read; 1 where none was.
    double sine(const Pair &pair) const
    {
        MaybeNumber zenith = pair.face[0].zenith ? pair.face[0].zenith : pair.face[1].zenith;
        if (!zenith) return 1.0;
        if (pair.i) *zenith -= *pair.i;
        return std::fmax(std::fabs(std::sin(*zenith * 2.0 * pi / circle)), 0.01);
    }

    // What pointing and centring may add to a standard deviation, as an angle: 2 mm at the distance of the target.
    double pointing(const Pair &pair) const
    {
        constexpr double shift = 0.002;
        for (const FaceReading &face : pair.face)
            for (const size_t k : {slope_length, horizontal_length})
                if (face.length[k]) return shift / std::fmax(*face.length[k], shift) * circle / (2.0 * pi);
        return 0.0;
    }

    // A difference of two single readings has twice the standard deviation of a mean of two faces.
    void note_limits()
    {
        const FaceErrors &errors = out.errors;
        for_pairs([&](Pair &pair) {
            if (pair.bad) return;
            const double limit = 4.0 * 2.0 * sigmas.direction + pointing(pair);
            const double away = pair.w ? *pair.w + 2.0 * errors.collimation / sine(pair) : 0.0;
            if (std::fabs(away) > limit) note_limit(pair, "directions in both faces", away, limit);
            const double index_limit = 4.0 * 2.0 * sigmas.zenith + pointing(pair);
            const double index_away = pair.i ? 2.0 * (*pair.i - errors.index) : 0.0;
            if (std::fabs(index_away) > index_limit)
                note_limit(pair, "zenith angles in both faces", index_away, index_limit);
            for (const FaceReading &face : pair.face)
                if (std::fabs(face.closure) > limit) note_limit(pair, "closing of the horizon", face.closure, limit);
        });
    }

    void note_limit(const Pair &pair, const char *what, double away, double limit)
    {
        const bool gon = circle == 400.0;
        const double factor = gon ? 1000.0 : 3600.0;
        account.note(place(pair), std::string(what) + ", " + quote(setup.station) + " to " + quote(target(pair)) +
                                      ": " + number(away * factor, 1) + (gon ? " mgon" : "\"") +
                                      " beside the mean of the set-up, beyond the limit of " +
                                      number(limit * factor, 1));
    }

    void add_set(const std::vector<Pair> &set)
    {
        FieldSet targets;
        for (const Pair &pair : set)
            if (!pair.bad) targets.push_back(joined(pair));
        if (!targets.empty()) out.sets.push_back(std::move(targets));
    }

    SetTarget joined(const Pair &pair) const
    {
        const FaceReading &one = pair.face[0], &two = pair.face[1];
        const FieldSight &first = sights[first_sight(pair)];
        SetTarget result;
        result.target = first.target;
        result.target_height = first.target_height;
        result.where = first.where;
        result.both_faces = (one.direction || one.zenith) && (two.direction || two.zenith);
        join_direction(pair, result);
        if (pair.i)
            result.zenith = *one.zenith - *pair.i;
        else if (one.zenith)
            result.zenith = *one.zenith - out.errors.index;
        else if (two.zenith)
            result.zenith = circle - *two.zenith + out.errors.index;
        for (size_t k = 0; k < sight_lengths; k++) {
            std::vector<double> both;
            for (const FaceReading *face : {&one, &two})
                if (face->length[k]) both.push_back(*face->length[k]);
            result.length[k] = maybe_mean(both);
        }
        return result;
    }

    // A single face is corrected for the errors that the pairs of the set-up show.
    void join_direction(const Pair &pair, SetTarget &result) const
    {
        const FaceReading &one = pair.face[0], &two = pair.face[1];
        const double correction = out.errors.collimation / sine(pair);
        if (pair.w)
            result.direction = *one.direction + *pair.w / 2.0;
        else if (one.direction)
            result.direction = *one.direction - correction;
        else if (two.direction)
            result.direction = *two.direction - circle / 2.0 + correction;
        if (!result.direction) return;
        *result.direction -= std::floor(*result.direction / circle) * circle;
    }

    size_t first_sight(const Pair &pair) const
    {
        size_t first = sights.size();
        for (const FaceReading &face : pair.face)
            for (const size_t i : face.sights) first = std::min(first, i);
        return first;
    }
    const std::string &target(const Pair &pair) const { return sights[first_sight(pair)].target; }
    Source place(const Pair &pair) const { return sights[first_sight(pair)].where; }

    template <class Do> void for_pairs(const Do &act)
    {
        for (std::vector<Pair> &set : sets)
            for (Pair &pair : set) act(pair);
    }

    const FieldSetup &setup;
    const std::vector<FieldSight> &sights;
    const double circle;
    const SightSigmas sigmas;
    RecordAccount &account;
    std::vector<std::vector<Pair>> sets;
    double median_w = 0.0;
    ReducedSetup out;
};

} // namespace

bool same_target(const SetTarget &a, const SetTarget &b)
{
    return key_of(a.target, a.target_height) == key_of(b.target, b.target_height);
}

double wrapped(double angle, double circle) { return angle - std::ceil(angle / circle - 0.5) * circle; }

double gross_angle(double circle) { return circle / 4000.0; }

ReducedSetup reduce_faces(const FieldSetup &setup, double circle, const SightSigmas &sigmas, RecordAccount &account)
{
    return FaceReducer(setup, circle, sigmas, account).reduce();
}

} // namespace vornhost
