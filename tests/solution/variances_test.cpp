#include <gtest/gtest.h>
#include <math.h>
#include <stdio.h>
#include <unistd.h>

#include "support/bare.h"
#include "support/faults.h"
#include "support/workfolder.h"

namespace {

const double PI = 3.14159265358979323846;

// Class limits at -5, -4, ... 4.
void limits(Bare &s)
{
    s.take_histograms();
    S(s, filllimits)();
}

int class_of(double r)
{
    Bare s(1);
    s.wire(0);
    limits(s);
    return S(s, classcode)(r);
}

} // namespace

// ---- classes ----

TEST(ClassLimits, StartAtTheNegativeRangeAndStepByTheClassWidth)
{
    Bare s(1);
    s.wire(0);
    s.take_histograms(4);
    S(s, hrange) = 6.0;
    S(s, filllimits)();
    const double wanted[4] = {-6.0, -3.0, 0.0, 3.0};
    for (int i = 0; i < 4; i++) EXPECT_EQ(S(s, hlim)[i], wanted[i]);
}

TEST(ClassCode, IsTheClassAboveItsLowerLimitUpToItsUpperLimit)
{
    EXPECT_EQ(class_of(-4.999), 0);
    EXPECT_EQ(class_of(-4.0), 0);
    EXPECT_EQ(class_of(-3.999), 1);
    EXPECT_EQ(class_of(0.0), 4);
    EXPECT_EQ(class_of(0.001), 5);
    EXPECT_EQ(class_of(4.0), 8);
    EXPECT_EQ(class_of(4.001), 9);
}

TEST(ClassCode, TellsWhatLiesBeyondTheRange)
{
    EXPECT_EQ(class_of(-5.0), -9999);
    EXPECT_EQ(class_of(-77.0), -9999);
    EXPECT_EQ(class_of(5.0), 9);
    EXPECT_EQ(class_of(5.001), 9999);
    EXPECT_EQ(class_of(INFINITY), 9999);
    EXPECT_EQ(class_of(NAN), -9999);
}

// ---- variances ----

namespace {

// Four distances and two unknowns: two degrees of freedom, so that the tail of the
// factor x = sum / sigma0^2 is exp(-x / 2).
struct Tested {
    explicit Tested(double x, double sigma0 = 1.0) : s(1)
    {
        s.wire(0);
        S(s, ndist) = 4;
        S(s, nunk1) = S(s, nunk2) = 1;
        S(s, sigma0) = sigma0;
        sigma = S(s, variances)(x * sigma0 * sigma0, 2.0, 0.25, 0, 0, 0, 0, 0, 0);
        text = s.report();
    }
    Bare s;
    double sigma;
    std::string text;
};

std::string verdicts(const char *one, const char *two)
{
    return std::string("\n\n") + one + " the one-tailed test on the estimated variance factor\n" + two +
           " the two-tailed test on the estimated variance factor\n";
}

} // namespace

