// One network written in every unit, on both roads: the numbers of the results are the same, and the reports are in the
// units of the file.

#include <gtest/gtest.h>

#include <math.h>

#include <functional>

#include "host/own/own_run.h"

using namespace vornhost;

namespace {

const double pi = 3.14159265358979323846;

// How a file writes: values and standard deviations, from metres and radians.
struct Writing {
    std::string units; // lines of [units]
    double length, sigma_length;
    std::function<std::string(double)> angle;
    double sigma_angle;
};

std::string figures(double x)
{
    char text[40];
    snprintf(text, sizeof text, "%.15g", x);
    return text;
}

std::function<std::string(double)> parts(double circle)
{
    return [circle](double radians) { return figures(radians / (2 * pi) * circle); };
}

std::string dashes(double radians)
{
    const double seconds = radians * 648000 / pi, minutes = floor(seconds / 60);
    return figures(floor(minutes / 60)) + "-" + figures(fmod(minutes, 60)) + "-" + figures(seconds - minutes * 60);
}

// Instrument S between four marks of known coordinates, and P; noise of a few sigmas in metres and radians.
std::string network(const Writing &w, const std::string &more = "")
{
    const double marks[5][3] = {{0, 0, 0}, {90, 10, 4}, {100, 95, -3}, {-5, 110, 8}, {40, 90, 2}}, at[3] = {45, 50, 1};
    const auto length = [&](double metres) { return " " + figures(metres / w.length); };
    std::string points = "name x y z sx code\n", distances = "from to value sigma h1\n",
                directions = "from to value sigma\n", verticals = directions;
    for (int i = 0; i < 5; i++) {
        const std::string name = i < 4 ? "M" + std::to_string(i) : "P";
        const double dx = marks[i][0] - at[0], dy = marks[i][1] - at[1], dz = marks[i][2] - at[2];
        const double noise = (i % 2 ? 1 : -1) * 1e-3;
        points += name + length(marks[i][0]) + length(marks[i][1]) + length(marks[i][2]) + " " +
                  figures(0.002 / w.sigma_length) +
                  (i == 3  ? " weighted\n"
                   : i < 4 ? " fixed\n"
                           : " free\n");
        distances += "S " + name + length(sqrt(dx * dx + dy * dy + dz * dz) + noise) + " " +
                     figures(0.002 / w.sigma_length) + " 0\n";
        directions += "S " + name + " " + w.angle(fmod(atan2(dy, dx) + 2 * pi + noise / 50, 2 * pi)) + " " +
                      figures(2e-5 / w.sigma_angle) + "\n";
        verticals += "S " + name + " " + w.angle(pi / 2 - atan2(dz, hypot(dx, dy)) + noise / 70) + " " +
                     figures(3e-5 / w.sigma_angle) + "\n";
    }
    points = points.replace(points.find("sx"), 2, "sx sy sz");
    for (size_t i = points.find('\n') + 1; i < points.size(); i = points.find('\n', i) + 1) {
        const size_t code = points.rfind(' ', points.find('\n', i)), sigma = points.rfind(' ', code - 1);
        const std::string s = points.substr(sigma, code - sigma);
        points.insert(code, s + s);
    }
    return "[run]\ndimension = 3\n[units]\n" + w.units + "[tables]\nstations = '''\nname x y z\nS" + length(44) +
           length(51) + length(0) + "\n'''\ntargets = '''\n" + points + "'''\ndistances = '''\n" + distances +
           "'''\ndirections = '''\n" + directions + "'''\nvertical_angles = '''\n" + verticals + "'''\n" + more;
}

const Writing metres = {"", 1, 1, parts(400), pi / 200};

void expect_same(const SolvedNetwork &a, const SolvedNetwork &b)
{
    ASSERT_TRUE(a.adjusted()) << a.words();
    ASSERT_TRUE(b.adjusted()) << b.words();
    EXPECT_NEAR(*a.results().sigma_aposteriori, *b.results().sigma_aposteriori, 1e-7);
    for (const char *name : {"S", "P", "M3"})
        for (int k = 0; k < 3; k++) {
            EXPECT_NEAR(*a.point(name).adjusted[k], *b.point(name).adjusted[k], 1e-8) << name << k;
            EXPECT_NEAR(*a.point(name).deviation[k], *b.point(name).deviation[k], 1e-9) << name << k;
        }
    ASSERT_EQ(a.results().residuals.size(), b.results().residuals.size());
    for (size_t i = 0; i < a.results().residuals.size(); i++) {
        const ResidualResult &p = a.results().residuals[i], &q = b.results().residuals[i];
        EXPECT_NEAR(p.value, q.value, 1e-9) << i;
        EXPECT_NEAR(p.sigma, q.sigma, 1e-12) << i;
        EXPECT_NEAR(p.residual, q.residual, 1e-9) << i;
    }
}

void expect_as_in_metres(const Writing &w)
{
    for (const Solver solver : {Solver::Sparse, Solver::Compact}) {
        SCOPED_TRACE(solver == Solver::Sparse ? "sparse" : "compact");
        expect_same(solve_text(network(metres), solver), solve_text(network(w), solver));
    }
}

bool has(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

} // namespace

TEST(LengthUnits, ChangeNoResult)
{
    const std::pair<const char *, double> units[] = {{"mm", 0.001},  {"cm", 0.01},     {"km", 1000},
                                                     {"ft", 0.3048}, {"inch", 0.0254}, {"us_ft", 1200.0 / 3937.0}};
    for (const auto &[word, size] : units) {
        SCOPED_TRACE(word);
        expect_as_in_metres({"length = '" + std::string(word) + "'\n", size, size, parts(400), pi / 200});
        expect_as_in_metres(
            {"length = '" + std::string(word) + "'\nsigma_length = 'mm'\n", size, 0.001, parts(400), pi / 200});
    }
}

TEST(AngleUnits, ChangeNoResult)
{
    const std::pair<const char *, double> units[] = {
        {"mgon", 400000}, {"degree", 360}, {"radian", 2 * pi}, {"arc_second", 1296000}, {"mil", 6400}};
    for (const auto &[word, circle] : units) {
        SCOPED_TRACE(word);
        const std::string unit = "angle = '" + std::string(word) + "'\n";
        expect_as_in_metres({unit, 1, 1, parts(circle), 2 * pi / circle});
        expect_as_in_metres({unit + "sigma_angle = 'cc'\n", 1, 1, parts(circle), pi / 2000000});
        expect_as_in_metres({unit + "sigma_angle = 'mgon'\n", 1, 1, parts(circle), pi / 200000});
    }
}

TEST(AngleUnits, MayBeDegreesMinutesAndSeconds)
{
    expect_as_in_metres({"angle = 'dms'\n", 1, 1, dashes, pi / 648000});
    expect_as_in_metres({"angle = 'dms'\nsigma_angle = 'mgon'\n", 1, 1, dashes, pi / 200000});
}

TEST(AngleUnits, OfStandardDeviationsMayDifferFromPackedDegrees)
{
    const auto packed = [](double radians) {
        const double seconds = radians * 648000 / pi, minutes = floor(seconds / 60), degrees = floor(minutes / 60);
        return figures(degrees + (minutes - 60 * degrees) / 100 + (seconds - 60 * minutes) / 10000);
    };
    expect_as_in_metres({"angle = 'packed_degree'\nsigma_angle = 'arc_second'\n", 1, 1, packed, pi / 648000});
}

TEST(UnitsOfStandardDeviations, AreThoseOfTheSectionSigmaToo)
{
    std::string text = network({"sigma_length = 'mm'\nsigma_angle = 'cc'\n", 1, 0.001, parts(400), pi / 2000000});
    const std::string cell = " 2 0\n"; // of distances: 2 mm, and no height of the instrument
    size_t replaced = 0;
    for (size_t at = text.find(cell); at != std::string::npos; at = text.find(cell, at), replaced++)
        text.replace(at, cell.size(), " - 0\n");
    ASSERT_EQ(replaced, 5u);
    expect_same(solve_text(network(metres)), solve_text("[sigma]\ndistances = 2\n" + text));
}

TEST(UnitsOfTheReport, AreThoseOfTheFile)
{
    const SolvedNetwork feet = solve_text(network({"length = 'ft'\n", 0.3048, 0.3048, parts(400), pi / 200}));
    EXPECT_TRUE(has(feet.report, "lengths in ft, angles in gon; precision in ft and mgon\n"));
    EXPECT_TRUE(has(feet.report, "295.27559")); // 90 m
    const SolvedNetwork dms = solve_text(network({"angle = 'dms'\n", 1, 1, dashes, pi / 648000}));
    EXPECT_TRUE(has(dms.report, "lengths in m, angles in d-m-s; precision in mm and arcsec\n"));
    const double vertical = (pi / 2 - atan2(-1, hypot(45, 50)) - 1e-3 / 70) * 648000 / pi; // to M0, below 92 degrees
    ASSERT_GT(vertical, 90 * 3600);
    char text[40];
    snprintf(text, sizeof text, "%d-%02d-%05.2f", (int)(vertical / 3600), (int)(vertical / 60) % 60,
             fmod(vertical, 60));
    EXPECT_TRUE(has(dms.report, text)) << text << "\n" << dms.report;
    const SolvedNetwork mil = solve_text(network({"angle = 'mil'\n", 1, 1, parts(6400), pi / 3200}));
    EXPECT_TRUE(has(mil.report, "angles in mil; precision in mm and 0.001 mil\n"));
    snprintf(text, sizeof text, "%.4f", vertical / 648000 * 3200);
    EXPECT_TRUE(has(mil.report, text)) << text;
}

TEST(UnitsOfTheEnginesReport, AreSaidWhereTheyAreNotThoseOfTheFile)
{
    const auto report = [](const Writing &w) { return solve_text(network(w), Solver::Compact).report; };
    const std::string both = "Lengths in this report are metres\nAngles in this report are gon\n\n";
    EXPECT_EQ(report({"length = 'ft'\nangle = 'mil'\n", 0.3048, 0.3048, parts(6400), pi / 3200}).rfind(both, 0), 0u);
    EXPECT_EQ(report({"angle = 'dms'\n", 1, 1, dashes, pi / 648000}).rfind("Angles in this report are degrees\n\n", 0),
              0u);
    EXPECT_FALSE(has(report(metres), "in this report"));
    EXPECT_FALSE(
        has(report({"length = 'mm'\nangle = 'degree'\n", 0.001, 0.001, parts(360), pi / 180}), "in this report"));
}

// Parts per million are taken of distances between the first coordinates.
TEST(LengthUnits, ChangeNothingInAPlannedNetwork)
{
    const auto planned = [](const std::string &unit, double size) {
        const auto length = [&](double metres) { return " " + figures(metres / size); };
        std::string text = "[run]\ndimension = 2\nmode = 'propagation'\n[units]\nlength = '" + unit +
                           "'\n[tables]\ntargets = '''\nname x y code\n";
        text += "A" + length(0) + length(0) + " fixed\nB" + length(900) + length(0) + " fixed\nP" + length(400) +
                length(700) + " free\n'''\ndistances = '''\nfrom to value sigma ppm\n";
        for (const char *from : {"A", "B"}) text += std::string(from) + " P -" + length(0.001) + " 5\n";
        return solve_text(text + "'''\n");
    };
    const SolvedNetwork m = planned("m", 1), ft = planned("us_ft", 1200.0 / 3937.0);
    ASSERT_TRUE(m.adjusted()) << m.words();
    ASSERT_TRUE(ft.adjusted()) << ft.words();
    ASSERT_EQ(ft.results().residuals.size(), 2u);
    EXPECT_NEAR(ft.results().residuals[0].sigma, 0.001 + 5e-6 * hypot(400, 700), 1e-12);
    for (int k = 0; k < 2; k++) EXPECT_NEAR(*m.point("P").deviation[k], *ft.point("P").deviation[k], 1e-12);
}
