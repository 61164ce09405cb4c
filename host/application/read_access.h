// What a network of the library holds, for the functions of the library.

#ifndef VORNHOST_READ_ACCESS_H
#define VORNHOST_READ_ACCESS_H

#include <utility>
#include <vector>

#include "host/input/faults.h"
#include "host/input/model.h"
#include "vorn/network.h"

namespace vornapi {

struct Network::Read {
    vornhost::Model model;
    bool from_file = false; // whose lines can be read again
};

struct ReadAccess {
    static Reading finish(vornhost::Model model, const vornhost::Faults &faults, bool read, bool from_file = false);
    static vornhost::Model twin(const Network &network) { return network.read->model.twin(); }
};

// The first word is what is wrong, the others say what would be right.
std::vector<Fault> why_not(const std::string &file, const std::vector<std::string> &words);

} // namespace vornapi

#endif
