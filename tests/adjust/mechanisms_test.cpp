#include "adjust/mechanisms.h"

#include <gtest/gtest.h>

#include "adjust/small_net.h"

using namespace vornadjust;

namespace {

struct Found {
    Datum datum;
    Mechanisms mechanisms;
    int defect;
    double felt; // largest answer of a unit row to a movement

    explicit Found(SmallNet &net)
    {
        const UnitRows rows = net.rows();
        datum = find_datum(rows);
        mechanisms = find_mechanisms(rows, datum);
        defect = dense_defect(rows);
        felt = 0;
        for (int j = 0; j < mechanisms.vectors.cols; j++) {
            std::vector<double> z(mechanisms.vectors.col(j), mechanisms.vectors.col(j) + mechanisms.vectors.rows);
            for (std::size_t u = 0; u < z.size(); u++) z[u] /= rows.column_factor[u];
            for (int r = 0; r < rows.rows(); r++) felt = std::max(felt, std::fabs(response(rows, r, z.data())));
        }
    }
    int found() const
    {
        return datum.motions.cols + mechanisms.vectors.cols + static_cast<int>(mechanisms.unseen.size());
    }
};

// A traverse of n legs of 100 m between two held ends with an orientation; one angle may be missing.
SmallNet traverse(int n, bool all_angles)
{
    SmallNet net(Space::plane);
    for (int i = 0; i <= n; i++) net.plane_point(100 * i, 10 * std::sin(0.7 * i), i == 0 ? Code::fixed : Code::free);
    net.plane_point(0, -500, Code::fixed);
    for (int i = 0; i < n; i++) net.distance(i, i + 1);
    for (int i = 0; i < n; i++) {
        if (!all_angles && i == n / 2) continue;
        const int s = net.setup(i);
        net.direction(s, i == 0 ? n + 1 : i - 1);
        net.direction(s, i + 1);
    }
    return net;
}

} // namespace

TEST(Mechanisms, AreNoneInABracedSquare)
{
    SmallNet net(Space::plane);
    for (double x : {0, 100})
        for (double y : {0, 90}) net.plane_point(x, y);
    net.all_distances_among(4);
    const Found found(net);
    EXPECT_TRUE(found.mechanisms.none());
    EXPECT_EQ(found.defect, 3);
}

TEST(Mechanisms, AreOneInASquareWithoutDiagonals)
{
    SmallNet net(Space::plane);
    for (int i = 0; i < 4; i++) net.plane_point(i == 1 || i == 2 ? 100 : 0, i > 1 ? 90 : 0);
    for (int i = 0; i < 4; i++) net.distance(i, (i + 1) % 4);
    const Found found(net);
    EXPECT_EQ(found.mechanisms.vectors.cols, 1);
    EXPECT_EQ(found.found(), found.defect);
    EXPECT_LT(found.felt, 1e-12);
}

TEST(Mechanisms, ShowAHingeBetweenTwoTriangulatedHalves)
{
    for (bool fixed : {false, true}) {
        SmallNet net(Space::plane);
        const double xy[7][2] = {{0, 0}, {100, 0}, {50, 80}, {150, 90}, {190, 10}, {240, 100}, {130, 170}};
        for (const auto &p : xy) net.plane_point(p[0], p[1], fixed ? Code::free : Code::datum);
        if (fixed)
            for (int u : {0, 1, 3, 4}) net.model.code[u] = Code::fixed;
        net.all_distances_among(3);
        for (int i = 2; i < 7; i++)
            for (int j = i + 1; j < 7; j++) net.distance(i, j);
        const Found found(net);
        EXPECT_EQ(found.mechanisms.vectors.cols, 1);
        EXPECT_EQ(found.found(), found.defect);
        EXPECT_LT(found.felt, 1e-12);
    }
}

TEST(Mechanisms, ListHeightsThatNoRowSees)
{
    SmallNet net(Space::space);
    for (int i = 0; i < 4; i++) net.point(100 * (i % 2), 90 * (i / 2), 10 * i, Code::fixed, Code::free);
    net.model.code[2] = Code::fixed;
    net.level(0, 1);
    const Found found(net);
    EXPECT_EQ(found.mechanisms.unseen, (std::vector<int>{8, 11}));
    EXPECT_EQ(found.mechanisms.vectors.cols, 0);
}

TEST(Mechanisms, ListTheOrientationOfASetupWithVerticalAnglesAlone)
{
    SmallNet net(Space::space);
    for (int i = 0; i < 3; i++) net.point(100 * i, 10 * i * i, 5 * i, Code::fixed, i == 1 ? Code::free : Code::fixed);
    const int s = net.setup(0);
    net.vertical(s, 1);
    const Found found(net);
    EXPECT_EQ(found.mechanisms.idle, std::vector<int>{net.model.setups[s].first + 2});
    EXPECT_TRUE(found.mechanisms.none());
    net.direction(s, 2);
    EXPECT_TRUE(Found(net).mechanisms.idle.empty());
}

