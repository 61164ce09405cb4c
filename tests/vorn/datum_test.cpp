// The datum check, with codes and counts set by hand: every result, line and rule.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "support/access.h"
#include "support/network.h"

namespace {

// A vorn with n points in its arrays as loading leaves them, all coordinates free.
class Loaded {
public:
    Loaded(int dim, int nsta, int ntar) : net(dim), run(net.ready())
    {
        V(run, nsta) = nsta;
        V(run, ntar) = ntar;
        V(run, npoints) = nsta + ntar;
        V(run, points) = (point *)calloc((size_t)(nsta + ntar), sizeof(point));
        for (int i = 0; i < nsta + ntar; i++) {
            point &p = at(i);
            strcpy(p.name, ("P" + std::to_string(i)).c_str());
            for (int c = 0; c < 3; c++) {
                p.n0[c] = c < dim || dim == 3 ? N_UNKNOWN : N_NONE;
                p.n1[c] = N_UNKNOWN;
                p.defdatum[c] = DATUM_USED;
            }
            if (dim == 1) p.n0[0] = p.n0[1] = N_NONE, p.n0[2] = N_UNKNOWN;
            p.ntie = 99;
        }
        for (int i = 0; i < 7; i++) V(run, datum)[i] = 7.0;
        V(run, ndatum) = -5; // shows whether it is written
    }

    point &at(int i) { return V(run, points)[i]; }

    void fix(int i, int first, int last)
    {
        for (int c = first; c <= last; c++) {
            at(i).n0[c] = N_NONE;
            V(run, ia1)[c]++;
        }
    }

    measure *list(int n)
    {
        measure *m = (measure *)calloc((size_t)n, sizeof(measure));
        for (int i = 0; i < n; i++) {
            m[i].p1 = &at(0);
            m[i].p2 = &at(1);
        }
        return m;
    }

    int check() { return V(run, datumcheck)(); }
    std::string text() { return net.report(); }
    std::string conditions() // the entries of datum that were set
    {
        std::string s;
        for (int i = 0; i < 7; i++)
            if (V(run, datum)[i] == 0.0) s += std::to_string(i);
        return s;
    }

    Network net;
    vorn run;
};

TEST(Datum, RefusesAnotherDimension)
{
    Loaded n(2, 0, 2);
    V(n.run, dim) = 4;
    EXPECT_EQ(n.check(), -2);
    EXPECT_EQ(n.text(), "\ndatumcheck: Problem with the dimension\n");
}

TEST(Datum1D, IsHeldByFixedHeights)
{
    Loaded n(1, 0, 3);
    n.fix(0, 2, 2);
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(V(n.run, ndatum), -5); // untouched
    EXPECT_EQ(n.text(), "");
}

TEST(Datum1D, TracesFixedHeights)
{
    Loaded n(1, 0, 3);
    V(n.run, idebug) = 1;
    n.fix(0, 2, 2);
    n.fix(2, 2, 2);
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.text(), "\nTo define the datum, 2 coordonates fixed\n\n");
}

TEST(Datum1D, StillLooksAtTheObservationsOfFixedNetworks)
{
    Loaded n(1, 0, 2);
    n.fix(0, 2, 2);
    n.at(1).ntie = 0;
    EXPECT_EQ(n.check(), -7);
    EXPECT_EQ(n.text(), "\ndatumcheck: Not enough observations for P1\n");
}

TEST(Datum1D, IsWeightedWhenEveryPointIs)
{
    Loaded n(1, 0, 3);
    V(n.run, idebug) = 1;
    V(n.run, nweighted) = 3;
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(V(n.run, ndatum), 0);
    EXPECT_EQ(n.conditions(), "");
    EXPECT_EQ(n.text(), "\ndatumcheck: Weighted network..\n");
}

