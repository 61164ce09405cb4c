// Transformations of lists of coordinates, through their files.

#include "host/epochs/transform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "host/folder.h"

using namespace vornhost;

namespace {

CoordinateList list_of(const std::string &text, const std::string &name = "list.txt")
{
    Folder folder;
    CoordinateList list;
    Faults faults;
    EXPECT_TRUE(read_coordinates(folder.write(name, text), list, faults))
        << (faults.lines().empty() ? "" : faults.lines()[0]);
    list.file = name;
    return list;
}

Lines faults_of_list(const std::string &text)
{
    Folder folder;
    CoordinateList list;
    Faults faults;
    EXPECT_FALSE(read_coordinates(folder.write("list.txt", text), list, faults));
    Lines lines = faults.lines();
    for (std::string &line : lines) folder.shorten(line);
    return lines;
}

std::string first_word(const Transformation &t) { return t.words.empty() ? "" : t.words[0]; }

// A square of 100 m and the same, turned by 100 gon, 1 ppm larger, shifted by (1000, 2000).
const char square[] = "name x y\nA 0 0\nB 100 0\nC 100 100\nD 0 100\nE 30 40\n";
const char turned[] = "name,x,y\nA,1000,2000\nB,1000,2100.0001\nC,899.9999,2100.0001\nD,899.9999,2000\n";

} // namespace

TEST(CoordinateList, ReadsTablesWithAnySeparator)
{
    for (const std::string separator : {" ", ",", ";", "\t"}) {
        std::string text = "# a list\nname x y remark z sx sy sz\nA 1 2 good 3 0.1 0.2 0.3\n";
        for (size_t at = text.find(' ', 9); at != std::string::npos; at = text.find(' ', at + 1))
            text.replace(at, 1, separator);
        if (separator == " ") text = "name x y z sx sy sz\nA 1 2 3 0.1 0.2 0.3\n";
        const CoordinateList list = list_of(text);
        ASSERT_EQ(list.points.size(), 1u) << separator;
        EXPECT_TRUE(list.has_z && list.has_sigma);
        EXPECT_EQ(list.points[0].x[2], 3.0);
        EXPECT_DOUBLE_EQ(list.points[0].q[4], 0.04);
        EXPECT_EQ(list.points[0].q[1], 0.0);
    }
}

TEST(CoordinateList, NamesWhatIsWrong)
{
    EXPECT_EQ(faults_of_list("name x y\nA 1 2\nA 3 4\n"),
              Lines{"list.txt:3:1: point \"A\" stands here again; give each point one row"});
    EXPECT_EQ(faults_of_list("name x y sx\nA 1 2 3\n"),
              Lines{"list.txt:1:1: some columns of standard deviations are missing; write sx and sy, or none of them"});
    EXPECT_EQ(faults_of_list("name x y\n"),
              Lines{"list.txt:1:1: table coordinates has a heading but no rows; add rows or remove the table"});
    EXPECT_EQ(faults_of_list("name x y sx sy\nA 1 2 0.1 -\n").size(), 1u);
    EXPECT_EQ(faults_of_list("name x\nA 1\n").size(), 1u);
    EXPECT_EQ(faults_of_list("name x y\nA 1 two\n").size(), 1u);
}

TEST(Transform, TurnsASquare)
{
    const Transformation t = transform(list_of(square), list_of(turned), {});
    ASSERT_TRUE(t.made()) << first_word(t);
    EXPECT_EQ(t.model, vornadjust::FitModel::plane_similarity);
    EXPECT_NEAR(t.angle[2], M_PI / 2, 1e-12);
    EXPECT_NEAR(t.fit.scale, 1.000001, 1e-12);
    EXPECT_NEAR(t.shift[0], 1000, 1e-9);
    EXPECT_NEAR(t.shift[1], 2000, 1e-9);
    ASSERT_EQ(t.transformed.size(), 5u);
    EXPECT_FALSE(t.transformed[4].common);
    EXPECT_NEAR(t.transformed[4].x[0], 1000 - 40 * 1.000001, 1e-9);
    EXPECT_NEAR(t.transformed[4].x[1], 2000 + 30 * 1.000001, 1e-9);
}

