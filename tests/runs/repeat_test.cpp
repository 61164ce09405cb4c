// The same input gives the same bytes: every network of examples/ and tests/runs/ twice, on two
// freshly read models and by the program in two processes.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "host/folder.h"
#include "host/network_files.h"
#include "runs/outputs.h"

namespace {

namespace fs = std::filesystem;
using vornhost::Solver;

class Repeated : public testing::TestWithParam<std::string> {
protected:
    Folder folder;
    InFolder in{folder.path};
};

TEST_P(Repeated, GivesTheSameBytesInOneProcess)
{
    for (const Solver solver : {Solver::Compact, Solver::Jordan, Solver::Simplex}) {
        const std::string first = outputs_of(GetParam(), solver);
        EXPECT_FALSE(first.empty());
        EXPECT_TRUE(outputs_of(GetParam(), solver) == first);
    }
}

// What a process leaves: its status and streams, report, JSON, tables and side files.
using Left = std::map<std::string, std::string>;

// Memory from malloc is filled with the byte first.
Left left_by_program(const std::string &network, const char *solver, int fill)
{
    const Folder folder;
    const std::string command = "cd " + folder.path + " && MALLOC_PERTURB_=" + std::to_string(fill) +
                                " " VORN_PROGRAM " adjust " + network + " --solver " + solver +
                                " -o report.txt --json results.json --csv tables >out 2>err </dev/null";
    const int status = system(command.c_str());
    Left left = {{"status", std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : -1)}};
    for (const auto &entry : fs::recursive_directory_iterator(folder.path))
        if (entry.is_regular_file()) left[fs::relative(entry, folder.path)] = file_text(entry.path());
    return left;
}

TEST_P(Repeated, GivesTheSameBytesInTwoProcesses)
{
    if (std::string(VORN_PROGRAM).empty()) GTEST_SKIP() << "the program is not built";
    for (const char *solver : {"compact", "jordan", "simplex"}) {
        const Left first = left_by_program(GetParam(), solver, 1), second = left_by_program(GetParam(), solver, 170);
        EXPECT_EQ(first.count("report.txt") + first.count("results.json") + first.count("tables/points.csv"), 3u);
        EXPECT_EQ(first.size(), second.size());
        for (const auto &file : first) {
            const auto other = second.find(file.first);
            EXPECT_TRUE(other != second.end() && other->second == file.second) << solver << " " << file.first;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Networks, Repeated, testing::ValuesIn(network_files()),
                         [](const auto &one) { return fs::path(one.param).stem().string(); });

} // namespace
