#include "adjust/diagnosis.h"

#include <gtest/gtest.h>

#include "adjust/small_net.h"

using namespace vornadjust;

namespace {

using Points = std::vector<int>;

Determinacy judged(const SmallNet &net, std::vector<char> made = {})
{
    made.resize(net.model.n_points, 0);
    return judge(net.model, made);
}

// Five points around and inside a square, and three beyond its corner C (point 2).
struct Hinged : SmallNet {
    const int c = 2, d = 5, e = 6, f = 7;
    explicit Hinged(Code code) : SmallNet(Space::plane)
    {
        const double xy[8][2] = {{0, 0}, {90, 10}, {100, 100}, {5, 95}, {40, 60}, {150, 110}, {170, 180}, {110, 160}};
        for (const auto &p : xy) plane_point(4e6 + p[0], 5e6 + p[1], code);
        all_distances_among(5);
        for (int i : {c, d, e, f})
            for (int j : {d, e, f})
                if (i < j) distance(i, j);
    }
};

} // namespace

TEST(Judge, AcceptsAFreeNetworkWithOpenMotions)
{
    SmallNet net(Space::plane);
    for (double x : {0, 100})
        for (double y : {0, 90}) net.plane_point(x, y);
    net.all_distances_among(4);
    EXPECT_TRUE(judged(net).accepted());
}

TEST(Judge, NamesTheHingeAndWhatTurnsAboutIt)
{
    for (Code code : {Code::datum, Code::free}) {
        Hinged net(code);
        if (code == Code::free)
            for (int u : {0, 1, 3, 4}) net.model.code[u] = Code::fixed;
        const Determinacy found = judged(net);
        EXPECT_FALSE(found.accepted());
        ASSERT_EQ(found.findings.size(), 1u);
        const Finding &finding = found.findings[0];
        EXPECT_EQ(finding.lack, Lack::body);
        EXPECT_EQ(finding.points, (Points{net.d, net.e, net.f}));
        EXPECT_EQ(finding.hinges, Points{net.c});
        ASSERT_EQ(finding.motions.size(), 1u);
        EXPECT_EQ(finding.motions[0].kind, MotionKind::turn);
    }
}

TEST(Judge, LetsTheBodyWithTheFixedPointsRestHoweverSmall)
{
    Hinged net(Code::free);
    for (int u : {15, 16, 18, 19}) net.model.code[u] = Code::fixed;
    const Determinacy found = judged(net);
    ASSERT_EQ(found.findings.size(), 1u);
    EXPECT_EQ(found.findings[0].points, (Points{0, 1, 3, 4}));
    EXPECT_EQ(found.findings[0].hinges, Points{net.c});
}

TEST(Judge, NamesThePointOfOneDistanceAndItsDirection)
{
    Hinged net(Code::free);
    for (int u : {0, 1, 3, 4}) net.model.code[u] = Code::fixed;
    for (int i = 0; i < 3; i++) net.distance(i, 5 + i), net.distance(i + 1, 5 + i);
    const double *c = &net.model.value[6];
    SmallNet more(Space::plane);
    for (int p = 0; p < 8; p++)
        more.plane_point(net.model.value[3 * p], net.model.value[3 * p + 1], net.model.code[3 * p]);
    const int far = more.plane_point(c[0] + 30, c[1] + 40, Code::free);
    for (const Observation &o : net.model.observations) more.distance(o.from, o.to);
    more.distance(2, far);
    const Determinacy found = judged(more);
    ASSERT_EQ(found.findings.size(), 1u);
    EXPECT_EQ(found.findings[0].lack, Lack::point);
    EXPECT_EQ(found.findings[0].points, Points{far});
    ASSERT_EQ(found.findings[0].motions.size(), 1u);
    EXPECT_NEAR(found.findings[0].motions[0].direction[0], 0.8, 1e-9);
    EXPECT_NEAR(found.findings[0].motions[0].direction[1], -0.6, 1e-9);
    EXPECT_EQ(found.findings[0].sights[static_cast<int>(Kind::plane_distance)], 1);
}

TEST(Judge, NamesHeightsThatNothingDetermines)
{
    SmallNet net(Space::space);
    for (int i = 0; i < 6; i++)
        net.point(100 * (i % 3), 90 * (i / 3) + 5 * i, 10 * i, i < 2 ? Code::fixed : Code::free,
                  i < 2 ? Code::fixed : Code::free);
    for (int i = 0; i < 6; i++)
        for (int j = i + 1; j < 6; j++) net.observe(Kind::plane_distance, i, j);
    net.level(0, 2);
    net.level(2, 3);
    const Determinacy found = judged(net);
    ASSERT_EQ(found.findings.size(), 1u);
    EXPECT_EQ(found.findings[0].lack, Lack::heights);
    EXPECT_EQ(found.findings[0].points, (Points{4, 5}));
}

