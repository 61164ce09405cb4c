// A draft in metres and gon as coded lines.

#ifndef VORNHOST_LINES_WRITER_H
#define VORNHOST_LINES_WRITER_H

#include <string>

#include "host/formats/draft.h"
#include "host/input/faults.h"

namespace vornhost {

// Empty after a fault: something has no words there. What is left out stands in the notes of the draft.
std::string write_lines(Draft &draft, Faults &faults);

} // namespace vornhost

#endif
