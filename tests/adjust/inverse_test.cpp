#include <cmath>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "adjust/inverse.h"
#include "adjust/order.h"
#include "patterns.h"
#include "support/dense.h"

using namespace vornadjust;

namespace {

struct Inverted {
    Symbolic symbolic;
    Factor factor;
    Inverse inverse;
};

Inverted inverted(const SymmetricMatrix &a, const std::vector<int> &order, int threads = 1)
{
    Inverted q{analyse(a, order), {}, {}};
    FactorOptions options;
    InverseOptions inverse_options;
    options.threads = inverse_options.threads = threads;
    factorize(a, q.symbolic, q.factor, options);
    EXPECT_TRUE(invert(q.symbolic, q.factor, q.inverse, inverse_options));
    return q;
}

Inverted inverted(const SymmetricMatrix &a) { return inverted(a, fill_reducing_order(a).unknown); }

// Compares all elements on the pattern, and counts them.
std::int64_t compare(const Inverted &q, const std::vector<long double> &wanted, double tolerance,
                     const std::string &what)
{
    const int n = q.symbolic.n;
    std::int64_t found = 0;
    for (int i = 0; i < n; i++)
        for (int j = 0; j <= i; j++) {
            const double *z = element(q.symbolic, q.inverse, i, j);
            EXPECT_EQ(z, element(q.symbolic, q.inverse, j, i));
            if (!z) continue;
            found++;
            const auto at = [&](int r, int c) { return (double)wanted[(std::size_t)r * n + c]; };
            EXPECT_NEAR(*z, at(i, j), tolerance * std::sqrt(at(i, i) * at(j, j))) << what << " " << i << " " << j;
        }
    return found;
}

} // namespace

TEST(Inverse, IsTheDenseOneOnThePatternForEveryShape)
{
    for (const Shape &shape : shapes()) {
        const SymmetricMatrix a = matrix_of(shape, 1);
        const Inverted q = inverted(a);
        const std::int64_t found = compare(q, dense_inverse(dense_of(a), a.n), 1e-12, shape.name);
        EXPECT_GE(found, q.symbolic.elements);
    }
}

TEST(Inverse, IsTheDenseOneForAnyOrder)
{
    const SymmetricMatrix a = matrix_of(grid(7, 6, 3, 1), 1);
    const std::vector<long double> wanted = dense_inverse(dense_of(a), a.n);
    std::vector<int> order = fill_reducing_order(a).unknown;
    std::mt19937 random(5);
    for (int trial = 0; trial < 10; trial++) {
        std::shuffle(order.begin(), order.end(), random);
        compare(inverted(a, order), wanted, 1e-12, "shuffled");
    }
}

TEST(Inverse, HasEveryElementThatTheMatrixHas)
{
    const SymmetricMatrix a = matrix_of(grid(10, 10, 2, 1), 1);
    const Inverted q = inverted(a);
    for (int j = 0; j < a.n; j++)
        for (std::int64_t p = a.start[j]; p < a.start[j + 1]; p++)
            EXPECT_NE(element(q.symbolic, q.inverse, a.row[p], j), nullptr);
}

TEST(Inverse, HasAPairThatIsNamedByAnElementOfZero)
{
    const auto distant = [](const Shape &shape) {
        const Inverted q = inverted(matrix_of(shape, 1), [&] {
            std::vector<int> order((std::size_t)shape.n);
            for (int i = 0; i < shape.n; i++) order[i] = i;
            return order;
        }());
        return element(q.symbolic, q.inverse, 0, 150) != nullptr;
    };
    Shape chain = band(200, 1);
    EXPECT_FALSE(distant(chain));
    chain.pairs.push_back({0, 150});
    EXPECT_TRUE(distant(chain));
}

TEST(Inverse, TimesTheMatrixIsTheUnitMatrixOnItsDiagonal)
{
    for (const Shape &shape : {grid(45, 40, 3, 1), band(3000, 50), full(800), arrow(2500, 60, true)}) {
        const SymmetricMatrix a = matrix_of(shape, 1);
        const Inverted q = inverted(a);
        std::vector<double> sum((std::size_t)a.n, 0.0), size((std::size_t)a.n, 0.0);
        for (int j = 0; j < a.n; j++)
            for (std::int64_t p = a.start[j]; p < a.start[j + 1]; p++) {
                const double term = a.value[p] * *element(q.symbolic, q.inverse, a.row[p], j);
                sum[j] += term, size[j] += std::fabs(term);
                if (a.row[p] != j) sum[a.row[p]] += term, size[a.row[p]] += std::fabs(term);
            }
        for (int j = 0; j < a.n; j++) EXPECT_NEAR(sum[j], 1.0, 1e-12 * size[j]) << shape.name << " " << j;
    }
}

TEST(Inverse, EqualsSolutionsForUnitVectors)
{
    const SymmetricMatrix a = matrix_of(grid(40, 40, 3, 1), 1);
    const Inverted q = inverted(a);
    for (int j = 0; j < a.n; j += 371) {
        std::vector<double> column((std::size_t)a.n, 0.0);
        column[j] = 1.0;
        solve(q.symbolic, q.factor, column.data());
        for (int i = 0; i < a.n; i++) {
            const double *z = element(q.symbolic, q.inverse, i, j);
            if (z) {
                EXPECT_NEAR(*z, column[i], 1e-11 * column[j]);
            }
        }
    }
}

