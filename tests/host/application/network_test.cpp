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
    options.report = options.json = true;
    const Result good = network.adjust(options);
    read_text("nonsense");
    std::string engine = levelling("free");
    engine.replace(engine.find("dimension"), 0, "solver = \"compact\"\n");
    const Result bad = network_of(engine).adjust(options);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(std::filesystem::is_empty(std::filesystem::current_path()));
    EXPECT_NE(good.report, "");
    EXPECT_EQ(good.json[0], '{');
    EXPECT_NE(bad.report, "");
}
