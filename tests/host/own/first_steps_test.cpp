// What comes before the numbers: rounds of directions under several zeros, and first coordinates by local frames.

#include <cmath>

#include "host/own/own_run.h"

namespace {

// A station at 0, 0 that sees A along x, B along y, C between them; `second` are its readings of a second round.
std::string two_rounds(const std::string &second)
{
    return "[run]\ndimension = 2\n[tables]\nstations = '''\nname x y code\nS 0 0 fixed\n'''\ntargets = '''\n"
           "name x y code\nA 100 0 fixed\nB 0 100 fixed\nC 100 100 fixed\n'''\ndirections = '''\nfrom to value sigma\n"
           "S A 10 0.001\nS B 110 0.001\nS C 60 0.001\n" +
           second + "'''\n";
}

bool contains(const Lines &lines, const std::string &text)
{
    for (const std::string &line : lines)
        if (line.find(text) != std::string::npos) return true;
    return false;
}

} // namespace

// Six directions: with one orientation 5 are redundant, with two 4.
TEST(OwnRounds, GetAnOrientationOfTheirOwnUnderAnotherZero)
{
    const SolvedNetwork s = solve_text(two_rounds("S A 210.0004 0.001\nS B 310.0001 0.001\nS C 260 0.001\n"));
    ASSERT_TRUE(s.adjusted()) << s.words();
    EXPECT_EQ(s.results().degrees_of_freedom, 4);
    EXPECT_EQ(s.results().orientations.size(), 2u);
    EXPECT_TRUE(contains(s.messages, "net.inp:19: station S reads its targets again 199.9996 gon apart"));
}

TEST(OwnRounds, HaveTheZeroOnWhichTwoThirdsOfTheirReadingsAgree)
{
    const SolvedNetwork s = solve_text(two_rounds("S A 210.0004 0.001\nS B 315.0001 0.001\nS C 260 0.001\n"));
    ASSERT_TRUE(s.adjusted()) << s.words();
    EXPECT_EQ(s.results().orientations.size(), 2u);
    ASSERT_FALSE(s.results().suspicious.empty());
    EXPECT_EQ(s.results().residuals[s.results().suspicious[0]].to, "B");
}

TEST(OwnRounds, OfMoreThanTwoZerosAreToldApart)
{
    std::string rows;
    for (const int zero : {200, 50, 200, 300})
        for (const auto &[target, reading] : {std::pair{"A", 10.0}, {"B", 110.0}, {"C", 60.0}})
            rows += std::string("S ") + target + " " + std::to_string(std::fmod(reading + zero, 400.0)) + " 0.001\n";
    const SolvedNetwork s = solve_text(two_rounds(rows));
    ASSERT_TRUE(s.adjusted()) << s.words();
    EXPECT_EQ(s.results().orientations.size(), 4u); // 0, 200, 50, 300
}

TEST(OwnRounds, StayTogetherUnderOneZero)
{
    const SolvedNetwork s = solve_text(two_rounds("S A 10.0004 0.001\nS B 110.0001 0.001\nS C 60 0.001\n"));
    ASSERT_TRUE(s.adjusted()) << s.words();
    EXPECT_EQ(s.results().degrees_of_freedom, 5);
}

TEST(OwnRounds, AreNotMadeOfOneWrongReading)
{
    const SolvedNetwork s = solve_text(two_rounds("S A 10.0004 0.001\nS B 111.0001 0.001\nS C 60 0.001\n"));
    ASSERT_TRUE(s.adjusted()) << s.words();
    EXPECT_EQ(s.results().degrees_of_freedom, 5);
    ASSERT_FALSE(s.results().suspicious.empty());
    EXPECT_EQ(s.results().residuals[s.results().suspicious.front()].to, "B");
}