TEST(Datum1D, IsFreeWhenAPointIsNotWeighted)
{
    Loaded n(1, 0, 3);
    V(n.run, idebug) = 1;
    V(n.run, nweighted) = 2;
    n.at(1).defdatum[2] = DATUM_WEIGHTED;
    n.at(2).defdatum[2] = DATUM_UNUSED;
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(V(n.run, ndatum), 1);
    EXPECT_EQ(n.conditions(), "2");
    EXPECT_EQ(n.text(), "\ndatumcheck: Free network..\n"
                        "Coordinate #3 of point P1 not used for datum definition\n"
                        "Coordinate #3 of point P2 not used for datum definition\n");
}

TEST(Datum1D, NeedsOnePointInTheDatum)
{
    Loaded n(1, 0, 2);
    n.at(0).defdatum[2] = n.at(1).defdatum[2] = DATUM_UNUSED;
    EXPECT_EQ(n.check(), -1);
    EXPECT_EQ(n.text(), "datumcheck: not enough coordinate # 0 to define the datum\n");
}

TEST(Datum2D, OfAFreeNetworkHasThreeConditionsWithDistances)
{
    Loaded n(2, 0, 3);
    V(n.run, ndist) = 1;
    V(n.run, idebug) = 1;
    n.at(1).defdatum[1] = DATUM_UNUSED;
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(V(n.run, ndatum), 3);
    EXPECT_EQ(n.conditions(), "015");
    EXPECT_EQ(n.text(), "\nFree network..\nCoordinate #1 of point P1 not used for datum definition\n");
}

TEST(Datum2D, OfAFreeNetworkHasFourWithoutDistances)
{
    Loaded n(2, 0, 3);
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(V(n.run, ndatum), 4);
    EXPECT_EQ(n.conditions(), "0156");
}

TEST(Datum2D, OfAFreeNetworkNeedsTwoPoints)
{
    Loaded n(2, 0, 3);
    for (int i = 0; i < 2; i++) n.at(i).defdatum[1] = DATUM_UNUSED;
    EXPECT_EQ(n.check(), -1);
    EXPECT_EQ(n.text(), "datumcheck: not enough coordinate # 1 to define the datum\n");
}

TEST(Datum2D, IsWeightedFromFourItemsOn)
{
    for (int weighted = 3; weighted <= 4; weighted++) {
        Loaded n(2, 0, 3);
        V(n.run, idebug) = 1;
        V(n.run, nweighted) = weighted;
        EXPECT_EQ(n.check(), 0);
        EXPECT_EQ(V(n.run, ndatum), weighted == 4 ? 0 : 4);
        EXPECT_EQ(n.text(), weighted == 4 ? "\nWeighted network..\n" : "\nFree network..\n");
    }
}

TEST(Datum2D, OfOneFixedStationFixesItsOrientation)
{
    Loaded n(2, 3, 1);
    V(n.run, ndist) = 1;
    n.fix(1, 0, 1);
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.at(0).n1[2], N_UNKNOWN);
    EXPECT_EQ(n.at(1).n1[2], N_NONE);
    EXPECT_EQ(n.at(2).n1[2], N_UNKNOWN);
    EXPECT_EQ(V(n.run, ia1)[5], 1);
    EXPECT_EQ(n.text(), "");
}

TEST(Datum2D, OfOneFixedStationIsNotEnoughWithoutDistance)
{
    Loaded n(2, 1, 1);
    n.fix(0, 0, 1);
    EXPECT_EQ(n.check(), -22);
    EXPECT_EQ(n.text(), "datumcheck: Not enough information to define a datum\n"
                        "\nTo define the datum, 1 x1 fixed\n"
                        "                     1 x2 \n"
                        "                     1 rotations \n"
                        "                     0 distances \n\n");
}

TEST(Datum2D, OfOneFixedTargetHasNoOrientationToFix)
{
    Loaded n(2, 1, 1);
    V(n.run, ndist) = 3;
    n.fix(1, 0, 1);
    EXPECT_EQ(n.check(), -22);
    EXPECT_EQ(n.at(0).n1[2], N_UNKNOWN);
    EXPECT_NE(n.text().find("                     0 rotations \n                     3 distances \n\n"),
              std::string::npos);
}

TEST(Datum2D, OfTwoFixedPointsNeedsNoDistance)
{
    Loaded n(2, 0, 3);
    n.fix(0, 0, 1);
    n.fix(1, 0, 1);
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.text(), "");
}

