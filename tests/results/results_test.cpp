// What a run leaves in the host's result record besides the points: statistics, residuals,
// lumps, the connected net, the constants of groups, and the failures on the way.

#include <gtest/gtest.h>
#include <math.h>

#include <string>
#include <vector>

#include "support/faults.h"
#include "support/handed.h"

namespace {

using Lines = std::vector<std::string>;

const char SIZE_PROBLEM[] = "Size problem in pproject->runresults";

// ---- the record ------------------------------------------------------------------

TEST(ResultRecord, TellsModeDimensionAndSizes)
{
    for (int irun = -2; irun <= 1; irun++) {
        Handed h(3, 1, 2);
        h.observe(1, 2, 3, 4);
        V(h.run, irun) = irun;
        ASSERT_EQ(h.hand_back(), 0) << irun;
        EXPECT_EQ(h.r().irun, irun);
        EXPECT_EQ(h.r().dim, 3);
        EXPECT_EQ(h.r().nstar, 1);
        EXPECT_EQ(h.r().ntarr, 2);
        EXPECT_EQ(h.r().ndist, 1);
        EXPECT_EQ(h.r().ndifh, 2);
        EXPECT_EQ(h.r().ndir1, 3);
        EXPECT_EQ(h.r().ndir2, 4);
        EXPECT_EQ(h.r().nrow, 0);
        EXPECT_EQ(h.r().ilump, nullptr);
        EXPECT_EQ(h.net.messages.lines, Lines());
        EXPECT_EQ(h.net.report(), "");
    }
}

TEST(ResultRecord, TakesThePlaceOfThatOfAnEarlierRun)
{
    Handed h(2, 1, 1);
    V(h.run, irun) = 1;
    ASSERT_EQ(h.hand_back(), 0); // the arrays of this record would leak if it was not freed
    EXPECT_NE(h.r().ell12a, nullptr);
    V(h.run, irun) = 0;
    ASSERT_EQ(h.hand_back(), 0);
    EXPECT_EQ(h.r().irun, 0);
    EXPECT_EQ(h.r().ell12a, nullptr);
}

// ---- statistics ------------------------------------------------------------------

// Every value of the statistics another one.
void set_statistics(vorn &run)
{
    V(run, sigma0) = 0.25;
    double *apriori[] = {&V(run, sdist), &V(run, sdifh), &V(run, sdir1), &V(run, sdir2), &V(run, saz)};
    tempresult *t = V(run, temp_res) = Loaded::array<tempresult>(1);
    t->dof = 7;
    t->sigpost = 0.75;
    t->itest = -1;
    kindresult *kinds[] = {&t->dist, &t->difh, &t->dir1, &t->dir2, &t->az};
    for (int i = 0; i < 5; i++) {
        *apriori[i] = 1.5 + i;
        *kinds[i] = {10.5 + i, i % 2 ? 1 : -1, 20 + i, 30 + i, 40 + i, 50 + i};
    }
}

struct kindview {
    double s, sp;
    int ichi, nnorm, nnormb, ntau, ntaub;
};

std::vector<kindview> kinds_of(const result &r)
{
    return {{r.sdist, r.spdist, r.ichidist, r.nnormdist, r.nnormbdist, r.ntaudist, r.ntaubdist},
            {r.sdifh, r.spdifh, r.ichidifh, r.nnormdifh, r.nnormbdifh, r.ntaudifh, r.ntaubdifh},
            {r.sdir1, r.spdir1, r.ichidir1, r.nnormdir1, r.nnormbdir1, r.ntaudir1, r.ntaubdir1},
            {r.sdir2, r.spdir2, r.ichidir2, r.nnormdir2, r.nnormbdir2, r.ntaudir2, r.ntaubdir2},
            {r.saz, r.spaz, r.ichiaz, r.nnormaz, r.nnormbaz, r.ntauaz, r.ntaubaz}};
}

void expect_overall(const result &r, int dof, double sig0, double sigpost, int itest)
{
    EXPECT_EQ(r.dof, dof);
    EXPECT_EQ(r.sig0, sig0);
    EXPECT_EQ(r.sigpost, sigpost);
    EXPECT_EQ(r.itest, itest);
}

void expect_no_kinds(const result &r)
{
    for (const kindview &k : kinds_of(r)) {
        EXPECT_EQ(k.s, 0.0);
        EXPECT_EQ(k.sp, 0.0);
        for (int n : {k.ichi, k.nnorm, k.nnormb, k.ntau, k.ntaub}) EXPECT_EQ(n, 0);
    }
}

TEST(ResultStatistics, OfAFullRunCoverTheFiveKinds)
{
    Handed h(3, 1, 1);
    h.observe(1, 0, 0, 0);
    V(h.run, irun) = 1;
    set_statistics(h.run);
    ASSERT_EQ(h.hand_back(), 0);
    expect_overall(h.r(), 7, 0.25, 0.75, -1);
    const std::vector<kindview> kinds = kinds_of(h.r());
    for (int i = 0; i < 5; i++) {
        EXPECT_EQ(kinds[i].s, 1.5 + i);
        EXPECT_EQ(kinds[i].sp, 10.5 + i);
        EXPECT_EQ(kinds[i].ichi, i % 2 ? 1 : -1);
        EXPECT_EQ(kinds[i].nnorm, 20 + i);
        EXPECT_EQ(kinds[i].nnormb, 30 + i);
        EXPECT_EQ(kinds[i].ntau, 40 + i);
        EXPECT_EQ(kinds[i].ntaub, 50 + i);
    }
}

TEST(ResultStatistics, OfASolutionAreTheOverallFigures)
{
    Handed h(3, 1, 1);
    h.observe(0, 0, 0, 1);
    V(h.run, irun) = 0;
    set_statistics(h.run);
    ASSERT_EQ(h.hand_back(), 0);
    expect_overall(h.r(), 7, 0.25, 0.75, -1);
    expect_no_kinds(h.r());
}

TEST(ResultStatistics, StayZeroInTheOtherModes)
{
    for (int irun : {-2, -1, 2})
        for (int kept = 0; kept < 2; kept++) { // with and without a record of statistics
            Handed h(3, 1, 1);
            h.observe(1, 1, 1, 1);
            if (kept) set_statistics(h.run);
            V(h.run, irun) = irun;
            ASSERT_EQ(h.hand_back(), 0) << irun;
            expect_overall(h.r(), 0, 0.0, 0.0, 0);
            expect_no_kinds(h.r());
        }
}

TEST(ResultStatistics, StayZeroWithoutObservations)
{
    Handed h(3, 1, 1);
    V(h.run, irun) = 1;
    set_statistics(h.run);
    ASSERT_EQ(h.hand_back(), 0);
    expect_overall(h.r(), 0, 0.0, 0.0, 0);
    expect_no_kinds(h.r());
    EXPECT_NE(h.r().iobs, nullptr); // arrays of no element
    EXPECT_NE(h.r().res, nullptr);
    EXPECT_NE(h.r().sres, nullptr);
}

// What stands before a run has been made is there: the a-priori values.
TEST(ResultStatistics, AreTheAprioriOnesInARunThatNeverReachedASolver)
{
    for (int irun = 0; irun <= 1; irun++) {
        Handed h(3, 1, 1);
        h.observe(1, 1, 1, 1);
        V(h.run, irun) = irun; // temp_res is null
        V(h.run, sigma0) = 2.5;
        double *const apriori[] = {&V(h.run, sdist), &V(h.run, sdifh), &V(h.run, sdir1), &V(h.run, sdir2),
                                   &V(h.run, saz)};
        for (int i = 0; i < 5; i++) *apriori[i] = 1.5 + i;
        ASSERT_EQ(h.hand_back(), 0);
        expect_overall(h.r(), 0, 2.5, 0.0, 0);
        const std::vector<kindview> kinds = kinds_of(h.r());
        for (int i = 0; i < 5; i++) {
            EXPECT_EQ(kinds[i].s, irun == 1 ? 1.5 + i : 0.0);
            EXPECT_EQ(kinds[i].sp, 0.0);
            for (int n : {kinds[i].ichi, kinds[i].nnorm, kinds[i].nnormb, kinds[i].ntau, kinds[i].ntaub})
                EXPECT_EQ(n, 0);
        }
    }
}

// ---- residuals -------------------------------------------------------------------

// Two observations of each kind; residuals 0.01, 0.02, ... and deviations 0.1, 0.2, ... in
// the order of the result; between the two host records of a kind stands a deselected one.
class Residuals : public ::testing::Test {
protected:
    Residuals() : h(3, 1, 1)
    {
        h.observe(2, 2, 2, 2);
        double res = 0.01;
        for (measure *list : {V(h.run, dist), V(h.run, difh), V(h.run, dir1), V(h.run, dir2)})
            for (int i = 0; i < 2; i++, res += 0.01) {
                list[i].res[0] = res;
                list[i].res[1] = 10 * res;
            }
        for (auto *list : {&h.net.distances, &h.net.heightdiffs, &h.net.directions, &h.net.verticals}) {
            list->insert(list->begin() + 1, list->front());
            list->at(1).typ = -list->at(1).typ;
        }
        h.attach();
    }
    Handed h;
};

TEST_F(Residuals, StandInTheOrderOfTheKindsWithTheirPlaceInTheHostList)
{
    V(h.run, irun) = 1;
    ASSERT_EQ(h.hand_back(), 0);
    for (int n = 0; n < 8; n++) {
        EXPECT_EQ(h.r().iobs[n], n % 2 ? 2 : 0) << n;
        EXPECT_NEAR(h.r().res[n], 0.01 * (n + 1), 1e-15) << n; // raw unit radian; sums of 0.01
        EXPECT_NEAR(h.r().sres[n], 0.1 * (n + 1), 1e-14) << n;
    }
}

TEST_F(Residuals, PassOverARecordOfTypeZero)
{
    for (auto &m : h.net.distances)
        if (m.typ < 0) m.typ = 0;
    ASSERT_EQ(h.hand_back(), 0);
    EXPECT_EQ(h.r().iobs[1], 2);
}

TEST_F(Residuals, HaveDeviationsAndMarksOnlyInAFullRun)
{
    for (int irun = -2; irun <= 1; irun++) {
        V(h.run, irun) = irun;
        ASSERT_EQ(h.hand_back(), 0);
        EXPECT_NE(h.r().iobs, nullptr) << irun;
        EXPECT_NE(h.r().res, nullptr) << irun;
        EXPECT_NEAR(h.r().res[7], 0.08, 1e-15) << irun;
        const result &r = h.r();
        EXPECT_EQ(r.sres != nullptr, irun == 1) << irun;
        for (const int *marks : {r.iout, r.inorm, r.inormb, r.itau, r.itaub})
            EXPECT_EQ(marks != nullptr, irun == 1) << irun;
    }
}

// A difference stays a difference: neither the circle nor the zenith changes its sign or origin.
TEST_F(Residuals, OfAnglesComeInTheRawUnitOfTheHost)
{
    const double pi = 4 * atan(1.0);
    for (int izenith = 0; izenith < 2; izenith++) {
        h.net.p.iangle = ANGLE_GON;
        h.net.p.izenith = izenith;
        V(h.run, irun) = 1;
        V(h.run, dir1)[1].res[0] = -0.06;
        V(h.run, dir2)[1].res[0] = -0.08;
        ASSERT_EQ(h.hand_back(), 0);
        const double want[8] = {0.01, 0.02, 0.03, 0.04, 0.05, -0.06, 0.07, -0.08};
        for (int n = 0; n < 8; n++) {
            const double unit = n < 4 ? 1.0 : 200 / pi;
            EXPECT_NEAR(h.r().res[n], want[n] * unit, 1e-13) << n; // a few roundings of 5
            EXPECT_NEAR(h.r().sres[n], 0.1 * (n + 1) * unit, 1e-13) << n;
        }
    }
}

TEST_F(Residuals, BearTheMarksOfTheirMeasure)
{
    const int words[8] = {10000, 1000, 100, 10, 1, 11111, 9999, 0};
    int n = 0;
    for (measure *list : {V(h.run, dist), V(h.run, difh), V(h.run, dir1), V(h.run, dir2)})
        for (int i = 0; i < 2; i++) list[i].iflag = words[n++];
    V(h.run, irun) = 1;
    ASSERT_EQ(h.hand_back(), 0);
    const result &r = h.r();
    const int *marks[] = {r.iout, r.inorm, r.inormb, r.itau, r.itaub};
    for (int digit = 0; digit < 5; digit++)
        for (n = 0; n < 8; n++) EXPECT_EQ(marks[digit][n], n == digit || n == 5 ? 1 : 0) << digit << " " << n;
}

std::vector<int> digits_of(int word)
{
    Handed h(2, 0, 0);
    std::vector<int> d(5, 9);
    (V(h.run, flagdecode)(word, &d[0], &d[1], &d[2], &d[3], &d[4]));
    return d;
}

TEST(MarkWord, YieldsItsDecimalDigitsFromTheLeft)
{
    using Digits = std::vector<int>;
    EXPECT_EQ(digits_of(11111), (Digits{1, 1, 1, 1, 1}));
    EXPECT_EQ(digits_of(10), (Digits{0, 0, 0, 1, 0}));
    EXPECT_EQ(digits_of(10101), (Digits{1, 0, 1, 0, 1}));
    EXPECT_EQ(digits_of(0), (Digits{0, 0, 0, 0, 0}));
}

// A quotient other than 1 is no mark, and what it counts is not taken off: nothing follows it.
TEST(MarkWord, LeftAsClassCodeYieldsNoMark)
{
    using Digits = std::vector<int>;
    EXPECT_EQ(digits_of(9999), (Digits{0, 0, 0, 0, 0}));
    EXPECT_EQ(digits_of(5), (Digits{0, 0, 0, 0, 0}));
    EXPECT_EQ(digits_of(-1), (Digits{0, 0, 0, 0, 0}));
    EXPECT_EQ(digits_of(12111), (Digits{1, 0, 0, 0, 0}));
    EXPECT_EQ(digits_of(20001), (Digits{0, 0, 0, 0, 0}));
}

TEST_F(Residuals, StopWhenAListOfTheHostIsLongerThanTheRuns)
{
    for (int *count : {&V(h.run, ndist), &V(h.run, ndifh), &V(h.run, ndir1), &V(h.run, ndir2)}) {
        *count = 1; // one internal measure, two selected host records
        EXPECT_EQ(h.hand_back(), -3);
        EXPECT_EQ(h.net.messages.lines, Lines{SIZE_PROBLEM});
        EXPECT_EQ(h.r().ihost, nullptr);        // the points were not reached
        EXPECT_NEAR(h.r().res[0], 0.01, 1e-15); // what was filled stays
        *count = 2;
        h.net.messages.lines.clear();
    }
}

TEST_F(Residuals, DoNotRunOnInTheRoomThatAShorterListLeft)
{
    h.net.distances[0].typ = -1;                       // one selected record for two internal distances
    h.net.heightdiffs[1].typ = KIND_HEIGHT_DIFFERENCE; // three for two height differences
    EXPECT_EQ(h.hand_back(), -3);
    EXPECT_EQ(h.net.messages.lines, Lines{SIZE_PROBLEM});
}

TEST_F(Residuals, AreZeroInARunThatStoppedWhileLoading)
{
    for (measure **list : {&V(h.run, dist), &V(h.run, difh), &V(h.run, dir1), &V(h.run, dir2)}) {
        free(*list);
        *list = nullptr;
    }
    V(h.run, irun) = 1;
    ASSERT_EQ(h.hand_back(), 0);
    for (int n = 0; n < 8; n++) {
        EXPECT_EQ(h.r().iobs[n], n % 2 ? 2 : 0);
        EXPECT_EQ(h.r().res[n], 0.0);
        EXPECT_EQ(h.r().sres[n], 0.0);
        EXPECT_EQ(h.r().iout[n], 0);
    }
}

// ---- lumps -----------------------------------------------------------------------

const int PARAMETERS = 7;

// Lump 17 with the epochs 5 and 6 against 2, lump 4 with the epoch 2 against 6. Parameter c
// of row n is 10 n + c, its deviation a hundredth of that.
class LumpRows : public ::testing::Test {
protected:
    LumpRows() : h(3, 0, 1) {}
    void add(bool deviations)
    {
        h.add_lumps({3, 2}, deviations);
        lump *l = V(h.run, lumps);
        l[0].id = 17, l[0].iref = 2, l[0].epoch[0] = 5, l[0].epoch[1] = 6;
        l[1].id = 4, l[1].iref = 6, l[1].epoch[0] = 2;
        for (int n = 0; n < 3; n++)
            for (int c = 0; c < PARAMETERS; c++) {
                const lump &at = l[n / 2];
                double *values[] = {at.tx, at.ty, at.tz, at.rx, at.ry, at.rz, at.scale};
                double *sigmas[] = {at.stx, at.sty, at.stz, at.srx, at.sry, at.srz, at.sscale};
                values[c][n % 2] = 10 * n + c;
                if (deviations) sigmas[c][n % 2] = 0.01 * (10 * n + c);
            }
    }
    std::vector<const double *> deviations()
    {
        const result &r = h.r();
        return {r.stx, r.sty, r.stz, r.slrx, r.slry, r.slrz, r.stscale};
    }
    void expect_parameters()
    {
        const result &r = h.r();
        ASSERT_EQ(r.nrow, 3);
        const int ilump[] = {17, 17, 4}, iepoch[] = {5, 6, 2}, iref[] = {2, 2, 6};
        const double *values[] = {r.tx, r.ty, r.tz, r.lrx, r.lry, r.lrz, r.tscale};
        for (int n = 0; n < 3; n++) {
            EXPECT_EQ(r.ilump[n], ilump[n]);
            EXPECT_EQ(r.iepoch[n], iepoch[n]);
            EXPECT_EQ(r.iref[n], iref[n]);
            for (int c = 0; c < PARAMETERS; c++) EXPECT_EQ(values[c][n], 10 * n + c);
        }
    }
    void expect_deviations(double factor)
    {
        for (int c = 0; c < PARAMETERS; c++) {
            ASSERT_NE(deviations()[c], nullptr);
            for (int n = 0; n < 3; n++) EXPECT_EQ(deviations()[c][n], factor * (10 * n + c));
        }
    }
    Handed h;
};

TEST_F(LumpRows, OfAdjustedLumpsHaveDeviationsWithStatisticsAndErrorPropagation)
{
    add(true);
    h.net.p.lumpmethod = 1;
    for (int irun : {1, -2}) {
        V(h.run, irun) = irun;
        ASSERT_EQ(h.hand_back(), 0);
        expect_parameters();
        expect_deviations(0.01);
    }
}

TEST_F(LumpRows, HaveNoDeviationsInTheOtherModes)
{
    add(true);
    h.net.p.lumpmethod = 1;
    for (int irun : {0, -1}) {
        V(h.run, irun) = irun;
        ASSERT_EQ(h.hand_back(), 0);
        expect_parameters();
        for (const double *none : deviations()) EXPECT_EQ(none, nullptr);
    }
}

TEST_F(LumpRows, HaveZeroDeviationsWhereTheRunKeptNone)
{
    add(false);
    h.net.p.lumpmethod = 1;
    V(h.run, irun) = -2;
    ASSERT_EQ(h.hand_back(), 0);
    expect_parameters();
    expect_deviations(0.0);
}

TEST_F(LumpRows, HaveZeroDeviationsWithAnotherMethod)
{
    add(true);
    h.net.p.lumpmethod = 0;
    V(h.run, irun) = 1;
    ASSERT_EQ(h.hand_back(), 0);
    expect_parameters();
    expect_deviations(0.0);
}

TEST_F(LumpRows, ComeOnlyFromLumpsThatStand)
{
    V(h.run, nlump) = 2; // counted, and the run stopped before they were built
    ASSERT_EQ(h.hand_back(), 0);
    EXPECT_EQ(h.r().nrow, 0);
    EXPECT_EQ(h.r().ilump, nullptr);
    V(h.run, nlump) = 0;
}

TEST_F(LumpRows, AreNoneForALumpOfOneEpoch)
{
    h.add_lumps({1, 2}, false);
    V(h.run, lumps)[1].id = 8;
    ASSERT_EQ(h.hand_back(), 0);
    ASSERT_EQ(h.r().nrow, 1);
    EXPECT_EQ(h.r().ilump[0], 8);
}

TEST_F(LumpRows, AreNoneForALumpThatFoundNoMemory)
{
    h.add_lumps({2, 2}, false);
    V(h.run, lumps)[1].id = 8;
    free(V(h.run, lumps)[0].scale);
    V(h.run, lumps)[0].scale = nullptr;
    ASSERT_EQ(h.hand_back(), 0);
    ASSERT_EQ(h.r().nrow, 1);
    EXPECT_EQ(h.r().ilump[0], 8);
}

// ---- the connected net -----------------------------------------------------------

class ConnectedNet : public ::testing::Test {
protected:
    ConnectedNet() : h(2, 0, 1)
    {
        V(h.run, lcon) = Handed::array<int>(1);
        V(h.run, Qcon) = Handed::array<double>(3);
        V(h.run, nexport) = V(h.run, nimport) = 1;
    }
    // Hands back under a name; true when the file of the export was there afterwards.
    bool writes(const char *name, int icon)
    {
        strcpy(h.net.p.filename, name);
        V(h.run, icon) = icon;
        code = h.hand_back();
        std::string file = name;
        file.replace(file.size() - 3, 3, "con");
        return remove(file.c_str()) == 0;
    }
    Handed h;
    int code = 1;
};

TEST_F(ConnectedNet, IsWrittenByAnExportAndReleased)
{
    EXPECT_TRUE(writes("handed1.inp", 1));
    EXPECT_EQ(code, 0);
    EXPECT_EQ(V(h.run, lcon), nullptr);
    EXPECT_EQ(V(h.run, Qcon), nullptr);
    EXPECT_STREQ(h.net.p.filename, "handed1.inp");
    EXPECT_FALSE(writes("handed1.inp", 1)); // nothing is left to write
    EXPECT_EQ(code, 0);
}

TEST_F(ConnectedNet, IsWrittenByAnExportWithImport)
{
    EXPECT_TRUE(writes("handed3.inp", 3));
    EXPECT_EQ(code, 0);
    EXPECT_EQ(V(h.run, lcon), nullptr);
}

TEST_F(ConnectedNet, IsOnlyReleasedByAnImport)
{
    EXPECT_FALSE(writes("handed2.inp", 2));
    EXPECT_EQ(code, 0);
    EXPECT_EQ(V(h.run, lcon), nullptr);
    EXPECT_EQ(V(h.run, Qcon), nullptr);
}

TEST_F(ConnectedNet, IsOnlyReleasedWhenItWasSwitchedOff)
{
    EXPECT_FALSE(writes("handed0.inp", 0));
    EXPECT_EQ(code, 0);
    EXPECT_EQ(V(h.run, lcon), nullptr);
    EXPECT_EQ(V(h.run, Qcon), nullptr);
}

TEST_F(ConnectedNet, ThatCannotBeWrittenEndsTheHandoverBehindThePoints)
{
    for (int icon : {1, 3}) {
        h.net.messages.lines.clear();
        EXPECT_FALSE(writes("nowhere/handed.inp", icon));
        EXPECT_EQ(code, -9);
        EXPECT_EQ(h.net.messages.lines, Lines{"backtoproject: Cannot open nowhere/handed.con file"});
        EXPECT_NE(h.r().xpt, nullptr);
    }
}

// ---- groups ----------------------------------------------------------------------

// Host stations S0, one left out, S1; group constants 1, 2, 3 with deviations 0.1, 0.2, 0.3.
class GroupConstants : public ::testing::Test {
protected:
    GroupConstants() : h(3, 2, 0)
    {
        h.net.stations.insert(h.net.stations.begin() + 1, h.net.stations[0]);
        h.net.stations[1].status = STATUS_OFF;
        for (int i = 0; i < 2; i++)
            for (int m = 0; m < 3; m++) {
                h.at(i).n1[3 + m] = 40 + m;
                h.at(i).xex[3 + m] = 100 * (i + 1) + m;
                h.at(i).sxex[3 + m] = 10 * (i + 1) + m;
            }
    }
    // Hands back with one group of the given members; false when its constants changed.
    bool keeps(const std::vector<int> &indexes)
    {
        member = indexes;
        group_input g = group_input();
        for (int m = 0; m < 3; m++) g.c[m] = 1 + m, g.sc[m] = 0.1 * (1 + m);
        g.nmember = (int)member.size();
        g.member = member.empty() ? nullptr : member.data();
        h.net.groups.assign(2, g);
        h.net.groups[1].nmember = 0;
        h.attach();
        code = h.hand_back();
        bool same = true;
        for (int m = 0; m < 3; m++) {
            same = same && group().c[m] == 1 + m && group().sc[m] == 0.1 * (1 + m);
            EXPECT_EQ(h.net.groups[1].c[m], 1 + m); // a group without members keeps its own
        }
        return same;
    }
    group_input &group() { return h.net.groups[0]; }
    std::vector<int> member; // before h, whose end reads it once more
    Handed h;
    int code = 1;
};

TEST_F(GroupConstants, ComeFromTheFirstMember)
{
    EXPECT_FALSE(keeps({2, 0})); // host station 2 is the second of the run
    EXPECT_EQ(code, 0);
    for (int m = 0; m < 3; m++) {
        EXPECT_EQ(group().c[m], 200 + m);
        EXPECT_EQ(group().sc[m], 20 + m);
    }
    EXPECT_FALSE(keeps({0, 2}));
    for (int m = 0; m < 3; m++) EXPECT_EQ(group().c[m], 100 + m);
}

TEST_F(GroupConstants, ThatAreNoUnknownsStay)
{
    h.at(0).n1[4] = N_NONE;
    h.at(0).n1[5] = 0; // the first nuisance unknown
    EXPECT_FALSE(keeps({0}));
    EXPECT_EQ(group().c[0], 100);
    EXPECT_EQ(group().c[1], 2);
    EXPECT_EQ(group().sc[1], 0.2);
    EXPECT_EQ(group().c[2], 102);
    EXPECT_EQ(group().sc[2], 12);
}

TEST_F(GroupConstants, StayWhenTheFirstMemberDoesNotTakePart)
{
    EXPECT_TRUE(keeps({1, 0})); // left out
    EXPECT_TRUE(keeps({7, 0})); // no station of the host
    EXPECT_TRUE(keeps({-1, 0}));
    EXPECT_TRUE(keeps({}));
}

TEST_F(GroupConstants, ComeBehindTheConnectedNet)
{
    V(h.run, lcon) = Handed::array<int>(1);
    V(h.run, Qcon) = Handed::array<double>(6);
    V(h.run, icon) = V(h.run, nexport) = 1;
    strcpy(h.net.p.filename, "nowhere/handed.inp");
    EXPECT_TRUE(keeps({0}));
    EXPECT_EQ(code, -9);
}

// ---- the later comparison of lumps -----------------------------------------------

TEST(LaterComparison, IsAnnouncedInTheReport)
{
    Handed h(3, 1, 1);
    h.net.p.lumpmethod = 9;
    ASSERT_EQ(h.hand_back(), 0);
    EXPECT_EQ(h.net.report(), "\nA Posteriori lump transformation\n");
    EXPECT_EQ(h.net.messages.lines, Lines());
}

// A square of side 2 seen at the epochs 1 and 2; at epoch 2 it stands 10 m further and its
// corners are 2 mm up and down in turn, which no similarity takes away.
TEST(LaterComparison, MovesThePointsBeforeTheyAreCopied)
{
    const int corners = 4, copies = 2;
    const double x[corners] = {1, -1, -1, 1}, y[corners] = {1, 1, -1, -1}, z[corners] = {2e-3, -2e-3, 2e-3, -2e-3};
    Handed h(3, 1, corners * copies);
    h.net.targets.resize(corners);
    h.observe(0, 0, corners * copies, 0);
    for (int c = 0; c < corners; c++) {
        h.net.targets[c].ilump = 3;
        for (int epoch = 1; epoch <= copies; epoch++) {
            const int n = copies * c + epoch - 1;
            point &p = h.at(1 + n);
            h.name(1 + n, "T" + std::to_string(c));
            p.xpt[0] = x[c] + (epoch == 2 ? 10 : 0);
            p.xpt[1] = y[c];
            p.xpt[2] = epoch == 2 ? z[c] : 0;
            h.net.directions[n].time = V(h.run, dir1)[n].time = epoch;
            V(h.run, dir1)[n].p1 = &h.at(0);
            V(h.run, dir1)[n].p2 = &p;
        }
    }
    h.attach();
    h.net.p.lumpmethod = 9;
    ASSERT_EQ(h.hand_back(), 0);

    ASSERT_EQ(h.r().nrow, 1); // epoch 2 against 1
    EXPECT_EQ(h.r().ilump[0], 3);
    EXPECT_NEAR(h.r().tx[0], 10.0, 1e-4);
    EXPECT_EQ(h.r().ntarr, corners);
    for (int c = 0; c < corners; c++) {            // the mean of both epochs, brought back to the first
        EXPECT_NEAR(h.r().xpt[1 + c], x[c], 1e-5); // z squared over the side: 4e-6
        EXPECT_NEAR(h.r().ypt[1 + c], y[c], 1e-5);
        EXPECT_NEAR(h.r().zpt[1 + c], 0.5 * z[c], 1e-5);
    }
}

TEST(LaterComparison, ThatFailsIsToldAndTheHandoverGoesOn)
{
    Handed h(3, 1, 1);
    h.net.p.lumpmethod = 9;
    h.at(1).xpt[0] = 12.0;
    fail_allocation(1 + 2 + 1); // record, residuals, the first table of the comparison
    EXPECT_EQ(h.hand_back(), 0);
    fail_allocation(0);
    EXPECT_EQ(h.net.messages.lines,
              (Lines{"usesimili: Could not allocate itimetable", "backtoproject: Pb with usesimili"}));
    EXPECT_EQ(h.net.report(), "\nA Posteriori lump transformation\n\nbacktoproject: Pb with usesimili\n");
    EXPECT_EQ(h.r().xpt[1], 12.0);
}

// ---- failing allocations ---------------------------------------------------------

struct Step {
    int arrays;
    int code;
    const char *message;
};

const char NO_ARRAYS[] = "Allocation in pproject->runresults failed";

// Fails every allocation of a handover in turn; what a failure leaves is released by the next.
void expect_failures(Handed &h, const std::vector<Step> &steps)
{
    int n = 0;
    for (const Step &step : steps)
        for (int i = 0; i < step.arrays; i++) {
            h.net.messages.lines.clear();
            fail_allocation(++n);
            const int code = h.hand_back();
            fail_allocation(0);
            EXPECT_EQ(code, step.code) << n;
            EXPECT_EQ(h.net.messages.lines, Lines{step.message}) << n;
            EXPECT_EQ(h.net.p.runresults != nullptr, step.code != -1) << n;
        }
    h.net.messages.lines.clear();
    fail_allocation(n + 1); // the handover takes no further array
    EXPECT_EQ(h.hand_back(), 0);
    EXPECT_EQ(allocations(), n);
    fail_allocation(0);
    EXPECT_EQ(h.net.messages.lines, Lines());
}

TEST(ResultMemory, MissingEndsAFullRunInSpaceWithTheLineOfItsStep)
{
    for (int irun : {1, -2}) {
        Handed h(3, 1, 2);
        h.observe(1, 1, 1, 1);
        h.add_lumps({3}, false);
        V(h.run, irun) = irun;
        expect_failures(h, {{1, -1, "Create pproject->runresults failed"},
                            {irun == 1 ? 8 : 2, -2, NO_ARRAYS}, // residuals, deviations, marks
                            {10, -2, "Allocation # 1 for lumps in runresults failed"},
                            {7, -2, "Allocation # 2 for lumps in runresults failed"},
                            {3, -2, "Allocation for ell 1-2 in pproject->runresults failed"},
                            {3, -2, "Allocation for ell 1-3 in pproject->runresults failed"},
                            {3, -2, "Allocation for ell 2-3 in pproject->runresults failed"},
                            {1 + 3 * 6, -2, NO_ARRAYS}}); // host index; six arrays a coordinate
    }
}

TEST(ResultMemory, MissingEndsASolutionOfAnyDimension)
{
    const int arrays[] = {0, 1 + 3, 1 + 2 * 3, 1 + 3 * 4}; // host index and coordinates
    for (int dim = 1; dim <= 3; dim++) {
        Handed h(dim, dim == 3 ? 0 : 1, 2); // 3D without a station has no orientations
        h.observe(1, 0, 0, 0);
        h.add_lumps({2}, false);
        expect_failures(h, {{1, -1, "Create pproject->runresults failed"},
                            {2, -2, NO_ARRAYS},
                            {10, -2, "Allocation # 1 for lumps in runresults failed"},
                            {arrays[dim], -2, NO_ARRAYS}});
    }
}

TEST(ResultMemory, MissingForTheRecordIsReported)
{
    Handed h(2, 1, 1);
    fail_allocation(1);
    EXPECT_EQ(h.hand_back(), -1);
    fail_allocation(0);
    EXPECT_EQ(h.net.report(), "\nbacktoproject: Cannot allocate runresults\n");
    EXPECT_EQ(h.net.p.runresults, nullptr);
}

TEST(ResultMemory, MissingLeavesWhatWasFilledBefore)
{
    Handed h(3, 1, 1);
    h.observe(1, 0, 0, 0);
    V(h.run, dist)[0].res[0] = 0.5;
    fail_allocation(1 + 2 + 1); // record, residuals, host index
    EXPECT_EQ(h.hand_back(), -2);
    fail_allocation(0);
    EXPECT_EQ(h.r().res[0], 0.5);
    EXPECT_EQ(h.r().ndist, 1);
    EXPECT_EQ(h.r().nstar, 1);
    EXPECT_EQ(h.r().ntarr, 1);
}

} // namespace
