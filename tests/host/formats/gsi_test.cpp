// Field books and levelling in GSI.

#include "field_truth.h"

#include <filesystem>

#include "host/formats/gsi_block.h"

using namespace vornhost;

namespace {

// Words of 24 places.
std::string word16(const char *head, long long value)
{
    return field::format("%s%c%016lld ", head, value < 0 ? '-' : '+', value < 0 ? -value : value);
}
std::string text16(const char *head, const std::string &text)
{
    return std::string(head) + "+" + std::string(16 - text.size(), '0') + text + " ";
}

std::string gsi16()
{
    std::string text;
    for (const field::Sight &s : field::sights()) {
        if (s.first)
            text += "*" + word16("410001", 21) + text16("42....", s.station) +
                    word16("43....", std::llround(s.instrument * 1000)) + "\r\n";
        text += "*" + text16("110002", s.target) + word16("21.322", std::llround(s.direction * 1e5)) +
                word16("22.322", std::llround(s.zenith * 1e5)) + word16("31..00", std::llround(s.slope * 1e3)) +
                "51..1.+00000008+0000000 " + word16("87..10", std::llround(s.height * 1e3)) + "\r\n";
    }
    return text;
}

// GSI-8 in degrees, minutes and tenths of seconds, lengths to 0.1 mm, set-ups by coordinates of the station.
std::string gsi8()
{
    std::string text;
    const auto dms = [](double gons) {
        const long long tenths = std::llround(gons * 0.9 * 36000.0);
        return field::format("+%03lld%02lld%03lld ", tenths / 36000, tenths / 600 % 60, tenths % 600);
    };
    for (const field::Sight &s : field::sights()) {
        const field::Place &p = field::places().at(s.station);
        if (s.first)
            text += field::format("110001+0000000%s 84..16+%08.0f 85..16+%08.0f 86..16+%08.0f 88..16+%08.0f \n",
                                  s.station.c_str(), p.y * 1e4, p.x * 1e4, p.z * 1e4, s.instrument * 1e4);
        text += field::format("110002+0000000%s 21.324", s.target.c_str()) + dms(s.direction) + "22.324" +
                dms(s.zenith) + field::format("31..06+%08.0f 87..16+%08.0f\n", s.slope * 1e4, s.height * 1e4);
    }
    return text;
}

const char *const one_station = "*410001+0000000000000021 42....+000000000000000A 43....+0000000000001550\n"
                                "*110002+000000000000000B 21.322+0000000003577239 22.322+0000000009832891 "
                                "31..00+0000000000078129 87..10+0000000000001600\n"
                                "*110003+000000000000000C 21.322+0000000010284085 22.322+0000000010055832 "
                                "31..00+0000000000085443 87..10+0000000000001300\n"
                                "*110004+000000000000000C 21.322+0000000030283925 22.322+0000000029944068 "
                                "31..00+0000000000085443 87..10+0000000000001300\n"
                                "*110005+000000000000000B 21.322+0000000023577079 22.322+0000000030167009 "
                                "31..00+0000000000078129 87..10+0000000000001600\n";

} // namespace

// Distances are rounded to a millimetre.
TEST_F(FieldBooks, InGsi16GiveTheNetworkBack) { expect_truth(gsi16(), 5e-4); }
TEST_F(FieldBooks, InGsi8GiveTheNetworkBack) { expect_truth(gsi8(), 5e-5); }

TEST_F(FieldBooks, InGsi16KeepTheirSetsWhereAsked)
{
    ImportOptions options;
    options.keep_sets = true;
    expect_truth(gsi16(), 5e-4, options);
    EXPECT_EQ(rows(DraftKind::direction).size(), 24u);
    EXPECT_EQ(rows(DraftKind::direction)[3].set, "2");
}

// The means were worked out by hand.
TEST_F(FieldBooks, HaveMeansOfBothFacesAndTheErrorsOfTheInstrument)
{
    ASSERT_EQ(import(one_station), Lines());
    ASSERT_EQ(rows(DraftKind::direction).size(), 2u);
    EXPECT_DOUBLE_EQ(*rows(DraftKind::direction)[0].value[0], 35.77159);
    EXPECT_DOUBLE_EQ(*rows(DraftKind::direction)[1].value[0], 102.84005);
    EXPECT_DOUBLE_EQ(*rows(DraftKind::vertical_angle)[0].value[0], 98.32941);
    EXPECT_DOUBLE_EQ(*rows(DraftKind::vertical_angle)[1].value[0], 100.55882);
    EXPECT_DOUBLE_EQ(*rows(DraftKind::distance)[1].value[0], 85.443);
    EXPECT_DOUBLE_EQ(*rows(DraftKind::distance)[1].h2, 1.3);
    EXPECT_DOUBLE_EQ(*draft.setups.at(0).height, 1.55);
    const Lines lines = notes();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1],
              "book:1: \"A\", set-up 1: 1 set, 2 targets, in both faces; collimation error 0.80 mgon (largest "
              "0.80); index error -0.50 mgon (largest 0.50)");
    EXPECT_EQ(lines[2], "book: records read 5 = taken 5 + left out 0");
}

