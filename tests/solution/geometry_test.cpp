#include <gtest/gtest.h>
#include <math.h>
#include <stdio.h>

#include <functional>
#include <map>
#include <random>

#include "support/rows.h"

namespace {

const double PI = 3.14159265358979323846;

// Sum of the entries of an unknown.
double entry(const std::vector<int> &u, const std::vector<double> &a, int number)
{
    double sum = 0.0;
    for (size_t k = 0; k < u.size(); k++)
        if (u[k] == number) sum += a[k];
    return sum;
}

// Central difference quotient of f by *x.
double quotient(const std::function<double()> &f, double *x, double h)
{
    const double x0 = *x;
    *x = x0 + h;
    const double up = f();
    *x = x0 - h;
    const double down = f();
    *x = x0;
    return (up - down) / (2.0 * h);
}

// With steps of 1e-4 m and 1e-5 rad on lengths of tens of metres the quotient is good to about
// 1e-9 (third derivative) and 1e-10 (rounding of the value).
const double STEP_M = 1e-4, STEP_RAD = 1e-5, TOLERANCE = 1e-8;

// Every coefficient of a row without weight factor against the quotients of f.
void expect_derivatives(Rows &s, const Row &row, double w, const std::function<double()> &f, int nsta)
{
    for (size_t p = 0; p < s.points.size(); p++) {
        point &pt = s.points[p];
        for (int c = 0; c < 3; c++)
            EXPECT_NEAR(entry(row.i1, row.c1, pt.n0[c]) / w, quotient(f, &pt.xpt[c], STEP_M), TOLERANCE)
                << "point " << p << " coordinate " << c;
        for (int c = 0; c < 6 && (int)p < nsta; c++)
            EXPECT_NEAR(entry(row.i2, row.c2, pt.n1[c]) / w, quotient(f, &pt.xex[c], STEP_RAD), TOLERANCE)
                << "station " << p << " parameter " << c;
    }
}

// Three stations with general orientation and two targets, tens of metres apart.
void scatter(Rows &s, unsigned seed, double tilt)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> one(-1.0, 1.0);
    const char *names[] = {"S1", "S2", "S3", "A", "B"};
    for (int p = 0; p < 5; p++)
        s.add(names[p], 40 * cos(1.3 * p) + 5 * one(random), 40 * sin(1.3 * p) + 5 * one(random), 10 * one(random));
    for (int p = 0; p < 3; p++) {
        s.points[p].xex[0] = tilt * one(random);
        s.points[p].xex[1] = tilt * one(random);
        s.points[p].xex[2] = PI * one(random);
        s.points[p].xex[3] = 0.1 * one(random);
        s.points[p].xex[4] = 1.0 + 0.01 * one(random);
        s.points[p].xex[5] = 0.01 * one(random);
    }
}

void every_sight(Rows &s, std::vector<measure> &list)
{
    for (int p = 0; p < 3; p++)
        for (int q = 0; q < 5; q++)
            if (p != q) s.observe(list, p, q, 0.3 * p - 0.2 * q, 0.01 * (1 + p));
}

struct Place {
    double x, y, z;
};

// A station P and a point Q with one observation between them.
measure &one_sight(Rows &s, std::vector<measure> &list, const Place &p, const Place &q, double val, double sigma)
{
    s.add("P", p.x, p.y, p.z);
    s.add("Q", q.x, q.y, q.z);
    measure &m = s.observe(list, 0, 1, val, sigma);
    s.wire(1);
    return m;
}

// Results of the routines that the caller holds.
struct Held {
    double d[3], e[3], g[3], r1[3][3], r2[3][3], rr, l, ca, sa, cb, sb, cc, sc;
    int l1, l2;
};

double computed_distance(Rows &s, int i)
{
    Held h;
    const double c = S(s, distance)(i, h.d, h.r1, h.r2, &h.l1, &h.l2);
    const measure &m = s.dist[i];
    return m.typ == 1 ? m.p1->xex[4] * c + m.p1->xex[3] : c;
}

double computed_direction(Rows &s, int i)
{
    Held h;
    S(s, setrot)(1, i, &h.ca, &h.sa, &h.cb, &h.sb, &h.cc, &h.sc);
    return S(s, dir1comp)(i, h.d, h.e, &h.rr, h.r1, h.r2, &h.l1, &h.l2);
}

double computed_vertical(Rows &s, int i)
{
    Held h;
    S(s, setrot)(2, i, &h.ca, &h.sa, &h.cb, &h.sb, &h.cc, &h.sc);
    return S(s, dir2comp)(i, h.d, h.e, &h.rr, &h.l, h.r1, h.r2, &h.l1, &h.l2);
}

} // namespace

// ---- weight factor, turn ----

TEST(WeightFactor, IsTheListsDeviationOverTheMeasuresOwn)
{
    EXPECT_EQ(weightfactor(2.0, 0.5), 4.0);
    EXPECT_EQ(weightfactor(0.0, 0.5), 0.0);
    EXPECT_EQ(weightfactor(3.0, 1.0e-07), 3.0 / 1.0e-07);
}

TEST(WeightFactor, IsCappedBelowTheSmallestDeviationWhateverTheListsOwn)
{
    for (double sigma : {0.9999999e-07, 0.0, -1.0, (double)NAN})
        for (double s : {0.001, 1.0, 5.0}) EXPECT_EQ(weightfactor(s, sigma), 100000000.0);
}

