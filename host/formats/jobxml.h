// Field books in JobXML. Angles are decimal degrees and lengths metres, whatever the file says of its units.

#ifndef VORNHOST_JOBXML_H
#define VORNHOST_JOBXML_H

#include "host/formats/import_options.h"
#include "host/formats/record_account.h"
#include "host/formats/xml.h"

namespace vornhost {

// Reads the elements into the draft; all faults in one pass. False after a fault.
bool read_jobxml(const XmlElement &root, const ImportOptions &options, RecordAccount &account, Draft &draft,
                 Faults &faults);

} // namespace vornhost

#endif