TEST(Variances, PrintTheFactorAndTheComponentOfEveryKind)
{
    Bare s(3);
    s.wire(0);
    S(s, ndist) = S(s, ndifh) = S(s, ndir1) = S(s, ndir2) = S(s, naz) = S(s, ngps) = S(s, nobsuv) = 1;
    S(s, nfixh) = 2;
    S(s, nweighted) = 50; // counts on the other road only
    S(s, nunk1) = 9;
    S(s, nunk2) = 4;
    S(s, ndatum) = 3; // nu = 5 + 3 + 2 + 2 - (9 + 4 - 3)
    S(s, sigma0) = 2.0;
    S(s, sdist) = 0.001;
    S(s, sdifh) = 0.002;
    S(s, sdir1) = 0.003;
    S(s, sdir2) = 0.004;
    S(s, saz) = 0.005;
    S(s, sgps) = 0.006;
    S(s, suv) = 0.007;
    EXPECT_EQ(S(s, variances)(8.0, 2.0, 0.0001, 0.0004, 0.0009, 0.0016, 0.0025, 0.0036, 0.0049), 2.0);
    EXPECT_EQ(s.report(), verdicts("Pass", "Pass") + "degree of freedom =      2\n"
                                                     "variance          =      4.000000\n"
                                                     "sig a priori      =      2.000000\n"
                                                     "sig a posteriori  =      2.000000\n"
                                                     "\nvariance component for distances         0.000100\n"
                                                     "sigma a priori                           0.001000\n"
                                                     "sigma a posteriori for distances         0.010000\n"
                                                     "\nvariance component for height dif        0.000400\n"
                                                     "sigma a priori                           0.002000\n"
                                                     "sigma a posteriori for height dif        0.020000\n"
                                                     "\nvariance component for horizontal        0.000900\n"
                                                     "sigma a priori                           0.003000\n"
                                                     "sigma a posteriori for horizontal        0.030000\n"
                                                     "\nvariance component for vertical          0.001600\n"
                                                     "sigma a priori                           0.004000\n"
                                                     "sigma a posteriori for vertical          0.040000\n"
                                                     "\nvariance component for azimuth           0.002500\n"
                                                     "sigma a priori                           0.005000\n"
                                                     "sigma a posteriori for azimuth           0.050000\n"
                                                     "\nvariance component for gps baseline          0.003600\n"
                                                     "sigma a priori                               0.006000\n"
                                                     "sigma a posteriori for gps baseline          0.060000\n"
                                                     "\nvariance component for photo             0.004900\n"
                                                     "sigma a priori                           0.007000\n"
                                                     "sigma a posteriori for photo             0.070000\n");
    const tempresult &t = s.result;
    EXPECT_EQ(t.dof, 2);
    EXPECT_EQ(t.sigpost, 2.0);
    EXPECT_EQ(t.itest, 1);
    const double wanted[6] = {0.01, 0.02, 0.03, 0.04, 0.05, 0.07}; // baselines are not kept
    const kindresult *blocks[6] = {&t.dist, &t.difh, &t.dir1, &t.dir2, &t.az, &t.photo};
    for (int k = 0; k < 6; k++) EXPECT_NEAR(blocks[k]->sp, wanted[k], 1e-15) << k;
}

TEST(Variances, LeaveOutTheKindsWithoutObservations)
{
    Tested t(2.0);
    EXPECT_EQ(t.text, verdicts("Pass", "Pass") + "degree of freedom =      2\n"
                                                 "variance          =      1.000000\n"
                                                 "sig a priori      =      1.000000\n"
                                                 "sig a posteriori  =      1.000000\n"
                                                 "\nvariance component for distances         0.250000\n"
                                                 "sigma a priori                           0.900000\n"
                                                 "sigma a posteriori for distances         0.500000\n");
}

TEST(Variances, AskTheTailToExceedTheLevel)
{
    // Tail 0.05 at 5.991, 0.025 at 7.378, 0.975 at 0.0506.
    EXPECT_EQ(Tested(5.95).text.find(verdicts("Pass", "Pass")), 0u);
    EXPECT_EQ(Tested(6.05).text.find(verdicts("Fail", "Pass")), 0u);
    EXPECT_EQ(Tested(7.3).text.find(verdicts("Fail", "Pass")), 0u);
    EXPECT_EQ(Tested(7.5).text.find(verdicts("Fail", "Fail")), 0u);
    EXPECT_EQ(Tested(0.049).text.find(verdicts("Pass", "Fail")), 0u);
    EXPECT_EQ(Tested(0.052).text.find(verdicts("Pass", "Pass")), 0u);
    EXPECT_EQ(Tested(5.95).s.result.itest, 1);
    EXPECT_EQ(Tested(6.05).s.result.itest, -1);
}

TEST(Variances, TestTheSumRelativeToTheAprioriVariance)
{
    EXPECT_EQ(Tested(6.05, 0.01).text.find(verdicts("Fail", "Pass")), 0u);
    EXPECT_NEAR(Tested(8.0, 0.01).sigma, 0.02, 1e-15);
}

TEST(Variances, FailATailThatEqualsTheLevel)
{
    // The tail of a zero sum is exactly 1; so are the level with a confidence of 0 and half
    // the level with one of -100.
    for (double confidence : {0.0, -100.0}) {
        Bare s(1);
        s.wire(0);
        S(s, ndist) = 2;
        S(s, confidence) = confidence;
        S(s, variances)(0.0, 2.0, 0, 0, 0, 0, 0, 0, 0);
        EXPECT_EQ(s.report().find(verdicts("Fail", "Fail")), 0u);
    }
}

