#include "host/input/name_keys.h"

#include <gtest/gtest.h>

#include <string.h>

using vornhost::NameKeys;

namespace {

bool nobody(std::string_view) { return false; }

} // namespace

TEST(NameKeys, AreMadeForNamesThatARecordHasNoRoomFor)
{
    NameKeys keys;
    keys.add("ABCDEFGH", nobody);
    EXPECT_TRUE(keys.empty());
    EXPECT_EQ(keys.key("ABCDEFGH"), "ABCDEFGH");
    keys.add("ABCDEFGHI", nobody);
    keys.add("M\xC3\xBChlbach", nobody); // 8 characters, 9 bytes
    keys.add("ABCDEFGHI", nobody);
    EXPECT_EQ(keys.key("ABCDEFGHI"), "@1");
    EXPECT_EQ(keys.key("M\xC3\xBChlbach"), "@2");
    EXPECT_EQ(keys.all().size(), 2u);
    EXPECT_EQ(keys.name("@1      "), "ABCDEFGHI");
    EXPECT_EQ(keys.name("@2"), "M\xC3\xBChlbach");
    EXPECT_EQ(keys.name("@3      "), "@3");
    EXPECT_EQ(keys.name("A B     "), "A B");
}

TEST(NameKeys, PassOverWhatIsSomebodysOwnName)
{
    NameKeys keys;
    const auto taken = [](std::string_view word) { return word == "@1" || word == "@2"; };
    keys.add("ABCDEFGHI", taken);
    EXPECT_EQ(keys.key("ABCDEFGHI"), "@3");
    EXPECT_EQ(keys.key("@1"), "@1");
    EXPECT_EQ(keys.name("@1"), "@1");
}

TEST(NameKeys, AreNoNames)
{
    NameKeys keys;
    keys.add("ABCDEFGHI", nobody);
    EXPECT_EQ(keys.key("@1"), "");
    EXPECT_EQ(keys.key("@2"), "@2");
    EXPECT_EQ(keys.key("ABCDEFGHJ"), "");
}

TEST(NameKeys, AreReplacedInALineWhereTheyAreWords)
{
    NameKeys keys;
    for (int i = 0; i < 12; i++) keys.add("Long name " + std::to_string(i + 1), nobody);
    EXPECT_EQ(keys.replaced("point @1       is (@12) and \"@2\", not @13, A@1, 7-@1, @01, @123 or @"),
              "point Long name 1       is (Long name 12) and \"Long name 2\", not @13, A@1, 7-@1, @01, @123 or @");
    EXPECT_EQ(keys.replaced("@3"), "Long name 3");
    char little[8];
    keys.replace("to @1", little, sizeof little);
    EXPECT_STREQ(little, "to Long");
}

TEST(NameKeys, MoveWithTheirNames)
{
    NameKeys keys;
    for (int i = 0; i < 1000; i++) keys.add("Long name " + std::to_string(i), nobody);
    const NameKeys moved = std::move(keys);
    EXPECT_EQ(moved.key("Long name 999"), "@1000");
    EXPECT_EQ(moved.name("@1000"), "Long name 999");
}
