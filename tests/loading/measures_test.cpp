#include <gtest/gtest.h>
#include <math.h>
#include <string.h>
#include <unistd.h>

#include <vector>

#include "support/access.h"
#include "support/faults.h"
#include "support/network.h"

namespace {

const double PI = 4 * atan(1.0);

// Loads without splitting; the counts are those of the selected records.
void load(vorn &run, int nsta, int npoint)
{
    V(run, nsta) = nsta;
    V(run, ntar) = npoint - nsta;
    V(run, npoints) = npoint;
    V(run, ndist) = (V(run, selectm)(1, nullptr));
    V(run, ndifh) = (V(run, selectm)(3, nullptr));
    V(run, ndir1) = (V(run, selectm)(4, nullptr));
    V(run, ndir2) = (V(run, selectm)(5, nullptr));
    V(run, naz) = (V(run, selectm)(7, nullptr));
    ASSERT_EQ((V(run, vornallocate)()), 0);
    (V(run, fill_pt)(nullptr, nullptr, 0, 0, 0));
}

int fill(vorn &run, int kind) { return (V(run, fill_measure)(kind, nullptr, 0, 0, 0)); }

TEST(FillMeasure, TakesSelectedRecordsInOrderWithTheirPoints)
{
    Network n(3);
    n.station("S", 0, 0);
    n.target("T", 1, 0);
    n.target("U", 1, 0);
    n.distance("S", "T", 5, 0.5).time = 3;
    n.distance("S", "X", 6, 0.5).typ = -1;
    measure_input &m = n.distance("U", "S", 7, 0.25);
    m.h1 = 1.5;
    m.h2 = 1.75;
    vorn run(n.ready());
    load(run, 1, 3);
    ASSERT_EQ(fill(run, 1), 0);
    const point *p = V(run, points);
    const measure *d = V(run, dist);
    EXPECT_EQ(d[0].p1, p);
    EXPECT_EQ(d[0].p2, p + 1);
    EXPECT_EQ(d[0].val[0], 5.0);
    EXPECT_EQ(d[0].val[1], 0.5);
    EXPECT_EQ(d[0].time, 3);
    EXPECT_EQ(d[1].p1, p + 2);
    EXPECT_EQ(d[1].p2, p);
    EXPECT_EQ(d[1].h1, 1.5);
    EXPECT_EQ(d[1].h2, 1.75);
    EXPECT_EQ(d[1].val[0], 7.0);
    EXPECT_EQ(d[1].time, 0);
    EXPECT_EQ(p[0].ntie, 2);
    EXPECT_EQ(p[1].ntie, 1);
    EXPECT_EQ(p[2].ntie, 1);
}

TEST(FillMeasure, ScalesLengthsButNeitherAnglesNorHeightsOfInstruments)
{
    const double factors[4] = {1.0, 0.001, 0.0254, 1.0};
    for (int iunit = 0; iunit < 4; iunit++) {
        Network n(3);
        n.p.iunit = iunit;
        n.station("S", 0, 0);
        n.target("T", 1, 0);
        n.distance("S", "T", 100, 3);
        n.distance("S", "T", 200, 3).typ = 2;
        n.heightdiff("S", "T", -50, 2).h1 = 1.5;
        n.direction("S", "T", 1.25, 0.5);
        n.vertical("S", "T", 0.25, 0.125);
        n.azimuth("S", "T", 2.5, 0.0625);
        vorn run(n.ready());
        load(run, 1, 2);
        for (int kind : {1, 3, 4, 5, 7}) ASSERT_EQ(fill(run, kind), 0);
        const double f = factors[iunit];
        EXPECT_DOUBLE_EQ(V(run, dist)[0].val[0], 100 * f);
        EXPECT_DOUBLE_EQ(V(run, dist)[0].val[1], 3 * f);
        EXPECT_DOUBLE_EQ(V(run, dist)[1].val[0], 200 * f);
        EXPECT_DOUBLE_EQ(V(run, difh)[0].val[0], -50 * f);
        EXPECT_DOUBLE_EQ(V(run, difh)[0].val[1], 2 * f);
        EXPECT_EQ(V(run, difh)[0].h1, 1.5);
        EXPECT_EQ(V(run, dir1)[0].val[0], 1.25);
        EXPECT_EQ(V(run, dir1)[0].val[1], 0.5);
        EXPECT_EQ(V(run, dir2)[0].val[0], 0.25);
        EXPECT_EQ(V(run, dir2)[0].val[1], 0.125);
        EXPECT_EQ(V(run, az)[0].val[0], 2.5);
        EXPECT_EQ(V(run, az)[0].val[1], 0.0625);
    }
}

TEST(FillMeasure, TakesAnglesAndTheirDeviationsFromTheUnitOfTheHost)
{
    const double gon = PI / 200;
    Network n(3);
    n.p.iangle = ANGLE_GON;
    n.p.izenith = 1;
    n.station("S", 0, 0);
    n.target("T", 1, 0);
    n.direction("S", "T", 50, 0.5);
    n.vertical("S", "T", 75, 0.25); // a zenith angle: 25 gon above the horizon
    n.azimuth("S", "T", 350, 0.125);
    vorn run(n.ready());
    load(run, 1, 2);
    for (int kind : {4, 5, 7}) ASSERT_EQ(fill(run, kind), 0);
    EXPECT_DOUBLE_EQ(V(run, dir1)[0].val[0], 50 * gon);
    EXPECT_DOUBLE_EQ(V(run, dir1)[0].val[1], 0.5 * gon);
    EXPECT_DOUBLE_EQ(V(run, dir2)[0].val[0], 25 * gon);
    EXPECT_DOUBLE_EQ(V(run, dir2)[0].val[1], 0.25 * gon);
    EXPECT_DOUBLE_EQ(V(run, az)[0].val[0], 350 * gon);
    EXPECT_DOUBLE_EQ(V(run, az)[0].val[1], 0.125 * gon);
}

TEST(FillMeasure, PassesOverRecordsWithTyp0)
{
    Network n(3);
    n.station("S", 0, 0);
    n.target("T", 1, 0);
    n.distance("X", "T", 5, 1).typ = 0;
    n.distance("S", "T", 6, 1);
    vorn run(n.ready());
    load(run, 1, 2);
    ASSERT_EQ(fill(run, 1), 0);
    EXPECT_EQ(V(run, dist)[0].val[0], 6.0);
}

TEST(FillMeasure, SendsTheReportOnItsWay)
{
    Network n(3);
    n.station("S", 0, 0);
    n.target("T", 1, 0);
    n.distance("S", "T", 6, 1);
    vorn run(n.ready());
    load(run, 1, 2);
    fprintf(n.p.out, "so far\n");
    ASSERT_EQ(fill(run, 1), 0);
    char text[16] = {};
    EXPECT_EQ(pread(fileno(n.p.out), text, sizeof text, 0), 7); // read behind the buffer's back
    EXPECT_STREQ(text, "so far\n");
}

TEST(FillMeasure, TracesNothingWherePointsAreNotSplit)
{
    Network n(3);
    n.p.idebug = 1;
    n.station("S", 0, 0);
    n.target("T", 1, 0);
    n.distance("S", "T", 5, 1).time = 3;
    vorn run(n.ready());
    load(run, 1, 2);
    ASSERT_EQ(fill(run, 1), 0);
    EXPECT_EQ(n.report(), "");
}

TEST(FillMeasure, MarksADistanceThatTakesItsStationsConstants)
{
    Network n(3);
    n.station("S", 0, 0);
    n.target("T", 1, 0);
    n.distance("S", "T", 1, 1);
    n.distance("S", "T", 1, 1).typ = KIND_DISTANCE_CONSTANTS;
    vorn run(n.ready());
    load(run, 1, 2);
    ASSERT_EQ(fill(run, 1), 0);
    EXPECT_EQ(V(run, dist)[0].typ, 0);
    EXPECT_EQ(V(run, dist)[1].typ, 1);
}

TEST(FillMeasure, MarksTheDistanceOfTheSameNumberForAnyList)
{
    Network n(3);
    n.station("S", 0, 0);
    n.target("T", 1, 0);
    n.distance("S", "T", 1, 1);
    n.heightdiff("S", "T", 1, 1).typ = 2;
    n.heightdiff("S", "T", 1, 1).typ = 2; // there is no second distance
    vorn run(n.ready());
    load(run, 1, 2);
    ASSERT_EQ(fill(run, 3), 0);
    EXPECT_EQ(V(run, dist)[0].typ, 1);
    EXPECT_EQ(V(run, difh)[0].typ, 0);

    n.distances.clear();
    vorn none(n.ready());
    load(none, 1, 2);
    EXPECT_EQ(fill(none, 3), 0);
}

TEST(FillMeasure, FailsOnAPointThatIsNotInTheTable)
{
    Network n(3);
    n.station("S", 0, 0);
    n.target("T", 1, 0);
    n.target("Z", 1, 0).status = 0;
    n.distance("Z", "S", 1, 1);
    n.heightdiff("S", "Z", 1, 1);
    vorn run(n.ready());
    load(run, 1, 2);
    EXPECT_EQ(fill(run, 1), -1);
    EXPECT_EQ(fill(run, 3), -2);
    EXPECT_EQ(n.report(), "");
}

TEST(FillMeasure, FailsOnAnglesThatTheHostCannotRead)
{
    Network n(3);
    n.station("S", 0, 0);
    n.target("T", 1, 0);
    n.direction("S", "T", NAN, 1);
    n.azimuth("S", "T", NAN, 1);
    n.vertical("S", "T", NAN, 1);
    vorn run(n.ready());
    load(run, 1, 2);
    EXPECT_EQ(fill(run, 4), -4);
    EXPECT_EQ(n.report(), "fill_measure: horizontal directions..\n");
    for (int i = 0; i < 2; i++) EXPECT_EQ(V(run, points)[i].ntie, 1); // counted before the value is read
    EXPECT_EQ(fill(run, 7), -4);
    EXPECT_EQ(fill(run, 5), -5);
    EXPECT_EQ(n.report(), "fill_measure: horizontal directions..\nfill_measure: azimuth angles..\n"
                          "fill_measure: vertical angles..\n");
}

TEST(FillMeasure, StopsAtTheCountOfTheList)
{
    Network n(3);
    n.station("S", 0, 0);
    n.target("T", 1, 0);
    for (int i = 0; i < 3; i++) n.distance("S", "T", 1 + i, 1);
    vorn run(n.ready());
    load(run, 1, 2);
    V(run, ndist) = 2;
    EXPECT_EQ(fill(run, 1), 0);
    EXPECT_EQ(V(run, dist)[1].val[0], 2.0);
    EXPECT_EQ(V(run, dist)[2].p1, nullptr);
}

TEST(FillMeasure, CutsANameThatFillsItsField)
{
    Network n(3);
    memset(n.station("", 0, 0).name, 'x', 12);
    n.target("T", 1, 0);
    memset(n.distance("", "T", 1, 1).from, 'x', 12);
    vorn run(n.ready());
    load(run, 1, 2);
    EXPECT_EQ(fill(run, 1), 0);
}

// Points split by the epochs 1, 2, 3: a row for each point that says whether it is split and
// holds its epochs in columns 1 to 3, stations first.
class SplitPoints {
public:
    // Loads one distance of an epoch; gives the points it goes to and the result.
    int load(const char *from, const char *to, int time) { return load(from, to, time, npoints); }
    int load(const char *from, const char *to, int time, int room)
    {
        n.distances.clear();
        n.distance(from, to, 1, 1).time = time;
        vorn run(n.ready());
        V(run, nsta) = nsta;
        V(run, npoints) = room;
        V(run, ndist) = V(run, nlump) = 1;
        int lumps[3] = {1};
        int *isplit[3] = {rows[0].data(), rows[1].data(), rows[2].data()};
        EXPECT_EQ((V(run, vornallocate)()), 0);
        (V(run, fill_pt)(lumps, isplit, nrowsta, 3 - nrowsta, 3));
        fail_allocation(failing);
        const int result = (V(run, fill_measure)(1, isplit, nrowsta, 3 - nrowsta, 3));
        fail_allocation(0);
        ip1 = result ? -1 : (int)(V(run, dist)[0].p1 - V(run, points));
        ip2 = result ? -1 : (int)(V(run, dist)[0].p2 - V(run, points));
        return result;
    }
    Network n;
    int ip1 = -1, ip2 = -1;
    int failing = 0;

protected:
    using Rows = std::vector<std::vector<int>>;
    SplitPoints(int nsta_, int npoints_, int nrowsta_, Rows rows_)
        : n(3), nsta(nsta_), npoints(npoints_), nrowsta(nrowsta_), rows(std::move(rows_))
    {
    }

private:
    int nsta, npoints; // copies included
    int nrowsta;       // rows of stations
    Rows rows;
};

// 0, 1: S at epochs 2 and 3    2: R, not split    3, 4: T at 1 and 3    5: U at 2
class Split : public SplitPoints {
public:
    explicit Split(int idebug = 0) : SplitPoints(3, 6, 1, {{0, 0, 2, 3}, {0, 1, 0, 3}, {1, 0, 2, 0}})
    {
        n.p.idebug = idebug;
        n.station("S", 0, 0).ilump = 1;
        n.station("R", 0, 0);
        n.target("T", 1, 0).ilump = 1;
        n.target("U", 1, 0).ilump = 1;
    }
};

TEST(FillMeasure, RedirectsToTheCopiesOfTheEpoch)
{
    const struct {
        const char *from, *to;
        int time, ip1, ip2;
    } rows[] = {
        {"R", "T", 1, 2, 3},                      // the first epoch is the point itself
        {"R", "T", 3, 2, 4},                      // one empty column in between
        {"R", "U", 2, 2, 5}, {"R", "T", 0, 2, 3}, // no epoch: the sources
        {"S", "T", 0, 0, 3}, {"S", "R", 2, 0, 2},
        {"S", "R", 3, 1, 2}, {"S", "T", 2, 0, 3}, // the search ends at the station
        {"S", "T", 3, 1, 3}, {"T", "R", 3, 3, 2}, // rows of targets do not look at from
        {"R", "T", 9, 2, 3},                      // an epoch that no row holds
    };
    Split s;
    for (s.failing = 0; s.failing <= 8; s.failing++) // the same without memory for chains
        for (const auto &r : rows) {
            ASSERT_EQ(s.load(r.from, r.to, r.time), 0) << r.from << r.to << r.time;
            EXPECT_EQ(s.ip1, r.ip1) << r.from << r.to << r.time;
            EXPECT_EQ(s.ip2, r.ip2) << r.from << r.to << r.time;
        }
}

TEST(FillMeasure, CarriesEmptyColumnsFromRowToRow)
{
    // S holds no epoch 1 and has one empty column; T's first column then gives 3 - 1 + 1 - 1.
    Split s;
    for (s.failing = 0; s.failing <= 8; s.failing++) {
        ASSERT_EQ(s.load("S", "T", 1), 0);
        EXPECT_EQ(s.ip1, 0);
        EXPECT_EQ(s.ip2, 2);
    }
}

TEST(FillMeasure, PlacesAStationAtTheFarEndFromTheFirstPoint)
{
    Split s;
    ASSERT_EQ(s.load("R", "S", 2), 0); // 2 - 1 + 2 - 1, from R and not from S
    EXPECT_EQ(s.ip1, 2);
    EXPECT_EQ(s.ip2, 2);
    ASSERT_EQ(s.load("R", "S", 3), 0);
    EXPECT_EQ(s.ip2, 3);
}

TEST(FillMeasure, CountsACopyOutsideThePointsAsMissing)
{
    Split s;
    EXPECT_EQ(s.load("R", "T", 3, 4), -2); // the copy of T did not find room
    EXPECT_EQ(s.load("U", "S", 3), -2);    // 5 - 1 + 3 - 1 = 6
    EXPECT_EQ(s.load("S", "R", 3, 6), 0);
}

TEST(FillMeasure, TracesRedirections)
{
    Split s(1);
    ASSERT_EQ(s.load("R", "T", 3), 0);
    const std::string report = s.n.report();
    const std::string wanted = "fill_measure: 0     : R to T at 3\nchange ip2 from 3 to 4\n";
    EXPECT_EQ(report.substr(report.find("fill_measure")), wanted);
}

// 0, 1: S at epochs 1 and 2    2, 3: R at 2 and 3    4 to 6: T at all three
class TwoStations : public SplitPoints {
public:
    TwoStations() : SplitPoints(4, 7, 2, {{0, 1, 2, 0}, {1, 0, 2, 3}, {0, 1, 2, 3}})
    {
        n.station("S", 0, 0).ilump = 1;
        n.station("R", 0, 0).ilump = 1;
        n.target("T", 1, 0).ilump = 1;
    }
};

TEST(FillMeasure, EndsTheSearchAtAnEpochInTheFirstColumn)
{
    TwoStations s;
    ASSERT_EQ(s.load("S", "T", 1), 0);
    EXPECT_EQ(s.ip1, 0);
    EXPECT_EQ(s.ip2, 4); // the rows of targets are not looked at
}

TEST(FillMeasure, VisitsTheStationsInTheOrderOfTheirRows)
{
    TwoStations s;
    ASSERT_EQ(s.load("R", "S", 2), 0); // the row of S comes first: 2 - 1 + 2
    EXPECT_EQ(s.ip1, 2);
    EXPECT_EQ(s.ip2, 3);
    ASSERT_EQ(s.load("S", "R", 3), 0); // S has no epoch 3 and one empty column, R another: 0 - 1 + 3 - 2
    EXPECT_EQ(s.ip1, 0);
    EXPECT_EQ(s.ip2, 0);
}

TEST(FillMeasure, LooksAtTheFirstPointOfARecordFromAStationToItself)
{
    TwoStations s;
    ASSERT_EQ(s.load("S", "S", 2), 0);
    EXPECT_EQ(s.ip1, 1);
    EXPECT_EQ(s.ip2, 0);
}

TEST(FillMeasure, CountsACopyOfTheFirstPointOutsideThePointsAsMissing)
{
    Network n(3);
    n.station("S", 0, 0);
    n.target("T", 1, 0);
    n.distance("S", "T", 1, 1).time = 3;
    vorn run(n.ready());
    load(run, 1, 2);
    int s[4] = {0, 1, 2, 3}; // two copies of S for which there was no room
    int *isplit[1] = {s};
    EXPECT_EQ((V(run, fill_measure)(1, isplit, 1, 0, 3)), -1);
}

TEST(FillMeasure, RedirectsWithASingleEpoch)
{
    Network n(3);
    n.station("S", 0, 0);
    n.target("T", 1, 0);
    n.target("U", 1, 0);
    n.distance("T", "S", 1, 1).time = 4;
    vorn run(n.ready());
    load(run, 1, 3);
    int s[2] = {0, 4};
    int *isplit[1] = {s};
    ASSERT_EQ((V(run, fill_measure)(1, isplit, 1, 0, 1)), 0);
    EXPECT_EQ(V(run, dist)[0].p2 - V(run, points), 1); // placed from T: 1 - 1 + 1
}

TEST(FillMeasure, VisitsEveryRowOfANameInOrder)
{
    // Two stations of one name: the first row lacks the epoch, the second holds it.
    for (int failing = 0; failing <= 8; failing++) {
        Network n(3);
        n.station("S", 0, 0).ilump = 1;
        n.station("S", 0, 0).ilump = 1;
        n.target("T", 1, 0);
        n.distance("S", "T", 1, 1).time = 2;
        vorn run(n.ready());
        V(run, nsta) = 2;
        V(run, npoints) = 3;
        V(run, ndist) = 1;
        int a[3] = {0, 1, 0}, b[3] = {1, 1, 2};
        int *isplit[2] = {a, b};
        ASSERT_EQ((V(run, vornallocate)()), 0);
        (V(run, fill_pt)(nullptr, nullptr, 0, 0, 0));
        fail_allocation(failing);
        ASSERT_EQ((V(run, fill_measure)(1, isplit, 2, 0, 2)), 0);
        fail_allocation(0);
        EXPECT_EQ(V(run, dist)[0].p1 - V(run, points), 0 - 1 + 2 - 1 + 0);
    }
}

} // namespace
