// Networks on the earth as files: what was measured between known places comes back as these places.

#include <gtest/gtest.h>

#include <random>

#include "earth/truth.h"
#include "host/own/own_run.h"
#include "host/results/csv_writer.h"
#include "host/results/geojson_writer.h"
#include "host/results/json_writer.h"
#include "host/results/kml_writer.h"

using namespace vornhost;
using truth::degree;

namespace {

struct Area {
    const char *system;
    double latitude, longitude; // degrees
};

const Area areas[] = {
    {"EPSG:25832", 50.0, 10.8}, {"EPSG:2154", 43.5, 6.5}, {"EPSG:2056", 46.4, 9.9}, {"EPSG:29873", 4.5, 117.6}};

// Five points up to 50 km apart, between 200 and 1,500 m.
std::vector<truth::Point> five(const Area &area)
{
    const double plan[5][2] = {{0, 0}, {0.25, 0.05}, {0.1, 0.4}, {-0.15, 0.3}, {0.08, 0.2}},
                 heights[5] = {200, 1500, 600, 350, 900};
    std::vector<truth::Point> points;
    points.reserve(5);
    for (int k = 0; k < 5; k++)
        points.push_back({std::string(1, (char)('A' + k)), (area.latitude + plan[k][0]) * degree,
                          (area.longitude + plan[k][1]) * degree, heights[k]});
    return points;
}

// A file as it grows: the rows of its tables.
struct Tables {
    std::string stations = "name x y z code\n", distances = "from to value sigma h1 h2\n",
                directions = "from to value sigma h1 h2\n", zeniths = "from to value sigma h1 h2\n",
                levels = "from to value sigma\n", azimuths = "from to value sigma\n",
                baselines = "from to dx dy dz cxx cyy czz h1 h2\n";

    std::string plane() const
    {
        return table("stations", stations) + table("distances", distances) + table("directions", directions);
    }

    static std::string table(const char *name, const std::string &rows)
    {
        return std::string(name) + " = \"\"\"\n" + rows + "\"\"\"\n";
    }
};

std::string head(const char *system, int dimension, const char *crs = "heights = \"ellipsoidal\"")
{
    return std::string("[run]\ndimension = ") + std::to_string(dimension) + "\n[crs]\nnetwork = \"" + system + "\"\n" +
           crs + "\n[tables]\n";
}

constexpr double h1 = 1.61, h2 = 2.05;

// Sights from each point to each of the others; coordinates that are off by a few metres but for the fixed ones.
Tables observe(const Reference &r, const std::vector<truth::Point> &points, double off, int n_fixed)
{
    Tables t;
    for (size_t i = 0; i < points.size(); i++) {
        const truth::Point &p = points[i];
        const GridPlace g = *r.grid({p.latitude, p.longitude});
        const bool fixed = (int)i < n_fixed;
        const double by = fixed ? 0.0 : off * ((double)i - 1.5);
        t.stations += p.name + " " + truth::number(g.north + by) + " " + truth::number(g.east - by) + " " +
                      truth::number(p.height) + (fixed ? " fixed\n" : " free\n");
        for (const truth::Point &q : points) {
            if (q.name == p.name) continue;
            const truth::Sight s = truth::sight(r.ellipsoid(), p, q, h1, h2);
            const std::string ends = p.name + " " + q.name + " ", heights = " 1.61 2.05\n";
            t.distances += ends + truth::number(s.length) + " 0.005" + heights;
            t.directions += ends + truth::circle(s.azimuth + 0.4 * (double)i) + " 0.0003" + heights;
            t.zeniths += ends + truth::text("%.10f", 100.0 - s.elevation / truth::gon) + " 0.001" + heights;
        }
    }
    return t;
}

void expect_truth(const SolvedNetwork &solved, const Reference &r, const std::vector<truth::Point> &points,
                  double tolerance, bool heights)
{
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    for (const truth::Point &p : points) {
        const GridPlace g = *r.grid({p.latitude, p.longitude});
        const PointResult &found = solved.point(p.name);
        EXPECT_NEAR(found.adjusted[0].value(), g.north, tolerance) << p.name;
        EXPECT_NEAR(found.adjusted[1].value(), g.east, tolerance) << p.name;
        if (heights) {
            EXPECT_NEAR(found.adjusted[2].value(), p.height, tolerance) << p.name;
        }
        ASSERT_TRUE(found.earth);
        EXPECT_NEAR(found.earth->latitude * degree, p.latitude, tolerance / 6e6) << p.name;
        EXPECT_NEAR(found.earth->longitude * degree, p.longitude, tolerance / 6e6 * 2) << p.name;
    }
}

const ResidualResult &first_of(const SolvedNetwork &solved, const std::string &kind)
{
    for (const ResidualResult &r : solved.results().residuals)
        if (r.kind == kind) return r;
    ADD_FAILURE() << "no " << kind;
    static const ResidualResult none;
    return none;
}

} // namespace

