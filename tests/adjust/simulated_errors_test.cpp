// What the tests of observations do on simulated networks: how often they reject what is right, and what they find of
// gross errors. VORN_SIMULATIONS says on how many networks (default 200); with it the figures are printed, as
// docs/statistics.md has them.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <numeric>

#include "adjust/snoop.h"
#include "adjust/weighted.h"
#include "host/results/test_limits.h"
#include "host/results/test_rule.h"
#include "random_networks.h"

using namespace vornadjust;
using vornhost::TestRule;
using vornhost::TestSettings;

namespace {

int simulations()
{
    const char *text = std::getenv("VORN_SIMULATIONS");
    return text ? std::max(1, std::atoi(text)) : 200;
}

bool printing() { return std::getenv("VORN_SIMULATIONS") != nullptr; }

// Baselines whose errors have the covariances that they are given.
Model clean_baselines(unsigned seed)
{
    Network n(seed, frame_of(Space::space));
    n.points(6, 20000, 500);
    n.pairs(6, [&](int p, int q) { n.baseline(p, q, 0.01); });
    n.hold(Hold::fixed, 2);
    for (Observation &o : n.model.observations) {
        const Group &g = n.model.groups[o.group];
        std::vector<double> root(n.model.covariance.begin() + (std::ptrdiff_t)g.first,
                                 n.model.covariance.begin() + (std::ptrdiff_t)g.first + 9);
        cholesky(3, root.data());
        const double z[3] = {n.normal(1), n.normal(1), n.normal(1)};
        Linear l;
        linearize(n.model, o, false, &l);
        for (int i = 0; i < 3; i++) {
            o.value[i] = l.value[i];
            for (int k = 0; k <= i; k++) o.value[i] += root[3 * i + k] * z[k];
        }
    }
    return n.model;
}

// A network without gross errors; kinds in turn.
Model clean(unsigned seed)
{
    switch (seed % 4) {
    case 0: return levelling(seed, Hold::free_all).model;
    case 1: return plane(seed, Hold::fixed, true).model;
    case 2: return clean_baselines(seed);
    default: return plane(seed, Hold::weighted, true).model;
    }
}

struct Tally {
    int rejected = 0, tested = 0;
    double share() const { return (double)rejected / std::max(1, tested); }
    void add(bool reject) { tested++, rejected += reject; }
};

// Sampling error of a share of n independent tests, four times.
double error_of(double level, int n) { return 4 * std::sqrt(level * (1 - level) / n); }

TestSettings settings(vornhost::ObservationTest test, double level, bool sidak)
{
    TestSettings s;
    s.test = test;
    s.level = level;
    s.sidak = sidak;
    return s;
}

// One observation a network, so that tests are independent; the family is all of them.
struct Levels {
    Tally one, family, together, variance;

    void add(const Outcome &o, const TestSettings &s, const TestSettings &all, std::mt19937 *engine)
    {
        const int n = tested_rows(o.statistics, s.least_redundancy);
        const double sigma = std::sqrt(o.variance_factor);
        const TestRule rule(s, n, o.redundancy, sigma), family_rule(all, n, o.redundancy, sigma);
        bool any = false;
        std::vector<double> w;
        for (const RowStatistics &r : o.statistics.rows)
            if (r.controlled() && r.share() >= s.least_redundancy) w.push_back(r.normalised);
        for (double x : w) any = any || std::fabs(x) > family_rule.limit();
        if (w.empty()) return;
        const double x = w[std::uniform_int_distribution<size_t>(0, w.size() - 1)(*engine)];
        one.add(std::fabs(x) > rule.limit());
        EXPECT_EQ(std::fabs(x) > rule.limit(), rule.probability(x) < s.level);
        family.add(any);
        const double squares = o.variance_factor * o.redundancy;
        variance.add(vornhost::chi_square_above(squares, o.redundancy) < s.level);
        if (o.statistics.together.empty()) return;
        const JointStatistics &j = o.statistics.together[0];
        if (rule.tests_together(j.rank)) together.add(rule.probability_together(j.squares, squares, j.rank) < s.level);
    }
};

Outcome adjusted_with_joint_test(Model *m)
{
    Options options;
    if (m->observations[1].kind == Kind::baseline) options.together = {{1}};
    return adjust(m, options);
}

} // namespace

