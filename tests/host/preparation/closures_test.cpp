// Closures before the adjustment, against sums by hand, propagated errors and their frequency.

#include <algorithm>
#include <cmath>
#include <random>
#include <set>
#include <sstream>

#include "host/earth/reference.h"
#include "host/own/own_run.h"
#include "host/preparation/closures/loops.h"

using namespace vornhost;
using closures::Link;
using closures::Loop;

namespace {

const double pi = std::acos(-1.0), gon = pi / 200.0;

// Roots of the quantiles 0.9973 of the chi-square distributions of 1, 2 and 3 degrees of freedom: by the normal
// distribution, in closed form, and from tables.
const double limit1 = 3.0, limit2 = std::sqrt(-2.0 * std::log(1.0 - 0.9973)), limit3 = 3.7625;

std::string network(int dimension, const std::string &tables)
{
    return "[run]\ndimension = " + std::to_string(dimension) + "\n[tables]\n" + tables;
}

std::string table(const std::string &name, const std::string &rows) { return name + " = '''\n" + rows + "'''\n"; }

const ClosuresResult *find(const Results &results, const std::string &kind)
{
    for (const ClosuresResult &c : results.closures)
        if (c.kind == kind) return &c;
    return nullptr;
}

// The only closure of a kind.
ClosureResult only(const Results &results, const std::string &kind)
{
    const ClosuresResult *c = find(results, kind);
    EXPECT_TRUE(c && c->found == 1 && c->worst.size() == 1) << kind;
    return c && !c->worst.empty() ? c->worst[0] : ClosureResult();
}

std::string joined(const std::vector<std::string> &points)
{
    std::string all;
    for (const std::string &p : points) all += p + " ";
    return all;
}

ClosureResult only_of(const std::string &text, const std::string &kind)
{
    const SolvedNetwork solved = solve_text(text);
    EXPECT_EQ(solved.results().words, std::vector<std::string>());
    return only(solved.results(), kind);
}

// Rank of the loops as rows of +1, -1 over the links.
size_t rank_of(const std::vector<Loop> &loops, size_t n)
{
    std::vector<std::vector<double>> rows;
    for (const Loop &loop : loops) {
        rows.emplace_back(n, 0.0);
        for (const closures::Step &s : loop) rows.back()[(size_t)s.link] += s.forward ? 1.0 : -1.0;
    }
    size_t rank = 0;
    for (size_t column = 0; column < n && rank < rows.size(); column++) {
        size_t pivot = rank;
        for (size_t i = rank; i < rows.size(); i++)
            if (std::fabs(rows[i][column]) > std::fabs(rows[pivot][column])) pivot = i;
        if (std::fabs(rows[pivot][column]) < 1e-9) continue;
        std::swap(rows[pivot], rows[rank]);
        for (size_t i = rank + 1; i < rows.size(); i++) {
            const double f = rows[i][column] / rows[rank][column];
            for (size_t k = 0; k < n; k++) rows[i][k] -= f * rows[rank][k];
        }
        rank++;
    }
    return rank;
}

bool is_closed(const std::vector<Link> &links, const Loop &loop)
{
    for (size_t i = 0; i < loop.size(); i++) {
        const Link &l = links[(size_t)loop[i].link];
        if ((loop[i].forward ? l.b : l.a) != begin_of(links, loop[(i + 1) % loop.size()])) return false;
    }
    return !loop.empty();
}

std::vector<Link> grid(int side)
{
    std::vector<Link> links;
    for (int i = 0; i < side * side; i++) {
        if (i % side + 1 < side) links.push_back({i, i + 1});
        if (i + side < side * side) links.push_back({i, i + side});
    }
    return links;
}

} // namespace

