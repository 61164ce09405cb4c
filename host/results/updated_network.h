// The network file of a run with its adjusted coordinates as approximate ones, everything else as it was.

#ifndef VORNHOST_UPDATED_NETWORK_H
#define VORNHOST_UPDATED_NETWORK_H

#include <stdexcept>
#include <string>
#include <string_view>

#include "host/input/model.h"
#include "host/results/results.h"

namespace vornhost {

// what() says which points cannot be written, and what to do.
struct UpdateError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The text of the network file, in which free coordinates have their adjusted values, to the micrometre. Fixed and
// weighted ones stay as they are: they are known, not approximate. Columns x, y and z that a table does not have are
// added behind its last. The text is read again, so that what comes out is the same network.
//
// text: of the file that model was read from. Throws UpdateError when points stand in a file of their own, or in rows
// that cannot be changed safely.
std::string updated_network(std::string_view text, const Model &model, const Results &results);

} // namespace vornhost

#endif
