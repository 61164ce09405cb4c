// A network of DynAdjust from its two files: measurements, and beside them the stations.

#ifndef VORNHOST_DNA_FILES_H
#define VORNHOST_DNA_FILES_H

#include <string>

#include "host/formats/draft.h"
#include "host/formats/xml.h"
#include "host/input/faults.h"

namespace vornhost {

// Measurements in fixed columns (NAME.msr, with the stations in NAME.stn), or in DynaML (NAMEmsr.xml, with NAMEstn.xml;
// or one file with both). False after a fault.
bool import_dna_columns(const std::string &path, const std::string &geoid, Draft &draft, Faults &faults);
bool import_dynaml(const std::string &path, const XmlElement &root, const std::string &geoid, Draft &draft,
                   Faults &faults);

} // namespace vornhost

#endif
