#include "host/run/runner.h"

#include <gtest/gtest.h>

#include <math.h>
#include <stdio.h>

#include <algorithm>
#include <memory>

#include "host/folder.h"
#include "vorn/result.h"
#include "support/faults.h"
#include "support/network.h"

using namespace vornhost;

namespace {

const std::string levelling = "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 100 fixed\nB 101 free\n"
                              "C 103 free\n'''\nheight_differences = '''\nfrom to value sigma\nA B 1.002 0.001\n"
                              "B C 2.003 0.001\nC A -3.002 0.001\n'''\n";

std::string plane(const std::string &tables, const std::string &run_keys = "")
{
    return "[run]\ndimension = 2\n" + run_keys + "[tables]\n" + tables;
}

// P lies at (60, 80); distances to A, B, C fit it.
const std::string triangle = "targets = '''\nname x y code\nA 0 0 fixed\nB 120 0 fixed\nC 0 160 fixed\nP 61 79 free\n"
                             "'''\ndistances = '''\nfrom to value sigma\nA P 100.001 0.01\nB P 100 0.01\nC P 99.999 "
                             "0.01\n'''\n";

struct Case {
    explicit Case(const std::string &text) : out(tmpfile())
    {
        folder.write("net.inp", text);
        EXPECT_EQ(folder.read(), Lines());
    }
    ~Case()
    {
        model().p.freerun(model().p.runresults);
        if (out) fclose(out);
    }
    RunOutcome run() { return vornhost::run(model(), out, messages); }
    RunOutcome check() { return vornhost::check(model(), out, messages); }
    Model &model() { return folder.model; }
    const result *results() { return model().p.runresults; }
    std::string report() const
    {
        std::string text;
        rewind(out);
        for (int c = fgetc(out); c != EOF; c = fgetc(out)) text += (char)c;
        return text;
    }
    bool told(const std::string &line) const
    {
        return std::find(messages.lines.begin(), messages.lines.end(), line) != messages.lines.end();
    }

    Folder folder;
    FILE *out;
    Recorder messages;
};

bool contains(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

} // namespace

// Misclosure 3 mm of three equal lines: each takes 1 mm.
TEST(Run, AdjustsANetwork)
{
    Case c(levelling);
    const RunOutcome outcome = c.run();
    EXPECT_TRUE(outcome.adjusted());
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.words, Lines());
    ASSERT_NE(c.results(), nullptr);
    EXPECT_NEAR(c.results()->zpt[1], 101.001, 1e-9);
    EXPECT_NEAR(c.results()->zpt[2], 103.003, 1e-9);
    EXPECT_EQ(c.results()->irun, 1);
    EXPECT_TRUE(c.told("The solution has converged"));
    EXPECT_TRUE(contains(c.report(), "Compact storage solution"));
    ASSERT_EQ(outcome.accounts.size(), 1u);
    EXPECT_EQ(outcome.accounts[0].used, 3);
    EXPECT_EQ(outcome.prepared.targets.size(), 3u);
}

TEST(Run, TakesSolverAndModeOfTheModel)
{
    const std::pair<Mode, int> modes[] = {{Mode::Statistics, 1}, {Mode::Solution, 0}, {Mode::Propagation, -2}};
    for (const Solver solver : {Solver::Compact, Solver::Jordan})
        for (const auto &[mode, irun] : modes) {
            Case c(plane(triangle));
            c.model().solver = solver;
            c.model().mode = mode;
            EXPECT_TRUE(c.run().adjusted());
            ASSERT_NE(c.results(), nullptr);
            EXPECT_EQ(c.results()->irun, irun);
            EXPECT_EQ(c.results()->ell12a != nullptr, irun != 0);
            EXPECT_EQ(contains(c.report(), "Gauss Jordan solution"), solver == Solver::Jordan);
            if (irun == -2) continue; // the coordinates stay as given
            EXPECT_NEAR(c.results()->xpt[3], 60.0, 0.01);
            EXPECT_NEAR(c.results()->ypt[3], 80.0, 0.01);
        }
}

TEST(Run, GivesTheSameCoordinatesASecondTime)
{
    Case c(plane(triangle));
    EXPECT_TRUE(c.run().adjusted());
    const double x = c.results()->xpt[3];
    EXPECT_TRUE(c.run().adjusted());
    EXPECT_EQ(c.results()->xpt[3], x);
}

TEST(Run, KeepsNeitherReportNorListener)
{
    Case c(levelling);
    c.run();
    EXPECT_EQ(c.model().p.out, nullptr);
    EXPECT_EQ(c.model().p.pfeedback, nullptr);
}

