#include <gtest/gtest.h>

#include "approx/patches.h"
#include "approx/sketch.h"
#include "support/faults.h"

namespace {

const double pi = 4.0 * atan(1.0);

// Station P is to be patched; Q and R can be known.
class Patch : public ::testing::Test {
protected:
    explicit Patch(int dim = 3) : s(dim)
    {
        P = s.station("P", 0, 0, 3 * pi / 10);
        Q = s.station("Q", -100, 0, 7 * pi / 10);
        R = s.station("R", -40, -90, 0.2);
        A = s.target("A", 30, 70, 20);
        B = s.target("B", 80, 55, -15);
        C = s.target("C", 45, -60, 8);
        D = s.target("D", -20, 90, 31);
    }
    void TearDown() override { fail_allocation(0); }

    void see(int from, const std::vector<int> &points)
    {
        for (int t : points) s.sight(from, t);
    }

    void wire(const std::vector<int> &placed = {})
    {
        s.wire();
        for (int t : placed) s.place(t);
    }

    int patch() { return patch_spread(s.net(), s.tab(), P); }

    static std::string counts(int nshot, int nknown)
    {
        return "             makes " + std::to_string(nshot) + " shots\n             makes " + std::to_string(nknown) +
               " shots on known targets\n";
    }

    Sketch s;
    int P, Q, R, A, B, C, D;
    const std::string head = "   Theo : P has code 0\n", tryguess = "will try a guess..........\n";
};

class PatchInThePlane : public Patch {
protected:
    PatchInThePlane() : Patch(2) {}
};

TEST_F(PatchInThePlane, ReportsEveryShotAndSucceedsAtOnce)
{
    see(P, {B, R, Q, A});
    wire({A});
    s.itheo[Q] = THEO_ORIENTED;
    s.itheo[R] = THEO_PLACED;
    s.itheo[P] = THEO_RESECT;
    EXPECT_EQ(patch(), 0);
    EXPECT_EQ(s.report(),
              "   Theo : P has code 3\n        shot theo  Q with code -2\n        shot theo  R with code -1\n"
              "        shot point A with code -1\n        shot point B with code 0\n" +
                  counts(4, 2));
}

TEST_F(PatchInThePlane, StopsAtTheThirdKnownShot)
{
    see(P, {Q, R, A, B});
    wire({A, B});
    s.itheo[Q] = THEO_DONE;
    s.itheo[R] = THEO_PLACED;
    EXPECT_EQ(patch(), -1);
    EXPECT_EQ(s.report(), head + "        shot theo  Q with code -3\n        shot theo  R with code -1\n"
                                 "        shot point A with code -1\n"
                                 "Patch_spread: Cannot have more than 2 known shots\n");
}

TEST_F(PatchInThePlane, StopsAtAThirdKnownStation)
{
    const int T = 3;
    Sketch n(2);
    for (const char *name : {"P", "Q", "R", "T"}) n.station(name, 1, 2);
    for (int t : {1, 2, T}) n.direction(0, t, t);
    n.wire();
    n.itheo = {0, -1, -3, -1};
    EXPECT_EQ(patch_spread(n.net(), n.tab(), 0), -1);
    EXPECT_EQ(n.report(), head + "        shot theo  Q with code -1\n        shot theo  R with code -3\n"
                                 "        shot theo  T with code -1\n"
                                 "Patch_spread: Cannot have more than 2 known shots\n");
}

TEST_F(PatchInThePlane, FindsATotalStationOnTwoKnownPointsEasyAndFailsAllTheSame)
{
    s.n.stations[P].typ = 2;
    see(P, {A, B, C});
    wire({A, B});
    EXPECT_EQ(patch(), -1);
    EXPECT_EQ(s.report(), head +
                              "        shot point A with code -1\n        shot point B with code -1\n"
                              "        shot point C with code 0\n" +
                              counts(3, 2) + "             total station!\neasy to do....\n");
}

TEST_F(PatchInThePlane, WantsExactlyTwoKnownPointsForATotalStation)
{
    s.n.stations[P].typ = 2;
    see(P, {A, B, C});
    wire({A});
    EXPECT_EQ(patch(), 0);
    EXPECT_EQ(s.report().find("total station"), std::string::npos);
}

TEST_F(PatchInThePlane, KnowsATotalStationByItsPlaceInTheListNotByItsName)
{
    s.n.stations[Q].typ = 2;
    std::swap(s.n.stations[P], s.n.stations[Q]); // the first record is typ 2, named Q
    see(P, {A, B});
    wire({A, B});
    EXPECT_EQ(patch(), -1);
    EXPECT_NE(s.report().find("easy to do....\n"), std::string::npos);
}

TEST_F(PatchInThePlane, TakesAStationBehindTheListOfTheHostForNoTotalStation)
{
    s.n.stations.clear();
    see(P, {A, B});
    wire({A, B});
    EXPECT_EQ(patch(), 0);
}

TEST_F(Patch, WithoutShotsMustSearch)
{
    wire();
    EXPECT_EQ(patch(), -5);
    EXPECT_EQ(s.report(), head + counts(0, 0) + tryguess + "Must search for P\n");
}

TEST_F(Patch, TriesAGuessWithAFinishedStationOfThreeCommonShots)
{
    see(P, {A, B, C});
    see(Q, {A, B, C});
    wire({A});
    s.itheo[Q] = THEO_DONE;
    const std::vector<double> x = s.xap;
    EXPECT_EQ(patch(), 0);
    const std::string end = counts(3, 1) + tryguess + "Good pair: P  Q\n", text = s.report();
    EXPECT_EQ(text.substr(text.size() - end.size()), end);
    EXPECT_EQ(s.xap, x); // a trial only
    EXPECT_EQ(s.itheo[P], 0);
}

TEST_F(Patch, WantsAPartnerThatIsFinished)
{
    see(P, {A, B, C});
    see(Q, {A, B, C});
    wire({A});
    s.itheo[Q] = THEO_PLACED;
    EXPECT_EQ(patch(), -5);
}

TEST_F(Patch, WantsAPartnerThatShotAKnownPointOfTheStation)
{
    see(P, {A, B, C, D});
    see(Q, {B, C, D});
    wire({A});
    s.itheo[Q] = THEO_DONE;
    EXPECT_EQ(patch(), -5);
}

TEST_F(Patch, DoesNotCountTheTwoStationsAsCommonShots)
{
    see(P, {A, B, Q});
    see(Q, {A, B, P});
    wire({A});
    s.table[P][P] = s.table[Q][Q] = 1;
    s.itheo[Q] = THEO_DONE;
    EXPECT_EQ(patch(), -5);
    EXPECT_NE(s.report().find(counts(3, 2)), std::string::npos);
}

TEST_F(Patch, CountsThirdStationsAsCommonShots)
{
    see(P, {A, B, R});
    see(Q, {A, B, R});
    wire({A});
    s.itheo[Q] = THEO_DONE;
    patch();
    EXPECT_NE(s.report().find("Good pair: P  Q\n"), std::string::npos);
}

TEST_F(Patch, TakesTheFirstPartnerOfTheFirstKnownPoint)
{
    see(P, {A, B, C, D});
    see(Q, {B, C, D});
    see(R, {A, C, D});
    wire({A, B});
    s.itheo[Q] = s.itheo[R] = THEO_DONE;
    patch();
    EXPECT_NE(s.report().find("Good pair: P  R\n"), std::string::npos); // R shot A
}

TEST_F(Patch, FailsWhenTheSearchDoes)
{
    for (int k = 0; k < 3; k++) { // A and B cannot lie in front of both
        const int t = A + k;
        s.direction(P, t, pi / 20);
        s.direction(Q, t, pi / 20 + k % 2 * pi);
        s.vertical(P, t, 0.1);
        s.vertical(Q, t, 0.1);
    }
    wire({A});
    s.itheo[Q] = THEO_DONE;
    EXPECT_EQ(patch(), -9);
    const std::string end = "Good pair: P  Q\nguess_o1o2: Guessing loop failed\n", text = s.report();
    EXPECT_EQ(text.substr(text.size() - end.size()), end);
}

TEST_F(Patch, FailsWithoutVerticalAnglesForTheDirections)
{
    see(P, {A, B, C});
    see(Q, {A, B, C});
    s.dir2.clear();
    wire({A});
    s.itheo[Q] = THEO_DONE;
    EXPECT_EQ(patch(), -9);
}

TEST_F(Patch, FailsWithoutMemory)
{
    see(P, {A, B, C});
    see(Q, {A, B, C});
    for (int n = 1; n <= 3; n++) {
        wire({A});
        s.itheo[Q] = THEO_DONE;
        fail_allocation(n);
        EXPECT_EQ(patch(), -4);
        fail_allocation(0);
        const std::string end = "patch_spread: cannot allocate isys, app or rhs\n", text = s.report();
        EXPECT_EQ(text.substr(text.size() - end.size()), end);
    }
}

} // namespace
