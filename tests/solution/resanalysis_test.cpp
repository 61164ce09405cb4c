#include <gtest/gtest.h>
#include <math.h>

#include "support/bare.h"

namespace {

// Normal tail of the C library.
double tail(double x) { return 0.5 * erfc(x / sqrt(2.0)); }

struct Verdict {
    int c;
    std::string marks; // out, normal, divided normal, tau, divided tau
};

// Limits of 2, 3 (normal) and 1.5, 2.5 (tau).
Verdict classify(double r, double s, double sigpost = 1.0, int classes = 10)
{
    Bare b(1);
    b.wire(0);
    b.take_histograms(classes);
    S(b, filllimits)();
    char m[5] = {'?', '?', '?', '?', '?'};
    Verdict v;
    v.c = S(b, classify)(r, s, sigpost, 2.0, m + 1, 3.0, m + 2, 1.5, m + 3, 2.5, m + 4, m);
    v.marks = std::string(m, 5);
    return v;
}

// n distances in one dimension with standard deviations of 1 and the given residuals.
void distances(Bare &s, const std::vector<double> &residuals)
{
    s.add("A", 0, 0);
    s.add("LONGNAME", 0, 0);
    for (double r : residuals) {
        measure &m = s.observe(s.dist, 0, 1, 100.0, 1.0);
        m.res[0] = r;
        m.res[1] = 1.0;
    }
    s.wire(1);
    s.take_histograms();
}

std::string from(const std::string &text, const std::string &start)
{
    const size_t at = text.find(start);
    return at == std::string::npos ? "" : text.substr(at);
}

// Eleven residuals close to a normal distribution: 1, 4, 4, 2 in the classes from -2 to 2.
const std::vector<double> NORMAL = {-1.5, -0.5, -0.5, -0.5, -0.5, 0.5, 0.5, 0.5, 0.5, 1.5, 1.5};

} // namespace

// ---- classify ----

TEST(Classify, PutsAResidualIntoTheClassAboveItsLowerLimit)
{
    EXPECT_EQ(classify(-4.5, 1.0).c, 0);
    EXPECT_EQ(classify(-0.5, 1.0).c, 4);
    EXPECT_EQ(classify(0.0, 1.0).c, 4);
    EXPECT_EQ(classify(0.5, 1.0).c, 5);
    EXPECT_EQ(classify(1.0, 2.0).c, 5);
    EXPECT_EQ(classify(3.0, 1.0).c, 7);
    EXPECT_EQ(classify(4.5, 1.0).c, 9);
}

TEST(Classify, MarksWhatLiesOutsideTheHistogram)
{
    EXPECT_EQ(classify(-5.0, 1.0).c, 0);
    EXPECT_EQ(classify(-5.0, 1.0).marks, "*N*T*");
    EXPECT_EQ(classify(5.0, 1.0).c, 9);
    EXPECT_EQ(classify(5.0, 1.0).marks, " N*T*");
    EXPECT_EQ(classify(5.01, 1.0).c, 9);
    EXPECT_EQ(classify(5.01, 1.0).marks, "*N*T*");
    EXPECT_EQ(classify(-700.0, 1.0).c, 0);
}

TEST(Classify, SetsEachMarkAboveItsOwnLimit)
{
    EXPECT_EQ(classify(1.5, 1.0).marks, "     ");
    EXPECT_EQ(classify(-1.6, 1.0).marks, "   T ");
    EXPECT_EQ(classify(2.0, 1.0).marks, "   T ");
    EXPECT_EQ(classify(2.1, 1.0).marks, " N T ");
    EXPECT_EQ(classify(-2.6, 1.0).marks, " N T*");
    EXPECT_EQ(classify(3.0, 1.0).marks, " N T*");
    EXPECT_EQ(classify(3.1, 1.0).marks, " N*T*");
}

TEST(Classify, DividesByTheAPosterioriSigmaForTheTauTestOnly)
{
    EXPECT_EQ(classify(3.1, 1.0, 10.0).marks, " N*  ");
    EXPECT_EQ(classify(1.0, 1.0, 0.5).marks, "   T ");
    EXPECT_EQ(classify(3.1, 1.0, 1e-9).marks, " N*  ");
    EXPECT_EQ(classify(3.1, 1.0, 1.1e-9).marks, " N*T*");
}

