// Levelling networks of many points, from their files to their results: a line between two
// bench marks, whose adjustment has a closed formula, and a grid observed without errors, whose
// heights are the true ones.

#include <gtest/gtest.h>
#include <math.h>
#include <stdio.h>

#include <random>
#include <string>
#include <vector>

#include "host/adjusted.h"

using namespace vornhost;

namespace {

// Tables of a network of heights with first values that are some centimetres off.
class HeightNetwork {
public:
    HeightNetwork() : targets("name z code\n"), lines("from to value sigma\n") {}

    void point(int i, double height, bool fixed)
    {
        const double off = fixed ? 0.0 : 0.01 * (i % 7 - 3);
        add(targets, "P%d %.6f %s\n", i, height + off, fixed ? "fixed" : "free");
    }
    void line(int from, int to, double value, double sigma)
    {
        add(lines, "P%d P%d %.6f %.6f\n", from, to, value, sigma);
    }
    std::string file() const
    {
        return "[run]\ndimension = 1\nmode = \"solution\"\n[tables]\ntargets = \"\"\"\n" + targets +
               "\"\"\"\nheight_differences = \"\"\"\n" + lines + "\"\"\"\n";
    }

private:
    template <class... Values> static void add(std::string &table, const char *format, Values... values)
    {
        char row[120];
        snprintf(row, sizeof row, format, values...);
        table += row;
    }
    std::string targets, lines;
};

// Adjusted heights in the order of the file.
std::vector<double> adjusted(const HeightNetwork &network)
{
    Model model = model_of(network.file());
    const Results results = adjusted_results(model);
    std::vector<double> heights;
    for (const PointResult &p : results.points) heights.push_back(p.adjusted[2].value_or(NAN));
    return heights;
}

double largest_difference(const std::vector<double> &a, const std::vector<double> &b)
{
    if (a.size() != b.size()) return INFINITY;
    double most = 0.0;
    for (size_t i = 0; i < a.size(); i++) most = fabs(a[i] - b[i]) <= most ? most : fabs(a[i] - b[i]);
    return most;
}

double six_digits(double value) { return round(value * 1e6) / 1e6; }

// A square grid with one bench mark; returns the true heights.
std::vector<double> make_grid(HeightNetwork &network, int side, double noise)
{
    std::mt19937 random(2);
    std::uniform_real_distribution<double> height(400.0, 450.0);
    std::normal_distribution<double> error(0.0, 0.001);
    std::vector<double> truth;
    for (int i = 0; i < side * side; i++) {
        truth.push_back(six_digits(height(random)));
        network.point(i, truth[i], i == 0);
    }
    const auto observe = [&](int i, int k) { network.line(i, k, truth[k] - truth[i] + noise * error(random), 0.001); };
    for (int i = 0; i < side * side; i++) {
        if (i % side != side - 1) observe(i, i + 1);
        if (i + side < side * side) observe(i, i + side);
    }
    return truth;
}

} // namespace

// A line of levelling between two bench marks shares its misclosure out in proportion to the
// squared standard deviations. The rounding of observed less computed, 1e-13 m at heights of some
// hundred metres, adds up along the line to 5e-9 m at most.
TEST(LargeNetwork, ALineOfFiftyThousandPointsSharesItsMisclosureOut)
{
    const int n = 50000; // unknowns
    std::mt19937 random(1);
    std::uniform_real_distribution<double> step(-20.0, 20.0), deviation(0.0005, 0.002);
    std::normal_distribution<double> noise;

    std::vector<double> wanted = {500.0}, variance = {0.0}; // carried along the line
    HeightNetwork network;
    double end = wanted[0];
    for (int i = 1; i <= n + 1; i++) {
        const double dh = six_digits(step(random)), sigma = six_digits(deviation(random));
        const double value = six_digits(dh + sigma * noise(random));
        network.line(i - 1, i, value, sigma);
        wanted.push_back(wanted.back() + value);
        variance.push_back(variance.back() + sigma * sigma);
        end += dh;
    }
    const double misclosure = six_digits(end) - wanted.back();
    for (int i = 0; i <= n + 1; i++) wanted[i] += misclosure * variance[i] / variance.back();
    for (int i = 0; i <= n + 1; i++) network.point(i, wanted[i], i == 0 || i == n + 1);

    EXPECT_GT(fabs(misclosure), 0.01);
    EXPECT_LT(largest_difference(adjusted(network), wanted), 5e-9);
}

// A path to the bench mark has some 200 lines, whose rounding is 1e-13 m each.
TEST(LargeNetwork, AGridOfTenThousandPointsWithoutErrorsGivesItsTrueHeights)
{
    HeightNetwork network;
    const std::vector<double> truth = make_grid(network, 100, 0.0);
    EXPECT_LT(largest_difference(adjusted(network), truth), 2e-11);
}

TEST(LargeNetwork, AGridGivesTheSameBitsAgain)
{
    HeightNetwork network;
    make_grid(network, 100, 1.0);
    EXPECT_TRUE(adjusted(network) == adjusted(network));
}
