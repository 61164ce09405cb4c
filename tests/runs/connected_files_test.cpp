// Whole runs that import a connected net from files that are damaged, foreign or hostile.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "runs/chain.h"
#include "support/workfolder.h"

namespace {

using Lines = std::vector<std::string>;

// Two networks in the plane; the file of the first one is changed before the second reads it.
class ConnectedFile : public testing::TestWithParam<Way> {
protected:
    ConnectedFile() : chain(2, 1.0, 1)
    {
        const auto net = chain.network(0);
        net->p.irun = 1;
        EXPECT_EQ(chain.run(*net, GetParam(), "first.inp"), 0);
        std::istringstream file(file_text("first.con"));
        for (std::string line; std::getline(file, line);) good.push_back(line);
    }

    static std::string joined(const Lines &lines)
    {
        std::string text;
        for (const std::string &line : lines) text += line + "\n";
        return text;
    }

    // Runs the second network on a file with this text; messages holds what it said.
    int run(const std::string &text)
    {
        std::ofstream("changed.con", std::ios::binary) << text;
        const auto net = chain.network(1);
        net->p.irun = 1;
        const int code = chain.run(*net, GetParam(), "second.inp", "changed.con");
        messages = net->messages.lines;
        report = net->report();
        return code;
    }

    bool said(const std::string &line) const
    {
        return std::find(messages.begin(), messages.end(), line) != messages.end();
    }

    // The file is refused with the code; the run goes on without it.
    void refuse(const std::string &text, int code)
    {
        run(text);
        EXPECT_TRUE(said("fill_connect: Incompatibilities with " + std::to_string(code) + " code")) << text;
        EXPECT_TRUE(said("=>disable connected computation"));
    }
    void refuse(const Lines &lines, int code) { refuse(joined(lines), code); }

    // Three points, then the triangle of six unknowns: head, 3 and 21 lines.
    static constexpr size_t MATRIX = 4, LINES = 25;

