// Whole adjustments of simulated networks against a dense solution.

#include "adjust/adjustment.h"

#include <gtest/gtest.h>

#include "dense_solution.h"
#include "random_networks.h"
#include "scattered.h"

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
    for (int u = 0; u < m.n_unknowns(); u++) // those of cameras may have any size: by their standard deviation
        expect_close(m.value[u], dense.x[u], 1e-13, std::fmax(1e-9, 1e-7 * o.statistics.deviation[u]),
                     "value " + std::to_string(u));
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
        if (share(row, row) > 1e-3) {
            EXPECT_NEAR(s.normalised, (double)(pw(row, 0) / std::sqrt(pqp(row, row))), 1e-6) << r;
        }
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

TEST(Adjustment, OfAFreeNetworkOf50KilometresOnTheSphereConverges)
{
    for (bool mixed : {false, true}) {
        Network n(1, earth(mixed));
        n.points(8, 50000, 800);
        n.setups(8);
        n.pairs(8, [&](int p, int q) {
            for (const auto &[from, to] : {std::pair(p, q), std::pair(q, p)}) {
                n.observe(Kind::direction, from, to, 1e-4); // residuals that curvature alone would answer
                n.observe(Kind::vertical_angle, from, to, 3e-4);
            }
            n.observe(Kind::slope_distance, q, p, 0.6);
        });
        n.hold(Hold::free_all, 0);
        n.simulate(5.0);
        const Outcome o = adjust(&n.model, {});
        ASSERT_EQ(o.status, Status::adjusted);
        EXPECT_EQ(o.open, 4);
        EXPECT_LE(o.iteration.steps, 15);
        EXPECT_NEAR(o.variance_factor, 1, 5 * std::sqrt(2.0 / o.redundancy));
    }
}

TEST(Adjustment, OfBaselinesIsTheDenseSolution)
{
    for (Hold how : every_hold)
        for (unsigned seed = 1; seed <= 3; seed++)
            expect_dense(baselines(seed, how).model, name("baselines", how, seed), is_free(how) ? 3 : 0);
}

TEST(Adjustment, WithUnknownConstantsIsTheDenseSolution)
{
    for (Hold how : every_hold)
        for (bool weighted : {false, true})
            expect_dense(constants(3, how, weighted).model, name("constants", how, weighted), is_free(how) ? 4 : 0);
}

TEST(Adjustment, OfCorrelatedSessionsAndImportedPointsIsTheDenseSolution)
{
    for (unsigned seed = 1; seed <= 3; seed++)
        expect_dense(sessions(seed).model, name("sessions", Hold::weighted, seed), 0);
}

TEST(Adjustment, OfImagesWithTenInnerParametersIsTheDenseSolution)
{
    expect_dense(images(1, Hold::fixed).model, "images, fixed", 0);
    expect_dense(images(2, Hold::free_all).model, "images, free", 7);
}

TEST(Adjustment, OfAMovedGroupIsTheDenseSolution)
{
    for (Hold how : every_hold) expect_dense(movement(4, how).model, name("movement", how, 4), is_free(how) ? 4 : 0);
}

TEST(Adjustment, OfAWideNetworkIsTheDenseSolution)
{
    for (Hold how : {Hold::fixed, Hold::free_all})
        expect_dense(wide_plane(11, how).model, name("wide plane", how, 11), is_free(how) ? 3 : 0);
}

TEST(Adjustment, OfHeldAndDatumCoordinatesTogetherIsTheDenseSolution)
{
    const Frame flat = frame_of(Space::space);
    for (unsigned seed = 1; seed <= 2; seed++) {
        expect_dense(mixed(plane(seed, Hold::free_all, true), 2).model, "plane, a point held", 1);
        expect_dense(mixed(plane(seed, Hold::free_all, true), 1).model, "plane, one coordinate held", 2);
        expect_dense(mixed(plane(seed, Hold::free_all, false), 2).model, "angles, a point held", 2);
        expect_dense(mixed(space(seed, Hold::free_all, flat, true), 3).model, "space, a point held", 1);
        expect_dense(mixed(space(seed, Hold::free_all, flat, false), 3).model, "tilted, a point held", 3);
        expect_dense(mixed(baselines(seed, Hold::free_all), 2).model, "baselines, two coordinates held", 1);
    }
}

