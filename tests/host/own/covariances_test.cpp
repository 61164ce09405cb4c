// Observations that share a covariance.

#include "host/own/two_ways.h"

namespace {

const char heights[] = "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 100 fixed\nB 101 free\n"
                       "C 102 free\n'''\n";

const char gnss[] = "[run]\ndimension = 3\n[tables]\ntargets = '''\nname x y z code\nA 0 0 0 fixed\n"
                    "B 1000 200 30 free\nC 400 900 -20 free\n'''\n";
const char vectors[] = "A B 1000.012 200.004 30.021 1.2e-4 0.3e-4 0.2e-4 1.0e-4 -0.1e-4 4.0e-4\n"
                       "B C -600.005 700.010 -50.03 1.1e-4 0.2e-4 0.1e-4 1.3e-4 0.3e-4 3.0e-4\n"
                       "C A -400.001 -899.99 20.02 2.0e-4 0.1e-4 0.4e-4 1.5e-4 0.2e-4 5.0e-4\n'''\n";
const char own_blocks[] = "baselines = '''\nfrom to dx dy dz cxx cxy cxz cyy cyz czz\n";
const char shared[] = "baselines = '''\nfrom to dx dy dz covariance\nA B 1000.012 200.004 30.021 S\n"
                      "B C -600.005 700.010 -50.03 S\nC A -400.001 -899.99 20.02 S\n'''\n";

// The three blocks of `vectors`, and correlations between them where `c` is not 0.
std::string matrix(double c)
{
    const double block[3][9] = {{1.2, 0.3, 0.2, 0.3, 1.0, -0.1, 0.2, -0.1, 4.0},
                                {1.1, 0.2, 0.1, 0.2, 1.3, 0.3, 0.1, 0.3, 3.0},
                                {2.0, 0.1, 0.4, 0.1, 1.5, 0.2, 0.4, 0.2, 5.0}};
    std::string text;
    for (int i = 0; i < 9; i++) {
        for (int j = 0; j < 9; j++) {
            const bool inside = i / 3 == j / 3;
            const double x = inside ? block[i / 3][3 * (i % 3) + j % 3] : i % 3 == j % 3 ? c : 0.0;
            text += std::to_string(x * 1e-4 * 1e4) + "e-4 ";
        }
        text += "\n";
    }
    return text;
}

std::string section(const std::string &keys, const std::string &numbers)
{
    return "[covariances.S]\n" + keys + "matrix = '''\n" + numbers + "'''\n";
}

} // namespace

TEST(Covariances, OfBlocksAreThoseOfSingleBaselines)
{
    const SolvedNetwork single = solve_text(std::string(gnss) + own_blocks + vectors);
    expect_same(single, solve_text(std::string(gnss) + shared + section("", matrix(0))));
    std::string lower, upper;
    const std::string band = "1.2e-4 0.3e-4 0.2e-4  1.0e-4 -0.1e-4 0  4.0e-4 0 0\n1.1e-4 0.2e-4 0.1e-4  1.3e-4 "
                             "0.3e-4 0  3.0e-4 0 0\n2.0e-4 0.1e-4 0.4e-4  1.5e-4 0.2e-4  5.0e-4\n";
    expect_same(single, solve_text(std::string(gnss) + shared + section("form = \"band\"\nwidth = 2\n", band)));
    for (int i = 0; i < 9; i++)
        for (int j = 0; j < 9; j++) {
            const std::string whole = matrix(0);
            size_t at = 0;
            for (int k = 0; k < 9 * i + j; k++) at = whole.find_first_of(" ", at) + 1;
            const std::string number = whole.substr(at, whole.find(' ', at) - at) + " ";
            if (j <= i) lower += number;
            if (j >= i) upper += number;
        }
    expect_same(single, solve_text(std::string(gnss) + shared + section("form = \"lower\"\n", lower)));
    expect_same(single, solve_text(std::string(gnss) + shared + section("form = \"upper\"\n", upper)));
}

