// First coordinates by way of a local frame: where known points do not see each other nothing can be oriented on them,
// but a piece of the network that reaches two of them can be placed by itself and moved onto them.

#ifndef VORNHOST_LOCAL_FRAME_H
#define VORNHOST_LOCAL_FRAME_H

#include "host/input/model.h"

namespace vornhost {

// Writes first coordinates into the records of all used points with status compute and turns their status on; false,
// with nothing written, when points remain. Plane and space.
bool place_by_local_frames(Model &network);

} // namespace vornhost

#endif
