#include "host/input/network_file.h"

#include <gtest/gtest.h>

#include <math.h>
#include <string.h>

#include "host/folder.h"

using namespace vornhost;

namespace {

const double pi = 3.14159265358979323846;

// Tables of a small network in the plane, without faults.
const std::string tables = "[tables]\n"
                           "stations = \"\"\"\n"
                           "name x y\n"
                           "S 0 0\n"
                           "\"\"\"\n"
                           "targets = \"\"\"\n"
                           "name x y code\n"
                           "T 100 0 fixed\n"
                           "\"\"\"\n"
                           "distances = \"\"\"\n"
                           "from to value sigma\n"
                           "S T 100 0.005\n"
                           "\"\"\"\n";

const std::string run = "[run]\ndimension = 2\n";

// A setting in line 4, below its section in line 3.
Lines setting(const std::string &section, const std::string &line)
{
    return faults_of(run + "[" + section + "]\n" + line + "\n" + tables);
}

// A setting of [run] in line 3.
Lines run_setting(const std::string &line) { return faults_of(run + line + "\n" + tables); }

} // namespace

TEST(NetworkFile, ReadsTheExampleInItsReference)
{
    std::ifstream file(SOURCE_DIR "/docs/network-file.md");
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    const std::string mark = "```toml\n";
    const size_t begin = text.find(mark) + mark.size();
    const Model model = model_of(text.substr(begin, text.find("```", begin) - begin));
    EXPECT_EQ(model.stations.size(), 2u);
    EXPECT_EQ(model.targets.size(), 2u);
    EXPECT_EQ(model.distances.size(), 3u);
    EXPECT_EQ(model.directions.size(), 6u);
}

TEST(NetworkFile, ReadsASmallNetwork)
{
    const Model model = model_of("[run]\n"
                                 "title     = \"Distance-direction network\"\n"
                                 "dimension = 2\n"
                                 "solver    = \"compact\"        # least squares\n"
                                 "mode      = \"statistics\"\n"
                                 "\n"
                                 "[units]\n"
                                 "length = \"m\"\n"
                                 "angle  = \"gon\"\n"
                                 "\n"
                                 "[tables]\n"
                                 "stations = \"\"\"\n"
                                 "name   x          y         code\n"
                                 "Z108   40759.4    27816.1   free\n"
                                 "Z110   41373.0    27904.0   free\n"
                                 "\"\"\"\n"
                                 "targets = \"\"\"\n"
                                 "name   x          y         code\n"
                                 "104    40686.792  26816.143 fixed\n"
                                 "\"\"\"\n"
                                 "distances = \"\"\"\n"
                                 "from   to    value     sigma\n"
                                 "Z108   104   1002.598  0.005\n"
                                 "\"\"\"\n");
    EXPECT_EQ(model.title, "Distance-direction network");
    EXPECT_EQ(model.p.dim, 2);
    ASSERT_EQ(model.stations.size(), 2u);
    EXPECT_STREQ(model.stations.records[1].name, "Z110    ");
    EXPECT_EQ(model.stations.records[1].x[1], 27904.0);
    EXPECT_EQ(model.stations.where[1].line, 15);
    EXPECT_EQ(model.targets.records[0].ix[0], CODE_FIXED);
    EXPECT_EQ(model.distances.records[0].val, 1002.598);
    EXPECT_EQ(model.p.nstations, 2);
    EXPECT_EQ(model.p.stations, model.stations.records.data());
    EXPECT_EQ(model.files, std::vector<std::string>{model.path});
}

TEST(NetworkFile, HasTheDefaultsOfItsReference)
{
    const Model model = model_of(run + tables);
    const project &p = model.p;
    EXPECT_EQ(model.title, "");
    EXPECT_EQ(model.solver, Solver::Sparse);
    EXPECT_EQ(model.mode, Mode::Statistics);
    EXPECT_EQ(p.irun, 1);
    EXPECT_EQ(p.itmax, 20);
    EXPECT_EQ(p.convergence, 1e-6);
    EXPECT_EQ(p.idebug, 0);
    EXPECT_EQ(p.iunit, 0);
    EXPECT_EQ(p.iangle, ANGLE_GON);
    EXPECT_EQ(p.izenith, 1);
    EXPECT_EQ(p.iearth, 0);
    EXPECT_EQ(p.radius, 6371000.0);
    for (const double zero : {p.trans[0], p.trans[1], p.trans[2], p.horigin, p.latitude, p.azrot}) EXPECT_EQ(zero, 0.0);
    EXPECT_EQ(p.iredux, 0);
    for (const double one : {p.sdist, p.sdifh, p.sdir1, p.sdir2, p.saz, p.sgps, p.suv}) EXPECT_EQ(one, 1.0);
    for (const int zero : {p.igps, p.lumpmethod, p.iphoto}) EXPECT_EQ(zero, 0);
    EXPECT_EQ(p.imixed, -1);
    EXPECT_STREQ(p.confile, "");
    EXPECT_STREQ(p.filename, "net.inp");
    EXPECT_EQ(p.runresults, nullptr);
}

