// A comparison of epochs as a report for people.

#ifndef VORNHOST_COMPARE_REPORT_H
#define VORNHOST_COMPARE_REPORT_H

#include <string>

#include "host/epochs/compare.h"

namespace vornhost {

std::string compare_report(const Comparison &comparison, const std::string &date);

// The same for scripts; keys in docs/epochs.md.
std::string compare_json(const Comparison &comparison, const std::string &version);

} // namespace vornhost

#endif