TEST(Loops, AreABasisOfRandomGraphs)
{
    std::mt19937 random(7);
    for (int trial = 0; trial < 40; trial++) {
        const int nodes = 2 + (int)(random() % 12);
        std::vector<Link> links;
        for (int i = 0; i < 25; i++) {
            const int a = (int)(random() % (unsigned)nodes), b = (int)(random() % (unsigned)nodes);
            if (a != b) links.push_back({a, b});
        }
        std::vector<int> part((size_t)nodes);
        for (int i = 0; i < nodes; i++) part[(size_t)i] = i;
        for (const Link &l : links) {
            const int from = part[(size_t)l.a], to = part[(size_t)l.b];
            for (int &p : part) p = p == from ? to : p;
        }
        const size_t parts = std::set<int>(part.begin(), part.end()).size();
        std::vector<Loop> loops;
        EXPECT_EQ(closures::find_loops(nodes, links, trial % 2 ? 0 : -1, [&](const Loop &l) { loops.push_back(l); }),
                  0U);
        EXPECT_EQ(loops.size(), links.size() + parts - (size_t)nodes);
        EXPECT_EQ(rank_of(loops, links.size()), loops.size());
        for (const Loop &loop : loops) EXPECT_TRUE(is_closed(links, loop));
    }
}

TEST(Loops, OfAGridAreItsCells)
{
    const int side = 60;
    const std::vector<Link> links = grid(side);
    size_t cells = 0;
    EXPECT_EQ(closures::find_loops(side * side, links, 0, [&](const Loop &l) { cells += l.size() == 4; }), 0U);
    EXPECT_EQ(cells, (size_t)((side - 1) * (side - 1)));
}

TEST(Loops, AreFoundRoundALongRing)
{
    std::vector<Link> links;
    const int n = 50000;
    links.reserve(n);
    for (int i = 0; i < n; i++) links.push_back({i, (i + 1) % n});
    size_t length = 0;
    EXPECT_EQ(closures::find_loops(n, links, -1, [&](const Loop &l) { length = l.size(); }), 0U);
    EXPECT_EQ(length, (size_t)n);
}

// A ladder whose rungs are far apart: the way back over the tree grows with every rung.
TEST(Loops, ThatTakeTooLongAreCounted)
{
    std::vector<Link> links;
    const int n = 120000, apart = 600;
    for (int i = 0; i + 1 < n; i++) {
        links.push_back({i, i + 1});
        links.push_back({n + i, n + i + 1});
    }
    const size_t rails = links.size();
    for (int i = 0; i < n; i += apart) links.push_back({i, n + i});
    size_t found = 0;
    const size_t missed = closures::find_loops(2 * n, links, 0, [&](const Loop &) { found++; });
    EXPECT_EQ(found + missed, links.size() - rails - 1);
    EXPECT_GT(found, missed);
}

TEST(Closures, OfALevellingLoopIsItsSumWithThreeSigmasAsLimit)
{
    const ClosureResult c = only_of(network(1, table("targets", "name z code\nA 100 fixed\nB 101 free\nC 102 free\n") +
                                                   table("height_differences", "from to value sigma\nA B 1.001 0.01\n"
                                                                               "B C 1.001 0.01\nC A -1.999 0.02\n")),
                                    "levelling");
    EXPECT_NEAR(std::fabs(c.misclosure), 0.003, 1e-12);
    EXPECT_NEAR(c.limit, limit1 * std::sqrt(6.0) * 0.01, 1e-5);
    EXPECT_EQ(c.points.size(), 4U);
    EXPECT_EQ(c.points.front(), c.points.back());
    EXPECT_EQ(c.rows.size(), 3U);
}

TEST(Closures, OfALineBetweenBenchMarksTakesTheirHeights)
{
    const ClosureResult c =
        only_of(network(1, table("targets", "name z code\nA 100 fixed\nP 101 free\nB 102.5 fixed\n") +
                               table("height_differences", "from to h1 h2 value sigma\nA P 0 0 1.100 0.01\n"
                                                           "P B 0.2 0.1 1.310 0.01\n")),
                "levelling");
    const double up = c.points.front() == "A" ? 1.0 : -1.0; // 1.1 + (1.31 + 0.2 - 0.1) - 2.5
    EXPECT_NEAR(up * c.misclosure, 0.010, 1e-9);
    EXPECT_EQ(joined(c.points), up > 0 ? "A P B " : "B P A ");
}

TEST(Closures, TakeWeightedHeightsWithTheirSigmas)
{
    const ClosureResult c =
        only_of(network(1, table("targets", "name z sz code\nA 100 0.03 weighted\nB 101 0 fixed\n") +
                               table("height_differences", "from to value sigma\nA B 1.005 0.04\n")),
                "levelling");
    EXPECT_NEAR(std::fabs(c.misclosure), 0.005, 1e-12);
    EXPECT_NEAR(c.limit, limit1 * 0.05, 1e-5);
}

