// The writers of results: JSON and comma-separated tables.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "host/results/csv_writer.h"
#include "host/folder.h"
#include "host/results/json_writer.h"
#include "host/results/output_file.h"

using namespace vornhost;
using nlohmann::json;

namespace {

Results levelling()
{
    Results r;
    r.program = "vorn";
    r.version = "1.2.3";
    r.title = "Levelling \"A\"";
    r.file = "net.inp";
    r.solver = "compact";
    r.mode = "statistics";
    r.dimension = 1;
    r.adjusted = true;
    r.degrees_of_freedom = 1;
    r.sigma_apriori = 1.0;
    r.sigma_aposteriori = 0.1;
    PointResult p;
    p.name = "B";
    p.code[2] = "free";
    p.approximate[2] = 101.2;
    p.adjusted[2] = 1.0 / 3.0;
    p.deviation[2] = 0.001;
    r.points = {p};
    ResidualResult m;
    m.kind = "height difference";
    m.from = "A,1";
    m.to = "B\"";
    m.file = "net.inp";
    m.line = 12;
    m.value = 1.25;
    m.sigma = 0.001;
    m.residual = -0.0005;
    m.outside = false;
    m.normal = true;
    r.residuals = {m};
    r.accounts = {{"height differences", 2, 1, {{"net.inp", 13, "B", "C", "status off"}}}};
    return r;
}

std::string table(const Results &results, const std::string &name)
{
    for (const CsvTable &t : to_csv(results))
        if (t.name == name) return t.text;
    return "missing";
}

std::vector<std::string> names(const Results &results)
{
    std::vector<std::string> all;
    for (const CsvTable &t : to_csv(results)) all.push_back(t.name);
    return all;
}

// Commas of the heading and of each row.
std::vector<size_t> commas(const std::string &text)
{
    std::vector<size_t> all;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        size_t n = 0;
        for (char c : line) n += c == ',';
        all.push_back(n);
    }
    return all;
}

} // namespace

TEST(JsonWriter, BeginsWithTheSchemaAndTellsWhatRan)
{
    const std::string text = to_json(levelling());
    EXPECT_EQ(text.substr(0, 17), "{\n  \"schema\": 2,\n");
    EXPECT_EQ(text.back(), '\n');
    const json all = json::parse(text);
    EXPECT_EQ(all["program"], "vorn");
    EXPECT_EQ(all["version"], "1.2.3");
    EXPECT_EQ(all["title"], "Levelling \"A\"");
    EXPECT_EQ(all["dimension"], 1);
    EXPECT_EQ(all["adjusted"], true);
    EXPECT_EQ(all["degrees_of_freedom"], 1);
    EXPECT_EQ(all["sigma_a_posteriori"], 0.1);
}

TEST(JsonWriter, KeepsEveryDigit)
{
    EXPECT_EQ(json::parse(to_json(levelling()))["points"][0]["adjusted"]["z"].get<double>(), 1.0 / 3.0);
}

TEST(JsonWriter, HasNoKeyForWhatIsAbsent)
{
    const json all = json::parse(to_json(levelling()));
    const json &point = all["points"][0];
    EXPECT_FALSE(point["adjusted"].contains("x"));
    EXPECT_FALSE(point["code"].contains("x"));
    EXPECT_FALSE(point.contains("ellipse"));
    EXPECT_FALSE(all.contains("one_tailed_test_passed"));
    EXPECT_FALSE(all["residuals"][0].contains("standard_deviation"));
    EXPECT_FALSE(all["residuals"][0]["rejected"].contains("tau_test"));
    EXPECT_EQ(all["residuals"][0]["rejected"]["outside_histogram"], false);
    EXPECT_EQ(all["residuals"][0]["rejected"]["normal_test"], true);
}

TEST(JsonWriter, WritesNullForWhatIsNotFinite)
{
    Results r = levelling();
    r.points[0].adjusted[2] = std::nan("");
    r.residuals[0].residual = -HUGE_VAL;
    const json all = json::parse(to_json(r));
    EXPECT_TRUE(all["points"][0]["adjusted"]["z"].is_null());
    EXPECT_TRUE(all["residuals"][0]["residual"].is_null());
}

TEST(JsonWriter, WritesBrokenTextAllTheSame)
{
    Results r = levelling();
    r.title = "a\xff";
    EXPECT_EQ(json::parse(to_json(r))["title"], "a\xEF\xBF\xBD");
}

