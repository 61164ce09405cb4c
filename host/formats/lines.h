// Text of coded lines as STAR*NET reads it: C A M D V DV B BM L, traverses, sets of directions, GNSS vectors, and the
// options between them.

#ifndef VORNHOST_LINES_H
#define VORNHOST_LINES_H

#include "host/formats/draft.h"
#include "host/input/text_file.h"

namespace vornhost {

// Reads the text into the draft; all faults in one pass. False after a fault.
bool read_lines(const TextFile &file, Draft &draft, Faults &faults);

// Whether a text begins like such lines.
bool looks_like_lines(std::string_view beginning);

} // namespace vornhost

#endif
