// Residuals, their tests and what follows from them, by kinds of observations and for the whole.

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>
#include <vector>

#include "host/own/collection.h"
#include "host/own/item_names.h"
#include "host/own/joint_tests.h"
#include "host/own/shared_rows.h"
#include "host/results/test_limits.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

// Residuals that are made once for all who go through them: half a gigabyte, and a third of the time of writing.
constexpr int most_kept = 1000000;

// Residuals that other processes send at a time: each time the first one waits for the slowest of them.
constexpr size_t most_sent = 8192;

// The name under which the marks of a residual are counted.
std::string counted_as(const ResidualResult &r)
{
    const bool weighted =
        r.kind.rfind("weighted", 0) == 0 || r.kind.rfind("imported", 0) == 0 || r.kind.rfind("observed", 0) == 0;
    return weighted ? std::string() : r.kind;
}

const char *test_word(ObservationTest test)
{
    return test == ObservationTest::tau ? "tau" : test == ObservationTest::b_method ? "b_method" : "baarda";
}

const char *robust_word(Robust robust)
{
    return robust == Robust::huber ? "huber" : robust == Robust::danish ? "danish" : "l1";
}

} // namespace

// Sigma and the tests of the variance factor.
void Collection::variance()
{
    results.degrees_of_freedom = adjustment.redundancy;
    results.iterations = planned ? std::nullopt : std::optional<int>(adjustment.iteration.steps);
    if (planned) return;
    results.sigma_apriori = 1.0;
    const int f = adjustment.redundancy;
    if (f <= 0) return;
    if (!outcome.weights.empty()) return; // weights that follow the residuals make their squares small
    results.sigma_aposteriori = std::sqrt(adjustment.variance_factor);
    if (network.mode != Mode::Statistics) return;
    const VarianceTest t = variance_test(adjustment.variance_factor * f, f, rule.global_level());
    results.one_tailed_test = t.one_sided_passed();
    results.variance_test = t;
}

void Collection::residuals()
{
    if (!outcome.adjusted()) return;
    const auto make = [all = rows, ranks = outcome.ranks](size_t first, size_t n) {
        return ranks ? fetch_rows(*all, *ranks, first, n) : all->make(first, n);
    };
    results.residuals = Residuals((size_t)adjustment.rows, make, outcome.ranks ? most_sent : Residuals::in_cache);
    if (!outcome.ranks && adjustment.rows <= most_kept) results.residuals.keep();
    if (has_tests() || !outcome.weights.empty()) look_through();
    if (has_tests()) tests();
    if (!outcome.weights.empty()) weights();
    suspects();
    joint_tests();
    results.snooping = outcome.snooping;
}

// Counts marks, and finds the observations that the test rejects.
void Collection::look_through()
{
    std::vector<std::pair<double, size_t>> worst;
    size_t i = 0;
    for (const ResidualResult &r : results.residuals) {
        KindResult &k = marks[counted_as(r)];
        k.over_normal += r.normal.value_or(false);
        k.over_normal_divided += r.normal_divided.value_or(false);
        k.over_tau += r.tau.value_or(false);
        k.over_tau_divided += r.tau_divided.value_or(false);
        k.suspicious += r.test && r.test->rejected;
        k.unchecked += !r.checked.value_or(true);
        unchecked += !r.checked.value_or(true);
        if (!r.checked.value_or(true) && !first_unchecked) first_unchecked = i;
        if (!outcome.weights.empty() && r.weight < 1.0) results.weights.push_back({i, r.weight});
        if (r.test && r.test->rejected) worst.emplace_back(std::fabs(r.normalised.value_or(0.0)), i);
        i++;
    }
    std::stable_sort(worst.begin(), worst.end(), [](const auto &a, const auto &b) { return a.first > b.first; });
    results.suspicious.reserve(worst.size());
    for (const auto &[size, place] : worst) results.suspicious.push_back(place);
}

void Collection::tests()
{
    TestsResult t;
    t.test = test_word(network.tests.test);
    t.words = rule.name();
    t.sidak = network.tests.sidak;
    t.level = network.tests.level;
    t.single_level = rule.single_level();
    t.power = network.tests.power;
    if (rule.tests()) t.limit = rule.limit();
    t.least_redundancy = network.tests.least_redundancy;
    t.unchecked = unchecked;
    t.first_unchecked = first_unchecked;
    t.tested = rule.tests() ? (int)results.residuals.size() - unchecked : 0;
    t.rejected = (int)results.suspicious.size();
    results.tests = t;
}

