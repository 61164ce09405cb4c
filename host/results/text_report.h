// The program's own report: what a surveyor files, in the units of the network file.

#ifndef VORNHOST_TEXT_REPORT_H
#define VORNHOST_TEXT_REPORT_H

#include <string>

#include "host/results/results.h"

namespace vornhost {

std::string text_report(const Results &results);

} // namespace vornhost

#endif
