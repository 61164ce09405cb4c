// Field books in the format M5: total stations and levels, and coordinates.

#ifndef VORNHOST_M5_H
#define VORNHOST_M5_H

#include "host/formats/import_options.h"
#include "host/formats/record_account.h"
#include "host/formats/record_lines.h"

namespace vornhost {

// Reads the lines into the draft; all faults in one pass. False after a fault.
bool read_m5(const RecordLines &file, const ImportOptions &options, RecordAccount &account, Draft &draft,
             Faults &faults);

} // namespace vornhost

#endif
