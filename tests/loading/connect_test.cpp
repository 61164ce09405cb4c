#include "loading/connect.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/access.h"
#include "support/faults.h"
#include "support/network.h"

using namespace vornengine;

namespace {

typedef std::vector<std::string> Lines;

// A run whose points are set by hand. The point table is taken away before the run ends.
struct Net {
    explicit Net(int dim, int irun = 1) : n(dim), run(prepared(irun)) {}
    ~Net()
    {
        V(run, points) = nullptr;
        V(run, npoints) = V(run, nsta) = V(run, ntar) = 0;
        V(run, icon) = 0;
        if (file[0]) remove(file);
        fail_allocation(0);
    }
    project *prepared(int irun)
    {
        n.p.irun = irun;
        file[0] = '\0';
        return n.ready();
    }

    // Marks the last points as imported and sets the tables up.
    void import(int nimport)
    {
        V(run, nimport) = nimport;
        ASSERT_EQ(0, V(run, chk_connect)());
        for (int i = 0; i < nimport; i++) V(run, lcon)[i] = (int)pts.size() - nimport + i;
    }
    point &add(const char *name, double x, double y, double z)
    {
        point p = point();
        snprintf(p.name, sizeof p.name, "%-8s", name);
        const double v[3] = {x, y, z};
        for (int c = 0; c < 3; c++) {
            p.xpt[c] = v[c];
            p.n0[c] = N_NONE;
        }
        pts.push_back(p);
        V(run, points) = pts.data();
        V(run, npoints) = (int)pts.size();
        return pts.back();
    }
    void number(int ip, int u)
    {
        const int dim = V(run, dim);
        if (dim == 1)
            pts[ip].n0[2] = u;
        else
            for (int c = 0; c < dim; c++) pts[ip].n0[c] = u + c;
    }
    void write(const std::string &text)
    {
        snprintf(file, sizeof file, "/tmp/connect_test_%d.con", (int)getpid());
        FILE *f = fopen(file, "wb");
        ASSERT_NE(nullptr, f);
        fwrite(text.data(), 1, text.size(), f);
        fclose(f);
        strcpy(n.p.confile, file);
    }
    void refuses(const std::string &text, int code)
    {
        write(text);
        const int nweighted = V(run, nweighted);
        V(run, fill_connect)();
        EXPECT_EQ(0, V(run, icon));
        EXPECT_EQ(nweighted, V(run, nweighted));
        EXPECT_EQ((Lines{"fill_connect: Incompatibilities with " + std::to_string(code) + " code",
                         "=>disable connected computation"}),
                  n.messages.lines);
    }

    Network n;
    char file[128];
    vorn run;
    std::vector<point> pts;
};

// Two imported points in dimension 2; the file gives them in the other order.
void load_two(Net *net)
{
    net->add("X", 1, 2, 3);
    net->add("A", 10, 20, 30);
    net->add("B", 11, 21, 31);
    net->import(2);
}

const char TWO_POINTS[] = "File: old.con for 2 connections in dimension 2\n"
                          "B           100.5  200.25   1\n"
                          "A         300.125 400.0 2\n";

std::string diagonal4(double q)
{
    std::string text;
    for (int i = 0; i < 4; i++)
        for (int j = 0; j <= i; j++) text += (i == j ? std::to_string(q) : std::string("0.0")) + "\n";
    return text;
}

} // namespace

// ---- chk_connect ----

TEST(ConnectCheck, IsOffWithoutMarkedPoints)
{
    Net net(3);
    V(net.run, icon) = 3;
    EXPECT_EQ(0, V(net.run, chk_connect)());
    EXPECT_EQ(0, V(net.run, icon));
    EXPECT_EQ(nullptr, V(net.run, lcon));
    EXPECT_EQ(nullptr, V(net.run, Qcon));
    EXPECT_EQ(0, V(net.run, nweighted));
}

