// Estimates of SINEX files: positions of stations with their covariance, as observed coordinates.

#ifndef VORNHOST_SINEX_H
#define VORNHOST_SINEX_H

#include "host/formats/draft.h"
#include "host/input/text_file.h"

namespace vornhost {

// All faults in one pass; false after a fault.
bool read_sinex(const TextFile &file, Draft &draft, Faults &faults);

} // namespace vornhost

#endif
