// Adjusted coordinates for other programs and for instruments.

#ifndef VORNHOST_RESULT_WRITERS_H
#define VORNHOST_RESULT_WRITERS_H

#include <string>
#include <vector>

#include "host/input/faults.h"
#include "host/results/results.h"

namespace vornhost {

// Estimates with their covariance in SINEX 2.02, without constraints of ours: for networks in space. `created` is the
// time of writing as YY:DDD:SSSSS. The results need the covariances of all points that were adjusted; what is held has
// none and is left out. Lines for the user go to notes. Empty after a fault.
std::string write_sinex(const Results &results, const std::string &created, std::vector<std::string> &notes,
                        Faults &faults);

// Points of LandXML 1.2 (CgPoints): x north, y east. The date as 2026-11-22.
std::string write_landxml(const Results &results, const std::string &date, std::vector<std::string> &notes);

// Comma-separated names, east, north and height to a tenth of a millimetre, as instruments read them.
std::string write_point_list(const Results &results);

} // namespace vornhost

#endif
