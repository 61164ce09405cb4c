// Networks of DynAdjust on the ellipsoid: every type of measurement and station, made from known places.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "earth/truth.h"
#include "host/formats/import.h"
#include "host/own/own_run.h"

using namespace vornhost;
using truth::degree;

namespace {

// A line with texts from given columns on, counted from 1.
std::string columns(const std::vector<std::pair<size_t, std::string>> &texts)
{
    std::string line;
    for (const auto &[column, text] : texts) {
        if (line.size() < column - 1) line.resize(column - 1, ' ');
        line.replace(column - 1, std::string::npos, text);
    }
    return line + '\n';
}

// Degrees as D.MMSSsss.
std::string packed(double radians, const char *format = "%d.%02d%010.0f")
{
    const double size = std::fabs(radians) / degree;
    int d = (int)size, m = (int)((size - d) * 60.0);
    double s = ((size - d) * 60.0 - m) * 60.0;
    char text[60];
    std::snprintf(text, sizeof text, format, d, m, s * 1e8);
    return (radians < 0 ? "-" : "") + std::string(text);
}

// Degrees, minutes and seconds in their columns.
std::vector<std::pair<size_t, std::string>> angle(double radians)
{
    double size = std::fabs(radians) / degree;
    const int d = (int)size, m = (int)((size - d) * 60.0);
    const double s = ((size - d) * 60.0 - m) * 60.0;
    return {{77, (radians < 0 ? "-" : " ") + std::to_string(d)},
            {81, std::to_string(m)},
            {83, truth::text(s < 10 ? "%.6f" : "%.5f", s)}};
}

double positive(double radians) { return radians < 0 ? radians + 2 * truth::pi : radians; }

std::string single(char type, const std::string &first, const std::string &second, const std::string &third,
                   const std::vector<std::pair<size_t, std::string>> &value, const char *sigma, bool heights = false)
{
    std::vector<std::pair<size_t, std::string>> texts = {
        {1, std::string(1, type) + " " + first}, {23, second}, {43, third}};
    texts.insert(texts.end(), value.begin(), value.end());
    texts.emplace_back(91, sigma);
    if (heights) {
        texts.emplace_back(100, "1.6000");
        texts.emplace_back(107, "2.3000");
    }
    return columns(texts);
}

std::vector<std::pair<size_t, std::string>> length(double metres) { return {{63, truth::text("%.6f", metres)}}; }

const std::string head = "!#=DNA 3.01 MSR    01.02.2024       GDA2020    01.01.2020         2\n";
const std::string stations_head = "!#=DNA 3.01 STN    01.02.2024       GDA2020    01.01.2020         3\n";

std::string station(const truth::Point &p, const char *codes, double up)
{
    return columns({{1, p.name},
                    {21, codes},
                    {25, "LLH"},
                    {28, packed(p.latitude)},
                    {48, packed(p.longitude)},
                    {68, truth::text("%.4f", p.height + up)}});
}

// A quadrangle of 4 km around (-37.8, 145).
std::vector<truth::Point> town()
{
    return {{"ONE", -37.80 * degree, 145.00 * degree, 120.0},
            {"TWO", -37.77 * degree, 145.02 * degree, 260.0},
            {"THREE", -37.81 * degree, 145.04 * degree, 75.0},
            {"FOUR", -37.83 * degree, 145.015 * degree, 190.0}};
}

struct Town {
    const Reference r = truth::open("EPSG:7855");
    const std::vector<truth::Point> points = town();
    truth::Sight sight(size_t i, size_t k, double h1 = 0, double h2 = 0) const
    {
        return truth::sight(r.ellipsoid(), points[i], points[k], h1, h2);
    }
    double arc(size_t i, size_t k) const
    {
        return r.geodesic({points[i].latitude, points[i].longitude}, {points[k].latitude, points[k].longitude}).length;
    }
};

// Directions from a point to all others, zenith angles, slopes and levelling between the points.
std::string terrestrial(const Town &t, double undulation)
{
    std::string all;
    for (size_t i = 0; i < 4; i++) {
        bool first = true;
        for (size_t k = 0; k < 4; k++) {
            if (k == i) continue;
            const truth::Sight marks = t.sight(i, k);
            const auto reading = angle(positive(std::remainder(marks.azimuth - 0.3, 2 * truth::pi)));
            std::vector<std::pair<size_t, std::string>> set = {{1, first ? "D " + t.points[i].name : "D"}};
            if (first) set.emplace_back(23, t.points[k].name);
            set.emplace_back(43, first ? "2" : t.points[k].name);
            set.insert(set.end(), reading.begin(), reading.end());
            set.emplace_back(91, "0.50");
            all += columns(set);
            first = false;
        }
        for (size_t k = 0; k < 4; k++) {
            if (k == i) continue;
            const truth::Sight s = t.sight(i, k, 1.6, 2.3);
            const std::string &p = t.points[i].name, &q = t.points[k].name;
            all += single('S', p, q, "", length(s.length), "0.0020", true);
            if (k % 2 == 0) all += single('V', p, q, "", angle(0.5 * truth::pi - s.elevation), "2.00", true);
            if (k % 2 == 1) all += single('Z', p, q, "", angle(s.elevation), "2.00", true);
        }
    }
    const auto name = [&](size_t i) { return t.points[i].name; };
    all +=
        single('A', name(0), name(1), name(2), angle(positive(t.sight(0, 2).azimuth - t.sight(0, 1).azimuth)), "0.50");
    all += single('B', name(0), name(1), "", angle(positive(t.sight(0, 1).azimuth)), "0.50");
    all += single('K', name(2), name(3), "", angle(positive(t.sight(2, 3).azimuth)), "0.50");
    all += single('C', name(1), name(2), "", length(t.sight(1, 2).length), "0.0020");
    all += single('E', name(1), name(3), "", length(t.arc(1, 3)), "0.0020");
    all += single('M', name(0), name(3), "", length(t.arc(0, 3) * (1.0 + undulation / 6371000.0)), "0.0020");
    all += single('L', name(0), name(2), "", length(t.points[2].height - t.points[0].height), "0.0010");
    all += single('H', name(3), "", "", length(t.points[3].height - undulation), "0.0010");
    all += single('R', name(1), "", "", length(t.points[1].height), "0.0010");
    all += single('P', name(2), "", "", {{63, packed(t.points[2].latitude)}}, "0.0010");
    all += single('Q', name(2), "", "", {{63, packed(t.points[2].longitude)}}, "0.0010");
    all += columns({{1, "S*" + name(0)}, {23, name(1)}, {63, "9999.0"}, {91, "0.0010"}});
    return all;
}

std::string component(double value, const std::vector<std::string> &covariance)
{
    std::vector<std::pair<size_t, std::string>> texts = {{63, truth::text("%.5f", value)}};
    for (size_t i = 0; i < covariance.size(); i++) texts.push_back({83 + 20 * i, covariance[i]});
    return columns(texts);
}

std::string vectors(const Town &t)
{
    std::string all;
    for (const auto &[i, k] : {std::pair<size_t, size_t>{0, 1}, {1, 2}, {2, 3}, {3, 0}}) {
        const truth::Vector d = t.sight(i, k).vector;
        all += columns({{1, "G " + t.points[i].name}, {23, t.points[k].name}, {63, "1.00"}, {103, "GDA2020"}}) +
               component(d.x, {"1e-6"}) + component(d.y, {"0", "1e-6"}) + component(d.z, {"0", "0", "1e-6"});
    }
    return all;
}

SolvedNetwork solve_dna(const std::string &stations, const std::string &measures, const std::string &geoid,
                        std::vector<std::string> *notes = nullptr)
{
    const Folder folder;
    folder.write("net.stn", stations_head + stations);
    folder.write("net.msr", head + measures);
    Model model;
    std::vector<std::string> unused;
    Faults faults;
    ImportOptions options;
    options.geoid = geoid;
    EXPECT_TRUE(read_any_network(folder.path + "/net.msr", model, notes ? *notes : unused, faults, options));
    for (const std::string &line : faults.lines()) ADD_FAILURE() << line;
    return solve(model);
}

void expect_places(const SolvedNetwork &solved, const Town &t, double tolerance)
{
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    for (const truth::Point &p : t.points) {
        const truth::Vector x = truth::geocentric(t.r.ellipsoid(), p);
        for (size_t k = 0; k < 3; k++)
            EXPECT_NEAR((*solved.point(p.name).earth->geocentric)[k], (&x.x)[k], tolerance) << p.name << k;
    }
}

} // namespace

