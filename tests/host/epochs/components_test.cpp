// Variance components of network files: classes by kind, instrument group and covariance; proposed and used.

#include <gtest/gtest.h>

#include <cmath>

#include "host/epochs/field.h"
#include "host/results/json_writer.h"

using namespace vornhost;

namespace {

// Standard deviations of the file are half of the errors of distances, three times those of directions.
std::string text()
{
    Field field(1);
    field.observe(truth);
    std::string all = field.text();
    all.replace(all.find("distances = 0.0006"), 18, "distances = 0.0003");
    all.replace(all.find("directions = 0.0004"), 19, "directions = 0.0012");
    return all;
}

SolvedNetwork solved(const std::string &network, Components components)
{
    Model model = model_of(network);
    model.components = components;
    return solve(model);
}

} // namespace

TEST(FileComponents, AreProposedWithoutChangingTheResults)
{
    const SolvedNetwork plain = solve_text(text()), with = solved(text(), Components::propose);
    ASSERT_EQ(with.results().components.size(), 2u);
    const ComponentResult &distances = with.results().components[0], &directions = with.results().components[1];
    EXPECT_EQ(distances.name, "distance");
    EXPECT_EQ(distances.rows, 24);
    EXPECT_NEAR(*distances.factor, 2.0, 4 * *distances.deviation);
    EXPECT_NEAR(*directions.factor, 1.0 / 3.0, 4 * *directions.deviation);
    EXPECT_NEAR(*distances.sigma, 0.0003, 1e-12);
    EXPECT_NEAR(*directions.sigma, 0.0012 * M_PI / 200, 1e-12);
    EXPECT_NEAR(distances.redundancy + directions.redundancy, *with.results().degrees_of_freedom, 1e-6);
    EXPECT_FALSE(distances.used);
    EXPECT_EQ(*plain.point("D1").adjusted[0], *with.point("D1").adjusted[0]);
    EXPECT_NE(with.report.find("Variance components"), std::string::npos);
    EXPECT_EQ(plain.report.find("Variance components"), std::string::npos);
    EXPECT_NE(to_json(with.results()).find("\"components\""), std::string::npos);
}

// The same as a file with the proposed standard deviations.
TEST(FileComponents, AreUsedWhereItIsAsked)
{
    const SolvedNetwork used = solved(text(), Components::use);
    ASSERT_EQ(used.results().components.size(), 2u);
    std::string other = text();
    const auto put = [&](const std::string &from, const std::string &to, double x) {
        char line[60];
        snprintf(line, sizeof line, "%s%.12f", to.c_str(), x);
        other.replace(other.find(from), from.size(), line);
    };
    put("distances = 0.0003", "distances = ", 0.0003 * *used.results().components[0].factor);
    put("directions = 0.0012", "directions = ", 0.0012 * *used.results().components[1].factor);
    const SolvedNetwork wanted = solve_text(other);
    EXPECT_NEAR(*used.results().sigma_aposteriori, 1.0, 1e-3);
    for (const char *name : {"P3", "D1", "D2"})
        for (int k = 0; k < 2; k++) {
            EXPECT_NEAR(*used.point(name).adjusted[k], *wanted.point(name).adjusted[k], 1e-8);
            EXPECT_NEAR(*used.point(name).deviation[k], *wanted.point(name).deviation[k], 1e-8);
        }
    EXPECT_TRUE(used.results().components[0].used);
}

TEST(FileComponents, TakeInstrumentGroupsAndCovariancesApart)
{
    std::string grouped = text();
    grouped.replace(grouped.find("name x y code"), 13, "name x y code group");
    for (const char *row : {"P1", "P2", "P3", "P4"}) {
        const size_t at = grouped.find(std::string("\n") + row + " "), end = grouped.find('\n', at + 1);
        grouped.insert(end, std::string(row) < "P3" ? " old" : " new");
    }
    grouped += "groups = '''\nname\nold\nnew\n'''\n"
               "coordinate_differences = '''\nfrom to dx dy covariance\nD1 D2 30 20 tape\n'''\n"
               "[covariances.tape]\nmatrix = '1e-4 0 0 1e-4'\n";
    const SolvedNetwork s = solved(grouped, Components::propose);
    std::vector<std::string> names;
    for (const ComponentResult &c : s.results().components) names.push_back(c.name);
    EXPECT_EQ(names, (std::vector<std::string>{"distance, group old", "distance, group new", "direction, group old",
                                               "direction, group new", "covariance tape"}))
        << s.words();
    ASSERT_EQ(s.results().components.size(), 5u);
    EXPECT_FALSE(s.results().components[4].factor.has_value()); // two rows
    EXPECT_NE(s.report.find("too little redundancy"), std::string::npos);
}