TEST(WithinTurn, CorrectsByOneTurnAtMostAndLeavesPiAlone)
{
    Rows s(2);
    const double pi = S(s, pi);
    EXPECT_EQ(S(s, withinturn)(pi), pi);
    EXPECT_EQ(S(s, withinturn)(-pi), -pi);
    EXPECT_DOUBLE_EQ(S(s, withinturn)(pi + 0.5), 0.5 - pi);
    EXPECT_DOUBLE_EQ(S(s, withinturn)(-pi - 0.5), pi - 0.5);
    EXPECT_DOUBLE_EQ(S(s, withinturn)(3.25 * pi), 1.25 * pi);
    EXPECT_DOUBLE_EQ(S(s, withinturn)(-3.25 * pi), -1.25 * pi);
}

// ---- setrot ----

TEST(Setrot, TurnsAboutTheThreeAxesInTurn)
{
    Rows s(3);
    scatter(s, 5, 1.5);
    s.observe(s.dir1, 0, 3, 0, 1);
    s.observe(s.dir2, 1, 3, 0, 1);
    s.observe(s.u, 2, 3, 0, 1);
    s.observe(s.v, 2, 3, 0, 1);
    s.wire(3);
    for (int which = 1; which <= 3; which++) {
        Held h;
        S(s, setrot)(which, 0, &h.ca, &h.sa, &h.cb, &h.sb, &h.cc, &h.sc);
        const double *x = s.points[which - 1].xex;
        EXPECT_EQ(h.ca, cos(x[0]));
        EXPECT_EQ(h.sa, sin(x[0]));
        EXPECT_EQ(h.cb, cos(x[1]));
        EXPECT_EQ(h.sb, sin(x[1]));
        EXPECT_EQ(h.cc, cos(x[2]));
        EXPECT_EQ(h.sc, sin(x[2]));
        // product of the three elementary turns A(a) B(b) C(c)
        const double A[3][3] = {{1, 0, 0}, {0, h.ca, h.sa}, {0, -h.sa, h.ca}};
        const double B[3][3] = {{h.cb, 0, -h.sb}, {0, 1, 0}, {h.sb, 0, h.cb}};
        const double C[3][3] = {{h.cc, h.sc, 0}, {-h.sc, h.cc, 0}, {0, 0, 1}};
        for (int i = 0; i < 3; i++)
            for (int j = 0; j < 3; j++) {
                double sum = 0.0;
                for (int k = 0; k < 3; k++)
                    for (int l = 0; l < 3; l++) sum += A[i][k] * B[k][l] * C[l][j];
                EXPECT_NEAR(S(s, rot)[i][j], sum, 1e-15);
            }
    }
}

// ---- distances ----

TEST(NormDist, CoefficientsAreTheDerivativesOfTheComputedValue)
{
    for (int dim : {2, 3})
        for (int iredux : {0, 1})
            for (int typ : {0, 1})
                for (unsigned seed : {1u, 2u, 3u}) {
                    SCOPED_TRACE(testing::Message() << dim << iredux << typ << seed);
                    Rows s(dim);
                    scatter(s, seed, 0.3);
                    every_sight(s, s.dist);
                    for (measure &m : s.dist) m.typ = typ;
                    S(s, iredux) = iredux;
                    s.number_all(3);
                    S(s, sdist) = 2.0;
                    S(s, norm_dist)();
                    ASSERT_EQ(s.rows.size(), s.dist.size());
                    for (size_t i = 0; i < s.rows.size(); i++) {
                        const double w = 2.0 / s.dist[i].val[1];
                        auto f = [&] { return computed_distance(s, (int)i); };
                        expect_derivatives(s, s.rows[i], w, f, 3);
                        const double r = iredux ? S(s, distred)((int)i) : 0.0;
                        EXPECT_NEAR(s.rows[i].b, (r + s.dist[i].val[0] - f()) * w, 1e-9);
                    }
                }
}

TEST(Distance, IsPlaneInDimension2UnlessAReductionWorksInSpace)
{
    Rows s(2);
    one_sight(s, s.dist, {0, 0, 0}, {3, 4, 12}, 13, 1);
    EXPECT_DOUBLE_EQ(computed_distance(s, 0), 5.0);
    for (int code : {1, 2, 3, 9}) {
        S(s, iredux) = code;
        EXPECT_DOUBLE_EQ(computed_distance(s, 0), 13.0);
    }
    Rows t(3);
    one_sight(t, t.dist, {0, 0, 0}, {3, 4, 12}, 13, 1);
    EXPECT_DOUBLE_EQ(computed_distance(t, 0), 13.0);
}

TEST(NormDist, OrdersTheEntriesByAxisFromBeforeTo)
{
    Rows s(3);
    scatter(s, 1, 0.3);
    s.observe(s.dist, 1, 3, 30, 0.01).typ = 1;
    s.number_all(3);
    S(s, norm_dist)();
    EXPECT_EQ(s.rows[0].i1, (std::vector<int>{3, 9, 4, 10, 5, 11}));
    EXPECT_EQ(s.rows[0].i2, (std::vector<int>{9, 10})); // additive constant, scale
}

