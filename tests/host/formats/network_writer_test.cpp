// Drafts as the text of network files.

#include <gtest/gtest.h>

#include "host/formats/network_writer.h"
#include "host/formats/writer_table.h"
#include "vorn/project.h"

using namespace vornhost;

namespace {

DraftPoint point(const std::string &name, double x, double y, int code, int line)
{
    DraftPoint p;
    p.name = name;
    p.value = {x, y, std::nullopt};
    p.code = {code, code, CODE_ABSENT};
    p.where = {0, line, 1};
    return p;
}

DraftRow row(const std::string &from, const std::string &to, double value, MaybeNumber sigma, int line)
{
    DraftRow r;
    r.from = from;
    r.to = to;
    r.value[0] = value;
    r.sigma[0] = sigma;
    r.where = {0, line, 1};
    return r;
}

Draft small_draft()
{
    Draft draft;
    draft.file = "folder/net.gkf";
    draft.title = "Say \"yes\" \\ no";
    draft.dimension = 2;
    draft.units.length = "m";
    draft.units.angle = "gon";
    draft.units.sigma_length = "mm";
    draft.points = {point("A", 0, 0, CODE_FIXED, 3), point("B 1", 1000.5, -20, CODE_FREE, 4)};
    draft.points[0].station = true;
    draft.of(DraftKind::distance) = {row("A", "B 1", 1000.7, 5, 7), row("A", "B 1", 99, 5, 8)};
    draft.of(DraftKind::distance)[1].use = false;
    return draft;
}

} // namespace

TEST(NetworkWriter, WritesOnlyTheColumnsThatAreNeeded)
{
    EXPECT_EQ(write_network(small_draft()).text, "# From net.gkf; column remark has the lines there.\n"
                                                 "\n"
                                                 "[run]\n"
                                                 "title = \"Say \\\"yes\\\" \\\\ no\"\n"
                                                 "dimension = 2\n"
                                                 "\n"
                                                 "[units]\n"
                                                 "length = \"m\"\n"
                                                 "sigma_length = \"mm\"\n"
                                                 "\n"
                                                 "[sigma]\n"
                                                 "distances = 5\n"
                                                 "\n"
                                                 "[tables]\n"
                                                 "stations = \"\"\"\n"
                                                 "name  x  y  code\n"
                                                 "A     0  0  fixed\n"
                                                 "\"\"\"\n"
                                                 "\n"
                                                 "targets = \"\"\"\n"
                                                 "name   x       y    code\n"
                                                 "\"B 1\"  1000.5  -20  free\n"
                                                 "\"\"\"\n"
                                                 "\n"
                                                 "distances = \"\"\"\n"
                                                 "from  to     value   use  remark\n"
                                                 "A     \"B 1\"  1000.7  -    net.gkf:7\n"
                                                 "A     \"B 1\"    99    no   net.gkf:8\n"
                                                 "\"\"\"\n"
                                                 "\n");
}

TEST(NetworkWriter, KnowsTheForeignLineOfEveryLine)
{
    const WrittenNetwork network = write_network(small_draft());
    std::vector<int> lines;
    for (const Source &origin : network.origins) lines.push_back(origin.line);
    EXPECT_EQ(lines, (std::vector<int>{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                       0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 7, 8, 0, 0}));
}

TEST(NetworkWriter, KeepsStandardDeviationsThatDifferInTheirRows)
{
    Draft draft = small_draft();
    draft.of(DraftKind::distance)[1].sigma[0] = 7;
    const std::string text = write_network(draft).text;
    EXPECT_EQ(text.find("[sigma]"), std::string::npos);
    EXPECT_NE(text.find("value   sigma  use  remark\nA     \"B 1\"  1000.7  5      -    net"), std::string::npos);
}

// The matrix counts distances before directions; the direction of the file stands between its two distances.
TEST(NetworkWriter, PutsCovariancesInTheOrderOfTheTables)
{
    Draft draft = small_draft();
    draft.of(DraftKind::direction) = {row("A", "B 1", 10, std::nullopt, 9)};
    DraftCovariance group;
    group.name = "C1";
    group.components = {{DraftKind::distance, 1, 0}, {DraftKind::direction, 0, 0}, {DraftKind::distance, 0, 0}};
    group.width = 1;
    group.elements = {11, 12, 22, 23, 33}; // distance 2, direction, distance 1
    draft.covariances = {group};
    const std::string text = write_network(draft).text;
    EXPECT_NE(text.find("[covariances.C1]\nform = \"band\"\nwidth = 2\nmatrix = \"\"\"\n33 0 23\n11 12\n22\n\"\"\"\n"),
              std::string::npos)
        << text;
}

TEST(WriterTable, QuotesWordsThatBlanksWouldCut)
{
    EXPECT_EQ(word_cell("P1"), "P1");
    EXPECT_EQ(word_cell("P 1"), "\"P 1\"");
    EXPECT_EQ(word_cell("-"), "\"-\"");
    EXPECT_EQ(word_cell("#1"), "\"#1\"");
    EXPECT_EQ(word_cell("1\""), "\"1\"\"\"");
    EXPECT_EQ(word_cell(""), "\"\"");
}

TEST(WriterTable, ChoosesMarksThatFitItsCells)
{
    const auto text = [](const std::string &cell) {
        WriterTable table(1);
        table.add("name", CellKind::word, {cell});
        return table.text();
    };
    EXPECT_EQ(text("P"), "\"\"\"\nname\nP\n\"\"\"");
    EXPECT_EQ(text("1\"\"\""), "'''\nname\n1\"\"\"\n'''");
    EXPECT_EQ(text("a\\b"), "'''\nname\na\\b\n'''");
    EXPECT_EQ(text("a\\b'''"), "\"\"\"\nname\na\\\\b'''\n\"\"\"");
}

TEST(WriterTable, SetsPointsOfNumbersBelowEachOther)
{
    WriterTable table(3);
    table.add("x", CellKind::number, {"1.25", "-100", ""});
    table.add("empty", CellKind::number, {"", "", ""});
    table.add("n", CellKind::word, {"\xC3\xA9", "ab", "c"});
    EXPECT_EQ(table.text(), "\"\"\"\nx        n\n   1.25  \xC3\xA9\n-100     ab\n   -     c\n\"\"\"");
}
