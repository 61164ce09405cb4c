#include "host/own/covariances.h"

#include <cmath>
#include <unordered_map>

#include "host/input/names.h"

namespace vornhost {

namespace {

// Points of the numbers with the names that are wanted, in the order of the wish; a name counts once.
std::vector<int> wanted_points(const Model &network, const Numbers &numbers)
{
    if (network.covariance_points.empty()) return {};
    std::unordered_map<std::string, int> place;
    for (size_t p = 0; p < numbers.points.size(); p++)
        place.emplace(shown_name(network, point_name(network, numbers.points[p])), (int)p);
    std::vector<int> points;
    for (const std::string &name : network.covariance_points) {
        const auto at = place.find(name);
        if (at == place.end()) continue;
        points.push_back(at->second);
        place.erase(at);
    }
    return points;
}

} // namespace

std::vector<int> covariance_unknowns(const Model &network, const Numbers &numbers)
{
    std::vector<int> unknowns;
    for (const int p : wanted_points(network, numbers))
        for (int k = 0; k < 3; k++) unknowns.push_back(3 * p + k);
    return unknowns;
}

void collect_covariances(const Model &network, const OwnOutcome &outcome, Results &results)
{
    const vornadjust::Statistics &s = outcome.adjustment.statistics;
    const std::vector<int> points = wanted_points(network, outcome.numbers);
    const size_t n = 3 * points.size(), all = (size_t)std::lround(std::sqrt((double)s.joint.size())), first = all - n;
    if (!outcome.adjusted() || n == 0 || all < n) return;
    for (const int p : points)
        results.covariance_points.push_back(
            shown_name(network, point_name(network, outcome.numbers.points[(size_t)p])));
    for (size_t i = 0; i < n; i++)
        for (size_t j = 0; j < n; j++)
            results.covariances.push_back(s.sigma * s.sigma * s.joint[(first + i) * all + first + j]);
}

} // namespace vornhost
