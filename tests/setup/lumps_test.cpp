#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "support/access.h"
#include "support/faults.h"
#include "support/network.h"

namespace {

const std::string DROPPED = "           elimate all lumps notions\n";

// Points and directions as loading leaves them. A host record of lump L has the lump index
// 100 L; the points before the first target are stations.
class Field {
public:
    Field() : net(3) { station("S", 0); }

    point &station(const char *name, int lump)
    {
        net.station(name, 0, 0).ilump = 100 * lump;
        nsta++;
        return add(name, lump);
    }

    point &target(const char *name, int lump)
    {
        net.target(name, 0, 0).ilump = 100 * lump;
        return add(name, lump);
    }

    // Targets "A", "B", ... of a lump.
    void lump_of(int lump, const std::string &names)
    {
        for (const char c : names) target(std::string(1, c).c_str(), lump);
    }

    // One direction from the first point to each of the named targets.
    void sight(const std::string &names, int epoch, int from = 0)
    {
        for (const char c : names) sights.push_back({from, std::string(1, c), epoch});
    }

    // A definition with rotation about the first axis, shift and scale of each epoch.
    void define(int id, int kind, int iref, std::vector<int> epochs)
    {
        const size_t n = epochs.size();
        Tables &t = tables.emplace_back();
        t.epoch = std::move(epochs);
        t.code.assign(n, CODE_FREE);
        for (int k = 0; k < 7; k++)
            for (size_t e = 0; e < n; e++) t.value[k].push_back(1000.0 * (k + 1) + t.epoch[e]);
        lump_definition d = lump_definition();
        d.id = id;
        d.kind = kind;
        d.iref = iref;
        d.n = (int)n;
        net.lumpdefs.push_back(d);
    }

    // Makes the run, with the host's and the engine's tables; to be called once.
    vorn &load(int nlump)
    {
        for (size_t i = 0; i < tables.size(); i++) wire(&net.lumpdefs[i], &tables[i]);
        run = std::make_unique<vorn>(net.ready());
        V(*run, points) = (point *)calloc(points.size(), sizeof(point));
        for (size_t i = 0; i < points.size(); i++) at((int)i) = points[i];
        V(*run, npoints) = (int)points.size();
        V(*run, nsta) = nsta;
        V(*run, nlump) = nlump;
        V(*run, dir1) = (measure *)calloc(sights.size() + 1, sizeof(measure));
        V(*run, ndir1) = (int)sights.size();
        for (size_t i = 0; i < sights.size(); i++) {
            measure &m = V(*run, dir1)[i];
            m.p1 = &at(sights[i].from);
            m.p2 = find(sights[i].to);
            m.time = sights[i].epoch;
        }
        return *run;
    }

    int check(int nlump)
    {
        load(nlump);
        return (V(*run, lumpcheck)());
    }

    point &at(int i) { return V(*run, points)[i]; }

    point *find(const std::string &name)
    {
        for (int i = 0; i < V(*run, npoints); i++)
            if (name == at(i).name) return &at(i);
        return nullptr;
    }

    int nlump() { return V(*run, nlump); }
    const lump &record(int i) { return V(*run, lumps)[i]; }

    std::vector<int> epochs(int i)
    {
        const lump &l = record(i);
        return std::vector<int>(l.epoch, l.epoch + (l.nepoch > 1 ? l.nepoch - 1 : 0));
    }

    Network net;
    std::unique_ptr<vorn> run;

private:
    struct Sight {
        int from;
        std::string to;
        int epoch;
    };
    struct Tables {
        std::vector<int> epoch, code;
        std::vector<double> value[7]; // tx, ty, tz, rx, ry, rz, scale
    };

    point &add(const char *name, int lump)
    {
        point p = point();
        strcpy(p.name, name);
        p.ilump = lump;
        for (int &n : p.n0) n = N_UNKNOWN;
        for (int &n : p.n1) n = N_UNKNOWN;
        points.push_back(p);
        return points.back();
    }

    static void wire(lump_definition *d, Tables *t)
    {
        d->epoch = t->epoch.data();
        d->code = t->code.data();
        double **const arrays[] = {&d->tx, &d->ty, &d->tz, &d->rx, &d->ry, &d->rz, &d->scale};
        for (int k = 0; k < 7; k++) *arrays[k] = t->value[k].data();
    }