TEST(ConnectCheck, SwitchesASideOnWithAsManyPointsAsDimensions)
{
    const struct {
        int dim, nexport, nimport, icon;
    } rows[] = {{3, 2, 0, 0}, {3, 3, 0, 1}, {3, 2, 3, 2}, {3, 3, 3, 3}, {2, 2, 1, 1}, {1, 1, 1, 3}, {1, 0, 1, 2}};
    for (const auto &r : rows) {
        Net net(r.dim);
        V(net.run, nexport) = r.nexport;
        V(net.run, nimport) = r.nimport;
        EXPECT_EQ(0, V(net.run, chk_connect)());
        EXPECT_EQ(r.icon, V(net.run, icon)) << r.dim << " " << r.nexport << " " << r.nimport;
        EXPECT_EQ(r.icon == 0, V(net.run, lcon) == nullptr);
        if (r.icon) {
            EXPECT_EQ(r.dim * r.nimport, V(net.run, nweighted));
        }
    }
}

TEST(ConnectCheck, GivesTablesForTheLargerSide)
{
    Net net(2);
    V(net.run, nexport) = 3;
    V(net.run, nimport) = 2;
    ASSERT_EQ(0, V(net.run, chk_connect)());
    for (int i = 0; i < 3; i++) EXPECT_EQ(0, V(net.run, lcon)[i]);
    for (int i = 0; i < 21; i++) EXPECT_EQ(0.0, V(net.run, Qcon)[i]);
}

TEST(ConnectCheck, IsOffInASimplexRunAndKeepsTheCounts)
{
    Net net(2, -1);
    V(net.run, nexport) = 2;
    V(net.run, nimport) = 3;
    EXPECT_EQ(0, V(net.run, chk_connect)());
    EXPECT_EQ(0, V(net.run, icon));
    EXPECT_EQ(2, V(net.run, nexport));
    EXPECT_EQ(3, V(net.run, nimport));
    EXPECT_EQ((Lines{"chk_connect: Simplex case => no connected net"}), net.n.messages.lines);
    EXPECT_EQ("chk_connect: Simplex case => no connected net\n\n", net.n.report());
}

TEST(ConnectCheck, RefusesAPureExportOfASolutionOnly)
{
    Net net(2, 0);
    V(net.run, nexport) = 2;
    EXPECT_EQ(0, V(net.run, chk_connect)());
    EXPECT_EQ(0, V(net.run, icon));
    EXPECT_EQ((Lines{"chk_connect: no export possible with solution only"}), net.n.messages.lines);
    EXPECT_EQ("chk_connect: no export possible with solution only\n\n", net.n.report());
}

TEST(ConnectCheck, ImportsInASolutionOnly)
{
    Net net(2, 0);
    V(net.run, nexport) = 1;
    V(net.run, nimport) = 2;
    EXPECT_EQ(0, V(net.run, chk_connect)());
    EXPECT_EQ(2, V(net.run, icon));
    EXPECT_EQ("", net.n.report());
}

TEST(ConnectCheck, ReturnsMinusOneWhenATableCannotBeAllocated)
{
    for (int n = 1; n <= 2; n++) {
        Net net(2);
        V(net.run, nexport) = 2;
        fail_allocation(n);
        EXPECT_EQ(-1, V(net.run, chk_connect)());
        EXPECT_EQ(nullptr, V(net.run, lcon));
        EXPECT_EQ(nullptr, V(net.run, Qcon));
        EXPECT_EQ((Lines{"chk_connect: Cannot allocate lcon or Qcon"}), net.n.messages.lines);
        EXPECT_EQ("chk_connect: Cannot allocate lcon or Qcon\n", net.n.report());
    }
}

TEST(ConnectCheck, RefusesAMatrixBeyondTheAddressSpace)
{
    Net net(3);
    V(net.run, nexport) = 2000000000;
    EXPECT_EQ(-1, V(net.run, chk_connect)());
}

TEST(ConnectCheck, IsOffInADimensionThatHasNoCoordinates)
{
    for (int dim : {-1, 0, 4, 9}) {
        Net net(dim);
        V(net.run, nexport) = 20;
        EXPECT_EQ(0, V(net.run, chk_connect)());
        EXPECT_EQ(0, V(net.run, icon));
    }
}

// ---- fill_connect ----

