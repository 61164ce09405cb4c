#include <gtest/gtest.h>
#include <math.h>

#include <array>

#include "support/random_network.h"
#include "support/simplex_hand.h"

namespace {

// Complement, type, index.
std::array<int, 3> decoded(simplex &s, int id)
{
    std::array<int, 3> d;
    L1(s, decode)(id, &d[0], &d[1], &d[2]);
    return d;
}

typedef std::array<int, 3> Decoded;

struct Found {
    int res, id, col;
};

Found search1(simplex &s, int cols)
{
    Found f = {0, -9, -9};
    f.res = L1(s, search1)(L1(s, nobs), cols, &f.id, &f.col);
    return f;
}

Found search2(simplex &s, int cols, const std::vector<int> &iobsout)
{
    Found f = {0, -9, -9};
    f.res = L1(s, search2)(L1(s, nobs), cols, &f.id, &f.col, iobsout.data());
    return f;
}

void set(double *to, std::initializer_list<double> values) { std::copy(values.begin(), values.end(), to); }
void set(int *to, std::initializer_list<int> values) { std::copy(values.begin(), values.end(), to); }

// The report behind what preparing has written.
std::string traced(Hand &h, size_t start) { return h.n.report().substr(start); }

} // namespace

// 3 unknowns, 4 rows: 0-2, 3-5 unknowns, 6-9, 10-13 residuals, 14 and up artificial.
TEST(Decode, TellsTypeIndexAndComplementOfEveryIdentifier)
{
    Hand h(1);
    simplex &s = h.tableau(3, 4);
    EXPECT_EQ(decoded(s, 0), (Decoded{3, 1, 0}));
    EXPECT_EQ(decoded(s, 2), (Decoded{5, 1, 2}));
    EXPECT_EQ(decoded(s, 3), (Decoded{0, 2, 0}));
    EXPECT_EQ(decoded(s, 5), (Decoded{2, 2, 2}));
    EXPECT_EQ(decoded(s, 6), (Decoded{10, 3, 0}));
    EXPECT_EQ(decoded(s, 9), (Decoded{13, 3, 3}));
    EXPECT_EQ(decoded(s, 10), (Decoded{6, 4, 0}));
    EXPECT_EQ(decoded(s, 13), (Decoded{9, 4, 3}));
    EXPECT_EQ(decoded(s, 14), (Decoded{-1, 5, 0}));
    EXPECT_EQ(decoded(s, 20), (Decoded{-1, 5, 6}));
}

TEST(Decode, HasNoTypeForWhatIsNoIdentifier)
{
    Hand h(1);
    EXPECT_EQ(decoded(h.tableau(3, 4), -1), (Decoded{-1, 0, -1}));
}

// ---- search among the unknowns ----

TEST(SearchUnknown, TakesTheLargestCost)
{
    Hand h(1);
    simplex &s = h.tableau(3, 2);
    set(L1(s, cost), {1.0, 3.0, 2.0});
    const Found f = search1(s, 3);
    EXPECT_EQ(f.res, 1);
    EXPECT_EQ(f.id, 1);
    EXPECT_EQ(f.col, 1);
    EXPECT_EQ(L1(s, cost)[1], 3.0);
}

TEST(SearchUnknown, TurnsTheColumnOfALargestCostThatIsNegative)
{
    Hand h(1);
    simplex &s = h.tableau(3, 2);
    set(L1(s, cost), {1.0, -3.0, 2.0});
    set(L1(s, a)[0], {1.0, 2.0, 3.0});
    set(L1(s, a)[1], {4.0, -5.0, 6.0});
    const Found f = search1(s, 3);
    EXPECT_EQ(f.res, 2);
    EXPECT_EQ(f.id, 4);
    EXPECT_EQ(f.col, 1);
    EXPECT_EQ(L1(s, cost)[1], 3.0);
    EXPECT_EQ(L1(s, a)[0][1], -2.0);
    EXPECT_EQ(L1(s, a)[1][1], 5.0);
    EXPECT_EQ(L1(s, a)[0][0], 1.0);
    EXPECT_EQ(L1(s, inplus)[1], 1);
}

TEST(SearchUnknown, TakesTheFirstOfEqualCosts)
{
    Hand h(1);
    simplex &s = h.tableau(3, 2);
    set(L1(s, cost), {-3.0, 3.0, -3.0});
    const Found f = search1(s, 3);
    EXPECT_EQ(f.res, 2);
    EXPECT_EQ(f.col, 0);
}

