#include <gtest/gtest.h>

#include <math.h>
#include <string.h>

#include "support/access.h"
#include "support/faults.h"
#include "support/network.h"

namespace {

const char question[] = "Approximation Info: Do you want to compute new approximate values?";

TEST(Vornapprox, AsksWhenNoValueIsMissingAndTakesNoForAnAnswer)
{
    Network n(2);
    vorn run(n.ready());
    EXPECT_EQ((V(run, vornapprox)()), 0);
    EXPECT_EQ(V(run, iapprox), 0);
    EXPECT_EQ(n.messages.questions, (std::vector<std::string>{question}));
}

TEST(Vornapprox, DoesNotAskWhenValuesAreMissing)
{
    Network n(2);
    n.station("S", 0, 0);
    n.target("T", 0, 0).status = STATUS_COMPUTE; // one distance does not give a position
    n.distance("S", "T", 1, 1);
    vorn run(n.ready());
    ASSERT_EQ((V(run, fill_vorn)()), 0);
    V(run, iapprox) = 9;
    EXPECT_NE((V(run, vornapprox)()), 0);
    EXPECT_EQ(V(run, iapprox), 9);
    EXPECT_TRUE(n.messages.questions.empty());
}

// A station at its place with its orientation, and two targets whose places are not given.
class VornapproxPolar : public ::testing::Test {
protected:
    VornapproxPolar()
    {
        station_input &s = n.station("S", 10, 20);
        s.typ = 1;
        s.ix[0] = s.ix[1] = s.ir[2] = CODE_FIXED;
        s.r[2] = -0.5; // a direction r lies along the plane angle r + 0.5
        n.target("A", 0, 0).status = STATUS_COMPUTE;
        n.target("B", 7, 7);
        n.direction("S", "A", 0.25, 1);
        n.direction("S", "B", 1.25, 1);
        n.distance("S", "A", 100, 1);
        n.distance("S", "B", 50, 1);
    }

    // Loads the network and computes first values.
    int start(vorn &run, int iapprox)
    {
        if (V(run, fill_vorn)() != 0) return 99;
        V(run, iapprox) = iapprox;
        return V(run, vornapprox)();
    }