TEST(NormDist, UsesTheConstantsOfAStationWithoutUnknownConstant)
{
    Rows s(2);
    s.add("P", 0, 0).xex[3] = 0.5;
    s.points[0].xex[4] = 2.0;
    s.add("Q", 3, 4).n0[0] = 0;
    s.observe(s.dist, 0, 1, 10.0, 0.5).typ = 1;
    s.observe(s.dist, 0, 1, 10.0, 0.5);
    s.wire(1);
    S(s, nunk1) = 1;
    S(s, norm_dist)();
    const double w = S(s, sdist) / 0.5;
    EXPECT_DOUBLE_EQ(s.rows[0].b, (10.0 - (2.0 * 5.0 + 0.5)) * w);
    EXPECT_DOUBLE_EQ(s.rows[0].c1[0], 2.0 * w * 3.0 / 5.0);
    EXPECT_DOUBLE_EQ(s.rows[1].b, (10.0 - 5.0) * w);
    EXPECT_DOUBLE_EQ(s.rows[1].c1[0], w * 3.0 / 5.0);
    EXPECT_TRUE(s.rows[0].i2.empty());
}

TEST(NormDist, GivesARowWithoutCoordinatesBetweenFixedPoints)
{
    Rows s(2);
    s.add("P", 0, 0).n1[4] = 0;
    s.add("Q", 3, 4);
    s.observe(s.dist, 0, 1, 5.1, 0.1).typ = 1;
    s.wire(1);
    S(s, nunk2) = 1;
    S(s, norm_dist)();
    EXPECT_TRUE(s.rows[0].i1.empty());
    EXPECT_EQ(s.rows[0].i2, std::vector<int>{0});
    EXPECT_DOUBLE_EQ(s.rows[0].c2[0], 5.0 * S(s, sdist) / 0.1);
}

TEST(NormDist, GivesNoNumbersBetweenCoincidentPoints)
{
    Rows s(2);
    s.add("P", 3, 4).n0[0] = 0;
    s.add("Q", 3, 4).n0[1] = 1;
    s.observe(s.dist, 0, 1, 5.0, 0.5);
    s.wire(1);
    S(s, nunk1) = 2;
    S(s, norm_dist)();
    ASSERT_EQ(s.rows[0].i1, (std::vector<int>{0, 1}));
    for (const double a : s.rows[0].c1) EXPECT_TRUE(isnan(a)); // infinity times zero
    EXPECT_DOUBLE_EQ(s.rows[0].b, 5.0 * S(s, sdist) / 0.5);
}

TEST(NormDist, IgnoresHeightsOfInstrumentAndTargetWithoutReduction)
{
    Rows s(3);
    measure &m = one_sight(s, s.dist, {0, 0, 0}, {3, 4, 0}, 5.5, 1.0);
    m.h1 = 1.5;
    m.h2 = 2.5;
    S(s, norm_dist)();
    EXPECT_DOUBLE_EQ(s.rows[0].b, 0.5 * S(s, sdist));
}

TEST(RowBuilders, LeaveOutNumbersThatTheNetworkDoesNotHave)
{
    Rows s(3);
    scatter(s, 1, 0.1);
    s.observe(s.dir2, 0, 3, 0, 0.1);
    s.points[0].n1[5] = 0; // a copied station keeps 0 although there is no such unknown
    s.points[3].n0[0] = -9;
    s.points[3].n0[1] = 5;
    s.wire(3);
    S(s, nunk1) = 5;
    S(s, norm_dir2)();
    EXPECT_TRUE(s.rows[0].i1.empty());
    EXPECT_TRUE(s.rows[0].i2.empty());
}

// ---- height differences ----

TEST(NormDifh, CoefficientsAreTheDerivativesOfTheDifference)
{
    Rows s(3);
    scatter(s, 4, 0.3);
    every_sight(s, s.difh);
    s.number_all(3);
    S(s, sdifh) = 3.0;
    S(s, norm_difh)();
    ASSERT_EQ(s.rows.size(), s.difh.size());
    for (size_t i = 0; i < s.rows.size(); i++) {
        const measure &m = s.difh[i];
        auto f = [&] { return m.p2->xpt[2] - m.p1->xpt[2]; };
        expect_derivatives(s, s.rows[i], 3.0 / m.val[1], f, 3);
        EXPECT_EQ(s.rows[i].i1, (std::vector<int>{m.p1->n0[2], m.p2->n0[2]}));
    }
}

TEST(NormDifh, TakesInstrumentAndTargetHeightsOffTheValue)
{
    for (int dim : {1, 2}) {
        Rows s(dim);
        s.add("P", 0, 0, 10).h = 100;
        s.add("Q", 0, 0, 12).h = 105; // heights above the sphere count in dimension 3 alone
        measure &m = s.observe(s.difh, 0, 1, 2.7, 0.5);
        m.h1 = 1.5;
        m.h2 = 1.75;
        m.time = 3;
        s.wire(1);
        S(s, norm_difh)();
        EXPECT_NEAR(s.rows[0].b, (2.7 - 0.25 - 2.0) * S(s, sdifh) / 0.5, 1e-14);
    }
}

TEST(NormDifh, TakesOffWhatTheSphereAddsInDimension3)
{
    Rows s(3);
    s.add("P", 0, 0, 10).h = 100;
    s.add("Q", 0, 0, 12).h = 102.25;
    s.observe(s.difh, 0, 1, 2.5, 0.5);
    s.wire(1);
    S(s, norm_difh)();
    EXPECT_NEAR(s.rows[0].b, (2.5 - 0.25 - 2.0) * S(s, sdifh) / 0.5, 1e-14);
}

// ---- horizontal directions ----

