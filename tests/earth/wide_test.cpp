// A network of 300 km on the ellipsoid with every kind at once: distances, directions, angles, zenith angles with
// refraction, azimuths, horizontal distances, arcs, levelled heights against a geoid grid, scale bars, observed points,
// baselines of another system, and deflections of the verticals. Simulated: it comes back within its noise, and without
// bias.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <random>

#include "adjust/adjustment.h"
#include "adjust/weighted.h"
#include "earth/truth.h"
#include "host/folder.h"
#include "host/own/road.h"
#include "support/network.h"

using namespace vornhost;
namespace va = vornadjust;
using truth::degree;

namespace {

constexpr double second = truth::pi / 648000.0;

double undulation(double latitude, double longitude) // degrees; metres
{
    return 46.0 + 1.5 * (latitude - 49.0) - 2.0 * (longitude - 10.0) + 0.3 * std::sin(3.0 * latitude + 2.0 * longitude);
}

void put_big_endian(std::string &out, const void *value, size_t size)
{
    const auto *bytes = static_cast<const unsigned char *>(value);
    for (size_t k = size; k-- > 0;) out += (char)bytes[k];
}

// The geoid as a GTX file, nodes 0.1 degrees apart from (48, 8).
void write_geoid(const std::string &path)
{
    constexpr double corner[2] = {48.0, 8.0}, step = 0.1;
    constexpr int rows = 41, columns = 51;
    std::string out;
    for (const double x : {corner[0], corner[1], step, step}) put_big_endian(out, &x, sizeof x);
    for (const int n : {rows, columns}) put_big_endian(out, &n, sizeof n);
    for (int i = 0; i < rows; i++)
        for (int k = 0; k < columns; k++) {
            const float n = (float)undulation(corner[0] + step * i, corner[1] + step * k);
            put_big_endian(out, &n, sizeof n);
        }
    std::ofstream(path, std::ios::binary) << out;
}

// The system of the baselines: turned and scaled by some millionths.
truth::Vector turned(const truth::Vector &d)
{
    const double rx = 2e-6, ry = -3e-6, rz = 1e-6, s = 1.0 + 1.5e-6;
    return {s * (d.x + rz * d.y - ry * d.z), s * (d.y - rz * d.x + rx * d.z), s * (d.z + ry * d.x - rx * d.y)};
}

// Two rows of points across 2.7 degrees of latitude, with verticals that lean by up to 12".
std::vector<truth::Point> points_of_chain()
{
    std::vector<truth::Point> points;
    for (int k = 0; k < 14; k++)
        for (int side = 0; side < 2; side++) {
            const int n = 2 * k + side;
            points.push_back({"P" + std::to_string(n), (48.7 + 0.207 * k) * degree,
                              (9.0 + 0.1 * k + 0.25 * side) * degree, 300.0 + 97.0 * ((7 * k + 3 * side) % 11),
                              ((5 * n) % 23 - 11) * second, ((7 * n) % 23 - 11) * second});
        }
    return points;
}

struct Texts {
    std::string stations = "name x y z code group\n", distances = "from to value sigma h1 h2\n", directions = distances,
                zeniths = distances, azimuths = "from to value sigma\n", levels = azimuths, bars = azimuths,
                horizontal = "from to value sigma level\n", angles = "at from to value sigma\n",
                baselines = "from to dx dy dz cxx cyy czz cxy transformation\n", observed = "name x y z sx sy sz\n",
                deflections = "name xi eta sxi seta\n";
};

std::string table(const char *name, const std::string &rows)
{
    return std::string(name) + " = \"\"\"\n" + rows + "\"\"\"\n";
}

constexpr double refraction = 0.13;

void add_sights(Texts &t, const va::Ellipsoid &e, const truth::Point &p, const truth::Point &q, double zero)
{
    const truth::Sight s = truth::sight(e, p, q, 1.61, 2.05);
    const std::string ends = p.name + " " + q.name + " ", heights = " 1.61 2.05\n";
    const double bend = 0.5 * refraction / 6371000.0 * s.length * std::cos(s.elevation);
    t.distances += ends + truth::number(s.length) + " 0.02" + heights;
    t.directions += ends + truth::circle(s.azimuth + zero) + " 0.0003" + heights;
    t.zeniths += ends + truth::text("%.10f", 100.0 - (s.elevation + bend) / truth::gon) + " 0.002" + heights;
}

void add_vector(Texts &t, const va::Ellipsoid &e, const truth::Point &p, const truth::Point &q)
{
    const truth::Vector d = turned(truth::sight(e, p, q).vector);
    t.baselines += p.name + " " + q.name + " " + truth::number(d.x) + " " + truth::number(d.y) + " " +
                   truth::number(d.z) + " 1e-4 1e-4 2e-4 3e-5 G\n";
}

// Everything that is observed once, at point i.
void add_others(Texts &t, const Reference &r, const std::vector<truth::Point> &points, size_t i)
{
    const truth::Point &p = points[i], &q = points[(i + 3) % points.size()], &n = points[(i + 1) % points.size()];
    const va::Ellipsoid &e = r.ellipsoid();
    const std::string ends = p.name + " " + n.name + " ";
    const truth::Sight s = truth::sight(e, p, n), far = truth::sight(e, p, q);
    if (i % 4 == 0) t.azimuths += ends + truth::circle(s.azimuth) + " 0.0005\n";
    if (i % 4 == 1) t.horizontal += ends + truth::number(s.length * std::cos(s.elevation)) + " 0.02 marks\n";
    if (i % 4 == 2) t.bars += ends + truth::number(s.length) + " 0.02\n";
    if (i % 4 == 3)
        t.horizontal += ends + truth::number(r.geodesic({p.latitude, p.longitude}, {n.latitude, n.longitude}).length) +
                        " 0.02 ellipsoid\n";
    if (i % 2 == 0 && i + 3 < points.size())
        t.angles += p.name + " " + n.name + " " + q.name + " " + truth::circle(far.azimuth - s.azimuth) + " 0.0004\n";
    const truth::Vector x = truth::geocentric(e, p);
    if (i % 7 == 0)
        t.observed += p.name + " " + truth::number(x.x) + " " + truth::number(x.y) + " " + truth::number(x.z) +
                      " 0.01 0.01 0.02\n";
    // Half of the verticals are known, half have 2" for a standard deviation.
    t.deflections += p.name + " " + truth::number(p.xi / second) + " " + truth::number(p.eta / second) +
                     (i % 2 == 0 ? " 2 2\n" : " - -\n");
}

std::string wide_network(const Reference &r, const std::vector<truth::Point> &points, const std::string &geoid)
{
    Texts t;
    const auto height = [&](const truth::Point &p) { return p.height - *r.undulation({p.latitude, p.longitude}); };
    for (size_t i = 0; i < points.size(); i++) {
        const truth::Point &p = points[i];
        const GridPlace g = *r.grid({p.latitude, p.longitude});
        t.stations += p.name + " " + truth::number(g.north) + " " + truth::number(g.east) + " " +
                      truth::number(height(p)) + " free T\n";
        for (size_t j = i < 3 ? 0 : i - 3; j < std::min(i + 4, points.size()); j++)
            if (j != i) add_sights(t, r.ellipsoid(), p, points[j], 0.1 * (double)i);
        if (i + 1 < points.size())
            t.levels +=
                p.name + " " + points[i + 1].name + " " + truth::number(height(points[i + 1]) - height(p)) + " 0.005\n";
        if (i + 5 < points.size() && i % 2 == 0) add_vector(t, r.ellipsoid(), p, points[i + 5]);
        add_others(t, r, points, i);
    }
    return "[run]\ndimension = 3\n[crs]\nnetwork = \"EPSG:25832\"\nheights = \"orthometric\"\ngeoid = \"" + geoid +
           "\"\ncoordinates = \"EPSG:4936\"\nepoch = 2024.5\n[tables]\n" + table("stations", t.stations) +
           table("groups", "name refraction s_refraction code_refraction\nT 0.13 0.05 weighted\n") +
           table("distances", t.distances) + table("directions", t.directions) + table("vertical_angles", t.zeniths) +
           table("azimuths", t.azimuths) + table("height_differences", t.levels) + table("scale_bars", t.bars) +
           table("horizontal_distances", t.horizontal) + table("angles", t.angles) +
           table("transformations", "name code\nG free\n") + table("baselines", t.baselines) +
           table("coordinates", t.observed) + table("deflections", t.deflections);
}

// An error for each observed value, from its standard deviation or the covariance of its group.
void disturb(va::Model &m, std::mt19937_64 &random)
{
    std::normal_distribution<double> normal;
    std::vector<std::vector<double>> groups;
    for (const va::Group &g : m.groups) {
        const auto n = (size_t)g.size;
        std::vector<double> l(m.covariance.begin() + (std::ptrdiff_t)g.first,
                              m.covariance.begin() + (std::ptrdiff_t)(g.first + n * n)),
            z(n), error(n, 0.0);
        ASSERT_TRUE(va::cholesky(g.size, l.data()));
        for (double &x : z) x = normal(random);
        for (size_t i = 0; i < n; i++)
            for (size_t k = 0; k <= i; k++) error[i] += l[i * n + k] * z[k];
        groups.push_back(error);
    }
    for (va::Observation &o : m.observations)
        for (int c = 0; c < va::components(o.kind, m.frame.space); c++)
            o.value[c] +=
                o.group < 0 ? o.sigma[c] * normal(random) : groups[(size_t)o.group][(size_t)o.place + (size_t)c];
}

int simulations()
{
    const char *const wanted = std::getenv("VORN_SIMULATIONS");
    return wanted ? std::atoi(wanted) : 40;
}

} // namespace