TEST(Run, PassesQuestionsOnToTheUser)
{
    Case c(levelling);
    c.run();
    EXPECT_EQ(c.messages.questions, Lines({"Approximation Info: Do you want to compute new approximate values?"}));
}

TEST(Run, SaysThatNoObservationFitsTheDimension)
{
    Case c("[run]\ndimension = 1\n[tables]\ntargets = '''\nname z\nA 0\nB 1\n'''\ndistances = '''\nfrom to value "
           "sigma\nA B 1 1\n'''\n");
    const RunOutcome outcome = c.run();
    EXPECT_EQ(outcome.reached, Stage::Loading);
    EXPECT_EQ(outcome.code, -1);
    ASSERT_EQ(outcome.words.size(), 2u);
    EXPECT_EQ(outcome.words[0], "the network could not be loaded (fill_vorn: Stop in verif)");
    EXPECT_TRUE(contains(outcome.words[1], "observations left out"));
    EXPECT_NE(c.results(), nullptr);
    ASSERT_EQ(outcome.accounts.size(), 1u);
    EXPECT_EQ(outcome.accounts[0].used, 0);
}

TEST(Run, SaysWhyTheDatumIsNotDefined)
{
    Case c(plane("targets = '''\nname x y code\nA 0 0 fixed\nB 10 0 free\nC 0 10 free\n'''\n"
                 "distances = '''\nfrom to value sigma\nA B 10 1\nB C 14 1\nA C 10 1\n'''\n"));
    const RunOutcome outcome = c.run();
    EXPECT_EQ(outcome.reached, Stage::Loading);
    EXPECT_EQ(outcome.code, -3);
    EXPECT_EQ(outcome.words[0], "the datum of the network is not defined (datumcheck: Not enough information to define "
                                "a datum)");
    EXPECT_TRUE(contains(outcome.words[1], "fix or weight"));
}

TEST(Run, NamesThePointWithTooFewObservations)
{
    Case c(plane("targets = '''\nname x y code\nA 0 0 fixed\nB 10 0 fixed\nC 0 10 free\n'''\n"
                 "distances = '''\nfrom to value sigma\nA C 10 1\nA B 10 1\n'''\n"));
    const RunOutcome outcome = c.run();
    EXPECT_EQ(outcome.code, -3);
    EXPECT_TRUE(contains(outcome.words[0], "Not enough observations for C")) << outcome.words[0];
}

// The words of a refusal do not depend on where the report goes.
TEST(Run, KnowsWhatTheEngineSaidWithoutReadingTheReport)
{
    const std::string network = plane("targets = '''\nname x y code\nA 0 0 fixed\nB 10 0 fixed\nC 0 10 free\n'''\n"
                                      "distances = '''\nfrom to value sigma\nA C 10 1\nA B 10 1\n'''\n");
    for (const char *path : {"/dev/null", "/dev/full"}) {
        Case c(network);
        const std::unique_ptr<FILE, int (*)(FILE *)> report(fopen(path, "w"), fclose);
        const RunOutcome outcome = run(c.model(), report.get(), c.messages);
        EXPECT_EQ(outcome.code, -3);
        EXPECT_TRUE(contains(outcome.words[0], "Not enough observations for C")) << outcome.words[0];
        EXPECT_EQ(ferror(report.get()) != 0, std::string(path) == "/dev/full");
    }
}

TEST(Run, SaysThatTheSolutionDiverges)
{
    Case c(plane("stations = '''\nname x y orientation code_rx3\nA 0 0 0 fixed\nB 100 0 0 fixed\n'''\n"
                 "targets = '''\nname x y code\nP 50 0.0001 free\n'''\n"
                 "directions = '''\nfrom to value sigma\nA P 100 0.001\nB P 100 0.001\n'''\n"
                 "distances = '''\nfrom to value sigma\nA B 100 0.1\n'''\n"));
    for (station_input &s : c.model().stations.records) s.ix[0] = s.ix[1] = CODE_FIXED;
    const RunOutcome outcome = c.run();
    EXPECT_EQ(outcome.reached, Stage::Solving);
    EXPECT_EQ(outcome.code, -4);
    EXPECT_TRUE(contains(outcome.words[0], "does not converge")) << outcome.words[0];
    EXPECT_TRUE(contains(outcome.words[1], "approximate coordinates"));
}

TEST(Run, SaysAfterHowManyIterationsItGaveUp)
{
    Case c(plane(triangle, "iterations = 1\nconvergence = 1e-12\n"));
    const RunOutcome outcome = c.run();
    EXPECT_EQ(outcome.code, -4);
    EXPECT_EQ(outcome.words[0], "the adjustment does not converge (no convergence after 1 iterations)");
}

