// Stations and measurements of DynAdjust as drafts: fixed columns and DynaML.

#include <cmath>
#include <filesystem>
#include <fstream>

#include "host/earth/reference.h"
#include "host/formats/dna.h"
#include "host/formats/geocentric.h"
#include "host/formats/plate_motion.h"
#include "host/own/own_run.h"
#include "imported.h"

using namespace vornhost;

namespace {

// A line with texts from given columns on, counted from 1.
std::string columns(const std::vector<std::pair<size_t, std::string>> &texts)
{
    std::string line;
    for (const auto &[column, text] : texts) {
        if (line.size() < column - 1) line.resize(column - 1, ' ');
        line.replace(column - 1, std::string::npos, text);
    }
    return line + '\n';
}

const std::string measures_head = "!#=DNA 3.01 MSR    01.02.2024       GDA2020    01.01.2020         2\n";
const std::string stations_head = "!#=DNA 3.01 STN    01.02.2024       GDA2020    01.01.2020         3\n* made up\n";

std::string station(const std::string &name, const std::string &codes, const std::string &type, const std::string &a,
                    const std::string &b, const std::string &c)
{
    return columns({{1, name}, {21, codes}, {25, type}, {28, a}, {48, b}, {68, c}});
}

std::string component(double value, const std::vector<std::string> &covariance)
{
    std::vector<std::pair<size_t, std::string>> texts = {{63, std::to_string(value)}};
    for (size_t i = 0; i < covariance.size(); i++) texts.push_back({83 + 20 * i, covariance[i]});
    return columns(texts);
}

class Dna : public Formats {
protected:
    void SetUp() override {}
    Lines measures(const std::string &text, const std::string &stations)
    {
        if (!stations.empty()) folder.write("net.stn", stations_head + stations);
        return import(measures_head + text, "net.msr");
    }
};

const std::string two_stations = station("ALFA", "CCC", "XYZ", "-4000000.0000", "2500000.0000", "-4300000.0000") +
                                 station("BETA", "FFF", "XYZ", "-4000300.0000", "2500400.0000", "-4299900.0000");

} // namespace

TEST_F(Dna, ReadsPackedDegreesWithAnyNumberOfDigits)
{
    double degrees = 0;
    EXPECT_TRUE(read_packed("-36.3348253617", degrees));
    EXPECT_NEAR(degrees, -(36.0 + 33.0 / 60 + 48.253617 / 3600), 1e-13);
    EXPECT_TRUE(read_packed("145.3", degrees));
    EXPECT_NEAR(degrees, 145.5, 1e-13);
    EXPECT_TRUE(read_packed("-0.00015", degrees));
    EXPECT_NEAR(degrees, -1.5 / 3600, 1e-15);
    EXPECT_FALSE(read_packed("10.60", degrees));
    EXPECT_FALSE(read_packed("1e2", degrees));
    EXPECT_FALSE(read_packed("", degrees));
}

TEST_F(Dna, TakesBaselinesWithTheirScaledCovarianceAndChords)
{
    EXPECT_EQ(measures(columns({{1, "S ALFA"}, {23, "BETA"}, {63, "509.9031"}, {91, "0.0020"}}) +
                           columns({{1, "G ALFA"},
                                    {23, "BETA"},
                                    {63, "4.00"},
                                    {73, "1.00"},
                                    {83, "1.00"},
                                    {93, "1.00"},
                                    {103, "GDA2020"},
                                    {123, "01.01.2020"}}) +
                           component(-300.001, {"4e-06"}) + component(400.001, {"-1e-06", "4e-06"}) +
                           component(99.999, {"1e-06", "-1e-06", "4e-006"}),
                       two_stations),
              Lines());
    ASSERT_EQ(rows(DraftKind::baseline).size(), (size_t)1);
    const DraftRow &row = rows(DraftKind::baseline)[0];
    EXPECT_EQ(*row.value[1], 400.001);
    EXPECT_NEAR(*row.product[2], 16e-6, 1e-18);
    EXPECT_NEAR(*row.product[3], -4e-6, 1e-18);
    EXPECT_EQ(rows(has_proj() ? DraftKind::distance : DraftKind::scale_bar).size(), (size_t)1);
    const SolvedNetwork solved = solve_text(write_network(draft).text);
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_NEAR(geocentric_of(solved.point("BETA"), 0), -4000300.001, 1e-4);
    EXPECT_EQ(*solved.results().degrees_of_freedom, 1);
}