    int nsta = 0;
    std::vector<point> points;
    std::vector<Sight> sights;
    std::vector<Tables> tables;
};

// A fully fixed station.
void fix(point &p)
{
    for (int &n : p.n0) n = N_NONE;
    for (int i = 0; i < 3; i++) p.n1[i] = N_NONE;
}

using Ints = std::vector<int>;

// ---- all lumps at once ----

// One lump that stands; every refusal below spoils one thing.
void good_lump(Field &f)
{
    f.lump_of(1, "ABC");
    f.sight("ABC", 1);
    f.sight("ABC", 2);
}

TEST(LumpCheck, DropsAllLumpsWhenDistancesAreReduced)
{
    for (const int iredux : {1, -1, 7}) {
        Field f;
        good_lump(f);
        f.net.p.iredux = iredux;
        f.net.p.dim = 2; // looked at afterwards
        EXPECT_EQ(f.check(1), 0);
        EXPECT_EQ(f.net.report(), "lumpcheck: no reduction on observations with lumps now\n" + DROPPED);
        EXPECT_EQ(f.nlump(), 0);
        EXPECT_EQ(V(*f.run, lumps), nullptr);
        EXPECT_EQ(f.find("A")->ilump, 1); // the points keep their number
    }
}

TEST(LumpCheck, DropsAllLumpsOutsideThreeDimensions)
{
    for (const int dim : {1, 2}) {
        Field f;
        good_lump(f);
        f.net.p.dim = dim;
        f.load(1);
        measure m = measure();
        m.time = 2; // looked at afterwards
        V(*f.run, difh) = (measure *)calloc(1, sizeof(measure));
        V(*f.run, difh)[0] = m;
        V(*f.run, ndifh) = 1;
        EXPECT_EQ((V(*f.run, lumpcheck)()), 0);
        EXPECT_EQ(f.net.report(), "lumpcheck: treat lumps only in 3 dimensions\n" + DROPPED);
        EXPECT_EQ(f.nlump(), 0);
        V(*f.run, dim) = 3;
    }
}

TEST(LumpCheck, DropsAllLumpsWhenAHeightDifferenceHasAnEpoch)
{
    for (const int time : {1, -1, 0}) {
        Field f;
        good_lump(f);
        f.load(1);
        V(*f.run, difh) = (measure *)calloc(2, sizeof(measure));
        V(*f.run, ndifh) = 2;
        V(*f.run, difh)[1].time = time;
        EXPECT_EQ((V(*f.run, lumpcheck)()), 0);
        EXPECT_EQ(f.nlump(), time == 0 ? 1 : 0);
        EXPECT_EQ(f.net.report(), time == 0 ? "" : "lumpcheck: no dot treat height differrences now\n" + DROPPED);
        V(*f.run, ndifh) = 0;
    }
}

TEST(LumpCheck, DropsAllLumpsWithoutAnEpochAboveOne)
{
    for (const int epoch : {1, 0, -5}) {
        Field f;
        f.lump_of(1, "ABC");
        f.sight("ABC", epoch);
        f.sight("ABC", 1);
        EXPECT_EQ(f.check(1), 0);
        EXPECT_EQ(f.net.report(), "lumpcheck: must have at least 2 epochs\n" + DROPPED);
        EXPECT_EQ(f.nlump(), 0);
    }
    Field f;
    f.lump_of(1, "ABC"); // no directions at all
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.net.report(), "lumpcheck: must have at least 2 epochs\n" + DROPPED);
}

// ---- one lump ----

TEST(LumpCheck, DissolvesALumpOfTwoPoints)
{
    Field f;
    f.lump_of(1, "AB");
    f.sight("ABAB", 1);
    f.sight("ABAB", 2);
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.net.report(), "lumpcheck: lumps must contain at least 3 points\n"
                              "                  A put back to world\n"
                              "                  B put back to world\n");
    EXPECT_EQ(f.nlump(), 0);
    EXPECT_EQ(f.find("A")->ilump, 0);
    EXPECT_EQ(f.find("B")->ilump, 0);
    EXPECT_EQ(V(*f.run, npoints), 3); // they stay in the network
    EXPECT_EQ(V(*f.run, lumps), nullptr);
}

TEST(LumpCheck, DissolvesALumpWithoutPoints)
{
    Field f;
    good_lump(f);
    EXPECT_EQ(f.check(2), 0);
    EXPECT_EQ(f.net.report(), "lumpcheck: lumps must contain at least 3 points\n");
    EXPECT_EQ(f.nlump(), 1);
}

