// Two runs at once, each on a project of its own in a thread of its own, say what they say
// one after the other.

#include <gtest/gtest.h>

#include <thread>

#include "faults/engine_run.h"

namespace {

TEST(Threads, GiveTheBytesOfRunsOneAfterTheOther)
{
    for (const vornhost::Solver solver : {vornhost::Solver::Compact, vornhost::Solver::Jordan}) {
        Setting setting;
        setting.solver = solver;
        EngineRun one, other;
        ASSERT_TRUE(one.read(SOURCE_DIR "/examples/total_station_heights.inp", setting));
        ASSERT_TRUE(other.read(SOURCE_DIR "/examples/gross_error.inp", setting));
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

} // namespace
