#include <gtest/gtest.h>

#include "support/access.h"
#include "support/network.h"

namespace {

TEST(Load, TurnsHostRecordsIntoPointsAndMeasures)
{
    Network n(2);
    n.station("S", 1, 2);
    n.target("A", 100, 0);
    n.target("B", 0, 100);
    n.distance("S", "A", 99.0, 0.001);
    n.direction("S", "B", 1.5, 0.002);
    vorn run(n.ready());
    ASSERT_EQ((V(run, fill_vorn)()), 0);
    EXPECT_EQ(V(run, nsta), 1);
    EXPECT_EQ(V(run, ntar), 2);
    ASSERT_EQ(V(run, npoints), 3);
    const point *p = V(run, points);
    EXPECT_STREQ(p[0].name, "S");
    EXPECT_STREQ(p[2].name, "B");
    ASSERT_EQ(V(run, ndist), 1);
    ASSERT_EQ(V(run, ndir1), 1);
    EXPECT_EQ(V(run, dist)[0].p1, p);
    EXPECT_EQ(V(run, dist)[0].p2, p + 1);
    EXPECT_EQ(V(run, dir1)[0].p2, p + 2);
    EXPECT_EQ(V(run, dir1)[0].val[0], 1.5);
    EXPECT_EQ(p[0].ntie, 2);
    EXPECT_EQ(p[1].ntie, 1);
}

} // namespace
