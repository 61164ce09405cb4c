// Interrupts of the program, its progress, and how long its steps took.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "host/folder.h"

namespace {

// Heights in a square grid whose corner is fixed.
std::string grid(int side)
{
    std::ostringstream text;
    text << "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\n";
    for (int i = 0; i < side * side; i++) text << "P" << i << " 0 " << (i == 0 ? "fixed\n" : "free\n");
    text << "'''\nheight_differences = '''\nfrom to value sigma\n";
    for (int i = 0; i < side * side; i++) {
        if (i % side + 1 < side) text << "P" << i << " P" << i + 1 << " 0 0.001\n";
        if (i + side < side * side) text << "P" << i << " P" << i + side << " 0 0.001\n";
    }
    return text.str() + "'''\n";
}

class Interrupt : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (std::string(VORN_PROGRAM).empty()) GTEST_SKIP() << "the program is not built";
    }

    // Starts the program in the folder; signals are as a terminal gives them.
    pid_t start(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), VORN_PROGRAM);
        const pid_t child = fork();
        if (child != 0) return child;
        signal(SIGINT, SIG_DFL);
        signal(SIGTERM, SIG_DFL);
        const int err = open(folder.file("err").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (chdir(folder.path.c_str()) != 0 || dup2(err, 2) < 0 || dup2(err, 1) < 0) _exit(127);
        std::vector<char *> argv;
        for (std::string &a : arguments) argv.push_back(&a[0]);
        argv.push_back(nullptr);
        execv(VORN_PROGRAM, argv.data());
        _exit(127);
    }

    std::set<std::string> files() const
    {
        std::set<std::string> names;
        for (const auto &entry : std::filesystem::directory_iterator(folder.path))
            names.insert(entry.path().filename().string());
        return names;
    }

    // Waits until the run has opened its outputs, under temporary names. False when it ended before.
    bool wait_for_outputs(pid_t child, size_t wanted) const
    {
        for (int status; waitpid(child, &status, WNOHANG) == 0;) {
            if (files().size() >= wanted) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return false;
    }

    static int status_of(pid_t child)
    {
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    std::string err() const
    {
        std::ostringstream all;
        all << std::ifstream(folder.file("err"), std::ios::binary).rdbuf();
        return all.str();
    }

    Folder folder;
};

const std::vector<std::string> with_files = {"adjust", "net.inp", "-o", "report.txt", "--json", "results.json"};

} // namespace

TEST_F(Interrupt, EndsALongRunWithNothingHalfWritten)
{
    folder.write("net.inp", grid(250));
    folder.write("report.txt", "of the run before");
    for (const int number : {SIGINT, SIGTERM}) {
        const pid_t child = start(with_files);
        ASSERT_TRUE(wait_for_outputs(child, 5)) << err();           // network, err, report, two temporary files
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // into the run itself
        kill(child, number);
        EXPECT_EQ(status_of(child), 130);
        EXPECT_EQ(files(), (std::set<std::string>{"net.inp", "err", "report.txt"}));
        EXPECT_NE(err().find("vorn: interrupted; nothing was written\n"), std::string::npos) << err();
    }
    std::ifstream report(folder.file("report.txt"));
    std::string text;
    std::getline(report, text);
    EXPECT_EQ(text, "of the run before");
}

TEST_F(Interrupt, EndsARunOfTheEngineAtOnce)
{
    folder.write("net.inp", grid(60)); // a second and more: statistics take the cube of the points
    std::vector<std::string> arguments = with_files;
    arguments.insert(arguments.end(), {"--solver", "jordan"});
    const pid_t child = start(arguments);
    ASSERT_TRUE(wait_for_outputs(child, 4)) << err();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    kill(child, SIGINT);
    EXPECT_EQ(status_of(child), 130);
    EXPECT_EQ(files(), (std::set<std::string>{"net.inp", "err"}));
}

TEST_F(Interrupt, EndsAsIfItHadNeverBegunWhileTheFileIsRead)
{
    ASSERT_EQ(mkfifo(folder.file("net.inp").c_str(), 0600), 0);
    const pid_t child = start(with_files);
    const int writer = open(folder.file("net.inp").c_str(), O_WRONLY); // returns once the program reads
    kill(child, SIGINT);
    EXPECT_EQ(status_of(child), 130);
    close(writer);
    EXPECT_EQ(files(), (std::set<std::string>{"net.inp", "err"}));
}

TEST_F(Interrupt, HasNoProgressInAShortRunWithoutATerminal)
{
    folder.write("net.inp", grid(4));
    EXPECT_EQ(status_of(start(with_files)), 0);
    EXPECT_EQ(err().find("factor"), std::string::npos) << err();
}

TEST_F(Interrupt, SaysHowLongEachStepTook)
{
    folder.write("net.inp", grid(4));
    std::vector<std::string> arguments = with_files;
    arguments.insert(arguments.end(), {"--times", "--quiet"});
    EXPECT_EQ(status_of(start(arguments)), 0);
    std::string steps;
    std::istringstream lines(err());
    for (std::string line; std::getline(lines, line);) steps += line.substr(0, line.find("  ")) + ";";
    EXPECT_EQ(
        steps,
        "time: reading;time: first coordinates;time: closures;time: equations;time: order;time: datum;time: factor;"
        "time: inverse;time: statistics;time: writing;");
}
