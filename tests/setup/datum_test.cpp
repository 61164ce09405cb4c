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

TEST(Datum1D, StillLooksAtTheObservationsOfWeightedNetworks)
{
    Loaded n(1, 0, 3);
    V(n.run, nweighted) = 3;
    n.at(2).ntie = 0;
    EXPECT_EQ(n.check(), -7);
    EXPECT_EQ(n.text(), "\ndatumcheck: Not enough observations for P2\n");
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

    Loaded m(2, 0, 5);
    for (int i = 0; i < 4; i++) m.fix(i, 1, 1);
    V(m.run, ndist) = 4; // 0 + 2 + 1
    EXPECT_EQ(m.check(), -22);
}

TEST(Datum2D, FixesNoOrientationUnlessOneStationIsFixedAndNothingElse)
{
    Loaded n(2, 2, 2); // one coordinate too many
    V(n.run, ndist) = 1;
    n.fix(0, 0, 1);
    n.fix(2, 1, 1);
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.at(0).n1[2], N_UNKNOWN);

    Loaded m(2, 2, 2);
    V(m.run, ndist) = 1;
    m.fix(0, 0, 1);
    m.fix(2, 0, 0);
    EXPECT_EQ(m.check(), 0);
    EXPECT_EQ(m.at(0).n1[2], N_UNKNOWN);

    Loaded r(2, 2, 2); // another station has its orientation fixed
    V(r.run, ndist) = 1;
    r.fix(0, 0, 1);
    r.at(1).n1[2] = N_NONE, V(r.run, ia1)[5] = 1;
    EXPECT_EQ(r.check(), 0);
    EXPECT_EQ(r.at(0).n1[2], N_UNKNOWN);
}

TEST(Datum2D, FixesNoOrientationWhereTheFixedCoordinatesAreThoseOfTwoStations)
{
    Loaded n(2, 2, 1);
    V(n.run, ndist) = 1;
    n.fix(0, 0, 0);
    n.fix(1, 1, 1);
    EXPECT_EQ(n.check(), -22);
    EXPECT_EQ(n.at(0).n1[2], N_UNKNOWN);
    EXPECT_EQ(n.at(1).n1[2], N_UNKNOWN);
    EXPECT_EQ(n.text(), "datumcheck: Not enough information to define a datum\n"
                        "\nTo define the datum, 1 x1 fixed\n"
                        "                     1 x2 \n"
                        "                     0 rotations \n"
                        "                     1 distances \n\n");
}

TEST(Datum2D, FixesTheOrientationOfTheFirstFixedStationOnly)
{
    Loaded n(2, 3, 0);
    V(n.run, ndist) = 1;
    V(n.run, ia1)[6] = 5; // constants of groups are no rotations
    n.fix(1, 0, 1);
    n.at(2).n0[0] = n.at(2).n0[1] = N_NONE; // fixed as well, but not counted
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.at(1).n1[2], N_NONE);
    EXPECT_EQ(n.at(2).n1[2], N_UNKNOWN);
}

