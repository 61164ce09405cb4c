// Published networks, networks of known truth and the engine as witness, through the whole road of the host.

#include <cmath>
#include <map>
#include <vector>

#include "host/input/names.h"
#include "host/own/own_run.h"

using namespace vornhost;

namespace {

struct Published {
    const char *file;
    double last_digit, last_digit_of_deviations; // metres
    std::map<std::string, std::vector<double>> points, deviations;
};

const Published published[] = {
    {"ghilani_levelling",
     1e-4,
     1e-5,
     {{"B", {448.1087}}, {"C", {453.4685}}, {"D", {444.9436}}},
     {{"B", {2.30e-3}}, {"C", {2.64e-3}}, {"D", {1.76e-3}}}},
    {"niemeier_levelling_free",
     1e-4,
     1e-5,
     {{"1", {68.9249}}, {"2", {60.7167}}, {"3", {63.1952}}, {"4", {56.2852}}, {"5", {44.3240}}, {"6", {67.2294}}},
     {{"1", {1.75e-3}}, {"2", {1.65e-3}}, {"3", {1.13e-3}}, {"4", {1.94e-3}}, {"5", {1.60e-3}}, {"6", {2.00e-3}}}},
    {"grossmann_directions", 1e-4, 1e-5, {{"P", {76607.8593, 8401.8637}}}, {{"P", {8.345e-2, 6.422e-2}}}},
    {"niemeier_distance_direction",
     1e-4,
     1e-5,
     {{"Z108", {27816.1166, 40759.3769}}, {"Z110", {27904.0042, 41373.0193}}},
     {{"Z108", {3.01e-3, 3.13e-3}}, {"Z110", {2.89e-3, 3.12e-3}}}},
    {"office_tables",
     1e-4,
     1e-5,
     {{"000921030108", {27816.1166, 40759.3769}}, {"000921030110", {27904.0042, 41373.0193}}},
     {{"000921030108", {3.01e-3, 3.13e-3}}, {"000921030110", {2.89e-3, 3.12e-3}}}},
    {"strang_borre_distances_free",
     1e-4,
     1e-5,
     {{"P", {170.7123, 170.7185}}, {"1", {170.7032, 270.7213}}, {"2", {99.9912, 99.9971}}, {"3", {241.4333, 99.9830}}},
     {{"P", {1.079e-2, 0.682e-2}},
      {"1", {0.810e-2, 0.551e-2}},
      {"2", {0.641e-2, 0.705e-2}},
      {"3", {0.640e-2, 0.705e-2}}}},
    {"wolf_distances_vertical_angles",
     1e-4,
     1e-5,
     {{"P", {900.0164, 899.9836, 1300.0062}}},
     {{"P", {0.543e-2, 0.543e-2, 0.290e-2}}}},
    {"ghilani_baselines",
     1e-4,
     1e-5,
     {{"C", {12046.5808, -4649394.0826, 4353160.0644}},
      {"D", {-3081.5831, -4643107.3692, 4359531.1233}},
      {"E", {-4919.3391, -4649361.2199, 4352934.4548}},
      {"F", {1518.8012, -4648399.1453, 4354116.6914}}},
     {{"C", {0.608e-2, 0.612e-2, 0.597e-2}},
      {"D", {0.494e-2, 0.506e-2, 0.514e-2}},
      {"E", {0.523e-2, 0.526e-2, 0.517e-2}},
      {"F", {0.267e-2, 0.282e-2, 0.280e-2}}}},
    {"baumann_zenith_angles",
     1e-4,
     1e-5,
     {{"N", {1071.6795, 1181.7645, 94.2598}}},
     {{"N", {0.396e-2, 0.348e-2, 0.526e-2}}}},
};

std::string example(const std::string &name) { return SOURCE_DIR "/examples/" + name + ".inp"; }

std::vector<double> given(const std::optional<double> (&values)[3])
{
    std::vector<double> all;
    for (const std::optional<double> &v : values)
        if (v) all.push_back(*v);
    return all;
}

void expect_near(const std::vector<double> &found, const std::vector<double> &wanted, double limit,
                 const std::string &what)
{
    ASSERT_EQ(found.size(), wanted.size()) << what;
    for (size_t i = 0; i < found.size(); i++) EXPECT_NEAR(found[i], wanted[i], limit) << what << " " << i;
}

class OwnExample : public testing::TestWithParam<Published> {};

// Half a digit, and as much again as the publication rounded on its way.
TEST_P(OwnExample, GivesThePublishedCoordinatesAndStandardDeviations)
{
    const Published &p = GetParam();
    const SolvedNetwork solved = solve_file(example(p.file));
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_EQ(solved.code(), "done: adjusted");
    for (const auto &[name, x] : p.points)
        expect_near(given(solved.point(name).adjusted), x, 0.51 * p.last_digit, "coordinates of " + name);
    for (const auto &[name, s] : p.deviations)
        expect_near(given(solved.point(name).deviation), s, 0.6 * p.last_digit_of_deviations, "deviations of " + name);
}

INSTANTIATE_TEST_SUITE_P(Published, OwnExample, testing::ValuesIn(published),
                         [](const auto &tried) { return std::string(tried.param.file); });

// Points of both runs, to a part of their values; standard deviations too.
void expect_same_points(const SolvedNetwork &own, const SolvedNetwork &engine, double limit)
{
    ASSERT_TRUE(own.adjusted() && engine.adjusted()) << own.words() << engine.words();
    ASSERT_EQ(own.results().points.size(), engine.results().points.size());
    for (const PointResult &p : own.results().points) {
        const PointResult &q = engine.point(p.name);
        for (int k = 0; k < 3; k++) {
            ASSERT_EQ(p.adjusted[k].has_value(), q.adjusted[k].has_value()) << p.name;
            if (p.adjusted[k])
                EXPECT_NEAR(*p.adjusted[k], *q.adjusted[k], limit * (1 + std::fabs(*p.adjusted[k]))) << p.name << k;
            const double s = p.deviation[k].value_or(0), t = q.deviation[k].value_or(0);
            EXPECT_NEAR(s, t, limit * std::fmax(s, t)) << "deviation of " << p.name << k;
        }
    }
}

class SameRules : public testing::TestWithParam<const char *> {};

TEST_P(SameRules, GiveWhatTheEngineGives)
{
    const SolvedNetwork own = solve_file(example(GetParam()));
    const SolvedNetwork engine = solve_file(example(GetParam()), Solver::Compact);
    expect_same_points(own, engine, 1e-9);
    if (!engine.results().degrees_of_freedom) return;
    EXPECT_EQ(own.results().degrees_of_freedom, engine.results().degrees_of_freedom);
    EXPECT_NEAR(*own.results().sigma_aposteriori, *engine.results().sigma_aposteriori, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(Examples, SameRules,
                         testing::Values("ghilani_baselines", "ghilani_levelling", "gross_error",
                                         "grossmann_directions", "instrument_constants", "niemeier_distance_direction",
                                         "niemeier_levelling_free", "wolf_distances_vertical_angles"),
                         [](const auto &tried) { return std::string(tried.param); });

// Each coordinate within four of its standard deviations of the truth, and these not larger than most.
void expect_truth(const SolvedNetwork &solved, const std::map<std::string, std::vector<double>> &truth, double most)
{
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    for (const auto &[name, x] : truth)
        for (size_t k = 0; k < x.size(); k++) {
            const PointResult &p = solved.point(name);
            ASSERT_TRUE(p.adjusted[k] && p.deviation[k]) << name;
            EXPECT_LT(*p.deviation[k], most) << name << k;
            EXPECT_NEAR(*p.adjusted[k], x[k], 4 * *p.deviation[k] + 5e-4) << name << k;
        }
}

} // namespace

namespace {

// Both roads adjust an example after a change that takes away what parts them.
template <class Change> void expect_one_result(const std::string &name, const Change &change)
{
    SolvedNetwork by[2];
    for (const bool engine : {false, true}) {
        Model model;
        Faults faults;
        ASSERT_TRUE(read_network(example(name), model, faults));
        model.solver = engine ? Solver::Compact : Solver::Sparse;
        model.p.convergence = 1e-10;
        change(model);
        by[engine] = solve(model);
        ASSERT_TRUE(by[engine].adjusted());
    }
    for (const PointResult &p : by[0].results().points)
        for (int k = 0; k < 3; k++) {
            const PointResult &q = by[1].point(p.name);
            if (p.adjusted[k]) EXPECT_NEAR(*p.adjusted[k], *q.adjusted[k], 1e-8) << p.name << k;
            if (p.deviation[k]) EXPECT_NEAR(*p.deviation[k] / *q.deviation[k], 1, 1e-8) << p.name << k;
        }
}

} // namespace

// The engine has the derivatives of the line between the marks.
TEST(OwnExamples, AgreeWithTheEngineWithoutHeightsOfInstrument)
{
    expect_one_result("baumann_zenith_angles", [](Model &m) {
        for (auto *list : {&m.distances, &m.verticals, &m.directions})
            for (measure_input &o : list->records) o.h1 = o.h2 = 0;
    });
}

// The engine's conditions of a free network are those of the last coordinates.
TEST(OwnExamples, AgreeWithTheEngineFromAdjustedCoordinates)
{
    const SolvedNetwork first = solve_file(example("strang_borre_distances_free"));
    expect_one_result("strang_borre_distances_free", [&](Model &m) {
        for (target_input &t : m.targets.records)
            for (int k = 0; k < 2; k++) t.x[k] = *first.point(shown_name(m, t.name)).adjusted[k];
        for (station_input &s : m.stations.records)
            for (int k = 0; k < 2; k++) s.x[k] = *first.point(shown_name(m, s.name)).adjusted[k];
    });
}

TEST(OwnExamples, FindTheTruthOfASphereWithHeightsOfInstrument)
{
    expect_truth(solve_file(example("total_station_heights")),
                 {{"S3", {178.220, 431.905, -4.118}},
                  {"A", {-92.470, 214.660, 21.036}},
                  {"B", {268.115, -143.270, 12.480}},
                  {"C", {520.405, 352.190, 31.954}},
                  {"D", {231.800, 190.345, 2.207}}},
                 0.01);
}

TEST(OwnExamples, FindTheTruthOfMixedCoordinates)
{
    const SolvedNetwork solved = solve_file(example("mixed_fixed_heights"));
    expect_truth(solved, {{"M2", {600904.226, 199311.663, 463.915}}, {"N1", {598711.295, 199059.438, 530.118}}}, 0.02);
    // The height of M1 is held as it is written, its position is not.
    EXPECT_EQ(solved.point("M1").code[2], "fixed");
    EXPECT_EQ(solved.point("M1").adjusted[2], solved.point("M1").approximate[2]);
    EXPECT_FALSE(solved.point("M1").deviation[2]);
    EXPECT_NEAR(*solved.point("M1").adjusted[0], 599789.566, 0.02);
}

TEST(OwnExamples, FindTheConstantsOfADistanceMeter)
{
    const SolvedNetwork solved = solve_file(example("instrument_constants"));
    expect_truth(solved, {{"N1", {1205.417, 1248.930}}, {"N2", {1440.128, 1310.662}}}, 0.005);
    ASSERT_EQ(solved.results().groups.size(), 1u);
    const GroupResult &meter = solved.results().groups[0];
    EXPECT_NEAR(meter.value[0].value(), -0.0343, 4 * meter.deviation[0].value());
    EXPECT_NEAR(meter.value[1].value(), 1.000028, 4 * meter.deviation[1].value());
    EXPECT_LT(*meter.deviation[0], 0.005);
    EXPECT_LT(*meter.deviation[1], 2e-5);
}

TEST(OwnExamples, FindTheTruthOfACameraAndItsPoints)
{
    const SolvedNetwork solved = solve_file(example("photo_block"));
    expect_truth(solved,
                 {{"P02", {-10.334, -2.799, 0.197}}, {"P20", {-0.757, 6.648, 1.707}}, {"P39", {10.364, 3.128, 0.060}}},
                 0.003);
    ASSERT_EQ(solved.results().cameras.size(), 1u);
    const CameraResult &camera = solved.results().cameras[0];
    const std::pair<int, double> truth[] = {{0, 5854.0}, {1, 13.8}, {2, -7.7}, {5, -2.2e-9}};
    for (const auto &[k, value] : truth)
        EXPECT_NEAR(camera.value[k].value(), value, 4 * camera.deviation[k].value()) << k;
    EXPECT_NEAR(*solved.results().sigma_aposteriori, 0.3, 0.03); // pixels: 10 % are more than two deviations of it
    // Two rows an image point, of all six positions, 35 points and 4 parameters of the camera.
    EXPECT_EQ(solved.results().degrees_of_freedom, 2 * 203 - 6 * 6 - 3 * 35 - 4);
}

TEST(OwnExamples, FindHowTheWallMoved)
{
    const SolvedNetwork solved = solve_file(example("monitoring_wall"));
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    ASSERT_EQ(solved.results().lumps.size(), 2u);
    const double moved[3] = {0.0015, 0.0080, -0.0040}, turned[3] = {0.0012, 0, -0.0003}, none[3] = {0, 0, 0};
    for (const LumpResult &l : solved.results().lumps)
        for (int k = 0; k < 3; k++) {
            EXPECT_NEAR(l.translation[k], (l.lump == 1 ? moved : none)[k], 4 * l.translation_deviation[k].value());
            EXPECT_NEAR(l.rotation[k], (l.lump == 1 ? turned : none)[k], 4 * l.rotation_deviation[k].value());
            EXPECT_LT(*l.translation_deviation[k], 0.0005);
        }
    EXPECT_EQ(solved.results().degrees_of_freedom, 3 * 84 - 6 - 3 * 12 - 2 * 6);
}