TEST(Variances, GiveUpWithoutADegreeOfFreedom)
{
    Bare s(1);
    s.wire(0);
    S(s, ndist) = S(s, nunk1) = 2;
    S(s, nweighted) = 5;
    EXPECT_EQ(S(s, variances)(1.0, 0.0, 1, 0, 0, 0, 0, 0, 0), -1.0);
    EXPECT_EQ(s.report(), "\n\nvariances: no degree of freedom -> no use of statistics\n");
    EXPECT_EQ(s.result.dof, 0);
    EXPECT_EQ(s.result.itest, 0);
    EXPECT_EQ(s.result.sigpost, 0.0);
}

namespace {

std::string with_redundancy(double dofc, int idebug)
{
    Bare s(1);
    s.wire(0);
    S(s, ndist) = 2;
    S(s, idebug) = idebug;
    S(s, variances)(1.0, dofc, 1, 0, 0, 0, 0, 0, 0);
    return s.report().substr(0, s.report().find("\n\nPass"));
}

} // namespace

TEST(Variances, TellARedundancySumThatDiffersByMoreThanOneWhenTracing)
{
    EXPECT_EQ(with_redundancy(3.25, 2), "\nvariances: dofc =     3.2\n             nu = 2\n");
    EXPECT_EQ(with_redundancy(0.75, 2), "\nvariances: dofc =     0.8\n             nu = 2\n");
    EXPECT_EQ(with_redundancy(3.0, 2), "");
    EXPECT_EQ(with_redundancy(3.25, 1), "");
}

TEST(Variances, NeedNoRecordForTheHost)
{
    Bare s(1);
    s.wire(0);
    S(s, ndist) = 2;
    S(s, temp_res) = NULL;
    EXPECT_EQ(S(s, variances)(8.0, 2.0, 1, 0, 0, 0, 0, 0, 0), 2.0);
}

TEST(Variances, AreDefinedWithAnAprioriSigmaOfZero)
{
    Bare s(1);
    s.wire(0);
    S(s, ndist) = 2;
    S(s, sigma0) = 0.0;
    EXPECT_EQ(S(s, variances)(8.0, 2.0, 1, 0, 0, 0, 0, 0, 0), 2.0);
    EXPECT_EQ(s.result.itest, -1);
}

// ---- plain residuals ----

namespace {

// Stations at the origin and 5 m up, targets around; wired in three dimensions.
void space_network(Bare &s)
{
    s.add("S1", 0, 0, 0);
    s.add("S2", 1, 2, 5);
    s.add("T1", 3, 4, 12);
    s.add("T2", -3, 1, 2);
}

void ready(Bare &s)
{
    s.wire(2);
    S(s, dim) = 3;
    limits(s);
}

double length(const point &p, const point &q)
{
    return sqrt(pow(q.xpt[0] - p.xpt[0], 2) + pow(q.xpt[1] - p.xpt[1], 2) + pow(q.xpt[2] - p.xpt[2], 2));
}

double bearing(const point &p, const point &q) { return atan2(q.xpt[1] - p.xpt[1], q.xpt[0] - p.xpt[0]); }

} // namespace

TEST(PlainResiduals, OfDistancesAreObservedMinusComputed)
{
    Bare s(3);
    space_network(s);
    s.observe(s.dist, 0, 2, 13.02, 0.01);
    s.observe(s.dist, 1, 3, 5.0, 0.1);
    ready(s);
    S(s, sdist) = 0.03;
    const double v1 = 5.0 - length(s.points[1], s.points[3]);
    EXPECT_NEAR(S(s, justres)(0), pow(3.0 * 0.02, 2) + pow(0.3 * v1, 2), 1e-12);
    EXPECT_NEAR(s.dist[0].res[0], 0.02, 1e-13);
    EXPECT_NEAR(s.dist[1].res[0], v1, 1e-13);
    EXPECT_EQ(s.dist[0].iflag, 6); // two of its own deviations, whatever the list's
    EXPECT_EQ(s.dist[1].iflag, v1 < -0.5 ? -9999 : 4);
}

TEST(PlainResiduals, OfADistanceWithConstantsTakeThemFromItsStation)
{
    Bare s(3);
    space_network(s);
    s.points[0].xex[3] = 0.25;
    s.points[0].xex[4] = 1.5;
    s.observe(s.dist, 0, 2, 20.0, 1.0).typ = 1;
    s.observe(s.dist, 0, 2, 20.0, 1.0);
    ready(s);
    S(s, justres)(0);
    EXPECT_NEAR(s.dist[0].res[0], 20.0 - (13.0 * 1.5 + 0.25), 1e-13);
    EXPECT_NEAR(s.dist[1].res[0], 7.0, 1e-13);
}