TEST(Datum2D, IsNotFreeWithARotationFixed)
{
    for (int c1 = 0; c1 <= 1; c1++) {
        Loaded n(2, 1, 2);
        V(n.run, ia1)[0] = c1;
        V(n.run, ia1)[5] = 1;
        EXPECT_EQ(n.check(), -22);
        EXPECT_EQ(V(n.run, ndatum), -5); // untouched
    }
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

TEST(Datum3D, FixesNoRotationWhereNoStationIsFixedAsAWhole)
{
    Loaded n(3, 2, 1); // x1, x2, x3 on three points
    V(n.run, ndist) = 1;
    n.fix(0, 0, 0);
    n.fix(1, 1, 1);
    n.fix(2, 2, 2);
    Loaded m(3, 2, 1); // a station without its height
    m.fix(0, 0, 1);
    m.fix(2, 2, 2);
    for (Loaded *l : {&n, &m}) {
        l->check();
        for (int i = 0; i < 3; i++) {
            for (int j = 0; j < 2; j++) EXPECT_EQ(l->at(j).n1[i], N_UNKNOWN);
            EXPECT_EQ(V(l->run, ia1)[3 + i], 0);
        }
    }
}

TEST(Datum3D, FixesNoRotationWhereOtherCoordinatesAreFixedToo)
{
    for (int axis = 0; axis < 3; axis++) {
        Loaded n(3, 1, 2);
        n.fix(0, 0, 2);
        n.fix(1, axis, axis);
        n.check();
        for (int i = 0; i < 3; i++) EXPECT_EQ(n.at(0).n1[i], N_UNKNOWN) << axis;
    }
}

TEST(Datum3D, FixesTheRotationsOfTheFirstFixedStationOnly)
{
    Loaded n(3, 2, 2);
    V(n.run, ndist) = 1;
    n.fix(0, 0, 2);
    for (int c = 0; c < 3; c++) n.at(1).n0[c] = N_NONE; // fixed as well, but not counted
    n.at(0).n1[3] = 4;
    EXPECT_EQ(n.check(), 0);
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(n.at(0).n1[i], N_NONE);
        EXPECT_EQ(n.at(1).n1[i], N_UNKNOWN);
    }
    EXPECT_EQ(n.at(0).n1[3], 4); // a constant is no rotation
    EXPECT_EQ(V(n.run, ia1)[6], 0);
}

TEST(Datum3D, FixesOnlyTheRotationsThatAreFreeInAllStations)
{
    for (int fixed = 0; fixed < 3; fixed++) {
        Loaded n(3, 2, 1);
        V(n.run, ndist) = 1;
        n.fix(0, 0, 2);
        V(n.run, ia1)[3 + fixed] = 2;
        EXPECT_EQ(n.check(), 0);
        for (int i = 0; i < 3; i++) {
            EXPECT_EQ(n.at(0).n1[i], i == fixed ? N_UNKNOWN : N_NONE);
            EXPECT_EQ(V(n.run, ia1)[3 + i], i == fixed ? 2 : 1);
        }
    }
}

TEST(Datum3D, KeepsTheFixedRotationWhereItIsNotOneTooMany)
{
    const struct {
        int c1, r3, ndist, naz;
    } rows[] = {
        {1, 1, 1, 0}, // no azimuths
        {2, 1, 1, 1}, // 7 constraints without the distance
        {2, 1, 0, 1}, // no distance
        {1, 2, 1, 1}, // two rotations fixed
    };
    for (const auto &row : rows) {
        Loaded n(3, 1, 2);
        n.at(0).n1[2] = N_NONE;
        const int counts[6] = {row.c1, 1, 1, 1, 1, row.r3};
        for (int i = 0; i < 6; i++) V(n.run, ia1)[i] = counts[i];
        V(n.run, ndist) = row.ndist;
        V(n.run, naz) = row.naz;
        EXPECT_EQ(n.check(), 0);
        EXPECT_EQ(n.text(), "");
        EXPECT_EQ(n.at(0).n1[2], N_NONE);
        EXPECT_EQ(V(n.run, ia1)[5], row.r3);
    }
}

