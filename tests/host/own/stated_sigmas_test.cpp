// Standard deviations as instruments state them, and readings that become observations.

#include <cmath>

#include "host/own/two_ways.h"

using namespace vornhost;

namespace {

const double gon = std::atan(1.0) / 50.0;

const char plane[] = "[tables]\nstations = '''\nname x y code\nA 0 0 fixed\nP 300 400 free\n'''\n"
                     "targets = '''\nname x y code\nB 1000 0 fixed\n'''\n";

std::string run(int dimension, const std::string &more = "")
{
    return "[run]\ndimension = " + std::to_string(dimension) + "\n" + more;
}

double sigma_of(const SolvedNetwork &solved, const std::string &kind, size_t i = 0)
{
    const auto rows = residuals_of(solved, kind);
    EXPECT_LT(i, rows.size()) << solved.words();
    return i < rows.size() ? rows[i].sigma : 0.0;
}

} // namespace

// 2 mm + 2 ppm: 3 mm on 500 m, 3.612 mm on 806.226 m.
TEST(StatedSigmas, OfDistancesAreAConstantAndAPartOfTheLength)
{
    const std::string rows = "distances = '''\nfrom to value\nA P 500.001\nB P 806.226\nA P 500.0\n'''\n";
    const SolvedNetwork solved = solve_text(run(2, "[sigma]\ndistances = 0.002\ndistances_ppm = 2\n") + plane + rows);
    EXPECT_NEAR(sigma_of(solved, "distance", 0), 0.003, 1e-8);
    EXPECT_NEAR(sigma_of(solved, "distance", 1), 0.002 + 2e-6 * 806.226, 1e-12);
    const std::string own = "distances = '''\nfrom to value sigma ppm\nA P 500 0.001 4\nB P 806.226 0.005 -\n"
                            "A P 500 - 3\nA P 500 - -\n'''\n";
    const SolvedNetwork rows_say = solve_text(run(2, "[sigma]\ndistances = 0.002\ndistances_ppm = 2\n") + plane + own);
    EXPECT_NEAR(sigma_of(rows_say, "distance", 0), 0.003, 1e-12);
    EXPECT_NEAR(sigma_of(rows_say, "distance", 1), 0.005, 1e-12);
    EXPECT_NEAR(sigma_of(rows_say, "distance", 2), 0.0035, 1e-12);
    EXPECT_NEAR(sigma_of(rows_say, "distance", 3), 0.003, 1e-12);
}

TEST(StatedSigmas, StandInTheUnitOfStandardDeviations)
{
    const SolvedNetwork solved =
        solve_text(run(2, "[units]\nsigma_length = \"mm\"\n[sigma]\ndistances = 2\ndistances_ppm = 2\n") + plane +
                   "distances = '''\nfrom to value\nA P 500.001\nB P 806.226\nA P 500.0\n'''\n");
    EXPECT_NEAR(sigma_of(solved, "distance", 0), 0.003, 1e-8);
}

// A millimetre a root of a kilometre over 4 km and 0.5 mm a set-up over 9 set-ups: root of (4 + 0.25 * 9) mm.
TEST(StatedSigmas, OfLevellingGrowWithTheRootOfTheLine)
{
    const std::string points = "[tables]\ntargets = '''\nname z code\nA 100 fixed\nB 101 free\n'''\n";
    const std::string rows = "height_differences = '''\nfrom to value length setups sigma\nA B 1.001 4000 9 -\n"
                             "A B 1.002 1000 4 0.007\n'''\n";
    const auto deviation = [&](const std::string &sigma) {
        return sigma_of(solve_text(run(1, "[sigma]\n" + sigma) + points + rows), "height difference");
    };
    EXPECT_NEAR(deviation("height_difference_km = 0.001\n"), 0.002, 1e-12);
    EXPECT_NEAR(deviation("height_difference_setup = 0.0005\n"), 0.0015, 1e-12);
    EXPECT_NEAR(deviation("height_difference_km = 0.001\nheight_difference_setup = 0.0005\n"), 0.0025, 1e-12);
    EXPECT_NEAR(deviation("height_differences = 0.002\nheight_difference_km = 0.001\n"), std::sqrt(8e-6), 1e-12);
    EXPECT_NEAR(
        sigma_of(solve_text(run(1, "[sigma]\nheight_difference_km = 0.001\n") + points + rows), "height difference", 1),
        0.007, 1e-12);
    EXPECT_EQ(faults_of(run(1, "[sigma]\nheight_difference_km = 0.001\n") + points +
                        "height_differences = '''\nfrom to value length\nA B 1.001 -\n'''\n"),
              Lines{"net.inp:13:11: the length of the line is not known; write it in column length, or sigma"});
}

