// The opening of the report and the two listings of working records, byte by byte.

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "support/loaded.h"

namespace {

// ---- summary ---------------------------------------------------------------------

std::string summary_of(int dim, int iearth)
{
    Loaded l(dim, 0, 0);
    V(l.run, iearth) = iearth;
    (V(l.run, summary)());
    return l.net.report();
}

TEST(Summary, NamesTheProblem)
{
    EXPECT_EQ(summary_of(1, 0), "\nSummary\n1D problem\n");
    EXPECT_EQ(summary_of(1, 1), "\nSummary\n1D problem\n");
    EXPECT_EQ(summary_of(2, 0), "\nSummary\n2D problem\n");
    EXPECT_EQ(summary_of(2, 2), "\nSummary\n2D problem\n");
    EXPECT_EQ(summary_of(3, 0), "\nSummary\n3D problem\n");
    EXPECT_EQ(summary_of(3, 1), "\nSummary\n3D problem with earth model and using cartesian coordinates\n");
    EXPECT_EQ(summary_of(3, 2), "\nSummary\n3D problem with earth model and using mixed coordinates\n");
    EXPECT_EQ(summary_of(3, 7), "\nSummary\n3D problem with earth model and using mixed coordinates\n");
    EXPECT_EQ(summary_of(4, 0), "\nSummary\n");
}

class Counts : public ::testing::Test {
protected:
    Counts() : l(3, 0, 0) {}
    // Every count of the summary in the order of the report.
    std::vector<int *> counts()
    {
        return {&V(l.run, nsta),  &V(l.run, ntar),  &V(l.run, ncamera), &V(l.run, ndist),
                &V(l.run, ndifh), &V(l.run, ndir1), &V(l.run, ndir2),   &V(l.run, naz),
                &V(l.run, ngps),  &V(l.run, nfixh), &V(l.run, nobsuv)};
    }
    std::string text()
    {
        (V(l.run, summary)());
        for (int *n : counts()) *n = 0; // nothing stands behind the counts when the run ends
        return l.net.report();
    }
    Loaded l;
};

TEST_F(Counts, StandEachOnALine)
{
    int next = 1;
    for (int *n : counts()) *n = next++;
    EXPECT_EQ(text(), "\nSummary\n"
                      "3D problem\n"
                      "number of instruments                1\n"
                      "number of points                     2\n"
                      "number of cameras                    3\n"
                      "number of distances                  4\n"
                      "number of height differences         5\n"
                      "number of horizontal directions      6\n"
                      "number of vertical angles            7\n"
                      "number of azimuth angles             8\n"
                      "number of GPS baselines              9\n"
                      "number of fixed heights             10\n"
                      "number of photo coordinates pair    11\n");
}

TEST_F(Counts, AreShownFromOneOn)
{
    for (int *n : counts()) *n = 1;
    EXPECT_EQ(text(), "\nSummary\n"
                      "3D problem\n"
                      "number of instruments                1\n"
                      "number of points                     1\n"
                      "number of cameras                    1\n"
                      "number of distances                  1\n"
                      "number of height differences         1\n"
                      "number of horizontal directions      1\n"
                      "number of vertical angles            1\n"
                      "number of azimuth angles             1\n"
                      "number of GPS baselines              1\n"
                      "number of fixed heights              1\n"
                      "number of photo coordinates pair     1\n");
}

TEST_F(Counts, OfNothingAreLeftOut)
{
    for (int *n : counts()) *n = -1;
    EXPECT_EQ(text(), "\nSummary\n3D problem\n");
}

TEST_F(Counts, OfDistancesSayHowTheyWereReduced)
{
    V(l.run, ndist) = 1;
    V(l.run, iredux) = 3;
    (V(l.run, summary)());
    V(l.run, ndist) = 12;
    V(l.run, iredux) = 1;
    (V(l.run, summary)());
    V(l.run, iredux) = 2;
    (V(l.run, summary)());
    V(l.run, iredux) = -1;
    EXPECT_EQ(text(),
              "\nSummary\n3D problem\nnumber of distances                  1  (reduced to horizontal with code 3)\n"
              "\nSummary\n3D problem\nnumber of distances                 12\n"
              "\nSummary\n3D problem\nnumber of distances                 12  (reduced to horizontal with code 2)\n"
              "\nSummary\n3D problem\nnumber of distances                 12  (reduced to horizontal with code -1)\n");
}

// ---- summary2 --------------------------------------------------------------------

void translate(Loaded &l, double x, double y, double z)
{
    const double by[3] = {x, y, z};
    for (int c = 0; c < 3; c++) V(l.run, trans)[c] = by[c];
}

std::string summary2_of(Loaded &l)
{
    (V(l.run, summary2)());
    return l.net.report();
}

TEST(Summary2, CountsTheUnknowns)
{
    Loaded l(2, 0, 0);
    EXPECT_EQ(summary2_of(l), "");
    V(l.run, nunk1) = 123456;
    V(l.run, nunk2) = 7;
    V(l.run, ndatum) = 4;
    EXPECT_EQ(summary2_of(l), "number of coordinates unknowns   123456\n"
                              "number of nuisance parameters        7\n"
                              "number of datum parameters           4\n");
}

TEST(Summary2, ShowsCountsFromOneOn)
{
    Loaded l(2, 0, 0);
    V(l.run, nunk1) = V(l.run, nunk2) = V(l.run, ndatum) = 1;
    EXPECT_EQ(summary2_of(l), "number of coordinates unknowns       1\n"
                              "number of nuisance parameters        1\n"
                              "number of datum parameters           1\n");
}

TEST(Summary2, LeavesOutCountsBelowOne)
{
    Loaded l(2, 0, 0);
    V(l.run, nunk1) = V(l.run, nunk2) = V(l.run, ndatum) = -1;
    EXPECT_EQ(summary2_of(l), "");
}

TEST(Summary2, CountsThePointsOfAConnectedNet)
{
    for (int icon = 1; icon <= 3; icon++) {
        Loaded l(2, 0, 0);
        V(l.run, icon) = icon;
        V(l.run, nexport) = 3;
        V(l.run, nimport) = 12;
        EXPECT_EQ(summary2_of(l), "\nnumber of exported points             3\n"
                                  "number of imported points            12\n");
    }
}

TEST(Summary2, DescribesTheEarthModel)
{
    for (int iearth = 1; iearth <= 2; iearth++) {
        Loaded l(3, 0, 0);
        V(l.run, iearth) = iearth;
        V(l.run, radius) = 6378000.0;
        V(l.run, horigin) = -12.5;
        translate(l, 1000.0, -2000.25, 0.0000006);
        EXPECT_EQ(summary2_of(l), "\nradius of sphere  6378000.000000\n"
                                  "height of origin      -12.500000\n"
                                  "translation          1000.000000    -2000.250000        0.000001\n");
    }
}

// ---- outputapprox ----------------------------------------------------------------

std::string values_of(Loaded &l)
{
    (V(l.run, outputapprox)());
    return l.net.report();
}

TEST(OutputApprox, PrintsTheHeightOfALevelNetwork)
{
    Loaded l(1, 1, 1);
    l.at(0).xpt[2] = 12.3456789;
    l.at(0).defdatum[2] = DATUM_WEIGHTED;
    l.at(1).xpt[2] = -1.0;
    V(l.run, trans)[2] = 100.0; // not added here
    EXPECT_EQ(values_of(l), "\nApproximate values\n\n"
                            "S0                   12.345679w\n"
                            "T0                   -1.000000 \n");
}

TEST(OutputApprox, MarksTheStateOfAHeightByTheLastTestThatMatches)
{
    Loaded l(1, 0, 7);
    l.at(1).defdatum[2] = DATUM_WEIGHTED;
    l.at(2).defdatum[2] = DATUM_UNUSED;
    l.at(3).n0[2] = N_NONE;
    l.at(4).defdatum[2] = DATUM_UNUSED, l.at(4).n0[2] = N_NONE;
    l.at(5).defdatum[2] = DATUM_FIXED_HEIGHT, l.at(5).n0[2] = N_NONE;
    l.at(6).defdatum[2] = DATUM_FIXED_HEIGHT, l.at(6).n0[2] = 0; // a number, not a code
    EXPECT_EQ(values_of(l), "\nApproximate values\n\n"
                            "T0                    0.000000 \n"
                            "T1                    0.000000w\n"
                            "T2                    0.000000o\n"
                            "T3                    0.000000f\n"
                            "T4                    0.000000f\n"
                            "T5                    0.000000h\n"
                            "T6                    0.000000h\n");
}

TEST(OutputApprox, TakesUnknownNumberZeroForAnUnknown)
{
    Loaded l(2, 1, 0);
    l.at(0).n0[0] = 0, l.at(0).n0[1] = 1, l.at(0).n1[2] = 0;
    EXPECT_EQ(values_of(l), "\nApproximate values\n\n"
                            "S0                    0.000000        0.000000               0.000000 \n");
}

TEST(OutputApprox, PrintsOnlyItsHeadWithoutPointsAndInNoKnownDimension)
{
    Loaded none(3, 0, 0), odd(0, 1, 1);
    EXPECT_EQ(values_of(none), "\nApproximate values\n\n");
    EXPECT_EQ(values_of(odd), "\nApproximate values\n\n");
}

TEST(OutputApprox, PrintsPlanePositionsAndTheOrientationOfStations)
{
    Loaded l(2, 3, 2);
    translate(l, 100.0, 200.0, 0.0);
    for (int i = 0; i < 5; i++) l.at(i).xpt[0] = i, l.at(i).xpt[1] = 0.5;
    l.at(0).xex[2] = 1.25;
    l.at(0).defdatum[3] = l.at(0).defdatum[4] = -1; // of rotations out of the plane
    l.at(1).n1[2] = -1;
    l.at(2).n1[2] = -1, l.at(2).defdatum[5] = -1;
    l.at(1).defdatum[0] = -1;
    l.at(1).defdatum[1] = 0;
    l.at(2).defdatum[0] = 0, l.at(2).n0[0] = -1;
    l.at(2).defdatum[1] = -1, l.at(2).n0[1] = -1;
    l.at(3).defdatum[1] = -3; // means something for heights only
    EXPECT_EQ(values_of(l), "\nApproximate values\n\n"
                            "S0                  100.000000      200.500000               1.250000 \n"
                            "S1                  101.000000w     200.500000o              0.000000f\n"
                            "S2                  102.000000f     200.500000f              0.000000w\n"
                            "T0                  103.000000      200.500000 \n"
                            "T1                  104.000000      200.500000 \n");
}

TEST(OutputApprox, PrintsPositionsAndRotationsInSpace)
{
    Loaded l(3, 2, 1);
    for (int c = 0; c < 3; c++) {
        V(l.run, trans)[c] = 10.0 * (c + 1);
        l.at(0).xpt[c] = c;
        l.at(0).xex[c] = -c;
    }
    l.at(0).n1[0] = -1;
    l.at(0).n1[1] = -1, l.at(0).defdatum[4] = -1;
    l.at(1).defdatum[2] = -3, l.at(1).n0[2] = -1;   // h wins over f
    l.at(1).defdatum[0] = l.at(1).defdatum[1] = -3; // means something for heights only
    l.at(1).defdatum[3] = l.at(1).defdatum[5] = -1;
    l.at(1).n1[1] = -1;
    l.at(2).n0[0] = -1;
    l.at(2).defdatum[1] = -1;
    l.at(2).defdatum[2] = 0;
    l.at(2).n1[0] = -1; // of no interest
    EXPECT_EQ(values_of(l), "\nApproximate values\n\n"
                            "S0                   10.000000       21.000000       32.000000 \n"
                            "                      0.000000f      -1.000000w      -2.000000 \n"
                            "S1                   10.000000       20.000000       30.000000h\n"
                            "                      0.000000w       0.000000f       0.000000w\n"
                            "T0                   10.000000f      20.000000w      30.000000o\n");
}

TEST(OutputApprox, PrintsHeightsInMixedCoordinates)
{
    Loaded l(3, 1, 1);
    V(l.run, iearth) = 2;
    V(l.run, radius) = 1000.0;
    V(l.run, horigin) = 4.0;
    translate(l, 10.0, 20.0, 30.0);
    l.at(0).xpt[0] = 30.0;
    l.at(0).xpt[1] = 40.0;
    l.at(0).xpt[2] = 94.75;
    l.at(0).h = 250.0;    // (900 + 1600) / (2 (1000 + 250)) = 1
    l.at(1).xpt[2] = 7.0; // at the origin: 7 + 4 + 30
    EXPECT_EQ(values_of(l), "\nApproximate values\n\n"
                            "S0                   40.000000       60.000000      129.750000 \n"
                            "                      0.000000        0.000000        0.000000 \n"
                            "T0                   10.000000       20.000000       41.000000 \n");
}

TEST(OutputApprox, PrintsTheThirdCartesianCoordinateAsItIs)
{
    Loaded l(3, 0, 1);
    V(l.run, iearth) = 1;
    V(l.run, radius) = 1000.0;
    V(l.run, horigin) = 4.0;
    l.at(0).xpt[0] = 30.0;
    l.at(0).h = 250.0;
    EXPECT_EQ(values_of(l), "\nApproximate values\n\n"
                            "T0                   30.000000        0.000000        0.000000 \n");
}

// ---- showpoints ------------------------------------------------------------------

std::string points_of(Loaded &l)
{
    (V(l.run, showpoints)());
    return l.net.report();
}

TEST(ShowPoints, ListsEveryFieldOfEveryPoint)
{
    Loaded l(3, 1, 1);
    point &p = l.at(0);
    for (int c = 0; c < 3; c++) {
        p.xpt[c] = 1 + c;
        p.x0[c] = -11 - c;
        p.sxpt[c] = 0.000021 + 0.000001 * c;
        p.n0[c] = 31 + c;
        for (int k = 0; k < 3; k++) p.ell[c][k] = 41 + 10 * c + k;
    }
    p.h = 123456.789013;
    for (int c = 0; c < 6; c++) {
        p.xex[c] = 100 + c;
        p.e0[c] = 200 + c;
        p.sxex[c] = 300 + c;
        p.n1[c] = 400 + c;
    }
    for (int c = 0; c < 8; c++) p.defdatum[c] = c - 4;
    p.ntie = 17;
    p.typ = 1;
    for (int c = 0; c < 9; c++) V(l.run, ia1)[c] = 70 + c;
    EXPECT_EQ(points_of(l),
              "\n points[0]     S0      \n"
              "  xpt           1.000000        2.000000        3.000000\n"
              "  x0          -11.000000      -12.000000      -13.000000\n"
              "  sxpt          0.000021        0.000022        0.000023\n"
              "  h        123456.789013\n"
              "  xex         100.000000      101.000000      102.000000        103.000000      104.000000\n"
              "  e0          200.000000      201.000000      202.000000        203.000000      204.000000\n"
              "  sxex        300.000000      301.000000      302.000000        303.000000      304.000000\n"
              "  n0          31  32  33\n"
              "  n1         400 401 402    403 404\n"
              "  defdatum    -4  -3  -2     -1   0   1       2   3\n"
              "  ntie        17\n"
              "  typ          1\n"
              "  ell         41.000000       51.000000       61.000000\n"
              "              42.000000       52.000000       62.000000\n"
              "              43.000000       53.000000       63.000000\n"
              "\n points[1]     T0      \n"
              "  xpt           0.000000        0.000000        0.000000\n"
              "  x0            0.000000        0.000000        0.000000\n"
              "  sxpt          0.000000        0.000000        0.000000\n"
              "  h             0.000000\n"
              "  xex           0.000000        0.000000        0.000000          0.000000        0.000000\n"
              "  e0            0.000000        0.000000        0.000000          0.000000        0.000000\n"
              "  sxex          0.000000        0.000000        0.000000          0.000000        0.000000\n"
              "  n0           1   1   1\n"
              "  n1           0   0   0      0   0\n"
              "  defdatum     1   1   1      0   0   0       0   0\n"
              "  ntie         0\n"
              "  typ          0\n"
              "  ell          0.000000        0.000000        0.000000\n"
              "               0.000000        0.000000        0.000000\n"
              "               0.000000        0.000000        0.000000\n"
              "\n  ia1         70  71  72    73  74  75          76  77\n");
}

TEST(ShowPoints, EndsWithTheCountsWhenThereIsNoPoint)
{
    Loaded l(3, 0, 0);
    EXPECT_EQ(points_of(l), "\n  ia1          0   0   0     0   0   0           0   0\n");
}

// ---- showmeasures ----------------------------------------------------------------

class ShowMeasures : public ::testing::Test {
protected:
    ShowMeasures() : l(3, 1, 2) {}