TEST(NetworkFile, ReadsEverySetting)
{
    Folder folder;
    folder.write("old.con", "");
    folder.write("net.inp", "[run]\n"
                            "title = \"All\"\n"
                            "dimension = 3\n"
                            "solver = \"jordan\"\n"
                            "mode = \"propagation\"\n"
                            "iterations = 1000\n"
                            "convergence = 1e-4\n"
                            "trace = 9\n"
                            "[units]\n"
                            "length = \"mm\"\n"
                            "angle = \"degree\"\n"
                            "vertical = \"elevation\"\n"
                            "[earth]\n"
                            "model = \"mixed\"\n"
                            "radius = 6380000\n"
                            "origin = [1, 2.5, -3]\n"
                            "height = 400.5\n"
                            "latitude = 46.5\n"
                            "azimuth_rotation = 90\n"
                            "[reductions]\n"
                            "distances = \"mark_to_mark\"\n"
                            "[apriori]\n"
                            "distances = 0.001\n"
                            "height_differences = 0.002\n"
                            "directions = 0.003\n"
                            "vertical_angles = 0.004\n"
                            "azimuths = 0.005\n"
                            "baselines = 0.006\n"
                            "images = 0.007\n"
                            "[sigma]\n"
                            "distances = 1.5\n"
                            "height_differences = 2.5\n"
                            "directions = 3.5\n"
                            "vertical_angles = 4.5\n"
                            "azimuths = 5.5\n"
                            "[baselines]\n"
                            "datum_rule = \"translations_only\"\n"
                            "[lumps]\n"
                            "method = 9\n"
                            "[connected_net]\n"
                            "file = \"old.con\"\n"
                            "[tables]\n"
                            "stations = \"name x y z\\nS 0 0 0\"\n"
                            "targets = \"name x y z\\nT 1 1 1\"\n"
                            "distances = \"from to value\\nS T 2\"\n"
                            "height_differences = \"from to value\\nS T 2\"\n"
                            "directions = \"from to value\\nS T 2\"\n"
                            "vertical_angles = \"from to value\\nS T 2\"\n"
                            "azimuths = \"from to value\\nS T 2\"\n"
                            "baselines = \"from to dx dy dz cxx cyy czz\\nS T 1 1 1 1 1 1\"\n");
    ASSERT_EQ(folder.read(), Lines());
    const Model &model = folder.model;
    const project &p = model.p;
    EXPECT_EQ(model.title, "All");
    EXPECT_EQ(model.solver, Solver::Jordan);
    EXPECT_EQ(model.mode, Mode::Propagation);
    EXPECT_EQ(p.irun, -2);
    EXPECT_EQ(p.dim, 3);
    EXPECT_EQ(p.itmax, 1000);
    EXPECT_EQ(p.convergence, 1e-4);
    EXPECT_EQ(p.idebug, 9);
    EXPECT_EQ(p.iunit, 1);
    EXPECT_EQ(p.iangle, ANGLE_DEGREE);
    EXPECT_EQ(p.izenith, 0);
    EXPECT_EQ(p.iearth, 2);
    EXPECT_EQ(p.radius, 6380000.0);
    EXPECT_EQ(p.trans[0], 1.0);
    EXPECT_EQ(p.trans[1], 2.5);
    EXPECT_EQ(p.trans[2], -3.0);
    EXPECT_EQ(p.horigin, 400.5);
    EXPECT_EQ(p.latitude, 46.5);
    EXPECT_NEAR(p.azrot, pi / 2.0, 1e-15);
    EXPECT_EQ(p.iredux, 1);
    EXPECT_EQ(p.sdist, 0.001);
    EXPECT_EQ(p.sdifh, 0.002);
    EXPECT_EQ(p.sdir1, 0.003);
    EXPECT_EQ(p.sdir2, 0.004);
    EXPECT_EQ(p.saz, 0.005);
    EXPECT_EQ(p.sgps, 0.006);
    EXPECT_EQ(p.suv, 0.007);
    EXPECT_EQ(model.distances.records[0].sig, 1.5);
    EXPECT_EQ(model.heightdiffs.records[0].sig, 2.5);
    EXPECT_EQ(model.directions.records[0].sig, 3.5);
    EXPECT_EQ(model.verticals.records[0].sig, 4.5);
    EXPECT_EQ(model.azimuths.records[0].sig, 5.5);
    EXPECT_EQ(p.igps, 9);
    EXPECT_EQ(p.lumpmethod, 9);
    EXPECT_EQ(p.confile, folder.file("old.con"));
}

TEST(NetworkFile, LeavesComparisonsOfEpochsToTheEngineUnlessTheFileNamesASolver)
{
    EXPECT_EQ(model_of(run + "[lumps]\nmethod = 9\n" + tables).solver, Solver::Compact);
    EXPECT_EQ(model_of(run + "[lumps]\nmethod = 1\n" + tables).solver, Solver::Sparse);
    EXPECT_EQ(model_of(run + "solver = \"sparse\"\n[lumps]\nmethod = 9\n" + tables).solver, Solver::Sparse);
}

