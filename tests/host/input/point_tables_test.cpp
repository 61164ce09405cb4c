#include <gtest/gtest.h>

#include <math.h>

#include "host/folder.h"
#include "host/input/names.h"

using namespace vornhost;

namespace {

const double pi = 3.14159265358979323846;

// Stations from line 5 (the heading) on; the distance S to T keeps the network whole.
std::string network(const std::string &stations, int dimension = 3, const std::string &more = "")
{
    return "[run]\ndimension = " + std::to_string(dimension) + "\n[tables]\nstations = \"\"\"\n" + stations +
           "\n\"\"\"\ntargets = \"name x y z\\nT 9 9 9\"\ndistances = \"from to value sigma\\nS T 1 1\"\n" + more;
}

Lines stations(const std::string &rows, int dimension = 3) { return faults_of(network(rows, dimension)); }

station_input station(const std::string &rows, int dimension = 3, const std::string &more = "")
{
    const Model model = model_of(network(rows, dimension, more));
    return model.stations.size() ? model.stations.records[0] : station_input();
}

void expect_codes(const int *code, int a, int b, int c)
{
    EXPECT_EQ(code[0], a);
    EXPECT_EQ(code[1], b);
    EXPECT_EQ(code[2], c);
}

} // namespace

TEST(Stations, AreReadWithEveryColumn)
{
    const Model model = model_of(network("name x y z sx sy sz code code_x code_y code_z status lump connect levelled "
                                         "rx1 rx2 rx3 srx1 srx2 srx3 code_rx1 code_rx2 code_rx3 group\n"
                                         "S 1 2 3 0.1 0.2 0.3 weighted no_datum - fixed used 7 export no "
                                         "50 -50 100 1 2 4 weighted fixed no_datum G",
                                         3, "groups = \"name\\nG\"\n"));
    const station_input &s = model.stations.records[0];
    EXPECT_STREQ(s.name, "S       ");
    EXPECT_EQ(s.typ, 2);
    EXPECT_EQ(s.status, STATUS_ON);
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(s.x[i], i + 1.0);
        EXPECT_DOUBLE_EQ(s.sx[i], 0.1 * (i + 1));
        EXPECT_DOUBLE_EQ(s.sr[i], (1 << i) * pi / 200.0);
    }
    EXPECT_DOUBLE_EQ(s.r[0], pi / 4.0);
    EXPECT_DOUBLE_EQ(s.r[1], -pi / 4.0);
    EXPECT_DOUBLE_EQ(s.r[2], pi / 2.0);
    expect_codes(s.ix, CODE_NO_DATUM, CODE_WEIGHTED, CODE_FIXED);
    expect_codes(s.ir, CODE_WEIGHTED, CODE_FIXED, CODE_NO_DATUM);
    EXPECT_EQ(s.ilump, 7);
    EXPECT_EQ(s.iconn, 1);
    EXPECT_EQ(s.ilevel, 0);
    ASSERT_EQ(model.group_members.size(), 1u);
    EXPECT_EQ(model.group_members[0], std::vector<int>{0});
    EXPECT_TRUE(model.station_notes[0].orientation_given);
    EXPECT_TRUE(model.station_notes[0].rotation_coded);
}

TEST(Stations, HaveDefaults)
{
    const Model model = model_of(network("name x y z\nS 1 2 3"));
    const station_input &s = model.stations.records[0];
    EXPECT_EQ(s.typ, 1);
    EXPECT_EQ(s.status, STATUS_ON);
    EXPECT_EQ(s.ilevel, 1);
    EXPECT_EQ(s.ilump, 0);
    EXPECT_EQ(s.iconn, 0);
    expect_codes(s.ix, CODE_FREE, CODE_FREE, CODE_FREE);
    expect_codes(s.ir, CODE_FIXED, CODE_FIXED, CODE_FREE);
    EXPECT_FALSE(model.station_notes[0].orientation_given);
    EXPECT_FALSE(model.station_notes[0].rotation_coded);
}

TEST(Stations, ThatAreNotLevelledHaveFreeRotations)
{
    expect_codes(station("name x y z levelled\nS 1 2 3 no").ir, CODE_FREE, CODE_FREE, CODE_FREE);
}

TEST(Stations, TakeTheAzimuthOfTheirCircleAsMinusRx3)
{
    const Model model = model_of(network("name x y z orientation\nS 1 2 3 100"));
    EXPECT_DOUBLE_EQ(model.stations.records[0].r[2], -pi / 2.0);
    EXPECT_TRUE(model.station_notes[0].orientation_given);
    EXPECT_EQ(stations("name x y z rx3 orientation\nS 1 2 3 1 -1"),
              Lines{"net.inp:6:11: orientation and rx3 are both given; write one of the two"});
}

