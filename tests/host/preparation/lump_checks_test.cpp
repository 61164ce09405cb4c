#include "host/preparation/lump_checks.h"

#include <gtest/gtest.h>

#include "host/folder.h"
#include "host/preparation/prepare.h"

using namespace vornhost;

namespace {

// A network of a station S, lump points A, B, C and a point W that does not move.
struct Wall {
    std::string dimension = "3", settings, station = "S 0 0 0 free 0 -", lumps;
    std::string points = "A 10 0 0 4\nB 0 10 0 4\nC 5 5 5 4\nW 9 9 9 0\n";
    std::string directions = "S A 0 1 1\nS B 100 1 1\nS C 50 1 1\nS A 0 1 2\nS B 100 1 2\nS C 50 1 2\n";
    std::string others, behind; // tables before and behind the directions

    std::string text() const
    {
        return "[run]\ndimension = " + dimension + "\n" + settings + "[tables]\n" +
               "stations = '''\nname x y z code lump code_rx3\n" + station + "\n'''\n" +
               "targets = '''\nname x y z lump\n" + points + "'''\n" +
               (lumps.empty() ? "" : "lumps = '''\n" + lumps + "'''\n") + others +
               "directions = '''\nfrom to value sigma epoch\n" + directions + "'''\n" + behind;
    }

    // Compared afterwards, with a vertical angle beside every direction.
    void compare()
    {
        settings += "[lumps]\nmethod = 9\n";
        behind = "vertical_angles = '''\nfrom to value sigma epoch\n" + directions + "'''\n";
    }

    Lines faults() const { return faults_of(text()); }

    // Notes of the preparation that speak of lumps.
    Lines notes()
    {
        folder.write("net.inp", text());
        EXPECT_EQ(folder.read(), Lines());
        Lines found;
        for (std::string line : prepare(folder.model).notes) {
            folder.shorten(line);
            if (line.find("lump") != std::string::npos) found.push_back(line);
        }
        return found;
    }

    int lump(size_t target) const { return folder.model.targets.records[target].ilump; }

    Folder folder;
};

const std::string distances(const std::string &rows)
{
    return "distances = '''\nfrom to value sigma epoch\n" + rows + "'''\n";
}

} // namespace

TEST(LumpMethod, IsOneWhereAPointBelongsToALump)
{
    Wall wall;
    EXPECT_EQ(model_of(wall.text()).p.lumpmethod, 1);
    wall.settings = "[lumps]\nmethod = 0\n";
    EXPECT_EQ(model_of(wall.text()).p.lumpmethod, 0);
    wall.settings = "";
    wall.points = "A 10 0 0 0\nB 0 10 0 0\nC 5 5 5 0\n";
    EXPECT_EQ(model_of(wall.text()).p.lumpmethod, 0);
    wall.lumps = "lump epoch\n4 2\n";
    EXPECT_EQ(model_of(wall.text()).p.lumpmethod, 1);
}

TEST(CheckLumps, AcceptsAWallSeenTwice)
{
    Wall wall;
    EXPECT_EQ(wall.faults(), Lines());
    EXPECT_EQ(wall.notes(), Lines());
    EXPECT_EQ(wall.lump(0), 4);
}

TEST(CheckLumps, RefusesThePlane)
{
    Wall wall;
    wall.dimension = "2";
    EXPECT_EQ(wall.faults(), (Lines{"net.inp:10:1: lumps need three dimensions; write dimension = 3 in [run], or "
                                    "method = 0 in [lumps]"}));
    wall.settings = "[lumps]\nmethod = 0\n";
    EXPECT_EQ(wall.faults(), Lines());
}

TEST(CheckLumps, RefusesReducedDistances)
{
    Wall wall;
    wall.settings = "[reductions]\ndistances = \"mark_to_mark\"\n";
    EXPECT_EQ(wall.faults(), (Lines{"net.inp:12:1: distances of lumps cannot be reduced; write distances = \"none\" in "
                                    "[reductions], or method = 9 in [lumps]"}));
    wall.compare();
    EXPECT_EQ(wall.faults(), Lines());
}

