#include "host/results/test_limits.h"

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/non_central_chi_squared.hpp>
#include <boost/math/distributions/non_central_t.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <boost/math/tools/toms748_solve.hpp>
#include <cmath>
#include <cstdint>

namespace vornhost {

namespace bm = boost::math;

double normal_limit(double alpha) { return bm::quantile(bm::complement(bm::normal(), alpha / 2.0)); }

double normal_probability(double w) { return std::erfc(std::fabs(w) / std::sqrt(2.0)); }

double tau_limit(double alpha, double f)
{
    if (f <= 1.0) return 1.0;
    const double t = bm::quantile(bm::complement(bm::students_t(f - 1.0), alpha / 2.0));
    return t * std::sqrt(f) / std::sqrt(f - 1.0 + t * t);
}

double tau_probability(double tau, double f)
{
    const double left = f - tau * tau; // nothing where all misfit is this residual
    if (left <= 0.0) return 0.0;
    const double t = std::fabs(tau) * std::sqrt((f - 1.0) / left);
    return 2.0 * bm::cdf(bm::complement(bm::students_t(f - 1.0), t));
}

double chi_square_limit(double probability, double f) { return bm::quantile(bm::chi_squared(f), probability); }

double chi_square_above(double squares, double f) { return bm::cdf(bm::complement(bm::chi_squared(f), squares)); }

double chi_square_below(double squares, double f) { return bm::cdf(bm::chi_squared(f), squares); }

double fisher_above(double ratio, double f1, double f2)
{
    if (std::isinf(ratio)) return 0.0;
    if (std::isinf(f2)) return chi_square_above(ratio * f1, f1);
    return bm::cdf(bm::complement(bm::fisher_f(f1, f2), ratio));
}

double fisher_limit(double level, double f1, double f2)
{
    if (std::isinf(f2)) return bm::quantile(bm::complement(bm::chi_squared(f1), level)) / f1;
    return bm::quantile(bm::complement(bm::fisher_f(f1, f2), level));
}

double sidak_level(double level, double n) { return -std::expm1(std::log1p(-level) / n); }

double sidak_probability(double probability, double n)
{
    return probability >= 1.0 ? 1.0 : -std::expm1(n * std::log1p(-probability));
}

double noncentrality(double level, double power, double q)
{
    const double limit = bm::quantile(bm::complement(bm::chi_squared(q), level));
    return bm::non_central_chi_squared::find_non_centrality(q, limit, 1.0 - power);
}

double level_of_same_power(double lambda, double power, double q)
{
    return chi_square_above(bm::quantile(bm::non_central_chi_squared(q, lambda), 1.0 - power), q);
}

double tau_shift(double level, double power, double f)
{
    const double t = bm::quantile(bm::complement(bm::students_t(f - 1.0), level / 2.0));
    const auto found = [&](double shift) {
        const bm::non_central_t off(f - 1.0, shift);
        return bm::cdf(bm::complement(off, t)) + bm::cdf(off, -t);
    };
    const auto missing = [&](double shift) { return found(shift) - power; };
    double low = 0.0, high = t + 1.0;
    while (missing(high) < 0.0) low = high, high *= 2.0;
    std::uintmax_t rounds = 100;
    const auto found_between =
        bm::tools::toms748_solve(missing, low, high, bm::tools::eps_tolerance<double>(30), rounds);
    return found_between.second;
}

} // namespace vornhost