// A and B do not see each other. T1 stands at 100, 40 and T2 at 220, 60; readings from zeros of their own.
TEST(OwnFirstCoordinates, ComeFromALocalFrameMovedOntoTheKnownPoints)
{
    const double pi = 4.0 * std::atan(1.0);
    const double x[4][2] = {{0, 0}, {300, 0}, {100, 40}, {220, 60}};
    const char *const names[4] = {"A", "B", "T1", "T2"};
    const int sights[4][2] = {{2, 0}, {2, 3}, {3, 2}, {3, 1}};
    std::string directions, distances;
    for (const auto &[p, q] : sights) {
        const double dx = x[q][0] - x[p][0], dy = x[q][1] - x[p][1];
        const std::string ends = std::string(names[p]) + " " + names[q] + " ";
        const double reading = std::fmod(std::atan2(dy, dx) * 200 / pi + (p == 2 ? 417 : 533), 400);
        directions += ends + std::to_string(reading) + " 0.001\n";
        distances += ends + std::to_string(std::hypot(dx, dy)) + " 0.01\n";
    }
    const SolvedNetwork s =
        solve_text("[run]\ndimension = 2\n[tables]\nstations = '''\nname x y code\nT1 - - free\n"
                   "T2 - - free\n'''\ntargets = '''\nname x y code\nA 0 0 fixed\nB 300 0 fixed\n"
                   "'''\ndirections = '''\nfrom to value sigma\n" +
                   directions + "'''\ndistances = '''\nfrom to value sigma\n" + distances + "'''\n");
    ASSERT_TRUE(s.adjusted()) << s.words();
    EXPECT_NEAR(*s.point("T1").approximate[0], 100, 0.01);
    EXPECT_NEAR(*s.point("T1").adjusted[1], 40, 1e-4); // readings of 6 decimals
    EXPECT_NEAR(*s.point("T2").adjusted[0], 220, 1e-4);
}

namespace {

// Directions and distances of a plane network between places, from zeros of their own; one reading is `wrong` gon off.
std::string polar_sights(const std::vector<std::pair<std::string, std::pair<double, double>>> &places,
                         const std::vector<std::pair<int, int>> &sights, int spoilt, double wrong)
{
    const double pi = 4.0 * std::atan(1.0);
    std::string directions, distances;
    for (size_t i = 0; i < sights.size(); i++) {
        const auto &[from, a] = places[(size_t)sights[i].first];
        const auto &[to, b] = places[(size_t)sights[i].second];
        const double dx = b.first - a.first, dy = b.second - a.second;
        const double zero = 17.0 * sights[i].first + ((int)i == spoilt ? wrong : 0.0);
        const double reading = std::fmod(std::atan2(dy, dx) * 200 / pi + 800 + zero, 400);
        directions += from + " " + to + " " + std::to_string(reading) + " 0.001\n";
        distances += from + " " + to + " " + std::to_string(std::hypot(dx, dy)) + " 0.002\n";
    }
    return "directions = '''\nfrom to value sigma\n" + directions + "'''\ndistances = '''\nfrom to value sigma\n" +
           distances + "'''\n";
}

} // namespace

// A and B do not see each other; every station sees the other ones. S1 reads T 5 gon wrong.
TEST(OwnFirstCoordinates, NameTheSightThatDoesNotFit)
{
    const std::string sights = polar_sights(
        {{"A", {0, 0}}, {"B", {200, 0}}, {"S1", {40, 60}}, {"S2", {110, 70}}, {"S3", {160, 40}}, {"T", {100, 150}}},
        {{2, 0}, {2, 3}, {2, 4}, {2, 5}, {3, 2}, {3, 4}, {3, 5}, {3, 0}, {4, 1}, {4, 2}, {4, 3}, {4, 5}}, 3, 5.0);
    const SolvedNetwork s = solve_text("[run]\ndimension = 2\n[tables]\nstations = '''\nname x y code\nS1 - - free\n"
                                       "S2 - - free\nS3 - - free\n'''\ntargets = '''\nname x y code\nA 0 0 fixed\n"
                                       "B 200 0 fixed\nT - - free\n'''\n" +
                                       sights);
    ASSERT_TRUE(s.adjusted()) << s.words();
    EXPECT_TRUE(contains(s.messages, "net.inp:21: direction S1 to T does not fit the others"));
    EXPECT_NEAR(*s.point("T").approximate[0], 100, 0.05);
    EXPECT_NEAR(*s.point("T").approximate[1], 150, 0.05);
    int named = 0;
    for (const std::string &line : s.messages) named += line.find("does not fit the others") != std::string::npos;
    EXPECT_EQ(named, 1);
}

