#include <gtest/gtest.h>
#include <math.h>

#include <random>

#include "solvers/leastsquares.h"
#include "support/faults.h"

namespace {

typedef Solved<jordan> Net;

Vector product(const Vector &a, const Vector &b, int n)
{
    Vector c(n * n, 0.0);
    for (int i = 0; i < n; i++)
        for (int j = 0; j < n; j++)
            for (int k = 0; k < n; k++) c[i * n + j] += a[i * n + k] * b[k * n + j];
    return c;
}

// The elimination written out step by step, each search over the whole matrix.
void reference(const Vector &a, Vector b, int n, Vector *x, Vector *ainv, double *det)
{
    Vector &m = *ainv;
    m = a;
    std::vector<int> used(n, 0), rows(n), cols(n);
    int irow = 0, icol = 0;
    *det = 1.0;
    for (int i = 0; i < n; i++) {
        double big = 0.0;
        for (int j = 0; j < n; j++)
            for (int k = 0; k < n; k++)
                if (!used[j] && !used[k] && fabs(m[j * n + k]) > big) {
                    big = fabs(m[j * n + k]);
                    irow = j;
                    icol = k;
                }
        used[icol] = 1;
        rows[i] = irow;
        cols[i] = icol;
        if (irow != icol) {
            *det = -*det;
            for (int k = 0; k < n; k++) std::swap(m[irow * n + k], m[icol * n + k]);
            std::swap(b[irow], b[icol]);
        }
        const double p = m[icol * n + icol];
        *det = p * *det > 1e100 ? 1e100 : p * *det;
        m[icol * n + icol] = 1.0;
        for (int k = 0; k < n; k++) m[icol * n + k] /= p;
        b[icol] /= p;
        for (int r = 0; r < n; r++) {
            if (r == icol) continue;
            const double f = m[r * n + icol];
            m[r * n + icol] = 0.0;
            for (int k = 0; k < n; k++) m[r * n + k] -= f * m[icol * n + k];
            b[r] -= f * b[icol];
        }
    }
    for (int i = n - 1; i >= 0; i--)
        if (rows[i] != cols[i])
            for (int r = 0; r < n; r++) std::swap(m[r * n + rows[i]], m[r * n + cols[i]]);
    *x = b;
}

bool same(double a, double b) { return a == b || (isnan(a) && isnan(b)); }

} // namespace

// ---- gaussj ----

TEST(Gaussj, SolvesAndInverts)
{
    Net r(2);
    jordan &s = r.solver(0, 0);
    std::mt19937 random(3);
    std::uniform_real_distribution<double> one(-1.0, 1.0);
    for (int n : {1, 2, 3, 7, 20}) {
        Vector a(n * n), b(n), x(n), inv(n * n);
        for (double &v : a) v = one(random);
        for (double &v : b) v = one(random);
        const Vector a0 = a, b0 = b;
        double det;
        J(s, gaussj)(a.data(), b.data(), n, x.data(), inv.data(), &det);
        EXPECT_EQ(a, a0); // left unchanged
        const Vector unit = product(a0, inv, n);
        for (int i = 0; i < n; i++) {
            double sum = 0.0;
            for (int k = 0; k < n; k++) sum += a0[i * n + k] * x[k];
            EXPECT_NEAR(sum, b0[i], 1e-11);
            for (int j = 0; j < n; j++) EXPECT_NEAR(unit[i * n + j], i == j ? 1.0 : 0.0, 1e-11);
        }
    }
}

TEST(Gaussj, GivesTheDeterminantWithItsSign)
{
    Net r(2);
    jordan &s = r.solver(0, 0);
    const struct {
        Vector a;
        int n;
        double det;
    } cases[] = {{{-3.0}, 1, -3.0},
                 {{0, 1, 1, 0}, 2, -1.0},
                 {{1, 2, 3, 4}, 2, -2.0},
                 {{0, 1, 0, 0, 0, 1, 1, 0, 0}, 3, 1.0}, // a cyclic exchange is even
                 {{2, -1, 0, -1, 2, -1, 0, -1, 2}, 3, 4.0}};
    for (const auto &c : cases) {
        Vector b(c.n), x(c.n), inv(c.n * c.n);
        double det;
        J(s, gaussj)(c.a.data(), b.data(), c.n, x.data(), inv.data(), &det);
        EXPECT_NEAR(det, c.det, 1e-14);
    }
}