TEST(Classify, PutsAnObservationWithoutRedundancyIntoTheMiddleWithoutMarks)
{
    EXPECT_EQ(classify(100.0, 0.0).c, 4);
    EXPECT_EQ(classify(100.0, 1e-9).marks, "     ");
    EXPECT_EQ(classify(100.0, 1e-9).c, 4);
    EXPECT_EQ(classify(100.0, 1.1e-9).c, 9);
    EXPECT_EQ(classify(100.0, 0.0, 1.0, 3).c, 1);
    EXPECT_EQ(classify(100.0, 0.0, 1.0, 6).c, 2);
}

TEST(Classify, StaysWithinTheClassesWhateverTheNumbers)
{
    for (double r : {double(NAN), double(INFINITY), -double(INFINITY), 1e300})
        for (double s : {1.0, double(NAN), double(INFINITY), 1e-300, -1.0}) {
            const int c = classify(r, s).c;
            EXPECT_GE(c, 0);
            EXPECT_LE(c, 9);
        }
}

// ---- class probabilities ----

TEST(ResidualAnalysis, GivesEachClassItsNormalProbability)
{
    Bare s(1);
    distances(s, {0.0});
    S(s, resanalysis)(1.0, 10.0);
    for (int i = 0; i < 9; i++) {
        const double low = i - 5.0;
        EXPECT_NEAR(S(s, hnorm)[i], tail(low) - tail(low + 1.0), 3e-7) << i; // twice the error of the tail
    }
    EXPECT_EQ(S(s, hnorm)[9], S(s, hnorm)[0]);
    for (int i = 0; i < 10; i++) EXPECT_DOUBLE_EQ(S(s, hlim)[i], i - 5.0);
}

TEST(ResidualAnalysis, GivesAClassThatSpansZeroBothItsHalves)
{
    Bare s(1);
    distances(s, {0.0});
    S(s, nclass) = 3;
    S(s, resanalysis)(1.0, 3.0);
    EXPECT_NEAR(S(s, hnorm)[1], 2.0 * (0.5 - tail(5.0 / 3.0)), 3e-7);
    EXPECT_NEAR(S(s, hnorm)[0], tail(5.0 / 3.0) - tail(5.0), 3e-7);
    EXPECT_EQ(S(s, hnorm)[2], S(s, hnorm)[0]);
}

// ---- rows, marks and counts ----

TEST(ResidualAnalysis, PrintsARowWithItsMarksAndKeepsThemInTheMarkWord)
{
    // With dofc 10: normal limits 1.960 and 2.807, tau limits 1.904 and 2.454.
    Bare s(1);
    distances(s, {-1.0, 1.93, 2.3, 2.6, -2.9, 5.5, 4.0});
    s.dist[6].res[1] = 0.0;
    S(s, resanalysis)(1.0, 10.0);
    EXPECT_EQ(s.report(), "\n\ndistance residuals\n"
                          "A        LONGNAME      100.000000       -1.000000   1.000000                 \n"
                          "A        LONGNAME      100.000000        1.930000   1.000000              T  \n"
                          "A        LONGNAME      100.000000        2.300000   1.000000        N     T  \n"
                          "A        LONGNAME      100.000000        2.600000   1.000000        N     T *\n"
                          "A        LONGNAME      100.000000       -2.900000   1.000000        N *   T *\n"
                          "A        LONGNAME      100.000000        5.500000   1.000000    *   N *   T *\n"
                          "A        LONGNAME      100.000000        4.000000   0.000000                 \n");
    const int words[7] = {0, 10, 1010, 1011, 1111, 11111, 0};
    for (int i = 0; i < 7; i++) EXPECT_EQ(s.dist[i].iflag, words[i]) << i;
    EXPECT_EQ(s.result.dist.nnorm, 4);
    EXPECT_EQ(s.result.dist.nnormb, 2);
    EXPECT_EQ(s.result.dist.ntau, 5);
    EXPECT_EQ(s.result.dist.ntaub, 3);
    EXPECT_EQ(s.result.dist.ichi, 0);
    EXPECT_EQ(s.result.difh.nnorm, 0);
    const int counts[10] = {0, 0, 1, 1, 1, 0, 1, 2, 0, 1};
    for (int i = 0; i < 10; i++) {
        EXPECT_EQ(S(s, hdist)[i], counts[i]) << i;
        EXPECT_EQ(S(s, hall)[i], counts[i]) << i;
    }
}

