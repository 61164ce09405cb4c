// Observations that count from other axes than the network: verticals that lean, vectors and points of other reference
// systems.

#include <gtest/gtest.h>

#include <algorithm>

#include "earth/truth.h"
#include "host/formats/plate_motion.h"
#include "host/own/own_run.h"
#include "host/own/simulate.h"
#include "host/results/csv_writer.h"
#include "host/results/dxf_writer.h"
#include "host/results/geojson_writer.h"
#include "host/results/html_page.h"
#include "host/results/json_writer.h"
#include "host/results/kml_writer.h"
#include "host/results/svg_writer.h"

using namespace vornhost;
using truth::degree;

namespace {

constexpr double second = truth::pi / 648000.0;

// Four points about 3 km apart in the mountains, with verticals that lean by up to 25".
std::vector<truth::Point> mountains()
{
    return {{"A", 46.50 * degree, 9.80 * degree, 1800.0, 12 * second, -8 * second},
            {"B", 46.52 * degree, 9.84 * degree, 2900.0, -20 * second, 5 * second},
            {"C", 46.48 * degree, 9.85 * degree, 2100.0, 25 * second, 15 * second},
            {"D", 46.47 * degree, 9.79 * degree, 3300.0, 3 * second, -18 * second}};
}

std::string table(const char *name, const std::string &rows)
{
    return std::string(name) + " = \"\"\"\n" + rows + "\"\"\"\n";
}

std::string head(int dimension = 3, const std::string &more = "")
{
    return "[run]\ndimension = " + std::to_string(dimension) +
           "\n[crs]\nnetwork = \"EPSG:25832\"\nheights = \"ellipsoidal\"\n" + more + "[tables]\n";
}

std::string stations(const Reference &r, const std::vector<truth::Point> &points, size_t n_fixed, double off)
{
    std::string rows = "name x y z code\n";
    for (size_t i = 0; i < points.size(); i++) {
        const GridPlace g = *r.grid({points[i].latitude, points[i].longitude});
        const double by = i < n_fixed ? 0.0 : off;
        rows += points[i].name + " " + truth::number(g.north + by) + " " + truth::number(g.east - by) + " " +
                truth::number(points[i].height + by) + (i < n_fixed ? " fixed\n" : " free\n");
    }
    return table("stations", rows);
}

// Every terrestrial kind from each point to each of the others.
std::string sights(const Reference &r, const std::vector<truth::Point> &points)
{
    std::string d = "from to value sigma h1 h2\n", t = d, z = d, a = d;
    for (size_t i = 0; i < points.size(); i++)
        for (const truth::Point &q : points) {
            if (q.name == points[i].name) continue;
            const truth::Sight s = truth::sight(r.ellipsoid(), points[i], q, 1.5, 1.8);
            const std::string ends = points[i].name + " " + q.name + " ", heights = " 1.5 1.8\n";
            d += ends + truth::number(s.length) + " 0.002" + heights;
            t += ends + truth::circle(s.azimuth + 0.7 * (double)i) + " 0.0003" + heights;
            z += ends + truth::text("%.10f", 100.0 - s.elevation / truth::gon) + " 0.0005" + heights;
            if (i == 0) a += ends + truth::circle(s.azimuth) + " 0.001" + heights;
        }
    return table("distances", d) + table("directions", t) + table("vertical_angles", z) + table("azimuths", a);
}

std::string deflections(const std::vector<truth::Point> &points, const std::string &sigma, double off)
{
    std::string rows = "name xi eta sxi seta\n";
    for (const truth::Point &p : points)
        rows += p.name + " " + truth::number(p.xi / second + off) + " " + truth::number(p.eta / second - off) + " " +
                sigma + " " + sigma + "\n";
    return table("deflections", rows);
}

void expect_places(const SolvedNetwork &solved, const Reference &r, const std::vector<truth::Point> &points,
                   double tolerance)
{
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    for (const truth::Point &p : points) {
        const PointResult &found = solved.point(p.name);
        const truth::Vector x = truth::geocentric(r.ellipsoid(), p);
        ASSERT_TRUE(found.earth && found.earth->geocentric) << p.name;
        for (size_t k = 0; k < 3; k++) EXPECT_NEAR((*found.earth->geocentric)[k], (&x.x)[k], tolerance) << p.name << k;
    }
}

std::string refusals_of(const std::string &text)
{
    Model model;
    Faults faults;
    read_network_text("net.inp", text, model, faults);
    std::string all;
    for (const std::string &line : faults.lines()) all += line + "\n";
    return all;
}

} // namespace