// One point held; first coordinates 2 m off in height.
TEST(DynAdjust, AdjustsEveryTerrestrialTypeOnTheEllipsoid)
{
    const Town t;
    for (const char *geoid : {"", "7.5"}) {
        const double n = std::atof(geoid);
        std::string stations = station(t.points[0], "CCC", -n);
        for (size_t i = 1; i < 4; i++) stations += station(t.points[i], "FFF", 2.0);
        std::vector<std::string> notes;
        const SolvedNetwork solved = solve_dna(stations, terrestrial(t, n) + vectors(t), geoid, &notes);
        expect_places(solved, t, 1e-4);
        // 12 directions less 4 zeros, 12 slopes, 12 zenith angles, 7 others, P with Q, 3 heights, 12 components; 9
        // coordinates.
        EXPECT_EQ(*solved.results().degrees_of_freedom, 12 - 4 + 12 + 12 + 6 + 2 + 3 + 12 - 9);
        EXPECT_LT(solved.results().sigma_aposteriori.value(), 0.1);
        EXPECT_NE(notes.back().find("left out 1"), std::string::npos) << notes.back();
        const bool told = std::any_of(notes.begin(), notes.end(), [](const std::string &line) {
            return line.find("no geoid is named") != std::string::npos;
        });
        EXPECT_EQ(told, n == 0);
    }
}

