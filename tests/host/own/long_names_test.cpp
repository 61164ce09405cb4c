// Names of any length and script on both roads: the same network under short and under long names.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "host/own/own_run.h"
#include "host/results/csv_writer.h"
#include "host/results/json_writer.h"

using namespace vornhost;

namespace {

struct Names {
    std::string a, b, c, p;
};

const std::string bridge = "Pfeiler \xC3\xA4u\xC3\x9F"
                           "erste Br\xC3\xBC"
                           "cke";
const std::string survey_point = "\xE6\xB8\xAC\xE9\x87\x8F\xE9\xBB\x9E 7";

const Names brief = {"A", "B", "C", "P"};
const Names whole = {"000921032150", bridge, "St. Mary's, north", survey_point};

std::string replaced(std::string text, const std::string &word, const std::string &by)
{
    for (size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + by.size()))
        text.replace(at, word.size(), by);
    return text;
}

// A text with <A>, <B>, <C> and <P>.
std::string named(std::string text, const Names &n)
{
    const std::pair<const char *, std::string> all[] = {{"<A>", n.a}, {"<B>", n.b}, {"<C>", n.c}, {"<P>", n.p}};
    for (const auto &[word, name] : all) text = replaced(text, word, "\"" + name + "\"");
    return text;
}

const std::string plane = R"([run]
dimension = 2
[tables]
stations = '''
name x y code
<A> 0 0 fixed
<P> 61 81 free
'''
targets = '''
name x y code
<B> 120 0 fixed
<C> 0 160 fixed
'''
distances = '''
from to value sigma use
<A> <P> 100.004 0.003 yes
<B> <P> 99.998 0.003 yes
<C> <P> 100.001 0.003 yes
<C> <P> 7 0.003 no
'''
directions = '''
from to value sigma
<A> <B> 0 0.002
<A> <C> 100.001 0.002
<A> <P> 59.0334 0.002
'''
pairs = '''
from to
<A> <P>
'''
)";

// P is free along a circle.
const std::string loose = R"([run]
dimension = 2
[tables]
targets = '''
name x y code
<A> 0 0 fixed
<B> 120 0 fixed
<P> 61 81 free
'''
distances = '''
from to value sigma
<A> <P> 100 0.003
<A> <B> 120 0.003
'''
)";

SolvedNetwork solved(const Names &n, Solver solver) { return solve_text(named(plane, n), solver); }

bool has(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

std::string solver_name(const testing::TestParamInfo<Solver> &solver)
{
    static const char *const words[] = {"compact", "jordan", "simplex", "sparse"};
    return words[(int)solver.param];
}

class LongNames : public testing::TestWithParam<Solver> {};

} // namespace

TEST_P(LongNames, ChangeNoResult)
{
    const SolvedNetwork s = solved(brief, GetParam()), l = solved(whole, GetParam());
    ASSERT_TRUE(s.adjusted());
    ASSERT_TRUE(l.adjusted()) << l.words();
    for (const auto &[name, other] : {std::pair(brief.p, whole.p), std::pair(brief.b, whole.b)})
        for (int k = 0; k < 2; k++) EXPECT_EQ(*s.point(name).adjusted[k], *l.point(other).adjusted[k]);
    ASSERT_EQ(s.results().residuals.size(), l.results().residuals.size());
    EXPECT_EQ(l.results().residuals[1].from, whole.b);
    EXPECT_EQ(l.results().residuals[1].to, whole.p);
    for (size_t i = 0; i < s.results().residuals.size(); i++)
        EXPECT_EQ(s.results().residuals[i].residual, l.results().residuals[i].residual);
}

TEST_P(LongNames, StandInEveryResult)
{
    const SolvedNetwork l = solved(whole, GetParam());
    const std::string json = to_json(l.results());
    std::string csv;
    for (const CsvTable &table : to_csv(l.results())) csv += table.text;
    for (const std::string &name : {whole.a, whole.b, whole.p}) {
        EXPECT_TRUE(has(json, "\"" + name + "\"")) << name;
        EXPECT_TRUE(has(csv, name)) << name;
        EXPECT_TRUE(has(l.report, name)) << name;
    }
    EXPECT_FALSE(has(json, "@"));
    EXPECT_FALSE(has(csv, "@"));
    ASSERT_EQ(l.results().accounts[0].left_out.size(), 1u);
    EXPECT_EQ(l.results().accounts[0].left_out[0].from, whole.c);
    for (const std::string &line : l.messages) EXPECT_FALSE(has(line, "@")) << line;
}

