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
    std::string at; // of an angle between from and to
};

// Record and table of an observation that stands in a table of the file; no notes for images and weighted values.
struct ItemNotes {
    const RowNotes *notes = nullptr;
    size_t row = 0;
};

ItemNotes item_notes(const Model &network, const ItemPlace &item);

// ", set-up B, set 2"; empty for the only stand of a station.
std::string setup_words(const Model &network, const SetupPlace &setup);

ItemName item_name(const Model &network, const Numbers &numbers, int observation);

// "x of P", "orientation of S", "scale of group meter".
std::string unknown_name(const Model &network, const Numbers &numbers, int unknown);

// "net.inp:12: distance S1 to P".
std::string item_text(const ItemName &name);

} // namespace vornhost

#endif
