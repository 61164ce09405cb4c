#include "host/preparation/prepare.h"

#include <gtest/gtest.h>

#include <math.h>

#include "host/folder.h"

using namespace vornhost;

namespace {

// A file of the dimension with these tables; lines are counted from 1.
std::string file_of(int dimension, const std::string &tables)
{
    return "[run]\ndimension = " + std::to_string(dimension) + "\n[tables]\n" + tables;
}

// A prepared network; notes without the folder's path.
struct Case {
    explicit Case(const std::string &text)
    {
        folder.write("net.inp", text);
        EXPECT_EQ(folder.read(), Lines());
        prepared = prepare(folder.model);
        for (std::string &line : prepared.notes) folder.shorten(line);
    }
    Model &model() { return folder.model; }
    const station_input &station(size_t i) { return folder.model.stations.records[i]; }
    Folder folder;
    Prepared prepared;
};

const std::string square_targets = "targets = '''\nname x y z code\nA 100 0 0 fixed\nB 0 100 0 fixed\n'''\n";

} // namespace

// Azimuths to A, B are 0 and 100 gon; the circle reads 390 and 90 gon, so Rx3 is -10 gon on the average.
TEST(Prepare, TakesOrientationsAsCircularMeans)
{
    Case c(file_of(2, "stations = '''\nname x y\nS 0 0\n'''\n" + square_targets +
                          "directions = '''\nfrom to value sigma\nS A 390.001 0.001\nS B 89.999 0.001\n'''\n"));
    EXPECT_NEAR(c.station(0).r[2], -10.0 * M_PI / 200.0, 1e-14);
    EXPECT_EQ(c.prepared.notes, Lines());
}

TEST(Prepare, KeepsTheOrientationInHalfACircleToEachSide)
{
    Case c(file_of(2, "stations = '''\nname x y\nS 0 0\n'''\n" + square_targets +
                          "directions = '''\nfrom to value sigma\nS A 199.999 0.001\nS B 300.001 0.001\n'''\n"));
    EXPECT_NEAR(c.station(0).r[2], M_PI, 1e-14);
    EXPECT_GT(c.station(0).r[2], -M_PI);
    EXPECT_LE(c.station(0).r[2], M_PI);
}

TEST(Prepare, PassesOverDirectionsWithoutCoordinatesOrSelection)
{
    Case c(file_of(2, "stations = '''\nname x y\nS 0 0\n'''\n"
                      "targets = '''\nname x y status\nA 100 0 used\nB - - used\nC 0 100 used\nD 5 5 off\n'''\n"
                      "directions = '''\nfrom to value sigma use\nS A 25 1 yes\nS B 77 1 yes\nS C 0 1 no\nS D 1 1 "
                      "yes\n'''\n"));
    EXPECT_NEAR(c.station(0).r[2], 25.0 * M_PI / 200.0, 1e-14);
}

TEST(Prepare, SaysWhenNoDirectionGivesAnOrientation)
{
    Case c(file_of(2, "stations = '''\nname x y\nS - -\n'''\n" + square_targets +
                          "directions = '''\nfrom to value sigma\nS A 25 1\n'''\n"));
    EXPECT_EQ(c.station(0).r[2], 0.0);
    EXPECT_EQ(c.prepared.notes,
              Lines({"net.inp:6: station S has no direction between points with coordinates: its orientation starts "
                     "at 0"}));
}

TEST(Prepare, LeavesAGivenOrientationAlone)
{
    Case c(file_of(2, "stations = '''\nname x y orientation\nS 0 0 10\n'''\n" + square_targets +
                          "directions = '''\nfrom to value sigma\nS A 25 1\n'''\n"));
    EXPECT_NEAR(c.station(0).r[2], -10.0 * M_PI / 200.0, 1e-15);
}