TEST(Deflections, GivenExactlyLeaveTheTruth)
{
    const Reference r = truth::open("EPSG:25832");
    const auto points = mountains();
    const std::string text = head() + stations(r, points, 1, 2.0) + sights(r, points);
    expect_places(solve_text(text + deflections(points, "-", 0.0)), r, points, 1e-5);
    // Without them slopes of 1,000 m over 3 km shift the points by decimetres.
    const SolvedNetwork without = solve_text(text);
    ASSERT_TRUE(without.adjusted());
    EXPECT_GT(without.results().sigma_aposteriori.value(), 5.0);
}

TEST(Deflections, AreUnknownsWhereTheyHaveAStandardDeviation)
{
    const Reference r = truth::open("EPSG:25832");
    const auto points = mountains();
    // All four points known: 5" off at first, zenith angles and directions to known points tell them.
    const SolvedNetwork solved =
        solve_text(head() + stations(r, points, 4, 0.0) + sights(r, points) + deflections(points, "20000", 5.0));
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    ASSERT_EQ(solved.results().deflections.size(), points.size());
    for (size_t i = 0; i < points.size(); i++) {
        const DeflectionResult &d = solved.results().deflections[i];
        EXPECT_EQ(d.point, points[i].name);
        EXPECT_NEAR(d.value[0] / second, points[i].xi / second, 1e-3);
        EXPECT_NEAR(d.value[1] / second, points[i].eta / second, 1e-3);
        EXPECT_LT(d.deviation[0].value(), 2.0 * second);
    }
    EXPECT_NE(solved.report.find("Deflections of the vertical"), std::string::npos);
    EXPECT_NE(to_json(solved.results()).find("\"deflections\""), std::string::npos);
    bool table_there = false;
    for (const CsvTable &t : to_csv(solved.results())) table_there = table_there || t.name == "deflections.csv";
    EXPECT_TRUE(table_there);
}

// One weighted deflection beside one zenith angle of the same weight in angle: each takes half of the contradiction.
TEST(Deflections, ShareAContradictionByTheirWeights)
{
    const Reference r = truth::open("EPSG:25832");
    const std::vector<truth::Point> points = {{"A", 46.5 * degree, 9.8 * degree, 500.0},
                                              {"B", 46.53 * degree, 9.8 * degree, 500.0}};
    const truth::Sight s = truth::sight(r.ellipsoid(), points[0], points[1]);
    const double sigma = 0.001, seconds = sigma * truth::gon / second; // of the zenith angle, gon
    const SolvedNetwork solved = solve_text(
        head() + stations(r, points, 2, 0.0) +
        table("vertical_angles", "from to value sigma\nA B " +
                                     truth::text("%.10f", 100.0 - s.elevation / truth::gon + 0.002) + " 0.001\n") +
        table("deflections", "name xi eta sxi seta\nA 0 0 " + truth::number(seconds) + " 0.001\n"));
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    const double lean = solved.results().deflections.at(0).value[0];
    // A zenith angle that is too large sees a vertical that leans away from the target, which is north: half of 2 mgon.
    EXPECT_NEAR(lean / truth::gon, -0.001, 1e-6);
}

