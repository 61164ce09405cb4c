#include <gtest/gtest.h>

#include "host/preparation/parallel_verticals.h"

namespace {

using vornhost::Model;

void add_point(Model &model, double x, double y)
{
    target_input t = target_input();
    t.status = STATUS_ON;
    t.x[0] = x;
    t.x[1] = y;
    model.targets.add(t, {});
}

Model space_network()
{
    Model model;
    model.path = "net.inp";
    model.p.dim = 3;
    model.p.radius = 6371000.0;
    add_point(model, 3000.0, 4000.0);
    measure_input m = measure_input();
    m.typ = KIND_HEIGHT_DIFFERENCE;
    model.heightdiffs.add(m, {});
    return model;
}

TEST(ParallelVerticals, KeepTheCurvatureBelowANanometre)
{
    Model model = space_network();
    add_point(model, 60000.0, -80000.0);
    EXPECT_EQ(vornhost::make_verticals_parallel(model),
              "net.inp: no earth model: verticals are taken as parallel (a sphere of radius 1e+19 m, curvature below a "
              "nanometre)");
    EXPECT_EQ(model.p.iearth, 1);
    EXPECT_LT(1.0e10 / (2.0 * model.p.radius), 1.0e-9); // sagitta at 100 km from the axis
}

TEST(ParallelVerticals, MeasureTheNetworkInMetres)
{
    Model model = space_network();
    model.p.iunit = 1; // millimetres: 5 m from the axis
    vornhost::make_verticals_parallel(model);
    EXPECT_EQ(model.p.radius, 1.0e12);
}

TEST(ParallelVerticals, NeedNoLevelInAPlane)
{
    for (int earth = 0; earth < 2; earth++) {
        Model model = space_network();
        model.p.dim = 2;
        model.p.iearth = earth;
        station_input s = station_input();
        s.ilevel = 1;
        model.stations.add(s, {});
        EXPECT_EQ(vornhost::make_verticals_parallel(model), "");
        EXPECT_EQ(model.stations.records[0].ilevel, earth);
    }
}

TEST(ParallelVerticals, LeaveOtherNetworksAlone)
{
    Model plane = space_network();
    plane.p.dim = 2;
    EXPECT_EQ(vornhost::make_verticals_parallel(plane), "");
    Model sphere = space_network();
    sphere.p.iearth = 2;
    EXPECT_EQ(vornhost::make_verticals_parallel(sphere), "");
    EXPECT_EQ(sphere.p.radius, 6371000.0);
    Model unselected = space_network();
    unselected.heightdiffs.records[0].typ = -KIND_HEIGHT_DIFFERENCE;
    EXPECT_EQ(vornhost::make_verticals_parallel(unselected), "");
}

TEST(ParallelVerticals, AreForAnglesOfLevelledInstruments)
{
    for (int levelled = 0; levelled < 2; levelled++) {
        Model model = space_network();
        model.heightdiffs.records.clear();
        measure_input m = measure_input();
        m.typ = KIND_VERTICAL;
        model.verticals.add(m, {});
        station_input s = station_input();
        s.status = STATUS_ON;
        s.ilevel = levelled;
        model.stations.add(s, {});
        EXPECT_EQ(vornhost::make_verticals_parallel(model).empty(), !levelled);
    }
}

} // namespace
