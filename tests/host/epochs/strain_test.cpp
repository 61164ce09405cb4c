// Strain of groups against closed formulas: exact strains come back, standard deviations are those of a dense
// propagation, what is open is not told.

#include "host/epochs/strain.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace vornhost;
using vornadjust::Dense;

namespace {

const std::vector<double> square = {0, 0, 100, 0, 100, 100, 0, 100}; // x y of four corners

std::vector<double> unit(size_t n, double variance)
{
    std::vector<double> q(n * n, 0.0);
    for (size_t i = 0; i < n; i++) q[i * n + i] = variance;
    return q;
}

// Shifts of a strain and turn with a translation.
std::vector<double> strained(double exx, double eyy, double exy, double turn)
{
    std::vector<double> d;
    for (size_t i = 0; i < square.size(); i += 2) {
        const double x = square[i], y = square[i + 1];
        d.push_back(0.3 + exx * x + (exy - turn) * y);
        d.push_back(-0.2 + (exy + turn) * x + eyy * y);
    }
    return d;
}

const VarianceFactor known = {1.0, INFINITY};

// Orthonormal motions of the square: shifts, and the turn and the scale about its middle.
Dense motions(bool turn, bool scale)
{
    Dense g(8, 2 + turn + scale);
    for (int i = 0; i < 8; i++) {
        const double x = square[(size_t)(i - i % 2)] - 50, y = square[(size_t)(i - i % 2 + 1)] - 50;
        g(i, i % 2) = 0.5;
        if (turn) g(i, 2) = (i % 2 == 0 ? -y : x) / std::sqrt(20000.0);
        if (scale) g(i, 2 + turn) = (i % 2 == 0 ? x : y) / std::sqrt(20000.0);
    }
    return g;
}

} // namespace

// With variances s^2 of all shifts an element of a column c has s / |c|: exx of the square 4 x 50^2.
TEST(Strain, OfASquareIsThatOfClosedFormulas)
{
    const double s = 0.001;
    const Strain found =
        find_strain(2, square, strained(3e-5, -1e-5, 2e-5, 4e-5), unit(8, s * s), Dense(8, 0), known, 0.05);
    ASSERT_TRUE(found.made());
    const double root = std::sqrt(4 * 50.0 * 50.0);
    EXPECT_NEAR(found.elements[0].value, 3e-5, 1e-15);
    EXPECT_NEAR(found.elements[1].value, -1e-5, 1e-15);
    EXPECT_NEAR(found.elements[2].value, 2e-5, 1e-15);
    EXPECT_NEAR(found.elements[0].deviation, s / root, 1e-12);
    EXPECT_NEAR(found.elements[2].deviation, s / (root * std::sqrt(2.0)), 1e-12);
    ASSERT_TRUE(found.mean && found.turns[0]);
    EXPECT_NEAR(found.mean->value, 1e-5, 1e-15);
    EXPECT_NEAR(found.turns[0]->value, 4e-5, 1e-15);
    EXPECT_NEAR(found.turns[0]->deviation, s / (root * std::sqrt(2.0)), 1e-12);
    const double half = std::hypot(2e-5, 2e-5); // (exx - eyy) / 2 and exy
    EXPECT_NEAR(found.principal[0].value, 1e-5 + half, 1e-14);
    EXPECT_NEAR(found.principal[1].value, 1e-5 - half, 1e-14);
    EXPECT_NEAR(found.shear.value, 2 * half, 1e-14);
    EXPECT_NEAR(found.bearing, 0.5 * std::atan2(4e-5, 4e-5), 1e-9);
    // E' C^-1 E / 3 with the columns above, which are orthogonal
    const double squares = (9e-10 + 1e-10) * root * root / (s * s) + 4e-10 * 2 * root * root / (s * s);
    EXPECT_NEAR(found.strained.value, squares / 3, 1e-6);
    EXPECT_EQ(found.strained.h, 3);
    EXPECT_EQ(found.homogeneous.h, 2);
    EXPECT_NEAR(found.homogeneous.value, 0.0, 1e-9);
}