TEST(Covariances, InAFileAreThoseInTheSection)
{
    const Folder folder;
    const InFolder inside(folder.path);
    folder.write("S.cov", matrix(0.4));
    folder.write("net.inp", std::string(gnss) + shared + "[covariances.S]\nfile = \"S.cov\"\n");
    expect_same(solve_file("net.inp"), solve_text(std::string(gnss) + shared + section("", matrix(0.4))));
}

TEST(Covariances, OfADiagonalAreStandardDeviations)
{
    const std::string rows = "A B 1.001 0.01\nB C 1.002 0.01\nC A -2.007 0.02\n'''\n";
    const SolvedNetwork sigmas =
        solve_text(std::string(heights) + "height_differences = '''\nfrom to value sigma\n" + rows);
    const std::string named = "height_differences = '''\nfrom to value covariance\nA B 1.001 S\nB C 1.002 S\n"
                              "C A -2.007 S\n'''\n";
    expect_same(sigmas, solve_text(heights + named + section("form = \"band\"\n", "1e-4 1e-4 4e-4")));
    expect_same(sigmas, solve_text(heights + named + section("", "1e-4 0 0\n0 1e-4 0\n0 0 4e-4\n")));
    expect_same(sigmas,
                solve_text(heights + named + section("form = \"band\"\nsigma_factor = 10\n", "1e-6 1e-6 4e-6")));
}

// Two values of one height difference with variances a, b and covariance c: the best mean has the weights (b - c) and
// (a - c), and the variance (a b - c^2) / (a + b - 2 c). The one is a height difference, the other a difference of
// coordinates.
TEST(Covariances, TieKindsTogether)
{
    const double a = 1e-4, b = 9e-4, c = 2e-4, sum = a + b - 2 * c;
    const SolvedNetwork solved =
        solve_text("[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 100 fixed\nB 101 free\n'''\n"
                   "height_differences = '''\nfrom to value covariance\nA B 1.000 S\n'''\n"
                   "coordinate_differences = '''\nfrom to dz covariance\nA B 1.050 S\n'''\n" +
                   section("form = \"lower\"\n", "1e-4\n2e-4 9e-4"));
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_NEAR(*solved.point("B").adjusted[2], 100 + (b - c) / sum * 1.0 + (a - c) / sum * 1.05, 1e-9);
    const double sigma = *solved.results().sigma_aposteriori;
    EXPECT_NEAR(sigma, 0.05 / std::sqrt(sum), 1e-6); // the misclosure by its standard deviation
    EXPECT_NEAR(*solved.point("B").deviation[2], sigma * std::sqrt((a * b - c * c) / sum), 1e-9);
}

// Without the second baseline what is left is the covariance of the two others, not a part of its inverse.
TEST(Covariances, AreStruckWhereAnObservationIsLeftOut)
{
    const std::string all = std::string(gnss) + own_blocks + vectors;
    const auto strike = [](const std::string &from) { return with(from, "covariance\n", "covariance use\n"); };
    std::string nine = strike(std::string(gnss) + shared);
    nine = with(with(with(nine, "30.021 S", "30.021 S yes"), "-50.03 S", "-50.03 S no"), "20.02 S", "20.02 S yes");
    const std::string six = with(std::string(gnss) + shared, "B C -600.005 700.010 -50.03 S\n", "");
    const std::string more = "baselines_more";
    std::string rest;
    const std::string whole = matrix(0.4);
    for (int i = 0; i < 9; i++)
        for (int j = 0; j < 9; j++) {
            size_t at = 0;
            for (int k = 0; k < 9 * i + j; k++) at = whole.find_first_of(" ", at) + 1;
            if (i / 3 != 1 && j / 3 != 1) rest += whole.substr(at, whole.find(' ', at) - at) + " ";
        }
    // B hangs on one baseline only: another one checks it
    const std::string check =
        "coordinate_differences = '''\nfrom to dx dy dz sx sy sz\nB C -600 700 -50 0.01 0.01 0.02\n'''\n";
    expect_same(solve_text(nine + check + section("", matrix(0.4))), solve_text(six + check + section("", rest)));
}