TEST(Gaussj, AgreesToTheBitWithTheStepsWrittenOut)
{
    Net r(2);
    jordan &s = r.solver(0, 0);
    std::mt19937 random(5);
    std::uniform_int_distribution<int> few(-2, 2), order(1, 9);
    for (int trial = 0; trial < 300; trial++) {
        // Small whole numbers: many equal elements, many singular matrices.
        const int n = order(random);
        Vector a(n * n), b(n), x(n), inv(n * n), x1, inv1;
        for (double &v : a) v = few(random);
        for (double &v : b) v = few(random) / 3.0;
        double det, det1;
        reference(a, b, n, &x1, &inv1, &det1);
        J(s, gaussj)(a.data(), b.data(), n, x.data(), inv.data(), &det);
        EXPECT_TRUE(same(det, det1)) << det << " " << det1;
        for (int i = 0; i < n; i++) EXPECT_TRUE(same(x[i], x1[i])) << x[i] << " " << x1[i];
        for (int i = 0; i < n * n; i++) EXPECT_TRUE(same(inv[i], inv1[i])) << inv[i] << " " << inv1[i];
    }
}

TEST(Gaussj, SpreadsNotANumbersFromAMatrixOfZeros)
{
    Net r(2);
    jordan &s = r.solver(0, 0);
    Vector a(9, 0.0), b = {1.0, 2.0, 3.0}, x(3), inv(9);
    double det;
    J(s, gaussj)(a.data(), b.data(), 3, x.data(), inv.data(), &det);
    EXPECT_FALSE(isfinite(x[0]));
    EXPECT_FALSE(isfinite(inv[0]));
}

TEST(Gaussj, TakesInfinitiesAndNotANumbersWithoutHarm)
{
    Net r(2);
    jordan &s = r.solver(0, 0);
    for (double v : {(double)NAN, (double)INFINITY}) {
        Vector a(16, v), b(4, v), x(4), inv(16);
        double det;
        J(s, gaussj)(a.data(), b.data(), 4, x.data(), inv.data(), &det);
        EXPECT_TRUE(isnan(x[3]));
    }
}

TEST(Gaussj, HoldsTheDeterminantFromAbove)
{
    EXPECT_EQ((*jordan_access::clampdet)(1e99), 1e99);
    EXPECT_EQ((*jordan_access::clampdet)(1.1e100), 1e100);
    EXPECT_EQ((*jordan_access::clampdet)(-1e300), -1e300);
    Net r(2);
    jordan &s = r.solver(0, 0);
    const Vector a = {1e60, 0, 0, 0, 1e60, 0, 0, 0, -0.5}; // 1e60, held, -0.5e100
    Vector b(3), x(3), inv(9);
    double det;
    J(s, gaussj)(a.data(), b.data(), 3, x.data(), inv.data(), &det);
    EXPECT_DOUBLE_EQ(det, -0.5e100);
}

TEST(Gaussj, RecordsAFailedAllocationAndLeavesZeros)
{
    for (int n : {1, 2}) {
        Net r(2);
        jordan &s = r.solver(0, 0);
        Vector a = {2, 0, 0, 2}, b = {1, 1}, x = {7, 7}, inv(4, 7.0);
        double det = 7.0;
        EXPECT_EQ(J(s, geterror)(), 0);
        fail_allocation(n);
        J(s, gaussj)(a.data(), b.data(), 2, x.data(), inv.data(), &det);
        fail_allocation(0);
        EXPECT_EQ(J(s, geterror)(), -20);
        EXPECT_EQ(x, Vector(2, 0.0));
        EXPECT_EQ(inv, Vector(4, 0.0));
        EXPECT_EQ(det, 1.0);
    }
}

TEST(JordanHelpers, ExchangeNumbersAndKeepTheLastError)
{
    double a = 1.0, b = 2.0;
    (*jordan_access::swapd)(&a, &b);
    EXPECT_EQ(a, 2.0);
    EXPECT_EQ(b, 1.0);
    Net r(2);
    jordan &s = r.solver(0, 0);
    EXPECT_EQ(J(s, tiny), 1.0e-20);
    EXPECT_EQ(J(s, ierralloc), -20);
    J(s, seterror)(5);
    J(s, checkalloc)(&a);
    EXPECT_EQ(J(s, geterror)(), 5);
    J(s, checkalloc)(nullptr);
    EXPECT_EQ(J(s, geterror)(), -20);
}

// ---- set-up and release ----

TEST(JordanConstructor, HoldsNoArrays)
{
    Net r(2);
    jordan &s = r.solver(0, 0);
    EXPECT_EQ(J(s, norm), nullptr);
    EXPECT_EQ(S(s, inv), nullptr);
    EXPECT_EQ(J(s, ierror), 0);
}