// Slopes and directions up to 50 km in four projections, with first coordinates that are up to 70 m off.
TEST(GridNetwork, GivesThePlacesBetweenWhichSlopesAndDirectionsWereMeasured)
{
    for (const Area &area : areas) {
        SCOPED_TRACE(area.system);
        const Reference r = truth::open(area.system);
        const std::vector<truth::Point> points = five(area);
        const SolvedNetwork solved = solve_text(head(area.system, 2) + observe(r, points, 20.0, 2).plane());
        expect_truth(solved, r, points, 1e-4, false);
        for (const ResidualResult &v : solved.results().residuals)
            EXPECT_NEAR(v.residual, 0.0, v.unit == "m" ? 1e-4 : 0.1e-4 * truth::gon) << v.kind << v.from << v.to;
    }
}

TEST(GridNetwork, ShowsReadingCorrectionsAndReducedValue)
{
    const Reference r = truth::open("EPSG:25832");
    const std::vector<truth::Point> points = five(areas[0]);
    Tables t = observe(r, points, 0.0, 2);
    const truth::Sight s = truth::sight(r.ellipsoid(), points[0], points[1]);
    t.azimuths += "A B " + truth::circle(s.azimuth) + " 0.001\n";
    const SolvedNetwork solved = solve_text(head("EPSG:25832", 2) + t.plane() + Tables::table("azimuths", t.azimuths));
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    const ResidualResult &d = first_of(solved, "distance");
    const truth::Sight slope = truth::sight(r.ellipsoid(), points[0], points[1], h1, h2);
    const Geodesic line =
        r.geodesic({points[0].latitude, points[0].longitude}, {points[1].latitude, points[1].longitude});
    EXPECT_NEAR(d.raw.value(), slope.length, 1e-8);
    EXPECT_NEAR(d.correction("ellipsoid").value(), line.length - slope.length, 1e-4);
    EXPECT_NEAR(d.value, *d.raw + *d.correction("ellipsoid") + *d.correction("projection"), 1e-9);
    const ResidualResult &a = first_of(solved, "azimuth");
    const GridPlace g = *r.grid({points[0].latitude, points[0].longitude}),
                    h = *r.grid({points[1].latitude, points[1].longitude});
    EXPECT_NEAR(std::remainder(a.value - std::atan2(h.east - g.east, h.north - g.north), 2 * truth::pi), 0.0, 1e-10);
    EXPECT_NEAR(a.correction("convergence").value(), -r.axes({points[0].latitude, points[0].longitude})->convergence,
                1e-12);
    EXPECT_NE(solved.report.find("EPSG:25832, ETRS89 / UTM zone 32N, ellipsoidal heights"), std::string::npos);
    EXPECT_NE(solved.report.find("Reductions into the grid"), std::string::npos);
    EXPECT_NE(to_json(solved.results()).find("\"arc_to_chord\""), std::string::npos);
}

