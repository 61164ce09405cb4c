// Variance components against a dense iteration, and without bias in simulations.

#include "adjust/components.h"

#include <gtest/gtest.h>

#include "adjust/dense_solution.h"
#include "adjust/random_networks.h"
#include "adjust/redundancy_traces.h"

using namespace vornadjust;

namespace {

// Distances, directions and baselines, whose errors are `larger` times what their standard deviations say.
struct Simulated {
    Network net;
    std::vector<int> of;

    Simulated(unsigned seed, const double (&larger)[2]) : net(seed, frame_of(Space::plane))
    {
        net.points(7, 200, 0);
        net.setups(7);
        net.hold(Hold::free_all, 0);
        for (int p = 0; p < 7; p++)
            for (int q = 0; q < 7; q++) {
                if (p == q) continue;
                net.observe(Kind::plane_distance, p, q, 0.002), of.push_back(0);
                net.observe(Kind::direction, p, q, 1e-5), of.push_back(1);
            }
        net.simulate(0.01);
        for (size_t i = 0; i < of.size(); i++) net.model.observations[i].sigma[0] /= larger[of[i]];
    }
};

// s^2 = v^T P v / r with dense cofactors of the residuals, one round after the other.
std::vector<double> dense_factors(Model m, const std::vector<int> &of, int count)
{
    std::vector<double> factor(count, 1.0);
    for (int round = 0; round < 30; round++) {
        const DenseSolution d = dense_solution(m, true);
        const Matrix r = d.qvv * d.system.p;
        std::vector<Real> squares(count, 0), redundancy(count, 0);
        for (int i = 0; i < r.rows; i++) {
            const int c = of[d.system.component[i].first];
            redundancy[c] += r(i, i);
            for (int j = 0; j < r.rows; j++) squares[c] += d.residual[i] * d.system.p(i, j) * d.residual[j];
        }
        for (int c = 0; c < count; c++) {
            const double f = std::sqrt((double)(squares[c] / redundancy[c]));
            factor[c] *= f;
            for (size_t i = 0; i < of.size(); i++) {
                if (of[i] != c) continue;
                Observation &o = m.observations[i];
                for (double &s : o.sigma) s *= f;
                if (o.group < 0) continue;
                const Group &g = m.groups[o.group];
                for (int k = 0; k < g.size * g.size; k++) m.covariance[g.first + k] *= f * f;
            }
        }
    }
    return factor;
}

ComponentEstimate estimated(Model &m, const std::vector<int> &of, int count, Outcome *outcome)
{
    *outcome = adjust(&m, Options());
    EXPECT_EQ(outcome->status, Status::adjusted);
    return estimate_components(&m, outcome, Options(), of, count, ComponentLimits());
}

} // namespace

TEST(Components, EqualADenseIteration)
{
    Simulated s(1, {2.0, 0.5});
    const std::vector<double> wanted = dense_factors(s.net.model, s.of, 2);
    Outcome outcome;
    const ComponentEstimate e = estimated(s.net.model, s.of, 2, &outcome);
    ASSERT_TRUE(e.converged);
    for (int c = 0; c < 2; c++) {
        EXPECT_TRUE(e.components[c].estimated);
        EXPECT_NEAR(e.components[c].factor, wanted[c], 2e-4 * wanted[c]); // rounds end at 1e-4
        EXPECT_NEAR(e.components[c].squares, e.components[c].redundancy, 3e-4 * e.components[c].redundancy);
    }
    EXPECT_NEAR(outcome.variance_factor, 1.0, 1e-3);
}

// Correlated groups: baselines of a plane network, their covariances together.
TEST(Components, TakeCorrelatedGroupsAsAWhole)
{
    Network net(2, frame_of(Space::space));
    net.points(6, 100, 30);
    std::vector<int> of;
    net.pairs(20, [&](int p, int q) { net.baseline(p, q, 0.003), of.push_back(0); });
    net.pairs(14, [&](int p, int q) { net.observe(Kind::slope_distance, p, q, 0.002), of.push_back(1); });
    net.hold(Hold::fixed, 2);
    net.simulate(0.01);
    const std::vector<double> wanted = dense_factors(net.model, of, 2);
    Outcome outcome;
    const ComponentEstimate e = estimated(net.model, of, 2, &outcome);
    ASSERT_TRUE(e.converged);
    for (int c = 0; c < 2; c++) EXPECT_NEAR(e.components[c].factor, wanted[c], 3e-4 * wanted[c]);
}

