// Network files as JSON, and read back: the same numbers, to the last bit.

#include <nlohmann/json.hpp>

#include "host/formats/import.h"
#include "host/formats/network_json.h"
#include "host/input/text_file.h"
#include "host/own/own_run.h"

using namespace vornhost;

namespace {

class NetworkJson : public testing::Test {
protected:
    std::string json_of(const std::string &name, const std::string &text)
    {
        Faults faults;
        const std::string out = write_network_json(name, text, faults);
        EXPECT_TRUE(faults.empty()) << faults.lines()[0];
        return out;
    }

    Lines faults_in(const std::string &json)
    {
        folder.write("net.json", json);
        Model model;
        Faults faults;
        Lines notes;
        EXPECT_FALSE(read_any_network(folder.file("net.json"), model, notes, faults));
        Lines lines;
        for (std::string line : faults.lines()) {
            folder.shorten(line);
            lines.push_back(line);
        }
        return lines;
    }

    SolvedNetwork solved(const std::string &json)
    {
        folder.write("net.json", json);
        Model model;
        Faults faults;
        Lines notes;
        EXPECT_TRUE(read_any_network(folder.file("net.json"), model, notes, faults)) << faults.lines()[0] << json;
        model.solver = Solver::Sparse;
        return faults.empty() ? solve(model) : SolvedNetwork();
    }

    Folder folder;
};

void expect_equal(const Results &one, const Results &other)
{
    ASSERT_EQ(one.points.size(), other.points.size());
    for (size_t i = 0; i < one.points.size(); i++) {
        EXPECT_EQ(one.points[i].name, other.points[i].name);
        for (int k = 0; k < 3; k++) {
            EXPECT_EQ(one.points[i].adjusted[k], other.points[i].adjusted[k]) << one.points[i].name;
            EXPECT_EQ(one.points[i].deviation[k], other.points[i].deviation[k]) << one.points[i].name;
        }
    }
    ASSERT_EQ(one.residuals.size(), other.residuals.size());
    for (size_t i = 0; i < one.residuals.size(); i++) {
        EXPECT_EQ(one.residuals[i].residual, other.residuals[i].residual);
    }
}

const char *const level = R"([run]
title = "Names \\ and \"marks\""
dimension = 1
[tables]
targets = '''
name z code
007 100 fixed
"-" - free
"a ""b"" #c" 1.5e2 free
1e5 - free
\n' - free
'''
height_differences = '''
from to value sigma id remark covariance
007 "-" 1.25 0.001 0815 "wind, rain" -
"-" "a ""b"" #c" -0.123456789012345678 0.001 - - -
"a ""b"" #c" 1e5 .5 0.002 - - -
1e5 \n' +0.25 0.002 - - -
\n' 007 -1.87 0.003 - "-" -
'''
)";

} // namespace

TEST_F(NetworkJson, KeepsEveryExampleToTheLastBit)
{
    const char *const examples[] = {"angles",      "dam_may_2026",        "gnss_together", "instrument_constants",
                                    "rounds",      "mixed_fixed_heights", "office_tables", "monitoring_wall",
                                    "gross_error", "levelling_lines"};
    for (const char *name : examples) {
        SCOPED_TRACE(name);
        const std::string path = std::string(SOURCE_DIR) + "/examples/" + name + ".inp";
        TextFile file;
        Faults faults;
        ASSERT_TRUE(file.read(path, Source(), faults));
        const SolvedNetwork own = solve_file(path), again = solved(json_of(path, file.text()));
        ASSERT_TRUE(own.adjusted() && again.adjusted()) << own.words() << again.words();
        expect_equal(own.results(), again.results());
    }
}

TEST_F(NetworkJson, KeepsNamesAndRemarksWhateverTheyAre)
{
    const std::string text = json_of("net.inp", level);
    const nlohmann::json json = nlohmann::json::parse(text);
    const auto &targets = json["tables"]["targets"], &rows = json["tables"]["height_differences"];
    EXPECT_EQ(targets[0]["name"], "007");
    EXPECT_EQ(targets[1]["name"], "-");
    EXPECT_FALSE(targets[1].contains("z"));
    EXPECT_EQ(targets[2]["name"], "a \"b\" #c");
    EXPECT_EQ(targets[2]["z"], 150.0);
    EXPECT_EQ(targets[3]["name"], "1e5");
    EXPECT_EQ(targets[4]["name"], "\\n'");
    EXPECT_EQ(rows[0]["id"], "0815");
    EXPECT_EQ(rows[1]["value"], -0.123456789012345678);
    EXPECT_EQ(rows[2]["value"], 0.5);
    EXPECT_EQ(json["run"]["title"], "Names \\ and \"marks\"");
    expect_equal(solve_text(level).results(), solved(text).results());
}

TEST_F(NetworkJson, TakesTablesOfFilesIntoItself)
{
    folder.write("d.csv", "Stand;Ziel;Strecke;Wetter\nA;B;100,25;1\n");
    const std::string text = "[run]\ndimension = 2\n[csv]\nseparator = \";\"\ndecimal = \",\"\n[tables]\n"
                             "targets = \"name x y code\\nA 0 0 fixed\\nB 100 0 free\"\n"
                             "distances = { file = \"d.csv\", columns = { from = \"Stand\", to = \"Ziel\", "
                             "value = \"Strecke\" } }\n[sigma]\ndistances = 0.001\n";
    const nlohmann::json json = nlohmann::json::parse(json_of(folder.file("net.inp"), text));
    EXPECT_EQ(json["tables"]["distances"], nlohmann::json::parse(R"([{"from": "A", "to": "B", "value": 100.25}])"));
    EXPECT_EQ(json["sigma"]["distances"], 0.001);
    EXPECT_FALSE(json.contains("csv"));
}

