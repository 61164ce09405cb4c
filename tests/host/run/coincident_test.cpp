#include "host/run/coincident.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "host/folder.h"
#include "host/run/runner.h"
#include "support/network.h"

using namespace vornhost;

namespace {

const std::string remedy = ": both points have the same approximate coordinates; correct them or leave the sight out";

// P stands at A; R does not.
std::string plane(const std::string &solver, const std::string &tables)
{
    return "[run]\ndimension = 2\nsolver = '" + solver +
           "'\n[tables]\ntargets = '''\nname x y code\nA 0 0 fixed\nB 120 0 fixed\nC 0 90 fixed\nR 60 40 free\n"
           "P 0 0 free\n'''\n" +
           tables;
}

const std::string good = "A R 72 0.01\nB R 72 0.01\nC R 78 0.01\n";

struct Ran {
    explicit Ran(const std::string &text, bool solving = true)
    {
        folder.write("net.inp", text);
        EXPECT_EQ(folder.read(), Lines());
        FILE *out = tmpfile();
        outcome = solving ? run(folder.model, out, messages) : check(folder.model, out, messages);
        sights = coincident_sights(folder.model);
        folder.model.targets.records[0].ilump = 1;
        with_lumps = coincident_sights(folder.model);
        fclose(out);
        folder.model.p.freerun(folder.model.p.runresults);
        folder.model.p.runresults = nullptr;
    }
    bool noted(const std::string &line) const
    {
        const Lines &notes = outcome.prepared.notes;
        return std::count(notes.begin(), notes.end(), line) == 1 &&
               std::count(messages.lines.begin(), messages.lines.end(), line) == 1;
    }
    Folder folder;
    Recorder messages;
    RunOutcome outcome;
    CoincidentSights sights, with_lumps; // of the same run with a point in a lump
};

std::string distances(const std::string &rows) { return "distances = '''\nfrom to value sigma\n" + rows + "'''\n"; }

} // namespace

TEST(CoincidentSights, StopTheSimplexSolverWhereTheyAreDistances)
{
    const std::string text = plane("simplex", distances(good + "A P 100 0.01\nB P 100 0.01\nC P 100 0.01\n"));
    for (const bool solving : {true, false}) {
        const Ran ran(text, solving);
        EXPECT_EQ(ran.outcome.reached, Stage::Solving);
        ASSERT_EQ(ran.outcome.words.size(), 2u);
        EXPECT_EQ(ran.outcome.words[0], "distances between points in one place do not determine them");
        EXPECT_NE(ran.outcome.words[1].find("net.inp:18: distance A to P" + remedy), std::string::npos);
    }
}

TEST(CoincidentSights, AreNamedBesideCoordinatesThatAreNotNumbers)
{
    for (const std::string solver : {"compact", "jordan"}) {
        const Ran ran(plane(solver, distances(good + "A P 100 0.01\nB P 100 0.01\nC P 100 0.01\n")));
        EXPECT_EQ(ran.outcome.reached, Stage::Solving);
        ASSERT_EQ(ran.outcome.words.size(), 4u);
        EXPECT_NE(ran.outcome.words[3].find("net.inp:18: distance A to P"), std::string::npos);
    }
}

TEST(CoincidentSights, AreFaultsOfACheckWhereTheyAreDistancesOfAFreePoint)
{
    for (const std::string solver : {"compact", "jordan"}) {
        const Ran ran(plane(solver, distances(good + "A P 100 0.01\nB P 100 0.01\nC P 100 0.01\n")), false);
        EXPECT_EQ(ran.outcome.reached, Stage::Solving);
        ASSERT_EQ(ran.outcome.words.size(), 2u);
        EXPECT_EQ(ran.outcome.words[0], "distances between points in one place do not determine them");
    }
}

TEST(CoincidentSights, BetweenPointsThatAreHeldDoNoHarm)
{
    for (const std::string solver : {"compact", "jordan", "simplex"})
        for (const bool solving : {true, false}) {
            std::string text = plane(solver, distances(good + "A P 100 0.01\n"));
            text.replace(text.find("P 0 0 free"), 10, "P 0 0 fixed");
            const Ran ran(text, solving);
            EXPECT_TRUE(ran.outcome.adjusted()) << solver;
            EXPECT_FALSE(ran.sights.distances);
            ASSERT_EQ(ran.sights.lines.size(), 1u);
            EXPECT_TRUE(ran.noted(ran.sights.lines[0]));
        }
}

