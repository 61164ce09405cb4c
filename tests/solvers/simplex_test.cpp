#include <gtest/gtest.h>
#include <math.h>

#include "support/faults.h"
#include "support/random_network.h"
#include "support/simplex_hand.h"

namespace {

std::string behind(const std::string &text, const std::string &mark)
{
    const size_t at = text.find(mark);
    return at == std::string::npos ? "no " + mark : text.substr(at);
}

std::string between(const std::string &text, const std::string &from, const std::string &to)
{
    const std::string tail = behind(text, from);
    return tail.substr(0, tail.find(to));
}

bool holds(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

// Three height differences to one free point, one of them wrong by 0.1 m.
void wrong_levelling(Network &n)
{
    n.p.irun = -1;
    n.target("A       ", 0, 0, 0).ix[2] = CODE_FIXED;
    n.target("B       ", 0, 0, 1);
    n.heightdiff("A       ", "B       ", 1.001, 0.001);
    n.heightdiff("A       ", "B       ", 1.002, 0.001);
    n.heightdiff("A       ", "B       ", 1.100, 0.001);
}

} // namespace

// The median of 1, 2 and 100 mm: by hand, weights 1000 scaled to 1, identifiers 0, 1 for the
// height, 2 to 4 and 5 to 7 for the residuals.
TEST(VornL1, WritesTheReportOfAnAdjustmentThatFindsTheMedian)
{
    Network n(1);
    wrong_levelling(n);
    {
        vorn run(n.ready());
        ASSERT_EQ(run.vornstart(), 0);
        EXPECT_EQ(run.vornL1(), 0);
    }
    EXPECT_EQ(behind(n.report(), "\n\nSimplex solution"), "\n\nSimplex solution\n"
                                                          "Version 0.0\n"
                                                          "\nSimplex loop first step\n"
                                                          "iter    0  new    0  old    5    cost       -0.103000\n"
                                                          "end of of phase 1 with res=-3\n"
                                                          "\nSimplex loop second step\n"
                                                          "iter    0  new    2  old    6    cost       -0.100000\n"
                                                          "end of of phase 2 with res=-1\n"
                                                          "\n\nCorrections to unknowns\n"
                                                          "A              0.000000       0.000000       0.000000\n"
                                                          "B              0.000000       0.000000       0.002000\n"
                                                          "\n\nheight differences residuals\n"
                                                          "A        B           0.001000  \n"
                                                          "A        B           0.000000  \n"
                                                          "A        B          -0.098000 *\n"
                                                          "\n\nCorrections to coordinates\n\n"
                                                          "A                     0.000000\n"
                                                          "B                     0.002000\n"
                                                          "\n\nFinal results\n\n"
                                                          "A                     0.000000\n"
                                                          "B                     1.002000\n");
    EXPECT_EQ(n.messages.lines, (std::vector<std::string>{"Start resolution...", "end of of phase 1 with res=-3",
                                                          "end of of phase 2 with res=-1"}));
    ASSERT_EQ(n.messages.questions.size(), 2u);
    EXPECT_EQ(n.messages.questions[1], "Simplex Choice: Do you want to balance the observations?");
}

TEST(VornL1, HandsResidualsAndCoordinatesToTheHost)
{
    Network n(1);
    wrong_levelling(n);
    {
        vorn run(n.ready());
        ASSERT_EQ(run.vornstart(), 0);
        ASSERT_EQ(run.vornL1(), 0);
        EXPECT_EQ(V(run, temp_res), nullptr);
    }
    ASSERT_TRUE(n.p.runresults);
    EXPECT_EQ(n.p.runresults->irun, -1);
    EXPECT_NEAR(n.p.runresults->zpt[1], 1.002, 1e-12);
    EXPECT_NEAR(n.p.runresults->res[0], 0.001, 1e-12);
    EXPECT_EQ(n.p.runresults->res[1], 0.0);
    EXPECT_NEAR(n.p.runresults->res[2], -0.098, 1e-12);
}

// One pass whatever mode the host asked for.
TEST(VornL1, MakesOnePassInEveryMode)
{
    for (const int mode : {-2, -1, 0, 1}) {
        Network n(1);
        wrong_levelling(n);
        n.p.irun = mode;
        vorn run(n.ready());
        ASSERT_EQ(run.vornstart(), 0);
        EXPECT_EQ(run.vornL1(), 0) << mode;
        EXPECT_TRUE(holds(n.report(), "\n\nFinal results\n\n")) << mode;
        EXPECT_FALSE(holds(n.report(), "Simple residuals")) << mode;
    }
}

// A limit of no iterations counts the one pass as too many.
TEST(VornL1, AtALimitOfNoIterationsShowsResidualsAndReleasesTheirClasses)
{
    Network n(1);
    wrong_levelling(n);
    n.p.itmax = 0;
    vorn run(n.ready());
    ASSERT_EQ(run.vornstart(), 0);
    EXPECT_EQ(run.vornL1(), -4);
    EXPECT_TRUE(holds(n.report(), "\nNo convergence after 0 iterations\n\n\nSimple residuals analysis\n"));
}

TEST(VornL1, EndsByItsCodesWhateverAllocationFails)
{
    for (int fail = 1;; fail++) {
        Network n(1);
        wrong_levelling(n);
        vorn run(n.ready());
        ASSERT_EQ(run.vornstart(), 0);
        fail_allocation(fail);
        const int result = run.vornL1();
        const bool failed = allocations() >= fail;
        fail_allocation(0);
        if (!failed) {
            EXPECT_EQ(result, 0);
            EXPECT_EQ(fail, 10); // eight arrays of the tableau, iobsout
            break;
        }
        const std::string text = n.report();
        if (fail <= 7) {
            EXPECT_EQ(result, -2) << fail;
            EXPECT_TRUE(holds(text, "pb with matrix or others\n\nProgram stops in prepare\n")) << fail;
        } else if (fail == 8) {
            EXPECT_EQ(result, -2);
            EXPECT_TRUE(holds(text, "pb with matrix when i=0\n\nProgram stops in prepare\n"));
        } else {
            EXPECT_EQ(result, -3);
            EXPECT_TRUE(holds(text, "pb with allocation of iobsout\n\nProgram stops in resolution\n"));
        }
    }
}

// What has no rows of its own brings one too many: the tableau stays whole and the run ends.
TEST(VornL1, RefusesAzimuthsAndWeights)
{
    for (const bool azimuth : {false, true}) {
        RandomNetwork network(2, 3, 4, azimuth ? 3 : 0, 2, 1.0, 0.001);
        Network &n = network.net;
        if (azimuth) {
            n.azimuth(n.stations[0].name, n.targets[0].name, 50.0, 0.01);
        } else {
            n.targets[0].ix[0] = CODE_WEIGHTED;
            n.targets[0].sx[0] = 0.1;
        }
        vorn run(n.ready());
        ASSERT_EQ(run.vornstart(), 0);
        EXPECT_EQ(run.vornL1(), -3);
        EXPECT_TRUE(holds(n.report(), "resolution: 37 rows came for 36 observations and fixed heights\n"
                                      "\nProgram stops in resolution\n"))
            << n.report();
    }
}

TEST(VornL1, LeavesBaselinesOut)
{
    RandomNetwork network(3, 2, 4, 3, 2, 1.0, 0.001);
    Network &n = network.net;
    gps_input g = gps_input();
    g.status = 1;
    memcpy(g.from, n.stations[0].name, 8);
    memcpy(g.to, n.targets[0].name, 8);
    g.cov[0] = g.cov[3] = g.cov[5] = 1.0;
    n.baselines.push_back(g);
    n.p.igps = 1;
    vorn run(n.ready());
    ASSERT_EQ(run.vornstart(), 0);
    EXPECT_EQ(run.vornL1(), 0);
    EXPECT_TRUE(holds(n.report(), "\nbuildgps in simplex TO DO\n"));
}

// ---- frame ----

TEST(SimplexFrame, AnnouncesItselfAndMakesTheRunOneOfASinglePass)
{
    Hand h(1);
    h.n.p.irun = 1;
    simplex &s = h.solver();
    s.banner();
    EXPECT_EQ(h.n.report(), "\n\nSimplex solution\nVersion 0.0\n");
    EXPECT_EQ(S(s, irun), -1);
}

TEST(SimplexFrame, StartsWithThePositivePartsOfTheUnknowns)
{
    Hand h(1);
    simplex &s = h.tableau(3, 1);
    L1(s, inplus)[1] = 7;
    s.zeronormal();
    for (int j = 0; j < 3; j++) EXPECT_EQ(L1(s, inplus)[j], j);
}

TEST(SimplexFrame, TakesNoBaselines)
{
    Hand h(3);
    simplex &s = h.tableau(3, 1);
    L1(s, nobs) = 0;
    const size_t start = h.n.report().size();
    const int iu[6] = {0, 1, 2, -1, -1, -1};
    const double w[3] = {1.0, 1.0, 1.0};
    s.buildgps(0, iu, w);
    EXPECT_EQ(h.n.report().substr(start), "buildgps in simplex TO DO\n");
    EXPECT_EQ(L1(s, nobs), 0);
}

TEST(SimplexFrame, HasNoInverseAndNoNormalMatrixToPrint)
{
    Hand h(1);
    simplex &s = h.tableau(1, 1);
    const size_t start = h.n.report().size();
    s.debugnormal();
    EXPECT_EQ(s.inverse(), 0);
    EXPECT_EQ(h.n.report().size(), start);
    EXPECT_EQ(S(s, inv), nullptr);
}

TEST(SimplexFrame, MayFinishTwice)
{
    Hand h(1);
    simplex &s = h.tableau(2, 3);
    s.finish();
    EXPECT_EQ(L1(s, a), nullptr);
    EXPECT_EQ(L1(s, cost), nullptr);
    EXPECT_EQ(L1(s, inplus), nullptr);
    EXPECT_EQ(L1(s, ibase), nullptr);
    EXPECT_EQ(L1(s, newpd), nullptr);
    EXPECT_EQ(S(s, rhs), nullptr);
    EXPECT_EQ(S(s, delta), nullptr);
    s.finish();
}

// ---- stages ----

TEST(Stage, EndsAtItsLimitOfExchanges)
{
    Hand h(1);
    simplex &s = h.tableau(2, 2);
    for (int i = 0; i < 2; i++) L1(s, a)[i][i] = L1(s, cost)[i] = S(s, delta)[i] = 1.0;
    EXPECT_EQ(L1(s, exchanges)(2, 2, 1, nullptr), -3);
    EXPECT_EQ(L1(s, ibase)[0], 0);
    EXPECT_EQ(L1(s, ibase)[1], 5);
}

TEST(Stage, EndsWithoutAColumnOrWithoutARow)
{
    Hand h(1);
    simplex &s = h.tableau(2, 2);
    EXPECT_EQ(L1(s, exchanges)(2, 2, 5, nullptr), -1);
    L1(s, cost)[1] = 1.0; // its column has no positive coefficient
    EXPECT_EQ(L1(s, exchanges)(2, 2, 5, nullptr), -2);
}

// Two exchanges improve; a limit of 0 or below never ends the stage.
TEST(Stage, GoesOnWithoutALimit)
{
    for (const int limit : {0, -3}) {
        Hand h(1);
        simplex &s = h.tableau(2, 2);
        for (int i = 0; i < 2; i++) L1(s, a)[i][i] = L1(s, cost)[i] = S(s, delta)[i] = 1.0;
        EXPECT_EQ(L1(s, exchanges)(2, 2, limit, nullptr), -1);
        EXPECT_EQ(L1(s, ibase)[1], 1);
    }
}

TEST(Stage, ListsEveryExchangeAndKeepsOutWhatLeft)
{
    Hand h(1);
    simplex &s = h.tableau(1, 2); // residuals 2, 3 and 4, 5
    const size_t start = h.n.report().size();
    L1(s, inplus)[0] = 4;
    L1(s, a)[0][0] = -1.0; // row 0 holds the unknown
    L1(s, a)[1][0] = 1.0;
    L1(s, ibase)[0] = 0;
    S(s, delta)[0] = 1.0;
    S(s, delta)[1] = 2.0;
    L1(s, cost)[0] = 0.5;
    L1(s, gcost) = -7.25;
    L1(s, newpd)[1] = 9.0;
    std::vector<int> iobsout(6, 0);
    EXPECT_EQ(L1(s, exchanges)(2, 1, 9, iobsout.data()), -1);
    EXPECT_EQ(h.n.report().substr(start), "iter    0  new    4  old    3    cost       -7.250000\n");
    EXPECT_EQ(iobsout, (std::vector<int>{0, 0, 0, -1, 0, 0}));
    EXPECT_EQ(L1(s, gcost), -6.25);
}

TEST(ArtificialColumns, GoWithTheLastOneFirst)
{
    Hand h(1);
    simplex &s = h.tableau(4, 1, 2); // artificial variables from 10 on
    const int ids[] = {0, 11, 2, 10};
    for (int j = 0; j < 4; j++) {
        L1(s, inplus)[j] = ids[j];
        for (int i = 0; i < 3; i++) L1(s, a)[i][j] = 10.0 * i + j;
    }
    int cols = 4;
    EXPECT_EQ(L1(s, removeartificial)(3, &cols), 0);
    EXPECT_EQ(cols, 2);
    EXPECT_EQ(L1(s, inplus)[0], 0);
    EXPECT_EQ(L1(s, inplus)[1], 2);
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(L1(s, a)[i][0], 10.0 * i);
        EXPECT_EQ(L1(s, a)[i][1], 10.0 * i + 2.0);
    }
}