TEST(Adjustment, MultipliesVectorsByTheCofactors)
{
    for (Hold how : every_hold) {
        Model m = space(6, how, frame_of(Space::space), true).model;
        const DenseSolution dense = dense_solution(m, is_free(how), 0);
        System system = make_system(m);
        FreeDatum datum;
        fill(m, Derivatives::invariant, &system.equations);
        const Datum found = find_datum(unit_rows(m, system.equations));
        if (is_free(how))
            datum = free_datum(system.columns, found), system.held = held_columns(m, system.columns, found);
        fill_rows(m, &system);
        fill_normal(&system);
        ASSERT_TRUE(factorize(&system, 0.0, {}));
        Random random(1);
        std::vector<double> x, given;
        for (int u = 0; u < m.n_unknowns(); u++) x.push_back(random(-1, 1));
        given = x;
        Cofactors(system, datum).multiply(x.data());
        for (int i = 0; i < dense.q.rows; i++) {
            Real sum = 0, size = 0;
            for (int j = 0; j < dense.q.cols; j++) {
                sum += dense.q(i, j) * given[dense.system.unknown[j]];
                size += std::fabs(dense.q(i, j));
            }
            EXPECT_NEAR(x[dense.system.unknown[i]], (double)sum, 1e-9 * (double)size);
        }
    }
}

TEST(Adjustment, TellsATurnThatTheObservationsDetermineBadly)
{
    // distances and an azimuth of 0.1 rad alone hold the turn
    Network n(3, frame_of(Space::plane));
    n.points(7, 500, 0);
    n.pairs(12, [&](int p, int q) { n.observe(Kind::plane_distance, p, q, 0.003); });
    n.observe(Kind::azimuth, 0, 3, 0.1).sigma[0] = 0.1;
    n.simulate(0.0);
    for (int k = 0; k < 2; k++) n.model.code[k] = Code::fixed;
    Options options;
    options.iterate = false;
    const Outcome o = adjust(&n.model, options);
    ASSERT_EQ(o.status, Status::adjusted);
    ASSERT_EQ(o.weak.size(), 1u);
    EXPECT_EQ(o.weak[0].motion, 5);
    EXPECT_NEAR(o.weak[0].deviation, 0.1, 0.01);
    n.model.observations.back().sigma[0] = 1e-4;
    EXPECT_TRUE(adjust(&n.model, options).weak.empty());
}

TEST(Adjustment, GivesCovariancesOfPairsAndCofactorsOfChosenUnknowns)
{
    for (Hold how : every_hold) {
        Model m = space(6, how, frame_of(Space::space), true).model;
        const Model given = m;
        Options options = tight();
        options.pairs = {{4, 5}, {0, 5}, {5, 0}};
        options.joint = {17, 0, 14, 16, 9, m.setups[2].first + 2};
        const Outcome o = adjust(&m, options);
        ASSERT_EQ(o.status, Status::adjusted);
        const DenseSolution dense = dense_solution(given, o.open > 0);
        std::vector<int> column(m.value.size(), -1);
        for (size_t j = 0; j < dense.system.unknown.size(); j++) column[dense.system.unknown[j]] = (int)j;
        for (int a = 0; a < 6; a++)
            for (int b = 0; b < 6; b++) {
                const int i = column[options.joint[a]], j = column[options.joint[b]];
                const double wanted = i < 0 || j < 0 ? 0.0 : (double)dense.q(i, j);
                const double size = i < 0 || j < 0 ? 0.0 : std::sqrt((double)(dense.q(i, i) * dense.q(j, j)));
                EXPECT_NEAR(o.statistics.joint[6 * a + b], wanted, 1e-9 * size);
            }
        for (size_t i = 0; i < options.pairs.size(); i++) {
            const auto [p, q] = options.pairs[i];
            Matrix d(3, dense.q.rows); // difference of the coordinates that are estimated
            for (int j = 0; j < d.cols; j++) {
                const int u = dense.system.unknown[j];
                if (u / 3 == q && u < 18) d(u % 3, j) += 1;
                if (u / 3 == p && u < 18) d(u % 3, j) -= 1;
            }
            const Matrix c = d * dense.q * transposed(d);
            for (int a = 0, at = 0; a < 3; a++)
                for (int b = a; b < 3; b++, at++)
                    EXPECT_NEAR(o.statistics.pairs[i][at], o.variance_factor * (double)c(a, b),
                                1e-9 * o.variance_factor * (double)c(0, 0));
        }
    }
}

