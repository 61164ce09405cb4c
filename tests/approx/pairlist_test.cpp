#include "approx/pairlist.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/faults.h"

using namespace vornengine;

namespace {

std::vector<int> row(const pairlist &l, const int *values, int r)
{
    return std::vector<int>(values + l.first[r], values + l.first[r + 1]);
}

class Pairlist : public ::testing::Test {
protected:
    void TearDown() override
    {
        fail_allocation(0);
        pairlist_free(&list);
        pairlist_free(&turned);
    }

    // A-C, A-B, A-C, one without start, B-A, one without end
    const int from[6] = {0, 0, 0, -1, 1, 1}, to[6] = {2, 1, 2, 0, 0, -1};
    pairlist list = pairlist(), turned = pairlist();
};

TEST_F(Pairlist, HoldsEachRowByOtherEndThenInListOrder)
{
    ASSERT_EQ(pairlist_make(&list, 6, from, to, 2, 3), 0);
    EXPECT_EQ(row(list, list.to, 0), (std::vector<int>{1, 2, 2}));
    EXPECT_EQ(row(list, list.item, 0), (std::vector<int>{1, 0, 2}));
    EXPECT_EQ(row(list, list.to, 1), (std::vector<int>{0}));
    EXPECT_EQ(row(list, list.item, 1), (std::vector<int>{4}));
}

TEST_F(Pairlist, FindsTheFirstOfAPairOrNone)
{
    ASSERT_EQ(pairlist_make(&list, 6, from, to, 2, 3), 0);
    EXPECT_EQ(list.item[pairlist_find(&list, 0, 2)], 0);
    EXPECT_EQ(list.item[pairlist_find(&list, 0, 1)], 1);
    EXPECT_EQ(pairlist_find(&list, 0, 0), -1);
    EXPECT_EQ(pairlist_find(&list, 1, 2), -1);
}

TEST_F(Pairlist, KeepsTheLastOfAPair)
{
    ASSERT_EQ(pairlist_make(&list, 6, from, to, 2, 3), 0);
    pairlist_keep_last(&list, 2);
    EXPECT_EQ(row(list, list.to, 0), (std::vector<int>{1, 2}));
    EXPECT_EQ(row(list, list.item, 0), (std::vector<int>{1, 2}));
    EXPECT_EQ(row(list, list.item, 1), (std::vector<int>{4}));
}

TEST_F(Pairlist, TurnsToTheOtherEndWithTheSameItems)
{
    ASSERT_EQ(pairlist_make(&list, 6, from, to, 2, 3), 0);
    pairlist_keep_last(&list, 2);
    ASSERT_EQ(pairlist_turn(&turned, &list, 2, 3), 0);
    EXPECT_EQ(row(turned, turned.to, 0), (std::vector<int>{1}));
    EXPECT_EQ(row(turned, turned.item, 0), (std::vector<int>{4}));
    EXPECT_EQ(row(turned, turned.to, 2), (std::vector<int>{0}));
    EXPECT_EQ(row(turned, turned.item, 2), (std::vector<int>{2}));
}

TEST_F(Pairlist, OfNothingIsEmpty)
{
    ASSERT_EQ(pairlist_make(&list, 0, nullptr, nullptr, 2, 3), 0);
    EXPECT_EQ(pairlist_find(&list, 1, 0), -1);
    ASSERT_EQ(pairlist_turn(&turned, &list, 2, 3), 0);
    EXPECT_EQ(turned.first[3], 0);
}

TEST_F(Pairlist, IsEmptyWhenAnAllocationFails)
{
    for (int n = 1; n <= 5; n++) {
        fail_allocation(n);
        EXPECT_EQ(pairlist_make(&list, 6, from, to, 2, 3), -1) << n;
        EXPECT_EQ(list.first, nullptr);
    }
    fail_allocation(0);
    ASSERT_EQ(pairlist_make(&list, 6, from, to, 2, 3), 0);
    for (int n = 1; n <= 6; n++) {
        fail_allocation(n);
        EXPECT_EQ(pairlist_turn(&turned, &list, 2, 3), -1) << n;
        EXPECT_EQ(turned.first, nullptr);
    }
}

} // namespace
