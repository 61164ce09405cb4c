#include <gtest/gtest.h>

#include "approx/rows.h"
#include "numerics/memory.h"
#include "support/faults.h"

using namespace vornengine;

namespace {

double **table(int n) { return (double **)zeroed(n, sizeof(double *)); }

TEST(Rows, AreZeroAndOfTheirOwn)
{
    double **a = table(3);
    ASSERT_EQ(rows_take(a, 3), 3);
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++) EXPECT_EQ(a[i][j], 0.0);
    EXPECT_NE(a[0], a[1]);
    rows_free(a, 3);
}

TEST(Rows, SayWhichOneFoundNoMemory)
{
    for (int n = 0; n < 3; n++) {
        double **a = table(3);
        fail_allocation(n + 1);
        EXPECT_EQ(rows_take(a, 3), n);
        fail_allocation(0);
        rows_free(a, 3);
    }
}

TEST(Rows, OfNoTableNeedNoRelease)
{
    rows_free(nullptr, 3);
    EXPECT_EQ(rows_take(nullptr, 0), 0);
}

} // namespace
