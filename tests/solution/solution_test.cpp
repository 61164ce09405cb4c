#include <gtest/gtest.h>
#include <limits.h>
#include <math.h>
#include <stdio.h>

#include "support/bare.h"
#include "support/faults.h"

namespace {

const double PI = 3.14159265358979323846;

// A solver that a test scripts: it notes every call, takes its steps from a list (the last
// one again and again) and fails where it is told to.
class Script : public Bare {
public:
    explicit Script(int d) : Bare(d) {}

    void banner() override { calls += "banner "; }
    void debugnormal() override
    {
        calls += "debugnormal ";
        fprintf(out, "the matrix\n");
    }
    int prepare() override
    {
        calls += "prepare ";
        return prepare_result;
    }
    void zeronormal() override { calls += "zeronormal "; }
    int resolution() override
    {
        calls += "resolution ";
        const size_t k = std::min(nstep++, steps.size() - 1);
        for (size_t i = 0; i < steps[k].size(); i++) solution::delta[i] = steps[k][i];
        return nstep == failing_resolution ? -1 : 0;
    }
    void addrow(int n1, int n2, double) override
    {
        rows += "(";
        for (int k = 1; k <= n1; k++) rows += std::to_string(solution::ia1[k]) + (k < n1 ? " " : "");
        for (int k = 1; k <= n2; k++) rows += "/" + std::to_string(solution::ia2[k]);
        rows += ")";
    }
    void buildgps(int ibase, const int[6], const double[3]) override { rows += "gps" + std::to_string(ibase); }
    int inverse() override
    {
        calls += "inverse ";
        return inverse_result;
    }
    void finish() override
    {
        calls += "finish ";
        Bare::finish();
    }

