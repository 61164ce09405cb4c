// The ends of an observation in a network whose points are split by epoch, and how often a point
// is tied.

#include <gtest/gtest.h>

#include <vector>

#include "support/access.h"
#include "support/faults.h"
#include "support/network.h"

namespace {

using Rows = std::vector<std::vector<int>>;

// Loads one distance of an epoch into nsta stations and the other points, all given by their
// rows, in order: the host's index and the epochs at which the point was seen.
class Ends {
public:
    explicit Ends(Network &net) : n(net) {}

    void load(const char *from, const char *to, int time, Rows sta, Rows tar)
    {
        n.distances.clear();
        n.distance(from, to, 1, 1).time = time;
        vorn run(n.ready());
        V(run, nsta) = (int)n.stations.size();
        V(run, npoints) = (int)(n.stations.size() + n.targets.size());
        V(run, ndist) = 1;
        std::vector<int *> isplit;
        for (Rows *rows : {&sta, &tar})
            for (auto &row : *rows) isplit.push_back(row.data());
        const int nepoch = (int)(sta.empty() ? tar : sta)[0].size() - 1;
        ASSERT_EQ((V(run, vornallocate)()), 0);
        (V(run, fill_pt)(nullptr, nullptr, 0, 0, 0));
        ASSERT_EQ((V(run, fill_measure)(1, isplit.data(), (int)sta.size(), (int)tar.size(), nepoch)), 0);
        ip1 = (int)(V(run, dist)[0].p1 - V(run, points));
        ip2 = (int)(V(run, dist)[0].p2 - V(run, points));
    }

    Network &n;
    int ip1 = -1, ip2 = -1;
};

TEST(SplitEnds, KeepAStationAtTheFarEndWithoutTheEpoch)
{
    Network n(3);
    for (const char *name : {"R", "S", "Q", "P"}) n.station(name, 0, 0);
    Ends ends(n);
    ends.load("R", "S", 9, {{1, 1, 2, 3}}, {});
    EXPECT_EQ(ends.ip1, 0);
    EXPECT_EQ(ends.ip2, 1);
}

// The rows that follow are still looked at, with the empty columns carried along.
TEST(SplitEnds, LookFurtherBehindAStationAtTheFarEndWithoutTheEpoch)
{
    Network n(3);
    for (const char *name : {"S", "P", "R", "Q"}) n.station(name, 0, 0);
    Ends ends(n);
    ends.load("R", "S", 3, {{0, 1, 2, 0}, {2, 1, 2, 3}}, {}); // S lacks 3 and has one empty column
    EXPECT_EQ(ends.ip1, 2 - 1 + 3 - 1);
    EXPECT_EQ(ends.ip2, 0);
}

TEST(SplitEnds, TakeTheFirstTargetRowThatHoldsTheEpoch)
{
    Network n(3);
    n.station("S", 0, 0);
    for (const char *name : {"T", "T", "T", "U", "W", "X"}) n.target(name, 0, 0);
    Ends ends(n);
    ends.load("S", "T", 2, {}, {{0, 1, 2}, {1, 1, 2}, {2, 1, 2}}); // the first row holds it
    EXPECT_EQ(ends.ip2, 1 - 1 + 2);
    ends.load("S", "T", 2, {}, {{0, 1, 3}, {1, 1, 2}, {2, 0, 2}}); // the second does
    EXPECT_EQ(ends.ip2, 1 - 1 + 2);
    ends.load("S", "T", 9, {}, {{0, 1, 3}, {1, 1, 2}, {2, 0, 2}}); // none does
    EXPECT_EQ(ends.ip2, 1);
}

TEST(SplitEnds, TieAPointOnceForEachEnd)
{
    Network n(3);
    n.station("S", 0, 0);
    n.target("T", 1, 0);
    n.distance("S", "T", 1, 1);
    n.distance("T", "T", 1, 1); // from a point to itself
    vorn run(n.ready());
    V(run, nsta) = 1;
    V(run, npoints) = V(run, ndist) = 2;
    ASSERT_EQ((V(run, vornallocate)()), 0);
    (V(run, fill_pt)(nullptr, nullptr, 0, 0, 0));
    ASSERT_EQ((V(run, fill_measure)(1, nullptr, 0, 0, 0)), 0);
    EXPECT_EQ(V(run, points)[0].ntie, 1);
    EXPECT_EQ(V(run, points)[1].ntie, 3);
}

} // namespace
