#include "host/run/determinacy_words.h"

#include <gtest/gtest.h>

#include "adjust/small_net.h"

using namespace vornadjust;
using vornhost::Naming;

namespace {

Naming letters()
{
    Naming naming;
    naming.point = [](int p) { return std::string(1, static_cast<char>('A' + p)); };
    naming.unknown = [](int u) { return "u" + std::to_string(u); };
    return naming;
}

std::vector<std::string> refused(const SmallNet &net)
{
    return vornhost::refusals(net.model, judge(net.model, std::vector<char>(net.model.n_points, 0)), letters());
}

std::string line(SmallNet &net) { return vornhost::datum_line(find_datum(net.rows())); }

using Lines = std::vector<std::string>;

// A braced square A to D in the plane, with all distances.
SmallNet square(Code code)
{
    SmallNet net(Space::plane);
    for (double x : {0, 100})
        for (double y : {0, 90}) net.plane_point(x, y, code);
    return net;
}

} // namespace

TEST(DatumLine, CountsWhatIsFreeAndWhatHoldsTheRest)
{
    SmallNet net = square(Code::datum);
    net.all_distances_among(4);
    EXPECT_EQ(line(net), "free: 2 shifts, 1 turn; scale from 6 distances");
    net.azimuth(0, 1);
    EXPECT_EQ(line(net), "free: 2 shifts; turn from 1 azimuth; scale from 6 distances");
    net.model.code[0] = net.model.code[1] = Code::fixed;
    net.model.code[0] = net.model.code[1] = Code::fixed;
    EXPECT_EQ(line(net), "held by 2 fixed coordinates; turn from 1 azimuth; scale from 6 distances");
    // B lies beside A along y: it holds the turn by x and the scale by y.
    net.model.code[3] = net.model.code[4] = Code::fixed;
    EXPECT_EQ(line(net), "held by 4 fixed coordinates; turn also from 1 azimuth; scale also from 6 distances");
}

TEST(DatumLine, TellsWhatHoldsTheRestOfAFreeNetwork)
{
    SmallNet net = square(Code::datum);
    net.all_distances_among(4);
    net.model.code[0] = net.model.code[1] = Code::fixed;
    EXPECT_EQ(line(net), "free: 1 turn; shifts from 2 fixed coordinates; scale from 6 distances");
}

TEST(DatumLine, HasNoScaleInANetworkOfHeights)
{
    SmallNet net(Space::heights);
    for (int i = 0; i < 3; i++) net.height(100 + i * i);
    for (int i = 0; i < 3; i++) net.level(i, (i + 1) % 3);
    EXPECT_EQ(line(net), "free: 1 shift");
    net.model.code[2] = Code::fixed;
    EXPECT_EQ(line(net), "held by 1 fixed height");
}

TEST(Refusals, AreNoneForAnAcceptedNetwork)
{
    SmallNet net = square(Code::datum);
    net.all_distances_among(4);
    EXPECT_EQ(refused(net), Lines{});
}

TEST(Refusals, SayWhatTheDatumPointsDoNotHold)
{
    SmallNet net = square(Code::free);
    net.all_distances_among(4);
    EXPECT_EQ(refused(net),
              Lines{"the network can be shifted along x and along y and turned: no point has code free to hold this; "
                    "code free for A, B, C, D would do"});
    net.model.code[3] = net.model.code[4] = Code::datum;
    EXPECT_EQ(refused(net),
              Lines{"the network can be turned about B: the points with code free do not hold this; code free for "
                    "A, C, D would do"});
}

