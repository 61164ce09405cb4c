#include "adjust/assembly.h"

#include <gtest/gtest.h>

#include "dense_solution.h"
#include "scattered.h"

using namespace vornadjust;

namespace {

// Everything observed, with sigmas and factors of its own each; a correlated group of two baselines and a coordinate.
Model correlated(unsigned seed)
{
    Model m = scattered(seed, Frame{});
    observe_everything(m, true);
    Random random(seed);
    for (Observation &o : m.observations) {
        Linear l;
        linearize(m, o, false, &l);
        o.sigma[0] = random(0.001, 0.1), o.sigma[1] = random(0.001, 0.1), o.sigma[2] = 0.03, o.factor = random(0.5, 2);
        for (int c = 0; c < components(o.kind, m.frame.space); c++) o.value[c] = l.value[c] + random(-0.1, 0.1);
    }
    double root[7][7], covariance[7][7] = {};
    for (auto &row : root)
        for (double &x : row) x = random(-0.1, 0.1);
    for (int i = 0; i < 7; i++)
        for (int j = 0; j < 7; j++)
            for (int k = 0; k < 7; k++) covariance[i][j] += root[i][k] * root[j][k] + (i == j ? 1e-4 : 0.0);
    const int group = m.add_group(7, &covariance[0][0]);
    for (int k = 0; k < 3; k++) {
        Observation o;
        o.kind = k == 1 ? Kind::unknown : Kind::baseline;
        o.from = k, o.to = 3, o.unknown = k == 1 ? 7 : -1;
        o.group = group, o.place = k == 0 ? 4 : k == 1 ? 0 : 1; // not in the order of the rows
        o.value[0] = 1, o.value[1] = 2, o.value[2] = 3;
        o.factor = 1.5 + k;
        m.observe(o);
    }
    m.code[3] = m.code[12] = Code::fixed;
    m.code[8] = Code::absent;
    return m;
}

void expect_dense(const Model &m)
{
    Equations e = pattern(m);
    fill(m, Derivatives::exact, &e);
    const Columns c = columns(m, e);
    WeightedRows rows = weighted_pattern(m, e, c);
    ASSERT_EQ(weigh(m, e, c, &rows), -1);
    NormalSystem system = normal_pattern(c.count(), rows);
    assemble(rows, &system);

    const DenseSystem dense = dense_system(m, false);
    ASSERT_EQ(dense.unknown, c.unknown);
    const Matrix ap = transposed(dense.a) * dense.p, n = ap * dense.a, right = ap * dense.w;
    const Matrix squares = transposed(dense.w) * dense.p * dense.w;
    EXPECT_TRUE(is_well_formed(system.matrix));
    for (int j = 0; j < c.count(); j++) {
        std::vector<double> column(c.count(), 0.0);
        for (auto k = system.matrix.start[j]; k < system.matrix.start[j + 1]; k++)
            column[system.matrix.row[k]] = system.matrix.value[k];
        // rounding of a covariance with a condition of 1e4
        const double size_j = std::sqrt((double)n(j, j)), size_b = std::sqrt((double)squares(0, 0));
        for (int i = j; i < c.count(); i++)
            EXPECT_NEAR(column[i], (double)n(i, j), 1e-11 * size_j * std::sqrt((double)n(i, i))) << i << " " << j;
        EXPECT_NEAR(system.right[j], (double)right(j, 0), 1e-11 * size_j * size_b) << j;
    }
    EXPECT_NEAR(sum_of_squares(rows), (double)squares(0, 0), 1e-11 * (double)squares(0, 0));
}

} // namespace

TEST(Assembly, IsTheDenseProductWithCorrelatedGroups)
{
    for (unsigned seed = 1; seed <= 5; seed++) expect_dense(correlated(seed));
}

TEST(Assembly, StrikesUnusedMembersFromTheCovarianceOfTheirGroup)
{
    for (int struck = 0; struck < 3; struck++) {
        Model m = correlated(2);
        m.observations[m.observations.size() - 1 - struck].use = false;
        expect_dense(m);
    }
}

TEST(Assembly, LeavesSightsWithoutADerivativeOut)
{
    Model m = correlated(3);
    for (int k = 0; k < 2; k++) m.value[9 + k] = m.value[k];
    for (Observation &o : m.observations) o.motion_from = o.motion_to = o.motion_third = -1;
    expect_dense(m);
}

TEST(Assembly, NamesTheGroupWhoseCovarianceIsNotPositiveDefinite)
{
    Model m = correlated(4);
    const double good[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1}, bad[9] = {1, 2, 0, 2, 1, 0, 0, 0, 1};
    for (const double *covariance : {good, bad}) {
        Observation o;
        o.kind = Kind::baseline;
        o.from = 0, o.to = 1;
        o.group = m.add_group(3, covariance);
        m.observe(o);
    }
    Equations e = pattern(m);
    fill(m, Derivatives::exact, &e);
    const Columns c = columns(m, e);
    WeightedRows rows = weighted_pattern(m, e, c);
    EXPECT_EQ(weigh(m, e, c, &rows), 2);
    for (size_t k = rows.begin[e.rows() - 3]; k < rows.begin[e.rows()]; k++) EXPECT_EQ(rows.coefficient[k], 0.0);
}

TEST(Assembly, ForeseesTheSquaresOfTheLinearEquations)
{
    const Model m = correlated(5);
    Equations e = pattern(m);
    fill(m, Derivatives::exact, &e);
    const Columns c = columns(m, e);
    WeightedRows rows = weighted_pattern(m, e, c);
    weigh(m, e, c, &rows);
    const DenseSystem dense = dense_system(m, false);
    Random random(1);
    std::vector<double> dx;
    Matrix v = dense.w;
    for (int j = 0; j < c.count(); j++) {
        dx.push_back(random(-0.01, 0.01));
        for (int i = 0; i < v.rows; i++) v(i, 0) -= dense.a(i, j) * dx[j];
    }
    const double wanted = (double)(transposed(v) * dense.p * v)(0, 0);
    EXPECT_NEAR(foreseen_squares(rows, dx.data()), wanted, 1e-11 * wanted);
}
