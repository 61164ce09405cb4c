#include "adjust/block_elimination.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using namespace vornadjust;

namespace {

using Rows = std::vector<std::vector<double>>;

// Random rows over the blocks; each sees a few of the blocks.
Rows random_rows(const std::vector<int> &sizes, int n, std::mt19937 &random)
{
    std::normal_distribution<double> normal;
    Rows rows(n);
    for (auto &row : rows)
        for (int size : sizes) {
            const bool seen = random() % 3 != 0;
            for (int i = 0; i < size; i++) row.push_back(seen ? normal(random) : 0.0);
        }
    return rows;
}

// Makes z a null vector of the rows by changing column k, in which z is not 0.
void close_on(Rows &rows, const std::vector<double> &z, std::size_t k)
{
    for (auto &row : rows) {
        double sum = 0;
        for (std::size_t j = 0; j < z.size(); j++) sum += j == k ? 0 : row[j] * z[j];
        row[k] = -sum / z[k];
    }
}

BlockElimination eliminated(const std::vector<int> &sizes, const Rows &rows)
{
    BlockElimination e(sizes);
    for (const auto &row : rows) {
        std::vector<std::pair<int, double>> entries;
        for (int j = static_cast<int>(row.size()) - 1; j >= 0; j--) entries.emplace_back(j, row[j]);
        e.add(entries);
    }
    for (std::size_t b = 0; b < sizes.size(); b++) e.eliminate(1e-10);
    return e;
}

int nullity(const BlockElimination &e, int blocks)
{
    int n = 0;
    for (int b = 0; b < blocks; b++) n += e.open(b);
    return n;
}

double largest_product(const Rows &rows, const std::vector<double> &z)
{
    double most = 0;
    for (const auto &row : rows) {
        double sum = 0;
        for (std::size_t j = 0; j < z.size(); j++) sum += row[j] * z[j];
        most = std::max(most, std::fabs(sum));
    }
    return most;
}

} // namespace

TEST(BlockElimination, FindsNothingOpenInFullRank)
{
    std::mt19937 random(1);
    const std::vector<int> sizes = {1, 3, 2, 0, 4};
    EXPECT_EQ(nullity(eliminated(sizes, random_rows(sizes, 40, random)), 5), 0);
}

TEST(BlockElimination, FindsNullVectorsThatWerePutIn)
{
    std::mt19937 random(2);
    const std::vector<int> sizes = {2, 1, 3, 2, 3};
    for (int n : {8, 30, 500}) {
        Rows rows = random_rows(sizes, n, random);
        std::vector<double> z(11, 0.0);
        for (int j : {0, 3, 5, 9}) z[j] = 1 + 0.1 * j;
        close_on(rows, z, 9);
        const BlockElimination e = eliminated(sizes, rows);
        EXPECT_EQ(nullity(e, 5), n == 8 ? 3 : 1) << n;
        for (int b = 0; b < 5; b++)
            for (int j = 0; j < e.open(b); j++) EXPECT_LT(largest_product(rows, e.null_vector(b, j)), 1e-12);
    }
}

TEST(BlockElimination, HasTheNullityOfTheDenseMatrix)
{
    std::mt19937 random(3);
    for (int run = 0; run < 100; run++) {
        std::vector<int> sizes;
        for (int b = 0; b < 6; b++) sizes.push_back(static_cast<int>(random() % 4));
        const int n = 1 + static_cast<int>(random() % 14);
        const Rows rows = random_rows(sizes, n, random);
        const int columns = static_cast<int>(rows[0].size());
        Dense dense(n, columns);
        for (int i = 0; i < n; i++)
            for (int j = 0; j < columns; j++) dense(i, j) = rows[i][j];
        const BlockElimination e = eliminated(sizes, rows);
        EXPECT_EQ(nullity(e, 6), columns - count_from(small_svd(dense).s, 1e-10)) << "run " << run;
        for (int b = 0; b < 6; b++)
            for (int j = 0; j < e.open(b); j++) EXPECT_LT(largest_product(rows, e.null_vector(b, j)), 1e-9);
    }
}

TEST(BlockElimination, KeepsSmallResistance)
{
    // One row of 1e-7 in the last column keeps it determined; of 1e-13 does not.
    for (double small : {1e-7, 1e-13}) {
        const Rows rows = {{1, 1, 1}, {0, 1, 2}, {1, 2, 3 + small}};
        EXPECT_EQ(nullity(eliminated({1, 1, 1}, rows), 3), small > 1e-10 ? 0 : 1);
    }
}

TEST(BlockElimination, CompletesByLeastSquares)
{
    // Rows y = 1, y = 2, y = 3 times the last column: the mean answers least.
    const BlockElimination e = eliminated({1, 1}, {{1, -1}, {1, -2}, {1, -3}});
    std::vector<double> z = {0, 1};
    e.complete(z, 1);
    EXPECT_NEAR(z[0], 2, 1e-14);
}

TEST(BlockElimination, TakesColumnsWithoutRows)
{
    BlockElimination e({2, 1});
    e.add({});
    e.add({{0, 0.0}});
    e.eliminate(1e-10);
    e.eliminate(1e-10);
    EXPECT_EQ(nullity(e, 2), 3);
}
