// vorn import as its users call it: targets, exit statuses, what is shown.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "host/folder.h"
#include "host/formats/xml.h"

namespace {

const char levelling[] =
    "<?xml version='1.0'?>\n<gama-local><network><description>Line</description><points-observations>\n"
    "<point id='A' z='100' fix='z'/><point id='B' adj='z'/>\n<height-differences>\n"
    "<dh from='A' to='B' val='1.25' stdev='2'/>\n<dh from='A' to='C' val='1.25' stdev='2'/>\n"
    "</height-differences></points-observations></network></gama-local>\n";

std::string text_of(const std::string &path)
{
    std::ostringstream all;
    all << std::ifstream(path, std::ios::binary).rdbuf();
    return all.str();
}

bool contains(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

class Import : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (std::string(VORN_PROGRAM).empty()) GTEST_SKIP() << "the program is not built";
        if (!vornhost::xml_available()) GTEST_SKIP() << "built without a parser of XML";
        folder.write("line.gkf", levelling);
    }

    int run(const std::string &arguments)
    {
        const std::string command =
            "cd " + folder.path + " && " VORN_PROGRAM " " + arguments + " >out 2>err </dev/null";
        const int status = system(command.c_str());
        out = text_of(folder.file("out"));
        err = text_of(folder.file("err"));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    bool exists(const std::string &name) const { return std::filesystem::exists(folder.file(name)); }

    Folder folder;
    std::string out, err;
};

} // namespace

TEST_F(Import, WritesANetworkFileBesideItsSource)
{
    std::filesystem::create_directory(folder.file("sub"));
    folder.write("sub/line.gkf", levelling);
    EXPECT_EQ(run("import sub/line.gkf"), 0);
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "sub/line.gkf:6: height difference from A to C is left out: point \"C\" is not declared; add it "
                   "with fix or adj\n"
                   "sub/line.gkf:2: observations read 2 = taken 1 + left out 1\n");
    EXPECT_TRUE(contains(text_of(folder.file("sub/line.inp")), "\nA     B   1.25   line.gkf:5\n"));
    EXPECT_EQ(run("import line.gkf -o b.inp --quiet"), 0);
    EXPECT_EQ(err, "");
    EXPECT_EQ(text_of(folder.file("b.inp")), text_of(folder.file("sub/line.inp")));
}

TEST_F(Import, ShowsTheNetworkFileOnStandardOutput)
{
    EXPECT_EQ(run("import line.gkf -o - --from gkf"), 0);
    EXPECT_TRUE(contains(out, "title = \"Line\"\ndimension = 1\n"));
    EXPECT_FALSE(exists("line.inp"));
}

TEST_F(Import, ReplacesNothingUnasked)
{
    folder.write("line.inp", "mine");
    EXPECT_EQ(run("import line.gkf"), 2);
    EXPECT_EQ(err, "vorn: line.inp exists; name another file with -o, or replace it with --force\n");
    EXPECT_EQ(run("import line.gkf -o line.inp"), 2);
    EXPECT_EQ(text_of(folder.file("line.inp")), "mine");
    EXPECT_EQ(run("import line.gkf --force"), 0);
    EXPECT_TRUE(contains(text_of(folder.file("line.inp")), "[run]"));
    EXPECT_EQ(run("import line.gkf -o line.gkf --force"), 2);
    EXPECT_EQ(text_of(folder.file("line.gkf")), levelling);
}

TEST_F(Import, WritesNothingAfterAFault)
{
    folder.write("bad.gkf", "<gama-local>\n<network>\n</gama-local>");
    EXPECT_EQ(run("import bad.gkf"), 2);
    EXPECT_EQ(err,
              "bad.gkf:3:3: not XML: mismatched tag; correct the XML here or just before, in \"network\" of line 2\n");
    EXPECT_FALSE(exists("bad.inp"));
    EXPECT_EQ(run("import none.gkf"), 2);
    EXPECT_EQ(err, "none.gkf: file \"none.gkf\" does not exist; check its name and folder\n");
    EXPECT_EQ(run("import line.gkf --from tea"), 2);
    EXPECT_TRUE(contains(err, "'tea' is none of ")) << err;
    folder.write("text.txt", "hello\n");
    EXPECT_EQ(run("import text.txt"), 2);
    EXPECT_TRUE(contains(err, "text.txt: its format is not recognised; it can be gkf (network of GNU Gama), ")) << err;
    EXPECT_EQ(run("import line.gkf -o nowhere/line.inp"), 3);
}

// A triangle of three set-ups of 100, 100 and 141.421 m, all level: distances agree to half a millimetre.
TEST_F(Import, AdjustsAFieldBookWithOneCommand)
{
    const auto sight = [](const char *target, const char *direction, const char *distance) {
        return std::string("110002+0000000") + target + " 21.322+" + direction + " 22.322+10000000 31..00+" + distance +
               "\n";
    };
    folder.write("book.gsi", "410001+00000002 42....+0000000A 43....+00000000\n" + sight("B", "01000000", "00100000") +
                                 sight("C", "11000000", "00100000") +
                                 "410001+00000002 42....+0000000B 43....+00000000\n" +
                                 sight("A", "00000000", "00100000") + sight("C", "35000000", "00141421") +
                                 "410001+00000002 42....+0000000C 43....+00000000\n" +
                                 sight("B", "00000000", "00141421") + sight("A", "35000000", "00100000"));
    folder.write("known.csv", "name,north,east,height\nA,1000,2000,10\nB,1100,2000,10\n");
    ASSERT_EQ(run("adjust book.gsi --points known.csv --fix A,B --sigma directions=0.5 --json book.json"), 0) << err;
    EXPECT_TRUE(contains(err, "book.gsi: records read 9 = taken 9 + left out 0\n")) << err;
    const auto results = nlohmann::json::parse(text_of(folder.file("book.json")));
    const auto &c = results["points"][2]["adjusted"];
    EXPECT_NEAR(c["x"].get<double>(), 1000.0, 5e-4);
    EXPECT_NEAR(c["y"].get<double>(), 2100.0, 5e-4);
    EXPECT_NEAR(c["z"].get<double>(), 10.0, 5e-4);
}

