// DynaML: stations and measurements of DynAdjust as XML.

#ifndef VORNHOST_DYNAML_H
#define VORNHOST_DYNAML_H

#include "host/formats/dna.h"
#include "host/formats/xml.h"
#include "host/input/faults.h"

namespace vornhost {

// Adds what a file holds. False after a fault.
bool read_dynaml(const XmlElement &root, DnaNetwork &network, Faults &faults);

} // namespace vornhost

#endif
