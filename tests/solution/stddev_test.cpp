#include <gtest/gtest.h>
#include <math.h>

#include "support/bare.h"

namespace {

const double PI = 3.14159265358979323846;

struct Ellipse {
    double a, b, t;
};

Ellipse ellipse_of(double qxx, double qyy, double qxy)
{
    Bare s(2);
    s.wire(0);
    Ellipse e = {-1, -1, -1};
    S(s, ellipse)(qxx, qyy, qxy, &e.a, &e.b, &e.t);
    return e;
}

// A network of n points with the unknowns in the order of the points and a diagonal
// inverse 1e-6, 4e-6, 9e-6, ...: deviations of 1, 2, 3, ... millimetres.
void diagonal_network(Bare &s, int dim, int npoints, int nsta)
{
    const int first = dim == 1 ? 2 : 0, last = dim == 2 ? 1 : 2;
    int n = 0;
    for (int i = 0; i < npoints; i++) {
        point &p = s.add(i < nsta ? "S1" : "T1", 0, 0, 0);
        p.name[1] = (char)('1' + i);
        for (int c = first; c <= last; c++) p.n0[c] = n++;
    }
    s.inv.assign(n * n, 0.0);
    for (int k = 0; k < n; k++) s.inv[k * n + k] = 1e-6 * (k + 1) * (k + 1);
    s.wire(nsta);
    S(s, dim) = dim;
    S(s, nunk) = S(s, nunk1) = n;
}

double &q(Bare &s, int i, int j) { return s.inv[i * S(s, nunk) + j]; }

void symmetric(Bare &s, int i, int j, double value) { q(s, i, j) = q(s, j, i) = value; }

} // namespace

// ---- ellipse ----

TEST(Ellipse, HasTheEigenvaluesAndTheMajorEigenvectorOfItsBlock)
{
    const double blocks[][3] = {{4, 1, 0.5}, {4, 1, -0.5}, {1, 4, 0.5}, {1, 4, -1.5}, {2, 2, 1}, {2, 2, -1}, {9, 1, 0}};
    for (const double *m : blocks) {
        const Ellipse e = ellipse_of(m[0], m[1], m[2]);
        const double x = cos(e.t), y = -sin(e.t); // the bearing runs against the sense of the axes
        EXPECT_NEAR(m[0] * x + m[2] * y, e.a * e.a * x, 1e-14);
        EXPECT_NEAR(m[2] * x + m[1] * y, e.a * e.a * y, 1e-14);
        EXPECT_NEAR(e.a * e.a + e.b * e.b, m[0] + m[1], 1e-14);
        EXPECT_NEAR(e.a * e.a * e.b * e.b, m[0] * m[1] - m[2] * m[2], 1e-14);
        EXPECT_GE(e.a, e.b);
        EXPECT_GE(e.t, 0.0);
        EXPECT_LE(e.t, PI);
    }
}

TEST(Ellipse, BearsPiAlongTheFirstAxisAndHalfOfItAlongTheSecond)
{
    EXPECT_DOUBLE_EQ(ellipse_of(4, 1, 0).t, PI);
    EXPECT_DOUBLE_EQ(ellipse_of(1, 4, 0).t, PI / 2.0);
}

TEST(Ellipse, OfACircularBlockBearsPiWithEqualAxes)
{
    const Ellipse e = ellipse_of(9, 9, 0);
    EXPECT_DOUBLE_EQ(e.t, PI);
    EXPECT_EQ(e.a, 3.0);
    EXPECT_EQ(e.b, 3.0);
}

TEST(Ellipse, TakesAnEigenvalueUpToTheLimitAsZero)
{
    EXPECT_EQ(ellipse_of(4, 1e-14, 0).b, 0.0);
    EXPECT_NEAR(ellipse_of(1.1e-14, 1.05e-14, 0).b, sqrt(1.05e-14), 1e-12);
    EXPECT_EQ(ellipse_of(4, -1, 0).b, 0.0);
    EXPECT_EQ(ellipse_of(-4, -1, 0).a, 0.0);
    EXPECT_EQ(ellipse_of(1e-14, 1e-15, 0).a, 0.0);
}