TEST(NormDir1, CoefficientsAreTheDerivativesOfTheComputedDirection)
{
    for (unsigned seed : {1u, 2u, 3u, 4u})
        for (double tilt : {0.0, 0.5}) {
            SCOPED_TRACE(testing::Message() << seed << " " << tilt);
            Rows s(3);
            scatter(s, seed, tilt);
            every_sight(s, s.dir1);
            s.number_all(3);
            S(s, sdir1) = 2.0;
            S(s, norm_dir1)();
            ASSERT_EQ(s.rows.size(), s.dir1.size());
            for (size_t i = 0; i < s.rows.size(); i++) {
                const measure &m = s.dir1[i];
                // away from the step of atan2 at pi
                const double c0 = computed_direction(s, (int)i);
                auto f = [&] { return remainder(computed_direction(s, (int)i) - c0, 2 * PI); };
                expect_derivatives(s, s.rows[i], 2.0 / m.val[1], f, 3);
                EXPECT_NEAR(s.rows[i].b, remainder(m.val[0] - c0, 2 * PI) * 2.0 / m.val[1], 1e-9);
            }
        }
}

TEST(NormDir1, CountsFromTheFirstAxisToTheSecondAndAddsTheOrientation)
{
    Rows s(2);
    s.add("P", 0, 0).xex[2] = 0.25;
    s.add("Q", 5, 5);
    s.observe(s.dir1, 0, 1, 0, 1);
    s.wire(1);
    EXPECT_NEAR(computed_direction(s, 0), PI / 4 + 0.25, 1e-15);
}

// Of a tilted station a third component would turn the direction.
TEST(NormDir1, LiesInThePlaneInDimension2UnlessAReductionWorksInSpace)
{
    for (const int code : {0, 1, 3}) {
        Rows s(2);
        point &p = s.add("P", 0, 0, 5);
        p.xex[0] = 0.3, p.xex[1] = -0.2, p.xex[2] = 0.25;
        s.add("Q", 30, 40, 5);
        s.observe(s.dir1, 0, 1, 0, 0.5);
        s.number_all(1);
        S(s, iredux) = code;
        const double level = computed_direction(s, 0);
        s.points[1].xpt[2] = -7.0;
        if (code == 0)
            EXPECT_EQ(computed_direction(s, 0), level);
        else
            EXPECT_GT(fabs(computed_direction(s, 0) - level), 0.001);
        S(s, norm_dir1)();
        ASSERT_EQ(s.rows.size(), 1u);
        for (int c = 0; c < 2; c++) // the row belongs to the value
            EXPECT_NEAR(entry(s.rows[0].i1, s.rows[0].c1, s.points[1].n0[c]) * 0.5 / S(s, sdir1),
                        quotient([&] { return computed_direction(s, 0); }, &s.points[1].xpt[c], STEP_M), TOLERANCE);
    }
}

TEST(NormDir1, KeepsTheRotationForARunOfOneStation)
{
    Rows s(2);
    s.add("P", 0, 0);
    s.add("R", 0, 1);
    s.add("Q", 5, 0);
    for (int from : {0, 0, 1, 0}) s.observe(s.dir1, from, 2, 0.0, 1.0);
    s.wire(2);
    s.after_row = [&] { s.points[0].xex[2] = 0.5; };
    S(s, norm_dir1)();
    ASSERT_EQ(s.rows.size(), 4u);
    EXPECT_NEAR(s.rows[0].b, 0.0, 1e-15); // the first one sets the rotation
    EXPECT_NEAR(s.rows[1].b, 0.0, 1e-15); // kept
    EXPECT_NEAR(s.rows[3].b, -0.5 * S(s, sdir1), 1e-15);
    s.rows.clear();
    S(s, norm_dir1)(); // a new call keeps nothing
    EXPECT_NEAR(s.rows[0].b, -0.5 * S(s, sdir1), 1e-15);
}

TEST(NormDir1, BringsTheMisclosureBackByOneTurn)
{
    Rows s(2);
    s.add("P", 0, 0);
    s.add("Q", 5, 0);
    for (double val : {S(s, pi), 3.5, -3.5, 10.0, -10.0}) s.observe(s.dir1, 0, 1, val, 1.0);
    s.wire(1);
    S(s, norm_dir1)();
    const double w = S(s, sdir1);
    EXPECT_EQ(s.rows[0].b, S(s, pi) * w);
    EXPECT_NEAR(s.rows[1].b, (3.5 - 2 * PI) * w, 1e-15);
    EXPECT_NEAR(s.rows[2].b, (2 * PI - 3.5) * w, 1e-15);
    EXPECT_NEAR(s.rows[3].b, (10.0 - 2 * PI) * w, 1e-15); // more than one and a half turns stay out
    EXPECT_NEAR(s.rows[4].b, (2 * PI - 10.0) * w, 1e-15);
}

TEST(NormDir1, StopsTheListAtATargetAboveTheInstrument)
{
    Rows s(3);
    s.add("P", 0, 0, 0);
    s.add("Q", 5, 0, 0);
    s.add("Z", 3.1622e-4, 0, 9); // square of the horizontal length just below 1e-07
    s.add("Y", 3.1623e-4, 0, 9); // just above
    for (int to : {1, 3, 2, 1}) s.observe(s.dir1, 0, to, 0.0, 1.0);
    s.wire(1);
    S(s, norm_dir1)();
    EXPECT_EQ(s.rows.size(), 2u);
    EXPECT_EQ(s.report(), "\nProblem with horizontal direction 2\n");
}

