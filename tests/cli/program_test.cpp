// The program as its users call it: exit statuses, options, files.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "host/folder.h"

namespace {

const char network[] =
    "[run]\ntitle = \"Triangle\"\nsolver = \"compact\"\ndimension = 1\n[tables]\ntargets = \"\"\"\nname z code\n"
    "A 100 fixed\nB 101.2 free\nC 103.5 free\n\"\"\"\nheight_differences = \"\"\"\n"
    "from to value sigma use\nA B 1.234 0.001 yes\nB C 2.221 0.001 yes\nC A -3.452 0.001 yes\n"
    "A C 9.000 0.001 no\n\"\"\"\n";

// No datum: the distance leaves the position of B open.
const char undetermined[] =
    "[run]\nsolver = \"compact\"\ndimension = 2\n[tables]\ntargets = \"\"\"\nname x y code\nA 0 0 fixed\n"
    "B 10 0 free\n\"\"\"\ndistances = \"\"\"\nfrom to value sigma\nA B 10 0.001\n\"\"\"\n";

std::string text_of(const std::string &path)
{
    std::ostringstream all;
    all << std::ifstream(path, std::ios::binary).rdbuf();
    return all.str();
}

bool contains(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

class Program : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (std::string(VORN_PROGRAM).empty()) GTEST_SKIP() << "the program is not built";
        folder.write("net.inp", network);
        folder.write("open.inp", undetermined);
        std::filesystem::create_directory(folder.file("streams"));
    }

