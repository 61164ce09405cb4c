// The published coordinates of the examples, from both least-squares solvers.

#include <gtest/gtest.h>

#include <stdio.h>
#include <string.h>

#include <map>
#include <memory>

#include "host/input/names.h"
#include "host/input/network_file.h"
#include "vorn/result.h"
#include "host/run/runner.h"

using namespace vornhost;

namespace {

struct Silent : Feedback {
    void feedback(char *) override {}
    int decision(char *, char *) override { return 0; }
};

struct Published {
    const char *file;
    double last_digit; // of the published coordinates
    std::map<std::string, std::vector<double>> points;
};

const Published examples[] = {
    {"ghilani_levelling", 1e-4, {{"B", {448.1087}}, {"C", {453.4685}}, {"D", {444.9436}}}},
    {"niemeier_levelling_free",
     1e-4,
     {{"1", {68.9249}}, {"2", {60.7167}}, {"3", {63.1952}}, {"4", {56.2852}}, {"5", {44.3240}}, {"6", {67.2294}}}},
    {"grossmann_directions", 1e-4, {{"P", {76607.8593, 8401.8637}}}},
    {"niemeier_distance_direction", 1e-4, {{"Z108", {27816.1166, 40759.3769}}, {"Z110", {27904.0042, 41373.0193}}}},
    {"office_tables", 1e-4, {{"000921030108", {27816.1166, 40759.3769}}, {"000921030110", {27904.0042, 41373.0193}}}},
    {"strang_borre_distances_free",
     1e-4,
     {{"P", {170.7123, 170.7185}}, {"1", {170.7032, 270.7213}}, {"2", {99.9912, 99.9971}}, {"3", {241.4333, 99.9830}}}},
    {"wolf_distances_vertical_angles", 1e-4, {{"P", {900.0164, 899.9836, 1300.0062}}}},
    {"ghilani_baselines",
     1e-4,
     {{"C", {12046.5808, -4649394.0826, 4353160.0644}},
      {"D", {-3081.5831, -4643107.3692, 4359531.1233}},
      {"E", {-4919.3391, -4649361.2199, 4352934.4548}},
      {"F", {1518.8012, -4648399.1453, 4354116.6914}}}},
    {"baumann_zenith_angles", 1e-4, {{"N", {1071.6795, 1181.7645, 94.2598}}}},
};

// Adjusted coordinates by name: z in one dimension, x and y in two, all in three.
std::map<std::string, std::vector<double>> adjusted(const Model &model)
{
    std::map<std::string, std::vector<double>> points;
    const result *r = model.p.runresults;
    for (int i = 0; r && i < r->nstar + r->ntarr; i++) {
        const bool station = i < r->nstar;
        const std::string name = station
                                     ? shown_name(model, model.stations.records[(size_t)r->ihost[i]].name)
                                     : shown_name(model, model.targets.records[(size_t)(r->ihost[i] - r->nstar)].name);
        for (const double *x : {r->xpt, r->ypt, r->zpt})
            if (x) points[name].push_back(x[i]);
    }
    return points;
}

class Example : public testing::TestWithParam<std::tuple<Published, Solver>> {};

// Half a digit, and as much again for what the publication rounded on its way.
TEST_P(Example, GivesThePublishedCoordinates)
{
    const Published &example = std::get<0>(GetParam());
    Model model;
    Faults faults;
    const std::string path = std::string(SOURCE_DIR "/examples/") + example.file + ".inp";
    ASSERT_TRUE(read_network(path, model, faults)) << faults.lines()[0];
    model.solver = std::get<1>(GetParam());
    model.mode = Mode::Solution;
    const std::unique_ptr<FILE, int (*)(FILE *)> report(tmpfile(), fclose);
    Silent silent;
    const RunOutcome outcome = run(model, report.get(), silent);
    ASSERT_TRUE(outcome.adjusted()) << (outcome.words.empty() ? "" : outcome.words[0]);
    const auto points = adjusted(model);
    for (const auto &[name, published] : example.points) {
        ASSERT_TRUE(points.count(name)) << name;
        const std::vector<double> &x = points.at(name);
        ASSERT_EQ(x.size(), published.size()) << name;
        for (size_t i = 0; i < x.size(); i++)
            EXPECT_NEAR(x[i], published[i], 0.51 * example.last_digit) << name << " coordinate " << i;
    }
    model.p.freerun(model.p.runresults);
}

std::string name_of(const testing::TestParamInfo<std::tuple<Published, Solver>> &info)
{
    return std::string(std::get<0>(info.param).file) +
           (std::get<1>(info.param) == Solver::Jordan ? "_jordan" : "_compact");
}

INSTANTIATE_TEST_SUITE_P(Published, Example,
                         testing::Combine(testing::ValuesIn(examples),
                                          testing::Values(Solver::Compact, Solver::Jordan)),
                         name_of);

} // namespace