TEST(JsonWriter, WritesEveryPart)
{
    Results r = levelling();
    r.points[0].ellipse[0] = EllipseResult{2, 1, 0.5};
    OrientationResult o;
    o.name = "S";
    o.rotation[2] = 0.25;
    o.deviation[2] = 0.001;
    r.orientations = {o};
    KindResult k;
    k.kind = "distance";
    k.sigma_apriori = 1;
    k.sigma_aposteriori = 1.5;
    k.goodness_of_fit = true;
    k.over_tau = 2;
    r.kinds = {k};
    GroupResult g;
    g.name = "TS";
    g.value[1] = 1.0001;
    g.deviation[1] = 1e-5;
    r.groups = {g};
    LumpResult l;
    l.lump = 3;
    l.epoch = 2;
    l.reference = 1;
    l.scale_deviation = 0.5;
    r.lumps = {l};
    PairResult p;
    p.from = "A";
    p.to = "B";
    p.deviation[0] = 0.5;
    p.ellipse[2] = EllipseResult{7, 0, 0};
    r.pairs = {p};
    r.words = {"word"};
    r.notes = {"note"};
    const json all = json::parse(to_json(r));
    EXPECT_EQ(all["points"][0]["ellipse"]["xy"],
              (json{{"semi_major_axis", 2.0}, {"semi_minor_axis", 1.0}, {"bearing", 0.5}}));
    EXPECT_EQ(all["orientations"][0]["station"], "S");
    EXPECT_EQ(all["orientations"][0]["rotation"]["rx3"], 0.25);
    EXPECT_EQ(all["orientations"][0]["standard_deviation"], (json{{"rx3", 0.001}}));
    EXPECT_EQ(all["kinds"][0]["sigma_a_posteriori"], 1.5);
    EXPECT_EQ(all["kinds"][0]["goodness_of_fit_passed"], true);
    EXPECT_EQ(all["kinds"][0]["rejected"]["tau_test"], 2);
    EXPECT_EQ(all["groups"][0]["value"], (json{{"scale", 1.0001}}));
    EXPECT_EQ(all["groups"][0]["standard_deviation"], (json{{"scale", 1e-5}}));
    EXPECT_EQ(all["lumps"][0]["reference_epoch"], 1);
    EXPECT_EQ(all["lumps"][0]["scale_standard_deviation"], 0.5);
    EXPECT_FALSE(all["lumps"][0].contains("translation_standard_deviation"));
    EXPECT_EQ(all["pairs"][0]["standard_deviation"]["x"], 0.5);
    EXPECT_EQ(all["pairs"][0]["ellipse"]["yz"]["semi_major_axis"], 7.0);
    EXPECT_EQ(all["words"], json::array({"word"}));
    EXPECT_EQ(all["notes"], json::array({"note"}));
    EXPECT_EQ(all["observations"][0]["read"], 2);
    EXPECT_EQ(all["observations"][0]["left_out"][0]["reason"], "status off");
}

TEST(CsvWriter, QuotesAsNeededAndEndsRowsWithBothCharacters)
{
    const std::string text = table(levelling(), "residuals.csv");
    EXPECT_EQ(text,
              "kind,from,to,file,line,value,sigma,residual,standard_deviation,outside_histogram,normal_test,"
              "normal_test_divided,tau_test,tau_test_divided,component,unit,adjusted,redundancy,normalised,at,"
              "setup,set,id,remark,raw,checked,p_value,rejected,detectable,bias_to_noise,shift\r\n"
              "height difference,\"A,1\",\"B\"\"\",net.inp,12,1.25,0.001,-5e-04,,no,yes,,,,,m,,,,,,,,,,,,,,,\r\n");
}

namespace {

// The height difference of levelling() with everything that a row may say.
Results with_words()
{
    Results r = levelling();
    r.residuals[0].raw = 1.5;
    RowWords words;
    words.at = "S";
    words.setup = "noon";
    words.set = "2";
    words.id = "1017";
    words.remark = "wind, rain";
    r.residuals[0].words = std::make_shared<const RowWords>(words);
    r.suspicious = {0};
    r.orientations.resize(1);
    r.orientations[0].setup = "noon";
    r.orientations[0].set = "2";
    return r;
}

} // namespace

