// Networks that applications hold as arrays, as the texts of network files: they go through the checks of every
// network, and each fault names the table and the row, from 1, that it concerns.

#ifndef VORNHOST_ARRAY_TEXT_H
#define VORNHOST_ARRAY_TEXT_H

#include <vector>

#include "host/input/network_file.h"
#include "vorn/network.h"

namespace vornhost {

// What no text can be made of: columns of different lengths, headings and words that would end a line; empty when
// nothing is wrong.
std::vector<vornapi::Fault> faults_of(const vornapi::Arrays &arrays);

// The text of arrays without such faults. Row i of table t has the line i of the source "table t".
MadeText text_of(const vornapi::Arrays &arrays);

} // namespace vornhost

#endif