TEST(NormDir1, ReducesTheDirectionsOfALevelledInstrumentAlone)
{
    for (int typ : {0, 1}) {
        Rows s(3);
        measure &m = one_sight(s, s.dir1, {1000, 500, 10}, {1500, 900, 80}, 0.6, 0.5);
        s.points[0].typ = typ;
        m.h1 = 1.5;
        m.h2 = 2.0;
        S(s, radius) = 10000.0;
        S(s, norm_dir1)();
        const double r = typ ? S(s, dir1red)(0) : 0.0;
        EXPECT_NEAR(s.rows[0].b, (r + 0.6 - atan2(400, 500)) * S(s, sdir1) / 0.5, 1e-14);
    }
}

// ---- vertical angles ----

TEST(NormDir2, CoefficientsAreTheDerivativesOfTheComputedAngle)
{
    for (unsigned seed : {1u, 2u, 3u, 4u})
        for (double tilt : {0.0, 0.5}) {
            SCOPED_TRACE(testing::Message() << seed << " " << tilt);
            Rows s(3);
            scatter(s, seed, tilt);
            every_sight(s, s.dir2);
            s.number_all(3);
            S(s, sdir2) = 2.0;
            S(s, norm_dir2)();
            ASSERT_EQ(s.rows.size(), s.dir2.size());
            for (size_t i = 0; i < s.rows.size(); i++) {
                const measure &m = s.dir2[i];
                const double w = 2.0 / m.val[1];
                // The vertical term has a column but no part in the computed value.
                EXPECT_DOUBLE_EQ(entry(s.rows[i].i2, s.rows[i].c2, m.p1->n1[5]), w);
                Row rest = s.rows[i];
                for (size_t k = 0; k < rest.i2.size(); k++)
                    if (rest.i2[k] == m.p1->n1[5]) rest.c2[k] = 0.0;
                expect_derivatives(
                    s, rest, w, [&] { return computed_vertical(s, (int)i); }, 3);
                EXPECT_EQ(rest.i2, (std::vector<int>{m.p1->n1[0], m.p1->n1[1], m.p1->n1[5]}));
                EXPECT_NEAR(s.rows[i].b, (m.val[0] - computed_vertical(s, (int)i)) * w, 1e-9);
            }
        }
}

TEST(NormDir2, IsAnElevationInEveryDimension)
{
    for (int dim : {2, 3}) {
        Rows s(dim);
        one_sight(s, s.dir2, {0, 0, 1}, {3, 4, 6}, 0, 1);
        EXPECT_DOUBLE_EQ(computed_vertical(s, 0), atan2(5.0, 5.0));
    }
}

TEST(NormDir2, DoesNotBringTheMisclosureBack)
{
    Rows s(3);
    one_sight(s, s.dir2, {0, 0, 0}, {5, 0, 0}, 6.0, 0.5);
    S(s, norm_dir2)();
    EXPECT_DOUBLE_EQ(s.rows[0].b, 6.0 * S(s, sdir2) / 0.5);
}

TEST(NormDir2, StopsTheListAtASightToTheZenith)
{
    Rows s(3);
    s.add("P", 0, 0, 0);
    s.add("Q", 5, 0, 0);
    s.add("Y", 1.01e-7, 0, 9);
    s.add("Z", 0.99e-7, 0, 9);
    for (int to : {1, 2, 3, 1}) s.observe(s.dir2, 0, to, 0.0, 1.0);
    s.wire(1);
    S(s, norm_dir2)();
    ASSERT_EQ(s.rows.size(), 2u);
    EXPECT_FALSE(isnan(s.rows[1].b));
    EXPECT_EQ(s.report(), "\nProblem with vertical direction 2\n");
}

TEST(NormDir2, StopsTheListBetweenCoincidentPoints)
{
    Rows s(3);
    one_sight(s, s.dir2, {1, 2, 3}, {1, 2, 3}, 0.0, 1.0);
    EXPECT_EQ(computed_vertical(s, 0), 0.0);
    S(s, norm_dir2)();
    EXPECT_TRUE(s.rows.empty());
    EXPECT_EQ(s.report(), "\nProblem with vertical direction 0\n");
}

TEST(NormDir2, NeverComputesANotANumberForASteepSight)
{
    Rows s(3);
    one_sight(s, s.dir2, {0, 0, 0}, {0, 0, 0}, 0.0, 1.0);
    std::mt19937 random(9);
    std::uniform_real_distribution<double> angle(-PI, PI);
    for (int k = 0; k < 2000; k++) {
        for (int c = 0; c < 3; c++) s.points[0].xex[c] = angle(random);
        computed_vertical(s, 0); // sets the rotation: the target stands on the third axis
        for (int c = 0; c < 3; c++) s.points[1].xpt[c] = (k % 2 ? 1000.0 : -1000.0) * S(s, rot)[c][2];
        const double c = computed_vertical(s, 0);
        ASSERT_NEAR(fabs(c), PI / 2, 1e-6);
    }
}

TEST(NormDir2, KeepsTheRotationForARunOfOneStation)
{
    Rows s(3);
    s.add("P", 0, 0, 0);
    s.add("R", 1, 0, 0);
    s.add("Q", 5, 0, 0);
    for (int from : {0, 0, 1, 0}) s.observe(s.dir2, from, 2, 0.0, 1.0);
    s.wire(2);
    s.after_row = [&] { s.points[0].xex[1] = 0.5; };
    S(s, norm_dir2)();
    ASSERT_EQ(s.rows.size(), 4u);
    EXPECT_NEAR(s.rows[1].b, 0.0, 1e-15);
    EXPECT_NEAR(fabs(s.rows[3].b), 0.5 * S(s, sdir2), 1e-15);
}

