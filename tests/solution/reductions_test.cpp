#include <math.h>

#include <random>
#include <string>

#include <gtest/gtest.h>

#include "support/bare.h"

namespace {

const double PI = 3.14159265358979323846;

// Points S and A, levelled instrument at S, one distance, direction and vertical angle.
struct Sight : Bare {
    Sight(double radius_, double horigin_, const double p[3], const double q[3], double h1, double h2, double hp = 0,
          double hq = 0, double s = 100.0)
        : Bare(3)
    {
        add("S", p[0], p[1], p[2]).h = hp;
        add("A", q[0], q[1], q[2]).h = hq;
        points[0].typ = 1;
        for (auto *list : {&dist, &dir1, &dir2}) {
            measure &m = observe(*list, 0, 1, list == &dist ? s : 0.25, 0.001);
            m.h1 = h1;
            m.h2 = h2;
        }
        wire(1);
        radius = radius_;
        horigin = horigin_;
    }
    double distance_reduction(int code)
    {
        iredux = code;
        return S(*this, distred)(0);
    }
    double direction_reduction() { return S(*this, dir1red)(0); }
    double vertical_reduction() { return S(*this, dir2red)(0); }
    void trace() { idebug = 1; }
};

struct Sphere {
    double radius, horigin;
};

const Sphere spheres[] = {{6400000.0, 400.0}, {1000000000000.0, 0.0}, {1000000000000000.0, 0.0}, {1e+17, 0.0}};

struct Ends {
    double p[3], q[3], h1, h2, hp, hq, s;
};

struct Worked {
    Ends ends;
    double r[4][5]; // on each sphere: distances of code 1, 2 and 9, direction, vertical angle
};

// The defining formulas, lengths and angles subtracted as they stand, with 80 digits.
const Worked worked[] = {
    {{{100.5, -200.25, 3.0}, {600.75, 350.5, 41.5}, 1.5, 1.75, 12.25, 50.5, 745.0},
     {{-0.013160921575439118856, -0.99371177621292459396, -0.9527999333646517454, -1.6789912289047610589e-6,
       -0.00032249013982769883904},
      {-0.012960914092435628213, -0.99546371228912096332, -0.99546374805873869139, -1.0746224572916677308e-11,
       -0.00033510628080975369525},
      {-0.012960912813568973979, -0.99546372349537152701, -0.99546372353114114477, -1.0746224572974952984e-14,
       -0.00033510636147765278081},
      {-0.012960912812301628646, -0.9954637235064768204, -0.99546372350683451657, -1.0746224572975010735e-16,
       -0.00033510636155759394206}}},
    {{{1000.0, 2000.0, 10.0}, {1300.0, 1600.0, 10.0}, 1.625, 1.625, 10.5, 10.25, 500.0},
     {{-0.0001269449836772315094, -0.000036636395938258573959, 0.030249939371207184358, -9.29653385746936034e-15,
       0.00015623995222551985817},
      {-8.1249999999187499766e-10, -0.00006249981640636767808, -0.000062506003905500416234, -2.4374999999229140456e-30,
       9.9999999998878124767e-10},
      {-8.12499999999991875e-13, -0.000062500003718750464984, -0.000062500009906249738281, -2.4374999999999229141e-39,
       9.9999999999998878125e-13},
      {-8.1249999999999991875e-15, -0.000062500003904375488047, -0.000062500003966250480781, -2.4374999999999992291e-45,
       9.9999999999999988781e-15}}},
    {{{-30000.5, 12000.25, 5.5}, {-29000.0, 12500.0, -70.25}, 0.0, 1.5, 110.0, 35.5, 1121.0},
     {{0.10512678124783285767, -2.1468877341689018885, -2.3223544211427490584, -0.00026059428021773576092,
       0.0020199875843711047853},
      {0.10036744310657513574, -2.3794193671486560132, -2.3794209759695574939, -1.6675372631319613813e-9,
       -0.0013352116883317502996},
      {0.10036741266731256125, -2.3794208922243424012, -2.3794208938331635482, -1.6675372607616020048e-12,
       -0.0013352331449018980848},
      {0.10036741263714752622, -2.3794208937356789102, -2.3794208937517671217, -1.667537260759253e-14,
       -0.0013352331661651658183}}},
    {{{250.0, -125.0, 0.5}, {250.125, -124.5, 60.5}, 1.25, -0.375, 0.5, 60.5, 60.5},
     {{1.6249382473368493745, -44.60632807192902042, -44.605393693094801684, -0.0050918249165126452639,
       0.00024894368689327119599},
      {1.6249383845717101054, -44.606310214542154077, -44.606310214919576614, -3.2624999775586167965e-8,
       0.0002390985073489274415},
      {1.6249383845725774114, -44.606310214427979875, -44.606310214428357297, -3.2624999999775586177e-11,
       0.00023909844509289546213},
      {1.6249383845725782709, -44.606310214427866729, -44.606310214427870503, -3.2624999999997755862e-13,
       0.00023909844503120029971}}},
    {{{20.0, 30.0, 1.0}, {-15.0, 42.0, 2.0}, 1.5, 0.0, 1.0, 2.0, 37.5},
     {{0.010130669101466746488, -0.0033341993051806363631, -0.0010031230783346276373, -3.6806037522261289569e-7,
       0.040534575135396859839},
      {0.010132822472934376641, -0.0033334814992454108207, -0.0033334815790191688015, -2.3557341124877529332e-12,
       0.040533140209777160156},
      {0.010132822486703119509, -0.0033334814946562628767, -0.0033334814947360366347, -2.3557341124908661313e-15,
       0.040533140200602188456},
      {0.010132822486716764209, -0.0033334814946517150724, -0.00333348149465251281, -2.3557341124908692165e-17,
       0.040533140200593096142}}},
};

// Differences of some roundings in each term; the definition itself, in double precision,
// has none of its digits left at the larger radii.
const double RELATIVE = 1.0e-12;

void expect_relative(double wanted, double found, const char *what, double radius)
{
    EXPECT_NEAR(wanted, found, RELATIVE * fabs(wanted)) << what << " at radius " << radius;
}

long double length(const long double a[3]) { return sqrtl(a[0] * a[0] + a[1] * a[1] + a[2] * a[2]); }

} // namespace

