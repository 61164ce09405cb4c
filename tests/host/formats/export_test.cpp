// Networks written in foreign formats and read back: they adjust to the same.

#include <map>

#include "host/earth/reference.h"
#include "host/formats/export.h"
#include "host/own/own_run.h"
#include "imported.h"

using namespace vornhost;

namespace {

// Writes the network, reads what was written, and adjusts it.
class Export : public Formats {
protected:
    void SetUp() override {}

    std::string written(const std::string &text, Target target)
    {
        Model model = model_of(text);
        Faults lost;
        lost.add_file("net.inp");
        notes.clear();
        const std::string out = export_network(model, target, notes, lost);
        faults = lost.lines();
        return out;
    }

    SolvedNetwork solved_again(const std::string &written_text)
    {
        folder.write("again", written_text);
        Model model;
        Faults bad;
        Lines unused;
        EXPECT_TRUE(read_any_network(folder.file("again"), model, unused, bad)) << bad.lines()[0] << written_text;
        if (!bad.empty()) return SolvedNetwork();
        model.solver = Solver::Sparse;
        return solve(model);
    }

    // Coordinates within `tolerance` metres, redundancy and standard deviation of unit weight.
    void expect_same(const SolvedNetwork &first, const SolvedNetwork &second, double tolerance)
    {
        ASSERT_TRUE(first.adjusted()) << first.words();
        ASSERT_TRUE(second.adjusted()) << second.words();
        EXPECT_EQ(first.results().degrees_of_freedom, second.results().degrees_of_freedom);
        if (*first.results().degrees_of_freedom > 0) {
            EXPECT_NEAR(*first.results().sigma_aposteriori / *second.results().sigma_aposteriori, 1.0, 1e-9);
        }
        size_t compared = 0;
        for (const PointResult &p : first.results().points)
            for (const PointResult &q : second.results().points) {
                if (p.name != q.name) continue;
                compared++;
                for (int axis = 0; axis < 3; axis++) {
                    if (p.adjusted[axis] && q.adjusted[axis]) {
                        EXPECT_NEAR(*p.adjusted[axis], *q.adjusted[axis], tolerance) << p.name << axis;
                    }
                    if (p.deviation[axis] && q.deviation[axis]) {
                        EXPECT_NEAR(*p.deviation[axis], *q.deviation[axis], 1e-9) << p.name << axis;
                    }
                }
            }
        EXPECT_EQ(compared, second.results().points.size());
    }

    void expect_round_trip(const std::string &text, Target target, double tolerance = 1e-9)
    {
        const std::string out = written(text, target);
        EXPECT_EQ(faults, Lines());
        if (faults.empty()) expect_same(solve_text(text), solved_again(out), tolerance);
    }

    Lines faults;
    std::vector<std::string> notes;
};

const std::string plane = R"([run]
title = "Plane & <simple>"
dimension = 2
[tables]
stations = """
name  x        y        code
A     1000     2000     fixed
B     1500     2010     fixed
C     1300.02  2400.01  free
"""
targets = """
name  x     y     code
D     900   2500  free
"""
directions = """
from to value     sigma  set
A    B  0.0000    0.001  1
A    C  58.66580  0.001  1
A    D  119.3082  0.001  1
A    B  10.0001   0.001  2
A    C  68.6655   0.001  2
B    A  0.0       0.002  -
B    C  268.9900  0.002  -
C    A  0.0       0.001  -
C    D  325.2222  0.001  -
"""
setups = """
station setup zero
A       -     set
"""
distances = """
from to value    sigma
A    C  500.0120 0.003
C    D  412.3104 0.004
B    D  774.6612 0.004
"""
azimuths = """
from to value sigma
A    D  112.567 0.01
"""
angles = """
at from to value sigma
C  A    B  72.3    1
"""
)";

const std::string space = R"([run]
dimension = 3
[tables]
stations = """
name  x     y     z    code_x   code_y   code_z   sx    sy    sz
A     0     0     10   fixed    fixed    fixed    -     -     -
B     100   0     12   weighted weighted weighted 0.01  0.01  0.02
"""
targets = """
name  code
P     free
"""
directions = """
from to value   sigma
A    B  0       0.001
A    P  50.0005 0.001
B    A  200.001 0.001
B    P  150.0   0.001
"""
distances = """
from to value    sigma h1   h2
A    P  70.7150  0.003 1.55 1.30
B    P  70.7200  0.003 1.50 1.30
"""
vertical_angles = """
from to value    sigma h1   h2   use
A    P  99.3248  0.002 1.55 1.30 yes
B    P  101.0803 0.002 1.50 1.30 yes
A    B  98.7     0.002 1.55 1.30 no
"""
height_differences = """
from to value sigma h1 h2
A    B  2.003 0.001 0  0
A    P  0.901 0.002 0.2 0.1
"""
)";

} // namespace

