#include "host/input/names.h"

#include <gtest/gtest.h>

#include <string.h>

using namespace vornhost;

TEST(HoldName, FillsWithBlanksToEightBytesAndAZero)
{
    char name[12], shorter[9];
    memset(name, 'x', sizeof name);
    hold_name(name, NameKeys(), "A1");
    hold_name(shorter, NameKeys(), "ABCDEFGH");
    EXPECT_STREQ(name, "A1      ");
    EXPECT_STREQ(shorter, "ABCDEFGH");
}

TEST(HoldName, HoldsALongNameByItsKeyAndOneWithoutKeyNotAtAll)
{
    char name[9];
    NameKeys keys;
    keys.add("ABCDEFGHI", [](std::string_view) { return false; });
    hold_name(name, keys, "ABCDEFGHI");
    EXPECT_STREQ(name, "@1      ");
    hold_name(name, keys, "ABCDEFGHJ");
    EXPECT_STREQ(name, "        ");
}

TEST(NameIndex, NumbersNamesInTheirOrder)
{
    NameIndex index;
    EXPECT_TRUE(index.add("A", {0, 5, 1}));
    EXPECT_TRUE(index.add("B", {0, 6, 1}));
    EXPECT_FALSE(index.add("A", {0, 7, 1}));
    EXPECT_EQ(index.find("A"), 0);
    EXPECT_EQ(index.find("B"), 1);
    EXPECT_EQ(index.find("C"), -1);
    EXPECT_EQ(index.where(0).line, 5);
    EXPECT_EQ(index.size(), 2u);
}

TEST(DistanceOfWords, CountsChangesInsertionsOmissionsAndSwaps)
{
    EXPECT_EQ(distance_of_words("name", "name", 9), 0u);
    EXPECT_EQ(distance_of_words("Name", "nAME", 9), 0u);
    EXPECT_EQ(distance_of_words("nmae", "name", 9), 1u);
    EXPECT_EQ(distance_of_words("naem", "name", 9), 1u);
    EXPECT_EQ(distance_of_words("nam", "name", 9), 1u);
    EXPECT_EQ(distance_of_words("kitten", "sitting", 9), 3u); // the textbook case
    EXPECT_EQ(distance_of_words("", "abc", 9), 3u);
}

TEST(DistanceOfWords, CountsCharactersOfEveryScript)
{
    EXPECT_EQ(distance_of_words("M\xC3\xBChlbach", "Muhlbach", 9), 1u);
    EXPECT_EQ(distance_of_words("\xE6\xB8\xAC\xE9\x87\x8F", "\xE9\x87\x8F\xE6\xB8\xAC", 9), 1u); // swapped
    EXPECT_EQ(distance_of_words("\xE6\xB8\xAC", "\xE6\xB8\xAD", 9), 1u);
}

TEST(DistanceOfWords, StopsAboveItsLimit)
{
    EXPECT_EQ(distance_of_words("abcdef", "x", 2), 3u);
    EXPECT_EQ(distance_of_words("abc", "xyz", 1), 2u);
}

TEST(SimilarName, IsTheNearestOfTheKnownOnes)
{
    NameIndex index;
    for (const char *name : {"Z108", "Z110", "Tower"}) index.add(name, Source());
    EXPECT_EQ(index.similar("Z109"), "Z108");
    EXPECT_EQ(index.similar("tower"), "Tower");
    EXPECT_EQ(index.similar("Bridge7"), "");
}

TEST(SimilarName, OfAShortNameDiffersInOneLetterAtMost)
{
    NameIndex index;
    index.add("A1", Source());
    EXPECT_EQ(index.similar("A2"), "A1");
    EXPECT_EQ(index.similar("B2"), "");
}
