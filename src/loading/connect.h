// Points of a connected net.

#ifndef VORN_CONNECT_H
#define VORN_CONNECT_H

#include "vorn/records.h"

namespace vornengine {

// First unknown of a point that can be part of a connected net: its coordinates (x3 alone
// in dimension 1) must be consecutive unknowns, because a block is taken by their numbers.
// Otherwise -1.
int block_unknown(const point *p, int dim);

} // namespace vornengine

#endif