    WorkFolder folder;
    Chain chain;
    Lines good, messages;
    std::string report;
};

TEST_P(ConnectedFile, AsItWasWrittenIsTaken)
{
    ASSERT_EQ(good.size(), LINES);
    EXPECT_EQ(run(joined(good)), 0);
    EXPECT_FALSE(said("=>disable connected computation"));
}

TEST_P(ConnectedFile, WithLineEndsOfAnotherSystemIsTaken)
{
    std::string text;
    for (const std::string &line : good) text += line + "\r\n";
    EXPECT_EQ(run(text), 0);
    EXPECT_FALSE(said("=>disable connected computation"));
}

TEST_P(ConnectedFile, WithoutItsLastNewlineIsTaken)
{
    std::string text = joined(good);
    text.pop_back();
    EXPECT_EQ(run(text), 0);
    EXPECT_FALSE(said("=>disable connected computation"));
}

TEST_P(ConnectedFile, CutBehindAnyLineIsRefused)
{
    for (size_t n = 0; n < LINES; n++)
        refuse(Lines(good.begin(), good.begin() + (long)n), n == 0 ? 1 : n < MATRIX ? 3 : 5);
}

// A cut inside a number leaves a shorter number; a cut anywhere else a line less.
TEST_P(ConnectedFile, CutAnywhereEndsTheRun)
{
    const std::string text = joined(good);
    for (size_t n = 0; n < text.size(); n += 7) run(text.substr(0, n));
}

TEST_P(ConnectedFile, WithALineLostIsRefused)
{
    for (size_t n = 0; n < LINES; n++) {
        Lines lines = good;
        lines.erase(lines.begin() + (long)n);
        // without a point the first number of the matrix is read as one
        refuse(lines, n == 0 ? 1 : n < MATRIX ? 3 : 5);
    }
}

TEST_P(ConnectedFile, WithALineTwiceIsRefused)
{
    for (size_t n = 1; n < LINES; n++) {
        Lines lines = good;
        lines.insert(lines.begin() + (long)n, good[n]);
        if (n >= MATRIX) {
            refuse(lines, 4);
            continue;
        }
        run(joined(lines)); // the last point takes the place of the first number of the matrix
        EXPECT_TRUE(said("=>disable connected computation")) << n;
    }
}

TEST_P(ConnectedFile, OfAnotherNetworkIsRefused)
{
    Lines lines = good;
    for (size_t i = 1; i < MATRIX; i++) lines[i][0] = 'x';
    refuse(lines, 3);
    lines = good;
    lines[0] = "File: first.con for 4 connections in dimension 2";
    refuse(lines, 1);
    lines[0] = "File: first.con for 3 connections in dimension 3";
    refuse(lines, 1);
    lines[0] = "File: my first.con for 3 connections in dimension 2"; // a name with a blank
    refuse(lines, 1);
}

TEST_P(ConnectedFile, OfAnotherKindIsRefused)
{
    refuse(std::string(), 1);
    refuse(std::string("\n"), 1);
    refuse(std::string(1, '\0'), 1);
    refuse(std::string(100000, 'x'), 1);
    refuse(std::string(100000, '\n'), 1);
    refuse(std::string(100000, '\0'), 1);
    std::string bytes;
    for (int i = 0; i < 5000; i++) bytes += (char)(i * 7 + i / 256);
    refuse(bytes, 1);
    refuse(good[0] + "\n" + bytes, 3);
    refuse(good[0] + "\n" + std::string(100000, '9'), 3);
    refuse(joined(Lines(good.begin(), good.begin() + MATRIX)) + bytes,
           4); // more lines than the matrix has, whatever stands on them
}

TEST_P(ConnectedFile, WithOverlongLinesIsRefused)
{
    Lines lines = good;
    lines[0] += std::string(1000, ' ') + "x"; // goes on as lines of points
    refuse(lines, 3);
    lines = good;
    lines[1] += std::string(1000, ' ');
    refuse(lines, 3);
    lines = good;
    lines[MATRIX] = "0." + std::string(1000, '0') + "1";
    run(joined(lines)); // its pieces are numbers of their own
    EXPECT_TRUE(said("=>disable connected computation"));
}

// A point in two lines, no numbers, numbers that are none, other numbers than a covariance: the
// run ends with a code, and a result is made of numbers unless the file brought others.
TEST_P(ConnectedFile, WithAnyNumbersEndsTheRun)
{
    const std::string numbers[] = {"0", "-1", "1e308", "-1e308", "1e-308", "nan", "inf", "-inf", "1e999", "0x1p4"};
    for (const std::string &number : numbers)
        for (size_t n = 1; n < LINES; n++) {
            Lines lines = good;
            lines[n] = n < MATRIX ? good[n].substr(0, 8) + "  " + number + " " + number + " 0" : number;
            run(joined(lines));
        }
    Lines same = good;
    same[2] = same[1];
    run(joined(same));
    for (const std::string &number : numbers) {
        Lines lines = good;
        for (size_t n = MATRIX; n < LINES; n++) lines[n] = number;
        run(joined(lines));
    }
}

TEST_P(ConnectedFile, WithTextForNumbersIsRefused)
{
    for (size_t n = 1; n < LINES; n++) {
        Lines lines = good;
        lines[n] = n < MATRIX ? good[n].substr(0, 8) + "  1.0 two 3.0" : "one";
        refuse(lines, n < MATRIX ? 3 : 5);
    }
}

TEST_P(ConnectedFile, WithAnyBytesChangedEndsTheRun)
{
    std::mt19937 random(21);
    const std::string text = joined(good);
    for (int i = 0; i < 300; i++) {
        std::string changed = text;
        for (int k = 0; k <= i % 5; k++) changed[random() % changed.size()] = (char)(random() % 256);
        run(changed);
    }
}

TEST_P(ConnectedFile, ThatIsAFolderIsRefused)
{
    std::filesystem::create_directory("changed.con");
    const auto net = chain.network(1);
    chain.run(*net, GetParam(), "second.inp", "changed.con");
    EXPECT_NE(std::find(net->messages.lines.begin(), net->messages.lines.end(), "=>disable connected computation"),
              net->messages.lines.end());
}

TEST_P(ConnectedFile, ThatIsMissingNamesTheNetworkAndTurnsTheImportOff)
{
    const auto net = chain.network(1);
    net->p.irun = 1;
    chain.run(*net, GetParam(), "second.inp", "nowhere.con");
    messages = net->messages.lines;
    EXPECT_TRUE(said("fill_vorn: Cannot open second.inp file"));
    EXPECT_TRUE(said("=>disable connected computation"));
}

std::string name_of(const testing::TestParamInfo<Way> &way) { return way.param == Way::Jordan ? "jordan" : "compact"; }

INSTANTIATE_TEST_SUITE_P(Imports, ConnectedFile, testing::Values(Way::Jordan, Way::Compact), name_of);

} // namespace
