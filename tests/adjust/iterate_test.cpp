#include "adjust/iterate.h"

#include <gtest/gtest.h>

#include "adjust/adjustment.h"
#include "random_networks.h"

using namespace vornadjust;

namespace {

// A point by three distances to held points.
Network trilateration(double x, double y)
{
    Network n(1, frame_of(Space::plane));
    const Code held[3] = {Code::fixed, Code::fixed, Code::absent}, open[3] = {Code::free, Code::free, Code::absent};
    const double corners[3][3] = {{0, 0, 0}, {100, 0, 0}, {0, 100, 0}}, point[3] = {x, y, 0};
    for (const double *c : corners) n.model.add_point(c, held);
    n.model.add_point(point, open);
    for (int p = 0; p < 3; p++) n.observe(Kind::plane_distance, p, 3, 0.001).sigma[0] = 0.001;
    return n;
}

void observe_exactly(Model &m)
{
    for (Observation &o : m.observations) {
        Linear l;
        linearize(m, o, false, &l);
        o.value[0] = l.value[0];
    }
}

Iteration run(Model &m, const IterationLimits &limits, const FactorOptions &options = {})
{
    System system = make_system(m);
    FreeDatum datum;
    return iterate(&m, &system, &datum, limits, options);
}

} // namespace

TEST(Iterate, TakesOneStepAndOneToSeeThatItWasTheLastForLinearEquations)
{
    Network n = levelling(1, Hold::fixed);
    const Iteration i = run(n.model, {});
    EXPECT_EQ(i.ending, Ending::converged);
    EXPECT_EQ(i.steps, 2);
    EXPECT_EQ(i.damped, 0);
    EXPECT_LT(i.last_length, 1e-9);
}

TEST(Iterate, ComesBackFromAStepThatDoesNotPay)
{
    // Resection of point 3 by directions to the corners, from first values on the other side of the truth
    Network n = trilateration(70, 60);
    n.model.observations.clear();
    const double angles[3] = {0, 0, 0.3};
    const Code codes[3] = {Code::absent, Code::absent, Code::free};
    n.model.add_setup(3, true, angles, codes);
    for (int p = 0; p < 3; p++) n.observe(Kind::direction, 3, p, 1e-5).setup = 0;
    observe_exactly(n.model);
    int damped = 0, found = 0;
    for (int k = 0; k < 20; k++) {
        Model m = n.model;
        m.value[9] += n.uniform(-60, 60), m.value[10] += n.uniform(-60, 60), m.value[14] += n.uniform(-1, 1);
        m.start = m.value;
        const Iteration i = run(m, {});
        found +=
            i.ending == Ending::converged && std::fabs(m.value[9] - 70) < 1e-6 && std::fabs(m.value[10] - 60) < 1e-6;
        damped += i.damped > 0;
    }
    EXPECT_GE(damped, 3);
    EXPECT_GE(found, 16);
}

TEST(Iterate, EndsAtTheLimitOfSteps)
{
    Network n = trilateration(70, 60);
    observe_exactly(n.model);
    n.model.value[9] = 20;
    IterationLimits limits;
    limits.steps = 2;
    const Iteration i = run(n.model, limits);
    EXPECT_EQ(i.ending, Ending::limit);
    EXPECT_EQ(i.steps, 2);
    EXPECT_GT(i.last_length, limits.length);
}

TEST(Iterate, NeverMakesTheSumOfSquaresLarger)
{
    for (unsigned seed = 1; seed <= 10; seed++) {
        Network n = plane(seed, Hold::fixed, true);
        for (int u = 0; u < 21; u++)
            if (n.model.estimated(u)) n.model.value[u] += n.uniform(-80, 80);
        double before = INFINITY;
        for (int steps = 1; steps <= 12; steps++) {
            Model m = n.model;
            IterationLimits limits;
            limits.steps = steps;
            const double after = run(m, limits).squares;
            EXPECT_LE(after, before * (1 + 1e-9)) << seed << " " << steps;
            before = after;
        }
    }
}

TEST(Iterate, SaysSingularWhereTheMatrixHasNoInverse)
{
    Network n = trilateration(70, 60);
    observe_exactly(n.model);
    n.model.observations.resize(1); // the point can go around the corner
    EXPECT_EQ(run(n.model, {}).ending, Ending::singular);
}

TEST(Iterate, StopsWhenItIsTold)
{
    Network n = plane(1, Hold::fixed, true);
    const std::atomic<bool> stop(true);
    FactorOptions options;
    options.watch.stop = &stop;
    EXPECT_EQ(run(n.model, {}, options).ending, Ending::stopped);

    Options all;
    all.watch.stop = &stop;
    n.model.value = n.model.start;
    EXPECT_EQ(adjust(&n.model, all).status, Status::stopped);
    EXPECT_EQ(n.model.value, n.model.start);
}

TEST(Iterate, BringsTheDatumOfFirstValuesBackFromDifferentStarts)
{
    // the datum belongs to the first values; where the iteration begins plays no part
    Network n = plane(3, Hold::free_all, true);
    std::vector<double> first;
    for (int start = 0; start < 3; start++) {
        Model m = n.model;
        for (int u = 0; u < 21; u++)
            if (m.estimated(u)) m.value[u] += start * n.uniform(-1, 1);
        Options options;
        options.limits.length = 1e-9, options.limits.angle = 1e-12;
        System system = make_system(m);
        Model at_start = m;
        at_start.value = m.start;
        fill(at_start, Derivatives::invariant, &system.equations);
        const Datum found = find_datum(unit_rows(at_start, system.equations));
        FreeDatum datum = free_datum(system.columns, found);
        system.held = held_columns(m, system.columns, found);
        system.derivatives = Derivatives::invariant;
        EXPECT_EQ(iterate(&m, &system, &datum, options.limits, {}).ending, Ending::converged);
        if (start == 0) first = m.value;
        for (int u = 0; u < 21; u++) EXPECT_NEAR(m.value[u], first[u], 1e-8) << start << " " << u;
    }
}
