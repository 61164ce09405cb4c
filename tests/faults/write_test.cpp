// A full disk: a report that cannot be written on, at any place, leaves the adjustment as it
// is; the program says what it could not write and exits with 3.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <filesystem>

#include "faults/engine_run.h"
#include "host/folder.h"

namespace {

using vornhost::Solver;

// A stream without a buffer whose n-th and all later writes fail.
struct FullDisk {
    int left;
    int refused = 0;
};

ssize_t write_some(void *cookie, const char *, size_t size)
{
    FullDisk *disk = (FullDisk *)cookie;
    if (disk->left > 0) {
        disk->left--;
        return (ssize_t)size;
    }
    disk->refused++;
    errno = ENOSPC;
    return 0;
}

FILE *open_full(FullDisk *disk)
{
    FILE *f = fopencookie(disk, "w", {nullptr, write_some, nullptr, nullptr});
    if (f) setvbuf(f, nullptr, _IONBF, 0);
    return f;
}

std::vector<double> coordinates(const EngineRun &network)
{
    const result *r = network.model.p.runresults;
    std::vector<double> all;
    for (int i = 0; r && i < r->nstar + r->ntarr; i++)
        for (const double *x : {r->xpt, r->ypt, r->zpt})
            if (x) all.push_back(x[i]);
    return all;
}

class FullDiskRun : public testing::TestWithParam<const char *> {
protected:
    Folder folder;
    InFolder in{folder.path};
};

TEST_P(FullDiskRun, AdjustsAsWithAReport)
{
    for (const Solver solver : {Solver::Compact, Solver::Jordan}) {
        Setting setting;
        setting.solver = solver;
        setting.trace = 1;
        EngineRun network;
        ASSERT_TRUE(network.read(SOURCE_DIR "/examples/" + std::string(GetParam()) + ".inp", setting));
        const Ended good = network.run();
        const std::vector<double> wanted = coordinates(network);
        ASSERT_FALSE(wanted.empty());
        for (int n = 0;; n += n < 50 ? 1 : 97) {
            FullDisk disk{n};
            FILE *report = open_full(&disk);
            ASSERT_TRUE(report);
            const Ended bad = network.run_on(report);
            fclose(report);
            EXPECT_EQ(bad.start, good.start) << n;
            EXPECT_EQ(bad.code, good.code) << n;
            EXPECT_EQ(bad.lines, good.lines) << n;
            EXPECT_EQ(coordinates(network), wanted) << n;
            if (disk.refused == 0) break;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Of, FullDiskRun,
                         testing::Values("niemeier_levelling_free", "grossmann_directions", "total_station_heights"),
                         [](const auto &one) { return one.param; });

class FullDiskProgram : public testing::Test {
protected:
    void SetUp() override
    {
        if (std::string(VORN_PROGRAM).empty()) GTEST_SKIP() << "the program is not built";
        std::filesystem::copy(SOURCE_DIR "/examples/chained/first.inp", folder.file("first.inp"));
    }

    int run(const std::string &arguments)
    {
        const int status =
            system(("cd " + folder.path + " && " VORN_PROGRAM " " + arguments + " >out 2>err </dev/null").c_str());
        err = file_text(folder.file("err"));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    bool says(const std::string &text) const { return err.find(text) != std::string::npos; }

    Folder folder;
    std::string err;
};

TEST_F(FullDiskProgram, SaysThatTheReportIsNotWritten)
{
    EXPECT_EQ(run("adjust first.inp -o /dev/full"), 3);
    EXPECT_TRUE(says("cannot write /dev/full: No space left on device"));
}

TEST_F(FullDiskProgram, SaysThatTheConnectedNetIsNotWritten)
{
    std::filesystem::create_symlink("/dev/full", folder.file("first.con"));
    EXPECT_EQ(run("adjust --solver compact first.inp -o report.txt --json r.json"), 3);
    EXPECT_TRUE(says("first.con is not written: the disk is full or does not take it\n"));
    EXPECT_TRUE(says("backtoproject: Cannot write first.con file\n"));
    EXPECT_NE(file_text(folder.file("r.json")).find("\"adjusted\": true"), std::string::npos);
}

TEST_F(FullDiskProgram, SaysThatTheConnectedNetCannotBeOpened)
{
    std::filesystem::create_directory(folder.file("first.con"));
    EXPECT_EQ(run("adjust --solver compact first.inp -o report.txt --json r.json --quiet"), 3);
    EXPECT_EQ(err, "vorn: first.con is not written: it cannot be opened\n");
    EXPECT_NE(file_text(folder.file("r.json")).find(err.substr(6, err.size() - 7)), std::string::npos);
}

TEST_F(FullDiskProgram, NamesTheConnectedNetOfTheOwnAdjustmentThatItCannotWrite)
{
    std::filesystem::create_symlink("/dev/full", folder.file("first.con"));
    EXPECT_EQ(run("adjust first.inp -o report.txt --quiet"), 3);
    EXPECT_EQ(err, "vorn: cannot write first.con: No space left on device\n");
    std::filesystem::remove(folder.file("first.con"));
    std::filesystem::create_directory(folder.file("first.con"));
    EXPECT_EQ(run("adjust first.inp -o report.txt --quiet"), 3);
    EXPECT_EQ(err, "vorn: cannot write first.con: Is a directory\n");
}

// The engine stops at that file, before it hands the constants back.
TEST_F(FullDiskProgram, GivesNoConstantsThatTheEngineHasNotHandedBack)
{
    std::string text = file_text(SOURCE_DIR "/examples/instrument_constants.inp");
    const std::string stations = "name  x        y        group\n";
    text.replace(text.find(stations), stations.size(), "name x y group connect\n");
    for (const std::string line : {"N1    1205.4   1249.0   meter", "N2    1440.2   1310.6   meter"})
        text.replace(text.find(line), line.size(), line + " export");
    folder.write("net.inp", text);
    EXPECT_EQ(run("adjust --solver compact net.inp --json good.json"), 0);
    EXPECT_NE(file_text(folder.file("good.json")).find("\"additive_constant\""), std::string::npos);
    std::filesystem::remove(folder.file("net.con"));
    std::filesystem::create_directory(folder.file("net.con"));
    EXPECT_EQ(run("adjust --solver compact net.inp --json bad.json --quiet"), 3);
    EXPECT_EQ(err, "vorn: net.con is not written: it cannot be opened\n");
    EXPECT_EQ(file_text(folder.file("bad.json")).find("\"additive_constant\""), std::string::npos);
}

// ---- the files beside the report ----

// Runs the network with each of the two ways in which the file can be lost; report and results
// are those of a run that loses nothing. A run without the file ends with 0.
struct SideFile {
    std::string network, mode, name, more;
};

class LostSideFile : public FullDiskProgram, public testing::WithParamInterface<SideFile> {
protected:
    void SetUp() override
    {
        FullDiskProgram::SetUp();
        std::filesystem::copy(SOURCE_DIR "/examples/photo_block", folder.file("photo_block"));
        std::string text = file_text(SOURCE_DIR "/examples/" + GetParam().network);
        if (GetParam().name == "simili.out") text.replace(text.find("[tables]"), 0, "[lumps]\nmethod = 9\n");
        folder.write("net.inp", text);
        if (GetParam().name == "tessalpin.cov") folder.write("tessalpin.sta", "C1\nC2\n");
        EXPECT_EQ(adjust("good"), 0);
        EXPECT_EQ(err, "");
        EXPECT_NE(file_text(folder.file(GetParam().name)), "");
        std::filesystem::remove(folder.file(GetParam().name));
    }
    int adjust(const std::string &name)
    {
        return run("adjust net.inp --solver compact --quiet --mode " + GetParam().mode + " -o " + name +
                   ".txt --json " + name + ".json");
    }
    std::string report(const std::string &name) { return file_text(folder.file(name + ".txt")); }
    std::string line(const std::string &why) { return "cannot write " + GetParam().name + ": " + why; }
};

TEST_P(LostSideFile, OnAFullDiskIsNamed)
{
    std::filesystem::create_symlink("/dev/full", folder.file(GetParam().name));
    EXPECT_EQ(adjust("bad"), 3);
    const std::string wanted = line("No space left on device") + GetParam().more;
    EXPECT_EQ(err, "vorn: " + wanted + "\n");
    EXPECT_EQ(report("bad"), report("good"));
    EXPECT_NE(file_text(folder.file("bad.json")).find("\"" + wanted + "\""), std::string::npos);
    EXPECT_NE(file_text(folder.file("bad.json")).find("\"adjusted\": true"), std::string::npos);
}

TEST_P(LostSideFile, ThatCannotBeOpenedIsNamed)
{
    std::filesystem::create_directory(folder.file(GetParam().name));
    EXPECT_EQ(adjust("bad"), 3);
    EXPECT_EQ(err, "vorn: " + line("Is a directory") + GetParam().more + "\n");
}

TEST_P(LostSideFile, IsNamedBesideALostReport)
{
    std::filesystem::create_directory(folder.file(GetParam().name));
    std::filesystem::create_symlink("/dev/full", folder.file("bad.txt"));
    EXPECT_EQ(adjust("bad"), 3);
    EXPECT_EQ(err, "vorn: " + line("Is a directory") + GetParam().more +
                       "\nvorn: cannot write bad.txt: No space left on device\n");
}

TEST_P(LostSideFile, IsNoMatterOfACheck)
{
    std::filesystem::create_directory(folder.file(GetParam().name));
    EXPECT_EQ(run("check net.inp --mode " + GetParam().mode), 0);
    EXPECT_EQ(err, "");
    std::filesystem::remove(folder.file(GetParam().name));
    EXPECT_EQ(run("check net.inp --mode " + GetParam().mode), 0);
    EXPECT_FALSE(std::filesystem::exists(folder.file(GetParam().name)));
}

const char may_be_missing[] = "; transformations between epochs may be missing";

INSTANTIATE_TEST_SUITE_P(Of, LostSideFile,
                         testing::Values(SideFile{"photo_block.inp", "solution", "rejects", ""},
                                         SideFile{"photo_block.inp", "statistics", "tessalpin.cov", ""},
                                         SideFile{"monitoring_wall.inp", "statistics", "simili.out", may_be_missing}),
                         [](const auto &one) { return one.param.name.substr(0, one.param.name.find('.')); });

TEST_F(FullDiskProgram, SaysThatResultsAreNotWritten)
{
    EXPECT_EQ(run("adjust first.inp --json /dev/full"), 3);
    EXPECT_TRUE(says("cannot write /dev/full: No space left on device"));
}

TEST_F(FullDiskProgram, SaysThatATableIsNotWritten)
{
    std::filesystem::create_directory(folder.file("tables"));
    std::filesystem::create_symlink("/dev/full", folder.file("tables/points.csv"));
    EXPECT_EQ(run("adjust first.inp --csv tables"), 3);
    EXPECT_TRUE(says("cannot write tables/points.csv: No space left on device"));
}

} // namespace
