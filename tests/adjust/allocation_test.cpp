// Each allocation of an adjustment fails once: std::bad_alloc comes out, and nothing else happens.

#include <gtest/gtest.h>

#include <new>

#include "adjust/adjustment.h"
#include "allocations.h"
#include "random_networks.h"

using namespace vornadjust;

namespace {

// Adjusts copies of a model with the first, the second, ... allocation failing, until none does. Returns their number.
long long fail_each(const Model &model, const Options &options, Status wanted)
{
    for (long long k = 0;; k++) {
        Model m = model;
        try {
            allocations_left = k;
            const Outcome o = adjust(&m, options);
            const bool none = allocations_left >= 0; // otherwise it was memory that a sort can do without
            allocations_left = -1;
            EXPECT_EQ(o.status, wanted);
            if (none) return k;
        } catch (const std::bad_alloc &) {
        }
    }
}

} // namespace

TEST(Allocation, FailsOnceEachInAFreePlaneNetworkWithStatistics)
{
    Options options;
    options.pairs = {{0, 3}};
    EXPECT_GT(fail_each(plane(1, Hold::free_all, true).model, options, Status::adjusted), 100);
}

TEST(Allocation, FailsOnceEachInCorrelatedSessions)
{
    EXPECT_GT(fail_each(sessions(1).model, {}, Status::adjusted), 100);
}

TEST(Allocation, FailsOnceEachInTheSearchForWhatIsNotDetermined)
{
    Model m = plane(5, Hold::fixed, true).model;
    for (Observation &o : m.observations) o.use = o.kind == Kind::plane_distance && o.to != 6;
    EXPECT_GT(fail_each(m, {}, Status::undetermined), 100);
}

TEST(Allocation, FailsOnceEachWhereNothingConverges)
{
    Model m = plane(4, Hold::fixed, true).model;
    m.observations[3].value[0] += 1.0;
    Options options;
    options.limits.steps = 1;
    EXPECT_GT(fail_each(m, options, Status::no_convergence), 100);
}