// ---- points ----

TEST(StandardDeviations, ShowOneNumberAPointInOneDimension)
{
    Bare s(1);
    diagonal_network(s, 1, 3, 1);
    s.points[1].n0[2] = N_NONE;
    q(s, 2, 2) = -1e-6;
    S(s, stddev)(2.0);
    EXPECT_EQ(s.report(), "\nStandard deviations (sigma a posteriori    2.000)\n"
                          "S1             0.002000\n"
                          "T2             0.000000\n"
                          "T3             0.000000\n");
    EXPECT_DOUBLE_EQ(s.points[0].ell[0][1], 0.002);
    EXPECT_DOUBLE_EQ(s.points[0].ell[0][2], 0.002);
    EXPECT_EQ(s.points[0].ell[0][0], 0.0);
    EXPECT_EQ(s.points[0].sxpt[2], 0.0);
    EXPECT_EQ(s.points[1].ell[0][1], 0.0);
}

TEST(StandardDeviations, ShowDeviationsAndEllipseInThePlane)
{
    Bare s(2);
    diagonal_network(s, 2, 2, 1);
    symmetric(s, 2, 3, 12e-6); // fully correlated: 3 mm and 4 mm give a line of 5 mm
    S(s, stddev)(1.5);
    EXPECT_EQ(s.report(), "\nStandard deviations (sigma a posteriori    1.500)\n"
                          "Standard point confidence ellipse\n\n"
                          "S1             0.001500       0.003000\n"
                          "               0.003000       0.001500       1.6\n\n"
                          "T2             0.004500       0.006000\n"
                          "               0.007500       0.000000       2.2\n\n");
    const point &t = s.points[1];
    EXPECT_NEAR(t.ell[0][0], 0.0075, 1e-12);
    EXPECT_NEAR(t.ell[1][0], 0.0, 1e-7 * 1.5); // below the smallest axis
    EXPECT_NEAR(t.ell[2][0], PI - atan2(4.0, 3.0), 1e-12);
    EXPECT_EQ(t.sxpt[0], 0.0);
}

TEST(StandardDeviations, OfAFixedPointInThePlaneAreZeroWithABearingOfZero)
{
    Bare s(2);
    diagonal_network(s, 2, 1, 1);
    s.points[0].n0[0] = s.points[0].n0[1] = N_NONE;
    S(s, stddev)(1.0);
    EXPECT_EQ(s.report(), "\nStandard deviations (sigma a posteriori    1.000)\n"
                          "Standard point confidence ellipse\n\n"
                          "S1             0.000000       0.000000\n"
                          "               0.000000       0.000000       0.0\n\n");
}

TEST(StandardDeviations, KeepPlainAxesWhereTheCovarianceHasNoPosition)
{
    Bare s(2);
    diagonal_network(s, 2, 2, 0);
    s.points[0].n0[0] = N_NONE;                // position before the array
    s.points[1].n0[0] = s.points[1].n0[1] = 0; // position 0
    S(s, stddev)(1.0);
    EXPECT_DOUBLE_EQ(s.points[0].ell[0][0], 0.0);
    EXPECT_DOUBLE_EQ(s.points[0].ell[1][0], 0.002);
    EXPECT_DOUBLE_EQ(s.points[0].ell[2][0], 0.0);
    EXPECT_DOUBLE_EQ(s.points[1].ell[0][0], 0.001);
    EXPECT_DOUBLE_EQ(s.points[1].ell[1][0], 0.001);
    EXPECT_DOUBLE_EQ(s.points[1].ell[2][0], 0.0);
}

