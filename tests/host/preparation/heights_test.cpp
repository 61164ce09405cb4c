#include "host/preparation/heights.h"

#include <gtest/gtest.h>

#include <math.h>
#include <stdio.h>

#include <memory>

#include "host/folder.h"
#include "vorn/result.h"
#include "host/run/runner.h"

using namespace vornhost;

namespace {

struct Silent : Feedback {
    void feedback(char *) override {}
    int decision(char *, char *) override { return 0; }
};

const std::string plane = "[run]\ndimension = 2\n[reductions]\ndistances = \"horizontal_origin\"\n[tables]\n"
                          "targets = '''\nname x y z code\nA 0 0 410 fixed\nB 1000 0 520 fixed\nC 0 900 500 fixed\n"
                          "P 400.1 699.9 905 free\n'''\n";

// Slope distance between points at heights a, b above the sphere; s is the chord at height 0.
double slope(double s, double a, double b)
{
    const double r = 6371000.0;
    return sqrt((b - a) * (b - a) + s * s * (1.0 + a / r) * (1.0 + b / r));
}

std::string distances(const char *heading, const char *heights)
{
    const double s[] = {sqrt(650000.0), sqrt(850000.0), sqrt(200000.0)}, z[] = {410.0, 520.0, 500.0};
    std::string table = std::string("distances = '''\nfrom to value sigma") + heading + "\n";
    for (int i = 0; i < 3; i++) {
        char row[100];
        snprintf(row, sizeof row, "%c P %.7f 0.001%s\n", 'A' + i, slope(s[i], z[i], 905.0), heights);
        table += row;
    }
    return table + "'''\n";
}

const std::string mixed = "[run]\ndimension = 3\n[earth]\nmodel = \"mixed\"\n[tables]\ntargets = '''\n"
                          "name x y z code_x code_y code_z\n"
                          "A 0 0 1 fixed fixed fixed\nB 9 0 2 fixed fixed fixed\n";
const std::string third = "C 0 9 3 fixed fixed fixed\n";
const std::string levels = "'''\nheight_differences = '''\nfrom to value sigma\nA P 3 0.001\nA Q 3 0.001\n'''\n";

} // namespace

// The engine takes the mean height for the geometric one: 3e-9 of the distance here.
TEST(HorizontalReduction, TakesTheHeightsOfThePoints)
{
    Folder folder;
    folder.write("net.inp", plane + distances("", ""));
    ASSERT_EQ(folder.read(), Lines());
    folder.model.mode = Mode::Solution;
    const std::unique_ptr<FILE, int (*)(FILE *)> report(tmpfile(), fclose);
    Silent silent;
    ASSERT_TRUE(run(folder.model, report.get(), silent).adjusted());
    const result *r = folder.model.p.runresults;
    EXPECT_NEAR(r->xpt[3], 400.0, 5e-6);
    EXPECT_NEAR(r->ypt[3], 700.0, 5e-6);
    folder.model.p.freerun(folder.model.p.runresults);
}

TEST(HorizontalReduction, AddsTheHeightsOfInstrumentAndTarget)
{
    Model model = model_of(plane + distances(" h1 h2", " 1.5 2.25"));
    move_heights_to_distances(model);
    EXPECT_EQ(model.distances.records[1].h1, 521.5);
    EXPECT_EQ(model.distances.records[1].h2, 907.25);
    for (const target_input &t : model.targets.records) EXPECT_EQ(t.x[2], 0.0);
}

TEST(HorizontalReduction, AloneMovesHeights)
{
    Model slopes = model_of(plane + distances("", ""));
    slopes.p.iredux = 1;
    move_heights_to_distances(slopes);
    EXPECT_EQ(slopes.targets.records[0].x[2], 410.0);
    EXPECT_EQ(slopes.distances.records[0].h1, 0.0);
}

TEST(FixedHeight, OfAFreePositionIsWeightedWhereThreePointsAreFixed)
{
    Model model = model_of(mixed + third + "P 4 4 4 free free fixed\nQ 5 5 4 fixed free fixed\n" + levels);
    const std::vector<Held> held = hold_heights(model);
    ASSERT_EQ(held.size(), 2u);
    EXPECT_EQ(held[0].where.line, 11);
    EXPECT_EQ(held[0].text, "the fixed height of P is held by a standard deviation of 1e-6 m");
    EXPECT_EQ(model.targets.records[2].ix[2], CODE_FIXED);
    for (size_t i = 3; i < 5; i++) {
        EXPECT_EQ(model.targets.records[i].ix[2], CODE_WEIGHTED);
        EXPECT_EQ(model.targets.records[i].sx[2], held_height_sigma);
    }
}

TEST(FixedHeight, IsWeightedInTheUnitOfTheFile)
{
    Model model = model_of("[units]\nlength = \"mm\"\n" + mixed + third +
                           "P 4 4 4 free free fixed\nQ 5 5 4 free free free\n" + levels);
    hold_heights(model);
    EXPECT_DOUBLE_EQ(model.targets.records[3].sx[2], 1.0e-3);
}

TEST(FixedHeight, StaysAndIsNamedWhereTheDatumMayNeedIt)
{
    Model model = model_of(mixed + "P 4 4 4 free free fixed\nQ 5 5 4 free free free\n" + levels);
    const std::vector<Held> held = hold_heights(model);
    ASSERT_EQ(held.size(), 1u);
    EXPECT_EQ(held[0].text, "the fixed height of P also holds its position; fix three points in all coordinates, or "
                            "give it code_z weighted");
    EXPECT_EQ(model.targets.records[2].ix[2], CODE_FIXED);
}

TEST(FixedHeight, OutsideMixedCoordinatesStaysFixed)
{
    Model model = model_of(mixed + third + "P 4 4 4 free free fixed\nQ 5 5 4 free free free\n" + levels);
    model.p.iearth = 1;
    EXPECT_TRUE(hold_heights(model).empty());
    EXPECT_EQ(model.targets.records[3].ix[2], CODE_FIXED);
}