TEST(NetworkFile, ReadsEveryWordOfASetting)
{
    const auto p = [](const std::string &section, const std::string &line) {
        const std::string more = section == "run" ? line + "\n" : "[" + section + "]\n" + line + "\n";
        return model_of(run + more + tables).p;
    };
    EXPECT_EQ(p("run", "solver = \"simplex\"").irun, -1);
    EXPECT_EQ(p("run", "solver = \"simplex\"\nmode = \"solution\"").irun, -1);
    EXPECT_EQ(p("run", "mode = \"solution\"").irun, 0);
    EXPECT_EQ(p("units", "length = \"m\"").iunit, 0);
    EXPECT_EQ(p("units", "length = \"inch\"").iunit, 2);
    EXPECT_EQ(p("units", "angle = \"packed_degree\"").iangle, ANGLE_PACKED);
    EXPECT_EQ(p("units", "angle = \"radian\"").iangle, ANGLE_RADIAN);
    EXPECT_EQ(p("units", "vertical = \"zenith\"").izenith, 1);
    EXPECT_EQ(p("earth", "model = \"none\"").iearth, 0);
    EXPECT_EQ(p("earth", "model = \"cartesian\"").iearth, 1);
    EXPECT_EQ(p("reductions", "distances = \"none\"").iredux, 0);
    EXPECT_EQ(p("reductions", "distances = \"mark_to_mark\"").iredux, 1);
    EXPECT_EQ(p("reductions", "distances = \"horizontal_mixed\"").iredux, 2);
    EXPECT_EQ(p("reductions", "distances = 9").iredux, 9);
    EXPECT_EQ(p("lumps", "method = 1").lumpmethod, 1);
    EXPECT_EQ(p("lumps", "method = 0").lumpmethod, 0);
}

TEST(NetworkFile, SetsTheDatumRuleOfBaselinesOnlyWhenThereAreSome)
{
    const std::string baseline = "baselines = \"from to dx dy dz cxx cyy czz\\nS T 1 1 1 1 1 1\"\n";
    const auto rule = [&](const char *word) {
        return model_of(run + "[baselines]\ndatum_rule = \"" + word + "\"\n" + tables + baseline).p.igps;
    };
    EXPECT_EQ(rule("plain"), 2);
    EXPECT_EQ(rule("scale_and_orientation"), 1);
    EXPECT_EQ(rule("translations_only"), 9);
    EXPECT_EQ(rule("ignore"), 0);
    EXPECT_EQ(model_of(run + tables + baseline).p.igps, 1);
    EXPECT_EQ(model_of(run + "[baselines]\ndatum_rule = \"plain\"\n" + tables).p.igps, 0);
}

TEST(NetworkFile, NamesTheRunAfterItsFileWithoutBlanksOrFurtherPoints)
{
    const auto run_name = [](const std::string &file) {
        Folder folder;
        folder.write(file, run + tables);
        EXPECT_EQ(folder.read(file), Lines());
        return std::string(folder.model.p.filename);
    };
    EXPECT_EQ(run_name("bridge.2024.inp"), "bridge_2024.inp");
    EXPECT_NE(run_name("my.net.inp"), run_name("my.other.inp"));
    EXPECT_EQ(run_name("my net"), "my_net.inp");
    EXPECT_EQ(run_name(".hidden"), "_hidden.inp");
    EXPECT_EQ(run_name(std::string(200, 'n')), std::string(123, 'n') + ".inp");
}

TEST(NetworkFile, AcceptsAByteOrderMarkAndWindowsLineEnds)
{
    std::string text = "\xEF\xBB\xBF" + run + tables;
    for (size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 2)) text.insert(at, "\r");
    const Model model = model_of(text);
    EXPECT_STREQ(model.targets.records[0].name, "T       ");
    EXPECT_EQ(model.stations.where[0].line, 6);
}

TEST(NetworkFile, KeepsTheModelEmptyWhenThereAreFaults)
{
    Folder folder;
    folder.write("net.inp", run + tables);
    ASSERT_EQ(folder.read(), Lines());
    folder.write("net.inp", run + "trace = -1\n" + tables);
    EXPECT_EQ(folder.read().size(), 1u);
    EXPECT_FALSE(folder.accepted);
    EXPECT_EQ(folder.model.stations.size(), 0u);
    EXPECT_EQ(folder.model.p.nstations, 0);
}

TEST(NetworkFile, ListsAllFaultsInTheOrderOfTheFile)
{
    EXPECT_EQ(
        faults_of("[run]\n"
                  "dimension = 4\n"
                  "[tables]\n"
                  "distances = \"\"\"\n"
                  "from to value sigma\n"
                  "S T 12,5 0\n"
                  "\"\"\"\n"
                  "stations = \"\"\"\n"
                  "name x y\n"
                  "S zero 0\n"
                  "\"\"\"\n"
                  "targets = \"\"\"\n"
                  "name x y status\n"
                  "T 1 1 0\n"
                  "\"\"\"\n"),
        (Lines{"net.inp:2:13: dimension in [run] is not a whole number from 1 to 3; write a whole number from 1 to 3",
               "net.inp:6:5: \"12,5\" is not a number in column value; write it with a decimal point, like 12.5",
               "net.inp:6:10: \"0\" in column sigma is not above 0; write a number above 0",
               "net.inp:10:3: \"zero\" is not a number in column x; write a number like 12.5",
               "net.inp:14:7: status 0 would stop the loading of the network; write off"}));
}

