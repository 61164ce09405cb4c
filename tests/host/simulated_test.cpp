// Simulated networks are recovered within their noise: the examples, whose true values stand
// in their comments, and blocks of images that are made here.

#include <gtest/gtest.h>

#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include <map>
#include <random>

#include "host/adjusted.h"

using namespace vornhost;

namespace {

struct Listener : Feedback {
    void feedback(char *line) override
    {
        const std::string text = line;
        const size_t at = text.find("Sigma a posteriori");
        if (at != std::string::npos) sigma = strtod(text.c_str() + at + 18, nullptr);
    }
    int decision(char *, char *) override { return 0; }
    double sigma = NAN; // a-posteriori sigma
};

using Points = std::map<std::string, std::vector<double>>; // true coordinates by name

// Adjusts the network in the folder or file and hands its results over.
Results adjusted(Model &model, double *sigma = nullptr)
{
    Listener listener;
    Results results = adjusted_results(model, listener);
    if (sigma) *sigma = listener.sigma;
    return results;
}

// Errors divided by their standard deviations, of all free coordinates of the points.
std::vector<double> normalised_errors(const Results &results, const Points &truth)
{
    std::vector<double> errors;
    for (const PointResult &p : results.points) {
        const auto found = truth.find(p.name);
        if (found == truth.end()) continue;
        for (size_t c = 0; c < found->second.size(); c++) {
            const double sigma = p.deviation[c].value_or(0.0);
            if (p.code[c] != "free") continue;
            EXPECT_GT(sigma, 0.0) << p.name;
            errors.push_back((p.adjusted[c].value_or(NAN) - found->second[c]) / sigma);
        }
    }
    return errors;
}

double mean_square(const std::vector<double> &values)
{
    double sum = 0.0;
    for (const double v : values) sum += v * v;
    return sum / (double)values.size();
}

struct Example {
    const char *file;
    Points truth;
};

class SimulatedExample : public testing::TestWithParam<Example> {};

} // namespace

// Four standard deviations: one coordinate in 16,000 lies beyond.
TEST_P(SimulatedExample, GivesTheTrueCoordinatesWithinTheirPrecision)
{
    Model model;
    Faults faults;
    const std::string path = std::string(SOURCE_DIR "/examples/") + GetParam().file + ".inp";
    ASSERT_TRUE(read_network(path, model, faults)) << faults.lines()[0];
    const std::vector<double> errors = normalised_errors(adjusted(model), GetParam().truth);
    ASSERT_FALSE(errors.empty());
    for (const double e : errors) EXPECT_LT(fabs(e), 4.0);
}

INSTANTIATE_TEST_SUITE_P(Examples, SimulatedExample,
                         testing::Values(Example{"total_station_heights",
                                                 {{"S3", {178.220, 431.905, -4.118}},
                                                  {"A", {-92.470, 214.660, 21.036}},
                                                  {"B", {268.115, -143.270, 12.480}},
                                                  {"C", {520.405, 352.190, 31.954}},
                                                  {"D", {231.800, 190.345, 2.207}}}},
                                         Example{"instrument_constants",
                                                 {{"N1", {1205.417, 1248.930}}, {"N2", {1440.128, 1310.662}}}},
                                         Example{"mixed_fixed_heights",
                                                 {{"M1", {599789.566, 200402.118, 455.302}},
                                                  {"M2", {600904.226, 199311.663, 463.915}},
                                                  {"N1", {598711.295, 199059.438, 530.118}}}},
                                         Example{"photo_block",
                                                 {{"P02", {-10.334, -2.799, 0.197}},
                                                  {"P20", {-0.757, 6.648, 1.707}},
                                                  {"P39", {10.364, 3.128, 0.060}}}}),
                         [](const testing::TestParamInfo<Example> &p) { return std::string(p.param.file); });

TEST(SimulatedExamples, GiveTheConstantsOfTheDistanceMeter)
{
    Model model;
    Faults faults;
    ASSERT_TRUE(read_network(SOURCE_DIR "/examples/instrument_constants.inp", model, faults));
    const Results results = adjusted(model);
    ASSERT_EQ(results.groups.size(), 1u);
    EXPECT_NEAR(results.groups[0].value[0].value_or(0.0), -0.0343, 4 * 0.0008); // eight distances of 1 mm
    EXPECT_NEAR(results.groups[0].value[1].value_or(0.0), 1.000028, 4 * 2.5e-6);
}

