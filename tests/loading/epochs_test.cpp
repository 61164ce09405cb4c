#include <gtest/gtest.h>
#include <stdlib.h>

#include <vector>

#include "support/access.h"
#include "support/faults.h"
#include "support/network.h"

namespace {

using Lines = std::vector<std::string>;

TEST(ChkNumbers, CountsSelectedAndConnectedPoints)
{
    Network n(3);
    n.station("A", 0, 0).iconn = 1;
    n.station("B", 0, 0).iconn = 2;
    n.station("C", 0, 0).iconn = 3;
    n.station("D", 0, 0).status = 0;
    n.stations[3].iconn = 1;
    n.stations[3].ilump = 9;
    n.target("E", 0, 0).iconn = 2;
    n.target("F", 0, 0).status = -1;
    n.target("G", 0, 0).status = 0;
    n.targets[2].iconn = 1;
    for (const char *name : {"H", "I", "J"}) n.target(name, 0, 0).iconn = 1;
    vorn run(n.ready());
    int table[10], nsplitsta = 7, nsplittar = 7;
    (V(run, chk_numbers)(table, &nsplitsta, &nsplittar));
    EXPECT_EQ(V(run, nsta), 3);
    EXPECT_EQ(V(run, ntar), 4);
    EXPECT_EQ(V(run, nexport), 4);
    EXPECT_EQ(V(run, nimport), 2);
    EXPECT_EQ(nsplitsta, 0);
    EXPECT_EQ(nsplittar, 0);
    EXPECT_TRUE(n.messages.lines.empty()); // no lumps asked for
}

TEST(ChkNumbers, ListsDistinctLumpsInOrderOfAppearance)
{
    for (int failing = 0; failing <= 6; failing++) { // the same without memory for indexes
        Network n(3);
        n.p.lumpmethod = 1;
        n.station("A", 0, 0).ilump = 40;
        n.station("B", 0, 0).ilump = -7;
        n.station("C", 0, 0);
        n.target("D", 0, 0).ilump = 40;
        n.target("E", 0, 0).ilump = 12;
        vorn run(n.ready());
        int table[5] = {}, nsplitsta, nsplittar;
        fail_allocation(failing);
        (V(run, chk_numbers)(table, &nsplitsta, &nsplittar));
        fail_allocation(0);
        EXPECT_EQ(V(run, nlump), 3);
        EXPECT_EQ(nsplitsta, 2);
        EXPECT_EQ(nsplittar, 2);
        EXPECT_EQ(table[0], 40);
        EXPECT_EQ(table[1], -7);
        EXPECT_EQ(table[2], 12);
        EXPECT_EQ(n.p.lumpmethod, 1);
        EXPECT_TRUE(n.messages.lines.empty());
    }
}

TEST(ChkNumbers, TakesAPointWithADirectionWithoutEpochOutOfItsLump)
{
    for (int failing = 0; failing <= 6; failing++) {
        Network n(3);
        n.p.lumpmethod = 9;
        n.station("S", 0, 0).ilump = 1;
        n.station("R", 0, 0).ilump = 1;
        n.target("T", 0, 0).ilump = 1;
        n.target("U", 0, 0).ilump = 2;
        n.direction("S", "T", 1, 1).time = 4;
        n.direction("R", "V", 1, 1).typ = -KIND_DIRECTION; // not selected
        n.direction("R", "T", 1, 1).typ = 0;
        n.direction("S", "U", 1, 1);
        n.direction("S", "W", 1, 1);
        vorn run(n.ready());
        int table[4] = {}, nsplitsta, nsplittar;
        fail_allocation(failing);
        (V(run, chk_numbers)(table, &nsplitsta, &nsplittar));
        fail_allocation(0);
        EXPECT_EQ(n.report(), "fill_vorn: no time for S to U\n"
                              "           put lump index 0 to S\n"
                              "fill_vorn: no time for S to U\n"
                              "           put lump index 0 to U\n");
        EXPECT_EQ(n.stations[0].ilump, 0);
        EXPECT_EQ(n.stations[1].ilump, 1);
        EXPECT_EQ(n.targets[0].ilump, 1);
        EXPECT_EQ(n.targets[1].ilump, 0);
        EXPECT_EQ(nsplitsta, 1);
        EXPECT_EQ(nsplittar, 1);
        EXPECT_EQ(V(run, nlump), 1);
        EXPECT_EQ(n.p.lumpmethod, 9);
    }
}

TEST(ChkNumbers, GivesTheMethodologyUpWithoutLumps)
{
    Network n(3);
    n.p.lumpmethod = 9;
    n.station("S", 0, 0).ilump = 1;
    n.direction("S", "T", 1, 1);
    vorn run(n.ready());
    int table[1] = {}, nsplitsta, nsplittar;
    (V(run, chk_numbers)(table, &nsplitsta, &nsplittar));
    EXPECT_EQ(n.p.lumpmethod, 0);
    EXPECT_EQ(V(run, nlump), 0);
    EXPECT_EQ(n.messages.lines, (Lines{"fill_vorn: Put back the lump methodology to 0"}));
}

TEST(ChkNumbers, HasNoLumpsWithMethodology0)
{
    Network n(3);
    n.station("S", 0, 0).ilump = 1;
    vorn run(n.ready());
    int table[1] = {}, nsplitsta, nsplittar;
    (V(run, chk_numbers)(table, &nsplitsta, &nsplittar));
    EXPECT_EQ(V(run, nlump), 0);
    EXPECT_EQ(nsplitsta, 1);
    EXPECT_EQ(n.stations[0].ilump, 1);
    EXPECT_TRUE(n.messages.lines.empty());
}

TEST(ChkNumbers, CountsWithoutATableOfLumps)
{
    Network n(3);
    n.station("S", 0, 0).ilump = 1;
    n.target("T", 0, 0).ilump = 1;
    vorn run(n.ready());
    int nsplitsta, nsplittar;
    (V(run, chk_numbers)(nullptr, &nsplitsta, &nsplittar));
    EXPECT_EQ(V(run, nsta), 1);
    EXPECT_EQ(nsplitsta, 1);
    EXPECT_EQ(nsplittar, 1);
    EXPECT_EQ(V(run, nlump), 0);
}

// Zeroed rows of isplit.
struct Rows {
    Rows(int nrow, int nepoch) : cells((size_t)nrow * (nepoch + 1)), rows((size_t)nrow)
    {
        for (int i = 0; i < nrow; i++) rows[i] = cells.data() + (size_t)i * (nepoch + 1);
    }
    std::vector<int> cells;
    std::vector<int *> rows;
};

// Two stations and three targets in lumps, epochs 30, 10, 20 in the order of the table.
void add_split(Network &n)
{
    n.station("OUT", 0, 0);
    n.station("S", 0, 0).ilump = 1;
    n.station("OFF", 0, 0).status = 0;
    n.stations[2].ilump = 1;
    n.station("R", 0, 0).ilump = 1;
    n.target("T", 0, 0).ilump = 1;
    n.target("OUT2", 0, 0);
    n.target("U", 0, 0).ilump = 1;
    n.target("W", 0, 0).ilump = 1;
    n.direction("S", "T", 1, 1).time = 30;
    n.direction("S", "U", 1, 1).time = 10;
    n.direction("S", "U", 1, 1).time = 20;
    n.direction("R", "T", 1, 1).time = 20;
    n.direction("OUT", "T", 1, 1).time = 10;
    n.direction("OFF", "OUT2", 1, 1).time = 30;
    n.direction("R", "W", 1, 1).time = 99; // not in the table
    n.direction("R", "W", 1, 1).time = 30;
    n.directions[7].typ = -KIND_DIRECTION;
}

TEST(FillIsplit, MarksTheEpochsAtWhichEachPointWasSeen)
{
    for (int failing = 0; failing <= 12; failing++) { // the same without memory for indexes
        Network n(3);
        n.p.idebug = 1;
        add_split(n);
        vorn run(n.ready());
        Rows r(5, 3);
        int epochs[3] = {30, 10, 20};
        V(run, nsta) = 10;
        V(run, ntar) = 10;
        fail_allocation(failing);
        (V(run, fill_isplit)(r.rows.data(), 2, 3, 3, epochs));
        fail_allocation(0);
        const int wanted[5][4] = {{1, 30, 10, 20}, {3, 0, 0, 20}, {0, 30, 10, 20}, {2, 0, 10, 20}, {3, 0, 0, 0}};
        for (int i = 0; i < 5; i++)
            for (int c = 0; c < 4; c++) EXPECT_EQ(r.rows[i][c], wanted[i][c]) << i << " " << c;
        EXPECT_EQ(V(run, npoints), 5);
        EXPECT_EQ(V(run, nsta), 10 + 4 - 2);
        EXPECT_EQ(V(run, ntar), 10 + 3 - 3); // of the targets only row 2 is counted
        EXPECT_EQ(n.report(), "table for points dissociation\n"
                              "S    30  10  20 \n"
                              "R     0   0  20 \n"
                              "T    30  10  20 \n"
                              "U     0  10  20 \n"
                              "W     0   0   0 \n"
                              "\nDissociation of points for lumps\n"
                              "Must add 2 theodolites\n"
                              "\nDissociation of points for lumps\n");
    }
}

TEST(FillIsplit, CountsAllTargetsWhenNoStationIsInALump)
{
    Network n(3);
    n.p.idebug = 1;
    add_split(n);
    for (auto &s : n.stations) s.ilump = 0;
    vorn run(n.ready());
    Rows r(3, 3);
    int epochs[3] = {30, 10, 20};
    V(run, nsta) = 1;
    V(run, ntar) = 4;
    (V(run, fill_isplit)(r.rows.data(), 0, 3, 3, epochs));
    EXPECT_EQ(V(run, nsta), 1);
    EXPECT_EQ(V(run, ntar), 4 + 5 - 3);
    const std::string report = n.report();
    EXPECT_NE(report.find("\n\nDissociation of points for lumps\n\nDissociation of points for lumps\n"
                          "Must add 2 object points\n"),
              std::string::npos);
}

TEST(FillIsplit, SaysThatASinglePointIsAdded)
{
    Network n(3);
    n.p.idebug = 1;
    n.station("STATION-NR1", 0, 0).ilump = 1; // a name that fills its field
    n.direction("STATION-NR1", "T", 1, 1).time = 5;
    n.direction("STATION-NR1", "T", 1, 1).time = 6;
    n.direction("STATION-NR1", "T", 1, 1).time = 7;
    n.directions[2].typ = 0;
    vorn run(n.ready());
    Rows r(1, 3);
    int epochs[3] = {5, 6, 7};
    V(run, nsta) = 1;
    (V(run, fill_isplit)(r.rows.data(), 1, 0, 3, epochs));
    EXPECT_EQ(V(run, nsta), 2);
    EXPECT_EQ(n.report(), "table for points dissociation\n"
                          "STATION-NR1     5   6   0 \n"
                          "\nDissociation of points for lumps\n"
                          "Must add 1 theodolites\n"
                          "\nDissociation of points for lumps\n");
}

TEST(FillIsplit, SaysThatASingleTargetIsAdded)
{
    Network n(3);
    n.p.idebug = 1;
    n.target("T", 0, 0).ilump = 1;
    n.direction("S", "T", 1, 1).time = 5;
    n.direction("S", "T", 1, 1).time = 6;
    vorn run(n.ready());
    Rows r(1, 2);
    int epochs[2] = {5, 6};
    V(run, ntar) = 1;
    (V(run, fill_isplit)(r.rows.data(), 0, 1, 2, epochs));
    EXPECT_EQ(V(run, ntar), 2);
    EXPECT_EQ(n.report(), "table for points dissociation\n"
                          "T     5   6 \n"
                          "\nDissociation of points for lumps\n"
                          "\nDissociation of points for lumps\n"
                          "Must add 1 object points\n");
}

TEST(FillIsplit, LowersTheCountsWhenRowsAreEmpty)
{
    Network n(3);
    add_split(n);
    n.directions.clear();
    vorn run(n.ready());
    Rows r(5, 1);
    int epochs[1] = {30};
    V(run, nsta) = 4;
    V(run, ntar) = 4;
    (V(run, fill_isplit)(r.rows.data(), 2, 3, 1, epochs));
    EXPECT_EQ(V(run, nsta), 4 - 2);
    EXPECT_EQ(V(run, ntar), 4 - 3);
    EXPECT_EQ(n.report(), "");
}

TEST(FillIsplit, WritesNoFurtherThanItsRows)
{
    Network n(3);
    add_split(n);
    vorn run(n.ready());
    Rows r(2, 3); // five points are in lumps
    int epochs[3] = {30, 10, 20};
    (V(run, fill_isplit)(r.rows.data(), 1, 1, 3, epochs));
    EXPECT_EQ(V(run, npoints), 2);
    (V(run, fill_isplit)(nullptr, 0, 0, 3, epochs));
    EXPECT_EQ(V(run, npoints), 0);
}

TEST(FillIsplit, MarksEveryRowOfAName)
{
    Network n(3);
    n.station("S", 0, 0).ilump = 1;
    n.station("R", 0, 0).ilump = 1;
    n.station("S", 0, 0).ilump = 2;
    n.direction("S", "T", 1, 1).time = 5;
    n.direction("S", "T", 1, 1).time = 6;
    for (int failing = 0; failing <= 10; failing++) {
        vorn run(n.ready());
        Rows r(3, 2);
        int epochs[2] = {5, 6};
        fail_allocation(failing);
        (V(run, fill_isplit)(r.rows.data(), 3, 0, 2, epochs));
        fail_allocation(0);
        const int wanted[3][3] = {{0, 5, 6}, {1, 0, 0}, {2, 5, 6}};
        for (int i = 0; i < 3; i++)
            for (int c = 0; c < 3; c++) EXPECT_EQ(r.rows[i][c], wanted[i][c]) << i << " " << c;
    }
}

TEST(CleanTemplump, ReleasesTheTablesAndForgetsTheLumpsOfASplitNetwork)
{
    Network n(3);
    n.station("S", 0, 0);
    for (int nepoch = 0; nepoch < 2; nepoch++) {
        vorn run(n.ready());
        V(run, npoints) = 2;
        V(run, nlump) = 3;
        ASSERT_EQ((V(run, vornallocate)()), 0);
        V(run, points)[0].ilump = V(run, points)[1].ilump = 2;
        int *lumps = (int *)calloc(3, sizeof(int)), *times = (int *)calloc(3, sizeof(int));
        int **isplit = NULL;
        if (nepoch) {
            isplit = (int **)calloc(2, sizeof(int *));
            for (int i = 0; i < 2; i++) isplit[i] = (int *)calloc(2, sizeof(int));
        }
        (V(run, clean_templump)(lumps, times, isplit, nepoch, 2)); // a leak would show in the sanitizer
        EXPECT_EQ(V(run, nlump), nepoch ? 0 : 3);
        for (int i = 0; i < 2; i++) EXPECT_EQ(V(run, points)[i].ilump, nepoch ? 0 : 2);
        (V(run, clean_templump)(nullptr, nullptr, nullptr, nepoch, 2));
    }
}

} // namespace
