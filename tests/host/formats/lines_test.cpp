// Texts of coded lines as drafts, and the networks that they make adjusted.

#include <cmath>

#include "host/formats/geocentric.h"
#include "host/own/own_run.h"
#include "imported.h"

using namespace vornhost;

namespace {

class CodedLines : public Formats {
protected:
    void SetUp() override {}
    Lines lines(const std::string &text) { return import(text, "net.dat"); }

    const DraftRow &only(DraftKind kind)
    {
        EXPECT_EQ(rows(kind).size(), (size_t)1);
        static const DraftRow none;
        return rows(kind).size() == 1 ? rows(kind)[0] : none;
    }
    const DraftPoint &point(const std::string &name) const
    {
        for (const DraftPoint &p : draft.points)
            if (p.name == name) return p;
        ADD_FAILURE() << "no point " << name;
        static const DraftPoint none;
        return none;
    }
};

const std::string metres = ".UNITS Meters DMS\n";

} // namespace

TEST_F(CodedLines, TakesAPolarMeasureInSpaceWithHeightsAndDescription)
{
    EXPECT_EQ(lines(metres + ".3D\nM A-B-C 60-21-42 85.443 90-30-11 3 0.002 5 1.55/1.30 'corner # not this\n"),
              Lines());
    const DraftRow &angle = only(DraftKind::angle);
    EXPECT_EQ(angle.at + angle.from + angle.to, "ABC");
    EXPECT_NEAR(*angle.value[0], 60.0 + 21.0 / 60 + 42.0 / 3600, 1e-13);
    EXPECT_EQ(*angle.sigma[0], 3.0);
    EXPECT_EQ(angle.id, "corner");
    EXPECT_EQ(angle.where.line, 3);
    const DraftRow &distance = only(DraftKind::distance);
    EXPECT_EQ(distance.from + distance.to, "AC");
    EXPECT_EQ(*distance.h1, 1.55);
    EXPECT_EQ(*distance.h2, 1.3);
    EXPECT_EQ(*distance.sigma[0], 0.002);
    EXPECT_NEAR(*only(DraftKind::vertical_angle).value[0], 90.0 + 30.0 / 60 + 11.0 / 3600, 1e-13);
    EXPECT_EQ(draft.dimension, 3);
    EXPECT_TRUE(point("A").station);
    EXPECT_FALSE(point("C").station);
}

TEST_F(CodedLines, HoldsWeightsAndFreesCoordinatesInTheOrderOfTheText)
{
    EXPECT_EQ(lines(metres + ".3D\n.ORDER EN\nC A 160 250 12 0.01 ! *\nL A-B 1 100 0.001\nD A-B 5 0.01\nV A-B 90 5\n"),
              Lines());
    const DraftPoint &a = point("A");
    EXPECT_EQ(*a.value[0], 250.0);
    EXPECT_EQ(*a.value[1], 160.0);
    EXPECT_EQ(a.code[0], CODE_FIXED);
    EXPECT_EQ(a.code[1], CODE_WEIGHTED);
    EXPECT_EQ(*a.sigma[1], 0.01);
    EXPECT_FALSE(a.sigma[0]);
    EXPECT_EQ(a.code[2], CODE_FREE);
    EXPECT_EQ(*only(DraftKind::height_difference).length, 100.0);
}

TEST_F(CodedLines, ReadsNamesFromAtToAndAnglesInGon)
{
    EXPECT_EQ(lines(".UNITS Meters GONS\n.2D\n.ORDER FromAtTo\nA B-A-C 66.6667 1\n"), Lines());
    const DraftRow &angle = only(DraftKind::angle);
    EXPECT_EQ(angle.at + angle.from + angle.to, "ABC");
    EXPECT_EQ(*angle.value[0], 66.6667);
    EXPECT_EQ(draft.units.angle, "gon");
    EXPECT_EQ(draft.units.sigma_angle, "mgon");
}

TEST_F(CodedLines, TurnsMixedUnitsIntoMetresAndGon)
{
    EXPECT_EQ(lines(".UNITS FeetUS DMS\n.2D\nD A-B 3937 0.1\nA B-A-C 90 3.24\n.UNITS Meters GONS\nD B-C 100 0.01\n"),
              Lines());
    EXPECT_NEAR(*rows(DraftKind::distance)[0].value[0], 1200.0, 1e-10);
    EXPECT_NEAR(*rows(DraftKind::distance)[0].sigma[0], 120.0 / 3937.0, 1e-15);
    EXPECT_EQ(*rows(DraftKind::distance)[1].value[0], 100.0);
    EXPECT_NEAR(*only(DraftKind::angle).value[0], 100.0, 1e-12);
    EXPECT_NEAR(*only(DraftKind::angle).sigma[0], 1.0, 1e-12);
}

