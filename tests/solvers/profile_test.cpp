#include "solvers/profile.h"

#include <gtest/gtest.h>
#include <math.h>

#include "support/dense.h"
#include "support/profiles.h"

using namespace vornengine;

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

// ---- large matrices ----

namespace {

// Orders about the widths of strips, panels and depths, each with every shape.
const int LARGE[] = {97, 100, 119, 168, 191, 192, 193, 200, 215, 217, 300, 385, 463};

std::vector<std::vector<int>> largeshapes(int n)
{
    return {full_rows(n),   banded(n, 0),     banded(n, 5),           banded(n, 40),
            banded(n, 150), ragged(n, 3 + n), bordered(n, 10, n / 3), bordered(n, 60, 9)};
}

struct Factored {
    Factored(const Profile &p, int kind) : factors(p), d(p.n), space(factorspace(p.n, p.add.data()))
    {
        code = factorprofile(p.n, factors.a.data(), factors.add.data(), d.data(), space.data(), tilesfor(kind));
    }
    Profile factors;
    Vector d, space;
    int code;
};

double worst(const Vector &a, const Vector &b)
{
    double w = a.size() == b.size() ? 0.0 : (double)INFINITY;
    for (size_t k = 0; k < a.size(); k++)
        if (!(fabs(a[k] - b[k]) <= w)) w = fabs(a[k] - b[k]);
    return w;
}

// Row by row in the profile, as the formulas stand.
Vector plainfactors(Profile p)
{
    Vector d(p.n);
    for (int i = 0; i < p.n; i++) {
        double *row = rowbase(p.a.data(), p.add.data(), i);
        for (int j = p.first(i); j < i; j++) {
            const double *rj = rowbase(p.a.data(), p.add.data(), j);
            d[j] = row[j];
            for (int k = std::max(p.first(i), p.first(j)); k < j; k++) d[j] -= d[k] * rj[k];
            row[j] = d[j] * rj[j];
        }
        double pivot = row[i];
        for (int k = p.first(i); k < i; k++) pivot -= d[k] * row[k];
        row[i] = 1.0 / pivot;
    }
    return p.a;
}

} // namespace

TEST(FactorProfile, AgreesWithTheFactorsOfPlainLoopsForEveryProcessorAndShape)
{
    for (int n : LARGE)
        for (const auto &first : largeshapes(n)) {
            const Profile p = random_profile(first, 17 + n, true);
            const Vector want = plainfactors(p);
            for (int kind = 0; kind < TILES_KINDS; kind++) {
                if (!tilesfor(kind)) continue;
                const Factored f(p, kind);
                ASSERT_EQ(f.code, 0);
                // elements below 1, sums of up to n terms against pivots of about sqrt(n)
                ASSERT_LT(worst(f.factors.a, want), 1e-13) << n << " " << kind;
                for (int i = 0; i < n; i++) ASSERT_EQ(f.d[i], f.factors.at(i, i));
            }
        }
}

TEST(FactorProfile, TakesSmallOrdersToo)
{
    for (int n = 1; n <= 50; n++) {
        const Profile p = random_profile(ragged(n, n), 17, true);
        for (int kind = 0; kind < TILES_KINDS; kind++) {
            if (!tilesfor(kind)) continue;
            EXPECT_LT(worst(Factored(p, kind).factors.a, plainfactors(p)), 1e-13);
        }
    }
}

TEST(FactorProfile, StopsAtAPivotBelowTheLimitAndLeavesTheRowsBehindItAlone)
{
    const int n = 410;
    for (int bad : {0, 1, 7, 8, 23, 24, 100, 191, 192, 250, 383, 384, 409}) {
        Profile p = random_profile(bordered(n, 30, 50), 5);
        for (int j = p.first(bad); j < bad; j++) rowbase(p.a.data(), p.add.data(), bad)[j] = 0.0;
        rowbase(p.a.data(), p.add.data(), bad)[bad] = 1e-19; // below every limit
        for (int kind = 0; kind < TILES_KINDS; kind++) {
            if (!tilesfor(kind)) continue;
            const Factored f(p, kind);
            ASSERT_EQ(f.code, bad + 1);
            EXPECT_EQ(f.d[bad], 1e-19);
            const Vector full = plainfactors(p);
            for (int i = 0; i < n; i++)
                for (int j = p.first(i); j <= i; j++) {
                    const size_t at = p.add[i] + j - p.first(i);
                    if (i < bad)
                        ASSERT_NEAR(f.factors.a[at], full[at], 1e-13) << bad << " " << i << " " << j;
                    else
                        ASSERT_EQ(f.factors.a[at], p.a[at]) << bad << " " << i << " " << j;
                }
        }
    }
}

