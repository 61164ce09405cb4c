#include "host/run/connected_net.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "host/folder.h"
#include "host/run/runner.h"
#include "support/network.h"

using namespace vornhost;

namespace {

const std::string Q = "'''\n";

// A levelling of A (fixed), B and C, with both marks for the connected net.
std::string levelling(const std::string &b, const std::string &c, const std::string &extra = "",
                      const std::string &a_code = "fixed",
                      const std::string &lines = "A B 1 1\nB C 1 1\nC A -2.001 1\n")
{
    return "[run]\ndimension = 1\n" + extra + "[tables]\ntargets = " + Q + "name z code connect\nA 100 " + a_code +
           " none\nB 101 free " + b + "\nC 102 free " + c + "\n" + Q + "height_differences = " + Q +
           "from to value sigma\n" + lines + Q;
}

// Runs in a folder of their own, in which the network file stands.
class ConnectedNets : public testing::Test {
protected:
    // Runs the network as NAME.inp.
    RunOutcome run(const std::string &name, const std::string &text, bool solving = true)
    {
        folder.write(name + ".inp", text);
        EXPECT_EQ(folder.read(name + ".inp"), Lines());
        const std::unique_ptr<FILE, int (*)(FILE *)> report(tmpfile(), fclose);
        Recorder messages;
        RunOutcome outcome = solving ? vornhost::run(folder.model, report.get(), messages)
                                     : vornhost::check(folder.model, report.get(), messages);
        folder.model.p.freerun(folder.model.p.runresults);
        folder.model.p.runresults = nullptr;
        told = messages.lines;
        return outcome;
    }

    // The run leaves an earlier net.con as it was, none where there was none, and says why.
    void expect_kept(const std::string &text, const std::string &reason)
    {
        const std::string note = "net.con is not written: " + reason;
        for (const std::string earlier : {"", "the file of another run\n"}) {
            std::filesystem::remove("net.con");
            if (!earlier.empty()) folder.write("net.con", earlier);
            const RunOutcome outcome = run("net", text);
            EXPECT_EQ(std::filesystem::exists("net.con"), !earlier.empty());
            EXPECT_EQ(file_text("net.con"), earlier);
            EXPECT_EQ(outcome.prepared.notes.empty() ? "" : outcome.prepared.notes.back(), note);
            EXPECT_NE(std::find(told.begin(), told.end(), note), told.end());
            EXPECT_EQ(outcome.lost, Lines()); // the system has refused nothing
        }
    }

    void expect_refused(const RunOutcome &outcome, const Lines &words)
    {
        EXPECT_FALSE(outcome.adjusted());
        EXPECT_EQ(outcome.words, words);
    }

    static std::string import() { return "[connected_net]\nfile = \"main.con\"\n"; }

