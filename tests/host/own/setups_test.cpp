// Several stands of an instrument on one mark, and sets of one stand.

#include "host/own/two_ways.h"

namespace {

const char points[] = "[run]\ndimension = 3\n[tables]\nstations = '''\nname x y z code\nS 50.03 40.02 1.01 free\n'''\n"
                      "targets = '''\nname x y z code\nA 0 0 0 fixed\nB 100 0 5 fixed\nC 100 100 -3 fixed\n"
                      "D 0 100 2 fixed\n'''\n";

// Two stands of different height and zero.
const char split[] =
    "setups = '''\nstation setup h\nS morning 1.5\nS noon 1.6\n'''\n"
    "directions = '''\nfrom to setup value sigma\nS A morning 10 0.001\nS B morning 124.087 0.001\n"
    "S C morning 222.814 0.001\nS B noon 60.0 0.001\nS C noon 158.73 0.001\nS D noon 247.184 0.001\n'''\n"
    "distances = '''\nfrom to setup value sigma\nS A morning 64.081 0.002\nS C noon 78.301 0.002\n'''\n"
    "vertical_angles = '''\nfrom to setup value sigma\nS A morning 102.484 0.002\n"
    "S B noon 97.614 0.002\n'''\n";

} // namespace

// The same as two stations, each with one orientation, that coordinate differences of a micrometre hold together.
TEST(SetUps, OnOneMarkAreStationsInOnePlace)
{
    std::string tied = with(points, "S 50.03 40.02 1.01 free\n", "S 50.03 40.02 1.01 free\nT 50.03 40.02 1.01 free\n");
    tied += "directions = '''\nfrom to value sigma\nS A 10 0.001\nS B 124.087 0.001\nS C 222.814 0.001\n"
            "T B 60.0 0.001\nT C 158.73 0.001\nT D 247.184 0.001\n'''\n"
            "distances = '''\nfrom to value sigma h1\nS A 64.081 0.002 1.5\nT C 78.301 0.002 1.6\n'''\n"
            "vertical_angles = '''\nfrom to value sigma h1\nS A 102.484 0.002 1.5\nT B 97.614 0.002 1.6\n'''\n"
            "coordinate_differences = '''\nfrom to dx dy dz sx sy sz\nS T 0 0 0 1e-6 1e-6 1e-6\n'''\n";
    const SolvedNetwork one = solve_text(std::string(points) + split), two = solve_text(tied);
    expect_same(one, two, 1e-7);
    ASSERT_EQ(one.results().orientations.size(), 2u);
    for (size_t i = 0; i < 2; i++) {
        EXPECT_EQ(one.results().orientations[i].name, "S");
        EXPECT_NEAR(one.results().orientations[i].rotation[2], two.results().orientations[i].rotation[2], 1e-8);
    }
    EXPECT_EQ(one.results().orientations[0].setup, "morning");
    EXPECT_EQ(one.results().orientations[1].setup, "noon");
    EXPECT_EQ(one.results().points.size() + 1, two.results().points.size());
}

TEST(SetUps, WithoutARowInTheTableHaveAFreeOrientationEach)
{
    const std::string silent = with(split, "setups = '''\nstation setup h\nS morning 1.5\nS noon 1.6\n'''\n", "");
    const SolvedNetwork solved = solve_text(std::string(points) + silent);
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_EQ(solved.results().orientations.size(), 2u);
    expect_same(solved,
                solve_text(with(with(std::string(points) + split, "morning 1.5", "morning 0"), "noon 1.6", "noon 0")));
}

// rx3 is minus the orientation: 10 gon on the mark A in the bearing of A.
TEST(SetUps, MayHaveAnOrientationThatIsKnown)
{
    const auto with_orientation = [&](const std::string &cells) {
        return solve_text(std::string(points) +
                          with(split, "station setup h\nS morning 1.5\nS noon 1.6\n",
                               "station setup h orientation code_orientation s_orientation\nS morning 1.5 " + cells +
                                   "\nS noon 1.6 - - -\n"));
    };
    const SolvedNetwork free = with_orientation("- - -"), fixed = with_orientation("232.957 fixed -"),
                        weighted = with_orientation("232.957 weighted 0.01");
    ASSERT_TRUE(free.adjusted() && fixed.adjusted() && weighted.adjusted());
    EXPECT_EQ(*fixed.results().degrees_of_freedom, *free.results().degrees_of_freedom + 1);
    EXPECT_EQ(*weighted.results().degrees_of_freedom, *free.results().degrees_of_freedom + 1);
    const double turn = 8 * std::atan(1.0);
    EXPECT_NEAR(std::remainder(fixed.results().orientations[0].rotation[2] + 232.957 / 400 * turn, turn), 0, 1e-12);
    const auto rows = residuals_of(weighted, "weighted rotation");
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].from, "S");
    EXPECT_NEAR(rows[0].sigma, 0.01 / 400 * turn, 1e-15);
}

