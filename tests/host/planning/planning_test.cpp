// Plans: what a candidate gives is what the network gives with it.

#include "host/planning/planning.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "host/own/own_run.h"

using namespace vornhost;

namespace {

// Four stations around P, without values. `more` stands in the tables of distances and directions.
std::string network(const std::string &distances = "", const std::string &directions = "", const std::string &rest = "")
{
    return "[run]\ndimension = 2\nmode = \"propagation\"\n[tables]\nstations = '''\nname x y code\nA 0 0 fixed\n"
           "B 300 20 fixed\nC 280 260 free\nD -20 240 free\n'''\ntargets = '''\nname x y\nP 140 330\n'''\n"
           "distances = '''\nfrom to value sigma\nA C - 0.002\nB C - 0.002\nA D - 0.002\nB D - 0.003\nC D - 0.002\n"
           "C P - 0.002\n" +
           distances +
           "'''\ndirections = '''\nfrom to value sigma\nA B - 0.001\nA C - 0.001\nA D - 0.001\nC A - 0.001\n"
           "C P - 0.001\n" +
           directions + "'''\n" + rest;
}

Planning planned(const std::string &text, const std::string &candidates, Lines *faults = nullptr)
{
    Folder folder;
    folder.write("more.txt", candidates);
    folder.write("net.inp", text);
    EXPECT_EQ(folder.read(), Lines());
    PlanOptions options;
    options.helped = "P", options.candidates = folder.file("more.txt");
    Faults of_candidates;
    const Planning p = plan_network(folder.model, options, of_candidates);
    Lines lines = of_candidates.lines();
    for (std::string &line : lines) folder.shorten(line);
    if (faults)
        *faults = lines;
    else
        EXPECT_EQ(lines, Lines());
    return p;
}

const Candidate &candidate(const Planning &p, int line)
{
    for (const Candidate &c : p.candidates)
        if (c.line == line) return c;
    ADD_FAILURE() << line;
    static const Candidate none;
    return none;
}

} // namespace

// Each candidate against a network file that has it.
TEST(Planning, GivesWhatTheNetworkGivesWithTheCandidate)
{
    const Planning p = planned(network(), "kind from to at sigma\ndistance D P - 0.002\ndirection A P - 0.001\n"
                                          "direction C D - 0.001\nangle A P C 0.001\nbearing A P - 0.002\n"
                                          "distance A P - 0.004\nhorizontal_distance B P - 0.002\n");
    ASSERT_TRUE(p.made()) << p.words[0];
    const std::string with[] = {network("D P - 0.002\n"),
                                network("", "A P - 0.001\n"),
                                network("", "C D - 0.001\n"),
                                network("", "", "angles = '''\nat from to value sigma\nC A P - 0.001\n'''\n"),
                                network("", "", "bearings = '''\nfrom to value sigma\nA P - 0.002\n'''\n"),
                                network("A P - 0.004\n"),
                                network("", "", "horizontal_distances = '''\nfrom to value sigma\nB P - 0.002\n'''\n")};
    const char *const kinds[] = {"distance", "direction", "direction",          "angle",
                                 "bearing",  "distance",  "horizontal distance"};
    const SolvedNetwork none = solve_text(network());
    for (int k = 0; k < 2; k++) EXPECT_NEAR(p.deviation[k], *none.point("P").deviation[k], 1e-12);
    for (int i = 0; i < 7; i++) {
        const Candidate &c = candidate(p, i + 2);
        const SolvedNetwork s = solve_text(with[i]);
        ASSERT_TRUE(s.adjusted()) << s.words();
        ASSERT_TRUE(c.possible) << i;
        for (int k = 0; k < 2; k++) EXPECT_NEAR(c.deviation[k], *s.point("P").deviation[k], 1e-10) << i;
        const ResidualResult *last = nullptr; // the row that was added is the last of its kind
        for (const ResidualResult &r : s.results().residuals)
            if (r.kind == kinds[i]) last = &r;
        ASSERT_TRUE(last);
        EXPECT_NEAR(c.redundancy, *last->redundancy, 1e-9) << i;
    }
    for (size_t i = 1; i < p.candidates.size(); i++) EXPECT_LE(p.candidates[i - 1].position, p.candidates[i].position);
}

TEST(Planning, TakesBaselinesAndHeightsInSpace)
{
    const std::string space = "[run]\ndimension = 3\nmode = \"propagation\"\n[tables]\ntargets = '''\nname x y z code\n"
                              "A 0 0 0 fixed\nB 100 0 5 fixed\nC 0 100 9 fixed\nP 60 70 20 free\n'''\n"
                              "distances = '''\nfrom to value sigma\nA P - 0.002\nB P - 0.002\nC P - 0.002\n'''\n";
    const Planning p = planned(space, "kind,from,to,sigma\nheight_difference,A,P,0.001\nbaseline,B,P,0.003\n");
    ASSERT_TRUE(p.made()) << p.words[0];
    const std::string with[] = {
        space + "height_differences = '''\nfrom to value sigma\nA P - 0.001\n'''\n",
        space + "baselines = '''\nfrom to dx dy dz cxx cyy czz\nB P -40 70 15 9e-6 9e-6 9e-6\n'''\n"};
    for (int i = 0; i < 2; i++) {
        const SolvedNetwork s = solve_text(with[i]);
        ASSERT_TRUE(s.adjusted()) << s.words();
        for (int k = 0; k < 3; k++) EXPECT_NEAR(candidate(p, i + 2).deviation[k], *s.point("P").deviation[k], 1e-10);
    }
}

