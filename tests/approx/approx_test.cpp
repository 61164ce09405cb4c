#include <gtest/gtest.h>

#include "approx/sketch.h"
#include "support/faults.h"

namespace {

const double rounding = 1e-11; // metres

void set_codes(point *p, int a, int b, int c)
{
    p->n0[0] = a;
    p->n0[1] = b;
    p->n0[2] = c;
}

std::string codes(const point &p)
{
    char text[100];
    snprintf(text, sizeof text, "%d %d %d", p.n0[0], p.n0[1], p.n0[2]);
    return text;
}

TEST(ComputeHeights, HoldsTheFirstHeightWithoutValueAndFreesTheOthersWithAWarning)
{
    Sketch s(1);
    for (const char *name : {"A", "B", "C", "D", "E"}) s.target(name, 0, 0);
    const int code[5] = {N_FIXED_MISSING, N_MISSING, N_FIXED_MISSING, N_NONE, N_FIXED_MISSING};
    for (int i = 0; i < 5; i++) set_codes(&s.points[i], -1, -1, code[i]);
    s.wire();
    EXPECT_EQ(s.a->compute(9), 0);
    EXPECT_EQ(codes(s.points[0]), "-1 -1 -1");
    EXPECT_EQ(codes(s.points[1]), "-1 -1 1");
    EXPECT_EQ(codes(s.points[2]), "-1 -1 1");
    EXPECT_EQ(codes(s.points[3]), "-1 -1 -1");
    EXPECT_EQ(codes(s.points[4]), "-1 -1 1");
    EXPECT_EQ(s.report(), "Approx Warning!!!\nAlready 1 height not known fixed\n"
                          "Approx Warning!!!\nAlready 1 height not known fixed\n");
}

TEST(ComputeHeights, TracesThatNothingIsNeeded)
{
    Sketch s(1);
    s.target("A", 0, 0);
    set_codes(&s.points[0], -1, -1, N_UNKNOWN);
    s.n.p.idebug = 1;
    s.wire();
    EXPECT_EQ(s.a->compute(1), 0);
    EXPECT_EQ(codes(s.points[0]), "-1 -1 1");
    EXPECT_EQ(s.report(), "No real need for approximation computation:\nUse 0. for each height\n");
}

// One station that measures distances to two targets.
class Compute : public ::testing::Test {
protected:
    explicit Compute(int dim = 2) : s(dim)
    {
        S = s.station("S", 10, 20, 0.5, 3);
        A = s.target("A", 70, 90, 40);
        B = s.target("B", -30, 5, -7);
        for (int t : {A, B}) {
            s.sight(S, t);
            s.range(S, t);
        }
        s.know(S);
        s.know_turn(S);
    }
    void TearDown() override { fail_allocation(0); }

    int run(int iapprox)
    {
        for (int k = 0; k < 8; k++) s.ia1[k] = 10 + k;
        s.wire();
        return s.a->compute(iapprox);
    }

    void expect_place(int i)
    {
        for (int k = 0; k < s.n.p.dim; k++) EXPECT_NEAR(s.points[i].xpt[k], s.truth[i].x[k], rounding);
    }