// Scalars along latitude, longitude and height: the covariance turned into north, east and up has them on its diagonal.
TEST_F(Dna, MultipliesVariancesAlongLatitudeLongitudeAndHeight)
{
    EXPECT_EQ(measures(columns({{1, "G ALFA"}, {23, "BETA"}, {63, "1.00"}, {73, "4.00"}, {83, "9.00"}, {93, "25.00"}}) +
                           component(-300, {"1e-06"}) + component(400, {"0", "1e-06"}) +
                           component(100, {"0", "0", "1e-06"}),
                       two_stations),
              Lines());
    const auto &p = rows(DraftKind::baseline)[0].product;
    const double c[3][3] = {{*p[0], *p[3], *p[4]}, {*p[3], *p[1], *p[5]}, {*p[4], *p[5], *p[2]}};
    const auto axes = local_axes(geodetic({-4000000, 2500000, -4300000}));
    const double expected[3] = {9e-6, 4e-6, 25e-6}; // east, north, up
    for (size_t i = 0; i < 3; i++)
        for (size_t j = 0; j < 3; j++) {
            double local = 0;
            for (size_t r = 0; r < 3; r++)
                for (size_t s = 0; s < 3; s++) local += axes[i][r] * c[r][s] * axes[j][s];
            EXPECT_NEAR(local, i == j ? expected[i] : 0.0, 1e-17) << i << j;
        }
}

// Two points of one cluster: the block between them stands as it is written, row by row.
TEST_F(Dna, TiesTheMembersOfAClusterByTheirCovariances)
{
    const std::string text =
        columns({{1, "Y ALFA"}, {23, "XYZ"}, {43, "2"}}) + component(-4000000, {"4e-06"}) +
        component(2500000, {"0", "5e-06"}) + component(-4300000, {"0", "0", "6e-06"}) +
        columns({{83, "1e-07"}, {103, "2e-07"}, {123, "3e-07"}}) + columns({{83, "0"}, {103, "0"}, {123, "4e-07"}}) +
        columns({{83, "0"}, {103, "0"}, {123, "0"}}) + columns({{1, "Y BETA"}}) + component(-4000300, {"7e-06"}) +
        component(2500400, {"0", "8e-06"}) + component(-4299900, {"0", "0", "9e-06"});
    EXPECT_EQ(measures(text, station("ALFA", "FFF", "LLH", "-42.0", "147.0", "10") +
                                 station("BETA", "", "LLH", "-42.0", "147.0", "10")),
              Lines());
    ASSERT_EQ(draft.covariances.size(), (size_t)1);
    const std::vector<double> expected = {4e-6, 0, 0, 1e-7, 2e-7, 3e-7, 5e-6, 0,    0, 0,   4e-7,
                                          6e-6, 0, 0, 0,    7e-6, 0,    0,    8e-6, 0, 9e-6};
    EXPECT_EQ(draft.covariances[0].elements, expected);
    EXPECT_EQ(rows(DraftKind::coordinates)[1].from, "BETA");
    EXPECT_EQ(measures(text.substr(0, text.size() / 2), two_stations).size(), (size_t)1);
}