// ---- verdicts ----

TEST(Adjustment, RefusesWhatItsRowsLeaveOpenInsideAndLeavesTheValuesAlone)
{
    // two fixed points; a third one tied by one distance alone
    for (bool iterate : {true, false}) {
        Network n(1, frame_of(Space::plane));
        n.points(4, 100, 0);
        n.pairs(4, [&](int p, int q) {
            if (p != 3 && q != 3) n.observe(Kind::plane_distance, p, q, 0.001);
        });
        n.observe(Kind::plane_distance, 0, 2, 0.001);
        n.observe(Kind::plane_distance, 1, 3, 0.001);
        n.hold(Hold::fixed, 2);
        n.simulate(0.1);
        Model m = n.model;
        Options options;
        options.iterate = iterate;
        const Outcome o = adjust(&m, options);
        ASSERT_EQ(o.status, Status::undetermined);
        ASSERT_EQ(o.determinacy.mechanisms.vectors.cols, 1);
        double along = 0.0, size = 0.0; // the movement stands across the distance
        for (int k = 0; k < 2; k++) {
            const double move = o.determinacy.mechanisms.vectors(9 + k, 0);
            along += move * (m.value[9 + k] - m.value[3 + k]);
            size += move * move;
        }
        EXPECT_NEAR(along, 0.0, 1e-9);
        EXPECT_GT(size, 0.1);
        EXPECT_EQ(m.value, n.model.value);
        ASSERT_EQ(o.determinacy.findings.size(), 1u);
        EXPECT_EQ(o.determinacy.findings[0].points, std::vector<int>{3});
    }
}

TEST(Adjustment, NamesPointsThatNothingSees)
{
    Model m = plane(5, Hold::fixed, true).model;
    for (Observation &o : m.observations) o.use = o.from != 6 && o.to != 6;
    const Outcome o = adjust(&m, {});
    ASSERT_EQ(o.status, Status::undetermined);
    ASSERT_FALSE(o.determinacy.findings.empty());
    EXPECT_EQ(o.determinacy.findings[0].lack, Lack::observations);
    EXPECT_EQ(o.determinacy.findings[0].points, std::vector<int>{6});
}

TEST(Adjustment, RefusesLooseParts)
{
    Network n(2, frame_of(Space::heights));
    n.points(6, 100, 10);
    for (int p : {0, 1, 3, 4}) n.observe(Kind::height_difference, p, p + 1, 0.001);
    n.observe(Kind::height_difference, 0, 2, 0.001);
    n.observe(Kind::height_difference, 3, 5, 0.001);
    n.simulate(0.1);
    Model m = n.model;
    EXPECT_EQ(adjust(&m, {}).status, Status::no_datum);
    m.code[2] = Code::fixed;
    const Outcome half = adjust(&m, {});
    EXPECT_EQ(half.status, Status::no_datum);
    EXPECT_EQ(half.determinacy.datum.loose_parts.size(), 1u);
    m.code[11] = Code::fixed;
    EXPECT_EQ(adjust(&m, {}).status, Status::adjusted);
}

TEST(Adjustment, RefusesDatumPointsThatDoNotHoldWhatIsOpen)
{
    Model m = plane(4, Hold::free_all, true).model;
    for (int u = 2; u < m.n_unknowns(); u++)
        if (m.code[u] == Code::datum) m.code[u] = Code::free; // point 0 alone: the turn is left
    EXPECT_EQ(adjust(&m, {}).status, Status::datum_points);
}

TEST(Adjustment, RefusesACovarianceThatIsNotPositiveDefinite)
{
    Model m = baselines(1, Hold::fixed).model;
    m.covariance[9] = -1.0;
    const Outcome o = adjust(&m, {});
    EXPECT_EQ(o.status, Status::bad_covariance);
    EXPECT_EQ(o.bad_group, 1);
    ASSERT_GE(o.bad_row, 0);
    EXPECT_EQ(m.observations[o.equations.observation[o.bad_row]].group, 1);
    EXPECT_EQ(o.equations.component[o.bad_row], 0);
}