TEST(Prepare, HandsStationsWithoutAnglesOverAsTargetsInFrontOfTheOthers)
{
    Case c(file_of(2, "stations = '''\nname x y sx sy code connect\nP 1 2 0.1 0.2 weighted export\nS 0 0 - - free "
                      "none\nQ 3 4 - - free none\n'''\n" +
                          square_targets +
                          "directions = '''\nfrom to value sigma use\nS A 0 1 yes\nQ A 0 1 no\n'''\n"
                          "distances = '''\nfrom to value sigma\nP A 99 1\nQ A 98 1\n'''\n"));
    ASSERT_EQ(c.model().stations.size(), 1u);
    EXPECT_STREQ(c.station(0).name, "S       ");
    EXPECT_EQ(c.model().station_notes.size(), 1u);
    EXPECT_EQ(c.model().p.nstations, 1);
    ASSERT_EQ(c.model().p.ntargets, 4);
    const target_input *t = c.model().p.targets;
    EXPECT_STREQ(t[0].name, "P       ");
    EXPECT_STREQ(t[1].name, "Q       ");
    EXPECT_STREQ(t[2].name, "A       ");
    EXPECT_EQ(t[0].x[1], 2.0);
    EXPECT_EQ(t[0].sx[1], 0.2);
    EXPECT_EQ(t[0].ix[0], CODE_WEIGHTED);
    EXPECT_EQ(t[0].ix[2], CODE_ABSENT);
    EXPECT_EQ(t[0].iconn, 1);
    EXPECT_EQ(t[0].status, STATUS_ON);
    EXPECT_EQ(c.prepared.notes,
              Lines({"net.inp:6: station P has no directions or vertical angles: treated as a target",
                     "net.inp:8: station Q has no directions or vertical angles: treated as a target"}));
    ASSERT_EQ(c.prepared.targets.size(), 4u);
    EXPECT_TRUE(c.prepared.targets[1].station && c.prepared.targets[1].handed_as_target);
    EXPECT_EQ(c.prepared.targets[1].where.line, 8);
    EXPECT_FALSE(c.prepared.targets[2].station || c.prepared.targets[2].handed_as_target);
    EXPECT_EQ(c.model().targets.where[2].line, 12);
    ASSERT_EQ(c.prepared.stations.size(), 1u);
    EXPECT_TRUE(c.prepared.stations[0].station && !c.prepared.stations[0].handed_as_target);
}

TEST(Prepare, KeepsStationsWithRotationsOfTheirOwn)
{
    Case c(file_of(2, "stations = '''\nname x y rx3 code_rx3\nP 1 2 0 -\nQ 3 4 - fixed\n'''\n" + square_targets +
                          "distances = '''\nfrom to value sigma\nP A 99 1\nQ A 98 1\n'''\n"));
    EXPECT_EQ(c.model().stations.size(), 2u);
}

TEST(Prepare, AdjustsTheMembersOfGroups)
{
    Case c(file_of(2, "groups = '''\nname code_additive\nG free\n'''\n"
                      "stations = '''\nname x y group\nP 1 2 -\nS 0 0 G\nQ 3 4 -\nR 5 6 G\n'''\n" +
                          square_targets +
                          "directions = '''\nfrom to value sigma\nS A 0 1\nR A 0 1\n'''\n"
                          "distances = '''\nfrom to value sigma constants\nS A 99 1 yes\nR A 98 1 yes\n'''\n"));
    ASSERT_EQ(c.model().stations.size(), 2u);
    EXPECT_EQ(c.model().group_members[0], std::vector<int>({0, 1}));
    EXPECT_EQ(c.model().p.groups[0].nmember, 2);
}

TEST(Prepare, HandsEveryStationOverAsTargetInOneDimension)
{
    Case c(file_of(1, "groups = '''\nname code_scale\nG free\n'''\n"
                      "stations = '''\nname z code_rx3 group\nP 1 fixed -\nQ 2 - G\n'''\n"
                      "height_differences = '''\nfrom to value sigma\nP Q 1 1\n'''\n"));
    EXPECT_EQ(c.model().p.nstations, 0);
    EXPECT_EQ(c.model().p.ntargets, 2);
    EXPECT_EQ(c.model().group_members[0], std::vector<int>());
    EXPECT_EQ(c.prepared.notes, Lines({"net.inp:10: one dimension has no angles: stations are treated as targets"}));
}

// In the plane vertical angles take no part, so they give a station no orientation.
TEST(Prepare, CountsVerticalAnglesInSpaceOnly)
{
    const std::string tables = "stations = '''\nname x y z\nS 0 0 0\n'''\n" + square_targets +
                               "vertical_angles = '''\nfrom to value sigma\nS A 100 1\n'''\n"
                               "distances = '''\nfrom to value sigma\nS A 100 1\n'''\n";
    EXPECT_EQ(Case(file_of(2, tables)).model().p.nstations, 0);
    EXPECT_EQ(Case(file_of(3, tables)).model().p.nstations, 1);
}

TEST(Prepare, HoldsTheOrientationOfAStationWithVerticalAnglesOnly)
{
    Case c(file_of(3, "stations = '''\nname x y z\nS 0 0 0\n'''\n" + square_targets +
                          "vertical_angles = '''\nfrom to value sigma\nS A 100 1\n'''\n"));
    EXPECT_EQ(c.station(0).ir[2], CODE_FIXED);
    ASSERT_FALSE(c.prepared.notes.empty());
    EXPECT_EQ(c.prepared.notes[0], "net.inp:6: station S has no directions: its orientation is held");
}

