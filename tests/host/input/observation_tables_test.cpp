#include <gtest/gtest.h>

#include <math.h>

#include "host/folder.h"

using namespace vornhost;

namespace {

// Stations S and U, targets T and V; the table of the test begins in line 13, its
// heading stands in line 14.
std::string network(const std::string &table, const std::string &rows, const std::string &more = "")
{
    return "[run]\ndimension = 3\n[tables]\n"
           "stations = \"\"\"\nname x y z\nS 0 0 0\nU 5 5 5\n\"\"\"\n"
           "targets = \"\"\"\nname x y z\nT 9 9 9\nV 1 9 9\"\"\"\n" +
           table + " = \"\"\"\n" + rows + "\n\"\"\"\n" + more;
}

Lines faults_in(const std::string &table, const std::string &rows, const std::string &more = "")
{
    return faults_of(network(table, rows, more));
}

Model read(const std::string &table, const std::string &rows, const std::string &more = "")
{
    return model_of(network(table, rows, more));
}

struct ListCase {
    const char *table;
    int kind;
    List<measure_input> Model::*list;
};

const ListCase lists[] = {{"distances", KIND_DISTANCE, &Model::distances},
                          {"height_differences", KIND_HEIGHT_DIFFERENCE, &Model::heightdiffs},
                          {"directions", KIND_DIRECTION, &Model::directions},
                          {"vertical_angles", KIND_VERTICAL, &Model::verticals},
                          {"azimuths", KIND_AZIMUTH, &Model::azimuths}};

const char *const packed = "[units]\nangle = \"packed_degree\"\n";

} // namespace

TEST(Observations, AreReadWithEveryColumn)
{
    for (const ListCase &c : lists) {
        const Model model =
            read(c.table, "from to value sigma h1 h2 epoch use\nS T 12.5 0.5 1.5 -2 3 yes\nU S 1 2 - - - no");
        ASSERT_EQ((model.*c.list).size(), 2u) << c.table;
        const measure_input &m = (model.*c.list).records[0], &n = (model.*c.list).records[1];
        EXPECT_EQ(m.typ, c.kind);
        EXPECT_STREQ(m.from, "S       ");
        EXPECT_STREQ(m.to, "T       ");
        EXPECT_EQ(m.val, 12.5);
        EXPECT_EQ(m.sig, 0.5);
        EXPECT_EQ(m.h1, 1.5);
        EXPECT_EQ(m.h2, -2.0);
        EXPECT_EQ(m.time, 3);
        EXPECT_EQ(n.typ, -c.kind);
        EXPECT_EQ(n.h1, 0.0);
        EXPECT_EQ(n.h2, 0.0);
        EXPECT_EQ(n.time, 0);
        EXPECT_EQ((model.*c.list).where[1].line, 16);
    }
}

TEST(Observations, KeepTheirUnitsButHeightsAboveTheMarksBecomeMetres)
{
    const Model mm = read("distances", "from to value sigma h1 h2\nS T 12500 5 1500 250", "[units]\nlength = \"mm\"\n");
    EXPECT_EQ(mm.distances.records[0].val, 12500.0);
    EXPECT_EQ(mm.distances.records[0].sig, 5.0);
    EXPECT_DOUBLE_EQ(mm.distances.records[0].h1, 1.5);
    EXPECT_DOUBLE_EQ(mm.distances.records[0].h2, 0.25);
    const Model inch = read("directions", "from to value sigma h1\nS T 12 5 100", "[units]\nlength = \"inch\"\n");
    EXPECT_DOUBLE_EQ(inch.directions.records[0].h1, 2.54);
    EXPECT_EQ(inch.directions.records[0].val, 12.0);
}

TEST(Observations, TakeTheStandardDeviationOfTheirListWhenTheyHaveNone)
{
    const Model model = read("distances", "from to value sigma\nS T 1 -\nS U 1 3", "[sigma]\ndistances = 0.5\n");
    EXPECT_EQ(model.distances.records[0].sig, 0.5);
    EXPECT_EQ(model.distances.records[1].sig, 3.0);
}