TEST(ConnectFile, GivesCoordinatesOrderAndInverse)
{
    Net net(2);
    load_two(&net);
    net.write(std::string(TWO_POINTS) + diagonal4(4.0));
    V(net.run, fill_connect)();
    EXPECT_EQ(2, V(net.run, icon));
    EXPECT_EQ(Lines(), net.n.messages.lines);
    EXPECT_EQ(2, V(net.run, lcon)[0]);
    EXPECT_EQ(1, V(net.run, lcon)[1]);
    EXPECT_EQ(300.125, net.pts[1].xpt[0]);
    EXPECT_EQ(400.0, net.pts[1].xpt[1]);
    EXPECT_EQ(2.0, net.pts[1].xpt[2]);
    EXPECT_EQ(100.5, net.pts[2].xpt[0]);
    EXPECT_EQ(1.0, net.pts[0].xpt[0]);
    const double wanted[10] = {0.25, 0, 0.25, 0, 0, 0.25, 0, 0, 0, 0.25};
    for (int i = 0; i < 10; i++) EXPECT_EQ(wanted[i], V(net.run, Qcon)[i]);
}

TEST(ConnectFile, TakesNamesAsTheyStand)
{
    Net net(1);
    strcpy(net.add("", 0, 0, 5).name, "A b");
    net.import(1);
    net.refuses("File: o.con for 1 connections in dimension 1\nA b       1 2 3\n1\n", 3);
}

// What stands behind the field of the path is not part of it.
TEST(ConnectFile, IsFoundByAPathThatFillsItsField)
{
    Net net(1);
    net.write("File: x for 2 connections in dimension 1\n");
    const std::string path(sizeof net.n.p.confile, 'c'); // in the working directory
    ASSERT_EQ(0, rename(net.file, path.c_str()));
    memcpy(net.n.p.confile, path.data(), path.size());
    V(net.run, icon) = 2;
    V(net.run, fill_connect)();
    remove(path.c_str());
    ASSERT_FALSE(net.n.messages.lines.empty());
    EXPECT_EQ("fill_connect: Incompatibilities with 1 code", net.n.messages.lines[0]);
}

TEST(ConnectFile, ThatIsMissingTurnsTheModeOff)
{
    Net net(2);
    load_two(&net);
    V(net.run, nweighted) += 3;
    strcpy(net.n.p.confile, "/nowhere/at/all.con");
    V(net.run, fill_connect)();
    EXPECT_EQ(0, V(net.run, icon));
    EXPECT_EQ(3, V(net.run, nweighted));
    EXPECT_EQ((Lines{"fill_vorn: Cannot open test.inp file", "=>disable connected computation"}), net.n.messages.lines);
    EXPECT_EQ("", net.n.report());
}

// A run that also exports loses its export.
TEST(ConnectFile, ThatFailsTurnsTheExportOffAsWell)
{
    for (const char *path : {"/nowhere/at/all.con", ""}) {
        Net net(2);
        V(net.run, nexport) = 2;
        load_two(&net);
        ASSERT_EQ(3, V(net.run, icon));
        if (path[0])
            strcpy(net.n.p.confile, path);
        else
            net.write("File: old.con for 2 connections in dimension 3\n");
        V(net.run, fill_connect)();
        EXPECT_EQ(0, V(net.run, icon)) << path;
    }
}

TEST(ConnectFile, OfAnotherDimensionIsRefusedAndChangesNoPoint)
{
    Net net(2);
    load_two(&net);
    net.refuses("File: old.con for 2 connections in dimension 3\nB         5 5 5\nA         5 5 5\n", 1);
    EXPECT_EQ(10.0, net.pts[1].xpt[0]);
    EXPECT_EQ(11.0, net.pts[2].xpt[0]);
}

TEST(ConnectFile, WithAForeignHeadIsRefused)
{
    const char *heads[] = {"",
                           "\n",
                           "File: old.con for 3 connections in dimension 2\n",
                           "File: old name.con for 2 connections in dimension 2\n",
                           "File: old.con for 2\n",
                           "File: old.con for 2 connections in dimension\n",
                           "File: old.con for 2 connections in dimension two\n",
                           "File: old.con for two connections in dimension 2\n",
                           "File: old.con for 99999999999999999999 connections in dimension 2\n"};
    for (const char *head : heads) {
        Net net(2);
        load_two(&net);
        net.refuses(head, 1);
    }
}

