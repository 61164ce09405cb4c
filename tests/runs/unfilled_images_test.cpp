// A line of an image file that bears a known name and no two numbers is counted and not filled:
// the last record stays empty, and every step of a run ends in front of it.

#include <gtest/gtest.h>
#include <string.h>

#include "host/folder.h"
#include "support/access.h"
#include "support/network.h"

namespace {

const int NTARGET = 5;
const double PLACE[NTARGET][3] = {{-4, -3, 20}, {5, -2, 22}, {3, 6, 18}, {-2, 5, 25}, {1, 1, 21}};

// Two fixed stations take the targets with a camera of focal length 1.
void photo_net(Network &n)
{
    n.p.iphoto = 1;
    n.p.suv = 1e-4;
    const char *stations[2] = {"S1      ", "S2      "}, *files[2] = {"one.txt", "two.txt"};
    for (int i = 0; i < NTARGET; i++) {
        const std::string name = std::string("T") + (char)('1' + i) + "      ";
        n.target(name.c_str(), PLACE[i][0] + 0.01, PLACE[i][1] - 0.01, PLACE[i][2]);
    }
    camera_input cam = camera_input();
    cam.status = 1;
    strcpy(cam.name, "CAM");
    cam.pu = cam.pv = cam.p[0] = 1.0;
    for (int k = 0; k < 10; k++) cam.ip[k] = k < 3 ? CODE_FIXED : CODE_ABSENT;
    n.cameras.push_back(cam);
    for (int s = 0; s < 2; s++) {
        station_input &station = n.station(stations[s], 10.0 * s, 0, 0);
        for (int c = 0; c < 3; c++) station.ix[c] = station.ir[c] = CODE_FIXED;
        FILE *f = fopen(files[s], "w");
        for (int i = 0; i < NTARGET; i++)
            fprintf(f, "T%d      %.9f %.9f 1e-4 1e-4\n", i + 1, (PLACE[i][0] - 10.0 * s) / PLACE[i][2],
                    PLACE[i][1] / PLACE[i][2]);
        if (s == 1) fprintf(f, "T1      1.5\n");
        fclose(f);
        image_input im = image_input();
        im.status = 1;
        strcpy(im.file, files[s]);
        strcpy(im.station, stations[s]);
        strcpy(im.camera, "CAM");
        n.images.push_back(im);
    }
}

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
            photo_net(n);
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
