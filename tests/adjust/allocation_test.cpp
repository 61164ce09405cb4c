// Each allocation of an adjustment fails once: std::bad_alloc comes out, and nothing else happens.

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "adjust/adjustment.h"
#include "random_networks.h"

namespace {

thread_local long long to_fail = 0; // the how manieth allocation of this thread from now on fails; 0: none

} // namespace

void *operator new(std::size_t size)
{
    if (to_fail > 0 && --to_fail == 0) throw std::bad_alloc();
    void *p = std::malloc(size > 0 ? size : 1);
    if (!p) throw std::bad_alloc();
    return p;
}

void operator delete(void *p) noexcept { std::free(p); }
void operator delete(void *p, std::size_t) noexcept { std::free(p); }

using namespace vornadjust;

namespace {

// Adjusts copies of a model with the first, the second, ... allocation failing, until none does. Returns their number.
long long fail_each(const Model &model, const Options &options, Status wanted)
{
    for (long long k = 1;; k++) {
        Model m = model;
        try {
            to_fail = k;
            const Outcome o = adjust(&m, options);
            const bool none = to_fail > 0; // otherwise it was memory that a sort can do without
            to_fail = 0;
            EXPECT_EQ(o.status, wanted);
            if (none) return k - 1;
        } catch (const std::bad_alloc &) {
            to_fail = 0;
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