TEST(JordanBanner, HeadsTheReport)
{
    Net r(2);
    r.solver(0, 0).banner();
    EXPECT_EQ(r.report(), "\n\nGauss Jordan solution\nVersion 0.0\n");
}

TEST(JordanPrepare, TakesZeroedArraysOfTheOrderWithTheDatumRows)
{
    Net r(2);
    r.add("A", 1, 10);
    r.add("B", 3, 20);
    r.nunk2 = 1;
    jordan &s = r.solver(0, 3);
    EXPECT_EQ(s.prepare(), 0);
    EXPECT_EQ(S(s, nunk), 8);
    EXPECT_EQ(S(s, centre)[0], 2.0);
    EXPECT_EQ(S(s, centre)[1], 15.0);
    for (int k = 0; k < 64; k++) {
        EXPECT_EQ(J(s, norm)[k], 0.0);
        EXPECT_EQ(S(s, inv)[k], 0.0);
    }
    for (int k = 0; k < 8; k++) {
        EXPECT_EQ(S(s, rhs)[k], 0.0);
        EXPECT_EQ(S(s, delta)[k], 0.0);
    }
    EXPECT_EQ(r.report(), ""); // no trace without idebug
}

TEST(JordanPrepare, KeepsTheOrderWithoutDatumConditions)
{
    Net r(2);
    r.add("A", 1, 10);
    jordan &s = r.solver(0, 0);
    EXPECT_EQ(s.prepare(), 0);
    EXPECT_EQ(S(s, nunk), 2);
}

TEST(JordanPrepare, TracesTheObservations)
{
    Net r(2);
    r.add("A", 1, 10);
    r.add("B", 1, 20);
    r.observe(r.dist, 0, 1, 10.5, 0.01).typ = 1;
    r.n.p.idebug = 1;
    r.solver(1, 0).prepare();
    EXPECT_EQ(r.report(), "distances\nA         B                     10.50000        0.01000\n"
                          "height differences\ndirections\ngps baselines\nphoto coordinates\n");
}

TEST(JordanPrepare, ReturnsMinus1WithoutMemoryAndTellsWhichPair)
{
    for (int k = 1; k <= 4; k++) {
        Net r(2);
        r.add("A", 1, 10);
        jordan &s = r.solver(0, 0);
        fail_allocation(k);
        EXPECT_EQ(s.prepare(), -1);
        fail_allocation(0);
        EXPECT_EQ(r.report(), k <= 2 ? "pb with allocation of norm\n" : "pb with allocation of inv\n");
    }
}

TEST(JordanFinish, ReleasesEverythingAndMayBeCalledTwice)
{
    Net r(3);
    r.add("A", 1, 10, 5);
    jordan &s = r.solver(0, 0);
    s.prepare();
    S(s, statalloc)();
    s.finish();
    for (double *a : {S(s, rhs), S(s, delta), S(s, inv), J(s, norm), S(s, hlim), S(s, hnorm)}) EXPECT_EQ(a, nullptr);
    EXPECT_EQ(S(s, hall), nullptr);
    s.finish();
    EXPECT_EQ(r.report(), ""); // a missing file of stations is normal
}

TEST(JordanFinish, HandsAFileOfStationsToTheExportWhileTheInverseStands)
{
    StationFile file;
    Net r(3);
    r.add("A", 1, 10, 5);
    jordan &s = r.solver(1, 0);
    s.finish(); // no inverse yet
    EXPECT_EQ(r.report(), "");
    s.prepare();
    s.finish();
    EXPECT_EQ(r.report(), TOO_FEW);
    s.finish();
    EXPECT_EQ(r.report(), TOO_FEW); // not again
    EXPECT_EQ(S(s, inv), nullptr);
}

TEST(JordanFinish, LooksForNoFileOfStationsInThePlane)
{
    StationFile file;
    Net r(2);
    r.add("A", 1, 10);
    jordan &s = r.solver(1, 0);
    s.prepare();
    s.finish();
    EXPECT_EQ(r.report(), "");
}

// ---- normal equations ----