TEST(StandardDeviations, ReadTheEndOfTheRowBeforeForAFixedSecondCoordinate)
{
    Bare s(2);
    diagonal_network(s, 2, 2, 0);
    s.points[1].n0[1] = N_NONE; // unknowns 2 and none: position 7, the entry (1, 3)
    symmetric(s, 1, 3, 6e-6);
    S(s, stddev)(1.0);
    const Ellipse wanted = ellipse_of(9e-6, 0.0, 6e-6);
    EXPECT_DOUBLE_EQ(s.points[1].ell[0][0], wanted.a);
    EXPECT_DOUBLE_EQ(s.points[1].ell[2][0], wanted.t);
}

TEST(StandardDeviations, CallNoEllipseForTwoZeroDeviations)
{
    Bare s(2);
    diagonal_network(s, 2, 1, 0);
    q(s, 0, 0) = q(s, 1, 1) = -1.0;
    symmetric(s, 0, 1, 5.0);
    S(s, stddev)(1.0);
    for (int k = 0; k < 3; k++) EXPECT_EQ(s.points[0].ell[k][0], 0.0);
}

TEST(StandardDeviations, StoreCoordinatesAndThreeEllipsesInSpace)
{
    Bare s(3);
    diagonal_network(s, 3, 2, 0);
    symmetric(s, 3, 4, 2e-6);
    symmetric(s, 3, 5, -3e-6);
    symmetric(s, 4, 5, 5e-6);
    S(s, stddev)(2.0);
    const point &p = s.points[1]; // deviations of 4, 5, 6 mm
    const Ellipse planes[3] = {ellipse_of(16e-6, 25e-6, 2e-6), ellipse_of(16e-6, 36e-6, -3e-6),
                               ellipse_of(25e-6, 36e-6, 5e-6)};
    for (int k = 0; k < 3; k++) {
        EXPECT_NEAR(p.sxpt[k], 0.002 * (4 + k), 1e-15);
        EXPECT_NEAR(p.ell[0][k], 2.0 * planes[k].a, 1e-15) << k;
        EXPECT_NEAR(p.ell[1][k], 2.0 * planes[k].b, 1e-15) << k;
        EXPECT_NEAR(p.ell[2][k], planes[k].t, 1e-9) << k;
    }
    EXPECT_EQ(s.report().substr(0, 213), "\nStandard deviations (sigma a posteriori    2.000)\n"
                                         "Standard point confidence ellipse\n\n"
                                         "T1             0.002000       0.004000       0.006000\n"
                                         "               0.004000       0.002000       1.6\n\n"
                                         "T2             0.008000");
}

TEST(StandardDeviations, TreatAFixedCoordinateAsZeroInSpace)
{
    Bare s(3);
    diagonal_network(s, 3, 1, 0);
    s.points[0].n0[0] = N_NONE;
    S(s, stddev)(1.0);
    const point &p = s.points[0]; // 0, 2, 3 mm
    EXPECT_EQ(p.sxpt[0], 0.0);
    EXPECT_NEAR(p.ell[0][0], 0.002, 1e-15); // the major axis lies along the second coordinate
    EXPECT_EQ(p.ell[1][0], 0.0);
    EXPECT_DOUBLE_EQ(p.ell[2][0], PI / 2.0);
    EXPECT_NEAR(p.ell[0][1], 0.003, 1e-15);
    EXPECT_NEAR(p.ell[0][2], 0.003, 1e-15);
    EXPECT_NEAR(p.ell[1][2], 0.002, 1e-15);
    // Printed before the planes are taken anew: axes without a position.
    EXPECT_NE(s.report().find("T1             0.000000       0.002000       0.003000\n"
                              "               0.000000       0.002000       0.0\n\n"),
              std::string::npos);
}

TEST(StandardDeviations, OfAFixedPointInSpaceAreZero)
{
    Bare s(3);
    diagonal_network(s, 3, 1, 0);
    for (int c = 0; c < 3; c++) s.points[0].n0[c] = N_NONE;
    S(s, stddev)(1.0);
    for (int k = 0; k < 9; k++) EXPECT_EQ(s.points[0].ell[k / 3][k % 3], 0.0);
}