TEST_P(LongNames, StandInTheWordsOfARefusal)
{
    const SolvedNetwork l = solve_text(named(loose, whole), GetParam());
    EXPECT_FALSE(l.adjusted());
    EXPECT_FALSE(has(l.words(), "@")) << l.words();
    if (GetParam() == Solver::Sparse || GetParam() == Solver::Compact) {
        EXPECT_TRUE(has(l.words(), survey_point)) << l.words();
    }
}

INSTANTIATE_TEST_SUITE_P(Solvers, LongNames,
                         testing::Values(Solver::Sparse, Solver::Compact, Solver::Jordan, Solver::Simplex),
                         solver_name);

TEST(LongNamesInTheReportOfTheEngine, ReadAsKeysUnderATableOfBoth)
{
    const Names keys = {"@1", "@3", "@4", "@2"}; // of a user, in a network that has no long names
    const SolvedNetwork s = solved(keys, Solver::Compact), l = solved(whole, Solver::Compact);
    const std::string table = "Names of more than 8 bytes\n\nin this report  name\n@1              000921032150\n"
                              "@2              " +
                              survey_point + "\n@3              " + bridge + "\n@4              St. Mary's, north\n\n";
    EXPECT_EQ(l.report, table + s.report);
}

TEST(LongNamesOfPoints, ThatAreUnknownAreShownWhole)
{
    Folder folder;
    folder.write("net.inp", named(loose + "height_differences = '''\nfrom to value sigma\n<A> <C> 1 1\n'''\n", whole));
    EXPECT_EQ(folder.read(), Lines{"net.inp:17:17: unknown point \"St. Mary's, north\" in column to; list it under "
                                   "stations or targets"});
    folder.write("net.inp", named(loose, whole) + "pairs = '''\nfrom to\n000921032150 000921032510\n'''\n");
    EXPECT_EQ(folder.read(), Lines{"net.inp:17:14: unknown point \"000921032510\" in column to; did you mean "
                                   "\"000921032150\"?"});
}

// ---- connected nets ----

namespace {

const std::string first = R"([run]
dimension = 1
[tables]
targets = '''
name z code connect
<A> 0 fixed none
<B> 1 free export
<C> 2 free export
'''
height_differences = '''
from to value sigma
<A> <B> 1.001 0.001
<A> <C> 2.002 0.001
<B> <C> 1.003 0.001
'''
)";

const std::string second = R"([run]
dimension = 1
[connected_net]
file = 'first.con'
[tables]
targets = '''
name z code connect
<B> - free import
<C> - free import
<P> 3 free none
'''
height_differences = '''
from to value sigma
<C> <P> 1.0 0.001
<B> <P> 2.001 0.001
'''
)";

// Adjusts the two in one folder; what the first exports is imported by the second.
SolvedNetwork chained(const Names &n, std::string *exported, Solver importer = Solver::Sparse)
{
    const Folder folder;
    const InFolder inside(folder.path);
    folder.write("first.inp", named(first, n));
    folder.write("second.inp", named(second, n));
    const SolvedNetwork exporting = solve_file("first.inp");
    EXPECT_TRUE(exporting.adjusted());
    std::ifstream file("first.con");
    exported->assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    return solve_file("second.inp", importer);
}

} // namespace

TEST(LongNamesOfPoints, GoThroughAConnectedNetInQuotationMarks)
{
    std::string s_file, l_file;
    const SolvedNetwork s = chained(brief, &s_file), l = chained(whole, &l_file);
    ASSERT_TRUE(s.adjusted());
    ASSERT_TRUE(l.adjusted()) << l.words();
    const std::string b = "\"" + whole.b + "\"", c = "\"" + whole.c + "\"";
    EXPECT_EQ(l_file, replaced(replaced(s_file, "B       ", b), "C       ", c));
    EXPECT_EQ(*l.point(whole.p).adjusted[2], *s.point("P").adjusted[2]);
    EXPECT_EQ(*l.point(whole.p).deviation[2], *s.point("P").deviation[2]);
}