TEST(CheckLumps, RefusesHeightDifferencesWithEpochs)
{
    Wall wall;
    wall.others = "height_differences = '''\nfrom to value sigma epoch use\nA B 1 1 0 yes\nA B 1 1 2 yes\n"
                  "A B 1 1 2 no\n'''\n";
    EXPECT_EQ(wall.faults(), (Lines{"net.inp:18:1: height difference with an epoch in a network with lumps; leave it "
                                    "out, or write epoch 0 when none of its points moves"}));
}

TEST(CheckLumps, RefusesDirectionsWithoutEpoch)
{
    Wall wall;
    wall.directions += "S W 50 1 0\nS B 100 1 0\n";
    EXPECT_EQ(wall.faults(), (Lines{"net.inp:24:1: direction without epoch at point \"B\" of lump 4; write its "
                                    "epoch"}));
    wall.directions = "S A 0 1 1\nS W 50 1 0\n";
    wall.station = "S 0 0 0 free 3 -";
    EXPECT_EQ(wall.faults(), (Lines{"net.inp:18:1: direction without epoch at point \"S\" of lump 3; write its "
                                    "epoch"}));
}

namespace {

// Faults of a wall whose epochs are compared afterwards, with observations between its points.
Lines faults_beside(const std::string &kind, const std::string &rows)
{
    Wall wall;
    wall.others = kind + " = '''\nfrom to value sigma epoch use\n" + rows + "'''\n";
    wall.compare();
    return wall.faults();
}

} // namespace

TEST(CheckLumps, AcceptsObservationsToLumpsThatAreComparedAfterwards)
{
    for (const char *kind : {"distances", "height_differences", "azimuths"})
        EXPECT_EQ(faults_beside(kind, "S B 9 1 1 yes\nW B 9 1 2 yes\nS W 9 1 0 yes\nA B 9 1 1 no\n"), Lines()) << kind;
}

TEST(CheckLumps, RefusesObservationsFromLumpsThatAreComparedAfterwards)
{
    const std::pair<const char *, const char *> kinds[] = {
        {"distances", "distance"}, {"height_differences", "height difference"}, {"azimuths", "azimuth"}};
    for (const auto &[table, name] : kinds) {
        const std::string begins = std::string(name) + " begins at point \"A\" of lump 4, whose epochs method 9 tells "
                                                       "apart only as second points";
        EXPECT_EQ(faults_beside(table, "S B 9 1 1 yes\nA S 9 1 1 yes\nA B 9 1 2 yes\n"),
                  (Lines{"net.inp:20:1: " + begins + "; write it from the other point to this one",
                         "net.inp:21:1: " + begins + "; leave it out"}));
    }
}

TEST(CheckLumps, RefusesObservationsAtEpochsWithoutDirection)
{
    EXPECT_EQ(
        faults_beside("distances", "S B 9 1 3 yes\nS B 9 1 0 yes\n"),
        (Lines{"net.inp:19:1: distance at epoch 3 to point \"B\" of lump 4, at which no direction sights it; give "
               "the point a direction at this epoch, or leave it out",
               "net.inp:20:1: distance without epoch at point \"B\" of lump 4; write its epoch"}));
    EXPECT_EQ(faults_beside("azimuths", "S B 9 1 3 yes\n").size(), 1u);
    EXPECT_EQ(faults_beside("height_differences", "S B 9 1 3 yes\n").size(), 1u);
    Wall wall;
    wall.compare();
    wall.behind.insert(wall.behind.find("S A"), "S B 1 1 3\n");
    wall.directions += "S W 1 1 0\n"; // as many of both
    EXPECT_EQ(wall.faults(), (Lines{"net.inp:29:1: vertical angle at epoch 3 to point \"B\" of lump 4, at which no "
                                    "direction sights it; give the point a direction at this epoch, or leave it out"}));
}

TEST(CheckLumps, RefusesBaselinesToLumpsThatAreComparedAfterwards)
{
    Wall wall;
    wall.others = "baselines = '''\nfrom to dx dy dz cxx cyy czz use\nW B 1 1 1 1 1 1 yes\nW B 1 1 1 1 1 1 no\n"
                  "S W 1 1 1 1 1 1 yes\n'''\n";
    EXPECT_EQ(wall.faults(), Lines());
    wall.compare();
    EXPECT_EQ(wall.faults(),
              (Lines{"net.inp:19:1: baseline at point \"B\" of lump 4, of which method 9 makes a point an "
                     "epoch; leave it out: baselines have no epoch"}));
}