    Sketch s;
    int S, A, B;
};

class ComputeInSpace : public Compute {
protected:
    ComputeInSpace() : Compute(3) {}
};

TEST_F(Compute, FindsThePointsAroundAKnownStation)
{
    ASSERT_EQ(run(9), 0);
    for (int i : {S, A, B}) expect_place(i);
    EXPECT_EQ(codes(s.points[A]), "9 9 -1");
    EXPECT_EQ(codes(s.points[S]), "-1 -1 -1");
    for (int k = 0; k < 8; k++) EXPECT_EQ(s.ia1[k], 10 + k); // put back
    EXPECT_EQ(s.report(), "");
}

TEST_F(ComputeInSpace, FindsHeightsAsWell)
{
    s.know_height(S);
    ASSERT_EQ(run(9), 0);
    for (int i : {S, A, B}) expect_place(i);
}

TEST_F(Compute, HoldsAPointWhereItWasFound)
{
    set_codes(&s.points[A], N_FIXED_MISSING, N_FIXED_MISSING, N_NONE);
    s.points[S].n1[2] = N_FIXED_MISSING; // no orientation: the datum takes it
    ASSERT_EQ(run(9), 0);
    EXPECT_EQ(codes(s.points[A]), "-1 -1 -1");
    EXPECT_EQ(s.points[S].n1[2], N_NONE);
    expect_place(A);
}

TEST_F(Compute, PutsTheCodesOfAllParametersBack)
{
    const int n1[6] = {1, 9, 1, 1, 9, 1};
    for (int k = 0; k < 6; k++) s.points[S].n1[k] = n1[k];
    ASSERT_EQ(run(9), 0);
    for (int k = 0; k < 6; k++) EXPECT_EQ(s.points[S].n1[k], n1[k]);
}

TEST_F(Compute, KeepsValuesThatStandWhenOnlyMissingOnesAreAskedFor)
{
    for (int k = 0; k < 2; k++) s.points[B].n0[k] = N_UNKNOWN;
    s.points[B].xpt[0] = -30.4;
    s.points[B].xpt[1] = 5.2;
    ASSERT_EQ(run(9), 0);
    EXPECT_EQ(s.points[B].xpt[0], -30.4);
    EXPECT_EQ(s.points[B].xpt[1], 5.2);
    EXPECT_EQ(codes(s.points[B]), "1 1 -1");
    expect_place(A);
}

TEST_F(Compute, FindsAllAnewByTheUsersWish)
{
    for (int k = 0; k < 2; k++) s.points[B].n0[k] = N_UNKNOWN;
    s.points[B].xpt[0] = -30.4;
    s.points[S].n1[0] = s.points[S].n1[1] = N_UNKNOWN;
    ASSERT_EQ(run(1), 0);
    expect_place(B);
    EXPECT_EQ(codes(s.points[B]), "9 9 -1"); // a saved code 9 stays 9
    EXPECT_EQ(s.points[S].n1[0], N_MISSING);
    EXPECT_EQ(s.points[S].n1[1], N_MISSING);
}

TEST_F(Compute, HasNothingToDoWhenAllIsKnown)
{
    for (int t : {A, B})
        for (int k = 0; k < 2; k++) s.points[t].n0[k] = t == A ? N_UNKNOWN : N_NONE;
    s.n.p.idebug = 1;
    ASSERT_EQ(run(9), 0);
    EXPECT_EQ(codes(s.points[A]), "1 1 -1");
    EXPECT_EQ(codes(s.points[B]), "-1 -1 -1");
    EXPECT_EQ(s.points[A].xpt[0], 0.0);
    EXPECT_EQ(s.report(), "\nAt the beginning of approx: iapprox=9\n"
                          "S    -1 -1 -1   -1 -1 -1   -1 -1\n"
                          "A     1  1 -1   -1 -1 -1   -1 -1\n"
                          "B    -1 -1 -1   -1 -1 -1   -1 -1\n\n"
                          "\nBefore datum_approx\n"
                          "S    -1 -1 -1   -1 -1 -1\n"
                          "A    -1 -1 -1   -1 -1 -1\n"
                          "B    -1 -1 -1   -1 -1 -1\n\n"
                          "In datum_approx: # of x1 fixed= 3\n"
                          "                 # of x2 fixed= 3\n"
                          "                 # of x3 fixed= 3\n"
                          "                 # of R3 fixed= 1\n"
                          "In approx: no need to compute any coordimates\n"
                          "\nAt the end of approx: iapprox=9\n"
                          "S    -1 -1 -1   -1 -1 -1   -1 -1\n"
                          "A     1  1 -1   -1 -1 -1   -1 -1\n"
                          "B    -1 -1 -1   -1 -1 -1   -1 -1\n\n");
}

TEST_F(Compute, EndsWithoutADatum)
{
    s.points[A].n0[2] = N_MISSING; // a height in the plane
    s.points[S].n1[4] = N_UNKNOWN;
    EXPECT_EQ(run(9), -2);
    EXPECT_EQ(s.report(), "In approx: Strange.... when dim=2....\n");
    EXPECT_EQ(s.points[S].n1[4], N_NONE); // working codes and counts stay
    EXPECT_EQ(s.ia1[0], 1);
    EXPECT_EQ(s.ia1[4], 0);
}

TEST_F(Compute, EndsWhenNotAllCanBeReached)
{
    s.n.stations[0].typ = 0; // no distances: nothing to go on from
    s.points[S].n1[2] = N_MISSING;
    EXPECT_EQ(run(9), -12);
    EXPECT_EQ(s.points[S].n0[0], N_NONE);
}

TEST_F(Compute, SaysThatThereIsNoMemoryForTheCodes)
{
    const char *line[] = {"In approx: Cannot allocate savn0, savn1\n", "In approx: Cannot allocate savn0, savn1\n",
                          "In approx: Cannot allocate columns for savn0, savn1\n",
                          "In approx: Cannot allocate columns for savn0, savn1\n"};
    std::string all;
    s.wire();
    for (int n = 1; n <= 4; n++) {
        fail_allocation(n);
        EXPECT_EQ(s.a->compute(9), -1);
        all += line[n - 1];
        EXPECT_EQ(s.report(), all);
        EXPECT_EQ(codes(s.points[A]), "9 9 -1");
    }
}

TEST_F(Compute, EveryFailedAllocationOfTheSpreadEndsTheRunByItsLine)
{
    const struct {
        int count;
        const char *line;
    } rows[] = {{3, "In spread: pb with xap\n"},
                {3, "In spread: pb with table\n"},
                {1, "In spread: pb with table when i=0\n"},
                {3 * 7 + 6, "In spread: pb with table\n"}}; // the lists by points
    std::string all;
    int n = 4; // the saved codes
    for (const auto &row : rows)
        for (int k = 0; k < row.count; k++) {
            for (int i : {A, B}) set_codes(&s.points[i], N_MISSING, N_MISSING, N_NONE);
            s.wire();
            fail_allocation(++n);
            EXPECT_EQ(s.a->compute(9), -12) << n;
            all += row.line;
            EXPECT_EQ(s.report(), all) << n;
        }
    for (int i : {A, B}) set_codes(&s.points[i], N_MISSING, N_MISSING, N_NONE);
    s.wire();
    fail_allocation(0);
    EXPECT_EQ(s.a->compute(9), 0);
    EXPECT_EQ(allocations(), n);
}

TEST_F(Compute, KnowsAStationThatGivesDistancesByTheFirstRecordOfItsName)
{
    station_input other = s.n.stations[0];
    other.typ = 0;
    s.n.stations.push_back(other); // the second record of this name does not count
    s.wire();
    for (int typ : {-1, 0, 1}) {
        s.n.stations[0].typ = typ;
        EXPECT_EQ(istotal(s.net(), S), typ);
    }
    s.n.stations[0].typ = 2;
    EXPECT_EQ(istotal(s.net(), S), 1);
    EXPECT_EQ(istotal(s.net(), A), 0);
    strcpy(s.points[S].name, "S ");
    EXPECT_EQ(istotal(s.net(), S), 0); // names are compared to the last blank
}

} // namespace
