// Whole adjustments of simulated networks against a dense solution.

#include "adjust/adjustment.h"

#include <gtest/gtest.h>

#include "dense_solution.h"
#include "random_networks.h"

using namespace vornadjust;

namespace {

Options tight()
{
    Options o;
    o.limits.length = 1e-8;
    o.limits.angle = 1e-11;
    return o;
}

// Largest difference of relative size.
void expect_close(double found, double wanted, double relative, double absolute, const std::string &what)
{
    EXPECT_NEAR(found, wanted, relative * std::fabs(wanted) + absolute) << what;
}

// Everything that comes out, against the dense solution.
void expect_dense(const Model &given, const std::string &name, int wanted_open)
{
    SCOPED_TRACE(name);
    Model m = given;
    const Outcome o = adjust(&m, tight());
    ASSERT_EQ(o.status, Status::adjusted);
    const DenseSolution dense = dense_solution(given, wanted_open > 0);
    ASSERT_EQ(dense.open, wanted_open);
    EXPECT_EQ(o.open, wanted_open);
    EXPECT_EQ(o.redundancy, dense.dof);
    expect_close(o.iteration.squares, (double)dense.squares, 1e-9, 0, "squares");
    const double sigma = o.redundancy > 0 ? std::sqrt((double)dense.squares / dense.dof) : 1.0;
    for (int u = 0; u < m.n_unknowns(); u++)
        expect_close(m.value[u], dense.x[u], 1e-13, 1e-9, "value " + std::to_string(u));
    std::vector<int> column(m.value.size(), -1);
    for (size_t j = 0; j < dense.system.unknown.size(); j++) {
        const int u = dense.system.unknown[j];
        column[u] = (int)j;
        const double q = (double)dense.q((int)j, (int)j);
        expect_close(o.statistics.deviation[u], sigma * std::sqrt(q), 1e-9, 0, "deviation " + std::to_string(u));
    }
    for (int p = 0; p < m.n_points; p++)
        for (int i = 0, at = 0; i < 3; i++)
            for (int k = i; k < 3; k++, at++) {
                const int a = column[3 * p + i], b = column[3 * p + k];
                const double q = a < 0 || b < 0 ? 0.0 : (double)dense.q(a, b);
                const double size = a < 0 || b < 0 ? 0.0 : std::sqrt((double)(dense.q(a, a) * dense.q(b, b)));
                EXPECT_NEAR(o.statistics.points[p][at], sigma * sigma * q, 1e-9 * sigma * sigma * size);
            }

    double redundancy = 0.0;
    int row = 0;
    const Matrix share = dense.qvv * dense.system.p;
    Matrix w(dense.system.w.rows, 1);
    for (int i = 0; i < w.rows; i++) w(i, 0) = dense.residual[i];
    const Matrix pw = dense.system.p * w, pqp = dense.system.p * share;
    for (int r = 0; r < o.equations.rows(); r++) {
        if (!o.equations.usable[r]) continue;
        const RowStatistics &s = o.statistics.rows[r];
        const double sd = o.equations.sigma[r];
        EXPECT_NEAR(s.residual, (double)w(row, 0), 1e-8 * sd);
        EXPECT_NEAR(s.cofactor, (double)dense.qvv(row, row), 1e-8 * sd * sd);
        EXPECT_NEAR(s.redundancy, (double)share(row, row), 1e-8);
        if (share(row, row) > 1e-3)
            EXPECT_NEAR(s.normalised, (double)(pw(row, 0) / std::sqrt(pqp(row, row))), 1e-6) << r;
        redundancy += s.redundancy;
        row++;
    }
    EXPECT_EQ(row, w.rows);
    EXPECT_NEAR(redundancy, o.redundancy, 1e-8 * o.rows);
}

std::string name(const char *what, Hold how, unsigned seed)
{
    const char *const holds[] = {"fixed", "free, all", "free, some", "weighted"};
    return std::string(what) + ", " + holds[(int)how] + ", seed " + std::to_string(seed);
}

bool is_free(Hold how) { return how == Hold::free_all || how == Hold::free_some; }

Frame earth(bool mixed)
{
    Frame f = frame_of(Space::sphere);
    f.mixed = mixed;
    f.height = 400;
    return f;
}

} // namespace

TEST(Adjustment, OfLevellingIsTheDenseSolution)
{
    for (Hold how : every_hold)
        for (unsigned seed = 1; seed <= 3; seed++)
            expect_dense(levelling(seed, how).model, name("levelling", how, seed), is_free(how) ? 1 : 0);
}

TEST(Adjustment, OfPlaneNetworksIsTheDenseSolution)
{
    for (Hold how : every_hold)
        for (unsigned seed = 1; seed <= 3; seed++)
            for (bool distances : {true, false})
                expect_dense(plane(seed, how, distances).model, name("plane", how, seed),
                             is_free(how) ? (distances ? 3 : 4) : 0);
}

TEST(Adjustment, OfSpaceNetworksIsTheDenseSolution)
{
    for (Hold how : every_hold)
        for (unsigned seed = 1; seed <= 2; seed++)
            for (bool levelled : {true, false})
                expect_dense(space(seed, how, frame_of(Space::space), levelled).model, name("space", how, seed),
                             is_free(how) ? (levelled ? 4 : 6) : 0);
}

TEST(Adjustment, OnTheSphereIsTheDenseSolution)
{
    for (Hold how : every_hold)
        for (bool mixed : {false, true})
            expect_dense(space(5, how, earth(mixed), true).model, name("sphere", how, mixed), is_free(how) ? 4 : 0);
}

TEST(Adjustment, OfBaselinesIsTheDenseSolution)
{
    for (Hold how : every_hold)
        for (unsigned seed = 1; seed <= 3; seed++)
            expect_dense(baselines(seed, how).model, name("baselines", how, seed), is_free(how) ? 3 : 0);
}
