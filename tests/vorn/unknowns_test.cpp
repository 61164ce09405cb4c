// The name of an unknown by the row of the factorization that failed.

#include "vorn/unknowns.h"

#include <gtest/gtest.h>

#include <string.h>

#include "support/loaded.h"

using namespace vornengine;

namespace {

std::string name_of(Loaded &l, int row)
{
    char text[60] = "untouched";
    const int code = unknown_names::row(l.run, row, text, sizeof text);
    EXPECT_EQ(code, text[0] ? 0 : -1);
    return text;
}

} // namespace

// Targets are numbered first, then stations, then orientations.
TEST(UnknownNames, AreThoseOfCoordinatesAndOrientations)
{
    Loaded l(2, 1, 2);
    (V(l.run, set_prepare)());
    ASSERT_EQ(V(l.run, nunk), 7);
    const char *const names[] = {"x of point T0",
                                 "y of point T0",
                                 "x of point T1",
                                 "y of point T1",
                                 "x of point S0",
                                 "y of point S0",
                                 "orientation of station S0"};
    for (int row = 0; row < 7; row++) EXPECT_EQ(name_of(l, row), names[row]);
    EXPECT_EQ(name_of(l, 7), "");
    EXPECT_EQ(name_of(l, -1), "");
}

TEST(UnknownNames, AreThoseOfHeightsRotationsAndConstants)
{
    Loaded l(3, 1, 0);
    (V(l.run, set_prepare)());
    EXPECT_EQ(name_of(l, 2), "z of point S0");
    EXPECT_EQ(name_of(l, 3), "rotation rx1 of station S0");
    EXPECT_EQ(name_of(l, 4), "rotation rx2 of station S0");
    const char *const constants[] = {"additive constant", "scale", "refraction"};
    for (int k = 0; k < 3; k++) {
        for (int j = 3; j < 6; j++) l.at(0).n1[j] = j == 3 + k ? 3 : -1;
        V(l.run, nunk2) = 4;
        EXPECT_EQ(name_of(l, 6), std::string(constants[k]) + " of station S0");
    }
}

TEST(UnknownNames, AreThoseOfCamerasAndMovements)
{
    Loaded l(3, 0, 1);
    camera *c = Loaded::array<camera>(1);
    strcpy(c->name, "cam     ");
    c->npar = 10;
    for (int k = 0; k < 10; k++) c->ipar[k] = k;
    V(l.run, cameras) = c;
    V(l.run, ncamera) = 1;
    (V(l.run, set_prepare)());
    V(l.run, nunk2) = 11;
    const char *const words[] = {"c", "x0", "y0", "a", "b", "k1", "k2", "k3", "p1", "p2"};
    for (int k = 0; k < 10; k++) EXPECT_EQ(name_of(l, 3 + k), std::string(words[k]) + " of camera cam");
    EXPECT_EQ(name_of(l, 13), ""); // a number that nothing carries
}

// With a datum of two conditions the last two coordinates change places with them.
TEST(UnknownNames, FollowTheExchangeOfTheDatumRows)
{
    Loaded l(2, 0, 2);
    (V(l.run, set_prepare)());
    V(l.run, ndatum) = 2;
    EXPECT_EQ(name_of(l, 1), "y of point T0");
    EXPECT_EQ(name_of(l, 2), "condition 1 of the datum");
    EXPECT_EQ(name_of(l, 3), "condition 2 of the datum");
    EXPECT_EQ(name_of(l, 4), "x of point T1");
    EXPECT_EQ(name_of(l, 5), "y of point T1");
    EXPECT_EQ(name_of(l, 6), "");
}

// Without a datum the movement of the last lump at its last epoch does.
TEST(UnknownNames, FollowTheExchangeOfTheLastMovement)
{
    Loaded l(3, 0, 4);
    lump *lumps = Loaded::array<lump>(1);
    lumps->id = 12;
    lumps->nepoch = 3;
    lumps->iunk = Loaded::array<int>(2);
    lumps->epoch = Loaded::array<int>(2);
    lumps->epoch[0] = 5;
    lumps->epoch[1] = 8;
    V(l.run, lumps) = lumps;
    V(l.run, nlump) = 1;
    (V(l.run, set_prepare)());
    ASSERT_EQ(V(l.run, nunk2), 14);
    EXPECT_EQ(name_of(l, 4), "y of point T1");
    EXPECT_EQ(name_of(l, 5), "tx of lump 12 at epoch 8");
    EXPECT_EQ(name_of(l, 11), "scale of lump 12 at epoch 8");
    EXPECT_EQ(name_of(l, 12), "tx of lump 12 at epoch 5");
    EXPECT_EQ(name_of(l, 19), "z of point T1");
    EXPECT_EQ(name_of(l, 25), "z of point T3");
}

TEST(UnknownNames, AreNoneBeforeLoading)
{
    Network net(2);
    const vorn run(net.ready());
    char text[20];
    EXPECT_EQ(unknown_names::row(run, 0, text, sizeof text), -1);
    EXPECT_STREQ(text, "");
}
