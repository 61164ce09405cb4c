// Tables that another network file reads: chained networks against one adjustment of all, rows left out against the
// same rows with use = no.

#include "host/results/side_tables.h"

#include <gtest/gtest.h>

#include "host/input/network_file.h"
#include "host/own/own_run.h"

using namespace vornhost;

namespace {

// A levelled network: two known points, two that the second survey shares, lines of the first or of both surveys.
std::string levelling(const std::string &points, const std::string &rows, const std::string &more = "")
{
    return "[run]\ndimension = 1\n[units]\nlength = \"mm\"\nsigma_length = \"cm\"\n[tests]\nprecision = "
           "\"a_priori\"\n" +
           more + "[tables]\ntargets = '''\nname z code\n" + points + "'''\n" + rows;
}

const std::string heading = "height_differences = '''\nfrom to value sigma\n";
const std::string first_rows = "A P 1000.2 0.1\nP Q 500.9 0.05\nQ A -1500.4 0.2\nB Q 300.1 0.1\n",
                  second_rows = "P R 200.3 0.1\nR Q 300.2 0.1\nQ S 40 0.2\nS R -339.1 0.1\n";

struct ModelRun {
    Model model;
    SolvedNetwork solved;
};

ModelRun run_with(const Folder &folder, const std::string &text, const std::vector<std::string> &covariances,
                  bool snoop = false)
{
    ModelRun run;
    Faults faults;
    folder.write("net.inp", text);
    EXPECT_TRUE(read_network("net.inp", run.model, faults)) << (faults.lines().empty() ? "" : faults.lines()[0]);
    run.model.covariance_points = covariances;
    run.model.tests.snoop = snoop;
    run.solved = solve(run.model);
    return run;
}

} // namespace

TEST(CovarianceFile, ChainsNetworksAsIfTheyWereAdjustedTogether)
{
    const Folder folder;
    const InFolder inside(folder.path);
    const std::string known = "A 100000 fixed\nB 101200 fixed\n", shared = "P 101000 free\nQ 101500 free\n",
                      others = "R 101200 free\nS 101540 free\n";
    const ModelRun first = run_with(folder, levelling(known + shared, heading + first_rows + "'''\n"), {"Q", "A", "P"});
    folder.write("first.cov", covariance_matrix(first.model, first.solved.results()));
    folder.write("first_coordinates.csv", covariance_coordinates(first.model, first.solved.results(), "first"));
    const ModelRun second =
        run_with(folder,
                 levelling(shared + others,
                           "coordinates = { file = \"first_coordinates.csv\" }\n" + heading + second_rows + "'''\n",
                           "[covariances.first]\nfile = \"first.cov\"\nform = \"lower\"\n"),
                 {});
    const ModelRun all =
        run_with(folder, levelling(known + shared + others, heading + first_rows + second_rows + "'''\n"), {});
    ASSERT_TRUE(second.solved.adjusted()) << second.solved.words();
    for (const char *name : {"P", "Q", "R", "S"}) {
        EXPECT_NEAR(*second.solved.point(name).adjusted[2], *all.solved.point(name).adjusted[2], 1e-9) << name;
        EXPECT_NEAR(*second.solved.point(name).deviation[2], *all.solved.point(name).deviation[2], 1e-10) << name;
    }
    EXPECT_EQ(*second.solved.results().degrees_of_freedom + *first.solved.results().degrees_of_freedom,
              *all.solved.results().degrees_of_freedom);
}

TEST(CovarianceFile, IsRefusedWhereTheDatumOfAFreeNetworkMakesItSingular)
{
    const Folder folder;
    const InFolder inside(folder.path);
    const ModelRun run =
        run_with(folder, levelling("P 1000 free\nQ 1500 free\n", heading + "P Q 500.9 0.05\nQ P -500.8 0.05\n'''\n"),
                 {"P", "Q"});
    ASSERT_TRUE(run.solved.adjusted());
    try {
        covariance_matrix(run.model, run.solved.results());
        FAIL() << "no error";
    } catch (const SideTableError &error) {
        EXPECT_EQ(std::string(error.what()),
                  "the covariance is singular: z of Q depends on the coordinates before it; hold the network, or name "
                  "fewer points");
    }
    ModelRun held =
        run_with(folder, levelling("A 1000 fixed\nQ 1500 free\n", heading + "A Q 500.9 0.05\n'''\n"), {"A"});
    EXPECT_THROW(covariance_matrix(held.model, held.solved.results()), SideTableError);
}