TEST(SearchUnknown, PassesOverResidualsAndArtificialVariables)
{
    Hand h(1);
    simplex &s = h.tableau(3, 2);
    set(L1(s, inplus), {6, 8, 10});
    set(L1(s, cost), {5.0, 5.0, 5.0});
    EXPECT_EQ(search1(s, 3).res, -1);
}

TEST(SearchUnknown, KnowsTheNegativePartOfAnUnknown)
{
    Hand h(1);
    simplex &s = h.tableau(3, 2);
    set(L1(s, inplus), {3, 1, 2});
    set(L1(s, cost), {-5.0, 1.0, 1.0});
    const Found f = search1(s, 3);
    EXPECT_EQ(f.res, 2);
    EXPECT_EQ(f.id, 0);
}

TEST(SearchUnknown, FindsNothingWithoutCosts)
{
    Hand h(1);
    simplex &s = h.tableau(2, 2);
    EXPECT_EQ(search1(s, 2).res, -1);
    EXPECT_EQ(search1(s, 0).res, -1);
}

TEST(SearchUnknown, ClearsACostThatIsRoundingButStillTakesItWhenNothingElseImproves)
{
    Hand h(1);
    simplex &s = h.tableau(3, 2);
    S(s, idebug) = 1;
    const size_t start = h.n.report().size();
    set(L1(s, cost), {0.0, -0.9e-10, -1.0e-10});
    EXPECT_EQ(search1(s, 2).col, 1);
    EXPECT_EQ(L1(s, cost)[1], 0.9e-10);
    EXPECT_EQ(traced(h, start), "in search1: put cost[0] to 0.\nin search1: put cost[1] to 0.\n");
    set(L1(s, cost), {2.0, -0.9e-10, -1.0e-10});
    EXPECT_EQ(search1(s, 3).col, 0);
    EXPECT_EQ(L1(s, cost)[1], 0.0);
    EXPECT_EQ(L1(s, cost)[2], -1.0e-10);
}

// ---- search among the residuals: 2 unknowns, 3 rows: 4-6 and 7-9 ----

TEST(SearchResidual, TakesTheLargestCost)
{
    Hand h(1);
    simplex &s = h.tableau(2, 3);
    set(L1(s, inplus), {4, 8});
    set(L1(s, cost), {1.0, 1.5});
    const Found f = search2(s, 2, std::vector<int>(10, 0));
    EXPECT_EQ(f.res, 1);
    EXPECT_EQ(f.id, 8);
    EXPECT_EQ(f.col, 1);
}

TEST(SearchResidual, TurnsAResidualWhoseOtherPartGainsMoreThanTwiceItsWeight)
{
    Hand h(1);
    simplex &s = h.tableau(2, 3);
    set(L1(s, inplus), {4, 8});
    set(L1(s, newpd), {1.0, 0.25, 1.0});
    set(L1(s, cost), {-1.9, -1.0});
    set(L1(s, a)[2], {1.0, 2.0});
    const Found f = search2(s, 2, std::vector<int>(10, 0));
    EXPECT_EQ(f.res, 2);
    EXPECT_EQ(f.id, 5); // complement of 8, row 1: gain 1 - 2 * 0.25
    EXPECT_EQ(f.col, 1);
    EXPECT_EQ(L1(s, cost)[1], 0.5);
    EXPECT_EQ(L1(s, a)[2][1], -2.0);
    EXPECT_EQ(L1(s, a)[2][0], 1.0);
}

TEST(SearchResidual, PassesOverUnknownsAndArtificialVariables)
{
    Hand h(1);
    simplex &s = h.tableau(2, 3);
    set(L1(s, inplus), {0, 10});
    set(L1(s, cost), {5.0, 5.0});
    EXPECT_EQ(search2(s, 2, std::vector<int>(10, 0)).res, -1);
}

TEST(SearchResidual, TreatsAGainThatIsRoundingAsNone)
{
    Hand h(1);
    simplex &s = h.tableau(2, 3);
    S(s, idebug) = 1;
    const size_t start = h.n.report().size();
    set(L1(s, inplus), {4, 5});
    set(L1(s, newpd), {0.0, 0.0, 0.0});
    set(L1(s, cost), {-0.9e-10, 0.0});
    EXPECT_EQ(search2(s, 2, std::vector<int>(10, 0)).res, -1);
    EXPECT_EQ(traced(h, start), "in search2: put calt to 0. for j=0\n"); // not for a gain of exactly 0
}