TEST(PlainResiduals, OfReducedDistancesAddTheReduction)
{
    Bare s(3);
    space_network(s);
    measure &m = s.observe(s.dist, 0, 2, 13.0, 1.0);
    m.h1 = 1.5;
    m.h2 = 1.7;
    ready(s);
    S(s, radius) = 6371000.0;
    S(s, iredux) = 1;
    S(s, justres)(0);
    EXPECT_NEAR(s.dist[0].res[0], S(s, distred)(0), 1e-12);
}

TEST(PlainResiduals, OfHeightDifferencesAddTheHeightOfTheTarget)
{
    Bare s(1);
    space_network(s);
    measure &m = s.observe(s.difh, 0, 1, 5.0, 0.5);
    m.h1 = 0.25;
    m.h2 = 0.75;
    s.points[1].h = 100.0; // plays no part below three dimensions
    s.wire(2);
    limits(s);
    S(s, sdifh) = 1.0;
    EXPECT_DOUBLE_EQ(S(s, justres)(1), 1.0);
    EXPECT_DOUBLE_EQ(s.difh[0].res[0], 0.5);
    EXPECT_EQ(s.difh[0].iflag, 5);
}

TEST(PlainResiduals, OfHeightDifferencesInSpaceAllowForTheSphere)
{
    Bare s(3);
    space_network(s);
    s.observe(s.difh, 0, 1, 5.5, 1.0);
    s.points[0].h = 10.0;
    s.points[1].h = 15.25; // the sphere adds a quarter to the difference of 5
    ready(s);
    S(s, justres)(1);
    EXPECT_DOUBLE_EQ(s.difh[0].res[0], 0.25);
}

TEST(PlainResiduals, OfDirectionsFollowTheOrientationOfEachStation)
{
    Bare s(3);
    space_network(s);
    s.points[0].xex[2] = 0.3;
    s.points[1].xex[2] = -0.7;
    const int ends[4][2] = {{0, 2}, {0, 3}, {1, 2}, {0, 2}};
    double sum = 0.0;
    for (const int *e : ends) s.observe(s.dir1, e[0], e[1], 1.0, 0.5);
    ready(s);
    S(s, sdir1) = 2.0;
    const double got = S(s, justres)(2);
    for (int i = 0; i < 4; i++) {
        const point &p = s.points[ends[i][0]], &q = s.points[ends[i][1]];
        double v = 1.0 - (bearing(p, q) + p.xex[2]);
        if (v < -PI) v += 2.0 * PI;
        if (v > PI) v -= 2.0 * PI;
        EXPECT_NEAR(s.dir1[i].res[0], v, 1e-13) << i;
        sum += 16.0 * v * v;
    }
    EXPECT_NEAR(got, sum, 1e-11);
}

TEST(PlainResiduals, OfDirectionsComeBackByOneTurn)
{
    Bare s(3);
    s.add("S", 0, 0, 0);
    s.add("T", 1, 0, 0);
    for (double val : {6.0, -6.0, 3.0, 10.0}) s.observe(s.dir1, 0, 1, val, 1.0);
    ready(s);
    S(s, justres)(2);
    const double wanted[4] = {6.0 - 2.0 * PI, 2.0 * PI - 6.0, 3.0, 10.0 - 2.0 * PI};
    for (int i = 0; i < 4; i++) EXPECT_NEAR(s.dir1[i].res[0], wanted[i], 1e-14) << i;
}

TEST(PlainResiduals, OfVerticalAnglesAreElevationsWithoutATurnTakenOff)
{
    Bare s(3);
    space_network(s);
    s.observe(s.dir2, 0, 2, 1.0, 0.5);
    s.observe(s.dir2, 1, 3, 6.0, 0.5);
    ready(s);
    S(s, sdir2) = 0.5;
    const double v0 = 1.0 - asin(12.0 / 13.0), v1 = 6.0 - asin(-3.0 / length(s.points[1], s.points[3]));
    EXPECT_NEAR(S(s, justres)(3), v0 * v0 + v1 * v1, 1e-12);
    EXPECT_NEAR(s.dir2[0].res[0], v0, 1e-14);
    EXPECT_NEAR(s.dir2[1].res[0], v1, 1e-14);
}