TEST_F(CodedLines, KeepsFeetAndMultipliesLengths)
{
    EXPECT_EQ(lines(".UNITS FeetInt DMS\n.2D\n.MULT 2\nD A-B 10 0.1\n.MULT\nD B-C 10 0.1\n"), Lines());
    EXPECT_EQ(draft.units.length, "ft");
    EXPECT_EQ(*rows(DraftKind::distance)[0].value[0], 20.0);
    EXPECT_EQ(*rows(DraftKind::distance)[0].sigma[0], 0.2);
    EXPECT_EQ(*rows(DraftKind::distance)[1].value[0], 10.0);
}

TEST_F(CodedLines, ReadsBearingsByQuadrantAndZenithsOfTheSecondFace)
{
    EXPECT_EQ(lines(metres + ".3D\nB A-B N34-30E 5\nB A-B S10-00W 5\nB A-B N90W 5\nB A-B S30E 5\nV A-B 269-30-00 5\n"),
              Lines());
    const double expected[] = {34.5, 190.0, 270.0, 150.0};
    ASSERT_EQ(rows(DraftKind::azimuth).size(), (size_t)4);
    for (size_t i = 0; i < 4; i++) EXPECT_NEAR(*rows(DraftKind::azimuth)[i].value[0], expected[i], 1e-12) << i;
    EXPECT_NEAR(*only(DraftKind::vertical_angle).value[0], 90.5, 1e-12);
}

TEST_F(CodedLines, HoldsFixedObservationsAndLeavesFreeOnesOutOfTheAdjustment)
{
    EXPECT_EQ(lines(metres + ".2D\nD A-B 100 !\nD B-C 50 0.01\nA B-A-C 90 5\n"), Lines());
    EXPECT_EQ(*rows(DraftKind::distance)[0].sigma[0], 1e-5);
    EXPECT_EQ(notes()[0], "net.dat: 1 observations are fixed: they take the standard deviations 0.00001 m and "
                          "0.01 arc seconds");
    EXPECT_EQ(lines(metres + ".2D\nD A-B 100 0.01\nD B-C 50 0.01\nA B-A-C 90 ?\n").size(), (size_t)1);
}

TEST_F(CodedLines, NumbersTheSetsOfAStationAndKeepsOneSetPlain)
{
    const std::string text = metres + ".2D\nDB A\nDN B 0 3\nDM C 60-00-00 50 3 0.002\nDE\n";
    EXPECT_EQ(lines(text), Lines());
    EXPECT_EQ(rows(DraftKind::direction)[1].setup, "");
    EXPECT_EQ(lines(text + "DB A\nDN B 10-00 3\nDN C 70-00 3\nDE\n"), Lines());
    EXPECT_EQ(rows(DraftKind::direction)[0].setup, "1");
    EXPECT_EQ(rows(DraftKind::direction)[3].setup, "2");
    EXPECT_EQ(only(DraftKind::distance).setup, "1");
}

TEST_F(CodedLines, ReadsHorizontalDistancesAndHeightDifferencesWithDelta)
{
    EXPECT_EQ(lines(metres + ".3D\n.DELTA ON\nDV A-B 30.5 -1.25 0.002 0.003\n"), Lines());
    EXPECT_EQ(*only(DraftKind::horizontal_distance).value[0], 30.5);
    EXPECT_EQ(*only(DraftKind::height_difference).value[0], -1.25);
    EXPECT_EQ(*only(DraftKind::height_difference).sigma[0], 0.003);
}

// A square of 100 m, walked from 1 over 2 and 3 to 4, with the angles to the right that a square has.
TEST_F(CodedLines, AdjustsATraverse)
{
    EXPECT_EQ(lines(metres + ".2D\nC 1 0 0 ! !\nC 4 0 100 ! !\nTB 4\nT 1 270 100 3 0.001\nT 2 270 100 3 0.001\n"
                             "T 3 270 100 3 0.001\nTE 4 270 1 3\n"),
              Lines());
    ASSERT_EQ(rows(DraftKind::angle).size(), (size_t)4);
    EXPECT_EQ(rows(DraftKind::angle)[3].at + rows(DraftKind::angle)[3].from + rows(DraftKind::angle)[3].to, "431");
    const SolvedNetwork solved = solve_text(write_network(draft).text);
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_NEAR(*solved.point("2").adjusted[0], 100.0, 1e-7);
    EXPECT_NEAR(*solved.point("2").adjusted[1], 0.0, 1e-7);
    EXPECT_NEAR(*solved.point("3").adjusted[0], 100.0, 1e-7);
    EXPECT_NEAR(*solved.point("3").adjusted[1], 100.0, 1e-7);
    EXPECT_EQ(*solved.results().degrees_of_freedom, 3);
}