TEST(ResidualAnalysis, RewritesTheMarkWordAndDividesBySigmaAPosteriori)
{
    Bare s(1);
    distances(s, {3.0});
    s.dist[0].iflag = 9999;
    S(s, resanalysis)(10.0, 10.0);
    EXPECT_EQ(s.dist[0].iflag, 1100); // 0.3 of sigma a posteriori
}

TEST(ResidualAnalysis, GivesBothTauMarksToAnyResidualBelowTwoDegreesOfFreedom)
{
    Bare s(1);
    distances(s, {1e-3, 0.0});
    S(s, resanalysis)(1.0, 1.0);
    EXPECT_EQ(s.dist[0].iflag, 11);
    EXPECT_EQ(s.dist[1].iflag, 0);
}

TEST(ResidualAnalysis, CutsTheRedundancyAfterAddingATenth)
{
    // 1.95 counts as 2: the tau point is sqrt(2) cos(pi 0.025) = 1.410.
    Bare s(1);
    distances(s, {1.40, 1.42});
    S(s, resanalysis)(1.0, 1.95);
    EXPECT_EQ(s.dist[0].iflag, 0);
    EXPECT_EQ(s.dist[1].iflag / 10 % 10, 1);
}

// The level is divided by the redundancy as it stands: tau for two degrees of freedom is
// sqrt(2) cos(pi 0.025 / 1.91) = 1.413019, with 0.025 / 2 it would be 1.413122.
TEST(ResidualAnalysis, DividesTheLevelOfTheTauTestByTheRedundancy)
{
    const double limit = sqrt(2.0) * cos(4 * atan(1.0) * 0.025 / 1.91);
    Bare s(1);
    distances(s, {limit - 5e-5, limit + 5e-5});
    S(s, resanalysis)(1.0, 1.91);
    EXPECT_EQ(s.dist[0].iflag % 10, 0);
    EXPECT_EQ(s.dist[1].iflag % 10, 1);
}

TEST(ResidualAnalysis, IsDefinedForARedundancyThatIsZeroHugeOrNoNumber)
{
    for (double dofc : {0.0, -3.0, 1e300, double(NAN), double(INFINITY)}) {
        Bare s(1);
        distances(s, {1.0, -6.0});
        S(s, resanalysis)(1.0, dofc);
        EXPECT_EQ(S(s, hdist)[0], 1) << dofc;
    }
}

TEST(ResidualAnalysis, NeedsNoRecordForTheHost)
{
    Bare s(1);
    distances(s, NORMAL);
    S(s, temp_res) = NULL;
    S(s, resanalysis)(1.0, 11.0);
    EXPECT_EQ(S(s, hdist)[4], 4);
}

namespace {

struct Kind {
    const char *title;
    std::vector<measure> BareRecords::*list;
    kindresult tempresult::*block;
    int *solution::*count;
    const char *histogram;
};

const Kind KINDS[5] = {
    {"\n\ndistance residuals\n", &BareRecords::dist, &tempresult::dist, solution_access::hdist,
     "\nhistogram of distance residuals\n"},
    {"\n\nheight differences residuals\n", &BareRecords::difh, &tempresult::difh, solution_access::hdifh,
     "\nhistogram of height differences residuals\n"},
    {"\nhorizontal direction residuals\n", &BareRecords::dir1, &tempresult::dir1, solution_access::hdir1,
     "\nhistogram of horizontal direction residuals\n"},
    {"\nvertical direction residuals\n", &BareRecords::dir2, &tempresult::dir2, solution_access::hdir2,
     "\nhistogram of vertical direction residuals\n"},
    {"\n\nazimuth residuals\n", &BareRecords::az, &tempresult::az, solution_access::haz,
     "\nhistogram of azimuth residuals\n"},
};

void observe(Bare &s, const Kind &kind, double val, double r, double sigma)
{
    measure &m = s.observe(static_cast<BareRecords &>(s).*kind.list, 0, 1, val, 1.0);
    m.res[0] = r;
    m.res[1] = sigma;
}

void two_points(Bare &s)
{
    s.add("A", 0, 0);
    s.add("B", 0, 0);
}

} // namespace