TEST(SimulatedExamples, KeepAFixedHeight)
{
    Model model;
    Faults faults;
    ASSERT_TRUE(read_network(SOURCE_DIR "/examples/mixed_fixed_heights.inp", model, faults));
    const Results results = adjusted(model);
    EXPECT_EQ(results.points[0].name, "M1");
    EXPECT_NEAR(results.points[0].adjusted[2].value_or(0.0), 455.302, 1e-4); // 1 m of position, 450 m from the origin
}

namespace {

// A camera in pixels; distortions are those of the engine's model.
struct Camera {
    double c = 5850.0, x0 = 12.0, y0 = -8.0, k1 = -2.0e-9;
};

struct Exposure {
    double x[3], angle[3];
};

// A block of eight images, 48 points on a wavy ground and six of them known.
class Block {
public:
    explicit Block(unsigned seed) : random(seed)
    {
        for (int i = 0; i < 8; i++)
            for (int j = 0; j < 6; j++)
                ground.push_back({-14.0 + 4.0 * i + about(1.0), -10.0 + 4.0 * j + about(1.0), 1.5 + about(1.5)});
        for (int i = 0; i < 8; i++) {
            const double x = -12.0 + 8.0 * (i % 4), y = i < 4 ? -6.0 : 6.0;
            const double turn = 0.5 * M_PI * i;
            exposures.push_back({{x + about(0.5), y + about(0.5), 30.0 + about(0.5)},
                                 {y / 25.0 + about(0.03), -x / 35.0 + about(0.03), turn}});
        }
    }

    // The network with image files of the given noise in pixels.
    void write(const Folder &folder, const Camera &camera, double noise, bool calibrate)
    {
        std::string text = "[run]\ndimension = 3\n[tables]\ncameras = '''\n"
                           "name width height pu pv c x0 y0 k1 code_c code_x0 code_y0 code_k1\n";
        text += calibrate ? "cam 6000 4000 1 1 5800 0 0 0 free free free free\n"
                          : row("cam 6000 4000 1 1 %.17g %.17g %.17g %.17g fixed fixed fixed fixed\n", camera.c,
                                camera.x0, camera.y0, camera.k1);
        text += "'''\nimages = '''\nfile station camera\n";
        for (size_t i = 0; i < exposures.size(); i++)
            text += "i" + std::to_string(i) + ".txt C" + std::to_string(i) + " cam\n";
        text += "'''\nstations = '''\nname x y z rx1 rx2 rx3 levelled\n";
        for (size_t i = 0; i < exposures.size(); i++) text += "C" + std::to_string(i) + start(exposures[i]);
        text += "'''\ntargets = '''\nname x y z code\n";
        for (size_t p = 0; p < ground.size(); p++) text += name(p) + coordinates(p);
        folder.write("net.inp", text + "'''\n");
        for (size_t i = 0; i < exposures.size(); i++)
            folder.write("i" + std::to_string(i) + ".txt", image(exposures[i], camera, noise));
    }

    Points truth() const
    {
        Points points;
        for (size_t p = 0; p < ground.size(); p++) points[name(p)] = ground[p];
        return points;
    }

private:
    static constexpr bool known(size_t p) { return p % 9 == 0; }
    static std::string name(size_t p) { return "P" + std::to_string(p); }
    double about(double width) { return std::uniform_real_distribution<double>(-width, width)(random); }

    template <class... Values> static std::string row(const char *format, Values... values)
    {
        char text[300];
        snprintf(text, sizeof text, format, values...);
        return text;
    }

    std::string start(const Exposure &e)
    {
        const double gon = 200.0 / M_PI;
        return row(" %.3f %.3f %.3f %.4f %.4f %.4f no\n", e.x[0] + about(0.2), e.x[1] + about(0.2), e.x[2] + about(0.2),
                   e.angle[0] * gon + about(1.0), e.angle[1] * gon + about(1.0), e.angle[2] * gon + about(1.0));
    }

    std::string coordinates(size_t p)
    {
        const std::vector<double> &x = ground[p];
        if (known(p)) return row(" %.17g %.17g %.17g fixed\n", x[0], x[1], x[2]);
        return row(" %.2f %.2f %.2f free\n", x[0] + about(0.2), x[1] + about(0.2), x[2] + about(0.2));
    }

