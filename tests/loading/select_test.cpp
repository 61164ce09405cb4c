#include <gtest/gtest.h>
#include <string.h>

#include "support/access.h"
#include "support/faults.h"
#include "support/network.h"

namespace {

using Lines = std::vector<std::string>;

TEST(Selectm, CountsRecordsWithPositiveTyp)
{
    Network n(3);
    n.distance("A", "B", 1, 1);
    n.distance("A", "B", 1, 1).typ = KIND_DISTANCE_CONSTANTS;
    n.distance("A", "B", 1, 1).typ = -KIND_DISTANCE;
    n.distance("A", "B", 1, 1).typ = 0;
    n.heightdiff("A", "B", 1, 1);
    n.vertical("A", "B", 1, 1);
    n.vertical("A", "B", 1, 1);
    n.vertical("A", "B", 1, 1);
    n.azimuth("A", "B", 1, 1);
    vorn run(n.ready());
    EXPECT_EQ((V(run, selectm)(1, nullptr)), 2);
    EXPECT_EQ((V(run, selectm)(3, nullptr)), 1);
    EXPECT_EQ((V(run, selectm)(4, nullptr)), 0);
    EXPECT_EQ((V(run, selectm)(5, nullptr)), 3);
    EXPECT_EQ((V(run, selectm)(7, nullptr)), 1);
}

TEST(Selectm, PassesOverTheEpochOfARecordWithTyp0)
{
    Network n(3);
    n.p.lumpmethod = 9;
    n.direction("A", "B", 1, 1).time = 5;
    n.directions[0].typ = 0;
    n.direction("A", "B", 1, 1).time = 6;
    n.directions[1].typ = 1; // any typ above 0 selects
    int table[2] = {};
    vorn run(n.ready());
    EXPECT_EQ((V(run, selectm)(4, table)), 1);
    EXPECT_EQ(table[0], 6);
    EXPECT_EQ(table[1], 0);
}

// Six directions; the third is not selected, the fourth has no epoch.
void add_epochs(Network &n)
{
    const int time[] = {4, 2, 9, 0, 4, 7};
    for (int t : time) n.direction("A", "B", 1, 1).time = t;
    n.directions[2].typ = -KIND_DIRECTION;
}

TEST(Selectm, CollectsTheEpochsOfSelectedDirectionsInOrder)
{
    for (int failing = 0; failing <= 2; failing++) { // without memory for an index the same
        Network n(3);
        n.p.lumpmethod = 9;
        add_epochs(n);
        vorn run(n.ready());
        int table[6] = {};
        fail_allocation(failing);
        EXPECT_EQ((V(run, selectm)(4, table)), 5);
        fail_allocation(0);
        const int wanted[6] = {4, 2, 7, 0, 0, 0};
        for (int i = 0; i < 6; i++) EXPECT_EQ(table[i], wanted[i]) << i;
    }
}

TEST(Selectm, LeavesTheEpochsAloneForOtherKindsAndMethods)
{
    Network n(3);
    add_epochs(n);
    n.vertical("A", "B", 1, 1).time = 5;
    int table[6] = {};
    vorn run(n.ready());
    for (int method : {0, 1}) {
        n.p.lumpmethod = method;
        EXPECT_EQ((V(run, selectm)(4, table)), 5);
        EXPECT_EQ((V(run, selectm)(4, nullptr)), 5);
    }
    n.p.lumpmethod = 9;
    EXPECT_EQ((V(run, selectm)(5, table)), 1);
    EXPECT_EQ(table[0], 0);
}

TEST(Deselall, NegatesEverySelectedRecordWithItsLine)
{
    Network n(3);
    n.distance("A", "B", 1, 1).typ = KIND_DISTANCE_CONSTANTS;
    n.distance("A", "C", 1, 1).typ = -KIND_DISTANCE;
    n.distance("A  ", "D", 1, 1);
    vorn run(n.ready());
    V(run, ndist) = 2;
    (V(run, deselall)(1));
    EXPECT_EQ(V(run, ndist), 0);
    EXPECT_EQ(n.distances[0].typ, -2);
    EXPECT_EQ(n.distances[1].typ, -1);
    EXPECT_EQ(n.distances[2].typ, -1);
    EXPECT_EQ(n.messages.lines, (Lines{"deselall: Must deselect distance between A and B",
                                       "deselall: Must deselect distance between A   and D"}));
    EXPECT_EQ(n.report(), "deselall: Must deselect distance between A and B\n"
                          "deselall: Must deselect distance between A   and D\n");
}

TEST(Deselall, NamesEveryKindAndClearsItsCount)
{
    Network n(3);
    n.distance("A", "B", 1, 1);
    n.heightdiff("A", "B", 1, 1);
    n.direction("A", "B", 1, 1);
    n.vertical("A", "B", 1, 1);
    n.azimuth("A", "B", 1, 1);
    vorn run(n.ready());
    V(run, ndist) = V(run, ndifh) = V(run, ndir1) = V(run, ndir2) = V(run, naz) = 1;
    for (int kind : {1, 3, 4, 5, 7}) (V(run, deselall)(kind));
    EXPECT_EQ(V(run, ndist) + V(run, ndifh) + V(run, ndir1) + V(run, ndir2) + V(run, naz), 0);
    EXPECT_EQ(n.messages.lines, (Lines{"deselall: Must deselect distance between A and B",
                                       "deselall: Must deselect height difference between A and B",
                                       "deselall: Must deselect horizontal direction between A and B",
                                       "deselall: Must deselect vertical angle between A and B",
                                       "deselall: Must deselect azimuth angle between A and B"}));
}

TEST(Deselall, ClearsTheCountOfAListWithoutSelectedRecordsSilently)
{
    Network n(3);
    n.azimuth("A", "B", 1, 1).typ = -KIND_AZIMUTH;
    n.azimuth("A", "B", 1, 1).typ = 0;
    vorn run(n.ready());
    V(run, naz) = 3;
    (V(run, deselall)(7));
    EXPECT_EQ(V(run, naz), 0);
    EXPECT_EQ(n.azimuths[0].typ, -7);
    EXPECT_TRUE(n.messages.lines.empty());
    EXPECT_EQ(n.report(), "");
}

TEST(Checkm, DeselectsRecordsToUnknownOrDeselectedPoints)
{
    Network n(3);
    n.station("S", 0, 0);
    n.station("OFF", 0, 0).status = STATUS_OFF;
    n.target("T", 1, 0);
    n.target("ZERO", 1, 0).status = 0;
    n.distance("S", "T", 1, 1);
    n.distance("X", "T", 1, 1);
    n.distance("S", "T ", 1, 1);
    n.distance("OFF", "T", 1, 1);
    n.distance("T", "OFF", 1, 1);
    n.distance("S", "ZERO", 1, 1);
    n.distance("X", "Y", 1, 1).typ = -1;
    vorn run(n.ready());
    EXPECT_EQ((V(run, checkm)(1)), 4);
    const int typ[] = {1, -1, -1, -1, -1, 1, -1};
    for (int i = 0; i < 7; i++) EXPECT_EQ(n.distances[i].typ, typ[i]) << i;
    EXPECT_EQ(n.messages.lines, (Lines{"checkm: Must deselect distance between X and T",
                                       "checkm: Must deselect distance between S and T ",
                                       "checkm: Must deselect distance between OFF and T",
                                       "checkm: Must deselect distance between T and OFF"}));
    EXPECT_EQ(n.report(), "checkm: Must deselect distance between X and T\n"
                          "checkm: Must deselect distance between S and T \n"
                          "checkm: Must deselect distance between OFF and T\n"
                          "checkm: Must deselect distance between T and OFF\n");
}

TEST(Checkm, KeepsRecordsToPointsWithStatus0AndPassesOverRecordsWithTyp0)
{
    Network n(3);
    n.station("S", 0, 0).status = 0;
    n.target("T", 1, 0).status = 0;
    n.direction("S", "T", 1, 1);
    n.direction("X", "Y", 1, 1).typ = 0;
    vorn run(n.ready());
    EXPECT_EQ((V(run, checkm)(4)), 0);
    EXPECT_EQ(n.directions[0].typ, KIND_DIRECTION);
    EXPECT_TRUE(n.messages.lines.empty());
}

TEST(Checkm, LooksAtTheStatusOfBothPointsItFinds)
{
    Network n(3);
    n.station("S", 0, 0);
    n.target("T", 1, 0);
    n.target("U", 1, 0);
    n.heightdiff("S", "U", 1, 1);
    n.heightdiff("T", "U", 1, 1);
    n.heightdiff("T", "S", 1, 1);
    n.heightdiff("U", "T", 1, 1);
    vorn run(n.ready());
    EXPECT_EQ((V(run, searchnam)("U")), 2);
    n.targets[1].status = STATUS_OFF; // after the look-up tables were made
    EXPECT_EQ((V(run, checkm)(3)), 3);
    EXPECT_EQ(n.heightdiffs[2].typ, 3);
}

TEST(Checkm, WantsAnglesToStartAtAStation)
{
    Network n(3);
    n.station("S", 0, 0);
    n.target("T", 1, 0);
    n.distance("T", "S", 1, 1);
    n.heightdiff("T", "S", 1, 1);
    n.direction("T", "S", 1, 1);
    n.direction("S", "T", 1, 1);
    n.vertical("T", "S", 1, 1);
    n.vertical("S", "S", 1, 1);
    n.azimuth("T", "S", 1, 1);
    vorn run(n.ready());
    EXPECT_EQ((V(run, checkm)(1)), 0);
    EXPECT_EQ((V(run, checkm)(3)), 0);
    EXPECT_EQ((V(run, checkm)(4)), 1);
    EXPECT_EQ((V(run, checkm)(5)), 1);
    EXPECT_EQ((V(run, checkm)(7)), 0);
    EXPECT_EQ(n.messages.lines, (Lines{"checkm: Must deselect horizontal direction between T and S",
                                       "checkm: Must deselect vertical angle between T and S"}));
}

TEST(Checkm, CutsANameThatFillsItsField)
{
    Network n(3);
    n.station("S", 0, 0);
    memset(n.station("", 0, 0).name, 'x', 12);
    memset(n.distance("", "S", 1, 1).from, 'x', 12);
    memset(n.distance("", "S", 1, 1).from, 'y', 12);
    vorn run(n.ready());
    EXPECT_EQ((V(run, checkm)(1)), 1);
    EXPECT_EQ(n.messages.lines, (Lines{"checkm: Must deselect distance between yyyyyyyyyyy and S"}));
}

} // namespace