TEST(Stations, HaveAngularUnits)
{
    const auto turned = [](const char *unit, const char *rx3) {
        return station(std::string("name x y z rx3\nS 1 2 3 ") + rx3, 3,
                       std::string("[units]\nangle = \"") + unit + "\"\n")
            .r[2];
    };
    EXPECT_DOUBLE_EQ(turned("gon", "100"), pi / 2.0);
    EXPECT_DOUBLE_EQ(turned("degree", "90"), pi / 2.0);
    EXPECT_NEAR(turned("packed_degree", "90.3"), pi * 90.5 / 180.0, 1e-14);
    EXPECT_DOUBLE_EQ(turned("radian", "1.5"), 1.5);
    EXPECT_EQ(
        faults_of(network("name x y z rx3\nS 1 2 3 0.6", 3, "[units]\nangle = \"packed_degree\"\n")),
        Lines{"net.inp:6:9: \"0.6\" in column rx3 has minutes or seconds of 60 or more; write degrees as ddd.mmss"});
}

TEST(Points, KeepTheirLengthsInTheUnitOfTheFile)
{
    const station_input s = station("name x y z sx\nS 1000 2 3 5", 3, "[units]\nlength = \"mm\"\n");
    EXPECT_EQ(s.x[0], 1000.0);
    EXPECT_EQ(s.sx[0], 5.0);
}

TEST(Points, HaveCodesAsWordsOrNumbers)
{
    const auto code = [](const char *word) {
        return station(std::string("name x y z sx sy sz code\nS 1 2 3 1 1 1 ") + word).ix[0];
    };
    const std::pair<const char *, int> codes[] = {{"free", 1},    {"no_datum", 2}, {"weighted", 3}, {"fixed", 4},
                                                  {"absent", -1}, {"0", 1},        {"1", 1},        {"2", 2},
                                                  {"3", 3},       {"4", 4},        {"-1", -1},      {"-", 1}};
    for (const auto &[word, number] : codes) EXPECT_EQ(code(word), number) << word;
}

TEST(Points, AreAbsentInWhatTheDimensionExcludes)
{
    const station_input plane = station("name x y code\nS 1 2 fixed", 2);
    expect_codes(plane.ix, CODE_FIXED, CODE_FIXED, CODE_ABSENT);
    expect_codes(plane.ir, CODE_ABSENT, CODE_ABSENT, CODE_FREE);
    const station_input height = station("name z code code_rx3\nS 3 fixed fixed", 1);
    expect_codes(height.ix, CODE_ABSENT, CODE_ABSENT, CODE_FIXED);
    expect_codes(height.ir, CODE_ABSENT, CODE_ABSENT, CODE_ABSENT);
    EXPECT_EQ(height.status, STATUS_ON);
}

TEST(Points, HaveAStatus)
{
    const auto status = [](const char *word) {
        return station(std::string("name x y z status\nS 1 2 3 ") + word).status;
    };
    EXPECT_EQ(status("used"), STATUS_ON);
    EXPECT_EQ(status("compute"), STATUS_COMPUTE);
    EXPECT_EQ(status("off"), STATUS_OFF);
    EXPECT_EQ(status("101"), 101);
    EXPECT_EQ(status("-3"), -3);
    EXPECT_EQ(status("+2"), 2);
}

TEST(Points, AreComputedWhenACoordinateIsMissing)
{
    EXPECT_EQ(station("name x y z\nS 1 - 3").status, STATUS_COMPUTE);
    EXPECT_EQ(station("name\nS").status, STATUS_COMPUTE);
    EXPECT_EQ(station("name x y z status\nS 1 - 3 used").status, STATUS_COMPUTE);
    EXPECT_EQ(station("name x y z status\nS 1 - 3 off").status, STATUS_OFF);
    EXPECT_EQ(station("name x y\nS 1 2", 2).status, STATUS_ON);
    EXPECT_EQ(station("name x y\nS 1 2", 1).status, STATUS_COMPUTE);
}

