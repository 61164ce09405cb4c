// Congruence of epochs against direct computations: a basis of the space across the open motions, subsets of points.

#include "adjust/congruence.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "adjust/dense_solution.h"

using namespace vornadjust;

namespace {

// Points of a plane with random full cofactors; shifts and the turn are open.
struct Plane {
    Epochs epochs;
    std::mt19937 engine;

    Plane(unsigned seed, int points, int n_epochs) : engine(seed)
    {
        const int n = 2 * points;
        std::vector<double> x(n);
        for (double &c : x) c = 100.0 * normal();
        for (int p = 0; p < points; p++) epochs.first.push_back(2 * p + 2);
        Dense g(n, 3);
        for (int p = 0; p < points; p++) {
            g(2 * p, 0) = g(2 * p + 1, 1) = 1.0;
            g(2 * p, 2) = -x[2 * p + 1] / 100.0, g(2 * p + 1, 2) = x[2 * p] / 100.0;
        }
        epochs.motions = small_svd(g).u;
        for (int e = 0; e < n_epochs; e++) {
            EpochValues v;
            v.q = cofactors(n);
            v.x = x;
            for (double &c : v.x) c += 0.001 * normal();
            epochs.values.push_back(v);
        }
    }

    double normal() { return std::normal_distribution<double>()(engine); }

    std::vector<double> cofactors(int n)
    {
        std::vector<double> root((size_t)n * n), q((size_t)n * n, 0.0);
        for (double &r : root) r = 0.001 * normal();
        for (int i = 0; i < n; i++)
            for (int j = 0; j < n; j++)
                for (int k = 0; k < n; k++) q[(size_t)i * n + j] += root[(size_t)i * n + k] * root[(size_t)j * n + k];
        return q;
    }

    // The same with each epoch in another datum: Q + G a^T + a G^T + G b G^T, x + G t.
    Plane moved()
    {
        Plane other = *this;
        const int n = epochs.n();
        for (EpochValues &v : other.epochs.values)
            for (int d = 0; d < 3; d++) {
                std::vector<double> a(n);
                for (double &c : a) c = 1e-7 * normal();
                const double t = 0.01 * normal(), b = 1e-4;
                for (int i = 0; i < n; i++) {
                    v.x[i] += t * epochs.motions(i, d);
                    for (int j = 0; j < n; j++)
                        v.q[(size_t)i * n + j] += epochs.motions(i, d) * a[j] + a[i] * epochs.motions(j, d) +
                                                  b * epochs.motions(i, d) * epochs.motions(j, d);
                }
            }
        return other;
    }
};

// y^T N (N^T Q N)^-1 N^T y over the points that `in` names, N orthonormal across their motions, block by epoch.
double direct(const Epochs &e, const std::vector<char> &in)
{
    std::vector<int> at;
    for (int p = 0; p < e.points(); p++)
        for (int i = e.first[p]; i < e.first[p + 1] && in[p]; i++) at.push_back(i);
    const int k = (int)at.size(), m = (int)e.values.size() - 1, n = e.n();
    Matrix g(k, k);
    for (int i = 0; i < k; i++)
        for (int j = 0; j < e.motions.cols; j++) g(i, j) = e.motions(at[i], j);
    const Svd s = svd(transposed(g)); // null vectors of G^T are those of singular value 0
    Real largest = 0;
    for (const Real v : s.s) largest = std::fmax(largest, v);
    std::vector<int> across;
    for (int j = 0; j < k; j++)
        if (s.s[j] < 1e-12L * largest) across.push_back(j);
    const int h = (int)across.size();
    Matrix n_all(k * m, h * m), q(k * m, k * m), y(k * m, 1);
    for (int a = 0; a < m; a++)
        for (int i = 0; i < k; i++) {
            y(a * k + i, 0) = e.values[a + 1].x[at[i]] - e.values[0].x[at[i]];
            for (int j = 0; j < h; j++) n_all(a * k + i, a * h + j) = s.v(i, across[j]);
            for (int b = 0; b < m; b++)
                for (int j = 0; j < k; j++)
                    q(a * k + i, b * k + j) = e.values[0].q[(size_t)at[i] * n + at[j]] +
                                              (a == b ? e.values[a + 1].q[(size_t)at[i] * n + at[j]] : 0.0);
        }
    const Matrix t = transposed(n_all), ny = t * y;
    return (double)(transposed(ny) * inverse(t * q * n_all) * ny)(0, 0);
}

} // namespace

TEST(Congruence, EqualsADirectComputationAcrossTheMotions)
{
    for (unsigned seed = 1; seed <= 6; seed++) {
        const Plane plane(seed, 6, 2 + (int)seed % 2);
        const Congruence c(plane.epochs);
        ASSERT_TRUE(c.good());
        const double wanted = direct(plane.epochs, std::vector<char>(6, 1));
        EXPECT_NEAR(c.test().q, wanted, 1e-6 * wanted);
        EXPECT_EQ(c.test().h, ((int)plane.epochs.values.size() - 1) * (12 - 3));
    }
}