TEST(ArtificialColumns, MustAllBeOutOfTheBasis)
{
    Hand h(1);
    simplex &s = h.tableau(4, 1, 2);
    L1(s, inplus)[2] = 11;
    int cols = 4;
    EXPECT_EQ(L1(s, removeartificial)(3, &cols), -3);
}

// No point carries the datum: the row of the condition stays empty and nothing can enter it.
TEST(Resolution, StopsWhenTheDatumRowsStayInTheBasis)
{
    Hand h(1);
    h.add("A", 0, 0, 1);
    h.add("B", 0, 0, 2);
    h.points[0].defdatum[2] = h.points[1].defdatum[2] = DATUM_UNUSED;
    h.observe(h.difh, 0, 1, 1.5, 0.1);
    simplex &s = h.solver(0, 1);
    EXPECT_EQ(s.iterate(), -3);
    EXPECT_EQ(behind(h.n.report(), "\nSimplex loop"), "\nSimplex loop for artificial variables\n"
                                                      "end of of phase 0 with res=-1\n"
                                                      "\nProgram stops in resolution\n");
    EXPECT_EQ(L1(s, a), nullptr);
}

TEST(Resolution, TellsTheEndOfEveryStageToTheUser)
{
    Hand h(1);
    h.add("A", 0, 0, 1);
    h.add("B", 0, 0, 2);
    h.observe(h.difh, 0, 1, 1.5, 0.1);
    EXPECT_EQ(h.solver(0, 1).iterate(), 0);
    EXPECT_EQ(h.n.messages.lines,
              (std::vector<std::string>{"Start resolution...", "end of of phase 0 with res=-3",
                                        "end of of phase 1 with res=-3", "end of of phase 2 with res=-1"}));
}