TEST(CovarianceFile, NamesItsCovarianceByTheFile)
{
    EXPECT_EQ(covariance_name("out/first.cov"), "first");
    EXPECT_EQ(covariance_name("first net.cov"), "first_net");
    EXPECT_EQ(coordinates_file("out/first.cov"), "out/first_coordinates.csv");
}

namespace {

// B by six readings, of which the fourth is wrong, and a name that must be quoted.
std::string repeated(const std::string &more, const char *use = "yes")
{
    return std::string("[run]\ndimension = 1\n") +
           "[csv]\nseparator = \";\"\n[tables]\ntargets = '''\nname z code\nA 100 fixed\n\"B \"\"x\"\"\" 101 "
           "free\n'''\n"
           "height_differences = '''\nfrom to value sigma use\nA \"B \"\"x\"\"\" 1.001 0.01 yes\n"
           "A \"B \"\"x\"\"\" 1.002 0.01 yes\nA \"B \"\"x\"\"\" 0.998 0.01 yes\nA \"B \"\"x\"\"\" 1.3 0.01 " +
           use + "\nA \"B \"\"x\"\"\" 1 0.01 yes\nA \"B \"\"x\"\"\" 0.999 0.01 yes\n'''\n" + more;
}

std::string first_fault(const Folder &folder, const std::string &table)
{
    folder.write("out.csv", table);
    folder.write("net.inp", repeated("left_out = { file = \"out.csv\" }\n"));
    Model model;
    Faults faults;
    EXPECT_FALSE(read_network("net.inp", model, faults));
    return faults.lines().empty() ? "" : faults.lines()[0];
}

} // namespace

TEST(LeftOutTable, IsReadBackToTheSameResults)
{
    const Folder folder;
    const InFolder inside(folder.path);
    const ModelRun snooped = run_with(folder, repeated(""), {}, true);
    const std::string table = left_out_table(snooped.model, snooped.solved.results());
    EXPECT_EQ(table.substr(0, table.find("\"normalised")),
              "table;row;of;from;to;at;reason\nheight_differences;4;6;\"A\";\"B \"\"x\"\"\";;");
    folder.write("out.csv", table);
    const ModelRun again = run_with(folder, repeated("left_out = { file = \"out.csv\" }\n"), {});
    const ModelRun plain = run_with(folder, repeated("", "no"), {});
    const char *name = "B \"x\"";
    ASSERT_TRUE(again.solved.adjusted()) << again.solved.words();
    EXPECT_EQ(*again.solved.point(name).adjusted[2], *plain.solved.point(name).adjusted[2]);
    EXPECT_EQ(*again.solved.point(name).adjusted[2], *snooped.solved.point(name).adjusted[2]);
    EXPECT_EQ(*again.solved.results().degrees_of_freedom, 4);
    ASSERT_EQ(again.solved.results().accounts[0].left_out.size(), 1u);
    EXPECT_EQ(again.solved.results().accounts[0].left_out[0].reason.find("table left_out: normalised residual "), 0u);
    // What the file left out before stays in the table of the next run.
    EXPECT_EQ(left_out_table(again.model, again.solved.results()), table);
}

TEST(LeftOutTable, IsRefusedWhereItDoesNotFitTheOtherTables)
{
    const Folder folder;
    const InFolder inside(folder.path);
    const std::string head = "table;row;of;from;to;at;reason\n", b = ";\"B \"\"x\"\"\";;\n";
    EXPECT_EQ(first_fault(folder, head + "height_differences;4;5;A" + b),
              "out.csv:2:22: table height_differences has 6 rows, not 5 as when this one was written; let the program "
              "write it again, or write no into the column use of the rows");
    EXPECT_EQ(first_fault(folder, head + "height_differences;4;6;\"B \"\"x\"\"\";A;;\n").substr(0, 79),
              "out.csv:2:25: row 4 of table height_differences is one between other points; le");
    EXPECT_EQ(first_fault(folder, head + "height_differences;7;6;A" + b).substr(0, 13), "out.csv:2:22:");
    EXPECT_EQ(first_fault(folder, head + "heights;4;6;A" + b).substr(0, 45),
              "out.csv:2:1: \"heights\" in column table is not");
    EXPECT_NE(first_fault(folder, head + "height_differences;0;6;A" + b), "");
    EXPECT_NE(first_fault(folder, head + "distances;1;6;A" + b), "");
}