TEST_F(CodedLines, BeginsATraverseWithABearing)
{
    EXPECT_EQ(lines(metres + ".2D\nC 1 0 0 ! !\nTB N90E\nT 1 270 100 3 0.001\nTE 2\n"), Lines());
    EXPECT_NEAR(*only(DraftKind::azimuth).value[0], 0.0, 1e-12);
}

// A vector from a place on the equator to one a degree further north.
TEST_F(CodedLines, TakesVectorsBetweenGeodeticPositions)
{
    const double degree = std::acos(-1.0) / 180.0;
    const auto a = geocentric({0, 0, 100}), b = geocentric({degree, 0, 100});
    const std::string d = std::to_string(b[0] - a[0]) + " 0 " + std::to_string(b[2] - a[2]);
    EXPECT_EQ(lines(".UNITS Meters DMS\nPH A 0-00-00 0-00-00 100 ! ! !\nG0 'one\nG1 A-B " + d +
                    "\nG2 4e-6 5e-6 6e-6\nG3 1e-6 -1e-6 2e-6\n"),
              Lines());
    const DraftRow &row = only(DraftKind::baseline);
    EXPECT_EQ(*row.product[1], 5e-6);
    EXPECT_EQ(*row.product[4], -1e-6);
    const SolvedNetwork solved = solve_text(write_network(draft).text);
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    for (int axis = 0; axis < 3; axis++) EXPECT_NEAR(*solved.point("B").adjusted[axis], b[(size_t)axis], 2e-5) << axis;
}

TEST_F(CodedLines, MakesVariancesOfStandardDeviationsAndCorrelationsOfVectors)
{
    EXPECT_EQ(
        lines(".GPS WEIGHT StdErrCorrelation\n.GPS FACTOR 2\nG1 A-B 1 2 3\nG2 0.002 0.003 0.004\nG3 0.5 0 -0.5\n"),
        Lines());
    const DraftRow &row = only(DraftKind::baseline);
    EXPECT_NEAR(*row.product[0], 16e-6, 1e-18);
    EXPECT_NEAR(*row.product[3], 4 * 0.5 * 0.002 * 0.003, 1e-18);
    EXPECT_NEAR(*row.product[5], 4 * -0.5 * 0.003 * 0.004, 1e-18);
}

TEST_F(CodedLines, CountsWhatIsTakenAndLeftOut)
{
    EXPECT_EQ(
        lines(metres + ".2D\nD A-B 5 0.1\nSS A-B-C 10 5\n.DATA OFF\nD A-B 6 0.1\n.DATA ON\nD A-B 5 0.1\n.END\nQ\n"),
        Lines());
    EXPECT_EQ(notes(), Lines({"net.dat:4: side shot A-B-C is left out: it is computed after the adjustment; write M to "
                              "let it take part",
                              "net.dat:6: line \"D\" is left out: it stands behind .DATA OFF",
                              "net.dat:10: line \"Q\" is left out: it stands behind .END",
                              "net.dat: observations read 5 = taken 2 + left out 3"}));
}

TEST_F(CodedLines, FindsAllFaultsInOnePass)
{
    EXPECT_EQ(
        lines(metres +
              ".2D\nA 1-2 45 3\nA 1-2-5 45.25 3\nQ 1\nD 1-2 5 1 2\nV 1-2 90 5\n.WHAT\n.MAPMODE ON\nD 1-2 -5 1\n"
              "D 1-1 5 1\nDN 3 4\n"),
        Lines({"net.dat:3:3: \"1-2\" is not 3 names joined by -; write three, like A-B-C; names themselves have no -",
               "net.dat:4:9: \"45.25\" can be decimal degrees, or degrees, minutes and seconds; write it like "
               "60-21-42.5",
               "net.dat:5:1: code \"Q\" is not known; write one of C E A M D V DV B BM DB DN DM DE L TB T TE SS G0 "
               "G1 G2 G3",
               "net.dat:6:11: 2 items stand behind 1 values; write a standard deviation for each, or for none, and "
               "heights like 1.55/1.30",
               "net.dat:7:1: line \"V\" belongs to three dimensions; write .3D before it",
               "net.dat:8:1: option \".WHAT\" is not known; what it changes is not known either: write the lines "
               "behind it without it",
               "net.dat:9:1: .MAPMODE ON: lines with bearings in place of angles are not taken over; write the legs "
               "of the traverse as BM lines",
               "net.dat:10:1: a distance is not above 0; write ? for one that was not measured",
               "net.dat:11:3: point \"1\" stands twice here; name different points",
               "net.dat:12:1: a direction stands outside of a set; write DB with the station before it"}));
}