TEST(ResidualAnalysis, TakesTheKindsInOrderEachWithItsOwnCounts)
{
    Bare s(1);
    two_points(s);
    for (int k = 0; k < 5; k++) observe(s, KINDS[k], 1.0 + k, k - 1.5, 1.0);
    s.wire(1);
    s.take_histograms();
    S(s, resanalysis)(1.0, 50.0);
    std::string wanted;
    for (int k = 0; k < 5; k++) {
        char row[200];
        const double value = k == 2   ? s.n.p.htoraw(1, 3.0)
                             : k == 3 ? s.n.p.vtoraw(1, 4.0)
                             : k == 4 ? s.n.p.aztoraw(1, 5.0)
                                      : 1.0 + k;
        snprintf(row, sizeof row, "A        B        %15.6f %15.6f   1.000000        %c     %c  \n", value, k - 1.5,
                 k == 4 ? 'N' : ' ', k == 4 ? 'T' : ' ');
        wanted += KINDS[k].title + std::string(row);
    }
    EXPECT_EQ(s.report(), wanted);
    for (int k = 0; k < 5; k++) {
        EXPECT_EQ((s.*KINDS[k].count)[3 + k], 1) << k;
        EXPECT_EQ(S(s, hall)[3 + k], 1) << k;
        EXPECT_EQ((s.result.*KINDS[k].block).nnorm, k == 4 ? 1 : 0) << k;
        EXPECT_EQ((s.result.*KINDS[k].block).ntau, k == 4 ? 1 : 0) << k;
    }
}

TEST(ResidualAnalysis, ShowsAnglesInTheUnitOfTheHostAndDistancesAsTheyAre)
{
    Bare s(1);
    s.n.p.iangle = ANGLE_GON;
    s.n.p.izenith = 1;
    two_points(s);
    for (const Kind &kind : KINDS) observe(s, kind, 0.75, 0.001, 0.002);
    s.wire(1);
    s.take_histograms();
    S(s, resanalysis)(1.0, 5.0);
    project &p = s.n.p;
    const double numbers[5][3] = {
        {0.75, 0.001, 0.002},
        {0.75, 0.001, 0.002},
        {p.htoraw(1, 0.75), p.htoraw(0, p.htoraw(2, 0.001)), p.htoraw(0, 0.002)},
        {p.vtoraw(1, 0.75), p.vtoraw(0, p.vtoraw(2, 0.001)), p.vtoraw(0, 0.002)},
        {p.aztoraw(1, 0.75), p.aztoraw(0, p.aztoraw(2, 0.001)), p.aztoraw(0, 0.002)},
    };
    std::string wanted;
    for (int k = 0; k < 5; k++) {
        char row[200];
        snprintf(row, sizeof row, "A        B        %15.6f %15.6f %10.6f                 \n", numbers[k][0],
                 numbers[k][1], numbers[k][2]);
        wanted += KINDS[k].title + std::string(row);
    }
    EXPECT_EQ(s.report(), wanted);
}

TEST(ResidualAnalysis, PrintsARowForEachComponentOfABaselineAndCountsThemTogether)
{
    Bare s(1);
    two_points(s);
    gpsbase &g = s.baseline(0, 1, 10.0, -20.0, 30.0);
    const double r[3] = {0.5, -6.0, 2.3};
    for (int k = 0; k < 3; k++) {
        g.res[k] = r[k];
        g.nres[k] = 1.0;
    }
    s.wire(1);
    s.take_histograms();
    S(s, resanalysis)(1.0, 10.0);
    EXPECT_EQ(s.report(), "\n\ngps baselines residuals\n"
                          "A        B              10.000000        0.500000   1.000000                 \n"
                          "A        B             -20.000000       -6.000000   1.000000    *   N *   T *\n"
                          "A        B              30.000000        2.300000   1.000000        N     T  \n");
    EXPECT_EQ(s.gps[0].iflag[0], 0);
    EXPECT_EQ(s.gps[0].iflag[1], 11111);
    EXPECT_EQ(s.gps[0].iflag[2], 1010);
    for (int *count : {S(s, hgps1), S(s, hall)}) {
        EXPECT_EQ(count[0], 1);
        EXPECT_EQ(count[5], 1);
        EXPECT_EQ(count[7], 1);
    }
    for (int i = 0; i < 10; i++) EXPECT_EQ(S(s, hgps2)[i] + S(s, hgps3)[i], 0);
}