TEST(JordanAddrow, AddsTheProductsOfARowToBothTriangles)
{
    Net r(2);
    r.nunk1 = 5;
    r.nunk2 = 4;
    jordan &s = r.solver(0, 0);
    s.prepare();
    Vector n(81, 0.0), h(9, 0.0);
    const struct {
        std::vector<int> u1;
        Vector a1;
        std::vector<int> u2;
        Vector a2;
        double b;
    } rows[] = {{{4, 0}, {2, 3}, {1}, {5}, 0.5},
                {{}, {}, {3, 0}, {7, -1}, 2.0},
                {{2, 2}, {1.5, 0.5}, {}, {}, -3.0}, // a number that occurs twice adds up
                {{}, {}, {}, {}, 9.0}};
    for (const auto &row : rows) {
        write_row(s, row.u1, row.a1, row.u2, row.a2, row.b);
        Vector a(9, 0.0);
        for (size_t k = 0; k < row.u1.size(); k++) a[row.u1[k]] += row.a1[k];
        for (size_t k = 0; k < row.u2.size(); k++) a[5 + row.u2[k]] += row.a2[k];
        for (int i = 0; i < 9; i++) {
            h[i] += a[i] * row.b;
            for (int j = 0; j < 9; j++) n[i * 9 + j] += a[i] * a[j];
        }
    }
    for (int i = 0; i < 9; i++) {
        EXPECT_DOUBLE_EQ(S(s, rhs)[i], h[i]);
        for (int j = 0; j < 9; j++) EXPECT_DOUBLE_EQ(at(s, i, j), n[i * 9 + j]);
    }
}

TEST(JordanAddrow, TakesTheLongestRow)
{
    Net r(3);
    r.nunk1 = 7;
    r.nunk2 = 17;
    jordan &s = r.solver(0, 0);
    s.prepare();
    std::vector<int> u1, u2;
    for (int k = 0; k < 7; k++) u1.push_back(k);
    for (int k = 0; k < 17; k++) u2.push_back(k);
    write_row(s, u1, Vector(7, 2.0), u2, Vector(17, 3.0), 1.0);
    EXPECT_EQ(at(s, 0, 23), 6.0);
    EXPECT_EQ(at(s, 23, 23), 9.0);
    EXPECT_EQ(S(s, rhs)[23], 3.0);
}

// ---- datum rows ----

namespace {

const Entries TURNS = {{3, 1, 'Z', 2}, {3, 2, 'y', 1}, {4, 0, 'z', -1}, {4, 2, 'X', 0}, {5, 0, 'Y', 1}, {5, 1, 'x', 0}};

} // namespace

TEST(JordanZeronormal, KeepsTheCorrections)
{
    Net r(2);
    scatter(r, 2);
    jordan &s = r.solver(0, 0);
    s.prepare();
    S(s, delta)[1] = 5.0;
    s.zeronormal();
    EXPECT_EQ(S(s, delta)[1], 5.0);
}

TEST(JordanDatum, HeightsAreHeldByTheirSum) { expect_table<jordan>(1, 1, {{0, 2, '1', 2}}); }

TEST(JordanDatum, PlaneHasShiftsAndTurn)
{
    expect_table<jordan>(2, 3, {{0, 0, '1', 0}, {1, 1, '1', 1}, {2, 0, 'Y', 1}, {2, 1, 'x', 0}});
}

TEST(JordanDatum, PlaneWithoutDistancesHasTheScaleToo)
{
    expect_table<jordan>(
        2, 4, {{0, 0, '1', 0}, {1, 1, '1', 1}, {2, 0, 'Y', 1}, {2, 1, 'x', 0}, {3, 0, 'x', 0}, {3, 1, 'y', 1}});
}

TEST(JordanDatum, SpaceHasThreeTurnsAndScale)
{
    expect_table<jordan>(3, 6, joined(shifts(), TURNS));
    expect_table<jordan>(3, 7, joined(joined(shifts(), TURNS), scaleat(6)));
}

// The conditions span what the observations of a free network do not determine: no distance
// changes along them, and the scale changes each distance by itself.
TEST(JordanDatum, ShiftsAndTurnsChangeNoDistance)
{
    for (int dim : {2, 3}) {
        Net r(dim);
        scatter(r, 5);
        for (int p = 0; p < 5; p++)
            for (int q = 0; q < p; q++) r.observe(r.dist, p, q, 10.0, 1.0);
        // In the plane a scale row needs a network without distances, in space it has its own count.
        const int nfree = dim == 2 ? 3 : 6;
        jordan &s = r.solver(5, nfree + 1);
        s.prepare();
        s.zeronormal();
        for (const measure &m : r.dist) {
            double d[3], length = 0.0;
            for (int c = 0; c < dim; c++) {
                d[c] = m.p2->xpt[c] - m.p1->xpt[c];
                length += d[c] * d[c];
            }
            length = sqrt(length);
            for (int k = 0; k <= nfree; k++) {
                double change = 0.0;
                for (int c = 0; c < dim; c++)
                    change += d[c] / length * (at(s, r.nunk1 + k, m.p2->n0[c]) - at(s, r.nunk1 + k, m.p1->n0[c]));
                EXPECT_NEAR(change, k < nfree ? 0.0 : length, 1e-12) << k;
            }
        }
    }
}