TEST(FactorProfile, LeavesTheFailingRowReducedButForItsDiagonal)
{
    const int n = 300, bad = 250;
    Profile p = random_profile(full_rows(n), 5);
    const Vector ok = plainfactors(p); // L of the rows before
    // Row bad becomes a copy of row 40: its pivot is rounding.
    for (int j = 0; j < bad; j++) rowbase(p.a.data(), p.add.data(), bad)[j] = p.at(std::max(40, j), std::min(40, j));
    rowbase(p.a.data(), p.add.data(), bad)[bad] = p.at(40, 40);
    for (int kind = 0; kind < TILES_KINDS; kind++) {
        if (!tilesfor(kind)) continue;
        const Factored f(p, kind);
        if (f.code == 0) continue; // rounding above the limit
        ASSERT_EQ(f.code, bad + 1);
        EXPECT_LT(fabs(f.d[bad]), 1e-15);
        EXPECT_EQ(f.factors.at(bad, bad), p.at(bad, bad));
        for (int j = 0; j < bad; j++)
            EXPECT_NEAR(f.factors.at(bad, j), j == 40 ? 1.0 : j < 40 ? ok[p.add[40] + j] : 0.0, 1e-13);
    }
}

TEST(FactorProfile, NeedsOneStripOfSpaceForOneFullRow)
{
    const int n = 20000;
    std::vector<int> first = banded(n, 1);
    first[n - 1] = 0;
    const Profile p(first, [](int, int) { return 0.0; });
    EXPECT_LT(factorspace(n, p.add.data()), (long long)n * (TILE_LANES + 2));
    EXPECT_LT(factorspace(n - 1, p.add.data()), 20000); // a band needs little
    // A full profile needs a panel of rows.
    const Profile q(full_rows(400), [](int, int) { return 0.0; });
    EXPECT_LT(factorspace(400, q.add.data()), 400 * 192 + 5000);
}

TEST(InverseProfile, InvertsForEveryProcessorAndShape)
{
    for (int n : LARGE) {
        if (n != 97 && n != 192 && n != 217 && n != 385) continue;
        for (const auto &first : largeshapes(n)) {
            const Profile p = random_profile(first, 23 + n, true);
            const Vector m = p.full();
            Vector reference;
            for (int kind = TILES_KINDS - 1; kind >= 0; kind--) {
                if (!tilesfor(kind)) continue;
                const Factored f(p, kind);
                Vector z((size_t)n * n, 0.0), space(inversespace(n));
                inverseprofile(n, f.factors.a.data(), f.factors.add.data(), z.data(), space.data(), tilesfor(kind));
                for (int i = 0; i < n; i++)
                    for (int j = 0; j < i; j++) ASSERT_EQ(z[(size_t)i * n + j], z[(size_t)j * n + i]);
                if (!reference.empty()) {
                    ASSERT_LT(worst(z, reference), 1e-14) << n << " " << kind;
                    continue;
                }
                reference = z;
                double largest = 0.0;
                for (int i = 0; i < n; i++) {
                    Vector sum(n, 0.0);
                    for (int k = 0; k < n; k++)
                        for (int j = 0; j < n; j++) sum[j] += m[(size_t)i * n + k] * z[(size_t)k * n + j];
                    sum[i] -= 1.0;
                    for (double v : sum) largest = fmax(largest, fabs(v));
                }
                ASSERT_LT(largest, 1e-12) << n;
            }
        }
    }
}

TEST(InverseProfile, TakesSmallOrdersToo)
{
    for (int n = 1; n <= 40; n++) {
        const Profile p = random_profile(ragged(n, n), 29, true);
        const Vector m = p.full();
        const std::vector<long double> want = dense_inverse(std::vector<long double>(m.begin(), m.end()), n);
        for (int kind = 0; kind < TILES_KINDS; kind++) {
            if (!tilesfor(kind)) continue;
            const Factored f(p, kind);
            Vector z((size_t)n * n, 0.0), space(inversespace(n));
            inverseprofile(n, f.factors.a.data(), f.factors.add.data(), z.data(), space.data(), tilesfor(kind));
            for (size_t k = 0; k < z.size(); k++) ASSERT_NEAR(z[k], (double)want[k], 1e-14);
        }
    }
}

TEST(ProfileRows, AreZeroOutsideTheProfileAndFromTheDiagonalOn)
{
    const Profile p = random_profile(ragged(50, 4), 31);
    for (int j : {0, 8, 40, 48}) // the last group passes the end
        for (int from : {0, 5, j, j + 3})
            for (int to : {from, from + 1, from + 17}) {
                Vector b(TILE_COLUMNS * TILE_STRIDE, 7.0);
                profilerows(p.n, p.a.data(), p.add.data(), j, from, to, b.data());
                for (int c = 0; c < TILE_COLUMNS; c++)
                    for (int k = from; k <= to; k++) {
                        const bool inside = j + c < p.n && k < j + c;
                        const double want = k == to ? 7.0 : inside ? p.at(j + c, k) : 0.0;
                        ASSERT_EQ(b[c * TILE_STRIDE + k - from], want) << j << " " << c << " " << k;
                    }
            }
}

