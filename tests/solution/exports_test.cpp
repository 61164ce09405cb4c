#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <errno.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "vorn/sidefiles.h"
#include "support/faults.h"
#include "support/rows.h"
#include "support/workfolder.h"

using namespace vornengine;

namespace {

typedef std::vector<std::string> Lines;

// Q(i, j) = 100 min + max: every element tells where it comes from.
double element(int i, int j) { return i < j ? 100.0 * i + j : 100.0 * j + i; }

void fill_inverse(Bare *s, int n)
{
    s->inv.clear();
    for (int i = 0; i < n; i++)
        for (int j = 0; j < n; j++) s->inv.push_back(element(i, j));
    S(*s, nunk) = n;
    s->wire_matrices();
}

void number(point *p, int dim, int u)
{
    if (dim == 1)
        p->n0[2] = u;
    else
        for (int c = 0; c < dim; c++) p->n0[c] = u + c;
}

// Stations S, T and targets A, B, numbered targets first; S, A and B exported.
struct Block : Rows {
    explicit Block(int dim_) : Rows(dim_)
    {
        const char *names[4] = {"S", "T", "A", "B"};
        for (int i = 0; i < 4; i++) {
            number(&add(names[i], 1, 2, 3), dim_, dim_ * ((i + 2) % 4));
            char padded[12];
            snprintf(padded, sizeof padded, "%-8s", names[i]);
            if (i < 2)
                n.station(padded, 0, 0).iconn = i == 0 ? 1 : 0;
            else
                n.target(padded, 0, 0).iconn = 1;
        }
        ready(3, 0);
    }
    void ready(int nexport_, int nimport_)
    {
        n.ready();
        wire(2);
        fill_inverse(this, 4 * dim + 1);
        const int m = nexport_ > nimport_ ? nexport_ : nimport_;
        list.assign(m, 77);
        matrix.assign(dim * m * (dim * m + 1) / 2, -5.0);
        icon = 1;
        nexport = nexport_;
        nimport = nimport_;
        lcon = list.data();
        Qcon = matrix.data();
    }
    void expect_block(const std::vector<int> &first)
    {
        ASSERT_EQ((int)first.size(), nexport);
        for (size_t p = 0; p < first.size(); p++) EXPECT_EQ(first[p], list[p]);
        const int m = dim * (int)first.size();
        for (int i = 0, place = 0; i < m; i++)
            for (int j = 0; j <= i; j++, place++)
                EXPECT_EQ(element(first[i / dim] + i % dim, first[j / dim] + j % dim), matrix[place]) << i << j;
    }
    std::vector<int> list;
    std::vector<double> matrix;
};

} // namespace

TEST(ExportedBlock, HoldsTargetsThenStationsInTheHostsOrder)
{
    for (int dim : {1, 2, 3}) {
        Block s(dim);
        S(s, writeQcon)();
        s.expect_block({0, dim, 2 * dim});
        EXPECT_EQ(Lines(), s.n.messages.lines);
    }
}

TEST(ExportedBlock, TakesTheHostsOrderNotTheRuns)
{
    Block s(2);
    std::swap(s.n.targets[0], s.n.targets[1]);
    S(s, writeQcon)();
    s.expect_block({2, 0, 4});
}

TEST(ExportedBlock, DropsPointsWithoutConsecutiveUnknowns)
{
    Block s(2);
    s.points[2].n0[1] = N_NONE;
    s.points[0].n0[0] = N_NONE;
    S(s, writeQcon)();
    s.expect_block({2});
    EXPECT_EQ(-1, s.list[1]);
    EXPECT_EQ(-1, s.list[2]);
    const Lines wanted = {"writeQcon: A        cannot be exported", "writeQcon: S        cannot be exported",
                          "writeQcon: had 1 exports (vs 3 wanted)"};
    EXPECT_EQ(wanted, s.n.messages.lines);
    EXPECT_EQ(wanted[0] + "\n" + wanted[1] + "\n" + wanted[2] + "\n", s.report());
}

TEST(ExportedBlock, LowersTheCountSilentlyWhenAPointIsNotInTheRun)
{
    Block s(2);
    strcpy(s.n.targets[0].name, "other");
    S(s, writeQcon)();
    s.expect_block({2, 4});
    EXPECT_EQ(Lines(), s.n.messages.lines);
}

TEST(ExportedBlock, NeverExceedsTheCount)
{
    Block s(2);
    s.ready(2, 0);
    S(s, writeQcon)();
    s.expect_block({0, 2});
}

TEST(ExportedBlock, EndsAnImport)
{
    Block s(2);
    s.ready(3, 4);
    s.points[2].n0[0] = s.points[3].n0[0] = N_NONE;
    S(s, writeQcon)();
    s.expect_block({4});
    EXPECT_EQ(0, s.list[3]);
    for (size_t i = 3; i < s.matrix.size(); i++) EXPECT_EQ(0.0, s.matrix[i]);
}

// ---- covariance of stations ----

