// Factors that stop before a boundary: what they leave there, solutions in two halves, the inverse around a given one.

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

#include <gtest/gtest.h>

#include "adjust/inverse.h"
#include "adjust/order.h"
#include "patterns.h"
#include "support/dense.h"

using namespace vornadjust;

namespace {

struct Case {
    SymmetricMatrix a;
    std::vector<int> boundary; // ascending
    Symbolic symbolic;
    Factor factor;
    std::vector<long double> inverse; // of a, dense

    long double z(int i, int j) const { return inverse[(std::size_t)i * a.n + j]; }
    int m() const { return (int)boundary.size(); }
    // Block of the boundary among values of the factor's layout.
    std::size_t at(int i, int j) const
    {
        const int s = symbolic.boundary;
        const int row = symbolic.place[boundary[i]] - symbolic.first[s];
        const int column = symbolic.place[boundary[j]] - symbolic.first[s];
        return (std::size_t)symbolic.valuestart[s] + (std::size_t)column * symbolic.height(s) + row;
    }
};

Case make_case(const Shape &shape, int m, int threads = 1)
{
    Case c;
    c.a = matrix_of(shape, 3);
    std::vector<int> all((std::size_t)c.a.n);
    std::iota(all.begin(), all.end(), 0);
    std::shuffle(all.begin(), all.end(), std::mt19937(11));
    c.boundary.assign(all.begin(), all.begin() + m);
    std::sort(c.boundary.begin(), c.boundary.end());
    std::vector<char> at_boundary((std::size_t)c.a.n, 0);
    for (const int u : c.boundary) at_boundary[u] = 1;
    c.symbolic = analyse(c.a, order_inside(c.a, at_boundary), m);
    FactorOptions options;
    options.threads = threads;
    EXPECT_TRUE(factorize(c.a, c.symbolic, c.factor, options));
    return c;
}

// The inverse of the given inverse over the boundary: the Schur complement.
std::vector<long double> schur(const Case &c)
{
    std::vector<long double> z;
    for (const int i : c.boundary)
        for (const int j : c.boundary) z.push_back(c.z(i, j));
    return dense_inverse(z, c.m());
}

std::vector<Case> cases()
{
    std::vector<Case> all;
    all.reserve(24);
    for (const Shape &shape : {loose(7), band(40, 1), band(60, 7), full(30), arrow(40, 5, true), grid(4, 6, 3, 2),
                               scattered(60, 40, 5), tree(60, 7)})
        for (const int m : {1, shape.n / 4, shape.n}) {
            all.push_back(make_case(shape, m));
            all.back().inverse = dense_inverse(dense_of(all.back().a), shape.n);
        }
    return all;
}

} // namespace

TEST(Boundary, KeepsTheSchurComplement)
{
    for (const Case &c : cases()) {
        const std::vector<long double> wanted = schur(c);
        for (int j = 0; j < c.m(); j++)
            for (int i = j; i < c.m(); i++) {
                const double size = std::sqrt((double)(wanted[i * c.m() + i] * wanted[j * c.m() + j]));
                const bool below = c.symbolic.place[c.boundary[i]] >= c.symbolic.place[c.boundary[j]];
                EXPECT_NEAR(c.factor.value[below ? c.at(i, j) : c.at(j, i)], (double)wanted[i * c.m() + j],
                            1e-11 * size)
                    << c.a.n << " " << i << " " << j;
            }
    }
}

TEST(Boundary, SolvesInTwoHalves)
{
    const int columns = 9; // more than are taken together
    for (const Case &c : cases()) {
        const std::size_t n = (std::size_t)c.a.n;
        std::mt19937 random(2);
        std::uniform_real_distribution<double> some(-1.0, 1.0);
        std::vector<double> b(n * columns);
        for (double &x : b) x = some(random);
        std::vector<double> x = b;
        reduce(c.symbolic, c.factor, columns, x.data());
        const std::vector<long double> z = dense_inverse(schur(c), c.m());
        for (int k = 0; k < columns; k++) {
            std::vector<double> at_boundary;
            for (int i = 0; i < c.m(); i++) {
                long double sum = 0.0L;
                for (int j = 0; j < c.m(); j++) sum += z[i * c.m() + j] * x[k * n + c.boundary[j]];
                at_boundary.push_back((double)sum);
            }
            for (int i = 0; i < c.m(); i++) x[k * n + c.boundary[i]] = at_boundary[i];
        }
        complete(c.symbolic, c.factor, columns, x.data());
        for (int k = 0; k < columns; k++)
            for (int i = 0; i < c.a.n; i++) {
                long double wanted = 0.0L, size = 0.0L;
                for (int j = 0; j < c.a.n; j++) {
                    wanted += c.z(i, j) * b[k * n + j];
                    size += std::fabs((double)(c.z(i, j) * b[k * n + j]));
                }
                EXPECT_NEAR(x[k * n + i], (double)wanted, 1e-10 * (double)size) << c.a.n << " " << c.m() << " " << i;
            }
    }
}

TEST(Boundary, TakesTheInverseAroundTheGivenOne)
{
    for (const Case &c : cases()) {
        Inverse inverse;
        inverse.value.assign((std::size_t)c.symbolic.values(), 0.0);
        for (int j = 0; j < c.m(); j++)
            for (int i = 0; i < c.m(); i++) inverse.value[c.at(i, j)] = (double)c.z(c.boundary[i], c.boundary[j]);
        ASSERT_TRUE(invert(c.symbolic, c.factor, inverse));
        for (int j = 0; j < c.a.n; j++)
            for (int i = 0; i < c.a.n; i++) {
                const double *z = element(c.symbolic, inverse, i, j);
                if (z) {
                    EXPECT_NEAR(*z, (double)c.z(i, j), 1e-10 * std::sqrt((double)(c.z(i, i) * c.z(j, j))));
                }
            }
        for (int j = 0; j < c.a.n; j++)
            for (std::int64_t p = c.a.start[j]; p < c.a.start[j + 1]; p++)
                EXPECT_NE(element(c.symbolic, inverse, c.a.row[p], j), nullptr);
    }
}

TEST(Boundary, DoesNotDependOnTheNumberOfThreads)
{
    const Case one = make_case(grid(30, 30, 3, 1), 120), two = make_case(grid(30, 30, 3, 1), 120, 2);
    EXPECT_EQ(one.factor.value, two.factor.value);
}

TEST(Boundary, LeavesInsideColumnsAsShortAsTheyAre)
{
    // A long chain with its boundary at one end: columns far from it have one row below.
    const SymmetricMatrix a = matrix_of(band(400, 1), 1);
    std::vector<char> at_boundary(400, 0);
    std::fill(at_boundary.end() - 100, at_boundary.end(), 1);
    const Symbolic s = analyse(a, order_inside(a, at_boundary), 100);
    EXPECT_LT(s.values(), 100 * 100 + 400 * 60);
    EXPECT_EQ(s.width(s.boundary), 100);
}
