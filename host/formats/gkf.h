// Network files of GNU Gama (.gkf): points, clusters of observations with covariances, parameters.

#ifndef VORNHOST_GKF_H
#define VORNHOST_GKF_H

#include "host/formats/draft.h"
#include "host/formats/xml.h"
#include "host/input/faults.h"

namespace vornhost {

// Reads the elements of the file into the draft; all faults in one pass. False after a fault.
bool read_gkf(const XmlElement &root, Draft &draft, Faults &faults);

} // namespace vornhost

#endif