namespace {

// Stations S1, S2 and S3 with six unknowns each. Works in a directory of its own.
struct Stations : Rows {
    Stations() : Rows(3)
    {
        const char *names[3] = {"S1", "S2", "LONGNAME"};
        for (int i = 0; i < 3; i++) {
            point &p = add(names[i], 10 * i, 20 * i, 30 * i);
            for (int k = 0; k < 3; k++) {
                p.n0[k] = 3 * i + k;
                p.n1[k] = 3 * i + k;
                p.xex[k] = 0.5 * k;
            }
        }
        add("T", 0, 0, 0);
        wire(3);
        nunk1 = 9;
        nunk2 = 9;
        fill_inverse(this, 18);
    }
    ~Stations() { fail_allocation(0); }
    void run(const std::string &names)
    {
        FILE *f = fopen("tessalpin.sta", "w+b");
        ASSERT_NE(nullptr, f);
        fwrite(names.data(), 1, names.size(), f);
        rewind(f);
        S(*this, input_for_tessalpin)(f);
    }
    std::string head(const char *second)
    {
        return std::string("2 stations taken from test.inp\n"
                           "S1              0.000000       0.000000       0.000000\n"
                           "                0.000000       0.500000       1.000000\n") +
               second + "                0.000000       0.500000       1.000000\n";
    }
    std::string matrix(const std::vector<int> &unknowns)
    {
        std::string text;
        char line[80];
        for (int i : unknowns)
            for (int j : unknowns) {
                snprintf(line, sizeof line, "%5d %5d %22.15lf\n", i, j, element(i, j));
                text += line;
            }
        return text;
    }
    WorkFolder folder;
};

} // namespace

TEST(StationCovariance, IsWrittenInTheOrderOfTheRun)
{
    Stations s;
    s.run("S2\nS1\n");
    EXPECT_EQ(s.head("S2             10.000000      20.000000      30.000000\n") +
                  s.matrix({0, 1, 2, 3, 4, 5, 9, 10, 11, 12, 13, 14}),
              file_text("tessalpin.cov"));
    EXPECT_EQ("", s.report());
}

TEST(StationCovariance, CutsLongNamesAndPassesOverUnknownAndRepeatedOnes)
{
    Stations s;
    s.run("S1\nLONGNAME and more\nT\nnowhere\n\nS1      \nLONGNAME");
    EXPECT_EQ(s.head("LONGNAME       20.000000      40.000000      60.000000\n") +
                  s.matrix({0, 1, 2, 6, 7, 8, 9, 10, 11, 15, 16, 17}),
              file_text("tessalpin.cov"));
}

TEST(StationCovariance, TakesLineEndsOfBothKinds)
{
    Stations s;
    s.run("S2\r\nS1\r\n");
    EXPECT_NE(std::string::npos, file_text("tessalpin.cov").find("2 stations"));
}

TEST(StationCovariance, TakesTheRestOfALongLineAsTheNext)
{
    Stations s;
    s.run("S1      " + std::string(81, '.') + "S2\n");
    EXPECT_NE(std::string::npos, file_text("tessalpin.cov").find("2 stations"));
}

TEST(StationCovariance, NeedsTwoStationsWithAllUnknowns)
{
    for (int c = 0; c < 6; c++) {
        Stations s;
        (c < 3 ? s.points[1].n0[c] : s.points[1].n1[c - 3]) = N_NONE;
        s.run("S1\nS2\n");
        EXPECT_EQ("\ninput_for_tessalpin: need at least 2 stations\n", s.report());
        EXPECT_EQ("", file_text("tessalpin.cov"));
    }
    Stations empty;
    empty.run("");
    EXPECT_EQ("\ninput_for_tessalpin: need at least 2 stations\n", empty.report());
}

TEST(StationCovariance, NeedsATable)
{
    Stations s;
    fail_allocation(1);
    s.run("S1\nS2\n");
    EXPECT_EQ("\ninput_for_tessalpin: cannot allocate\n", s.report());
}

TEST(StationCovariance, NeedsAFileToWrite)
{
    Stations s;
    ASSERT_EQ(0, system("mkdir tessalpin.cov"));
    s.run("S1\nS2\n");
    EXPECT_EQ("\ninput_for_tessalpin: cannot open tessalpin.cov\n", s.report());
}

TEST(StationCovariance, EntersWhyItIsLost)
{
    Stations s;
    side_files files = side_files();
    S(s, sidefiles) = &files;
    s.run("S1\nS2\n");
    EXPECT_EQ(files.cofactors, 0);
    remove("tessalpin.cov");
    ASSERT_EQ(symlink("/dev/full", "tessalpin.cov"), 0);
    s.run("S1\nS2\n");
    EXPECT_EQ(files.cofactors, ENOSPC);
    EXPECT_EQ("", s.report());

    files = side_files();
    remove("tessalpin.cov");
    ASSERT_EQ(mkdir("tessalpin.cov", 0700), 0);
    s.run("S1\nS2\n");
    EXPECT_EQ(files.cofactors, EISDIR);

    files = side_files();
    fail_allocation(1);
    s.run("S1\nS2\n");
    EXPECT_EQ(files.cofactors, ENOMEM);
    EXPECT_EQ(files.rejects, 0);
    EXPECT_EQ(files.similarities, 0);
}

TEST(StationCovariance, IsNotLostWhenNobodyNamesStations)
{
    Stations s;
    side_files files = side_files();
    S(s, sidefiles) = &files;
    S(s, stationcofactors)();
    EXPECT_EQ(files.cofactors, 0);
    EXPECT_EQ("", s.report());
}

TEST(StationCovariance, IsLostWithNamesThatCannotBeRead)
{
    Stations s;
    ASSERT_EQ(symlink("tessalpin.sta", "tessalpin.sta"), 0);
    S(s, stationcofactors)();
    side_files files = side_files();
    S(s, sidefiles) = &files;
    S(s, stationcofactors)();
    EXPECT_EQ(files.cofactors, ELOOP);
    EXPECT_EQ("", s.report());
}