TEST(Refusals, NameTheHinge)
{
    SmallNet net(Space::plane);
    const double xy[6][2] = {{0, 0}, {100, 0}, {50, 80}, {150, 90}, {190, 10}, {240, 100}};
    for (const auto &p : xy) net.plane_point(p[0], p[1], Code::datum);
    net.model.code[0] = net.model.code[1] = net.model.code[3] = net.model.code[4] = Code::fixed;
    net.all_distances_among(3);
    for (int i = 2; i < 6; i++)
        for (int j = i + 1; j < 6; j++) net.distance(i, j);
    EXPECT_EQ(refused(net),
              Lines{"D, E, F can be turned about C: another observation between them and the others would do"});
}

TEST(Refusals, NameThePointWithOneDistance)
{
    SmallNet net = square(Code::fixed);
    net.plane_point(300, 400, Code::free);
    net.distance(0, 4);
    EXPECT_EQ(refused(net),
              Lines{"E can move along 159.0 gon: it has one distance only; another observation to it would do"});
}

TEST(Refusals, NameTheOnlyPointWithItsTwoDistancesInLine)
{
    SmallNet net(Space::plane);
    for (double x : {0, 300, 100}) net.plane_point(x, 0, x == 100 ? Code::free : Code::fixed);
    net.distance(0, 2);
    net.distance(1, 2);
    EXPECT_EQ(refused(net), Lines{"C can move along y: it has two distances only; another observation to it would do"});
}

TEST(Refusals, NamePartsThatNothingTies)
{
    SmallNet net(Space::heights);
    for (int i = 0; i < 6; i++) net.height(100 + i * i);
    for (int i = 0; i < 3; i++) net.level(i, (i + 1) % 3), net.level(3 + i, 3 + (i + 1) % 3);
    EXPECT_EQ(refused(net), Lines{"A, B, C | D, E, F: no observations tie these parts to one another: height "
                                  "differences between them or a fixed height in each would do"});
    net.model.code[2] = Code::fixed;
    EXPECT_EQ(refused(net), Lines{"D, E, F: no observations tie this part to the rest, and it is not held by itself: "
                                  "a height difference to the rest or a fixed height would do"});
}

TEST(Refusals, NamePointsWithoutObservations)
{
    SmallNet net = square(Code::datum);
    net.plane_point(5, 5);
    net.all_distances_among(4);
    EXPECT_EQ(refused(net), Lines{"E has no observations"});
}

TEST(Refusals, NameConstantsThatNothingTellsApart)
{
    SmallNet net(Space::plane);
    for (double x : {0, 100, 200}) net.plane_point(x, 0, Code::fixed);
    const int k = net.constants(Code::free, Code::free);
    net.distance(0, 1, k);
    net.distance(1, 2, k);
    EXPECT_EQ(refused(net), Lines{"u9, u10 cannot be told apart: hold one of them, or observe what differs"});
}

TEST(Warnings, TellAWeakTurnInTheUsersUnit)
{
    Datum datum;
    EXPECT_EQ(vornhost::warnings(datum, {}, letters()), Lines{});
    // 0.0157 rad are 1 gon and 0.9 degrees.
    const std::vector<WeakMotion> weak = {{5, 0.015707963267948967}, {6, 0.02}};
    EXPECT_EQ(vornhost::warnings(datum, weak, letters()),
              (Lines{"the turn about the vertical is determined badly: standard deviation 1 gon",
                     "the scale is determined badly: standard deviation 2 %"}));
    Naming degrees = letters();
    degrees.circle = 360;
    degrees.angle = "degrees";
    EXPECT_EQ(vornhost::warnings(datum, {weak[0]}, degrees),
              Lines{"the turn about the vertical is determined badly: standard deviation 0.9 degrees"});
}

TEST(Refusals, NameHeights)
{
    SmallNet net(Space::space);
    for (int i = 0; i < 12; i++) net.point(100 * i, 9 * i * i, i, Code::fixed, i == 0 ? Code::fixed : Code::free);
    net.level(0, 1);
    EXPECT_EQ(refused(net), Lines{"heights of C, D, E, F, G, H, I, J and 2 more are not determined: one height "
                                  "difference, vertical angle or fixed height would do"});
}