// 1 / 0.1 and a fixed height: all weights are divided by that of the height. Those below 1 stay.
TEST(Resolution, ScalesTheWeightsToAtMostOne)
{
    Hand h(1);
    simplex &s = h.tableau(1, 3);
    L1(s, newpd)[0] = 10.0;
    L1(s, newpd)[1] = 1.0e8;
    L1(s, newpd)[2] = 0.5;
    S(s, delta)[0] = 2.0;
    L1(s, a)[1][0] = 3.0;
    L1(s, unknownstage)(3, 0);
    EXPECT_EQ(L1(s, newpd)[0], 1.0e-7);
    EXPECT_EQ(L1(s, newpd)[1], 1.0);
    EXPECT_EQ(L1(s, newpd)[2], 0.5e-8);
    EXPECT_EQ(L1(s, gcost), -2.0e-7);

    Hand light(1);
    simplex &t = light.tableau(1, 1);
    L1(t, newpd)[0] = 0.5;
    L1(t, unknownstage)(1, 0);
    EXPECT_EQ(L1(t, newpd)[0], 0.5);
}

// The cost at the start is minus the sum of the misclosures, without any: minus zero.
TEST(Resolution, StartsFromMinusTheSumOfTheMisclosures)
{
    Hand h(1);
    simplex &s = h.tableau(1, 2);
    L1(s, unknownstage)(2, 0);
    EXPECT_EQ(L1(s, gcost), 0.0);
    EXPECT_TRUE(signbit(L1(s, gcost)));
}