TEST_F(Dna, AdjustsLevellingInHeights)
{
    EXPECT_EQ(measures(columns({{1, "L ALFA"}, {23, "BETA"}, {63, "1.2500"}, {91, "0.0020"}}) +
                           columns({{1, "H BETA"}, {63, "11.2530"}, {91, "0.0020"}}) +
                           columns({{1, "H*ALFA"}, {63, "99.9999"}, {91, "0.0020"}}),
                       station("ALFA", "FFC", "LLH", "-42.0", "147.0", "10.0") +
                           station("BETA", "FFF", "LLH", "-42.0", "147.0", "11.0")),
              Lines());
    EXPECT_EQ(draft.dimension, 1);
    const SolvedNetwork solved = solve_text(write_network(draft).text);
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_NEAR(*solved.point("BETA").adjusted[2], 11.2515, 1e-9);
    EXPECT_EQ(notes().back(), "net.msr: observations read 3 = taken 2 + left out 1");
}

// Version 1.00 has no header: the ending of the file tells what it is.
TEST_F(Dna, ReadsFilesWithoutAHeader)
{
    folder.write("net.stn", columns({{1, "ALFA"},
                                     {11, "CCC"},
                                     {15, "XYZ"},
                                     {18, "-4000000.0000"},
                                     {32, "2500000.0000"},
                                     {46, "-4300000.0000"}}) +
                                columns({{1, "BETA"},
                                         {11, "FFF"},
                                         {15, "XYZ"},
                                         {18, "-4000300.0000"},
                                         {32, "2500400.0000"},
                                         {46, "-4299900.0000"}}));
    EXPECT_EQ(import(columns({{1, "C ALFA"}, {13, "BETA"}, {33, "509.9020"}, {61, "0.0020"}}), "net.msr"), Lines());
    ASSERT_EQ(rows(DraftKind::scale_bar).size(), (size_t)1);
    EXPECT_EQ(*rows(DraftKind::scale_bar)[0].value[0], 509.902);
    EXPECT_EQ(*rows(DraftKind::scale_bar)[0].sigma[0], 0.002);
}

TEST_F(Dna, SaysWhatItLeavesOut)
{
    const std::string baseline = columns({{1, "G ALFA"}, {23, "BETA"}}) + component(-300, {"4e-06"}) +
                                 component(400, {"0", "4e-06"}) + component(100, {"0", "0", "4e-06"});
    EXPECT_EQ(measures(baseline + columns({{1, "I ALFA"}, {63, "-42.5"}, {91, "1"}}) +
                           columns({{1, "C*ALFA"}, {23, "BETA"}, {63, "509.9"}, {91, "0.01"}}),
                       two_stations),
              Lines());
    EXPECT_EQ(notes(),
              Lines({has_proj() ? "net.msr:6: measurement I of ALFA is left out: astronomic latitudes and longitudes "
                                  "tell the deflection of the vertical, which the file has not"
                                : "net.msr:6: measurement I of ALFA is left out: beside GNSS vectors its type needs a "
                                  "reference system, and the program was built without PROJ",
                     "net.msr:7: measurement C of ALFA to BETA is left out: it is marked as ignored",
                     "net.msr: observations read 5 = taken 3 + left out 2"}));
}

TEST_F(Dna, FindsAllFaultsInOnePass)
{
    const std::string baseline = columns({{1, "G ALFA"}, {23, "BETA"}}) + component(-300, {"4e-06"}) +
                                 component(400, {"0", "x"}) + component(100, {"0", "0", "4e-06"});
    EXPECT_EQ(
        measures(baseline + columns({{1, "W ALFA"}}) + columns({{1, "X ALFA"}, {23, "BETA"}}) +
                     columns({{1, "C ALFA"}, {23, "BETA"}, {63, "5"}}) + columns({{1, "G ALFA"}, {23, "BETA"}}),
                 two_stations),
        Lines({"net.msr:4:103: \"x\" is not a number for the covariance; write it in columns 103 to 122",
               "net.msr:6:1: type of measurement \"W\" is not known; write one of A B C D E G H I J K L M P Q R S V X "
               "Y Z in column 1",
               "net.msr:7:1: \"\" is not how many rows the record has; write their number",
               "net.msr:8:1: \"\" is not a number for the standard deviation; write it in columns 91 to 99",
               "net.msr:9:1: the file ends before the components of a record; complete the record"}));
    EXPECT_EQ(
        import(stations_head + two_stations, "only.stn"),
        Lines({"only.stn: the file holds no measurements; name the file of measurements, beside which its stations "
               "stand"}));
}

