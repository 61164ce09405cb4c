// A run with images is a run in space in all its steps, whatever dimension the host has set.

#include <gtest/gtest.h>

#include <math.h>

#include "host/folder.h"
#include "runs/photo_net.h"
#include "support/access.h"

namespace {

class PhotoSpace : public testing::Test {
protected:
    const Folder folder;
    InFolder in{folder.path};
};

const std::string FORCED = "fill_vorn: With photogrammetric data, dim=3\n";

struct Taken {
    std::string report;
    std::vector<double> x, sx;
};

// Images and a distance from the first station to the first target, which space alone explains.
Taken taken_with(int dim, int (vorn::*entry)(), bool changed)
{
    Network n(dim);
    photo_net(n, false);
    const double *t = PLACE[0];
    n.distance("S1      ", "T1      ", sqrt(t[0] * t[0] + t[1] * t[1] + t[2] * t[2]) + 0.001, 0.001);
    n.p.irun = 1;
    {
        vorn run(n.ready());
        EXPECT_EQ(run.vornstart(), 0) << n.report();
        if (changed) n.p.dim = 2, n.p.iphoto = 0;
        EXPECT_EQ((run.*entry)(), 0) << n.report();
    }
    Taken taken = {n.report(), {}, {}};
    const result &r = *n.p.runresults;
    EXPECT_EQ(r.dim, 3);
    for (int i = 0; i < r.nstar + r.ntarr && r.zpt && r.szpt; i++) {
        for (const double *a : {r.xpt, r.ypt, r.zpt}) taken.x.push_back(a[i]);
        for (const double *a : {r.sxpt, r.sypt, r.szpt}) taken.sx.push_back(a[i]);
    }
    return taken;
}

TEST_F(PhotoSpace, IsWorkedOutWhateverDimensionTheHostHasSet)
{
    int (vorn::*const entries[])() = {&vorn::vornL2, &vorn::vornjordan};
    for (const auto entry : entries) {
        const Taken space = taken_with(3, entry, false);
        ASSERT_EQ(space.x.size(), 3u * (2 + NTARGET));
        for (int i = 0; i < NTARGET; i++)
            for (int c = 0; c < 3; c++) {
                EXPECT_NEAR(space.x[(size_t)(3 * (2 + i) + c)], PLACE[i][c], 0.01);
                EXPECT_GT(space.sx[(size_t)(3 * (2 + i) + c)], 0.0);
            }
        for (const int dim : {1, 2, 4, 100}) {
            const Taken taken = taken_with(dim, entry, false);
            EXPECT_EQ(taken.x, space.x) << dim;
            EXPECT_EQ(taken.sx, space.sx) << dim;
            EXPECT_EQ(taken.report, FORCED + space.report) << dim;
        }
        EXPECT_EQ(taken_with(3, entry, true).report, space.report);
    }
}

} // namespace
