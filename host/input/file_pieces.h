// Reading a file in pieces, with a fault for each way in which that can fail.

#ifndef VORNHOST_FILE_PIECES_H
#define VORNHOST_FILE_PIECES_H

#include <stddef.h>

#include <functional>
#include <string>

#include "host/input/faults.h"

namespace vornhost {

// Takes a piece of the file; false ends the reading, after a fault of its own.
using TakePiece = std::function<bool(const char *piece, size_t size)>;

// Hands the file to take, piece by piece. Faults of the file as a whole are placed at asked. Returns false after a
// fault.
bool read_pieces(const std::string &path, Source asked, size_t largest, Faults &faults, const TakePiece &take);

} // namespace vornhost

#endif
