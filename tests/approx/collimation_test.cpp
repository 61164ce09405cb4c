#include "approx/collimation.h"
#include "approx/pairs.h"
#include "support/faults.h"

namespace {

const double rounding = 1e-9; // metres, radians: one intersection at some 100 m
const double pi = 4.0 * atan(1.0);

class Collimation : public Pairs {
protected:
    explicit Collimation(int dim = 2) : Pairs(dim) {}

    int start()
    {
        if (!s.a) wire();
        iscale = 7;
        return colli_spread(s.net(), s.tab(), npair, &iscale);
    }

    // The frame has i1 at the origin, i2 on the x1 axis, and the scale given.
    void expect_frame(int i1, int i2, double scale, const std::vector<int> &points)
    {
        const double turn = s.bearing(i1, i2), c = cos(turn), w = sin(turn);
        for (int i : points) {
            const double dx = s.truth[i].x[0] - s.truth[i1].x[0], dy = s.truth[i].x[1] - s.truth[i1].x[1];
            EXPECT_NEAR(s.xap[i], scale * (c * dx + w * dy), rounding) << i;
            EXPECT_NEAR(s.yap[i], scale * (c * dy - w * dx), rounding) << i;
        }
        for (int i : {i1, i2}) EXPECT_NEAR(cos(s.oap[i] - s.truth[i].turn + turn), 1.0, rounding);
    }

    // P and Q sight each other and A, B, C.
    void simple()
    {
        pair(P, Q);
        see(P, {A, B, C});
        see(Q, {A, B, C});
    }

    double base() const { return s.level(P, Q); }