TEST(NormDir2, ReducesTheAnglesOfALevelledInstrumentAlone)
{
    for (int typ : {0, 1}) {
        Rows s(3);
        measure &m = one_sight(s, s.dir2, {1000, 500, 10}, {1300, 900, 80}, 0.6, 0.5);
        s.points[0].typ = typ;
        m.h1 = 1.5;
        m.h2 = 2.0;
        S(s, radius) = 10000.0;
        S(s, norm_dir2)();
        const double r = typ ? S(s, dir2red)(0) : 0.0;
        EXPECT_NEAR(s.rows[0].b, (r + 0.6 - atan2(70, 500)) * S(s, sdir2) / 0.5, 1e-14);
    }
}

TEST(RowBuilders, HeadTheTraceOfReductions)
{
    Rows s(3);
    s.wire(0);
    S(s, idebug) = 1;
    S(s, norm_dist)();
    S(s, norm_difh)();
    S(s, norm_dir1)();
    S(s, norm_dir2)();
    S(s, norm_az)();
    EXPECT_EQ(s.report(), "Reductions on distances\nReductions on horizontal directions (in radians)\n"
                          "Reductions on vertical directions (in radians)\n");
}

// ---- azimuths ----

namespace {

void azimuth_scene(Rows &s)
{
    scatter(s, 7, 0.2);
    every_sight(s, s.az);
    s.number_all(3);
    S(s, radius) = 6371000.0;
    S(s, horigin) = 200.0;
    S(s, latitude) = 0.8;
    S(s, saz) = 2.0;
}

} // namespace

TEST(NormAz, RowIsThatOfThePlainDirection)
{
    Rows s(3);
    azimuth_scene(s);
    s.n.p.azrot = 0.7; // neither the turn nor the sphere shows in the coefficients
    S(s, radius) = 1000.0;
    S(s, norm_az)();
    ASSERT_EQ(s.rows.size(), s.az.size());
    for (size_t i = 0; i < s.rows.size(); i++) {
        const measure &m = s.az[i];
        const double c0 = atan2(m.p2->xpt[1] - m.p1->xpt[1], m.p2->xpt[0] - m.p1->xpt[0]);
        auto plain = [&] {
            return remainder(atan2(m.p2->xpt[1] - m.p1->xpt[1], m.p2->xpt[0] - m.p1->xpt[0]) - c0, 2 * PI);
        };
        expect_derivatives(s, s.rows[i], 2.0 / m.val[1], plain, 3);
        EXPECT_EQ(s.rows[i].i1, (std::vector<int>{m.p1->n0[0], m.p2->n0[0], m.p1->n0[1], m.p2->n0[1]}));
    }
}

TEST(NormAz, RowIsTheDerivativeOfTheComputedValueUpToTheCurvatureOfTheSphere)
{
    Rows s(3);
    azimuth_scene(s);
    S(s, radius) = 1e12;
    S(s, norm_az)();
    for (size_t i = 0; i < s.rows.size(); i++) {
        const double c0 = S(s, azcomp)((int)i);
        auto f = [&] { return remainder(S(s, azcomp)((int)i) - c0, 2 * PI); };
        expect_derivatives(s, s.rows[i], 2.0 / s.az[i].val[1], f, 3);
    }
}

TEST(Azcomp, IsTheDirectionAroundTheVerticalOfTheSphereLessTheConvergence)
{
    Rows s(3);
    azimuth_scene(s);
    const double t = s.n.p.azrot = 0.7, radius = S(s, radius) = 300.0, horigin = S(s, horigin) = 7.0;
    for (size_t i = 0; i < s.az.size(); i++) {
        // Two unit vectors in the horizon of P: north is the first axis laid into the horizon.
        double a[3], d[3], up[3], length = 0.0;
        const double *p = s.az[i].p1->xpt, *q = s.az[i].p2->xpt;
        for (int k = 0; k < 3; k++) d[k] = q[k] - p[k];
        a[0] = p[0] * cos(t) - p[1] * sin(t), a[1] = p[1] * cos(t) + p[0] * sin(t), a[2] = p[2];
        const double dx = d[0] * cos(t) - d[1] * sin(t), dy = d[1] * cos(t) + d[0] * sin(t);
        up[0] = a[0], up[1] = a[1], up[2] = a[2] + radius + horigin;
        for (int k = 0; k < 3; k++) length += up[k] * up[k];
        for (int k = 0; k < 3; k++) up[k] /= sqrt(length);
        const double y = up[2] * dy - up[1] * d[2], x = up[2] * dx - up[0] * d[2];
        EXPECT_NEAR(S(s, azcomp)((int)i), atan2(y, x) - tan(0.8) * a[0] / 307.0, 1e-13);
    }
}

TEST(Azcomp, OnAPlaneIsTheTurnedDirection)
{
    Rows s(3);
    one_sight(s, s.az, {10, 20, 0}, {15, 20, 0}, 0, 1);
    s.n.p.azrot = 0.3;
    S(s, radius) = 1e15;
    EXPECT_NEAR(S(s, azcomp)(0), 0.3, 1e-12);
}

TEST(Azcomp, OnASphereWithoutRadiusIsWhatTheDivisionGives)
{
    Rows s(3);
    one_sight(s, s.az, {10, 20, 0}, {15, 20, 0}, 0, 1);
    EXPECT_FALSE(isfinite(S(s, azcomp)(0)));
}

