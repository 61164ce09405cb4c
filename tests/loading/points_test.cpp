#include <gtest/gtest.h>
#include <string.h>

#include <vector>

#include "support/access.h"
#include "support/faults.h"
#include "support/network.h"

namespace {

// A run with room for npoint points, nsta of them stations, and the table filled.
class Filled {
public:
    Filled(Network &n, int nsta, int npoint) : run(n.ready())
    {
        V(run, nsta) = nsta;
        V(run, ntar) = npoint - nsta;
        V(run, npoints) = npoint;
        if ((V(run, vornallocate)()) == 0) fill(nullptr, nullptr, 0, 0, 0);
    }
    void fill(int *ilumtable, int **isplit, int nsplitsta, int nsplittar, int nepoch)
    {
        (V(run, fill_pt)(ilumtable, isplit, nsplitsta, nsplittar, nepoch));
    }
    point &at(int i) { return V(run, points)[i]; }
    vorn run;
};

group_input &add_group(Network &n, std::vector<int> &member, int e0, int e1, int e2)
{
    group_input g = group_input();
    const int e[3] = {e0, e1, e2};
    for (int j = 0; j < 3; j++) {
        g.ic[j] = e[j];
        g.c[j] = 10 * (double)(n.groups.size() + 1) + j;
        g.sc[j] = 0.5 + j;
    }
    g.nmember = (int)member.size();
    g.member = member.data();
    n.groups.push_back(g);
    return n.groups.back();
}

TEST(FillPt, TakesSelectedStationsThenSelectedTargetsInOrder)
{
    Network n(3);
    n.station("S1", 1, 2, 3);
    n.station("S2", 0, 0).status = 0;
    n.station("S3", 0, 0).status = -1;
    n.station("S4", 4, 5, 6).ilevel = 1;
    n.target("T1", 7, 8, 9);
    n.target("T2", 0, 0).status = 0;
    n.target("T3 ", 0, 0);
    Filled f(n, 2, 4);
    EXPECT_STREQ(f.at(0).name, "S1");
    EXPECT_STREQ(f.at(1).name, "S4");
    EXPECT_STREQ(f.at(2).name, "T1");
    EXPECT_STREQ(f.at(3).name, "T3 ");
    EXPECT_EQ(f.at(0).typ, 0);
    EXPECT_EQ(f.at(1).typ, 1);
    EXPECT_EQ(f.at(2).typ, 0);
    EXPECT_EQ(f.at(1).xpt[1], 5.0);
    EXPECT_EQ(f.at(2).xpt[2], 9.0);
    EXPECT_EQ((const void *)&f.at(0), (const void *)f.at(0).name); // a record prints as its name
}

TEST(FillPt, ScalesLengthsButNoAnglesByTheUnit)
{
    const struct {
        int iunit;
        double factor;
    } units[] = {{0, 1.0}, {1, 0.001}, {2, 0.0254}, {7, 1.0}, {-1, 1.0}};
    for (const auto &u : units) {
        Network n(3);
        n.p.iunit = u.iunit;
        station_input &s = n.station("S", 2, 4, 8);
        for (int i = 0; i < 3; i++) {
            s.sx[i] = 16 << i;
            s.r[i] = 1 + i;
            s.sr[i] = 5 + i;
        }
        n.target("T", 32, 64, 128).sx[2] = 256;
        Filled f(n, 1, 2);
        for (int i = 0; i < 3; i++) {
            EXPECT_DOUBLE_EQ(f.at(0).xpt[i], u.factor * (2 << i));
            EXPECT_DOUBLE_EQ(f.at(0).sxpt[i], u.factor * (16 << i));
            EXPECT_EQ(f.at(0).xex[i], 1 + i);
            EXPECT_EQ(f.at(0).sxex[i], 5 + i);
            EXPECT_DOUBLE_EQ(f.at(1).xpt[i], u.factor * (32 << i));
        }
        EXPECT_DOUBLE_EQ(f.at(1).sxpt[2], u.factor * 256);
    }
}

TEST(FillPt, TurnsHostCodesOfCoordinatesIntoCodesAndRoles)
{
    const struct {
        int status, c, n0, defdatum, fixed, weighted;
    } rows[] = {
        {1, -1, -1, 1, 1, 0}, {1, -4, -1, 1, 1, 0}, {1, 0, 1, 1, 0, 0},  {1, 1, 1, 1, 0, 0},
        {1, 2, 1, 0, 0, 0},   {1, 3, 1, -1, 0, 1},  {1, 4, -1, 1, 1, 0}, {1, 5, 1, 1, 0, 0},
        {2, -1, -1, 1, 1, 0}, {2, 0, 9, 1, 0, 0},   {2, 1, 9, 1, 0, 0},  {2, 2, 9, 0, 0, 0},
        {2, 3, 9, -1, 0, 1},  {2, 4, -9, 1, 1, 0},  {3, 4, -1, 1, 1, 0}, {101, 1, 1, 1, 0, 0},
    };
    for (const auto &r : rows)
        for (int i = 0; i < 3; i++)
            for (int target = 0; target < 2; target++) {
                Network n(3);
                station_input &s = n.station("S", 0, 0);
                target_input &t = n.target("T", 0, 0);
                (target ? t.ix : s.ix)[i] = r.c;
                (target ? t.status : s.status) = r.status;
                Filled f(n, 1, 2);
                EXPECT_EQ(f.at(target).n0[i], r.n0) << r.status << " " << r.c;
                EXPECT_EQ(f.at(target).defdatum[i], r.defdatum) << r.status << " " << r.c;
                EXPECT_EQ(V(f.run, ia1)[i], r.fixed) << r.status << " " << r.c;
                EXPECT_EQ(V(f.run, nweighted), r.weighted) << r.status << " " << r.c;
                const int other = r.status == 2 ? 9 : 1;
                EXPECT_EQ(f.at(target).n0[(i + 1) % 3], other);
                EXPECT_EQ(f.at(1 - target).n0[i], 1);
            }
}

TEST(FillPt, TurnsHostCodesOfOrientationsIntoCodesAndRoles)
{
    const struct {
        int d, n1, defdatum, fixed, weighted;
    } rows[] = {{-1, -1, 0, 1, 0}, {0, 1, 0, 0, 0},  {1, 1, 0, 0, 0},
                {2, 1, 0, 0, 0},   {3, 1, -1, 0, 1}, {4, -1, 0, 1, 0}};
    for (const auto &r : rows)
        for (int i = 0; i < 3; i++) {
            Network n(3);
            station_input &s = n.station("S", 0, 0);
            s.ir[i] = r.d;
            s.status = STATUS_COMPUTE; // of no effect on orientations
            Filled f(n, 1, 1);
            EXPECT_EQ(f.at(0).n1[i], r.n1) << r.d;
            EXPECT_EQ(f.at(0).n1[(i + 1) % 3], 1) << r.d;
            EXPECT_EQ(f.at(0).defdatum[3 + i], r.defdatum) << r.d;
            EXPECT_EQ(V(f.run, ia1)[3 + i], r.fixed) << r.d;
            EXPECT_EQ(V(f.run, nweighted), r.weighted) << r.d;
        }
}

TEST(FillPt, ClearsTheCountsOfFixedItemsFirst)
{
    Network n(3);
    n.station("S", 0, 0);
    vorn run(n.ready());
    for (int i = 0; i < 9; i++) V(run, ia1)[i] = 5;
    V(run, nstat100) = 7;
    V(run, nsta) = V(run, npoints) = 1;
    ASSERT_EQ((V(run, vornallocate)()), 0);
    (V(run, fill_pt)(nullptr, nullptr, 0, 0, 0));
    for (int i = 0; i < 9; i++) EXPECT_EQ(V(run, ia1)[i], 0) << i;
    EXPECT_EQ(V(run, nstat100), 0);
}

TEST(FillPt, GivesStationsWithoutGroupTheirDefaultConstants)
{
    Network n(3);
    n.station("S", 0, 0);
    std::vector<int> all = {0};
    add_group(n, all, 1, 1, 1); // the station's typ is not 2
    Filled f(n, 1, 1);
    const double xex[3] = {0, 1, 0};
    for (int j = 0; j < 3; j++) {
        EXPECT_EQ(f.at(0).n1[3 + j], -1);
        EXPECT_EQ(f.at(0).xex[3 + j], xex[j]);
    }
    EXPECT_EQ(n.groups[0].typ, 0);
}

TEST(FillPt, RaisesTheTypOfAGroupOnceForEachConstantInUse)
{
    for (int use = 0; use < 8; use++) {
        Network n(3);
        n.station("S", 0, 0).typ = 2;
        n.station("R", 0, 0).typ = 2;
        std::vector<int> both = {0, 1};
        add_group(n, both, use & 1 ? 1 : 4, use & 2 ? 2 : -1, use & 4 ? 0 : 4);
        Filled f(n, 2, 2);
        EXPECT_EQ(n.groups[0].typ, (use & 1 ? 6 : 0) + (use & 2 ? 7 : 0) + (use & 4 ? 8 : 0));
        for (int j = 0; j < 3; j++) {
            const bool used = use & (1 << j);
            EXPECT_EQ(f.at(1).n1[3 + j], used ? 0 : -1);
            EXPECT_EQ(f.at(1).xex[3 + j], used ? 10 + j : j == 1 ? 1.0 : 0.0);
        }
    }
}

TEST(FillPt, RaisesTheTypOfAGroupOnlyWhereTheConstantIsNotYetHeld)
{
    for (int j = 0; j < 3; j++)
        for (int typ = 0; typ < 24; typ++) {
            Network n(3);
            n.station("S", 0, 0).typ = 2;
            std::vector<int> all = {0};
            add_group(n, all, j == 0 ? 1 : 4, j == 1 ? 1 : 4, j == 2 ? 1 : 4).typ = typ;
            Filled f(n, 1, 1);
            bool raised = false; // the typ is a sum of other constants
            for (int use = 0; use < 8; use++)
                if (!(use & (1 << j))) raised |= typ == (use & 1 ? 6 : 0) + (use & 2 ? 7 : 0) + (use & 4 ? 8 : 0);
            EXPECT_EQ(n.groups[0].typ, raised ? typ + 6 + j : typ) << j;
            EXPECT_EQ(f.at(0).n1[3 + j], 0);
        }
}

TEST(FillPt, WeightsAConstantWithoutAnUnknown)
{
    Network n(3);
    n.station("S", 0, 0).typ = 2;
    std::vector<int> all = {0};
    add_group(n, all, 4, 3, 1);
    Filled f(n, 1, 1);
    EXPECT_EQ(f.at(0).n1[3], -1);
    EXPECT_EQ(f.at(0).e0[3], 0.0);
    EXPECT_EQ(f.at(0).n1[4], -1);
    EXPECT_EQ(f.at(0).xex[4], 11.0);
    EXPECT_EQ(f.at(0).e0[4], 11.0);
    EXPECT_EQ(f.at(0).sxex[4], 1.5);
    EXPECT_EQ(f.at(0).n1[5], 0);
    EXPECT_EQ(f.at(0).sxex[5], 0.0);
    EXPECT_EQ(V(f.run, nweighted), 1);
    EXPECT_EQ(n.groups[0].typ, 15); // scale and refraction
}

TEST(FillPt, TakesTheLaterOfTwoGroupsAndIgnoresNegativeOnes)
{
    for (int failing = 0; failing <= 3; failing++) { // the same without memory for a table
        Network n(3);
        n.station("S", 0, 0).typ = 2;
        std::vector<int> all = {0};
        add_group(n, all, 1, 1, 4);
        add_group(n, all, 4, 1, 4);
        add_group(n, all, 1, 1, 1).typ = -1;
        vorn run(n.ready());
        V(run, nsta) = V(run, npoints) = 1;
        ASSERT_EQ((V(run, vornallocate)()), 0);
        fail_allocation(failing);
        (V(run, fill_pt)(nullptr, nullptr, 0, 0, 0));
        fail_allocation(0);
        const point &p = V(run, points)[0];
        EXPECT_EQ(p.n1[3], 0);
        EXPECT_EQ(p.xex[3], 10.0);
        EXPECT_EQ(p.n1[4], 1);
        EXPECT_EQ(p.xex[4], 21.0);
        EXPECT_EQ(p.n1[5], -1);
        EXPECT_EQ(n.groups[2].typ, -1);
    }
}

TEST(FillPt, PassesOverMembersThatAreNoStations)
{
    Network n(3);
    n.station("S", 0, 0).typ = 2;
    std::vector<int> odd = {-1, 1, 2147483647, -2147483647 - 1, 0}, none;
    add_group(n, odd, 1, 4, 4);
    add_group(n, none, 1, 1, 1).member = nullptr;
    Filled f(n, 1, 1);
    EXPECT_EQ(f.at(0).n1[3], 0);
    EXPECT_EQ(n.groups[0].typ, 6);
    EXPECT_EQ(n.groups[1].typ, 0);
}

TEST(FillPt, HoldsHeightsInMixedCoordinates)
{
    Network n(3);
    n.p.iearth = 2;
    station_input &s = n.station("S", 0, 0);
    s.ix[0] = s.ix[1] = s.ix[2] = CODE_FIXED;
    s.status = STATUS_COMPUTE;
    target_input &t = n.target("T", 0, 0);
    t.ix[0] = t.ix[2] = CODE_FIXED;
    n.target("U", 0, 0).ix[2] = CODE_FIXED;
    target_input &w = n.target("W", 0, 0);
    w.ix[1] = w.ix[2] = CODE_FIXED;
    target_input &free = n.target("F", 0, 0);
    free.ix[0] = free.ix[1] = CODE_FIXED;
    Filled f(n, 1, 5);
    EXPECT_EQ(f.at(0).n0[0], -9);
    EXPECT_EQ(f.at(0).n0[2], -1); // though its value is to be computed
    EXPECT_EQ(f.at(0).defdatum[2], 1);
    EXPECT_EQ(f.at(1).defdatum[2], -3);
    EXPECT_EQ(f.at(2).defdatum[2], -3);
    EXPECT_EQ(f.at(2).n0[2], -1);
    EXPECT_EQ(f.at(3).defdatum[2], -3);
    EXPECT_EQ(f.at(4).defdatum[2], 1); // its height is free
    EXPECT_EQ(V(f.run, nfixh), 3);
    EXPECT_EQ(V(f.run, ia1)[2], 4);
}

TEST(FillPt, HoldsNoHeightsInOtherCoordinates)
{
    for (int dim = 1; dim <= 3; dim++)
        for (int iearth = 0; iearth <= 2; iearth++) {
            if (dim == 3 && iearth == 2) continue;
            Network n(dim);
            n.p.iearth = iearth;
            n.target("T", 0, 0).ix[2] = CODE_FIXED;
            Filled f(n, 0, 1);
            EXPECT_EQ(f.at(0).defdatum[2], 1);
            EXPECT_EQ(V(f.run, nfixh), 0);
        }
}

TEST(FillPt, MarksAFixedHeightThatIsToBeComputedInOneDimension)
{
    Network n(1);
    target_input &t = n.target("T", 0, 0);
    t.status = STATUS_COMPUTE;
    t.ix[2] = CODE_FIXED;
    Filled f(n, 0, 1);
    EXPECT_EQ(f.at(0).n0[2], -9);
    EXPECT_EQ(V(f.run, ia1)[2], 1);
}

TEST(FillPt, WeightsTheLoneFixedHeightOfTheFirstStation)
{
    Network n(3);
    n.p.iearth = 2;
    station_input &s = n.station("S", 0, 0);
    s.ix[0] = s.ix[1] = CODE_WEIGHTED;
    s.ix[2] = CODE_FIXED;
    Filled f(n, 1, 1);
    EXPECT_EQ(f.at(0).defdatum[2], -1);
    EXPECT_EQ(f.at(0).n0[2], -1); // the code of the coordinate stays
    EXPECT_EQ(V(f.run, nfixh), 0);
    EXPECT_EQ(V(f.run, nweighted), 2); // the two of the plane position
}

TEST(FillPt, WeightsTheLoneFixedHeightOfAStationWithWeightedPosition)
{
    Network n(3);
    n.p.iearth = 2;
    n.station("R", 0, 0);
    station_input &s = n.station("S", 1.5, -2.25, 1234.0625);
    s.ix[0] = s.ix[1] = CODE_WEIGHTED;
    s.ix[2] = CODE_FIXED;
    Filled f(n, 2, 2);
    EXPECT_EQ(f.at(1).defdatum[2], -1);
    EXPECT_EQ(V(f.run, nfixh), 0);
    EXPECT_EQ(n.report(), "\n***** temporary test in fill_pt()***\n"
                          "S\n"
                          "       1.500000      -2.250000    1234.062500\n"
                          "       0.000000       0.000000       0.000000\n"
                          "h =        0.000000%\n"
                          "\n*****                           ***\n");
}

TEST(FillPt, KeepsFixedHeightsThatAreNotAloneOrNotOnAWeightedStation)
{
    for (int variant = 0; variant < 4; variant++) {
        Network n(3);
        n.p.iearth = 2;
        n.station("S", 0, 0);
        n.target("T", 0, 0);
        n.stations[0].ix[0] = n.stations[0].ix[1] = CODE_WEIGHTED;
        n.targets[0].ix[0] = n.targets[0].ix[1] = CODE_WEIGHTED;
        if (variant != 1) n.stations[0].ix[2] = CODE_FIXED;
        if (variant <= 1) n.targets[0].ix[2] = CODE_FIXED; // two in all, or the target's alone
        if (variant >= 2) n.stations[0].ix[variant - 2] = CODE_FREE;
        Filled f(n, 1, 2);
        EXPECT_EQ(V(f.run, nfixh), variant == 0 ? 2 : 1);
        EXPECT_EQ(n.report(), "");
    }
}

TEST(FillPt, CountsTargetsWithAStatusAbove100)
{
    Network n(3);
    n.station("S", 0, 0).status = 101;
    n.target("A", 0, 0).status = 100;
    n.target("B", 0, 0).status = 101;
    n.target("C", 0, 0).status = 102;
    Filled f(n, 1, 4);
    EXPECT_EQ(V(f.run, nstat100), 2);
}

TEST(FillPt, NumbersTheLumpOfAPointByItsPlaceInTheTable)
{
    for (int failing = 0; failing < 6; failing++) { // the same without memory for an index
        Network n(3);
        n.station("S", 0, 0).ilump = 30;
        n.station("R", 0, 0);
        n.target("T", 0, 0).ilump = 20;
        n.target("U", 0, 0).ilump = 99; // not in the table: the world
        int table[4] = {20, 30, 99, 0};
        vorn run(n.ready());
        V(run, nsta) = 2;
        V(run, npoints) = 4;
        V(run, nlump) = 2;
        ASSERT_EQ((V(run, vornallocate)()), 0);
        fail_allocation(failing);
        (V(run, fill_pt)(table, nullptr, 0, 0, 0));
        fail_allocation(0);
        const int wanted[4] = {2, 0, 1, 0};
        for (int i = 0; i < 4; i++) EXPECT_EQ(V(run, points)[i].ilump, wanted[i]) << i;
    }
}

TEST(FillPt, PutsCopiesBehindAPointThatWasSeenAtSeveralEpochs)
{
    Network n(3);
    n.p.idebug = 1;
    n.station("S", 1, 2, 3).ilump = 5;
    n.station("R", 0, 0);
    n.target("T", 0, 0).ilump = 5;
    n.target("U", 0, 0).ilump = 5;
    n.target("W", 0, 0).ilump = 5;
    int table[5] = {5};
    int s[4] = {0, 7, 0, 9}, t[4] = {0, 7, 8, 9}, u[4] = {1, 0, 8, 0}, w[4] = {2, 0, 0, 0};
    int *isplit[4] = {s, w, t, u}; // rows of targets out of order
    vorn run(n.ready());
    V(run, nsta) = 3;
    V(run, npoints) = 8;
    V(run, nlump) = 1;
    ASSERT_EQ((V(run, vornallocate)()), 0);
    (V(run, fill_pt)(table, isplit, 1, 3, 3));
    const char *names[8] = {"S", "S", "R", "T", "T", "T", "U", "W"};
    for (int i = 0; i < 8; i++) EXPECT_STREQ(V(run, points)[i].name, names[i]) << i;
    EXPECT_EQ(V(run, points)[0].ilump, 1);
    EXPECT_EQ(V(run, points)[1].ilump, 0);
    EXPECT_EQ(V(run, points)[7].ilump, 1);
    EXPECT_EQ(n.report(), "fill_pt: must duplicate station S 1 times\n"
                          "fill_pt: must duplicate target T 2 times\n");
    EXPECT_EQ((V(run, vornsearch)("T")), 3); // the point itself, not a copy
}

TEST(FillPt, StopsAtTheEndOfTheArray)
{
    for (int npoint = 1; npoint <= 5; npoint++) {
        Network n(3);
        n.station("S", 0, 0).ilump = 5;
        n.station("R", 0, 0);
        n.target("T", 0, 0).ilump = 5;
        n.target("U", 0, 0);
        int table[4] = {5};
        int s[4] = {0, 7, 8, 9}, t[4] = {0, 7, 8, 9};
        int *isplit[2] = {s, t};
        vorn run(n.ready());
        V(run, nsta) = 4;
        V(run, npoints) = npoint;
        V(run, nlump) = 1;
        ASSERT_EQ((V(run, vornallocate)()), 0);
        (V(run, fill_pt)(table, isplit, 1, 1, 3));
        const char *names[5] = {"S", "S", "S", "R", "T"};
        for (int i = 0; i < npoint; i++) EXPECT_STREQ(V(run, points)[i].name, names[i]) << i;
    }
}

TEST(FillPt, LeavesTheStationsWhenMoreThanNstaAreFilled)
{
    Network n(3);
    n.station("A", 0, 0);
    n.station("B", 0, 0);
    n.station("C", 0, 0);
    n.target("T", 0, 0);
    Filled f(n, 1, 4);
    EXPECT_STREQ(f.at(1).name, "B");
    EXPECT_STREQ(f.at(2).name, "T");
    EXPECT_STREQ(f.at(3).name, "");
}

TEST(FillPt, ListsImportedPointsUpToTheLastPlaceOfTheirTable)
{
    Network n(3);
    n.station("S", 0, 0).iconn = 2;
    n.station("R", 0, 0).iconn = 1;
    n.target("T", 0, 0).iconn = 2;
    n.target("U", 0, 0).iconn = 2;
    for (int nimport = 0; nimport <= 3; nimport++) {
        vorn run(n.ready());
        V(run, nsta) = 2;
        V(run, npoints) = 4;
        V(run, nimport) = nimport;
        V(run, lcon) = (int *)calloc(3, sizeof(int));
        ASSERT_EQ((V(run, vornallocate)()), 0);
        (V(run, fill_pt)(nullptr, nullptr, 0, 0, 0));
        const int wanted[4][3] = {{0, 0, 0}, {3, 0, 0}, {0, 3, 0}, {0, 2, 3}};
        for (int i = 0; i < 3; i++) EXPECT_EQ(V(run, lcon)[i], wanted[nimport][i]) << nimport << " " << i;
    }
    Filled without(n, 2, 4); // no table: nothing is written
    EXPECT_EQ(V(without.run, lcon), nullptr);
}

TEST(FillPt, CutsANameThatFillsItsField)
{
    Network n(3);
    memset(n.station("", 0, 0).name, 'x', 12);
    memset(n.target("", 0, 0).name, 'y', 12);
    Filled f(n, 1, 2);
    EXPECT_STREQ(f.at(0).name, "xxxxxxxxxxx");
    EXPECT_STREQ(f.at(1).name, "yyyyyyyyyyy");
    EXPECT_EQ((V(f.run, vornsearch)(n.targets[0].name)), 1);
    EXPECT_EQ((V(f.run, searchnam)(n.targets[0].name)), 1);
}

TEST(Duplicate, CopiesWhatAPointIsAndNotWhere)
{
    Network n(3);
    n.station("S", 1, 2, 3);
    vorn run(n.ready());
    V(run, npoints) = 4;
    ASSERT_EQ((V(run, vornallocate)()), 0);
    point *p = V(run, points) + 1;
    strcpy(p->name, "S");
    p->typ = 1;
    p->ilump = p->ntie = 3;
    for (int i = 0; i < 3; i++) p->xpt[i] = p->sxpt[i] = p->n0[i] = 4;
    for (int i = 0; i < 6; i++) p->xex[i] = p->n1[i] = 2 + i;
    for (int i = 0; i < 8; i++) p->defdatum[i] = -i;
    (V(run, duplicate)(1, 1, 1));
    const point &c = p[1];
    EXPECT_STREQ(c.name, "S");
    EXPECT_EQ(c.typ, 1);
    EXPECT_EQ(c.ilump + c.ntie, 0);
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(c.n0[i], 9);
        EXPECT_EQ(c.xpt[i] + c.sxpt[i], 0.0);
    }
    for (int i = 0; i < 6; i++) {
        EXPECT_EQ(c.n1[i], i < 5 ? 2 + i : 0);
        EXPECT_EQ(c.xex[i], 0.0);
    }
    for (int i = 0; i < 8; i++) EXPECT_EQ(c.defdatum[i], -i);
    EXPECT_STREQ(p[2].name, "");
    (V(run, duplicate)(2, 1, 1000000)); // no further than the array
    EXPECT_STREQ(p[2].name, "S");
}

