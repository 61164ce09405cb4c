#include "results/lumpcopies.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "support/faults.h"
#include "support/network.h"

using namespace vornengine;

namespace {

using Ints = std::vector<int>;
using Lines = std::vector<std::string>;

// A split network as it stands after a run, and the tables made from it.
class Split {
public:
    Split() : net(3), w() {}
    ~Split() { copies_free(&w); }

    // A host record, and its points: one for each copy.
    void station(const char *name, int ilump, int ncopy = 1)
    {
        net.station(name, 0, 0).ilump = ilump;
        for (int i = 0; i < ncopy; i++) add(stations, name);
    }
    void target(const char *name, int ilump, int ncopy = 1)
    {
        net.target(name, 0, 0).ilump = ilump;
        for (int i = 0; i < ncopy; i++) add(targets, name);
    }

    // A direction, in the host's list and in the run.
    void sight(const char *from, const char *to, int epoch)
    {
        net.direction(from, to, 0.0, 0.0).time = epoch;
        ends.push_back({from, to, epoch});
    }

    // A direction of the host that takes no part.
    void skipped(int epoch, int typ = -KIND_DIRECTION)
    {
        measure_input &m = net.direction("S", "T", 0.0, 0.0);
        m.time = epoch;
        m.typ = typ;
    }

    int make()
    {
        points = stations;
        points.insert(points.end(), targets.begin(), targets.end());
        for (const auto &e : ends) {
            measure m = measure();
            m.p1 = find(e.from);
            m.p2 = find(e.to);
            m.time = e.epoch;
            dir1.push_back(m);
        }
        net.ready();
        w.out = net.p.out;
        w.fb = &net.messages;
        w.idebug = net.p.idebug;
        w.points = points.data();
        w.npoints = (int)points.size();
        w.nsta = (int)stations.size();
        w.dir1 = dir1.data();
        w.ndir1 = (int)dir1.size();
        w.host = {net.p.stations, net.p.nstations, net.p.targets, net.p.ntargets};
        w.directions = net.p.directions;
        w.ndirections = net.p.ndirections;
        return copies_make(&w);
    }

    Ints lumps() { return Ints(w.ilumtable, w.ilumtable + w.nlump); }
    Ints epochs() { return Ints(w.itimetable, w.itimetable + w.nepoch); }
    Ints copies(int r)
    {
        Ints list;
        for (int c = 0; c < w.nepoch; c++) list.push_back(copy_at(&w, r, c));
        return list;
    }
    Ints counts() { return Ints(copy_counts(&w), copy_counts(&w) + w.nepoch); }
    Ints members()
    {
        Ints list;
        for (const point &p : points) list.push_back(p.ilump);
        return list;
    }

    Network net;
    lumpcopies w;
    std::vector<point> points, stations, targets;

private:
    struct Ends {
        std::string from, to;
        int epoch;
    };

    static void add(std::vector<point> &list, const char *name)
    {
        point p = point();
        strcpy(p.name, name);
        list.push_back(p);
    }

    point *find(const std::string &name)
    {
        for (point &p : points)
            if (name == p.name) return &p;
        return nullptr;
    }