    int iscale = 0;
};

class CollimationInSpace : public Collimation {
protected:
    CollimationInSpace() : Collimation(3) {}
};

TEST_F(Collimation, MakesAFrameOnTheBaseOfTwoStations)
{
    simple();
    see(P, {R, D});
    see(Q, {R, E});
    wire();
    colli_base(s.net(), s.tab(), P, Q);
    expect_frame(P, Q, 1 / base(), {P, Q, R, A, B, C});
    EXPECT_EQ(s.itheo, (std::vector<int>{THEO_DONE, THEO_DONE, THEO_PLACED}));
    EXPECT_EQ(s.iobj, (std::vector<int>{-1, -1, -1, 0, 0})); // D and E are seen from one end
    EXPECT_EQ(s.oap[P], -s.dir1[s.table[P][Q] - 1].val[0]);
    EXPECT_EQ(s.oap[Q], pi - s.dir1[s.table[Q][P] - 1].val[0]); // not wrapped
}

TEST_F(Collimation, IntersectsTargetsBeforeStations)
{
    s.n.p.idebug = 1;
    simple();
    see(P, {R});
    see(Q, {R});
    wire();
    colli_base(s.net(), s.tab(), P, Q);
    const std::string by = " by theo P and Q\n", head = "       intersection of   ";
    EXPECT_EQ(s.news(), head + "A" + by + head + "B" + by + head + "C" + by + head + "R" + by);
}

TEST_F(Collimation, WithoutAScaleKeepsTheBaseOfOneAndSaysSo)
{
    simple();
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(iscale, 0);
    expect_frame(P, Q, 1 / base(), {P, Q, A, B, C});
    EXPECT_EQ(s.news(), "colli_spread: Could not scale \n");
}

TEST_F(Collimation, ForgetsWhatWasKnown)
{
    simple();
    wire();
    for (int t : {D, E}) s.place(t);
    s.place(R, THEO_DONE);
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(s.itheo[R], 0);
    EXPECT_EQ(s.iobj[D - 3], 0);
    for (int i : {R, D, E}) {
        EXPECT_EQ(s.xap[i], 0);
        EXPECT_EQ(s.yap[i], 0);
    }
}

TEST_F(Collimation, TakesItsScaleFromABar)
{
    s.n.p.idebug = 1;
    simple();
    s.range(A, C);
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(iscale, 1);
    expect_frame(P, Q, 1, {P, Q, A, B, C});
    const std::string text = s.news();
    EXPECT_NE(text.find("the best pair (with scale bar) is:  P  Q\n"), std::string::npos);
    char line[100];
    snprintf(line, sizeof line, "Observed scale bar gives a scale factor of %15.5lf\n", base());
    EXPECT_NE(text.find(line), std::string::npos);
    EXPECT_EQ(text.find("Could not scale"), std::string::npos);
}

TEST_F(CollimationInSpace, TakesItsScaleFromASlopingBar)
{
    simple();
    s.range(A, C); // 20 m of height
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(iscale, 1);
    expect_frame(P, Q, 1, {P, Q, A, B, C});
    EXPECT_EQ(s.news(), "");
}

TEST_F(CollimationInSpace, TakesTheLastVerticalAngleToAnEndOfTheBar)
{
    simple();
    s.range(A, C);
    s.dir2[2].val[0] += 0.3; // the first angle from P to A
    s.vertical(P, A, atan2(s.truth[A].x[2] - s.truth[P].x[2], s.level(P, A)));
    EXPECT_EQ(s.dir2[2].p2, &s.points[A]);
    EXPECT_EQ(start(), 0);
    expect_frame(P, Q, 1, {A, B, C});
}

TEST_F(CollimationInSpace, CannotScaleByABarWithoutItsVerticalAngles)
{
    s.n.p.idebug = 1;
    for (int end = 0; end < 2; end++) {
        Sketch n(3);
        const int p = n.station("P", 0, 0), q = n.station("Q", 50, 3);
        const int t[3] = {n.target("A", 30, 60, 4), n.target("B", 70, 40, 5), n.target("C", 20, -30, 6)};
        for (int i : {p, q}) {
            n.sight(i, p + q - i);
            for (int k : t) n.sight(i, k);
        }
        n.distance(t[0], t[1], 44);
        n.dir2.erase(n.dir2.begin() + 1 + end); // from P to A, or to B
        n.wire();
        n.table[p][p] = n.table[q][q] = 1;
        int scaled = 7;
        EXPECT_EQ(colli_spread(n.net(), n.tab(), 1, &scaled), 0);
        EXPECT_EQ(scaled, 0);
        EXPECT_EQ(n.xap[q], 1.0);
        EXPECT_EQ(n.news(), "Strange in colli_spread: Cannot scale with the SB\ncolli_spread: Could not scale \n");
    }
}

TEST_F(Collimation, TakesItsScaleFromTheFirstTwoKnownPoints)
{
    s.n.p.idebug = 1;
    simple();
    for (int t : {A, B, C}) s.know(t);
    s.points[C].xpt[0] += 500; // the third is not looked at
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(iscale, 1);
    expect_frame(P, Q, 1, {P, Q, A, B, C});
    const std::string text = s.news();
    EXPECT_NE(text.find("the best pair (with control) is:  P  Q\n"), std::string::npos);
    char line[100];
    snprintf(line, sizeof line, "Control points give a scale factor of %15.5lf\n", base());
    EXPECT_NE(text.find(line), std::string::npos);
}

TEST_F(Collimation, TheTwoStationsCanBeTheKnownPoints)
{
    simple();
    for (int i : {P, Q, A, B}) s.know(i);
    s.points[A].xpt[0] += 500; // P and Q come first
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(iscale, 1);
    expect_frame(P, Q, 1, {P, Q, A, B, C});
}

TEST_F(Collimation, CannotScaleByPointsOfWhichOneCoordinateIsKnown)
{
    s.n.p.idebug = 1;
    simple();
    s.know(A);
    s.know(B);
    s.know(C);
    s.points[A].n0[0] = N_MISSING; // two of each coordinate, but one point in full
    s.points[B].n0[1] = N_MISSING;
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(iscale, 0);
    expect_frame(P, Q, 1 / base(), {P, Q, A, B, C});
    const std::string text = s.news(), end = "Could not scale with the control\ncolli_spread: Could not scale \n";
    EXPECT_EQ(text.substr(text.size() - end.size()), end);
}

TEST_F(Collimation, OneLineIsWrittenWithoutTracesWhenControlDoesNotScale)
{
    simple();
    for (int t : {A, B, C}) s.know(t);
    s.points[A].n0[0] = s.points[B].n0[1] = N_MISSING;
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(s.news(), "colli_spread: Could not scale \n");
}

// The first pair of equals, in each class.
TEST_F(Collimation, OfEqualPairsTheFirstWins)
{
    s.n.p.idebug = 1;
    simple();
    pair(P, R);
    pair(Q, R);
    see(R, {A, B, C});
    EXPECT_EQ(start(), 0);
    EXPECT_NE(s.news().find("the best pair is:  P  Q\n"), std::string::npos);
}

TEST_F(Collimation, OfEqualPairsWithABarOrWithControlTheFirstWins)
{
    s.n.p.idebug = 1;
    pair(P, R);
    pair(P, Q);
    pair(Q, R);
    see(P, {D, E, A});
    see(Q, {A, B, C});
    see(R, {A, B, C, D, E});
    s.know(A), s.know(B), s.know(D); // pairs PR and QR have two known targets each
    EXPECT_EQ(start(), 0);
    EXPECT_NE(s.news().find("the best pair (with control) is:  P  R\n"), std::string::npos);
    s.a.reset();
    s.range(B, C);
    s.range(D, E);
    EXPECT_EQ(start(), 0);
    EXPECT_NE(s.news().find("the best pair (with scale bar) is:  P  R\n"), std::string::npos);
}

TEST_F(Collimation, APairWithABarComesBeforeControlAndThatBeforeMoreShots)
{
    s.n.p.idebug = 1;
    pair(P, Q);
    pair(P, R);
    pair(Q, R);
    see(P, {A, B, C, D});
    see(Q, {A, B, C, D, E});
    see(R, {C, D, E});
    s.know(C), s.know(E); // pair QR
    s.range(A, B);        // a bar of pair PQ
    EXPECT_EQ(start(), 0);
    EXPECT_NE(s.news().find("the best pair (with scale bar) is:  P  Q\n"), std::string::npos);
    s.a.reset();
    s.dist.clear();
    EXPECT_EQ(start(), 0);
    EXPECT_NE(s.news().find("the best pair (with control) is:  Q  R\n"), std::string::npos); // PQ has four shots
    s.a.reset();
    s.points[E].n0[0] = N_MISSING; // x2 of two targets is not enough
    EXPECT_EQ(start(), 0);
    EXPECT_NE(s.news().find("the best pair is:  P  Q\n"), std::string::npos);
    s.a.reset();
    s.points[E].n0[0] = N_NONE;
    s.points[E].n0[1] = N_MISSING;
    EXPECT_EQ(start(), 0);
    EXPECT_NE(s.news().find("the best pair is:  P  Q\n"), std::string::npos);
}

TEST_F(Collimation, NeedsAPairWithACommonShot)
{
    pair(P, Q);
    see(P, {A});
    see(Q, {B});
    wire();
    s.table[Q][Q] = 0; // what no start does: otherwise the partner counts as a common shot
    EXPECT_EQ(start(), -1);
    EXPECT_EQ(s.news(), "In spread: no two stations that sighted each other have a common shot\n");
}

TEST_F(Collimation, FailsOnABarThatDoesNotJoinTargets)
{
    simple();
    s.distance(P, A, 1);
    wire();
    double scale = 3;
    EXPECT_EQ(scale_by_bar(s.net(), s.tab(), P, 0, &scale), -1);
    EXPECT_EQ(scale, 3);
    EXPECT_EQ(s.news(), "In spread: Strange pb with iscale and scale bars\n");
}

TEST_F(Collimation, TakesAnInfiniteScaleFromABarWithoutLengthInTheFrame)
{
    simple();
    s.range(A, C);
    s.wire();
    double scale = 0.0;
    EXPECT_EQ(scale_by_bar(s.net(), s.tab(), P, 0, &scale), 1); // the frame is all zero
    EXPECT_TRUE(std::isinf(scale));
}

TEST_F(Collimation, FailsWithoutMemory)
{
    simple();
    s.range(A, B);
    const char *const line[] = {"In spread: pb with tabpair\n", "in buildtabpair: cannot allocate\n"};
    for (int k = 0; k < 2; k++) {
        wire();
        fail_allocation(k + 1);
        EXPECT_EQ(start(), -1);
        fail_allocation(0);
        EXPECT_EQ(s.news(), line[k]);
    }
}

} // namespace
