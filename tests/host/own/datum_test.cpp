// Datum, weights and imports: what an own run makes of what holds a network, and the words of what it refuses.

#include <cmath>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>

#include "host/own/own_run.h"

using namespace vornhost;
using nlohmann::json;
namespace fs = std::filesystem;

namespace {

bool contains(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

// Loops A, B, C with the fixed A and X, Y, Z; each misses its zero by 3 mm.
std::string two_loops(const std::string &tie)
{
    return "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 100 fixed\nB 101 free\nC 102 free\n"
           "X 50 free\nY 51 free\nZ 52 free\n'''\nheight_differences = '''\nfrom to value sigma\n"
           "A B 1.001 0.001\nB C 1.001 0.001\nC A -1.999 0.001\nX Y 1.001 0.001\nY Z 1.001 0.001\nZ X -1.999 0.001\n" +
           tie + "'''\n";
}

} // namespace

TEST(OwnRuns, RefuseTwoLoopsThatNothingTies)
{
    for (const bool check : {false, true}) {
        const SolvedNetwork solved = solve_text(two_loops(""), Solver::Sparse, check);
        EXPECT_FALSE(solved.adjusted());
        EXPECT_EQ(solved.code(), "datum: no datum");
        EXPECT_EQ(solved.words(), "X, Y, Z: no observations tie this part to the rest, and it is not held by itself: "
                                  "a height difference to the rest or a fixed height would do\n");
        for (const PointResult &p : solved.results().points) EXPECT_FALSE(p.deviation[2]) << p.name;
    }
}

// The tie has no check: each loop keeps its own corrections, a third of the misclosure a line.
TEST(OwnRuns, AdjustTwoLoopsWithATie)
{
    const SolvedNetwork solved = solve_text(two_loops("B X -51.000 0.002\n"));
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_EQ(solved.results().degrees_of_freedom, 2);
    EXPECT_NEAR(*solved.point("B").adjusted[2], 101.000, 1e-9);
    EXPECT_NEAR(*solved.point("X").adjusted[2], 50.000, 1e-9);
    EXPECT_NEAR(*solved.point("Z").adjusted[2], 52.000, 1e-9);
    // [vv] / f: six residuals of 1 sigma, two degrees of freedom. B: two lines beside one, 2/3 mm2.
    EXPECT_NEAR(*solved.results().sigma_aposteriori, std::sqrt(3.0), 1e-9);
    EXPECT_NEAR(*solved.point("B").deviation[2], std::sqrt(3.0 * 2.0 / 3.0) * 1e-3, 1e-12);
    EXPECT_NEAR(*solved.point("X").deviation[2], std::sqrt(3.0 * (2.0 / 3.0 + 4.0)) * 1e-3, 1e-12);
    for (const ResidualResult &r : solved.results().residuals)
        EXPECT_NEAR(r.redundancy.value(), r.from == "B" && r.to == "X" ? 0.0 : 1.0 / 3.0, 1e-9) << r.from << r.to;
    EXPECT_EQ(solved.results().datum, "held by 1 fixed height");
}

TEST(OwnRuns, CountWeightedHeightsAsObservations)
{
    // B: 1 mm from A by levelling, 2 mm by its own weight; 3 mm apart. Weights 1 and 1/4.
    const SolvedNetwork solved = solve_text(
        "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z sz code\nA 100 - fixed\nB 101.003 0.002 weighted\n'''\n"
        "height_differences = '''\nfrom to value sigma\nA B 1 0.001\n'''\n");
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_EQ(solved.results().degrees_of_freedom, 1);
    EXPECT_NEAR(*solved.point("B").adjusted[2], 101.0006, 1e-10);
    ASSERT_EQ(solved.results().residuals.size(), 2u);
    const ResidualResult &weight = solved.results().residuals[1];
    EXPECT_EQ(weight.kind, "weighted coordinate");
    EXPECT_EQ(weight.from, "B");
    EXPECT_EQ(weight.component, "z");
    EXPECT_NEAR(weight.residual, 0.0024, 1e-10);
    EXPECT_NEAR(weight.redundancy.value(), 0.8, 1e-9);
    EXPECT_NEAR(solved.results().residuals[0].residual, -0.0006, 1e-10);
    // 0.36 + 1.44 = 1.8 = 3^2 / (1 + 4)
    EXPECT_NEAR(*solved.results().sigma_aposteriori, std::sqrt(1.8), 1e-9);
    EXPECT_NEAR(weight.normalised.value(), 3 / std::sqrt(5.0), 1e-9);
}

TEST(OwnRuns, RefuseDatumPointsThatDoNotHoldATurn)
{
    const std::string square = "name x y code\nA 0 0 free\nB 100 0 no_datum\nC 100 90 no_datum\nD 0 90 no_datum\n";
    const SolvedNetwork solved =
        solve_text("[run]\ndimension = 2\n[tables]\ntargets = '''\n" + square +
                   "'''\ndistances = '''\nfrom to value sigma\nA B 100 0.001\nB C 90 0.001\nC D 100 0.001\n"
                   "D A 90 0.001\nA C 134.5362 0.001\nB D 134.5362 0.001\n'''\n");
    EXPECT_EQ(solved.code(), "datum: no datum");
    EXPECT_EQ(solved.words(),
              "the network can be turned about A: the points with code free do not hold this; code free for "
              "B, C, D would do\n");
}

TEST(OwnRuns, NameThePointWithOneDistance)
{
    const std::string text = "[run]\ndimension = 2\n[tables]\ntargets = '''\nname x y code\nA 0 0 fixed\n"
                             "C 0 9 fixed\nP 9 5 free\nB 10 0 free\n'''\ndistances = '''\nfrom to value sigma\n"
                             "A P 10.296 0.001\nC P 9.849 0.001\nA B 10 0.001\n'''\n";
    for (const SolvedNetwork &solved : {solve_text(text), check_text(text)}) {
        EXPECT_EQ(solved.code(), "adjustment: undetermined");
        EXPECT_TRUE(contains(solved.words(), "B can move along y: it has one distance only")) << solved.words();
    }
}

TEST(OwnRuns, SayThatNoObservationTakesPart)
{
    const SolvedNetwork solved = solve_text(
        "[run]\ndimension = 2\n[tables]\nstations = '''\nname x y code\nA 0 0 fixed\nB 0 100 fixed\n'''\n"
        "targets = '''\nname x y code\nQ 50 50 fixed\nR 80 20 fixed\n'''\ndirections = '''\nfrom to value sigma use\n"
        "A Q 0 0.001 no\nB Q 0 0.001 no\n'''\n");
    EXPECT_EQ(solved.code(), "input: no observations");
    EXPECT_EQ(solved.words(), "no observation takes part\nlook at those left out\n");
}

// The third distance lacks a factor of ten: P starts at its right place, where the others fit.
TEST(OwnRuns, NameTheObservationsThatKeepThemFromAnEnd)
{
    const SolvedNetwork solved =
        solve_text("[run]\ndimension = 2\niterations = 1\n[tables]\ntargets = '''\nname x y code\nA 0 0 fixed\n"
                   "B 100 0 fixed\nC 0 100 fixed\nP 50 50 free\n'''\ndistances = '''\nfrom to value sigma\n"
                   "A P 70.7107 0.001\nB P 70.7107 0.001\nC P 7.0711 0.001\n'''\n");
    EXPECT_EQ(solved.code(), "adjustment: no convergence");
    const Lines &words = solved.results().words;
    ASSERT_GE(words.size(), 3u);
    EXPECT_EQ(words[0], "the adjustment does not converge: no end after 1 iteration");
    EXPECT_TRUE(contains(words[1], "net.inp:16: distance C to P: 63.640 m off")) << words[1];
    EXPECT_TRUE(contains(solved.report, "What is wrong\n-------------\n" + words[0] + "\n" + words[1] + "\n"))
        << solved.report;
}

TEST(OwnRuns, KeepMethodNineForTheEngine)
{
    vornhost::Model model;
    Faults faults;
    ASSERT_TRUE(read_network(SOURCE_DIR "/examples/monitoring_wall.inp", model, faults));
    model.solver = Solver::Sparse;
    model.p.lumpmethod = 9;
    const SolvedNetwork solved = solve(model);
    EXPECT_EQ(solved.code(), "input: refused");
    EXPECT_TRUE(contains(solved.words(), "choose --solver compact")) << solved.words();
}

TEST(OwnRuns, LeaveOutASightWithoutDerivative)
{
    const SolvedNetwork solved =
        solve_text("[run]\ndimension = 2\n[tables]\ntargets = '''\nname x y code\nA 0 0 fixed\nB 100 0 fixed\n"
                   "C 100 0 fixed\nP 50 50 free\n'''\ndistances = '''\nfrom to value sigma\nA P 70.711 0.001\n"
                   "B P 70.711 0.001\nB C 0.001 0.001\n'''\n");
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_EQ(solved.results().degrees_of_freedom, 0);
    const auto &notes = solved.results().notes;
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_TRUE(contains(notes[0], "net.inp:15: distance B to C: left out")) << notes[0];
}

namespace {

// Coordinates and standard deviations of the points that both runs have in space of two dimensions.
void expect_same(const SolvedNetwork &a, const SolvedNetwork &b, double limit)
{
    for (const PointResult &p : a.results().points)
        for (int k = 0; k < 2; k++) {
            EXPECT_NEAR(*p.adjusted[k], *b.point(p.name).adjusted[k], limit) << p.name;
            if (p.deviation[k])
                EXPECT_NEAR(*p.deviation[k], b.point(p.name).deviation[k].value_or(0), 1e-3 * *p.deviation[k])
                    << p.name;
        }
}

} // namespace

// The second survey rests on the file of the first. Whoever writes it and whoever reads it, it is one survey.
TEST(OwnRuns, ChainWithEachOtherAndWithTheEngine)
{
    std::map<std::pair<Solver, Solver>, SolvedNetwork> second;
    for (const Solver writer : {Solver::Sparse, Solver::Compact})
        for (const Solver reader : {Solver::Sparse, Solver::Compact}) {
            const Folder folder;
            for (const std::string name : {"first.inp", "second.inp"})
                fs::copy(SOURCE_DIR "/examples/chained/" + name, folder.path);
            const InFolder inside(folder.path);
            ASSERT_TRUE(solve_file("first.inp", writer).adjusted());
            ASSERT_TRUE(fs::exists("first.con"));
            second[{writer, reader}] = solve_file("second.inp", reader);
            ASSERT_TRUE((second[{writer, reader}].adjusted())) << second[{writer, reader}].words();
        }
    const auto at = [&](Solver writer, Solver reader) -> const SolvedNetwork & { return second[{writer, reader}]; };
    expect_same(at(Solver::Sparse, Solver::Sparse), at(Solver::Compact, Solver::Sparse), 2e-6);
    expect_same(at(Solver::Sparse, Solver::Compact), at(Solver::Compact, Solver::Compact), 2e-6);
}

// Imports count as observations with their covariance, so that a chain gives what one adjustment of all gives. The
// first survey weighs in the second with its standard deviations before its variance factor.
TEST(OwnRuns, ChainToTheCoordinatesOfOneAdjustment)
{
    const Folder folder;
    for (const std::string name : {"first.inp", "second.inp", "together.inp"})
        fs::copy(SOURCE_DIR "/examples/chained/" + name, folder.path);
    const InFolder inside(folder.path);
    const SolvedNetwork first = solve_file("first.inp"), second = solve_file("second.inp");
    const SolvedNetwork together = solve_file("together.inp");
    ASSERT_TRUE(first.adjusted() && second.adjusted() && together.adjusted());
    for (const PointResult &p : second.results().points)
        for (int k = 0; k < 2; k++) EXPECT_NEAR(*p.adjusted[k], *together.point(p.name).adjusted[k], 2e-4) << p.name;
    // 24 directions and distances and 6 imported coordinates less 2 orientations and 14 coordinates.
    EXPECT_EQ(second.results().degrees_of_freedom, 24 + 6 - 2 - 14);
}

namespace {

const std::string right_results = SOURCE_DIR "/../shared/data/datum/";

bool named(const std::string &text, const json &words)
{
    for (const std::string word : words) {
        std::string escaped;
        for (const char c : word) escaped += std::string(std::string(".+*?()[]{}|^$\\").find(c) < 99 ? "\\" : "") + c;
        if (std::regex_search(text, std::regex("(^|[^A-Za-z0-9_.])" + escaped + "([^A-Za-z0-9_.]|\\.?$|\\.?\\s)")))
            return true;
    }
    return false;
}

void expect_right_values(const SolvedNetwork &solved, const json &right)
{
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    const Results &results = solved.results();
    if (right.contains("dof") && !right["dof"].is_null()) EXPECT_EQ(results.degrees_of_freedom.value(), right["dof"]);
    if (right.contains("sigma") && !right["sigma"].is_null()) {
        const double sigma = right["sigma"];
        EXPECT_NEAR(results.sigma_aposteriori.value_or(0), sigma, 1e-5 * sigma + 1e-9);
    }
    const char *const axes[3] = {"x", "y", "z"};
    const bool direct = right.value("compare", "direct") == "direct";
    for (int k = 0; k < 3; k++) {
        for (const auto &[name, p] : right["coordinates"].items())
            if (direct && p.contains(axes[k]))
                EXPECT_NEAR(solved.point(name).adjusted[k].value(), p[axes[k]], right.value("tolerance", 1e-6)) << name;
        if (!right.contains("sd")) continue;
        for (const auto &[name, p] : right["sd"].items()) {
            const double sd = p.value(axes[k], 0.0);
            if (sd > 0)
                EXPECT_NEAR(solved.point(name).deviation[k].value_or(0), sd, std::fmax(1e-3 * sd, 2e-6)) << name;
        }
    }
}

} // namespace

TEST(OwnRuns, DecideTheDatumRightlyOfNetworksThatCountingGetsWrong)
{
    std::ifstream file(right_results + "right.json");
    if (!file) GTEST_SKIP() << "the networks with their right results are not at hand";
    const json all = json::parse(file);
    const Folder folder;
    for (const auto &[name, right] : all.items()) {
        SCOPED_TRACE(name);
        const InFolder inside(folder.path);
        const SolvedNetwork solved = solve_file(right_results + name + ".inp");
        const SolvedNetwork checked = solve_file(right_results + name + ".inp", Solver::Sparse, true);
        EXPECT_EQ(checked.code(), solved.code());
        EXPECT_EQ(checked.words(), solved.words());
        if (right["status"] == 0) {
            expect_right_values(solved, right);
            continue;
        }
        EXPECT_FALSE(solved.adjusted());
        EXPECT_TRUE(named(solved.words(), right["words"])) << solved.words();
    }
}
