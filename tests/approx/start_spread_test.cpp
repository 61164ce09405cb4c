#include <gtest/gtest.h>

#include "approx/sketch.h"

namespace {

const double rounding = 1e-11; // metres

class StartSpread : public ::testing::Test {
protected:
    explicit StartSpread(int dim = 2) : s(dim) {}

    void run()
    {
        if (!s.a) s.wire();
        for (std::vector<int> &row : s.rows) std::fill(row.begin(), row.end(), 0);
        nused = nresec = npair = 0;
        EXPECT_EQ(start_spread(s.net(), s.tab(), &nused, &nresec, &npair), 0);
    }

    void expect_point(int i)
    {
        EXPECT_NEAR(s.points[i].xpt[0], s.truth[i].x[0], rounding);
        EXPECT_NEAR(s.points[i].xpt[1], s.truth[i].x[1], rounding);
        EXPECT_EQ(s.points[i].n0[0], N_NONE);
        EXPECT_EQ(s.points[i].n0[1], N_NONE);
    }

    Sketch s;
    int nused = 0, nresec = 0, npair = 0;
};

TEST_F(StartSpread, ReadsWhatIsKnownOfEachStation)
{
    const int P = s.station("P", 1, 2, 0.5, 0, 0), Q = s.station("Q", 3, 4, 0.6, 0, 0),
              R = s.station("R", 5, 6, 0.7, 0, 0), T = s.station("T", 7, 8, 0.8, 0, 0);
    s.know(P);
    s.know_turn(Q);
    s.know(R);
    s.know_turn(R);
    s.know(T);
    s.points[T].n0[1] = N_MISSING;
    run();
    EXPECT_EQ(s.itheo, (std::vector<int>{THEO_PLACED, THEO_ORIENTED, THEO_DONE, THEO_UNKNOWN}));
    EXPECT_EQ(s.xap, (std::vector<double>{1, 0, 5, 7}));
    EXPECT_EQ(s.yap, (std::vector<double>{2, 0, 6, 0}));
    EXPECT_EQ(s.oap, (std::vector<double>{0, 0.6, 0.7, 0})); // the negative of xex[2]
    EXPECT_EQ(nused, 0);
}

TEST_F(StartSpread, ReadsWhatIsKnownOfEachTarget)
{
    s.station("P", 0, 0);
    const int A = s.target("A", 1, 2), B = s.target("B", 3, 4);
    s.target("C", 5, 6);
    s.know(A);
    s.know(B);
    s.points[B].n0[0] = N_MISSING;
    run();
    EXPECT_EQ(s.iobj, (std::vector<int>{OBJ_PLACED, OBJ_UNKNOWN, OBJ_UNKNOWN}));
    EXPECT_EQ(s.xap, (std::vector<double>{0, 1, 0, 0}));
    EXPECT_EQ(s.yap, (std::vector<double>{0, 2, 4, 0}));
}

TEST_F(StartSpread, SendsPolarPointsFromAKnownStationThatMeasuresDistances)
{
    const int P = s.station("P", 10, 20, 0.5), A = s.target("A", 70, 90), B = s.target("B", -30, 5);
    s.n.p.idebug = 1;
    s.know(P);
    s.know_turn(P);
    for (int t : {A, B}) s.sight(P, t);
    s.range(P, A);
    run();
    EXPECT_EQ(nused, 1);
    expect_point(A);
    EXPECT_EQ(s.iobj, (std::vector<int>{OBJ_PLACED, OBJ_UNKNOWN})); // B has no distance
    EXPECT_EQ(s.xap[A], s.points[A].xpt[0]);
    EXPECT_EQ(s.report(), "In start_spread, P is used\n\n  0 |   1  2\n\n");
}

TEST_F(StartSpread, UsesNoStationThatMeasuresNoDistances)
{
    const int P = s.station("P", 10, 20, 0.5, 0, 0), A = s.target("A", 70, 90);
    s.know(P);
    s.know_turn(P);
    s.sight(P, A);
    s.range(P, A);
    run();
    EXPECT_EQ(nused, 0);
    EXPECT_EQ(s.points[A].n0[0], N_MISSING);
    EXPECT_EQ(s.report(), ""); // one full station is no reason for a notice
}

TEST_F(StartSpread, PlacesAPointByTheFirstShotAndTheFirstDistance)
{
    const int P = s.station("P", 10, 20, 0.5), A = s.target("A", 70, 90);
    s.know(P);
    s.know_turn(P);
    s.sight(P, A);
    s.direction(P, A, 2.0);
    s.range(P, A);
    s.distance(P, A, 1.0);
    run();
    expect_point(A);
}

TEST_F(StartSpread, PlacesNoPointOfWhichOneCoordinateIsKnown)
{
    const int P = s.station("P", 10, 20, 0.5), A = s.target("A", 70, 90);
    s.know(P);
    s.know_turn(P);
    s.know(A);
    s.points[A].n0[0] = N_MISSING;
    s.points[A].xpt[0] = 0;
    s.sight(P, A);
    s.range(P, A);
    run();
    EXPECT_EQ(s.points[A].xpt[0], 0.0);
    EXPECT_EQ(s.points[A].n0[0], N_MISSING);
}

TEST_F(StartSpread, GivesAPolarPositionToALaterStationButNotToAnEarlierOne)
{
    const int O = s.station("O", -50, 0, 0.2), P = s.station("P", 0, 0, 0.5), Q = s.station("Q", 60, 10, 0.7),
              A = s.target("A", 90, 90);
    s.n.p.idebug = 1;
    s.know(P);
    s.know_turn(P);
    s.know_turn(O);
    s.know_turn(Q);
    for (int t : {O, Q}) {
        s.sight(P, t);
        s.range(P, t);
    }
    s.sight(Q, A);
    s.range(Q, A);
    run();
    expect_point(O); // the point is written, its status is not
    EXPECT_EQ(s.itheo, (std::vector<int>{THEO_ORIENTED, THEO_DONE, THEO_DONE}));
    EXPECT_EQ(s.xap[O], 0.0);
    EXPECT_NEAR(s.xap[Q], 60, rounding);
    EXPECT_EQ(nused, 2); // the later station sends points in its turn
    expect_point(A);
    EXPECT_EQ(s.report().substr(0, 54), "In start_spread, P is used\nIn start_spread, Q is used\n");
}

TEST_F(StartSpread, NoticesSeveralKnownStationsWithoutDistances)
{
    const int P = s.station("P", 0, 0, 0, 0, 0), Q = s.station("Q", 10, 0, 0, 0, 0);
    for (int i : {P, Q}) {
        s.know(i);
        s.know_turn(i);
    }
    run();
    EXPECT_EQ(s.report(), "\nTO DO: case of more than 2 known stations....\n");
    s.n.p.idebug = 1;
    s.wire();
    run();
    EXPECT_EQ(s.report(), "\nTO DO: case of more than 2 known stations....\n"
                          "There are 2 all known stations\n\nTO DO: case of more than 2 known stations....\n"
                          "\n  0  0 | \n  0  0 | \n\n");
}

TEST_F(StartSpread, KeepsTheLastShotOfAPairAndIgnoresShotsOfTargets)
{
    const int P = s.station("P", 0, 0), A = s.target("A", 1, 0), B = s.target("B", 2, 0);
    s.direction(A, B, 0.1);
    s.direction(P, A, 0.1);
    s.direction(P, B, 0.1);
    s.direction(P, A, 0.1);
    run();
    EXPECT_EQ(s.rows[P], (std::vector<int>{0, 4, 3}));
}

TEST_F(StartSpread, CountsPairsOfStationsAndKeepsTheirNumberInTheDiagonal)
{
    const int P = s.station("P", 0, 0), Q = s.station("Q", 1, 0), R = s.station("R", 1, 1);
    s.n.p.idebug = 1;
    s.direction(P, Q, 0.1);
    s.direction(Q, P, 0.1);
    s.direction(Q, R, 0.1);
    s.direction(R, Q, 0.1);
    s.direction(P, R, 0.1); // not returned
    run();
    EXPECT_EQ(npair, 2);
    EXPECT_EQ(s.report(), "\n  1  1  5 | \n  2  2  3 | \n  0  4  1 | \n\n");
}

TEST_F(StartSpread, MarksStationsWithThreeKnownTargetsForResection)
{
    const int P = s.station("P", 0, 0, 0, 0, 0), Q = s.station("Q", 0, 0, 0, 0, 0), R = s.station("R", 0, 0, 0, 0, 0),
              T = s.station("T", 0, 0, 0, 0, 0);
    const int A = s.target("A", 1, 0), B = s.target("B", 2, 0), C = s.target("C", 3, 0);
    for (int i : {A, B, C, Q, R}) s.know(i);
    for (int i : {P, Q, R})
        for (int t : {A, B, C}) s.direction(i, t, 0.1 * t);
    s.know_turn(R);         // R is done
    s.direction(T, A, 0.1); // two targets and two known stations are not enough
    s.direction(T, B, 0.2);
    s.direction(T, Q, 0.3);
    s.direction(T, R, 0.4);
    run();
    EXPECT_EQ(s.itheo, (std::vector<int>{THEO_RESECT, THEO_RESECT, THEO_DONE, THEO_UNKNOWN}));
    EXPECT_EQ(nresec, 2);
}

class StartSpread3D : public StartSpread {
protected:
    StartSpread3D() : StartSpread(3)
    {
        P = s.station("P", 10, 20, 0.5, 3);
        A = s.target("A", 70, 90, 40);
        s.know(P);
        s.know_turn(P);
        s.sight(P, A);
        s.range(P, A);
    }
    int P, A;
};

TEST_F(StartSpread3D, LevelsSlopeDistances)
{
    run();
    expect_point(A);
}

TEST_F(StartSpread3D, PlacesNothingWhenVerticalAnglesAreNotParallelToDirections)
{
    s.dir2.pop_back();
    run();
    EXPECT_EQ(s.points[A].n0[0], N_MISSING);
    EXPECT_EQ(nused, 1);
}

} // namespace