// Frames agree at 2020.0 and turn with the plate; a rotation about z takes x into y.
TEST_F(Dna, TurnsBaselinesWithThePlate)
{
    const auto none = frame_change("ITRF2014", "01.01.2020", "GDA2020");
    ASSERT_TRUE(none);
    EXPECT_EQ(none->rotation[0], 0.0);
    const auto year = frame_change("ITRF2014", "01.01.2019", "GDA2020");
    EXPECT_NEAR(year->rotation[2], -1.20716 / 1000 / 3600 * std::acos(-1.0) / 180, 1e-13);
    EXPECT_NEAR(frame_change("ITRF2008", "01.01.2020", "GDA2020")->scale, 2.5e-9, 1e-15);
    EXPECT_FALSE(frame_change("ITRF97", "01.01.2019", "GDA2020"));
    EXPECT_FALSE(frame_change("ITRF2014", "1.1.2019", "GDA2020"));
    const auto turned = changed({1000, 0, 0}, {1e-6, {0, 0, 2e-6}});
    EXPECT_NEAR(turned[0], 1000.001, 1e-12);
    EXPECT_NEAR(turned[1], -2e-3, 1e-12);
}

TEST_F(Dna, ReadsDynamlLikeTheColumns)
{
    if (!xml_available()) GTEST_SKIP() << "built without a parser of XML";
    const std::string text = R"(<DnaXmlFormat type="Combined File" referenceframe="GDA2020" epoch="01.01.2020">
<DnaStation><Name>ALFA</Name><Constraints>CCC</Constraints><Type>XYZ</Type><StationCoord><Name>ALFA</Name>
<XAxis>-4000000</XAxis><YAxis>2500000</YAxis><Height>-4300000</Height></StationCoord></DnaStation>
<DnaMeasurement><Type>X</Type><Ignore/><Vscale>1</Vscale><Total>2</Total>
<First>ALFA</First><Second>BETA</Second><GPSBaseline><X>-300</X><Y>400</Y><Z>100</Z><SigmaXX>4e-06</SigmaXX>
<SigmaXY>1e-06</SigmaXY><SigmaXZ>0</SigmaXZ><SigmaYY>5e-06</SigmaYY><SigmaYZ>0</SigmaYZ><SigmaZZ>6e-06</SigmaZZ>
<GPSCovariance><m11>1e-07</m11><m12>2e-07</m12><m13>0</m13><m21>0</m21><m22>0</m22><m23>0</m23><m31>0</m31><m32>0</m32>
<m33>3e-007</m33></GPSCovariance></GPSBaseline>
<First>ALFA</First><Second>GAMA</Second><GPSBaseline><X>300</X><Y>400</Y><Z>100</Z><SigmaXX>4e-06</SigmaXX>
<SigmaXY>0</SigmaXY><SigmaXZ>0</SigmaXZ><SigmaYY>5e-06</SigmaYY><SigmaYZ>0</SigmaYZ><SigmaZZ>6e-06</SigmaZZ></GPSBaseline>
</DnaMeasurement></DnaXmlFormat>)";
    EXPECT_EQ(import(text, "net.xml"), Lines());
    ASSERT_EQ(rows(DraftKind::baseline).size(), (size_t)2);
    EXPECT_EQ(rows(DraftKind::baseline)[1].to, "GAMA");
    const std::vector<double> expected = {4e-6, 1e-6, 0, 1e-7, 2e-7, 0, 5e-6, 0,    0, 0,   0,
                                          6e-6, 0,    0, 3e-7, 4e-6, 0, 0,    5e-6, 0, 6e-6};
    EXPECT_EQ(draft.covariances[0].elements, expected);
    EXPECT_TRUE(solve_text(write_network(draft).text).adjusted());
}