TEST(Observations, MayHaveVerySmallStandardDeviations)
{
    EXPECT_EQ(read("distances", "from to value sigma\nS T 1 1e-12").distances.records[0].sig, 1e-12);
}

TEST(Observations, NeedAStandardDeviation)
{
    EXPECT_EQ(faults_in("distances", "from to value sigma\nS T 1 -"),
              Lines{"net.inp:15:7: sigma is not known in table distances; write it there or in [sigma] distances"});
    EXPECT_EQ(
        faults_in("azimuths", "from to value\nS T 1\nS U 1"),
        Lines{"net.inp:14:1: sigma is not known in table azimuths; add a column sigma or write [sigma] azimuths"});
    EXPECT_EQ(faults_in("distances", "from to value sigma\nS T 1 0"),
              Lines{"net.inp:15:7: \"0\" in column sigma is not above 0; write a number above 0"});
    EXPECT_EQ(faults_in("distances", "from to value sigma\nS T 1 -0.1"),
              Lines{"net.inp:15:7: \"-0.1\" in column sigma is not above 0; write a number above 0"});
}

TEST(Observations, NameKnownPoints)
{
    EXPECT_EQ(faults_in("distances", "from to value sigma\nS Tt 1 1"),
              Lines{"net.inp:15:3: unknown point \"Tt\" in column to; did you mean \"T\"?"});
    EXPECT_EQ(faults_in("distances", "from to value sigma\nTower T 1 1"),
              Lines{"net.inp:15:1: unknown point \"Tower\" in column from; list it under stations or targets"});
    EXPECT_EQ(faults_in("distances", "from to value sigma\n- T 1 1"),
              Lines{"net.inp:15:1: from is not known in table distances; name a point"});
}

TEST(Observations, GoFromOnePointToAnother)
{
    EXPECT_EQ(faults_in("distances", "from to value sigma\nT T 1 1"),
              Lines{"net.inp:15:3: observation from \"T\" to itself; name two different points"});
}

TEST(Observations, OfAnglesInAnInstrumentAreTakenAtStations)
{
    EXPECT_EQ(faults_in("directions", "from to value sigma\nT S 1 1"),
              Lines{"net.inp:15:1: direction taken at target \"T\"; list it under stations"});
    EXPECT_EQ(faults_in("vertical_angles", "from to value sigma\nT S 1 1"),
              Lines{"net.inp:15:1: vertical angle taken at target \"T\"; list it under stations"});
    for (const char *table : {"distances", "height_differences", "azimuths"})
        EXPECT_EQ(faults_in(table, "from to value sigma\nT V 1 1"), Lines()) << table;
}

TEST(Observations, NeedAValue)
{
    for (const ListCase &c : lists)
        EXPECT_EQ(faults_in(c.table, "from to value sigma\nS T - 1"),
                  Lines{"net.inp:15:5: value is not known in table " + std::string(c.table) + "; write a number"});
}

TEST(Observations, RefuseNumbersThatAreNone)
{
    EXPECT_EQ(
        faults_in("directions", "from to value sigma\nS T 12,5 1"),
        Lines{"net.inp:15:5: \"12,5\" is not a number in column value; write it with a decimal point, like 12.5"});
    EXPECT_EQ(faults_in("directions", "from to value sigma\nS T 12 1s"),
              Lines{"net.inp:15:8: \"1s\" is not a number in column sigma; write a number like 12.5"});
    EXPECT_EQ(faults_in("distances", "from to value sigma\nS T x 1"),
              Lines{"net.inp:15:5: \"x\" is not a number in column value; write a number like 12.5"});
    EXPECT_EQ(faults_in("distances", "from to value sigma h1\nS T 1 1 nan"),
              Lines{"net.inp:15:9: \"nan\" in column h1 is not a finite number; write a number like 12.5"});
    EXPECT_EQ(faults_in("distances", "from to value sigma\nS T " + std::string(60, 'x') + " 1"),
              Lines{"net.inp:15:5: \"" + std::string(40, 'x') +
                    "...\" is not a number in column value; write a number like 12.5"});
}

