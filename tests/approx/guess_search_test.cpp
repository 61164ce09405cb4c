#include <gtest/gtest.h>

#include "approx/guess.h"
#include "approx/sketch.h"

namespace {

const double pi = 4.0 * atan(1.0);
const double rounding = 1e-12; // radians, lengths of the base: a few dozen roundings near 1

// Two stations that shot one target: the readings are set by each test.
class Rays : public ::testing::Test {
protected:
    Rays()
    {
        s.station("P", 0, 0);
        s.station("Q", 1, 0);
        s.target("A", 0.5, 0.5);
        s.direction(0, 2, 0.0);
        s.direction(1, 2, 0.0);
        s.vertical(0, 2, 0.0);
        s.vertical(1, 2, 0.0);
        s.wire();
    }

    int approximate(double a, double b, double o1 = 0, double o2 = 0)
    {
        s.dir1[0].val[0] = a;
        s.dir1[1].val[0] = b;
        return guess_approx(s.net(), s.tab(), &w, o1, o2);
    }

    // The sectors of the first ray with which the second is accepted, as digits.
    std::string partners(double b)
    {
        const double first[] = {0.0, pi / 4, pi / 2, 3 * pi / 4, pi, -3 * pi / 4, -pi / 2, -pi / 4};
        std::string text;
        for (int k = 0; k < 8; k++)
            if (approximate(first[k], b) == 0) text += (char)('1' + k);
        return text;
    }

