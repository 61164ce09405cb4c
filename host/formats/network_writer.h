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

// The notes as lines, "net.gkf:12: what was left out or assumed"; what is too much for a reader is counted.
std::vector<std::string> note_lines(const Draft &draft);

} // namespace vornhost

#endif