TEST(Deflections, AreRefusedInOneLineWhereTheyCannotAct)
{
    const Reference r = truth::open("EPSG:25832");
    const auto points = mountains();
    const std::string rest = stations(r, points, 1, 0.0) +
                             table("horizontal_distances", "from to value sigma\nA B 3000 0.01\n") +
                             deflections(points, "-", 0.0);
    const std::string plane = refusals_of(head(2) + rest);
    EXPECT_NE(plane.find("deflections of the vertical act in space on the ellipsoid, not in the plane of a grid; write "
                         "dimension = 3"),
              std::string::npos)
        << plane;
    EXPECT_EQ(std::count(plane.begin(), plane.end(), '\n'), 1) << plane;
    const std::string without = refusals_of("[run]\ndimension = 3\n[tables]\n" + rest);
    EXPECT_NE(without.find("needs a projection; write network = \"EPSG:25832\" in [crs]"), std::string::npos)
        << without;
    const std::string twice =
        refusals_of(head() + stations(r, points, 1, 0.0) + table("distances", "from to value sigma\nA B 3000 0.01\n") +
                    table("deflections", "name xi eta\nA 1 2\nA 1 2\nB 700 0\nC 1 -\n"));
    EXPECT_NE(twice.find("the deflection at"), std::string::npos) << twice;
    EXPECT_NE(twice.find("out of all proportion"), std::string::npos) << twice;
    EXPECT_NE(twice.find("write it in arc seconds"), std::string::npos) << twice;
}

namespace {

// Known parameters of a made-up system, geocentric: metres, radians, factor.
const double parameters[7] = {1.2, -0.8, 0.5, 3e-6, -2e-6, 4e-6, 1.0 + 2.5e-6};

truth::Vector in_other_system(const truth::Vector &x)
{
    const double *p = parameters; // the rotation of the kernel to second order: angles of 4e-6 leave 1e-10 m in 50 km
    const double rx = p[3], ry = p[4], rz = p[5], s = p[6];
    const double m[3][3] = {{1 - 0.5 * (ry * ry + rz * rz), rz, -ry},
                            {rx * ry - rz, 1 - 0.5 * (rx * rx + rz * rz), rx},
                            {rx * rz + ry, ry * rz - rx, 1 - 0.5 * (rx * rx + ry * ry)}};
    truth::Vector y;
    for (int k = 0; k < 3; k++) (&y.x)[k] = p[k] + s * (m[k][0] * x.x + m[k][1] * x.y + m[k][2] * x.z);
    return y;
}

// Six points some 30 km apart.
std::vector<truth::Point> six()
{
    std::vector<truth::Point> points;
    for (int k = 0; k < 6; k++)
        points.push_back({std::string(1, (char)('A' + k)), (50.0 + 0.21 * (k % 3)) * degree,
                          (9.0 + 0.33 * (k / 3) + 0.05 * k) * degree, 200.0 + 150.0 * ((k * 5) % 6)});
    return points;
}

std::string vectors(const Reference &r, const std::vector<truth::Point> &points, const std::string &transformation)
{
    std::string rows = "from to dx dy dz cxx cyy czz transformation\n";
    for (size_t i = 0; i < points.size(); i++) {
        const size_t j = (i + 1) % points.size();
        truth::Vector a = truth::geocentric(r.ellipsoid(), points[i]), b = truth::geocentric(r.ellipsoid(), points[j]);
        if (transformation != "-") a = in_other_system(a), b = in_other_system(b);
        rows += points[i].name + " " + points[j].name + " " + truth::number(b.x - a.x) + " " +
                truth::number(b.y - a.y) + " " + truth::number(b.z - a.z) + " 1e-6 1e-6 1e-6 " + transformation + "\n";
    }
    return table("baselines", rows);
}

std::string observed(const Reference &r, const std::vector<truth::Point> &points, const std::string &transformation)
{
    std::string rows = "name x y z sx sy sz transformation\n";
    for (const truth::Point &p : points) {
        const truth::Vector x = in_other_system(truth::geocentric(r.ellipsoid(), p));
        rows += p.name + " " + truth::number(x.x) + " " + truth::number(x.y) + " " + truth::number(x.z) +
                " 0.001 0.001 0.001 " + transformation + "\n";
    }
    return table("coordinates", rows);
}

const std::string geocentric_points = "coordinates = \"EPSG:4936\"\n";

std::string parameter_row(const std::string &code, const std::string &sigmas)
{
    const auto n = [](double x) { return truth::text(" %.12f", x); };
    const double *p = parameters;
    return table("transformations", "name code tx ty tz rx ry rz scale stx sty stz srx sry srz sscale\nG " + code +
                                        n(p[0]) + n(p[1]) + n(p[2]) + n(p[3] / second) + n(p[4] / second) +
                                        n(p[5] / second) + n(1e6 * (p[6] - 1.0)) + sigmas + "\n");
}

} // namespace