// A sigma of 10 mm of a slope of 5 m over a plan of 3 m is one of 5/3 of it in the plan.
TEST(GridNetwork, TurnsTheStandardDeviationOfASlopeIntoThatOfThePlan)
{
    const SolvedNetwork solved = solve_text("[run]\ndimension = 2\nmode = \"propagation\"\n[crs]\nnetwork = "
                                            "\"local\"\nheight = 0\n[tables]\ntargets = \"\"\"\nname x y z "
                                            "code\nA 0 0 0 fixed\nB 3 4 0 fixed\nP 3 0 4 free\n\"\"\"\ndistances = "
                                            "\"\"\"\nfrom to value sigma\nA P 5 0.010\nB P "
                                            "5.65685 0.010\n\"\"\"\n");
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_NEAR(solved.results().residuals[0].sigma, 0.010 * 5.0 / 3.0, 1e-7);
}

TEST(GridNetwork, TakesALocalSystemWithAScaleAndAHeight)
{
    // A triangle of horizontal sights 600 m above the level: lengths (R + 600) / R times the level's.
    const double factor = 6371000.0 / 6371600.0 * 1.0002;
    const SolvedNetwork solved = solve_text("[run]\ndimension = 2\n[crs]\nnetwork = \"local\"\nheight = 0\nscale = "
                                            "1.0002\n[tables]\ntargets = \"\"\"\nname x y z code "
                                            "code_x\nA 0 0 600 fixed fixed\nB 0 3000.1 600 free fixed\nC 4000.2 0.1 "
                                            "600 free free\n\"\"\"\ndistances = \"\"\"\nfrom to "
                                            "value sigma\nA B 3000 0.002\nA C 4000 0.002\nB C 5000 0.002\n\"\"\"\n");
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    const double arc = std::pow(3000.0, 3) / (24.0 * 6371000.0 * 6371000.0);
    EXPECT_NEAR(solved.point("B").adjusted[1].value(), 3000.0 * factor + arc, 1e-6);
    EXPECT_NEAR(solved.point("C").adjusted[0].value(), 4000.0 * factor, 1e-4);
}

TEST(GridNetwork, TurnsGeocentricBaselinesIntoTheGrid)
{
    const Reference r = truth::open("EPSG:25832");
    const std::vector<truth::Point> points = five(areas[0]);
    Tables t = observe(r, points, 5.0, 1);
    for (const size_t k : {1, 2, 3, 4}) {
        const truth::Vector d = truth::sight(r.ellipsoid(), points[0], points[k]).vector;
        t.baselines += "A " + points[k].name + " " + truth::number(d.x) + " " + truth::number(d.y) + " " +
                       truth::number(d.z) + " 1e-4 1e-4 4e-4 0 0\n";
    }
    const SolvedNetwork solved = solve_text(head("EPSG:25832", 2) + Tables::table("stations", t.stations) +
                                            Tables::table("baselines", t.baselines));
    expect_truth(solved, r, points, 1e-5, false);
    // Z has the larger variance: at 50 degrees it turns into the north with the square of cos(50).
    const double north = 1e-4 + 3e-4 * std::pow(std::cos(points[0].latitude), 2);
    EXPECT_NEAR(first_of(solved, "baseline").sigma, std::sqrt(north), 1e-4 * std::sqrt(north) * 3);
}

// Space on the ellipsoid: one fixed point, slopes, directions, zenith angles, levelling and a baseline.
TEST(EarthNetwork, GivesThePlacesInSpaceOfEveryKind)
{
    for (const Area &area : areas) {
        SCOPED_TRACE(area.system);
        const Reference r = truth::open(area.system);
        const std::vector<truth::Point> points = five(area);
        Tables t = observe(r, points, 3.0, 1);
        t.levels += "A C 400.0 0.001\nC E 300.0 0.001\n";
        const truth::Vector d = truth::sight(r.ellipsoid(), points[0], points[3], 1.2, 1.7).vector;
        t.baselines += "A D " + truth::number(d.x) + " " + truth::number(d.y) + " " + truth::number(d.z) +
                       " 1e-5 1e-5 1e-5 1.2 1.7\n";
        const SolvedNetwork solved =
            solve_text(head(area.system, 3) + t.plane() + Tables::table("vertical_angles", t.zeniths) +
                       Tables::table("height_differences", t.levels) + Tables::table("baselines", t.baselines));
        expect_truth(solved, r, points, 1e-4, true);
    }
}

