#include "host/preparation/first_values.h"

#include <gtest/gtest.h>

#include <math.h>
#include <stdio.h>

#include <map>

#include "host/adjusted.h"
#include "host/preparation/prepare.h"

using namespace vornhost;

namespace {

const double pi = 4.0 * atan(1.0);
const double gon = pi / 200.0;

// A network whose observations are computed from true places; its file gives coordinates of
// the points that are told.
class Ground {
public:
    explicit Ground(int dimension) : dim(dimension) {}

    void point(const std::string &name, double x, double y, double z = 0.0)
    {
        places[name] = {x, y, dim == 3 ? z : 0.0};
    }

    // A row of the table; code as in the file, no coordinates with an empty code.
    void row(bool station, const std::string &name, const std::string &code = "")
    {
        const Place &p = places[name];
        char line[200];
        if (code.empty())
            snprintf(line, sizeof line, dim == 3 ? "%s - - - free\n" : "%s - - free\n", name.c_str());
        else if (dim == 3)
            snprintf(line, sizeof line, "%s %.6f %.6f %.6f %s\n", name.c_str(), p[0], p[1], p[2], code.c_str());
        else
            snprintf(line, sizeof line, "%s %.6f %.6f %s\n", name.c_str(), p[0], p[1], code.c_str());
        (station ? stations : targets) += line;
    }
    void station(const std::string &name, const std::string &code = "") { row(true, name, code); }
    void target(const std::string &name, const std::string &code = "") { row(false, name, code); }

    void sight(const std::string &from, const std::string &to)
    {
        const Place &a = places[from], &b = places[to];
        // every circle stands another way
        const double reading = atan2(b[1] - a[1], b[0] - a[0]) / gon + 31.0 * from.back() + 400.0;
        observe(directions, from, to, fmod(reading, 400.0), 0.001);
        const double zenith = atan2(level(a, b), b[2] - a[2]) / gon;
        observe(verticals, from, to, zenith, 0.001);
    }
    void range(const std::string &from, const std::string &to)
    {
        const Place &a = places[from], &b = places[to];
        observe(distances, from, to, hypot(level(a, b), b[2] - a[2]), 0.002);
    }
    void see(const std::string &from, const std::vector<std::string> &points, bool ranges = false)
    {
        for (const std::string &to : points) {
            sight(from, to);
            if (ranges) range(from, to);
        }
    }

    std::string file(const std::string &keys = "") const
    {
        const std::string head = dim == 3 ? "name x y z code\n" : "name x y code\n", seen = "from to value sigma\n";
        std::string text =
            "[run]\ndimension = " + std::to_string(dim) + "\nmode = \"solution\"\n" + keys + "[tables]\n";
        text += table("stations", head, stations) + table("targets", head, targets);
        text += table("directions", seen, directions) + table("distances", seen, distances);
        if (dim == 3) text += table("vertical_angles", seen, verticals);
        return text;
    }

    using Place = std::array<double, 3>;
    std::map<std::string, Place> places;
    std::string stations, targets, directions, distances, verticals;

private:
    static double level(const Place &a, const Place &b) { return hypot(b[0] - a[0], b[1] - a[1]); }

    static void observe(std::string &rows, const std::string &from, const std::string &to, double value, double sigma)
    {
        char line[200];
        snprintf(line, sizeof line, "%s %s %.9f %g\n", from.c_str(), to.c_str(), value, sigma);
        rows += line;
    }

    static std::string table(const char *name, const std::string &head, const std::string &rows)
    {
        return rows.empty() ? "" : std::string(name) + " = '''\n" + head + rows + "'''\n";
    }

    int dim;
};

struct Case : ReadCase {
    using ReadCase::ReadCase;

