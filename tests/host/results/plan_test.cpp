// The plan of a network, and the maps and drawings made of it.

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <map>
#include <sstream>

#include "host/results/dxf_writer.h"
#include "host/results/geojson_writer.h"
#include "host/results/plan.h"
#include "host/results/svg_writer.h"

using namespace vornhost;
using nlohmann::json;

namespace {

PointResult point(const std::string &name, double x, double y, const char *code)
{
    PointResult p;
    p.name = name;
    p.adjusted[0] = x;
    p.adjusted[1] = y;
    p.code[0] = p.code[1] = code;
    return p;
}

ResidualResult distance(const std::string &from, const std::string &to, double normalised, bool beyond)
{
    ResidualResult r;
    r.kind = "distance";
    r.from = from;
    r.to = to;
    r.normalised = normalised;
    r.normal_divided = beyond;
    return r;
}

// A in the south-west, B 30 m north of it (x), C 40 m east of it (y); C has an ellipse that lies 30 degrees from north
// towards east.
Results triangle()
{
    Results r;
    r.title = "Corner <of> & the field";
    r.dimension = 2;
    r.points = {point("A", 100, 200, "fixed"), point("B", 130, 200, "weighted"), point("C", 100, 240, "free")};
    r.points[2].ellipse[0] = EllipseResult{0.004, 0.001, std::atan(1.0) * 2.0 / 3.0};
    r.points[2].station = true;
    r.residuals = {distance("A", "B", 0.5, false), distance("B", "A", -2.4, false), distance("A", "C", -5.0, true),
                   distance("A", "nobody", 1.0, false)};
    return r;
}

// Groups of a DXF file: code and value.
std::vector<std::pair<int, std::string>> groups(const std::string &text)
{
    std::istringstream in(text);
    std::vector<std::pair<int, std::string>> all;
    for (std::string code, value; std::getline(in, code) && std::getline(in, value);)
        all.emplace_back(std::stoi(code), value);
    return all;
}

// The values of the group codes of the n-th entity of a type; those of the first group where a code comes twice.
std::map<int, std::string> entity(const std::string &text, const std::string &type, int n)
{
    std::map<int, std::string> found;
    bool inside = false;
    for (const auto &[code, value] : groups(text)) {
        if (code == 0 && inside) return found;
        if (code == 0) inside = value == type && n-- == 0;
        if (inside) found.emplace(code, value);
    }
    return found;
}

} // namespace

TEST(Plan, HasXUpwardsAndYToTheRight)
{
    const Plan plan = make_plan(triangle(), Axes::yx);
    ASSERT_EQ(plan.points.size(), 3u);
    EXPECT_EQ(plan.points[1].right, 200.0); // north of A
    EXPECT_EQ(plan.points[1].up, 130.0);
    EXPECT_EQ(plan.left, 200.0);
    EXPECT_EQ(plan.right, 240.0);
    EXPECT_EQ(plan.top, 130.0);
    ASSERT_EQ(plan.ellipses.size(), 1u);
    EXPECT_NEAR(plan.ellipses[0].angle, std::atan(1.0) * 4.0 / 3.0, 1e-15); // 60 degrees from east
}

TEST(Plan, TurnsItsAxesWhereXPointsToTheRight)
{
    const Plan plan = make_plan(triangle(), Axes::xy);
    EXPECT_EQ(plan.points[1].right, 130.0);
    EXPECT_EQ(plan.points[1].up, 200.0);
    EXPECT_NEAR(plan.ellipses[0].angle, std::atan(1.0) * 2.0 / 3.0, 1e-15);
}

TEST(Plan, JoinsTheObservationsBetweenTwoPoints)
{
    const Plan plan = make_plan(triangle(), Axes::yx);
    ASSERT_EQ(plan.lines.size(), 2u);
    EXPECT_EQ(plan.lines[0].observations, (std::vector<size_t>{0, 1}));
    EXPECT_EQ(plan.lines[0].worst, 2.4);
    EXPECT_FALSE(plan.lines[0].suspicious);
    EXPECT_TRUE(plan.lines[1].suspicious);
}

