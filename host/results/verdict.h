// The verdict of a run in three sentences: whether it was adjusted and the observations agree, what to look at, and
// which observations nothing checks.

#ifndef VORNHOST_VERDICT_H
#define VORNHOST_VERDICT_H

#include <string>
#include <vector>

#include "host/results/results.h"

namespace vornhost {

std::vector<std::string> verdict(const Results &results);

// "distance S1 to P (net.inp:12)".
std::string residual_name(const Results &results, const ResidualResult &residual);

} // namespace vornhost

#endif