    Sketch s = Sketch(3);
    int isys[3] = {2, 0, 1};
    double app[6] = {0, 0, 0, 0, 0, 0};
    guesswork w = {1, isys, app, nullptr};
};

TEST_F(Rays, MeetOnlyInTheSectorsThatLieInFrontOfBothStations)
{
    EXPECT_EQ(partners(0.0), "128");
    EXPECT_EQ(partners(pi / 4), "2");
    EXPECT_EQ(partners(pi / 2), "234");
    EXPECT_EQ(partners(3 * pi / 4), "234");
    EXPECT_EQ(partners(pi - 0.05), "12345678");
    EXPECT_EQ(partners(-3 * pi / 4), "678");
    EXPECT_EQ(partners(-pi / 2), "678");
    EXPECT_EQ(partners(-pi / 4), "8");
}

TEST_F(Rays, OfTheSecondStationHaveSectorsWithAMargin)
{
    const double more = 1e-9;
    EXPECT_EQ(partners(-0.1), "128");
    EXPECT_EQ(partners(-0.1 - more), "8");
    EXPECT_EQ(partners(0.1 - more), "128");
    EXPECT_EQ(partners(0.1), "2");
    EXPECT_EQ(partners(pi / 2 - 0.1), "2");
    EXPECT_EQ(partners(pi / 2 - 0.1 + more), "234");
    EXPECT_EQ(partners(pi - 0.1), "234");
    EXPECT_EQ(partners(pi - 0.1 + more), "12345678");
    EXPECT_EQ(partners(-pi), "12345678");
    EXPECT_EQ(partners(-pi + 0.1), "12345678");
    EXPECT_EQ(partners(-pi + 0.1 + more), "678");
    EXPECT_EQ(partners(-pi / 2 + 0.1), "678");
    EXPECT_EQ(partners(-pi / 2 + 0.1 + more), "8");
}

TEST_F(Rays, OfTheSecondStationAtExactlyPiAreRefused)
{
    EXPECT_EQ(partners(pi), "");
    EXPECT_EQ(partners(nextafter(pi, 0)), "12345678");
}

TEST_F(Rays, OfTheFirstStationHaveExactSectors)
{
    const double b = 0.7; // sector 2: accepted with sector 2 of the first ray alone
    EXPECT_EQ(approximate(nextafter(0.0, 1.0), b), 0);
    EXPECT_EQ(approximate(0.0, b), -1);
    EXPECT_EQ(approximate(nextafter(pi / 2, 0), b), 0);
    EXPECT_EQ(approximate(pi / 2, b), -1);
    const double d = -0.7; // sector 8, with 8 alone
    EXPECT_EQ(approximate(nextafter(-pi / 2, 0), d), 0);
    EXPECT_EQ(approximate(-pi / 2, d), -1);
    EXPECT_EQ(approximate(nextafter(0.0, -1.0), d), 0);
    const double c = 1.6; // sector 3, with 2, 3, 4
    EXPECT_EQ(approximate(nextafter(pi, 0), c), 0);
    EXPECT_EQ(approximate(pi, c), -1);
    EXPECT_EQ(approximate(-pi, pi - 0.05), 0); // sector 5 on both sides
}

TEST_F(Rays, AreWrappedOnceForTheirSector)
{
    EXPECT_EQ(approximate(2 * pi + 0.7, 2.3), 0);
    EXPECT_EQ(approximate(0.7, 2.3 - 2 * pi), 0);
    EXPECT_EQ(approximate(4 * pi + 0.7, 2.3), -1); // still outside after one turn
    EXPECT_EQ(approximate(NAN, 2.3), -1);
    EXPECT_EQ(approximate(0.7, NAN), -1);
    EXPECT_EQ(approximate(0.2, 0.3, 0.5, 2.0), 0); // with the orientations 0.7 and 2.3
}

TEST_F(Rays, GiveThePlaceWithTheHeightFromTheFirstStation)
{
    s.dir2[0].val[0] = 0.25;
    s.dir2[1].val[0] = 9.0; // takes no part
    ASSERT_EQ(approximate(atan2(0.8, 0.3) - 0.4, atan2(0.8, 0.3 - 1) + 0.2, 0.4, -0.2), 0);
    EXPECT_NEAR(app[0], 0.3, rounding);
    EXPECT_NEAR(app[1], 0.8, rounding);
    EXPECT_NEAR(app[2], tan(0.25) * sqrt(0.73), rounding);
}

TEST_F(Rays, ThatAreNearParallelMeetAtTheOrigin)
{
    app[0] = app[1] = app[2] = 5;
    ASSERT_EQ(approximate(0.5, 0.5), 0);
    EXPECT_EQ(app[0], 0);
    EXPECT_EQ(app[1], 0);
    EXPECT_EQ(app[2], 0);
    ASSERT_EQ(approximate(0.5, 0.5 + 1e-5), 0); // tangents differ by 1.3e-5
    EXPECT_NE(app[0], 0);
}

TEST_F(Rays, NeedAVerticalAngleWithEveryDirection)
{
    s.dir2.pop_back();
    s.wire();
    EXPECT_EQ(approximate(0.7, 2.3), -1);
}

TEST_F(Rays, LeaveTheVerticalAngleAsResidual)
{
    double sum = 1.0;
    const double v = atan2(3.0 - 0.5, 5.0); // point (3, 4) seen from (0, 0), 2.5 higher
    const guesssight first = {3, 4, 3.0, 1, 0, 0.5, 77, 88, v + 0.01};
    EXPECT_EQ(guess_resid(&first, &sum), 0);
    EXPECT_NEAR(sum, 1.0001, rounding);
    sum = 0;
    const guesssight second = {4, 4, 2.5, 2, 1, 0, 0, 0, atan2(2.5, 5.0) + 2 * pi - 0.1};
    guess_resid(&second, &sum);
    EXPECT_NEAR(sum, 0.01, rounding);
}

TEST_F(Rays, AreCheckedFromBothStations)
{
    s.n.p.idebug = 1;
    s.wire();
    s.dir1[0].val[0] = atan2(0.8, 0.3);
    s.dir1[1].val[0] = atan2(0.8, -0.7) - 0.2;
    s.dir2[0].val[0] = 0.25;
    const double z = tan(0.25) * sqrt(0.73), v2 = atan2(z, sqrt(0.64 + 0.49));
    s.dir2[1].val[0] = v2 + 0.02;
    EXPECT_NEAR(guess_check(s.net(), s.tab(), &w, 0.0, 0.2), 0.0004, rounding);
    EXPECT_EQ(s.news(), "guess_check with o1,o2     0.000    0.200\n"
                        "guess_approx pass with   0.00000             0.20000\n"
                        "guess_check returns         0.00040\n");
    s.wire();
    EXPECT_EQ(guess_check(s.net(), s.tab(), &w, 3.0, 0.2), 9999.0);
    EXPECT_EQ(s.news(), "guess_check with o1,o2     3.000    0.200\n");
    s.n.p.idebug = 0;
    s.wire();
    guess_check(s.net(), s.tab(), &w, 0.0, 0.2);
    EXPECT_EQ(s.news(), "");
}

// Two stations with four common targets; orientations on the grid of the search.
class Search : public ::testing::Test {
protected:
    void build(double turn1, double turn2)
    {
        s.station("P", 0, 0, turn1);
        s.station("Q", 100, 0, turn2);
        s.target("A", 30, 70, 20);
        s.target("B", 80, 55, -15);
        s.target("C", 45, -60, 8);
        s.target("D", -20, 90, 31);
        for (int i = 0; i < 2; i++)
            for (int t = 2; t < 6; t++) s.sight(i, t);
        s.wire();
    }