TEST(SimulatedErrors, TestsRejectWhatIsRightAsOftenAsTheirLevelSays)
{
    const int n = simulations();
    const vornhost::ObservationTest kinds[] = {vornhost::ObservationTest::baarda, vornhost::ObservationTest::tau};
    const double all_levels[] = {0.05, 0.01};
    Levels levels[2][2];
    std::mt19937 engine(7);
    for (int i = 0; i < n; i++) {
        Model m = clean((unsigned)i + 1);
        const Outcome o = adjusted_with_joint_test(&m);
        ASSERT_EQ(o.status, Status::adjusted) << i;
        for (int k = 0; k < 2; k++)
            for (int l = 0; l < 2; l++)
                levels[k][l].add(o, settings(kinds[k], all_levels[l], false), settings(kinds[k], all_levels[l], true),
                                 &engine);
    }
    for (int k = 0; k < 2; k++)
        for (int l = 0; l < 2; l++) {
            const char *name = k == 1 ? "tau" : "baarda";
            const double level = all_levels[l];
            const Levels &found = levels[k][l];
            EXPECT_NEAR(found.one.share(), level, error_of(level, found.one.tested)) << name;
            EXPECT_NEAR(found.variance.share(), level, error_of(level, found.variance.tested)) << name;
            EXPECT_NEAR(found.together.share(), level, error_of(level, found.together.tested)) << name;
            EXPECT_LE(found.family.share(), level + error_of(level, found.family.tested)) << name;
            if (printing())
                std::printf("%-7s level %.3f: one %.4f, family %.4f, components %.4f of %d, variance %.4f\n", name,
                            level, found.one.share(), found.family.share(), found.together.share(),
                            found.together.tested, found.variance.share());
        }
}

namespace {

// A network with so many gross errors of 4 to 100 sigma; which are wrong.
Model with_errors(unsigned seed, int errors, std::vector<int> *wrong)
{
    Network n = plane(seed, Hold::fixed, true);
    wrong->clear();
    while ((int)wrong->size() < errors) {
        const int i = (int)n.uniform(0, (double)n.model.observations.size() - 1e-9);
        if (std::find(wrong->begin(), wrong->end(), i) != wrong->end()) continue;
        wrong->push_back(i);
        Observation &o = n.model.observations[i];
        o.value[0] += (n.chance(0.5) ? 1 : -1) * n.uniform(4, 100) * o.sigma[0];
    }
    return n.model;
}

std::vector<int> snooped(Model m)
{
    const TestSettings s;
    Options options;
    options.suspects.most = 5;
    options.suspects.least_share = s.least_redundancy;
    options.suspects.limit = [&](int tested, int f, double factor) {
        return TestRule(s, tested, f, std::sqrt(factor)).limit();
    };
    std::vector<int> unit(m.observations.size());
    std::iota(unit.begin(), unit.end(), 0);
    return snoop(&m, options, unit).left_out;
}

// As one does with a list of residuals: the largest, in its standard deviations, is struck out while it is beyond the
// same limit.
std::vector<int> largest_residual(Model m)
{
    std::vector<int> out;
    const std::vector<double> first = m.value;
    for (size_t step = 0; step < m.observations.size() / 3; step++) {
        m.value = first;
        const Outcome o = adjust(&m, {});
        if (o.status != Status::adjusted || o.redundancy <= 0) break;
        int worst = -1;
        double size = vornhost::normal_limit(0.001);
        for (int r = 0; r < o.equations.rows(); r++) {
            const double u = std::fabs(o.statistics.rows[r].residual) / o.equations.sigma[r];
            if (u > size) size = u, worst = o.equations.observation[r];
        }
        if (worst < 0) break;
        m.observations[worst].use = false;
        out.push_back(worst);
    }
    return out;
}

struct Found {
    int errors = 0, found = 0, accused = 0, right = 0;
    void add(const std::vector<int> &wrong, const std::vector<int> &out, size_t observations)
    {
        errors += (int)wrong.size();
        right += (int)(observations - wrong.size());
        for (int o : out) (std::find(wrong.begin(), wrong.end(), o) != wrong.end() ? found : accused)++;
    }
    double share_found() const { return (double)found / std::max(1, errors); }
    double share_accused() const { return (double)accused / std::max(1, right); }
};

} // namespace

TEST(SimulatedErrors, SnoopingFindsMoreAndAccusesLessThanTheLargestResidual)
{
    const int n = std::max(20, simulations() / 10);
    for (int errors = 0; errors <= 5; errors++) {
        Found snooping, reading;
        for (int i = 0; i < n; i++) {
            std::vector<int> wrong;
            const Model m = with_errors(1000u * (unsigned)errors + (unsigned)i + 1, errors, &wrong);
            snooping.add(wrong, snooped(m), m.observations.size());
            reading.add(wrong, largest_residual(m), m.observations.size());
        }
        if (errors > 0) {
            EXPECT_GT(snooping.share_found(), 0.8) << errors;
            EXPECT_GT(snooping.share_found(), reading.share_found() - 0.02) << errors;
        }
        EXPECT_LT(snooping.share_accused(), 0.02) << errors;
        if (printing())
            std::printf("%d errors, %d networks: snooping found %.1f %% accused %.2f %%, reading found %.1f %% accused "
                        "%.2f %%\n",
                        errors, n, 100 * snooping.share_found(), 100 * snooping.share_accused(),
                        100 * reading.share_found(), 100 * reading.share_accused());
    }
}
