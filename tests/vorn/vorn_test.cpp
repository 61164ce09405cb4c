#include <gtest/gtest.h>
#include <math.h>

#include "support/access.h"
#include "support/network.h"

TEST(VornConstructor, TurnsLatitudeIntoRadians)
{
    Network n(2);
    n.p.latitude = 180.0;
    vorn run(n.ready());
    EXPECT_DOUBLE_EQ(V(run, latitude), 4.0 * atan(1.0));
}
