#include "host/results/text_report.h"

namespace vornhost {

std::string text_report(const Results &results) { return results.title + "\n"; }

} // namespace vornhost