TEST(CheckLumps, RefusesWeightedPointsThatAreComparedAfterwards)
{
    Wall wall;
    wall.compare();
    std::string text = wall.text();
    const std::string names = "name x y z lump\n", codes = "name x y z lump code_x sx\n";
    text.replace(text.find(names), names.size(), codes);
    for (const std::string point : {"A 10 0 0 4", "B 0 10 0 4", "C 5 5 5 4", "W 9 9 9 0"})
        text.insert(text.find(point) + point.size(), point[0] == 'B' || point[0] == 'W' ? " weighted 0.1" : " free -");
    EXPECT_EQ(faults_of(text),
              (Lines{"net.inp:13:1: point \"B\" of lump 4 is weighted, which method 9 cannot do at more "
                     "than one epoch; write code free, or method = 1 in [lumps]"}));
    text.replace(text.find("method = 9"), 10, "method = 1");
    EXPECT_EQ(faults_of(text), Lines());
}

TEST(CheckLumps, NamesPointsThatNoDirectionSights)
{
    Wall wall;
    wall.points += "D 1 1 1 4\nE 2 2 2 4\n";
    wall.station += "\nZ 7 7 7 free 0 -";
    wall.compare();
    wall.directions += "S E 1 1 1\n";
    wall.behind.insert(wall.behind.rfind("'''"), "S E 1 1 1\n");
    std::string text = wall.text();
    const std::string fault = "net.inp:17:1: point \"D\" of lump 4 is sighted by no direction: its lump could not be "
                              "compared; write lump 0, or give it a direction at each of its epochs";
    EXPECT_EQ(faults_of(text), (Lines{fault}));
    wall.directions += "Z D 1 1 1\n"; // from a station that is off
    text = wall.text();
    const std::string names = "name x y z code lump code_rx3\n";
    text.replace(text.find(names), names.size(), "name x y z code lump code_rx3 status\n");
    text.insert(text.find("S 0 0 0 free 0 -") + 16, " -");
    text.insert(text.find("Z 7 7 7 free 0 -") + 16, " off");
    EXPECT_EQ(faults_of(text), (Lines{fault}));
}

TEST(CheckLumps, RefusesPointsThatHaveNoFirstCoordinatesAtAnEpoch)
{
    Wall wall;
    wall.compare();
    wall.behind.erase(wall.behind.find("S C 50 1 1\n"), 11);
    EXPECT_EQ(wall.faults(),
              (Lines{"net.inp:12:1: one station alone sights point \"A\" of lump 4 at epoch 2, and has no first "
                     "coordinates for it while 6 directions stand beside 5 vertical angles; give every direction its "
                     "vertical angle, in the same order, or the point a second direction"}));
    wall.station += "\nT 9 0 0 free 0 -";
    wall.directions += "T A 0 1 2\nT B 0 1 2\nT C 0 1 2\n";
    EXPECT_EQ(wall.faults(), Lines());
}

TEST(CheckLumps, RefusesStationsInLumpsThatAreComparedAfterwards)
{
    Wall wall;
    wall.station = "S 0 0 0 free 4 -\nQ 1 1 1 free 4 -";
    EXPECT_EQ(wall.faults(), Lines());
    wall.compare();
    const std::string words =
        ": a station cannot belong to a lump with method 9; write it among the targets, or lump 0, "
        "or method = 1 in [lumps]";
    EXPECT_EQ(wall.faults(), (Lines{"net.inp:8:1" + words, "net.inp:9:1" + words}));
}

