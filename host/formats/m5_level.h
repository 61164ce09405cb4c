// Digital levelling in the format M5.

#ifndef VORNHOST_M5_LEVEL_H
#define VORNHOST_M5_LEVEL_H

#include "host/formats/import_options.h"
#include "host/formats/m5_line.h"
#include "host/formats/record_account.h"

namespace vornhost {

// Reads the lines into the draft; all faults in one pass. False after a fault.
bool read_m5_level(const std::vector<M5Line> &lines, const ImportOptions &options, RecordAccount &account, Draft &draft,
                   Faults &faults);

} // namespace vornhost

#endif