TEST(NormAz, BringsTheMisclosureBackAndWeighsIt)
{
    Rows s(2);
    s.add("P", 0, 0).n0[0] = 0;
    s.add("Q", 5, 0);
    s.observe(s.az, 0, 1, 3.5, 0.5).time = 4; // epochs play no part
    s.observe(s.az, 0, 1, 0.5, 0.0);
    s.wire(1);
    S(s, radius) = 6e6;
    S(s, nunk1) = 1;
    S(s, norm_az)();
    EXPECT_NEAR(s.rows[0].b, (3.5 - 2 * PI) * S(s, saz) / 0.5, 1e-14);
    EXPECT_DOUBLE_EQ(s.rows[1].b, 0.5 * 100000000.0);
    EXPECT_TRUE(s.rows[0].i2.empty());
}

TEST(NormAz, GivesZeroCoefficientsBetweenCoincidentPoints)
{
    Rows s(2);
    s.add("P", 5, 5).n0[0] = 0;
    s.add("Q", 5, 5).n0[0] = 1;
    s.observe(s.az, 0, 1, 0.5, 1.0);
    s.wire(1);
    S(s, radius) = 6e6;
    S(s, nunk1) = 2;
    S(s, norm_az)();
    EXPECT_EQ(s.rows[0].c1, (std::vector<double>{0.0, -0.0}));
}

// ---- lumps ----

namespace {

// Two lumps with two epochs beside their reference; P belongs to the first, Q to the second.
// The seven parameters of each epoch are unknowns behind those of the stations.
class Lumped : public Rows {
public:
    Lumped(unsigned seed, int lump_p, int lump_q) : Rows(3)
    {
        scatter(*this, seed, 0.4);
        points[0].ilump = lump_p;
        points[3].ilump = lump_q;
        number_all(3);
        std::mt19937 random(seed + 100);
        std::uniform_real_distribution<double> one(-1.0, 1.0);
        for (int k = 0; k < 2; k++) {
            for (int j = 0; j < 2; j++) {
                epochs[k][j] = 10 + j;
                first[k][j] = nunk2 + 7 * (2 * k + j);
                for (int c = 0; c < 7; c++) par[k][c][j] = c < 3 ? 5 * one(random) : c < 6 ? 0.8 * one(random) : 1.2;
            }
            lump l = lump();
            l.nepoch = 3;
            l.iref = 1;
            l.iunk = first[k];
            l.epoch = epochs[k];
            double **const to[7] = {&l.tx, &l.ty, &l.tz, &l.rx, &l.ry, &l.rz, &l.scale};
            for (int c = 0; c < 7; c++) *to[c] = par[k][c];
            lumps.push_back(l);
        }
    }
    // The observation from P to Q at an epoch.
    void sight(std::vector<measure> &list, int epoch)
    {
        observe(list, 0, 3, 0.2, 0.5).time = epoch;
        const int n1 = nunk1, n2 = nunk2;
        wire(3);
        nunk1 = n1;
        nunk2 = n2 + 28;
        nunk = nunk1 + nunk2;
    }
    void expect_lump_derivatives(double w, const std::function<double()> &f)
    {
        for (int k = 0; k < 2; k++)
            for (int j = 0; j < 2; j++)
                for (int c = 0; c < 7; c++)
                    EXPECT_NEAR(entry(rows[0].i2, rows[0].c2, first[k][j] + c) / w,
                                quotient(f, &par[k][c][j], c < 3 ? STEP_M : STEP_RAD), TOLERANCE)
                        << "lump " << k << " epoch " << j << " parameter " << c;
    }
    int epochs[2][2], first[2][2];
    double par[2][7][2];
};

struct Family {
    const char *name;
    std::vector<measure> Bare::*list;
    void (*norm)(Rows &s);
    double (*computed)(Rows &s, int i);
    double (*apriori)(Rows &s);

    double weight(Rows &s) const { return apriori(s) / 0.5; }
};

void distance_rows(Rows &s) { S(s, norm_dist)(); }
void direction_rows(Rows &s) { S(s, norm_dir1)(); }
void vertical_rows(Rows &s) { S(s, norm_dir2)(); }

double of_distances(Rows &s) { return S(s, sdist); }
double of_directions(Rows &s) { return S(s, sdir1); }
double of_verticals(Rows &s) { return S(s, sdir2); }

const Family FAMILIES[] = {{"distance", &Bare::dist, distance_rows, computed_distance, of_distances},
                           {"direction", &Bare::dir1, direction_rows, computed_direction, of_directions},
                           {"vertical angle", &Bare::dir2, vertical_rows, computed_vertical, of_verticals}};

// The vertical term of the instrument has no part in the computed value.
void without_vertical_term(Rows &s)
{
    for (size_t k = 0; k < s.rows[0].i2.size(); k++)
        if (s.rows[0].i2[k] == s.points[0].n1[5]) s.rows[0].c2[k] = 0.0;
}

} // namespace

TEST(LumpedRows, CoefficientsAreTheDerivativesWithBothEndsMoved)
{
    for (const Family &family : FAMILIES)
        for (unsigned seed : {1u, 2u, 3u})
            for (int epoch : {10, 11}) {
                SCOPED_TRACE(testing::Message() << family.name << " " << seed << " " << epoch);
                Lumped s(seed, 1, 2);
                s.sight(s.*family.list, epoch);
                family.norm(s);
                ASSERT_EQ(s.rows.size(), 1u);
                const double c0 = family.computed(s, 0);
                auto f = [&] { return family.computed(s, 0) - c0; };
                without_vertical_term(s);
                expect_derivatives(s, s.rows[0], family.weight(s), f, 3);
                s.expect_lump_derivatives(family.weight(s), f);
            }
}