TEST(WideNetwork, ComesBackWithinItsNoiseAndWithoutBias)
{
    const Folder folder;
    const std::string geoid = folder.path + "/geoid.gtx";
    write_geoid(geoid);
    Crs settings = truth::crs("EPSG:25832");
    settings.ellipsoidal = false;
    settings.geoid.form = Geoid::Form::grid;
    settings.geoid.file = geoid;
    std::string fault;
    const auto r = Reference::open(settings, &fault);
    ASSERT_TRUE(r) << fault;
    const std::vector<truth::Point> points = points_of_chain();
    EXPECT_GT(
        r->geodesic({points[0].latitude, points[0].longitude}, {points[27].latitude, points[27].longitude}).length,
        300e3);

    // Without errors the truth is the solution.
    Model network;
    Faults faults;
    ASSERT_TRUE(read_network_text("wide.inp", wide_network(*r, points, geoid), network, faults)) << faults.lines()[0];
    Recorder told;
    const OwnOutcome exact = run_own(network, told, false, {});
    ASSERT_TRUE(exact.adjusted()) << (exact.run.words.empty() ? "" : exact.run.words[0]);
    EXPECT_EQ(exact.adjustment.open, 0);
    EXPECT_LT(exact.adjustment.variance_factor, 1e-4);
    const va::Model &truth_model = exact.numbers.model;
    for (int p = 0; p < truth_model.n_points; p++)
        for (int k = 0; k < 3; k++)
            EXPECT_NEAR(truth_model.value[3 * (size_t)p + (size_t)k], truth_model.start[3 * (size_t)p + (size_t)k],
                        5e-5);

    const int n = simulations(), unknowns = truth_model.n_unknowns();
    std::mt19937_64 random(20240501);
    std::vector<double> sum((size_t)unknowns, 0.0), squares((size_t)unknowns, 0.0);
    double factors = 0;
    va::Options options;
    options.residuals = false;
    options.a_priori = true;
    options.limits.length = 1e-6;
    for (int s = 0; s < n; s++) {
        va::Model m = truth_model;
        disturb(m, random);
        const va::Outcome outcome = va::adjust(&m, options);
        ASSERT_EQ(outcome.status, va::Status::adjusted);
        factors += outcome.variance_factor;
        for (int u = 0; u < unknowns; u++) {
            if (!m.estimated(u) || !(outcome.statistics.deviation[(size_t)u] > 0.0)) continue;
            const double e =
                (m.value[(size_t)u] - truth_model.value[(size_t)u]) / outcome.statistics.deviation[(size_t)u];
            sum[(size_t)u] += e;
            squares[(size_t)u] += e * e;
        }
    }
    // Means of n normalised errors have a standard deviation of 1 / sqrt(n), their squares one of sqrt(2 / n).
    double all = 0, count = 0, largest = 0;
    for (int u = 0; u < unknowns; u++) {
        if (squares[(size_t)u] == 0.0) continue;
        all += squares[(size_t)u] / n;
        count += 1.0;
        largest = std::max(largest, std::fabs(sum[(size_t)u]) / std::sqrt((double)n));
        EXPECT_LT(std::fabs(sum[(size_t)u]) / std::sqrt((double)n), 4.5) << "unknown " << u;
        EXPECT_NEAR(squares[(size_t)u] / n, 1.0, 5.5 * std::sqrt(2.0 / n)) << "unknown " << u;
    }
    const double f = exact.adjustment.redundancy;
    EXPECT_NEAR(all / count, 1.0, 4.0 * std::sqrt(2.0 / n)); // unknowns are correlated
    EXPECT_NEAR(factors / n, 1.0, 4.5 * std::sqrt(2.0 / f / n));
    RecordProperty("simulations", n);
    std::printf(
        "%d simulations, %d unknowns, redundancy %d: variance factor %.4f, mean square %.4f, largest bias %.2f\n", n,
        (int)count, (int)f, factors / n, all / count, largest);
}