// Heights that are alike are counted from one nearby; lengths are still those of their height.
TEST(EarthNetwork, KnowsHowHighAPlateauLies)
{
    const Reference r = truth::open("EPSG:25832");
    std::vector<truth::Point> points = five(areas[0]);
    for (size_t k = 0; k < points.size(); k++) points[k].height = 4000.0 + 10.0 * (double)k;
    const Tables t = observe(r, points, 3.0, 1);
    const SolvedNetwork solved =
        solve_text(head("EPSG:25832", 3) + t.plane() + Tables::table("vertical_angles", t.zeniths));
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    for (size_t i = 0; i < points.size(); i++) // one fixed point: the network turns around it
        for (size_t k = 0; k < i; k++) {
            const auto &p = *solved.point(points[i].name).earth->geocentric;
            const auto &q = *solved.point(points[k].name).earth->geocentric;
            EXPECT_NEAR(std::hypot(std::hypot(p[0] - q[0], p[1] - q[1]), p[2] - q[2]),
                        truth::sight(r.ellipsoid(), points[i], points[k]).length, 1e-3);
        }
}

// A chain of 300 km with heights above a geoid that is a tilted plane: the truth comes back within its noise.
TEST(EarthNetwork, RecoversAChainOfThreeHundredKilometresWithinItsNoise)
{
    std::mt19937 random(7);
    std::normal_distribution<double> normal;
    const auto noisy = [&](double value, double sigma) { return value + sigma * normal(random); };
    Crs settings = truth::crs("EPSG:25832");
    settings.ellipsoidal = false;
    settings.geoid = {Geoid::Form::plane, 47.0, 50.0 * degree, 9.0 * degree, 2e-5, -3e-5, ""};
    std::string fault;
    const auto r = Reference::open(settings, &fault);
    ASSERT_TRUE(r) << fault;
    std::vector<truth::Point> points;
    for (int k = 0; k < 13; k++)
        for (int side = 0; side < 2; side++)
            points.push_back({"P" + std::to_string(2 * k + side), (48.7 + 0.21 * k) * degree,
                              (9.0 + 0.1 * k + 0.25 * side) * degree, 300.0 + 97.0 * ((7 * k + 3 * side) % 11)});
    Tables t;
    const auto height = [&](const truth::Point &p) { return p.height - *r->undulation({p.latitude, p.longitude}); };
    for (size_t i = 0; i < points.size(); i++) {
        const truth::Point &p = points[i];
        const GridPlace g = *r->grid({p.latitude, p.longitude});
        const double off = i == 0 ? 0.0 : 1.0;
        t.stations += p.name + " " + truth::number(g.north + off) + " " + truth::number(g.east - off) + " " +
                      truth::number(height(p) + off) + (i == 0 ? " fixed\n" : " free\n");
        for (size_t j = 0; j < points.size(); j++) {
            if (i == j || (i > j ? i - j : j - i) > 3) continue;
            const truth::Point &q = points[j];
            const truth::Sight s = truth::sight(r->ellipsoid(), p, q, h1, h2);
            const std::string ends = p.name + " " + q.name + " ", heights = " 1.61 2.05\n";
            t.distances += ends + truth::number(noisy(s.length, 0.02)) + " 0.02" + heights;
            t.directions +=
                ends + truth::circle(noisy(s.azimuth + 0.1 * (double)i, 0.0003 * truth::gon)) + " 0.0003" + heights;
            t.zeniths +=
                ends + truth::text("%.10f", noisy(100.0 - s.elevation / truth::gon, 0.002)) + " 0.002" + heights;
            if (j == i + 1) t.levels += ends + truth::number(noisy(height(q) - height(p), 0.005)) + " 0.005\n";
        }
        if (i % 5 == 4) {
            const truth::Vector d = truth::sight(r->ellipsoid(), points[0], p).vector;
            t.baselines += "P0 " + p.name + " " + truth::number(noisy(d.x, 0.01)) + " " +
                           truth::number(noisy(d.y, 0.01)) + " " + truth::number(noisy(d.z, 0.01)) +
                           " 1e-4 1e-4 1e-4 0 0\n";
        }
    }
    const SolvedNetwork solved = solve_text(
        head("EPSG:25832", 3,
             "heights = \"orthometric\"\ngeoid = { undulation = 47, latitude = 50, longitude = 9, north = 0.02, "
             "east = -0.03 }") +
        t.plane() + Tables::table("vertical_angles", t.zeniths) + Tables::table("height_differences", t.levels) +
        Tables::table("baselines", t.baselines));
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    double squares = 0;
    int n = 0;
    for (const truth::Point &p : points) {
        const PointResult &found = solved.point(p.name);
        const GridPlace g = *r->grid({p.latitude, p.longitude});
        const double expected[3] = {g.north, g.east, height(p)};
        for (int k = 0; k < 3 && p.name != "P0"; k++, n++) {
            const double e = (found.adjusted[k].value() - expected[k]) / found.deviation[k].value();
            squares += e * e;
            EXPECT_LT(std::fabs(e), 5.0) << p.name << k;
            EXPECT_LT(found.deviation[k].value(), 0.05);
        }
    }
    EXPECT_GT(squares / n, 0.3);
    EXPECT_LT(squares / n, 2.5);
    ASSERT_TRUE(solved.results().variance_test);
    EXPECT_TRUE(solved.results().variance_test->passed()) << solved.results().sigma_aposteriori.value();
}