// Two fixed points and a third hold the network; rotations and scale of the vectors come out with their precision.
TEST(Transformations, OfVectorsAreThreeRotationsAndAScale)
{
    const Reference r = truth::open("EPSG:25832");
    const auto points = six();
    const SolvedNetwork solved = solve_text(head() + stations(r, points, 3, 1.0) + vectors(r, points, "G") +
                                            table("transformations", "name code\nG free\n"));
    expect_places(solved, r, points, 1e-5);
    ASSERT_EQ(solved.results().transformations.size(), 1u);
    const TransformationResult &t = solved.results().transformations[0];
    for (int k = 3; k < 6; k++) {
        EXPECT_NEAR(t.value[k], parameters[k], 1e-9);
        EXPECT_LT(t.deviation[k].value(), 1e-7);
    }
    EXPECT_NEAR(t.value[6], parameters[6], 1e-9);
    for (int k = 0; k < 3; k++) EXPECT_FALSE(t.deviation[k]);
    // 18 components, 9 coordinates, 4 parameters.
    EXPECT_EQ(*solved.results().degrees_of_freedom, 5);
}

TEST(Transformations, OfPointsAreSevenParameters)
{
    const Reference r = truth::open("EPSG:25832");
    const auto points = six();
    const SolvedNetwork solved =
        solve_text(head(3, geocentric_points) + stations(r, points, 3, 1.0) + vectors(r, points, "-") +
                   observed(r, points, "G") + table("transformations", "name code\nG free\n"));
    expect_places(solved, r, points, 1e-5);
    const TransformationResult &t = solved.results().transformations.at(0);
    // The geocentric shift is far from the network: rotations of 1e-11 are 0.1 mm of it.
    for (int k = 0; k < 3; k++) EXPECT_NEAR(t.value[k], parameters[k], 1e-3) << k;
    for (int k = 3; k < 7; k++) EXPECT_NEAR(t.value[k], parameters[k], 1e-10) << k;
    ASSERT_TRUE(t.here);
    const truth::Vector a = truth::geocentric(r.ellipsoid(), {"", points[0].latitude, points[0].longitude, 0.0}),
                        b = in_other_system(a);
    for (int k = 0; k < 3; k++) {
        EXPECT_NEAR((*t.here)[(size_t)k], (&b.x)[k] - (&a.x)[k], 1e-5);
        EXPECT_LT(t.deviation[k].value(), 0.01);
    }
    EXPECT_NE(solved.report.find("Transformations into the systems of observations"), std::string::npos);
    EXPECT_NE(to_json(solved.results()).find("\"shift_at_first_point\""), std::string::npos);
}

TEST(Transformations, KnownOrWeightedTakeObservationsAsTheyWere)
{
    const Reference r = truth::open("EPSG:25832");
    const auto points = six();
    for (const char *code : {"fixed", "weighted"}) {
        SCOPED_TRACE(code);
        const std::string sigmas = " 0.01 0.01 0.01 0.001 0.001 0.001 0.01";
        // No point is held: the observed ones hold all.
        const SolvedNetwork solved =
            solve_text(head(3, geocentric_points) + stations(r, points, 0, 1.0) + vectors(r, points, "G") +
                       observed(r, points, "G") + parameter_row(code, sigmas));
        expect_places(solved, r, points, 1e-4);
        EXPECT_NEAR(solved.results().sigma_aposteriori.value(), 0.0, 0.01);
        EXPECT_EQ(*solved.results().degrees_of_freedom, 36 - 18); // a weighted parameter brings a row and an unknown
    }
}