// A list of its own results fits without a residual.
TEST(Transform, WritesAListThatItReads)
{
    const Transformation t = transform(list_of(square), list_of(turned), {});
    const CoordinateList again = list_of(transformed_list(t), "moved.csv");
    ASSERT_EQ(again.points.size(), 5u);
    for (size_t i = 0; i < 5; i++)
        for (int k = 0; k < 2; k++) EXPECT_EQ(again.points[i].x[k], t.transformed[i].x[k]);
}

TEST(Transform, NamesThePointThatDoesNotFit)
{
    const CoordinateList a = list_of("name x y\nA 0 0\nB 100 0\nC 100 100\nD 0 100\nE 50 0\nF 50 100\n"),
                         b = list_of("name x y sx sy\nA 0.4 0 1 1\nB 100 0.5 1 1\nC 100 99.2 1 1\nD 0.3 100 1 1\n"
                                     "E 50 30 1 1\nF 49.8 100 1 1\n");
    const Transformation t = transform(a, b, {});
    ASSERT_TRUE(t.made());
    for (const FittedPoint &p : t.points) EXPECT_EQ(p.test.passed(), p.name != "E") << p.name;
    EXPECT_FALSE(t.agreement.passed());
    EXPECT_NE(transform_report(t, "").find("first of all E."), std::string::npos) << transform_report(t, "");
    // By the definition of the test: with E left out the sum is that of the others.
    CoordinateList others = b;
    others.points.erase(others.points.begin() + 4);
    const Transformation rest = transform(a, others, {});
    EXPECT_NEAR(t.points[4].test.value, (t.fit.squares - rest.fit.squares) / 2 / (rest.fit.squares / 6), 1e-6);
}

TEST(Transform, TakesTheAdjustedPointsOfANetwork)
{
    const CoordinateList net = list_of(
        "[run]\ndimension = 2\n[tables]\ntargets = '''\nname x y code\nA 0 0 fixed\nB 100 0 fixed\nC 50 80 free\n"
        "'''\ndistances = '''\nfrom to value sigma\nA C 94.3398 0.01\nB C 94.3398 0.01\n'''\n",
        "net.inp");
    ASSERT_EQ(net.points.size(), 3u);
    EXPECT_TRUE(net.has_sigma);
    EXPECT_EQ(net.points[0].q[0], 0.0);
    EXPECT_GT(net.points[2].q[0], 1e-5);
    const Transformation t = transform(net, list_of("name x y\nA 10 20\nB 110 20\nC 60 100\n"), {});
    EXPECT_EQ(first_word(t), "point A has no standard deviation in either list");
}

TEST(Transform, RefusesWhatDoesNotDetermineIt)
{
    const CoordinateList line = list_of("name x y z\nA 0 0 0\nB 1 1 1\nC 2 2 2\nD 4 4 4\n"), flat = list_of(square);
    EXPECT_EQ(first_word(transform(line, line, {})),
              "the 4 points that both lists have lie on one line: nothing determines the turn about it");
    TransformOptions options;
    options.parameters = 6;
    EXPECT_EQ(first_word(transform(line, line, options)),
              "the 4 points that both lists have lie on one line: nothing determines what happens across it");
    options.no_scale = true;
    EXPECT_EQ(first_word(transform(line, line, options)), "an affine transformation has no scale to leave out");
    options = {};
    options.parameters = 7;
    EXPECT_EQ(first_word(transform(line, flat, options)), "list.txt has no heights for 7 parameters");
    EXPECT_EQ(first_word(transform(flat, list_of("name x y\nA 0 0\nQ 1 1\n"), {})),
              "the 1 point that both lists have do not determine 4 parameters");
    options = {};
    options.apriori = true;
    EXPECT_EQ(first_word(transform(flat, flat, options)),
              "without standard deviations there is no variance factor a priori");
}

TEST(Transform, WritesJson)
{
    const Transformation t = transform(list_of(square), list_of(turned), {});
    const nlohmann::json j = nlohmann::json::parse(transform_json(t, "test"));
    EXPECT_EQ(j["fitted"], true);
    EXPECT_EQ(j["parameters"], 4);
    EXPECT_NEAR(j["matrix"][2].get<double>(), 1.000001, 1e-9);
    EXPECT_EQ(j["transformed"].size(), 5u);
}
