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
