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
    std::string others;

    std::string text() const
    {
        return "[run]\ndimension = " + dimension + "\n" + settings + "[tables]\n" +
               "stations = '''\nname x y z code lump code_rx3\n" + station + "\n'''\n" +
               "targets = '''\nname x y z lump\n" + points + "'''\n" +
               (lumps.empty() ? "" : "lumps = '''\n" + lumps + "'''\n") + others +
               "directions = '''\nfrom to value sigma epoch\n" + directions + "'''\n";
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
    wall.settings += "[lumps]\nmethod = 9\n";
    EXPECT_EQ(wall.faults(), Lines());
}

TEST(CheckLumps, RefusesHeightDifferencesWithEpochs)
{
    Wall wall;
    wall.others = "height_differences = '''\nfrom to value sigma epoch use\nA B 1 1 0 yes\nA B 1 1 2 yes\n"
                  "A B 1 1 2 no\n'''\n";
    EXPECT_EQ(wall.faults(), (Lines{"net.inp:18:1: height difference with an epoch in a network with lumps; leave it "
                                    "out, or write epoch 0 when none of its points moves"}));
    wall.settings = "[lumps]\nmethod = 9\n";
    EXPECT_EQ(wall.faults(), Lines());
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

TEST(CheckLumps, RefusesStationsInLumpsThatAreComparedAfterwards)
{
    Wall wall;
    wall.station = "S 0 0 0 free 4 -\nQ 1 1 1 free 4 -";
    EXPECT_EQ(wall.faults(), Lines());
    wall.settings = "[lumps]\nmethod = 9\n";
    EXPECT_EQ(wall.faults(), (Lines{"net.inp:8:1: a station cannot belong to a lump with method 9; write lump 0, or "
                                    "method = 1 in [lumps]"}));
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
    for (const char *method : {"0", "9"}) {
        Wall wall;
        wall.points = "A 10 0 0 4\nB 0 10 0 4\nC 5 5 5 0\n";
        wall.settings = std::string("[lumps]\nmethod = ") + method + "\n";
        EXPECT_EQ(wall.notes(), Lines());
        int members = 0;
        for (size_t i = 0; i < 3; i++) members += wall.lump(i) == 4;
        EXPECT_EQ(members, 2);
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