TEST(NetworkFile, RefusesAMissingDimension)
{
    EXPECT_EQ(faults_of(tables), Lines{"net.inp: dimension is missing in [run]; write dimension = 1, 2 or 3"});
    EXPECT_EQ(faults_of("\n[run]\ntrace = 1\n" + tables),
              Lines{"net.inp:2:1: dimension is missing in [run]; write dimension = 1, 2 or 3"});
}

TEST(NetworkFile, RefusesUnknownSectionsAndKeys)
{
    EXPECT_EQ(setting("unit", "length = \"m\""), Lines{"net.inp:3:2: unknown section \"unit\"; did you mean [units]?"});
    EXPECT_EQ(
        setting("weather", "wind = 1"),
        Lines{"net.inp:3:2: unknown section \"weather\"; known sections: [run], [units], [earth], [crs], [reductions], "
              "[apriori], [sigma], [baselines], [lumps], [connected_net], [csv], [tests], [covariances], [tables]"});
    EXPECT_EQ(run_setting("dimention = 3"),
              Lines{"net.inp:3:1: unknown key \"dimention\" in [run]; did you mean dimension?"});
    EXPECT_EQ(setting("units", "temperature = 1"),
              Lines{"net.inp:4:1: unknown key \"temperature\" in [units]; known keys: length, angle, vertical, "
                    "sigma_length, sigma_angle"});
    EXPECT_EQ(faults_of(run + tables + "target = \"name\"\n"),
              Lines{"net.inp:16:1: unknown key \"target\" in [tables]; did you mean targets?"});
}

TEST(NetworkFile, RefusesKeysOutsideASection)
{
    EXPECT_EQ(faults_of("solver = \"jordan\"\n" + run + tables),
              Lines{"net.inp:1:1: key \"solver\" stands outside a section; write it below [run]"});
    EXPECT_EQ(faults_of("tabels = 1\n" + run + tables),
              Lines{"net.inp:1:1: unknown key \"tabels\"; did you mean [tables]?"});
    EXPECT_EQ(faults_of("units = \"m\"\n" + run + tables),
              Lines{"net.inp:1:9: units is not a section; write [units] on a line of its own and its keys below"});
    EXPECT_EQ(faults_of(run + "[[units]]\n" + tables),
              Lines{"net.inp:3:1: units is not a section; write [units] on a line of its own and its keys below"});
}

TEST(NetworkFile, RefusesValuesOfTheWrongKind)
{
    EXPECT_EQ(run_setting("title = 5"),
              Lines{"net.inp:3:9: title in [run] is not a text; write it in quotation marks"});
    EXPECT_EQ(run_setting("title = \"a\\nb\""),
              Lines{"net.inp:3:9: title in [run] holds a control character; write it on one line"});
    EXPECT_EQ(
        run_setting("iterations = 0"),
        Lines{"net.inp:3:14: iterations in [run] is not a whole number from 1 to 1000; write a whole number from 1 "
              "to 1000"});
    EXPECT_EQ(run_setting("iterations = 1001").size(), 1u);
    EXPECT_EQ(run_setting("iterations = 1.5").size(), 1u);
    EXPECT_EQ(run_setting("convergence = 0"),
              Lines{"net.inp:3:15: convergence in [run] is not a number above 0; write a number above 0"});
    EXPECT_EQ(run_setting("convergence = nan").size(), 1u);
    EXPECT_EQ(run_setting("convergence = inf").size(), 1u);
    EXPECT_EQ(run_setting("convergence = \"1\"").size(), 1u);
    EXPECT_EQ(run_setting("trace = 10"),
              Lines{"net.inp:3:9: trace in [run] is not a whole number from 0 to 9; write a whole number from 0 to 9"});
}

TEST(NetworkFile, RefusesUnknownWords)
{
    EXPECT_EQ(run_setting("solver = \"compct\""),
              Lines{"net.inp:3:10: \"compct\" is not known for solver in [run]; did you mean \"compact\"?"});
    EXPECT_EQ(run_setting("mode = 1"), Lines{"net.inp:3:8: value is not known for mode in [run]; write one of: "
                                             "\"statistics\", \"solution\", \"propagation\""});
    EXPECT_EQ(setting("units", "angle = \"turns\""),
              Lines{"net.inp:4:9: \"turns\" is not known for angle in [units]; write one of: \"gon\", \"mgon\", "
                    "\"degree\", \"arc_second\", \"mil\", \"packed_degree\", \"radian\", \"dms\""});
    EXPECT_EQ(setting("reductions", "distances = 3"),
              Lines{"net.inp:4:13: value is not known for distances in [reductions]; write one of: \"none\", "
                    "\"mark_to_mark\", \"horizontal_mixed\", \"horizontal_origin\""});
    EXPECT_EQ(setting("lumps", "method = 2"),
              Lines{"net.inp:4:10: value is not known for method in [lumps]; write one of: \"0\", \"1\", \"9\""});
}

TEST(NetworkFile, RefusesHorizontalDistancesInSpace)
{
    for (const char *word : {"horizontal_mixed", "horizontal_origin"}) {
        const std::string file = std::string("[run]\ndimension = 3\n[reductions]\ndistances = \"") + word +
                                 "\"\n[tables]\ntargets = \"name x y z\\nA 1 2 3\\nB 2 3 4\"\n"
                                 "distances = \"from to value sigma\\nA B 1 1\"\n";
        EXPECT_EQ(faults_of(file), Lines{"net.inp:4:13: distances in [reductions] makes distances horizontal: only in "
                                         "the plane; write \"mark_to_mark\", or dimension = 2"});
    }
}

