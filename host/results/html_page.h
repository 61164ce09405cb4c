// Results as a page for a browser: one file with everything in it, which asks nothing of any other. The data are the
// results in columns; a column that is missing, or null in one, is a value that the run did not make.

#ifndef VORNHOST_HTML_PAGE_H
#define VORNHOST_HTML_PAGE_H

#include <string>

#include "host/results/input_lines.h"
#include "host/results/results.h"

namespace vornhost {

// date: "2026-03-31 14:05 UTC". Lengths of the data in metres, angles in radians.
std::string to_html(const Results &results, const InputLines &lines, const std::string &date);

} // namespace vornhost

#endif
