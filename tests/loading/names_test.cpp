#include "loading/names.h"

#include <gtest/gtest.h>
#include <string.h>

#include <string>
#include <vector>

#include "support/faults.h"

using namespace vornengine;

namespace {

TEST(NameIn, StopsAtTheZeroOrAtTheEndOfTheField)
{
    const char whole[12] = {'A', 'B', 'C', 'D', 'E', 'F', 'G', 'H', 'I', 'J', 'K', 'L'};
    EXPECT_STREQ(name_in("AB ", 12).text, "AB ");
    EXPECT_STREQ(name_in(whole, 9).text, "ABCDEFGHI");
    EXPECT_STREQ(name_in(whole, 12).text, "ABCDEFGHIJK");
}

TEST(SameName, ComparesExactlyUpToElevenCharacters)
{
    EXPECT_TRUE(same_name("A1", "A1"));
    EXPECT_FALSE(same_name("A1", "A1 "));
    EXPECT_FALSE(same_name("a1", "A1"));
    EXPECT_TRUE(same_name("12345678901x", "12345678901y"));
    EXPECT_FALSE(same_name("1234567890x", "1234567890y"));
}

TEST(NameIndex, FindsNothingWhenEmpty)
{
    nameindex *ix = nameindex_make(0);
    ASSERT_NE(ix, nullptr);
    EXPECT_EQ(nameindex_find(ix, "A"), -1);
    EXPECT_EQ(nameindex_find(ix, ""), -1);
    nameindex_free(ix);
}

TEST(NameIndex, KeepsTheFirstNumberOfAName)
{
    nameindex *ix = nameindex_make(3);
    nameindex_add(ix, "A", 7);
    nameindex_add(ix, "A", 8);
    nameindex_add(ix, "", 9);
    EXPECT_EQ(nameindex_find(ix, "A"), 7);
    EXPECT_EQ(nameindex_find(ix, "A "), -1);
    EXPECT_EQ(nameindex_find(ix, ""), 9);
    nameindex_free(ix);
}

TEST(NameIndex, FindsEveryOneOfManyNames)
{
    std::vector<std::string> names;
    for (int i = 0; i < 5000; i++) names.push_back("P" + std::to_string(i));
    nameindex *ix = nameindex_make((int)names.size());
    for (size_t i = 0; i < names.size(); i++) nameindex_add(ix, names[i].c_str(), (int)i);
    for (size_t i = 0; i < names.size(); i++) ASSERT_EQ(nameindex_find(ix, names[i].c_str()), (int)i);
    EXPECT_EQ(nameindex_find(ix, "P5000"), -1);
    nameindex_free(ix);
}

TEST(NameIndex, LeavesOutMoreNamesThanItWasMadeFor)
{
    nameindex *ix = nameindex_make(1);
    nameindex_add(ix, "A", 0);
    nameindex_add(ix, "B", 1);
    EXPECT_EQ(nameindex_find(ix, "A"), 0);
    EXPECT_EQ(nameindex_find(ix, "B"), -1);
    nameindex_free(ix);
}

TEST(NameIndex, ReadsNoFurtherThanAFieldWithoutZero)
{
    char field[NAME_LENGTH]; // the sanitizer sees a read behind it
    memset(field, 'x', sizeof field);
    nameindex *ix = nameindex_make(1);
    nameindex_add(ix, field, 4);
    EXPECT_EQ(nameindex_find(ix, field), 4);
    EXPECT_EQ(nameindex_find(ix, "xxxxxxxxxxxzz"), 4);
    nameindex_free(ix);
}

TEST(NameIndex, IsNullWithoutMemory)
{
    for (int n = 1; n <= 2; n++) {
        fail_allocation(n);
        EXPECT_EQ(nameindex_make(5), nullptr);
    }
    fail_allocation(0);
    nameindex_free(nullptr);
}

} // namespace