TEST(Judge, NamesHeightsThatAreTiedToEachOtherAsABody)
{
    SmallNet net(Space::space);
    for (int i = 0; i < 6; i++)
        net.point(100 * (i % 3), 90 * (i / 3) + 5 * i, 10 * i, i < 2 ? Code::fixed : Code::free,
                  i < 2 ? Code::fixed : Code::free);
    for (int i = 0; i < 6; i++)
        for (int j = i + 1; j < 6; j++) net.observe(Kind::plane_distance, i, j);
    net.level(0, 2);
    for (int i = 3; i < 5; i++) net.level(i, i + 1);
    const Determinacy found = judged(net);
    ASSERT_EQ(found.findings.size(), 1u);
    EXPECT_EQ(found.findings[0].lack, Lack::body);
    EXPECT_EQ(found.findings[0].points, (Points{3, 4, 5}));
    ASSERT_EQ(found.findings[0].motions.size(), 1u);
    EXPECT_EQ(found.findings[0].motions[0].kind, MotionKind::shift);
    EXPECT_NEAR(found.findings[0].motions[0].direction[2], 1, 1e-9);
}

TEST(Judge, NamesPointsWithoutObservations)
{
    SmallNet net(Space::plane);
    for (double x : {0, 100})
        for (double y : {0, 90}) net.plane_point(x, y);
    net.plane_point(7, 7);
    net.plane_point(9, 9, Code::fixed);
    net.all_distances_among(4);
    const Determinacy found = judged(net);
    ASSERT_EQ(found.findings.size(), 1u);
    EXPECT_EQ(found.findings[0].lack, Lack::observations);
    EXPECT_EQ(found.findings[0].points, Points{4});
}

TEST(Judge, NamesConstantsThatNothingTellsApart)
{
    SmallNet net(Space::plane);
    for (double x : {0, 100, 200}) net.plane_point(x, 0, Code::fixed);
    const int k = net.constants(Code::free, Code::free);
    net.distance(0, 1, k);
    net.distance(1, 2, k);
    const Determinacy found = judged(net);
    ASSERT_EQ(found.findings.size(), 1u);
    EXPECT_EQ(found.findings[0].lack, Lack::unknowns);
    const int first = net.model.constants[0].first;
    EXPECT_EQ(found.findings[0].unknowns, (Points{first, first + 1}));
}

namespace {

// Two boxes in space that have `shared` corners in common.
SmallNet boxes(int shared)
{
    SmallNet net(Space::space);
    const double first[6][3] = {{0, 0, 0}, {50, 3, 60}, {100, 0, 0}, {10, 90, 5}, {80, 95, -7}, {40, 50, 70}};
    const double second[4][3] = {{160, 10, 5}, {150, 100, 20}, {170, 60, 90}, {130, 30, 60}};
    const int corner[3] = {2, 4, 5};
    for (const auto &p : first) net.point(p[0], p[1], p[2]);
    for (const auto &p : second) net.point(p[0], p[1], p[2]);
    net.all_distances_among(6);
    for (int i = 6; i < 10; i++) {
        for (int j = i + 1; j < 10; j++) net.distance(i, j);
        for (int j = 0; j < shared; j++) net.distance(corner[j], i);
    }
    return net;
}

} // namespace

TEST(Judge, NamesTheAxisOfAHingeInSpace)
{
    const Determinacy found = judged(boxes(2));
    ASSERT_EQ(found.findings.size(), 1u);
    EXPECT_EQ(found.findings[0].points, (Points{6, 7, 8, 9}));
    EXPECT_EQ(found.findings[0].hinges, (Points{2, 4}));
    ASSERT_EQ(found.findings[0].motions.size(), 1u);
    EXPECT_EQ(found.findings[0].motions[0].kind, MotionKind::turn);
}

TEST(Judge, NamesThePointOfAHingeInSpace)
{
    const Determinacy found = judged(boxes(1));
    ASSERT_EQ(found.findings.size(), 1u);
    EXPECT_EQ(found.findings[0].points, (Points{6, 7, 8, 9}));
    EXPECT_EQ(found.findings[0].hinges, Points{2});
    EXPECT_EQ(found.findings[0].motions.size(), 3u);
}

TEST(Judge, AcceptsBoxesThatShareThreePoints) { EXPECT_TRUE(judged(boxes(3)).accepted()); }

