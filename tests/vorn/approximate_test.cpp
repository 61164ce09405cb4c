#include <gtest/gtest.h>

#include "support/access.h"
#include "support/network.h"

namespace {

const char question[] = "Approximation Info: Do you want to compute new approximate values?";

TEST(Vornapprox, AsksWhenNoValueIsMissingAndTakesNoForAnAnswer)
{
    Network n(2);
    vorn run(n.ready());
    EXPECT_EQ((V(run, vornapprox)()), 0);
    EXPECT_EQ(V(run, iapprox), 0);
    EXPECT_EQ(n.messages.questions, (std::vector<std::string>{question}));
}

TEST(Vornapprox, DoesNotAskWhenValuesAreMissing)
{
    Network n(2);
    n.station("S", 0, 0);
    n.target("T", 0, 0).status = STATUS_COMPUTE; // one distance does not give a position
    n.distance("S", "T", 1, 1);
    vorn run(n.ready());
    ASSERT_EQ((V(run, fill_vorn)()), 0);
    V(run, iapprox) = 9;
    EXPECT_NE((V(run, vornapprox)()), 0);
    EXPECT_EQ(V(run, iapprox), 9);
    EXPECT_TRUE(n.messages.questions.empty());
}

} // namespace
