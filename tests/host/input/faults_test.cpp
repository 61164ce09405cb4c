#include "host/input/faults.h"

#include <gtest/gtest.h>

using vornhost::Fault;
using vornhost::Faults;
using vornhost::quote;
using vornhost::Source;

namespace {

Faults with_file()
{
    Faults faults;
    faults.add_file("net.inp");
    return faults;
}

} // namespace

TEST(FaultLine, NamesFileLineColumnWhatAndRemedy)
{
    const Fault fault = {"net.inp", {0, 12, 25}, "\"12,5\" is not a number", "write 12.5"};
    EXPECT_EQ(fault.line(), "net.inp:12:25: \"12,5\" is not a number; write 12.5");
}

TEST(FaultLine, LeavesOutAPlaceThatIsUnknown)
{
    EXPECT_EQ((Fault{"net.inp", {0, 0, 0}, "no points", "list them"}).line(), "net.inp: no points; list them");
    EXPECT_EQ((Fault{"net.inp", {0, 3, 0}, "odd", ""}).line(), "net.inp:3: odd");
}

TEST(FaultLine, IsOneLineWhateverTheFileIsCalled)
{
    EXPECT_EQ((Fault{"a\nb\x1b[31m", {0, 1, 1}, "odd\r", "x"}).line(), "a\\x0Ab\\x1B[31m:1:1: odd\\x0D; x");
}

TEST(Quote, EscapesControlCharactersLineSeparatorsAndBrokenBytes)
{
    EXPECT_EQ(quote("a\tb"), "\"a\\x09b\"");
    EXPECT_EQ(quote("a\x7f"), "\"a\\x7F\"");
    EXPECT_EQ(quote("a\xC2\x85"), "\"a\\x85\""); // next line
    EXPECT_EQ(quote("a\xE2\x80\xA8"
                    "b"),
              "\"a\\u2028b\""); // line separator
    EXPECT_EQ(quote("a\xE2\x80\xAE"
                    "b"),
              "\"a\\u202Eb\""); // turns the writing direction
    EXPECT_EQ(quote("a\xFF"
                    "b"),
              "\"a\\xFFb\"");
    EXPECT_EQ(quote("M\xC3\xBChle"), "\"M\xC3\xBChle\"");
}

TEST(Quote, KeepsFortyCharactersAndShortensLongerTexts)
{
    EXPECT_EQ(quote(std::string(40, 'x')), "\"" + std::string(40, 'x') + "\"");
    EXPECT_EQ(quote(std::string(41, 'x')), "\"" + std::string(40, 'x') + "...\"");
    std::string umlauts;
    for (int i = 0; i < 41; i++) umlauts += "\xC3\xBC";
    EXPECT_EQ(quote(umlauts), "\"" + umlauts.substr(0, 80) + "...\"");
}

TEST(Faults, StandInTheOrderOfTheirPlacesEqualOnesInTheOrderOfComing)
{
    Faults faults = with_file();
    faults.add({0, 7, 1}, "third", "");
    faults.add({0, 2, 9}, "first", "");
    faults.add({0, 7, 1}, "fourth", "");
    faults.add({0, 2, 10}, "second", "");
    const std::vector<std::string> wanted = {"net.inp:2:9: first", "net.inp:2:10: second", "net.inp:7:1: third",
                                             "net.inp:7:1: fourth"};
    EXPECT_EQ(faults.lines(), wanted);
}

TEST(Faults, KeepTheFirstFiftyAndCountTheOthers)
{
    Faults faults = with_file();
    for (int line = 1; line <= 50; line++) faults.add({0, line, 1}, "odd", "");
    EXPECT_EQ(faults.lines().size(), 50u);
    faults.add({0, 51, 1}, "odd", "");
    ASSERT_EQ(faults.lines().size(), 51u);
    EXPECT_EQ(faults.lines()[50], "net.inp: 1 more fault");
    EXPECT_FALSE(faults.wants({0, 51, 1}));
    EXPECT_TRUE(faults.wants({0, 1, 1}));
    faults.add({0, 1, 1}, "early", "");
    EXPECT_EQ(faults.lines()[1], "net.inp:1:1: early");
    EXPECT_EQ(faults.lines()[49], "net.inp:49:1: odd");
    EXPECT_EQ(faults.lines()[50], "net.inp: 2 more faults");
    EXPECT_EQ(faults.count(), 52u);
}

TEST(Faults, NameTheFileOfTheirPlace)
{
    Faults faults = with_file();
    const int other = faults.add_file("x.csv");
    faults.add({other, 3, 2}, "odd", "mend it");
    EXPECT_EQ(faults.lines(), std::vector<std::string>{"x.csv:3:2: odd; mend it"});
}