TEST(LongNamesOfPoints, WithMarksGoThroughAConnectedNetAsWell)
{
    std::string file;
    const SolvedNetwork l = chained({"A", "the \"\"old\"\" bridge", "\"\"C", "P"}, &file);
    ASSERT_TRUE(l.adjusted()) << l.words();
    EXPECT_TRUE(has(file, "\n\"the \"\"old\"\" bridge\"  ")) << file;
    EXPECT_TRUE(has(file, "\n\"\"\"C\"  ")) << file;
    EXPECT_EQ(l.point("the \"old\" bridge").name, "the \"old\" bridge");
}

TEST(LongNamesOfPoints, AreRefusedInTheConnectedNetsOfTheEngine)
{
    std::string file;
    const std::string refusal = "the connected nets of the engine hold names of 8 bytes, and \"" + whole.b +
                                "\" is longer: choose the solver sparse, or shorten it (";
    EXPECT_EQ(chained(whole, &file, Solver::Compact).words(), refusal + "second.inp)\n");
    EXPECT_EQ(solve_text(named(first, whole), Solver::Jordan).words(), refusal + "net.inp)\n");
}

// ---- image files ----

namespace {

std::string text_of(const std::string &path)
{
    std::ifstream file(path);
    EXPECT_TRUE(file) << path;
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// The points P01 to P40 of a text get long names.
std::string with_long_points(std::string text, const char *mark)
{
    for (int i = 1; i <= 40; i++) {
        const std::string number = (i < 10 ? "0" : "") + std::to_string(i);
        text = replaced(text, "P" + number, mark + ("rivet row 7 no " + number) + mark);
    }
    return text;
}

// The photo block with its image files in the wide form, and long names of points and of the camera.
SolvedNetwork wide_block(Solver solver)
{
    const std::string examples = SOURCE_DIR "/examples";
    const Folder folder;
    const InFolder inside(folder.path);
    std::string net = with_long_points(text_of(examples + "/photo_block.inp"), "\"");
    net = replaced(replaced(net, "  cam\n", "  \"camera of 2024\"\n"), "\ncam ", "\n\"camera of 2024\" ");
    folder.write("net.inp", replaced(net, "photo_block/", ""));
    for (int i = 1; i <= 6; i++) {
        const std::string name = "c" + std::to_string(i) + ".txt";
        folder.write(name, "name u v\n" + with_long_points(text_of(examples + "/photo_block/" + name), "\"") +
                               "\"rivet row 7 no 99\" 1 2\n\"rivet row 7 no 01\" 1\n");
    }
    return solve_file("net.inp", solver);
}

} // namespace

TEST(LongNamesOfPoints, AreReadFromImageFilesWithAHeading)
{
    const SolvedNetwork wide = wide_block(Solver::Sparse),
                        fixed = solve_file(SOURCE_DIR "/examples/photo_block.inp", Solver::Sparse);
    ASSERT_TRUE(wide.adjusted()) << wide.words();
    ASSERT_TRUE(fixed.adjusted());
    for (int k = 0; k < 3; k++)
        EXPECT_EQ(*wide.point("rivet row 7 no 20").adjusted[k], *fixed.point("P20").adjusted[k]);
    EXPECT_EQ(wide.results().cameras[0].name, "camera of 2024");
    ASSERT_EQ(wide.results().residuals.size(), fixed.results().residuals.size());
    EXPECT_EQ(wide.results().residuals[2].to, "rivet row 7 no 02");
    EXPECT_EQ(wide.results().residuals[2].line, fixed.results().residuals[2].line + 1);
    const Account &points = wide.results().accounts[1];
    ASSERT_EQ(points.left_out.size(), 12u);
    EXPECT_EQ(points.left_out[0].to, "rivet row 7 no 99");
    EXPECT_EQ(points.left_out[0].reason, "point rivet row 7 no 99 is unknown");
    EXPECT_EQ(points.left_out[1].reason, "two numbers are missing behind the name");
}

TEST(LongNamesOfPoints, InImageFilesAreRefusedByTheEngine)
{
    const std::string words = wide_block(Solver::Compact).words();
    EXPECT_EQ(
        words.rfind("the engine reads image files whose names stand in the first 8 places only: choose the solver "
                    "sparse (",
                    0),
        0u)
        << words;
}
