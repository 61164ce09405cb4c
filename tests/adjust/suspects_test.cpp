// Tests of single observations and of suspects against dense matrices, and what a known error does.

#include "adjust/suspects.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "adjust/adjustment.h"
#include "dense_solution.h"
#include "random_networks.h"

using namespace vornadjust;

namespace {

struct Case {
    const char *name;
    Network network;
    DenseSolution dense = dense_solution(network.model, name[0] == '*');
};

// Those with a star are free.
const std::vector<Case> &networks()
{
    static const std::vector<Case> all = {{"* levelling", levelling(3, Hold::free_all)},
                                          {"plane, weighted", plane(4, Hold::weighted, true)},
                                          {"* plane", plane(5, Hold::free_some, true)},
                                          {"space", space(6, Hold::fixed, frame_of(Space::space), true)},
                                          {"baselines", baselines(7, Hold::fixed)},
                                          {"sessions", sessions(8)},
                                          {"constants", constants(9, Hold::weighted, true)}};
    return all;
}

// P Qvv P of a dense solution.
Matrix control_of(const DenseSolution &d) { return d.system.p * d.qvv * d.system.p; }

// Largest shift of a point by a vector over the columns; all points, or those that a row sees.
Real largest_shift(const Model &m, const DenseSolution &d, const Matrix &x, int row)
{
    std::vector<Real> squares(m.n_points, 0.0L);
    std::vector<char> seen(m.n_points, row < 0);
    for (int j = 0; j < x.rows; j++) {
        const int u = d.system.unknown[j];
        if (u >= 3 * m.n_points) continue;
        squares[u / 3] += x(j, 0) * x(j, 0);
        if (row >= 0 && d.system.a(row, j) != 0) seen[u / 3] = 1;
    }
    Real most = 0;
    for (int p = 0; p < m.n_points; p++)
        if (seen[p]) most = std::fmax(most, squares[p]);
    return std::sqrt(most);
}

Matrix column(const Matrix &a, int j)
{
    Matrix c(a.rows, 1);
    for (int i = 0; i < a.rows; i++) c(i, 0) = a(i, j);
    return c;
}

double bound(Real x, Real scale = 0) { return 2e-6 * (double)(std::fabs(x) + scale); }

SuspectOptions all_beyond(double limit, int most)
{
    SuspectOptions o;
    o.most = most;
    o.limit = [limit](int, int, double) { return limit; };
    return o;
}

} // namespace

TEST(Suspects, TestsOfSingleObservationsAreThoseOfDenseMatrices)
{
    for (const Case &c : networks()) {
        SCOPED_TRACE(c.name);
        Model m = c.network.model;
        const Outcome o = adjust(&m, {});
        ASSERT_EQ(o.status, Status::adjusted);
        const DenseSolution &d = c.dense;
        const Matrix control = control_of(d), effect = d.q * transposed(d.system.a) * d.system.p;
        ASSERT_EQ((int)o.statistics.rows.size(), control.rows);
        for (int r = 0; r < control.rows; r++) {
            const RowStatistics &s = o.statistics.rows[r];
            EXPECT_NEAR(s.weight, (double)d.system.p(r, r), bound(d.system.p(r, r)));
            EXPECT_NEAR(s.control, (double)control(r, r), bound(control(r, r), 1e-3L * d.system.p(r, r)));
            const Real shift = largest_shift(c.network.model, d, column(effect, r), r);
            EXPECT_NEAR(s.effect, (double)shift, bound(shift)) << r;
        }
    }
}