TEST(Mechanisms, ShowAScaleAndAnAdditionThatNothingTellsApart)
{
    // Distances of one length only, between held points.
    SmallNet net(Space::plane);
    for (double x : {0, 100, 200}) net.plane_point(x, 0, Code::fixed);
    const int k = net.constants(Code::free, Code::free);
    net.distance(0, 1, k);
    net.distance(1, 2, k);
    const Found found(net);
    ASSERT_EQ(found.mechanisms.vectors.cols, 1);
    const int first = net.model.constants[0].first;
    // 1 m more of addition goes with 1/100 less of scale.
    EXPECT_NEAR(found.mechanisms.vectors(first, 0) / found.mechanisms.vectors(first + 1, 0), -100, 1e-9);
    EXPECT_EQ(k, 0);
}

TEST(Mechanisms, AreTheMovementAcrossTheLineOfAnIntersectionInLine)
{
    for (double angle : {0.0, 0.4}) {
        SmallNet net(Space::plane);
        const double c = std::cos(angle), s = std::sin(angle);
        net.plane_point(0, 0, Code::fixed);
        net.plane_point(300 * c, 300 * s, Code::fixed);
        net.plane_point(100 * c, 100 * s, Code::free);
        net.distance(0, 2);
        net.distance(1, 2);
        const Found found(net);
        if (angle == 0) {
            EXPECT_EQ(found.mechanisms.unseen, std::vector<int>{7});
        } else {
            ASSERT_EQ(found.mechanisms.vectors.cols, 1);
            EXPECT_NEAR(found.mechanisms.vectors(6, 0) / found.mechanisms.vectors(7, 0), -s / c, 1e-12);
        }
        // A millimetre beside the line the distances determine the point.
        net.model.value[7] += 0.001;
        EXPECT_TRUE(Found(net).mechanisms.none());
    }
}

TEST(Mechanisms, AreThoseOfAResectionOnItsDangerCircle)
{
    for (double off : {0.0, 0.001}) {
        SmallNet net(Space::plane);
        for (double angle : {0.3, 1.2, 2.5})
            net.plane_point(1e6 + 500 * std::cos(angle), 5e6 + 500 * std::sin(angle), Code::fixed);
        const double r = 500 * (1 + off);
        const int p = net.plane_point(1e6 + r * std::cos(4.4), 5e6 + r * std::sin(4.4), Code::free);
        net.directions(p, {0, 1, 2});
        EXPECT_EQ(Found(net).mechanisms.vectors.cols, off == 0 ? 1 : 0) << off;
    }
}

TEST(Mechanisms, TellATraverseFromOneWithAMissingAngle)
{
    for (int n : {3, 10, 100, 300, 1000}) {
        SmallNet whole = traverse(n, true), broken = traverse(n, false);
        const UnitRows rows = whole.rows();
        EXPECT_TRUE(find_mechanisms(rows, find_datum(rows)).none()) << n;
        const UnitRows broken_rows = broken.rows();
        EXPECT_EQ(find_mechanisms(broken_rows, find_datum(broken_rows)).vectors.cols, 1) << n;
    }
}

TEST(Mechanisms, FindsManyAtOnceAndSaysHowManyItDidNotSearch)
{
    SmallNet net(Space::plane);
    net.plane_point(0, 0, Code::fixed);
    for (int i = 0; i < 100; i++) net.plane_point(100 + 7 * i, 50 - i, Code::free);
    for (int i = 1; i <= 100; i++) net.distance(0, i);
    const Found found(net);
    EXPECT_EQ(found.found() + found.mechanisms.not_searched, 100);
    EXPECT_GE(found.mechanisms.vectors.cols, 50);
}

TEST(Mechanisms, AgreeWithTheDefectOfRandomSparseNetworks)
{
    std::mt19937 random(11);
    std::uniform_real_distribution<double> place(-500, 500);
    int with = 0;
    for (int run = 0; run < 200; run++) {
        SmallNet net(run % 2 ? Space::space : Space::plane);
        const int n = 8;
        for (int i = 0; i < n; i++)
            net.point(4e6 + place(random), 5e6 + place(random), place(random),
                      run % 3 == 0 && i < 2 ? Code::fixed : Code::free);
        std::vector<int> setups;
        for (int i = 0; i < n; i++) setups.push_back(net.setup(i));
        const int rows_wanted = 10 + run % 17;
        for (int k = 0; k < rows_wanted; k++) {
            const int i = static_cast<int>(random() % n), j = (i + 1 + static_cast<int>(random() % (n - 1))) % n;
            if (k % 3 == 0) net.distance(i, j);
            if (k % 3 == 1) net.direction(setups[i], j);
            if (k % 3 == 2 && run % 2) net.vertical(setups[i], j);
        }
        const Found found(net);
        if (found.datum.state == DatumState::loose) continue;
        with += found.mechanisms.vectors.cols > 0;
        EXPECT_EQ(found.found(), found.defect) << "run " << run;
        EXPECT_LT(found.felt, 1e-10) << "run " << run;
    }
    EXPECT_GT(with, 50);
}
