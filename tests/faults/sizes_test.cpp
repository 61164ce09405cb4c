// Settings at the ends of their ranges: every run ends by a documented code and says something.

#include <gtest/gtest.h>
#include <limits.h>
#include <math.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "faults/engine_run.h"
#include "host/folder.h"
#include "numerics/memory.h"
#include "numerics/packed.h"
#include "support/access.h"
#include "support/bare.h"
#include "support/faults.h"

using namespace vornengine;

namespace {

using vornhost::Solver;

class Extremes : public testing::TestWithParam<const char *> {
protected:
    // Returns what the runs said.
    template <class Change> std::string ends(const Change &change)
    {
        std::string all;
        for (const Solver solver : {Solver::Compact, Solver::Jordan}) {
            Setting setting;
            setting.solver = solver;
            EngineRun network;
            EXPECT_TRUE(network.read(SOURCE_DIR "/examples/" + std::string(GetParam()) + ".inp", setting));
            change(network.model.p);
            const Ended ended = network.run();
            EXPECT_TRUE(ended.documented()) << ended.start << " " << ended.code;
            EXPECT_FALSE(ended.all().empty());
            all += ended.all();
        }
        return all;
    }

    Folder folder;
    InFolder in{folder.path};
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

// A list of which the host says that it has fewer than no records has none.
TEST_P(Extremes, OfTheCountsOfTheLists)
{
    int project::*const counts[] = {
        &project::nstations,  &project::ntargets,  &project::ndistances, &project::nheightdiffs, &project::ndirections,
        &project::nverticals, &project::nazimuths, &project::nbaselines, &project::ngroups,      &project::ncameras,
        &project::nimages,    &project::nlumpdefs, &project::npairs};
    for (int project::*const &count : counts) {
        const std::string none = ends([count](project &p) { p.*count = 0; });
        for (const int n : {INT_MIN, -3, -1})
            EXPECT_TRUE(ends([count, n](project &p) { p.*count = n; }) == none)
                << n << " of list " << (&count - counts);
    }
}

TEST_P(Extremes, OfTheDimension)
{
    for (const int n : {INT_MIN, -1, 0, 4, INT_MAX}) ends([n](project &p) { p.dim = n; });
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
    EXPECT_EQ(zeroed((long long)(SIZE_MAX / 24) + 1, 24), nullptr); // 24 times as many wrap to 8 bytes
    EXPECT_EQ(zeroed((long long)(SIZE_MAX / 8) + 2, 8), nullptr);
    EXPECT_EQ(packed_size(LLONG_MAX), -1);
    EXPECT_EQ(packed_size(3000000000LL), 4500000001500000000LL);
}

// A star of height differences has a full profile: with 4-byte pointers 33,000 points need more
// bytes than there are addresses, and the count of the bytes wraps to some 60 millions.
TEST(Arrays, OfAProfileBeyondTheAddressSpaceFindNoMemory)
{
    if (sizeof(void *) > 4) GTEST_SKIP() << "such a profile fits into the address space";
    const int count = 33000;
    Network n(1);
    for (int i = 0; i < count; i++) {
        char name[9];
        snprintf(name, sizeof name, "%-8d", i);
        n.target(name, 0, 0, 100.0);
        if (i > 0) n.heightdiff("0       ", name, 0.0, 0.001);
    }
    n.target("fixed   ", 0, 0, 100.0).ix[2] = CODE_FIXED;
    n.heightdiff("0       ", "fixed   ", 0.0, 0.001);
    n.p.irun = 0;
    vorn run(n.ready());
    ASSERT_EQ(run.vornstart(), 0);
    EXPECT_EQ(run.vornL2(), -2);
    EXPECT_NE(n.report().find("\n*** pb with compact allocation ***\n"), std::string::npos);
}

// Sums of counts that pass the largest int.

// Three height differences between three points.
struct Triangle : Network {
    Triangle() : Network(1)
    {
        target("A", 0, 0, 100.0).ix[2] = CODE_FIXED;
        target("B", 0, 0, 101.0);
        target("C", 0, 0, 102.0);
        heightdiff("A", "B", 1.0, 0.001);
        heightdiff("B", "C", 1.0, 0.001);
        heightdiff("C", "A", -2.0, 0.001);
    }
};

// As an int the sum is 2, less than the three residuals of the host's list.
TEST(Counts, OfResidualsBeyondAnIntFindNoMemory)
{
    Triangle n;
    vorn run(n.ready());
    ASSERT_EQ(run.vornstart(), 0);
    V(run, ndist) = V(run, ndir1) = INT_MAX;
    V(run, ndifh) = 3;
    V(run, ndir2) = 1;
    EXPECT_EQ(V(run, backtoproject)(), -2);
    EXPECT_EQ(n.messages.lines.back(), "Allocation in pproject->runresults failed");
    V(run, ndist) = V(run, ndir1) = V(run, ndir2) = 0;
}

TEST(Counts, OfPointsWithMoreUnknownsThanAnIntFindNoMemory)
{
    Triangle n;
    vorn run(n.ready());
    for (const int npoints : {INT_MAX / 12 + 1, INT_MAX}) {
        V(run, npoints) = npoints;
        fail_allocation(0);
        EXPECT_EQ(V(run, vornallocate)(), -1);
        EXPECT_EQ(allocations(), 0);
    }
    V(run, npoints) = 0;
    EXPECT_NE(n.report().find("Program stops with the allocation of points"), std::string::npos);
}

TEST(Counts, OfImagePointsStayWithinAnInt)
{
    const Folder folder;
    Network n(3);
    n.station("S", 0, 0);
    for (const char *name : {"A       ", "B       ", "C       ", "D       "}) n.target(name, 1, 1);
    image_input image = image_input();
    image.status = 1;
    strcpy(image.station, "S");
    const std::string path = folder.write("u", "A        1 1\nB        1 1\nC        1 1\nD        1 1\n");
    ASSERT_LT(path.size(), sizeof image.file);
    snprintf(image.file, sizeof image.file, "%s", path.c_str());
    project *p = n.ready();
    p->images = &image;
    p->nimages = 1;
    vorn run(p);
    V(run, nobsuv) = INT_MAX - 2;
    V(run, count_photo)();
    EXPECT_EQ(image.status, 1);
    EXPECT_EQ(V(run, nobsuv), INT_MAX);
    V(run, nobsuv) = 0;
}

TEST(Counts, OfDegreesOfFreedomStayWithinAnInt)
{
    Bare s(3);
    s.wire(0);
    S(s, ngps) = S(s, nobsuv) = INT_MAX;
    S(s, variances)(1.0, 1.0, 0, 0, 0, 0, 0, 0, 0);
    S(s, ngps) = S(s, nobsuv) = 0;
    EXPECT_EQ(s.result.dof, INT_MAX);
}

INSTANTIATE_TEST_SUITE_P(Of, Extremes,
                         testing::Values("niemeier_levelling_free", "grossmann_directions", "total_station_heights",
                                         "mixed_fixed_heights", "instrument_constants", "ghilani_baselines",
                                         "monitoring_wall", "photo_block"),
                         [](const auto &one) { return one.param; });

} // namespace