TEST(Vornsearch, FindsTheFirstPointOfANameExactly)
{
    for (int failing = 0; failing <= 2; failing++) { // the same without memory for an index
        Network n(3);
        n.station("S", 0, 0);
        n.target("T", 0, 0);
        n.target("T ", 0, 0);
        n.target("S", 0, 0);
        Filled f(n, 1, 4);
        const struct {
            const char *name;
            int found;
        } rows[] = {{"S", 0}, {"T", 1}, {"T ", 2}, {"t", -1}, {"", -1}};
        for (const auto &r : rows) {
            fail_allocation(failing);
            EXPECT_EQ((V(f.run, vornsearch)(r.name)), r.found) << r.name;
        }
        fail_allocation(0);
    }
}

TEST(Vornsearch, FindsTheOnlyPoint)
{
    Network n(3);
    n.station("S", 0, 0);
    Filled f(n, 1, 1);
    EXPECT_EQ((V(f.run, vornsearch)("S")), 0);
}

TEST(Vornsearch, FindsNothingWithoutPoints)
{
    Network n(3);
    vorn run(n.ready());
    EXPECT_EQ((V(run, vornsearch)("A")), -1);
    V(run, npoints) = 5;
    EXPECT_EQ((V(run, vornsearch)("A")), -1);
}

