// The option --memory of vorn adjust: networks whose factor and inverse go to a file.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "host/folder.h"

namespace {

std::string text_of(const std::string &path)
{
    std::ostringstream all;
    all << std::ifstream(path, std::ios::binary).rdbuf();
    return all.str();
}

bool contains(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

// Takes what begins with a word, up to an end, out of a text.
void cut(std::string &text, const std::string &word, const std::string &end)
{
    const std::size_t from = text.find(word);
    ASSERT_NE(from, std::string::npos);
    text.erase(from, text.find(end, from) - from);
}

// Heights of side by side points, levelled along rows and columns, with small errors that go up and down.
std::string levelled_grid(int side)
{
    std::ostringstream points, lines;
    const auto name = [](int r, int c) { return "P" + std::to_string(r) + "_" + std::to_string(c); };
    for (int r = 0; r < side; r++)
        for (int c = 0; c < side; c++) {
            points << name(r, c) << " 100 " << (r + c == 0 ? "fixed" : "free") << "\n";
            const double error = 0.001 * ((r * 7 + c * 13) % 5 - 2);
            if (c > 0) lines << name(r, c - 1) << " " << name(r, c) << " " << 0.5 + error << " 0.001\n";
            if (r > 0) lines << name(r - 1, c) << " " << name(r, c) << " " << 0.25 - error << " 0.001\n";
        }
    return "[run]\nsolver = \"sparse\"\ndimension = 1\n[tables]\ntargets = '''\nname z code\n" + points.str() +
           "'''\nheight_differences = '''\nfrom to value sigma\n" + lines.str() + "'''\n";
}

class MemoryOption : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (std::string(VORN_PROGRAM).empty()) GTEST_SKIP() << "the program is not built";
        folder.write("grid.inp", levelled_grid(60));
    }

    // Adjusts the grid; what the shell does before.
    int adjust(const std::string &options, const std::string &before = "true")
    {
        std::filesystem::remove(folder.file("report"));
        const std::string command = "cd " + folder.path + " && " + before + " && " VORN_PROGRAM " adjust grid.inp " +
                                    options + " -o report >/dev/null 2>err </dev/null";
        const int status = system(command.c_str());
        err = text_of(folder.file("err"));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    // All results but notes and the time that they took.
    std::string results(const std::string &options)
    {
        EXPECT_EQ(adjust(options + " --json results"), 0) << err;
        std::string all = text_of(folder.file("results"));
        EXPECT_GT(all.size(), 1000000u);
        cut(all, "\"notes\": [", "]");
        cut(all, "\"seconds\": ", "\n");
        return all;
    }

    // What a limit that is too low is told to be at least.
    std::string least(const std::string &options)
    {
        EXPECT_EQ(adjust(options + " --quiet --memory 20K"), 3);
        const std::string words = "vorn: --memory 20K is too little for this network; it takes at least ";
        EXPECT_EQ(err.substr(0, words.size()), words);
        EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1);
        EXPECT_TRUE(wrote_nothing());
        return err.substr(words.size(), err.size() - words.size() - 1);
    }

    bool wrote_nothing() const { return !std::filesystem::exists(folder.file("report")); }

    Folder folder;
    std::string err;
};

} // namespace

// A third of the whole, or little more.
TEST_F(MemoryOption, GivesTheSameResultsBitByBit)
{
    for (const char *options : {"--threads 1", "--threads 3", "--threads 1 --mode solution"}) {
        const std::string in_memory = results(options);
        EXPECT_TRUE(results(std::string(options) + " --memory 1G") == in_memory);
        EXPECT_FALSE(contains(err, "--memory")) << err;
        const std::string memory = " --memory " + least(options), note = "more than" + memory + ": they are kept in ";
        EXPECT_TRUE(results(options + memory) == in_memory) << options;
        EXPECT_TRUE(contains(err, note)) << err;
        EXPECT_TRUE(contains(text_of(folder.file("report")), note));
        EXPECT_TRUE(contains(text_of(folder.file("results")), note));
    }
}

TEST_F(MemoryOption, SaysWhenTheDiskHasNoRoom)
{
    const std::string memory = "--quiet --threads 1 --memory " + least("--threads 1");
    EXPECT_EQ(adjust(memory, "export TMPDIR=/nowhere"), 3);
    EXPECT_TRUE(contains(err, " in /nowhere: No such file or directory\n")) << err;
    EXPECT_EQ(adjust(memory, "ulimit -f 100"), 3); // blocks of 512 or 1024 bytes
    EXPECT_TRUE(contains(err, "vorn: cannot keep ")) << err;
    EXPECT_TRUE(contains(err, ": File too large\n")) << err;
    EXPECT_TRUE(wrote_nothing());
}

TEST_F(MemoryOption, TakesSizesAlone)
{
    for (const char *size : {"", "M", "500X", "-5M", "0", "nan", "1e30", "1e300T", "5MB", "5 M"}) {
        EXPECT_EQ(adjust("--memory '" + std::string(size) + "'"), 2) << size;
        EXPECT_TRUE(contains(err, "is no size; write 500M or 4G")) << err;
    }
    for (const char *size : {"1.5G", "1e9", "2T"}) EXPECT_EQ(adjust(std::string("--memory ") + size), 0) << size;
    EXPECT_EQ(adjust("--memory 1G --solver compact"), 2);
    EXPECT_TRUE(contains(err, "--memory is for the solver sparse; leave it out")) << err;
}