// A single direction from a stand of its own, an observation of another dimension, both ends the same.
TEST(Planning, SaysWhatHelpsNothing)
{
    const Planning p = planned(network(), "kind from to sigma\ndirection B P 0.001\nheight_difference A P 0.001\n"
                                          "distance P P 0.001\ndistance A B 0.001\n");
    ASSERT_TRUE(p.made());
    for (const int line : {2, 3, 4}) EXPECT_FALSE(candidate(p, line).possible) << line;
    EXPECT_TRUE(candidate(p, 5).possible); // between held points: no gain
    EXPECT_NEAR(candidate(p, 5).position, p.position, 1e-15);
    EXPECT_NEAR(candidate(p, 5).redundancy, 1.0, 1e-12);
    EXPECT_NE(planning_report(p, "").find("helps nothing"), std::string::npos);
}

TEST(Planning, NamesTheWeakestFirst)
{
    const Planning p = planned(network(), "kind from to sigma\ndistance D P 0.002\n");
    ASSERT_EQ(p.points.size(), 3u);
    EXPECT_EQ(p.points[0].name, "P");
    double sum = 0;
    for (const WeakObservation &o : p.observations) {
        sum += o.redundancy;
        if (o.detectable) {
            EXPECT_NEAR(*o.detectable, 4.1321 * o.sigma / std::sqrt(o.redundancy), 1e-4 * *o.detectable);
        }
    }
    EXPECT_NEAR(sum, p.redundancy, 1e-9);
    EXPECT_LT(p.observations[0].redundancy, 1e-6); // P hangs on one distance and one direction
    EXPECT_FALSE(p.observations[0].detectable.has_value());
    const nlohmann::json j = nlohmann::json::parse(planning_json(p, "test"));
    EXPECT_EQ(j["candidates"].size(), 1u);
    EXPECT_EQ(j["observations"].size(), p.observations.size());
}

// A height levelled twice, with a correlation of one half: e'P Qvv P e is 1 / sigma^2. The test is that of the file.
TEST(Planning, TellsWhatTheTestOfTheFileFinds)
{
    const auto detectable = [](const std::string &tests) {
        Folder folder;
        folder.write("net.inp", "[run]\ndimension = 1\nmode = \"propagation\"\n" + tests +
                                    "[covariances.two]\nmatrix = \"1e-6 0.5e-6 0.5e-6 1e-6\"\n[tables]\n"
                                    "targets = '''\nname z code\nA 1 fixed\nB 2 free\n'''\n"
                                    "height_differences = '''\nfrom to covariance\nA B two\nA B two\n'''\n");
        EXPECT_EQ(folder.read(), Lines());
        Faults faults;
        const Planning p = plan_network(folder.model, PlanOptions(), faults);
        EXPECT_NE(planning_report(p, "").find("detectable: error that is found by " + p.test + "\n"),
                  std::string::npos);
        return p.observations.at(0).detectable.value_or(0);
    };
    EXPECT_NEAR(detectable(""), 0.001 * (3.290527 + 0.841621), 1e-8);
    EXPECT_NEAR(detectable("[tests]\nlevel = 0.01\npower = 0.95\n"), 0.001 * (2.575829 + 1.644854), 1e-8);
    EXPECT_EQ(detectable("[tests]\nleast_redundancy = 0.8\n"), 0.0); // the share of control is 0.75
}

TEST(Planning, NamesWhatIsWrongInTheTable)
{
    Lines faults;
    planned(network(),
            "kind from to at sigma\nfoo A P - 1\ndistance A Q - 1\nangle A P - 1\ndistance A P C 1\n"
            "distance A P - -1\n",
            &faults);
    ASSERT_EQ(faults.size(), 5u);
    EXPECT_EQ(faults[0].rfind("more.txt:2:1: \"foo\" in column kind is no kind of a candidate; write distance,", 0), 0u)
        << faults[0];
    EXPECT_EQ(faults[1], "more.txt:3:12: \"Q\" in column to is not a point in use; name a point of net.inp");
}

TEST(Planning, RefusesPointsThatNothingHelps)
{
    Folder folder;
    folder.write("net.inp", network());
    EXPECT_EQ(folder.read(), Lines());
    PlanOptions options;
    options.helped = "A";
    Faults faults;
    EXPECT_EQ(plan_network(folder.model, options, faults).words[0], "point \"A\" is held: nothing helps it");
    options.helped = "Z";
    EXPECT_EQ(plan_network(folder.model, options, faults).words[0], "there is no point \"Z\" in use");
}
