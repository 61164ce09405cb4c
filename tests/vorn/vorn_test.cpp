#include <gtest/gtest.h>
#include <limits.h>
#include <math.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <new>

#include "support/access.h"
#include "support/faults.h"
#include "support/network.h"

namespace {

bool holds(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

// A station between three fixed targets.
void add_plane(Network &n)
{
    n.station("S", 10, 20);
    const double x[3] = {100, 0, -50}, y[3] = {0, 100, -50};
    const char *names[3] = {"A", "B", "C"};
    for (int i = 0; i < 3; i++) {
        target_input &t = n.target(names[i], x[i], y[i]);
        t.ix[0] = t.ix[1] = CODE_FIXED;
        n.distance("S", names[i], hypot(x[i] - 10, y[i] - 20), 0.001);
    }
}

// What has left the buffer of the report, read behind its back.
std::string on_disk(const Network &n)
{
    std::string text(1 << 16, '\0');
    const ssize_t size = pread(fileno(n.p.out), &text[0], text.size(), 0);
    text.resize(size > 0 ? size : 0);
    return text;
}

TEST(VornConstructor, TurnsLatitudeIntoRadians)
{
    Network n(2);
    n.p.latitude = 180.0;
    vorn run(n.ready());
    EXPECT_DOUBLE_EQ(V(run, latitude), 4.0 * atan(1.0));
    EXPECT_DOUBLE_EQ(V(run, pi), 4.0 * atan(1.0));
    EXPECT_EQ(n.p.latitude, 180.0);
}

// What follows the field belongs to the host, and "con" must not be written over it.
TEST(VornConstructor, CutsAFileNameThatFillsItsField)
{
    Network n(2);
    memset(n.p.filename, 'x', sizeof n.p.filename);
    n.p.filename[sizeof n.p.filename - 2] = '.';
    vorn run(n.ready());
    EXPECT_EQ(strnlen(V(run, pname), sizeof n.p.filename), sizeof n.p.filename - 1);
    EXPECT_EQ((V(run, writecon)()), -9); // no extension of three letters
    EXPECT_EQ(n.p.filename[0], 'x');
}

TEST(VornConstructor, LeavesAFileNameWithItsZeroAlone)
{
    Network n(2);
    memset(n.p.filename, 'x', sizeof n.p.filename);
    n.p.filename[3] = '\0';
    vorn run(n.ready());
    EXPECT_EQ(n.p.filename[sizeof n.p.filename - 1], 'x');
}

TEST(VornConstructor, TakesNegativeCountsForNone)
{
    for (const int count : {-1, INT_MIN}) {
        Network n(2);
        add_plane(n);
        n.ready();
        int *const counts[] = {&n.p.nstations,  &n.p.ntargets,  &n.p.ndistances, &n.p.nheightdiffs, &n.p.ndirections,
                               &n.p.nverticals, &n.p.nazimuths, &n.p.nbaselines, &n.p.ngroups,      &n.p.ncameras,
                               &n.p.nimages,    &n.p.nlumpdefs, &n.p.npairs};
        for (int *c : counts) *c = count;
        n.p.igps = n.p.iphoto = 1;
        n.p.lumpmethod = 9;
        vorn run(&n.p);
        EXPECT_EQ(V(run, npsta) + V(run, nptar) + V(run, npdist) + V(run, npdifh) + V(run, npdir1) + V(run, npdir2), 0);
        EXPECT_EQ((V(run, searchnam)("A")), -1);
        EXPECT_EQ(run.vornstart(), -1);
        EXPECT_TRUE(holds(n.report(), "\nMust have some points to adjust!!!\n"));
    }
}

TEST(VornConstructor, CopiesTheSettings)
{
    Network n(2);
    project &p = n.p;
    p.irun = -2;
    p.idebug = 9;
    p.iearth = 2;
    p.radius = 1;
    for (int i = 0; i < 3; i++) p.trans[i] = 2 + i;
    p.horigin = 5;
    p.itmax = 6;
    p.convergence = 7;
    p.iredux = 8;
    p.iunit = 2;
    p.sdist = 10;
    p.sdifh = 11;
    p.sdir1 = 12;
    p.sdir2 = 13;
    p.suv = 14;
    p.saz = 15;
    p.sgps = 16;
    vorn run(n.ready());
    EXPECT_EQ(V(run, pproject), &p);
    EXPECT_EQ(V(run, pfeedback), &n.messages);
    EXPECT_EQ(V(run, pname), p.filename); // the host's buffer itself
    EXPECT_EQ(V(run, out), p.out);
    EXPECT_EQ(V(run, idebug), 9);
    EXPECT_EQ(V(run, dim), 2);
    EXPECT_EQ(V(run, irun), -2);
    EXPECT_EQ(V(run, iearth), 2);
    EXPECT_EQ(V(run, radius), 1);
    for (int i = 0; i < 3; i++) EXPECT_EQ(V(run, trans)[i], 2 + i);
    EXPECT_EQ(V(run, horigin), 5);
    EXPECT_EQ(V(run, itmax), 6);
    EXPECT_EQ(V(run, convergence), 7);
    EXPECT_EQ(V(run, iredux), 8);
    EXPECT_EQ(V(run, iunit), 2);
    EXPECT_EQ(V(run, sdist), 10);
    EXPECT_EQ(V(run, sdifh), 11);
    EXPECT_EQ(V(run, sdir1), 12);
    EXPECT_EQ(V(run, sdir2), 13);
    EXPECT_EQ(V(run, suv), 14);
    EXPECT_EQ(V(run, saz), 15);
    EXPECT_EQ(V(run, sgps), 16);
}

TEST(VornConstructor, SharesTheRecordsOfTheHost)
{
    Network n(3);
    n.station("S", 0, 0);
    n.target("T", 0, 0);
    n.target("U", 0, 0);
    for (int i = 0; i < 3; i++) n.distance("S", "T", 1, 1);
    for (int i = 0; i < 4; i++) n.heightdiff("S", "T", 1, 1);
    for (int i = 0; i < 5; i++) n.direction("S", "T", 1, 1);
    for (int i = 0; i < 6; i++) n.vertical("S", "T", 1, 1);
    vorn run(n.ready());
    EXPECT_EQ(V(run, psta), n.stations.data());
    EXPECT_EQ(V(run, npsta), 1);
    EXPECT_EQ(V(run, ptar), n.targets.data());
    EXPECT_EQ(V(run, nptar), 2);
    EXPECT_EQ(V(run, pdist), n.distances.data());
    EXPECT_EQ(V(run, npdist), 3);
    EXPECT_EQ(V(run, pdifh), n.heightdiffs.data());
    EXPECT_EQ(V(run, npdifh), 4);
    EXPECT_EQ(V(run, pdir1), n.directions.data());
    EXPECT_EQ(V(run, npdir1), 5);
    EXPECT_EQ(V(run, pdir2), n.verticals.data());
    EXPECT_EQ(V(run, npdir2), 6);
}

TEST(VornConstructor, AllocatesNothingAndStartsEmpty)
{
    Network n(3);
    n.ready();
    fail_allocation(0);
    vorn run(&n.p);
    EXPECT_EQ(allocations(), 0);
    EXPECT_EQ(V(run, papprox), nullptr);
    EXPECT_EQ(V(run, psimplex), nullptr);
    EXPECT_EQ(V(run, pcompact), nullptr);
    EXPECT_EQ(V(run, pjordan), nullptr);
    for (int count :
         {V(run, nlump), V(run, icon), V(run, nexport), V(run, nimport), V(run, iapprox), V(run, nsta), V(run, ntar),
          V(run, npoints), V(run, ndist), V(run, ndifh), V(run, ndir1), V(run, ndir2), V(run, nweighted), V(run, nfixh),
          V(run, nobsuv), V(run, naz), V(run, ngps), V(run, ncamera), V(run, ndatum)})
        EXPECT_EQ(count, 0);
    for (const void *array : std::initializer_list<const void *>{
             V(run, lumps), V(run, lcon), V(run, Qcon), V(run, points), V(run, dist), V(run, difh), V(run, dir1),
             V(run, dir2), V(run, obsuv1), V(run, obsuv2), V(run, az), V(run, gps), V(run, cameras), V(run, temp_res)})
        EXPECT_EQ(array, nullptr);
}

TEST(VornConstructor, SeesNoLaterChangeOfTheSettings)
{
    Network n(2);
    const double given = n.p.sdist;
    vorn run(n.ready());
    n.p.itmax = 99;
    n.p.sdist = 99;
    EXPECT_EQ(V(run, itmax), 20);
    EXPECT_EQ(V(run, sdist), given);
}

TEST(VornAssignment, CopiesMemberByMember)
{
    Network n(2), m(3);
    add_plane(n);
    vorn run(n.ready());
    ASSERT_EQ((V(run, fill_vorn)()), 0);
    // The copy is never destroyed: run owns the arrays.
    alignas(vorn) unsigned char place[sizeof(vorn)];
    vorn *copy = new (place) vorn(m.ready());
    EXPECT_EQ(&(*copy = run), copy);
    EXPECT_EQ(V(*copy, pproject), &n.p);
    EXPECT_EQ(V(*copy, dim), 2);
    EXPECT_EQ(V(*copy, points), V(run, points));
    EXPECT_EQ(V(*copy, dist), V(run, dist));
    EXPECT_EQ(V(*copy, npoints), 4);
    EXPECT_EQ(V(*copy, sigma0), V(run, sigma0));
}

TEST(Vornstart, Returns0WhenReadyToSolve)
{
    Network n(2);
    add_plane(n);
    vorn run(n.ready());
    EXPECT_EQ(run.vornstart(), 0);
    EXPECT_EQ(V(run, iapprox), 0);
    EXPECT_EQ(n.messages.questions.size(), 1u);
}

TEST(Vornstart, ReturnsMinus1WhenLoadingFails)
{
    Network n(2);
    vorn run(n.ready());
    EXPECT_EQ(run.vornstart(), -1);
    EXPECT_EQ(n.messages.lines.back(), "fill_vorn: Stop in verif");
}

TEST(Vornstart, WantsCoordinatesWhereItComputesNone)
{
    for (int photo = 0; photo < 2; photo++) {
        Network n(photo ? 3 : 2);
        add_plane(n);
        for (auto &t : n.targets) t.ix[2] = CODE_FIXED;
        for (int i = 0; i < 3; i++) n.stations[0].ir[i] = CODE_FIXED;
        n.p.irun = photo ? 0 : -2;
        n.p.iphoto = photo;
        n.target("D", 0, 0).status = STATUS_COMPUTE;
        for (const char *from : {"S", "A", "B"}) n.distance(from, "D", 1, 1);
        vorn run(n.ready());
        V(run, iapprox) = 9;
        EXPECT_EQ(run.vornstart(), -5);
        EXPECT_TRUE(holds(n.report(), "\nvornstart: for error propagation, need coordinates\n"));
        EXPECT_TRUE(n.messages.questions.empty());
    }
}

TEST(Vornstart, ComputesNoCoordinatesForErrorPropagation)
{
    Network n(2);
    add_plane(n);
    n.p.irun = -2;
    vorn run(n.ready());
    EXPECT_EQ(run.vornstart(), 0);
    EXPECT_TRUE(n.messages.questions.empty());
}

// Each failure leaves other lists, counts and records behind.
TEST(Solvers, RefuseARunThatWasNotSetUp)
{
    void (*const spoil[])(Network &) = {
        [](Network &n) { n.distances.clear(); }, [](Network &n) { n.stations[0].status = 0; }, // its distances stay
        [](Network &n) { n.target("alone", 1, 1); }, [](Network &n) { n.stations[0].status = STATUS_COMPUTE; }};
    int (vorn::*const entries[])() = {&vorn::vornL2, &vorn::vornjordan, &vorn::vornL1};
    for (const auto &change : spoil)
        for (const auto entry : entries)
            for (const bool started : {false, true}) {
                Network n(2);
                add_plane(n);
                n.p.irun = -2; // computes no coordinates
                change(n);
                vorn run(n.ready());
                EXPECT_LT(started ? run.vornstart() : -1, 0);
                EXPECT_EQ((run.*entry)(), -1);
                ASSERT_FALSE(n.messages.lines.empty());
                EXPECT_TRUE(holds(n.messages.lines.back(), ": vornstart has not returned 0"));
            }
}

TEST(Solvers, ReturnMinus1WithoutMemoryForTheStatistics)
{
    Network n(2);
    add_plane(n);
    vorn run(n.ready());
    ASSERT_EQ(run.vornstart(), 0);
    fail_allocation(1);
    EXPECT_EQ(run.vornL2(), -1);
    EXPECT_TRUE(holds(n.report(), "vornL2+: Cannot allocate temp_res\n"));
    fail_allocation(1);
    EXPECT_EQ(run.vornjordan(), -1);
    EXPECT_TRUE(holds(n.report(), "vornjordan: Cannot allocate temp_res\n"));
    fail_allocation(0);
    EXPECT_EQ(V(run, pcompact), nullptr); // no solver was built
    EXPECT_EQ(V(run, pjordan), nullptr);
    EXPECT_EQ(V(run, temp_res), nullptr);
}

TEST(Solvers, ReturnMinus1WithoutMemoryForTheObject)
{
    const struct {
        int (vorn::*entry)();
        const char *line;
    } rows[] = {{&vorn::vornL2, "vornL2: Cannot allocate the solver"},
                {&vorn::vornjordan, "vornjordan: Cannot allocate the solver"},
                {&vorn::vornL1, "vornL1: Cannot allocate the solver"}};
    Network n(2);
    add_plane(n);
    vorn run(n.ready());
    ASSERT_EQ(run.vornstart(), 0);
    const std::string before = n.report();
    for (const auto &row : rows) {
        fail_object(1);
        EXPECT_EQ((run.*row.entry)(), -1);
        EXPECT_TRUE(object_failed());
        EXPECT_EQ(n.messages.lines.back(), row.line);
    }
    EXPECT_EQ(n.report(), before);
}

TEST(Solvers, KeepStatisticsExceptInErrorPropagation)
{
    for (int irun = -2; irun <= 1; irun++) {
        Network n(2);
        n.p.irun = irun;
        vorn run(n.ready());
        for (int call = 0; call < 2; call++) { // the second record takes the place of the first
            EXPECT_TRUE((V(run, take_temp_res)("entry")));
            EXPECT_EQ(V(run, temp_res) != nullptr, irun != -2);
        }
        fail_allocation(1);
        EXPECT_EQ((V(run, take_temp_res)("entry")), irun == -2);
        fail_allocation(0);
        EXPECT_EQ(V(run, temp_res), nullptr);
    }
}

TEST(Solvers, KeepNoStatisticsForAbsoluteValues)
{
    Network n(2);
    add_plane(n);
    n.p.irun = -1;
    vorn run(n.ready());
    ASSERT_EQ(run.vornstart(), 0);
    run.vornL1();
    EXPECT_EQ(V(run, temp_res), nullptr);
}

// The plane station with its orientation held: two unknowns, three distances.
void add_determined(Network &n)
{
    add_plane(n);
    n.stations[0].ir[2] = CODE_FIXED;
}

TEST(Vornstart, SetsUpARunOnce)
{
    Network n(2);
    add_determined(n);
    vorn run(n.ready());
    ASSERT_EQ(run.vornstart(), 0);
    const point *points = V(run, points);
    EXPECT_EQ(run.vornstart(), -1);
    EXPECT_EQ(n.messages.lines.back(), "vornstart: a run is set up once");
    EXPECT_EQ(V(run, points), points);
    EXPECT_EQ(run.vornL2(), 0) << n.report(); // the first set-up stands
}

// The second least-squares adjustment finds nothing left to do: a step below the threshold.
TEST(Solvers, GoOnWhereAnotherEnded)
{
    int (vorn::*const entries[])() = {&vorn::vornL2, &vorn::vornjordan, &vorn::vornL1};
    for (const auto first : entries)
        for (const auto second : entries) {
            Network n(2);
            add_determined(n);
            vorn run(n.ready());
            ASSERT_EQ(run.vornstart(), 0);
            ASSERT_EQ((run.*first)(), 0);
            const double x = V(run, points)[0].xpt[0];
            EXPECT_EQ((run.*second)(), 0);
            if (first != &vorn::vornL1 && second != &vorn::vornL1) {
                EXPECT_NEAR(V(run, points)[0].xpt[0], x, n.p.convergence);
            }
        }
}

TEST(Solvers, InvertByTheRulesOfTheirEntry)
{
    for (int irun : {-2, -1, 0, 1, 2}) {
        Network n(2), m(2);
        for (Network *net : {&n, &m}) {
            add_determined(*net);
            net->p.irun = irun;
        }
        vorn compacted(n.ready()), jordaned(m.ready());
        ASSERT_EQ(compacted.vornstart(), 0);
        ASSERT_EQ(jordaned.vornstart(), 0);
        EXPECT_EQ(compacted.vornL2(), 0) << irun;
        EXPECT_EQ(jordaned.vornjordan(), 0) << irun; // not inverted, released all the same: see the sanitizer
        const auto inverted = [](const Network &net) {
            int count = 0;
            for (const auto &line : net.messages.lines) count += line == "Start inversion...";
            return count;
        };
        EXPECT_EQ(inverted(n), irun != 0) << irun;
        EXPECT_EQ(inverted(m), irun == 1 || irun == -2) << irun;
    }
}

TEST(Solvers, DoNotInvertWhatCouldNotBeSolved)
{
    Network n(2), m(2);
    for (Network *net : {&n, &m}) {
        add_determined(*net);
        net->stations[0].x[0] += 5.0; // one step is not enough
        net->p.itmax = 1;
        net->p.irun = 1;
    }
    vorn compacted(n.ready()), jordaned(m.ready());
    ASSERT_EQ(compacted.vornstart(), 0);
    ASSERT_EQ(jordaned.vornstart(), 0);
    EXPECT_EQ(compacted.vornL2(), -4);
    EXPECT_EQ(jordaned.vornjordan(), -4);
    for (Network *net : {&n, &m}) {
        for (const auto &line : net->messages.lines) EXPECT_NE(line, "Start inversion...");
    }
}

TEST(Vornstart, SendsTheSummaryOnItsWay)
{
    Network n(2);
    add_determined(n);
    vorn run(n.ready());
    ASSERT_EQ(run.vornstart(), 0);
    EXPECT_TRUE(holds(on_disk(n), "number of distances                  3\n"));
}

TEST(Vornstart, SendsTheReasonOfAFailureOnItsWay)
{
    Network n(2); // one fixed target and nothing more
    n.station("S", 10, 20);
    n.target("A", 100, 0).ix[0] = CODE_FIXED;
    n.targets[0].ix[1] = CODE_FIXED;
    n.distance("S", "A", 92, 1);
    vorn run(n.ready());
    EXPECT_EQ(run.vornstart(), -3);
    EXPECT_TRUE(holds(on_disk(n), "datumcheck: Not enough information to define a datum\n"));

    Network m(2);
    vorn empty(m.ready());
    EXPECT_EQ(empty.vornstart(), -1);
    EXPECT_EQ(on_disk(m), "fill_vorn: Stop in verif\n");
}

// The order of a free network grows by its conditions, in the solver alone; so does the datum.
TEST(Solvers, LeaveTheCountsOfTheRunAlone)
{
    Network n(1);
    for (const char *name : {"A", "B"}) n.target(name, 0, 0, 0);
    n.heightdiff("A", "B", 1.5, 0.001);
    vorn run(n.ready());
    ASSERT_EQ(run.vornstart(), 0);
    ASSERT_EQ(V(run, ndatum), 1);
    EXPECT_EQ(run.vornL2(), 0);
    EXPECT_EQ(run.vornjordan(), 0);
    EXPECT_EQ(run.vornL1(), 0);
    EXPECT_EQ(V(run, nunk), 2);
    EXPECT_EQ(V(run, irun), 0);
}

TEST(VornDestructor, SaysThatTheResultsCouldNotBeHandedOver)
{
    Network n(2);
    add_determined(n);
    {
        vorn run(n.ready());
        ASSERT_EQ(run.vornstart(), 0);
        fail_allocation(1);
    } // the arrays are released all the same: a leak would show in the sanitizer
    fail_allocation(0);
    EXPECT_EQ(n.messages.lines.back(), "backtoproject failed");
    EXPECT_EQ(n.p.runresults, nullptr);
}

TEST(VornDestructor, ReleasesTheConnectedNetOfAFailedStart)
{
    Network n(3);
    {
        vorn run(n.ready());
        EXPECT_EQ(run.vornstart(), -1);
        V(run, lcon) = (int *)calloc(1, sizeof(int)); // a leak would show in the sanitizer
        V(run, Qcon) = (double *)calloc(1, sizeof(double));
    }
    EXPECT_EQ(n.messages.lines.back(), "fill_vorn: Stop in verif"); // the handover went well
    ASSERT_NE(n.p.runresults, nullptr);
    EXPECT_EQ(n.p.runresults->nstar + n.p.runresults->ntarr, 0);
}

} // namespace