TEST(CacheAligned, BeginsALineWithinTheFirstOne)
{
    std::vector<double> space(32);
    for (int k = 0; k < 10; k++) {
        const double *at = cachealigned(space.data() + k);
        EXPECT_EQ((uintptr_t)at % (CACHE_LINE * sizeof(double)), 0u);
        EXPECT_GE(at, space.data() + k);
        EXPECT_LT(at, space.data() + k + CACHE_LINE);
    }
}

TEST(Cvec, SolvesLargeSystemsWithOneAndWithManyRightHandSides)
{
    for (int n : {96, 97, 200, 401})
        for (const auto &first : largeshapes(n)) {
            const Profile p = random_profile(first, 37, true);
            const Vector m = p.full();
            Profile q = p, r = p;
            Vector b((size_t)n * 3), x(n), d(solvespace(n, p.add.data()));
            for (size_t k = 0; k < b.size(); k++) b[k] = cos(2.0 * (double)k);
            for (int i = 0; i < n; i++) x[i] = b[(size_t)i * 3 + 1];
            const Vector x0 = x;
            ASSERT_EQ(cvec(n, q.a.data(), q.add.data(), x.data(), d.data()), 0);
            EXPECT_LT(residual(m, x, x0, n), 1e-12);
            ASSERT_EQ(cmat(n, 3, r.a.data(), r.add.data(), b.data(), d.data()), 0);
            for (int i = 0; i < n; i++) ASSERT_NEAR(b[(size_t)i * 3 + 1], x[i], 1e-13);
            EXPECT_EQ(q.a, r.a);
        }
}

TEST(Cvec, LeavesTheRightHandSideBehindAFailingRowAlone)
{
    for (int n : {90, 300}) { // row by row and by panels
        const int bad = n - 20;
        Profile p(full_rows(n), [&](int i, int j) { return i != j ? (i == bad ? 0.0 : 0.001) : i == bad ? 0.0 : 0.5; });
        for (int i = bad + 1; i < n; i++) rowbase(p.a.data(), p.add.data(), i)[bad] = 0.0;
        Vector b = right_hand_side(n), d(solvespace(n, p.add.data()));
        const Vector b0 = b;
        Profile before(p);
        EXPECT_EQ(cvec(n, p.a.data(), p.add.data(), b.data(), d.data()), bad + 1);
        EXPECT_EQ(d[bad], 0.0);
        for (int i = bad; i < n; i++) EXPECT_EQ(b[i], b0[i]); // row bad has nothing to take off
        // D^-1 L^-1 b in the rows before
        Vector y = b0;
        for (int i = 0; i < bad; i++)
            for (int k = 0; k < i; k++) y[i] -= p.at(i, k) * y[k];
        for (int i = 0; i < bad; i++) EXPECT_NEAR(b[i], y[i] * p.at(i, i), 1e-13);
    }
}

TEST(Cinverse, FactorsAndInvertsAtEveryOrder)
{
    for (int n : {1, 2, 50, 96, 97, 250}) {
        Profile p = random_profile(bordered(n, 9, n / 5), 41, true);
        const Vector m = p.full();
        Vector z((size_t)n * n, 0.0), d(solvespace(n, p.add.data())), space(invertspace(n));
        ASSERT_EQ(cinverse(n, p.a.data(), p.add.data(), z.data(), d.data(), space.data()), 0);
        Vector x(n);
        for (int i = 0; i < n; i++)
            for (int j = 0; j < n; j++) x[i] += z[(size_t)i * n + j] * (1.0 + j);
        Vector b(n);
        for (int j = 0; j < n; j++) b[j] = 1.0 + j;
        EXPECT_LT(residual(m, x, b, n), 1e-11);
    }
}

TEST(Cinverse, ReturnsTheRowBehindAPivotBelowTheLimit)
{
    for (int n : {50, 250}) {
        Profile p(full_rows(n), [&](int i, int j) { return i == j && i != n - 2 ? 0.5 : 0.0; });
        Vector z((size_t)n * n, 0.0), d(solvespace(n, p.add.data())), space(invertspace(n));
        EXPECT_EQ(cinverse(n, p.a.data(), p.add.data(), z.data(), d.data(), space.data()), n - 1);
        EXPECT_EQ(d[n - 2], 0.0);
    }
}
