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

bool repeats(const Round &a, const Round &b)
{
    std::unordered_set<std::string_view> met;
    for (const Reading *r : a) met.insert(r->target);
    return std::any_of(b.begin(), b.end(), [&](const Reading *r) { return met.count(r->target) > 0; });
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
    void cut(size_t r, size_t at, bool of_their_own);
    void join_again(size_t r, size_t n, bool of_their_own);
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

// Readings of a round from `at` on become the first of the next round, or a round of their own.
void Cuts::cut(size_t r, size_t at, bool of_their_own)
{
    const Round tail(rounds[r].begin() + (long)at, rounds[r].end());
    rounds[r].resize(at);
    if (of_their_own)
        rounds.insert(rounds.begin() + (long)r + 1, tail);
    else
        rounds[r + 1].insert(rounds[r + 1].begin(), tail.begin(), tail.end());
}

void Cuts::join_again(size_t r, size_t n, bool of_their_own)
{
    const long taken = (long)(n - rounds[r].size());
    Round &next = rounds[r + 1];
    rounds[r].insert(rounds[r].end(), next.begin(), next.begin() + taken);
    next.erase(next.begin(), next.begin() + taken);
    if (of_their_own) rounds.erase(rounds.begin() + (long)r + 1);
}

// Cuts a round where most is gained; where nothing tells it, where the readings begin to increase again.
bool Cuts::improve(size_t r)
{
    const size_t n = rounds[r].size();
    const size_t last = std::min(r + 1, rounds.size() - 1);
    std::pair<int, int> best = {score(r, last), -overrun(r, last)};
    std::optional<std::pair<size_t, bool>> found;
    for (size_t at = 1; at < n; at++)
        for (const bool own : {false, true}) {
            const Round tail(rounds[r].begin() + (long)at, rounds[r].end());
            if (!own && (last == r || repeats(tail, rounds[r + 1]))) continue;
            cut(r, at, own);
            const std::pair<int, int> now = {score(r, own ? last + 1 : last), -overrun(r, last)};
            const bool stands = !own || (worth(r) && worth(r + 1));
            join_again(r, n, own);
            if (now <= best || !stands) continue;
            best = now;
            found = {at, own};
        }
    if (found) cut(r, found->first, found->second);
    return found.has_value();
}

} // namespace

std::vector<Readings> cut_again(const std::vector<Readings> &rounds)
{
    return rounds.size() < 2 ? rounds : Cuts(rounds).better();
}

} // namespace vornhost
