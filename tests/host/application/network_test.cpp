// Networks of applications: what the public header promises.

#include "vorn/network.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "support/workfolder.h"

using namespace vornapi;

namespace {

const std::string example = SOURCE_DIR "/examples/strang_borre_distances_free.inp";

// Heights of a levelled triangle with a misclosure of 3 mm: N = [2 -1; -1 2] / sigma^2, v = 1 mm each, so that the
// cofactors are sigma^2 / 3 [2 1; 1 2] and the variance factor is 3.
std::string levelling(const std::string &code = "fixed")
{
    return "[run]\ntitle = \"Triangle\"\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 100 " + code +
           "\nB 101.2 free\nC 103.5 free\n'''\nheight_differences = '''\nfrom to value sigma\nA B 1.234 0.001\n"
           "B C 2.221 0.001\nC A -3.452 0.001\n'''\n";
}

Network network_of(const std::string &text)
{
    Reading reading = read_text(text);
    for (const Fault &fault : reading.faults) ADD_FAILURE() << fault.text();
    return reading.network.value();
}

// The same triangle as arrays.
Arrays levelling_arrays()
{
    Arrays arrays;
    arrays.settings = "[run]\ntitle = \"Triangle\"\ndimension = 1";
    arrays.tables = {
        {"targets", {{"name", {}, {"A", "B", "C"}}, {"z", {100, 101.2, NAN}, {}}, {"code", {}, {"fixed", "", "free"}}}},
        {"height_differences",
         {{"from", {}, {"A", "B", "C"}},
          {"to", {}, {"B", "C", "A"}},
          {"value", {1.234, 2.221, -3.452}, {}},
          {"sigma", {0.001, 0.001, 0.001}, {}}}}};
    return arrays;
}

std::string only_fault(const Reading &reading)
{
    EXPECT_FALSE(reading.network);
    return reading.faults.size() == 1 ? reading.faults[0].text() : std::to_string(reading.faults.size()) + " faults";
}

Network example_named(const std::string &name)
{
    return read_file(SOURCE_DIR "/examples/" + name + ".inp").network.value();
}

// Sum of the squares of all standardised residuals, and the degrees of freedom, over draws of a network.
struct Squares {
    double sum = 0, freedom = 0;
};

Squares squares_of_draws(const Network &network, int draws)
{
    Squares squares;
    for (int seed = 1; seed <= draws; seed++) {
        const Result result = network.simulate((std::uint64_t)seed).network.value().adjust();
        if (!result.adjusted()) ADD_FAILURE() << result.faults.at(0).text();
        const double f = result.degrees_of_freedom.value_or(0), s = result.sigma_aposteriori.value_or(0);
        squares.sum += f * s * s;
        squares.freedom += f;
    }
    return squares;
}

} // namespace

TEST(ApplicationNetwork, GivesThePublishedCoordinates)
{
    const Reading reading = read_file(example);
    ASSERT_TRUE(reading.network && reading.faults.empty());
    EXPECT_EQ(reading.network->title(), "Free network of distances");
    EXPECT_EQ(reading.network->points(), 4);
    const Result result = reading.network->adjust();
    ASSERT_TRUE(result.adjusted());
    const double wanted[4][2] = {
        {170.71227, 170.71853}, {170.70320, 270.72133}, {99.99121, 99.99714}, {241.43332, 99.98300}};
    ASSERT_EQ(result.points.size(), 4u);
    for (size_t i = 0; i < 4; i++)
        for (size_t k = 0; k < 2; k++) EXPECT_NEAR(result.points[i].adjusted[k].value(), wanted[i][k], 6e-6);
    EXPECT_FALSE(result.points[0].adjusted[2]);
    EXPECT_EQ(result.point("2"), &result.points[2]);
    EXPECT_EQ(result.point("5"), nullptr);
    EXPECT_EQ(result.residuals.size(), 6u);
    EXPECT_EQ(result.residuals[0].line > 0 ? result.residuals[0].file : "", example);
}