TEST(ConnectFile, HeadOfMoreThan79CharactersIsCut)
{
    Net net(2);
    load_two(&net);
    net.refuses("File: " + std::string(70, 'n') + " for 2 connections in dimension 2\n", 1);
}

TEST(ConnectFile, WithoutMemoryForTheOrderIsRefused)
{
    Net net(2);
    load_two(&net);
    fail_allocation(1);
    net.refuses(std::string(TWO_POINTS) + diagonal4(1.0), 2);
}

TEST(ConnectFile, WithAnUnknownNameStillMovesTheOtherPoints)
{
    Net net(2);
    load_two(&net);
    net.refuses("File: old.con for 2 connections in dimension 2\nC         7 8 9\nA         4 5 6\n" + diagonal4(1.0),
                3);
    EXPECT_EQ(4.0, net.pts[1].xpt[0]);
    EXPECT_EQ(11.0, net.pts[2].xpt[0]);
}

TEST(ConnectFile, WithFewerPointsOrNumbersIsRefused)
{
    const char *points[] = {"",
                            "A",
                            "A         1 2 3",
                            "A         1 2\nB         1 2 3\n",
                            "A\n\nB         1 2 3\n",
                            "A         x\nB         1 2 3\n"};
    for (const char *text : points) {
        Net net(2);
        load_two(&net);
        net.refuses(std::string("File: old.con for 2 connections in dimension 2\n") + text, 3);
    }
}

TEST(ConnectFile, WithOneLineMoreThanTheMatrixIsRefused)
{
    Net net(2);
    load_two(&net);
    net.refuses(TWO_POINTS + diagonal4(1.0) + "0\n", 4);
}

TEST(ConnectFile, WithAnEmptyLineBehindTheMatrixIsRefused)
{
    Net net(2);
    load_two(&net);
    net.refuses(TWO_POINTS + diagonal4(1.0) + "\n", 4);
}

TEST(ConnectFile, WithAnEmptyLineInsideTheMatrixHasOneLineMore)
{
    Net net(2);
    load_two(&net);
    net.refuses(std::string(TWO_POINTS) + "\n" + diagonal4(1.0), 4);
}

TEST(ConnectFile, WithFewerLinesThanTheMatrixIsRefused)
{
    Net net(2);
    load_two(&net);
    net.refuses(std::string(TWO_POINTS) + "1\n0\n1\n", 5);
}

TEST(ConnectFile, WithALineThatIsNoNumberInTheMatrixIsRefused)
{
    Net net(2);
    load_two(&net);
    std::string matrix = diagonal4(1.0);
    matrix.replace(0, matrix.find('\n'), "q");
    net.refuses(TWO_POINTS + matrix, 5);
}

TEST(ConnectFile, RefusalIsTracedInTheReport)
{
    Net net(2);
    load_two(&net);
    V(net.run, idebug) = 1;
    net.refuses("", 1);
    EXPECT_EQ("\nWarning disable connected computation\n\n", net.n.report());
}

TEST(ConnectFile, OfBytesWithoutLinesIsRefused)
{
    Net net(2);
    load_two(&net);
    net.refuses(std::string(5000, '\xff') + std::string(3, '\0') + std::string(300, '7'), 1);
    Net other(2);
    load_two(&other);
    other.refuses("File: old.con for 2 connections in dimension 2\n" + std::string(5000, 'B'), 3);
}

// ---- set_connect ----

TEST(ConnectBlock, NeedsConsecutiveUnknowns)
{
    point p = point();
    p.n0[0] = 4;
    p.n0[1] = 5;
    p.n0[2] = 6;
    EXPECT_EQ(6, block_unknown(&p, 1));
    EXPECT_EQ(4, block_unknown(&p, 2));
    EXPECT_EQ(4, block_unknown(&p, 3));
    p.n0[2] = N_NONE;
    EXPECT_EQ(N_NONE, block_unknown(&p, 1));
    EXPECT_EQ(4, block_unknown(&p, 2));
    EXPECT_EQ(N_NONE, block_unknown(&p, 3));
    p.n0[1] = 7;
    EXPECT_EQ(N_NONE, block_unknown(&p, 2));
    p.n0[0] = N_NONE;
    p.n0[1] = 0;
    EXPECT_EQ(N_NONE, block_unknown(&p, 2));
}

