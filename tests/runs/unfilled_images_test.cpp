// A line of an image file that bears a known name and no two numbers is counted and not filled:
// the last record stays empty, and every step of a run ends in front of it.

#include <gtest/gtest.h>

#include "host/folder.h"
#include "runs/photo_net.h"
#include "support/access.h"
#include "support/network.h"

namespace {

class UnfilledImages : public testing::Test {
protected:
    const Folder folder;
    InFolder in{folder.path};
};

TEST_F(UnfilledImages, AreReachedByNoStepOfALeastSquaresRun)
{
    int (vorn::*const entries[])() = {&vorn::vornL2, &vorn::vornjordan};
    for (const auto entry : entries)
        for (const int irun : {0, 1}) {
            Network n(3);
            photo_net(n, true);
            n.p.irun = irun;
            n.p.idebug = 1;
            vorn run(n.ready());
            ASSERT_EQ(run.vornstart(), 0) << n.report();
            ASSERT_EQ(V(run, nobsuv), 2 * NTARGET + 1);
            ASSERT_EQ(V(run, obsuv1)[2 * NTARGET].p1, nullptr);
            EXPECT_EQ((run.*entry)(), 0) << n.report();
            for (int i = 0; i < NTARGET; i++)
                for (int c = 0; c < 3; c++) EXPECT_NEAR(V(run, points)[2 + i].xpt[c], PLACE[i][c], 1e-6);
            (V(run, showmeasures)());
        }
}

} // namespace
