// A whole adjustment as its caller sees it run: its steps, its end when it is told to stop, and the same results
// whatever the number of threads.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <vector>

#include "adjust/adjustment.h"
#include "random_networks.h"

using namespace vornadjust;

namespace {

std::vector<Step> steps_of(Model model, Options options)
{
    std::vector<Step> steps;
    options.watch.begin = [&](Step s) {
        if (steps.empty() || steps.back() != s) steps.push_back(s);
    };
    EXPECT_EQ(adjust(&model, options).status, Status::adjusted);
    return steps;
}

bool has(const std::vector<Step> &steps, Step step) { return std::count(steps.begin(), steps.end(), step) > 0; }

// Squares of points with directions and distances to all eight neighbours.
Network grid(int side, Hold how, unsigned seed)
{
    Network n(seed, frame_of(Space::plane));
    n.points(side * side, 1, 0);
    for (int p = 0; p < side * side; p++)
        for (int k = 0; k < 2; k++) n.model.value[3 * p + k] = 100.0 * ((k ? p % side : p / side) + n.uniform(-.2, .2));
    n.setups(side * side);
    for (int p = 0; p < side * side; p++)
        for (int q = p + 1; q < side * side; q++) {
            if (std::abs(p % side - q % side) > 1 || std::abs(p / side - q / side) > 1) continue;
            n.observe(Kind::direction, p, q, 2e-5);
            n.observe(Kind::direction, q, p, 2e-5);
            n.observe(Kind::plane_distance, p, q, 0.003);
        }
    n.hold(how, 2);
    n.simulate(0.05);
    return n;
}

void expect_same(const Outcome &a, const Outcome &b)
{
    EXPECT_EQ(a.variance_factor, b.variance_factor);
    EXPECT_EQ(a.iteration.steps, b.iteration.steps);
    EXPECT_EQ(a.equations.misclosure, b.equations.misclosure);
    EXPECT_EQ(a.statistics.deviation, b.statistics.deviation);
    EXPECT_EQ(a.statistics.points, b.statistics.points);
    EXPECT_EQ(a.statistics.pairs, b.statistics.pairs);
    ASSERT_EQ(a.statistics.rows.size(), b.statistics.rows.size());
    for (size_t r = 0; r < a.statistics.rows.size(); r++) {
        EXPECT_EQ(a.statistics.rows[r].cofactor, b.statistics.rows[r].cofactor);
        EXPECT_EQ(a.statistics.rows[r].redundancy, b.statistics.rows[r].redundancy);
        EXPECT_EQ(a.statistics.rows[r].normalised, b.statistics.rows[r].normalised);
    }
    ASSERT_EQ(a.weak.size(), b.weak.size());
}

} // namespace

TEST(WholeRun, GoesThroughAllItsSteps)
{
    const std::vector<Step> steps = steps_of(plane(1, Hold::free_all, true).model, {});
    for (Step s : {Step::equations, Step::datum, Step::order, Step::factor, Step::inverse, Step::statistics})
        EXPECT_TRUE(has(steps, s)) << (int)s;
    EXPECT_EQ(steps.front(), Step::equations);
    EXPECT_EQ(steps.back(), Step::statistics);
}

TEST(WholeRun, MakesNoInverseWhereNoPrecisionIsWanted)
{
    for (Hold how : every_hold) {
        Options options;
        options.statistics = false;
        const std::vector<Step> steps = steps_of(plane(1, how, true).model, options);
        EXPECT_TRUE(has(steps, Step::factor));
        EXPECT_FALSE(has(steps, Step::inverse));
        EXPECT_FALSE(has(steps, Step::statistics));
    }
}

TEST(WholeRun, StopsInEveryStepAndLeavesTheValuesAlone)
{
    const Model given = plane(1, Hold::free_all, true).model;
    for (Step at : {Step::equations, Step::datum, Step::order, Step::factor, Step::inverse, Step::statistics}) {
        Model m = given;
        std::atomic<bool> stop{false};
        Options options;
        options.watch.stop = &stop;
        options.watch.begin = [&](Step s) { stop = stop || s == at; };
        EXPECT_EQ(adjust(&m, options).status, Status::stopped) << (int)at;
        EXPECT_EQ(m.value, given.value) << (int)at;
    }
}

TEST(WholeRun, StopsInsideTheFactorAndTheInverse)
{
    const Model given = grid(40, Hold::fixed, 1).model;
    for (Step at : {Step::factor, Step::inverse}) {
        Model m = given;
        std::atomic<bool> stop{false};
        Step now = Step::equations;
        double last = 0.0;
        Options options;
        options.watch.stop = &stop;
        options.watch.begin = [&](Step s) { now = s; };
        options.watch.progress = [&](double share) {
            if (now != at) return;
            last = share;
            stop = stop || share > 0.2;
        };
        EXPECT_EQ(adjust(&m, options).status, Status::stopped);
        EXPECT_GT(last, 0.2);
        EXPECT_LT(last, 1.0);
        EXPECT_EQ(m.value, given.value);
    }
}

TEST(WholeRun, HasTheSameResultsBitByBitWhateverTheNumberOfThreads)
{
    for (Hold how : every_hold) {
        const Model given = grid(45, how, 2).model; // large enough to be shared by threads
        Options options;
        options.pairs = {{0, 1}, {3, 2000}};
        Model one = given;
        const Outcome wanted = adjust(&one, options);
        ASSERT_EQ(wanted.status, Status::adjusted);
        for (int threads : {2, 4}) {
            Model m = given;
            options.threads = threads;
            expect_same(adjust(&m, options), wanted);
            EXPECT_EQ(m.value, one.value) << threads;
        }
    }
}
