// The page of results as text: what stands in it, and that no text of others can end a script or become an element.

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "host/folder.h"
#include "host/results/html_page.h"
#include "host/results/page_text.h"

using namespace vornhost;
using nlohmann::json;

namespace {

const std::string opening = "<script type=\"application/json\" id=\"results\">";

// The data of a page, as they stand there.
std::string data_text(const std::string &page)
{
    const size_t begin = page.find(opening) + opening.size();
    return page.substr(begin, page.find("</script>", begin) - begin);
}

json data_of(const Results &results) { return json::parse(data_text(to_html(results, InputLines(), "today"))); }

Results two_points()
{
    Results r;
    r.program = "vorn";
    r.dimension = 2;
    r.adjusted = true;
    PointResult a, b;
    a.name = "A";
    a.code[0] = a.code[1] = "fixed";
    a.adjusted[0] = 1234567.123456789;
    a.adjusted[1] = 2.0;
    b.name = "B";
    b.station = true;
    b.code[0] = b.code[1] = "free";
    b.adjusted[0] = 1.0 / 3.0;
    b.adjusted[1] = -7.0;
    b.deviation[0] = 0.001;
    b.ellipse[0] = EllipseResult{0.002, 0.001, 0.5};
    b.moves = {{2, {0.0, 0.01, 0.0}}};
    r.points = {a, b};
    ResidualResult o;
    o.kind = "distance";
    o.from = "A";
    o.to = "B";
    o.file = "net.inp";
    o.line = 3;
    o.value = 10.0;
    o.sigma = 0.002;
    o.residual = -0.001;
    o.normal = true;
    o.normal_divided = true;
    ResidualResult planned = o;
    planned.observed = false;
    planned.normal.reset();
    planned.normal_divided.reset();
    r.residuals = {o, planned};
    return r;
}

} // namespace

TEST(HtmlPage, HasEveryModuleAndNothingFromElsewhere)
{
    const std::string page = page_text;
    for (const char *part : {"class Plot", "class Table", "function layout", "class Drawing", "function start()",
                             "<canvas id=\"plot\"", ":root[data-theme=\"dark\"]", "default-src 'none'"})
        EXPECT_NE(page.find(part), std::string::npos) << part;
    for (const char *mark : {"@style@", "@script@", "src=\"", "@import", "fetch(", "XMLHttpRequest", "innerHTML"})
        EXPECT_EQ(page.find(mark), std::string::npos) << mark;
    for (size_t at = page.find("http"); at != std::string::npos; at = page.find("http", at + 1)) {
        const std::string word = page.substr(at, 26);
        EXPECT_TRUE(word == "http://www.w3.org/2000/svg" || word.rfind("http-equiv", 0) == 0) << word;
    }
}

TEST(HtmlPage, HoldsPointsAndObservationsInColumns)
{
    const json data = data_of(two_points());
    EXPECT_EQ(data["points"]["name"], (json{"A", "B"}));
    EXPECT_EQ(data["points"]["station"], (json{0, 1}));
    EXPECT_EQ(data["points"]["adjusted"][0], (json{1234567.123457, 0.3333333333333}));
    EXPECT_EQ(data["points"]["deviation"][0], (json{nullptr, 0.001}));
    EXPECT_EQ(data["points"]["ellipse"][0]["bearing"], (json{nullptr, 0.5}));
    EXPECT_EQ(data["points"]["moves"][1][0]["by"], (json{0.0, 0.01, 0.0}));
    const json &o = data["observations"];
    EXPECT_EQ(o["names"][o["to"][0].get<size_t>()], "B");
    EXPECT_EQ(o["residual"], (json{-0.001, nullptr}));
    EXPECT_EQ(o["marks"], (json{6 + 32, nullptr}));
    EXPECT_EQ(o["line"], (json{3, 3}));
}

// With an even number f of degrees of freedom the limit of F with 2 and f has a closed form: f / 2 (level^(-2/f) - 1).
TEST(HtmlPage, HasTheEllipsesOfTheConfidenceAskedFor)
{
    Results r = two_points();
    const double axis = data_of(r)["points"]["ellipse"][0]["a"][1];
    r.degrees_of_freedom = 6;
    r.precision = PrecisionResult();
    EXPECT_NEAR(data_of(r)["precision"]["wider"], std::sqrt(6 * (std::pow(0.05, -1.0 / 3) - 1)), 1e-9);
    r.precision->confidence = 0.99, r.precision->ellipse_factor = 5;
    const json data = data_of(r);
    EXPECT_NEAR(data["points"]["ellipse"][0]["a"][1], 5 * axis, 1e-6 * axis);
    EXPECT_EQ(data["precision"]["confidence"], 0.99);
    r.precision->a_priori = true;
    EXPECT_NEAR(data_of(r)["precision"]["wider"], std::sqrt(-2 * std::log(0.05)), 1e-9);
}