// Nothing determines the orientation that the file frees.
TEST(Run, SaysThatSomethingIsNotDetermined)
{
    Case c(plane("stations = '''\nname x y code_rx3\nP 61 79 free\n'''\ntargets = '''\nname x y code\nA 0 0 fixed\n"
                 "B 120 0 fixed\nC 0 160 fixed\n'''\ndistances = '''\nfrom to value sigma\nP A 100 0.01\nP B 100 "
                 "0.01\nP C 100 0.01\n'''\n"));
    const RunOutcome outcome = c.run();
    EXPECT_EQ(outcome.reached, Stage::Solving);
    EXPECT_EQ(outcome.code, -3);
    EXPECT_TRUE(contains(outcome.words[0], "singular")) << outcome.words[0];
}

TEST(Run, TakesNoCoordinatesThatAreNotNumbers)
{
    Case c(plane("targets = '''\nname x y code\nA 0 0 fixed\nB 120 0 fixed\nP 0 0 free\n'''\n"
                 "distances = '''\nfrom to value sigma\nA P 100 0.01\nB P 100 0.01\n'''\n"));
    c.model().solver = Solver::Jordan;
    const RunOutcome outcome = c.run();
    EXPECT_EQ(outcome.reached, Stage::Solving);
    ASSERT_FALSE(outcome.words.empty());
    EXPECT_TRUE(contains(outcome.words[0], "not numbers")) << outcome.words[0];
    EXPECT_EQ(outcome.words[1], "points without numbers: P");
}

// Each allocation of the engine fails in turn; the run of another is left out.
TEST(Run, SaysThatNotAllResultsWereHandedOver)
{
    int incomplete = 0;
    for (int n = 1;; n++) {
        Case c(levelling);
        fail_allocation(n);
        const RunOutcome outcome = c.run();
        const bool met = allocations() >= n;
        fail_allocation(0);
        const bool failed = c.told("backtoproject failed") && outcome.adjusted();
        EXPECT_EQ(outcome.handed_over, !failed) << n;
        EXPECT_EQ(outcome.lost, failed ? Lines{"not all results could be handed over: free memory"} : Lines()) << n;
        incomplete += failed;
        if (!met) break;
    }
    EXPECT_GT(incomplete, 0);
}

// A free network in space: the station with vertical angles only must not hold its turn. All
// observations are exact, so the shape is that of S (0 0 1), T (100 0 2), A (30 80 12).
TEST(Run, AdjustsAFreeNetworkWithAStationWithoutDirections)
{
    for (const Solver solver : {Solver::Compact, Solver::Jordan}) {
        Case c("[run]\ndimension = 3\nmode = 'solution'\n[tables]\nstations = '''\nname x y z\nS 0.02 0 1\nT 100 -0.01 "
               "2\n'''\ntargets = '''\nname x y z\nA 30.01 80 12\nB -40 60.02 5\nC 70 -50 -3.01\n'''\n"
               "distances = '''\nfrom to value sigma\nS A 86.145226 0.001\nS B 72.221880 0.001\nS C 86.116201 0.001\nS "
               "T 100.005000 0.001\nT A 106.770783 0.001\nT B 152.345003 0.001\nT C 58.523500 0.001\nT S 100.005000 "
               "0.001\n'''\n"
               "directions = '''\nfrom to value sigma\nS A 97.15994976 0.001\nS B 157.43340836 0.001\nS C 380.51369134 "
               "0.001\nS T 20.00000000 0.001\n'''\n"
               "vertical_angles = '''\nfrom to value sigma\nS A 91.84866178 0.001\nS B 96.47228408 0.001\nS C "
               "102.95809108 0.001\nS T 99.36340145 0.001\nT A 94.02875786 0.001\nT B 98.74627803 0.001\nT C "
               "105.44564840 0.001\nT S 100.63659855 0.001\n'''\n");
        c.model().solver = solver;
        const RunOutcome outcome = c.run();
        ASSERT_TRUE(outcome.adjusted()) << outcome.words[0];
        const result *r = c.results();
        const auto length = [r](int a, int b) {
            return hypot(hypot(r->xpt[a] - r->xpt[b], r->ypt[a] - r->ypt[b]), r->zpt[a] - r->zpt[b]);
        };
        EXPECT_NEAR(length(0, 1), sqrt(10001.0), 2e-6);
        EXPECT_NEAR(length(0, 2), sqrt(900.0 + 6400.0 + 121.0), 2e-6);
        EXPECT_NEAR(length(2, 3), sqrt(4900.0 + 400.0 + 49.0), 2e-6);
        EXPECT_NEAR(r->zpt[2] - r->zpt[0], 11.0, 2e-6);
    }
}