TEST(SearchResidual, KeepsOutAResidualThatHasLeft)
{
    Hand h(1);
    simplex &s = h.tableau(2, 3);
    S(s, idebug) = 1;
    size_t start = h.n.report().size();
    std::vector<int> iobsout(10, 0);
    iobsout[4] = -1;
    set(L1(s, inplus), {4, 5});
    set(L1(s, cost), {2.0, 1.0});
    Found f = search2(s, 2, iobsout);
    EXPECT_EQ(f.res, 1);
    EXPECT_EQ(f.id, 5);
    EXPECT_EQ(traced(h, start), "Observation 4 already discarded in step2\n");
    S(s, idebug) = 0;
    start = h.n.report().size();
    EXPECT_EQ(search2(s, 2, iobsout).id, 5);
    EXPECT_EQ(traced(h, start), "");
}

// The line names the variable of the column, not its other part.
TEST(SearchResidual, KeepsOutTheOtherPartOfAResidualThatHasLeft)
{
    Hand h(1);
    simplex &s = h.tableau(2, 3);
    S(s, idebug) = 1;
    const size_t start = h.n.report().size();
    std::vector<int> iobsout(10, 0);
    iobsout[7] = -1; // complement of 4
    set(L1(s, inplus), {4, 5});
    set(L1(s, newpd), {1.0, 1.0, 1.0});
    set(L1(s, cost), {-5.0, -3.0});
    const Found f = search2(s, 2, iobsout);
    EXPECT_EQ(f.res, 2);
    EXPECT_EQ(f.id, 8);
    EXPECT_EQ(f.col, 1);
    EXPECT_EQ(L1(s, cost)[1], 1.0);
    EXPECT_EQ(traced(h, start), "Observation 4 already discarded in step2\n");
}

// ---- row ----

TEST(PivotRow, TakesTheSmallestRatioAndTheLaterOfEqualOnes)
{
    Hand h(1);
    simplex &s = h.tableau(1, 4);
    const double column[] = {2.0, 1.0, 4.0, 1.0};
    for (int i = 0; i < 4; i++) L1(s, a)[i][0] = column[i];
    set(S(s, delta), {4.0, 1.5, 6.0, 5.0}); // ratios 2, 1.5, 1.5, 5
    EXPECT_EQ(L1(s, pivotrow)(4, 1, 0), 2);
}

TEST(PivotRow, KeepsUnknownsInTheBasis)
{
    Hand h(1);
    simplex &s = h.tableau(2, 3);
    for (int i = 0; i < 3; i++) L1(s, a)[i][1] = 1.0;
    set(S(s, delta), {1.0, 2.0, 3.0});
    set(L1(s, ibase), {3, 4, 5}); // the negative part of an unknown in row 0
    EXPECT_EQ(L1(s, pivotrow)(3, 2, 1), 1);
}

TEST(PivotRow, NeedsAPositiveCoefficientAndARatioThatIsNoOverflow)
{
    Hand h(1);
    simplex &s = h.tableau(1, 3);
    L1(s, a)[0][0] = -1.0;
    L1(s, a)[2][0] = 1.0e-20;
    set(S(s, delta), {1.0, 1.0, 2.0});
    EXPECT_EQ(L1(s, pivotrow)(3, 1, 0), -2);
    S(s, delta)[2] = 1.0; // a ratio of exactly 1e20 passes
    EXPECT_EQ(L1(s, pivotrow)(3, 1, 0), 2);
    S(s, delta)[2] = NAN;
    EXPECT_EQ(L1(s, pivotrow)(3, 1, 0), -2);
}

// ---- exchange ----