TEST(StandardDeviations, SurviveNegativeAndUndefinedVariancesInSpace)
{
    Bare s(3);
    diagonal_network(s, 3, 1, 0);
    q(s, 0, 0) = -1e-6;
    q(s, 1, 1) = NAN;
    S(s, stddev)(1.0);
    EXPECT_EQ(s.points[0].sxpt[0], 0.0);
    EXPECT_EQ(s.points[0].sxpt[1], 0.0);
    EXPECT_DOUBLE_EQ(s.points[0].sxpt[2], 0.003);
}

TEST(StandardDeviations, ShowTheBearingInTheUnitOfTheHost)
{
    Bare s(2);
    s.n.p.iangle = ANGLE_GON;
    diagonal_network(s, 2, 1, 0);
    S(s, stddev)(1.0);
    char line[100];
    snprintf(line, sizeof line, "               0.002000       0.001000%10.1f\n\n", s.n.p.htoraw(0, PI / 2.0));
    EXPECT_NE(s.report().find(line), std::string::npos);
}

// ---- stations ----

namespace {

// A station in space with coordinate unknowns 0 to 2 and six parameters of deviations
// 4 to 9 thousandths; the additive constant is fixed.
void station_network(Bare &s)
{
    s.n.p.irun = 1;
    diagonal_network(s, 3, 3, 1);
    for (int c = 0; c < 6; c++) s.points[0].n1[c] = c;
    s.points[0].n1[3] = N_NONE;
    for (int i = 1; i < 3; i++)
        for (int c = 0; c < 3; c++) s.points[i].n0[c] = N_NONE;
    S(s, nunk1) = 3;
    S(s, nunk2) = 6;
}

const char STATION_TEXT[] = "\nStandard error on stations parameters\n\n"
                            "S1             0.008000000    0.010000000    0.012000000\n"
                            "               0.000000       0.0160000      0.018000000\n\n";

} // namespace

TEST(StationErrors, ShowAndStoreSixParameters)
{
    Bare s(3);
    station_network(s);
    S(s, stddev)(2.0);
    const std::string text = s.report();
    EXPECT_EQ(text.substr(text.find("\nStandard error")), STATION_TEXT);
    const double wanted[6] = {0.008, 0.010, 0.012, 0.0, 0.016, 0.018};
    for (int c = 0; c < 6; c++) EXPECT_DOUBLE_EQ(s.points[0].sxex[c], wanted[c]) << c;
}

TEST(StationErrors, WithoutAVarianceAreZeroWhateverTheFactor)
{
    Bare s(3);
    station_network(s);
    q(s, 3, 3) = 0.0;
    q(s, 4, 4) = -1.0;
    q(s, 0, 0) = 0.0;
    S(s, stddev)(NAN);
    EXPECT_EQ(s.points[0].sxex[0], 0.0);
    EXPECT_EQ(s.points[0].sxex[1], 0.0);
    EXPECT_TRUE(isnan(s.points[0].sxex[2]));
    EXPECT_EQ(s.points[0].sxpt[0], 0.0);
    EXPECT_TRUE(isnan(s.points[0].sxpt[1]));
}

TEST(StationErrors, OfANegativeVarianceAreZero)
{
    Bare s(3);
    station_network(s);
    q(s, 3, 3) = -1.0;
    S(s, stddev)(1.0);
    EXPECT_EQ(s.points[0].sxex[0], 0.0);
}

TEST(StationErrors, AreLeftOutInErrorPropagationWithoutStationsAndBelowThreeDimensions)
{
    for (int way = 0; way < 3; way++) {
        Bare s(3);
        station_network(s);
        if (way == 0) S(s, irun) = -2;
        if (way == 1) S(s, nsta) = 0;
        if (way == 2) S(s, dim) = 2;
        S(s, stddev)(1.0);
        EXPECT_EQ(s.report().find("stations parameters"), std::string::npos) << way;
        EXPECT_EQ(s.points[0].sxex[0], 0.0) << way;
    }
}

