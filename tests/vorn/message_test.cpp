#include "vorn/message.h"

#include <gtest/gtest.h>

#include <string>

#include "support/network.h"

using namespace vornengine;

namespace {

using Lines = std::vector<std::string>;

TEST(Message, GoesToFeedbackWithoutNewlineAndToTheReportWithOne)
{
    Network n(1);
    tell(&n.messages, "%s %d", "told", 1);
    tell_and_print(&n.messages, n.p.out, "%s %d", "printed", 2);
    EXPECT_EQ(n.messages.lines, (Lines{"told 1", "printed 2"}));
    EXPECT_EQ(n.report(), "printed 2\n");
}

// The longest number of a message: a step of 1e308 has 309 digits.
TEST(Message, HoldsANumberOfAnySize)
{
    Network n(1);
    tell(&n.messages, "Problem at iteration %2d with delta[%d] %lf", 7, 2147483647, -1e308);
    ASSERT_EQ(n.messages.lines.size(), 1u);
    EXPECT_EQ(n.messages.lines[0].size(), std::string("Problem at iteration  7 with delta[2147483647] ").size() + 317);
}

TEST(Message, IsCutAt511Characters)
{
    Network n(1);
    for (const size_t size : {511, 512, 5000}) {
        const std::string text(size, 'x');
        tell(&n.messages, "%s", text.c_str());
        tell_and_print(&n.messages, n.p.out, "%s", text.c_str());
    }
    EXPECT_EQ(n.messages.lines, Lines(6, std::string(511, 'x')));
    EXPECT_EQ(n.report().size(), 3 * 512u);
}

TEST(Message, NeedsNobodyWhoListens)
{
    Network n(1);
    tell(nullptr, "lost");
    tell_and_print(nullptr, n.p.out, "kept");
    EXPECT_EQ(n.report(), "kept\n");
}

} // namespace
