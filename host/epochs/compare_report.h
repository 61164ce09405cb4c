// A comparison of epochs as a report for people.

#ifndef VORNHOST_COMPARE_REPORT_H
#define VORNHOST_COMPARE_REPORT_H

#include <string>

#include "host/epochs/compare.h"

namespace vornhost {

std::string compare_report(const Comparison &comparison, const std::string &date);

// The judgement as sentences.
std::string compare_verdict(const Comparison &comparison);

// The figures of a strain with their names: exx, extension 1, largest shear, turn from x to y, ...
std::vector<std::pair<std::string, StrainValue>> named_values(const Strain &strain);

// The same for scripts; keys in docs/epochs.md.
std::string compare_json(const Comparison &comparison, const std::string &version);

// The same for people with a browser: a page with the epochs over one another.
std::string compare_html(const Comparison &comparison, const std::string &version, const std::string &date);

} // namespace vornhost

#endif
