// What both least-squares solvers do alike with the rows of observations, of the datum and of
// imported coordinates.

#include "solvers/leastsquares.h"

#include <type_traits>

namespace {

template <class Solver> class LeastSquares : public ::testing::Test {
};

struct SolverNames {
    template <class Solver> static std::string GetName(int)
    {
        return std::is_same<Solver, compact>::value ? "compact" : "jordan";
    }
};

typedef ::testing::Types<compact, jordan> Solvers;

} // namespace

TYPED_TEST_SUITE(LeastSquares, Solvers, SolverNames);

// ---- baselines ----

TYPED_TEST(LeastSquares, AddsTheWeightBlockOfABaseline)
{
    const int numbers[][6] = {{0, 1, 2, 3, 4, 5}, {-1, -1, -1, 0, 1, 2}, {5, -1, 2, -1, 0, 1}, {3, 4, 5, 0, 1, 2}};
    for (const auto &iu : numbers) {
        Solved<TypeParam> r(3);
        scatter(r, 2);
        gpsbase &g = r.baseline(0, 1, 0, 0, 0);
        const double packed[6] = {4, 1, 5, 0.5, -2, 6};
        for (int k = 0; k < 6; k++) g.w[k] = packed[k];
        TypeParam &s = r.solver(2, 0);
        ASSERT_EQ(s.prepare(), 0);
        const double w[3] = {0.1, -0.2, 0.3};
        s.buildgps(0, iu, w);
        // A' W A and A' W w with A = (-1 at the first point, 1 at the second)
        const double W[3][3] = {{4, 1, 0.5}, {1, 5, -2}, {0.5, -2, 6}};
        double a[3][6] = {};
        for (int c = 0; c < 6; c++)
            if (iu[c] >= 0) a[c % 3][iu[c]] = c < 3 ? -1.0 : 1.0;
        for (int i = 0; i < 6; i++)
            for (int j = -1; j < 6; j++) { // -1: right-hand side
                double sum = 0.0;
                for (int k = 0; k < 3; k++)
                    for (int m = 0; m < 3; m++) sum += a[k][i] * W[k][m] * (j < 0 ? w[m] : a[m][j]);
                EXPECT_NEAR(j < 0 ? right_side(s)[i] : at(s, i, j), sum, 1e-15);
            }
    }
}

// ---- datum rows ----

TYPED_TEST(LeastSquares, HoldsSpaceByShifts) { expect_table<TypeParam>(3, 3, shifts()); }

TYPED_TEST(LeastSquares, HoldsSpaceByTheTurnAboutTheThirdAxisWithFourOrFiveRows)
{
    const Entries turn = joined(shifts(), {{3, 0, 'Y', 1}, {3, 1, 'x', 0}});
    expect_table<TypeParam>(3, 4, turn);
    expect_table<TypeParam>(3, 5, joined(turn, scaleat(4)));
}

TYPED_TEST(LeastSquares, LeavesCoordinatesWithoutUnknownOutOfTheDatum)
{
    for (int dim : {1, 2, 3}) {
        Solved<TypeParam> r(dim);
        scatter(r, 3);
        for (int c = 0; c < 3; c++) r.points[1].n0[c] = N_NONE; // fixed, but flagged for the datum
        TypeParam &s = r.solver(0, dim == 1 ? 1 : dim == 2 ? 4 : 7);
        ASSERT_EQ(s.prepare(), 0);
        s.zeronormal();
        for (int k = 0; k < S(s, ndatum); k++)
            for (int c = 0; c < dim; c++) EXPECT_EQ(at(s, r.nunk1 + k, dim + c), 0.0);
        EXPECT_EQ(at(s, r.nunk1, 0), 1.0);
        if (dim > 1) {
            EXPECT_EQ(at(s, r.nunk1 + 1, 0), 0.0); // nothing strays into the first column
        }
    }
}

// ---- imported coordinates ----

TYPED_TEST(LeastSquares, WeighsTheDifferencesFromTheImportedValues)
{
    for (int icon : {2, 3}) {
        Solved<TypeParam> r(2);
        scatter(r, 3);
        r.points[0].x0[0] += 0.5, r.points[0].x0[1] -= 0.25, r.points[2].x0[0] += 2.0;
        TypeParam &s = r.solver(0, 0);
        int lcon[2] = {4, 0}; // third point, then the first one
        double Q[10];
        for (int k = 0; k < 10; k++) Q[k] = k + 1.0;
        S(s, icon) = icon;
        S(s, nimport) = 2;
        S(s, lcon) = lcon;
        S(s, Qcon) = Q;
        ASSERT_EQ(s.prepare(), 0);
        s.zeronormal();
        const double W[4][4] = {{1, 2, 4, 7}, {2, 3, 5, 8}, {4, 5, 6, 9}, {7, 8, 9, 10}};
        const double t[4] = {2.0, 0.0, 0.5, -0.25};
        const int number[4] = {4, 5, 0, 1};
        for (int i = 0; i < 4; i++) {
            double h = 0.0;
            for (int j = 0; j < 4; j++) {
                h += W[i][j] * t[j];
                EXPECT_EQ(at(s, number[i], number[j]), W[i][j]);
            }
            EXPECT_NEAR(right_side(s)[number[i]], h, 1e-12);
        }
        EXPECT_EQ(at(s, 2, 2), 0.0);
    }
}

TYPED_TEST(LeastSquares, LeavesImportedCoordinatesOutOfAnExportAlone)
{
    Solved<TypeParam> r(2);
    scatter(r, 3);
    TypeParam &s = r.solver(0, 0);
    S(s, icon) = 1;
    S(s, nimport) = 2; // lcon is null
    ASSERT_EQ(s.prepare(), 0);
    s.zeronormal();
    EXPECT_EQ(full(s), Vector(36, 0.0));
}

TYPED_TEST(LeastSquares, CarriesTheImportedDifferenceOverAtANumberThatNoCoordinateHas)
{
    Solved<TypeParam> r(1);
    r.add("A", 0, 0, 5).x0[2] = 5.5;
    r.add("B", 0, 0, 7).x0[2] = 9.0;
    TypeParam &s = r.solver(0, 0);
    int lcon[4] = {1, -2, 77, 0}; // the second and third point dropped out
    double Q[10] = {2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    S(s, icon) = 2;
    S(s, nimport) = 4;
    S(s, lcon) = lcon;
    S(s, Qcon) = Q;
    ASSERT_EQ(s.prepare(), 0);
    s.zeronormal();
    EXPECT_EQ(full(s), (Vector{11, 8, 8, 2}));
    EXPECT_DOUBLE_EQ(right_side(s)[1], 2.0 * 2 + 2.0 * 3 + 2.0 * 5 + 0.5 * 8);
    EXPECT_DOUBLE_EQ(right_side(s)[0], 2.0 * 8 + 2.0 * 9 + 2.0 * 10 + 0.5 * 11);
}