TEST(LumpCheck, CountsStationsAndTargetsAsMembers)
{
    Field f;
    f.station("R", 1);
    f.lump_of(1, "AB");
    f.sight("RAB", 1);
    f.sight("RAB", 2);
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.net.report(), "");
    EXPECT_EQ(f.nlump(), 1);
    EXPECT_EQ(f.record(0).nepoch, 2);
}

TEST(LumpCheck, DissolvesALumpSightedAtEpochZero)
{
    Field f;
    good_lump(f);
    f.sight("B", 0);
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.net.report(), "lumpcheck: lumps must not contain epoch 0\n"
                              "                  A put back to world\n"
                              "                  B put back to world\n"
                              "                  C put back to world\n");
    EXPECT_EQ(f.nlump(), 0);
}

TEST(LumpCheck, LeavesEpochZeroToTheWorld)
{
    Field f;
    good_lump(f);
    f.target("W", 0);
    f.sight("W", 0);
    f.sight("A", -3); // no epoch of a lump
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.net.report(), "");
    EXPECT_EQ(f.nlump(), 1);
}

TEST(LumpCheck, DissolvesALumpWithAnEpochOfTwoSightings)
{
    Field f;
    good_lump(f);
    f.sight("AB", 7);
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.net.report(), "lumpcheck: all epochs must have 3 points\n"
                              "                  A put back to world\n"
                              "                  B put back to world\n"
                              "                  C put back to world\n");
    EXPECT_EQ(f.nlump(), 0);
}

TEST(LumpCheck, DissolvesALumpWithOneEpoch)
{
    Field f;
    f.lump_of(1, "ABC");
    f.sight("ABC", 2);
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.net.report(), "lumpcheck: must have at least 2 epochs\n"
                              "                  A put back to world\n"
                              "                  B put back to world\n"
                              "                  C put back to world\n");
    EXPECT_EQ(f.nlump(), 0);
}

TEST(LumpCheck, DissolvesALumpThatIsNeverSighted)
{
    Field f;
    f.lump_of(1, "ABC");
    f.target("W", 0);
    f.sight("W", 5);
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.net.report().substr(0, 39), "lumpcheck: must have at least 2 epochs\n");
    EXPECT_EQ(f.nlump(), 0);
}

TEST(LumpCheck, KeepsALumpOfThreePointsSightedOnceAtTwoEpochs)
{
    Field f;
    good_lump(f);
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.net.report(), "");
    ASSERT_EQ(f.nlump(), 1);
    EXPECT_EQ(f.record(0).id, 100);
    EXPECT_EQ(f.record(0).kind, 0);
    EXPECT_EQ(f.record(0).nepoch, 2);
    EXPECT_EQ(f.record(0).iref, 1); // a tie: the earlier epoch
    EXPECT_EQ(f.epochs(0), (Ints{2}));
    EXPECT_EQ(f.record(0).scale[0], 1.0);
    EXPECT_EQ(f.record(0).tx[0], 0.0);
    EXPECT_EQ(f.record(0).rz[0], 0.0);
}

TEST(LumpCheck, CountsSightingsNotDistinctPoints)
{
    Field f;
    f.lump_of(1, "ABC");
    f.sight("AAA", 3);
    f.sight("BBC", 4);
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.net.report(), "");
    EXPECT_EQ(f.nlump(), 1);
}

TEST(LumpCheck, CountsASightingByTheNameOfItsTarget)
{
    Field f;
    f.station("A", 0); // takes the directions to "A", and is no member
    f.lump_of(1, "ABC");
    f.sight("ABC", 1);
    f.sight("ABC", 2);
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.net.report(), "");
    EXPECT_EQ(f.nlump(), 1);
    EXPECT_EQ(f.record(0).nepoch, 2);
    EXPECT_EQ(f.record(0).id, 0); // the host's stations are searched first: their "A" is in no lump
}

TEST(LumpCheck, CountsASightingOnceForTwoMembersOfOneName)
{
    Field f;
    f.station("A", 1);
    f.lump_of(1, "AB");
    f.sight("AB", 1); // two sightings, three members
    f.sight("AAB", 2);
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.net.report().substr(0, 41), "lumpcheck: all epochs must have 3 points\n");
}