// Reciprocal sights over 300 m: s sin e + instrument - target, there and back; by the angle an error of s cos e.
TEST(Closures, OfReciprocalSightsAreTheSumOfTheirHeights)
{
    const double there = std::cos(98.5 * gon), back = std::cos(101.4 * gon), across = std::sin(98.5 * gon),
                 across_back = std::sin(101.4 * gon);
    const std::string text = network(
        3, table("stations", "name x y z code\nA 0 0 0 fixed\nB 300 0 7 free\n") +
               table("targets", "name x y z code\nC 0 100 0 fixed\n") +
               table("distances", "from to value sigma h1 h2\nA B 300.02 0.003 1.5 1.6\nB A 300.03 0.004 1.4 1.7\n"
                                  "B A 300.5 0.004 1.4 1.8\n") +
               table("directions", "from to value sigma\nA B 0 0.001\nA C 100 0.001\n") +
               table("vertical_angles", "from to value sigma h1 h2\nA B 98.5 0.001 1.5 1.6\n"
                                        "B A 101.4 0.002 1.4 1.7\n"));
    const ClosureResult c = only_of(text, "heights");
    const double sum = 300.02 * there - 0.1 + 300.03 * back - 0.3;
    EXPECT_NEAR(std::fabs(c.misclosure), std::fabs(sum), 1e-9);
    const double variance = std::pow(there * 0.003, 2) + std::pow(300.02 * across * 0.001 * gon, 2) +
                            std::pow(back * 0.004, 2) + std::pow(300.03 * across_back * 0.002 * gon, 2);
    EXPECT_NEAR(c.limit, limit1 * std::sqrt(variance), 1e-5 * c.limit);
    EXPECT_EQ(c.rows.size(), 4u);
}

// A line of levels does not become one of trigonometric heights, though a sight stands beside it.
TEST(Closures, OfSightsStandBesideThoseOfLevelling)
{
    const SolvedNetwork solved = solve_text(
        network(3, table("stations", "name x y z code\nA 0 0 10 fixed\n") +
                       table("targets", "name x y z code\nB 300 0 12 fixed\nC 0 300 12 fixed\nP 150 150 11 free\n") +
                       table("distances", "from to value sigma\nA P 212.135 0.003\n") +
                       table("directions", "from to value sigma\nA B 0 0.001\nA P 50 0.001\nA C 100 0.001\n") +
                       table("vertical_angles", "from to value sigma\nA P 99.7 0.001\n") +
                       table("height_differences", "from to value sigma\nA P 1.001 0.001\nP B 1.001 0.001\n")));
    EXPECT_NEAR(std::fabs(only(solved.results(), "levelling").misclosure), 0.002, 1e-9);
    const ClosureResult sight = only(solved.results(), "heights");
    EXPECT_NEAR(std::fabs(sight.misclosure), std::fabs(212.135 * std::cos(99.7 * gon) - 1.001), 1e-9);
    EXPECT_EQ(sight.rows.size(), 3u);
}

// Above a sphere the height is d tan e + (1 - k) d^2 / (2 R), with k the coefficient of refraction.
TEST(Closures, OfLongSightsTakeTheCurvatureOfTheEarth)
{
    const auto closure = [](const char *earth, const char *refraction) {
        return only_of("[run]\ndimension = 3\n" + std::string(earth) + "[tables]\n" +
                           table("stations", "name x y z code\nA 0 0 100 fixed\n") +
                           table("targets", "name x y z code\nB 2000 0 100 fixed\nP 2000 10 100 free\n") +
                           table("horizontal_distances",
                                 "from to value sigma\nA B 2000 0.003\nA P 2000 0.003\nB P 10 0.003\n") +
                           table("vertical_angles", std::string("from to value sigma refraction\nA B 100.001 0.001 ") +
                                                        refraction + "\n") +
                           table("height_differences", "from to value sigma\nB P 0 0.001\n"),
                       "heights")
            .misclosure;
    };
    const double level = 2000 * std::tan(-0.001 * gon), bend = 2000.0 * 2000.0 / (2 * 6371000.0);
    EXPECT_NEAR(closure("", "-"), level, 1e-9);
    EXPECT_NEAR(closure("", "0.13"), level - 0.13 * bend, 1e-9);
    EXPECT_NEAR(closure("[earth]\nmodel = \"mixed\"\n", "0.13"), level + 0.87 * bend, 1e-9);
}

