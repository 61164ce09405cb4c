// The codes of the set-up of a run: what each failure on the way returns, and which steps a
// run leaves out.

#include <gtest/gtest.h>
#include <stdio.h>

#include <functional>
#include <string>
#include <vector>

#include "support/access.h"
#include "support/faults.h"
#include "support/network.h"

namespace {

bool holds(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

// Fails every allocation of the set-up in turn and tells the hook code and report of each; the
// last call is that of a set-up in which none failed.
void fail_each(void (*build)(Network &), const std::function<void(int code, const std::string &report)> &hook)
{
    bool failed = true;
    for (int n = 1; failed; n++) {
        ASSERT_LT(n, 1000);
        Network net(2);
        build(net);
        vorn run(net.ready());
        fail_allocation(n);
        const int code = run.vornstart();
        failed = allocations() >= n;
        fail_allocation(0);
        hook(code, net.report());
    }
}

// Two fixed stations that sight the three targets of lump 5 at the epochs 1 and 2.
void lump_net(Network &n)
{
    n.p.dim = 3;
    n.p.lumpmethod = 1;
    for (int i = 0; i < 2; i++) {
        station_input &s = n.station(i ? "S2" : "S1", 100.0 * i, 0, 0);
        for (int c = 0; c < 3; c++) s.ix[c] = s.ir[c] = CODE_FIXED;
    }
    const double x[3] = {10, 90, 50}, y[3] = {50, 60, 80};
    const char *names[3] = {"A", "B", "C"};
    for (int i = 0; i < 3; i++) n.target(names[i], x[i], y[i], 5.0 * i).ilump = 5;
    for (const char *from : {"S1", "S2"})
        for (const char *to : names)
            for (int epoch = 1; epoch <= 2; epoch++) {
                n.direction(from, to, 0.5, 0.001).time = epoch;
                n.vertical(from, to, 0.1, 0.001).time = epoch;
            }
}

TEST(VornstartCode, IsMinus2WhenTheLumpsFindNoMemory)
{
    int found = 0, last = 1;
    fail_each(lump_net, [&](int code, const std::string &report) {
        EXPECT_EQ(code == -2, holds(report, "lumpcheck: Cannot allocate")) << report;
        found += code == -2;
        last = code;
    });
    EXPECT_GT(found, 10); // tables, records, their nine arrays
    EXPECT_EQ(last, 0);
}

TEST(VornstartCode, Is0WhenTheLumpsAreOnlyRefused)
{
    Network n(3);
    lump_net(n);
    n.p.iredux = 1;
    vorn run(n.ready());
    EXPECT_EQ(run.vornstart(), 0) << n.report();
    EXPECT_TRUE(holds(n.report(), "lumpcheck: no reduction on observations with lumps now\n"));
    EXPECT_EQ(V(run, nlump), 0);
}

// The points are split instead; their copies have no coordinates, which stops this run behind
// the place of the check.
TEST(Vornstart, ChecksNoLumpsThatAreComparedLater)
{
    Network n(3);
    lump_net(n);
    n.p.lumpmethod = 9;
    n.p.irun = -2;
    n.p.iredux = 1; // the check would refuse
    vorn run(n.ready());
    EXPECT_EQ(run.vornstart(), -5) << n.report();
    EXPECT_FALSE(holds(n.report(), "lumpcheck"));
    EXPECT_EQ(V(run, npoints), 2 + 3 * 2);
}

// Without directions there are no epochs to split the points by, and the lumps are still counted.
TEST(Vornstart, ChecksNoLumpsThatCannotBeCompared)
{
    for (int method : {1, 9}) {
        Network n(3);
        lump_net(n);
        n.p.lumpmethod = method;
        n.directions.clear();
        n.verticals.clear();
        for (const char *to : {"A", "B", "C"})
            for (const char *from : {"S1", "S2"})
                for (int k = 0; k < 2; k++) n.distance(from, to, 50, 0.001);
        vorn run(n.ready());
        EXPECT_EQ(run.vornstart(), 0) << n.report();
        EXPECT_EQ(holds(n.report(), "lumpcheck"), method == 1) << n.report();
    }
}

TEST(Vornstart, ChecksNoLumpsWhereThereAreNone)
{
    Network n(3);
    lump_net(n);
    for (auto &t : n.targets) t.ilump = 0;
    n.p.iredux = 1;
    vorn run(n.ready());
    EXPECT_EQ(run.vornstart(), 0) << n.report();
    EXPECT_FALSE(holds(n.report(), "lumpcheck"));
}

// A free station between three fixed targets, its orientation held, every distance twice.
void plane_net(Network &n)
{
    n.station("S", 10, 20).ir[2] = CODE_FIXED;
    const double x[3] = {100, 0, -50}, y[3] = {0, 100, -50};
    const char *names[3] = {"A", "B", "C"};
    for (int i = 0; i < 3; i++) {
        target_input &t = n.target(names[i], x[i], y[i]);
        t.ix[0] = t.ix[1] = CODE_FIXED;
        for (int k = 0; k < 2; k++) n.distance("S", names[i], 100, 0.001);
    }
}

TEST(VornstartCode, IsMinus1WhenTheNetworkFindsNoMemory)
{
    int found = 0, last = 1;
    fail_each(plane_net, [&](int code, const std::string &report) {
        EXPECT_EQ(code == -1, holds(report, "fill_vorn: Stop in vornallocate\n")) << report;
        found += code == -1;
        last = code;
    });
    EXPECT_EQ(found, 2); // points, distances
    EXPECT_EQ(last, 0);
}

TEST(VornstartCode, IsMinus3WithoutADatum)
{
    Network n(2);
    n.station("S", 10, 20);
    n.target("A", 100, 0).ix[0] = CODE_FIXED;
    n.targets[0].ix[1] = CODE_FIXED;
    n.distance("S", "A", 92, 1); // the direction to the fixed point stays open
    vorn run(n.ready());
    EXPECT_EQ(run.vornstart(), -3);
    EXPECT_EQ(V(run, nunk), 0); // the unknowns have not been numbered
}

TEST(VornstartCode, IsMinus4WhereAPointCannotBeFound)
{
    Network n(2);
    plane_net(n);
    n.target("D", 0, 0).status = STATUS_COMPUTE;
    for (int k = 0; k < 2; k++) n.distance("S", "D", 50, 0.001); // a circle, no point
    vorn run(n.ready());
    EXPECT_EQ(run.vornstart(), -4) << n.report();
    EXPECT_EQ(V(run, iapprox), 9);
    EXPECT_EQ(V(run, nunk), 0);
    EXPECT_TRUE(n.messages.questions.empty());
}

TEST(Vornstart, NeverComputesCoordinatesOfAPhotogrammetricRun)
{
    for (int irun : {0, 1, -2}) {
        Network n(2);
        plane_net(n);
        n.p.irun = irun;
        n.p.iphoto = 1;
        n.messages.answer = 1; // nobody asks
        for (auto &t : n.targets) t.ix[2] = CODE_FIXED;
        for (int &code : n.stations[0].ir) code = CODE_FIXED;
        vorn run(n.ready());
        EXPECT_EQ(run.vornstart(), 0) << n.report();
        EXPECT_TRUE(n.messages.questions.empty());
    }
}

// Only 1 brings images, but no other flag than 0 lets coordinates be computed.
TEST(Vornstart, ComputesNoCoordinatesWithAnyPhotogrammetricFlag)
{
    for (int flag : {-1, 2, 100}) {
        Network n(2);
        plane_net(n);
        n.p.iphoto = flag;
        n.messages.answer = 1; // nobody asks
        vorn run(n.ready());
        EXPECT_EQ(run.vornstart(), 0) << n.report();
        EXPECT_TRUE(n.messages.questions.empty()) << flag;
        EXPECT_FALSE(holds(n.report(), "dim=3")) << flag;
    }
    Network n(2);
    plane_net(n);
    n.p.iphoto = 2;
    n.target("D", 0, 0).status = STATUS_COMPUTE;
    for (const char *from : {"S", "A", "B"}) n.distance(from, "D", 50, 0.001);
    vorn run(n.ready());
    EXPECT_EQ(run.vornstart(), -5) << n.report();
}

// Two targets taken over from an earlier net, each measured from three fixed stations.
void import_net(Network &n)
{
    n.p.irun = 1;
    snprintf(n.p.confile, sizeof n.p.confile, "vornstart.con");
    const double x[3] = {0, 100, 0}, y[3] = {0, 0, 100};
    const char *names[3] = {"S1", "S2", "S3"};
    for (int i = 0; i < 3; i++) {
        station_input &s = n.station(names[i], x[i], y[i]);
        s.ix[0] = s.ix[1] = s.ir[2] = CODE_FIXED;
    }
    n.target("A       ", 40, 30).iconn = 2;
    n.target("B       ", 60, 70).iconn = 2;
    for (const char *from : names)
        for (const char *to : {"A       ", "B       "}) n.distance(from, to, 50, 0.001);
}

TEST(VornstartCode, IsMinus6WhenTheConnectedNetFindsNoMemory)
{
    FILE *f = fopen("vornstart.con", "w");
    ASSERT_NE(f, nullptr);
    fprintf(f, "File: vornstart.con for 2 connections in dimension 2\n");
    fprintf(f, "A         40.0 30.0 0.0\nB         60.0 70.0 0.0\n");
    for (int i = 0; i < 4; i++) // unit matrix, packed by rows
        for (int j = 0; j <= i; j++) fprintf(f, "%d.0\n", i == j);
    fclose(f);
    int found = 0, last = 1;
    fail_each(import_net, [&](int code, const std::string &report) {
        EXPECT_EQ(code == -6, holds(report, "set_connect: cannot allocate ltemp\n")) << report;
        found += code == -6;
        last = code;
    });
    EXPECT_EQ(found, 1);
    EXPECT_EQ(last, 0);
    remove("vornstart.con");
}

// Three fixed heights without value, a metre apart, and a free one. The first is held at 0.
void heights_net(Network &n)
{
    for (const char *name : {"A", "B", "C", "D"}) {
        target_input &t = n.target(name, 0, 0);
        if (name[0] == 'D') continue;
        t.status = STATUS_COMPUTE;
        t.ix[2] = CODE_FIXED;
    }
    const char *ends[5][2] = {{"A", "B"}, {"B", "C"}, {"C", "D"}, {"A", "C"}, {"B", "D"}};
    for (int i = 0; i < 5; i++) n.heightdiff(ends[i][0], ends[i][1], i < 3 ? 1.0 : 2.0, 0.001);
}

TEST(HeightsWithoutValue, AreUnknownsWithColumnsOfTheirOwnBehindTheFirst)
{
    int (vorn::*const entries[])() = {&vorn::vornL2, &vorn::vornjordan, &vorn::vornL1};
    for (const auto entry : entries) {
        Network n(1);
        heights_net(n);
        n.p.irun = 1;
        vorn run(n.ready());
        ASSERT_EQ(run.vornstart(), 0) << n.report();
        EXPECT_EQ(V(run, nunk1), 3); // the count of fixed heights says 1
        EXPECT_EQ(V(run, nunk), 3);
        EXPECT_EQ((run.*entry)(), 0) << n.report();
        for (int i = 0; i < 4; i++) EXPECT_NEAR(V(run, points)[i].xpt[2], i, 1e-9);
    }
}

} // namespace
