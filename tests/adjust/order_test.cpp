#include <gtest/gtest.h>

#include "adjust/order.h"
#include "adjust/symbolic.h"
#include "patterns.h"

using namespace vornadjust;

namespace {

const Ordering ALL[] = {Ordering::best, Ordering::natural, Ordering::minimum_degree, Ordering::own_degree,
                        Ordering::dissection};

// Elements of the factor by elimination on a full table of what is not zero.
std::int64_t count_by_elimination(const SymmetricMatrix &a, const std::vector<int> &order)
{
    const std::size_t n = (std::size_t)a.n;
    std::vector<int> place(n);
    for (std::size_t k = 0; k < n; k++) place[order[k]] = (int)k;
    std::vector<std::vector<char>> filled(n, std::vector<char>(n, 0));
    for (int j = 0; j < a.n; j++)
        for (std::int64_t p = a.start[j]; p < a.start[j + 1]; p++)
            filled[place[j]][place[a.row[p]]] = filled[place[a.row[p]]][place[j]] = 1;
    std::int64_t count = 0;
    for (std::size_t k = 0; k < n; k++)
        for (std::size_t i = k; i < n; i++) {
            if (!filled[i][k]) continue;
            count++;
            for (std::size_t j = k + 1; j < n; j++)
                if (filled[j][k]) filled[i][j] = i > k;
        }
    return count;
}

} // namespace

TEST(Order, IsAPermutationForEveryShapeAndOrdering)
{
    for (const Shape &shape : shapes())
        for (const Ordering ordering : ALL) {
            const Order order = fill_reducing_order(matrix_of(shape, 1), ordering);
            EXPECT_TRUE(is_permutation(shape.n, order.unknown)) << shape.name << " " << shape.n;
        }
}

TEST(Order, CountsTheElementsOfTheFactor)
{
    for (const Shape &shape : shapes())
        for (const Ordering ordering : ALL) {
            const SymmetricMatrix a = matrix_of(shape, 1);
            const Order order = fill_reducing_order(a, ordering);
            const std::int64_t count = count_by_elimination(a, order.unknown);
            EXPECT_EQ(order.elements, count) << shape.name << " " << shape.n;
            EXPECT_EQ(count_elements(a, order.unknown), count) << shape.name << " " << shape.n;
            EXPECT_EQ(analyse(a, order.unknown).elements, count) << shape.name << " " << shape.n;
        }
}

TEST(Order, FillsNothingInWhereThatIsPossible)
{
    for (const Shape &shape : {band(60, 1), tree(200, 3), arrow(100, 1, true)})
        for (const Ordering ordering : {Ordering::best, Ordering::own_degree, Ordering::minimum_degree}) {
            const SymmetricMatrix a = matrix_of(shape, 1);
            EXPECT_EQ(fill_reducing_order(a, ordering).elements, a.start[a.n]) << shape.name;
        }
}

TEST(Order, KeepsAnArrowWithItsTipFirstFromFillingUp)
{
    const SymmetricMatrix a = matrix_of(arrow(100, 1, true), 1);
    EXPECT_EQ(fill_reducing_order(a, Ordering::natural).elements, 100 * 101 / 2);
    EXPECT_EQ(fill_reducing_order(a).elements, 199);
}

TEST(Order, PutsDenseRowsLast)
{
    Shape shape = grid(20, 20, 1, 1);
    for (int i = 0; i < shape.n; i++) shape.pairs.push_back({17, i});
    for (const Ordering ordering : {Ordering::best, Ordering::own_degree, Ordering::dissection})
        EXPECT_EQ(fill_reducing_order(matrix_of(shape, 1), ordering).unknown.back(), 17);
}

TEST(Order, OfTheProgramIsNearlyAsGoodAsTheLibrarys)
{
    if (!is_available(Ordering::minimum_degree)) GTEST_SKIP() << "built without AMD";
    for (const Shape &shape : {grid(40, 40, 1, 1), grid(30, 30, 3, 2), grid(3, 300, 2, 3), scattered(1500, 2500, 4)}) {
        const SymmetricMatrix a = matrix_of(shape, 1);
        const double library = (double)fill_reducing_order(a, Ordering::minimum_degree).elements;
        EXPECT_LT((double)fill_reducing_order(a, Ordering::own_degree).elements, 1.2 * library) << shape.name;
    }
}

TEST(Order, BestIsNoWorseThanAnyOther)
{
    const SymmetricMatrix a = matrix_of(grid(60, 60, 1, 1), 1);
    const std::int64_t best = fill_reducing_order(a).elements;
    EXPECT_LE(best, fill_reducing_order(a, Ordering::minimum_degree).elements);
    EXPECT_LT(best, fill_reducing_order(a, Ordering::natural).elements);
}

TEST(Order, IsTheSameEveryTime)
{
    const SymmetricMatrix a = matrix_of(grid(50, 50, 2, 1), 1);
    for (const Ordering ordering : ALL)
        EXPECT_EQ(fill_reducing_order(a, ordering).unknown, fill_reducing_order(a, ordering).unknown);
}

TEST(Permutation, HoldsEachNumberOnce)
{
    EXPECT_TRUE(is_permutation(0, {}));
    EXPECT_TRUE(is_permutation(3, {2, 0, 1}));
    EXPECT_FALSE(is_permutation(3, {2, 0}));
    EXPECT_FALSE(is_permutation(3, {2, 0, 0}));
    EXPECT_FALSE(is_permutation(3, {3, 0, 1}));
    EXPECT_FALSE(is_permutation(3, {-1, 0, 1}));
}
