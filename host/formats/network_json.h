// A draft in metres and gon as JSON: the tables of the network file as arrays of objects, with its words as keys.

#ifndef VORNHOST_NETWORK_JSON_H
#define VORNHOST_NETWORK_JSON_H

#include <string>

#include "host/formats/draft.h"

namespace vornhost {

std::string write_network_json(const Draft &draft);

} // namespace vornhost

#endif