TEST(Suspects, ComponentsTogetherAreTestedAsDenseMatricesSay)
{
    for (Network n : {baselines(7, Hold::fixed), sessions(8)}) {
        Options options;
        for (int i = 0; i < (int)n.model.observations.size(); i++)
            if (n.model.observations[i].kind == Kind::baseline) options.together.push_back({i});
        options.together.push_back({});
        for (int i = 0; i < (int)n.model.observations.size(); i++)
            if (n.model.observations[i].kind == Kind::unknown && options.together.back().size() < 3)
                options.together.back().push_back(i);
        const Outcome o = adjust(&n.model, options);
        ASSERT_EQ(o.status, Status::adjusted);
        const DenseSolution d = dense_solution(n.model, o.open > 0);
        const Matrix control = control_of(d);
        Matrix v(control.rows, 1);
        for (int r = 0; r < v.rows; r++) v(r, 0) = d.residual[r];
        const Matrix pv = d.system.p * v;
        for (size_t b = 0; b < options.together.size(); b++) {
            std::vector<int> rows;
            for (int r = 0; r < control.rows; r++)
                if (std::count(options.together[b].begin(), options.together[b].end(), d.system.component[r].first))
                    rows.push_back(r);
            if (rows.empty()) continue;
            Matrix e(3, 3), w(3, 1);
            for (int i = 0; i < 3; i++) {
                w(i, 0) = pv(rows[i], 0);
                for (int k = 0; k < 3; k++) e(i, k) = control(rows[i], rows[k]);
            }
            const Real wanted = (transposed(w) * inverse(e) * w)(0, 0);
            EXPECT_EQ(o.statistics.together[b].rank, 3);
            EXPECT_NEAR(o.statistics.together[b].squares, (double)wanted, bound(wanted));
        }
    }
}

// Two points, one of them held, and one observed baseline: nothing controls it; observed twice, both are controlled.
TEST(Suspects, ComponentsThatNothingControlsHaveRankZero)
{
    for (int times = 1; times <= 2; times++) {
        Network n(1, frame_of(Space::space));
        n.points(2, 1000, 10);
        for (int i = 0; i < times; i++) n.baseline(0, 1, 0.01);
        n.hold(Hold::fixed, 1);
        n.simulate(1.0);
        Options options;
        options.together = {{0}};
        const Outcome o = adjust(&n.model, options);
        ASSERT_EQ(o.status, Status::adjusted);
        EXPECT_EQ(o.statistics.together[0].rank, times == 1 ? 0 : 3);
        EXPECT_EQ(o.statistics.rows[0].controlled(), times == 2);
    }
}

// Observed coordinates without correlation have the test of their normalised residuals where the others hold the point
// by one axis at a time.
TEST(Suspects, UncorrelatedComponentsAreTestedTogether)
{
    Network n(1, frame_of(Space::space));
    n.points(1, 1000, 10);
    Options options;
    options.together = {{}, {}};
    for (int which = 0; which < 2; which++)
        for (int k = 0; k < 3; k++) {
            Observation o;
            o.kind = Kind::unknown, o.unknown = k, o.sigma[0] = 0.01 * (k + 1);
            options.together[which].push_back(n.model.observe(o));
        }
    n.simulate(0.0);
    const Outcome o = adjust(&n.model, options);
    ASSERT_EQ(o.status, Status::adjusted);
    double squares = 0.0;
    for (int k = 0; k < 3; k++) squares += o.statistics.rows[k].normalised * o.statistics.rows[k].normalised;
    EXPECT_EQ(o.statistics.together[0].rank, 3);
    EXPECT_NEAR(o.statistics.together[0].squares, squares, 1e-9 * squares);
}

TEST(Suspects, HaveTheErrorEffectAndCorrelationsOfDenseMatrices)
{
    for (const Case &c : networks()) {
        SCOPED_TRACE(c.name);
        Model m = c.network.model;
        Options options;
        options.suspects = all_beyond(0.5, 3);
        options.suspects.least_correlation = 0.2;
        options.suspects.most_alike = 1000;
        const Outcome o = adjust(&m, options);
        ASSERT_EQ(o.status, Status::adjusted);
        ASSERT_EQ(o.suspects.size(), 3u);
        const DenseSolution &d = c.dense;
        const Matrix control = control_of(d), effect = d.q * transposed(d.system.a) * d.system.p;
        Matrix v(control.rows, 1);
        for (int r = 0; r < v.rows; r++) v(r, 0) = d.residual[r];
        const Matrix pv = d.system.p * v;
        const auto size = [&](int r) { return std::fabs(pv(r, 0)) / std::sqrt(control(r, r)); };
        for (const Suspect &s : o.suspects) {
            int larger = 0;
            for (int r = 0; r < v.rows; r++)
                larger += control(r, r) > 1e-6L * d.system.p(r, r) && size(r) > size(s.place) * (1 + 1e-5L);
            EXPECT_EQ(larger, &s - o.suspects.data());
            const Real error = pv(s.place, 0) / control(s.place, s.place);
            EXPECT_NEAR(s.error, (double)error, bound(error, 1e-2L / std::sqrt(control(s.place, s.place))));
            Matrix x = column(effect, s.place);
            for (Real &dx : x.a) dx *= error;
            EXPECT_NEAR(s.shift, (double)largest_shift(c.network.model, d, x, -1), 1e-5 * s.shift);
            int expected = 0;
            for (int r = 0; r < v.rows; r++) {
                if (r == s.place || control(r, r) < 1e-6L * d.system.p(r, r)) continue;
                const Real rho = control(s.place, r) / std::sqrt(control(r, r) * control(s.place, s.place));
                if (std::fabs(rho) < 0.2L) continue;
                expected++;
                const auto found =
                    std::find_if(s.alike.begin(), s.alike.end(), [&](const Alike &a) { return a.place == r; });
                ASSERT_NE(found, s.alike.end()) << r << " " << (double)rho;
                EXPECT_NEAR(found->correlation, (double)rho, 1e-5);
            }
            EXPECT_EQ((int)s.alike.size(), expected);
            EXPECT_TRUE(std::is_sorted(s.alike.begin(), s.alike.end(), [](const Alike &a, const Alike &b) {
                return std::fabs(a.correlation) > std::fabs(b.correlation);
            }));
        }
    }
}

