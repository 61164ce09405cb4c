#include <gtest/gtest.h>

#include "approx/sketch.h"

namespace {

TEST(Intersect, FindsATargetAndAStationWhereTheRaysMeet)
{
    Sketch s(2);
    const int P = s.station("P", 0, 0, 0.4), Q = s.station("Q", 50, -10, -1.2), R = s.station("R", 20, 70),
              A = s.target("A", -30, 40);
    for (int t : {R, A}) {
        s.sight(P, t);
        s.sight(Q, t);
    }
    s.n.p.idebug = 1;
    s.wire();
    s.place(P, THEO_DONE);
    s.place(Q, THEO_DONE);
    for (int t : {R, A}) intersect(s.net(), s.tab(), P, Q, t);
    for (int t : {R, A}) {
        EXPECT_NEAR(s.xap[t], s.truth[t].x[0], 1e-11); // a few roundings of 100 m
        EXPECT_NEAR(s.yap[t], s.truth[t].x[1], 1e-11);
    }
    EXPECT_EQ(s.itheo[R], THEO_UNKNOWN); // statuses are the caller's
    EXPECT_EQ(s.iobj[0], OBJ_UNKNOWN);
    EXPECT_EQ(s.report(), "       intersection of   R by theo P and Q\n"
                          "       intersection of   A by theo P and Q\n");
}

TEST(Intersect, IsSilentWithoutTraces)
{
    Sketch s(2);
    const int P = s.station("P", 0, 0), Q = s.station("Q", 50, -10), A = s.target("A", -30, 40);
    s.sight(P, A);
    s.sight(Q, A);
    s.wire();
    s.place(P, THEO_DONE);
    s.place(Q, THEO_DONE);
    intersect(s.net(), s.tab(), P, Q, A);
    EXPECT_EQ(s.report(), "");
}

TEST(Intersect, OfParallelRaysGivesWhatTheDivisionGives)
{
    Sketch s(2);
    const int P = s.station("P", 0, 0), Q = s.station("Q", 0, 10), A = s.target("A", 1, 1);
    s.direction(P, A, 0.5);
    s.direction(Q, A, 0.5);
    s.wire();
    s.place(P, THEO_DONE);
    s.place(Q, THEO_DONE);
    intersect(s.net(), s.tab(), P, Q, A);
    EXPECT_FALSE(std::isfinite(s.xap[A]));
}

} // namespace