    std::string calls, rows;
    int prepare_result = 0, inverse_result = 0;
    std::vector<std::vector<double>> steps = {{0.0, 0.0}};
    size_t nstep = 0, failing_resolution = 0;
};

// One point in the plane with two unknowns, and the steps that the solver makes.
class OnePoint : public Script {
public:
    explicit OnePoint(const std::vector<std::vector<double>> &s = {{0.0, 0.0}}, int run = 0) : Script(2)
    {
        point &p = add("A", 10, 20);
        p.n0[0] = 0;
        p.n0[1] = 1;
        delta.assign(s[0].size(), 0.0);
        n.p.irun = run;
        wire(0);
        nunk1 = 2;
        nunk2 = (int)s[0].size() - 2;
        nunk = nunk1 + nunk2;
        steps = s;
    }
    const std::vector<std::string> &lines() { return n.messages.lines; }
};

bool contains(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

typedef std::vector<std::string> Lines;

} // namespace

// ---- construction ----

TEST(SolutionConstructor, CopiesTheNetworkAndTheSettingsOfTheProject)
{
    Network n(3);
    project &p = n.p;
    p.irun = 1, p.idebug = 9, p.iearth = 2, p.radius = 6e6, p.horigin = 5.0, p.latitude = 90.0;
    p.trans[0] = 1, p.trans[1] = 2, p.trans[2] = 3, p.itmax = 7, p.convergence = 1e-3;
    std::vector<point> points(5);
    solverinput in(&p);
    in.points = points.data();
    in.nsta = 2, in.ntar = 3, in.npoints = 5;
    in.nunk1 = 20, in.nunk2 = 21, in.ndatum = 22, in.nunk = 41;
    for (int k = 0; k < 7; k++) in.datum[k] = k + 1.0;
    jordan s(in);
    EXPECT_EQ(S(s, pfeedback), p.pfeedback);
    EXPECT_EQ(S(s, pproject), &p);
    EXPECT_EQ(S(s, pname), p.filename);
    EXPECT_EQ(S(s, out), p.out);
    EXPECT_EQ(S(s, irun), 1);
    EXPECT_EQ(S(s, idebug), 9);
    EXPECT_EQ(S(s, dim), 3);
    EXPECT_EQ(S(s, iearth), 2);
    EXPECT_EQ(S(s, radius), 6e6);
    EXPECT_EQ(S(s, trans)[2], 3.0);
    EXPECT_EQ(S(s, horigin), 5.0);
    EXPECT_DOUBLE_EQ(S(s, latitude), PI / 2);
    EXPECT_EQ(S(s, itmax), 7);
    EXPECT_EQ(S(s, convergence), 1e-3);
    EXPECT_DOUBLE_EQ(S(s, pi), PI);
    EXPECT_EQ(S(s, points), points.data()); // the records themselves
    EXPECT_EQ(S(s, npoints), 5);
    EXPECT_EQ(S(s, nunk), 41);
    for (int k = 0; k < 7; k++) EXPECT_EQ(S(s, datum)[k], k + 1.0);
}

TEST(SolutionConstructor, KeepsWhatTheSolverChangesFromTheRun)
{
    Network n(3);
    solverinput in(&n.p);
    in.irun = 1, in.ndatum = 6, in.nunk = 7;
    jordan s(in);
    S(s, irun) = -1, S(s, nunk) += 6, S(s, nexport) = 2, S(s, sigma0) = 3.0, S(s, datum)[2] = 4.0;
    EXPECT_EQ(in.irun, 1);
    EXPECT_EQ(in.nunk, 7);
    EXPECT_EQ(in.nexport, 0);
    EXPECT_EQ(in.sigma0, 0.0);
    EXPECT_EQ(in.datum[2], 0.0);
}

TEST(SolutionConstructor, SetsTheNumbersOfTheTestsAndHoldsNoArrays)
{
    Bare s(2);
    EXPECT_EQ(S(s, confidence), 95.0);
    EXPECT_EQ(S(s, nclass), 10);
    EXPECT_EQ(S(s, hrange), 5.0);
    EXPECT_EQ(S(s, rhs), nullptr);
    EXPECT_EQ(S(s, delta), nullptr);
    EXPECT_EQ(S(s, inv), nullptr);
    EXPECT_EQ(S(s, hlim), nullptr);
    EXPECT_EQ(S(s, hnorm), nullptr);
    for (int *count : {S(s, hall), S(s, hdist), S(s, hdifh), S(s, hdir1), S(s, hdir2), S(s, haz), S(s, hgps1),
                       S(s, hgps2), S(s, hgps3)})
        EXPECT_EQ(count, nullptr);
}

// ---- iterate ----

TEST(Iterate, RepeatsUntilTheStepIsNotAboveTheThreshold)
{
    OnePoint s({{0.5, -2.0}, {1e-5, 0.0}, {1e-6, -1e-6}});
    EXPECT_EQ(s.iterate(), 0);
    EXPECT_EQ(s.calls, "banner prepare zeronormal resolution zeronormal resolution zeronormal resolution finish ");
    EXPECT_EQ(s.lines(), (Lines{"Start resolution...", "      Iteration  0              2.0000000",
                                "      Iteration  1              0.0000100",
                                "      Iteration  2              0.0000010", "The solution has converged"}));
    EXPECT_DOUBLE_EQ(s.points[0].xpt[0], 10.500011);
    EXPECT_DOUBLE_EQ(s.points[0].xpt[1], 17.999999);
}

TEST(Iterate, PrintsCorrectionsFinalResultsAndResidualsOfARunWithoutStatistics)
{
    OnePoint s({{0.5, 0.25}, {0.0, 0.0}});
    s.iterate();
    EXPECT_EQ(s.report().find("\n\nCorrections to coordinates\n\nA                     0.500000        0.250000\n"
                              "\n\nFinal results after 2 iterations\n\n"
                              "A                    10.500000        20.250000\n"),
              0u);
    EXPECT_TRUE(contains(s.report(), "\n\nSimple residuals analysis\n\n"));
    EXPECT_EQ(s.finished, 1);
}

TEST(Iterate, LeavesTheArraysToTheInversionInARunWithStatistics)
{
    OnePoint s({{0.0, 0.0}}, 1);
    EXPECT_EQ(s.iterate(), 0);
    EXPECT_EQ(s.finished, 0);
    EXPECT_FALSE(contains(s.report(), "Simple residuals analysis"));
    EXPECT_TRUE(contains(s.report(), "Final results after 1 iterations"));
}

TEST(Iterate, ReturnsMinus2WhenTheSolverCannotBeSetUp)
{
    OnePoint s;
    s.prepare_result = -1;
    EXPECT_EQ(s.iterate(), -2);
    EXPECT_EQ(s.calls, "banner prepare finish ");
    EXPECT_EQ(s.report(), "\nProgram stops in prepare\n");
    EXPECT_EQ(s.lines(), Lines{});
}

TEST(Iterate, ReturnsMinus3WhenTheSystemCannotBeSolved)
{
    OnePoint s({{1.0, 1.0}});
    s.failing_resolution = 2;
    EXPECT_EQ(s.iterate(), -3);
    EXPECT_EQ(s.calls, "banner prepare zeronormal resolution zeronormal resolution finish ");
    EXPECT_EQ(s.report(), "\nProgram stops in resolution\n");
    EXPECT_DOUBLE_EQ(s.points[0].xpt[0], 11.0); // the failed step is not applied
}

TEST(Iterate, ReturnsMinus4AtAStepOverTheLimitWhichIsAlreadyApplied)
{
    OnePoint s({{1.0, 1.0}, {5.0, -1000000.5}});
    EXPECT_EQ(s.iterate(), -4);
    EXPECT_EQ(s.lines(), (Lines{"Start resolution...", "      Iteration  0              1.0000000",
                                "Problem at iteration  1 with delta[1] -1000000.500000"}));
    EXPECT_EQ(s.finished, 1);
    EXPECT_EQ(s.report(), ""); // no residuals
    EXPECT_DOUBLE_EQ(s.points[0].xpt[0], 16.0);
    EXPECT_DOUBLE_EQ(s.points[0].xpt[1], 20.0 + 1.0 - 1000000.5);
}

TEST(Iterate, LimitsAStepToAMillionOrTheInverseOfTheThresholdIfThatIsMore)
{
    const struct {
        double convergence, step;
        int refused;
    } cases[] = {{0.1, 1000000.0, 0},  {0.1, 1000000.1, 1},  {1e-6, 1000000.0, 0},
                 {1e-6, 1000000.1, 1}, {1e-7, 9999999.0, 0}, {1e-7, 10000001.0, 1},
                 {-1.0, 1000000.1, 1}, {0.0, 1e300, 0},      {0.0, -1e300, 0}};
    for (const auto &c : cases) {
        OnePoint s({{c.step, 0.0}, {0.0, 0.0}});
        S(s, convergence) = c.convergence;
        EXPECT_EQ(s.iterate(), c.refused ? -4 : 0) << c.convergence << " " << c.step;
    }
}

TEST(Iterate, RunsToTheLimitOfIterationsWithAThresholdOfZeroUnlessAStepIsExactlyZero)
{
    OnePoint s({{1e-300, 0.0}});
    S(s, convergence) = 0.0;
    S(s, itmax) = 3;
    EXPECT_EQ(s.iterate(), -4);
    EXPECT_EQ(s.nstep, 4u);
    OnePoint t({{1e-300, 0.0}, {0.0, 0.0}});
    S(t, convergence) = 0.0;
    S(t, itmax) = 3;
    EXPECT_EQ(t.iterate(), 0);
    EXPECT_EQ(t.nstep, 2u);
}

TEST(Iterate, ReturnsMinus4WithResidualsAfterThePassOfTheLastNumber)
{
    OnePoint s({{1.0, 0.0}});
    S(s, itmax) = 2;
    EXPECT_EQ(s.iterate(), -4);
    EXPECT_EQ(s.nstep, 3u);
    EXPECT_EQ(s.finished, 1);
    EXPECT_EQ(s.report().find("\nNo convergence after 2 iterations\n\n\nSimple residuals analysis\n\n"), 0u);
    EXPECT_FALSE(contains(s.report(), "Corrections"));
    EXPECT_EQ(s.lines().size(), 4u); // start and three iterations: nothing converged
}

TEST(Iterate, CountsAStepThatConvergesAtTheLastNumberAsNoConvergence)
{
    OnePoint s({{1.0, 0.0}, {0.0, 0.0}});
    S(s, itmax) = 1;
    EXPECT_EQ(s.iterate(), -4);
    EXPECT_EQ(s.report().find("\nNo convergence after 1 iterations\n"), 0u);
    OnePoint t({{0.0, 0.0}});
    S(t, itmax) = 0;
    EXPECT_EQ(t.iterate(), -4);
    EXPECT_EQ(t.nstep, 1u);
    EXPECT_EQ(t.report().find("\nNo convergence after 0 iterations\n"), 0u);
}

TEST(Iterate, NeitherStopsNorGoesOnForANotANumber)
{
    OnePoint s({{NAN, 0.0}});
    EXPECT_EQ(s.iterate(), 0);
    EXPECT_EQ(s.nstep, 1u);
    EXPECT_EQ(s.lines()[1], "      Iteration  0              0.0000000");
}

TEST(Iterate, LooksAtCoordinatesAlone)
{
    OnePoint s({{0.0, 0.0, 1e9}});
    EXPECT_EQ(s.iterate(), 0);
    EXPECT_EQ(s.nstep, 1u);
}

TEST(Iterate, DoesNotIterateForErrorPropagation)
{
    OnePoint s({{1.0, 1.0}}, -2);
    S(s, itmax) = 0;
    EXPECT_EQ(s.iterate(), 0);
    EXPECT_EQ(s.calls, "banner prepare ");
    EXPECT_EQ(s.lines(), Lines{"Start resolution..."});
    EXPECT_EQ(s.report(), "");
}

TEST(Iterate, MakesOnePassForLeastAbsoluteValues)
{
    OnePoint s({{1e9, 1.0}}, -1);
    EXPECT_EQ(s.iterate(), 0);
    EXPECT_EQ(s.calls, "banner prepare zeronormal resolution ");
    EXPECT_EQ(s.lines(), Lines{"Start resolution..."}); // no test, no line of convergence
    EXPECT_TRUE(contains(s.report(), "\n\nFinal results\n\n"));
    OnePoint t({{1.0, 1.0}}, -1);
    S(t, itmax) = 0; // the counter alone decides here too
    EXPECT_EQ(t.iterate(), -4);
}

TEST(Iterate, TellsWhenTheResidualsCannotBeListedAndGoesOn)
{
    OnePoint s({{0.0, 0.0}});
    fail_allocation(1);
    EXPECT_EQ(s.iterate(), 0);
    fail_allocation(0);
    EXPECT_EQ(s.lines().back(), "Pb with justout()");
    EXPECT_EQ(s.finished, 2);
    OnePoint t({{1.0, 0.0}});
    S(t, itmax) = 0;
    fail_allocation(1);
    EXPECT_EQ(t.iterate(), -4);
    fail_allocation(0);
    EXPECT_EQ(t.lines().back(), "Pb with justout()");
}

// ---- normal ----

namespace {

// An observation of every family, each with an unknown of its own where the family has one:
// distance 0, height difference 2, direction 3, vertical angle 5, azimuth 7, weight 9.
class EveryFamily : public Script {
public:
    EveryFamily() : Script(3)
    {
        for (int k = 0; k < 6; k++) add("S", 0, 0, 0);
        for (int k = 0; k < 6; k++) add("T", 30 + k, 40, 5);
        points[6].n0[0] = 0;
        points[7].n0[2] = 2;
        points[8].n0[0] = 3;
        points[9].n0[0] = 5;
        points[10].n0[0] = 7;
        points[11].n0[1] = 9;
        points[11].defdatum[1] = DATUM_WEIGHTED;
        points[0].n0[2] = 11;
        points[0].defdatum[2] = DATUM_FIXED_HEIGHT;
        observe(dist, 0, 6, 50, 0.01);
        observe(difh, 1, 7, 5, 0.01);
        observe(dir1, 2, 8, 1, 0.01);
        observe(dir2, 3, 9, 0.1, 0.01);
        observe(az, 4, 10, 1, 0.01);
        observe(u, 5, 9, 100, 0.5);
        observe(v, 5, 9, 100, 0.5);
        baseline(4, 5, 0, 0, 0);
        camerawith("C", 0.05, 1e-5);
        lump l = lump();
        l.kind = 2;
        l.nepoch = 2;
        l.iunk = &iunk;
        l.scale = &scale;
        lumps.push_back(l);
        n.p.azrot = 0.0;
        wire(6);
        radius = 6371000.0;
        nunk1 = 12;
        nunk2 = 20;
        nunk = 32;
        nweighted = nfixh = 1;
    }
    int iunk = 1;
    double scale = 1.0;
};

} // namespace

TEST(Normal, SkipsFamiliesWithoutObservationsAndLeavesTheRowBufferAlone)
{
    Script s(3);
    s.add("S", 0, 0);
    s.wire(1);
    S(s, ia1)[0] = 77;
    S(s, ia2)[0] = 88;
    S(s, a1)[1] = 0.5;
    S(s, normal)();
    EXPECT_EQ(s.rows, "");
    EXPECT_EQ(S(s, ia1)[0], 77);
    EXPECT_EQ(S(s, ia2)[0], 88);
    EXPECT_EQ(S(s, a1)[1], 0.5);
    EXPECT_EQ(s.report(), "");
}

TEST(Normal, RunsTheFamiliesInTheirOrder)
{
    EveryFamily s;
    S(s, normal)();
    EXPECT_EQ(s.rows, "(0 11)(2)(3)(5)(7)gps0(11)(9)(/7)(5)(5)");
}

// ---- imported coordinates ----

// Initial less current value, found by the number of the unknown as a search through points and
// coordinates in order finds it: the first one counts, also among coordinates that are none.
TEST(ImportDifference, IsThatOfTheFirstCoordinateWithTheNumber)
{
    Bare s(3);
    const int number[3][3] = {{4, 2, -1}, {2, 0, -1}, {1, -1, 7}};
    for (int i = 0; i < 3; i++) {
        point &p = s.add(std::string(1, (char)('A' + i)).c_str(), 0, 0, 0);
        for (int k = 0; k < 3; k++) {
            p.n0[k] = number[i][k];
            p.x0[k] = 10.0 * i + k + 1.0;
        }
    }
    s.wire(0);
    S(s, icon) = 2;
    S(s, nunk1) = 5;
    ASSERT_EQ(S(s, indeximport)(), 0);
    const double wanted[] = {3, 12, 21, 2, 99, 1}; // of -1 to 4
    for (int col = -1; col < 5; col++) EXPECT_EQ(S(s, importdiff)(col, 99.0), wanted[col + 1]) << col;
    for (const int col : {-2, 5, 7, 77, INT_MIN, INT_MAX}) EXPECT_EQ(S(s, importdiff)(col, 99.0), 99.0) << col;
    S(s, dropimport)();
    EXPECT_EQ(S(s, importdiff)(0, 99.0), 99.0);
}

TEST(ImportDifference, NeedsNoIndexWithoutAnImport)
{
    Bare s(3);
    s.add("A", 0, 0, 0);
    s.wire(0);
    for (const int icon : {0, 1}) {
        S(s, icon) = icon;
        fail_allocation(1);
        EXPECT_EQ(S(s, indeximport)(), 0);
        fail_allocation(0);
    }
}

TEST(Normal, LeavesAPrioriWeightsOutWithAnImportedNet)
{
    for (int icon : {2, 3}) {
        EveryFamily s;
        S(s, icon) = icon;
        S(s, normal)();
        EXPECT_EQ(s.rows, "(0 11)(2)(3)(5)(7)gps0(11)(/7)(5)(5)");
    }
    EveryFamily s;
    S(s, icon) = 1;
    S(s, normal)();
    EXPECT_EQ(s.rows, "(0 11)(2)(3)(5)(7)gps0(11)(9)(/7)(5)(5)");
}

TEST(Normal, LeavesFamiliesWithACountOfZeroOut)
{
    EveryFamily s;
    S(s, ndist) = S(s, ndir1) = S(s, ngps) = S(s, nfixh) = S(s, nweighted) = S(s, nobsuv) = 0;
    S(s, normal)();
    EXPECT_EQ(s.rows, "(2)(5)(7)(/7)");
}

TEST(Normal, PrintsTheSystemAtTraceLevel9Only)
{
    Script s(3);
    s.wire(0);
    S(s, idebug) = 8;
    S(s, normal)();
    EXPECT_EQ(s.report(), "");
    S(s, idebug) = 9;
    S(s, normal)();
    EXPECT_EQ(s.report(), "start debugnormal...\nthe matrix\nend debugnormal!\n");
}

// ---- inversion ----

TEST(Inversion, ReturnsMinus5WithoutInverse)
{
    OnePoint s({{0.0, 0.0}}, 1);
    s.inverse_result = -9;
    EXPECT_EQ(s.inversion(), -5);
    EXPECT_EQ(s.calls, "inverse finish ");
    EXPECT_EQ(s.lines(), Lines{"Start inversion..."});
    EXPECT_EQ(s.report(), "\nProgram stops in inverse\n");
}

TEST(Inversion, TakesTheMeanOfTheAPrioriVariancesByObservation)
{
    OnePoint s({{0.0, 0.0}}, 1);
    for (int k = 0; k < 2; k++) s.observe(s.dist, 0, 0, 0, 1);
    for (int k = 0; k < 3; k++) s.observe(s.difh, 0, 0, 0, 1);
    s.inv.assign(4, 0.0);
    s.wire(0);
    S(s, sdist) = 2.0;
    S(s, sdifh) = 3.0;
    S(s, sgps) = 100.0; // no baselines
    s.inversion();
    EXPECT_DOUBLE_EQ(S(s, sigma0), sqrt((2 * 4.0 + 3 * 9.0) / 5.0));
}

TEST(Inversion, CountsBaselinesThreefoldAndImagePointsTwice)
{
    Script s(3);
    for (int k = 0; k < 2; k++) s.add("A", 7.0 * k, 1, 2);
    s.points[1].n1[2] = N_NONE;
    s.observe(s.dir1, 0, 1, 0, 1);
    s.observe(s.dir2, 0, 1, 0, 1);
    s.observe(s.az, 0, 1, 0, 1);
    s.observe(s.u, 0, 1, 0, 1);
    s.observe(s.v, 0, 1, 0, 1);
    s.baseline(0, 1, 0, 0, 0);
    s.camerawith("C", 1.0, 1.0);
    s.n.p.irun = 1;
    s.wire(1);
    S(s, radius) = 6e6;
    S(s, sdir1) = 1.0;
    S(s, sdir2) = 2.0;
    S(s, saz) = 3.0;
    S(s, sgps) = 4.0;
    S(s, suv) = 5.0;
    s.inversion();
    EXPECT_DOUBLE_EQ(S(s, sigma0), sqrt((1.0 + 4.0 + 9.0 + 3 * 16.0 + 2 * 25.0) / 8.0));
}

TEST(Inversion, UsesNoStatisticsWithoutRedundancy)
{
    OnePoint s({{0.0, 0.0}}, 1);
    s.inv = {1.0, 0.0, 0.0, 1.0};
    s.wire_matrices();
    EXPECT_EQ(s.inversion(), 0);
    EXPECT_TRUE(isnan(S(s, sigma0))); // no observation at all
    EXPECT_EQ(s.calls, "inverse finish ");
    EXPECT_EQ(s.lines(), (Lines{"Start inversion...", "      No degree of freedom -> no use of statistics"}));
    EXPECT_DOUBLE_EQ(s.points[0].ell[0][0], 1.0); // the semi-major axis, with the factor 1
}

TEST(Inversion, PropagatesErrorsWithPlainCofactors)
{
    OnePoint s({{0.0, 0.0}}, -2);
    s.inv = {4.0, 0.0, 0.0, 9.0};
    s.wire_matrices();
    S(s, sigma0) = 0.125;
    EXPECT_EQ(s.inversion(), 0);
    EXPECT_EQ(s.calls, "inverse finish ");
    EXPECT_EQ(s.lines(), Lines{"Start inversion..."});
    EXPECT_EQ(S(s, sigma0), 0.125);
    EXPECT_DOUBLE_EQ(s.points[0].ell[0][0], 3.0); // semi-axes
    EXPECT_DOUBLE_EQ(s.points[0].ell[1][0], 2.0);
}

namespace {

// Distances between fixed points: each row is empty, each has a redundancy of 1. With
// standard deviations of 1 and misclosures of 3 and 4 in turn.
class Redundant : public Script {
public:
    explicit Redundant(int n_) : Script(2)
    {
        add("A", 0, 0);
        add("B", 30, 40);
        for (int k = 0; k < n_; k++) observe(dist, 0, 1, k % 2 ? 54.0 : 53.0, 1.0);
        n.p.irun = 1;
        wire(1);
    }
    void finish() override
    {
        classes = hlim ? nclass : 0;
        Script::finish();
    }
    const std::vector<std::string> &lines() { return n.messages.lines; }
    int classes = 0;
};

} // namespace

TEST(Inversion, TestsTheResidualsAndScalesTheDeviations)
{
    Redundant s(4);
    s.points[1].n0[0] = 0; // no distance is bound to it: sxpt shows the factor
    s.dist.clear();
    for (int k = 0; k < 5; k++) s.observe(s.dist, 0, 0, k % 2 ? 4.0 : -3.0, 1.0);
    s.inv = {0.25};
    s.wire(1);
    S(s, nunk1) = S(s, nunk) = 1;
    EXPECT_EQ(s.inversion(), 0);
    EXPECT_EQ(s.calls, "inverse finish ");
    const double sigma = S(s, sdist) * sqrt((3 * 9.0 + 2 * 16.0) / 4.0); // five residuals, one unknown
    char line[80];
    snprintf(line, sizeof line, "      Sigma a posteriori %16.7lf", sigma);
    EXPECT_EQ(s.lines(), (Lines{"Start inversion...", line}));
    EXPECT_NEAR(s.points[1].ell[0][0], sigma * 0.5, 1e-12);
}

TEST(Inversion, LowersTheNumberOfClassesToTheRedundancyButNotBelow3)
{
    const int redundancy[] = {1, 2, 3, 4, 9, 10, 25}, classes[] = {3, 3, 3, 4, 9, 10, 10};
    for (int k = 0; k < 7; k++) {
        Redundant s(redundancy[k]);
        EXPECT_EQ(s.inversion(), 0);
        EXPECT_EQ(s.classes, classes[k]) << redundancy[k];
        EXPECT_EQ(s.finished, 1);
    }
}

// A tenth is added before the redundancy is cut to a whole number.
TEST(Inversion, CutsTheRedundancyForTheNumberOfClasses)
{
    const struct {
        double cofactor; // of the one unknown: the redundancy of 7 distances is 7 less that
        int classes;
    } cases[] = {{0.05, 7}, {0.15, 6}, {0.0, 7}, {1.0, 6}};
    for (const auto &c : cases) {
        Redundant s(6);
        s.points[1].n0[0] = 0;
        s.observe(s.dist, 0, 0, 1.0, 1.0);             // bound to nothing
        for (measure &m : s.dist) m.p2 = &s.points[0]; // six of them as well
        s.dist[0].p2 = &s.points[1];
        s.dist[0].val[0] = 50.0;
        s.inv = {0.0};
        s.wire(1);
        s.inv[0] = c.cofactor / 0.36 / pow(S(s, sdist), 2); // the distance to (30, 40) changes by 0.6 of x
        S(s, nunk1) = S(s, nunk) = 1;
        EXPECT_EQ(s.inversion(), 0);
        EXPECT_EQ(s.classes, c.classes) << c.cofactor;
    }
}

TEST(Inversion, TakesThreeClassesForARedundancyBelowZero)
{
    Redundant s(4);
    s.points[1].n0[0] = 0;
    for (measure &m : s.dist) m.p2 = &s.points[0];
    s.baseline(0, 1, 31, 40, 0);
    s.inv = {20.0}; // four distances and a baseline of weight 1: 4 + 3 - 20
    s.wire(1);
    S(s, nunk1) = S(s, nunk) = 1;
    EXPECT_EQ(s.inversion(), 0);
    EXPECT_EQ(s.classes, 3);
}

TEST(Inversion, ReturnsMinus1WithoutMemoryForTheHistograms)
{
    for (int k = 1; k <= 4; k++) {
        Redundant s(4);
        fail_allocation(k); // class limits, frequencies, common counts, distances
        EXPECT_EQ(s.inversion(), -1);
        fail_allocation(0);
        EXPECT_EQ(s.lines().back(), "statalloc () - memory allocation failed");
        EXPECT_EQ(s.calls, "inverse finish finish ");
    }
}

TEST(Inversion, ExportsTheConnectedNetWhereAskedFor)
{
    for (int icon = 0; icon < 4; icon++)
        for (int irun : {-2, 1, 2}) {
            Redundant s(irun == 2 ? 0 : 4);           // the last without redundancy: no export
            s.n.target("B       ", 30, 40).iconn = 1; // fixed: it cannot be exported, and a line says so
            s.n.ready();
            S(s, ptar) = s.n.p.targets;
            S(s, nptar) = s.n.p.ntargets;
            int lcon[1] = {0};
            double Q[3] = {0, 0, 0};
            S(s, irun) = irun;
            S(s, icon) = icon;
            S(s, nexport) = 1;
            S(s, lcon) = lcon;
            S(s, Qcon) = Q;
            EXPECT_EQ(s.inversion(), 0);
            EXPECT_EQ(contains(s.report(), "writeQcon"), (icon == 1 || icon == 3) && irun != 2) << icon << irun;
        }
}

// ---- statalloc ----

TEST(Statalloc, TakesAnArrayForEachFamilyThatHasObservations)
{
    OnePoint s;
    fail_allocation(0);
    ASSERT_EQ(S(s, statalloc)(), 0);
    EXPECT_EQ(allocations(), 3);
    for (int k = 0; k < 10; k++) {
        EXPECT_EQ(S(s, hlim)[k], 0.0);
        EXPECT_EQ(S(s, hnorm)[k], 0.0);
        EXPECT_EQ(S(s, hall)[k], 0);
    }
    EXPECT_EQ(S(s, hdist), nullptr);
    EXPECT_EQ(S(s, hgps3), nullptr);
    S(s, ndist) = S(s, ndifh) = S(s, ndir1) = S(s, ndir2) = S(s, naz) = S(s, ngps) = 1;
    fail_allocation(0);
    ASSERT_EQ(S(s, statalloc)(), 0); // a second call releases what the first one took
    EXPECT_EQ(allocations(), 11);
    for (int *count : {S(s, hall), S(s, hdist), S(s, hdifh), S(s, hdir1), S(s, hdir2), S(s, haz), S(s, hgps1),
                       S(s, hgps2), S(s, hgps3)}) {
        ASSERT_NE(count, nullptr);
        EXPECT_EQ(count[9], 0);
    }
    S(s, freestat)();
    EXPECT_EQ(S(s, hlim), nullptr);
    EXPECT_EQ(S(s, hgps3), nullptr);
    S(s, freestat)(); // harmless
    S(s, ndist) = S(s, ndifh) = S(s, ndir1) = S(s, ndir2) = S(s, naz) = S(s, ngps) = 0;
}

TEST(Statalloc, ReturnsACodeByFamilyWhenAnAllocationFails)
{
    const int code[11] = {-6, -6, -6, -6, -6, -6, -6, -7, -8, -8, -8};
    for (int k = 0; k < 11; k++) {
        OnePoint s;
        S(s, ndist) = S(s, ndifh) = S(s, ndir1) = S(s, ndir2) = S(s, naz) = S(s, ngps) = 1;
        fail_allocation(k + 1);
        EXPECT_EQ(S(s, statalloc)(), code[k]) << k;
        fail_allocation(0);
        EXPECT_EQ(s.finished, 1);
        EXPECT_EQ(S(s, hlim), nullptr);
        EXPECT_EQ(S(s, hall), nullptr);
        s.finish(); // once more, as the inversion does
    }
}

// ---- list of the observations ----

namespace {

std::string printed(const char *format, double a, double b)
{
    char text[200];
    snprintf(text, sizeof text, format, a, b);
    return text;
}

// Two stations and two targets; names of eight characters as loading leaves them.
class Traced : public Bare {
public:
    explicit Traced(int d) : Bare(d)
    {
        add("S1", 0, 0);
        add("S2", 0, 0);
        add("A", 0, 0);
        add("B", 0, 0);
        n.p.iangle = ANGLE_DEGREE;
        n.p.izenith = 1;
    }
    // The end of a line: a value and its standard deviation as horizontal angles.
    std::string horizontal(double val, double sigma)
    {
        return printed("%22.5lf%15.5lf\n", n.p.htoraw(1, val), n.p.htoraw(0, sigma));
    }
    std::string trace(int withtyp = 0)
    {
        wire(2);
        S(*this, traceobs)(withtyp);
        return report();
    }
};

} // namespace

TEST(TraceObs, ListsEveryKindUnderItsHeading)
{
    Traced s(3);
    s.observe(s.dist, 0, 2, 123.456786, 0.0023).typ = 1;
    s.observe(s.difh, 1, 3, -1.5, 0.001);
    s.baseline(0, 3, 1, -2, 3.5);
    s.observe(s.u, 1, 2, 10.25, 0.5);
    s.observe(s.v, 1, 2, 20.75, 0.25);
    EXPECT_EQ(s.trace(), "distances\n"
                         "S1        A                    123.45679        0.00230\n"
                         "height differences\n"
                         "S2        B                     -1.50000        0.00100\n"
                         "directions\n"
                         "gps baselines\n"
                         "S1        B                     1.000000      -2.000000       3.500000\n"
                         "photo coordinates\n"
                         "S2        A                     10.25000       20.75000\n");
}

TEST(TraceObs, AddsTheKindToADistanceWhereAskedFor)
{
    Traced s(2);
    s.observe(s.dist, 0, 2, 100, 0.002).typ = 1;
    EXPECT_EQ(s.trace(1), "distances\n"
                          "S1        A                    100.00000        0.00200    1\n"
                          "height differences\ndirections\ngps baselines\nphoto coordinates\n");
}

TEST(TraceObs, PairsDirectionsWithVerticalAngles)
{
    Traced s(3);
    s.observe(s.dir1, 0, 2, PI / 2, PI / 180);
    s.observe(s.dir2, 0, 2, PI / 6, PI / 360);
    s.observe(s.dir1, 0, 3, PI, PI / 180);
    s.observe(s.dir2, 1, 3, PI / 6, PI / 360);
    EXPECT_EQ(s.trace(), "distances\nheight differences\ndirections\n"
                         "S1        A       " +
                             printed("%22.5lf%15.5lf", s.n.p.htoraw(1, PI / 2), s.n.p.vtoraw(1, PI / 6)) +
                             printed("%15.5lf%10.5lf\n", s.n.p.htoraw(0, PI / 180), s.n.p.vtoraw(0, PI / 360)) +
                             "dir1   1 S1        B       \ndir2   1 S2        B       \n"
                             "gps baselines\nphoto coordinates\n");
}

TEST(TraceObs, ListsDirectionsAloneInThePlane)
{
    Traced s(2);
    s.observe(s.dir1, 0, 2, PI / 2, PI / 180);
    EXPECT_EQ(s.trace(), "distances\nheight differences\ndirections\n"
                         "S1        A       " +
                             s.horizontal(PI / 2, PI / 180) + "gps baselines\nphoto coordinates\n");
}

TEST(TraceObs, ListsUnequalListsOneAfterTheOtherVerticalAnglesAsHorizontalOnes)
{
    Traced s(3);
    s.observe(s.dir1, 0, 2, PI / 2, PI / 180);
    EXPECT_EQ(s.trace(), "distances\nheight differences\ndirections\n"
                         "S1        A       " +
                             s.horizontal(PI / 2, PI / 180) + "\ngps baselines\nphoto coordinates\n");
    Traced t(2);
    t.observe(t.dir2, 0, 2, PI / 6, PI / 180);
    EXPECT_EQ(t.trace(), "distances\nheight differences\ndirections\n"
                         "\nS1        A       " +
                             t.horizontal(PI / 6, PI / 180) + "gps baselines\nphoto coordinates\n");
}

// ---- centre ----

TEST(SetCentre, IsTheMeanOfTheCoordinatesThatAreUsedForTheDatum)
{
    Bare s(3);
    s.add("S", 1, 10, 100);
    s.add("A", 2, 20, 200).defdatum[1] = DATUM_UNUSED;
    s.add("B", 6, 30, 300).defdatum[1] = DATUM_WEIGHTED;
    s.points[0].defdatum[2] = s.points[1].defdatum[2] = s.points[2].defdatum[2] = DATUM_UNUSED;
    s.wire(1);
    S(s, ndatum) = 3;
    S(s, setcentre)();
    EXPECT_DOUBLE_EQ(S(s, centre)[0], 3.0);
    EXPECT_DOUBLE_EQ(S(s, centre)[1], 10.0);
    EXPECT_EQ(S(s, centre)[2], 0.0); // no coordinate in use
}

TEST(SetCentre, LeavesTheThirdCoordinateOutInThePlane)
{
    Bare s(2);
    s.add("S", 1, 10, 100);
    s.wire(1);
    S(s, ndatum) = 3;
    S(s, setcentre)();
    EXPECT_EQ(S(s, centre)[1], 10.0);
    EXPECT_EQ(S(s, centre)[2], 0.0);
}

TEST(SetCentre, IsNotNeededForHeightsNorWithoutDatumConditions)
{
    for (int dim : {1, 2}) {
        Bare s(dim);
        s.add("S", 1, 10, 100);
        s.wire(1);
        S(s, ndatum) = dim == 1 ? 1 : 0;
        S(s, setcentre)();
        for (int k = 0; k < 3; k++) EXPECT_EQ(S(s, centre)[k], 0.0);
    }
}
