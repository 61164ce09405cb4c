// Three baselines of a session between three points, with one full covariance of nine components, adjusted in the
// plane: dz is no observation there. Expectations from a dense adjustment of the six components with their part of the
// covariance.

#include "host/own/own_run.h"

namespace {

const char session[] = R"(
[run]
dimension = 2
[tables]
stations = '''
name x y z code
A 0 0 0 fixed
B 100 20 5 free
C 60 90 7 free
'''
baselines = '''
from to dx dy dz covariance
A B 99.996089 19.986529 5.000238 S
A C 60.011815 90.010504 7.000698 S
B C -39.993525 69.995282 2.006908 S
'''
[covariances.S]
form = "lower"
matrix = '''
1.479524262317e-04
6.868009713998e-05 1.206847869566e-04
2.672627507035e-07 2.460074468658e-05 7.272939312077e-05
-7.532832325173e-06 -1.920525365676e-05 -8.283556852402e-06 3.322591079435e-05
-6.288028150057e-05 -8.671200173184e-05 -5.551755548426e-05 1.106614217298e-05 1.330400387545e-04
-2.452941609921e-05 -1.776561478876e-06 2.077578682012e-05 -3.149979379341e-06 4.551725258398e-06 4.951364441225e-05
6.107384528067e-05 -3.144663560150e-06 -4.773395008332e-05 1.196809666131e-05 4.430005304693e-05 2.310635200308e-06 1.024100293037e-04
6.621950344544e-05 3.764146001496e-05 2.714839709237e-05 -3.747126208752e-05 -5.278559617466e-05 -1.276466752915e-05 5.506967020364e-06 1.159485400205e-04
5.488013411652e-05 2.867772602221e-05 2.988513065345e-05 1.323405750837e-05 -1.686203686223e-05 1.725605437571e-06 2.816544926700e-05 2.546331425349e-05 1.186342491328e-04
'''
)";

} // namespace

TEST(SessionInPlane, CountsTheComponentsOfThePlaneAlone)
{
    const SolvedNetwork n = solve_text(session);
    ASSERT_TRUE(n.adjusted()) << n.words();
    EXPECT_EQ(*n.results().degrees_of_freedom, 2);
    EXPECT_NEAR(*n.results().sigma_aposteriori, 0.7542139604, 1e-8);
    EXPECT_NEAR(*n.point("B").adjusted[0], 100.0041125, 1e-8);
    EXPECT_NEAR(*n.point("C").adjusted[1], 89.99976706, 2e-8);
    const double redundancy[6] = {0.47428421, 0.32993469, 0.02400461, 0.42782652, 0.50171119, 0.24223879};
    ASSERT_EQ(n.results().residuals.size(), (size_t)6);
    size_t i = 0;
    for (const vornhost::ResidualResult &r : n.results().residuals) EXPECT_NEAR(*r.redundancy, redundancy[i++], 1e-7);
    ASSERT_EQ(n.results().joint_tests.size(), (size_t)3);
    for (const auto &test : n.results().joint_tests) EXPECT_NEAR(test.squares, 1.137677396, 1e-6);
}