TEST(Datum2D, CountsAtMostTwoFixedCoordinatesOfAnAxis)
{
    Loaded n(2, 0, 5);
    for (int i = 0; i < 4; i++) n.fix(i, 0, 0);
    V(n.run, ndist) = 1; // 2 + 0 + 1
    EXPECT_EQ(n.check(), -22);
    n.fix(0, 1, 1);
    EXPECT_EQ(n.check(), 0);
}

TEST(Datum3D, DropsHeightsOfInstrumentsThatAreNotLevelled)
{
    Loaded n(3, 2, 2);
    n.fix(2, 0, 2);
    n.fix(3, 0, 2);
    n.fix(0, 0, 2);
    V(n.run, ndist) = 1;
    n.at(1).typ = 1;
    V(n.run, dir1) = n.list(3);
    V(n.run, ndir1) = 3;
    V(n.run, dir2) = n.list(2);
    V(n.run, ndir2) = 2;
    measure *d1 = V(n.run, dir1), *d2 = V(n.run, dir2);
    d1[0].h1 = 1.5;
    d1[1].p1 = &n.at(1); // levelled
    d1[1].h1 = 1.5;
    d2[1].h2 = 0.1;
    n.check();
    EXPECT_EQ(n.text(), "datumcheck: Cannot do dir1 reduction with non-levelled instrument\n"
                        "     P0  P1\n"
                        "datumcheck: Cannot do dir2 reduction with non-levelled instrument\n"
                        "     P0  P1\n");
    EXPECT_EQ(d1[0].h1, 0.0);
    EXPECT_EQ(d1[1].h1, 1.5);
    EXPECT_EQ(d2[1].h2, 0.0);
}

TEST(Datum3D, OfAFreeNetworkFollowsTheKindsOfObservation)
{
    struct {
        int naz, ndifh, ndist, igps, ndatum;
        const char *conditions;
    } const cases[] = {
        {1, 1, 1, 0, 3, "012"},    {0, 0, 0, 0, 7, "0123456"}, {1, 0, 1, 0, 6, "01234"},
        {1, 0, 0, 0, 7, "012346"}, {0, 1, 1, 0, 4, "0125"},    {0, 1, 0, 0, 5, "01256"},
        {0, 0, 1, 0, 6, "012345"}, {0, 0, 0, 9, 3, "0123456"}, {1, 1, 0, 1, 4, "0126"},
    };
    for (const auto &c : cases) {
        Loaded n(3, 1, 3);
        V(n.run, naz) = c.naz;
        V(n.run, ndifh) = c.ndifh;
        V(n.run, ndist) = c.ndist;
        n.net.p.igps = c.igps;
        EXPECT_EQ(n.check(), 0);
        EXPECT_EQ(V(n.run, ndatum), c.ndatum);
        EXPECT_EQ(n.conditions(), c.conditions);
        EXPECT_EQ(n.text(), "");
    }
}

TEST(Datum3D, OfAFreeNetworkIsStrangeWithFixedRotations)
{
    // The rotations about the third axis count among the fixed items; targets with a
    // status above 100 take two away.
    Loaded n(3, 1, 3);
    V(n.run, ia1)[5] = 2;
    V(n.run, nstat100) = 1;
    EXPECT_EQ(n.check(), -3);
    EXPECT_EQ(n.text(), "\ndatumcheck: Strange...\nSome Rx3 fixed\n");

    Loaded m(3, 1, 3);
    V(m.run, ia1)[3] = 2;
    EXPECT_EQ(m.check(), -3);
    EXPECT_EQ(m.text(), "\ndatumcheck: Strange...\nNo Rx2 fixed but 2 Rx1 fixed\n");
}

TEST(Datum3D, OfAFreeNetworkWithRx2FixedAndRx1FreeIsNoFailure)
{
    Loaded n(3, 1, 3);
    V(n.run, ia1)[4] = 1;
    V(n.run, ndist) = 1;
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(V(n.run, ndatum), 6);
}

