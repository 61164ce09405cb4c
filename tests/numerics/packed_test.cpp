#include "numerics/packed.h"

#include <math.h>

#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "support/dense.h"

using namespace vornengine;

TEST(PackInvert, AgreesWithADenseInverse)
{
    std::mt19937 gen(7);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    for (int n = 1; n <= 8; n++)
        for (int trial = 0; trial < 20; trial++) {
            std::vector<double> m(n * n), packed;
            for (double &x : m) x = u(gen);
            std::vector<long double> full(n * n, 0.0L);
            for (int i = 0; i < n; i++)
                for (int j = 0; j <= i; j++) {
                    double s = i == j ? 1.0 : 0.0; // M M' + I: eigenvalues from 1 to n^2 + 1
                    for (int k = 0; k < n; k++) s += m[i * n + k] * m[j * n + k];
                    packed.push_back(s);
                    full[i * n + j] = full[j * n + i] = s;
                }
            const std::vector<long double> wanted = dense_inverse(full, n);
            packinvert(packed.data(), n);
            // Condition below 100, values below 1: some hundred roundings.
            for (int i = 0; i < n; i++)
                for (int j = 0; j <= i; j++)
                    EXPECT_NEAR((double)wanted[i * n + j], packed[packed_place(i, j)], 2e-14) << n;
        }
}

TEST(PackInvert, GivesReciprocalsOfADiagonalAndKeepsAZero)
{
    double a[10] = {4, 0, 0, 0, 0, 0.5, 0, 0, 0, -8};
    packinvert(a, 4);
    const double wanted[10] = {0.25, 0, 0, 0, 0, 2, 0, 0, 0, -0.125};
    for (int i = 0; i < 10; i++) EXPECT_EQ(wanted[i], a[i]) << i;
}

TEST(PackInvert, LeavesTheDivisionByAZeroPivotOut)
{
    // Pivots 2, 0; L(2,1) = 1/2. The 0 stays, and entry (1,1) takes 1/2 + (-1/2)^2 0.
    double a[3] = {2, 1, 0.5};
    packinvert(a, 2);
    EXPECT_EQ(0.5, a[0]);
    EXPECT_EQ(0.0, a[1]);
    EXPECT_EQ(0.0, a[2]);

    // A leading zero: column 1 is left undivided, L(2,1) = 3, pivot 2 is 5 - 9 * 0.
    double b[3] = {0, 3, 5};
    packinvert(b, 2);
    EXPECT_DOUBLE_EQ(9.0 / 5, b[0]);
    EXPECT_DOUBLE_EQ(-3.0 / 5, b[1]);
    EXPECT_DOUBLE_EQ(1.0 / 5, b[2]);
}

TEST(PackInvert, DoesNothingWithoutOrder)
{
    double a = 3.0;
    packinvert(&a, 0);
    packinvert(&a, -1);
    EXPECT_EQ(3.0, a);
}

TEST(PackedMatrix, LiesByRowsOfTheLowerTriangle)
{
    size_t place = 0;
    for (size_t i = 0; i < 5; i++)
        for (size_t j = 0; j <= i; j++) EXPECT_EQ(place++, packed_place(i, j));
    EXPECT_EQ(15, packed_size(5));
    EXPECT_EQ(-1, packed_size(6000000000LL)); // n (n + 1) exceeds 2^63
}
