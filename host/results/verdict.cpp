#include "host/results/verdict.h"

#include <algorithm>
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
    if (results.solver == "simplex")
        return "Least sum of absolute residuals: a gross error stands alone in its residual.";
    if (!results.robust.empty()) return "Robust weights: the variance factor is not tested.";
    if (!results.degrees_of_freedom) return "The standard deviations were not tested.";
    if (*results.degrees_of_freedom <= 0) return "Nothing checks the observations: no redundancy.";
    if (!results.variance_test && !results.one_tailed_test) return "No tests in this mode.";
    const std::string sigma = ": sigma " + decimal(results.sigma_aposteriori.value_or(1.0), 3) + ".";
    if (results.variance_test) return agreement(*results.variance_test) + sigma;
    return (*results.one_tailed_test ? "The observations agree with their standard deviations"
                                     : "The observations do not agree with their standard deviations") +
           sigma;
}

// Rejected by the test of the solver sparse, which lists them in order; of the other solvers those beyond the limit for
// the largest of all.
std::vector<const ResidualResult *> suspicious(const Results &results)
{
    std::vector<const ResidualResult *> all;
    for (const size_t i : results.suspicious) all.push_back(&results.residuals[i]);
    if (results.solver == "sparse") return all;
    for (size_t i = 0; i < results.residuals.size(); i++) // the other solvers keep them
        if (results.residuals[i].normal_divided.value_or(false)) all.push_back(&results.residuals[i]);
    const auto size = [](const ResidualResult *r) { return std::fabs(r->residual) / r->deviation.value_or(r->sigma); };
    std::stable_sort(all.begin(), all.end(), [&](auto *p, auto *q) { return size(p) > size(q); });
    return all;
}

std::string of_suspicious(const Results &results)
{
    const bool sparse = results.solver == "sparse";
    const bool tested = sparse ? results.tests && results.tests->tested > 0
                               : std::any_of(results.residuals.begin(), results.residuals.end(),
                                             [](const ResidualResult &r) { return r.normal_divided.has_value(); });
    if (!tested) return "No observation was tested.";
    const std::vector<const ResidualResult *> all = suspicious(results);
    if (all.empty()) return "No observation is suspicious.";
    const size_t n = all.size();
    std::string text = std::to_string(n) +
                       (n == 1 ? " suspicious observation: " : " suspicious observations, the worst: ") +
                       residual_name(results, *all.front());
    if (all.front()->normalised) text += ", normalised residual " + decimal(std::fabs(*all.front()->normalised), 1);
    return text + ".";
}

std::string of_unchecked(const Results &results)
{
    if (!results.tests) return "Not examined: which observations others check.";
    if (!results.tests->first_unchecked) return "Every observation is checked by others.";
    const int n = results.tests->unchecked;
    return std::to_string(n) + " of " + std::to_string(results.residuals.size()) +
           (n == 1 ? " observations is not checked by others: "
                   : " observations are not checked by others, the first: ") +
           residual_name(results, results.residuals[*results.tests->first_unchecked]) + ".";
}

} // namespace

std::string residual_name(const Results &results, const ResidualResult &r)
{
    const std::string &at = results.words_of(r).at;
    std::string name = r.kind + " " + (at.empty() ? "" : "at " + at + " from ") + r.from;
    if (!r.to.empty()) name += " to " + r.to;
    if (!r.component.empty()) name += " " + r.component;
    return name + " (" + r.file + ":" + std::to_string(r.line) + ")";
}

std::vector<std::string> verdict(const Results &results)
{
    if (!results.adjusted) return refusal(results);
    const std::string done = results.mode == "propagation" ? "Precision of a planned network." : "Adjusted.";
    if (results.solver != "sparse") return {done, of_sigma(results), of_suspicious(results)};
    return {done + " " + of_sigma(results), of_suspicious(results), of_unchecked(results)};
}

} // namespace vornhost
