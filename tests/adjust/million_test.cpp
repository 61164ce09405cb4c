// A network of a million unknowns: 3.5 GB and a minute, so by hand:
//   adjust_test --gtest_also_run_disabled_tests --gtest_filter='*Million*'

#include <cmath>
#include <cstdio>

#include <gtest/gtest.h>

#include "adjust/inverse.h"
#include "adjust/order.h"
#include "patterns.h"

using namespace vornadjust;

TEST(DISABLED_Million, UnknownsAreSolvedForAndHaveTheirCofactors)
{
    const SymmetricMatrix a = matrix_of(grid(577, 578, 3, 1), 1);
    ASSERT_GT(a.n, 1000000);
    const Symbolic symbolic = analyse(a, fill_reducing_order(a).unknown);
    FactorOptions options;
    InverseOptions inverse_options;
    options.threads = inverse_options.threads = 2;
    Factor factor;
    Inverse inverse;
    ASSERT_TRUE(factorize(a, symbolic, factor, options));
    ASSERT_TRUE(invert(symbolic, factor, inverse, inverse_options));

    const int columns = 100;
    const std::size_t n = (std::size_t)a.n;
    std::mt19937 random(2);
    std::vector<int> unknown;
    std::vector<double> x(columns * n, 0.0), product(n);
    for (int c = 0; c < columns; c++) {
        unknown.push_back((int)(random() % n));
        x[c * n + unknown[c]] = 1.0;
    }
    solve(symbolic, factor, columns, x.data());
    double worst = 0.0, residual = 0.0;
    std::size_t compared = 0;
    for (int c = 0; c < columns; c++) {
        const double *column = x.data() + c * n;
        multiply(a, column, product.data());
        product[unknown[c]] -= 1.0;
        for (int i = 0; i < a.n; i++) {
            residual = std::max(residual, std::fabs(product[i]));
            const double *z = element(symbolic, inverse, i, unknown[c]);
            if (!z) continue;
            compared++;
            worst = std::max(worst, std::fabs(*z - column[i]) / column[unknown[c]]);
        }
    }
    std::printf("%zu elements, largest difference %.1e of the cofactor, largest residual %.1e\n", compared, worst,
                residual);
    EXPECT_GT(compared, 10000u);
    EXPECT_LT(worst, 1e-11);
    EXPECT_LT(residual, 1e-11);
}
