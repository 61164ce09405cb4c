#include <errno.h>
#include <gtest/gtest.h>
#include <math.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include "vorn/sidefiles.h"
#include "support/bare.h"
#include "support/workfolder.h"

using namespace vornengine;

namespace {

const double PI = 3.14159265358979323846;

// A lump with one epoch beside its reference; the arrays live in the object.
struct OneEpoch {
    explicit OneEpoch(int id)
    {
        l.id = id;
        l.nepoch = 2;
        l.iref = 1;
        l.iunk = &iunk;
        l.epoch = &epoch;
        double **const to[7] = {&l.tx, &l.ty, &l.tz, &l.rx, &l.ry, &l.rz, &l.scale};
        for (int k = 0; k < 7; k++) *to[k] = par + k;
    }
    lump l = lump();
    int iunk = 0, epoch = 2;
    double par[7] = {0, 0, 0, 0, 0, 0, 1};
};

// Two stations and a target, each with its own three coordinates as unknowns.
void three_points(Bare &s)
{
    s.add("S1", 1, 2, 3);
    s.add("S2", 4, 5, 6);
    s.add("T", 7, 8, 9);
    for (int i = 0; i < 3; i++)
        for (int c = 0; c < 3; c++) s.points[i].n0[c] = 3 * i + c;
}

std::string replaced(std::string text, const std::string &from, const std::string &to)
{
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

} // namespace

// ---- reduceangle ----

TEST(ReduceAngle, LeavesAnAngleBelowTwoPiInMagnitude)
{
    for (double a : {0.0, 3.0, -3.0, 6.283, -6.283}) {
        double b = a;
        reduceangle(&b);
        EXPECT_EQ(b, a);
    }
}

TEST(ReduceAngle, TakesWholeTurnsOffAndKeepsTheSign)
{
    double a = 2.0 * PI + 0.25, b = -4.0 * PI - 0.5, c = 2.0 * PI;
    reduceangle(&a);
    reduceangle(&b);
    reduceangle(&c);
    EXPECT_NEAR(a, 0.25, 1e-14);
    EXPECT_NEAR(b, -0.5, 1e-14);
    EXPECT_EQ(c, 0.0);
}

TEST(ReduceAngle, IsDefinedForAnglesOfMoreTurnsThanAnIntegerHolds)
{
    double a = 1e30, b = INFINITY;
    reduceangle(&a);
    reduceangle(&b);
    EXPECT_TRUE(isnan(b));
}

// ---- applydelta ----

TEST(ApplyDelta, AddsToEveryEstimatedValueOfStationsAndToTheCoordinatesOfTargets)
{
    Bare s(3);
    three_points(s);
    s.points[1].n0[1] = N_NONE;
    for (int c = 0; c < 6; c++) s.points[0].n1[c] = c;
    s.points[0].n1[4] = N_NONE;
    s.points[2].n1[0] = 0; // a target's orientation is no parameter
    for (int k = 0; k < 15; k++) s.delta.push_back(0.01 * (k + 1));
    s.wire(2);
    S(s, nunk1) = 9;
    S(s, nunk2) = 6;
    S(s, nunk) = 15;
    S(s, applydelta)(0);
    EXPECT_DOUBLE_EQ(s.points[0].xpt[0], 1.01);
    EXPECT_DOUBLE_EQ(s.points[0].xpt[2], 3.03);
    EXPECT_DOUBLE_EQ(s.points[1].xpt[0], 4.04);
    EXPECT_DOUBLE_EQ(s.points[1].xpt[1], 5.0);
    EXPECT_DOUBLE_EQ(s.points[2].xpt[2], 9.09);
    EXPECT_DOUBLE_EQ(s.points[0].xex[0], 0.10);
    EXPECT_DOUBLE_EQ(s.points[0].xex[4], 1.0);
    EXPECT_DOUBLE_EQ(s.points[0].xex[5], 0.15);
    EXPECT_DOUBLE_EQ(s.points[1].xex[0], 0.0);
    EXPECT_DOUBLE_EQ(s.points[2].xex[0], 0.0);
    EXPECT_EQ(s.report(), "");
}

TEST(ApplyDelta, AddsToTheCameraParametersInUse)
{
    Bare s(3);
    s.camerawith("C1", 50.0, 0.01).ipar[0] = 1;
    s.cameras[0].ipar[2] = 0;
    s.cameras[0].ipar[3] = 0; // beyond npar
    s.delta = {0.5, 0.25};
    s.wire(0);
    S(s, applydelta)(0);
    EXPECT_DOUBLE_EQ(s.cameras[0].par[0], 50.25);
    EXPECT_DOUBLE_EQ(s.cameras[0].par[1], 0.0);
    EXPECT_DOUBLE_EQ(s.cameras[0].par[2], 0.5);
    EXPECT_DOUBLE_EQ(s.cameras[0].par[3], 0.0);
}

TEST(ApplyDelta, AddsSevenParametersToEachEpochOfALumpAndFoldsItsRotations)
{
    Bare s(3);
    OneEpoch e(7);
    e.iunk = 2;
    s.lumps.push_back(e.l);
    s.delta = {9, 9, 9, 9, 9, 0.1, 0.2, 0.3, 2.0 * PI + 0.4, -2.0 * PI - 0.5, -0.6, 0.001};
    s.wire(0);
    S(s, nunk1) = 3;
    S(s, applydelta)(0);
    const double wanted[7] = {0.1, 0.2, 0.3, 0.4, -0.5, -0.6, 1.001};
    for (int k = 0; k < 7; k++) EXPECT_NEAR(e.par[k], wanted[k], 1e-14) << k;
}

TEST(ApplyDelta, LetsTheHeightAboveTheSphereFollowUnlessItIsFixed)
{
    Bare s(3);
    three_points(s);
    s.points[1].defdatum[2] = DATUM_FIXED_HEIGHT;
    s.points[1].h = 77.0;
    s.delta.assign(9, 0.0);
    s.delta[0] = 999.0; // x of S1: 1000
    s.wire(2);
    S(s, nunk1) = S(s, nunk) = 9;
    S(s, iearth) = 1;
    S(s, radius) = 1e6;
    S(s, horigin) = 400.0;
    S(s, applydelta)(0);
    EXPECT_NEAR(s.points[0].h, (1000.0 * 1000.0 + 4.0) / (2.0 * 1000403.0) + 403.0, 1e-9);
    EXPECT_EQ(s.points[1].h, 77.0);
    EXPECT_NEAR(s.points[2].h, 409.0, 1e-3);
}

TEST(ApplyDelta, LetsTheHeightFollowWithEveryEarthModel)
{
    for (int earth : {1, 2, 3, -1}) {
        Bare s(3);
        three_points(s);
        s.delta.assign(9, 0.0);
        s.wire(2);
        S(s, nunk1) = S(s, nunk) = 9;
        S(s, iearth) = earth;
        S(s, radius) = 1e6;
        S(s, horigin) = 400.0;
        S(s, applydelta)(0);
        EXPECT_NEAR(s.points[2].h, 409.0, 1e-3) << earth;
    }
}

TEST(ApplyDelta, GivesAPointAtTheCentreOfTheSphereTheHeightOfTheDivision)
{
    Bare s(3);
    s.add("S1", 3, 4, -1000);
    s.add("T1", 0, 0, -1000);
    s.wire(1);
    S(s, iearth) = 1;
    S(s, radius) = 1000.0;
    S(s, applydelta)(0);
    EXPECT_TRUE(isinf(s.points[0].h));
    EXPECT_TRUE(isnan(s.points[1].h));
}

TEST(ApplyDelta, LeavesHeightsAloneWithoutAnEarthModelOrBelowThreeDimensions)
{
    for (int dim = 1; dim <= 3; dim++) {
        Bare s(dim);
        three_points(s);
        s.delta.assign(9, 0.0);
        s.wire(2);
        S(s, iearth) = dim == 3 ? 0 : 1;
        S(s, radius) = 1e6;
        S(s, applydelta)(0);
        EXPECT_EQ(s.points[0].h, 0.0) << dim;
    }
}

namespace {

// The datum parameters after one step with ndatum rows 1, 2, 3, ... behind the unknowns.
std::vector<double> datum_after(int dim, int ndatum, int irun = 1)
{
    Bare s(dim);
    s.delta = {50, 60};
    for (int k = 1; k <= ndatum; k++) s.delta.push_back(k);
    s.delta.shrink_to_fit();
    s.wire(0);
    S(s, irun) = irun;
    S(s, nunk1) = S(s, nunk2) = 1;
    S(s, ndatum) = ndatum;
    S(s, nunk) = 2 + ndatum;
    S(s, applydelta)(0);
    return std::vector<double>(S(s, datum), S(s, datum) + 7);
}

} // namespace

TEST(ApplyDelta, GivesTheDatumRowsToTheirParameters)
{
    typedef std::vector<double> row;
    EXPECT_EQ(datum_after(1, 1), (row{0, 0, 1, 0, 0, 0, 0}));
    EXPECT_EQ(datum_after(2, 3), (row{1, 2, 0, 0, 0, 3, 0}));
    EXPECT_EQ(datum_after(2, 4), (row{1, 2, 0, 0, 0, 3, 4}));
    EXPECT_EQ(datum_after(3, 3), (row{1, 2, 3, 0, 0, 0, 0}));
    EXPECT_EQ(datum_after(3, 4), (row{1, 2, 3, 0, 0, 4, 0}));
    EXPECT_EQ(datum_after(3, 5), (row{1, 2, 3, 0, 0, 4, 5}));
    EXPECT_EQ(datum_after(3, 6), (row{1, 2, 3, 4, 5, 6, 0}));
    EXPECT_EQ(datum_after(3, 7), (row{1, 2, 3, 4, 5, 6, 7}));
}

TEST(ApplyDelta, ReadsNoMoreDatumRowsThanThereAre)
{
    EXPECT_EQ(datum_after(3, 1), (std::vector<double>{1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(datum_after(3, 2), (std::vector<double>{1, 2, 0, 0, 0, 0, 0}));
    EXPECT_EQ(datum_after(2, 1), (std::vector<double>{1, 0, 0, 0, 0, 0, 0}));
}

TEST(ApplyDelta, LeavesTheDatumAloneWithoutRowsAndInAnAbsoluteValueRun)
{
    EXPECT_EQ(datum_after(3, 0), std::vector<double>(7, 0.0));
    EXPECT_EQ(datum_after(3, 7, -1), std::vector<double>(7, 0.0));
}

TEST(ApplyDelta, TracesEveryUnknownInItsOwnSeries)
{
    Bare s(1);
    s.delta = {0.5, -1.25, 0.125, 2.0};
    s.wire(0);
    S(s, idebug) = 1;
    S(s, nunk1) = 2;
    S(s, nunk2) = S(s, ndatum) = 1;
    S(s, nunk) = 4;
    S(s, applydelta)(3);
    EXPECT_EQ(s.report(), "\nSolution iteration # 3\n"
                          "first unknown #  0 =         0.500000000000000\n"
                          "first unknown #  1 =        -1.250000000000000\n"
                          "other unknown #  0 =         0.125000000000000\n"
                          "datum unknown #  0 =         2.000000000000000\n");
}

TEST(ApplyDelta, TracesNothingInAnAbsoluteValueRun)
{
    Bare s(1);
    s.delta = {0.5};
    s.wire(0);
    S(s, idebug) = 1;
    S(s, irun) = -1;
    S(s, nunk1) = S(s, nunk) = 1;
    S(s, applydelta)(0);
    EXPECT_EQ(s.report(), "");
}

// ---- corrections ----

namespace {

std::string corrections_of(int dim)
{
    Bare s(dim);
    s.add("S1", 1, 2, 3);
    s.add("LONGNAME", 4, 5, 6);
    s.points[0].xpt[0] += 0.5;
    s.points[0].xpt[1] -= 0.25;
    s.points[0].xpt[2] += 0.125;
    s.points[1].xpt[2] -= 12.5;
    OneEpoch e(7); // no text below three dimensions
    if (dim < 3) s.lumps.push_back(e.l);
    s.wire(1);
    S(s, corrections)();
    return s.report();
}

} // namespace

TEST(Corrections, ShowsHeightsInOneDimension)
{
    EXPECT_EQ(corrections_of(1), "\n\nCorrections to coordinates\n\n"
                                 "S1                    0.125000\n"
                                 "LONGNAME            -12.500000\n");
}

TEST(Corrections, ShowsTwoCoordinatesInThePlane)
{
    EXPECT_EQ(corrections_of(2), "\n\nCorrections to coordinates\n\n"
                                 "S1                    0.500000       -0.250000\n"
                                 "LONGNAME              0.000000        0.000000\n");
}

TEST(Corrections, ShowsThreeCoordinatesInSpace)
{
    EXPECT_EQ(corrections_of(3), "\n\nCorrections to coordinates\n\n"
                                 "S1                    0.500000       -0.250000        0.125000\n"
                                 "LONGNAME              0.000000        0.000000      -12.500000\n");
}

TEST(Corrections, ListsTheLumpsWithTheirPointsAndEpochsInSpace)
{
    Bare s(3);
    s.add("A", 0, 0, 0).ilump = 1;
    s.add("B", 0, 0, 0).ilump = 2;
    s.add("C", 0, 0, 0).ilump = 1;
    OneEpoch e(71), f(72);
    const double par[7] = {3.0, -4.0, 12.0, 0.1, -0.2, 0.3, 1.0001};
    memcpy(e.par, par, sizeof par);
    e.epoch = 5;
    f.epoch = 6;
    s.lumps = {e.l, f.l};
    s.wire(0);
    S(s, corrections)();
    EXPECT_EQ(s.report(), "\n\nCorrections to coordinates\n\n"
                          "A                     0.000000        0.000000        0.000000\n"
                          "B                     0.000000        0.000000        0.000000\n"
                          "C                     0.000000        0.000000        0.000000\n"
                          "\n\nLumps information\n"
                          "\nLump 71 observed at 2 epochs is made of:\n"
                          "     A       \n"
                          "     C       \n"
                          "\nEpoch 5 versus 1\n"
                          "translation           3.000000       -4.000000       12.000000       13.000000\n"
                          "rotation              0.100000       -0.200000        0.300000\n"
                          "scale                 1.000100\n"
                          "\nLump 72 observed at 2 epochs is made of:\n"
                          "     B       \n"
                          "\nEpoch 6 versus 1\n"
                          "translation           0.000000        0.000000        0.000000        0.000000\n"
                          "rotation              0.000000        0.000000        0.000000\n"
                          "scale                 1.000000\n");
}

// ---- final results ----

TEST(FinalResults, ShowsHeightsWithoutTheShiftInOneDimension)
{
    Bare s(1);
    s.add("S1", 0, 0, 101.5);
    s.add("T1", 0, 0, -2.25);
    s.wire(1);
    S(s, trans)[2] = 1000.0;
    S(s, finalresults)(4);
    EXPECT_EQ(s.report(), "\n\nFinal results after 5 iterations\n\n"
                          "S1                  101.500000\n"
                          "T1                   -2.250000\n");
}

TEST(FinalResults, AddsTheShiftAndEndsAStationWithItsOrientationInThePlane)
{
    Bare s(2);
    s.add("S1", 1.5, 2.5).xex[2] = -0.75;
    s.add("T1", 3.5, 4.5).xex[2] = 9.0;
    s.wire(1);
    S(s, trans)[0] = 1000.0;
    S(s, trans)[1] = 2000.0;
    S(s, iearth) = 2;
    S(s, finalresults)(0);
    EXPECT_EQ(s.report(), "\n\nFinal results after 1 iterations\n\n"
                          "S1                 1001.500000      2002.500000             -0.750000\n"
                          "T1                 1003.500000      2004.500000\n");
}

TEST(FinalResults, CountsNoIterationsInAnAbsoluteValueRun)
{
    Bare s(1);
    s.wire(0);
    S(s, irun) = -1;
    S(s, finalresults)(0);
    EXPECT_EQ(s.report(), "\n\nFinal results\n\n");
}

namespace {

const char ORIENTATION[] = "RxRyRz :           0.100000000     0.200000000     0.300000000";
const char POSITION[] = " xyz   :             11.000000       22.000000       33.000000";

// A 3D station with the constants estimated whose flag is set, and a target.
std::string space_results(bool additive, bool scale, bool refraction, int iearth = 0)
{
    Bare s(3);
    point &p = s.add("S1", 1, 2, 3);
    const double xex[6] = {0.1, 0.2, 0.3, 0.004, 1.00005, 0.000006};
    memcpy(p.xex, xex, sizeof xex);
    if (additive) p.n1[3] = 0;
    if (scale) p.n1[4] = 1;
    if (refraction) p.n1[5] = 2;
    p.h = 3.5;
    s.add("T1", 4, 5, 6).h = 6.5;
    s.wire(1);
    for (int c = 0; c < 3; c++) S(s, trans)[c] = 10.0 * (c + 1);
    S(s, iearth) = iearth;
    S(s, finalresults)(1);
    return s.report();
}

std::string space_text(const std::string &first, const std::string &second)
{
    return "\n\nFinal results after 2 iterations\n\nS1      \n" + first + "\n" + second + "\n\n" +
           "T1                   14.000000       25.000000       36.000000\n";
}

} // namespace

TEST(FinalResults, ShowsOrientationAndPositionOfAStationInSpace)
{
    EXPECT_EQ(space_results(false, false, false), space_text(ORIENTATION, POSITION));
}

TEST(FinalResults, ShowsTheRefractionTermWhenItIsEstimated)
{
    const std::string first = std::string(ORIENTATION) + "     0.000006000";
    EXPECT_EQ(space_results(false, false, true), space_text(first, POSITION));
}

TEST(FinalResults, ShowsBothDistanceConstantsWhenOneIsEstimated)
{
    const std::string second = std::string(POSITION) + "        0.004000     1.0000500";
    EXPECT_EQ(space_results(true, false, false), space_text(ORIENTATION, second));
    EXPECT_EQ(space_results(false, true, false), space_text(ORIENTATION, second));
    EXPECT_EQ(space_results(true, true, true), space_text(std::string(ORIENTATION) + "     0.000006000", second));
}

TEST(FinalResults, ShowsTheHeightAboveTheSphereInMixedCoordinates)
{
    std::string wanted = space_text(ORIENTATION, POSITION);
    EXPECT_EQ(space_results(false, false, false, 1), wanted);
    wanted = replaced(replaced(wanted, "33.000000", "33.500000"), "36.000000", "36.500000");
    EXPECT_EQ(space_results(false, false, false, 2), wanted);
}

namespace {

// A camera with three and one with ten parameters; of the ten those from first to last
// are estimated. All values of a camera of three are zero but its focal length.
void two_cameras(Bare &s, int first, int last)
{
    s.camerawith("small", 35.5, 0.01);
    s.cameras[0].ipar[3] = 0; // beyond npar
    camera &big = s.camerawith("big", 50.25, 0.002);
    big.npar = 10;
    for (int p = 1; p < 10; p++) big.par[p] = p * 1e-3;
    for (int p = first; p <= last; p++) big.ipar[p] = p;
}

const char SMALL[] = "\nsmall     focal length        35.500000\n"
                     "          principal point      0.000000     0.000000\n";
const char BIG[] = "\nbig       focal length        50.250000\n"
                   "          principal point      0.001000     0.002000\n";
const char AXIS[] = "          axis trans.          3.00e-03     4.00e-03\n";
const char RADIAL[] = "          radial dist.         5.00e-03     6.00e-03     7.00e-03\n";
const char DECENTERING[] = "          decentering          8.00e-03     9.00e-03\n";

std::string camera_results(int first, int last)
{
    Bare s(3);
    s.add("S1", 0, 0, 0);
    s.add("T1", 0, 0, 0);
    two_cameras(s, first, last);
    s.observe(s.u, 0, 1, 0, 1);
    s.observe(s.v, 0, 1, 0, 1);
    s.wire(1);
    S(s, finalresults)(0);
    const std::string text = s.report();
    return text.substr(text.find("\nCamera information\n"));
}

} // namespace

TEST(FinalResults, ShowsTheCamerasWithTheDistortionsThatAreEstimated)
{
    const std::string head = std::string("\nCamera information\n") + SMALL + BIG;
    EXPECT_EQ(camera_results(0, 2), head);
    EXPECT_EQ(camera_results(4, 4), head + AXIS);
    EXPECT_EQ(camera_results(3, 3), head + AXIS);
    EXPECT_EQ(camera_results(7, 7), head + RADIAL);
    EXPECT_EQ(camera_results(5, 6), head + RADIAL);
    EXPECT_EQ(camera_results(8, 8), head + DECENTERING);
    EXPECT_EQ(camera_results(9, 9), head + DECENTERING);
    EXPECT_EQ(camera_results(3, 9), head + AXIS + RADIAL + DECENTERING);
}

TEST(FinalResults, ShowsNoCamerasWithoutImageCoordinates)
{
    Bare s(3);
    two_cameras(s, 3, 9);
    s.wire(0);
    S(s, finalresults)(0);
    EXPECT_EQ(s.report().find("Camera"), std::string::npos);
}

// ---- plain residual tables ----

namespace {

// Mark in the table of a distance with a class code.
char mark_of(int code, int classes, double range)
{
    Bare s(1);
    s.add("A", 0, 0);
    s.add("B", 0, 0);
    s.observe(s.dist, 0, 1, 0, 1).iflag = code;
    s.wire(1);
    S(s, nclass) = classes;
    S(s, hrange) = range;
    S(s, residualtables)();
    const std::string text = s.report();
    return text[text.size() - 2];
}

} // namespace

TEST(ResidualTables, MarkTheOutermostClassesAndTheOverflow)
{
    const char wanted[10] = {'Q', 'q', 'q', ' ', ' ', ' ', ' ', 'q', 'q', 'Q'};
    for (int c = 0; c < 10; c++) EXPECT_EQ(mark_of(c, 10, 5.0), wanted[c]) << c;
    EXPECT_EQ(mark_of(9999, 10, 5.0), '*');
    EXPECT_EQ(mark_of(-9999, 10, 5.0), '*');
}

TEST(ResidualTables, UseNoSmallMarkWithFewClassesOrANarrowRange)
{
    for (int c : {1, 2, 6, 7}) EXPECT_EQ(mark_of(c, 9, 5.0), ' ') << c;
    EXPECT_EQ(mark_of(8, 9, 5.0), 'Q');
    for (int c : {1, 2, 7, 8}) EXPECT_EQ(mark_of(c, 10, 4.9), ' ') << c;
    EXPECT_EQ(mark_of(1, 10, 4.91), 'q');
}

TEST(ResidualTables, ListEveryKindInOrder)
{
    Bare s(3);
    s.add("A", 0, 0);
    s.add("LONGNAME", 0, 0);
    s.n.p.iangle = ANGLE_RADIAN;
    int k = 0;
    for (std::vector<measure> *list : {&s.dist, &s.difh, &s.dir1, &s.dir2, &s.az}) {
        measure &m = s.observe(*list, 0, 1, 1.0 + k, 1.0);
        m.res[0] = -0.001 * ++k;
        m.iflag = 4;
    }
    gpsbase &g = s.baseline(0, 1, 10.0, -20.0, 30.0);
    for (int c = 0; c < 3; c++) g.res[c] = 0.01 * (c + 1);
    g.iflag[0] = 9999;
    g.iflag[1] = 9;
    g.iflag[2] = 1;
    s.wire(1);
    S(s, residualtables)();
    EXPECT_EQ(s.report(), "\n\ndistance residuals\n"
                          "A        LONGNAME        1.000000       -0.001000          \n"
                          "\n\nheight difference residuals\n"
                          "A        LONGNAME        2.000000       -0.002000          \n"
                          "\n\nhorizontal direction residuals\n"
                          "A        LONGNAME        3.000000       -0.003000          \n"
                          "\n\nvertical angle residuals\n"
                          "A        LONGNAME        4.000000       -0.004000          \n"
                          "\n\nazimuth residuals\n"
                          "A        LONGNAME        5.000000       -0.005000          \n"
                          "\n\ngps baseline residuals\n"
                          "A        LONGNAME       10.000000        0.010000         *\n"
                          "                       -20.000000        0.020000         Q\n"
                          "                        30.000000        0.030000         q\n");
}

TEST(ResidualTables, ShowAnglesInTheUnitOfTheHost)
{
    Bare s(3);
    s.n.p.iangle = ANGLE_GON;
    s.n.p.izenith = 1;
    s.add("A", 0, 0);
    s.add("B", 0, 0);
    for (std::vector<measure> *list : {&s.dir1, &s.dir2, &s.az}) {
        measure &m = s.observe(*list, 0, 1, 0.3, 1.0);
        m.res[0] = 0.001;
        m.iflag = 4;
    }
    s.wire(1);
    S(s, residualtables)();
    project &p = s.n.p;
    const double values[3] = {p.htoraw(1, 0.3), p.vtoraw(1, 0.3), p.aztoraw(1, 0.3)};
    const double residuals[3] = {p.htoraw(0, p.htoraw(2, 0.001)), p.vtoraw(0, p.vtoraw(2, 0.001)),
                                 p.aztoraw(0, p.aztoraw(2, 0.001))};
    const char *titles[3] = {"horizontal direction", "vertical angle", "azimuth"};
    std::string wanted;
    for (int k = 0; k < 3; k++) {
        char line[200];
        snprintf(line, sizeof line, "\n\n%s residuals\nA        B        %15.6f %15.6f          \n", titles[k],
                 values[k], residuals[k]);
        wanted += line;
    }
    EXPECT_EQ(s.report(), wanted);
}

namespace {

// Three images of one station: none, one, both coordinates above half a pixel.
void photo_network(Bare &s, int typ)
{
    s.add("S1", 0, 0, 0).typ = typ;
    s.add("T1", 0, 0, 0);
    s.add("T2", 0, 0, 0);
    s.add("T3", 0, 0, 0);
    two_cameras(s, 3, 9);
    const double r[3][2] = {{0.5, -0.5}, {0.25, -0.75}, {1.5, 2.5}};
    for (int i = 0; i < 3; i++) {
        s.observe(s.u, 0, i + 1, 0, 1).res[0] = r[i][0];
        s.observe(s.v, 0, i + 1, 0, 1).res[0] = r[i][1];
    }
}

std::string photo_report(int typ)
{
    Bare s(3);
    photo_network(s, typ);
    s.wire(1);
    S(s, residualtables)();
    return s.report();
}

// With pixels of 0.01.
const char PHOTO_TABLE[] = "\n\nphoto coordinates (pixel and 1/1000th unit)\n"
                           "S1       T1             0.50     -0.50              5.0    -5.0\n"
                           "S1       T2             0.25     -0.75*             2.5    -7.5\n"
                           "S1       T3             1.50*     2.50*            15.0    25.0\n";

} // namespace

TEST(PhotoTable, StarsResidualsAboveHalfAPixelAndScalesWithThePixelSize)
{
    WorkFolder folder;
    EXPECT_EQ(photo_report(0), PHOTO_TABLE);
}

TEST(PhotoTable, TakesTheCameraAtThePositionOfThePointsTyp)
{
    WorkFolder folder;
    EXPECT_EQ(photo_report(1), "\n\nphoto coordinates (pixel and 1/1000th unit)\n"
                               "S1       T1             0.50     -0.50              1.0    -1.0\n"
                               "S1       T2             0.25     -0.75*             0.5    -1.5\n"
                               "S1       T3             1.50*     2.50*             3.0     5.0\n");
}

TEST(PhotoTable, TakesTheCameraOfTheObservationWhenThePointsTypNamesNone)
{
    WorkFolder folder;
    EXPECT_EQ(photo_report(2), PHOTO_TABLE);
    EXPECT_EQ(photo_report(-1), PHOTO_TABLE);
}

TEST(PhotoTable, IsDefinedWithoutAnyCamera)
{
    WorkFolder folder;
    Bare s(3);
    photo_network(s, 0);
    s.cameras.clear();
    s.wire(1);
    S(s, residualtables)();
    EXPECT_NE(s.report().find("S1       T3             1.50*     2.50*             0.0     0.0\n"), std::string::npos);
}

TEST(PhotoTable, WritesTheStarredOnesAndTheCamerasToRejects)
{
    WorkFolder folder;
    photo_report(0);
    // A camera of three parameters shows its axis line too: only ipar counts there.
    EXPECT_EQ(file_text("rejects"), std::string("test.inp\n"
                                                "S1       T2             0.25     -0.75*\n"
                                                "S1       T3             1.50*     2.50*\n"
                                                "\nCamera information\n") +
                                        SMALL + "          axis trans.          0.00e+00     0.00e+00\n" + BIG + AXIS +
                                        RADIAL + DECENTERING);
}

TEST(PhotoTable, GoesOnWithoutAWordWhenRejectsCannotBeOpened)
{
    WorkFolder folder;
    ASSERT_EQ(mkdir("rejects", 0700), 0);
    EXPECT_EQ(photo_report(0), PHOTO_TABLE);
}

TEST(PhotoTable, EntersWhyRejectsIsLostWithAnUnchangedReport)
{
    const auto lost = [] {
        Bare s(3);
        photo_network(s, 0);
        s.wire(1);
        side_files files = side_files();
        S(s, sidefiles) = &files;
        S(s, residualtables)();
        EXPECT_EQ(s.report(), PHOTO_TABLE);
        EXPECT_EQ(files.cofactors, 0);
        EXPECT_EQ(files.similarities, 0);
        return files.rejects;
    };
    WorkFolder folder;
    EXPECT_EQ(lost(), 0);
    remove("rejects");
    ASSERT_EQ(symlink("/dev/full", "rejects"), 0);
    EXPECT_EQ(lost(), ENOSPC);
    remove("rejects");
    ASSERT_EQ(mkdir("rejects", 0700), 0);
    EXPECT_EQ(lost(), EISDIR);
}

TEST(PhotoTable, OpensNoFileWithoutImageCoordinates)
{
    WorkFolder folder;
    Bare s(3);
    s.wire(0);
    S(s, residualtables)();
    EXPECT_EQ(access("rejects", F_OK), -1);
    EXPECT_EQ(s.report(), "");
}