TEST(CheckLumps, RefusesAzimuthsThatWouldNotFollowTheMovement)
{
    Wall wall;
    wall.others = "azimuths = '''\nfrom to value sigma epoch use\nS A 1 1 2 yes\nB S 1 1 1 yes\nS W 1 1 2 yes\n"
                  "S A 1 1 0 yes\nS A 1 1 2 no\n'''\n";
    const std::string what = ", whose movement it does not follow; leave it out, or write epoch 0 when it was observed "
                             "at the reference epoch";
    EXPECT_EQ(wall.faults(), (Lines{"net.inp:17:1: azimuth with an epoch at point \"A\" of lump 4" + what,
                                    "net.inp:18:1: azimuth with an epoch at point \"B\" of lump 4" + what}));
}

TEST(CheckLumps, RefusesFixedScalesWithoutTheirReferenceEpoch)
{
    for (const bool compared : {false, true}) {
        Wall wall;
        if (compared) wall.compare();
        const std::string line = "net.inp:" + std::to_string(compared ? 19 : 17) + ":1: ";
        wall.lumps = "lump kind epoch code scale\n4 similarity 2 fixed 1.01\n";
        EXPECT_EQ(wall.faults(), (Lines{line + "lump 4 has a fixed scale and no reference epoch; write in column "
                                               "reference the epoch to which its scales refer"}));
        wall.lumps = "lump reference epoch code scale\n4 3 2 fixed 1.01\n";
        EXPECT_EQ(wall.faults(),
                  (Lines{line + "lump 4 has a fixed scale and 3 points are not sighted at its reference "
                                "epoch 3; take an epoch at which directions show three of its points, or "
                                "write code free"}));
        for (const char *table : {"lump reference epoch code scale\n4 1 2 fixed 1.01\n",
                                  "lump kind epoch code scale\n4 no_scale 2 fixed 1\n", "lump epoch code\n4 2 free\n",
                                  "lump reference epoch code\n6 1 2 fixed\n"}) {
            wall.lumps = table;
            EXPECT_EQ(wall.faults(), Lines());
        }
    }
}

// ---- lumps that cannot be compared ----

TEST(SettleLumps, ReleasesALumpOfTwoPoints)
{
    Wall wall;
    wall.points = "A 10 0 0 4\nB 0 10 0 4\nC 5 5 5 0\n";
    EXPECT_EQ(wall.notes(), (Lines{"net.inp:10: lump 4 has fewer than 3 points: its points are taken as unmoved"}));
    EXPECT_EQ(wall.lump(0), 0);
    EXPECT_EQ(wall.lump(1), 0);
}

TEST(SettleLumps, ReleasesALumpWithAPoorEpoch)
{
    Wall wall;
    wall.directions += "S A 0 1 7\nS B 0 1 7\n";
    EXPECT_EQ(wall.notes(), (Lines{"net.inp:10: lump 4 has fewer than 3 directions at epoch 7: its points are taken "
                                   "as unmoved"}));
    EXPECT_EQ(wall.lump(2), 0);
}

TEST(SettleLumps, ReleasesALumpOfOneEpoch)
{
    Wall wall;
    wall.directions = "S A 0 1 2\nS B 100 1 2\nS C 50 1 2\nS W 0 1 3\n";
    EXPECT_EQ(wall.notes(), (Lines{"net.inp:10: lump 4 has directions at fewer than 2 epochs: its points are taken as "
                                   "unmoved"}));
}

TEST(SettleLumps, KeepsTheOtherLumps)
{
    Wall wall;
    wall.points += "D 1 2 3 9\n";
    wall.directions += "S D 10 1 1\n";
    EXPECT_EQ(wall.notes(), (Lines{"net.inp:14: lump 9 has fewer than 3 points: its points are taken as unmoved"}));
    EXPECT_EQ(wall.lump(0), 4);
    EXPECT_EQ(wall.lump(4), 0);
}

// The engine then looks at the count of that epoch alone.
TEST(SettleLumps, AcceptsPoorEpochsBesideFourDirectionsAtTheEpochOfAFixedStation)
{
    for (const char *code : {"fixed", "free"}) {
        Wall wall;
        wall.station += std::string("\nF 1 1 1 fixed 0 ") + code;
        wall.directions += "S A 0 1 7\nF A 0 1 2\n";
        const Lines notes = wall.notes();
        ASSERT_EQ(notes.size(), 1u);
        const bool fixed = std::string(code) == "fixed";
        EXPECT_EQ(notes[0], fixed
                                ? "net.inp:11: lump 4: 1 observation of epoch 7, which has fewer than 3 directions, "
                                  "counts as of the reference epoch"
                                : "net.inp:11: lump 4 has fewer than 3 directions at epoch 7: its points are taken as "
                                  "unmoved");
        EXPECT_EQ(wall.lump(0), fixed ? 4 : 0);
    }
}