TEST(ConnectUnknowns, ReplaceTheIndexes)
{
    Net net(2);
    load_two(&net);
    net.number(1, 0);
    net.number(2, 4);
    V(net.run, nunk1) = 6;
    EXPECT_EQ(0, V(net.run, set_connect)());
    EXPECT_EQ(0, V(net.run, lcon)[0]);
    EXPECT_EQ(4, V(net.run, lcon)[1]);
    EXPECT_EQ(Lines(), net.n.messages.lines);
}

TEST(ConnectUnknowns, AreTheHeightsInDimensionOne)
{
    Net net(1);
    net.add("A", 0, 0, 5);
    net.import(1);
    net.number(0, 3);
    V(net.run, nunk1) = 4;
    EXPECT_EQ(0, V(net.run, set_connect)());
    EXPECT_EQ(3, V(net.run, lcon)[0]);
}

TEST(ConnectUnknowns, OfABadPointAreLeftOutWithItsName)
{
    Net net(2);
    load_two(&net);
    net.number(1, 2);
    net.number(2, 4);
    net.pts[1].n0[1] = 9;
    V(net.run, nunk1) = 6;
    EXPECT_EQ(0, V(net.run, set_connect)());
    EXPECT_EQ(2, V(net.run, icon));
    EXPECT_EQ(2, V(net.run, nimport));
    EXPECT_EQ(4, V(net.run, lcon)[0]);
    EXPECT_EQ(2, V(net.run, lcon)[1]); // the index that stood there
    EXPECT_EQ((Lines{"set_connect: A        cannot be used in connected net"}), net.n.messages.lines);
    EXPECT_EQ("set_connect: A        cannot be used in connected net\n", net.n.report());
}

TEST(ConnectUnknowns, LeftBehindNeverReachPastTheSystem)
{
    Net net(2);
    for (int i = 0; i < 7; i++) net.add("X", 0, 0, 0);
    load_two(&net);
    net.number(9, 0);
    V(net.run, nunk1) = 2; // the index 9 left behind is no unknown
    EXPECT_EQ(0, V(net.run, set_connect)());
    EXPECT_EQ(0, V(net.run, lcon)[0]);
    EXPECT_EQ(-1, V(net.run, lcon)[1]);
}

TEST(ConnectUnknowns, OfBadPointsOnlyTurnTheModeOff)
{
    Net net(2);
    load_two(&net);
    EXPECT_EQ(0, V(net.run, set_connect)());
    EXPECT_EQ(0, V(net.run, icon));
    EXPECT_EQ((Lines{"set_connect: A        cannot be used in connected net",
                     "set_connect: B        cannot be used in connected net",
                     "set_connect: put back icon to 0 because no connection"}),
              net.n.messages.lines);
    EXPECT_EQ("set_connect: A        cannot be used in connected net\n"
              "set_connect: B        cannot be used in connected net\n"
              "set_connect: put back icon to 0 because no connection\n",
              net.n.report());
}

TEST(ConnectUnknowns, OfBadPointsOnlyTurnTheExportOffAsWell)
{
    Net net(2);
    V(net.run, nexport) = 2;
    load_two(&net);
    ASSERT_EQ(3, V(net.run, icon));
    EXPECT_EQ(0, V(net.run, set_connect)());
    EXPECT_EQ(0, V(net.run, icon));
}

TEST(ConnectUnknowns, NeedATable)
{
    Net net(2);
    load_two(&net);
    net.number(1, 0);
    fail_allocation(1);
    EXPECT_EQ(-1, V(net.run, set_connect)());
    EXPECT_EQ("set_connect: cannot allocate ltemp", net.n.messages.lines.back());
    EXPECT_EQ("set_connect: B        cannot be used in connected net\nset_connect: cannot allocate ltemp\n",
              net.n.report());
}

