#include <gtest/gtest.h>

#include "approx/resection.h"
#include "approx/sketch.h"

namespace {

const double rounding = 1e-9; // metres

class StartResec : public ::testing::Test {
protected:
    StartResec()
    {
        s.n.p.idebug = 1;
        P = s.station("P", 0, 0, 0.4);
        Q = s.station("Q", 60, -20, -0.8);
        R = s.station("R", 200, 200, 0.1);
        A = s.target("A", 100, 100);
        B = s.target("B", -100, 90);
        C = s.target("C", 20, -120);
        D = s.target("D", 150, 10);
        E = s.target("E", -70, -30);
    }

    void see(int from, const std::vector<int> &points)
    {
        for (int t : points) s.sight(from, t);
    }

    int run(const std::vector<int> &marked)
    {
        for (int t : {A, B, C}) s.place(t);
        for (int i : marked) s.itheo[i] = THEO_RESECT;
        nresec = (int)marked.size();
        return start_resec(s.net(), s.tab(), &nresec);
    }

    void expect_place(int i)
    {
        EXPECT_NEAR(s.xap[i], s.truth[i].x[0], rounding);
        EXPECT_NEAR(s.yap[i], s.truth[i].x[1], rounding);
    }

    // The report without the lines of the shots.
    std::string told()
    {
        std::string text, line;
        for (char c : s.report()) {
            line += c;
            if (c != '\n') continue;
            if (line.find(".") == std::string::npos) text += line;
            line.clear();
        }
        return text;
    }

    Sketch s = Sketch(2);
    int P, Q, R, A, B, C, D, E, nresec = 0;
};

TEST_F(StartResec, AloneWithoutDistanceIsOfNoUse)
{
    see(P, {A, B, C});
    s.wire();
    EXPECT_EQ(run({P}), 0);
    EXPECT_EQ(nresec, 0);
    EXPECT_EQ(s.itheo[P], THEO_RESECT); // it stays marked
    EXPECT_EQ(s.report(), "Only one resection possible at the start\n  Theo : P\nand not a useful one...\n\n");
}

TEST_F(StartResec, AloneWithADistanceIsMade)
{
    see(P, {A, B, C, D});
    s.range(P, D);
    s.wire();
    EXPECT_EQ(run({P}), 0);
    EXPECT_EQ(nresec, 1);
    EXPECT_EQ(s.itheo[P], THEO_DONE);
    expect_place(P);
    expect_place(D);
    EXPECT_EQ(s.iobj[D - 3], OBJ_PLACED);
    EXPECT_EQ(told(), "Only one resection possible at the start\n  Theo : P\n");
}

TEST_F(StartResec, AloneDoesNotIntersect)
{
    s.wire();
    see(P, {A, B, C, D});
    see(Q, {D});
    s.range(P, A);
    s.wire();
    s.place(Q, THEO_DONE);
    EXPECT_EQ(run({P}), 0);
    EXPECT_EQ(s.iobj[D - 3], OBJ_UNKNOWN);
}

TEST_F(StartResec, SeveralAreMadeInOrderAndIntersectWhatTheySeeTogether)
{
    see(P, {A, B, C, D, E});
    see(Q, {A, B, C, D, E});
    s.wire();
    EXPECT_EQ(run({P, Q}), 0);
    EXPECT_EQ(nresec, 2);
    for (int i : {P, Q}) {
        EXPECT_EQ(s.itheo[i], THEO_DONE);
        expect_place(i);
        EXPECT_NEAR(s.oap[i], s.truth[i].turn, 1e-10);
    }
    for (int t : {D, E}) {
        EXPECT_EQ(s.iobj[t - 3], OBJ_PLACED);
        expect_place(t);
    }
    EXPECT_EQ(told(), "Number of resections at the start = 2\n  Theo : P\n  Theo : Q\n"
                      "       intersection of   D by theo Q and P\n       intersection of   E by theo Q and P\n");
}

TEST_F(StartResec, IntersectsWithTheFirstFinishedStationOnly)
{
    see(P, {D});
    see(Q, {A, B, C, D});
    see(R, {A, B, C, D});
    s.wire();
    s.place(P, THEO_DONE);
    EXPECT_EQ(run({Q, R}), 0);
    EXPECT_NE(told().find("intersection of   D by theo Q and P\n"), std::string::npos);
    EXPECT_EQ(told().find("by theo R"), std::string::npos); // D is placed by then
}

TEST_F(StartResec, WithFewerShotsThanCountedFails)
{
    see(P, {A, B});
    s.range(P, A);
    see(Q, {A, B});
    s.wire();
    EXPECT_EQ(run({P}), -1);
    EXPECT_EQ(run({P, Q}), -1);
    EXPECT_EQ(s.itheo[P], THEO_RESECT);
}

TEST_F(StartResec, IsSilentWithoutTraces)
{
    s.n.p.idebug = 0;
    see(P, {A, B, C, D});
    see(Q, {A, B, C, D});
    s.wire();
    EXPECT_EQ(run({P}), 0);
    EXPECT_EQ(run({P, Q}), 0);
    EXPECT_EQ(s.report(), "");
}

} // namespace