TEST(HtmlPage, HoldsTestsOfComponentsTogetherAndVarianceComponents)
{
    Results r = two_points();
    r.joint_tests.emplace_back();
    r.joint_tests[0].components = 3;
    r.joint_tests[0].rank = 2;
    r.joint_tests[0].squares = 14.25;
    r.joint_tests[0].probability = 0.0008;
    r.joint_tests[0].rejected = true;
    r.components.emplace_back();
    r.components[0].name = "distance";
    r.components[0].factor = 1.25;
    const json data = data_of(r);
    EXPECT_EQ(data["joint_tests"], json::parse(R"([{"observation": 0, "components": 3, "rank": 2, "squares": 14.25,
                                                   "p": 0.0008, "rejected": true}])"));
    EXPECT_EQ(data["variance_components"][0]["name"], "distance");
    EXPECT_EQ(data["variance_components"][0]["factor"], 1.25);
    EXPECT_TRUE(data["variance_components"][0]["deviation"].is_null());
}

TEST(HtmlPage, LeavesOutWhatTheRunDidNotMake)
{
    const json data = data_of(two_points());
    EXPECT_TRUE(data["points"]["approximate"][0].is_null());
    EXPECT_TRUE(data["points"]["adjusted"][2].is_null());
    EXPECT_TRUE(data["points"]["ellipse"][1].is_null());
    EXPECT_TRUE(data["observations"]["redundancy"].is_null());
    EXPECT_TRUE(data["observations"]["normalised"].is_null());
    EXPECT_TRUE(data["observations"]["text"].is_null());
    EXPECT_FALSE(data.contains("sigma_a_posteriori"));
    EXPECT_EQ(data_of(Results())["points"]["name"], json::array());
}

TEST(HtmlPage, WritesWhatIsNoNumberAsNull)
{
    Results r = two_points();
    r.points[1].adjusted[0] = std::nan("");
    r.residuals[0].residual = INFINITY;
    const json data = data_of(r);
    EXPECT_TRUE(data["points"]["adjusted"][0][1].is_null());
    EXPECT_TRUE(data["observations"]["residual"].is_null());
}

TEST(HtmlPage, LetsNoTextEndTheScriptOrTheTitle)
{
    Results r = two_points();
    r.title = "</title><script>alert(1)</script>&lt;";
    r.points[0].name = "</script><img>";
    r.residuals[0].from = "<!--<script>";
    r.notes = {"a \xFF b"}; // no UTF-8
    const std::string page = to_html(r, InputLines(), "today"), data = data_text(page);
    EXPECT_EQ(data.find('<'), std::string::npos);
    EXPECT_NE(page.find("<title>&lt;/title>&lt;script>alert(1)&lt;/script>&amp;lt;</title>"), std::string::npos);
    const json read = json::parse(data);
    EXPECT_EQ(read["title"], r.title);
    EXPECT_EQ(read["points"]["name"][0], r.points[0].name);
    EXPECT_EQ(read["observations"]["names"][0], r.residuals[0].from);
}

TEST(InputLines, GivesTheLinesOfTheFilesThatWereRead)
{
    Folder folder;
    folder.write("net.inp", "first\r\nsecond\n\nlast without an end");
    Model model;
    model.files = {folder.file("net.inp"), folder.file("gone.inp")};
    const InputLines lines(model);
    const std::string file = model.files[0];
    EXPECT_EQ(lines.line(file, 1), "first");
    EXPECT_EQ(lines.line(file, 2), "second");
    EXPECT_EQ(lines.line(file, 3), "");
    EXPECT_EQ(lines.line(file, 4), "last without an end");
    for (const int outside : {-1, 0, 5, 1000}) EXPECT_EQ(lines.line(file, outside), "");
    EXPECT_EQ(lines.line(model.files[1], 1), "");
    EXPECT_EQ(lines.line("never named", 1), "");
}

TEST(InputLines, CutsLongLinesBetweenCharacters)
{
    Folder folder;
    std::string text = "x";
    for (int i = 0; i < 300; i++) text += "ö"; // two bytes each
    folder.write("net.inp", text);
    Model model;
    model.files = {folder.file("net.inp")};
    const std::string line = InputLines(model).line(model.files[0], 1);
    EXPECT_EQ(line, text.substr(0, 399) + " ...");
}