// Angles and lengths alone, in space and without heights of the datum: what nothing holds is told, and a free datum
// works.
TEST(EarthNetwork, AdjustsAFreeNetwork)
{
    const Reference r = truth::open("EPSG:25832");
    const std::vector<truth::Point> points = five(areas[0]);
    const Tables t = observe(r, points, 0.0, 0);
    const SolvedNetwork solved =
        solve_text(head("EPSG:25832", 3) + t.plane() + Tables::table("vertical_angles", t.zeniths));
    expect_truth(solved, r, points, 1e-4, true);
}

TEST(EarthNetwork, TakesPointsInLongitudeAndLatitudeAndInGeocentricCoordinates)
{
    const Reference r = truth::open("EPSG:25832");
    const truth::Point a{"A", 50.0 * degree, 9.2 * degree, 250.0}, b{"B", 50.01 * degree, 9.21 * degree, 300.0};
    const truth::Vector x = truth::geocentric(r.ellipsoid(), b);
    const double d = truth::sight(r.ellipsoid(), a, b).length;
    const std::string text = "[run]\ndimension = 3\n[crs]\nnetwork = \"EPSG:25832\"\ntargets = \"EPSG:4936\"\nheights "
                             "= \"ellipsoidal\"\nepoch = "
                             "2020.5\n[tables]\n"
                             "stations = \"\"\"\nname latitude longitude z code\nA 50.0 9.2 250 fixed\n\"\"\"\ntargets "
                             "= \"\"\"\nname x y z code sx sy sz\nB " +
                             truth::number(x.x) + " " + truth::number(x.y) + " " + truth::number(x.z) +
                             " weighted 0.01 0.01 0.01\n\"\"\"\ndistances = \"\"\"\nfrom to value sigma\nA B " +
                             truth::number(d) + " 0.001\n\"\"\"\n";
    const SolvedNetwork right = solve_text(text);
    expect_truth(right, r, {a, b}, 1e-5, true);
    EXPECT_EQ(right.results().crs->text(), "EPSG:25832, ETRS89 / UTM zone 32N, ellipsoidal heights, epoch 2020.5");
    const std::string map = to_geojson(right.results(), Axes::yx), kml = to_kml(right.results());
    EXPECT_NE(map.find("[9.2, 50.0, 250.0]"), std::string::npos) << map;
    EXPECT_EQ(map.find("\"crs\""), std::string::npos);
    EXPECT_NE(kml.find("<coordinates>9.2000000000,50.0000000000</coordinates>"), std::string::npos) << kml;
}

