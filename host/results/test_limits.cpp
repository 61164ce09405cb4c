#include "host/results/test_limits.h"

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <cmath>

namespace vornhost {

double normal_limit(double alpha)
{
    return boost::math::quantile(boost::math::complement(boost::math::normal(), alpha / 2.0));
}

double tau_limit(double alpha, double f)
{
    if (f <= 1.0) return 1.0;
    const double t = boost::math::quantile(boost::math::complement(boost::math::students_t(f - 1.0), alpha / 2.0));
    return t * std::sqrt(f) / std::sqrt(f - 1.0 + t * t);
}

double chi_square_limit(double probability, double f)
{
    return boost::math::quantile(boost::math::chi_squared(f), probability);
}

} // namespace vornhost