// Observed points replace first coordinates of none, and covariances tie them.
TEST(ObservedPoints, AreGeocentricWithTheirCovariance)
{
    const Reference r = truth::open("EPSG:25832");
    const std::vector<truth::Point> points = {six()[0]};
    const truth::Vector x = truth::geocentric(r.ellipsoid(), points[0]);
    const auto row = [&](double dx, double dz, const char *covariance) {
        return "A " + truth::number(x.x + dx) + " " + truth::number(x.y) + " " + truth::number(x.z + dz) + " " +
               covariance + "\n";
    };
    // Two observations with variances 1 and 3 in X, and a correlation of X and Z in the second: the mean of both.
    const std::string text =
        head(3, geocentric_points) + stations(r, points, 0, 5.0) +
        table("coordinates", "name x y z covariance\n" + row(0.004, 0.0, "one") + row(0.0, 0.0, "two")) +
        "[covariances.one]\nform = \"upper\"\nmatrix = \"1e-6 0 0 1e-6 0 1e-6\"\n" +
        "[covariances.two]\nform = \"upper\"\nmatrix = \"3e-6 0 0 1e-6 0 1e-6\"\n";
    const SolvedNetwork solved = solve_text(text);
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_NEAR((*solved.point("A").earth->geocentric)[0], x.x + 0.003, 1e-7);
    EXPECT_NEAR((*solved.point("A").earth->geocentric)[1], x.y, 1e-7);
    EXPECT_EQ(*solved.results().degrees_of_freedom, 3);
    EXPECT_EQ(solved.results().residuals[0].kind, "observed point");
    EXPECT_NEAR(solved.results().residuals[0].value, x.x + 0.004, 1e-8);
    EXPECT_NEAR(solved.results().residuals[0].residual, 0.001, 1e-7);
}

TEST(ObservedPoints, RefuseWhatIsNotGeocentric)
{
    const Reference r = truth::open("EPSG:25832");
    const auto points = six();
    const std::string rest =
        stations(r, points, 0, 5.0) + observed(r, points, "G") + parameter_row("free", " - - - - - - -");
    EXPECT_NE(refusals_of(head(3, "coordinates = \"EPSG:4258\"\n") + rest)
                  .find("EPSG:4258 is no geocentric reference system"),
              std::string::npos);
    EXPECT_NE(refusals_of(head() + rest).find("only geocentric coordinates are transformed"), std::string::npos);
    EXPECT_NE(refusals_of(head(3, geocentric_points) + stations(r, points, 0, 5.0) + observed(r, points, "H"))
                  .find("unknown transformation"),
              std::string::npos);
    EXPECT_NE(refusals_of(head(3, geocentric_points) + stations(r, points, 0, 5.0) + observed(r, points, "G") +
                          parameter_row("weighted", " - - - - - - -"))
                  .find("needs its standard deviation"),
              std::string::npos);
}

