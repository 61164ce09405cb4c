#include "host/own/round_cuts.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace vornhost {

namespace {

const double turn = 8.0 * std::atan(1.0);
constexpr size_t window = 4;        // rounds before and after one that it is compared with
constexpr size_t most_offsets = 10; // that are tried
constexpr int cost = 2;             // of one more round
constexpr int most_passes = 4;

struct Agreement {
    int common = 0, agreeing = 0;

    // One common target agrees with itself and tells nothing.
    int score() const { return common < 2 ? 0 : 2 * agreeing - common; }
};

using Round = std::vector<const Reading *>;

Agreement compare(const Round &a, const Round &b)
{
    std::unordered_map<std::string_view, const Reading *> of;
    for (const Reading *r : a) of.emplace(r->target, r);
    std::vector<double> offsets, limits;
    for (const Reading *r : b) {
        const auto found = of.find(r->target);
        if (found == of.end()) continue;
        offsets.push_back(r->angle - found->second->angle);
        limits.push_back(reading_sigmas * (r->sigma + found->second->sigma));
    }
    Agreement result;
    result.common = (int)offsets.size();
    for (size_t i = 0; i < offsets.size() && i < most_offsets; i++) {
        int n = 0;
        for (size_t k = 0; k < offsets.size(); k++)
            n += std::fabs(std::remainder(offsets[k] - offsets[i], turn)) <= limits[k];
        result.agreeing = std::max(result.agreeing, n);
    }
    return result;
}

// How often a round of increasing readings passes its beginning.
int overruns(const Round &round)
{
    const auto ahead = [&](const Reading *r) {
        const double angle = std::remainder(r->angle - round.front()->angle, turn);
        return angle < 0.0 ? angle + turn : angle;
    };
    int n = 0;
    for (size_t i = 1; i < round.size(); i++) n += ahead(round[i]) < ahead(round[i - 1]);
    return n;
}

class Cuts {
public:
    explicit Cuts(const std::vector<Readings> &all)
    {
        for (const Readings &readings : all) {
            rounds.emplace_back();
            for (const Reading &r : readings) rounds.back().push_back(&r);
        }
        int long_ones = 0, increasing = 0;
        for (const Round &round : rounds) {
            long_ones += round.size() > 2;
            increasing += round.size() > 2 && overruns(round) == 0;
        }
        ordered = 2 * increasing >= long_ones;
    }

    std::vector<Readings> better()
    {
        for (int pass = 0; pass < most_passes; pass++) {
            bool any = false;
            for (size_t r = 0; r < rounds.size(); r++) any |= (disputed(r) || overrun(r, r) > 0) && improve(r);
            if (!any) break;
        }
        std::vector<Readings> out;
        for (const Round &round : rounds) {
            out.emplace_back();
            for (const Reading *r : round) out.back().push_back(*r);
        }
        return out;
    }

private:
    bool disputed(size_t r) const;
    int score(size_t first, size_t last) const;
    bool improve(size_t r);
    void divide(size_t r, size_t at);
    std::optional<size_t> push(size_t r, size_t at);
    void replace(size_t r, size_t count, const std::vector<Round> &by);
    struct Cut {
        std::pair<int, int> gain = {0, 0}; // by agreement; by readings that increase
        std::vector<Round> rounds;
    };
    Cut tried(size_t r, size_t at, bool own, const std::vector<Round> &before);
    int overrun(size_t first, size_t last) const;
    bool worth(size_t r) const;

