#include "host/input/table.h"

#include <gtest/gtest.h>

#include <memory>

#include "host/folder.h"

using namespace vornhost;

namespace {

enum { NAME, X, Y };
const std::vector<Column> columns = {{"name", true}, {"x"}, {"y"}};

// A table cut from a file of its own.
struct Cut {
    explicit Cut(const std::string &text, Layout layout = Layout::Blanks, bool escapes = false)
    {
        folder.write("t", text);
        Faults faults;
        EXPECT_TRUE(file.read(folder.file("t"), Source(), faults));
        const size_t end = file.text().size();
        const Passage passage = escapes ? Passage::unescaped(file, 0, end) : Passage(file, 0, end);
        table = std::make_unique<Table>("points", passage, layout, Source{0, 1, 1});
        table->parse(columns, faults);
        lines = faults.lines();
        for (std::string &line : lines) folder.shorten(line);
    }

    std::string at(size_t row, int column) const
    {
        const Cell *cell = table->cell(row, column);
        return cell ? std::string(cell->text) : "none";
    }

    Folder folder;
    TextFile file;
    std::unique_ptr<Table> table;
    Lines lines;
};

Lines faults_in(const std::string &text, Layout layout = Layout::Blanks) { return Cut(text, layout).lines; }

} // namespace

TEST(Table, CutsRowsIntoCellsAtBlanksAndTabs)
{
    const Cut cut("\n  name\tx  \r\n\n A   1.5\r\nB\t2");
    EXPECT_EQ(cut.lines, Lines());
    ASSERT_EQ(cut.table->rows(), 2u);
    EXPECT_EQ(cut.at(0, NAME), "A");
    EXPECT_EQ(cut.at(0, X), "1.5");
    EXPECT_EQ(cut.at(1, X), "2");
    EXPECT_EQ(cut.at(1, Y), "none");
}

TEST(Table, TakesItsColumnsInAnyOrder)
{
    const Cut cut("y name x\n3 A 1\n");
    EXPECT_EQ(cut.at(0, NAME), "A");
    EXPECT_EQ(cut.at(0, X), "1");
    EXPECT_EQ(cut.at(0, Y), "3");
}

TEST(Table, LeavesOutComments)
{
    const Cut cut("# points\nname x # metres\nA 1 # first\n#B 2\n");
    EXPECT_EQ(cut.lines, Lines());
    EXPECT_EQ(cut.table->rows(), 1u);
}

TEST(Table, HoldsADashAsAValueThatIsNotKnown)
{
    const Cut cut("name x y\nA - -1\n");
    EXPECT_FALSE(cut.table->given(0, X));
    EXPECT_TRUE(cut.table->given(0, Y));
}

TEST(Table, TakesCellsInQuotationMarksBetweenBlanks)
{
    const Cut cut("\"name\" x y\n\"P 1\" 1 -\n\"a \"\"b\"\" #\"  2 \"-\"# \"\nA\"1 \"3\" 4\n");
    EXPECT_EQ(cut.lines, Lines());
    ASSERT_EQ(cut.table->rows(), 3u);
    EXPECT_EQ(cut.at(0, NAME), "P 1");
    EXPECT_EQ(cut.table->place(0, NAME).column, 2);
    EXPECT_EQ(cut.at(0, X), "1");
    EXPECT_EQ(cut.at(1, NAME), "a \"b\" #");
    EXPECT_EQ(cut.at(1, X), "2");
    EXPECT_EQ(cut.at(1, Y), "-");
    EXPECT_EQ(cut.at(2, NAME), "A\"1"); // a mark inside a word is a letter
    EXPECT_EQ(cut.at(2, X), "3");
    EXPECT_TRUE(cut.table->quoted(1, Y));
    EXPECT_FALSE(cut.table->quoted(0, Y));
    EXPECT_FALSE(cut.table->quoted(2, NAME));
    EXPECT_TRUE(cut.table->quoted(2, X));
}

TEST(Table, RefusesOpenAndStrayQuotationMarksBetweenBlanks)
{
    EXPECT_EQ(faults_in("name x\n\"P 1 1\n")[0], "t:2:1: quotation mark is not closed on its line; add a second \"");
    EXPECT_EQ(faults_in("name x\n\"P 1\"2 1\n"),
              Lines{"t:2:6: text after the closing quotation mark; put a blank before it"});
}

TEST(Table, KnowsThePlaceOfEachCell)
{
    const Cut cut("name x\nM\xC3\xBC  1\n");
    EXPECT_EQ(cut.table->place(0, X).line, 2);
    EXPECT_EQ(cut.table->place(0, X).column, 5);
    EXPECT_EQ(cut.table->place(0, Y).column, 1); // no such column: the row
}