TEST(Observations, HaveWholeEpochs)
{
    EXPECT_EQ(
        faults_in("distances", "from to value sigma epoch\nS T 1 1 1.5"),
        Lines{"net.inp:15:9: \"1.5\" is not a whole number in column epoch; write a whole number from 0 to 9999"});
    EXPECT_EQ(faults_in("distances", "from to value sigma epoch\nS T 1 1 10000"),
              Lines{"net.inp:15:9: \"10000\" in column epoch is out of range; write a whole number from 0 to 9999"});
}

TEST(Observations, AreUsedOrNot)
{
    EXPECT_EQ(faults_in("distances", "from to value sigma use\nS T 1 1 1"),
              Lines{"net.inp:15:9: \"1\" in column use is not known; write yes or no"});
}

TEST(Distances, AreAboveZero)
{
    EXPECT_EQ(faults_in("distances", "from to value sigma\nS T 0 1"),
              Lines{"net.inp:15:5: \"0\" in column value is not above 0; write a distance above 0"});
    EXPECT_EQ(faults_in("distances", "from to value sigma\nS T -5 1"),
              Lines{"net.inp:15:5: \"-5\" in column value is not above 0; write a distance above 0"});
    EXPECT_EQ(faults_in("height_differences", "from to value sigma\nS T -5 1"), Lines());
}

TEST(Distances, TakeTheConstantsOfTheirStationsGroup)
{
    const std::string groups = "groups = \"name\\nG\"\n";
    std::string text =
        network("distances", "from to value sigma constants use\nS T 1 1 yes -\nS T 1 1 no -\nS T 1 1 yes no", groups);
    text.replace(text.find("name x y z\nS 0 0 0\nU 5 5 5"), 26, "name x y z group\nS 0 0 0 G\nU 5 5 5 -");
    const Model model = model_of(text);
    ASSERT_EQ(model.distances.size(), 3u);
    ASSERT_EQ(model.stations.size(), 2u);
    EXPECT_EQ(model.distances.records[0].typ, KIND_DISTANCE_CONSTANTS);
    EXPECT_EQ(model.distances.records[1].typ, KIND_DISTANCE);
    EXPECT_EQ(model.distances.records[2].typ, -KIND_DISTANCE_CONSTANTS);
    EXPECT_EQ(model.stations.records[0].typ, 2);
    EXPECT_EQ(model.stations.records[1].typ, 1);
    EXPECT_EQ(faults_in("distances", "from to value sigma constants\nU T 1 1 yes"),
              Lines{"net.inp:15:9: point \"U\" belongs to no group; name its group in table stations"});
    EXPECT_EQ(faults_in("distances", "from to value sigma constants\nT S 1 1 yes"),
              Lines{"net.inp:15:9: point \"T\" belongs to no group; name its group in table stations"});
    EXPECT_EQ(faults_in("azimuths", "from to value sigma constants\nS T 1 1 yes")[0].substr(0, 34),
              "net.inp:14:21: unknown column \"con");
}

TEST(Directions, MayBeAnyFiniteNumber)
{
    for (const char *value : {"-1000", "1e6", "400"})
        EXPECT_EQ(faults_in("directions", std::string("from to value sigma\nS T ") + value + " 1"), Lines());
}

TEST(PackedAngles, HaveLessThanSixtyMinutesAndSeconds)
{
    for (const char *table : {"directions", "azimuths", "vertical_angles"})
        EXPECT_EQ(
            faults_in(table, "from to value sigma\nS T 12.60 0.0005", packed),
            Lines{"net.inp:15:5: \"12.60\" in column value has minutes or seconds of 60 or more; write degrees as "
                  "ddd.mmss"});
    EXPECT_EQ(faults_in("directions", "from to value sigma\nS T 12.5959 0.0061", packed),
              Lines{"net.inp:15:13: \"0.0061\" in column sigma has minutes or seconds of 60 or more; write degrees as "
                    "ddd.mmss"});
    EXPECT_EQ(faults_in("distances", "from to value sigma\nS T 12.60 0.61", packed), Lines());
}

