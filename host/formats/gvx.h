// GVX: GNSS vectors with the points between which they were observed.

#ifndef VORNHOST_GVX_H
#define VORNHOST_GVX_H

#include "host/formats/draft.h"
#include "host/formats/xml.h"
#include "host/input/faults.h"

namespace vornhost {

// All faults in one pass; false after a fault.
bool read_gvx(const XmlElement &root, Draft &draft, Faults &faults);

} // namespace vornhost

#endif
