#include <cmath>
#include <limits>
#include <numeric>

#include <gtest/gtest.h>

#include "adjust/factor.h"
#include "adjust/order.h"
#include "patterns.h"
#include "support/dense.h"

using namespace vornadjust;

namespace {

struct Solved {
    Symbolic symbolic;
    Factor factor;
    bool stands;
};

Solved factored(const SymmetricMatrix &a, const std::vector<int> &order, const FactorOptions &options = {})
{
    Solved s{analyse(a, order), {}, false};
    s.stands = factorize(a, s.symbolic, s.factor, options);
    return s;
}

Solved factored(const SymmetricMatrix &a) { return factored(a, fill_reducing_order(a).unknown); }

std::vector<double> dense_solution(const SymmetricMatrix &a, const std::vector<double> &b)
{
    const std::size_t n = (std::size_t)a.n;
    const std::vector<long double> inverse = dense_inverse(dense_of(a), a.n);
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; i++)
        x[i] = (double)std::inner_product(b.begin(), b.end(), inverse.begin() + (std::ptrdiff_t)(i * n), 0.0L);
    return x;
}

double largest(const std::vector<double> &v)
{
    double most = 0.0;
    for (const double x : v) most = std::max(most, std::fabs(x));
    return most;
}

void expect_near(const std::vector<double> &found, const std::vector<double> &wanted, double tolerance,
                 const Shape &shape)
{
    ASSERT_EQ(found.size(), wanted.size());
    for (std::size_t i = 0; i < found.size(); i++)
        EXPECT_NEAR(found[i], wanted[i], tolerance * largest(wanted))
            << shape.name << " " << shape.n << " unknown " << i;
}

// A chain of height differences: singular, since all heights together are free.
SymmetricMatrix free_chain(int n)
{
    SymmetricMatrix a;
    a.n = n;
    for (int j = 0; j < n; j++) {
        a.row.push_back(j);
        a.value.push_back(j == 0 || j == n - 1 ? 1.0 : 2.0);
        if (j + 1 < n) {
            a.row.push_back(j + 1);
            a.value.push_back(-1.0);
        }
        a.start.push_back((std::int64_t)a.row.size());
    }
    return a;
}

std::vector<int> numbers(int n)
{
    std::vector<int> order((std::size_t)n);
    std::iota(order.begin(), order.end(), 0);
    return order;
}

} // namespace

TEST(Factor, SolvesAsADenseSolutionForEveryShape)
{
    for (const Shape &shape : shapes()) {
        const SymmetricMatrix a = matrix_of(shape, 1);
        const Solved s = factored(a);
        ASSERT_TRUE(s.stands) << shape.name << " " << shape.n;
        const std::vector<double> b = random_vector(a.n, 2);
        std::vector<double> x = b;
        solve(s.symbolic, s.factor, x.data());
        expect_near(x, dense_solution(a, b), 1e-12, shape);
    }
}

TEST(Factor, SolvesForAnyOrder)
{
    const Shape shape = grid(8, 7, 2, 1);
    const SymmetricMatrix a = matrix_of(shape, 1);
    const std::vector<double> b = random_vector(a.n, 2), wanted = dense_solution(a, b);
    std::vector<int> order = numbers(a.n);
    std::mt19937 random(5);
    for (int trial = 0; trial < 20; trial++) {
        std::shuffle(order.begin(), order.end(), random);
        const Solved s = factored(a, order);
        std::vector<double> x = b;
        solve(s.symbolic, s.factor, x.data());
        expect_near(x, wanted, 1e-12, shape);
    }
}

TEST(Factor, MultipliedBackGivesTheMatrix)
{
    const Shape shape = grid(6, 9, 3, 1);
    const SymmetricMatrix a = matrix_of(shape, 1);
    const Solved s = factored(a);
    const std::size_t n = (std::size_t)a.n;
    std::vector<double> l(n * n, 0.0);
    for (int i = 0; i < s.symbolic.nsuper; i++)
        for (int j = 0; j < s.symbolic.width(i); j++)
            for (int k = j + 1; k < s.symbolic.height(i); k++) {
                const int w = s.symbolic.width(i), first = s.symbolic.first[i];
                const int row = k < w ? first + k : s.symbolic.row[s.symbolic.rowstart[i] + k - w];
                l[row * n + first + j] =
                    s.factor.value[s.symbolic.valuestart[i] + (std::int64_t)j * s.symbolic.height(i) + k];
            }
    for (std::size_t i = 0; i < n; i++) l[i * n + i] = 1.0;
    const std::vector<long double> wanted = dense_of(a);
    for (std::size_t i = 0; i < n; i++)
        for (std::size_t j = 0; j < n; j++) {
            double sum = 0.0;
            for (std::size_t k = 0; k < n; k++) sum += l[i * n + k] / s.factor.reciprocal[k] * l[j * n + k];
            EXPECT_NEAR(sum, (double)wanted[s.symbolic.unknown[i] * n + s.symbolic.unknown[j]], 1e-13);
        }
}

