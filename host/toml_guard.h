// What the TOML parser cannot be handed, found before it is asked.

#ifndef VORNHOST_TOML_GUARD_H
#define VORNHOST_TOML_GUARD_H

#include "faults.h"
#include "text_file.h"

namespace vornhost {

// Adds a fault for a line of very many points, whose tables would nest deeper than the
// stack allows, and for a character beyond ASCII outside of texts and comments, on which
// the parser's behaviour is not defined. Returns false after a fault.
bool check_toml(const TextFile &file, Faults &faults);

} // namespace vornhost

#endif