TEST(Table, RefusesAnUnknownColumnAndNamesTheNearest)
{
    EXPECT_EQ(faults_in("nmae x\nA 1\n"),
              (Lines{"t:1:1: unknown column \"nmae\" in table points; did you mean name?",
                     "t:1:1: column name is missing in table points; add it to the heading"}));
}

TEST(Table, ListsItsColumnsWhenNoneIsNear)
{
    EXPECT_EQ(faults_in("name height\nA 1\n"),
              Lines{"t:1:6: unknown column \"height\" in table points; known columns: name, x, y"});
}

TEST(Table, RefusesAHeadingWithTheWrongSeparator)
{
    EXPECT_EQ(faults_in("name;x\nA;1\n", Layout::Commas)[0],
              "t:1:1: unknown column \"name;x\" in table points; write separator = \";\" in [csv]");
    EXPECT_EQ(faults_in("name,x\nA,1\n")[0],
              "t:1:1: unknown column \"name,x\" in table points; separate the cells with blanks");
}

TEST(Table, RefusesAMissingRequiredColumn)
{
    EXPECT_EQ(faults_in("x y\n1 2\n"), Lines{"t:1:1: column name is missing in table points; add it to the heading"});
}

TEST(Table, RefusesAColumnThatStandsTwice)
{
    EXPECT_EQ(faults_in("name x x\nA 1 2\n"),
              Lines{"t:1:8: column x stands twice in table points; remove one of the two"});
}

TEST(Table, RefusesTooFewCells)
{
    EXPECT_EQ(faults_in("name x y\n A 1\n"),
              Lines{"t:2:2: row has 2 cells, the heading has 3; write - for a value that is not known"});
    EXPECT_EQ(faults_in("name x\nA\n"),
              Lines{"t:2:1: row has 1 cell, the heading has 2; write - for a value that is not known"});
}

TEST(Table, RefusesTooManyCellsAtTheFirstThatIsTooMuch)
{
    EXPECT_EQ(faults_in("name x\nA 1 2 3\n"),
              Lines{"t:2:5: row has 4 cells, the heading has 2; remove what is too much or name its column"});
}

TEST(Table, KeepsTheCellsThatARowOfWrongLengthHas)
{
    const Cut cut("name x y\nA 1\nB 1 2\n");
    EXPECT_FALSE(cut.table->whole(0));
    EXPECT_TRUE(cut.table->whole(1));
    EXPECT_EQ(cut.at(0, NAME), "A");
    EXPECT_EQ(cut.at(0, Y), "none");
}

TEST(Table, RefusesAnEmptyTable)
{
    EXPECT_EQ(faults_in(" \n# nothing\n"), Lines{"t:1:1: table points is empty; add rows or remove the table"});
    EXPECT_EQ(faults_in("name x\n"),
              Lines{"t:1:1: table points has a heading but no rows; add rows or remove the table"});
}

TEST(Table, HandsOnItsRowsOneByOneAsItCutsThemAll)
{
    const std::string text = "name y x # heading\n\nA 1 \"a \"\"b\"\"\" # first\nB 2\n# none\nC - 3 4\nD 5 6";
    Cut cut(text);
    for (int time = 1; time <= 2; time++) {
        Faults faults;
        std::vector<size_t> numbers;
        Table again("points", Passage(cut.file, 0, text.size()), Layout::Blanks, Source{0, 1, 1});
        for (int call = 1; call <= time; call++) { // the second reports nothing that the first has reported
            numbers.clear();
            EXPECT_EQ(again.each_row(columns, faults, false,
                                     [&](size_t row) {
                                         numbers.push_back(row);
                                         EXPECT_EQ(again.rows(), 1u);
                                         EXPECT_EQ(again.whole(0), cut.table->whole(row));
                                         EXPECT_EQ(again.place(0, X).column, cut.table->place(row, X).column);
                                         for (const int column : {NAME, X, Y}) {
                                             const Cell *cell = again.cell(0, column);
                                             EXPECT_EQ(cell ? std::string(cell->text) : "none", cut.at(row, column));
                                         }
                                     }),
                      4u);
        }
        EXPECT_EQ(numbers, (std::vector<size_t>{0, 1, 2, 3}));
        EXPECT_EQ(faults.count(), 2u);
        EXPECT_EQ(cut.lines.size(), 2u);
        again.keep_rows();
        EXPECT_EQ(again.rows(), 4u);
    }
}

