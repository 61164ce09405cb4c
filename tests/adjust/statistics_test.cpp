#include "adjust/statistics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "adjust/adjustment.h"
#include "random_networks.h"
#include "small_net.h"

using namespace vornadjust;

TEST(Ellipse, HasTheEigenvaluesAndTheBearingOfTheLongAxis)
{
    const double pi = std::acos(-1.0);
    const Ellipse along_x = ellipse(4, 0, 1), along_y = ellipse(1, 0, 9);
    EXPECT_DOUBLE_EQ(along_x.a, 2);
    EXPECT_DOUBLE_EQ(along_x.b, 1);
    EXPECT_DOUBLE_EQ(along_x.bearing, 0);
    EXPECT_DOUBLE_EQ(along_y.a, 3);
    EXPECT_DOUBLE_EQ(along_y.bearing, pi / 2);
    for (double bearing : {0.1, 1.2, 2.5, 3.0}) {
        const double a = 5, b = 2, c = std::cos(bearing), s = std::sin(bearing);
        const Ellipse e =
            ellipse(a * a * c * c + b * b * s * s, (a * a - b * b) * c * s, a * a * s * s + b * b * c * c);
        EXPECT_NEAR(e.a, a, 1e-14);
        EXPECT_NEAR(e.b, b, 1e-14);
        EXPECT_NEAR(e.bearing, bearing, 1e-14);
    }
    const Ellipse line = ellipse(1, 1, 1); // correlation 1
    EXPECT_DOUBLE_EQ(line.a, std::sqrt(2.0));
    EXPECT_NEAR(line.b, 0, 1e-8);
    EXPECT_DOUBLE_EQ(line.bearing, pi / 4);
}

TEST(Statistics, OfRepeatedObservationsAreThoseOfTheMean)
{
    // n height differences of one height: redundancy 1 - 1/n each, sd of the mean sigma / sqrt(n)
    Model m;
    m.frame.space = Space::heights;
    const Code held[3] = {Code::absent, Code::absent, Code::fixed}, open[3] = {Code::absent, Code::absent, Code::free};
    const double zero[3] = {};
    m.add_point(zero, held);
    m.add_point(zero, open);
    const double values[4] = {1.002, 0.999, 1.001, 0.998};
    for (double v : values) {
        Observation o;
        o.kind = Kind::height_difference;
        o.from = 0, o.to = 1;
        o.value[0] = v, o.sigma[0] = 0.002, o.factor = 3;
        m.observe(o);
    }
    const Outcome o = adjust(&m, {});
    ASSERT_EQ(o.status, Status::adjusted);
    EXPECT_NEAR(m.value[5], 1.0, 1e-15);
    EXPECT_EQ(o.redundancy, 3);
    const double squares = (4 + 1 + 1 + 4) * 1e-6, s = 0.002 / 3; // standard deviation as weighted
    EXPECT_NEAR(o.variance_factor, squares / (s * s) / 3, 1e-9);
    EXPECT_NEAR(o.statistics.deviation[5], std::sqrt(squares / 3 / 4), 1e-15);
    for (int r = 0; r < 4; r++) {
        EXPECT_NEAR(o.statistics.rows[r].residual, values[r] - 1.0, 1e-15);
        EXPECT_NEAR(o.statistics.rows[r].redundancy, 0.75, 1e-12);
        EXPECT_NEAR(o.statistics.rows[r].cofactor, 0.75 * s * s, 1e-18);
        EXPECT_NEAR(o.statistics.rows[r].normalised, (values[r] - 1.0) / (s * std::sqrt(0.75)), 1e-9);
    }
    const KindStatistics &kind = o.statistics.kinds[(int)Kind::height_difference];
    EXPECT_EQ(kind.rows, 4);
    EXPECT_NEAR(kind.redundancy, 3, 1e-12);
    EXPECT_NEAR(kind.squares, squares / (s * s), 1e-9);
}

TEST(Statistics, KindsShareTheSquaresAndTheRedundancy)
{
    Model m = space(2, Hold::weighted, frame_of(Space::space), true).model;
    const Outcome o = adjust(&m, {});
    ASSERT_EQ(o.status, Status::adjusted);
    double squares = 0.0, redundancy = 0.0;
    int rows = 0;
    for (const KindStatistics &k : o.statistics.kinds) squares += k.squares, redundancy += k.redundancy, rows += k.rows;
    EXPECT_NEAR(squares, o.iteration.squares, 1e-9 * squares);
    EXPECT_NEAR(redundancy, o.redundancy, 1e-9);
    EXPECT_EQ(rows, o.rows);
}