namespace {

// n images with residuals of 0.25 in u and -6 in v.
void images(Bare &s, int n)
{
    two_points(s);
    for (int i = 0; i < n; i++) {
        measure &u = s.observe(s.u, 0, 1, 0, 1), &v = s.observe(s.v, 0, 1, 0, 1);
        u.res[0] = 0.25;
        v.res[0] = -6.0;
        u.res[1] = v.res[1] = 1.0;
    }
    s.wire(1);
    s.take_histograms();
}

} // namespace

TEST(ResidualAnalysis, PrintsOneLineForTheTwoCoordinatesOfAnImage)
{
    Bare s(1);
    images(s, 1);
    S(s, resanalysis)(1.0, 10.0);
    EXPECT_EQ(s.report(), "\nphoto coordinates residuals in pixels\n"
                          "A        B          0.250  1.000                  -6.000  1.000  *   N *   T *\n");
    EXPECT_EQ(s.u[0].iflag, 0);
    EXPECT_EQ(s.v[0].iflag, 11111);
    EXPECT_EQ(S(s, hall)[0], 1);
    EXPECT_EQ(S(s, hall)[5], 1);
    EXPECT_EQ(s.result.photo.nnorm, 1);
    EXPECT_EQ(s.result.photo.nnormb, 1);
    EXPECT_EQ(s.result.photo.ntau, 1);
    EXPECT_EQ(s.result.photo.ntaub, 1);
}

// ---- histograms ----

namespace {

// Of 11 residuals: 11 times the class probability, rounded.
const char NORMAL_COUNTS[] = "\nhistogram of normal distribution\n"
                             "   0   0   0   1   4   4   1   0   0   0";
const char PASS[] = "\nPass the Chi2 goodness of fit test\n";
const char FAIL[] = "\nFail the Chi2 goodness of fit test\n";

} // namespace

TEST(Histogram, SetsTheCountsAgainstTheNormalDistribution)
{
    Bare s(1);
    distances(s, NORMAL);
    S(s, resanalysis)(1.0, 11.0);
    EXPECT_EQ(from(s.report(), "\nhistogram"), std::string("\nhistogram of distance residuals\n"
                                                           "   0   0   0   1   4   4   2   0   0   0") +
                                                   NORMAL_COUNTS + PASS);
    EXPECT_EQ(s.result.dist.ichi, 1);
}

TEST(Histogram, FailsWhenTheTailDoesNotReachTheConfidenceLevel)
{
    // One of eleven in the class from 3 to 4 (probability 0.00132) adds 6.1 to the sum: a
    // tail of 0.64 with 8 degrees of freedom, far from significant in the usual sense.
    Bare s(1);
    std::vector<double> r = NORMAL;
    r[10] = 3.5;
    distances(s, r);
    S(s, resanalysis)(1.0, 11.0);
    EXPECT_EQ(from(s.report(), "\nhistogram"), std::string("\nhistogram of distance residuals\n"
                                                           "   0   0   0   1   4   4   1   0   1   0") +
                                                   NORMAL_COUNTS + FAIL);
    EXPECT_EQ(s.result.dist.ichi, -1);
}

TEST(Histogram, SumsRelativeFrequencies)
{
    // 40 residuals: by frequencies the sum is about 0.7 and passes, by counts it is 28
    // and would fail.
    std::vector<double> r;
    for (int i = 0; i < 20; i++) r.push_back(i < 4 ? -1.5 : -0.5), r.push_back(i < 10 ? 0.5 : 1.5);
    double sum = 0.0;
    const int counts[10] = {0, 0, 0, 4, 16, 10, 10, 0, 0, 0};
    for (int i = 0; i < 10; i++) {
        const double p = tail(i - 5.0) - tail(i - 4.0), f = counts[i] / 40.0;
        sum += (f - p) * (f - p) / p;
    }
    ASSERT_LT(sum, 2.0); // chi-square of 8 degrees: lower 5 percent point 2.73
    ASSERT_GT(40 * sum, 2.8);
    Bare s(1);
    distances(s, r);
    S(s, resanalysis)(1.0, 40.0);
    EXPECT_EQ(s.result.dist.ichi, 1);
}

TEST(Histogram, ComesOnlyForAKindWithMoreObservationsThanClasses)
{
    Bare s(1);
    distances(s, std::vector<double>(NORMAL.begin() + 1, NORMAL.end()));
    S(s, resanalysis)(1.0, 10.0);
    EXPECT_EQ(s.report().find("histogram"), std::string::npos);
    EXPECT_EQ(s.result.dist.ichi, 0);
}