TEST(Table, ReportsNoFaultsOfRowsThatAreNotWanted)
{
    const std::string text = "name x y\nA 1\nB 2 \"3\nA 1 2\nB 4 5 6\n";
    Cut cut(text);
    Table table("points", Passage(cut.file, 0, text.size()), Layout::Blanks, Source{0, 1, 1});
    Faults faults;
    std::vector<size_t> numbers;
    EXPECT_EQ(table.each_row(
                  columns, faults, false, [&](size_t row) { numbers.push_back(row); },
                  [&] { return table.cell(0, NAME)->text == "B"; }),
              4u);
    EXPECT_EQ(numbers, (std::vector<size_t>{1, 3}));
    ASSERT_EQ(faults.count(), 2u);
    EXPECT_EQ(faults.kept()[0].at.line, 3);
    EXPECT_EQ(faults.kept()[1].at.line, 5);
}

TEST(CommaTable, CutsAtCommasAndTrimsBlanks)
{
    const Cut cut("name, x ,y\r\n A 1 ,\t2.5,\r\n", Layout::Commas);
    EXPECT_EQ(cut.lines, Lines());
    EXPECT_EQ(cut.at(0, NAME), "A 1");
    EXPECT_EQ(cut.at(0, X), "2.5");
    EXPECT_FALSE(cut.table->given(0, Y)); // an empty cell is not known
    EXPECT_EQ(cut.table->place(0, X).column, 8);
}

TEST(CommaTable, LeavesOutLinesOfCommasAndComments)
{
    const Cut cut("# export\nname,x\n,\nA,1 # good\n\n", Layout::Commas);
    EXPECT_EQ(cut.lines, Lines());
    ASSERT_EQ(cut.table->rows(), 1u);
    EXPECT_EQ(cut.at(0, X), "1");
}

TEST(CommaTable, LeavesOutEmptyCellsBehindTheHeading)
{
    const Cut cut("name,x,,\nA,1,,\nB,,\n", Layout::Commas);
    EXPECT_EQ(cut.lines, Lines());
    EXPECT_EQ(cut.table->rows(), 2u);
    EXPECT_FALSE(cut.table->given(1, X));
}

TEST(CommaTable, TakesCommasHashesAndMarksInsideQuotationMarks)
{
    const Cut cut("\"name\",x\n\"A,#\"\"1\"\"\" , 2\n", Layout::Commas);
    EXPECT_EQ(cut.lines, Lines());
    EXPECT_EQ(cut.at(0, NAME), "A,#\"1\"");
    EXPECT_EQ(cut.at(0, X), "2");
    EXPECT_EQ(cut.table->place(0, NAME).column, 2);
}

TEST(CommaTable, RefusesAQuotationMarkThatIsNotClosed)
{
    EXPECT_EQ(faults_in("name\n\"A\n", Layout::Commas),
              Lines{"t:2:1: quotation mark is not closed on its line; add a second \""});
}

TEST(CommaTable, RefusesTextBehindAQuotedCell)
{
    EXPECT_EQ(faults_in("name,x\n\"A\"b,1\n", Layout::Commas),
              Lines{"t:2:4: text after the closing quotation mark; put a comma before it"});
}

TEST(Passage, ReplacesEscapesAndKeepsThePlacesInTheFile)
{
    const Cut cut("name\\tx\\nA\\u00fc \\\n   \\U00000031\n\\\"B\\\\\\\" 2", Layout::Blanks, true);
    EXPECT_EQ(cut.lines, Lines());
    ASSERT_EQ(cut.table->rows(), 2u);
    EXPECT_EQ(cut.at(0, NAME), "A\xC3\xBC");
    EXPECT_EQ(cut.at(0, X), "1");
    EXPECT_EQ(cut.at(1, NAME), "B\\");
    EXPECT_EQ(cut.table->place(0, NAME).column, 10);
    EXPECT_EQ(cut.table->place(0, X).line, 2); // behind the joined lines
    EXPECT_EQ(cut.table->place(0, X).column, 4);
    EXPECT_EQ(cut.table->place(1, X).line, 3);
    EXPECT_EQ(cut.table->place(1, X).column, 9);
}

TEST(Suggestion, NamesTheNearestWordOrAllOfThem)
{
    EXPECT_EQ(suggestion("compct", {"compact", "jordan"}, "write one of"), "did you mean compact?");
    EXPECT_EQ(suggestion("fast", {"compact", "jordan"}, "write one of"), "write one of: compact, jordan");
}