    // The camera looks along its negative third axis. The line of sight turns into its frame
    // about the first, then the second, then the third axis.
    std::string image(const Exposure &e, const Camera &camera, double noise)
    {
        std::normal_distribution<double> error(0.0, 1.0);
        std::string text;
        for (size_t p = 0; p < ground.size(); p++) {
            double d[3];
            for (size_t k = 0; k < 3; k++) d[k] = ground[p][k] - e.x[k];
            turn(d, 1, 2, e.angle[0]);
            turn(d, 2, 0, e.angle[1]);
            turn(d, 0, 1, e.angle[2]);
            const double x = -camera.c * d[0] / d[2], y = -camera.c * d[1] / d[2], r2 = x * x + y * y;
            const double u = 3000.0 - (x * (1.0 + camera.k1 * r2) + camera.x0);
            const double v = 2000.0 - (y * (1.0 + camera.k1 * r2) + camera.y0);
            if (u > 0.0 && u < 6000.0 && v > 0.0 && v < 4000.0)
                text +=
                    row("%-8s %.17g %.17g\n", name(p).c_str(), u + noise * error(random), v + noise * error(random));
        }
        return text;
    }

    // Turns a vector by the angle, from axis i towards axis j.
    static void turn(double d[3], int i, int j, double angle)
    {
        const double a = d[i] * cos(angle) - d[j] * sin(angle), b = d[j] * cos(angle) + d[i] * sin(angle);
        d[i] = a;
        d[j] = b;
    }

    std::mt19937 random;
    std::vector<std::vector<double>> ground;
    std::vector<Exposure> exposures;
};

Results block_results(unsigned seed, double noise, bool calibrate, double *sigma)
{
    Block block(seed);
    Folder folder;
    block.write(folder, Camera(), noise, calibrate);
    EXPECT_EQ(folder.read(), Lines());
    return adjusted(folder.model, sigma);
}

} // namespace

class PhotoBlock : public testing::TestWithParam<bool> {}; // with free inner parameters

// Convergence ends at 1e-6 m; what is left is below that.
TEST_P(PhotoBlock, WithoutNoiseGivesTheTrueCoordinates)
{
    double sigma = NAN;
    const Results results = block_results(1, 0.0, GetParam(), &sigma);
    const Points truth = Block(1).truth();
    for (const PointResult &p : results.points) {
        if (p.station) continue;
        for (size_t c = 0; c < 3; c++) EXPECT_NEAR(p.adjusted[c].value_or(NAN), truth.at(p.name)[c], 1e-6) << p.name;
    }
    EXPECT_LT(sigma, 1e-3);
}

// The mean of some 120 squared normalised errors, correlated in part: within a half of 1.
TEST_P(PhotoBlock, IsRecoveredWithinItsNoise)
{
    for (unsigned seed = 1; seed <= 5; seed++) {
        double sigma = NAN;
        const Results results = block_results(seed, 0.3, GetParam(), &sigma);
        const std::vector<double> errors = normalised_errors(results, Block(seed).truth());
        ASSERT_EQ(errors.size(), 3u * 42u);
        for (const double e : errors) EXPECT_LT(fabs(e), 4.5);
        EXPECT_NEAR(mean_square(errors), 1.0, 0.5);
        EXPECT_NEAR(sigma, 0.3, 0.03);
    }
}

INSTANTIATE_TEST_SUITE_P(Cameras, PhotoBlock, testing::Bool(), [](const testing::TestParamInfo<bool> &p) {
    return std::string(p.param ? "calibrated" : "known");
});

// The engine counts a line by its name and takes it by its numbers.
TEST(PhotoBlocks, StandALineThatIsCountedAndNotRead)
{
    for (const Mode mode : {Mode::Solution, Mode::Statistics}) {
        Folder folder;
        Block(1).write(folder, Camera(), 0.3, false);
        folder.write("i0.txt", file_text(folder.file("i0.txt")) + "P1       one two\n");
        ASSERT_EQ(folder.read(), Lines());
        folder.model.mode = mode;
        folder.model.p.idebug = 1;
        folder.model.solver = mode == Mode::Solution ? Solver::Jordan : Solver::Compact;
        EXPECT_TRUE(adjusted(folder.model).adjusted);
    }
}
