#include <array>

#include "approx/collimation.h"
#include "approx/pairs.h"
#include "support/faults.h"

namespace {

class PairTable : public Pairs {
protected:
    explicit PairTable(int dim = 3) : Pairs(dim) {}

    int build()
    {
        wire();
        return fill();
    }

    // Into one row more than there are pairs.
    int fill()
    {
        std::vector<stationpair> tabpair(npair + 1);
        const int result = buildtabpair(s.net(), s.tab(), tabpair.data(), npair);
        rows.clear();
        for (const stationpair &p : tabpair)
            rows.push_back({p.it1, p.it2, p.ncommon, p.ibar, p.nknown[0], p.nknown[1], p.nknown[2]});
        return result;
    }

    std::vector<std::array<int, 7>> rows; // stations, common shots, bar, known x1, x2, x3
};

using Row = std::array<int, 7>;

TEST_F(PairTable, ListsEveryPairOnceInTheOrderOfTheStations)
{
    pair(Q, R);
    pair(P, R);
    s.sight(P, Q); // not returned
    see(P, {A, B, C, D});
    see(Q, {A, B, C});
    see(R, {A, C, B});
    EXPECT_EQ(build(), 0);
    ASSERT_EQ(npair, 2);
    EXPECT_EQ(rows[0], (Row{P, R, 3, -1, 0, 0, 0}));
    EXPECT_EQ(rows[1], (Row{Q, R, 3, -1, 0, 0, 0}));
    EXPECT_EQ(s.news(), "");
}

TEST_F(PairTable, CountsKnownCoordinatesOfCommonTargetsOneByOne)
{
    pair(P, Q);
    see(P, {A, B, C, D, R});
    see(Q, {A, B, C, E, R});
    s.know(A);
    s.know(D); // seen from P only
    s.know(R); // a station
    s.points[B].n0[1] = N_NONE;
    s.know_height(B);
    s.know_height(C);
    EXPECT_EQ(build(), 0);
    EXPECT_EQ(rows[0], (Row{P, Q, 3, -1, 1, 2, 2}));
}

TEST_F(PairTable, TakesTheFirstBarThatBothStationsObserved)
{
    pair(P, Q);
    see(P, {A, B, C, D});
    see(Q, {A, B, C, E});
    s.range(P, A); // from a station
    s.range(A, P); // to a station
    s.range(A, D); // D is not seen from Q
    s.range(E, A); // E is not seen from P
    s.range(C, A);
    s.range(B, A);
    EXPECT_EQ(build(), 0);
    EXPECT_EQ(rows[0], (Row{P, Q, 3, 4, 0, 0, 0}));
}

TEST_F(PairTable, MarksTheBarsAnewForEachStation)
{
    pair(P, Q);
    pair(Q, R);
    see(P, {A, B, C});
    see(Q, {A, B, C, D, E});
    see(R, {C, D, E});
    s.range(A, B);
    s.range(D, E);
    EXPECT_EQ(build(), 0);
    EXPECT_EQ(rows[0], (Row{P, Q, 3, 0, 0, 0, 0}));
    EXPECT_EQ(rows[1], (Row{Q, R, 3, 1, 0, 0, 0}));
}

TEST_F(PairTable, CountsStationsAndThePartnerItselfWhereCommonTargetsAreTooFew)
{
    s.n.p.idebug = 1;
    pair(P, Q);
    pair(P, R);
    pair(Q, R);
    see(P, {A, B});
    see(Q, {A, B});
    EXPECT_EQ(build(), 0);
    EXPECT_EQ(rows[0][2], 4); // A, B, R and Q
    EXPECT_EQ(rows[1][2], 2); // Q and R
    EXPECT_EQ(rows[2][2], 2); // P and R
    EXPECT_EQ(s.news(), "\nMust count the theodolites in the common shots\n\nNumber of collimating pairs 3\n"
                        "    0   P Q    4  -1   0 0 0\n    1   P R    2  -1   0 0 0\n    2   Q R    2  -1   0 0 0\n");
}

TEST_F(PairTable, APairWithoutAnyOtherCommonPointHasACountOfOne)
{
    pair(P, Q);
    see(P, {A});
    EXPECT_EQ(build(), 0);
    EXPECT_EQ(rows[0], (Row{P, Q, 1, -1, 0, 0, 0}));
}

TEST_F(PairTable, CountsTargetsAloneWhenOnePairHasThree)
{
    s.n.p.idebug = 1;
    pair(P, Q);
    pair(Q, R);
    see(P, {A, B, C, R});
    see(Q, {A, B, C});
    EXPECT_EQ(build(), 0);
    EXPECT_EQ(rows[0][2], 3);
    EXPECT_EQ(rows[1][2], 0);
    EXPECT_EQ(s.news().find("Must count"), std::string::npos);
}

TEST_F(PairTable, ShowsBarsAndPairsWithTheSecondCoordinateTwice)
{
    s.n.p.idebug = 1;
    pair(P, Q);
    see(P, {A, B, C});
    see(Q, {A, B, C});
    for (int t : {A, B}) s.know(t);
    s.points[B].n0[0] = N_MISSING;
    s.know_height(C); // is not shown
    s.range(P, A);
    s.range(D, E);
    s.range(C, A);
    EXPECT_EQ(build(), 0);
    EXPECT_EQ(rows[0], (Row{P, Q, 3, 2, 1, 2, 1}));
    EXPECT_EQ(s.news(), "\nNumber of observed scale bars 2\n    0   D E\n    1   C A\n"
                        "\nNumber of collimating pairs 1\n    0   P Q    3   2   1 2 2\n");
}

TEST_F(PairTable, SaysNothingOfBarsWithoutDistances)
{
    s.n.p.idebug = 1;
    pair(P, Q);
    see(P, {A, B, C});
    see(Q, {A, B, C});
    EXPECT_EQ(build(), 0);
    EXPECT_EQ(s.news(), "\nNumber of collimating pairs 1\n    0   P Q    3  -1   0 0 0\n");
}

TEST_F(PairTable, FailsWithoutMemoryForTheBars)
{
    pair(P, Q);
    s.range(A, B);
    wire();
    rows.assign(1, {});
    fail_allocation(1);
    EXPECT_EQ(fill(), -1);
    fail_allocation(0);
    EXPECT_EQ(s.news(), "in buildtabpair: cannot allocate\n");
}

} // namespace
