// Files in the recording format GSI: sights of total stations, digital levelling, coordinates.

#ifndef VORNHOST_GSI_H
#define VORNHOST_GSI_H

#include "host/formats/import_options.h"
#include "host/formats/record_account.h"
#include "host/formats/record_lines.h"

namespace vornhost {

// Reads the lines into the draft; all faults in one pass. False after a fault.
bool read_gsi(const RecordLines &file, const ImportOptions &options, RecordAccount &account, Draft &draft,
              Faults &faults);

} // namespace vornhost

#endif
