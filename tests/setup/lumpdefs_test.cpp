#include "setup/lumpdefs.h"

#include <gtest/gtest.h>

using namespace vornengine;

namespace {

TEST(LumpDefinitions, AreFoundByTheFirstOfTheirIndexAndEpoch)
{
    int epochs[] = {4, 0, 4};
    lump_definition defs[3] = {};
    defs[0].id = 7;
    defs[1].id = defs[2].id = -3;
    defs[1].n = 3;
    defs[1].epoch = epochs;
    project p = project();
    EXPECT_EQ(find_definition(&p, 7), nullptr);
    p.lumpdefs = defs;
    p.nlumpdefs = 3;
    EXPECT_EQ(find_definition(&p, -3), defs + 1);
    EXPECT_EQ(find_definition(&p, 0), nullptr);
    EXPECT_EQ(defined_epoch(defs, 4), -1);
    EXPECT_EQ(defined_epoch(defs + 1, 4), 0);
    EXPECT_EQ(defined_epoch(defs + 1, 0), 1);
    EXPECT_EQ(defined_epoch(defs + 1, 5), -1);
}

} // namespace