    Folder folder;
    InFolder in{folder.path};
    Lines told;
};

TEST_F(ConnectedNets, AreExportedByAWholeRun)
{
    for (const char *mode : {"statistics", "propagation"}) {
        folder.write("net.con", "earlier");
        const RunOutcome outcome =
            run("net", "[run]\nmode = \"" + std::string(mode) + "\"\n" + levelling("export", "none").substr(6));
        EXPECT_TRUE(outcome.adjusted());
        EXPECT_EQ(outcome.prepared.notes, Lines());
        EXPECT_EQ(file_text("net.con").substr(0, 52), "File: net.con for 1 connections in dimension 1\nB    ");
    }
}

TEST_F(ConnectedNets, AreImported)
{
    run("main", levelling("export", "none"));
    EXPECT_TRUE(run("net", levelling("import", "none", import())).adjusted());
    EXPECT_FALSE(std::filesystem::exists("net.con"));
}

// The longest name whose heading the engine reads back, and one letter more.
TEST_F(ConnectedNets, HaveNamesThatCanBeReadBack)
{
    for (const int exported : {1, 10}) {
        std::string text = levelling("export", "none");
        for (int i = 1; i < exported; i++) {
            const std::string name = "N" + std::to_string(i);
            text.insert(text.find("C 102"), name + " 103 free export\n");
            text.insert(text.find("A B 1 1"), "A " + name + " 3 1\nA " + name + " 3 1\n");
        }
        const size_t longest = exported == 1 ? 35 : 34;
        const std::string name(longest, 'n');
        EXPECT_TRUE(run(name, text).adjusted());
        std::string second = text;
        for (size_t at = 0; (at = second.find("export", at)) != std::string::npos;) second.replace(at, 6, "import");
        second.insert(second.find("[tables]"), "[connected_net]\nfile = \"" + name + ".con\"\n");
        const RunOutcome outcome = run("net", second);
        EXPECT_TRUE(outcome.adjusted()) << outcome.words[0];

        folder.write(name + "n.inp", text);
        EXPECT_EQ(folder.read(name + "n.inp"),
                  (Lines{name + "n.inp:7:1: " + name +
                         "n.con, which the exported points need, has too long a name to be "
                         "read back; give the network file a name of at most " +
                         std::to_string(longest) + " bytes before its extension"}));
        text.replace(text.find("B 101 free export"), 17, "B 101 free none");
        if (exported > 1) continue;
        folder.write(name + "n.inp", text);
        EXPECT_EQ(folder.read(name + "n.inp"), Lines());
    }
}

TEST_F(ConnectedNets, OfNetworksWithPointsInTheirNamesAreFilesOfTheirOwn)
{
    run("my.net", levelling("export", "none"));
    run("my.other", levelling("export", "export"));
    EXPECT_EQ(file_text("my_net.con").substr(0, 39), "File: my_net.con for 1 connections in d");
    EXPECT_EQ(file_text("my_other.con").substr(0, 39), "File: my_other.con for 2 connections in");
}

TEST_F(ConnectedNets, TakeTheWeightOfWeightedItemsAndSayIt)
{
    run("main", levelling("export", "none"));
    const std::string note =
        "weighted coordinates, rotations and constants have no weight in a network that imports points";
    const auto text = [](const std::string &connect) {
        return "[run]\ndimension = 1\n" + import() + "[tables]\ntargets = " + Q +
               "name z code sz connect\nA 100 fixed - none\nB 101 free - " + connect + "\nC 102 weighted 0.01 none\n" +
               Q + "height_differences = " + Q + "from to value sigma\nA B 1 1\nB C 1 1\nC A -2.001 1\n" + Q;
    };
    EXPECT_EQ(run("net", text("import")).prepared.notes, Lines{note});
    EXPECT_EQ(run("net", text("import"), false).prepared.notes, Lines{note});
    EXPECT_EQ(run("net", text("none")).prepared.notes, Lines());
}

TEST_F(ConnectedNets, AreNotExportedWithoutCovariances)
{
    expect_kept("[run]\nmode = \"solution\"\n" + levelling("export", "none").substr(6),
                "the mode solution has no covariances");
    expect_kept("[run]\nsolver = \"simplex\"\n" + levelling("export", "none").substr(6),
                "the solver simplex has no covariances");
}

TEST_F(ConnectedNets, AreNotExportedWithoutRedundancy)
{
    expect_kept(levelling("export", "none", "", "fixed", "A B 1 1\nB C 1 1\n"),
                "without redundant observations the engine exports nothing");
}

TEST_F(ConnectedNets, AreNotExportedByARunThatFails)
{
    expect_kept(levelling("export", "none", "", "fixed", "A B 1 1\nA B 1 1\n"), "the network was not adjusted");
}

TEST_F(ConnectedNets, AreNotExportedWithAPointThatIsHeld)
{
    std::string text = levelling("export", "export");
    text.replace(text.find("C 102 free"), 10, "C 102 fixed");
    expect_kept(text, "every exported point must be free in all its coordinates");
}

TEST_F(ConnectedNets, AreNotExportedWithFewerPointsThanDimensions)
{
    expect_kept("[run]\ndimension = 2\n[tables]\ntargets = " + Q +
                    "name x y code connect\nA 0 0 fixed none\nB 100 0 fixed none\nC 0 100 fixed none\n"
                    "P 50 50 free export\n" +
                    Q + "distances = " + Q + "from to value sigma\nA P 70.71 1\nB P 70.71 1\nC P 70.71 1\n" + Q,
                "at least 2 points must be exported");
}

TEST_F(ConnectedNets, AreNotExportedIntoAFolderOfTheirName)
{
    std::filesystem::create_directory("net.con");
    const RunOutcome outcome = run("net", levelling("export", "none"));
    EXPECT_EQ(outcome.prepared.notes, Lines{"net.con is not written: it cannot be opened"});
    EXPECT_EQ(outcome.lost, outcome.prepared.notes);
    EXPECT_TRUE(std::filesystem::is_directory("net.con"));
}

TEST_F(ConnectedNets, HaveFiniteNumbersBehindTheNames)
{
    const std::string head = "File: inf.con for 1 connections in dimension 1\n", good = "nan inf    1.000000\n";
    EXPECT_TRUE(finite_file("missing"));
    folder.write("a", head + good + "                     0.5\n");
    EXPECT_TRUE(finite_file("a"));
    for (const char *bad : {"nan", "-nan", "inf", "-inf"}) {
        folder.write("a", head + "B          " + bad + "\n  0.5\n");
        EXPECT_FALSE(finite_file("a")) << bad;
        folder.write("a", head + good + "                      " + bad + "\n");
        EXPECT_FALSE(finite_file("a")) << bad;
    }
}

TEST_F(ConnectedNets, AreNeitherWrittenNorMissedByACheck)
{
    const RunOutcome outcome = run("net", levelling("export", "none"), false);
    EXPECT_TRUE(outcome.adjusted());
    EXPECT_EQ(outcome.prepared.notes, Lines());
    EXPECT_FALSE(std::filesystem::exists("net.con"));
}

// The engine goes on without the import; the program does not.
TEST_F(ConnectedNets, ThatDoNotFitStopTheRun)
{
    run("main", levelling("export", "export"));
    for (const bool solving : {true, false}) {
        const RunOutcome outcome = run("net", levelling("import", "none", import()), solving);
        expect_refused(outcome, {"the connected net could not be set up (fill_connect: Incompatibilities with 1 code)",
                                 "check that its file belongs to this network, and that the imported points are "
                                 "free in all coordinates"});
        EXPECT_EQ(outcome.reached, Stage::Loading);
        EXPECT_EQ(outcome.code, -6);
    }
}

TEST_F(ConnectedNets, WithAPointThatIsHeldStopTheRun)
{
    run("main", levelling("export", "export"));
    std::string text = levelling("import", "import", import());
    text.replace(text.find("C 102 free"), 10, "C 102 fixed");
    EXPECT_EQ(run("net", text).words[0],
              "the connected net could not be set up (set_connect: C        cannot be used in connected net)");
}

TEST_F(ConnectedNets, AreNotImportedBySimplex)
{
    run("main", levelling("export", "none"));
    expect_refused(run("net", "[run]\nsolver = \"simplex\"\n" + levelling("import", "none", import()).substr(6)),
                   {"the solver simplex cannot import points", "choose the solver compact or jordan"});
}

TEST_F(ConnectedNets, AreNotImportedWithFewerPointsThanDimensions)
{
    folder.write("main.con", "");
    expect_refused(
        run("net", "[run]\ndimension = 2\n" + import() + "[tables]\ntargets = " + Q +
                       "name x y code connect\nA 0 0 free import\nB 100 0 free none\n" + Q + "distances = " + Q +
                       "from to value sigma\nA B 100 1\n" + Q),
        {"too few points are imported: 1 of at least 2", "import as many points as the network has dimensions"});
}

// A datum condition would pull at the imported heights.
TEST_F(ConnectedNets, OfHeightsNeedAFixedHeightBesides)
{
    run("main", levelling("export", "export"));
    expect_refused(run("net", levelling("import", "import", import(), "free")),
                   {"a height network without a fixed height is free and cannot hold what it imports",
                    "fix a height, or import all points"});
    EXPECT_TRUE(run("net", levelling("import", "import", import())).adjusted());
    std::string text = levelling("import", "import", import(), "free", "B C 1 1\nC B -1.001 1\n");
    text.replace(text.find("A 100 free none\n"), 16, "");
    EXPECT_TRUE(run("net", text).adjusted()); // every point is imported
}

} // namespace