    int search(int ncommon = 4)
    {
        isys.assign(ncommon + 2, -7);
        app.assign(3 * ncommon + 3, 0);
        guesswork w = {0, isys.data(), app.data(), rhs};
        const stationpair pair = {0, 1, ncommon, -1, {0, 0, 0}};
        return guess_o1o2(s.net(), s.tab(), &pair, &w, &o1, &o2);
    }

    Sketch s = Sketch(3);
    std::vector<int> isys;
    std::vector<double> app;
    double rhs[15] = {}, o1 = 0, o2 = 0;
};

TEST_F(Search, FindsTheOrientationsOfTheGrid)
{
    build(3 * pi / 10, 7 * pi / 10);
    ASSERT_EQ(search(), 0);
    EXPECT_NEAR(o1, 3 * pi / 10, rounding);
    EXPECT_NEAR(o2, 7 * pi / 10, rounding);
    EXPECT_EQ(isys, (std::vector<int>{2, 3, 4, 5, 0, 1}));
    EXPECT_EQ(s.news(), "");
}

TEST_F(Search, GivesOrientationsBetweenMinusPiAndPi)
{
    build(13 * pi / 10, 19 * pi / 10);
    ASSERT_EQ(search(), 0);
    EXPECT_NEAR(o1, -7 * pi / 10, rounding);
    EXPECT_NEAR(o2, -pi / 10, rounding);
}

TEST_F(Search, KeepsTheFirstOfEqualTrials)
{
    s.station("P", 0, 0);
    s.station("Q", 1, 0);
    for (const char *name : {"A", "B", "C"}) {
        const int t = s.target(name, 0, 0);
        s.direction(0, t, 0.3 + 0.1 * t);
        s.direction(1, t, 2.0 + 0.1 * t);
        s.vertical(0, t, 0); // no height: every pair of rays that meets fits
        s.vertical(1, t, 0);
    }
    s.wire();
    o1 = o2 = 9;
    ASSERT_EQ(search(3), 0);
    EXPECT_EQ(o1, 0);
    EXPECT_EQ(o2, 0);
}

TEST_F(Search, TriesFourHundredPairsTheSecondOrientationFirst)
{
    s.n.p.idebug = 1;
    build(0, 0);
    ASSERT_EQ(search(), 0);
    const std::string text = s.news();
    int n = 0;
    for (size_t at = 0; (at = text.find("guess_check with", at)) != std::string::npos; at++) n++;
    EXPECT_EQ(n, 400);
    const size_t second = text.find("guess_check with o1,o2     0.000    0.314\n");
    EXPECT_LT(second, text.find("guess_check with o1,o2     0.314    0.000\n"));
    EXPECT_NE(text.find("guess_check with o1,o2     5.969    5.969\n"), std::string::npos);
}

TEST_F(Search, FailsWhenNoRaysMeet)
{
    s.station("P", 0, 0);
    s.station("Q", 1, 0);
    const double half = pi / 20; // between the axes for every trial
    for (int k = 0; k < 3; k++) {
        const int t = s.target(k == 0 ? "A" : k == 1 ? "B" : "C", 0, 0);
        s.direction(0, t, half);
        s.direction(1, t, half + k % 2 * pi); // A and B cannot both lie in front
        s.vertical(0, t, 0.1);
        s.vertical(1, t, 0.1);
    }
    s.wire();
    EXPECT_EQ(search(3), -5);
    EXPECT_EQ(s.news(), "guess_o1o2: Guessing loop failed\n");
}

TEST_F(Search, FailsWhenNoAgreementIsANumber)
{
    build(0, 0);
    s.dir2[0].val[0] = NAN;
    EXPECT_EQ(search(), -5);
}

TEST_F(Search, FailsWithoutAVerticalAngleForEveryDirection)
{
    build(0, 0);
    s.dir2.pop_back();
    s.wire();
    EXPECT_EQ(search(), -5);
}

TEST_F(Search, FailsOnAnotherNumberOfCommonShots)
{
    build(0, 0);
    EXPECT_EQ(search(3), -4);
    EXPECT_EQ(s.news(), "guess_spread: Strange more common shots\n");
    s.wire();
    EXPECT_EQ(search(5), -4);
    EXPECT_EQ(s.news(), "guess_spread: Strange number of common shots\n");
}

} // namespace