TEST(ZenithAngles, GoFromZeroToHalfACircle)
{
    const auto fault = [](const char *value) {
        return faults_in("vertical_angles", std::string("from to value sigma\nS T ") + value + " 1");
    };
    EXPECT_EQ(fault("0"), Lines());
    EXPECT_EQ(fault("200"), Lines());
    EXPECT_EQ(
        fault("-0.001"),
        Lines{"net.inp:15:5: \"-0.001\" in column value is no zenith angle; zenith angles go from 0 to half a circle"});
    EXPECT_EQ(fault("300"),
              Lines{"net.inp:15:5: \"300\" in column value is no zenith angle; reduce the second face to the "
                    "first: full circle minus the reading, or write 2 in column face"});
    EXPECT_EQ(
        fault("400.1"),
        Lines{"net.inp:15:5: \"400.1\" in column value is no zenith angle; zenith angles go from 0 to half a circle"});
}

TEST(Elevations, GoFromMinusToPlusAQuarterOfACircle)
{
    const auto fault = [](const char *value) {
        return faults_in("vertical_angles", std::string("from to value sigma\nS T ") + value + " 1",
                         "[units]\nangle = \"degree\"\nvertical = \"elevation\"\n");
    };
    EXPECT_EQ(fault("90"), Lines());
    EXPECT_EQ(fault("-90"), Lines());
    EXPECT_EQ(fault("90.1"),
              Lines{"net.inp:15:5: \"90.1\" in column value is no elevation; elevations go from minus to "
                    "plus a quarter of a circle"});
}

TEST(Baselines, AreReadInMetres)
{
    const Model model = read(
        "baselines",
        "from to dx dy dz cxx cxy cxz cyy cyz czz use\nS T 1000 2000 -3000 4 1 -1 9 2 16 no\nS U 1 2 3 1 - - 1 - 1 -",
        "[units]\nlength = \"mm\"\n");
    ASSERT_EQ(model.baselines.size(), 2u);
    const gps_input &g = model.baselines.records[0];
    EXPECT_STREQ(g.from, "S       ");
    EXPECT_STREQ(g.to, "T       ");
    EXPECT_EQ(g.status, -1);
    EXPECT_DOUBLE_EQ(g.dx[0], 1.0);
    EXPECT_DOUBLE_EQ(g.dx[1], 2.0);
    EXPECT_DOUBLE_EQ(g.dx[2], -3.0);
    const double covariance[] = {4e-6, 1e-6, -1e-6, 9e-6, 2e-6, 16e-6};
    for (int i = 0; i < 6; i++) EXPECT_DOUBLE_EQ(g.cov[i], covariance[i]);
    EXPECT_EQ(model.baselines.records[1].status, 1);
    EXPECT_EQ(model.baselines.records[1].cov[1], 0.0);
    EXPECT_EQ(model.p.igps, 1);
}

TEST(Baselines, NeedAPositiveDefiniteCovariance)
{
    const auto fault = [](const char *covariance) {
        return faults_in("baselines", std::string("from to dx dy dz cxx cxy cxz cyy cyz czz\nS T 1 1 1 ") + covariance);
    };
    EXPECT_EQ(fault("-1 0 0 1 0 1"),
              Lines{"net.inp:15:11: variance \"-1\" in column cxx is not above 0; write a number above 0"});
    EXPECT_EQ(fault("1 0 0 0 0 1"),
              Lines{"net.inp:15:17: variance \"0\" in column cyy is not above 0; write a number above 0"});
    EXPECT_EQ(fault("1 0 0 1 0 -"),
              Lines{"net.inp:15:21: czz is not known in table baselines; write a number above 0"});
    const Lines indefinite = {
        "net.inp:15:11: covariance of the baseline is not positive definite; check cxy, cxz and cyz"};
    EXPECT_EQ(fault("1 2 0 1 0 1"), indefinite);
    EXPECT_EQ(fault("1 0 0 1 2 1"), indefinite);
    EXPECT_EQ(fault("1 0 2 1 0 1"), indefinite);
    EXPECT_EQ(fault("1 0.5 0.5 1 0.5 1"), Lines());
}

