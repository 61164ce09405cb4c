// Data snooping on networks whose gross errors are known.

#include "adjust/snoop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "random_networks.h"

using namespace vornadjust;

namespace {

Options baarda()
{
    Options o;
    o.suspects.most = 5;
    o.suspects.limit = [](int, int, double) { return 3.2905; };
    return o;
}

std::vector<int> alone(const Model &m)
{
    std::vector<int> unit(m.observations.size());
    std::iota(unit.begin(), unit.end(), 0);
    return unit;
}

} // namespace

TEST(Snoop, LeavesOutGrossErrorsAndNothingElse)
{
    Model m = plane(11, Hold::fixed, true).model;
    m.observations[5].value[0] += 30 * m.observations[5].sigma[0];
    m.observations[20].value[0] -= 50 * m.observations[20].sigma[0];
    const Snooped s = snoop(&m, baarda(), alone(m));
    ASSERT_EQ(s.outcome.status, Status::adjusted);
    EXPECT_EQ(s.left_out, (std::vector<int>{20, 5}));
    EXPECT_TRUE(s.ended);
    ASSERT_EQ(s.steps.size(), 2u);
    EXPECT_GT(s.steps[0].variance_factor, s.steps[1].variance_factor);
    EXPECT_FALSE(m.observations[5].use || m.observations[20].use);
    EXPECT_TRUE(s.outcome.suspects.empty());
}

TEST(Snoop, EndsWithTheNetworkWithoutThem)
{
    Model m = plane(11, Hold::free_all, true).model;
    m.observations[5].value[0] += 30 * m.observations[5].sigma[0];
    Model without = m;
    without.observations[5].use = false;
    const Outcome o = adjust(&without, {});
    const Snooped s = snoop(&m, baarda(), alone(m));
    ASSERT_EQ(s.left_out, std::vector<int>{5});
    EXPECT_EQ(m.value, without.value);
    EXPECT_EQ(s.outcome.redundancy, o.redundancy);
    EXPECT_EQ(s.outcome.variance_factor, o.variance_factor);
}

TEST(Snoop, LeavesACleanNetworkAsItIs)
{
    Model m = levelling(3, Hold::fixed).model, same = m;
    const Snooped s = snoop(&m, baarda(), alone(m));
    EXPECT_TRUE(s.steps.empty() && s.left_out.empty() && s.ended);
    EXPECT_EQ(adjust(&same, {}).variance_factor, s.outcome.variance_factor);
    EXPECT_EQ(m.value, same.value);
}

// Two lines that contradict one another: whichever is left out, it is told that the other may be the wrong one.
TEST(Snoop, TellsWhatCouldBeWrongInItsPlace)
{
    Network n(1, frame_of(Space::heights));
    n.points(2, 100, 10);
    for (int i = 0; i < 3; i++) n.observe(Kind::height_difference, 0, 1, 0.001);
    n.hold(Hold::fixed, 1);
    n.simulate(0.0);
    n.model.observations[2].use = false;
    n.model.observations[0].value[0] += 1.0;
    const Snooped s = snoop(&n.model, baarda(), alone(n.model), {100, 0.9});
    ASSERT_EQ(s.left_out.size(), 1u);
    EXPECT_EQ(s.steps[0].alike, std::vector<int>{1 - s.left_out[0]});
    EXPECT_FALSE(n.model.observations[2].use); // as the model had it
}

TEST(Snoop, StopsAtItsLimit)
{
    Model m = plane(11, Hold::fixed, true).model;
    for (int i = 0; i < 4; i++) m.observations[5 * i].value[0] += 200 * m.observations[5 * i].sigma[0];
    const Snooped s = snoop(&m, baarda(), alone(m), {2, 0.5});
    EXPECT_EQ(s.left_out.size(), 2u);
    EXPECT_FALSE(s.ended);
}

// What belongs together goes together.
TEST(Snoop, LeavesOutWholeUnits)
{
    Model m = plane(11, Hold::fixed, true).model;
    m.observations[5].value[0] += 30 * m.observations[5].sigma[0];
    std::vector<int> unit = alone(m);
    unit[20] = 5;
    for (size_t i = 21; i < unit.size(); i++) unit[i]--;
    const Snooped s = snoop(&m, baarda(), unit);
    ASSERT_EQ(s.left_out, std::vector<int>{5});
    EXPECT_FALSE(m.observations[5].use || m.observations[20].use);
    EXPECT_TRUE(m.observations[21].use);
}

// A gross error of a size that hides behind a larger one makes a good observation suspect first; it comes back.
TEST(Snoop, TakesBackWhatOnlySufferedFromOthers)
{
    int back = 0;
    for (unsigned seed = 31; seed <= 60; seed++) {
        Model m = plane(seed, Hold::fixed, true).model;
        for (int i = 0; i < 5; i++)
            m.observations[7 * i].value[0] +=
                (seed + i) % 2 ? 15 * m.observations[7 * i].sigma[0] : -15 * m.observations[7 * i].sigma[0];
        const Snooped s = snoop(&m, baarda(), alone(m));
        if (s.outcome.status != Status::adjusted) continue;
        for (const SnoopStep &step : s.steps) {
            if (step.action != SnoopStep::Action::taken_again) continue;
            back++;
            EXPECT_TRUE(m.observations[step.unit].use);
            EXPECT_EQ(std::count(s.left_out.begin(), s.left_out.end(), step.unit), 0);
        }
        if (s.ended) {
            for (int o : s.left_out) EXPECT_FALSE(m.observations[o].use);
        }
    }
    EXPECT_GT(back, 0);
}