TEST(StatedSigmas, OfBaselinesAreMultipliedByTheirFactor)
{
    const std::string points = "[tables]\ntargets = '''\nname x y z code\nA 0 0 0 fixed\nB 100 0 0 free\n'''\n";
    const std::string heading = "baselines = '''\nfrom to dx dy dz cxx cyy czz sigma_factor\n";
    const SolvedNetwork solved = solve_text(run(3, "[baselines]\nsigma_factor = 2\n") + points + heading +
                                            "A B 100.01 0 0 1e-6 4e-6 9e-6 -\nA B 100 0 0 1e-6 4e-6 9e-6 3\n'''\n");
    EXPECT_NEAR(sigma_of(solved, "baseline", 0), 0.002, 1e-12);
    EXPECT_NEAR(sigma_of(solved, "baseline", 2), 0.006, 1e-12);
    EXPECT_NEAR(sigma_of(solved, "baseline", 4), 0.006, 1e-12);
}

// ---- centring ----

// A direction over s is off by e / s at either end; a distance by e at either end; an angle by e / s at each target
// and e s3 / (s1 s2) at the instrument, with s3 the distance between the targets (Ghilani, Adjustment computations).
TEST(Centring, AddsTheClosedFormulasOfPlaneSights)
{
    const std::string sigma = "[sigma]\ndistances = 0.003\ndirections = 0.001\nangles = 0.001\n"
                              "centring_instrument = 0.002\ncentring_target = 0.001\n";
    const SolvedNetwork solved =
        solve_text(run(2, sigma) + plane +
                   "distances = '''\nfrom to value\nP A 500\nP B 806.226\n'''\ndirections = '''\nfrom to value\nA B 0\n"
                   "A P 59.0334\n'''\nangles = '''\nat from to value\nP A B 126.2\n'''\n");
    const double e_i = 0.002, e_t = 0.001, s1 = 500, s2 = std::sqrt(700.0 * 700 + 400 * 400), s3 = 1000;
    EXPECT_NEAR(sigma_of(solved, "distance"), std::sqrt(9e-6 + e_i * e_i + e_t * e_t), 1e-12);
    EXPECT_NEAR(sigma_of(solved, "direction", 1), std::hypot(0.001 * gon, std::hypot(e_i / s1, e_t / s1)), 1e-14);
    const double angle = 0.001 * gon, target = std::hypot(e_t / s1, e_t / s2), instrument = e_i * s3 / (s1 * s2);
    EXPECT_NEAR(sigma_of(solved, "angle"), std::sqrt(angle * angle + target * target + instrument * instrument), 1e-14);
}

TEST(Centring, IsThatOfGivenCoordinatesWhereTheseAreComputed)
{
    const std::string head = run(2, "[sigma]\ndistances = 0.003\ndirections = 0.001\ncentring_target = 0.02\n"
                                    "centring_instrument = 0.01\n"),
                      fixed = "targets = '''\nname x y code\nA 0 0 fixed\nB 1000 0 fixed\n'''\n",
                      sights = "distances = '''\nfrom to value\nS A 500\nS B 806.226\n'''\n"
                               "directions = '''\nfrom to value\nS A 0\nS B 107.9167\n'''\n";
    const auto station = [&](const char *xy) {
        return "[tables]\nstations = '''\nname x y code\nS " + std::string(xy) + " free\n'''\n";
    };
    const SolvedNetwork given = solve_text(head + station("300 400") + fixed + sights),
                        computed = solve_text(head + station("- -") + fixed + sights);
    ASSERT_TRUE(given.adjusted() && computed.adjusted()) << given.words() << computed.words();
    for (int i = 0; i < 2; i++) {
        EXPECT_NEAR(sigma_of(computed, "distance", i) / sigma_of(given, "distance", i), 1.0, 1e-4);
        EXPECT_NEAR(sigma_of(computed, "direction", i) / sigma_of(given, "direction", i), 1.0, 1e-3);
    }
    EXPECT_GT(sigma_of(given, "distance"), 0.02);
}