TEST_F(FieldBooks, TakeStandardDeviationsThatTheUserStates)
{
    ImportOptions options;
    options.sigma = {{"directions", 0.5}, {"distances", 1.5}, {"height_target", 0.0}};
    ASSERT_EQ(import(one_station, options), Lines());
    const std::string text = write_network(draft).text;
    EXPECT_NE(text.find("[sigma]\ndirections = 0.5\nvertical_angles = 1\ndistances = 1.5\ndistances_ppm = 2\n"
                        "height_instrument = 1\n\n"),
              std::string::npos)
        << text;
}

TEST_F(FieldBooks, NameEveryFaultOfTheirWordsInOnePass)
{
    EXPECT_EQ(import("*410001+0000000000000021 42....+000000000000000A 43....+0000000000001550\n"
                     "*110001+000000000000000B 21.322+00000000035x7239 22.322+0000000009832891\n"
                     "*110001+000000000000000C 21.322\n"
                     "110001+0000000D 31..09+00078129\n"),
              (Lines{"book:2:26: word 21: \"00000000035x7239\" is not a number; write digits in all places",
                     "book:3:26: the last word is cut off; a word has 23 places and a blank behind it",
                     "book:4:17: word 31: unit 9 is not one of lengths; 0, 6 and 8 are metres, 1 and 7 feet"}));
    EXPECT_FALSE(imported);
}

TEST_F(FieldBooks, AskForTheStationOfTheirFirstSight)
{
    const char *sight = "110001+0000000B 21.322+03577239 22.322+09832891 31..00+00078129\n";
    EXPECT_EQ(import(sight), Lines{"book:1: a sight before any set-up: nothing says where the instrument stood; name "
                                   "the station with --station NAME, or the codes of the blocks that open set-ups "
                                   "with --station-code"});
    ImportOptions options;
    options.station = "A";
    EXPECT_EQ(import(sight, options), Lines());
    EXPECT_EQ(draft.setups.at(0).station, "A");
    EXPECT_DOUBLE_EQ(*rows(DraftKind::direction).at(0).value[0], 35.77239);
}

TEST_F(FieldBooks, AccountForWhatTheyLeaveOut)
{
    ASSERT_EQ(import(std::string("410001+00000014 42....+00000007\n") + one_station +
                     "410001+00000014 42....+00000007\n\n110002+0000000A 21.322+00000000\n"),
              Lines());
    const Lines lines = notes();
    EXPECT_EQ(lines[1], "book:1: left out: code block \"14\", which opens no set-up (--station-code names those that "
                        "do) (so is line 7)");
    EXPECT_EQ(lines.back(), "book: records read 8 = taken 5 + left out 3");
}

TEST(GsiBlock, ReadsAnglesAndLengthsInEachUnit)
{
    const auto word = [](char unit, const char *data) {
        GsiWord w;
        w.index = 21;
        w.unit = unit;
        w.data = data;
        return w;
    };
    Faults faults;
    EXPECT_DOUBLE_EQ(*gsi_angle(word('2', "03577239"), CircleUnit::gon, faults), 35.77239);
    EXPECT_DOUBLE_EQ(*gsi_angle(word('3', "03577239"), CircleUnit::degree, faults), 35.77239);
    EXPECT_NEAR(*gsi_angle(word('4', "03545100"), CircleUnit::dms, faults), 35 + 45.0 / 60 + 10.0 / 3600, 1e-12);
    EXPECT_DOUBLE_EQ(*gsi_angle(word('5', "16000000"), CircleUnit::gon, faults), 100.0);
    EXPECT_DOUBLE_EQ(*gsi_angle(word('3', "09000000"), CircleUnit::gon, faults), 100.0);
    EXPECT_DOUBLE_EQ(*gsi_length(word('0', "00078129"), faults), 78.129);
    EXPECT_DOUBLE_EQ(*gsi_length(word('1', "00001000"), faults), 0.3048);
    EXPECT_DOUBLE_EQ(*gsi_length(word('6', "00078129"), faults), 7.8129);
    EXPECT_DOUBLE_EQ(*gsi_length(word('7', "00010000"), faults), 0.3048);
    EXPECT_DOUBLE_EQ(*gsi_length(word('8', "00078129"), faults), 0.78129);
    EXPECT_DOUBLE_EQ(*gsi_length(word('.', "0001.546"), faults), 1.546);
    EXPECT_FALSE(gsi_length(word('0', "000-----"), faults));
    EXPECT_FALSE(gsi_length(word('0', "?......1"), faults));
    EXPECT_TRUE(faults.empty());
    EXPECT_FALSE(gsi_angle(word('4', "03560100"), CircleUnit::dms, faults));
    EXPECT_FALSE(gsi_angle(word('0', "03545100"), CircleUnit::gon, faults));
    EXPECT_EQ(faults.count(), 2u);
}

