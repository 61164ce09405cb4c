// What is said of a network that looks wrong before it is adjusted: a line each with file and line.

#ifndef VORNHOST_DOUBT_WORDS_H
#define VORNHOST_DOUBT_WORDS_H

#include <string>
#include <vector>

#include "host/own/numbers.h"

namespace vornhost {

// `given`: all first coordinates stand in the file, so that observations are compared with them.
std::vector<std::string> doubt_notes(const Model &network, const Numbers &numbers, bool given);

} // namespace vornhost

#endif
