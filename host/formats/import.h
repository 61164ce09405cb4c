// Foreign files as drafts, whatever their format.

#ifndef VORNHOST_IMPORT_H
#define VORNHOST_IMPORT_H

#include <optional>
#include <string>

#include "host/formats/draft.h"
#include "host/formats/recognise.h"
#include "host/input/faults.h"

namespace vornhost {

// Reads the file; its format is recognised from the content where none is named. False after a fault.
bool import_file(const std::string &path, std::optional<Format> format, Draft &draft, Faults &faults);

} // namespace vornhost

#endif