TEST_F(NetworkJson, NamesFaultsByTableAndRow)
{
    const std::string head =
        R"({"vorn_network": 1, "run": {"dimension": 1}, "tables": {"targets": [{"name": "A", "z": 0,
        "code": "fixed"}, {"name": "B"}], "height_differences": [{"from": "A", "to": "B", "value": 1, "sigma": 1}, )";
    EXPECT_EQ(faults_in(head + R"({"from": "A", "to": "C", "value": 1, "sigma": 1}]}})"),
              Lines{"net.json (height_differences):2: unknown point \"C\" in column to; did you mean \"A\"?"});
    EXPECT_EQ(faults_in(head + R"({"from": "A", "to": ["B"], "value": 1, "sigma": 1}]}})"),
              Lines{"net.json (height_differences):2: \"to\" of a row of table height_differences is no number and no "
                    "text; write one of the two"});
    EXPECT_EQ(faults_in(head + R"({"from": "A", "to": "B", "a b": 1}]}})"),
              Lines{"net.json: \"a b\" is no column of table height_differences; compare it with the reference"});
    EXPECT_EQ(faults_in(head + R"({"from": "A", "to": "B\nC", "value": 1, "sigma": 1}]}})"),
              Lines{"net.json (height_differences):2: \"to\" of a row of table height_differences holds a line end; "
                    "remove it"});
}

// Numbers of points may be longer than a double holds.
TEST_F(NetworkJson, KeepsEveryDigitOfWholeNumbers)
{
    const SolvedNetwork one = solved(R"({"vorn_network": 1, "run": {"dimension": 1}, "tables": {"targets": [
        {"name": 9210321501234567891, "z": 100, "code": "fixed"}, {"name": 9210321501234567892}], "height_differences": [
        {"from": 9210321501234567891, "to": 9210321501234567892, "value": 1, "sigma": 1}]}})");
    ASSERT_TRUE(one.adjusted()) << one.words();
    EXPECT_EQ(one.results().points[1].name, "9210321501234567892");
    const std::string far = json_of("net.inp", "[run]\ndimension = 3\n[earth]\nmodel = \"cartesian\"\n"
                                               "origin = [5000000000, 0, 0]\n[tables]\ntargets = \"name x y z code\\n"
                                               "A 0 0 0 fixed\\nB 1 0 0 free\"\ndistances = \"from to value sigma\\n"
                                               "A B 1 1\"\n");
    EXPECT_EQ(nlohmann::json::parse(far)["earth"]["origin"][0], 5e9);
}

TEST_F(NetworkJson, RefusesOptionsOfOtherFormats)
{
    folder.write("net.json", "{\"vorn_network\": 1}");
    ImportOptions options;
    options.fixed = {"A"};
    options.given = true;
    Model model;
    Faults faults;
    Lines notes;
    EXPECT_FALSE(read_any_network(folder.file("net.json"), model, notes, faults, options));
    ASSERT_EQ(faults.lines().size(), 1u);
    EXPECT_NE(faults.lines()[0].find("a network in JSON says all by itself; leave out --sets"), std::string::npos);
}

TEST_F(NetworkJson, RefusesWhatIsNone)
{
    EXPECT_EQ(faults_in("{\"schema\": 2}"),
              Lines{"net.json: the JSON is no network; write \"vorn_network\": 1 in its outermost object"});
    EXPECT_EQ(faults_in("{\"vorn_network\": 1,\n  \"run\": }"),
              Lines{"net.json:2:10: not JSON; correct it here or just before"});
    EXPECT_EQ(faults_in("{\"vorn_network\": 1, \"run\": 3}"),
              Lines{"net.json: \"run\" is no section; write an object of settings, such as \"run\""});
    EXPECT_EQ(faults_in("{\"vorn_network\": 1, \"tables\": {\"targets\": {}}}"),
              Lines{"net.json: table \"targets\" is no list of rows; write [{\"from\": \"A\", ...}, ...]"});
    EXPECT_EQ(faults_in("{\"vorn_network\": 1, \"run\": {\"title\": [[[[1]]]]}}")[0],
              "net.json: the setting \"title\" is nested too deeply; write a number, a text, or a list of numbers");
    std::string deep = "{\"vorn_network\": 1, \"run\": ";
    deep.append(100000, '[').append(100000, ']');
    EXPECT_EQ(faults_in(deep + "}").size(), 1u);
}

// Of two values under one key most readers take the last, without a word.
TEST_F(NetworkJson, RefusesKeysThatComeTwiceInOneObject)
{
    EXPECT_EQ(
        faults_in("{\"vorn_network\": 1, \"run\": {\"dimension\": 1},\n \"tables\": {\"targets\": [{\"name\": \"A\", "
                  "\"z\": 0, \"name\": \"B\"}],\n  \"targets\": [{\"name\": \"A\"}, {\"name\": \"A\"}]}}"),
        Lines({"net.json:2:47: the key \"name\" comes twice in one object; keep one of them",
               "net.json:3:3: the key \"targets\" comes twice in one object; keep one of them"}));
}