//   2 1 | 4        0.5 0.5 | 2
//   1 3 | 9  to   -0.5 2.5 | 7,  costs 3 1 | -13  to  -1.5 -0.5 | -7
TEST(Exchange, PivotsTheTableauTheCostLineAndTheVariables)
{
    Hand h(1);
    simplex &s = h.tableau(2, 2);
    set(L1(s, a)[0], {2.0, 1.0});
    set(L1(s, a)[1], {1.0, 3.0});
    set(S(s, delta), {4.0, 9.0});
    set(L1(s, cost), {3.0, 1.0});
    L1(s, gcost) = -13.0;
    L1(s, exchange)(2, 2, 2, 0, 0); // the complement of unknown 0 enters
    EXPECT_EQ(L1(s, a)[0][0], 0.5);
    EXPECT_EQ(L1(s, a)[0][1], 0.5);
    EXPECT_EQ(L1(s, a)[1][0], -0.5);
    EXPECT_EQ(L1(s, a)[1][1], 2.5);
    EXPECT_EQ(S(s, delta)[0], 2.0);
    EXPECT_EQ(S(s, delta)[1], 7.0);
    EXPECT_EQ(L1(s, cost)[0], -1.5);
    EXPECT_EQ(L1(s, cost)[1], -0.5);
    EXPECT_EQ(L1(s, gcost), -7.0);
    EXPECT_EQ(L1(s, inplus)[0], 4);
    EXPECT_EQ(L1(s, inplus)[1], 1);
    EXPECT_EQ(L1(s, ibase)[0], 2);
    EXPECT_EQ(L1(s, ibase)[1], 5);
}

TEST(Exchange, TurnsARowWhoseRightHandSideBecomesNegative)
{
    Hand h(1);
    simplex &s = h.tableau(2, 3);
    S(s, idebug) = 1;
    const size_t start = h.n.report().size();
    set(L1(s, a)[0], {1.0, 0.0});
    set(L1(s, a)[1], {2.0, 5.0});
    set(L1(s, a)[2], {1.0, 1.0});
    set(S(s, delta), {3.0, 1.0, 3.0});
    L1(s, ibase)[1] = 1; // an unknown: its positive part goes, its negative part comes
    L1(s, exchange)(3, 2, 0, 0, 0);
    EXPECT_EQ(S(s, delta)[1], 5.0);
    EXPECT_EQ(L1(s, a)[1][0], 2.0);
    EXPECT_EQ(L1(s, a)[1][1], -5.0);
    EXPECT_EQ(L1(s, ibase)[1], 3);
    EXPECT_EQ(S(s, delta)[2], 0.0); // exactly 0 stays
    EXPECT_EQ(L1(s, ibase)[2], 6);
    EXPECT_EQ(traced(h, start), "in exchange turn around delta[1]=   -5.000000000\n");
}

TEST(Exchange, LeavesNoComplementForAnArtificialVariable)
{
    Hand h(1);
    simplex &s = h.tableau(1, 1, 1);
    L1(s, a)[0][0] = 1.0;
    L1(s, a)[1][0] = 1.0;
    set(S(s, delta), {2.0, 1.0});
    L1(s, ibase)[1] = 4;
    L1(s, exchange)(2, 1, 0, 0, 0);
    EXPECT_EQ(L1(s, ibase)[1], -1);
    EXPECT_EQ(S(s, delta)[1], 1.0);
    L1(s, a)[1][0] = 1.0;
    L1(s, exchange)(2, 1, 2, 0, 0); // turned once more, it stays without a name
    EXPECT_EQ(L1(s, ibase)[1], -1);
}

TEST(Exchange, SkipsRowsAndClearsEntriesThatAreRounding)
{
    Hand h(1);
    simplex &s = h.tableau(2, 4);
    S(s, idebug) = 1;
    const size_t start = h.n.report().size();
    set(L1(s, a)[0], {1.0, 2.0});
    set(L1(s, a)[1], {1.0e-10, 0.9e-10});
    set(L1(s, a)[2], {0.0, -1.0e-10});
    set(L1(s, a)[3], {0.0, -0.9e-10}); // no entry in the column: cleared as well
    set(S(s, delta), {1.0, 1.0, 1.0, 1.0});
    L1(s, exchange)(4, 2, 0, 0, 0);
    EXPECT_EQ(L1(s, a)[1][0], 1.0e-10); // neither pivoted nor below the limit
    EXPECT_EQ(L1(s, a)[1][1], 0.0);
    EXPECT_EQ(L1(s, a)[2][1], -1.0e-10);
    EXPECT_EQ(S(s, delta)[1], 1.0);
    EXPECT_EQ(traced(h, start), "in exchange do nothing at line 1  (col 0)\nin exchange put a[1][1] to 0.\n"
                                "in exchange put a[3][1] to 0.\n");
    EXPECT_EQ(L1(s, a)[3][1], 0.0);
}