TEST(LumpCheck, CountsASightingInEveryLumpThatHasItsName)
{
    Field f;
    f.lump_of(1, "ABC");
    f.lump_of(2, "ADE");
    f.lump_of(3, "AAFG");
    for (const int epoch : {1, 2}) f.sight("ABCDEFG", epoch);
    EXPECT_EQ(f.check(3), 0);
    EXPECT_EQ(f.net.report(), "");
    ASSERT_EQ(f.nlump(), 3);
    EXPECT_EQ(f.record(1).nepoch, 2);
    EXPECT_EQ(f.record(2).nepoch, 2);
}

TEST(LumpCheck, TakesTheMostSightedEpochAsReference)
{
    Field f;
    f.lump_of(1, "ABCDE");
    f.sight("ABC", 2);
    f.sight("ABCDE", 9);
    f.sight("ABCD", 30);
    EXPECT_EQ(f.check(1), 0);
    ASSERT_EQ(f.nlump(), 1);
    EXPECT_EQ(f.record(0).iref, 9);
    EXPECT_EQ(f.epochs(0), (Ints{2, 30}));
}

TEST(LumpCheck, TakesTheEpochOfTheWorldWhenFourSightingsSupportIt)
{
    for (const int sightings : {3, 4}) {
        Field f;
        fix(f.station("W", 0));
        f.lump_of(1, "ABCDE");
        f.sight("ABC", 1);
        if (sightings == 4) f.sight("A", 1);
        f.sight("ABCDE", 2);
        f.sight("S", 1, 1); // the last direction of a fixed station
        f.sight("S", 2);
        EXPECT_EQ(f.check(1), 0);
        ASSERT_EQ(f.nlump(), 1);
        EXPECT_EQ(f.record(0).iref, sightings == 4 ? 1 : 2);
        EXPECT_EQ(f.record(0).nepoch, 2);
        EXPECT_EQ(f.epochs(0), (Ints{sightings == 4 ? 2 : 1}));
    }
}

TEST(LumpCheck, AcceptsPoorEpochsBesideThatOfTheWorld)
{
    Field f;
    fix(f.station("W", 0));
    f.lump_of(1, "ABCD");
    f.sight("ABCD", 5, 1);
    f.sight("ABC", 6);
    f.sight("AB", 7); // with the world's epoch as reference only its count is looked at
    EXPECT_EQ(f.check(1), 0);
    ASSERT_EQ(f.nlump(), 1);
    EXPECT_EQ(f.net.report(), "");
    EXPECT_EQ(f.record(0).iref, 5);
    EXPECT_EQ(f.record(0).nepoch, 2);
    EXPECT_EQ(f.epochs(0), (Ints{6}));
}

TEST(LumpCheck, KnowsAFullyFixedStationByItsCodes)
{
    for (int spoiled = -2; spoiled < 6; spoiled++) {
        Field f;
        point &w = f.station("W", 0);
        fix(w);
        if (spoiled == -2)
            for (int &n : w.n0) n = N_FIXED_MISSING; // fixed, its value still to come
        if (spoiled >= 0 && spoiled < 3) w.n0[spoiled] = N_UNKNOWN;
        if (spoiled >= 3) w.n1[spoiled - 3] = N_UNKNOWN;
        f.lump_of(1, "ABCD");
        f.sight("ABCD", 4);
        f.sight("ABCD", 8, 1);
        EXPECT_EQ(f.check(1), 0);
        ASSERT_EQ(f.nlump(), 1);
        EXPECT_EQ(f.record(0).iref, spoiled < 0 ? 8 : 4) << spoiled;
    }
}

TEST(LumpCheck, TakesTheLastDirectionFromAFixedStation)
{
    Field f;
    fix(f.station("W", 0));
    f.lump_of(1, "ABCD");
    f.sight("ABCD", 4, 1);
    f.sight("ABCD", 8, 1);
    f.sight("ABCD", 2, 1);
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.record(0).iref, 2);
    EXPECT_EQ(f.epochs(0), (Ints{4, 8}));
}

TEST(LumpCheck, PassesOverAnEpochOfTheWorldAtWhichTheLumpIsUnseen)
{
    for (const int world : {0, -4, 77}) {
        Field f;
        fix(f.station("W", 0));
        good_lump(f);
        f.sight("S", world, 1);
        EXPECT_EQ(f.check(1), 0);
        ASSERT_EQ(f.nlump(), 1) << world;
        EXPECT_EQ(f.record(0).iref, 1);
    }
}

