#include "loading/numbers.h"

#include <gtest/gtest.h>
#include <limits.h>

#include "support/faults.h"

using namespace vornengine;

namespace {

TEST(NumberIndex, GivesTheFirstPlaceOfAValue)
{
    const int table[] = {5, -3, 0, INT_MAX, INT_MIN, 5};
    numberindex *ix = numberindex_of(table, 6);
    ASSERT_NE(ix, nullptr);
    for (int i = 0; i < 5; i++) EXPECT_EQ(numberindex_find(ix, table[i]), i);
    EXPECT_EQ(numberindex_find(ix, 4), -1);
    numberindex_free(ix);
}

TEST(NumberIndex, FindsEveryOneOfManyValues)
{
    numberindex *ix = numberindex_make(5000);
    for (int i = 0; i < 5000; i++) numberindex_add(ix, i * 65536, i);
    numberindex_add(ix, 1, 5000); // one too many
    for (int i = 0; i < 5000; i++) ASSERT_EQ(numberindex_find(ix, i * 65536), i);
    EXPECT_EQ(numberindex_find(ix, 1), -1);
    numberindex_free(ix);
}

TEST(NumberIndex, IsNullWithoutMemoryOrForTooMany)
{
    for (int n = 1; n <= 2; n++) {
        fail_allocation(n);
        EXPECT_EQ(numberindex_make(5), nullptr);
    }
    fail_allocation(0);
    EXPECT_EQ(numberindex_make(LLONG_MAX), nullptr);
    numberindex_free(nullptr);
}

TEST(CountOf, KeepsASumThatFitsAndHoldsALargerOne)
{
    EXPECT_EQ(count_of(-3), -3);
    EXPECT_EQ(count_of(INT_MAX), INT_MAX);
    EXPECT_EQ(count_of(INT_MAX + 1LL), INT_MAX);
}

TEST(PlaceOf, GivesTheSameWithAndWithoutAnIndex)
{
    const int table[] = {8, 6, 8, 2};
    numberindex *ix = numberindex_of(table, 4);
    for (int value = 0; value < 10; value++)
        EXPECT_EQ(place_of(value, table, 4, ix), place_of(value, table, 4, nullptr)) << value;
    EXPECT_EQ(place_of(8, table, 4, nullptr), 0);
    EXPECT_EQ(place_of(2, table, 3, nullptr), -1);
    EXPECT_EQ(place_of(1, nullptr, 0, nullptr), -1);
    numberindex_free(ix);
}

} // namespace