// ---- levelling ----

namespace {

// A loop of three stations over two turning points that have no names, levelled BFFB: heights 52.1, 52.6, 53.0.
const char *const levelling = "410001+?......2\n"
                              "110002+00000BM7 83...6+00521000\n"
                              "110003+00000BM7 32...6+00200000 331.06+00015000\n"
                              "110004+00000000 32...6+00180000 332.06+00010000\n"
                              "110005+00000000 32...6+00180000 336.06+00010002\n"
                              "110006+00000BM7 32...6+00200000 335.06+00015004\n"
                              "110007+00000000 573..6+00002000 574..6+00380000 83..06+00526001\n"
                              "110008+00000000 32...6+00200000 331.06+00014000\n"
                              "110009+000000P9 32...6+00200000 332.06+00010000\n"
                              "110010+000000P9 32...6+00200000 336.06+00010000\n"
                              "110011+00000000 32...6+00200000 335.06+00014000\n"
                              "110012+000000P9 573..6+00002000 574..6+00780000 83..06+00530001\n"
                              "110013+000000Q1 32...6+00150000 333.06+00005000\n";

} // namespace

TEST_F(FieldBooks, OfALevelHaveAHeightDifferenceAStation)
{
    ASSERT_EQ(import(levelling), Lines());
    const std::vector<DraftRow> &dh = rows(DraftKind::height_difference);
    ASSERT_EQ(dh.size(), 3u);
    EXPECT_EQ(dh[0].from, "BM7");
    EXPECT_EQ(dh[0].to, dh[1].from);
    EXPECT_NEAR(*dh[0].value[0], 0.5001, 1e-9);
    EXPECT_DOUBLE_EQ(*dh[0].length, 38.0);
    EXPECT_EQ(dh[1].to, "P9");
    EXPECT_DOUBLE_EQ(*dh[1].value[0], 0.4);
    EXPECT_EQ(dh[2].from, dh[1].from);
    EXPECT_EQ(dh[2].to, "Q1");
    EXPECT_DOUBLE_EQ(*dh[2].value[0], 0.9);
    EXPECT_DOUBLE_EQ(*dh[2].length, 35.0);
    EXPECT_EQ(draft.dimension, 1);
    EXPECT_DOUBLE_EQ(*draft.points.at(0).value[2], 52.1);
    EXPECT_EQ(last_note(), "book: records read 13 = taken 13 + left out 0");
}

TEST_F(FieldBooks, OfALevelPartTurningPointsThatOnlyShareTheirNumbers)
{
    const char *const line = "410001+?......1\n"
                             "110003+000000%s 32...6+00200000 331.06+00015000\n"
                             "110004+00000001 32...6+00180000 332.06+00010000\n"
                             "110005+00000001 32...6+00180000 331.06+00010000\n"
                             "110006+000000%s 32...6+00200000 332.06+00015000\n";
    ASSERT_EQ(import(field::format(line, "AA", "BB") + field::format(line, "BB", "CC")), Lines());
    const std::vector<DraftRow> &dh = rows(DraftKind::height_difference);
    ASSERT_EQ(dh.size(), 4u);
    EXPECT_EQ(dh[0].to, "L1.1");
    EXPECT_EQ(dh[1].from, "L1.1");
    EXPECT_EQ(dh[2].to, "L2.1");
    EXPECT_EQ(dh[3].to, "CC");
}

TEST_F(FieldBooks, OfALevelLeaveCollimationChecksAndCutStationsOut)
{
    ASSERT_EQ(import(std::string("410001+?.....10\n110002+000000A1 32...6+00200000 331.06+00015000\n") + levelling +
                     "110014+000000P9 32...6+00200000 331.06+00015000\n"),
              Lines());
    EXPECT_EQ(rows(DraftKind::height_difference).size(), 3u);
    EXPECT_EQ(last_note(), "book: records read 16 = taken 14 + left out 2");
}

// ---- files at hand ----

TEST_F(FieldBooks, OfAMonitoringNetworkAdjustAsTheyAre)
{
    const std::string path = SOURCE_DIR "/../shared/data/import/gsi/network.GSI";
    if (!std::filesystem::exists(path)) GTEST_SKIP() << "no field book at hand";
    Model model;
    Lines said;
    Faults faults;
    ASSERT_TRUE(read_any_network(path, model, said, faults)) << faults.lines().at(0);
    EXPECT_NE(said.back().find("records read 1422 = taken 1422 + left out 0"), std::string::npos);
    const SolvedNetwork solved = solve(model);
    ASSERT_TRUE(solved.run.outcome.adjusted());
    // 22 points, 22 orientations; 100 sights of three kinds; the datum of a free network has 4 conditions
    EXPECT_EQ(solved.run.results.degrees_of_freedom, 300 - (22 * 3 + 22) + 4);
}
