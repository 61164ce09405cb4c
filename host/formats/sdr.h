// Field books in the formats SDR33 and SDR2x: records in fixed columns.

#ifndef VORNHOST_SDR_H
#define VORNHOST_SDR_H

#include "host/formats/import_options.h"
#include "host/formats/record_account.h"
#include "host/formats/record_lines.h"

namespace vornhost {

// Whether a line begins such a file.
bool looks_like_sdr(std::string_view line);

// Reads the lines into the draft; all faults in one pass. False after a fault.
bool read_sdr(const RecordLines &file, const ImportOptions &options, RecordAccount &account, Draft &draft,
              Faults &faults);

} // namespace vornhost

#endif