// ---- lumps ----

namespace {

struct TwoEpochs {
    TwoEpochs()
    {
        l.id = 5;
        l.nepoch = 3;
        l.iref = 10;
        l.iunk = iunk;
        l.epoch = epoch;
        double **const to[7] = {&l.stx, &l.sty, &l.stz, &l.srx, &l.sry, &l.srz, &l.sscale};
        for (int k = 0; k < 7; k++) *to[k] = dev[k];
    }
    lump l = lump();
    int iunk[2] = {7, 0}, epoch[2] = {20, 30};
    double dev[7][2] = {};
};

const char LUMP_TEXT[] = "\nStandard error on lumps parameters\n"
                         "\nLump 5 : epoch 20 versus 10\n\n"
                         "translation        9.000000      10.000000      11.000000\n"
                         "rotation          12.000000      13.000000      14.000000\n"
                         "scale             15.000000\n"
                         "\nLump 5 : epoch 30 versus 10\n\n"
                         "translation        2.000000       0.000000       4.000000\n"
                         "rotation           5.000000       6.000000       7.000000\n"
                         "scale              8.000000\n";

// One coordinate unknown, then the seven parameters of the second epoch and of the first.
std::string lump_report(Bare &s, TwoEpochs &e)
{
    s.lumps.push_back(e.l);
    s.inv.assign(15 * 15, 0.0);
    for (int k = 0; k < 15; k++) s.inv[k * 15 + k] = (k + 1) * (k + 1);
    s.inv[2 * 15 + 2] = -1.0;
    s.wire(0);
    S(s, nunk1) = 1;
    S(s, nunk) = 15;
    S(s, irun) = -2;
    S(s, stddev)(1.0);
    const std::string text = s.report();
    return text.substr(text.find("\nStandard error"));
}

} // namespace

TEST(LumpErrors, ShowAndStoreSevenParametersOfEachEpochInErrorPropagationToo)
{
    Bare s(3);
    TwoEpochs e;
    EXPECT_EQ(lump_report(s, e), LUMP_TEXT);
    for (int k = 0; k < 7; k++) {
        EXPECT_EQ(e.dev[k][0], 9.0 + k);
        EXPECT_EQ(e.dev[k][1], k == 1 ? 0.0 : 2.0 + k);
    }
}

TEST(LumpErrors, ArePrintedForALumpThatKeepsNone)
{
    Bare s(3);
    TwoEpochs e;
    e.l.stx = e.l.sty = e.l.stz = e.l.srx = e.l.sry = e.l.srz = e.l.sscale = NULL;
    EXPECT_EQ(lump_report(s, e), LUMP_TEXT);
}

// ---- pairs ----

namespace {

void add_pair(Bare &s, const char *from, const char *to)
{
    pair_input p = pair_input();
    strcpy(p.from, from);
    strcpy(p.to, to);
    p.sdx[0] = p.ell12[0] = -7.0;
    s.n.pairs.push_back(p);
    s.n.ready();
}

std::string pair_report(Bare &s, double f)
{
    S(s, stddev)(f);
    const std::string text = s.report();
    return text.substr(text.find("\nRelative"));
}

const char A[] = "T1      ", B[] = "T2      ";

} // namespace

TEST(FindPoint, ComparesExactlyAndStopsAtTheFirstMatch)
{
    Bare s(3);
    diagonal_network(s, 3, 3, 0);
    s.points[2].name[1] = '2'; // a second T2
    s.points[1].n0[1] = N_NONE;
    EXPECT_EQ(S(s, findpoint)("T1      "), 0);
    EXPECT_EQ(S(s, findpoint)("T1"), -1);
    EXPECT_EQ(S(s, findpoint)("T2      "), -2);
    s.points[1].n0[1] = 4;
    s.points[1].n0[0] = N_NONE;
    EXPECT_EQ(S(s, findpoint)("T2      "), -2);
    s.points[1].n0[0] = 3;
    s.points[1].n0[2] = N_NONE; // the third coordinate plays no part
    EXPECT_EQ(S(s, findpoint)("T2      "), 1);
}