    Network n = Network(2);
};

const double rounding = 1e-12; // metres

TEST_F(VornapproxPolar, WorksWithTheSettingsOfTheConstructor)
{
    const project kept = *n.ready();
    {
        vorn run(&n.p);
        ASSERT_EQ((V(run, fill_vorn)()), 0);
        n.p.dim = 1;
        n.p.idebug = 1;
        n.p.out = nullptr;
        n.p.stations = nullptr;
        n.p.nstations = 0;
        V(run, iapprox) = 9;
        EXPECT_EQ((V(run, vornapprox)()), 0);
        EXPECT_NEAR(V(run, points)[1].x0[0], 10 + 100 * cos(0.75), rounding);
        n.p.out = kept.out;
        n.p.stations = kept.stations;
        n.p.nstations = kept.nstations;
    }
    EXPECT_EQ(n.report().find("approx"), std::string::npos) << n.report();
}

TEST_F(VornapproxPolar, MakesTheComputedValuesTheStart)
{
    vorn run(n.ready());
    ASSERT_EQ(start(run, 9), 0);
    EXPECT_EQ(V(run, iapprox), 0);
    EXPECT_EQ(V(run, papprox), nullptr);
    const point *a = V(run, points) + 1, *b = V(run, points) + 2;
    EXPECT_NEAR(a->x0[0], 10 + 100 * cos(0.75), rounding);
    EXPECT_NEAR(a->x0[1], 20 + 100 * sin(0.75), rounding);
    EXPECT_EQ(a->n0[0], N_MISSING);
    EXPECT_EQ(b->x0[0], 7.0);              // its value stood and is kept
    EXPECT_EQ(V(run, points)->x0[0], 0.0); // fixed: not copied
    EXPECT_TRUE(n.messages.questions.empty());
}

TEST_F(VornapproxPolar, AsksAndTakesYesForTheWishToComputeAll)
{
    n.messages.answer = 1;
    n.targets[0].status = STATUS_ON;
    vorn run(n.ready());
    ASSERT_EQ(start(run, 0), 0);
    EXPECT_EQ(n.messages.questions, (std::vector<std::string>{question}));
    EXPECT_EQ(V(run, iapprox), 0);
    const point *b = V(run, points) + 2;
    EXPECT_NEAR(b->x0[0], 10 + 50 * cos(1.75), rounding);
    EXPECT_NEAR(b->x0[1], 20 + 50 * sin(1.75), rounding);
}

TEST_F(VornapproxPolar, CopiesTheOrientationsThatAreNotFixed)
{
    n.stations[0].ir[2] = CODE_FREE;
    n.stations[0].ir[1] = CODE_FIXED;
    n.stations[0].r[1] = 0.125;
    vorn run(n.ready());
    ASSERT_EQ(start(run, 9), 0);
    const point *s = V(run, points);
    EXPECT_EQ(s->e0[2], -0.5);
    EXPECT_EQ(s->e0[1], 0.0);
}

TEST_F(VornapproxPolar, CopiesWhatStandsAlsoAfterAFailure)
{
    n.stations[0].typ = 0; // no distances, nothing to go on from
    n.targets[0].x[0] = 3;
    vorn run(n.ready());
    EXPECT_EQ(start(run, 9), -12);
    EXPECT_EQ(V(run, iapprox), 9);
    EXPECT_EQ(V(run, papprox), nullptr);
    EXPECT_EQ(V(run, points)[1].x0[0], 3.0);
}

TEST_F(VornapproxPolar, GoesOnWithWhatStandsWithoutMemoryForTheObject)
{
    n.targets[0].x[0] = 3;
    vorn run(n.ready());
    fail_object(1);
    EXPECT_EQ(start(run, 9), 0);
    EXPECT_TRUE(object_failed());
    EXPECT_EQ(n.messages.lines, (std::vector<std::string>{"vornapprox: Cannot allocate approx"}));
    EXPECT_EQ(n.report(), "");
    EXPECT_EQ(V(run, iapprox), 0);
    EXPECT_EQ(V(run, points)[1].x0[0], 3.0);
}

TEST_F(VornapproxPolar, StopsTheRunWithoutMemory)
{
    const char *const lines[] = {"In approx: Cannot allocate savn0, savn1\n",
                                 "In approx: Cannot allocate columns for savn0, savn1\n", "In spread: pb with xap\n",
                                 "In spread: pb with table\n", "In spread: pb with table when i=0\n"};
    const int found[] = {2, 2, 3, 3 + 3 * 7 + 6, 1}; // lists of shots have the line of the table
    int told[5] = {};
    for (int i = 1; i < 200; i++) {
        Network copy(2);
        copy.stations = n.stations, copy.targets = n.targets;
        copy.directions = n.directions, copy.distances = n.distances;
        vorn run(copy.ready());
        fail_allocation(i);
        const int code = run.vornstart();
        fail_allocation(0);
        for (int k = 0; k < 5; k++) {
            const std::string text = copy.report();
            if (text.find(lines[k]) == std::string::npos) continue;
            told[k]++;
            EXPECT_EQ(code, -4) << i;
            EXPECT_EQ(text.substr(text.size() - strlen(lines[k])), lines[k]);
        }
    }
    for (int k = 0; k < 5; k++) EXPECT_EQ(told[k], found[k]) << lines[k];
}

TEST_F(VornapproxPolar, IsNotCalledForErrorPropagation)
{
    n.p.irun = -2;
    vorn run(n.ready());
    EXPECT_EQ(run.vornstart(), -5);
}

TEST_F(VornapproxPolar, StopsTheRunWhenItFails)
{
    n.stations[0].typ = 0;
    vorn run(n.ready());
    EXPECT_EQ(run.vornstart(), -4);
}

TEST_F(VornapproxPolar, LetsTheRunGoOnWhenItSucceeds)
{
    vorn run(n.ready());
    ASSERT_EQ(run.vornstart(), 0);
    EXPECT_EQ(run.vornjordan(), 0);
    EXPECT_NEAR(V(run, points)[1].xpt[0], 10 + 100 * cos(0.75), 1e-9);
}

} // namespace
