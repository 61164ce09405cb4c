// The plan of a network as a drawing in DXF, release 12, which every drawing program reads: metres, and layers
//   POINTS_FIXED, POINTS_WEIGHTED, POINTS_FREE, NAMES, LINES, LINES_SUSPICIOUS, ELLIPSES_TIMES_n
// where n is what ellipses are magnified by.

#ifndef VORNHOST_DXF_WRITER_H
#define VORNHOST_DXF_WRITER_H

#include <string>

#include "host/results/plan.h"

namespace vornhost {

std::string to_dxf(const Results &results, Axes axes);

} // namespace vornhost

#endif