    std::vector<Ends> ends;
    std::vector<measure> dir1;
};

// ---- lumps and epochs ----

TEST(LumpCopies, ListLumpsInTheOrderOfTheHost)
{
    Split s;
    s.station("S", 0);
    s.station("OFF", 9);
    s.net.stations[1].status = 0;
    s.station("R", 40);
    s.target("A", 40);
    s.target("W", 0);
    s.target("B", -7);
    s.target("OUT", 3);
    s.net.targets[3].status = -1;
    ASSERT_EQ(s.make(), 0);
    EXPECT_EQ(s.lumps(), (Ints{40, -7}));
    EXPECT_EQ(s.members(), (Ints{0, 0, 1, 1, 0, 2, 0}));
    EXPECT_EQ(s.w.ncopies[0], 2);
    EXPECT_EQ(s.w.ncopies[1], 1);
}

TEST(LumpCopies, GiveAllPointsOfANameTheirLumpStationsAndTargetsApart)
{
    Split s;
    s.station("A", 5, 2);
    s.target("A", 0);
    s.target("B", 6, 3);
    ASSERT_EQ(s.make(), 0);
    EXPECT_EQ(s.members(), (Ints{1, 1, 0, 2, 2, 2}));
}

TEST(LumpCopies, NumberPointsByTheLumpsSoFar)
{
    Split s;
    s.target("A", 5);
    s.target("B", 6);
    s.target("C", 5); // behind the second lump
    ASSERT_EQ(s.make(), 0);
    EXPECT_EQ(s.lumps(), (Ints{5, 6}));
    EXPECT_EQ(s.members(), (Ints{1, 2, 2}));
}

TEST(LumpCopies, ListEpochsInTheOrderOfTheDirections)
{
    Split s;
    s.station("S", 0);
    s.target("T", 1);
    s.skipped(77);
    s.skipped(0, KIND_DIRECTION); // before the first search nothing enters
    for (const int epoch : {5, 2, 5, -3, 2}) s.sight("S", "T", epoch);
    ASSERT_EQ(s.make(), 0);
    EXPECT_EQ(s.epochs(), (Ints{5, 2, -3}));
}

TEST(LumpCopies, LetASkippedDirectionBehindANewEpochEnterItsOwn)
{
    Split s;
    s.station("S", 0);
    s.target("T", 1);
    s.sight("S", "T", 5);
    s.skipped(0, KIND_DIRECTION);
    s.skipped(8);
    s.sight("S", "T", 5);
    s.skipped(9); // behind a known epoch
    s.sight("S", "T", 6);
    s.skipped(5);
    ASSERT_EQ(s.make(), 0);
    EXPECT_EQ(s.epochs(), (Ints{5, 0, 8, 6, 5}));
}

// ---- the table of a lump ----

TEST(LumpCopies, StandForTheEpochsAtWhichTheirPointWasSighted)
{
    Split s;
    s.station("S", 0);
    s.station("R", 4, 2); // points 1, 2
    s.target("A", 4, 3);  // 3, 4, 5
    s.target("B", 4, 2);  // 6, 7
    s.target("C", 4, 2);  // 8, 9
    s.sight("S", "A", 30);
    s.sight("R", "A", 10);
    s.sight("S", "A", 20);
    s.sight("R", "B", 30);
    s.sight("S", "B", 20);
    s.sight("S", "C", 20);
    s.sight("S", "C", 10);
    s.sight("S", "C", 10);
    ASSERT_EQ(s.make(), 0);
    ASSERT_EQ(copies_fill(&s.w, 0), 0);
    EXPECT_EQ(s.epochs(), (Ints{30, 10, 20}));
    ASSERT_EQ(s.w.nrow, 4);
    EXPECT_EQ(s.copies(0), (Ints{1, 2, NO_COPY}));
    EXPECT_EQ(s.copies(1), (Ints{3, 4, 5}));
    EXPECT_EQ(s.copies(2), (Ints{6, NO_COPY, 7}));
    EXPECT_EQ(s.copies(3), (Ints{NO_COPY, 8, 9}));
    EXPECT_EQ(s.counts(), (Ints{3, 3, 3}));
    EXPECT_STREQ(member_name(&s.w, 0), "R");
    EXPECT_STREQ(member_name(&s.w, 3), "C");
    EXPECT_EQ(column_of(&s.w, 10), 1);
    EXPECT_EQ(column_of(&s.w, 11), -1);
    EXPECT_TRUE(s.net.messages.lines.empty());
    EXPECT_EQ(s.net.report(), "");
}

TEST(LumpCopies, CountNoEpochOfFewerThanThree)
{
    Split s;
    s.station("S", 0);
    for (const char *name : {"A", "B", "C"}) {
        s.target(name, 1, *name == 'C' ? 1 : 2);
        s.sight("S", name, 1);
        if (*name != 'C') s.sight("S", name, 2);
    }
    ASSERT_EQ(s.make(), 0);
    ASSERT_EQ(copies_fill(&s.w, 0), 0);
    EXPECT_EQ(s.counts(), (Ints{3, FEW_COPIES}));
    EXPECT_EQ(column_of(&s.w, 1), 0);
    EXPECT_EQ(column_of(&s.w, 2), -1);
}

TEST(LumpCopies, UseARowForEveryPointAndOneBehindThem)
{
    Split s;
    s.station("A", 1);
    s.target("B", 1);
    s.target("C", 1);
    s.sight("A", "B", 1);
    s.sight("A", "C", 1);
    ASSERT_EQ(s.make(), 0);
    ASSERT_EQ(copies_fill(&s.w, 0), 0); // the lump holds every point
    EXPECT_EQ(s.w.nrow, 3);
    EXPECT_EQ(s.counts(), (Ints{3}));
}

TEST(LumpCopies, AreFilledForOneLumpAfterAnother)
{
    Split s;
    s.station("S", 0);
    for (const char *name : {"A", "B", "C"}) s.target(name, 1);
    s.target("D", 2);
    for (const char *name : {"A", "B", "C", "D"}) s.sight("S", name, 3);
    ASSERT_EQ(s.make(), 0);
    ASSERT_EQ(copies_fill(&s.w, 0), 0);
    EXPECT_EQ(s.counts(), (Ints{3}));
    ASSERT_EQ(copies_fill(&s.w, 1), 0);
    EXPECT_EQ(s.w.nrow, 1);
    EXPECT_EQ(s.copies(0), (Ints{4}));
    EXPECT_EQ(s.counts(), (Ints{FEW_COPIES}));
}

TEST(LumpCopies, ShowTheTableOnRequest)
{
    Split s;
    s.net.p.idebug = 1;
    s.station("S", 0);
    s.target("A       ", 12, 2);
    s.target("LongName", 12, 1);
    s.sight("S", "A       ", 1);
    s.sight("S", "A       ", 2);
    s.sight("S", "LongName", 2);
    ASSERT_EQ(s.make(), 0);
    ASSERT_EQ(copies_fill(&s.w, 0), 0);
    EXPECT_EQ(s.net.report(), "\nlump 12 has 2 points\n"
                              "A            1    2  \n"
                              "LongName    -1    3  \n");
}

// ---- lumps that cannot be compared ----

TEST(LumpCopies, RefuseALumpWhosePointsAreNotAllSighted)
{
    Split s;
    s.station("S", 0);
    s.target("A", 1, 2);
    s.sight("S", "A", 1);
    ASSERT_EQ(s.make(), 0);
    EXPECT_EQ(copies_fill(&s.w, 0), -1);
    EXPECT_EQ(s.net.messages.lines, (Lines{"usesimili: pb with ntot"}));
}

TEST(LumpCopies, RefuseALumpWithMoreEpochsThanPoints)
{
    Split s;
    s.net.p.idebug = 1;
    s.station("S", 0);
    s.target("A", 1);
    s.sight("S", "A", 1);
    s.sight("S", "A", 2);
    ASSERT_EQ(s.make(), 0);
    EXPECT_EQ(copies_fill(&s.w, 0), -1);
    EXPECT_EQ(s.net.messages.lines, (Lines{"usesimili: pb with ntot"}));
    EXPECT_EQ(s.net.report(), "\nlump 1 has 1 points\nA     1    1  \n"); // an epoch without copy keeps its mark
}

TEST(LumpCopies, RefuseALumpWhenEpochsAndPointsDisagreeInSeveralMembers)
{
    Split s;
    s.station("S", 0);
    s.target("A", 1);
    s.target("B", 1, 2);
    s.sight("S", "A", 1);
    s.sight("S", "A", 2);
    s.sight("S", "B", 1); // three epochs and three points, but not of the same members
    ASSERT_EQ(s.make(), 0);
    EXPECT_EQ(copies_fill(&s.w, 0), -1);
    EXPECT_EQ(s.net.messages.lines, (Lines{"usesimili: pb with ntot"}));
}

TEST(LumpCopies, RefuseALumpBehindWhichThePointsOfAnotherWereNumbered)
{
    Split s;
    s.station("S", 0);
    s.target("A", 5);
    s.target("B", 6);
    s.target("C", 5);
    for (const char *name : {"A", "B", "C"}) s.sight("S", name, 1);
    ASSERT_EQ(s.make(), 0);
    EXPECT_EQ(copies_fill(&s.w, 0), -1);
    EXPECT_EQ(copies_fill(&s.w, 1), -1);
    EXPECT_EQ(s.net.messages.lines, (Lines{"usesimili: pb with ntot", "usesimili: pb with ntot"}));
}

TEST(LumpCopies, HaveNoNegativeEpochs)
{
    Split s;
    s.station("S", 0);
    s.target("A", 1);
    s.sight("S", "A", -2);
    ASSERT_EQ(s.make(), 0);
    EXPECT_EQ(s.epochs(), (Ints{-2}));
    EXPECT_EQ(copies_fill(&s.w, 0), -1); // the point is nowhere sighted
}

TEST(LumpCopies, EndALumpSilentlyWhenAMemberIsNoPoint)
{
    Split s;
    s.net.p.idebug = 1;
    s.station("S", 0);
    s.target("A", 1);
    s.target("GONE", 1, 0);
    s.sight("S", "A", 1);
    ASSERT_EQ(s.make(), 0);
    EXPECT_EQ(copies_fill(&s.w, 0), -1);
    EXPECT_TRUE(s.net.messages.lines.empty());
    EXPECT_EQ(s.net.report(), "");
}

TEST(LumpCopies, RefuseALumpWithMoreMembersThanPoints)
{
    for (const bool debug : {false, true}) {
        Split sta, tar;
        for (Split *s : {&sta, &tar}) {
            s->net.p.idebug = debug;
            s->station("A", 1);
            if (s == &sta) s->station("B", 1, 0);
            if (s == &tar) s->target("B", 1, 0);
            ASSERT_EQ(s->make(), 0);
            EXPECT_EQ(copies_fill(&s->w, 0), -1);
            EXPECT_EQ(s->net.messages.lines, (Lines{"usesimili: Could not load tab"}));
            EXPECT_EQ(s->net.report(), !debug      ? ""
                                       : s == &sta ? "usesimili: Could load tab(sta) 2\n"
                                                   : "usesimili: Could load tab(tar) 2\n");
        }
    }
}

TEST(LumpCopies, ServeARunWithoutPoints)
{
    Split s;
    s.station("A", 1, 0);
    ASSERT_EQ(s.make(), 0);
    EXPECT_EQ(s.w.nlump, 1);
    EXPECT_EQ(copies_fill(&s.w, 0), -1);
    Split none;
    ASSERT_EQ(none.make(), 0);
    EXPECT_EQ(none.w.nlump, 0);
    EXPECT_EQ(none.w.nepoch, 0);
}

TEST(LumpCopies, TellWhichTableFoundNoMemory)
{
    const int tables = 6 + 3 * 4, indexes = 2 * 2; // lists, chains of names; indexes that a search makes up for
    for (int n = 1; n <= tables + indexes + 2; n++) {
        Split s;
        s.station("S", 0);
        s.target("A", 1);
        s.sight("S", "A", 1);
        fail_allocation(n);
        const int result = s.make();
        EXPECT_EQ(allocations() >= n, n <= tables + indexes + 1) << n;
        fail_allocation(0);
        EXPECT_EQ(result, n <= tables ? -1 : n == tables + indexes + 1 ? -2 : 0) << n;
        const Lines lines[] = {{}, {"usesimili: Could not allocate itimetable"}, {"usesimili: Could not allocate tab"}};
        EXPECT_EQ(s.net.messages.lines, lines[-result]) << n;
        if (result == 0) {
            EXPECT_EQ(s.epochs(), (Ints{1}));
            EXPECT_EQ(s.lumps(), (Ints{1}));
        }
    }
}

} // namespace