// Counts of fixed items of a network in space, and whether they are enough: seven, of which
// three at most on an axis and one for each rotation; a distance is one.
TEST(Datum3D, IsDefinedFromSevenConstraintsOn)
{
    const struct {
        int c1, c2, c3, nfixh, r1, r2, r3, ndifh, ndist, igps;
        bool enough;
    } rows[] = {
        {3, 3, 0, 0, 0, 0, 0, 0, 0, 0, false},
        {3, 3, 1, 0, 0, 0, 0, 0, 0, 0, true},
        {4, 3, 0, 0, 0, 0, 0, 0, 0, 0, false}, // three of an axis
        {3, 4, 0, 0, 0, 0, 0, 0, 0, 0, false},
        {3, 0, 4, 0, 0, 0, 0, 0, 0, 0, false},
        {0, 3, 3, 0, 0, 0, 0, 0, 0, 0, false},
        {1, 3, 3, 0, 0, 0, 0, 0, 0, 0, true},
        {3, 1, 3, 0, 0, 0, 0, 0, 0, 0, true},
        {3, 3, 0, 1, 0, 0, 0, 0, 0, 0, true},  // a fixed height counts on the third axis
        {3, 2, 1, 1, 0, 0, 0, 0, 0, 0, false}, // but is not added to fixed coordinates
        {3, 2, 1, 2, 0, 0, 0, 0, 0, 0, true},
        {3, 0, 0, 4, 0, 0, 0, 0, 0, 0, false},
        {3, 3, 0, 0, 1, 0, 0, 0, 0, 0, true}, // rotations
        {3, 2, 0, 0, 2, 0, 0, 0, 0, 0, false},
        {3, 3, 0, 0, 0, 1, 0, 0, 0, 0, true},
        {3, 2, 0, 0, 0, 2, 0, 0, 0, 0, false},
        {3, 3, 0, 0, 0, 0, 1, 0, 0, 0, true},
        {3, 2, 0, 0, 0, 0, 2, 0, 0, 0, false},
        {3, 2, 0, 0, 0, 0, 0, 1, 0, 0, true}, // height differences are both tilts
        {3, 1, 0, 0, 0, 0, 0, 1, 0, 0, false},
        {3, 1, 0, 0, 1, 1, 0, 1, 0, 0, false},
        {3, 3, 0, 0, 0, 0, 0, 0, 1, 0, true}, // one distance or more
        {3, 2, 0, 0, 0, 0, 0, 0, 5, 0, false},
        {3, 0, 0, 0, 0, 0, 0, 0, 0, 9, true}, // baselines: three rotations and the scale
        {2, 0, 0, 0, 0, 0, 0, 0, 0, 9, false},
        {2, 0, 0, 0, 0, 0, 0, 0, 1, 9, false},
        {3, 0, 0, 0, 0, 0, 0, 0, 0, 1, true},
        {2, 0, 0, 0, 0, 0, 0, 0, 0, 1, false},
        {3, 3, 0, 0, 0, 0, 0, 0, 0, 2, false}, // of another kind: nothing
        {3, 0, 0, 0, 1, 0, 0, 0, 0, 9, true},  // a rotation that is fixed counts once
        {2, 0, 0, 0, 1, 0, 0, 0, 0, 9, false},
        {3, 0, 0, 0, 0, 0, 1, 0, 0, 9, true},
        {2, 0, 0, 0, 0, 0, 1, 0, 0, 9, false},
        {2, 0, 0, 0, 0, 1, 0, 0, 0, 9, true}, // but Rx2 twice without height differences
        {1, 0, 0, 0, 0, 1, 0, 0, 0, 9, false},
        {2, 0, 0, 0, 0, 0, 0, 1, 0, 9, true}, // or with them when it is not fixed
        {1, 0, 0, 0, 0, 0, 0, 1, 0, 9, false},
        {2, 0, 0, 0, 1, 0, 0, 1, 0, 9, true},
        {1, 0, 0, 0, 1, 0, 0, 1, 0, 9, false},
        {3, 0, 0, 0, 0, 1, 0, 1, 0, 9, true},
        {2, 0, 0, 0, 0, 1, 0, 1, 0, 9, false},
    };
    for (const auto &row : rows) {
        Loaded n(3, 0, 4);
        const int counts[6] = {row.c1, row.c2, row.c3, row.r1, row.r2, row.r3};
        for (int i = 0; i < 6; i++) V(n.run, ia1)[i] = counts[i];
        V(n.run, nfixh) = row.nfixh;
        V(n.run, ndifh) = row.ndifh;
        V(n.run, ndist) = row.ndist;
        n.net.p.igps = row.igps;
        EXPECT_EQ(n.check(), 0);
        EXPECT_EQ(n.text() == "", row.enough) << testing::PrintToString(counts) << n.text();
        EXPECT_EQ(V(n.run, ndatum), -5); // no conditions either way
    }
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
    n.fix(1, 0, 0);
    n.fix(2, 2, 2);
    n.at(3).defdatum[2] = DATUM_FIXED_HEIGHT;
    V(n.run, nfixh) = 1;
    for (int i = 0; i < 3; i++) V(n.run, ia1)[3 + i] = 5 - i;
    EXPECT_EQ(n.check(), 0); // 1 + 0 + 1 + 3 constraints
    EXPECT_EQ(n.text(), "datumcheck: Not enough information to define a datum\n"
                        "\nTo define the datum, 1 x1 fixed\n"
                        "                     0 x2 \n"
                        "                     2 x3 \n"
                        "                     5 Rx1 \n"
                        "                     4 Rx2 \n"
                        "                     3 Rx3 \n"
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

TEST(Datum3D, IsMixedOnlyAboutAPointWhoseThreeCoordinatesAreTheOnlyFixedOnes)
{
    for (int axis = 0; axis < 3; axis++) { // a second fixed coordinate on one axis
        Loaded n(3, 0, 3);
        V(n.run, ndist) = 1;
        n.fix(0, 0, 2);
        n.fix(1, axis, axis);
        EXPECT_EQ(n.check(), 0);
        EXPECT_EQ(n.net.p.imixed, -1) << axis;
        EXPECT_EQ(V(n.run, ndatum), -5);
    }
    for (int axis = 0; axis < 3; axis++) { // two of the coordinates on one point, the third on another
        Loaded n(3, 0, 3);
        V(n.run, ndist) = 1;
        for (int c = 0; c < 3; c++) n.fix(c == axis ? 1 : 0, c, c);
        EXPECT_EQ(n.check(), -22);
        EXPECT_EQ(n.net.p.imixed, -1) << axis;
    }
    Loaded n(3, 0, 3); // no distance
    n.fix(0, 0, 2);
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.net.p.imixed, -1);
}

TEST(Datum3D, IsMixedAboutTheLastFixedPoint)
{
    Loaded n(3, 0, 4);
    V(n.run, ndist) = 1;
    for (int i = 0; i < 4; i++) n.at(i).xpt[0] = i;
    n.fix(0, 0, 2);
    for (int c = 0; c < 3; c++) n.at(2).n0[c] = N_NONE; // fixed as well, but not counted
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.net.p.imixed, 2);
    const double x[4] = {-2, -1, 0, 1};
    for (int i = 0; i < 4; i++) {
        EXPECT_EQ(n.at(i).xpt[0], x[i]);
        EXPECT_EQ(n.at(i).x0[0], x[i]);
        EXPECT_EQ(n.at(i).h, 0.0);
    }
    EXPECT_EQ(n.text(), "datumcheck: Not enough information to define a datum\n"
                        "\nTo define the datum, 1 x1 fixed\n"
                        "                     1 x2 \n"
                        "                     2 x3 \n"
                        "                     0 Rx1 \n"
                        "                     0 Rx2 \n"
                        "                     0 Rx3 \n"
                        "                     1 distances \n\n"
                        "\nOnly P0 fixed, experiment with mixed datum\n"
                        "\nOnly P2 fixed, experiment with mixed datum\n");
}

