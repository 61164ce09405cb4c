#include <gtest/gtest.h>
#include <math.h>

#include "support/dense.h"
#include "support/faults.h"
#include "support/random_network.h"
#include "support/passive.h"
#include "support/simplex_hand.h"

namespace {

bool holds(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

// Redundancies of the first sweep that are no numbers.
int undefined(const std::string &text)
{
    int n = 0;
    for (size_t at = text.find("nan  original"); at != std::string::npos; at = text.find("nan  original", at + 1)) n++;
    return n;
}

// B observed from the fixed A with the given parts of the a-priori deviation.
struct TwoHeights {
    explicit TwoHeights(std::vector<double> sigmas) : h(1)
    {
        h.add("A", 0, 0, 0).n0[2] = N_NONE;
        h.add("B", 0, 0, 1).n0[2] = 0;
        h.nunk1 = 1;
        for (const double sigma : sigmas) h.observe(h.difh, 0, 1, 1.0, sigma * h.sdifh);
        h.n.messages.answer = 1;
    }
    Hand h;
};

} // namespace

TEST(Balance, LeavesObservationsThatAreBalancedAlready)
{
    TwoHeights t({0.5, 0.5});
    simplex &s = t.h.solver();
    EXPECT_EQ(s.prepare(), 0);
    EXPECT_EQ(t.h.n.report(), "first r[  0] =   0.500000  original pd =        2.000000\n"
                              "first r[  1] =   0.500000  original pd =        2.000000\n"
                              "After 0 iterations:\n"
                              " r[  0] =   0.500000   newpd =         2.000000   oldpd =         2.000000\n"
                              " r[  1] =   0.500000   newpd =         2.000000   oldpd =         2.000000\n");
    EXPECT_EQ(L1(s, nobs), 0);
}

// Weights 2 and 1: influences 2/3 and 1/3, new weights 1/3 * 2 / (2/3) = 1 and 2/3 / (1/3) = 2. Every
// sweep exchanges them, so that all eleven run; the last redundancies are those of the last
// inverse, 1/3, with the weights that came out of it.
TEST(Balance, EndsAfterElevenFurtherSweeps)
{
    TwoHeights t({0.5, 1.0});
    EXPECT_EQ(t.h.solver().prepare(), 0);
    EXPECT_EQ(t.h.n.report(), "first r[  0] =   0.333333  original pd =        2.000000\n"
                              "first r[  1] =   0.666667  original pd =        1.000000\n"
                              "After 11 iterations:\n"
                              " r[  0] =   0.333333   newpd =         2.000000   oldpd =         2.000000\n"
                              " r[  1] =   0.666667   newpd =         1.000000   oldpd =         1.000000\n");
}

// Weights 1e8 and 1. The influences 1 - 1e-8 and 1e-8 leave the first a redundancy, and with it the
// new weight 1e-8 1e8 = 1; the second has too small an influence and stays at 1.
TEST(Balance, BringsDownTheWeightOfAMeasureWithoutDeviation)
{
    TwoHeights t({0.0, 1.0});
    EXPECT_EQ(t.h.solver().prepare(), 0);
    EXPECT_EQ(t.h.n.report(), "first r[  0] =   0.000000  original pd = 100000000.000000\n"
                              "first r[  1] =   1.000000  original pd =        1.000000\n"
                              "After 1 iterations:\n"
                              " r[  0] =   0.500000   newpd =         1.000000   oldpd = 100000000.000000\n"
                              " r[  1] =   0.500000   newpd =         1.000000   oldpd =         1.000000\n");
}

// C hangs on a single observation: influence 1, weight 4 as before, and no say in the balance.
TEST(Balance, KeepsTheWeightOfAnObservationWithoutRedundancy)
{
    TwoHeights t({0.5, 0.5, 0.5, 0.5});
    t.h.add("C", 0, 0, 2).n0[2] = 1;
    t.h.nunk1 = 2;
    t.h.observe(t.h.difh, 0, 2, 2.0, 0.25 * t.h.sdifh);
    EXPECT_EQ(t.h.solver().prepare(), 0);
    // rbar = 1 - 2 / 5; the others are at 3/4, whatever common weight they get
    EXPECT_TRUE(holds(t.h.n.report(), "first r[  4] =   0.000000  original pd =        4.000000\nAfter 11"));
    EXPECT_TRUE(holds(t.h.n.report(), " r[  4] =   0.000000   newpd =         4.000000   oldpd =         4.000000\n"));
}

// An observation of no unknown has no influence: its redundancy is 1, and it takes no part.
TEST(Balance, KeepsTheWeightOfAnObservationWithoutInfluence)
{
    TwoHeights t({0.5, 0.5});
    t.h.observe(t.h.difh, 0, 0, 0.0, 0.25 * t.h.sdifh);
    EXPECT_EQ(t.h.solver().prepare(), 0);
    EXPECT_TRUE(holds(t.h.n.report(), "first r[  2] =   1.000000  original pd =        4.000000\n"));
    EXPECT_TRUE(holds(t.h.n.report(), " r[  2] =   1.000000   newpd =         4.000000   oldpd =         4.000000\n"));
}

// The mean redundancy counts fixed heights and conditions: 1 - 1/4 here, which none has.
TEST(Balance, CountsFixedHeightsInTheMeanRedundancyOnly)
{
    TwoHeights t({0.5, 0.5});
    t.h.nfixh = 2;
    simplex &s = t.h.solver();
    EXPECT_EQ(s.prepare(), 0);
    EXPECT_TRUE(holds(t.h.n.report(), "After 11 iterations:\n r[  0]"));
    EXPECT_FALSE(holds(t.h.n.report(), "r[  2]"));
    EXPECT_EQ(L1(s, newpd)[2], 1.0e8);
}

// 1 - (1 + 1) / 2: far from the redundancies of 1/2.
TEST(Balance, CountsConditionsInTheMeanRedundancy)
{
    TwoHeights t({0.5, 0.5});
    EXPECT_EQ(t.h.solver(0, 1).prepare(), 0);
    EXPECT_TRUE(holds(t.h.n.report(), "After 11 iterations:\n r[  0]"));
}

// One weight x beside three of 1: the influence x / (x + 3) lies 0.049 or 0.051 above the mean
// one. A sweep brings the influences to (1 - h) / 3.
TEST(Balance, EndsWhenNoRedundancyIsMoreThanFiveHundredthsFromTheMean)
{
    for (int beyond : {0, 1}) {
        const double h = beyond ? 0.301 : 0.299;
        TwoHeights t({(1 - h) / (3 * h), 1.0, 1.0, 1.0});
        EXPECT_EQ(t.h.solver().prepare(), 0);
        EXPECT_TRUE(holds(t.h.n.report(), "After " + std::to_string(beyond) + " iterations:\n"));
    }
}

// The other five have influences of 1/5, near the mean of 1/6: only an influence that counts, and
// leaves a redundancy below 1, asks for more sweeps.
TEST(Balance, CountsAnInfluenceUpToTheSmallestAsNone)
{
    for (int counts : {0, 1}) {
        const double h = counts ? 1.03e-7 : 0.97e-7;
        TwoHeights t({(1 - h) / (5 * h), 1.0, 1.0, 1.0, 1.0, 1.0});
        simplex &s = t.h.solver();
        EXPECT_EQ(s.prepare(), 0);
        EXPECT_EQ(holds(t.h.n.report(), "After 0 iterations:\n"), counts == 0);
        EXPECT_EQ(L1(s, newpd)[0] == S(s, rhs)[0], counts == 0);
    }
}

// A free loop: the heights are not determined, and the sweeps go on with what stands.
TEST(Balance, GoesOnWithASingularMatrix)
{
    Hand h(1);
    h.add("A", 0, 0, 0);
    h.add("B", 0, 0, 1);
    for (int i = 0; i < 3; i++) h.observe(h.difh, 0, 1, 1.0, h.sdifh);
    h.n.messages.answer = 1;
    EXPECT_EQ(h.solver(0, 1).prepare(), 0);
    EXPECT_EQ(h.n.report().rfind("In ludcmp: null pivot\nfirst r[  0] = ", 0), 0u);
    EXPECT_TRUE(holds(h.n.report(), "After "));

    Hand unseen(1);
    unseen.add("C", 0, 0, 1);
    unseen.add("A", 0, 0, 0);
    unseen.add("B", 0, 0, 1);
    for (int i = 0; i < 4; i++) unseen.observe(unseen.difh, 1, 2, 1.0, unseen.sdifh);
    unseen.n.messages.answer = 1;
    EXPECT_EQ(unseen.solver(0, 1).prepare(), 0);
    const std::string text = unseen.n.report();
    EXPECT_EQ(text.rfind("In ludcmp: singular matrix\nfirst r[  0] = ", 0), 0u);
    EXPECT_EQ(undefined(text), 4); // the height of C has no number, and with it no redundancy has one
}

// A distance between two points at the same place has no row: all products have no number.
TEST(Balance, SpreadsARowWithoutNumbersToAllRedundancies)
{
    Hand h(2);
    const double places[][2] = {{0, 0}, {100, 0}, {0, 0}, {0, 100}, {100, 100}};
    for (const double(&p)[2] : places) h.add("P", p[0], p[1]);
    for (int i = 2; i < 5; i++) h.points[i].n0[0] = h.points[i].n0[1] = N_NONE;
    h.nunk1 = 4;
    for (const int to : {2, 3, 4}) {
        h.observe(h.dist, 0, to, 100.0, 0.01);
        h.observe(h.dist, 1, to, 100.0, 0.01);
    }
    h.n.messages.answer = 1;
    EXPECT_EQ(h.solver().prepare(), 0);
    EXPECT_EQ(undefined(h.n.report()), 6);
}

// Distances hold x, height differences hold z: the matrix has two blocks. The weights of one are
// infinite, and infinity times the zeros of its rows reaches the other.
TEST(Balance, SpreadsAnInfiniteWeightToAllRedundancies)
{
    Hand h(3);
    h.add("A", 0, 0, 0);
    h.add("P", 100, 0, 0);
    for (point &p : h.points) p.n0[0] = p.n0[1] = p.n0[2] = N_NONE;
    h.points[1].n0[0] = 0;
    h.points[1].n0[2] = 1;
    h.nunk1 = 2;
    for (int i = 0; i < 2; i++) {
        h.observe(h.dist, 0, 1, 100.0, 0.5);
        h.observe(h.difh, 0, 1, 0.0, 0.5);
    }
    h.n.messages.answer = 1;
    simplex &s = h.solver();
    S(s, sdifh) = HUGE_VAL;
    EXPECT_EQ(s.prepare(), 0);
    EXPECT_EQ(h.n.report().rfind("In ludcmp: singular matrix\nfirst r[  0] = ", 0), 0u);
    EXPECT_EQ(undefined(h.n.report()), 4);
}

// The same with a coefficient that is no number, of a distance between two points at one place.
TEST(Balance, SpreadsACoefficientWithoutNumberToTheWholeMatrix)
{
    Hand h(2);
    const double x[] = {0, 100, 200, 100};
    for (const double at : x) h.add("P", at, 0);
    for (point &p : h.points) p.n0[0] = p.n0[1] = N_NONE;
    h.points[1].n0[0] = 0;
    h.points[2].n0[0] = 1;
    h.nunk1 = 2;
    h.observe(h.dist, 0, 1, 100.0, 0.5);
    h.observe(h.dist, 0, 2, 200.0, 0.5);
    h.observe(h.dist, 1, 2, 100.0, 0.5);
    h.observe(h.dist, 3, 1, 0.0, 0.5);
    h.n.messages.answer = 1;
    EXPECT_EQ(h.solver().prepare(), 0);
    EXPECT_EQ(h.n.report().rfind("In ludcmp: singular matrix\nfirst r[  0] = ", 0), 0u);
    EXPECT_EQ(undefined(h.n.report()), 4);
}

// As many observations as unknowns: a division by zero, but only of doubles.
TEST(Balance, StandsANetworkWithoutRedundancy)
{
    for (const double sigma : {0.5, 0.3, 0.7, 0.11, 0.13}) { // with rounding on either side of 1
        TwoHeights t({sigma});
        t.h.add("C", 0, 0, 2).n0[2] = 1;
        t.h.nunk1 = 2;
        t.h.observe(t.h.difh, 1, 2, 2.0, 0.9);
        simplex &s = t.h.solver();
        EXPECT_EQ(s.prepare(), 0);
        EXPECT_TRUE(holds(t.h.n.report(), "After 0 iterations:\n r[  0] =   0.000000   newpd = "));
        EXPECT_EQ(L1(s, newpd)[0], t.h.sdifh / (sigma * t.h.sdifh));
    }
    TwoHeights none({});
    EXPECT_EQ(none.h.solver().prepare(), 0);
    EXPECT_EQ(none.h.n.report(), "In ludcmp: singular matrix\nAfter 0 iterations:\n");
}

TEST(Balance, ChangesTheCostsAndNotTheRows)
{
    std::vector<double> rows[2], costs[2];
    for (const int answer : {0, 1}) {
        RandomNetwork network(2, 3, 4, 3, 5, 1.0, 0.01);
        network.net.messages.answer = 0;
        vorn run(network.net.ready());
        ASSERT_EQ(run.vornstart(), 0);
        network.net.messages.answer = answer;
        const solverinput &in = state(run);
        simplex s(in);
        ASSERT_EQ(s.prepare(), 0);
        S(s, normal)();
        for (int i = 0; i < L1(s, nobs); i++) {
            rows[answer].insert(rows[answer].end(), L1(s, a)[i], L1(s, a)[i] + S(s, nunk));
            rows[answer].push_back(S(s, delta)[i]);
            costs[answer].push_back(L1(s, newpd)[i]);
            EXPECT_EQ(S(s, rhs)[i], costs[0][(size_t)i]);
        }
    }
    EXPECT_EQ(rows[0], rows[1]);
    EXPECT_NE(costs[0], costs[1]);
}

namespace {

// The row of each observation as the adjustment builds it, divided by its weight.
class Design final : public Passive {
public:
    Design(const solverinput &in, std::vector<double> weights) : Passive(in), w(std::move(weights)) {}
    void addrow(int n1, int n2, double) override
    {
        std::vector<long double> row((size_t)nunk, 0.0L);
        const double weight = w[rows.size()];
        for (int k = 1; k <= n1; k++) row[(size_t)ia1[k]] = a1[k] / weight;
        for (int k = 1; k <= n2; k++) row[(size_t)(nunk1 + ia2[k])] = a2[k] / weight;
        rows.push_back(row);
    }
    // 1 - p a inverse(A'PA) a' of every row
    std::vector<double> redundancies()
    {
        const int n = nunk;
        std::vector<long double> normal_matrix((size_t)n * n, 0.0L);
        for (size_t i = 0; i < rows.size(); i++)
            for (int j = 0; j < n; j++)
                for (int k = 0; k < n; k++)
                    normal_matrix[(size_t)(j * n + k)] += w[i] * rows[i][(size_t)j] * rows[i][(size_t)k];
        const std::vector<long double> q = dense_inverse(normal_matrix, n);
        std::vector<double> all;
        for (size_t i = 0; i < rows.size(); i++) {
            long double h = 0.0L;
            for (int j = 0; j < n; j++)
                for (int k = 0; k < n; k++)
                    h += w[i] * rows[i][(size_t)j] * q[(size_t)(j * n + k)] * rows[i][(size_t)k];
            all.push_back((double)(1.0L - h));
        }
        return all;
    }
    std::vector<double> w;
    std::vector<std::vector<long double>> rows;
};

} // namespace

TEST(Balance, StartsFromTheRedundanciesOfTheAdjustment)
{
    for (const int dim : {1, 2, 3}) {
        RandomNetwork network(dim, dim == 1 ? 0 : 3, 5, 3, 4, 1.0, 0.01);
        vorn run(network.net.ready());
        ASSERT_EQ(run.vornstart(), 0);
        const size_t start = network.net.report().size();
        network.net.messages.answer = 1;
        const solverinput &in = state(run);
        simplex s(in);
        ASSERT_EQ(s.prepare(), 0);
        Design design(in, std::vector<double>(S(s, rhs), S(s, rhs) + L1(s, nplan)));
        S(design, normal)();
        const std::vector<double> r = design.redundancies();
        std::string wanted;
        char line[80];
        for (int i = 0; i < L1(s, nplan); i++) {
            snprintf(line, sizeof line, "first r[%3d] = %10.6lf  original pd = %15.6lf\n", i, r[(size_t)i],
                     S(s, rhs)[i]);
            wanted += line;
        }
        EXPECT_EQ(network.net.report().substr(start, wanted.size()), wanted) << dim;
    }
}

// ---- failures ----

namespace {

// A station and a target straight above it, with one direction and one vertical angle.
Hand &plumb(Hand &h)
{
    h.add("S", 0, 0, 0);
    h.add("T", 100, 0, 10);
    h.add("U", 0, 0, 10);
    h.n.messages.answer = 1;
    return h;
}

} // namespace

TEST(Balance, EndsAtASightWithoutDirection)
{
    Hand h(3);
    plumb(h);
    h.observe(h.dir1, 0, 1, 0.0, 0.001);
    h.observe(h.dir1, 0, 2, 0.0, 0.001);
    EXPECT_EQ(h.solver(1).iterate(), -2);
    EXPECT_TRUE(holds(h.n.report(), "\nProblem with horizontal direction 1\n\nProgram stops in prepare\n"));

    Hand v(3);
    plumb(v);
    v.observe(v.dir2, 0, 2, 0.0, 0.001);
    EXPECT_EQ(v.solver(1).iterate(), -2);
    EXPECT_TRUE(holds(v.n.report(), "\nProblem with vertical direction 0\n\nProgram stops in prepare\n"));
}

TEST(Balance, FailsWithoutMemory)
{
    const char *const words[] = {"pb with adesign\n",
                                 "pb with adesign when i=0\n",
                                 "pb with anorm..\n",
                                 "pb with anorm..\n",
                                 "pb with anorm..\n",
                                 "pb with anorm..\n",
                                 "pb with anorm..\n",
                                 "pb with anorm or ainv when i=0\n",
                                 "pb with anorm or ainv when i=0\n"};
    for (int fail = 0; fail < 9; fail++) {
        TwoHeights t({0.5, 0.5});
        simplex &s = t.h.solver();
        fail_allocation(9 + fail); // eight arrays stand before
        EXPECT_EQ(s.prepare(), -1) << fail;
        fail_allocation(0);
        EXPECT_EQ(t.h.n.report(), words[fail]);
        s.finish();
    }
    TwoHeights t({0.5, 0.5});
    simplex &s = t.h.solver();
    fail_allocation(18);
    EXPECT_EQ(s.prepare(), 0); // the decomposition tells it, the balancing goes on
    fail_allocation(0);
    EXPECT_EQ(t.h.n.report().rfind("In ludcmp: pb with vv\nfirst r[  0] = ", 0), 0u);
}