TEST(CsvWriter, TellsWhatTheRowsSayBesideTheirValues)
{
    EXPECT_NE(table(with_words(), "residuals.csv").find(",m,,,,S,noon,2,1017,\"wind, rain\",1.5,,,,,,\r\n"),
              std::string::npos);
    EXPECT_NE(table(with_words(), "orientations.csv").find(",noon,2\r\n"), std::string::npos);
}

TEST(JsonWriter, TellsWhatTheRowsSayBesideTheirValues)
{
    const json all = json::parse(to_json(with_words()));
    const json &row = all["residuals"][0];
    EXPECT_EQ(row["at"], "S");
    EXPECT_EQ(row["setup"], "noon");
    EXPECT_EQ(row["set"], "2");
    EXPECT_EQ(row["id"], "1017");
    EXPECT_EQ(row["remark"], "wind, rain");
    EXPECT_EQ(row["raw"], 1.5);
    EXPECT_EQ(all["suspicious"][0]["at"], "S");
    EXPECT_EQ(all["suspicious"][0]["id"], "1017");
    EXPECT_EQ(all["orientations"][0]["setup"], "noon");
    EXPECT_EQ(all["orientations"][0]["set"], "2");
    EXPECT_FALSE(json::parse(to_json(levelling()))["residuals"][0].contains("id"));
}

TEST(CsvWriter, LeavesTheCellsOfWhatIsAbsentEmpty)
{
    Results r = levelling();
    EXPECT_NE(table(r, "points.csv").find("\r\nB,no,,,free,,,101.2,,,0.3333333333333333,,,0.001,,,,,,,,,\r\n"),
              std::string::npos);
    r.points[0].adjusted[2] = std::nan("");
    EXPECT_NE(table(r, "points.csv").find("\r\nB,no,,,free,,,101.2,,,,,,0.001,,,,,,,,,\r\n"), std::string::npos);
}

TEST(CsvWriter, WritesTheAccountOfEachKindThenWhatWasLeftOut)
{
    EXPECT_EQ(table(levelling(), "accounts.csv"), "kind,read,used,left_out,file,line,from,to,reason,at\r\n"
                                                  "height differences,2,1,1,,,,,,\r\n"
                                                  "height differences,,,,net.inp,13,B,C,status off,\r\n");
}

TEST(CsvWriter, WritesGroupsLumpsAndPairsOnlyWhenThereAreSome)
{
    Results r = levelling();
    EXPECT_EQ(names(r), (std::vector<std::string>{"points.csv", "orientations.csv", "residuals.csv", "accounts.csv"}));
    r.groups.resize(1);
    r.lumps.resize(1);
    r.pairs.resize(1);
    EXPECT_EQ(names(r), (std::vector<std::string>{"points.csv", "orientations.csv", "residuals.csv", "accounts.csv",
                                                  "groups.csv", "lumps.csv", "pairs.csv"}));
}

TEST(CsvWriter, GivesEveryRowAsManyCellsAsTheHeading)
{
    Results r = levelling();
    r.residuals[0].from = "A";
    r.points.resize(2);
    r.points[1].ellipse[1] = EllipseResult{2, 1, 0.5};
    r.orientations.resize(1);
    r.groups.resize(1);
    r.groups[0].value[1] = 1.0001;
    r.lumps.resize(1);
    r.pairs.resize(1);
    for (const CsvTable &t : to_csv(r)) {
        const std::vector<size_t> n = commas(t.text);
        ASSERT_GE(n.size(), 2u) << t.name;
        for (size_t i = 1; i < n.size(); i++) EXPECT_EQ(n[i], n[0]) << t.name << " row " << i;
    }
}

TEST(CsvWriter, MakesTheFolder)
{
    Folder folder;
    write_csv(folder.file("new/results"), levelling());
    EXPECT_TRUE(std::filesystem::exists(folder.file("new/results/points.csv")));
    EXPECT_TRUE(std::filesystem::exists(folder.file("new/results/accounts.csv")));
}

TEST(CsvWriter, TellsWhyTheFolderCannotBeMade)
{
    Folder folder;
    folder.write("taken", "");
    try {
        write_csv(folder.file("taken"), levelling());
        FAIL();
    } catch (const OutputError &error) {
        EXPECT_EQ(std::string(error.what()).find("cannot write " + folder.file("taken")), 0u) << error.what();
    }
}