TEST(SettleLumps, NotesObservationsThatDoNotMove)
{
    Wall wall;
    wall.others = distances("S A 10 1 0\nS B 10 1 0\nA B 14 1 0\nS A 10 1 1\nS A 10 1 5\nW S 15 1 8\n");
    EXPECT_EQ(wall.notes(), (Lines{"net.inp:10: lump 4: 3 observations without epoch count as of the reference epoch",
                                   "net.inp:10: lump 4: 1 observation of epoch 5, which has fewer than 3 directions, "
                                   "counts as of the reference epoch"}));
}

TEST(SettleLumps, NotesDefinitionsThatDoNotFit)
{
    Wall wall;
    wall.lumps = "lump reference epoch\n4 9 2\n5 1 2\n";
    EXPECT_EQ(wall.notes(), (Lines{"net.inp:18: no point belongs to lump 5",
                                   "net.inp:17: lump 4 has fewer than 3 directions at its reference epoch 9: another "
                                   "one is taken"}));
    EXPECT_EQ(wall.folder.model.lumpdefs.records[0].iref, 0);
    wall.lumps = "lump reference epoch\n4 2 1\n";
    EXPECT_EQ(wall.notes(), Lines());
    EXPECT_EQ(wall.folder.model.lumpdefs.records[0].iref, 2);
}

TEST(SettleLumps, LeavesLumpsOfOtherMethodsAlone)
{
    for (const int method : {0, 9}) {
        Wall wall;
        wall.points = "A 10 0 0 4\nB 0 10 0 4\nC 5 5 5 0\n";
        wall.settings = method == 0 ? "[lumps]\nmethod = 0\n" : "";
        if (method == 9) wall.compare();
        EXPECT_EQ(wall.notes().size(), method == 0 ? 0u : 2u);
        int members = 0;
        for (size_t i = 0; i < 3; i++) members += wall.lump(i) == 4;
        EXPECT_EQ(members, 2);
    }
}

TEST(SettleLumps, NotesEpochsThatAreNotCompared)
{
    Wall wall;
    wall.lumps = "lump reference epoch\n4 7 2\n5 1 2\n";
    wall.directions = "S B 1 1 7\nS W 1 1 0\n" + wall.directions + "S A 0 1 8\nS C 0 1 8\n";
    wall.compare();
    EXPECT_EQ(
        wall.notes(),
        (Lines{"net.inp:20: no point belongs to lump 5",
               "net.inp:12: lump 4 has fewer than 3 points at epoch 7, which is not compared: the coordinates of B "
               "are those of that epoch",
               "net.inp:12: lump 4 has fewer than 3 points at epoch 8, which is not compared",
               "net.inp:19: lump 4 has fewer than 3 points at its reference epoch 7: another one is taken"}));
}

// Height differences and azimuths without epoch, and baselines, stand at the reference epoch as well.
TEST(SettleLumps, CountsAllThatDoesNotMove)
{
    Wall wall;
    wall.others =
        "height_differences = '''\nfrom to value sigma\nS A 1 1\n'''\nazimuths = '''\nfrom to value sigma\n"
        "S A 1 1\n'''\nbaselines = '''\nfrom to dx dy dz cxx cyy czz\nS B 1 1 1 1 1 1\nS W 1 1 1 1 1 1\n'''\n";
    EXPECT_EQ(wall.notes(),
              (Lines{"net.inp:10: lump 4: 3 observations without epoch count as of the reference epoch"}));
}

