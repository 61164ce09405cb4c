#include <gtest/gtest.h>

#include "approx/transformation.h"
#include "approx/sketch.h"
#include "support/faults.h"

namespace {

const double rounding = 1e-9; // metres, radians: a 4 by 4 system of coordinates of some 100 m

std::string numbers(const char *format, double a, double b, double c)
{
    char text[200];
    snprintf(text, sizeof text, format, a, b, c);
    return text;
}

// Two stations and three targets; the local frame is the truth turned by -turn, divided by
// scale and shifted.
class Transformation : public ::testing::Test {
protected:
    Transformation()
    {
        s.station("P", 10, 20, 0.4);
        s.station("Q", 120, -30, -0.8);
        s.target("A", 300, 50);
        s.target("B", -70, 210);
        s.target("C", 40, -160);
    }

    void local(double turn, double scale, double x0, double y0)
    {
        s.wire();
        for (int i = 0; i < 5; i++) {
            const double x = s.truth[i].x[0] - x0, y = s.truth[i].x[1] - y0;
            s.xap[i] = (cos(turn) * x + sin(turn) * y) / scale;
            s.yap[i] = (cos(turn) * y - sin(turn) * x) / scale;
            if (i < 2) s.oap[i] = s.truth[i].turn - turn;
        }
    }

    int transform() { return transformations(s.net(), s.tab()); }
    int t2pt(int p1, int p2) { return vornengine::t2pt(s.net(), s.tab(), p1, p2); }

    void expect_truth()
    {
        for (int i = 0; i < 5; i++) {
            EXPECT_NEAR(s.xap[i], s.truth[i].x[0], rounding);
            EXPECT_NEAR(s.yap[i], s.truth[i].x[1], rounding);
        }
        for (int i = 0; i < 2; i++) EXPECT_NEAR(s.oap[i], s.truth[i].turn, rounding);
    }

    Sketch s = Sketch(2);
};

TEST_F(Transformation, TakesTheFrameToTwoKnownPoints)
{
    for (int k = -6; k <= 6; k++) {
        s.know(0);
        s.know(3);
        local(0.5 * k, 17.0, 5, -8);
        EXPECT_EQ(transform(), 0);
        expect_truth();
    }
    EXPECT_EQ(s.news(), "");
}

TEST_F(Transformation, TellsWhatItUses)
{
    s.n.p.idebug = 1;
    s.know(1);
    s.know(2);
    s.know(4);
    local(0.3, 4.0, 7, 9);
    EXPECT_EQ(transform(), 0);
    EXPECT_EQ(s.news(), "Must do transformations.. \nuse points Q and A\n" +
                            numbers("tx   %15.5lf\nty   %15.5lf\nscale in t2pt %15.5lf\n", 7, 9, 4));
}

TEST_F(Transformation, UsesPointsOfWhichBothCoordinatesAreKnown)
{
    for (int i = 0; i < 5; i++) s.know(i);
    s.points[0].n0[1] = N_MISSING;
    s.points[1].n0[0] = N_MISSING;
    s.points[3].n0[0] = N_FIXED_MISSING;
    s.n.p.idebug = 1;
    local(0.3, 4.0, 7, 9);
    EXPECT_EQ(transform(), 0);
    EXPECT_NE(s.news().find("use points A and C\n"), std::string::npos);
    expect_truth();
}

TEST_F(Transformation, GivesAFurtherKnownPointItsTransformedPlace)
{
    s.know(0);
    s.know(3);
    s.know(4);
    s.points[4].xpt[0] += 100; // contradicts the frame
    local(1.0, 2.0, 3, 4);
    EXPECT_EQ(transform(), 0);
    expect_truth();
}

TEST_F(Transformation, ShiftsOntoASingleKnownPointAndKeepsTurnAndScale)
{
    s.n.p.idebug = 1;
    s.know(3);
    s.know_turn(0); // a fixed orientation is not looked at
    local(1.0, 2.0, 3, 4);
    const std::vector<double> x = s.xap, y = s.yap, o = s.oap;
    EXPECT_EQ(transform(), 0);
    for (int i = 0; i < 5; i++) {
        EXPECT_NEAR(s.xap[i] - x[i], s.truth[3].x[0] - x[3], rounding);
        EXPECT_NEAR(s.yap[i] - y[i], s.truth[3].x[1] - y[3], rounding);
    }
    EXPECT_EQ(s.oap, o);
    EXPECT_EQ(s.news(), "Must do transformations.. \nonly 1 point B \n");
}

TEST_F(Transformation, LeavesTheFrameWithoutAKnownPoint)
{
    s.n.p.idebug = 1;
    local(1.0, 2.0, 3, 4);
    const std::vector<double> x = s.xap, y = s.yap, o = s.oap;
    EXPECT_EQ(transform(), 0);
    EXPECT_EQ(s.xap, x);
    EXPECT_EQ(s.yap, y);
    EXPECT_EQ(s.oap, o);
    EXPECT_EQ(s.news(), "Must do transformations.. \nno control found \n");
}

TEST_F(Transformation, IsSilentWithoutTraces)
{
    local(1.0, 2.0, 3, 4);
    EXPECT_EQ(transform(), 0);
    s.know(0);
    EXPECT_EQ(transform(), 0);
    s.know(2);
    EXPECT_EQ(transform(), 0);
    EXPECT_EQ(s.news(), "");
}

TEST_F(Transformation, StopsWhenTheTwoPointsCoincideInTheFrame)
{
    s.know(0);
    s.know(3);
    local(1.0, 2.0, 3, 4);
    s.xap[3] = s.xap[0];
    s.yap[3] = s.yap[0];
    const std::vector<double> x = s.xap;
    EXPECT_EQ(transform(), -5);
    EXPECT_EQ(s.news(), "In ludcmp: null pivot\nIn spread: stop in t2pt\n");
    EXPECT_EQ(s.xap, x); // nothing is moved
}

TEST_F(Transformation, StopsWithoutMemoryForAnyRow)
{
    s.know(0);
    s.know(3);
    for (int n = 1; n <= 5; n++) { // the table and four rows
        local(1.0, 2.0, 3, 4);
        fail_allocation(n);
        EXPECT_EQ(transform(), -5);
        fail_allocation(0);
        EXPECT_EQ(s.news(), "in t2pt, cannot allocate\nIn spread: stop in t2pt\n");
    }
    local(1.0, 2.0, 3, 4);
    fail_allocation(6);
    EXPECT_EQ(t2pt(0, 3), -1);
    fail_allocation(0);
    EXPECT_EQ(s.news(), "In ludcmp: pb with vv\n");
}

} // namespace