// The GNSS network of that program with its own results, where it is at hand.
TEST_F(Dna, MeetsTheResultsOfThatProgram)
{
    const std::string path = SOURCE_DIR "/../shared/data/import/dynadjust/";
    std::ifstream expected(path + "gnss.simult.adj.expected");
    if (!expected) GTEST_SKIP() << "no network at hand";
    Model model;
    Lines unused;
    Faults bad;
    ASSERT_TRUE(read_any_network(path + "gnss-network.msr", model, unused, bad));
    const SolvedNetwork solved = solve(model);
    ASSERT_TRUE(solved.adjusted());
    EXPECT_EQ(*solved.results().degrees_of_freedom, 288);
    EXPECT_NEAR(solved.results().variance_test->squares, 336.64, 0.02);
    std::string line;
    while (std::getline(expected, line) && line.compare(0, 20, "Adjusted Coordinates") != 0) continue;
    for (int i = 0; i < 4; i++) std::getline(expected, line);
    size_t count = 0;
    for (; std::getline(expected, line) && line.size() > 100; count++) {
        const PointResult &point = solved.point(line.substr(0, line.find(' ')));
        for (size_t axis = 0; axis < 3; axis++)
            EXPECT_NEAR(geocentric_of(point, axis), std::stod(line.substr(76 + 15 * axis, 15)), 1.0e-4) << point.name;
        if (!point.earth) continue;
        double latitude = 0, longitude = 0; // printed to 0.3 mm and 0.1 mm
        EXPECT_TRUE(read_packed(line.substr(26, 13), latitude));
        EXPECT_TRUE(read_packed(line.substr(41, 13), longitude));
        EXPECT_NEAR(point.earth->latitude, latitude, 5e-9) << point.name;
        EXPECT_NEAR(point.earth->longitude, longitude, 5e-9) << point.name;
        EXPECT_NEAR(*point.earth->height, std::stod(line.substr(66, 11)), 1.0e-4) << point.name;
    }
    EXPECT_EQ(count, (size_t)43);
}

// A chord is between marks, whatever heights stand beside it.
TEST_F(Dna, TakesChordsOfDynamlBetweenMarks)
{
    if (!xml_available()) GTEST_SKIP() << "built without a parser of XML";
    const std::string text = R"(<DnaXmlFormat type="Combined File" referenceframe="GDA2020" epoch="01.01.2020">
<DnaStation><Name>ALFA</Name><Constraints>CCC</Constraints><Type>XYZ</Type><StationCoord><Name>ALFA</Name>
<XAxis>-4000000</XAxis><YAxis>3000000</YAxis><Height>-4000000</Height></StationCoord></DnaStation>
<DnaStation><Name>BETA</Name><Constraints>CCC</Constraints><Type>XYZ</Type><StationCoord><Name>BETA</Name>
<XAxis>-4000300</XAxis><YAxis>3000400</YAxis><Height>-4000000</Height></StationCoord></DnaStation>
<DnaMeasurement><Type>C</Type><Ignore/><First>ALFA</First><Second>BETA</Second><Value>500.01</Value>
<StdDev>0.01</StdDev><InstHeight>1.5</InstHeight><TargHeight>1.6</TargHeight></DnaMeasurement></DnaXmlFormat>)";
    ASSERT_EQ(import(text, "chord.xml"), Lines());
    ASSERT_EQ(rows(DraftKind::scale_bar).size(), (size_t)1);
    EXPECT_FALSE(rows(DraftKind::scale_bar)[0].h1.has_value());
    EXPECT_FALSE(rows(DraftKind::scale_bar)[0].h2.has_value());
}
