// A draft as the text of a network file: aligned columns, only those that are needed, and the shortest numbers that
// read back as the same.

#ifndef VORNHOST_NETWORK_WRITER_H
#define VORNHOST_NETWORK_WRITER_H

#include <string>
#include <vector>

#include "host/formats/draft.h"

namespace vornhost {

struct WrittenNetwork {
    std::string text;
    std::vector<Source> origins; // of each line of the text in the foreign file; line 0 where it has none
};

WrittenNetwork write_network(const Draft &draft);

// "net.gkf:12: what was left out or assumed".
std::string note_line(const Draft &draft, const DraftNote &note);

} // namespace vornhost

#endif
