#include "host/results/verdict.h"

#include <cmath>

#include "host/results/report_units.h"

namespace vornhost {

namespace {

std::string agreement(const VarianceTest &test)
{
    if (test.passed()) return "The observations agree with their standard deviations";
    return test.squares > test.upper ? "The observations do not agree with their standard deviations"
                                     : "The observations are better than their standard deviations say";
}

std::vector<std::string> refusal(const Results &results)
{
    return {"Not adjusted: " + results.code + ".",
            results.words.empty() ? "The reason is not known." : results.words.front(),
            results.words.size() < 2 ? "There are no results." : results.words.back()};
}

std::string of_sigma(const Results &results)
{
    if (results.variance_test)
        return agreement(*results.variance_test) + ": sigma " + decimal(*results.sigma_aposteriori, 3) + ".";
    if (results.one_tailed_test)
        return std::string(*results.one_tailed_test ? "The observations agree with their standard deviations"
                                                    : "The observations do not agree with their standard deviations") +
               ": sigma " + decimal(results.sigma_aposteriori.value_or(0.0), 3) + ".";
    return results.degrees_of_freedom.value_or(0) > 0 ? "No tests in this mode."
                                                      : "Nothing checks the observations: no redundancy.";
}

std::string of_suspicious(const Results &results)
{
    if (!results.variance_test) return "No observation was tested.";
    const size_t n = results.suspicious.size();
    if (n == 0) return "No observation is suspicious.";
    const ResidualResult &worst = results.residuals[results.suspicious.front()];
    return std::to_string(n) + (n == 1 ? " suspicious observation: " : " suspicious observations, the worst: ") +
           residual_name(results, worst) + ", normalised residual " + decimal(std::fabs(*worst.normalised), 1) + ".";
}

} // namespace

std::string residual_name(const Results &, const ResidualResult &r)
{
    std::string name = r.kind + " " + r.from;
    if (!r.to.empty()) name += " to " + r.to;
    if (!r.component.empty()) name += " " + r.component;
    return name + " (" + r.file + ":" + std::to_string(r.line) + ")";
}

std::vector<std::string> verdict(const Results &results)
{
    if (!results.adjusted) return refusal(results);
    return {results.mode == "propagation" ? "Precision of a planned network." : "Adjusted.", of_sigma(results),
            of_suspicious(results)};
}

} // namespace vornhost