// ---- sets ----

namespace {

const char rounds[] =
    "directions = '''\nfrom to set value sigma\nS A 1 10 0.001\nS B 1 124.087 0.001\n"
    "S C 1 222.814 0.001\nS D 1 311.271 0.001\nS A 2 110.001 0.001\nS B 2 224.086 0.001\nS C 2 322.816 0.001\n"
    "S D 2 11.272 0.001\n'''\ncoordinates = '''\nname z sz\nS 1 0.01\n'''\n";

std::string without_sets()
{
    std::string text = with(rounds, "from to set value", "from to value");
    for (const char *set : {"S A 1 ", "S B 1 ", "S C 1 ", "S D 1 ", "S A 2 ", "S B 2 ", "S C 2 ", "S D 2 "})
        text = with(text, set, std::string(set).substr(0, 4));
    return text;
}

} // namespace

TEST(Sets, OfATurnedCircleAreNoticedWithoutWords)
{
    const SolvedNetwork named = solve_text(std::string(points) + rounds);
    const SolvedNetwork unnamed = solve_text(std::string(points) + without_sets());
    expect_same(named, unnamed);
    ASSERT_EQ(named.results().notes.size(), 1u);
    EXPECT_NE(named.results().notes[0].find("100.0010 gon apart"), std::string::npos) << named.results().notes[0];
    EXPECT_EQ(named.results().notes, [&] {
        Lines lines = unnamed.results().notes;
        return lines;
    }());
}

TEST(Sets, HaveAZeroEachWhereTheFileSaysSo)
{
    const std::string each = "setups = '''\nstation setup zero\nS - set\n'''\n";
    const SolvedNetwork told = solve_text(std::string(points) + each + rounds);
    expect_same(told, solve_text(std::string(points) + rounds));
    EXPECT_TRUE(told.results().notes.empty());
    ASSERT_EQ(told.results().orientations.size(), 2u);
    EXPECT_EQ(told.results().orientations[0].set, "1");
    EXPECT_EQ(told.results().orientations[1].set, "2");
}

// Then the second round is 100 gon off, and the program says so rather than turn it.
TEST(Sets, ShareOneZeroWhereTheFileSaysSo)
{
    const SolvedNetwork shared =
        solve_text(std::string(points) + "setups = '''\nstation setup zero\nS - setup\n'''\n" + rounds);
    ASSERT_TRUE(shared.adjusted());
    EXPECT_EQ(shared.results().orientations.size(), 1u);
    EXPECT_GT(*shared.results().sigma_aposteriori, 1000);
    for (const std::string &note : shared.results().notes) EXPECT_EQ(note.find("apart"), std::string::npos) << note;
}

// ---- faults of the file ----

TEST(SetUps, WithFaultsAreNamed)
{
    const auto first = [&](const std::string &table) {
        return faults_of(std::string(points) + "setups = '''\n" + table + "'''\n" + rounds).at(0);
    };
    EXPECT_EQ(first("station setup\nA x\n"), "net.inp:17:1: \"A\" is no station; list it under stations");
    EXPECT_EQ(first("station setup\nS x\nS x\n"),
              "net.inp:18:3: set-up \"x\" of \"S\" is listed twice; keep one of the two, the first stands in line 17");
    EXPECT_EQ(first("station setup zero levelled\nS x set no\n"),
              "net.inp:17:5: an instrument that is not levelled has one zero; write setup");
    EXPECT_EQ(first("station setup zero orientation\nS x set 10\n"),
              "net.inp:17:5: an orientation that is given is that of one zero; write setup, or no orientation");
    EXPECT_EQ(first("station setup code_orientation\nS x fixed\n"),
              "net.inp:17:5: a held orientation needs its value; write it in column orientation");
    EXPECT_EQ(first("station setup group\nS x TS\n"),
              "net.inp:17:5: unknown group \"TS\" in column group; list it under groups");
    EXPECT_EQ(
        faults_of(std::string(points) + "distances = '''\nfrom to setup value sigma\nA S x 64.1 0.1\n'''\n").at(0),
        "net.inp:17:5: set-up \"x\" at a point that is no station; list the point under stations");
}

TEST(SetUps, AreRefusedByTheEngineInOneLine)
{
    EXPECT_EQ(solve_text(std::string(points) + split, Solver::Jordan).words(),
              "the engine does not take table setups (net.inp:17): choose the solver sparse\n");
    EXPECT_EQ(solve_text(std::string(points) + rounds, Solver::Simplex).words(),
              "the engine does not take table coordinates (net.inp:28): choose the solver sparse\n");
}
