// Field books of total stations and levels in M5.

#include "field_truth.h"

#include "host/formats/packed_degrees.h"

using namespace vornhost;

namespace {

// Values of the blocks: type, number, unit.
std::string line(const char *kind, const char *code, const std::string &point, const std::vector<std::string> &values)
{
    std::string text = field::format("For M5|Adr 00001|%-3s %10s%-5s%12s|", kind, "", code, point.c_str());
    for (size_t i = 0; i < 3; i++) text += field::format("%-22s|", i < values.size() ? values[i].c_str() : "");
    return text + "\r\n";
}
std::string input(const std::vector<std::string> &values)
{
    std::string text = field::format("For M5|Adr 00001|TI  %-27s|", "INPUT");
    for (size_t i = 0; i < 3; i++) text += field::format("%-22s|", i < values.size() ? values[i].c_str() : "");
    return text + "\r\n";
}
std::string value(const char *type, double number, const char *unit, int places)
{
    return field::format("%-3s%14.*f %-4s", type, places, number, unit);
}

std::string m5(bool elevations)
{
    std::string text;
    for (const field::Sight &s : field::sights()) {
        const field::Place &p = field::places().at(s.station);
        if (s.first)
            text += field::format("For M5|Adr 00001|TI  %-27s|%22s|%22s|%22s|\r\n", "KN STAT", "", "", "") +
                    line("PI1", "S", s.station,
                         {value("Y", p.y, "m", 3), value("X", p.x, "m", 3), value("Z", p.z, "m", 3)}) +
                    field::format("For M5|Adr 00001|TI  %-27s|%22s|%22s|%22s|\r\n", "POLAR", "", "", "") +
                    input({value("ih", s.instrument, "m", 4)});
        double elevation = 100.0 - s.zenith;
        if (elevation < 0.0) elevation += 400.0;
        text += input({value("th", s.height, "m", 4)}) +
                line("PI1", "", s.target,
                     {value("SD", s.slope, "m", 4), value("Hz", s.direction, "gon", 5),
                      elevations ? value("V3", elevation, "gon", 5) : value("V1", s.zenith, "gon", 5)}) +
                line("PI1", "", s.target, {value("Y", 1, "m", 3), value("X", 2, "m", 3), value("Z", 3, "m", 3)});
    }
    return text;
}

} // namespace

TEST_F(FieldBooks, InM5GiveTheNetworkBack)
{
    expect_truth(m5(false), 5e-5);
    // 48 sights with a height of target and computed coordinates each, 4 stations of 4 lines
    EXPECT_EQ(last_note(), "book: records read 160 = taken 112 + left out 48");
}
TEST_F(FieldBooks, InM5GiveTheNetworkBackFromElevations) { expect_truth(m5(true), 5e-5); }

TEST_F(FieldBooks, InM5TakeDegreesMinutesSecondsAsTheyAre)
{
    ASSERT_EQ(
        import(line("PI1", "S", "A", {value("Y", 0, "m", 3)}) +
               line("PI1", "", "B",
                    {value("SD", 6.552, "m", 3), value("Hz", 340.0105, "DMS", 4), value("V1", 91.1619, "DMS", 4)})),
        Lines());
    EXPECT_NE(write_network(draft).text.find("340-01-05"), std::string::npos) << write_network(draft).text;
    EXPECT_NEAR(*rows(DraftKind::vertical_angle).at(0).value[0], 91 + 16.0 / 60 + 19.0 / 3600, 1e-9);
}

TEST_F(FieldBooks, InM5StandOnStationsWithoutCoordinates)
{
    ASSERT_EQ(import(line("PI1", "S", "A", {}) + input({value("ih", 1.5, "m", 3), value("th", 1.6, "m", 3)}) +
                     line("PI1", "", "B",
                          {value("SD", 6.552, "m", 3), value("Hz", 10, "gon", 4), value("V1", 91, "gon", 4)})),
              Lines());
    ASSERT_EQ(rows(DraftKind::distance).size(), (size_t)1);
    EXPECT_EQ(rows(DraftKind::distance)[0].from, "A");
}

TEST_F(FieldBooks, InM5TakeTheLastOfSightsWithCorrectedHeights)
{
    const std::string sight = line("PI1", "", "B", {value("SD", 6.552, "m", 3), value("V1", 91, "gon", 4)});
    ASSERT_EQ(import(line("PI1", "S", "A", {value("Y", 0, "m", 3)}) + input({value("th", 1.5, "m", 3)}) + sight +
                     input({value("th", 1.6, "m", 3)}) + sight),
              Lines());
    ASSERT_EQ(rows(DraftKind::distance).size(), 1u);
    EXPECT_DOUBLE_EQ(*rows(DraftKind::distance)[0].h2, 1.6);
    EXPECT_EQ(last_note(), "book: records read 5 = taken 4 + left out 1");
}