// Leaving the suspect out takes it to what it would have to read, and moves the points by its effect.
TEST(Suspects, LeavingOneOutGivesWhatWasForetold)
{
    Network n = levelling(3, Hold::fixed);
    n.model.observations[4].value[0] += 0.03;
    Options options;
    options.suspects = all_beyond(3.0, 5);
    Model m = n.model;
    const Outcome with = adjust(&m, options);
    ASSERT_FALSE(with.suspects.empty());
    const Suspect &s = with.suspects[0];
    ASSERT_EQ(s.place, 4);
    Model without = n.model;
    without.observations[4].use = false;
    ASSERT_EQ(adjust(&without, options).status, Status::adjusted);
    Linear l;
    linearize(without, n.model.observations[4], false, &l);
    EXPECT_NEAR(n.model.observations[4].value[0] - s.error, l.value[0], 1e-9);
    double most = 0.0;
    for (int p = 0; p < m.n_points; p++)
        most = std::fmax(most, std::fabs(m.value[3 * p + 2] - without.value[3 * p + 2]));
    EXPECT_NEAR(s.shift, most, 1e-9);
    EXPECT_NEAR(std::fabs(m.value[3 * s.point + 2] - without.value[3 * s.point + 2]), most, 1e-12);
}

// Two lines to a point that nothing else holds: whichever is wrong, the residuals are the same.
TEST(Suspects, ObservationsThatControlOnlyOneAnotherCannotBeToldApart)
{
    Network n(1, frame_of(Space::heights));
    n.points(2, 100, 10);
    n.observe(Kind::height_difference, 0, 1, 0.001);
    n.observe(Kind::height_difference, 0, 1, 0.001);
    n.hold(Hold::fixed, 1);
    n.simulate(0.0);
    n.model.observations[0].value[0] += 0.1;
    Options options;
    options.suspects = all_beyond(3.0, 5);
    const Outcome o = adjust(&n.model, options);
    ASSERT_EQ(o.suspects.size(), 2u);
    ASSERT_EQ(o.suspects[0].alike.size(), 1u);
    EXPECT_NEAR(std::fabs(o.suspects[0].alike[0].correlation), 1.0, 1e-12);
}

TEST(Suspects, AreNotSoughtWhereTheLimitIsNotPassed)
{
    Network n = levelling(3, Hold::fixed);
    Options options;
    options.suspects = all_beyond(1e3, 5);
    EXPECT_TRUE(adjust(&n.model, options).suspects.empty());
}

TEST(Suspects, PrecisionAPrioriDoesNotDependOnTheResiduals)
{
    Network n = levelling(3, Hold::fixed);
    Model m = n.model, worse = n.model;
    for (Observation &o : worse.observations) o.value[0] += n.normal(0.1);
    Options options;
    options.a_priori = true;
    const Outcome a = adjust(&m, options), b = adjust(&worse, options);
    EXPECT_GT(b.variance_factor, 100 * a.variance_factor);
    for (size_t u = 0; u < a.statistics.deviation.size(); u++)
        EXPECT_NEAR(a.statistics.deviation[u], b.statistics.deviation[u], 1e-12);
}
