// Examples with published or simulated results whose free coordinates are taken away start by themselves, and end where
// they end with them.

#include "host/own/own_run.h"

namespace {

class Taken : public testing::TestWithParam<const char *> {};

template <class Record> void take_away(vornhost::List<Record> &points, int dimension)
{
    for (Record &r : points.records) {
        bool free = false;
        for (int k = 0; k < 3; k++) {
            if (dimension == 2 ? k == 2 : dimension == 1 && k != 2) continue;
            if (vornhost::is_held(r.ix[k])) continue;
            r.x[k] = 0.0;
            free = true;
        }
        if (free && r.status > 0) r.status = STATUS_COMPUTE;
    }
}

} // namespace

TEST_P(Taken, StartWithoutCoordinates)
{
    const std::string path = std::string(SOURCE_DIR "/examples/") + GetParam() + ".inp";
    const SolvedNetwork whole = solve_file(path);
    ASSERT_TRUE(whole.adjusted()) << whole.words();
    vornhost::Model model;
    vornhost::Faults faults;
    ASSERT_TRUE(vornhost::read_network(path, model, faults));
    model.solver = Solver::Sparse;
    take_away(model.stations, model.p.dim);
    take_away(model.targets, model.p.dim);
    const SolvedNetwork started = solve(model);
    ASSERT_TRUE(started.adjusted()) << started.words();
    for (const vornhost::PointResult &p : whole.results().points)
        for (int k = 0; k < 3; k++) {
            if (!p.adjusted[k]) continue;
            EXPECT_NEAR(*started.point(p.name).adjusted[k], *p.adjusted[k], 2e-5) << p.name << " " << k;
        }
}

INSTANTIATE_TEST_SUITE_P(Examples, Taken,
                         testing::Values("baumann_zenith_angles", "ghilani_baselines", "ghilani_levelling",
                                         "grossmann_directions", "niemeier_distance_direction", "total_station_heights",
                                         "wolf_distances_vertical_angles", "mixed_fixed_heights",
                                         "instrument_constants", "gross_error"),
                         [](const testing::TestParamInfo<const char *> &p) { return std::string(p.param); });
