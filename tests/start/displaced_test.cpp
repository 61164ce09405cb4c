// Given coordinates that are wrong: single points, exchanged names and axes, another unit.

#include <gtest/gtest.h>

#include <utility>

#include "host/preparation/start/start.h"
#include "start/simulated.h"

namespace {

using namespace simulated;
using vornhost::start::Start;

constexpr int side = 5;

// A polar network on a disturbed grid, fixed in five places.
Network grid(unsigned seed)
{
    Maker m(seed);
    m.space(va::Space::plane);
    for (int i = 0; i < side * side; i++)
        m.point(7000 + 100.0 * (i % side) + m.uniform(-20, 20), 300 + 100.0 * (i / side) + m.uniform(-20, 20), 0,
                i == 0 || i == 4 || i == 11 || i == 20 || i == 24);
    for (int i = 0; i < side * side; i++) {
        const int s = m.setup(i);
        for (int j = 0; j < side * side; j++)
            if (i != j && m.distance(i, j) < 150.0) m.polar(s, j);
    }
    return m.finish(0);
}

double &x_of(Network &n, int p) { return n.model.value[3 * (size_t)p]; }
double &y_of(Network &n, int p) { return n.model.value[3 * (size_t)p + 1]; }

void give(Network &n, int p, double x, double y)
{
    x_of(n, p) = x, y_of(n, p) = y;
    n.given.coordinate[3 * (size_t)p] = n.given.coordinate[3 * (size_t)p + 1] = Known::given;
}

Start start(Network &n) { return vornhost::start::find_start(&n.model, n.given); }

// One point, found where the truth has it; nothing else is blamed.
void expect_displaced(const Network &n, const Start &s, const std::vector<int> &points)
{
    EXPECT_TRUE(s.found());
    EXPECT_TRUE(s.misfits.empty());
    ASSERT_EQ(s.displaced.size(), points.size());
    for (size_t i = 0; i < points.size(); i++) {
        const size_t u = 3 * (size_t)points[i];
        EXPECT_EQ(s.displaced[i].point, points[i]);
        EXPECT_NEAR(s.displaced[i].x[0], n.truth[u], 0.05);
        EXPECT_NEAR(s.displaced[i].x[1], n.truth[u + 1], 0.05);
    }
}

} // namespace

TEST(GivenCoordinates, AreNotBlamedWhereTheyAreRight)
{
    Network n = grid(1);
    give(n, 6, n.truth[18] + 5.0, n.truth[19] - 7.0);
    expect_displaced(n, start(n), {});
}

TEST(GivenCoordinates, OfAFixedPointWithAWrongDigitAreNamed)
{
    Network n = grid(2);
    x_of(n, 24) += 100.0;
    expect_displaced(n, start(n), {24});
    EXPECT_EQ(x_of(n, 24), n.truth[72] + 100.0) << "a fixed point keeps its value";
}

TEST(GivenCoordinates, ThatAreExchangedAreNamed)
{
    Network n = grid(3);
    std::swap(x_of(n, 4), x_of(n, 20));
    std::swap(y_of(n, 4), y_of(n, 20));
    expect_displaced(n, start(n), {4, 20});
}

// Two pairs of four points would each fit by themselves.
TEST(GivenCoordinates, ThatAreExchangedAreNamedWhereOnlyTwoOthersAreFixed)
{
    Network n = grid(4);
    n.given.coordinate[33] = n.given.coordinate[34] = Known::wanted;
    n.model.code[33] = n.model.code[34] = Code::datum;
    std::swap(x_of(n, 4), x_of(n, 20));
    std::swap(y_of(n, 4), y_of(n, 20));
    expect_displaced(n, start(n), {4, 20});
}

TEST(GivenCoordinates, ThatAreApproximateGiveWayWhereTheyAreFarOff)
{
    Network n = grid(5);
    give(n, 6, n.truth[18], n.truth[19] + 1000.0);
    n.model.code[18] = n.model.code[19] = Code::datum;
    expect_displaced(n, start(n), {6});
    EXPECT_NEAR(y_of(n, 6), n.truth[19], 0.05);
}

TEST(GivenCoordinates, WithExchangedAxesAreRefused)
{
    Network n = grid(6);
    for (const int p : {0, 4, 11, 20, 24}) std::swap(x_of(n, p), y_of(n, p));
    const Start s = start(n);
    EXPECT_TRUE(s.mirrored);
    EXPECT_FALSE(s.found());
}

TEST(GivenCoordinates, InAnotherUnitAreRefused)
{
    Network n = grid(7);
    for (const int p : {0, 4, 11, 20, 24}) x_of(n, p) *= 1000.0, y_of(n, p) *= 1000.0;
    const Start s = start(n);
    EXPECT_NEAR(s.given_scale, 1000.0, 1.0);
    EXPECT_FALSE(s.found());
}

// Directions in degrees that are read as gon.
TEST(GivenCoordinates, AreNotBlamedForAnglesInAnotherUnit)
{
    Network n = grid(8);
    for (va::Observation &o : n.model.observations)
        if (o.kind == Kind::direction) o.value[0] *= 0.9;
    const Start s = start(n);
    EXPECT_TRUE(s.contradicts);
    EXPECT_TRUE(s.doubts.empty());
    EXPECT_TRUE(s.displaced.empty());
}