    // The first values between the other preparations, as a run computes them.
    FirstValues compute()
    {
        FirstValues values;
        prepare(folder.model, [&] { values = compute_first_values(folder.model, report); });
        values.words = shortened(values.words);
        return values;
    }
};

template <class Record> void compare(const List<Record> &list, Ground &ground, int dim)
{
    for (const Record &r : list.records) {
        std::string name = r.name;
        name.erase(name.find_last_not_of(' ') + 1);
        EXPECT_EQ(r.status, STATUS_ON) << name;
        for (int k = 0; k < dim; k++) EXPECT_NEAR(r.x[k], ground.places[name][k], 1e-4) << name << " " << k;
    }
}

// All places are found, to the printed digits of the observations over a few sights.
void expect_found(Ground &ground, int dim, int count)
{
    Case c(ground.file());
    const FirstValues values = c.compute();
    EXPECT_EQ(values.words, Lines());
    const std::string points = count == 1 ? " point were computed" : " points were computed";
    EXPECT_EQ(values.notes, Lines({"first coordinates of " + std::to_string(count) + points}));
    compare(c.folder.model.stations, ground, dim);
    compare(c.folder.model.targets, ground, dim);
    EXPECT_EQ(c.text(), "");
}

void four_corners(Ground &g)
{
    g.point("A", 1000, 1000, 50);
    g.point("B", 1100, 1010, 52);
    g.point("C", 1090, 1120, 47);
    g.point("D", 995, 1130, 55);
    g.point("P", 1040, 1060, 61);
    g.point("Q", 1070, 1075, 44);
}

TEST(FirstValues, IntersectTheRaysOfKnownStations)
{
    Ground g(2);
    four_corners(g);
    g.station("A", "fixed");
    g.station("B", "free");
    g.target("P");
    g.see("A", {"B", "P"});
    g.see("B", {"A", "P"});
    expect_found(g, 2, 1);
}

TEST(FirstValues, FollowATraverse)
{
    for (int dim : {2, 3}) {
        Ground g(dim);
        four_corners(g);
        g.station("A", "fixed");
        g.target("B", "fixed");
        for (const char *name : {"P", "C", "D"}) g.station(name);
        g.target("Q");
        g.see("A", {"B", "P"}, true);
        g.see("P", {"A", "C"}, true);
        g.see("C", {"P", "D"}, true);
        g.see("D", {"C", "Q"}, true);
        expect_found(g, dim, 4);
    }
}

TEST(FirstValues, LeaveAStationWithThreeKnownTargetsToTheEngine)
{
    for (int dim : {2, 3}) {
        Ground g(dim);
        four_corners(g);
        for (const char *name : {"A", "B", "C"}) g.target(name, "fixed");
        g.station("D", "free");
        g.see("D", {"A", "B", "Q"});
        g.station("P");
        g.target("Q");
        g.see("P", {"A", "B", "C", "Q"});
        expect_found(g, dim, 2);
    }
}

TEST(FirstValues, StartFromAPairOfStationsBetweenKnownTargets)
{
    for (int dim : {2, 3}) {
        Ground g(dim);
        four_corners(g);
        for (const char *name : {"A", "C"}) g.target(name, "fixed");
        for (const char *name : {"P", "Q"}) g.station(name);
        g.target("B");
        g.target("D");
        g.see("P", {"Q", "A", "B", "C", "D"});
        g.see("Q", {"P", "A", "B", "C", "D"});
        expect_found(g, dim, 4);
    }
}

TEST(FirstValues, MakeUpAFrameAroundAStationWithDistancesAndMoveItToTheKnownPoint)
{
    Ground g(2);
    four_corners(g);
    g.target("A", "fixed");
    g.station("P");
    g.station("Q");
    g.target("C");
    g.see("P", {"A", "Q", "C"}, true);
    g.see("Q", {"P", "A", "C"});
    Case c(g.file());
    EXPECT_EQ(c.compute().words, Lines());
    const double *a = c.folder.model.targets.records[0].x, *p = c.folder.model.stations.records[0].x;
    EXPECT_EQ(a[0], 1000);
    EXPECT_EQ(a[1], 1000);
    EXPECT_NEAR(hypot(p[0] - a[0], p[1] - a[1]), hypot(40, 60), 1e-6); // turned, but true to scale
}

TEST(FirstValues, MakeUpAFrameWhenNothingIsKnown)
{
    Ground g(2);
    four_corners(g);
    for (const char *name : {"P", "Q"}) g.station(name);
    for (const char *name : {"A", "B", "C"}) g.target(name);
    g.see("P", {"Q", "A", "B", "C"}, true);
    g.see("Q", {"P", "A", "B", "C"});
    Case c(g.file());
    EXPECT_EQ(c.compute().words, Lines());
    const double *p = c.folder.model.stations.records[0].x, *q = c.folder.model.stations.records[1].x;
    EXPECT_EQ(p[0], 0.0);
    EXPECT_NEAR(hypot(q[0] - p[0], q[1] - p[1]), hypot(30, 15), 1e-6);
}

TEST(FirstValues, StartFromAPairOfStationsWhenNothingIsKnownNorMeasured)
{
    Ground g(2);
    four_corners(g);
    for (const char *name : {"P", "Q"}) g.station(name);
    for (const char *name : {"A", "B", "C"}) g.target(name);
    g.see("P", {"Q", "A", "B", "C"});
    g.see("Q", {"P", "A", "B", "C"});
    Case c(g.file());
    EXPECT_EQ(c.compute().words, Lines());
    const double *p = c.folder.model.stations.records[0].x, *q = c.folder.model.stations.records[1].x;
    EXPECT_NEAR(hypot(q[0] - p[0], q[1] - p[1]), 1.0, 1e-6); // the scale of the base
}

TEST(FirstValues, NameThePointsThatNothingPlacesAndChangeNothing)
{
    Ground g(2);
    four_corners(g);
    g.station("A", "fixed");
    g.target("B", "fixed");
    g.station("Q");
    g.target("P");
    g.target("D");
    g.see("A", {"B", "D"}, true);
    g.sight("A", "P");
    g.see("Q", {"A", "B", "P"}); // two known points are not enough for a resection
    Case c(g.file());
    const FirstValues values = c.compute();
    EXPECT_EQ(values.notes, Lines());
    EXPECT_EQ(values.words,
              Lines({"first coordinates of station Q could not be computed (net.inp:8)",
                     "first coordinates of target P could not be computed (net.inp:13)",
                     "give their approximate coordinates, or observations that place them: directions from two "
                     "stations, a direction and a distance, or for a station directions to three points"}));
    EXPECT_EQ(c.folder.model.targets.records[2].status, STATUS_COMPUTE); // D was reached all the same
    EXPECT_EQ(c.text(), "\nFirst coordinates\n\n   Theo : Q        has code 0\n"
                        "        shot theo  A        with code -3\n        shot point B        with code -1\n"
                        "        shot point P        with code 0\n             makes 3 shots\n"
                        "             makes 2 shots on known targets\n\nPatching successful ... now what??\n");
}

TEST(FirstValues, NameAtMostTwentyPoints)
{
    Ground g(2);
    four_corners(g);
    g.station("A", "fixed");
    g.target("B", "fixed");
    g.sight("A", "B");
    for (int i = 0; i < 23; i++) g.target("T" + std::to_string(i));
    Case c(g.file());
    const FirstValues values = c.compute();
    ASSERT_EQ(values.words.size(), 22u);
    EXPECT_EQ(values.words[19], "first coordinates of target T19 could not be computed (net.inp:31)");
    EXPECT_EQ(values.words[20], "and of 3 more points");
}

TEST(FirstValues, AreLeftToTheEngineInOneDimensionAndNotComputedForErrorPropagation)
{
    Ground g(2);
    four_corners(g);
    g.station("A", "fixed");
    g.target("B", "fixed");
    g.target("P");
    g.see("A", {"B", "P"}, true);
    Case c(g.file());
    c.folder.model.mode = Mode::Propagation;
    EXPECT_EQ(c.compute().words, Lines());
    EXPECT_EQ(c.folder.model.targets.records[1].status, STATUS_COMPUTE);
    c.folder.model.mode = Mode::Solution;
    c.folder.model.p.dim = 1;
    EXPECT_EQ(c.compute().words, Lines());
    EXPECT_EQ(c.folder.model.targets.records.back().status, STATUS_COMPUTE);
}

TEST(FirstValues, AreInTheUnitOfTheFile)
{
    Ground g(2);
    g.point("A", 1000, 2000);
    g.point("B", 51000, 2000);
    g.point("P", 31000, 42000);
    g.station("A", "fixed");
    g.target("B", "fixed");
    g.target("P");
    g.see("A", {"B", "P"}, true);
    Case c(g.file("[units]\nlength = \"mm\"\n"));
    EXPECT_EQ(c.compute().words, Lines());
    EXPECT_NEAR(c.folder.model.targets.records[1].x[0], 31000, 1e-3);
    EXPECT_NEAR(c.folder.model.targets.records[1].x[1], 42000, 1e-3);
}

TEST(Run, AdjustsANetworkWithoutCoordinatesOfItsNewPoints)
{
    Ground g(3);
    four_corners(g);
    for (const char *name : {"A", "B", "C"}) g.target(name, "fixed");
    for (const char *name : {"P", "Q"}) g.station(name);
    g.target("D");
    g.see("P", {"A", "B", "C", "D"}, true);
    g.see("Q", {"A", "B", "C", "D"});
    Case c(g.file());
    const RunOutcome outcome = c.run();
    EXPECT_EQ(outcome.words, Lines());
    ASSERT_TRUE(outcome.adjusted());
    EXPECT_NE(
        std::find(c.messages.lines.begin(), c.messages.lines.end(), "first coordinates of 3 points were computed"),
        c.messages.lines.end());
    const result *r = c.folder.model.p.runresults;
    EXPECT_NEAR(r->xpt[0], 1040, 1e-5);
    EXPECT_NEAR(r->zpt[1], 44, 1e-5);
}

TEST(Run, StopsWhenCoordinatesCannotBeComputed)
{
    Ground g(2);
    four_corners(g);
    g.station("A", "fixed");
    g.target("B", "fixed");
    g.target("P");
    g.see("A", {"B", "P"});
    Case c(g.file());
    const RunOutcome outcome = c.run();
    EXPECT_EQ(outcome.reached, Stage::Loading);
    EXPECT_EQ(outcome.code, -4);
    ASSERT_EQ(outcome.words.size(), 2u);
    EXPECT_EQ(c.folder.model.p.runresults, nullptr);
}

// Fixed and weighted coordinates of points whose other ones are computed.
TEST(FirstValues, KeepTheValuesOfHeldCoordinates)
{
    Ground g(3);
    four_corners(g);
    g.station("A", "fixed");
    g.targets = "B 1100 1010 52 fixed\nP 5 1060.5 61.25 free\nQ - - - free\n";
    g.see("A", {"B", "P", "Q"}, true);
    Case c(g.file());
    target_input &before = c.folder.model.targets.records[1];
    before.status = STATUS_COMPUTE;
    before.ix[1] = CODE_FIXED;
    before.ix[2] = CODE_WEIGHTED;
    EXPECT_EQ(c.compute().words, Lines());
    const target_input &p = c.folder.model.targets.records[1];
    EXPECT_EQ(p.status, STATUS_ON);
    EXPECT_NEAR(p.x[0], 1040, 1e-4);
    EXPECT_EQ(p.x[1], 1060.5);
    EXPECT_EQ(p.x[2], 61.25);
    EXPECT_NEAR(c.folder.model.targets.records[2].x[2], 44, 1e-4);
}

// The held height is the only one that is known.
TEST(FirstValues, CarryHeightsFromAHeldOne)
{
    Ground g(3);
    four_corners(g);
    g.station("A");
    g.target("B");
    g.see("A", {"B"}, true);
    std::string text = g.file();
    for (const char *row : {"A - - -", "B - - -"}) {
        const size_t at = text.find(row);
        text.replace(at, 7, *row == 'A' ? "A - - -" : "B - - 52");
    }
    Case c(text);
    c.folder.model.targets.records[0].ix[2] = CODE_FIXED;
    EXPECT_EQ(c.compute().words, Lines());
    EXPECT_NEAR(c.folder.model.stations.records[0].x[2], 50, 1e-4);
    EXPECT_EQ(c.folder.model.targets.records[0].x[2], 52);
}

TEST(FirstValues, HoldNoSingleCoordinateInAMadeUpFrame)
{
    Ground g(2);
    four_corners(g);
    g.station("P");
    g.target("A");
    g.target("B");
    g.see("P", {"A", "B"}, true);
    Case c(g.file());
    c.folder.model.targets.records[1].ix[1] = CODE_FIXED;
    const FirstValues values = c.compute();
    ASSERT_EQ(values.words.size(), 2u);
    EXPECT_EQ(
        values.words[0].rfind("y of point B is held, and its other coordinate cannot be computed in the axes of the "
                              "network (net.inp:",
                              0),
        0u)
        << values.words[0];
    EXPECT_EQ(values.words[1], "give its approximate coordinates, or those of two points");
    EXPECT_EQ(c.folder.model.targets.records[1].status, STATUS_COMPUTE);
}

// ---- baselines ----

namespace {

// A network of baselines between places, with the point A known or not.
std::string vector_network(bool known, const std::string &more = "")
{
    return std::string("[run]\ndimension = 3\n[tables]\ntargets = '''\nname x y z code\nA ") +
           (known ? "4000100 500200 300 fixed" : "- - - free") +
           "\nB - - - free\nC - - - free\nD - - - free\n'''\n"
           "baselines = '''\nfrom to dx dy dz cxx cyy czz\nC B -300 50 -5 1 1 1\nA B 100 200 10 1 1 1\n"
           "C A -400 -150 -15 1 1 1\nD C 10 20 30 1 1 1\nD A -390 -130 15 1 1 1\nB D 290 -70 -25 1 1 1\n'''\n" +
           more;
}

} // namespace

TEST(FirstValues, FollowBaselinesFromOneKnownPoint)
{
    Case c(vector_network(true));
    EXPECT_EQ(c.compute().notes, Lines{"first coordinates of 3 points were computed"});
    const double truth[3][3] = {{4000200, 500400, 310}, {4000500, 500350, 315}, {4000490, 500330, 285}};
    for (size_t i = 0; i < 3; i++)
        for (int k = 0; k < 3; k++) EXPECT_NEAR(c.folder.model.targets.records[i + 1].x[k], truth[i][k], 1e-9) << i;
    const Results results = adjusted_results(c.folder.model);
    for (size_t i = 0; i < 3; i++)
        for (size_t k = 0; k < 3; k++) EXPECT_NEAR(*results.points[i + 1].adjusted[k], truth[i][k], 1e-7) << i;
}

// The frame takes the axes of the baselines, and is moved to a known point that directions alone tie to it.
TEST(FirstValues, MakeUpAFrameAlongBaselines)
{
    Case c(vector_network(false));
    EXPECT_EQ(c.compute().words, Lines());
    const List<target_input> &t = c.folder.model.targets;
    EXPECT_NEAR(t.records[1].x[0] - t.records[0].x[0], 100, 1e-9);
    EXPECT_NEAR(t.records[1].x[1] - t.records[0].x[1], 200, 1e-9);

    Ground g(2);
    four_corners(g);
    g.target("A", "fixed");
    g.station("P");
    g.station("Q");
    g.target("C");
    g.see("P", {"A", "Q", "C"}, true);
    g.see("Q", {"P", "A", "C"});
    Case d(g.file() + "baselines = '''\nfrom to dx dy dz cxx cyy czz\nQ P -30 -15 0 1 1 1\n'''\n");
    EXPECT_EQ(d.compute().words, Lines());
    compare(d.folder.model.stations, g, 2);
    compare(d.folder.model.targets, g, 2);
}

} // namespace