TEST(PlainResiduals, OfAnglesAreReducedAtALevelledInstrumentOnly)
{
    for (int typ = 0; typ < 2; typ++) {
        Bare s(3);
        space_network(s);
        s.points[0].typ = typ;
        for (std::vector<measure> *list : {&s.dir1, &s.dir2}) {
            measure &m = s.observe(*list, 0, 2, 1.0, 1.0);
            m.h1 = 1.5;
            m.h2 = 0.3;
        }
        ready(s);
        S(s, radius) = 10000.0;
        S(s, justres)(2);
        S(s, justres)(3);
        const double e1 = typ ? S(s, dir1red)(0) : 0.0, e2 = typ ? S(s, dir2red)(0) : 0.0;
        EXPECT_NEAR(s.dir1[0].res[0], 1.0 + e1 - atan2(4.0, 3.0), 1e-14);
        EXPECT_NEAR(s.dir2[0].res[0], 1.0 + e2 - asin(12.0 / 13.0), 1e-14);
    }
}

TEST(PlainResiduals, OfAzimuthsStayBeyondHalfATurn)
{
    Bare s(3);
    s.add("S", 0, 0, 0);
    s.add("T", 1, -1, 0);
    s.observe(s.az, 0, 1, 6.0, 0.5);
    ready(s);
    S(s, radius) = 6371000.0;
    S(s, saz) = 0.25;
    EXPECT_NEAR(S(s, justres)(5), pow(0.5 * (6.0 + PI / 4.0), 2), 1e-12);
    EXPECT_NEAR(s.az[0].res[0], 6.0 + PI / 4.0, 1e-14);
    EXPECT_EQ(s.az[0].iflag, 9999);
}

TEST(PlainResiduals, OfADeviationUpToTheLimitAreCappedInWeightAndClassedAsZero)
{
    for (double sigma : {1e-7, 0.0, -1.0}) {
        Bare s(1);
        space_network(s);
        s.observe(s.difh, 0, 1, 7.0, sigma);
        s.wire(2);
        limits(s);
        EXPECT_DOUBLE_EQ(S(s, justres)(1), 4.0e16);
        EXPECT_EQ(s.difh[0].iflag, 4);
    }
}

TEST(PlainResiduals, OfAnUnknownKindAreNone)
{
    Bare s(1);
    s.wire(0);
    EXPECT_EQ(S(s, justres)(6), 0.0);
    EXPECT_EQ(S(s, justres)(-1), 0.0);
}

namespace {

// One station above three targets, two of them in the image and the middle one in its
// plane; a camera with a focal length of 10 and pixels of 0.5, and a longer one.
void image_network(Bare &s, double sigma)
{
    s.add("S1", 0, 0, 0);
    s.add("T1", 1, 2, -10);
    s.add("T2", 1, 2, 0);
    s.add("T3", -3, 1, -20);
    s.camerawith("C0", 10.0, 0.5);
    s.camerawith("C1", 99.0, 0.5);
    for (int i = 0; i < 3; i++) {
        s.observe(s.u, 0, i + 1, 0.0, sigma).typ = i == 2 ? 1 : 0; // read when the station changes only
        s.observe(s.v, 0, i + 1, 0.0, sigma);
    }
}

// -x / pixel with x = -10 dx / dz.
const double U[3] = {-2.0, -2.0, 3.0}, V[3] = {-4.0, -4.0, -1.0};

} // namespace

TEST(PlainResiduals, OfAPointOutsideTheImageKeepTheComputedCoordinatesOfTheOneBefore)
{
    Bare s(3);
    image_network(s, 2.0);
    ready(s);
    S(s, suv) = 1.0;
    double sum = 0.0;
    for (int i = 0; i < 3; i++) sum += 0.25 * (U[i] * U[i] + V[i] * V[i]);
    EXPECT_NEAR(S(s, justres)(4), sum, 1e-12);
    for (int i = 0; i < 3; i++) {
        EXPECT_NEAR(s.u[i].res[0], -U[i], 1e-13) << i;
        EXPECT_NEAR(s.v[i].res[0], -V[i], 1e-13) << i;
    }
    EXPECT_EQ(s.u[0].iflag, 5); // 1.0
    EXPECT_EQ(s.v[0].iflag, 6); // 2.0
}