// A fixed orientation would count as part of the datum.
TEST(Prepare, HoldsOrientationsOfAFreeNetworkByAWeight)
{
    Case c(file_of(3, "stations = '''\nname x y z\nS 0 0 0\n'''\ntargets = '''\nname x y z\nA 9 0 0\nB 0 9 0\n'''\n"
                      "vertical_angles = '''\nfrom to value sigma\nS A 100 1\n'''\n"));
    EXPECT_EQ(c.station(0).ir[2], CODE_WEIGHTED);
    EXPECT_GT(c.station(0).sr[2], 0.0);
}

TEST(Prepare, HoldsAllRotationsThatNothingDetermines)
{
    Case c(file_of(3, "groups = '''\nname code_additive\nG free\n'''\n"
                      "stations = '''\nname x y z levelled group\nS 0 0 0 no G\n'''\n" +
                          square_targets + "distances = '''\nfrom to value sigma\nS A 100 1\n'''\n"));
    for (int i = 0; i < 3; i++) EXPECT_EQ(c.station(0).ir[i], CODE_FIXED) << i;
}

TEST(Prepare, LeavesACodeOfTheFileAlone)
{
    Case c(file_of(3, "stations = '''\nname x y z code_rx3\nS 0 0 0 free\n'''\n" + square_targets +
                          "vertical_angles = '''\nfrom to value sigma\nS A 100 1\n'''\n"));
    EXPECT_EQ(c.station(0).ir[2], CODE_FREE);
}

TEST(Prepare, TakesVerticalsAsParallelWithoutAnEarthModel)
{
    Case c(file_of(3, square_targets + "height_differences = '''\nfrom to value sigma\nA B 1 1\n'''\n"));
    EXPECT_EQ(c.model().p.iearth, 1);
    ASSERT_EQ(c.prepared.notes.size(), 1u);
    EXPECT_NE(c.prepared.notes[0].find("verticals are taken as parallel"), std::string::npos);
}

TEST(Prepare, LeavesPointsThatAreOffWhereTheyAre)
{
    Case c(file_of(2, "stations = '''\nname x y status\nP 1 2 off\nS 0 0 used\n'''\n" + square_targets +
                          "directions = '''\nfrom to value sigma\nS A 0 1\n'''\n"));
    EXPECT_EQ(c.model().p.nstations, 2);
    EXPECT_EQ(c.prepared.notes, Lines());
}

TEST(Prepare, WarnsOfMarksOfImagesWithAPixelSizeOtherThanOne)
{
    const std::string network = "stations = '''\nname x y z levelled\nS 0 0 9 no\n'''\n"
                                "targets = '''\nname x y z code\nA 1 0 0 fixed\n'''\n"
                                "images = '''\nfile station camera\nimg.txt S C\n'''\n"
                                "cameras = '''\nname width height pu pv c\n";
    for (const bool pixels : {true, false})
        for (const bool statistics : {true, false}) {
            Folder folder;
            folder.write("img.txt", "A        1 2\n");
            folder.write("net.inp",
                         file_of(3, network + (pixels ? "C 9 9 1 1 5800" : "C 9 9 0.006 0.006 35") + "\n'''\n"));
            ASSERT_EQ(folder.read(), Lines());
            folder.model.mode = statistics ? Mode::Statistics : Mode::Solution;
            Lines notes = prepare(folder.model).notes;
            ASSERT_EQ(notes.size(), !pixels && statistics ? 1u : 0u);
            if (notes.empty()) continue;
            folder.shorten(notes[0]);
            EXPECT_EQ(notes[0],
                      "net.inp:18: camera C has a pixel size other than 1: standard deviations and marks of its "
                      "image residuals mean nothing; write it in pixels, with pu and pv 1");
        }
}

// The engine numbers the points of a lump by the lumps that it has met.
TEST(Prepare, OrdersTargetsByLumpWhereTheyAreComparedAfterwards)
{
    for (const char *method : {"1", "9"}) {
        Case c("[run]\ndimension = 3\n[lumps]\nmethod = " + std::string(method) +
               "\n[tables]\nstations = '''\nname x y z\nS 0 0 0\nR 9 9 9\n'''\n"
               "targets = '''\nname x y z lump\nA 1 0 0 5\nB 0 1 0 2\nC 1 1 0 5\nD 2 1 0 0\nE 3 1 1 2\nF 1 1 1 5\n'''\n"
               "directions = '''\nfrom to value sigma epoch\nS A 0 1 1\nS B 100 1 1\nS C 50 1 1\nS E 1 1 1\nS F 1 1 1\n'''\n");
        std::string order;
        for (const target_input &t : c.model().targets.records) order += t.name[0];
        EXPECT_EQ(order, std::string(method) == "9" ? "RDACFBE" : "RABCDEF");
        ASSERT_EQ(c.prepared.targets.size(), 7u);
        for (size_t i = 0; i < 7; i++) {
            EXPECT_EQ(c.prepared.targets[i].station, order[i] == 'R');
            EXPECT_EQ(c.prepared.targets[i].where.line, c.model().targets.where[i].line);
        }
    }
}