TEST(RelativeEllipses, ComeFromTheCovarianceOfTheDifferences)
{
    Bare s(3);
    diagonal_network(s, 3, 2, 0);
    // Any symmetric matrix: the entries of a Gram matrix, thousandths of a millimetre squared.
    for (int i = 0; i < 6; i++)
        for (int j = 0; j < 6; j++) q(s, i, j) = 0.0;
    for (int i = 0; i < 6; i++)
        for (int j = 0; j < 6; j++)
            for (int k = 0; k < 6; k++) q(s, i, j) += 1e-6 * sin(1.0 + i * i + 3.0 * k) * sin(1.0 + j * j + 3.0 * k);
    add_pair(s, A, B);
    S(s, stddev)(2.0);
    // D Q D' with D = (I, -I).
    double d[3][3];
    for (int c = 0; c < 3; c++)
        for (int e = 0; e < 3; e++) d[c][e] = q(s, c, e) - q(s, c, 3 + e) - q(s, 3 + c, e) + q(s, 3 + c, 3 + e);
    const pair_input &p = s.n.p.pairs[0];
    const Ellipse planes[3] = {ellipse_of(d[0][0], d[1][1], d[0][1]), ellipse_of(d[0][0], d[2][2], d[0][2]),
                               ellipse_of(d[1][1], d[2][2], d[1][2])};
    const double *ell[3] = {p.ell12, p.ell13, p.ell23};
    for (int k = 0; k < 3; k++) {
        EXPECT_NEAR(p.sdx[k], 2.0 * sqrt(d[k][k]), 1e-12);
        EXPECT_NEAR(ell[k][0], 2.0 * planes[k].a, 1e-12);
        EXPECT_NEAR(ell[k][1], 2.0 * planes[k].b, 1e-12);
        EXPECT_NEAR(ell[k][2], planes[k].t, 1e-9);
    }
}

TEST(RelativeEllipses, AreShownBehindTheNamesOfThePair)
{
    Bare s(3);
    diagonal_network(s, 3, 2, 0);
    for (int k = 0; k < 6; k++) q(s, k, k) = 1e-6 * (k % 3 == 0 ? 8.0 : k % 3 == 1 ? 2.0 : 4.5); // 4, 2, 3 mm
    add_pair(s, A, B);
    EXPECT_EQ(pair_report(s, 1.5), "\nRelative Standard ellipse (sigma a posteriori    1.500)\n"
                                   "\nT1       T2             0.006000       0.003000       0.004500\n"
                                   "                        0.006000       0.003000       3.1\n");
}

TEST(RelativeEllipses, NameAPointThatIsUnknownOrNotEstimatedAndGoOn)
{
    Bare s(3);
    diagonal_network(s, 3, 3, 0);
    s.points[2].n0[0] = N_NONE;
    add_pair(s, "X       ", A);
    add_pair(s, A, "T3      ");
    add_pair(s, "T3      ", "X       ");
    add_pair(s, A, B);
    EXPECT_EQ(pair_report(s, 1.0), "\nRelative Standard ellipse (sigma a posteriori    1.000)\n"
                                   "\nX        T1      pb with X       \n"
                                   "\nT1       T3      pb with T3      \n"
                                   "\nT3       X       pb with T3      \n"
                                   "\nT1       T2             0.004123       0.005385       0.006708\n"
                                   "                        0.005385       0.004123       1.6\n");
    EXPECT_EQ(s.n.p.pairs[0].sdx[0], -7.0);
}