TEST(Run, LeavesBaselinesToPointsThatAreOffOut)
{
    Case c("[run]\ndimension = 3\n[tables]\ntargets = '''\nname x y z code status\nA 0 0 0 fixed used\nB 10 0 0 free "
           "used\nC 5 5 5 free off\n'''\nbaselines = '''\nfrom to dx dy dz cxx cyy czz\nA B 10 0 0 1 1 1\nA B 10 0 0 1 "
           "1 1\nB A -10 0 0 1 1 1\nA C 5 5 5 1 "
           "1 1\n'''\n");
    const RunOutcome outcome = c.run();
    EXPECT_TRUE(outcome.adjusted()) << (outcome.words.empty() ? "" : outcome.words[0]);
    ASSERT_EQ(outcome.accounts.size(), 1u);
    EXPECT_EQ(outcome.accounts[0].used, 3);
    ASSERT_EQ(outcome.accounts[0].left_out.size(), 1u);
    EXPECT_EQ(outcome.accounts[0].left_out[0].reason, "point C is off");
}

TEST(Run, RefusesWhatThisVersionCannotDo)
{
    Case c(plane(triangle));
    c.model().solver = Solver::Simplex;
    c.model().mode = Mode::Propagation;
    c.model().p.lumpmethod = 9;
    c.model().targets.records[0].ilump = 1;
    const RunOutcome outcome = c.run();
    EXPECT_EQ(outcome.reached, Stage::Refused);
    Lines words = outcome.words;
    for (std::string &line : words) c.folder.shorten(line);
    EXPECT_EQ(
        words,
        Lines({"the simplex solver does not adjust lumps: choose compact or jordan, or write method = 0 in [lumps] "
               "(net.inp)",
               "a propagation of errors has no coordinates of its own for each epoch: write method = 1 in [lumps] "
               "(net.inp)"}));
    EXPECT_EQ(c.report(), "");
    EXPECT_EQ(c.results(), nullptr);
}

TEST(Check, StopsBeforeTheSolver)
{
    Case c(levelling);
    const RunOutcome outcome = c.check();
    EXPECT_TRUE(outcome.adjusted());
    EXPECT_FALSE(c.told("Start resolution..."));
    EXPECT_FALSE(contains(c.report(), "Compact storage solution"));
    EXPECT_EQ(outcome.accounts.size(), 1u);
}

TEST(Check, FindsADatumThatIsNotDefined)
{
    Case c(plane("targets = '''\nname x y code\nA 0 0 fixed\nB 10 0 free\nC 0 10 free\n'''\n"
                 "distances = '''\nfrom to value sigma\nA B 10 1\nB C 14 1\nA C 10 1\n'''\n"));
    EXPECT_EQ(c.check().code, -3);
}

TEST(Check, WritesNoConnectedNet)
{
    Case c("[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code connect\nA 100 fixed none\nB 101 free export\n"
           "'''\nheight_differences = '''\nfrom to value sigma\nA B 1 1\nB A -1.001 1\n'''\n");
    const InFolder in(c.folder.path);
    c.check();
    EXPECT_FALSE(std::filesystem::exists("net.con"));
    EXPECT_EQ(c.model().targets.records[1].iconn, 1);
    c.run();
    EXPECT_TRUE(std::filesystem::exists("net.con"));
}

// Every allocation of the engine fails once; each run ends in words and leaks nothing.
TEST(Run, EndsInWordsWithoutMemory)
{
    for (const Solver solver : {Solver::Compact, Solver::Jordan}) {
        int allocated = 1;
        for (int n = 1; n <= allocated; n++) {
            Case c(plane(triangle));
            c.model().solver = solver;
            fail_allocation(n);
            const RunOutcome outcome = c.run();
            allocated = allocations();
            fail_allocation(0);
            EXPECT_EQ(outcome.adjusted(), outcome.words.empty()) << n;
        }
        EXPECT_GT(allocated, 10);
    }
}

// E hangs on D by its distance alone: along the circle nothing holds it.
TEST(Runner, NamesTheUnknownOfTheRowThatFails)
{
    Case c(
        plane("targets = '''\nname x y code\nA 0 0 fixed\nB 120 0 fixed\nD 60 80 free\nE 60 90 free\n'''\n"
              "distances = '''\nfrom to value sigma\nA D 100 0.01\nB D 100 0.01\nD E 10 0.01\nD E 10.01 0.01\n'''\n"));
    const RunOutcome outcome = c.run();
    EXPECT_EQ(outcome.code, -3);
    ASSERT_EQ(outcome.words.size(), 3u);
    EXPECT_EQ(outcome.words[1], "unknown 2 of the normal equations is x of point E: look there first");
}