// The direction ends its list, and the run goes on without it and those behind it.
TEST(CoincidentSights, AreNotedWhereTheNetworkIsAdjustedAllTheSame)
{
    for (const std::string solver : {"compact", "jordan", "simplex"}) {
        std::string text =
            plane(solver, distances(good + "R P 72 0.01\nB P 120 0.01\nC P 90 0.01\n") +
                              "directions = '''\nfrom to value sigma\nS B 0 0.01\nS C 100 0.01\nS P 0 0.01\n'''\n");
        text.insert(text.find("targets"), "stations = '''\nname x y code\nS 0 0.00000001 fixed\n'''\n");
        const Ran ran(text);
        ASSERT_TRUE(ran.outcome.adjusted()) << solver;
        ASSERT_EQ(ran.sights.lines.size(), 1u);
        EXPECT_FALSE(ran.sights.distances);
        EXPECT_NE(ran.sights.lines[0].find("net.inp:30: direction S to P" + remedy), std::string::npos);
        EXPECT_TRUE(ran.noted(ran.sights.lines[0]));
    }
}

TEST(CoincidentSights, AreThoseOfUsedObservationsAlone)
{
    std::string text = plane("compact", distances(good + "A P 100 0.01\n"));
    text.replace(text.find("P 0 0 free"), 10, "P 0 0 fixed\nQ 0 0.000001 fixed");
    EXPECT_EQ(Ran(text).sights.lines.size(), 1u);
    text.replace(text.find("A P 100"), 7, "A Q 100");
    EXPECT_TRUE(Ran(text).sights.lines.empty());
}

TEST(CoincidentSights, AreNotSoughtAmongLumps)
{
    const Ran ran(plane("compact", distances(good + "A P 100 0.01\nB P 100 0.01\nC P 100 0.01\n")));
    EXPECT_EQ(ran.sights.lines.size(), 1u);
    EXPECT_TRUE(ran.with_lumps.lines.empty());
}

TEST(CoincidentSights, FillSixLinesHoweverManyThereAre)
{
    std::string rows = good;
    for (int i = 0; i < 7; i++) rows += "A P 100 0.01\n";
    std::string text = plane("compact", distances(rows));
    text.replace(text.find("P 0 0 free"), 10, "P 0 0 fixed");
    const Ran ran(text);
    ASSERT_EQ(ran.sights.lines.size(), 6u);
    EXPECT_EQ(ran.sights.lines[5], "2 more sights between points in one place");
}

// The heights of instrument and target reduce the observed distance, not the computed one.
TEST(CoincidentSights, AreDistancesInSpaceWhateverStandsAboveThePoints)
{
    const std::string text = "[run]\ndimension = 3\n[tables]\ntargets = '''\nname x y z code\nA 0 0 0 fixed\n"
                             "B 9 0 0 fixed\nC 0 9 0 fixed\nD 0 0 9 fixed\nP 5 5 5 free\nQ 0 0 0 fixed\n'''\n"
                             "distances = '''\nfrom to value sigma h1 h2\nA P 8.66 1 0 0\nB P 8.1 1 0 0\n"
                             "C P 8.1 1 0 0\nD P 8.1 1 0 0\nA Q 1.5 1 0 1.5\n'''\n";
    EXPECT_EQ(Ran(text).sights.lines.size(), 1u);
    std::string other = text;
    other.replace(other.find("Q 0 0 0"), 7, "Q 0 0 1");
    EXPECT_TRUE(Ran(other).sights.lines.empty());
}

TEST(CoincidentSights, AreNotDistancesThatTakeHeightsInThePlane)
{
    std::string text = plane("compact", distances(good + "A P 100 0.01\n"));
    text.replace(text.find("P 0 0 free"), 10, "P 0 0 fixed");
    EXPECT_EQ(Ran(text).sights.lines.size(), 1u);
    text.replace(text.find("[tables]"), 8, "[reductions]\ndistances = 'mark_to_mark'\n[tables]");
    EXPECT_TRUE(Ran(text).sights.lines.empty());
}