TEST(Reductions, AgreeWithManyDigitsUpToSpheresWithoutCurvature)
{
    for (int k = 0; k < 4; k++)
        for (const Worked &w : worked) {
            const double radius = spheres[k].radius, *r = w.r[k];
            const Ends &e = w.ends;
            Sight s(radius, spheres[k].horigin, e.p, e.q, e.h1, e.h2, e.hp, e.hq, e.s);
            expect_relative(r[0], s.distance_reduction(1), "marks", radius);
            expect_relative(r[1], s.distance_reduction(2), "mixed", radius);
            expect_relative(r[2], s.distance_reduction(9), "origin", radius);
            expect_relative(r[3], s.direction_reduction(), "direction", radius);
            expect_relative(r[4], s.vertical_reduction(), "vertical", radius);
        }
}

// Spherical geometry with P on the x3 axis, where its horizon is the plane z = constant.
TEST(Reductions, OfAStationOnTheAxisFollowFromThePlaneTriangle)
{
    std::mt19937 gen(3);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    const double R = 6.4e6;
    for (int trial = 0; trial < 200; trial++) {
        const double hp = 2000 * u(gen), h1 = 2 * u(gen), h2 = 2 * u(gen), azimuth = 6.28 * u(gen);
        const double q[3] = {5000 * u(gen) * cos(azimuth), 5000 * u(gen) * sin(azimuth), 3000 * u(gen) - 500};
        const double p[3] = {0, 0, hp};
        const long double t = hypotl(q[0], q[1]), z = (long double)R + q[2], rb = hypotl(t, z);
        const long double up = (long double)q[2] - hp; // radial and tangential parts of V, then of U
        const long double ur = up + h2 * z / rb - h1, ut = t + h2 * t / rb;
        Sight s(R, 0, p, q, h1, h2);
        // Coordinates of 6.4e6 with 19 digits leave 1e-12 metres and, over 100 metres, 1e-14 rad.
        EXPECT_NEAR((double)(hypotl(t, up) - hypotl(ut, ur)), s.distance_reduction(1), 1e-12);
        EXPECT_NEAR((double)(atan2l(up, t) - atan2l(ur, ut)), s.vertical_reduction(), 1e-14);
        EXPECT_NEAR(0.0, s.direction_reduction(), 1e-18);
    }
}

