// Runs at once, each on a project of its own in a thread of its own, say what they say one after
// the other. The thread sanitizer (preset threads) watches this program for shared state.

#include <gtest/gtest.h>

#include <array>
#include <thread>

#include "faults/engine_run.h"
#include "host/folder.h"
#include "runs/outputs.h"
#include "vorn/network.h"

namespace {

// Side files of the runs go into a folder of their own.
class Threads : public testing::Test {
protected:
    Folder folder;
    InFolder in{folder.path};
};

std::string example(const char *name) { return SOURCE_DIR "/examples/" + std::string(name) + ".inp"; }

TEST_F(Threads, GiveTheBytesOfRunsOneAfterTheOther)
{
    for (const vornhost::Solver solver : {vornhost::Solver::Compact, vornhost::Solver::Jordan}) {
        Setting setting;
        setting.solver = solver;
        EngineRun one, other;
        ASSERT_TRUE(one.read(example("total_station_heights"), setting));
        ASSERT_TRUE(other.read(example("gross_error"), setting));
        const Ended first = one.run(), second = other.run();
        int differ[2] = {0, 0};
        const auto repeat = [](EngineRun &network, const Ended &wanted, int &count) {
            for (int i = 0; i < 100; i++) count += !network.run().same(wanted);
        };
        std::thread a([&] { repeat(one, first, differ[0]); });
        std::thread b([&] { repeat(other, second, differ[1]); });
        a.join();
        b.join();
        EXPECT_EQ(differ[0], 0);
        EXPECT_EQ(differ[1], 0);
    }
}

// The first use of every table of words falls into the threads.
TEST_F(Threads, ReadAdjustAndWriteAsOneAfterTheOther)
{
    const std::array<const char *, 8> names = {
        "photo_block",          "monitoring_wall", "ghilani_baselines",    "mixed_fixed_heights",
        "instrument_constants", "gross_error",     "grossmann_directions", "strang_borre_distances_free"};
    std::array<std::string, names.size()> found;
    std::array<std::thread, names.size()> threads;
    for (size_t i = 0; i < names.size(); i++)
        threads[i] = std::thread([&found, &names, i] { found[i] = outputs_of(example(names[i])); });
    for (std::thread &t : threads) t.join();
    for (size_t i = 0; i < names.size(); i++) EXPECT_TRUE(found[i] == outputs_of(example(names[i]))) << names[i];
}

// One network of an application in several threads.
TEST_F(Threads, AdjustOneNetworkOfAnApplicationAtOnce)
{
    const vornapi::Reading reading = vornapi::read_file(example("strang_borre_distances_free"));
    ASSERT_TRUE(reading.network);
    std::array<vornapi::Result, 4> results;
    std::array<std::thread, 4> threads;
    for (size_t i = 0; i < threads.size(); i++)
        threads[i] = std::thread([&, i] {
            vornapi::Options options;
            options.covariances = {"P", "1"};
            options.report = true;
            for (int run = 0; run < 10; run++) results[i] = reading.network->adjust(options);
        });
    for (std::thread &thread : threads) thread.join();
    for (const vornapi::Result &result : results) {
        ASSERT_TRUE(result.adjusted());
        EXPECT_EQ(result.covariance_matrix, results[0].covariance_matrix);
        EXPECT_EQ(result.points[1].adjusted, results[0].points[1].adjusted);
    }
}

} // namespace