// An azimuth or a weight: the rows would be taken for others.
TEST(Resolution, RefusesRowsBeyondThoseOfTheLists)
{
    Hand h(1);
    simplex &s = h.tableau(2, 3);
    L1(s, nextra) = 2;
    const size_t start = h.n.report().size();
    EXPECT_EQ(s.resolution(), -3);
    EXPECT_EQ(h.n.report().substr(start), "resolution: 5 rows came for 3 observations and fixed heights\n");
}

// ---- lists that end early ----

namespace {

// A station between three fixed targets and above a fourth; distances, directions, vertical
// angles of another weight, and a distance that is wrong. With plumb the second direction and
// the last vertical angle are sights straight down.
struct OverAMark {
    explicit OverAMark(bool plumb) : h(3)
    {
        h.add("S", 0.01, -0.02, 5.03).n1[2] = 0;
        h.add("A", 100, 0, 10), h.add("B", 0, 80, 1), h.add("C", -60, -50, 4), h.add("M", 0.01, -0.02, 0);
        for (size_t i = 1; i < h.points.size(); i++)
            for (int &n : h.points[i].n0) n = N_NONE;
        h.nunk1 = 3, h.nunk2 = 1;
        for (const int to : {1, 2, 3, 4}) h.observe(h.dist, 0, to, length(to), 0.01);
        h.dist[3].val[0] += 0.4;
        sight(h.dir1, 1, 0.5);
        if (plumb) sight(h.dir1, 4, 0.5), sight(h.dir1, 2, 0.5), sight(h.dir1, 3, 0.5);
        for (const int to : {1, 2, 3}) sight(h.dir2, to, 4.0);
        if (plumb) sight(h.dir2, 4, 4.0), sight(h.dir2, 1, 4.0);
    }

