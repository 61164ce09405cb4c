// Whole runs of networks whose groups of points move between epochs by known motions.

#include <gtest/gtest.h>

#include "runs/moving_wall.h"
#include "support/faults.h"
#include "support/workfolder.h"
#include "vorn/vorn.h"

namespace {

enum Solver { JORDAN, COMPACT };

// Runs the network; the results stand in runresults of the project. The working directory takes
// the files of the run.
void adjust(Network &net, Solver solver)
{
    vorn run(net.ready());
    ASSERT_EQ(run.vornstart(), 0) << net.report();
    ASSERT_EQ(solver == JORDAN ? run.vornjordan() : run.vornL2(), 0) << net.report();
}

double value(const result &r, int row, int k)
{
    const double *const fields[] = {r.tx, r.ty, r.tz, r.lrx, r.lry, r.lrz, r.tscale};
    return fields[k][row];
}

double deviation(const result &r, int row, int k)
{
    const double *const fields[] = {r.stx, r.sty, r.stz, r.slrx, r.slry, r.slrz, r.stscale};
    return fields[k][row];
}

// The rows are the groups in order, each with its epochs but the first.
void expect_rows(const result &r, const std::vector<Group> &groups, int nepoch)
{
    ASSERT_EQ(r.nrow, (int)groups.size() * (nepoch - 1));
    for (int row = 0; row < r.nrow; row++) {
        EXPECT_EQ(r.ilump[row], groups[(size_t)(row / (nepoch - 1))].id);
        EXPECT_EQ(r.iepoch[row], row % (nepoch - 1) + 2);
        EXPECT_EQ(r.iref[row], 1);
    }
}

const Motion &motion_of_row(const std::vector<Group> &groups, int nepoch, int row)
{
    return groups[(size_t)(row / (nepoch - 1))].motions[(size_t)(row % (nepoch - 1)) + 1];
}

TEST(MovingGroups, HaveTheirMotionsBackFromPerfectObservations)
{
    for (int ngroup = 1; ngroup <= 2; ngroup++)
        for (int nepoch = 2; nepoch <= 5; nepoch++)
            for (const Solver solver : {JORDAN, COMPACT}) {
                const std::vector<Group> groups = groups_of(ngroup, nepoch);
                MovingWall wall(groups, nepoch, 1, 0.0);
                adjust(wall.net, solver);
                const result &r = *wall.net.p.runresults;
                expect_rows(r, groups, nepoch);
                for (int row = 0; row < r.nrow; row++)
                    for (int k = 0; k < 7; k++)
                        EXPECT_NEAR(value(r, row, k), motion_of_row(groups, nepoch, row).value(k), 1e-7)
                            << ngroup << " " << nepoch << " " << row << " " << k;
            }
}

// Truths of the points, in the order of the host.
void expect_points(const Network &net, const std::vector<Group> &groups, double tolerance)
{
    const result &r = *net.p.runresults;
    int i = r.nstar;
    for (const Group &g : groups)
        for (const std::vector<double> &x : g.points) {
            EXPECT_NEAR(r.xpt[i], x[0], tolerance);
            EXPECT_NEAR(r.ypt[i], x[1], tolerance);
            EXPECT_NEAR(r.zpt[i], x[2], tolerance);
            i++;
        }
    EXPECT_EQ(i, r.nstar + r.ntarr);
}

TEST(MovingGroups, HaveTheirPointsAtTheReferenceEpoch)
{
    for (const Solver solver : {JORDAN, COMPACT}) {
        const std::vector<Group> groups = groups_of(2, 3);
        MovingWall wall(groups, 3, 1, 0.0);
        adjust(wall.net, solver);
        expect_points(wall.net, groups, 1e-7);
    }
}

TEST(MovingGroups, ReferToTheEpochThatTheHostDefines)
{
    for (const Solver solver : {JORDAN, COMPACT}) {
        const std::vector<Group> groups = groups_of(1, 3);
        MovingWall wall(groups, 3, 2, 0.0);
        int epoch = 1, code = CODE_FREE;
        double zero = 0.0, one = 1.0;
        lump_definition d = lump_definition();
        d.id = groups[0].id;
        d.iref = 2;
        d.n = 1;
        d.epoch = &epoch;
        d.code = &code;
        d.scale = &one;
        d.tx = d.ty = d.tz = d.rx = d.ry = d.rz = &zero;
        wall.net.lumpdefs.push_back(d);
        adjust(wall.net, solver);
        const result &r = *wall.net.p.runresults;
        ASSERT_EQ(r.nrow, 2);
        const int epochs[] = {1, 3};
        for (int row = 0; row < 2; row++) {
            EXPECT_EQ(r.iepoch[row], epochs[row]);
            EXPECT_EQ(r.iref[row], 2);
            for (int k = 0; k < 7; k++)
                EXPECT_NEAR(value(r, row, k), groups[0].motions[(size_t)epochs[row] - 1].value(k), 1e-7);
        }
        expect_points(wall.net, groups, 1e-7);
    }
}

// Definitions of a kind, or with the scales of all epochs fixed at those of the motions.
struct Definition {
    Definition(const Group &g, int kind, bool fixed)
    {
        for (size_t e = 0; e < g.motions.size(); e++) {
            epochs.push_back((int)e + 1);
            codes.push_back(fixed ? CODE_FIXED : CODE_FREE);
            scales.push_back(fixed ? g.motions[e].scale : 1.0);
        }
        zeros.resize(g.motions.size());
        d.id = g.id;
        d.kind = kind;
        d.iref = 1;
        d.n = (int)epochs.size();
        d.epoch = epochs.data();
        d.code = codes.data();
        d.scale = scales.data();
        d.tx = d.ty = d.tz = d.rx = d.ry = d.rz = zeros.data();
    }
    lump_definition d = lump_definition();
    std::vector<int> epochs, codes;
    std::vector<double> scales, zeros;
};

TEST(MovingGroups, DoNotTurnWhenTheHostHoldsTheirRotations)
{
    for (const Solver solver : {JORDAN, COMPACT}) {
        const std::vector<Group> groups = groups_of(1, 3, 7, false, true);
        MovingWall wall(groups, 3, 1, 0.0);
        Definition d(groups[0], 1, false);
        wall.net.lumpdefs.push_back(d.d);
        adjust(wall.net, solver);
        const result &r = *wall.net.p.runresults;
        for (int row = 0; row < r.nrow; row++)
            for (int k = 0; k < 7; k++) {
                EXPECT_NEAR(value(r, row, k), motion_of_row(groups, 3, row).value(k), 1e-7);
                // held by a weight of 1e8: a hundred-millionth of a radian
                EXPECT_TRUE(k < 3 || k == 6 || deviation(r, row, k) < 1e-7);
            }
    }
}

TEST(MovingGroups, DoNotGrowWhenTheHostHoldsTheirScale)
{
    for (const Solver solver : {JORDAN, COMPACT})
        for (const bool fixed : {false, true}) { // at 1 by their kind, at given values
            const std::vector<Group> groups = groups_of(1, 4, 7, true, fixed);
            MovingWall wall(groups, 4, 1, 0.5);
            Definition d(groups[0], fixed ? 0 : 2, fixed);
            wall.net.lumpdefs.push_back(d.d);
            adjust(wall.net, solver);
            const result &r = *wall.net.p.runresults;
            ASSERT_EQ(r.nrow, 3);
            for (int row = 0; row < 3; row++) {
                EXPECT_NEAR(value(r, row, 6), motion_of_row(groups, 4, row).scale, 1e-9);
                EXPECT_LT(deviation(r, row, 6), 1e-7);
            }
        }
}

// Without a lump two epochs of a moved group contradict each other.
TEST(MovingGroups, SpoilTheFitWhenTheyAreTakenForFixedPoints)
{
    const std::vector<Group> groups = groups_of(1, 2);
    MovingWall wall(groups, 2, 1, 1.0), blind(groups, 2, 1, 1.0);
    for (target_input &t : blind.net.targets) t.ilump = 0;
    adjust(wall.net, JORDAN);
    adjust(blind.net, JORDAN);
    EXPECT_EQ(wall.net.p.runresults->itest, 1);
    EXPECT_EQ(blind.net.p.runresults->itest, -1);
    EXPECT_GT(blind.net.p.runresults->sigpost, 20.0 * wall.net.p.runresults->sigpost);
    EXPECT_EQ(blind.net.p.runresults->nrow, 0);
}

// Errors of all parameters over their standard deviations: of unit variance. Each motion has
// seven of them, so that the mean square of n motions has a deviation of about sqrt(2 / 7n),
// and more, as they are correlated: with 180 motions 0.04 to 0.11.
TEST(MovingGroups, HaveTheirMotionsBackWithinTheirStandardDeviations)
{
    double sum = 0.0;
    int n = 0, over = 0;
    for (unsigned seed = 1; seed <= 9; seed++)
        for (int ngroup = 1; ngroup <= 2; ngroup++)
            for (int nepoch = 2; nepoch <= 5; nepoch += 3) {
                const std::vector<Group> groups = groups_of(ngroup, nepoch);
                MovingWall wall(groups, nepoch, 1, 1.0, seed);
                adjust(wall.net, COMPACT);
                const result &r = *wall.net.p.runresults;
                expect_rows(r, groups, nepoch);
                EXPECT_NEAR(r.sigpost / r.sig0, 1.0, 0.15); // some hundred degrees of freedom
                for (int row = 0; row < r.nrow; row++)
                    for (int k = 0; k < 7; k++) {
                        const double e = value(r, row, k) - motion_of_row(groups, nepoch, row).value(k);
                        const double u = e / deviation(r, row, k);
                        EXPECT_LT(fabs(u), 5.0) << seed << " " << row << " " << k;
                        sum += u * u;
                        over += fabs(u) > 1.96;
                        n++;
                    }
            }
    EXPECT_EQ(n, 9 * 7 * (1 + 4 + 2 + 8));
    EXPECT_NEAR(sum / n, 1.0, 0.25);
    EXPECT_NEAR((double)over / n, 0.05, 0.03);
}

TEST(MovingGroups, AreTheSameWithBothSolvers)
{
    for (int nepoch = 2; nepoch <= 4; nepoch += 2) {
        const std::vector<Group> groups = groups_of(2, nepoch);
        MovingWall a(groups, nepoch, 1, 1.0), b(groups, nepoch, 1, 1.0);
        adjust(a.net, JORDAN);
        adjust(b.net, COMPACT);
        const result &ra = *a.net.p.runresults, &rb = *b.net.p.runresults;
        ASSERT_EQ(ra.nrow, rb.nrow);
        for (int row = 0; row < ra.nrow; row++)
            for (int k = 0; k < 7; k++) {
                EXPECT_NEAR(value(ra, row, k), value(rb, row, k), 1e-9); // both have converged to 1e-6, squared
                EXPECT_NEAR(deviation(ra, row, k) / deviation(rb, row, k), 1.0, 1e-6);
            }
        EXPECT_NEAR(ra.sigpost, rb.sigpost, 1e-9 * ra.sigpost);
        for (int i = 0; i < ra.nstar + ra.ntarr; i++) {
            EXPECT_NEAR(ra.xpt[i], rb.xpt[i], 1e-9);
            EXPECT_NEAR(ra.szpt[i], rb.szpt[i], 1e-6 * ra.szpt[i]);
        }
    }
}

// No pillar is fixed: the datum is that of all points at the reference epoch.
TEST(MovingGroups, AreTheSameWithBothSolversInAFreeNetwork)
{
    const std::vector<Group> groups = groups_of(2, 3);
    MovingWall a(groups, 3, 1, 0.0), b(groups, 3, 1, 0.0);
    for (MovingWall *wall : {&a, &b})
        for (station_input &s : wall->net.stations)
            for (int &code : s.ix) code = CODE_FREE;
    adjust(a.net, JORDAN);
    adjust(b.net, COMPACT);
    const result &ra = *a.net.p.runresults, &rb = *b.net.p.runresults;
    ASSERT_EQ(ra.nrow, 4);
    ASSERT_EQ(rb.nrow, 4);
    EXPECT_LT(ra.sigpost, 1e-3); // perfect observations in standard deviations of theirs
    for (int row = 0; row < 4; row++) {
        // seen from any frame a group grows by its own scale
        EXPECT_NEAR(value(ra, row, 6), motion_of_row(groups, 3, row).scale, 1e-8);
        for (int k = 0; k < 7; k++) EXPECT_NEAR(value(ra, row, k), value(rb, row, k), 1e-8);
    }
}

// Points known from an earlier epoch. They are weighted: with fixed ones no coordinate would be
// unknown, and the iteration would end after its first step.
TEST(MovingGroups, HaveTheirMotionsBackFromKnownPoints)
{
    for (const Solver solver : {JORDAN, COMPACT}) {
        const std::vector<Group> groups = groups_of(1, 2);
        MovingWall wall(groups, 2, 1, 0.0);
        for (size_t i = 0; i < wall.net.targets.size(); i++)
            for (int k = 0; k < 3; k++) {
                target_input &t = wall.net.targets[i];
                t.ix[k] = CODE_WEIGHTED;
                t.sx[k] = 0.0001;
                t.x[k] = groups[0].points[i][(size_t)k];
            }
        adjust(wall.net, solver);
        const result &r = *wall.net.p.runresults;
        expect_rows(r, groups, 2);
        for (int k = 0; k < 7; k++) EXPECT_NEAR(value(r, 0, k), groups[0].motions[1].value(k), 1e-7);
    }
}

// ---- compared after the adjustment ----

// The comparison leaves its own report, simili.out, in the working directory.
class SplitGroups : public testing::Test {
    WorkFolder folder;
};

// Every epoch has its own points, which find their first coordinates from the observations.
TEST_F(SplitGroups, HaveTheirMotionsBackFromPerfectObservations)
{
    for (int ngroup = 1; ngroup <= 2; ngroup++)
        for (int nepoch = 2; nepoch <= 5; nepoch++)
            for (const Solver solver : {JORDAN, COMPACT}) {
                const std::vector<Group> groups = groups_of(ngroup, nepoch);
                MovingWall wall(groups, nepoch, 1, 0.0);
                wall.net.p.lumpmethod = 9;
                adjust(wall.net, solver);
                const result &r = *wall.net.p.runresults;
                expect_rows(r, groups, nepoch);
                for (int row = 0; row < r.nrow; row++)
                    for (int k = 0; k < 7; k++)
                        EXPECT_NEAR(value(r, row, k), motion_of_row(groups, nepoch, row).value(k), 1e-7)
                            << ngroup << " " << nepoch << " " << row << " " << k;
                expect_points(wall.net, groups, 1e-7);
            }
}

// The comparison afterwards weighs all coordinates alike, which costs some precision: its errors
// are a little larger than the standard deviations of the motions that were adjusted.
TEST_F(SplitGroups, HaveTheirMotionsBackWithinThePrecisionOfTheAdjustedOnes)
{
    double split = 0.0, adjusted = 0.0;
    int n = 0;
    for (unsigned seed = 1; seed <= 6; seed++)
        for (int ngroup = 1; ngroup <= 2; ngroup++)
            for (const Solver solver : {JORDAN, COMPACT}) {
                const int nepoch = 3;
                const std::vector<Group> groups = groups_of(ngroup, nepoch);
                MovingWall one(groups, nepoch, 1, 1.0, seed), nine(groups, nepoch, 1, 1.0, seed);
                nine.net.p.lumpmethod = 9;
                adjust(one.net, solver);
                adjust(nine.net, solver);
                const result &r1 = *one.net.p.runresults, &r9 = *nine.net.p.runresults;
                expect_rows(r9, groups, nepoch);
                for (int row = 0; row < r9.nrow; row++)
                    for (int k = 0; k < 7; k++) {
                        const double truth = motion_of_row(groups, nepoch, row).value(k), s = deviation(r1, row, k);
                        const double u9 = (value(r9, row, k) - truth) / s, u1 = (value(r1, row, k) - truth) / s;
                        EXPECT_LT(fabs(u9), 6.0);
                        EXPECT_EQ(deviation(r9, row, k), 0.0); // none are made
                        split += u9 * u9;
                        adjusted += u1 * u1;
                        n++;
                    }
            }
    EXPECT_NEAR(adjusted / n, 1.0, 0.4);
    EXPECT_LT(split / n, 2.0);
    EXPECT_GT(split, adjusted);
}

TEST_F(SplitGroups, AreTheSameWithBothSolvers)
{
    const std::vector<Group> groups = groups_of(2, 3);
    MovingWall a(groups, 3, 1, 1.0), b(groups, 3, 1, 1.0);
    a.net.p.lumpmethod = b.net.p.lumpmethod = 9;
    adjust(a.net, JORDAN);
    adjust(b.net, COMPACT);
    const result &ra = *a.net.p.runresults, &rb = *b.net.p.runresults;
    ASSERT_EQ(ra.nrow, rb.nrow);
    for (int row = 0; row < ra.nrow; row++)
        for (int k = 0; k < 7; k++) EXPECT_NEAR(value(ra, row, k), value(rb, row, k), 1e-8);
}

TEST_F(SplitGroups, ReachTheHostOnceAPoint)
{
    const std::vector<Group> groups = groups_of(2, 4);
    MovingWall wall(groups, 4, 1, 0.0);
    wall.net.p.lumpmethod = 9;
    adjust(wall.net, COMPACT);
    const result &r = *wall.net.p.runresults;
    EXPECT_EQ(r.nstar, 5);
    EXPECT_EQ(r.ntarr, 14);
    for (int i = 0; i < r.ntarr; i++) EXPECT_EQ(r.ihost[r.nstar + i], r.nstar + i);
    EXPECT_NE(wall.net.report().find("\nA Posteriori lump transformation\n"), std::string::npos);
}

TEST_F(SplitGroups, KeepTheScaleAndTheRotationsThatTheHostHolds)
{
    for (const int kind : {1, 2}) {
        const std::vector<Group> groups = groups_of(1, 3, 7, kind != 1, kind != 2);
        MovingWall wall(groups, 3, 1, 0.0);
        wall.net.p.lumpmethod = 9;
        Definition d(groups[0], kind, false);
        wall.net.lumpdefs.push_back(d.d);
        adjust(wall.net, JORDAN);
        const result &r = *wall.net.p.runresults;
        ASSERT_EQ(r.nrow, 2);
        for (int row = 0; row < 2; row++)
            for (int k = 0; k < 7; k++)
                EXPECT_NEAR(value(r, row, k), motion_of_row(groups, 3, row).value(k), 1e-7) << kind;
    }
}

// Every allocation of a run with lumps fails in turn: the run ends by a documented code, its
// destruction is safe, and nothing leaks.
TEST_F(SplitGroups, EndByDocumentedCodesWithoutMemory)
{
    for (const int method : {1, 9})
        for (const Solver solver : {JORDAN, COMPACT}) {
            const std::vector<Group> groups = groups_of(2, 2, 4);
            int ended = 0;
            for (int n = 1;; n++) {
                MovingWall wall(groups, 2, 1, 0.0);
                wall.net.p.lumpmethod = method;
                project *p = wall.net.ready();
                fail_allocation(n);
                {
                    vorn run(p);
                    const int start = run.vornstart();
                    EXPECT_TRUE(start <= 0 && start >= -6);
                    if (start == 0) {
                        const int code = solver == JORDAN ? run.vornjordan() : run.vornL2();
                        EXPECT_TRUE(code <= 0 && code >= -5);
                        ended += code != 0;
                    }
                }
                const int all = allocations();
                fail_allocation(0);
                if (n > all) break;
            }
            EXPECT_GT(ended, 0);
        }
}

} // namespace
