// The program's own report: what a surveyor files, in the units of the network file. Its last three lines are the
// verdict.

#ifndef VORNHOST_TEXT_REPORT_H
#define VORNHOST_TEXT_REPORT_H

#include <string>

#include "host/results/results.h"

namespace vornhost {

// date is the day of the run as it shall stand in the heading. A brief report has no lines for the observations that
// were used, other than the suspicious ones.
std::string text_report(const Results &results, const std::string &date, bool brief = false);

} // namespace vornhost

#endif