// Squares of the factors beside the truth: their mean over 60 networks is 1 within 4 standard deviations of the mean,
// each sqrt(2 / r) large; and they scatter as it says.
TEST(Components, AreWithoutBias)
{
    const double truth[2] = {1.5, 0.7};
    double mean[2] = {0, 0}, spread[2] = {0, 0}, redundancy[2] = {0, 0};
    const int runs = 60;
    for (unsigned run = 0; run < runs; run++) {
        Simulated s(100 + run, {truth[0], truth[1]});
        Outcome outcome;
        const ComponentEstimate e = estimated(s.net.model, s.of, 2, &outcome);
        ASSERT_TRUE(e.converged);
        for (int c = 0; c < 2; c++) {
            const double ratio = std::pow(e.components[c].factor / truth[c], 2), r = e.components[c].redundancy;
            mean[c] += ratio / runs, redundancy[c] += r / runs;
            spread[c] += (ratio - 1) * (ratio - 1) * r / 2 / runs;
        }
    }
    for (int c = 0; c < 2; c++) {
        EXPECT_NEAR(mean[c], 1.0, 4 * std::sqrt(2 / redundancy[c] / runs));
        EXPECT_NEAR(spread[c], 1.0, 4 * std::sqrt(2.0 / runs) + 0.2); // a fifth for what r leaves out
    }
}

TEST(Components, LeaveClassesWithTooLittleRedundancy)
{
    Simulated s(3, {1.0, 1.0});
    for (size_t i = 0; i < 6; i++) s.of[i] = 2; // six observations
    Outcome outcome;
    const ComponentEstimate e = estimated(s.net.model, s.of, 3, &outcome);
    EXPECT_FALSE(e.components[2].estimated);
    EXPECT_EQ(e.components[2].factor, 1.0);
    EXPECT_LT(e.components[2].redundancy, 6.0);
    EXPECT_TRUE(e.components[0].estimated);
}

namespace {

// Traces of R = Qvv P by blocks, dense.
std::vector<double> dense_traces(const Model &m, const std::vector<int> &of, int count)
{
    const DenseSolution d = dense_solution(m, true);
    const Matrix r = d.qvv * d.system.p;
    std::vector<double> h((size_t)count * count, 0.0);
    for (int i = 0; i < r.rows; i++)
        for (int j = 0; j < r.rows; j++) {
            const int a = of[d.system.component[i].first], b = of[d.system.component[j].first];
            if (a >= 0 && b >= 0) h[(size_t)a * count + b] += (double)(r(i, j) * r(j, i));
        }
    return h;
}

Network mixed_kinds()
{
    Network net(4, frame_of(Space::space));
    net.points(6, 100, 30);
    net.pairs(20, [&](int p, int q) { net.baseline(p, q, 0.003); });
    net.pairs(14, [&](int p, int q) { net.observe(Kind::slope_distance, p, q, 0.002); });
    net.hold(Hold::weighted, 2);
    net.simulate(0.01);
    return net;
}

// Classes of baselines and distances; weighted coordinates belong to none.
std::vector<int> classes_of(const Model &m)
{
    std::vector<int> of;
    for (const Observation &o : m.observations)
        of.push_back(o.kind == Kind::baseline ? 0 : o.kind == Kind::slope_distance ? 1 : -1);
    return of;
}

} // namespace