TEST(Inverse, HasTheSameBitsForAnyNumberOfThreads)
{
    for (const Shape &shape : {grid(40, 40, 3, 1), band(3000, 60), full(700)}) {
        const SymmetricMatrix a = matrix_of(shape, 1);
        const std::vector<int> order = fill_reducing_order(a).unknown;
        const Inverted one = inverted(a, order);
        for (const int threads : {2, 3, 4})
            EXPECT_EQ(one.inverse.value, inverted(a, order, threads).inverse.value) << shape.name << " " << threads;
    }
}

TEST(Inverse, HasZerosForAHeldUnknownAndIsThatOfTheRest)
{
    SymmetricMatrix a = matrix_of(grid(6, 6, 2, 1), 1);
    const int held = 17;
    a.value[a.start[held]] = 0.0; // fails wherever it stands
    const Inverted q = inverted(a);
    ASSERT_EQ(q.factor.failed.size(), 1u);
    ASSERT_EQ(q.factor.failed[0].unknown, held);
    std::vector<long double> rest = dense_of(a);
    for (int i = 0; i < a.n; i++) rest[(std::size_t)held * a.n + i] = rest[(std::size_t)i * a.n + held] = i == held;
    std::vector<long double> wanted = dense_inverse(rest, a.n);
    for (int i = 0; i < a.n; i++) wanted[(std::size_t)held * a.n + i] = wanted[(std::size_t)i * a.n + held] = 0.0L;
    compare(q, wanted, 1e-11, "held");
    EXPECT_EQ(*element(q.symbolic, q.inverse, held, held), 0.0);
}

TEST(InverseElements, OfManyUnknownsAreThoseOfEachPairInAnyOrder)
{
    const SymmetricMatrix a = matrix_of(grid(30, 30, 2, 1), 1);
    const Inverted q = inverted(a);
    std::mt19937 engine(3);
    int many = 0;
    for (int s = 0; s < q.symbolic.nsuper; s++) { // the columns and rows of a supernode know one another
        std::vector<int> unknowns;
        for (int place = q.symbolic.first[s]; place < q.symbolic.first[s + 1]; place++)
            unknowns.push_back(q.symbolic.unknown[place]);
        for (std::int64_t k = q.symbolic.rowstart[s]; k < q.symbolic.rowstart[s + 1]; k++)
            unknowns.push_back(q.symbolic.unknown[q.symbolic.row[k]]);
        std::shuffle(unknowns.begin(), unknowns.end(), engine);
        unknowns.push_back(unknowns[0]); // one of them twice
        const std::size_t k = unknowns.size();
        many += k > 16;
        std::vector<double> block(k * k);
        ASSERT_TRUE(elements(q.symbolic, q.inverse, (int)k, unknowns.data(), block.data()));
        for (std::size_t i = 0; i < k; i++)
            for (std::size_t j = 0; j < k; j++)
                ASSERT_EQ(block[i * k + j], *element(q.symbolic, q.inverse, unknowns[i], unknowns[j])) << i << " " << j;
    }
    EXPECT_GT(many, 0);
}

TEST(InverseElements, GiveABlockOrNothing)
{
    const SymmetricMatrix a = matrix_of(grid(9, 9, 2, 1), 1);
    const Inverted q = inverted(a);
    const int point[] = {8, 9};
    double block[4];
    ASSERT_TRUE(elements(q.symbolic, q.inverse, 2, point, block));
    EXPECT_EQ(block[0], *element(q.symbolic, q.inverse, 8, 8));
    EXPECT_EQ(block[1], *element(q.symbolic, q.inverse, 8, 9));
    EXPECT_EQ(block[2], block[1]);
    EXPECT_EQ(block[3], *element(q.symbolic, q.inverse, 9, 9));
    int apart[] = {0, 0};
    while (apart[1] < a.n && element(q.symbolic, q.inverse, 0, apart[1])) apart[1]++;
    ASSERT_LT(apart[1], a.n);
    block[0] = 5.0;
    EXPECT_FALSE(elements(q.symbolic, q.inverse, 2, apart, block));
    EXPECT_EQ(block[0], 5.0);
}

TEST(Inverse, StopsWhenItIsTold)
{
    const SymmetricMatrix a = matrix_of(grid(45, 45, 3, 1), 1);
    const Symbolic symbolic = analyse(a, fill_reducing_order(a).unknown);
    Factor factor;
    ASSERT_TRUE(factorize(a, symbolic, factor));
    for (const int threads : {1, 2}) {
        std::atomic<bool> stop(false);
        InverseOptions options;
        options.threads = threads;
        options.watch.stop = &stop;
        options.watch.progress = [&](double share) { stop = share > 0.3; };
        Inverse inverse;
        EXPECT_FALSE(invert(symbolic, factor, inverse, options));
        EXPECT_TRUE(inverse.stopped);
    }
}
