// The plan of a network as a drawing for papers (SVG 1.1), 18 cm wide: lines by normalised residual, ellipses, points
// by role, names, and the scales of plan and ellipses.

#ifndef VORNHOST_SVG_WRITER_H
#define VORNHOST_SVG_WRITER_H

#include <string>

#include "host/results/plan.h"

namespace vornhost {

std::string to_svg(const Results &results, Axes axes);

} // namespace vornhost

#endif