TEST(LumpCheck, TellsWhenNoHostRecordBearsTheNameOfTheFirstMember)
{
    Field f;
    good_lump(f);
    f.load(1);
    strcpy(V(*f.run, ptar)[0].name, "a");
    EXPECT_EQ((V(*f.run, lumpcheck)()), 0);
    EXPECT_EQ(f.net.report(), "\nlumpcheck: stange no lump insex connection\n");
    ASSERT_EQ(f.nlump(), 1);
    EXPECT_EQ(f.record(0).id, 0);
}

TEST(LumpCheck, FindsTheHostIndexWhateverTheStatus)
{
    Field f;
    good_lump(f);
    f.net.targets[0].status = 0;
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.net.report(), "");
    EXPECT_EQ(f.record(0).id, 100);
}

// ---- records ----

TEST(LumpCheck, ReadsTheEpochsOfADissolvedLumpForTheOneBehindIt)
{
    Field f;
    f.lump_of(1, "AB"); // too few points
    f.lump_of(2, "CDE");
    f.sight("CDE", 1);
    f.sight("CDE", 2);
    EXPECT_EQ(f.check(2), 0);
    EXPECT_EQ(f.net.report(), "lumpcheck: lumps must contain at least 3 points\n"
                              "                  A put back to world\n"
                              "                  B put back to world\n");
    ASSERT_EQ(f.nlump(), 1);
    EXPECT_EQ(f.record(0).id, 200);
    EXPECT_EQ(f.record(0).nepoch, 0);
    EXPECT_EQ(f.record(0).iref, -1); // why the first one was dissolved
    EXPECT_EQ(f.find("C")->ilump, 2);
}

TEST(LumpCheck, ReadsWhyALumpWasDissolvedAsReferenceOfTheOneBehindIt)
{
    const std::string spoil[] = {"", "zero", "poor", "single"};
    for (int why = 0; why < 4; why++) {
        Field f;
        f.lump_of(1, "AB");
        f.target("C", why == 0 ? 0 : 1);
        f.lump_of(2, "DEF");
        f.sight("ABCDEF", 3);
        f.sight("DEF", 2);
        if (why == 1) f.sight("A", 0);
        if (why == 2) f.sight("A", 4);
        EXPECT_EQ(f.check(2), 0);
        ASSERT_EQ(f.nlump(), 1);
        EXPECT_EQ(f.record(0).iref, -1 - why) << spoil[why];
        EXPECT_EQ(f.record(0).nepoch, 0); // nor does the one usable epoch of the last case get an entry
    }
}

TEST(LumpCheck, ShiftsTheEpochsOfAllLumpsBehindADissolvedOne)
{
    Field f;
    f.lump_of(1, "ABC");
    f.lump_of(2, "DE");
    f.lump_of(3, "FGH");
    f.lump_of(4, "IJK");
    f.sight("ABC", 1);
    f.sight("ABC", 2);
    f.sight("FGHIJK", 3);
    f.sight("FGHIJK", 4);
    f.sight("FGH", 5);
    EXPECT_EQ(f.check(4), 0);
    ASSERT_EQ(f.nlump(), 3);
    EXPECT_EQ(f.record(0).id, 100);
    EXPECT_EQ(f.record(1).id, 300);
    EXPECT_EQ(f.record(2).id, 400);
    EXPECT_EQ(f.epochs(0), (Ints{2}));
    EXPECT_EQ(f.epochs(1), (Ints{}));     // the row of lump 2
    EXPECT_EQ(f.epochs(2), (Ints{4, 5})); // the row of lump 3
}

TEST(LumpCheck, GivesDeviationsToRunsThatMakeThem)
{
    for (const int irun : {1, -2, 0, -1}) {
        Field f;
        good_lump(f);
        f.net.p.irun = irun;
        EXPECT_EQ(f.check(1), 0);
        const lump &l = f.record(0);
        const double *const stds[] = {l.stx, l.sty, l.stz, l.srx, l.sry, l.srz, l.sscale};
        for (const double *s : stds) {
            EXPECT_EQ(s != nullptr, irun == 1 || irun == -2) << irun;
            EXPECT_EQ(s ? s[0] : 0.0, 0.0);
        }
    }
}