    // One list of n records from the station to both targets in turn, filled from number on.
    void list(measure **m, int *n, int count, double number)
    {
        *m = Loaded::array<measure>(count);
        *n = count;
        for (int i = 0; i < count; i++) {
            measure &o = (*m)[i];
            o.p1 = &l.at(0);
            o.p2 = &l.at(1 + i % 2);
            o.typ = i;
            o.h1 = number + 0.1;
            o.h2 = number + 0.2;
            o.val[0] = number + 0.3;
            o.val[1] = number + 0.4;
            o.res[0] = -number - 0.5;
            o.res[1] = number + 0.6;
        }
    }

    // What has left the buffer of the stream, read behind its back.
    std::string on_disk()
    {
        std::string text(1 << 16, '\0');
        const ssize_t n = pread(fileno(l.net.p.out), &text[0], text.size(), 0);
        text.resize(n > 0 ? n : 0);
        return text;
    }

    Loaded l;
};

TEST_F(ShowMeasures, PrintsTheHeadsOfEmptyLists)
{
    (V(l.run, showmeasures)());
    EXPECT_EQ(l.net.report(), "\nDistances      ndist = 0\n"
                              "\nHeight difference      ndifh = 0\n"
                              "\nHorizontal directions      ndir1 = 0\n"
                              "\nVertival angles      ndir2 = 0\n"
                              "\nAzimuth angles      naz = 0\n"
                              "\nGPS baselines        ngps = 0\n"
                              "\nImage coordinates    nobsuv= 0\n");
}

TEST_F(ShowMeasures, PrintsFourLinesForEachObservationOfTheFiveLists)
{
    list(&V(l.run, dist), &V(l.run, ndist), 2, 10);
    list(&V(l.run, difh), &V(l.run, ndifh), 1, 20);
    list(&V(l.run, dir1), &V(l.run, ndir1), 1, 30);
    list(&V(l.run, dir2), &V(l.run, ndir2), 1, 40);
    list(&V(l.run, az), &V(l.run, naz), 1, 50);
    (V(l.run, showmeasures)());
    EXPECT_EQ(l.net.report(), "\nDistances      ndist = 2\n"
                              "    0      typ   0\n"
                              "  S0              10.10000       T0              10.20000\n"
                              "     val          10.300000           10.400000\n"
                              "     res         -10.500000           10.600000\n"
                              "    1      typ   1\n"
                              "  S0              10.10000       T1              10.20000\n"
                              "     val          10.300000           10.400000\n"
                              "     res         -10.500000           10.600000\n"
                              "\nHeight difference      ndifh = 1\n"
                              "    0      typ   0\n"
                              "  S0              20.10000       T0              20.20000\n"
                              "     val          20.300000           20.400000\n"
                              "     res         -20.500000           20.600000\n"
                              "\nHorizontal directions      ndir1 = 1\n"
                              "    0      typ   0\n"
                              "  S0              30.10000       T0              30.20000\n"
                              "     val          30.300000           30.400000\n"
                              "     res         -30.500000           30.600000\n"
                              "\nVertival angles      ndir2 = 1\n"
                              "    0      typ   0\n"
                              "  S0              40.10000       T0              40.20000\n"
                              "     val          40.300000           40.400000\n"
                              "     res         -40.500000           40.600000\n"
                              "\nAzimuth angles      naz = 1\n"
                              "    0      typ   0\n"
                              "  S0              50.10000       T0              50.20000\n"
                              "     val          50.300000           50.400000\n"
                              "     res         -50.500000           50.600000\n"
                              "\nGPS baselines        ngps = 0\n"
                              "\nImage coordinates    nobsuv= 0\n");
}

TEST_F(ShowMeasures, PrintsBaselinesAndImageCoordinates)
{
    V(l.run, ngps) = 2;
    V(l.run, gps) = Loaded::array<gpsbase>(2);
    for (int i = 0; i < 2; i++) {
        gpsbase &g = V(l.run, gps)[i];
        g.p1 = &l.at(0);
        g.p2 = &l.at(1 + i);
        for (int c = 0; c < 3; c++) g.dx[c] = 10 * i + c + 0.25;
    }
    int n = 0;
    list(&V(l.run, obsuv1), &n, 2, 60);
    list(&V(l.run, obsuv2), &n, 2, 70);
    V(l.run, nobsuv) = n;
    for (int i = 0; i < n; i++) V(l.run, obsuv1)[i].typ = V(l.run, obsuv2)[i].typ = 3 + i;
    (V(l.run, showmeasures)());
    const std::string text = l.net.report();
    EXPECT_EQ(text.substr(text.find("\nGPS")), "\nGPS baselines        ngps = 2\n"
                                               "  S0           T0       \n"
                                               "          0.250000            1.250000            2.250000\n"
                                               "  S0           T1       \n"
                                               "         10.250000           11.250000           12.250000\n"
                                               "\nImage coordinates    nobsuv= 2\n"
                                               "  S0        T0                  60.30000       70.300000     3\n"
                                               "  S0        T1                  60.30000       70.300000     4\n");
}

TEST_F(ShowMeasures, LeavesOutAnImageCoordinateThatWasNeverRead)
{
    int n = 0;
    list(&V(l.run, obsuv1), &n, 3, 60);
    list(&V(l.run, obsuv2), &n, 3, 70);
    V(l.run, nobsuv) = n;
    V(l.run, obsuv1)[0].p2 = NULL;
    V(l.run, obsuv1)[1].p1 = NULL;
    (V(l.run, showmeasures)());
    const std::string text = l.net.report();
    EXPECT_EQ(text.substr(text.find("\nImage")), "\nImage coordinates    nobsuv= 3\n"
                                                 "  S0        T0                  60.30000       70.300000     2\n");
}

TEST_F(ShowMeasures, SendsTheReportOnItsWay)
{
    (V(l.run, showpoints)());
    EXPECT_NE(on_disk().find("\n  ia1 "), std::string::npos);
    (V(l.run, showmeasures)());
    EXPECT_NE(on_disk().find("nobsuv= 0\n"), std::string::npos);
}

} // namespace