TEST(Plan, DrawsAnAngleOnItsTwoSides)
{
    Results r = triangle();
    r.residuals = {distance("B", "C", 3.0, false)};
    r.residuals[0].kind = "angle";
    RowWords words;
    words.at = "A";
    r.residuals[0].words = std::make_shared<const RowWords>(words);
    const Plan plan = make_plan(r, Axes::yx);
    ASSERT_EQ(plan.lines.size(), 2u);
    for (const PlanLine &line : plan.lines) {
        EXPECT_EQ(plan.points[line.from].point, 0u);
        EXPECT_EQ(line.worst, 3.0);
    }
}

TEST(Plan, TakesApproximatePlacesAndLeavesOutPointsWithoutOne)
{
    Results r = triangle();
    r.points[1].adjusted[0].reset();
    r.points[1].approximate[0] = 131.0;
    r.points[2].adjusted[1] = std::nan("");
    const Plan plan = make_plan(r, Axes::yx);
    ASSERT_EQ(plan.points.size(), 2u);
    EXPECT_EQ(plan.points[1].up, 131.0);
    EXPECT_EQ(plan.lines.size(), 1u);
    EXPECT_TRUE(make_plan(Results(), Axes::yx).points.empty());
}

TEST(Plan, MagnifiesEllipsesByARoundNumberThatShowsThem)
{
    const Plan plan = make_plan(triangle(), Axes::yx);
    const double digits = std::log10(plan.magnification);
    double lead = std::pow(10.0, digits - std::floor(digits));
    EXPECT_NEAR(lead, std::round(lead), 1e-9);
    EXPECT_GT(0.004 * plan.magnification, plan.size() / 100.0);
    EXPECT_LT(0.004 * plan.magnification, plan.size() / 20.0);
}

TEST(Plan, FindsCornersOfEllipsesOnThem)
{
    const Plan plan = make_plan(triangle(), Axes::yx);
    double right = 0, up = 0;
    ellipse_corner(plan, plan.ellipses[0], 0, 4, &right, &up); // end of the major axis: 60 degrees from east
    const double a = 0.004 * plan.magnification, b = 0.001 * plan.magnification;
    EXPECT_NEAR(right - 240.0, a * 0.5, 1e-9);
    EXPECT_NEAR(up - 100.0, a * std::sqrt(0.75), 1e-9);
    ellipse_corner(plan, plan.ellipses[0], 1, 4, &right, &up);
    EXPECT_NEAR(std::hypot(right - 240.0, up - 100.0), b, 1e-9);
}

TEST(Plan, NamesTheRoleOfAPoint)
{
    PointResult p;
    const auto role = [&](const char *x, const char *y) {
        p.code[0] = x;
        p.code[1] = y;
        return role_of(p);
    };
    EXPECT_EQ(role("fixed", "fixed"), "fixed");
    EXPECT_EQ(role("fixed", "free"), "partly fixed");
    EXPECT_EQ(role("weighted", "free"), "weighted");
    EXPECT_EQ(role("free", "free"), "free");
    EXPECT_EQ(role("no_datum", "no_datum"), "free, not in the datum");
}

TEST(GeoJson, HasFeaturesOfPointsLinesAndEllipses)
{
    const json map = json::parse(to_geojson(triangle(), Axes::yx));
    EXPECT_EQ(map["type"], "FeatureCollection");
    EXPECT_TRUE(map["crs"].is_null());
    EXPECT_NE(map["coordinates"].get<std::string>().find("not longitude and latitude"), std::string::npos);
    ASSERT_EQ(map["features"].size(), 6u);
    const json &b = map["features"][1], &line = map["features"][4], &ring = map["features"][5];
    EXPECT_EQ(b["geometry"], (json{{"type", "Point"}, {"coordinates", {200.0, 130.0}}}));
    EXPECT_EQ(b["properties"]["role"], "weighted");
    EXPECT_EQ(line["geometry"]["coordinates"], (json{{200.0, 100.0}, {240.0, 100.0}}));
    EXPECT_EQ(line["properties"]["suspicious"], true);
    EXPECT_EQ(line["properties"]["normalised"], 5.0);
    const json &corners = ring["geometry"]["coordinates"][0];
    EXPECT_EQ(corners.front(), corners.back());
    double area = 0;
    for (size_t k = 0; k + 1 < corners.size(); k++)
        area += 0.5 * (corners[k][0].get<double>() * corners[k + 1][1].get<double>() -
                       corners[k + 1][0].get<double>() * corners[k][1].get<double>());
    const double m = ring["properties"]["magnified"], wanted = 4.0 * std::atan(1.0) * 0.004 * 0.001 * m * m;
    EXPECT_NEAR(area, wanted, 0.004 * wanted); // anticlockwise, and inside the ellipse
}