TEST_F(Import, RefusesWhatIsSaidOfAFileThatIsNone)
{
    folder.write("net.inp", "[run]\ndimension = 2\n");
    EXPECT_EQ(run("adjust net.inp --fix A"), 2);
    EXPECT_TRUE(contains(err, "net.inp: its format is not recognised")) << err;
    folder.write("book.gsi", "410001+00000002 42....+0000000A\n");
    for (const char *sigma : {"length=1", "directions", "directions=0", "directions=-1", "directions=x"})
        EXPECT_EQ(run(std::string("adjust book.gsi --sigma ") + sigma), 2) << sigma;
    EXPECT_EQ(run("adjust book.gsi --sigma directions=1"), 2);
    EXPECT_TRUE(contains(err, "book.gsi: it holds no points and no observations")) << err;
    folder.write("book.csv", "name,x,y\nA,1,2\n");
    EXPECT_EQ(run("adjust book.csv --points none.csv"), 2);
    EXPECT_TRUE(contains(err, "none.csv")) << err;
}

// A levelled triangle with a misclosure of 3 mm: each height difference takes 1 mm of it.
TEST_F(Import, AdjustsAFileOfAnotherProgramAsTheNetworkFileMadeOfIt)
{
    const std::string points = "<point id='A' z='100' fix='z'/><point id='B' adj='z'/>\n<point id='C' adj='z'/>\n";
    folder.write("ring.gkf",
                 "<gama-local><network><points-observations>" + points +
                     "<height-differences><dh from='A' to='B' val='1.001' stdev='1'/>\n"
                     "<dh from='B' to='C' val='1.001' stdev='1'/>\n<dh from='C' to='A' val='-1.999' stdev='1'/>\n"
                     "<dh from='C' to='X' val='1' stdev='1'/></height-differences></points-observations></network>"
                     "</gama-local>");
    ASSERT_EQ(run("adjust ring.gkf --json ring.json"), 0) << err;
    const auto results = nlohmann::json::parse(text_of(folder.file("ring.json")));
    EXPECT_EQ(results["degrees_of_freedom"], 1);
    EXPECT_NEAR(results["points"][1]["adjusted"]["z"].get<double>(), 101.0, 1e-9);
    EXPECT_NEAR(results["points"][2]["adjusted"]["z"].get<double>(), 102.0, 1e-9);
    EXPECT_NEAR(results["sigma_a_posteriori"].get<double>(), std::sqrt(3.0), 1e-9);
    EXPECT_EQ(results["residuals"][1]["line"], 4); // in ring.gkf
    EXPECT_TRUE(contains(err, "ring.gkf:6: height difference from C to X is left out"));
    EXPECT_EQ(run("check ring.gkf"), 0) << err;
    EXPECT_TRUE(contains(out, "ring.gkf: solver sparse"));
    EXPECT_FALSE(exists("ring.inp"));
    folder.write("bad.gkf", "<gama-local><network/></gama-local>");
    EXPECT_EQ(run("adjust bad.gkf"), 2);
    EXPECT_EQ(err, "bad.gkf:1:13: no point has fix or adj; write them in the points\n");
    folder.write("bad.xml", "<gama-local-adjustment/>");
    EXPECT_EQ(run("check bad.xml"), 2);
    EXPECT_EQ(err, "bad.xml:1:1: the file holds results of gama-local, not a network; import the .gkf beside it\n");
}

TEST_F(Import, HasItsCounterpartInExport)
{
    EXPECT_EQ(run("import line.gkf --quiet"), 0);
    EXPECT_EQ(run("export line.inp --to lines"), 0);
    EXPECT_TRUE(contains(text_of(folder.file("line.dat")), "L A-B 1.25 1 0.002"));
    EXPECT_EQ(run("export line.inp --to lines"), 2);
    EXPECT_TRUE(contains(err, "line.dat exists"));
    EXPECT_EQ(run("export line.inp --to json -o -"), 0);
    EXPECT_EQ(nlohmann::json::parse(out)["tables"]["height_differences"][0]["value"], 1.25);
    EXPECT_EQ(run("export line.inp --to points -o -"), 0);
    EXPECT_TRUE(contains(out, "B,,,101.2500"));
    EXPECT_EQ(run("export line.inp --to sinex -o none.snx"), 2);
    EXPECT_EQ(err, "line.inp: SINEX holds networks in space; export as points\n");
    EXPECT_FALSE(exists("none.snx"));
    EXPECT_EQ(run("export line.inp --to landxml -o none.xml"), 2);
    EXPECT_EQ(err, "line.inp: LandXML holds points with x and y; export as points\n");
    EXPECT_FALSE(exists("none.xml"));
    EXPECT_EQ(run("export line.inp"), 2);
}
