#include "loading/namechain.h"

#include <gtest/gtest.h>

#include "support/faults.h"

using namespace vornengine;

namespace {

const char *name_of(const void *list, int i) { return ((const char *const *)list)[i]; }

const char *const names[] = {"A", "B", "A", "A ", "B", "A"};

TEST(NameChain, LeadsThroughTheItemsOfANameInTheirOrder)
{
    namechain c = namechain();
    ASSERT_EQ(namechain_make(&c, 6, name_of, names), 0);
    const int wanted[] = {2, 4, 5, -1, -1, -1};
    for (int i = 0; i < 6; i++) EXPECT_EQ(c.next[i], wanted[i]) << i;
    EXPECT_EQ(namechain_first(&c, "A"), 0);
    EXPECT_EQ(namechain_first(&c, "B"), 1);
    EXPECT_EQ(namechain_first(&c, "A "), 3);
    EXPECT_EQ(namechain_first(&c, "C"), -1);
    namechain_free(&c);
    namechain_free(&c); // a second release is harmless
}

TEST(NameChain, MayBeEmpty)
{
    namechain c = namechain();
    ASSERT_EQ(namechain_make(&c, 0, name_of, nullptr), 0);
    EXPECT_EQ(namechain_first(&c, "A"), -1);
    namechain_free(&c);
}

TEST(NameChain, CanBeReleasedAfterAFailedAllocation)
{
    for (int n = 1; n <= 4; n++) {
        namechain c = namechain();
        fail_allocation(n);
        EXPECT_EQ(namechain_make(&c, 6, name_of, names), -1) << n;
        fail_allocation(0);
        namechain_free(&c);
    }
}

} // namespace
