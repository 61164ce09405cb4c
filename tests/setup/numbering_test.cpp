// Which coordinates have to be computed first, the working frame of an earth model, and the
// numbers of the unknowns.

#include <gtest/gtest.h>
#include <math.h>

#include <vector>

#include "support/loaded.h"

namespace {

using Ints = std::vector<int>;

Ints n0(Loaded &l, int i) { return Ints(l.at(i).n0, l.at(i).n0 + 3); }
Ints n1(Loaded &l, int i) { return Ints(l.at(i).n1, l.at(i).n1 + 6); }

// ---- trigapprox ------------------------------------------------------------------

TEST(Trigapprox, FindsNothingToComputeWhereEveryCoordinateHasAValue)
{
    Loaded l(2, 1, 1);
    l.fix(0, 0);
    (V(l.run, trigapprox)());
    EXPECT_EQ(V(l.run, iapprox), 0);
    EXPECT_EQ(n0(l, 0), (Ints{-1, 1, -1})); // half fixed, but nothing is to be computed
    EXPECT_EQ(n1(l, 0), (Ints{-1, -1, 1, -1, -1, -1}));
}

TEST(Trigapprox, FindsACoordinateWithoutValueInAnyPlaceOfAnyPoint)
{
    for (int code : {9, -9})
        for (int i = 0; i < 2; i++)
            for (int c = 0; c < 3; c++) {
                Loaded l(3, 1, 1);
                l.at(i).n0[c] = code;
                (V(l.run, trigapprox)());
                EXPECT_EQ(V(l.run, iapprox), 9) << code << " " << i << " " << c;
            }
}

TEST(Trigapprox, LetsHalfFixedStationsBeComputedToo)
{
    Loaded l(2, 5, 2);
    l.at(0).n0[0] = -1;                     // x1 fixed, x2 free
    l.at(1).n0[1] = -1;                     // the other way round
    l.at(2).n0[0] = -1, l.at(2).n1[2] = -1; // its orientation stays fixed
    l.at(3).n0[0] = l.at(3).n0[1] = -1;     // wholly fixed
    l.at(5).n0[0] = -1;                     // a half fixed target stays
    l.at(6).n0[0] = 9;                      // this one is to be computed
    (V(l.run, trigapprox)());
    EXPECT_EQ(V(l.run, iapprox), 9);
    EXPECT_EQ(n0(l, 0), (Ints{-1, 9, -1}));
    EXPECT_EQ(l.at(0).n1[2], 9);
    EXPECT_EQ(n0(l, 1), (Ints{9, -1, -1}));
    EXPECT_EQ(l.at(1).n1[2], 9);
    EXPECT_EQ(n0(l, 2), (Ints{-1, 9, -1}));
    EXPECT_EQ(l.at(2).n1[2], -1);
    EXPECT_EQ(n0(l, 3), (Ints{-1, -1, -1}));
    EXPECT_EQ(l.at(3).n1[2], 1);
    EXPECT_EQ(n0(l, 4), (Ints{1, 1, -1}));
    EXPECT_EQ(l.at(4).n1[2], 1);
    EXPECT_EQ(n0(l, 5), (Ints{-1, 1, -1}));
}

TEST(Trigapprox, TakesAHalfFixedStationWithTheOtherHalfMissingAsItStands)
{
    Loaded l(2, 2, 0);
    l.at(0).n0[0] = -1, l.at(0).n0[1] = 9;
    l.at(1).n0[0] = -9;
    (V(l.run, trigapprox)());
    EXPECT_EQ(n0(l, 0), (Ints{-1, 9, -1}));
    EXPECT_EQ(l.at(0).n1[2], 1);
    EXPECT_EQ(n0(l, 1), (Ints{-9, 1, -1}));
}

TEST(Trigapprox, KeepsTheWishOfTheUser)
{
    Loaded l(2, 1, 1);
    V(l.run, iapprox) = 1;
    l.at(0).n0[0] = -1;
    l.at(1).n0[0] = 9;
    (V(l.run, trigapprox)());
    EXPECT_EQ(V(l.run, iapprox), 1);
    EXPECT_EQ(n0(l, 0), (Ints{-1, 1, -1}));
}

// ---- working frame ---------------------------------------------------------------

void place(Loaded &l, int iearth)
{
    V(l.run, iearth) = iearth;
    V(l.run, radius) = 1000.0;
    V(l.run, horigin) = 4.0;
    const double t[3] = {10.0, 20.0, 30.0}, x[3] = {40.0, 60.0, 130.0};
    for (int c = 0; c < 3; c++) V(l.run, trans)[c] = t[c];
    for (int i = 0; i < V(l.run, npoints); i++)
        for (int c = 0; c < 3; c++) l.at(i).xpt[c] = x[c];
}

TEST(SetPrepare, LeavesCoordinatesWithoutAnEarthModelAlone)
{
    Loaded l(3, 1, 1);
    place(l, 0);
    (V(l.run, set_prepare)());
    for (int i = 0; i < 2; i++) {
        EXPECT_EQ(l.at(i).xpt[0], 40.0);
        EXPECT_EQ(l.at(i).xpt[1], 60.0);
        EXPECT_EQ(l.at(i).xpt[2], 130.0);
        EXPECT_EQ(l.at(i).h, 0.0);
    }
}

TEST(SetPrepare, ShiftsCartesianCoordinatesAndFindsTheHeightAboveTheSphere)
{
    for (int dim = 1; dim <= 3; dim++) {
        Loaded l(dim, 1, 1);
        place(l, 1);
        (V(l.run, set_prepare)());
        for (int i = 0; i < 2; i++) {
            EXPECT_EQ(l.at(i).xpt[0], 30.0);
            EXPECT_EQ(l.at(i).xpt[1], 40.0);
            EXPECT_EQ(l.at(i).xpt[2], 100.0);
            EXPECT_DOUBLE_EQ(l.at(i).h, 2500.0 / 2208.0 + 104.0); // d = 1000 + 4 + 100
            EXPECT_EQ(l.at(i).x0[2], 100.0);                      // the start is in the working frame
        }
    }
}

TEST(SetPrepare, GivesAPointAtTheCentreOfTheSphereTheHeightOfTheDivision)
{
    for (const int iearth : {1, 2}) {
        Loaded l(3, 1, 0);
        V(l.run, iearth) = iearth;
        V(l.run, radius) = 100.0;
        l.at(0).xpt[0] = 3.0;
        l.at(0).xpt[2] = -100.0;
        (V(l.run, set_prepare)());
        EXPECT_FALSE(isfinite(iearth == 1 ? l.at(0).h : l.at(0).xpt[2])) << iearth;
        EXPECT_EQ(V(l.run, nunk1), 3);
    }
}

TEST(SetPrepare, TurnsTheHeightOfMixedCoordinatesIntoACoordinateOfTheTangentPlane)
{
    Loaded l(3, 1, 1);
    place(l, 2);
    (V(l.run, set_prepare)());
    for (int i = 0; i < 2; i++) {
        EXPECT_EQ(l.at(i).xpt[0], 30.0);
        EXPECT_EQ(l.at(i).xpt[1], 40.0);
        EXPECT_EQ(l.at(i).h, 100.0);
        EXPECT_DOUBLE_EQ(l.at(i).xpt[2], 130.0 - 2500.0 / 2200.0 - 4.0 - 30.0); // d = 1000 + 100
        EXPECT_EQ(l.at(i).x0[2], l.at(i).xpt[2]);
    }
}

TEST(SetPrepare, KeepsTheThirdMixedCoordinateOutsideSpace)
{
    for (int dim = 1; dim <= 2; dim++) {
        Loaded l(dim, 1, 0);
        place(l, 2);
        (V(l.run, set_prepare)());
        EXPECT_EQ(l.at(0).xpt[0], 30.0);
        EXPECT_EQ(l.at(0).xpt[1], 40.0);
        EXPECT_EQ(l.at(0).xpt[2], 130.0);
        EXPECT_EQ(l.at(0).h, 100.0);
    }
}

TEST(SetPrepare, KeepsTheStartOfCoordinatesOrientationsAndConstants)
{
    Loaded l(3, 1, 1);
    for (int i = 0; i < 2; i++)
        for (int c = 0; c < 6; c++) {
            if (c < 3) l.at(i).xpt[c] = 10.0 * i + c;
            l.at(i).xex[c] = 100.0 * i + c + 1;
            l.at(i).e0[c] = -7.0;
        }
    (V(l.run, set_prepare)());
    for (int i = 0; i < 2; i++) {
        for (int c = 0; c < 3; c++) EXPECT_EQ(l.at(i).x0[c], 10.0 * i + c);
        for (int c = 0; c < 5; c++) EXPECT_EQ(l.at(i).e0[c], 100.0 * i + c + 1);
        EXPECT_EQ(l.at(i).e0[5], -7.0); // the refraction term has its start already
    }
}

// ---- numbers ---------------------------------------------------------------------

TEST(SetPrepare, NumbersTargetsBeforeStationsAndOrientationsForThemselves)
{
    Loaded l(3, 2, 2);
    l.fix(0, 1);
    l.at(1).n0[0] = 9; // computed or not, it is an unknown
    for (int c = 0; c < 3; c++) l.fix(2, c);
    l.at(0).n1[0] = -1, V(l.run, ia1)[3]++;
    l.at(1).n1[2] = 9;
    (V(l.run, set_prepare)());
    EXPECT_EQ(n0(l, 2), (Ints{-1, -1, -1})); // a fixed point uses no number
    EXPECT_EQ(n0(l, 3), (Ints{0, 1, 2}));
    EXPECT_EQ(n0(l, 0), (Ints{3, -1, 4}));
    EXPECT_EQ(n0(l, 1), (Ints{5, 6, 7}));
    EXPECT_EQ(n1(l, 0), (Ints{-1, 0, 1, -1, -1, -1}));
    EXPECT_EQ(n1(l, 1), (Ints{2, 3, 4, -1, -1, -1}));
    EXPECT_EQ(n1(l, 3), (Ints{0, 0, 0, 0, 0, 0})); // a target has none
    EXPECT_EQ(V(l.run, nunk1), 12 - 4);
    EXPECT_EQ(V(l.run, nunk2), 6 - 1);
    EXPECT_EQ(V(l.run, nunk), 13);
}

TEST(SetPrepare, NumbersBothCoordinatesOfAPlanePointInARow)
{
    Loaded l(2, 1, 2);
    (V(l.run, set_prepare)());
    EXPECT_EQ(n0(l, 1), (Ints{0, 1, -1}));
    EXPECT_EQ(n0(l, 2), (Ints{2, 3, -1}));
    EXPECT_EQ(n0(l, 0), (Ints{4, 5, -1}));
    EXPECT_EQ(n1(l, 0), (Ints{-1, -1, 0, -1, -1, -1}));
    EXPECT_EQ(V(l.run, nunk1), 6);
    EXPECT_EQ(V(l.run, nunk2), 1);
}

TEST(SetPrepare, GivesALevelNetworkNoOrientations)
{
    Loaded l(1, 1, 1);
    (V(l.run, set_prepare)());
    EXPECT_EQ(n0(l, 1), (Ints{-1, -1, 0}));
    EXPECT_EQ(n0(l, 0), (Ints{-1, -1, 1}));
    EXPECT_EQ(V(l.run, nunk1), 2);
    EXPECT_EQ(V(l.run, nunk2), 0);
}

TEST(SetPrepare, HasNoNuisanceUnknownsWithoutStations)
{
    Loaded l(3, 0, 2);
    (V(l.run, set_prepare)());
    EXPECT_EQ(V(l.run, nunk1), 6);
    EXPECT_EQ(V(l.run, nunk2), 0);
    EXPECT_EQ(V(l.run, nunk), 6);
    EXPECT_EQ(n0(l, 0), (Ints{0, 1, 2}));
}

TEST(SetPrepare, GivesTheStationsOfAGroupOneNumberForOneConstant)
{
    Loaded l(3, 3, 0);
    V(l.run, pproject)->ngroups = 2; // read as a count only
    l.at(0).n1[3] = l.at(2).n1[3] = 0;
    l.at(0).n1[4] = 0;
    l.at(1).n1[4] = 1;
    l.at(2).n1[5] = 1;
    V(l.run, ia1)[6] = 1, V(l.run, ia1)[7] = 2, V(l.run, ia1)[8] = 1;
    (V(l.run, set_prepare)());
    // nine orientations; then group 0: constant 9, scale 10; group 1: scale 11, refraction 12
    EXPECT_EQ(n1(l, 0), (Ints{0, 1, 2, 9, 10, -1}));
    EXPECT_EQ(n1(l, 1), (Ints{3, 4, 5, -1, 11, -1}));
    EXPECT_EQ(n1(l, 2), (Ints{6, 7, 8, 9, -1, 12}));
    EXPECT_EQ(V(l.run, nunk2), 9 + 4);
    V(l.run, pproject)->ngroups = 0;
}

TEST(SetPrepare, CountsAColumnForEveryConstantOfEveryKind)
{
    for (int kind = 6; kind <= 8; kind++) {
        Loaded l(3, 1, 0);
        V(l.run, ia1)[kind] = 3;
        (V(l.run, set_prepare)());
        EXPECT_EQ(V(l.run, nunk2), 3 + 3) << kind;
        EXPECT_EQ(V(l.run, nunk), 3 + 6) << kind;
    }
}

// One orientation, so the first constant is number 1: that is also the index of the second
// group, which takes the slot for its own.
TEST(SetPrepare, RenumbersASlotAgainWhoseNumberIsTheIndexOfALaterGroup)
{
    Loaded l(2, 2, 0);
    V(l.run, pproject)->ngroups = 3;
    l.at(1).n1[2] = -1, V(l.run, ia1)[5]++;
    l.at(0).n1[3] = 0; // becomes 1, then, with group 1, 2, then, with group 2, 3
    V(l.run, ia1)[6] = 1;
    (V(l.run, set_prepare)());
    EXPECT_EQ(n1(l, 0), (Ints{-1, -1, 0, 3, -1, -1}));
    EXPECT_EQ(V(l.run, nunk2), 4); // not 2: number 3 needs its column
    EXPECT_EQ(V(l.run, nunk), 8);
    V(l.run, pproject)->ngroups = 0;
}

TEST(SetPrepare, NumbersCamerasBehindTheConstantsAndLumpsBehindTheCameras)
{
    Loaded l(3, 1, 0);
    V(l.run, ia1)[7] = 2; // two constants that no station takes
    V(l.run, ncamera) = 2;
    camera *c = V(l.run, cameras) = Loaded::array<camera>(2);
    c[0].npar = 3;
    c[0].ipar[1] = -1;
    c[1].npar = 10;
    for (int i = 0; i < 9; i++) c[1].ipar[i] = -1;
    V(l.run, nlump) = 2;
    lump *u = V(l.run, lumps) = Loaded::array<lump>(2);
    u[0].nepoch = 3;
    u[0].iunk = Loaded::array<int>(2);
    u[1].nepoch = 2;
    u[1].iunk = Loaded::array<int>(1);
    (V(l.run, set_prepare)());
    EXPECT_EQ(Ints(c[0].ipar, c[0].ipar + 10), (Ints{5, -1, 6, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Ints(c[1].ipar, c[1].ipar + 10), (Ints{-1, -1, -1, -1, -1, -1, -1, -1, -1, 7}));
    EXPECT_EQ(Ints(u[0].iunk, u[0].iunk + 2), (Ints{8, 15}));
    EXPECT_EQ(u[1].iunk[0], 22);
    EXPECT_EQ(V(l.run, nunk2), 29);
    EXPECT_EQ(V(l.run, nunk), 32);
}

} // namespace