TEST(Exchange, WorksOnEveryNumberOfColumns)
{
    for (int cols = 1; cols <= 9; cols++) {
        Hand h(1);
        simplex &s = h.tableau(cols, 2);
        for (int j = 0; j < cols; j++) {
            L1(s, a)[0][j] = j + 1.0;
            L1(s, a)[1][j] = 2.0 * j + 3.0;
        }
        L1(s, exchange)(2, cols, 0, 0, 0);
        for (int j = 1; j < cols; j++) {
            EXPECT_EQ(L1(s, a)[0][j], j + 1.0);
            EXPECT_EQ(L1(s, a)[1][j], 2.0 * j + 3.0 - 3.0 * (j + 1.0)) << cols << " " << j;
        }
    }
}

namespace {

// Column of a variable in the rows as they were stored: unknowns +-A, residual parts -+1 with the
// sign of the row, artificial variables 1.
std::vector<double> column_of(simplex &s, int id, const std::vector<std::vector<double>> &first,
                              const std::vector<double> &sign)
{
    const int unk = S(s, nunk), nobs = L1(s, nobs);
    std::vector<double> c(first.size(), 0.0);
    const Decoded d = decoded(s, id);
    for (size_t i = 0; i < first.size(); i++)
        if (d[1] <= 2) c[i] = (d[1] == 1 ? 1.0 : -1.0) * first[i][(size_t)d[2]];
    if (d[1] == 3) c[(size_t)d[2]] = -sign[(size_t)d[2]];
    if (d[1] == 4) c[(size_t)d[2]] = sign[(size_t)d[2]];
    if (d[1] == 5) c[(size_t)(id - 2 * unk - nobs)] = 1.0;
    return c;
}

// With B the columns of the basic variables: B a = columns of part N+, B delta = right-hand side.
void expect_same_programme(simplex &s, int rows, int cols, const std::vector<std::vector<double>> &first,
                           const std::vector<double> &b, const std::vector<double> &sign)
{
    std::vector<std::vector<double>> basis;
    for (int i = 0; i < rows; i++) basis.push_back(column_of(s, L1(s, ibase)[i], first, sign));
    for (int j = -1; j < cols; j++) {
        const std::vector<double> wanted = j < 0 ? b : column_of(s, L1(s, inplus)[j], first, sign);
        for (int r = 0; r < rows; r++) {
            double sum = 0.0;
            for (int i = 0; i < rows; i++)
                sum += basis[(size_t)i][(size_t)r] * (j < 0 ? S(s, delta)[i] : L1(s, a)[i][j]);
            ASSERT_NEAR(sum, wanted[(size_t)r], 1e-7)
                << r << " " << j; // 1e-10 of a hundred flushed entries, lengths 100
        }
    }
    for (int i = 0; i < rows; i++) ASSERT_GE(S(s, delta)[i], 0.0);
}

// Exchange by exchange through a network without a datum of its own.
void follow(int dim, unsigned seed)
{
    RandomNetwork network(dim, dim == 1 ? 0 : 3, 8, 3, seed, 1.0, 0.01);
    vorn run(network.net.ready());
    ASSERT_EQ(run.vornstart(), 0);
    const solverinput &in = state(run);
    simplex s(in);
    s.banner();
    ASSERT_EQ(s.prepare(), 0);
    s.zeronormal();
    S(s, normal)();
    const int rows = L1(s, nobs), cols = S(s, nunk);
    std::vector<std::vector<double>> first;
    std::vector<double> b, sign;
    for (int i = 0; i < rows; i++) {
        first.push_back(std::vector<double>(L1(s, a)[i], L1(s, a)[i] + cols));
        b.push_back(S(s, delta)[i]);
        sign.push_back(L1(s, ibase)[i] >= 2 * cols + rows ? 1.0 : -1.0);
    }
    L1(s, unknownstage)(rows, 0); // costs of no column: scales the weights
    L1(s, gcost) = 0.0;
    for (int j = 0; j < cols; j++)
        for (int i = 0; i < rows; i++) L1(s, cost)[j] += L1(s, a)[i][j] * L1(s, newpd)[i];
    std::vector<int> iobsout((size_t)(2 * (rows + cols)), 0);
    for (int step = 0; step < cols + 10; step++) {
        if (L1(s, exchanges)(rows, cols, 1, step < cols ? nullptr : iobsout.data()) != -3) continue;
        expect_same_programme(s, rows, cols, first, b, sign);
        if (testing::Test::HasFatalFailure()) return;
    }
}

} // namespace

TEST(Exchange, KeepsTheProgrammeThroughAWholeSearch)
{
    for (const int dim : {1, 2, 3})
        for (unsigned seed = 1; seed <= 3; seed++) follow(dim, seed);
}