// ---- the file of the export ----

namespace {

// Export of two points in dimension 2; unknowns 0, 1 belong to B, 2, 3 to A.
struct Export : Net {
    explicit Export(const char *filename, int dim = 2) : Net(dim)
    {
        strcpy(n.p.filename, filename);
        strcpy(written, filename);
        if (char *dot = strchr(written, '.')) strcpy(dot + 1, "con");
        add("A", 10, 20, 30);
        add("B", 11, 21, 31);
        add("C", 12, 22, 32);
        number(0, 2);
        number(1, 0);
        V(run, nexport) = 2;
        EXPECT_EQ(0, V(run, chk_connect)());
        V(run, lcon)[0] = 2;
        V(run, lcon)[1] = 0;
        for (int i = 0; i < dim * (2 * dim + 1); i++) V(run, Qcon)[i] = i / 8.0;
    }
    ~Export() { remove(written); }
    char written[128];
};

const char HALVES[] = "  0.000000000000000000000\n  0.125000000000000000000\n  0.250000000000000000000\n"
                      "  0.375000000000000000000\n  0.500000000000000000000\n  0.625000000000000000000\n"
                      "  0.750000000000000000000\n  0.875000000000000000000\n  1.000000000000000000000\n"
                      "  1.125000000000000000000\n";

} // namespace

TEST(ConnectExport, WritesHeadPointsAndMatrix)
{
    Export net("cx1.inp");
    V(net.run, trans)[1] = 100.0;
    V(net.run, trans)[2] = 1000.0;
    EXPECT_EQ(0, V(net.run, writecon)());
    EXPECT_EQ(std::string("File: cx1.con for 2 connections in dimension 2\n"
                          "A                      10.000000            120.000000           1030.000000\n"
                          "B                      11.000000            121.000000           1031.000000\n") +
                  HALVES,
              file_text("cx1.con"));
    EXPECT_STREQ("cx1.inp", net.n.p.filename);
}

TEST(ConnectExport, WritesTheHeightInMixedCoordinates)
{
    Export net("cx2.inp");
    V(net.run, iearth) = 2;
    V(net.run, trans)[2] = 0.5;
    net.pts[0].h = 7.0;
    EXPECT_EQ(0, V(net.run, writecon)());
    EXPECT_NE(std::string::npos, file_text("cx2.con").find("20.000000              7.500000\n"));
}

TEST(ConnectExport, LooksForTheHeightsInDimensionOne)
{
    Export net("cx3.inp", 1);
    EXPECT_EQ(0, V(net.run, writecon)());
    EXPECT_EQ("File: cx3.con for 2 connections in dimension 1\n"
              "A                      10.000000             20.000000             30.000000\n"
              "B                      11.000000             21.000000             31.000000\n"
              "  0.000000000000000000000\n  0.125000000000000000000\n  0.250000000000000000000\n",
              file_text("cx3.con"));
}

TEST(ConnectExport, GivesNoLineToAnEntryWithoutPoint)
{
    Export net("cx4.inp");
    V(net.run, lcon)[0] = 77;
    V(net.run, lcon)[1] = -1; // C has no unknowns and does not stand for it
    EXPECT_EQ(0, V(net.run, writecon)());
    EXPECT_EQ(std::string("File: cx4.con for 2 connections in dimension 2\n") + HALVES, file_text("cx4.con"));
}