TEST_F(FieldBooks, InM5NameEveryFaultInOnePass)
{
    EXPECT_EQ(import(line("PI1", "S", "A", {value("Y", 0, "m", 3)}) +
                     line("PI1", "", "B", {value("SD", 6.5, "m", 3), value("Hz", 340.0105, "xyz", 4)}) +
                     line("PI1", "", "B", {value("SD", 6.5, "yd", 3), value("V2", 91, "gon", 4)}) +
                     line("PI1", "", "B", {value("SD", 6.5, "yd", 3)}) + "For X5|\n"),
              (Lines{"book:2:73: \"xyz\" is not a unit of Hz; write gon, grd, DEG, DMS or mil",
                     "book:3:73: vertical angles of type V2 are not taken; record V1, from the zenith, or V3, from the "
                     "horizon",
                     "book:4:50: \"yd\" is not a unit of SD; write m or ft",
                     "book:5: the line does not begin with \"For M5|\", \"For R5|\" or \"For R4|\"; take it out, or "
                     "write it so"}));
}

TEST(PackedDegrees, AreReadFromTheirText)
{
    EXPECT_NEAR(*packed_degrees("45.3025"), 45.0 + 30.0 / 60 + 25.0 / 3600, 1e-13);
    EXPECT_NEAR(*packed_degrees("302.504"), 302.0 + 50.0 / 60 + 40.0 / 3600, 1e-13);
    EXPECT_NEAR(*packed_degrees("110.2"), 110.0 + 20.0 / 60, 1e-13);
    EXPECT_NEAR(*packed_degrees("-0.00015"), -1.5 / 3600, 1e-15);
    EXPECT_DOUBLE_EQ(*packed_degrees("7"), 7.0);
    for (const char *text : {"", ".", "-", "1.6", "1.0060", "1.2e3", "a", "1.2.3"})
        EXPECT_FALSE(packed_degrees(text)) << text;
}

// ---- levels ----

namespace {

std::string level(const std::string &point, const std::vector<std::string> &values, int number = 1)
{
    std::string text = field::format("For M5|Adr 00001|KD1 %-23s%4d|", point.c_str(), number);
    for (size_t i = 0; i < 3; i++) text += field::format("%-22s|", i < values.size() ? values[i].c_str() : "");
    return text + "\r\n";
}
std::string words(const char *text)
{
    return field::format("For M5|Adr 00001|TO  %-27s|%22s|%22s|%22s|\r\n", text, "", "", "");
}
std::string reading(const std::string &point, const char *type, double number, int line = 1)
{
    return level(point, {value(type, number, "m", 5), value("HD", 20, "m", 3)}, line);
}

} // namespace

TEST_F(FieldBooks, OfALevelInM5HaveAHeightDifferenceAStation)
{
    const std::string height = level("", {value("Z", 100.5, "m", 5)});
    ASSERT_EQ(import(words("Start-Line         BFFB   1") + level("BM7", {value("Z", 100, "m", 5)}) +
                     reading("BM7", "Rb", 1.5) + reading("", "Rf", 1.0) + reading("", "Rf", 1.0002) +
                     reading("BM7", "Rb", 1.5004) + height + reading("", "Rb", 1.4) + reading("P9", "Rf", 1.1) +
                     words("Measurement repeated") + reading("P9", "Rf", 1.0) + height + words("Intermediate sight.") +
                     reading("Q1", "Rz", 0.5) + words("End-Line                  1") +
                     level("P9", {value("Sh", 0.9, "m", 4), value("dz", 0.0, "m", 4)})),
              Lines());
    const std::vector<DraftRow> &dh = rows(DraftKind::height_difference);
    ASSERT_EQ(dh.size(), 3u);
    EXPECT_EQ(dh[0].from, "BM7");
    EXPECT_EQ(dh[0].to, dh[1].from);
    EXPECT_NEAR(*dh[0].value[0], 0.5001, 1e-9);
    EXPECT_DOUBLE_EQ(*dh[0].length, 40.0);
    EXPECT_EQ(dh[1].to, "P9");
    EXPECT_DOUBLE_EQ(*dh[1].value[0], 0.4);
    EXPECT_EQ(dh[2].to, "Q1");
    EXPECT_DOUBLE_EQ(*dh[2].value[0], 0.9);
    EXPECT_DOUBLE_EQ(*draft.points.at(0).value[2], 100.0);
    EXPECT_EQ(draft.dimension, 1);
}

TEST_F(FieldBooks, OfALevelInM5BeginALineWithEachNumber)
{
    ASSERT_EQ(import(reading("A", "Lr", 1.5, 1) + reading("B", "Lv", 1.0, 1) + level("B", {value("Z", 1, "m", 4)}) +
                     reading("C", "Lr", 1.5, 2) + reading("D", "Lv", 1.1, 2)),
              Lines());
    ASSERT_EQ(rows(DraftKind::height_difference).size(), 2u);
    EXPECT_DOUBLE_EQ(*rows(DraftKind::height_difference)[1].value[0], 0.4);
}