TEST(Points, AreComputedAsFarAsTheyAreNotHeld)
{
    const station_input held = station("name x y z code status\nS 1 2 3 fixed compute");
    EXPECT_EQ(held.status, STATUS_ON);
    expect_codes(held.ix, CODE_FIXED, CODE_FIXED, CODE_FIXED);
    const station_input height = station("name x y z code_z status\nS 1 2 3 fixed compute");
    EXPECT_EQ(height.status, STATUS_COMPUTE);
    expect_codes(height.ix, CODE_FREE, CODE_FREE, CODE_FIXED);
    EXPECT_EQ(station("name x y z code_z\nS - - 3 fixed").status, STATUS_COMPUTE);
    EXPECT_EQ(station("name x y code\nS 1 2 fixed", 2).status, STATUS_ON);
    EXPECT_EQ(station("name x y code status\nS 1 2 fixed compute", 2).status, STATUS_ON);
    EXPECT_EQ(station("name z code status\nS 3 fixed compute", 1).status, STATUS_ON);
    EXPECT_EQ(station("name z code status\nS 3 free compute", 1).status, STATUS_COMPUTE);
}

TEST(Points, NeedTheValuesThatTheyHold)
{
    EXPECT_EQ(stations("name x y z code\nS 1 - 3 fixed"),
              Lines{"net.inp:6:9: \"fixed\" in column code needs a value of y; write it or make the coordinate free"});
    EXPECT_EQ(stations("name x y z code\nS - 2 3 fixed"),
              Lines{"net.inp:6:9: \"fixed\" in column code needs a value of x; write it or make the coordinate free"});
    EXPECT_EQ(stations("name x y z sz code_z status\nS 1 2 - 1 weighted compute"),
              Lines{"net.inp:6:11: \"weighted\" in column code_z needs a value of z; write it or make the coordinate "
                    "free"});
    EXPECT_EQ(stations("name z code_z\nS 3 fixed"), Lines());
    EXPECT_EQ(stations("name x code status\nS - fixed off"), Lines());
}

TEST(Points, NeedAStandardDeviationForAWeight)
{
    EXPECT_EQ(stations("name x y z code_y\nS 1 2 3 weighted"),
              Lines{"net.inp:6:1: a weighted value needs its standard deviation sy; write it in column sy"});
    EXPECT_EQ(stations("name x y z sy code_y\nS 1 2 3 0 weighted"),
              Lines{"net.inp:6:9: \"0\" in column sy is not above 0; write a number above 0"});
    EXPECT_EQ(stations("name x y z code_rx3\nS 1 2 3 weighted"),
              Lines{"net.inp:6:1: a weighted value needs its standard deviation srx3; write it in column srx3"});
    EXPECT_EQ(stations("name x y z sy\nS 1 2 3 -1"),
              Lines{"net.inp:6:9: \"-1\" in column sy is negative; write a number above 0"});
    EXPECT_EQ(stations("name x y sz code\nS 1 2 - fixed", 2), Lines());
}

TEST(Points, RefuseUnknownWords)
{
    EXPECT_EQ(stations("name x y z code\nS 1 2 3 fixd"),
              Lines{"net.inp:6:9: \"fixd\" in column code is not known; did you mean fixed?"});
    EXPECT_EQ(stations("name x y z code_x\nS 1 2 3 5"),
              Lines{"net.inp:6:9: \"5\" in column code_x is not known; write one of: free, no_datum, weighted, fixed, "
                    "absent"});
    EXPECT_EQ(stations("name x y z status\nS 1 2 3 on"),
              Lines{"net.inp:6:9: \"on\" in column status is not known; write one of: used, compute, off"});
    EXPECT_EQ(stations("name x y z connect\nS 1 2 3 exprt"),
              Lines{"net.inp:6:9: \"exprt\" in column connect is not known; did you mean export?"});
    EXPECT_EQ(stations("name x y z levelled\nS 1 2 3 maybe"),
              Lines{"net.inp:6:9: \"maybe\" in column levelled is not known; write yes or no"});
}

TEST(Points, RefuseStatusZero)
{
    EXPECT_EQ(stations("name x y z status\nS 1 2 3 0"),
              Lines{"net.inp:6:9: status 0 would stop the loading of the network; write off"});
}