// Heights act on a level sight by their error over its length.
TEST(Centring, TakesHeightsIntoVerticalAngles)
{
    const SolvedNetwork solved =
        solve_text(run(3, "[sigma]\nvertical_angles = 0.001\nheight_instrument = 0.003\nheight_target = 0.004\n"
                          "centring_target = 0.1\n") +
                   "[tables]\nstations = '''\nname x y z code\nA 0 0 0 fixed\n'''\n"
                   "targets = '''\nname x y z code_x code_y\nP 200 0 0 fixed fixed\n'''\n"
                   "vertical_angles = '''\nfrom to value\nA P 100\nA P 100.001\n'''\n");
    EXPECT_NEAR(sigma_of(solved, "vertical angle"), std::hypot(0.001 * gon, 0.005 / 200), 1e-14);
}

// The closed formula holds at coordinates that the program found by itself too.
TEST(Centring, CountsWhereFirstCoordinatesAreComputed)
{
    const SolvedNetwork solved =
        solve_text(run(3, "[sigma]\nvertical_angles = 0.001\nheight_instrument = 0.003\nheight_target = 0.004\n") +
                   "[tables]\nstations = '''\nname x y z code\nA 0 0 0 fixed\nB 0 100 0 fixed\n'''\n"
                   "targets = '''\nname\nP\n'''\ndistances = '''\nfrom to value sigma\nA P 200 0.001\n'''\n"
                   "directions = '''\nfrom to value sigma\nA B 0 0.001\nA P 300 0.001\n'''\n"
                   "vertical_angles = '''\nfrom to value\nA P 100\nA P 100.001\n'''\n");
    EXPECT_NEAR(sigma_of(solved, "vertical angle"), std::hypot(0.001 * gon, 0.005 / 200), 1e-9);
}

TEST(Centring, IsRefusedByTheEngine)
{
    const SolvedNetwork solved = solve_text(run(2, "[sigma]\ndistances = 0.003\ncentring_target = 0.001\n") + plane +
                                                "distances = '''\nfrom to value\nP A 500\nP B 806.226\n'''\n",
                                            Solver::Compact);
    EXPECT_EQ(solved.words(), "the engine does not take centring in [sigma] (net.inp): choose the solver sparse\n");
}

// ---- readings ----

TEST(Readings, OfTheSecondFaceAreThoseOfTheFirst)
{
    const std::string head = "[units]\nvertical = \"";
    const std::string points = "\"\n[tables]\nstations = '''\nname x y z code\nA 0 0 0 fixed\n'''\n"
                               "targets = '''\nname x y z code\nB 100 0 5 fixed\nP 60 80 7 free\n'''\n"
                               "distances = '''\nfrom to value sigma\nA P 100.25 0.001\n'''\n";
    const auto solved = [&](const char *vertical, const std::string &direction, const std::string &angle) {
        return solve_text(run(3, head + vertical) + points +
                          "directions = '''\nfrom to value sigma face\nA B 0 0.001 1\n" + direction +
                          "'''\nvertical_angles = '''\nfrom to value sigma face\n" + angle + "'''\n");
    };
    const std::string more = "A B 96.819 0.001 1\n";
    const SolvedNetwork first = solved("zenith", "A P 59.033 0.001 1\n", "A P 95.551 0.001 1\nA P 95.55 0.001 -\n");
    const SolvedNetwork second = solved("zenith", "A P 259.033 0.001 2\n", "A P 304.449 0.001 2\nA P 95.55 0.001 1\n");
    expect_same(first, second);
    const auto directions = residuals_of(second, "direction"), angles = residuals_of(second, "vertical angle");
    ASSERT_TRUE(directions[1].raw && angles[0].raw);
    EXPECT_FALSE(directions[0].raw.has_value());
    EXPECT_NEAR(*directions[1].raw, 259.033 * gon, 1e-12);
    EXPECT_NEAR(directions[1].value, 59.033 * gon, 1e-12);
    EXPECT_NEAR(*angles[0].raw, (100 - 304.449) * gon, 1e-12);
    EXPECT_NEAR(angles[0].value, (100 - 95.551) * gon, 1e-12);
    expect_same(first, solved("elevation", "A P 259.033 0.001 2\n", "A P 195.551 0.001 2\nA P 4.45 0.001 1\n"));
    EXPECT_NE(second.report.find("304.44900"), std::string::npos) << second.report;
}