void Collection::weights()
{
    results.robust = robust_word(network.tests.robust);
    std::vector<WeightResult> &all = results.weights;
    std::stable_sort(all.begin(), all.end(),
                     [](const WeightResult &a, const WeightResult &b) { return a.weight < b.weight; });
}

void Collection::suspects()
{
    for (const va::Suspect &s : adjustment.suspects) {
        SuspectResult suspect;
        suspect.residual = (size_t)s.place;
        const ResidualResult &r = std::as_const(results.residuals)[suspect.residual];
        suspect.error = s.error;
        suspect.would_read = r.raw.value_or(r.value) - s.error;
        if (is_circle(r)) suspect.would_read = on_circle(suspect.would_read);
        suspect.shift = s.shift;
        if (s.point >= 0) suspect.point = results.points[(size_t)s.point].name;
        for (const va::Alike &a : s.alike) suspect.alike.push_back({(size_t)a.place, a.correlation});
        results.suspects.push_back(suspect);
    }
}

// Components of an observation are rows that follow one another.
void Collection::joint_tests()
{
    if (planned || !precise || adjustment.statistics.together.empty() || !outcome.weights.empty()) return;
    for (const va::JointStatistics &j : adjustment.statistics.together) {
        if (j.rows == 0) continue;
        JointTestResult t;
        t.rank = j.rank;
        t.squares = j.squares;
        t.components = j.rows;
        t.first = (size_t)j.first;
        if (rule.tests_together(t.rank)) {
            const double all = adjustment.variance_factor * adjustment.redundancy;
            t.probability = rule.probability_together(t.squares, all, t.rank);
            t.rejected = *t.probability < rule.level_together(t.rank);
        }
        results.joint_tests.push_back(t);
    }
}

// Kinds of the file; the three kinds of distances are one of them.
void Collection::kinds()
{
    if (!precise || planned || adjustment.redundancy <= 0 || !outcome.weights.empty()) return;
    const project &p = network.p;
    const Model::Apriori &own = network.apriori;
    const bool coordinates = network.coordinates.size() > 0 || network.coordinates.rows > 0;
    const struct {
        const char *name;
        va::Kind first, last;
        double apriori;
    } all[] = {
        {"distance", va::Kind::slope_distance, va::Kind::level_distance, p.sdist},
        {"horizontal distance", va::Kind::horizontal_distance, va::Kind::horizontal_distance, own.horizontal_distance},
        {"scale bar", va::Kind::scale_bar, va::Kind::scale_bar, own.scale_bar},
        {"height difference", va::Kind::height_difference, va::Kind::height_difference, p.sdifh},
        {"direction", va::Kind::direction, va::Kind::direction, p.sdir1},
        {"angle", va::Kind::angle, va::Kind::angle, own.angle},
        {"vertical angle", va::Kind::vertical_angle, va::Kind::vertical_angle, p.sdir2},
        {"azimuth", va::Kind::azimuth, va::Kind::azimuth, p.saz},
        {"bearing", va::Kind::bearing, va::Kind::bearing, own.bearing},
        {"baseline", va::Kind::baseline, va::Kind::baseline, p.sgps},
        {"observed point", va::Kind::position, va::Kind::position, own.coordinate},
        {"coordinate difference", va::Kind::difference, va::Kind::difference, own.coordinate_difference},
        {"image point", va::Kind::image, va::Kind::image, p.suv},
        {coordinates ? "observed, weighted or imported" : "weighted or imported", va::Kind::unknown, va::Kind::unknown,
         coordinates ? own.coordinate : 1.0}};
    for (const auto &a : all) {
        va::KindStatistics sum;
        for (int k = (int)a.first; k <= (int)a.last; k++) {
            const va::KindStatistics &s = adjustment.statistics.kinds[(size_t)k];
            sum.rows += s.rows;
            sum.squares += s.squares;
            sum.redundancy += s.redundancy;
        }
        if (sum.rows == 0) continue;
        KindResult k = marks[a.first == va::Kind::unknown ? "" : a.name];
        k.kind = a.name;
        k.sigma_apriori = a.apriori;
        if (sum.redundancy >= va::least_redundancy) {
            k.sigma_aposteriori = a.apriori * std::sqrt(std::fmax(0.0, sum.squares / sum.redundancy));
            k.goodness_of_fit = sum.squares >= chi_square_limit(significance / 2.0, sum.redundancy) &&
                                sum.squares <= chi_square_limit(1.0 - significance / 2.0, sum.redundancy);
        }
        results.kinds.push_back(k);
    }
}

} // namespace vornhost