TEST_F(CodedLines, AsksForStandardDeviationsThatNothingGives)
{
    EXPECT_EQ(lines(metres + ".2D\nA B-A-C 90\nA B-A-C 91\nD A-B 5 0.1\n"),
              Lines({"net.dat:3:1: angle without a standard deviation, and 1 more behind it; write it in the file, or "
                     "state it with --sigma angles=VALUE"}));
}

TEST_F(CodedLines, TakesStandardDeviationsThatTheUserStates)
{
    ImportOptions options;
    options.sigma = {
        {"angles", 3.0}, {"azimuths", 4.0}, {"distances", 2.0}, {"distances_ppm", 5.0}, {"centring_target", 1.0}};
    EXPECT_EQ(import(".UNITS FeetUS DMS\n.2D\nA B-A-C 90\nB A-B 90 7\nB A-C 10\nD A-B 1000\n", "net.dat", options),
              Lines());
    const double foot = 1200.0 / 3937.0;
    EXPECT_EQ(*only(DraftKind::angle).sigma[0], 3.0);
    EXPECT_EQ(*rows(DraftKind::azimuth)[0].sigma[0], 7.0);
    EXPECT_EQ(*rows(DraftKind::azimuth)[1].sigma[0], 4.0);
    EXPECT_NEAR(*only(DraftKind::distance).sigma[0], (0.002 + 5e-6 * 1000 * foot) / foot, 1e-9);
    ASSERT_EQ(draft.sigma.size(), (size_t)1);
    EXPECT_EQ(draft.sigma[0].first, "centring_target");
    EXPECT_NEAR(draft.sigma[0].second, 0.001 / foot, 1e-12);
}

// Bytes that are not UTF-8 are Latin-1, as in field books.
TEST_F(CodedLines, ReadsNamesAndCommentsOfOtherEncodings)
{
    EXPECT_EQ(lines(metres + ".2D\n# 5\xB0\nC P\xE9 0 0 ! !\nC B 10 0 ! !\nD P\xE9-C 5 0.01\nD B-C 6 0.01\n"), Lines());
    EXPECT_EQ(draft.points[0].name, "P\xC3\xA9");
}

TEST_F(CodedLines, NamesPointsThatComeAgainAndTheMeaningOfLengths)
{
    EXPECT_EQ(lines(metres + ".3D\nC A 0 0 0 ! ! !\nC A 1 1 1 ! ! !\nL A-B 1.5 20 0.001\nL A-B 1.5 20 0.001\n"),
              Lines());
    EXPECT_EQ(*point("A").value[2], 1.0);
    const Lines said = notes();
    ASSERT_EQ(said.size(), (size_t)3);
    EXPECT_EQ(said[0], "net.dat:4: point \"A\" has coordinates in line 3 too: these go before them");
    EXPECT_EQ(said[1],
              "net.dat:5: the third item of L is taken for the length of the line, not for a number of set-ups");
}

// What only unused observations reach would be undetermined.
TEST_F(CodedLines, LeavesPointsOffThatOnlyUnusedObservationsReach)
{
    EXPECT_EQ(lines(metres + ".2D\nC A 0 0 ! !\nC B 9 0 ! !\nC Q 5 5\nD A-P 5 0.1\nD B-P 6 0.1\nA Q-A-B 20-00-00 *\n"),
              Lines());
    EXPECT_TRUE(point("Q").off);
    EXPECT_FALSE(point("P").off);
    EXPECT_EQ(rows(DraftKind::angle).size(), (size_t)1);
}

TEST_F(CodedLines, AssumesTheLayoutThatThePointsShow)
{
    EXPECT_EQ(lines("C A 1 2 3\nD A-B 5 0.1\n"), Lines());
    EXPECT_EQ(notes()[1], "net.dat:1: no .2D or .3D before this line: 3D is assumed from the points");
    EXPECT_EQ(rows(DraftKind::distance).size(), (size_t)1);
    EXPECT_EQ(draft.dimension, 3);
}