TEST(Datum3D, IsMixedAboutTheFirstPointOfAll)
{
    Loaded n(3, 0, 2);
    V(n.run, ndist) = 1;
    n.at(0).xpt[1] = 5.0;
    n.fix(0, 0, 2);
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.net.p.imixed, 0);
    EXPECT_EQ(n.at(1).xpt[1], -5.0);
}

// The host may have named a point; one outside the table counts as none.
TEST(Datum3D, TakesTheMixedPointOfTheHostWhereNoPointIsFixed)
{
    for (int imixed : {-7, -1, 0, 1, 2, 2000000000}) {
        Loaded n(3, 0, 2);
        V(n.run, ndist) = 1;
        n.net.p.imixed = imixed;
        n.at(0).xpt[0] = 3.0;
        n.at(1).xpt[0] = 7.0;
        for (int c = 0; c < 3; c++) V(n.run, ia1)[c] = 1;
        const bool there = imixed == 0 || imixed == 1;
        EXPECT_EQ(n.check(), there ? 0 : -22);
        EXPECT_EQ(n.at(1).xpt[0], imixed == 0 ? 4.0 : imixed == 1 ? 0.0 : 7.0);
        EXPECT_EQ(V(n.run, ndatum), -5);
    }
}

TEST(Datum3D, IsFreeOnlyWhereNothingIsFixed)
{
    for (int item = 0; item < 5; item++) { // x1, x2, x3, Rx3, a fixed height
        Loaded n(3, 1, 3);
        V(n.run, nweighted) = 7;
        int *const items[5] = {V(n.run, ia1), V(n.run, ia1) + 1, V(n.run, ia1) + 2, V(n.run, ia1) + 5,
                               &V(n.run, nfixh)};
        *items[item] = 1;
        EXPECT_EQ(n.check(), 0);
        EXPECT_EQ(V(n.run, ndatum), -5) << item;
        *items[(item + 1) % 5] = 1; // and no item takes another one away
        EXPECT_EQ(n.check(), 0);
        EXPECT_EQ(V(n.run, ndatum), -5) << item;
    }
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

TEST(DatumTail, AsksAPointForTheDimensionAtMost)
{
    Loaded n(1, 1, 1);
    n.at(0).n0[0] = n.at(0).n0[1] = N_UNKNOWN; // a station in one dimension keeps its codes
    n.at(0).ntie = 1;
    EXPECT_EQ(n.check(), 0);
    n.at(0).ntie = 0;
    EXPECT_EQ(n.check(), -7);
}

// A point of one free coordinate, so height difference number 1, and no observation.
class RoughTest : public ::testing::Test {
protected:
    RoughTest() : n(2, 0, 4)
    {
        V(n.run, idebug) = 1;
        V(n.run, ndist) = 1;
        V(n.run, nweighted) = 4;
        V(n.run, difh) = n.list(3); // all from P0 to P1
        V(n.run, ndifh) = 2;
        n.at(2).ntie = 0;
        n.at(2).n0[0] = N_NONE;
        n.at(2).defdatum[0] = n.at(2).defdatum[1] = DATUM_WEIGHTED;
    }
    void ends(int p1, int p2)
    {
        V(n.run, difh)[1].p1 = &n.at(p1);
        V(n.run, difh)[1].p2 = &n.at(p2);
    }
    // What the check says of the point when it passes by m comparisons.
    std::string passed(int m) const
    {
        return "\nWeighted network..\n\ndatumcheck: Not enough observations for P2\n"
               "\ndatumcheck:P2 shot only in height (" +
               std::to_string(m) + ")\n";
    }
    Loaded n;
};

TEST_F(RoughTest, CountsBothEndsForEveryHeightDifference)
{
    ends(0, 1); // the point's name is greater
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.text(), passed(4));
}

