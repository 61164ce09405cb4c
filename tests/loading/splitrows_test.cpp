#include "loading/splitrows.h"

#include <gtest/gtest.h>
#include <string.h>

#include "support/faults.h"

using namespace vornengine;

namespace {

TEST(SplitRows, ChainsTheRowsOfANameInOrder)
{
    target_input host[3] = {};
    strcpy(host[0].name, "A");
    strcpy(host[1].name, "B");
    strcpy(host[2].name, "A");
    int cells[5] = {2, 1, 0, 1, 2}; // A B A B A
    int *rows[5] = {cells, cells + 1, cells + 2, cells + 3, cells + 4};
    for (int failing = 0; failing <= 4; failing++) { // the same without memory
        splitrows s = {{NULL, 0, host, 3}, 5, 0, rows, {}};
        fail_allocation(failing);
        chain_rows(&s);
        fail_allocation(0);
        EXPECT_EQ(s.chain.index == NULL, failing != 0);
        EXPECT_EQ(s.chain.index == NULL, s.chain.next == NULL);
        EXPECT_STREQ(row_name(&s, 1), "B");
        EXPECT_EQ(next_row(&s, "A", -1), 0);
        EXPECT_EQ(next_row(&s, "A", 0), 2);
        EXPECT_EQ(next_row(&s, "A", 2), 4);
        EXPECT_EQ(next_row(&s, "A", 4), -1);
        EXPECT_EQ(next_row(&s, "B", -1), 1);
        EXPECT_EQ(next_row(&s, "B", 1), 3);
        EXPECT_EQ(next_row(&s, "B", 3), -1);
        EXPECT_EQ(next_row(&s, "C", -1), -1);
        unchain_rows(&s);
        unchain_rows(&s);
    }
}

TEST(SplitRows, HasNoRowsToFindWhenEmpty)
{
    splitrows s = {{}, 0, 0, NULL, {}};
    chain_rows(&s);
    EXPECT_EQ(next_row(&s, "A", -1), -1);
    unchain_rows(&s);
}

} // namespace