TEST(Datum3D, OfAFreeNetworkWithLevelledStationsHasFourConditions)
{
    Loaded n(3, 1, 3);
    V(n.run, ia1)[3] = V(n.run, ia1)[4] = 1;
    V(n.run, ndist) = 1;
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(V(n.run, ndatum), 4);
    EXPECT_EQ(n.conditions(), "0125");
}

TEST(Datum3D, OfAFreeNetworkNeedsThreePoints)
{
    Loaded n(3, 0, 4);
    n.at(0).defdatum[2] = n.at(1).defdatum[2] = DATUM_UNUSED;
    V(n.run, idebug) = 1;
    EXPECT_EQ(n.check(), -1);
    EXPECT_EQ(n.text(), "\nFree network..\n"
                        "Coordinate #2 of point P0 not used for datum definition\n"
                        "Coordinate #2 of point P1 not used for datum definition\n"
                        "datumcheck: not enough coordinate # 2 to define the datum\n");
}

TEST(Datum3D, IsWeightedFromSevenItemsOn)
{
    for (int weighted = 6; weighted <= 7; weighted++) {
        Loaded n(3, 0, 3);
        V(n.run, idebug) = 1;
        V(n.run, nweighted) = weighted;
        EXPECT_EQ(n.check(), 0);
        EXPECT_EQ(V(n.run, ndatum), weighted == 7 ? 0 : 7);
        EXPECT_EQ(n.text(), weighted == 7 ? "\nWeighted network..\n" : "\nFree network..\n");
    }
}

TEST(Datum3D, TakesStatusAbove100OffTheFixedItems)
{
    Loaded n(3, 0, 4);
    n.fix(0, 0, 0);
    n.fix(1, 2, 2);
    V(n.run, nstat100) = 1;
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(V(n.run, ndatum), 7); // treated as free
}

TEST(Datum3D, OfOneFixedStationFixesItsRotations)
{
    Loaded n(3, 2, 2);
    V(n.run, ndist) = 1;
    n.fix(1, 0, 2);
    EXPECT_EQ(n.check(), 0);
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(n.at(0).n1[i], N_UNKNOWN);
        EXPECT_EQ(n.at(1).n1[i], N_NONE);
        EXPECT_EQ(V(n.run, ia1)[3 + i], 1);
    }
    EXPECT_EQ(n.text(), "");
}

TEST(Datum3D, OfOneFixedStationWithHeightDifferencesFixesTheThirdRotationOnly)
{
    Loaded n(3, 2, 2);
    V(n.run, ndist) = 1;
    V(n.run, difh) = n.list(1);
    V(n.run, ndifh) = 1;
    n.fix(0, 0, 1);
    n.at(0).defdatum[2] = DATUM_FIXED_HEIGHT; // stands for the third coordinate
    V(n.run, nfixh) = 1;
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.at(0).n1[0], N_UNKNOWN);
    EXPECT_EQ(n.at(0).n1[1], N_UNKNOWN);
    EXPECT_EQ(n.at(0).n1[2], N_NONE);
    EXPECT_EQ(n.text(), "");
}

TEST(Datum3D, FreesTheFixedRotationAgainWhereAzimuthsAreObserved)
{
    Loaded n(3, 2, 2);
    V(n.run, ndist) = 1;
    V(n.run, naz) = 1;
    n.fix(0, 0, 2);
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.at(0).n1[0], N_NONE);
    EXPECT_EQ(n.at(0).n1[2], N_UNKNOWN);
    EXPECT_EQ(V(n.run, ia1)[5], 0);
}

TEST(Datum3D, ShortOfConstraintsPrintsThemAndGoesOn)
{
    Loaded n(3, 1, 3);
    n.fix(1, 0, 1);
    n.fix(2, 0, 0);
    n.at(3).defdatum[2] = DATUM_FIXED_HEIGHT;
    V(n.run, nfixh) = 1;
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.text(), "datumcheck: Not enough information to define a datum\n"
                        "\nTo define the datum, 2 x1 fixed\n"
                        "                     1 x2 \n"
                        "                     1 x3 \n"
                        "                     0 Rx1 \n"
                        "                     0 Rx2 \n"
                        "                     0 Rx3 \n"
                        "                     0 distances \n\n");
}

