// The example of two surveys in a chain, run by its script as a user runs it.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "host/folder.h"

namespace {

class ChainedExample : public testing::Test {
protected:
    void SetUp() override
    {
        if (std::string(VORN_PROGRAM).empty()) GTEST_SKIP() << "the program is not built";
        const std::string command = "cd " + folder.path +
                                    " && VORN=" VORN_PROGRAM " " SOURCE_DIR
                                    "/examples/chained/run results >shown 2>errors";
        const int status = system(command.c_str());
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << text("errors");
    }

    std::string text(const std::string &name) const
    {
        std::ostringstream all;
        all << std::ifstream(folder.file(name)).rdbuf();
        return all.str();
    }

    // x, y, sx, sy of each point.
    std::map<std::string, std::array<double, 4>> points(const std::string &net) const
    {
        std::map<std::string, std::array<double, 4>> found;
        std::istringstream lines(text("results/" + net + "/points.csv"));
        std::string line;
        std::getline(lines, line);
        while (std::getline(lines, line)) {
            Lines cells;
            std::istringstream row(line);
            for (std::string cell; std::getline(row, cell, ',');) cells.push_back(cell);
            std::array<double, 4> &p = found[cells.at(0)];
            p = {atof(cells.at(8).c_str()), atof(cells.at(9).c_str()), 0, 0};
            if (cells.size() > 12) p[2] = atof(cells[11].c_str()), p[3] = atof(cells[12].c_str());
        }
        return found;
    }

    Lines files(const std::string &name) const
    {
        Lines names;
        for (const auto &entry : std::filesystem::directory_iterator(folder.file(name)))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    // The a-posteriori standard deviation of unit weight that a report names.
    double sigma(const std::string &report) const
    {
        const std::string all = text(report), words = ", a posteriori ";
        return atof(all.substr(all.find(words) + words.size()).c_str());
    }

    Folder folder;
};

// first.con has micrometres, and the places of the linear models differ by millimetres.
TEST_F(ChainedExample, PutsTheNewPointsWhereOneAdjustmentPutsThem)
{
    const auto second = points("second"), together = points("together");
    ASSERT_EQ(second.size(), 7u);
    for (const auto &[name, p] : second)
        for (int k = 0; k < 2; k++) EXPECT_NEAR(p[k], together.at(name)[k], 2e-6) << name;
}

TEST_F(ChainedExample, GivesThemTheStandardDeviationsOfOneAdjustmentBesideItsVarianceFactor)
{
    const auto second = points("second"), together = points("together");
    const double factor = sigma("results/second.txt") / sigma("results/together.txt");
    for (const auto &[name, p] : second)
        for (int k = 2; k < 4; k++) {
            EXPECT_NEAR(p[k], factor * together.at(name)[k], 2e-4 * p[k]) << name; // four decimals of both
            EXPECT_GT(p[k], 0.0);
        }
}

TEST_F(ChainedExample, LeavesNothingElseBehind)
{
    EXPECT_EQ(files("results"), (Lines{"first", "first.con", "first.inp", "first.txt", "second", "second.inp",
                                       "second.txt", "together", "together.inp", "together.txt"}));
    EXPECT_EQ(files("."), (Lines{"errors", "results", "shown"}));
    EXPECT_EQ(text("errors"), "");
}

TEST_F(ChainedExample, ShowsBothRoads)
{
    const std::string shown = text("shown");
    const size_t together = shown.find("together\n");
    ASSERT_EQ(shown.compare(0, 7, "second\n"), 0);
    ASSERT_NE(together, std::string::npos);
    for (const char *line : {"name               y             x\n", "51         6610.0008     1984.9977\n",
                             "52         6789.9974     1309.9951\n"}) {
        EXPECT_LT(shown.find(line), together) << line;
        EXPECT_NE(shown.find(line, together), std::string::npos) << line;
    }
}

// A tree with the example and a stand-in for the script that builds the program.
TEST_F(ChainedExample, TakesTheProgramThatIsBuiltAndBuildsItOnceWhereThereIsNone)
{
    namespace fs = std::filesystem;
    fs::create_directories(folder.file("tree/examples"));
    fs::create_directories(folder.file("tree/scripts"));
    fs::copy(SOURCE_DIR "/examples/chained", folder.file("tree/examples/chained"));
    folder.write("tree/scripts/run", "#!/bin/sh\nroot=$(dirname \"$0\")/..\necho built \"$@\" >>$root/log\n"
                                     "mkdir -p $root/build/program\nln -s " VORN_PROGRAM " $root/build/program/vorn\n");
    fs::permissions(folder.file("tree/scripts/run"), fs::perms::owner_all);
    const auto run = [this] {
        const std::string command =
            "cd " + folder.path + " && env -u VORN tree/examples/chained/run again >shown_again 2>errors_again";
        return system(command.c_str());
    };
    for (int i = 0; i < 2; i++) {
        ASSERT_EQ(run(), 0) << text("errors_again");
        EXPECT_EQ(text("shown_again"), text("shown"));
        EXPECT_EQ(text("tree/log"), "built --version\n");
    }
    fs::remove(folder.file("tree/log"));
    fs::remove(folder.file("tree/build/program/vorn"));
    fs::create_directories(folder.file("tree/build/release"));
    fs::create_symlink(VORN_PROGRAM, folder.file("tree/build/release/vorn"));
    ASSERT_EQ(run(), 0) << text("errors_again");
    EXPECT_FALSE(fs::exists(folder.file("tree/log")));
}

} // namespace
