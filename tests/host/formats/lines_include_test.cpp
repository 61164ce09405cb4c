// Coded lines that lie in several files.

#include <cmath>

#include "host/own/own_run.h"
#include "imported.h"

using namespace vornhost;

namespace {

const std::string head = ".UNITS Meters DMS\n.2D\n";
const std::string points = "C A 0 0 ! !\nC B 300 0 ! !\n";
const std::string sights = "D A-P 223.607 0.002\nD B-P 223.607 0.002\nD A-P 223.609 0.002\n";

class IncludedCodedLines : public Formats {
protected:
    void SetUp() override {}
};

SolvedNetwork adjusted(const Draft &draft)
{
    const Folder folder;
    folder.write("net.inp", write_network(draft).text);
    return solve_file(folder.file("net.inp"));
}

} // namespace

TEST_F(IncludedCodedLines, AdjustLikeOneText)
{
    EXPECT_EQ(import(head + points + "C P 110 190\n" + sights, "whole.dat"), Lines());
    const Draft whole = draft;
    draft = Draft();
    folder.write("points.dat", points + ".INC more.dat\n");
    folder.write("more.dat", "C P 110 190\n");
    folder.write("sights.dat", sights);
    EXPECT_EQ(import(head + ".INCLUDE points.dat\n.INCLUDE \"sights.dat\"\n", "net.dat"), Lines());
    const SolvedNetwork a = adjusted(whole), b = adjusted(draft);
    ASSERT_TRUE(a.adjusted() && b.adjusted()) << a.words() << b.words();
    EXPECT_NEAR(*b.point("P").adjusted[0], 150.0, 0.01); // isosceles
    for (size_t k = 0; k < 2; k++) EXPECT_EQ(*a.point("P").adjusted[k], *b.point("P").adjusted[k]);
    EXPECT_EQ(rows(DraftKind::horizontal_distance).size() + rows(DraftKind::distance).size(), (size_t)3);
}

// Places of the network file are those of the first text, whatever lies between.
TEST_F(IncludedCodedLines, HaveThePlaceOfTheLineThatNamesTheirFile)
{
    folder.write("a.dat", ".INCLUDE b.dat\n");
    folder.write("b.dat", "\n\n\n" + sights);
    EXPECT_EQ(import(head + points + ".INCLUDE a.dat\n", "net.dat"), Lines());
    for (const auto &list : draft.rows)
        for (const DraftRow &row : list) EXPECT_EQ(row.where.line, 5);
}

TEST_F(IncludedCodedLines, OptionsGoOnBehindAFile)
{
    folder.write("a.dat", ".UNITS FeetInt DMS\n");
    EXPECT_EQ(import(".2D\n.INCLUDE a.dat\nC A 0 0 ! !\nD A-P 100 0.01\n", "net.dat"), Lines());
    EXPECT_EQ(draft.units.length, "ft");
}

TEST_F(IncludedCodedLines, AreNotSoughtBehindTheEnd)
{
    EXPECT_EQ(import(head + points + sights + ".END\n.INCLUDE nowhere.dat\n", "net.dat"), Lines());
}

TEST_F(IncludedCodedLines, FaultsHaveTheirOwnPlace)
{
    folder.write("a.dat", "C A 0 0 ! !\nQ 1 2\n");
    const Lines faults = import(head + ".INCLUDE a.dat\n" + sights, "net.dat");
    ASSERT_EQ(faults.size(), (size_t)1);
    EXPECT_EQ(faults[0].find("a.dat:2:1: code"), (size_t)0) << faults[0];
}

TEST_F(IncludedCodedLines, RefuseWhatIsMissingElsewhereOrEndless)
{
    const Lines missing = import(head + ".INCLUDE nowhere.dat\n" + points + sights, "net.dat");
    ASSERT_EQ(missing.size(), (size_t)1);
    EXPECT_EQ(missing[0].find("net.dat:3:1: file \"nowhere.dat\" is not there"), (size_t)0) << missing[0];
    for (const char *outside : {"../net.dat", "/etc/hostname", "a/../../b.dat"}) {
        std::string text = head;
        text += ".INCLUDE ";
        text += outside;
        const Lines faults = import(text + "\n", "net.dat");
        ASSERT_EQ(faults.size(), (size_t)1);
        EXPECT_NE(faults[0].find("lies in another folder"), std::string::npos) << faults[0];
    }
    folder.write("a.dat", ".INCLUDE b.dat\n");
    folder.write("b.dat", ".INCLUDE net.dat\n");
    const Lines endless = import(head + ".INCLUDE a.dat\n" + points + sights, "net.dat");
    ASSERT_EQ(endless.size(), (size_t)1);
    EXPECT_EQ(endless[0].find("b.dat:1:1: file \"net.dat\" is included in itself"), (size_t)0) << endless[0];
}
