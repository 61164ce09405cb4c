// The closures of a network as text: for each kind a line that counts them, and a table of the worst.

#ifndef VORNHOST_CLOSURE_TEXT_H
#define VORNHOST_CLOSURE_TEXT_H

#include <string>

#include "host/results/results.h"

namespace vornhost {

// At most so many of a kind; empty without any.
std::string closure_text(const Results &results, size_t most);

} // namespace vornhost

#endif