TEST(JordanDatum, TurnsAndScaleAreOrthogonalToShifts)
{
    Net r(3);
    scatter(r, 6);
    jordan &s = r.solver(0, 7);
    s.prepare();
    s.zeronormal();
    for (int k = 0; k < 3; k++)
        for (int l = 3; l < 7; l++) {
            double sum = 0.0;
            for (int c = 0; c < r.nunk1; c++) sum += at(s, r.nunk1 + k, c) * at(s, r.nunk1 + l, c);
            EXPECT_NEAR(sum, 0.0, 1e-11); // the centre is the mean
        }
}

TEST(JordanResolution, SatisfiesTheConditionsAndLeavesMultipliersOfZero)
{
    for (int dim : {2, 3}) {
        Net r(dim);
        scatter(r, 6);
        for (int p = 0; p < 6; p++)
            for (int q = 0; q < p; q++) {
                double sum = 0.0;
                for (int c = 0; c < dim; c++) sum += pow(r.points[p].xpt[c] - r.points[q].xpt[c], 2);
                r.observe(r.dist, p, q, sqrt(sum) + 0.01 * ((p * q) % 5 - 2), 0.01);
            }
        const int ndatum = dim == 2 ? 3 : 6;
        jordan &s = r.solver(6, ndatum);
        s.prepare();
        s.zeronormal();
        S(s, normal)();
        ASSERT_EQ(s.resolution(), 0);
        double largest = 0.0;
        for (int c = 0; c < r.nunk1; c++) largest = fmax(largest, fabs(S(s, delta)[c]));
        EXPECT_GT(largest, 1e-3);
        for (int k = 0; k < ndatum; k++) {
            double sum = 0.0;
            for (int c = 0; c < r.nunk1; c++) sum += at(s, r.nunk1 + k, c) * S(s, delta)[c];
            EXPECT_NEAR(sum, 0.0, 1e-10);
            EXPECT_NEAR(S(s, delta)[r.nunk1 + k], 0.0, 1e-9);
        }
    }
}

// ---- imported coordinates ----

TEST(JordanImport, NeedsMemoryForItsIndex)
{
    Net r(1);
    r.add("A", 0, 0, 5);
    jordan &s = r.solver(0, 0);
    S(s, icon) = 2;
    fail_allocation(3); // behind norm and rhs
    EXPECT_EQ(s.prepare(), -1);
    fail_allocation(0);
    EXPECT_EQ(r.report(), "pb with allocation of norm\n");
    s.finish();
}

// ---- trace of the system ----

TEST(JordanDebugnormal, PrintsTheLowerTriangleWithItsCounterAndTheRightHandSide)
{
    Net r(1);
    r.add("A", 0, 0, 5);
    r.add("B", 0, 0, 6);
    r.nunk2 = 1;
    jordan &s = r.solver(0, 1);
    s.prepare();
    s.zeronormal();
    write_row(s, {0, 1}, {-2.0, 2.0}, {}, {}, 0.5);
    write_row(s, {}, {}, {0}, {3.0}, -1.0);
    s.debugnormal();
    EXPECT_EQ(r.report(), "type 1\n"
                          "line 0   delta           -1.000000000000\n"
                          "0               4.000000000000\n"
                          "line 1   delta            1.000000000000\n"
                          "1              -4.000000000000\n"
                          "2               4.000000000000\n"
                          "type 2\n"
                          "line 2   delta           -3.000000000000\n"
                          "5               9.000000000000\n"
                          "type 3\n"
                          "line 3   delta            0.000000000000\n"
                          "6               1.000000000000\n"
                          "7               1.000000000000\n"
                          "\nRHS to check\n"
                          "first RHS     #  0 =           -1.000000000000\n"
                          "first RHS     #  1 =            1.000000000000\n"
                          "other RHS     #  0 =           -3.000000000000\n"
                          "datum RHS     #  0 =            0.000000000000\n");
}

TEST(JordanDebugnormal, HasNoDatumLinesWithoutConditions)
{
    Net r(1);
    jordan &s = r.solver(0, 0);
    s.prepare();
    s.debugnormal();
    EXPECT_EQ(r.report(), "type 1\ntype 2\ntype 3\n\nRHS to check\n");
}