TEST_F(RoughTest, CountsTheFarEndAlone)
{
    ends(3, 2); // equal
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.text(), passed(2));
}

TEST_F(RoughTest, CountsTheNearEndAlone)
{
    ends(2, 3);
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.text(), passed(2));
}

TEST_F(RoughTest, KnowsNoHeightDifferenceBehindTheLast)
{
    ends(0, 1);
    V(n.run, ndifh) = 1; // number 1 is the second
    EXPECT_EQ(n.check(), -7);
}

TEST_F(RoughTest, TakesTheOnlyHeightDifferenceForAPointWithoutFreeCoordinates)
{
    V(n.run, ndifh) = 1;
    n.at(2).n0[1] = N_NONE;
    n.at(2).ntie = -1; // fewer observations than none: no such count comes from loading
    EXPECT_EQ(n.check(), 0);
    EXPECT_EQ(n.text(), passed(2));
}

TEST_F(RoughTest, WantsBothCoordinatesWeighted)
{
    for (int c = 0; c < 2; c++) {
        n.at(2).defdatum[0] = n.at(2).defdatum[1] = DATUM_WEIGHTED;
        n.at(2).defdatum[c] = DATUM_USED;
        EXPECT_EQ(n.check(), -7);
    }
}

TEST_F(RoughTest, IsNotMadeWithoutHeightDifferences)
{
    V(n.run, ndifh) = 0;
    EXPECT_EQ(n.check(), -7);
}

} // namespace