// Each redundancy is 1/3: w is root 3, and the detectable error delta sigma root 3, of which two thirds go to the
// height of B; delta is the normal limit of 0.001 and that of a power of 0.80.
TEST(ApplicationNetwork, TellsWhatTheTestOfAnObservationFinds)
{
    const double delta = 3.290526731 + 0.841621234;
    const Result result = network_of(levelling()).adjust();
    const Residual &r = result.residuals[0];
    EXPECT_TRUE(r.checked.value());
    EXPECT_FALSE(r.suspicious);
    EXPECT_NEAR(r.p_value.value(), std::erfc(std::sqrt(1.5)), 1e-9);
    EXPECT_NEAR(r.detectable.value(), 0.001 * delta * std::sqrt(3.0), 1e-11);
    EXPECT_NEAR(r.bias_to_noise.value(), delta * std::sqrt(2.0), 1e-8);
    EXPECT_NEAR(r.shift.value(), 0.001 * delta * std::sqrt(3.0) * 2 / 3, 1e-11);
}

TEST(ApplicationNetwork, GivesCovariancesOfAnyPairWithTheVarianceFactor)
{
    Options options;
    options.covariances = {"C", "A", "nobody", "B", "C"};
    const Result result = network_of(levelling()).adjust(options);
    ASSERT_TRUE(result.adjusted());
    EXPECT_NEAR(result.sigma_aposteriori.value(), std::sqrt(3.0), 1e-9);
    EXPECT_EQ(result.covariance_points, (std::vector<std::string>{"C", "A", "B"}));
    const double bb = result.covariance("B", "B").value()[8], bc = result.covariance("B", "C").value()[8];
    EXPECT_NEAR(bb, 2e-6, 1e-14);
    EXPECT_NEAR(bc, 1e-6, 1e-14);
    EXPECT_EQ(result.covariance("C", "B").value()[8], bc);
    EXPECT_NEAR(std::sqrt(bb), result.point("B")->deviation[2].value(), 1e-12);
    EXPECT_EQ(result.covariance("A", "B").value(), Covariance{});
    EXPECT_FALSE(result.covariance("B", "nobody"));
    EXPECT_FALSE(network_of(levelling()).adjust().covariance("B", "C"));
}

TEST(ApplicationNetwork, GivesTheTransposedBlockForPointsInTurn)
{
    Options options;
    options.covariances = {"P", "1", "3"};
    const Result result = read_file(example).network->adjust(options);
    const Covariance forth = result.covariance("P", "3").value(), back = result.covariance("3", "P").value();
    bool zero = true;
    for (size_t a = 0; a < 3; a++)
        for (size_t b = 0; b < 3; b++) {
            EXPECT_DOUBLE_EQ(forth[3 * a + b], back[3 * b + a]);
            zero = zero && forth[3 * a + b] == 0.0;
        }
    EXPECT_FALSE(zero);
    EXPECT_NE(forth[1], forth[3]);
}

TEST(ApplicationNetwork, NamesThePlaceOfEveryFault)
{
    std::string text = levelling();
    text.replace(text.find("= 1"), 3, "= 4\ntitel = 1");
    const Reading reading = read_text(text, "some.inp");
    EXPECT_FALSE(reading.network);
    ASSERT_EQ(reading.faults.size(), 2u);
    EXPECT_EQ(reading.faults[0].file, "some.inp");
    EXPECT_EQ(reading.faults[0].line, 3);
    EXPECT_EQ(reading.faults[0].column, 13);
    EXPECT_EQ(reading.faults[1].line, 4);
    EXPECT_EQ(reading.faults[1].text().rfind("some.inp:4:1: ", 0), 0u) << reading.faults[1].text();
    const Reading missing = read_file("/nowhere/net.inp");
    ASSERT_EQ(missing.faults.size(), 1u);
    EXPECT_EQ(missing.faults[0].line, 0);
}

TEST(ApplicationNetwork, SaysInASentenceWhyItWasNotAdjusted)
{
    const std::string open =
        "[run]\ndimension = 2\n[tables]\ntargets = '''\nname x y code\nA 0 0 fixed\nB 10 0 free\nC 5 5 free\n"
        "'''\ndistances = '''\nfrom to value sigma\nA B 10 0.001\nA C 7 0.001\n'''\n";
    const Result result = network_of(open).adjust();
    EXPECT_EQ(result.outcome, Outcome::refused);
    ASSERT_FALSE(result.faults.empty());
    EXPECT_NE(result.faults[0].sentence.find("C can move"), std::string::npos) << result.faults[0].text();
}