// ---- inverse ----

TEST(JordanInverse, StandsFromTheLastResolution)
{
    Net r(1);
    r.add("A", 0, 0, 5);
    r.add("B", 0, 0, 6);
    r.points[0].n0[2] = N_NONE;
    r.points[1].n0[2] = 0;
    r.nunk1 = 1;
    r.observe(r.difh, 0, 1, 1.25, 0.5 * r.sdifh);
    jordan &s = r.solver(0, 0);
    s.prepare();
    EXPECT_EQ(s.inverse(), 0);
    EXPECT_EQ(S(s, inv)[0], 0.0); // nothing was done
    s.zeronormal();
    S(s, normal)();
    EXPECT_EQ(s.resolution(), 0);
    EXPECT_DOUBLE_EQ(S(s, delta)[0], 0.25);
    EXPECT_DOUBLE_EQ(S(s, inv)[0], 0.25);
    S(s, inv)[0] = 7.0;
    EXPECT_EQ(s.inverse(), 0);
    EXPECT_EQ(S(s, inv)[0], 7.0);
    S(s, irun) = -2;
    EXPECT_EQ(s.inverse(), 0);
    EXPECT_DOUBLE_EQ(S(s, inv)[0], 0.25);
}

TEST(JordanResolution, TakesANetworkWithoutUnknowns)
{
    Net r(2);
    jordan &s = r.solver(0, 0);
    EXPECT_EQ(s.iterate(), 0);
}

TEST(JordanResolution, FailsWithoutWorkArraysAndStopsTheRun)
{
    for (int k : {5, 6}) { // behind the four arrays of prepare: pivots, flags
        Net r(1);
        r.add("A", 0, 0, 5);
        jordan &s = r.solver(0, 0);
        fail_allocation(k);
        EXPECT_EQ(s.iterate(), -3);
        fail_allocation(0);
        EXPECT_EQ(r.report(), "\n\nGauss Jordan solution\nVersion 0.0\n\nProgram stops in resolution\n");
        EXPECT_EQ(r.points[0].xpt[2], 5.0);
    }
}

TEST(JordanInverse, FailsWithoutWorkArraysAndStopsTheInversion)
{
    for (int k : {1, 2}) {
        Net r(1);
        r.add("A", 0, 0, 5);
        r.n.p.irun = -2;
        jordan &s = r.solver(0, 0);
        ASSERT_EQ(s.iterate(), 0);
        const std::string before = r.report();
        fail_allocation(k);
        EXPECT_EQ(s.inversion(), -5);
        fail_allocation(0);
        EXPECT_EQ(r.report(), before + "\nProgram stops in inverse\n");
        EXPECT_EQ(S(s, inv), nullptr);
    }
}

// ---- whole runs ----

