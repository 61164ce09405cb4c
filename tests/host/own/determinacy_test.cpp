// What is determined and what is not: geometry that counting and pivots alone judge wrongly.

#include <cmath>

#include "host/own/own_run.h"

using namespace vornhost;

namespace {

bool contains(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

std::string plane(const std::string &targets, const std::string &distances)
{
    return "[run]\ndimension = 2\n[tables]\ntargets = '''\nname x y code sx sy\n" + targets +
           "'''\ndistances = '''\nfrom to value sigma\n" + distances + "'''\n";
}

// Two heights of instrument apart: a square with a point beside it, all sights between marks, by directions, distances
// and height differences; coordinates off by `off`.
std::string national(double x, double y)
{
    const auto at = [](double a) {
        char text[40];
        std::snprintf(text, sizeof text, "%.6f", a);
        return std::string(text);
    };
    const auto point = [&](const char *name, double px, double py, const char *code) {
        return std::string(name) + " " + at(x + px) + " " + at(y + py) + " " + code + "\n";
    };
    return "[run]\ndimension = 2\n[tables]\nstations = '''\nname x y code\n" + point("A", 0, 0, "fixed") +
           point("B", 1, 0, "fixed") + point("C", 1.1, 0.9, "free") + point("D", 0, 1, "free") +
           "'''\ndistances = '''\nfrom to value sigma\nA C 1.4213 0.001\nB D 1.4143 0.001\nC D 1.1040 0.001\n'''\n"
           "directions = '''\nfrom to value sigma\nA B 0 0.0003\nA C 43.5999 0.0003\nA D 100.0002 0.0003\n"
           "B A 200 0.0003\nB C 92.9565 0.0003\nB D 150.0011 0.0003\nC A 243.6 0.0003\nC D 194.2295 0.0003\n"
           "D A 300 0.0003\nD C 394.2287 0.0003\nD B 350.0004 0.0003\n'''\n";
}

} // namespace

// P starts in line with A, B and C, where no distance tells where it is across the line. The distances are too long
// for a straight line, so that the iteration leaves it, to one of two places that nothing tells apart.
TEST(Determinacy, IsJudgedAtTheFirstCoordinatesToo)
{
    const std::string text = plane("A 0 0 fixed - -\nB 100 0 fixed - -\nC 200 0 fixed - -\nP 50 0 free - -\n",
                                   "A P 50.01 0.001\nB P 50.01 0.001\nC P 150.002 0.001\n");
    for (const SolvedNetwork &solved : {solve_text(text), check_text(text)}) {
        EXPECT_EQ(solved.code(), "adjustment: undetermined");
        EXPECT_TRUE(contains(solved.words(), "P can move along y: its 3 distances leave this open")) << solved.words();
    }
}

// P starts 1 m beside the line, where its distances determine it, and ends on the line.
TEST(Determinacy, IsJudgedAtTheLastCoordinates)
{
    const SolvedNetwork solved =
        solve_text("[run]\ndimension = 2\niterations = 200\n[tables]\nstations = '''\nname x y code\n"
                   "A 0 0 fixed\nB 100 0 fixed\nP 250 1 free\n'''\ndirections = '''\nfrom to value sigma\n"
                   "A B 0 0.001\nA P 0 0.001\nB A 200 0.001\nB P 0 0.001\n'''\n");
    EXPECT_FALSE(solved.adjusted());
    EXPECT_TRUE(contains(solved.words(), "P can move along x")) << solved.words();
}

// Directions and an azimuth tell nothing of the height of P but by the curvature of the earth, which tells it to a
// kilometre.
TEST(Determinacy, DoesNotRestOnTheCurvatureOfTheEarth)
{
    const SolvedNetwork solved = solve_text(
        "[run]\ndimension = 3\n[earth]\nmodel = 'cartesian'\n[tables]\nstations = '''\nname x y z code code_z\n"
        "A -40000 0 -120 fixed fixed\nB 40000 10000 -130 fixed fixed\nP 20000 60000 -300 free free\n'''\n"
        "directions = '''\nfrom to value sigma\nA B 0 0.001\nA P 42.091 0.001\nB A 0 0.001\nB P 318.2 0.001\n"
        "P A 0 0.001\nP B 60.1 0.001\n'''\n");
    EXPECT_EQ(solved.code(), "adjustment: undetermined");
    EXPECT_EQ(solved.words(),
              "height of P is not determined: one height difference, vertical angle or fixed height would do\n");
}

// Weighted points stay, however many others move against them.
TEST(Determinacy, LetsTheWeightedPointRest)
{
    const SolvedNetwork solved =
        solve_text(plane("A 0 0 weighted 0.01 0.01\nB 100 0 free - -\nC 100 80 free - -\nD 180 30 free - -\n",
                         "A B 100 0.001\nB C 80 0.001\nC D 94.34 0.001\nB D 85.44 0.001\n") +
                   "azimuths = '''\nfrom to value sigma\nB C 100 0.001\n'''\n");
    EXPECT_EQ(solved.words(), "B, C, D can be shifted along y: another observation between them and the others would "
                              "do\n");
}

TEST(Determinacy, NamesPointsWhereNoneHasCodeFree)
{
    const SolvedNetwork solved = solve_text("[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 1 no_datum\n"
                                            "B 2 no_datum\n'''\nheight_differences = '''\nfrom to value sigma\n"
                                            "A B 1 0.001\n'''\n");
    EXPECT_EQ(
        solved.words(),
        "the network can be shifted in height: no point has code free to hold this; code free for A, B would do\n");
}

// In a grid whose coordinates have a resolution of 1 nm, sights of 1 m end as they do at the origin.
TEST(Determinacy, LosesNoDigitsInANationalGrid)
{
    const SolvedNetwork near = solve_text(national(0, 0)), far = solve_text(national(5399980, 4319984));
    ASSERT_TRUE(near.adjusted()) << near.words();
    ASSERT_TRUE(far.adjusted()) << far.words();
    EXPECT_EQ(far.results().iterations, near.results().iterations);
    EXPECT_NEAR(*far.results().sigma_aposteriori, *near.results().sigma_aposteriori, 1e-9);
    for (const char *name : {"C", "D"}) {
        EXPECT_NEAR(*far.point(name).adjusted[0] - 5399980, *near.point(name).adjusted[0], 2e-9);
        EXPECT_NEAR(*far.point(name).adjusted[1] - 4319984, *near.point(name).adjusted[1], 2e-9);
        EXPECT_NEAR(*far.point(name).deviation[0] / *near.point(name).deviation[0], 1, 1e-8);
    }
}

// P, 1 cm beside the line from A to B, has a place across it; its distances tell it to 2.5 m / 0.01 times their own
// standard deviation.
TEST(Determinacy, TellsPointsThatAreHardlyPlaced)
{
    const std::string text =
        plane("A 0 0 fixed - -\nB 5 0 fixed - -\nP 2.5 0.01 free - -\n", "A P 2.50002 0.004\nB P 2.50002 0.004\n");
    const SolvedNetwork solved = solve_text(text);
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_NEAR(*solved.point("P").deviation[1], std::sqrt(0.5) * 0.004 * 2.5 / 0.01, 0.01);
    const Lines &notes = solved.results().notes;
    EXPECT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes.front(), "hardly determined, with standard deviations beyond a tenth of the network: P");
}

