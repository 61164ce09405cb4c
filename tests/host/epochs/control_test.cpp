// Control points against the free network: adjustments on them, a point that lies elsewhere, levels.

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "host/epochs/compare_report.h"
#include "host/epochs/field.h"

using namespace vornhost;

namespace {

// The network of `field` with the pillars P1 to P4 held at the given places.
std::string held(const Field &field, const std::vector<Place> &given, const std::string &code, const std::string &sigma)
{
    std::string text = field.text();
    const size_t from = text.find("name x y code"), to = text.find("'''\ntargets");
    std::string rows = "name x y code" + std::string(sigma.empty() ? "" : " sx sy") + "\n";
    for (size_t p = 0; p < 4; p++)
        rows += std::string(given[p].name) + " " + number(given[p].x) + " " + number(given[p].y) + " " + code + " " +
                (sigma.empty() ? "" : sigma + " " + sigma) + "\n";
    return text.replace(from, to - from, rows);
}

Comparison controlled(const std::string &text, const CompareOptions &options = {})
{
    Model model = model_of(text);
    model.path = "net.inp";
    return compare_with_control(model, options);
}

} // namespace

TEST(Control, TestsTheGrowthOfTheSquaresOnTheControlPoints)
{
    Field field(1);
    field.observe(truth);
    const std::vector<Place> given = moved("P3", 0.001, 0.0005);
    for (const std::string sigma : {"", "0.0007"}) {
        const std::string text = held(field, given, sigma.empty() ? "fixed" : "weighted", sigma);
        const Comparison c = controlled(text);
        ASSERT_TRUE(c.made()) << c.words[0];
        const double growth = squares(text) - squares(field.text());
        EXPECT_NEAR(c.congruence.value * c.congruence.h * c.factor.value, growth, 2e-3 * growth);
        EXPECT_EQ(c.congruence.h, 8 - 3);
        EXPECT_EQ(c.open, 3);
    }
}

TEST(Control, NamesThePointThatDoesNotFit)
{
    Field field(2);
    field.observe(truth);
    const Comparison c = controlled(held(field, moved("P2", 0.01, -0.01), "fixed", ""));
    ASSERT_TRUE(c.made());
    ASSERT_EQ(c.departures.size(), 1u);
    EXPECT_EQ(c.departures[0].point, "P2");
    for (const PointComparison &p : c.points) {
        if (p.name != "P2") continue;
        EXPECT_NEAR(*p.shifts[0].by[0], -0.01, 4 * *p.shifts[0].deviation[0]);
        EXPECT_NEAR(*p.shifts[0].by[1], 0.01, 4 * *p.shifts[0].deviation[1]);
    }
    EXPECT_NE(compare_report(c, "").find("1 of 4 control points do not fit at a level of 5.0 %: P2"), std::string::npos)
        << compare_report(c, "");
    const Comparison good = controlled(held(field, truth, "fixed", ""));
    EXPECT_NE(compare_report(good, "").find("all control points fit."), std::string::npos) << compare_report(good, "");
}

// At 20 % 60 of 300, with a standard deviation of 7; the weighted control points have errors of their own.
TEST(Control, RejectsAsOftenAsTheLevelSays)
{
    std::mt19937 engine(5);
    std::normal_distribution<double> error(0, 0.001);
    CompareOptions options;
    options.level = 0.2;
    int alarms = 0;
    for (int run = 0; run < 300; run++) {
        std::string text = "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code sz\n";
        const char names[] = "ABCD";
        for (int i = 0; i < 4; i++)
            text += std::string(1, names[i]) + " " + number(i + 2 * (i < 3 ? error(engine) : 0)) +
                    (i < 3 ? " weighted 0.002\n" : " free -\n");
        text += "'''\nheight_differences = '''\nfrom to value sigma\n";
        for (int i = 0; i < 4; i++)
            for (int j = i + 1; j < 4; j++)
                text += std::string(1, names[i]) + " " + names[j] + " " + number(j - i + error(engine)) + " 0.001\n";
        const Comparison c = controlled(text + "'''\n", options);
        ASSERT_TRUE(c.made()) << c.words[0];
        EXPECT_EQ(c.congruence.h, 2);
        // The variance factor is that of the observations alone, 0.001 and 0.002 are right: F holds.
        alarms += !c.congruence.passed();
    }
    EXPECT_NEAR(alarms, 60, 4 * 7);
}

TEST(Control, RefusesNetworksWithoutChecks)
{
    Field field(3);
    field.observe(truth);
    EXPECT_EQ(controlled(field.text()).words[0], "net.inp has no fixed or weighted coordinates");
    std::string one = field.text();
    one.replace(one.find("free"), 4, "fixed");
    EXPECT_EQ(controlled(one).words[0].rfind(
                  "net.inp (its control points are free here): the network can be turned about P1", 0),
              0u);
}