namespace {

// A plane network of two stations and four targets with all distances and directions, to which
// small errors were added; drawn where the shift and the turn (radians) put it.
struct Plane {
    double dx = 0.0, dy = 0.0, turn = 0.0;
    bool reversed = false, fixed = false, directions = true;
};

const double PLANE[6][2] = {{0, 0}, {400, 30}, {120, 310}, {350, 280}, {-90, 150}, {210, -200}};
const char *const PLANE_NAMES[6] = {"S1", "S2", "A", "B", "C", "D"};

double plane_error(int p, int q) { return 0.004 * sin(5.0 * p + 11.0 * q); }

void place(const Plane &f, const double x[2], double y[2])
{
    y[0] = f.dx + x[0] * cos(f.turn) - x[1] * sin(f.turn);
    y[1] = f.dy + x[0] * sin(f.turn) + x[1] * cos(f.turn);
}

void draw(Network &n, const Plane &f)
{
    for (int k = 0; k < 6; k++) {
        const int p = f.reversed ? (k < 2 ? 1 - k : 7 - k) : k;
        const double rough[2] = {PLANE[p][0] + 0.05 * (p % 3 - 1), PLANE[p][1] - 0.04 * (p % 2)};
        double x[2];
        place(f, rough, x);
        int *code;
        if (p < 2) {
            station_input &s = n.station(PLANE_NAMES[p], x[0], x[1]);
            s.r[2] = -f.turn + 0.001 * p;
            s.ir[2] = f.directions ? CODE_FREE : CODE_FIXED;
            code = s.ix;
        } else {
            code = n.target(PLANE_NAMES[p], x[0], x[1]).ix;
        }
        if (f.fixed && (p == 2 || p == 3)) code[0] = code[1] = CODE_FIXED;
    }
    for (int p = 0; p < 2; p++)
        for (int q = 0; q < 6; q++) {
            if (p == q) continue;
            const double dx = PLANE[q][0] - PLANE[p][0], dy = PLANE[q][1] - PLANE[p][1];
            n.distance(PLANE_NAMES[p], PLANE_NAMES[q], hypot(dx, dy) + plane_error(p, q), 0.004);
            if (f.directions)
                n.direction(PLANE_NAMES[p], PLANE_NAMES[q], atan2(dy, dx) + 1e-5 * plane_error(q, p) / 0.004, 1e-5);
        }
}

// Adjusted coordinates of the six points in the order of PLANE.
Vector adjusted(Network &n)
{
    Vector x;
    vorn run(n.ready());
    EXPECT_EQ(run.vornstart(), 0) << n.report();
    EXPECT_EQ(run.vornjordan(), 0) << n.report();
    for (const char *name : PLANE_NAMES)
        for (int k = 0; k < V(run, npoints); k++) {
            const point &p = V(run, points)[k];
            if (strncmp(p.name, name, strlen(name)) != 0) continue;
            x.push_back(p.xpt[0]);
            x.push_back(p.xpt[1]);
        }
    return x;
}

// Solution of the symmetric positive system n x = h by the square root of the matrix.
Vector cholesky(Vector n, Vector h)
{
    const int m = (int)h.size();
    for (int i = 0; i < m; i++)
        for (int j = 0; j <= i; j++) {
            double sum = n[i * m + j];
            for (int k = 0; k < j; k++) sum -= n[i * m + k] * n[j * m + k];
            n[i * m + j] = i == j ? sqrt(sum) : sum / n[j * m + j];
        }
    for (int i = 0; i < m; i++) {
        for (int k = 0; k < i; k++) h[i] -= n[i * m + k] * h[k];
        h[i] /= n[i * m + i];
    }
    for (int i = m - 1; i >= 0; i--) {
        for (int k = i + 1; k < m; k++) h[i] -= n[k * m + i] * h[k];
        h[i] /= n[i * m + i];
    }
    return h;
}

// Least squares on the distances of a network with A and B fixed, by normal equations.
Vector trilaterated(const Network &n, Vector x)
{
    for (int step = 0; step < 10; step++) {
        Vector normal(144, 0.0), h(12, 0.0);
        for (int k = 4; k < 8; k++) normal[k * 13] = 1.0; // fixed
        for (const measure_input &m : n.distances) {
            int at[2] = {0, 0};
            for (int p = 0; p < 6; p++) {
                if (strcmp(m.from, PLANE_NAMES[p]) == 0) at[0] = p;
                if (strcmp(m.to, PLANE_NAMES[p]) == 0) at[1] = p;
            }
            const double dx = x[2 * at[1]] - x[2 * at[0]], dy = x[2 * at[1] + 1] - x[2 * at[0] + 1], c = hypot(dx, dy);
            Vector a(12, 0.0);
            for (int end = 0; end < 2; end++) {
                if (at[end] == 2 || at[end] == 3) continue;
                a[2 * at[end]] = (end ? dx : -dx) / c / m.sig;
                a[2 * at[end] + 1] = (end ? dy : -dy) / c / m.sig;
            }
            for (int i = 0; i < 12; i++) {
                h[i] += a[i] * (m.val - c) / m.sig;
                for (int j = 0; j < 12; j++) normal[i * 12 + j] += a[i] * a[j];
            }
        }
        const Vector delta = cholesky(normal, h);
        for (int k = 0; k < 12; k++) x[k] += delta[k];
    }
    return x;
}

} // namespace

TEST(JordanRun, SolvesADistanceNetworkAsItsNormalEquationsDo)
{
    Network n(2);
    Plane f;
    f.fixed = true;
    f.directions = false;
    draw(n, f);
    n.p.convergence = 1e-10;
    Vector x;
    for (const station_input &s : n.stations) x.insert(x.end(), {s.x[0], s.x[1]});
    for (const target_input &t : n.targets) x.insert(x.end(), {t.x[0], t.x[1]});
    const Vector want = trilaterated(n, x), found = adjusted(n);
    ASSERT_EQ(found.size(), 12u);
    for (int k = 0; k < 12; k++) EXPECT_NEAR(found[k], want[k], 1e-8);
}