TEST(ApplicationNetwork, ReadsStreamsAndFilesBesideTheName)
{
    std::istringstream text(levelling());
    EXPECT_TRUE(read_stream(text).network->adjust().adjusted());
    const std::string path = SOURCE_DIR "/examples/photo_block.inp";
    std::ifstream file(path);
    const Reading reading = read_stream(file, path);
    ASSERT_TRUE(reading.network);
    const WorkFolder elsewhere;
    const Result streamed = reading.network->adjust(), read = read_file(path).network->adjust();
    ASSERT_TRUE(streamed.adjusted());
    EXPECT_EQ(streamed.point("P10")->adjusted, read.point("P10")->adjusted);
}

TEST(ApplicationNetwork, StaysAsItWasRead)
{
    const Network network = read_file(SOURCE_DIR "/examples/gross_error.inp").network.value();
    const Network copy = network;
    const Result first = network.adjust(), second = network.adjust(), third = copy.adjust();
    ASSERT_TRUE(first.adjusted());
    for (size_t i = 0; i < first.points.size(); i++) {
        EXPECT_EQ(first.points[i].adjusted, second.points[i].adjusted);
        EXPECT_EQ(first.points[i].adjusted, third.points[i].adjusted);
        EXPECT_EQ(first.points[i].approximate, second.points[i].approximate);
    }
    EXPECT_EQ(first.residuals.size(), second.residuals.size());
}

TEST(ApplicationNetwork, MayBeAdjustedInSeveralThreadsAtOnce)
{
    const Network network = network_of(levelling());
    std::vector<Result> results(8);
    std::vector<std::thread> threads;
    for (Result &result : results)
        threads.emplace_back([&] {
            Options options;
            options.report = true;
            result = network.adjust(options);
        });
    for (std::thread &thread : threads) thread.join();
    for (const Result &result : results) {
        ASSERT_TRUE(result.adjusted());
        EXPECT_EQ(result.point("C")->adjusted, results[0].point("C")->adjusted);
        EXPECT_NE(result.report.find("Verdict"), std::string::npos);
    }
}

TEST(ApplicationNetwork, TellsItsProgressAndStopsWhenItIsAsked)
{
    std::vector<std::string> steps;
    double last = 0;
    bool ordered = true;
    Options options;
    options.progress = [&](const std::string &step, double share) {
        if (steps.empty() || steps.back() != step) {
            steps.push_back(step);
            last = 0;
        }
        ordered = ordered && share >= last && share <= 1;
        last = share;
    };
    const Network network = network_of(levelling());
    EXPECT_TRUE(network.adjust(options).adjusted());
    EXPECT_GE(steps.size(), 3u);
    EXPECT_TRUE(ordered);

    std::atomic<bool> cancel{false};
    options.progress = [&](const std::string &, double) { cancel = true; };
    options.cancel = &cancel;
    const Result result = network.adjust(options);
    EXPECT_EQ(result.outcome, Outcome::cancelled);
    EXPECT_TRUE(result.points.empty());
}

TEST(ApplicationNetwork, PrintsNothingAndLeavesNoFile)
{
    const WorkFolder folder;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const Network network = read_file(SOURCE_DIR "/examples/gross_error.inp").network.value();
    Options options;
    options.report = true;
    const Result good = network.adjust(options);
    read_text("nonsense");
    std::string engine = levelling("free");
    engine.replace(engine.find("dimension"), 0, "solver = \"compact\"\n");
    const Result bad = network_of(engine).adjust(options);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(std::filesystem::is_empty(std::filesystem::current_path()));
    EXPECT_NE(good.report, "");
    EXPECT_EQ(good.json()[0], '{');
    EXPECT_NE(good.page().find("<html"), std::string::npos);
    EXPECT_NE(bad.report, "");
}

TEST(ApplicationArrays, GiveTheNetworkOfTheSameText)
{
    const Reading reading = read_arrays(levelling_arrays());
    ASSERT_TRUE(reading.network) << reading.faults.at(0).text();
    EXPECT_EQ(reading.network->title(), "Triangle");
    EXPECT_EQ(reading.network->point_names(), (std::vector<std::string>{"A", "B", "C"}));
    const Result made = reading.network->adjust(), read = network_of(levelling()).adjust();
    ASSERT_TRUE(made.adjusted());
    EXPECT_NEAR(column(made.points, &Point::adjusted).at(5), read.point("B")->adjusted[2].value(), 1e-12);
    EXPECT_TRUE(std::isnan(column(made.points, &Point::adjusted)[4]));
    for (const double v : column(made.residuals, &Residual::residual)) EXPECT_NEAR(v, 0.001, 1e-12);
    EXPECT_EQ(made.residuals[2].file, "table height_differences");
    EXPECT_EQ(made.residuals[2].line, 3);
}