// The plate moves by 7 cm a year: PROJ's parameters against those that are published with GDA2020.
TEST(Transformations, FollowAPlateByProj)
{
    const Reference r = truth::open("EPSG:7855");
    std::string fault;
    const auto way = Conversion::open(r, "EPSG:7789", &fault, 2015.0); // ITRF2014
    ASSERT_TRUE(way) << fault;
    const truth::Point p{"P", -36.5 * degree, 146.0 * degree, 300.0};
    const truth::Vector x = truth::geocentric(r.ellipsoid(), p), d{-8600.0, 12600.0, 18800.0};
    const auto from = (*way)(x.x, x.y, x.z), to = (*way)(x.x + d.x, x.y + d.y, x.z + d.z);
    ASSERT_TRUE(from && to);
    const truth::Vector a = truth::geocentric(r.ellipsoid(), {"", from->at.latitude, from->at.longitude, from->height}),
                        b = truth::geocentric(r.ellipsoid(), {"", to->at.latitude, to->at.longitude, to->height});
    EXPECT_NEAR(std::hypot(std::hypot(a.x - x.x, a.y - x.y), a.z - x.z), 5.0 * 0.059, 0.03);
    const auto change = frame_change("ITRF2014", "01.01.2015", "GDA2020");
    ASSERT_TRUE(change);
    const auto published = changed({d.x, d.y, d.z}, *change);
    EXPECT_NEAR(b.x - a.x, published[0], 2e-7); // 5 years are 5 x 365.25 days there
    EXPECT_NEAR(b.y - a.y, published[1], 2e-7);
    EXPECT_NEAR(b.z - a.z, published[2], 2e-7);

    const std::string text =
        "[run]\ndimension = 3\n[crs]\nnetwork = \"EPSG:7855\"\nheights = \"ellipsoidal\"\nepoch = 2020\n[tables]\n" +
        stations(r, {p, {"Q", -36.6 * degree, 146.1 * degree, 200.0}}, 1, 0.0) +
        table("transformations", "name system epoch\nI \"EPSG:7789\" 2015\n") +
        table("baselines", "from to dx dy dz cxx cyy czz transformation\nP Q " + truth::number(d.x) + " " +
                               truth::number(d.y) + " " + truth::number(d.z) + " 1e-6 1e-6 1e-6 I\n");
    const SolvedNetwork solved = solve_text(text);
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    const auto &q = *solved.point("Q").earth->geocentric;
    for (size_t k = 0; k < 3; k++) EXPECT_NEAR(q[k], (&x.x)[k] + published[k], 1e-6) << k;
    EXPECT_NEAR(solved.results().residuals[0].raw.value(), d.x, 1e-9);
}

// Arcs on the ellipsoid and on a geoid 40 m above it.
TEST(Arcs, AreTakenFromTheEllipsoidAndTheGeoid)
{
    const Reference r = truth::open("EPSG:25832");
    const auto points = six();
    for (const bool geoid : {false, true})
        for (const int dimension : {2, 3}) {
            std::string rows = "from to value sigma level\n", levels = "name z sz\n";
            for (size_t i = 0; i < points.size(); i++)
                for (size_t j = 0; j < i; j++) {
                    const truth::Point &p = points[i], &q = points[j];
                    const Geodesic g = r.geodesic({p.latitude, p.longitude}, {q.latitude, q.longitude});
                    // Of the ellipsoid along the line: meridian and prime vertical by Euler at the middle.
                    const double s = std::sin(0.5 * (p.latitude + q.latitude)), w = 1.0 - r.ellipsoid().e2 * s * s;
                    const double n = r.ellipsoid().a / std::sqrt(w), m = n * (1.0 - r.ellipsoid().e2) / w;
                    const double c = std::pow(std::cos(g.azimuth), 2), radius = 1.0 / (c / m + (1.0 - c) / n);
                    const double arc = geoid ? g.length * (1.0 + 40.0 / radius) : g.length;
                    rows += p.name + " " + q.name + " " + truth::number(arc) + " 0.001 " +
                            (geoid ? "geoid\n" : "ellipsoid\n");
                }
            for (const truth::Point &p : points)
                levels += p.name + " " + truth::number(p.height - (geoid ? 40.0 : 0.0)) + " 0.001\n";
            std::string text = "[run]\ndimension = " + std::to_string(dimension) +
                               "\n[crs]\nnetwork = \"EPSG:25832\"\nheights = " +
                               (geoid ? "\"orthometric\"\ngeoid = 40\n" : "\"ellipsoidal\"\n") + "[tables]\n" +
                               stations(r, points, 2, 3.0) + table("horizontal_distances", rows);
            if (dimension == 3) text += table("coordinates", levels);
            const SolvedNetwork solved = solve_text(text);
            ASSERT_TRUE(solved.adjusted()) << solved.words();
            for (const truth::Point &p : points) {
                const PointResult &found = solved.point(p.name);
                EXPECT_NEAR(found.earth->latitude * degree, p.latitude, 1e-4 / 6e6) << geoid << dimension;
                EXPECT_NEAR(found.earth->longitude * degree, p.longitude, 1e-4 / 4e6) << geoid << dimension;
            }
        }
}

