#include "numerics/ludcmp.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/faults.h"
#include "support/network.h"

using namespace vornengine;

namespace {

class Ludcmp : public ::testing::Test {
protected:
    void TearDown() override { fail_allocation(0); }

    int run(std::vector<std::vector<double>> a)
    {
        matrix = std::move(a);
        rows.clear();
        for (std::vector<double> &row : matrix) rows.push_back(row.data());
        indx.assign(rows.size(), -1);
        return ludcmp(rows.data(), (int)rows.size(), indx.data(), &d, n.p.out);
    }

    std::vector<double> solve(std::vector<double> b)
    {
        lubksb(rows.data(), (int)rows.size(), indx.data(), b.data());
        return b;
    }

    Network n = Network(2);
    std::vector<std::vector<double>> matrix;
    std::vector<double *> rows;
    std::vector<int> indx;
    double d = 0;
};

// The wanted values are small integers: a few roundings.
const double rounding = 1e-13;

TEST_F(Ludcmp, SolvesASystemWithKnownSolution)
{
    ASSERT_EQ(run({{2, 1, -1}, {-3, -1, 2}, {-2, 1, 2}}), 0);
    const std::vector<double> x = solve({8, -11, -3});
    EXPECT_NEAR(x[0], 2, rounding);
    EXPECT_NEAR(x[1], 3, rounding);
    EXPECT_NEAR(x[2], -1, rounding);
    EXPECT_EQ(n.report(), "");
}

TEST_F(Ludcmp, SolvesForSeveralRightHandSidesWithLeadingZeros)
{
    ASSERT_EQ(run({{0, 2, 0}, {1, 0, 0}, {0, 0, 4}}), 0);
    EXPECT_EQ(solve({0, 0, 8}), (std::vector<double>{0, 0, 2}));
    EXPECT_EQ(solve({6, 5, 0}), (std::vector<double>{5, 3, 0}));
    EXPECT_EQ(solve({0, 0, 0}), (std::vector<double>{0, 0, 0}));
}

TEST_F(Ludcmp, GivesTheSignOfTheInterchanges)
{
    ASSERT_EQ(run({{1, 0}, {0, 1}}), 0);
    EXPECT_EQ(d, 1.0);
    ASSERT_EQ(run({{0, 1}, {1, 0}}), 0);
    EXPECT_EQ(d, -1.0);
    ASSERT_EQ(run({{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}), 0);
    EXPECT_EQ(d, 1.0);
}

TEST_F(Ludcmp, ScalesTheRowsBeforeItChoosesThePivot)
{
    // Scaled by its largest element the first row has 0.001 in the first column.
    ASSERT_EQ(run({{10, 10000}, {1, 1}}), 0);
    EXPECT_EQ(indx, (std::vector<int>{1, 1}));
}

TEST_F(Ludcmp, TakesTheLaterRowOfEqualPivots)
{
    ASSERT_EQ(run({{1, 1}, {1, -1}}), 0);
    EXPECT_EQ(indx[0], 1);
    EXPECT_EQ(d, -1.0);
}

TEST_F(Ludcmp, SolvesAnOrderOfOne)
{
    ASSERT_EQ(run({{4}}), 0);
    EXPECT_EQ(solve({2}), (std::vector<double>{0.5}));
}

TEST_F(Ludcmp, RefusesARowOfZeros)
{
    EXPECT_EQ(run({{1, 2}, {0, 0}}), -2);
    EXPECT_EQ(n.report(), "In ludcmp: singular matrix\n");
}

TEST_F(Ludcmp, RefusesAZeroPivotAlsoInTheLastColumn)
{
    EXPECT_EQ(run({{1, 2}, {2, 4}}), -3);
    EXPECT_EQ(n.report(), "In ludcmp: null pivot\n");
    EXPECT_EQ(run({{0, 1}, {0, 2}}), -3);
}

TEST_F(Ludcmp, SaysThatThereIsNoMemory)
{
    fail_allocation(1);
    EXPECT_EQ(run({{1}}), -1);
    EXPECT_EQ(n.report(), "In ludcmp: pb with vv\n");
}

} // namespace
