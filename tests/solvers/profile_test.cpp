#include "solvers/profile.h"

#include <gtest/gtest.h>
#include <math.h>

#include "support/dense.h"
#include "support/profiles.h"

namespace {

typedef std::vector<double> Vector;

// The elimination written out as its formulas stand, from the full matrix; stops before the
// first pivot that is below the limit. lower: L by rows, pivots: D.
int reference(const Vector &m, int n, double limit, Vector *lower, Vector *pivots)
{
    lower->assign((size_t)n * n, 0.0);
    pivots->assign(n, 0.0);
    Vector &l = *lower, &d = *pivots;
    for (int i = 0; i < n; i++) {
        for (int j = 0; j <= i; j++) {
            double g = m[(size_t)i * n + j];
            for (int k = 0; k < j; k++) g -= l[(size_t)i * n + k] * d[k] * l[(size_t)j * n + k];
            if (j < i)
                l[(size_t)i * n + j] = g / d[j];
            else
                d[i] = g;
        }
        if (fabs(d[i]) < limit) return i + 1;
    }
    return 0;
}

double residual(const Vector &m, const Vector &x, const Vector &b, int n)
{
    double worst = 0.0;
    for (int i = 0; i < n; i++) {
        double sum = -b[i];
        for (int j = 0; j < n; j++) sum += m[(size_t)i * n + j] * x[j];
        worst = fmax(worst, fabs(sum));
    }
    return worst;
}

Vector right_hand_side(int n)
{
    Vector b(n);
    for (int i = 0; i < n; i++) b[i] = sin(1.0 + 3.0 * i);
    return b;
}

std::vector<std::vector<int>> shapes()
{
    std::vector<std::vector<int>> list;
    for (int n : {1, 2, 3, 4, 5, 8, 17, 40}) {
        list.push_back(full_rows(n));
        list.push_back(banded(n, 3));
        list.push_back(banded(n, 0));
        list.push_back(ragged(n, 5 + n));
        list.push_back(bordered(n, 2, n / 4));
    }
    return list;
}

} // namespace

// ---- addresses ----

TEST(ProfileAddress, FindsFirstColumnsAndElements)
{
    // 4 unknowns with first columns 0 0 1 0
    Profile p({0, 0, 1, 0}, [](int i, int j) { return 10.0 * i + j; });
    EXPECT_EQ(p.add, (std::vector<size_t>{0, 1, 3, 5, 9}));
    EXPECT_EQ(firstcol(p.add.data(), 0), 0);
    EXPECT_EQ(firstcol(p.add.data(), 2), 1);
    EXPECT_EQ(firstcol(p.add.data(), 3), 0);
    EXPECT_EQ(rowbase(p.a.data(), p.add.data(), 2)[1], 21.0);
    EXPECT_EQ(rowbase(p.a.data(), p.add.data(), 3)[2], 32.0);
}

// ---- limit of a pivot ----

TEST(PivotLimit, GrowsInStepsWithTheLargestFirstElement)
{
    const struct {
        double first, limit;
    } steps[] = {{0.0, 1e-18},  {0.999, 1e-18}, {1.0, 1e-17},    {9.99, 1e-17},   {10.0, 1e-16},
                 {99.9, 1e-16}, {100.0, 1e-15}, {999.99, 1e-15}, {1000.0, 1e-14}, {1e30, 1e-14}};
    for (const auto &step : steps)
        for (double sign : {1.0, -1.0}) {
            const Profile p({0, 0}, [&](int i, int j) { return i == 1 && j == 0 ? sign * step.first : 0.5; });
            EXPECT_EQ(pivotlimit(2, p.a.data(), p.add.data()), step.limit) << step.first;
        }
}

TEST(PivotLimit, LooksAtTheFirstElementOfARowNotAtItsDiagonal)
{
    const Profile large_diagonal({0, 0, 0}, [](int i, int j) { return i == j && i > 0 ? 1e6 : 0.1; });
    EXPECT_EQ(pivotlimit(3, large_diagonal.a.data(), large_diagonal.add.data()), 1e-18);
    const Profile large_first({0, 0, 0}, [](int i, int j) { return i > 0 && j == 0 ? 1e6 : 0.1; });
    EXPECT_EQ(pivotlimit(3, large_first.a.data(), large_first.add.data()), 1e-14);
    const Profile diagonal({0, 1, 2}, [](int i, int) { return i == 1 ? 50.0 : 0.1; });
    EXPECT_EQ(pivotlimit(3, diagonal.a.data(), diagonal.add.data()), 1e-16); // the diagonal is first
}

TEST(PivotLimit, IsTheSmallestWithoutRows)
{
    const size_t add[1] = {0};
    EXPECT_EQ(pivotlimit(0, nullptr, add), 1e-18);
}

// ---- factors and solution ----

TEST(Cvec, SolvesEveryShapeOfProfile)
{
    for (const auto &first : shapes())
        for (bool indefinite : {false, true}) {
            Profile p = random_profile(first, 7, indefinite);
            const Vector m = p.full(), b = right_hand_side(p.n);
            Vector x = b, d(p.n);
            ASSERT_EQ(cvec(p.n, p.a.data(), p.add.data(), x.data(), d.data()), 0);
            EXPECT_LT(residual(m, x, b, p.n), 1e-13 * p.n);
        }
}