// Whoever gets one of the outputs alone knows what its coordinates are.
TEST(Outputs, NameTheReferenceSystemAndItsEpoch)
{
    const Reference r = truth::open("EPSG:25832");
    const auto points = mountains();
    const SolvedNetwork solved =
        solve_text(head(3, "epoch = 2023.25\n") + stations(r, points, 1, 0.0) + sights(r, points));
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    const Results &results = solved.results();
    std::string tables;
    for (const CsvTable &t : to_csv(results)) tables += t.text;
    const std::string outputs[] = {solved.report,
                                   tables,
                                   to_geojson(results, Axes::yx),
                                   to_kml(results),
                                   to_dxf(results, Axes::yx),
                                   to_svg(results, Axes::yx),
                                   to_html(results, {}, "2024-01-01 00:00 UTC")};
    for (const std::string &text : outputs)
        EXPECT_NE(text.find("EPSG:25832, ETRS89 / UTM zone 32N, ellipsoidal heights, epoch 2023.25"), std::string::npos)
            << text.substr(0, 300);
    const std::string json = to_json(results);
    for (const char *part : {"\"network\": \"EPSG:25832\"", "\"heights\": \"ellipsoidal\"", "\"epoch\": 2023.25"})
        EXPECT_NE(json.find(part), std::string::npos) << part;
}

// Drawn without noise, readings are those between the coordinates; reductions into a grid are not undone.
TEST(SimulatedNetwork, DrawsReadingsOnTheEllipsoid)
{
    const Reference r = truth::open("EPSG:25832");
    const auto points = mountains();
    const std::string rest = stations(r, points, 4, 0.0) + deflections(points, "-", 0.0) +
                             table("distances", "from to value sigma h1 h2\nA B - 0.002 1.5 1.8\n") +
                             table("vertical_angles", "from to value sigma h1 h2\nA B - 0.001 1.5 1.8\n") +
                             table("azimuths", "from to value sigma\nA B - 0.001\n");
    const auto drawn = [&](const std::string &text, Model &network) {
        Faults faults;
        EXPECT_TRUE(read_network_text("net.inp", text, network, faults)) << faults.lines()[0];
        return simulate(network, 1, 0.0);
    };
    Model network;
    const std::string planned = "[run]\nmode = \"propagation\"\ndimension = 3\n" + head().substr(20);
    ASSERT_TRUE(drawn(planned + rest, network).empty());
    const truth::Sight s = truth::sight(r.ellipsoid(), points[0], points[1], 1.5, 1.8),
                       marks = truth::sight(r.ellipsoid(), points[0], points[1]);
    EXPECT_NEAR(network.distances.records[0].val, s.length, 1e-6);
    EXPECT_NEAR(network.verticals.records[0].val, 100.0 - s.elevation / truth::gon, 1e-8);
    EXPECT_NEAR(network.azimuths.records[0].val, marks.azimuth / truth::gon, 1e-8);
    Model plane;
    const std::vector<std::string> words =
        drawn("[run]\nmode = \"propagation\"\ndimension = 2\n" + head().substr(20) + stations(r, points, 4, 0.0) +
                  table("distances", "from to value sigma\nA B - 0.002\n"),
              plane);
    ASSERT_FALSE(words.empty());
    EXPECT_EQ(words[0], "readings that are reduced into a grid are not simulated");
}
