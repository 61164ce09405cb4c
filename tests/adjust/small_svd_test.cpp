#include "adjust/small_svd.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace vornadjust;

namespace {

Dense matrix(int m, int n, std::initializer_list<double> by_rows)
{
    Dense a(m, n);
    auto x = by_rows.begin();
    for (int i = 0; i < m; i++)
        for (int j = 0; j < n; j++) a(i, j) = *x++;
    return a;
}

// Largest entry of U diag(s) V' - A.
double misfit(const SmallSvd &d, const Dense &a)
{
    double most = 0;
    for (int i = 0; i < a.rows; i++)
        for (int j = 0; j < a.cols; j++) {
            double sum = 0;
            for (int k = 0; k < a.cols; k++) sum += d.u(i, k) * d.s[k] * d.v(j, k);
            most = std::max(most, std::fabs(sum - a(i, j)));
        }
    return most;
}

// Largest entry of Q'Q - 1 over the first n columns.
double not_orthonormal(const Dense &q, int n)
{
    double most = 0;
    for (int i = 0; i < n; i++)
        for (int j = 0; j < n; j++) {
            double sum = i == j ? -1.0 : 0.0;
            for (int k = 0; k < q.rows; k++) sum += q(k, i) * q(k, j);
            most = std::max(most, std::fabs(sum));
        }
    return most;
}

Dense random_matrix(int m, int n, unsigned seed)
{
    std::mt19937 generator(seed);
    std::normal_distribution<double> normal;
    Dense a(m, n);
    for (double &x : a.a) x = normal(generator);
    return a;
}

Dense triangle_of(const Dense &a)
{
    Triangle t(a.cols);
    std::vector<double> row(a.cols);
    for (int i = 0; i < a.rows; i++) {
        for (int j = 0; j < a.cols; j++) row[j] = a(i, j);
        t.add(row.data());
    }
    return t.matrix();
}

// Läuchli's matrix: a row of ones above e times the unit matrix. Its singular values are
// sqrt(n + e^2) and n - 1 times e; A'A in double precision loses every e below 1e-8.
Dense lauchli(int n, double e)
{
    Dense a(n + 1, n);
    for (int j = 0; j < n; j++) a(0, j) = 1, a(j + 1, j) = e;
    return a;
}

} // namespace

TEST(SmallSvd, GivesTheClosedFormOfATwoByTwoMatrix)
{
    // A'A = [25 20; 20 25] with the eigenvalues 45 and 5.
    const SmallSvd d = small_svd(matrix(2, 2, {3, 0, 4, 5}));
    EXPECT_NEAR(d.s[0], std::sqrt(45.0), 1e-14);
    EXPECT_NEAR(d.s[1], std::sqrt(5.0), 1e-14);
}

TEST(SmallSvd, KeepsSingularValuesThatSquaringWouldLose)
{
    for (double e : {1e-6, 1e-9, 1e-12}) {
        const SmallSvd d = small_svd(lauchli(7, e));
        EXPECT_NEAR(d.s[0], std::sqrt(7 + e * e), 1e-14);
        for (int j = 1; j < 7; j++) EXPECT_NEAR(d.s[j], e, 2e-15) << "e " << e;
    }
}

TEST(SmallSvd, GivesThePublishedLeastSingularValuesOfHilbertMatrices)
{
    // The conditions of orders 5 and 8 are 4.766e5 and 1.526e10 (Higham, Accuracy and Stability
    // of Numerical Algorithms, 2nd edition, table 28.1).
    for (auto [n, condition] : {std::pair<int, double>{5, 4.766e5}, {8, 1.526e10}}) {
        Dense a(n, n);
        for (int i = 0; i < n; i++)
            for (int j = 0; j < n; j++) a(i, j) = 1.0 / (i + j + 1);
        const SmallSvd d = small_svd(a);
        EXPECT_NEAR(d.s[0] / d.s[n - 1] / condition, 1, 2e-4) << n;
    }
}

TEST(SmallSvd, PutsATallMatrixTogetherAgain)
{
    const Dense a = random_matrix(300, 7, 1);
    const SmallSvd d = small_svd(a);
    EXPECT_LT(misfit(d, a), 1e-13);
    EXPECT_LT(not_orthonormal(d.u, 7), 1e-14);
    EXPECT_LT(not_orthonormal(d.v, 7), 1e-14);
    EXPECT_TRUE(std::is_sorted(d.s.rbegin(), d.s.rend()));
}

TEST(SmallSvd, FindsTheNullSpaceOfDependentColumns)
{
    Dense a = random_matrix(50, 5, 2);
    for (int i = 0; i < 50; i++) a(i, 4) = 2 * a(i, 1) - a(i, 3);
    const SmallSvd d = small_svd(a);
    EXPECT_GT(d.s[3], 1);
    EXPECT_LT(d.s[4], 1e-14);
    const double expected[5] = {0, 2, 0, -1, -1};
    for (int j = 0; j < 5; j++) EXPECT_NEAR(std::fabs(d.v(j, 4)), std::fabs(expected[j]) / std::sqrt(6.0), 1e-14);
}

TEST(SmallSvd, TakesEntriesWhoseSquaresOverflowOrVanish)
{
    for (double size : {1e-200, 1e200}) {
        Dense a = matrix(2, 2, {3, 0, 4, 5});
        for (double &x : a.a) x *= size;
        EXPECT_NEAR(small_svd(a).s[1] / size, std::sqrt(5.0), 1e-13);
    }
}

TEST(SmallSvd, TakesEmptyZeroAndWideMatrices)
{
    EXPECT_TRUE(small_svd(Dense(0, 0)).s.empty());
    EXPECT_EQ(small_svd(Dense(0, 2)).s, (std::vector<double>{0, 0}));
    EXPECT_EQ(small_svd(Dense(3, 1)).s, std::vector<double>{0});
    const SmallSvd wide = small_svd(matrix(1, 3, {2, 1, 2}));
    EXPECT_NEAR(wide.s[0], 3, 1e-15);
    EXPECT_LT(wide.s[1], 1e-15);
}

TEST(SmallSvd, CountsTheValuesThatReachAThreshold)
{
    EXPECT_EQ(count_from({2, 1, 0.5}, 1), 2);
    EXPECT_EQ(count_from({}, 1), 0);
}

TEST(Triangle, HasTheSingularValuesOfAllItsRows)
{
    const Dense a = random_matrix(200, 6, 3);
    const SmallSvd all = small_svd(a), reduced = small_svd(triangle_of(a));
    for (int j = 0; j < 6; j++) EXPECT_NEAR(reduced.s[j], all.s[j], 1e-13);
}

TEST(Triangle, KeepsSmallSingularValues)
{
    const SmallSvd d = small_svd(triangle_of(lauchli(7, 1e-11)));
    for (int j = 1; j < 7; j++) EXPECT_NEAR(d.s[j], 1e-11, 2e-15);
}

TEST(Triangle, IsZeroBelowTheDiagonal)
{
    const Dense r = triangle_of(random_matrix(20, 4, 4));
    for (int j = 0; j < 4; j++)
        for (int i = j + 1; i < 4; i++) EXPECT_EQ(r(i, j), 0);
}