TEST(Factor, SolvesSeveralRightHandSidesAsEachAlone)
{
    const SymmetricMatrix a = matrix_of(grid(7, 7, 3, 1), 1);
    const Solved s = factored(a);
    for (const int m : {1, 2, 7, 8, 9, 21}) {
        const std::vector<double> b = random_vector(m * a.n, 3);
        std::vector<double> together = b;
        solve(s.symbolic, s.factor, m, together.data());
        for (int c = 0; c < m; c++) {
            std::vector<double> x(b.begin() + c * a.n, b.begin() + (c + 1) * a.n);
            solve(s.symbolic, s.factor, x.data());
            for (int i = 0; i < a.n; i++) EXPECT_EQ(together[c * a.n + i], x[i]);
        }
    }
}

TEST(Factor, HasTheSameBitsForAnyNumberOfThreads)
{
    for (const Shape &shape : {grid(40, 40, 3, 1), band(3000, 60), full(700)}) {
        const SymmetricMatrix a = matrix_of(shape, 1);
        const std::vector<int> order = fill_reducing_order(a).unknown;
        FactorOptions options;
        const Solved one = factored(a, order, options);
        for (const int threads : {2, 3, 4}) {
            options.threads = threads;
            const Solved other = factored(a, order, options);
            EXPECT_EQ(one.factor.value, other.factor.value) << shape.name << " " << threads;
            EXPECT_EQ(one.factor.reciprocal, other.factor.reciprocal) << shape.name << " " << threads;
        }
    }
}

TEST(Factor, SolvesLargeMatricesWithSmallResiduals)
{
    for (const Shape &shape : {grid(60, 50, 3, 1), band(4000, 30), full(900), arrow(3000, 40, true)}) {
        const SymmetricMatrix a = matrix_of(shape, 1);
        const Solved s = factored(a);
        ASSERT_TRUE(s.stands);
        const std::vector<double> wanted = random_vector(a.n, 2);
        std::vector<double> b((std::size_t)a.n);
        multiply(a, wanted.data(), b.data());
        solve(s.symbolic, s.factor, b.data());
        expect_near(b, wanted, 1e-10, shape);
    }
}

TEST(Factor, CanBeMadeAgainInTheSameMemory)
{
    const Shape shape = grid(8, 8, 3, 1);
    const SymmetricMatrix a = matrix_of(shape, 1), other = matrix_of(shape, 9);
    Solved s = factored(a);
    ASSERT_TRUE(factorize(other, s.symbolic, s.factor));
    const Solved fresh = factored(other);
    EXPECT_EQ(s.factor.value, fresh.factor.value);
    EXPECT_EQ(s.factor.pivot, fresh.factor.pivot);
}

// ---- pivots ----

// The pivot of the unknown that is eliminated last is 1 / Q(i,i), whatever the order of the others.
TEST(Pivot, OfTheLastUnknownIsItsWeightWithAllOthersFree)
{
    const SymmetricMatrix a = matrix_of(grid(5, 5, 2, 1), 1);
    const std::vector<long double> inverse = dense_inverse(dense_of(a), a.n);
    std::vector<int> order = numbers(a.n);
    std::rotate(order.begin(), order.begin() + 13, order.end()); // 12 is the last
    const Solved s = factored(a, order);
    const double wanted = (double)(1.0L / inverse[12 * a.n + 12] / (long double)a.value[a.start[12]]);
    // places follow a postorder: in a connected network the last of the order stays the last
    ASSERT_EQ(s.symbolic.unknown.back(), 12);
    EXPECT_NEAR(s.factor.pivot[12], wanted, 1e-12 * wanted);
}

TEST(Pivot, IsOneForAnUnknownByItself)
{
    const Solved s = factored(matrix_of(loose(5), 1));
    for (const double p : s.factor.pivot) EXPECT_EQ(p, 1.0);
}

TEST(Pivot, FailsForTheLastUnknownOfAFreeChain)
{
    for (const int n : {1, 2, 3, 10, 100, 1000}) {
        SymmetricMatrix a = free_chain(n);
        if (n == 1) a.value[0] = 0.0;
        const Solved s = factored(a, numbers(n));
        EXPECT_FALSE(s.stands);
        ASSERT_EQ(s.factor.failed.size(), 1u) << n;
        EXPECT_EQ(s.factor.failed[0].unknown, s.symbolic.unknown.back());
        EXPECT_LT(std::fabs(s.factor.failed[0].pivot), 1e-14);
    }
}

