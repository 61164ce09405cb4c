// Field books in SDR33 and SDR2x.

#include "field_truth.h"

using namespace vornhost;

namespace {

const char *const header = "00NMSDR33 V04-04.02     01-Jan-26 08:00 113121\n";

std::string sdr33()
{
    std::string text = header;
    for (const field::Sight &s : field::sights()) {
        const field::Place &p = field::places().at(s.station);
        if (s.first)
            text +=
                field::format("02TP%16s%-16.3f%-16.3f%-16.3f%-16.4f\n", s.station.c_str(), p.y, p.x, p.z, s.instrument);
        text += field::format("03NM%-16.4f\n", s.height);
        text += field::format("09F%d%16s%16s%-16.8f%-16.8f%-16.8f\n", s.face, s.station.c_str(), s.target.c_str(),
                              s.slope, s.zenith * 0.9, s.direction * 0.9);
    }
    return text;
}

} // namespace

TEST_F(FieldBooks, InSdr33GiveTheNetworkBack)
{
    expect_truth(sdr33(), 2e-6);
    EXPECT_EQ(draft.units.angle, "degree");
    EXPECT_EQ(rows(DraftKind::direction).size(), 12u);
}

TEST_F(FieldBooks, InSdr33ReadByColumnsWhereNamesAndNumbersTouch)
{
    ASSERT_EQ(import(std::string(header) + "10NMDEMO            121111\n"
                                           "02TP               A100.000         200.000         10.000          1.550\n"
                                           "07TP               A               B50.19442891     32.19442891\n"
                                           "03NM1.600\n"
                                           "09F1               A             12178.129          88.49647078     "
                                           "32.19442891\n"
                                           "09MC               A             12178.130          88.49647078     "
                                           "32.19442891\n"),
              Lines());
    EXPECT_EQ(draft.title, "DEMO");
    const DraftPoint &station = draft.points.at(0);
    EXPECT_EQ(station.name, "A");
    EXPECT_DOUBLE_EQ(*station.value[0], 200.0); // east stands first
    EXPECT_DOUBLE_EQ(*station.value[1], 100.0);
    EXPECT_DOUBLE_EQ(*draft.setups.at(0).height, 1.55);
    const DraftRow &distance = rows(DraftKind::distance).at(0);
    EXPECT_EQ(distance.to, "121");
    EXPECT_DOUBLE_EQ(*distance.value[0], 78.129);
    EXPECT_DOUBLE_EQ(*distance.h2, 1.6);
    EXPECT_EQ(last_note(), "book: records read 7 = taken 5 + left out 2");
}

TEST_F(FieldBooks, InSdr33TakeElevationsAsZenithAnglesInBothFaces)
{
    ASSERT_EQ(import(std::string(header) + "01NM" + std::string(46, ' ') +
                     "2\n"
                     "02TP               A1               2"
                     "               3               1.5\n"
                     "09F1               A               "
                     "B10.0            5.0             20.0\n"
                     "09F2               A               "
                     "B10.0            175.0           200.0\n"),
              Lines());
    EXPECT_NEAR(*rows(DraftKind::vertical_angle).at(0).value[0], 85.0, 1e-9);
    EXPECT_NEAR(*rows(DraftKind::direction).at(0).value[0], 20.0, 1e-9);
}

TEST_F(FieldBooks, InSdr33GiveSightsOfAResectionToTheStationThatFollows)
{
    ASSERT_EQ(import(std::string(header) + "13F1               0               B10.0            95.0            20.0\n"
                                           "02TP               P1               2               3               "
                                           "1.5\n"),
              Lines());
    EXPECT_EQ(rows(DraftKind::direction).at(0).from, "P");
    EXPECT_EQ(rows(DraftKind::direction).at(0).to, "B");
}

TEST_F(FieldBooks, InSdr2xHaveNarrowerColumns)
{
    ASSERT_EQ(import("00NMSDR20 V03-05       01-Jan-91 00:00 211111\n"
                     "02TP  10100.000   200.000   10.000    1.550\n"
                     "09F1  10  11 78.129    98.3294   35.7716\n"),
              Lines());
    const DraftRow &row = rows(DraftKind::distance).at(0);
    EXPECT_EQ(row.from + row.to, "1011");
    EXPECT_DOUBLE_EQ(*row.value[0], 78.129);
    EXPECT_DOUBLE_EQ(*draft.points.at(0).value[0], 100.0); // north stands first
}

TEST_F(FieldBooks, CutOffBehindTheirHeadAreNoNetwork)
{
    EXPECT_EQ(import("00NMSDR33 V04-04.02     01-Jan-26 08:00 113121\n"),
              Lines{"book: it holds no points and no observations; is the file whole?"});
}

TEST_F(FieldBooks, InSdr33RefuseWhatTheyCannotRead)
{
    EXPECT_EQ(import("00NMSDR33 V04-04.02     01-Jan-26 08:00 913121\n"
                     "02TP               A10x.000         200.000         10.000          1.550\nXX\n"),
              (Lines{"book:1:41: the unit of angles is not known by this digit; the last six digits of the header are "
                     "angle 1 degree 2 gon 4 mil, length 1 m 2 ft, pressure, temperature, coordinates 1 north first 2 "
                     "east first",
                     "book:2:21: \"10x.000\" in columns 21 to 36 is not a number; write it with a decimal point in "
                     "these columns",
                     "book:3:1: \"XX\" begins no record; a record has two digits and two letters before its fields"}));
}