// Directions from a target show nothing.
TEST(SettleLumps, CountsOnlyDirectionsThatTakePart)
{
    Wall wall;
    wall.station += "\nQ 3 3 3 free 0 -";
    wall.directions = "S A 0 1 1\nS B 100 1 1\nS C 50 1 1\nS A 0 1 2\nS B 100 1 2\nQ C 50 1 2\n";
    EXPECT_EQ(wall.notes(), Lines());
    const std::vector<LumpNote> none;
    wall.folder.model.stations.records[1].status = -1;
    const std::vector<LumpNote> notes = settle_lumps(wall.folder.model);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].text, "lump 4 has fewer than 3 directions at epoch 2: its points are taken as unmoved");
}

TEST(OrderSights, PutsBehindWhatTakesNoPart)
{
    for (const int method : {1, 9}) {
        Wall wall;
        wall.directions = "S A 0 1 1\nQ A 3 1 3\nS B 1 1 2\n";
        wall.station += "\nQ 1 1 1 free 0 -";
        wall.folder.write("net.inp", wall.text());
        EXPECT_EQ(wall.folder.read(), Lines());
        Model &model = wall.folder.model;
        model.p.lumpmethod = method;
        model.stations.records[1].status = -1;
        const int first = model.directions.where[0].line;
        order_sights(model);
        ASSERT_EQ(model.directions.size(), 3u);
        const std::vector<int> lines = method == 9 ? std::vector<int>{0, 2, 1} : std::vector<int>{0, 1, 2};
        for (size_t i = 0; i < 3; i++) {
            EXPECT_EQ(model.directions.where[i].line, first + lines[i]);
            EXPECT_EQ(model.directions.records[i].val, lines[i] == 1 ? 3 : lines[i] / 2);
        }
    }
}

TEST(SettleLumps, NotesALumpOfFixedPoints)
{
    Wall wall;
    wall.points = "A 10 0 0 4\nB 0 10 0 4\nC 5 5 5 4\n";
    wall.folder.write("net.inp", wall.text());
    EXPECT_EQ(wall.folder.read(), Lines());
    Model &model = wall.folder.model;
    for (size_t i = 0; i < 3; i++) {
        EXPECT_TRUE(settle_lumps(model).empty());
        for (int &code : model.targets.records[i].ix) code = CODE_FIXED;
    }
    const std::vector<LumpNote> notes = settle_lumps(model);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].text, "lump 4 has fixed points only, and the iteration follows coordinates: weight them, with "
                             "standard deviations of 0.1 mm, to have its movements exactly");
    EXPECT_EQ(notes[0].where.line, model.targets.where[0].line);
}

// Coordinates that no file can bring: kilometres beyond every integer.
TEST(SettleLumps, NotesALumpAtAnyDistance)
{
    for (const double x : {1e25, 1e300}) {
        Wall wall;
        wall.points = "A 10 0 0 4\nB 0 10 0 4\nC 5 5 5 4\n";
        wall.folder.write("net.inp", wall.text());
        EXPECT_EQ(wall.folder.read(), Lines());
        Model &model = wall.folder.model;
        for (target_input &t : model.targets.records) t.x[0] = x;
        const std::vector<LumpNote> notes = settle_lumps(model);
        ASSERT_EQ(notes.size(), 1u);
        EXPECT_EQ(notes[0].text.rfind(x == 1e25 ? "lump 4 turns about the origin, 1000000000000"
                                                : "lump 4 turns about the origin, inf km",
                                      0),
                  0u);
    }
}

TEST(SettleLumps, NotesALumpFarFromTheOrigin)
{
    const std::string far = "A 600010 0 0 4\nB 600000 10 0 4\nC 600005 5 5 4\n";
    Wall wall;
    wall.points = far;
    EXPECT_EQ(wall.notes(), (Lines{"net.inp:10: lump 4 turns about the origin, 600 km away: its translation is not its "
                                   "own movement; take an origin near it"}));
    Wall shifted;
    shifted.points = far;
    shifted.settings = "[earth]\nmodel = \"cartesian\"\norigin = [600000.0, 0.0, 0.0]\n";
    EXPECT_EQ(shifted.notes(), Lines());
    Wall millimetres;
    millimetres.points = far;
    millimetres.settings = "[units]\nlength = \"mm\"\n";
    EXPECT_EQ(millimetres.notes(), Lines());
}