TEST(LumpedRows, CoefficientsAreTheDerivativesWithTheTargetMovedAlone)
{
    for (const Family &family : FAMILIES) {
        SCOPED_TRACE(family.name);
        Lumped s(4, 0, 2);
        s.sight(s.*family.list, 10);
        family.norm(s);
        const double c0 = family.computed(s, 0);
        auto f = [&] { return family.computed(s, 0) - c0; };
        without_vertical_term(s);
        expect_derivatives(s, s.rows[0], family.weight(s), f, 3);
        s.expect_lump_derivatives(family.weight(s), f);
    }
}

// With P moved and Q in the world, the coefficient of Q is that of P with the other sign
// instead of its own derivative, unless P has no unknown on the axis.
TEST(LumpedRows, CarryTheCoefficientOfAMovedStationOverToItsTarget)
{
    for (const Family &family : FAMILIES) {
        SCOPED_TRACE(family.name);
        Lumped s(5, 1, 0);
        s.points[0].n0[1] = N_NONE;
        s.sight(s.*family.list, 11);
        family.norm(s);
        const Row &row = s.rows[0];
        const point &p = s.points[0], &q = s.points[3];
        auto f = [&] { return family.computed(s, 0); };
        for (int c = 0; c < 3; c++) {
            const double of_q = entry(row.i1, row.c1, q.n0[c]) / family.weight(s);
            const double derivative = quotient(f, &s.points[3].xpt[c], STEP_M);
            if (c == 1) {
                EXPECT_NEAR(of_q, derivative, TOLERANCE);
                continue;
            }
            const double of_p = entry(row.i1, row.c1, p.n0[c]) / family.weight(s);
            EXPECT_NEAR(of_p, quotient(f, &s.points[0].xpt[c], STEP_M), TOLERANCE);
            EXPECT_EQ(of_q, -of_p);
            EXPECT_GT(fabs(of_q - derivative), 1e-4);
        }
        s.expect_lump_derivatives(family.weight(s), f);
    }
}

TEST(LumpedRows, ArePlainAtTheReferenceEpochAndAtEpochsThatTheLumpDoesNotKnow)
{
    for (const Family &family : FAMILIES)
        for (int epoch : {0, 1, 99}) {
            SCOPED_TRACE(testing::Message() << family.name << " " << epoch);
            Lumped s(6, 1, 2), t(6, 0, 0);
            s.sight(s.*family.list, epoch);
            t.sight(t.*family.list, 0);
            family.norm(s);
            family.norm(t);
            EXPECT_EQ(s.rows[0].i1, t.rows[0].i1);
            EXPECT_EQ(s.rows[0].c1, t.rows[0].c1);
            EXPECT_EQ(s.rows[0].i2, t.rows[0].i2);
            EXPECT_EQ(s.rows[0].b, t.rows[0].b);
        }
}

TEST(LumpedRows, HoldTheFourteenParametersBehindTheOrientation)
{
    Lumped s(7, 1, 2);
    s.sight(s.dir2, 10);
    S(s, norm_dir2)();
    EXPECT_EQ(s.rows[0].i2.size(), 17u);
    EXPECT_EQ(s.rows[0].i2[3], s.first[0][0]);
    EXPECT_EQ(s.rows[0].i2[10], s.first[1][0]);
}

TEST(LumpedRows, TakeTheConstantsOfTheInstrumentToo)
{
    Lumped s(8, 1, 2);
    s.sight(s.dist, 11);
    s.dist[0].typ = 1;
    S(s, norm_dist)();
    const double w = S(s, sdist) / 0.5;
    auto f = [&] { return computed_distance(s, 0); };
    expect_derivatives(s, s.rows[0], w, f, 3);
    s.expect_lump_derivatives(w, f);
    EXPECT_NEAR(s.rows[0].b, (0.2 - f()) * w, 1e-12);
}

// ---- weights ----

TEST(RowBuilders, WeighEachListWithItsOwnDeviation)
{
    Rows s(3);
    s.add("P", 0, 0, 0);
    s.add("Q", 5, 0, 0);
    for (auto list : {&s.dist, &s.difh, &s.dir1, &s.dir2, &s.az}) {
        s.observe(*list, 0, 1, 0.25, 0.5);
        s.observe(*list, 0, 1, 0.25, 1.0e-07);
        s.observe(*list, 0, 1, 0.25, 0.99e-07);
    }
    s.wire(1);
    S(s, radius) = 6e6;
    S(s, sdist) = 2, S(s, sdifh) = 3, S(s, sdir1) = 4, S(s, sdir2) = 5, S(s, saz) = 6;
    S(s, norm_dist)();
    S(s, norm_difh)();
    S(s, norm_dir1)();
    S(s, norm_dir2)();
    S(s, norm_az)();
    ASSERT_EQ(s.rows.size(), 15u);
    for (int k = 0; k < 5; k++) {
        const double v = k == 0 ? -4.75 : 0.25, a = 2.0 + k;
        EXPECT_DOUBLE_EQ(s.rows[3 * k].b, v * a / 0.5);
        EXPECT_DOUBLE_EQ(s.rows[3 * k + 1].b, v * a / 1.0e-07);
        EXPECT_DOUBLE_EQ(s.rows[3 * k + 2].b, v * 100000000.0);
    }
}