TEST(Cvec, LeavesTheUnitFactorAndTheReciprocalPivots)
{
    for (const auto &first : shapes()) {
        Profile p = random_profile(first, 3, true);
        Vector lower, pivots, x = right_hand_side(p.n), d(p.n);
        reference(p.full(), p.n, 0.0, &lower, &pivots);
        ASSERT_EQ(cvec(p.n, p.a.data(), p.add.data(), x.data(), d.data()), 0);
        for (int i = 0; i < p.n; i++) {
            for (int j = 0; j < i; j++) EXPECT_NEAR(p.at(i, j), lower[(size_t)i * p.n + j], 1e-14);
            EXPECT_NEAR(p.at(i, i), 1.0 / pivots[i], 1e-14);
        }
    }
}

TEST(Cvec, HandComputedExample)
{
    // [4 2; 2 -3] x = [2; 5]: D = 4, -4; L21 = 0.5; x = (1, -1)
    Profile p({0, 0}, [](int i, int j) { return i == 0 ? 4.0 : j == 0 ? 2.0 : -3.0; });
    Vector x = {2.0, 5.0}, d(2);
    ASSERT_EQ(cvec(2, p.a.data(), p.add.data(), x.data(), d.data()), 0);
    EXPECT_EQ(p.a, (Vector{0.25, 0.5, -0.25}));
    EXPECT_EQ(x, (Vector{1.0, -1.0}));
}

TEST(Cvec, ReturnsTheRowBehindAPivotBelowTheLimit)
{
    for (int bad : {0, 1, 3, 6}) {
        const int n = 7;
        // Row bad has its diagonal such that the pivot is 1e-19; the first elements stay below 1.
        Profile p(full_rows(n), [&](int i, int j) { return i != j ? 0.0 : i == bad ? 1e-19 : 0.5; });
        const Profile before = p;
        Vector x(n, 1.0), d(n);
        EXPECT_EQ(cvec(n, p.a.data(), p.add.data(), x.data(), d.data()), bad + 1);
        EXPECT_EQ(d[bad], 1e-19);
        for (int i = bad; i < n; i++) EXPECT_EQ(p.at(i, i), before.at(i, i)); // not factored
        for (int i = 0; i < bad; i++) EXPECT_EQ(p.at(i, i), 2.0);
    }
}

TEST(Cvec, TakesAPivotAtTheLimitAndNegativeOnes)
{
    for (double pivot : {1e-18, -1e-18, -0.5, 1.0000001e-18}) {
        Profile p({0, 1}, [&](int i, int) { return i == 0 ? 0.5 : pivot; });
        Vector x = {1.0, 1.0}, d(2);
        EXPECT_EQ(cvec(2, p.a.data(), p.add.data(), x.data(), d.data()), 0) << pivot;
        EXPECT_DOUBLE_EQ(x[1], 1.0 / pivot);
    }
    Profile p({0, 1}, [](int i, int) { return i == 0 ? 0.5 : -0.999e-18; });
    Vector x = {1.0, 1.0}, d(2);
    EXPECT_EQ(cvec(2, p.a.data(), p.add.data(), x.data(), d.data()), 2);
}

TEST(Cvec, PassesANotANumberOnAsNoPivotBelowTheLimit)
{
    Profile p({0, 0}, [](int i, int j) { return i == j ? (double)NAN : 0.5; });
    Vector x = {1.0, 1.0}, d(2);
    EXPECT_EQ(cvec(2, p.a.data(), p.add.data(), x.data(), d.data()), 0);
    EXPECT_TRUE(isnan(x[0]));
}

TEST(Cvec, TakesNoUnknowns)
{
    const size_t add[1] = {0};
    EXPECT_EQ(cvec(0, nullptr, add, nullptr, nullptr), 0);
}

TEST(Cmat, SolvesEachRightHandSideAsCvecDoes)
{
    for (const auto &first : shapes()) {
        const Profile p = random_profile(first, 9, true);
        for (int m : {1, 2, 5}) {
            Profile q = p;
            Vector b((size_t)p.n * m), d(p.n);
            for (size_t k = 0; k < b.size(); k++) b[k] = cos(2.0 * (double)k);
            const Vector b0 = b;
            ASSERT_EQ(cmat(p.n, m, q.a.data(), q.add.data(), b.data(), d.data()), 0);
            for (int c = 0; c < m; c++) {
                Profile r = p;
                Vector x(p.n);
                for (int i = 0; i < p.n; i++) x[i] = b0[(size_t)i * m + c];
                ASSERT_EQ(cvec(r.n, r.a.data(), r.add.data(), x.data(), d.data()), 0);
                for (int i = 0; i < p.n; i++) EXPECT_DOUBLE_EQ(b[(size_t)i * m + c], x[i]);
            }
        }
    }
}

TEST(Cmat, InvertsFromTheIdentity)
{
    for (const auto &first : shapes()) {
        Profile p = random_profile(first, 13, true);
        const Vector m = p.full();
        const std::vector<long double> want = dense_inverse(std::vector<long double>(m.begin(), m.end()), p.n);
        Vector b((size_t)p.n * p.n, 0.0), d(p.n);
        for (int i = 0; i < p.n; i++) b[(size_t)i * p.n + i] = 1.0;
        ASSERT_EQ(cmat(p.n, p.n, p.a.data(), p.add.data(), b.data(), d.data()), 0);
        for (size_t k = 0; k < b.size(); k++) EXPECT_NEAR(b[k], (double)want[k], 1e-14);
    }
}

TEST(Cmat, ReturnsTheRowBehindAPivotBelowTheLimit)
{
    Profile p({0, 0, 2}, [](int, int) { return 0.5; }); // rows 0 and 1 are equal
    Vector b(9, 0.0), d(3);
    EXPECT_EQ(cmat(3, 3, p.a.data(), p.add.data(), b.data(), d.data()), 2);
    EXPECT_EQ(d[1], 0.0);
}