// The third of three components is the sum of the two others.
TEST(Adjustment, NamesTheRowThatDependsOnThoseBeforeIt)
{
    Model m = baselines(1, Hold::fixed).model;
    const double dependent[9] = {1, 0, 1, 0, 1, 1, 1, 1, 2};
    std::copy(dependent, dependent + 9, m.covariance.begin() + 9);
    const Outcome o = adjust(&m, {});
    EXPECT_EQ(o.status, Status::bad_covariance);
    ASSERT_GE(o.bad_row, 0);
    EXPECT_EQ(o.equations.component[o.bad_row], 2);
}

TEST(Adjustment, SaysWhenThereIsNothingToAdjust)
{
    Model m = levelling(1, Hold::fixed).model;
    m.observations.clear();
    EXPECT_EQ(adjust(&m, {}).status, Status::no_observations);
}

TEST(Adjustment, LeavesOneSightWithoutADerivativeOutAndNamesIt)
{
    Model m = plane(2, Hold::fixed, true).model;
    const Outcome whole = adjust(&m, {});
    Observation o;
    o.kind = Kind::plane_distance;
    o.from = o.to = 0;
    o.value[0] = 5, o.sigma[0] = 0.001;
    const int added = m.observe(o);
    m.value = m.start;
    const Outcome with = adjust(&m, {});
    EXPECT_EQ(with.left_out, std::vector<int>{added});
    EXPECT_EQ(with.redundancy, whole.redundancy);
    EXPECT_EQ(with.iteration.squares, whole.iteration.squares);
}

TEST(Adjustment, PropagatesWithoutMoving)
{
    Model m = space(3, Hold::free_all, frame_of(Space::space), true).model;
    Options options;
    options.iterate = false;
    const std::vector<double> before = m.value;
    const Outcome o = adjust(&m, options);
    ASSERT_EQ(o.status, Status::adjusted);
    EXPECT_EQ(m.value, before);
    EXPECT_EQ(o.variance_factor, 1.0);
    const DenseSolution dense = dense_solution(m, true, 0);
    for (size_t j = 0; j < dense.system.unknown.size(); j++)
        expect_close(o.statistics.deviation[dense.system.unknown[j]], std::sqrt((double)dense.q((int)j, (int)j)), 1e-9,
                     0, "");
}

TEST(Adjustment, OfExactObservationsFindsTheTruthFromFarAway)
{
    // Resection-like net whose full steps overshoot: first values off by half the size of the network
    int adjusted = 0;
    for (unsigned seed = 1; seed <= 20; seed++) {
        Network n(seed, frame_of(Space::plane));
        n.points(7, 500, 0);
        n.setups(7);
        n.pairs(12, [&](int p, int q) {
            n.observe(Kind::direction, p, q, 2e-5);
            n.observe(Kind::plane_distance, p, q, 0.003);
        });
        n.hold(Hold::fixed, 3);
        for (Observation &o : n.model.observations) {
            Linear l;
            linearize(n.model, o, false, &l);
            o.value[0] = l.value[0];
        }
        const std::vector<double> truth = n.model.value;
        for (int u = 0; u < n.model.n_unknowns(); u++)
            if (n.model.estimated(u))
                n.model.value[u] +=
                    n.model.meaning[u] == Meaning::coordinate ? n.uniform(-100, 100) : n.uniform(-0.5, 0.5);
        n.model.start = n.model.value;
        const Outcome o = adjust(&n.model, {});
        if (o.status != Status::adjusted) continue;
        double worst = 0.0;
        for (int u = 0; u < 21; u++) worst = std::fmax(worst, std::fabs(n.model.value[u] - truth[u]));
        adjusted += worst < 1e-7;
    }
    EXPECT_GE(adjusted, 18);
}

TEST(Adjustment, NamesTheObservationThatDoesNotFitWhenItFails)
{
    Network n(3, frame_of(Space::plane));
    n.points(7, 500, 0);
    n.setups(7);
    n.pairs(40, [&](int p, int q) { n.observe(Kind::direction, p, q, 2e-5); });
    n.hold(Hold::fixed, 3);
    n.simulate(0.01);
    n.model.observations[20].value[0] += 0.3;
    Options options;
    options.limits.steps = 1;
    const Outcome o = adjust(&n.model, options);
    ASSERT_EQ(o.status, Status::no_convergence);
    ASSERT_FALSE(o.misfits.empty());
    EXPECT_EQ(o.misfits[0].observation, 20);
    EXPECT_NEAR(o.misfits[0].misclosure, 0.3, 1e-3);
    EXPECT_GE(o.misfits[0].agreeing, 2);
}
