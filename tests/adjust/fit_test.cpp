// Fits of lists of points: known transformations of any turn, dense solutions, simulations, lists that determine
// nothing.

#include "adjust/fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "adjust/dense_solution.h"

using namespace vornadjust;

namespace {

struct Truth {
    double matrix[9], shift[3];
};

Truth turned(double rx, double ry, double rz, double scale, double far)
{
    const double a = std::cos(rx), b = std::sin(rx), c = std::cos(ry), d = std::sin(ry), e = std::cos(rz),
                 f = std::sin(rz);
    Truth t = {
        {c * e, b * d * e - a * f, a * d * e + b * f, c * f, b * d * f + a * e, a * d * f - b * e, -d, b * c, a * c},
        {far, -2 * far, 3 * far}};
    for (double &m : t.matrix) m *= scale;
    return t;
}

// Points in a cube of 100, moved, with errors of both lists.
std::vector<FitPoint> points(std::mt19937 &engine, const Truth &t, int n, int dim, double from_error, double to_error)
{
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> place(-50, 50);
    std::vector<FitPoint> all(n);
    for (FitPoint &p : all) {
        for (int k = 0; k < dim; k++) p.from[k] = place(engine);
        for (int i = 0; i < dim; i++) {
            p.to[i] = t.shift[i] + to_error * normal(engine);
            for (int k = 0; k < dim; k++) p.to[i] += t.matrix[3 * i + k] * p.from[k];
        }
        for (int k = 0; k < dim; k++) {
            p.from[k] += from_error * normal(engine);
            p.q_from[4 * k] = from_error * from_error;
            p.q_to[4 * k] = std::fmax(1e-12, to_error * to_error);
        }
    }
    return all;
}

const FitModel models[] = {FitModel::plane_rigid, FitModel::plane_similarity, FitModel::plane_affine,
                           FitModel::space_rigid, FitModel::space_similarity};

} // namespace

TEST(Fit, FindsTurnsOfAnySize)
{
    std::mt19937 engine(1);
    for (const FitModel model : models)
        for (const double angle : {0.0, 0.3, 1.6, 3.14159265, -2.5}) {
            const int dim = dimension_of(model);
            const bool rigid = model == FitModel::plane_rigid || model == FitModel::space_rigid;
            const Truth t =
                turned(dim == 3 ? 0.7 * angle : 0, dim == 3 ? angle / 2.2 : 0, angle, rigid ? 1.0 : 1.3, 5e5);
            const Fit f = fit(model, points(engine, t, 6, dim, 0, 0));
            ASSERT_EQ(f.status, FitStatus::fitted);
            for (int i = 0; i < dim; i++)
                for (int k = 0; k < dim; k++) EXPECT_NEAR(f.matrix[3 * i + k], t.matrix[3 * i + k], 1e-10);
            double origin[3], q[9];
            const double zero[3] = {0, 0, 0};
            apply(f, model, zero, origin, q);
            for (int k = 0; k < dim; k++) EXPECT_NEAR(origin[k], t.shift[k], 1e-8);
            EXPECT_EQ(f.redundancy, 6 * dim - parameters_of(model));
        }
}

// The affine fit is linear: against normal equations in extended precision, with weights of each point.
TEST(Fit, EqualsADenseSolution)
{
    std::mt19937 engine(2);
    const Truth t = {{1.1, 0.2, 0, -0.3, 0.9, 0, 0, 0, 0}, {10, 20, 0}};
    std::vector<FitPoint> all = points(engine, t, 7, 2, 0, 0.01);
    for (size_t i = 0; i < all.size(); i++) {
        all[i].q_to[0] *= 1.0 + (double)i, all[i].q_to[1] = all[i].q_to[3] = 0.4e-4;
    }
    Matrix a(14, 6), y(14, 1), s(14, 14);
    for (int i = 0; i < 7; i++)
        for (int k = 0; k < 2; k++) {
            const int r = 2 * i + k;
            a(r, k) = 1, a(r, 2 + 2 * k) = all[i].from[0], a(r, 3 + 2 * k) = all[i].from[1], y(r, 0) = all[i].to[k];
            for (int l = 0; l < 2; l++) s(r, 2 * i + l) = all[i].q_to[3 * k + l];
        }
    const Matrix p = inverse(s), n = inverse(transposed(a) * p * a), x = n * transposed(a) * p * y, v = y - a * x,
                 qv = s - a * n * transposed(a), pv = p * v;
    const Fit f = fit(FitModel::plane_affine, all);
    ASSERT_EQ(f.status, FitStatus::fitted);
    const int at[4] = {0, 1, 3, 4};
    for (int k = 0; k < 4; k++) {
        EXPECT_NEAR(f.matrix[at[k]], (double)x(2 + k, 0), 1e-12);
        EXPECT_NEAR(f.cofactors[(size_t)(2 + k) * 6 + 2 + k], (double)n(2 + k, 2 + k), 1e-12 * (double)n(2 + k, 2 + k));
    }
    double squares = 0;
    for (int i = 0; i < 7; i++) {
        // Share of a point: the sum with it less the sum without it.
        std::vector<FitPoint> others = all;
        others.erase(others.begin() + i);
        EXPECT_NEAR(f.points[i].share, f.squares - fit(FitModel::plane_affine, others).squares, 1e-9 * f.squares);
        EXPECT_EQ(f.points[i].rank, 2);
        for (int k = 0; k < 2; k++) {
            EXPECT_NEAR(f.points[i].v[k], (double)v(2 * i + k, 0), 1e-11);
            EXPECT_NEAR(f.points[i].q[4 * k], (double)qv(2 * i + k, 2 * i + k), 1e-12);
            squares += (double)(v(2 * i + k, 0) * pv(2 * i + k, 0));
        }
    }
    EXPECT_NEAR(f.squares, squares, 1e-9 * squares);
}