TEST(RedundancyTraces, EqualDenseOnesOfFreeAndOfWeightedNetworksWithCorrelation)
{
    for (const bool free : {true, false}) {
        Simulated s(3, {1.0, 1.0});
        Network net = free ? s.net : mixed_kinds();
        Options options;
        options.classes = free ? s.of : classes_of(net.model);
        options.class_count = 2;
        const Outcome outcome = adjust(&net.model, options);
        ASSERT_EQ(outcome.status, Status::adjusted);
        const std::vector<double> wanted = dense_traces(net.model, options.classes, 2);
        for (size_t k = 0; k < 4; k++) EXPECT_NEAR(outcome.traces.h[k], wanted[k], 1e-7 * wanted[0]) << k;
    }
}

TEST(RedundancyTraces, OfDrawnSignsAreThoseOfAllRowsToSomePercent)
{
    Network net = mixed_kinds();
    const std::vector<int> of = classes_of(net.model);
    const Outcome outcome = adjust(&net.model, Options());
    System system = make_system(net.model);
    fill_rows(net.model, &system);
    fill_normal(&system);
    ASSERT_TRUE(factorize(&system, 0.0, FactorOptions()));
    const RedundancyTraces exact = redundancy_traces(system, outcome.statistics, of, 2, Watch()),
                           drawn = redundancy_traces(system, outcome.statistics, of, 2, Watch(), 0);
    for (size_t k = 0; k < 4; k++) {
        EXPECT_NEAR(drawn.h[k], exact.h[k], 0.05 * exact.h[0]) << k;
        EXPECT_GT(exact.h[k], 0.0);
    }
    EXPECT_NE(drawn.h[1], exact.h[1]);
}

// Factors scatter by their standard deviations, in 120 networks where these are larger than s / sqrt(2 r): lines of
// the second class all stand beside one of the first.
TEST(Components, ScatterByTheirStandardDeviations)
{
    const int runs = 120;
    double squares = 0.0, plain = 0.0;
    for (unsigned run = 0; run < runs; run++) {
        Network net(500 + run, frame_of(Space::heights));
        net.points(30, 0, 10);
        std::vector<int> of;
        const auto observe = [&](int p, int q, int c) {
            net.observe(Kind::height_difference, p, q, 0.001);
            net.model.observations.back().factor = 1, net.model.observations.back().sigma[0] = 0.001;
            of.push_back(c);
        };
        for (int p = 0; p < 30; p++)
            observe(p, (p + 1) % 30, 0), observe(p, (p + 2) % 30, 0), observe(p, (p + 3) % 30, 0),
                observe(p, (p + 1) % 30, 1);
        net.hold(Hold::fixed, 1);
        net.simulate(0.01);
        Outcome outcome;
        const ComponentEstimate e = estimated(net.model, of, 2, &outcome);
        ASSERT_TRUE(e.converged);
        const Component &c = e.components[1];
        ASSERT_GT(c.deviation, 0.0);
        squares += std::pow((c.factor - 1.0) / c.deviation, 2) / runs;
        plain += c.deviation / (c.factor / std::sqrt(2.0 * c.redundancy)) / runs;
    }
    EXPECT_GT(plain, 1.1);
    EXPECT_NEAR(squares, 1.0, 4.0 * std::sqrt(2.0 / runs)); // of squares of normal numbers, nearly
}

// Each line once by either class: residuals are the same to both, and nothing tells the classes apart.
TEST(Components, ThatNothingTellsApartHaveNoStandardDeviation)
{
    Network net(9, frame_of(Space::heights));
    net.points(30, 0, 10);
    std::vector<int> of;
    for (int p = 0; p + 1 < 30; p++)
        for (int c = 0; c < 2; c++) net.observe(Kind::height_difference, p, p + 1, 0.001), of.push_back(c);
    for (Observation &o : net.model.observations) o.factor = 1, o.sigma[0] = 0.001;
    net.hold(Hold::fixed, 1);
    net.simulate(0.01);
    Outcome outcome;
    const ComponentEstimate e = estimated(net.model, of, 2, &outcome);
    for (const Component &c : e.components) EXPECT_TRUE(c.estimated);
    for (const Component &c : e.components) EXPECT_EQ(c.deviation, 0.0);
}