TEST(Judge, LeavesLooseLevellingLoopsToTheDatum)
{
    SmallNet net(Space::heights);
    for (int i = 0; i < 6; i++) net.height(100 + i * i);
    for (int i = 0; i < 3; i++) net.level(i, (i + 1) % 3), net.level(3 + i, 3 + (i + 1) % 3);
    const Determinacy found = judged(net);
    EXPECT_FALSE(found.accepted());
    EXPECT_EQ(found.datum.state, DatumState::loose);
    EXPECT_EQ(found.datum.loose_parts, (Points{0, 1}));
    EXPECT_TRUE(found.findings.empty());
}

TEST(Judge, NamesAStationThatSeesTwoMarksOnly)
{
    SmallNet net(Space::plane);
    net.plane_point(0, 0, Code::fixed);
    net.plane_point(200, 0, Code::fixed);
    const int p = net.plane_point(100, 50, Code::free);
    net.directions(p, {0, 1});
    const Determinacy found = judged(net);
    ASSERT_EQ(found.findings.size(), 1u);
    EXPECT_EQ(found.findings[0].lack, Lack::point);
    EXPECT_EQ(found.findings[0].points, Points{p});
    // It moves on the circle through the marks, whose centre is (100, -75).
    ASSERT_EQ(found.findings[0].motions.size(), 1u);
    EXPECT_NEAR(found.findings[0].motions[0].direction[0], 1, 1e-9);
    EXPECT_EQ(found.findings[0].sights[static_cast<int>(Kind::direction)], 2);
}

TEST(Judge, NamesAStationThatSeesOneFixedMarkThoughItMovesAsTheWhole)
{
    // It can be turned about the mark and go away from it: motions of the whole, which no datum point holds.
    SmallNet net(Space::plane);
    net.plane_point(0, 0, Code::fixed);
    const int p = net.plane_point(100, 50, Code::free);
    net.directions(p, {0});
    net.directions(p, {0});
    Determinacy found = judged(net);
    EXPECT_EQ(found.datum.state, DatumState::not_carried);
    ASSERT_EQ(found.findings.size(), 1u);
    EXPECT_EQ(found.findings[0].lack, Lack::point);
    EXPECT_EQ(found.findings[0].points, Points{p});
    EXPECT_EQ(found.findings[0].motions.size(), 2u);
    // As a datum point it keeps its first coordinates.
    net.model.code[3] = net.model.code[4] = Code::datum;
    EXPECT_TRUE(judged(net).accepted());
}

TEST(Judge, DoesNotBelieveFirstCoordinatesInLineThatAreTheProgramsOwn)
{
    SmallNet net(Space::plane);
    net.plane_point(0, 0, Code::fixed);
    net.plane_point(300, 0, Code::fixed);
    net.plane_point(100, 0, Code::free);
    net.distance(0, 2);
    net.distance(1, 2);
    EXPECT_FALSE(judged(net).accepted());
    EXPECT_TRUE(judged(net, {0, 0, 1}).accepted());
    // One distance is one distance wherever the point is.
    net.model.observations.pop_back();
    EXPECT_FALSE(judged(net, {0, 0, 1}).accepted());
}

TEST(Judge, AcceptsAnEmptyNetwork) { EXPECT_TRUE(judged(SmallNet(Space::plane)).accepted()); }

TEST(WeakMotions, TellATurnThatOneShortAzimuthHolds)
{
    // Standard deviations of points are 0.001 times the identity but for a turn of 0.02 about the centroid.
    SmallNet net(Space::plane);
    for (double x : {0, 100})
        for (double y : {0, 100}) net.plane_point(x, y, Code::free);
    net.all_distances_among(4);
    net.azimuth(0, 1);
    const Datum datum = find_datum(net.rows());
    for (double turn : {0.005, 0.02}) {
        const auto apply = [&](double *v) {
            std::vector<double> t(12, 0.0);
            for (int p = 0; p < 4; p++)
                t[3 * p] = -(net.model.value[3 * p + 1] - 50), t[3 * p + 1] = net.model.value[3 * p] - 50;
            double along = 0;
            for (int u = 0; u < 12; u++) along += t[u] * v[u];
            for (int u = 0; u < 12; u++) v[u] = 1e-6 * v[u] + turn * turn * along * t[u];
        };
        const std::vector<WeakMotion> weak = weak_motions(net.model, datum, apply);
        ASSERT_EQ(weak.size(), turn > 0.01 ? 1u : 0u);
        if (weak.empty()) continue;
        EXPECT_EQ(weak[0].motion, 5);
        EXPECT_NEAR(weak[0].deviation, turn, 1e-5);
    }
}
