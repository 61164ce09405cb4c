// Whole runs of networks whose groups of points move between epochs by known motions.

#include <gtest/gtest.h>

#include "runs/moving_wall.h"
#include "vorn.h"

namespace {

enum Solver { JORDAN, COMPACT };

// Runs the network; the results stand in runresults of the project.
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

} // namespace