// Baselines are geocentric and fixed points in a grid, whose scale is another: the example was simulated without gross
// errors.
TEST(Closures, OnTheEarthTakeItForWhatItIs)
{
    if (!has_proj()) GTEST_SKIP() << "built without PROJ";
    for (const char *name : {"utm_space", "utm_traverse"}) {
        const SolvedNetwork solved = solve_file(std::string(SOURCE_DIR) + "/examples/" + name + ".inp");
        size_t found = 0;
        for (const ClosuresResult &c : solved.results().closures) {
            found += c.found;
            EXPECT_EQ(c.beyond, 0u) << name << " " << c.kind;
        }
        EXPECT_GE(found, 4u) << name;
    }
}

// Two points 1.1 km apart: a zenith angle from a vertical that leans, a slope distance and a levelled difference above
// a geoid that rises, from geocentric coordinates in closed form (GRS 80). Where the lean is an unknown nothing closes.
TEST(Closures, KnowHowTheVerticalLeansAndTheGeoidRises)
{
    if (!has_proj()) GTEST_SKIP() << "built without PROJ";
    const double degree = pi / 180.0, second = degree / 3600.0, xi = 15.0, eta = -9.0;
    const double a = 6378137.0, f = 1.0 / 298.257222101, e2 = f * (2.0 - f);
    const auto prime = [&](double latitude) { return a / std::sqrt(1.0 - e2 * std::pow(std::sin(latitude), 2)); };
    struct Xyz {
        double x, y, z;
    };
    const auto place = [&](double latitude, double longitude, double h) {
        const double n = prime(latitude), c = std::cos(latitude);
        return Xyz{(n + h) * c * std::cos(longitude), (n + h) * c * std::sin(longitude),
                   (n * (1.0 - e2) + h) * std::sin(latitude)};
    };
    const double lat = 50.0 * degree, lon = 9.0 * degree, dlat = 0.009 * degree, dlon = 0.006 * degree;
    const Xyz p = place(lat, lon, 250.0), q = place(lat + dlat, lon + dlon, 300.0);
    const double north = prime(lat) * (1.0 - e2) / (1.0 - e2 * std::pow(std::sin(lat), 2)) * dlat;
    const double rise = 5e-5 * north - 3e-5 * prime(lat) * std::cos(lat) * dlon;
    const double up_lat = lat + xi * second, up_lon = lon + eta * second / std::cos(lat);
    const double dx = q.x - p.x, dy = q.y - p.y, dz = q.z - p.z, s = std::sqrt(dx * dx + dy * dy + dz * dz);
    const double up =
        dx * std::cos(up_lat) * std::cos(up_lon) + dy * std::cos(up_lat) * std::sin(up_lon) + dz * std::sin(up_lat);
    const auto solved = [&](const char *sigma) {
        char text[1500];
        std::snprintf(text, sizeof text, R"([run]
dimension = 3
[crs]
network = "EPSG:25832"
heights = "orthometric"
coordinates = "EPSG:4936"
geoid = { undulation = 47.0, latitude = 50, longitude = 9, north = 0.05, east = -0.03 }
stations = "EPSG:4936"
targets = "EPSG:4936"
[tables]
stations = """
name x y z code
A %.5f %.5f %.5f fixed
"""
targets = """
name x y z code
B %.5f %.5f %.5f free
"""
deflections = """
name xi eta %s
A %g %g %s
"""
distances = """
from to value sigma
A B %.5f 0.001
"""
vertical_angles = """
from to value sigma
A B %.7f 0.0003
"""
height_differences = """
from to value sigma
A B %.6f 0.001
"""
coordinates = """
name x y z sx sy sz
B %.5f %.5f %.5f 0.01 0.01 0.01
"""
)",
                      p.x, p.y, p.z, q.x, q.y, q.z, *sigma ? "sxi seta" : "", xi, eta, sigma, s,
                      std::acos(up / s) / gon, 50.0 - rise, q.x, q.y, q.z);
        return solve_text(text);
    };
    const SolvedNetwork known = solved(""), unknown = solved("1 1");
    EXPECT_EQ(known.results().words, std::vector<std::string>());
    EXPECT_LT(std::fabs(only(known.results(), "heights").misclosure), 0.0005);
    EXPECT_EQ(find(unknown.results(), "heights"), nullptr);
}

