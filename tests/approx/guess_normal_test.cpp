#include <gtest/gtest.h>

#include "approx/guess.h"
#include "approx/sketch.h"

namespace {

const double pi = 4.0 * atan(1.0);

// One shot with 2 points, 9 unknowns: x, y, z of each, height of the second station, o1, o2.
class GuessNormal : public ::testing::Test {
protected:
    GuessNormal() : rows(9, std::vector<double>(9, 0.0))
    {
        s.station("P", 0, 0);
        s.wire();
        for (std::vector<double> &row : rows) mat.push_back(row.data());
    }

    // Computed direction or vertical angle for point 1 from station it.
    static double computed(const std::vector<double> &u, int it, int vertical)
    {
        const double x = u[3], y = u[4], z = u[5], xt = it == 1 ? 0.0 : 1.0, zt = it == 1 ? 0.0 : u[6];
        const double o = it == 1 ? u[7] : u[8];
        return vertical ? atan2(z - zt, hypot(y, x - xt)) : atan2(y, x - xt) - o;
    }

    // Central difference; the step balances truncation and rounding, both about 1e-10 here.
    static double derivative(const std::vector<double> &u, int it, int vertical, int unknown)
    {
        const double step = 1e-5;
        std::vector<double> more = u, less = u;
        more[unknown] += step;
        less[unknown] -= step;
        return (computed(more, it, vertical) - computed(less, it, vertical)) / (2 * step);
    }

    void add(const std::vector<double> &at, int it, double hz, double v)
    {
        const guesssight sight = {
            at[3], at[4], at[5], it, it == 1 ? 0.0 : 1.0, it == 1 ? 0.0 : at[6], it == 1 ? at[7] : at[8], hz, v};
        guess_normal(mat.data(), rhs, 9, 1, &sight, &sum);
    }

    Sketch s = Sketch(3);
    std::vector<std::vector<double>> rows;
    std::vector<double *> mat;
    double rhs[9] = {}, sum = 0;
    const std::vector<double> u = {0, 0, 0, 0.4, 0.9, 0.3, -0.15, 0.5, -0.6};
};

TEST_F(GuessNormal, OfAPointInTheStationHoldsNoNumbers)
{
    std::vector<double> at = u;
    at[3] = at[4] = at[5] = 0.0;
    add(at, 1, 0.2, 0.1);
    EXPECT_FALSE(std::isfinite(mat[3][3]));
    EXPECT_FALSE(std::isfinite(rhs[3]));
    EXPECT_EQ(mat[0][0], 0.0);
}

TEST_F(GuessNormal, HoldsTheDerivativesOfBothEquationsForBothStations)
{
    double wanted[9][9] = {}, right[9] = {}, squares = 0;
    for (int it = 1; it <= 2; it++) {
        const double wh = 0.02 * it, wv = -0.03 * it;
        add(u, it, computed(u, it, 0) + wh, computed(u, it, 1) + wv);
        squares += wh * wh + wv * wv;
        for (int vertical = 0; vertical < 2; vertical++)
            for (int i = 0; i < 9; i++) {
                const double di = derivative(u, it, vertical, i);
                right[i] += di * (vertical ? wv : wh);
                for (int j = 0; j < 9; j++) wanted[i][j] += di * derivative(u, it, vertical, j);
            }
    }
    for (int i = 0; i < 9; i++) {
        EXPECT_NEAR(rhs[i], right[i], 1e-9) << i;
        for (int j = 0; j < 9; j++) EXPECT_NEAR(rows[i][j], wanted[i][j], 1e-8) << i << ' ' << j;
    }
    EXPECT_NEAR(sum, squares, 1e-14);
}

TEST_F(GuessNormal, IsSymmetricAfterEveryShot)
{
    for (int it = 1; it <= 2; it++) {
        add(u, it, 0.1, 0.2);
        for (int i = 0; i < 9; i++)
            for (int j = 0; j < i; j++) EXPECT_EQ(rows[i][j], rows[j][i]);
    }
}

TEST_F(GuessNormal, LeavesThePlacesOfOtherUnknowns)
{
    add(u, 1, 0.1, 0.2);
    for (int i = 0; i < 9; i++)
        for (int j : {0, 1, 2, 6, 8}) EXPECT_EQ(rows[i][j], 0); // the other point, the second station
    for (int j : {0, 1, 2, 6, 8}) EXPECT_EQ(rhs[j], 0);
}

TEST_F(GuessNormal, WrapsADirectionTwice)
{
    // the computed direction is beyond pi, the difference again
    const std::vector<double> far = {0, 0, 0, -0.9, 0.1, 0, 0, -0.5, 0};
    const double truth = computed(far, 1, 0) - 2 * pi;
    add(far, 1, truth + 0.01 + 2 * pi, 0);
    EXPECT_NEAR(rhs[7], -0.01, 1e-12);
    EXPECT_NEAR(sum, 1e-4, 1e-12);
}

// The contradiction of the vertical angle, from a point at the height of the station.
TEST_F(GuessNormal, TakesOnePiOnlyOffAVerticalContradictionAbovePi)
{
    const std::vector<double> level = {0, 0, 0, 1, 0, 0, 0, 0, 0}; // distance 1: dv/dz is 1
    add(level, 1, 0, pi + 0.25);
    EXPECT_NEAR(rhs[5], 0.25, 1e-12);
    EXPECT_NEAR(sum, 0.0625, 1e-12);
    add(level, 1, 0, -pi - 0.25);
    EXPECT_NEAR(rhs[5], 0.25 + pi - 0.25, 1e-12);
    add(level, 1, 0, pi);
    EXPECT_NEAR(rhs[5], 2 * pi, 1e-12);
}

} // namespace