TEST(LumpCheck, TakesKindReferenceAndStartValuesFromTheDefinition)
{
    Field f;
    f.lump_of(1, "ABC");
    for (const int epoch : {1, 2, 3}) f.sight("ABC", epoch);
    f.define(7, 2, 1, {1, 2});
    f.define(100, 1, 3, {2, 9});
    f.define(100, 2, 2, {1}); // the first of one index counts
    EXPECT_EQ(f.check(1), 0);
    ASSERT_EQ(f.nlump(), 1);
    const lump &l = f.record(0);
    EXPECT_EQ(l.kind, 1);
    EXPECT_EQ(l.iref, 3);
    EXPECT_EQ(l.nepoch, 3);
    EXPECT_EQ(f.epochs(0), (Ints{1, 2}));
    const double *const values[] = {l.tx, l.ty, l.tz, l.rx, l.ry, l.rz, l.scale};
    for (int k = 0; k < 7; k++) {
        EXPECT_EQ(values[k][0], k == 6 ? 1.0 : 0.0); // epoch 1 is not described
        EXPECT_EQ(values[k][1], 1000.0 * (k + 1) + 2);
    }
}

TEST(LumpCheck, TakesTheFirstDescriptionOfAnEpoch)
{
    Field f;
    good_lump(f);
    f.define(100, 0, 1, {2, 2});
    f.load(1);
    f.net.lumpdefs[0].scale[1] = 5.0;
    EXPECT_EQ((V(*f.run, lumpcheck)()), 0);
    EXPECT_EQ(f.record(0).scale[0], 7002.0);
}

TEST(LumpCheck, HoldsTheScaleOfKindTwo)
{
    Field f;
    good_lump(f);
    f.define(100, 2, 1, {2});
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.record(0).kind, 2);
    EXPECT_EQ(f.record(0).scale[0], 1.0);
    EXPECT_EQ(f.record(0).tx[0], 1002.0);
}

TEST(LumpCheck, ChoosesTheReferenceWhenTheDefinitionDescribesNoEpochOrNamesNone)
{
    Field f;
    good_lump(f);
    f.define(100, 1, 2, {});
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.record(0).kind, 1);
    EXPECT_EQ(f.record(0).iref, 1);
    for (const int iref : {0, -2}) { // a reference is used only if positive
        Field g;
        good_lump(g);
        g.define(100, 0, iref, {2});
        EXPECT_EQ(g.check(1), 0);
        EXPECT_EQ(g.record(0).iref, 1);
        EXPECT_EQ(g.epochs(0), (Ints{2}));
        EXPECT_EQ(g.record(0).tx[0], 1002.0);
    }
}

TEST(LumpCheck, LeavesTheLastEpochOutWhenTheDefinedReferenceIsNotUsable)
{
    for (const int irun : {0, 1}) {
        Field f;
        f.net.p.irun = irun;
        f.lump_of(1, "ABC");
        for (const int epoch : {4, 5, 6}) f.sight("ABC", epoch);
        f.define(100, 0, 77, {4, 5, 6});
        EXPECT_EQ(f.check(1), 0);
        ASSERT_EQ(f.nlump(), 1);
        EXPECT_EQ(f.record(0).iref, 77);
        EXPECT_EQ(f.record(0).nepoch, 3);
        EXPECT_EQ(f.epochs(0), (Ints{4, 5})); // a write behind them would show in the sanitizer
    }
}

TEST(LumpCheck, ServesEpochsOfAnySize)
{
    Field f;
    f.lump_of(1, "ABC");
    for (const int epoch : {2147483647, 1, 20261121}) f.sight("ABC", epoch);
    EXPECT_EQ(f.check(1), 0);
    ASSERT_EQ(f.nlump(), 1);
    EXPECT_EQ(f.record(0).iref, 1);
    EXPECT_EQ(f.epochs(0), (Ints{20261121, 2147483647}));
}

TEST(LumpCheck, SkipsPointsWhoseLumpIsOutOfRange)
{
    Field f;
    good_lump(f);
    f.target("W", 2);
    f.target("X", -1);
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.nlump(), 1);
    EXPECT_EQ(f.find("W")->ilump, 2);
}

// ---- memory ----

