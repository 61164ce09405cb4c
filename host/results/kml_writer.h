// The plan of a network as KML, for globes and maps: points with their coordinates and standard deviations, lines of
// sight, ellipses. Only for networks whose points have longitude and latitude (is_mapped).

#ifndef VORNHOST_KML_WRITER_H
#define VORNHOST_KML_WRITER_H

#include <string>

#include "host/results/results.h"

namespace vornhost {

std::string to_kml(const Results &results);

} // namespace vornhost

#endif