TEST(Baselines, NeedTheirComponentsAndEnds)
{
    EXPECT_EQ(faults_in("baselines", "from to dx dy dz cxx cyy czz\nS S 1 - 1 1 1 1"),
              (Lines{"net.inp:15:3: observation from \"S\" to itself; name two different points",
                     "net.inp:15:7: dy is not known in table baselines; write a number"}));
    EXPECT_EQ(faults_in("baselines", "from to dx dy dz cxx cyy\nS T 1 1 1 1 1"),
              Lines{"net.inp:14:1: column czz is missing in table baselines; add it to the heading"});
    EXPECT_EQ(faults_in("baselines", "from to dx dy dz cxx cyy czz\nT V 1 1 1 1 1 1"), Lines()); // between targets
}

// A network takes the components of its dimension; what a file says of the others is not needed.
TEST(Baselines, NeedTheComponentsOfTheDimensionOnly)
{
    const auto faults = [](int dimension, const std::string &rows, const std::string &more = "") {
        return faults_of("[run]\ndimension = " + std::to_string(dimension) + "\n" + more +
                         "[tables]\ntargets = '''\nname x y z\nT 1 1 1\nV 2 2 2\n'''\nbaselines = '''\n" + rows +
                         "\n'''\n");
    };
    EXPECT_EQ(faults(2, "from to dx dy cxx cxy cyy\nT V 1 1 1 0.5 1"), Lines());
    EXPECT_EQ(faults(1, "from to dz czz\nT V 1 1"), Lines());
    EXPECT_EQ(faults(2, "from to dx cxx\nT V 1 1"),
              (Lines{"net.inp:10:1: column dy is missing in table baselines; add it to the heading",
                     "net.inp:10:1: column cyy is missing in table baselines; add it to the heading"}));
    EXPECT_EQ(faults(2, "from to dx dy cxx cxy cyy\nT V 1 1 1 2 1"),
              Lines{"net.inp:11:9: covariance of the baseline is not positive definite; check cxy, cxz and cyz"});
    EXPECT_EQ(faults(2, "from to cxx cyy\nT V 1 1", "mode = \"propagation\"\n"), Lines());
}

TEST(Observations, OfAPlanNeedNoColumnOfValues)
{
    for (const ListCase &c : lists) {
        std::string text = network(c.table, "from to sigma\nS T 1");
        EXPECT_EQ(faults_of(text),
                  Lines{"net.inp:14:1: column value is missing in table " + std::string(c.table) +
                        "; add it to the heading; only a plan (mode = \"propagation\") needs no values"});
        text.insert(text.find("[tables]"), "mode = \"propagation\"\n");
        EXPECT_EQ(faults_of(text), Lines()) << c.table;
    }
}

TEST(Pairs, NameTwoPoints)
{
    const std::string distances = "distances = \"from to value sigma\\nS T 1 1\"\n";
    const Model model = read("pairs", "from to\nS T\nT V", distances);
    ASSERT_EQ(model.pairs.size(), 2u);
    EXPECT_STREQ(model.pairs.records[1].from, "T       ");
    EXPECT_STREQ(model.pairs.records[1].to, "V       ");
    EXPECT_EQ(faults_in("pairs", "from to\nS X", distances),
              Lines{"net.inp:15:3: unknown point \"X\" in column to; did you mean \"S\"?"});
    EXPECT_EQ(faults_in("pairs", "from to\nS S", distances),
              Lines{"net.inp:15:3: pair of \"S\" with itself; name two different points"});
}

TEST(Suggestions, AreNotSoughtForFaultsThatAreOnlyCounted)
{
    std::string text = "[run]\ndimension = 1\n[tables]\ntargets = \"\"\"\nname\n";
    for (int i = 0; i < 20000; i++) text += "P" + std::to_string(i) + "\n";
    text += "\"\"\"\nheight_differences = \"\"\"\nfrom to value sigma\n";
    for (int i = 0; i < 20000; i++) text += "Q" + std::to_string(i) + " R" + std::to_string(i) + " 1 1\n";
    // 40000 searches among 20000 names would take minutes.
    EXPECT_EQ(faults_of(text + "\"\"\"\n").size(), 51u);
}
