// Loops in blocks, and what is computed in them, whatever the number of threads.

#include "adjust/blocks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

#include "adjust/adjustment.h"
#include "random_networks.h"

using namespace vornadjust;

namespace {

// A band of points in space, each with baselines to the next three: as many groups as baselines.
Network band()
{
    constexpr int n = 3000;
    Network net(5, Frame());
    net.points(n, 1000.0, 100.0);
    net.hold(Hold::fixed, 1);
    for (int p = 0; p < n; p++)
        for (int q = p + 1; q < n && q <= p + 3; q++) net.baseline(p, q, 0.01);
    net.simulate(0.1);
    return net;
}

} // namespace

TEST(Blocks, VisitEachItemOnce)
{
    for (const int n : {0, 1, 4096, 8191, 8192, 8193, 50001})
        for (const int threads : {1, 2, 4}) {
            std::vector<std::atomic<int>> visits((size_t)n);
            in_blocks(threads, n, [&](int first, int end) {
                for (int i = first; i < end; i++) visits[(size_t)i]++;
            });
            for (const std::atomic<int> &v : visits) ASSERT_EQ(v, 1) << n << " " << threads;
        }
}

TEST(Blocks, ThrowWhatABlockThrows)
{
    const auto work = [](int first, int) {
        if (first > 10000) throw std::out_of_range("a block");
    };
    EXPECT_THROW(in_blocks(2, 50000, work), std::out_of_range);
}

TEST(Blocks, LeaveBaselinesAndTheirTestsTheSameBitsForAnyNumberOfThreads)
{
    const Network net = band();
    Options options;
    Model one = net.model;
    const Outcome wanted = adjust(&one, options);
    ASSERT_EQ(wanted.status, Status::adjusted);
    ASSERT_GT(wanted.rows, 3 * 8192);
    options.threads = 2;
    Model two = net.model;
    const Outcome found = adjust(&two, options);
    EXPECT_EQ(two.value, one.value);
    EXPECT_EQ(found.statistics.deviation, wanted.statistics.deviation);
    for (size_t r = 0; r < wanted.statistics.rows.size(); r++) {
        ASSERT_EQ(found.statistics.rows[r].normalised, wanted.statistics.rows[r].normalised) << r;
        ASSERT_EQ(found.statistics.rows[r].effect, wanted.statistics.rows[r].effect) << r;
    }
    const KindStatistics &kind = wanted.statistics.kinds[(size_t)Kind::baseline];
    EXPECT_EQ(found.statistics.kinds[(size_t)Kind::baseline].squares, kind.squares);
    EXPECT_EQ(kind.rows, wanted.rows);
    EXPECT_NEAR(kind.redundancy, wanted.redundancy, 1e-6); // of n rows, rounded
    EXPECT_NEAR(kind.squares, wanted.iteration.squares, 1e-8 * wanted.iteration.squares);
}

TEST(Blocks, TellTheFirstGroupWithABadCovarianceForAnyNumberOfThreads)
{
    Network net = band();
    for (const int bad : {8500, 5000}) { // the second variance: its row depends on the one before
        double *covariance = &net.model.covariance[net.model.groups[(size_t)bad].first];
        for (int k = 0; k < 3; k++) covariance[3 + k] = covariance[k];
        covariance[1] = covariance[3] = covariance[4] = covariance[0];
    }
    for (const int threads : {1, 2}) {
        Model m = net.model;
        Options options;
        options.threads = threads;
        const Outcome found = adjust(&m, options);
        EXPECT_EQ(found.status, Status::bad_covariance);
        EXPECT_EQ(found.bad_group, 5000);
        EXPECT_EQ(found.bad_row, 3 * 5000 + 1);
    }
}
