#include "host/preparation/sketch.h"

#include <gtest/gtest.h>

#include <math.h>

#include "host/folder.h"

using namespace vornhost;

namespace {

// The sketch of a file; points by name.
struct Case {
    explicit Case(const std::string &tables, int dim = 2)
    {
        folder.write("net.inp", "[run]\ndimension = " + std::to_string(dim) + "\n[tables]\n" + tables);
        EXPECT_EQ(folder.read(), Lines());
        sketch = std::make_unique<Sketch>(folder.model);
    }
    const SketchPoint &at(const std::string &name)
    {
        return sketch->points[(size_t)sketch->find((name + std::string(8 - name.size(), ' ')).c_str())];
    }
    Folder folder;
    std::unique_ptr<Sketch> sketch;
};

void expect_place(const SketchPoint &p, double x, double y)
{
    EXPECT_TRUE(p.placed);
    EXPECT_NEAR(p.x[0], x, 1e-4); // the digits of the observations
    EXPECT_NEAR(p.x[1], y, 1e-4);
}

const std::string corners = "stations = '''\nname x y code\nA 0 0 fixed\nB 100 0 fixed\n'''\n";

TEST(Sketch, PlacesAPointWhereTwoRaysMeetInFront)
{
    Case c(corners + "targets = '''\nname x y\nP - -\nQ - -\n'''\ndirections = '''\nfrom to value sigma\n"
                     "A B 0 0.001\nA P 50 0.001\nA Q 250 0.001\nB A 10 0.001\nB P 360 0.001\nB Q 360 0.001\n'''\n");
    c.sketch->carry();
    expect_place(c.at("P"), 50, 50);
    EXPECT_NEAR(c.at("B").turn, 190 * M_PI / 200, 1e-12);
    EXPECT_FALSE(c.at("Q").placed); // its rays meet behind A
}

TEST(Sketch, PlacesNoPointByRaysThatHardlyCross)
{
    // Rays of 3 and 203 gon meet at an angle of 6 gon; with 4 and 204 at 8 gon, sine 0.125.
    for (const bool wide : {false, true}) {
        Case c(corners +
               "targets = '''\nname x y\nP - -\n'''\ndirections = '''\nfrom to value sigma\nA B 0 0.001\n"
               "B A 200 0.001\nA P " +
               (wide ? "4" : "3") + " 0.001\nB P " + (wide ? "196" : "197") + " 0.001\n'''\n");
        c.sketch->carry();
        EXPECT_EQ(c.at("P").placed, wide);
    }
}

TEST(Sketch, PlacesAPointByThreeDistances)
{
    const std::string distances = "distances = '''\nfrom to value sigma\nA P 100 1\nP B 89.44271910 1\n";
    const std::string points =
        "targets = '''\nname x y code\nA 0 0 fixed\nB 100 0 fixed\nC 0 160 fixed\nP - - free\n'''\n";
    Case three(points + distances + "C P 100 1\n'''\n");
    three.sketch->carry();
    expect_place(three.at("P"), 60, 80);
    Case two(points + distances + "'''\n");
    two.sketch->carry();
    EXPECT_FALSE(two.at("P").placed);
}

TEST(Sketch, PlacesNoPointByDistancesFromOneLine)
{
    Case c("targets = '''\nname x y code\nA 0 0 fixed\nB 100 0 fixed\nC 200 1 fixed\nP - - free\n'''\n"
           "distances = '''\nfrom to value sigma\nA P 100 1\nP B 89.4427191 1\nC P 161 1\n'''\n");
    c.sketch->carry();
    EXPECT_FALSE(c.at("P").placed);
}

// A to P forwards, Q to P backwards, and no way to R, whose baseline is not used.
TEST(Sketch, PlacesPointsByBaselinesInBothDirections)
{
    const std::string tables =
        "targets = '''\nname x y z code\nA 10 20 30 fixed\nP - - - free\nQ - - - free\nR - - - free\n"
        "'''\nbaselines = '''\nfrom to dx dy dz cxx cyy czz use\nQ P 1 1 1 1 1 1 yes\n"
        "A P 100 200 300 1 1 1 yes\nA R 1 1 1 1 1 1 no\n'''\n";
    Case c(tables, 3);
    c.sketch->carry();
    expect_place(c.at("P"), 110, 220);
    expect_place(c.at("Q"), 109, 219);
    c.sketch->carry_heights();
    EXPECT_TRUE(c.at("Q").levelled);
    EXPECT_NEAR(c.at("Q").x[2], 329, 1e-9);
    EXPECT_FALSE(c.at("R").placed);
}

TEST(Sketch, TakesOrientationsFromTheFile)
{
    Case c("stations = '''\nname x y orientation code\nA 0 0 350 fixed\n'''\ntargets = '''\nname x y\nP - -\n'''\n"
           "directions = '''\nfrom to value sigma\nA P 50 0.001\n'''\ndistances = '''\nfrom to value sigma\nA P 10 "
           "1\n'''\n");
    c.sketch->carry();
    expect_place(c.at("P"), 10, 0); // 50 + 350 gon
}

TEST(Sketch, LevelsDistancesByVerticalAnglesAndCarriesHeights)
{
    Case c("stations = '''\nname x y z orientation code\nA 0 0 10 0 fixed\n'''\ntargets = '''\nname x y z\nP - - -\nQ "
           "- - -\n"
           "R - - -\n'''\ndirections = '''\nfrom to value sigma\nA P 0 0.001\nA Q 100 0.001\nA R 200 0.001\n'''\n"
           "vertical_angles = '''\nfrom h1 to h2 value sigma\nA 1.5 P 0.3 50 0.001\n'''\n"
           "distances = '''\nfrom to value sigma\nA P 141.4213562 1\nA Q 20 1\nA R 30 1\n'''\n"
           "height_differences = '''\nfrom to value sigma\nQ P 7 0.001\n'''\n",
           3);
    c.sketch->carry();
    c.sketch->carry_heights();
    expect_place(c.at("P"), 100, 0);
    EXPECT_NEAR(c.at("P").x[2], 10 + 100 + 1.5 - 0.3, 1e-6);
    EXPECT_NEAR(c.at("Q").x[2], 111.2 - 7, 1e-6);                // against the direction of the step
    EXPECT_NEAR(c.at("R").x[2], (10 + 111.2 + 104.2) / 3, 1e-6); // the mean of what is known
    EXPECT_EQ(c.sketch->elevation(0, 3), 0.0);
}

TEST(Sketch, LeavesOutWhatIsNotUsed)
{
    Case c(corners + "targets = '''\nname x y status\nP 1 1 off\nQ - - used\n'''\ndirections = '''\n"
                     "from to value sigma use\nA B 0 0.001 yes\nA P 10 0.001 yes\nA Q 50 0.001 no\n'''\n"
                     "distances = '''\nfrom to value sigma\nA Q 10 1\n'''\n");
    EXPECT_EQ(c.sketch->find("P       "), -1);
    c.sketch->carry();
    EXPECT_FALSE(c.at("Q").placed);
    EXPECT_EQ(c.sketch->best_centre(), -1);
}

TEST(Sketch, NamesTheStationWithMostPointsInDirectionAndDistance)
{
    Case c("stations = '''\nname x y\nA - -\nB - -\n'''\ntargets = '''\nname x y\nP - -\nQ - -\n'''\ndirections = '''\n"
           "from to value sigma\nA P 0 1\nA Q 1 1\nB P 0 1\nB Q 1 1\n'''\ndistances = '''\nfrom to value sigma\n"
           "A P 9 1\nB P 9 1\nQ B 9 1\n'''\n");
    EXPECT_EQ(c.sketch->best_centre(), 1);
}

} // namespace
