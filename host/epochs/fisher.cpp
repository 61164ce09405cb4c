#include "host/epochs/fisher.h"

#include <algorithm>
#include <cmath>

#include "host/results/test_limits.h"

namespace vornhost {

FisherTest fisher_test(double squares, int h, const VarianceFactor &factor, double level)
{
    FisherTest test;
    if (h <= 0) return test;
    test.h = h, test.f = factor.f;
    const bool nothing = !(squares > 0.0); // rounding, or exact observations, whose variance factor is 0
    test.value = nothing ? 0.0 : squares / h / factor.value;
    test.limit = fisher_limit(level, h, factor.f);
    test.p = fisher_above(test.value, h, factor.f);
    return test;
}

FisherTest same_variance(const VarianceFactor &a, const VarianceFactor &b, double level)
{
    const VarianceFactor &large = a.value >= b.value ? a : b, &small = a.value >= b.value ? b : a;
    FisherTest test = fisher_test(large.value * large.f, (int)large.f, small, level / 2.0);
    test.p = std::min(1.0, 2.0 * test.p);
    return test;
}

} // namespace vornhost