TEST(Vornsearch, ForgetsThePointsOfAnEarlierArray)
{
    Network n(3);
    n.station("S", 0, 0);
    n.target("T", 0, 0);
    Filled f(n, 1, 2);
    EXPECT_EQ((V(f.run, vornsearch)("T")), 1);
    (V(f.run, clean)());
    EXPECT_EQ((V(f.run, vornsearch)("T")), -1);
    ASSERT_EQ((V(f.run, vornallocate)()), 0);
    EXPECT_EQ((V(f.run, vornsearch)("T")), -1);
    f.fill(nullptr, nullptr, 0, 0, 0);
    EXPECT_EQ((V(f.run, vornsearch)("T")), 1);
}

TEST(Searchnam, LooksAtStationsFirstAndSkipsNegativeStatus)
{
    for (int failing = 0; failing <= 2; failing++) { // the same without memory for an index
        Network n(3);
        n.station("A", 0, 0).status = -1;
        n.station("B", 0, 0).status = 0;
        n.station("C", 0, 0);
        n.target("F", 0, 0);
        n.target("C", 0, 0);
        n.target("A", 0, 0);
        n.target("D", 0, 0).status = -2;
        n.target("E", 0, 0).status = 0;
        vorn run(n.ready());
        const struct {
            const char *name;
            int found;
        } rows[] = {{"A", 5}, {"B", 1}, {"C", 2}, {"D", -1}, {"E", 7}, {"E ", -1}, {"F", 3}, {"", -1}};
        for (const auto &r : rows) {
            fail_allocation(failing);
            EXPECT_EQ((V(run, searchnam)(r.name)), r.found) << r.name;
        }
        fail_allocation(0);
    }
}

} // namespace