// The record is the last thing in its memory, and no byte of it is zero.
TEST(RelativeEllipses, ReadNoFurtherThanANameWithoutItsZero)
{
    Bare s(3);
    diagonal_network(s, 3, 2, 0);
    s.n.ready();
    std::vector<pair_input> one(1);
    memset((void *)one.data(), 'x', sizeof one[0]);
    memcpy(one[0].from, A, 8);
    s.n.p.pairs = one.data();
    s.n.p.npairs = 1;
    EXPECT_EQ(pair_report(s, 1.0), "\nRelative Standard ellipse (sigma a posteriori    1.000)\n"
                                   "\nT1      x xxxxxxxxxpb with T1      x\n");
}

TEST(RelativeEllipses, LeaveTheLineOpenForAPairWithAFixedThirdCoordinate)
{
    Bare s(3);
    diagonal_network(s, 3, 3, 0);
    s.points[1].n0[2] = N_NONE;
    add_pair(s, A, B);
    add_pair(s, B, A);
    EXPECT_EQ(pair_report(s, 1.0), "\nRelative Standard ellipse (sigma a posteriori    1.000)\n"
                                   "\nT1       T2      \nT2       T1      ");
    EXPECT_EQ(s.n.p.pairs[0].sdx[0], -7.0);
    EXPECT_EQ(s.n.p.pairs[0].ell12[0], -7.0);
}

TEST(RelativeEllipses, KeepASmallFirstVarianceAndDropTheSecondDeviationWithIt)
{
    Bare s(3);
    diagonal_network(s, 3, 2, 0);
    q(s, 0, 0) = 1e-11;
    q(s, 3, 3) = 0.0;
    add_pair(s, A, B);
    S(s, stddev)(2.0);
    const pair_input &p = s.n.p.pairs[0];
    EXPECT_DOUBLE_EQ(p.sdx[0], 1e-11);
    EXPECT_EQ(p.sdx[1], 0.0);
    EXPECT_DOUBLE_EQ(p.sdx[2], 2.0 * sqrt(9e-6 + 36e-6));
}

TEST(RelativeEllipses, DropSmallSecondAndThirdDeviations)
{
    Bare s(3);
    diagonal_network(s, 3, 2, 0);
    q(s, 1, 1) = q(s, 2, 2) = 1e-10;
    q(s, 4, 4) = q(s, 5, 5) = 0.0;
    add_pair(s, A, B);
    S(s, stddev)(1.0);
    EXPECT_DOUBLE_EQ(s.n.p.pairs[0].sdx[0], sqrt(17e-6));
    EXPECT_EQ(s.n.p.pairs[0].sdx[1], 0.0);
    EXPECT_EQ(s.n.p.pairs[0].sdx[2], 0.0);
}

TEST(RelativeEllipses, AreZeroInAPlaneWithAVarianceThatIsNotPositive)
{
    Bare s(3);
    diagonal_network(s, 3, 2, 0);
    q(s, 0, 0) = -1.0;
    add_pair(s, A, B);
    S(s, stddev)(1.0);
    const pair_input &p = s.n.p.pairs[0];
    for (int k = 0; k < 3; k++) {
        EXPECT_EQ(p.ell12[k], 0.0);
        EXPECT_EQ(p.ell13[k], 0.0);
    }
    EXPECT_NEAR(p.ell23[0], sqrt(45e-6), 1e-12);
    EXPECT_LT(p.sdx[0], -0.9); // stays the variance
}

TEST(RelativeEllipses, ComeInErrorPropagationToo)
{
    Bare s(3);
    diagonal_network(s, 3, 2, 0);
    add_pair(s, A, B);
    S(s, irun) = -2;
    EXPECT_NE(pair_report(s, 1.0).find("\nT1       T2             0.004123"), std::string::npos);
}

TEST(RelativeEllipses, HaveNoHeadingWithoutPairs)
{
    Bare s(3);
    diagonal_network(s, 3, 2, 0);
    S(s, stddev)(1.0);
    EXPECT_EQ(s.report().find("Relative"), std::string::npos);
}