    double length(int to) const { return hypot(along(to), h.points[to].xpt[2] - 5.0); }
    double along(int to) const { return hypot(h.points[to].xpt[0], h.points[to].xpt[1]); }

    // As seen from a station at (0, 0, 5).
    void sight(std::vector<measure> &list, int to, double sigma)
    {
        const double *x = h.points[to].xpt;
        h.observe(list, 0, to, &list == &h.dir1 ? atan2(x[1], x[0]) : atan2(x[2] - 5.0, along(to)), sigma);
    }

    Hand h;
};

} // namespace

TEST(EarlyEnd, GoesOnWithTheRowsBeforeAndTheListsBehind)
{
    OverAMark whole(false), ended(true);
    ended.h.n.messages.answer = 0;
    EXPECT_EQ(whole.h.solver(1).iterate(), 0);
    EXPECT_EQ(ended.h.solver(1).iterate(), 0);
    EXPECT_TRUE(holds(ended.h.n.report(), "\nProblem with horizontal direction 1\n"
                                          "\nProblem with vertical direction 3\n"
                                          "\nSimplex loop first step\n"));
    const point &p = whole.h.points[0], &q = ended.h.points[0];
    for (int k = 0; k < 3; k++) EXPECT_NEAR(q.xpt[k], p.xpt[k], 1e-9) << k;
    EXPECT_NEAR(q.xex[2], p.xex[2], 1e-9);
    EXPECT_NE(p.xpt[2], 5.03);
    for (size_t i = 0; i < 4; i++) EXPECT_NEAR(ended.h.dist[i].res[0], whole.h.dist[i].res[0], 1e-9) << i;
    for (size_t i = 0; i < 3; i++) EXPECT_NEAR(ended.h.dir2[i].res[0], whole.h.dir2[i].res[0], 1e-9) << i;
    EXPECT_TRUE(holds(ended.h.n.report(), "\nS        M           0.000000  \nS        B           0.000000  \n"));
    for (size_t i = 1; i < 4; i++) EXPECT_EQ(ended.h.dir1[i].res[0], 0.0) << i;
    for (size_t i = 3; i < 5; i++) EXPECT_EQ(ended.h.dir2[i].res[0], 0.0) << i;
}

// The rows of a list that ended stay empty, those behind it stand at their own places.
TEST(EarlyEnd, KeepsThePlacesOfTheRowsBehind)
{
    OverAMark m(true);
    simplex &s = m.h.solver(1);
    ASSERT_EQ(s.prepare(), 0);
    s.zeronormal();
    S(s, normal)();
    for (int i = 4; i < 13; i++) {
        const double *row = L1(s, a)[i];
        const bool empty = (i > 4 && i < 8) || i > 10;
        EXPECT_EQ(row[0] == 0.0 && row[1] == 0.0 && row[2] == 0.0 && row[3] == 0.0, empty) << i;
        if (empty) {
            EXPECT_EQ(L1(s, ibase)[i], 2 * 4 + i) << i;
        }
    }
    // d elevation / d z of the station = -cos(elevation) / length, without the weight
    const double flat = hypot(100.0 - 0.01, 0.02), up = 10.0 - 5.03;
    EXPECT_NEAR(fabs(L1(s, a)[8][2]), flat / (flat * flat + up * up), 1e-15);
}