// 60 m from A and 80 m from B: on either side of the line between them.
TEST(OwnFirstCoordinates, RefuseAPointThatFitsInTwoPlaces)
{
    const SolvedNetwork s = solve_text(
        "[run]\ndimension = 2\n[tables]\ntargets = '''\nname x y code\nA 0 0 fixed\nB 100 0 fixed\nP - - free\n"
        "'''\ndistances = '''\nfrom to value sigma\nA P 60 0.01\nB P 80 0.01\n'''\n");
    EXPECT_FALSE(s.adjusted());
    EXPECT_NE(s.words().find("P fits in two places, 96.000 m apart"), std::string::npos) << s.words();
}

// Three lengths put P 19.6 m above the plane of A, B and C, or as much below it.
TEST(OwnFirstCoordinates, RefuseAPointThatFitsAtTwoHeights)
{
    const std::string head = "[run]\ndimension = 3\n[tables]\ntargets = '''\nname x y z code\nA 0 0 100 fixed\n"
                             "B 100 0 101 fixed\nC 0 100 100 fixed\nP ";
    const std::string tail = " free\n'''\ndistances = '''\nfrom to value sigma\nA P 53.851648 0.001\n"
                             "B P 69.720872 0.001\nC P 83.066239 0.001\n'''\n";
    const SolvedNetwork s = solve_text(head + "- - -" + tail);
    EXPECT_FALSE(s.adjusted());
    EXPECT_NE(s.words().find("P fits at two heights, 39.196 m apart: at "), std::string::npos) << s.words();
    EXPECT_NE(s.words().find("120.000"), std::string::npos) << s.words();
    EXPECT_NE(s.words().find("80.804"), std::string::npos) << s.words();
    const SolvedNetwork given = solve_text(head + "41 30 110" + tail);
    ASSERT_TRUE(given.adjusted()) << given.words();
    EXPECT_NEAR(*given.point("P").adjusted[2], 120, 1e-4);
}

TEST(OwnFirstCoordinates, NameAPointOnceWithWhatItHas)
{
    const std::string sights =
        polar_sights({{"A", {0, 0}}, {"B", {200, 0}}, {"P", {70, 90}}}, {{0, 1}, {0, 2}}, -1, 0.0);
    const SolvedNetwork s =
        solve_text("[run]\ndimension = 2\n[tables]\nstations = '''\nname x y code\nA 0 0 fixed\n"
                   "'''\ntargets = '''\nname x y code\nB 200 0 fixed\nP - - free\nQ - - free\n"
                   "'''\n" +
                   sights.substr(0, sights.find("'''\ndistances")) +
                   "A Q 30 0.001\n'''\ndistances = '''\nfrom to value sigma\nA P 114.0175 0.002\n'''\n");
    EXPECT_FALSE(s.adjusted());
    EXPECT_NE(s.words().find("first coordinates of Q could not be computed (net.inp:12): it has 1 direction\n"),
              std::string::npos)
        << s.words();
    EXPECT_EQ(s.words().find("coordinates of P "), std::string::npos);
}

// A triangle of distances that hangs on A and B alone is as right as its mirror image.
TEST(OwnFirstCoordinates, RefuseAFrameThatMayBeMirrored)
{
    const SolvedNetwork s = solve_text(
        "[run]\ndimension = 2\n[tables]\ntargets = '''\nname x y code\nA 0 0 fixed\nB 100 0 fixed\nP - - free\n"
        "Q - - free\n'''\ndistances = '''\nfrom to value sigma\nA P 60 0.01\nP Q 50 0.01\nA Q 78.1025 0.01\n"
        "B Q 64.0312 0.01\nB P 116.6190 0.01\n'''\n");
    EXPECT_FALSE(s.adjusted());
    EXPECT_NE(s.words().find("P fits in two places"), std::string::npos) << s.words();
}

