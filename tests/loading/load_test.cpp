#include <gtest/gtest.h>
#include <math.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <set>
#include <vector>

#include "support/access.h"
#include "support/faults.h"
#include "support/network.h"

namespace {

using Lines = std::vector<std::string>;

bool said(const Network &n, const std::string &line)
{
    return std::find(n.messages.lines.begin(), n.messages.lines.end(), line) != n.messages.lines.end();
}

bool ends_with(const std::string &text, const std::string &end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

TEST(FillVorn, TurnsHostRecordsIntoPointsAndMeasures)
{
    Network n(2);
    n.station("S", 1, 2);
    n.target("A", 100, 0);
    n.target("B", 0, 100);
    n.distance("S", "A", 99.0, 0.001);
    n.distance("S", "X", 99.0, 0.001); // to no point: deselected, and not counted
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

TEST(FillVorn, RaisesAPhotogrammetricRunToThreeDimensions)
{
    Network n(2);
    n.p.iphoto = 1;
    n.station("S", 0, 0);
    n.target("T", 0, 0, 5);
    n.heightdiff("S", "T", 5, 1);
    vorn run(n.ready());
    ASSERT_EQ((V(run, fill_vorn)()), 0);
    EXPECT_EQ(V(run, dim), 3);
    EXPECT_EQ(V(run, ndifh), 1); // counted in three dimensions
    EXPECT_EQ(n.stations[0].ix[2], CODE_FREE);
    EXPECT_EQ(n.messages.lines, (Lines{"fill_vorn: With photogrammetric data, dim=3"}));
    EXPECT_EQ(n.report(), "fill_vorn: With photogrammetric data, dim=3\n");
}

TEST(FillVorn, LeavesTheDimensionOfOtherRuns)
{
    for (int iphoto : {0, 2}) {
        Network n(2);
        n.p.iphoto = iphoto;
        n.station("S", 0, 0);
        n.target("T", 0, 0);
        n.distance("S", "T", 5, 1);
        vorn run(n.ready());
        ASSERT_EQ((V(run, fill_vorn)()), 0);
        EXPECT_EQ(V(run, dim), 2);
    }
}

TEST(FillVorn, StopsInVerifWhenNothingIsLeft)
{
    Network n(1);
    n.station("S", 0, 0);
    n.target("T", 0, 0);
    n.distance("S", "T", 5, 1);
    vorn run(n.ready());
    EXPECT_EQ((V(run, fill_vorn)()), -2);
    EXPECT_EQ(n.messages.lines,
              (Lines{"deselall: Must deselect distance between S and T", "fill_vorn: Stop in verif"}));
    EXPECT_EQ(n.report(), "deselall: Must deselect distance between S and T\nfill_vorn: Stop in verif\n");
    EXPECT_EQ(V(run, points), nullptr);
}

TEST(FillVorn, StopsWithoutPoints)
{
    Network n(3);
    n.p.igps = 1;
    vorn run(n.ready());
    EXPECT_EQ((V(run, fill_vorn)()), -3);
    EXPECT_EQ(n.messages.lines, (Lines{"fill_vorn: Stop in vornallocate"}));
    EXPECT_EQ(n.report(), "\nMust have some points to adjust!!!\nfill_vorn: Stop in vornallocate\n");
}

TEST(FillVorn, StopsWithoutMemoryForTheConnectedNet)
{
    Network n(1);
    n.station("S", 0, 0);
    n.target("T", 0, 0).iconn = 2;
    n.heightdiff("S", "T", 5, 1);
    int nstopped = 0;
    for (int failing = 1; failing <= 5; failing++) {
        vorn run(n.ready());
        n.messages.lines.clear();
        fail_allocation(failing);
        const int result = (V(run, fill_vorn)());
        fail_allocation(0);
        if (result == -1) {
            nstopped++;
            EXPECT_EQ(n.messages.lines.back(), "fill_vorn: Stop in chk_connect");
            EXPECT_TRUE(ends_with(n.report(), "fill_vorn: Stop in chk_connect\n"));
        }
    }
    EXPECT_EQ(nstopped, 2); // the two tables of the connected net
}

TEST(FillVorn, GivesTheCodeOfTheListThatFails)
{
    const struct {
        int kind, code;
    } rows[] = {{1, -4}, {3, -5}, {4, -6}, {5, -7}, {7, -9}};
    for (const auto &r : rows) {
        Network n(3);
        n.station("S", 0, 0);
        n.target("T", 0, 0).status = 0; // found by the selection, but not in the table
        if (r.kind == 1) n.distance("S", "T", 1, 1);
        if (r.kind == 3) n.heightdiff("S", "T", 1, 1);
        if (r.kind == 4) n.direction("S", "T", 1, 1);
        if (r.kind == 5) n.vertical("S", "T", 1, 1);
        if (r.kind == 7) n.azimuth("S", "T", 1, 1);
        vorn run(n.ready());
        EXPECT_EQ((V(run, fill_vorn)()), r.code);
        EXPECT_TRUE(n.messages.lines.empty());
    }
}

TEST(FillVorn, GivesTheCodeOfUnreadableAngles)
{
    for (int kind : {4, 5, 7}) {
        Network n(3);
        n.station("S", 0, 0);
        n.target("T", 0, 0);
        if (kind == 4) n.direction("S", "T", NAN, 1);
        if (kind == 5) n.vertical("S", "T", NAN, 1);
        if (kind == 7) n.azimuth("S", "T", NAN, 1);
        vorn run(n.ready());
        EXPECT_EQ((V(run, fill_vorn)()), kind == 4 ? -6 : kind == 5 ? -7 : -9);
    }
}

TEST(FillVorn, GivesTheCodeOfBaselinesThatAreInUse)
{
    Network n(3);
    n.p.igps = 1;
    n.station("S", 0, 0);
    n.target("T", 0, 0);
    n.distance("S", "T", 1, 1);
    gps_input g = gps_input();
    g.status = 1;
    strcpy(g.from, "S");
    strcpy(g.to, "X");
    n.baselines.push_back(g);
    {
        vorn run(n.ready());
        EXPECT_EQ((V(run, fill_vorn)()), -10);
        EXPECT_EQ(V(run, ngps), 1);
    }
    n.p.igps = 0;
    {
        vorn run(n.ready());
        EXPECT_EQ((V(run, fill_vorn)()), 0); // baselines are ignored
        EXPECT_EQ(V(run, ngps), 0);
        EXPECT_EQ(V(run, gps), nullptr);
    }
}

TEST(FillVorn, GivesTheCodeOfImages)
{
    const std::string path = testing::TempDir() + "load_test_image.txt";
    FILE *f = fopen(path.c_str(), "w");
    ASSERT_NE(f, nullptr);
    for (int i = 0; i < 4; i++) fprintf(f, "P%d      1.0 2.0\n", i);
    fclose(f);
    Network n(3);
    n.p.iphoto = 1;
    n.station("S", 0, 0);
    for (const char *name : {"P0      ", "P1      ", "P2      ", "P3      "}) n.target(name, 0, 0);
    image_input im = image_input();
    im.status = 1;
    strncpy(im.file, path.c_str(), sizeof im.file - 1);
    strcpy(im.station, "S");
    strcpy(im.camera, "none");
    n.images.push_back(im);
    n.p.suv = 3;
    n.p.sdist = 2;
    n.distance("S", "P0      ", 1, 1);
    vorn run(n.ready());
    EXPECT_EQ((V(run, fill_vorn)()), -8);
    EXPECT_EQ(V(run, nobsuv), 4);
    EXPECT_DOUBLE_EQ(V(run, sigma0), sqrt((2 * 4 * 9 + 4) / 9.0)); // u and v of four points, a distance
    remove(path.c_str());
}

TEST(FillVorn, TakesBaselinesBeforeImages)
{
    const std::string path = testing::TempDir() + "load_test_order.txt";
    FILE *f = fopen(path.c_str(), "w");
    ASSERT_NE(f, nullptr);
    for (int i = 0; i < 4; i++) fprintf(f, "P%d      1.0 2.0\n", i);
    fclose(f);
    Network n(3);
    n.p.iphoto = n.p.igps = 1;
    n.station("S", 0, 0);
    for (const char *name : {"P0      ", "P1      ", "P2      ", "P3      "}) n.target(name, 0, 0);
    n.distance("S", "P0      ", 1, 1);
    image_input im = image_input();
    im.status = 1;
    strncpy(im.file, path.c_str(), sizeof im.file - 1);
    strcpy(im.station, "S");
    strcpy(im.camera, "none"); // the images fail
    n.images.push_back(im);
    gps_input g = gps_input();
    g.status = 1;
    strcpy(g.from, "S");
    strcpy(g.to, "P0      "); // a covariance of zeros: the baselines fail
    n.baselines.push_back(g);
    vorn run(n.ready());
    EXPECT_EQ((V(run, fill_vorn)()), -10);
    remove(path.c_str());
}

TEST(FillVorn, PassesWithBaselinesAlone)
{
    Network n(3);
    n.p.igps = 1;
    n.p.sgps = 0.25;
    n.station("S", 0, 0);
    n.target("T", 0, 0);
    gps_input g = gps_input();
    strcpy(g.from, "S");
    strcpy(g.to, "T");
    g.cov[0] = g.cov[3] = g.cov[5] = 1.0;
    g.status = 1;
    n.baselines.push_back(g);
    g.status = 0;
    n.baselines.push_back(g);
    g.status = -1;
    n.baselines.push_back(g);
    vorn run(n.ready());
    ASSERT_EQ((V(run, fill_vorn)()), 0);
    EXPECT_EQ(V(run, ngps), 1);
    EXPECT_DOUBLE_EQ(V(run, sigma0), 0.25);
}

TEST(FillVorn, MakesSigma0TheRootOfTheMeanVarianceOfWhatIsLeft)
{
    Network n(3);
    n.station("S", 0, 0);
    n.target("T", 0, 0);
    n.p.sdist = 2;
    n.p.sdifh = 3;
    n.p.sdir1 = 5;
    n.p.sdir2 = 7;
    n.p.saz = 11;
    n.distance("S", "T", 1, 1);
    n.distance("S", "T", 1, 1);
    n.distance("S", "X", 1, 1); // deselected by verif, so not in the mean
    n.heightdiff("S", "T", 1, 1);
    n.direction("S", "T", 1, 1);
    n.vertical("S", "T", 1, 1);
    n.azimuth("S", "T", 1, 1);
    vorn run(n.ready());
    ASSERT_EQ((V(run, fill_vorn)()), 0);
    EXPECT_DOUBLE_EQ(V(run, sigma0), sqrt((2 * 4 + 9 + 25 + 49 + 121) / 6.0));
}

TEST(FillVorn, LeavesSigma0UndefinedWithoutAnyObservation)
{
    Network n(3);
    n.p.igps = 1;
    n.station("S", 0, 0);
    vorn run(n.ready());
    ASSERT_EQ((V(run, fill_vorn)()), 0);
    EXPECT_TRUE(std::isnan(V(run, sigma0)));
}

TEST(FillVorn, CountsTheGroupsThatUseEachConstant)
{
    Network n(3);
    std::vector<int> member = {0};
    for (int use = 0; use < 8; use++) {
        group_input g = group_input();
        for (int j = 0; j < 3; j++) g.ic[j] = use & (1 << j) ? CODE_FREE : CODE_FIXED;
        g.nmember = 1;
        g.member = member.data();
        n.groups.push_back(g);
    }
    n.groups.push_back(group_input()); // without members: typ stays 0
    group_input odd = group_input();
    odd.typ = 9;
    n.groups.push_back(odd);
    n.station("S", 0, 0).typ = 2;
    n.target("T", 0, 0);
    n.distance("S", "T", 1, 1);
    vorn run(n.ready());
    ASSERT_EQ((V(run, fill_vorn)()), 0);
    for (int j = 0; j < 3; j++) EXPECT_EQ(V(run, ia1)[6 + j], 4) << j;
}

TEST(FillVorn, ReadsTheConstantsOfAGroupFromItsTyp)
{
    for (int typ = -1; typ < 24; typ++) {
        Network n(3);
        n.groups.push_back(group_input());
        n.groups[0].typ = typ;
        n.station("S", 0, 0);
        n.target("T", 0, 0);
        n.distance("S", "T", 1, 1);
        vorn run(n.ready());
        ASSERT_EQ((V(run, fill_vorn)()), 0);
        const bool used[3] = {typ == 6 || typ == 13 || typ == 14 || typ == 21,
                              typ == 7 || typ == 13 || typ == 15 || typ == 21,
                              typ == 8 || typ == 14 || typ == 15 || typ == 21};
        for (int j = 0; j < 3; j++) EXPECT_EQ(V(run, ia1)[6 + j], used[j]) << typ;
    }
}

TEST(FillVorn, ReadsTheConnectedNetOnlyWhenItImports)
{
    for (int icon = 1; icon <= 3; icon++) {
        Network n(1);
        n.p.irun = 1;
        strcpy(n.p.confile, "no such file");
        n.station("S", 0, 0).iconn = icon & 1 ? 1 : 0;
        n.target("T", 0, 0).iconn = icon & 2 ? 2 : 0;
        n.heightdiff("S", "T", 1, 1);
        vorn run(n.ready());
        ASSERT_EQ((V(run, fill_vorn)()), 0);
        EXPECT_EQ(said(n, "fill_vorn: Cannot open test.inp file"), icon != 1);
        EXPECT_EQ(V(run, icon), icon == 1 ? 1 : 0);
        V(run, icon) = 0; // exports nothing when it ends
    }
}

// A station and two targets in a lump, seen at epochs 5 and 8 by directions.
void add_lump(Network &n)
{
    n.p.lumpmethod = 9;
    n.station("S", 0, 0);
    n.target("T", 1, 0).ilump = 3;
    n.target("U", 2, 0).ilump = 3;
    for (int t : {5, 8})
        for (const char *to : {"T", "U"}) n.direction("S", to, t, 1).time = t;
}

TEST(FillVorn, SplitsThePointsOfALumpByEpoch)
{
    Network n(2);
    add_lump(n);
    vorn run(n.ready());
    ASSERT_EQ((V(run, fill_vorn)()), 0);
    EXPECT_EQ(V(run, nsta), 1);
    EXPECT_EQ(V(run, ntar), 4);
    ASSERT_EQ(V(run, npoints), 5);
    const char *names[5] = {"S", "T", "T", "U", "U"};
    for (int i = 0; i < 5; i++) {
        EXPECT_STREQ(V(run, points)[i].name, names[i]);
        EXPECT_EQ(V(run, points)[i].ilump, 0); // an ordinary network from here on
    }
    const int ip2[4] = {1, 3, 2, 4};
    for (int i = 0; i < 4; i++) EXPECT_EQ(V(run, dir1)[i].p2 - V(run, points), ip2[i]) << i;
    EXPECT_EQ(V(run, nlump), 0);
    EXPECT_EQ(n.p.lumpmethod, 9);
    EXPECT_EQ(n.targets[0].ilump, 3);
}

TEST(FillVorn, SplitsALumpOfOnePoint)
{
    Network n(2);
    n.p.lumpmethod = 9;
    n.station("S", 0, 0);
    n.target("T", 1, 0).ilump = 3;
    for (int t : {5, 8}) n.direction("S", "T", t, 1).time = t;
    vorn run(n.ready());
    ASSERT_EQ((V(run, fill_vorn)()), 0);
    EXPECT_EQ(V(run, npoints), 3);
    for (int i = 0; i < 2; i++) EXPECT_EQ(V(run, dir1)[i].p2 - V(run, points), 1 + i);
}

TEST(FillVorn, CountsEpochsUpToTheEndOfTheTable)
{
    Network n(2);
    add_lump(n);
    for (int i = 0; i < 4; i++) n.directions[i].time = 1 + i; // one epoch a direction
    vorn run(n.ready());
    ASSERT_EQ((V(run, fill_vorn)()), 0);
    EXPECT_EQ(V(run, npoints), 5);
}

TEST(FillVorn, TakesNegativeCountsOfPointsForNone)
{
    Network n(2);
    add_lump(n);
    n.ready();
    n.p.nstations = -3;
    vorn run(&n.p);
    EXPECT_EQ((V(run, fill_vorn)()), -2); // two lump points, no station: no direction is left
    EXPECT_EQ(V(run, nsta), 0);
    EXPECT_EQ(V(run, ntar), 2);
}

TEST(FillVorn, KeepsTheLumpsOfMethodology1Together)
{
    Network n(2);
    add_lump(n);
    n.p.lumpmethod = 1;
    vorn run(n.ready());
    ASSERT_EQ((V(run, fill_vorn)()), 0);
    EXPECT_EQ(V(run, npoints), 3);
    EXPECT_EQ(V(run, nlump), 1);
    EXPECT_EQ(V(run, points)[0].ilump, 0);
    EXPECT_EQ(V(run, points)[1].ilump, 1);
}

// Every allocation in turn: a table of the lumps is given up for, an array of the network ends
// the run, an index is made up for by a search.
TEST(FillVorn, EndsByADocumentedRoadWhicheverAllocationFails)
{
    const char *const tables[] = {"fill_vorn: Could not allocate ilumtable=> no lumps",
                                  "fill_vorn: Could not allocate itimetable=> no lumps",
                                  "fill_vorn: Could not allocate isplit"};
    const char *const arrays[] = {"points", "dist", "dir1"};
    int degraded[3] = {}, stopped[3] = {}, n_allocations = 1;
    for (int failing = 1; failing <= n_allocations; failing++) {
        Network n(2);
        add_lump(n);
        n.distance("S", "T", 1, 1).time = 8;
        vorn run(n.ready());
        fail_allocation(failing);
        const int result = (V(run, fill_vorn)());
        n_allocations = std::max(n_allocations, allocations());
        fail_allocation(0);
        bool whole = true;
        for (int k = 0; k < 3; k++) {
            if (n.report() == std::string("\nProgram stops with the allocation of ") + arrays[k] +
                                  "\nfill_vorn: Stop in vornallocate\n") {
                stopped[k]++;
                whole = false;
                EXPECT_EQ(result, -3);
                EXPECT_EQ(n.messages.lines, (Lines{"fill_vorn: Stop in vornallocate"}));
            }
            if (!said(n, tables[k])) continue;
            degraded[k]++;
            whole = false;
            EXPECT_EQ(result, 0);
            EXPECT_EQ(n.p.lumpmethod, 0);
            EXPECT_EQ(V(run, nlump), 0);
            EXPECT_EQ(V(run, npoints), 3);
            EXPECT_EQ(V(run, points)[1].ilump, 0);
            EXPECT_EQ(n.report(), "");
        }
        if (whole) {
            EXPECT_EQ(result, 0);
            EXPECT_EQ(n.report(), "");
            EXPECT_EQ(V(run, dist)[0].p2 - V(run, points), 2); // an index less changes nothing
        }
    }
    const int rows[3] = {1, 1, 1 + 2}; // of the points that are split: a table and a row each
    for (int k = 0; k < 3; k++) {
        EXPECT_EQ(degraded[k], rows[k]) << tables[k];
        EXPECT_EQ(stopped[k], 1) << arrays[k];
    }
}

TEST(Verif, ExcludesThePlaneOfTargetsInOneDimension)
{
    Network n(1);
    station_input &s = n.station("S", 0, 0);
    for (int i = 0; i < 3; i++) s.ix[i] = s.ir[i] = CODE_FIXED;
    target_input &t = n.target("T", 0, 0);
    t.ix[0] = CODE_FIXED;
    t.ix[1] = 0;
    t.ix[2] = CODE_FIXED;
    n.target("OFF", 0, 0).status = 0;
    n.distance("S", "T", 1, 1);
    n.heightdiff("S", "T", 1, 1);
    n.heightdiff("S", "X", 1, 1);
    n.direction("S", "T", 1, 1);
    n.vertical("S", "T", 1, 1);
    n.azimuth("S", "T", 1, 1);
    vorn run(n.ready());
    ASSERT_EQ((V(run, fill_vorn)()), 0);
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(n.stations[0].ix[i], 4); // stations stand as they were
        EXPECT_EQ(n.stations[0].ir[i], 4);
        EXPECT_EQ(n.targets[1].ix[i], 1);
    }
    EXPECT_EQ(n.targets[0].ix[0], -4);
    EXPECT_EQ(n.targets[0].ix[1], 0);
    EXPECT_EQ(n.targets[0].ix[2], 4);
    EXPECT_EQ(V(run, ndist) + V(run, ndir1) + V(run, ndir2) + V(run, naz), 0);
    EXPECT_EQ(V(run, ndifh), 1);
    EXPECT_EQ(n.messages.lines, (Lines{"deselall: Must deselect distance between S and T",
                                       "deselall: Must deselect horizontal direction between S and T",
                                       "deselall: Must deselect vertical angle between S and T",
                                       "deselall: Must deselect azimuth angle between S and T",
                                       "checkm: Must deselect height difference between S and X"}));
}

TEST(Verif, ExcludesHeightsAndTiltsInTwoDimensions)
{
    Network n(2);
    n.station("S", 0, 0);
    n.stations[0].ix[2] = CODE_FIXED;
    n.stations[0].ir[1] = 0;
    n.station("OFF", 0, 0).status = 0;
    n.target("T", 0, 0).ix[2] = CODE_WEIGHTED;
    n.target("OFF2", 0, 0).status = -1;
    n.target("OFF3", 0, 0).status = 0;
    n.distance("S", "T", 1, 1);
    n.distance("S", "X", 1, 1);
    n.heightdiff("S", "T", 1, 1);
    n.direction("T", "S", 1, 1);
    n.vertical("S", "T", 1, 1);
    n.azimuth("S", "Y", 1, 1);
    vorn run(n.ready());
    ASSERT_EQ((V(run, fill_vorn)()), 0);
    const int ix[3] = {1, 1, -4}, ir[3] = {-1, 0, 1};
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(n.stations[0].ix[i], ix[i]);
        EXPECT_EQ(n.stations[0].ir[i], ir[i]);
        EXPECT_EQ(n.stations[1].ix[i], 1);
        EXPECT_EQ(n.stations[1].ir[i], 1);
        EXPECT_EQ(n.targets[0].ix[i], i < 2 ? 1 : -3);
        EXPECT_EQ(n.targets[1].ix[i], 1);
        EXPECT_EQ(n.targets[2].ix[i], 1);
    }
    EXPECT_EQ(V(run, ndist), 1);
    EXPECT_EQ(V(run, ndir1), 0);
    EXPECT_EQ(V(run, naz), 0);
    EXPECT_EQ(n.messages.lines, (Lines{"deselall: Must deselect height difference between S and T",
                                       "deselall: Must deselect vertical angle between S and T",
                                       "checkm: Must deselect distance between S and X",
                                       "checkm: Must deselect horizontal direction between T and S",
                                       "checkm: Must deselect azimuth angle between S and Y"}));
}

TEST(Verif, ChecksEveryListInThreeDimensions)
{
    Network n(3);
    n.station("S", 0, 0);
    n.distance("S", "X", 1, 1);
    n.heightdiff("S", "X", 1, 1);
    n.direction("S", "X", 1, 1);
    n.vertical("S", "X", 1, 1);
    n.azimuth("S", "X", 1, 1);
    vorn run(n.ready());
    EXPECT_EQ((V(run, fill_vorn)()), -2);
    EXPECT_EQ(n.messages.lines,
              (Lines{"checkm: Must deselect distance between S and X",
                     "checkm: Must deselect height difference between S and X",
                     "checkm: Must deselect horizontal direction between S and X",
                     "checkm: Must deselect vertical angle between S and X",
                     "checkm: Must deselect azimuth angle between S and X", "fill_vorn: Stop in verif"}));
    EXPECT_EQ(n.stations[0].ix[2], 1);
    EXPECT_EQ(n.stations[0].ir[0], 1);
}

TEST(Verif, SaysWhatIsMissingByDimension)
{
    for (int dim = 1; dim <= 3; dim++) {
        Network n(dim);
        n.station("S", 0, 0);
        n.target("T", 0, 0);
        if (dim == 2) n.heightdiff("S", "T", 1, 1);
        vorn run(n.ready());
        V(run, ndifh) = dim == 2 ? 1 : 0;
        EXPECT_EQ((V(run, verif)()), -dim);
    }
    for (int photo = 0; photo < 2; photo++) {
        Network n(3);
        (photo ? n.p.iphoto : n.p.igps) = 9;
        vorn run(n.ready());
        EXPECT_EQ((V(run, verif)()), 0);
    }
}

TEST(Verif, StopsWhenTheOnlyHeightDifferenceIsDeselected)
{
    Network n(1);
    n.station("S", 0, 0);
    n.heightdiff("S", "X", 1, 1);
    vorn run(n.ready());
    V(run, ndifh) = 1;
    EXPECT_EQ((V(run, verif)()), -1);
    EXPECT_EQ(V(run, ndifh), 0);
}

TEST(Verif, Gives0WhereSomethingIsLeft)
{
    for (int dim = 1; dim <= 3; dim++) {
        Network n(dim);
        n.station("S", 0, 0);
        n.target("T", 0, 0);
        if (dim == 1) n.heightdiff("S", "T", 1, 1);
        if (dim == 2) n.azimuth("S", "T", 1, 1);
        if (dim == 3) n.vertical("S", "T", 1, 1);
        vorn run(n.ready());
        (dim == 1 ? V(run, ndifh) : dim == 2 ? V(run, naz) : V(run, ndir2)) = 1;
        EXPECT_EQ((V(run, verif)()), 0);
    }
}

TEST(Verif, LetsNoCountFallBelowZero)
{
    Network n(3);
    n.p.igps = 1;
    n.distance("X", "Y", 1, 1);
    n.distance("X", "Z", 1, 1);
    for (int dim = 2; dim <= 3; dim++) {
        vorn run(n.ready());
        V(run, dim) = dim;
        V(run, ndist) = 1; // fewer than there are
        n.distances[0].typ = n.distances[1].typ = 1;
        EXPECT_EQ((V(run, verif)()), dim == 2 ? -2 : 0);
        EXPECT_EQ(V(run, ndist), 0);
    }
}

TEST(Vornallocate, WantsPoints)
{
    for (int npoint = -1; npoint <= 0; npoint++) {
        Network n(3);
        vorn run(n.ready());
        V(run, npoints) = npoint;
        EXPECT_EQ((V(run, vornallocate)()), -1);
        EXPECT_EQ(n.report(), "\nMust have some points to adjust!!!\n");
    }
}

TEST(Vornallocate, TakesOnlyListsWithACount)
{
    Network n(3);
    vorn run(n.ready());
    V(run, npoints) = 2;
    V(run, ndir1) = 3;
    ASSERT_EQ((V(run, vornallocate)()), 0);
    EXPECT_NE(V(run, dir1), nullptr);
    EXPECT_EQ(V(run, dist), nullptr);
    EXPECT_EQ(V(run, cameras), nullptr);
    EXPECT_EQ(V(run, obsuv1), nullptr);
    for (int i = 0; i < 2; i++)
        for (int j = 0; j < 8; j++) EXPECT_EQ(V(run, points)[i].defdatum[j], j < 3 ? 1 : 0);
}

TEST(Vornallocate, NamesTheArrayWithoutMemoryAndReleasesTheOthers)
{
    const struct {
        const char *name;
        int code;
    } rows[] = {{"points", -1}, {"dist", -1}, {"difh", -1},   {"dir1", -1},  {"dir2", -1},
                {"az", -1},     {"gps", -1},  {"camera", -2}, {"obsuv", -2}, {"obsuv", -2}};
    for (int i = 0; i < 10; i++) {
        Network n(3);
        vorn run(n.ready());
        V(run, npoints) = V(run, ndist) = V(run, ndifh) = V(run, ndir1) = V(run, ndir2) = V(run, naz) = 1;
        V(run, ngps) = V(run, ncamera) = V(run, nobsuv) = 1;
        fail_allocation(i + 1);
        EXPECT_EQ((V(run, vornallocate)()), rows[i].code);
        EXPECT_EQ(allocations(), i == 8 ? 10 : i + 1); // the two image lists are both tried
        fail_allocation(0);
        EXPECT_EQ(n.report(), std::string("\nProgram stops with the allocation of ") + rows[i].name + "\n");
        EXPECT_EQ(V(run, points), nullptr);
        EXPECT_EQ(V(run, dist), nullptr);
        EXPECT_EQ(V(run, obsuv1), nullptr);
        V(run, npoints) = 0;
    }
}

double *doubles() { return (double *)calloc(1, sizeof(double)); }

TEST(Clean, ReleasesEverythingAndIsHarmlessTwice)
{
    Network n(3);
    vorn run(n.ready());
    V(run, npoints) = V(run, ndist) = V(run, ndifh) = V(run, ndir1) = V(run, ndir2) = V(run, naz) = 1;
    V(run, ngps) = V(run, ncamera) = V(run, nobsuv) = 1;
    ASSERT_EQ((V(run, vornallocate)()), 0);
    V(run, temp_res) = (tempresult *)calloc(1, sizeof(tempresult));
    lump *l = (lump *)calloc(2, sizeof(lump)); // the second has no arrays
    l->iunk = (int *)calloc(1, sizeof(int));
    l->epoch = (int *)calloc(1, sizeof(int));
    for (double **a : {&l->tx, &l->ty, &l->tz, &l->rx, &l->ry, &l->rz, &l->scale}) *a = doubles();
    for (double **a : {&l->stx, &l->sty, &l->stz, &l->srx, &l->sry, &l->srz, &l->sscale}) *a = doubles();
    V(run, lumps) = l;
    V(run, nlump) = 2;
    EXPECT_EQ((V(run, searchnam)("A")), -1); // makes its index
    EXPECT_EQ((V(run, vornsearch)("A")), -1);
    for (int i = 0; i < 2; i++) {
        (V(run, clean)());
        EXPECT_EQ(V(run, points), nullptr);
        EXPECT_EQ(V(run, lumps), nullptr);
        EXPECT_EQ(V(run, cameras), nullptr);
        EXPECT_EQ(V(run, gps), nullptr);
        EXPECT_EQ(V(run, temp_res), nullptr);
        for (measure *list :
             {V(run, dist), V(run, difh), V(run, dir1), V(run, dir2), V(run, az), V(run, obsuv1), V(run, obsuv2)})
            EXPECT_EQ(list, nullptr);
    }
    V(run, npoints) = V(run, nlump) = 0;
    V(run, ndist) = V(run, ndifh) = V(run, ndir1) = V(run, ndir2) = 0;
}

TEST(Clean, LeavesTheTablesOfTheConnectedNet)
{
    Network n(3);
    vorn run(n.ready());
    V(run, lcon) = (int *)calloc(1, sizeof(int));
    V(run, Qcon) = doubles();
    (V(run, clean)());
    EXPECT_NE(V(run, lcon), nullptr);
    EXPECT_NE(V(run, Qcon), nullptr);
}

} // namespace
