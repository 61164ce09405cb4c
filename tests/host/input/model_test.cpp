#include "host/input/model.h"

#include <gtest/gtest.h>

#include <utility>

using vornhost::Model;
using vornhost::Source;

TEST(Model, AttachesEveryListToItsProject)
{
    Model m;
    m.stations.add(station_input(), Source());
    m.targets.add(target_input(), Source());
    m.targets.add(target_input(), Source());
    for (auto *list : {&m.distances, &m.heightdiffs, &m.directions, &m.verticals, &m.azimuths})
        list->add(measure_input(), Source());
    m.baselines.add(gps_input(), Source());
    m.cameras.add(camera_input(), Source());
    m.images.add(image_input(), Source());
    m.pairs.add(pair_input(), Source());
    m.attach();
    const project &p = m.p;
    EXPECT_EQ(p.stations, m.stations.records.data());
    EXPECT_EQ(p.targets, m.targets.records.data());
    EXPECT_EQ(p.distances, m.distances.records.data());
    EXPECT_EQ(p.heightdiffs, m.heightdiffs.records.data());
    EXPECT_EQ(p.directions, m.directions.records.data());
    EXPECT_EQ(p.verticals, m.verticals.records.data());
    EXPECT_EQ(p.azimuths, m.azimuths.records.data());
    EXPECT_EQ(p.baselines, m.baselines.records.data());
    EXPECT_EQ(p.cameras, m.cameras.records.data());
    EXPECT_EQ(p.images, m.images.records.data());
    EXPECT_EQ(p.pairs, m.pairs.records.data());
    EXPECT_EQ(p.ntargets, 2);
    for (const int one : {p.nstations, p.ndistances, p.nheightdiffs, p.ndirections, p.nverticals, p.nazimuths,
                          p.nbaselines, p.ncameras, p.nimages, p.npairs})
        EXPECT_EQ(one, 1);
}

TEST(Model, AttachesGroupsAndLumpsToTheirOwnArrays)
{
    Model m;
    m.groups.add(group_input(), Source());
    m.group_members.push_back({0, 2});
    m.groups.add(group_input(), Source());
    m.group_members.push_back({});
    m.lumpdefs.add(lump_definition(), Source());
    m.lump_tables.push_back({{1, 2}, {1, 4}, {1, 1}, {0, 1}, {0, 2}, {0, 3}, {0, 4}, {0, 5}, {0, 6}});
    m.attach();
    ASSERT_EQ(m.p.ngroups, 2);
    EXPECT_EQ(m.p.groups[0].nmember, 2);
    EXPECT_EQ(m.p.groups[0].member[1], 2);
    EXPECT_EQ(m.p.groups[1].nmember, 0);
    EXPECT_EQ(m.p.groups[1].member, nullptr);
    ASSERT_EQ(m.p.nlumpdefs, 1);
    const lump_definition &lump = m.p.lumpdefs[0];
    ASSERT_EQ(lump.n, 2);
    EXPECT_EQ(lump.epoch[1], 2);
    EXPECT_EQ(lump.code[1], 4);
    EXPECT_EQ(lump.scale[1], 1.0);
    const double *const parts[] = {lump.tx, lump.ty, lump.tz, lump.rx, lump.ry, lump.rz};
    for (int i = 0; i < 6; i++) EXPECT_EQ(parts[i][1], i + 1.0);
}

TEST(Model, HasNoArraysWhenItIsEmpty)
{
    Model m;
    m.attach();
    EXPECT_EQ(m.p.stations, nullptr);
    EXPECT_EQ(m.p.nstations, 0);
}

TEST(Model, KeepsItsArraysWhenItIsMoved)
{
    Model m;
    m.targets.add(target_input(), Source());
    m.attach();
    const Model moved = std::move(m);
    EXPECT_EQ(moved.p.targets, moved.targets.records.data());
}

TEST(Model, NamesThePlaceOfARecord)
{
    Model m;
    m.path = "net.inp";
    m.files = {"net.inp", "points.txt"};
    EXPECT_EQ(place(m, Source{1, 12, 3}), "points.txt:12");
    EXPECT_EQ(place(m, Source{0, 1, 0}), "net.inp:1");
    for (const Source nowhere : {Source(), Source{2, 12, 0}, Source{-1, 12, 0}, Source{1, -1, 0}})
        EXPECT_EQ(place(m, nowhere), "net.inp");
}