TEST(ApplicationArrays, KeepEveryBitOfNumbersAndEveryLetterOfNames)
{
    Arrays arrays = levelling_arrays();
    const std::string odd = "Punkt \\ \"\"\"'''# 1";
    arrays.tables[0].columns[0].words[1] = odd;
    arrays.tables[1].columns[0].words[1] = odd;
    arrays.tables[1].columns[1].words[0] = odd;
    const std::vector<double> values = {0.1 + 0.2, 1e-17, -1.0 / 3.0};
    arrays.tables[1].columns[2].numbers = values;
    const Reading reading = read_arrays(arrays);
    ASSERT_TRUE(reading.network) << reading.faults.at(0).text();
    const Result result = reading.network->adjust();
    EXPECT_EQ(column(result.residuals, &Residual::value), values);
    EXPECT_EQ(result.points[1].name, odd);
}

TEST(ApplicationArrays, NameTableAndRowOfEveryFault)
{
    const auto fault_with = [](const std::function<void(Arrays &)> &change) {
        Arrays arrays = levelling_arrays();
        change(arrays);
        return only_fault(read_arrays(arrays));
    };
    EXPECT_EQ(fault_with([](Arrays &a) {
                  a.tables[1].columns[1].words[1] = "D";
              }).rfind("table height_differences:2: unknown point \"D\" in column to", 0),
              0u);
    EXPECT_EQ(fault_with([](Arrays &a) {
                  a.tables[1].columns[2].numbers[2] = INFINITY;
              }).rfind("table height_differences:3: \"inf\"", 0),
              0u);
    EXPECT_EQ(fault_with([](Arrays &a) { a.tables[0].columns[0].words[1] = "B\nC"; }),
              "table targets:2: \"B\\x0AC\" in column name has a control character; write it without");
    EXPECT_EQ(fault_with([](Arrays &a) { a.tables[1].columns[2].numbers.pop_back(); }),
              "table height_differences: column value has 2 rows, column from 3; give all columns a value for every "
              "row");
    EXPECT_EQ(fault_with([](Arrays &a) { a.tables[1].columns[2].heading = "value sigma"; }),
              "table height_differences: \"value sigma\" is no name of a column");
    EXPECT_EQ(fault_with([](Arrays &a) { a.settings += "\nsigmma = 1"; }).rfind("network.inp:4:", 0), 0u);
}

// Two heights observed with the covariance c = [1 0.5; 0.5 2] mm2: the row sums of its inverse are as 1.5 to 0.5.
TEST(ApplicationArrays, TakeCovariancesThatRowsShare)
{
    const std::string name = "line \"1\"";
    Arrays arrays = levelling_arrays();
    arrays.tables = {{"targets", {{"name", {}, {"A", "B"}}, {"z", {100, 101}, {}}, {"code", {}, {"fixed", "free"}}}},
                     {"height_differences",
                      {{"from", {}, {"A", "A"}},
                       {"to", {}, {"B", "B"}},
                       {"value", {1.230, 1.234}, {}},
                       {"covariance", {}, {name, name}}}}};
    arrays.covariances = {{name, 2, {1e-6, 0.5e-6, 0.5e-6, 2e-6}}};
    const Reading reading = read_arrays(arrays);
    ASSERT_TRUE(reading.network) << reading.faults.at(0).text();
    EXPECT_NEAR(reading.network->adjust().point("B")->adjusted[2].value(), 100 + (1.5 * 1.230 + 0.5 * 1.234) / 2,
                1e-12);
    arrays.covariances[0].size = 3;
    EXPECT_EQ(only_fault(read_arrays(arrays)),
              "covariance line \"1\": the matrix has not size x size elements; give all, row by row");
}

TEST(ApplicationSimulation, WithoutNoiseGivesTheCoordinatesBack)
{
    for (const char *name : {"total_station_heights", "gnss_together", "baumann_zenith_angles", "rounds"}) {
        const Result result = example_named(name).simulate(1, 0.0).network.value().adjust();
        ASSERT_TRUE(result.adjusted()) << name;
        EXPECT_LT(result.sigma_aposteriori.value(), 1e-6) << name;
        const std::vector<double> adjusted = column(result.points, &Point::adjusted);
        const std::vector<double> given = column(result.points, &Point::approximate);
        for (size_t i = 0; i < adjusted.size(); i++) {
            if (!std::isnan(adjusted[i])) EXPECT_NEAR(adjusted[i], given[i], 1e-9) << name;
        }
    }
}