TEST(Reductions, DoNotChangeWhenTheNetworkTurnsAroundTheAxis)
{
    const double p[3] = {5000, -2000, 30}, q[3] = {5600, -1200, 90};
    Sight s(6.4e6, 100, p, q, 1.5, 1.25);
    const double wanted[3] = {s.distance_reduction(1), s.direction_reduction(), s.vertical_reduction()};
    for (double t = 0.3; t < 6.2; t += 0.7) {
        const double c = cos(t), d = sin(t);
        const double tp[3] = {c * p[0] - d * p[1], d * p[0] + c * p[1], p[2]};
        const double tq[3] = {c * q[0] - d * q[1], d * q[0] + c * q[1], q[2]};
        Sight turned(6.4e6, 100, tp, tq, 1.5, 1.25);
        // Turned coordinates are rounded to 1e-12 metres of 1000.
        EXPECT_NEAR(wanted[0], turned.distance_reduction(1), 1e-14);
        EXPECT_NEAR(wanted[1], turned.direction_reduction(), 1e-17);
        EXPECT_NEAR(wanted[2], turned.vertical_reduction(), 1e-14);
    }
}

TEST(Reductions, OfAnglesVanishWithEqualHeightsOnAPlane)
{
    const double p[3] = {100, 200, 5}, q[3] = {400, 600, 25};
    Sight s(1.0e17, 0, p, q, 1.5, 1.5);
    EXPECT_NEAR(0.0, s.direction_reduction(), 1e-13);
    EXPECT_NEAR(0.0, s.vertical_reduction(), 1e-13);
    EXPECT_NEAR(0.0, s.distance_reduction(1), 1e-12);
}

TEST(Reductions, OfPointsOnOppositeSidesOfTheSphere)
{
    // Marks on the axis, 20 metres apart through the centre; raised by 1 and 2 metres.
    const double p[3] = {0, 0, 0}, q[3] = {0, 0, -20};
    Sight s(10.0, 0, p, q, 1.0, 2.0);
    EXPECT_DOUBLE_EQ(-3.0, s.distance_reduction(1));
}

TEST(GeometryVectors, HaveUnitLengthAndPointAlongRadialSightAndMarks)
{
    const double p[3] = {1.0e6, 2.0e6, 1.0e5}, q[3] = {-2.0e6, 5.0e5, 3.0e5};
    const double R = 6.0e6, h1 = 2.0e5, h2 = 4.0e5;
    Sight s(R, 500.0, p, q, h1, h2);
    for (int which : {1, 2}) {
        double n[3], l[3], g[3];
        S(s, geomvec)(which, 0, n, l, g);
        long double a[3], b[3], u[3], v[3];
        for (int k = 0; k < 3; k++) {
            a[k] = p[k] + (k == 2 ? R + 500.0L : 0.0L);
            b[k] = q[k] + (k == 2 ? R + 500.0L : 0.0L);
        }
        for (int k = 0; k < 3; k++) {
            u[k] = b[k] * (1 + h2 / length(b)) - a[k] * (1 + h1 / length(a));
            v[k] = b[k] - a[k];
        }
        for (int k = 0; k < 3; k++) {
            EXPECT_NEAR((double)(a[k] / length(a)), n[k], 1e-15);
            EXPECT_NEAR((double)(u[k] / length(u)), l[k], 2e-15);
            EXPECT_NEAR((double)(v[k] / length(v)), g[k], 1e-15);
        }
    }
}

TEST(DistanceReduction, IsExactlyZeroWithoutHeightsAndLeavesNoLine)
{
    const double p[3] = {0, 0, 0}, q[3] = {100, 0, 10};
    Sight s(6.4e6, 0, p, q, 0, 0);
    s.trace();
    EXPECT_EQ(0.0, s.distance_reduction(1));
    EXPECT_EQ("", s.report());
}

TEST(DistanceReduction, NeedsOnlyOneHeight)
{
    const double p[3] = {0, 0, 0}, q[3] = {100, 0, 0};
    Sight s(1.0e17, 0, p, q, 0, 2.0);
    EXPECT_NEAR(100.0 - sqrt(100.0 * 100.0 + 4.0), s.distance_reduction(1), 1e-14);
}