TEST(ConnectExport, IsReadBackByTheImport)
{
    Export net("cx5.inp");
    const double q[10] = {4, 0, 4, 1, 0, 4, 0, 0, 0, 4};
    for (int i = 0; i < 10; i++) V(net.run, Qcon)[i] = q[i];
    ASSERT_EQ(0, V(net.run, writecon)());

    Net next(2);
    next.add("B", 0, 0, 0);
    next.add("A", 0, 0, 0);
    next.import(2);
    strcpy(next.n.p.confile, "cx5.con");
    V(next.run, fill_connect)();
    EXPECT_EQ(2, V(next.run, icon));
    EXPECT_EQ(1, V(next.run, lcon)[0]);
    EXPECT_EQ(0, V(next.run, lcon)[1]);
    EXPECT_EQ(11.0, next.pts[0].xpt[0]);
    EXPECT_EQ(10.0, next.pts[1].xpt[0]);
    // Rows 0 and 2 form the block 4 1 / 1 4, whose inverse is 4 -1 / -1 4 over 15.
    EXPECT_NEAR(4.0 / 15, V(next.run, Qcon)[0], 1e-16);
    EXPECT_NEAR(-1.0 / 15, V(next.run, Qcon)[3], 1e-16);
    EXPECT_NEAR(4.0 / 15, V(next.run, Qcon)[5], 1e-16);
    EXPECT_EQ(0.25, V(next.run, Qcon)[2]);
}

TEST(ConnectExport, ThatCannotBeOpenedKeepsTheChangedName)
{
    Export net("nowhere/cx6.inp");
    EXPECT_EQ(-9, V(net.run, writecon)());
    EXPECT_STREQ("nowhere/cx6.con", net.n.p.filename);
    EXPECT_EQ((Lines{"backtoproject: Cannot open nowhere/cx6.con file"}), net.n.messages.lines);
}

TEST(ConnectExport, NeedsAnExtensionOfThreeLetters)
{
    for (const char *name : {"", "plain", "short.in", "dot."}) {
        Export net(name);
        EXPECT_EQ(-9, V(net.run, writecon)());
        EXPECT_STREQ(name, net.n.p.filename);
        EXPECT_EQ((Lines{std::string("backtoproject: Cannot open ") + name + " file"}), net.n.messages.lines);
    }
}

// ---- two runs ----

namespace {

// A target that three fixed stations measure with given errors of their distances.
void measured_net(Network *net, int iconn, double first, double second, double third)
{
    const double at[3][2] = {{0, 0}, {100, 0}, {0, 100}};
    const char *names[3] = {"S1      ", "S2      ", "S3      "};
    for (int i = 0; i < 3; i++) {
        target_input &t = net->target(names[i], at[i][0], at[i][1]);
        t.ix[0] = t.ix[1] = CODE_FIXED;
    }
    for (int i = 0; i < 2; i++) {
        const char *name = i == 0 ? "A       " : "B       ";
        const double x = 40 + 20 * i, y = 50 + 10 * i;
        net->target(name, x, y).iconn = iconn;
        const double error[3] = {first, second, third};
        for (int k = 0; k < 3; k++)
            if (error[k] < 1.0) net->distance(names[k], name, hypot(x - at[k][0], y - at[k][1]) + error[k], 0.001);
    }
    net->p.irun = 1;
}

} // namespace

// Distances of both runs adjusted at once give the same points as the second run with the
// first one imported.
TEST(ConnectedRuns, GiveTheSamePointsAsOneAdjustment)
{
    const double NONE = 9.0;
    Network all(2), before(2), after(2);
    measured_net(&all, 0, 0.001, -0.002, 0.0015);
    measured_net(&before, 1, 0.001, -0.002, 0.0015);
    measured_net(&after, 2, NONE, 0.003, -0.001);
    measured_net(&all, 0, NONE, 0.003, -0.001);
    all.targets.resize(5);
    strcpy(before.p.filename, "chain.inp");
    strcpy(after.p.confile, "chain.con");
    for (Network *net : {&all, &before, &after}) {
        net->p.convergence = 1e-9;
        vorn run(net->ready());
        ASSERT_EQ(0, run.vornstart());
        ASSERT_EQ(0, run.vornjordan()) << net->report();
    }
    remove("chain.con");
    ASSERT_NE(nullptr, all.p.runresults);
    ASSERT_NE(nullptr, after.p.runresults);
    // The file has six decimals of the coordinates.
    for (int i = 3; i < 5; i++) {
        EXPECT_NEAR(all.p.runresults->xpt[i], after.p.runresults->xpt[i], 1e-6);
        EXPECT_NEAR(all.p.runresults->ypt[i], after.p.runresults->ypt[i], 1e-6);
    }
}