// ---- read-out ----

namespace {

// Station S with two orientations and a target T in space; one observation of each kind.
struct Shown {
    Shown() : h(3)
    {
        h.n.p.iangle = ANGLE_GON;
        h.add("S", 0, 0, 0);
        h.add("T", 100, 0, 10);
        h.points[1].n0[1] = N_NONE;
        h.points[0].n1[0] = 0;
        h.points[0].n1[2] = 1;
        h.nunk2 = 2;
        h.observe(h.dist, 0, 1, 100.0, 0.01);
        h.observe(h.difh, 0, 1, 10.0, 0.01);
        h.observe(h.dir1, 0, 1, 0.0, 0.001);
        h.observe(h.dir2, 0, 1, 0.1, 0.001);
        s = &h.solver(1);
        EXPECT_EQ(s->prepare(), 0);
        L1(*s, nobs) = 4;
    }
    Hand h;
    simplex *s;
};

} // namespace

TEST(ReadOut, GivesEveryBasicVariableItsSign)
{
    Shown t;
    simplex &s = *t.s;
    const int unk = S(s, nunk); // 8: x 0 to 2 of S, 3 to 5 of T, two orientations
    ASSERT_EQ(unk, 8);
    const int ids[] = {0, unk + 5, 2 * unk + 3, 2 * unk + 4 + 1};
    for (int i = 0; i < 4; i++) {
        L1(s, ibase)[i] = ids[i];
        S(s, delta)[i] = 0.001 * (i + 1);
        L1(s, a)[i][0] = 9.0;
    }
    L1(s, readout)(4);
    EXPECT_EQ(S(s, delta)[0], 0.001);
    EXPECT_EQ(S(s, delta)[5], -0.002);
    for (const int zero : {1, 2, 3, 4, 6, 7}) EXPECT_EQ(S(s, delta)[zero], 0.0) << zero;
    EXPECT_EQ(t.h.dist[0].res[0], 0.0);
    EXPECT_EQ(t.h.difh[0].res[0], -0.004);
    EXPECT_EQ(t.h.dir1[0].res[0], 0.0);
    EXPECT_EQ(t.h.dir2[0].res[0], 0.003);
}

TEST(ReadOut, ShowsCorrectionsAndResiduals)
{
    Shown t;
    simplex &s = *t.s;
    const double gon = acos(-1.0) / 200.0;
    const double v[] = {0.0100001, -0.01, 0.0500001 * gon, -0.0499999 * gon};
    for (int i = 0; i < 4; i++) {
        L1(s, ibase)[i] = 2 * 8 + (v[i] < 0.0 ? 4 : 0) + i;
        S(s, delta)[i] = fabs(v[i]);
    }
    const size_t start = t.h.n.report().size();
    L1(s, readout)(4);
    // All corrections are 0: no unknown is basic.
    EXPECT_EQ(t.h.n.report().substr(start), "\n\nCorrections to unknowns\n"
                                            "S              0.000000       0.000000       0.000000\n"
                                            "               0.000000       0.000000       0.000000       0.000000\n"
                                            "T              0.000000       0.000000       0.000000\n"
                                            "\n\ndistance residuals\n"
                                            "S        T           0.010000 *\n"
                                            "\n\nheight differences residuals\n"
                                            "S        T          -0.010000  \n"
                                            "\nhorizontal direction residuals\n"
                                            "S        T           0.050000 *\n"
                                            "\nvertical direction residuals\n"
                                            "S        T          -0.050000  \n");
}

TEST(ReadOut, ShowsTheCorrectionsOfCoordinatesAndOrientations)
{
    Shown t;
    simplex &s = *t.s;
    const int ids[] = {2, 8 + 5, 7, 8 + 6};
    for (int i = 0; i < 4; i++) {
        L1(s, ibase)[i] = ids[i];
        S(s, delta)[i] = i + 1.0;
    }
    L1(s, readout)(4);
    EXPECT_EQ(between(t.h.n.report(), "S    ", "\n\n"),
              "S              0.000000       0.000000       1.000000\n"
              "              -4.000000       0.000000       3.000000       0.000000\n"
              "T              0.000000       0.000000      -2.000000");
}