TEST(Strain, LeavesOutWhatIsOpenAndDoesNotDependOnTheDatum)
{
    std::vector<double> q = unit(8, 1e-6), shifts = strained(3e-5, -1e-5, 2e-5, 4e-5);
    const Dense open = motions(true, true);
    const Strain found = find_strain(2, square, shifts, q, open, known, 0.05);
    ASSERT_TRUE(found.made());
    EXPECT_FALSE(found.mean);
    EXPECT_FALSE(found.turns[0]);
    EXPECT_NEAR(found.elements[0].value, 2e-5, 1e-14); // less the mean of 1e-5
    EXPECT_NEAR(found.elements[1].value, -2e-5, 1e-14);
    EXPECT_NEAR(found.shear.value, 2 * std::hypot(2e-5, 2e-5), 1e-13);
    EXPECT_EQ(found.strained.h, 2);
    EXPECT_EQ(found.homogeneous.h, 2);
    for (size_t i = 0; i < 8; i++)
        for (int c = 0; c < 4; c++) { // another datum: shifts and cofactors along the motions
            shifts[i] += 0.1 * (c + 1) * open((int)i, c);
            for (size_t j = 0; j < 8; j++) q[i * 8 + j] += 1e-5 * open((int)i, c) * open((int)j, c);
        }
    const Strain other = find_strain(2, square, shifts, q, open, known, 0.05);
    for (size_t i = 0; i < 3; i++) {
        EXPECT_NEAR(other.elements[i].value, found.elements[i].value, 1e-12);
        EXPECT_NEAR(other.elements[i].deviation, found.elements[i].deviation, 1e-12);
    }
    EXPECT_NEAR(other.strained.value, found.strained.value, 1e-6 * found.strained.value);
    const Strain turned = find_strain(2, square, shifts, unit(8, 1e-6), motions(true, false), known, 0.05);
    EXPECT_TRUE(turned.mean.has_value());
    EXPECT_FALSE(turned.turns[0]);
}

// Of groups that nothing strained the tests reject as often as their level says.
TEST(Strain, TestsRejectAsOftenAsTheirLevel)
{
    std::mt19937 engine(5);
    std::normal_distribution<double> normal;
    const int runs = 2000;
    int strain = 0, unlike = 0;
    for (int r = 0; r < runs; r++) {
        std::vector<double> shifts;
        for (int i = 0; i < 8; i++) shifts.push_back(0.001 * normal(engine));
        const Strain s = find_strain(2, square, shifts, unit(8, 1e-6), motions(true, false), known, 0.05);
        strain += !s.strained.passed(), unlike += !s.homogeneous.passed();
    }
    const double wanted = 0.05 * runs, error = 4 * std::sqrt(0.05 * 0.95 * runs);
    EXPECT_NEAR(strain, wanted, error);
    EXPECT_NEAR(unlike, wanted, error);
}

TEST(Strain, InSpaceHasSixElementsAndThreeTurns)
{
    const std::vector<double> x = {0, 0, 0, 10, 0, 0, 0, 10, 0, 0, 0, 10, 10, 10, 10};
    const double f[3][3] = {{1e-5, 3e-5, -2e-5}, {1e-5, 2e-5, 4e-5}, {0, -2e-5, -3e-5}};
    std::vector<double> d;
    for (size_t i = 0; i < x.size(); i += 3)
        for (int a = 0; a < 3; a++) d.push_back(f[a][0] * x[i] + f[a][1] * x[i + 1] + f[a][2] * x[i + 2] + 1);
    const Strain s = find_strain(3, x, d, unit(15, 1e-8), Dense(15, 0), known, 0.05);
    ASSERT_TRUE(s.made());
    const double wanted[6] = {1e-5, 2e-5, -3e-5, 2e-5, -1e-5, 1e-5};
    for (size_t i = 0; i < 6; i++) EXPECT_NEAR(s.elements[i].value, wanted[i], 1e-14) << i;
    const double turns[3] = {0.5 * (f[2][1] - f[1][2]), 0.5 * (f[0][2] - f[2][0]), 0.5 * (f[1][0] - f[0][1])};
    for (size_t i = 0; i < 3; i++) EXPECT_NEAR(s.turns[i]->value, turns[i], 1e-14) << i;
    EXPECT_NEAR(s.principal[0].value + s.principal[1].value + s.principal[2].value, 0.0, 1e-14);
    EXPECT_EQ(s.strained.h, 6);
    EXPECT_EQ(s.homogeneous.h, 3);
}

TEST(Strain, OfPointsOnALineIsRefused)
{
    const std::vector<double> line = {0, 0, 10, 10, 20, 20, 40, 40};
    const Strain s = find_strain(2, line, line, unit(8, 1e-6), Dense(8, 0), known, 0.05);
    EXPECT_FALSE(s.made());
}