TEST(Closures, OfBaselinesHaveALimitInTheirDirection)
{
    const std::string points = table("targets", "name x y z code\nA 0 0 0 fixed\nB 100 0 0 free\nC 0 100 0 free\n");
    const ClosureResult c = only_of(network(3, points + table("baselines", "from to dx dy dz cxx cyy czz\n"
                                                                           "A B 100.06 0 0 1e-4 4e-4 9e-4\n"
                                                                           "B C -100 100 0 1e-4 4e-4 9e-4\n"
                                                                           "C A 0 -100 0 1e-4 4e-4 9e-4\n")),
                                    "baselines");
    EXPECT_NEAR(c.misclosure, 0.06, 1e-9);
    EXPECT_NEAR(c.limit, limit3 * std::sqrt(3.0) * 0.01, 1e-4);
    EXPECT_NEAR(std::fabs(*c.off[0]), 0.06, 1e-9);
    EXPECT_NEAR(*c.length, 100.06 + 100.0 * std::sqrt(2.0) + 100.0, 1e-6);
}

// A to B and A to C have the covariance 0.5 of their variances: B to C by them has a variance of 1, not of 2.
TEST(Closures, TakeTheCovariancesOfASession)
{
    const std::string points = table("targets", "name x y code\nA 0 0 fixed\nB 100 0 free\nC 0 100 free\n");
    const std::string text =
        network(2, points + table("coordinate_differences", "from to dx dy sx sy covariance\nA B 100 0 - - S\n"
                                                            "A C 0 100 - - S\nB C -100.03 100 0.01 0.01 -\n")) +
        "[covariances.S]\nform = \"full\"\nmatrix = '''1e-4 0 0.5e-4 0\n0 1e-4 0 0.5e-4\n0.5e-4 0 1e-4 0\n"
        "0 0.5e-4 0 1e-4'''\n";
    const ClosureResult c = only_of(text, "baselines");
    EXPECT_NEAR(c.misclosure, 0.03, 1e-9);
    EXPECT_NEAR(c.limit, limit2 * std::sqrt(2.0) * 0.01, 1e-6);
}

namespace {

const char four_points[] = "name x y code\nS 0 0 fixed\nA 100 0 fixed\nB 0 100 free\nC -100 -50 free\n";

} // namespace

TEST(Closures, OfAHorizonIsWhatTheAnglesLackOfACircle)
{
    const std::string text =
        network(2, table("stations", four_points) +
                       table("angles", "at from to value sigma\nS A B 100.000 0.001\nS B C 129.5173 0.001\n"
                                       "S C A 170.4857 0.002\n") +
                       table("horizontal_distances", "from to value sigma\nS B 100 0.01\nS C 111.803 0.01\n"));
    const ClosureResult c = only_of(text, "horizon");
    EXPECT_EQ(c.at, "S");
    EXPECT_EQ(c.points.size(), 3U);
    EXPECT_NEAR(std::fabs(c.misclosure), 0.003 * gon, 1e-9);
    EXPECT_NEAR(c.limit, limit1 * std::sqrt(6.0) * 0.001 * gon, 1e-8);
}

TEST(Closures, OfARoundThatEndsWhereItBegan)
{
    const std::string text =
        network(2, table("stations", four_points) +
                       table("directions", "from to value sigma\nS A 0 0.001\nS B 100 0.001\nS C 229.517 0.001\n"
                                           "S A 399.998 0.001\n") +
                       table("horizontal_distances", "from to value sigma\nS B 100 0.01\nS C 111.803 0.01\n"));
    const ClosureResult c = only_of(text, "horizon");
    EXPECT_NEAR(std::fabs(c.misclosure), 0.002 * gon, 1e-9);
    EXPECT_NEAR(c.limit, limit1 * std::sqrt(2.0) * 0.001 * gon, 1e-8);
    EXPECT_EQ(joined(c.points), "A ");
}