    std::vector<Round> rounds;
    bool ordered = false; // the targets of most rounds are read one after the other, the circle increasing
};

int Cuts::overrun(size_t first, size_t last) const
{
    int sum = 0;
    for (size_t r = first; r <= last && ordered; r++) sum += overruns(rounds[r]);
    return sum;
}

// Whether readings of a round disagree as seen from another one.
bool Cuts::disputed(size_t r) const
{
    for (size_t o = r > window ? r - window : 0; o < std::min(rounds.size(), r + window + 1); o++) {
        if (o == r) continue;
        const Agreement a = compare(rounds[r], rounds[o]);
        if (a.agreeing < a.common) return true;
    }
    return false;
}

// Of the pairs with one of the rounds first..last, less what the number of rounds costs.
int Cuts::score(size_t first, size_t last) const
{
    int sum = -cost * (int)rounds.size();
    for (size_t r = first; r <= last; r++)
        for (size_t o = r > window ? r - window : 0; o < std::min(rounds.size(), r + window + 1); o++)
            if (o < first || o > r) sum += compare(rounds[r], rounds[o]).score();
    return sum;
}

// A round of its own needs two readings or more that agree in another one.
bool Cuts::worth(size_t r) const
{
    for (size_t o = r > window ? r - window : 0; o < std::min(rounds.size(), r + window + 1); o++)
        if (o != r && compare(rounds[r], rounds[o]).agreeing > 1) return true;
    return false;
}

// Readings of a round from `at` on become a round of their own.
void Cuts::divide(size_t r, size_t at)
{
    const Round tail(rounds[r].begin() + (long)at, rounds[r].end());
    rounds[r].resize(at);
    rounds.insert(rounds.begin() + (long)r + 1, tail);
}

// They become the first of the next round, and what comes again there moves on likewise. The last round that changed;
// nothing where that goes on beyond the window.
std::optional<size_t> Cuts::push(size_t r, size_t at)
{
    Round tail(rounds[r].begin() + (long)at, rounds[r].end());
    rounds[r].resize(at);
    for (size_t k = r + 1; k < std::min(rounds.size(), r + 1 + window); k++) {
        std::unordered_set<std::string_view> met;
        for (const Reading *reading : tail) met.insert(reading->target);
        Round &next = rounds[k];
        const auto again = std::find_if(next.begin(), next.end(),
                                        [&](const Reading *reading) { return met.count(reading->target) > 0; });
        Round rest(again, next.end());
        next.erase(again, next.end());
        next.insert(next.begin(), tail.begin(), tail.end());
        if (rest.empty()) return k;
        tail = std::move(rest);
    }
    return std::nullopt;
}

// Puts these rounds in the place of `count` from r on.
void Cuts::replace(size_t r, size_t count, const std::vector<Round> &by)
{
    const auto first = rounds.erase(rounds.begin() + (long)r, rounds.begin() + (long)(r + count));
    rounds.insert(first, by.begin(), by.end());
}

// What a cut gains, and the rounds from r on that it makes of those of `before`; these stand again afterwards.
Cuts::Cut Cuts::tried(size_t r, size_t at, bool own, const std::vector<Round> &before)
{
    const size_t count = before.size() + (own ? 1 : 0);
    std::optional<size_t> last = r;
    if (own)
        divide(r, at);
    else
        last = push(r, at);
    Cut cut;
    const bool stands = last && (!own || (worth(r) && worth(r + 1)));
    if (stands) {
        cut.rounds.assign(rounds.begin() + (long)r, rounds.begin() + (long)(r + count));
        const size_t end = std::max(*last, std::min(r + 1, r + before.size() - 1));
        cut.gain = {score(r, own ? end + 1 : end), -overrun(r, end)};
        replace(r, count, before);
        cut.gain.first -= score(r, end);
        cut.gain.second += overrun(r, end);
    } else {
        replace(r, count, before);
    }
    return cut;
}

// Cuts a round where most is gained; where nothing tells it, where the readings begin to increase again.
bool Cuts::improve(size_t r)
{
    const auto first = rounds.begin() + (long)r;
    const std::vector<Round> before(first, first + (long)std::min(rounds.size() - r, window + 1));
    Cut best;
    for (size_t at = 1; at < before[0].size(); at++)
        for (const bool own : {false, true}) {
            Cut cut = tried(r, at, own, before);
            if (cut.gain > best.gain) best = std::move(cut);
        }
    if (best.rounds.empty()) return false;
    replace(r, before.size(), best.rounds);
    return true;
}

} // namespace

std::vector<Readings> cut_again(const std::vector<Readings> &rounds)
{
    return rounds.size() < 2 ? rounds : Cuts(rounds).better();
}

} // namespace vornhost
