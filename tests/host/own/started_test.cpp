// Networks whose free coordinates are taken away start by themselves, and end where they end with them: the examples,
// and where they are at hand published networks in files of other programs.

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "host/formats/import.h"
#include "host/formats/xml.h"
#include "host/network_files.h"
#include "host/own/own_run.h"

namespace {

namespace fs = std::filesystem;
using vornhost::Model;

template <class Record> int take_away(vornhost::List<Record> &points, int dimension)
{
    int taken = 0;
    for (Record &r : points.records) {
        bool free = false;
        for (int k = 0; k < 3; k++) {
            if (dimension == 2 ? k == 2 : dimension == 1 && k != 2) continue;
            if (vornhost::is_held(r.ix[k])) continue;
            r.x[k] = 0.0;
            free = true;
        }
        if (!free || r.status <= 0) continue;
        r.status = STATUS_COMPUTE;
        taken++;
    }
    return taken;
}

Model read(const std::string &path)
{
    Model model;
    Lines notes;
    vornhost::Faults faults;
    EXPECT_TRUE(vornhost::read_any_network(path, model, notes, faults)) << faults.lines().at(0);
    model.solver = Solver::Sparse;
    model.mode = vornhost::Mode::Statistics;
    return model;
}

// Where something is free its place follows the first coordinates, which residuals do not.
void expect_same(const SolvedNetwork &found, const SolvedNetwork &wanted)
{
    const bool free = wanted.results().datum.rfind("free", 0) == 0;
    for (const vornhost::PointResult &p : wanted.results().points)
        for (int k = 0; k < 3 && !free; k++)
            if (p.adjusted[k])
                EXPECT_NEAR(found.point(p.name).adjusted[k].value_or(NAN), *p.adjusted[k], 2e-5) << p.name;
    const auto &v = found.results().residuals, &u = wanted.results().residuals;
    ASSERT_EQ(v.size(), u.size());
    for (size_t i = 0; i < u.size(); i++)
        EXPECT_NEAR(v[i].residual, u[i].residual, 1e-3 * u[i].sigma) << u[i].from << " to " << u[i].to;
    EXPECT_EQ(found.results().degrees_of_freedom, wanted.results().degrees_of_freedom);
}

// Returns the number of points whose coordinates were taken away.
int expect_start(const std::string &path)
{
    SCOPED_TRACE(path);
    Model whole = read(path), bare = read(path);
    const SolvedNetwork wanted = solve(whole);
    if (!wanted.adjusted()) return 0;
    const int taken = take_away(bare.stations, bare.p.dim) + take_away(bare.targets, bare.p.dim);
    const SolvedNetwork found = solve(bare);
    EXPECT_TRUE(found.adjusted()) << found.words();
    if (found.adjusted()) expect_same(found, wanted);
    return taken;
}

} // namespace

// Images do not start by themselves. tests/runs holds networks that are not adjusted at all, and in `exact` a point
// that fits on either side of a line.
TEST(Taken, ExamplesStartWithoutCoordinates)
{
    int taken = 0;
    for (const std::string &path : network_files()) {
        const std::string name = fs::path(path).stem().string();
        if (name != "photo_block" && name != "exact") taken += expect_start(path);
    }
    EXPECT_GT(taken, 80);
}

TEST(Taken, PublishedNetworksStartWithoutCoordinates)
{
    const std::string data = SOURCE_DIR "/../shared/data/";
    if (!fs::is_directory(data)) GTEST_SKIP() << "no networks at hand";
    int taken = 0;
    for (const char *folder : {"datum", "import/gama", "import/dynadjust", "import/gsi", "import/m5"})
        for (const auto &entry : fs::directory_iterator(data + folder)) {
            const std::string ending = entry.path().extension().string(), name = entry.path().stem().string();
            const bool network = ending == ".inp" || ending == ".gkf" || ending == ".msr" || ending == ".m5" ||
                                 name == "network" || name == "gnss-networkmsr";
            if (network && (ending != ".gkf" || vornhost::xml_available()))
                taken += expect_start(entry.path().string());
        }
    EXPECT_GT(taken, 200);
}