// P stands on the circle through the three points that it sights, but for the digits of the file.
TEST(Determinacy, NamesWhatIsHardlyDeterminedWhereThereIsNoEnd)
{
    const SolvedNetwork solved = solve_text(
        "[run]\ndimension = 2\n[tables]\nstations = '''\nname x y code\nP 17.364818 -98.480775 free\n'''\n"
        "targets = '''\nname x y code\nA 98.480775 17.364818 fixed\nB 50 86.602540 fixed\n"
        "C -76.604444 64.278761 fixed\nD -93.969262 -34.202014 fixed\n'''\ndirections = '''\nfrom to value sigma\n"
        "P A 0.0004 0.0005\nP B 27.7775 0.0005\nP C 72.2225 0.0005\nP D 105.5551 0.0005\n'''\n");
    EXPECT_FALSE(solved.adjusted());
    EXPECT_TRUE(contains(solved.words(), "of P")) << solved.words();
}

// The last levelled difference is a metre off: sigma is 250, but P is where the others tell.
TEST(Determinacy, IsNotJudgedByAGrossError)
{
    const SolvedNetwork solved = solve_text(
        "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 0 fixed\nB 0.5 fixed\nP 0.1 free\n'''\n"
        "height_differences = '''\nfrom to value sigma\nA P 0.1 0.001\nA P 0.1001 0.001\nB P -0.4 0.001\nB P 0.6 "
        "0.001\n'''\n");
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_GT(*solved.point("P").deviation[2], 0.2);
    EXPECT_TRUE(solved.results().notes.empty()) << solved.results().notes.front();
}