TEST(Histogram, OfEveryKindHasItsTitleAndVerdict)
{
    for (const Kind &kind : KINDS) {
        Bare s(1);
        two_points(s);
        for (double r : NORMAL) observe(s, kind, 1.0, r, 1.0);
        s.wire(1);
        s.take_histograms();
        S(s, resanalysis)(1.0, 11.0);
        EXPECT_EQ(from(s.report(), "\nhistogram"),
                  kind.histogram + std::string("   0   0   0   1   4   4   2   0   0   0") + NORMAL_COUNTS + PASS);
        EXPECT_EQ((s.result.*kind.block).ichi, 1);
    }
}

TEST(Histogram, OfBaselinesIsATitleAlone)
{
    for (int n : {10, 11}) {
        Bare s(1);
        two_points(s);
        for (int i = 0; i < n; i++) s.baseline(0, 1, 1, 2, 3);
        s.wire(1);
        s.take_histograms();
        S(s, resanalysis)(1.0, 10.0);
        EXPECT_EQ(from(s.report(), "\nhistogram"), n > 10 ? "\nhistogram of gps baselines residuals\n" : "");
    }
}

TEST(Histogram, OfImageCoordinatesIsATitleAlone)
{
    for (int n : {10, 11}) {
        Bare s(1);
        images(s, n);
        S(s, resanalysis)(1.0, 10.0);
        EXPECT_EQ(from(s.report(), "\nhistogram"), n > 10 ? "\nhistogram of photo coordinates residuals\n" : "");
        EXPECT_EQ(s.result.photo.ichi, 0);
    }
}

TEST(Histogram, OfEverythingComesAboveOneDimensionWithoutATestOnTheCount)
{
    Bare s(2);
    distances(s, {0.5, -0.5});
    S(s, resanalysis)(1.0, 2.0);
    EXPECT_EQ(from(s.report(), "\nhistogram"), std::string("\nhistogram of all observations residuals\n"
                                                           "   0   0   0   0   1   1   0   0   0   0"
                                                           "\nhistogram of normal distribution\n"
                                                           "   0   0   0   0   1   1   0   0   0   0") +
                                                   PASS);
    EXPECT_EQ(s.result.dist.ichi, 0); // its verdict is not kept
}

TEST(Histogram, OfEverythingCountsImagesInTheClassesButNotInTheNumber)
{
    // 3 baselines make 9 residuals, all 0 in the middle class; two images add 2 and 2.
    Bare s(3);
    images(s, 2);
    for (int i = 0; i < 3; i++) s.baseline(0, 1, 1, 2, 3);
    s.wire(1);
    s.take_histograms();
    S(s, resanalysis)(1.0, 10.0);
    EXPECT_EQ(from(s.report(), "\nhistogram of all"), std::string("\nhistogram of all observations residuals\n"
                                                                  "   2   0   0   0   9   2   0   0   0   0"
                                                                  "\nhistogram of normal distribution\n"
                                                                  "   0   0   0   1   3   3   1   0   0   0") +
                                                          FAIL);
}

TEST(Histogram, IsDefinedWithImagesAlone)
{
    Bare s(3);
    images(s, 1);
    S(s, resanalysis)(1.0, 10.0);
    EXPECT_EQ(from(s.report(), "\nhistogram of all"), std::string("\nhistogram of all observations residuals\n"
                                                                  "   1   0   0   0   0   1   0   0   0   0"
                                                                  "\nhistogram of normal distribution\n"
                                                                  "   0   0   0   0   0   0   0   0   0   0") +
                                                          FAIL);
}

TEST(Histogram, OfThreeClassesHasOneDegreeOfFreedom)
{
    // Eight in the middle (probability 0.9044), two above (0.0478): the sum is 0.494 and
    // its tail with one degree of freedom 0.48; with two it would be 0.78.
    Bare s(1);
    distances(s, {0, 0, 0, 0, 0, 0, 0, 0, 2, 2});
    S(s, nclass) = 3;
    S(s, confidence) = 60.0;
    S(s, resanalysis)(1.0, 3.0);
    EXPECT_EQ(from(s.report(), "\nhistogram"), std::string("\nhistogram of distance residuals\n"
                                                           "   0   8   2"
                                                           "\nhistogram of normal distribution\n"
                                                           "   0   9   0") +
                                                   FAIL);
}
