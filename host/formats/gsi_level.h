// Digital levelling in the recording format GSI.

#ifndef VORNHOST_GSI_LEVEL_H
#define VORNHOST_GSI_LEVEL_H

#include "host/formats/import_options.h"
#include "host/formats/record_account.h"
#include "host/formats/record_lines.h"

namespace vornhost {

// Whether the file is one of a level: a line that a question mark opens, or readings of a staff.
bool is_gsi_level(const RecordLines &file);

// Reads the lines into the draft; all faults in one pass. False after a fault.
bool read_gsi_level(const RecordLines &file, const ImportOptions &options, RecordAccount &account, Draft &draft,
                    Faults &faults);

} // namespace vornhost

#endif
