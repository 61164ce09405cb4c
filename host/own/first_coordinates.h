// First coordinates for the program's own adjustment, in every dimension and mode.

#ifndef VORNHOST_FIRST_COORDINATES_H
#define VORNHOST_FIRST_COORDINATES_H

#include "host/input/model.h"
#include "host/preparation/first_values.h"

namespace vornhost {

// Writes coordinates into the records of used points with status compute and turns their status on. Heights alone are
// carried along height differences, from 0 where none is known; anything else is plain geometry, which takes observed
// values and so is not made for planned ones.
FirstValues find_first_coordinates(Model &network);

} // namespace vornhost

#endif