TEST(JordanRun, MovesItsResultWithTheNetwork)
{
    Network n(2), m(2);
    Plane f, g;
    g.dx = 1000.0, g.dy = -700.0, g.turn = 0.6;
    draw(n, f);
    draw(m, g);
    n.p.convergence = m.p.convergence = 1e-9;
    const Vector a = adjusted(n), b = adjusted(m);
    ASSERT_EQ(a.size(), 12u);
    ASSERT_EQ(b.size(), 12u);
    for (int p = 0; p < 6; p++) {
        double want[2];
        place(g, &a[2 * p], want);
        EXPECT_NEAR(b[2 * p], want[0], 1e-8);
        EXPECT_NEAR(b[2 * p + 1], want[1], 1e-8);
    }
}

TEST(JordanRun, DoesNotDependOnTheOrderOfThePoints)
{
    Network n(2), m(2);
    Plane f, g;
    g.reversed = true;
    draw(n, f);
    draw(m, g);
    n.p.convergence = m.p.convergence = 1e-9;
    const Vector a = adjusted(n), b = adjusted(m);
    ASSERT_EQ(a.size(), 12u);
    ASSERT_EQ(b.size(), 12u);
    for (int k = 0; k < 12; k++) EXPECT_NEAR(a[k], b[k], 1e-9);
}

TEST(JordanRun, KeepsTheCentreOfAFreeNetwork)
{
    Network n(2);
    draw(n, Plane());
    n.p.convergence = 1e-9;
    double before[2] = {0, 0}, after[2] = {0, 0};
    for (const station_input &s : n.stations)
        for (int c = 0; c < 2; c++) before[c] += s.x[c];
    for (const target_input &t : n.targets)
        for (int c = 0; c < 2; c++) before[c] += t.x[c];
    const Vector a = adjusted(n);
    for (size_t k = 0; k < a.size(); k++) after[k % 2] += a[k];
    EXPECT_NEAR(after[0], before[0], 1e-8);
    EXPECT_NEAR(after[1], before[1], 1e-8);
}

namespace {

// Levelling of four bench marks in a loop with a diagonal.
void level(Network &n, int code)
{
    n.p.dim = 1;
    n.target("A", 0, 0, 100.0).ix[2] = code;
    n.target("B", 0, 0, 101.1);
    n.target("C", 0, 0, 103.0);
    n.target("D", 0, 0, 102.4);
    n.heightdiff("A", "B", 1.021, 0.001);
    n.heightdiff("B", "C", 1.983, 0.002);
    n.heightdiff("C", "D", -0.506, 0.001);
    n.heightdiff("D", "A", -2.495, 0.002);
    n.heightdiff("A", "C", 3.001, 0.004);
}

// Heights of B, C, D above A by the normal equations of the five lines.
Vector levelled()
{
    const double sigma[5] = {0.001, 0.002, 0.001, 0.002, 0.004}, l[5] = {1.021, 1.983, -0.506, -2.495, 3.001};
    const int from[5] = {-1, 0, 1, 2, -1}, to[5] = {0, 1, 2, -1, 1};
    Vector n(9, 0.0), h(3, 0.0);
    for (int k = 0; k < 5; k++) {
        double a[3] = {0, 0, 0};
        if (from[k] >= 0) a[from[k]] = -1.0 / sigma[k];
        if (to[k] >= 0) a[to[k]] = 1.0 / sigma[k];
        for (int i = 0; i < 3; i++) {
            h[i] += a[i] * l[k] / sigma[k];
            for (int j = 0; j < 3; j++) n[3 * i + j] += a[i] * a[j];
        }
    }
    return cholesky(n, h);
}

} // namespace

TEST(JordanRun, SolvesALevellingNetworkAsItsNormalEquationsDo)
{
    const Vector want = levelled();
    for (int code : {CODE_FIXED, CODE_FREE}) {
        Network n(1);
        level(n, code);
        vorn run(n.ready());
        ASSERT_EQ(run.vornstart(), 0) << n.report();
        ASSERT_EQ(run.vornjordan(), 0) << n.report();
        const point *p = V(run, points);
        for (int k = 0; k < 3; k++) EXPECT_NEAR(p[k + 1].xpt[2] - p[0].xpt[2], want[k], 1e-9);
        // A fixed height stays; a free network keeps the mean of its heights.
        const double mean = (p[0].xpt[2] + p[1].xpt[2] + p[2].xpt[2] + p[3].xpt[2]) / 4.0;
        if (code == CODE_FIXED)
            EXPECT_EQ(p[0].xpt[2], 100.0);
        else
            EXPECT_NEAR(mean, (100.0 + 101.1 + 103.0 + 102.4) / 4.0, 1e-9);
    }
}
