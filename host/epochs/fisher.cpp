#include "host/epochs/fisher.h"

#include <algorithm>
#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <cmath>

namespace vornhost {

namespace {

namespace bm = boost::math;

double tail(double value, int h, double f)
{
    if (std::isinf(value)) return 0.0;
    if (std::isinf(f)) return bm::cdf(bm::complement(bm::chi_squared(h), value * h));
    return bm::cdf(bm::complement(bm::fisher_f(h, f), value));
}

} // namespace

double fisher_limit(double level, int h, double f)
{
    if (std::isinf(f)) return bm::quantile(bm::complement(bm::chi_squared(h), level)) / h;
    return bm::quantile(bm::complement(bm::fisher_f(h, f), level));
}

FisherTest fisher_test(double squares, int h, const VarianceFactor &factor, double level)
{
    FisherTest test;
    if (h <= 0) return test;
    test.h = h, test.f = factor.f;
    const bool nothing = !(squares > 0.0); // rounding, or exact observations, whose variance factor is 0
    test.value = nothing ? 0.0 : squares / h / factor.value;
    test.limit = fisher_limit(level, h, factor.f);
    test.p = tail(test.value, h, factor.f);
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