// Without vectors: zenith angles, slopes and directions alone hold the network at a fixed point and an azimuth.
TEST(DynAdjust, AdjustsATerrestrialNetworkWithoutVectors)
{
    const Town t;
    std::string stations = station(t.points[0], "CCC", 0.0);
    for (size_t i = 1; i < 4; i++) stations += station(t.points[i], "FFF", 1.0);
    expect_places(solve_dna(stations, terrestrial(t, 0.0), ""), t, 1e-4);
}

TEST(DynAdjust, TakesStationsInEveryForm)
{
    const Town t;
    const auto grid = [&](size_t i) { return *t.r.grid({t.points[i].latitude, t.points[i].longitude}); };
    const truth::Vector x = truth::geocentric(t.r.ellipsoid(), t.points[2]);
    const truth::Point &one = t.points[0];
    const std::string stations = columns({{1, "ONE"},
                                          {21, "CCC"},
                                          {25, "LLh"},
                                          {28, packed(one.latitude)},
                                          {48, packed(one.longitude)},
                                          {68, truth::text("%.4f", one.height)}}) +
                                 columns({{1, "TWO"},
                                          {21, "CCF"},
                                          {25, "UTM"},
                                          {28, truth::text("%.5f", grid(1).east)},
                                          {48, truth::text("%.5f", grid(1).north)},
                                          {68, "250.0"},
                                          {88, "S55"}}) +
                                 columns({{1, "THREE"},
                                          {21, "CCC"},
                                          {25, "XYZ"},
                                          {28, truth::text("%.5f", x.x)},
                                          {48, truth::text("%.5f", x.y)},
                                          {68, truth::text("%.5f", x.z)}}) +
                                 station(t.points[3], "FFF", 3.0);
    // The geoid is 7.5 m above the ellipsoid: of stations in XYZ and LLh the height is taken from there.
    const SolvedNetwork solved = solve_dna(stations, terrestrial(t, 7.5) + vectors(t), "7.5");
    expect_places(solved, t, 1e-4);
    EXPECT_EQ(solved.point("TWO").code[0], "fixed");
    EXPECT_EQ(solved.point("TWO").code[2], "free");
}

// Clusters of points in all three forms, in the network's frame and in another one that PROJ knows.
TEST(DynAdjust, TakesObservedPointsInEveryForm)
{
    const Town t;
    std::string stations;
    for (const truth::Point &p : t.points) stations += station(p, "FFF", 4.0);
    const truth::Point &p = t.points[1], &q = t.points[3];
    const truth::Vector x = truth::geocentric(t.r.ellipsoid(), t.points[0]);
    const auto variances = [](const char *first) {
        return std::vector<std::vector<std::string>>{{first}, {"0", first}, {"0", "0", "1e-6"}};
    };
    const auto three = [&](const std::string &a, const std::string &b, double h, const char *plan) {
        const auto v = variances(plan);
        std::string text;
        for (size_t k = 0; k < 3; k++) {
            std::vector<std::pair<size_t, std::string>> texts = {{63, k == 0   ? a
                                                                      : k == 1 ? b
                                                                               : truth::text("%.5f", h)}};
            for (size_t i = 0; i <= k; i++) texts.push_back({83 + 20 * i, v[k][i]});
            text += columns(texts);
        }
        return text;
    };
    const std::string measures = columns({{1, "Y ONE"}, {23, "XYZ"}, {43, "1"}, {103, "GDA2020"}}) +
                                 three(truth::text("%.5f", x.x), truth::text("%.5f", x.y), x.z, "1e-6") +
                                 columns({{1, "Y TWO"}, {23, "LLh"}, {43, "1"}, {103, "GDA2020"}}) +
                                 three(packed(p.latitude), packed(p.longitude), p.height, "2.5e-20") +
                                 columns({{1, "Y FOUR"}, {23, "LLH"}, {43, "1"}, {103, "GDA2020"}}) +
                                 three(packed(q.latitude), packed(q.longitude), q.height - 7.5, "2.5e-20") + vectors(t);
    expect_places(solve_dna(stations, measures, "7.5"), t, 1e-4);

    // ONE again as it was in ITRF2014 five years before: carried with the plate by PROJ.
    std::string fault;
    const auto way = Conversion::open(t.r, "EPSG:7789", &fault, 2015.0);
    const auto now = (*way)(x.x, x.y, x.z); // where ITRF coordinates x of 2015 are in GDA2020
    ASSERT_TRUE(now);
    const truth::Vector there =
        truth::geocentric(t.r.ellipsoid(), {"", now->at.latitude, now->at.longitude, now->height});
    const std::string moved = columns({{1, "Y ONE"}, {23, "XYZ"}, {43, "1"}, {103, "ITRF2014"}, {123, "01.01.2015"}}) +
                              three(truth::text("%.5f", x.x), truth::text("%.5f", x.y), x.z, "1e-6") + vectors(t);
    const SolvedNetwork carried = solve_dna(stations, moved, "7.5");
    ASSERT_TRUE(carried.adjusted()) << carried.words();
    for (size_t k = 0; k < 3; k++) EXPECT_NEAR((*carried.point("ONE").earth->geocentric)[k], (&there.x)[k], 2e-5) << k;
    EXPECT_GT(std::fabs(there.x - x.x), 0.1);
}