// A zenith angle is observed as an elevation: its covariance with a distance changes sign.
TEST(Covariances, KnowThatZenithAnglesRunDownwards)
{
    const std::string head = "[run]\ndimension = 3\n[units]\nvertical = \"";
    const std::string points = "\"\n[tables]\nstations = '''\nname x y z code\nA 0 0 0 fixed\n'''\n"
                               "targets = '''\nname x y z code code_x code_y\nP 100 0 5 free fixed fixed\n'''\n"
                               "distances = '''\nfrom to value covariance\nA P 100.13 S\n'''\nvertical_angles = '''\n"
                               "from to value covariance\nA P ";
    const SolvedNetwork zenith =
        solve_text(head + "zenith" + points + "96.82 S\n'''\n" + section("", "4e-6 1e-6\n1e-6 1e-6\n"));
    const SolvedNetwork elevation =
        solve_text(head + "elevation" + points + "3.18 S\n'''\n" + section("", "4e-6 -1e-6\n-1e-6 1e-6\n"));
    expect_same(zenith, elevation);
}

TEST(Covariances, ThatAreNotPositiveDefiniteNameTheRow)
{
    const std::string named = "height_differences = '''\nfrom to value covariance\nA B 1.001 S\nB C 1.002 S\n"
                              "C A -2.007 S\n'''\n";
    const SolvedNetwork solved = solve_text(heights + named + section("", "1 0 1\n0 1 1\n1 1 2\n"));
    EXPECT_EQ(solved.code(), "input: bad covariance");
    EXPECT_EQ(solved.run.results.words[0], "covariance S is not positive definite: it gives out at net.inp:14: height "
                                           "difference C to A");
    EXPECT_EQ(solve_text(heights + named + section("form = \"band\"\n", "1 0 1")).run.results.words[0],
              "covariance S is not positive definite: it gives out at net.inp:13: height difference B to C");
}

TEST(Covariances, AreRefusedByTheEngineInOneLine)
{
    const SolvedNetwork solved = solve_text(std::string(gnss) + shared + section("", matrix(0)), Solver::Compact);
    EXPECT_EQ(solved.words(),
              "the engine does not take column covariance of table baselines (net.inp:12): choose the solver sparse\n");
}

// ---- faults of the file ----

TEST(Covariances, WithTheWrongNumberOfElementsSayHowManyTheyNeed)
{
    const std::string named = "height_differences = '''\nfrom to value covariance\nA B 1.001 S\nB C 1.002 S\n"
                              "C A -2.007 S\n'''\n";
    const auto first = [&](const std::string &keys, const std::string &numbers) {
        return faults_of(heights + named + section(keys, numbers)).at(0);
    };
    EXPECT_EQ(first("form = \"lower\"\n", "1 0 1"), "net.inp:16:1: covariance S holds 3 numbers, its 3 components need "
                                                    "6; check its form, and which rows name it");
    EXPECT_EQ(first("", "1 0 0 0 1 0 0 0.5 1"),
              "net.inp:16:1: covariance S is not symmetric; check its rows, or write form = \"lower\"");
    EXPECT_EQ(first("form = \"lower\"\n", "1 0 1 0 x 1"), "net.inp:19:9: \"x\" is not a number in the matrix; write a "
                                                          "number like 12.5");
    EXPECT_EQ(faults_of(heights + with(named, "1.001 S", "1.001 T") + section("form = \"lower\"\n", "1 0 1")).at(0),
              "net.inp:12:11: unknown covariance \"T\" in column covariance; did you mean \"S\"?");
    EXPECT_EQ(faults_of(heights + with(named, "1.001 S", "1.001 -") + section("form = \"lower\"\n", "1 0 1")).at(0),
              "net.inp:12:11: the row has neither sigma nor covariance; write one of the two");
    EXPECT_EQ(faults_of(heights + named + "[covariances.S]\n").at(0),
              "net.inp:16:1: the covariance has no numbers; write matrix = \"\"\"...\"\"\" or file = \"NAME.cov\"");
    EXPECT_EQ(faults_of(heights + named + section("weight = 1\nform = \"lower\"\n", "1 0 1 0 0 1")).at(0),
              "net.inp:17:1: unknown key \"weight\" in [covariances.S]; known keys: form, width, unit, sigma_factor, "
              "matrix, file");
}