TEST(Points, RefuseNumbersThatCannotBe)
{
    EXPECT_EQ(stations("name x y z\nS 1 nan 3"),
              Lines{"net.inp:6:5: \"nan\" in column y is not a finite number; write a number like 12.5"});
    EXPECT_EQ(stations("name x y z\nS 1 inf 3"),
              Lines{"net.inp:6:5: \"inf\" in column y is not a finite number; write a number like 12.5"});
    EXPECT_EQ(stations("name x y z\nS 1 1e999 3"),
              Lines{"net.inp:6:5: \"1e999\" in column y is too large or too small; check its exponent"});
    EXPECT_EQ(
        stations("name x y z\nS 1 2e12 3"),
        Lines{"net.inp:6:5: \"2e12\" in column y is out of range; lengths and coordinates go from -1e12 to 1e12"});
    EXPECT_EQ(
        stations("name x y z lump\nS 1 2 3 1.5"),
        Lines{"net.inp:6:9: \"1.5\" is not a whole number in column lump; write a whole number from 0 to 1000000"});
    EXPECT_EQ(stations("name x y z lump\nS 1 2 3 -1"),
              Lines{"net.inp:6:9: \"-1\" in column lump is out of range; write a whole number from 0 to 1000000"});
    EXPECT_EQ(
        stations("name x y z status\nS 1 2 3 99999"),
        Lines{"net.inp:6:9: \"99999\" in column status is out of range; write a whole number from -9999 to 9999"});
}

TEST(PointNames, HaveAtMostFortyCharactersOfAnyScript)
{
    std::string cyrillic;
    for (int i = 0; i < 40; i++) cyrillic += "\xD0\x96";
    EXPECT_EQ(stations("name x y z\nS 1 2 3\n" + std::string(40, 'a') + " 1 2 3"), Lines());
    EXPECT_EQ(stations("name x y z\nS 1 2 3\n" + cyrillic + " 1 2 3"), Lines());
    EXPECT_EQ(
        stations("name x y z\nS 1 2 3\n" + std::string(41, 'a') + " 1 2 3"),
        Lines{"net.inp:7:1: name \"" + std::string(40, 'a') + "...\" has 41 characters, at most 40 fit; shorten it"});
    EXPECT_EQ(stations("name x y z\nS 1 2 3\n" + cyrillic + "x 1 2 3"),
              Lines{"net.inp:7:1: name \"" + cyrillic + "...\" has 41 characters, at most 40 fit; shorten it"});
}

TEST(PointNames, HoldBlanksAndMarksInQuotationMarks)
{
    EXPECT_EQ(stations("name x y z\nS 1 2 3\n\"Pillar 3\" 1 2 3\n\"-\" 1 2 3\n\"#4 \"\"N\"\" up\" 1 2 3"), Lines());
    EXPECT_EQ(stations("name x y z\nS 1 2 3\n\"Pillar 3\" 1 2 3\nPillar 3 1 2 3"),
              Lines{"net.inp:8:14: row has 5 cells, the heading has 4; remove what is too much or name its column"});
    EXPECT_EQ(stations("name x y z\nS 1 2 3\n\"Pillar 3\" 1 2 3\n\"Pillar 3\" 1 2 3"),
              Lines{"net.inp:8:2: point \"Pillar 3\" is listed twice; keep one of the two, the first stands at "
                    "net.inp:7:2"});
}

TEST(PointNames, ThatAreLongStandInTheRecordsByKeys)
{
    Folder folder;
    folder.write("net.inp",
                 "[run]\ndimension = 2\n[tables]\ntargets = \"\"\"\nname x y code\n000921032150 0 0 fixed\n"
                 "@2 1 2 free\n\"St. Mary's Church\" 3 4 free\n\"\"\"\ndistances = \"\"\"\n"
                 "from to value sigma\n@2 000921032150 2 1\n\"St. Mary's Church\" 000921032150 5 1\n\"\"\"\n");
    EXPECT_EQ(folder.read(), Lines());
    const Model &model = folder.model;
    EXPECT_STREQ(model.targets.records[0].name, "@1      ");
    EXPECT_STREQ(model.targets.records[1].name, "@2      "); // its own name, which no key may be
    EXPECT_STREQ(model.targets.records[2].name, "@3      ");
    EXPECT_STREQ(model.distances.records[1].from, "@3      ");
    EXPECT_EQ(full_name(model, model.distances.records[1].from), "St. Mary's Church");
    EXPECT_EQ(full_name(model, model.distances.records[0].from), "@2");
    EXPECT_EQ(full_name(model, model.distances.records[0].to), "000921032150");
}

TEST(PointNames, MustBeKnown)
{
    EXPECT_EQ(stations("x name\n1 S\n2 -"), Lines{"net.inp:7:3: name is not known in table stations; write a name"});
}

TEST(PointNames, HoldNoControlCharacters)
{
    EXPECT_EQ(stations("name x y z\nS 1 2 3\nA\\u0001 1 2 3"),
              Lines{"net.inp:7:1: name \"A\\x01\" holds a control character; remove it"});
    EXPECT_EQ(stations("name x y z\nS 1 2 3\nA\\u0000 1 2 3"),
              Lines{"net.inp:7:1: name \"A\\x00\" holds a control character; remove it"});
}