TEST(Closures, OfATriangleIsItsSumOfAnglesLessTwoRightOnes)
{
    const std::string text =
        network(2, table("stations", "name x y code\nA 0 0 fixed\nB 100 0 free\nC 0 100 free\n") +
                       table("directions", "from to value sigma\nA B 10 0.001\nA C 110.002 0.001\nB C 20 0.001\n"
                                           "B A 70.001 0.001\nC A 0 0.001\nC B 50.003 0.001\n") +
                       table("azimuths", "from to value sigma\nA B 0 0.001\n") +
                       table("distances", "from to value sigma\nA B 100 0.01\n"));
    const SolvedNetwork solved = solve_text(text);
    const ClosureResult c = only(solved.results(), "angles");
    EXPECT_NEAR(std::fabs(c.misclosure), 0.006 * gon, 1e-9);
    EXPECT_NEAR(c.limit, limit1 * std::sqrt(6.0) * 0.001 * gon, 1e-8);
    EXPECT_EQ(find(solved.results(), "traverse"), nullptr); // one side is measured
}

namespace {

struct Xy {
    double x, y;
};

// A traverse between F and G with the orientations E and H; errors in units of the last place of each reading.
struct Course {
    std::vector<Xy> p = {{-300, 50}, {0, 0}, {120, 40}, {250, -30}, {400, 20}, {700, 90}};
    std::vector<double> distances, angles; // of the sides; at F, the points between and G
    double sigma_distance = 0.004, sigma_angle = 0.003 * gon;

    Course()
    {
        for (size_t i = 1; i + 2 < p.size(); i++) distances.push_back(length(i, i + 1));
        for (size_t i = 1; i + 1 < p.size(); i++) angles.push_back(bearing(i, i + 1) - bearing(i, i - 1));
    }
    double length(size_t a, size_t b) const { return std::hypot(p[b].x - p[a].x, p[b].y - p[a].y); }
    double bearing(size_t a, size_t b) const { return std::atan2(p[b].y - p[a].y, p[b].x - p[a].x); }

    std::string text(bool oriented) const
    {
        static const char *const names[] = {"E", "F", "1", "2", "G", "H"};
        std::ostringstream stations, lengths, turns;
        for (std::ostringstream *s : {&stations, &lengths, &turns}) s->precision(15);
        stations << "name x y code\n";
        lengths << "from to value sigma\n";
        turns << "at from to value sigma\n";
        for (size_t i = 0; i < p.size(); i++)
            stations << names[i] << " " << p[i].x << " " << p[i].y << (i < 2 || i > 3 ? " fixed\n" : " free\n");
        for (size_t i = 0; i < distances.size(); i++)
            lengths << names[i + 1] << " " << names[i + 2] << " " << distances[i] << " " << sigma_distance << "\n";
        for (size_t i = 0; i < angles.size(); i++)
            if (oriented || (i > 0 && i + 1 < angles.size()))
                turns << names[i + 1] << " " << names[i] << " " << names[i + 2] << " "
                      << std::fmod(angles[i] / gon + 800.0, 400.0) << " " << sigma_angle / gon << "\n";
        return network(2, table("stations", stations.str()) + table("horizontal_distances", lengths.str()) +
                              table("angles", turns.str()));
    }
};

} // namespace

TEST(Closures, OfATraverseAreWhatItsSidesAndAnglesAreOffBy)
{
    EXPECT_NEAR(only_of(Course().text(true), "traverse").misclosure, 0.0, 1e-9);
    Course longer;
    longer.distances[1] += 0.05;
    EXPECT_NEAR(only_of(longer.text(true), "traverse").misclosure, 0.05, 1e-9);
    Course bent;
    bent.angles[1] += 1e-4; // at 1: the rest of the course turns about it
    const ClosureResult c = only_of(bent.text(true), "traverse");
    const double arm = c.points.front() == "F" ? bent.length(2, 4) : bent.length(2, 1);
    EXPECT_NEAR(c.misclosure, 1e-4 * arm, 1e-6);
    EXPECT_NEAR(*c.length, bent.distances[0] + bent.distances[1] + bent.distances[2], 1e-9);
    EXPECT_EQ(c.points.size(), 4U);
}

TEST(Closures, OfATraverseWithoutOrientationCompareTheDistanceOfItsEnds)
{
    Course c;
    c.distances[0] += 0.02; // its cosine towards the line F to G counts
    const double cosine = std::cos(c.bearing(1, 2) - c.bearing(1, 4));
    const ClosureResult closure = only_of(c.text(false), "traverse");
    EXPECT_NEAR(closure.misclosure, 0.02 * cosine, 1e-6);
    EXPECT_FALSE(closure.off[0]);
}