TEST(CrsFaults, AreOneLineEachWithPlaceAndRemedy)
{
    const struct {
        const char *crs, *fault;
    } all[] = {
        {"network = \"EPSG:4258\"\nheights = \"ellipsoidal\"",
         "net.inp:4:11: \"EPSG:4258\" is no projected reference system"},
        {"network = \"EPSG:1\"\nheights = \"ellipsoidal\"",
         "net.inp:4:11: \"EPSG:1\" is no reference system that PROJ knows"},
        {"network = \"EPSG:25832\"", "heights is missing in [crs]"},
        {"network = \"EPSG:25832\"\nheights = \"orthometric\"", "net.inp:5:11: orthometric heights need a geoid"},
        {"network = \"EPSG:25832\"\nheights = \"ellipsoidal\"\ngeoid = 3",
         "net.inp:6:9: ellipsoidal heights need no geoid"},
        {"network = \"EPSG:25832\"\nheights = \"orthometric\"\ngeoid = \"no.gtx\"", "does not exist"},
        {"network = \"EPSG:25832\"\nheights = \"ellipsoidal\"\nscale = 0.9", "scale in [crs] is for a local system"},
        {"network = \"EPSG:25832\"\nheights = \"ellipsoidal\"\nstations = \"EPSG:5\"",
         "net.inp:6:12: \"EPSG:5\" is no geographic"},
        {"network = \"local\"", "a local system needs the height of its level"},
        {"heights = \"ellipsoidal\"", "network is missing in [crs]"},
    };
    for (const auto &c : all) {
        Model model;
        Faults faults;
        const std::string text =
            std::string("[run]\ndimension = 2\n[crs]\n") + c.crs +
            "\n[tables]\ntargets = \"\"\"\nname x y z code\nA 5500000 500000 0 fixed\nB 5500100 500000 0 "
            "free\n\"\"\"\ndistances = \"\"\"\nfrom to value sigma\nA B 100 0.01\n\"\"\"\n";
        EXPECT_FALSE(read_network_text("net.inp", text, model, faults)) << c.crs;
        ASSERT_EQ(faults.count(), 1u) << c.crs << (faults.count() > 1 ? faults.lines()[1] : "");
        EXPECT_NE(faults.lines()[0].find(c.fault), std::string::npos) << faults.lines()[0];
    }
}

TEST(CrsFaults, NameWhatARunCannotReduce)
{
    const auto words = [](const std::string &points, const std::string &distance) {
        return solve_text(head("EPSG:25832", 2) + Tables::table("targets", points) +
                          Tables::table("distances", distance))
            .words();
    };
    EXPECT_NE(
        words("name x y code\nA 5500000 500000 fixed\nB 5500100 500000 free\n", "from to value sigma\nA B 100 0.01\n")
            .find("distance A to B: the height of A is missing"),
        std::string::npos);
    EXPECT_NE(words("name x y z code\nA 5500000 500000 0 fixed\nB 5500100 500000 200 free\n",
                    "from to value sigma\nA B 100 0.01\n")
                  .find("shorter than the difference of the heights"),
              std::string::npos);
    EXPECT_NE(words("name x y z code\nA 5e9 500000 0 fixed\nB 5500100 500000 20 free\n",
                    "from to value sigma\nA B 100 0.01\n")
                  .find("A lies outside the area of EPSG:25832"),
              std::string::npos);
}