// The sum of squares is chi-squared with mean f and variance 2 f: within four standard deviations.
TEST(ApplicationSimulation, DrawsTheErrorsThatStandardDeviationsAndCovariancesSay)
{
    for (const char *name : {"gnss_together", "niemeier_distance_direction", "wolf_distances_vertical_angles"}) {
        const Squares s = squares_of_draws(example_named(name), 100);
        EXPECT_GT(s.freedom, 0) << name;
        EXPECT_NEAR(s.sum, s.freedom, 4 * std::sqrt(2 * s.freedom)) << name;
    }
}

// Weighted values that kept theirs would make the sum too small.
TEST(ApplicationSimulation, DrawsWeightedValuesToo)
{
    const Network network = network_of("[run]\ndimension = 2\n[units]\nlength = \"mm\"\n[tables]\nstations = '''\n"
                                       "name x y code sx sy orientation code_rx3 srx3 group\n"
                                       "A 0 0 weighted 3 3 10 weighted 0.01 g\n"
                                       "B 0 80000 weighted 3 3 - free - -\n'''\n"
                                       "targets = '''\nname x y code\nC 90000 40000 free\nD 70000 -9000 free\n'''\n"
                                       "groups = '''\nname additive s_additive code_additive\ng 5 2 weighted\n'''\n"
                                       "distances = '''\nfrom to value sigma constants\nA B 80000 1 yes\n"
                                       "A C 98000 1 yes\nA D 70000 1 yes\nB C 98000 1 no\nB D 110000 1 no\n'''\n"
                                       "directions = '''\nfrom to value sigma\nA B 0 0.002\nA C 0 0.002\nA D 0 0.002\n"
                                       "B A 0 0.002\nB C 0 0.002\n'''\n");
    const Squares s = squares_of_draws(network, 400);
    EXPECT_EQ(s.freedom, 400 * 5); // 10 rows and 6 weighted values; 8 coordinates, 2 orientations, a constant
    EXPECT_NEAR(s.sum, s.freedom, 4 * std::sqrt(2 * s.freedom));
}

TEST(ApplicationSimulation, TurnsAPlanIntoObservationsTheSameForEachSeed)
{
    const Network plan =
        network_of("[run]\ndimension = 2\nmode = \"propagation\"\n[tables]\ntargets = '''\n"
                   "name x y code\nA 0 0 fixed\nB 0 100 fixed\nP 30 40 free\n'''\n"
                   "distances = '''\nfrom to value sigma\nA P - 0.002\nB P - 0.002\nA P - 0.002\n'''\n");
    const auto values = [&](std::uint64_t seed, double noise) {
        return column(plan.simulate(seed, noise).network.value().adjust().residuals, &Residual::value);
    };
    const std::vector<double> exact = values(1, 0);
    EXPECT_NEAR(exact.at(0), 50, 1e-12);
    EXPECT_NEAR(exact.at(1), std::hypot(30, 60), 1e-12);
    EXPECT_EQ(values(7, 1), values(7, 1));
    EXPECT_NE(values(7, 1), values(8, 1));
}

TEST(ApplicationSimulation, RefusesWhatItCannotDraw)
{
    const auto refusal = [](const Network &network, double noise) { return only_fault(network.simulate(1, noise)); };
    std::string text = levelling();
    text.replace(text.find("101.2"), 5, "-");
    EXPECT_EQ(refusal(network_of(text), 1),
              "network.inp: point B has no coordinates (network.inp:8); a simulation needs those of every point");
    EXPECT_NE(refusal(network_of(levelling()), NAN).find("noise"), std::string::npos);
    EXPECT_NE(refusal(network_of(levelling()), -1).find("noise"), std::string::npos);
    EXPECT_NE(refusal(example_named("photo_block"), 1).find("image coordinates are not simulated"), std::string::npos);
    text = levelling();
    text.replace(text.find("dimension"), 0, "solver = \"compact\"\n");
    EXPECT_NE(refusal(network_of(text), 1).find("only networks of the solver sparse"), std::string::npos);
}