    // Runs the program in the folder with arguments as a shell reads them; returns its exit
    // status, -1 after a signal.
    int run(const std::string &arguments, const std::string &redirection = "")
    {
        const std::string command = "cd " + folder.path + " && " VORN_PROGRAM " " + arguments +
                                    " >streams/out 2>streams/err </dev/null " + redirection;
        const int status = system(command.c_str());
        out = text_of(folder.file("streams/out"));
        err = text_of(folder.file("streams/err"));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    // Files in the folder beside the inputs and the streams.
    std::vector<std::string> written() const
    {
        std::vector<std::string> names;
        for (const auto &entry : std::filesystem::directory_iterator(folder.path)) {
            const std::string name = entry.path().filename().string();
            if (name != "net.inp" && name != "open.inp" && name != "streams") names.push_back(name);
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    bool exists(const std::string &name) const { return std::filesystem::exists(folder.file(name)); }
    nlohmann::json json(const std::string &name) const { return nlohmann::json::parse(text_of(folder.file(name))); }

    Folder folder;
    std::string out, err;
};

using Names = std::vector<std::string>;

} // namespace

// A network of distances in space: too little fixed, one point fixed, enough fixed.
TEST_F(Program, ChecksWithDoubtWhereTheDatumMayNotBeDefined)
{
    const auto network = [](const std::string &b, const std::string &c) {
        return "[run]\nsolver = \"compact\"\ndimension = 3\n[tables]\ntargets = '''\nname x y z code_x code_y code_z\n"
               "A 0 0 0 fixed fixed fixed\nB 10 0 0 " +
               b + "\nC 0 10 0 " + c +
               "\nD 3 3 9 free free free\n'''\ndistances = '''\nfrom to value sigma\nA B 10 1\nA C 10 1\n"
               "A D 9.94987437 1\nB C 14.14213562 1\nB D 11.78982612 1\nC D 11.78982612 1\nA B 10 1\n'''\n";
    };
    const std::string free = "free free free", can = "this network can be adjusted\n";
    folder.write("open.inp", network("fixed free free", free));
    EXPECT_EQ(run("check open.inp"), 0);
    EXPECT_TRUE(contains(out, "Not enough information to define a datum"));
    EXPECT_FALSE(contains(out, can)) << out;
    EXPECT_TRUE(contains(out, "datum: what is fixed does not define it alone; fix or weight more, or fix nothing\n"
                              "whether this network can be adjusted, only its adjustment shows\n"))
        << out;
    EXPECT_EQ(run("adjust open.inp"), 1);

    folder.write("open.inp", network(free, free));
    EXPECT_EQ(run("check open.inp"), 0);
    EXPECT_TRUE(contains(out, "datum: one fixed point, and conditions on the others\n" + can)) << out;
    EXPECT_EQ(run("adjust open.inp"), 0);

    folder.write("open.inp", network("free fixed fixed", "free free fixed"));
    EXPECT_EQ(run("check open.inp"), 0);
    EXPECT_TRUE(contains(out, "datum: held by fixed or weighted coordinates\n" + can)) << out;
    EXPECT_EQ(run("adjust open.inp"), 0) << err;
}

TEST_F(Program, SaysTheSameWordsWhereverTheReportGoes)
{
    EXPECT_EQ(run("adjust open.inp -o report"), 1);
    const std::string words = err;
    EXPECT_TRUE(contains(words, "(datumcheck: Not enough information to define a datum)")) << words;
    ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
    const int reader = open(folder.file("pipe").c_str(), O_RDWR | O_NONBLOCK);
    for (const char *option : {"", "-o /dev/null", "-o /dev/stdout", "-o pipe"}) {
        EXPECT_EQ(run(std::string("adjust open.inp ") + option), 1) << option;
        EXPECT_EQ(err, words) << option;
    }
    close(reader);
}

TEST_F(Program, ReportsOnStandardOutput)
{
    EXPECT_EQ(run("adjust net.inp"), 0);
    EXPECT_TRUE(contains(out, "\nFinal results after"));
    EXPECT_TRUE(contains(out, "B                   101.233000\n"));
    EXPECT_TRUE(contains(err, "The solution has converged\n"));
    EXPECT_TRUE(contains(err, "height differences: read 4 = used 3 + left out 1\n  net.inp:17: A to C: "));
    EXPECT_FALSE(contains(out, "read 4"));
}

TEST_F(Program, ReportsInAFile)
{
    EXPECT_EQ(run("adjust net.inp"), 0);
    const std::string report = out;
    const Names before = written();
    EXPECT_EQ(run("adjust net.inp -o report.txt"), 0);
    EXPECT_EQ(out, "");
    EXPECT_EQ(text_of(folder.file("report.txt")), report);
    EXPECT_EQ(written().size(), before.size() + 1);
}

TEST_F(Program, WritesJson)
{
    EXPECT_EQ(run("adjust net.inp --json r.json"), 0);
    const nlohmann::json all = json("r.json");
    EXPECT_EQ(all["schema"], 2);
    EXPECT_EQ(all["title"], "Triangle");
    EXPECT_EQ(all["file"], "net.inp");
    EXPECT_EQ(all["adjusted"], true);
    EXPECT_EQ(all["points"].size(), 3u);
    EXPECT_EQ(all["observations"][0]["left_out"].size(), 1u);
}

TEST_F(Program, WritesCommaSeparatedTables)
{
    EXPECT_EQ(run("adjust net.inp --csv tables"), 0);
    EXPECT_TRUE(contains(text_of(folder.file("tables/points.csv")), "\r\nA,"));
    EXPECT_TRUE(exists("tables/orientations.csv") && exists("tables/residuals.csv") && exists("tables/accounts.csv"));
    EXPECT_FALSE(exists("tables/lumps.csv"));
}

TEST_F(Program, WritesEverythingIntoTheOutputFolder)
{
    std::filesystem::create_directory(folder.file("work"));
    EXPECT_EQ(run("adjust net.inp -C work -o r.txt --json r.json --csv tables"), 0);
    EXPECT_TRUE(exists("work/r.txt") && exists("work/r.json") && exists("work/tables/points.csv"));
    EXPECT_EQ(written(), Names{"work"});
}

TEST_F(Program, TakesSolverAndModeFromItsOptions)
{
    EXPECT_EQ(run("adjust net.inp --solver jordan --mode solution --json r.json"), 0);
    EXPECT_EQ(json("r.json")["solver"], "jordan");
    EXPECT_EQ(json("r.json")["mode"], "solution");
    EXPECT_TRUE(contains(out, "Gauss Jordan solution"));
    EXPECT_EQ(run("adjust net.inp --solver compact --mode propagation --json r.json"), 0);
    EXPECT_EQ(json("r.json")["mode"], "propagation");
    EXPECT_FALSE(json("r.json").contains("sigma_a_posteriori"));
}

TEST_F(Program, AsksNothingWithoutATerminal)
{
    EXPECT_EQ(run("adjust net.inp --balance --ask"), 0);
    EXPECT_FALSE(contains(err, "[y/N]")); // standard input is no terminal
}

TEST_F(Program, IsQuietWhenAsked)
{
    EXPECT_EQ(run("adjust net.inp --quiet"), 0);
    EXPECT_EQ(err, "");
    EXPECT_TRUE(contains(out, "\nFinal results after"));
}

TEST_F(Program, TellsWhyItStoppedEvenWhenQuiet)
{
    EXPECT_EQ(run("adjust open.inp --quiet"), 1);
    EXPECT_EQ(err.find("vorn: "), 0u);
}

TEST_F(Program, WritesReportAndJsonOfARefusedNetwork)
{
    EXPECT_EQ(run("adjust open.inp -o r.txt --json r.json"), 1);
    EXPECT_TRUE(contains(text_of(folder.file("r.txt")), "datumcheck"));
    EXPECT_EQ(json("r.json")["adjusted"], false);
    EXPECT_FALSE(json("r.json")["words"].empty());
    EXPECT_TRUE(json("r.json")["points"].empty());
    EXPECT_TRUE(contains(err, "\nvorn: the datum of the network is not defined"));
}

TEST_F(Program, ListsTheFaultsOfAnInputAndWritesNothing)
{
    folder.write("bad.inp", "[run]\ndimension = 4\nsolver = \"compcat\"\n");
    const Names before = written();
    EXPECT_EQ(run("adjust bad.inp -o r.txt --json r.json --csv tables"), 2);
    EXPECT_TRUE(contains(err, "bad.inp:2:"));
    EXPECT_TRUE(contains(err, "bad.inp:3:"));
    EXPECT_EQ(out, "");
    EXPECT_EQ(written(), before);
    EXPECT_EQ(run("check bad.inp"), 2);
    EXPECT_EQ(out, "");
}

TEST_F(Program, RefusesAnInputThatIsNotThere)
{
    EXPECT_EQ(run("adjust none.inp"), 2);
    EXPECT_TRUE(contains(err, "none.inp"));
    EXPECT_EQ(written(), Names{});
}

TEST_F(Program, RefusesWrongUsageAndWritesNothing)
{
    const char *const wrong[] = {"",
                                 "adjust",
                                 "adjust net.inp --solver gauss -o r.txt",
                                 "adjust net.inp --mode fast -o r.txt",
                                 "adjust net.inp -C nowhere -o r.txt",
                                 "adjust net.inp --jsn r.json",
                                 "adjust net.inp -o",
                                 "adjust net.inp -o ''",
                                 "adjust net.inp --json '' -o r.txt",
                                 "adjust net.inp --csv '' -o r.txt",
                                 "--quiet adjust net.inp -o r.txt",
                                 "adjust net.inp --solver simplex --mode propagation -o r.txt",
                                 "adjust net.inp -o same --json same",
                                 "adjust net.inp -o net.inp",
                                 "adjust net.inp --json ./net.inp",
                                 "ajust net.inp",
                                 "check net.inp -o r.txt"};
    for (const char *arguments : wrong) {
        EXPECT_EQ(run(arguments), 2) << arguments;
        EXPECT_NE(err, "") << arguments;
        EXPECT_EQ(out, "") << arguments;
        EXPECT_EQ(written(), Names{}) << arguments;
    }
    EXPECT_EQ(text_of(folder.file("net.inp")), network);
}

TEST_F(Program, NamesItsCommands)
{
    const std::string commands = "; write vorn adjust NAME.inp, or another command of vorn --help\n";
    EXPECT_EQ(run(""), 2);
    EXPECT_EQ(err, "vorn: a command is missing" + commands);
    EXPECT_EQ(run("net.inp"), 2);
    EXPECT_EQ(err, "vorn: 'net.inp' is no command" + commands);
}

TEST_F(Program, NamesTheWordsItKnows)
{
    EXPECT_EQ(run("adjust net.inp --solver gauss"), 2);
    EXPECT_TRUE(contains(err, "'gauss' is none of compact, jordan, simplex, sparse")) << err;
}

TEST_F(Program, NamesResultsThatAreNotNumbers)
{
    folder.write("bad.inp", "[run]\nsolver = \"compact\"\ndimension = 2\n[tables]\ntargets = '''\nname x y code\nA 0 0 "
                            "fixed\nB 120 0 fixed\n"
                            "P 0 0 free\n'''\ndistances = '''\nfrom to value sigma\nA P 100 1\nB P 100 1\n'''\n");
    EXPECT_EQ(run("adjust bad.inp --mode propagation --quiet --json r.json --csv tables"), 1);
    EXPECT_EQ(err, "vorn: standard deviations of coordinates that are not finite numbers: P x, P y\n");
    EXPECT_TRUE(json("r.json")["points"][2]["standard_deviation"]["x"].is_null());
    const std::string points = text_of(folder.file("tables/points.csv"));
    EXPECT_FALSE(contains(points, "nan") || contains(points, "inf")) << points;
    EXPECT_EQ(run("adjust bad.inp --solver jordan --quiet --json r.json"), 1);
    EXPECT_TRUE(contains(err, "\n      points without numbers: P\n")) << err;
}

TEST_F(Program, RefusesAnImportWhoseFileCannotBeRead)
{
    folder.write("import.inp", "[run]\ndimension = 1\n[connected_net]\nfile = \"main.con\"\n[tables]\ntargets = '''\n"
                               "name z code connect\nA 100 fixed none\nB 101 free import\nC 102 free none\n'''\n"
                               "height_differences = '''\nfrom to value sigma\nA B 1 1\nB C 1 1\nC A -2 1\n'''\n");
    for (const std::string why : {" does not exist; check its name and folder\n", " is a folder; name a file\n"}) {
        for (const std::string command :
             {"adjust import.inp -o r.txt --json r.json --csv tables", "check import.inp"}) {
            EXPECT_EQ(run(command), 2);
            EXPECT_EQ(err.find("import.inp:4:8: file \""), 0u) << err;
            EXPECT_TRUE(contains(err, "main.con\"" + why)) << err;
            EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << err;
        }
        std::filesystem::create_directory(folder.file("main.con"));
    }
    EXPECT_FALSE(exists("r.txt") || exists("r.json") || exists("tables"));
}

// The cofactors of P, which lies on A, are no numbers.
TEST_F(Program, KeepsNoConnectedNetWithoutNumbers)
{
    folder.write("bad.inp",
                 "[run]\nsolver = \"compact\"\ndimension = 2\nmode = \"propagation\"\n[tables]\ntargets = '''\n"
                 "name x y code connect\nA 0 0 fixed none\nB 120 0 fixed none\nC 0 90 fixed none\n"
                 "P 0 0 free export\nR 60 60 free export\n'''\ndistances = '''\nfrom to value sigma\n"
                 "A P 100 1\nB P 100 1\nA R 1 1\nB R 1 1\nC R 1 1\n'''\n");
    folder.write("bad.con", "earlier\n");
    EXPECT_EQ(run("adjust bad.inp --quiet -o r.txt"), 1);
    EXPECT_TRUE(contains(err, "vorn: bad.con is not written: its numbers are not all finite\n")) << err;
    EXPECT_EQ(text_of(folder.file("bad.con")), "earlier\n");
}

// The report has more than 1024 bytes.
TEST_F(Program, TellsThatAFileIsBeyondTheLimitOfTheUser)
{
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small = {1024, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const int status = run("adjust net.inp -o r.txt --quiet");
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_EQ(status, 3);
    EXPECT_EQ(err, "vorn: cannot write r.txt: File too large\n");
}

TEST_F(Program, TellsThatTheDiskIsFull)
{
    EXPECT_EQ(run("adjust net.inp -o /dev/full"), 3);
    EXPECT_TRUE(contains(err, "vorn: cannot write /dev/full: No space left on device\n"));
    EXPECT_EQ(run("adjust net.inp --json /dev/full"), 3);
    EXPECT_TRUE(contains(err, "vorn: cannot write /dev/full: No space left on device\n"));
    EXPECT_EQ(run("adjust net.inp", ">/dev/full"), 3);
    EXPECT_TRUE(contains(err, "vorn: cannot write standard output: No space left on device\n"));
    EXPECT_EQ(run("check net.inp", ">/dev/full"), 3);
    EXPECT_EQ(run("--help", ">/dev/full"), 3);
    EXPECT_EQ(run("adjust open.inp", ">/dev/full"), 3);
    EXPECT_EQ(run("adjust open.inp -o /dev/full"), 3);
}

TEST_F(Program, TellsThatAFolderIsMissing)
{
    EXPECT_EQ(run("adjust net.inp -o nowhere/r.txt"), 3);
    EXPECT_EQ(err, "vorn: cannot write nowhere/r.txt: No such file or directory\n"); // before the run
    EXPECT_EQ(run("adjust net.inp -o r.txt --json nowhere/r.json"), 3);
    EXPECT_EQ(run("adjust net.inp -o r.txt --csv net.inp"), 3);
    EXPECT_EQ(written(), Names{});
}

TEST_F(Program, NoticesThatStandardOutputIsClosed)
{
    EXPECT_EQ(run("adjust net.inp --json r.json", ">&-"), 3);
    EXPECT_TRUE(contains(err, "vorn: cannot write standard output: Bad file descriptor\n"));
    EXPECT_FALSE(exists("r.json"));
    EXPECT_EQ(run("adjust net.inp -o r.txt", ">&- <&-"), 0);
    EXPECT_TRUE(contains(text_of(folder.file("r.txt")), "\nFinal results after"));
}

TEST_F(Program, EndsInOrderWhenItsReaderHasGone)
{
    const std::string command = "cd " + folder.path +
                                " && { " VORN_PROGRAM
                                " adjust net.inp 2>streams/err; echo $? >streams/status; } | exec false";
    ASSERT_NE(system(("sleep 0; " + command).c_str()), -1);
    const std::string status = text_of(folder.file("streams/status"));
    EXPECT_TRUE(status == "3\n" || status == "0\n") << status; // 0: it was faster than its reader
}

TEST_F(Program, SaysWhatTheRunWouldBe)
{
    EXPECT_EQ(run("check net.inp --solver jordan"), 0);
    EXPECT_EQ(out, "Triangle\n"
                   "net.inp: solver jordan, mode statistics\n"
                   "height differences: read 4 = used 3 + left out 1\n"
                   "  net.inp:17: A to C: use = no in the file\n"
                   "1D problem\n"
                   "number of points                     3\n"
                   "number of height differences         3\n"
                   "number of coordinates unknowns       2\n"
                   "datum: held by fixed or weighted coordinates\n"
                   "this network can be adjusted\n");
    EXPECT_EQ(err, "");
    EXPECT_EQ(written(), Names{});
}

// The engine counts: P has three distances, but all along one line.
TEST_F(Program, SaysWhatCountingDoesNotSee)
{
    folder.write("line.inp", "[run]\ndimension = 2\nsolver = \"compact\"\n[tables]\ntargets = '''\nname x y code\n"
                             "A 0 0 fixed\nB 100 0 fixed\nC 200 0 fixed\nP 50 0 free\n'''\ndistances = '''\n"
                             "from to value sigma\nA P 50 0.001\nB P 50 0.001\nC P 150 0.001\n'''\n");
    EXPECT_EQ(run("check line.inp"), 0);
    EXPECT_TRUE(contains(out, "solver sparse refuses it: P can move along y: its 3 distances leave this open"));
    EXPECT_TRUE(contains(out, "\nwhether this network can be adjusted, only its adjustment shows\n"));
    EXPECT_FALSE(contains(out, "this network can be adjusted\n"));
}

TEST_F(Program, SaysWhyANetworkCannotBeAdjusted)
{
    EXPECT_EQ(run("check open.inp"), 1);
    EXPECT_TRUE(contains(err, "vorn: the datum of the network is not defined"));
    EXPECT_FALSE(contains(out, "can be adjusted"));
    EXPECT_EQ(written(), Names{});
}

TEST_F(Program, ExplainsItselfWithExamples)
{
    for (const char *arguments : {"--help", "adjust --help", "check --help"}) {
        EXPECT_EQ(run(arguments), 0) << arguments;
        EXPECT_TRUE(contains(out, "  vorn check bridge.inp") || contains(out, "  vorn adjust bridge.inp")) << out;
        EXPECT_EQ(err, "") << arguments;
    }
    EXPECT_EQ(run("--version"), 0);
    EXPECT_EQ(out.find("vorn "), 0u);
}

// The program's own adjustment from the command line.

namespace {

const char loose[] = "[run]\ndimension = 1\nsolver = \"sparse\"\n[tables]\ntargets = '''\nname z code\nA 100 fixed\n"
                     "B 101 free\nX 50 free\nY 51 free\n'''\nheight_differences = '''\nfrom to value sigma\n"
                     "A B 1 0.001\nX Y 1 0.001\n";

} // namespace

TEST_F(Program, RefusesLooseLoopsAndAdjustsThemWithATie)
{
    folder.write("open.inp", std::string(loose) + "'''\n");
    const std::string words = "vorn: X, Y: no observations tie this part to the rest, and it is not held by itself: a "
                              "height difference to the rest or a fixed height would do\n";
    for (const char *command : {"adjust open.inp -o r.txt --json r.json", "check open.inp"}) {
        EXPECT_EQ(run(command), 1) << command;
        EXPECT_TRUE(contains(err, words)) << err;
        EXPECT_FALSE(contains(out, "can be adjusted"));
    }
    EXPECT_EQ(json("r.json")["stage"], "datum");
    EXPECT_EQ(json("r.json")["code"], "no datum");
    EXPECT_TRUE(contains(text_of(folder.file("r.txt")), "Not adjusted: no datum.\nX, Y: no observations"));

    folder.write("open.inp", std::string(loose) + "B X -51 0.001\n'''\n");
    EXPECT_EQ(run("check open.inp"), 0) << err;
    EXPECT_TRUE(contains(out, "datum: held by 1 fixed height\ndegrees of freedom: 0\nthis network can be adjusted\n"));
    EXPECT_EQ(run("adjust open.inp -o r.txt --json r.json"), 0) << err;
    EXPECT_EQ(json("r.json")["stage"], "done");
    EXPECT_EQ(json("r.json")["code"], "adjusted");
}

TEST_F(Program, GivesTheStageAndTheCodeOfEveryEnd)
{
    const auto plane = [](const std::string &points, const std::string &distances) {
        return "[run]\ndimension = 2\nsolver = \"sparse\"\n[tables]\ntargets = '''\nname x y code\n" + points +
               "'''\ndistances = '''\nfrom to value sigma\n" + distances + "'''\n";
    };
    const std::string held = "A 0 0 fixed\nB 100 0 fixed\n";
    const struct {
        const char *stage, *code;
        std::string text;
    } ends[] = {
        {"first coordinates", "no first coordinates", plane(held + "P - - free\n", "A P 70 0.001\n")},
        {"datum", "no datum",
         plane("A 0 0 free\nB 100 0 no_datum\nC 0 90 no_datum\n", "A B 100 1\nB C 134.536 1\nC A 90 1\n")},
        {"adjustment", "undetermined", plane(held + "P 50 50 free\nQ 80 80 free\n", "A P 70 1\nB P 70 1\nA Q 113 1\n")},
        {"adjustment", "no convergence", plane(held + "P 50 1 free\n", "A P 10 0.001\nB P 20 0.001\n")},
        {"done", "adjusted", plane(held + "P 50 50 free\n", "A P 70 1\nB P 70 1\n")}};
    for (const auto &end : ends) {
        folder.write("net.inp", end.text);
        const bool done = std::string(end.stage) == "done";
        EXPECT_EQ(run("adjust net.inp -o r.txt --json r.json"), done ? 0 : 1) << end.code;
        EXPECT_EQ(json("r.json")["stage"], end.stage) << err;
        EXPECT_EQ(json("r.json")["code"], end.code) << err;
        EXPECT_EQ(json("r.json")["engine_code"], 0);
        EXPECT_EQ(json("r.json")["adjusted"], done);
        EXPECT_EQ(run("check net.inp"), done ? 0 : 1) << end.code << err;
    }
}

// The report then goes where -o says, or nowhere.
TEST_F(Program, WritesJsonOnStandardOutput)
{
    for (const char *solver : {"compact", "sparse"}) {
        const std::string options = std::string("adjust net.inp --json - --solver ") + solver;
        EXPECT_EQ(run(options), 0);
        const nlohmann::json all = nlohmann::json::parse(out);
        EXPECT_EQ(all["solver"], solver);
        EXPECT_EQ(all["units"]["length"], "m");
        EXPECT_FALSE(exists("-"));
        EXPECT_EQ(run(options + " -o r.txt"), 0);
        EXPECT_EQ(nlohmann::json::parse(out)["points"], all["points"]);
        EXPECT_FALSE(text_of(folder.file("r.txt")).empty());
    }
    EXPECT_EQ(run("adjust net.inp --json -", ">/dev/full"), 3);
    EXPECT_TRUE(contains(err, "vorn: cannot write standard output: No space left on device\n")) << err;
    EXPECT_EQ(run("adjust open.inp --json - --solver compact"), 1);
    EXPECT_EQ(nlohmann::json::parse(out)["adjusted"], false);
}

TEST_F(Program, ReportsInItsOwnWordsWithTheSolverSparse)
{
    EXPECT_EQ(run("adjust net.inp --solver sparse --csv tables"), 0);
    EXPECT_EQ(out.find("Triangle\n========\nfile       net.inp\n"), 0u) << out;
    EXPECT_TRUE(contains(out, "B      free   101.23300  "));
    EXPECT_TRUE(contains(out, "A to C") || contains(out, "height differences  A     C"));
    EXPECT_TRUE(contains(err, "height differences: read 4 = used 3 + left out 1\n"));
    EXPECT_TRUE(
        contains(text_of(folder.file("tables/residuals.csv")), ",component,unit,adjusted,redundancy,normalised"));
    EXPECT_EQ(run("adjust net.inp --solver sparse", ">/dev/full"), 3);
}

TEST_F(Program, ReadsTheNetworkFromStandardInput)
{
    EXPECT_EQ(run("adjust net.inp --json file.json -o file.txt"), 0);
    EXPECT_EQ(run("adjust - --json piped.json -o piped.txt", "<net.inp"), 0) << err;
    EXPECT_EQ(text_of(folder.file("piped.txt")), text_of(folder.file("file.txt")));
    EXPECT_EQ(json("piped.json")["points"], json("file.json")["points"]);
    EXPECT_EQ(json("piped.json")["file"], "standard input");
    EXPECT_EQ(run("check -", "<net.inp"), 0);
    EXPECT_EQ(run("adjust -", "<open.inp"), 1);
}

TEST_F(Program, NamesThePlaceInStandardInput)
{
    EXPECT_EQ(run("adjust -"), 2);
    EXPECT_EQ(err.rfind("standard input: dimension is missing in [run]; write dimension = 1, 2 or 3\n", 0), 0u) << err;
    folder.write("open.inp", "[run]\ndimension = 4\n");
    EXPECT_EQ(run("adjust -", "<open.inp"), 2);
    EXPECT_TRUE(contains(err, "standard input:2:13: ")) << err;
}

TEST_F(Program, TakesAMinusForStandardOutput)
{
    EXPECT_EQ(run("adjust net.inp"), 0);
    const std::string report = out;
    const Names before = written();
    EXPECT_EQ(run("adjust net.inp -o -"), 0);
    EXPECT_EQ(out, report);
    EXPECT_EQ(written(), before);
    EXPECT_EQ(run("adjust net.inp -o - --json -"), 2);
    EXPECT_EQ(out, "");
}

TEST_F(Program, WritesTheNetworkFileWithItsAdjustedCoordinates)
{
    EXPECT_EQ(run("adjust net.inp --solver sparse --json net.json -o net.txt --update new.inp"), 0) << err;
    std::string text = network;
    text.replace(text.find("101.2 "), 5, "101.233000");
    text.replace(text.find("103.5 "), 5, "103.453000");
    EXPECT_EQ(text_of(folder.file("new.inp")), text);
    EXPECT_EQ(run("adjust new.inp --solver sparse --json new.json -o new.txt"), 0);
    for (int i = 0; i < 3; i++)
        EXPECT_NEAR(json("new.json")["points"][i]["adjusted"]["z"].get<double>(),
                    json("net.json")["points"][i]["adjusted"]["z"].get<double>(), 1e-12);
}

TEST_F(Program, WritesNoNetworkFileOfWhatItDidNotAdjust)
{
    EXPECT_EQ(run("adjust open.inp --update new.inp"), 1);
    EXPECT_FALSE(exists("new.inp"));
    EXPECT_EQ(run("adjust net.inp --update net.inp"), 2);
    EXPECT_EQ(err, "vorn: net.inp is an input of this run; write to another file\n");
    EXPECT_EQ(run("adjust - --update new.inp", "<net.inp"), 2);
    EXPECT_EQ(err, "vorn: --update needs a network file; import it first\n");
    EXPECT_FALSE(exists("new.inp"));
}

TEST_F(Program, WritesANetworkFileBesideTheOneThatNamesOthers)
{
    folder.write("points.csv", "name,z,code\nA,100,fixed\nB,101,free\n");
    folder.write("split.inp", "[run]\ndimension = 1\n[tables]\ntargets = \"\"\"\nname code\nC free\n\"\"\"\n"
                              "stations = { file = \"points.csv\" }\nheight_differences = \"\"\"\nfrom to value sigma\n"
                              "A B 1.25 0.001\nB C 1.5 0.001\n\"\"\"\n");
    EXPECT_EQ(run("adjust split.inp --update streams/new.inp"), 2);
    EXPECT_EQ(err, "vorn: --update has to stand beside the network file, which names other files\n");
    EXPECT_EQ(run("adjust split.inp --quiet -C streams --update ../new.inp -o new.txt"), 2);
    EXPECT_EQ(
        err, "vorn: split.inp: the table stations stands in a file of its own; write it into the network file first\n");
    EXPECT_EQ(run("adjust split.inp -C streams --update new.inp"), 2);
    EXPECT_FALSE(exists("new.inp") || exists("streams/new.inp") || exists("streams/new.txt"));
}

// A file without values and without a mode is a plan where the command or an option says so.
TEST_F(Program, PlansAFileWithoutValues)
{
    folder.write("open.inp", "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 1 fixed\nB 2 free\n'''\n"
                             "height_differences = '''\nfrom to sigma\nA B 0.003\nA B 0.004\n'''\n");
    EXPECT_EQ(run("plan open.inp --json plan.json"), 0) << err;
    EXPECT_NEAR(json("plan.json")["points"][0]["position"].get<double>(), 0.0024, 1e-12); // 1 / sqrt(1/9 + 1/16)
    EXPECT_EQ(run("adjust open.inp --mode propagation"), 0) << err;
    EXPECT_EQ(run("adjust open.inp"), 2);
    EXPECT_TRUE(contains(err, "only a plan")) << err;
}

// The library is loaded for reference systems alone.
TEST_F(Program, AdjustsWithoutProjAndRefusesReferenceSystemsByName)
{
    const std::string library = PROJ_LIBRARY;
    if (library.empty()) GTEST_SKIP() << "built without PROJ";
    std::filesystem::create_directory(folder.file("libraries"));
    folder.write("libraries/" + library, "no library");
    folder.write("grid.inp", "[run]\ndimension = 2\n[crs]\nnetwork = \"EPSG:25832\"\n"
                             "heights = \"ellipsoidal\"\n[tables]\nstations = \"\"\"\nname x y code\n"
                             "A 5500000 500000 fixed\nB 5501000 500000 fixed\n\"\"\"\n");
    const std::string before = getenv("LD_LIBRARY_PATH") ? getenv("LD_LIBRARY_PATH") : "";
    setenv("LD_LIBRARY_PATH", folder.file("libraries").c_str(), 1);
    EXPECT_EQ(run("adjust net.inp"), 0);
    EXPECT_EQ(run("check grid.inp"), 2);
    EXPECT_TRUE(contains(err, "grid.inp:4:11: reference systems need the PROJ library " + library)) << err;
    EXPECT_EQ(run("--version"), 0);
    EXPECT_TRUE(contains(out, "without PROJ")) << out;
    setenv("LD_LIBRARY_PATH", before.c_str(), 1);
}