// By the limits, 1, 2 or 3 components c have (misclosure / limit)^2 limit_c^2 in the mean c. The mean of 400 has a
// standard deviation of root (2 / 400) = 7 %.
TEST(Closures, AreAsLargeInTheMeanAsTheirLimitsSay)
{
    std::mt19937 random(11);
    std::normal_distribution<double> normal;
    double angles = 0, course = 0, open = 0;
    const int n = 400;
    for (int i = 0; i < n; i++) {
        Course c;
        for (double &d : c.distances) d += c.sigma_distance * normal(random);
        for (double &a : c.angles) a += c.sigma_angle * normal(random);
        const SolvedNetwork oriented = solve_text(c.text(true)), free = solve_text(c.text(false));
        const auto square = [](const ClosureResult &r, double limit) {
            return std::pow(r.misclosure / r.limit * limit, 2.0);
        };
        angles += square(only(oriented.results(), "angles"), limit1) / n;
        course += square(only(oriented.results(), "traverse"), limit2) / n / 2.0;
        open += square(only(free.results(), "traverse"), limit1) / n;
    }
    EXPECT_NEAR(angles, 1.0, 0.25);
    EXPECT_NEAR(course, 1.0, 0.2);
    EXPECT_NEAR(open, 1.0, 0.25);
}

TEST(Closures, OfALengthThatHasAnUnknownConstantAreNotFormed)
{
    const std::string text = Course().text(true);
    std::string unknown = text;
    unknown.replace(unknown.find("horizontal_distances"), 20, "distances");
    EXPECT_NE(find(solve_text(unknown).results(), "traverse"), nullptr);
    std::string rows = unknown.substr(unknown.find("distances = "));
    rows = rows.substr(0, rows.find("angles = "));
    std::string constants = rows;
    for (size_t at = constants.find('\n', constants.find("sigma")) + 1; constants.compare(at, 3, "'''") != 0;) {
        at = constants.find('\n', at);
        constants.insert(at, " yes");
        at += 5;
    }
    constants.replace(constants.find("sigma"), 5, "sigma constants");
    unknown.replace(unknown.find(rows), rows.size(), constants);
    unknown.replace(unknown.find("name x y code\n"), 14, "name x y code group\n");
    for (const char *point : {"E ", "F ", "1 ", "2 ", "G ", "H "}) {
        const size_t row = unknown.find(std::string("\n") + point) + 1;
        unknown.insert(unknown.find('\n', row), " M");
    }
    unknown += table("groups", "name code_scale\nM free\n");
    const SolvedNetwork solved = solve_text(unknown);
    EXPECT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_EQ(find(solved.results(), "traverse"), nullptr);
}

TEST(Closures, HaveTheOneWithAGrossErrorInFront)
{
    std::ostringstream points, rows;
    points << "name z code\n0 0 fixed\n";
    for (int i = 1; i < 60; i++) points << i << " 0 free\n";
    rows << "from to value sigma\n";
    for (int i = 0; i < 60; i++) rows << i << " " << (i + 1) % 60 << " 0 0.001\n";
    for (int i = 0; i < 60; i += 2) rows << i << " " << (i + 2) % 60 << (i == 30 ? " 0.1" : " 0") << " 0.001\n";
    const Results results =
        solve_text(network(1, table("targets", points.str()) + table("height_differences", rows.str()))).results();
    const ClosuresResult *c = find(results, "levelling");
    ASSERT_TRUE(c);
    EXPECT_EQ(c->found, 31U);
    EXPECT_EQ(c->worst.size(), 20U);
    EXPECT_GE(c->beyond, 1U);
    EXPECT_LE(c->beyond, 2U); // its triangle, and the ring where that goes over it
    EXPECT_NEAR(std::fabs(c->worst[0].misclosure), 0.1, 1e-12);
}

TEST(Closures, OfAPlanAreNone)
{
    std::string text = Course().text(true);
    text.replace(0, 6, "[run]\nmode = \"propagation\"\n");
    const SolvedNetwork solved = solve_text(text);
    EXPECT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_TRUE(solved.results().closures.empty());
}