// Over 400 simulations the errors of turns and scale have their standard deviations, and v^T P v its expectation:
// means of 400 squares of mean 1 lie within 4 sqrt(2 / 400) = 0.28 of it.
TEST(Fit, IsAsPreciseAsItSays)
{
    std::mt19937 engine(3);
    const Truth t = turned(0.4, -1.0, 2.0, 1.05, 100);
    double scale = 0, turn = 0, squares = 0;
    for (int run = 0; run < 400; run++) {
        const Fit f = fit(FitModel::space_similarity, points(engine, t, 5, 3, 0.01, 0.02));
        ASSERT_EQ(f.status, FitStatus::fitted);
        const double log_error = std::log(f.scale / 1.05);
        scale += log_error * log_error / f.cofactors[48] / 400;
        // Small turn about x of `to` from F T^T = s (I + [w]).
        double w = 0;
        for (int k = 0; k < 3; k++) w += f.matrix[6 + k] * t.matrix[3 + k] / (1.05 * 1.05);
        turn += w * w / f.cofactors[3 * 7 + 3] / 400;
        squares += f.squares / f.redundancy / 400;
    }
    EXPECT_NEAR(scale, 1.0, 0.3);
    EXPECT_NEAR(turn, 1.0, 0.3);
    EXPECT_NEAR(squares, 1.0, 4 * std::sqrt(2.0 / 8 / 400));
}

TEST(Fit, RefusesWhatDoesNotDetermineIt)
{
    std::mt19937 engine(4);
    const Truth t = turned(0.1, 0.2, 0.3, 1, 10);
    std::vector<FitPoint> all = points(engine, t, 5, 3, 0, 0.001);
    std::vector<FitPoint> two(all.begin(), all.begin() + 2), line = all, one = all;
    EXPECT_EQ(fit(FitModel::space_similarity, two).status, FitStatus::too_few);
    EXPECT_EQ(fit(FitModel::plane_similarity, two).status, FitStatus::fitted);
    EXPECT_EQ(fit(FitModel::plane_affine, two).status, FitStatus::too_few);
    EXPECT_EQ(fit(FitModel::plane_rigid, {}).status, FitStatus::too_few);
    for (size_t i = 0; i < line.size(); i++)
        for (int k = 0; k < 3; k++) {
            line[i].from[k] = (double)(i * i) * (k + 1), one[i].from[k] = 7;
        }
    EXPECT_EQ(fit(FitModel::space_similarity, line).status, FitStatus::one_line);
    EXPECT_EQ(fit(FitModel::plane_affine, line).status, FitStatus::one_line);
    EXPECT_EQ(fit(FitModel::plane_similarity, one).status, FitStatus::one_place);
    for (double &q : all[3].q_to) q = 0;
    const Fit bad = fit(FitModel::space_similarity, all);
    EXPECT_EQ(bad.status, FitStatus::bad_cofactors);
    EXPECT_EQ(bad.bad, 3);
}

TEST(Fit, FitsFlatFiguresInSpace)
{
    std::mt19937 engine(5);
    const Truth t = turned(2.0, 0.5, -1.0, 2, 10);
    std::vector<FitPoint> all = points(engine, t, 3, 3, 0, 0); // three points are a plane
    const Fit f = fit(FitModel::space_similarity, all);
    ASSERT_EQ(f.status, FitStatus::fitted);
    for (int k = 0; k < 9; k++) EXPECT_NEAR(f.matrix[k], t.matrix[k], 1e-9);
    EXPECT_FALSE(f.mirrored);
}

TEST(Fit, SeesExchangedAxes)
{
    std::mt19937 engine(6);
    std::vector<FitPoint> all = points(engine, turned(0, 0, 1, 1, 10), 5, 2, 0, 0.001);
    EXPECT_FALSE(fit(FitModel::plane_similarity, all).mirrored);
    for (FitPoint &p : all) std::swap(p.from[0], p.from[1]);
    EXPECT_TRUE(fit(FitModel::plane_similarity, all).mirrored);
}