TEST(Pivot, FailsOnceForEachLoosePart)
{
    const SymmetricMatrix chain = free_chain(10);
    SymmetricMatrix a;
    for (int part = 0; part < 4; part++) {
        for (int j = 0; j < chain.n; j++) a.start.push_back(chain.start[j + 1] + part * chain.start[chain.n]);
        for (const int r : chain.row) a.row.push_back(r + part * chain.n);
        a.value.insert(a.value.end(), chain.value.begin(), chain.value.end());
        a.n += chain.n;
    }
    const Solved s = factored(a);
    ASSERT_EQ(s.factor.failed.size(), 4u);
    std::vector<int> parts;
    for (const FailedPivot &f : s.factor.failed) parts.push_back(f.unknown / chain.n);
    std::sort(parts.begin(), parts.end());
    EXPECT_EQ(parts, std::vector<int>({0, 1, 2, 3}));
}

// A failed unknown is held: the solution is that of the matrix without it.
TEST(Pivot, ThatFailsHoldsItsUnknownAtZero)
{
    for (const int n : {5, 40, 400}) {
        const SymmetricMatrix a = free_chain(n);
        const Solved s = factored(a);
        ASSERT_EQ(s.factor.failed.size(), 1u);
        const int held = s.factor.failed[0].unknown;
        std::vector<double> heights = random_vector(n, 4), b((std::size_t)n);
        multiply(a, heights.data(), b.data());
        solve(s.symbolic, s.factor, b.data());
        EXPECT_EQ(b[held], 0.0);
        for (int i = 0; i < n; i++) EXPECT_NEAR(b[i], heights[i] - heights[held], 1e-10);
    }
}

TEST(Pivot, OfAnIndefiniteMatrixFails)
{
    SymmetricMatrix a;
    a.n = 2;
    a.start = {0, 2, 3};
    a.row = {0, 1, 1};
    a.value = {1.0, 2.0, 1.0};
    const Solved s = factored(a, {0, 1});
    ASSERT_EQ(s.factor.failed.size(), 1u);
    EXPECT_EQ(s.factor.failed[0].unknown, 1);
    EXPECT_DOUBLE_EQ(s.factor.failed[0].pivot, -3.0);
}

TEST(Pivot, OfAZeroOrNegativeDiagonalFails)
{
    for (const double diagonal : {0.0, -2.0}) {
        SymmetricMatrix a = matrix_of(loose(3), 1);
        a.value[1] = diagonal;
        const Solved s = factored(a);
        ASSERT_EQ(s.factor.failed.size(), 1u);
        EXPECT_EQ(s.factor.failed[0].unknown, 1);
    }
}

TEST(Pivot, ThatIsNoNumberFails)
{
    SymmetricMatrix a = matrix_of(grid(4, 4, 1, 1), 1);
    a.value[a.start[5]] = std::numeric_limits<double>::quiet_NaN();
    const Solved s = factored(a);
    EXPECT_FALSE(s.stands);
    bool named = false;
    for (const FailedPivot &f : s.factor.failed) named = named || f.unknown == 5;
    EXPECT_TRUE(named);
}

TEST(Pivot, FailsBelowTheLimitThatTheCallerGives)
{
    SymmetricMatrix a; // pivot of the second unknown: 0.25 of its diagonal element
    a.n = 2;
    a.start = {0, 2, 3};
    a.row = {0, 1, 1};
    a.value = {3.0, 3.0, 4.0};
    FactorOptions options;
    options.least_pivot = 0.2499;
    EXPECT_TRUE(factored(a, {0, 1}, options).stands);
    options.least_pivot = 0.2501;
    const Solved s = factored(a, {0, 1}, options);
    ASSERT_EQ(s.factor.failed.size(), 1u);
    EXPECT_DOUBLE_EQ(s.factor.failed[0].pivot, 0.25);
}

// ---- progress, stop, memory ----

TEST(Factor, TellsHowFarItIsUpToTheEnd)
{
    std::vector<double> shares;
    FactorOptions options;
    options.watch.progress = [&](double share) { shares.push_back(share); };
    const SymmetricMatrix a = matrix_of(grid(30, 30, 2, 1), 1);
    factored(a, fill_reducing_order(a).unknown, options);
    ASSERT_GT(shares.size(), 10u);
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    EXPECT_GT(shares.front(), 0.0);
    EXPECT_EQ(shares.back(), 1.0);
}

TEST(Factor, StopsWhenItIsTold)
{
    for (const int threads : {1, 2}) {
        std::atomic<bool> stop(false);
        double last = 0.0;
        FactorOptions options;
        options.threads = threads;
        options.watch.stop = &stop;
        options.watch.progress = [&](double share) {
            last = share;
            stop = share > 0.3;
        };
        const SymmetricMatrix a = matrix_of(grid(30, 30, 2, 1), 1);
        const Solved s = factored(a, fill_reducing_order(a).unknown, options);
        EXPECT_FALSE(s.stands);
        EXPECT_TRUE(s.factor.stopped);
        EXPECT_LT(last, 0.9);
    }
}
