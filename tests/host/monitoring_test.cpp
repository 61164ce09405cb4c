// The example of a monitored wall: its simulated motions come back within their precision, with
// both solvers, and stand in every output.

#include <gtest/gtest.h>

#include <math.h>
#include <stdio.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>

#include "host/adjusted.h"
#include "host/results/json_writer.h"
#include "support/faults.h"

using namespace vornhost;

namespace {

const double translations[2][3] = {{0.0015, 0.0080, -0.0040}, {0, 0, 0}};
const double rotations[2][3] = {{0.0012, 0, -0.0003}, {0, 0, 0}};

Results adjusted_wall(Solver solver, Mode mode = Mode::Statistics)
{
    Model model;
    Faults faults;
    EXPECT_TRUE(read_network(SOURCE_DIR "/examples/monitoring_wall.inp", model, faults)) << faults.lines()[0];
    model.solver = solver;
    model.mode = mode;
    return adjusted_results(model);
}

} // namespace

// Three standard deviations: in one of thirty such examples one of the twelve parameters would be beyond.
TEST(MonitoredWall, HasItsMotionsBackWithinTheirPrecision)
{
    for (const Solver solver : {Solver::Compact, Solver::Jordan}) {
        const Results r = adjusted_wall(solver);
        ASSERT_EQ(r.lumps.size(), 2u);
        EXPECT_TRUE(*r.one_tailed_test);
        for (size_t i = 0; i < 2; i++) {
            const LumpResult &l = r.lumps[i];
            EXPECT_EQ(l.lump, (int)i + 1);
            EXPECT_EQ(l.epoch, 2);
            EXPECT_EQ(l.reference, 1);
            EXPECT_NEAR(l.scale, 1.0, 1e-9); // held
            for (int k = 0; k < 3; k++) {
                ASSERT_TRUE(l.translation_deviation[k] && l.rotation_deviation[k]);
                EXPECT_NEAR(l.translation[k], translations[i][k], 3.0 * *l.translation_deviation[k]);
                EXPECT_NEAR(l.rotation[k], rotations[i][k], 3.0 * *l.rotation_deviation[k]);
                EXPECT_LT(*l.translation_deviation[k], 0.0005);
                EXPECT_LT(*l.rotation_deviation[k], 0.0002);
            }
        }
    }
}

TEST(MonitoredWall, TellsThePanelThatMovedFromTheOtherOne)
{
    const Results r = adjusted_wall(Solver::Compact);
    ASSERT_EQ(r.lumps.size(), 2u);
    const auto ratio = [&r](size_t i, int k) {
        return fabs(r.lumps[i].translation[k]) / *r.lumps[i].translation_deviation[k];
    };
    for (int k = 0; k < 3; k++) {
        EXPECT_GT(ratio(0, k), 4.0);
        EXPECT_LT(ratio(1, k), 3.0);
    }
}

TEST(MonitoredWall, IsWrittenWithItsPrecision)
{
    const Results r = adjusted_wall(Solver::Compact);
    const nlohmann::json all = nlohmann::json::parse(to_json(r));
    ASSERT_EQ(all["lumps"].size(), 2u);
    EXPECT_EQ(all["lumps"][0]["translation"]["y"], r.lumps[0].translation[1]);
    EXPECT_EQ(all["lumps"][0]["translation_standard_deviation"]["y"], *r.lumps[0].translation_deviation[1]);
    EXPECT_EQ(all["lumps"][1]["rotation_standard_deviation"]["x"], *r.lumps[1].rotation_deviation[0]);
}

TEST(MonitoredWall, HasNoPrecisionWithoutStatistics)
{
    const Results r = adjusted_wall(Solver::Compact, Mode::Solution);
    ASSERT_EQ(r.lumps.size(), 2u);
    EXPECT_NEAR(r.lumps[0].translation[1], 0.008, 0.001);
    EXPECT_FALSE(r.lumps[0].translation_deviation[1]);
    EXPECT_FALSE(r.lumps[0].scale_deviation);
}

// Each allocation of the engine fails in turn.
TEST(MonitoredWall, SaysThatNotAllEpochsWereCompared)
{
    const WorkFolder folder; // takes simili.out
    int incomplete = 0;
    for (int n = 1;; n++) {
        Model model;
        Faults faults;
        ASSERT_TRUE(read_network(SOURCE_DIR "/examples/monitoring_wall.inp", model, faults));
        model.p.lumpmethod = 9;
        const std::unique_ptr<FILE, int (*)(FILE *)> report(tmpfile(), fclose);
        Recorder messages;
        fail_allocation(n);
        const RunOutcome outcome = run(model, report.get(), messages);
        const bool met = allocations() >= n;
        fail_allocation(0);
        const auto &told = messages.lines;
        const bool failed = std::count(told.begin(), told.end(), "backtoproject: Pb with usesimili") > 0;
        const std::string line = "not all epochs could be compared: free memory";
        EXPECT_EQ(std::count(outcome.lost.begin(), outcome.lost.end(), line), failed && outcome.adjusted()) << n;
        incomplete += failed && outcome.adjusted();
        model.p.freerun(model.p.runresults);
        if (!met) break;
    }
    EXPECT_GT(incomplete, 0);
}

// The example compared after the adjustment, with its panels listed in turns.
TEST(MonitoredWall, HasItsMotionsBackFromSplitPoints)
{
    for (const Solver solver : {Solver::Compact, Solver::Jordan}) {
        const Results adjusted = adjusted_wall(solver);
        const WorkFolder folder; // takes simili.out
        Model model;
        Faults faults;
        ASSERT_TRUE(read_network(SOURCE_DIR "/examples/monitoring_wall.inp", model, faults));
        model.solver = solver;
        model.p.lumpmethod = 9;
        for (size_t i = 3; i < 7; i++) std::swap(model.targets.records[i], model.targets.records[i + 6]);
        const Results r = adjusted_results(model);
        ASSERT_EQ(r.lumps.size(), 2u);
        EXPECT_EQ(r.points.size(), adjusted.points.size());
        for (size_t i = 0; i < 2; i++)
            for (int k = 0; k < 3; k++) {
                EXPECT_EQ(r.lumps[i].lump, (int)i + 1);
                EXPECT_EQ(r.lumps[i].scale, 1.0);
                // the comparison weighs all coordinates alike
                EXPECT_NEAR(r.lumps[i].translation[k], translations[i][k],
                            4.0 * *adjusted.lumps[i].translation_deviation[k]);
                EXPECT_NEAR(r.lumps[i].rotation[k], rotations[i][k], 4.0 * *adjusted.lumps[i].rotation_deviation[k]);
                EXPECT_FALSE(r.lumps[i].translation_deviation[k]);
            }
        for (const PointResult &point : adjusted.points)
            for (const PointResult &split : r.points) {
                if (split.name != point.name) continue;
                EXPECT_NEAR(*split.adjusted[1], *point.adjusted[1], 0.001) << point.name;
            }
    }
}