TEST(PlainResiduals, OfTheSecondImageCoordinateAreClassedBySmallDeviationsToo)
{
    for (double sigma : {1e-8, 0.0}) {
        Bare s(3);
        image_network(s, sigma);
        ready(s);
        EXPECT_NEAR(S(s, justres)(4) * 1e-16, 4 + 4 + 9 + 16 + 16 + 1, 1e-10);
        EXPECT_EQ(s.u[0].iflag, 4);
        EXPECT_EQ(s.v[0].iflag, sigma > 0.0 ? 9999 : 4);
    }
}

TEST(BaselineResiduals, AddTheirQuadraticFormAndAreClassedAsTheyStand)
{
    Bare s(3);
    space_network(s);
    gpsbase &g = s.baseline(0, 1, 1.5, 1.0, 11.0); // residuals 0.5, -1, 6
    const double w[6] = {2, 0.5, 3, -0.25, 0.75, 4};
    memcpy(g.w, w, sizeof w);
    ready(s);
    double sum = 100.0;
    S(s, gpsres)(&sum);
    const double r[3] = {0.5, -1.0, 6.0}, full[3][3] = {{2, 0.5, -0.25}, {0.5, 3, 0.75}, {-0.25, 0.75, 4}};
    double wanted = 100.0;
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++) wanted += r[i] * full[i][j] * r[j];
    EXPECT_NEAR(sum, wanted, 1e-12);
    for (int k = 0; k < 3; k++) EXPECT_DOUBLE_EQ(s.gps[0].res[k], r[k]);
    EXPECT_EQ(s.gps[0].iflag[0], 5);
    EXPECT_EQ(s.gps[0].iflag[1], 3);
    EXPECT_EQ(s.gps[0].iflag[2], 9999);
}

// ---- justout ----

namespace {

// Levelled heights of a difference of 5 with a deviation of 0.1 and residuals r.
void levelling(Bare &s, const std::vector<double> &r, int unknowns)
{
    space_network(s);
    for (double v : r) s.observe(s.difh, 0, 1, 5.0 + v, 0.1);
    s.wire(2);
    S(s, sdifh) = S(s, sigma0) = 0.1;
    S(s, nunk1) = unknowns;
}

} // namespace

TEST(JustOut, PrintsTheSimpleAnalysisAndTheTables)
{
    Bare s(1);
    levelling(s, {0.125, -0.125, 0.0}, 1);
    S(s, sigma0) = 0.25;
    EXPECT_EQ(S(s, justout)(), 0);
    // sum 0.03125, two degrees of freedom: tail exp(-0.0156) = 0.98
    EXPECT_EQ(s.report(), "\n\nSimple residuals analysis\n\n"
                          "degree of freedom =      2\n"
                          "Pass the one-tailed test on the estimated variance factor\n"
                          "variance          =      0.250000\n"
                          "sig a priori      =      0.250000\n"
                          "sig a posteriori  =      0.500000\n"
                          "\n\nheight difference residuals\n"
                          "S1       S2              5.125000        0.125000          \n"
                          "S1       S2              4.875000       -0.125000          \n"
                          "S1       S2              5.000000        0.000000          \n");
    EXPECT_EQ(s.result.dof, 2);
    EXPECT_EQ(s.result.itest, 1);
    EXPECT_DOUBLE_EQ(s.result.sigpost, 0.5);
    EXPECT_EQ(s.finished, 0);
}

TEST(JustOut, MarksTheResidualsByTheirOwnDeviations)
{
    Bare s(1);
    levelling(s, {0.25, -0.35, 0.45, 0.75, -0.75}, 1);
    S(s, justout)();
    const std::string text = s.report();
    EXPECT_EQ(text.substr(text.find("\n\nheight")), "\n\nheight difference residuals\n"
                                                    "S1       S2              5.250000        0.250000         q\n"
                                                    "S1       S2              4.650000       -0.350000         q\n"
                                                    "S1       S2              5.450000        0.450000         Q\n"
                                                    "S1       S2              5.750000        0.750000         *\n"
                                                    "S1       S2              4.250000       -0.750000         *\n");
}

TEST(JustOut, AsksTheTailOfTheRawSumToReachTheConfidenceLevel)
{
    // Two degrees of freedom: 0.95 at a sum of 0.1026, whatever sigma0.
    for (double r : {0.32, 0.321}) {
        Bare s(1);
        levelling(s, {r, 0.0, 0.0}, 1);
        S(s, sigma0) = 50.0;
        S(s, justout)();
        const bool passes = r * r < 0.1026;
        EXPECT_EQ(s.result.itest, passes ? 1 : -1) << r;
        EXPECT_NE(s.report().find(std::string("degree of freedom =      2\n") + (passes ? "Pass" : "Fail") +
                                  " the one-tailed test on the estimated variance factor\nvariance"),
                  std::string::npos);
    }
}