TEST(NetworkFile, RefusesErrorPropagationByTheSimplexSolver)
{
    EXPECT_EQ(run_setting("solver = \"simplex\"\nmode = \"propagation\""),
              Lines{"net.inp:4:8: the simplex solver has no error propagation; choose compact or jordan"});
}

TEST(NetworkFile, RefusesAnEarthThatCannotBe)
{
    EXPECT_EQ(setting("earth", "radius = 0"),
              Lines{"net.inp:4:10: radius in [earth] is not a number above 0; write a number above 0"});
    EXPECT_EQ(setting("earth", "latitude = 90"),
              Lines{"net.inp:4:12: latitude in [earth] is not a number between -90 and 90; write a number between -90 "
                    "and 90"});
    EXPECT_EQ(setting("earth", "height = 1e13"),
              Lines{"net.inp:4:10: height in [earth] is not a number of metres; write a number of metres"});
    for (const char *origin : {"[1, 2]", "[1, 2, nan]", "[1, 2, \"3\"]", "5", "[1, 2, 3, 4]"})
        EXPECT_EQ(setting("earth", std::string("origin = ") + origin),
                  Lines{"net.inp:4:10: origin in [earth] is not three numbers; write origin = [x, y, z] in metres"});
    EXPECT_EQ(faults_of(run + "[units]\nangle = \"packed_degree\"\n[earth]\nazimuth_rotation = 0.75\n" + tables),
              Lines{"net.inp:6:20: azimuth_rotation in [earth] has minutes or seconds of 60 or more; write degrees as "
                    "ddd.mmss"});
}

TEST(NetworkFile, RefusesStandardDeviationsThatAreNotAboveZero)
{
    for (const char *key : {"distances", "height_differences", "directions", "vertical_angles", "azimuths"})
        for (const char *section : {"apriori", "sigma"})
            EXPECT_EQ(setting(section, std::string(key) + " = 0"),
                      Lines{"net.inp:4:" + std::to_string(strlen(key) + 4) + ": " + key + " in [" + section +
                            "] is not a number above 0; write a number above 0"});
    EXPECT_EQ(setting("apriori", "baselines = -1").size(), 1u);
    EXPECT_EQ(setting("apriori", "images = -1").size(), 1u);
    EXPECT_EQ(faults_of(run + "[units]\nangle = \"packed_degree\"\n[sigma]\ndirections = 0.0075\n" + tables),
              Lines{"net.inp:6:14: directions in [sigma] has minutes or seconds of 60 or more; write degrees as "
                    "ddd.mmss"});
}

TEST(NetworkFile, RefusesWhatIsNotToml)
{
    EXPECT_EQ(faults_of("[run]\ndimension = \n" + tables)[0],
              "net.inp:2:13: Error while parsing key-value pair: expected value, saw '\\n'; correct it as TOML");
    EXPECT_EQ(faults_of("[run\ndimension = 2\n").size(), 1u);
    EXPECT_EQ(faults_of("[run]\ndimension = 2\ndimension = 3\n"),
              Lines{"net.inp:3:13: Error while parsing key-value pair: cannot redefine existing integer 'dimension'; "
                    "correct it as TOML"});
    EXPECT_EQ(faults_of(run + "title = \"a\x01\"\n").size(), 1u);
    EXPECT_EQ(faults_of(run + "[tables]\nstations = \"\"\"\nname\n").size(), 1u);
}

TEST(NetworkFile, RefusesAKeyThatBeginsWithABracket)
{
    EXPECT_EQ(
        faults_of(run + "[}units]\n" + tables),
        Lines{"net.inp:3:2: Error while parsing key: expected bare key starting character or string delimiter, saw "
              "'}'; correct it as TOML"});
}

TEST(NetworkFile, RefusesCharactersBeyondAsciiOutsideOfTexts)
{
    const auto stray = [](const char *line, const char *place) {
        const Lines lines = faults_of(run + line + "\n" + tables);
        const std::string begin = "net.inp:" + std::string(place) + ": Error while parsing",
                          end = "; correct it as TOML";
        ASSERT_EQ(lines.size(), 1u) << line;
        EXPECT_EQ(lines[0].substr(0, begin.size()), begin) << line;
        EXPECT_EQ(lines[0].substr(lines[0].size() - end.size()), end) << line;
    };
    stray("title = M\u00FCller", "3:9");
    stray("title = \u00FC", "3:9");
    stray("\u00E9t\u00E9 = 1", "3:1");
    stray("a\u0301 = 1", "3:2");
    stray("[\u00E9]", "3:2");
    stray("trace = 1\u00E9", "3:10");
    stray("title = \"\u00E9\" \u00E9", "3:13");
    stray("title = \"\" \U0001F600", "3:12");
    stray("title = \"\"\"\\ \u00FC\"\"\"", "3:14");
}

