// Examples of set-ups, angles, baselines observed together and levelling lines. Their numbers are those of a dense
// least-squares solution with difference quotients for derivatives, made outside this program; the true coordinates of
// the simulation lie within four standard deviations.

#include <cmath>
#include <map>
#include <vector>

#include "host/own/own_run.h"

using namespace vornhost;

namespace {

struct Worked {
    const char *file;
    int redundancy;
    double sigma;
    std::map<std::string, std::vector<double>> points, deviations, truth; // of the axes that the network has
};

const Worked worked[] = {
    {"rounds",
     13,
     1.319363262,
     {{"S", {249.998100271, 310.000633577}}},
     {{"S", {0.001549515563, 0.001557847686}}},
     {{"S", {250, 310}}}},
    {"angles",
     3,
     0.874080181,
     {{"1", {1119.998626916, 1129.999478569}},
      {"2", {1289.999359673, 1179.999775911}},
      {"3", {1420.001944316, 1330.001762965}}},
     {{"1", {0.002273036293, 0.002224133138}},
      {"2", {0.002833672825, 0.002735151374}},
      {"3", {0.002236184745, 0.002326368369}}},
     {{"1", {1120, 1130}}, {"2", {1290, 1180}}, {"3", {1420, 1330}}}},
    {"gnss_together",
     9,
     0.713683480,
     {{"P1", {2499.9992, 1200.00495, 35.0019}},
      {"P2", {-1800.0004, 2600.0001, -12.00835}},
      {"P3", {899.9974, -2099.99755, 59.9922}}},
     {{"P1", {0.00285473392, 0.00267035906, 0.00552816847}},
      {"P2", {0.00285473392, 0.00267035906, 0.00552816847}},
      {"P3", {0.00285473392, 0.00267035906, 0.00552816847}}},
     {{"P1", {2500, 1200, 35}}, {"P2", {-1800, 2600, -12}}, {"P3", {900, -2100, 60}}}},
    {"levelling_lines",
     3,
     0.400321069,
     {{"1", {103.209768825}}, {"2", {107.851531011}}, {"3", {110.021427432}}},
     {{"1", {0.000356171373}}, {"2", {0.000387766414}}, {"3", {0.000360428116}}},
     {{"1", {103.21}}, {"2", {107.85}}, {"3", {110.02}}}},
};

class WorkedExample : public testing::TestWithParam<Worked> {};

} // namespace

TEST_P(WorkedExample, GivesTheDenseSolutionNearTheTruth)
{
    const Worked &w = GetParam();
    const SolvedNetwork solved = solve_file(std::string(SOURCE_DIR "/examples/") + w.file + ".inp");
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_EQ(solved.results().degrees_of_freedom, w.redundancy);
    EXPECT_NEAR(*solved.results().sigma_aposteriori, w.sigma, 1e-6);
    EXPECT_TRUE(solved.results().notes.empty());
    for (const auto &[name, x] : w.points) {
        const PointResult &p = solved.point(name);
        const int first = x.size() == 1 ? 2 : 0;
        for (size_t k = 0; k < x.size(); k++) {
            const double adjusted = *p.adjusted[first + (int)k], deviation = *p.deviation[first + (int)k];
            EXPECT_NEAR(adjusted, x[k], 1e-7) << name << " " << k;
            EXPECT_NEAR(deviation, w.deviations.at(name)[k], 1e-8) << name << " " << k;
            EXPECT_LT(std::fabs(adjusted - w.truth.at(name)[k]), 4 * deviation / std::fmin(1.0, w.sigma))
                << name << " " << k;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Own, WorkedExample, testing::ValuesIn(worked),
                         [](const testing::TestParamInfo<Worked> &tried) { return std::string(tried.param.file); });
