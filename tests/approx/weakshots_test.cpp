#include <gtest/gtest.h>

#include <vector>

#include "approx/weakshots.h"
#include "support/faults.h"
#include "support/network.h"

using namespace vornengine;

namespace {

class WeakShots : public ::testing::Test {
protected:
    explicit WeakShots(int n = 5) { EXPECT_EQ(weakshots_take(&s, n), 0); }
    ~WeakShots() override { weakshots_free(&s); }

    weakshots s = weakshots();
    std::vector<int> isys = {10, 11, 12, 13, 14};
};

TEST_F(WeakShots, ArePutAsideWhileThreeStay)
{
    weakshots_put_aside(&s, 1, 0.1, isys.data());
    weakshots_put_aside(&s, 3, 0.2, isys.data());
    weakshots_put_aside(&s, 4, 0.0, isys.data());
    EXPECT_EQ(isys, (std::vector<int>{10, -1, 12, -1, 14}));
    EXPECT_EQ(s.nweak, 2);
    EXPECT_EQ(s.iweak[1], 11);
    EXPECT_EQ(s.iweak[3], 13);
    EXPECT_EQ(s.iweak[4], -1);
    EXPECT_EQ(s.weak[3], 0.2);
}

TEST_F(WeakShots, LeaveNoGap)
{
    weakshots_put_aside(&s, 0, 0.1, isys.data());
    weakshots_put_aside(&s, 2, 0.1, isys.data());
    EXPECT_EQ(weakshots_close_gaps(&s, isys.data()), 3);
    isys.resize(3);
    EXPECT_EQ(isys, (std::vector<int>{11, 13, 14}));
}

TEST_F(WeakShots, ComeBackByTheLargestAngleUntilThreeAreStrong)
{
    const double angle[5] = {0.1, 0.3, 0.2, 0.0, 0.0};
    for (int k = 0; k < 3; k++) { // three put aside, which put_aside itself would not allow
        s.iweak[k] = isys[k];
        s.weak[k] = angle[k];
        isys[k] = -1;
    }
    s.nweak = 4;
    s.iweak[4] = 14;
    isys[4] = -1;
    Network n(2);
    weakshots_put_back(&s, isys.data(), n.ready()->out);
    EXPECT_EQ(n.report(), "when ifois =0  put back 1\nwhen ifois =1  put back 2\n");
    EXPECT_EQ(isys, (std::vector<int>{-1, 11, 12, 13, -1}));
    EXPECT_EQ(s.nweak, 2);
    EXPECT_EQ(s.iweak[1], -1);
}

TEST(WeakShotsOfTwo, HaveNothingToPutBack)
{
    weakshots s = weakshots();
    ASSERT_EQ(weakshots_take(&s, 2), 0);
    Network n(2);
    int isys[2] = {4, 5};
    weakshots_put_back(&s, isys, n.ready()->out);
    EXPECT_EQ(n.report(), "");
    weakshots_free(&s);
    weakshots_free(&s);
}

TEST(WeakShotsMemory, EachFailureIsReported)
{
    for (int k = 1; k <= 2; k++) {
        weakshots s = weakshots();
        fail_allocation(k);
        EXPECT_EQ(weakshots_take(&s, 4), -1);
        fail_allocation(0);
        weakshots_free(&s);
    }
}

} // namespace
