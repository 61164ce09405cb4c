// Survey and points of LandXML: set-ups, raw and reduced observations, CgPoints.

#ifndef VORNHOST_LANDXML_H
#define VORNHOST_LANDXML_H

#include "host/formats/import_options.h"
#include "host/formats/record_account.h"
#include "host/formats/xml.h"

namespace vornhost {

// Reads the elements into the draft; all faults in one pass. False after a fault.
bool read_landxml(const XmlElement &root, const ImportOptions &options, RecordAccount &account, Draft &draft,
                  Faults &faults);

} // namespace vornhost

#endif