TEST(NetworkFile, TakesCharactersBeyondAsciiInTextsAndComments)
{
    const auto title = [](const char *line) {
        return model_of(run + "# gro\u00DF \"\n" + line + " # \u00FC '\n" + tables).title;
    };
    EXPECT_EQ(title("title = \"M\u00FCller\""), "M\u00FCller");
    EXPECT_EQ(title("title = '\u00E9\\'"), "\u00E9\\");
    EXPECT_EQ(title("title = \"\"\"\u00E9\"\"\u00E9\"\"\"\"\""), "\u00E9\"\"\u00E9\"\"");
    EXPECT_EQ(title("title = \"\"\"Netz \\\n   \u00FCber \\\n  \U0001F600\"\"\""), "Netz \u00FCber \U0001F600");
}

TEST(NetworkFile, RefusesKeysOfExcessiveDepth)
{
    std::string deep = "a";
    for (int i = 0; i < 40000; i++) deep += ".a";
    EXPECT_EQ(faults_of(deep + " = 1\n"), Lines{"net.inp:1:2002: line has more than 1000 points; break it into lines"});
    EXPECT_EQ(faults_of("[" + deep + "]\n").size(), 1u);
    EXPECT_EQ(faults_of(run + "title = \"" + std::string(1000, '.') + "\"\n" + tables), Lines());
    EXPECT_EQ(faults_of(run + "x = " + std::string(40000, '[') + "\n").size(), 1u);
}

TEST(NetworkFile, RefusesAFileThatIsNoText)
{
    EXPECT_EQ(faults_of(std::string("[run]\n\0", 7)),
              Lines{"net.inp:2:1: NUL byte in the text; save the file as plain text"});
    EXPECT_EQ(faults_of("[run]\n# M\xFCller\n"), Lines{"net.inp:2:4: byte FC is not UTF-8; save the file as UTF-8"});
    Folder folder;
    EXPECT_EQ(folder.read(), Lines{"net.inp: file \"net.inp\" does not exist; check its name and folder"});
}

TEST(NetworkFile, RefusesANetworkWithoutPointsOrObservations)
{
    EXPECT_EQ(faults_of(run), (Lines{"net.inp: no points; list them in table stations or targets",
                                     "net.inp: no observations; list them in a table such as distances"}));
    EXPECT_EQ(faults_of(""), (Lines{"net.inp: dimension is missing in [run]; write dimension = 1, 2 or 3",
                                    "net.inp: no points; list them in table stations or targets",
                                    "net.inp: no observations; list them in a table such as distances"}));
}

TEST(NetworkFile, RefusesAnEmptyTable)
{
    EXPECT_EQ(faults_of(run + tables + "azimuths = \"\"\n"),
              Lines{"net.inp:16:12: table azimuths is empty; add rows or remove the table"});
    EXPECT_EQ(faults_of(run + tables + "azimuths = '''from to value'''\n"),
              Lines{"net.inp:16:12: table azimuths has a heading but no rows; add rows or remove the table"});
}

TEST(NetworkFile, RefusesATableThatIsNeitherTextNorFile)
{
    EXPECT_EQ(faults_of(run + tables + "azimuths = 5\n"),
              Lines{"net.inp:16:12: table azimuths is neither a text nor a file; write \"\"\"...\"\"\" or { file = "
                    "\"azimuths.csv\" }"});
    EXPECT_EQ(faults_of(run + tables + "azimuths = { path = \"a.csv\" }\n"),
              (Lines{"net.inp:16:12: table azimuths names no file; write { file = \"azimuths.csv\" }",
                     "net.inp:16:14: unknown key \"path\" in table azimuths; known keys: file, columns"}));
    EXPECT_EQ(faults_of(run + tables + "azimuths = { file = 5 }\n"),
              Lines{"net.inp:16:12: table azimuths names no file; write { file = \"azimuths.csv\" }"});
}

TEST(NetworkFile, ReadsTablesFromTheirOwnFiles)
{
    Folder folder;
    std::filesystem::create_directory(folder.file("lists"));
    folder.write("lists/a.csv", "\xEF\xBB\xBF"
                                "from,to,value,sigma\r\nS,\"T\",50.5,0.001\r\n");
    folder.write("net.inp", run + tables + "azimuths = { file = \"lists/a.csv\" }\n");
    ASSERT_EQ(folder.read(), Lines());
    ASSERT_EQ(folder.model.azimuths.size(), 1u);
    EXPECT_EQ(folder.model.azimuths.records[0].val, 50.5);
    EXPECT_EQ(folder.model.azimuths.where[0].file, 1);
    EXPECT_EQ(folder.model.azimuths.where[0].line, 2);
    EXPECT_EQ(folder.model.files, (std::vector<std::string>{folder.file("net.inp"), folder.file("lists/a.csv")}));
}