TEST(Congruence, DoesNotDependOnTheDatumOfAnyEpoch)
{
    Plane plane(11, 6, 3);
    const Plane moved = plane.moved();
    const Congruence a(plane.epochs), b(moved.epochs);
    ASSERT_TRUE(a.good() && b.good());
    EXPECT_NEAR(a.test().q, b.test().q, 1e-5 * a.test().q);
    for (int p = 0; p < 6; p++) EXPECT_NEAR(a.share(p).q, b.share(p).q, 1e-5 * a.test().q);
}

TEST(Congruence, WithoutPointsIsThatOfTheOthersAlone)
{
    const Plane plane(21, 7, 3);
    Congruence c(plane.epochs);
    std::vector<char> in(7, 1);
    for (const int gone : {4, 0, 6, 1}) {
        const Squares share = c.share(gone), before = c.test();
        in[gone] = 0;
        c.remove(gone);
        const double wanted = direct(plane.epochs, in);
        EXPECT_FALSE(c.has(gone));
        EXPECT_NEAR(c.test().q, wanted, 1e-6 * before.q);
        EXPECT_EQ(c.test().h, before.h - share.h);
        EXPECT_EQ(share.h, 4);
    }
    EXPECT_EQ(c.test().h, 2 * (6 - 3));
}

// Two points of a plane with shifts and a turn have one distance: removing one takes what is left.
TEST(Congruence, CountsWhatThePointsStillTell)
{
    const Plane plane(31, 3, 2);
    Congruence c(plane.epochs);
    c.remove(2);
    EXPECT_EQ(c.test().h, 1);
    EXPECT_EQ(c.share(0).h, 1);
    EXPECT_NEAR(c.share(0).q, c.test().q, 1e-9 * c.test().q);
}

TEST(Congruence, SaysWhereCofactorsAreNotPositiveDefinite)
{
    Plane plane(41, 4, 2);
    for (EpochValues &v : plane.epochs.values)
        for (int i = 0; i < 4; i++) // more coordinates without errors than motions
            for (int j = 0; j < 8; j++) v.q[(size_t)i * 8 + j] = v.q[(size_t)j * 8 + i] = 0.0;
    EXPECT_FALSE(Congruence(plane.epochs).good());
}

// S Q S^T and S y with S = I - G (G_s^T G_s)^-1 G_s^T as written.
TEST(StableDatum, IsTheTransformationAsWritten)
{
    const Plane plane(51, 5, 2);
    const std::vector<char> stayed = {1, 0, 1, 1, 0};
    const StableDatum datum = stable_datum(plane.epochs, stayed);
    ASSERT_TRUE(datum.carried);
    Matrix g(10, 3), gs(10, 3), q(10, 10), y(10, 1);
    std::vector<double> plain(10);
    for (int i = 0; i < 10; i++) {
        for (int j = 0; j < 3; j++) g(i, j) = plane.epochs.motions(i, j), gs(i, j) = stayed[i / 2] * g(i, j);
        for (int j = 0; j < 10; j++) q(i, j) = plane.epochs.values[1].q[(size_t)i * 10 + j];
        plain[i] = 0.001 * i, y(i, 0) = plain[i];
    }
    const Matrix s = identity(10) - g * inverse(transposed(gs) * gs) * transposed(gs);
    const Matrix wanted = s * q * transposed(s), moved = s * y;
    const std::vector<std::vector<double>> blocks = transformed_blocks(plane.epochs, datum, plane.epochs.values[1].q);
    const std::vector<double> shifts = transformed(datum, plain);
    for (int i = 0; i < 10; i++) {
        EXPECT_NEAR(shifts[i], (double)moved(i, 0), 1e-15);
        for (int k = 0; k < 2; k++) EXPECT_NEAR(blocks[i / 2][i % 2 * 2 + k], (double)wanted(i, i / 2 * 2 + k), 1e-18);
    }
}

TEST(StableDatum, IsNotCarriedByTooFewPoints)
{
    const Plane plane(61, 5, 2);
    EXPECT_FALSE(stable_datum(plane.epochs, {1, 0, 0, 0, 0}).carried);
    EXPECT_TRUE(stable_datum(plane.epochs, {1, 1, 0, 0, 0}).carried);
}

TEST(InvertFull, SolvesALargeMatrix)
{
    const int n = 300;
    Plane plane(71, 1, 2);
    std::vector<double> a = plane.cofactors(n), x = a;
    for (int i = 0; i < n; i++) a[(size_t)i * n + i] += 1e-6, x[(size_t)i * n + i] += 1e-6;
    ASSERT_TRUE(invert_full(n, &x));
    for (int i = 0; i < n; i += 37)
        for (int j = 0; j < n; j += 41) {
            double sum = 0.0;
            for (int k = 0; k < n; k++) sum += a[(size_t)i * n + k] * x[(size_t)k * n + j];
            EXPECT_NEAR(sum, i == j ? 1.0 : 0.0, 1e-9);
        }
}