TEST(DistanceReduction, IsZeroForAnyOtherCode)
{
    const double p[3] = {0, 0, 0}, q[3] = {100, 0, 10};
    Sight s(6.4e6, 0, p, q, 1, 2);
    for (int code : {-1, 0, 3, 8, 10}) EXPECT_EQ(0.0, s.distance_reduction(code)) << code;
    s.trace();
    s.distance_reduction(3);
    EXPECT_EQ("S        ( 1.000000)  A        ( 2.000000)       100.000000     0.000000\n", s.report());
}

TEST(DistanceReduction, IsNotANumberWhenTheHeightDifferenceExceedsTheDistance)
{
    const double p[3] = {0, 0, 0}, q[3] = {3, 0, 0};
    Sight s(6.4e6, 0, p, q, 0, 0, 10, 250, 100);
    EXPECT_TRUE(isnan(s.distance_reduction(2)));
    EXPECT_TRUE(isnan(s.distance_reduction(9)));
}

TEST(DistanceReduction, TakesDistancesOfZeroAndBelow)
{
    const double p[3] = {0, 0, 0}, q[3] = {0, 0, 0};
    Sight zero(6.4e6, 0, p, q, 0, 0, 5, 5, 0.0);
    EXPECT_EQ(0.0, zero.distance_reduction(2));
    Sight below(6.4e6, 0, p, q, 0, 0, 0, 3, -5.0);
    EXPECT_DOUBLE_EQ(9.0, below.distance_reduction(2)); // 4 - (-5)
    Sight same(6.4e6, 0, p, q, 1.5, 1.5);
    EXPECT_EQ(0.0, same.distance_reduction(1));
}

TEST(ReductionTrace, ShowsHeightsValueAndReduction)
{
    const double p[3] = {0, 0, 0}, q[3] = {100, 0, 0};
    Sight s(1.0e17, 0, p, q, 0.0, 2.0);
    s.trace();
    s.distance_reduction(1);
    s.vertical_reduction();
    // 100 - sqrt(10004) = -0.019998; the elevation of 2 metres over 100 is 0.019997 rad.
    EXPECT_EQ("S        ( 0.000000)  A        ( 2.000000)       100.000000    -0.019998\n"
              "S        ( 0.000000)  A        ( 2.000000)         0.250000    -0.019997\n",
              s.report());
}

TEST(ReductionTrace, ShowsBothTermsOfADirection)
{
    // R = 1 metre: n = (1, 0, 1) / sqrt(2) at P = (1, 0, 0), and Q = (1, 1, 1) lies above it to the side.
    const double p[3] = {1, 0, 0}, q[3] = {1, 1, 1};
    Sight s(1.0, 0, p, q, 0.0, 0.0);
    s.trace();
    // L = G = (0, 1, 1) / sqrt(2): Aa = atan2(1, -1) = 3 pi / 4, Ab = Ac = pi / 2.
    EXPECT_NEAR(-PI / 4, s.direction_reduction(), 1e-15);
    EXPECT_EQ("S        ( 0.000000)  A        ( 0.000000)         0.250000    -0.785398 0.000000\n", s.report());
}

TEST(ReductionTrace, ShowsAZeroWithoutSign)
{
    for (const double x : {-50.0, 50.0})
        for (const double y : {-50.0, 0.0, 50.0}) {
            const double p[3] = {-x, -y, 0}, q[3] = {x, y, 0};
            Sight s(1.0e17, 0, p, q, 0.0, 0.0);
            s.trace();
            for (int code : {2, 9}) s.distance_reduction(code);
            s.direction_reduction();
            s.vertical_reduction();
            EXPECT_EQ("S        ( 0.000000)  A        ( 0.000000)       100.000000     0.000000\n"
                      "S        ( 0.000000)  A        ( 0.000000)       100.000000     0.000000\n"
                      "S        ( 0.000000)  A        ( 0.000000)         0.250000     0.000000 0.000000\n"
                      "S        ( 0.000000)  A        ( 0.000000)         0.250000     0.000000\n",
                      s.report());
        }
}

TEST(ReductionTrace, IsSilentWithoutDebug)
{
    const double p[3] = {0, 0, 0}, q[3] = {100, 0, 0};
    Sight s(6.4e6, 0, p, q, 1.0, 2.0);
    for (int code : {1, 2, 9}) s.distance_reduction(code);
    s.direction_reduction();
    s.vertical_reduction();
    EXPECT_EQ("", s.report());
}