TEST(Datum3D, OfOneFixedTargetAndADistanceBecomesMixed)
{
    Loaded n(3, 1, 2);
    V(n.run, ndist) = 1;
    for (int i = 0; i < 3; i++)
        for (int c = 0; c < 3; c++) n.at(i).xpt[c] = 10.0 * (i + 1) + c;
    n.fix(2, 0, 2);
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.net.p.imixed, 2);
    EXPECT_EQ(V(n.run, ndatum), 3);
    for (int c = 0; c < 3; c++) {
        EXPECT_EQ(n.at(0).xpt[c], -20.0);
        EXPECT_EQ(n.at(2).xpt[c], 0.0);
        EXPECT_EQ(n.at(1).x0[c], -10.0);
    }
    EXPECT_NE(n.text().find("                     1 distances \n\n\nOnly P2 fixed, experiment with mixed datum\n"),
              std::string::npos);
}

TEST(Datum3D, WithItsFixedCoordinatesOnSeveralPointsCannotBeMixed)
{
    Loaded n(3, 1, 2);
    V(n.run, ndist) = 1;
    n.fix(0, 0, 0);
    n.fix(1, 1, 1);
    n.fix(2, 2, 2);
    EXPECT_EQ(n.check(), -22);
    EXPECT_EQ(n.net.p.imixed, -1);
}

TEST(Datum3D, TakesScaleAndOrientationFromBaselines)
{
    for (int igps : {0, 1, 2, 9}) {
        Loaded n(3, 0, 4);
        n.net.p.igps = igps;
        n.fix(0, 0, 2);
        n.fix(1, 0, 0); // 2 + 1 + 1
        EXPECT_EQ(n.check(), 0);
        EXPECT_EQ(n.text() == "", igps == 1 || igps == 9) << igps; // 4 + 3 + 1
    }
}

TEST(DatumTail, AsksForAsManyObservationsAsFreeCoordinates)
{
    Loaded n(2, 0, 3);
    V(n.run, ndist) = 1;
    n.at(1).ntie = 1;
    EXPECT_EQ(n.check(), -7);
    EXPECT_EQ(n.text(), "\ndatumcheck: Not enough observations for P1\n");
    Loaded m(2, 0, 3);
    V(m.run, ndist) = 1;
    m.at(1).ntie = 1;
    m.at(1).n0[0] = N_NONE; // one free coordinate, one observation
    EXPECT_EQ(m.check(), 0);
}

// The point is compared, as often as there are height differences, with height difference
// number 2, two being its free coordinates.
TEST(DatumTail, LetsAPointWeightedInThePlanePassByARoughComparisonOfNames)
{
    Loaded n(2, 0, 4);
    V(n.run, idebug) = 1;
    V(n.run, ndist) = 1;
    V(n.run, difh) = n.list(3);
    V(n.run, ndifh) = 3;
    V(n.run, difh)[2].p1 = &n.at(1); // P1 and P3: the name P1 is equal to the first only
    V(n.run, difh)[2].p2 = &n.at(3);
    n.at(1).ntie = 1;
    n.at(1).defdatum[0] = n.at(1).defdatum[1] = DATUM_WEIGHTED;
    V(n.run, nweighted) = 4;
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.text(), "\nWeighted network..\n"
                        "\ndatumcheck: Not enough observations for P1\n"
                        "\ndatumcheck:P1 shot only in height (3)\n");

    V(n.run, difh)[2].p1 = &n.at(2); // both names are greater
    EXPECT_EQ(n.check(), -7);
    V(n.run, ndifh) = 2; // there is no height difference number 2
    EXPECT_EQ(n.check(), -7);
    V(n.run, ndifh) = 3;
    V(n.run, difh)[2].p1 = &n.at(0);
    n.at(1).defdatum[1] = DATUM_USED; // not weighted in both
    EXPECT_EQ(n.check(), -7);
}

} // namespace