TEST(TableFiles, MayHaveOtherSeparatorsAndDecimalCommas)
{
    const auto read = [](const std::string &csv, const std::string &rows) {
        Folder folder;
        folder.write("a.csv", rows);
        folder.write("net.inp", run + "[csv]\n" + csv + tables + "azimuths = { file = 'a.csv' }\n");
        EXPECT_EQ(folder.read(), Lines()) << rows;
        if (folder.model.azimuths.size() != 2) return std::string("no rows");
        const measure_input &first = folder.model.azimuths.records[0], &second = folder.model.azimuths.records[1];
        EXPECT_EQ(first.val, 50.5);
        EXPECT_EQ(first.sig, 0.001);
        EXPECT_EQ(second.val, -1.0);
        EXPECT_EQ(second.h1, 0.0);
        return std::string(first.from);
    };
    const std::string comma = "separator = ';'\ndecimal = ','\n";
    EXPECT_EQ(read(comma, "\xEF\xBB\xBF"
                          "from;to;h1;value;sigma\r\nS;\"T\";1,5;50,5;0,001\r\nS;T;;-1;1e-3;\r\n"),
              "S       ");
    EXPECT_EQ(read(comma, "from;to;value;sigma\rS;T;+50,5;0,001\rS;T;-1,0;\"0,001\" # last\r"), "S       ");
    EXPECT_EQ(read("separator = 'tab'\n", "from\tto\th1\tvalue\tsigma\n S \tT\t\t50.5\t0.001\nS\t\"T\"\t\t-1\t0.001\n"),
              "S       ");
    EXPECT_EQ(
        read("separator = 'tab'\ndecimal = ','\n", "from\tto\tvalue\tsigma\t\nS\tT\t50,5\t0,001\t\nS\tT\t-1\t1\n"),
        "S       ");
    EXPECT_EQ(read("separator = ','\ndecimal = ','\n", "from,to,value,sigma\nS,T,\"50,5\",\"0,001\"\nS,T,-1,1\n"),
              "S       ");
}

TEST(TableFiles, WithDecimalCommasHaveNoPoints)
{
    Folder folder;
    folder.write("a.csv", "from;to;value;sigma\nS;T;50.5;0,001\nS;T;1.234,5;0,001\n");
    folder.write("net.inp",
                 run + "[csv]\nseparator = ';'\ndecimal = ','\n" + tables + "azimuths = { file = 'a.csv' }\n");
    EXPECT_EQ(folder.read(),
              (Lines{"a.csv:2:5: \"50.5\" is not a number in column value; write a number like 12,5",
                     "a.csv:3:5: \"1.234,5\" is not a number in column value; write a number like 12,5"}));
}

TEST(TableFiles, WithTheWrongSeparatorAreToldWhichToName)
{
    Folder folder;
    folder.write("net.inp", run + tables + "azimuths = { file = 'a.csv' }\n");
    for (const auto &[mark, word] : {std::pair(";", ";"), std::pair("\t", "tab")}) {
        folder.write("a.csv", "from" + std::string(mark) + "to\nS" + mark + "T\n");
        EXPECT_NE(folder.read()[0].find("; write separator = \"" + std::string(word) + "\" in [csv]"),
                  std::string::npos);
    }
}

TEST(TableFiles, MayHaveHeadingsOfTheirOwn)
{
    Folder folder;
    const std::string mapping =
        "azimuths = { file = 'a.csv', columns = { from = \"Standpunkt\", value = 'Azimut [gon]', "
        "\"sigma\" = 'm.F.' } }\n";
    folder.write("a.csv", "Nr,Standpunkt,to,value,Azimut [gon],m.F.,,Bemerkung\n1,S,T,7,50.5,0.001,x,\"a, b\"\n");
    folder.write("net.inp", run + tables + mapping);
    ASSERT_EQ(folder.read(), Lines());
    ASSERT_EQ(folder.model.azimuths.size(), 1u);
    EXPECT_EQ(folder.model.azimuths.records[0].val, 50.5); // not the column that is called value
    EXPECT_EQ(folder.model.azimuths.records[0].sig, 0.001);
    folder.write("a.csv", "Standpkt,to,Azimut [gon],m.F.\nS,T,50.5,0.001\n");
    EXPECT_EQ(folder.read(),
              (Lines{"net.inp:16:42: \"Standpunkt\" does not stand in the heading of table azimuths; write it "
                     "as the file does",
                     "a.csv:1:1: column from is missing in table azimuths; add it to the heading"}));
    folder.write("net.inp", run + tables + "azimuths = { file = 'a.csv', columns = { form = 'Standpkt', to = 7 } }\n");
    EXPECT_EQ(folder.read()[0], "net.inp:16:42: unknown column \"form\" in table azimuths; did you mean from?");
    EXPECT_EQ(folder.read()[1], "net.inp:16:66: column \"to\" of table azimuths is not a text; write the word of the "
                                "file's heading in quotation marks");
    folder.write("net.inp", run + tables + "azimuths = { file = 'a.csv', columns = 'from' }\n");
    EXPECT_EQ(folder.read()[0],
              "net.inp:16:40: columns of table azimuths are no list of columns; write columns = { from = "
              "\"...\" }");
}

TEST(OpenTables, AreNamedWhereTheyBegin)
{
    Folder folder;
    std::string text = run + tables;
    text.erase(text.find("\"\"\"\ndistances"), 4); // the end of targets
    folder.write("net.inp", text);
    EXPECT_EQ(folder.read(), Lines{"net.inp:8:11: text of targets is not closed; write \"\"\" on a line of its own "
                                   "behind its last line"});
    folder.write("net.inp", run + tables.substr(0, tables.size() - 4));
    EXPECT_EQ(folder.read(), Lines{"net.inp:12:13: text of distances is not closed; write \"\"\" on a line of its own "
                                   "behind its last line"});
}