namespace {

// Four fixed corners of a square and P at 30 40, with all distances; rows of the corners are as given.
std::string square(const std::string &corners, const std::string &directions)
{
    return "[run]\ndimension = 2\n[tables]\nstations = '''\nname x y code\nP - - free\n'''\ntargets = '''\nname x y "
           "code\n" +
           corners +
           "'''\ndistances = '''\nfrom to value sigma\nA B 100 0.01\nB C 100 0.01\nC D 100 0.01\n"
           "D A 100 0.01\nA C 141.4214 0.01\nB D 141.4214 0.01\nP A 50 0.01\nP B 80.6226 0.01\n"
           "P C 92.1954 0.01\nP D 67.0820 0.01\n'''\n" +
           directions;
}

// From P.
const char *const corner_directions = "directions = '''\nfrom to value sigma\nP A 259.0334 0.01\nP B 366.9501 0.01\n"
                                      "P C 45.1125 0.01\nP D 129.5167 0.01\n'''\n";

} // namespace

TEST(OwnFirstCoordinates, NameAFixedPointThatLiesElsewhere)
{
    const SolvedNetwork s =
        solve_text(square("A 0 0 fixed\nB 100 0 fixed\nC 100 150 fixed\nD 0 100 fixed\n", corner_directions));
    EXPECT_TRUE(contains(s.messages, "net.inp:12: C is given 50.000 m from where its sights put it: 100.000 100.000"));
    EXPECT_FALSE(contains(s.messages, "does not fit the others"));
}

TEST(OwnFirstCoordinates, AskWhetherAxesAreExchangedAtAPoint)
{
    const SolvedNetwork s = solve_text(
        square("A 900 5000 fixed\nB 5000 1000 fixed\nC 1000 5100 fixed\nD 900 5100 fixed\n", corner_directions));
    EXPECT_TRUE(contains(s.messages, "net.inp:11: B is given 5656.854 m from where its sights put it: "
                                     "1000.000 5000.000: are x and y exchanged?"));
}

TEST(OwnFirstCoordinates, RefuseCoordinatesWithExchangedAxes)
{
    const SolvedNetwork s =
        solve_text(square("A 0 0 fixed\nB 0 100 fixed\nC 100 100 fixed\nD 100 0 fixed\n", corner_directions));
    EXPECT_FALSE(s.adjusted());
    EXPECT_NE(s.words().find("fit the sights as a mirror image only: are x and y exchanged"), std::string::npos)
        << s.words();
}

TEST(OwnFirstCoordinates, RefuseCoordinatesInAnotherUnit)
{
    const SolvedNetwork s = solve_text(
        square("A 0 0 fixed\nB 100000 0 fixed\nC 100000 100000 fixed\nD 0 100000 fixed\n", corner_directions));
    EXPECT_FALSE(s.adjusted());
    EXPECT_NE(s.words().find("are 1000.000 times as far from one another as the sights say"), std::string::npos)
        << s.words();
}

// A triangle of distances beside two fixed points; `ties` are distances between both.
static std::string triangle(const std::string &ties)
{
    return "[run]\ndimension = 2\n[tables]\ntargets = '''\nname x y code\nA 0 0 fixed\nB 100 0 fixed\nP - - free\n"
           "Q - - free\nR - - free\n'''\ndistances = '''\nfrom to value sigma\nA B 100 0.01\nP Q 50 0.01\n"
           "Q R 50 0.01\nR P 50 0.01\n" +
           ties + "'''\n";
}

TEST(OwnFirstCoordinates, NameAnIslandOnceWithWhatTiesIt)
{
    const SolvedNetwork none = solve_text(triangle("")), one = solve_text(triangle("A P 70 0.01\n"));
    EXPECT_EQ(none.words(), "first coordinates of P, Q and R could not be computed (net.inp:8): nothing was observed "
                            "between them and the rest\nobserve more between such points and the rest, or give the "
                            "coordinates of two of them\n");
    EXPECT_NE(one.words().find("P, Q and R could not be computed (net.inp:8): only this ties them to the rest: "
                               "net.inp:18: distance A to P"),
              std::string::npos)
        << one.words();
}