TEST(LumpCheck, EndsByMinusOneWithoutMemory)
{
    const struct {
        int count;
        const char *what;
    } rows[] = {{7 + 2 * 2, "arrays"}, // lists, two indexes of names
                {1, "columns for tab_epoch"},
                {1, "columns for table"},
                {1, "lumps structure"},
                {9, "lumps arrays"},
                {7, "lumps stds"},
                {9, "lumps arrays"}, // of the second lump
                {7, "lumps stds"}};
    std::vector<std::string> lines;
    for (const auto &row : rows) lines.insert(lines.end(), (size_t)row.count, row.what);
    for (size_t n = 1; n <= lines.size() + 1; n++) {
        Field f;
        f.net.p.irun = 1;
        good_lump(f);
        f.lump_of(2, "DEF");
        f.sight("DEF", 1);
        f.sight("DEF", 2);
        f.load(2);
        fail_allocation((int)n);
        const int result = (V(*f.run, lumpcheck)());
        EXPECT_EQ(allocations() >= (int)n, n <= lines.size()) << n;
        fail_allocation(0);
        EXPECT_EQ(result, n <= lines.size() ? -1 : 0) << n;
        if (n <= lines.size()) {
            EXPECT_EQ(f.net.report(), "lumpcheck: Cannot allocate " + lines[n - 1] + "\n") << n;
        }
    } // leaks, and records read where they have no arrays, would show in the sanitizer
}

TEST(LumpCheck, LeavesARecordWithoutArraysWithoutEpochs)
{
    Field f;
    good_lump(f);
    f.load(1);
    fail_allocation(0);
    (V(*f.run, lumpcheck)());
    const int all = allocations();
    Field g;
    good_lump(g);
    g.load(1);
    fail_allocation(all); // its last array
    EXPECT_EQ((V(*g.run, lumpcheck)()), -1);
    fail_allocation(0);
    EXPECT_EQ(g.nlump(), 1);
    EXPECT_EQ(g.record(0).nepoch, 0);
}

// ---- its place in a run ----

TEST(LumpCheck, StopsTheStartOfARunWithoutMemory)
{
    Network n(3);
    n.p.lumpmethod = 1;
    n.station("S", 0, 0).ilump = 0;
    for (const char *name : {"A", "B", "C"}) n.target(name, 10, 0).ilump = 4;
    for (const int epoch : {1, 2})
        for (const char *name : {"A", "B", "C"}) n.direction("S", name, 0.5, 0.001).time = epoch;
    bool stopped = false;
    for (int i = 1; i < 200 && !stopped; i++) {
        for (measure_input &m : n.directions) m.typ = KIND_DIRECTION;
        for (target_input &t : n.targets) t.ilump = 4;
        n.p.lumpmethod = 1;
        vorn run(n.ready());
        fail_allocation(i);
        const int result = run.vornstart();
        fail_allocation(0);
        stopped = result == -2;
    }
    EXPECT_TRUE(stopped);
}

TEST(LumpCheck, IsNotMadeWithMethodologyNine)
{
    Network n(3);
    n.p.lumpmethod = 9;
    n.station("S", 0, 0);
    for (const char *name : {"A", "B"}) n.target(name, 10, 0).ilump = 4;
    for (const char *name : {"A", "B"}) n.direction("S", name, 0.5, 0.001).time = 2;
    {
        vorn run(n.ready());
        run.vornstart();
        EXPECT_EQ(n.report().find("lumpcheck"), std::string::npos);
    }
    n.p.lumpmethod = 1;
    vorn run(n.ready());
    run.vornstart();
    EXPECT_NE(n.report().find("lumpcheck: lumps must contain at least 3 points\n"), std::string::npos);
}

TEST(LumpCheck, IsNotMissedWhenPointsOfLumpsHaveNoEpochs)
{
    Network n(3);
    n.p.lumpmethod = 9;
    n.station("S", 0, 0);
    n.target("A", 10, 0).ilump = 4; // counted as a lump, never split
    n.target("B", 0, 10);
    for (target_input &t : n.targets)
        for (int &code : t.ix) code = CODE_FIXED;
    for (const char *name : {"A", "B"}) n.distance("S", name, 10.0, 0.001);
    n.distance("A", "S", 10.0, 0.001);
    n.station("F", 0, 0, 9);
    n.distance("F", "S", 9.0, 0.001);
    for (int &code : n.stations[1].ix) code = CODE_FIXED;
    for (station_input &s : n.stations)
        for (int &code : s.ir) code = CODE_FIXED;
    vorn run(n.ready());
    ASSERT_EQ(run.vornstart(), 0) << n.report();
    EXPECT_EQ(V(run, nlump), 0);
    EXPECT_EQ(run.vornjordan(), 0) << n.report();
}

} // namespace