TEST(Statistics, NormalisedResidualsAndVarianceFactorsHaveTheirDistributions)
{
    // 400 networks with errors as their sigmas say: the normalised residuals of controlled rows have mean 0 and
    // variance 1, the variance factors mean 1. Bounds are five standard deviations of the means.
    double sum = 0.0, squares = 0.0, factors = 0.0, freedom = 0.0;
    int n = 0, networks = 0, outside = 0;
    for (unsigned seed = 1; seed <= 400; seed++) {
        Model m = seed % 2 ? levelling(seed, Hold::free_all).model : baselines(seed, Hold::weighted).model;
        const Outcome o = adjust(&m, {});
        ASSERT_EQ(o.status, Status::adjusted);
        for (const RowStatistics &r : o.statistics.rows) {
            if (r.redundancy < 0.1) continue;
            sum += r.normalised, squares += r.normalised * r.normalised, n++;
            outside += std::fabs(r.normalised) > 1.959964;
        }
        factors += o.variance_factor, freedom += 2.0 / o.redundancy, networks++;
    }
    // residuals of one network are correlated: the effective number of them is the sum of redundancies, about a third
    const double effective = n / 3.0;
    EXPECT_NEAR(sum / n, 0, 5 / std::sqrt(effective));
    EXPECT_NEAR(squares / n, 1, 5 * std::sqrt(2 / effective));
    EXPECT_NEAR((double)outside / n, 0.05, 5 * std::sqrt(0.05 * 0.95 / effective));
    EXPECT_NEAR(factors / networks, 1, 5 * std::sqrt(freedom) / networks);
}

TEST(Statistics, ResidualsCanBeLeftOut)
{
    Model m = levelling(1, Hold::fixed).model;
    Options options;
    options.residuals = false;
    const Outcome o = adjust(&m, options);
    EXPECT_TRUE(o.statistics.rows.empty());
    EXPECT_FALSE(o.statistics.deviation.empty());
    m.value = m.start;
    options.statistics = false;
    EXPECT_TRUE(adjust(&m, options).statistics.deviation.empty());
}

// Q = T diag(a^2) T^T with T a product of turns.
TEST(ErrorEllipsoid, HasTheAxesOfTheCovariance)
{
    const double a[3] = {5, 2, 0.5}, s = std::sin(0.7), c = std::cos(0.7), u = std::sin(0.3), v = std::cos(0.3);
    const double t[3][3] = {{c * v, -s, c * u}, {s * v, c, s * u}, {-u, 0, v}}; // columns are the axes
    Covariance q;
    for (int i = 0, at = 0; i < 3; i++)
        for (int j = i; j < 3; j++, at++) {
            q[at] = 0;
            for (int k = 0; k < 3; k++) q[at] += t[i][k] * a[k] * a[k] * t[j][k];
        }
    const ErrorEllipsoid e = error_ellipsoid(q);
    for (int k = 0; k < 3; k++) {
        EXPECT_NEAR(e.axis[k], a[k], 1e-13);
        double along = 0;
        for (int i = 0; i < 3; i++) along += e.direction[k][i] * t[i][k];
        EXPECT_NEAR(std::fabs(along), 1.0, 1e-12) << k;
    }
}

// Neighbours without solves are the pairs with solves; the worst first.
TEST(Statistics, WeakestPairsAreThoseWithTheLargestRelativeEllipses)
{
    for (const Hold hold : {Hold::fixed, Hold::free_all}) {
        Network net = plane(21, hold, true);
        Options options;
        options.weak_pairs = 1000;
        for (int p = 0; p < net.model.n_points; p++)
            for (int q = p + 1; q < net.model.n_points; q++) options.pairs.push_back({p, q});
        const Outcome o = adjust(&net.model, options);
        ASSERT_EQ(o.status, Status::adjusted);
        const std::vector<WeakPair> &weak = o.statistics.weak_pairs;
        ASSERT_GT(weak.size(), 5u);
        for (size_t i = 0; i < weak.size(); i++) {
            const auto at = std::find(options.pairs.begin(), options.pairs.end(), std::pair(weak[i].from, weak[i].to));
            const Covariance &c = o.statistics.pairs[at - options.pairs.begin()];
            const Ellipse e = ellipse(c[0], c[1], c[3]);
            EXPECT_NEAR(weak[i].a, e.a, 1e-9 * e.a + 1e-12);
            EXPECT_NEAR(weak[i].b, e.b, 1e-6 * e.a + 1e-12);
            if (i > 0) EXPECT_LE(weak[i].a, weak[i - 1].a);
        }
        Options few;
        few.weak_pairs = 3;
        const Outcome worst = adjust(&net.model, few);
        ASSERT_EQ(worst.statistics.weak_pairs.size(), 3u);
        EXPECT_NEAR(worst.statistics.weak_pairs[2].a, weak[2].a, 1e-9);
    }
}

// Points placed by distances, one by one, and joined by height differences, which leave their plan apart.
TEST(Statistics, NeighboursWhosePlanNoRowTiesNeedNotBeAmongTheWeakest)
{
    SmallNet net(Space::space);
    const int held[3] = {net.point(0, 0, 0, Code::fixed, Code::fixed), net.point(900, 0, 300, Code::fixed, Code::fixed),
                         net.point(0, 900, -200, Code::fixed, Code::fixed)};
    const int n = 40;
    for (int i = 0; i < n; i++) {
        const int end = net.point(500 + 7 * i, 400 + 90 * std::sin(i), 30 + i);
        for (const int begin : held) {
            const double *u = &net.model.value[3 * begin], *v = &net.model.value[3 * end];
            net.observe(Kind::slope_distance, begin, end).value[0] = std::hypot(u[0] - v[0], u[1] - v[1], u[2] - v[2]);
        }
        for (int step = 1; step <= 16 && step <= i; step *= 4)
            net.observe(Kind::height_difference, end - step, end).value[0] = step;
    }
    Options options;
    options.weak_pairs = 1000;
    const Outcome o = adjust(&net.model, options);
    ASSERT_EQ(o.status, Status::adjusted);
    EXPECT_GE(o.statistics.weak_pairs.size(), 3u * n);
}