TEST(JustOut, ShowsTheSigmasOnlyWithoutADegreeOfFreedom)
{
    for (int unknowns : {3, 5}) {
        Bare s(1);
        levelling(s, {0.25, 0.0, 0.0}, unknowns);
        EXPECT_EQ(S(s, justout)(), 0);
        EXPECT_EQ(s.report().find("\n\nSimple residuals analysis\n\n"
                                  "sig a priori      =      0.100000\n"
                                  "sig a posteriori  =      0.000000\n"
                                  "\n\nheight difference residuals\n"),
                  0u);
        EXPECT_EQ(s.result.dof, 3 - unknowns);
        EXPECT_EQ(s.result.sigpost, 0.0);
        EXPECT_EQ(s.result.itest, 0);
    }
}

TEST(JustOut, CountsEveryObservationTheWeightedCoordinatesAndTheDatum)
{
    Bare s(3);
    space_network(s);
    s.observe(s.dist, 0, 2, 13.0, 1.0);
    s.observe(s.difh, 0, 1, 5.0, 1.0);
    s.observe(s.dir1, 0, 2, atan2(4.0, 3.0), 1.0);
    s.observe(s.dir2, 0, 2, asin(12.0 / 13.0), 1.0);
    s.observe(s.az, 0, 2, atan2(4.0, 3.0), 1.0);
    s.baseline(0, 1, 1.0, 2.0, 5.0);
    ready(s);
    S(s, radius) = 6371000.0;
    S(s, nfixh) = 2;
    S(s, nweighted) = 4;
    S(s, nunk1) = 9;
    S(s, nunk2) = 3;
    S(s, ndatum) = 5;
    S(s, points)[1].h = 5.0;
    S(s, justout)();
    EXPECT_EQ(s.result.dof, 5 + 3 + 2 + 4 - (9 + 3 - 5));
    EXPECT_NEAR(s.result.sigpost, 0.0, 1e-12); // every observation fits
}

TEST(JustOut, CountsAnImageTwice)
{
    const WorkFolder folder; // takes "rejects"
    Bare s(3);
    image_network(s, 1.0);
    ready(s);
    S(s, justout)();
    EXPECT_EQ(s.result.dof, 6);
}

TEST(JustOut, AddsTheBaselines)
{
    Bare s(3);
    space_network(s);
    s.baseline(0, 1, 2.0, 2.0, 5.0); // one metre off in the first component
    ready(s);
    S(s, justout)();
    EXPECT_EQ(s.result.dof, 3);
    EXPECT_DOUBLE_EQ(s.result.sigpost, sqrt(1.0 / 3.0));
}

TEST(JustOut, IsDefinedWithAnAprioriSigmaOfZero)
{
    Bare s(1);
    levelling(s, {0.25, 0.0, 0.0}, 1);
    S(s, sigma0) = 0.0;
    EXPECT_EQ(S(s, justout)(), 0);
}

TEST(JustOut, NeedsNoRecordForTheHost)
{
    Bare s(1);
    levelling(s, {0.25, 0.0, 0.0}, 1);
    S(s, temp_res) = NULL;
    EXPECT_EQ(S(s, justout)(), 0);
    EXPECT_NE(s.report().find("sig a posteriori"), std::string::npos);
}

TEST(JustOut, ReleasesTheSolverAndReturnsItsCodeWithoutMemory)
{
    Bare s(1);
    levelling(s, {0.25}, 0);
    fail_allocation(1);
    const int code = S(s, justout)();
    fail_allocation(0);
    EXPECT_EQ(code, -6);
    EXPECT_EQ(s.finished, 1);
    EXPECT_EQ(s.report(), "");
    EXPECT_EQ(S(s, hlim), nullptr);
}

TEST(JustOut, TakesTheClassLimitsAnewWithoutLosingOldOnes)
{
    Bare s(1);
    levelling(s, {0.25, 0.0}, 1);
    EXPECT_EQ(S(s, justout)(), 0);
    EXPECT_EQ(S(s, justout)(), 0); // a leak would fail under the address sanitizer
    EXPECT_EQ(S(s, hlim)[9], 4.0);
}