// 1000 m less 20 ppm and less a prism of 34.4 mm.
TEST(Readings, OfDistancesAreReducedByAtmosphereAndPrism)
{
    const std::string rows = "distances = '''\nfrom to value sigma atmosphere prism\nA P 1000.001 0.002 - -\n"
                             "B P 1000.001 0.002 0 0\nB P 1000 0.002 5 -\n'''\n";
    const SolvedNetwork solved = solve_text(run(2, "[reductions]\natmosphere = -20\nprism = -0.0344\n") +
                                            with(plane, "P 300 400 free", "P 500 866 free") + rows);
    const auto distances = residuals_of(solved, "distance");
    ASSERT_EQ(distances.size(), 3u) << solved.words();
    EXPECT_NEAR(distances[0].value, 1000.001 * (1 - 20e-6) - 0.0344, 1e-9);
    EXPECT_NEAR(*distances[0].raw, 1000.001, 1e-9);
    EXPECT_NEAR(distances[1].value, 1000.001, 1e-9);
    EXPECT_FALSE(distances[1].raw.has_value());
    EXPECT_NEAR(distances[2].value, 1000 * (1 + 5e-6) - 0.0344, 1e-9);
}

TEST(Readings, BetweenAntennasBecomeBaselinesBetweenMarks)
{
    const std::string points = "[tables]\ntargets = '''\nname x y z code\nA 0 0 0 fixed\nB 100 0 0 free\n'''\n";
    const SolvedNetwork solved =
        solve_text(run(3) + points +
                   "baselines = '''\nfrom to dx dy dz cxx cyy czz h1 h2\n"
                   "A B 100.01 0 0.5 1e-6 4e-6 9e-6 1.5 1.8\nA B 100 0 0.2 1e-6 4e-6 9e-6 - -\n'''\n");
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    const auto rows = residuals_of(solved, "baseline");
    EXPECT_NEAR(rows[2].value, 0.2, 1e-12);
    EXPECT_NEAR(*rows[2].raw, 0.5, 1e-12);
    EXPECT_FALSE(rows[5].raw.has_value());
    EXPECT_NEAR(*solved.point("B").adjusted[2], 0.2, 1e-12);
}

TEST(Readings, MayBeOpenInAPlanOnly)
{
    const std::string rows = "distances = '''\nfrom to value sigma\nA P - 0.003\nB P - 0.003\n'''\n"
                             "directions = '''\nfrom to value sigma\nA B - 0.001\nA P - 0.001\n'''\n";
    const std::string plan = with(run(2), "dimension = 2", "dimension = 2\nmode = \"propagation\"") + plane + rows;
    const SolvedNetwork planned = solve_text(plan);
    ASSERT_TRUE(planned.adjusted()) << planned.words();
    EXPECT_TRUE(planned.point("P").deviation[0].has_value());
    EXPECT_EQ(faults_of(run(2) + plane + rows).size(), 4u);
    vornhost::Model model = model_of(plan);
    model.mode = Mode::Statistics; // as the command line may ask
    EXPECT_NE(solve(model).words().find("a value is not known"), std::string::npos);
}