TEST(PointNames, AreUniqueAmongStationsAndTargets)
{
    EXPECT_EQ(stations("name x y z\nS 1 2 3\nS 4 5 6"),
              Lines{"net.inp:7:1: point \"S\" is listed twice; keep one of the two, the first stands at net.inp:6:1"});
    EXPECT_EQ(
        faults_of("[run]\ndimension = 2\n[tables]\nstations = \"name\\nS\"\ntargets = \"name\\nS\\nT\"\n"
                  "distances = \"from to value sigma\\nS T 1 1\"\n"),
        Lines{"net.inp:5:18: point \"S\" is listed twice; keep one of the two, the first stands at net.inp:4:19"});
}

TEST(PointNames, OfARowWithAWrongNumberOfCellsAreKnown)
{
    EXPECT_EQ(stations("name x y z\nS 1 2"),
              Lines{"net.inp:6:1: row has 3 cells, the heading has 4; write - for a value that is not known"});
}

TEST(PointNames, MayHoldBlanksBetweenQuotationMarks)
{
    Folder folder;
    folder.write("t.csv", "name,x,y\n\" P 1 \",1,2\n");
    folder.write("net.inp", "[run]\ndimension = 2\n[tables]\nstations = \"name x y\\nS 0 0\"\n"
                            "targets = { file = \"t.csv\" }\ndistances = { file = \"d.csv\" }\n");
    folder.write("d.csv", "from,to,value,sigma\nS,\"P 1\",1,1\n");
    EXPECT_EQ(folder.read(), Lines());
    EXPECT_STREQ(folder.model.targets.records[0].name, "P 1     ");
    EXPECT_STREQ(folder.model.distances.records[0].to, "P 1     ");
}

TEST(Stations, RefuseAnUnknownGroup)
{
    EXPECT_EQ(faults_of(network("name x y z group\nS 1 2 3 G1", 3, "groups = \"name\\nG2\"\n")),
              Lines{"net.inp:6:9: unknown group \"G1\" in column group; did you mean \"G2\"?"});
    EXPECT_EQ(stations("name x y z group\nS 1 2 3 G1"),
              Lines{"net.inp:6:9: unknown group \"G1\" in column group; list it under groups"});
}

TEST(Targets, AreReadWithEveryColumn)
{
    const Model model =
        model_of("[run]\ndimension = 3\n[tables]\ntargets = \"\"\"\n"
                 "name x y z sx sy sz code code_x code_y code_z status lump connect\n"
                 "T 1 2 3 0.1 0.2 0.3 free weighted fixed no_datum 150 3 export\nU - - - - - - - - - - - - -\n"
                 "\"\"\"\ndistances = \"from to value sigma\\nT U 1 1\"\n");
    const target_input &t = model.targets.records[0];
    EXPECT_STREQ(t.name, "T       ");
    EXPECT_EQ(t.status, 150);
    for (int i = 0; i < 3; i++) EXPECT_EQ(t.x[i], i + 1.0);
    EXPECT_EQ(t.sx[0], 0.1);
    EXPECT_EQ(t.sx[1], 0.2);
    EXPECT_EQ(t.sx[2], 0.3);
    expect_codes(t.ix, CODE_WEIGHTED, CODE_FIXED, CODE_NO_DATUM);
    EXPECT_EQ(t.ilump, 3);
    EXPECT_EQ(t.iconn, 1);
    const target_input &u = model.targets.records[1];
    EXPECT_EQ(u.status, STATUS_COMPUTE);
    expect_codes(u.ix, CODE_FREE, CODE_FREE, CODE_FREE);
    EXPECT_EQ(model.targets.where[1].line, 7);
}

TEST(Targets, HaveNoColumnsOfStations)
{
    EXPECT_EQ(faults_of("[run]\ndimension = 2\n[tables]\nstations = \"name\\nS\"\ntargets = \"name rx3\\nT 1\"\n"
                        "distances = \"from to value sigma\\nS T 1 1\"\n")[0]
                  .substr(0, 50),
              "net.inp:5:17: unknown column \"rx3\" in table target");
}

TEST(Points, MayBeImportedFromAConnectedNet)
{
    Folder folder;
    folder.write("old.con", "");
    folder.write("net.inp", network("name x y z connect\nS 1 2 3 import", 3, "[connected_net]\nfile = \"old.con\"\n"));
    EXPECT_EQ(folder.read(), Lines());
    EXPECT_EQ(folder.model.stations.records[0].iconn, 2);
}
