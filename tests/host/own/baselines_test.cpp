// Baselines in every dimension: the components that there are, with their part of the covariance.

#include <cmath>

#include "host/own/own_run.h"

using namespace vornhost;

namespace {

const std::string columns = "from to dx dy dz cxx cxy cxz cyy cyz czz\n";

std::string network(int dimension, const std::string &points, const std::string &baselines)
{
    return "[run]\ndimension = " + std::to_string(dimension) + "\n[tables]\ntargets = '''\n" + points +
           "'''\nbaselines = '''\n" + columns + baselines + "'''\n";
}

} // namespace

// P from A and from B, with covariances C1 and C2 (mm2): the mean is x2 + C2 (C1 + C2)^-1 (x1 - x2), its cofactors
// C1 (C1 + C2)^-1 C2, the sum of squares (x1 - x2)^T (C1 + C2)^-1 (x1 - x2).
TEST(OwnBaselines, CountTwoComponentsInThePlane)
{
    const SolvedNetwork solved = solve_text(network(2, "name x y code\nA 0 0 fixed\nB 100 0 fixed\nP 30 40 free\n",
                                                    "A P 30.003 40.001 7 4e-6 1e-6 2e-6 9e-6 -1e-6 25e-6\n"
                                                    "B P -70.001 39.997 -3 1e-6 -1e-6 0 4e-6 0 16e-6\n"));
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    // C1 = (4 1; 1 9), C2 = (1 -1; -1 4), sum (5 0; 0 13), difference of the two places of P (4; 4) mm
    EXPECT_EQ(solved.results().degrees_of_freedom, 2);
    EXPECT_NEAR(*solved.results().sigma_aposteriori, std::sqrt((16 / 5.0 + 16 / 13.0) / 2), 1e-9);
    const PointResult &p = solved.point("P");
    EXPECT_NEAR(*p.adjusted[0], 29.999 + 1e-3 * (4 / 5.0 - 4 / 13.0), 1e-10);
    EXPECT_NEAR(*p.adjusted[1], 39.997 + 1e-3 * (-4 / 5.0 + 16 / 13.0), 1e-10);
    const double sigma = *solved.results().sigma_aposteriori * 1e-3;
    EXPECT_NEAR(*p.deviation[0], sigma * std::sqrt(4 / 5.0 - 1 / 13.0), 1e-12);
    EXPECT_NEAR(*p.deviation[1], sigma * std::sqrt(36 / 13.0 - 1 / 5.0), 1e-12);
    ASSERT_EQ(solved.results().residuals.size(), 4u);
    EXPECT_EQ(solved.results().residuals[1].component, "y");
    EXPECT_EQ(solved.results().accounts[0].used, 2);
}

TEST(OwnBaselines, TurnAPlaneNetworkAndGiveItsScale)
{
    const SolvedNetwork solved =
        solve_text(network(2, "name x y code\nA 0 0 free\nB 100 0 free\nC 30 40 free\n",
                           "A B 100 0 0 1e-6 0 0 1e-6 0 1e-6\nB C -70 40 0 1e-6 0 0 1e-6 0 1e-6\n"
                           "C A -30 -40 0 1e-6 0 0 1e-6 0 1e-6\n"));
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_EQ(solved.results().datum, "free: 2 shifts; turn from 3 baselines; scale from 3 baselines");
    EXPECT_EQ(solved.results().degrees_of_freedom, 2);
}

// Variances of 4 and 9 mm2 and a levelled difference of 1 mm2: weights 1/4, 1/9, 1.
TEST(OwnBaselines, CountTheirHeightDifferenceAmongHeights)
{
    const SolvedNetwork solved =
        solve_text(network(1, "name z code\nA 10 fixed\nB 12 free\n",
                           "A B 500 300 2.004 1e-6 0 0 1e-6 0 4e-6\nB A -500 -300 -2.009 1e-6 0 0 1e-6 0 9e-6\n") +
                   "height_differences = '''\nfrom to value sigma\nA B 2 0.001\n'''\n");
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_EQ(solved.results().degrees_of_freedom, 2);
    const double mean = (4 / 4.0 + 9 / 9.0) / (1 / 4.0 + 1 / 9.0 + 1);
    EXPECT_NEAR(*solved.point("B").adjusted[2], 12 + 1e-3 * mean, 1e-11);
    for (const ResidualResult &r : solved.results().residuals)
        if (r.kind == "baseline") EXPECT_EQ(r.component, "z");
    for (const Account &a : solved.results().accounts) EXPECT_TRUE(a.left_out.empty()) << a.kind;
}