TEST(GeoJson, GivesPointsOfALevellingNetworkNoPlace)
{
    Results r;
    r.dimension = 1;
    PointResult p;
    p.name = "B";
    p.adjusted[2] = 12.5;
    r.points = {p};
    const json map = json::parse(to_geojson(r, Axes::yx));
    ASSERT_EQ(map["features"].size(), 1u);
    EXPECT_TRUE(map["features"][0]["geometry"].is_null());
    EXPECT_EQ(map["features"][0]["properties"]["z"], 12.5);
}

TEST(Dxf, DrawsPointsNamesLinesAndEllipsesOnLayers)
{
    Results r = triangle();
    r.points[1].adjusted[2] = 7.5;
    const std::string text = to_dxf(r, Axes::yx);
    auto b = entity(text, "POINT", 1);
    EXPECT_EQ(b[8], "POINTS_WEIGHTED");
    EXPECT_EQ(b[10], "200.000000");
    EXPECT_EQ(b[20], "130.000000");
    EXPECT_EQ(b[30], "7.500000");
    EXPECT_EQ(entity(text, "TEXT", 2)[1], "C");
    EXPECT_EQ(entity(text, "LINE", 0)[8], "LINES");
    auto line = entity(text, "LINE", 1);
    EXPECT_EQ(line[8], "LINES_SUSPICIOUS");
    EXPECT_EQ(line[11], "240.000000");
    EXPECT_EQ(entity(text, "POLYLINE", 0)[70], "1");
    EXPECT_EQ(entity(text, "POLYLINE", 0)[8].rfind("ELLIPSES_TIMES_", 0), 0u);
    EXPECT_EQ(entity(text, "VERTEX", 47).size(), 5u);
    EXPECT_EQ(entity(text, "VERTEX", 48).size(), 0u);
    EXPECT_EQ(groups(text).back(), (std::pair<int, std::string>(0, "EOF")));
}

TEST(Dxf, WritesNamesInAsciiAndNoLineEndsInThem)
{
    Results r = triangle();
    r.points[0].name = "Ż\n0\nEOF";
    EXPECT_EQ(entity(to_dxf(r, Axes::yx), "TEXT", 0)[1], "\\U+017B0EOF");
}

TEST(Svg, DrawsLinesByTheirWorstResidualAndEscapesNames)
{
    Results r = triangle();
    r.points[1].name = "<B>&";
    r.residuals[1].from = r.residuals[0].to = "<B>&";
    const std::string text = to_svg(r, Axes::yx);
    const auto has = [&](const char *part) { return text.find(part) != std::string::npos; };
    EXPECT_TRUE(has("<title>Corner &lt;of&gt; &amp; the field</title>"));
    EXPECT_TRUE(has(">&lt;B&gt;&amp;</text>"));
    EXPECT_TRUE(has("stroke=\"#e69f00\"")); // 2.4; the limit for the largest of four is 2.50
    EXPECT_TRUE(has("stroke=\"#b3003c\""));
    EXPECT_FALSE(has("stroke=\"#0072b2\""));
    EXPECT_TRUE(has("rotate(-60)"));
    EXPECT_TRUE(has(" in ellipses</text>"));
    EXPECT_EQ(text.find("text-anchor"), std::string::npos);
    r.points[2].name = "a long name at the right border";
    EXPECT_NE(to_svg(r, Axes::yx).find("text-anchor=\"end\">a long name"), std::string::npos);
    EXPECT_TRUE(has(">10 m</text>")); // 40 m take 148 mm, a bar at most 40 mm
}