TEST(NetworkFile, NamesTheFileOfATableInItsFaults)
{
    Folder folder;
    folder.write("a.csv", "from,to,value,sigma\nS,T,50.5,\"0,001\"\n");
    folder.write("net.inp", run + tables + "azimuths = { file = \"a.csv\" }\n");
    EXPECT_EQ(
        folder.read(),
        Lines{"a.csv:2:11: \"0,001\" is not a number in column sigma; write it with a decimal point, like 0.001"});
    folder.write("a.csv", "");
    EXPECT_EQ(folder.read(), Lines{"a.csv:1:1: table azimuths is empty; add rows or remove the table"});
    folder.write("a.csv", "from\n\xFF");
    EXPECT_EQ(folder.read(), Lines{"a.csv:2:1: byte FF is not UTF-8; save the file as UTF-8"});
}

TEST(NetworkFile, PlacesAMissingTableFileWhereItIsNamed)
{
    EXPECT_EQ(faults_of(run + tables + "azimuths = { file = \"a.csv\" }\n"),
              Lines{"net.inp:16:21: file \"a.csv\" does not exist; check its name and folder"});
    EXPECT_EQ(faults_of(run + tables + "azimuths = { file = \".\" }\n"),
              Lines{"net.inp:16:21: file \".\" is a folder; name a file"});
}

TEST(NetworkFile, KnowsThePlacesInTextsWithEscapes)
{
    EXPECT_EQ(faults_of(run + tables + "azimuths = \"from to value sigma\\nS T x 1\"\n"),
              Lines{"net.inp:16:38: \"x\" is not a number in column value; write a number like 12.5"});
    EXPECT_EQ(faults_of(run + tables + "azimuths = \"\"\"\nfrom to \\\n  value sigma\nS\\tT x 1\n\"\"\"\n"),
              Lines{"net.inp:19:6: \"x\" is not a number in column value; write a number like 12.5"});
    EXPECT_EQ(faults_of(run + tables + "azimuths = '''\nfrom to value sigma\nS T \\t 1\n'''\n"),
              Lines{"net.inp:18:5: \"\\t\" is not a number in column value; write a number like 12.5"});
}

TEST(NetworkFile, RefusesAConnectedNetThatCannotBeRead)
{
    Folder folder;
    folder.write("net.inp", run + "[connected_net]\nfile = \"old.con\"\n" + tables);
    const std::string shown = "\"" + folder.file("old.con").substr(0, 40) + "\"";
    Faults faults;
    Model model;
    EXPECT_FALSE(read_network(folder.file("net.inp"), model, faults));
    EXPECT_EQ(faults.lines(),
              Lines{folder.file("net.inp") + ":4:8: file " + shown + " does not exist; check its name and folder"});
    EXPECT_EQ(setting("connected_net", "file = 5"),
              Lines{"net.inp:4:8: file in [connected_net] is not a text; write it in quotation marks"});
    EXPECT_EQ(setting("connected_net", "file = \"" + std::string(200, 'x') + "\"").size(), 1u);
}

TEST(NetworkFile, RefusesAPathThatHasNoRoomInItsRecord)
{
    Folder folder;
    const std::string path = folder.file(std::string(128 - folder.path.size() - 1, 'x'));
    folder.write("net.inp", run + "[connected_net]\nfile = \"" + path + "\"\n" + tables);
    EXPECT_EQ(folder.read(),
              Lines{"net.inp:4:8: path \"" + path.substr(folder.path.size() + 1, 40 - folder.path.size() - 1) +
                    "...\" has 128 bytes, at most 127 fit; move the files to a folder with a shorter "
                    "path"});
    folder.write("net.inp", run + "[connected_net]\nfile = \"" + path.substr(0, 127) + "\"\n" + tables);
    folder.write(path.substr(folder.path.size() + 1, 127 - folder.path.size() - 1), "");
    EXPECT_EQ(folder.read(), Lines());
    EXPECT_EQ(folder.model.p.confile, path.substr(0, 127));
}

TEST(NetworkFile, RefusesAnImportedPointWithoutAConnectedNet)
{
    std::string text = run + tables;
    text.replace(text.find("name x y\nS 0 0"), 14, "name x y connect\nS 0 0 import");
    EXPECT_EQ(faults_of(text),
              Lines{"net.inp:6:1: imported point without a connected net; write file in [connected_net]"});
}

TEST(NetworkFile, KeepsFiftyFaultsAndCountsTheOthers)
{
    std::string text = run + tables + "azimuths = \"\"\"\nfrom to value sigma\n";
    for (int i = 0; i < 200; i++) text += "S T x 1\n";
    const Lines lines = faults_of(text + "\"\"\"\n");
    ASSERT_EQ(lines.size(), 51u);
    EXPECT_EQ(lines[0], "net.inp:18:5: \"x\" is not a number in column value; write a number like 12.5");
    EXPECT_EQ(lines[49], "net.inp:67:5: \"x\" is not a number in column value; write a number like 12.5");
    EXPECT_EQ(lines[50], "net.inp: 150 more faults");
}