TEST_F(Export, WritesPlaneNetworksThatAdjustToTheSame)
{
    expect_round_trip(plane, Target::lines);
    if (!xml_available()) GTEST_SKIP() << "built without a parser of XML";
    expect_round_trip(plane, Target::gkf);
}

TEST_F(Export, WritesNetworksInSpaceThatAdjustToTheSame)
{
    expect_round_trip(space, Target::lines);
    EXPECT_EQ(notes.size(), (size_t)1);
    if (!xml_available()) GTEST_SKIP() << "built without a parser of XML";
    expect_round_trip(space, Target::gkf);
}

// Those of the examples that the formats can say.
TEST_F(Export, WritesTheExamplesSoThatTheyAdjustToTheSame)
{
    const std::map<std::string, std::string> examples = {{"ghilani_baselines", "gkf"},
                                                         {"ghilani_levelling", "gkf lines"},
                                                         {"gnss_together", "gkf"},
                                                         {"grossmann_directions", "gkf lines"},
                                                         {"levelling_lines", "gkf lines"},
                                                         {"niemeier_distance_direction", "gkf lines"},
                                                         {"niemeier_levelling_free", "gkf"},
                                                         {"rounds", "gkf lines"},
                                                         {"strang_borre_distances_free", "gkf lines"},
                                                         {"wolf_distances_vertical_angles", "gkf lines"}};
    for (const auto &[name, formats] : examples) {
        const std::string path = std::string(SOURCE_DIR) + "/examples/" + name + ".inp";
        for (const auto &[word, target] : {std::pair("gkf", Target::gkf), std::pair("lines", Target::lines)}) {
            if (formats.find(word) == std::string::npos || (target == Target::gkf && !xml_available())) continue;
            SCOPED_TRACE(name + " " + word);
            Model model;
            Faults lost;
            ASSERT_TRUE(read_network(path, model, lost));
            const std::string text = export_network(model, target, notes, lost);
            EXPECT_EQ(lost.lines(), Lines());
            if (lost.empty()) expect_same(solve_file(path), solved_again(text), 1e-9);
        }
    }
}

// A weight in [apriori] is a standard deviation that is smaller by it; what another program would adjust otherwise is
// refused.
TEST_F(Export, WritesWeightsOfKindsAsStandardDeviations)
{
    const std::string weighted = "[apriori]\ndistances = 0.5\ndirections = 2.0\n" + plane;
    EXPECT_NE(*solve_text(weighted).point("C").adjusted[0], *solve_text(plane).point("C").adjusted[0]);
    expect_round_trip(weighted, Target::lines);
    if (xml_available()) expect_round_trip(weighted, Target::gkf);
}

// In .gkf what was observed of a point takes the place of its coordinates.
TEST_F(Export, KeepsPointsWhereTheyAreBesideTheirObservedCoordinates)
{
    expect_round_trip("[run]\ndimension = 2\n[tables]\ntargets = \"\"\"\nname x y code\nA 0 0 fixed\nB 100 0 fixed\n"
                      "P 50 50 free\n\"\"\"\ncoordinates = \"\"\"\nname x y sx sy\nB 100.02 0.01 0.01 0.01\n\"\"\"\n"
                      "distances = \"\"\"\nfrom to value sigma\nA P 70.71 0.01\nB P 70.72 0.01\n\"\"\"\n",
                      Target::gkf);
}

TEST_F(Export, RefusesAReferenceSystem)
{
    if (!has_proj()) GTEST_SKIP() << "built without projections";
    Model model;
    Faults lost;
    ASSERT_TRUE(read_network(std::string(SOURCE_DIR) + "/examples/utm_traverse.inp", model, lost));
    for (const Target target : {Target::gkf, Target::lines, Target::dynaml}) {
        EXPECT_EQ(export_network(model, target, notes, lost), "");
        ASSERT_FALSE(lost.empty());
        EXPECT_NE(lost.lines()[0].find("a reference system ([crs]) cannot be written in another format"),
                  std::string::npos);
        lost = Faults();
    }
}
