// Robust estimation against closed solutions, and on networks with gross errors.

#include "adjust/robust.h"

#include <gtest/gtest.h>

#include "random_networks.h"

using namespace vornadjust;

namespace {

// A height observed so often, with a sigma of 1 m.
Model heights(const std::vector<double> &values)
{
    Model m;
    m.frame.space = Space::heights;
    const Code held[3] = {Code::absent, Code::absent, Code::fixed}, open[3] = {Code::absent, Code::absent, Code::free};
    const double zero[3] = {};
    m.add_point(zero, held);
    m.add_point(zero, open);
    for (double v : values) {
        Observation o;
        o.kind = Kind::height_difference;
        o.from = 0, o.to = 1;
        o.value[0] = v, o.sigma[0] = 1.0;
        m.observe(o);
    }
    return m;
}

const Estimator all[] = {Estimator::huber, Estimator::danish, Estimator::least_absolute};

} // namespace

// Huber's estimate of a mean solves sum psi(v) = 0: of 0, 1, 2 and a wrong 100 (x - 0) + (x - 1) + (x - 2) = 1.5.
TEST(Robust, HubersMeanSolvesItsEquation)
{
    Model m = heights({0, 1, 2, 100});
    const Robust r = adjust_robustly(&m, {}, Estimator::huber);
    ASSERT_TRUE(r.settled);
    EXPECT_NEAR(m.value[5], 1.5, 1e-3);
    EXPECT_NEAR(r.weight[3], 1.5 / 98.5, 1e-4);
    EXPECT_EQ(r.weight[1], 1.0);
    EXPECT_EQ(m.observations[3].factor, 1.0);
}

// The Danish weight of the wrong one is as good as nothing: the mean of the others.
TEST(Robust, TheDanishMeanForgetsTheWrongOne)
{
    Model m = heights({0, 1, 2, 100});
    const Robust r = adjust_robustly(&m, {}, Estimator::danish);
    ASSERT_TRUE(r.settled);
    EXPECT_NEAR(m.value[5], 1.0, 1e-6);
    EXPECT_LT(r.weight[3], 1e-10);
}

TEST(Robust, LeastAbsoluteValuesGiveTheMedian)
{
    Model m = heights({7, 1, 2, 100, 4});
    const Robust r = adjust_robustly(&m, {}, Estimator::least_absolute);
    EXPECT_EQ(r.outcome.status, Status::adjusted);
    EXPECT_NEAR(m.value[5], 4.0, 0.05); // within the part that is quadratic
}

TEST(Robust, WithoutGrossErrorsHuberIsNearLeastSquares)
{
    Model m = heights({0.1, -0.2, 0.1, 0.4});
    const Robust r = adjust_robustly(&m, {}, Estimator::huber);
    EXPECT_NEAR(m.value[5], 0.1, 1e-12);
    for (double w : r.weight) EXPECT_EQ(w, 1.0);
}

// The gross error is the first suspect, its size as leaving it out gives it.
TEST(Robust, TheSuspectsAreThoseThatWereWrong)
{
    for (const Estimator e : all) {
        Model m = plane(11, Hold::fixed, true).model;
        m.observations[5].value[0] += 60 * m.observations[5].sigma[0];
        Options options;
        options.suspects.most = 3;
        options.suspects.limit = [](int, int, double) { return 3.2905; };
        const Robust r = adjust_robustly(&m, options, e);
        ASSERT_EQ(r.outcome.status, Status::adjusted);
        ASSERT_FALSE(r.outcome.suspects.empty()) << (int)e;
        const Suspect &s = r.outcome.suspects[0];
        EXPECT_EQ(s.observation, 5) << (int)e;
        EXPECT_NEAR(s.error, 60 * m.observations[5].sigma[0], 5 * m.observations[5].sigma[0]) << (int)e;
    }
}
