// What the observations of the numbers are called, and where they stand.

#ifndef VORNHOST_ITEM_NAMES_H
#define VORNHOST_ITEM_NAMES_H

#include <string>

#include "host/own/numbers.h"

namespace vornhost {

struct ItemName {
    const char *kind;     // "distance", "image point", "weighted coordinate", ...
    std::string from, to; // to is empty where there is one point, station or group only
    std::string part;     // "x", "rx3", "scale": which value of it; empty for observations
    std::string file;
    int line = 0;
};

ItemName item_name(const Model &network, const Numbers &numbers, int observation);

// "x of P", "orientation of S", "scale of group meter".
std::string unknown_name(const Model &network, const Numbers &numbers, int unknown);

// "net.inp:12: distance S1 to P".
std::string item_text(const ItemName &name);

} // namespace vornhost

#endif
