// Settings at the ends of their ranges: every run ends by a documented code and says something.

#include <gtest/gtest.h>
#include <limits.h>
#include <math.h>

#include <filesystem>

#include "faults/engine_run.h"
#include "host/folder.h"
#include "numerics/memory.h"

namespace {

using vornhost::Solver;

class Extremes : public testing::TestWithParam<const char *> {
protected:
    Extremes() { std::filesystem::current_path(folder.path); }
    ~Extremes() override { std::filesystem::current_path(before); }

    template <class Change> void ends(const Change &change)
    {
        for (const Solver solver : {Solver::Compact, Solver::Jordan}) {
            Setting setting;
            setting.solver = solver;
            EngineRun network;
            ASSERT_TRUE(network.read(SOURCE_DIR "/examples/" + std::string(GetParam()) + ".inp", setting));
            change(network.model.p);
            const Ended ended = network.run();
            EXPECT_TRUE(ended.documented()) << ended.start << " " << ended.code;
            EXPECT_FALSE(ended.all().empty());
        }
    }

    Folder folder;
    std::filesystem::path before = std::filesystem::current_path();
};

TEST_P(Extremes, OfTheIterations)
{
    for (const int n : {INT_MIN, -1, 0, 1, INT_MAX}) ends([n](project &p) { p.itmax = n; });
}

TEST_P(Extremes, OfTheConvergence)
{
    for (const double x : {-1.0, 0.0, (double)INFINITY, (double)NAN, 1e308})
        ends([x](project &p) { p.convergence = x; });
}

TEST_P(Extremes, OfTheEarth)
{
    for (const double x : {-1e308, 0.0, 1e-300, (double)INFINITY, (double)NAN})
        ends([x](project &p) {
            p.iearth = 1;
            p.radius = p.horigin = p.latitude = x;
        });
}

TEST_P(Extremes, OfTheCodes)
{
    for (const int code : {INT_MIN, -7, 77, INT_MAX})
        ends([code](project &p) { p.iredux = p.iunit = p.iearth = p.igps = p.irun = code; });
}

TEST_P(Extremes, OfTheStandardDeviations)
{
    for (const double x : {-1.0, 0.0, 1e-308, 1e308, (double)INFINITY, (double)NAN})
        ends([x](project &p) { p.sdist = p.sdifh = p.sdir1 = p.sdir2 = x; });
}

// Products of counts that leave the address space, and counts below zero.
TEST(Arrays, BeyondTheAddressSpaceAreRefused)
{
    EXPECT_EQ(zeroed(-1, 1), nullptr);
    EXPECT_EQ(zeroed(LLONG_MAX, sizeof(double)), nullptr);
    EXPECT_EQ(zeroed_square(-1, 1), nullptr);
    EXPECT_EQ(zeroed_square(INT_MAX, sizeof(double)), nullptr);
    EXPECT_EQ(zeroed_square(3037000500LL, 1), nullptr);
    EXPECT_EQ(zeroed_square(LLONG_MAX, 1), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Of, Extremes,
                         testing::Values("niemeier_levelling_free", "grossmann_directions", "total_station_heights",
                                         "mixed_fixed_heights"),
                         [](const auto &one) { return one.param; });

} // namespace