TEST(ReadOut, ShowsNoHeadingForAnEmptyList)
{
    Hand h(1);
    simplex &s = h.tableau(1, 0);
    const size_t start = h.n.report().size();
    L1(s, readout)(0);
    EXPECT_EQ(h.n.report().substr(start), "\n\nCorrections to unknowns\n"
                                          "A              0.000000       0.000000       0.000000\n");
}

// ---- traces ----

TEST(SimplexTrace, NamesEveryIdentifier)
{
    Shown t;
    const size_t start = t.h.n.report().size();
    L1(*t.s, unknowntable)();
    EXPECT_EQ(t.h.n.report().substr(start), "\nTable of Simplex unknowns\n\n"
                                            "S        coordinate 1               0    8\n"
                                            "S        coordinate 2               1    9\n"
                                            "S        coordinate 3               2   10\n"
                                            "T        coordinate 1               3   11\n"
                                            "T        coordinate 3               5   13\n"
                                            "S        rotation 1                 6   14\n"
                                            "S        rotation 3                 7   15\n"
                                            "S        T          distance       16   20\n"
                                            "S        T          height d       17   21\n"
                                            "S        T          horiz          18   22\n"
                                            "S        T          verti          19   23\n");
}

TEST(SimplexTrace, PrintsTheTableauInBlocksOfSevenColumns)
{
    Hand h(1);
    simplex &s = h.tableau(8, 1);
    L1(s, gcost) = -1.5;
    S(s, delta)[0] = 0.25;
    for (int j = 0; j < 8; j++) {
        L1(s, a)[0][j] = j;
        L1(s, cost)[j] = -j;
    }
    const size_t start = h.n.report().size();
    L1(s, debugsimplex)(1, 8);
    EXPECT_EQ(h.n.report().substr(start), "\n*** debugsimplex info ***\n"
                                          "\nRHS    global cost=       -1.50000\n"
                                          "  0            0.25000            1.00000          16\n"
                                          "cost line part N+\n"
                                          "  0            0.00000           0\n"
                                          "  1           -1.00000           1\n"
                                          "  2           -2.00000           2\n"
                                          "  3           -3.00000           3\n"
                                          "  4           -4.00000           4\n"
                                          "  5           -5.00000           5\n"
                                          "  6           -6.00000           6\n"
                                          "  7           -7.00000           7\n"
                                          "matrix part N+\n"
                                          "           0        1        2        3        4        5        6\n"
                                          "    0    0.000    1.000    2.000    3.000    4.000    5.000    6.000\n"
                                          "           7        8        9       10       11       12       13\n"
                                          "    0    7.000\n"
                                          "\n*** end of debugsimplex ***\n\n");
}

TEST(SimplexTrace, EndsWithABlockAlsoWhenNoColumnsFollow)
{
    Hand h(1);
    simplex &s = h.tableau(7, 1);
    L1(s, debugsimplex)(1, 7);
    EXPECT_TRUE(holds(h.n.report(), "           7        8        9       10       11       12       13\n"
                                    "    0\n"
                                    "\n*** end of debugsimplex ***\n\n"));
    const size_t start = h.n.report().size();
    L1(s, debugsimplex)(0, 0);
    EXPECT_EQ(h.n.report().substr(start), "\n*** debugsimplex info ***\n"
                                          "\nRHS    global cost=        0.00000\n"
                                          "cost line part N+\n"
                                          "matrix part N+\n"
                                          "           0        1        2        3        4        5        6\n"
                                          "\n*** end of debugsimplex ***\n\n");
}

TEST(SimplexTrace, StandsBeforeEveryStageOnRequest)
{
    for (const int debug : {0, 1}) {
        RandomNetwork network(2, 2, 3, 0, 7, 1.0, 0.001);
        network.net.p.idebug = debug;
        vorn run(network.net.ready());
        ASSERT_EQ(run.vornstart(), 0);
        ASSERT_EQ(run.vornL1(), 0);
        const std::string text = network.net.report();
        for (const char *head : {"\nSimplex loop for artificial variables\n", "\nSimplex loop first step\n",
                                 "\nSimplex loop second step\n"}) {
            const std::string next = debug ? "\nTable of Simplex unknowns\n\n" : "iter    0";
            EXPECT_TRUE(holds(text, head + next)) << head;
        }
        int tables = 0;
        for (size_t at = text.find("*** end of debugsimplex"); at != std::string::npos;
             at = text.find("*** end of debugsimplex", at + 1))
            tables++;
        EXPECT_EQ(tables, debug ? 3 : 0);
    }
}
